// SPDX-License-Identifier: Apache-2.0
#include "GraphVerbTest.h"

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

class ExplainTest : public GraphVerbTest {
protected:
    ExplainTest() : GraphVerbTest("explain") {}

    TableRows steps(const std::string& key, const std::string& path) const
    {
        const ToolRun result = ask("explained", key, {path});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        const size_t blankLine = result.out.find("\n\n"); // ahead of the source line of a single winner
        return rowsOf(result.out.substr(0, std::min(blankLine, result.out.size())));
    }

    // "step effect where value", one a step.
    std::vector<std::string> history(const std::string& key, const std::string& path) const
    {
        std::vector<std::string> lines;
        for (const auto& row : steps(key, path)) {
            lines.push_back(row.at("STEP") + ' ' + row.at("EFFECT") + ' ' + row.at("WHERE") + ' ' + row.at("VALUE"));
        }
        return lines;
    }

    std::string lastNote(const std::string& key, const std::string& path) const
    {
        const TableRows rows = steps(key, path);
        return rows.empty() ? "" : rows.back().at("NOTE");
    }

    void expectUsageError(const std::string& path, const std::string& says) const
    {
        const ToolRun result = ask("explained", "1", {path});
        EXPECT_EQ(result.exitCode, 2) << path;
        EXPECT_EQ(result.out, "") << path;
        EXPECT_NE(result.err.find(says), std::string::npos) << result.err;
    }
};

using Lines = std::vector<std::string>;

TEST_F(ExplainTest, ShowsEverythingThatHadASayInAWholeGraph)
{
    expectAnswer("explained", "1", "explain_1.txt", {"."});
}

TEST_F(ExplainTest, TellsWhyPortsAreDisabled)
{
    expectAnswer("explained", "2", "explain_2.txt", {""});
}

TEST_F(ExplainTest, ShowsTheSourceLineOfASingleWinner)
{
    expectAnswer("explained", "1", "explain_1_peer.txt", {"back:main:peer"});
}

TEST_F(ExplainTest, WritesJson)
{
    expectAnswer("explained", "1", "explain_1_input.json", {"front:input", "--format", "json"});
}

TEST_F(ExplainTest, ADescriptorLineThatNothingChangesWins)
{
    EXPECT_EQ(history("1", "sensor:port_0:id"), Lines{"descriptor wins explained.xml:6:33 0"});
}

TEST_F(ExplainTest, ABaseNodeGivesWayToADifference)
{
    EXPECT_EQ(history("1", "front:pg_id"),
              (Lines{"base node overwritten explained.xml:9:64 187", "difference wins explained.xml:25:39 188"}));
    EXPECT_EQ(history("1", "back:pg_id"), Lines{"base node wins explained.xml:9:64 187"});
    EXPECT_EQ(history("1", "front:stream_id"), Lines{"difference wins explained.xml:23:43 1"});
}

TEST_F(ExplainTest, TypeAndNameOfANodeReplaceThoseOfItsBase)
{
    EXPECT_EQ(history("2", "back:type"), (Lines{"base node overwritten explained.xml:9:9 \"base_node\"",
                                                "base node wins explained.xml:9:38 \"program_group\""}));
    EXPECT_EQ(history("2", "back:name"), (Lines{"base node overwritten explained.xml:9:20 \"block_base\"",
                                                "descriptor wins explained.xml:28:15 \"back\""}));
}

TEST_F(ExplainTest, SettingsWinOverTheDescriptorExceptForNames)
{
    EXPECT_EQ(history("1", "front:tuning_mode"),
              (Lines{"base node overwritten explained.xml:9:88 1", "settings wins explained_settings.xml:6:31 3"}));
    EXPECT_EQ(steps("1", "front:name").back().at("EFFECT"), "refused");
    EXPECT_EQ(lastNote("1", "front:name"), "'name' is never overwritten");
}

// The settings of front come first, as the descriptor names it first: what back pushes comes later.
TEST_F(ExplainTest, APushWinsOverSettingsOfAPortThatWasMergedBefore)
{
    EXPECT_EQ(history("1", "front:feedback:width"), (Lines{"settings overwritten explained_settings.xml:8:23 320",
                                                           "push wins explained_settings.xml:15:19 640"}));
    EXPECT_EQ(lastNote("1", "front:feedback:width"), "from back:side");
}

TEST_F(ExplainTest, SettingsWinOverAPushThatCameBefore)
{
    EXPECT_EQ(history("1", "front:input:width"), (Lines{"push overwritten explained_settings.xml:5:42 2104",
                                                        "settings wins explained_settings.xml:7:20 2100"}));
    EXPECT_EQ(history("1", "front:input:format"), Lines{"push wins explained_settings.xml:5:69 \"GRBG10\""});
}

TEST_F(ExplainTest, APushGivesASinkOnlyWhatItLacks)
{
    EXPECT_EQ(history("1", "side_sink:width"), Lines{"push wins explained_settings.xml:10:19 640"});
    EXPECT_EQ(history("1", "side_sink:format"), (Lines{"descriptor wins explained.xml:34:32 \"NV12\"",
                                                       "push refused explained_settings.xml:10:44 \"YUY2\""}));
    EXPECT_EQ(lastNote("1", "side_sink:format"), "from front:side; has its own");
}

TEST_F(ExplainTest, AnOverrideWinsOverItsTarget)
{
    EXPECT_EQ(history("1", "front:scale:enabled"),
              (Lines{"base node overwritten explained.xml:20:50 1", "override wins explained.xml:53:49 0"}));
    EXPECT_EQ(history("1", "back:scaler:psys_frequency"), Lines{"override wins explained.xml:54:56 450"});
}

TEST_F(ExplainTest, AConnectionGivesBothEndsTheirPeer)
{
    EXPECT_EQ(history("1", "front:main:peer"), Lines{"connection wins explained.xml:46:45 \"back:input\""});
    EXPECT_EQ(history("1", "back:input:peer"), Lines{"connection wins explained.xml:46:25 \"front:main\""});
    EXPECT_EQ(history("1", "side_sink:direction"), Lines{"connection wins explained.xml:49:13 0"});
}

TEST_F(ExplainTest, AStreamComesFromTheSourceOfADynamicConnection)
{
    EXPECT_EQ(history("1", "side_sink:stream_id"), Lines{"propagated wins explained.xml:23:43 1"});
    EXPECT_EQ(history("1", "other_sink:stream_id"), Lines{"descriptor wins explained.xml:33:33 9"});
}

TEST_F(ExplainTest, ContextAndContentComeFromTheSourceOfAStaticConnection)
{
    EXPECT_EQ(history("1", "stats_sink:exec_ctx_id"), Lines{"propagated wins explained.xml:24:45 1"});
    EXPECT_EQ(history("1", "stats_sink:content_type"), Lines{"propagated wins explained.xml:26:46 \"frame_data\""});
}

// Static connections set an attribute that the sink has, which takes an option for the value.
TEST_F(ExplainTest, AnOptionAllowsAStaticConnectionAnotherValueAndIsApplied)
{
    EXPECT_EQ(history("1", "meta_sink:exec_ctx_id"),
              (Lines{"descriptor overwritten explained.xml:37:32 7", "propagated wins explained.xml:24:45 1"}));
    EXPECT_EQ(history("1", "back:tuning_mode"),
              (Lines{"base node overwritten explained.xml:9:88 1", "option wins explained.xml:39:50 5"}));
    EXPECT_EQ(lastNote("1", "back:tuning_mode"), "for exec_ctx_id=1 of meta_sink");
    EXPECT_EQ(history("1", "fixed_sink:exec_ctx_id"),
              (Lines{"descriptor wins explained.xml:36:33 8", "propagated refused explained.xml:30:45 2"}));
}

// front's main port takes NV12, for which its options list has an entry, but merging settings does not obey lists.
TEST_F(ExplainTest, SettingsDoNotApplyOptions)
{
    for (const auto& row : rowsOf(ask("explained", "1", {"front"}).out)) {
        EXPECT_NE(row.at("STEP"), "option") << row.at("PATH");
    }
}

TEST_F(ExplainTest, AModeWinsOverTheDefaultsOfAllModes)
{
    EXPECT_EQ(history("1", "sensor:fps"), (Lines{"mode defaults overwritten explained_settings.xml:37:19 30",
                                                 "sensor mode wins explained_settings.xml:39:42 60"}));
    EXPECT_EQ(history("2", "sensor:fps"), Lines{"mode defaults wins explained_settings.xml:37:19 30"});
    EXPECT_EQ(history("2", "sensor:pixel_array:input:width"),
              Lines{"sensor mode wins explained_settings.xml:38:47 4208"});
}

TEST_F(ExplainTest, ADisabledPortPointsAtWhatDisablesIt)
{
    EXPECT_EQ(history("2", "sensor:port_0:enabled"), Lines{"disabled port wins explained_settings.xml:23:20 0"});
    EXPECT_EQ(lastNote("2", "sensor:port_0:enabled"), "its peer front:input is disabled");
    EXPECT_EQ(lastNote("2", "back:input:enabled"), "it has no peer: the setting disables front:main");
    EXPECT_EQ(lastNote("2", "back:main:enabled"), "it has no peer: the setting has no main_sink");
    EXPECT_EQ(history("2", "back:feedback:enabled"), Lines{"disabled port wins - 0"});
}

// The library reports the peer that nothing has as an error, and the explanation is shown all the same.
TEST_F(ExplainTest, APeerOfNoNodeDisablesThePort)
{
    const ToolRun result = ask("explained", "4", {"front:side:enabled"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.out.find("disabled port  wins    explained_settings.xml:34:22"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("its peer ghost:input is not in the graph"), std::string::npos) << result.out;
}

TEST_F(ExplainTest, NumbersTellItemsOfOneNameApart)
{
    EXPECT_EQ(history("1", "graph:connection[3]:source"), Lines{"descriptor wins explained.xml:47:25 \"back:side\""});
    EXPECT_EQ(history("1", "graph:connection:source"), history("1", "graph:connection[1]:source"));
    // A name without number means all: 8 connections, each with its ends and 3 of them with `static` as well.
    EXPECT_EQ(steps("1", "graph:connection").size(), 8U * 3U + 3U);
}

TEST_F(ExplainTest, SaysWhichStepOfAPathFailsAndWhatIsNear)
{
    expectUsageError("bakc:main", "has no 'bakc'; expected the name of a node or attribute; did you mean 'back'?\n"
                                  "    bakc:main\n    ^~~~\n");
    expectUsageError("back:main:with",
                     "'back:main' in the graph of setting 1 has no 'with'; expected the name of a node "
                     "or attribute; did you mean 'width'?\n    back:main:with\n              ^~~~\n");
    expectUsageError("back:main:width:x", "error[bad-path]: 'back:main:width' is an attribute; expected the end of the "
                                          "path\n    back:main:width:x\n                   ^~\n");
    expectUsageError("back::width", "empty name in the path");
    expectUsageError("graph:connection[9]", "'graph' in the graph of setting 1 has no 'connection[9]'");
    expectUsageError("\x1b[31m", "has no '\\x1b[31m'");
}

TEST_F(ExplainTest, SaysThatANodeOfTheDescriptorIsLeftOut)
{
    expectUsageError("main_sink", "the graph of setting 1 has no 'main_sink'; the descriptor has it, but no connection "
                                  "that the setting uses leads to it");
}

TEST_F(ExplainTest, NeedsAGraphThatCanBeBuilt)
{
    const ToolRun result = ask("explained", "3", {"."});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("could not find graph with id 8"), std::string::npos) << result.err;
    EXPECT_EQ(ask("explained", "99", {"."}).exitCode, 1);
    EXPECT_EQ(run({"explain", "truncated.xml", "explained_settings.xml", "--key", "1", "."}).exitCode, 1);
    EXPECT_EQ(run({"explain", "nowhere.xml", "explained_settings.xml", "--key", "1", "."}).exitCode, 3);
}

// What `build` says of the attributes below a node, under the paths that `explain` uses.
struct BuiltAttribute {
    Json value;
    Json where;
};
using BuiltAttributes = std::map<std::string, BuiltAttribute>;

std::string numbered(const std::string& path, size_t number)
{
    return number == 0 ? path : path + '[' + std::to_string(number + 1) + ']';
}

void collect(const Json& node, const std::string& prefix, BuiltAttributes& attributes)
{
    for (const auto& member : node.at("attributes").items()) {
        const Json values = member.value().is_array() ? member.value() : Json::array({member.value()});
        const Json& origin = node.at("origins").at(member.key());
        for (size_t i = 0; i < values.size(); ++i) {
            attributes[numbered(prefix + member.key(), i)] = {values[i], origin.is_array() ? origin[i] : origin};
        }
    }
    std::map<std::string, size_t> numbers;
    for (const Json& child : node.value("children", Json::array())) {
        const std::string name = child.at("name");
        collect(child, numbered(prefix + name, numbers[name]++) + ':', attributes);
    }
}

// Connections, overrides and the like are placed more exactly than the graph itself can tell.
bool isPlacedAsInTheGraph(const Json& winner)
{
    const std::string step = winner.at("step");
    const Json& note = winner.at("note");
    if (note == "redirects the connection" || note == "its base_type") return false;
    return step == "descriptor" || step == "base node" || step == "settings" || step == "push" ||
           step == "sensor mode" || step == "mode defaults";
}

// The tool itself compares its account of a graph with the graph, value by value and place by place, and ends with an
// internal error when they differ. Here `build`, which knows nothing of that account, is the judge.
TEST_F(ExplainTest, AgreesWithTheGraphOfEverySettingOfTheExamples)
{
    size_t settings = 0;
    size_t placed = 0;
    for (const std::string generation : {"kva5", "kva6", "kva7"}) {
        addExample(generation);
        const std::string descriptor = generation + "_descriptor.xml";
        const std::string file = generation + "_settings.xml";
        for (const auto& row : rowsOf(run({"query", descriptor, file}).out)) {
            const std::string& key = row.at("KEY");
            const auto askFor = [&](const std::string& verb, const std::string& last) {
                return run({verb, descriptor, file, "--key", key, "--format", "json", last});
            };
            BuiltAttributes built;
            const Json graph = Json::parse(askFor("build", "--origin").out);
            collect(graph.at("graph"), "", built);
            const ToolRun result = askFor("explain", ".");
            ASSERT_EQ(result.exitCode, 0) << key << '\n' << result.err;
            size_t explained = 0;
            const Json document = Json::parse(result.out);
            for (const Json& item : document.at("items")) {
                if (item.at("kind") != "attribute") continue;
                ++explained;
                const auto expected = built.find(item.at("path"));
                ASSERT_NE(expected, built.end()) << key << ' ' << item.at("path");
                EXPECT_EQ(item.at("value"), expected->second.value) << key << ' ' << item.at("path");
                for (const Json& step : item.at("steps")) {
                    if (step.at("effect") != "wins" || !isPlacedAsInTheGraph(step)) continue;
                    ++placed;
                    EXPECT_EQ(step.at("where"), expected->second.where) << key << ' ' << item.at("path");
                }
            }
            EXPECT_EQ(explained, built.size()) << key;
            ++settings;
        }
    }
    EXPECT_EQ(settings, 90U);
    EXPECT_GT(placed, 90U * 100U); // most winners were compared
}

} // namespace
