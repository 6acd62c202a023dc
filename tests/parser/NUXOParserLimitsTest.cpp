// SPDX-License-Identifier: Apache-2.0
// Large and hostile inputs: depth, sizes, numbers of things, entities.
#include "ParserTest.h"

#include <chrono>
#include <string>
#include <vector>

using namespace NUXO;

namespace {

constexpr size_t kDeepest = 1024; // nested elements, the document element included

class NUXOParserLimitsTest : public ParserTest {
protected:
    /// Fails the test when its body takes longer than anyone would wait; a quadratic step takes minutes here.
    void TearDown() override
    {
        EXPECT_LT(std::chrono::steady_clock::now() - mStart, std::chrono::seconds(60));
        ParserTest::TearDown();
    }

private:
    std::chrono::steady_clock::time_point mStart = std::chrono::steady_clock::now();
};

/// Settings in which `port` elements nest to this many levels of elements, the document element included.
std::string nested(size_t levels)
{
    return settings(repeat("<port>", levels - 1) + repeat("</port>", levels - 1));
}

size_t depthBelow(const IGraphConfig* root)
{
    size_t depth = 0;
    for (const IGraphConfig* node = root; node != nullptr; node = node->getDescendant(NUXO_KEY_PORT)) ++depth;
    return depth == 0 ? 0 : depth - 1;
}

TEST_F(NUXOParserLimitsTest, ThousandTwentyFourLevelsAreRead)
{
    EXPECT_EQ(NUXOParser::kMaxDepth, kDeepest);
    for (const Tree& tree : {parseText(nested(kDeepest)), parsePlain(nested(kDeepest)), parseGzip(nested(kDeepest))}) {
        EXPECT_EQ(depthBelow(tree.get()), kDeepest - 1);
    }
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserLimitsTest, OneLevelMoreStopsTheParseAndHandsOutTheLevelsAbove)
{
    const std::string text = nested(kDeepest + 1);
    const Tree tree = parseText(text);
    EXPECT_EQ(depthBelow(tree.get()), kDeepest - 1);
    EXPECT_EQ(tree->getAncestor(), nullptr);
    const Lines logged = lines();
    ASSERT_EQ(logged.size(), 2U);
    EXPECT_EQ(logged[0].first, static_cast<int>(LogCapture::Error));
    EXPECT_NE(logged[0].second.find("1024"), std::string::npos) << logged[0].second;
    EXPECT_EQ(logged[1], error("@parseNUXOXmlData, line:239, XML_Parse error " + text.substr(0, kChunk)));
}

TEST_F(NUXOParserLimitsTest, TooDeepFilesStopWithTheChunkInWhichTheyGoTooDeep)
{
    // 1025 start tags of 6 bytes: the one too many ends in the second chunk.
    const std::string text = nested(kDeepest + 1);
    EXPECT_EQ(depthBelow(parsePlain(text).get()), kDeepest - 1);
    Lines logged = lines();
    ASSERT_EQ(logged.size(), 2U);
    EXPECT_EQ(logged[1], error("@parseXML, line:354, XML_Parse error " + text.substr(kChunk, kChunk)));
    EXPECT_EQ(depthBelow(parseGzip(text).get()), kDeepest - 1);
    logged = lines();
    ASSERT_EQ(logged.size(), 2U);
    EXPECT_EQ(logged[1], error("@parseGz, line:390, XML_Parse error " + text.substr(kChunk, kChunk)));
}

TEST_F(NUXOParserLimitsTest, NothingBehindTheTooDeepElementIsRead)
{
    const std::string text =
        settings(repeat("<port>", kDeepest) + "<gadget/>" + repeat("</port>", kDeepest) + "<sink/>");
    const Tree tree = parseText(text);
    EXPECT_EQ(child(tree.get(), "sink"), nullptr);
    EXPECT_EQ(keyOf("gadget"), 0U);
}

TEST_F(NUXOParserLimitsTest, TheTooDeepElementAddsNoName)
{
    parseText(settings(repeat("<port>", kDeepest - 1) + "<gadget/>" + repeat("</port>", kDeepest - 1)));
    EXPECT_EQ(keyOf("gadget"), 0U);
}

TEST_F(NUXOParserLimitsTest, DepthCountsOpenElementsOnly)
{
    const std::string deep = repeat("<port>", kDeepest - 1) + repeat("</port>", kDeepest - 1);
    const Tree tree = parseText(settings(deep + deep + deep));
    EXPECT_EQ(childrenOf(tree.get()).size(), 3U);
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserLimitsTest, ADocumentElementOfAnotherNameCountsAsALevelToo)
{
    const Tree fits = parseText(repeat("<port>", kDeepest) + repeat("</port>", kDeepest));
    EXPECT_EQ(depthBelow(fits.get()), kDeepest);
    EXPECT_EQ(lines(), Lines{});
    const Tree tooDeep = parseText(repeat("<port>", kDeepest + 1) + repeat("</port>", kDeepest + 1));
    EXPECT_EQ(depthBelow(tooDeep.get()), kDeepest);
    EXPECT_EQ(lines().size(), 2U);
}

TEST_F(NUXOParserLimitsTest, AMillionLevelsStopTheSameWay)
{
    const Tree tree = parsePlain(nested(1000000));
    EXPECT_EQ(depthBelow(tree.get()), kDeepest - 1);
    EXPECT_EQ(lines().size(), 2U);
}

TEST_F(NUXOParserLimitsTest, TheParserIsUsableAfterATooDeepDocument)
{
    parseText(nested(kDeepest + 1));
    lines();
    EXPECT_EQ(depthBelow(parseText(nested(kDeepest)).get()), kDeepest - 1);
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserLimitsTest, TheDeepestTreeCanBeCopied)
{
    const Tree tree = parseText(nested(kDeepest));
    const Tree copy(dynamic_cast<GraphConfigNode&>(*tree).copy());
    EXPECT_EQ(depthBelow(copy.get()), kDeepest - 1);
}

TEST_F(NUXOParserLimitsTest, AnAttributeOf20MegabytesArrivesWhole)
{
    const std::string value = std::string(10 << 20, 'a') + std::string(10 << 20, 'z');
    const std::string text = settings("<port name='" + value + "'/><sink/>");
    for (const Tree& tree : {parseText(text), parsePlain(text), parseGzip(text)}) {
        ASSERT_NE(child(tree.get(), "sink"), nullptr);
        EXPECT_TRUE(textOf(child(tree.get(), "port"), NUXO_KEY_NAME) == value); // not printed when it fails
    }
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserLimitsTest, ANumberOf20MegabytesSaturates)
{
    const Tree tree = parsePlain(settings("<port width='" + std::string(20 << 20, '9') + "'/>"));
    EXPECT_EQ(integerOf(child(tree.get(), "port"), NUXO_KEY_WIDTH), -1);
}

TEST_F(NUXOParserLimitsTest, AnElementNameOf1MegabyteIsANameLikeAnyOther)
{
    const std::string name(1 << 20, 'n');
    const Tree tree = parsePlain(settings("<" + name + "/>"));
    ASSERT_EQ(childrenOf(tree.get()).size(), 1U);
    EXPECT_EQ(childrenOf(tree.get())[0].second->getName(), name);
}

TEST_F(NUXOParserLimitsTest, TwoHundredThousandAttributesOfOneElementKeepTheFirstUnknownAndTheKnownOnes)
{
    std::string attributes;
    for (int i = 0; i < 100000; ++i) attributes += " u" + std::to_string(i) + "='" + std::to_string(i) + "'";
    attributes += " width='1920'";
    for (int i = 100000; i < 199999; ++i) attributes += " u" + std::to_string(i) + "='x'";
    const Tree tree = parsePlain(settings("<port" + attributes + "/><sink/>"));
    EXPECT_EQ(render(tree.get()), "(port(na='0' width=1920) sink() version='1')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserLimitsTest, TwoHundredThousandKnownAttributesOfOneElementAreAllKept)
{
    constexpr uint32_t kNames = 200000;
    std::map<std::string, uint32_t> names;
    std::string attributes;
    for (uint32_t i = 0; i < kNames; ++i) {
        const std::string name = "u" + std::to_string(i);
        names[name] = 20000 + (i * 7919U) % kNames; // not in key order; 7919 and 200000 share no factor
        attributes += " " + name + "='" + std::to_string(i) + "'";
    }
    ItemUID::addCustomKeyMap(names);
    const Tree tree = parsePlain(settings("<port" + attributes + "/>"));
    const IGraphConfig* const port = child(tree.get(), "port");
    ASSERT_NE(port, nullptr);
    EXPECT_EQ(port->getDescendantCount(), static_cast<int32_t>(kNames));
    for (uint32_t i = 0; i < kNames; i += 997) {
        EXPECT_EQ(textOf(port, 20000 + (i * 7919U) % kNames), std::to_string(i));
    }
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserLimitsTest, TwentyThousandUnknownNamesGetAKeyEach)
{
    constexpr size_t kNames = 20000;
    std::string body;
    for (size_t i = 0; i < kNames; ++i) body += "<new_" + std::to_string(i) + " name='" + std::to_string(i) + "'/>";
    const Tree tree = parsePlain(settings(body));
    EXPECT_EQ(nuxo_key_map.size(), 115 + kNames);
    EXPECT_EQ(keyOf("new_0"), 115U);
    EXPECT_EQ(keyOf("new_19999"), 115U + 19999U);
    const auto children = childrenOf(tree.get());
    ASSERT_EQ(children.size(), kNames);
    for (size_t i = 0; i < kNames; ++i) {
        ASSERT_EQ(children[i].first, 115 + i);
        ASSERT_EQ(textOf(children[i].second, NUXO_KEY_NAME), std::to_string(i));
    }
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserLimitsTest, ThreeHundredThousandSiblingsInAlternatingKeyOrderStandInOrder)
{
    constexpr size_t kPairs = 150000;
    const Tree tree = parsePlain(settings("<settings>" + repeat("<sink/><port/>", kPairs) + "</settings>"));
    const auto children = childrenOf(child(tree.get(), "settings"));
    ASSERT_EQ(children.size(), 2 * kPairs);
    EXPECT_EQ(children[kPairs - 1].first, static_cast<uint32_t>(NUXO_KEY_PORT));
    EXPECT_EQ(children[kPairs].first, static_cast<uint32_t>(NUXO_KEY_SINK));
}

TEST_F(NUXOParserLimitsTest, AnEntityBombInContentEndsTheParse)
{
    std::string entities = "<!ENTITY e0 'xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx'>";
    for (int i = 1; i < 20; ++i) {
        entities += "<!ENTITY e" + std::to_string(i) + " '" + repeat("&e" + std::to_string(i - 1) + ";", 10) + "'>";
    }
    const std::string text = "<!DOCTYPE graph_settings [" + entities + "]>" + settings("<port/>&e19;<sink/>");
    EXPECT_EQ(render(parseText(text).get()), "(port() version='1')");
    EXPECT_EQ(lines(), Lines{error("@parseNUXOXmlData, line:239, XML_Parse error " + text)});
}

TEST_F(NUXOParserLimitsTest, AnEntityBombInAnAttributeEndsTheParse)
{
    std::string entities = "<!ENTITY e0 'xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx'>";
    for (int i = 1; i < 20; ++i) {
        entities += "<!ENTITY e" + std::to_string(i) + " '" + repeat("&e" + std::to_string(i - 1) + ";", 10) + "'>";
    }
    const std::string text = "<!DOCTYPE graph_settings [" + entities + "]>" + settings("<port/><sink name='&e19;'/>");
    EXPECT_EQ(render(parseText(text).get()), "(port() version='1')");
    EXPECT_EQ(lines(), Lines{error("@parseNUXOXmlData, line:239, XML_Parse error " + text)});
}

TEST_F(NUXOParserLimitsTest, AnEntityThatMultipliesElementsEndsTheParse)
{
    std::string entities = "<!ENTITY e0 '<port/>'>";
    for (int i = 1; i < 12; ++i) {
        entities += "<!ENTITY e" + std::to_string(i) + " '" + repeat("&e" + std::to_string(i - 1) + ";", 10) + "'>";
    }
    const std::string text = "<!DOCTYPE graph_settings [" + entities + "]>" + settings("&e11;");
    const Tree tree = parseText(text);
    EXPECT_NE(tree, nullptr);
    EXPECT_EQ(lines(), Lines{error("@parseNUXOXmlData, line:239, XML_Parse error " + text)});
}

TEST_F(NUXOParserLimitsTest, AnEntityThatContainsItselfEndsTheParse)
{
    const std::string text = "<!DOCTYPE graph_settings [<!ENTITY a '&b;'><!ENTITY b '&a;'>]>" + settings("<port/>&a;");
    EXPECT_EQ(render(parseText(text).get()), "(port() version='1')");
    EXPECT_EQ(lines(), Lines{error("@parseNUXOXmlData, line:239, XML_Parse error " + text)});
}

} // namespace
