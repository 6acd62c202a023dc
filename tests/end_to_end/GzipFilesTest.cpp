// SPDX-License-Identifier: Apache-2.0
#include "ToolTest.h"

namespace {

// Compressed files that are not what they should be.
class GzipFilesTest : public ToolTest {
protected:
    void SetUp() override
    {
        ToolTest::SetUp();
        writeCompressed("whole.gz", read("settings.xml"));
        mWhole = read("whole.gz");
    }

    std::string mWhole;
};

TEST_F(GzipFilesTest, NoByteCanBeDamagedWithoutAFinding)
{
    ASSERT_EQ(run({"dump", "whole.gz"}).exitCode, 0);
    // A header of ten bytes without a name: two that every gzip file starts with, method, flags, time (4), two hints.
    for (size_t at = 0; at < mWhole.size(); ++at) {
        std::string bytes = mWhole;
        bytes[at] = static_cast<char>(bytes[at] ^ 0xff);
        write("bad.gz", bytes);
        const ToolRun result = run({"dump", "bad.gz"});
        const bool isHint = at >= 4 && at < 10;
        const bool isMark = at < 2;
        EXPECT_EQ(result.exitCode, isHint ? 0 : 1) << at;
        const char* const start = isHint ? "" : isMark ? "bad.gz:1:1: error[malformed]" : "bad.gz: error[damaged]";
        EXPECT_EQ(result.err.substr(0, std::string(start).size()), start) << at;
        EXPECT_EQ(result.err.find("bad.gz: note: the name ends in 'gz', but") != std::string::npos, isMark) << at;
    }
}

TEST_F(GzipFilesTest, FaultyTextOfAnIntactFileIsNoDamage)
{
    writeCompressed("faulty.gz", read("truncated.xml"));
    const ToolRun result = run({"dump", "faulty.gz"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("error[malformed]"), std::string::npos) << result.err;
    EXPECT_EQ(result.err.find("gzip"), std::string::npos) << result.err;
}

TEST_F(GzipFilesTest, TextThatIsOnlyNamedCompressedIsRead)
{
    write("plain.gz", read("settings.xml"));
    const ToolRun result = run({"dump", "plain.gz"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, run({"dump", "settings.xml"}).out);
}

TEST_F(GzipFilesTest, BytesBehindTheTextAreAWarning)
{
    const std::vector<std::string> tails = {"x", std::string(1, '\0'), "\x1f", "garbage"};
    for (const std::string& tail : tails) {
        write("long.gz", mWhole + tail);
        const ToolRun result = run({"dump", "long.gz"});
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "long.gz: warning[trailing-bytes]: " + std::to_string(tail.size()) +
                                  (tail.size() == 1 ? " byte follows" : " bytes follow") +
                                  " the compressed text, and nobody reads them; expected the end of the file\n");
        EXPECT_EQ(result.out, run({"dump", "settings.xml"}).out);
    }
}

TEST_F(GzipFilesTest, ManyBytesBehindTheTextAreCounted)
{
    write("long.gz", mWhole + std::string(300000, 'x'));
    EXPECT_NE(run({"dump", "long.gz"}).err.find(": 300000 bytes follow "), std::string::npos);
}

TEST_F(GzipFilesTest, FurtherMembersBelongToTheText)
{
    const std::string text = read("settings.xml");
    writeCompressed("first.gz", text.substr(0, 100));
    writeCompressed("second.gz", text.substr(100));
    write("both.gz", read("first.gz") + read("second.gz"));
    const ToolRun result = run({"dump", "both.gz"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, run({"dump", "settings.xml"}).out);
}

TEST_F(GzipFilesTest, RuleOfTrailingBytesObeysTheCommandLine)
{
    writeCompressed("settings.gz", "<graph_settings version=\"KVA6.1\"><sensor_modes/></graph_settings>");
    write("settings.gz", read("settings.gz") + "x");
    write("good.xml", "<graph_descriptor version=\"KVA6\"><nodes/><graphs/></graph_descriptor>");
    const auto check = [this](const std::vector<std::string>& options) {
        std::vector<std::string> arguments = {"check", "good.xml", "settings.gz"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return run(arguments);
    };
    EXPECT_EQ(check({}).exitCode, 0);
    EXPECT_NE(check({}).err.find("settings.gz: warning[trailing-bytes]: 1 byte follows"), std::string::npos);
    EXPECT_EQ(check({"-Werror"}).exitCode, 1);
    EXPECT_EQ(check({"--no", "trailing-bytes"}).err, "");
}

TEST_F(GzipFilesTest, TextBeyondTheLimitIsRefused)
{
    // 64 MiB of blanks, and the document. Compressed they are some 65 kB.
    std::string members;
    writeCompressed("blanks.gz", std::string(size_t{16} << 20U, ' '));
    for (int i = 0; i < 4; ++i) members += read("blanks.gz");
    writeCompressed("document.gz", "<graph_settings version=\"1\"><settings key=\"1\"/></graph_settings>");
    write("bomb.gz", members + read("document.gz"));
    for (const char* const verb : {"dump", "fmt", "check"}) {
        const ToolRun result = run({verb, "bomb.gz"});
        EXPECT_EQ(result.exitCode, 1) << verb;
        EXPECT_EQ(result.err, "bomb.gz: error[too-large]: the text is larger than 64 MiB; expected a graph file\n")
            << verb;
    }
    EXPECT_EQ(run({"diff", "bomb.gz", "settings.xml"}).exitCode, 3);
}

} // namespace
