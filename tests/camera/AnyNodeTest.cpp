// SPDX-License-Identifier: Apache-2.0
// Every question to every node of a graph that is full of faults: stated statuses, results of the stated kind, and the
// graph stays as it is.
#include "camera/ContextFixture.h"

#include <set>

namespace graphtest {

namespace {

using Statuses = std::set<int>;
using Nodes = std::vector<IGraphConfig*>;

constexpr uint32_t kTypes[] = {NUXO_KEY_PROGRAM_GROUP, NUXO_KEY_HW,     NUXO_KEY_SOURCE,
                               NUXO_KEY_SINK,          NUXO_KEY_KERNEL, NUXO_KEY_NA};

class AnyNodeTest : public ContextTest {
protected:
    AnyNodeTest()
    {
        load(element("source", "cam", "", output("o", "be:in") + output("p", "untyped:in") + port("q", "peer='cam'")) +
             element("hw", "be", "exec_ctx_id='0'", input("in", "cam:o") + output("out", "a:in") + port("x", "")) +
             group("a", "exec_ctx_id='1' stream_id='1'",
                   input("in", "be:out") + output("out", "b:in") + output("tap", "s") +
                       output("off", "s", "enabled='0'") + output("up", "a:name") + input("self", "a:self") +
                       output("kernel_end", "a:k") + element("kernel", "k", "pal_uuid='1' id='2' metadata='1,2,3,4'") +
                       element("kernel", "l")) +
             group("b", "tuning_mode='1'", input("in", "a:out") + output("out", "ghost") + port("y", "direction='7'")) +
             group("c", "exec_ctx_id='2'", output("out", "c:in:in") + output("o", ":") + output("p", "graph_root")) +
             element("node", "untyped", "exec_ctx_id='3'", input("in", "cam:p") + element("node", "z")) + sink("s") +
             element("sink", "t", "", port("in", "")) + element("kernel", "rootless", "id='3'"));
        node("untyped:z")->addValue(NUXO_KEY_TYPE, 34); // types are texts
        node("b")->addValue(NUXO_KEY_EXEC_CTX_ID, std::string("1"));
        node("c")->insertDescendant(new GraphConfigItem, NUXO_KEY_PORT);
        node("c")->insertDescendant(new GraphConfigStrAttribute("port"), NUXO_KEY_PORT);
        replace(*node("t"), NUXO_KEY_NAME, 1);
        collect(*mRoot);
        mText = text(*mRoot);
        mLog.setMask(0x3f);
    }

    ~AnyNodeTest() override { EXPECT_EQ(text(*mRoot), mText); }

    /// Whether all of @p nodes are of the graph and their `type` is @p type.
    ::testing::AssertionResult areOfType(const Nodes& nodes, const std::string& type) const
    {
        for (const IGraphConfig* node : nodes) {
            std::string own;
            const bool known = std::find(mNodes.begin(), mNodes.end(), node) != mNodes.end();
            if (!known || node->getValue(NUXO_KEY_TYPE, own) != StatusOk || own != type) {
                return ::testing::AssertionFailure() << "found a node of type " << own << ", not " << type;
            }
        }
        return ::testing::AssertionSuccess();
    }

    Nodes mNodes;

private:
    void collect(GraphConfigNode& node)
    {
        mNodes.push_back(&node);
        for (const NUXO::ItemEntry& item : node) {
            if (item.second->type == GraphConfigItem::NODE) collect(static_cast<GraphConfigNode&>(*item.second));
        }
    }

    std::string mText;
};

TEST_F(AnyNodeTest, CanBeAskedForContexts)
{
    for (const IGraphConfig* const graph : mNodes) {
        std::set<int> ids;
        std::map<int, int> tuning;
        EXPECT_TRUE(
            (Statuses{StatusOk, StatusMissingData, StatusNotFound}).count(GraphCameraUtil::getExecCtxIds(*graph, ids)));
        EXPECT_TRUE((Statuses{StatusOk, StatusMissingData, StatusNotFound})
                        .count(GraphCameraUtil::getExecCtxIdsTuningMap(*graph, tuning)));
        EXPECT_EQ(ids.size(), tuning.size());
        EXPECT_EQ(ids.size(), graph == mRoot.get() ? 2U : 0U); // 1 and 2
    }
}

TEST_F(AnyNodeTest, CanBeAskedForConnections)
{
    for (const IGraphConfig* const graph : mNodes) {
        std::vector<std::pair<std::string, std::string>> connections;
        Lines inputPeers;
        Lines outputPeers;
        const int status = GraphCameraUtil::getExecCtxConnectionPorts(graph, connections, inputPeers, outputPeers);
        EXPECT_EQ(status, connections.empty() ? StatusBadArgument : StatusOk);
        EXPECT_LE(inputPeers.size() + outputPeers.size(), connections.size());
    }
}

TEST_F(AnyNodeTest, CanBeAskedForSubgraphPorts)
{
    const auto expectPorts = [this](int status, const Nodes& found) {
        EXPECT_EQ(status, found.empty() ? StatusBadArgument : StatusOk);
        EXPECT_TRUE(areOfType(found, "port"));
    };
    Nodes found;
    for (const IGraphConfig* const graph : mNodes) {
        for (const uint32_t type : kTypes) {
            for (const uint32_t key : {NUXO_KEY_EXEC_CTX_ID, NUXO_KEY_NAME, NUXO_KEY_PORT}) {
                for (const int value : {-1, 0, 1, 2}) {
                    for (const int direction : {0, 1, 7}) {
                        expectPorts(GraphCameraUtil::getSubgraphPorts(key, value, direction, *graph, found, type),
                                    found);
                    }
                    expectPorts(GraphCameraUtil::getInputPorts(key, value, *graph, found, type), found);
                    expectPorts(GraphCameraUtil::getOutputPorts(key, value, *graph, found, type), found);
                }
            }
        }
    }
}

TEST_F(AnyNodeTest, CanBeAskedForTheInputPort)
{
    for (const IGraphConfig* const graph : mNodes) {
        for (const uint32_t type : kTypes) {
            for (const int value : {-1, 0, 1, 2}) {
                IGraphConfig* found = nullptr;
                const int status = GraphCameraUtil::getInputPort(NUXO_KEY_EXEC_CTX_ID, value, graph, &found, type);
                EXPECT_TRUE((Statuses{StatusOk, StatusBadArgument, StatusNotFound}).count(status)) << status;
                EXPECT_EQ(status == StatusOk, found != nullptr);
                if (found != nullptr) {
                    EXPECT_TRUE(areOfType({found}, "port"));
                }
            }
        }
    }
}

TEST_F(AnyNodeTest, CanBeAskedForProgramGroupsAndKernels)
{
    for (const IGraphConfig* const graph : mNodes) {
        for (const uint32_t key : {NUXO_KEY_EXEC_CTX_ID, NUXO_KEY_STREAM_ID, NUXO_KEY_NAME}) {
            for (const int value : {-1, 0, 1, 2}) {
                Nodes found;
                const int status = GraphCameraUtil::getProgramGroups(key, value, graph, found);
                EXPECT_EQ(status, found.empty() ? StatusMissingData : StatusOk);
                EXPECT_TRUE(areOfType(found, "program_group"));
            }
        }
        unsigned int count = 9;
        EXPECT_EQ(GraphCameraUtil::getKernelCountInPg(graph, count), StatusOk);
        EXPECT_LE(count, 2U);
    }
}

TEST_F(AnyNodeTest, CanBeAskedForKernelValues)
{
    size_t complete = 0;
    for (const IGraphConfig* const kernel : mNodes) {
        int v[6] = {};
        unsigned int metadata[4] = {};
        const int status = GraphCameraUtil::kernelGetValues(kernel, &v[0], &v[1], metadata, &v[2], &v[3], &v[4], &v[5]);
        EXPECT_TRUE((Statuses{StatusOk, StatusMissingData}).count(status)) << status;
        if (status == StatusOk) ++complete;
    }
    EXPECT_EQ(complete, 1U); // a:k
}

TEST_F(AnyNodeTest, CanBeAskedForSourcesAndSinks)
{
    for (const IGraphConfig* const graph : mNodes) {
        Nodes found;
        EXPECT_EQ(GraphCameraUtil::getSourceNode(graph, found), StatusOk);
        EXPECT_EQ(paths(found), "cam");
        found.clear();
        EXPECT_EQ(GraphCameraUtil::graphGetSinksByName("", graph, found), StatusOk);
        EXPECT_EQ(paths(found), "s t");
        std::string sensorType;
        EXPECT_EQ(GraphCameraUtil::sensorGetType(graph, sensorType), StatusNotFound);
        EXPECT_EQ(sensorType, "NONE");
    }
}

} // namespace

} // namespace graphtest
