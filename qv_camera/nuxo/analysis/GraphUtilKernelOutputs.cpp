// SPDX-License-Identifier: Apache-2.0
// Which resolutions of the settings belong to which outputs of a kernel.
#include <nuxo/Log.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/analysis/GraphUtil.h>
#include <nuxo/histories/KernelSettings.h>
#include <nuxo/records/RunKernels.h>

#include <algorithm>
#include <map>

namespace NUXO {

namespace {

// Outputs are numbers in links and settings: "1" and "01" name the same one.
std::string numberOf(const std::string& output)
{
    const bool isNumber = !output.empty() && output.find_first_not_of("0123456789") == std::string::npos;
    if (!isNumber) return output;
    const size_t start = output.find_first_not_of('0');
    return start == std::string::npos ? "0" : output.substr(start);
}

// The resolutions that the settings state, of equal outputs the first one.
class StatedResolutions {
public:
    explicit StatedResolutions(const std::vector<KernelResolution>& stated)
    {
        for (const KernelResolution& entry : stated) {
            mByText.emplace(entry.first, &entry);
            mByNumber.emplace(numberOf(entry.first), &entry);
        }
    }

    size_t count() const { return mByText.size(); }

    const KernelResolution* find(const std::string& label) const
    {
        const auto exact = mByText.find(label);
        if (exact != mByText.end()) return exact->second;
        const auto same = mByNumber.find(numberOf(label));
        return same == mByNumber.end() ? nullptr : same->second;
    }

private:
    std::map<std::string, const KernelResolution*> mByText;
    std::map<std::string, const KernelResolution*> mByNumber;
};

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
    const StatedResolutions resolutions(stated);
    if (resolutions.count() != node.children.size())
        NUXO_WARN("Node %s settings have %ld res info but node has %ld children", name,
                  static_cast<long>(resolutions.count()), static_cast<long>(node.children.size()));

    const std::vector<std::string> labels = outputLabels(node);
    const KernelResolution& standard = stated.front();
    if (labels.empty() || (node.flags & RcbKernel) == 0) {
        const KernelResolution* const match = labels.empty() ? nullptr : resolutions.find(labels.front());
        const KernelResolution& chosen = match != nullptr ? *match : standard;
        node.resInfos[labels.empty() ? chosen.first : labels.front()] = chosen.second;
        return StatusOk;
    }
    bool saidDefault = false;
    for (const std::string& label : labels) {
        const KernelResolution* const match = resolutions.find(label);
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
