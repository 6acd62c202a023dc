// SPDX-License-Identifier: Apache-2.0
// What the example files hold, as the drawings beside them show it. Ports that a setting switches off, private ports and
// ports that no connection reaches bound a subgraph too, so they follow from the files and not from the drawings.
#include "camera/ContextFixture.h"

#include <set>
#include <sstream>
#include <stdexcept>

namespace graphtest {

namespace {

/// A subgraph by its context and what bounds it; lists of names in any order.
struct Subgraph {
    int value;
    std::string groups; ///< program groups
    std::string inputs;
    std::string outputs;
    std::string firstInput;
};

/// What one setting must give.
struct Example {
    int key;
    std::string source;
    std::string sinks;
    std::vector<Subgraph> subgraphs;
    int emptySubgraph;         ///< one without nodes in this setting
    std::string sourceOutputs; ///< its outputs, reckoned from the source
    int contextStatus = StatusOk;
    std::string connections = {}; ///< source>sink of those that cross contexts
    std::string outputPeers = {};
    std::string inputPeers = {};
    std::map<int, int> tuning = {}; ///< mode of each context
};

std::ostream& operator<<(std::ostream& stream, const Example& example)
{
    return stream << example.key;
}

std::vector<std::string> words(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> all;
    for (std::string word; stream >> word;) all.push_back(word);
    std::sort(all.begin(), all.end());
    return all;
}

class ExampleGraph : public ContextTest {
protected:
    ~ExampleGraph() override { mManager.destroyGraph(mGraph); }

    /// Builds the graph of a setting; the first digit of the key is the generation.
    void build(int key)
    {
        mManager.destroyGraph(mGraph);
        mGraph = nullptr;
        const std::string generation = NUXO_SOURCE_DIR "/examples/kva" + std::to_string(key / 10000);
        mDescriptor = parseFile(generation + "_descriptor.xml");
        mSettings = parseFile(generation + "_settings.xml");
        mManager.setGraphDescriptor(mDescriptor.get());
        mManager.setGraphSettings(mSettings.get());
        std::vector<IGraphConfig*> found;
        ASSERT_EQ(mManager.queryGraphs({{ItemUID{NUXO_KEY_KEY}, std::to_string(key)}}, found, true), StatusOk);
        ASSERT_EQ(found.size(), 1U);
        ASSERT_EQ(mManager.createGraph(found[0], &mGraph), StatusOk);
        clearLog();
    }

    /// The boundary ports that @p ask gives, sorted; none when it fails with StatusBadArgument.
    template <class Ask> static std::vector<std::string> ports(Ask&& ask)
    {
        std::vector<IGraphConfig*> found;
        const int status = ask(found);
        EXPECT_EQ(status, found.empty() ? StatusBadArgument : StatusOk);
        return words(paths(found));
    }

    void expectSubgraph(uint32_t key, const Subgraph& subgraph, uint32_t type = NUXO_KEY_PROGRAM_GROUP)
    {
        const int value = subgraph.value;
        const auto in = [&](auto& found) { return GraphCameraUtil::getInputPorts(key, value, *mGraph, found, type); };
        const auto out = [&](auto& found) { return GraphCameraUtil::getOutputPorts(key, value, *mGraph, found, type); };
        EXPECT_EQ(ports(in), words(subgraph.inputs)) << value;
        EXPECT_EQ(ports(out), words(subgraph.outputs)) << value;

        IGraphConfig* first = nullptr;
        EXPECT_EQ(GraphCameraUtil::getInputPort(key, value, mGraph, &first, type), StatusOk);
        EXPECT_EQ(paths({first}), subgraph.firstInput);

        std::vector<IGraphConfig*> groups;
        const int status = GraphCameraUtil::getProgramGroups(key, value, mGraph, groups);
        EXPECT_EQ(status, subgraph.groups.empty() ? StatusMissingData : StatusOk) << value;
        EXPECT_EQ(words(paths(groups)), words(subgraph.groups)) << value;
    }

    void expectContexts(const Example& example)
    {
        std::set<int> contexts;
        std::map<int, int> tuning;
        EXPECT_EQ(GraphCameraUtil::getExecCtxIds(*mGraph, contexts), example.contextStatus);
        std::set<int> expected;
        for (const auto& entry : example.tuning) expected.insert(entry.first);
        EXPECT_EQ(contexts, expected);
        EXPECT_EQ(GraphCameraUtil::getExecCtxIdsTuningMap(*mGraph, tuning), example.contextStatus);
        EXPECT_EQ(tuning, example.tuning);
    }

    void expectConnections(const Example& example)
    {
        std::vector<std::pair<std::string, std::string>> connections;
        Lines inputPeers;
        Lines outputPeers;
        EXPECT_EQ(GraphCameraUtil::getExecCtxConnectionPorts(mGraph, connections, inputPeers, outputPeers),
                  example.connections.empty() ? StatusBadArgument : StatusOk);
        std::vector<std::string> crossing;
        for (const auto& ends : connections) crossing.push_back(ends.first + ">" + ends.second);
        std::sort(crossing.begin(), crossing.end());
        std::sort(inputPeers.begin(), inputPeers.end());
        std::sort(outputPeers.begin(), outputPeers.end());
        EXPECT_EQ(crossing, words(example.connections));
        EXPECT_EQ(inputPeers, words(example.inputPeers));
        EXPECT_EQ(outputPeers, words(example.outputPeers));
    }

    void expectEnds(const Example& example)
    {
        std::vector<IGraphConfig*> sources;
        EXPECT_EQ(GraphCameraUtil::getSourceNode(mGraph, sources), StatusOk);
        EXPECT_EQ(paths(sources), example.source);
        const bool hasType = example.source == "sensor"; // the other sources tell none
        std::string sensorType;
        EXPECT_EQ(GraphCameraUtil::sensorGetType(mGraph, sensorType), hasType ? StatusOk : StatusNotFound);
        EXPECT_EQ(sensorType, hasType ? "RAW" : "NONE");

        std::vector<IGraphConfig*> sinks;
        EXPECT_EQ(GraphCameraUtil::graphGetSinksByName("", mGraph, sinks), StatusOk);
        EXPECT_EQ(words(paths(sinks)), words(example.sinks));
        for (const std::string& name : words(example.sinks)) { // no name is part of another here
            sinks.clear();
            EXPECT_EQ(GraphCameraUtil::graphGetSinksByName(name, mGraph, sinks), StatusOk);
            EXPECT_EQ(paths(sinks), name);
        }
    }

    static Tree parseFile(const std::string& name)
    {
        NUXO::NUXOParser parser;
        IGraphConfig* root = nullptr;
        parser.parseNUXOXmlFile(name.c_str(), &root);
        if (root == nullptr) throw std::runtime_error("nothing parsed from " + name);
        return Tree(&asNode(root));
    }

    Tree mDescriptor;
    Tree mSettings;
    GraphQueryManager mManager;
    IGraphConfig* mGraph = nullptr;
};

class ExampleContextsTest : public ExampleGraph, public ::testing::WithParamInterface<Example> {
protected:
    void SetUp() override { build(GetParam().key); }

    /// Checks each subgraph, told apart by @p key.
    void expectSubgraphs(uint32_t key)
    {
        const Example& example = GetParam();
        for (const Subgraph& subgraph : example.subgraphs) expectSubgraph(key, subgraph, type());
        const auto out = [&](auto& found) {
            return GraphCameraUtil::getOutputPorts(key, example.emptySubgraph, *mGraph, found, type());
        };
        EXPECT_EQ(ports(out), words(example.sourceOutputs));
    }

    int generation() const { return GetParam().key / 10000; }
    uint32_t type() const { return generation() < 7 ? NUXO_KEY_PROGRAM_GROUP : NUXO_KEY_COMPUTE_BLOCK; }
};

TEST_P(ExampleContextsTest, AreThoseOfTheProgramGroups)
{
    expectContexts(GetParam());
}

TEST_P(ExampleContextsTest, AreConnectedAsDrawn)
{
    expectConnections(GetParam());
}

TEST_P(ExampleContextsTest, BeginAtSourcesAndEndAtSinks)
{
    expectEnds(GetParam());
}

TEST_P(ExampleContextsTest, AreBoundedAsDrawn)
{
    expectSubgraphs(NUXO_KEY_STREAM_ID);
    if (generation() > 5) expectSubgraphs(NUXO_KEY_EXEC_CTX_ID); // stream_id and exec_ctx_id agree there
}

// Generation 5 tells its program groups apart by stream_id alone. Without contexts nothing is in another one, so only the
// outputs to sinks are connections.
const std::string kVideoStatistics = "vf_isa:ae_out>ae_stats_sink vf_isa:awb_out>awb_stats_sink ";
const std::string kVideoGroups = "vf_isa vf_dm vf_gdc vf_ee vf_out";
const Subgraph kPreviewOf5 = {3, "pv_out", "pv_out:input", "pv_out:main_out", "pv_out:input"};

// Off in every one of these settings: raw_out, hist_out, dvs_out; tnr_output and tnr_input are private.
const Subgraph kVideoOf5 = {1, kVideoGroups, "vf_isa:input vf_out:tnr_input",
                            "vf_isa:raw_out vf_isa:ae_out vf_isa:awb_out vf_isa:af_out vf_dm:hist_out vf_gdc:prv_out "
                            "vf_gdc:face_out vf_gdc:dvs_out vf_out:main_out vf_out:tnr_output",
                            "vf_isa:input"};

const Example kGeneration5[] = {
    {50105,
     "sensor",
     "encoder_sink preview_sink ae_stats_sink awb_stats_sink af_stats_sink",
     {kVideoOf5, kPreviewOf5},
     0,
     "csi_be:output csi_be:raw_output sensor:port_1", // no phase detection: port_1 is not connected
     StatusMissingData,
     kVideoStatistics + "vf_isa:af_out>af_stats_sink vf_out:main_out>encoder_sink pv_out:main_out>preview_sink",
     "encoder_sink preview_sink"}, // the setting names the encoder instead of video_sink
    {50108,
     "sensor",
     "video_sink preview_sink face_sink pdaf_sink ae_stats_sink awb_stats_sink af_stats_sink",
     {kVideoOf5, kPreviewOf5, {6, "fc_out", "fc_out:input", "fc_out:main_out", "fc_out:input"}},
     0,
     "csi_be:output csi_be:raw_output csi_be_soc:output",
     StatusMissingData,
     kVideoStatistics + "vf_isa:af_out>af_stats_sink vf_out:main_out>video_sink pv_out:main_out>preview_sink "
                        "fc_out:main_out>face_sink",
     "video_sink preview_sink face_sink"},
    // Only the preview of a test pattern: neither vf_ee nor vf_out, vf_gdc:main_out is off.
    {50302,
     "tpg",
     "preview_sink ae_stats_sink awb_stats_sink",
     {{1, "vf_isa vf_dm vf_gdc", "vf_isa:input",
       "vf_isa:raw_out vf_isa:ae_out vf_isa:awb_out vf_isa:af_out vf_dm:hist_out vf_gdc:main_out vf_gdc:prv_out "
       "vf_gdc:face_out vf_gdc:dvs_out",
       "vf_isa:input"},
      kPreviewOf5},
     0,
     "csi_be:output csi_be:raw_output",
     StatusMissingData,
     kVideoStatistics + "pv_out:main_out>preview_sink",
     "preview_sink"},
    // A buffer source feeds its program group directly.
    {50402,
     "buffer_src1",
     "reproc_sink",
     {{5, "yr_out", "yr_out:input", "yr_out:main_out", "yr_out:input"}},
     1,
     "buffer_src1:port_0",
     StatusMissingData,
     "yr_out:main_out>reproc_sink",
     "reproc_sink"},
};

// In generation 6 streams are contexts, and capture is context 0.
const std::string kCaptureToVideo = "csi_be:output>vid_bayer:input vid_tnr:prv_out>prv_scale:input "
                                    "prv_scale:main_out>preview_sink vid_bayer:ae_out>ae_stats_sink "
                                    "vid_bayer:awb_out>awb_stats_sink ";
const Subgraph kPreviewOf6 = {3, "prv_scale", "prv_scale:input", "prv_scale:main_out", "prv_scale:input"};

// Off or unconnected in all of these settings: praw_out, hist_out, dvs_out; tnr_ref_out and tnr_ref_in are private.
const Subgraph kVideoOf6 = {1, "vid_bayer vid_color vid_tnr vid_out", "vid_bayer:input vid_tnr:tnr_ref_in",
                            "vid_bayer:praw_out vid_bayer:ae_out vid_bayer:awb_out vid_bayer:af_out vid_color:hist_out "
                            "vid_tnr:prv_out vid_tnr:fd_out vid_tnr:dvs_out vid_tnr:tnr_ref_out vid_out:main_out "
                            "vid_out:aux_out",
                            "vid_bayer:input"};

const Example kGeneration6[] = {
    {60107,
     "sensor",
     "video_sink snapshot_sink preview_sink ae_stats_sink awb_stats_sink af_stats_sink",
     {kVideoOf6, kPreviewOf6},
     0,
     "csi_be:output csi_be:raw_output sensor:port_1",
     StatusOk,
     kCaptureToVideo + "vid_out:main_out>video_sink vid_out:aux_out>snapshot_sink vid_bayer:af_out>af_stats_sink",
     "video_sink snapshot_sink preview_sink",
     "csi_be:output",
     {{1, 1}, {3, 0}}}, // vid_bayer decides; the scaler has the mode of its base node
    {60109,
     "sensor",
     "video_sink preview_sink face_sink pdaf_sink ae_stats_sink awb_stats_sink af_stats_sink",
     {kVideoOf6, kPreviewOf6, {6, "fd_scale", "fd_scale:input", "fd_scale:main_out", "fd_scale:input"}},
     0,
     "csi_be:output csi_be:raw_output csi_be_soc:output",
     StatusOk,
     kCaptureToVideo + "vid_tnr:fd_out>fd_scale:input fd_scale:main_out>face_sink vid_out:main_out>video_sink "
                       "vid_bayer:af_out>af_stats_sink",
     "video_sink preview_sink face_sink",
     "csi_be:output",
     {{1, 1}, {3, 0}, {6, 0}}},
    // Raw only: capture without any program group.
    {60206, "sensor", "raw_sink", {}, 1, "csi_be:output csi_be:raw_output sensor:port_1"},
    // Preview and raw of a test pattern: no vid_out, vid_tnr:main_out is off.
    {60302,
     "tpg",
     "raw_sink preview_sink ae_stats_sink awb_stats_sink",
     {{1, "vid_bayer vid_color vid_tnr", "vid_bayer:input vid_tnr:tnr_ref_in",
       "vid_bayer:praw_out vid_bayer:ae_out vid_bayer:awb_out vid_bayer:af_out vid_color:hist_out vid_tnr:main_out "
       "vid_tnr:prv_out vid_tnr:fd_out vid_tnr:dvs_out vid_tnr:tnr_ref_out",
       "vid_bayer:input"},
      kPreviewOf6},
     0,
     "csi_be:output csi_be:raw_output",
     StatusOk,
     kCaptureToVideo,
     "preview_sink",
     "csi_be:output",
     {{1, 1}, {3, 0}}},
    // A buffer source, which has no context, feeds its program group directly.
    {60402,
     "buffer_src1",
     "reproc_sink",
     {{5, "rpr_yuv", "rpr_yuv:input", "rpr_yuv:main_out", "rpr_yuv:input"}},
     1,
     "buffer_src1:port_0",
     StatusOk,
     "buffer_src1:port_0>rpr_yuv:input rpr_yuv:main_out>reproc_sink",
     "reproc_sink",
     "buffer_src1:port_0",
     {{5, 0}}},
};

// Generation 7 has compute blocks and no program groups, so contexts and connections of program groups are none.
const Subgraph kFront = {1, "", "cb_front:input cb_front:short_in", // fed by two exposures, or one of them off
                         "cb_front:main_out cb_front:still_out cb_front:ae_out cb_front:awb_out cb_front:af_out",
                         "cb_front:input"};
const Subgraph kVideoOf7 = {2, "", "cb_vcolor:input cb_vtnr:tnr_ref_in",
                            "cb_vtnr:main_out cb_vtnr:prv_out cb_vtnr:cv_out cb_vtnr:dvs_out cb_vtnr:tnr_ref_out",
                            "cb_vcolor:input"};
const Subgraph kPreviewOf7 = {4, "", "cb_prv:input", "cb_prv:main_out", "cb_prv:input"};
const Subgraph kVideoOutOf7 = {8, "", "cb_vout:input", "cb_vout:main_out cb_vout:aux_out", "cb_vout:input"};

const Example kGeneration7[] = {
    {70101,
     "sensor",
     "video_sink preview_sink ae_stats_sink awb_stats_sink af_stats_sink",
     {kFront, kVideoOf7, kPreviewOf7, kVideoOutOf7},
     0,
     "csi_be:output csi_be:raw_output csi_be_dol:output csi_be_dol:raw_output sensor:port_2"},
    {70106,
     "sensor",
     "preview_sink bokeh_sink ae_stats_sink awb_stats_sink af_stats_sink",
     {kFront, kVideoOf7, kPreviewOf7},
     0,
     "csi_be:output csi_be:raw_output sensor:port_1 sensor:port_2"},
    // Stills: still_out instead of main_out; the stage on the GPU is no compute block.
    {70206,
     "sensor",
     "stills_sink beauty_sink ae_stats_sink awb_stats_sink",
     {kFront, {3, "", "cb_scolor:input", "cb_sdetail:post_out cb_sout:main_out cb_sout:aux_out", "cb_scolor:input"}},
     0,
     "csi_be:output csi_be:raw_output sensor:port_1 sensor:port_2"},
    {70402,
     "buffer_src1",
     "reproc_sink",
     {{5, "", "cb_rpr:input", "cb_rpr:main_out", "cb_rpr:input"}},
     1,
     "buffer_src1:port_0"},
};

std::string nameOfExample(const ::testing::TestParamInfo<Example>& info)
{
    return std::to_string(info.param.key);
}

INSTANTIATE_TEST_SUITE_P(Generation5, ExampleContextsTest, ::testing::ValuesIn(kGeneration5), nameOfExample);
INSTANTIATE_TEST_SUITE_P(Generation6, ExampleContextsTest, ::testing::ValuesIn(kGeneration6), nameOfExample);
INSTANTIATE_TEST_SUITE_P(Generation7, ExampleContextsTest, ::testing::ValuesIn(kGeneration7), nameOfExample);

class ExampleGraphTest : public ExampleGraph {
protected:
    /// Pal uuid, id, metadata, enabled, rcb, branch point and sink port of a kernel.
    std::string kernel(const std::string& path)
    {
        int v[6] = {};
        unsigned int metadata[4] = {};
        EXPECT_EQ(GraphCameraUtil::kernelGetValues(&at(asNode(mGraph), path), &v[0], &v[1], metadata, &v[2], &v[3],
                                                   &v[4], &v[5]),
                  StatusOk);
        std::string all = std::to_string(v[0]) + " " + std::to_string(v[1]) + " [";
        for (const unsigned int value : metadata) all += " " + std::to_string(value);
        all += " ]";
        for (int i = 2; i < 6; ++i) all += " " + std::to_string(v[i]);
        return all;
    }

    unsigned int kernelCount(const std::string& node)
    {
        unsigned int count = 0;
        EXPECT_EQ(GraphCameraUtil::getKernelCountInPg(&at(asNode(mGraph), node), count), StatusOk);
        return count;
    }
};

TEST_F(ExampleGraphTest, StageOnTheGpuIsASubgraphOfItsOwnType)
{
    build(70106);
    expectSubgraph(NUXO_KEY_EXEC_CTX_ID, {4, "", "gpu_bokeh:input", "gpu_bokeh:main_out", "gpu_bokeh:input"},
                   NUXO_KEY_EXTERNAL_STAGE);
    build(70206);
    expectSubgraph(NUXO_KEY_EXEC_CTX_ID, {3, "", "gpu_beauty:input", "gpu_beauty:main_out", "gpu_beauty:input"},
                   NUXO_KEY_EXTERNAL_STAGE);
}

// Graph 100 of generation 6 overrides the tuning mode of vid_tnr alone, graph 102 does not.
TEST_F(ExampleGraphTest, OverriddenTuningModeIsAMismatch)
{
    std::map<int, int> tuning;
    build(60107);
    EXPECT_EQ(GraphCameraUtil::getExecCtxIdsTuningMap(asNode(mGraph), tuning), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 Mismatch in tuning mode (1 vs 3) for same execution Context 1!!!" +
                               std::string(28, ' ') + "Discard current tuning Mode"}));
    tuning.clear();
    build(60302);
    EXPECT_EQ(GraphCameraUtil::getExecCtxIdsTuningMap(asNode(mGraph), tuning), StatusOk);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ExampleGraphTest, KernelsAreCountedAsWritten)
{
    build(50101);
    EXPECT_EQ(kernelCount("vf_isa"), 14U); // ids 0 to 13 of its base node
    EXPECT_EQ(kernelCount("vf_dm"), 10U);
    EXPECT_EQ(kernelCount("vf_gdc"), 7U);
    EXPECT_EQ(kernelCount("pv_out"), 6U);
    EXPECT_EQ(kernelCount("csi_be"), 0U);
    build(70106);
    EXPECT_EQ(kernelCount("cb_front"), 18U);
    EXPECT_EQ(kernelCount("cb_vtnr"), 15U);
    EXPECT_EQ(kernelCount("cb_prv"), 7U);
    EXPECT_EQ(kernelCount("gpu_bokeh"), 0U);
}

TEST_F(ExampleGraphTest, KernelValuesAreThoseOfDescriptorAndOverrides)
{
    build(50101);
    EXPECT_EQ(kernel("vf_isa:in_crop"), "37000 0 [ 0 0 0 0 ] 1 1 0 -1");
    EXPECT_EQ(kernel("vf_isa:shading"), "37005 5 [ 63 47 0 0 ] 1 0 1 -1");
    EXPECT_EQ(kernel("vf_isa:ae_grid"), "37011 11 [ 80 60 0 0 ] 1 0 0 3");
    EXPECT_EQ(kernel("vf_isa:dpc_static"), "37003 3 [ 2 0 0 0 ] 1 0 0 -1"); // 1,0,0,0 but for the override
    build(50302);
    EXPECT_EQ(kernel("vf_isa:shading"), "37005 5 [ 63 47 0 0 ] 0 0 1 -1"); // no lens, no shading
}

} // namespace

} // namespace graphtest
