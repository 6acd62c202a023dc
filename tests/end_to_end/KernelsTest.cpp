// SPDX-License-Identifier: Apache-2.0
#include "GraphVerbTest.h"

#include <algorithm>
#include <set>

namespace {

// linked.xml: kernels with links. ordered.xml: kernels in the order of their ids.
class KernelsTest : public GraphVerbTest {
protected:
    KernelsTest() : GraphVerbTest("kernels") {}

    // The rows of one kernel.
    static TableRows kernel(const ToolRun& result, const std::string& group, const std::string& name)
    {
        TableRows rows;
        for (const auto& row : rowsOf(result.out)) {
            if (row.at("GROUP") == group && row.at("KERNEL") == name) rows.push_back(row);
        }
        EXPECT_FALSE(rows.empty()) << group << ':' << name << " is not in\n" << result.out;
        if (rows.empty()) rows.emplace_back();
        return rows;
    }

    void expectFinding(const std::string& files, const std::string& key, const std::string& place,
                       const std::string& found) const
    {
        const ToolRun result = ask(files, key);
        EXPECT_EQ(result.exitCode, 1) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(count(result.err, "error["), 1U) << result.err;
        EXPECT_EQ(result.err.find(place + ": error[kernels]: "), 0U) << result.err;
        EXPECT_NE(result.err.find(found + "; expected kernels whose links and sizes fit\n"), std::string::npos)
            << result.err;
    }

    // The distinct cells of a column, in order of appearance.
    static std::vector<std::string> column(const ToolRun& result, const std::string& head)
    {
        std::vector<std::string> cells;
        std::set<std::string> known;
        for (const auto& row : rowsOf(result.out)) {
            if (known.insert(row.at(head)).second) cells.push_back(row.at(head));
        }
        return cells;
    }
};

TEST_F(KernelsTest, ListsTheRecordsOfLinkedKernels)
{
    expectAnswer("linked", "1", "kernels_linked_1.txt");
}

TEST_F(KernelsTest, ListsTheRecordsOfOrderedKernels)
{
    expectAnswer("ordered", "1", "kernels_ordered_1.txt");
}

TEST_F(KernelsTest, ShowsRecordsAsJson)
{
    expectAnswer("linked", "1", "kernels_linked_1.json", {"--format", "json", "--group", "front"});
}

TEST_F(KernelsTest, HistoriesAreThoseOfTheArithmetic)
{
    for (const std::string files : {"linked", "ordered"}) {
        const ToolRun result = ask(files, "1");
        // Pixel array: 8 and 4 on each side. Back end: 20 and 15 behind binning by 2 and scaling by 1/2, so times 4.
        EXPECT_EQ(kernel(result, "front", "crop")[0].at("SOURCE CROP"), "88,64,88,64") << files;
        EXPECT_EQ(kernel(result, "front", "crop")[0].at("ARRIVES"), "960x720") << files;
        // The kernel's crop of 90 lines, each (3008 - 64 - 64) / 720 = 4 of the sensor: 64 + 360.
        EXPECT_EQ(kernel(result, "front", "shade")[0].at("SOURCE CROP"), "88,424,88,424") << files;
        EXPECT_EQ(kernel(result, "front", "shade")[0].at("ARRIVES"), "960x540") << files;
    }
    // The next crop of 40 columns, each (4016 - 88 - 88) / 480 = 8 of the sensor: 88 + 320.
    EXPECT_EQ(kernel(ask("ordered", "1"), "back", "pack")[0].at("SOURCE CROP"), "408,424,408,424");
}

TEST_F(KernelsTest, KernelWithSeveralOutputsShowsEach)
{
    const TableRows rows = kernel(ask("linked", "1"), "front", "scale");
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].at("OUTPUT"), "0");
    EXPECT_EQ(rows[0].at("OUT"), "480x270");
    EXPECT_EQ(rows[1].at("OUTPUT"), "1");
    EXPECT_EQ(rows[1].at("OUT"), "240x135");
}

TEST_F(KernelsTest, StatesAreEnabledBypassAndDisabled)
{
    const ToolRun result = ask("linked", "5"); // aux_out is off, and pack leads to nothing else
    EXPECT_EQ(kernel(result, "front", "scale")[0].at("STATE"), "ENABLED");
    EXPECT_EQ(kernel(result, "front", "smooth")[0].at("STATE"), "BYPASS");
    EXPECT_EQ(kernel(result, "front", "pack")[0].at("STATE"), "DISABLED");
}

TEST_F(KernelsTest, KernelsOfOneNameInTwoGroupsAreToldApart)
{
    const ToolRun result = ask("linked", "1");
    EXPECT_EQ(kernel(result, "front", "scale")[0].at("UUID"), "104");
    EXPECT_EQ(kernel(result, "back", "scale")[0].at("UUID"), "202");
}

TEST_F(KernelsTest, StreamAndGroupSelect)
{
    const std::vector<std::string> both = {"front", "middle"};
    EXPECT_EQ(column(ask("ordered", "1", {"--stream", "1"}), "GROUP"), both);
    EXPECT_EQ(column(ask("ordered", "1", {"--group", "middle"}), "GROUP"), std::vector<std::string>{"middle"});
    EXPECT_EQ(column(ask("linked", "1", {"--stream", "2"}), "GROUP"), std::vector<std::string>{"back"});
}

TEST_F(KernelsTest, GroupsComeStreamByStream)
{
    const ToolRun result = ask("kva6", "60100");
    std::vector<int> streams;
    for (const auto& row : rowsOf(result.out)) streams.push_back(std::stoi(row.at("STREAM")));
    EXPECT_GT(streams.size(), 50U);
    EXPECT_TRUE(std::is_sorted(streams.begin(), streams.end())) << result.out;
}

TEST_F(KernelsTest, UnknownStreamIsAUsageError)
{
    const ToolRun result = ask("linked", "1", {"--stream", "7"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "nuxo: error[unknown-stream]: no node of the graph is in stream 7; expected one of 0, 1, 2\n"
                          "    --stream 7\n"
                          "             ^\n");
}

TEST_F(KernelsTest, StreamThatIsNoNumberIsAUsageError)
{
    for (const std::string stream : {"abc", "99999999999", "4.5"}) {
        const ToolRun result = ask("linked", "1", {"--stream", stream});
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.err.find("nuxo: error[usage]: Could not convert: --stream = " + stream +
                                  "; expected a whole number of 32 bits\n"),
                  0U)
            << result.err;
    }
}

TEST_F(KernelsTest, UnknownGroupGetsASuggestion)
{
    const ToolRun result = ask("linked", "1", {"--group", "frond"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.err.find("nuxo: error[unknown-group]: 'frond' is no program group of the graph; expected one that "
                              "nuxo contexts lists; did you mean 'front'?\n"),
              0U)
        << result.err;
}

TEST_F(KernelsTest, WrongSizeIsFoundWhereTheKernelStatesIt)
{
    // Both groups have a kernel called scale: the one that does not fit is meant.
    expectFinding("linked", "2", "linked_settings.xml:56:27",
                  "Consistency error in kernel scale, res info input(640x270) is different than res history "
                  "output(480x270)- check your settings!");
    // Only the height is wrong.
    expectFinding("linked", "3", "linked_settings.xml:71:38",
                  "Consistency error in kernel crop, res info input(960x700) is different than res history "
                  "output(960x720)- check your settings!");
}

TEST_F(KernelsTest, WrongLinkIsFoundAtTheLink)
{
    expectFinding("linked", "6", "linked.xml:64:13",
                  "Found klink to a mux non active input plain:0->choice:0 - incorrect GDF");
    expectFinding("linked", "7", "linked.xml:72:13",
                  "Failed to find Imaging Node unknown named in klink in the list of nodes. Inconsistent graph");
}

TEST_F(KernelsTest, WrongKernelIsFoundAlsoWhereTheLibraryTellsOnlyTheStream)
{
    expectFinding("ordered", "3", "ordered_settings.xml:54:60", "Resolution history output width or height is 0");
    expectFinding("ordered", "5", "ordered.xml:50:34",
                  "Error: Bad kernel id(s). Kernel ids need to run from 0 to n. Check the GDF.");
    expectFinding("ordered", "6", "ordered.xml:55:55", "Kernel sink port id 9 invalid");
}

TEST_F(KernelsTest, SourceWithoutSizeIsFoundAtTheSource)
{
    std::string settings = read("linked_settings.xml");
    const std::string size = " width=\"1000\" height=\"750\">";
    settings.erase(settings.find("<mode name=\"half\"" + size) + 17, size.size() - 1);
    write("no_size.xml", settings);
    const ToolRun result = run({"kernels", "linked.xml", "no_size.xml", "--key", "1"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err.find("linked.xml:7:9: error[kernels]: filling the records of setting 1 ended with "
                              "StatusNotFound: Error: Couldn't get width; expected "),
              0U)
        << result.err;
    EXPECT_EQ(count(result.err, "error["), 1U) << result.err;
}

TEST_F(KernelsTest, StreamsInACircleAreAFinding)
{
    std::string circle = read("linked.xml");
    const std::string port = "<port name=\"aux_out\"";
    circle.insert(circle.find(port), "<port name=\"aux_in\" id=\"9\" direction=\"0\"/>");
    const std::string connection = "<connection source=\"back:main_out\" sink=\"main_sink\"/>";
    circle.insert(circle.find(connection), "<connection source=\"back:main_out\" sink=\"front:aux_in\"/>");
    write("circle.xml", circle);
    const ToolRun result = run({"kernels", "circle.xml", "linked_settings.xml", "--key", "1"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("error[kernels]: Traversal of meta graph did not reach all nodes 1/3; expected streams "
                              "that frames reach: the others have no records\n"),
              std::string::npos)
        << result.err;
}

TEST_F(KernelsTest, WarningStandsAtTheKernel)
{
    const ToolRun result = ask("linked", "4");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err.find("linked.xml:48:13: warning[kernels]: Node blend settings have 1 res info but node has 2 "
                              "children\n"),
              0U)
        << result.err;
    EXPECT_EQ(count(result.err, "warning["), 1U) << result.err;
}

TEST_F(KernelsTest, ProgressOfTheLibraryIsNoFinding)
{
    const ToolRun result = run({"kernels", "linked.xml", "linked_settings.xml", "--key", "1", "--verbose"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.err.find("log[error] NUXO[XOS]:Visiting  node "), std::string::npos) << result.err;
    EXPECT_EQ(count(result.err, " error["), 0U) << result.err;
}

TEST_F(KernelsTest, GraphWithoutKernelsIsSaidToHaveNone)
{
    const ToolRun result = ask("kva6", "60206");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("note: setting 60206 has no program group\n"), std::string::npos) << result.err;
}

TEST_F(KernelsTest, StreamWithoutKernelsIsSaidToHaveNone)
{
    const ToolRun result = ask("linked", "1", {"--stream", "0"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("note: setting 1 has no program group in stream 0\n"), std::string::npos) << result.err;
}

TEST_F(KernelsTest, KernelsOfTheExamplesAreInOrder)
{
    expectNoErrorsInTheExamples();
}

} // namespace
