// SPDX-License-Identifier: Apache-2.0
#include "FormatGeometry.h"
#include "FormatNames.h"
#include "JsonRenderer.h"
#include "LibraryFindings.h"
#include "LibraryLog.h"
#include "Text.h"
#include "TextTable.h"
#include "verbs/Verbs.h"

namespace NuxoTool {

using NUXOFormats::qv_format_t;

namespace {

constexpr TextTable::Align kRight = TextTable::Align::Right;

std::string planesText(const qv_format_t& format)
{
    std::string text;
    for (const NUXOFormats::qv_format_plane_t& plane : format.planes) {
        text += (text.empty() ? "" : " ") + plane.name + ':' + std::to_string(plane.bitsPerSample);
    }
    return orDash(text);
}

std::string frameFormatText(const qv_format_t& format)
{
    const std::optional<FrameFormat> frameFormat = frameFormatOf(format.fourcc);
    if (!frameFormat) return "-";
    const char* const raw = frameFormat->isRaw ? ", raw" : "";
    const char* const packed = frameFormat->isPacked64 ? ", packed into 64-bit words" : "";
    return std::to_string(frameFormat->value) + raw + packed;
}

std::string renderAll()
{
    TextTable table({{"NAME"},
                     {"CODE"},
                     {"FAMILY"},
                     {"BPP", kRight},
                     {"DEPTH", kRight},
                     {"SAMPLE", kRight},
                     {"LAYOUT", kRight},
                     {"COMPRESSED"},
                     {"PLANES"},
                     {"FRAME FORMAT"}});
    for (const qv_format_t& format : NUXOFormats::gNUXOFormats) {
        table.add({format.name, fourccText(format.fourcc), format.family, std::to_string(format.bpp),
                   std::to_string(format.bitDepth), std::to_string(format.sampleBits),
                   std::to_string(format.layoutHint), yesOrNo(format.isCompressed), planesText(format),
                   frameFormatText(format)});
    }
    return table.text();
}

bool hasSize(const FrameSize& size)
{
    return size.width || size.stride;
}

std::string facts(const qv_format_t& format, const FrameSize& size, const FormatGeometry& geometry)
{
    TextTable table({{""}, {""}});
    table.add({"name", format.name});
    table.add({"code", fourccText(format.fourcc) + "  " + hexText(format.fourcc)});
    table.add({"family", format.family});
    table.add({"bits per pixel", std::to_string(format.bpp)});
    table.add({"bit depth", std::to_string(format.bitDepth)});
    table.add({"sample bits", std::to_string(format.sampleBits)});
    table.add({"layout hint", std::to_string(format.layoutHint)});
    table.add({"supported", yesOrNo(format.supported)});
    table.add({"compressed", yesOrNo(format.isCompressed)});
    table.add({"planes", planesText(format)});
    table.add({"frame format", frameFormatText(format)});
    if (!hasSize(size)) return table.text();
    table.add({"width", orDash(size.width)});
    table.add({"height", orDash(size.height)});
    table.add({"stride", orDash(geometry.stride)});
    table.add({"buffer size", orDash(geometry.bufferSize)});
    return table.text();
}

// What is worth a table: planes whose lines are known, and how the compressor divides them.
std::string planeTable(const qv_format_t& format, const FormatGeometry& geometry)
{
    if (!format.isCompressed && (format.planes.empty() || !geometry.stride)) return "";
    std::vector<TextTable::Column> columns = {{"PLANE"}, {"NAME"}, {"BITS", kRight}, {"LINE", kRight}};
    if (format.isCompressed) {
        columns.insert(columns.end(),
                       {{"TILE", kRight}, {"IMAGE", kRight}, {"TABLE OFFSET", kRight}, {"TABLE SIZE", kRight}});
    }
    TextTable table(columns);
    for (size_t i = 0; i < geometry.planes.size(); ++i) {
        const PlaneGeometry& plane = geometry.planes[i];
        std::vector<std::string> cells = {std::to_string(i), orDash(plane.name), orDash(plane.bitsPerSample),
                                          orDash(plane.lineBytes)};
        if (format.isCompressed) {
            for (const auto& number : {plane.tileSize, plane.imageBytes, plane.tableOffset, plane.tableSize}) {
                cells.push_back(orDash(number));
            }
        }
        table.add(cells);
    }
    return '\n' + table.text();
}

JsonValue jsonFormat(const qv_format_t& format)
{
    JsonValue json;
    json["name"] = format.name;
    json["fourcc"] = fourccText(format.fourcc);
    json["family"] = format.family;
    json["bits_per_pixel"] = format.bpp;
    json["bit_depth"] = format.bitDepth;
    json["sample_bits"] = format.sampleBits;
    json["layout_hint"] = format.layoutHint;
    json["supported"] = format.supported;
    json["compressed"] = format.isCompressed;
    json["frame_format"] = nullptr;
    if (const std::optional<FrameFormat> frameFormat = frameFormatOf(format.fourcc)) {
        json["frame_format"] = {
            {"value", frameFormat->value}, {"raw", frameFormat->isRaw}, {"packed_64", frameFormat->isPacked64}};
    }
    return json;
}

std::string renderAllJson()
{
    JsonValue document = jsonDocument("formats");
    document["formats"] = JsonValue::array();
    for (const qv_format_t& format : NUXOFormats::gNUXOFormats) {
        JsonValue json = jsonFormat(format);
        json["planes"] = JsonValue::array();
        for (const NUXOFormats::qv_format_plane_t& plane : format.planes) {
            json["planes"].push_back({{"name", plane.name}, {"bits_per_sample", plane.bitsPerSample}});
        }
        document["formats"].push_back(json);
    }
    return jsonText(document);
}

JsonValue jsonPlane(const PlaneGeometry& plane)
{
    JsonValue json;
    json["name"] = jsonOrNull(plane.name);
    json["bits_per_sample"] = jsonOrNull(plane.bitsPerSample);
    json["line_bytes"] = jsonOrNull(plane.lineBytes);
    json["tile_size"] = jsonOrNull(plane.tileSize);
    json["image_bytes"] = jsonOrNull(plane.imageBytes);
    json["table_offset"] = jsonOrNull(plane.tableOffset);
    json["table_size"] = jsonOrNull(plane.tableSize);
    return json;
}

std::string renderJson(const qv_format_t& format, const FrameSize& size, const FormatGeometry& geometry)
{
    JsonValue document = jsonDocument("format");
    document["format"] = jsonFormat(format);
    document["width"] = jsonOrNull(size.width);
    document["height"] = jsonOrNull(size.height);
    document["stride"] = jsonOrNull(geometry.stride);
    document["buffer_size"] = jsonOrNull(geometry.bufferSize);
    document["planes"] = JsonValue::array();
    for (const PlaneGeometry& plane : geometry.planes) document["planes"].push_back(jsonPlane(plane));
    return jsonText(document);
}

// By name, or else by code; null when there is none.
const qv_format_t* findFormat(const std::string& name)
{
    const qv_format_t* const format = formatNamed(name);
    return format == nullptr && name.size() == kFourccLength ? formatCoded(fourccOf(name)) : format;
}

void reportUnknown(Session& session, const std::string& name)
{
    session.findings.usageError("unknown-format", {name.empty() ? " " : name, 1, name.size()},
                                "'" + name +
                                    "' is neither name nor code of a format; expected one that nuxo formats lists" +
                                    formatSuggestion(name, true));
    if (name.size() != kFourccLength) return;
    if (const std::optional<FrameFormat> frameFormat = frameFormatOf(fourccOf(name))) {
        session.findings.note({}, "the code stands for frame format " + std::to_string(frameFormat->value) +
                                      ", but no format describes it");
    }
}

void showFormat(Session& session, const qv_format_t& format)
{
    const FrameSize size = {session.arguments.width, session.arguments.height, session.arguments.stride};
    takeLibraryLog();
    const FormatGeometry geometry = geometryOf(format, size);
    reportLogLines(session, {"format", nullptr, format.name, 0});
    if (mayOverflow(size, geometry)) {
        session.findings.warning(
            "overflow", {},
            "sizes of this frame may exceed 32 bits, where the library starts again from 0; expected a smaller frame");
    }
    session.output = session.arguments.format == Format::Json
                         ? renderJson(format, size, geometry)
                         : facts(format, size, geometry) + planeTable(format, geometry);
}

} // namespace

void runFormats(Session& session)
{
    NUXOFormats::initNUXOFormats();
    if (!session.arguments.formatName) {
        session.output = session.arguments.format == Format::Json ? renderAllJson() : renderAll();
        return;
    }
    const std::string& name = *session.arguments.formatName;
    if (const qv_format_t* const format = findFormat(name)) {
        showFormat(session, *format);
    } else {
        reportUnknown(session, name);
    }
}

} // namespace NuxoTool
