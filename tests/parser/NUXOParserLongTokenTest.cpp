// SPDX-License-Identifier: Apache-2.0
// Tokens that go on over many chunks: the tokenizer is not asked to look at them again with each chunk.
#include "ExpatCalls.h"
#include "ParserTest.h"

#include <string>

using namespace NUXO;

namespace {

constexpr size_t kLong = size_t{8} << 20U;
// Doubling from 64 KB to 8 MB takes 7 steps; before it come 16 chunks of 4 KB, behind it a few.
constexpr size_t kFewCalls = 40;

class NUXOParserLongTokenTest : public ParserTest {
protected:
    /// Settings with one `port` of a long name and a `sink` behind it, without end tag, in whole chunks and so many more
    /// chunks of blanks.
    static std::string openSettings(size_t nameLength, size_t blankChunks)
    {
        std::string text = "<graph_settings version='1'><port name='" + std::string(nameLength, 'n') + "'/><sink/>";
        text.resize((text.size() / kChunk + 1 + blankChunks) * kChunk, ' ');
        return text;
    }

    static void expectBoth(const IGraphConfig* root, size_t nameLength)
    {
        EXPECT_NE(child(root, "sink"), nullptr);
        EXPECT_TRUE(textOf(child(root, "port"), NUXO_KEY_NAME) == std::string(nameLength, 'n')); // too long to print
    }
};

TEST_F(NUXOParserLongTokenTest, AFileIsFedWholeInFewCalls)
{
    const std::string text = settings("<port name='" + std::string(kLong, 'n') + "'/><sink/>");
    ExpatCalls expat;
    const Tree tree = parsePlain(text);
    EXPECT_LT(expat.calls().size(), kFewCalls);
    EXPECT_EQ(expat.total(), static_cast<int>(text.size()));
    ASSERT_FALSE(expat.calls().empty());
    EXPECT_TRUE(expat.calls().back().isFinal);
    expectBoth(tree.get(), kLong);
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserLongTokenTest, CommentsAreNoDifferent)
{
    const std::string text = settings("<!--" + std::string(kLong, 'n') + "--><sink/>");
    ExpatCalls expat;
    const Tree tree = parsePlain(text);
    EXPECT_LT(expat.calls().size(), kFewCalls);
    EXPECT_NE(child(tree.get(), "sink"), nullptr);
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserLongTokenTest, ManyShortTokensGoThroughChunkByChunk)
{
    const std::string text = settingsOfSize(100 * kChunk + 1);
    ExpatCalls expat;
    parsePlain(text);
    EXPECT_EQ(expat.calls().size(), 101U); // 100 whole chunks and the byte that is left
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserLongTokenTest, AGzipFileThatGetsNoFinalCallLosesNothing)
{
    // The names end at different distances from the last call, whole chunks held back or none.
    for (size_t nameLength = kLong; nameLength < kLong + 8 * 100000; nameLength += 100000) {
        const std::string text = openSettings(nameLength, 0);
        ExpatCalls expat;
        const Tree tree = parseGzip(text);
        EXPECT_FALSE(expat.anyFinal());
        EXPECT_EQ(expat.total(), static_cast<int>(text.size()));
        expectBoth(tree.get(), nameLength);
        EXPECT_EQ(lines(), Lines{});
    }
}

TEST_F(NUXOParserLongTokenTest, WhatStandsBeforeADamagedEndIsNotLost)
{
    // zlib checks while it fills a buffer of 16 KB, and gives none of that out: the blanks keep it away from the elements.
    std::string bytes = gzip(openSettings(kLong, 8));
    bytes[bytes.size() - 8] = static_cast<char>(bytes[bytes.size() - 8] ^ 1); // first byte of the check sum
    const Tree tree = parseFile(write("damaged.gz", bytes));
    expectBoth(tree.get(), kLong);
    EXPECT_EQ(lines(), Lines{error("Error reading from file")});
}

TEST_F(NUXOParserLongTokenTest, MalformedTextBehindOneShowsTheChunkThatWasReadLast)
{
    const std::string text = settings("<port name='" + std::string(kLong, 'n') + "'/><<");
    const Tree tree = parsePlain(text);
    EXPECT_TRUE(textOf(child(tree.get(), "port"), NUXO_KEY_NAME) == std::string(kLong, 'n'));
    const std::string lastChunk = text.substr(text.size() / kChunk * kChunk);
    EXPECT_EQ(lines(), Lines{error("@parseXML, line:354, XML_Parse error " + lastChunk)});
}

} // namespace
