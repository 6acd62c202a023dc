// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_PARSER_EXPAT_CALLS_H
#define NUXO_TESTS_PARSER_EXPAT_CALLS_H

#include <iosfwd>
#include <vector>

/// One call of XML_Parse: how many bytes, and whether they were announced as the last ones.
struct ExpatCall {
    int length;
    bool isFinal;

    bool operator==(const ExpatCall& other) const { return length == other.length && isFinal == other.isFinal; }
};

std::ostream& operator<<(std::ostream& stream, const ExpatCall& call);

/// Records what the library hands to the tokenizer while it lives, and can make the tokenizer's creation fail. The test
/// program's own definitions of XML_Parse and XML_ParserCreate stand before the tokenizer's.
class ExpatCalls {
public:
    ExpatCalls();
    ~ExpatCalls();
    ExpatCalls(const ExpatCalls&) = delete;
    ExpatCalls& operator=(const ExpatCalls&) = delete;

    void failCreation() { mFailCreation = true; }
    bool creationFails() const { return mFailCreation; }
    void record(ExpatCall call) { mCalls.push_back(call); }
    const std::vector<ExpatCall>& calls() const { return mCalls; }
    bool anyFinal() const;
    int total() const;

private:
    std::vector<ExpatCall> mCalls;
    bool mFailCreation = false;
};

#endif
