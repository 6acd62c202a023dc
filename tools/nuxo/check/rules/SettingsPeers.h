// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_SETTINGS_PEERS_H
#define NUXO_TOOL_SETTINGS_PEERS_H

#include "check/rules/NearNames.h"
#include "check/rules/SettingsLinks.h"
#include "check/rules/SettingsPlaces.h"
#include "model/DescriptorModel.h"
#include "model/SettingsModel.h"

#include <functional>
#include <string>
#include <utility>

namespace NuxoTool {

/// Looks for ports of a setting whose `peer` does not lead them to a sink of the setting.
class PeerCheck {
public:
    /// Gets a port with a peer and what is wrong with it.
    using See = std::function<void(const XmlElement&, const std::string&)>;

    explicit PeerCheck(const DescriptorModel& descriptor);
    void visitBad(const ModelSetting& setting, const SettingLinks& links, const See& see);
    bool hasBad(const ModelSetting& setting, const SettingLinks& links);

private:
    std::string wrongTarget(const std::string& peer);
    std::string troubleOf(const SettingPlace& port, const SettingLinks& links);

    const DescriptorModel& mDescriptor;
    NearNames mSinks;
    std::pair<const ModelSetting*, bool> mIsUnsure = {nullptr, false}; ///< whether the setting has unknown nodes
};

} // namespace NuxoTool

#endif
