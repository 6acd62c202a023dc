// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsRules.h"
#include "Text.h"

#include "check/rules/SettingsPlaces.h"

#include <algorithm>
#include <set>

namespace NuxoTool {

namespace {

constexpr const char* kSensor = "sensor";

// One mode with what the descriptor says of the sensor.
class ModeView {
public:
    ModeView(const XmlElement& mode, const ModelNode* sensor) : mMode(mode), mSensor(sensor) {}

    const XmlElement& mode() const { return mMode; }

    /// The deepest element of the mode on a path.
    const XmlElement& elementAt(const std::string& path) const
    {
        const XmlElement* element = &mMode;
        for (const std::string& name : namesOfPath(path)) {
            const XmlElement* const child = element->child(name);
            if (child == nullptr) break;
            element = child;
        }
        return *element;
    }

    bool has(const std::string& path) const
    {
        const std::vector<std::string> names = namesOfPath(path);
        return elementAt(path).name == names.back() || isInSensor(names);
    }

    std::string text(const std::string& path, const char* attribute) const
    {
        const XmlElement* element = &mMode;
        for (const std::string& name : namesOfPath(path)) {
            if (element != nullptr) element = element->child(name);
        }
        if (element != nullptr && element->attribute(attribute) != nullptr) return element->value(attribute);
        // What stands at sensor_modes holds for all modes.
        if (path.empty() && mMode.parent->attribute(attribute) != nullptr) return mMode.parent->value(attribute);
        if (mSensor == nullptr) return "";
        const std::optional<ModelValue> value = mSensor->value(path.empty() ? attribute : path + ':' + attribute);
        return value ? value->text : "";
    }

    std::optional<int32_t> integer(const std::string& path, const char* attribute) const
    {
        return wholeInteger(text(path, attribute));
    }

private:
    bool isInSensor(const std::vector<std::string>& names) const
    {
        const ModelPart* const part = mSensor == nullptr ? nullptr : mSensor->part(names[0]);
        if (part == nullptr || names.size() == 1) return part != nullptr;
        return childFiled(*part->element, names[1]) != nullptr;
    }

    const XmlElement& mMode;
    const ModelNode* mSensor;
};

std::string spaced(std::string path)
{
    std::replace(path.begin(), path.end(), ':', ' ');
    return path;
}

// What the library needs of a mode.
class ValueCheck {
public:
    ValueCheck(const ModeView& view, const std::string& id, RuleReporter& reporter)
        : mView(view), mTitle("mode " + named(id)), mReporter(reporter)
    {
    }

    /// @param isSized  whether settings give the size of the sensor
    void check(bool isSized) const
    {
        if (!isSized) checkNumbers("", {"width", "height"});
        checkOwnSize();
        checkStage("pixel_array");
        checkStage("binner");
        checkStage("scaler");
        if (mView.has("binner")) checkBinning();
        if (mView.has("scaler")) checkScaling();
    }

private:
    void checkStage(const std::string& stage) const
    {
        if (!mView.has(stage)) return;
        for (const char* const end : {"input", "output"}) {
            const std::string path = stage + ':' + end;
            if (mView.has(path)) {
                checkNumbers(path, {"width", "height"});
                // The output crop of the array is not read.
                if (path != "pixel_array:output") checkNumbers(path, {"left", "top"});
            } else {
                const bool isArrayInput = path == "pixel_array:input";
                mReporter.report(mView.elementAt(stage),
                                 mTitle + " has no " + spaced(path) +
                                     (isArrayInput ? ", so its own size counts as that of the whole array; expected <"
                                                   : ", so the rest of the mode is not read; expected <") +
                                     end + " .../> below " + named(stage));
            }
        }
    }

    void checkNumbers(const std::string& path, std::initializer_list<const char*> names) const
    {
        for (const char* const name : names) {
            if (!mView.text(path, name).empty()) continue;
            mReporter.report(mView.elementAt(path), mTitle + " has no " + name +
                                                        (path.empty() ? "" : " at its " + spaced(path)) +
                                                        ", so it is not used; expected a number");
        }
    }

    void checkOwnSize() const
    {
        for (const char* const name : {"width", "height"}) {
            const std::optional<int32_t> size = mView.integer("", name);
            if (!size || *size > 0) continue;
            mReporter.report(mView.mode(), name,
                             std::string(name) + " of " + mTitle + " is " + std::to_string(*size) +
                                 "; expected a size above 0");
        }
    }

    void checkBinning() const
    {
        const std::optional<int32_t> horizontal = factor("binner", "h_factor");
        const std::optional<int32_t> vertical = factor("binner", "v_factor");
        if (!horizontal || !vertical || horizontal == vertical) return;
        mReporter.report(mView.elementAt("binner"), "v_factor",
                         mTitle + " bins " + std::to_string(*horizontal) + 'x' + std::to_string(*vertical) +
                             ", but the horizontal factor counts for both directions; expected two equal factors");
    }

    void checkScaling() const
    {
        factor("scaler", "num_factor");
        factor("scaler", "denom_factor");
    }

    std::optional<int32_t> factor(const char* stage, const char* name) const
    {
        if (mView.text(stage, name).empty()) {
            mReporter.report(mView.elementAt(stage), mTitle + " has no " + name + " at its " + stage +
                                                         "; expected a number above 0, 1 for none");
        }
        return mView.integer(stage, name);
    }

    const ModeView& mView;
    std::string mTitle;
    RuleReporter& mReporter;
};

// What becomes of the frame from stage to stage, in one direction.
struct Axis {
    const char* size;
    const char* first;
    const char* second;
    const char* binning;
};
constexpr Axis kAxes[] = {{"width", "left", "right", "h_factor"}, {"height", "top", "bottom", "v_factor"}};

class GeometryCheck {
public:
    GeometryCheck(const ModeView& view, const std::string& id, const Axis& axis, RuleReporter& reporter)
        : mView(view), mTitle("mode " + named(id)), mAxis(axis), mReporter(reporter)
    {
    }

    void check()
    {
        if (!checkSymmetry() || !readArray()) return;
        const int64_t binning = mView.integer("binner", mAxis.binning).value_or(1);
        const int64_t numerator = mView.integer("scaler", "num_factor").value_or(1);
        const int64_t denominator = mView.integer("scaler", "denom_factor").value_or(1);
        if (binning <= 0 || numerator <= 0 || denominator <= 0) return;
        if (!passStage("binner", 1, binning) || !passStage("scaler", numerator, denominator)) return;
        if (!arrives("", "the mode itself")) return;
        if (mView.has("port_0")) arrives("port_0", "port_0");
    }

private:
    bool checkSymmetry() const
    {
        for (const char* const path :
             {"pixel_array:input", "binner:input", "binner:output", "scaler:input", "scaler:output"}) {
            const std::optional<int32_t> first = mView.integer(path, mAxis.first);
            const std::optional<int32_t> second = mView.integer(path, mAxis.second);
            if (!first || !second || first == second) continue;
            mReporter.report(mView.elementAt(path), mAxis.second,
                             std::string(mAxis.second) + " of the " + spaced(path) + " is " + std::to_string(*second) +
                                 ", but " + mAxis.first + ", which counts for both sides, is " +
                                 std::to_string(*first) + "; expected the same");
            return false;
        }
        return true;
    }

    bool readArray()
    {
        const char* const input = "pixel_array:input";
        const std::optional<int32_t> size = mView.integer(input, mAxis.size);
        if (!size) return false;
        mFlow = *size - cropAt(input);
        return arrives("pixel_array:output", "its input and crop leave that");
    }

    int64_t cropAt(const std::string& path) const { return 2 * int64_t{mView.integer(path, mAxis.first).value_or(0)}; }

    bool passStage(const std::string& stage, int64_t numerator, int64_t denominator)
    {
        if (!mView.has(stage)) return true;
        if (!arrives(stage + ":input", "the stage before makes that")) return false;
        mFlow = (mFlow - cropAt(stage + ":input")) * numerator / denominator;
        // The output may state its size before or after its crop.
        const std::string output = stage + ":output";
        if (mView.integer(output, mAxis.size) == mFlow - cropAt(output)) mFlow -= cropAt(output);
        return arrives(output, "its input and factor make that");
    }

    // Whether the size stated at a place is what gets there; where none is stated, it is.
    bool arrives(const std::string& path, const char* reason) const
    {
        const std::optional<int32_t> stated = mView.integer(path, mAxis.size);
        if (!stated || *stated == mFlow) return true;
        mReporter.report(mView.elementAt(path), mAxis.size,
                         mTitle + ": the " + mAxis.size + (path.empty() ? "" : " of the " + spaced(path)) + " is " +
                             std::to_string(*stated) + "; expected " + std::to_string(mFlow) + ": " + reason);
        return false;
    }

    const ModeView& mView;
    std::string mTitle;
    const Axis& mAxis;
    RuleReporter& mReporter;
    int64_t mFlow = 0;
};

std::set<std::string> modesSizedBySettings(const SettingsModel& file)
{
    std::set<std::string> modes;
    for (const ModelSetting& setting : file.settings()) {
        const XmlElement* const sensor = setting.element->child(kSensor);
        const bool isSized =
            sensor != nullptr && sensor->attribute("width") != nullptr && sensor->attribute("height") != nullptr;
        if (isSized) modes.insert(sensor->value("mode_id"));
    }
    return modes;
}

void checkModeValues(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    const std::set<std::string> sized = modesSizedBySettings(file);
    for (const ModelSensorMode& mode : file.sensorModes()) {
        const ModeView view(*mode.element, descriptor.node(kSensor));
        ValueCheck(view, mode.id, reporter).check(sized.count(mode.id) > 0);
    }
}

void checkModeGeometry(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    for (const ModelSensorMode& mode : file.sensorModes()) {
        const ModeView view(*mode.element, descriptor.node(kSensor));
        for (const Axis& axis : kAxes) GeometryCheck(view, mode.id, axis, reporter).check();
    }
}

// Values of the setting's sensor that its mode replaces.

// Others stay as they are, and sizes are compared in the built graph.
bool isReplaced(const std::string& attribute)
{
    constexpr const char* kept[] = {"name", "direction", "id", "peer", "type", "width", "height"};
    return std::find(std::begin(kept), std::end(kept), attribute) == std::end(kept);
}

struct Losses {
    const char* first = nullptr; ///< attribute
    std::vector<std::string> own;
    std::vector<std::string> fromMode;
};

Losses lossesOf(const XmlElement& own, const XmlElement& fromMode)
{
    Losses losses;
    for (const XmlAttribute& attribute : own.attributes) {
        const XmlAttribute* const stronger = fromMode.attribute(attribute.name);
        if (stronger == nullptr || stronger->value == attribute.value || !isReplaced(attribute.name)) continue;
        if (losses.first == nullptr) losses.first = attribute.name.c_str();
        losses.own.push_back(attribute.name + ' ' + attribute.value);
        losses.fromMode.push_back(stronger->value);
    }
    return losses;
}

void checkLosses(const SettingPlace& place, const ModeView& mode, RuleReporter& reporter)
{
    const std::vector<std::string> names = namesOfPath(place.path);
    const XmlElement& counterpart = mode.elementAt(place.path);
    const bool isThere = names.empty() || counterpart.name == names.back();
    if (!isThere) return;
    const Losses losses = lossesOf(*place.written, counterpart);
    if (losses.first == nullptr) return;
    reporter.reportOnce(*place.written, losses.first,
                        "the sensor mode replaces " + listOf(losses.own) + " of " + place.title() + " with " +
                            listOf(losses.fromMode) + "; expected the same here, or another mode");
    reporter.note(counterpart, losses.first, "mode " + named(mode.mode().value("name")));
}

void checkReplacedValues(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    for (const ModelSetting& setting : file.settings()) {
        const XmlElement* const sensor = setting.element->child(kSensor);
        const ModelSensorMode* const mode = sensor == nullptr ? nullptr : file.sensorMode(sensor->value("mode_id"));
        if (mode == nullptr) continue;
        const ModeView view(*mode->element, nullptr);
        visitPlaces(descriptor, setting, [&](const SettingPlace& place) {
            if (place.node != nullptr && place.node->name == kSensor) checkLosses(place, view, reporter);
        });
    }
}

} // namespace

std::vector<Rule> sensorModeRules()
{
    return {
        {"mode-values",
         RuleSeverity::Error,
         "a sensor mode lacks a number, or has one that the library cannot use",
         "From the mode the library works out which part of the pixel array a frame shows: the mode's own size, the "
         "'input' and 'output' of 'pixel_array', 'binner' and 'scaler' with width, height, left and top, and their "
         "factors. Where one is missing it gives up or leaves out the rest of the mode; different binning in the two "
         "directions gives wrong results. State all of them, 1 for no "
         "binning or scaling, or leave the whole stage out.",
         {},
         checkModeValues},
        {"mode-geometry",
         RuleSeverity::Warning,
         "the sizes of a sensor mode do not follow from one another",
         "The pixel array's input minus its crop is its output; binning divides that, the scaler multiplies it by "
         "num_factor/denom_factor, and what comes out is the size of the mode and of its ports. Crops are symmetric: "
         "only left and top are read. When a number does not fit, the library works out a wrong field of view.",
         {"mode-values", "zero-size", "crop-size"},
         checkModeGeometry},
        {"mode-override",
         RuleSeverity::Error,
         "the sensor mode replaces a value of the setting",
         "The mode that 'mode_id' names is merged into the sensor after the setting, so its values win. A setting that "
         "states another format for a port of the sensor does not get it. Choose the mode that has it, or repeat that "
         "of "
         "the mode.",
         {},
         checkReplacedValues},
    };
}

} // namespace NuxoTool
