// SPDX-License-Identifier: Apache-2.0
// File, line and column of elements and attributes.
#include "ParserTest.h"

#include <filesystem>
#include <ostream>
#include <string>

namespace NUXO {

bool operator==(const SourceLocation& a, const SourceLocation& b)
{
    return a.file == b.file && a.line == b.line && a.column == b.column;
}

std::ostream& operator<<(std::ostream& stream, const SourceLocation& location)
{
    return stream << location.file << ':' << location.line << ':' << location.column;
}

} // namespace NUXO

using namespace NUXO;

namespace {

class SourceLocatorTest : public ParserTest {
protected:
    /// Parses the text from memory and tells the locator about it.
    void use(const std::string& text)
    {
        mTree = parseText(text);
        EXPECT_EQ(mLocator.addText("<memory>", text), StatusOk);
    }
    const IGraphConfig* port() const { return child(mTree.get(), "port"); }

    /// "line:column", or the status when there is none.
    std::string at(const IGraphConfig* node)
    {
        SourceLocation location;
        return describe(mLocator.locate(node, location), location);
    }
    std::string at(const IGraphConfig* node, uint32_t key)
    {
        SourceLocation location;
        return describe(mLocator.locate(node, key, location), location);
    }

    SourceLocator mLocator;
    Tree mTree;
    const SourceLocation kBefore{"untouched", 7, 8};

private:
    static std::string describe(int32_t status, const SourceLocation& location)
    {
        if (status != StatusOk) return statusName(status);
        return std::to_string(location.line) + ":" + std::to_string(location.column);
    }
};

TEST_F(SourceLocatorTest, LinesAndColumnsOfElementsCountFromOne)
{
    use("<graph_settings version='1'><port/>\n<sink/>\n\n  <apply/></graph_settings>");
    EXPECT_EQ(at(port()), "1:29"); // behind 28 characters
    EXPECT_EQ(at(child(mTree.get(), "sink")), "2:1");
    EXPECT_EQ(at(child(mTree.get(), "apply")), "4:3");
}

TEST_F(SourceLocatorTest, TheVeryFirstCharacterIsLineOneColumnOne)
{
    use("<port><sink/></port>");
    EXPECT_EQ(at(port()), "1:1");
}

TEST_F(SourceLocatorTest, AFileIsNamedAndReadAgain)
{
    const std::string file = write("graph.xml", settings("\n<port\n  width='1'/>"));
    const Tree tree = parseFile(file);
    SourceLocation location;
    EXPECT_EQ(mLocator.locate(child(tree.get(), "port"), location), StatusOk);
    EXPECT_EQ(location, (SourceLocation{file, 2, 1}));
    EXPECT_EQ(mLocator.locate(child(tree.get(), "port"), NUXO_KEY_WIDTH, location), StatusOk);
    EXPECT_EQ(location, (SourceLocation{file, 3, 3}));
}

TEST_F(SourceLocatorTest, AGzipFileIsLocatedInItsDecompressedText)
{
    const std::string file =
        write("graph.xml.gz", gzip(settings(std::string(10000, ' ') + "\n\n <port\n  width='1'/>")));
    const Tree tree = parseFile(file);
    SourceLocation location;
    EXPECT_EQ(mLocator.locate(child(tree.get(), "port"), location), StatusOk);
    EXPECT_EQ(location, (SourceLocation{file, 3, 2}));
    EXPECT_EQ(mLocator.locate(child(tree.get(), "port"), NUXO_KEY_WIDTH, location), StatusOk);
    EXPECT_EQ(location, (SourceLocation{file, 4, 3}));
}

TEST_F(SourceLocatorTest, APlainTextUnderAGzipNameIsLocated)
{
    const Tree tree = parseFile(write("graph.gz", settings("\n<port/>")));
    EXPECT_EQ(at(child(tree.get(), "port")), "2:1");
}

TEST_F(SourceLocatorTest, ATextInMemoryIsNamedMemory)
{
    use(settings("<port/>"));
    SourceLocation location;
    EXPECT_EQ(mLocator.locate(port(), location), StatusOk);
    EXPECT_EQ(location.file, "<memory>");
}

TEST_F(SourceLocatorTest, ATextInMemoryThatNobodyGaveCannotBeRead)
{
    const Tree tree = parseText(settings("<port/>"));
    SourceLocation location = kBefore;
    EXPECT_EQ(mLocator.locate(child(tree.get(), "port"), location), StatusMissingObject);
    EXPECT_EQ(location, kBefore);
}

TEST_F(SourceLocatorTest, TheTextGivenLastCounts)
{
    use(settings("\n<port/>"));
    EXPECT_EQ(at(port()), "2:1");
    use(settings("\n\n<port/>"));
    EXPECT_EQ(at(port()), "3:1");
}

TEST_F(SourceLocatorTest, AttributesStandAtTheirNames)
{
    use(settings("<port width='1' name=\"out\"\n      format='x'\theight = '2'/>"));
    EXPECT_EQ(at(port(), NUXO_KEY_WIDTH), "1:35"); // 28 characters of the root tag, then "<port "
    EXPECT_EQ(at(port(), NUXO_KEY_NAME), "1:45");
    EXPECT_EQ(at(port(), NUXO_KEY_FORMAT), "2:7");
    EXPECT_EQ(at(port(), NUXO_KEY_HEIGHT), "2:18"); // the tab is one column
}

TEST_F(SourceLocatorTest, AttributesAcrossLinesOfAllKindsStandAtTheirNames)
{
    use(settings("\n<port\n\n\twidth\n=\n'1'\r\n   height\n\n= '2'\n/>"));
    EXPECT_EQ(at(port()), "2:1");
    EXPECT_EQ(at(port(), NUXO_KEY_WIDTH), "4:2");
    EXPECT_EQ(at(port(), NUXO_KEY_HEIGHT), "7:4");
}

TEST_F(SourceLocatorTest, AttributeNamesMatchWithoutRegardToCase)
{
    use(settings("\n<PORT Name='x' WIDTH='1'/>"));
    EXPECT_EQ(at(port(), NUXO_KEY_WIDTH), "2:16");
    EXPECT_EQ(at(port(), NUXO_KEY_NAME), "2:7");
}

TEST_F(SourceLocatorTest, OfNamesThatDifferInCaseTheFirstCounts)
{
    use(settings("\n<port Width='1' WIDTH='2'/>"));
    EXPECT_EQ(at(port(), NUXO_KEY_WIDTH), "2:7");
}

TEST_F(SourceLocatorTest, WhatLooksLikeAnAttributeInsideAValueDoesNotCount)
{
    use(settings(
        "\n<port name=' width=\"5\" ' format=\" height='6' > \" description='/> width=' width='1' height='2'/>"));
    const std::string line =
        "<port name=' width=\"5\" ' format=\" height='6' > \" description='/> width=' width='1' height='2'/>";
    EXPECT_EQ(at(port(), NUXO_KEY_WIDTH), "2:" + std::to_string(line.find("width='1'") + 1));
    EXPECT_EQ(at(port(), NUXO_KEY_HEIGHT), "2:" + std::to_string(line.find("height='2'") + 1));
    EXPECT_EQ(at(port(), NUXO_KEY_FORMAT), "2:" + std::to_string(line.find("format=") + 1));
}

TEST_F(SourceLocatorTest, LongerAndShorterNamesDoNotCount)
{
    const std::string line = "<port xwidth='1' width2='2' wid='3' x:width='4' width='5'/>";
    use(settings("\n" + line));
    EXPECT_EQ(at(port(), NUXO_KEY_WIDTH), "2:" + std::to_string(line.find("width='5'") + 1));
}

TEST_F(SourceLocatorTest, EntitiesInValuesDoNotDisturb)
{
    const std::string line = "<port name='&lt;&quot;&apos;&gt;&amp;&#39;' width='1'/>";
    use(settings("\n" + line));
    EXPECT_EQ(at(port(), NUXO_KEY_WIDTH), "2:" + std::to_string(line.find("width") + 1));
}

TEST_F(SourceLocatorTest, AnElementNamedLikeItsAttributeDoesNotDisturb)
{
    const std::string line = "<width width='1'/>";
    use(settings("\n" + line));
    EXPECT_EQ(at(child(mTree.get(), "width"), NUXO_KEY_WIDTH), "2:8");
}

TEST_F(SourceLocatorTest, AttributesOfChildrenAndNeighboursDoNotCount)
{
    use("<!DOCTYPE graph_settings [<!ATTLIST port width CDATA '1'>]>" +
        settings("\n<sink width='0'/><port><sink width='2'/></port><sink width='3'/>"));
    EXPECT_EQ(at(port(), NUXO_KEY_WIDTH), at(port())); // the default of the document type stands nowhere in the element
    EXPECT_EQ(at(port()), "2:18");
}

TEST_F(SourceLocatorTest, AGeneratedTypeStandsAtTheElement)
{
    use(descriptor("\n <port name='sink' width='1'/>"));
    const IGraphConfig* const node = child(mTree.get(), "sink");
    EXPECT_EQ(at(node, NUXO_KEY_TYPE), "2:2");
    EXPECT_EQ(at(node, NUXO_KEY_NAME), "2:8");
    EXPECT_EQ(at(node), "2:2");
}

TEST_F(SourceLocatorTest, AnOwnTypeStandsAtItself)
{
    use(descriptor("\n <node name='sink' type='hw'/>"));
    EXPECT_EQ(at(child(mTree.get(), "sink"), NUXO_KEY_TYPE), "2:20");
}

TEST_F(SourceLocatorTest, AskedByItsKeyAChildStandsAtItsElement)
{
    use(settings("\n<sink width='0'/> <port width='1'/><port width='2'/>"));
    EXPECT_EQ(at(mTree.get(), NUXO_KEY_PORT), "2:19");
}

TEST_F(SourceLocatorTest, AnUnknownAttributeStandsInItsElement)
{
    use(settings("\n<port\n/>\n<sink colour='red'/>"));
    EXPECT_EQ(at(child(mTree.get(), "sink"), NUXO_KEY_NA).substr(0, 2), "4:");
}

TEST_F(SourceLocatorTest, TheVersionStandsAtItsNameInTheRootElement)
{
    use("<?xml version='1.0'?>\n<graph_settings\n  VERSION='1'><port/></graph_settings>");
    EXPECT_EQ(at(mTree.get(), NUXO_KEY_VERSION), "3:3");
}

TEST_F(SourceLocatorTest, ColumnsCountBytes)
{
    use(settings("\n<!--\xE2\x82\xAC--><port name='\xC3\xBC' width='1'/>"));
    EXPECT_EQ(at(port()), "2:11");                 // the comment has 7 characters of its own and one of 3 bytes
    EXPECT_EQ(at(port(), NUXO_KEY_WIDTH), "2:27"); // "<port name='", two bytes, "' "
}

TEST_F(SourceLocatorTest, ValuesWrittenLaterStandWhereTheElementStands)
{
    use(settings("\n<port width='1'/>"));
    auto& node = dynamic_cast<GraphConfigNode&>(*mTree->getDescendant(NUXO_KEY_PORT));
    ASSERT_EQ(node.setValueFromStr(ItemUID{NUXO_KEY_WIDTH}, "2"), StatusOk);
    EXPECT_EQ(at(&node, NUXO_KEY_WIDTH), "2:7");
}

TEST_F(SourceLocatorTest, CopiesAreLocatedLikeTheirOriginals)
{
    use(settings("\n<port width='1'/>"));
    const Tree copy(dynamic_cast<GraphConfigNode&>(*mTree).copy());
    EXPECT_EQ(at(child(copy.get(), "port")), "2:1");
    EXPECT_EQ(at(child(copy.get(), "port"), NUXO_KEY_WIDTH), "2:7");
}

TEST_F(SourceLocatorTest, RootsAndItemsMadeByHandHaveNoValue)
{
    use(settings("<port/>"));
    GraphConfigNode byHand;
    ASSERT_EQ(byHand.addValue(NUXO_KEY_WIDTH, 1), StatusOk);
    SourceLocation location = kBefore;
    EXPECT_EQ(mLocator.locate(mTree.get(), location), StatusNoValue);
    EXPECT_EQ(mLocator.locate(&byHand, location), StatusNoValue);
    EXPECT_EQ(mLocator.locate(&byHand, NUXO_KEY_WIDTH, location), StatusNoValue);
    EXPECT_EQ(mLocator.locate(port(), NUXO_KEY_WIDTH, location), StatusNoValue);
    EXPECT_EQ(location, kBefore);
}

TEST_F(SourceLocatorTest, ANullNodeIsABadArgument)
{
    SourceLocation location = kBefore;
    EXPECT_EQ(mLocator.locate(nullptr, location), StatusBadArgument);
    EXPECT_EQ(mLocator.locate(nullptr, NUXO_KEY_WIDTH, location), StatusBadArgument);
    EXPECT_EQ(location, kBefore);
}

TEST_F(SourceLocatorTest, AFileThatIsGoneCannotBeRead)
{
    for (const bool compressed : {false, true}) {
        const std::string text = settings("<port width='1'/>");
        const std::string file = write(compressed ? "gone.gz" : "gone.xml", compressed ? gzip(text) : text);
        const Tree tree = parseFile(file);
        std::filesystem::remove(file);
        SourceLocation location = kBefore;
        EXPECT_EQ(mLocator.locate(child(tree.get(), "port"), location), StatusMissingObject);
        EXPECT_EQ(mLocator.locate(child(tree.get(), "port"), NUXO_KEY_WIDTH, location), StatusMissingObject);
        EXPECT_EQ(location, kBefore);
    }
}

TEST_F(SourceLocatorTest, AFileReplacedByADirectoryCannotBeRead)
{
    for (const char* const name : {"graph.xml", "graph.gz"}) {
        const std::string file = write(name, settings("<port/>"));
        const Tree tree = parseFile(file);
        std::filesystem::remove(file);
        std::filesystem::create_directory(file);
        EXPECT_EQ(at(child(tree.get(), "port")), "StatusMissingObject");
    }
}

TEST_F(SourceLocatorTest, AFileThatIsShorterNowCannotAnswer)
{
    const std::string file = write("graph.xml", settings(std::string(100, '\n') + "<port width='1'/>"));
    const Tree tree = parseFile(file);
    for (const char* const shorter : {"", "<graph_settings", "<graph_settings version='1'>\n"}) {
        write("graph.xml", shorter);
        SourceLocator fresh;
        SourceLocation location = kBefore;
        EXPECT_EQ(fresh.locate(child(tree.get(), "port"), location), StatusMissingObject);
        EXPECT_EQ(fresh.locate(child(tree.get(), "port"), NUXO_KEY_WIDTH, location), StatusMissingObject);
        EXPECT_EQ(location, kBefore);
    }
}

TEST_F(SourceLocatorTest, AFileCutInsideTheElementFallsBackToTheElement)
{
    const std::string text = settings("\n<port name='x' width='1'/>");
    const std::string file = write("graph.xml", text);
    const Tree tree = parseFile(file);
    write("graph.xml", text.substr(0, text.find("x' width")));
    EXPECT_EQ(at(child(tree.get(), "port"), NUXO_KEY_WIDTH), "2:1");
}

TEST_F(SourceLocatorTest, AGzipFileThatIsDamagedNowDoesNotCrash)
{
    const std::string bytes = gzip(settings(std::string(100, '\n') + "<port width='1'/>"));
    const std::string file = write("graph.gz", bytes);
    const Tree tree = parseFile(file);
    write("graph.gz", bytes.substr(0, 12));
    EXPECT_EQ(at(child(tree.get(), "port")), "StatusMissingObject");
}

TEST_F(SourceLocatorTest, AnyOtherTextUnderTheSameNameDoesNotCrash)
{
    const std::string file = write("graph.xml", settings("\n<port name='x' width='1'/>"));
    const Tree tree = parseFile(file);
    for (const std::string& other :
         {std::string(5000, '<'), std::string(5000, '\''), std::string(5000, '='), std::string(5000, '\0'),
          std::string(5000, '\n'), std::string(5000, ' ') + "width", repeat("a='", 2000), repeat("width ", 1000),
          repeat("<port width", 500), std::string(29, ' ') + "<port width", std::string(29, ' ') + "<port width ='"}) {
        write("graph.xml", other);
        SourceLocator fresh;
        SourceLocation location;
        EXPECT_EQ(fresh.locate(child(tree.get(), "port"), NUXO_KEY_WIDTH, location), StatusOk);
        EXPECT_GE(location.line, 1U);
        EXPECT_GE(location.column, 1U);
    }
}

TEST_F(SourceLocatorTest, TextsOnceReadAreKept)
{
    const std::string file = write("graph.xml", settings("\n<port/>\n<sink/>"));
    const Tree tree = parseFile(file);
    EXPECT_EQ(at(child(tree.get(), "port")), "2:1");
    std::filesystem::remove(file);
    EXPECT_EQ(at(child(tree.get(), "sink")), "3:1");
}

TEST_F(SourceLocatorTest, LineTextGivesALineWithoutItsEnd)
{
    const std::string file = write("lines.xml", "first\nsecond\r\n\nfourth");
    std::string text;
    EXPECT_EQ(mLocator.lineText(file, 1, text), StatusOk);
    EXPECT_EQ(text, "first");
    EXPECT_EQ(mLocator.lineText(file, 2, text), StatusOk);
    EXPECT_EQ(text, "second");
    EXPECT_EQ(mLocator.lineText(file, 3, text), StatusOk);
    EXPECT_EQ(text, "");
    EXPECT_EQ(mLocator.lineText(file, 4, text), StatusOk);
    EXPECT_EQ(text, "fourth");
}

TEST_F(SourceLocatorTest, LineTextOfLinesAndFilesThatAreNotThere)
{
    const std::string file = write("lines.xml", "first\nsecond");
    std::string text = "untouched";
    EXPECT_EQ(mLocator.lineText(file, 0, text), StatusMissingObject);
    EXPECT_EQ(mLocator.lineText(file, 3, text), StatusMissingObject);
    EXPECT_EQ(mLocator.lineText(file, UINT32_MAX, text), StatusMissingObject);
    EXPECT_EQ(mLocator.lineText(path("missing.xml"), 1, text), StatusMissingObject);
    EXPECT_EQ(mLocator.lineText("", 1, text), StatusMissingObject);
    EXPECT_EQ(text, "untouched");
}

TEST_F(SourceLocatorTest, LineTextOfGzipFilesAndOfGivenTexts)
{
    std::string text;
    EXPECT_EQ(mLocator.lineText(write("lines.gz", gzip("first\nsecond\n")), 2, text), StatusOk);
    EXPECT_EQ(text, "second");
    EXPECT_EQ(mLocator.addText("<memory>", "one\ntwo"), StatusOk);
    EXPECT_EQ(mLocator.lineText("<memory>", 2, text), StatusOk);
    EXPECT_EQ(text, "two");
}

TEST_F(SourceLocatorTest, NothingIsLogged)
{
    const Tree tree = parseFile(write("graph.xml", settings("<port/>")));
    std::filesystem::remove(path("graph.xml"));
    at(child(tree.get(), "port"));
    at(nullptr);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(SourceLocatorTest, ManyQuestionsAboutALargeFileAreAnsweredAtOnce)
{
    constexpr int kPorts = 100000;
    std::string text = "<graph_settings version='1'>";
    for (int i = 0; i < kPorts; ++i) text += "\n<port id='" + std::to_string(i) + "'/>";
    use(text + "</graph_settings>");
    const auto children = childrenOf(mTree.get());
    ASSERT_EQ(children.size(), static_cast<size_t>(kPorts));
    // Asking from the start of the text each time would look at 100,000 times 1 MB.
    for (size_t i = 0; i < children.size(); ++i) {
        SourceLocation location;
        ASSERT_EQ(mLocator.locate(children[i].second, NUXO_KEY_ID, location), StatusOk);
        ASSERT_EQ(location.line, i + 2);
        ASSERT_EQ(location.column, 7U);
    }
}

TEST_F(SourceLocatorTest, ItemsOfEntitiesStandAtTheReference)
{
    use("<!DOCTYPE graph_settings [<!ENTITY e '<port width=\"1\"/>'>]>\n" + settings("<sink/>\n &e;"));
    EXPECT_EQ(at(port()), "3:2");
    EXPECT_EQ(at(port(), NUXO_KEY_WIDTH), "3:2");
}

TEST_F(SourceLocatorTest, Utf16TextsDoNotCrash)
{
    std::string text = "\xFF\xFE";
    for (const char c : settings("\n<port width='1'/>")) text += std::string{c, '\0'};
    use(text);
    EXPECT_EQ(at(port()).substr(0, 2), "2:");
    EXPECT_EQ(at(port(), NUXO_KEY_WIDTH).substr(0, 2), "2:");
}

} // namespace
