// SPDX-License-Identifier: Apache-2.0
// Kernels that work for a disabled port alone are switched off.
#include "analysis/HistoryFixture.h"

namespace historytest {

namespace {

class DisableTerminalsTest : public HistoryTest {
protected:
    /// What switching off logged for the subgraph of stream 1.
    Texts work() const
    {
        const Texts all =
            linesBetween("2 disableKernelsToDisabledTerminals stream id 1 ", "2 ---- Starting Res-history");
        return all.empty() ? Texts{"not run"} : Texts(all.begin(), all.end() - 1);
    }

    /// A source and the group `pg` with this body and links; each port in @p outputs has a sink.
    void loadOutputs(const std::string& body, const Texts& links, const Texts& outputs)
    {
        std::string nodes = source(1920, 1080) + group("pg", 1, in("in") + body + klinks(links), "pg_id='10'");
        Texts connections = {"buffer_src0:port_0>pg:in"};
        for (const std::string& port : outputs) {
            nodes += sink("sink_" + port, 1);
            connections.push_back("pg:" + port + ">sink_" + port);
        }
        load(nodes, connections);
    }
};

const std::string kOff = "enabled='0'";

TEST_F(DisableTerminalsTest, NothingIsSwitchedOffWithoutDisabledPorts)
{
    loadOutputs(out("one") + out("two", "enabled='1'") + kernel("a", 0) + kernel("b", 1),
                {"in>a:0", "a:0>one", "in>b:0", "b:0>two"}, {"one", "two"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=1 b=1");
    EXPECT_EQ(disabled(), "");
    EXPECT_EQ(work(), (Texts{"2 disableKernelsToDisabledTerminals stream id 1 has 2 output ports to check",
                             "2 disableKernelsToDisabledTerminals - Processing input ports"}));
}

TEST_F(DisableTerminalsTest, ChainToADisabledPortIsSwitchedOffUpToTheBranch)
{
    loadOutputs(out("one") + out("two", kOff) + kernel("a", 0) + kernel("b", 1) + kernel("c", 2) +
                    element("split", "fork"),
                {"in>fork:0", "fork:0>a:0", "a:0>one", "fork:1>b:0", "b:0>c:0", "c:0>two"}, {"one", "two"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=1 b=2 c=2");
    EXPECT_EQ(disabled(), "pg:b pg:c pg:two");
    EXPECT_EQ(work(), (Texts{"2 disableKernelsToDisabledTerminals stream id 1 has 2 output ports to check",
                             "2 disabling kernels to port pg:two ", "2 kernel c disabled", "2 kernel b disabled",
                             "2 disableKernelsToDisabledTerminals - Processing input ports"}));
    EXPECT_EQ(arriving("pg:a"), text(frame(1920, 1080)));
    EXPECT_EQ(arriving("pg:b"), text(Info{})); // nothing gets there
    EXPECT_TRUE(notLogged("did not reach all ACTIVE"));
}

TEST_F(DisableTerminalsTest, GroupOfOneDisabledPortIsOffAsAWhole)
{
    loadOutputs(out("one", kOff) + kernel("a", 0, "enabled='0'"), {"in>a:0", "a:0>one"}, {"one"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=2"); // bypassed before
    EXPECT_EQ(disabled(), "pg:a pg:in pg:one");
    EXPECT_TRUE(logged(kDebug, "--- Visiting node pg:in ---"));
    EXPECT_TRUE(logged(kDebug, "--- Res history Visit of node pg:in  SKIPPED node disabled ---"));
    EXPECT_TRUE(notLogged("did not reach all ACTIVE"));
}

TEST_F(DisableTerminalsTest, SplitGoesWithItsLastBranch)
{
    const std::string body = out("one", kOff) + out("two", kOff) + kernel("a", 0) + kernel("b", 1) +
                             kernel("before", 2) + element("split", "fork");
    loadOutputs(body, {"in>before:0", "before:0>fork:0", "fork:0>a:0", "a:0>one", "fork:1>b:0", "b:0>two"},
                {"one", "two"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=2 b=2 before=2");
    EXPECT_EQ(disabled(), "pg:a pg:b pg:before pg:fork pg:in pg:one pg:two");
    EXPECT_EQ(linesLike({"2 disabling kernels", "2 kernel "}),
              (Texts{"2 disabling kernels to port pg:one ", "2 kernel a disabled",
                     "2 disabling kernels to port pg:two ", "2 kernel b disabled", "2 kernel before disabled"}));
}

TEST_F(DisableTerminalsTest, KernelWithTwoChildrenIsKept)
{
    loadOutputs(out("one", kOff) + out("two") + kernel("k", 0), {"in>k:0", "k:0>one", "k:1>two"}, {"one", "two"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "k=1");
    EXPECT_EQ(disabled(), "pg:one");
    EXPECT_EQ(arriving("pg:k"), text(frame(1920, 1080)));
}

TEST_F(DisableTerminalsTest, KernelWithTwoChildrenIsKeptEvenWhenBothPortsAreOff)
{
    loadOutputs(out("one", kOff) + out("two", kOff) + kernel("k", 0), {"in>k:0", "k:0>one", "k:1>two"}, {"one", "two"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "k=1");
    EXPECT_EQ(disabled(), "pg:one pg:two");
}

TEST_F(DisableTerminalsTest, SplitCountsAKeptChildThatWasVisited)
{
    // the walk from `one` visits k and keeps it, the walk from `three` then finds all children of the split visited
    loadOutputs(out("one", kOff) + out("two") + out("three", kOff) + kernel("k", 0) + kernel("b", 1) +
                    element("split", "fork"),
                {"in>fork:0", "fork:0>k:0", "k:0>one", "k:1>two", "fork:1>b:0", "b:0>three"}, {"one", "two", "three"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "b=2 k=1");
    EXPECT_EQ(disabled(), "pg:b pg:fork pg:in pg:one pg:three");
    EXPECT_EQ(arriving("pg:k"), text(Info{}));
}

TEST_F(DisableTerminalsTest, MuxIsPassedWithoutALookAtItsOtherSide)
{
    loadOutputs(out("one", kOff) + kernel("a", 0) + kernel("b", 1) + element("mux", "join", "active_input='0'"),
                {"in>a:0", "a:0>join:0", "in>b:0", "b:0>join:1", "join:0>one"}, {"one"});
    ASSERT_EQ(init(), StatusOk);
    // b feeds the inactive input, so it was loose and is off without being barred
    EXPECT_EQ(states(), "a=2 b=2");
    EXPECT_EQ(disabled(), "pg:a pg:in pg:join pg:one");
}

TEST_F(DisableTerminalsTest, DisabledInputSwitchesOffWhatItAloneFeeds)
{
    loadOutputs(in("second", kOff) + out("one") + out("two") + kernel("a", 0) + kernel("b", 1) + kernel("both", 2) +
                    kernel("after", 3),
                {"in>a:0", "a:0>both:0", "second>b:0", "b:0>both:1", "both:0>after:0", "after:0>one"}, {"one", "two"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=1 after=1 b=2 both=1");
    EXPECT_EQ(disabled(), "pg:b pg:second");
    EXPECT_EQ(work(), (Texts{"2 disableKernelsToDisabledTerminals stream id 1 has 2 output ports to check",
                             "2 disableKernelsToDisabledTerminals - Processing input ports",
                             "2 disabling kernels from port pg:second ", "2 kernel b disabled"}));
    EXPECT_EQ(arriving("pg:after"), text(frame(1920, 1080)));
}

TEST_F(DisableTerminalsTest, DisabledInputBarsPortsBehindIt)
{
    // the output port of the first group feeds the second group, the last output port feeds no inner node
    load(source(1920, 1080) +
             group("pg", 1, in("in", kOff) + out("out") + kernel("a", 0) + klinks({"in>a:0", "a:0>out"}), "pg_id='1'") +
             group("qg", 1, in("in") + out("out") + kernel("b", 0) + klinks({"in>b:0", "b:0>out"}), "pg_id='2'") +
             sink("sink", 1),
         {"buffer_src0:port_0>pg:in", "pg:out>qg:in", "qg:out>sink"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=2 b=2");
    EXPECT_EQ(disabled(), "pg:a pg:in pg:out qg:b qg:in qg:out");
}

TEST_F(DisableTerminalsTest, SeveralInputPhasesShareTheirMarks)
{
    loadOutputs(
        in("second", kOff) + in("third", kOff) + out("one") + out("two") + kernel("a", 0) + kernel("b", 1) +
            kernel("c", 2) + element("mux", "join", "active_input='0'") + kernel("after", 3),
        {"in>a:0", "a:0>one", "second>b:0", "third>c:0", "b:0>join:0", "c:0>join:0", "join:0>after:0", "after:0>two"},
        {"one", "two"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(states(), "a=1 after=2 b=2 c=2");
    EXPECT_EQ(linesLike({"2 kernel "}),
              (Texts{"2 kernel b disabled", "2 kernel after disabled", "2 kernel c disabled"}));
    for (const auto& entry : subgraph(1).imagingNodes) EXPECT_FALSE(entry.second->visited) << entry.first;
}

TEST_F(DisableTerminalsTest, PortsOfASourceAreLookedAtToo)
{
    load(element("source", "buffer_src0", "stream_id='0'", out("port_0", size(640, 480) + kOff)) +
             group("pg", 1, in("in") + out("out") + kernel("k", 0) + klinks({"in>k:0", "k:0>out"})) + sink("sink", 1),
         {"buffer_src0:port_0>pg:in", "pg:out>sink"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_TRUE(logged(kDebug, "disableKernelsToDisabledTerminals stream id -1 has 1 output ports to check"));
    EXPECT_TRUE(logged(kDebug, "disabling kernels to port buffer_src0:port_0 "));
    EXPECT_EQ(disabled().rfind("buffer_src0:port_0", 0), 0U);
}

class DisableVisitorTest : public InnerNodeTest {
protected:
    /// Status of a visit, and whether the node is barred afterwards.
    std::string visit(Access::ImagingNode& node, bool downstream)
    {
        clearLog();
        const int status = access().kernelDisableVisitor(&node, downstream);
        return std::to_string(status) + ((node.flags & Access::DisabledNode) != 0 ? " barred" : " open");
    }
    std::string down(Access::ImagingNode& node) { return visit(node, true); }
    std::string up(Access::ImagingNode& node) { return visit(node, false); }
};

TEST_F(DisableVisitorTest, NullIsAnError)
{
    EXPECT_EQ(access().kernelDisableVisitor(nullptr, true), StatusMissingObject);
    EXPECT_EQ(access().kernelDisableVisitor(nullptr, false), StatusMissingObject);
}

TEST_F(DisableVisitorTest, KernelIsSwitchedOffAndBarred)
{
    for (const bool downstream : {true, false}) {
        auto& k = node("k");
        k.flags = Access::RcbKernel;
        k.runKernel.enable = 1;
        EXPECT_EQ(visit(k, downstream), "0 barred");
        EXPECT_EQ(k.runKernel.enable, 2);
        EXPECT_EQ(k.flags, Access::RcbKernel | Access::DisabledNode);
        EXPECT_TRUE(loggedExactly({"2 kernel k disabled"}));
    }
}

TEST_F(DisableVisitorTest, KernelWithSeveralNeighboursBehindItIsLeft)
{
    auto& k = node("k");
    k.runKernel.enable = 1;
    for (const char* name : {"p", "q"}) join(node(name), k);
    EXPECT_EQ(down(k), "-256 open");
    EXPECT_EQ(k.runKernel.enable, 1);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(up(k), "0 barred"); // two parents do not matter upstream
    EXPECT_EQ(k.runKernel.enable, 2);

    auto& l = node("l");
    l.runKernel.enable = 1;
    for (const char* name : {"p", "q"}) join(l, node(name));
    EXPECT_EQ(up(l), "-256 open");
    EXPECT_EQ(l.runKernel.enable, 1);
    EXPECT_EQ(down(l), "0 barred");
}

TEST_F(DisableVisitorTest, BarOfARefusedNodeIsTakenAway)
{
    auto& k = node("k");
    k.flags = Access::DisabledNode | Access::SameNodeEnd;
    for (const char* name : {"p", "q"}) join(k, node(name));
    EXPECT_EQ(up(k), "-256 open");
    EXPECT_EQ(k.flags, Access::SameNodeEnd);
}

TEST_F(DisableVisitorTest, OutputPortEndsTheDownstreamWalkWhereNothingFollows)
{
    auto& port = node("pg:out", Access::OUTPUT_PORT);
    EXPECT_EQ(down(port), "-256 barred");
    join(port, node("next:in", Access::INPUT_PORT), "next:in", "pg:out");
    EXPECT_EQ(down(port), "0 barred");
    EXPECT_EQ(up(port), "0 barred");
}

TEST_F(DisableVisitorTest, SplitWaitsForAllItsChildren)
{
    auto& fork = node("fork", Access::SPLIT);
    auto& a = node("a");
    auto& b = node("b");
    join(fork, a, "0");
    join(fork, b, "1");
    EXPECT_EQ(up(fork), "-1024 open");
    a.visited = true;
    EXPECT_EQ(up(fork), "-1024 open");
    b.visited = true;
    EXPECT_EQ(up(fork), "0 barred");
    EXPECT_TRUE(loggedExactly({})); // a kernel only is reported
    a.visited = b.visited = false;
    fork.flags = 0;
    EXPECT_EQ(down(fork), "0 barred");
}

TEST_F(DisableVisitorTest, OtherNodesPassBarred)
{
    for (const auto type : {Access::MUX, Access::DEMUX, Access::INPUT_PORT}) {
        for (const bool downstream : {true, false}) {
            auto& n = node("n", type);
            for (const char* name : {"p", "q"}) {
                join(node(name), n);
                join(n, node(name));
            }
            EXPECT_EQ(visit(n, downstream), "0 barred") << type;
            EXPECT_EQ(n.runKernel.enable, 0);
        }
    }
}

} // namespace

} // namespace historytest
