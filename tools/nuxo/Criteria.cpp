// SPDX-License-Identifier: Apache-2.0
#include "Criteria.h"

#include "LibraryLog.h"
#include "Suggestion.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/tree/NodeIterator.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <set>
#include <string_view>

namespace NuxoTool {

using NUXO::IGraphConfig;
using NUXO::ItemUID;

namespace {

constexpr size_t kListedValues = 8;

// Whether integers compare equal to this text: decimal digits without leading zeros, within 32 bits.
bool isDecimal(const std::string& text)
{
    constexpr size_t longest = 11;
    if (text.empty() || text.size() > longest) return false;
    const long long value = std::strtoll(text.c_str(), nullptr, 10);
    const bool fits = value >= std::numeric_limits<int32_t>::min() && value <= std::numeric_limits<int32_t>::max();
    return fits && std::to_string(value) == text;
}

void addCriterion(const std::string& criterion, Criteria& criteria, Findings& findings)
{
    const size_t equals = criterion.find('=');
    if (equals == std::string::npos || equals == 0) {
        findings.usageError("bad-criterion", {criterion.empty() ? " " : criterion, 1, criterion.size()},
                            "'" + criterion +
                                "' is no criterion; expected path=value, for example img_sink:width=1920");
        return;
    }
    const std::string path = criterion.substr(0, equals);
    const std::string value = criterion.substr(equals + 1);
    if (!checkNames(criterion, path, "bad-criterion", findings)) return;

    const ItemUID uid(path);
    if (ItemUID::isInteger(uid.back()) && !isDecimal(value)) {
        findings.usageError("bad-criterion", {criterion, equals + 2, value.size()},
                            "'" + value + "' never equals an integer; expected decimal digits without leading zeros");
        return;
    }
    if (!criteria.items.emplace(uid, value).second) {
        findings.usageError("bad-criterion", {criterion, 1, path.size()},
                            "'" + path + "' has a value already; expected each path once");
    }
}

std::string valueAt(const IGraphConfig& node, const ItemUID& path)
{
    int integer = 0;
    if (node.getValue(path, integer) == StatusOk) return std::to_string(integer);
    std::string text;
    return node.getValue(path, text) == StatusOk ? text : "";
}

// Integers by value, ahead of texts in alphabetical order.
struct ValueOrder {
    bool operator()(const std::string& a, const std::string& b) const
    {
        if (isDecimal(a) != isDecimal(b)) return isDecimal(a);
        return isDecimal(a) ? std::strtoll(a.c_str(), nullptr, 10) < std::strtoll(b.c_str(), nullptr, 10) : a < b;
    }
};
using Values = std::set<std::string, ValueOrder>;

std::string joined(const Values& values)
{
    std::string text;
    size_t count = 0;
    for (const std::string& value : values) {
        if (count == kListedValues) return text + ", ...";
        text += (count == 0 ? "" : ", ") + value;
        ++count;
    }
    return text;
}

std::string pathText(const ItemUID& path)
{
    std::string text;
    for (size_t i = 0; i < path.size(); ++i) text += (i == 0 ? "" : ":") + std::string(ItemUID::key2str(path[i]));
    return text;
}

// Some warnings of the library start with the word, which the finding has anyway.
std::string withoutLabel(const std::string& text)
{
    constexpr std::string_view label = "WARNING: ";
    return text.compare(0, label.size(), label) == 0 ? text.substr(label.size()) : text;
}

void noteValues(const NUXO::GraphConfigNode& settingsRoot, const Location& where, const ItemUID& path,
                Findings& findings)
{
    Values values;
    NUXO::NodeIterator cursor(&settingsRoot);
    while (const IGraphConfig* const settings = cursor.iterateByUid(NUXO_KEY_SETTINGS)) {
        const std::string value = valueAt(*settings, path);
        if (!value.empty()) values.insert(value);
    }
    const std::string held = values.empty() ? "is in no setting" : "holds " + joined(values);
    findings.note(where, pathText(path) + ' ' + held);
}

void reportNoMatch(Session& session, const NUXO::GraphConfigNode& settingsRoot, const Criteria& criteria)
{
    const Location where = inFile(session.arguments.settings);
    const std::string found = criteria.text.empty() ? "there is no setting" : "no setting matches " + criteria.text;
    session.findings.error("no-match", where, found + "; expected at least one");
    for (const auto& [path, value] : criteria.items) noteValues(settingsRoot, where, path, session.findings);
}

} // namespace

bool checkNames(const std::string& argument, const std::string& path, const char* rule, Findings& findings)
{
    bool known = true;
    for (size_t start = 0; start <= path.size();) {
        const size_t end = std::min(path.find(':', start), path.size());
        const std::string name = path.substr(start, end - start);
        if (name.empty()) {
            findings.usageError(rule, {argument, start + 1, 1}, "empty name in the path; expected names joined by ':'");
            known = false;
        } else if (ItemUID::str2key(name) == NUXO_KEY_NA) {
            findings.usageError("unknown-name", {argument, start + 1, name.size()},
                                "'" + name + "' names no element or attribute; expected a name of the files" +
                                    suggestionFor(name));
            known = false;
        }
        start = end + 1;
    }
    return known;
}

Criteria readCriteria(Session& session)
{
    Criteria criteria;
    std::vector<std::string> texts = session.arguments.criteria;
    if (session.arguments.key) texts.push_back("key=" + std::to_string(*session.arguments.key));
    for (const std::string& text : texts) {
        addCriterion(text, criteria, session.findings);
        const char* const link = session.arguments.any ? " or " : " and ";
        criteria.text += (criteria.text.empty() ? "" : link) + text;
    }
    return criteria;
}

std::vector<IGraphConfig*> findSettings(Session& session, NUXO::GraphQueryManager& manager,
                                        const NUXO::GraphConfigNode& settingsRoot, const Criteria& criteria)
{
    takeLibraryLog();
    if (manager.validateSettingsAgainstDescriptor() == StatusOk) {
        for (const LogLine& line : takeLibraryLog()) {
            session.findings.warning("version", inFile(session.arguments.settings), withoutLabel(line.text));
        }
    }
    std::vector<IGraphConfig*> matches;
    const bool strict = !session.arguments.any || criteria.items.empty();
    const int status = manager.queryGraphs(criteria.items, matches, strict);
    takeLibraryLog(); // the warnings once more, and that nothing matched
    if (matches.empty() && (status == StatusMissingData || status == StatusOk)) {
        reportNoMatch(session, settingsRoot, criteria);
    } else if (status != StatusOk) {
        session.findings.error("query", inFile(session.arguments.settings),
                               std::string("the query ended with ") + NUXO::statusName(status), ExitCode::Internal);
    }
    return matches;
}

} // namespace NuxoTool
