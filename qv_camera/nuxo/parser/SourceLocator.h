// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_PARSER_SOURCE_LOCATOR_H
#define NUXO_PARSER_SOURCE_LOCATOR_H

#include <qv_tools/qv_export.h>

#include <nuxo/tree/SourcePosition.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace NUXO {

/// Where something stands in a file, as people count: lines and columns from 1, columns in bytes.
struct SourceLocation {
    std::string file;
    uint32_t line = 0;
    uint32_t column = 0;
};

/// Turns positions of items into file, line and column. Reads each document again once, when it is first asked for, and
/// keeps its text; use one locator for many questions. Nothing is thrown.
class QV_EXPORT SourceLocator {
public:
    SourceLocator();
    SourceLocator(const SourceLocator&) = delete;
    SourceLocator& operator=(const SourceLocator&) = delete;
    ~SourceLocator();

    /// The start of @p node's element.
    ///
    /// @return StatusOk; StatusNoValue when the position is unknown (roots, nodes made by hand); StatusMissingObject when
    ///         the document cannot be read any more or is now shorter; StatusBadArgument for a null @p node;
    ///         StatusNoMemory. @p location is untouched unless StatusOk.
    int32_t locate(const IGraphConfig* node, SourceLocation& location);

    /// The attribute that gave the first item with @p key of @p node its value; where the element has no attribute of that
    /// name (a value written by an override, the element name that became a `type`), and for a child node, the start of
    /// the element. Statuses as above.
    int32_t locate(const IGraphConfig* node, uint32_t key, SourceLocation& location);

    /// As above for one item of a node, for keys that it holds several times. A child node stands at its element.
    ///
    /// @param item  what an iterator of GraphConfigNode points at
    int32_t locate(const ItemEntry& item, SourceLocation& location);

    /// The text of line @p line (from 1) of a document, without its end of line. StatusOk, StatusMissingObject,
    /// StatusNoMemory.
    int32_t lineText(const std::string& file, uint32_t line, std::string& text);

    /// Gives the text of a document that is not a file, under the name that the parser gave it ("<memory>").
    int32_t addText(const std::string& name, const std::string& text);

private:
    struct Document;

    QV_LOCAL Document* document(const std::string& name);
    QV_LOCAL int32_t locateItem(SourcePosition position, bool isAttribute, uint32_t key, SourceLocation& location);

    std::map<std::string, std::unique_ptr<Document>> mDocuments;
};

} // namespace NUXO

#endif
