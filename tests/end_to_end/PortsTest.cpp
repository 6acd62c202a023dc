// SPDX-License-Identifier: Apache-2.0
#include "GraphVerbTest.h"

namespace {

class PortsTest : public GraphVerbTest {
protected:
    PortsTest() : GraphVerbTest("ports") {}

    static std::map<std::string, std::string> port(const ToolRun& result, const std::string& node,
                                                   const std::string& name)
    {
        for (const auto& row : rowsOf(result.out)) {
            if (row.at("NODE") == node && row.at("PORT") == name) return row;
        }
        ADD_FAILURE() << node << ':' << name << " is not in\n" << result.out;
        return {};
    }

    struct Expectation {
        const char* node;
        const char* port;
        const char* column;
        const char* cell;
    };

    static void expectCells(const ToolRun& result, const std::vector<Expectation>& expectations)
    {
        for (const Expectation& expected : expectations) {
            EXPECT_EQ(port(result, expected.node, expected.port)[expected.column], expected.cell)
                << expected.node << ':' << expected.port << ' ' << expected.column;
        }
    }
};

TEST_F(PortsTest, ListsAGraphOfStreams)
{
    expectAnswer("kva5", "50101", "ports_kva5_50101.txt");
}

TEST_F(PortsTest, ListsAGraphOfExecutionContexts)
{
    expectAnswer("kva6", "60106", "ports_kva6_60106.txt");
}

TEST_F(PortsTest, ListsAGraphOfComputeBlocks)
{
    expectAnswer("kva7", "70106", "ports_kva7_70106.txt");
}

TEST_F(PortsTest, ListsPortsAsJson)
{
    expectAnswer("kva5", "50403", "ports_kva5_50403.json", {"--format", "json"});
}

TEST_F(PortsTest, StridesAndSizesFollowTheFormat)
{
    expectCells(ask("kva5", "50101"),
                {
                    // Unpacked 10 bits: 2 * 4208 = 8416, up to a multiple of 64; 3120 lines of it.
                    {"sensor", "port_0", "STRIDE", "8448"},
                    {"sensor", "port_0", "BUFFER", "26357760"},
                    // Line-interleaved: 4 * 2304; 1.5 * 9216 * 1296.
                    {"vf_isa", "main_out", "STRIDE", "9216"},
                    {"vf_isa", "main_out", "BUFFER", "17915904"},
                    // 10 bits, semi-planar: 2 * 2304; 1.5 * 4608 * 1296.
                    {"vf_dm", "main_out", "STRIDE", "4608"},
                    {"vf_dm", "main_out", "BUFFER", "8957952"},
                    // 8 bits, semi-planar: 1.5 * 1920 * 1080.
                    {"vf_out", "main_out", "STRIDE", "1920"},
                    {"vf_out", "main_out", "BUFFER", "3110400"},
                });
    expectCells(ask("kva6", "60106"), {
                                          // Phase detection: 2 * 263 = 526, up to a multiple of 64; 1.5 * 576 * 195.
                                          {"csi_be_soc", "input", "STRIDE", "576"},
                                          {"csi_be_soc", "input", "BUFFER", "168480"},
                                          // Vectorised Bayer: 2 * 1920, 1080 lines without anything added.
                                          {"vid_bayer", "main_out", "STRIDE", "3840"},
                                          {"vid_bayer", "main_out", "BUFFER", "4147200"},
                                      });
}

TEST_F(PortsTest, StrideOfTheGraphOutranksThatOfTheFormat)
{
    // 640 pixels of 8 bits; 1.5 * 1024 * 480.
    const ToolRun result = ask("questions", "2");
    expectCells(result, {{"front", "wide_out", "STRIDE", "1024"}, {"front", "wide_out", "BUFFER", "737280"}});
}

TEST_F(PortsTest, SizeOfACompressedFrameCountsItsTables)
{
    // 960 bytes up to a multiple of 128; 720 and 360 lines up to multiples of 32: 1024 * (736 + 384) = 1146880, which is
    // 280 * 4096. Tables of a bit for each 128 bytes, 736 and 384 bytes, take 4096 each.
    const ToolRun result = ask("questions", "1");
    expectCells(result, {{"pack", "main_out", "STRIDE", "1024"}, {"pack", "main_out", "BUFFER", "1155072"}});
}

TEST_F(PortsTest, TerminalsTellStageAndPort)
{
    // pg_id 11 is 0xb, "0G" from the low byte up 0x4730, and the port's id is added.
    expectCells(ask("kva5", "50101"), {{"vf_isa", "input", "TERMINAL", "0x000b4730"},
                                       {"vf_isa", "af_out", "TERMINAL", "0x000b4735"},
                                       {"sensor", "port_1", "TERMINAL", "0x00000001"}}); // a source has no stage
    // Simulated "SA" is 0x4153; on the GPU "XE" is 0x4558.
    expectCells(ask("questions", "1"),
                {{"tone", "main_out", "TERMINAL", "0x00024154"}, {"pack", "input", "TERMINAL", "0x00034558"}});
}

TEST_F(PortsTest, EdgesAreWhereContextsOrStreamsMeet)
{
    expectCells(ask("kva5", "50101"), {{"csi_be", "output", "EDGE", "yes"},   // stream 0 to 1
                                       {"vf_gdc", "prv_out", "EDGE", "yes"},  // 1 to 3
                                       {"vf_gdc", "main_out", "EDGE", "no"},  // within 1
                                       {"vf_out", "main_out", "EDGE", "yes"}, // into a virtual sink
                                       {"video_sink", "-", "EDGE", "-"},      // nothing lies behind it
                                       {"csi_be", "input", "EDGE", "-"}});    // the sensor is in no stream
    expectCells(ask("questions", "1"),
                {{"tone", "input", "EDGE", "no"}, {"pack", "input", "EDGE", "yes"}, {"loose", "input", "EDGE", "-"}});
}

TEST_F(PortsTest, DisabledAndPrivatePortsShowWhatApplies)
{
    const ToolRun result = ask("questions", "1");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    expectCells(result, {
                            {"front", "off_out", "ENABLED", "no"},
                            {"front", "off_out", "PEER", "-"},
                            {"front", "off_out", "SIZE", "-"},
                            {"front", "off_out", "TERMINAL", "0x00014738"},
                            {"front", "loop_in", "ENABLED", "private"},
                            {"front", "loop_in", "PEER", "-"},
                            {"front", "loop_in", "SIZE", "1000x750"},
                            {"front", "loop_in", "BUFFER", "2304000"}, // 1.5 * 2048 * 750
                            {"front", "hidden_out", "ENABLED", "private"},
                            {"front", "hidden_out", "FORMAT", "-"},
                        });
}

TEST_F(PortsTest, StatisticsNeedNoSize)
{
    const ToolRun result = ask("questions", "1");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    expectCells(result, {{"front", "stats_out", "PEER", "stats_sink"}, {"front", "stats_out", "SIZE", "-"}});
}

TEST_F(PortsTest, ValuesComeFromThePeerWhereThePortHasNone)
{
    expectCells(ask("questions", "1"),
                {{"pack", "input", "SIZE", "1000x750"}, {"pack", "input", "FORMAT", "YUV420_10_SP"}});
}

TEST_F(PortsTest, AllConnectionsOfAPortAreShown)
{
    EXPECT_EQ(port(ask("kva7", "70106"), "cb_prv", "main_out")["PEER"], "preview_sink, gpu_bokeh:input");
    const ToolRun json = ask("questions", "1", {"--format", "json"});
    EXPECT_NE(json.out.find("\"peer\": \"other_sink\",\n      \"other_peers\": [\n        \"loose:input\"\n      ]"),
              std::string::npos)
        << json.out;
}

TEST_F(PortsTest, VirtualSinksArePortsWithoutANode)
{
    const TableRows rows = rowsOf(ask("kva5", "50403").out);
    ASSERT_EQ(rows.size(), 4U);
    EXPECT_EQ(rows.back().at("NODE"), "reproc_sink");
    EXPECT_EQ(rows.back().at("PORT"), "-");
    EXPECT_EQ(rows.back().at("DIR"), "in");
    EXPECT_EQ(rows.back().at("PEER"), "yr_out:main_out");
    EXPECT_EQ(rows.back().at("SIZE"), "640x480");
}

TEST_F(PortsTest, OddPortsAreListedWithFindings)
{
    const ToolRun result = ask("questions", "2");
    EXPECT_EQ(result.exitCode, 1);
    expectGolden(result.out, "ports_questions_2.txt");
    expectGolden(result.err, "ports_questions_2.err");
}

TEST_F(PortsTest, NegativeSizeIsReportedOnceWhereItStands)
{
    const ToolRun result = ask("questions", "2");
    const std::string place = "questions_settings.xml:37:27: error[bad-size]: front:negative_out: width is -640; ";
    EXPECT_EQ(count(result.err, place + "expected 0 or more\n"), 1U) << result.err;
    EXPECT_EQ(count(result.err, "error[bad-size]"), 1U) << result.err;
}

TEST_F(PortsTest, UnknownFormatGetsASuggestionAtItsPlace)
{
    const ToolRun result = run({"ports", "descriptor.xml", "settings.xml", "--key", "3"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(count(result.err, "error["), 2U) << result.err; // of a port and of a virtual sink
    EXPECT_EQ(
        result.err.find("settings.xml:35:67: error[unknown-format]: sensor:port_0: 'GRBG10' names no format and is "
                        "taken for GRBG_8; expected one that nuxo formats lists; did you mean 'GRBG_10'?\n"),
        0U)
        << result.err;
}

TEST_F(PortsTest, FormatWithoutAStrideOfItsOwnIsAWarning)
{
    const ToolRun result = ask("kva5", "50207");
    EXPECT_EQ(result.exitCode, 0);
    // Packed 10 bits: the width up to a multiple of 64; 1.5 * 4224 * 3120.
    expectCells(result, {{"csi_be", "raw_output", "STRIDE", "4224"}, {"raw_sink", "-", "BUFFER", "19768320"}});
    EXPECT_EQ(count(result.err, "warning["), 2U) << result.err;
    EXPECT_EQ(result.err.find("kva5_settings.xml:1280:52: warning[port]: csi_be:raw_output: bpl defaulting to width\n"),
              0U)
        << result.err;
}

TEST_F(PortsTest, FindingOfTheBuildIsNotRepeatedByThePort)
{
    const ToolRun result = run({"ports", "descriptor.xml", "settings.xml", "--key", "7"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(count(result.err, "Failed to find peer by name ghost:input"), 1U) << result.err;
}

TEST_F(PortsTest, CriteriaSelectTheSettingAsWell)
{
    addExample("kva5");
    const ToolRun result = run({"ports", "kva5_descriptor.xml", "kva5_settings.xml", "reproc_sink:width=640"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(rowsOf(result.out).size(), 4U);
}

TEST_F(PortsTest, SettingThatCannotBeBuiltIsAFinding)
{
    const ToolRun result = run({"ports", "descriptor.xml", "settings.xml", "--key", "4"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err.find("settings.xml:38:5: error[build-failed]: building setting 4 ended with StatusBadState"),
              0U)
        << result.err;
}

TEST_F(PortsTest, PortsOfTheExamplesAreInOrder)
{
    expectNoErrorsInTheExamples();
}

} // namespace
