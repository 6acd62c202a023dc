// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_GRAPH_INSPECTION_H
#define NUXO_TOOL_GRAPH_INSPECTION_H

#include "ProgramGroups.h"
#include "Session.h"
#include "check/BuiltSetting.h"
#include "check/rules/SettingsLinks.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace NuxoTool {

// Rules about graphs.
constexpr char kBuildRule[] = "build";
constexpr char kAnalysisRule[] = "analysis";
constexpr char kBrokenChainRule[] = "broken-chain";
constexpr char kSizeMismatchRule[] = "size-mismatch";
constexpr char kPeerRule[] = "peer-unresolved";
constexpr char kPortDisabledRule[] = "port-disabled";
constexpr char kStrideRule[] = "stride";
constexpr char kContextTuningRule[] = "context-tuning";
constexpr char kInactiveMuxRule[] = "inactive-mux";
constexpr char kSinkUnfedRule[] = "sink-unfed";
constexpr char kNodeUnfedRule[] = "node-unfed";
constexpr char kKernelUnfedRule[] = "kernel-unfed";
constexpr char kKernelSizeRule[] = "kernel-no-size";
constexpr char kSizeWithoutRcbRule[] = "size-without-rcb";
constexpr char kSensorSizeRule[] = "sensor-size";
constexpr char kCaptureSizeRule[] = "capture-size";
constexpr char kStreamCircleRule[] = "stream-circle";
constexpr char kChangedIdRule[] = "changed-id";
constexpr char kOptionLostRule[] = "option-lost";
constexpr char kFrameTooLargeRule[] = "frame-too-large";
constexpr char kCropPaddingRule[] = "crop-padding";
constexpr char kFrameParamsRule[] = "frame-params";

/// A size in pixels.
struct Extent {
    int width = 0;
    int height = 0;
    bool operator==(const Extent& other) const { return width == other.width && height == other.height; }
};

/// The graph of one setting, and what was found in it so far. One cause shall make one finding: who looks later asks what
/// is known already.
class GraphInspection {
public:
    /// @param links    of the descriptor
    /// @param scratch  takes what is found
    GraphInspection(const BuiltSetting& setting, LinkTable& links, Session& scratch);

    const BuiltSetting& setting() const { return mSetting; }
    const NUXO::GraphConfigNode& graph() const { return *mSetting.built.graph; }
    /// The `settings` node.
    const NUXO::GraphConfigNode& settings() const { return *mSetting.built.settings; }
    const Flow& flow() const { return mSetting.flow; }
    const ProgramGroups& groups() const { return mGroups; }
    /// Nodes of the graph that the descriptor declares, in the order of the graph.
    const std::vector<const NUXO::GraphConfigNode*>& nodes() const { return mNodes; }
    Session& scratch() { return mScratch; }

    /// @param item       the finding stands at its attribute, or else at its element
    /// @param attribute  0 for the element
    void report(const char* rule, const NUXO::IGraphConfig& item, uint32_t attribute, const std::string& text);
    void report(const char* rule, const Location& where, const std::string& text);
    void note(const NUXO::IGraphConfig& item, uint32_t attribute, const std::string& text);
    void note(const Location& where, const std::string& text) { mScratch.findings.note(where, text); }
    bool hasFound(std::string_view rule) const { return mFound.count(std::string(rule)) > 0; }
    /// What was found is about this element, or explains what is wrong with it.
    void explain(const NUXO::IGraphConfig& item) { mExplained.insert(&item); }
    bool isExplained(const NUXO::IGraphConfig& item) const { return mExplained.count(&item) > 0; }
    /// A size that may be meant where an element states another.
    void allow(const NUXO::IGraphConfig& item, const Extent& size) { mAllowed[&item] = size; }
    std::optional<Extent> allowedAt(const NUXO::IGraphConfig& item) const;

    /// Where an element or attribute stands; nothing for what stands in no file.
    std::optional<Location> placeOf(const NUXO::IGraphConfig& item, uint32_t attribute) const;
    /// Its place in the flow.
    std::optional<size_t> inFlow(const NUXO::IGraphConfig& item) const;
    /// The element of the setting that configures a node, or a part of one, of the graph; null when there is none.
    const NUXO::GraphConfigNode* inSettings(const NUXO::IGraphConfig& item) const;
    /// The same, or else that of the node around it, or else the setting.
    const NUXO::IGraphConfig& nearestInSettings(const NUXO::IGraphConfig& item) const;

    /// Whether construction switched a port off, and not a file.
    bool isSwitchedOff(const NUXO::IGraphConfig& port) const;
    /// Whether the setting has one end only of the connections to a node, or of those from a port: a rule for settings
    /// tells of that.
    bool isHalfConnected(const NUXO::IGraphConfig& item) const;
    /// The same for any of them, and for nodes of the setting that are not part of the graph.
    bool isLeftOpen() const;
    /// Whether the descriptor's graph has a connection that leads to a node, made or not.
    bool isFedByGraph(const NUXO::IGraphConfig& node) const;
    /// Whether the setting leads the connection of a port to another sink than the one that the graph names.
    bool isRedirected(const NUXO::IGraphConfig& port) const;

private:
    Location atValue(const Location& where);
    bool isStarved(const std::string& node) const;
    bool isOpenEnded(const std::string& port) const;
    bool isOutside(const std::string& node) const;

    const BuiltSetting& mSetting;
    Session& mScratch;
    ProgramGroups mGroups;
    std::vector<const NUXO::GraphConfigNode*> mNodes;
    SettingLinks mLinks;
    std::unordered_map<const NUXO::IGraphConfig*, size_t> mInFlow;  // only looked up
    std::unordered_set<const NUXO::IGraphConfig*> mExplained;       // likewise
    std::unordered_map<const NUXO::IGraphConfig*, Extent> mAllowed; // likewise
    std::set<std::string> mFound;
    std::map<std::pair<uint32_t, uint32_t>, const XmlElement*>
        mOverrides; // by line and column, once they are asked for
};

} // namespace NuxoTool

#endif
