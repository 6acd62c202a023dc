// SPDX-License-Identifier: Apache-2.0
// Where the histories of a subgraph begin: at its sources, at the subgraphs that feed it, or at itself.
#include "analysis/HistoryFixture.h"

namespace historytest {

namespace {

class HistorySourceTest : public HistoryTest {
protected:
    /// A test pattern of 4208x3120 in stream 0; the back end cuts off a frame of 8 columns and 4 lines. Its ports `output`
    /// and `raw` feed a group each.
    void loadBackEnd(const std::string& rawAttributes, const std::string& outputAttributes = size(4192, 3112))
    {
        load(element("source", "tpg", "stream_id='0'", out("port_0", size(4208, 3120))) +
                 element("hw", "csi_be", "stream_id='0'",
                         "<zmt_pixelformatter><input width='4208' height='3120' left='8' top='4' right='8' bottom='4'/>"
                         "</zmt_pixelformatter>" +
                             in("input") + out("output", outputAttributes) + out("raw", rawAttributes)) +
                 through("pg", 1) + through("raw_pg", 2) + sink("sink", 1) + sink("raw_sink", 2),
             {"tpg:port_0>csi_be:input", "csi_be:output>pg:in", "csi_be:raw>raw_pg:in", "pg:out>sink",
              "raw_pg:out>raw_sink"});
    }

    static inline const Info kBackEnd = info(4208, 3120, 4192, 3112, {8, 4, 8, 4});
};

TEST_F(HistorySourceTest, EachOutputPortHasItsOwnSize)
{
    loadBackEnd(size(2096, 1556));
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(arriving("pg:k_pg"), text(kBackEnd));
    EXPECT_EQ(arriving("raw_pg:k_raw_pg"), text(info(4208, 3120, 2096, 1556, {8, 4, 8, 4})));
    EXPECT_TRUE(notLogged("using default resolution history"));
    EXPECT_TRUE(notLogged("did not reach all"));
    EXPECT_TRUE(logged(kDebug, "--- Visiting node csi_be:raw ---"));
    EXPECT_TRUE(logged(kDebug, "---- Res-history graph traversal for subgraph 0 done! ----"));
    EXPECT_TRUE(logged(kDebug, "Filling TEV run_kernels for subgraph -1")); // no group tells the stream
}

TEST_F(HistorySourceTest, PortWithoutSizeKeepsThatOfTheSource)
{
    for (const char* attributes : {"", "width='2096'", "width='0' height='0'"}) {
        loadBackEnd(attributes);
        ASSERT_EQ(init(), StatusOk) << attributes;
        EXPECT_EQ(arriving("raw_pg:k_raw_pg"), text(kBackEnd));
        EXPECT_TRUE(
            loggedLike(kWarning, "Failed to get dimensions for port ", "raw", " using default resolution history"));
    }
}

TEST_F(HistorySourceTest, SourceHistoryIsHandedOut)
{
    Info history = frame(1, 1);
    EXPECT_EQ(mUtil->getSourceResolutionHistory(history), StatusOk);
    EXPECT_EQ(text(history), text(Info{}));
    loadBackEnd(size(2096, 1556));
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(mUtil->getSourceResolutionHistory(history), StatusOk);
    EXPECT_EQ(text(history), text(kBackEnd));
}

TEST_F(HistorySourceTest, EachPortBelongsToTheSourceThatFeedsIt)
{
    load(source(1920, 1080) + source(640, 480, "buffer_src1") + through("pg", 1) + through("qg", 2) + sink("sink", 1) +
             sink("other_sink", 2),
         {"buffer_src0:port_0>pg:in", "buffer_src1:port_0>qg:in", "pg:out>sink", "qg:out>other_sink"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(arriving("pg:k_pg"), text(frame(1920, 1080)));
    EXPECT_EQ(arriving("qg:k_qg"), text(frame(640, 480)));
}

TEST_F(HistorySourceTest, SubgraphThatNothingFeedsNeedsASource)
{
    load(source(1920, 1080) + through("pg", 1) + through("lonely", 2) + sink("sink", 1) + sink("lonely_sink", 2),
         {"buffer_src0:port_0>pg:in", "pg:out>sink", "lonely:out>lonely_sink"});
    EXPECT_EQ(init(), StatusMissingObject);
    EXPECT_TRUE(logged(kError, "Could not find source node in subgraph 2"));
    EXPECT_TRUE(logged(kError, "Graph traversal interrupted at node  [-16]")); // subgraphs have no name
    EXPECT_TRUE(logged(kError, "Traversal of subgraphs failed on subgraph 2"));
    EXPECT_TRUE(logged(kError, "TEV structures population failed"));
}

TEST_F(HistorySourceTest, DisabledSourceIsNone)
{
    load(element("source", "buffer_src0", "stream_id='0' enabled='0'", out("port_0", size(640, 480))) +
             through("pg", 1) + sink("sink", 1),
         {"buffer_src0:port_0>pg:in", "pg:out>sink"});
    EXPECT_EQ(init(), StatusMissingObject);
    EXPECT_TRUE(logged(kError, "Could not find source node in subgraph 0"));
}

TEST_F(HistorySourceTest, UnknownKindOfSourceIsAnError)
{
    load(source(1920, 1080, "lamp") + through("pg", 1) + sink("sink", 1), {"lamp:port_0>pg:in", "pg:out>sink"});
    EXPECT_EQ(init(), StatusNotSupported);
    EXPECT_TRUE(logged(kError, "Failed to get source resolution history"));
    EXPECT_TRUE(logged(kError, "Traversal of subgraphs failed on subgraph 0"));
}

TEST_F(HistorySourceTest, EachSourceThatFeedsAPortMustBeKnown)
{
    load(source(1920, 1080) + source(640, 480, "lamp") + through("pg", 1) + through("qg", 2) + sink("sink", 1) +
             sink("other", 2),
         {"buffer_src0:port_0>pg:in", "lamp:port_0>qg:in", "pg:out>sink", "qg:out>other"});
    EXPECT_EQ(init(), StatusNotSupported);
    EXPECT_TRUE(logged(kError, "Failed to get source resolution history"));
}

TEST_F(HistorySourceTest, SourceInTheStreamOfItsGroupGivesNoHistories)
{
    load(element("source", "buffer_src0", "stream_id='1'", out("port_0", size(1920, 1080))) + through("pg", 1) +
             sink("sink", 1),
         {"buffer_src0:port_0>pg:in", "pg:out>sink"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "k_pg=1"); // the rest of the record is there
    EXPECT_EQ(arriving("pg:k_pg"), text(Info{}));
    EXPECT_EQ(record("pg:k_pg").resolution_info, nullptr);
    EXPECT_EQ(record("pg:k_pg").output_count, 0U);
}

class HistorySeedsTest : public HistoryTest {
protected:
    /// A group `pg` of stream 1 with two outputs of 1280x720 and 640x360, which feed the group `next` of stream 2.
    void loadTwice(const std::string& nextInput = "", const std::string& nextBody = "",
                   const Texts& nextLinks = {"in>k:0", "k:0>out", "second>l:0", "l:0>side"})
    {
        const std::string scaler =
            kernel("scale", 0, "rcb='1'",
                   "<input width='1920' height='1080'/><output id='0' width='1280' height='720'/>"
                   "<output id='1' width='640' height='360'/>");
        load(source(1920, 1080) +
                 group("pg", 1,
                       in("in") + out("one") + out("two") + scaler +
                           klinks({"in>scale:0", "scale:0>one", "scale:1>two"})) +
                 group("next", 2,
                       in("in", nextInput) + in("second") + out("out") + out("side") + kernel("k", 0) + kernel("l", 1) +
                           nextBody + klinks(nextLinks)) +
                 sink("sink", 2) + sink("side_sink", 2),
             {"buffer_src0:port_0>pg:in", "pg:one>next:in", "pg:two>next:second", "next:out>sink",
              "next:side>side_sink"});
    }

    static inline const Info kOne = info(1920, 1080, 1280, 720);
    static inline const Info kTwo = info(1920, 1080, 640, 360);
};

TEST_F(HistorySeedsTest, SeveralConnectionsBetweenTwoGroupsKeepTheirHistories)
{
    loadTwice();
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(arriving("next:k"), text(kOne));
    EXPECT_EQ(arriving("next:l"), text(kTwo));
    EXPECT_TRUE(notLogged("did not reach all"));
}

// The back end feeds both groups of stream 1, and the first of them feeds the second through the same port. What the walk
// from pg:in left there must stay: `both` takes it only when qg:side has its frame, too.
TEST_F(HistorySeedsTest, MainInputThatAnInnerConnectionReachedIsNotSeededAgain)
{
    const std::string half =
        kernel("half", 0, "rcb='1'", "<input " + size(1920, 1080) + "/><output id='0' " + size(960, 540) + "/>");
    load(source(1920, 1080) + group("pg", 1, in("in") + out("out") + half + klinks({"in>half:0", "half:0>out"})) +
             group("qg", 1,
                   in("in") + in("side") + out("out") + kernel("one", 0) + kernel("both", 1) +
                       klinks({"in>one:0", "in>both:0", "side>both:1", "both:0>out"})) +
             sink("sink", 1),
         {"buffer_src0:port_0>pg:in", "buffer_src0:port_0>qg:in", "pg:out>qg:in", "buffer_src0:port_0>qg:side",
          "qg:out>sink"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(subgraph(1).inputPorts, (std::vector<NUXO::IGraphConfig*>{&at(*mRoot, "pg:in"), &at(*mRoot, "qg:in")}));
    const std::string halved = text(info(1920, 1080, 960, 540));
    EXPECT_EQ(arriving("pg:half"), text(frame(1920, 1080)));
    EXPECT_EQ(leaving("qg:in", ""), halved);
    EXPECT_EQ(arriving("qg:one"), halved);
    EXPECT_EQ(arriving("qg:both"), text(frame(1920, 1080))); // the larger one
    EXPECT_TRUE(notLogged("Could not find the res history"));
    EXPECT_TRUE(notLogged("did not reach all"));
}

// Nothing inside the first group leads to its port `off`, so it has no inner node; the port behind it is off and needs none.
TEST_F(HistorySeedsTest, DisabledPortDoesNotAskForWhatFeedsIt)
{
    load(source(1920, 1080) + through("pg", 1, out("off", "enabled='0'")) +
             through("next", 2, in("side", "enabled='0'") + kernel("l", 1), {"side>l:0", "l:0>k_next:1"}) +
             sink("sink", 2),
         {"buffer_src0:port_0>pg:in", "pg:out>next:in", "pg:off>next:side", "next:out>sink"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_TRUE(notLogged("Could not find inner node"));
    EXPECT_TRUE(notLogged("Failed to get res history"));
    EXPECT_EQ(states(), "k_pg=1 k_next=1 l=2");
    EXPECT_EQ(disabled(), "next:l next:side");
    EXPECT_EQ(arriving("next:k_next"), text(frame(1920, 1080)));
}

TEST_F(HistorySeedsTest, SecondaryPortWithoutPeerIsNotVisited)
{
    loadTwice();
    at(*mRoot, "next:second").removeDescendant(NUXO_KEY_PEER);
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(arriving("next:k"), text(kOne));
    EXPECT_EQ(arriving("next:l"), text(Info{}));
    // in, k and out are three of the six
    EXPECT_TRUE(logged(kWarning, "Traversal of inner graph 2 did not reach all ACTIVE nodes 3/6"));
    EXPECT_EQ(linesLike({"32 Imaging Node "}),
              (Texts{"32 Imaging Node l not reached", "32 Imaging Node next:second not reached",
                     "32 Imaging Node next:side not reached"}));
}

TEST_F(HistorySeedsTest, SecondaryPortsAreThoseThatWereNotReached)
{
    loadTwice();
    ASSERT_EQ(init(), StatusOk);
    auto& sg = subgraph(2);
    std::vector<Access::ImagingNode*> found = {nullptr};
    EXPECT_EQ(access().getUnvisitedInputPortsPeers(sg, found), StatusOk);
    EXPECT_EQ(found, (std::vector<Access::ImagingNode*>{nullptr, &inner("next:in"), &inner("next:second")}));
    inner("next:in").visited = true;
    found.clear();
    EXPECT_EQ(access().getUnvisitedInputPortsPeers(sg, found), StatusOk);
    EXPECT_EQ(found, std::vector<Access::ImagingNode*>{&inner("next:second")});
    at(*mRoot, "next:second").removeDescendant(NUXO_KEY_PEER);
    found.clear();
    EXPECT_EQ(access().getUnvisitedInputPortsPeers(sg, found), StatusOk);
    EXPECT_TRUE(found.empty());
}

TEST_F(HistorySeedsTest, PortThatNoInnerNodeFeedsIsAnError)
{
    load(source(1920, 1080) + group("pg", 1, in("in") + out("out") + kernel("k", 0) + klinks({"in>k:0"})) +
             through("next", 2) + sink("sink", 2),
         {"buffer_src0:port_0>pg:in", "pg:out>next:in", "next:out>sink"});
    EXPECT_EQ(init(), StatusMissingObject);
    EXPECT_TRUE(logged(kError, "Could not find inner node pg:out in subgraph 1- Error"));
    EXPECT_TRUE(loggedLike(kError, "Failed to get res history for input port ", "in"));
    EXPECT_TRUE(logged(kError, "Traversal of subgraphs failed on subgraph 0"));
}

TEST_F(HistorySeedsTest, PortThatNoFrameReachedIsAnError)
{
    // the kernel before pg:out hangs loose
    load(source(1920, 1080) +
             group("pg", 1,
                   in("in") + out("out") + out("side") + kernel("k", 0) + kernel("loose", 1) +
                       klinks({"in>k:0", "k:0>side", "loose:0>out"})) +
             through("next", 2) + sink("sink", 2) + sink("side_sink", 1),
         {"buffer_src0:port_0>pg:in", "pg:side>side_sink", "pg:out>next:in", "next:out>sink"});
    EXPECT_EQ(init(), StatusMissingObject);
    EXPECT_TRUE(loggedLike(kError, "Failed to get res history for input port ", "in"));
}

TEST_F(HistorySeedsTest, PortBehindADisabledOneIsDisabled)
{
    load(source(1920, 1080) +
             group("pg", 1, in("in") + out("out", "enabled='0'") + kernel("k", 0) + klinks({"in>k:0", "k:0>out"})) +
             through("next", 2) + sink("sink", 2),
         {"buffer_src0:port_0>pg:in", "pg:out>next:in", "next:out>sink"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(disabled(), "pg:in pg:k pg:out next:in");
    EXPECT_EQ(arriving("next:k_next"), text(Info{}));
    EXPECT_TRUE(logged(kDebug, "--- Res history Visit of node next:in  SKIPPED node disabled ---"));
}

TEST_F(HistorySeedsTest, InputPortWithoutLinkIsAnError)
{
    load(source(1920, 1080) + group("pg", 1, in("in") + out("out") + kernel("k", 0) + klinks({"k:0>out"})) +
             sink("sink", 1),
         {"buffer_src0:port_0>pg:in", "pg:out>sink"});
    EXPECT_EQ(init(), StatusMissingObject);
    EXPECT_TRUE(loggedLike(kError, "Failed to find input port ", "in", " in the Imaging graph- Error"));
}

TEST_F(HistorySeedsTest, PrivatePortHasItsOwnSize)
{
    loadTwice("private='1' " + size(800, 600));
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(arriving("next:k"), text(info(1920, 1080, 800, 600)));
    EXPECT_EQ(arriving("next:l"), text(kTwo));
}

TEST_F(HistorySeedsTest, PrivatePortWithoutSizeTakesWhatIsUpstream)
{
    loadTwice("private='1'");
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(arriving("next:k"), text(kOne));
    EXPECT_TRUE(
        loggedLike(kWarning, "Failed to get dimensions for private port ", "in", " using default resolution history"));
}

TEST_F(HistorySeedsTest, FirstOfTwoStreamsThatFeedOnePortCounts)
{
    Texts connections = {"buffer_src0:port_0>p:in", "buffer_src1:port_0>q:in", "p:out>next:in", "q:out>next:in",
                         "next:out>sink"};
    for (const Info& expected : {frame(1920, 1080), frame(640, 480)}) {
        load(source(1920, 1080) + source(640, 480, "buffer_src1") + through("p", 1) + through("q", 2) +
                 through("next", 3) + sink("sink", 3),
             connections);
        ASSERT_EQ(init(), StatusOk);
        EXPECT_EQ(arriving("next:k_next"), text(expected));
        EXPECT_EQ(subgraph(3).inputPorts.size(), 1U);
        std::swap(connections[2], connections[3]);
    }
}

TEST_F(HistorySeedsTest, SeedReplacesWhatThePortHad)
{
    loadTwice();
    ASSERT_EQ(init(), StatusOk);
    auto& port = inner("next:in");
    port.resHistories = {{"a", frame(1, 1)}, {"next:in", frame(2, 2)}};
    EXPECT_EQ(access().getUpstreamResHistory(port), StatusOk);
    ASSERT_EQ(port.resHistories.size(), 1U);
    EXPECT_EQ(leaving("next:in", "next:in"), text(kOne));
}

TEST_F(HistorySeedsTest, PublicPortDoesNotAskForItsSize)
{
    loadTwice(size(800, 600) + "private='0'");
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(arriving("next:k"), text(kOne));
}

/// A group with a temporal filter: `blend` mixes the frame with the reference frame that it made of the one before.
class FeedbackTest : public HistoryTest {
protected:
    void loadFilter(const std::string& refInput, const std::string& refOutput = "private='1'")
    {
        loadGroup(in("ref_in", refInput) + out("ref_out", refOutput) + kernel("warp", 0) + kernel("blend", 1) +
                      kernel("pack", 2) + element("split", "fork"),
                  {"in>blend:0", "ref_in>warp:0", "warp:0>blend:1", "blend:0>fork:0", "fork:0>out", "fork:1>pack:0",
                   "pack:0>ref_out"},
                  {"pg:ref_out>pg:ref_in"});
    }
};

TEST_F(FeedbackTest, ReferenceFrameStartsWithTheSizeOfItsPort)
{
    loadFilter("private='1' " + size(960, 540));
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(inner("pg:ref_in").flags, Access::SameNodeEnd);
    EXPECT_EQ(arriving("pg:warp"), text(info(1920, 1080, 960, 540)));
    EXPECT_EQ(arriving("pg:blend"), text(frame(1920, 1080))); // the larger of the two
    EXPECT_EQ(arriving("pg:pack"), text(frame(1920, 1080)));
    EXPECT_TRUE(logged(kDebug, "--- Res history node blend  SKIPPED, will try again later ---"));
    EXPECT_TRUE(notLogged("did not reach all"));
}

TEST_F(FeedbackTest, ReferenceFrameWithoutSizeIsThatOfTheFirstInput)
{
    loadFilter("private='1'");
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(arriving("pg:warp"), text(frame(1920, 1080)));
    EXPECT_TRUE(loggedLike(kWarning, "Failed to get dimensions for private port ", "ref_in",
                           " using default resolution history"));
}

TEST_F(FeedbackTest, PublicReferencePortMayStateItsSize)
{
    loadFilter(size(960, 540), "");
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(arriving("pg:warp"), text(info(1920, 1080, 960, 540)));
    loadFilter("", "");
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(arriving("pg:warp"), text(frame(1920, 1080)));
    EXPECT_TRUE(notLogged("Failed to get dimensions"));
    EXPECT_TRUE(notLogged("Couldn't get"));
}

TEST_F(FeedbackTest, FirstOfSeveralReferencesCounts)
{
    Texts feedback = {"pg:half_out>pg:ref_in", "pg:out>pg:ref_in"};
    for (const Info& expected : {info(1920, 1080, 960, 540), frame(1920, 1080)}) {
        loadGroup(in("ref_in") + out("half_out") + out("side") + kernel("k", 0) +
                      sized("half", 1, "rcb='1'", size(1920, 1080), size(960, 540)) + kernel("l", 2),
                  {"in>half:0", "half:0>half_out", "in>k:0", "k:0>out", "ref_in>l:0", "l:0>side"}, feedback);
        ASSERT_EQ(init(), StatusOk);
        EXPECT_EQ(access().getUpstreamResHistory(inner("pg:ref_in")), StatusOk);
        EXPECT_EQ(leaving("pg:ref_in", "pg:ref_in"), text(expected));
        std::swap(feedback[0], feedback[1]);
    }
}

// A loop that the main walk does not enter: ref_a > half > mid > ref_b > k > side > ref_a.
TEST_F(FeedbackTest, AllReferencesAreSeededBeforeTheFirstIsFollowed)
{
    loadGroup(in("ref_a") + in("ref_b") + out("mid") + out("side") + kernel("main", 0) +
                  sized("half", 1, "rcb='1'", size(1920, 1080), size(960, 540)) + kernel("k", 2),
              {"in>main:0", "main:0>out", "ref_a>half:0", "half:0>mid", "ref_b>k:0", "k:0>side"},
              {"pg:mid>pg:ref_b", "pg:side>pg:ref_a"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(arriving("pg:half"), text(frame(1920, 1080)));
    EXPECT_EQ(arriving("pg:k"), text(frame(1920, 1080))); // its own seed, not what comes from half
    EXPECT_TRUE(notLogged("did not reach all"));
}

TEST_F(FeedbackTest, DisabledFeedbackLeavesTheFilterRunning)
{
    loadFilter("private='1' enabled='0'", "private='1' enabled='0'");
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "blend=1 pack=2 warp=2");
    EXPECT_EQ(arriving("pg:blend"), text(frame(1920, 1080)));
    EXPECT_EQ(arriving("pg:warp"), text(Info{}));
}

TEST_F(FeedbackTest, DisabledReferenceOutputAloneDoesNotFail)
{
    loadFilter("private='1'", "private='1' enabled='0'");
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(disabled(), "pg:pack pg:ref_in pg:ref_out"); // nothing comes back
    EXPECT_EQ(arriving("pg:warp"), text(Info{}));
}

TEST_F(FeedbackTest, PortFedFromOutsideTooTakesWhatComesFromThere)
{
    loadGroup(out("ref_out") + sized("half", 0, "rcb='1'", size(1920, 1080), size(960, 540)) + element("split", "fork"),
              {"in>half:0", "half:0>fork:0", "fork:0>out", "fork:1>ref_out"}, {"pg:ref_out>pg:in"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(inner("pg:in").flags, Access::SameNodeEnd);
    EXPECT_EQ(arriving("pg:half"), text(frame(1920, 1080)));
    EXPECT_TRUE(notLogged("did not reach all"));
}

TEST_F(FeedbackTest, PeerWithoutConnectionIsAnError)
{
    loadFilter("peer='pg:ref_out'");
    NUXO::NodeIterator connections(&at(*mRoot, "graph"));
    while (auto* const connection = connections.iterateByUid(NUXO_KEY_CONNECTION)) {
        if (graphtest::value(graphtest::asNode(connection), "source") != "'pg:ref_out'") continue;
        graphtest::asNode(connection).removeDescendant(NUXO_KEY_SOURCE);
    }
    EXPECT_EQ(init(), StatusMissingObject);
    EXPECT_TRUE(loggedLike(kError, "Failed to get res history for input port ", "ref_in"));
    EXPECT_TRUE(logged(kError, "Traversal of subgraphs failed on subgraph 0"));

    inner("pg:ref_in").flags |= Access::DisabledNode;
    EXPECT_EQ(access().getUpstreamResHistory(inner("pg:ref_in")), StatusOk); // a disabled port needs none
}

TEST_F(FeedbackTest, LoopThatTheMainWalkEntersTakesWhatArrives)
{
    // ref_in feeds a chain of its own, so nothing waits for it
    loadGroup(in("ref_in") + out("ref_out") + out("side") +
                  kernel("scale", 0, "rcb='1'",
                         "<input width='1920' height='1080'/>"
                         "<output id='0' width='960' height='540'/>") +
                  kernel("k", 1) + element("split", "fork"),
              {"in>scale:0", "scale:0>fork:0", "fork:0>out", "fork:1>ref_out", "ref_in>k:0", "k:0>side"},
              {"pg:ref_out>pg:ref_in", "pg:side>side_sink"}, sink("side_sink", 1));
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(arriving("pg:k"), text(info(1920, 1080, 960, 540)));
    EXPECT_TRUE(notLogged("has not been seeded"));
}

} // namespace

} // namespace historytest
