// SPDX-License-Identifier: Apache-2.0
#include "GraphVerbTest.h"

#include <filesystem>

namespace {

class DrawGraphTest : public GraphVerbTest {
protected:
    DrawGraphTest() : GraphVerbTest("draw") {}

    ToolRun drawExample(const std::string& generation, const std::vector<std::string>& arguments,
                        const Environment& environment = {}) const
    {
        std::vector<std::string> all = {"draw", generation + "_descriptor.xml", generation + "_settings.xml"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return run(all, environment);
    }

    // A program named dot that does what a script says, alone in PATH.
    Environment fakeDot(const std::string& script) const
    {
        std::filesystem::create_directories(path("bin"));
        write("bin/dot", "#!/bin/sh\nPATH=/bin:/usr/bin\n" + script + '\n');
        std::filesystem::permissions(path("bin/dot"), std::filesystem::perms::owner_all);
        return {{"PATH", path("bin")}};
    }

    static void expectTrouble(const ToolRun& result, int exitCode, const std::string& rule, const std::string& says,
                              const std::string& wayOut)
    {
        EXPECT_EQ(result.exitCode, exitCode);
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err.find("nuxo: error[" + rule + "]: "), std::string::npos) << result.err;
        EXPECT_NE(result.err.find(says), std::string::npos) << result.err;
        EXPECT_NE(result.err.find(wayOut), std::string::npos) << result.err;
        EXPECT_EQ(count(result.err, "error["), 1U) << result.err;
    }
};

TEST_F(DrawGraphTest, DotIsWhatIsDrawnByDefault)
{
    const ToolRun result = ask("kva6", "60100");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out.substr(0, 8), "digraph ");
    EXPECT_EQ(result.out, drawExample("kva6", {"--key", "60100", "--format", "dot"}).out);
    // Of the same graph and by the same hand as nuxo build draws it.
    EXPECT_EQ(result.out,
              run({"build", "kva6_descriptor.xml", "kva6_settings.xml", "--key", "60100", "--format", "dot"}).out);
    expectDotAccepts(result.out);
}

TEST_F(DrawGraphTest, ContextsAreClustersWhereAllNodesHaveOne)
{
    const ToolRun contexts = ask("kva7", "70101");
    EXPECT_EQ(count(contexts.out, "subgraph \"cluster_context_"), 5U) << contexts.out; // 0, 1, 2, 4, 8
    EXPECT_EQ(count(contexts.out, "cluster_stream_"), 0U);
    EXPECT_EQ(count(contexts.out, "stream 2"), 2U); // said by the blocks of context 2 themselves
    expectDotAccepts(contexts.out);
}

TEST_F(DrawGraphTest, StreamsAreClustersOtherwise)
{
    const ToolRun streams = ask("kva5", "50101");
    EXPECT_EQ(count(streams.out, "subgraph \"cluster_stream_"), 3U) << streams.out; // 0, 1, 3
    EXPECT_EQ(count(streams.out, "cluster_context_"), 0U);
}

TEST_F(DrawGraphTest, EveryExampleIsAcceptedByDot)
{
    for (const std::string generation : {"kva5", "kva6", "kva7"}) {
        addExample(generation);
        size_t settings = 0;
        for (const auto& row :
             rowsOf(run({"query", generation + "_descriptor.xml", generation + "_settings.xml"}).out)) {
            const ToolRun result = drawExample(generation, {"--key", row.at("KEY")});
            EXPECT_EQ(result.exitCode, 0) << result.err;
            expectDotAccepts(result.out);
            ++settings;
        }
        EXPECT_GE(settings, 28U) << generation;
    }
}

TEST_F(DrawGraphTest, SvgIsLaidOut)
{
    const ToolRun graph = ask("kva7", "70101", {"--format", "svg"});
    EXPECT_EQ(graph.exitCode, 0) << graph.err;
    EXPECT_EQ(graph.out.substr(0, 5), "<?xml");
    EXPECT_EQ(count(graph.out, "</svg>"), 1U);
    for (const std::string name : {"cb_front", "short_in", "context 8", "video_sink"}) {
        EXPECT_GE(count(graph.out, '>' + name + "</text>"), 1U) << name;
    }
    const ToolRun stream = drawExample("kva7", {"--key", "70101", "--stream", "2", "--format", "svg"});
    EXPECT_GE(count(stream.out, ">tnr_blend</text>"), 1U);
    EXPECT_EQ(count(graph.out, "tnr_blend"), 0U);
}

TEST_F(DrawGraphTest, SvgHoldsHostileNamesAsText)
{
    const ToolRun result = run({"draw", "odd_names.xml", "odd_names_settings.xml", "--format", "svg"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_GE(count(result.out, "a&quot;b &lt;c&gt; &amp; \\d"), 1U) << result.out;
    EXPECT_EQ(count(result.out, "<c>"), 0U);
}

TEST_F(DrawGraphTest, SameBytesOnEveryRun)
{
    addExample("kva6");
    for (const std::string format : {"dot", "svg", "html"}) {
        const std::vector<std::string> arguments = {"sensor:mode_id=binned", "key=60106", "--format", format};
        const ToolRun first = drawExample("kva6", arguments);
        EXPECT_EQ(first.exitCode, 0) << first.err;
        EXPECT_GT(first.out.size(), 5000U);
        EXPECT_EQ(first.out, drawExample("kva6", arguments).out) << format;
    }
}

TEST_F(DrawGraphTest, PagesOfTheExamplesStayBelowOneMegabyte)
{
    for (const std::string generation : {"kva5", "kva6", "kva7"}) {
        addExample(generation);
        const ToolRun result = drawExample(generation, {"--format", "html"});
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_LE(result.out.size(), 1000000U) << generation;
        EXPECT_GT(result.out.size(), 200000U) << generation; // all settings are in it
    }
}

TEST_F(DrawGraphTest, SettingThatCannotBeBuiltIsLeftOutOfThePage)
{
    // Graph 999 does not exist; setting 7 is built, and its loose end is drawn.
    const ToolRun result = run({"draw", "descriptor.xml", "settings.xml", "--format", "html"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("settings.xml:38:5: error[build-failed]: building setting 4"), std::string::npos)
        << result.err;
    EXPECT_EQ(count(result.out, "</html>"), 1U);
    EXPECT_EQ(count(result.out, "\"setting 4\""), 0U);
    EXPECT_EQ(count(result.out, "\"setting 7\""), 1U);
    EXPECT_GE(count(result.out, "\"ghost:input\""), 1U);
    // Alone it leaves no page at all.
    const ToolRun none = run({"draw", "descriptor.xml", "settings.xml", "--key", "4", "--format", "html"});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_EQ(none.out, "");
}

TEST_F(DrawGraphTest, PageNeedsAStreamThatThereIs)
{
    const ToolRun result = ask("kva6", "60100", {"--stream", "77", "--format", "html"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(count(result.err, "error[unknown-stream]"), 1U) << result.err;
}

TEST_F(DrawGraphTest, MissingDotIsSaidWithAWayOut)
{
    addExample("kva6");
    for (const std::string format : {"svg", "html"}) {
        for (const std::string directories : {"", "/nowhere", "."}) {
            const ToolRun result = drawExample("kva6", {"--key", "60100", "--format", format}, {{"PATH", directories}});
            expectTrouble(result, 3, "dot-missing", "is in no directory of PATH", "install graphviz");
        }
    }
    const ToolRun dot = drawExample("kva6", {"--key", "60100"}, {{"PATH", ""}});
    EXPECT_EQ(dot.exitCode, 0) << dot.err;
}

TEST_F(DrawGraphTest, HangingDotIsEnded)
{
    addExample("kva6");
    for (const std::string format : {"svg", "html"}) {
        Environment environment = fakeDot("exec sleep 100");
        environment["NUXO_DOT_SECONDS"] = "1";
        const ToolRun result = drawExample("kva6", {"--format", format, "--key", "60100"}, environment);
        expectTrouble(result, 3, "dot-time", "was not done after 1 s", "set NUXO_DOT_SECONDS to more seconds");
    }
}

TEST_F(DrawGraphTest, FailingDotIsSaidWithItsWords)
{
    addExample("kva6");
    const auto draw = [this](const std::string& script, const std::string& format) {
        return drawExample("kva6", {"--key", "60100", "--format", format}, fakeDot(script));
    };
    const std::string wayOut = "--format dot writes the drawing without help of other programs";
    for (const std::string format : {"svg", "html"}) {
        expectTrouble(draw("echo 'syntax \033error' >&2; exit 3", format), 3, "dot-failed",
                      "exit code 3, saying: syntax \\x1berror", wayOut);
        expectTrouble(draw("kill -SEGV $$", format), 3, "dot-failed", "was ended by signal 11", wayOut);
        expectTrouble(draw("exit 0", format), 3, "dot-failed", "exit code 0 but wrote nothing", wayOut);
    }
    for (const std::string answer :
         {"no JSON", "{}", "{\"bb\": \"0,0,10,10\"}", "{\"bb\": \"0,0,1e99,10\"}", "[1,2]"}) {
        expectTrouble(draw("echo '" + answer + "'", "html"), 3, "dot-failed", "what dot wrote cannot be read", wayOut);
    }
    const std::string strange = "{\"bb\":\"0,0,9,9\",\"objects\":[{\"name\":\"n99999\",\"_gvid\":0,\"pos\":\"1,1\"}]}";
    expectTrouble(draw("echo '" + strange + "'", "html"), 3, "dot-failed", "what dot wrote cannot be read", wayOut);
}

TEST_F(DrawGraphTest, ProgramThatIsNoneIsSaid)
{
    addExample("kva6");
    Environment environment = fakeDot("");
    write("bin/dot", "no program");
    const ToolRun result = drawExample("kva6", {"--key", "60100", "--format", "svg"}, environment);
    expectTrouble(result, 3, "dot-failed", "cannot be started", "--format dot");
}

TEST_F(DrawGraphTest, LimitMustBeSeconds)
{
    addExample("kva6");
    for (const std::string text : {"0", "-1", "1x", "soon", "99999999999999999999"}) {
        const ToolRun result = drawExample("kva6", {"--key", "60100", "--format", "svg"}, {{"NUXO_DOT_SECONDS", text}});
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(count(result.err, "NUXO_DOT_SECONDS is '" + text + "'; expected seconds from 1 to 86400"), 1U)
            << result.err;
    }
}

} // namespace
