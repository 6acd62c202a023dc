// SPDX-License-Identifier: Apache-2.0
// Which graphs the graph analysis handles, and that the questions then go to it.
#include "kernels/KernelsFixture.h"

#include <tuple>

namespace graphtest {

namespace {

class AnalysisPathTest : public KernelsTest {
protected:
    static constexpr const char* kStarted = "--------- GraphSettings analysis started !!---------------";

    static std::string link(const std::string& source, const std::string& destination)
    {
        return "<klink source='" + source + "' destination='" + destination + "'/>";
    }

    /// A group of stream 1 and context 5 with two linked kernels, and what belongs around it.
    static std::string linkedStage(const std::string& kind = "program_group")
    {
        const std::string kernels = kernel("first", 10, 0) + kernel("second", 11, 1) + link("in", "first:0") +
                                    link("first:0", "second:0") + link("second:0", "out");
        return bufferSource("isp:in") +
               element(kind, "isp", "stream_id='1' exec_ctx_id='5' tuning_mode='3'",
                       input("in", "buffer_src0:port_0") + output("out", "video") + kernels) +
               sink("video", "stream_id='1' exec_ctx_id='5' peer='isp:out'");
    }

    static std::string connections()
    {
        return connection("buffer_src0:port_0", "isp:in") + connection("isp:out", "video");
    }

    int initLinked(const std::string& version) { return initWith(linkedStage(), version, connections()); }

    /// The same group without links.
    static std::string unlinkedStage()
    {
        return bufferSource("isp:in") +
               stage("isp", 1, "buffer_src0:port_0", "video", kernel("first", 10, 0) + kernel("second", 11, 1)) +
               streamSink("video", 1, "isp:out");
    }

    static Lines uuids(const qv_isp_zmt_program_group& pg)
    {
        Lines all;
        for (uint32_t i = 0; i < pg.kernel_count; ++i) all.push_back(std::to_string(pg.run_kernels[i].kernel_uuid));
        return all;
    }

    /// Whether questions go to the analysis, told by what it says about an unknown context.
    bool isOnAnalysisPath()
    {
        clearLog();
        mUtils->dumpKernels(77);
        return lines() != Lines({"16 COULD NOT FIND index for exec ctx id 77 "});
    }
};

TEST_F(AnalysisPathTest, VersionsAboveFiveAreAnalysed)
{
    for (const char* const version : {"KVA6", "KVA7", "xKVA6.1"}) {
        renew();
        const std::string kind = std::string(version) == "KVA7" ? "compute_block" : "program_group";
        EXPECT_EQ(initWith(linkedStage(kind), version, connections()), StatusOk) << version;
        EXPECT_TRUE(logged(kDebug, kStarted));
        EXPECT_TRUE(notLogged("TEV utils initialized"));
        EXPECT_TRUE(notLogged("Allocated"));
        EXPECT_EQ(uuids(records(1)), Lines({"10", "11"})) << version;
    }
}

TEST_F(AnalysisPathTest, VersionFiveIsNotAnalysed)
{
    EXPECT_EQ(initWith(unlinkedStage()), StatusOk);
    EXPECT_TRUE(notLogged(kStarted));
    EXPECT_FALSE(isOnAnalysisPath());
}

TEST_F(AnalysisPathTest, KernelLinksAreAnalysedWhateverTheVersion)
{
    for (const char* const version : {"KVA5", "KVA4"}) {
        EXPECT_EQ(initLinked(version), StatusOk) << version;
        EXPECT_TRUE(logged(kDebug, kStarted));
        EXPECT_TRUE(notLogged("TEV utils initialized"));
        EXPECT_TRUE(isOnAnalysisPath());
        EXPECT_EQ(uuids(records(1)), Lines({"10", "11"})) << version;
    }
}

TEST_F(AnalysisPathTest, StatusOfTheAnalysisIsPassedOn)
{
    const std::string twoOfOneName = linkedStage() + "<hw name='other'/>";
    loadGraph(twoOfOneName, "KVA6", connections());
    replace(*node("other"), NUXO_KEY_NAME, std::string("isp"));
    EXPECT_EQ(init(), StatusBadState);
    EXPECT_TRUE(logged(kError, "Graph node isp insertion failed"));
    EXPECT_TRUE(notLogged("Generating kernel lists failed"));
    EXPECT_TRUE(isOnAnalysisPath());
}

TEST_F(AnalysisPathTest, LinksWithoutAGraphElementAreRefusedByTheAnalysis)
{
    load(linkedStage());
    EXPECT_EQ(init(), StatusMissingObject);
    EXPECT_TRUE(logged(kError, "Failed to locate graph node - Invalid settings"));
}

TEST_F(AnalysisPathTest, SensorDataIsAnsweredAfterAFailedAnalysis)
{
    load(linkedStage());
    node("buffer_src0")->addValue(NUXO_KEY_CMC_TAG, std::string("rear"));
    ASSERT_EQ(init(), StatusMissingObject);
    std::string tag;
    EXPECT_EQ(mUtils->getSensorCmcId(tag), StatusOk);
    EXPECT_EQ(tag, "rear");
}

TEST_F(AnalysisPathTest, RecordsOfAStreamComeFromTheAnalysis)
{
    ASSERT_EQ(initLinked("KVA6"), StatusOk);
    const qv_isp_zmt_program_group pg = records(1);
    EXPECT_EQ(uuids(pg), Lines({"10", "11"}));
    EXPECT_EQ(pg.operation_mode, 3U);
    ASSERT_EQ(pg.kernel_count, 2U);
    ASSERT_NE(pg.run_kernels[0].resolution_history, nullptr);
    EXPECT_EQ(ZmtTevUtils::resInfoToStr(*pg.run_kernels[0].resolution_history), uncropped(640, 480, 640, 480));
}

TEST_F(AnalysisPathTest, UnknownStreamIsReportedByTheAnalysisAndHasNoKernels)
{
    ASSERT_EQ(initLinked("KVA6"), StatusOk);
    clearLog();
    qv_isp_zmt_program_group pg = {9, nullptr, 8};
    mUtils->getProgramGroup(7, pg);
    EXPECT_EQ(pg.kernel_count, 0U);
    EXPECT_EQ(pg.operation_mode, 8U);
    EXPECT_TRUE(loggedExactly({"16 Invalid subgraph(stream_id) id 7"}));
    clearLog();
    mUtils->getProgramGroup(-7, pg);
    EXPECT_TRUE(loggedExactly({"16 Invalid subgraph(stream_id) id -7"}));
}

TEST_F(AnalysisPathTest, ContextsAreToldApartAsTheConstructorWasTold)
{
    renew(false);
    ASSERT_EQ(initLinked("KVA6"), StatusOk);
    EXPECT_EQ(uuids(records(5)), Lines({"10", "11"}));
    clearLog();
    EXPECT_EQ(records(1).kernel_count, 0U);
    EXPECT_TRUE(loggedExactly({"16 Invalid subgraph(exec_ctx_id) id 1"}));
    renew(true);
    ASSERT_EQ(initLinked("KVA5"), StatusOk); // by its links
    EXPECT_EQ(uuids(records(1)), Lines({"10", "11"}));
    clearLog();
    EXPECT_EQ(records(5).kernel_count, 0U);
    EXPECT_TRUE(loggedExactly({"16 Invalid subgraph(stream_id) id 5"}));
}

TEST_F(AnalysisPathTest, RecordsOfAProgramGroupComeFromTheAnalysis)
{
    ASSERT_EQ(initLinked("KVA6"), StatusOk);
    qv_isp_zmt_program_group pg = {9, nullptr, 8};
    EXPECT_EQ(mUtils->getProgramGroup(node("isp"), pg), StatusOk);
    EXPECT_EQ(uuids(pg), Lines({"10", "11"}));
    EXPECT_EQ(pg.operation_mode, 3U);
    clearLog();
    pg = {9, nullptr, 8};
    EXPECT_EQ(mUtils->getProgramGroup(node("video"), pg), StatusBadArgument);
    EXPECT_EQ(picked({"16 Could not find the PG "}).size(), 1U);
    EXPECT_TRUE(notLogged("in the PG memory pool map"));
    EXPECT_EQ(pg.kernel_count, 0U);
    EXPECT_EQ(pg.run_kernels, nullptr);
    EXPECT_EQ(pg.operation_mode, 0U);
}

TEST_F(AnalysisPathTest, NullProgramGroupIsRefusedBeforeTheAnalysisIsAsked)
{
    ASSERT_EQ(initLinked("KVA6"), StatusOk);
    clearLog();
    qv_isp_zmt_program_group pg = {9, nullptr, 8};
    EXPECT_EQ(mUtils->getProgramGroup(nullptr, pg), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 Invalid parameter provided (nullptr)"}));
    EXPECT_EQ(pg.kernel_count, 9U);
}

TEST_F(AnalysisPathTest, DumpsComeFromTheAnalysis)
{
    ASSERT_EQ(initLinked("KVA6"), StatusOk);
    clearLog();
    mUtils->dumpKernels(1);
    EXPECT_FALSE(notLogged("FOUND  subgraph id 1 [stream_id] dumping 2 kernels:"));
    EXPECT_EQ(picked({"16 kernel_uuid"}).size(), 2U);
    EXPECT_EQ(picked({"16 kernel_uuid: 10 [ENABLED", "16 kernel_uuid: 11 [ENABLED"}).size(), 2U);
    clearLog();
    mUtils->dumpKernels(2);
    EXPECT_TRUE(logged(kError, "subgraph id 2 not FOUND"));
    EXPECT_TRUE(notLogged("exec ctx id"));
}

TEST_F(AnalysisPathTest, SourceHistoryComesFromTheAnalysis)
{
    ASSERT_EQ(initLinked("KVA6"), StatusOk);
    EXPECT_EQ(sourceHistory(), uncropped(640, 480, 640, 480));
}

TEST_F(AnalysisPathTest, VersionIsUnknownBeforeInitialisation)
{
    EXPECT_FALSE(mUtils->detectNewGraphVersion());
    EXPECT_TRUE(loggedExactly({kNotInitialised}));
    EXPECT_FALSE(mUtils->nodesHaveKernelLinks());
    EXPECT_FALSE(isOnAnalysisPath());
}

TEST_F(AnalysisPathTest, DetectedVersionDecidesAboutThePath)
{
    for (const auto& [version, isNew] : {std::pair("KVA5", false), std::pair("KVA6", true), std::pair("KVA7", true)}) {
        initWith(unlinkedStage(), version);
        clearLog();
        EXPECT_EQ(mUtils->detectNewGraphVersion(), isNew) << version;
        EXPECT_TRUE(loggedExactly({}));
        EXPECT_EQ(isOnAnalysisPath(), isNew) << version;
    }
}

TEST_F(AnalysisPathTest, DetectionOverridesWhatKernelLinksDecided)
{
    ASSERT_EQ(initLinked("KVA5"), StatusOk);
    EXPECT_TRUE(isOnAnalysisPath());
    EXPECT_FALSE(mUtils->detectNewGraphVersion());
    EXPECT_FALSE(isOnAnalysisPath());
    EXPECT_EQ(records(1).kernel_count, 0U); // the arrays of this path were never built
    EXPECT_TRUE(logged(kError, "No kernels found with stream id 1"));
    EXPECT_TRUE(mUtils->nodesHaveKernelLinks());
    EXPECT_TRUE(isOnAnalysisPath());
}

TEST_F(AnalysisPathTest, KernelLinksAreLookedForAmongTheChildrenOfProgramGroups)
{
    const std::string deepLink = element("kernel", "linked", "pal_uuid='1' id='2'", link("a", "b"));
    initWith(unlinkedStage() + element("hw", "linked_hw", "", link("a", "b")) +
             group("deep", "stream_id='3'", deepLink));
    EXPECT_FALSE(mUtils->nodesHaveKernelLinks());
    EXPECT_FALSE(isOnAnalysisPath());
    node("isp")->insertDescendant(new GraphConfigNode, NUXO_KEY_KLINK);
    EXPECT_TRUE(mUtils->nodesHaveKernelLinks());
    EXPECT_TRUE(isOnAnalysisPath());
}

// Clients see the version through the nodes that count as program groups: compute blocks in generation 7 alone.
TEST_F(AnalysisPathTest, KernelLinksMakeGenerationSixOfSeven)
{
    initWith(linkedStage() + element("compute_block", "block", "stream_id='40'"), "KVA7", connections());
    std::vector<int> ids;
    EXPECT_EQ(mUtils->getStreamIds(ids, false), StatusOk);
    EXPECT_EQ(ids, std::vector<int>({40}));
    EXPECT_TRUE(mUtils->nodesHaveKernelLinks());
    ids.clear();
    EXPECT_EQ(mUtils->getStreamIds(ids, false), StatusOk);
    EXPECT_EQ(ids, std::vector<int>({1}));
}

} // namespace

} // namespace graphtest
