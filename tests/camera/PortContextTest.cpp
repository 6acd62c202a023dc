// SPDX-License-Identifier: Apache-2.0
#include "camera/PortFixture.h"

namespace graphtest {

namespace {

class PortContextTest : public PortTest {
protected:
    int key(uint32_t wanted) const { return GraphCameraUtil::portGetKey(out(), wanted); }
};

TEST_F(PortContextTest, ValueIsThatOfTheNodeOfThePort)
{
    loadPort("exec_ctx_id=\"8\" stream_id=\"9\" pg_id=\"7\"", "exec_ctx_id=\"3\" stream_id=\"4\" pg_id=\"5\"");
    EXPECT_EQ(key(NUXO_KEY_EXEC_CTX_ID), 3);
    EXPECT_EQ(key(NUXO_KEY_STREAM_ID), 4);
    EXPECT_EQ(key(NUXO_KEY_PG_ID), 5);
    EXPECT_EQ(GraphCameraUtil::portGetExecCtxId(out()), 3);
    EXPECT_EQ(GraphCameraUtil::portGetStreamId(out()), 4);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortContextTest, SinkAnswersForItself)
{
    load("<sink name=\"video\" exec_ctx_id=\"8\"/>");
    mRoot->addValue(NUXO_KEY_EXEC_CTX_ID, 3);
    mRoot->addValue(NUXO_KEY_STREAM_ID, 4);
    EXPECT_EQ(GraphCameraUtil::portGetExecCtxId(node("video")), 8);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(GraphCameraUtil::portGetStreamId(node("video")), -1); // not that of the root
    EXPECT_TRUE(loggedExactly({"16 Failed to get stream_id for port sink[video]"}));
}

TEST_F(PortContextTest, AnyOtherTypeAsksTheNode)
{
    for (const std::string type : {"Sink", "kernel", "", "sinks"}) {
        load("<hw name=\"pg\" exec_ctx_id=\"3\"><node name=\"out\" exec_ctx_id=\"8\" type=\"" + type + "\"/></hw>");
        EXPECT_EQ(GraphCameraUtil::portGetExecCtxId(out()), 3) << type;
    }
}

TEST_F(PortContextTest, ExtremeValuesAreHandedOutAsTheyAre)
{
    for (const int id : {0, -1, -2, 2147483647, -2147483647 - 1}) {
        loadPort("", "exec_ctx_id=\"" + std::to_string(id) + "\"");
        EXPECT_EQ(GraphCameraUtil::portGetExecCtxId(out()), id);
        EXPECT_TRUE(loggedExactly({}));
    }
}

TEST_F(PortContextTest, ValueThatCannotBeReadIsMinusOne)
{
    loadPort("exec_ctx_id=\"8\"");
    for (const uint32_t wanted : {NUXO_KEY_EXEC_CTX_ID, NUXO_KEY_NAME, NUXO_KEY_NA, NUXO_KEY_NUM_END}) {
        EXPECT_EQ(key(wanted), -1) << wanted;
    }
    EXPECT_EQ(key(0xFFFFFFFF), -1);
    node("pg")->addValue(NUXO_KEY_EXEC_CTX_ID, std::string("3"));
    EXPECT_EQ(key(NUXO_KEY_EXEC_CTX_ID), -1);
    EXPECT_EQ(GraphCameraUtil::portGetExecCtxId(out()), -1);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortContextTest, NegativeStreamIsReported)
{
    const std::string line = "16 Failed to get stream_id for port port[pg:out]";
    loadPort("");
    EXPECT_EQ(GraphCameraUtil::portGetStreamId(out()), -1);
    EXPECT_TRUE(loggedExactly({line}));
    loadPort("", "stream_id=\"-7\"");
    EXPECT_EQ(GraphCameraUtil::portGetStreamId(out()), -7);
    EXPECT_TRUE(loggedExactly({line}));
    loadPort("", "stream_id=\"0\"");
    EXPECT_EQ(GraphCameraUtil::portGetStreamId(out()), 0);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortContextTest, NoPortIsReportedWithTheSameWordsForAllKeys)
{
    const std::string line = "16 Invalid Node, cannot get the port execCtx id";
    EXPECT_EQ(GraphCameraUtil::portGetKey(nullptr, NUXO_KEY_WIDTH), -1);
    EXPECT_TRUE(loggedExactly({line}));
    clearLog();
    EXPECT_EQ(GraphCameraUtil::portGetExecCtxId(nullptr), -1);
    EXPECT_TRUE(loggedExactly({line}));
    clearLog();
    EXPECT_EQ(GraphCameraUtil::portGetStreamId(nullptr), -1);
    EXPECT_TRUE(loggedExactly({line, "16 Failed to get stream_id for port NODE[NA]"}));
}

TEST_F(PortContextTest, PortWithoutATypeIsReportedEvenIfItsNodeCouldAnswer)
{
    const std::string line = "16 Failed to get Node Type";
    loadPort("", "exec_ctx_id=\"3\" stream_id=\"4\"");
    out()->removeDescendant(NUXO_KEY_TYPE);
    EXPECT_EQ(GraphCameraUtil::portGetExecCtxId(out()), -1);
    EXPECT_TRUE(loggedExactly({line}));
    out()->addValue(NUXO_KEY_TYPE, static_cast<int>(NUXO_KEY_PORT));
    clearLog();
    EXPECT_EQ(GraphCameraUtil::portGetStreamId(out()), -1);
    EXPECT_TRUE(loggedExactly({line, "16 Failed to get stream_id for port NODE[out]"}));
}

TEST_F(PortContextTest, PortWithoutANodeIsReported)
{
    GraphConfigNode alone;
    alone.addValue(NUXO_KEY_TYPE, std::string("port"));
    alone.addValue(NUXO_KEY_NAME, std::string("out"));
    alone.addValue(NUXO_KEY_EXEC_CTX_ID, 3);
    EXPECT_EQ(GraphCameraUtil::portGetExecCtxId(&alone), -1);
    EXPECT_TRUE(loggedExactly({"16 Failed to get port's ancestor"}));
    clearLog();
    EXPECT_EQ(GraphCameraUtil::portGetStreamId(&alone), -1);
    EXPECT_TRUE(
        loggedExactly({"16 Failed to get port's ancestor", "16 Failed to get stream_id for port port[NA:out]"}));
}

TEST_F(PortContextTest, SinkWithoutANodeAnswersForItself)
{
    GraphConfigNode alone;
    alone.addValue(NUXO_KEY_TYPE, std::string("sink"));
    alone.addValue(NUXO_KEY_EXEC_CTX_ID, 3);
    EXPECT_EQ(GraphCameraUtil::portGetExecCtxId(&alone), 3);
    EXPECT_TRUE(loggedExactly({}));
}

} // namespace

} // namespace graphtest
