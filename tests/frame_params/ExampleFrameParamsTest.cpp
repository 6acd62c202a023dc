// SPDX-License-Identifier: Apache-2.0
// Frame parameters of the graphs of the example files.
#include "frame_params/FrameParamsFixture.h"

#include "simulation/ExamplePair.h"

#include <map>

namespace graphtest {

namespace {

/// What the geometry of each sensor mode comes to; the examples' readme has it as a table. No stage but the pixel array
/// crops, so its crop is the offset. The output of the mode, divided by the scaler's fraction and multiplied by the
/// binning, is again what the pixel array cut out.
const std::map<std::string, std::string> kRecords{
    {"full", "0,0 4208x3120 1/1 1/1"},          {"binned", "0,0 4208x3120 1/2 1/2"},          // 2104 * 2, 1560 * 2
    {"crop_16_9", "0,376 4208x2368 1/1 1/1"},   {"binned_crop", "184,480 3840x2160 1/2 1/2"}, // 1920 * 2, 1080 * 2
    {"vga", "184,120 3840x2880 2/12 2/12"},     // 640 * 3 / 2 * 4, 480 * 3 / 2 * 4; denominators 4 * 3
    {"fast_720p", "824,840 2560x1440 1/2 1/2"}, // 1280 * 2, 720 * 2
};

struct Generation {
    const char* name;
    size_t withSensor; ///< settings of the graphs that a sensor feeds, by the tables of the readme
    size_t without;    ///< settings fed by a test pattern generator or from memory
};

class ExampleSensors : public FrameParamsTest, public ::testing::WithParamInterface<Generation> {};

TEST_P(ExampleSensors, EverySettingGivesTheFrameOfItsMode)
{
    ExamplePair pair(GetParam().name);
    std::map<std::string, size_t> modes;
    size_t without = 0;
    for (const GraphConfigNode* setting : pair.settings()) {
        const auto graph = pair.build(*setting);
        std::string mode;
        if (graph->getValue(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_MODE_ID}, mode) != StatusOk) {
            EXPECT_EQ(sensor(graph), StatusMissingData);
            EXPECT_TRUE(loggedExactly({lum("16 Error: Couldn't get sensor mode node from the graph")}));
            ++without;
            continue;
        }
        EXPECT_EQ(sensor(graph), StatusOk);
        EXPECT_EQ(text(mParams), kRecords.at(mode)) << value(*setting, "key");
        EXPECT_EQ(mLog.count(LogCapture::Error) + mLog.count(LogCapture::Warning), 0U);
        ++modes[mode];
    }
    size_t withSensor = 0;
    for (const auto& mode : modes) withSensor += mode.second;
    EXPECT_EQ(modes.size(), kRecords.size());
    EXPECT_EQ(withSensor, GetParam().withSensor);
    EXPECT_EQ(without, GetParam().without);
}

INSTANTIATE_TEST_SUITE_P(Generations, ExampleSensors,
                         ::testing::Values(Generation{"kva5", 22, 8}, Generation{"kva6", 22, 7},
                                           Generation{"kva7", 24, 7}),
                         [](const auto& generation) { return std::string(generation.param.name); });

class ExamplePorts : public FrameParamsTest {
protected:
    /// The record of a port; "none" without a size.
    std::string recordOf(const SharedGraph& graph, const std::string& name)
    {
        const int status = port(graph, name);
        if (status == StatusOk) return text(mParams);
        EXPECT_EQ(status, StatusMissingObject);
        return "none";
    }
};

TEST_F(ExamplePorts, PortsAreAsLargeAsTheirSettingSays)
{
    const auto video = ExamplePair("kva6").build(60100); // UHD video, 1080p preview
    EXPECT_EQ(recordOf(video, "vid_out:main_out"), "0,0 3840x2160 1/1 1/1");
    EXPECT_EQ(recordOf(video, "vid_out:input"), "0,0 3840x2160 1/1 1/1"); // given by vid_tnr:main_out
    EXPECT_EQ(recordOf(video, "prv_scale:main_out"), "0,0 1920x1080 1/1 1/1");
    EXPECT_EQ(recordOf(video, "preview_sink"), "0,0 1920x1080 1/1 1/1");
    EXPECT_EQ(recordOf(video, "csi_be:output"), "0,0 4208x3120 1/1 1/1");
    EXPECT_EQ(recordOf(video, "vid_bayer:ae_out"), "none"); // statistics have no size
    EXPECT_EQ(recordOf(video, "still_out:main_out"), "none");

    // binned_crop to the encoder: 1080p
    EXPECT_EQ(recordOf(ExamplePair("kva5").build(50105), "vf_out:main_out"), "0,0 1920x1080 1/1 1/1");
    // UHD video with a 1080p preview
    EXPECT_EQ(recordOf(ExamplePair("kva7").build(70100), "cb_prv:main_out"), "0,0 1920x1080 1/1 1/1");
}

} // namespace

} // namespace graphtest
