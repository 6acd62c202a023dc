// SPDX-License-Identifier: Apache-2.0
// Parsing texts in memory.
#include "ExpatCalls.h"
#include "ParserTest.h"

#include <qv_cipr/qv_cipr_alloc.h>

#include <climits>
#include <cstdint>
#include <string>
#include <vector>

using namespace NUXO;

namespace {

class NUXOParserMemoryTest : public ParserTest {
protected:
    IGraphConfig* const kUnwritten = reinterpret_cast<IGraphConfig*>(this);
};

std::string parseError(const std::string& text)
{
    return "@parseNUXOXmlData, line:239, XML_Parse error " + text;
}

TEST_F(NUXOParserMemoryTest, ParsesATextThatIsNotTerminated)
{
    EXPECT_EQ(render(parseText(settings("<port/>")).get()), "(port() version='1')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserMemoryTest, OnlyTheGivenSizeCounts)
{
    std::string text = settings("<port/>");
    const size_t size = text.size();
    text += "<garbage";
    IGraphConfig* root = nullptr;
    mParser.parseNUXOXmlData(text.data(), size, &root);
    EXPECT_EQ(render(Tree(root).get()), "(port() version='1')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserMemoryTest, TheWholeTextGoesToTheTokenizerInOneFinalCall)
{
    const std::string text = settingsOfSize(5 * kChunk + 17);
    ExpatCalls expat;
    EXPECT_NE(parseText(text), nullptr);
    EXPECT_EQ(expat.calls(), (std::vector<ExpatCall>{{5 * 4096 + 17, true}}));
}

TEST_F(NUXOParserMemoryTest, TheTextIsNotChanged)
{
    const std::string before = settings("<PORT Width='1&#50;'/>\r\n");
    std::string text = before;
    IGraphConfig* root = nullptr;
    mParser.parseNUXOXmlData(text.data(), text.size(), &root);
    const Tree tree(root);
    EXPECT_EQ(text, before);
}

TEST_F(NUXOParserMemoryTest, TheTreeDoesNotReferToTheText)
{
    std::string text = settings("<port name='a rather long text that fits into no small string'/>");
    IGraphConfig* root = nullptr;
    mParser.parseNUXOXmlData(text.data(), text.size(), &root);
    const Tree tree(root);
    text.assign(text.size(), '#');
    EXPECT_EQ(textOf(child(tree.get(), "port"), NUXO_KEY_NAME), "a rather long text that fits into no small string");
}

TEST_F(NUXOParserMemoryTest, NoChunkBufferIsTaken)
{
    const uint32_t allocations = g_alloc_counter;
    g_alloc_error = g_alloc_counter;
    const Tree tree = parseText(settings("<port/>"));
    g_alloc_error = UINT32_MAX;
    EXPECT_NE(tree, nullptr);
    EXPECT_EQ(g_alloc_counter, allocations);
}

TEST_F(NUXOParserMemoryTest, ANullOutputIsReportedAndNothingElseHappens)
{
    std::string text = settings("<gadget/>");
    ExpatCalls expat;
    mParser.parseNUXOXmlData(text.data(), text.size(), nullptr);
    EXPECT_TRUE(expat.calls().empty());
    EXPECT_EQ(lines(), Lines{error("NULL pointer given!")});
    EXPECT_EQ(keyOf("gadget"), 0U);
}

TEST_F(NUXOParserMemoryTest, WithoutTokenizerTheOutputStaysUnwritten)
{
    std::string text = settings("<port/>");
    IGraphConfig* root = kUnwritten;
    {
        ExpatCalls expat;
        expat.failCreation();
        mParser.parseNUXOXmlData(text.data(), text.size(), &root);
    }
    EXPECT_EQ(root, kUnwritten);
    EXPECT_EQ(lines(), Lines{error("@parseNUXOXmlData, line:232, parser is NULL")});
    EXPECT_EQ(render(parseText(text).get()), "(port() version='1')");
}

TEST_F(NUXOParserMemoryTest, NoTextAtAllIsMalformed)
{
    char byte = 'x';
    IGraphConfig* root = kUnwritten;
    mParser.parseNUXOXmlData(&byte, 0, &root);
    EXPECT_EQ(root, nullptr);
    EXPECT_EQ(lines(), (Lines{error(parseError("")), kNothingParsed}));
}

TEST_F(NUXOParserMemoryTest, ANullTextIsMalformedWhateverItsSize)
{
    for (const size_t size : {size_t{0}, size_t{1}, size_t{100000}, SIZE_MAX}) {
        IGraphConfig* root = kUnwritten;
        mParser.parseNUXOXmlData(nullptr, size, &root);
        EXPECT_EQ(root, nullptr) << size;
        EXPECT_EQ(lines(), (Lines{error(parseError("")), kNothingParsed})) << size;
    }
}

TEST_F(NUXOParserMemoryTest, ASizeBeyond31BitsIsAParseFailureAndNotCut)
{
    std::string text = settings("<port/>");
    text.resize(2 * kChunk, '\0'); // what is printed of it stays inside
    const std::vector<size_t> sizes = {static_cast<size_t>(INT_MAX) + 1, static_cast<size_t>(UINT32_MAX) + 1,
                                       static_cast<size_t>(UINT32_MAX) + 1 + settings("<port/>").size(), SIZE_MAX};
    for (const size_t size : sizes) {
        IGraphConfig* root = kUnwritten;
        mParser.parseNUXOXmlData(text.data(), size, &root);
        EXPECT_EQ(root, nullptr) << size;
        EXPECT_EQ(lines(), (Lines{error(parseError(settings("<port/>"))), kNothingParsed})) << size;
    }
}

TEST_F(NUXOParserMemoryTest, ADocumentWithoutElementsBelowItsRootGivesNull)
{
    EXPECT_EQ(parseText(settings(" ")), nullptr);
    EXPECT_EQ(lines(), Lines{kNothingParsed});
    EXPECT_EQ(parseText("<graph_descriptor/>"), nullptr);
    EXPECT_EQ(lines(), Lines{kNothingParsed});
}

TEST_F(NUXOParserMemoryTest, AMalformedTextHandsOutTheRootOfWhatWasBuilt)
{
    const std::string text = "<graph_settings version='1'><port width='1'/><settings><sink></oops>";
    const Tree tree = parseText(text);
    EXPECT_EQ(render(tree.get()), "(port(width=1) settings(sink()) version='1')");
    EXPECT_EQ(tree->getAncestor(), nullptr);
    EXPECT_EQ(lines(), Lines{error(parseError(text))});
}

TEST_F(NUXOParserMemoryTest, TextBehindTheDocumentIsAnErrorButTheTreeIsWhole)
{
    const std::string text = settings("<port/><sink/>") + "<more/>";
    EXPECT_EQ(render(parseText(text).get()), "(port() sink() version='1')");
    EXPECT_EQ(lines(), Lines{error(parseError(text))});
}

TEST_F(NUXOParserMemoryTest, AMalformedTextBeforeTheFirstElementGivesNull)
{
    EXPECT_EQ(parseText("no xml"), nullptr);
    EXPECT_EQ(lines(), (Lines{error(parseError("no xml")), kNothingParsed}));
}

TEST_F(NUXOParserMemoryTest, TheErrorLineOfALongTextHoldsItsFirst4096Bytes)
{
    const std::string text = settingsOfSize(3 * kChunk) + "<more/>";
    EXPECT_NE(parseText(text), nullptr);
    EXPECT_EQ(lines(), Lines{error(parseError(text.substr(0, kChunk)))});
}

TEST_F(NUXOParserMemoryTest, TheErrorLineEndsAtANulByte)
{
    std::string text = "<graph_settings version='1'><port/>#</graph_settings>";
    text[text.find('#')] = '\0';
    EXPECT_EQ(render(parseText(text).get()), "(port() version='1')");
    EXPECT_EQ(lines(), Lines{error(parseError("<graph_settings version='1'><port/>"))});
}

TEST_F(NUXOParserMemoryTest, FormatDirectivesInATextAreNotInterpreted)
{
    const std::string text = "%s%s%n%1000000d";
    EXPECT_EQ(parseText(text), nullptr);
    EXPECT_EQ(lines(), (Lines{error(parseError(text)), kNothingParsed}));
}

} // namespace
