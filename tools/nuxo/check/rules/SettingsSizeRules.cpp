// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsRules.h"
#include "Text.h"

#include "FormatGeometry.h"
#include "FormatNames.h"
#include "check/rules/SettingsPlaces.h"

#include <nuxo/formats/NUXOFormats.h>
#include <nuxo/formats/nci_dec400.h>

#include <optional>
#include <utility>

namespace NuxoTool {

namespace {

using NUXOFormats::qv_format_t;

bool setsSize(const SettingPlace& place)
{
    return place.sets("width") || place.sets("height");
}

// Whether a size there is one of frames: of a port, a sink, an end of a kernel or of a stage of the sensor.
bool holdsFrames(const SettingPlace& place)
{
    if (place.standing == SettingPlace::Standing::Unknown || place.node == nullptr) return false;
    return place.isPort() || place.isSink() || !(place.isNode() || place.isPart());
}

// Zero sizes.

void checkHalfSize(const SettingPlace& place, RuleReporter& reporter)
{
    for (const auto& [stated, missing] : {std::pair("width", "height"), std::pair("height", "width")}) {
        if (!place.sets(stated) || !place.text(missing).empty()) continue;
        reporter.report(*place.written, stated,
                        place.title() + " states a " + stated + ", but no " + missing + "; expected both");
    }
}

void checkZeroSize(const SettingPlace& place, RuleReporter& reporter)
{
    for (const char* const name : {"width", "height"}) {
        const std::optional<int32_t> size = place.written->integer(name);
        if (size != 0) continue;
        reporter.report(*place.written, name,
                        std::string(name) + " of " + place.title() + " is 0; expected a size above 0" +
                            (place.isPort() ? ", or enabled=\"0\" to switch the port off" : ""));
    }
}

void checkZeroSizes(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        if (!holdsFrames(place) || !setsSize(place) || !place.isEnabled()) return;
        checkZeroSize(place, reporter);
        checkHalfSize(place, reporter);
    });
}

// Crops.

struct CropSides {
    const char* first;
    const char* second;
    const char* size;
};

void checkCrop(const SettingPlace& place, const CropSides& sides, RuleReporter& reporter)
{
    const std::optional<int32_t> size = place.integer(sides.size);
    const int64_t first = place.integer(sides.first).value_or(0);
    const int64_t second = place.integer(sides.second).value_or(0);
    if (!size || *size <= 0 || first + second < *size) return;
    const char* written = nullptr;
    for (const char* const name : {sides.first, sides.second, sides.size}) {
        const bool isCause = name == sides.size || place.integer(name).value_or(0) > 0;
        if (written == nullptr && isCause && place.sets(name)) written = name;
    }
    if (written == nullptr) return; // all of the descriptor
    reporter.report(*place.written, written,
                    std::string(sides.first) + " and " + sides.second + " of " + place.title() + " crop " +
                        std::to_string(first + second) + " of " + std::to_string(*size) +
                        ", which leaves nothing; expected less than the " + sides.size);
}

void checkCrops(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        // The crop at the pixel array's output repeats that of its input, from the whole array.
        if (!holdsFrames(place) || place.isSink() || place.path == "pixel_array:output") return;
        checkCrop(place, {"left", "right", "width"}, reporter);
        checkCrop(place, {"top", "bottom", "height"}, reporter);
    });
}

// Formats and what sizes they can have.

bool isKnownFormat(const std::string& name)
{
    return formatNamed(name) != nullptr || (name.size() == kFourccLength && formatCoded(fourccOf(name)) != nullptr);
}

void checkFormats(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    NUXOFormats::initNUXOFormats();
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        if (place.standing == SettingPlace::Standing::Unknown || !place.sets("format")) return;
        const std::string& name = place.written->value("format");
        if (isKnownFormat(name)) return;
        reporter.report(*place.written, "format",
                        named(name) + " is no pixel format; expected one that nuxo formats lists" +
                            formatSuggestion(name, false));
    });
}

struct SizeUnits {
    int32_t width = 1;
    int32_t height = 1;
    const char* reason = "";
};

bool contains(const std::string& text, const char* part)
{
    return text.find(part) != std::string::npos;
}

// Samples that several pixels share, or cells of several pixels.
SizeUnits unitsOf(const qv_format_t& format)
{
    if (format.name.compare(0, 3, "PAF") == 0 || format.name.compare(0, 4, "PDAF") == 0)
        return {}; // lists, no pictures
    if (format.family == "BAYER") {
        constexpr int32_t pixelsOfPack = 4; // in 5 bytes
        if (contains(format.name, "_10_P"))
            return {pixelsOfPack, 2, "4 pixels share 5 bytes, and colours repeat every 2 lines"};
        return {2, 2, "colours repeat every 2 pixels and lines"};
    }
    if (contains(format.name, "YUV420")) return {2, 2, "2x2 pixels share their colour"};
    if (contains(format.name, "YUV422") || format.name == "UYVY")
        return {2, 1, "2 pixels of a line share their colour"};
    return {};
}

void checkUnits(const SettingPlace& place, const qv_format_t& format, RuleReporter& reporter)
{
    const SizeUnits units = unitsOf(format);
    for (const auto& [name, unit] : {std::pair("width", units.width), std::pair("height", units.height)}) {
        const std::optional<int32_t> size = place.integer(name);
        if (!size || *size <= 0 || *size % unit == 0) continue;
        const char* const where = place.sets(name) ? name : "format";
        reporter.report(*place.written, where,
                        std::string(name) + ' ' + std::to_string(*size) + " does not fit the format " + format.name +
                            ": " + units.reason + "; expected a multiple of " + std::to_string(unit) + ", such as " +
                            std::to_string(int64_t{*size} / unit * unit + unit));
    }
}

// What the bytes of a line have to be a multiple of, beside the rule of the format.
uint32_t tileAlignment(const qv_format_t& format)
{
    const std::optional<FrameFormat> frameFormat = frameFormatOf(format.fourcc);
    if (!format.isCompressed || !frameFormat) return 1;
    constexpr const char* kReferenceFrames = "YUV420_8_SP_C_TNR";
    uint32_t factor = 0;
    uint32_t extra = 0;
    return nci_dec400_cmprs_get_stride_alignment(frameFormat->value, 0, format.name == kReferenceFrames, &factor,
                                                 &extra);
}

void checkLine(const SettingPlace& place, const qv_format_t& format, RuleReporter& reporter)
{
    const std::optional<int32_t> width = place.integer("width");
    const std::optional<int32_t> bpl = place.integer("bpl");
    if (!place.sets("bpl") || !bpl || !width || *width <= 0) return;
    const int64_t least = getBpl(format.fourcc, static_cast<uint32_t>(*width));
    const int64_t alignment = tileAlignment(format);
    const std::string found = "a line of " + place.title() + " has " + std::to_string(*bpl) + " bytes";
    const std::string frames = std::to_string(*width) + " pixels of " + format.name;
    if (*bpl < least) {
        reporter.report(*place.written, "bpl",
                        found + ", too few for " + frames + "; expected " + std::to_string(least) +
                            " or more, or no bpl, which gives just that");
    } else if (alignment > 1 && *bpl % alignment != 0) {
        reporter.report(*place.written, "bpl",
                        found + ", which is not a whole number of tiles of " + format.name +
                            "; expected a multiple of " + std::to_string(alignment));
    }
}

void checkStrides(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    NUXOFormats::initNUXOFormats();
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        const bool isFrame = holdsFrames(place) && (place.isPort() || place.isSink());
        const bool saysSomething = setsSize(place) || place.sets("format") || place.sets("bpl");
        if (!isFrame || !saysSomething || !place.isEnabled()) return;
        const qv_format_t* const format = formatNamed(place.text("format"));
        if (format == nullptr) return;
        checkUnits(place, *format, reporter);
        checkLine(place, *format, reporter);
    });
}

} // namespace

std::vector<Rule> settingsSizeRules()
{
    return {
        {"zero-size",
         RuleSeverity::Error,
         "a width or height is 0, or stands without the other",
         "A port, sink or kernel input or output that states a size must state a whole one. With half of it, or with "
         "0, ports count as not configured and kernels as without a size of their own, and buffers come out empty. "
         "Give both width and height, or switch an unused port off with enabled=\"0\".",
         {},
         checkZeroSizes},
        {"crop-size",
         RuleSeverity::Error,
         "a crop leaves nothing of the frame",
         "'left' and 'right' are taken off the width, 'top' and 'bottom' off the height, of the input or output where "
         "they stand. Together they must be smaller than the size.",
         {"zero-size"},
         checkCrops},
        {"setting-format",
         RuleSeverity::Error,
         "a setting names a pixel format that does not exist",
         "A 'format' is looked up by its name, in the case of the table. For another one the library takes the first "
         "four "
         "letters for a code and, when that fails, goes on with YUV420_8_SP, so buffers get a layout that nobody asked "
         "for. nuxo formats lists all names.",
         {},
         checkFormats},
        {"stride-rule",
         RuleSeverity::Error,
         "a size does not fit the pixel format",
         "Formats whose pixels share colour samples, or bytes, exist in multiples of these only: 4:2:0 frames and "
         "Bayer "
         "frames have an even width and height, packed 10 bit lines a multiple of 4 pixels. Buffer sizes of others are "
         "rounded down and lose the last line or column. Bytes per line ('bpl') must hold the line, padded as the "
         "hardware "
         "wants it, and whole tiles of a compressed format.",
         {"zero-size"},
         checkStrides},
    };
}

} // namespace NuxoTool
