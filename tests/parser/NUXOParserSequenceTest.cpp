// SPDX-License-Identifier: Apache-2.0
// Several parses with one parser: what they share and what they do not.
#include "ParserTest.h"

#include <string>

using namespace NUXO;

namespace {

class NUXOParserSequenceTest : public ParserTest {};

TEST_F(NUXOParserSequenceTest, TreesOfSeveralParsesAreIndependent)
{
    Tree first = parseText(settings("<port/>"));
    const Tree second = parsePlain(descriptor("<sink/>"));
    const Tree third = parseGzip(settings("<apply/>"));
    first.reset();
    EXPECT_EQ(render(second.get()), "(sink() version='1')");
    EXPECT_EQ(render(third.get()), "(apply() version='1')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserSequenceTest, TreesOutliveTheirParser)
{
    Tree tree;
    {
        NUXOParser parser;
        std::string text = settings("<port/>");
        IGraphConfig* root = nullptr;
        parser.parseNUXOXmlData(text.data(), text.size(), &root);
        tree.reset(root);
    }
    EXPECT_EQ(render(tree.get()), "(port() version='1')");
}

TEST_F(NUXOParserSequenceTest, ALaterFileWithoutVersionInheritsTheEarlierOne)
{
    parseText("<graph_settings version='KVA6.1'><port/></graph_settings>");
    EXPECT_EQ(render(parseText("<graph_descriptor><sink/></graph_descriptor>").get()), "(sink() version='KVA6.1')");
    EXPECT_EQ(render(parsePlain("<graph_settings><port/></graph_settings>").get()), "(port() version='KVA6.1')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserSequenceTest, ALaterVersionReplacesTheEarlierOne)
{
    parseText("<graph_settings version='1'><port/></graph_settings>");
    EXPECT_EQ(render(parseText("<graph_settings version='2'><port/></graph_settings>").get()), "(port() version='2')");
    EXPECT_EQ(render(parseText("<graph_settings><port/></graph_settings>").get()), "(port() version='2')");
}

TEST_F(NUXOParserSequenceTest, AnEmptyVersionEndsTheInheritance)
{
    parseText("<graph_settings version='1'><port/></graph_settings>");
    EXPECT_EQ(render(parseText("<graph_settings version=''><port/></graph_settings>").get()), "(port())");
    EXPECT_EQ(render(parseText("<graph_settings><port/></graph_settings>").get()), "(port())");
    EXPECT_EQ(lines(), (Lines{kNoVersion, kNoVersion}));
}

TEST_F(NUXOParserSequenceTest, TheVersionOfAFailedParseIsInheritedToo)
{
    EXPECT_EQ(parseText("<graph_settings version='3'/>"), nullptr);
    EXPECT_EQ(parseText("<graph_descriptor version='4'><port type='x' name='y'/></graph_descriptor>"), nullptr);
    lines();
    EXPECT_EQ(render(parseText("<graph_settings><port/></graph_settings>").get()), "(port() version='4')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserSequenceTest, ANewParserInheritsNothing)
{
    parseText("<graph_settings version='1'><port/></graph_settings>");
    NUXOParser other;
    std::string text = "<graph_settings><port/></graph_settings>";
    IGraphConfig* root = nullptr;
    other.parseNUXOXmlData(text.data(), text.size(), &root);
    EXPECT_EQ(render(Tree(root).get()), "(port())");
    EXPECT_EQ(lines(), Lines{kNoVersion});
}

TEST_F(NUXOParserSequenceTest, SettingsAfterADescriptorAreFiledAsSettings)
{
    parseText(descriptor("<port name='sink'/>"));
    EXPECT_EQ(render(parseText(settings("<port name='sink'/>")).get()), "(port(name='sink') version='1')");
    EXPECT_EQ(render(parseText(descriptor("<port name='sink'/>")).get()),
              "(sink(name='sink' type='port') version='1')");
}

TEST_F(NUXOParserSequenceTest, ADocumentOfAnotherNameIsReadLikeTheFileBefore)
{
    parseText(descriptor("<port/>"));
    EXPECT_EQ(render(parseText("<nodes name='top'><port name='sink'/></nodes>").get()),
              "(version='1' top(name='top' sink(name='sink' type='port') type='nodes'))")
        << "the version and the filing rule of the descriptor are still in force";
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserSequenceTest, ADocumentOfAnotherNameAfterOneWithoutVersionMissesItAgain)
{
    parseText("<graph_settings><port/></graph_settings>");
    parseText("<nodes/>");
    EXPECT_EQ(lines(), (Lines{kNoVersion, kNoVersion}));
}

TEST_F(NUXOParserSequenceTest, NewNamesOfOneParseAreKnownToTheNext)
{
    parseText(settings("<gadget/>"));
    EXPECT_EQ(render(parseText(settings("<port gadget='x'/><gadget/>")).get()),
              "(port(gadget='x') version='1' gadget())");
    EXPECT_EQ(nuxo_key_map.size(), 116U);
}

TEST_F(NUXOParserSequenceTest, NewNamesOfAFailedParseStay)
{
    parseText("<graph_settings><gadget></oops>");
    EXPECT_EQ(keyOf("gadget"), 115U);
}

TEST_F(NUXOParserSequenceTest, AVocabularyReplacedBetweenParsesIsInForce)
{
    parseText(settings("<port width='1'/>"));
    std::map<std::string, uint32_t> other = {{"graph_settings", 20}, {"version", 59}, {"port", 7}, {"width", 8}};
    copyNuxoKeys(other);
    EXPECT_EQ(render(parseText(settings("<port width='1'/>")).get()), "(port(width='1') version='1')");
}

TEST_F(NUXOParserSequenceTest, AVocabularyEditedByHandBetweenParsesIsInForce)
{
    parseText(settings("<port width='1' name='n'/>"));
    nuxo_key_map["port"] = 7000;
    nuxo_key_map.erase("width");
    EXPECT_EQ(render(parseText(settings("<port width='1' name='n'/>")).get()), "(version='1' port(na='1' name='n'))");
}

TEST_F(NUXOParserSequenceTest, EveryKindOfFailureLeavesTheParserUsable)
{
    const std::string good = settings("<port/>");
    const std::string bad = "<graph_settings version='1'><port><sink></oops>";
    for (int round = 0; round < 3; ++round) {
        parseText(bad);
        parsePlain(bad);
        parseGzip(bad);
        parseFile(path("missing.xml"));
        parseFile(path("missing.gz"));
        parseFile(path("wrong.suffix"));
        parseFile(write("empty.xml", ""));
        mParser.parseNUXOXmlFile(path("t.xml").c_str(), nullptr);
        lines();
        EXPECT_EQ(render(parseText(good).get()), "(port() version='1')");
        EXPECT_EQ(render(parsePlain(good).get()), "(port() version='1')");
        EXPECT_EQ(render(parseGzip(good).get()), "(port() version='1')");
        EXPECT_EQ(lines(), Lines{});
    }
}

TEST_F(NUXOParserSequenceTest, TwoParsersDoNotDisturbEachOther)
{
    NUXOParser other;
    IGraphConfig* otherRoot = nullptr;
    std::string otherText = "<graph_descriptor version='other'><port name='sink'/></graph_descriptor>";
    const Tree first = parseText(settings("<port name='sink'/>"));
    other.parseNUXOXmlData(otherText.data(), otherText.size(), &otherRoot);
    const Tree second(otherRoot);
    const Tree third = parseText("<graph_settings><port name='sink'/></graph_settings>");
    EXPECT_EQ(render(first.get()), "(port(name='sink') version='1')");
    EXPECT_EQ(render(second.get()), "(sink(name='sink' type='port') version='other')");
    EXPECT_EQ(render(third.get()), "(port(name='sink') version='1')");
}

} // namespace
