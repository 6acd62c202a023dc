// SPDX-License-Identifier: Apache-2.0
// Formats that the fifth generation sets on the other end of a connection.
#include "isp/IspFixture.h"

namespace graphtest {

namespace {

class PeerFormatTest : public IspTest {
protected:
    /// `pg:out` and its peer, whose format may become NV12.
    void loadPair(const std::string& attributes = "")
    {
        load(outPort(attributes) + group("next", "", portWithFormats("in", "NV12")));
    }

    int apply(const std::string& format) { return applyTo(node("pg:out"), format); }

    int applyTo(const IGraphConfig* port, const std::string& format)
    {
        clearLog();
        return mUtils.applyFormat(port, format);
    }

    KVA5IspUtils mUtils;
};

TEST_F(PeerFormatTest, FormatGoesOntoThePeerOnly)
{
    loadPair();
    EXPECT_EQ(apply("NV12"), StatusOk);
    EXPECT_EQ(formatOf("next:in"), "'NV12'");
    EXPECT_EQ(formatOf("pg:out"), "'RAW'");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PeerFormatTest, OptionOfTheFormatIsApplied)
{
    load(outPort() + group("next", "bpp='1'",
                           element("port", "in", "format='RAW'",
                                   "<options attribute='format'><o value='NV12'><apply><next bpp='8'/></apply></o>"
                                   "</options>")));
    EXPECT_EQ(apply("NV12"), StatusOk);
    EXPECT_EQ(value(*mRoot, "next:bpp"), "8");
}

TEST_F(PeerFormatTest, OptionWithNothingToApplyIsEnough)
{
    load(outPort() +
         group("next", "",
               element("port", "in", "format='RAW'", "<options attribute='format'><o value='NV12'/></options>")));
    EXPECT_EQ(apply("NV12"), StatusOk);
    EXPECT_EQ(formatOf("next:in"), "'NV12'");
}

TEST_F(PeerFormatTest, PeerThatDoesNotTakeTheFormatKeepsItsOwn)
{
    loadPair();
    EXPECT_EQ(apply("P010"), StatusOk);
    EXPECT_EQ(formatOf("next:in"), "'RAW'");
    EXPECT_TRUE(loggedExactly({noOptions("next:in"), kRestricted})); // what setting says itself, and no more

    load(outPort() + group("next", "", port("in", "format='RAW'"))); // no list at all
    EXPECT_EQ(apply("NV12"), StatusOk);
    EXPECT_EQ(formatOf("next:in"), "'RAW'");
    EXPECT_TRUE(loggedExactly({noOptions("next:in"), kRestricted}));
}

TEST_F(PeerFormatTest, PeerWithoutAFormatGetsNone)
{
    load(outPort() + group("next", "", port("in", "")));
    EXPECT_EQ(apply("NV12"), StatusOk);
    EXPECT_EQ(formatOf("next:in"), "absent");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PeerFormatTest, FormatThatIsNoTextIsReported)
{
    loadPair();
    replace(*node("next:in"), NUXO_KEY_FORMAT, 4);
    EXPECT_EQ(apply("NV12"), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 Attribute is of wrong type", "16 Couldn't set format NV12 for in"}));
    EXPECT_EQ(formatOf("next:in"), "4");
}

TEST_F(PeerFormatTest, PeerMayBeASink)
{
    load(group("pg", "", output("out", "video")) + element("sink", "video", "format='RAW'", formats("NV12")));
    EXPECT_EQ(apply("NV12"), StatusOk);
    EXPECT_EQ(formatOf("video"), "'NV12'");
}

TEST_F(PeerFormatTest, PortNeedsAPeer)
{
    const std::string line = "16 couldn't find peer for out, cannot apply format.";
    load(group("pg", "", port("out", "format='RAW'")));
    EXPECT_EQ(apply("NV12"), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"2 Couldn't find peer value for port[pg:out]", line}));

    load(outPort()); // the other program group is missing
    EXPECT_EQ(apply("NV12"), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 Failed to find peer by name next:in", line}));

    for (const char* state : {"enabled='0'", "private='1'"}) {
        loadPair(state);
        EXPECT_EQ(apply("NV12"), StatusNotFound) << state; // only the refusal of a value is tolerated
        EXPECT_TRUE(loggedExactly({line})) << state;
        EXPECT_EQ(formatOf("next:in"), "'RAW'");
    }
}

TEST_F(PeerFormatTest, NoPortHasNoPeer)
{
    EXPECT_EQ(applyTo(nullptr, "NV12"), StatusBadArgument);
    EXPECT_TRUE(loggedExactly(
        {"16 Invalid Node, cannot get the peer port", "16 couldn't find peer for NA, cannot apply format."}));
}

TEST_F(PeerFormatTest, GraphAndVersionAreNotAsked)
{
    loadPair();
    KVA5IspUtils utils(mRoot.get(), NUXO::GdfVersionKVA7);
    EXPECT_EQ(utils.applyFormat(node("pg:out"), "NV12"), StatusOk);
    EXPECT_EQ(formatOf("next:in"), "'NV12'");
}

TEST_F(PeerFormatTest, AnyStatusOfThePeerButNotFoundCounts)
{
    MockConnection mock;
    for (const int32_t good : {StatusOk, StatusNotFound}) {
        mock.peer.mSetStatus = good;
        EXPECT_EQ(applyTo(&mock.port, "NV12"), StatusOk) << good;
        EXPECT_TRUE(loggedExactly({})) << good;
    }
    using Sets = std::vector<std::pair<uint32_t, std::string>>;
    EXPECT_EQ(mock.peer.mSet, (Sets{{NUXO_KEY_FORMAT, "NV12"}, {NUXO_KEY_FORMAT, "NV12"}}));
    EXPECT_EQ(mock.port.mSet, Sets());
    for (const int32_t bad : {StatusNoValue, StatusMissingData, StatusNoMemory, StatusBadState, StatusMissingObject,
                              StatusBadArgument, StatusDuplicate, StatusNotSupported}) {
        mock.peer.mSetStatus = bad;
        EXPECT_EQ(applyTo(&mock.port, "NV12"), bad);
        EXPECT_TRUE(loggedExactly({"16 Couldn't set format NV12 for in"})) << bad;
    }
}

TEST_F(PeerFormatTest, PortWithoutARootHasNoPeer)
{
    MockConnection mock;
    mock.port.mRoot = nullptr;
    EXPECT_EQ(applyTo(&mock.port, "NV12"), StatusMissingObject);
    EXPECT_TRUE(loggedExactly({"16 Failed to get root", "16 couldn't find peer for out, cannot apply format."}));
}

} // namespace

} // namespace graphtest
