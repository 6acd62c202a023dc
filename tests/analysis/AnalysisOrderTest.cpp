// SPDX-License-Identifier: Apache-2.0
// The same graph gives the same log and the same records, wherever its parts lie in memory.
#include "analysis/AnalysisFixture.h"

#include <cstdlib>

namespace graphtest {

namespace {

/// Parts that may be written forwards or backwards without a change of meaning.
std::string joined(const Lines& parts, bool backwards)
{
    std::string all;
    for (const std::string& part : parts) all = backwards ? part + all : all + part;
    return all;
}

std::string scaler(const std::string& name, int uuid, int width, int height)
{
    return kernel(name, uuid, "rcb='1'",
                  "<input width='640' height='480'/><output width='" + std::to_string(width) + "' height='" +
                      std::to_string(height) + "'/>");
}

/// Two sources without stream, two streams, several neighbours wherever a node can have some. In `join` two branches meet of which
/// neither is larger than the other in both directions.
std::string wideGraph(bool backwards)
{
    const auto source = [](const std::string& name, const std::string& peer) { return bufferSource(peer, "", name); };
    const std::string links = klink("in", "zulu:0") + klink("in", "alpha:0") + klink("in", "mike:0") +
                              klink("zulu:0", "join:0") + klink("alpha:0", "join:1") + klink("mike:0", "fork:0") +
                              klink("join:0", "out") + klink("fork:0", "out3") + klink("fork:1", "out2");
    const std::string first =
        joined({input("in", "buffer_src0:port_0"), output("out", "video"), output("out2", "two:in"),
                output("out3", "three:in"), scaler("zulu", 1, 1920, 720), scaler("alpha", 2, 1280, 1080),
                scaler("mike", 3, 320, 240), kernel("join", 4), element("split", "fork")},
               backwards);
    const std::string second = joined({input("in", "one:out2"), input("in2", "buffer_src1:port_0"),
                                       output("out", "still"), kernel("k", 5), kernel("l", 6)},
                                      backwards);
    const std::string third =
        joined({input("in", "one:out3"), output("out", "still"), kernel("k", 7), kernel("l", 8)}, backwards);
    return joined(
        {source("buffer_src0", "one:in"), source("buffer_src1", "two:in2"),
         group("one", "stream_id='1'", first + links),
         group("two", "stream_id='2'",
               second + klink("in", "k:0") + klink("in2", "l:0") + klink("k:0", "l:1") + klink("l:0", "out")),
         group("three", "stream_id='2'",
               third + klink("in", "k:0") + klink("in", "l:0") + klink("k:0", "out") + klink("l:0", "out")),
         sink("video", "stream_id='1' peer='one:out'"), sink("still", "stream_id='2' peer='two:out'"),
         graphOf(connection("buffer_src1:port_0", "two:in2") + connection("buffer_src0:port_0", "one:in") +
                 connection("one:out", "video") + connection("one:out3", "three:in") +
                 connection("one:out2", "two:in") + connection("two:out", "still") + connection("three:out", "still"))},
        backwards);
}

/// Takes blocks of the sizes of small objects and gives them back so that the next ones lie behind each other downwards.
void turnHeapUpsideDown()
{
    constexpr size_t kBlocks = 7; // as many as the allocator keeps ready of a size
    for (size_t size = 16; size <= 1024; size += 16) {
        std::vector<void*> blocks;
        for (size_t i = 0; i < kBlocks; ++i) blocks.push_back(std::malloc(size));
        std::sort(blocks.begin(), blocks.end(), std::less<>());
        for (void* const block : blocks) std::free(block);
    }
}

class AnalysisOrderTest : public AnalysisTest {
protected:
    AnalysisOrderTest()
    {
        load(wideGraph(false)); // gives the names their keys
    }

    /// Everything that an analysis logs, and the records, as text.
    std::string analyse(GraphUtil& util, const GraphConfigNode& graph)
    {
        clearLog();
        EXPECT_EQ(util.init(NUXO_KEY_STREAM_ID, &graph, GdfVersionKVA6), StatusOk);
        util.dumpTevStructs();
        for (const int id : {-1, 1, 2}) util.dumpKernels(id);
        std::string all;
        for (const std::string& line : maskedLines()) all += line + "\n";
        return all;
    }

    std::string analyse(const GraphConfigNode& graph)
    {
        GraphUtil util;
        return analyse(util, graph);
    }
};

TEST_F(AnalysisOrderTest, AnalysingTwiceGivesTheSame)
{
    const std::string first = analyse(*mRoot);
    EXPECT_EQ(analyse(*mRoot), first);
    EXPECT_NE(first.find("2 TEV structure allocation succeeded !!"), std::string::npos);
    EXPECT_NE(first.find("resolution_history"), std::string::npos);
}

TEST_F(AnalysisOrderTest, OneObjectAnalysingAgainGivesTheSame)
{
    const std::string first = analyse(*mUtil, *mRoot);
    EXPECT_EQ(analyse(*mUtil, *mRoot), first);
    EXPECT_EQ(analyse(*mRoot), first);
}

TEST_F(AnalysisOrderTest, PlacesOfTheGraphDoNotMatter)
{
    const std::string first = analyse(*mRoot);
    const Tree copied(mRoot->copy());
    EXPECT_EQ(analyse(*copied), first);
    const Tree turned = descriptor(wideGraph(true));
    ASSERT_EQ(text(*turned), text(*mRoot));
    EXPECT_EQ(analyse(*turned), first);
}

TEST_F(AnalysisOrderTest, PlacesOfTheAnalysisDoNotMatter)
{
    const std::string first = analyse(*mRoot);
    turnHeapUpsideDown();
    EXPECT_EQ(analyse(*mRoot), first);
}

TEST_F(AnalysisOrderTest, FirstOfTwoBranchesIsTheOneThatStandsFirst)
{
    for (const bool upsideDown : {false, true}) {
        if (upsideDown) turnHeapUpsideDown();
        EXPECT_EQ(init(), StatusOk);
        qv_isp_zmt_program_group records = {};
        EXPECT_EQ(mUtil->getPgTevData(node("one"), records), StatusOk);
        ASSERT_EQ(records.kernel_count, 4U);
        ASSERT_EQ(records.run_kernels[3].kernel_uuid, 4U);
        EXPECT_EQ(records.run_kernels[3].resolution_history->output_width, 1920);
        EXPECT_EQ(records.run_kernels[3].resolution_history->output_height, 720);
    }
}

} // namespace

} // namespace graphtest
