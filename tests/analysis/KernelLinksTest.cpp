// SPDX-License-Identifier: Apache-2.0
// Links inside a program group.
#include "analysis/InnerGraphFixture.h"

#include <cstdio>

namespace graphtest {

namespace {

class KernelLinksTest : public GraphStepsTest {
protected:
    /// Collects the group `pg` with these children, the ports in, in2, out, out2, the kernels a and b, and @p links.
    int collect(const std::string& links, const std::string& children = "", GdfVersion version = GdfVersionKVA6)
    {
        load(group("pg", "",
                   port("in", "") + port("in2", "") + port("out", "") + port("out2", "") + kernel("a", 1) +
                       kernel("b", 2) + children + links));
        start(version);
        mSg.imagingNodes.clear();
        const int status = access().collectPgInnerGraph(mSg, *node("pg"));
        mLinkLines = maskedLines();
        const auto isAboutNodes = [](const std::string& line) {
            return line.rfind("2 Added Imaging node", 0) == 0 || line.rfind("2 Added routing node", 0) == 0;
        };
        mLinkLines.erase(std::remove_if(mLinkLines.begin(), mLinkLines.end(), isAboutNodes), mLinkLines.end());
        return status;
    }

    /// The line about an end of a link that is a port of the group.
    static std::string portEnd(const std::string& name)
    {
        return "2 Adding klink port[pg:" + name + "]:program_group[pg]  IgraphConfig 0x#";
    }

    static std::string skipped(const std::string& link) { return "2 Klink " + link + " skipped due to mux config"; }

    static std::string inactiveOutput(const std::string& link)
    {
        return "32 Found klink from a demux non active output " + link + "- FIX your GDF!! use the YXA oficial version";
    }

    static std::string inactiveInput(const std::string& link)
    {
        return "16 Found klink to a mux non active input " + link + " - incorrect GDF";
    }

    ImagingNode& inner(const std::string& name) const { return *mSg.imagingNodes.at(name); }

    SubGraphInfo mSg;
    Lines mLinkLines; ///< what collecting the links logged
};

TEST_F(KernelLinksTest, TextsAreTakenApartAtTheFirstColon)
{
    const struct {
        const char* attributes;
        const char* parts;
        const char* text;
    } cases[] = {
        {"source='a:0' destination='b:1'", "a|0|b|1", "a:0->b:1"},
        {"source='in' destination='b:1'", "in||b|1", "in:->b:1"},
        {"source='a:0' destination='out'", "a|0|out|", "a:0->out:"},
        {"source='a:0:1' destination=':b'", "a|0:1||b", "a:0:1->:b"},
        {"source='a:' destination=''", "a|||", "a:->:"},
        {"", "|||", ":->:"},
    };
    for (const auto& each : cases) {
        const Tree links = tree("<klink " + std::string(each.attributes) + "/>");
        const Access::KernelLink link(at(*links, "klink"));
        EXPECT_EQ(link.srcNode + "|" + link.srcPort + "|" + link.dstNode + "|" + link.dstPort, each.parts);
        EXPECT_EQ(link.toStr(), each.text);
    }
}

TEST_F(KernelLinksTest, EndsThatAreNoTextsAreEmpty)
{
    const Tree links = tree("<klink/>");
    GraphConfigNode& node = at(*links, "klink");
    node.addValue(NUXO_KEY_SOURCE, 1);
    node.addValue(NUXO_KEY_DESTINATION, 2);
    EXPECT_EQ(Access::KernelLink(node).toStr(), ":->:");
}

TEST_F(KernelLinksTest, BothEndsAreLabelledWithTheirOwnPort)
{
    EXPECT_EQ(collect(klink("a:3", "b:4")), StatusOk);
    EXPECT_EQ(innerGraph(mSg), (Lines{"pg:a kernel > pg:b[3]", "pg:b kernel < pg:a[4]"}));
    EXPECT_EQ(mLinkLines, Lines{"2 Addded link a:3->b:4"});
}

TEST_F(KernelLinksTest, EndWithoutPortIsAPortOfTheGroup)
{
    EXPECT_EQ(collect(klink("in", "a:0") + klink("a:1", "out")), StatusOk);
    EXPECT_EQ(innerGraph(mSg), (Lines{"pg:a kernel > pg:out[1] < pg:in[0]", "pg:b kernel", "pg:in input > pg:a[]",
                                      "pg:out output < pg:a[]"}));
    EXPECT_EQ(mLinkLines, (Lines{portEnd("in"), "2 Addded link in:->a:0", portEnd("out"), "2 Addded link a:1->out:"}));
    EXPECT_EQ(inner("pg:in").name, "pg:in");
    EXPECT_EQ(inner("pg:in").node, node("pg:in"));
    EXPECT_EQ(inner("pg:in").activePort, -1);
    EXPECT_EQ(inner("pg:out").name, "pg:out");
    EXPECT_EQ(inner("pg:out").node, node("pg:out"));
}

TEST_F(KernelLinksTest, PortIsLoggedWithItsAddress)
{
    EXPECT_EQ(collect(klink("in", "a:0")), StatusOk);
    char address[32];
    std::snprintf(address, sizeof(address), "%p", static_cast<const void*>(static_cast<IGraphConfig*>(node("pg:in"))));
    EXPECT_TRUE(logged(2, std::string("Adding klink port[pg:in]:program_group[pg]  IgraphConfig ") + address));
}

TEST_F(KernelLinksTest, PortMayLeadStraightToAPort)
{
    EXPECT_EQ(collect(klink("in", "out")), StatusOk);
    EXPECT_EQ(innerGraph(mSg),
              (Lines{"pg:a kernel", "pg:b kernel", "pg:in input > pg:out[]", "pg:out output < pg:in[]"}));
    EXPECT_EQ(mLinkLines, (Lines{portEnd("in"), portEnd("out"), "2 Addded link in:->out:"}));
}

TEST_F(KernelLinksTest, LinksComeInTheOrderOfTheFile)
{
    EXPECT_EQ(collect(klink("b:0", "a:0") + klink("a:0", "b:0")), StatusOk);
    EXPECT_EQ(mLinkLines, (Lines{"2 Addded link b:0->a:0", "2 Addded link a:0->b:0"}));
}

TEST_F(KernelLinksTest, InputPortThatFeedsSeveralKernelsIsOneNode)
{
    EXPECT_EQ(collect(klink("in", "a:0") + klink("in", "b:0")), StatusOk);
    EXPECT_EQ(innerGraph(mSg),
              (Lines{"pg:a kernel < pg:in[0]", "pg:b kernel < pg:in[0]", "pg:in input > pg:a[] > pg:b[]"}));
    EXPECT_EQ(mLinkLines, (Lines{portEnd("in"), "2 Addded link in:->a:0", portEnd("in"), "2 Addded link in:->b:0"}));
}

TEST_F(KernelLinksTest, OutputPortThatSeveralKernelsFeedIsOneNode)
{
    EXPECT_EQ(collect(klink("a:0", "out") + klink("b:0", "out")), StatusOk);
    EXPECT_EQ(innerGraph(mSg),
              (Lines{"pg:a kernel > pg:out[0]", "pg:b kernel > pg:out[0]", "pg:out output < pg:a[] < pg:b[]"}));
}

TEST_F(KernelLinksTest, PortTakesTheRoleOfItsLastLink)
{
    EXPECT_EQ(collect(klink("in", "a:0") + klink("b:0", "in")), StatusOk);
    EXPECT_EQ(innerGraph(mSg),
              (Lines{"pg:a kernel < pg:in[0]", "pg:b kernel > pg:in[0]", "pg:in output > pg:a[] < pg:b[]"}));
}

TEST_F(KernelLinksTest, SecondLinkBetweenTheSameNodesIsLost)
{
    EXPECT_EQ(collect(klink("a:0", "b:1") + klink("a:2", "b:3")), StatusOk);
    EXPECT_EQ(innerGraph(mSg), (Lines{"pg:a kernel > pg:b[0]", "pg:b kernel < pg:a[1]"}));
    EXPECT_EQ(mLinkLines, (Lines{"2 Addded link a:0->b:1", "2 Addded link a:2->b:3"}));
}

TEST_F(KernelLinksTest, KernelMayFeedItself)
{
    EXPECT_EQ(collect(klink("a:0", "a:1")), StatusOk);
    EXPECT_EQ(innerGraph(mSg), (Lines{"pg:a kernel > pg:a[0] < pg:a[1]", "pg:b kernel"}));
}

TEST_F(KernelLinksTest, NeighboursStandInTheOrderOfTheirCreation)
{
    // Kernels are created first, in the order of the group; ports when a link names them.
    EXPECT_EQ(collect(klink("a:0", "out2") + klink("a:1", "out") + klink("a:2", "b:0")), StatusOk);
    EXPECT_EQ(innerGraph(mSg)[0], "pg:a kernel > pg:b[2] > pg:out2[0] > pg:out[1]");
}

TEST_F(KernelLinksTest, NamedLinkIsKnownByItsType)
{
    EXPECT_EQ(collect("<klink name='link' source='a:0' destination='b:0'/>" +
                      element("node", "other", "type='klink' source='in' destination='a:0'")),
              StatusOk);
    EXPECT_EQ(mLinkLines, (Lines{"2 Addded link a:0->b:0", portEnd("in"), "2 Addded link in:->a:0"}));
}

TEST_F(KernelLinksTest, OnlyDirectChildrenAreLinks)
{
    EXPECT_EQ(collect(element("block", "box", "", klink("a:0", "b:0"))), StatusOk);
    EXPECT_TRUE(mLinkLines.empty());
}

TEST_F(KernelLinksTest, MissingPortEndsTheCollection)
{
    EXPECT_EQ(collect(klink("nowhere", "a:0") + klink("a:0", "b:0")), StatusBadState);
    EXPECT_EQ(mLinkLines, Lines{"16 Failed find port node nowhere from PG "});
    EXPECT_EQ(collect(klink("a:0", "nowhere") + klink("a:0", "b:0")), StatusBadState);
    EXPECT_EQ(mLinkLines, Lines{"16 Failed find port node nowhere from PG port"});
    EXPECT_EQ(innerGraph(mSg), (Lines{"pg:a kernel", "pg:b kernel"}));
}

TEST_F(KernelLinksTest, AttributeIsNoPort)
{
    EXPECT_EQ(collect(klink("name", "a:0")), StatusBadState);
    EXPECT_EQ(mLinkLines, Lines{"16 Failed find port node name from PG "});
    EXPECT_EQ(collect(klink("a:0", "name")), StatusBadState);
    EXPECT_EQ(mLinkLines, Lines{"16 Failed find port node name from PG port"});
}

TEST_F(KernelLinksTest, LinkWithoutEndsIsAMissingPort)
{
    EXPECT_EQ(collect("<klink destination='a:0'/>"), StatusBadState);
    EXPECT_EQ(mLinkLines, Lines{"16 Failed find port node  from PG "});
    EXPECT_EQ(collect("<klink source='a:0'/>"), StatusBadState);
    EXPECT_EQ(mLinkLines, Lines{"16 Failed find port node  from PG port"});
}

TEST_F(KernelLinksTest, MissingNodeEndsTheCollection)
{
    const std::string tail = " named in klink in the list of nodes. Inconsistent graph";
    for (const auto& ends : {std::make_pair("x:0", "a:0"), std::make_pair("a:0", "x:0")}) {
        EXPECT_EQ(collect(klink(ends.first, ends.second) + klink("a:0", "b:0")), StatusBadState);
        ASSERT_EQ(mLinkLines.size(), 1U);
        EXPECT_EQ(mLinkLines[0].rfind("16 Failed to find Imaging Node ", 0), 0U) << mLinkLines[0];
        EXPECT_EQ(mLinkLines[0].substr(mLinkLines[0].size() - tail.size() - 1), "x" + tail);
        EXPECT_EQ(innerGraph(mSg), (Lines{"pg:a kernel", "pg:b kernel"}));
    }
}

TEST_F(KernelLinksTest, NodesOfOtherGroupsAreOutOfReach)
{
    load(group("one", "", kernel("a", 1)) + group("two", "", kernel("b", 2) + klink("a:0", "b:0")));
    start();
    EXPECT_EQ(access().collectPgInnerGraph(mSg, *node("one")), StatusOk);
    EXPECT_EQ(access().collectPgInnerGraph(mSg, *node("two")), StatusBadState);
}

TEST_F(KernelLinksTest, ActivePathsOfRoutingNodesAreLinked)
{
    const std::string routing =
        element("demux", "d", "active_output='1'") + element("mux", "m", "active_input='2'") + element("split", "s");
    const std::string links = klink("in", "d:0") + klink("d:1", "a:0") + klink("a:0", "m:2") + klink("m:0", "s:0") +
                              klink("s:0", "out") + klink("s:1", "out2");
    for (const GdfVersion version : {GdfVersionKVA6, GdfVersionKVA7}) {
        EXPECT_EQ(collect(links, routing, version), StatusOk);
        EXPECT_EQ(innerGraph(mSg),
                  (Lines{"pg:a kernel > pg:m[0] < pg:d[0]", "pg:b kernel", "pg:d demux > pg:a[1] < pg:in[0]",
                         "pg:in input > pg:d[]", "pg:m mux > pg:s[0] < pg:a[2]", "pg:out output < pg:s[]",
                         "pg:out2 output < pg:s[]", "pg:s split > pg:out[0] > pg:out2[1] < pg:m[0]"}));
    }
}

TEST_F(KernelLinksTest, InactiveOutputOfADemuxIsDroppedWithAWarningInGeneration6)
{
    const std::string demux = element("demux", "d", "active_output='1'");
    const Lines unlinked = {"pg:a kernel", "pg:b kernel > pg:d[0]", "pg:d demux < pg:b[0]"};
    const std::string links = klink("d:0", "a:0") + klink("b:0", "d:0");
    EXPECT_EQ(collect(links, demux, GdfVersionKVA6), StatusOk);
    EXPECT_EQ(mLinkLines, (Lines{inactiveOutput("d:0->a:0"), skipped("d:0->a:0"), "2 Addded link b:0->d:0"}));
    EXPECT_EQ(innerGraph(mSg), unlinked);
    EXPECT_EQ(collect(links, demux, GdfVersionKVA7), StatusOk);
    EXPECT_EQ(mLinkLines, (Lines{skipped("d:0->a:0"), "2 Addded link b:0->d:0"}));
    EXPECT_EQ(innerGraph(mSg), unlinked);
}

TEST_F(KernelLinksTest, OtherEndOfADroppedLinkIsStillResolved)
{
    const std::string demux = element("demux", "d", "active_output='1'");
    EXPECT_EQ(collect(klink("d:0", "out"), demux), StatusOk);
    EXPECT_EQ(mLinkLines, (Lines{inactiveOutput("d:0->out:"), portEnd("out"), skipped("d:0->out:")}));
    EXPECT_EQ(innerGraph(mSg), (Lines{"pg:a kernel", "pg:b kernel", "pg:d demux", "pg:out output"}));
    for (const GdfVersion version : {GdfVersionKVA6, GdfVersionKVA7}) {
        EXPECT_EQ(collect(klink("d:0", "nowhere"), demux, version), StatusBadState);
        EXPECT_EQ(mLinkLines.back(), "16 Failed find port node nowhere from PG port");
        EXPECT_EQ(collect(klink("d:0", "x:0"), demux, version), StatusBadState);
    }
}

TEST_F(KernelLinksTest, InactiveInputOfAMuxIsAnErrorInGeneration6)
{
    const std::string mux = element("mux", "m", "active_input='1'");
    EXPECT_EQ(collect(klink("a:0", "m:1") + klink("b:0", "m:0") + klink("m:0", "out"), mux), StatusMissingObject);
    EXPECT_EQ(mLinkLines, (Lines{"2 Addded link a:0->m:1", inactiveInput("b:0->m:0")}));
}

TEST_F(KernelLinksTest, InactiveInputOfAMuxIsSkippedInGeneration7)
{
    const std::string mux = element("mux", "m", "active_input='1'");
    EXPECT_EQ(collect(klink("a:0", "m:1") + klink("b:0", "m:0") + klink("in", "m:2"), mux, GdfVersionKVA7), StatusOk);
    EXPECT_EQ(mLinkLines, (Lines{"2 Addded link a:0->m:1", skipped("b:0->m:0"), portEnd("in"), skipped("in:->m:2")}));
    EXPECT_EQ(innerGraph(mSg), (Lines{"pg:a kernel > pg:m[0]", "pg:b kernel", "pg:in input", "pg:m mux < pg:a[1]"}));
}

TEST_F(KernelLinksTest, MuxIsLookedAtAlsoBehindADroppedSource)
{
    const std::string routing = element("demux", "d", "active_output='1'") + element("mux", "m", "active_input='1'");
    EXPECT_EQ(collect(klink("d:0", "m:0"), routing), StatusMissingObject);
    EXPECT_EQ(mLinkLines, (Lines{inactiveOutput("d:0->m:0"), inactiveInput("d:0->m:0")}));
    EXPECT_EQ(collect(klink("d:0", "m:0"), routing, GdfVersionKVA7), StatusOk);
    EXPECT_EQ(mLinkLines, Lines{skipped("d:0->m:0")});
    EXPECT_EQ(collect(klink("d:0", "m:1"), routing, GdfVersionKVA7), StatusOk);
    EXPECT_EQ(mLinkLines, Lines{skipped("d:0->m:1")});
}

TEST_F(KernelLinksTest, OnlyTheDecimalTextOfThePathIsActive)
{
    const std::string routing = element("demux", "d", "active_output='1'") + element("mux", "m", "active_input='1'");
    for (const char* const port : {"01", "+1", "1 ", "x", "10", "-1"}) {
        const std::string path = port;
        EXPECT_EQ(collect(klink("d:" + path, "a:0"), routing), StatusOk);
        EXPECT_EQ(inner("pg:a").parents.size(), 0U) << path;
        EXPECT_EQ(collect(klink("a:0", "m:" + path), routing), StatusMissingObject) << path;
    }
}

TEST_F(KernelLinksTest, PathsOnTheOtherSideOfRoutingNodesDoNotMatter)
{
    const std::string routing = element("demux", "d", "active_output='1'") + element("mux", "m", "active_input='1'");
    EXPECT_EQ(collect(klink("a:0", "d:7") + klink("m:7", "b:0"), routing), StatusOk);
    EXPECT_EQ(mLinkLines, (Lines{"2 Addded link a:0->d:7", "2 Addded link m:7->b:0"}));
}

TEST_F(KernelLinksTest, RoutingNodeWithoutActivePathLinksNothing)
{
    const std::string routing = element("demux", "d") + element("mux", "m");
    EXPECT_EQ(collect(klink("d:0", "a:0"), routing), StatusOk);
    EXPECT_EQ(inner("pg:d").children.size(), 0U);
    EXPECT_EQ(collect(klink("a:0", "m:0"), routing), StatusMissingObject);
    EXPECT_EQ(collect(klink("a:0", "m:0"), routing, GdfVersionKVA7), StatusOk);
    EXPECT_EQ(inner("pg:m").parents.size(), 0U);
}

TEST_F(KernelLinksTest, FailureOfALinkFailsTheAnalysis)
{
    const auto loadGroup = [this](const std::string& kind) {
        load(bufferSource("pg:in") +
             element(kind, "pg", "stream_id='1'",
                     port("in", "") + kernel("a", 1) + element("mux", "m", "active_input='1'") + klink("a:0", "m:0")) +
             sink("video", "stream_id='1'") +
             graphOf(connection("buffer_src0:port_0", "pg:in") + connection("pg:out", "video")));
    };
    loadGroup("program_group");
    EXPECT_EQ(analyze(GdfVersionKVA6), StatusMissingObject);
    EXPECT_TRUE(
        loggedInOrder({inactiveInput("a:0->m:0"), "16 Failed to collect imaging graph info from program_group[pg]",
                       "16 Analysis of subgraphs failed  -16 "}));
    loadGroup("compute_block");
    EXPECT_EQ(analyze(GdfVersionKVA7), StatusOk);
    EXPECT_TRUE(logged(2, "Klink a:0->m:0 skipped due to mux config"));
}

} // namespace

} // namespace graphtest
