// SPDX-License-Identifier: Apache-2.0
#include "query/GraphFixture.h"

namespace graphtest {

namespace {

using NUXO::GraphCameraUtil;

class SourceNodeTest : public GraphTest {
protected:
    /// Asks for the sources of a graph with these nodes; the names found, joined by blanks.
    std::string sources(const std::string& nodes)
    {
        mRoot = descriptor(nodes);
        clearLog();
        mFound.clear();
        mStatus = GraphCameraUtil::getSourceNode(mRoot.get(), mFound);
        std::string all;
        for (IGraphConfig* node : mFound) all += (all.empty() ? "" : " ") + node->getName();
        return all;
    }

    static constexpr const char* kNone = "16 ERROR: No active sources. Check that node with type source exists";

    Tree mRoot;
    std::vector<IGraphConfig*> mFound;
    int mStatus = 1;
};

TEST_F(SourceNodeTest, NullGraphIsReported)
{
    EXPECT_EQ(GraphCameraUtil::getSourceNode(nullptr, mFound), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 Null pointer given"}));
}

TEST_F(SourceNodeTest, SourcesAreFoundByTypeInKeyOrder)
{
    EXPECT_EQ(
        sources(
            R"(<source name="tpg"/><node name="sensor" type="source"/><hw name="pg"/><source name="buffer_src0"/>)"),
        "buffer_src0 sensor tpg"); // 6, 36 and 57
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Found 3 active sources from the descriptor."}));
}

TEST_F(SourceNodeTest, DisabledSourcesAreLeftOut)
{
    EXPECT_EQ(
        sources(R"(<source name="tpg" enabled="0"/><source name="sensor" enabled="2"/><source name="buffer_src0"/>)"),
        "buffer_src0 sensor");
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Found 2 active sources from the descriptor."}));
}

TEST_F(SourceNodeTest, NoActiveSourceIsReported)
{
    EXPECT_EQ(sources("<hw name=\"pg\"/>"), "");
    EXPECT_EQ(mStatus, StatusBadArgument);
    EXPECT_TRUE(loggedExactly({kNone}));
    EXPECT_EQ(sources("<source name=\"sensor\" enabled=\"0\"/>"), "");
    EXPECT_EQ(mStatus, StatusBadArgument);
    EXPECT_TRUE(loggedExactly({kNone}));
}

TEST_F(SourceNodeTest, OnlyNodesOfTheRootWithExactlyTheTypeCount)
{
    EXPECT_EQ(sources("<hw name=\"pg\"><source name=\"sensor\"/></hw><node name=\"tpg\" type=\"Source\"/><source/>"),
              "");
    EXPECT_EQ(mStatus, StatusBadArgument);
}

TEST_F(SourceNodeTest, AnyNodeOfTheGraphLeadsToItsRoot)
{
    EXPECT_EQ(sources("<source name=\"sensor\"/><hw name=\"pg\"><port name=\"in\"/></hw>"), "sensor");
    std::vector<IGraphConfig*> found;
    EXPECT_EQ(GraphCameraUtil::getSourceNode(&at(*mRoot, "pg:in"), found), StatusOk);
    EXPECT_EQ(found, mFound);
}

TEST_F(SourceNodeTest, SourcesAreAppended)
{
    mRoot = descriptor("<source name=\"sensor\"/>");
    GraphConfigNode earlier;
    mFound.push_back(&earlier);
    EXPECT_EQ(GraphCameraUtil::getSourceNode(mRoot.get(), mFound), StatusOk);
    ASSERT_EQ(mFound.size(), 2U);
    EXPECT_EQ(mFound[0], static_cast<IGraphConfig*>(&earlier));
}

TEST_F(SourceNodeTest, EnabledOfAnotherKindCountsAsAbsent)
{
    mRoot = descriptor("<source name=\"sensor\"/>");
    at(*mRoot, "sensor").addValue(NUXO_KEY_ENABLED, std::string("0"));
    EXPECT_EQ(GraphCameraUtil::getSourceNode(mRoot.get(), mFound), StatusOk);
    EXPECT_EQ(mFound.size(), 1U);
}

} // namespace

} // namespace graphtest
