// SPDX-License-Identifier: Apache-2.0
#include "ToolTest.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

class FindingsTest : public ToolTest {
protected:
    void expectFinding(const std::string& file, int exitCode, const std::string& text) const
    {
        const ToolRun result = run({"dump", file});
        EXPECT_EQ(result.exitCode, exitCode);
        EXPECT_EQ(result.err, text);
    }
};

TEST_F(FindingsTest, TruncatedDocumentNamesTheOpenElement)
{
    // The text ends with line 4, so the end is at the start of line 5, which is empty.
    expectFinding("truncated.xml", 1,
                  "truncated.xml:5:1: error[malformed]: the text ends too early; expected </settings>\n"
                  "truncated.xml:3:5: note: element 'settings' is still open\n"
                  "        <settings key=\"1\" id=\"100\">\n"
                  "        ^\n");
}

TEST_F(FindingsTest, MismatchedTagNamesBothPlaces)
{
    // The caret stands at the name of the end tag, which expat reports.
    expectFinding("mismatched.xml", 1,
                  "mismatched.xml:4:34: error[malformed]: mismatched tag: another element ends here; "
                  "expected </sensor> first\n"
                  "            <sensor mode_id=\"full\"></snsor>\n"
                  "                                     ^\n"
                  "mismatched.xml:4:9: note: element 'sensor' is still open\n"
                  "            <sensor mode_id=\"full\"></snsor>\n"
                  "            ^\n");
}

TEST_F(FindingsTest, CompressedMalformedDocumentIsLocatedAlike)
{
    writeCompressed("mismatched.xml.gz", read("mismatched.xml"));
    const ToolRun result = run({"dump", "mismatched.xml.gz"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err.find("mismatched.xml.gz:4:34: error[malformed]: mismatched tag:"), 0U) << result.err;
    EXPECT_NE(result.err.find("</snsor>\n"), std::string::npos) << result.err;
}

TEST_F(FindingsTest, MissingFileCannotBeRead)
{
    expectFinding("absent.xml", 3,
                  "absent.xml: error[cannot-read]: cannot read: No such file or directory; expected a graph file\n");
}

TEST_F(FindingsTest, DirectoryCannotBeRead)
{
    ASSERT_EQ(mkdir(path("folder.xml").c_str(), 0755), 0);
    expectFinding("folder.xml", 3, "folder.xml: error[cannot-read]: is a directory; expected a graph file\n");
}

TEST_F(FindingsTest, DeviceIsNotRead)
{
    ASSERT_EQ(symlink("/dev/zero", path("zero.xml").c_str()), 0);
    expectFinding("zero.xml", 3, "zero.xml: error[cannot-read]: is not a regular file; expected a graph file\n");
}

TEST_F(FindingsTest, UnreadableFileCannotBeRead)
{
    if (geteuid() == 0) GTEST_SKIP() << "root reads every file";
    write("secret.xml", "<graph_settings/>");
    ASSERT_EQ(chmod(path("secret.xml").c_str(), 0), 0);
    expectFinding("secret.xml", 3,
                  "secret.xml: error[cannot-read]: cannot read: Permission denied; expected a graph file\n");
}

TEST_F(FindingsTest, OtherSuffixIsRefused)
{
    write("settings.txt", read("settings.xml"));
    expectFinding("settings.txt", 1,
                  "settings.txt: error[file-type]: the file name has the suffix 'txt'; expected 'xml' or 'gz'\n");
    write("settings.XML", read("settings.xml"));
    expectFinding("settings.XML", 1,
                  "settings.XML: error[file-type]: the file name has the suffix 'XML'; expected 'xml' or 'gz'\n");
    write("settings", read("settings.xml"));
    expectFinding("settings", 1, "settings: error[file-type]: the file name has no suffix; expected 'xml' or 'gz'\n");
}

TEST_F(FindingsTest, OtherRootElementIsAFinding)
{
    const ToolRun result = run({"dump", "wrong_root.xml"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "wrong_root.xml:2:1: error[root-element]: the document's element is 'pipeline'; expected "
                          "'graph_descriptor' or 'graph_settings'\n"
                          "    <pipeline version=\"DEMO1\"><stage width=\"4\"/></pipeline>\n"
                          "    ^\n");
    EXPECT_EQ(result.out, "(document)\n  pipeline version=\"DEMO1\"\n    stage width=4\n");
}

TEST_F(FindingsTest, EmptyDocumentElementIsAFinding)
{
    expectFinding("empty_root.xml", 1,
                  "empty_root.xml:2:1: error[empty]: element 'graph_settings' is empty; expected elements in it\n"
                  "    <graph_settings version=\"DEMO1\"/>\n"
                  "    ^\n");
}

TEST_F(FindingsTest, EmptyFileIsAFinding)
{
    write("empty.xml", "");
    expectFinding("empty.xml", 1, "empty.xml:1:1: error[malformed]: no element found; expected well-formed XML\n");
}

TEST_F(FindingsTest, TypeAheadOfNameIsAFinding)
{
    expectFinding(
        "type_before_name.xml", 1,
        "type_before_name.xml:4:9: error[type-before-name]: element 'hw' has 'type' before 'name'; expected no "
        "'type', which the element's name gives\n"
        "            <hw type=\"hw\" name=\"csi_be\"/>\n"
        "            ^\n");
}

TEST_F(FindingsTest, NameThatStandsTwiceInDifferentCaseIsAFinding)
{
    const std::string start = "<graph_descriptor version=\"1\"><nodes>\n";
    write("named.xml", start + "<hw name=\"a\" type=\"b\" NAME=\"c\"/></nodes></graph_descriptor>");
    const ToolRun result = run({"dump", "named.xml"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err,
              "named.xml:2:1: error[duplicate-attribute]: element 'hw' has 'name' twice, in different case; "
              "expected it once\n"
              "    <hw name=\"a\" type=\"b\" NAME=\"c\"/></nodes></graph_descriptor>\n"
              "    ^\n");
    // A node element with a type ends the same way; without one, the first name makes it. Under the name "node" an
    // element gets no type of another name.
    write("named.xml", start + "<node name=\"a\" type=\"b\" NAME=\"c\"/></nodes></graph_descriptor>");
    EXPECT_NE(run({"dump", "named.xml"}).err.find("error[duplicate-attribute]: element 'node'"), std::string::npos);
    for (const char* const element : {"<node name=\"a\" NAME=\"c\"/>", "<hw name=\"node\" NAME=\"c\"/>"}) {
        write("named.xml", start + element + "</nodes></graph_descriptor>");
        EXPECT_EQ(run({"dump", "named.xml"}).exitCode, 0) << element;
    }
}

TEST_F(FindingsTest, CutCompressedFileIsAFinding)
{
    writeCompressed("whole.gz", read("settings.xml"));
    write("cut.gz", read("whole.gz").substr(0, 200));
    const ToolRun result = run({"dump", "cut.gz"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err,
              "cut.gz: error[damaged]: decompression stopped with 'unexpected end of file'; expected an intact gzip "
              "file\n");
}

TEST_F(FindingsTest, TruncatedCompressedDocumentOfWholeChunksIsAFinding)
{
    // A parser that is fed chunks of 4096 bytes sees no short one at the end.
    std::string document = "<graph_settings version=\"1\"><settings key=\"1\"/>";
    document.append(2 * 4096 - document.size(), ' ');
    writeCompressed("chunks.gz", document);
    const ToolRun result = run({"dump", "chunks.gz"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err.find("chunks.gz:1:8193: error[malformed]: the text ends too early"), 0U) << result.err;
}

TEST_F(FindingsTest, DamagedCompressedFileIsAFinding)
{
    writeCompressed("bad.gz", read("settings.xml"));
    std::string bytes = read("bad.gz");
    bytes[bytes.size() - 5] = static_cast<char>(bytes[bytes.size() - 5] ^ 0x55); // inside the checksum
    write("bad.gz", bytes);
    const ToolRun result = run({"dump", "bad.gz"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err,
              "bad.gz: error[damaged]: decompression stopped with 'incorrect data check'; expected an intact gzip "
              "file\n");
}

TEST_F(FindingsTest, BothFilesAreReported)
{
    const ToolRun result = run({"query", "type_before_name.xml", "mismatched.xml"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("type_before_name.xml:4:9: error["), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("mismatched.xml:4:34: error["), std::string::npos) << result.err;
}

TEST_F(FindingsTest, UnreadableFileOutranksMalformedOne)
{
    EXPECT_EQ(run({"query", "absent.xml", "mismatched.xml"}).exitCode, 3);
    EXPECT_EQ(run({"query", "mismatched.xml", "absent.xml"}).exitCode, 3);
}

TEST_F(FindingsTest, LongLinesAreCutAroundTheColumn)
{
    const std::string blanks(300, ' ');
    write("long.xml", "<graph_settings version=\"1\">" + blanks + "<a></b>" + blanks + "</graph_settings>");
    const ToolRun result = run({"dump", "long.xml"});
    EXPECT_EQ(result.exitCode, 1);
    // 28 bytes of the document's tag and 300 blanks precede <a></b>; its end tag's name is 5 bytes on, columns count from 1.
    EXPECT_EQ(result.err.find("long.xml:1:334: error[malformed]: mismatched tag"), 0U) << result.err;
    const size_t excerpt = result.err.find("    ...");
    ASSERT_NE(excerpt, std::string::npos) << result.err;
    const size_t lineEnd = result.err.find('\n', excerpt);
    const std::string line = result.err.substr(excerpt, lineEnd - excerpt);
    const std::string caretLine = result.err.substr(lineEnd + 1, result.err.find('\n', lineEnd + 1) - lineEnd - 1);
    EXPECT_EQ(line.find("b>"), caretLine.find('^'));
    EXPECT_LT(line.size(), 140U);
}

TEST_F(FindingsTest, CaretCountsCharactersAndKeepsTabs)
{
    write("wide.xml", "<graph_settings version=\"1\">\n\t<a name=\"\xc3\xbc\xc3\xbc\"></b>\n</graph_settings>");
    const ToolRun result = run({"dump", "wide.xml"});
    // A tab, the 13 characters of <a name="..."> of which two have two bytes, and </ precede the name of the end tag: it
    // is byte 1 + 15 + 2 + 1 and stands below a tab and 15 blanks.
    EXPECT_EQ(result.err.find(
                  "wide.xml:2:19: error[malformed]: mismatched tag: another element ends here; expected </a> first\n"
                  "    \t<a name=\"\xc3\xbc\xc3\xbc\"></b>\n"
                  "    \t               ^\n"),
              0U)
        << result.err;
}

TEST_F(FindingsTest, ControlCharactersInFindingsAreEscaped)
{
    const ToolRun result = run({"dump", "no\033[31mfile\n.xml"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.err.find("no\\x1b[31mfile\\n.xml: error[cannot-read]"), 0U) << result.err;
}

} // namespace
