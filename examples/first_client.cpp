// SPDX-License-Identifier: Apache-2.0
// first_client DESCRIPTOR SETTINGS PATH VALUE: builds the graph of the first setting whose attribute PATH is VALUE.
#include <nuxo/nuxo.h>

#include <iostream>
#include <memory>
#include <vector>

namespace {

std::unique_ptr<NUXO::IGraphConfig> parse(const char* fileName)
{
    NUXO::IGraphConfig* root = nullptr;
    NUXO::NUXOParser().parseNUXOXmlFile(fileName, &root);
    return std::unique_ptr<NUXO::IGraphConfig>(root);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 5) return 2;

    // 1. Two files become two trees. What went wrong, if anything, is in the system log.
    const std::unique_ptr<NUXO::IGraphConfig> descriptor = parse(argv[1]);
    const std::unique_ptr<NUXO::IGraphConfig> settings = parse(argv[2]);
    if (descriptor == nullptr || settings == nullptr) return 3;

    // 2. A query chooses settings.
    NUXO::GraphQueryManager manager;
    manager.setGraphDescriptor(descriptor.get());
    manager.setGraphSettings(settings.get());
    const NUXO::GraphQueryManager::SearchItems criteria = {{NUXO::ItemUID(argv[3]), argv[4]}};
    std::vector<NUXO::IGraphConfig*> matches;
    const int queryStatus = manager.queryGraphs(criteria, matches, true);
    std::cout << matches.size() << " settings match: " << NUXO::statusName(queryStatus) << '\n';
    if (queryStatus != StatusOk) return 1;

    // 3. One of them becomes a graph, which is to be destroyed also when building fails halfway.
    NUXO::IGraphConfig* graph = nullptr;
    const int buildStatus = manager.createGraph(matches.front(), &graph);
    std::cout << "graph built: " << NUXO::statusName(buildStatus) << '\n';

    // 4. The graph is a tree of nodes again.
    if (graph != nullptr && buildStatus == StatusOk) {
        NUXO::NodeIterator nodes(graph);
        while (NUXO::IGraphConfig* node = nodes.iterateDescendants()) {
            std::cout << "  " << NUXO::GraphCameraUtil::print(node) << '\n';
        }
    }
    manager.destroyGraph(graph);
    return buildStatus == StatusOk ? 0 : 1;
}
