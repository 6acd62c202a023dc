// SPDX-License-Identifier: Apache-2.0
// What a log reader sees of the records, and what clients see of an inner graph.
#include "analysis/HistoryFixture.h"

namespace historytest {

namespace {

const std::string kDouble(55, '=');
const std::string kDash(55, '-');

/// Two kernels of stream 1: `crop`, which cuts 10 columns off each side, and `b`, bypassed and without sizes.
class KernelDataDumpsTest : public HistoryTest {
protected:
    KernelDataDumpsTest()
    {
        loadGroup(sized("crop", 0, "rcb='1' metadata='1,2,3,4'", size(1920, 1080) + "left='10' right='10' bpp='12'",
                        size(1900, 1080) + "bpp='10'") +
                      kernel("b", 1, "enabled='0'"),
                  {"in>crop:0", "crop:0>b:0", "b:0>out"});
    }

    template <class Action> Texts messagesOf(Action&& action)
    {
        clearLog();
        action();
        Texts all = lines();
        // the frame around records has no class of its own
        for (std::string& line : all) line.erase(0, line.find(' ') + 1);
        return all;
    }

    Texts dumpAll()
    {
        return messagesOf([this] { mUtil->dumpTevStructs(); });
    }
    Texts dump(int id)
    {
        return messagesOf([this, id] { mUtil->dumpKernels(id); });
    }

    static inline const Texts kInFlowOrder = {
        kDouble, "FOUND  subgraph id 1 [stream_id] dumping 2 kernels:", kDouble,
        //
        kDash, "[0]crop ", "kernel_uuid: 1000 [ENABLED]", "stream_id 1", "metadata: (1 2 3 4)",
        "res_info: (iw: 1920 ih: 1080 (l: 10, t: 0, r: 10, b: 0), ow: 1900, oh: 1080 (l: 0, t: 0, r: 0, b: 0))",
        "res_history: (iw: 1920 ih: 1080 (l: 0, t: 0, r: 0, b: 0), ow: 1920, oh: 1080 (l: 0, t: 0, r: 0, b: 0))",
        "bpp_info in:12 out:10",
        //
        kDash, "[0]b ", "kernel_uuid: 1001 [BYPASSED]", "stream_id 1", "metadata: (0 0 0 0)", "res info: NULL",
        "res_history: (iw: 1920 ih: 1080 (l: 10, t: 0, r: 10, b: 0), ow: 1900, oh: 1080 (l: 0, t: 0, r: 0, b: 0))",
        "bpp_info in:0 out:0"};
};

TEST_F(KernelDataDumpsTest, AllRecordsInOrderOfSubgraphsAndNames)
{
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(
        dumpAll(),
        (Texts{kDouble, "Dumping run-kernels for 2 subgraphs of type stream_id", kDash,
               //
               "kernel_uuid: 1001 [BYPASS (0)]", "stream_id 1", "metadata: (0 0 0 0)", "res info: NULL",
               "resolution_history:(iw: 1920 ih: 1080 (l: 10, t: 0, r: 10, b: 0),ow: 1900, oh: 1080 (l: 0, t: 0, r: "
               "0, b: 0)",
               "bpp_info in:0 out:0", kDash,
               //
               "kernel_uuid: 1000 [ENABLED (1)]", "stream_id 1", "metadata: (1 2 3 4)",
               "res_info[0]: (iw: 1920 ih: 1080 (l: 10, t: 0, r: 10, b: 0),ow: 1900, oh: 1080 (l: 0, t: 0, r: 0, b: 0)",
               "resolution_history:(iw: 1920 ih: 1080 (l: 0, t: 0, r: 0, b: 0),ow: 1920, oh: 1080 (l: 0, t: 0, r: 0, "
               "b: 0)",
               "bpp_info in:12 out:10", kDouble}));
    EXPECT_TRUE(logged(kError, "kernel_uuid: 1000 [ENABLED (1)]"));
}

TEST_F(KernelDataDumpsTest, RecordsOfASubgraphInOrderOfTheData)
{
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(dump(1), kInFlowOrder);
    EXPECT_TRUE(logged(kError, "[0]crop "));
    EXPECT_EQ(dump(1), kInFlowOrder); // and again
    EXPECT_EQ(dump(0), (Texts{kDouble, "FOUND  subgraph id 0 [stream_id] dumping 0 kernels:", kDouble}));
}

TEST_F(KernelDataDumpsTest, KernelsThatNothingFeedsAreShownToo)
{
    loadGroup(kernel("main", 0) + kernel("loose", 1, "enabled='2'") + kernel("odd", 2, "enabled='7'"),
              {"in>main:0", "main:0>odd:0", "odd:0>out"});
    ASSERT_EQ(init(), StatusOk);
    dump(1);
    const Texts uuids = linesLike({"16 kernel_uuid: "});
    EXPECT_EQ(uuids, (Texts{"16 kernel_uuid: 1000 [ENABLED]", "16 kernel_uuid: 1002 INVALID!!",
                            "16 kernel_uuid: 1001 [DISABLED]"}));
}

TEST_F(KernelDataDumpsTest, UnknownSubgraphIsSaid)
{
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(dump(5), Texts{"subgraph id 5 not FOUND"});
    EXPECT_EQ(dump(-1), Texts{"subgraph id -1 not FOUND"});
}

TEST_F(KernelDataDumpsTest, NothingIsThereBeforeInit)
{
    EXPECT_EQ(dumpAll(), (Texts{kDouble, "Dumping run-kernels for 0 subgraphs of type stream_id", kDash, kDouble}));
    EXPECT_EQ(dump(1), Texts{"subgraph id 1 not FOUND"});
}

TEST_F(KernelDataDumpsTest, KernelsWithoutRecordsEndTheDump)
{
    ASSERT_EQ(init(), StatusOk);
    access().deleteTevStructs();
    EXPECT_EQ(dump(1), (Texts{kDouble, "FOUND  subgraph id 1 [stream_id] dumping 2 kernels:", kDouble, kDash,
                              "[0]crop ", "kernel_uuid: 1000 [ENABLED]", "INVALID output!! Error",
                              "Graph traversal interrupted at node crop [-16]",
                              "Graph traversal interrupted at node pg:in [-16]", "Inner graph traversal failed -16"}));
    EXPECT_TRUE(logged(kError, "INVALID output!! Error"));
    EXPECT_TRUE(logged(kError, "Graph traversal interrupted at node crop [-16]"));
    EXPECT_EQ(dump(1).back(), "Inner graph traversal failed -16"); // the marks of the failed dump are gone
    EXPECT_EQ(dumpAll(), (Texts{kDouble, "Dumping run-kernels for 2 subgraphs of type stream_id", kDash, kDouble}));
}

TEST_F(KernelDataDumpsTest, DumpsChangeNothing)
{
    ASSERT_EQ(init(), StatusOk);
    const std::string before = arriving("pg:b");
    dumpAll();
    dump(1);
    EXPECT_EQ(arriving("pg:b"), before);
    for (const auto& entry : subgraph(1).imagingNodes) EXPECT_FALSE(entry.second->visited) << entry.first;
}

class InnerGraphViewTest : public HistoryTest {
protected:
    using Node = NUXO::InnerGraphNode;

    std::vector<Node> view(int id)
    {
        std::vector<Node> nodes(3); // what was there before
        EXPECT_EQ(mUtil->getInnerGraph(id, nodes), StatusOk);
        return nodes;
    }

    static std::string names(const std::vector<Node>& nodes)
    {
        std::string all;
        for (const Node& node : nodes) all += (all.empty() ? "" : " ") + node.name + (node.disabled ? "!" : "");
        return all;
    }

    static const Node& named(const std::vector<Node>& nodes, const std::string& name)
    {
        for (const Node& node : nodes) {
            if (node.name == name) return node;
        }
        throw std::runtime_error("no node " + name);
    }
};

TEST_F(InnerGraphViewTest, NodesLinksAndHistoriesAreShown)
{
    loadGroup(out("side") +
                  kernel("two", 0, "rcb='1'",
                         "<input width='1920' height='1080'/><output id='0' width='1280' height='720'/>"
                         "<output id='1' width='640' height='360'/>") +
                  element("split", "fork") + element("mux", "join", "active_input='0'") +
                  element("demux", "part", "active_output='0'"),
              {"in>fork:0", "fork:0>join:0", "join:0>part:0", "part:0>two:0", "two:0>out", "two:1>side"},
              {"pg:side>side_sink"}, sink("side_sink", 1));
    ASSERT_EQ(init(), StatusOk);
    const auto nodes = view(1);
    EXPECT_EQ(names(nodes), "pg:fork pg:in pg:join pg:out pg:part pg:side pg:two");
    using Kind = Node::Kind;
    const std::vector<Kind> kinds = {Kind::Split, Kind::InputPort,  Kind::Mux,   Kind::OutputPort,
                                     Kind::Demux, Kind::OutputPort, Kind::Kernel};
    for (size_t i = 0; i < kinds.size(); ++i) {
        EXPECT_EQ(nodes[i].kind, kinds[i]) << nodes[i].name;
        EXPECT_EQ(nodes[i].node, &at(*mRoot, nodes[i].name));
        EXPECT_EQ(nodes[i].record != nullptr, kinds[i] == Kind::Kernel);
    }
    const Node& two = named(nodes, "pg:two");
    EXPECT_EQ(two.record->kernel_uuid, 1000U);
    ASSERT_EQ(two.links.size(), 2U);
    EXPECT_EQ(nodes[two.links[0].sink].name, "pg:out");
    EXPECT_EQ(two.links[0].output, "0");
    EXPECT_TRUE(two.links[0].hasHistory);
    EXPECT_EQ(text(two.links[0].history), text(info(1920, 1080, 1280, 720)));
    EXPECT_EQ(nodes[two.links[1].sink].name, "pg:side");
    EXPECT_EQ(text(two.links[1].history), text(info(1920, 1080, 640, 360)));
    const Node& port = named(nodes, "pg:in");
    ASSERT_EQ(port.links.size(), 1U);
    EXPECT_EQ(port.links[0].output, ""); // kernel links do not name outputs of ports
    EXPECT_EQ(text(port.links[0].history), text(frame(1920, 1080)));
}

TEST_F(InnerGraphViewTest, WhatIsOffIsMarkedAndHasNoHistory)
{
    loadGroup(out("off", "enabled='0'") + kernel("a", 0) + kernel("b", 1) + kernel("loose", 2) +
                  kernel("c", 3, "enabled='0'") + element("split", "fork"),
              {"in>fork:0", "fork:0>a:0", "fork:1>b:0", "a:0>c:0", "c:0>out", "b:0>off"}, {"pg:off>off_sink"},
              sink("off_sink", 1));
    ASSERT_EQ(init(), StatusOk);
    const auto nodes = view(1);
    EXPECT_EQ(names(nodes), "pg:a pg:b! pg:c pg:fork pg:in pg:loose! pg:off! pg:out"); // bypassed is not off
    EXPECT_FALSE(named(nodes, "pg:b").links[0].hasHistory);
    EXPECT_TRUE(named(nodes, "pg:c").links[0].hasHistory);
}

TEST_F(InnerGraphViewTest, FailedInitShowsHowFarItCame)
{
    loadGroup(kernel("a", 0) + sized("bad", 1, "rcb='1'", size(1280, 720), size(640, 360)) + kernel("c", 2),
              {"in>a:0", "a:0>bad:0", "bad:0>c:0", "c:0>out"});
    EXPECT_EQ(init(), StatusMissingObject);
    const auto nodes = view(1);
    EXPECT_EQ(text(named(nodes, "pg:a").links.at(0).history), text(frame(1920, 1080)));
    EXPECT_FALSE(named(nodes, "pg:c").links.at(0).hasHistory);
}

TEST_F(InnerGraphViewTest, UnknownSubgraphIsAnError)
{
    std::vector<Node> nodes(2);
    EXPECT_EQ(mUtil->getInnerGraph(0, nodes), StatusBadState);
    EXPECT_TRUE(nodes.empty());
    loadGroup(kernel("k", 0), {"in>k:0", "k:0>out"});
    ASSERT_EQ(init(), StatusOk);
    nodes.resize(2);
    EXPECT_EQ(mUtil->getInnerGraph(9, nodes), StatusBadState);
    EXPECT_TRUE(nodes.empty());
}

} // namespace

} // namespace historytest
