// SPDX-License-Identifier: Apache-2.0
#include "frame_params/ForwardingNode.h"
#include "histories/SourceFixture.h"

namespace graphtest {

namespace {

/// Of the complete sensor: size and crop of the pixel array's input, binned by 2 and scaled by 1/2.
///
///             array  binner in  out * 2  scaler in * 2  scaler out * 2 * 2 / 1  back end * 2 * 2 / 1
///     left        8         16        8             22                      12               4 *  7   =   94
///     top         4         10        4             12                      20               4 *  9   =   86
///     right       8         16        8             22                      12               4 * 13   =  118
///     bottom      4         10        4             12                      20               4 * 17   =  118
constexpr qv_isp_zmt_resolution_info kComplete = {4224, 3136, {94, 86, 118, 118}, 1020, 740, {}};

class SensorHistoryTest : public SourceTest {
protected:
    SensorHistoryTest() { loadSensor(); }

    int calculate() { return calculateOf(node("sensor")); }

    int calculateOf(IGraphConfig& sensor)
    {
        mHistory = counting(1000);
        clearLog();
        return ZmtTevUtils::calculateSensorResolutionHistory(sensor, mHistory);
    }

    /// The history of the sensor, which must have one.
    std::string history()
    {
        EXPECT_EQ(calculate(), StatusOk);
        return text(mHistory);
    }

    /// The crop in the history of the sensor, which must have one.
    std::string crop()
    {
        EXPECT_EQ(calculate(), StatusOk);
        return text(mHistory.input_crop);
    }

    /// Leaves only the crops of the scaler's output and the back end's input, at the left 5 and 7.
    void keepCropsBehindTheScaler() const
    {
        for (const char* side :
             {"pixel_array:input", "binner:input", "binner:output", "scaler:input", "scaler:output"}) {
            replace(std::string("sensor:") + side + ":left", 0);
            replace(std::string("sensor:") + side + ":top", 0);
        }
        for (const char* side : {"top", "right", "bottom"}) {
            replace(std::string("csi_be:zmt_pixelformatter:input:") + side, 0);
        }
        replace("sensor:scaler:output:left", 5);
    }

    void setFactors(int binning, int numerator, int denominator) const
    {
        replace("sensor:binner:h_factor", binning);
        replace("sensor:binner:v_factor", binning);
        replace("sensor:scaler:num_factor", numerator);
        replace("sensor:scaler:denom_factor", denominator);
    }

    qv_isp_zmt_resolution_info mHistory{};
};

TEST_F(SensorHistoryTest, AllCropsAreBroughtToThePixelArray)
{
    EXPECT_EQ(history(), text(kComplete));
    const std::string csi = "(iw: 1036 ih: 766 (l: 7, t: 9, r: 13, b: 17),ow: 0, oh: 0 (l: 0, t: 0, r: 0, b: 0)";
    EXPECT_TRUE(loggedExactly({"2 Calculating resolution history for source sensor", "2 input: " + csi,
                               "2 csi_be OUT w: 1020, h: 740----", "2 Resolution history for source sensor DONE",
                               "2 History (iw: 4224 ih: 3136 (l: 94, t: 86, r: 118, b: 118),ow: 1020, oh: 740 "
                               "(l: 0, t: 0, r: 0, b: 0)"}));
}

TEST_F(SensorHistoryTest, ProgressIsDebugOutput)
{
    const auto lines =
        mLog.linesOfLevel(2, [&] { (void)ZmtTevUtils::calculateSensorResolutionHistory(node("sensor"), mHistory); });
    EXPECT_EQ(lines.size(), 5U);
}

TEST_F(SensorHistoryTest, ResultDoesNotDependOnWhatIsLogged)
{
    mLog.setMask(0);
    EXPECT_EQ(history(), text(kComplete));
    remove("csi_be:output");
    EXPECT_EQ(calculate(), StatusMissingObject);
    remove("sensor:width");
    EXPECT_EQ(calculate(), StatusNotFound);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(SensorHistoryTest, SensorWithoutStagesHasTheBackEndsCropOnly)
{
    load(sensor("") + kBackEnd);
    EXPECT_EQ(history(), text(qv_isp_zmt_resolution_info{4000, 3000, {7, 9, 13, 17}, 1020, 740, {}}));
    EXPECT_TRUE(logged(kWarning, "Warning, no pixel_array, make sure source has no pixel array. Defaulting to sensor "
                                 "dimensions."));
}

TEST_F(SensorHistoryTest, BinningMultipliesWhatComesBehindIt)
{
    load(sensor(std::string(kArray) + kBinner) + kBackEnd);
    // 8 + 16 + 2 * 4 + 2 * 7, 4 + 10 + 2 * 2 + 2 * 9, 8 + 16 + 2 * 4 + 2 * 13, 4 + 10 + 2 * 2 + 2 * 17
    EXPECT_EQ(crop(), "(l: 46, t: 36, r: 58, b: 52)");
}

TEST_F(SensorHistoryTest, ScalingWithoutABinnerHasAFactorOfOne)
{
    load(sensor(std::string(kArray) + kScaler) + kBackEnd);
    // 8 + 11 + 2 * 3 + 2 * 7, 4 + 6 + 2 * 5 + 2 * 9, 8 + 11 + 2 * 3 + 2 * 13, 4 + 6 + 2 * 5 + 2 * 17
    EXPECT_EQ(crop(), "(l: 39, t: 38, r: 51, b: 54)");
}

TEST_F(SensorHistoryTest, HorizontalBinningCountsForAllSides)
{
    replace("sensor:binner:v_factor", 50);
    EXPECT_EQ(history(), text(kComplete));
    EXPECT_TRUE(logged(kWarning, "Sensor mode specifies different binning factor for horizontal and vertical.this is "
                                 "not supported, resolution history will be wrong "));
}

TEST_F(SensorHistoryTest, EachCropIsRoundedDownByItself)
{
    keepCropsBehindTheScaler();
    setFactors(1, 3, 2);
    EXPECT_EQ(crop(), "(l: 7, t: 0, r: 3, b: 0)"); // 5 * 2 / 3 = 3.3 and 7 * 2 / 3 = 4.7; right: the scaler's alone
    setFactors(2, 3, 2);
    EXPECT_EQ(crop(), "(l: 15, t: 0, r: 6, b: 0)"); // 20 / 3 = 6.7 and 28 / 3 = 9.3
}

TEST_F(SensorHistoryTest, NegativeCropsAreRoundedDown)
{
    keepCropsBehindTheScaler();
    replace("sensor:scaler:output:left", -1);
    replace("csi_be:zmt_pixelformatter:input:left", 0);
    setFactors(1, 2, 1);
    EXPECT_EQ(crop(), "(l: -1, t: 0, r: -1, b: 0)"); // -0.5
}

TEST_F(SensorHistoryTest, ScalingOfZeroNeverDivides)
{
    keepCropsBehindTheScaler();
    setFactors(2, 0, 3);
    EXPECT_EQ(crop(), "(l: 72, t: 0, r: 30, b: 0)"); // (5 + 7) * 2 * 3 / 1
    setFactors(2, 3, 0);
    EXPECT_EQ(crop(), "(l: 7, t: 0, r: 3, b: 0)"); // 5 * 2 * 1 / 3 = 3.3 and 7 * 2 / 3 = 4.7
}

TEST_F(SensorHistoryTest, BinningOfZeroTakesWhatComesBehindItAway)
{
    setFactors(0, 1, 2);
    EXPECT_EQ(crop(), "(l: 24, t: 14, r: 24, b: 14)"); // the array's and the binner's input: 8 + 16, 4 + 10
}

TEST_F(SensorHistoryTest, FactorsWrapAtThirtyTwoBits)
{
    keepCropsBehindTheScaler();
    setFactors(65536, 1, 65536); // 2^32 is 0
    EXPECT_EQ(crop(), "(l: 0, t: 0, r: 0, b: 0)");
    setFactors(65536, 1, 65537);                             // 2^32 + 2^16; sixteenths: 5 * 2^20 and 7 * 2^20
    EXPECT_EQ(crop(), "(l: 786432, t: 0, r: 327680, b: 0)"); // 12 * 65536, 5 * 65536
    setFactors(-2147483647 - 1, -1, 1);                      // -2^31 * 16 is 0
    EXPECT_EQ(crop(), "(l: 0, t: 0, r: 0, b: 0)");
}

TEST_F(SensorHistoryTest, MissingSideOfAStageKeepsWhatWasReadBefore)
{
    remove("sensor:binner:output");
    // No more than 8 + 16 + 2 * 7 and so on: the scaler was not reached.
    EXPECT_EQ(crop(), "(l: 38, t: 32, r: 50, b: 48)");
    EXPECT_TRUE(logged(kError, "Failed to get binner:output"));

    loadSensor();
    remove("sensor:pixel_array:output");
    // Nor was the binner: 8 + 7, 4 + 9, 8 + 13, 4 + 17.
    EXPECT_EQ(history(), text(qv_isp_zmt_resolution_info{4224, 3136, {15, 13, 21, 21}, 1020, 740, {}}));
}

TEST_F(SensorHistoryTest, FailedModeIsReported)
{
    remove("sensor:binner:h_factor");
    EXPECT_EQ(calculate(), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"2 Calculating resolution history for source sensor",
                               "16 Error: Couldn't get horizontal binning factor",
                               "16 Error: Couldn't get binning factor", "16 Failed to get sensor mode information"}));
}

TEST_F(SensorHistoryTest, PortIsDemanded)
{
    remove("sensor:port_0");
    EXPECT_EQ(calculate(), StatusMissingObject);
    EXPECT_TRUE(loggedExactly(
        {"2 Calculating resolution history for source sensor", "16 Could not find port_0- check node description"}));
    replace("sensor:port_0", 5); // no node
    EXPECT_EQ(calculate(), StatusMissingObject);
}

TEST_F(SensorHistoryTest, FailedBackEndIsReportedByItselfOnly)
{
    remove("csi_be:output");
    EXPECT_EQ(calculate(), StatusMissingObject);
    EXPECT_EQ(lines().back(), "16 Failed to get output node for csi_be");
}

TEST_F(SensorHistoryTest, SensorThatLeadsNowhereHasNoOutputSize)
{
    remove("sensor:port_0:peer");
    // 8 + 16 + 2 * (4 + 11 + 2 * 3) = 66 and 4 + 10 + 2 * (2 + 6 + 2 * 5) = 50
    EXPECT_EQ(history(), text(qv_isp_zmt_resolution_info{4224, 3136, symmetric(66, 50), 0, 0, {}}));
}

TEST_F(SensorHistoryTest, SensorOfAnotherImplementationIsAskedThroughTheInterface)
{
    ForwardingNode root(*mRoot);
    IGraphConfig* const sensor = root.getDescendant(NUXO_KEY_SENSOR);
    ASSERT_NE(sensor, nullptr);
    EXPECT_EQ(calculateOf(*sensor), StatusOk);
    EXPECT_EQ(text(mHistory), text(kComplete));
}

} // namespace

} // namespace graphtest
