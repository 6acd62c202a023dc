// SPDX-License-Identifier: Apache-2.0
// Which tree a document makes, whatever its kind.
#include "ParserTest.h"

#include <string>
#include <vector>

using namespace NUXO;

namespace {

class NUXOParserTreeTest : public ParserTest {};

TEST_F(NUXOParserTreeTest, TheRootElementBecomesTheRootNodeWithItsVersionAndOneNodePerChild)
{
    const Tree tree = parseText("<graph_settings version='1.2'><settings/><sensor_modes/></graph_settings>");
    EXPECT_EQ(render(tree.get()), "(sensor_modes() settings() version='1.2')");
    EXPECT_EQ(tree->getAncestor(), nullptr);
    EXPECT_EQ(tree->getUid(), 0U);
    EXPECT_EQ(tree->getName(), "NA");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserTreeTest, TheVersionTextIsKeptUnchanged)
{
    const Tree tree = parseText("<graph_settings version=' KVA6.2 beta '><settings/></graph_settings>");
    EXPECT_EQ(textOf(tree.get(), NUXO_KEY_VERSION), " KVA6.2 beta ");
}

TEST_F(NUXOParserTreeTest, OfTheRootElementOnlyTheVersionIsKept)
{
    const Tree tree = parseText("<graph_settings width='7' version='1' name='x' unknown='y'><port/></graph_settings>");
    EXPECT_EQ(render(tree.get()), "(port() version='1')");
}

TEST_F(NUXOParserTreeTest, OfVersionsThatDifferInCaseTheLastCounts)
{
    const Tree tree = parseText("<graph_settings version='1' VERSION='2'><port/></graph_settings>");
    EXPECT_EQ(textOf(tree.get(), NUXO_KEY_VERSION), "2");
}

TEST_F(NUXOParserTreeTest, AMissingVersionIsWarnedAboutOnceWhenTheFirstChildStarts)
{
    const Tree tree = parseText("<graph_settings><port/><port/><settings><port/></settings></graph_settings>");
    EXPECT_EQ(render(tree.get()), "(port() port() settings(port()))");
    EXPECT_EQ(lines(), Lines{kNoVersion});
}

TEST_F(NUXOParserTreeTest, AMissingVersionOfADescriptorIsWarnedAboutToo)
{
    const Tree tree = parseText("<graph_descriptor><nodes/></graph_descriptor>");
    EXPECT_EQ(render(tree.get()), "(nodes())");
    EXPECT_EQ(lines(), Lines{kNoVersion});
}

TEST_F(NUXOParserTreeTest, AnEmptyVersionCountsAsMissing)
{
    const Tree tree = parseText("<graph_settings version=''><port/></graph_settings>");
    EXPECT_EQ(render(tree.get()), "(port())");
    EXPECT_EQ(lines(), Lines{kNoVersion});
}

TEST_F(NUXOParserTreeTest, AMissingVersionWithoutAnyChildIsNotWarnedAbout)
{
    const Tree tree = parseText("<graph_settings/>");
    EXPECT_EQ(tree, nullptr);
    EXPECT_EQ(lines(), Lines{kNothingParsed});
}

TEST_F(NUXOParserTreeTest, ElementsNestAsInTheDocument)
{
    const Tree tree = parseText(settings("<settings><sensor><port/></sensor><sink/></settings><port/>"));
    EXPECT_EQ(render(tree.get()), "(port() settings(sensor(port()) sink()) version='1')");

    const IGraphConfig* const port = tree->getDescendant(ItemUID{NUXO_KEY_SETTINGS, NUXO_KEY_SENSOR, NUXO_KEY_PORT});
    ASSERT_NE(port, nullptr);
    EXPECT_EQ(port->getAncestor(), child(child(tree.get(), "settings"), "sensor"));
    EXPECT_EQ(port->getRoot(), tree.get());
    EXPECT_EQ(port->getName(), "port");
}

TEST_F(NUXOParserTreeTest, ElementAndAttributeNamesMatchWithoutRegardToCase)
{
    const Tree tree = parseText("<Graph_SETTINGS VERSION='1'><PORT WIDTH='3'/><Port wIdTh='4'/></Graph_SETTINGS>");
    EXPECT_EQ(render(tree.get()), "(port(width=3) port(width=4) version='1')");
}

TEST_F(NUXOParserTreeTest, ValuesKeepTheirCase)
{
    const Tree tree = parseText(settings("<port name='Out' FORMAT='NV12_Linear'/>"));
    EXPECT_EQ(render(tree.get()), "(port(format='NV12_Linear' name='Out') version='1')");
}

TEST_F(NUXOParserTreeTest, OnlyAsciiLettersAreLowered)
{
    // U+00DC in UTF-8: the C library's tolower knows no such byte.
    const Tree tree = parseText(settings("<\xC3\x9C"
                                         "Node/>"));
    EXPECT_NE(keyOf("\xC3\x9C"
                    "node"),
              0U);
    EXPECT_EQ(childrenOf(tree.get()).size(), 1U);
}

TEST_F(NUXOParserTreeTest, TextCommentsAndProcessingInstructionsLeaveNothing)
{
    const std::string noise = "text <!-- <port/> --> <?target <port/> ?> <![CDATA[<port/>]]> &amp; &#65;";
    const Tree tree = parseText("<?xml version='1.0'?><!-- a --><!DOCTYPE graph_settings>" +
                                settings(noise + "<sink>" + noise + "</sink>" + noise) + "<!-- z --><?end?>\n");
    EXPECT_EQ(render(tree.get()), "(sink() version='1')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserTreeTest, ChildrenStandInKeyOrderAndEqualKeysInDocumentOrder)
{
    // sink 46, port 34, apply 56: key order is port, sink, apply.
    const Tree tree = parseText(settings("<sink id='1'/><apply id='2'/><port id='3'/><sink id='4'/><port id='5'/>"
                                         "<apply id='6'/><port id='7'/><sink id='8'/>"));
    EXPECT_EQ(render(tree.get()), "(port(id=3) port(id=5) port(id=7) sink(id=1) sink(id=4) sink(id=8) apply(id=2) "
                                  "apply(id=6) version='1')");
}

TEST_F(NUXOParserTreeTest, ManyChildrenInAlternatingKeyOrderStandInOrder)
{
    constexpr int kPairs = 5000;
    std::string body;
    for (int i = 0; i < kPairs; ++i) {
        body += "<sink id='" + std::to_string(i) + "'/><port id='" + std::to_string(i) + "'/>";
    }
    const Tree tree = parseText(settings("<settings>" + body + "</settings>"));
    const auto children = childrenOf(child(tree.get(), "settings"));
    ASSERT_EQ(children.size(), 2U * kPairs);
    for (int i = 0; i < kPairs; ++i) {
        const auto& port = children[static_cast<size_t>(i)];
        const auto& sink = children[static_cast<size_t>(kPairs + i)];
        EXPECT_EQ(port.first, static_cast<uint32_t>(NUXO_KEY_PORT));
        EXPECT_EQ(integerOf(port.second, NUXO_KEY_ID), i);
        EXPECT_EQ(sink.first, static_cast<uint32_t>(NUXO_KEY_SINK));
        EXPECT_EQ(integerOf(sink.second, NUXO_KEY_ID), i);
    }
}

TEST_F(NUXOParserTreeTest, AttributesStandBeforeChildrenOfTheSameKeyAndHideThem)
{
    const Tree tree = parseText(settings("<node port='text'><port/></node>"));
    EXPECT_EQ(render(tree.get()), "(node(port='text' port()) version='1')");
    EXPECT_EQ(child(child(tree.get(), "node"), "port"), nullptr);
}

TEST_F(NUXOParserTreeTest, ChildrenAndAttributesShareOneKeyOrder)
{
    // apply 56 stands between port 34 and the integer key width 8232, name 29 before all of them.
    const Tree tree = parseText(settings("<node width='1' name='n'><apply/><port/></node>"));
    EXPECT_EQ(render(tree.get()), "(node(name='n' port() apply() width=1) version='1')");
}

TEST_F(NUXOParserTreeTest, UnknownElementNamesAreAddedToTheVocabulary)
{
    ASSERT_EQ(nuxo_key_map.size(), 115U);
    const Tree tree = parseText(settings("<Zebra/><aardvark/><ZEBRA/>"));
    // New keys count on from the 115 built-in names, in order of appearance; the name is added in lower case.
    EXPECT_EQ(keyOf("zebra"), 115U);
    EXPECT_EQ(keyOf("aardvark"), 116U);
    EXPECT_EQ(keyOf("Zebra"), 0U);
    EXPECT_EQ(nuxo_key_map.size(), 117U);
    EXPECT_EQ(render(tree.get()), "(version='1' zebra() zebra() aardvark())");
}

TEST_F(NUXOParserTreeTest, TheElementNamedNaAlwaysCountsAsUnknownAndIsNeverAdded)
{
    const Tree tree = parseText(settings("<na id='1'/><first id='2'/>"));
    // The name is in the vocabulary with key 0, so its node is filed under the number of names, which the next new name
    // gets as well.
    EXPECT_EQ(keyOf("na"), 0U);
    EXPECT_EQ(keyOf("first"), 115U);
    const auto children = childrenOf(tree.get());
    ASSERT_EQ(children.size(), 2U);
    EXPECT_EQ(children[0].first, 115U);
    EXPECT_EQ(integerOf(children[0].second, NUXO_KEY_ID), 1);
    EXPECT_EQ(children[1].first, 115U);
    EXPECT_EQ(integerOf(children[1].second, NUXO_KEY_ID), 2);
}

TEST_F(NUXOParserTreeTest, AnElementMayCarryTheNameOfAnIntegerKey)
{
    const Tree tree = parseText(settings("<width height='2'/>"));
    EXPECT_EQ(render(tree.get()), "(version='1' width(height=2))");
}

TEST_F(NUXOParserTreeTest, NamesOfRootElementsFurtherDownAreOrdinaryElements)
{
    const Tree tree = parseText(settings("<graph_settings version='9'><port/></graph_settings>"
                                         "<graph_descriptor version='8'><port name='out'/></graph_descriptor><sink/>"));
    EXPECT_EQ(render(tree.get()), "(graph_descriptor(port(name='out') version='8') graph_settings(port() version='9') "
                                  "sink() version='1')");
}

TEST_F(NUXOParserTreeTest, ANestedRootNameOfADescriptorDoesNotEndTheDescriptorRules)
{
    const Tree tree = parseText(descriptor("<graph_settings/><port name='sink'/>"));
    EXPECT_EQ(render(tree.get()), "(graph_settings() sink(name='sink' type='port') version='1')");
}

TEST_F(NUXOParserTreeTest, ADocumentElementOfAnotherNameBecomesANodeBelowTheRoot)
{
    const Tree tree = parseText("<nodes width='1'><port name='out'/></nodes>");
    EXPECT_EQ(render(tree.get()), "(nodes(port(name='out') width=1))");
    EXPECT_EQ(lines(), Lines{}); // a version is only missed in the two kinds of graph files
}

TEST_F(NUXOParserTreeTest, BelowADocumentElementOfAnotherNameTheRootNamesAreOrdinary)
{
    const Tree tree = parseText("<nodes><graph_descriptor version='3'><port name='out'/></graph_descriptor></nodes>");
    EXPECT_EQ(render(tree.get()), "(nodes(graph_descriptor(port(name='out') version='3')))");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserTreeTest, AllThreeWaysOfReadingMakeTheSameTree)
{
    const std::string text = descriptor(
        "<nodes><source name='sensor' id='0'><port name='port_0' direction='1'/></source>"
        "<node name='isp' type='hw'><kernel name='k' PAL_UUID='12'/><klink source='a' destination='b'/></node></nodes>"
        "<graphs><graph id='100'><connection source='sensor:port_0' sink='isp:in'/></graph></graphs>");
    const std::string fromMemory = render(parseText(text).get());
    EXPECT_EQ(render(parsePlain(text).get()), fromMemory);
    EXPECT_EQ(render(parseGzip(text).get()), fromMemory);
    EXPECT_EQ(fromMemory,
              "(graphs(graph(connection(sink='isp:in' source='sensor:port_0') id=100)) "
              "nodes(sensor(name='sensor' type='source' port_0(name='port_0' type='port' direction=1) id=0) "
              "isp(klink(destination='b' source='a') name='isp' type='hw' "
              "k(name='k' type='kernel' pal_uuid=12))) version='1')");
    EXPECT_EQ(lines(), Lines{});
}

} // namespace
