// SPDX-License-Identifier: Apache-2.0
// Which history each context of a chain begins with, and what ends the filling.
#include "kernels/KernelsFixture.h"

namespace graphtest {

namespace {

/// A foreign root that finds one node, a limited number of times.
class ForgetfulRoot : public MockNode {
public:
    IGraphConfig* getDescendantByString(const std::string&) const override
    {
        if (mAnswers == 0) return nullptr;
        --mAnswers;
        return mPeer;
    }

    IGraphConfig* mPeer = nullptr;
    mutable int mAnswers = 0;
};

/// A port of the library whose graph is a foreign one.
class PortBelow : public GraphConfigNode {
public:
    explicit PortBelow(ForgetfulRoot& root) : mRoot(root) {}
    IGraphConfig* getRoot() const override { return &mRoot; }

private:
    ForgetfulRoot& mRoot;
};

class StreamHandlingTest : public KernelsTest {
protected:
    /// A kernel that halves frames of @p width x @p height.
    static std::string halving(const std::string& name, int uuid, int id, int width, int height,
                               const std::string& attributes = "")
    {
        return kernel(name, uuid, id, attributes, sizes(size(width, height), size(width / 2, height / 2)));
    }

    static std::string plain(const std::string& name, int uuid) { return kernel(name, uuid, 0); }

    /// How often the history of the source `sensor` was computed.
    size_t computed() const { return count(kDebug, "Calculating resolution history for source sensor"); }

    /// A sensor of 4000x3000 whose back end delivers frames of that size to @p peer.
    static std::string sensorAndBackEnd(const std::string& peer)
    {
        return element("source", "sensor", size(4000, 3000), output("port_0", "csi:in")) +
               element("hw", "csi", "",
                       input("in", "sensor:port_0") + output("out", peer) + "<output " + size(4000, 3000) + "/>");
    }

    Lines handled() const { return picked({"2 Handling stream", "2 Enter populate"}); }

    static inline const std::string kGenerationFailed = "16 Generating kernel lists failed";
};

TEST_F(StreamHandlingTest, ContextsAreFilledFromTheSourceDownwards)
{
    EXPECT_EQ(initWith(bufferSource("a:in") + stage("a", 4, "buffer_src0:port_0", "b:in", plain("k", 10)) +
                       stage("b", 2, "a:out", "c:in", plain("l", 11)) +
                       stage("c", 3, "b:out", "video", plain("m", 12)) + streamSink("video", 3, "c:out")),
              StatusOk);
    // Pools are numbered by ascending context.
    EXPECT_EQ(handled(), Lines({"2 Handling stream-chain ctx 3", "2 Handling stream port ctx-4 - out",
                                "2 Enter populateKernelArray for ctx 4, index 2", "2 Handling stream port ctx-2 - out",
                                "2 Enter populateKernelArray for ctx 2, index 0", "2 Handling stream port ctx-3 - out",
                                "2 Enter populateKernelArray for ctx 3, index 1"}));
    EXPECT_EQ(complaints(), Lines());
}

TEST_F(StreamHandlingTest, ChainsAreHandledInAscendingOrderAndSharedContextsOnce)
{
    const std::string fork =
        group("fork", "stream_id='5'",
              input("in", "buffer_src0:port_0") + output("out", "a:in") + output("out2", "b:in") + plain("k", 10));
    EXPECT_EQ(initWith(bufferSource("fork:in") + fork + stage("a", 9, "fork:out", "video", plain("l", 11)) +
                       stage("b", 6, "fork:out2", "stills", plain("m", 12)) + streamSink("video", 9, "a:out") +
                       streamSink("stills", 6, "b:out")),
              StatusOk);
    EXPECT_EQ(handled(), Lines({"2 Handling stream-chain ctx 6", "2 Handling stream port ctx-5 - out2",
                                "2 Enter populateKernelArray for ctx 5, index 0", "2 Handling stream port ctx-6 - out",
                                "2 Enter populateKernelArray for ctx 6, index 1", "2 Handling stream-chain ctx 9",
                                "2 Handling stream port ctx-5 - out", "2 Handling stream port ctx-9 - out",
                                "2 Enter populateKernelArray for ctx 9, index 2"}));
    EXPECT_EQ(recordsOf(5), Lines({"5:10 1 history 640x480>640x480"}));
}

TEST_F(StreamHandlingTest, HistoryOfASourceIsStoredForThePortThatItFeedsThrough)
{
    EXPECT_EQ(initWith(sensorAndBackEnd("isp:in") + stage("isp", 1, "csi:out", "video", plain("k", 10)) +
                       streamSink("video", 1, "isp:out")),
              StatusOk);
    EXPECT_EQ(computed(), 1U);
    EXPECT_EQ(recordsOf(1), Lines({"1:10 1 history 4000x3000>4000x3000"}));
    EXPECT_EQ(sourceHistory(), uncropped(4000, 3000, 4000, 3000));
}

// A context without inputs, such as that of capture hardware, hands the source's history to the next through its port.
TEST_F(StreamHandlingTest, ContextWithoutInputTakesTheSourceAndStoresItForTheNext)
{
    const std::string capture = group("capture", "stream_id='2'", output("out", "isp:in") + plain("k", 10));
    EXPECT_EQ(initWith(sensorAndBackEnd("") + capture + stage("isp", 1, "capture:out", "video", plain("l", 11)) +
                       streamSink("video", 1, "isp:out")),
              StatusOk);
    EXPECT_EQ(computed(), 1U);
    EXPECT_EQ(recordsOf(2), Lines({"2:10 1 history 4000x3000>4000x3000"}));
    EXPECT_EQ(recordsOf(1), Lines({"1:11 1 history 4000x3000>4000x3000"}));
}

TEST_F(StreamHandlingTest, HardwareInContextZeroStoresTheHistoryOfItsSource)
{
    const std::string csi =
        element("hw", "csi", "stream_id='0'",
                input("in", "sensor:port_0") + output("out", "isp:in") + "<output " + size(4000, 3000) + "/>");
    EXPECT_EQ(initWith(element("source", "sensor", size(4000, 3000), output("port_0", "csi:in")) + csi +
                       stage("isp", 1, "csi:out", "video", plain("k", 10)) + streamSink("video", 1, "isp:out")),
              StatusOk);
    EXPECT_EQ(computed(), 1U);
    EXPECT_EQ(handled(), Lines({"2 Handling stream-chain ctx 1", "2 Handling stream port ctx-0 - out",
                                "2 Enter populateKernelArray for ctx 0, index 0", "2 Handling stream port ctx-1 - out",
                                "2 Enter populateKernelArray for ctx 1, index 1"}));
    EXPECT_EQ(recordsOf(0), Lines({"0:0 0"}));
    EXPECT_EQ(recordsOf(1), Lines({"1:10 1 history 4000x3000>4000x3000"}));
}

// The kernel at the edge of the first context halves the frame and names the port through which it leaves.
TEST_F(StreamHandlingTest, HistoryStoredForAPortIsTheInputOfTheNextContext)
{
    const std::string first = group("first", "stream_id='1'",
                                    input("in", "csi:out") + output("out", "last:in", "id='3'") +
                                        halving("k", 10, 0, 4000, 3000, "sink_port='3'"));
    EXPECT_EQ(initWith(sensorAndBackEnd("first:in") + first + stage("last", 2, "first:out", "video", plain("l", 11)) +
                       streamSink("video", 2, "last:out")),
              StatusOk);
    EXPECT_EQ(computed(), 1U);
    EXPECT_EQ(recordsOf(2), Lines({"2:11 1 history 4000x3000>2000x1500"}));
    EXPECT_EQ(sourceHistory(), uncropped(4000, 3000, 4000, 3000)) << "not what the last context began with";
    EXPECT_TRUE(logged(kError, "inputHistory:" + uncropped(4000, 3000, 2000, 1500)));
}

// Without a kernel that names it, nothing is stored for the port.
TEST_F(StreamHandlingTest, ContextWhosePeerStoredNothingTakesTheSource)
{
    const std::string first = stage("first", 1, "csi:out", "last:in", halving("k", 10, 0, 4000, 3000));
    EXPECT_EQ(initWith(sensorAndBackEnd("first:in") + first + stage("last", 2, "first:out", "video", plain("l", 11)) +
                       streamSink("video", 2, "last:out")),
              StatusOk);
    EXPECT_EQ(computed(), 2U);
    EXPECT_EQ(recordsOf(2), Lines({"2:11 1 history 4000x3000>4000x3000"}));
}

// The history that the first of two contexts finds is stored for the other one.
TEST_F(StreamHandlingTest, ContextsBehindOnePortComputeItsHistoryOnce)
{
    EXPECT_EQ(initWith(sensorAndBackEnd("a:in") + stage("a", 1, "csi:out", "video", plain("k", 10)) +
                       stage("b", 2, "csi:out", "stills", plain("l", 11)) + streamSink("video", 1, "a:out") +
                       streamSink("stills", 2, "b:out")),
              StatusOk);
    EXPECT_EQ(computed(), 1U);
    EXPECT_EQ(recordsOf(2), Lines({"2:11 1 history 4000x3000>4000x3000"}));
}

TEST_F(StreamHandlingTest, FirstActiveSourceCounts)
{
    const std::string chain =
        stage("isp", 1, "buffer_src0:port_0", "video", plain("k", 10)) + streamSink("video", 1, "isp:out");
    const std::string tpg = element("source", "tpg", "", output("port_0", "none", size(320, 200)));
    EXPECT_EQ(initWith(tpg + bufferSource("isp:in") + chain), StatusOk);
    EXPECT_TRUE(logged(kDebug, "Found 2 active sources from the descriptor."));
    EXPECT_EQ(sourceHistory(), uncropped(640, 480, 640, 480)) << "buffer_src0 stands before tpg in the vocabulary";
    EXPECT_EQ(initWith(bufferSource("isp:in", 640, 480, "enabled='0'") +
                       element("source", "buffer_src1", "", output("port_0", "", size(320, 200))) + chain),
              StatusOk);
    EXPECT_EQ(recordsOf(1), Lines({"1:10 1 history 320x200>320x200"}));
}

TEST_F(StreamHandlingTest, ContextWithoutInputNeedsASourceThatIsKnown)
{
    EXPECT_EQ(initWith(element("source", "camera", "", output("port_0", "", size(640, 480))) +
                       group("isp", "stream_id='3'", output("out", "video") + plain("k", 10)) +
                       streamSink("video", 3, "isp:out")),
              StatusMissingData);
    EXPECT_EQ(complaints(), Lines({"16 No support for source of name: camera", "16 No Input port or source in stream 3",
                                   kGenerationFailed}));
    EXPECT_EQ(sourceHistory(), uncropped(0, 0, 0, 0));
    EXPECT_TRUE(notLogged("Enter populateKernelArray"));
}

TEST_F(StreamHandlingTest, ContextThatNothingIsKnownAboutNeedsASourceThatIsKnown)
{
    EXPECT_EQ(initWith(element("source", "buffer_src0", "", output("port_0", "isp:in")) +
                       stage("isp", 3, "buffer_src0:port_0", "video", plain("k", 10)) +
                       streamSink("video", 3, "isp:out")),
              StatusMissingData);
    EXPECT_EQ(picked({"16 Failed to get resolution", "16 No ", "16 Gen"}),
              Lines({"16 Failed to get resolution history for source: buffer_src0",
                     "16 No kernel history or source in stream 3", kGenerationFailed}));
    EXPECT_TRUE(notLogged("Enter populateKernelArray"));
}

TEST_F(StreamHandlingTest, HistoryOfTheSourceSurvivesALaterFailure)
{
    // The kernels of stream 3 are numbered 0 and 2.
    EXPECT_EQ(initWith(bufferSource("isp:in") +
                       stage("isp", 3, "buffer_src0:port_0", "video", kernel("k", 10, 0) + kernel("l", 11, 2)) +
                       streamSink("video", 3, "isp:out")),
              StatusMissingObject);
    EXPECT_EQ(sourceHistory(), uncropped(640, 480, 640, 480));
}

TEST_F(StreamHandlingTest, InputWhosePeerVanishesEndsTheFilling)
{
    loadGraph(bufferSource("isp:in") + group("isp", "stream_id='3'", output("out", "video") + plain("k", 10)) +
              streamSink("video", 3, "isp:out"));
    ForgetfulRoot foreign;
    MockNode peer;
    foreign.mPeer = &peer;
    auto* const vanishing = new PortBelow(foreign);
    vanishing->addValue(NUXO_KEY_TYPE, std::string("port"));
    vanishing->addValue(NUXO_KEY_NAME, std::string("in"));
    vanishing->addValue(NUXO_KEY_DIRECTION, 0);
    vanishing->addValue(NUXO_KEY_PEER, std::string("far:out"));
    node("isp")->insertDescendant(vanishing, key("out"));
    size_t endings = 0;
    for (int answers = 0; answers < 12; ++answers) {
        foreign.mAnswers = answers;
        clearLog();
        const int status = init();
        if (count(kError, "No input peer for stream 3") == 0) {
            EXPECT_EQ(status, StatusOk) << answers;
            continue;
        }
        ++endings;
        EXPECT_EQ(status, StatusMissingData);
        EXPECT_EQ(complaints(), Lines({"16 Failed to find peer by name far:out", "16 No input peer for stream 3",
                                       kGenerationFailed}));
    }
    EXPECT_GT(endings, 0U);
    renew();
}

TEST_F(StreamHandlingTest, ContextWithoutKernelsIsNoContext)
{
    EXPECT_EQ(initWith(bufferSource("isp:in") + stage("isp", 1, "buffer_src0:port_0", "video", "") +
                       streamSink("video", 1, "isp:out")),
              StatusBadArgument);
    EXPECT_EQ(complaints(), Lines({"16 Could not find the exec ctx 1 in the run kernels map", kGenerationFailed}));
}

TEST_F(StreamHandlingTest, HardwareOfAnotherStreamIsNoContext)
{
    const std::string csi =
        element("hw", "csi", "stream_id='4'", input("in", "buffer_src0:port_0") + output("out", "isp:in"));
    EXPECT_EQ(initWith(bufferSource("csi:in") + csi + stage("isp", 1, "csi:out", "video", plain("k", 10)) +
                       streamSink("video", 1, "isp:out")),
              StatusBadArgument);
    EXPECT_EQ(complaints(), Lines({"16 Could not find the exec ctx 4 in the run kernels map", kGenerationFailed}));
    EXPECT_EQ(records(0).kernel_count, 1U);
}

// Contexts are counted by exec_ctx_id, chains are followed by stream_id.
TEST_F(StreamHandlingTest, StreamThatIsNoExecutionContextIsNoContext)
{
    renew(false);
    const std::string isp = group("isp", "stream_id='1' exec_ctx_id='7'",
                                  input("in", "buffer_src0:port_0") + output("out", "video") + plain("k", 10));
    EXPECT_EQ(initWith(bufferSource("isp:in") + isp + streamSink("video", 1, "isp:out")), StatusBadArgument);
    EXPECT_EQ(complaints(), Lines({"16 Could not find the exec ctx 1 in the run kernels map", kGenerationFailed}));
}

TEST_F(StreamHandlingTest, ArrayThatCannotBeFilledEndsTheFilling)
{
    const std::string good =
        stage("a", 2, "buffer_src0:port_0", "stills", plain("m", 20)) + streamSink("stills", 2, "a:out");
    const std::string bad = stage("isp", 3, "buffer_src0:port_0", "video", kernel("k", 10, 0) + kernel("l", 11, 2)) +
                            streamSink("video", 3, "isp:out");
    EXPECT_EQ(initWith(bufferSource("isp:in") + bad + good), StatusMissingObject);
    EXPECT_EQ(complaints(), Lines({"16 Error: Bad kernel id(s). Kernel ids need to run from 0 to n. Check the GDF.",
                                   "16 Creating kernel list for exec ctx id 3 failed", kGenerationFailed}));
    EXPECT_EQ(recordsOf(2), Lines({"2:20 1 history 640x480>640x480"})) << "what was filled before stays";
}

} // namespace

} // namespace graphtest
