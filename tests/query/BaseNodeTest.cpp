// SPDX-License-Identifier: Apache-2.0
#include "query/GraphFixture.h"

#include <stdexcept>

namespace graphtest {

namespace {

/// Conversion of a copy of the descriptor's node `base` into its node `pg`.
class BaseNodeTest : public BuildTest {
protected:
    void loadNodes(const std::string& base, const std::string& differences = "")
    {
        load("<nodes><base_node name=\"base\" base_type=\"program_group\">" + base +
                 "</base_node><node name=\"pg\" "
                 "base_node=\"base\">" +
                 differences + "</node></nodes>",
             "<settings/>");
        mCopy.reset(at(*mDescriptor, "nodes:base").copy());
    }

    GraphConfigNode& node() const { return at(*mDescriptor, "nodes:pg"); }
    int convert() { return mCopy->changeBaseNodeIntoNode(node()); }

    Tree mCopy;
};

TEST_F(BaseNodeTest, TypeAndNameBecomeThoseOfTheNode)
{
    loadNodes("<port name=\"out\"/>");
    const std::string before = text(*mDescriptor);
    EXPECT_EQ(convert(), StatusOk);
    EXPECT_EQ(text(*mCopy), "base_type='program_group' name='pg' type='program_group' out{name='out' type='port'}");
    EXPECT_EQ(text(*mDescriptor), before);
    EXPECT_TRUE(loggedExactly({"2 Change base node base into node pg ", "2 Conversion from base node pg  done!"}));
}

TEST_F(BaseNodeTest, MissingBaseTypeFailsWithTheReadsStatus)
{
    loadNodes("");
    mCopy->removeDescendant(NUXO_KEY_BASE_TYPE);
    EXPECT_EQ(convert(), StatusMissingData);
    EXPECT_TRUE(loggedExactly(
        {"2 Change base node base into node pg ", "16 Failed to get base node type, change from base node failed"}));

    mCopy->addValue(NUXO_KEY_BASE_TYPE, 35);
    EXPECT_EQ(convert(), StatusNotFound);
    EXPECT_EQ(value(*mCopy, "name"), "'base'");
}

TEST_F(BaseNodeTest, MissingTypeOrNameFails)
{
    const std::string failure = "Failed to set node type and name from config pg";
    loadNodes("");
    mCopy->removeDescendant(NUXO_KEY_TYPE);
    EXPECT_EQ(convert(), StatusMissingData);
    EXPECT_EQ(count(kError, failure), 1U);

    loadNodes("");
    mCopy->removeDescendant(NUXO_KEY_NAME);
    EXPECT_EQ(convert(), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"2 Change base node  into node pg ", "16 " + failure}));

    loadNodes("");
    mCopy->removeDescendant(NUXO_KEY_TYPE);
    mCopy->removeDescendant(NUXO_KEY_NAME);
    EXPECT_EQ(convert(), StatusMissingData);
}

TEST_F(BaseNodeTest, TypeAndNameThatAreNoTextsFailWithBothStatusesJoined)
{
    loadNodes("");
    mCopy->removeDescendant(NUXO_KEY_TYPE);
    mCopy->addValue(NUXO_KEY_TYPE, 1);
    EXPECT_EQ(convert(), StatusNotFound);

    mCopy->removeDescendant(NUXO_KEY_NAME);
    EXPECT_EQ(convert(), StatusNotFound | StatusMissingData); // -64 | -2 = -2
    EXPECT_EQ(count(kError, "Failed to set node type and name from config pg"), 2U);
}

// --- options lists of the base ---

TEST_F(BaseNodeTest, OptionsOfPortsReferToTheNode)
{
    loadNodes(R"(<port name="out"><options attribute="format">
                   <o value="NV12"><apply><base bpp="8"><k enabled="1"/></base><sensor fps="30"/></apply></o>
                   <o value="P010"><apply><base bpp="10"/></apply></o>
                   <o value="RAW"><apply><sensor fps="15"/></apply></o>
                   <o value="NONE"/></options></port>)");
    EXPECT_EQ(convert(), StatusOk);
    EXPECT_EQ(text(at(*mCopy, "out:options")),
              "attribute=16 o{value='NV12' apply{sensor{fps=30} pg{k{enabled=1} bpp=8}}} "
              "o{value='P010' apply{pg{bpp=10}}} o{value='RAW' apply{sensor{fps=15}}} o{value='NONE'}");
    EXPECT_TRUE(linked(*mCopy));
}

TEST_F(BaseNodeTest, EveryOptionsListOfEveryPortIsReTargeted)
{
    loadNodes(R"(<port name="in"><options attribute="width"><o value="4"><apply><base bpp="4"/></apply></o></options>
                   <options attribute="format"><o value="NV12"><apply><base bpp="8"/></apply></o></options></port>
                 <port name="out"><options attribute="format"><o value="RAW"><apply><base bpp="10"/></apply></o>
                   </options></port>)");
    EXPECT_EQ(convert(), StatusOk);
    EXPECT_EQ(text(*mCopy).find("base{"), std::string::npos);
    EXPECT_EQ(text(at(*mCopy, "in")), "name='in' type='port' options{attribute=8232 o{value='4' apply{pg{bpp=4}}}} "
                                      "options{attribute=16 o{value='NV12' apply{pg{bpp=8}}}}");
    EXPECT_EQ(value(*mCopy, "out:options:o:apply:pg:bpp"), "10");
}

TEST_F(BaseNodeTest, OptionsOutsidePortsStayAsTheyAre)
{
    const std::string options =
        "<options attribute=\"format\"><o value=\"NV12\"><apply><base bpp=\"8\"/></apply></o></options>";
    loadNodes(options + "<kernel name=\"k\">" + options + "</kernel>");
    EXPECT_EQ(convert(), StatusOk);
    EXPECT_EQ(value(*mCopy, "options:o:apply:base:bpp"), "8");
    EXPECT_EQ(value(*mCopy, "k:options:o:apply:base:bpp"), "8");
}

TEST_F(BaseNodeTest, OnlyTheFirstEntryForTheBaseIsReTargetedAndGoesBehindItsEquals)
{
    loadNodes(R"(<port name="out"><options attribute="format"><o value="NV12">
                   <apply><base bpp="8"/><base bpp="9"/><pg bpp="7"/></apply></o></options></port>)");
    EXPECT_EQ(convert(), StatusOk);
    EXPECT_EQ(text(at(*mCopy, "out:options:o:apply")), "base{bpp=9} pg{bpp=7} pg{bpp=8}");
}

TEST_F(BaseNodeTest, AttributeUnderTheNameOfTheBaseIsReTargetedToo)
{
    load(R"(<nodes><base_node name="rbm" base_type="hw"><port name="out"><options attribute="format">
              <o value="NV12"><apply rbm="5"/></o></options></port></base_node>
            <node name="pg" base_node="rbm"/></nodes>)",
         "<settings/>");
    mCopy.reset(at(*mDescriptor, "nodes:rbm").copy());
    EXPECT_EQ(convert(), StatusOk);
    EXPECT_EQ(text(at(*mCopy, "out:options:o:apply")), "pg='5'");
}

TEST_F(BaseNodeTest, OptionThatCannotBeCopiedFails)
{
    loadNodes(R"(<port name="out"><options attribute="format"><o value="NV12"><apply><base bpp="8"/></apply></o>
                 </options></port>)");
    at(*mCopy, "out:options:o:apply:base").insertDescendant(new GraphConfigItem, NUXO_KEY_PORT);
    EXPECT_EQ(convert(), StatusNoMemory);
    EXPECT_TRUE(
        loggedExactly({"2 Change base node base into node pg ", "16 Failed create a copy during option handling"}));
    EXPECT_EQ(value(*mCopy, "name"), "'pg'"); // half converted, as far as it went
}

TEST_F(BaseNodeTest, NameWithoutAKeyIsRegisteredWhenAnOptionNeedsIt)
{
    loadNodes(R"(<port name="out"><options attribute="format"><o value="NV12"><apply><base bpp="8"/></apply></o>
                 </options></port>)");
    GraphConfigNode nameless; // a root is called "NA", which the vocabulary lacks
    const size_t entries = NUXO::nuxo_key_map.size();
    ASSERT_EQ(NUXO::nuxo_key_map.count("NA"), 0U);
    EXPECT_EQ(mCopy->changeBaseNodeIntoNode(nameless), StatusOk);
    ASSERT_EQ(NUXO::nuxo_key_map.count("NA"), 1U);
    EXPECT_EQ(NUXO::nuxo_key_map["NA"], entries);
    EXPECT_EQ(value(*mCopy, "out:options:o:apply:NA:bpp"), "8");
    EXPECT_EQ(value(*mCopy, "name"), "'NA'");
    EXPECT_TRUE(loggedExactly({"2 Change base node base into node NA ", "2 Conversion from base node NA  done!"}));
}

// --- differences ---

TEST_F(BaseNodeTest, DifferencesAreAppliedInOrderOfTheirElementNames)
{
    // Built-in `attribute` (54) comes before the new name, whatever the document says.
    loadNodes("<port name=\"out\" format=\"RAW\"/>",
              R"(<late target="out:format" value="P010"/><attribute target="out:format" value="NV12"/>
                 <attribute target="pg_id" value="7"/><attribute target="pg_id" value="8"/>)");
    EXPECT_EQ(convert(), StatusOk);
    EXPECT_EQ(value(*mCopy, "out:format"), "'P010'");
    EXPECT_EQ(value(*mCopy, "pg_id"), "8");
    EXPECT_TRUE(loggedExactly({"2 Change base node base into node pg ", "2 Applying override out:format -> NV12",
                               "2 Applying override pg_id -> 7", "2 Applying override pg_id -> 8",
                               "2 Applying override out:format -> P010", "2 Conversion from base node pg  done!"}));
}

TEST_F(BaseNodeTest, DifferencesCreateAttributesAndBypassOptions)
{
    loadNodes("<port name=\"out\" format=\"RAW\"/>",
              R"(<attribute target="out:format" value="NV12"/><attribute target="out:width" value="1920"/>
                 <attribute target="description" value="text"/>)");
    EXPECT_EQ(convert(), StatusOk);
    EXPECT_EQ(text(*mCopy), "base_type='program_group' name='pg' type='program_group' description='text' "
                            "out{format='NV12' name='out' type='port' width=1920}");
    EXPECT_TRUE(notLogged("options"));
}

TEST_F(BaseNodeTest, IntegersTakeWhatTheStandardConversionTakes)
{
    loadNodes("", R"(<attribute target="width" value=" 12"/><attribute target="height" value="+5"/>
                     <attribute target="bpp" value="10abc"/><attribute target="left" value="-3"/>)");
    EXPECT_EQ(convert(), StatusOk);
    EXPECT_EQ(value(*mCopy, "width"), "12");
    EXPECT_EQ(value(*mCopy, "height"), "5");
    EXPECT_EQ(value(*mCopy, "bpp"), "10");
    EXPECT_EQ(value(*mCopy, "left"), "-3");
}

TEST_F(BaseNodeTest, DifferenceWithoutValueIsAnEmptyText)
{
    loadNodes("<port name=\"out\" format=\"RAW\"/>", "<attribute target=\"out:format\"/>");
    EXPECT_EQ(convert(), StatusOk);
    EXPECT_EQ(value(*mCopy, "out:format"), "''");
    EXPECT_TRUE(logged(kDebug, "Applying override out:format -> "));
}

TEST_F(BaseNodeTest, DifferenceWithoutTargetFails)
{
    loadNodes("", "<attribute target=\"bpp\" value=\"8\"/><port name=\"out\" value=\"x\"/>");
    EXPECT_EQ(convert(), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"2 Change base node base into node pg ", "2 Applying override bpp -> 8",
                               "2 Applying override  -> x", "16 Failed to apply override  -> x"}));
    EXPECT_EQ(value(*mCopy, "bpp"), "8"); // what came before stays
}

TEST_F(BaseNodeTest, DifferenceWithoutAPlaceFails)
{
    loadNodes("", "<attribute target=\"port:kernel:format\" value=\"x\"/>");
    EXPECT_EQ(convert(), StatusNotFound);
    EXPECT_TRUE(logged(kError, "Failed to apply override port:kernel:format -> x"));
}

TEST_F(BaseNodeTest, OneWordThatNamesANodeIsNoPlaceForADifference)
{
    loadNodes("<port name=\"out\"/>", "<attribute target=\"out\" value=\"x\"/>");
    EXPECT_EQ(convert(), StatusNotFound);
    EXPECT_TRUE(logged(kError, "Failed to apply override out -> x"));
}

TEST_F(BaseNodeTest, PathThatNamesANodeMakesAnAttributeOfThatNameInsideIt)
{
    loadNodes("<port name=\"out\"><format/></port>", "<attribute target=\"out:format\" value=\"x\"/>");
    EXPECT_EQ(convert(), StatusOk);
    EXPECT_EQ(value(*mCopy, "out:format:format"), "'x'");
}

TEST_F(BaseNodeTest, IntegerDifferenceThatIsNoNumberThrowsAndLeavesTheNewAttributeAtZero)
{
    for (const char* difference : {"value=\"abc\"", "value=\"\"", ""}) {
        loadNodes("", std::string("<attribute target=\"bpp\" ") + difference + "/>");
        EXPECT_THROW((void)convert(), std::invalid_argument) << difference;
        EXPECT_EQ(value(*mCopy, "bpp"), "0");
    }
    loadNodes("", "<attribute target=\"bpp\" value=\"2147483648\"/>");
    EXPECT_THROW((void)convert(), std::out_of_range);
    EXPECT_EQ(value(*mCopy, "bpp"), "0");
}

TEST_F(BaseNodeTest, OptionsAreReTargetedBeforeDifferencesReachThem)
{
    loadNodes(R"(<port name="out"><options attribute="format"><o value="NV12"><apply><base bpp="8"/></apply></o>
                 </options></port>)",
              "<attribute target=\"out:options:o:apply:pg:bpp\" value=\"10\"/>");
    EXPECT_EQ(convert(), StatusOk);
    EXPECT_EQ(text(at(*mCopy, "out:options:o:apply")), "pg{bpp=10}");
}

} // namespace

} // namespace graphtest
