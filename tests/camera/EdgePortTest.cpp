// SPDX-License-Identifier: Apache-2.0
#include "camera/PortFixture.h"

namespace graphtest {

namespace {

class EdgePortTest : public PortTest {
protected:
    /// The port `pg:out`, of a node with the attributes @p group, and its peer `next:in`, whose node is an @p element
    /// with the attributes @p next.
    void loadEdge(const std::string& direction, const std::string& group, const std::string& element,
                  const std::string& next)
    {
        std::string opened = element;
        opened += " name=\"next\" ";
        opened += next;
        load(portOf("pg", "out", "direction=\"" + direction + "\" peer=\"next:in\"", group) + "<" + opened +
             "><port name=\"in\"/></" + element + ">");
    }

    bool isEdge() const { return GraphCameraUtil::isEdgePort(out()); }
};

struct Edge {
    const char* direction;
    const char* group;   ///< attributes of the port's node
    const char* element; ///< kind of the peer's node
    const char* next;    ///< attributes of the peer's node
    bool edge;
};

constexpr const char* kGroup = "program_group";
constexpr const char* kContext1 = "exec_ctx_id=\"1\"";
constexpr const char* kContext2 = "exec_ctx_id=\"2\"";

TEST_F(EdgePortTest, ContextsDirectionsAndKindsDecide)
{
    const Edge edges[] = {
        // Within a context and out of it.
        {"1", kContext1, kGroup, kContext1, false},
        {"1", kContext1, kGroup, kContext2, true},
        {"0", kContext1, kGroup, kContext1, false},
        {"0", kContext1, kGroup, kContext2, true},
        // Hardware and sources deliver from outside even in the same context, but outputs to them stay inside.
        {"0", kContext1, "hw", kContext1, true},
        {"0", kContext1, "source", kContext1, true},
        {"0", kContext1, "split", kContext1, false},
        {"0", kContext1, "hw", kContext2, true},
        {"1", kContext1, "hw", kContext1, false},
        {"1", kContext1, "source", kContext1, false},
        {"1", kContext1, "hw", kContext2, true},
        // A node that does not say its kind is none of these.
        {"0", kContext1, "node", kContext1, false},
        {"0", kContext1, "node", "exec_ctx_id=\"1\" type=\"HW\"", false},
        {"0", kContext1, "node", "exec_ctx_id=\"1\" type=\"hw\"", true},
        // Any direction but 0 is an output.
        {"2", kContext1, "hw", kContext1, false},
        {"-1", kContext1, "hw", kContext1, false},
        {"2", kContext1, kGroup, kContext2, true},
        {kSmallest, kContext1, "source", kContext1, false},
    };
    for (const Edge& edge : edges) {
        loadEdge(edge.direction, edge.group, edge.element, edge.next);
        EXPECT_EQ(isEdge(), edge.edge) << edge.direction << ' ' << edge.element << ' ' << edge.next;
        EXPECT_TRUE(loggedExactly({})) << edge.direction << ' ' << edge.element << ' ' << edge.next;
    }
}

TEST_F(EdgePortTest, StreamsStandInForContexts)
{
    const Edge edges[] = {
        {"1", "stream_id=\"4\"", kGroup, "stream_id=\"4\"", false},
        {"1", "stream_id=\"4\"", kGroup, "stream_id=\"5\"", true},
        {"0", "stream_id=\"4\"", "source", "stream_id=\"4\"", true},
        // Each side takes what it has.
        {"1", "exec_ctx_id=\"1\"", kGroup, "stream_id=\"1\"", false},
        {"1", "stream_id=\"1\"", kGroup, "exec_ctx_id=\"1\"", false},
        {"1", "exec_ctx_id=\"1\"", kGroup, "stream_id=\"2\"", true},
        // Where there are both, the context counts.
        {"1", "exec_ctx_id=\"1\" stream_id=\"8\"", kGroup, "exec_ctx_id=\"1\" stream_id=\"9\"", false},
        {"1", "exec_ctx_id=\"1\" stream_id=\"8\"", kGroup, "exec_ctx_id=\"2\" stream_id=\"8\"", true},
        // A negative context of the port's own node counts as none, one of the peer's node as it is.
        {"1", "exec_ctx_id=\"-1\" stream_id=\"4\"", kGroup, "stream_id=\"4\"", false},
        {"1", "exec_ctx_id=\"-3\" stream_id=\"4\"", kGroup, "exec_ctx_id=\"4\"", false},
        {"1", "stream_id=\"4\"", kGroup, "exec_ctx_id=\"-1\" stream_id=\"4\"", true},
        {"0", "stream_id=\"4\"", kGroup, "exec_ctx_id=\"-4\" stream_id=\"4\"", true},
        {"0", "stream_id=\"4\"", kGroup, "stream_id=\"-4\"", true},
    };
    for (const Edge& edge : edges) {
        loadEdge(edge.direction, edge.group, edge.element, edge.next);
        EXPECT_EQ(isEdge(), edge.edge) << edge.group << " -> " << edge.next;
        EXPECT_TRUE(loggedExactly({})) << edge.group << " -> " << edge.next;
    }
}

TEST_F(EdgePortTest, AllNumbersFromZeroOnAreContexts)
{
    const std::string largest = std::string("exec_ctx_id=\"") + kLargest + "\"";
    const std::string smallest = std::string("exec_ctx_id=\"") + kSmallest + "\"";
    loadEdge("1", "exec_ctx_id=\"0\"", kGroup, "exec_ctx_id=\"0\"");
    EXPECT_FALSE(isEdge());
    loadEdge("1", "exec_ctx_id=\"0\"", kGroup, kContext1);
    EXPECT_TRUE(isEdge());
    loadEdge("1", largest, kGroup, largest);
    EXPECT_FALSE(isEdge());
    loadEdge("1", largest, kGroup, smallest);
    EXPECT_TRUE(isEdge());
}

TEST_F(EdgePortTest, ConnectionToASinkAlwaysLeaves)
{
    for (const char* direction : {"1", "0", "2"}) {
        for (const char* sink : {"", kContext1, kContext2, "exec_ctx_id=\"-1\"", "stream_id=\"1\""}) {
            load(portOf("pg", "out", std::string("peer=\"video\" direction=\"") + direction + "\"", kContext1) +
                 "<sink name=\"video\" " + sink + "/>");
            EXPECT_TRUE(isEdge()) << direction << ' ' << sink;
            EXPECT_TRUE(loggedExactly({})) << direction << ' ' << sink;
        }
    }
}

TEST_F(EdgePortTest, SinkAsksItselfForItsContext)
{
    const std::string video = "<sink name=\"video\" direction=\"0\" peer=\"pg:out\" ";
    for (const auto& [sink, edge] : std::map<std::string, bool>{
             {kContext1, false}, {kContext2, true}, {"stream_id=\"1\"", false}, {"stream_id=\"2\"", true}}) {
        load(portOf("pg", "out", "", kContext1) + video + sink + "/>");
        EXPECT_EQ(GraphCameraUtil::isEdgePort(node("video")), edge) << sink;
        EXPECT_TRUE(loggedExactly({})) << sink;
    }
    load(portOf("pg", "out", "", kContext1) + video + "/>");
    EXPECT_FALSE(GraphCameraUtil::isEdgePort(node("video")));
    EXPECT_TRUE(loggedExactly({"16 Failed to get stream_id for port sink[video]"}));
}

TEST_F(EdgePortTest, PortThatIsConnectedToItselfStaysInside)
{
    for (const char* direction : {"0", "1"}) {
        loadPort(std::string("peer=\"pg:out\" direction=\"") + direction + "\"", kContext1);
        EXPECT_FALSE(isEdge());
        EXPECT_TRUE(loggedExactly({}));
    }
    load(portOf("pg", "out", "direction=\"1\" peer=\"next:in\"", kContext1) +
         portOf("next", "in", "direction=\"0\" peer=\"pg:out\"", kContext2));
    EXPECT_TRUE(isEdge());
    EXPECT_TRUE(GraphCameraUtil::isEdgePort(node("next:in")));
}

TEST_F(EdgePortTest, PortWithoutADirectionIsTakenForAnInput)
{
    const std::string line = "16 Failed to retrieve port direction, default to input";
    loadEdge("1", kContext1, "hw", kContext1);
    EXPECT_FALSE(isEdge());
    out()->removeDescendant(NUXO_KEY_DIRECTION);
    clearLog();
    EXPECT_TRUE(isEdge());
    EXPECT_TRUE(loggedExactly({line}));
    out()->addValue(NUXO_KEY_DIRECTION, std::string("1"));
    clearLog();
    EXPECT_TRUE(isEdge());
    EXPECT_TRUE(loggedExactly({line}));
}

// --- no answer ---

TEST_F(EdgePortTest, DisabledAndPrivatePortsAreNoEdgesAndSayNothing)
{
    for (const char* state : {"enabled=\"0\"", "private=\"1\"", "private=\"-1\""}) {
        loadPair(std::string("direction=\"1\" ") + state, "", kContext1);
        EXPECT_FALSE(isEdge()) << state;
        EXPECT_TRUE(loggedExactly({})) << state;
    }
}

TEST_F(EdgePortTest, StateOfThePeerDoesNotMatter)
{
    load(portOf("pg", "out", "direction=\"1\" peer=\"next:in\"", kContext1) +
         portOf("next", "in", "enabled=\"0\" private=\"1\"", kContext2));
    EXPECT_TRUE(isEdge());
}

TEST_F(EdgePortTest, PortWithoutAPeerIsNoEdge)
{
    const std::string line = "16 Failed to create fourcc info for source port";
    loadPort("direction=\"1\"", kContext1);
    EXPECT_FALSE(isEdge());
    EXPECT_TRUE(loggedExactly({"2 Couldn't find peer value for port[pg:out]", line}));
    loadPort("direction=\"1\" peer=\"ghost\"", kContext1);
    EXPECT_FALSE(isEdge());
    EXPECT_TRUE(loggedExactly({"16 Failed to find peer by name ghost", line}));
    clearLog();
    EXPECT_FALSE(GraphCameraUtil::isEdgePort(nullptr));
    EXPECT_TRUE(loggedExactly(
        {"16 Failed to retrieve port direction, default to input", "16 Invalid Node, cannot get the peer port", line}));
}

TEST_F(EdgePortTest, PortWithoutAContextIsNoEdge)
{
    for (const char* group : {"", "exec_ctx_id=\"-1\"", "exec_ctx_id=\"-5\" stream_id=\"-1\""}) {
        loadEdge("1", group, kGroup, kContext2);
        EXPECT_FALSE(isEdge()) << group;
        EXPECT_TRUE(loggedExactly({"16 Failed to get stream_id for port port[pg:out]"})) << group;
    }
    load(portOf("pg", "out", "direction=\"1\" peer=\"video\"") + "<sink name=\"video\"/>");
    EXPECT_FALSE(isEdge());
}

TEST_F(EdgePortTest, PeerNodeWithoutAContextIsReported)
{
    const std::string line = "16 Failed to get stream ID of peer PG program_group[next]";
    loadEdge("1", kContext1, kGroup, "");
    EXPECT_FALSE(isEdge());
    EXPECT_TRUE(loggedExactly({line}));
    node("next")->addValue(NUXO_KEY_EXEC_CTX_ID, std::string("2"));
    node("next")->addValue(NUXO_KEY_STREAM_ID, std::string("2"));
    clearLog();
    EXPECT_FALSE(isEdge());
    EXPECT_TRUE(loggedExactly({line}));
    loadEdge("0", kContext1, "mux", "");
    EXPECT_FALSE(isEdge());
    EXPECT_TRUE(loggedExactly({"16 Failed to get stream ID of peer PG mux[NA:next]"}));
}

TEST_F(EdgePortTest, PortWithoutATypeIsNoEdge)
{
    loadEdge("1", kContext1, kGroup, kContext2);
    out()->removeDescendant(NUXO_KEY_TYPE);
    EXPECT_FALSE(isEdge());
    EXPECT_TRUE(loggedExactly(
        {"16 Failed to get Node Type", "16 Failed to get Node Type", "16 Failed to get stream_id for port NODE[out]"}));
}

TEST_F(EdgePortTest, PeerWithoutATypeIsAskedForItsNode)
{
    loadEdge("1", kContext1, kGroup, kContext2);
    node("next:in")->removeDescendant(NUXO_KEY_TYPE);
    EXPECT_TRUE(isEdge());
    EXPECT_TRUE(loggedExactly({"16 Failed to retrieve port(NODE[in]) type, default to input"}));
}

} // namespace

} // namespace graphtest
