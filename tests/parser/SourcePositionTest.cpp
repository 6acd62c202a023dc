// SPDX-License-Identifier: Apache-2.0
// Where parsed items say that they come from.
#include "ParserTest.h"

#include <string>

using namespace NUXO;

namespace {

class SourcePositionTest : public ParserTest {};

uint32_t offsetOf(const std::string& text, const std::string& what)
{
    return static_cast<uint32_t>(text.find(what));
}

TEST_F(SourcePositionTest, AnElementStandsAtItsOpeningBracket)
{
    const std::string text =
        settings("\n  <settings>\r\n\t<port width='1'/><!-- < --><sink></sink></settings> <apply/>");
    const Tree tree = parseText(text);
    const IGraphConfig* const group = child(tree.get(), "settings");
    EXPECT_EQ(getSourcePosition(group).offset, offsetOf(text, "<settings>"));
    EXPECT_EQ(getSourcePosition(child(group, "port")).offset, offsetOf(text, "<port"));
    EXPECT_EQ(getSourcePosition(child(group, "sink")).offset, offsetOf(text, "<sink"));
    EXPECT_EQ(getSourcePosition(child(tree.get(), "apply")).offset, offsetOf(text, "<apply"));
    EXPECT_TRUE(getSourcePosition(group).known());
}

TEST_F(SourcePositionTest, AttributesCarryThePositionOfTheirElement)
{
    const std::string text =
        descriptor("<nodes/><port width='1' unknown='2' name='out' format='3' attribute='width'/>");
    const Tree tree = parseText(text);
    const IGraphConfig* const port = child(tree.get(), "out");
    ASSERT_NE(port, nullptr);
    for (const uint32_t key :
         {NUXO_KEY_WIDTH, NUXO_KEY_NA, NUXO_KEY_NAME, NUXO_KEY_TYPE, NUXO_KEY_FORMAT, NUXO_KEY_ATTRIBUTE}) {
        const SourcePosition position = getSourcePosition(port, key);
        EXPECT_EQ(position.offset, offsetOf(text, "<port")) << ItemUID::key2str(key);
        EXPECT_EQ(position.document, getSourcePosition(port).document);
    }
}

TEST_F(SourcePositionTest, ByTheKeyOfAChildThePositionIsThatOfTheFirstSuchChild)
{
    const std::string text = settings("<sink/><port id='1'/><port id='2'/>");
    const Tree tree = parseText(text);
    EXPECT_EQ(getSourcePosition(tree.get(), NUXO_KEY_PORT).offset, offsetOf(text, "<port id='1'"));
}

TEST_F(SourcePositionTest, EqualKeysKeepTheirOwnPositions)
{
    const std::string text = settings("<sink id='1'/><port id='2'/><sink id='3'/><port id='4'/>");
    const Tree tree = parseText(text);
    for (const auto& [key, node] : childrenOf(tree.get())) {
        const std::string tag = " id='" + std::to_string(*integerOf(node, NUXO_KEY_ID)) + "'";
        EXPECT_EQ(getSourcePosition(node).offset, offsetOf(text, ItemUID::key2str(key) + tag) - 1);
    }
}

TEST_F(SourcePositionTest, TheVersionStandsAtTheRootElement)
{
    const std::string text = "<?xml version='1.0'?>\n<graph_settings version='1'><port/></graph_settings>";
    const Tree tree = parseText(text);
    const SourcePosition position = getSourcePosition(tree.get(), NUXO_KEY_VERSION);
    EXPECT_TRUE(position.known());
    EXPECT_EQ(position.offset, offsetOf(text, "<graph_settings"));
}

TEST_F(SourcePositionTest, RootsNullAndWhatIsNotThereHaveNoPosition)
{
    const Tree tree = parseText(settings("<port/>"));
    EXPECT_FALSE(getSourcePosition(tree.get()).known());
    EXPECT_FALSE(getSourcePosition(nullptr).known());
    EXPECT_FALSE(getSourcePosition(nullptr, NUXO_KEY_WIDTH).known());
    EXPECT_FALSE(getSourcePosition(child(tree.get(), "port"), NUXO_KEY_WIDTH).known());
}

TEST_F(SourcePositionTest, ItemsMadeByHandHaveNoPosition)
{
    GraphConfigNode root;
    EXPECT_EQ(root.insertDescendant(new GraphConfigNode, NUXO_KEY_PORT), StatusOk);
    EXPECT_EQ(root.addValue(NUXO_KEY_WIDTH, 1), StatusOk);
    EXPECT_FALSE(getSourcePosition(root.getDescendant(NUXO_KEY_PORT)).known());
    EXPECT_FALSE(getSourcePosition(&root, NUXO_KEY_WIDTH).known());
}

TEST_F(SourcePositionTest, AFileIsNamedAsItWasGivenToTheParser)
{
    const std::string file = write("graph.xml", settings("<port/>"));
    const Tree tree = parseFile(file);
    EXPECT_STREQ(getSourceDocument(getSourcePosition(child(tree.get(), "port")).document), file.c_str());
    const Tree compressed = parseFile(write("graph.gz", gzip(settings("<port/>"))));
    EXPECT_EQ(getSourceDocument(getSourcePosition(child(compressed.get(), "port")).document), path("graph.gz"));
}

TEST_F(SourcePositionTest, ATextInMemoryIsNamedMemory)
{
    const Tree tree = parseText(settings("<port/>"));
    EXPECT_STREQ(getSourceDocument(getSourcePosition(child(tree.get(), "port")).document), "<memory>");
}

TEST_F(SourcePositionTest, UnknownDocumentNumbersHaveAnEmptyName)
{
    EXPECT_STREQ(getSourceDocument(0), "");
    EXPECT_STREQ(getSourceDocument(65535), "");
    EXPECT_STREQ(getSourceDocument(UINT32_MAX), "");
}

TEST_F(SourcePositionTest, OneFileKeepsItsNumberAndDifferentFilesDiffer)
{
    const std::string file = write("graph.xml", settings("<port/>"));
    const Tree first = parseFile(file);
    const Tree other = parseFile(write("other.xml", settings("<port/>")));
    const Tree again = parseFile(file);
    const uint32_t number = getSourcePosition(child(first.get(), "port")).document;
    EXPECT_EQ(getSourcePosition(child(again.get(), "port")).document, number);
    EXPECT_NE(getSourcePosition(child(other.get(), "port")).document, number);
}

TEST_F(SourcePositionTest, TheNameOutlivesParserTreeAndText)
{
    uint32_t number = 0;
    {
        std::string name = write("short_lived.xml", settings("<port/>"));
        const Tree tree = parseFile(name);
        number = getSourcePosition(child(tree.get(), "port")).document;
        name.assign(name.size(), '#');
    }
    EXPECT_EQ(getSourceDocument(number), path("short_lived.xml"));
}

TEST_F(SourcePositionTest, OffsetsCountTheBytesOfTheWholeTextAcrossChunks)
{
    std::string text = settings(std::string(3 * kChunk - 30, ' ') + "<port/>" + std::string(kChunk, ' ') + "<sink/>");
    for (const Tree& tree : {parsePlain(text), parseGzip(text), parseText(text)}) {
        EXPECT_EQ(getSourcePosition(child(tree.get(), "port")).offset, offsetOf(text, "<port"));
        EXPECT_EQ(getSourcePosition(child(tree.get(), "sink")).offset, offsetOf(text, "<sink"));
    }
}

TEST_F(SourcePositionTest, EveryElementOfALargeFileStandsWhereItStands)
{
    std::string text = "<graph_settings version='1'>";
    std::vector<uint32_t> offsets;
    for (int i = 0; i < 5000; ++i) {
        text += i % 7 == 0 ? "\n" : " ";
        offsets.push_back(static_cast<uint32_t>(text.size()));
        text += "<port id='" + std::to_string(i) + "' name='" + std::string(static_cast<size_t>(i % 100), 'x') + "'/>";
    }
    text += "</graph_settings>";
    for (const Tree& tree : {parsePlain(text), parseGzip(text)}) {
        const auto children = childrenOf(tree.get());
        ASSERT_EQ(children.size(), offsets.size());
        for (size_t i = 0; i < offsets.size(); ++i) {
            const SourcePosition position = getSourcePosition(children[i].second, NUXO_KEY_ID);
            ASSERT_EQ(position.offset, offsets[i]) << i;
        }
    }
}

TEST_F(SourcePositionTest, OffsetsCountBytesNotCharacters)
{
    const std::string text = "\xEF\xBB\xBF" + settings("<port name='gr\xC3\xBC\xC3\x9F'/>\xE2\x82\xAC<sink/>");
    const Tree tree = parseText(text);
    EXPECT_EQ(getSourcePosition(child(tree.get(), "port")).offset, offsetOf(text, "<port"));
    EXPECT_EQ(getSourcePosition(child(tree.get(), "sink")).offset, offsetOf(text, "<sink"));
}

TEST_F(SourcePositionTest, CopiesKeepPositions)
{
    const std::string text = settings("<settings><port width='1'/></settings>");
    const Tree tree = parseText(text);
    const Tree copy(dynamic_cast<GraphConfigNode&>(*tree).copy());
    const IGraphConfig* const port = child(child(copy.get(), "settings"), "port");
    const IGraphConfig* const original = child(child(tree.get(), "settings"), "port");
    EXPECT_EQ(getSourcePosition(port).offset, offsetOf(text, "<port"));
    EXPECT_EQ(getSourcePosition(port).document, getSourcePosition(original).document);
    EXPECT_EQ(getSourcePosition(port, NUXO_KEY_WIDTH).offset, offsetOf(text, "<port"));
    EXPECT_EQ(getSourcePosition(child(copy.get(), "settings")).offset, offsetOf(text, "<settings"));
}

TEST_F(SourcePositionTest, APartialTreeHasPositionsToo)
{
    const std::string text = "<graph_settings version='1'><settings><port width='1'></oops>";
    const Tree tree = parseText(text);
    EXPECT_EQ(getSourcePosition(child(child(tree.get(), "settings"), "port")).offset, offsetOf(text, "<port"));
}

TEST_F(SourcePositionTest, ElementsOfAnEntityStandAtItsReference)
{
    const std::string text = "<!DOCTYPE graph_settings [<!ENTITY e '<port/>'>]>" + settings("<sink/>&e;");
    const Tree tree = parseText(text);
    EXPECT_EQ(getSourcePosition(child(tree.get(), "port")).offset, offsetOf(text, "&e;"));
}

} // namespace
