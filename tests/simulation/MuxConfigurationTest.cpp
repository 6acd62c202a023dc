// SPDX-License-Identifier: Apache-2.0
#include "simulation/SimulationFixture.h"

namespace graphtest {

namespace {

using Configuration = std::map<std::string, unsigned int>;

class MuxConfigurationTest : public GraphTest {
protected:
    /// A built graph of this version with these nodes.
    void load(const std::string& nodes, const std::string& version = "KVA6")
    {
        mGraph = descriptor("<graph version=\"" + version + "\" id=\"100\"/>" + nodes);
    }

    /// A graph with one program group of stream 1 that holds @p content.
    void loadGroup(const std::string& content)
    {
        load("<program_group name=\"pg\" stream_id=\"1\">" + content + "</program_group>");
    }

    int ask(int stream = 1)
    {
        clearLog();
        return ZmtTevSimUtils::getMuxConfiguration(mGraph.get(), stream, mConfiguration);
    }

    /// What a stream adds to nothing.
    Configuration of(int stream)
    {
        mConfiguration.clear();
        EXPECT_EQ(ask(stream), StatusOk);
        return mConfiguration;
    }

    static std::string looking(const std::string& type)
    {
        return sim("2 Getting mux config from nodes of type " + type);
    }

    Tree mGraph;
    Configuration mConfiguration;
};

/// One node of each kind, both of stream 1.
constexpr const char* kBothTypes = R"(
    <program_group name="pg" stream_id="1"><demux name="pg_demux" active_output="1"/></program_group>
    <compute_block name="cb" stream_id="1"><mux name="cb_mux" active_input="2"/></compute_block>)";

TEST_F(MuxConfigurationTest, OutputsOfDemuxesAndInputsOfMuxesAreRead)
{
    loadGroup(R"(<demux name="first" active_output="1"/><mux name="second" active_input="2"/><port name="in"/>
                 <kernel name="k" active_input="5" active_output="5"/><split name="s" active_output="5"/>
                 <mux name="third" active_input="0"/><demux name="fourth" active_output="4"/>)");
    EXPECT_EQ(of(1), (Configuration{{"first", 1}, {"second", 2}, {"third", 0}, {"fourth", 4}}));
    EXPECT_TRUE(loggedExactly({looking("program_group")}));
}

TEST_F(MuxConfigurationTest, TypeIsToldAsDebugOutput)
{
    loadGroup("");
    const auto said = mLog.linesOfLevel(
        kDebug, [this] { (void)ZmtTevSimUtils::getMuxConfiguration(mGraph.get(), 1, mConfiguration); });
    ASSERT_EQ(said.size(), 1U);
    EXPECT_EQ(said[0].message, "Getting mux config from nodes of type program_group");
    EXPECT_EQ(said[0].tag, "NUXO_TEV_SIMULATION_UTILS[XOS]");
}

TEST_F(MuxConfigurationTest, VersionWithKva7MeansComputeBlocks)
{
    for (const char* version : {"KVA7", "KVA7.2", "a KVA7b", "KVA6 or KVA7"}) {
        load(kBothTypes, version);
        EXPECT_EQ(of(1), (Configuration{{"cb_mux", 2}})) << version;
        EXPECT_TRUE(loggedExactly({looking("compute_block")}));
    }
}

TEST_F(MuxConfigurationTest, AnyOtherVersionMeansProgramGroups)
{
    for (const char* version : {"KVA6", "kva7", "KVA 7", "KVA", "7", ""}) {
        load(kBothTypes, version);
        EXPECT_EQ(of(1), (Configuration{{"pg_demux", 1}})) << version;
        EXPECT_TRUE(loggedExactly({looking("program_group")}));
    }
}

TEST_F(MuxConfigurationTest, WithoutAReadableVersionProgramGroupsAreMeant)
{
    mGraph = descriptor(kBothTypes); // `version` of the root itself is not asked
    EXPECT_EQ(of(1), (Configuration{{"pg_demux", 1}}));
    EXPECT_TRUE(loggedExactly({looking("program_group")}));
    load(kBothTypes, "KVA7");
    at(*mGraph, "graph").removeDescendant(NUXO_KEY_VERSION);
    EXPECT_EQ(of(1), (Configuration{{"pg_demux", 1}}));
    at(*mGraph, "graph").addValue(NUXO_KEY_VERSION, 7);
    EXPECT_EQ(of(1), (Configuration{{"pg_demux", 1}}));
}

TEST_F(MuxConfigurationTest, VersionOfTheRootDoesNotCount)
{
    mGraph = descriptor(kBothTypes, "KVA7");
    EXPECT_EQ(of(1), (Configuration{{"pg_demux", 1}}));
}

TEST_F(MuxConfigurationTest, StreamPicksTheFirstNodeThatHasIt)
{
    load(R"(<program_group name="a"><mux name="none" active_input="0"/></program_group>
            <hw name="b" stream_id="2"><mux name="hw" active_input="1"/></hw>
            <program_group name="c" stream_id="-3"><mux name="minus" active_input="2"/></program_group>
            <program_group name="d" stream_id="2"><mux name="two" active_input="3"/></program_group>
            <program_group name="e" stream_id="2"><mux name="later" active_input="4"/></program_group>
            <node name="f" type="program_group" stream_id="0"><mux name="zero" active_input="5"/></node>)");
    EXPECT_EQ(of(2), (Configuration{{"two", 3}}));
    EXPECT_EQ(of(-3), (Configuration{{"minus", 2}}));
    EXPECT_EQ(of(0), (Configuration{{"zero", 5}}));
    EXPECT_EQ(of(-1), Configuration{});
}

TEST_F(MuxConfigurationTest, UnknownStreamLeavesTheConfigurationAsItIs)
{
    loadGroup("<mux name=\"m\" active_input=\"1\"/>");
    mConfiguration = {{"earlier", 5}};
    EXPECT_EQ(ask(2), StatusOk);
    EXPECT_EQ(mConfiguration, (Configuration{{"earlier", 5}}));
}

TEST_F(MuxConfigurationTest, StreamOfAnotherKindIsNone)
{
    load("<program_group name=\"pg\"><mux name=\"m\" active_input=\"1\"/></program_group>");
    at(*mGraph, "pg").addValue(NUXO_KEY_STREAM_ID, std::string("1"));
    EXPECT_EQ(of(1), Configuration{});
}

TEST_F(MuxConfigurationTest, EntriesAreAddedAndReplaced)
{
    loadGroup("<mux name=\"m\" active_input=\"1\"/>");
    mConfiguration = {{"earlier", 5}, {"m", 9}};
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(mConfiguration, (Configuration{{"earlier", 5}, {"m", 1}}));
}

TEST_F(MuxConfigurationTest, MuxComesAfterDemuxesOfItsName)
{
    loadGroup("<mux name=\"same\" active_input=\"1\"/><demux name=\"same\" active_output=\"2\"/>");
    EXPECT_EQ(of(1), (Configuration{{"same", 1}}));
}

TEST_F(MuxConfigurationTest, NegativeNumbersBecomeLargeOnes)
{
    loadGroup("<mux name=\"m\" active_input=\"-1\"/><demux name=\"d\" active_output=\"-2147483648\"/>");
    EXPECT_EQ(of(1), (Configuration{{"m", 4294967295U}, {"d", 2147483648U}}));
}

TEST_F(MuxConfigurationTest, NodeWithoutANameIsCalledAsItIsFiled)
{
    mGraph = tree(R"(<pg type="program_group" stream_id="1"><filed type="mux" active_input="1"/>
                     <out type="demux" active_output="2"/><x type="mux" name="named" active_input="3"/></pg>)");
    EXPECT_EQ(of(1), (Configuration{{"filed", 1}, {"out", 2}, {"named", 3}}));
    at(*mGraph, "pg:filed").addValue(NUXO_KEY_NAME, 5); // no name either
    EXPECT_EQ(of(1), (Configuration{{"filed", 1}, {"out", 2}, {"named", 3}}));
}

TEST_F(MuxConfigurationTest, DemuxWithoutAnActiveOutputIsReported)
{
    // `active_outputs` is another attribute.
    loadGroup(R"(<demux name="good" active_output="1"/><demux name="bad" active_outputs="1" active_input="1"/>
                 <demux name="later" active_output="2"/><mux name="m"/>)");
    EXPECT_EQ(ask(), StatusMissingData);
    EXPECT_TRUE(loggedExactly({looking("program_group"), sim("16 Failed to get active output for demuxer bad")}));
    EXPECT_EQ(mConfiguration.count("bad") + mConfiguration.count("later") + mConfiguration.count("m"), 0U);

    at(*mGraph, "pg:bad").addValue(NUXO_KEY_ACTIVE_OUTPUT, std::string("1"));
    EXPECT_EQ(ask(), StatusNotFound);
    EXPECT_TRUE(loggedExactly({looking("program_group"), sim("16 Failed to get active output for demuxer bad")}));
}

TEST_F(MuxConfigurationTest, MuxWithoutAnActiveInputIsReported)
{
    loadGroup(R"(<demux name="d" active_output="1"/><mux name="good" active_input="2"/>
                 <mux name="bad" active_output="1"/><mux name="later" active_input="3"/>)");
    EXPECT_EQ(ask(), StatusMissingData);
    EXPECT_TRUE(loggedExactly({looking("program_group"), sim("16 Failed to get active input for muxer bad")}));
    EXPECT_EQ(mConfiguration.count("bad") + mConfiguration.count("later"), 0U);

    at(*mGraph, "pg:bad").addValue(NUXO_KEY_ACTIVE_INPUT, std::string("1"));
    EXPECT_EQ(ask(), StatusNotFound);
    EXPECT_TRUE(loggedExactly({looking("program_group"), sim("16 Failed to get active input for muxer bad")}));
}

TEST_F(MuxConfigurationTest, NamelessNodeIsReportedAsItIsFiled)
{
    mGraph = tree("<pg type=\"program_group\" stream_id=\"1\"><filed type=\"demux\"/></pg>");
    EXPECT_EQ(ask(), StatusMissingData);
    EXPECT_TRUE(loggedExactly({looking("program_group"), sim("16 Failed to get active output for demuxer filed")}));
}

TEST_F(MuxConfigurationTest, NoGraphIsABadArgument)
{
    EXPECT_EQ(ZmtTevSimUtils::getMuxConfiguration(nullptr, 1, mConfiguration), StatusBadArgument);
    EXPECT_EQ(mConfiguration, Configuration{});
}

TEST_F(MuxConfigurationTest, ForeignGraphHoldsNoNodes)
{
    const ForeignNode foreign;
    EXPECT_EQ(ZmtTevSimUtils::getMuxConfiguration(&foreign, 1, mConfiguration), StatusOk);
    EXPECT_EQ(mConfiguration, Configuration{});
    EXPECT_EQ(mLog.count(LogCapture::Debug, "NUXO_TEV_SIMULATION_UTILS[XOS]",
                         "Getting mux config from nodes of type program_group"),
              1U);
}

TEST_F(MuxConfigurationTest, GraphStaysAsItWas)
{
    load(kBothTypes);
    const std::string before = text(*mGraph);
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(text(*mGraph), before);
}

} // namespace

} // namespace graphtest
