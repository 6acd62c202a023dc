// SPDX-License-Identifier: Apache-2.0
#include "model/SettingsModel.h"

namespace NuxoTool {

namespace {

ModelSetting makeSetting(const XmlElement& element, size_t index, const DescriptorModel& descriptor)
{
    ModelSetting setting;
    setting.element = &element;
    setting.index = index;
    setting.key = element.integer("key");
    setting.graphId = element.integer("id");
    if (setting.graphId) setting.graph = descriptor.graph(*setting.graphId);
    return setting;
}

/// Children without a name cannot be chosen: they give values to all modes.
std::vector<ModelSensorMode> modesBelow(const XmlElement& sensorModes)
{
    std::vector<ModelSensorMode> modes;
    for (const XmlElement* child : sensorModes.children) {
        if (const XmlAttribute* name = child->attribute("name")) modes.push_back({child, name->value});
    }
    return modes;
}

} // namespace

SettingsModel::SettingsModel(const XmlDocument& document, const DescriptorModel& descriptor) : mDocument(document)
{
    const XmlElement* root = document.root();
    if (root == nullptr) return;
    size_t index = 0;
    for (const XmlElement* child : root->children) {
        if (child->name != "settings") continue;
        mSettings.push_back(makeSetting(*child, index, descriptor));
        if (child->misspelled.empty()) ++index;
    }
    mModesElement = root->child("sensor_modes");
    if (mModesElement != nullptr) mModes = modesBelow(*mModesElement);
    for (size_t i = 0; i < mModes.size(); ++i) mModesById.emplace(mModes[i].id, i);
}

const ModelSensorMode* SettingsModel::sensorMode(std::string_view id) const
{
    const auto found = mModesById.find(id);
    return found == mModesById.end() ? nullptr : &mModes[found->second];
}

std::string SettingsModel::version() const
{
    const XmlElement* root = mDocument.root();
    return root == nullptr ? std::string() : root->value("version");
}

} // namespace NuxoTool
