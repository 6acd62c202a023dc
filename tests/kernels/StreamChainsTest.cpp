// SPDX-License-Identifier: Apache-2.0
#include "kernels/KernelsFixture.h"

namespace graphtest {

namespace {

class StreamChainsTest : public KernelsTest {
protected:
    /// Initialises with these nodes and returns the lines about streams and their chains.
    Lines chainsOf(const std::string& nodes)
    {
        mStatus = initWith(nodes);
        return picked({"2 video", "2 stills", "2 preview", "2 stats", "2 Generating", "2 Trying to find up",
                       "2 Found ctx", "2 Adding", "2 stream-chain", "16 Sink", "16 Failed"});
    }

    /// The lines about the beginning of the chain of a sink.
    static Lines begun(const std::string& name, int stream)
    {
        const std::string id = std::to_string(stream);
        return {"2 " + name + " is connected to exec-ctx-id " + id, "2 Generating stream chain for exec-ctx-id " + id,
                "2 Trying to find upstream contexts from " + id};
    }

    /// The lines about a chain that is complete.
    static Lines stored(int stream, const Lines& items)
    {
        Lines all = {"2 Adding to stream-chain[" + std::to_string(stream) + "] the following items:"};
        for (size_t i = 0; i < items.size(); ++i)
            all.push_back("2 stream-chain[" + std::to_string(i) + "]: ctx " + items[i]);
        return all;
    }

    static Lines join(std::initializer_list<Lines> parts)
    {
        Lines all;
        for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
        return all;
    }

    /// A program group with one kernel.
    static std::string one(const std::string& name, int stream, const std::string& from, const std::string& to)
    {
        return stage(name, stream, from, to, kernel(name + "_kernel", 10 * (stream + 1), 0));
    }

    int mStatus = 1;
};

TEST_F(StreamChainsTest, ChainBeginsAtThePortThatFeedsTheSink)
{
    EXPECT_EQ(chainsOf(bufferSource("isp:in") + one("isp", 1, "buffer_src0:port_0", "video") +
                       streamSink("video", 1, "isp:out")),
              join({begun("video", 1), stored(1, {"1 - out"})}));
    EXPECT_EQ(mStatus, StatusOk);
}

TEST_F(StreamChainsTest, ChainLeadsUpThroughAllStreams)
{
    const std::string last = group("last", "stream_id='1'",
                                   input("in", "middle:middle_out") + output("last_out", "video") + kernel("k", 1, 0));
    const std::string middle =
        group("middle", "stream_id='7'",
              input("in", "first:first_out") + output("middle_out", "last:in") + kernel("l", 2, 0));
    const std::string first =
        group("first", "stream_id='3'",
              input("in", "buffer_src0:port_0") + output("first_out", "middle:in") + kernel("m", 3, 0));
    EXPECT_EQ(chainsOf(bufferSource("first:in") + first + middle + last + streamSink("video", 1, "last:last_out")),
              join({begun("video", 1),
                    {"2 Found ctx-id 7, with output middle_out", "2 Found ctx-id 3, with output first_out"},
                    stored(1, {"1 - last_out", "7 - middle_out", "3 - first_out"})}));
    EXPECT_EQ(mStatus, StatusOk);
}

TEST_F(StreamChainsTest, GroupsOfOneStreamAreOneLink)
{
    EXPECT_EQ(chainsOf(bufferSource("a:in") + one("a", 1, "buffer_src0:port_0", "b:in") + one("b", 1, "a:out", "c:in") +
                       one("c", 2, "b:out", "video") + streamSink("video", 2, "c:out")),
              join({begun("video", 2), {"2 Found ctx-id 1, with output out"}, stored(2, {"2 - out", "1 - out"})}));
}

TEST_F(StreamChainsTest, EachPixelSinkHasAChainOfItsOwn)
{
    const std::string fork =
        group("fork", "stream_id='1'",
              input("in", "buffer_src0:port_0") + output("out", "a:in") + output("out2", "b:in") + kernel("k", 1, 0));
    EXPECT_EQ(chainsOf(bufferSource("fork:in") + fork + one("a", 2, "fork:out", "video") +
                       one("b", 3, "fork:out2", "stills") + streamSink("video", 2, "a:out") +
                       streamSink("stills", 3, "b:out")),
              join({begun("video", 2),
                    {"2 Found ctx-id 1, with output out"},
                    stored(2, {"2 - out", "1 - out"}),
                    begun("stills", 3),
                    {"2 Found ctx-id 1, with output out2"},
                    stored(3, {"3 - out", "1 - out2"})}));
    EXPECT_EQ(mStatus, StatusOk);
}

TEST_F(StreamChainsTest, FirstSinkOfAStreamDecides)
{
    const std::string isp = group("isp", "stream_id='1'",
                                  input("in", "buffer_src0:port_0") + output("out", "video") +
                                      output("out2", "stills") + kernel("k", 1, 0));
    EXPECT_EQ(chainsOf(bufferSource("isp:in") + isp + streamSink("video", 1, "isp:out") +
                       streamSink("stills", 1, "isp:out2")),
              join({begun("video", 1), stored(1, {"1 - out"}), {"2 stills is connected to exec-ctx-id 1"}}));
    EXPECT_EQ(mStatus, StatusOk);
}

// Such sinks need neither stream nor peer.
TEST_F(StreamChainsTest, SinksOfOtherContentHaveNoChain)
{
    for (const char* const content : {"ae_stats", "pixel_data2", "Pixel_data", ""}) {
        EXPECT_EQ(chainsOf(bufferSource("isp:in") + one("isp", 1, "buffer_src0:port_0", "video") +
                           sink("stats", std::string("content_type='") + content + "'") +
                           streamSink("video", 1, "isp:out", "content_type='pixel_data'")),
                  join({begun("video", 1), stored(1, {"1 - out"})}))
            << content;
        EXPECT_EQ(mStatus, StatusOk);
    }
}

TEST_F(StreamChainsTest, GraphWithoutSinksHasNoChains)
{
    EXPECT_EQ(chainsOf(bufferSource("isp:in") + one("isp", 1, "buffer_src0:port_0", "")), Lines());
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_EQ(picked({"2 Handling", "2 Enter"}), Lines());
}

TEST_F(StreamChainsTest, SinkWithoutAStreamEndsTheWalk)
{
    const std::string isp = bufferSource("isp:in") + one("isp", 1, "buffer_src0:port_0", "video");
    const std::string rest = streamSink("video", 1, "isp:out");
    for (const char* const stream : {"", "stream_id='-1'", "stream_id='-9'"}) {
        EXPECT_EQ(chainsOf(isp + sink("stills", std::string("peer='isp:out' ") + stream) + rest),
                  Lines({"16 Failed to get stream_id for port sink[stills]",
                         "16 Sink node lacks exec ctx id attribute - fix your config"}))
            << stream;
        EXPECT_EQ(mStatus, StatusMissingData);
        EXPECT_TRUE(notLogged("Allocated"));
    }
}

TEST_F(StreamChainsTest, SinkThatNothingFeedsEndsTheWalk)
{
    const std::string isp = bufferSource("isp:in") + one("isp", 1, "buffer_src0:port_0", "video");
    const std::string rest = streamSink("video", 1, "isp:out");
    for (const char* const attributes :
         {"", "peer='isp:ghost'", "peer='isp:out' enabled='0'", "peer='isp:out' private='1'"}) {
        Lines found = chainsOf(isp + sink("stills", std::string("stream_id='4' ") + attributes) + rest);
        found.erase(std::remove(found.begin(), found.end(), "16 Failed to find peer by name isp:ghost"), found.end());
        EXPECT_EQ(found, Lines({"2 stills is connected to exec-ctx-id 4", "2 Generating stream chain for exec-ctx-id 4",
                                "16 Failed to find peer port for stills"}))
            << attributes;
        EXPECT_EQ(mStatus, StatusMissingObject);
        EXPECT_TRUE(notLogged("Allocated"));
    }
}

TEST_F(StreamChainsTest, HardwareWithAStreamIsALink)
{
    const std::string csi = element("hw", "csi", "stream_id='0'", input("in", "") + output("csi_out", "isp:in"));
    EXPECT_EQ(
        chainsOf(bufferSource("csi:in") + csi + one("isp", 1, "csi:csi_out", "video") +
                 streamSink("video", 1, "isp:out")),
        join({begun("video", 1), {"2 Found ctx-id 0, with output csi_out"}, stored(1, {"1 - out", "0 - csi_out"})}));
    EXPECT_EQ(mStatus, StatusOk);
}

TEST_F(StreamChainsTest, WalkEndsAtNodesWithoutAStream)
{
    for (const char* const stream : {"", "stream_id='-1'", "stream_id='-5'"}) {
        const std::string csi = element("hw", "csi", stream, output("csi_out", "isp:in"));
        EXPECT_EQ(chainsOf(bufferSource("csi:in") + csi + one("isp", 1, "csi:csi_out", "video") +
                           streamSink("video", 1, "isp:out")),
                  join({begun("video", 1), stored(1, {"1 - out"})}))
            << stream;
        EXPECT_EQ(mStatus, StatusOk);
    }
}

// The hardware belongs to the stream that it feeds.
TEST_F(StreamChainsTest, ContextThatIsAlreadyInTheChainEndsTheWalk)
{
    const std::string csi = element("hw", "csi", "stream_id='0'", output("csi_out", "isp:in"));
    EXPECT_EQ(chainsOf(bufferSource("csi:in") + csi + one("isp", 0, "csi:csi_out", "video") +
                       streamSink("video", 0, "isp:out")),
              join({begun("video", 0), {"2 Found ctx-id 0, with output csi_out"}, stored(0, {"0 - out"})}));
    EXPECT_EQ(mStatus, StatusOk);
}

TEST_F(StreamChainsTest, CycleOfStreamsEndsTheWalk)
{
    const std::string a =
        group("a", "stream_id='1'",
              input("in", "c:out_c") + output("out_a", "b:in") + output("out_video", "video") + kernel("k", 1, 0));
    const std::string b =
        group("b", "stream_id='2'", input("in", "a:out_a") + output("out_b", "c:in") + kernel("l", 2, 0));
    const std::string c =
        group("c", "stream_id='3'", input("in", "b:out_b") + output("out_c", "a:in") + kernel("m", 3, 0));
    EXPECT_EQ(chainsOf(bufferSource("") + a + b + c + streamSink("video", 1, "a:out_video")),
              join({begun("video", 1),
                    {"2 Found ctx-id 3, with output out_c", "2 Found ctx-id 2, with output out_b",
                     "2 Found ctx-id 1, with output out_a"},
                    stored(1, {"1 - out_video", "3 - out_c", "2 - out_b"})}));
    EXPECT_EQ(mStatus, StatusOk);
}

// The way up from context 1 leads into a cycle of 2 and 3 that does not come back to 1.
TEST_F(StreamChainsTest, CycleAboveTheSinkEndsTheWalk)
{
    const std::string b =
        group("b", "stream_id='2'",
              input("in", "c:out_c") + output("out_b", "c:in") + output("out_b2", "a:in") + kernel("l", 2, 0));
    const std::string c =
        group("c", "stream_id='3'", input("in", "b:out_b") + output("out_c", "b:in") + kernel("m", 3, 0));
    EXPECT_EQ(chainsOf(bufferSource("") + one("a", 1, "b:out_b2", "video") + b + c + streamSink("video", 1, "a:out")),
              join({begun("video", 1),
                    {"2 Found ctx-id 2, with output out_b2", "2 Found ctx-id 3, with output out_c",
                     "2 Found ctx-id 2, with output out_b"},
                    stored(1, {"1 - out", "2 - out_b2", "3 - out_c"})}));
}

TEST_F(StreamChainsTest, FirstInputWithAPeerLeadsUp)
{
    const std::string last = group("last", "stream_id='2'",
                                   input("loose", "ghost:out") + input("off", "other:out", "enabled='0'") +
                                       input("in", "first:out") + output("out", "video") + kernel("k", 1, 0));
    chainsOf(bufferSource("first:in") + one("first", 1, "buffer_src0:port_0", "last:in") +
             one("other", 5, "buffer_src0:port_0", "last:off") + last + streamSink("video", 2, "last:out"));
    EXPECT_EQ(picked({"2 Found ctx"}), Lines({"2 Found ctx-id 1, with output out"}));
    EXPECT_EQ(mStatus, StatusOk);
}

TEST_F(StreamChainsTest, StreamsAreFollowedByStreamIdAlsoWhenGroupedByExecutionContext)
{
    renew(false);
    const std::string contexts = "exec_ctx_id='1' ";
    const std::string first = group("first", contexts + "stream_id='1'",
                                    input("in", "buffer_src0:port_0") + output("out", "last:in") + kernel("k", 1, 0));
    const std::string last = group("last", "exec_ctx_id='2' stream_id='2'",
                                   input("in", "first:out") + output("out", "video") + kernel("l", 2, 0));
    EXPECT_EQ(chainsOf(bufferSource("first:in") + first + last + streamSink("video", 2, "last:out", "exec_ctx_id='6'")),
              join({begun("video", 2), {"2 Found ctx-id 1, with output out"}, stored(2, {"2 - out", "1 - out"})}));
    EXPECT_EQ(mStatus, StatusOk);
}

} // namespace

} // namespace graphtest
