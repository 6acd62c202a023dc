// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_SIMULATION_EXAMPLE_PAIR_H
#define NUXO_TESTS_SIMULATION_EXAMPLE_PAIR_H

#include "query/GraphFixture.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace graphtest {

/// The example files of one generation and the graphs of their settings. Throws std::runtime_error for what is missing.
class ExamplePair {
public:
    /// @param generation  "kva5", "kva6" or "kva7"
    explicit ExamplePair(const std::string& generation)
        : mDescriptor(load(generation + "_descriptor.xml")), mSettings(load(generation + "_settings.xml"))
    {
        mManager.setGraphDescriptor(mDescriptor.get());
        mManager.setGraphSettings(mSettings.get());
    }

    GraphConfigNode& descriptor() const { return *mDescriptor; }

    /// All `settings` nodes, in order.
    std::vector<const GraphConfigNode*> settings() const
    {
        std::vector<const GraphConfigNode*> all;
        for (auto it = mSettings->begin(); it != mSettings->end(); ++it) {
            if (it->first == NUXO_KEY_SETTINGS) all.push_back(static_cast<const GraphConfigNode*>(it->second));
        }
        return all;
    }

    /// The graph of the setting with this `key`.
    std::shared_ptr<GraphConfigNode> build(int wanted)
    {
        for (const GraphConfigNode* setting : settings()) {
            if (value(*setting, "key") == std::to_string(wanted)) return build(*setting);
        }
        throw std::runtime_error("no setting " + std::to_string(wanted));
    }

    std::shared_ptr<GraphConfigNode> build(const GraphConfigNode& setting)
    {
        IGraphConfig* graph = nullptr;
        const int status = mManager.createGraph(const_cast<GraphConfigNode*>(&setting), &graph);
        std::shared_ptr<GraphConfigNode> owned(&asNode(graph));
        if (status != StatusOk) throw std::runtime_error("not built: " + value(setting, "key"));
        return owned;
    }

private:
    static Tree load(const std::string& name)
    {
        const std::string path = NUXO_SOURCE_DIR "/examples/" + name;
        IGraphConfig* root = nullptr;
        NUXO::NUXOParser().parseNUXOXmlFile(path.c_str(), &root);
        return Tree(&asNode(root));
    }

    Tree mDescriptor;
    Tree mSettings;
    GraphQueryManager mManager;
};

} // namespace graphtest

#endif
