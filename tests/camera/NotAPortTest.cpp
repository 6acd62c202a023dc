// SPDX-License-Identifier: Apache-2.0
// Nodes that are no ports, asked what ports are asked.
#include "camera/PortFormatFixture.h"

namespace graphtest {

namespace {

/// What all questions answer about one node.
struct Answers {
    int terminal;
    int descriptor;
    int exec;
    int format;
    int applied;
    bool isVirtual;
};

class NotAPortTest : public PortFormatTest {
protected:
    void expectAnswers(IGraphConfig* node, const Answers& expected)
    {
        const std::string what = GraphCameraUtil::print(node);
        unsigned int stage = 0;
        unsigned int terminal = 0;
        GraphCameraUtil::PortDescriptor descriptor;
        int width = 0;
        int height = 0;
        EXPECT_EQ(GraphCameraUtil::portGetFourCCInfo(node, stage, terminal), expected.terminal) << what;
        EXPECT_EQ(GraphCameraUtil::portGetDescriptor(node, descriptor), expected.descriptor) << what;
        EXPECT_EQ(GraphCameraUtil::portGetExecCtxId(node), expected.exec) << what;
        EXPECT_EQ(GraphCameraUtil::portGetStreamId(node), -1) << what;
        EXPECT_EQ(GraphCameraUtil::portGetInfo(node, stage, terminal),
                  expected.terminal == StatusOk ? StatusOk : StatusNotFound)
            << what;
        EXPECT_EQ(mFormat.askFor(node), expected.format) << what;
        EXPECT_EQ(GraphCameraUtil::applyFormat(node, "NV12"), expected.applied) << what;
        EXPECT_EQ(GraphCameraUtil::portIsVirtual(node), expected.isVirtual) << what;
        EXPECT_FALSE(GraphCameraUtil::isEdgePort(node)) << what;
        EXPECT_EQ(GraphCameraUtil::portGetDirection(node), 0) << what;
        EXPECT_EQ(GraphCameraUtil::portGetContentType(node), "pixel_data") << what;
        EXPECT_EQ(GraphCameraUtil::nodeGetPortById(node, 1), nullptr) << what;
        EXPECT_EQ(GraphCameraUtil::getDimensions(node, &width, &height), StatusNotFound) << what;
        EXPECT_EQ(GraphCameraUtil::sensorGetBinningFactor(node, width, height), StatusMissingData) << what;
        EXPECT_EQ(GraphCameraUtil::sensorGetScalingFactor(node, width, height), StatusMissingData) << what;
    }
};

TEST_F(NotAPortTest, RootHasNothingOfAPort)
{
    load("<hw name=\"pg\"/>");
    expectAnswers(mRoot.get(), {StatusBadArgument, StatusBadState, -1, StatusNotFound, StatusBadState, false});
    clearLog();
    EXPECT_EQ(GraphCameraUtil::portGetExecCtxId(mRoot.get()), -1);
    EXPECT_FALSE(GraphCameraUtil::portIsVirtual(mRoot.get()));
    EXPECT_TRUE(
        loggedExactly({"16 Failed to get Node Type", "16 Failed to retrieve port(NODE[NA]) type, default to input"}));
}

TEST_F(NotAPortTest, EmptyNodeHasNothingOfAPort)
{
    GraphConfigNode empty;
    expectAnswers(&empty, {StatusBadArgument, StatusBadState, -1, StatusNotFound, StatusBadState, false});
}

TEST_F(NotAPortTest, KernelHasATerminalAndTheContextOfItsNode)
{
    load("<program_group name=\"pg\" exec_ctx_id=\"3\"><kernel name=\"k\" id=\"7\"/></program_group>");
    // No direction, hence no descriptor; enabled, but without size and format.
    expectAnswers(node("pg:k"), {StatusOk, StatusBadState, 3, StatusMissingData, StatusBadState, false});
}

TEST_F(NotAPortTest, ProgramGroupIsANodeOfTheRoot)
{
    load("<program_group name=\"pg\" exec_ctx_id=\"3\"/>");
    expectAnswers(node("pg"), {StatusBadArgument, StatusBadState, -1, StatusNotFound, StatusBadState, false});
}

TEST_F(NotAPortTest, SinkWithoutPortsIsAPortByItself)
{
    load("<sink name=\"video\" id=\"7\" exec_ctx_id=\"3\"/>");
    expectAnswers(node("video"), {StatusOk, StatusBadState, 3, StatusMissingData, StatusBadState, true});
}

TEST_F(NotAPortTest, NodesAsPeersAnswerWhatTheyCan)
{
    // A program group and a kernel at the other end: both have a type, the kernel's node has a context.
    load(portOf("pg", "out", "id=\"1\" direction=\"1\" peer=\"next\"", "exec_ctx_id=\"3\"") +
         "<program_group name=\"next\" exec_ctx_id=\"4\" width=\"64\" height=\"48\" format=\"YUV420_8_SP\">"
         "<kernel name=\"in\"/></program_group>");
    EXPECT_EQ(ask(), StatusOk);
    expectSize(64, 48);
    EXPECT_FALSE(GraphCameraUtil::isEdgePort(out())); // the root has no context
    EXPECT_TRUE(loggedExactly({"16 Failed to get stream ID of peer PG NODE[NA]"}));

    out()->removeDescendant(NUXO_KEY_PEER);
    out()->addValue(NUXO_KEY_PEER, std::string("next:in"));
    EXPECT_TRUE(GraphCameraUtil::isEdgePort(out()));
    EXPECT_EQ(ask(), StatusMissingData);
}

} // namespace

} // namespace graphtest
