// SPDX-License-Identifier: Apache-2.0
// Which pieces of the sensor are read, in which order, and what is said about them.
#include "frame_params/ForwardingNode.h"
#include "frame_params/FrameParamsFixture.h"

#include "query/ForeignNode.h"

namespace graphtest {

namespace {

/// Pixel array 4208x3120 at (8, 4), binned 2x2 and cropped at (16, 8), then scaled by 1/2.
const Sensor kComplete{{4208, 3120, 8, 4}, Stage{2, 2, {2104, 1560, 16, 8}}, Stage{1, 2, {1000, 750, 3, 5}}};

constexpr const char* kNoBinner = "32 Warning, no binner found, make sure sensor has no binner";
constexpr const char* kNoScaler = "32 Warning, no scaler found, make sure sensor has no scaler";

class SensorFrameParamsTest : public FrameParamsTest {
protected:
    /// The complete sensor without the item at @p path.
    static std::shared_ptr<GraphConfigNode> without(const std::string& path)
    {
        const size_t colon = path.rfind(':');
        auto graph = sharedGraph(kComplete.element());
        GraphConfigNode& holder = colon == std::string::npos ? *graph : at(*graph, path.substr(0, colon));
        EXPECT_EQ(holder.removeDescendant(key(path.substr(colon + 1))), StatusOk) << path;
        return graph;
    }

    /// The complete sensor with a text in place of the item at @p path.
    static std::shared_ptr<GraphConfigNode> withText(const std::string& path)
    {
        const size_t colon = path.rfind(':');
        auto graph = without(path);
        GraphConfigNode& holder = colon == std::string::npos ? *graph : at(*graph, path.substr(0, colon));
        EXPECT_EQ(holder.addValue(key(path.substr(colon + 1)), std::string("1")), StatusOk);
        return graph;
    }

    /// Both ways of lacking an integer must fail and log exactly these lines, apart from debug lines.
    void expectFailure(const std::string& path, int absent, int wrongKind, const std::vector<std::string>& lines)
    {
        mLog.setMask(kError | kWarning);
        EXPECT_EQ(sensor(without(path)), absent) << path;
        EXPECT_TRUE(loggedExactly(lines)) << path;
        EXPECT_TRUE(untouched()) << path;
        EXPECT_EQ(sensor(withText(path)), wrongKind) << path;
        EXPECT_TRUE(loggedExactly(lines)) << path;
        EXPECT_TRUE(untouched()) << path;
    }

    /// Lacking any of the four numbers of the output at @p path must fail with this message.
    void expectFrameDemanded(const std::string& path, const std::string& message)
    {
        const std::pair<const char*, const char*> numbers[] = {
            {"width", "width"}, {"height", "height"}, {"left", "left crop"}, {"top", "top crop"}};
        for (const auto& [name, spoken] : numbers) {
            expectFailure(path + ":" + name, StatusNotFound, StatusNotFound,
                          {std::string("16 Error: Couldn't get ") + spoken, lum("16 " + message)});
        }
    }
};

TEST_F(SensorFrameParamsTest, ArrayBinnerAndScalerGiveTheFrame)
{
    // Offsets 8 + 2 * 16 and 4 + 2 * 8; size 1000 * 2 / 1 * 2 and 750 * 2 / 1 * 2; scaling 1 / (2 * 2).
    EXPECT_EQ(recordOf(kComplete), "40,20 4000x3000 1/4 1/4");
    const std::string name = "getSensorFrameParams: ";
    EXPECT_TRUE(loggedExactly({
        lum("2 " + name + "PixelArray output: w: 4208, h: 3120, crop l: 8, crop t: 4"),
        lum("2 " + name + "binner output w: 2104, 1560, binning: w: 2, h: 2, crop w: 16, crop h: 8"),
        lum("2 " + name + "scaler output  w: 1000, h: 750, crop w: 3, crop h: 5"),
        lum("2 " + std::string(19, '-') + " frameParams " + std::string(27, '-')),
        lum("2 " + name + "Final cropped Image w = 4000, Final cropped Image h = 3000"),
        lum("2 " + name + "Horizontal_crop_offset = 40, Vertical_crop_offset = 20"),
        lum("2 " + name + "Horizontal_scaling_factor = 1/4, Vertical_scaling factor = 1/4"),
        lum("2 " + std::string(65, '-')),
    }));
}

TEST_F(SensorFrameParamsTest, HorizontalAndVerticalAreNotMixedUp)
{
    // Offsets 10 + 3 * 7 and 20 + 5 * 11; size 100 * 4 / 2 * 3 and 60 * 4 / 2 * 5; scaling 2 / (3 * 4) and 2 / (5 * 4).
    const Sensor sensor{{3000, 2000, 10, 20}, Stage{3, 5, {900, 400, 7, 11}}, Stage{2, 4, {100, 60, 13, 17}}};
    EXPECT_EQ(recordOf(sensor), "31,75 600x600 2/12 2/20");
    const std::vector<std::string> said = lines();
    ASSERT_EQ(said.size(), 8U);
    const std::string name = "2 getSensorFrameParams: ";
    EXPECT_EQ(said[0], lum(name + "PixelArray output: w: 3000, h: 2000, crop l: 10, crop t: 20"));
    EXPECT_EQ(said[1], lum(name + "binner output w: 900, 400, binning: w: 3, h: 5, crop w: 7, crop h: 11"));
    EXPECT_EQ(said[2], lum(name + "scaler output  w: 100, h: 60, crop w: 13, crop h: 17"));
    EXPECT_EQ(said[4], lum(name + "Final cropped Image w = 600, Final cropped Image h = 600"));
    EXPECT_EQ(said[5], lum(name + "Horizontal_crop_offset = 31, Vertical_crop_offset = 75"));
    EXPECT_EQ(said[6], lum(name + "Horizontal_scaling_factor = 2/12, Vertical_scaling factor = 2/20"));
}

TEST_F(SensorFrameParamsTest, DetailIsDebugOutputAndNothingElse)
{
    const SharedGraph graph = sharedGraph(kComplete.element());
    EXPECT_EQ(mLog.linesOfLevel(kDebug, [&] { (void)GraphLumUtil::getSensorFrameParams(mParams, graph); }).size(), 8U);
    for (const uint32_t level : {1U, 4U, 8U, 16U, 32U}) {
        mLog.linesOfLevel(level, [&] { (void)GraphLumUtil::getSensorFrameParams(mParams, graph); });
        EXPECT_TRUE(mLog.isEmpty()) << level;
    }
}

TEST_F(SensorFrameParamsTest, PixelArrayAloneIsTheFrameAndBothWarningsAreGiven)
{
    EXPECT_EQ(recordOf({{4208, 3120, 8, 4}, {}, {}}), "8,4 4208x3120 1/1 1/1");
    const std::vector<std::string> said = lines();
    ASSERT_EQ(said.size(), 8U);
    EXPECT_EQ(said[1], lum(kNoBinner));
    EXPECT_EQ(said[2], lum(kNoScaler));
}

TEST_F(SensorFrameParamsTest, WithoutAScalerThePixelArraysSizeIsTakenNotTheBinners)
{
    // 4208 * 2 and 3120 * 2: the output of the binner is not asked for its size.
    EXPECT_EQ(recordOf({{4208, 3120, 8, 4}, Stage{2, 2, {2104, 1560, 16, 8}}, {}}), "40,20 8416x6240 1/2 1/2");
    EXPECT_EQ(mLog.count(LogCapture::Warning), 1U);
    EXPECT_TRUE(mLog.has(LogCapture::Warning, "NUXO_LUM_UTILS[XOS]",
                         "Warning, no scaler found, make sure sensor has no scaler"));
}

TEST_F(SensorFrameParamsTest, WithoutABinnerTheScalerAloneCounts)
{
    // 1000 * 2 / 1 and 750 * 2 / 1; offsets are those of the pixel array.
    EXPECT_EQ(recordOf({{4208, 3120, 8, 4}, {}, kComplete.scaler}), "8,4 2000x1500 1/2 1/2");
    EXPECT_EQ(mLog.count(LogCapture::Warning), 1U);
    EXPECT_TRUE(mLog.has(LogCapture::Warning, "NUXO_LUM_UTILS[XOS]",
                         "Warning, no binner found, make sure sensor has no binner"));
}

TEST_F(SensorFrameParamsTest, AttributesAreNeitherBinnerNorScaler)
{
    EXPECT_EQ(sensor(withText("sensor:binner")), StatusOk);
    EXPECT_EQ(text(mParams), "8,4 2000x1500 1/2 1/2");
    EXPECT_EQ(sensor(withText("sensor:scaler")), StatusOk);
    EXPECT_EQ(text(mParams), "40,20 8416x6240 1/2 1/2");
}

TEST_F(SensorFrameParamsTest, CropOfTheScalerMovesNothing)
{
    Sensor moved = kComplete;
    moved.scaler->output.left = 777;
    moved.scaler->output.top = -777;
    EXPECT_EQ(recordOf(moved), "40,20 4000x3000 1/4 1/4");
}

TEST_F(SensorFrameParamsTest, InputsAndRightAndBottomCropsAreNotAskedFor)
{
    EXPECT_EQ(sensor(sharedGraph(R"(<sensor width="1"><pixel_array><input width="9" height="9" left="9" top="9"/>
        <output width="640" height="480" left="2" top="1" right="x" bottom="x"/></pixel_array></sensor>)")),
              StatusOk);
    EXPECT_EQ(text(mParams), "2,1 640x480 1/1 1/1");
}

TEST_F(SensorFrameParamsTest, NoSensorIsReported)
{
    const std::string message = lum("16 Error: Couldn't get sensor mode node from the graph");
    const std::vector<SharedGraph> graphs{
        nullptr,                                             // no graph at all
        std::make_shared<ForeignNode>(),                     // a node without a root
        sharedGraph("<hw><x/></hw>"),                        // no sensor
        sharedGraph("<hw>" + kComplete.element() + "</hw>"), // not where it belongs
        withText("sensor"),                                  // an attribute
    };
    for (const SharedGraph& graph : graphs) {
        EXPECT_EQ(sensor(graph), StatusMissingData);
        EXPECT_TRUE(loggedExactly({message}));
        EXPECT_TRUE(untouched());
    }
}

TEST_F(SensorFrameParamsTest, NoOutputOfThePixelArrayIsReported)
{
    for (const auto& graph :
         {without("sensor:pixel_array"), without("sensor:pixel_array:output"), withText("sensor:pixel_array")}) {
        EXPECT_EQ(sensor(graph), StatusMissingData);
        EXPECT_TRUE(loggedExactly({lum("16 Failed to get pixel_array:output")}));
        EXPECT_TRUE(untouched());
    }
    EXPECT_LT(sensor(withText("sensor:pixel_array:output")), StatusOk);
    EXPECT_TRUE(untouched());
}

TEST_F(SensorFrameParamsTest, EveryNumberOfThePixelArraysOutputIsDemanded)
{
    expectFrameDemanded("sensor:pixel_array:output", "Failed to get pixel array output dimension and crop");
}

TEST_F(SensorFrameParamsTest, BothBinningFactorsAreDemanded)
{
    expectFailure("sensor:binner:h_factor", StatusMissingData, StatusNotFound,
                  {"16 Error: Couldn't get horizontal binning factor", lum("16 Error: Couldn't get binning factor")});
    expectFailure("sensor:binner:v_factor", StatusMissingData, StatusNotFound,
                  {"16 Error: Couldn't get vertical binning factor", lum("16 Error: Couldn't get binning factor")});
}

TEST_F(SensorFrameParamsTest, OutputsOfBinnerAndScalerAreDemanded)
{
    expectFailure("sensor:binner:output", StatusMissingObject, StatusMissingObject,
                  {lum("16 Failed to get binner:output")});
    expectFailure("sensor:scaler:output", StatusMissingObject, StatusMissingObject,
                  {lum("16 Failed to get scaler:output")});
}

TEST_F(SensorFrameParamsTest, EveryNumberOfTheBinnersOutputIsDemanded)
{
    expectFrameDemanded("sensor:binner:output", "Failed to get binner output dimensions and crop");
}

TEST_F(SensorFrameParamsTest, BothScalingFactorsAreDemanded)
{
    const std::vector<std::string> lines{"16 Error: Couldn't get width scaling num ratio",
                                         lum("16 Error: Couldn't get scaling factor")};
    expectFailure("sensor:scaler:num_factor", StatusMissingData, StatusNotFound, lines);
    expectFailure("sensor:scaler:denom_factor", StatusMissingData, StatusNotFound, lines);
}

TEST_F(SensorFrameParamsTest, EveryNumberOfTheScalersOutputIsDemanded)
{
    expectFrameDemanded("sensor:scaler:output", "Failed to get scaler output dimensions and crop");
}

TEST_F(SensorFrameParamsTest, FirstThingMissingEndsTheWalk)
{
    auto graph = without("sensor:binner:output");
    at(*graph, "sensor:scaler").removeDescendant(NUXO_KEY_OUTPUT);
    EXPECT_EQ(sensor(graph), StatusMissingObject);
    // The pixel array was read by then.
    EXPECT_TRUE(loggedExactly({lum("2 getSensorFrameParams: PixelArray output: w: 4208, h: 3120, crop l: 8, crop t: 4"),
                               lum("16 Failed to get binner:output")}));
}

TEST_F(SensorFrameParamsTest, BinningByZeroIsReportedAndCountsAsOne)
{
    const std::string horizontal = lum("16 Horizontal binning is 0! Wrong setting! Set to 1");
    const std::string vertical = lum("16 Vertical binning is 0! Wrong setting! Set to 1");
    Sensor binned = kComplete;
    mLog.setMask(kError | kWarning);

    binned.binner->first = 0; // offset 8 + 1 * 16, width 1000 * 2 / 1 * 1
    EXPECT_EQ(recordOf(binned), "24,20 2000x3000 1/2 1/4");
    EXPECT_TRUE(loggedExactly({horizontal}));

    binned.binner->second = 0; // offset 4 + 1 * 8, height 750 * 2 / 1 * 1
    EXPECT_EQ(recordOf(binned), "24,12 2000x1500 1/2 1/2");
    EXPECT_TRUE(loggedExactly({horizontal, vertical}));

    binned.binner->first = 2;
    EXPECT_EQ(recordOf(binned), "40,12 4000x1500 1/4 1/2");
    EXPECT_TRUE(loggedExactly({vertical}));
}

TEST_F(SensorFrameParamsTest, ReplacedBinningFactorsAreThoseThatAreLogged)
{
    Sensor binned = kComplete;
    binned.binner->first = binned.binner->second = 0;
    EXPECT_EQ(sensor(binned), StatusOk);
    EXPECT_TRUE(
        mLog.has(LogCapture::Debug, "NUXO_LUM_UTILS[XOS]",
                 "getSensorFrameParams: binner output w: 2104, 1560, binning: w: 1, h: 1, crop w: 16, crop h: 8"));
}

TEST_F(SensorFrameParamsTest, ScalingByZeroIsReportedAndCountsAsOne)
{
    const std::string denominator = lum("16 Scaling Denominator is 0! Wrong setting! Set to 1");
    const std::string numerator = lum("16 Scaling Numerator is 0! Wrong setting! Set to 1");
    Sensor scaled = kComplete;
    mLog.setMask(kError | kWarning);

    scaled.scaler->second = 0; // 1000 * 1 / 1 * 2
    EXPECT_EQ(recordOf(scaled), "40,20 2000x1500 1/2 1/2");
    EXPECT_TRUE(loggedExactly({denominator}));

    scaled.scaler->first = 0;
    EXPECT_EQ(recordOf(scaled), "40,20 2000x1500 1/2 1/2");
    EXPECT_TRUE(loggedExactly({denominator, numerator}));

    scaled.scaler->second = 3; // 1000 * 3 / 1 * 2
    EXPECT_EQ(recordOf(scaled), "40,20 6000x4500 1/6 1/6");
    EXPECT_TRUE(loggedExactly({numerator}));
}

TEST_F(SensorFrameParamsTest, ZeroIsReportedBeforeTheOutputIsLookedFor)
{
    mLog.setMask(kError | kWarning);
    auto graph = without("sensor:binner:output");
    at(*graph, "sensor").removeDescendant(NUXO_KEY_SCALER);
    EXPECT_EQ(at(*graph, "sensor:binner").removeDescendant(NUXO_KEY_H_FACTOR), StatusOk);
    EXPECT_EQ(at(*graph, "sensor:binner").addValue(NUXO_KEY_H_FACTOR, 0), StatusOk);
    EXPECT_EQ(sensor(graph), StatusMissingObject);
    EXPECT_TRUE(loggedExactly(
        {lum("16 Horizontal binning is 0! Wrong setting! Set to 1"), lum("16 Failed to get binner:output")}));
}

TEST_F(SensorFrameParamsTest, AnyNodeOfTheGraphLeadsToItsRoot)
{
    const auto graph = sharedGraph(kComplete.element() + "<hw><port_0/></hw>");
    for (const char* path : {"hw:port_0", "sensor:binner:output"}) {
        EXPECT_EQ(sensor(SharedGraph(graph, &at(*graph, path))), StatusOk) << path;
        EXPECT_EQ(text(mParams), "40,20 4000x3000 1/4 1/4");
    }
}

TEST_F(SensorFrameParamsTest, OnlyTheInterfaceOfAGraphIsUsed)
{
    const auto graph = sharedGraph(kComplete.element());
    EXPECT_EQ(sensor(std::make_shared<ForwardingNode>(*graph)), StatusOk);
    EXPECT_EQ(text(mParams), "40,20 4000x3000 1/4 1/4");
    at(*graph, "sensor").removeDescendant(NUXO_KEY_PIXEL_ARRAY);
    EXPECT_EQ(sensor(std::make_shared<ForwardingNode>(*graph)), StatusMissingData);
    EXPECT_TRUE(loggedExactly({lum("16 Failed to get pixel_array:output")}));
}

TEST_F(SensorFrameParamsTest, GraphStaysTheCallersAndAsItWas)
{
    const auto graph = sharedGraph(kComplete.element());
    const std::string before = text(*graph);
    EXPECT_EQ(sensor(graph), StatusOk);
    EXPECT_EQ(graph.use_count(), 1);
    EXPECT_EQ(text(*graph), before);
}

} // namespace

} // namespace graphtest
