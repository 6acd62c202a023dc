// SPDX-License-Identifier: Apache-2.0
// Documents that are wrong in themselves: encodings, stray bytes, broken XML.
#include "ParserTest.h"

#include <random>
#include <string>
#include <vector>

using namespace NUXO;

namespace {

class NUXOParserBadInputTest : public ParserTest {};

std::string parseError(const std::string& text)
{
    return "@parseNUXOXmlData, line:239, XML_Parse error " + text.substr(0, text.find('\0'));
}

enum class ByteOrder { Little, Big };

/// A text of ASCII characters as UTF-16 with byte order mark.
std::string utf16(const std::string& ascii, ByteOrder order)
{
    std::string bytes = order == ByteOrder::Little ? "\xFF\xFE" : "\xFE\xFF";
    for (const char c : ascii) {
        if (order == ByteOrder::Big) bytes += '\0';
        bytes += c;
        if (order == ByteOrder::Little) bytes += '\0';
    }
    return bytes;
}

TEST_F(NUXOParserBadInputTest, ReadsUtf16InBothByteOrders)
{
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        const std::string text = utf16(settings("<port width='1920' name='out'/>"), order);
        const std::string expected = "(port(name='out' width=1920) version='1')";
        EXPECT_EQ(render(parseText(text).get()), expected);
        EXPECT_EQ(render(parsePlain(text).get()), expected);
        EXPECT_EQ(render(parseGzip(text).get()), expected);
    }
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserBadInputTest, ReadsAUtf8ByteOrderMark)
{
    EXPECT_EQ(render(parseText("\xEF\xBB\xBF" + settings("<port/>")).get()), "(port() version='1')");
}

TEST_F(NUXOParserBadInputTest, ConvertsADeclaredEncodingToUtf8)
{
    const Tree tree = parseText("<?xml version='1.0' encoding='ISO-8859-1'?>" + settings("<port name='gr\xFC\xDF'/>"));
    EXPECT_EQ(textOf(child(tree.get(), "port"), NUXO_KEY_NAME), "gr\xC3\xBC\xC3\x9F");
}

TEST_F(NUXOParserBadInputTest, AnUnknownEncodingIsMalformed)
{
    const std::string text = "<?xml version='1.0' encoding='x-none'?>" + settings("<port/>");
    EXPECT_EQ(parseText(text), nullptr);
    EXPECT_EQ(lines(), (Lines{error(parseError(text)), kNothingParsed}));
}

TEST_F(NUXOParserBadInputTest, NulBytesEndTheParseWhereverTheyStand)
{
    const std::string text = settings("<port width='1'/><sink/>");
    for (size_t at = 0; at <= text.size(); ++at) {
        std::string damaged = text;
        damaged.insert(at, 1, '\0');
        const std::string tree = render(parseText(damaged).get());
        const Lines logged = lines();
        ASSERT_FALSE(logged.empty()) << at;
        EXPECT_EQ(logged[0], error(parseError(damaged))) << at;
        EXPECT_EQ(logged.size(), tree == "null" ? 2U : 1U) << at;
    }
}

TEST_F(NUXOParserBadInputTest, AFileOfNulBytesIsMalformed)
{
    const std::string nuls(3 * kChunk, '\0');
    EXPECT_EQ(parsePlain(nuls), nullptr);
    EXPECT_EQ(lines(), (Lines{error("@parseXML, line:354, XML_Parse error "), kNothingParsed}));
    EXPECT_EQ(parseGzip(nuls), nullptr);
    EXPECT_EQ(lines(), (Lines{error("@parseGz, line:390, XML_Parse error "), kNothingParsed}));
}

TEST_F(NUXOParserBadInputTest, MalformedDocumentsHandOutWhatStandsBeforeTheError)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"<graph_settings version='1'>", "null"},
        {"<graph_settings version='1'><port/>", "(port() version='1')"},
        {"<graph_settings version='1'><port/></sink></graph_settings>", "(port() version='1')"},
        {"<graph_settings version='1'><port width=1/></graph_settings>", "null"},
        {"<graph_settings version='1'><port/><sink width='1' width='2'/></graph_settings>", "(port() version='1')"},
        {"<graph_settings version='1'><port/>&undefined;</graph_settings>", "(port() version='1')"},
        {"<graph_settings version='1'><port/><sink name='a<b'/></graph_settings>", "(port() version='1')"},
        {"<graph_settings version='1'><port/><!-- -- --></graph_settings>", "(port() version='1')"},
        {"<graph_settings version='1'><port/>]]></graph_settings>", "(port() version='1')"},
        {"<graph_settings version='1'><port/>\x01</graph_settings>", "(port() version='1')"},
        {"<graph_settings version='1'><port/>\xFF\xFE</graph_settings>", "(port() version='1')"},
        {"<graph_settings version='1'><port/><1/></graph_settings>", "(port() version='1')"},
        {"<graph_settings version='1'><port/></graph_settings><graph_settings/>", "(port() version='1')"},
        {"<graph_settings version='1'><port/></GRAPH_SETTINGS>", "(port() version='1')"},
        {" <?xml version='1.0'?><graph_settings/>", "null"},
        {"<graph_settings version='1' version='2'><port/></graph_settings>", "null"},
    };
    for (const auto& [text, tree] : cases) {
        EXPECT_EQ(render(parseText(text).get()), tree) << text;
        Lines expected = {error(parseError(text))};
        if (tree == "null") expected.push_back(kNothingParsed);
        EXPECT_EQ(lines(), expected) << text;
    }
}

TEST_F(NUXOParserBadInputTest, ExternalEntitiesAreNeverRead)
{
    const std::string secret = write("secret", "<sink/>");
    const Tree tree = parseText("<!DOCTYPE graph_settings SYSTEM '" + path("missing.dtd") + "' [<!ENTITY e SYSTEM '" +
                                secret + "'>]>" + settings("<port/>&e;"));
    EXPECT_EQ(render(tree.get()), "(port() version='1')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserBadInputTest, RandomDamageNeverCrashesAndNeverLosesTheMessage)
{
    const std::string text = descriptor("<nodes><source name='sensor' id='0'><port name='p' width='12'/></source>"
                                        "<node name='n' type='hw' attribute='width'/><!-- c --></nodes>&#65;");
    std::mt19937 random(42);
    for (int round = 0; round < 20000; ++round) {
        std::string damaged = text;
        for (unsigned changes = 1 + random() % 4; changes > 0; --changes) {
            const size_t at = random() % damaged.size();
            switch (random() % 3) {
            case 0: damaged[at] = static_cast<char>(random() % 256); break;
            case 1: damaged.erase(at, random() % 20); break;
            default: damaged.insert(at, text, random() % text.size(), random() % 20); break;
            }
            if (damaged.empty()) damaged = "x";
        }
        const Tree tree = parseText(damaged);
        const Lines logged = lines();
        if (tree == nullptr) ASSERT_EQ(logged.back(), kNothingParsed) << damaged;
        else ASSERT_EQ(tree->getAncestor(), nullptr) << damaged;
    }
}

} // namespace
