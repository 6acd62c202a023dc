// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_SETTINGS_MODEL_H
#define NUXO_TOOL_SETTINGS_MODEL_H

#include "document/XmlDocument.h"
#include "model/DescriptorModel.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NuxoTool {

/// A `settings` element: one use case.
struct ModelSetting {
    const XmlElement* element = nullptr;
    /// Among the settings that the library sees in the file, in its order. A misspelled element has that of the next one.
    size_t index = 0;
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
    /// The first of that name, null when there is none.
    const ModelSensorMode* sensorMode(std::string_view id) const;
    /// The `sensor_modes` element, null when there is none.
    const XmlElement* sensorModesElement() const { return mModesElement; }
    std::string version() const;

private:
    const XmlDocument& mDocument;
    std::deque<ModelSetting> mSettings;
    std::vector<ModelSensorMode> mModes;
    std::map<std::string, size_t, std::less<>> mModesById;
    const XmlElement* mModesElement = nullptr;
};

} // namespace NuxoTool

#endif
