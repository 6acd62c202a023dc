// SPDX-License-Identifier: Apache-2.0
#include "GraphRequest.h"
#include "JsonRenderer.h"
#include "Origins.h"
#include "Text.h"
#include "TextTable.h"
#include "TreeView.h"
#include "verbs/Verbs.h"

#include <nuxo/NuxoStatus.h>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

std::string integerText(const IGraphConfig& node, uint32_t key)
{
    int value = 0;
    return node.getValue(key, value) == StatusOk ? std::to_string(value) : "-";
}

std::vector<ChildView> sizedChildren(TreeView& view, const GraphConfigNode& settings)
{
    std::vector<ChildView> sized;
    for (const ChildView& child : view.children(settings)) {
        if (!dimensionsOf(*child.node).empty()) sized.push_back(child);
    }
    return sized;
}

std::string sizesText(TreeView& view, const GraphConfigNode& settings)
{
    std::string text;
    for (const ChildView& child : sizedChildren(view, settings)) {
        text += (text.empty() ? "" : ", ") + printable(child.name) + ' ' + printable(dimensionsOf(*child.node));
    }
    return text;
}

std::string modeOf(const IGraphConfig& settings)
{
    const IGraphConfig* const sensor = settings.getDescendant(NUXO_KEY_SENSOR);
    return sensor == nullptr ? "" : textOf(*sensor, NUXO_KEY_MODE_ID);
}

std::vector<std::string> rowOf(TreeView& view, NUXO::SourceLocator& locator, const GraphConfigNode& settings)
{
    const std::string mode = printable(modeOf(settings));
    return {integerText(settings, NUXO_KEY_KEY), integerText(settings, NUXO_KEY_ID), mode.empty() ? "-" : mode,
            originText(originOf(locator, settings)), sizesText(view, settings)};
}

std::string renderMatches(Session& session, const std::vector<const GraphConfigNode*>& matches)
{
    if (matches.empty()) return "";
    TreeView view;
    TextTable table({{"KEY"}, {"GRAPH"}, {"MODE"}, {"WHERE"}, {"SIZES"}});
    for (const GraphConfigNode* const settings : matches) table.add(rowOf(view, session.locator, *settings));
    return table.text();
}

JsonValue jsonMatch(TreeView& view, NUXO::SourceLocator& locator, const GraphConfigNode& settings)
{
    JsonValue json;
    JsonValue attributes = JsonValue::object();
    for (const AttributeView& attribute : view.attributes(settings)) {
        if (!attribute.isFirst) continue;
        attributes[attribute.name] = attribute.isInteger ? JsonValue(attribute.integer) : JsonValue(attribute.text);
    }
    json["attributes"] = attributes;
    const std::string mode = modeOf(settings);
    if (!mode.empty()) json["mode"] = mode;
    JsonValue sizes = JsonValue::array();
    for (const ChildView& child : sizedChildren(view, settings)) {
        JsonValue size;
        size["name"] = child.name;
        int value = 0;
        if (child.node->getValue(NUXO_KEY_WIDTH, value) == StatusOk) size["width"] = value;
        if (child.node->getValue(NUXO_KEY_HEIGHT, value) == StatusOk) size["height"] = value;
        const std::string format = textOf(*child.node, NUXO_KEY_FORMAT);
        if (!format.empty()) size["format"] = format;
        sizes.push_back(size);
    }
    json["sizes"] = sizes;
    json["where"] = jsonLocation(originOf(locator, settings));
    return json;
}

std::string renderMatchesJson(Session& session, const std::vector<const GraphConfigNode*>& matches)
{
    TreeView view;
    JsonValue document = jsonDocument("settings");
    document["descriptor"] = session.arguments.descriptor;
    document["file"] = session.arguments.settings;
    JsonValue list = JsonValue::array();
    for (const GraphConfigNode* const settings : matches) list.push_back(jsonMatch(view, session.locator, *settings));
    document["settings"] = list;
    return jsonText(document);
}

} // namespace

void runQuery(Session& session)
{
    GraphRequest request(session);
    if (!request.isReady()) return;
    std::vector<const GraphConfigNode*> matches;
    for (IGraphConfig* const match : request.findSettings()) {
        matches.push_back(dynamic_cast<const GraphConfigNode*>(match));
    }
    session.output = session.arguments.format == Format::Json ? renderMatchesJson(session, matches)
                                                              : renderMatches(session, matches);
}

} // namespace NuxoTool
