// SPDX-License-Identifier: Apache-2.0
#include "kernels/KernelsFixture.h"

namespace graphtest {

namespace {

/// A foreign node that is its own root.
class ForeignRoot : public ForeignNode {
public:
    IGraphConfig* getRoot() const override { return const_cast<ForeignRoot*>(this); }
};

class InitialisationTest : public KernelsTest {
protected:
    /// A source, one program group of stream 1 with two kernels, and a sink.
    static std::string oneStage()
    {
        return bufferSource("isp:in") +
               stage("isp", 1, "buffer_src0:port_0", "video", kernel("first", 10, 0) + kernel("second", 11, 1)) +
               streamSink("video", 1, "isp:out");
    }

    static inline const Lines kOneStageRecords = {"1:10 1 history 640x480>640x480", "1:11 1 history 640x480>640x480"};
};

TEST_F(InitialisationTest, NullGraphIsRefused)
{
    EXPECT_EQ(mUtils->initTevUtils(nullptr), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 GC Handle NULL"}));
}

TEST_F(InitialisationTest, NullGraphLeavesTheEarlierOneInUse)
{
    ASSERT_EQ(initWith(oneStage()), StatusOk);
    const qv_isp_zmt_program_group before = records(1);
    EXPECT_EQ(mUtils->initTevUtils(nullptr), StatusBadArgument);
    EXPECT_EQ(records(1).run_kernels, before.run_kernels);
    EXPECT_EQ(recordTexts(before), kOneStageRecords);
    EXPECT_EQ(sourceHistory(), uncropped(640, 480, 640, 480));
}

TEST_F(InitialisationTest, NodeWithoutARootIsRefused)
{
    const ForeignNode rootless;
    EXPECT_EQ(mUtils->initTevUtils(&rootless), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 GC Handle root is NULL"}));
}

TEST_F(InitialisationTest, NodeWithoutARootEndsTheUseOfTheEarlierGraph)
{
    const ForeignNode rootless;
    for (const char* const version : {"KVA5", "KVA6", "KVA7"}) {
        initWith(oneStage(), version);
        clearLog();
        EXPECT_EQ(mUtils->initTevUtils(&rootless), StatusBadArgument);
        EXPECT_TRUE(loggedExactly({"16 GC Handle root is NULL"})) << version;
        clearLog();
        EXPECT_EQ(recordsOf(1), Lines());
        EXPECT_TRUE(loggedExactly({"16 No kernels found with stream id 1"})) << version;
        clearLog();
        std::string tag;
        EXPECT_EQ(mUtils->getSensorCmcId(tag), StatusMissingObject);
        EXPECT_TRUE(loggedExactly({kNotInitialised})) << version;
        EXPECT_EQ(sourceHistory(), uncropped(0, 0, 0, 0));
    }
}

TEST_F(InitialisationTest, GraphWithOneStageGetsItsRecords)
{
    EXPECT_EQ(initWith(oneStage()), StatusOk);
    EXPECT_EQ(recordsOf(1), kOneStageRecords);
    EXPECT_EQ(complaints(), Lines());
}

TEST_F(InitialisationTest, StepsAreLoggedInTheirOrder)
{
    EXPECT_EQ(initWith(oneStage()), StatusOk);
    const Lines steps = {"2 Detected KVA version in the graph: KVA5 enum[5]",
                         "2 video is connected to exec-ctx-id 1",
                         "2 Generating stream chain for exec-ctx-id 1",
                         "2 Trying to find upstream contexts from 1",
                         "2 Adding to stream-chain[1] the following items:",
                         "2 stream-chain[0]: ctx 1 - out",
                         "2 Allocated 2 kernels for pg isp",
                         "2 Allocated 2 kernels for exec ctx 1. Index: 0",
                         "2 Found 1 active sources from the descriptor.",
                         "2 Handling stream-chain ctx 1",
                         "2 Handling stream port ctx-1 - out",
                         "2 Enter populateKernelArray for ctx 1, index 0",
                         "2 TEV utils initialized with 1 exec contexts",
                         "2 TEV utils exec-context 1 has 2 kernels"};
    EXPECT_EQ(picked({"2 Detected", "2 video", "2 Generating", "2 Trying", "2 Found", "2 Adding", "2 stream-chain",
                      "2 Allocated", "2 Handling stream", "2 Enter", "2 TEV"}),
              steps);
}

TEST_F(InitialisationTest, ContextsAreListedInAscendingOrder)
{
    EXPECT_EQ(initWith(bufferSource("c:in") + stage("c", 30, "buffer_src0:port_0", "", kernel("k", 1, 0)) +
                       stage("a", -2, "buffer_src0:port_0", "", kernel("l", 2, 0) + kernel("m", 3, 1)) +
                       stage("b", 4, "buffer_src0:port_0", "", kernel("n", 4, 0))),
              StatusOk);
    EXPECT_EQ(picked({"2 TEV"}),
              Lines({"2 TEV utils initialized with 3 exec contexts", "2 TEV utils exec-context -2 has 2 kernels",
                     "2 TEV utils exec-context 4 has 1 kernels", "2 TEV utils exec-context 30 has 1 kernels"}));
}

TEST_F(InitialisationTest, FailedGenerationIsReportedAndItsContextsAreListed)
{
    // No source.
    EXPECT_EQ(initWith(stage("isp", 1, "", "", kernel("k", 1, 0))), StatusBadState);
    EXPECT_EQ(picked({"16 Generating", "2 TEV"}),
              Lines({"16 Generating kernel lists failed", "2 TEV utils initialized with 1 exec contexts",
                     "2 TEV utils exec-context 1 has 1 kernels"}));
    // A sink that belongs to no stream.
    EXPECT_EQ(initWith(oneStage() + sink("stray", "peer='isp:out'")), StatusMissingData);
    EXPECT_EQ(picked({"16 Generating", "2 TEV"}),
              Lines({"16 Generating kernel lists failed", "2 TEV utils initialized with 0 exec contexts"}));
}

TEST_F(InitialisationTest, GraphStaysInUseWhenTheGenerationFails)
{
    ASSERT_EQ(initWith(oneStage() + sink("stray", "peer='isp:out'")), StatusMissingData);
    std::vector<int> ids;
    EXPECT_EQ(mUtils->getStreamIds(ids, false), StatusOk);
    EXPECT_EQ(ids, std::vector<int>({1}));
    clearLog();
    std::string tag;
    EXPECT_EQ(mUtils->getSensorCmcId(tag), StatusBadState); // there is a source, without a tag
    EXPECT_TRUE(notLogged("not initialized"));
}

TEST_F(InitialisationTest, AnyNodeOfTheGraphStandsForItButVersionIsReadBelowIt)
{
    loadGraph(oneStage(), "KVA7");
    EXPECT_EQ(mUtils->initTevUtils(node("isp")), StatusOk);
    EXPECT_TRUE(logged(kDebug, "Detected KVA version in the graph:  enum[0]"));
    EXPECT_TRUE(logged(kDebug, "TEV utils initialized with 1 exec contexts"));
    EXPECT_EQ(recordsOf(1), kOneStageRecords);
}

TEST_F(InitialisationTest, UnknownVersionsKeepTheOwnPath)
{
    for (const char* const version : {"", "KVA4", "KVA8", "kva6", "6"}) {
        EXPECT_EQ(initWith(oneStage(), version), StatusOk) << version;
        EXPECT_TRUE(logged(kError, "KVA version not supported in NUXO Isp Utils."));
        EXPECT_TRUE(logged(kDebug, "TEV utils initialized with 1 exec contexts"));
        EXPECT_EQ(recordsOf(1), kOneStageRecords) << version;
        EXPECT_FALSE(mUtils->detectNewGraphVersion());
    }
}

TEST_F(InitialisationTest, GraphWithoutAnythingHasNoSource)
{
    EXPECT_EQ(initWith(""), StatusBadState);
    EXPECT_EQ(picked({"16 ERROR", "16 Generating", "2 TEV"}),
              Lines({"16 ERROR: No active sources. Check that node with type source exists",
                     "16 Generating kernel lists failed", "2 TEV utils initialized with 0 exec contexts"}));
}

TEST_F(InitialisationTest, ForeignRootHasNoSource)
{
    const ForeignRoot foreign;
    EXPECT_EQ(mUtils->initTevUtils(&foreign), StatusBadState);
    EXPECT_TRUE(logged(kError, "Generating kernel lists failed"));
    EXPECT_TRUE(logged(kDebug, "TEV utils initialized with 0 exec contexts"));
    EXPECT_EQ(recordsOf(0), Lines());
}

TEST_F(InitialisationTest, GraphThatIsBuiltFromFilesGetsItsRecords)
{
    const Tree descriptorTree = descriptor("<nodes>" + oneStage() + "</nodes><graphs><graph id='7'>" +
                                               connection("buffer_src0:port_0", "isp:in") +
                                               connection("isp:out", "video") + "</graph></graphs>",
                                           "KVA5");
    const Tree settingsTree =
        settings("<settings key='1' id='7'><buffer_src0><port_0 width='320' height='200'/>"
                 "</buffer_src0><isp><out width='320' height='200'/></isp><video width='320' height='200'/>"
                 "</settings>",
                 "KVA5.1");
    GraphQueryManager manager;
    manager.setGraphDescriptor(descriptorTree.get());
    manager.setGraphSettings(settingsTree.get());
    IGraphConfig* built = nullptr;
    ASSERT_EQ(manager.createGraph(&at(*settingsTree, "settings"), &built), StatusOk);
    EXPECT_EQ(mUtils->initTevUtils(built), StatusOk);
    EXPECT_EQ(recordsOf(1), Lines({"1:10 1 history 320x200>320x200", "1:11 1 history 320x200>320x200"}));
    EXPECT_TRUE(logged(kDebug, "Detected KVA version in the graph: KVA5 enum[5]"));
    renew();
    manager.destroyGraph(built);
}

} // namespace

} // namespace graphtest
