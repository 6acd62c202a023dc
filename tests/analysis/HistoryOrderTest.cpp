// SPDX-License-Identifier: Apache-2.0
// In which order subgraphs and their nodes are visited, and what ends the walk.
#include "analysis/HistoryFixture.h"

namespace historytest {

namespace {

class HistoryOrderTest : public HistoryTest {
protected:
    /// The subgraphs in the order in which their walks began.
    std::string order() const
    {
        const std::string start = "2 ---- Starting Res-history graph traversal for subgraph ";
        std::string all;
        for (const std::string& line : linesLike({start})) {
            const std::string rest = line.substr(start.size());
            EXPECT_EQ(rest.substr(rest.find(' ')), " ----");
            all += (all.empty() ? "" : " ") + rest.substr(0, rest.find(' '));
        }
        return all;
    }
};

// a feeds c directly and through b. c joins the two frames, of which b's is smaller.
TEST_F(HistoryOrderTest, SubgraphComesAfterAllThatFeedIt)
{
    const std::string scaler = sized("half", 1, "rcb='1'", size(1920, 1080), size(960, 540));
    const struct {
        int b;
        int c;
        std::string order;
    } ids[] = {{2, 3, "0 1 2 3"}, {3, 2, "0 1 3 2"}};
    Texts connections = {"buffer_src0:port_0>a:in", "a:out>c:in", "a:out>b:in", "b:out>c:late_in", "c:out>sink"};
    for (int order = 0; order < 2; ++order) {
        for (const auto& id : ids) {
            SCOPED_TRACE(std::to_string(order) + " " + std::to_string(id.b));
            const std::string b =
                group("b", id.b, in("in") + out("out") + scaler + klinks({"in>half:0", "half:0>out"}));
            const std::string c =
                through("c", id.c, in("late_in") + kernel("late", 1), {"late_in>late:0", "late:0>k_c:1"});
            const std::string groups = order == 0 ? b + c : c + b; // b may be made first or last
            load(source(1920, 1080) + through("a", 1) + groups + sink("sink", id.c), connections);
            ASSERT_EQ(init(), StatusOk);
            EXPECT_EQ(this->order(), id.order);
            EXPECT_EQ(arriving("c:late"), text(info(1920, 1080, 960, 540)));
            EXPECT_EQ(arriving("c:k_c"), text(frame(1920, 1080)));
            EXPECT_TRUE(notLogged("did not reach all"));
        }
        std::swap(connections[1], connections[2]); // and be linked first or last
    }
}

TEST_F(HistoryOrderTest, LongWayIsWaitedForWhateverTheNames)
{
    // 1 feeds 2 to 5 in a chain, and each of them feeds 5
    load(source(1920, 1080) + through("z", 1) + through("y", 4) + through("x", 3) + through("w", 2) +
             group("a", 5,
                   in("from_z") + in("from_y") + in("from_x") + in("from_w") + out("out") + kernel("k", 0) +
                       klinks({"from_z>k:0", "from_y>k:1", "from_x>k:2", "from_w>k:3", "k:0>out"})) +
             sink("sink", 5),
         {"buffer_src0:port_0>z:in", "z:out>a:from_z", "z:out>y:in", "y:out>a:from_y", "y:out>x:in", "x:out>a:from_x",
          "x:out>w:in", "w:out>a:from_w", "a:out>sink"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(order(), "0 1 4 3 2 5");
    EXPECT_EQ(arriving("a:k"), text(frame(1920, 1080)));
}

TEST_F(HistoryOrderTest, SeveralSourcesStartInOrderOfTheirIds)
{
    load(element("source", "buffer_src0", "stream_id='7'", out("port_0", size(1920, 1080))) +
             element("source", "buffer_src1", "stream_id='3'", out("port_0", size(640, 480))) + through("p", 1) +
             through("q", 2) + sink("sink", 1) + sink("other", 2),
         {"buffer_src0:port_0>p:in", "buffer_src1:port_0>q:in", "p:out>sink", "q:out>other"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(order(), "3 2 7 1");
}

TEST_F(HistoryOrderTest, SubgraphFedByTwoSourcesWaitsForBoth)
{
    load(element("source", "buffer_src0", "stream_id='3'", out("port_0", size(1920, 1080))) +
             element("source", "buffer_src1", "stream_id='7'", out("port_0", size(640, 480))) +
             through("p", 1, in("second") + kernel("l", 1), {"second>l:0", "l:0>k_p:1"}) + sink("sink", 1),
         {"buffer_src0:port_0>p:in", "buffer_src1:port_0>p:second", "p:out>sink"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(order(), "3 7 1");
    EXPECT_EQ(arriving("p:l"), text(frame(640, 480)));
    EXPECT_EQ(arriving("p:k_p"), text(frame(1920, 1080)));
}

TEST_F(HistoryOrderTest, SubgraphsThatFeedEachOtherAreNotReached)
{
    load(source(1920, 1080) + through("p", 1, in("back") + kernel("l", 1), {"back>l:0", "l:0>k_p:1"}) +
             through("q", 2, out("back") + kernel("m", 1), {"in>m:0", "m:0>back"}) + sink("sink", 2),
         {"buffer_src0:port_0>p:in", "p:out>q:in", "q:back>p:back", "q:out>sink"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(order(), "0");
    EXPECT_TRUE(logged(kError, "Traversal of meta graph did not reach all nodes 1/3"));
    EXPECT_TRUE(logged(kDebug, "Resolution History calculation succeeded !!"));
    for (const int id : {1, 2}) {
        qv_isp_zmt_program_group pg = {};
        ASSERT_EQ(mUtil->getTevData(id, pg), StatusOk);
        ASSERT_EQ(pg.kernel_count, 2U);
        for (uint32_t i = 0; i < pg.kernel_count; ++i) {
            EXPECT_EQ(pg.run_kernels[i].stream_id, 0U);
            EXPECT_EQ(pg.run_kernels[i].kernel_uuid, 0U);
            EXPECT_EQ(pg.run_kernels[i].enable, 0);
            EXPECT_EQ(text(*pg.run_kernels[i].resolution_history), text(Info{}));
        }
    }
    qv_isp_zmt_program_group pg = {};
    ASSERT_EQ(mUtil->getPgTevData(&at(*mRoot, "q"), pg), StatusOk);
    EXPECT_EQ(pg.run_kernels[0].kernel_uuid, 1000U); // a group's kernels are always named
    EXPECT_EQ(pg.run_kernels[1].kernel_uuid, 1001U);
}

// One input port, a kernel and an output port: the walk of a whole subgraph, line by line.
TEST_F(HistoryOrderTest, WalkOfASubgraphIsTold)
{
    loadGroup(sized("k", 0, "rcb='1'", size(1920, 1080), size(1280, 720)), {"in>k:0", "k:0>out"});
    ASSERT_EQ(init(), StatusOk);
    const std::string whole = text(frame(1920, 1080));
    const std::string scaled = text(info(1920, 1080, 1280, 720));
    const Texts expected = {
        "2 disableKernelsToDisabledTerminals stream id 1 has 1 output ports to check",
        "2 disableKernelsToDisabledTerminals - Processing input ports",
        "2 ---- Starting Res-history graph traversal for subgraph 1 ----",
        "2 -- Starting graph traversal from main input ports --",
        "2 --- Visiting node pg:in ---",
        "2 Getting parent history for node pg:in",
        "2 node pg:in has no parent, looking inside",
        "2 Parent history for node pg:in found: " + whole,
        "2 Resolution history: " + whole,
        "2 --- Res history Visit of node pg:in  DONE ---",
        "2 --- Visiting node k ---",
        "2 Getting parent history for node k",
        "2 Parent history for node k found: " + whole,
        "2 node k has 1 resinfo(s)",
        "2 [0]: " + scaled, // the kernel's own sizes
        "2 RCB node k history",
        "2 [0]: " + scaled, // and what leaves it, the same as nothing is cropped
        "2 --- Res history Visit of node k  DONE ---",
        "2 --- Visiting node pg:out ---",
        "2 Getting parent history for node pg:out",
        "2 Parent history for node pg:out found: " + scaled,
        "2 Resolution history: " + scaled,
        "2 --- Res history Visit of node pg:out  DONE ---",
        "2 -- Starting graph traversal from secondary input ports -- ",
        "2 ---- Res-history graph traversal for subgraph 1 done! ----",
        "2 Filling TEV run_kernels for subgraph 1",
        "2 Resolution History calculation succeeded !!",
    };
    EXPECT_EQ(linesBetween("2 disableKernelsToDisabledTerminals stream id 1", "2 Resolution History calculation"),
              expected);
    EXPECT_TRUE(logged(kDebug, "---- Starting Res-history graph traversal for subgraph 0 ----"));
}

// Two branches meet in a kernel. The first arrival has to wait.
TEST_F(HistoryOrderTest, JoinIsVisitedFromItsLastParent)
{
    loadGroup(kernel("a", 0) + sized("b", 1, "rcb='1'", size(1920, 1080), size(640, 360)) + kernel("c", 2) +
                  element("split", "fork"),
              {"in>fork:0", "fork:0>a:0", "fork:1>b:0", "a:0>c:0", "b:0>c:1", "c:0>out"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(linesLike({"2 --- "}),
              (Texts{"2 --- Visiting node buffer_src0:port_0 ---",
                     "2 --- Res history Visit of node buffer_src0:port_0  DONE ---", "2 --- Visiting node pg:in ---",
                     "2 --- Res history Visit of node pg:in  DONE ---", "2 --- Visiting node fork ---",
                     "2 --- Res history Visit of node fork  DONE ---", "2 --- Visiting node a ---",
                     "2 --- Res history Visit of node a  DONE ---", "2 --- Visiting node c ---",
                     "2 --- Res history node c  SKIPPED, will try again later ---", "2 --- Visiting node b ---",
                     "2 --- Res history Visit of node b  DONE ---", "2 --- Visiting node c ---",
                     "2 --- Res history Visit of node c  DONE ---", "2 --- Visiting node pg:out ---",
                     "2 --- Res history Visit of node pg:out  DONE ---"}));
    EXPECT_EQ(arriving("pg:c"), text(frame(1920, 1080))); // the larger one
}

TEST_F(HistoryOrderTest, MuxOfTwoLiveBranchesWaitsForBoth)
{
    loadGroup(kernel("a", 0) + sized("b", 1, "rcb='1'", size(1920, 1080), size(640, 360)) +
                  element("mux", "join", "active_input='0'"),
              {"in>b:0", "b:0>join:0", "in>a:0", "a:0>join:0", "join:0>out"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(count(kDebug, "--- Res history node join  SKIPPED, will try again later ---"), 1U);
    EXPECT_EQ(text(inner("pg:join").resHistory), text(frame(1920, 1080)));
}

TEST_F(HistoryOrderTest, ErrorOfANodeEndsTheAnalysis)
{
    loadGroup(kernel("a", 0) + sized("k", 1, "rcb='1'", size(1280, 720), size(640, 360)),
              {"in>a:0", "a:0>k:0", "k:0>out"});
    EXPECT_EQ(init(), StatusMissingObject);
    const Texts all = lines();
    const Texts expected = {
        "16 Consistency error in kernel k, res info input(1280x720) is different than res history output(1920x1080)- "
        "check "
        "your settings!",
        "16 Graph traversal interrupted at node k [-16]",
        "16 Graph traversal interrupted at node a [-16]",
        "16 Graph traversal interrupted at node pg:in [-16]",
        "16 subgraph 1 inner graph traversal stopped with error -16",
        "16 Graph traversal interrupted at node  [-16]", // subgraph 1
        "16 Graph traversal interrupted at node  [-16]", // subgraph 0
        "16 Traversal of subgraphs failed on subgraph 0",
        "16 TEV structures population failed",
    };
    ASSERT_GE(all.size(), expected.size());
    EXPECT_EQ(Texts(all.end() - static_cast<std::ptrdiff_t>(expected.size()), all.end()), expected);
}

TEST_F(HistoryOrderTest, ErrorBehindASecondaryPortEndsTheAnalysis)
{
    loadGroup(in("ref_in") + out("ref_out") + kernel("k", 0) +
                  sized("bad", 1, "rcb='1'", size(1280, 720), size(640, 360)) + kernel("blend", 2),
              {"in>blend:0", "ref_in>bad:0", "bad:0>blend:1", "blend:0>k:0", "k:0>out", "k:1>ref_out"},
              {"pg:ref_out>pg:ref_in"});
    EXPECT_EQ(init(), StatusMissingObject);
    EXPECT_TRUE(logged(kDebug, "-- Starting graph traversal from secondary input ports -- "));
    EXPECT_TRUE(logged(kError, "subgraph 1 inner graph traversal stopped with error -16"));
    EXPECT_TRUE(notLogged("for subgraph 1 done!"));
}

TEST_F(HistoryOrderTest, MarksAreClearedAfterAnError)
{
    loadGroup(kernel("a", 0) + sized("k", 1, "rcb='1'", size(1280, 720), size(640, 360)),
              {"in>a:0", "a:0>k:0", "k:0>out"});
    EXPECT_EQ(init(), StatusMissingObject);
    for (const auto& sg : access().subGraphs()) {
        EXPECT_FALSE(sg.second->visited) << sg.first;
        for (const auto& entry : sg.second->imagingNodes) EXPECT_FALSE(entry.second->visited) << entry.first;
    }
    EXPECT_TRUE(notLogged("did not reach all nodes 2/"));
}

// Each kernel crops one column: what arrives at the last one tells that all were visited in turn.
TEST_F(HistoryOrderTest, LongChainsAreWalked)
{
    constexpr int kLength = 1500;
    std::string kernels;
    Texts links = {"in>k0:0"};
    for (int i = 0; i < kLength; ++i) {
        const std::string name = "k" + std::to_string(i);
        kernels += sized(name, i, "rcb='1'", size(1920 - i, 1080) + "left='1'", size(1919 - i, 1080));
        links.push_back(name + ":0>" + (i + 1 < kLength ? "k" + std::to_string(i + 1) + ":0" : "out"));
    }
    loadGroup(kernels, links);
    mLog.setMask(0);
    ASSERT_EQ(init(), StatusOk);
    // the factor stays (1920 - i) * 1024 / (1920 - i) = 1024, so that a column is a column of the source
    EXPECT_EQ(arriving("pg:k" + std::to_string(kLength - 1)), text(info(1920, 1080, 421, 1080, {1499, 0, 0, 0})));
}

TEST_F(HistoryOrderTest, NullSubgraphIsAnError)
{
    EXPECT_EQ(access().resHistoryCalcVisitor(nullptr), StatusMissingObject);
}

TEST_F(HistoryOrderTest, SubgraphWhoseParentsAreNotVisitedAnswersLaterWithoutEffect)
{
    loadGroup(kernel("k", 0), {"in>k:0", "k:0>out"});
    ASSERT_EQ(init(), StatusOk);
    inner("pg:in").resHistories.clear();
    clearLog();
    EXPECT_EQ(access().resHistoryCalcVisitor(&subgraph(1)), StatusNotReady);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_TRUE(inner("pg:in").resHistories.empty());
    subgraph(0).visited = true;
    EXPECT_EQ(access().resHistoryCalcVisitor(&subgraph(1)), StatusOk);
}

TEST_F(HistoryOrderTest, NodesThatNothingReachesAreNamed)
{
    load(source(1920, 1080) +
             group("pg", 1,
                   in("in") + out("out") + out("side") + kernel("k", 0) + kernel("loose", 1) +
                       klinks({"in>k:0", "k:0>out", "loose:0>side"}),
                   "", "program_group") +
             sink("sink", 1) + sink("side_sink", 1),
         {"buffer_src0:port_0>pg:in", "pg:out>sink", "pg:side>side_sink"});
    ASSERT_EQ(init(NUXO::GdfVersionKVA6), StatusOk);
    EXPECT_TRUE(logged(kWarning, "Traversal of inner graph 1 did not reach all ACTIVE nodes 3/5"));
    EXPECT_EQ(linesLike({"32 Imaging Node "}),
              (Texts{"32 Imaging Node loose not reached", "32 Imaging Node pg:side not reached"}));
    EXPECT_EQ(states(), "k=1 loose=1");
    EXPECT_EQ(arriving("pg:loose"), text(Info{}));
}

} // namespace

} // namespace historytest
