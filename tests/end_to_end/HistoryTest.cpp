// SPDX-License-Identifier: Apache-2.0
#include "GraphVerbTest.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace {

using Json = nlohmann::json;

class HistoryTest : public GraphVerbTest {
protected:
    HistoryTest() : GraphVerbTest("history") {}

    // The first row of a node.
    static std::map<std::string, std::string> node(const ToolRun& result, const std::string& name)
    {
        for (const auto& row : rowsOf(result.out)) {
            if (row.at("NODE") == name) return row;
        }
        ADD_FAILURE() << name << " is not in\n" << result.out;
        return {};
    }

    static bool isIn(const ToolRun& result, const std::string& name)
    {
        return count(result.out, "\"name\": \"" + name + '"') > 0 ||
               result.out.find(' ' + name + ' ') != std::string::npos;
    }

    // What arrives at a node, crops included, is what one of those before it passes on.
    static void expectChains(const ToolRun& answer)
    {
        const Json document = Json::parse(answer.out);
        std::map<std::string, std::vector<Json>> passed;
        for (const Json& node : document.at("nodes")) {
            for (const Json& link : node.at("links")) {
                if (!link.at("history").is_null()) passed[link.at("to")].push_back(link.at("history"));
            }
        }
        size_t compared = 0;
        for (const Json& node : document.at("nodes")) {
            const std::vector<Json>& offers = passed[node.at("name")];
            if (offers.empty() || node.at("arrives").is_null()) continue;
            EXPECT_NE(std::find(offers.begin(), offers.end(), node.at("arrives")), offers.end()) << node;
            ++compared;
        }
        EXPECT_GT(compared, 3U) << answer.out;
    }
};

TEST_F(HistoryTest, TellsOfOrderedKernels)
{
    expectAnswer("ordered", "1", "history_ordered_1.txt", {"--stream", "2"});
}

TEST_F(HistoryTest, TellsOfLinkedKernels)
{
    expectAnswer("linked", "1", "history_linked_1.txt", {"--stream", "1"});
}

TEST_F(HistoryTest, TellsInJson)
{
    expectAnswer("linked", "5", "history_linked_5.json", {"--stream", "2", "--format", "json"});
}

TEST_F(HistoryTest, StartsWithTheStagesOfTheSensor)
{
    const TableRows rows = rowsOf(ask("ordered", "1", {"--stream", "2"}).out);
    ASSERT_GT(rows.size(), 4U);
    EXPECT_EQ(rows[0].at("NODE"), "sensor:pixel_array");
    EXPECT_EQ(rows[0].at("CROP"), "8,4,8,4");
    EXPECT_EQ(rows[1].at("NODE"), "sensor:binner");
    EXPECT_EQ(rows[1].at("OUT"), "2000x1500");
    EXPECT_EQ(rows[2].at("NODE"), "sensor:scaler");
    EXPECT_EQ(rows[2].at("OUT"), "1000x750");
    EXPECT_EQ(rows[3].at("NODE"), "csi_be");
    EXPECT_EQ(rows[3].at("CROP"), "20,15,20,15");
    EXPECT_EQ(rows[3].at("SOURCE CROP"), "88,64,88,64"); // 8 + 4 * 20 and 4 + 4 * 15
}

TEST_F(HistoryTest, StartsAtOtherSourcesAsWell)
{
    EXPECT_EQ(rowsOf(ask("kva6", "60300", {"--stream", "1"}).out).front().at("NODE"), "tpg:port_0");
    const TableRows rows =
        rowsOf(run({"history", "kva6_descriptor.xml", "kva6_settings.xml", "--key", "60400", "--stream", "2"}).out);
    EXPECT_EQ(rows.front().at("NODE"), "buffer_src0:port_0");
    EXPECT_EQ(rows.front().at("TO"), "still_bayer:input");
}

TEST_F(HistoryTest, EndsAtSinks)
{
    const std::map<std::string, std::string> sink = node(ask("ordered", "1", {"--stream", "2"}), "main_sink");
    EXPECT_EQ(sink.at("IN"), "400x270");
    EXPECT_EQ(sink.at("FITS"), "yes");
}

TEST_F(HistoryTest, BranchGoesOnWithWhatWasThere)
{
    // grid restores the branch that starts behind shade, ahead of the scaler.
    const ToolRun result = ask("ordered", "1", {"--stream", "1"});
    EXPECT_EQ(node(result, "front:shade").at("TO"), "scale, grid");
    EXPECT_EQ(node(result, "front:grid").at("IN"), "960x540");
}

TEST_F(HistoryTest, OutputsOfAKernelAreToldApart)
{
    std::vector<std::string> outputs;
    for (const auto& row : rowsOf(ask("linked", "1", {"--stream", "1"}).out)) {
        if (row.at("NODE") == "front:scale")
            outputs.push_back(row.at("OUTPUT") + ' ' + row.at("OUT") + ' ' + row.at("TO"));
    }
    EXPECT_EQ(outputs, (std::vector<std::string>{"0 480x270 smooth", "1 240x135 pack"}));
}

TEST_F(HistoryTest, FeedbackIsMarked)
{
    EXPECT_EQ(node(ask("linked", "1", {"--stream", "2"}), "back:ref_out").at("TO"), "ref_in (feedback)");
    EXPECT_EQ(node(ask("ordered", "1", {"--stream", "1"}), "middle:ref_out").at("TO"), "ref_in (feedback)");
}

TEST_F(HistoryTest, KernelWithASourceContinuesThat)
{
    const ToolRun result = ask("ordered", "1", {"--stream", "1"});
    EXPECT_EQ(node(result, "middle:ref_in").at("TO"), "read");
    EXPECT_EQ(node(result, "middle:keep").at("TO"), "ref_out");
}

TEST_F(HistoryTest, DisabledKernelsAreToldWithoutHistory)
{
    const std::map<std::string, std::string> pack = node(ask("linked", "5", {"--stream", "1"}), "front:pack");
    EXPECT_EQ(pack.at("STATE"), "DISABLED");
    EXPECT_EQ(pack.at("FITS"), "-");
}

TEST_F(HistoryTest, LinkedChainEndsAtTheKernelThatBreaksIt)
{
    const ToolRun result = ask("linked", "2", {"--stream", "2"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err.find("linked_settings.xml:56:27: error[kernels]: "), 0U) << result.err;
    EXPECT_EQ(count(result.err, "error["), 1U) << result.err;
    EXPECT_EQ(node(result, "back:scale").at("FITS"), "NO: takes 640x270");
    EXPECT_EQ(node(result, "back:scale").at("OUT"), "-");
    EXPECT_EQ(node(result, "front:scale").at("FITS"), "yes");
    EXPECT_FALSE(isIn(result, "back:main_out")) << result.out;
    EXPECT_FALSE(isIn(result, "main_sink")) << result.out;
}

TEST_F(HistoryTest, OrderedChainGoesOnBehindAKernelThatBreaksIt)
{
    const ToolRun result = ask("ordered", "2", {"--stream", "2"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(node(result, "front:crop").at("FITS"), "NO: takes 960x700");
    EXPECT_EQ(node(result, "back:scale").at("FITS"), "NO: takes 640x270");
    EXPECT_EQ(node(result, "main_sink").at("IN"), "400x270");
    expectGolden(result.err, "history_ordered_2.err");
}

TEST_F(HistoryTest, FindingsAreThoseOfTheWayToTheStream)
{
    // The second fault of the setting lies behind stream 1.
    EXPECT_EQ(count(ask("ordered", "2", {"--stream", "1"}).err, "error["), 1U);
}

TEST_F(HistoryTest, SizesThatNothingDependsOnAreWarnings)
{
    const ToolRun result = ask("linked", "4", {"--stream", "2"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(node(result, "back:blend").at("FITS"), "states 470x270");
    EXPECT_EQ(count(result.err, "warning[size]"), 2U) << result.err; // the sink repeats what the port states
    EXPECT_EQ(count(result.err, "linked_settings.xml:112:27: warning[size]: back:blend takes 470x270, but 480x270 "
                                "arrives; expected 480x270\n"),
              1U)
        << result.err;
    EXPECT_EQ(count(result.err, "linked_settings.xml:109:35: warning[size]: back:main_out takes 400x300, but 400x270 "
                                "arrives; expected 400x270\n"),
              1U)
        << result.err;
}

TEST_F(HistoryTest, GraphThatCannotBeAnalysedShowsWhatIsKnown)
{
    const ToolRun result = ask("linked", "6", {"--stream", "3"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err.find("linked.xml:64:13: error[kernels]: "), 0U) << result.err;
}

TEST_F(HistoryTest, UnknownStreamIsAUsageError)
{
    const ToolRun result = ask("linked", "1", {"--stream", "9"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.err.find("nuxo: error[unknown-stream]: "), 0U) << result.err;
}

TEST_F(HistoryTest, ChainsOfTheExamplesFitInGeneration5)
{
    expectNoErrorsInStreamsOf("kva5", {"--format", "json"}, expectChains);
}

TEST_F(HistoryTest, ChainsOfTheExamplesFitInGeneration6)
{
    expectNoErrorsInStreamsOf("kva6", {"--format", "json"}, expectChains);
}

TEST_F(HistoryTest, ChainsOfTheExamplesFitInGeneration7)
{
    expectNoErrorsInStreamsOf("kva7", {"--format", "json"}, expectChains);
}

} // namespace
