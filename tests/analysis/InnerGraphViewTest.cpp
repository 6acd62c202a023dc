// SPDX-License-Identifier: Apache-2.0
// Inner graphs as clients see them.
#include "analysis/AnalysisFixture.h"

#include <nuxo/analysis/InnerGraphNode.h>

namespace graphtest {

namespace {

using NUXO::InnerGraphNode;
using Kind = InnerGraphNode::Kind;

class InnerGraphViewTest : public AnalysisTest {
protected:
    /// Asks for an inner graph; the nodes go to mNodes.
    int view(int id) { return mUtil->getInnerGraph(id, mNodes); }

    /// Source, group of stream 1 with these children and the ports in and out, sink.
    void loadGroup(const std::string& children, const std::string& outAttributes = "")
    {
        load(bufferSource("pg:in") +
             group("pg", "stream_id='1'",
                   input("in", "buffer_src0:port_0") + output("out", "video", outAttributes) + children) +
             sink("video", "stream_id='1' peer='pg:out'") +
             graphOf(connection("buffer_src0:port_0", "pg:in") + connection("pg:out", "video")));
    }

    /// The nodes in order as "name>sink[output]".
    Lines links() const
    {
        Lines all;
        for (const InnerGraphNode& node : mNodes) {
            std::string line = node.name;
            for (const auto& link : node.links) line += ">" + mNodes.at(link.sink).name + "[" + link.output + "]";
            all.push_back(line);
        }
        return all;
    }

    const InnerGraphNode& seen(const std::string& name) const
    {
        for (const InnerGraphNode& each : mNodes) {
            if (each.name == name) return each;
        }
        throw std::runtime_error("no inner node " + name);
    }

    std::vector<InnerGraphNode> mNodes{InnerGraphNode{}};
};

TEST_F(InnerGraphViewTest, UnknownSubgraphHasNone)
{
    EXPECT_EQ(view(1), StatusBadState);
    EXPECT_TRUE(mNodes.empty());
    load(smallGraph());
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(view(2), StatusBadState);
    EXPECT_TRUE(mNodes.empty());
}

TEST_F(InnerGraphViewTest, ShowsPortsAndKernelsWithTheirLinks)
{
    load(smallGraph());
    EXPECT_EQ(init(), StatusOk);
    clearLog();
    EXPECT_EQ(view(1), StatusOk);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(links(), (Lines{"pg:in>pg:k[]", "pg:k>pg:out[0]", "pg:out"}));
    EXPECT_EQ(mNodes[0].kind, Kind::InputPort);
    EXPECT_EQ(mNodes[1].kind, Kind::Kernel);
    EXPECT_EQ(mNodes[2].kind, Kind::OutputPort);
    EXPECT_EQ(mNodes[0].node, node("pg:in"));
    EXPECT_EQ(mNodes[1].node, node("pg:k"));
    EXPECT_EQ(mNodes[2].node, node("pg:out"));
    for (const InnerGraphNode& each : mNodes) EXPECT_FALSE(each.disabled) << each.name;
}

TEST_F(InnerGraphViewTest, KernelsShowTheRecordThatIsHandedOut)
{
    load(smallGraph());
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(view(1), StatusOk);
    qv_isp_zmt_program_group records = {};
    EXPECT_EQ(mUtil->getTevData(1, records), StatusOk);
    ASSERT_EQ(records.kernel_count, 1U);
    EXPECT_EQ(seen("pg:k").record, &records.run_kernels[0]);
    EXPECT_EQ(seen("pg:k").record->kernel_uuid, 11U);
    EXPECT_EQ(seen("pg:in").record, nullptr);
    EXPECT_EQ(seen("pg:out").record, nullptr);
}

TEST_F(InnerGraphViewTest, LinksCarryTheHistoryOfTheirFrames)
{
    loadGroup(kernel("crop", 1, "rcb='1'",
                     "<input width='640' height='480' left='20' top='10' right='20' bottom='10'/>"
                     "<output width='320' height='240'/>") +
              klink("in", "crop:0") + klink("crop:0", "out"));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(view(1), StatusOk);
    const auto& before = seen("pg:in").links.at(0);
    EXPECT_TRUE(before.hasHistory);
    EXPECT_EQ(before.history.input_width, 640);
    EXPECT_EQ(before.history.input_crop.left, 0);
    EXPECT_EQ(before.history.output_width, 640);
    EXPECT_EQ(before.history.output_height, 480);
    const auto& behind = seen("pg:crop").links.at(0);
    EXPECT_TRUE(behind.hasHistory);
    EXPECT_EQ(behind.history.input_width, 640);
    EXPECT_EQ(behind.history.input_crop.left, 20); // the source was not scaled so far
    EXPECT_EQ(behind.history.input_crop.bottom, 10);
    EXPECT_EQ(behind.history.output_width, 320);
    EXPECT_EQ(behind.history.output_height, 240);
}

TEST_F(InnerGraphViewTest, EveryKindOfNodeIsTold)
{
    loadGroup(element("demux", "d", "active_output='0'") + element("mux", "m", "active_input='0'") +
              element("split", "s") + kernel("k", 1) + klink("in", "d:0") + klink("d:0", "k:0") + klink("k:0", "m:0") +
              klink("m:0", "s:0") + klink("s:0", "out"));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(view(1), StatusOk);
    EXPECT_EQ(links(),
              (Lines{"pg:d>pg:k[0]", "pg:in>pg:d[]", "pg:k>pg:m[0]", "pg:m>pg:s[0]", "pg:out", "pg:s>pg:out[0]"}));
    EXPECT_EQ(seen("pg:d").kind, Kind::Demux);
    EXPECT_EQ(seen("pg:m").kind, Kind::Mux);
    EXPECT_EQ(seen("pg:s").kind, Kind::Split);
    EXPECT_EQ(seen("pg:k").kind, Kind::Kernel);
}

TEST_F(InnerGraphViewTest, SeveralLinksOfANodeComeInTheOrderOfTheGraph)
{
    loadGroup(kernel("zulu", 1) + kernel("alpha", 2) + klink("in", "zulu:0") + klink("in", "alpha:0") +
              klink("zulu:0", "out") + klink("alpha:0", "out"));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(view(1), StatusOk);
    EXPECT_EQ(links(), (Lines{"pg:alpha>pg:out[0]", "pg:in>pg:zulu[]>pg:alpha[]", "pg:out", "pg:zulu>pg:out[0]"}));
}

TEST_F(InnerGraphViewTest, SourcesHaveTheirPorts)
{
    load(smallGraph());
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(view(-1), StatusOk);
    EXPECT_EQ(links(), Lines{"buffer_src0:port_0"});
    EXPECT_EQ(mNodes[0].kind, Kind::OutputPort);
    EXPECT_EQ(mNodes[0].node, node("buffer_src0:port_0"));
}

TEST_F(InnerGraphViewTest, NodesThatFeedADisabledPortAreDisabled)
{
    loadGroup(kernel("k", 1) + klink("in", "k:0") + klink("k:0", "out"), "enabled='0'");
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(view(1), StatusOk);
    for (const char* const name : {"pg:k", "pg:out"}) EXPECT_TRUE(seen(name).disabled) << name;
    EXPECT_EQ(seen("pg:k").record->enable, 2);
    for (const InnerGraphNode& each : mNodes) {
        for (const auto& link : each.links) EXPECT_FALSE(link.hasHistory) << each.name;
    }
}

TEST_F(InnerGraphViewTest, KernelThatIsDisabledInItsSettingsIsDisabled)
{
    loadGroup(kernel("k", 1, "enabled='2'") + kernel("l", 2, "enabled='0'") + klink("in", "k:0") + klink("k:0", "l:0") +
              klink("l:0", "out"));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(view(1), StatusOk);
    EXPECT_TRUE(seen("pg:k").disabled);
    EXPECT_FALSE(seen("pg:l").disabled); // bypassed only
    EXPECT_FALSE(seen("pg:in").disabled);
}

TEST_F(InnerGraphViewTest, AfterAFailureShowsWhatWasBuilt)
{
    loadGroup(kernel("k", 1, "rcb='1'", "<input width='1' height='1'/><output width='1' height='1'/>") +
              klink("in", "k:0") + klink("k:0", "out"));
    EXPECT_EQ(init(), StatusMissingObject); // 640 x 480 arrive
    EXPECT_EQ(view(1), StatusOk);
    EXPECT_EQ(links(), (Lines{"pg:in>pg:k[]", "pg:k>pg:out[0]", "pg:out"}));
    EXPECT_TRUE(seen("pg:in").links.at(0).hasHistory);
}

} // namespace

} // namespace graphtest
