// SPDX-License-Identifier: Apache-2.0
#include "query/GraphFixture.h"

namespace graphtest {

namespace {

class CopyNodeTest : public BuildTest {
protected:
    void loadNodes(const std::string& nodes)
    {
        load("<nodes>" + nodes + "</nodes>", "<settings/>");
        mNodes = &at(*mDescriptor, "nodes");
    }

    IGraphConfig* copy(const std::string& name) { return mManager.copyNodeToResult(mNodes, key(name), &mResult); }

    GraphConfigNode* mNodes = nullptr;
    GraphConfigNode mResult;
};

TEST_F(CopyNodeTest, NodeIsCopiedDeepAndBelongsToTheResult)
{
    loadNodes("<hw name=\"pg\" pg_id=\"4\"><port name=\"out\"><options attribute=\"format\"/></port></hw>");
    IGraphConfig* const copied = copy("pg");
    EXPECT_EQ(copied, static_cast<IGraphConfig*>(find(mResult, "pg")));
    EXPECT_EQ(text(mResult), text(*mNodes));
    EXPECT_TRUE(linked(mResult));
    EXPECT_NE(find(mResult, "pg:out"), find(*mNodes, "pg:out"));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(CopyNodeTest, NodeBuiltFromABaseTakesTheFirstNameOfItsKey)
{
    // Two names of one key: a node's name is the first of them in name order, whichever its own text says.
    ItemUID::addCustomKeyMap({{"alpha", 9000}, {"zeta", 9000}});
    loadNodes("<base_node name=\"base\" base_type=\"hw\"/><node name=\"zeta\" base_node=\"base\"/>");
    IGraphConfig* const copied = copy("zeta");
    ASSERT_NE(copied, nullptr);
    EXPECT_EQ(copied->getName(), "alpha");
    EXPECT_EQ(value(asNode(copied), "name"), "'alpha'");
}

TEST_F(CopyNodeTest, NodeThatTheDescriptorLacksIsReported)
{
    loadNodes("<hw name=\"pg\"/>");
    EXPECT_EQ(copy("sensor"), nullptr);
    EXPECT_TRUE(loggedExactly({"16 Node(sensor) not found from descriptor"}));
    EXPECT_EQ(text(mResult), "");
}

TEST_F(CopyNodeTest, DescriptorIsAskedBeforeTheResult)
{
    loadNodes("<hw name=\"pg\"/>");
    mResult.insertDescendant(new GraphConfigNode, NUXO_KEY_SENSOR);
    EXPECT_EQ(copy("sensor"), nullptr);
    EXPECT_TRUE(loggedExactly({"16 Node(sensor) not found from descriptor"}));
}

TEST_F(CopyNodeTest, AttributeIsNoNodeOfTheDescriptor)
{
    loadNodes("<hw name=\"pg\"/>");
    mNodes->addValue(NUXO_KEY_SENSOR, std::string("text"));
    EXPECT_EQ(copy("sensor"), nullptr);
    EXPECT_TRUE(loggedExactly({"16 Node(sensor) not found from descriptor"}));
}

TEST_F(CopyNodeTest, NodeThatTheResultHasIsReturnedUnchanged)
{
    loadNodes("<hw name=\"pg\" pg_id=\"4\"/><hw name=\"graph\"/>");
    IGraphConfig* const first = copy("pg");
    asNode(first).addValue(NUXO_KEY_BPP, 10);
    EXPECT_EQ(copy("pg"), first);
    EXPECT_EQ(text(mResult), "pg{name='pg' type='hw' bpp=10 pg_id=4}");

    // A node named like the graph element meets the copy of that.
    auto* const graphCopy = new GraphConfigNode;
    mResult.insertDescendant(graphCopy, NUXO_KEY_GRAPH);
    EXPECT_EQ(copy("graph"), static_cast<IGraphConfig*>(graphCopy));
    EXPECT_EQ(graphCopy->getDescendantCount(), 0);
}

TEST_F(CopyNodeTest, AttributeOfTheResultHidesTheCopy)
{
    loadNodes("<hw name=\"key\"/>");
    mResult.addValue(NUXO_KEY_KEY, 7);
    EXPECT_EQ(copy("key"), nullptr);
    EXPECT_EQ(text(mResult), "key=7 key{name='key' type='hw'}"); // owned by the result all the same
}

TEST_F(CopyNodeTest, NodeOnABaseNodeIsBuiltFromIt)
{
    loadNodes(R"(<base_node name="base" base_type="program_group" pg_id="4"><port name="out"/></base_node>
                 <node name="pg" base_node="base"><attribute target="pg_id" value="5"/></node>)");
    IGraphConfig* const built = copy("pg");
    EXPECT_EQ(built, static_cast<IGraphConfig*>(find(mResult, "pg")));
    EXPECT_EQ(text(mResult), "pg{base_type='program_group' name='pg' type='program_group' "
                             "out{name='out' type='port'} pg_id=5}");
    EXPECT_TRUE(linked(mResult));
}

TEST_F(CopyNodeTest, NodeOnAMissingBaseNodeIsReported)
{
    loadNodes("<base_node name=\"base\" base_type=\"hw\"/><node name=\"pg\" base_node=\"Base\"/>");
    EXPECT_EQ(copy("pg"), nullptr);
    EXPECT_TRUE(loggedExactly(
        {"16 Failed to find base node Base for node pg", "16 Node(pg) could not be built from base node Base"}));
    EXPECT_EQ(text(mResult), "");
}

TEST_F(CopyNodeTest, NodeWhoseConversionFailsIsReported)
{
    loadNodes("<base_node name=\"base\"/><node name=\"pg\" base_node=\"base\"/>");
    EXPECT_EQ(copy("pg"), nullptr);
    EXPECT_TRUE(loggedExactly(
        {"2 Change base node base into node pg ", "16 Failed to get base node type, change from base node failed",
         "16 Failed to change base node base into node pg", "16 Node(pg) could not be built from base node base"}));
    EXPECT_EQ(text(mResult), "");
}

TEST_F(CopyNodeTest, BaseNodeThatCannotBeCopiedIsReported)
{
    loadNodes("<base_node name=\"base\" base_type=\"hw\"/><node name=\"pg\" base_node=\"base\"/>");
    at(*mNodes, "base").insertDescendant(new GraphConfigItem, NUXO_KEY_PORT); // an untyped item has no copy
    EXPECT_EQ(copy("pg"), nullptr);
    EXPECT_TRUE(loggedExactly(
        {"16 Failed to copy base node base to create node pg", "16 Node(pg) could not be built from base node base"}));
}

TEST_F(CopyNodeTest, BaseNodeNameThatIsNoTextMakesAnOrdinaryNode)
{
    loadNodes("<hw name=\"pg\"/>");
    at(*mNodes, "pg").addValue(NUXO_KEY_BASE_NODE, 1);
    EXPECT_NE(copy("pg"), nullptr);
    EXPECT_EQ(text(mResult), "pg{base_node=1 name='pg' type='hw'}");
}

TEST_F(CopyNodeTest, NodeThatNamesItselfAsItsBaseIsBuilt)
{
    loadNodes("<base_node name=\"pg\" base_node=\"pg\" base_type=\"hw\"/>");
    EXPECT_NE(copy("pg"), nullptr);
    EXPECT_EQ(text(mResult), "pg{base_node='pg' base_type='hw' name='pg' type='hw'}");
}

TEST_F(CopyNodeTest, NodeThatNamesItselfAsItsBaseKeepsItsOptions)
{
    // The port is a part of the base and, with its target, a difference of the node.
    loadNodes(R"(<base_node name="pg" base_node="pg" base_type="hw">
                   <port name="out" target="bpp" value="8"><options attribute="format">
                     <o value="NV12"><apply><pg width="4"/></apply></o></options></port></base_node>)");
    EXPECT_NE(copy("pg"), nullptr);
    EXPECT_EQ(values(mResult, "pg:out:options:o:apply:pg"), "node");
    EXPECT_EQ(value(mResult, "pg:out:options:o:apply:pg:width"), "4");
    EXPECT_EQ(value(mResult, "pg:bpp"), "8");
}

TEST_F(CopyNodeTest, BaseNodeOfABaseNodeIsNotFollowed)
{
    loadNodes(R"(<base_node name="root" base_type="hw" pg_id="1"/>
                 <base_node name="base" base_node="root" base_type="hw"/>
                 <node name="pg" base_node="base"/>)");
    EXPECT_NE(copy("pg"), nullptr);
    EXPECT_EQ(text(mResult), "pg{base_node='root' base_type='hw' name='pg' type='hw'}");
}

// --- constructNodeFromBase on its own ---

TEST_F(CopyNodeTest, ConstructedNodeBelongsToTheCallerAndTheDescriptorStaysAsItWas)
{
    loadNodes(R"(<base_node name="base" base_type="hw"><port name="out" format="NV12"/></base_node>
                 <node name="pg" base_node="base" pg_id="9"><attribute target="out:format" value="P010"/></node>)");
    const std::string before = text(*mDescriptor);
    std::string baseName = "base";
    IGraphConfig* const built = mManager.constructNodeFromBase(&at(*mNodes, "pg"), baseName, mNodes);
    ASSERT_NE(built, nullptr);
    EXPECT_EQ(built->getAncestor(), nullptr);
    // The node's own attributes (base_node, pg_id) are not part of it, its differences are.
    EXPECT_EQ(text(asNode(built)), "base_type='hw' name='pg' type='hw' out{format='P010' name='out' type='port'}");
    EXPECT_EQ(text(*mDescriptor), before);
    delete built;
}

TEST_F(CopyNodeTest, OnlyNodesOfTypeBaseNodeAreBases)
{
    loadNodes("<hw name=\"base\" base_type=\"hw\"/><node name=\"pg\" base_node=\"base\"/>");
    std::string baseName = "base";
    EXPECT_EQ(mManager.constructNodeFromBase(&at(*mNodes, "pg"), baseName, mNodes), nullptr);
    EXPECT_TRUE(loggedExactly({"16 Failed to find base node base for node pg"}));
}

TEST_F(CopyNodeTest, BaseIsFoundByItsNameTextAndTheFirstOneCounts)
{
    loadNodes(R"(<node name="other" type="base_node" base_type="hw"/>
                 <base_node name="base" base_type="hw" pg_id="1"/><base_node name="base" base_type="hw" pg_id="2"/>
                 <node name="pg" base_node="base"/>)");
    std::string baseName = "base";
    const std::unique_ptr<IGraphConfig> built(mManager.constructNodeFromBase(&at(*mNodes, "pg"), baseName, mNodes));
    ASSERT_NE(built, nullptr);
    EXPECT_EQ(value(asNode(built.get()), "pg_id"), "1");
}

TEST_F(CopyNodeTest, NodeSaysWhetherItHasABaseNode)
{
    loadNodes("<node name=\"pg\" base_node=\"base\"/><node name=\"plain\"/>");
    std::string baseName = "untouched";
    EXPECT_FALSE(mManager.nodeHasBaseNode(at(*mNodes, "plain"), baseName));
    EXPECT_EQ(baseName, "untouched");
    EXPECT_TRUE(mManager.nodeHasBaseNode(at(*mNodes, "pg"), baseName));
    EXPECT_EQ(baseName, "base");
    at(*mNodes, "plain").addValue(NUXO_KEY_BASE_NODE, 3);
    EXPECT_FALSE(mManager.nodeHasBaseNode(at(*mNodes, "plain"), baseName));
    EXPECT_EQ(baseName, "base");
    EXPECT_TRUE(loggedExactly({}));
}

} // namespace

} // namespace graphtest
