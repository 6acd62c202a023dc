// SPDX-License-Identifier: Apache-2.0
#include "camera/ContextFixture.h"

namespace graphtest {

namespace {

class SinksTest : public ContextTest {
protected:
    /// The sinks that are called like @p name.
    std::string sinks(const std::string& name)
    {
        std::vector<IGraphConfig*> found;
        clearLog();
        mStatus = GraphCameraUtil::graphGetSinksByName(name, mRoot.get(), found);
        return paths(found);
    }

    static constexpr const char* kNone = "16 Failed to find any sinks -check graph config file";

    int mStatus = 1;
};

const std::string kSinks = sink("video_sink") + sink("preview_sink") + sink("Video_sink") + sink("video") +
                           element("hw", "video_hw") + element("node", "my_video", "type='sink' enabled='0'");

TEST_F(SinksTest, NameIsAPartOfTheSinksName)
{
    load(kSinks);
    EXPECT_EQ(sinks("video_sink"), "video_sink");
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(sinks("video"), "video_sink video my_video");
    EXPECT_EQ(sinks("_sink"), "video_sink preview_sink Video_sink");
    EXPECT_EQ(sinks("w_s"), "preview_sink");
    EXPECT_EQ(sinks("ideo"), "video_sink Video_sink video my_video");
}

TEST_F(SinksTest, EmptyNameMeansAllSinks)
{
    load(kSinks);
    EXPECT_EQ(sinks(""), "video_sink preview_sink Video_sink video my_video");
    EXPECT_EQ(mStatus, StatusOk);
}

TEST_F(SinksTest, NoSinkIsReported)
{
    load(kSinks);
    for (const char* name : {"VIDEO", "video_sinks", "hw", " ", "video*"}) {
        EXPECT_EQ(sinks(name), "") << name;
        EXPECT_EQ(mStatus, StatusNotFound) << name;
        EXPECT_TRUE(loggedExactly({kNone})) << name;
    }
    load(element("hw", "video"));
    EXPECT_EQ(sinks(""), "");
    EXPECT_EQ(mStatus, StatusNotFound);
    EXPECT_TRUE(loggedExactly({kNone}));
}

TEST_F(SinksTest, SinkWithoutANameIsFoundByTheEmptyNameAlone)
{
    load(sink("video_a") + sink("video_b") + sink("video_c"));
    node("video_b")->removeDescendant(NUXO_KEY_NAME); // comes behind one that matches
    replace(*node("video_c"), NUXO_KEY_NAME, 3);
    EXPECT_EQ(sinks("video"), "video_a");
    EXPECT_EQ(sinks(""), "video_a video_b video_c");
}

TEST_F(SinksTest, NameIsTheAttributeNotTheKey)
{
    load(sink("video"));
    replace(*node("video"), NUXO_KEY_NAME, "other");
    EXPECT_EQ(sinks("video"), "");
    EXPECT_EQ(sinks("other"), "video");
}

TEST_F(SinksTest, SinksComeInTheOrderOfKeys)
{
    load(sink("zero") + sink("awb_stats_sink") + sink("ae_stats_sink") + sink("one"));
    EXPECT_EQ(sinks(""), "ae_stats_sink awb_stats_sink zero one"); // 1, 3, then names of their own
}

TEST_F(SinksTest, SinksAreAppended)
{
    load(sink("video"));
    GraphConfigNode earlier;
    std::vector<IGraphConfig*> found = {&earlier};
    EXPECT_EQ(GraphCameraUtil::graphGetSinksByName("video", mRoot.get(), found), StatusOk);
    EXPECT_EQ(found, (std::vector<IGraphConfig*>{&earlier, node("video")}));
    EXPECT_EQ(GraphCameraUtil::graphGetSinksByName("audio", mRoot.get(), found), StatusNotFound);
    EXPECT_EQ(found.size(), 2U); // earlier ones do not count as found
    EXPECT_TRUE(logged(kError, "Failed to find any sinks -check graph config file"));
}

TEST_F(SinksTest, AnyNodeOfTheGraphLeadsToItsRoot)
{
    load(sink("video") + group("a", "", port("out", "") + sink("inner")));
    for (const char* start : {"a", "a:out", "video"}) {
        std::vector<IGraphConfig*> found;
        EXPECT_EQ(GraphCameraUtil::graphGetSinksByName("", node(start), found), StatusOk);
        EXPECT_EQ(paths(found), "video") << start;
    }
}

TEST_F(SinksTest, NullGraphIsReported)
{
    std::vector<IGraphConfig*> found;
    EXPECT_EQ(GraphCameraUtil::graphGetSinksByName("", nullptr, found), StatusBadArgument);
    EXPECT_TRUE(found.empty());
    EXPECT_TRUE(loggedExactly({"16 given graph config handle is null"}));
}

TEST_F(SinksTest, ForeignGraphHasNoSinks)
{
    const ForeignNode foreign;
    std::vector<IGraphConfig*> found;
    EXPECT_EQ(GraphCameraUtil::graphGetSinksByName("", &foreign, found), StatusNotFound);
    EXPECT_TRUE(found.empty());
    EXPECT_EQ(lines().back(), kNone);
}

TEST_F(SinksTest, ForeignNodeMayLeadToAGraph)
{
    load(sink("video") + element("source", "cam", "sensor_type='RAW'"));
    MockNode foreign;
    foreign.mRoot = mRoot.get();
    std::vector<IGraphConfig*> found;
    EXPECT_EQ(GraphCameraUtil::graphGetSinksByName("", &foreign, found), StatusOk);
    EXPECT_EQ(GraphCameraUtil::getSourceNode(&foreign, found), StatusOk);
    EXPECT_EQ(paths(found), "video cam");
    std::string sensorType;
    EXPECT_EQ(GraphCameraUtil::sensorGetType(&foreign, sensorType), StatusOk);
    EXPECT_EQ(sensorType, "RAW");
}

class SensorTypeTest : public ContextTest {
protected:
    /// The sensor type of the graph; "unknown" must not remain.
    std::string sensorType()
    {
        std::string type = "unknown";
        clearLog();
        mStatus = GraphCameraUtil::sensorGetType(mRoot.get(), type);
        return type;
    }

    int mStatus = 1;
};

TEST_F(SensorTypeTest, TypeOfTheFirstSourceIsGiven)
{
    load(element("source", "tpg", "sensor_type='B'") + element("source", "sensor", "sensor_type='RAW'"));
    EXPECT_EQ(sensorType(), "RAW"); // sensor (36) stands before tpg (57)
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(SensorTypeTest, StateOfTheSourceDoesNotMatter)
{
    load(element("source", "sensor", "sensor_type='RAW' enabled='0'") +
         element("source", "tpg", "sensor_type='B' enabled='1'"));
    EXPECT_EQ(sensorType(), "RAW");
}

TEST_F(SensorTypeTest, EmptyTypeIsAType)
{
    load(element("source", "sensor", "sensor_type=''"));
    EXPECT_EQ(sensorType(), "");
    EXPECT_EQ(mStatus, StatusOk);
}

TEST_F(SensorTypeTest, FirstSourceWithoutATypeMeansNone)
{
    load(element("source", "tpg"));
    EXPECT_EQ(sensorType(), "NONE");
    EXPECT_EQ(mStatus, StatusNotFound);
    EXPECT_TRUE(loggedExactly({}));
    load(element("source", "sensor") + element("source", "tpg", "sensor_type='B'"));
    EXPECT_EQ(sensorType(), "NONE");
    EXPECT_EQ(mStatus, StatusNotFound);
    load(element("source", "sensor"));
    node("sensor")->addValue(NUXO_KEY_SENSOR_TYPE, 1);
    EXPECT_EQ(sensorType(), "NONE");
    EXPECT_EQ(mStatus, StatusNotFound);
}

TEST_F(SensorTypeTest, GraphWithoutASourceMeansNone)
{
    load(element("hw", "sensor", "sensor_type='RAW'") +
         group("a", "", element("source", "inner", "sensor_type='RAW'")));
    EXPECT_EQ(sensorType(), "NONE");
    EXPECT_EQ(mStatus, StatusNotFound);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(SensorTypeTest, AnyNodeOfTheGraphLeadsToItsRoot)
{
    load(element("source", "sensor", "sensor_type='RAW'") +
         group("a", "", element("source", "inner", "sensor_type='B'") + port("out", "")));
    for (const char* start : {"a", "a:out", "a:inner"}) {
        std::string type;
        EXPECT_EQ(GraphCameraUtil::sensorGetType(node(start), type), StatusOk);
        EXPECT_EQ(type, "RAW") << start;
    }
}

TEST_F(SensorTypeTest, NullGraphIsReported)
{
    std::string type = "unknown";
    EXPECT_EQ(GraphCameraUtil::sensorGetType(nullptr, type), StatusBadArgument);
    EXPECT_EQ(type, "unknown");
    EXPECT_TRUE(loggedExactly({"16 Null pointer given"}));
}

TEST_F(SensorTypeTest, ForeignGraphHasNone)
{
    const ForeignNode foreign;
    std::string type = "unknown";
    EXPECT_EQ(GraphCameraUtil::sensorGetType(&foreign, type), StatusNotFound);
    EXPECT_EQ(type, "NONE");
    std::vector<IGraphConfig*> sources;
    EXPECT_EQ(GraphCameraUtil::getSourceNode(&foreign, sources), StatusBadArgument);
    EXPECT_TRUE(sources.empty());
    EXPECT_EQ(lines().back(), "16 ERROR: No active sources. Check that node with type source exists");
}

} // namespace

} // namespace graphtest
