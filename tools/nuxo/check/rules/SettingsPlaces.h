// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_SETTINGS_PLACES_H
#define NUXO_TOOL_SETTINGS_PLACES_H

#include "check/RuleReporter.h"
#include "model/DescriptorModel.h"
#include "model/SettingsModel.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NuxoTool {

/// An element of a setting, or of a sensor mode, beside what it configures in the descriptor.
struct SettingPlace {
    enum class Standing {
        Declared, ///< the descriptor has it
        Added,    ///< it has not, but settings may add such an element
        Unknown   ///< it has not; nothing below is visited
    };

    const XmlElement* written = nullptr;
    const DescriptorModel* descriptor = nullptr;
    const ModelSetting* setting = nullptr; ///< null in sensor modes
    const ModelNode* node = nullptr;       ///< null for an element that names none
    const ModelPart* part = nullptr; ///< the part of the node that it is, or stands below; null for the node itself
    const XmlElement* declared = nullptr; ///< its counterpart in the descriptor; null if it has none
    const XmlElement* declaredParent = nullptr;
    Standing standing = Standing::Unknown;
    std::string path; ///< names below the node joined by ':', empty for the node itself

    /// The node itself.
    bool isNode() const { return path.empty(); }
    /// A part of the node, not an element below one.
    bool isPart() const { return !isNode() && path.find(':') == std::string::npos; }
    bool isPort() const { return isPart() && part != nullptr && part->kind == "port"; }
    bool isSink() const { return isNode() && node != nullptr && node->kind == "sink"; }
    /// Below a kernel: its input, an output or one of several outputs.
    bool isKernelEnd() const { return !isNode() && !isPart() && part != nullptr && part->kind == "kernel"; }
    /// "cb_vout:main_out"
    std::string fullPath() const;
    /// The same in quotes.
    std::string title() const;

    /// What the graph gets: the value of the setting, or else that of the descriptor.
    std::string text(std::string_view attribute) const;
    std::optional<int32_t> integer(std::string_view attribute) const;
    /// What the descriptor says.
    std::string declaredText(std::string_view attribute) const;
    bool sets(std::string_view attribute) const { return written->attribute(attribute) != nullptr; }
    /// Whether it is on: only 0 switches off.
    bool isEnabled() const { return integer("enabled").value_or(1) != 0; }
};

using VisitPlace = std::function<void(const SettingPlace&)>;

/// All elements below one setting that configure or add something, parents before children, in the order of the file.
void visitPlaces(const DescriptorModel& descriptor, const ModelSetting& setting, const VisitPlace& visit);
/// The same for all settings of a file, then for its sensor modes. Modes become part of the node `sensor`.
void visitPlaces(const DescriptorModel& descriptor, const SettingsModel& file, const VisitPlace& visit);

/// Whether the descriptor's own rules found errors in a node: what settings say of it cannot be judged then.
bool isFaulty(const ModelNode& node, const RuleReporter& reporter);

/// Whether two texts give an attribute one value: they are equal, or are one number.
bool saysTheSame(const std::string& a, const std::string& b);

/// Names that an element in this place could have instead, for suggestions.
std::vector<std::string> namesBeside(const SettingPlace& place, const DescriptorModel& descriptor);

} // namespace NuxoTool

#endif
