// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_ARGUMENTS_H
#define NUXO_TOOL_ARGUMENTS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NuxoTool {

enum class Verb { Dump, Query, Build };
enum class Format { Text, Json, Dot };

/// What was asked for on the command line.
struct Arguments {
    Verb verb = Verb::Dump;
    Format format = Format::Text;
    std::string file;       ///< dump
    std::string descriptor; ///< query, build
    std::string settings;   ///< query, build
    std::vector<std::string> criteria;
    std::optional<int32_t> key; ///< build
    bool any = false;           ///< query
    bool origin = false;        ///< dump, build
    bool verbose = false;
    std::string colour = "auto";
};

/// The outcome of reading the command line.
struct ParsedArguments {
    std::optional<Arguments> arguments; ///< nothing when there is no work to do
    std::string output;                 ///< help or version text
    std::string error;                  ///< what is wrong with the command line
    std::string colour = "auto";
};

ParsedArguments parseArguments(int argc, const char* const* argv);

} // namespace NuxoTool

#endif
