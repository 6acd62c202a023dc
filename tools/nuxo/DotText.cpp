// SPDX-License-Identifier: Apache-2.0
#include "DotText.h"

#include "Text.h"
#include "schema/XmlText.h"

namespace NuxoTool {

std::string dotLabel(const std::string& text)
{
    return quoted(printable(text));
}

std::string dotHtml(const std::string& text)
{
    return xmlEscaped(printable(text));
}

std::string dotFont(const std::string& content, const char* colour, int size)
{
    return "<FONT COLOR=\"" + std::string(colour) + "\" POINT-SIZE=\"" + std::to_string(size) + "\">" + content +
           "</FONT>";
}

} // namespace NuxoTool
