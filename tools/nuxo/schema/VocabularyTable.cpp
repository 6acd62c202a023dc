// SPDX-License-Identifier: Apache-2.0
// The vocabulary of graph files: what each name stands for, its unit and who reads it.
#include "schema/GraphSchema.h"

#include <algorithm>
#include <array>

namespace NuxoTool {

namespace {

constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
constexpr int32_t kMostGroupId = 0xFFFF; // it is the upper half of a terminal identifier

enum class Use { Element, Attribute, Both };

struct Row {
    const char* name;
    Use use;
    ValueKind value;
    const char* documentation;
    int32_t least = kLeast;
    int32_t most = kMost;
    bool settable = true; // settings can give it to nodes and their parts
};

constexpr bool kFixed = false; // for Row::settable: settings cannot change it

Row element(const char* name, const char* documentation)
{
    return {name, Use::Element, ValueKind::Text, documentation};
}

Row text(const char* name, const char* documentation)
{
    return {name, Use::Attribute, ValueKind::Text, documentation};
}

Row value(const char* name, ValueKind kind, const char* documentation)
{
    return {name, Use::Attribute, kind, documentation};
}

Row number(const char* name, const char* documentation, int32_t least = kLeast, int32_t most = kMost)
{
    return {name, Use::Attribute, ValueKind::Integer, documentation, least, most};
}

Row flag(const char* name, const char* documentation)
{
    return {name, Use::Attribute, ValueKind::Flag, documentation, 0, 1};
}

Row fixed(Row row)
{
    row.settable = kFixed;
    return row;
}

Row both(Row row)
{
    row.use = Use::Both;
    return row;
}

// Names of elements, and of nodes that the library knows by name.
std::vector<Row> elementRows()
{
    return {
        element("ae_stats_sink", "Usual name of the sink that takes the statistics for automatic exposure."),
        element("af_stats_sink", "Usual name of the sink that takes the statistics for automatic focus."),
        element("apply", "Values to set: below a graph an override, below an option what comes along with it."),
        element("awb_stats_sink", "Usual name of the sink that takes the statistics for automatic white balance."),
        element("binner", "The stage of a sensor that joins neighbouring pixels."),
        element("buffer_src0", "Name of the first source that takes frames from memory. Calibration tag and exposures "
                               "are read from it when a graph has no sensor."),
        element("cipf", "Interface of a stage to the frames' buffers; holds the routing bitmap."),
        element("compute_block", "A stage of the processing system in descriptors of generation 7."),
        element("connection", "A way for frames, from a port to another port or to a sink."),
        element("csi_be", "Usual name of the capture back end behind the sensor."),
        element("csi_be_dol", "Usual name of the capture back end for the further exposures of a sensor."),
        element("csi_be_soc", "Usual name of the capture back end for data that is not processed as an image."),
        element("demux", "A routing element with one input that uses one of several outputs."),
        element("external_stage", "A stage that runs outside of the imaging processor, for example on the GPU."),
        element("graph", "A graph of a descriptor; also the name under which a built graph keeps it."),
        element("graph_descriptor", "The document's element of a graph descriptor."),
        element("graph_settings", "The document's element of a settings file."),
        element("graphs", "Holds the graphs of a descriptor."),
        element("hw", "A capture back end: hardware between a source and the processing system."),
        element("hw_bitmaps", "Resources of a compute block."),
        element("input", "What arrives at a kernel or another stage."),
        element("kernel", "An algorithm of a stage with its own settings record."),
        element("klink", "A link inside a stage, between ports, kernels and routing elements."),
        element("mbr_data", "MBR limits of the streams of a setting."),
        element("mux", "A routing element with several inputs that uses one of them."),
        element("node", "A node that names its type itself or takes it from a base node."),
        element("nodes", "Holds the nodes of a descriptor."),
        element("options", "A list of what else changes with the values of one attribute."),
        element("output", "What leaves a kernel or another stage."),
        element("pixel_array", "The first stage of a sensor, which reads a window of its pixels."),
        element("port", "A place where frames enter or leave a node."),
        element("program_group", "A stage of the processing system in descriptors of generations 5 and 6."),
        element("scaler", "The last stage of a sensor, which shrinks the image."),
        element("sensor", "Name of the source that is a camera sensor. Only a source of this name has sensor modes."),
        element("sensor_modes", "Holds the modes of the sensor."),
        element("settings", "A use case: a graph with the values that it runs with."),
        element("split", "A routing element that gives its input to several outputs."),
        element("tpg", "Name of the source that is a test pattern generator."),
    };
}

std::vector<Row> textRows()
{
    return {
        fixed(both({"attribute", Use::Both, ValueKind::KeyName,
                    "Name of the attribute that a list of options governs. As an element: one difference of a node "
                    "from its base node."})),
        fixed(both(value("base_node", ValueKind::Reference,
                         "Name of the base node that a node is made from. As an element: a base node."))),
        fixed(value("base_type", ValueKind::Choice, "Type that the nodes made from a base node get.")),
        text(
            "cmc_tag",
            "Tag of the calibration data that fits the sensor. Read from the source by whoever loads the calibration."),
        text("content_type",
             "What the data is: pixel_data, or the name of statistics or other data such as ae_stats. Only ports of "
             "pixel data are switched off when nothing is connected, and only they count for streams."),
        value("conversion_gain", ValueKind::Decimal,
              "Ratio between the gains of two exposures, a number such as 4.0. Read from the source, but only when "
              "dol_mode is there, too."),
        value("deb", ValueKind::Hexadecimal,
              "One of three bitmaps that tell what hardware a compute block uses, as digits behind 0x; kept for "
              "clients."),
        text("description", "A text for people. The library keeps it and does not read it."),
        fixed(value("destination", ValueKind::Reference, "Where a klink ends: a port, or an input of an element.")),
        text("dol_mode", "How the sensor delivers several exposures of one frame, for example DOL_2. Read from the "
                         "source, but only when conversion_gain is there, too."),
        text("file_name", "File with frames for a simulated source or stage; kept for clients."),
        text("flow", "Name of the processing flow that a stage belongs to; kept for clients."),
        value("format", ValueKind::Format,
              "Name of the pixel format, for example YUV420_8_SP; nuxo formats lists them. It gives the four-character "
              "code and, with the width, the bytes of a line."),
        value("metadata", ValueKind::IntegerList,
              "Up to four numbers for a kernel's record, joined by ','. Missing ones are 0, further ones are ignored."),
        text("mode_id", "Name of the sensor mode that a setting's sensor works in."),
        fixed(value("name", ValueKind::Name,
                    "Name of the element. Connections, differences, overrides and settings speak of it by this name, "
                    "in lower case.")),
        text("pdaf_type", "Kind of phase-detection pixels of the sensor, for example dual; kept for clients."),
        value("peer", ValueKind::Reference,
              "The other end of a port. In settings, on a port that is connected to a sink: the sink that takes its "
              "frames instead."),
        value("rbm", ValueKind::Hexadecimal,
              "Routing bitmap of a stage, for example 0x07ff. Handed out as text with the routing of a stream."),
        value("reb", ValueKind::Hexadecimal,
              "One of three bitmaps that tell what hardware a compute block uses, as digits behind 0x; kept for "
              "clients."),
        text("sensor_type", "What the sensor delivers, for example RAW. Read from the first source of a graph."),
        value("simulation", ValueKind::Choice,
              "true for a stage that is simulated, which the identifiers of its terminals then tell."),
        fixed(both(value("sink", ValueKind::Reference,
                         "Where a connection ends: a port (node:port) or a sink. As an element: a place where frames "
                         "leave the graph."))),
        both(value("source", ValueKind::Reference,
                   "Where a connection or klink starts. As an element: a place where frames enter the graph.")),
        fixed(value("static", ValueKind::Choice,
                    "true for a connection that exists whatever the setting says. Any text but false means true.")),
        value("stills_bpp", ValueKind::Decimal, "Bits per pixel of still images; kept for clients."),
        text("subsystem",
             "Where a stage runs when it is not the imaging processor. gpu shows in the identifiers of its terminals."),
        fixed(value("target", ValueKind::Reference,
                    "Path of the attribute to set: names joined by ':', the attribute last.")),
        value("teb", ValueKind::Hexadecimal,
              "One of three bitmaps that tell what hardware a compute block uses, as digits behind 0x; kept for "
              "clients."),
        fixed(text("type", "What an element is. Elements with a name get their element name as type by themselves; "
                           "only node and graph elements write it.")),
        fixed(text("value", "The value to set, or the values that an option stands for.")),
        fixed(text(
            "version",
            "Version of the file's content, for example KVA7. The text behind the last letter tells the generation.")),
        value("video_bpp", ValueKind::Decimal, "Bits per pixel of video frames; kept for clients."),
    };
}

std::vector<Row> numberRows()
{
    return {
        number("active_input", "Input that a mux uses, counted from 0. Klinks to its other inputs do not count.", 0),
        number("active_output", "Output that a demux uses, counted from 0. Klinks from its other outputs do not count.",
               0),
        number("active_outputs", "Outputs in use of a routing element with several; kept for clients.", 0),
        number("bottom", "Lines cropped at the lower edge. Negative numbers add lines."),
        number("bpl", "Bytes from one line of a buffer to the next. Overrides what format and width give.", 0),
        number("bpp", "Bits per pixel.", 0),
        number("branch_point",
               "Generation 5: number of the place behind a kernel to which later ones can return; 0 for none.", 0),
        number("concurrent", "Whether, or how many times, something runs at the same time; kept for clients.", 0),
        number("denom_factor",
               "Lower number of the factor by which a sensor's scaler shrinks: num_factor/denom_factor.", 1),
        fixed({"direction", Use::Attribute, ValueKind::Flag, "0 for an input port, 1 for an output port.", 0, 1}),
        flag("dvs", "1 when the setting uses video stabilisation."),
        flag("enabled", "0 switches a port, kernel or source off. What does not have it is on."),
        number("exec_ctx_id",
               "Number of the execution context that a node belongs to. Nodes of one context run together. Nodes "
               "without it are told apart by stream_id.",
               0),
        flag("flip_h", "1 when the sensor mirrors the image left to right; kept for clients."),
        flag("flip_v", "1 when the sensor turns the image upside down; kept for clients."),
        number("fps", "Frames per second; for clients, who look for settings by it.", 0),
        number("fragment_count", "Number of fragments in which a frame is processed; kept for clients.", 0),
        number("h_factor", "Number of pixels of a line that the binner joins to one.", 1),
        number("height", "Lines of a frame.", 0),
        fixed(number("id", "Number of the element among those of its kind.")),
        fixed(number("key", "Number of a setting, by which a client chooses it.")),
        number("left", "Pixels cropped at the left edge. Negative numbers add pixels."),
        number("link_id", "Number of a link between a sensor and its receiver; kept for clients.", 0),
        number("num_factor", "Upper number of the factor by which a sensor's scaler shrinks: num_factor/denom_factor.",
               1),
        number("operation_mode", "Operation mode of a sensor or stage; kept for clients.", 0),
        number("pal_uuid", "Number of a kernel's kind, unique in its context. Parameters find their kernel by it.", 0),
        number("pg_id", "Number of a program group or compute block. It is part of the identifiers of its terminals.",
               0, kMostGroupId),
        number("power_factor", "Weight of a setting or stage in the power budget; kept for clients.", 0),
        flag("private", "1 for a port whose frames stay with the stage, such as a reference frame. Private ports have "
                        "no peer, and what is not stated about them is no error."),
        number("psys_frequency", "Frequency of the processing system that a setting asks for; kept for clients.", 0),
        flag("rcb",
             "1 for a kernel that changes the size: scales or crops. Its input minus crop, scaled, is its output."),
        number("restore_point", "Generation 5: number of the branch point where a kernel goes on; -1 for none.", -1),
        number("right", "Pixels cropped at the right edge. Negative numbers add pixels."),
        number("sink_port", "Generation 5: id of the output port of its stage that a kernel delivers to; -1 for none.",
               -1),
        both(number("stream_id",
                    "Number of the stream that a node belongs to. As an element: the limits of one stream.", 0)),
        flag("tnr", "1 when the setting uses the temporal noise filter; for clients, who look for settings by it."),
        number("top", "Lines cropped at the upper edge. Negative numbers add lines."),
        number("tuning_mode",
               "Set of tuning parameters that a stage runs with. All stages of one context have the same one."),
        number("v_factor", "Number of lines that the binner joins to one.", 1),
        number("width", "Pixels of a line.", 0),
    };
}

VocabularyEntry entryOf(const Row& row)
{
    VocabularyEntry entry;
    entry.attribute.name = row.name;
    entry.attribute.value = row.value;
    entry.attribute.least = row.least;
    entry.attribute.most = row.most;
    entry.attribute.documentation = row.documentation;
    entry.isAttribute = row.use != Use::Element;
    entry.isElement = row.use != Use::Attribute;
    entry.isSettable = entry.isAttribute && row.settable;
    return entry;
}

std::vector<VocabularyEntry> makeVocabulary()
{
    std::vector<VocabularyEntry> entries;
    for (const auto& rows : {elementRows(), textRows(), numberRows()})
        std::transform(rows.begin(), rows.end(), std::back_inserter(entries), entryOf);
    for (VocabularyEntry& entry : entries) {
        AttributeKind& attribute = entry.attribute;
        if (attribute.name == "static" || attribute.name == "simulation") attribute.choices = {"true", "false"};
        if (attribute.name == "base_type")
            attribute.choices = {"compute_block", "external_stage", "hw", "program_group", "sink", "source"};
    }
    std::sort(entries.begin(), entries.end(), [](const VocabularyEntry& left, const VocabularyEntry& right) {
        return left.attribute.name < right.attribute.name;
    });
    return entries;
}

} // namespace

const std::vector<VocabularyEntry>& vocabulary()
{
    static const std::vector<VocabularyEntry> entries = makeVocabulary();
    return entries;
}

const VocabularyEntry* vocabularyEntry(std::string_view name)
{
    const std::vector<VocabularyEntry>& all = vocabulary();
    const auto place =
        std::lower_bound(all.begin(), all.end(), name, [](const VocabularyEntry& entry, std::string_view wanted) {
            return entry.attribute.name < wanted;
        });
    return place != all.end() && place->attribute.name == name ? &*place : nullptr;
}

const AttributeKind* settingsAttribute(std::string_view name)
{
    const VocabularyEntry* const entry = vocabularyEntry(name);
    return entry != nullptr && entry->isSettable ? &entry->attribute : nullptr;
}

std::vector<const AttributeKind*> settingsAttributes()
{
    std::vector<const AttributeKind*> attributes;
    for (const VocabularyEntry& entry : vocabulary()) {
        if (entry.isSettable) attributes.push_back(&entry.attribute);
    }
    return attributes;
}

} // namespace NuxoTool
