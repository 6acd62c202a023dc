// SPDX-License-Identifier: Apache-2.0
// Exhausted memory: every C++ allocation of a parse fails once, and from then on; and the counted one.
#include "ParserTest.h"

#include <support/AllocationFailures.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>

using namespace NUXO;

namespace {

// Texts too long for a string's own storage, new names, and children out of key order: everything that takes memory.
const char* const kLongVersion = "a version text that is kept on the heap";

std::string richDescriptor()
{
    return std::string("<graph_descriptor version='") + kLongVersion +
           "'><nodes><sink/><port/><sink/><port/>"
           "<program_group name='a_rather_long_name_of_a_program_group' colour='some unknown attribute, also long'>"
           "<a_rather_long_unknown_element_name width='7' attribute='width' type='a type text that is kept on the "
           "heap'/>"
           "</program_group><node name='a_second_long_name_for_a_node' type='hw'/></nodes><graphs/></graph_descriptor>";
}

std::string richSettings()
{
    return std::string("<graph_settings version='") + kLongVersion +
           "'><settings key='1' id='100'><a_rather_long_unknown_element_name name='a name text that is kept on the "
           "heap'/>"
           "<sink/><port/><sink/></settings><settings key='2'/></graph_settings>";
}

using Parse = std::function<void(NUXOParser&, IGraphConfig**)>;

class NUXOParserAllocationTest : public ParserTest {
protected:
    /// Runs the parse with its first C++ allocation failing (and, for good, all later ones), then with its second, and
    /// so on until none is left to fail.
    void sweep(bool forGood, const Parse& parse)
    {
        const std::string whole = wholeTree(parse);
        copyNuxoKeys(mNames);
        const size_t before = AllocationFailures::live();
        size_t n = 0;
        for (bool reached = true; reached;) {
            ++n;
            reached = runWithFailure(n, forGood, parse, whole);
            copyNuxoKeys(mNames);
            const size_t after = AllocationFailures::live();
            ASSERT_EQ(after, before) << "allocation " << n;
        }
        EXPECT_GT(n, 20U); // far more than one allocation for each of the 10 elements
    }

    bool mSawAttribute = false;
    bool mSawName = false;
    bool mSawVersion = false;

private:
    std::string wholeTree(const Parse& parse)
    {
        NUXOParser parser;
        IGraphConfig* root = nullptr;
        parse(parser, &root); // this and the next make the documents' names known, which stay allocated
        const std::string whole = render(Tree(root).get());
        EXPECT_EQ(lines(), Lines{});
        checkUsable(parser);
        return whole;
    }

    bool runWithFailure(size_t n, bool forGood, const Parse& parse, const std::string& whole)
    {
        NUXOParser parser;
        IGraphConfig* root = nullptr;
        AllocationFailures failures;
        if (forGood) failures.failFrom(n);
        else failures.failOnce(n);
        parse(parser, &root);
        const bool reached = failures.failures() > 0;
        failures.stop();
        checkResult(Tree(root), whole);
        checkUsable(parser);
        return reached;
    }

    void checkResult(const Tree& tree, const std::string& whole)
    {
        const Lines logged = lines();
        for (const Line& line : logged) note(line);
        if (tree == nullptr) {
            ASSERT_FALSE(logged.empty());
            EXPECT_EQ(logged.back(), kNothingParsed);
        } else if (logged.empty()) {
            EXPECT_EQ(render(tree.get()), whole) << "a part was lost without a message";
        } else {
            EXPECT_EQ(tree->getAncestor(), nullptr);
        }
    }

    void note(const Line& line)
    {
        if (line == error("Error while adding attribute")) mSawAttribute = true;
        else if (line == error("Error adding name attribute")) mSawName = true;
        else if (line == error("Error adding version attribute")) mSawVersion = true;
        else EXPECT_EQ(line, kNothingParsed) << "not a message for exhausted memory";
    }

    void checkUsable(NUXOParser& parser)
    {
        std::string text = settings("<port/>");
        IGraphConfig* root = nullptr;
        parser.parseNUXOXmlData(text.data(), text.size(), &root);
        EXPECT_EQ(render(Tree(root).get()), "(port() version='1')");
        EXPECT_EQ(lines(), Lines{});
    }

    std::map<std::string, uint32_t> mNames = mVocabulary.saved();
};

TEST_F(NUXOParserAllocationTest, APlainFileSurvivesEachFailure)
{
    const std::string file = write("rich.xml", richDescriptor());
    const Parse parse = [&](NUXOParser& parser, IGraphConfig** out) { parser.parseNUXOXmlFile(file.c_str(), out); };
    sweep(false, parse);
    sweep(true, parse);
    EXPECT_TRUE(mSawAttribute);
    EXPECT_TRUE(mSawName);
    EXPECT_TRUE(mSawVersion);
}

TEST_F(NUXOParserAllocationTest, ALongTokenIsReadAlsoWithoutMemoryToWaitForItsEnd)
{
    std::string text = richSettings();
    text.insert(text.find("<sink/>"), "<!--" + std::string(300000, 'x') + "-->");
    const std::string file = write("long.xml", text);
    const Parse parse = [&file](NUXOParser& parser, IGraphConfig** out) { parser.parseNUXOXmlFile(file.c_str(), out); };
    sweep(false, parse);
    sweep(true, parse);
}

TEST_F(NUXOParserAllocationTest, AGzipFileSurvivesEachFailure)
{
    const std::string file = write("rich.gz", gzip(richSettings()));
    const Parse parse = [&](NUXOParser& parser, IGraphConfig** out) { parser.parseNUXOXmlFile(file.c_str(), out); };
    sweep(false, parse);
    sweep(true, parse);
    EXPECT_TRUE(mSawAttribute);
    EXPECT_TRUE(mSawVersion);
}

TEST_F(NUXOParserAllocationTest, ATextInMemorySurvivesEachFailure)
{
    std::string text = richDescriptor();
    const Parse parse = [&](NUXOParser& parser, IGraphConfig** out) {
        parser.parseNUXOXmlData(text.data(), text.size(), out);
    };
    sweep(false, parse);
    sweep(true, parse);
}

TEST_F(NUXOParserAllocationTest, AMalformedTextSurvivesEachFailure)
{
    const std::string text = richSettings() + "</oops>";
    const std::string parseError = "@parseNUXOXmlData, line:239, XML_Parse error " + text;
    std::string copy = text;
    for (size_t n = 1, reached = 1; reached != 0; ++n) {
        IGraphConfig* root = nullptr;
        AllocationFailures failures;
        failures.failOnce(n);
        mParser.parseNUXOXmlData(copy.data(), copy.size(), &root);
        reached = failures.failures();
        failures.stop();
        const Tree tree(root);
        const Lines logged = lines();
        ASSERT_FALSE(logged.empty());
        EXPECT_EQ(logged.back(), tree == nullptr ? kNothingParsed : error(parseError)) << "allocation " << n;
    }
}

TEST_F(NUXOParserAllocationTest, DocumentsWhoseNamesCannotBeKeptAreReadAllTheSameOrNotAtAll)
{
    const std::string name = "a_document_name_that_is_kept_on_the_heap_";
    size_t failed = 1;
    for (size_t n = 1; failed != 0; ++n) {
        const std::string file = write(name + std::to_string(n) + ".xml", settings("<port/>")); // never seen before
        IGraphConfig* root = nullptr;
        AllocationFailures failures;
        failures.failOnce(n);
        mParser.parseNUXOXmlFile(file.c_str(), &root);
        failed = failures.failures();
        failures.stop();
        const Tree tree(root);
        const Lines logged = lines();
        if (tree == nullptr) EXPECT_EQ(logged.back(), kNothingParsed);
        else EXPECT_EQ(render(tree.get()), "(port() version='1')");
    }
}

TEST_F(NUXOParserAllocationTest, CallbacksByHandThrowNothingAndLeakNothing)
{
    const char* rootAttributes[] = {"version", kLongVersion, nullptr};
    const char* attributes[] = {"name", "a name that is kept on the heap, too", nullptr};
    const size_t before = AllocationFailures::live();
    for (size_t n = 1, reached = 1; reached != 0; ++n) {
        NUXOParser parser;
        AllocationFailures failures;
        failures.failOnce(n);
        NUXOParser::startElement(&parser, "graph_descriptor", rootAttributes);
        NUXOParser::startElement(&parser, "an_unknown_element_with_a_long_name", attributes);
        NUXOParser::startElement(&parser, "sink", attributes);
        NUXOParser::endElement(&parser, "sink");
        reached = failures.failures();
        failures.stop();
    }
    lines();
    copyNuxoKeys(const_cast<std::map<std::string, uint32_t>&>(mVocabulary.saved()));
    const size_t after = AllocationFailures::live();
    EXPECT_EQ(after, before);
}

TEST_F(NUXOParserAllocationTest, AnElementThatFailsTakesTheTreeWithItAndNothingBehindItIsRead)
{
    // The last failing allocations are those of the last elements: null all the same, no stump of a tree.
    const std::string text = settings("<settings><port name='a name text that is kept on the heap'/></settings>");
    std::string copy = text;
    size_t nulls = 0;
    for (size_t n = 1, reached = 1; reached != 0; ++n) {
        IGraphConfig* root = nullptr;
        AllocationFailures failures;
        failures.failOnce(n);
        mParser.parseNUXOXmlData(copy.data(), copy.size(), &root);
        reached = failures.failures();
        failures.stop();
        const Tree tree(root);
        if (tree == nullptr) ++nulls;
        else EXPECT_EQ(render(tree.get()), "(settings(port(name='a name text that is kept on the heap')) version='1')");
        lines();
    }
    EXPECT_GT(nulls, 2U);
}

TEST_F(NUXOParserAllocationTest, EachCountedAllocationThatFailsIsReported)
{
    const std::string file = write("rich.xml", richSettings());
    IGraphConfig* root = nullptr;
    AllocationFailures failures;
    failures.failCountedFrom(1);
    mParser.parseNUXOXmlFile(file.c_str(), &root);
    failures.stop();
    EXPECT_EQ(root, nullptr);
    EXPECT_EQ(lines(), Lines{error("@parseNUXOXmlFile, line:305, pBuf is NULL")});

    failures.failCountedFrom(2); // there is only one
    mParser.parseNUXOXmlFile(file.c_str(), &root);
    failures.stop();
    const Tree tree(root);
    EXPECT_NE(tree, nullptr);
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(NUXOParserAllocationTest, AParserReleasesWhatItStillHolds)
{
    const char* none[] = {nullptr};
    const size_t before = AllocationFailures::live();
    {
        NUXOParser parser;
        NUXOParser::startElement(&parser, "graph_settings", none);
        NUXOParser::startElement(&parser, "settings", none);
        NUXOParser::startElement(&parser, "port", none);
    }
    mLog.clear();
    const size_t after = AllocationFailures::live();
    EXPECT_EQ(after, before);
}

TEST_F(NUXOParserAllocationTest, RepeatedParsesLeaveTheHeapAsItWas)
{
    const std::string plain = write("rich.xml", richDescriptor());
    const std::string broken = write("broken.xml", richSettings() + "</oops>");
    const auto round = [&] {
        for (const std::string& file : {plain, broken}) {
            IGraphConfig* root = nullptr;
            mParser.parseNUXOXmlFile(file.c_str(), &root);
            const Tree tree(root);
        }
        mLog.clear();
    };
    round();
    const size_t before = AllocationFailures::live();
    for (int i = 0; i < 1000; ++i) round();
    const size_t after = AllocationFailures::live();
    EXPECT_EQ(after, before);
}

/// What a locator answers while each of its allocations fails in turn: the status, and the location untouched.
TEST_F(NUXOParserAllocationTest, ALocatorReportsExhaustedMemoryAndAnswersAfterwards)
{
    const std::string file = write("a_file_with_a_name_that_is_kept_on_the_heap.xml", settings("\n<port width='1'/>"));
    const Tree tree = parseFile(file);
    const IGraphConfig* const port = child(tree.get(), "port");
    size_t refused = 0;
    for (size_t n = 1, reached = 1; reached != 0; ++n) {
        SourceLocator locator;
        SourceLocation location;
        AllocationFailures failures;
        failures.failOnce(n);
        const int32_t status = locator.locate(port, NUXO_KEY_WIDTH, location);
        reached = failures.failures();
        failures.stop();
        if (status == StatusNoMemory) {
            ++refused;
            EXPECT_TRUE(location.file.empty());
            EXPECT_EQ(location.line, 0U);
            EXPECT_EQ(location.column, 0U);
        } else {
            EXPECT_EQ(status, StatusOk);
        }
        EXPECT_EQ(locator.locate(port, NUXO_KEY_WIDTH, location), StatusOk);
        EXPECT_EQ(location.line, 2U);
        EXPECT_EQ(location.column, 7U);
    }
    EXPECT_GT(refused, 0U);
}

TEST_F(NUXOParserAllocationTest, ALocatorWithoutMemoryForAGivenTextSaysSo)
{
    const std::string name = "a name of a text that is kept on the heap";
    const std::string given = "one line that is long enough to be kept on the heap\nand another one of the same kind";
    size_t refused = 0;
    for (size_t n = 1, reached = 1; reached != 0; ++n) {
        SourceLocator locator;
        std::string line;
        AllocationFailures failures;
        failures.failOnce(n);
        const int32_t added = locator.addText(name, given);
        const int32_t read = added == StatusOk ? locator.lineText(name, 2, line) : added;
        reached = failures.failures();
        failures.stop();
        if (read == StatusOk) {
            EXPECT_EQ(line, "and another one of the same kind");
        } else {
            ++refused;
            EXPECT_EQ(read, StatusNoMemory);
            EXPECT_TRUE(line.empty());
        }
    }
    EXPECT_GT(refused, 1U);
}

} // namespace
