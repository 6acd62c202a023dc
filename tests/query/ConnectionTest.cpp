// SPDX-License-Identifier: Apache-2.0
#include "query/GraphFixture.h"

namespace graphtest {

namespace {

/// Dynamic connections, made one at a time into an empty result.
class ConnectionTest : public BuildTest {
protected:
    static constexpr const char* kNodes = R"(<nodes>
        <program_group name="pg" stream_id="60">
          <port name="in" direction="0"/><port name="out" direction="1"/><port name="aux" direction="1"/>
        </program_group>
        <program_group name="next" stream_id="61"><port name="in" direction="0"/></program_group>
        <node name="bare" type="source" stream_id="62"/>
        <sink name="video_sink"/>
        <sink name="still_sink"/>
      </nodes>)";

    void loadSetting(const std::string& setting, const std::string& nodes = kNodes)
    {
        load(nodes, "<settings key=\"7\" id=\"1\">" + setting + "</settings>");
    }

    int connect(const std::string& source, const std::string& sink)
    {
        return mManager.getConnectionData(source, sink, &setting(), &mResult);
    }

    GraphConfigNode mResult;
};

TEST_F(ConnectionTest, NullResultIsRefused)
{
    loadSetting("");
    EXPECT_EQ(mManager.getConnectionData("pg:out", "next:in", &setting(), nullptr), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ConnectionTest, DescriptorWithoutNodesIsReported)
{
    loadSetting("<pg><out/></pg>", "<graphs/>");
    EXPECT_EQ(connect("pg:out", "next:in"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Error, graph_descriptor does not have a 'nodes' node"}));
    EXPECT_EQ(text(mResult), "");
}

TEST_F(ConnectionTest, PortsOfTwoNodesBecomePeers)
{
    loadSetting("<pg><out/></pg><next/>");
    EXPECT_EQ(connect("pg:out", "next:in"), StatusOk);
    EXPECT_EQ(text(mResult),
              "pg{name='pg' type='program_group' in{name='in' type='port' direction=0} "
              "out{name='out' peer='next:in' type='port' direction=1} "
              "aux{name='aux' type='port' direction=1} stream_id=60} "
              "next{name='next' type='program_group' in{name='in' peer='pg:out' type='port' direction=0} "
              "stream_id=61}");
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_TRUE(linked(mResult));
}

TEST_F(ConnectionTest, SourceNodeThatTheSettingLacksIsSkippedWithAWarning)
{
    loadSetting("<next/>");
    EXPECT_EQ(connect("pg:out", "next:in"), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 WARNING: Node(pg) not found from settings(0), ignoring connection."}));
    EXPECT_EQ(text(mResult), "");
}

TEST_F(ConnectionTest, SourcePortThatTheSettingLacksIsSkippedWithAWarning)
{
    loadSetting("<pg><aux/></pg><next/>");
    EXPECT_EQ(connect("pg:out", "next:in"), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 WARNING: Node(pg) port out not found from settings(0)."}));
    EXPECT_EQ(text(mResult), "");
}

TEST_F(ConnectionTest, WarningsNameTheSettingWhoseGraphWasBuiltLast)
{
    load("<nodes><source name=\"tpg\"/></nodes><graphs><graph id=\"1\"><connection source=\"pg:out\" sink=\"tpg:in\"/>"
         "</graph></graphs>",
         "<settings key=\"7\" id=\"1\"/>");
    EXPECT_EQ(build(), StatusBadState); // no source is part of it
    EXPECT_TRUE(logged(kWarning, "WARNING: Node(na) not found from settings(7), ignoring connection."));
    clearLog();
    EXPECT_EQ(connect("tpg:out", "tpg:in"), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 WARNING: Node(tpg) not found from settings(7), ignoring connection."}));
}

TEST_F(ConnectionTest, SourceThatTheDescriptorLacksFails)
{
    loadSetting("<ghost><out/></ghost><next/>");
    EXPECT_EQ(connect("ghost:out", "next:in"), StatusMissingData);
    EXPECT_TRUE(loggedExactly(
        {"16 Node(ghost) not found from descriptor", "16 Failed to copy src node(ghost) from descriptor to settings"}));
    EXPECT_EQ(text(mResult), "");
}

TEST_F(ConnectionTest, SinkThatTheDescriptorLacksFailsWithTheSourceCopied)
{
    loadSetting("<pg><out/></pg><ghost/>");
    EXPECT_EQ(connect("pg:out", "ghost:in"), StatusMissingData);
    EXPECT_TRUE(loggedExactly(
        {"16 Node(ghost) not found from descriptor", "16 Failed to copy dst node(ghost) from descriptor to settings"}));
    EXPECT_EQ(value(mResult, "pg"), "node");
    EXPECT_EQ(values(mResult, "pg:out:peer"), "absent");
}

TEST_F(ConnectionTest, NodesThatCannotBeBuiltFailLikeMissingOnes)
{
    const std::string nodes = R"(<nodes><hw name="pg"><port name="out"/></hw><base_node name="base" base_type="hw"/>
        <node name="built" base_node="base"/></nodes>)";
    loadSetting("<pg><out/></pg><built><out/></built>", nodes);
    at(*mDescriptor, "nodes:base").insertDescendant(new GraphConfigItem, NUXO_KEY_PORT); // an untyped item has no copy
    EXPECT_EQ(connect("pg:out", "built:in"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Failed to copy base node base to create node built",
                               "16 Node(built) could not be built from base node base",
                               "16 Failed to copy dst node(built) from descriptor to settings"}));
    clearLog();
    EXPECT_EQ(connect("built:out", "pg:out"), StatusMissingData);
    EXPECT_TRUE(logged(kError, "Failed to copy src node(built) from descriptor to settings"));

    at(*mDescriptor, "nodes:pg").insertDescendant(new GraphConfigItem, NUXO_KEY_PORT);
    GraphConfigNode other;
    clearLog();
    EXPECT_EQ(mManager.getConnectionData("pg:out", "built:in", &setting(), &other), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Failed to copy src node(pg) from descriptor to settings"}));
}

TEST_F(ConnectionTest, DisabledSourcePortKeepsItsNodeButGetsNoPeer)
{
    loadSetting("<pg><out enabled=\"0\"/></pg><next/>");
    EXPECT_EQ(connect("pg:out", "next:in"), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Source port out disabled, skip destination and peer processing"}));
    EXPECT_EQ(value(mResult, "pg"), "node");
    EXPECT_EQ(value(mResult, "pg:out:peer"), "absent");
    EXPECT_EQ(value(mResult, "next"), "absent");
}

TEST_F(ConnectionTest, EnabledCountsOnlyOnTheSourceEndOfTheSetting)
{
    loadSetting("<pg enabled=\"0\"><out enabled=\"1\"/></pg><next enabled=\"0\"><in enabled=\"0\"/></next>");
    EXPECT_EQ(connect("pg:out", "next:in"), StatusOk);
    EXPECT_EQ(value(mResult, "pg:out:peer"), "'next:in'");
    EXPECT_EQ(value(mResult, "next:in:peer"), "'pg:out'");
}

TEST_F(ConnectionTest, DescriptorsOwnEnabledDoesNotStopAConnection)
{
    loadSetting("<pg><out/></pg><next/>", "<nodes><hw name=\"pg\"><port name=\"out\" enabled=\"0\"/></hw>"
                                          "<hw name=\"next\"><port name=\"in\"/></hw></nodes>");
    EXPECT_EQ(connect("pg:out", "next:in"), StatusOk);
    EXPECT_EQ(value(mResult, "pg:out:peer"), "'next:in'");
}

TEST_F(ConnectionTest, EnabledOfAnotherKindCountsAsEnabled)
{
    loadSetting("<pg><out/></pg><next/>");
    at(setting(), "pg:out").insertDescendant(new GraphConfigStrAttribute("0"), NUXO_KEY_ENABLED);
    EXPECT_EQ(connect("pg:out", "next:in"), StatusOk);
    EXPECT_EQ(value(mResult, "pg:out:peer"), "'next:in'");
}

TEST_F(ConnectionTest, SinkNodeMustBeInTheSettingButItsPortNeedNot)
{
    loadSetting("<pg><out/></pg>");
    EXPECT_EQ(connect("pg:out", "next:in"), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 Skipping port pg:out for not being active in settings."}));
    EXPECT_EQ(value(mResult, "pg"), "node");
    EXPECT_EQ(value(mResult, "pg:out:peer"), "absent");
    EXPECT_EQ(value(mResult, "next"), "absent");
}

TEST_F(ConnectionTest, PortsThatTheDescriptorLacksFail)
{
    loadSetting("<pg><ghost/><out/></pg><next/>");
    EXPECT_EQ(connect("pg:ghost", "next:in"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Node(pg) has no port named 'ghost'"}));
    EXPECT_EQ(value(mResult, "next"), "node"); // both nodes were copied before the ports were looked up
    clearLog();
    EXPECT_EQ(connect("pg:out", "next:out"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Node(next) has no port named 'out'"}));
    EXPECT_EQ(value(mResult, "pg:out:peer"), "absent");
}

TEST_F(ConnectionTest, WordsOutsideTheVocabularyNamePortsThatAreMissing)
{
    loadSetting("<pg><out/></pg><next/>");
    EXPECT_EQ(connect("pg:nosuchword", "next:in"), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 WARNING: Node(pg) port na not found from settings(0)."}));
    clearLog();
    EXPECT_EQ(connect("pg:out", "next:nosuchword"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Node(next) has no port named 'na'"}));
}

TEST_F(ConnectionTest, EmptyTextsNameNothingThatIsActive)
{
    loadSetting("<pg><out/></pg>");
    EXPECT_EQ(connect("", "next:in"), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 WARNING: Node(na) not found from settings(0), ignoring connection."}));
    clearLog();
    EXPECT_EQ(connect("pg:out", ""), StatusOk);
    EXPECT_TRUE(loggedExactly(
        {"2 Using default connection pg:out", "32 Skipping port pg:out for not being active in settings."}));
}

TEST_F(ConnectionTest, KeysBeyondThePortAreIgnoredAndTextsAreKeptVerbatim)
{
    loadSetting("<pg><out/></pg><next/>");
    EXPECT_EQ(connect("pg:out:aux", "next:in:"), StatusOk);
    EXPECT_EQ(value(mResult, "pg:out:peer"), "'next:in:'");
    EXPECT_EQ(value(mResult, "next:in:peer"), "'pg:out:aux'");
}

TEST_F(ConnectionTest, SecondConnectionOfASourcePortAddsAPeer)
{
    loadSetting("<pg><out/></pg><next/><video_sink/>");
    EXPECT_EQ(connect("pg:out", "next:in"), StatusOk);
    clearLog();
    EXPECT_EQ(connect("pg:out", "video_sink"), StatusOk);
    EXPECT_TRUE(loggedExactly(
        {"2 Using default connection pg:out", "2 Node(pg) port 'out' already connected once to 'next:in'"}));
    EXPECT_EQ(values(mResult, "pg:out:peer"), "'next:in' 'video_sink'");
    EXPECT_EQ(values(mResult, "video_sink:peer"), "'pg:out'");
}

TEST_F(ConnectionTest, SecondConnectionOfASinkPortAddsAPeer)
{
    loadSetting("<pg><out/><aux/></pg><next/>");
    EXPECT_EQ(connect("pg:out", "next:in"), StatusOk);
    clearLog();
    EXPECT_EQ(connect("pg:aux", "next:in"), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Node(next) port 'in' already connected once to 'pg:out' adding new peer"}));
    EXPECT_EQ(values(mResult, "next:in:peer"), "'pg:out' 'pg:aux'");
}

TEST_F(ConnectionTest, ThirdConnectionNamesTheFirstPeer)
{
    loadSetting("<pg><out/></pg><next/>");
    for (int i = 0; i < 2; ++i) EXPECT_EQ(connect("pg:out", "next:in"), StatusOk);
    clearLog();
    EXPECT_EQ(connect("pg:out", "next:in"), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Node(pg) port 'out' already connected once to 'next:in'",
                               "2 Node(next) port 'in' already connected once to 'pg:out' adding new peer"}));
    EXPECT_EQ(values(mResult, "pg:out:peer"), "'next:in' 'next:in' 'next:in'");
    EXPECT_EQ(values(mResult, "next:in:peer"), "'pg:out' 'pg:out' 'pg:out'");
}

TEST_F(ConnectionTest, PortConnectedToItselfGetsBothPeers)
{
    loadSetting("<pg><out/></pg>");
    EXPECT_EQ(connect("pg:out", "pg:out"), StatusOk);
    EXPECT_EQ(values(mResult, "pg:out:peer"), "'pg:out' 'pg:out'");
    EXPECT_TRUE(loggedExactly({"2 Node(pg) port 'out' already connected once to 'pg:out' adding new peer"}));
}

TEST_F(ConnectionTest, SourceWithoutPortConnectsTheNodeItself)
{
    loadSetting("<bare/><next/>");
    EXPECT_EQ(connect("bare", "next:in"), StatusOk);
    EXPECT_EQ(value(mResult, "bare:peer"), "'next:in'");
    EXPECT_EQ(value(mResult, "next:in:peer"), "'bare'");
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(connect("bare", "next:in"), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Node(bare) port 'na' already connected once to 'next:in'",
                               "2 Node(next) port 'in' already connected once to 'bare' adding new peer"}));
}

TEST_F(ConnectionTest, SourceWithoutPortIsDisabledByItsNode)
{
    loadSetting("<bare enabled=\"0\"/><next/>");
    EXPECT_EQ(connect("bare", "next:in"), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Source port na disabled, skip destination and peer processing"}));
    EXPECT_EQ(value(mResult, "bare:peer"), "absent");
}

TEST_F(ConnectionTest, SourceWithoutPortAndInactiveSinkNameNoPort)
{
    loadSetting("<bare/>");
    EXPECT_EQ(connect("bare", "next:in"), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 Skipping port bare:na for not being active in settings."}));
}

// --- virtual sinks ---

TEST_F(ConnectionTest, VirtualSinkGetsDirectionStreamAndPeer)
{
    loadSetting("<pg><out/></pg><video_sink/>");
    EXPECT_EQ(connect("pg:out", "video_sink"), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Using default connection pg:out"}));
    EXPECT_EQ(text(at(mResult, "video_sink")), "name='video_sink' peer='pg:out' type='sink' direction=0 stream_id=60");
    EXPECT_EQ(value(mResult, "pg:out:peer"), "'video_sink'");
}

TEST_F(ConnectionTest, SettingRedirectsAPortlessSink)
{
    loadSetting("<pg><out peer=\"still_sink\"/></pg><video_sink/><still_sink/>");
    EXPECT_EQ(connect("pg:out", "video_sink"), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Overriding destination node still_sink with still_sink"}));
    EXPECT_EQ(value(mResult, "pg:out:peer"), "'still_sink'");
    EXPECT_EQ(value(mResult, "still_sink:peer"), "'pg:out'");
    EXPECT_EQ(value(mResult, "video_sink"), "absent");
}

TEST_F(ConnectionTest, SettingOfAPortlessSourceRedirectsToo)
{
    loadSetting("<bare peer=\"still_sink\"/><still_sink/>");
    EXPECT_EQ(connect("bare", "video_sink"), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Overriding destination node still_sink with still_sink"}));
    EXPECT_EQ(value(mResult, "bare:peer"), "'still_sink'");
    EXPECT_EQ(value(mResult, "still_sink:stream_id"), "62");
}

TEST_F(ConnectionTest, RedirectionToAnUnknownWordIsSkipped)
{
    loadSetting("<pg><out peer=\"next:in\"/></pg><next/><video_sink/>");
    EXPECT_EQ(connect("pg:out", "video_sink"), StatusOk); // the whole text is looked up as one word
    EXPECT_TRUE(loggedExactly({"2 Overriding destination node na with next:in",
                               "32 Skipping port pg:out for not being active in settings."}));
    EXPECT_EQ(value(mResult, "next"), "absent");
}

TEST_F(ConnectionTest, SinkWithAPortIsNeverRedirected)
{
    loadSetting("<pg><out peer=\"still_sink\"/></pg><next/><still_sink/>");
    EXPECT_EQ(connect("pg:out", "next:in"), StatusOk);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(value(mResult, "pg:out:peer"), "'next:in'");
    EXPECT_EQ(value(mResult, "still_sink"), "absent");
}

TEST_F(ConnectionTest, PortlessSinkOfAnotherTypeFails)
{
    loadSetting("<pg><out/></pg><next/>");
    EXPECT_EQ(connect("pg:out", "next"), StatusMissingData);
    EXPECT_TRUE(
        loggedExactly({"2 Using default connection pg:out",
                       "16 sink connection attribute without port 'program_group' not pointing to virtual sink"}));
    EXPECT_EQ(value(mResult, "next:direction"), "0"); // given when it was copied
    EXPECT_EQ(value(mResult, "pg:out:peer"), "absent");
}

TEST_F(ConnectionTest, PortlessSinkWithoutTypeFailsWithTheReadsStatus)
{
    const std::string source = "<hw name=\"pg\" stream_id=\"60\"><port name=\"out\"/></hw>";
    loadSetting("<pg><out/></pg><plain/>", "<nodes>" + source + "<node name=\"plain\"/></nodes>");
    EXPECT_EQ(connect("pg:out", "plain"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"2 Using default connection pg:out", "16 No type for connected peer node"}));

    at(*mDescriptor, "nodes:plain").insertDescendant(new GraphConfigIntAttribute(1), NUXO_KEY_TYPE);
    GraphConfigNode other;
    EXPECT_EQ(mManager.getConnectionData("pg:out", "plain", &setting(), &other), StatusNotFound);
    EXPECT_EQ(count(kError, "No type for connected peer node"), 2U);
}

TEST_F(ConnectionTest, StreamOfTheSinkItselfIsKept)
{
    loadSetting("<pg><out/></pg><s/>",
                "<nodes><hw name=\"pg\"><port name=\"out\"/></hw><sink name=\"s\" stream_id=\"5\"/>"
                "</nodes>");
    EXPECT_EQ(connect("pg:out", "s"), StatusOk); // so the source needs none
    EXPECT_EQ(values(mResult, "s:stream_id"), "5");
}

TEST_F(ConnectionTest, StreamIsReadFromTheSourceNodeNotItsPort)
{
    loadSetting("<pg><out/></pg><s/>",
                "<nodes><hw name=\"pg\"><port name=\"out\" stream_id=\"60\"/></hw><sink name=\"s\"/>"
                "</nodes>");
    EXPECT_EQ(connect("pg:out", "s"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"2 Using default connection pg:out", "16 No stream_id set for connected peer"}));
    EXPECT_EQ(value(mResult, "pg:out:peer"), "absent");
}

TEST_F(ConnectionTest, StreamOfAnotherKindGivesTheReadsStatus)
{
    loadSetting("<pg><out/></pg><s/>", "<nodes><hw name=\"pg\"><port name=\"out\"/><stream_id/></hw><sink name=\"s\"/>"
                                       "</nodes>");
    EXPECT_EQ(connect("pg:out", "s"), StatusNotFound);
    EXPECT_TRUE(logged(kError, "No stream_id set for connected peer"));
}

TEST_F(ConnectionTest, StreamThatCannotBeAddedFails)
{
    // A child element under the key of stream_id: the sink has no integer there, and no room for one.
    loadSetting("<pg><out/></pg><s/>", "<nodes><hw name=\"pg\" stream_id=\"60\"><port name=\"out\"/></hw>"
                                       "<sink name=\"s\"><stream_id/></sink></nodes>");
    EXPECT_EQ(connect("pg:out", "s"), StatusDuplicate);
    EXPECT_TRUE(loggedExactly({"2 Using default connection pg:out", "16 Failed to add stream ID to sink peer"}));
}

TEST_F(ConnectionTest, SinkThatDeclaresItsDirectionFails)
{
    loadSetting("<pg><out/></pg><s/>", "<nodes><hw name=\"pg\" stream_id=\"60\"><port name=\"out\"/></hw>"
                                       "<sink name=\"s\" direction=\"0\"/></nodes>");
    EXPECT_EQ(connect("pg:out", "s"), StatusDuplicate);
    EXPECT_TRUE(loggedExactly({"2 Using default connection pg:out"}));
}

TEST_F(ConnectionTest, SecondConnectionToAVirtualSinkFails)
{
    loadSetting("<pg><out/><aux/></pg><video_sink/>");
    EXPECT_EQ(connect("pg:out", "video_sink"), StatusOk);
    EXPECT_EQ(connect("pg:aux", "video_sink"), StatusDuplicate);
    EXPECT_EQ(values(mResult, "video_sink:peer"), "'pg:out'");
}

TEST_F(ConnectionTest, MissingSourcePortIsNoticedBeforeTheSinkIsJudged)
{
    loadSetting("<pg><ghost/></pg><next/>");
    EXPECT_EQ(connect("pg:ghost", "next"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"2 Using default connection pg:ghost", "16 Node(pg) has no port named 'ghost'"}));
}

TEST_F(ConnectionTest, NodesAreCopiedOnceAndEarlierEditsStay)
{
    loadSetting("<pg><out/><aux/></pg><next/>");
    EXPECT_EQ(connect("pg:out", "next:in"), StatusOk);
    at(mResult, "pg").addValue(NUXO_KEY_PG_ID, 42);
    EXPECT_EQ(connect("pg:aux", "next:in"), StatusOk);
    EXPECT_EQ(value(mResult, "pg:pg_id"), "42");
    EXPECT_EQ(mResult.getDescendantCount(), 2);
}

} // namespace

} // namespace graphtest
