// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_FUZZ_SUPPORT_FUZZING_H
#define NUXO_FUZZ_SUPPORT_FUZZING_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

// What all fuzz targets share. A target is LLVMFuzzerTestOneInput; libFuzzer or the replay driver calls it.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace fuzzing {

/// One run: every message class is on, so that formatting is exercised (the lines go nowhere), and the vocabulary is put
/// back at the end, so that a run does not depend on the runs before it.
class Run {
public:
    Run();
    ~Run();
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

private:
    const std::map<std::string, uint32_t>& mBuiltInKeys;
};

/// Lines that reached the stand-in of the system logger.
size_t linesLogged();

/// What is logged while it lives, as a number. Addresses do not count: they differ between copies of a graph. One at a time.
class LogDigest {
public:
    LogDigest();
    ~LogDigest();
    LogDigest(const LogDigest&) = delete;
    LogDigest& operator=(const LogDigest&) = delete;

    uint64_t inOrder() const { return mInOrder; }
    /// The same for the same lines in another order.
    uint64_t inAnyOrder() const { return mInAnyOrder; }

    void add(const char* line);

private:
    uint64_t mInOrder = 0;
    uint64_t mInAnyOrder = 0;
};

/// Ends the program as a finding, with the rule that was broken, unless @p holds.
void require(bool holds, const char* rule);

/// Hides all log lines while it lives.
class Hush {
public:
    Hush();
    ~Hush();
    Hush(const Hush&) = delete;
    Hush& operator=(const Hush&) = delete;

private:
    uint32_t mLevel;
};

} // namespace fuzzing

#endif
