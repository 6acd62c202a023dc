// SPDX-License-Identifier: Apache-2.0
#include "explain/ExplainRenderer.h"

#include "Origins.h"
#include "Text.h"
#include "TextTable.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/tree/ItemUID.h>

#include <algorithm>
#include <optional>

namespace NuxoTool {

namespace {

constexpr size_t kWidestValue = 40; // in tables of several items

std::optional<Location> placeOf(Session& session, const NUXO::ItemEntry* source)
{
    Location location;
    if (source == nullptr || session.locator.locate(*source, location) != StatusOk) return std::nullopt;
    return location;
}

// "wins" for the last that wrote, whatever was refused behind it. Of a node made in two steps both remain.
const char* effectOf(const TracedItem& item, const Step& step)
{
    if (item.isNode()) return "made";
    if (&step == item.winner()) return "wins";
    return step.isApplied ? "overwritten" : "refused";
}

// What options lists govern is stored as a number and named by a name.
std::string keyNameOf(const std::string& number)
{
    return NUXO::ItemUID::key2str(static_cast<uint32_t>(std::stoul(number)));
}

std::string valueCell(const TracedItem& item, const Step& step, size_t widest)
{
    if (item.isNode()) return "(node)";
    if (item.key == NUXO_KEY_ATTRIBUTE && item.isInteger()) return printable(keyNameOf(step.value));
    std::string text = item.isInteger() ? step.value : NuxoTool::quoted(step.value);
    if (displayWidth(text) <= widest) return text;
    size_t end = 0;
    for (size_t shown = 0; shown < widest; ++shown) end += std::max<size_t>(utf8Length(text, end), 1);
    return text.substr(0, end) + "...";
}

std::string excerptOf(Session& session, const TracedItem& item)
{
    const std::optional<Location> place = placeOf(session, item.source());
    std::string line;
    if (!place || session.locator.lineText(place->file, place->line, line) != StatusOk) return "";
    const Excerpt excerpt = makeExcerpt(line, place->column);
    return '\n' + originText(place) + ":\n    " + excerpt.line + "\n    " + excerpt.caretLine + '\n';
}

JsonValue jsonValue(const TracedItem& item, const std::string& value)
{
    if (item.isNode()) return nullptr;
    if (item.key == NUXO_KEY_ATTRIBUTE && item.isInteger()) return keyNameOf(value);
    return item.isInteger() ? JsonValue(std::stol(value)) : JsonValue(value);
}

JsonValue jsonStep(Session& session, const TracedItem& item, const Step& step)
{
    JsonValue json;
    json["step"] = stepName(step.kind);
    json["effect"] = effectOf(item, step);
    json["value"] = jsonValue(item, step.value);
    json["where"] = jsonLocation(placeOf(session, step.source));
    json["note"] = jsonOrNull(step.note);
    return json;
}

} // namespace

std::string renderExplained(Session& session, const std::vector<ExplainedItem>& items)
{
    if (items.empty()) return "";
    const size_t widest = items.size() == 1 ? std::string::npos : kWidestValue;
    TextTable table({{"PATH"}, {"STEP"}, {"EFFECT"}, {"WHERE"}, {"VALUE"}, {"NOTE"}});
    for (const ExplainedItem& each : items) {
        for (const Step& step : each.item->steps) {
            table.add({printable(each.path), stepName(step.kind), effectOf(*each.item, step),
                       originText(placeOf(session, step.source)), valueCell(*each.item, step, widest),
                       orDash(printable(step.note))});
        }
    }
    return table.text() + (items.size() == 1 ? excerptOf(session, *items.front().item) : "");
}

JsonValue jsonExplained(Session& session, const std::vector<ExplainedItem>& items)
{
    JsonValue list = JsonValue::array();
    for (const ExplainedItem& each : items) {
        JsonValue json;
        json["path"] = each.path;
        json["kind"] = each.item->isNode() ? "node" : "attribute";
        json["value"] = jsonValue(*each.item, each.item->valueText());
        json["steps"] = JsonValue::array();
        for (const Step& step : each.item->steps) json["steps"].push_back(jsonStep(session, *each.item, step));
        list.push_back(json);
    }
    return list;
}

} // namespace NuxoTool
