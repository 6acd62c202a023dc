// SPDX-License-Identifier: Apache-2.0
// Which resolutions of the settings belong to which outputs of a kernel.
#include <nuxo/Log.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/analysis/GraphUtil.h>
#include <nuxo/histories/KernelSettings.h>
#include <nuxo/records/RunKernels.h>

#include <algorithm>
#include <cstdlib>

namespace NUXO {

namespace {

// Outputs are numbers in links and settings: "1" and "01" name the same one.
bool isSameOutput(const std::string& a, const std::string& b)
{
    if (a == b) return true;
    char* endOfA = nullptr;
    char* endOfB = nullptr;
    const long valueOfA = std::strtol(a.c_str(), &endOfA, 10);
    const long valueOfB = std::strtol(b.c_str(), &endOfB, 10);
    const bool areNumbers = !a.empty() && !b.empty() && *endOfA == '\0' && *endOfB == '\0';
    return areNumbers && valueOfA == valueOfB;
}

const KernelResolution* findOutput(const std::vector<KernelResolution>& resolutions, const std::string& label)
{
    const auto exact = std::find_if(resolutions.begin(), resolutions.end(),
                                    [&](const KernelResolution& entry) { return entry.first == label; });
    if (exact != resolutions.end()) return &*exact;
    const auto same = std::find_if(resolutions.begin(), resolutions.end(),
                                   [&](const KernelResolution& entry) { return isSameOutput(entry.first, label); });
    return same == resolutions.end() ? nullptr : &*same;
}

} // namespace

// The outputs that lead somewhere, each once.
std::vector<std::string> GraphUtil::outputLabels(const ImagingNode& node)
{
    std::vector<std::string> labels;
    for (const auto& child : node.children) labels.push_back(child.second);
    std::sort(labels.begin(), labels.end());
    labels.erase(std::unique(labels.begin(), labels.end()), labels.end());
    return labels;
}

int GraphUtil::getKernelResolutionInfos(ImagingNode& node)
{
    const char* const name = node.name.c_str();
    node.resInfos.clear();
    std::vector<KernelResolution> stated;
    const int status = kernelGetResolutions(*node.node, stated);
    if (status != StatusOk) return status;
    if (stated.empty()) {
        NUXO_ERROR("Node %s settings have no res info - fix settings", name);
        return StatusMissingObject;
    }
    if (stated.size() != node.children.size())
        NUXO_WARN("Node %s settings have %ld res info but node has %ld children", name,
                  static_cast<long>(stated.size()), static_cast<long>(node.children.size()));

    const std::vector<std::string> labels = outputLabels(node);
    const KernelResolution& standard = stated.front();
    if (labels.empty() || (node.flags & RcbKernel) == 0) {
        const KernelResolution* const match = labels.empty() ? nullptr : findOutput(stated, labels.front());
        const KernelResolution& chosen = match != nullptr ? *match : standard;
        node.resInfos[labels.empty() ? chosen.first : labels.front()] = chosen.second;
        return StatusOk;
    }
    bool saidDefault = false;
    for (const std::string& label : labels) {
        const KernelResolution* const match = findOutput(stated, label);
        node.resInfos[label] = match != nullptr ? match->second : standard.second;
        if (match != nullptr) continue;
        if (!saidDefault)
            NUXO_WARN("Node %s ports without settings will default to res-info %s", name,
                      resInfoToStr(standard.second));
        saidDefault = true;
        NUXO_WARN("Node %s settings have no output id that matches output port %s defaulting %s", name, label.c_str(),
                  resInfoToStr(standard.second));
    }
    return StatusOk;
}

} // namespace NUXO
