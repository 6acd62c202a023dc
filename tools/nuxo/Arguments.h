// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_ARGUMENTS_H
#define NUXO_TOOL_ARGUMENTS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NuxoTool {

enum class Verb {
    Check,
    Dump,
    Query,
    Build,
    Explain,
    Diff,
    Draw,
    Fmt,
    Ports,
    Contexts,
    Kernels,
    History,
    FrameParams,
    Formats,
    Schema
};
enum class Format { Text, Json, Dot, Svg, Html, Sarif };

/// What was asked for on the command line.
struct Arguments {
    Verb verb = Verb::Dump;
    Format format = Format::Text;
    std::string file;       ///< dump
    std::string descriptor; ///< all but dump and formats
    std::string settings;   ///< likewise
    std::vector<std::string> criteria;
    std::optional<int32_t> key;            ///< verbs that build
    bool any = false;                      ///< query
    bool origin = false;                   ///< dump, build
    std::optional<int32_t> stream;         ///< kernels, draw, otherwise all; history
    std::optional<std::string> group;      ///< kernels: name of a program group
    std::optional<std::string> port;       ///< frame-params: path of a port, otherwise the sensor
    std::optional<std::string> formatName; ///< formats: name or code, otherwise all
    std::optional<uint32_t> width;
    std::optional<uint32_t> height;
    std::optional<uint32_t> stride;
    std::vector<std::string> files;        ///< check: settings files; diff, fmt: all files
    std::vector<int32_t> keys;             ///< check: settings to build; diff: settings to compare
    std::vector<std::string> warningRules; ///< check
    std::vector<std::string> errorRules;
    std::vector<std::string> disabledRules;
    bool warningsAreErrors = false;
    bool listRules = false;
    std::optional<std::string> explainedRule;
    std::string path;       ///< explain
    bool built = false;     ///< diff
    bool inPlace = false;   ///< fmt
    bool checkOnly = false; ///< fmt
    std::string schemaKind; ///< schema: "descriptor" or "settings"
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
