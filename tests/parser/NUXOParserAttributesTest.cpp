// SPDX-License-Identifier: Apache-2.0
// What becomes of the attributes of an element, in both kinds of files.
#include "ParserTest.h"

#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

using namespace NUXO;

namespace {

class NUXOParserAttributesTest : public ParserTest {
protected:
    /// The element with these attributes in a settings file, rendered.
    std::string element(const std::string& attributes)
    {
        const Tree tree = parseText(settings("<port " + attributes + "/>"));
        return render(child(tree.get(), "port"));
    }
};

std::string asAttributeText(const std::string& text)
{
    std::string escaped;
    for (const char c : text) escaped += "&#" + std::to_string(static_cast<unsigned char>(c)) + ";";
    return escaped;
}

TEST_F(NUXOParserAttributesTest, IntegerKeysHoldIntegersAndAllOthersHoldTexts)
{
    EXPECT_EQ(element("width='1920' name='out' format='1920' id='-1'"), "(format='1920' name='out' id=-1 width=1920)");
}

TEST_F(NUXOParserAttributesTest, EveryBuiltInKeyIsIntegerOrTextByItsValue)
{
    for (const auto& [name, key] : mVocabulary.saved()) {
        if (name == "attribute") continue;
        const std::string expected = key >= 8193 && key <= 12286 ? name + "=7" : name + "='7'";
        EXPECT_EQ(element(name + "='7'"), "(" + expected + ")");
    }
}

TEST_F(NUXOParserAttributesTest, TheMarkersOfTheIntegerRangeHoldTexts)
{
    EXPECT_EQ(element("num_start='1' num_end='2' generic_keys_end='3'"),
              "(generic_keys_end='3' num_start='1' num_end='2')");
}

TEST_F(NUXOParserAttributesTest, CustomKeysInTheIntegerRangeHoldIntegers)
{
    ItemUID::addCustomKeyMap({{"custom_number", 9000}, {"custom_text", 4500}});
    EXPECT_EQ(element("custom_number='12' custom_text='12'"), "(custom_text='12' custom_number=12)");
}

TEST_F(NUXOParserAttributesTest, IntegersFollowTheDecimalConversionAndAreCutTo32Bits)
{
    const std::vector<std::pair<std::string, int>> cases = {
        {"0", 0},
        {"1920", 1920},
        {"-1", -1},
        {"+5", 5},
        {"  12", 12},
        {"&#9;&#10;&#13;7", 7},
        {"12abc", 12},
        {"1 2", 1},
        {"010", 10},
        {"0x10", 0},
        {"1e3", 1},
        {"1.9", 1},
        {"abc", 0},
        {"", 0},
        {"-", 0},
        {"+", 0},
        {"--5", 0},
        {"+-5", 0},
        {"- 5", 0},
        {"&#160;5", 0}, // a blank of Unicode is none of the C library
        {"2147483647", INT32_MAX},
        {"-2147483648", INT32_MIN},
        {"2147483648", INT32_MIN},   // 2^31
        {"4294967295", -1},          // 2^32 - 1
        {"4294967296", 0},           // 2^32
        {"99999999999", 1215752191}, // 23 * 2^32 + 1215752191
        {"-99999999999", -1215752191},
        {"9223372036854775807", -1}, // 2^63 - 1
        {"9223372036854775808", -1}, // saturates to 2^63 - 1
        {"-9223372036854775808", 0}, // -2^63
        {"-9223372036854775809", 0}, // saturates to -2^63
        {"-9223372036854775807", 1}, // -2^63 + 1
        {repeat("9", 300), -1},
        {"-" + repeat("9", 300), 0},
        {repeat("0", 300) + "42", 42},
    };
    for (const auto& [text, value] : cases) {
        EXPECT_EQ(element("width='" + text + "'"), "(width=" + std::to_string(value) + ")") << text;
    }
}

TEST_F(NUXOParserAttributesTest, IntegersOfAnyTextEqualTheCLibrarysConversion)
{
    std::mt19937 random(20240229);
    const std::string alphabet = "0123456789012345678901234567890123456789+- \t\nax.";
    for (int round = 0; round < 3000; ++round) {
        std::string text(random() % 24, '\0');
        for (char& c : text) c = alphabet[random() % alphabet.size()];
        const int expected = static_cast<int>(static_cast<uint32_t>(std::strtol(text.c_str(), nullptr, 10)));
        const Tree tree = parseText(settings("<port width='" + asAttributeText(text) + "'/>"));
        ASSERT_EQ(integerOf(child(tree.get(), "port"), NUXO_KEY_WIDTH), expected) << '"' << text << '"';
    }
}

TEST_F(NUXOParserAttributesTest, TextsAreKeptAsTheXmlReaderDeliversThem)
{
    EXPECT_EQ(element("name=' a&lt;&quot;&#66;\n\tz '"), "(name=' a<\"B  z ')");
    EXPECT_EQ(element("name=''"), "(name='')");
    EXPECT_EQ(element("name='%s%n%d'"), "(name='%s%n%d')");
    EXPECT_EQ(element("name='gr\xC3\xBC\xC3\x9F'"), "(name='gr\xC3\xBC\xC3\x9F')");
}

TEST_F(NUXOParserAttributesTest, AnUnknownAttributeIsStoredUnderKeyZeroAndNotAddedToTheVocabulary)
{
    const size_t names = nuxo_key_map.size();
    EXPECT_EQ(element("colour='red'"), "(na='red')");
    EXPECT_EQ(keyOf("colour"), 0U);
    EXPECT_EQ(nuxo_key_map.size(), names);
}

TEST_F(NUXOParserAttributesTest, AUnknownNumberIsATextUnderKeyZero)
{
    EXPECT_EQ(element("count='3'"), "(na='3')");
}

TEST_F(NUXOParserAttributesTest, OfSeveralUnknownAttributesTheFirstStaysAndTheOthersAreDroppedSilently)
{
    EXPECT_EQ(element("colour='red' width='2' shape='round' NA='x' size='big'"), "(na='red' width=2)");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserAttributesTest, OfNamesThatDifferInCaseOnlyTheFirstStaysSilently)
{
    EXPECT_EQ(element("Width='1' WIDTH='2' width='3' NAME='a' name='b'"), "(name='a' width=1)");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserAttributesTest, AnAttributeNamedLikeAnEarlierNewElementIsStoredUnderThatKey)
{
    const Tree tree = parseText(settings("<gadget/><port gadget='x'/>"));
    EXPECT_EQ(render(tree.get()), "(port(gadget='x') version='1' gadget())");
}

TEST_F(NUXOParserAttributesTest, AnAttributeNamedLikeALaterNewElementIsStillUnknown)
{
    const Tree tree = parseText(settings("<port gadget='x'/><gadget/>"));
    EXPECT_EQ(render(tree.get()), "(port(na='x') version='1' gadget())");
}

TEST_F(NUXOParserAttributesTest, AnAttributeNamedLikeItsOwnNewElementIsStoredUnderThatKey)
{
    const Tree tree = parseText(settings("<gadget gadget='x'/>"));
    EXPECT_EQ(render(tree.get()), "(version='1' gadget(gadget='x'))");
}

TEST_F(NUXOParserAttributesTest, TheAttributeNamedAttributeHoldsTheKeyThatItsTextNames)
{
    EXPECT_EQ(element("attribute='width'"), "(attribute=8232)");
    EXPECT_EQ(element("ATTRIBUTE='port'"), "(attribute=34)");
}

TEST_F(NUXOParserAttributesTest, TheAttributeNamedAttributeHoldsZeroForUnknownTextsWhichStayUnknown)
{
    const size_t names = nuxo_key_map.size();
    EXPECT_EQ(element("attribute='gadget'"), "(attribute=0)");
    EXPECT_EQ(element("attribute='Width'"), "(attribute=0)"); // values are matched with their case
    EXPECT_EQ(element("attribute=''"), "(attribute=0)");
    EXPECT_EQ(element("attribute='8232'"), "(attribute=0)");
    EXPECT_EQ(nuxo_key_map.size(), names);
}

TEST_F(NUXOParserAttributesTest, TheAttributeNamedAttributeOnANewElementStillAddsNoKeyForItsText)
{
    const Tree tree = parseText(settings("<gadget attribute='widget'/>"));
    EXPECT_EQ(integerOf(child(tree.get(), "gadget"), NUXO_KEY_ATTRIBUTE), 0);
    EXPECT_EQ(keyOf("widget"), 0U);
}

TEST_F(NUXOParserAttributesTest, TheAttributeNamedAttributeKnowsNamesThatEarlierElementsAdded)
{
    const Tree tree = parseText(settings("<gadget/><port attribute='gadget'/>"));
    EXPECT_EQ(integerOf(child(tree.get(), "port"), NUXO_KEY_ATTRIBUTE), 115);
}

TEST_F(NUXOParserAttributesTest, TheAttributeNamedAttributeIsAnIntegerInDescriptorsToo)
{
    const Tree tree = parseText(descriptor("<options attribute='height'/>"));
    EXPECT_EQ(render(tree.get()), "(options(attribute=8211) version='1')");
}

TEST_F(NUXOParserAttributesTest, DefaultsDeclaredInTheDocumentTypeCountAsAttributes)
{
    const Tree tree = parseText("<!DOCTYPE graph_settings [<!ATTLIST port width CDATA '640' name CDATA 'preset'>]>" +
                                settings("<port name='own'/>"));
    EXPECT_EQ(render(tree.get()), "(port(name='own' width=640) version='1')");
}

TEST_F(NUXOParserAttributesTest, InternalEntitiesAreExpandedInAttributesAndInContent)
{
    const Tree tree = parseText("<!DOCTYPE graph_settings [<!ENTITY size '1920'><!ENTITY sinks '<sink/><sink/>'>]>" +
                                settings("<port width='&size;'/>&sinks;"));
    EXPECT_EQ(render(tree.get()), "(port(width=1920) sink() sink() version='1')");
}

TEST_F(NUXOParserAttributesTest, AnElementWithoutAttributesIsAnEmptyNode)
{
    const Tree tree = parseText(settings("<port></port>"));
    EXPECT_EQ(child(tree.get(), "port")->getDescendantCount(), 0);
}

TEST_F(NUXOParserAttributesTest, AttributesOfAParsedNodeCanBeRemovedAndOthersAdded)
{
    const Tree tree = parseText(settings("<port width='1' name='a'/>"));
    auto* const port = dynamic_cast<GraphConfigNode*>(tree->getDescendant(NUXO_KEY_PORT));
    ASSERT_NE(port, nullptr);
    EXPECT_EQ(port->removeDescendant(NUXO_KEY_WIDTH), StatusOk);
    EXPECT_EQ(port->addValue(NUXO_KEY_HEIGHT, 5), StatusOk);
    EXPECT_EQ(port->addValue(NUXO_KEY_NAME, "b"), StatusDuplicate);
    EXPECT_EQ(render(port), "(name='a' height=5)");
}

} // namespace
