// SPDX-License-Identifier: Apache-2.0
// Reading gzip files: chunks, ends, and damaged streams.
#include "ExpatCalls.h"
#include "ParserTest.h"

#include <filesystem>
#include <random>
#include <string>
#include <vector>

using namespace NUXO;

namespace {

class NUXOParserGzipTest : public ParserTest {};

constexpr size_t kTrailer = 8; // a gzip stream ends in the checksum and the length of its text, four bytes each

std::string parseError(const std::string& text)
{
    return "@parseGz, line:390, XML_Parse error " + text;
}

/// Settings whose text hardly compresses, so that cutting the stream cuts the text in the middle.
std::string unevenSettings(size_t elements)
{
    std::mt19937 random(7);
    std::string body;
    for (size_t i = 0; i < elements; ++i) {
        body += "<port id='" + std::to_string(i) + "' name='" + std::to_string(random()) + "'/>";
    }
    return settings(body);
}

/// Whether the children are a beginning of ports numbered from 0.
bool isNumberedPrefix(const IGraphConfig* tree)
{
    int expected = 0;
    for (const auto& [key, port] : childrenOf(tree)) {
        const std::optional<int> id = integerOf(port, NUXO_KEY_ID);
        if (key != NUXO_KEY_PORT || id != expected++) return false;
    }
    return true;
}

TEST_F(NUXOParserGzipTest, ReadsAGzipFile)
{
    const Tree tree = parseFile(write("graph.xml.gz", gzip(settings("<port/>"))));
    EXPECT_EQ(render(tree.get()), "(port() version='1')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserGzipTest, ReadsAPlainTextUnderAGzipName)
{
    const Tree tree = parseFile(write("graph.gz", settings("<port/>")));
    EXPECT_EQ(render(tree.get()), "(port() version='1')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserGzipTest, ReadsConcatenatedStreamsAsOneText)
{
    const std::string text = unevenSettings(500);
    const Tree tree = parseFile(write("two.gz", gzip(text.substr(0, 5000)) + gzip(text.substr(5000))));
    EXPECT_EQ(childrenOf(tree.get()).size(), 500U);
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserGzipTest, AGzipStreamUnderAPlainNameIsAMalformedDocument)
{
    const std::string bytes = gzip(settings("<port/>"));
    EXPECT_EQ(parseFile(write("graph.xml", bytes)), nullptr);
    const std::string upToNul = bytes.c_str(); // a gzip header holds NUL bytes, which end the printed text
    EXPECT_EQ(lines(), (Lines{error("@parseXML, line:354, XML_Parse error " + upToNul), kNothingParsed}));
}

TEST_F(NUXOParserGzipTest, AMissingFileGivesNull)
{
    const std::string file = path("missing.gz");
    EXPECT_EQ(parseFile(file), nullptr);
    EXPECT_EQ(lines(), (Lines{error("Failed to open GZ " + file), kNothingParsed}));
}

TEST_F(NUXOParserGzipTest, ADanglingLinkGivesNull)
{
    const std::string file = path("link.xml.gz");
    std::filesystem::create_symlink("nowhere", file);
    EXPECT_EQ(parseFile(file), nullptr);
    EXPECT_EQ(lines(), (Lines{error("Failed to open GZ " + file), kNothingParsed}));
}

TEST_F(NUXOParserGzipTest, ADirectoryCannotBeRead)
{
    const std::string file = path("directory.gz");
    std::filesystem::create_directory(file);
    EXPECT_EQ(parseFile(file), nullptr);
    EXPECT_EQ(lines(), (Lines{error("Error reading from file"), kNothingParsed}));
}

TEST_F(NUXOParserGzipTest, AnEmptyFileAndAStreamOfNothingAreNotParsedAtAll)
{
    for (const std::string& bytes : {std::string(), gzip("")}) {
        ExpatCalls expat;
        EXPECT_EQ(parseFile(write("empty.gz", bytes)), nullptr);
        EXPECT_FALSE(expat.anyFinal());
        EXPECT_EQ(expat.total(), 0);
        EXPECT_EQ(lines(), Lines{kNothingParsed});
    }
}

TEST_F(NUXOParserGzipTest, FilesAreFedInChunksOf4096BytesWithTheShortOneFinal)
{
    ExpatCalls expat;
    EXPECT_NE(parseGzip(settingsOfSize(2 * kChunk + 1000)), nullptr);
    EXPECT_EQ(expat.calls(), (std::vector<ExpatCall>{{4096, false}, {4096, false}, {1000, true}}));
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserGzipTest, AFileOfWholeChunksGetsNoFinalCall)
{
    for (size_t chunks = 1; chunks <= 5; ++chunks) {
        ExpatCalls expat;
        const Tree tree = parseGzip(settingsOfSize(chunks * kChunk));
        EXPECT_NE(tree, nullptr);
        EXPECT_FALSE(expat.anyFinal()) << chunks;
        EXPECT_EQ(expat.total(), static_cast<int>(chunks * kChunk));
        EXPECT_EQ(lines(), Lines{});
    }
}

TEST_F(NUXOParserGzipTest, AWholeChunkDocumentCutShortPassesSilently)
{
    const std::string text = settingsOfSize(3 * kChunk).substr(0, 2 * kChunk);
    const size_t whole = childrenOf(parsePlain(text).get()).size(); // the plain file reports its end
    lines();
    EXPECT_EQ(childrenOf(parseGzip(text).get()).size(), whole);
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserGzipTest, NoElementIsLostAroundChunkBorders)
{
    for (size_t size = 2 * kChunk - 30; size <= 2 * kChunk + 30; ++size) {
        const std::string text = settingsOfSize(size);
        const size_t expected = childrenOf(parseText(text).get()).size();
        EXPECT_EQ(childrenOf(parseGzip(text).get()).size(), expected) << size;
    }
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserGzipTest, ALongTokenAtTheEndOfWholeChunksLosesNoElement)
{
    // Tokens that did not fit in what was fed so far are put off by the tokenizer; without a final call something has
    // to fetch them. Every token length and number of chunks must arrive.
    const std::string element = "<port width='1'/>";
    for (const size_t token : {size_t{1000}, kChunk, 2 * kChunk, 3 * kChunk, 5 * kChunk, 9 * kChunk}) {
        for (size_t chunks = 3; chunks <= 12; ++chunks) {
            const std::string head = "<graph_settings version='1'>";
            const std::string tail = "<sink name='" + std::string(token, 'n') + "'/></graph_settings>";
            if (chunks * kChunk < head.size() + tail.size()) continue;
            const size_t room = chunks * kChunk - head.size() - tail.size();
            const size_t elements = room / element.size();
            const std::string blanks(room - elements * element.size(), ' ');
            const Tree tree = parseGzip(head + blanks + repeat(element, elements) + tail);
            EXPECT_EQ(childrenOf(tree.get()).size(), elements + 1) << token << " bytes, " << chunks << " chunks";
            const std::optional<std::string> name = textOf(child(tree.get(), "sink"), NUXO_KEY_NAME);
            EXPECT_EQ(name.value_or("").size(), token);
        }
    }
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserGzipTest, NineHundredNinetyFourShortElementsBehindALongTokenAllArrive)
{
    // The token breaks off in the second chunk; the tokenizer then waits for twice as much, and three chunks are all.
    const std::string head = "<graph_settings version='1'><sink name='" + std::string(2 * kChunk, 'n') + "'/>";
    const std::string elements = repeat("<a/>", 994);
    const std::string tail = "</graph_settings>";
    const std::string blanks(3 * kChunk - head.size() - elements.size() - tail.size(), ' ');
    const Tree tree = parseGzip(head + blanks + elements + tail);
    EXPECT_EQ(childrenOf(tree.get()).size(), 995U);
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserGzipTest, AnErrorInTokensPutOffUntilTheEndIsReported)
{
    // The mismatched end tag stands in the last bytes, behind a token of two chunks.
    const std::string head = "<graph_settings version='1'><port/><sink name='" + std::string(2 * kChunk, 'n') + "'/>";
    const std::string tail = "</oops>";
    const std::string text = head + std::string(3 * kChunk - head.size() - tail.size(), ' ') + tail;
    const Tree tree = parseGzip(text);
    EXPECT_EQ(childrenOf(tree.get()).size(), 2U);
    const Lines logged = lines();
    ASSERT_EQ(logged.size(), 1U);
    EXPECT_EQ(logged[0].first, static_cast<int>(LogCapture::Error));
    EXPECT_EQ(logged[0].second.find(parseError("")), 0U) << logged[0].second;
}

TEST_F(NUXOParserGzipTest, AMalformedTextStopsWithItsChunkAndHandsOutWhatWasBuilt)
{
    const std::string text = "<graph_settings version='1'><port width='1'/><settings><sink></oops>";
    const Tree tree = parseGzip(text);
    EXPECT_EQ(render(tree.get()), "(port(width=1) settings(sink()) version='1')");
    EXPECT_EQ(lines(), Lines{error(parseError(text))});
}

TEST_F(NUXOParserGzipTest, TheErrorLineHoldsTheLastChunkOnlyAndNoMore)
{
    EXPECT_NE(parseGzip(settingsOfSize(kChunk) + "<garbage/>"), nullptr);
    EXPECT_EQ(lines(), Lines{error(parseError("<garbage/>"))});
}

TEST_F(NUXOParserGzipTest, ATruncatedTextHandsOutWhatWasBuilt)
{
    const std::string text = "<graph_settings version='1'><settings><port/><sink";
    EXPECT_EQ(render(parseGzip(text).get()), "(settings(port()) version='1')");
    EXPECT_EQ(lines(), Lines{error(parseError(text))});
}

TEST_F(NUXOParserGzipTest, ATruncatedStreamHandsOutWhatItHeldAndReportsTheMissingEnd)
{
    const std::string bytes = gzip(unevenSettings(2000));
    const Tree tree = parseFile(write("cut.gz", bytes.substr(0, bytes.size() / 2)));
    EXPECT_GT(childrenOf(tree.get()).size(), 500U);
    EXPECT_LT(childrenOf(tree.get()).size(), 2000U);
    EXPECT_TRUE(isNumberedPrefix(tree.get()));
    const Lines logged = lines();
    ASSERT_EQ(logged.size(), 1U);
    EXPECT_EQ(logged[0].second.find(parseError("")), 0U) << logged[0].second;
}

TEST_F(NUXOParserGzipTest, AStreamCutAnywhereGivesABeginningOfTheTree)
{
    const std::string bytes = gzip(unevenSettings(300));
    size_t before = 0;
    for (size_t size = 0; size < bytes.size(); size += 37) {
        const Tree tree = parseFile(write("cut.gz", bytes.substr(0, size)));
        EXPECT_TRUE(isNumberedPrefix(tree.get())) << size;
        const size_t children = childrenOf(tree.get()).size();
        EXPECT_GE(children, before) << size;
        before = children;
    }
    EXPECT_GT(before, 0U);
}

TEST_F(NUXOParserGzipTest, AWrongChecksumOfAShortTextIsAReadError)
{
    std::string bytes = gzip(settings("<port/>"));
    bytes[bytes.size() - kTrailer] = static_cast<char>(~bytes[bytes.size() - kTrailer]);
    EXPECT_EQ(parseFile(write("bad.gz", bytes)), nullptr);
    EXPECT_EQ(lines(), (Lines{error("Error reading from file"), kNothingParsed}));
}

TEST_F(NUXOParserGzipTest, AWrongChecksumOfALongTextHandsOutWhatCameBefore)
{
    std::string bytes = gzip(unevenSettings(5000));
    bytes[bytes.size() - kTrailer] = static_cast<char>(~bytes[bytes.size() - kTrailer]);
    const Tree tree = parseFile(write("bad.gz", bytes));
    EXPECT_GT(childrenOf(tree.get()).size(), 1000U);
    EXPECT_TRUE(isNumberedPrefix(tree.get()));
    EXPECT_EQ(lines(), Lines{error("Error reading from file")});
}

TEST_F(NUXOParserGzipTest, AWrongLengthIsAReadError)
{
    std::string bytes = gzip(settings("<port/>"));
    bytes.back() = 1;
    EXPECT_EQ(parseFile(write("bad.gz", bytes)), nullptr);
    EXPECT_EQ(lines(), (Lines{error("Error reading from file"), kNothingParsed}));
}

TEST_F(NUXOParserGzipTest, AMissingTrailerLosesNothing)
{
    const std::string bytes = gzip(settings("<port/>"));
    const Tree tree = parseFile(write("cut.gz", bytes.substr(0, bytes.size() - kTrailer)));
    EXPECT_EQ(render(tree.get()), "(port() version='1')");
}

TEST_F(NUXOParserGzipTest, AStreamWithAnyByteDamagedNeitherCrashesNorInventsElements)
{
    const std::string bytes = gzip(unevenSettings(60));
    for (size_t at = 0; at < bytes.size(); ++at) {
        std::string damaged = bytes;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
        const Tree tree = parseFile(write("bad.gz", damaged));
        EXPECT_LE(childrenOf(tree.get()).size(), 60U) << at;
    }
}

TEST_F(NUXOParserGzipTest, GarbageBehindTheStreamIsIgnored)
{
    const Tree tree = parseFile(write("tail.gz", gzip(settings("<port/>")) + "garbage"));
    EXPECT_EQ(render(tree.get()), "(port() version='1')");
    EXPECT_EQ(lines(), Lines{});
}

} // namespace
