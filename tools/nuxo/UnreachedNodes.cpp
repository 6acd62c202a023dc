// SPDX-License-Identifier: Apache-2.0
#include "UnreachedNodes.h"

#include "PortView.h"
#include "Text.h"
#include "TreeView.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <set>
#include <utility>

namespace NuxoTool {

using NUXO::GraphCameraUtil;
using NUXO::GraphConfigNode;

namespace {

constexpr const char* kHeadline = "Traversal of inner graph ";
constexpr const char* kStart = "Imaging Node ";
constexpr const char* kEnd = " not reached";

// Inner nodes under the names that the library's log gives them: kernels and routing elements their own, ports with
// their group's.
using Names = std::set<std::string>;
using Parents = std::map<std::string, Names>;

std::string unreachedName(const std::string& line)
{
    const std::string start = kStart;
    return line.substr(start.size(), line.rfind(kEnd) - start.size());
}

std::string innerName(const std::string& group, const std::string& end)
{
    const size_t colon = end.find(':');
    return colon == std::string::npos ? group + ':' + end : end.substr(0, colon);
}

void addPeers(Parents& parents, const std::string& group, const GraphConfigNode& port)
{
    for (auto it = port.begin(); it != port.end(); ++it) {
        std::string peer;
        if (it->first == NUXO_KEY_PEER && it->second->getValue(peer) == StatusOk)
            parents[peer].insert(group + ':' + nameOf(port));
    }
}

Parents parentsIn(const ProgramGroups& groups, int stream)
{
    Parents parents;
    for (const GraphConfigNode* const group : groups.nodes) {
        if (streamOf(*group) != stream) continue;
        const std::string name = nameOf(*group);
        for (const GraphConfigNode* const link : linksOf(*group)) {
            parents[innerName(name, textOf(*link, NUXO_KEY_DESTINATION))].insert(
                innerName(name, textOf(*link, NUXO_KEY_SOURCE)));
        }
        for (const GraphConfigNode* const port : childrenOfType(*group, NUXO_KEY_PORT)) {
            if (GraphCameraUtil::portGetDirection(port) != 0) addPeers(parents, name, *port);
        }
    }
    return parents;
}

// All that frames from one of the nodes get to, which may lead back to the node itself.
Names followersOf(const Names& nodes, const Parents& parents)
{
    std::map<std::string, std::vector<std::string>> children;
    for (const auto& [child, itsParents] : parents) {
        for (const std::string& parent : itsParents) children[parent].push_back(child);
    }
    Names followers;
    std::vector<std::string> open(nodes.begin(), nodes.end());
    while (!open.empty()) {
        const std::vector<std::string> next = std::move(children[open.back()]); // each node is left once
        open.pop_back();
        for (const std::string& child : next) {
            if (followers.insert(child).second) open.push_back(child);
        }
    }
    return followers;
}

template <typename IsChosen> Names chosenOf(const Names& names, IsChosen isChosen)
{
    Names chosen;
    std::copy_if(names.begin(), names.end(), std::inserter(chosen, chosen.end()), isChosen);
    return chosen;
}

// Where frames stop. Kernels that hang loose are off, and so no nodes that could be reached.
Names headsOf(const Names& unreached, Parents parents)
{
    const auto isMissed = [&unreached](const std::string& name) { return unreached.count(name) > 0; };
    const Names followers = followersOf(unreached, parents);
    const Names heads =
        chosenOf(unreached, [&followers](const std::string& name) { return followers.count(name) == 0; });
    if (!heads.empty()) return heads;
    const Names entries = chosenOf(unreached, [&](const std::string& name) {
        return !std::all_of(parents[name].begin(), parents[name].end(), isMissed);
    });
    return entries.empty() ? unreached : entries;
}

// The lines about one stream.
void appendHeads(std::vector<LogLine>& kept, const std::vector<LogLine>& lines, const ProgramGroups& groups, int stream)
{
    Names unreached;
    for (const LogLine& line : lines) unreached.insert(unreachedName(line.text));
    const Names heads = headsOf(unreached, parentsIn(groups, stream));
    const size_t followers = unreached.size() - heads.size();
    std::string more = followers == 0 ? "" : ", and with it " + std::to_string(followers) + " more";
    for (LogLine line : lines) {
        if (heads.count(unreachedName(line.text)) == 0) continue;
        line.text += more;
        more.clear();
        kept.push_back(line);
    }
}

} // namespace

bool isUnreached(const std::string& line)
{
    return startsWith(line, kStart) && line.rfind(kEnd) != std::string::npos;
}

bool tellsOfUnreached(const std::string& line)
{
    return isUnreached(line) || startsWith(line, kHeadline);
}

std::vector<LogLine> withoutFollowers(const std::vector<LogLine>& lines, const ProgramGroups& groups)
{
    std::vector<LogLine> kept;
    for (auto line = lines.begin(); line != lines.end();) {
        const auto end =
            std::find_if_not(line + 1, lines.end(), [](const LogLine& next) { return isUnreached(next.text); });
        const bool isHeadline = startsWith(line->text, kHeadline);
        if (isHeadline && line + 1 != end) {
            appendHeads(kept, {line + 1, end}, groups, std::atoi(line->text.c_str() + std::strlen(kHeadline)));
        } else {
            kept.insert(kept.end(), line, end);
        }
        line = end;
    }
    return kept;
}

} // namespace NuxoTool
