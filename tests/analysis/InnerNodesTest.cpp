// SPDX-License-Identifier: Apache-2.0
// Kernels and routing elements of one program group.
#include "analysis/InnerGraphFixture.h"

namespace graphtest {

namespace {

std::string routing(const std::string& kind, const std::string& name, const std::string& attributes = "")
{
    return element(kind, name, attributes);
}

class InnerNodesTest : public GraphStepsTest {
protected:
    /// Collects the group `pg` of these children into mSg.
    int collect(const std::string& children)
    {
        load(group("pg", "", children));
        start();
        return access().collectPgInnerGraph(mSg, *node("pg"));
    }

    ImagingNode& inner(const std::string& name) const { return *mSg.imagingNodes.at(name); }

    SubGraphInfo mSg;
};

TEST_F(InnerNodesTest, FreshNodeIsUnset)
{
    const ImagingNode fresh;
    EXPECT_EQ(fresh.type, Access::ANY);
    EXPECT_EQ(static_cast<int>(fresh.type), 6);
    EXPECT_EQ(fresh.flags, 0U);
    EXPECT_TRUE(fresh.resInfos.empty());
    EXPECT_TRUE(fresh.resHistories.empty());
    EXPECT_EQ(fresh.tevRunKernel, nullptr);
    EXPECT_EQ(fresh.activePort, -1);
    EXPECT_EQ(fresh.resHistory.input_width, 0);
    EXPECT_EQ(fresh.resHistory.output_crop.bottom, 0);
    EXPECT_EQ(fresh.runKernel.stream_id, 0U);
    EXPECT_EQ(fresh.runKernel.enable, 0);
    EXPECT_EQ(fresh.runKernel.resolution_info, nullptr);
}

TEST_F(InnerNodesTest, KindsHaveTheirNumbers)
{
    EXPECT_EQ(static_cast<int>(Access::KERNEL), 0);
    EXPECT_EQ(static_cast<int>(Access::MUX), 1);
    EXPECT_EQ(static_cast<int>(Access::DEMUX), 2);
    EXPECT_EQ(static_cast<int>(Access::SPLIT), 3);
    EXPECT_EQ(static_cast<int>(Access::INPUT_PORT), 4);
    EXPECT_EQ(static_cast<int>(Access::OUTPUT_PORT), 5);
    EXPECT_EQ(Access::RcbKernel, 1U);
    EXPECT_EQ(Access::SameNodeEnd, 2U);
    EXPECT_EQ(Access::DisabledNode, 4U);
}

TEST_F(InnerNodesTest, KernelCarriesWhatItsSettingsSay)
{
    mSg.streamId = 60001;
    EXPECT_EQ(collect(element("kernel", "k", "pal_uuid='11' id='2' enabled='0' rcb='1' metadata='5,-6,7,8'",
                              "<input bpp='10'/><output bpp='12'/>")),
              StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Added Imaging node k uuid 11 rcb 1"}));
    EXPECT_EQ(mSg.kernelCount, 1U);
    const ImagingNode& k = inner("pg:k");
    EXPECT_EQ(k.name, "k");
    EXPECT_EQ(k.node, node("pg:k"));
    EXPECT_EQ(k.type, Access::KERNEL);
    EXPECT_EQ(k.flags, Access::RcbKernel);
    EXPECT_EQ(k.activePort, -1);
    EXPECT_EQ(k.runKernel.stream_id, 60001U);
    EXPECT_EQ(k.runKernel.kernel_uuid, 11U);
    EXPECT_EQ(k.runKernel.enable, 0);
    const Lines metadata = {std::to_string(k.runKernel.metadata[0]), std::to_string(k.runKernel.metadata[1]),
                            std::to_string(k.runKernel.metadata[2]), std::to_string(k.runKernel.metadata[3])};
    EXPECT_EQ(metadata, (Lines{"5", "4294967290", "7", "8"})); // 2^32 - 6
    EXPECT_EQ(k.runKernel.bpp_info.input_bpp, 10U);
    EXPECT_EQ(k.runKernel.bpp_info.output_bpp, 12U);
    EXPECT_EQ(k.runKernel.resolution_info, nullptr);
    EXPECT_EQ(k.runKernel.resolution_history, nullptr);
    EXPECT_EQ(k.runKernel.output_count, 0U);
    EXPECT_EQ(k.tevRunKernel, nullptr);
    EXPECT_TRUE(k.resInfos.empty());
    EXPECT_TRUE(k.resHistories.empty());
}

TEST_F(InnerNodesTest, KernelWithoutSettingsIsEnabled)
{
    EXPECT_EQ(collect(element("kernel", "k", "pal_uuid='-1' id='0'")), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Added Imaging node k uuid -1 rcb 0"}));
    const ImagingNode& k = inner("pg:k");
    EXPECT_EQ(k.flags, 0U);
    EXPECT_EQ(k.runKernel.stream_id, 0xFFFFFFFFU); // the subgraph has no stream
    EXPECT_EQ(k.runKernel.kernel_uuid, 0xFFFFFFFFU);
    EXPECT_EQ(k.runKernel.enable, 1);
    for (const uint32_t value : k.runKernel.metadata) EXPECT_EQ(value, 0U);
    EXPECT_EQ(k.runKernel.bpp_info.input_bpp, 0U);
    EXPECT_EQ(k.runKernel.bpp_info.output_bpp, 0U);
}

TEST_F(InnerNodesTest, EveryRcbValueButZeroMarksTheKernel)
{
    EXPECT_EQ(collect(kernel("a", 1, "rcb='0'") + kernel("b", 2, "rcb='2'") + kernel("c", 3, "rcb='-1'")), StatusOk);
    EXPECT_EQ(innerGraph(mSg), (Lines{"pg:a kernel", "pg:b kernel flags=1", "pg:c kernel flags=1"}));
    EXPECT_TRUE(logged(2, "Added Imaging node b uuid 2 rcb 2"));
}

TEST_F(InnerNodesTest, MetadataHasAtMostFourValues)
{
    EXPECT_EQ(collect(kernel("a", 1, "metadata='1,2'") + kernel("b", 2, "metadata='1,x,3,4,5,6,7,8,9'")), StatusOk);
    const uint32_t* const a = inner("pg:a").runKernel.metadata;
    EXPECT_EQ((std::vector<uint32_t>(a, a + 4)), (std::vector<uint32_t>{1, 2, 0, 0}));
    const uint32_t* const b = inner("pg:b").runKernel.metadata;
    EXPECT_EQ((std::vector<uint32_t>(b, b + 4)), (std::vector<uint32_t>{1, 0, 3, 4}));
    EXPECT_EQ(inner("pg:b").runKernel.bpp_info.input_bpp, 0U); // nothing spills over
}

TEST_F(InnerNodesTest, KernelWithoutIdentityEndsTheCollection)
{
    const std::string rest = routing("mux", "m", "active_input='0'") + klink("in", "out");
    EXPECT_EQ(collect(element("kernel", "k", "id='1'") + rest), StatusBadState);
    EXPECT_TRUE(
        loggedExactly({"16 ERROR: Couldn't get pal_uuid", "16 Failed to retrieve kernel info from IGraphConfig"}));
    EXPECT_TRUE(mSg.imagingNodes.empty());
    EXPECT_EQ(mSg.kernelCount, 1U);
    EXPECT_EQ(collect(element("kernel", "k", "pal_uuid='1'") + rest), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 Couldn't get kernel id", "16 Failed to retrieve kernel info from IGraphConfig"}));
    EXPECT_TRUE(mSg.imagingNodes.empty());
    EXPECT_EQ(mSg.kernelCount, 2U); // counted before it is read
}

TEST_F(InnerNodesTest, SecondKernelOfANameIsRefused)
{
    EXPECT_EQ(collect(kernel("k", 1) + kernel("k", 2) + kernel("z", 3)), StatusBadState);
    EXPECT_TRUE(loggedExactly({"2 Added Imaging node k uuid 1 rcb 0", "16 Imaging node k insertion failed"}));
    EXPECT_EQ(innerGraph(mSg), Lines{"pg:k kernel"});
    EXPECT_EQ(inner("pg:k").runKernel.kernel_uuid, 1U);
}

TEST_F(InnerNodesTest, GroupsOfASubgraphMayUseOneNameTwice)
{
    load(group("a", "", kernel("k", 1)) + group("b", "", kernel("k", 2)));
    start();
    EXPECT_EQ(access().collectPgInnerGraph(mSg, *node("b")), StatusOk);
    EXPECT_EQ(access().collectPgInnerGraph(mSg, *node("a")), StatusOk);
    EXPECT_EQ(innerGraph(mSg), (Lines{"a:k kernel", "b:k kernel"}));
    EXPECT_EQ(inner("a:k").runKernel.kernel_uuid, 1U);
    EXPECT_EQ(inner("b:k").runKernel.kernel_uuid, 2U);
    EXPECT_EQ(mSg.kernelCount, 2U);
}

TEST_F(InnerNodesTest, RoutingNodesKnowTheirActivePort)
{
    EXPECT_EQ(collect(routing("mux", "m", "active_input='2' active_output='7'") +
                      routing("demux", "d", "active_input='7' active_output='3'") +
                      routing("split", "s", "active_input='7' active_output='7'")),
              StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Added routing node m", "2 Added routing node d", "2 Added routing node s"}));
    EXPECT_EQ(innerGraph(mSg), (Lines{"pg:d demux", "pg:m mux", "pg:s split"}));
    EXPECT_EQ(inner("pg:m").activePort, 2);
    EXPECT_EQ(inner("pg:d").activePort, 3);
    EXPECT_EQ(inner("pg:s").activePort, -1);
    EXPECT_EQ(inner("pg:m").name, "m");
    EXPECT_EQ(inner("pg:m").node, node("pg:m"));
    EXPECT_EQ(mSg.kernelCount, 0U);
}

TEST_F(InnerNodesTest, RoutingNodesWithoutActivePortGoOnWithNone)
{
    EXPECT_EQ(collect(routing("mux", "m", "active_output='7'") + routing("demux", "d", "active_input='7'") +
                      routing("split", "s")),
              StatusOk);
    EXPECT_TRUE(loggedExactly({"32 Failed to get Active routing path for  m", "2 Added routing node m",
                               "32 Failed to get Active routing path for  d", "2 Added routing node d",
                               "2 Added routing node s"}));
    EXPECT_EQ(inner("pg:m").activePort, -1);
    EXPECT_EQ(inner("pg:d").activePort, -1);
}

TEST_F(InnerNodesTest, KindsAreCollectedOneAfterTheOther)
{
    EXPECT_EQ(collect(routing("split", "a") + routing("demux", "b", "active_output='0'") +
                      routing("mux", "c", "active_input='0'") + kernel("d", 4) + routing("split", "e") +
                      kernel("f", 6)),
              StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Added Imaging node d uuid 4 rcb 0", "2 Added Imaging node f uuid 6 rcb 0",
                               "2 Added routing node c", "2 Added routing node b", "2 Added routing node a",
                               "2 Added routing node e"}));
}

TEST_F(InnerNodesTest, RoutingNodeOfAKnownNameIsRefused)
{
    EXPECT_EQ(collect(kernel("x", 1) + routing("mux", "x", "active_input='0'") + routing("split", "s")),
              StatusBadState);
    EXPECT_TRUE(loggedExactly({"2 Added Imaging node x uuid 1 rcb 0", "16 routing node x insertion failed "}));
    EXPECT_EQ(innerGraph(mSg), Lines{"pg:x kernel"});
}

TEST_F(InnerNodesTest, EachKindOfRoutingNodeEndsTheCollection)
{
    const std::string path = "active_input='0' active_output='0'";
    const std::pair<const char*, const char*> kinds[] = {{"mux", "demux"}, {"demux", "split"}, {"split", "klink"}};
    for (const auto& [kind, next] : kinds) {
        mSg.imagingNodes.clear();
        EXPECT_EQ(collect(routing(kind, "x", path) + routing(kind, "x", path) + routing(next, "y", path)),
                  StatusBadState);
        EXPECT_EQ(lines(), (Lines{"2 Added routing node x", "16 routing node x insertion failed "})) << kind;
        EXPECT_EQ(mSg.imagingNodes.size(), 1U);
    }
}

TEST_F(InnerNodesTest, OnlyDirectChildrenOfTheirTypeCount)
{
    EXPECT_EQ(collect(kernel("k", 1, "", kernel("below", 2)) +
                      element("node", "n", "type='kernel' pal_uuid='3' id='3'") +
                      element("node", "o", "type='Kernel'") + element("block", "p", "", kernel("q", 4)) +
                      "<kernel pal_uuid='5' id='5'/>"),
              StatusOk);
    EXPECT_EQ(innerGraph(mSg), (Lines{"pg:k kernel", "pg:n kernel"}));
    EXPECT_EQ(mSg.kernelCount, 2U);
}

TEST_F(InnerNodesTest, EmptyGroupIsFine)
{
    EXPECT_EQ(collect(""), StatusOk);
    EXPECT_TRUE(mSg.imagingNodes.empty());
    EXPECT_TRUE(loggedExactly({}));
}

} // namespace

} // namespace graphtest
