// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_ELEMENT_NAMES_H
#define NUXO_TOOL_ELEMENT_NAMES_H

#include "ProgramGroups.h"

#include <nuxo/tree/GraphConfigNode.h>

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace NuxoTool {

/// Finds the elements of a built graph that lines of the library's log are about.
class ElementNames {
public:
    explicit ElementNames(const NUXO::GraphConfigNode& graph);

    /// The element that a line names, null for none.
    ///
    /// @param behind  lines that were logged after it; of several elements with one name the one whose group they name
    ///                first is taken
    const NUXO::IGraphConfig* namedIn(const std::string& line, const std::vector<std::string>& behind) const;

private:
    /// How sure it is that a text means an element: its full name, the name of a kernel, which may stand in several groups,
    /// or an end of a link that leads to nothing.
    enum class Rank { Full, Plain, Loose };
    struct Entry {
        std::string text;
        const NUXO::IGraphConfig* item;
        std::string group; ///< empty for what belongs to none
        Rank rank;
    };
    struct Match {
        const Entry* entry;
        size_t at;
    };

    void addParts(const NUXO::GraphConfigNode& node);
    void addLinks(const NUXO::GraphConfigNode& group);
    void addEntry(const std::string& text, const NUXO::IGraphConfig* item, const std::string& group, Rank rank);
    std::vector<Match> matchesIn(const std::string& line) const;
    static bool isBetter(const Match& candidate, const Match& other);
    const Entry& chosen(const Entry& found, const std::vector<std::string>& behind) const;
    const NUXO::IGraphConfig* groupOfStreamIn(const std::string& line) const;

    std::vector<Entry> mEntries;
    std::unordered_map<std::string, std::vector<size_t>> mByText; ///< entries, in their order; only looked up
    std::vector<size_t> mOdd;                                     ///< entries whose texts are no words of the log
    ProgramGroups mGroups;
};

} // namespace NuxoTool

#endif
