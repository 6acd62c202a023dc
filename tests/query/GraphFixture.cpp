// SPDX-License-Identifier: Apache-2.0
#include "query/GraphFixture.h"

#include <algorithm>
#include <stdexcept>

#include <unistd.h>

namespace graphtest {

namespace {

constexpr const char* kTag = "NUXO[XOS]";

std::vector<std::string> split(const std::string& path)
{
    std::vector<std::string> names;
    size_t start = 0;
    for (size_t colon = path.find(':'); colon != std::string::npos; colon = path.find(':', start)) {
        names.push_back(path.substr(start, colon - start));
        start = colon + 1;
    }
    names.push_back(path.substr(start));
    return names;
}

GraphConfigItem* firstItem(const GraphConfigNode& node, uint32_t wanted)
{
    for (auto it = node.begin(); it != node.end(); ++it) {
        if (it->first == wanted) return it->second;
    }
    return nullptr;
}

std::string itemText(GraphConfigItem& item)
{
    switch (item.type) {
    case GraphConfigItem::INT: return std::to_string(static_cast<GraphConfigIntAttribute&>(item).value);
    case GraphConfigItem::STRING: return "'" + static_cast<GraphConfigStrAttribute&>(item).value + "'";
    case GraphConfigItem::NODE: return "node";
    default: return "untyped";
    }
}

std::string nameOfKey(uint32_t wanted)
{
    for (const auto& entry : NUXO::nuxo_key_map) {
        if (entry.second == wanted) return entry.first;
    }
    return "?";
}

/// The node that holds the last name of @p path, and the key of that name.
std::pair<GraphConfigNode*, uint32_t> holder(const GraphConfigNode& root, const std::string& path)
{
    const size_t colon = path.rfind(':');
    if (colon == std::string::npos) return {const_cast<GraphConfigNode*>(&root), key(path)};
    return {find(root, path.substr(0, colon)), key(path.substr(colon + 1))};
}

/// The class of a line as a prefix. The mask lets one class of debug priority through, so the priority tells the class.
std::string prefix(int priority)
{
    switch (priority) {
    case LogCapture::Debug: return "2 ";
    case LogCapture::Error: return "16 ";
    case LogCapture::Warning: return "32 ";
    default: return "? ";
    }
}

} // namespace

Tree parse(const std::string& document)
{
    std::string bytes = document;
    IGraphConfig* root = nullptr;
    NUXO::NUXOParser parser;
    parser.parseNUXOXmlData(&bytes[0], bytes.size(), &root);
    if (root == nullptr) throw std::runtime_error("nothing parsed from: " + document);
    return Tree(&asNode(root));
}

std::string descriptorText(const std::string& body, const std::string& version)
{
    return "<graph_descriptor version=\"" + version + "\">" + body + "</graph_descriptor>";
}

std::string settingsText(const std::string& body, const std::string& version)
{
    return "<graph_settings version=\"" + version + "\">" + body + "</graph_settings>";
}

Tree descriptor(const std::string& body, const std::string& version)
{
    return parse(descriptorText(body, version));
}

Tree settings(const std::string& body, const std::string& version)
{
    return parse(settingsText(body, version));
}

Tree tree(const std::string& body)
{
    Tree root = settings(body);
    root->removeDescendant(NUXO_KEY_VERSION);
    return root;
}

GraphConfigNode* find(const GraphConfigNode& root, const std::string& path)
{
    GraphConfigNode* node = const_cast<GraphConfigNode*>(&root);
    for (const std::string& name : split(path)) {
        const auto known = NUXO::nuxo_key_map.find(name);
        if (known == NUXO::nuxo_key_map.end()) return nullptr;
        GraphConfigItem* const item = firstItem(*node, known->second);
        if (item == nullptr || item->type != GraphConfigItem::NODE) return nullptr;
        node = static_cast<GraphConfigNode*>(item);
    }
    return node;
}

GraphConfigNode& at(const GraphConfigNode& root, const std::string& path)
{
    GraphConfigNode* const node = find(root, path);
    if (node == nullptr) throw std::runtime_error("no node " + path + " in " + text(root));
    return *node;
}

std::string value(const GraphConfigNode& root, const std::string& path)
{
    const auto place = holder(root, path);
    GraphConfigItem* const item = place.first == nullptr ? nullptr : firstItem(*place.first, place.second);
    return item == nullptr ? "absent" : itemText(*item);
}

std::string values(const GraphConfigNode& root, const std::string& path)
{
    const auto place = holder(root, path);
    if (place.first == nullptr) return "absent";
    std::string all;
    for (auto it = place.first->begin(); it != place.first->end(); ++it) {
        if (it->first == place.second) all += (all.empty() ? "" : " ") + itemText(*it->second);
    }
    return all.empty() ? "absent" : all;
}

std::string text(const GraphConfigNode& node)
{
    std::string all;
    for (auto it = node.begin(); it != node.end(); ++it) {
        if (!all.empty()) all += ' ';
        all += nameOfKey(it->first);
        if (it->second->type == GraphConfigItem::NODE) {
            all += "{" + text(static_cast<GraphConfigNode&>(*it->second)) + "}";
        } else {
            all += "=" + itemText(*it->second);
        }
    }
    return all;
}

bool linked(const GraphConfigNode& node)
{
    return std::all_of(node.begin(), node.end(), [&node](const auto& entry) {
        if (entry.second->type != GraphConfigItem::NODE) return true;
        const auto& child = static_cast<const GraphConfigNode&>(*entry.second);
        return child.getAncestor() == static_cast<const IGraphConfig*>(&node) && linked(child);
    });
}

GraphConfigNode& asNode(IGraphConfig* node)
{
    auto* const known = dynamic_cast<GraphConfigNode*>(node);
    if (known == nullptr) throw std::runtime_error("not a node of the library");
    return *known;
}

uint32_t key(const std::string& name)
{
    const auto known = NUXO::nuxo_key_map.find(name);
    if (known == NUXO::nuxo_key_map.end()) throw std::runtime_error("no key for " + name);
    return known->second;
}

std::string scratchFile(const std::string& name)
{
    return ::testing::TempDir() + "nuxo_" + std::to_string(getpid()) + "_" + name;
}

GraphTest::GraphTest() : mVocabulary(NUXO::nuxo_key_map)
{
}

GraphTest::~GraphTest()
{
    NUXO::nuxo_key_map = mVocabulary;
}

std::vector<std::string> GraphTest::lines() const
{
    std::vector<std::string> all;
    for (const auto& line : mLog.lines()) {
        std::string written = prefix(line.priority) + line.message;
        if (line.tag != kTag) written = line.tag + "/" + written;
        all.push_back(std::move(written));
    }
    return all;
}

size_t GraphTest::count(uint32_t level, const std::string& message) const
{
    const std::vector<std::string> all = lines();
    return static_cast<size_t>(std::count(all.begin(), all.end(), std::to_string(level) + ' ' + message));
}

::testing::AssertionResult GraphTest::logged(uint32_t level, const std::string& message) const
{
    if (count(level, message) > 0) return ::testing::AssertionSuccess();
    ::testing::AssertionResult failure = ::testing::AssertionFailure();
    failure << "not logged: " << level << ' ' << message << "\nlogged:";
    for (const std::string& line : lines()) failure << "\n  " << line;
    return failure;
}

::testing::AssertionResult GraphTest::notLogged(const std::string& message) const
{
    for (const std::string& line : lines()) {
        if (line.find(message) != std::string::npos) return ::testing::AssertionFailure() << "logged: " << line;
    }
    return ::testing::AssertionSuccess();
}

::testing::AssertionResult GraphTest::loggedExactly(const std::vector<std::string>& expected) const
{
    const std::vector<std::string> all = lines();
    if (all == expected) return ::testing::AssertionSuccess();
    ::testing::AssertionResult failure = ::testing::AssertionFailure();
    failure << "expected:";
    for (const std::string& line : expected) failure << "\n  " << line;
    failure << "\nlogged:";
    for (const std::string& line : all) failure << "\n  " << line;
    return failure;
}

void GraphTest::clearLog()
{
    mLog.clear();
}

BuildTest::~BuildTest()
{
    mManager.destroyGraph(mGraph);
}

void BuildTest::load(const std::string& descriptorBody, const std::string& settingsBody)
{
    mDescriptor = descriptor(descriptorBody);
    mSettings = settings(settingsBody);
    mManager.setGraphDescriptor(mDescriptor.get());
    mManager.setGraphSettings(mSettings.get());
    clearLog();
}

int BuildTest::build(size_t index)
{
    mManager.destroyGraph(mGraph);
    mGraph = nullptr;
    return mManager.createGraph(&setting(index), &mGraph);
}

GraphConfigNode& BuildTest::setting(size_t index) const
{
    for (auto it = mSettings->begin(); it != mSettings->end(); ++it) {
        if (it->first == NUXO_KEY_SETTINGS && index-- == 0) return static_cast<GraphConfigNode&>(*it->second);
    }
    throw std::runtime_error("no such settings node");
}

GraphConfigNode& BuildTest::graph() const
{
    return asNode(mGraph);
}

} // namespace graphtest
