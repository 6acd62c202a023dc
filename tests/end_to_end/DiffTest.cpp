// SPDX-License-Identifier: Apache-2.0
#include "ToolTest.h"

#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <pty.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using nlohmann::json;

class DiffTest : public ToolTest {
protected:
    // "edited.xml" is settings.xml with one value changed, one element less and one more.
    void addEditedSettings() const
    {
        std::string text = read("settings.xml");
        replaceFirst(text, R"(<raw_sink width="4208")", R"(<raw_sink width="4200")");
        replaceFirst(text, R"(<preview_sink width="640" height="480" format="NV12"/>)", "");
        replaceFirst(text, R"(<settings key="4")",
                     R"(<settings key="8" id="100" dvs="1"><sensor/></settings><settings key="4")");
        write("edited.xml", text);
    }

    static void replaceFirst(std::string& text, const std::string& part, const std::string& by)
    {
        const size_t at = text.find(part);
        ASSERT_NE(at, std::string::npos) << part;
        text.replace(at, part.size(), by);
    }

    void expectUsageError(const std::vector<std::string>& arguments, const std::string& wayOut) const
    {
        std::vector<std::string> all = {"diff"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const ToolRun result = run(all);
        EXPECT_EQ(result.exitCode, 2) << wayOut;
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.err.find(wayOut), std::string::npos) << result.err;
    }
};

TEST_F(DiffTest, ShowsTheDifferencesOfTwoFiles)
{
    addEditedSettings();
    const ToolRun result = run({"diff", "settings.xml", "edited.xml"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "");
    expectGolden(result.out, "diff_settings.txt");
}

TEST_F(DiffTest, ShowsTheDifferencesOfTwoFilesAsJson)
{
    addEditedSettings();
    const ToolRun result = run({"diff", "settings.xml", "edited.xml", "--format", "json"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "");
    expectGolden(result.out, "diff_settings.json");
}

TEST_F(DiffTest, ShowsTheDifferencesOfTwoSettingsOfAFile)
{
    const ToolRun result = run({"diff", "settings.xml", "--key", "1", "--key", "2"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "");
    expectGolden(result.out, "diff_settings_1_2.txt");
}

TEST_F(DiffTest, ShowsTheDifferencesOfTwoBuiltGraphs)
{
    const ToolRun result = run({"diff", "--built", "linked.xml", "linked_settings.xml", "--key", "1", "--key", "2"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "");
    // The settings 1 and 2 state one width differently.
    EXPECT_NE(result.out.find("\nback:scale:input\n  ~ width 480 -> 640  linked_settings.xml:28:27 -> "
                              "linked_settings.xml:56:27\n\n1 difference: 1 changed\n"),
              std::string::npos)
        << result.out;
}

TEST_F(DiffTest, ShowsWhatAnEditOfADescriptorDoesToABuiltGraph)
{
    std::string text = read("descriptor.xml");
    replaceFirst(text, R"(<kernel name="crop" pal_uuid="4101")", R"(<kernel name="crop" pal_uuid="4103")");
    replaceFirst(text, R"(<connection source="video_pg:main" sink="video_sink"/>)", "");
    write("edited.xml", text);
    const ToolRun result = run({"diff", "--built", "descriptor.xml", "settings.xml", "edited.xml", "settings.xml",
                                "--key", "1", "--format", "json"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "");
    std::vector<std::string> found;
    const json document = json::parse(result.out);
    for (const json& difference : document["differences"]) {
        found.push_back(difference["change"].get<std::string>() + ' ' + difference["path"].get<std::string>() + ' ' +
                        difference["name"].get<std::string>());
    }
    // Two nodes are built on the base node. Without its connection the sink is only what the setting says of it, and the
    // port that it was fed from is unused.
    EXPECT_EQ(found, (std::vector<std::string>{
                         "removed graph connection[video_pg:main -> video_sink]", "changed preview_pg:crop pal_uuid",
                         "changed video_pg:crop pal_uuid", "added video_pg:main enabled", "removed video_pg:main peer",
                         "removed video_sink direction", "removed video_sink id", "removed video_sink peer",
                         "removed video_sink stream_id", "removed video_sink type"}))
        << result.out;
}

TEST_F(DiffTest, ComparesASettingOfEachFile)
{
    addEditedSettings();
    EXPECT_EQ(run({"diff", "settings.xml", "edited.xml", "--key", "1"}).exitCode, 0);
    const ToolRun changed = run({"diff", "settings.xml", "edited.xml", "--key", "3"});
    EXPECT_EQ(changed.exitCode, 1);
    EXPECT_NE(changed.out.find("raw_sink\n  ~ width 4208 -> 4200  settings.xml:36:19 -> edited.xml:36:19\n"),
              std::string::npos)
        << changed.out;
    const ToolRun other = run({"diff", "settings.xml", "edited.xml", "--key", "3", "--key", "8", "--format", "json"});
    EXPECT_EQ(other.exitCode, 1);
    const json document = json::parse(other.out);
    EXPECT_EQ(document["kind"], "diff");
    EXPECT_EQ(document["version"], 1);
    EXPECT_EQ(document["compares"], "settings");
    EXPECT_EQ(document["a"], json::parse(R"({"file": "settings.xml", "setting": 3})"));
    EXPECT_EQ(document["b"], json::parse(R"({"file": "edited.xml", "setting": 8})"));
}

TEST_F(DiffTest, KeysByWhichSettingsAreChosenAreNoDifference)
{
    write("twins.xml", R"(<graph_settings version="1"><settings key="1" id="5" dvs="1"><a width="1"/></settings>
<settings dvs="1" id="5" key="2"><a width="1"/></settings></graph_settings>)");
    const ToolRun result = run({"diff", "twins.xml", "--key", "1", "--key", "2"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out + result.err, "");
}

TEST_F(DiffTest, SaysNothingOfEqualFiles)
{
    for (const std::string generation : {"kva5", "kva6", "kva7"}) {
        addExample(generation);
        for (const char* const part : {"_descriptor", "_settings"}) {
            const std::string file = generation + part + ".xml";
            writeCompressed("packed.gz", read(file));
            for (const std::string& other : {file, std::string("packed.gz")}) {
                const ToolRun result = run({"diff", file, other});
                EXPECT_EQ(result.exitCode, 0) << file;
                EXPECT_EQ(result.out + result.err, "") << file;
            }
        }
    }
}

TEST_F(DiffTest, ListsNoDifferenceOfEqualFilesInJson)
{
    const ToolRun result = run({"diff", "settings.xml", "settings.xml", "--format", "json"});
    EXPECT_EQ(result.exitCode, 0);
    const json document = json::parse(result.out);
    EXPECT_EQ(document["same"], true);
    EXPECT_EQ(document["differences"], json::array());
    EXPECT_EQ(document["compares"], "settings files");
}

TEST_F(DiffTest, FindsEveryGraphOfTheExamplesEqualToItself)
{
    addExample("kva7");
    const std::vector<std::string> pair = {"kva7_descriptor.xml", "kva7_settings.xml"};
    for (const char* const key : {"70100", "70101", "70202", "70300", "70403", "70500"}) {
        const ToolRun result = run({"diff", "--built", pair[0], pair[1], pair[0], pair[1], "--key", key});
        EXPECT_EQ(result.exitCode, 0) << key << result.out;
        EXPECT_EQ(result.out + result.err, "") << key;
    }
}

TEST_F(DiffTest, NamesTheFirstOfSettingsWithOneKey)
{
    const std::string first = R"(<settings key="1" id="1"/>)";
    const std::string second = R"(<settings key="1" id="2"/>)";
    const auto file = [](const std::string& content) {
        return "<graph_settings version=\"1\">" + content + "</graph_settings>";
    };
    write("a.xml", file(first + second));
    write("b.xml", file(second + first));
    const ToolRun result = run({"diff", "a.xml", "b.xml"});
    EXPECT_EQ(result.exitCode, 1);
    // Both start behind the 28 bytes of the root element's tag.
    EXPECT_NE(result.out.find("\ngraph_settings\n  ~ order of settings:1  a.xml:1:29 -> b.xml:1:29\n"),
              std::string::npos)
        << result.out;
}

TEST_F(DiffTest, WarnsOfAttributesThatItCannotSee)
{
    write("a.xml", "<graph_settings version=\"1\"><settings key=\"1\" id=\"1\" aaa=\"1\" bbb=\"2\"/></graph_settings>");
    write("b.xml", "<graph_settings version=\"1\"><settings key=\"1\" id=\"1\" aaa=\"1\" ccc=\"9\"/></graph_settings>");
    const ToolRun result = run({"diff", "a.xml", "b.xml"});
    // Behind the 28 bytes of the document's tag, <settings key="1" id="1" has 24 bytes, and the attributes 7 with a blank.
    EXPECT_NE(result.err.find(
                  "a.xml:1:54: warning[unknown-attribute]: unknown attribute 'aaa' of 'settings' is not compared"),
              std::string::npos)
        << result.err;
    EXPECT_NE(result.err.find("a.xml:1:62: warning[unknown-attribute]: unknown attribute 'bbb'"), std::string::npos)
        << result.err;
    EXPECT_NE(result.err.find("b.xml:1:62: warning[unknown-attribute]: unknown attribute 'ccc'"), std::string::npos)
        << result.err;
}

TEST_F(DiffTest, CountsEqualElements)
{
    const auto file = [](const std::string& content) {
        return "<graph_settings version=\"1\"><settings key=\"1\" id=\"1\">" + content + "</settings></graph_settings>";
    };
    write("a.xml", file("<x width=\"1\"/><x width=\"2\"/><x width=\"1\"/>"));
    write("b.xml", file("<x width=\"1\"/><x width=\"2\"/>"));
    const ToolRun result = run({"diff", "a.xml", "b.xml"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.out.find("  - x width=1  a.xml:1:82, not in b.xml:1:29\n\n1 difference: 1 removed\n"),
              std::string::npos)
        << result.out;
}

TEST_F(DiffTest, TellsOptionsForOneValueInAnotherOrder)
{
    const std::string start = R"(<graph_descriptor version="1"><nodes><hw name="h"><options attribute="format">)";
    const std::string end = "</options></hw></nodes></graph_descriptor>";
    const std::string first = R"(<option value="A,B"><apply><h width="1"/></apply></option>)";
    const std::string second = R"(<option value="B,C"><apply><h width="2"/></apply></option>)";
    write("a.xml", start + first + second + end);
    write("b.xml", start + second + first + end);
    const ToolRun result = run({"diff", "a.xml", "b.xml"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.out.find("nodes:h:options[format]\n  ~ order of options for B: option[A,B] -> option[B,C]"),
              std::string::npos)
        << result.out;
}

TEST_F(DiffTest, TellsSeveralPeersInAnotherOrder)
{
    std::string text = read("descriptor.xml");
    replaceFirst(text, "<connection source=\"csi_be:output\" sink=\"preview_pg:input\"/>\n", "");
    replaceFirst(
        text, "<connection source=\"preview_pg:main\"",
        "<connection source=\"csi_be:output\" sink=\"preview_pg:input\"/><connection source=\"preview_pg:main\"");
    write("edited.xml", text);
    const ToolRun result =
        run({"diff", "--built", "descriptor.xml", "settings.xml", "edited.xml", "settings.xml", "--key", "1"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.out.find("  ~ order of peer \"preview_pg:input\" -> \"video_pg:input\""), std::string::npos)
        << result.out;
}

TEST_F(DiffTest, ComparesManySettingsInAnyOrder)
{
    // 3,600 settings as in the largest files that are made; the last one of B is the first one of A, and so on.
    constexpr int kSettings = 3600;
    std::vector<std::string> settings;
    for (int key = 1; key <= kSettings; ++key) {
        std::string& setting = settings.emplace_back("<settings key=\"" + std::to_string(key) + "\" id=\"1\">\n");
        for (int node = 0; node < 20; ++node) {
            setting += "    <node_" + std::to_string(node) + "><main width=\"1920\" height=\"" + std::to_string(key) +
                       "\" format=\"NV12\"/></node_" + std::to_string(node) + ">\n";
        }
        setting += "</settings>\n";
    }
    std::string forth;
    std::string back;
    for (auto setting = settings.begin(); setting != settings.end(); ++setting) forth += *setting;
    for (auto setting = settings.rbegin(); setting != settings.rend(); ++setting) back += *setting;
    const std::string edited = R"(height="1800")";
    back.replace(back.find(edited), edited.size(), R"(height="1801")");
    write("a.xml", "<graph_settings version=\"1\">" + forth + "</graph_settings>");
    write("b.xml", "<graph_settings version=\"1\">" + back + "</graph_settings>");
    const ToolRun result = run({"diff", "a.xml", "b.xml"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.out.find("settings:1800:node_0:main\n  ~ height 1800 -> 1801  "), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("\n1 difference: 1 changed\n"), std::string::npos);
}

TEST_F(DiffTest, ColoursOnTerminalsOnly)
{
    addEditedSettings();
    const std::vector<std::string> arguments = {"diff", "settings.xml", "edited.xml"};
    const std::string plain = run(arguments).out;
    EXPECT_EQ(plain.find('\033'), std::string::npos);

    int terminal = -1;
    int toolSide = -1;
    char name[64] = {};
    ASSERT_EQ(openpty(&terminal, &toolSide, name, nullptr, nullptr), 0);
    EXPECT_EQ(runInto(name, arguments).exitCode, 1);
    close(toolSide);
    std::string shown;
    char piece[4096];
    for (ssize_t got = 0; (got = ::read(terminal, piece, sizeof piece)) > 0;)
        shown.append(piece, static_cast<size_t>(got));
    close(terminal);
    EXPECT_NE(shown.find("\033[33m  ~ width 4208 -> 4200\033[0m"), std::string::npos) << shown;
    EXPECT_NE(shown.find("\033[31m  - preview_sink"), std::string::npos) << shown;
    EXPECT_NE(shown.find("\033[32m  + settings:8"), std::string::npos) << shown;

    EXPECT_NE(run({"diff", "--color", "always", "settings.xml", "edited.xml"}).out.find("\033[33m"), std::string::npos);
    EXPECT_EQ(run({"diff", "--color", "always", "--format", "json", "settings.xml", "edited.xml"}).out.find('\033'),
              std::string::npos);
}

TEST_F(DiffTest, ShowsNothingThatSteersATerminal)
{
    write("a.xml", "<graph_settings version=\"1\"><settings key=\"1\" id=\"1\" description=\"a\"/></graph_settings>");
    write("b.xml",
          "<graph_settings version=\"1\"><settings key=\"1\" id=\"1\" description=\"&#x9b;&#10;b\"/></graph_settings>");
    const ToolRun result = run({"diff", "a.xml", "b.xml"});
    EXPECT_NE(result.out.find(R"(  ~ description "a" -> "\xc2\x9b\nb")"), std::string::npos) << result.out;
}

TEST_F(DiffTest, RefusesNumbersOfFilesAndKeysThatMakeNoSense)
{
    expectUsageError({"settings.xml"}, "1 file and 0 keys; expected a second file, or --key twice");
    expectUsageError({"settings.xml", "--key", "1"}, "1 file and 1 key; expected a second file, or --key twice");
    expectUsageError({"settings.xml", "--key", "1", "--key", "2", "--key", "3"},
                     "expected a second file, or --key twice");
    expectUsageError({"settings.xml", "settings.xml", "--key", "1", "--key", "2", "--key", "3"},
                     "2 files and 3 keys; expected --key once or twice, one for each file");
    expectUsageError({"descriptor.xml", "settings.xml", "descriptor.xml", "settings.xml", "--key", "1"},
                     "4 files and 1 key; expected two files, or --built");
    expectUsageError({"--built", "descriptor.xml", "settings.xml"},
                     "--built with 2 files and 0 keys; expected DESCRIPTOR");
    expectUsageError({"--built", "descriptor.xml", "settings.xml", "--key", "1"},
                     "expected DESCRIPTOR SETTINGS with --key");
    expectUsageError({"--built", "descriptor.xml", "settings.xml", "descriptor.xml", "--key", "1"}, "with 3 files");
    expectUsageError({"--built", "descriptor.xml", "settings.xml", "descriptor.xml", "settings.xml"}, "and 0 keys");
}

TEST_F(DiffTest, NamesTheKeysNextToOneThatIsMissing)
{
    const ToolRun result = run({"diff", "settings.xml", "--key", "1", "--key", "9"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err,
              "settings.xml: error[no-match]: no setting has the key 9; expected a key of the file, which are "
              "1, 2, 3, 4, 5, 6, 7\n");

    addExample("kva6");
    const ToolRun near =
        run({"diff", "--built", "kva6_descriptor.xml", "kva6_settings.xml", "--key", "60100", "--key", "60199"});
    EXPECT_EQ(near.exitCode, 3);
    EXPECT_NE(
        near.err.find("no setting has the key 60199; expected a key of the file, the nearest are 60200, 60201, 60202, "
                      "60203, 60204, 60205, 60206, 60207\n"),
        std::string::npos)
        << near.err;
}

TEST_F(DiffTest, AsksWhichSettingWhenSeveralHaveTheKey)
{
    write("twice.xml", "<graph_settings version=\"1\">\n<settings key=\"1\"/>\n<settings key=\"1\"/></graph_settings>");
    const ToolRun result = run({"diff", "twice.xml", "twice.xml", "--key", "1"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.err.find("twice.xml:3:1: error[ambiguous]: 2 settings have the key 1; expected one"),
              std::string::npos)
        << result.err;
}

TEST_F(DiffTest, RefusesFilesOfTwoKinds)
{
    const ToolRun result = run({"diff", "descriptor.xml", "settings.xml"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(
        result.err.find("settings.xml:3:1: error[root-element]: the document's element is 'graph_settings'; expected "
                        "'graph_descriptor'"),
        std::string::npos)
        << result.err;
    const ToolRun keyed = run({"diff", "descriptor.xml", "descriptor.xml", "--key", "1"});
    EXPECT_EQ(keyed.exitCode, 3);
    EXPECT_NE(keyed.err.find("expected 'graph_settings'"), std::string::npos) << keyed.err;
}

TEST_F(DiffTest, ReportsFilesThatItCannotRead)
{
    const ToolRun missing = run({"diff", "settings.xml", "missing.xml"});
    EXPECT_EQ(missing.exitCode, 3);
    EXPECT_EQ(missing.out, "");
    EXPECT_NE(missing.err.find("missing.xml: error[cannot-read]:"), std::string::npos) << missing.err;

    const ToolRun malformed = run({"diff", "settings.xml", "truncated.xml"});
    EXPECT_EQ(malformed.exitCode, 3);
    EXPECT_EQ(malformed.out, "");
    EXPECT_NE(malformed.err.find("truncated.xml:"), std::string::npos) << malformed.err;
}

TEST_F(DiffTest, ReportsGraphsThatCannotBeBuilt)
{
    // Setting 4 asks for a graph that there is none of.
    const ToolRun result = run({"diff", "--built", "descriptor.xml", "settings.xml", "--key", "1", "--key", "4"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("error[build-failed]: building setting 4"), std::string::npos) << result.err;
}

} // namespace
