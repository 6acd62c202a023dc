// SPDX-License-Identifier: Apache-2.0
// Reading plain files: suffixes, what cannot be read, and how the text is fed.
#include "ExpatCalls.h"
#include "ParserTest.h"

#include <qv_cipr/qv_cipr_alloc.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <unistd.h>

using namespace NUXO;

namespace {

class NUXOParserFilesTest : public ParserTest {
protected:
    /// An address that no parse hands out, to see whether the result is written.
    IGraphConfig* const kUnwritten = reinterpret_cast<IGraphConfig*>(this);
};

std::string unsupported(const std::string& suffix)
{
    return "file type (" + suffix + ") not suppoted.";
}

std::string parseError(const std::string& text)
{
    return "@parseXML, line:354, XML_Parse error " + text;
}

TEST_F(NUXOParserFilesTest, ReadsAPlainFile)
{
    const Tree tree = parseFile(write("graph.xml", settings("<port/>")));
    EXPECT_EQ(render(tree.get()), "(port() version='1')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserFilesTest, ANullOutputIsReportedAndNothingElseHappens)
{
    const std::string file = write("graph.xml", settings("<gadget/>"));
    const uint32_t allocations = g_alloc_counter;
    mParser.parseNUXOXmlFile(file.c_str(), nullptr);
    EXPECT_EQ(lines(), Lines{error("NULL pointer given!")});
    EXPECT_EQ(g_alloc_counter, allocations);
    EXPECT_EQ(keyOf("gadget"), 0U);
}

TEST_F(NUXOParserFilesTest, ANullFileNameIsReportedAndGivesNull)
{
    IGraphConfig* root = kUnwritten;
    mParser.parseNUXOXmlFile(nullptr, &root);
    EXPECT_EQ(root, nullptr);
    EXPECT_EQ(lines(), Lines{error("NULL pointer given!")});
}

TEST_F(NUXOParserFilesTest, AMissingFileGivesNull)
{
    const std::string file = path("missing.xml");
    IGraphConfig* root = kUnwritten;
    mParser.parseNUXOXmlFile(file.c_str(), &root);
    EXPECT_EQ(root, nullptr);
    EXPECT_EQ(lines(), (Lines{error("Failed to open XML " + file), kNothingParsed}));
}

TEST_F(NUXOParserFilesTest, ADanglingLinkGivesNull)
{
    const std::string file = path("link.xml");
    std::filesystem::create_symlink("nowhere", file);
    EXPECT_EQ(parseFile(file), nullptr);
    EXPECT_EQ(lines(), (Lines{error("Failed to open XML " + file), kNothingParsed}));
}

TEST_F(NUXOParserFilesTest, AFileWithoutPermissionGivesNull)
{
    if (geteuid() == 0) GTEST_SKIP() << "nothing is unreadable for root";
    const std::string file = write("closed.xml", settings("<port/>"));
    std::filesystem::permissions(file, std::filesystem::perms::none);
    EXPECT_EQ(parseFile(file), nullptr);
    EXPECT_EQ(lines(), (Lines{error("Failed to open XML " + file), kNothingParsed}));
}

TEST_F(NUXOParserFilesTest, ADirectoryGivesNullWithoutAnythingBeingParsed)
{
    const std::string file = path("directory.xml");
    std::filesystem::create_directory(file);
    ExpatCalls expat;
    EXPECT_EQ(parseFile(file), nullptr);
    EXPECT_TRUE(expat.calls().empty()); // it opens, but reading fails
    EXPECT_EQ(lines(), Lines{kNothingParsed});
}

TEST_F(NUXOParserFilesTest, AFileNameWithFormatDirectivesIsPrintedAsItStands)
{
    const std::string file = path("%s%n%d.xml");
    EXPECT_EQ(parseFile(file), nullptr);
    EXPECT_EQ(lines(), (Lines{error("Failed to open XML " + file), kNothingParsed}));
}

TEST_F(NUXOParserFilesTest, OtherSuffixesAreRefusedWhateverTheFileHolds)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"graph.XML", "XML"},       {"graph.Xml", "Xml"},   {"graph.GZ", "GZ"}, {"graph.txt", "txt"},
        {"graph.xml.bak", "bak"},   {"graph.xml ", "xml "}, {"graph.xm", "xm"}, {"graph.xmlx", "xmlx"},
        {"graph.gzip", "gzip"},     {"graph.", ""},         {"graph.xml.", ""}, {"%s.%d", "%d"},
        {"graph.xml.gz.old", "old"}};
    for (const auto& [name, suffix] : cases) {
        ExpatCalls expat;
        EXPECT_EQ(parseFile(write(name, settings("<port/>"))), nullptr) << name;
        EXPECT_TRUE(expat.calls().empty()) << name;
        EXPECT_EQ(lines(), (Lines{error(unsupported(suffix)), kNothingParsed})) << name;
    }
}

TEST_F(NUXOParserFilesTest, ANameWithoutDotIsItsOwnSuffix)
{
    EXPECT_EQ(parseFile("graph"), nullptr);
    EXPECT_EQ(lines(), (Lines{error(unsupported("graph")), kNothingParsed}));
    EXPECT_EQ(parseFile(""), nullptr);
    EXPECT_EQ(lines(), (Lines{error(unsupported("")), kNothingParsed}));
}

TEST_F(NUXOParserFilesTest, TheSuffixIsTakenFromTheWholePath)
{
    std::filesystem::create_directory(path("dir.d"));
    EXPECT_EQ(parseFile(write("dir.d/graph", settings("<port/>"))), nullptr);
    EXPECT_EQ(lines(), (Lines{error(unsupported("d/graph")), kNothingParsed}));
}

TEST_F(NUXOParserFilesTest, AFileCalledXmlOrGzIsRead)
{
    const std::filesystem::path before = std::filesystem::current_path();
    write("xml", settings("<port/>"));
    write("gz", gzip(settings("<sink/>")));
    std::filesystem::current_path(path(""));
    const Tree plain = parseFile("xml");
    const Tree compressed = parseFile("gz");
    std::filesystem::current_path(before);
    EXPECT_EQ(render(plain.get()), "(port() version='1')");
    EXPECT_EQ(render(compressed.get()), "(sink() version='1')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserFilesTest, ARefusedSuffixStillTakesAndReleasesTheChunkBuffer)
{
    const uint32_t allocations = g_alloc_counter;
    const uint32_t releases = g_free_counter;
    EXPECT_EQ(parseFile("graph.txt"), nullptr);
    EXPECT_EQ(g_alloc_counter, allocations + 1);
    EXPECT_EQ(g_free_counter, releases + 1);
}

TEST_F(NUXOParserFilesTest, TheChunkBufferIsTakenAndReleasedInTheNameOfTheFunction)
{
    const std::string file = write("graph.xml", settings("<port/>"));
    constexpr uint32_t kAllocations = 4;
    const std::vector<LogLine> traces = mLog.linesOfLevel(kAllocations, [&] { parseFile(file); });
    ASSERT_EQ(traces.size(), 2U);
    EXPECT_EQ(traces[0].tag, "CIPR_ALLOC[XOS]");
    const std::string allocation = "E:qv_cipr_malloc size 4096 from parseNUXOXmlFile res ptr: ";
    ASSERT_EQ(traces[0].message.compare(0, allocation.size(), allocation), 0) << traces[0].message;
    const std::string address = traces[0].message.substr(allocation.size());
    EXPECT_EQ(traces[1].message, "E:qv_cipr_free ptr " + address + " from parseNUXOXmlFile");
}

TEST_F(NUXOParserFilesTest, WithoutChunkBufferTheOutputStaysUnwritten)
{
    const std::string file = write("graph.xml", settings("<port/>"));
    IGraphConfig* root = kUnwritten;
    g_alloc_error = g_alloc_counter; // the next counted allocation fails
    mParser.parseNUXOXmlFile(file.c_str(), &root);
    g_alloc_error = UINT32_MAX;
    EXPECT_EQ(root, kUnwritten);
    EXPECT_EQ(lines(), Lines{error("@parseNUXOXmlFile, line:305, pBuf is NULL")});
    EXPECT_EQ(render(parseFile(file).get()), "(port() version='1')");
}

TEST_F(NUXOParserFilesTest, TheChunkBufferIsTakenBeforeTheSuffixIsLookedAt)
{
    IGraphConfig* root = kUnwritten;
    g_alloc_error = g_alloc_counter;
    mParser.parseNUXOXmlFile("graph.txt", &root);
    g_alloc_error = UINT32_MAX;
    EXPECT_EQ(root, kUnwritten);
    EXPECT_EQ(lines(), Lines{error("@parseNUXOXmlFile, line:305, pBuf is NULL")});
}

TEST_F(NUXOParserFilesTest, WithoutTokenizerTheOutputStaysUnwritten)
{
    const std::string file = write("graph.xml", settings("<port/>"));
    const uint32_t allocations = g_alloc_counter;
    IGraphConfig* root = kUnwritten;
    {
        ExpatCalls expat;
        expat.failCreation();
        mParser.parseNUXOXmlFile(file.c_str(), &root);
    }
    EXPECT_EQ(root, kUnwritten);
    EXPECT_EQ(lines(), Lines{error("@parseNUXOXmlFile, line:296, parser is NULL")});
    EXPECT_EQ(g_alloc_counter, allocations); // the buffer comes after the tokenizer
    EXPECT_EQ(render(parseFile(file).get()), "(port() version='1')");
}

TEST_F(NUXOParserFilesTest, AnEmptyFileGivesNull)
{
    ExpatCalls expat;
    EXPECT_EQ(parseFile(write("empty.xml", "")), nullptr);
    EXPECT_EQ(expat.calls(), (std::vector<ExpatCall>{{0, true}}));
    EXPECT_EQ(lines(), (Lines{error(parseError("")), kNothingParsed}));
}

TEST_F(NUXOParserFilesTest, ADocumentWithoutElementsBelowItsRootGivesNull)
{
    EXPECT_EQ(parseFile(write("bare.xml", settings("text"))), nullptr);
    EXPECT_EQ(lines(), Lines{kNothingParsed});
}

TEST_F(NUXOParserFilesTest, FilesAreFedInChunksOf4096BytesWithTheShortOneFinal)
{
    ExpatCalls expat;
    const Tree tree = parseFile(write("graph.xml", settingsOfSize(2 * kChunk + 1000)));
    EXPECT_EQ(expat.calls(), (std::vector<ExpatCall>{{4096, false}, {4096, false}, {1000, true}}));
    EXPECT_NE(tree, nullptr);
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserFilesTest, AFileOfWholeChunksGetsAnEmptyFinalChunk)
{
    ExpatCalls expat;
    const Tree tree = parseFile(write("graph.xml", settingsOfSize(3 * kChunk)));
    EXPECT_EQ(expat.calls(), (std::vector<ExpatCall>{{4096, false}, {4096, false}, {4096, false}, {0, true}}));
    EXPECT_NE(tree, nullptr);
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserFilesTest, NoElementIsLostAroundChunkBorders)
{
    const std::string element = "<port width='1920'/>";
    for (size_t size = 2 * kChunk - 30; size <= 2 * kChunk + 30; ++size) {
        const std::string text = settingsOfSize(size);
        ASSERT_EQ(text.size(), size);
        size_t expected = 0;
        for (size_t at = text.find(element); at != std::string::npos; at = text.find(element, at + 1)) ++expected;
        EXPECT_EQ(childrenOf(parsePlain(text).get()).size(), expected) << size;
    }
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserFilesTest, AMalformedFileStopsWithItsChunkAndHandsOutWhatWasBuilt)
{
    const std::string text = "<graph_settings version='1'><port width='1'/><settings><sink></oops>";
    const Tree tree = parseFile(write("broken.xml", text));
    EXPECT_EQ(render(tree.get()), "(port(width=1) settings(sink()) version='1')");
    EXPECT_EQ(lines(), Lines{error(parseError(text))});
}

TEST_F(NUXOParserFilesTest, TheErrorLineHoldsTheLastChunkOnlyAndNoMore)
{
    const std::string text = settingsOfSize(kChunk) + "<garbage/>";
    const Tree tree = parseFile(write("broken.xml", text));
    EXPECT_NE(tree, nullptr);
    EXPECT_EQ(lines(), Lines{error(parseError("<garbage/>"))});
}

TEST_F(NUXOParserFilesTest, TheErrorLineOfAFullChunkHoldsAll4096Bytes)
{
    const std::string chunk = "<graph_settings version='1'><port/><<" + std::string(kChunk - 37, 'x');
    ASSERT_EQ(chunk.size(), kChunk);
    const Tree tree = parseFile(write("broken.xml", chunk + "never read"));
    EXPECT_EQ(render(tree.get()), "(port() version='1')");
    EXPECT_EQ(lines(), Lines{error(parseError(chunk))});
}

TEST_F(NUXOParserFilesTest, ReadingStopsAtTheFirstError)
{
    ExpatCalls expat;
    parseFile(write("broken.xml", "<graph_settings><<" + std::string(10 * kChunk, ' ')));
    EXPECT_EQ(expat.calls(), (std::vector<ExpatCall>{{4096, false}}));
}

TEST_F(NUXOParserFilesTest, ATruncatedFileHandsOutWhatWasBuilt)
{
    const std::string text = "<graph_settings version='1'><settings><port/><sink";
    const Tree tree = parseFile(write("cut.xml", text));
    EXPECT_EQ(render(tree.get()), "(settings(port()) version='1')");
    EXPECT_EQ(lines(), Lines{error(parseError(text))});
}

TEST_F(NUXOParserFilesTest, AFileCutAtAChunkBorderFailsAtItsEmptyFinalChunk)
{
    const std::string text = settingsOfSize(3 * kChunk).substr(0, 2 * kChunk);
    const Tree tree = parseFile(write("cut.xml", text));
    ASSERT_NE(tree, nullptr);
    EXPECT_FALSE(childrenOf(tree.get()).empty());
    EXPECT_EQ(lines(), Lines{error(parseError(""))});
}

TEST_F(NUXOParserFilesTest, EveryPrefixOfAFileGivesAPrefixOfItsTree)
{
    const std::string text = settings("<settings key='1'><port name='out'/></settings><sink id='2'>x</sink>");
    const std::string whole = "(settings(port(name='out') key=1) sink(id=2) version='1')";
    const std::vector<std::string> stages = {"null", "(settings(key=1) version='1')",
                                             "(settings(port(name='out') key=1) version='1')", whole};
    size_t stage = 0;
    for (size_t size = 0; size < text.size(); ++size) {
        const std::string tree = render(parsePlain(text.substr(0, size)).get());
        while (stage < stages.size() && tree != stages[stage]) ++stage;
        ASSERT_LT(stage, stages.size()) << size << ": " << tree;
    }
    EXPECT_EQ(render(parsePlain(text).get()), whole);
}

} // namespace
