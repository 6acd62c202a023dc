// SPDX-License-Identifier: Apache-2.0
#include "camera/MockNode.h"
#include "camera/PortFixture.h"

#include <array>

namespace graphtest {

namespace {

struct Dimension {
    uint32_t key;
    const char* failure;
};

/// In the order in which they are read.
constexpr std::array<Dimension, 6> kDimensions = {{
    {NUXO_KEY_WIDTH, "16 Error: Couldn't get width"},
    {NUXO_KEY_HEIGHT, "16 Error: Couldn't get height"},
    {NUXO_KEY_LEFT, "16 Error: Couldn't get left crop"},
    {NUXO_KEY_TOP, "16 Error: Couldn't get top crop"},
    {NUXO_KEY_RIGHT, "16 Error: Couldn't get right crop"},
    {NUXO_KEY_BOTTOM, "16 Error: Couldn't get bottom crop"},
}};

class DimensionsTest : public PortTest {
protected:
    using Values = std::array<int, kDimensions.size()>;
    static constexpr Values kOld = {-101, -102, -103, -104, -105, -106};

    void loadAll() { loadPort(R"(width="1" height="2" left="3" top="4" right="5" bottom="6")"); }

    /// Asks for the dimensions whose bits are set in @p wanted, width first.
    int ask(const IGraphConfig* port, unsigned int wanted = 0x3F)
    {
        mValues = kOld;
        std::array<int*, kDimensions.size()> outputs{};
        for (size_t i = 0; i < outputs.size(); ++i) outputs[i] = (wanted >> i & 1U) != 0 ? &mValues[i] : nullptr;
        return GraphCameraUtil::getDimensions(port, outputs[0], outputs[1], outputs[2], outputs[3], outputs[4],
                                              outputs[5]);
    }

    /// Expects that the dimension @p missing ends the question after those before it.
    void expectFailureAt(size_t missing)
    {
        clearLog();
        EXPECT_EQ(ask(out()), StatusNotFound);
        EXPECT_TRUE(loggedExactly({kDimensions[missing].failure}));
        for (size_t i = 0; i < mValues.size(); ++i) {
            EXPECT_EQ(mValues[i], i < missing ? static_cast<int>(i) + 1 : kOld[i]) << missing << ' ' << i;
        }
    }

    Values mValues = kOld;
};

TEST_F(DimensionsTest, AllSixAreHandedOut)
{
    loadAll();
    EXPECT_EQ(ask(out()), StatusOk);
    EXPECT_EQ(mValues, (Values{1, 2, 3, 4, 5, 6}));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(DimensionsTest, OutputsThatNobodyWantsAreNotRead)
{
    for (unsigned int wanted = 0; wanted < 0x40; ++wanted) {
        loadAll();
        for (size_t i = 0; i < kDimensions.size(); ++i) {
            if ((wanted >> i & 1U) == 0) out()->removeDescendant(kDimensions[i].key);
        }
        EXPECT_EQ(ask(out(), wanted), StatusOk) << wanted;
        for (size_t i = 0; i < mValues.size(); ++i) {
            EXPECT_EQ(mValues[i], (wanted >> i & 1U) != 0 ? static_cast<int>(i) + 1 : kOld[i]) << wanted;
        }
        EXPECT_TRUE(loggedExactly({})) << wanted;
    }
}

TEST_F(DimensionsTest, CropMayBeLeftOutOfTheCall)
{
    loadPort("width=\"1\" height=\"2\"");
    int width = 0;
    int height = 0;
    EXPECT_EQ(GraphCameraUtil::getDimensions(out(), &width, &height), StatusOk);
    EXPECT_EQ(width, 1);
    EXPECT_EQ(height, 2);
    loadPort("left=\"3\" top=\"4\"");
    EXPECT_EQ(GraphCameraUtil::getDimensions(out(), nullptr, nullptr, &width, &height), StatusOk);
    EXPECT_EQ(width, 3);
    EXPECT_EQ(height, 4);
}

TEST_F(DimensionsTest, FirstThatIsMissingIsReported)
{
    for (size_t missing = 0; missing < kDimensions.size(); ++missing) {
        loadAll();
        for (size_t i = missing; i < kDimensions.size(); ++i) out()->removeDescendant(kDimensions[i].key);
        expectFailureAt(missing);
    }
}

TEST_F(DimensionsTest, ValueOfAnotherKindIsReportedLikeAMissingOne)
{
    for (size_t wrong = 0; wrong < kDimensions.size(); ++wrong) {
        loadAll();
        out()->removeDescendant(kDimensions[wrong].key);
        out()->addValue(kDimensions[wrong].key, std::string("1"));
        expectFailureAt(wrong);
    }
}

TEST_F(DimensionsTest, AnyNumberIsADimension)
{
    loadPort(std::string("width=\"") + kSmallest + "\" height=\"" + kLargest +
             "\" left=\"-1\" top=\"0\" right=\"-2\" bottom=\"0\"");
    EXPECT_EQ(ask(out()), StatusOk);
    EXPECT_EQ(mValues, (Values{-2147483647 - 1, 2147483647, -1, 0, -2, 0}));
}

TEST_F(DimensionsTest, PeerIsNotAsked)
{
    loadPair("height=\"2\"", "width=\"1\"");
    EXPECT_EQ(ask(out(), 3), StatusNotFound);
    EXPECT_TRUE(loggedExactly({kDimensions[0].failure}));
}

TEST_F(DimensionsTest, NoPortIsRefusedSilently)
{
    EXPECT_EQ(ask(nullptr), StatusBadArgument);
    EXPECT_EQ(GraphCameraUtil::getDimensions(nullptr, nullptr, nullptr), StatusBadArgument);
    EXPECT_EQ(mValues, kOld);
    EXPECT_TRUE(loggedExactly({}));
}

// --- factors of sensors ---

struct Factors {
    const char* name;
    int (*read)(const IGraphConfig*, int&, int&);
    uint32_t first;
    uint32_t second;
    const char* firstFailure;
    const char* secondFailure;
};

const std::array<Factors, 2> kFactors = {{
    {"binning", GraphCameraUtil::sensorGetBinningFactor, NUXO_KEY_H_FACTOR, NUXO_KEY_V_FACTOR,
     "16 Error: Couldn't get horizontal binning factor", "16 Error: Couldn't get vertical binning factor"},
    {"scaling", GraphCameraUtil::sensorGetScalingFactor, NUXO_KEY_NUM_FACTOR, NUXO_KEY_DENOM_FACTOR,
     "16 Error: Couldn't get width scaling num ratio", "16 Error: Couldn't get width scaling num ratio"},
}};

class SensorFactorTest : public PortTest {
protected:
    int ask(const Factors& factors, const IGraphConfig* sensor)
    {
        mFirst = -101;
        mSecond = -102;
        clearLog();
        return factors.read(sensor, mFirst, mSecond);
    }

    /// Expects this status with this line, and a second factor as it was.
    void expectFailure(const Factors& factors, const GraphConfigNode& sensor, int status, const std::string& line)
    {
        EXPECT_EQ(ask(factors, &sensor), status) << factors.name;
        EXPECT_TRUE(loggedExactly({line}));
        EXPECT_EQ(mSecond, -102) << factors.name;
    }

    int mFirst = 0;
    int mSecond = 0;
};

TEST_F(SensorFactorTest, BothFactorsAreHandedOutAsTheyAre)
{
    for (const Factors& factors : kFactors) {
        for (const int value : {0, 2, -3, 2147483647, -2147483647 - 1}) {
            GraphConfigNode sensor;
            sensor.addValue(factors.first, value);
            sensor.addValue(factors.second, 7);
            EXPECT_EQ(ask(factors, &sensor), StatusOk) << factors.name;
            EXPECT_EQ(mFirst, value) << factors.name;
            EXPECT_EQ(mSecond, 7) << factors.name;
            EXPECT_TRUE(loggedExactly({}));
        }
    }
}

TEST_F(SensorFactorTest, NoSensorIsRefusedSilently)
{
    for (const Factors& factors : kFactors) {
        EXPECT_EQ(ask(factors, nullptr), StatusBadArgument) << factors.name;
        EXPECT_EQ(mFirst, -101) << factors.name;
        EXPECT_TRUE(loggedExactly({})) << factors.name;
    }
}

TEST_F(SensorFactorTest, StatusOfTheFailedReadIsHandedOut)
{
    for (const Factors& factors : kFactors) {
        GraphConfigNode sensor;
        expectFailure(factors, sensor, StatusMissingData, factors.firstFailure);
        sensor.addValue(factors.first, 2);
        expectFailure(factors, sensor, StatusMissingData, factors.secondFailure);
        sensor.addValue(factors.second, std::string("2"));
        expectFailure(factors, sensor, StatusNotFound, factors.secondFailure);
    }
}

TEST_F(SensorFactorTest, SecondFactorDoesNotHelpWithoutTheFirst)
{
    for (const Factors& factors : kFactors) {
        GraphConfigNode sensor;
        sensor.addValue(factors.second, 7);
        expectFailure(factors, sensor, StatusMissingData, factors.firstFailure);
        sensor.addValue(factors.first, std::string("2"));
        expectFailure(factors, sensor, StatusNotFound, factors.firstFailure);
    }
}

TEST_F(SensorFactorTest, AnyStatusOfTheReadIsHandedOut)
{
    for (const Factors& factors : kFactors) {
        MockNode sensor;
        sensor.mReadFailure = StatusMissingObject;
        EXPECT_EQ(ask(factors, &sensor), StatusMissingObject) << factors.name;
        sensor.mIntegers[factors.first] = 2;
        EXPECT_EQ(ask(factors, &sensor), StatusMissingObject) << factors.name;
        EXPECT_EQ(mFirst, 2) << factors.name;
    }
}

} // namespace

} // namespace graphtest
