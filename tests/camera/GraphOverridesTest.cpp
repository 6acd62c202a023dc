// SPDX-License-Identifier: Apache-2.0
#include "query/GraphFixture.h"

#include <stdexcept>

namespace graphtest {

namespace {

/// Overrides of a graph element applied to a built graph with one node `pg` and its port `out`.
class GraphOverridesTest : public GraphTest {
protected:
    GraphOverridesTest() { mResult = tree("<pg bpp=\"8\" metadata=\"m\"><out width=\"640\" format=\"NV12\"/></pg>"); }

    int apply(const std::string& overrides)
    {
        mDescriptor = descriptor("<graph>" + overrides + "</graph>");
        clearLog();
        return NUXO::GraphCameraUtil::processGraphOverrides(at(*mDescriptor, "graph"), *mResult);
    }

    static std::string one(const std::string& target, const std::string& value)
    {
        return "<apply target=\"" + target + "\" value=\"" + value + "\"/>";
    }

    Tree mResult;
    Tree mDescriptor;
};

TEST_F(GraphOverridesTest, GraphWithoutOverridesStaysAsItIs)
{
    const std::string before = text(*mResult);
    EXPECT_EQ(apply("<connection/>"), StatusOk);
    EXPECT_EQ(text(*mResult), before);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(GraphOverridesTest, AttributesOfBothKindsAreSetPastTheirOptions)
{
    EXPECT_EQ(apply(one("pg:bpp", "10") + one("pg:out:format", "P010") + one("pg:out:width", "-4")), StatusOk);
    EXPECT_EQ(text(*mResult), "pg{metadata='m' out{format='P010' width=-4} bpp=10}");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(GraphOverridesTest, LaterOverridesWin)
{
    EXPECT_EQ(apply(one("pg:bpp", "10") + one("pg:bpp", "12")), StatusOk);
    EXPECT_EQ(value(*mResult, "pg:bpp"), "12");
}

TEST_F(GraphOverridesTest, OverridesAreRecognisedByKeyOrByType)
{
    EXPECT_EQ(apply("<apply name=\"named\" target=\"pg:bpp\" value=\"10\"/>"), StatusOk);
    EXPECT_EQ(value(*mResult, "pg:bpp"), "10");
    EXPECT_EQ(
        apply(
            "<other target=\"pg:bpp\" value=\"12\"/><connection><apply target=\"pg:bpp\" value=\"14\"/></connection>"),
        StatusOk);
    EXPECT_EQ(value(*mResult, "pg:bpp"), "10");
}

TEST_F(GraphOverridesTest, AttributeUnderTheKeyOfOverridesIsNone)
{
    mDescriptor = descriptor("<graph/>");
    at(*mDescriptor, "graph").addValue(NUXO_KEY_APPLY, std::string("text"));
    EXPECT_EQ(NUXO::GraphCameraUtil::processGraphOverrides(at(*mDescriptor, "graph"), *mResult), StatusOk);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(GraphOverridesTest, TargetAndValueMustBeTexts)
{
    EXPECT_EQ(apply("<apply value=\"1\"/>"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Error: override tag with no attribute target node"}));
    EXPECT_EQ(apply("<apply target=\"pg:bpp\"/>"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Error: override tag with no attribute value"}));

    mDescriptor = descriptor("<graph><apply/></graph>");
    GraphConfigNode& override_ = at(*mDescriptor, "graph:apply");
    override_.addValue(NUXO_KEY_TARGET, 1);
    override_.addValue(NUXO_KEY_VALUE, 1);
    clearLog();
    EXPECT_EQ(NUXO::GraphCameraUtil::processGraphOverrides(at(*mDescriptor, "graph"), *mResult), StatusNotFound);
    EXPECT_TRUE(loggedExactly({"16 Error: override tag with no attribute target node"}));
    override_.removeDescendant(NUXO_KEY_TARGET);
    override_.addValue(NUXO_KEY_TARGET, std::string("pg:bpp"));
    clearLog();
    EXPECT_EQ(NUXO::GraphCameraUtil::processGraphOverrides(at(*mDescriptor, "graph"), *mResult), StatusNotFound);
    EXPECT_TRUE(loggedExactly({"16 Error: override tag with no attribute value"}));
}

TEST_F(GraphOverridesTest, FailureEndsTheOverridesAndKeepsWhatCameBefore)
{
    EXPECT_EQ(apply(one("pg:bpp", "10") + "<apply/>" + one("pg:out:width", "1")), StatusMissingData);
    EXPECT_EQ(value(*mResult, "pg:bpp"), "10");
    EXPECT_EQ(value(*mResult, "pg:out:width"), "640");
}

TEST_F(GraphOverridesTest, MissingAttributeIsCreatedAndThenSet)
{
    EXPECT_EQ(apply(one("pg:out:height", "480") + one("pg:description", "text")), StatusOk);
    EXPECT_EQ(text(*mResult), "pg{metadata='m' description='text' out{format='NV12' height=480 width=640} bpp=8}");
    EXPECT_TRUE(logged(kWarning, "Adding the missing attribute pg.out.height required in graph override."));
    EXPECT_TRUE(logged(kWarning, "Adding the missing attribute pg.description required in graph override."));
    EXPECT_TRUE(notLogged("Skipping"));
}

TEST_F(GraphOverridesTest, MissingNodeOfTheAttributeIsCreatedToo)
{
    EXPECT_EQ(apply(one("pg:kernel:enabled", "0")), StatusOk);
    EXPECT_EQ(value(*mResult, "pg:kernel:enabled"), "0");
    EXPECT_TRUE(linked(*mResult));
}

TEST_F(GraphOverridesTest, TargetWithTooMuchMissingIsSkipped)
{
    EXPECT_EQ(apply(one("pg:kernel:port:width", "1") + one("sensor:width", "1") + one("pg:bpp", "10")), StatusOk);
    for (const char* path : {"pg.kernel.port.width", "sensor.width"}) {
        EXPECT_TRUE(
            logged(kWarning, std::string("Adding the missing attribute ") + path + " required in graph override."));
        EXPECT_TRUE(
            logged(kWarning, std::string("Warning: Couldn't to get attribute ") + path + " for override. Skipping."));
    }
    EXPECT_EQ(value(*mResult, "pg:kernel"), "absent");
    EXPECT_EQ(value(*mResult, "pg:bpp"), "10");
}

TEST_F(GraphOverridesTest, OneWordReachesOnlyAttributesThatTheRootLacks)
{
    EXPECT_EQ(apply(one("fps", "30")), StatusOk);
    EXPECT_EQ(value(*mResult, "fps"), "30");
    EXPECT_EQ(apply(one("fps", "60")), StatusOk);
    EXPECT_EQ(value(*mResult, "fps"), "30");
    EXPECT_TRUE(logged(kWarning, "Adding the missing attribute fps required in graph override."));
    EXPECT_TRUE(logged(kWarning, "Warning: Couldn't to get attribute fps for override. Skipping."));
}

TEST_F(GraphOverridesTest, TargetsThatNameNodesOrNothingAreSkipped)
{
    const std::string before = text(*mResult);
    EXPECT_EQ(apply(one("pg:out", "1")), StatusOk);
    EXPECT_TRUE(logged(kWarning, "Warning: Couldn't to get attribute pg.out for override. Skipping."));
    EXPECT_EQ(apply(one("pg", "1")), StatusOk);
    EXPECT_TRUE(logged(kWarning, "Warning: Couldn't to get attribute pg for override. Skipping."));
    EXPECT_EQ(apply(one("", "1")), StatusOk);
    EXPECT_TRUE(logged(kWarning, "Warning: Couldn't to get attribute  for override. Skipping."));
    EXPECT_EQ(text(*mResult), before);
}

TEST_F(GraphOverridesTest, ItemThatIsANodeCannotBeSet)
{
    mResult = tree("<pg><out><out/></out></pg>"); // pg:out names the port, in which `out` is a node again
    EXPECT_EQ(apply(one("pg:out", "5")), StatusNotFound);
    EXPECT_TRUE(logged(kError, "Error: Failed to set override of attribute pg.out to 5"));
}

TEST_F(GraphOverridesTest, KindOfTheAttributeThatIsThereDecidesHowTheTextIsTaken)
{
    at(*mResult, "pg").removeDescendant(NUXO_KEY_BPP);
    at(*mResult, "pg").addValue(NUXO_KEY_BPP, std::string("text"));
    at(*mResult, "pg").removeDescendant(NUXO_KEY_METADATA);
    at(*mResult, "pg").addValue(NUXO_KEY_METADATA, 1);
    EXPECT_EQ(apply(one("pg:bpp", "many") + one("pg:metadata", "7")), StatusOk);
    EXPECT_EQ(value(*mResult, "pg:bpp"), "'many'");
    EXPECT_EQ(value(*mResult, "pg:metadata"), "7");
}

TEST_F(GraphOverridesTest, NumbersAreTakenByTheStandardConversion)
{
    for (const auto& [written, taken] : std::map<std::string, std::string>{
             {" 12", "12"}, {"+5", "5"}, {"12abc", "12"}, {"0x10", "0"}, {"010", "10"}}) {
        EXPECT_EQ(apply(one("pg:bpp", written)), StatusOk) << written;
        EXPECT_EQ(value(*mResult, "pg:bpp"), taken) << written;
    }
    for (const char* none : {"", "abc", "-"}) {
        EXPECT_THROW((void)apply(one("pg:out:width", none)), std::invalid_argument) << none;
    }
    EXPECT_THROW((void)apply(one("pg:out:width", "2147483648")), std::out_of_range);
    EXPECT_EQ(value(*mResult, "pg:out:width"), "640");
}

TEST_F(GraphOverridesTest, CreatedAttributeStaysWhenItsNumberIsNone)
{
    EXPECT_THROW((void)apply(one("pg:height", "abc")), std::invalid_argument);
    EXPECT_EQ(value(*mResult, "pg:height"), "0");
}

TEST_F(GraphOverridesTest, OverridesAreNotPushedToPeers)
{
    mResult = tree("<pg><out direction=\"1\" peer=\"s\" width=\"1\"/></pg><s type=\"sink\"/>");
    EXPECT_EQ(apply(one("pg:out:width", "5")), StatusOk);
    EXPECT_EQ(value(*mResult, "s:width"), "absent");
}

} // namespace

} // namespace graphtest
