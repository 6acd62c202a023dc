// SPDX-License-Identifier: Apache-2.0
#include "CheckTest.h"

#include <algorithm>

using nlohmann::json;

namespace {

bool standsAt(const json& finding, const Fault::Place& place)
{
    const json& where = finding["where"];
    return where.is_object() && where["file"] == place.file && where["line"] == place.line &&
           where["column"] == place.column;
}

std::string allTextOf(const json& finding)
{
    std::string text = finding["text"];
    for (const json& note : finding["notes"]) text += '\n' + note["text"].get<std::string>();
    return text;
}

std::string placeText(const Fault::Place& place)
{
    return place.file + ':' + std::to_string(place.line) + ':' + std::to_string(place.column);
}

} // namespace

ToolRun CheckTest::check(const Fault& fault, const std::vector<std::string>& options) const
{
    for (const auto& [file, text] : fault.texts) write(file, text);
    std::vector<std::string> arguments = {"check", fault.descriptor, fault.settings};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.insert(arguments.end(), fault.arguments.begin(), fault.arguments.end());
    return run(arguments);
}

json CheckTest::findingsOf(const Fault& fault) const
{
    const ToolRun result = check(fault, {"--format", "json"});
    const json document = json::parse(result.out, nullptr, false);
    if (document.is_discarded() || result.err != "") {
        ADD_FAILURE() << "no answer: exit code " << result.exitCode << '\n' << result.out << result.err;
        return json::array();
    }
    EXPECT_EQ(result.exitCode, document["errors"].get<int>() > 0 ? 1 : 0);
    return document["findings"];
}

void CheckTest::expectFound(const Fault& fault) const
{
    ASSERT_EQ(fault.trouble, "");
    ASSERT_EQ(fault.places.size(), 1U) << "one ^ says where the finding is expected";
    const Fault::Place& place = fault.places.front();
    const json findings = findingsOf(fault);
    const auto found = std::find_if(findings.begin(), findings.end(), [&](const json& finding) {
        return finding["rule"] == fault.rule && standsAt(finding, place);
    });
    ASSERT_NE(found, findings.end()) << "no finding of " << fault.rule << " at " << placeText(place) << " in\n"
                                     << findings.dump(2);
    EXPECT_EQ((*found)["severity"], fault.severity);
    for (const std::string& part : fault.says) {
        EXPECT_NE(allTextOf(*found).find(part), std::string::npos) << "'" << part << "' is not in\n" << found->dump(2);
    }
    expectOthers(fault, findings, static_cast<size_t>(found - findings.begin()));
}

void CheckTest::expectOthers(const Fault& fault, const json& findings, size_t own) const
{
    for (size_t i = 0; i < findings.size(); ++i) {
        const std::string rule = findings[i]["rule"];
        const bool isExpected = std::find(fault.also.begin(), fault.also.end(), rule) != fault.also.end();
        EXPECT_TRUE(i == own || isExpected) << "not expected:\n" << findings[i].dump(2);
    }
    for (const std::string& rule : fault.also) {
        EXPECT_TRUE(
            std::any_of(findings.begin(), findings.end(), [&rule](const json& each) { return each["rule"] == rule; }))
            << "no finding of " << rule;
    }
}

void CheckTest::expectNothing(const Fault& fault) const
{
    ASSERT_EQ(fault.trouble, "");
    EXPECT_EQ(fault.places.size(), 0U) << "nothing is expected, so no ^";
    const json findings = findingsOf(fault);
    EXPECT_TRUE(findings.empty()) << findings.dump(2);
}
