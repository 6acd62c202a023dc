// SPDX-License-Identifier: Apache-2.0
// Ports and nodes that are not the library's: all questions go through their interface.
#include "camera/MockNode.h"
#include "camera/PortFormatFixture.h"

namespace graphtest {

namespace {

class ForeignPortTest : public PortFormatTest {
protected:
    MockConnection mMock;
};

TEST_F(ForeignPortTest, NamesAreRead)
{
    std::string pgName;
    std::string portName;
    EXPECT_EQ(NUXO::getPgAndPortNames(mMock.port, pgName, portName), StatusOk);
    EXPECT_EQ(pgName, "pg");
    EXPECT_EQ(portName, "out");
    EXPECT_EQ(GraphCameraUtil::print(&mMock.port), "port[pg:out]");
    EXPECT_EQ(GraphCameraUtil::print(&mMock.group), "program_group[foreign]");
    EXPECT_EQ(GraphCameraUtil::getFullName(mMock.root), "NA:NA");
}

TEST_F(ForeignPortTest, AnyFailureToReadANameIsMissingData)
{
    mMock.group.mTexts.clear();
    mMock.group.mReadFailure = StatusMissingObject;
    std::string pgName = "old group";
    std::string portName;
    EXPECT_EQ(NUXO::getPgAndPortNames(mMock.port, pgName, portName), StatusMissingData);
    EXPECT_EQ(pgName, "old group");
    EXPECT_EQ(portName, "out");
}

TEST_F(ForeignPortTest, PortsOfAForeignNodeCannotBeSeen)
{
    EXPECT_EQ(GraphCameraUtil::nodeGetPortById(&mMock.group, 5), nullptr);
}

TEST_F(ForeignPortTest, PeerIsAskedOfTheRootByItsText)
{
    IGraphConfig* peer = nullptr;
    EXPECT_EQ(GraphCameraUtil::portGetPeer(&mMock.port, &peer), StatusOk);
    EXPECT_EQ(peer, &mMock.peer);
    EXPECT_EQ(mMock.root.mAskedFor, "next:in");

    // The root may know names that the vocabulary does not.
    mMock.port.mTexts[NUXO_KEY_PEER] = "stranger:in";
    mMock.root.mDescendants["stranger:in"] = &mMock.peer;
    mMock.root.mDescendants["ghost:in"] = &mMock.group;
    EXPECT_EQ(GraphCameraUtil::portGetPeer(&mMock.port, &peer), StatusOk);
    EXPECT_EQ(peer, &mMock.peer);
    EXPECT_EQ(mMock.root.mAskedFor, "stranger:in");

    mMock.root.mDescendants.clear();
    EXPECT_EQ(GraphCameraUtil::portGetPeer(&mMock.port, &peer), StatusBadArgument);
    EXPECT_EQ(peer, nullptr);
    EXPECT_TRUE(loggedExactly({"16 Failed to find peer by name stranger:in"}));
}

TEST_F(ForeignPortTest, TerminalIsThatOfTheNode)
{
    mMock.group.mIntegers[NUXO_KEY_PG_ID] = 4;
    mMock.group.mTexts[NUXO_KEY_SUBSYSTEM] = "gpu";
    unsigned int stage = 0;
    unsigned int terminal = 0;
    EXPECT_EQ(GraphCameraUtil::portGetFourCCInfo(&mMock.port, stage, terminal), StatusOk);
    EXPECT_EQ(stage, 0x44558U); // 4 << 16 | "XE"
    EXPECT_EQ(terminal, 0x4455DU);
}

TEST_F(ForeignPortTest, DescriptorIsFilledFromPortAndPeer)
{
    mMock.peer.mIntegers = {{NUXO_KEY_WIDTH, 64}, {NUXO_KEY_HEIGHT, 48}};
    mMock.peer.mTexts[NUXO_KEY_FORMAT] = "F";
    GraphCameraUtil::PortDescriptor descriptor;
    EXPECT_EQ(GraphCameraUtil::portGetDescriptor(&mMock.port, descriptor), StatusOk);
    EXPECT_EQ(descriptor.name, "out");
    EXPECT_EQ(descriptor.pgName, "pg");
    EXPECT_EQ(descriptor.direction, 1);
    EXPECT_EQ(descriptor.enabled, 1);
    EXPECT_EQ(descriptor.terminalId, 5U);
    EXPECT_EQ(descriptor.width, 64);
    EXPECT_EQ(descriptor.height, 48);
    EXPECT_EQ(descriptor.format, "F");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ForeignPortTest, ContextsAndEdgesAreTold)
{
    mMock.group.mIntegers[NUXO_KEY_EXEC_CTX_ID] = 3;
    mMock.next.mIntegers[NUXO_KEY_STREAM_ID] = 4;
    EXPECT_EQ(GraphCameraUtil::portGetExecCtxId(&mMock.port), 3);
    EXPECT_EQ(GraphCameraUtil::portGetStreamId(&mMock.peer), 4);
    EXPECT_TRUE(GraphCameraUtil::isEdgePort(&mMock.port));
    mMock.next.mIntegers[NUXO_KEY_STREAM_ID] = 3;
    EXPECT_FALSE(GraphCameraUtil::isEdgePort(&mMock.port));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ForeignPortTest, PeerWithoutANodeIsNoEdge)
{
    mMock.group.mIntegers[NUXO_KEY_EXEC_CTX_ID] = 3;
    mMock.peer.mAncestor = nullptr;
    EXPECT_FALSE(GraphCameraUtil::isEdgePort(&mMock.port));
    EXPECT_TRUE(loggedExactly({"16 Failed to get peer's ancestor"}));

    mMock.peer.mTexts[NUXO_KEY_TYPE] = "sink"; // which is its own node
    clearLog();
    EXPECT_TRUE(GraphCameraUtil::isEdgePort(&mMock.port));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ForeignPortTest, PortWithoutARootIsNoEdge)
{
    mMock.port.mRoot = nullptr;
    EXPECT_FALSE(GraphCameraUtil::isEdgePort(&mMock.port));
    EXPECT_TRUE(loggedExactly({"16 Failed to get root", "16 Failed to create fourcc info for source port"}));
}

TEST_F(ForeignPortTest, FormatComesFromPortAndPeer)
{
    mMock.port.mIntegers[NUXO_KEY_WIDTH] = 1000;
    mMock.peer.mIntegers[NUXO_KEY_HEIGHT] = 750;
    mMock.peer.mTexts[NUXO_KEY_FORMAT] = "YUV420_8_SP";
    EXPECT_EQ(mFormat.askFor(&mMock.port), StatusOk);
    EXPECT_EQ(mFormat.enabled, 1U);
    EXPECT_EQ(mFormat.terminalId, 5U);
    expectSize(1000, 750);
    expectLayout(fourcc("NV12"), 1024, 12); // 1000 as a multiple of 64
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ForeignPortTest, AnyFailureToReadCountsAsAbsent)
{
    mMock.port.mReadFailure = StatusMissingObject;
    mMock.peer.mIntegers = {{NUXO_KEY_ENABLED, 2}, {NUXO_KEY_WIDTH, 1000}, {NUXO_KEY_HEIGHT, 750}};
    mMock.peer.mTexts[NUXO_KEY_FORMAT] = "YUV420_8_SP";
    EXPECT_EQ(mFormat.askFor(&mMock.port), StatusOk);
    EXPECT_EQ(mFormat.enabled, 2U);
    expectSize(1000, 750);
    mMock.port.mIntegers.erase(NUXO_KEY_ID);
    EXPECT_EQ(mFormat.askFor(&mMock.port), StatusNotFound);
}

TEST_F(ForeignPortTest, DimensionsAreRead)
{
    mMock.port.mIntegers[NUXO_KEY_WIDTH] = 64;
    mMock.port.mReadFailure = StatusMissingObject;
    int width = 0;
    int height = 0;
    EXPECT_EQ(GraphCameraUtil::getDimensions(&mMock.port, &width, nullptr), StatusOk);
    EXPECT_EQ(width, 64);
    EXPECT_EQ(GraphCameraUtil::getDimensions(&mMock.port, &width, &height), StatusNotFound);
    EXPECT_TRUE(loggedExactly({"16 Error: Couldn't get height"}));
}

TEST_F(ForeignPortTest, NodeThatKnowsNothingIsRefusedByAll)
{
    const ForeignNode foreign; // no values, no root, no ancestor
    std::string pgName;
    std::string portName;
    unsigned int stage = 0;
    unsigned int terminal = 0;
    GraphCameraUtil::PortDescriptor descriptor;
    int width = 0;
    int height = 0;
    EXPECT_EQ(NUXO::getPgAndPortNames(foreign, pgName, portName), StatusMissingData);
    EXPECT_EQ(GraphCameraUtil::nodeGetPortById(&foreign, 0), nullptr);
    EXPECT_EQ(GraphCameraUtil::print(&foreign), "NODE[foreign]");
    EXPECT_EQ(GraphCameraUtil::portGetContentType(&foreign), "pixel_data");
    EXPECT_EQ(GraphCameraUtil::portGetDirection(&foreign), 0);
    EXPECT_FALSE(GraphCameraUtil::portIsVirtual(&foreign));
    EXPECT_EQ(GraphCameraUtil::portGetFourCCInfo(&foreign, stage, terminal), StatusBadArgument);
    EXPECT_EQ(GraphCameraUtil::portGetDescriptor(&foreign, descriptor), StatusBadState);
    EXPECT_EQ(GraphCameraUtil::portGetKey(&foreign, NUXO_KEY_WIDTH), -1);
    EXPECT_EQ(GraphCameraUtil::portGetExecCtxId(&foreign), -1);
    EXPECT_EQ(GraphCameraUtil::portGetStreamId(&foreign), -1);
    EXPECT_FALSE(GraphCameraUtil::isEdgePort(&foreign));
    EXPECT_EQ(GraphCameraUtil::portGetInfo(&foreign, stage, terminal), StatusNotFound);
    EXPECT_EQ(mFormat.askFor(&foreign), StatusNotFound);
    EXPECT_EQ(GraphCameraUtil::applyFormat(&foreign, "NV12"), StatusBadState);
    EXPECT_EQ(GraphCameraUtil::getDimensions(&foreign, &width, &height), StatusNotFound);
    EXPECT_EQ(GraphCameraUtil::sensorGetBinningFactor(&foreign, width, height), StatusMissingData);
    EXPECT_EQ(GraphCameraUtil::sensorGetScalingFactor(&foreign, width, height), StatusMissingData);
}

} // namespace

} // namespace graphtest
