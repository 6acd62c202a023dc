// SPDX-License-Identifier: Apache-2.0
#include "GraphVerbTest.h"

namespace {

class DrawTest : public GraphVerbTest {
protected:
    DrawTest() : GraphVerbTest("draw") {}

    // The line that defines a node, or the edge "from -> to".
    static std::string line(const ToolRun& result, const std::string& start)
    {
        const size_t at = result.out.find(start);
        if (at != std::string::npos) return result.out.substr(at, result.out.find('\n', at) - at);
        ADD_FAILURE() << start << " is not in\n" << result.out;
        return "";
    }

    static bool has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }
};

TEST_F(DrawTest, DrawsLinkedKernels)
{
    expectAnswer("linked", "5", "draw_linked_5.dot", {"--stream", "1"});
}

TEST_F(DrawTest, DrawsOrderedKernels)
{
    expectAnswer("ordered", "1", "draw_ordered_1.dot", {"--stream", "1"});
}

TEST_F(DrawTest, GroupsAreClusters)
{
    const ToolRun result = ask("ordered", "1", {"--stream", "1"});
    EXPECT_EQ(count(result.out, "subgraph "), 2U);
    EXPECT_EQ(count(result.out, "subgraph \"cluster_front\""), 1U);
    EXPECT_EQ(count(result.out, "subgraph \"cluster_middle\""), 1U);
}

TEST_F(DrawTest, DisabledIsDashedGreyAndSaid)
{
    const std::string pack = line(ask("linked", "5", {"--stream", "1"}), "\"front:pack\" [");
    EXPECT_TRUE(has(pack, "style=\"filled,dashed\"")) << pack;
    EXPECT_TRUE(has(pack, "color=\"#9a9a9a\"")) << pack;
    EXPECT_TRUE(has(pack, "disabled")) << pack;
    const std::string port = line(ask("linked", "5", {"--stream", "1"}), "\"front:aux_out\" [");
    EXPECT_TRUE(has(port, "disabled")) << port;
}

TEST_F(DrawTest, BypassedIsDashedAndSaid)
{
    const std::string smooth = line(ask("linked", "1", {"--stream", "1"}), "\"front:smooth\" [");
    EXPECT_TRUE(has(smooth, "style=\"filled,dashed\"")) << smooth;
    EXPECT_TRUE(has(smooth, "bypassed")) << smooth;
}

TEST_F(DrawTest, EdgesShowTheSizeThatPasses)
{
    const ToolRun result = ask("linked", "1", {"--stream", "1"});
    EXPECT_TRUE(has(line(result, "\"front:scale\" -> \"front:smooth\""), "480x270"));
    EXPECT_TRUE(has(line(result, "\"front:scale\" -> \"front:pack\""), "240x135"));
    EXPECT_TRUE(has(line(result, "\"csi_be:output\" -> \"front:input\""), "960x720"));
    EXPECT_TRUE(has(line(result, "\"front:main_out\" -> \"back:input\""), "480x270"));
}

TEST_F(DrawTest, FeedbackIsToldFromOtherEdges)
{
    const ToolRun result = ask("linked", "1", {"--stream", "2"});
    EXPECT_TRUE(has(line(result, "\"back:ref_out\" -> \"back:ref_in\""), "feedback 480x270"));
    EXPECT_EQ(count(result.out, "feedback"), 1U);
}

TEST_F(DrawTest, RoutingElementsSayWhatIsActive)
{
    // The mux of the faulty graph is drawn though the library refuses to link it.
    const ToolRun refused = ask("linked", "6", {"--stream", "3"});
    EXPECT_EQ(refused.exitCode, 1);
    const ToolRun result = ask("kva7", "70100", {"--stream", "2"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_TRUE(has(line(result, "\"cb_vcolor:tm_demux\" ["), "output 0"));
    EXPECT_TRUE(has(line(result, "\"cb_vcolor:tm_mux\" ["), "input 0"));
}

TEST_F(DrawTest, KernelThatBreaksTheChainIsRed)
{
    for (const std::string files : {"linked", "ordered"}) {
        const ToolRun result = ask(files, "2", {"--stream", "2"});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_TRUE(has(line(result, "\"back:scale\" ["), "does not fit: takes 640x270")) << files;
        EXPECT_EQ(count(result.out, "does not fit"), 1U) << files;
        EXPECT_EQ(count(result.err, "error["), 1U) << result.err;
        expectDotAccepts(result.out);
    }
}

TEST_F(DrawTest, EscapesNames)
{
    // Names of kernels in the order of their ids are free.
    std::string odd = read("ordered.xml");
    odd.replace(odd.find("name=\"tone\""), 11, "name=\"t&lt;o&amp;n&quot;e\"");
    write("odd.xml", odd);
    const ToolRun result = run({"draw", "odd.xml", "ordered_settings.xml", "--key", "1", "--stream", "1"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_TRUE(has(result.out, "t&lt;o&amp;n&quot;e")) << result.out;
    expectDotAccepts(result.out);
}

TEST_F(DrawTest, CropOnAnOutputExplainsTheSizeThatLeaves)
{
    // The second output, 480x272, loses two lines.
    const ToolRun result = ask("kva7", "70500", {"--stream", "2"});
    EXPECT_TRUE(has(line(result, "\"cb_vfuse:vx_pyramid\" ["), "1920x1080 to 480x272<BR/>crop 64,36,64,36<BR/>"
                                                               "output crop 0,0,0,2"));
    EXPECT_TRUE(has(line(result, "\"cb_vfuse:vx_pyramid\" -> \"cb_vfuse:vx_small\""), "480x270"));
}

TEST_F(DrawTest, SameBytesOnEveryRun)
{
    const ToolRun first = ask("kva6", "60100", {"--stream", "1"});
    const ToolRun second = run({"draw", "kva6_descriptor.xml", "kva6_settings.xml", "--key", "60100", "--stream", "1"});
    EXPECT_EQ(first.out, second.out);
    EXPECT_GT(count(first.out, " -> "), 40U);
}

TEST_F(DrawTest, DotAcceptsTheDrawings)
{
    expectDotAccepts(ask("linked", "5", {"--stream", "1"}).out);
    expectDotAccepts(ask("ordered", "1", {"--stream", "1"}).out);
    expectDotAccepts(ask("kva7", "70101", {"--stream", "1"}).out);
}

TEST_F(DrawTest, StreamsOfTheExamplesAreDrawn)
{
    const auto hasLinks = [](const ToolRun& answer) { EXPECT_GT(count(answer.out, " -> "), 3U) << answer.out; };
    for (const std::string generation : {"kva5", "kva6", "kva7"}) expectNoErrorsInStreamsOf(generation, {}, hasLinks);
}

} // namespace
