// SPDX-License-Identifier: Apache-2.0
#include "explain/ExplainedItems.h"

#include "Session.h"
#include "Suggestion.h"
#include "TreeView.h"

#include <algorithm>

namespace NuxoTool {

namespace {

class ItemFinder {
public:
    ItemFinder(Session& session, const NUXO::GraphConfigNode& descriptor) : mSession(session), mDescriptor(descriptor)
    {
    }

    std::vector<ExplainedItem> find(const TracedNode& root)
    {
        const std::string& path = mSession.arguments.path;
        const TracedNode* holder = &root;
        std::string holderPath;
        for (size_t start = 0;;) {
            const size_t end = std::min(path.find(':', start), path.size());
            const std::string name = path.substr(start, end - start);
            const std::vector<ExplainedItem> named = itemsNamed(*holder, holderPath, name);
            if (named.empty()) {
                reportUnknown(*holder, holderPath, name, start);
                return {};
            }
            if (end == path.size()) return withContents(named);
            const auto node =
                std::find_if(named.begin(), named.end(), [](const ExplainedItem& each) { return each.item->isNode(); });
            if (node == named.end()) {
                mSession.findings.usageError("bad-path", {path, end + 1, path.size() - end},
                                             "'" + named.front().path +
                                                 "' is an attribute; expected the end of the path");
                return {};
            }
            holder = node->item->node.get();
            holderPath = node->path;
            start = end + 1;
        }
    }

    std::vector<ExplainedItem> contents(const TracedNode& root)
    {
        mFound.clear();
        addContents(root, "");
        return std::move(mFound);
    }

private:
    // In the order of the graph; every item gets the number that it has among those of its name.
    std::vector<ExplainedItem> itemsOf(const TracedNode& holder, const std::string& holderPath)
    {
        std::vector<ExplainedItem> items;
        size_t number = 0;
        for (const auto& item : holder.items()) {
            number = !items.empty() && items.back().item->key == item->key ? number + 1 : 1;
            std::string path = (holderPath.empty() ? "" : holderPath + ':') + mView.keyName(item->key);
            if (number > 1) path += '[' + std::to_string(number) + ']';
            items.push_back({item.get(), path});
        }
        return items;
    }

    // With a number the one, otherwise all of that name.
    std::vector<ExplainedItem> itemsNamed(const TracedNode& holder, const std::string& holderPath,
                                          const std::string& name)
    {
        const std::vector<ExplainedItem> all = itemsOf(holder, holderPath);
        const std::string path = (holderPath.empty() ? "" : holderPath + ':') + name;
        std::vector<ExplainedItem> named;
        for (const ExplainedItem& each : all) {
            if (mView.keyName(each.item->key) == name) named.push_back(each);
        }
        if (!named.empty()) return named;
        for (const ExplainedItem& each : all) {
            if (each.path == path || each.path + "[1]" == path) named.push_back(each);
        }
        return named;
    }

    std::vector<ExplainedItem> withContents(const std::vector<ExplainedItem>& items)
    {
        mFound.clear();
        for (const ExplainedItem& each : items) add(each);
        return std::move(mFound);
    }

    // Recursion is bounded by the depth of trees, see copyStamped.
    void add(const ExplainedItem& item)
    {
        mFound.push_back(item);
        if (item.item->isNode()) addContents(*item.item->node, item.path);
    }

    void addContents(const TracedNode& node, const std::string& path)
    {
        for (const ExplainedItem& each : itemsOf(node, path)) add(each);
    }

    void reportUnknown(const TracedNode& holder, const std::string& holderPath, const std::string& name, size_t start)
    {
        std::vector<std::string> candidates;
        for (const auto& item : holder.items()) candidates.push_back(mView.keyName(item->key));
        const std::string setting = "the graph of setting " + std::to_string(mSession.arguments.key.value_or(0));
        const std::string place = holderPath.empty() ? setting : "'" + holderPath + "' in " + setting;
        std::string text = name.empty() ? "empty name in the path" : place + " has no '" + name + "'";
        const bool isLeftOut = holderPath.empty() && isDescriptorNode(name);
        text += isLeftOut ? "; the descriptor has it, but no connection that the setting uses leads to it"
                          : "; expected the name of a node or attribute" + suggestionFor(name, candidates);
        const size_t length = std::max<size_t>(name.size(), 1);
        const std::string& path = mSession.arguments.path;
        mSession.findings.usageError("unknown-name", {path.empty() ? " " : path, start + 1, length}, text);
    }

    bool isDescriptorNode(const std::string& name) const
    {
        const NUXO::IGraphConfig* const nodes = mDescriptor.getDescendant(NUXO_KEY_NODES);
        const uint32_t key = NUXO::ItemUID::str2key(name);
        return nodes != nullptr && key != NUXO_KEY_NA && nodes->getDescendant(key) != nullptr;
    }

    Session& mSession;
    const NUXO::GraphConfigNode& mDescriptor;
    TreeView mView;
    std::vector<ExplainedItem> mFound;
};

} // namespace

std::vector<ExplainedItem> findExplained(Session& session, const TracedNode& root,
                                         const NUXO::GraphConfigNode& descriptor)
{
    ItemFinder finder(session, descriptor);
    const std::string& path = session.arguments.path;
    return path.empty() || path == "." ? finder.contents(root) : finder.find(root);
}

} // namespace NuxoTool
