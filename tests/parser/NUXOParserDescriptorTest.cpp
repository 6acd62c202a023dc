// SPDX-License-Identifier: Apache-2.0
// How `name` files the elements of descriptors, and that it does not in settings.
#include "ParserTest.h"

#include <string>

using namespace NUXO;

namespace {

class NUXOParserDescriptorTest : public ParserTest {};

TEST_F(NUXOParserDescriptorTest, InSettingsAnElementIsFiledUnderItsOwnName)
{
    const Tree tree = parseText(settings("<port width='1920' name='out'/>"));
    EXPECT_EQ(render(tree.get()), "(port(name='out' width=1920) version='1')");
    EXPECT_EQ(keyOf("out"), 0U);
}

TEST_F(NUXOParserDescriptorTest, ANamedElementIsFiledUnderItsNameAndRemembersItsElementNameAsType)
{
    const Tree tree = parseText(descriptor("<port width='1920' name='out'/>"));
    EXPECT_EQ(render(tree.get()), "(version='1' out(name='out' type='port' width=1920))");
    EXPECT_EQ(keyOf("out"), 115U);
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserDescriptorTest, AKnownNameKeepsItsKey)
{
    const size_t names = nuxo_key_map.size();
    const Tree tree = parseText(descriptor("<source name='sensor'/>"));
    EXPECT_EQ(render(tree.get()), "(sensor(name='sensor' type='source') version='1')");
    EXPECT_EQ(nuxo_key_map.size(), names);
}

TEST_F(NUXOParserDescriptorTest, TheTypeIsTheElementNameInLowerCaseAndTheNameKeepsItsCase)
{
    const Tree tree = parseText(descriptor("<Program_Group NAME='Bb_Ps'/>"));
    EXPECT_EQ(render(tree.get()), "(version='1' Bb_Ps(name='Bb_Ps' type='program_group'))");
    EXPECT_EQ(keyOf("bb_ps"), 0U);
}

TEST_F(NUXOParserDescriptorTest, NamesThatDifferInCaseAreDifferentKeys)
{
    const Tree tree = parseText(descriptor("<port name='Sensor'/><port name='sensor'/>"));
    EXPECT_EQ(render(tree.get()), "(sensor(name='sensor' type='port') version='1' Sensor(name='Sensor' type='port'))");
}

TEST_F(NUXOParserDescriptorTest, AnElementWithoutNameKeepsItsElementKeyAndGetsNoType)
{
    const Tree tree = parseText(descriptor("<port width='1'/><klink type='own'/>"));
    EXPECT_EQ(render(tree.get()), "(klink(type='own') port(width=1) version='1')");
}

TEST_F(NUXOParserDescriptorTest, NodeElementsAreFiledUnderTheirNameButKeepTheirOwnType)
{
    const Tree tree = parseText(descriptor("<node type='hw' name='isys'/><NODE name='tnr_node' type='Sink'/>"));
    EXPECT_EQ(render(tree.get()), "(version='1' isys(name='isys' type='hw') tnr_node(name='tnr_node' type='Sink'))");
}

TEST_F(NUXOParserDescriptorTest, ANodeElementWithoutTypeGetsNone)
{
    const Tree tree = parseText(descriptor("<node name='isys'/>"));
    EXPECT_EQ(render(tree.get()), "(version='1' isys(name='isys'))");
}

TEST_F(NUXOParserDescriptorTest, AnUnknownElementAddsItsOwnNameAndThenItsNameValue)
{
    const Tree tree = parseText(descriptor("<gadget name='alpha'/>"));
    EXPECT_EQ(keyOf("gadget"), 115U);
    EXPECT_EQ(keyOf("alpha"), 116U);
    EXPECT_EQ(render(tree.get()), "(version='1' alpha(name='alpha' type='gadget'))");
}

TEST_F(NUXOParserDescriptorTest, AnEmptyNameIsANewNameLikeAnyOther)
{
    const Tree tree = parseText(descriptor("<port name=''/>"));
    EXPECT_EQ(keyOf(""), 115U);
    EXPECT_EQ(render(tree.get()), "(version='1' (name='' type='port'))");
}

TEST_F(NUXOParserDescriptorTest, TheNameNaIsNeverAddedAndSharesItsKeyWithTheNextNewName)
{
    const Tree tree = parseText(descriptor("<port name='na'/><port name='next'/>"));
    EXPECT_EQ(keyOf("na"), 0U);
    EXPECT_EQ(keyOf("next"), 115U);
    EXPECT_EQ(render(tree.get()), "(version='1' next(name='na' type='port') next(name='next' type='port'))");
}

TEST_F(NUXOParserDescriptorTest, TheRuleHoldsAtEveryDepth)
{
    const Tree tree = parseText(descriptor("<nodes><hw name='isp'><port name='input'/></hw></nodes>"));
    EXPECT_EQ(render(tree.get()), "(nodes(isp(input(name='input' type='port') name='isp' type='hw')) version='1')")
        << "the built-in key 22 of input comes before name and type";
}

TEST_F(NUXOParserDescriptorTest, AnOwnTypeAfterTheNameIsDroppedSilently)
{
    const Tree tree = parseText(descriptor("<port name='sink' type='own'/>"));
    EXPECT_EQ(render(tree.get()), "(sink(name='sink' type='port') version='1')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserDescriptorTest, AnOwnTypeBeforeTheNameAbandonsTheParse)
{
    const Tree tree = parseText(descriptor("<sink/><port type='own' name='out'/><sink/>"));
    EXPECT_EQ(tree, nullptr);
    EXPECT_EQ(lines(), (Lines{error("Error adding name attribute"), kNothingParsed}));
}

TEST_F(NUXOParserDescriptorTest, AnAbandonedFirstElementLeavesNoVersionWarning)
{
    const Tree tree = parseText("<graph_descriptor><port type='own' name='out'/><sink/></graph_descriptor>");
    EXPECT_EQ(tree, nullptr);
    EXPECT_EQ(lines(), (Lines{error("Error adding name attribute"), kNothingParsed}));
}

TEST_F(NUXOParserDescriptorTest, AnAbandonedElementDeepInsideTakesTheWholeTreeWithIt)
{
    const Tree tree = parseText(descriptor(
        "<nodes><hw name='a'><port name='b'/><port type='own' name='c'><sink/></port><sink/></hw><hw/></nodes>"
        "<graphs/>"));
    EXPECT_EQ(tree, nullptr);
    EXPECT_EQ(lines(), (Lines{error("Error adding name attribute"), kNothingParsed}));
}

TEST_F(NUXOParserDescriptorTest, ElementsAfterAnAbandonedOneAddNoNames)
{
    parseText(descriptor("<port type='own' name='out'/><gadget/>"));
    EXPECT_EQ(keyOf("gadget"), 0U);
}

TEST_F(NUXOParserDescriptorTest, AnAbandonedParseOfAFileReportsTheSame)
{
    const std::string text = descriptor("<sink/><port type='own' name='out'/>" + repeat("<port/>", 3000));
    EXPECT_EQ(parsePlain(text), nullptr);
    EXPECT_EQ(lines(), (Lines{error("Error adding name attribute"), kNothingParsed}));
    EXPECT_EQ(parseGzip(text), nullptr);
    EXPECT_EQ(lines(), (Lines{error("Error adding name attribute"), kNothingParsed}));
}

TEST_F(NUXOParserDescriptorTest, TheParserIsUsableAfterAnAbandonedParse)
{
    parseText(descriptor("<port type='own' name='out'/>"));
    lines();
    EXPECT_EQ(render(parseText(settings("<port/>")).get()), "(port() version='1')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserDescriptorTest, TypeBeforeNameIsFineOnNodeElementsAndInSettings)
{
    EXPECT_EQ(render(parseText(descriptor("<node type='own' name='sink'/>")).get()),
              "(sink(name='sink' type='own') version='1')");
    EXPECT_EQ(render(parseText(settings("<port type='own' name='sink'/>")).get()),
              "(port(name='sink' type='own') version='1')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserDescriptorTest, ASecondNameOfAnotherCaseFailsToAddTheTypeTwice)
{
    EXPECT_EQ(parseText(descriptor("<port name='sink' NAME='source'/>")), nullptr);
    EXPECT_EQ(lines(), (Lines{error("Error adding name attribute"), kNothingParsed}));
}

TEST_F(NUXOParserDescriptorTest, ASecondNameOfANodeElementAddsTheTypeAndFilesAnew)
{
    // The first name files the element under 'sink'; it is then no longer a `node`, so the second name adds the type.
    const Tree tree = parseText(descriptor("<node name='sink' NAME='source'/>"));
    EXPECT_EQ(render(tree.get()), "(source(name='sink' type='node') version='1')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserDescriptorTest, ASecondNameOfANodeElementWithATypeAbandonsTheParse)
{
    EXPECT_EQ(parseText(descriptor("<node type='hw' name='sink' NAME='source'/>")), nullptr);
    EXPECT_EQ(lines(), (Lines{error("Error adding name attribute"), kNothingParsed}));
}

TEST_F(NUXOParserDescriptorTest, AnElementNamedNodeCountsAsNodeForItsSecondName)
{
    const Tree tree = parseText(descriptor("<port name='node' NAME='sink'/>"));
    EXPECT_EQ(render(tree.get()), "(sink(name='node' type='port') version='1')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserDescriptorTest, AttributesBeforeTheNameAreKept)
{
    const Tree tree = parseText(descriptor("<port width='1' colour='red' name='sink' height='2' shape='round'/>"));
    EXPECT_EQ(render(tree.get()), "(sink(na='red' name='sink' type='port' height=2 width=1) version='1')");
}

TEST_F(NUXOParserDescriptorTest, AnAttributeNamedLikeTheElementsNewNameIsKnownOnlyAfterTheName)
{
    EXPECT_EQ(render(parseText(descriptor("<port alpha='x' name='alpha'/>")).get()),
              "(version='1' alpha(na='x' name='alpha' type='port'))");
    EXPECT_EQ(render(parseText(descriptor("<port name='beta' beta='x'/>")).get()),
              "(version='1' beta(name='beta' type='port' beta='x'))");
}

TEST_F(NUXOParserDescriptorTest, SameNamesOfDifferentElementsShareAKeyInDocumentOrder)
{
    const Tree tree = parseText(descriptor("<port name='sink' id='1'/><sink id='2'/><hw name='sink' id='3'/>"));
    EXPECT_EQ(render(tree.get()), "(sink(name='sink' type='port' id=1) sink(id=2) sink(name='sink' type='hw' id=3) "
                                  "version='1')");
}

TEST_F(NUXOParserDescriptorTest, ADefaultNameDeclaredInTheDocumentTypeFilesTheElement)
{
    const Tree tree =
        parseText("<!DOCTYPE graph_descriptor [<!ATTLIST port name CDATA 'sink'>]>" + descriptor("<port/>"));
    EXPECT_EQ(render(tree.get()), "(sink(name='sink' type='port') version='1')");
}

} // namespace
