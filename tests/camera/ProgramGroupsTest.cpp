// SPDX-License-Identifier: Apache-2.0
#include "camera/ContextFixture.h"

namespace graphtest {

namespace {

class ProgramGroupsTest : public ContextTest {
protected:
    /// The program groups of stream @p value, or with another @p key.
    std::string groups(int value, uint32_t key = NUXO_KEY_STREAM_ID)
    {
        std::vector<IGraphConfig*> found;
        clearLog();
        mStatus = GraphCameraUtil::getProgramGroups(key, value, mRoot.get(), found);
        return paths(found);
    }

    static std::string notFound(const std::string& key, int value)
    {
        return "16 Failed to find any PG's for " + key + " id " + std::to_string(value) +
               " BUG(check graph config file)";
    }

    int mStatus = 1;
};

TEST_F(ProgramGroupsTest, GroupsAreSelectedByAnyIntegerKey)
{
    load(group("a", "stream_id='1' exec_ctx_id='5'") + group("b", "stream_id='2' exec_ctx_id='5'") +
         element("hw", "c", "stream_id='1'") + group("d", "stream_id='1' exec_ctx_id='6'"));
    EXPECT_EQ(groups(1), "a d");
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(groups(5, NUXO_KEY_EXEC_CTX_ID), "a b");
    EXPECT_EQ(groups(2), "b");
}

TEST_F(ProgramGroupsTest, NoGroupIsReported)
{
    load(group("a", "stream_id='1'"));
    EXPECT_EQ(groups(7), "");
    EXPECT_EQ(mStatus, StatusMissingData);
    EXPECT_TRUE(loggedExactly({notFound("stream_id", 7)}));
    EXPECT_EQ(groups(-2, NUXO_KEY_EXEC_CTX_ID), "");
    EXPECT_EQ(mStatus, StatusMissingData);
    EXPECT_TRUE(loggedExactly({notFound("exec_ctx_id", -2)}));
    load(element("hw", "a", "stream_id='1'"));
    EXPECT_EQ(groups(-1), "");
    EXPECT_EQ(mStatus, StatusMissingData);
    EXPECT_TRUE(loggedExactly({notFound("stream_id", -1)}));
}

// Clients see such words in their logs: a key without a name prints as the first name of the vocabulary.
TEST_F(ProgramGroupsTest, KeyWithoutANamePrintsAsTheFirstOne)
{
    load(group("z", "stream_id='1'"));
    EXPECT_EQ(groups(1, 5000), "");
    EXPECT_TRUE(loggedExactly({notFound("active_input", 1)}));
}

TEST_F(ProgramGroupsTest, GroupWithoutTheKeyGoesWithTheOneBefore)
{
    load(group("a", "stream_id='1'") + group("b", "") + group("c", "stream_id='2'") + group("d", "") + group("e", ""));
    EXPECT_EQ(groups(1), "a b");
    EXPECT_EQ(groups(2), "c d e");
    EXPECT_EQ(groups(-1), "");
    node("d")->addValue(NUXO_KEY_STREAM_ID, std::string("1"));
    EXPECT_EQ(groups(2), "c d e");
}

TEST_F(ProgramGroupsTest, FirstGroupsWithoutTheKeyHaveMinusOne)
{
    load(group("a", "") + group("b", "") + group("c", "stream_id='1'") + group("d", "") + group("e", "stream_id='-1'"));
    EXPECT_EQ(groups(-1), "a b e");
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_EQ(groups(0), "");
    EXPECT_EQ(groups(1), "c d");
}

// The nodes in between are no program groups and carry nothing.
TEST_F(ProgramGroupsTest, OtherNodesCarryNoValue)
{
    load(group("a", "stream_id='1'") + element("hw", "b", "stream_id='2'") + group("c", ""));
    EXPECT_EQ(groups(1), "a c");
    EXPECT_EQ(groups(2), "");
}

TEST_F(ProgramGroupsTest, GroupsComeInTheOrderOfKeys)
{
    load(group("a", "stream_id='1'") + group("output", "stream_id='1'") + group("input", "stream_id='1'"));
    EXPECT_EQ(groups(1), "input output a"); // 22, 32 and a name of its own
}

TEST_F(ProgramGroupsTest, GroupsAreAppended)
{
    load(group("a", "stream_id='1'"));
    GraphConfigNode earlier;
    std::vector<IGraphConfig*> found = {&earlier};
    EXPECT_EQ(GraphCameraUtil::getProgramGroups(NUXO_KEY_STREAM_ID, 1, mRoot.get(), found), StatusOk);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0], static_cast<IGraphConfig*>(&earlier));
    EXPECT_EQ(found[1], static_cast<IGraphConfig*>(node("a")));
    EXPECT_EQ(GraphCameraUtil::getProgramGroups(NUXO_KEY_STREAM_ID, 2, mRoot.get(), found), StatusMissingData);
    EXPECT_EQ(found.size(), 2U); // earlier ones do not count as found
}

TEST_F(ProgramGroupsTest, NodesDirectlyBelowTheGivenOneAreAsked)
{
    load(group("outer", "stream_id='1'", group("inner", "stream_id='1'")));
    EXPECT_EQ(groups(1), "outer");
    std::vector<IGraphConfig*> found;
    EXPECT_EQ(GraphCameraUtil::getProgramGroups(NUXO_KEY_STREAM_ID, 1, node("outer"), found), StatusOk);
    EXPECT_EQ(paths(found), "outer:inner");
}

TEST_F(ProgramGroupsTest, NullGraphHasNoGroups)
{
    std::vector<IGraphConfig*> found;
    EXPECT_EQ(GraphCameraUtil::getProgramGroups(NUXO_KEY_STREAM_ID, -1, nullptr, found), StatusMissingData);
    EXPECT_TRUE(found.empty());
    EXPECT_TRUE(loggedExactly({"16 NodeIterator was constructed with NULL.", notFound("stream_id", -1)}));
}

TEST_F(ProgramGroupsTest, ForeignGraphHasNoGroups)
{
    const ForeignNode foreign;
    std::vector<IGraphConfig*> found;
    EXPECT_EQ(GraphCameraUtil::getProgramGroups(NUXO_KEY_STREAM_ID, -1, &foreign, found), StatusMissingData);
    EXPECT_TRUE(found.empty());
    EXPECT_EQ(lines().back(), notFound("stream_id", -1));
}

class KernelCountTest : public ContextTest {};

TEST_F(KernelCountTest, KernelsDirectlyBelowTheGroupCount)
{
    load(group("a", "",
               element("kernel", "k1") + element("kernel", "k2", "enabled='0'", element("kernel", "nested")) +
                   element("node", "k3", "type='kernel'") + element("node", "kernel", "type='Kernel'") +
                   element("mux", "m") + port("p", "")) +
         group("b", "") + element("hw", "c", "", element("kernel", "k1")) + element("kernel", "k4"));
    unsigned int count = 9;
    EXPECT_EQ(GraphCameraUtil::getKernelCountInPg(node("a"), count), StatusOk);
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(GraphCameraUtil::getKernelCountInPg(node("b"), count), StatusOk);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(GraphCameraUtil::getKernelCountInPg(node("c"), count), StatusOk); // any node will do
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(GraphCameraUtil::getKernelCountInPg(mRoot.get(), count), StatusOk);
    EXPECT_EQ(count, 1U);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelCountTest, KernelsOfOneNameAreCountedEach)
{
    mRoot = tree("<kernel type='kernel'/><kernel type='kernel'/><kernel/>");
    unsigned int count = 9;
    EXPECT_EQ(GraphCameraUtil::getKernelCountInPg(mRoot.get(), count), StatusOk);
    EXPECT_EQ(count, 2U);
}

TEST_F(KernelCountTest, NullIsRefusedWithoutAWord)
{
    unsigned int count = 9;
    EXPECT_EQ(GraphCameraUtil::getKernelCountInPg(nullptr, count), StatusBadArgument);
    EXPECT_EQ(count, 9U);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelCountTest, ForeignNodeHasNoKernels)
{
    const ForeignNode foreign;
    unsigned int count = 9;
    EXPECT_EQ(GraphCameraUtil::getKernelCountInPg(&foreign, count), StatusOk);
    EXPECT_EQ(count, 0U);
}

} // namespace

} // namespace graphtest
