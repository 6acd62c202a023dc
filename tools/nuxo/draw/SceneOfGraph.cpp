// SPDX-License-Identifier: Apache-2.0
#include "draw/Scene.h"

#include <algorithm>
#include <map>

namespace NuxoTool {

using NUXO::GraphConfigNode;

namespace {

// Which inputs of a program group feed which of its outputs.
class Passages {
public:
    explicit Passages(const Flow& flow) : mFlow(flow), mParents(flow.nodes.size())
    {
        for (size_t i = 0; i < flow.nodes.size(); ++i) {
            mIndexOf.emplace(flow.nodes[i].item, i);
            for (const Flow::Link& link : flow.nodes[i].links) {
                const bool isInside = flow.nodes[link.to].group == flow.nodes[i].group;
                if (isInside && !link.isFeedback) mParents[link.to].push_back(i);
            }
        }
    }

    // The ports that frames come from on their way to @p output; none when nothing is known of it.
    std::vector<const GraphConfigNode*> inputsOf(const GraphConfigNode* output) const
    {
        std::vector<const GraphConfigNode*> inputs;
        const auto start = mIndexOf.find(output);
        if (start == mIndexOf.end()) return inputs;
        std::vector<bool> isSeen(mFlow.nodes.size());
        std::vector<size_t> waiting = {start->second};
        while (!waiting.empty()) {
            const size_t index = waiting.back();
            waiting.pop_back();
            if (isSeen[index]) continue;
            isSeen[index] = true;
            if (mFlow.nodes[index].kind == Flow::Kind::InputPort) inputs.push_back(mFlow.nodes[index].item);
            waiting.insert(waiting.end(), mParents[index].begin(), mParents[index].end());
        }
        return inputs;
    }

private:
    const Flow& mFlow;
    std::vector<std::vector<size_t>> mParents;
    std::map<const GraphConfigNode*, size_t> mIndexOf; // only looked up: its order depends on addresses
};

Scene::Port scenePort(const Drawing::Box& box, const Drawing::Port& port, const Passages& passages)
{
    Scene::Port result;
    result.item = port.item;
    result.name = port.name;
    const size_t blank = port.details.find(' '); // between size and format
    if (!port.details.empty()) result.lines.push_back(port.details.substr(0, blank));
    if (blank != std::string::npos) result.lines.push_back(port.details.substr(blank + 1));
    result.isOutput = port.isOutput;
    result.isOff = !port.isEnabled || !box.isEnabled;
    if (!port.isOutput) return result;
    const std::vector<const GraphConfigNode*> inputs = passages.inputsOf(port.item);
    if (inputs.empty()) return result;
    result.inputs.emplace();
    for (size_t i = 0; i < box.ports.size(); ++i) {
        if (std::count(inputs.begin(), inputs.end(), box.ports[i].item) > 0) result.inputs->push_back(i);
    }
    return result;
}

Scene::Node sceneNode(const Drawing::Box& box, const Passages& passages)
{
    Scene::Node node;
    node.item = box.item;
    node.path = box.name;
    node.name = box.name;
    node.kind = box.kind;
    node.isOff = !box.isEnabled;
    node.lines.push_back(node.isOff ? box.kind + " \u00b7 disabled" : box.kind);
    std::string details;
    for (const std::string& detail : box.details) details += (details.empty() ? "" : " \u00b7 ") + detail;
    if (!details.empty()) node.lines.push_back(details);
    for (const Drawing::Port& port : box.ports) node.ports.push_back(scenePort(box, port, passages));
    return node;
}

// Each box gets the place of its cluster, clusters in the order of their numbers.
void addClusters(Scene& scene, const Drawing& drawing)
{
    std::map<int, size_t> placeOf;
    for (const Drawing::Box& box : drawing.boxes) {
        if (box.cluster) placeOf.emplace(*box.cluster, 0);
    }
    for (auto& [number, place] : placeOf) {
        place = scene.clusters.size();
        scene.clusters.push_back({clusterName(drawing, number), {}});
    }
    for (size_t i = 0; i < drawing.boxes.size(); ++i) {
        if (drawing.boxes[i].cluster) scene.nodes[i].cluster = placeOf.at(*drawing.boxes[i].cluster);
    }
}

Scene::End sceneEnd(const Drawing::End& end)
{
    return {end.box, end.port};
}

void addLooseEnd(Scene& scene, const Drawing& drawing, const Drawing::LooseEnd& loose)
{
    Scene::Node missing;
    missing.path = loose.peer;
    missing.name = loose.peer;
    missing.kind = "missing";
    missing.lines.emplace_back("missing");
    const Scene::End there = {scene.nodes.size(), std::nullopt};
    scene.nodes.push_back(missing);

    const bool isOutput = loose.end.port && drawing.boxes[loose.end.box].ports[*loose.end.port].isOutput;
    Scene::Edge edge;
    edge.from = isOutput ? sceneEnd(loose.end) : there;
    edge.to = isOutput ? there : sceneEnd(loose.end);
    edge.isMissing = true;
    scene.edges.push_back(edge);
}

} // namespace

Scene sceneOf(const Drawing& drawing, const Flow& flow)
{
    Scene scene;
    scene.name = "whole graph";
    const Passages passages(flow);
    for (const Drawing::Box& box : drawing.boxes) scene.nodes.push_back(sceneNode(box, passages));
    addClusters(scene, drawing);
    for (const Drawing::Connection& connection : drawing.connections) {
        Scene::Edge edge;
        edge.from = sceneEnd(connection.from);
        edge.to = sceneEnd(connection.to);
        edge.isOff = !connection.isEnabled;
        edge.isFeedback = connection.from.box == connection.to.box;
        scene.edges.push_back(edge);
    }
    for (const Drawing::LooseEnd& loose : drawing.looseEnds) addLooseEnd(scene, drawing, loose);
    return scene;
}

} // namespace NuxoTool
