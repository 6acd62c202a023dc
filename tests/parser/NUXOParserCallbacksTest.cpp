// SPDX-License-Identifier: Apache-2.0
// The callbacks called by hand, and files fed through a tokenizer of the caller's.
#include "ExpatCalls.h"
#include "ParserTest.h"

#include <qv_cipr/qv_cipr_alloc.h>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <expat.h>

using namespace NUXO;

namespace {

// The parser's state between callbacks is private; an explicit instantiation may name it nevertheless.
template <typename Tag, typename Tag::Type pointer> struct Exposed {
    friend typename Tag::Type pointerTo(Tag) { return pointer; }
};

struct RootKey {
    using Type = uint32_t NUXOParser::*;
    friend Type pointerTo(RootKey);
};

struct Version {
    using Type = std::string NUXOParser::*;
    friend Type pointerTo(Version);
};

struct CurrentNode {
    using Type = GraphConfigNode* NUXOParser::*;
    friend Type pointerTo(CurrentNode);
};

template struct Exposed<RootKey, &NUXOParser::mRootKey>;
template struct Exposed<Version, &NUXOParser::mVersion>;
template struct Exposed<CurrentNode, &NUXOParser::mCurrentNode>;

struct FreeParser {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using Tokenizer = std::unique_ptr<std::remove_pointer_t<XML_Parser>, FreeParser>;

struct Counts {
    int starts = 0;
    int ends = 0;
};

void countStart(void* counts, const char*, const char**)
{
    ++static_cast<Counts*>(counts)->starts;
}

void countEnd(void* counts, const char*)
{
    ++static_cast<Counts*>(counts)->ends;
}

class NUXOParserCallbacksTest : public ParserTest {
protected:
    void start(const char* name, std::initializer_list<const char*> attributes = {})
    {
        std::vector<const char*> list(attributes);
        list.push_back(nullptr);
        NUXOParser::startElement(&mParser, name, list.data());
    }
    void end(const char* name) { NUXOParser::endElement(&mParser, name); }
    /// Ends the open elements, after which all nodes are in order.
    void endAll()
    {
        while (current() != nullptr && current() != root()) end("any");
        end("any");
    }

    uint32_t rootKey() { return mParser.*pointerTo(RootKey()); }
    const std::string& version() { return mParser.*pointerTo(Version()); }
    GraphConfigNode* current() { return mParser.*pointerTo(CurrentNode()); }
    GraphConfigNode* root() { return current() == nullptr ? nullptr : current()->getRootNode(); }

    /// A tokenizer that calls the parser's callbacks.
    Tokenizer tokenizer()
    {
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetUserData(parser, &mParser);
        XML_SetElementHandler(parser, NUXOParser::startElement, NUXOParser::endElement);
        return Tokenizer(parser);
    }
    void feedPlain(const std::string& file)
    {
        const Tokenizer owner = tokenizer();
        XML_Parser parser = owner.get();
        mParser.parseXML(parser, file.c_str(), mBuffer.data());
    }
    void feedGzip(const std::string& file)
    {
        const Tokenizer owner = tokenizer();
        XML_Parser parser = owner.get();
        mParser.parseGz(parser, file.c_str(), mBuffer.data());
    }

    std::array<char, kChunk> mBuffer{};
};

TEST_F(NUXOParserCallbacksTest, ANewParserHasSeenNothing)
{
    EXPECT_EQ(rootKey(), 1U);
    EXPECT_EQ(version(), "");
    EXPECT_EQ(current(), nullptr);
}

TEST_F(NUXOParserCallbacksTest, TheRootElementSetsKeyAndVersionAndMakesNoNode)
{
    start("Graph_Settings", {"name", "x", "VERSION", "1.2 Beta", "unknown", "y"});
    EXPECT_EQ(rootKey(), 20U);
    EXPECT_EQ(version(), "1.2 Beta");
    EXPECT_EQ(current(), nullptr);
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserCallbacksTest, TheRootElementOfADescriptorSetsItsKey)
{
    start("graph_descriptor");
    EXPECT_EQ(rootKey(), 19U);
    EXPECT_EQ(version(), "");
    EXPECT_EQ(current(), nullptr);
}

TEST_F(NUXOParserCallbacksTest, TheFirstChildCreatesTheRootNodeAndBecomesCurrent)
{
    start("graph_settings", {"version", "1"});
    start("port", {"width", "3"});
    ASSERT_NE(current(), nullptr);
    EXPECT_EQ(current()->getUid(), static_cast<uint32_t>(NUXO_KEY_PORT));
    EXPECT_EQ(render(current()), "(width=3)");
    endAll();
    EXPECT_EQ(render(root()), "(port(width=3) version='1')");
}

TEST_F(NUXOParserCallbacksTest, TheMissingVersionIsWarnedAboutWhenTheFirstChildStarts)
{
    start("graph_settings");
    EXPECT_EQ(lines(), Lines{});
    start("port");
    EXPECT_EQ(lines(), Lines{kNoVersion});
    start("port");
    end("port");
    end("port");
    start("port");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserCallbacksTest, EndTagsGoUpAndStopAtTheRoot)
{
    start("graph_settings", {"version", "1"});
    start("settings");
    start("port");
    GraphConfigNode* const top = root();
    end("port");
    EXPECT_EQ(current()->getUid(), static_cast<uint32_t>(NUXO_KEY_SETTINGS));
    end("settings");
    EXPECT_EQ(current(), top);
    end("graph_settings");
    EXPECT_EQ(current(), top);
    end("graph_settings");
    EXPECT_EQ(current(), top);
}

TEST_F(NUXOParserCallbacksTest, AnEndTagWithoutCurrentNodeChangesNothing)
{
    end("graph_settings");
    start("graph_settings", {"version", "1"});
    end("graph_settings");
    EXPECT_EQ(current(), nullptr);
    EXPECT_EQ(rootKey(), 20U);
    EXPECT_EQ(version(), "1");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserCallbacksTest, AnElementWithoutAnythingBeforeItGetsARootWithoutVersion)
{
    start("port");
    endAll();
    EXPECT_EQ(render(root()), "(port())");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserCallbacksTest, AnAbandonedElementClearsTheCurrentNodeAndLaterCallsDoNothing)
{
    start("graph_descriptor", {"version", "1"});
    start("nodes");
    start("port", {"type", "own", "name", "out"});
    EXPECT_EQ(current(), nullptr);
    EXPECT_EQ(lines(), Lines{error("Error adding name attribute")});
    end("port");
    start("gadget");
    end("gadget");
    end("nodes");
    EXPECT_EQ(current(), nullptr);
    EXPECT_EQ(keyOf("gadget"), 0U);
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserCallbacksTest, AFileParseDiscardsWhatTheCallbacksLeft)
{
    start("graph_settings", {"version", "by hand"});
    start("settings");
    start("port");
    const Tree tree = parsePlain("<graph_settings><sink/></graph_settings>");
    EXPECT_EQ(render(tree.get()), "(sink() version='by hand')");
    EXPECT_EQ(current(), nullptr);
}

TEST_F(NUXOParserCallbacksTest, AMemoryParseDiscardsWhatTheCallbacksLeft)
{
    start("graph_settings", {"version", "1"});
    start("settings");
    const Tree tree = parseText(settings("<sink/>"));
    EXPECT_EQ(render(tree.get()), "(sink() version='1')");
    EXPECT_EQ(current(), nullptr);
}

TEST_F(NUXOParserCallbacksTest, AParseThatFailsToOpenItsFileDiscardsTheLeftoverToo)
{
    start("graph_settings", {"version", "1"});
    start("settings");
    EXPECT_EQ(parseFile(path("missing.xml")), nullptr);
    EXPECT_EQ(current(), nullptr);
}

TEST_F(NUXOParserCallbacksTest, ANullOutputKeepsTheLeftover)
{
    start("graph_settings", {"version", "1"});
    start("settings");
    GraphConfigNode* const before = current();
    mParser.parseNUXOXmlFile("graph.xml", nullptr);
    EXPECT_EQ(current(), before);
    endAll();
    EXPECT_EQ(render(root()), "(settings() version='1')");
}

TEST_F(NUXOParserCallbacksTest, CallbacksAfterAParseBeginANewDocument)
{
    const Tree tree = parseText(settings("<port/>"));
    start("graph_descriptor", {"version", "2"});
    start("port", {"name", "sink"});
    EXPECT_EQ(rootKey(), 19U);
    endAll();
    EXPECT_EQ(render(root()), "(sink(name='sink' type='port') version='2')");
    EXPECT_EQ(render(tree.get()), "(port() version='1')");
}

TEST_F(NUXOParserCallbacksTest, CallbacksAfterAnAbandonedParseBeginANewDocument)
{
    EXPECT_EQ(parseText(descriptor("<port type='own' name='out'/>")), nullptr);
    start("graph_settings", {"version", "2"});
    start("port");
    endAll();
    EXPECT_EQ(render(root()), "(port() version='2')");
}

TEST_F(NUXOParserCallbacksTest, TooManyLevelsByHandKeepTheLevelsAllowed)
{
    constexpr int kLevels = 3000;
    start("graph_settings", {"version", "1"});
    for (int i = 0; i < kLevels; ++i) start("port");
    ASSERT_NE(current(), nullptr);
    uint32_t levels = 0;
    for (const IGraphConfig* node = current(); node != nullptr; node = node->getAncestor()) ++levels;
    EXPECT_EQ(levels, NUXOParser::kMaxDepth); // the root node stands for the document element
    const Lines logged = lines();
    ASSERT_FALSE(logged.empty());
    for (const Line& line : logged) EXPECT_EQ(line.first, static_cast<int>(LogCapture::Error));
    for (int i = 0; i < kLevels; ++i) end("port");
    EXPECT_EQ(render(parseText(settings("<sink/>")).get()), "(sink() version='1')");
}

TEST_F(NUXOParserCallbacksTest, AParsedTreeIsNoLongerTheParsers)
{
    const Tree tree = parseText(settings("<port/>"));
    EXPECT_EQ(current(), nullptr);
    EXPECT_EQ(rootKey(), 20U);
    EXPECT_EQ(version(), "1");
}

TEST_F(NUXOParserCallbacksTest, AMalformedParseLeavesNothingInTheParser)
{
    const Tree tree = parseText("<graph_settings version='1'><settings><port></oops>");
    EXPECT_EQ(current(), nullptr);
    EXPECT_EQ(render(tree.get()), "(settings(port()) version='1')");
}

TEST_F(NUXOParserCallbacksTest, APlainFileFedThroughTheCallersTokenizerLeavesItsRootCurrent)
{
    feedPlain(write("graph.xml", settings("<settings><port/></settings>")));
    ASSERT_NE(current(), nullptr);
    EXPECT_EQ(current(), root());
    EXPECT_EQ(render(root()), "(settings(port()) version='1')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserCallbacksTest, AGzipFileFedThroughTheCallersTokenizerLeavesItsRootCurrent)
{
    feedGzip(write("graph.gz", gzip(settings("<settings><port/></settings>"))));
    ASSERT_NE(current(), nullptr);
    EXPECT_EQ(current(), root());
    EXPECT_EQ(render(root()), "(settings(port()) version='1')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserCallbacksTest, TheSuffixDoesNotMatterToTheFeedingFunctions)
{
    feedPlain(write("graph.text", settings("<port/>")));
    EXPECT_EQ(render(root()), "(port() version='1')");
    parseText("");
    feedGzip(write("graph.bin", gzip(settings("<sink/>"))));
    EXPECT_EQ(render(root()), "(sink() version='1')");
}

TEST_F(NUXOParserCallbacksTest, AFileFedByHandIsDiscardedByTheNextParse)
{
    feedPlain(write("graph.xml", settings("<port/>")));
    EXPECT_EQ(render(parseText(settings("<sink/>")).get()), "(sink() version='1')");
    EXPECT_EQ(current(), nullptr);
}

TEST_F(NUXOParserCallbacksTest, FeedingAMissingFileReportsItAndParsesNothing)
{
    ExpatCalls expat;
    feedPlain(path("missing.xml"));
    EXPECT_EQ(lines(), Lines{error("Failed to open XML " + path("missing.xml"))});
    feedGzip(path("missing.gz"));
    EXPECT_EQ(lines(), Lines{error("Failed to open GZ " + path("missing.gz"))});
    EXPECT_TRUE(expat.calls().empty());
    EXPECT_EQ(current(), nullptr);
}

TEST_F(NUXOParserCallbacksTest, FeedingAMalformedFileReportsItsLastChunk)
{
    const std::string text = "<graph_settings version='1'><settings><port></oops>";
    feedPlain(write("bad.xml", text));
    EXPECT_EQ(lines(), Lines{error("@parseXML, line:354, XML_Parse error " + text)});
    ASSERT_NE(current(), nullptr); // the innermost open element
    EXPECT_EQ(current()->getUid(), static_cast<uint32_t>(NUXO_KEY_PORT));
    parseText("");
    lines();
    feedGzip(write("bad.gz", gzip(text)));
    EXPECT_EQ(lines(), Lines{error("@parseGz, line:390, XML_Parse error " + text)});
    ASSERT_NE(current(), nullptr);
    EXPECT_EQ(current()->getUid(), static_cast<uint32_t>(NUXO_KEY_PORT));
}

TEST_F(NUXOParserCallbacksTest, AFileFedAfterAMalformedOneIsADocumentOfItsOwn)
{
    feedPlain(write("bad.xml", "<graph_descriptor version='1'><settings><port></oops>"));
    feedPlain(write("good.xml", "<graph_settings version='2'><sink/></graph_settings>"));
    EXPECT_EQ(rootKey(), 20U);
    EXPECT_EQ(version(), "2");
}

TEST_F(NUXOParserCallbacksTest, AFileFedAfterAnAbandonedOneIsRead)
{
    feedPlain(write("bad.xml", descriptor("<port type='own' name='out'/>")));
    lines();
    feedGzip(write("good.gz", gzip("<graph_settings version='2'><sink/></graph_settings>")));
    EXPECT_EQ(render(root()), "(sink() version='2')");
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserCallbacksTest, ItemsOfAFileFedThroughTheCallersTokenizerKeepTheirPositions)
{
    const std::string text = settings("\n<port/>");
    const std::string file = write("graph.xml", text);
    feedPlain(file);
    const SourcePosition position = getSourcePosition(child(root(), "port"));
    EXPECT_EQ(position.offset, text.find("<port"));
    EXPECT_EQ(getSourceDocument(position.document), file);
}

TEST_F(NUXOParserCallbacksTest, ItemsMadeByHandHaveNoPosition)
{
    start("graph_settings", {"version", "1"});
    start("port", {"width", "1"});
    endAll();
    EXPECT_FALSE(getSourcePosition(child(root(), "port")).known());
    EXPECT_FALSE(getSourcePosition(child(root(), "port"), NUXO_KEY_WIDTH).known());
}

TEST_F(NUXOParserCallbacksTest, FeedingATooDeepFileStops)
{
    const std::string text = settings(repeat("<port>", 2000) + repeat("</port>", 2000));
    feedPlain(write("deep.xml", text));
    EXPECT_EQ(lines().size(), 2U); // the reason, and the line of the failed call
    EXPECT_NE(root(), nullptr);
}

TEST_F(NUXOParserCallbacksTest, TheChunksAreReadIntoTheGivenBuffer)
{
    const std::string text = settings("<port/>");
    feedPlain(write("graph.xml", text));
    EXPECT_EQ(std::string(mBuffer.data(), text.size()), text);
    mBuffer.fill('\0');
    feedGzip(write("graph.gz", gzip(text)));
    EXPECT_EQ(std::string(mBuffer.data(), text.size()), text);
}

TEST_F(NUXOParserCallbacksTest, TheFeedingFunctionsTakeNoCountedMemory)
{
    const std::string plain = write("graph.xml", settings("<port/>"));
    g_alloc_error = g_alloc_counter;
    feedPlain(plain);
    g_alloc_error = UINT32_MAX;
    EXPECT_EQ(render(root()), "(port() version='1')");
}

TEST_F(NUXOParserCallbacksTest, TheFeedingFunctionsServeATokenizerWithOtherCallbacks)
{
    const std::string text = settingsOfSize(4 * kChunk);
    const int elements = static_cast<int>(childrenOf(parseText(text).get()).size()) + 1;
    for (const bool compressed : {false, true}) {
        Counts counts;
        const Tokenizer owner(XML_ParserCreate(nullptr));
        XML_Parser parser = owner.get();
        XML_SetUserData(parser, &counts);
        XML_SetElementHandler(parser, countStart, countEnd);
        const std::string file = write("graph", compressed ? gzip(text) : text);
        if (compressed) mParser.parseGz(parser, file.c_str(), mBuffer.data());
        else mParser.parseXML(parser, file.c_str(), mBuffer.data());
        EXPECT_EQ(counts.starts, elements);
        EXPECT_EQ(counts.ends, elements);
        EXPECT_EQ(current(), nullptr);
    }
    EXPECT_EQ(lines(), Lines{});
}

} // namespace
