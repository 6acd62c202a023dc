// SPDX-License-Identifier: Apache-2.0
#include "ToolTest.h"

namespace {

class ArgumentsTest : public ToolTest {
protected:
    void expectUsageError(const std::vector<std::string>& arguments, const std::string& found) const
    {
        const ToolRun result = run(arguments);
        EXPECT_EQ(result.exitCode, 2) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.find("nuxo: error[usage]: "), 0U) << result.err;
        EXPECT_NE(result.err.find(found), std::string::npos) << result.err;
    }
};

constexpr const char* kVerbs =
    "check, dump, query, build, explain, diff, draw, fmt, ports, contexts, kernels, history, "
    "frame-params, formats or schema";

TEST_F(ArgumentsTest, NoVerbIsAUsageError)
{
    expectUsageError({}, std::string("no verb; expected ") + kVerbs + '\n');
}

TEST_F(ArgumentsTest, UnknownVerbIsAUsageError)
{
    expectUsageError({"paint", "settings.xml"}, std::string("unknown verb 'paint'; expected ") + kVerbs + '\n');
}

TEST_F(ArgumentsTest, VerbThatIsNearlyOneGetsASuggestion)
{
    expectUsageError({"port", "descriptor.xml", "settings.xml"}, "or schema; did you mean 'ports'?\n");
    expectUsageError({"Context"}, "or schema; did you mean 'contexts'?\n");
}

TEST_F(ArgumentsTest, UnknownOptionIsAUsageError)
{
    expectUsageError({"dump", "settings.xml", "--frobnicate"}, "--frobnicate");
}

TEST_F(ArgumentsTest, MissingFileArgumentIsAUsageError)
{
    expectUsageError({"dump"}, "FILE");
    expectUsageError({"query", "descriptor.xml"}, "SETTINGS");
}

TEST_F(ArgumentsTest, UnknownFormatIsAUsageError)
{
    expectUsageError({"dump", "settings.xml", "--format", "yaml"}, "yaml");
}

TEST_F(ArgumentsTest, OnlyBuildDrawsDot)
{
    expectUsageError({"dump", "settings.xml", "--format", "dot"}, "dot");
    expectUsageError({"query", "descriptor.xml", "settings.xml", "--format", "dot"}, "dot");
    expectUsageError({"ports", "descriptor.xml", "settings.xml", "--format", "dot"}, "dot");
    expectUsageError({"contexts", "descriptor.xml", "settings.xml", "--format", "dot"}, "dot");
    expectUsageError({"kernels", "descriptor.xml", "settings.xml", "--format", "dot"}, "dot");
    expectUsageError({"frame-params", "descriptor.xml", "settings.xml", "--format", "dot"}, "dot");
    expectUsageError({"formats", "--format", "dot"}, "dot");
}

TEST_F(ArgumentsTest, KeyMustBeANumber)
{
    expectUsageError({"build", "descriptor.xml", "settings.xml", "--key", "one"}, "--key");
    // One more than the largest 32-bit integer.
    expectUsageError({"build", "descriptor.xml", "settings.xml", "--key", "2147483648"}, "--key");
}

TEST_F(ArgumentsTest, HistoryIsOfOneStream)
{
    expectUsageError({"history", "descriptor.xml", "settings.xml", "--key", "1"}, "--stream");
    expectUsageError({"draw", "descriptor.xml", "settings.xml", "--stream", "one"}, "--stream");
}

TEST_F(ArgumentsTest, KernelsAreOfAStreamOrOfAGroup)
{
    expectUsageError({"kernels", "descriptor.xml", "settings.xml", "--stream", "1", "--group", "front"}, "--group");
}

TEST_F(ArgumentsTest, DrawingHasNoOrigins)
{
    expectUsageError({"build", "descriptor.xml", "settings.xml", "--key", "1", "--format", "dot", "--origin"},
                     "--origin");
}

TEST_F(ArgumentsTest, SizesNeedAFormatAndEachOther)
{
    expectUsageError({"formats", "--width", "640"}, "NAME");
    expectUsageError({"formats", "NV12", "--height", "480"}, "expected --width or --bpl as well");
    expectUsageError({"formats", "NV12", "--bpl", "640"}, "expected --height as well");
}

TEST_F(ArgumentsTest, SizesArePositiveNumbersOf32Bits)
{
    for (const char* const option : {"--width", "--height", "--bpl"}) {
        for (const char* const value : {"0", "-1", "4294967296", "wide", ""}) {
            expectUsageError({"formats", "NV12", option, value}, option);
        }
    }
}

TEST_F(ArgumentsTest, SettingsToCheckNeedAFile)
{
    expectUsageError({"check", "descriptor.xml", "--settings", "1"},
                     "--settings without a settings file; expected one behind the descriptor\n");
}

TEST_F(ArgumentsTest, TextsOnRulesAreNoSarif)
{
    expectUsageError({"check", "--list-rules", "--format", "sarif"}, "--list-rules finds nothing");
    expectUsageError({"check", "--explain", "empty", "--format", "sarif"}, "--explain finds nothing");
    expectUsageError({"check", "--explain", "empty", "--list-rules"}, "--list-rules");
    expectUsageError({"fmt", "--check", "settings.xml", "--format", "json"}, "--format");
}

TEST_F(ArgumentsTest, UnknownColourChoiceIsAUsageError)
{
    expectUsageError({"--color", "sometimes", "dump", "settings.xml"}, "sometimes");
}

TEST_F(ArgumentsTest, VersionNamesToolAndLibrary)
{
    const ToolRun result = run({"--version"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out.find("nuxo " NUXO_VERSION " (library "), 0U) << result.out;
    EXPECT_EQ(result.err, "");
}

TEST_F(ArgumentsTest, MainHelpHasVerbsExamplesAndExitCodes)
{
    const ToolRun result = run({"--help"});
    EXPECT_EQ(result.exitCode, 0);
    for (const char* const text : {"dump", "query", "build", "ports", "contexts", "frame-params", "formats",
                                   "Examples:", "Exit codes:", "--color", "--verbose"}) {
        EXPECT_NE(result.out.find(text), std::string::npos) << text << " in\n" << result.out;
    }
    EXPECT_EQ(result.err, "");
}

TEST_F(ArgumentsTest, EveryVerbHasHelpWithExamplesAndExitCodes)
{
    for (const std::string verb : {"dump", "query", "build", "ports", "contexts", "frame-params", "formats"}) {
        const ToolRun result = run({verb, "--help"});
        EXPECT_EQ(result.exitCode, 0);
        for (const std::string& text :
             {std::string("Examples:\n  nuxo ") + verb, std::string("Exit codes:"), std::string("--format")}) {
            EXPECT_NE(result.out.find(text), std::string::npos) << text << " in\n" << result.out;
        }
    }
}

TEST_F(ArgumentsTest, OptionsOfTheToolMayFollowTheVerb)
{
    const ToolRun before = run({"--color", "always", "dump", "truncated.xml"});
    const ToolRun behind = run({"dump", "truncated.xml", "--color", "always"});
    EXPECT_EQ(before.err, behind.err);
    EXPECT_NE(behind.err.find("\033["), std::string::npos);
}

} // namespace
