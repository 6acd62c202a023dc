// SPDX-License-Identifier: Apache-2.0
#include "FlowParts.h"
#include "PortView.h"
#include "RecordText.h"
#include "TreeView.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/kernels/ZmtTevUtils.h>

#include <algorithm>
#include <list>

namespace NuxoTool {

using NUXO::GraphCameraUtil;
using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;
using NUXO::ZmtTevUtils;
using Resolution = qv_isp_zmt_resolution_info;

namespace {

constexpr int kLongestWay = 16;

// What stands between a port and the source that feeds it.
struct Way {
    const IGraphConfig* source = nullptr;
    const IGraphConfig* backEnd = nullptr; // the first node behind the source; null for none
};

Way wayTo(const IGraphConfig* node, int steps)
{
    Way way;
    if (node == nullptr || steps == 0) return way;
    if (textOf(*node, NUXO_KEY_TYPE) == "source") {
        way.source = node;
        return way;
    }
    for (const GraphConfigNode* const port :
         childrenOfType(dynamic_cast<const GraphConfigNode&>(*node), NUXO_KEY_PORT)) {
        IGraphConfig* peer = nullptr;
        if (GraphCameraUtil::portGetDirection(port) != 0) continue;
        if (GraphCameraUtil::portGetPeer(port, &peer) != StatusOk) continue;
        way = wayTo(peer->getAncestor(), steps - 1);
        if (way.source != nullptr && way.backEnd == nullptr) way.backEnd = node;
        if (way.source != nullptr) return way;
    }
    return way;
}

// From a port that nothing in the flow feeds.
Way wayToPort(const Flow::Node& node)
{
    const IGraphConfig* const holder = node.item->getAncestor();
    if (node.kind == Flow::Kind::OutputPort) return wayTo(holder, kLongestWay);
    IGraphConfig* peer = nullptr;
    if (GraphCameraUtil::portGetPeer(node.item, &peer) != StatusOk) return {};
    return wayTo(peer->getAncestor(), kLongestWay);
}

Resolution resolutionOf(int32_t inputWidth, int32_t inputHeight, const qv_rectangle& inputCrop, int32_t outputWidth,
                        int32_t outputHeight, const qv_rectangle& outputCrop)
{
    return {inputWidth, inputHeight, inputCrop, outputWidth, outputHeight, outputCrop};
}

// The stages of one source, in the order in which frames pass them.
class SourceStages {
public:
    SourceStages(FlowDraft& draft, const IGraphConfig& source) : mDraft(draft), mSource(source)
    {
        // The library asks for nodes that can be written to, and leaves them as they are.
        mWritable = const_cast<IGraphConfig*>(&source);
        if (ZmtTevUtils::sourceGetResolutionHistory(mHistory, *mWritable) != StatusOk) mHistory = {};
        IGraphConfig* const port = source.getDescendantByString("port_0");
        const bool isSensor = source.getName() == "sensor";
        if (isSensor) addSensor();
        // The library may have told of the port already.
        if (mStages.empty() && port != nullptr && mDraft.indexOf.count(port) == 0) addPort(*port);
        if (port != nullptr && (isSensor || source.getName() == "tpg")) addBackEnd(*port);
    }

    void feed(size_t node, const IGraphConfig* backEnd)
    {
        Flow::Node& target = mDraft.flow.nodes[node];
        if (!target.arrives && !target.isDisabled()) target.arrives = historyAt(*target.item);
        // What lies beside the back end is fed by the stage before it.
        const size_t skipped = mBackEnd != nullptr && backEnd != mBackEnd ? 1 : 0;
        if (mStages.size() <= skipped) return;
        mDraft.link(mStages[mStages.size() - 1 - skipped], {node, "", target.arrives, false});
    }

    const IGraphConfig& source() const { return mSource; }

private:
    void addStage(const IGraphConfig& item, const std::string& group, const std::string& name, const Resolution& stated)
    {
        Flow::Node node = flowNode(Flow::Kind::SourceStage, item);
        node.group = group;
        node.name = name;
        node.stream = std::nullopt;
        node.enable = QV_ISP_ZMT_KERNEL_ENABLED;
        node.stated.push_back({"", stated});
        const size_t index = mDraft.flow.nodes.size();
        mDraft.flow.nodes.push_back(std::move(node)); // several may stand at one element, none is looked up
        if (!mStages.empty()) mDraft.link(mStages.back(), {index, "", std::nullopt, false});
        mStages.push_back(index);
    }

    void addPart(uint32_t key, const char* name, const Resolution& stated)
    {
        const IGraphConfig* const part = mSource.getDescendant(key);
        if (part != nullptr && !isBlank(stated)) addStage(*part, nameOf(mSource), name, stated);
    }

    void addSensor()
    {
        NUXO::SensorModeInfo mode;
        if (ZmtTevUtils::getSensorModeInfo(*mWritable, mode) != StatusOk) return;
        addPart(NUXO_KEY_PIXEL_ARRAY, "pixel_array",
                resolutionOf(mode.pixelArrayInputWidth, mode.pixelArrayInputHeight, mode.pixelArrayInputCrop,
                             mode.pixelArrayOutputWidth, mode.pixelArrayOutputHeight, mode.pixelArrayOutputCrop));
        addPart(NUXO_KEY_BINNER, "binner",
                resolutionOf(mode.binnerInputWidth, mode.binnerInputHeight, mode.binnerInputCrop,
                             mode.binnerOutputWidth, mode.binnerOutputHeight, mode.binnerOutputCrop));
        addPart(NUXO_KEY_SCALER, "scaler",
                resolutionOf(mode.scalerInputWidth, mode.scalerInputHeight, mode.scalerInputCrop,
                             mode.scalerOutputWidth, mode.scalerOutputHeight, mode.scalerOutputCrop));
    }

    void addPort(const IGraphConfig& port)
    {
        const int width = integerOf(port, NUXO_KEY_WIDTH, 0);
        const int height = integerOf(port, NUXO_KEY_HEIGHT, 0);
        addStage(port, nameOf(mSource), nameOf(port), resolutionOf(width, height, {}, width, height, {}));
    }

    void addBackEnd(IGraphConfig& port)
    {
        IGraphConfig* peer = nullptr;
        Resolution stated = {};
        if (GraphCameraUtil::portGetPeer(&port, &peer) != StatusOk || peer->getAncestor() == nullptr) return;
        if (ZmtTevUtils::getCsiDimensions(port, stated) != StatusOk || isBlank(stated)) return;
        mBackEnd = peer->getAncestor();
        addStage(*mBackEnd, "", nameOf(*mBackEnd), stated);
    }

    // Of a port that carries another size than the source delivers.
    std::optional<Resolution> historyAt(const IGraphConfig& port) const
    {
        if (isBlank(mHistory)) return std::nullopt;
        Resolution history = mHistory;
        const int width = integerOf(port, NUXO_KEY_WIDTH, 0);
        const int height = integerOf(port, NUXO_KEY_HEIGHT, 0);
        if (width > 0 && height > 0) {
            history.output_width = width;
            history.output_height = height;
        }
        return history;
    }

    FlowDraft& mDraft;
    const IGraphConfig& mSource;
    IGraphConfig* mWritable = nullptr;
    const IGraphConfig* mBackEnd = nullptr;
    Resolution mHistory = {};
    std::vector<size_t> mStages;
};

} // namespace

void addSources(FlowDraft& draft)
{
    std::list<SourceStages> sources;
    const std::vector<bool> haveParents = draft.flow.haveParents();
    for (size_t i = 0; i < haveParents.size(); ++i) {
        const Flow::Kind kind = draft.flow.nodes[i].kind;
        if (haveParents[i] || (kind != Flow::Kind::InputPort && kind != Flow::Kind::OutputPort)) continue;
        const Way way = wayToPort(draft.flow.nodes[i]);
        if (way.source == nullptr) continue;
        auto known = std::find_if(sources.begin(), sources.end(),
                                  [&way](const SourceStages& stages) { return &stages.source() == way.source; });
        if (known == sources.end()) known = sources.emplace(sources.end(), draft, *way.source);
        known->feed(i, way.backEnd);
    }
}

} // namespace NuxoTool
