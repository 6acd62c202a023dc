// SPDX-License-Identifier: Apache-2.0
#include "ToolTest.h"

namespace {

class DrawingTest : public ToolTest {
protected:
    ToolRun draw(const std::string& key) const
    {
        return run({"build", "descriptor.xml", "settings.xml", "--key", key, "--format", "dot"});
    }

    ToolRun drawOddNames() const
    {
        return run({"build", "odd_names.xml", "odd_names_settings.xml", "--format", "dot"});
    }
};

TEST_F(DrawingTest, DrawsBoxesPortsStreamsAndConnections)
{
    const ToolRun result = draw("1");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    expectGolden(result.out, "build_1.dot");
}

TEST_F(DrawingTest, DrawsEachConnectionOnce)
{
    // Setting 1 activates all five connections of graph 100; both ends of each name their peer.
    EXPECT_EQ(count(draw("1").out, " -> "), 5U);
}

TEST_F(DrawingTest, GroupsNodesByStream)
{
    const std::string drawing = draw("1").out;
    EXPECT_EQ(count(drawing, "subgraph "), 2U);
    EXPECT_EQ(count(drawing, "subgraph \"cluster_stream_60001\""), 1U);
    EXPECT_EQ(count(drawing, "subgraph \"cluster_stream_60002\""), 1U);
}

TEST_F(DrawingTest, DisabledConnectionsAreDashedAndGrey)
{
    const ToolRun result = drawOddNames();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    // One of the two connections starts at a disabled port.
    EXPECT_EQ(count(result.out, " -> "), 2U);
    EXPECT_EQ(count(result.out, " -> \"sink\" [style=dashed, color=\"#9a9a9a\"];"), 1U) << result.out;
    EXPECT_EQ(count(result.out, "[style=dashed"), 1U);
}

TEST_F(DrawingTest, EscapesNames)
{
    const ToolRun result = drawOddNames();
    expectGolden(result.out, "build_odd_names.dot");
    expectDotAccepts(result.out);
}

TEST_F(DrawingTest, DotAcceptsTheDrawing)
{
    expectDotAccepts(draw("1").out);
}

TEST_F(DrawingTest, DotAcceptsADrawingWithALooseEnd)
{
    const ToolRun result = draw("7");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(count(result.out, "ghost:input (missing)"), 1U) << result.out;
    expectDotAccepts(result.out);
}

} // namespace
