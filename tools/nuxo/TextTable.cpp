// SPDX-License-Identifier: Apache-2.0
#include "TextTable.h"

#include "Text.h"

#include <algorithm>

namespace NuxoTool {

namespace {

constexpr size_t kGap = 2;

} // namespace

std::vector<std::string> TextTable::heads() const
{
    std::vector<std::string> heads;
    for (const Column& column : mColumns) heads.push_back(column.head);
    return heads;
}

std::string TextTable::line(const std::vector<std::string>& cells, const std::vector<size_t>& widths) const
{
    std::string line;
    for (size_t i = 0; i < mColumns.size(); ++i) {
        const std::string fill(widths[i] - displayWidth(cells[i]), ' ');
        line += mColumns[i].align == Align::Right ? fill + cells[i] : cells[i] + fill;
        line.append(kGap, ' ');
    }
    return line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
}

std::string TextTable::text() const
{
    std::vector<std::vector<std::string>> lines = mRows;
    const bool hasHead =
        std::any_of(mColumns.begin(), mColumns.end(), [](const Column& column) { return !column.head.empty(); });
    if (hasHead) lines.insert(lines.begin(), heads());

    std::vector<size_t> widths(mColumns.size());
    for (const auto& cells : lines) {
        for (size_t i = 0; i < mColumns.size(); ++i) widths[i] = std::max(widths[i], displayWidth(cells[i]));
    }
    std::string text;
    for (const auto& cells : lines) text += line(cells, widths);
    return text;
}

} // namespace NuxoTool
