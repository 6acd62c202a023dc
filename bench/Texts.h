// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_BENCH_TEXTS_H
#define NUXO_BENCH_TEXTS_H

#include <cstddef>
#include <cstdint>
#include <string>

// Generated graph files: the same bytes on every run.

namespace bench {

/// Elements of each setting that settingsFile writes, its own included.
constexpr size_t kElementsPerSetting = 31;

/// A settings file: @p count settings, each of six program groups with four ports; every element has two texts and four
/// integers. About 90 bytes an element.
std::string settingsFile(size_t count);

/// @p count siblings with two names, one after the other or first all of one name.
std::string siblings(size_t count, bool alternating);

/// The two files of a request.
struct Request {
    std::string descriptor;
    std::string settings; ///< settings with the keys 1, 2 and 3, which differ in their resolution
    size_t connections = 0;
};

/// A sensor, a chain of program groups with ports and kernels, half of them built from a base node, and a sink:
/// @p connections connections from end to end.
Request chainOfGroups(size_t connections);

/// Width of the sink in the setting with the key.
int sinkWidth(int settingsKey);

} // namespace bench

#endif
