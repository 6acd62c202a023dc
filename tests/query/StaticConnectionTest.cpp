// SPDX-License-Identifier: Apache-2.0
#include "query/GraphFixture.h"

namespace graphtest {

namespace {

class StaticConnectionTest : public BuildTest {
protected:
    StaticConnectionTest()
    {
        load(R"(<nodes>
            <hw name="pg" exec_ctx_id="3" content_type="metadata">
              <port name="out" direction="1"/><port name="aux" direction="1"/>
            </hw>
            <hw name="next"><port name="in" direction="0"/></hw>
            <sink name="s"/>
            <sink name="own" exec_ctx_id="9" content_type="pixel_data"/>
            <sink name="directed" direction="1"/>
            <hw name="plain"><port name="out" direction="1"/></hw>
          </nodes>)",
             "<settings key=\"7\" id=\"1\"><pg><out enabled=\"0\" peer=\"own\"/></pg></settings>");
    }

    int connect(const std::string& source, const std::string& sink)
    {
        return mManager.getStaticConnectionData(source, sink, &mResult);
    }

    GraphConfigNode mResult;
};

TEST_F(StaticConnectionTest, NullResultIsRefused)
{
    EXPECT_EQ(mManager.getStaticConnectionData("pg:out", "next:in", nullptr), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(StaticConnectionTest, DescriptorWithoutNodesIsReported)
{
    load("<graphs/>", "<settings/>");
    EXPECT_EQ(connect("pg:out", "next:in"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Error, graph_descriptor does not have a 'nodes' node"}));
}

TEST_F(StaticConnectionTest, ConnectsWhateverTheSettingSays)
{
    EXPECT_EQ(connect("pg:out", "next:in"), StatusOk);
    EXPECT_EQ(value(mResult, "pg:out:peer"), "'next:in'");
    EXPECT_EQ(value(mResult, "next:in:peer"), "'pg:out'");
    EXPECT_EQ(value(mResult, "next:exec_ctx_id"), "absent"); // only port-less sinks are given it
    EXPECT_EQ(value(mResult, "next:direction"), "absent");
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_TRUE(linked(mResult));
}

TEST_F(StaticConnectionTest, PortlessSinkTakesContextAndContentOfTheSourceNode)
{
    EXPECT_EQ(connect("pg:out", "s"), StatusOk);
    EXPECT_EQ(text(at(mResult, "s")),
              "content_type='metadata' name='s' peer='pg:out' type='sink' direction=0 exec_ctx_id=3");
    EXPECT_EQ(value(mResult, "pg:out:peer"), "'s'");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(StaticConnectionTest, PortlessSinkKeepsWhatItHasOfItsOwn)
{
    EXPECT_EQ(connect("pg:out", "own"), StatusOk); // no list of options allows the new values
    EXPECT_EQ(text(at(mResult, "own")),
              "content_type='pixel_data' name='own' peer='pg:out' type='sink' direction=0 exec_ctx_id=9");
    EXPECT_EQ(count(kWarning, "Trying to apply value but no options list available for sink[own]."), 2U);
}

TEST_F(StaticConnectionTest, SourceWithoutContextOrContentIsNoFailure)
{
    EXPECT_EQ(connect("plain:out", "s"), StatusOk);
    EXPECT_EQ(text(at(mResult, "s")), "name='s' peer='plain:out' type='sink' direction=0");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(StaticConnectionTest, PortlessSinkMayBeOfAnyType)
{
    EXPECT_EQ(connect("pg:out", "next"), StatusOk);
    EXPECT_EQ(value(mResult, "next:peer"), "'pg:out'");
    EXPECT_EQ(value(mResult, "next:direction"), "0");
    EXPECT_EQ(value(mResult, "next:stream_id"), "absent");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(StaticConnectionTest, SinkThatDeclaresItsDirectionFails)
{
    EXPECT_EQ(connect("pg:out", "directed"), StatusDuplicate);
    EXPECT_EQ(value(mResult, "pg:out:peer"), "absent");
}

TEST_F(StaticConnectionTest, NodesThatTheDescriptorLacksFail)
{
    EXPECT_EQ(connect("sensor:out", "next:in"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Node(sensor) not found from descriptor",
                               "16 Failed to copy src node(sensor) from descriptor to settings"}));
    EXPECT_EQ(text(mResult), "");
    clearLog();
    EXPECT_EQ(connect("pg:out", "sensor:in"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Node(sensor) not found from descriptor",
                               "16 Failed to copy dst node(sensor) from descriptor to settings"}));
    EXPECT_EQ(value(mResult, "pg"), "node");
}

TEST_F(StaticConnectionTest, EmptyTextsNameNoNode)
{
    EXPECT_EQ(connect("", "next:in"), StatusMissingData);
    EXPECT_TRUE(loggedExactly(
        {"16 Node(na) not found from descriptor", "16 Failed to copy src node(na) from descriptor to settings"}));
    clearLog();
    EXPECT_EQ(connect("pg:out", ""), StatusMissingData);
    EXPECT_TRUE(loggedExactly(
        {"16 Node(na) not found from descriptor", "16 Failed to copy dst node(na) from descriptor to settings"}));
}

TEST_F(StaticConnectionTest, PortsThatTheDescriptorLacksFail)
{
    EXPECT_EQ(connect("pg:in", "next:in"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Node(pg) has no port named 'in'"}));
    EXPECT_EQ(value(mResult, "next"), "node");
    clearLog();
    EXPECT_EQ(connect("pg:out", "next:nosuchword"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Node(next) has no port named 'na'"}));
    EXPECT_EQ(value(mResult, "pg:out:peer"), "absent");
}

TEST_F(StaticConnectionTest, FurtherConnectionsAddPeersOnBothEnds)
{
    EXPECT_EQ(connect("pg:out", "next:in"), StatusOk);
    EXPECT_EQ(connect("pg:aux", "next:in"), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Node(next) port 'in' already connected once to 'pg:out' adding new peer"}));
    clearLog();
    EXPECT_EQ(connect("pg:out", "s"), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Node(pg) port 'out' already connected once to 'next:in'"}));
    EXPECT_EQ(values(mResult, "pg:out:peer"), "'next:in' 's'");
    EXPECT_EQ(values(mResult, "next:in:peer"), "'pg:out' 'pg:aux'");
}

TEST_F(StaticConnectionTest, SourceWithoutPortConnectsTheNodeItself)
{
    EXPECT_EQ(connect("plain", "next:in"), StatusOk);
    EXPECT_EQ(value(mResult, "plain:peer"), "'next:in'");
    EXPECT_EQ(value(mResult, "next:in:peer"), "'plain'");
}

TEST_F(StaticConnectionTest, NodeConnectedToItselfGetsDirectionAndPeerAsSink)
{
    EXPECT_EQ(connect("pg:out", "pg"), StatusOk);
    EXPECT_EQ(value(mResult, "pg:out:peer"), "'pg'");
    EXPECT_EQ(value(mResult, "pg:peer"), "'pg:out'");
    EXPECT_EQ(value(mResult, "pg:direction"), "0");
    EXPECT_EQ(values(mResult, "pg:exec_ctx_id"), "3");
}

// --- propagation of single attributes ---

class PropagateTest : public GraphTest {
protected:
    GraphConfigNode mFrom;
    GraphConfigNode mTo;
    GraphQueryManager mManager;
};

TEST_F(PropagateTest, MissingAttributeIsCreated)
{
    mFrom.addValue(NUXO_KEY_EXEC_CTX_ID, 3);
    mFrom.addValue(NUXO_KEY_CONTENT_TYPE, std::string("metadata"));
    EXPECT_EQ(mManager.propagateIntAttribute(&mFrom, &mTo, NUXO_KEY_EXEC_CTX_ID), StatusOk);
    EXPECT_EQ(mManager.propagateStrAttribute(&mFrom, &mTo, NUXO_KEY_CONTENT_TYPE), StatusOk);
    EXPECT_EQ(text(mTo), "content_type='metadata' exec_ctx_id=3");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PropagateTest, SourceThatCannotBeReadGivesItsStatusAndChangesNothing)
{
    EXPECT_EQ(mManager.propagateIntAttribute(&mFrom, &mTo, NUXO_KEY_EXEC_CTX_ID), StatusMissingData);
    EXPECT_EQ(mManager.propagateStrAttribute(&mFrom, &mTo, NUXO_KEY_CONTENT_TYPE), StatusMissingData);
    mFrom.addValue(NUXO_KEY_EXEC_CTX_ID, std::string("3"));
    mFrom.addValue(NUXO_KEY_CONTENT_TYPE, 3);
    EXPECT_EQ(mManager.propagateIntAttribute(&mFrom, &mTo, NUXO_KEY_EXEC_CTX_ID), StatusNotFound);
    EXPECT_EQ(mManager.propagateStrAttribute(&mFrom, &mTo, NUXO_KEY_CONTENT_TYPE), StatusNotFound);
    EXPECT_EQ(text(mTo), "");
}

TEST_F(PropagateTest, ExistingAttributeWithoutOptionsIsKept)
{
    mFrom.addValue(NUXO_KEY_EXEC_CTX_ID, 3);
    mFrom.addValue(NUXO_KEY_CONTENT_TYPE, std::string("metadata"));
    mTo.addValue(NUXO_KEY_EXEC_CTX_ID, 9);
    mTo.addValue(NUXO_KEY_CONTENT_TYPE, std::string("pixel_data"));
    EXPECT_EQ(mManager.propagateIntAttribute(&mFrom, &mTo, NUXO_KEY_EXEC_CTX_ID), StatusNotFound);
    EXPECT_EQ(mManager.propagateStrAttribute(&mFrom, &mTo, NUXO_KEY_CONTENT_TYPE), StatusNotFound);
    EXPECT_EQ(text(mTo), "content_type='pixel_data' exec_ctx_id=9");
}

TEST_F(PropagateTest, ExistingAttributeIsSetWhenAnOptionAllowsTheValue)
{
    mFrom.addValue(NUXO_KEY_EXEC_CTX_ID, 3);
    const Tree to =
        tree("<pg exec_ctx_id=\"9\"><options attribute=\"exec_ctx_id\"><o value=\"3\"><apply/></o></options></pg>");
    EXPECT_EQ(mManager.propagateIntAttribute(&mFrom, &at(*to, "pg"), NUXO_KEY_EXEC_CTX_ID), StatusOk);
    EXPECT_EQ(value(*to, "pg:exec_ctx_id"), "3");
}

TEST_F(PropagateTest, NullNodesAreRefused)
{
    EXPECT_EQ(mManager.propagateIntAttribute(nullptr, &mTo, NUXO_KEY_ID), StatusBadArgument);
    EXPECT_EQ(mManager.propagateIntAttribute(&mFrom, nullptr, NUXO_KEY_ID), StatusBadArgument);
    EXPECT_EQ(mManager.propagateStrAttribute(nullptr, &mTo, NUXO_KEY_NAME), StatusBadArgument);
    EXPECT_EQ(mManager.propagateStrAttribute(&mFrom, nullptr, NUXO_KEY_NAME), StatusBadArgument);
}

} // namespace

} // namespace graphtest
