// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/isp/IspUtils.h>
#include <nuxo/tree/NodeReading.h>

namespace NUXO {

namespace {

template <typename Utils> std::shared_ptr<IspUtils> create(const IGraphConfig* graph, GdfVersion version)
{
    return std::make_shared<Utils>(graph, version);
}

// How a version text tells a generation, and what stands for it.
struct Generation {
    const char* word;
    GdfVersion version;
    std::shared_ptr<IspUtils> (*create)(const IGraphConfig* graph, GdfVersion version);
};

constexpr Generation kGenerations[] = {
    {"KVA5", GdfVersionKVA5, create<KVA5IspUtils>},
    {"KVA6", GdfVersionKVA6, create<KVA6IspUtils>},
    {"KVA7", GdfVersionKVA7, create<KVA7IspUtils>},
};

constexpr Generation kUnknown = {"", GdfVersionNone, create<KVA4IspUtils>};

const Generation& generationOf(const std::string& versionText)
{
    for (const Generation& generation : kGenerations) {
        if (versionText.find(generation.word) != std::string::npos) return generation;
    }
    return kUnknown;
}

std::shared_ptr<IspUtils> createFor(const IGraphConfig& graph)
{
    std::string text;
    static_cast<void>(readText(graph, ItemUID({NUXO_KEY_GRAPH, NUXO_KEY_VERSION}), text)); // absent: no generation
    const Generation& generation = generationOf(text);
    NUXO_DEBUG("Detected KVA version in the graph: %s enum[%d]", text.c_str(), static_cast<int>(generation.version));
    if (generation.version == GdfVersionNone) NUXO_ERROR("KVA version not supported in NUXO Isp Utils.");
    return generation.create(&graph, generation.version);
}

} // namespace

std::shared_ptr<IspUtils> IspUtils::Factory(const IGraphConfig* graph)
{
    if (graph == nullptr) {
        NUXO_ERROR("Given pointer is null. NUXO Isp Utils not initialized.");
        return nullptr;
    }
    return unlessNoMemory<std::shared_ptr<IspUtils>>(nullptr, [graph] { return createFor(*graph); });
}

bool IspUtilsCommon::isDvsEnabled()
{
    if (mGraph != nullptr) return integerOr(mGraph, NUXO_KEY_DVS, 0) != 0;
    NUXO_ERROR("nuxo isp utils uninitialized");
    return true;
}

GdfVersion IspUtilsCommon::getKvaVersion()
{
    return mVersion;
}

int UnsupportingIspUtils::getKernelConfigurations(std::vector<KernelConfigContainer>& /*configs*/)
{
    return StatusNotSupported;
}

int UnsupportingIspUtils::applyFormat(const IGraphConfig* /*port*/, const std::string& /*format*/)
{
    return StatusNotSupported;
}

int UnsupportingIspUtils::applyCompression(const IGraphConfig* /*port*/, const std::string& /*format*/)
{
    return StatusNotSupported;
}

} // namespace NUXO
