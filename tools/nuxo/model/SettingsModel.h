// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_SETTINGS_MODEL_H
#define NUXO_TOOL_SETTINGS_MODEL_H

#include "document/XmlDocument.h"
#include "model/DescriptorModel.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace NuxoTool {

/// A `settings` element: one use case.
struct ModelSetting {
    const XmlElement* element = nullptr;
    size_t index = 0; ///< among the settings of the file, in its order
    std::optional<int32_t> key;
    std::optional<int32_t> graphId;
    const ModelGraph* graph = nullptr; ///< null when the descriptor has none of that number
};

/// A sensor mode below `sensor_modes`.
struct ModelSensorMode {
    const XmlElement* element = nullptr;
    std::string id;
};

/// What a settings file says, put together with its descriptor.
class SettingsModel {
public:
    SettingsModel(const XmlDocument& document, const DescriptorModel& descriptor);
    SettingsModel(const SettingsModel&) = delete;
    SettingsModel& operator=(const SettingsModel&) = delete;

    const XmlDocument& document() const { return mDocument; }
    const std::deque<ModelSetting>& settings() const { return mSettings; }
    const std::vector<ModelSensorMode>& sensorModes() const { return mModes; }
    /// The `sensor_modes` element, null when there is none.
    const XmlElement* sensorModesElement() const { return mModesElement; }
    std::string version() const;

private:
    const XmlDocument& mDocument;
    std::deque<ModelSetting> mSettings;
    std::vector<ModelSensorMode> mModes;
    const XmlElement* mModesElement = nullptr;
};

} // namespace NuxoTool

#endif
