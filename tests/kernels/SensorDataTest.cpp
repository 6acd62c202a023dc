// SPDX-License-Identifier: Apache-2.0
// Calibration tag and exposure mode of the source.
#include "kernels/KernelsFixture.h"

namespace graphtest {

namespace {

class SensorDataTest : public KernelsTest {
protected:
    /// Asks for the tag; the result is in mTag, "before" beforehand.
    int cmcId()
    {
        mTag = "before";
        return mUtils->getSensorCmcId(mTag);
    }

    /// Asks for gain and mode; the results are in mGain and mMode, 7 and "before" beforehand.
    int dolInfo()
    {
        mGain = 7.0F;
        mMode = "before";
        return mUtils->getDolInfo(mGain, mMode);
    }

    /// Initialises with a sensor of these attributes.
    void initSensor(const std::string& attributes) { initWith(element("source", "sensor", attributes)); }

    static inline const std::string kNoSource =
        "16 Error: Couldn't find any source (sensor or buf src). Check your settings.";
    static inline const std::string kNoTag = "16 Error: Couldn't get cmc tag. Check your settings.";

    std::string mTag;
    float mGain = 0.0F;
    std::string mMode;
};

TEST_F(SensorDataTest, NothingIsKnownBeforeInitialisation)
{
    EXPECT_EQ(cmcId(), StatusMissingObject);
    EXPECT_EQ(mTag, "before");
    EXPECT_TRUE(loggedExactly({kNotInitialised}));
    clearLog();
    EXPECT_EQ(dolInfo(), StatusMissingObject);
    EXPECT_EQ(mGain, 7.0F);
    EXPECT_EQ(mMode, "before");
    EXPECT_TRUE(loggedExactly({kNotInitialised}));
}

TEST_F(SensorDataTest, TagIsThatOfTheSensor)
{
    initSensor("cmc_tag='GRBG_rear'");
    clearLog();
    EXPECT_EQ(cmcId(), StatusOk);
    EXPECT_EQ(mTag, "GRBG_rear");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(SensorDataTest, SensorComesBeforeTheBufferSourceAlsoWithoutATag)
{
    initWith(bufferSource("", 1, 1, "cmc_tag='of_buffer'") + element("source", "sensor", "cmc_tag='of_sensor'"));
    EXPECT_EQ(cmcId(), StatusOk);
    EXPECT_EQ(mTag, "of_sensor");
    initWith(bufferSource("", 1, 1, "cmc_tag='of_buffer'") + element("source", "sensor", ""));
    EXPECT_EQ(cmcId(), StatusBadState);
    EXPECT_EQ(mTag, "");
}

TEST_F(SensorDataTest, BufferSourceServesWithoutASensor)
{
    initWith(bufferSource("", 1, 1, "cmc_tag='of_buffer' conversion_gain='2' dol_mode='two'"));
    EXPECT_EQ(cmcId(), StatusOk);
    EXPECT_EQ(mTag, "of_buffer");
    EXPECT_EQ(dolInfo(), StatusOk);
    EXPECT_EQ(mGain, 2.0F);
    EXPECT_EQ(mMode, "two");
}

TEST_F(SensorDataTest, OtherSourcesDoNotServe)
{
    for (const char* const name : {"tpg", "buffer_src1", "sensor0"}) {
        initWith(element("source", name, "cmc_tag='x' conversion_gain='2' dol_mode='two'"));
        clearLog();
        EXPECT_EQ(cmcId(), StatusMissingObject) << name;
        EXPECT_EQ(mTag, "before");
        EXPECT_TRUE(loggedExactly({kNoSource}));
        clearLog();
        EXPECT_EQ(dolInfo(), StatusMissingObject) << name;
        EXPECT_EQ(mGain, 7.0F);
        EXPECT_EQ(mMode, "before");
        EXPECT_TRUE(loggedExactly({kNoSource}));
    }
}

TEST_F(SensorDataTest, SourceIsToldByItsNameNotByItsType)
{
    initWith(element("node", "sensor", "cmc_tag='x'") + element("source", "front", "cmc_tag='y'"));
    EXPECT_EQ(cmcId(), StatusOk);
    EXPECT_EQ(mTag, "x");
}

TEST_F(SensorDataTest, MissingEmptyOrOtherTagIsReported)
{
    for (const char* const attributes : {"", "cmc_tag=''"}) {
        initSensor(attributes);
        clearLog();
        EXPECT_EQ(cmcId(), StatusBadState) << attributes;
        EXPECT_EQ(mTag, "");
        EXPECT_TRUE(loggedExactly({kNoTag}));
    }
    initSensor("");
    node("sensor")->addValue(NUXO_KEY_CMC_TAG, 5);
    clearLog();
    EXPECT_EQ(cmcId(), StatusBadState);
    EXPECT_TRUE(loggedExactly({kNoTag}));
}

TEST_F(SensorDataTest, GainAndModeComeTogether)
{
    initSensor("conversion_gain='2.5' dol_mode='DOL_2'");
    clearLog();
    EXPECT_EQ(dolInfo(), StatusOk);
    EXPECT_EQ(mGain, 2.5F);
    EXPECT_EQ(mMode, "DOL_2");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(SensorDataTest, WithoutGainThereIsNoMode)
{
    for (const char* const attributes : {"", "dol_mode='two'", "conversion_gain='' dol_mode='two'"}) {
        initSensor(attributes);
        clearLog();
        EXPECT_EQ(dolInfo(), StatusOk) << attributes;
        EXPECT_EQ(mGain, 1.0F);
        EXPECT_EQ(mMode, "");
        EXPECT_TRUE(loggedExactly({}));
    }
    initSensor("dol_mode='two'");
    node("sensor")->addValue(NUXO_KEY_CONVERSION_GAIN, 3);
    EXPECT_EQ(dolInfo(), StatusOk);
    EXPECT_EQ(mMode, "");
}

TEST_F(SensorDataTest, WithoutModeTheGainIsOne)
{
    for (const char* const attributes : {"conversion_gain='2.5'", "conversion_gain='2.5' dol_mode=''"}) {
        initSensor(attributes);
        EXPECT_EQ(dolInfo(), StatusOk) << attributes;
        EXPECT_EQ(mGain, 1.0F);
        EXPECT_EQ(mMode, "");
    }
}

TEST_F(SensorDataTest, GainIsADecimalNumberWithAnythingBehindIt)
{
    const std::pair<const char*, float> gains[] = {{"3", 3.0F},     {"-0.25", -0.25F}, {" 1.5", 1.5F}, {"+2", 2.0F},
                                                   {"1.5x2", 1.5F}, {"2.5e1", 25.0F},  {".5", 0.5F},   {"4.,8", 4.0F}};
    for (const auto& [text, expected] : gains) {
        initSensor(std::string("dol_mode='two' conversion_gain='") + text + "'");
        EXPECT_EQ(dolInfo(), StatusOk);
        EXPECT_EQ(mGain, expected) << text;
    }
}

TEST_F(SensorDataTest, GainThatIsNoNumberIsOne)
{
    for (const char* const text : {"high", "x1.5", ",5", " ", "--2", "1e999", "-1e39", "e5"}) {
        initSensor(std::string("dol_mode='two' conversion_gain='") + text + "'");
        clearLog();
        EXPECT_EQ(dolInfo(), StatusOk);
        EXPECT_EQ(mGain, 1.0F) << text;
        EXPECT_EQ(mMode, "two");
        EXPECT_TRUE(loggedExactly({}));
    }
}

} // namespace

} // namespace graphtest
