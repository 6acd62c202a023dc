// SPDX-License-Identifier: Apache-2.0
// Kernels that hang loose at one end are switched off, in generation 7.
#include "analysis/HistoryFixture.h"

namespace historytest {

namespace {

class DisableDisconnectedTest : public HistoryTest {
protected:
    /// What switching off logs between its first and its last line.
    Texts work() const
    {
        Texts all = linesBetween("2 Starting to disable disconnected kernels!", "2 Finished to disable");
        if (all.size() < 2) return {"not run"};
        EXPECT_EQ(all.front(), "2 Starting to disable disconnected kernels!");
        EXPECT_EQ(all.back(), "2 Finished to disable disconnected kernels!");
        return Texts(all.begin() + 1, all.end() - 1);
    }

    /// A chain from port to port, and beside it a second chain of three kernels with these links.
    void loadBeside(const Texts& links)
    {
        Texts all = {"in>main:0", "main:0>out"};
        all.insert(all.end(), links.begin(), links.end());
        loadGroup(kernel("main", 0) + kernel("a", 1) + kernel("b", 2) + kernel("c", 3) + out("side"), all,
                  {"pg:side>side_sink"}, sink("side_sink", 1));
    }
};

TEST_F(DisableDisconnectedTest, ConnectedKernelsStayAsTheyAre)
{
    loadGroup(kernel("off", 0, "enabled='2'") + kernel("on", 1) + kernel("passed", 2, "enabled='0'"),
              {"in>off:0", "off:0>on:0", "on:0>passed:0", "passed:0>out"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "off=2 on=1 passed=0");
    EXPECT_EQ(work(), Texts{});
}

TEST_F(DisableDisconnectedTest, ChainThatNothingFeedsIsSwitchedOffDownToItsPort)
{
    loadBeside({"a:0>b:0", "b:0>c:0", "c:0>side"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=2 b=2 c=2 main=1");
    EXPECT_EQ(work(),
              (Texts{"2 disabling downstream kernels from disconnected node  a", "2 disable disconnected kernel -> a ",
                     "2 disable disconnected kernel -> b ", "2 disable disconnected kernel -> c "}));
}

TEST_F(DisableDisconnectedTest, ChainThatFeedsNothingIsSwitchedOffUpToItsPort)
{
    loadBeside({"in>a:0", "a:0>b:0", "b:0>c:0"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=2 b=2 c=2 main=1");
    EXPECT_EQ(work(),
              (Texts{"2 disabling upstream kernels from disconnected node  c", "2 disable disconnected kernel <- c ",
                     "2 disable disconnected kernel <- b ", "2 disable disconnected kernel <- a "}));
}

TEST_F(DisableDisconnectedTest, KernelWithoutAnyLinkIsSwitchedOffOnce)
{
    loadBeside({"in>a:0", "a:0>c:0", "c:0>side"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=1 b=2 c=1 main=1");
    EXPECT_EQ(work(),
              (Texts{"2 disabling downstream kernels from disconnected node  b", "2 disable disconnected kernel -> b ",
                     "2 disabling upstream kernels from disconnected node  b"}));
}

TEST_F(DisableDisconnectedTest, KernelThatIsOffAlreadyStopsTheWalk)
{
    loadGroup(kernel("main", 0) + kernel("a", 1) + kernel("b", 2, "enabled='2'") + kernel("c", 3),
              {"in>main:0", "main:0>out", "in>a:0", "a:0>b:0", "b:0>c:0"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=1 b=2 c=2 main=1");
    EXPECT_EQ(work(),
              (Texts{"2 disabling upstream kernels from disconnected node  c", "2 disable disconnected kernel <- c "}));
}

TEST_F(DisableDisconnectedTest, BypassedKernelIsSwitchedOffToo)
{
    loadGroup(kernel("main", 0) + kernel("a", 1, "enabled='0'"), {"in>main:0", "main:0>out", "in>a:0"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=2 main=1");
}

TEST_F(DisableDisconnectedTest, KernelThatStillFeedsAnotherBranchIsKept)
{
    loadBeside({"in>a:0", "a:0>b:0", "a:1>c:0", "c:0>side"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=1 b=2 c=1 main=1");
}

TEST_F(DisableDisconnectedTest, KernelOfTwoDeadBranchesIsKept)
{
    loadBeside({"in>a:0", "a:0>b:0", "a:1>c:0"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=1 b=2 c=2 main=1"); // it has two children, dead or not
}

TEST_F(DisableDisconnectedTest, DownstreamWalkDoesNotAskForOtherParents)
{
    loadBeside({"in>b:0", "a:0>b:1", "b:0>c:0", "c:0>side"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=2 b=2 c=2 main=1");
}

TEST_F(DisableDisconnectedTest, SplitStopsTheUpstreamWalkOnly)
{
    const std::string routing = element("split", "fork");
    loadGroup(kernel("main", 0) + kernel("a", 1) + kernel("b", 2) + routing,
              {"in>main:0", "main:0>fork:0", "fork:0>out", "fork:1>a:0", "a:0>b:0"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=2 b=2 main=1");

    loadGroup(kernel("main", 0) + kernel("a", 1) + kernel("b", 2) + routing + out("side"),
              {"in>main:0", "main:0>out", "a:0>fork:0", "fork:0>b:0", "b:0>side"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=2 b=2 main=1"); // downstream a split passes
}

TEST_F(DisableDisconnectedTest, MuxAndDemuxPassInBothDirections)
{
    const std::string routing =
        element("mux", "join", "active_input='0'") + element("demux", "part", "active_output='0'");
    const std::string kernels = kernel("main", 0) + kernel("a", 1) + kernel("b", 2);
    const Texts chain = {"in>main:0", "main:0>out"};
    Texts loose = chain;
    for (const char* link : {"a:0>join:0", "join:0>part:0", "part:0>b:0"}) loose.emplace_back(link);
    Texts downstream = loose;
    downstream.emplace_back("b:0>side");
    loadGroup(kernels + routing + out("side"), downstream);
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=2 b=2 main=1");

    Texts upstream = loose;
    upstream.emplace_back("in>a:0");
    loadGroup(kernels + routing, upstream);
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=2 b=2 main=1");
}

TEST_F(DisableDisconnectedTest, RoutingNodesAreStartsToo)
{
    loadGroup(kernel("main", 0) + kernel("a", 1) + kernel("b", 2) + element("mux", "join", "active_input='1'") +
                  element("demux", "part", "active_output='1'") + out("side"),
              // neither the link into input 0 nor the one from output 0 exists
              {"in>main:0", "main:0>out", "b:0>join:0", "join:0>a:0", "a:0>side", "in>b:0"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=2 b=2 main=1");
    EXPECT_EQ(
        work(),
        (Texts{"2 disabling upstream kernels from disconnected node  b", "2 disable disconnected kernel <- b ",
               "2 disabling downstream kernels from disconnected node  join", "2 disable disconnected kernel -> a ",
               "2 disabling downstream kernels from disconnected node  part",
               "2 disabling upstream kernels from disconnected node  part"}));
}

TEST_F(DisableDisconnectedTest, MarksAreClearedBehindTheWalks)
{
    loadBeside({"a:0>b:0", "b:0>c:0"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=2 b=2 c=2 main=1");
    for (const auto& entry : subgraph(1).imagingNodes) EXPECT_FALSE(entry.second->visited) << entry.first;
    // main and its two ports are reached in the histories' walk, so nothing active is missing
    EXPECT_TRUE(notLogged("did not reach all ACTIVE"));
    // the marks of a second run are its own
    clearLog();
    EXPECT_EQ(access().disableDisconnectedKernels(subgraph(1)), StatusOk);
    EXPECT_EQ(work(), (Texts{"2 disabling downstream kernels from disconnected node  a",
                             "2 disabling upstream kernels from disconnected node  c"}));
    for (const auto& entry : subgraph(1).imagingNodes) EXPECT_FALSE(entry.second->visited) << entry.first;
}

TEST_F(DisableDisconnectedTest, LinksBetweenGroupsDoNotCount)
{
    // `loose` of the first group feeds the second one only through the port of its own group, to which no link leads
    load(source(1920, 1080) +
             group("pg", 1, in("in") + out("out") + kernel("loose", 0) + klinks({"in>loose:0"}), "pg_id='10'") +
             group("next", 1, in("in") + out("out") + kernel("k", 0) + klinks({"in>k:0", "k:0>out"}), "pg_id='11'") +
             sink("sink", 1),
         {"buffer_src0:port_0>pg:in", "buffer_src0:port_0>next:in", "pg:out>next:in", "next:out>sink"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "k=1 loose=2");
}

TEST_F(DisableDisconnectedTest, Generation6KeepsDisconnectedKernels)
{
    load(source(1920, 1080) +
             group("pg", 1,
                   in("in") + out("out") + kernel("main", 0) + kernel("a", 1) + kernel("b", 2) +
                       klinks({"in>main:0", "main:0>out", "in>a:0"}),
                   "", "program_group") +
             sink("sink", 1),
         {"buffer_src0:port_0>pg:in", "pg:out>sink"});
    ASSERT_EQ(init(NUXO::GdfVersionKVA6), StatusOk);
    EXPECT_EQ(states(), "a=1 b=1 main=1");
    EXPECT_TRUE(notLogged("disable disconnected"));
}

class DisconnectedVisitorTest : public InnerNodeTest {
protected:
    int downstream(Access::BaseGraphNode* node) { return visit(node, true); }
    int upstream(Access::BaseGraphNode* node) { return visit(node, false); }

private:
    int visit(Access::BaseGraphNode* node, bool down)
    {
        clearLog();
        return access().kernelDisconectedVisitor(node, down);
    }
};

TEST_F(DisconnectedVisitorTest, NullIsAnError)
{
    EXPECT_EQ(downstream(nullptr), StatusMissingObject);
    EXPECT_EQ(upstream(nullptr), StatusMissingObject);
}

TEST_F(DisconnectedVisitorTest, EachKindOfNodeAnswersForItsDirection)
{
    const struct {
        Access::ImagingNodeType type;
        int downstream;
        int upstream;
    } cases[] = {
        {Access::MUX, StatusOk, StatusOk},
        {Access::DEMUX, StatusOk, StatusOk},
        {Access::SPLIT, StatusOk, StatusNoMoreMatches},
        {Access::INPUT_PORT, StatusOk, StatusNoMoreMatches},
        {Access::OUTPUT_PORT, StatusNoMoreMatches, StatusOk},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(expected.type);
        auto& n = node("n", expected.type);
        EXPECT_EQ(downstream(&n), expected.downstream);
        EXPECT_EQ(upstream(&n), expected.upstream);
        EXPECT_EQ(n.runKernel.enable, 0); // of a kernel only
        EXPECT_EQ(n.flags, 0U);
        EXPECT_TRUE(loggedExactly({}));
    }
}

TEST_F(DisconnectedVisitorTest, KernelIsSwitchedOffWithoutBarringHistories)
{
    for (const bool down : {true, false}) {
        auto& n = node("k");
        n.runKernel.enable = 1;
        EXPECT_EQ(down ? downstream(&n) : upstream(&n), StatusOk);
        EXPECT_EQ(n.runKernel.enable, 2);
        EXPECT_EQ(n.flags, 0U);
        EXPECT_TRUE(
            loggedExactly({down ? "2 disable disconnected kernel -> k " : "2 disable disconnected kernel <- k "}));
        EXPECT_EQ(down ? downstream(&n) : upstream(&n), StatusNoMoreMatches);
        EXPECT_TRUE(loggedExactly({}));
    }
}

TEST_F(DisconnectedVisitorTest, SecondChildStopsTheUpstreamWalkOnly)
{
    auto& n = node("k");
    auto& first = node("first");
    auto& second = node("second");
    join(n, first);
    EXPECT_EQ(upstream(&n), StatusOk); // one child
    n.runKernel.enable = 1;
    join(n, second, "1");
    EXPECT_EQ(upstream(&n), StatusNoMoreMatches);
    EXPECT_EQ(n.runKernel.enable, 1);
    EXPECT_EQ(downstream(&n), StatusOk);
    EXPECT_EQ(n.runKernel.enable, 2);
}

} // namespace

} // namespace historytest
