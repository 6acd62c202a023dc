// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_DOT_TEXT_H
#define NUXO_TOOL_DOT_TEXT_H

#include <string>

namespace NuxoTool {

// Colours of all drawings.
constexpr const char* kGrey = "#9a9a9a";
constexpr const char* kInk = "#1f2933";
constexpr const char* kLine = "#52606d";
constexpr const char* kPortLine = "#b8c1cc";
constexpr const char* kAlarm = "#b42318";

/// A plain label: what printable() escaped, and any backslash of the text, is shown as it stands.
std::string dotLabel(const std::string& text);

/// The text for a label of the kind that looks like HTML.
std::string dotHtml(const std::string& text);

/// A piece of such a label in one colour and size.
std::string dotFont(const std::string& content, const char* colour, int size);

} // namespace NuxoTool

#endif
