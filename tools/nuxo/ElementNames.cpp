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

constexpr const char* kArrow = "->"; // of a link

// Where a word that starts there ends.
size_t endOfWord(const std::string& line, size_t at)
{
    while (at < line.size() && isPartOfName(line[at])) ++at;
    return at;
}

// Whether a text is a word of the log, or a link between two.
bool isWord(const std::string& text)
{
    const size_t end = endOfWord(text, 0);
    const bool isLink = end > 0 && text.compare(end, 2, kArrow) == 0;
    return end == text.size() || (isLink && endOfWord(text, end + 2) == text.size());
}

// The texts that may be names where a word starts: the word, without a colon ahead of a blank, and as start of a link.
std::vector<std::string> candidatesAt(const std::string& line, size_t at)
{
    std::vector<std::string> candidates;
    const size_t end = endOfWord(line, at);
    const bool isLink = line.compare(end, 2, kArrow) == 0;
    for (const size_t stop : {end, isLink ? endOfWord(line, end + 2) : end}) {
        candidates.push_back(line.substr(at, stop - at));
        if (line[stop - 1] == ':' && (stop == line.size() || line[stop] == ' '))
            candidates.push_back(line.substr(at, stop - 1 - at));
        if (!isLink) break;
    }
    return candidates;
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
        addEntry(nameOf(*child.node), child.node, "", Rank::Full);
        addParts(*child.node);
    }
    for (const GraphConfigNode* const group : mGroups.nodes) addLinks(*group);
}

void ElementNames::addEntry(const std::string& text, const IGraphConfig* item, const std::string& group, Rank rank)
{
    if (text.empty()) return;
    (isWord(text) ? mByText[text] : mOdd).push_back(mEntries.size());
    mEntries.push_back({text, item, group, rank});
}

// Names of ports by themselves are left out: many, such as "input", are ordinary words of the log.
void ElementNames::addParts(const GraphConfigNode& node)
{
    const std::string group = nameOf(node);
    constexpr uint32_t types[] = {NUXO_KEY_PORT, NUXO_KEY_KERNEL, NUXO_KEY_MUX, NUXO_KEY_DEMUX, NUXO_KEY_SPLIT};
    for (const uint32_t type : types) {
        for (const GraphConfigNode* const part : childrenOfType(node, type)) {
            addEntry(group + ':' + nameOf(*part), part, group, Rank::Full);
            if (type != NUXO_KEY_PORT) addEntry(nameOf(*part), part, group, Rank::Plain);
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
        addEntry(withPort(source) + kArrow + withPort(destination), link, name, Rank::Full);
        for (const std::string& end : {nodePart(source), nodePart(destination)}) {
            if (group.getDescendantByString(end) != nullptr) continue;
            addEntry(name + ':' + end, link, name, Rank::Loose);
            addEntry(end, link, name, Rank::Loose);
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

std::vector<ElementNames::Match> ElementNames::matchesIn(const std::string& line) const
{
    std::vector<Match> matches;
    for (size_t at = 0; at < line.size(); at = endOfWord(line, at) + 1) {
        if (!isPartOfName(line[at])) continue;
        for (const std::string& candidate : candidatesAt(line, at)) {
            const auto found = mByText.find(candidate);
            if (found == mByText.end()) continue;
            for (const size_t index : found->second) matches.push_back({&mEntries[index], at});
        }
    }
    for (const size_t index : mOdd) {
        const size_t at = findWord(line, mEntries[index].text);
        if (at != std::string::npos) matches.push_back({&mEntries[index], at});
    }
    return matches;
}

const IGraphConfig* ElementNames::namedIn(const std::string& line, const std::vector<std::string>& behind) const
{
    std::optional<Match> best;
    for (const Match& match : matchesIn(line)) {
        if (!best || isBetter(match, *best)) best = match;
    }
    return best ? chosen(*best->entry, behind).item : groupOfStreamIn(line);
}

const ElementNames::Entry& ElementNames::chosen(const Entry& found, const std::vector<std::string>& behind) const
{
    const auto same = mByText.find(found.text);
    const std::vector<size_t>& entries = same == mByText.end() ? mOdd : same->second;
    for (const std::string& line : behind) {
        for (const size_t index : entries) {
            const Entry& entry = mEntries[index];
            if (entry.text == found.text && entry.rank == found.rank &&
                line.find(entry.group + ':') != std::string::npos)
                return entry;
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
