// SPDX-License-Identifier: Apache-2.0
// Fuzz target: a whole request. The input holds a descriptor, settings and criteria, parted by form feeds (which no XML
// text contains); criteria are lines "path=value".
#include "support/Fuzzing.h"
#include "support/TreeChecks.h"

#include <nuxo/nuxo.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

using Tree = std::unique_ptr<NUXO::IGraphConfig>;
using Criteria = std::map<NUXO::ItemUID, std::string>;

constexpr char kPartEnd = '\f';
constexpr size_t kMostSettings = 8;
constexpr size_t kMostCriteria = 8;
constexpr int kMostWrites = 16;
// An accepted value may merge a whole subtree into the graph, so a few of them show what there is to see.
constexpr int kMostAccepted = 3;

// Takes the text up to the end character, or all of it, off the front.
std::string takePart(std::string& text, char end)
{
    const size_t length = text.find(end);
    std::string part = text.substr(0, length);
    text.erase(0, length == std::string::npos ? length : length + 1);
    return part;
}

Tree parse(NUXO::NUXOParser& parser, std::string text)
{
    NUXO::IGraphConfig* out = nullptr;
    parser.parseNUXOXmlData(text.data(), text.size(), &out);
    return Tree(out);
}

Criteria readCriteria(std::string text)
{
    Criteria criteria;
    while (!text.empty() && criteria.size() < kMostCriteria) {
        std::string value = takePart(text, '\n');
        const std::string path = takePart(value, '=');
        criteria[NUXO::ItemUID(path)] = value;
    }
    return criteria;
}

// All and any of the criteria, and one query over the results of another.
void query(NUXO::GraphQueryManager& manager, const Criteria& criteria)
{
    std::vector<NUXO::IGraphConfig*> any;
    std::vector<NUXO::IGraphConfig*> all;
    std::vector<NUXO::IGraphConfig*> again;
    static_cast<void>(manager.queryGraphs(criteria, any, false)); // the results tell
    static_cast<void>(manager.queryGraphs(criteria, all, true));
    static_cast<void>(manager.queryGraphs(criteria, any, again, true));
    fuzzing::require(criteria.empty() || all.size() <= any.size(), "what matches all criteria matches one");
    fuzzing::require(again.size() <= any.size(), "a query over results gives no more than these");
}

// Writes to attributes of the graph; options lists may then change the rest of it.
void writeValues(NUXO::IGraphConfig* graph)
{
    int writes = 0;
    int accepted = 0;
    for (NUXO::GraphConfigNode* const node : fuzzing::nodesOf(graph)) {
        std::vector<uint32_t> keys;
        for (const auto& entry : *node) keys.push_back(entry.first);
        for (const uint32_t key : keys) {
            if (node->getDescendant(NUXO_KEY_OPTIONS) == nullptr && writes >= kMostWrites) continue;
            const int32_t status = NUXO::ItemUID::isInteger(key) ? node->setValue(key, 1) : node->setValue(key, "NV12");
            ++writes;
            if (status == StatusOk) ++accepted;
            if (accepted == kMostAccepted) return;
        }
    }
}

void build(NUXO::GraphQueryManager& manager, NUXO::IGraphConfig* settings)
{
    NUXO::IGraphConfig* graph = nullptr;
    static_cast<void>(manager.createGraph(settings, &graph)); // what was built is looked at whatever came of it
    fuzzing::require(graph != nullptr, "the root is handed out whatever happens");
    std::vector<NUXO::GraphConfigNode*> nodes = fuzzing::nodesOf(graph);
    if (nodes.size() <= fuzzing::kMostNodes) {
        fuzzing::checkTree(nodes);
        fuzzing::checkCopy(*nodes.front());
        fuzzing::askCameraQuestions(nodes);
        writeValues(graph);
        nodes = fuzzing::nodesOf(graph);
        if (nodes.size() <= fuzzing::kMostNodes) fuzzing::checkTree(nodes);
    }
    manager.destroyGraph(graph);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const fuzzing::Run run;
    std::string text(reinterpret_cast<const char*>(data), size);
    NUXO::NUXOParser parser;
    const Tree descriptor = parse(parser, takePart(text, kPartEnd));
    const Tree settings = parse(parser, takePart(text, kPartEnd));
    NUXO::GraphQueryManager manager;
    manager.setGraphDescriptor(descriptor.get());
    manager.setGraphSettings(settings.get());
    query(manager, readCriteria(text));
    if (settings == nullptr) return 0;

    NUXO::NodeIterator cursor(settings.get());
    for (size_t count = 0; count < kMostSettings; ++count) {
        NUXO::IGraphConfig* const setting = cursor.iterateByUid(NUXO_KEY_SETTINGS);
        if (setting == nullptr) break;
        build(manager, setting);
    }
    return 0;
}
