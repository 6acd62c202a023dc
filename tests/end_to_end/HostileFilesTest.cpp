// SPDX-License-Identifier: Apache-2.0
#include "ToolTest.h"

namespace {

// Files made to break readers. The tool must come to an end of its own with a stated exit code.
class HostileFilesTest : public ToolTest {
protected:
    static std::string repeated(const std::string& text, size_t times)
    {
        std::string all;
        all.reserve(text.size() * times);
        for (size_t i = 0; i < times; ++i) all += text;
        return all;
    }

    static std::string document(const std::string& content)
    {
        return "<graph_settings version=\"1\">" + content + "</graph_settings>";
    }
};

TEST_F(HostileFilesTest, TooDeepNestingIsLocated)
{
    // The document's element is the first of 1024 levels; each "<a>" has three bytes, and the tag of level 1 has 28.
    write("deep.xml", document(repeated("<a>", 5000)));
    const ToolRun result = run({"dump", "deep.xml"});
    EXPECT_EQ(result.exitCode, 1);
    const size_t column = 28 + 1023 * 3 + 1;
    EXPECT_EQ(
        result.err.find("deep.xml:1:" + std::to_string(column) +
                        ": error[too-deep]: element 'a' is nested too deeply; expected at most 1024 nested elements"),
        0U)
        << result.err.substr(0, 300);
}

TEST_F(HostileFilesTest, DeepestAllowedNestingIsShown)
{
    write("deep.xml", document(repeated("<a>", 1023) + repeated("</a>", 1023)));
    for (const char* const format : {"text", "json"}) {
        const ToolRun result = run({"dump", "deep.xml", "--format", format});
        EXPECT_EQ(result.exitCode, 0) << result.err.substr(0, 300);
    }
}

TEST_F(HostileFilesTest, EntityBombIsRefused)
{
    std::string entities = "<!ENTITY a0 \"lololololololololo\">";
    for (int i = 1; i < 12; ++i) {
        const std::string before = "&a" + std::to_string(i - 1) + ';';
        entities += "<!ENTITY a" + std::to_string(i) + " \"" + repeated(before, 10) + "\">";
    }
    write("bomb.xml", "<!DOCTYPE graph_settings [" + entities + "]>" + document("<a name=\"&a11;\"/>"));
    const ToolRun result = run({"dump", "bomb.xml"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("amplification"), std::string::npos) << result.err.substr(0, 300);
}

TEST_F(HostileFilesTest, HugeAttributeIsShown)
{
    write("huge.xml", document("<a name=\"" + std::string(20 * 1024 * 1024, 'x') + "\"/>"));
    const ToolRun result = run({"dump", "huge.xml"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_GT(result.out.size(), 20U * 1024 * 1024);
}

TEST_F(HostileFilesTest, PlacesBehindAHugeCommentAreRight)
{
    write("descriptor.xml", "<graph_descriptor version=\"KVA6\"><nodes/><graphs/></graph_descriptor>");
    // The first line, a million lines of comment, and the one that its end stands in.
    const std::string comment = "\n<!--" + repeated("x\n", 1000000) + "-->";
    write("huge.xml", "<graph_settings version=\"KVA6.1\">" + comment + "<sensor_modes/> stray</graph_settings>");
    const ToolRun result = run({"check", "descriptor.xml", "huge.xml"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    // "--><sensor_modes/> " has 19 bytes.
    EXPECT_EQ(result.err.find("huge.xml:1000002:20: warning[stray-text]: "), 0U) << result.err.substr(0, 300);
}

TEST_F(HostileFilesTest, NulBytesAreLocated)
{
    write("nul.xml", std::string("<graph_settings>\n<a\0></a></graph_settings>", 43));
    const ToolRun result = run({"dump", "nul.xml"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err.find("nul.xml:2:3: error[malformed]: not well-formed (invalid token)"), 0U) << result.err;
    EXPECT_EQ(result.err.find('\0'), std::string::npos);
}

TEST_F(HostileFilesTest, Utf16IsRead)
{
    std::string wide = "\xff\xfe";
    for (const char c : document("<settings key=\"1\"/>")) {
        wide += c;
        wide += '\0';
    }
    write("wide.xml", wide);
    const ToolRun result = run({"dump", "wide.xml"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "graph_settings version=\"1\"\n  settings key=1\n");
}

TEST_F(HostileFilesTest, ManyUnknownNamesAreShown)
{
    std::string elements;
    for (int i = 0; i < 20000; ++i) elements += "<unheard_of_" + std::to_string(i) + "/>";
    write("names.xml", document(elements));
    const ToolRun result = run({"dump", "names.xml"});
    EXPECT_EQ(result.exitCode, 0) << result.err.substr(0, 300);
    EXPECT_NE(result.out.find("\n  unheard_of_19999\n"), std::string::npos);
}

TEST_F(HostileFilesTest, BinaryNoiseIsRefused)
{
    std::string noise;
    for (unsigned i = 0; i < 100000; ++i) noise += static_cast<char>((i * 2654435761U) >> 24U);
    write("noise.xml", noise);
    write("noise.gz", noise);
    EXPECT_EQ(run({"dump", "noise.xml"}).exitCode, 1);
    EXPECT_EQ(run({"dump", "noise.gz"}).exitCode, 1);
}

TEST_F(HostileFilesTest, EveryCutOfAFileEndsWithAFinding)
{
    const std::string settings = read("settings.xml");
    // From the start to the last byte of the document, which is followed by a line end.
    for (size_t size = 0; size + 1 < settings.size(); size += 37) {
        write("cut.xml", settings.substr(0, size));
        const ToolRun result = run({"build", "descriptor.xml", "cut.xml", "--key", "1"});
        EXPECT_EQ(result.exitCode, 1) << size;
        EXPECT_EQ(result.err.find("cut.xml:"), 0U) << size << ": " << result.err;
    }
}

} // namespace
