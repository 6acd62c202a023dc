// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsPlaces.h"

#include "Text.h"

#include <algorithm>
#include <initializer_list>

namespace NuxoTool {

namespace {

constexpr const char* kSensor = "sensor";

bool isOneOf(std::string_view name, std::initializer_list<std::string_view> names)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

// Elements of a descriptor that are not told apart by names.
bool isNameless(std::string_view element)
{
    return isOneOf(element, {"klink", "options"});
}

bool hasEnds(std::string_view element)
{
    return isOneOf(element, {"zmt_pixelformatter", "stream2mmio", "pixel_array", "binner", "scaler"});
}

// Elements of a node that the library reads whether or not the descriptor has them.
bool mayJoinNode(const ModelNode& node, std::string_view name)
{
    if (node.kind == "source") return isOneOf(name, {"pixel_array", "binner", "scaler"});
    if (node.kind == "hw") return isOneOf(name, {"zmt_pixelformatter", "stream2mmio"});
    return node.kind != "sink" && isOneOf(name, {"cipf", "hw_bitmaps"});
}

// One of several outputs of a kernel whose descriptor leaves them open.
bool mayJoinOutput(const SettingPlace& output, const XmlElement& child)
{
    const bool isOutput = output.isKernelEnd() && output.written->name == "output";
    const bool isOpen = output.declared == nullptr || output.declared->children.empty();
    return isOutput && isOpen && child.attribute("id") != nullptr;
}

bool mayJoin(const SettingPlace& parent, const XmlElement& child)
{
    if (child.attribute("type") != nullptr) return true; // says by itself what it is
    if (parent.isNode()) return mayJoinNode(*parent.node, child.name);
    const bool isStage =
        parent.isPart() && (hasEnds(parent.written->name) || (parent.part != nullptr && parent.part->kind == "kernel"));
    if (isStage) return isOneOf(child.name, {"input", "output"});
    return mayJoinOutput(parent, child);
}

// Visits what stands below a place whose counterpart is known.
class Walk {
public:
    explicit Walk(const VisitPlace& visit) : mVisit(visit) {}

    void start(const SettingPlace& place)
    {
        mOpen.push_back(place);
        run();
    }

    void below(const SettingPlace& place)
    {
        pushChildren(place);
        run();
    }

private:
    void run()
    {
        while (!mOpen.empty()) {
            const SettingPlace next = std::move(mOpen.back());
            mOpen.pop_back();
            mVisit(next);
            pushChildren(next);
        }
    }

    void pushChildren(const SettingPlace& parent)
    {
        if (parent.node == nullptr || !parent.node->isWhole()) return;
        if (parent.standing == SettingPlace::Standing::Unknown) return;
        const auto& children = parent.written->children;
        for (auto child = children.rbegin(); child != children.rend(); ++child)
            mOpen.push_back(placeOf(parent, **child));
    }

    static SettingPlace placeOf(const SettingPlace& parent, const XmlElement& child)
    {
        SettingPlace place;
        place.written = &child;
        place.descriptor = parent.descriptor;
        place.setting = parent.setting;
        place.node = parent.node;
        place.declaredParent = parent.declared;
        place.path = parent.isNode() ? child.name : parent.path + ':' + child.name;
        if (parent.isNode()) {
            place.part = parent.node->part(child.name);
            place.declared = place.part == nullptr ? nullptr : place.part->element;
        } else {
            place.part = parent.part;
            place.declared = parent.declared == nullptr ? nullptr : childFiled(*parent.declared, child.name);
        }
        if (isNameless(child.name)) return place; // whatever the descriptor has of it
        if (place.declared != nullptr) {
            place.standing = SettingPlace::Standing::Declared;
        } else if (mayJoin(parent, child)) {
            place.standing = SettingPlace::Standing::Added;
        }
        return place;
    }

    const VisitPlace& mVisit;
    std::vector<SettingPlace> mOpen;
};

SettingPlace placeOfNode(const DescriptorModel& descriptor, const ModelSetting& setting, const XmlElement& written)
{
    SettingPlace place;
    place.written = &written;
    place.descriptor = &descriptor;
    place.setting = &setting;
    const ModelNode* const node = descriptor.node(written.name);
    if (node != nullptr && !node->isBase) {
        place.node = node;
        place.declared = node->element;
        place.standing = SettingPlace::Standing::Declared;
    } else if (written.name == "mbr_data" || written.attribute("type") != nullptr) {
        place.standing = SettingPlace::Standing::Added;
    }
    return place;
}

} // namespace

std::string SettingPlace::fullPath() const
{
    const std::string& top = node == nullptr ? written->name : node->name;
    return isNode() ? top : top + ':' + path;
}

std::string SettingPlace::title() const
{
    return named(fullPath());
}

std::string SettingPlace::declaredText(std::string_view attribute) const
{
    if (node == nullptr) return "";
    const std::string inNode = isNode() ? std::string(attribute) : path + ':' + std::string(attribute);
    const std::optional<ModelValue> value = node->value(inNode);
    return value ? value->text : "";
}

std::string SettingPlace::text(std::string_view attribute) const
{
    const XmlAttribute* const own = written->attribute(attribute);
    return own != nullptr ? own->value : declaredText(attribute);
}

std::optional<int32_t> SettingPlace::integer(std::string_view attribute) const
{
    return wholeInteger(text(attribute));
}

void visitPlaces(const DescriptorModel& descriptor, const ModelSetting& setting, const VisitPlace& visit)
{
    Walk walk(visit);
    for (const XmlElement* child : setting.element->children) walk.start(placeOfNode(descriptor, setting, *child));
}

void visitPlaces(const DescriptorModel& descriptor, const SettingsModel& file, const VisitPlace& visit)
{
    for (const ModelSetting& setting : file.settings()) visitPlaces(descriptor, setting, visit);
    const ModelNode* const sensor = descriptor.node(kSensor);
    if (sensor == nullptr) return;
    Walk walk(visit);
    for (const ModelSensorMode& mode : file.sensorModes()) {
        SettingPlace place;
        place.written = mode.element;
        place.descriptor = &descriptor;
        place.node = sensor;
        place.declared = sensor->element;
        place.standing = SettingPlace::Standing::Declared;
        walk.below(place);
    }
}

bool isFaulty(const ModelNode& node, const RuleReporter& reporter)
{
    return reporter.hasErrors(*node.element) || (node.base != nullptr && reporter.hasErrors(*node.base));
}

bool saysTheSame(const std::string& a, const std::string& b)
{
    const std::optional<int32_t> number = wholeInteger(a);
    return a == b || (number && number == wholeInteger(b));
}

std::vector<std::string> namesBeside(const SettingPlace& place, const DescriptorModel& descriptor)
{
    if (place.isNode()) {
        std::vector<std::string> names;
        for (const ModelNode& node : descriptor.nodes()) {
            if (!node.isBase) names.push_back(node.name);
        }
        return names;
    }
    if (place.isPart()) {
        std::vector<std::string> names;
        for (const ModelPart& part : place.node->parts) {
            if (!isNameless(part.kind) && part.kind != "attribute") names.push_back(part.name);
        }
        return names;
    }
    std::vector<std::string> names;
    if (place.declaredParent != nullptr) {
        for (const XmlElement* child : place.declaredParent->children) names.push_back(filedName(*child));
    }
    const bool isEnd = place.isKernelEnd() && place.path.find(':') == place.path.rfind(':');
    for (const char* const end : {"input", "output"}) {
        if (isEnd && std::find(names.begin(), names.end(), end) == names.end()) names.emplace_back(end);
    }
    return names;
}

} // namespace NuxoTool
