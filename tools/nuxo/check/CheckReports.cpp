// SPDX-License-Identifier: Apache-2.0
#include "check/CheckReports.h"

#include "FileBytes.h"
#include "JsonRenderer.h"
#include "Text.h"
#include "TextTable.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <tuple>

namespace NuxoTool {

namespace {

using Finding = Findings::Finding;
using Severity = Findings::Severity;

constexpr size_t kLineWidth = 100;

size_t countOf(const Findings& findings, Severity severity)
{
    const auto& all = findings.all();
    return static_cast<size_t>(
        std::count_if(all.begin(), all.end(), [severity](const Finding& each) { return each.severity == severity; }));
}

std::string counted(size_t number, const std::string& what)
{
    return std::to_string(number) + ' ' + what + (number == 1 ? "" : "s");
}

const char* severityName(Severity severity)
{
    switch (severity) {
    case Severity::Error: return "error";
    case Severity::Warning: return "warning";
    case Severity::Note: break;
    }
    return "note";
}

const char* severityName(std::optional<RuleSeverity> severity)
{
    if (!severity) return "off";
    return severity == RuleSeverity::Error ? "error" : "warning";
}

std::optional<Location> placeOf(const Finding& finding)
{
    return finding.where.file.empty() ? std::nullopt : std::optional<Location>(finding.where);
}

// Calls @p add with each finding and the notes that explain it.
template <typename Add> void forEachWithNotes(const Findings& findings, Add add)
{
    const std::vector<Finding>& all = findings.all();
    for (size_t i = 0; i < all.size();) {
        size_t end = i + 1;
        while (end < all.size() && all[end].severity == Severity::Note) ++end;
        add(all[i], std::vector<Finding>(all.begin() + static_cast<ptrdiff_t>(i) + 1,
                                         all.begin() + static_cast<ptrdiff_t>(end)));
        i = end;
    }
}

// What a URI cannot hold is written as "%20".
std::string uriOf(const std::string& path)
{
    constexpr const char* plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~/";
    std::string uri = !path.empty() && path.front() == '/' ? "file://" : "";
    for (const char c : path) {
        if (std::string_view(plain).find(c) != std::string_view::npos) {
            uri += c;
            continue;
        }
        char code[4] = {};
        std::snprintf(code, sizeof code, "%%%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
        uri += code;
    }
    return uri;
}

JsonValue sarifMessage(const std::string& text)
{
    JsonValue message;
    message["text"] = printable(text);
    return message;
}

// Columns count characters there.
class SarifColumns {
public:
    explicit SarifColumns(const Findings& findings)
    {
        std::map<std::string, std::vector<LineColumn>> places;
        for (const Finding& finding : findings.all()) {
            if (finding.where.line > 0)
                places[finding.where.file].push_back({finding.where.line, finding.where.column});
        }
        for (const auto& [file, inFile] : places) {
            const std::vector<uint32_t> columns = characterColumns(file, inFile);
            for (size_t i = 0; i < inFile.size(); ++i)
                mColumns.emplace(std::make_tuple(file, inFile[i].line, inFile[i].column), columns[i]);
        }
    }

    uint32_t of(const Location& where) const { return mColumns.at({where.file, where.line, where.column}); }

private:
    std::map<std::tuple<std::string, uint32_t, uint32_t>, uint32_t> mColumns;
};

JsonValue sarifLocation(const Location& where, const SarifColumns& columns)
{
    JsonValue location;
    location["physicalLocation"]["artifactLocation"]["uri"] = uriOf(where.file);
    if (where.line == 0) return location;
    JsonValue& region = location["physicalLocation"]["region"];
    region["startLine"] = where.line;
    region["startColumn"] = columns.of(where);
    return location;
}

JsonValue sarifRule(const Rule& rule, const RuleSettings& settings)
{
    const std::optional<RuleSeverity> severity = settings.severityOf(rule.id);
    JsonValue json;
    json["id"] = rule.id;
    json["shortDescription"] = sarifMessage(rule.summary);
    json["fullDescription"] = sarifMessage(rule.explanation);
    json["defaultConfiguration"]["enabled"] = severity.has_value();
    json["defaultConfiguration"]["level"] = severity == RuleSeverity::Warning ? "warning" : "error";
    return json;
}

JsonValue sarifResult(const Finding& finding, const std::vector<Finding>& notes, const SarifColumns& columns)
{
    JsonValue result;
    result["ruleId"] = finding.rule;
    const std::vector<Rule>& rules = allRules();
    const auto rule =
        std::find_if(rules.begin(), rules.end(), [&finding](const Rule& each) { return finding.rule == each.id; });
    if (rule != rules.end()) result["ruleIndex"] = rule - rules.begin();
    result["level"] = severityName(finding.severity);
    result["message"] = sarifMessage(finding.text);
    if (!finding.where.file.empty()) result["locations"] = JsonValue::array({sarifLocation(finding.where, columns)});
    for (const Finding& note : notes) {
        if (note.where.file.empty()) continue;
        JsonValue related = sarifLocation(note.where, columns);
        related["message"] = sarifMessage(note.text);
        result["relatedLocations"].push_back(related);
    }
    return result;
}

std::string wrappedParagraph(const std::string& text)
{
    std::string out;
    size_t column = 0;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find(' ', at), text.size());
        const std::string word = text.substr(at, end - at);
        if (column > 0 && column + 1 + word.size() > kLineWidth) {
            out += '\n';
            column = 0;
        }
        out += (column > 0 ? " " : "") + word;
        column += (column > 0 ? 1 : 0) + word.size();
        at = end + 1;
    }
    return out + '\n';
}

// Lines that start with a blank are examples.
std::string wrapped(const std::string& text)
{
    std::string out;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        const std::string line = text.substr(at, end - at);
        out += startsWith(line, " ") ? line + '\n' : wrappedParagraph(line);
        at = end + 1;
    }
    return out;
}

JsonValue jsonRule(const Rule& rule, const RuleSettings& settings)
{
    JsonValue json;
    json["rule"] = rule.id;
    json["severity"] = severityName(settings.severityOf(rule.id));
    json["summary"] = rule.summary;
    json["explanation"] = rule.explanation;
    json["needs"] = rule.needs;
    return json;
}

} // namespace

std::string renderSummary(const CheckSummary& summary, const Findings& findings)
{
    std::string text = "checked " + counted(summary.files, "file");
    if (summary.settings + summary.skipped > 0) text += ", built " + counted(summary.settings, "setting");
    text += ": " + counted(countOf(findings, Severity::Error), "error") + ", " +
            counted(countOf(findings, Severity::Warning), "warning");
    if (summary.skipped > 0)
        text += "; " + counted(summary.skipped, "setting") + " not built because of errors in what " +
                (summary.skipped == 1 ? "it uses" : "they use");
    return text + '\n';
}

std::string renderCheckJson(const CheckSummary& summary, const Findings& findings)
{
    JsonValue document = jsonDocument("check");
    document["files"] = summary.files;
    document["settings"] = summary.settings;
    document["skipped_settings"] = summary.skipped;
    document["errors"] = countOf(findings, Severity::Error);
    document["warnings"] = countOf(findings, Severity::Warning);
    document["findings"] = JsonValue::array();
    forEachWithNotes(findings, [&document](const Finding& finding, const std::vector<Finding>& notes) {
        JsonValue json;
        json["rule"] = finding.rule;
        json["severity"] = severityName(finding.severity);
        json["where"] = jsonLocation(placeOf(finding));
        json["text"] = finding.text;
        json["notes"] = JsonValue::array();
        for (const Finding& note : notes) {
            json["notes"].push_back(JsonValue({{"where", jsonLocation(placeOf(note))}, {"text", note.text}}));
        }
        document["findings"].push_back(json);
    });
    return jsonText(document);
}

std::string renderSarif(const Findings& findings, const RuleSettings& settings)
{
    JsonValue driver;
    driver["name"] = "nuxo";
    driver["version"] = NUXO_TOOL_VERSION;
    driver["rules"] = JsonValue::array();
    for (const Rule& rule : allRules()) driver["rules"].push_back(sarifRule(rule, settings));

    JsonValue run;
    run["tool"]["driver"] = driver;
    run["columnKind"] = "unicodeCodePoints";
    run["results"] = JsonValue::array();
    const SarifColumns columns(findings);
    forEachWithNotes(findings, [&run, &columns](const Finding& finding, const std::vector<Finding>& notes) {
        run["results"].push_back(sarifResult(finding, notes, columns));
    });

    JsonValue document;
    document["$schema"] = "https://json.schemastore.org/sarif-2.1.0.json";
    document["version"] = "2.1.0";
    document["runs"] = JsonValue::array({run});
    return jsonText(document);
}

std::string renderRules(const RuleSettings& settings)
{
    TextTable table({{"RULE"}, {"SEVERITY"}, {"WHAT IT FINDS"}});
    for (const Rule& rule : allRules()) table.add({rule.id, severityName(settings.severityOf(rule.id)), rule.summary});
    return table.text();
}

std::string renderRulesJson(const RuleSettings& settings)
{
    JsonValue document = jsonDocument("rules");
    document["rules"] = JsonValue::array();
    for (const Rule& rule : allRules()) document["rules"].push_back(jsonRule(rule, settings));
    return jsonText(document);
}

std::string renderRule(const Rule& rule, const RuleSettings& settings)
{
    std::string text =
        std::string(rule.id) + " (" + severityName(settings.severityOf(rule.id)) + "): " + rule.summary + "\n\n";
    text += wrapped(rule.explanation);
    if (rule.needs.empty()) return text;
    std::string needs;
    for (const char* const needed : rule.needs) needs += std::string(needs.empty() ? "" : ", ") + needed;
    return text + "\nIt does not run where one of these rules found something: " + needs + ".\n";
}

std::string renderRuleJson(const Rule& rule, const RuleSettings& settings)
{
    JsonValue document = jsonDocument("rule");
    document.update(jsonRule(rule, settings));
    return jsonText(document);
}

} // namespace NuxoTool
