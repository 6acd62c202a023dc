// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_SETTINGS_PEERS_H
#define NUXO_TOOL_SETTINGS_PEERS_H

#include "model/DescriptorModel.h"
#include "model/SettingsModel.h"

#include <functional>
#include <string>

namespace NuxoTool {

/// Gets a port with a peer and what is wrong with it.
using SeePeer = std::function<void(const XmlElement&, const std::string&)>;

/// The ports of a setting whose `peer` does not lead them to a sink of the setting.
void visitBadPeers(const DescriptorModel& descriptor, const ModelSetting& setting, const SeePeer& see);
bool hasBadPeers(const DescriptorModel& descriptor, const ModelSetting& setting);

} // namespace NuxoTool

#endif
