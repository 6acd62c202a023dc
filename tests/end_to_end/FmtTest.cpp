// SPDX-License-Identifier: Apache-2.0
#include "ToolTest.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <utility>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

const std::string kSource = NUXO_SOURCE_DIR;

class FmtTest : public ToolTest {
protected:
    static std::string contentOf(const std::string& file)
    {
        std::ifstream stream(file, std::ios::binary);
        std::ostringstream content;
        content << stream.rdbuf();
        return content.str();
    }

    static std::string settings(const std::string& content)
    {
        return "<graph_settings version=\"1\">" + content + "</graph_settings>";
    }

    static std::string repeated(const std::string& text, size_t times)
    {
        std::string all;
        for (size_t i = 0; i < times; ++i) all += text;
        return all;
    }

    // What fmt makes of a text, which must go well.
    std::string formatted(const std::string& text) const
    {
        write("given.xml", text);
        const ToolRun result = run({"fmt", "given.xml"});
        EXPECT_EQ(result.exitCode, 0) << text;
        EXPECT_EQ(result.err, "") << text;
        return result.out;
    }

    // The lines between the tags of the document's element, for content of settings().
    void expectContent(const std::string& content, const std::string& lines) const
    {
        const std::string expected = "<graph_settings version=\"1\">\n" + lines + "</graph_settings>\n";
        EXPECT_EQ(formatted(settings(content)), expected);
        EXPECT_EQ(formatted(expected), expected) << "not the same when formatted again";
    }

    std::string dumped(const std::string& name) const
    {
        const ToolRun result = run({"dump", name});
        EXPECT_EQ(result.exitCode, 0) << name << '\n' << result.err;
        return result.out;
    }

    // Formatting @p name again changes nothing, and the library reads the same as before.
    void expectStableAndSame(const std::string& name) const
    {
        const ToolRun result = run({"fmt", name});
        ASSERT_EQ(result.exitCode, 0) << name << '\n' << result.err;
        write("again.xml", result.out);
        EXPECT_EQ(run({"fmt", "again.xml"}).out, result.out) << name;
        EXPECT_EQ(dumped("again.xml"), dumped(name)) << name;
    }

    mode_t modeOf(const std::string& name) const
    {
        struct stat status = {};
        EXPECT_EQ(lstat(path(name).c_str(), &status), 0) << name;
        return status.st_mode;
    }

    std::vector<std::string> names() const
    {
        std::vector<std::string> all;
        for (const auto& entry : fs::directory_iterator(path(""))) all.push_back(entry.path().filename());
        std::sort(all.begin(), all.end());
        return all;
    }

    const std::string mUgly = settings("<settings KEY='1'/>");
    const std::string mCanonical = "<graph_settings version=\"1\">\n    <settings key=\"1\"/>\n</graph_settings>\n";
};

TEST_F(FmtTest, ExamplesAreCanonical)
{
    std::vector<std::string> arguments = {"fmt", "--check"};
    for (const auto& entry : fs::directory_iterator(kSource + "/examples")) {
        const std::string suffix = entry.path().extension();
        if (suffix == ".xml" || suffix == ".gz") arguments.push_back(entry.path());
    }
    ASSERT_EQ(arguments.size(), 2U + 12U); // three generations of two files, plain and compressed
    const ToolRun result = run(arguments);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "");
}

TEST_F(FmtTest, FixturesKeepTheirMeaningAndFormattingTwiceIsFormattingOnce)
{
    size_t formattedFiles = 0;
    for (const std::string& name : names()) {
        if (run({"dump", name}).exitCode != 0) continue;
        ++formattedFiles;
        expectStableAndSame(name);
    }
    EXPECT_GE(formattedFiles, 10U);
}

TEST_F(FmtTest, UglySettingsComeOutCanonical)
{
    fs::copy(kSource + "/tests/end_to_end/ugly/settings.xml", path("ugly.xml"));
    expectGolden(run({"fmt", "ugly.xml"}).out, "fmt_settings.xml");
    expectStableAndSame("ugly.xml");
}

TEST_F(FmtTest, UglyDescriptorComesOutCanonical)
{
    fs::copy(kSource + "/tests/end_to_end/ugly/descriptor.xml", path("ugly.xml"));
    expectGolden(run({"fmt", "ugly.xml"}).out, "fmt_descriptor.xml");
    expectStableAndSame("ugly.xml");
}

TEST_F(FmtTest, NamesAreLowerCaseAndValuesAreNot)
{
    expectContent("<SETTINGS Key=\"1\" Description=\"UHD\"></SETTINGS>",
                  "    <settings key=\"1\" description=\"UHD\"/>\n");
}

TEST_F(FmtTest, NamesThatDifferOnlyInCaseStayApart)
{
    // In lower case the element would have an attribute twice, which no XML reader takes.
    expectContent("<a Width=\"1\" HEIGHT=\"3\" width=\"2\"/>", "    <a Width=\"1\" width=\"2\" height=\"3\"/>\n");
}

TEST_F(FmtTest, AttributesOfUnknownNamesKeepTheirOrderBehindTheOthers)
{
    // The library keeps the first of them.
    expectContent("<a zebra=\"1\" width=\"2\" Ape=\"3\"/>", "    <a width=\"2\" zebra=\"1\" ape=\"3\"/>\n");
}

TEST_F(FmtTest, AttributeThatIsGovernedBeforeItHasANameStaysThere)
{
    // The name makes the word known to the library; asked for it before, the library finds nothing.
    const std::string early = "<options attribute=\"fresh_word\" name=\"fresh_word\"/>";
    const std::string late = "<options name=\"other_word\" attribute=\"other_word\"/>";
    EXPECT_EQ(formatted("<graph_descriptor version=\"1\">" + early + late + "</graph_descriptor>"),
              "<graph_descriptor version=\"1\">\n    " + early + "\n    " + late + "\n</graph_descriptor>\n");
}

TEST_F(FmtTest, TypeOfANodeMayMoveBehindItsName)
{
    EXPECT_EQ(formatted("<graph_descriptor version=\"1\"><node type=\"sink\" name=\"s\"/></graph_descriptor>"),
              "<graph_descriptor version=\"1\">\n    <node name=\"s\" type=\"sink\"/>\n</graph_descriptor>\n");
}

TEST_F(FmtTest, SingleQuotesStayOnlyAroundDoubleOnes)
{
    expectContent("<a name='x' description='say \"x\"' value = \"it's\"/>",
                  "    <a name=\"x\" description='say \"x\"' value=\"it's\"/>\n");
}

TEST_F(FmtTest, ValuesKeepReferencesBlanksAndLineEnds)
{
    expectContent("<a name=\"&lt;&#x41; > \t x\n  y&quot;\"/>", "    <a name=\"&lt;&#x41; > \t x\n  y&quot;\"/>\n");
}

TEST_F(FmtTest, ElementsWithoutContentAreEmptyTags)
{
    expectContent("<a></a><b>  \n </b><c />", "    <a/>\n    <b/>\n    <c/>\n");
}

TEST_F(FmtTest, BlankLinesStayOneByOneButNotBeforeAnEnd)
{
    expectContent("\n\n\n<a/>\n\n\n\n<b>\n\n<c/>\n\n</b>\n<d/>\n\n",
                  "\n    <a/>\n\n    <b>\n\n        <c/>\n    </b>\n    <d/>\n");
}

TEST_F(FmtTest, CommentBesideATagStaysThere)
{
    expectContent(
        "<a> <!-- of a --><b/>   <!-- of b -->\n<!-- alone --></a><!-- behind a -->",
        "    <a> <!-- of a -->\n        <b/> <!-- of b -->\n        <!-- alone -->\n    </a> <!-- behind a -->\n");
}

TEST_F(FmtTest, LinesOfACommentMoveTogether)
{
    expectContent("\n<!-- one\n       two  \n\n  three -->\n<a/>\n",
                  "    <!-- one\n           two\n\n      three -->\n    <a/>\n");
    // No further left than the leftmost line can go.
    expectContent("<a/><!-- one\n  two\n three -->", "    <a/>\n    <!-- one\n two\nthree -->\n");
}

TEST_F(FmtTest, TextAndCdataStay)
{
    expectContent(
        "<a>  some text </a><b>x<c/><![CDATA[<a/>\n ]]>&amp;</b>",
        "    <a>some text</a>\n    <b>\n        x\n        <c/>\n        <![CDATA[<a/>\n ]]>&amp;\n    </b>\n");
}

TEST_F(FmtTest, InstructionsStay)
{
    EXPECT_EQ(formatted("<?xml version='1.0'?><?tool a   b?>" + mUgly + "<?end?>"),
              "<?xml version='1.0'?>\n<?tool a   b?>\n" + mCanonical + "<?end?>\n");
}

TEST_F(FmtTest, DoctypeAndReferencesStay)
{
    const std::string doctype =
        "<!DOCTYPE graph_settings [\n <!ENTITY one  '1'>\n<!ENTITY s \"<settings key='2'/>\"> ]>";
    EXPECT_EQ(formatted(doctype + "<graph_settings Version=\"&one;\">&s;</graph_settings>"),
              doctype + "\n<graph_settings version=\"&one;\">&s;</graph_settings>\n");
}

TEST_F(FmtTest, DoctypeThatDeclaresAttributesKeepsTheCaseOfNames)
{
    // "Key" would not be given to an element "settings".
    const std::string doctype = "<!DOCTYPE graph_settings [<!ATTLIST Settings key CDATA \"7\">]>";
    EXPECT_EQ(formatted(doctype + settings("<Settings id=\"1\"/>")),
              doctype + "\n<graph_settings version=\"1\">\n    <Settings id=\"1\"/>\n</graph_settings>\n");
}

TEST_F(FmtTest, LineEndsBecomeLineFeeds)
{
    EXPECT_EQ(formatted("<graph_settings\r\nversion=\"1\">\r\n<!-- a\r\n b -->\r<settings "
                        "key=\"1\"/>\r\n\r\n\r\n</graph_settings>"),
              "<graph_settings version=\"1\">\n    <!-- a\n     b -->\n    <settings key=\"1\"/>\n</graph_settings>\n");
}

TEST_F(FmtTest, ByteOrderMarkGoes)
{
    EXPECT_EQ(formatted("\xef\xbb\xbf" + mUgly), mCanonical);
}

TEST_F(FmtTest, TabsBecomeBlanks)
{
    expectContent("\n\t<a\tname=\"x\">\n\t\t<b/>\t</a>\n\t<!-- one\n\t     two\tthree -->",
                  "    <a name=\"x\">\n        <b/>\n    </a>\n    <!-- one\n         two\tthree -->\n");
}

TEST_F(FmtTest, TagsFillLinesUpTo120Columns)
{
    // Four blanks, "<a", ' name=""' of 8 characters besides the value, "/>": 104 characters make 120 columns.
    const std::string widest = std::string(104, 'n');
    expectContent("<a name=\"" + widest + "\"/>", "    <a name=\"" + widest + "\"/>\n");
    // With id="1" and its blank the value may have 7 less.
    const std::string fits = widest.substr(7);
    expectContent("<a id=\"1\" name=\"" + fits + "\"/>", "    <a name=\"" + fits + "\" id=\"1\"/>\n");
    expectContent("<a id=\"1\" name=\"" + fits + "n\"/>", "    <a name=\"" + fits + "n\"\n            id=\"1\"/>\n");
}

TEST_F(FmtTest, ValueTooLongForAnyLineStaysBesideTheOthers)
{
    const std::string value = repeated("1,", 100);
    expectContent("<a value=\"" + value + "\" id=\"1\"/>", "    <a id=\"1\" value=\"" + value + "\"/>\n");
}

TEST_F(FmtTest, WideCharactersCountOnce)
{
    std::string value = repeated("\xc3\xbc", 104); // as many columns as the widest above, twice the bytes
    expectContent("<a name=\"" + value.substr(14) + "\" id=\"1\"/>",
                  "    <a name=\"" + value.substr(14) + "\" id=\"1\"/>\n");
}

TEST_F(FmtTest, DeepestNestingIsFormattedWithBoundedIndentation)
{
    write("deep.xml", settings(repeated("<a>", 1022) + "<b/>" + repeated("</a>", 1022)));
    expectStableAndSame("deep.xml");
    const std::string text = read("again.xml");
    // 24 levels are indented, the others as deep as the last of them.
    EXPECT_NE(text.find('\n' + std::string(96, ' ') + "<b/>\n"), std::string::npos);
    EXPECT_EQ(text.find(std::string(97, ' ')), std::string::npos);
}

TEST_F(FmtTest, NestingBeyondTheLibrarysIsRefused)
{
    write("deep.xml", settings(repeated("<a>", 1024) + repeated("</a>", 1024)));
    const ToolRun result = run({"fmt", "deep.xml"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("error[too-deep]"), std::string::npos) << result.err;
}

TEST_F(FmtTest, CompressedFilesAreShownAsText)
{
    writeCompressed("ugly.gz", mUgly);
    EXPECT_EQ(run({"fmt", "ugly.gz"}).out, mCanonical);
}

TEST_F(FmtTest, InPlaceRewritesSeveralFilesAndSaysNothing)
{
    write("one.xml", mUgly);
    write("two.xml", mCanonical);
    writeCompressed("three.gz", mUgly);
    const std::vector<std::string> before = names();
    const ToolRun result = run({"fmt", "-i", "one.xml", "two.xml", "three.gz"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(read("one.xml"), mCanonical);
    EXPECT_EQ(read("two.xml"), mCanonical);
    EXPECT_EQ(run({"fmt", "three.gz"}).out, mCanonical);
    EXPECT_EQ(run({"fmt", "--check", "one.xml", "two.xml", "three.gz"}).exitCode, 0);
    std::vector<std::string> after = before;
    after.insert(after.end(), {"stderr", "stdout"});
    std::sort(after.begin(), after.end());
    EXPECT_EQ(names(), after) << "something was left behind";
}

TEST_F(FmtTest, CompressingHoldsNoNameAndNoTime)
{
    writeCompressed("a.gz", mUgly);
    writeCompressed("other.gz", mUgly + "\n");
    ASSERT_EQ(run({"fmt", "--in-place", "a.gz", "other.gz"}).exitCode, 0);
    const std::string bytes = read("a.gz");
    ASSERT_GT(bytes.size(), 10U);
    // The header: magic number, deflate, no flags, no time.
    EXPECT_EQ(bytes.substr(0, 8), std::string("\x1f\x8b\x08\0\0\0\0\0", 8));
    EXPECT_EQ(bytes, read("other.gz"));
}

TEST_F(FmtTest, InPlaceLeavesCanonicalFilesAlone)
{
    write("same.xml", mCanonical);
    struct stat before = {};
    struct stat after = {};
    ASSERT_EQ(stat(path("same.xml").c_str(), &before), 0);
    ASSERT_EQ(run({"fmt", "--in-place", "same.xml"}).exitCode, 0);
    ASSERT_EQ(stat(path("same.xml").c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(FmtTest, InPlaceKeepsTheMode)
{
    write("mine.xml", mUgly);
    for (const mode_t mode : {0600U, 0640U, 0755U}) {
        write("mine.xml", mUgly);
        ASSERT_EQ(chmod(path("mine.xml").c_str(), mode), 0);
        ASSERT_EQ(run({"fmt", "--in-place", "mine.xml"}).exitCode, 0);
        EXPECT_EQ(read("mine.xml"), mCanonical);
        EXPECT_EQ(modeOf("mine.xml") & 07777U, mode);
    }
}

TEST_F(FmtTest, InPlaceFollowsSymbolicLinks)
{
    fs::create_directory(path("elsewhere"));
    write("elsewhere/real.xml", mUgly);
    fs::create_symlink("elsewhere/real.xml", path("link.xml"));
    ASSERT_EQ(run({"fmt", "--in-place", "link.xml"}).exitCode, 0);
    EXPECT_TRUE(S_ISLNK(modeOf("link.xml")));
    EXPECT_TRUE(S_ISREG(modeOf("elsewhere/real.xml")));
    EXPECT_EQ(read("elsewhere/real.xml"), mCanonical);
}

TEST_F(FmtTest, InPlaceInAnUnwritableDirectoryLeavesTheFile)
{
    fs::create_directory(path("closed"));
    write("closed/file.xml", mUgly);
    ASSERT_EQ(chmod(path("closed").c_str(), 0555), 0);
    // The superuser may write anywhere unless it gives that up.
    const char* const asOthers = geteuid() == 0 ? "setpriv --bounding-set=-dac_override,-dac_read_search" : "";
    EXPECT_EQ(exitCodeBehind(asOthers, "fmt --in-place closed/file.xml"), 3);
    EXPECT_EQ(read("err"), "closed/file.xml: error[cannot-write]: cannot write: Permission denied\n");
    EXPECT_EQ(read("closed/file.xml"), mUgly);
    ASSERT_EQ(chmod(path("closed").c_str(), 0755), 0);
}

TEST_F(FmtTest, InPlaceLeavesAWriteProtectedFile)
{
    write("locked.xml", mUgly);
    ASSERT_EQ(chmod(path("locked.xml").c_str(), 0444), 0);
    const char* const asOthers = geteuid() == 0 ? "setpriv --bounding-set=-dac_override,-dac_read_search" : "";
    EXPECT_EQ(exitCodeBehind(asOthers, "fmt --in-place locked.xml"), 3);
    EXPECT_EQ(read("locked.xml"), mUgly);
}

TEST_F(FmtTest, InPlaceOnAFullDiskLeavesTheFile)
{
    std::string large;
    for (int i = 0; i < 20000; ++i) large += "<settings KEY='" + std::to_string(i) + "'/>";
    large = settings(large);
    write("large.xml", large);
    const std::vector<std::string> before = names();
    // No file may grow beyond 400 blocks of at most 1024 bytes, and this one takes more than 20 bytes a setting. The
    // signal that comes with that does not end the tool.
    EXPECT_EQ(exitCodeBehind("ulimit -f 400;", "fmt --in-place large.xml"), 3);
    EXPECT_EQ(read("err"), "large.xml: error[cannot-write]: cannot write: File too large\n");
    EXPECT_EQ(read("large.xml"), large);
    std::vector<std::string> after = before;
    after.insert(after.end(), {"code", "err", "out"});
    std::sort(after.begin(), after.end());
    EXPECT_EQ(names(), after) << "something was left behind";
}

TEST_F(FmtTest, CheckListsFilesThatAreNotCanonical)
{
    write("ugly.xml", mUgly);
    write("fine.xml", mCanonical);
    writeCompressed("ugly.gz", mUgly);
    const ToolRun result = run({"fmt", "--check", "ugly.xml", "fine.xml", "ugly.gz"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "ugly.xml\nugly.gz\n");
    // <graph_settings version="1"> has 28 characters; a line should end there.
    EXPECT_EQ(result.err.find("ugly.xml:1:29: error[not-canonical]: not in canonical form from here on; expected what "
                              "'nuxo fmt' writes\n"),
              0U)
        << result.err;
    EXPECT_NE(result.err.find("ugly.gz:1:29: error[not-canonical]"), std::string::npos) << result.err;
    EXPECT_EQ(read("ugly.xml"), mUgly);
    EXPECT_EQ(run({"fmt", "--check", "fine.xml"}).exitCode, 0);
}

TEST_F(FmtTest, CheckPointsBehindAFileThatLacksItsLastLineEnd)
{
    write("open.xml", mCanonical.substr(0, mCanonical.size() - 1));
    const ToolRun result = run({"fmt", "--check", "open.xml"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err.find("open.xml:3:18: error[not-canonical]"), 0U) << result.err; // </graph_settings>
}

TEST_F(FmtTest, MalformedFilesAreReportedAsByDumpAndNeverWritten)
{
    for (const char* const name : {"truncated.xml", "empty_root.xml", "type_before_name.xml", "wrong_root.xml"}) {
        const std::string before = read(name);
        const ToolRun dump = run({"dump", name});
        EXPECT_EQ(dump.exitCode, 1) << name;
        for (const char* const option : {"--in-place", "--check"}) {
            const ToolRun result = run({"fmt", option, name});
            EXPECT_EQ(result.exitCode, 1) << name;
            EXPECT_EQ(result.out, "") << name;
            EXPECT_EQ(result.err, dump.err) << name;
        }
        EXPECT_EQ(run({"fmt", name}).out, "") << name;
        EXPECT_EQ(read(name), before) << name;
    }
}

TEST_F(FmtTest, MalformedFileDoesNotKeepOthersFromBeingFormatted)
{
    write("ugly.xml", mUgly);
    EXPECT_EQ(run({"fmt", "--in-place", "truncated.xml", "ugly.xml", "no_such_file.xml"}).exitCode, 3);
    EXPECT_EQ(read("ugly.xml"), mCanonical);
}

TEST_F(FmtTest, OtherEncodingsAreRefused)
{
    std::string wide = "\xff\xfe";
    for (const char c : mUgly) wide += std::string(1, c) + '\0';
    const std::string latin = "<?xml version=\"1.0\" encoding='ISO-8859-1'?>" + settings("<a name=\"\xfc\"/>");
    for (const auto& [text, encoding] : {std::pair(wide, "UTF-16"), std::pair(latin, "ISO-8859-1")}) {
        write("foreign.xml", text);
        const ToolRun result = run({"fmt", "--in-place", "foreign.xml"});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.err, std::string("foreign.xml: error[fmt-encoding]: the file is encoded in ") + encoding +
                                  "; expected UTF-8\n");
        EXPECT_EQ(read("foreign.xml"), text);
    }
    EXPECT_EQ(formatted("<?xml version=\"1.0\" encoding=\"Utf-8\"?>" + mUgly),
              "<?xml version=\"1.0\" encoding=\"Utf-8\"?>\n" + mCanonical);
}

TEST_F(FmtTest, OnlyOneFileGoesToStandardOutput)
{
    write("one.xml", mUgly);
    write("two.xml", mUgly);
    const ToolRun several = run({"fmt", "one.xml", "two.xml"});
    EXPECT_EQ(several.exitCode, 2);
    EXPECT_EQ(several.out, "");
    EXPECT_EQ(several.err, "nuxo: error[usage]: several files; expected one, or --in-place or --check\n");
    EXPECT_EQ(run({"fmt", "--in-place", "--check", "one.xml"}).exitCode, 2);
    EXPECT_EQ(run({"fmt"}).exitCode, 2);
    EXPECT_EQ(read("one.xml"), mUgly);
}

// Breaks files in ways that a fixed seed chooses: the tool must end by itself, and what it takes must come out stable and
// with its meaning.
TEST_F(FmtTest, MutatedFilesAreRefusedOrKeepTheirMeaning)
{
    std::mt19937 random(20);
    const std::vector<std::string> pieces = {"<",      ">",   "/>",  "\"",   "'",    "=",    " ",         "\n\n\n",
                                             "<!--",   "-->", "<a>", "</a>", "&",    "&lt;", "<![CDATA[", "]]>",
                                             "<?x ?>", "\r",  "\t",  "A",    "\xff", "name", "x",         "<b/>\n"};
    size_t taken = 0;
    for (const char* const source : {"settings.xml", "descriptor.xml"}) {
        const std::string good = contentOf(kSource + "/tests/end_to_end/ugly/" + source);
        for (int i = 0; i < 150; ++i) {
            std::string text = good;
            const size_t at = random() % text.size();
            text.replace(at, random() % 3, pieces[random() % pieces.size()]);
            write("mutated.xml", text);
            const ToolRun result = run({"fmt", "mutated.xml"});
            EXPECT_TRUE(result.exitCode == 0 || result.exitCode == 1) << result.exitCode << '\n' << text;
            if (result.exitCode != 0) continue;
            ++taken;
            expectStableAndSame("mutated.xml");
        }
    }
    EXPECT_GT(taken, 30U);
    EXPECT_LT(taken, 270U);
}

} // namespace
