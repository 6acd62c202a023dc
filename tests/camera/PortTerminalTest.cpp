// SPDX-License-Identifier: Apache-2.0
// Stages and terminals of ports. A stage is pg_id << 16 | tag; a tag holds two letters, the first in its low byte:
// "SA" 0x4153, "XE" 0x4558, "0G" 0x4730.
#include "camera/PortFixture.h"

namespace graphtest {

namespace {

class PortTerminalTest : public PortTest {
protected:
    int ask(const IGraphConfig* port) { return GraphCameraUtil::portGetFourCCInfo(port, mStage, mTerminal); }

    /// Expects these values of the port `pg:out` with @p id of a node with these attributes.
    void expectTerminal(const std::string& group, const std::string& id, unsigned int stage, unsigned int terminal)
    {
        loadPort("id=\"" + id + "\"", group);
        EXPECT_EQ(ask(out()), StatusOk);
        EXPECT_EQ(mStage, stage) << group;
        EXPECT_EQ(mTerminal, terminal) << group << " id " << id;
        EXPECT_TRUE(loggedExactly({}));
    }

    unsigned int mStage = 111; // no port here has these
    unsigned int mTerminal = 222;
};

TEST_F(PortTerminalTest, TagsAreTwoLettersWithTheFirstInTheLowByte)
{
    EXPECT_EQ('S' | 'A' << 8, 16723);
    EXPECT_EQ('X' | 'E' << 8, 17752);
    EXPECT_EQ('0' | 'G' << 8, 18224);
    const std::string group = "pg_id=\"4\"";
    expectTerminal(group, "5", (4U << 16) + 18224, (4U << 16) + 18224 + 5);
    expectTerminal(group + " subsystem=\"gpu\"", "5", (4U << 16) + 17752, (4U << 16) + 17752 + 5);
    expectTerminal(group + " simulation=\"true\"", "5", (4U << 16) + 16723, (4U << 16) + 16723 + 5);
}

TEST_F(PortTerminalTest, SimulationComesBeforeTheSubsystem)
{
    expectTerminal(R"(pg_id="4" simulation="true" subsystem="gpu")", "0", 0x44153, 0x44153);
    expectTerminal(R"(pg_id="4" simulation="false" subsystem="gpu")", "0", 0x44558, 0x44558);
}

TEST_F(PortTerminalTest, OnlyTheExactTextsCount)
{
    for (const std::string text : {"True", "TRUE", "1", "yes", "", "true "}) {
        expectTerminal("pg_id=\"1\" simulation=\"" + text + "\"", "0", 0x14730, 0x14730);
    }
    for (const std::string text : {"GPU", "Gpu", "gpu0", "", "psys"}) {
        expectTerminal("pg_id=\"1\" subsystem=\"" + text + "\"", "0", 0x14730, 0x14730);
    }
}

TEST_F(PortTerminalTest, TagsOfAnotherKindCountAsAbsent)
{
    loadPort("id=\"2\"", "pg_id=\"1\"");
    node("pg")->addValue(NUXO_KEY_SIMULATION, 1);
    node("pg")->addValue(NUXO_KEY_SUBSYSTEM, 1);
    EXPECT_EQ(ask(out()), StatusOk);
    EXPECT_EQ(mStage, 0x14730U);
    EXPECT_EQ(mTerminal, 0x14732U);
}

TEST_F(PortTerminalTest, TagsStandOnTheNodeNotOnThePort)
{
    loadPort("id=\"2\" pg_id=\"9\" simulation=\"true\"", "pg_id=\"1\"");
    EXPECT_EQ(ask(out()), StatusOk);
    EXPECT_EQ(mStage, 0x14730U);
}

TEST_F(PortTerminalTest, IdIsAddedToTheStage)
{
    // The bits of 0x30 are in the tag already, those of 0x10000 in the program group.
    expectTerminal("pg_id=\"1\"", std::to_string(0x30), 0x14730, 0x14760);
    expectTerminal("pg_id=\"1\"", std::to_string(0x10000), 0x14730, 0x24730);
}

TEST_F(PortTerminalTest, NodeWithoutAProgramGroupHasNoStage)
{
    expectTerminal("", "5", 0, 5);
    expectTerminal("simulation=\"true\" subsystem=\"gpu\"", "0", 0, 0);
    expectTerminal("", "-1", 0, 0xFFFFFFFF);
    loadPort("id=\"5\"");
    node("pg")->addValue(NUXO_KEY_PG_ID, std::string("4")); // a text is no id
    EXPECT_EQ(ask(out()), StatusOk);
    EXPECT_EQ(mStage, 0U);
    EXPECT_EQ(mTerminal, 5U);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortTerminalTest, ZeroIsAProgramGroup)
{
    expectTerminal("pg_id=\"0\"", "1", 18224, 18225);
}

TEST_F(PortTerminalTest, NumbersBeyondTheFieldsAreTakenModulo32Bits)
{
    const std::string largest = kLargest;
    const std::string smallest = kSmallest;
    // Sixteen bits of the program group remain.
    expectTerminal("pg_id=\"" + largest + "\"", "0", 0xFFFF4730, 0xFFFF4730); // 0x7FFFFFFF
    expectTerminal("pg_id=\"-1\"", "0", 0xFFFF4730, 0xFFFF4730);              // 0xFFFFFFFF
    expectTerminal("pg_id=\"-2\"", "0", 0xFFFE4730, 0xFFFE4730);              // 0xFFFFFFFE
    expectTerminal("pg_id=\"" + smallest + "\"", "0", 0x4730, 0x4730);        // 0x80000000
    expectTerminal("pg_id=\"65536\"", "0", 0x4730, 0x4730);                   // 0x00010000
    // The sum wraps.
    expectTerminal("pg_id=\"1\"", "-1", 0x14730, 0x1472F);
    expectTerminal("pg_id=\"1\"", largest, 0x14730, 0x8001472F);  // 0x14730 + 0x7FFFFFFF
    expectTerminal("pg_id=\"1\"", smallest, 0x14730, 0x80014730); // 0x14730 + 0x80000000
    expectTerminal("pg_id=\"-1\"", largest, 0xFFFF4730, 0x7FFF472F);
    expectTerminal("pg_id=\"-1\"", smallest, 0xFFFF4730, 0x7FFF4730);
}

TEST_F(PortTerminalTest, SinkOfTheRootIsATerminalOfItsOwn)
{
    load("<sink name=\"video\" id=\"3\"/>");
    EXPECT_EQ(ask(node("video")), StatusOk);
    EXPECT_EQ(mStage, 0U);
    EXPECT_EQ(mTerminal, 3U);
}

TEST_F(PortTerminalTest, NoPortIsRefusedSilently)
{
    EXPECT_EQ(ask(nullptr), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortTerminalTest, PortNeedsAnId)
{
    const std::string line = "16 Failed to get port(port[pg:out]) id";
    loadPort("", "pg_id=\"4\"");
    EXPECT_EQ(ask(out()), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({line}));
    out()->addValue(NUXO_KEY_ID, std::string("5"));
    clearLog();
    EXPECT_EQ(ask(out()), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({line}));
}

TEST_F(PortTerminalTest, PortNeedsANode)
{
    GraphConfigNode alone;
    EXPECT_EQ(ask(&alone), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 Failed to get port(NODE[NA]) id"})); // the id is asked for first
    alone.addValue(NUXO_KEY_ID, 5);
    clearLog();
    EXPECT_EQ(ask(&alone), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 Failed to get port ancestor"}));
}

} // namespace

} // namespace graphtest
