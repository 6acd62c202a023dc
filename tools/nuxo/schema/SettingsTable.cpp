// SPDX-License-Identifier: Apache-2.0
// What may stand in settings files.
#include "schema/SchemaParts.h"

namespace NuxoTool {

namespace {

Attributes stageSideAttributes()
{
    return {Attribute("width"), Attribute("height"), Attribute("left").standard("0"), Attribute("top").standard("0"),
            Attribute("right"), Attribute("bottom")};
}

std::vector<ElementRow> partRows()
{
    return {
        ElementRow("settings_node", "",
                   "Values for a node, named after it. A node is part of the setting when it has such an element, even "
                   "an empty one.",
                   {}, {}, "settings_part")
            .settable(),
        ElementRow("settings_part", "",
                   "Values for a port, kernel or other part of the node, named after it. A dynamic connection needs "
                   "such an element for the port that it starts at.",
                   {}, {}, "settings_side")
            .settable(),
        ElementRow("settings_side", "",
                   "Values for an element below the part, usually the input or output of a kernel with size and crop.",
                   {Attribute("id").says("Number of the output, for kernels with several."),
                    Attribute("name").is(ValueKind::Text).says("Name of the output, for kernels with several.")},
                   {}, "settings_frame")
            .settable(),
        ElementRow("settings_frame", "", "Values for one of several outputs of a kernel, named after it.",
                   {Attribute("id").says("Number of the output."),
                    Attribute("name").is(ValueKind::Text).says("Name of the output.")})
            .settable(),
        ElementRow(
            "mbr_data", "mbr_data", "MBR limits of the streams of this setting.",
            {Attribute("type").oneOf({"graph"}).says("graph: tells that this is data and no stage of the pipeline.")},
            {"mbr_stream"}),
        ElementRow("mbr_stream", "stream_id", "The limits of one stream: 7 rows of 8 numbers.",
                   {Attribute("id").required().says("Number of the stream."),
                    Attribute("value").required().is(ValueKind::DecimalList).says("56 numbers joined by ','.")}),
    };
}

std::vector<ElementRow> modeRows()
{
    return {
        ElementRow("sensor_modes", "sensor_modes",
                   "Holds the modes of the sensor. Its own attributes, and elements in it that are named after parts "
                   "of the sensor, are defaults for all modes. The modes' values go over those of the setting.",
                   {}, {"mode"}, "settings_part")
            .named("mode")
            .settable()
            .once(),
        ElementRow("mode", "mode",
                   "A mode of the sensor: the size that it delivers and how it gets there. Attributes are those of the "
                   "sensor node; elements are named after its ports and stages.",
                   {Attribute("name")
                        .required()
                        .is(ValueKind::Text)
                        .says("Name of the mode. A setting chooses it by mode_id.")},
                   {"pixel_array", "binner", "scaler"}, "settings_part")
            .settable(),
    };
}

} // namespace

std::vector<ElementRow> sensorStageRows()
{
    return {
        ElementRow("pixel_array", "pixel_array",
                   "The first stage of a sensor: reads a window of its pixels. The crop of its input says what is left "
                   "out; the crop of its output tells the frame parameters where the window lies.",
                   {}, {"stage_input", "stage_output"})
            .settable()
            .once(),
        ElementRow("binner", "binner", "The stage of a sensor that joins h_factor by v_factor pixels to one.",
                   asUsual({"h_factor", "v_factor"}), {"stage_input", "stage_output"})
            .settable()
            .once(),
        ElementRow("scaler", "scaler",
                   "The last stage of a sensor: shrinks the image to num_factor/denom_factor of its size.",
                   asUsual({"num_factor", "denom_factor"}), {"stage_input", "stage_output"})
            .settable()
            .once(),
        ElementRow("stage_input", "input",
                   "What arrives at the stage, and the crop that is taken off it. Crops at the left and top are taken "
                   "off the opposite edges, too.",
                   stageSideAttributes())
            .settable()
            .once(),
        ElementRow("stage_output", "output",
                   "What leaves the stage, in its own pixels, with the crop that is taken off it.",
                   stageSideAttributes())
            .settable()
            .once(),
    };
}

std::vector<ElementRow> settingsRows()
{
    std::vector<ElementRow> all = {
        ElementRow("graph_settings", "graph_settings",
                   "Settings for a graph descriptor: use cases, each a graph with the values that it runs with, and "
                   "the modes of the sensor.",
                   {Attribute("version").says("Version of the settings: that of the descriptor that they are made for, "
                                              "followed by '.' and a number of their own, for example KVA7.0.")},
                   {"settings", "sensor_modes"}),
        ElementRow(
            "settings", "settings",
            "A use case: a graph of the descriptor with the values that it runs with. Elements in it are named after "
            "the descriptor's nodes; nodes without one are not part of the setting.",
            Attributes{Attribute("key").required(),
                       Attribute("id").required().says("Number of the graph of the descriptor that the setting uses."),
                       Attribute("description").says("What the setting is for, in a few words for people."),
                       Attribute("dvs").standard("0")} +
                asUsual({"tnr", "fps"}),
            {"mbr_data"}, "settings_node")
            .settable(),
    };
    for (const auto& rows : {partRows(), modeRows(), sensorStageRows()})
        all.insert(all.end(), rows.begin(), rows.end());
    return all;
}

} // namespace NuxoTool
