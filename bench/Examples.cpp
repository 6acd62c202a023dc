// SPDX-License-Identifier: Apache-2.0
#include "Examples.h"

#include <stdexcept>

namespace bench {

namespace {

Tree example(const std::string& name)
{
    return parseFile(NUXO_SOURCE_DIR "/examples/" + name + ".xml");
}

} // namespace

ExamplePair::ExamplePair(const std::string& generation)
    : mDescriptor(example(generation + "_descriptor")), mSettings(example(generation + "_settings"))
{
    mManager.setGraphDescriptor(mDescriptor.get());
    mManager.setGraphSettings(mSettings.get());
}

std::vector<NUXO::IGraphConfig*> ExamplePair::settings() const
{
    std::vector<NUXO::IGraphConfig*> settings;
    NUXO::NodeIterator cursor(mSettings.get());
    while (NUXO::IGraphConfig* const setting = cursor.iterateByUid(NUXO_KEY_SETTINGS)) settings.push_back(setting);
    return settings;
}

Tree ExamplePair::build(NUXO::IGraphConfig& setting) const
{
    return buildGraph(mManager, setting);
}

ExampleGraph largestExample(const std::vector<std::string>& generations,
                            const std::function<size_t(const NUXO::IGraphConfig& graph)>& measure)
{
    ExampleGraph largest;
    for (const std::string& generation : generations) {
        const auto pair = std::make_shared<ExamplePair>(generation);
        for (NUXO::IGraphConfig* const setting : pair->settings()) {
            Tree graph = pair->build(*setting);
            const size_t size = measure(*graph);
            if (size < largest.size) continue;
            largest = {pair, setting, std::move(graph), size};
        }
    }
    if (largest.size == 0) throw std::runtime_error("the example graphs are empty");
    return largest;
}

} // namespace bench
