// SPDX-License-Identifier: Apache-2.0
#include "ProgramGroups.h"

#include "PortView.h"
#include "Suggestion.h"
#include "TreeView.h"

#include <nuxo/isp/IspUtils.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

std::set<int> streamsOf(const GraphConfigNode& graph)
{
    std::set<int> streams;
    TreeView view;
    for (const ChildView& child : view.children(graph)) {
        if (const std::optional<int> stream = streamOf(*child.node)) streams.insert(*stream);
    }
    return streams;
}

std::string listed(const std::set<int>& numbers)
{
    std::string text;
    for (const int number : numbers) text += (text.empty() ? "" : ", ") + std::to_string(number);
    return text;
}

} // namespace

bool ProgramGroups::areLinked() const
{
    const auto hasLink = [](const GraphConfigNode* group) { return !linksOf(*group).empty(); };
    return version > NUXO::GdfVersionKVA5 || std::any_of(nodes.begin(), nodes.end(), hasLink);
}

ProgramGroups programGroupsOf(const GraphConfigNode& graph)
{
    ProgramGroups groups;
    const std::shared_ptr<NUXO::IspUtils> generation = NUXO::IspUtils::Factory(&graph);
    if (generation != nullptr) groups.version = generation->getKvaVersion();
    if (groups.version == NUXO::GdfVersionKVA7) groups.type = NUXO_KEY_COMPUTE_BLOCK;
    groups.nodes = childrenOfType(graph, groups.type);
    return groups;
}

std::vector<const GraphConfigNode*> linksOf(const GraphConfigNode& group)
{
    std::vector<const GraphConfigNode*> links;
    for (auto it = group.begin(); it != group.end(); ++it) {
        const auto* const child = dynamic_cast<const GraphConfigNode*>(it->second);
        if (child == nullptr) continue;
        if (it->first == NUXO_KEY_KLINK || textOf(*child, NUXO_KEY_TYPE) == "klink") links.push_back(child);
    }
    return links;
}

std::optional<int> streamOf(const IGraphConfig& node)
{
    return optionalInteger(node, NUXO_KEY_STREAM_ID);
}

bool checkStream(Session& session, const GraphConfigNode& graph)
{
    const std::optional<int32_t>& stream = session.arguments.stream;
    if (!stream) return true;
    const std::set<int> streams = streamsOf(graph);
    if (streams.count(*stream) > 0) return true;
    const std::string number = std::to_string(*stream);
    const std::string expected = streams.empty() ? "a graph with streams" : "one of " + listed(streams);
    session.findings.usageError("unknown-stream", {"--stream " + number, 10, number.size()},
                                "no node of the graph is in stream " + number + "; expected " + expected);
    return false;
}

bool checkGroup(Session& session, const ProgramGroups& groups)
{
    const std::optional<std::string>& name = session.arguments.group;
    if (!name) return true;
    std::vector<std::string> names;
    for (const GraphConfigNode* const group : groups.nodes) names.push_back(nameOf(*group));
    if (std::find(names.begin(), names.end(), *name) != names.end()) return true;
    session.findings.usageError("unknown-group", {"--group " + *name, 9, name->size()},
                                "'" + *name + "' is no program group of the graph" +
                                    "; expected one that nuxo contexts lists" + suggestionFor(*name, names));
    return false;
}

} // namespace NuxoTool
