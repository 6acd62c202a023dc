// SPDX-License-Identifier: Apache-2.0
#include "GraphVerbTest.h"

namespace {

class FrameParamsTest : public GraphVerbTest {
protected:
    FrameParamsTest() : GraphVerbTest("frame-params") {}

    // Crop offsets, size, horizontal and vertical fraction.
    static std::string valuesOf(const ToolRun& result)
    {
        std::string values;
        for (const auto& row : rowsOf(result.out)) values += (values.empty() ? "" : " ") + row.at("VALUE");
        return values;
    }

    void expectFailure(const ToolRun& result, int exitCode, const std::string& text) const
    {
        EXPECT_EQ(result.exitCode, exitCode);
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err.find(text), std::string::npos) << result.err;
    }
};

TEST_F(FrameParamsTest, TellsTheFrameOfTheSensor)
{
    const ToolRun result = ask("questions", "1");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    // Left 8 + 2 * 16, top 4 + 2 * 8; 1000 * 2 pixels of the binner, each of two of the array; 1 / (2 * 2).
    EXPECT_EQ(result.out, "FIELD                           VALUE\n"
                          "horizontal_crop_offset             40\n"
                          "vertical_crop_offset               20\n"
                          "cropped_image_width              4000\n"
                          "cropped_image_height             3000\n"
                          "horizontal_scaling_numerator        1\n"
                          "horizontal_scaling_denominator      4\n"
                          "vertical_scaling_numerator          1\n"
                          "vertical_scaling_denominator        4\n");
}

TEST_F(FrameParamsTest, TellsTheFrameAsJson)
{
    expectAnswer("questions", "1", "frame_params_questions_1.json", {"--format", "json"});
}

TEST_F(FrameParamsTest, SensorModesOfTheExamplesComeOut)
{
    // 4x4 binned, then 2/3 of it: 640 * 3 / 2 * 4 by 480 * 3 / 2 * 4.
    EXPECT_EQ(valuesOf(ask("kva5", "50107")), "184 120 3840 2880 2 12 2 12");
    // 2x2 binned, nothing cropped.
    EXPECT_EQ(valuesOf(ask("kva6", "60106")), "0 0 4208 3120 1 2 1 2");
    // Rows cropped to 16:9, nothing binned.
    EXPECT_EQ(valuesOf(ask("kva7", "70100")), "0 376 4208 2368 1 1 1 1");
}

TEST_F(FrameParamsTest, MissingBinnerAndScalerAreWarnings)
{
    const ToolRun result = ask("questions", "2");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(valuesOf(result), "8 4 4208 3120 1 1 1 1");
    for (const char* const part : {"binner", "scaler"}) {
        const std::string text = std::string("questions_settings.xml:26:5: warning[frame-params]: Warning, no ") +
                                 part + " found, make sure sensor has no " + part + '\n';
        EXPECT_NE(result.err.find(text), std::string::npos) << result.err;
    }
}

TEST_F(FrameParamsTest, FactorOfZeroIsAFindingAndCountsAsOne)
{
    const ToolRun result = ask("questions", "3");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(valuesOf(result), "8 4 4208 3120 1 1 1 1");
    EXPECT_EQ(
        result.err.find("questions_settings.xml:46:5: error[frame-params]: Horizontal binning is 0! Wrong setting! "
                        "Set to 1\n"),
        0U)
        << result.err;
}

TEST_F(FrameParamsTest, GraphWithoutASensorIsAFinding)
{
    expectFailure(ask("kva5", "50300"), 1,
                  "kva5_settings.xml:1314:5: error[frame-params]: reading the frame of the sensor ended with "
                  "StatusMissingData: Error: Couldn't get sensor mode node from the graph; expected a sensor with its "
                  "sizes\n");
}

TEST_F(FrameParamsTest, TellsTheFrameOfAPort)
{
    EXPECT_EQ(valuesOf(ask("questions", "1", {"--port", "pack:main_out"})), "0 0 960 720 1 1 1 1");
    EXPECT_EQ(valuesOf(ask("kva6", "60100", {"--port", "video_sink"})), "0 0 3840 2160 1 1 1 1");
}

TEST_F(FrameParamsTest, PortWithoutASizeIsAFinding)
{
    const ToolRun result = ask("questions", "1", {"--port", "front:stats_out"});
    expectFailure(
        result, 1,
        "error[frame-params]: reading the frame of port front:stats_out ended with StatusMissingObject: Error: "
        "Couldn't get width; expected a port with its size\n");
    expectFailure(result, 1, "note: library error: Failed to get dimension for port \"front:stats_out\" node\n");
}

TEST_F(FrameParamsTest, PortThatTheGraphLacksIsAFinding)
{
    expectFailure(ask("questions", "1", {"--port", "code_sink"}), 1,
                  "Couldn't get port \"code_sink\" node from the graph");
}

TEST_F(FrameParamsTest, MistypedPortGetsASuggestion)
{
    expectFailure(
        ask("questions", "1", {"--port", "pack:main_ot"}), 2,
        "nuxo: error[unknown-name]: 'main_ot' names no element or attribute; expected a name of the files; did "
        "you mean 'main_out'?\n"
        "    pack:main_ot\n"
        "         ^~~~~~~\n");
    expectFailure(ask("questions", "1", {"--port", ""}), 2, "error[bad-path]: empty name in the path");
}

} // namespace
