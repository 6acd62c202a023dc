// SPDX-License-Identifier: Apache-2.0
#include "simulation/SimulationFixture.h"

namespace graphtest {

namespace {

class KernelInfoListTest : public GraphTest {
protected:
    /// Asks for the kernels of a program group with this content, by the filing rules of descriptors.
    int ask(const std::string& content)
    {
        mRoot = descriptor("<program_group name=\"pg\">" + content + "</program_group>");
        return askAgain();
    }

    int askAgain()
    {
        clearLog();
        mKernels.clear();
        return ZmtTevSimUtils::getKernelInfoList(at(*mRoot, "pg"), mKernels);
    }

    /// The second of three kernels, to be spoilt.
    GraphConfigNode& loadThree()
    {
        EXPECT_EQ(
            ask(R"(<kernel name="a" pal_uuid="1"/><kernel name="b" pal_uuid="2"/><kernel name="c" pal_uuid="3"/>)"),
            StatusOk);
        return at(*mRoot, "pg:b");
    }

    Tree mRoot;
    KernelList mKernels;
};

TEST_F(KernelInfoListTest, KernelsComeInTheOrderOfTheGroup)
{
    EXPECT_EQ(
        ask(R"(<port name="in" pal_uuid="9"/><kernel name="zeta" pal_uuid="30"/><kernel name="alpha" pal_uuid="-20"/>
                     <hw name="other"/><kernel name="mid" pal_uuid="10"/>)"),
        StatusOk);
    EXPECT_EQ(text(mKernels), "zeta=30 alpha=-20 mid=10");
    // A name of the built-in vocabulary files a kernel before those with names of their own.
    EXPECT_EQ(ask(R"(<kernel name="zeta" pal_uuid="30"/><kernel name="scaler" pal_uuid="40"/>)"), StatusOk);
    EXPECT_EQ(text(mKernels), "scaler=40 zeta=30");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelInfoListTest, KernelsOfOneNameAreAllListed)
{
    EXPECT_EQ(ask(R"(<kernel name="k" pal_uuid="1"/><kernel name="k" pal_uuid="2"/>)"), StatusOk);
    EXPECT_EQ(text(mKernels), "k=1 k=2");
}

TEST_F(KernelInfoListTest, KernelsAreFoundAtAnyDepth)
{
    EXPECT_EQ(ask(R"(<kernel name="a" pal_uuid="1"/>
                     <hw name="part"><hw name="inner"><kernel name="b" pal_uuid="2"/></hw></hw>
                     <kernel name="c" pal_uuid="3"/>)"),
              StatusOk);
    EXPECT_EQ(text(mKernels), "a=1 b=2 c=3");
}

TEST_F(KernelInfoListTest, OnlyTheTypeKernelCounts)
{
    EXPECT_EQ(
        ask(R"(<node name="a" type="Kernel" pal_uuid="1"/><kernel pal_uuid="2"/><node name="b" type="kernel" pal_uuid="3"/>
                     <kernel_pair name="c" pal_uuid="4"/>)"),
        StatusOk);
    EXPECT_EQ(text(mKernels), "b=3");
}

TEST_F(KernelInfoListTest, GroupWithoutKernelsAddsNothing)
{
    EXPECT_EQ(ask("<port name=\"in\"/>"), StatusOk);
    EXPECT_EQ(text(mKernels), "");
}

TEST_F(KernelInfoListTest, GroupOfAnotherImplementationIsABadArgument)
{
    const ForeignNode foreign;
    mKernels.push_back({"earlier", 5});
    EXPECT_EQ(ZmtTevSimUtils::getKernelInfoList(foreign, mKernels), StatusBadArgument);
    EXPECT_EQ(text(mKernels), "earlier=5");
}

TEST_F(KernelInfoListTest, KernelsAreAppended)
{
    EXPECT_EQ(ask("<kernel name=\"k\" pal_uuid=\"1\"/>"), StatusOk);
    EXPECT_EQ(ZmtTevSimUtils::getKernelInfoList(at(*mRoot, "pg"), mKernels), StatusOk);
    EXPECT_EQ(text(mKernels), "k=1 k=1");
}

TEST_F(KernelInfoListTest, KernelWithoutAReadableNameEndsTheList)
{
    GraphConfigNode& second = loadThree();
    second.removeDescendant(NUXO_KEY_NAME);
    EXPECT_EQ(askAgain(), StatusMissingData);
    EXPECT_EQ(text(mKernels), "a=1");
    second.addValue(NUXO_KEY_NAME, 5);
    EXPECT_EQ(askAgain(), StatusNotFound);
    EXPECT_EQ(text(mKernels), "a=1");
}

TEST_F(KernelInfoListTest, KernelWithoutAReadableIdentityEndsTheList)
{
    GraphConfigNode& second = loadThree();
    second.removeDescendant(NUXO_KEY_PAL_UUID);
    EXPECT_EQ(askAgain(), StatusMissingData);
    EXPECT_EQ(text(mKernels), "a=1");
    second.addValue(NUXO_KEY_PAL_UUID, std::string("2"));
    EXPECT_EQ(askAgain(), StatusNotFound);
    EXPECT_EQ(text(mKernels), "a=1");
}

class KernelListTest : public GraphTest {
protected:
    KernelListTest()
    {
        mRoot = descriptor(R"(<nodes>
            <hw name="csi_be" stream_id="1"><port name="out"/><kernel name="x1" pal_uuid="91"/></hw>
            <program_group name="pg_a" stream_id="1"><port name="in"/><port name="out"/>
              <kernel name="a1" pal_uuid="11"/><kernel name="a2" pal_uuid="12"/></program_group>
            <program_group name="pg_b" stream_id="1"><port name="in"/><port name="out"/>
              <kernel name="b1" pal_uuid="21"/></program_group>
            <program_group name="pg_c" stream_id="2"><port name="in"/><port name="out"/>
              <kernel name="c1" pal_uuid="31"/></program_group>
            <program_group name="pg_d"><port name="in"/><port name="out"/><kernel name="d1" pal_uuid="41"/></program_group>
            <program_group name="pg_e" stream_id="1"><port name="in"/><kernel name="e1" pal_uuid="51"/></program_group>
          </nodes><graphs>
            <graph id="100">
              <connection source="csi_be:out" sink="pg_a:in"/><connection source="pg_a:out" sink="pg_b:in"/>
              <connection source="pg_b:out" sink="pg_c:in"/><connection source="pg_c:out" sink="pg_d:in"/>
            </graph>
            <graph id="101"><connection source="pg_d:out" sink="pg_e:in"/></graph>
            <graph id="103"><connection source="pg_e:in" sink="pg_b:in"/><connection source="pg_b:out" sink="pg_a:in"/>
              <connection source="pg_e:in" sink="pg_a:out"/></graph>
            <graph id="102"><apply target="pg_c:stream_id" value="7"/><connection source="pg_c:out" sink="pg_d:in"/></graph>
          </graphs>)");
        clearLog();
    }

    int ask(int graph, int stream) { return askOf(mRoot.get(), graph, stream); }

    int askOf(const IGraphConfig* node, int graph, int stream)
    {
        clearLog();
        mKernels.clear();
        return ZmtTevSimUtils::getKernelList(node, graph, stream, mKernels);
    }

    /// The kernels, which must be found.
    std::string kernels(int graph, int stream)
    {
        EXPECT_EQ(ask(graph, stream), StatusOk);
        return text(mKernels);
    }

    Tree mRoot;
    KernelList mKernels;
};

TEST_F(KernelListTest, KernelsOfTheGroupsOfTheGraphAndStreamAreListed)
{
    EXPECT_EQ(kernels(100, 1), "a1=11 a2=12 b1=21");
    EXPECT_EQ(kernels(100, 2), "c1=31");
    EXPECT_EQ(kernels(101, 1), "e1=51");
    EXPECT_EQ(kernels(101, 2), "");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelListTest, GroupsComeAsTheConnectionsNameThem)
{
    // Addresses cannot explain both.
    EXPECT_EQ(kernels(100, 1), "a1=11 a2=12 b1=21");
    EXPECT_EQ(kernels(103, 1), "e1=51 b1=21 a1=11 a2=12");
}

TEST_F(KernelListTest, GroupWithoutAReadableStreamBelongsToNone)
{
    at(*mRoot, "nodes:pg_c").removeDescendant(NUXO_KEY_STREAM_ID);
    at(*mRoot, "nodes:pg_c").addValue(NUXO_KEY_STREAM_ID, std::string("2"));
    for (const int stream : {-1, 0, 2}) EXPECT_EQ(kernels(100, stream), "") << stream;
    EXPECT_EQ(kernels(100, 1), "a1=11 a2=12 b1=21");
}

TEST_F(KernelListTest, OverridesOfTheGraphMoveAGroupToAnotherStream)
{
    EXPECT_EQ(kernels(102, 7), "c1=31");
    EXPECT_EQ(kernels(102, 2), "");
    EXPECT_EQ(value(*mRoot, "nodes:pg_c:stream_id"), "7");
}

TEST_F(KernelListTest, KernelsAreAppended)
{
    mKernels.push_back({"earlier", 5});
    EXPECT_EQ(ZmtTevSimUtils::getKernelList(mRoot.get(), 100, 2, mKernels), StatusOk);
    EXPECT_EQ(text(mKernels), "earlier=5 c1=31");
}

TEST_F(KernelListTest, IncompleteKernelCostsTheRestOfItsGroupAndNothingElse)
{
    at(*mRoot, "nodes:pg_a:a2").removeDescendant(NUXO_KEY_PAL_UUID);
    EXPECT_EQ(kernels(100, 1), "a1=11 b1=21");
    at(*mRoot, "nodes:pg_a:a1").removeDescendant(NUXO_KEY_NAME);
    EXPECT_EQ(kernels(100, 1), "b1=21");
    at(*mRoot, "nodes:pg_b:b1").removeDescendant(NUXO_KEY_NAME);
    EXPECT_EQ(kernels(100, 1), "");
}

TEST_F(KernelListTest, FailureToFindTheGroupsIsReportedAndReturned)
{
    const std::string message = sim("16 Error retrieving pg from graph info!");
    EXPECT_EQ(ask(104, 1), StatusNotFound);
    EXPECT_TRUE(loggedExactly({sim("32 Graph id 104 not found"), message}));

    at(*mRoot, "graphs:graph").addValue(NUXO_KEY_APPLY, 1); // no override, only in their place
    mRoot->removeDescendant(NUXO_KEY_NODES);
    EXPECT_EQ(ask(100, 1), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({sim("16 No Nodes found from input GDF node"), message}));

    mRoot = descriptor("<nodes/><graphs><graph/></graphs>");
    EXPECT_EQ(ask(100, 1), StatusBadState);
    EXPECT_TRUE(loggedExactly({sim("16 Graph without id attribute, invalid"), message}));

    mRoot = descriptor("<nodes/><graphs><graph id=\"100\"><connection/></graph></graphs>");
    EXPECT_EQ(ask(100, 1), StatusMissingData);
    EXPECT_TRUE(loggedExactly({sim("16 Connection without src or sink attribute, invalid!"), message}));

    mRoot = descriptor("<nodes/><graphs><graph id=\"100\"><apply target=\"a\"/></graph></graphs>");
    EXPECT_EQ(ask(100, 1), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Error: override tag with no attribute value", message}));
    EXPECT_EQ(text(mKernels), "");
}

TEST_F(KernelListTest, NoDescriptorIsReported)
{
    EXPECT_EQ(askOf(nullptr, 100, 1), StatusBadArgument);
    EXPECT_EQ(mLog.count(LogCapture::Error, "NUXO_TEV_SIMULATION_UTILS[XOS]", "Error retrieving pg from graph info!"),
              1U);
    EXPECT_EQ(text(mKernels), "");
}

} // namespace

} // namespace graphtest
