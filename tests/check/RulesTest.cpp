// SPDX-License-Identifier: Apache-2.0
#include "CheckTest.h"

#include <algorithm>

using nlohmann::json;

namespace {

// Each file of rules/ has edits that make a rule fire, and near misses that must not.
class RulesTest : public CheckTest, public testing::WithParamInterface<std::string> {
protected:
    json edits(const char* kind) const
    {
        const json description = readJson("rules/" + GetParam() + ".json");
        if (!description.is_object() || description.value(kind, json::array()).empty()) {
            ADD_FAILURE() << "rules/" << GetParam() << ".json has no \"" << kind << '"';
            return json::array();
        }
        return description[kind];
    }
};

std::string testName(const testing::TestParamInfo<std::string>& info)
{
    std::string name = info.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

TEST_P(RulesTest, FiresOnceAtTheFault)
{
    for (const json& edit : edits("fires")) {
        const Fault fault(edit, GetParam());
        SCOPED_TRACE(fault.name);
        expectFound(fault);
    }
}

TEST_P(RulesTest, KeepsQuietOnNearMisses)
{
    for (const json& edit : edits("passes")) {
        const Fault fault(edit, GetParam());
        SCOPED_TRACE(fault.name);
        expectNothing(fault);
    }
}

TEST_P(RulesTest, CanBeExplained)
{
    const ToolRun result = run({"check", "--explain", GetParam()});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out.find(GetParam() + " ("), 0U) << result.out;
}

INSTANTIATE_TEST_SUITE_P(All, RulesTest, testing::ValuesIn(jsonFilesIn("rules")), testName);

class RuleListTest : public CheckTest {};

// No edit of a text makes these fire; the tests of the verb do.
const std::vector<std::string> kOfFilesAsAWhole = {"cannot-read", "damaged",        "file-type",     "parse",
                                                   "too-large",   "too-many-names", "trailing-bytes"};

TEST_F(RuleListTest, NamesTheRulesThatHaveFixturesAndNoOthers)
{
    const ToolRun result = run({"check", "--list-rules", "--format", "json"});
    std::vector<std::string> rules;
    const json list = json::parse(result.out, nullptr, false);
    ASSERT_TRUE(list.is_object()) << result.out << result.err;
    for (const json& rule : list["rules"]) rules.push_back(rule["rule"]);
    std::sort(rules.begin(), rules.end());
    std::vector<std::string> expected = jsonFilesIn("rules");
    expected.insert(expected.end(), kOfFilesAsAWhole.begin(), kOfFilesAsAWhole.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(rules, expected);
}

} // namespace
