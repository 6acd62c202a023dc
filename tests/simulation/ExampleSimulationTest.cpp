// SPDX-License-Identifier: Apache-2.0
// What the example files hold for a simulation, read off the files by hand.
#include "simulation/ExamplePair.h"
#include "simulation/SimulationFixture.h"

#include <algorithm>

namespace graphtest {

namespace {

using Configuration = std::map<std::string, unsigned int>;

struct ExpectedGroups {
    const char* generation;
    int graph;
    const char* names;
};

class ExampleGroups : public GraphTest, public ::testing::WithParamInterface<ExpectedGroups> {};

TEST_P(ExampleGroups, GroupsWrittenOutInTheDescriptorAreFound)
{
    // Nodes built on a base node have neither ports nor a type yet, so their connections lead nowhere.
    const ExamplePair pair(GetParam().generation);
    std::set<IGraphConfig*> groups;
    mLog.setMask(kError);
    EXPECT_EQ(ZmtTevSimUtils::getPgsInGraph(&pair.descriptor(), GetParam().graph, groups), StatusOk);
    EXPECT_EQ(names(groups), GetParam().names);
    EXPECT_TRUE(loggedExactly({}));
}

INSTANTIATE_TEST_SUITE_P(Graphs, ExampleGroups,
                         ::testing::Values(ExpectedGroups{"kva5", 100, "vf_dm vf_ee vf_gdc vf_out"},
                                           ExpectedGroups{"kva5", 101, "st_dm st_nr st_out st_tone"},
                                           ExpectedGroups{"kva5", 102, "vf_dm vf_ee vf_gdc vf_out"},
                                           ExpectedGroups{"kva5", 103, "st_dm st_nr st_out st_tone yr_out"},
                                           ExpectedGroups{"kva6", 100, "vid_color vid_out vid_tnr"},
                                           ExpectedGroups{"kva6", 101, "still_color still_nr still_out"},
                                           ExpectedGroups{"kva6", 102, "vid_color vid_out vid_tnr"},
                                           ExpectedGroups{"kva6", 103, "rpr_yuv still_color still_nr still_out"},
                                           ExpectedGroups{"kva7", 200, ""},
                                           ExpectedGroups{"kva7", 203, ""}), // compute blocks only
                         [](const auto& expected) {
                             return expected.param.generation + std::to_string(expected.param.graph);
                         });

/// Identities from @p first to @p last.
struct Range {
    int first;
    int last;
};

class ExampleKernels : public GraphTest {
protected:
    /// The identities of the kernels of one stream, in ascending order.
    static std::vector<int> identities(const ExamplePair& pair, int graph, int stream)
    {
        KernelList kernels;
        EXPECT_EQ(ZmtTevSimUtils::getKernelList(&pair.descriptor(), graph, stream, kernels), StatusOk);
        std::vector<int> all;
        for (const auto& kernel : kernels) all.push_back(kernel.pal_uuid);
        std::sort(all.begin(), all.end());
        return all;
    }

    static std::vector<int> ranges(const std::vector<Range>& wanted)
    {
        std::vector<int> all;
        for (const Range& range : wanted) {
            for (int identity = range.first; identity <= range.last; ++identity) all.push_back(identity);
        }
        return all;
    }

    static std::string kernel(const ExamplePair& pair, const std::string& name)
    {
        return kernel(pair.descriptor(), name);
    }

    /// The identity of a kernel as text; "none" when there is no such kernel.
    static std::string kernel(const GraphConfigNode& root, const std::string& name)
    {
        int identity = 0;
        const int status = ZmtTevSimUtils::getKernelPalUuid(&root, name, identity);
        EXPECT_TRUE(status == StatusOk || status == StatusNotFound) << status;
        return status == StatusOk ? std::to_string(identity) : "none";
    }
};

TEST_F(ExampleKernels, StreamsOfGeneration5AreListed)
{
    const ExamplePair pair("kva5");
    // vf_dm, vf_gdc with its stabilisation kernel 37235 in the place of 37201, vf_ee, vf_out
    EXPECT_EQ(identities(pair, 100, 1),
              ranges({{37100, 37109}, {37200, 37200}, {37202, 37206}, {37235, 37235}, {37250, 37257}, {37300, 37309}}));
    // st_dm, st_nr, st_tone, st_out
    EXPECT_EQ(identities(pair, 101, 2), ranges({{37120, 37128}, {37400, 37411}, {37430, 37436}, {37460, 37467}}));
    EXPECT_EQ(identities(pair, 103, 5), ranges({{37500, 37510}}));
    EXPECT_EQ(identities(pair, 100, 2), ranges({}));
}

TEST_F(ExampleKernels, StreamsOfGeneration6AreListed)
{
    const ExamplePair pair("kva6");
    // vid_color with the histogram 11120, vid_tnr, vid_out
    EXPECT_EQ(identities(pair, 100, 1), ranges({{11100, 11112}, {11120, 11120}, {11200, 11211}, {11300, 11307}}));
    EXPECT_EQ(identities(pair, 102, 1), identities(pair, 100, 1));
    // still_color, still_nr, still_out
    EXPECT_EQ(identities(pair, 101, 2), ranges({{11500, 11512}, {11600, 11612}, {11700, 11708}}));
    EXPECT_EQ(identities(pair, 103, 2), identities(pair, 101, 2));
    EXPECT_EQ(identities(pair, 103, 5), ranges({{11800, 11811}}));
    EXPECT_EQ(identities(pair, 100, 3), ranges({})); // prv_scale is built on a base node
}

TEST_F(ExampleKernels, Generation7HasNoProgramGroups)
{
    const ExamplePair pair("kva7");
    for (const int stream : {0, 1, 2, 3}) EXPECT_EQ(identities(pair, 200, stream), ranges({})) << stream;
}

TEST_F(ExampleKernels, KernelsOfAGroupKeepTheirOrderAndNames)
{
    KernelList kernels;
    EXPECT_EQ(ZmtTevSimUtils::getKernelList(&ExamplePair("kva6").descriptor(), 103, 5, kernels), StatusOk);
    EXPECT_EQ(text(kernels), "rp_unpack=11800 rp_degamma=11801 rp_scl=11802 rp_filter=11803 rp_nr=11804 rp_sharp=11805 "
                             "rp_gamma=11806 rp_hue=11807 rp_sat=11808 rp_ltm=11809 rp_dither=11810 rp_pack=11811");
}

TEST_F(ExampleKernels, OverridesOfAGraphChangeTheDescriptor)
{
    const ExamplePair pair("kva6");
    const GraphConfigNode& nodes = at(pair.descriptor(), "nodes");
    EXPECT_EQ(value(nodes, "vid_tnr:tuning_mode"), "1");
    identities(pair, 100, 1);
    EXPECT_EQ(value(nodes, "vid_tnr:tuning_mode"), "3");
    EXPECT_EQ(value(nodes, "vid_bayer:lsc:enabled"), "1"); // the node `lsc` was not there either
    identities(pair, 102, 1);
    EXPECT_EQ(value(nodes, "vid_bayer:lsc:enabled"), "0");
}

TEST_F(ExampleKernels, IdentitiesAreFoundByName)
{
    ExamplePair sixth("kva6");
    EXPECT_EQ(kernel(sixth, "vc_demosaic"), "11100");
    EXPECT_EQ(kernel(sixth, "rp_pack"), "11811");
    EXPECT_EQ(kernel(sixth, "main_fmt"), "11302");          // of vid_out, before still_out with 11705
    EXPECT_EQ(kernel(sixth, "bds"), "none");                // of a base node
    EXPECT_EQ(kernel(*sixth.build(60100), "bds"), "11007"); // vid_bayer, built on it
    EXPECT_EQ(kernel(*sixth.build(60200), "bds"), "11027"); // still_bayer, which differs
    EXPECT_EQ(kernel(*sixth.build(60200), "main_fmt"), "11705");
    EXPECT_EQ(kernel(ExamplePair("kva5"), "gdc_warp"), "37235");
    EXPECT_EQ(kernel(ExamplePair("kva7"), "fe_black"), "none"); // of a compute block
}

struct ExpectedMuxes {
    const char* generation;
    int setting;
    int stream;
    Configuration configuration;
};

class ExampleMuxes : public GraphTest, public ::testing::WithParamInterface<ExpectedMuxes> {};

TEST_P(ExampleMuxes, AreSwitchedAsTheSettingSays)
{
    const auto graph = ExamplePair(GetParam().generation).build(GetParam().setting);
    mLog.setMask(kError | kWarning);
    clearLog();
    Configuration configuration;
    EXPECT_EQ(ZmtTevSimUtils::getMuxConfiguration(graph.get(), GetParam().stream, configuration), StatusOk);
    EXPECT_EQ(configuration, GetParam().configuration);
    EXPECT_TRUE(loggedExactly({}));
}

// Only the first node of a stream is asked, in the order of the descriptor: vid_bayer or still_bayer; cb_front,
// cb_vcolor before cb_vtnr, cb_scolor before cb_sdetail. What a setting does not switch stands as in the descriptor.
INSTANTIATE_TEST_SUITE_P(
    Settings, ExampleMuxes,
    ::testing::Values(ExpectedMuxes{"kva5", 50100, 1, {}}, // generation 5 has none
                      ExpectedMuxes{"kva6", 60100, 1, {{"raw_demux", 0}}},
                      ExpectedMuxes{"kva6", 60200, 2, {{"raw_demux", 0}}},
                      ExpectedMuxes{"kva6", 60207, 2, {{"raw_demux", 1}}}, // processed raw
                      ExpectedMuxes{"kva6", 60402, 5, {}},                 // YUV only
                      ExpectedMuxes{"kva6", 60402, 2, {}},
                      ExpectedMuxes{"kva7", 70100, 0, {}}, // capture is no compute block
                      ExpectedMuxes{"kva7", 70100, 1, {{"dol_mux", 0}}},
                      ExpectedMuxes{"kva7", 70101, 1, {{"dol_mux", 1}}}, // two exposures
                      ExpectedMuxes{"kva7", 70100, 2, {{"tm_demux", 0}, {"tm_mux", 0}}},
                      ExpectedMuxes{"kva7", 70112, 2, {{"tm_demux", 1}, {"tm_mux", 1}}},
                      ExpectedMuxes{"kva7", 70100, 8, {}},                               // cb_vout has none
                      ExpectedMuxes{"kva7", 70200, 3, {{"tm_demux", 1}, {"tm_mux", 1}}}, // differences of cb_scolor
                      ExpectedMuxes{"kva7", 70201, 3, {{"tm_demux", 0}, {"tm_mux", 0}}},
                      ExpectedMuxes{"kva7", 70202, 3, {{"tm_demux", 1}, {"tm_mux", 1}}}),
    [](const auto& expected) {
        return std::to_string(expected.param.setting) + "_stream_" + std::to_string(expected.param.stream);
    });

TEST(ExampleSettings, AreClonedWhole)
{
    for (const char* generation : {"kva5", "kva6", "kva7"}) {
        const ExamplePair pair(generation);
        const GraphConfigNode& setting = *pair.settings().front();
        IGraphConfig* copy = nullptr;
        ASSERT_EQ(ZmtTevSimUtils::cloneSettings(&setting, &copy), StatusOk);
        const Tree owned(&asNode(copy));
        EXPECT_EQ(text(*owned), text(setting)) << generation;
        EXPECT_TRUE(linked(*owned));
    }
}

} // namespace

} // namespace graphtest
