// SPDX-License-Identifier: Apache-2.0
#include "TextRenderer.h"

#include "Origins.h"
#include "Text.h"
#include "TreeView.h"

#include <algorithm>
#include <vector>

namespace NuxoTool {

using NUXO::GraphConfigNode;

namespace {

constexpr size_t kIndent = 2;
constexpr size_t kWidestLeftSide = 60; // longer lines do not push the places of all others away

std::string headOf(const GraphConfigNode& node, const std::string& name)
{
    const std::string kind = textOf(node, NUXO_KEY_TYPE);
    return printable(name) + (kind.empty() ? "" : " (" + printable(kind) + ')');
}

std::string valueText(const AttributeView& attribute)
{
    if (attribute.isKeyName) return printable(attribute.text);
    return attribute.isInteger ? std::to_string(attribute.integer) : quoted(attribute.text);
}

// Parsed trees are at most NUXOParser::kMaxDepth deep and built ones a small multiple of that, so recursion is bounded.
class TextTree {
public:
    void add(const GraphConfigNode& node, const std::string& name, size_t depth)
    {
        mText.append(depth * kIndent, ' ');
        mText += headOf(node, name);
        for (const AttributeView& attribute : mView.attributes(node)) {
            if (attribute.key == NUXO_KEY_TYPE && attribute.isFirst && !attribute.isInteger) continue; // in the head
            mText += ' ' + printable(attribute.name) + '=' + valueText(attribute);
        }
        mText += '\n';
        for (const ChildView& child : mView.children(node)) add(*child.node, child.name, depth + 1);
    }

    std::string& text() { return mText; }

private:
    TreeView mView;
    std::string mText;
};

class OriginTree {
public:
    explicit OriginTree(NUXO::SourceLocator& locator) : mLocator(locator) {}

    void add(const GraphConfigNode& node, const std::string& name, size_t depth)
    {
        addLine(depth, headOf(node, name), depth == 0 ? "" : originText(originOf(mLocator, node)));
        for (const AttributeView& attribute : mView.attributes(node)) {
            addLine(depth + 2, printable(attribute.name) + " = " + valueText(attribute),
                    originText(originOf(mLocator, attribute)));
        }
        for (const ChildView& child : mView.children(node)) add(*child.node, child.name, depth + 1);
    }

    std::string text() const
    {
        size_t width = 0;
        for (const Line& line : mLines) {
            if (line.width <= kWidestLeftSide) width = std::max(width, line.width);
        }
        std::string text;
        for (const Line& line : mLines) {
            text += line.left;
            if (!line.origin.empty()) {
                text.append(width > line.width ? width - line.width : 0, ' ');
                text += "  " + line.origin;
            }
            text += '\n';
        }
        return text;
    }

private:
    struct Line {
        std::string left;
        std::string origin;
        size_t width;
    };

    void addLine(size_t depth, const std::string& left, const std::string& origin)
    {
        const std::string indented = std::string(depth * kIndent, ' ') + left;
        mLines.push_back({indented, origin, displayWidth(indented)});
    }

    NUXO::SourceLocator& mLocator;
    TreeView mView;
    std::vector<Line> mLines;
};

} // namespace

std::string renderText(const GraphConfigNode& root, const std::string& title)
{
    TextTree tree;
    tree.add(root, title, 0);
    return std::move(tree.text());
}

std::string renderTextWithOrigins(const GraphConfigNode& root, const std::string& title, NUXO::SourceLocator& locator)
{
    OriginTree tree(locator);
    tree.add(root, title, 0);
    return tree.text();
}

} // namespace NuxoTool
