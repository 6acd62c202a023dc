// SPDX-License-Identifier: Apache-2.0
#include "camera/MockNode.h"
#include "camera/PortFixture.h"

namespace graphtest {

namespace {

class ApplyFormatTest : public PortTest {
protected:
    /// `pg:out` and its peer, whose format may become one of @p options.
    void loadOptions(const std::string& options, const std::string& port = "format=\"RAW\"")
    {
        load(portOf("pg", "out", port + " peer=\"next:in\"", "bpp=\"1\"") +
             "<program_group name=\"next\"><port name=\"in\" format=\"RAW\"><options attribute=\"format\">" + options +
             "</options></port></program_group>");
    }

    int apply(const std::string& format) const { return GraphCameraUtil::applyFormat(out(), format); }
    std::string formatOf(const std::string& path) const { return value(*mRoot, path + ":format"); }
};

constexpr const char* kNv12 = "<o value=\"NV12\"><apply><pg bpp=\"8\"/></apply></o>";
constexpr const char* kRestricted = "16 setValue() restricted to attributes that have predefined options";
constexpr const char* kNoOptions = "32 Trying to apply value but no options list available for port[next:in].";

TEST_F(ApplyFormatTest, FormatIsSetOnThePeerWithItsOption)
{
    loadOptions(kNv12);
    EXPECT_EQ(apply("NV12"), StatusOk);
    EXPECT_EQ(formatOf("next:in"), "'NV12'");
    EXPECT_EQ(formatOf("pg:out"), "'RAW'");
    EXPECT_EQ(value(*mRoot, "pg:bpp"), "8");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ApplyFormatTest, PeerMayBeASink)
{
    load(portOf("pg", "out", "peer=\"video\"", "bpp=\"1\"") +
         "<sink name=\"video\" format=\"RAW\"><options attribute=\"format\">" + kNv12 + "</options></sink>");
    EXPECT_EQ(apply("NV12"), StatusOk);
    EXPECT_EQ(formatOf("video"), "'NV12'");
}

TEST_F(ApplyFormatTest, OptionWithNothingToApplyIsEnough)
{
    loadOptions("<o value=\"NV12,\"/>");
    EXPECT_EQ(apply("NV12"), StatusOk);
    EXPECT_EQ(formatOf("next:in"), "'NV12'");
    EXPECT_TRUE(loggedExactly({"16 Found option for NV12, but no apply node. Skipping."}));
    EXPECT_EQ(apply(""), StatusOk);
    EXPECT_EQ(formatOf("next:in"), "''");
}

TEST_F(ApplyFormatTest, PeerWithoutSuchAnOptionKeepsItsFormatAndThatIsFine)
{
    loadOptions(kNv12);
    EXPECT_EQ(apply("P010"), StatusOk);
    EXPECT_EQ(formatOf("next:in"), "'RAW'");
    EXPECT_EQ(value(*mRoot, "pg:bpp"), "1");
    EXPECT_TRUE(loggedExactly({kNoOptions, kRestricted}));

    loadPair("", "format=\"RAW\"");
    EXPECT_EQ(apply("NV12"), StatusOk);
    EXPECT_EQ(formatOf("next:in"), "'RAW'");
    EXPECT_TRUE(loggedExactly({kNoOptions, kRestricted}));
}

TEST_F(ApplyFormatTest, PeerWithoutAFormatGetsNone)
{
    loadPair("format=\"RAW\"");
    EXPECT_EQ(apply("NV12"), StatusOk);
    EXPECT_EQ(formatOf("next:in"), "absent");
    EXPECT_EQ(formatOf("pg:out"), "'RAW'");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ApplyFormatTest, FormatThatIsNoTextIsReported)
{
    loadPair("");
    node("next:in")->addValue(NUXO_KEY_FORMAT, 4);
    EXPECT_EQ(apply("NV12"), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 Attribute is of wrong type", "16 Couldn't set format NV12 for port[pg:out]"}));
    EXPECT_EQ(formatOf("next:in"), "4");
}

TEST_F(ApplyFormatTest, FailedOptionIsReported)
{
    loadOptions("<o value=\"NV12\"><apply><sink/></apply></o>");
    node("next:in:options:o:apply:sink")->insertDescendant(new GraphConfigItem, NUXO_KEY_PORT); // cannot be copied
    EXPECT_EQ(apply("NV12"), StatusNoMemory);
    EXPECT_TRUE(loggedExactly({"16 Error creating GraphConfigItem: No memory", "16 Failed to apply option attributes",
                               kRestricted, "16 Couldn't set format NV12 for port[pg:out]"}));
    EXPECT_EQ(formatOf("next:in"), "'RAW'");
}

TEST_F(ApplyFormatTest, PortMayBeItsOwnPeer)
{
    load(std::string("<program_group name=\"pg\"><port name=\"out\" peer=\"pg:out\" format=\"RAW\">"
                     "<options attribute=\"format\">") +
         kNv12 + "</options></port></program_group>");
    EXPECT_EQ(apply("NV12"), StatusOk);
    EXPECT_EQ(formatOf("pg:out"), "'NV12'");
    EXPECT_EQ(value(*mRoot, "pg:bpp"), "8");
}

TEST_F(ApplyFormatTest, OnlyOneConnectionIsFollowed)
{
    load(portOf("pg", "out", "peer=\"next:in\" format=\"RAW\"") +
         portOf("next", "in", "peer=\"pg:out\" enabled=\"0\""));
    EXPECT_EQ(apply("NV12"), StatusOk);
    EXPECT_EQ(formatOf("pg:out"), "'RAW'");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ApplyFormatTest, PortNeedsAPeer)
{
    const std::string line = "16 couldn't find peer for port[pg:out]";
    loadPort("format=\"RAW\"");
    EXPECT_EQ(apply("NV12"), StatusBadState);
    EXPECT_TRUE(loggedExactly({"2 Couldn't find peer value for port[pg:out]", line}));
    EXPECT_EQ(formatOf("pg:out"), "'RAW'");

    loadPort("peer=\"ghost\"");
    EXPECT_EQ(apply("NV12"), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 Failed to find peer by name ghost", line}));

    for (const char* state : {"enabled=\"0\"", "private=\"1\""}) {
        loadOptions(kNv12, state);
        EXPECT_EQ(apply("NV12"), StatusBadState) << state;
        EXPECT_TRUE(loggedExactly({line})) << state;
        EXPECT_EQ(formatOf("next:in"), "'RAW'");
    }
}

TEST_F(ApplyFormatTest, NoPortHasNoPeer)
{
    EXPECT_EQ(GraphCameraUtil::applyFormat(nullptr, "NV12"), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 Invalid Node, cannot get the peer port", "16 couldn't find peer for NODE[NA]"}));
}

TEST_F(ApplyFormatTest, AnyStatusOfThePeerButNotFoundCounts)
{
    using Sets = std::vector<std::pair<uint32_t, std::string>>;
    MockConnection mock;
    for (const int32_t good : {StatusOk, StatusNotFound}) {
        mock.peer.mSetStatus = good;
        EXPECT_EQ(GraphCameraUtil::applyFormat(&mock.port, "NV12"), StatusOk);
    }
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(mock.peer.mSet, (Sets{{NUXO_KEY_FORMAT, "NV12"}, {NUXO_KEY_FORMAT, "NV12"}}));
    EXPECT_EQ(mock.port.mSet, Sets());
    for (const int32_t bad : {StatusNoValue, StatusMissingData, StatusNoMemory, StatusBadState, StatusMissingObject,
                              StatusBadArgument, StatusDuplicate, StatusNotSupported}) {
        mock.peer.mSetStatus = bad;
        clearLog();
        EXPECT_EQ(GraphCameraUtil::applyFormat(&mock.port, "NV12"), bad);
        EXPECT_TRUE(loggedExactly({"16 Couldn't set format NV12 for port[pg:out]"}));
    }
}

} // namespace

} // namespace graphtest
