// SPDX-License-Identifier: Apache-2.0
#include "schema/XmlText.h"

namespace NuxoTool {

std::string xmlEscaped(const std::string& text)
{
    std::string out;
    for (const char character : text) {
        switch (character) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out += character;
        }
    }
    return out;
}

void XmlText::startTag(const std::string& name, const Attributes& attributes)
{
    mText += std::string(2 * mOpen.size(), ' ') + '<' + name;
    for (const auto& [attribute, value] : attributes) {
        mText += ' ';
        mText += attribute;
        mText += "=\"" + xmlEscaped(value) + '"';
    }
}

void XmlText::open(const std::string& name, const Attributes& attributes)
{
    startTag(name, attributes);
    mText += ">\n";
    mOpen.push_back(name);
}

void XmlText::close()
{
    const std::string name = mOpen.back();
    mOpen.pop_back();
    mText += std::string(2 * mOpen.size(), ' ') + "</" + name + ">\n";
}

void XmlText::leaf(const std::string& name, const Attributes& attributes)
{
    startTag(name, attributes);
    mText += "/>\n";
}

void XmlText::text(const std::string& name, const std::string& content)
{
    startTag(name, {});
    mText += '>' + xmlEscaped(content) + "</" + name + ">\n";
}

void XmlText::comment(const std::string& content)
{
    mText += std::string(2 * mOpen.size(), ' ') + "<!-- " + content + " -->\n";
}

} // namespace NuxoTool
