// SPDX-License-Identifier: Apache-2.0
#include "query/GraphFixture.h"

namespace graphtest {

namespace {

class SensorModeTest : public GraphTest {
protected:
    void loadPair(const std::string& sensor, const std::string& modes)
    {
        mRoot = tree("<sensor" + sensor + "</sensor><sensor_modes" + modes + "</sensor_modes>");
        clearLog();
    }

    GraphConfigNode& sensor() const { return at(*mRoot, "sensor"); }
    int choose(const std::string& mode)
    {
        return mManager.addSensorModeData(&sensor(), &at(*mRoot, "sensor_modes"), mode);
    }

    Tree mRoot;
    GraphQueryManager mManager;
};

TEST_F(SensorModeTest, ModeIsMergedOverDefaultsOverTheSensor)
{
    loadPair(" fps=\"1\" bpp=\"1\" width=\"1\" name=\"sensor\"><pixel_array><output left=\"1\"/></pixel_array>",
             R"( fps="2" bpp="2"><pixel_array top="2"/><mode name="0" bpp="9"/>
                <mode name="1" bpp="3" left="3"><pixel_array top="3"><output left="3"/></pixel_array>
                  <binner right="3"/></mode>)");
    EXPECT_EQ(choose("1"), StatusOk);
    EXPECT_EQ(text(sensor()), "name='sensor' pixel_array{output{left=3} top=3} binner{right=3} "
                              "bpp=3 fps=2 left=3 width=1");
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_TRUE(linked(*mRoot));
}

TEST_F(SensorModeTest, DefaultsReachChildrenOfTheSensorButAddNone)
{
    loadPair("><pixel_array/>",
             "><pixel_array top=\"2\"><output/></pixel_array><scaler left=\"2\"/><mode name=\"0\"/>");
    EXPECT_EQ(choose("0"), StatusOk);
    EXPECT_EQ(text(sensor()), "name='0' pixel_array{top=2}"); // the mode gave the nameless sensor its name
}

TEST_F(SensorModeTest, UnknownModeIsReportedBehindTheDefaults)
{
    loadPair(" fps=\"1\">", " fps=\"2\"><mode name=\"0\" bpp=\"9\"/>");
    for (const char* mode : {"1", "00", "", "0 "}) {
        clearLog();
        EXPECT_EQ(choose(mode), StatusBadState) << mode;
        EXPECT_TRUE(loggedExactly({std::string("16 Sensor Mode ") + mode + " not in the list of available modes"}));
        EXPECT_EQ(text(sensor()), "fps=2");
    }
}

TEST_F(SensorModeTest, FirstModeOfTheNameInKeyOrderCounts)
{
    // `binner` (39) is a built-in name and comes before `mode`; as a child of sensor_modes it may be a mode too.
    loadPair(" name=\"sensor\">", R"(><mode name="0" bpp="1"/><mode name="0" bpp="2"/>)");
    EXPECT_EQ(choose("0"), StatusOk);
    EXPECT_EQ(value(sensor(), "bpp"), "1");
    loadPair(" name=\"sensor\">", R"(><mode name="0" bpp="1"/><binner name="0" bpp="3"/>)");
    EXPECT_EQ(choose("0"), StatusOk);
    EXPECT_EQ(value(sensor(), "bpp"), "3");
}

TEST_F(SensorModeTest, OnlyDirectChildrenWithATextNameAreModes)
{
    loadPair(">", "><group><mode name=\"0\" bpp=\"1\"/></group><mode/>");
    at(*mRoot, "sensor_modes:mode").addValue(NUXO_KEY_NAME, 0);
    EXPECT_EQ(choose("0"), StatusBadState);
    EXPECT_EQ(text(sensor()), "");
}

TEST_F(SensorModeTest, IdentityOfTheSensorStays)
{
    loadPair(" name=\"sensor\" type=\"source\" id=\"1\">", "><mode name=\"0\" type=\"x\" id=\"2\" key=\"3\"/>");
    EXPECT_EQ(choose("0"), StatusOk);
    EXPECT_EQ(text(sensor()), "name='sensor' type='source' id=1 key=3");
}

TEST_F(SensorModeTest, NullNodesFailTheMergeOfTheDefaults)
{
    loadPair(">", "><mode name=\"0\"/>");
    EXPECT_EQ(mManager.addSensorModeData(nullptr, &at(*mRoot, "sensor_modes"), "0"), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 couldn't add settings from sensor modes node"}));
    clearLog();
    EXPECT_EQ(mManager.addSensorModeData(&sensor(), nullptr, "0"), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 couldn't add settings from sensor modes node"}));
}

TEST_F(SensorModeTest, FailureOfTheModesMergeIsTheResult)
{
    loadPair(">", "><mode name=\"0\"><binner/></mode>");
    at(*mRoot, "sensor_modes:mode:binner").insertDescendant(new GraphConfigItem, NUXO_KEY_FORMAT); // cannot be copied
    EXPECT_EQ(choose("0"), StatusNoMemory);
    EXPECT_TRUE(loggedExactly({"16 Error creating GraphConfigItem: No memory"}));
}

TEST_F(SensorModeTest, ModesDoNotPushToPeers)
{
    loadPair("><port_0 direction=\"1\" peer=\"b\"/></sensor><b/><sensor>",
             "><mode name=\"0\"><port_0 width=\"4\"/></mode>");
    EXPECT_EQ(choose("0"), StatusOk);
    EXPECT_EQ(value(sensor(), "port_0:width"), "4");
    EXPECT_EQ(text(at(*mRoot, "b")), "");
}

} // namespace

} // namespace graphtest
