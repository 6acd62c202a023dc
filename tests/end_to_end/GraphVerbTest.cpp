// SPDX-License-Identifier: Apache-2.0
#include "GraphVerbTest.h"

#include <algorithm>
#include <set>
#include <sstream>

namespace {

// No cell is empty or holds two blanks in a row, and at least two stand between cells.
std::vector<std::string> cellsOf(const std::string& line)
{
    std::vector<std::string> cells;
    for (size_t at = line.find_first_not_of(' '); at != std::string::npos;) {
        const size_t end = std::min(line.find("  ", at), line.size());
        cells.push_back(line.substr(at, end - at));
        at = line.find_first_not_of(' ', end);
    }
    return cells;
}

} // namespace

TableRows rowsOf(const std::string& table)
{
    TableRows rows;
    std::istringstream lines(table);
    std::string line;
    std::getline(lines, line);
    const std::vector<std::string> heads = cellsOf(line);
    while (std::getline(lines, line)) {
        const std::vector<std::string> cells = cellsOf(line);
        EXPECT_EQ(cells.size(), heads.size()) << line;
        std::map<std::string, std::string>& row = rows.emplace_back();
        for (size_t i = 0; i < std::min(cells.size(), heads.size()); ++i) row[heads[i]] = cells[i];
    }
    return rows;
}

ToolRun GraphVerbTest::ask(const std::string& files, const std::string& key,
                           const std::vector<std::string>& arguments) const
{
    std::vector<std::string> all = {mVerb, files + ".xml", files + "_settings.xml", "--key", key};
    if (files.compare(0, 3, "kva") == 0) {
        addExample(files);
        all[1] = files + "_descriptor.xml";
    }
    all.insert(all.end(), arguments.begin(), arguments.end());
    return run(all);
}

void GraphVerbTest::expectAnswer(const std::string& files, const std::string& key, const std::string& golden,
                                 const std::vector<std::string>& arguments) const
{
    const ToolRun result = ask(files, key, arguments);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    expectGolden(result.out, golden);
}

void GraphVerbTest::expectNoErrorsInTheExamples() const
{
    for (const std::string generation : {"kva5", "kva6", "kva7"}) {
        addExample(generation);
        const std::string descriptor = generation + "_descriptor.xml";
        const std::string settings = generation + "_settings.xml";
        const TableRows rows = rowsOf(run({"query", descriptor, settings}).out);
        EXPECT_GE(rows.size(), 28U) << generation;
        for (const auto& row : rows) {
            const ToolRun result = run({mVerb, descriptor, settings, "--key", row.at("KEY")});
            EXPECT_EQ(result.exitCode, 0) << row.at("KEY") << '\n' << result.err;
        }
    }
}

void GraphVerbTest::expectNoErrorsInStreamsOf(const std::string& generation, const std::vector<std::string>& arguments,
                                              const std::function<void(const ToolRun& answer)>& check) const
{
    addExample(generation);
    const std::string descriptor = generation + "_descriptor.xml";
    const std::string settings = generation + "_settings.xml";
    size_t streams = 0;
    for (const auto& row : rowsOf(run({"query", descriptor, settings}).out)) {
        const std::string& key = row.at("KEY");
        std::set<std::string> asked;
        for (const auto& kernel : rowsOf(run({"kernels", descriptor, settings, "--key", key}).out)) {
            const std::string& stream = kernel.at("STREAM");
            if (!asked.insert(stream).second) continue;
            std::vector<std::string> all = {mVerb, descriptor, settings, "--key", key, "--stream", stream};
            all.insert(all.end(), arguments.begin(), arguments.end());
            const ToolRun result = run(all);
            EXPECT_EQ(result.exitCode, 0) << key << " stream " << stream << '\n' << result.err;
            check(result);
            ++streams;
        }
    }
    EXPECT_GE(streams, 28U) << generation;
}
