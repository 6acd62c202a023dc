// SPDX-License-Identifier: Apache-2.0
#include "ElementNames.h"

#include "PortView.h"
#include "TreeView.h"

#include <nuxo/camera/GraphCameraUtil.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <tuple>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

bool isPartOfName(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == ':';
}

// Where the whole word stands in the line, npos for nowhere.
size_t findWord(const std::string& line, const std::string& word)
{
    if (word.empty()) return std::string::npos;
    for (size_t at = line.find(word); at != std::string::npos; at = line.find(word, at + 1)) {
        const size_t end = at + word.size();
        const bool startsHere = at == 0 || !isPartOfName(line[at - 1]);
        // A name may end a sentence or stand ahead of a colon and a blank.
        const bool endsHere = end == line.size() || !isPartOfName(line[end]) ||
                              (line[end] == ':' && (end + 1 == line.size() || line[end + 1] == ' '));
        if (startsHere && endsHere) return at;
    }
    return std::string::npos;
}

// The number behind the first of the words that tell of a stream.
std::optional<int> streamIn(const std::string& line)
{
    for (const char* const word : {"exec ctx id ", "exec ctx ", "stream ", "stream id ", "subgraph "}) {
        const size_t at = line.find(word);
        if (at == std::string::npos) continue;
        const char* const digits = line.c_str() + at + std::string(word).size();
        char* end = nullptr;
        const long number = std::strtol(digits, &end, 10);
        if (end != digits) return static_cast<int>(number);
    }
    return std::nullopt;
}

std::string nodePart(const std::string& end)
{
    return end.substr(0, end.find(':'));
}

} // namespace

ElementNames::ElementNames(const GraphConfigNode& graph) : mGroups(programGroupsOf(graph))
{
    TreeView view;
    for (const ChildView& child : view.children(graph)) {
        if (child.node->getUid() == NUXO_KEY_GRAPH || textOf(*child.node, NUXO_KEY_TYPE).empty()) continue;
        mEntries.push_back({nameOf(*child.node), child.node, "", Rank::Full});
        addParts(*child.node);
    }
    for (const GraphConfigNode* const group : mGroups.nodes) addLinks(*group);
}

// Names of ports by themselves are left out: many, such as "input", are ordinary words of the log.
void ElementNames::addParts(const GraphConfigNode& node)
{
    const std::string group = nameOf(node);
    constexpr uint32_t types[] = {NUXO_KEY_PORT, NUXO_KEY_KERNEL, NUXO_KEY_MUX, NUXO_KEY_DEMUX, NUXO_KEY_SPLIT};
    for (const uint32_t type : types) {
        for (const GraphConfigNode* const part : childrenOfType(node, type)) {
            mEntries.push_back({group + ':' + nameOf(*part), part, group, Rank::Full});
            if (type != NUXO_KEY_PORT) mEntries.push_back({nameOf(*part), part, group, Rank::Plain});
        }
    }
}

void ElementNames::addLinks(const GraphConfigNode& group)
{
    const std::string name = nameOf(group);
    for (const GraphConfigNode* const link : linksOf(group)) {
        const std::string source = textOf(*link, NUXO_KEY_SOURCE);
        const std::string destination = textOf(*link, NUXO_KEY_DESTINATION);
        const auto withPort = [](const std::string& end) {
            return end.find(':') == std::string::npos ? end + ':' : end;
        };
        mEntries.push_back({withPort(source) + "->" + withPort(destination), link, name, Rank::Full});
        for (const std::string& end : {nodePart(source), nodePart(destination)}) {
            if (group.getDescendantByString(end) != nullptr) continue;
            mEntries.push_back({name + ':' + end, link, name, Rank::Loose});
            mEntries.push_back({end, link, name, Rank::Loose});
        }
    }
}

bool ElementNames::isBetter(const Match& candidate, const Match& other)
{
    // The surer one, then the first, then the longest.
    const auto order = [](const Match& match) {
        return std::make_tuple(match.entry->rank, match.at, ~match.entry->text.size());
    };
    return order(candidate) < order(other);
}

const IGraphConfig* ElementNames::namedIn(const std::string& line, const std::vector<std::string>& behind) const
{
    std::optional<Match> best;
    for (const Entry& entry : mEntries) {
        const size_t at = findWord(line, entry.text);
        if (at == std::string::npos) continue;
        const Match match = {&entry, at};
        if (!best || isBetter(match, *best)) best = match;
    }
    return best ? chosen(*best->entry, behind).item : groupOfStreamIn(line);
}

const ElementNames::Entry& ElementNames::chosen(const Entry& found, const std::vector<std::string>& behind) const
{
    for (const std::string& line : behind) {
        for (const Entry& entry : mEntries) {
            const bool isSame = entry.text == found.text && entry.rank == found.rank;
            if (isSame && line.find(entry.group + ':') != std::string::npos) return entry;
        }
    }
    return found;
}

const IGraphConfig* ElementNames::groupOfStreamIn(const std::string& line) const
{
    const std::optional<int> stream = streamIn(line);
    if (!stream) return nullptr;
    const auto found = std::find_if(mGroups.nodes.begin(), mGroups.nodes.end(),
                                    [&stream](const GraphConfigNode* group) { return streamOf(*group) == stream; });
    if (found != mGroups.nodes.end()) return *found;
    // A stream without groups is one of sinks.
    const auto sink = std::find_if(mEntries.begin(), mEntries.end(), [&stream](const Entry& entry) {
        return isSink(*entry.item) && streamOf(*entry.item) == stream;
    });
    return sink == mEntries.end() ? nullptr : sink->item;
}

} // namespace NuxoTool
