// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_XML_TEXT_H
#define NUXO_TOOL_XML_TEXT_H

#include <string>
#include <utility>
#include <vector>

namespace NuxoTool {

/// Writes indented XML, element by element.
class XmlText {
public:
    using Attributes = std::vector<std::pair<const char*, std::string>>;

    void open(const std::string& name, const Attributes& attributes = {});
    /// The innermost open element.
    void close();
    /// An element with nothing in it.
    void leaf(const std::string& name, const Attributes& attributes = {});
    /// An element with text in it.
    void text(const std::string& name, const std::string& content);
    /// A line of its own.
    void comment(const std::string& content);

    const std::string& result() const { return mText; }

private:
    void startTag(const std::string& name, const Attributes& attributes);

    std::string mText = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    std::vector<std::string> mOpen;
};

/// @p text with what mark-up would take for its own written as references: for XML, HTML and labels that look like it.
std::string xmlEscaped(const std::string& text);

} // namespace NuxoTool

#endif
