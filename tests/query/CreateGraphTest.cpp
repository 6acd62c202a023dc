// SPDX-License-Identifier: Apache-2.0
#include "query/ForeignNode.h"
#include "query/GraphFixture.h"

#include <stdexcept>

namespace graphtest {

namespace {

class CreateGraphTest : public BuildTest {
protected:
    static constexpr const char* kTpg = "<nodes><source name=\"tpg\"><port name=\"out\" direction=\"1\"/></source>"
                                        "<hw name=\"pg\"><port name=\"in\" direction=\"0\"/></hw></nodes>";

    /// A graph element 1 with this content over a test pattern generator, and a setting of it.
    void loadGraph(const std::string& graphContent, const std::string& setting = "<tpg><out/></tpg><pg/>")
    {
        load(std::string(kTpg) + "<graphs><graph id=\"1\">" + graphContent + "</graph></graphs>",
             "<settings key=\"7\" id=\"1\">" + setting + "</settings>");
    }
};

TEST_F(CreateGraphTest, WholeRequestGivesTheGraphDerivedByHand)
{
    mDescriptor = parse(requestDescriptor());
    mSettings = parse(requestSettings());
    const std::string descriptorBefore = text(*mDescriptor);
    const std::string settingsBefore = text(*mSettings);
    mManager.setGraphDescriptor(mDescriptor.get());
    mManager.setGraphSettings(mSettings.get());

    std::vector<IGraphConfig*> found;
    ASSERT_EQ(mManager.queryGraphs({{ItemUID("pg_video:out:width"), "1280"}}, found, true), StatusOk);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(mManager.createGraph(found[0], &mGraph), StatusOk);
    EXPECT_EQ(text(graph()), requestGraph());
    EXPECT_TRUE(linked(graph()));
    EXPECT_EQ(mGraph->getAncestor(), nullptr);
    EXPECT_EQ(text(*mDescriptor), descriptorBefore);
    EXPECT_EQ(text(*mSettings), settingsBefore);

    // The graph stands alone, and building it again gives the same.
    IGraphConfig* again = nullptr;
    EXPECT_EQ(mManager.createGraph(found[0], &again), StatusOk);
    mSettings.reset();
    mDescriptor.reset();
    EXPECT_EQ(text(asNode(again)), requestGraph());
    EXPECT_EQ(text(graph()), requestGraph());
    mManager.destroyGraph(again);
}

TEST_F(CreateGraphTest, NullArgumentsAreRefusedAndTouchNothing)
{
    loadGraph("");
    GraphConfigNode sentinel;
    IGraphConfig* graph = &sentinel;
    EXPECT_EQ(mManager.createGraph(nullptr, &graph), StatusBadArgument);
    EXPECT_EQ(graph, static_cast<IGraphConfig*>(&sentinel));
    EXPECT_EQ(mManager.createGraph(&setting(), nullptr), StatusBadArgument);
    EXPECT_EQ(mManager.createGraph(nullptr, nullptr), StatusBadArgument);
    EXPECT_EQ(mManager.getGraph(nullptr, &sentinel), StatusBadArgument);
    EXPECT_EQ(mManager.getGraph(&setting(), nullptr), StatusBadArgument);
    EXPECT_EQ(text(sentinel), "");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(CreateGraphTest, DestroyingNothingIsAllowed)
{
    mManager.destroyGraph(nullptr);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(CreateGraphTest, WithoutADescriptorTheRootIsHandedOutEmpty)
{
    loadGraph("");
    mManager.setGraphDescriptor(nullptr);
    EXPECT_EQ(build(), StatusBadArgument);
    ASSERT_NE(mGraph, nullptr);
    EXPECT_EQ(text(graph()), "");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(CreateGraphTest, ForeignSettingsNodeIsRefusedWithTheRootHandedOut)
{
    loadGraph("");
    ForeignNode foreign;
    EXPECT_EQ(mManager.createGraph(&foreign, &mGraph), StatusBadArgument);
    ASSERT_NE(mGraph, nullptr);
    EXPECT_EQ(text(graph()), "");
}

TEST_F(CreateGraphTest, SettingNeedsAnIntegerKey)
{
    loadGraph("");
    setting().removeDescendant(NUXO_KEY_KEY);
    EXPECT_EQ(build(), StatusMissingData);
    EXPECT_EQ(text(graph()), "");
    setting().addValue(NUXO_KEY_KEY, std::string("7"));
    EXPECT_EQ(build(), StatusNotFound);
    EXPECT_EQ(text(graph()), "");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(CreateGraphTest, ResultThatHasAKeyAlreadyIsRefused)
{
    loadGraph("");
    GraphConfigNode used;
    used.addValue(NUXO_KEY_KEY, 1);
    EXPECT_EQ(mManager.getGraph(&setting(), &used), StatusDuplicate);
    EXPECT_EQ(text(used), "key=1");
}

TEST_F(CreateGraphTest, SettingNeedsAnIntegerId)
{
    loadGraph("");
    setting().removeDescendant(NUXO_KEY_ID);
    EXPECT_EQ(build(), StatusMissingData);
    EXPECT_EQ(text(graph()), "key=7");
    setting().addValue(NUXO_KEY_ID, std::string("1"));
    EXPECT_EQ(build(), StatusNotFound);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(CreateGraphTest, UnknownGraphIdIsReportedAndTheRootHandedOut)
{
    load(std::string(kTpg) + "<graphs><graph id=\"1\"/><graph id=\"2\"/></graphs>", "<settings key=\"7\" id=\"3\"/>");
    EXPECT_EQ(build(), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 could not find graph with id 3 from graph descriptor"}));
    EXPECT_EQ(text(graph()), "key=7");
}

TEST_F(CreateGraphTest, DescriptorWithoutGraphsHasNoGraph)
{
    load(kTpg, "<settings key=\"7\" id=\"-3\"/>");
    EXPECT_EQ(build(), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 could not find graph with id -3 from graph descriptor"}));
}

TEST_F(CreateGraphTest, GraphIdZeroMatchesTheFirstElementWithoutId)
{
    load(std::string(kTpg) + "<graphs><graph description=\"none\"/><graph id=\"0\" description=\"zero\"/></graphs>",
         "<settings key=\"7\" id=\"0\"/>");
    EXPECT_EQ(build(), StatusBadState); // no source
    EXPECT_EQ(value(graph(), "graph:description"), "'none'");
}

TEST_F(CreateGraphTest, ElementWithoutIdDoesNotMatchAnyOtherId)
{
    load(std::string(kTpg) + "<graphs><graph id=\"2\"/><graph description=\"none\"/></graphs>",
         "<settings key=\"7\" id=\"1\"/>");
    EXPECT_EQ(build(), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 could not find graph with id 1 from graph descriptor"}));
}

TEST_F(CreateGraphTest, OnlyDirectChildrenOfGraphsAreGraphs)
{
    load(std::string(kTpg) + "<graphs><graph id=\"2\"><connection id=\"1\"/></graph></graphs>",
         "<settings key=\"7\" id=\"1\"/>");
    EXPECT_EQ(build(), StatusBadState);
    EXPECT_TRUE(logged(kError, "could not find graph with id 1 from graph descriptor"));
}

TEST_F(CreateGraphTest, AnyElementOfGraphsWithTheIdServesAndTheFirstOneCounts)
{
    load(std::string(kTpg) + "<graphs><graph name=\"video\" id=\"1\"/><graph name=\"still\" id=\"1\"/></graphs>",
         "<settings key=\"7\" id=\"1\"/>");
    EXPECT_EQ(build(), StatusBadState); // no source
    EXPECT_EQ(text(graph()), "graph{name='video' type='graph' version='KVA6' id=1} id=1 key=7");
}

TEST_F(CreateGraphTest, GraphElementIsCopiedWithTheVersionOfTheDescriptor)
{
    loadGraph("<connection source=\"tpg:out\" sink=\"pg:in\"/>");
    EXPECT_EQ(build(), StatusOk);
    EXPECT_EQ(text(at(graph(), "graph")), "connection{sink='pg:in' source='tpg:out'} version='KVA6' id=1");
    EXPECT_EQ(value(*mDescriptor, "graphs:graph:version"), "absent");

    mDescriptor->removeDescendant(NUXO_KEY_VERSION);
    EXPECT_EQ(build(), StatusOk);
    EXPECT_EQ(value(graph(), "graph:version"), "''");
}

TEST_F(CreateGraphTest, GraphElementWithAVersionOfItsOwnFails)
{
    load(std::string(kTpg) + "<graphs><graph id=\"1\" version=\"5\"/></graphs>", "<settings key=\"7\" id=\"1\"/>");
    EXPECT_EQ(build(), StatusNoMemory);
    EXPECT_TRUE(loggedExactly({"16 Failed to add GDF version info [KVA6]to graph"}));
    EXPECT_EQ(text(graph()), "key=7");
}

TEST_F(CreateGraphTest, GraphElementThatCannotBeCopiedFails)
{
    loadGraph("");
    at(*mDescriptor, "graphs:graph")
        .insertDescendant(new GraphConfigItem, NUXO_KEY_PORT); // an untyped item has no copy
    EXPECT_EQ(build(), StatusNoMemory);
    EXPECT_TRUE(loggedExactly({"16 Error creating GraphConfigNode: No memory"}));
    EXPECT_EQ(text(graph()), "key=7");
}

// --- connections ---

TEST_F(CreateGraphTest, ConnectionsNeedSourceAndSinkTexts)
{
    loadGraph("<connection sink=\"pg:in\"/>");
    EXPECT_EQ(build(), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Error: connection element with no source"}));
    at(*mDescriptor, "graphs:graph:connection").addValue(NUXO_KEY_SOURCE, 1);
    EXPECT_EQ(build(), StatusNotFound);
    EXPECT_EQ(count(kError, "Error: connection element with no source"), 2U);

    loadGraph("<connection source=\"tpg:out\"/>");
    EXPECT_EQ(build(), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Error: connection element with no sink"}));
    at(*mDescriptor, "graphs:graph:connection").addValue(NUXO_KEY_SINK, 1);
    EXPECT_EQ(build(), StatusNotFound);
    EXPECT_EQ(count(kError, "Error: connection element with no sink"), 2U);
}

TEST_F(CreateGraphTest, OnlyTheExactTextFalseKeepsAConnectionDynamic)
{
    for (const char* makesStatic : {"true", "0", "", "False", "FALSE", "false ", "no"}) {
        loadGraph(std::string("<connection source=\"tpg:out\" sink=\"pg:in\" static=\"") + makesStatic + "\"/>", "");
        EXPECT_EQ(build(), StatusOk) << makesStatic; // made although the setting names neither node
        EXPECT_EQ(value(graph(), "pg:in:peer"), "'tpg:out'") << makesStatic;
    }
    for (const char* keepsDynamic : {"static=\"false\"", ""}) {
        loadGraph(std::string("<connection source=\"tpg:out\" sink=\"pg:in\" ") + keepsDynamic + "/>", "");
        EXPECT_EQ(build(), StatusBadState) << keepsDynamic;
        EXPECT_TRUE(logged(kWarning, "WARNING: Node(tpg) not found from settings(7), ignoring connection."));
        EXPECT_EQ(value(graph(), "tpg"), "absent");
    }
}

TEST_F(CreateGraphTest, ConnectionsAreMadeInDocumentOrderUntilTheFirstThatFails)
{
    loadGraph(
        "<connection source=\"tpg:out\" sink=\"pg:in\"/><connection source=\"tpg:in\" sink=\"pg:in\" static=\"1\"/>"
        "<connection source=\"tpg:out\" sink=\"pg:in\"/>");
    EXPECT_EQ(build(), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Node(tpg) has no port named 'in'"}));
    EXPECT_EQ(values(graph(), "tpg:out:peer"), "'pg:in'");
    EXPECT_EQ(value(graph(), "id"), "absent"); // the setting was not merged
}

TEST_F(CreateGraphTest, OnlyConnectionElementsAreConnections)
{
    loadGraph("<group><connection source=\"tpg:out\" sink=\"pg:in\"/></group>"
              "<connection name=\"named\" source=\"tpg:out\" sink=\"pg:in\"/>");
    at(*mDescriptor, "graphs:graph").insertDescendant(new GraphConfigStrAttribute("text"), NUXO_KEY_CONNECTION);
    EXPECT_EQ(build(), StatusBadState); // nothing was connected, so there is no source of type `source`
    EXPECT_EQ(value(graph(), "pg:in:peer"), "absent");
}

TEST_F(CreateGraphTest, ConnectionsThatASettingAddsAreNotMade)
{
    loadGraph("<connection source=\"tpg:out\" sink=\"pg:in\"/>",
              "<tpg><out/></tpg><pg/><graph><connection source=\"tpg:out\" sink=\"pg:in\"/>"
              "<apply target=\"pg:bpp\" value=\"8\"/></graph>");
    EXPECT_EQ(build(), StatusOk);
    EXPECT_EQ(values(graph(), "tpg:out:peer"), "'pg:in'");
    EXPECT_EQ(value(graph(), "pg:bpp"), "absent"); // nor its overrides
    EXPECT_EQ(value(graph(), "graph:apply:value"), "'8'");
}

TEST_F(CreateGraphTest, PortlessSinkThatIsNoVirtualSinkFailsTheBuild)
{
    loadGraph("<connection source=\"tpg:out\" sink=\"pg\"/>");
    EXPECT_EQ(build(), StatusMissingData);
    EXPECT_TRUE(logged(kError, "sink connection attribute without port 'hw' not pointing to virtual sink"));
}

TEST_F(CreateGraphTest, InactiveConnectionsAreNoFailure)
{
    loadGraph("<connection source=\"tpg:out\" sink=\"pg:in\"/><connection source=\"pg:in\" sink=\"tpg:out\"/>");
    EXPECT_EQ(build(), StatusOk);
    EXPECT_TRUE(logged(kWarning, "WARNING: Node(pg) port in not found from settings(7)."));
}

// --- what follows the connections ---

TEST_F(CreateGraphTest, SettingIsMergedOverTheConnectedNodes)
{
    loadGraph("<connection source=\"tpg:out\" sink=\"pg:in\"/>",
              "<tpg><out width=\"640\" peer=\"other\" direction=\"0\"/></tpg><pg bpp=\"10\"><extra/></pg><stray "
              "left=\"1\"/>");
    EXPECT_EQ(build(), StatusOk);
    EXPECT_EQ(text(at(graph(), "tpg:out")), "name='out' peer='pg:in' type='port' direction=1 width=640");
    EXPECT_EQ(value(graph(), "pg:in:width"), "640"); // given on by the output
    EXPECT_EQ(value(graph(), "pg:bpp"), "10");
    EXPECT_EQ(value(graph(), "pg:extra"), "node");
    EXPECT_EQ(text(at(graph(), "stray")), "left=1");
    EXPECT_EQ(value(graph(), "id"), "1");
    EXPECT_EQ(values(graph(), "key"), "7");
}

TEST_F(CreateGraphTest, StreamOfASinkMustBeKnownBeforeTheSettingIsMerged)
{
    load(std::string(kTpg).insert(7, "<sink name=\"s\"/>") + // behind "<nodes>"
             "<graphs><graph id=\"1\"><connection source=\"tpg:out\" sink=\"s\"/></graph></graphs>",
         "<settings key=\"7\" id=\"1\"><tpg stream_id=\"5\"><out/></tpg><s/></settings>");
    EXPECT_EQ(build(), StatusMissingData);
    EXPECT_TRUE(logged(kError, "No stream_id set for connected peer"));
}

TEST_F(CreateGraphTest, SettingThatCannotBeMergedFails)
{
    loadGraph("<connection source=\"tpg:out\" sink=\"pg:in\"/>", "<tpg><out/></tpg><pg/><stray/>");
    at(setting(), "stray").insertDescendant(new GraphConfigItem, NUXO_KEY_PORT);
    EXPECT_EQ(build(), StatusNoMemory);
    EXPECT_TRUE(loggedExactly(
        {"16 Error creating GraphConfigItem: No memory", "16 Failed to add settings to the result graph"}));
}

TEST_F(CreateGraphTest, OverridesBeatTheSettingAndReachThePassOverThePorts)
{
    loadGraph("<connection source=\"tpg:out\" sink=\"pg:in\"/><apply target=\"tpg:out:width\" value=\"1\"/>"
              "<apply target=\"pg:in:enabled\" value=\"0\"/>",
              "<tpg><out width=\"640\"/></tpg><pg/>");
    EXPECT_EQ(build(), StatusOk);
    EXPECT_EQ(value(graph(), "tpg:out:width"), "1");
    EXPECT_EQ(value(graph(), "pg:in:width"), "640"); // an override is not given on
    EXPECT_TRUE(logged(kWarning, "peer disabled, disabling port out"));
    EXPECT_EQ(value(graph(), "tpg:out:enabled"), "0");
}

TEST_F(CreateGraphTest, OverrideThatFailsFailsTheBuild)
{
    loadGraph("<connection source=\"tpg:out\" sink=\"pg:in\"/><apply value=\"1\"/>");
    EXPECT_EQ(build(), StatusMissingData);
    EXPECT_TRUE(loggedExactly(
        {"16 Error: override tag with no attribute target node", "16 Failed to process graph 1 overrides"}));
    EXPECT_EQ(value(graph(), "id"), "1"); // the setting had been merged
}

TEST_F(CreateGraphTest, NumberThatIsNoneIsABadArgumentAndTheTreeIsHandedOut)
{
    for (const char* number : {"abc", "", "2147483648", "-99999999999"}) {
        loadGraph("<connection source=\"tpg:out\" sink=\"pg:in\"/><apply target=\"pg:bpp\" value=\"" +
                  std::string(number) + "\"/>");
        EXPECT_EQ(build(), StatusBadArgument) << number;
        ASSERT_NE(mGraph, nullptr);
        EXPECT_EQ(value(graph(), "pg:in:peer"), "'tpg:out'");
    }
    GraphConfigNode result;
    EXPECT_THROW((void)mManager.getGraph(&setting(), &result), std::out_of_range);
}

TEST_F(CreateGraphTest, NumberThatIsNoneInADifferenceIsABadArgumentToo)
{
    load("<nodes><base_node name=\"base\" base_type=\"source\"/><node name=\"tpg\" base_node=\"base\">"
         "<attribute target=\"bpp\" value=\"x\"/></node></nodes>"
         "<graphs><graph id=\"1\"><connection source=\"tpg\" sink=\"tpg\" static=\"1\"/></graph></graphs>",
         "<settings key=\"7\" id=\"1\"/>");
    EXPECT_EQ(build(), StatusBadArgument);
    ASSERT_NE(mGraph, nullptr);
    EXPECT_EQ(value(graph(), "tpg"), "absent");
    GraphConfigNode result;
    EXPECT_THROW((void)mManager.getGraph(&setting(), &result), std::invalid_argument);
}

TEST_F(CreateGraphTest, UnusedPortsEndUpDisabled)
{
    loadGraph("<connection source=\"tpg:out\" sink=\"pg:in\"/>", "<tpg><out enabled=\"0\"/></tpg><pg><in/></pg>");
    EXPECT_EQ(build(), StatusOk);
    EXPECT_EQ(value(graph(), "tpg:out:enabled"), "0");
    EXPECT_EQ(value(graph(), "tpg:out:peer"), "absent");
}

// --- the source decides about sensor modes ---

TEST_F(CreateGraphTest, GraphWithoutAnActiveSourceFails)
{
    loadGraph("<connection source=\"tpg:out\" sink=\"pg:in\"/>", "<tpg enabled=\"0\"><out/></tpg><pg/>");
    EXPECT_EQ(build(), StatusBadState);
    EXPECT_TRUE(loggedExactly({"2 disableUnusedPorts", "2 disableUnusedPorts done!",
                               "16 ERROR: No active sources. Check that node with type source exists"}));
    EXPECT_EQ(value(graph(), "tpg:out:peer"), "'pg:in'");
}

TEST_F(CreateGraphTest, TestPatternGeneratorNeedsNoSensorModes)
{
    loadGraph("<connection source=\"tpg:out\" sink=\"pg:in\"/>");
    EXPECT_EQ(build(), StatusOk);
    EXPECT_TRUE(loggedExactly(
        {"2 disableUnusedPorts", "2 disableUnusedPorts done!", "2 Found 1 active sources from the descriptor."}));
}

class SourceChoiceTest : public BuildTest {
protected:
    /// All three kinds of sources connected to one node; the setting says more about them.
    void loadSources(const std::string& setting, const std::string& besideSettings = "")
    {
        load(R"(<nodes><source name="tpg"/><source name="sensor"/><source name="buffer_src0"/><source name="camera"/>
                  <hw name="pg"><port name="in" direction="0"/></hw></nodes>
                <graphs><graph id="1"><connection source="tpg" sink="pg:in"/><connection source="sensor" sink="pg:in"/>
                  <connection source="buffer_src0" sink="pg:in"/><connection source="camera" sink="pg:in"/>
                </graph></graphs>)",
             besideSettings + "<settings key=\"7\" id=\"1\"><pg/>" + setting + "</settings>");
    }
};

TEST_F(SourceChoiceTest, FirstSourceIsTheOneWithTheLowestKey)
{
    loadSources("<sensor/><buffer_src0/>"); // 36 and 6
    EXPECT_EQ(build(), StatusOk);
    EXPECT_TRUE(notLogged("mode_id"));
    loadSources("<tpg/><sensor/>"); // 57 and 36
    EXPECT_EQ(build(), StatusMissingData);
    EXPECT_TRUE(logged(kWarning, "Sensor lacks mode_id. Failed to set sensor mode."));
}

TEST_F(SourceChoiceTest, DisabledSourcesDoNotDecide)
{
    loadSources("<tpg/><sensor enabled=\"0\"/>");
    EXPECT_EQ(build(), StatusOk);
    EXPECT_TRUE(logged(kDebug, "Found 1 active sources from the descriptor."));
}

TEST_F(SourceChoiceTest, SourceOfAnotherNameIsNoSensor)
{
    loadSources("<camera/>");
    EXPECT_EQ(build(), StatusOk);
}

TEST_F(SourceChoiceTest, SensorNeedsATextModeId)
{
    loadSources("<sensor/>", "<sensor_modes/>");
    EXPECT_EQ(build(), StatusMissingData);
    EXPECT_EQ(count(kWarning, "Sensor lacks mode_id. Failed to set sensor mode."), 1U);
    at(*mDescriptor, "nodes:sensor").addValue(NUXO_KEY_MODE_ID, 0);
    EXPECT_EQ(build(), StatusNotFound);
    EXPECT_EQ(count(kWarning, "Sensor lacks mode_id. Failed to set sensor mode."), 2U);
}

TEST_F(SourceChoiceTest, SensorModesStandBesideTheSettingsNotInsideThem)
{
    loadSources("<sensor mode_id=\"0\"/><sensor_modes><mode name=\"0\"/></sensor_modes>");
    EXPECT_EQ(build(), StatusMissingData);
    EXPECT_TRUE(logged(kWarning, "Settings file is missing sensor_modes"));
    loadSources("<sensor mode_id=\"0\"/>", "<sensor_modes><mode name=\"0\"/></sensor_modes>");
    EXPECT_EQ(build(), StatusOk);
}

TEST_F(SourceChoiceTest, WithoutASettingsTreeSensorModesAreMissing)
{
    loadSources("<sensor mode_id=\"0\"/>", "<sensor_modes><mode name=\"0\"/></sensor_modes>");
    mManager.setGraphSettings(nullptr);
    EXPECT_EQ(build(), StatusMissingData);
    EXPECT_TRUE(logged(kWarning, "Settings file is missing sensor_modes"));
}

TEST_F(SourceChoiceTest, UnknownModeFailsBehindTheDefaults)
{
    loadSources("<sensor mode_id=\"9\"/>", "<sensor_modes fps=\"30\"><mode name=\"0\"/></sensor_modes>");
    EXPECT_EQ(build(), StatusBadState);
    EXPECT_TRUE(logged(kError, "Sensor Mode 9 not in the list of available modes"));
    EXPECT_TRUE(logged(kError, "Settings file has incorrect sensor mode data"));
    EXPECT_EQ(value(graph(), "sensor:fps"), "30");
}

TEST_F(SourceChoiceTest, SensorModeBeatsOverrides)
{
    loadSources("<sensor mode_id=\"0\"/>", "<sensor_modes fps=\"30\"><mode name=\"0\" bpp=\"10\"/></sensor_modes>");
    auto* const override_ = new GraphConfigNode;
    override_->addValue(NUXO_KEY_TARGET, std::string("sensor:bpp"));
    override_->addValue(NUXO_KEY_VALUE, std::string("8"));
    at(*mDescriptor, "graphs:graph").insertDescendant(override_, NUXO_KEY_APPLY);
    EXPECT_EQ(build(), StatusOk);
    EXPECT_EQ(value(graph(), "sensor:bpp"), "10");
}

} // namespace

} // namespace graphtest
