// SPDX-License-Identifier: Apache-2.0
#include "ToolTest.h"

namespace {

class QueryTest : public ToolTest {
protected:
    ToolRun query(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), {"query", "descriptor.xml", "settings.xml"});
        return run(arguments);
    }

    // The first column of the table below its head.
    static std::string keysOf(const ToolRun& result)
    {
        std::string keys;
        for (size_t line = result.out.find('\n'); line != std::string::npos && line + 1 < result.out.size();
             line = result.out.find('\n', line + 1)) {
            const size_t start = line + 1;
            keys += result.out.substr(start, result.out.find(' ', start) - start) + ' ';
        }
        return keys;
    }

    void expectUsageError(const std::string& criterion, const std::string& text) const
    {
        const ToolRun result = query({criterion});
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, text);
    }
};

TEST_F(QueryTest, ListsEverySettingWithoutCriteria)
{
    const ToolRun result = query({});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    expectGolden(result.out, "query_all.txt");
}

TEST_F(QueryTest, ListsMatchesAsJson)
{
    const ToolRun result = query({"id=100", "--format", "json"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    expectGolden(result.out, "query_id_100.json");
}

TEST_F(QueryTest, AllCriteriaMustMatch)
{
    EXPECT_EQ(keysOf(query({"preview_sink:width=1280", "video_sink:height=1080"})), "1 ");
    EXPECT_EQ(keysOf(query({"id=200", "sensor:mode_id=full"})), "3 ");
    EXPECT_EQ(keysOf(query({"video_pg:main:format=NV12"})), "1 ");
}

TEST_F(QueryTest, OneCriterionIsEnoughWithAny)
{
    EXPECT_EQ(keysOf(query({"preview_sink:width=640", "id=200", "--any"})), "2 3 6 ");
}

TEST_F(QueryTest, AnyWithoutCriteriaListsEverySetting)
{
    EXPECT_EQ(keysOf(query({"--any"})), "1 2 3 4 5 6 7 ");
}

TEST_F(QueryTest, NoMatchSaysWhatTheSettingsHold)
{
    const ToolRun result = query({"preview_sink:width=1281", "sensor:mode_id=full"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err,
              "settings.xml: error[no-match]: no setting matches preview_sink:width=1281 and sensor:mode_id=full; "
              "expected at least one\n"
              "settings.xml: note: sensor:mode_id holds binned, full, unknown\n"
              "settings.xml: note: preview_sink:width holds 640, 1280\n");
}

TEST_F(QueryTest, NoMatchIsAnEmptyListInJson)
{
    const ToolRun result = query({"key=77", "--format", "json"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.out.find("\"settings\": []"), std::string::npos) << result.out;
}

TEST_F(QueryTest, UnknownNameGetsASuggestion)
{
    expectUsageError("preview_snk:width=1280",
                     "nuxo: error[unknown-name]: 'preview_snk' names no element or attribute; expected a name of the "
                     "files; did you mean 'preview_sink'?\n"
                     "    preview_snk:width=1280\n"
                     "    ^~~~~~~~~~~\n");
    expectUsageError("preview_sink:wdith=1280",
                     "nuxo: error[unknown-name]: 'wdith' names no element or attribute; expected a name of the "
                     "files; did you mean 'width'?\n"
                     "    preview_sink:wdith=1280\n"
                     "                 ^~~~~\n");
}

TEST_F(QueryTest, FarNameGetsNoSuggestion)
{
    expectUsageError("xylophone=1", "nuxo: error[unknown-name]: 'xylophone' names no element or attribute; expected a "
                                    "name of the files\n"
                                    "    xylophone=1\n"
                                    "    ^~~~~~~~~\n");
}

TEST_F(QueryTest, CriterionWithoutValueIsRefused)
{
    expectUsageError("width", "nuxo: error[bad-criterion]: 'width' is no criterion; expected path=value, for example "
                              "img_sink:width=1920\n"
                              "    width\n"
                              "    ^~~~~\n");
}

TEST_F(QueryTest, EmptyNameInAPathIsRefused)
{
    expectUsageError("sensor::mode_id=full",
                     "nuxo: error[bad-criterion]: empty name in the path; expected names joined by ':'\n"
                     "    sensor::mode_id=full\n"
                     "           ^\n");
}

TEST_F(QueryTest, IntegerThatCanNeverMatchIsRefused)
{
    for (const char* const value : {"02", "abc", "", "1.5", "+7", "2147483648", "99999999999999999999"}) {
        const ToolRun result = query({std::string("key=") + value});
        EXPECT_EQ(result.exitCode, 2) << value;
        EXPECT_NE(result.err.find("expected decimal digits"), std::string::npos) << result.err;
    }
    EXPECT_EQ(query({"key=-1"}).exitCode, 1); // could match
}

TEST_F(QueryTest, SamePathTwiceIsRefused)
{
    const ToolRun result = query({"key=1", "key=2", "--any"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_NE(result.err.find("'key' has a value already"), std::string::npos) << result.err;
}

TEST_F(QueryTest, AllBadCriteriaAreReported)
{
    const ToolRun result = query({"nonsense", "qwertz:width=x", "key=x"});
    EXPECT_EQ(result.exitCode, 2);
    for (const char* const text : {"'nonsense'", "'qwertz'", "'x' never"}) {
        EXPECT_NE(result.err.find(text), std::string::npos) << text << " in " << result.err;
    }
}

TEST_F(QueryTest, ValuesMayHoldEqualSigns)
{
    write("equals.xml", "<graph_settings version=\"DEMO1\"><settings key=\"9\" id=\"1\" description=\"a=b\"/>"
                        "</graph_settings>");
    const ToolRun result = run({"query", "descriptor.xml", "equals.xml", "description=a=b"});
    EXPECT_EQ(keysOf(result), "9 ") << result.err;
}

TEST_F(QueryTest, OtherVersionIsAWarning)
{
    const ToolRun result = run({"query", "descriptor.xml", "other_version.xml"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(keysOf(result), "1 ");
    EXPECT_EQ(result.err, "other_version.xml: warning[version]: graph settings(DEMO2.0) version is not matching graph "
                          "descriptor(DEMO1). Make sure the settings are compatible with the graph descriptor.\n");
}

TEST_F(QueryTest, SwappedFilesAreRecognised)
{
    const ToolRun result = run({"query", "settings.xml", "descriptor.xml"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err,
              "settings.xml:3:1: error[root-element]: the document's element is 'graph_settings'; expected "
              "'graph_descriptor'\n"
              "    <graph_settings version=\"DEMO1.2\">\n"
              "    ^\n"
              "descriptor.xml:3:1: error[root-element]: the document's element is 'graph_descriptor'; expected "
              "'graph_settings'\n"
              "    <graph_descriptor version=\"DEMO1\">\n"
              "    ^\n"
              "nuxo: note: the two files look swapped; expected DESCRIPTOR before SETTINGS\n");
}

} // namespace
