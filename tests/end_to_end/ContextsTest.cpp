// SPDX-License-Identifier: Apache-2.0
#include "GraphVerbTest.h"

namespace {

class ContextsTest : public GraphVerbTest {
protected:
    ContextsTest() : GraphVerbTest("contexts") {}

    // One of the three tables, counted from 0.
    static TableRows table(const ToolRun& result, size_t index)
    {
        size_t start = 0;
        for (size_t i = 0; i < index; ++i) start = result.out.find("\n\n", start) + 2;
        const size_t end = result.out.find("\n\n", start);
        return rowsOf(result.out.substr(start, end == std::string::npos ? end : end - start));
    }

    // "from source > to sink" of each connection.
    static std::vector<std::string> connectionsOf(const ToolRun& result)
    {
        std::vector<std::string> texts;
        for (const auto& row : table(result, 1)) {
            texts.push_back(row.at("FROM") + ' ' + row.at("SOURCE") + " > " + row.at("TO") + ' ' + row.at("SINK"));
        }
        return texts;
    }
};

TEST_F(ContextsTest, StreamsTellOlderGraphsApart)
{
    expectAnswer("kva5", "50101", "contexts_kva5_50101.txt");
}

TEST_F(ContextsTest, ExecutionContextsTellNewerGraphsApart)
{
    const ToolRun result = ask("kva6", "60106");
    EXPECT_EQ(result.exitCode, 0);
    expectGolden(result.out, "contexts_kva6_60106.txt");
    // vid_bayer has tuning mode 1, and the graph sets that of vid_tnr in the same context to 3.
    EXPECT_EQ(
        result.err.find("kva6_settings.xml: warning[contexts]: Mismatch in tuning mode (1 vs 3) for same execution "
                        "Context 1!!!"),
        0U)
        << result.err;
}

TEST_F(ContextsTest, ComputeBlocksAndExternalStagesAreNodesOfContexts)
{
    expectAnswer("kva7", "70109", "contexts_kva7_70109.txt");
}

TEST_F(ContextsTest, ShowsContextsAsJson)
{
    expectAnswer("kva7", "70403", "contexts_kva7_70403.json", {"--format", "json"});
}

TEST_F(ContextsTest, FirstNodeOfAContextDecidesItsTuningMode)
{
    const TableRows nodes = table(ask("questions", "1"), 0);
    ASSERT_EQ(nodes.size(), 4U);
    EXPECT_EQ(nodes[0].at("TUNING"), "1");
    EXPECT_EQ(nodes[1].at("NODE"), "tone"); // says 2 itself
    EXPECT_EQ(nodes[1].at("TUNING"), "1");
    EXPECT_EQ(nodes[2].at("TUNING"), "-");
    EXPECT_EQ(nodes[0].at("KERNELS"), "2");
}

TEST_F(ContextsTest, NodesOutsideOfAllContextsComeLast)
{
    const ToolRun result = ask("questions", "1");
    EXPECT_EQ(table(result, 0).back().at("NODE"), "loose");
    EXPECT_EQ(table(result, 0).back().at("CONTEXT"), "-");
    const ToolRun json = ask("questions", "1", {"--format", "json"});
    EXPECT_NE(json.out.find("\"id\": null,\n      \"tuning_mode\": null,\n      \"nodes\": [\n        {\n"
                            "          \"name\": \"loose\""),
              std::string::npos)
        << json.out;
}

TEST_F(ContextsTest, ListsConnectionsThatCrossContexts)
{
    const std::vector<std::string> expected = {
        "0 csi:output > 1 front:input",     "1 front:stats_out > 1 stats_sink", "1 tone:other_out > 1 other_sink",
        "1 tone:main_out > 2 pack:input",   "2 pack:main_out > 2 main_sink",
        "1 tone:other_out > - loose:input", // loose is in none
    };
    EXPECT_EQ(connectionsOf(ask("questions", "1")), expected);
}

TEST_F(ContextsTest, ListsConnectionsThatCrossStreams)
{
    // The connections of the graph that are in the setting, less those between groups of stream 1.
    const std::vector<std::string> expected = {
        "0 csi_be:output > 1 vf_isa:input",     "1 vf_isa:ae_out > 1 ae_stats_sink",
        "1 vf_isa:awb_out > 1 awb_stats_sink",  "1 vf_isa:af_out > 1 af_stats_sink",
        "1 vf_dm:hist_out > 1 hist_stats_sink", "1 vf_gdc:prv_out > 3 pv_out:input",
        "1 vf_gdc:dvs_out > 1 dvs_stats_sink",  "1 vf_out:main_out > 1 video_sink",
        "3 pv_out:main_out > 3 preview_sink",
    };
    EXPECT_EQ(connectionsOf(ask("kva5", "50101")), expected);
}

TEST_F(ContextsTest, ConnectionBetweenStagesOfOneContextDoesNotCrossIt)
{
    const ToolRun result = ask("kva7", "70109");
    for (const std::string& connection : connectionsOf(result)) {
        EXPECT_EQ(connection.find("> 8 gpu_zoom:input"), std::string::npos) << connection;
    }
    EXPECT_EQ(connectionsOf(result).back(), "8 gpu_zoom:main_out > 8 zoom_sink");
}

TEST_F(ContextsTest, BoundariesIncludePortsWithoutPeer)
{
    std::map<std::string, std::string> enabled;
    for (const auto& row : table(ask("questions", "1"), 2)) {
        if (row.at("PEER") == "-") enabled[row.at("BOUNDARY")] = row.at("ENABLED");
    }
    EXPECT_EQ(enabled["front:off_out"], "no");
    EXPECT_EQ(enabled["front:anonymous_out"], "no");
    EXPECT_EQ(enabled["front:loop_in"], "private");
    EXPECT_EQ(enabled.count("front:main_out"), 0U); // leads to tone, in the same context
}

TEST_F(ContextsTest, GroupWithoutContextAndStreamIsAFinding)
{
    const ToolRun result = ask("questions", "1");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("questions_settings.xml: error[contexts]: Failed to get stream_id for port "
                              "port[loose:input]\n"),
              std::string::npos)
        << result.err;
}

TEST_F(ContextsTest, SourceOutsideOfAllContextsIsNoFinding)
{
    const ToolRun result = ask("kva6", "60403");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(connectionsOf(result).front(), "- buffer_src1:port_0 > 5 rpr_yuv:input");
}

TEST_F(ContextsTest, GraphWithoutContextsIsSaidToHaveNone)
{
    const ToolRun result = ask("kva6", "60206");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "kva6_settings.xml: note: the graph of setting 60206 has nothing that is in contexts\n");
}

TEST_F(ContextsTest, ContextsOfTheExamplesAreInOrder)
{
    expectNoErrorsInTheExamples();
}

} // namespace
