// SPDX-License-Identifier: Apache-2.0
#include "FlowPicture.h"
#include "draw/Scene.h"

#include <map>

namespace NuxoTool {

namespace {

Scene::Node sceneNode(const Flow& flow, const FlowColumns& columns, size_t index)
{
    const Flow::Node& part = flow.nodes[index];
    const FlowLabel label = flowLabel(flow, columns, index);
    Scene::Node node;
    node.item = part.item;
    node.path = part.fullName();
    node.name = label.name;
    node.kind = kindName(part.kind);
    std::string details;
    for (const std::string& detail : label.details) details += (details.empty() ? "" : " \u00b7 ") + detail;
    node.lines.push_back(details);
    node.lines.insert(node.lines.end(), label.changes.begin(), label.changes.end());
    node.alarm = label.alarm;
    node.isOff = part.isDisabled();
    node.isBypassed = isBypassed(part);
    return node;
}

Scene::Edge sceneEdge(const Flow& flow, const FlowColumns& columns, size_t from, const Flow::Link& link)
{
    Scene::Edge edge;
    edge.from = {from, std::nullopt};
    edge.to = {link.to, std::nullopt};
    edge.label = linkText(link);
    edge.isOff = flow.nodes[from].isDisabled() || flow.nodes[link.to].isDisabled();
    edge.isFeedback = link.isFeedback;
    edge.isOrdering = columns.isOrdering(from, link);
    return edge;
}

} // namespace

Scene sceneOf(const Flow& flow, int stream)
{
    const FlowColumns columns(flow, stream);
    Scene scene;
    scene.name = "stream " + std::to_string(stream);
    scene.stream = stream;
    std::map<std::string, size_t> placeOf;
    for (const std::string& group : columns.groups()) {
        placeOf.emplace(group, scene.clusters.size());
        scene.clusters.push_back({group, {}});
        scene.heads.push_back(columns.headOf(group));
    }
    for (size_t i = 0; i < flow.nodes.size(); ++i) {
        scene.nodes.push_back(sceneNode(flow, columns, i));
        if (columns.contains(i)) scene.nodes.back().cluster = placeOf.at(flow.nodes[i].group);
        for (const Flow::Link& link : flow.nodes[i].links) scene.edges.push_back(sceneEdge(flow, columns, i, link));
    }
    return scene;
}

} // namespace NuxoTool
