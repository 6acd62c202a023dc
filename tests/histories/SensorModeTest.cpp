// SPDX-License-Identifier: Apache-2.0
#include "frame_params/ForwardingNode.h"
#include "histories/SourceFixture.h"

#include <cstring>

namespace graphtest {

namespace {

using Mode = ZmtTevUtils::SensorModeInfo;

std::string frame(int width, int height, const qv_rectangle& crop)
{
    return std::to_string(width) + "x" + std::to_string(height) + text(crop);
}

std::string text(const Mode& mode)
{
    return "array " + frame(mode.pixelArrayInputWidth, mode.pixelArrayInputHeight, mode.pixelArrayInputCrop) + " to " +
           frame(mode.pixelArrayOutputWidth, mode.pixelArrayOutputHeight, mode.pixelArrayOutputCrop) + ", binner " +
           frame(mode.binnerInputWidth, mode.binnerInputHeight, mode.binnerInputCrop) + " to " +
           frame(mode.binnerOutputWidth, mode.binnerOutputHeight, mode.binnerOutputCrop) + " by " +
           std::to_string(mode.binningHorizontal) + "," + std::to_string(mode.binningVertical) + ", scaler " +
           frame(mode.scalerInputWidth, mode.scalerInputHeight, mode.scalerInputCrop) + " to " +
           frame(mode.scalerOutputWidth, mode.scalerOutputHeight, mode.scalerOutputCrop) + " by " +
           std::to_string(mode.scalingNumerator) + "/" + std::to_string(mode.scalingDenominator);
}

/// The mode of the complete sensor. Right is left and bottom is top; the array's output crop is not read.
Mode completeMode()
{
    return {4224,
            3136,
            symmetric(8, 4),
            4208,
            3120,
            {},
            4192,
            3104,
            symmetric(16, 10),
            2096,
            1552,
            symmetric(4, 2),
            2,
            2,
            2080,
            1540,
            symmetric(11, 6),
            1040,
            770,
            symmetric(3, 5),
            1,
            2};
}

constexpr const char* kNoArray =
    "32 Warning, no pixel_array, make sure source has no pixel array. Defaulting to sensor dimensions.";
constexpr const char* kDifferentFactors = "32 Sensor mode specifies different binning factor for horizontal and "
                                          "vertical.this is not supported, resolution history will be wrong ";
constexpr const char* kNoScaling = "32 Warning: Couldn't get scaling factor: Default to 1/1";
constexpr const char* kNoScalingPart = "16 Error: Couldn't get width scaling num ratio";

class SensorModeTest : public SourceTest {
protected:
    SensorModeTest() { loadSensor(); }

    int read() { return readOf(node("sensor")); }

    int readOf(IGraphConfig& sensor)
    {
        std::memset(static_cast<void*>(&mMode), 0x5a, sizeof(mMode)); // as if an earlier read had left something
        clearLog();
        return ZmtTevUtils::getSensorModeInfo(sensor, mMode);
    }

    /// The complete sensor without the item at @p path.
    int readWithout(const std::string& path)
    {
        loadSensor();
        remove(path);
        return read();
    }

    /// The complete sensor with a text at @p path where an integer should be.
    int readWithTextAt(const std::string& path)
    {
        loadSensor();
        replaceByText(path);
        return read();
    }

    /// Each of these numbers is demanded of the node at @p path, with the message of the whole read behind its own.
    void expectDemanded(const std::string& path, const Lines& names, const std::string& message)
    {
        const auto spoken = [](const std::string& name) {
            return name == "left" || name == "top" ? name + " crop" : name;
        };
        for (const std::string& name : names) {
            const std::string number = path + ":" + name;
            const Lines expected = {"16 Error: Couldn't get " + spoken(name), "16 " + message};
            EXPECT_EQ(readWithout(number), StatusNotFound) << number;
            EXPECT_TRUE(loggedExactly(expected)) << number;
            EXPECT_EQ(readWithTextAt(number), StatusNotFound) << number;
            EXPECT_TRUE(loggedExactly(expected)) << number;
        }
    }

    Mode mMode;
};

TEST_F(SensorModeTest, NewModeHasFactorsOfOne)
{
    Mode expected{};
    std::memset(static_cast<void*>(&expected), 0, sizeof(expected));
    expected.binningHorizontal = expected.binningVertical = 1;
    expected.scalingNumerator = expected.scalingDenominator = 1;
    EXPECT_EQ(text(Mode()), text(expected));
}

TEST_F(SensorModeTest, AllStagesAreRead)
{
    EXPECT_EQ(read(), StatusOk);
    EXPECT_EQ(text(mMode), text(completeMode()));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(SensorModeTest, CropsAreSymmetricWhateverTheGraphSays)
{
    for (const char* stage : {"pixel_array:input", "pixel_array:output", "binner:input", "binner:output",
                              "scaler:input", "scaler:output"}) {
        const std::string path = std::string("sensor:") + stage;
        replace(path + ":right", 77);
        replace(path + ":bottom", 78);
    }
    EXPECT_EQ(read(), StatusOk);
    EXPECT_EQ(text(mMode), text(completeMode()));
}

TEST_F(SensorModeTest, OutputCropOfThePixelArrayIsNotRead)
{
    replace("sensor:pixel_array:output:left", 77);
    replaceByText("sensor:pixel_array:output:top");
    EXPECT_EQ(read(), StatusOk);
    EXPECT_EQ(text(mMode), text(completeMode()));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(SensorModeTest, SensorAloneIsItsOwnPixelArray)
{
    load(sensor("") + kBackEnd);
    EXPECT_EQ(read(), StatusOk);
    const Mode expected = {4000, 3000, {}, 4000, 3000, {}, 4000, 3000, {}, 4000, 3000,
                           {},   1,    1,  4000, 3000, {}, 4000, 3000, {}, 1,    1};
    EXPECT_EQ(text(mMode), text(expected));
    EXPECT_TRUE(loggedExactly({kNoArray}));
}

TEST_F(SensorModeTest, PixelArrayWithoutAnInputCountsAsNone)
{
    Mode expected = completeMode();
    expected.pixelArrayInputWidth = expected.pixelArrayOutputWidth = 4000;
    expected.pixelArrayInputHeight = expected.pixelArrayOutputHeight = 3000;
    expected.pixelArrayInputCrop = {};
    EXPECT_EQ(readWithout("sensor:pixel_array:input"), StatusOk);
    EXPECT_EQ(text(mMode), text(expected));
    EXPECT_TRUE(loggedExactly({kNoArray}));
    EXPECT_EQ(readWithout("sensor:pixel_array"), StatusOk);
    EXPECT_EQ(text(mMode), text(expected));
    EXPECT_TRUE(loggedExactly({kNoArray}));
}

TEST_F(SensorModeTest, StagesThatAreNoNodesCountAsNone)
{
    replace("sensor:pixel_array", 1);
    replace("sensor:binner", 2);
    replace("sensor:scaler", 3);
    EXPECT_EQ(read(), StatusOk);
    EXPECT_EQ(mMode.scalerOutputWidth, 4000);
    EXPECT_EQ(mMode.binningHorizontal, 1);
    EXPECT_TRUE(loggedExactly({kNoArray}));
}

TEST_F(SensorModeTest, WithoutABinnerTheArraysOutputGoesOn)
{
    Mode expected = completeMode();
    expected.binnerInputWidth = expected.binnerOutputWidth = 4208;
    expected.binnerInputHeight = expected.binnerOutputHeight = 3120;
    expected.binnerInputCrop = expected.binnerOutputCrop = {};
    expected.binningHorizontal = expected.binningVertical = 1;
    EXPECT_EQ(readWithout("sensor:binner"), StatusOk);
    EXPECT_EQ(text(mMode), text(expected));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(SensorModeTest, WithoutAScalerTheBinnersOutputGoesOn)
{
    Mode expected = completeMode();
    expected.scalerInputWidth = expected.scalerOutputWidth = 2096;
    expected.scalerInputHeight = expected.scalerOutputHeight = 1552;
    expected.scalerInputCrop = expected.scalerOutputCrop = {};
    expected.scalingDenominator = 1;
    EXPECT_EQ(readWithout("sensor:scaler"), StatusOk);
    EXPECT_EQ(text(mMode), text(expected));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(SensorModeTest, SizeOfTheSensorIsDemandedAndItsTreeShown)
{
    for (const std::string name : {"width", "height"}) {
        EXPECT_EQ(readWithout("sensor:" + name), StatusNotFound);
        const Lines said = lines();
        clearLog();
        NUXO::GraphCameraUtil::dumpNodeTree(&node("sensor"), 1);
        Lines expected = lines();
        ASSERT_FALSE(expected.empty());
        expected.insert(expected.begin(), {"16 Error: Couldn't get " + name,
                                           "16 Failed to get dimensions(width, height) for the source sensor"});
        EXPECT_EQ(said, expected);
    }
    EXPECT_EQ(readWithTextAt("sensor:width"), StatusNotFound);
    EXPECT_TRUE(logged(kError, "Failed to get dimensions(width, height) for the source sensor"));
}

TEST_F(SensorModeTest, NumbersOfPresentStagesAreDemanded)
{
    const Lines size = {"width", "height"};
    const Lines sizeAndCrop = {"width", "height", "left", "top"};
    expectDemanded("sensor:pixel_array:input", sizeAndCrop, "Failed to get pixel array dimensions");
    expectDemanded("sensor:pixel_array:output", size, "Failed to get pixel array output dimensions");
    expectDemanded("sensor:binner:input", sizeAndCrop, "Failed to get binner input dimensions and crop");
    expectDemanded("sensor:binner:output", sizeAndCrop, "Failed to get binner output dimensions and crop");
    // The words of the output on purpose.
    expectDemanded("sensor:scaler:input", sizeAndCrop, "Failed to get scaler output dimensions and crop");
    expectDemanded("sensor:scaler:output", sizeAndCrop, "Failed to get scaler output dimensions and crop");
}

/// The complete mode up to a stage, and everything behind it as in a new one.
enum class Upto { ArrayInput, Factors, BinnerInput, BinnerOutput, ScalerInput };

Mode partOfMode(Upto last)
{
    const Mode all = completeMode();
    Mode part;
    part.pixelArrayInputWidth = all.pixelArrayInputWidth;
    part.pixelArrayInputHeight = all.pixelArrayInputHeight;
    part.pixelArrayInputCrop = all.pixelArrayInputCrop;
    if (last == Upto::ArrayInput) return part;
    part.pixelArrayOutputWidth = all.pixelArrayOutputWidth;
    part.pixelArrayOutputHeight = all.pixelArrayOutputHeight;
    part.binningHorizontal = part.binningVertical = 2;
    if (last == Upto::Factors) return part;
    part.binnerInputWidth = all.binnerInputWidth;
    part.binnerInputHeight = all.binnerInputHeight;
    part.binnerInputCrop = all.binnerInputCrop;
    if (last == Upto::BinnerInput) return part;
    part.binnerOutputWidth = all.binnerOutputWidth;
    part.binnerOutputHeight = all.binnerOutputHeight;
    part.binnerOutputCrop = all.binnerOutputCrop;
    part.scalingDenominator = 2;
    if (last == Upto::BinnerOutput) return part;
    part.scalerInputWidth = all.scalerInputWidth;
    part.scalerInputHeight = all.scalerInputHeight;
    part.scalerInputCrop = all.scalerInputCrop;
    return part;
}

TEST_F(SensorModeTest, MissingSideOfAStageEndsTheReadWithSuccess)
{
    const struct {
        const char* path;
        const char* message;
        Upto last;
    } sides[] = {
        {"sensor:pixel_array:output", "16 Failed to get pixel_array:output", Upto::ArrayInput},
        {"sensor:binner:input", "16 Failed to get binner:input", Upto::Factors},
        {"sensor:binner:output", "16 Failed to get binner:output", Upto::BinnerInput},
        {"sensor:scaler:input", "16 Failed to get scaler:input", Upto::BinnerOutput},
        {"sensor:scaler:output", "16 Failed to get scaler:output", Upto::ScalerInput},
    };
    for (const auto& side : sides) {
        const std::string expected = text(partOfMode(side.last));
        EXPECT_EQ(readWithout(side.path), StatusOk) << side.path;
        EXPECT_EQ(text(mMode), expected) << side.path;
        EXPECT_TRUE(loggedExactly({side.message})) << side.path;
        // An attribute is no side either.
        EXPECT_EQ(readWithTextAt(side.path), StatusOk) << side.path;
        EXPECT_EQ(text(mMode), expected) << side.path;
        EXPECT_TRUE(loggedExactly({side.message})) << side.path;
    }
}

TEST_F(SensorModeTest, BinningFactorsAreDemanded)
{
    for (const auto& [name, spoken] :
         {std::pair<std::string, std::string>("h_factor", "horizontal"), {"v_factor", "vertical"}}) {
        const Lines expected = {"16 Error: Couldn't get " + spoken + " binning factor",
                                "16 Error: Couldn't get binning factor"};
        EXPECT_EQ(readWithout("sensor:binner:" + name), StatusMissingData);
        EXPECT_TRUE(loggedExactly(expected)) << name;
        EXPECT_EQ(readWithTextAt("sensor:binner:" + name), StatusNotFound);
        EXPECT_TRUE(loggedExactly(expected)) << name;
    }
}

TEST_F(SensorModeTest, DifferentBinningFactorsAreOnlyWarnedAbout)
{
    replace("sensor:binner:v_factor", 3);
    EXPECT_EQ(read(), StatusOk);
    Mode expected = completeMode();
    expected.binningVertical = 3;
    EXPECT_EQ(text(mMode), text(expected));
    EXPECT_TRUE(loggedExactly({kDifferentFactors}));
}

TEST_F(SensorModeTest, BinningFactorsOfZeroStay)
{
    replace("sensor:binner:h_factor", 0);
    replace("sensor:binner:v_factor", 0);
    EXPECT_EQ(read(), StatusOk);
    EXPECT_EQ(mMode.binningHorizontal, 0);
    EXPECT_EQ(mMode.binningVertical, 0);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(SensorModeTest, ScalingThatCannotBeReadIsOne)
{
    Mode expected = completeMode();
    expected.scalingDenominator = 1;
    for (const std::string name : {"num_factor", "denom_factor"}) {
        const std::string path = "sensor:scaler:" + name;
        loadSensor();
        replace("sensor:scaler:num_factor", 3); // must not survive half a read
        remove(path);
        EXPECT_EQ(read(), StatusOk) << name;
        EXPECT_EQ(text(mMode), text(expected)) << name;
        EXPECT_TRUE(loggedExactly({kNoScalingPart, kNoScaling})) << name;
        replaceByText(path);
        EXPECT_EQ(read(), StatusOk) << name;
        EXPECT_EQ(text(mMode), text(expected)) << name;
        EXPECT_TRUE(loggedExactly({kNoScalingPart, kNoScaling})) << name;
    }
}

TEST_F(SensorModeTest, ScalingOfZeroIsReplaced)
{
    constexpr const char* kDenominator = "32 Scaling Denominator is 0! Wrong setting! Set to 1";
    constexpr const char* kNumerator = "32 Scaling Numerator is 0! Wrong setting! Set to 1";
    const struct {
        int numerator, denominator;
        Lines lines;
    } fractions[] = {{3, 0, {kDenominator}}, {0, 5, {kNumerator}}, {0, 0, {kDenominator, kNumerator}}, {-3, -5, {}}};
    for (const auto& fraction : fractions) {
        replace("sensor:scaler:num_factor", fraction.numerator);
        replace("sensor:scaler:denom_factor", fraction.denominator);
        EXPECT_EQ(read(), StatusOk);
        EXPECT_EQ(mMode.scalingNumerator, fraction.numerator == 0 ? 1 : fraction.numerator);
        EXPECT_EQ(mMode.scalingDenominator, fraction.denominator == 0 ? 1 : fraction.denominator);
        EXPECT_TRUE(loggedExactly(fraction.lines));
    }
}

TEST_F(SensorModeTest, SensorOfAnotherImplementationIsAskedThroughTheInterface)
{
    ForwardingNode root(*mRoot);
    IGraphConfig* const sensor = root.getDescendant(NUXO_KEY_SENSOR);
    ASSERT_NE(sensor, nullptr);
    EXPECT_EQ(readOf(*sensor), StatusOk);
    EXPECT_EQ(text(mMode), text(completeMode()));
    EXPECT_TRUE(loggedExactly({}));

    remove("sensor:height");
    EXPECT_EQ(readOf(*sensor), StatusNotFound);
    EXPECT_TRUE(logged(kError, "Failed to get dimensions(width, height) for the source sensor"));
}

TEST_F(SensorModeTest, NumbersAreTakenAsTheyAre)
{
    replace("sensor:pixel_array:input:width", -1);
    replace("sensor:binner:output:left", -2147483647 - 1);
    replace("sensor:scaler:input:top", 2147483647);
    EXPECT_EQ(read(), StatusOk);
    EXPECT_EQ(mMode.pixelArrayInputWidth, -1);
    EXPECT_EQ(mMode.binnerOutputCrop.right, -2147483647 - 1);
    EXPECT_EQ(mMode.scalerInputCrop.bottom, 2147483647);
}

} // namespace

} // namespace graphtest
