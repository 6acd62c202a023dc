// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_TEXT_TABLE_H
#define NUXO_TOOL_TEXT_TABLE_H

#include <string>
#include <vector>

namespace NuxoTool {

/// Lines of aligned columns, two blanks apart, without blanks at line ends.
class TextTable {
public:
    enum class Align { Left, Right };
    struct Column {
        std::string head; ///< without any head there is no head line
        Align align = Align::Left;
    };

    explicit TextTable(std::vector<Column> columns) : mColumns(std::move(columns)) {}

    /// @param cells  one a column, fit to print
    void add(const std::vector<std::string>& cells) { mRows.push_back(cells); }
    std::string text() const;

private:
    std::vector<std::string> heads() const;
    std::string line(const std::vector<std::string>& cells, const std::vector<size_t>& widths) const;

    std::vector<Column> mColumns;
    std::vector<std::vector<std::string>> mRows;
};

} // namespace NuxoTool

#endif
