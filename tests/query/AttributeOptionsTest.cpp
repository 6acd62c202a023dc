// SPDX-License-Identifier: Apache-2.0
#include "query/GraphFixture.h"

namespace graphtest {

namespace {

constexpr const char* kRestricted = "setValue() restricted to attributes that have predefined options";

class AttributeOptionsTest : public GraphTest {
protected:
    /// A graph root whose node `pg` has one port `out` with this content.
    void loadPort(const std::string& attributes, const std::string& content)
    {
        mRoot = tree("<pg bpp=\"1\"><out type=\"port\" name=\"out\" " + attributes + ">" + content +
                     "</out></pg>"
                     "<sensor/>");
        mPort = &at(*mRoot, "pg:out");
        clearLog();
    }

    static std::string list(const std::string& attribute, const std::string& options)
    {
        return "<options attribute=\"" + attribute + "\">" + options + "</options>";
    }

    static std::string option(const std::string& value, const std::string& bpp)
    {
        return "<o value=\"" + value + "\"><apply><pg bpp=\"" + bpp + "\"/></apply></o>";
    }

    int apply(uint32_t attribute, const std::string& chosen)
    {
        return mPort->handleAttributeOptions(mPort, attribute, chosen);
    }

    std::string bpp() const { return value(*mRoot, "pg:bpp"); }

    Tree mRoot;
    GraphConfigNode* mPort = nullptr;
};

TEST_F(AttributeOptionsTest, NullNodeIsRefused)
{
    GraphConfigNode any;
    EXPECT_EQ(any.handleAttributeOptions(nullptr, NUXO_KEY_FORMAT, "NV12"), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(AttributeOptionsTest, ChosenOptionIsMergedIntoTheRootOfTheNode)
{
    loadPort("format=\"NV12\"", list("format", R"(<o value="NV12"><apply><pg bpp="8" type="x"><out width="4"/><k/></pg>
                                                  <stray left="1"/></apply></o>)"));
    at(*mRoot, "pg").addValue(NUXO_KEY_TYPE, std::string("program_group"));
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, "NV12"), StatusOk);
    EXPECT_EQ(bpp(), "8");
    EXPECT_EQ(value(*mRoot, "pg:type"), "'program_group'"); // protected as in any merge
    EXPECT_EQ(value(*mRoot, "pg:out:width"), "4");
    EXPECT_EQ(value(*mRoot, "pg:k"), "node");
    EXPECT_EQ(text(at(*mRoot, "stray")), "left=1");
    EXPECT_EQ(value(*mRoot, "pg:out:format"), "'NV12'");
    EXPECT_TRUE(linked(*mRoot));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(AttributeOptionsTest, NodeAskedMayBeAnotherThanTheOneCalled)
{
    loadPort("", list("format", option("NV12", "8")));
    GraphConfigNode other;
    EXPECT_EQ(other.handleAttributeOptions(mPort, NUXO_KEY_FORMAT, "NV12"), StatusOk);
    EXPECT_EQ(bpp(), "8");
    EXPECT_EQ(other.getDescendantCount(), 0);
}

TEST_F(AttributeOptionsTest, AttributesOfTheApplyElementItselfGoToTheRoot)
{
    loadPort("", list("format", "<o value=\"NV12\"><apply fps=\"30\"/></o>"));
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, "NV12"), StatusOk);
    EXPECT_EQ(value(*mRoot, "fps"), "30");
}

TEST_F(AttributeOptionsTest, ItemsOfAListMatchOneByOneAndWhole)
{
    loadPort("", list("format", option("NV12,P010", "8")));
    for (const char* item : {"NV12", "P010"}) EXPECT_EQ(apply(NUXO_KEY_FORMAT, item), StatusOk) << item;
    for (const char* other : {"NV12,P010", "NV1", "V12", "NV12,", ",P010", "nv12", "NV12 ", "", "2,P"}) {
        EXPECT_EQ(apply(NUXO_KEY_FORMAT, other), StatusNotFound) << other;
    }
}

TEST_F(AttributeOptionsTest, BlanksBelongToTheItems)
{
    loadPort("", list("format", option("NV12, P010", "8")));
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, "P010"), StatusNotFound);
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, " P010"), StatusOk);
}

TEST_F(AttributeOptionsTest, EmptyItemsTakePart)
{
    for (const char* withEmpty : {"a,", ",a", "a,,b", "", ","}) {
        loadPort("", list("format", option(withEmpty, "8")));
        EXPECT_EQ(apply(NUXO_KEY_FORMAT, ""), StatusOk) << withEmpty;
    }
    for (const char* without : {"a", "a,b", " "}) {
        loadPort("", list("format", option(without, "8")));
        EXPECT_EQ(apply(NUXO_KEY_FORMAT, ""), StatusNotFound) << without;
    }
}

TEST_F(AttributeOptionsTest, OptionWithoutAValueNeverMatches)
{
    loadPort("", list("format", option("NV12", "8") + "<o><apply><pg bpp=\"9\"/></apply></o>"));
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, ""), StatusNotFound);
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, "NV12"), StatusOk);
    EXPECT_EQ(bpp(), "8");

    loadPort("", list("format", option("P010", "7") + "<o><apply><pg bpp=\"9\"/></apply></o>" + option("NV12", "8")));
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, "P010"), StatusOk);
    EXPECT_EQ(bpp(), "7");
}

TEST_F(AttributeOptionsTest, OnlyTheListOfTheAttributeGoverns)
{
    loadPort("", list("width", option("4", "4")) + "<options>" + option("NV12", "5") + "</options>" +
                     "<other attribute=\"format\">" + option("NV12", "6") + "</other>" +
                     list("format", option("NV12", "8")));
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, "NV12"), StatusOk);
    EXPECT_EQ(bpp(), "8");
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, "4"), StatusNotFound);
    EXPECT_EQ(apply(NUXO_KEY_WIDTH, "4"), StatusOk);
    EXPECT_EQ(bpp(), "4");
}

TEST_F(AttributeOptionsTest, SearchGoesOnInTheNextListOfTheAttribute)
{
    loadPort("", list("format", option("NV12", "8")) + list("format", option("P010", "10") + option("NV12", "99")));
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, "P010"), StatusOk);
    EXPECT_EQ(bpp(), "10");
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, "NV12"), StatusOk);
    EXPECT_EQ(bpp(), "8");
}

TEST_F(AttributeOptionsTest, OnlyTheFirstMatchIsApplied)
{
    loadPort("",
             list("format", option("NV12", "8") + "<o value=\"NV12\"><apply><pg bpp=\"9\" left=\"1\"/></apply></o>"));
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, "NV12"), StatusOk);
    EXPECT_EQ(bpp(), "8");
    EXPECT_EQ(value(*mRoot, "pg:left"), "absent");
}

TEST_F(AttributeOptionsTest, OptionsStandInKeyOrder)
{
    // `node` (30) is a built-in name and comes before `zz`, although it stands behind it.
    loadPort("", list("format", "<zz value=\"NV12\"><apply><pg bpp=\"2\"/></apply></zz>"
                                "<node value=\"NV12\"><apply><pg bpp=\"3\"/></apply></node>"));
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, "NV12"), StatusOk);
    EXPECT_EQ(bpp(), "3");
}

TEST_F(AttributeOptionsTest, ListsFurtherDownDoNotGovern)
{
    loadPort("", "<inner>" + list("format", option("NV12", "8")) + "</inner>");
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, "NV12"), StatusNotFound);
}

TEST_F(AttributeOptionsTest, MatchWithoutApplyIsReportedAndEndsTheSearch)
{
    loadPort("", list("format", "<o value=\"NV12\"/>" + option("NV12", "8")) + list("format", option("NV12", "9")));
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, "NV12"), StatusNotSupported);
    EXPECT_TRUE(loggedExactly({"16 Found option for NV12, but no apply node. Skipping."}));
    EXPECT_EQ(bpp(), "1");
}

TEST_F(AttributeOptionsTest, NoMatchIsReportedWithTheFullNameOfAPort)
{
    loadPort("", list("format", option("NV12", "8")));
    at(*mRoot, "pg").addValue(NUXO_KEY_NAME, std::string("isp"));
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, "RAW"), StatusNotFound);
    EXPECT_TRUE(loggedExactly({"32 Trying to apply value but no options list available for port[isp:out]."}));
    clearLog();
    EXPECT_EQ(mRoot->handleAttributeOptions(&at(*mRoot, "pg"), NUXO_KEY_BPP, "1"), StatusNotFound);
    EXPECT_TRUE(loggedExactly({"32 Trying to apply value but no options list available for NODE[pg]."}));
}

TEST_F(AttributeOptionsTest, FailedMergeIsReported)
{
    loadPort("", list("format", "<o value=\"NV12\"><apply><stray/></apply></o>"));
    at(*mPort, "options:o:apply:stray").insertDescendant(new GraphConfigItem, NUXO_KEY_PORT); // cannot be copied
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, "NV12"), StatusNoMemory);
    EXPECT_TRUE(
        loggedExactly({"16 Error creating GraphConfigItem: No memory", "16 Failed to apply option attributes"}));
}

TEST_F(AttributeOptionsTest, OptionIsNotPushedToPeers)
{
    loadPort("direction=\"1\" peer=\"sensor\"",
             list("format", "<o value=\"NV12\"><apply><pg><out width=\"4\"/></pg></apply></o>"));
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, "NV12"), StatusOk);
    EXPECT_EQ(value(*mRoot, "pg:out:width"), "4");
    EXPECT_EQ(value(*mRoot, "sensor:width"), "absent");
}

TEST_F(AttributeOptionsTest, OptionMayApplyToTheNodeThatHoldsIt)
{
    // The merge adds to the very nodes that are being looked at, the root and the port included.
    std::string many;
    for (int i = 0; i < 40; ++i) many += "<n" + std::to_string(i) + "/>";
    loadPort("", list("format",
                      "<o value=\"NV12\"><apply>" + many + "<pg><out width=\"4\">" + many + "</out></pg></apply></o>"));
    EXPECT_EQ(apply(NUXO_KEY_FORMAT, "NV12"), StatusOk);
    EXPECT_EQ(value(*mRoot, "n39"), "node");
    EXPECT_EQ(value(*mPort, "n39"), "node");
    EXPECT_EQ(value(*mPort, "width"), "4");
    EXPECT_TRUE(linked(*mRoot));
}

// --- setting attributes by key ---

TEST_F(AttributeOptionsTest, SettingAMissingAttributeChangesNothing)
{
    loadPort("", list("format", option("NV12", "8")) + list("width", option("4", "9")));
    EXPECT_EQ(mPort->setValue(NUXO_KEY_FORMAT, std::string("NV12")), StatusNotFound);
    EXPECT_EQ(mPort->setValue(NUXO_KEY_WIDTH, 4), StatusNotFound);
    EXPECT_EQ(bpp(), "1");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(AttributeOptionsTest, SettingTheWrongKindIsReported)
{
    loadPort("format=\"RAW\" width=\"4\"", list("format", option("4", "8")) + list("width", option("4", "9")) + "<k/>");
    EXPECT_EQ(mPort->setValue(NUXO_KEY_FORMAT, 4), StatusBadArgument);
    EXPECT_EQ(mPort->setValue(NUXO_KEY_WIDTH, std::string("4")), StatusBadArgument);
    EXPECT_EQ(mPort->setValue(key("k"), 4), StatusBadArgument);
    EXPECT_EQ(mPort->setValue(key("k"), std::string("4")), StatusBadArgument);
    EXPECT_EQ(count(kError, "Attribute is of wrong type"), 4U);
    EXPECT_EQ(bpp(), "1");
}

TEST_F(AttributeOptionsTest, SettingWithoutAListIsRefusedWithDifferentLevels)
{
    loadPort("format=\"RAW\" width=\"4\"", "");
    EXPECT_EQ(mPort->setValue(NUXO_KEY_WIDTH, 8), StatusNotFound);
    EXPECT_TRUE(loggedExactly(
        {"32 Trying to apply value but no options list available for port[NA:out].", std::string("2 ") + kRestricted}));
    clearLog();
    EXPECT_EQ(mPort->setValue(NUXO_KEY_FORMAT, std::string("NV12")), StatusNotFound);
    EXPECT_TRUE(loggedExactly({"32 Trying to apply value but no options list available for port[NA:out].",
                               std::string("16 ") + kRestricted}));
    EXPECT_EQ(value(*mPort, "width"), "4");
    EXPECT_EQ(value(*mPort, "format"), "'RAW'");
}

TEST_F(AttributeOptionsTest, SettingAnAllowedValueAppliesItsOptionAndStoresIt)
{
    loadPort("format=\"RAW\" width=\"4\"", list("format", option("NV12,P010", "8")) + list("width", option("-6", "9")));
    EXPECT_EQ(mPort->setValue(NUXO_KEY_FORMAT, std::string("P010")), StatusOk);
    EXPECT_EQ(value(*mPort, "format"), "'P010'");
    EXPECT_EQ(bpp(), "8");
    EXPECT_EQ(mPort->setValue(NUXO_KEY_WIDTH, -6), StatusOk);
    EXPECT_EQ(value(*mPort, "width"), "-6");
    EXPECT_EQ(bpp(), "9");
    EXPECT_EQ(mPort->setValue(NUXO_KEY_WIDTH, 6), StatusNotFound);
    EXPECT_EQ(value(*mPort, "width"), "-6");
}

TEST_F(AttributeOptionsTest, SettingAValueWhoseOptionHasNothingToApplySucceeds)
{
    loadPort("format=\"RAW\" width=\"4\"", list("format", "<o value=\"NV12\"/>") + list("width", "<o value=\"8\"/>"));
    EXPECT_EQ(mPort->setValue(NUXO_KEY_WIDTH, 8), StatusOk);
    EXPECT_TRUE(loggedExactly({"16 Found option for 8, but no apply node. Skipping."}));
    EXPECT_EQ(value(*mPort, "width"), "8");
    clearLog();
    EXPECT_EQ(mPort->setValue(NUXO_KEY_FORMAT, std::string("NV12")), StatusOk);
    EXPECT_TRUE(loggedExactly({"16 Found option for NV12, but no apply node. Skipping."}));
    EXPECT_EQ(value(*mPort, "format"), "'NV12'");
}

TEST_F(AttributeOptionsTest, FailedOptionKeepsTheOldValue)
{
    loadPort("format=\"RAW\"", list("format", "<o value=\"NV12\"><apply><stray/></apply></o>"));
    at(*mPort, "options:o:apply:stray").insertDescendant(new GraphConfigItem, NUXO_KEY_PORT);
    EXPECT_EQ(mPort->setValue(NUXO_KEY_FORMAT, std::string("NV12")), StatusNoMemory);
    EXPECT_TRUE(loggedExactly({"16 Error creating GraphConfigItem: No memory", "16 Failed to apply option attributes",
                               std::string("16 ") + kRestricted}));
    EXPECT_EQ(value(*mPort, "format"), "'RAW'");
}

TEST_F(AttributeOptionsTest, ValueGivenByReferenceSurvivesAnOptionThatOverwritesItsSource)
{
    loadPort(
        "format=\"NV12\"",
        list("format", "<o value=\"NV12\"><apply><pg><out format=\"OVERWRITTEN-BY-THE-OPTION\"/></pg></apply></o>"));
    GraphConfigAttribute* held = nullptr;
    ASSERT_EQ(mPort->getAttribute(NUXO_KEY_FORMAT, &held), StatusOk);
    const std::string& alias = static_cast<GraphConfigStrAttribute*>(held)->value;
    EXPECT_EQ(mPort->setValue(NUXO_KEY_FORMAT, alias), StatusOk);
    EXPECT_EQ(value(*mPort, "format"), "'NV12'");
}

TEST_F(AttributeOptionsTest, SettingByPathFollowsTheSameRule)
{
    loadPort("format=\"RAW\" width=\"4\"", list("format", option("NV12", "8")) + list("width", option("8", "9")));
    EXPECT_EQ(mRoot->setValue(ItemUID("pg:out:format"), std::string("NV12")), StatusOk);
    EXPECT_EQ(bpp(), "8");
    EXPECT_EQ(mRoot->setValue(ItemUID("pg:out:width"), 8), StatusOk);
    EXPECT_EQ(bpp(), "9");
    EXPECT_EQ(mRoot->setValue(ItemUID("pg:out:width"), 9), StatusNotFound);
    EXPECT_EQ(value(*mPort, "width"), "8");
}

} // namespace

} // namespace graphtest
