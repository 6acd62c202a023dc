// SPDX-License-Identifier: Apache-2.0
#include "DotText.h"

#include "Text.h"

namespace NuxoTool {

std::string dotLabel(const std::string& text)
{
    return quoted(printable(text));
}

std::string dotHtml(const std::string& text)
{
    std::string out;
    for (const char c : printable(text)) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out += c;
        }
    }
    return out;
}

std::string dotFont(const std::string& content, const char* colour, int size)
{
    return "<FONT COLOR=\"" + std::string(colour) + "\" POINT-SIZE=\"" + std::to_string(size) + "\">" + content +
           "</FONT>";
}

} // namespace NuxoTool
