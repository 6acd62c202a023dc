// SPDX-License-Identifier: Apache-2.0
// What may stand in graph descriptors.
#include "schema/SchemaParts.h"

namespace NuxoTool {

namespace {

const std::vector<std::string> kNodeTypes = {"compute_block", "external_stage", "hw",
                                             "program_group", "sink",           "source"};

AttributeKind nameSaying(const char* documentation)
{
    return Attribute("name").required().says(documentation);
}

Attributes contextAttributes()
{
    return asUsual({"stream_id", "exec_ctx_id"});
}

// Who runs a node, and how.
Attributes runningAttributes()
{
    return Attributes{Attribute("enabled").standard("1")} +
           asUsual({"tuning_mode", "operation_mode", "fragment_count", "concurrent", "power_factor", "psys_frequency",
                    "flow", "subsystem", "simulation", "file_name", "link_id", "description"});
}

Attributes sensorAttributes()
{
    return asUsual({"sensor_type", "cmc_tag", "pdaf_type", "mode_id", "dol_mode", "conversion_gain", "flip_h", "flip_v",
                    "fps", "video_bpp", "stills_bpp"});
}

Attributes sizeAttributes()
{
    return asUsual({"width", "height", "left", "top", "right", "bottom"});
}

// What frames are like at a port or sink.
Attributes frameAttributes()
{
    return Attributes{Attribute("format"), Attribute("content_type").standard("pixel_data")} + sizeAttributes() +
           asUsual({"bpl", "bpp"});
}

Attributes stageAttributes(const char* nameText)
{
    return Attributes{nameSaying(nameText), Attribute("pg_id")} + contextAttributes() + runningAttributes();
}

Attributes sourceAttributes()
{
    return contextAttributes() + sensorAttributes() + runningAttributes() + frameAttributes();
}

Attributes hwAttributes()
{
    return Attributes{Attribute("pg_id")} + contextAttributes() + runningAttributes();
}

Attributes sinkAttributes()
{
    return contextAttributes() + frameAttributes() + asUsual({"private"}) + runningAttributes();
}

// Those of the lists that are not there yet.
Attributes merged(Attributes attributes, const Attributes& others)
{
    for (const AttributeKind& other : others) {
        bool isNew = true;
        for (const AttributeKind& attribute : attributes) isNew = isNew && attribute.name != other.name;
        if (isNew) attributes.push_back(other);
    }
    return attributes;
}

// A node element and a base node may be of any type.
Attributes anyNodeAttributes(Attributes own)
{
    return merged(merged(own + Attributes{Attribute("pg_id")} + contextAttributes(), sourceAttributes()),
                  sinkAttributes());
}

const std::vector<const char*> kStageChildren = {"cipf",  "hw_bitmaps", "port",  "kernel", "mux",
                                                 "demux", "split",      "klink", "options"};

// A node element and a base node may be of any type.
std::vector<const char*> anyNodeChildren(const char* kernel)
{
    return {"cipf",        "hw_bitmaps",         "port",        kernel,   "mux",   "demux", "split", "klink", "options",
            "stream2mmio", "zmt_pixelformatter", "pixel_array", "binner", "scaler"};
}

std::vector<ElementRow> topRows()
{
    return {
        ElementRow("graph_descriptor", "graph_descriptor",
                   "A graph descriptor: the nodes that a camera pipeline can be made of, and the graphs that connect "
                   "them. Settings choose one of the graphs and say with which values it runs.",
                   {Attribute("version").says(
                       "Version of the descriptor, for example KVA7: the number behind the last letter is the "
                       "generation, 5 to 7. Settings written for a version state it as theirs, too.")},
                   {"nodes", "graphs"}),
        ElementRow("nodes", "nodes",
                   "Holds all nodes of the descriptor. The order does not matter; every node has a name of its own.",
                   {},
                   {"source", "hw", "base_node", "derived_node", "node", "program_group", "compute_block",
                    "external_stage", "sink"})
            .once(),
        ElementRow("graphs", "graphs", "Holds all graphs of the descriptor.", {}, {"graph"}).once(),
    };
}

std::vector<ElementRow> nodeRows()
{
    return {
        ElementRow(
            "source", "source",
            "A place where frames enter the graph: a sensor (named sensor), a test pattern generator (tpg) or frames "
            "from memory (named buffer_src0, buffer_src1 and so on). A source that is connected needs a port named "
            "port_0.",
            Attributes{nameSaying("Name of the source. sensor and tpg are what they say; names that contain buffer_src "
                                  "are frames from memory. Histories of other sources cannot be calculated.")} +
                sourceAttributes(),
            {"port", "pixel_array", "binner", "scaler", "options"}),
        ElementRow("hw", "hw",
                   "A capture back end: hardware between a source and the processing system. Its size is read from the "
                   "input of its zmt_pixelformatter or stream2mmio and from its port named output.",
                   Attributes{nameSaying("Name of the back end, for example csi_be.")} + hwAttributes(),
                   {"stream2mmio", "zmt_pixelformatter", "port", "options"}, "hw_unit"),
        ElementRow("base_node", "base_node",
                   "A template from which node elements are made. It is in no graph itself. Its options speak of it by "
                   "its own name under apply; nodes made from it get them with their name.",
                   anyNodeAttributes({nameSaying("Name of the base node, by which node elements speak of it."),
                                      Attribute("base_type").required().oneOf(kNodeTypes)}),
                   anyNodeChildren("base_kernel")),
        ElementRow("derived_node", "node",
                   "A node that is made from a base node: a copy of the base node with a name of its own and with the "
                   "differences that the attribute elements list. Other attributes and elements of such a node have no "
                   "effect.",
                   {nameSaying("Name of the node."),
                    Attribute("base_node").required().says("Name of the base node that this node is made from.")},
                   {"attribute"}),
        ElementRow("node", "node",
                   "A node that writes its type itself. With a base_node it is a copy of that base node instead and "
                   "lists its differences as attribute elements.",
                   anyNodeAttributes({nameSaying("Name of the node."),
                                      Attribute("type")
                                          .required()
                                          .oneOf(kNodeTypes)
                                          .says("What the node is: as if the element had this name.")}),
                   anyNodeChildren("kernel")),
        ElementRow("program_group", "program_group",
                   "A stage of the processing system (generations 5 and 6): ports, and kernels that run one after the "
                   "other. Program groups of one stream_id, or of one exec_ctx_id, run together.",
                   stageAttributes("Name of the program group."), kStageChildren),
        ElementRow("compute_block", "compute_block",
                   "A stage of the processing system (generation 7): ports, kernels and routing elements with klinks "
                   "between them. Blocks of one exec_ctx_id run together.",
                   stageAttributes("Name of the compute block."), kStageChildren),
        ElementRow(
            "external_stage", "external_stage",
            "A stage that runs outside of the imaging processor, for example on the GPU. Others see its ports only.",
            stageAttributes("Name of the stage."), kStageChildren),
        ElementRow("sink", "sink",
                   "A place where frames leave the graph: a queue of the client. A sink has no ports; connections end "
                   "at it by its name. It takes what it does not state from the port that feeds it.",
                   Attributes{nameSaying("Name of the sink.")} + sinkAttributes(), {"options"}),
        ElementRow("attribute", "attribute",
                   "One difference of a node from its base node. Differences are applied in the order of the "
                   "file, and may add an attribute that the base node lacks.",
                   {Attribute("target").required().says(
                        "Path of the attribute below the node, for example pg_id or main_out:format."),
                    Attribute("value").required().says(
                        "Its value: text, or a decimal number for attributes that hold numbers.")}),
    };
}

ElementRow kernelRow(const char* id, const AttributeKind& palUuid)
{
    return {id,
            "kernel",
            "An algorithm of a stage. Kernels without klinks run in the order of their ids, which count from 0; with "
            "klinks, the links tell the order.",
            {nameSaying("Name of the kernel, unique in its stage. Settings give it its sizes by this name."),
             Attribute("id").required().range(0).says("Place of the kernel in its stage, counted from 0."), palUuid,
             Attribute("enabled").standard("1"), Attribute("rcb").standard("0"),
             Attribute("metadata").standard("0,0,0,0"), Attribute("branch_point").standard("0"),
             Attribute("restore_point").standard("-1"), Attribute("sink_port").standard("-1"),
             Attribute("source").says("Generation 5: port whose frames a kernel reads although the kernel before it "
                                      "does not deliver them, for example vf_out:tnr_input."),
             Attribute("fragment_count"), Attribute("description")},
            {"kernel_input", "kernel_output", "options"}};
}

std::vector<ElementRow> stageRows()
{
    return {
        ElementRow("cipf", "cipf", "Interface of the stage to the buffers of frames.", {Attribute("rbm").standard("0")})
            .once(),
        ElementRow("hw_bitmaps", "hw_bitmaps", "Bitmaps that tell what hardware a compute block uses.",
                   asUsual({"deb", "teb", "reb"}))
            .once(),
        ElementRow(
            "port", "port",
            "A place where frames enter or leave the node. An input port takes size and format from the output port "
            "that feeds it unless it states them itself. A port of pixel data that nothing is connected to is switched "
            "off.",
            Attributes{
                nameSaying("Name of the port, unique in its node. Connections write node:port."),
                Attribute("id").required().range(0).says(
                    "Number of the port in its node; with the node's pg_id it makes the identifier of the terminal."),
                Attribute("direction").required(), Attribute("enabled").standard("1"),
                Attribute("private").standard("0")} +
                frameAttributes() +
                Attributes{Attribute("peer").says("The other end of the port. Connections set it: leave it out.")} +
                asUsual({"stream_id", "fragment_count", "link_id", "file_name", "description"}),
            {"options"}),
        kernelRow("kernel", Attribute("pal_uuid").required()),
        kernelRow("base_kernel", Attribute("pal_uuid")), // nodes may give it by a difference
        ElementRow("kernel_input", "input",
                   "What arrives at a kernel. Sizes usually come from settings; the descriptor states crops and bits "
                   "per pixel.",
                   sizeAttributes() + asUsual({"bpp"}))
            .once(),
        ElementRow(
            "kernel_output", "output",
            "What leaves a kernel. A kernel with several outputs has one output element for each, told apart by id, or "
            "one output with an element for each in it.",
            Attributes{Attribute("id").range(0).standard("0").says("Number of the output, for kernels with several.")} +
                sizeAttributes() + asUsual({"bpp"}),
            {}, "kernel_frame"),
        ElementRow("kernel_frame", "",
                   "One of several outputs of a kernel. Its name is free; a setting gives it a size by that name.",
                   Attributes{Attribute("name").says("Name of the output, if it shall not be the element's."),
                              Attribute("id").range(0).says("Number of the output.")} +
                       sizeAttributes() + asUsual({"bpp"})),
        ElementRow("mux", "mux",
                   "A routing element with several inputs. Of the klinks to it only those to its active input count; "
                   "kernels that no path leads through are switched off.",
                   {nameSaying("Name of the mux, unique in its stage. A klink to it says name:input."),
                    Attribute("active_input"), Attribute("enabled").standard("1"), Attribute("description")},
                   {"options"}),
        ElementRow("demux", "demux",
                   "A routing element with several outputs, of which it uses one. Of the klinks from it only those "
                   "from its active output count.",
                   {nameSaying("Name of the demux, unique in its stage. A klink from it says name:output."),
                    Attribute("active_output"), Attribute("active_outputs"), Attribute("enabled").standard("1"),
                    Attribute("description")},
                   {"options"}),
        ElementRow("split", "split", "A routing element that gives what it receives to all of its outputs.",
                   {nameSaying("Name of the split, unique in its stage. A klink from it says name:output."),
                    Attribute("active_outputs"), Attribute("enabled").standard("1"), Attribute("description")},
                   {"options"}),
        ElementRow("klink", "klink",
                   "A link inside a stage. It says which way frames take through ports, kernels and routing elements.",
                   {Attribute("source").required().says(
                        "Where the link starts: an input port of the stage (name alone), or a kernel or routing "
                        "element with the number of its output (name:number)."),
                    Attribute("destination")
                        .required()
                        .says("Where the link ends: an output port of the stage (name alone), or a kernel or routing "
                              "element with the number of its input (name:number)."),
                    Attribute("name").is(ValueKind::Text).says("A name for people; nothing speaks of a klink."),
                    Attribute("description")}),
    };
}

std::vector<ElementRow> optionRows()
{
    return {
        ElementRow("options", "options",
                   "A list of what else changes with one attribute of the element around it. A client can only set, by "
                   "key, attributes that have such a list, and only to values in it.",
                   {Attribute("attribute")
                        .required()
                        .says("Name of the attribute that the list governs, for example format.")},
                   {"option"}),
        ElementRow(
            "option", "option", "What else changes when the attribute gets one of these values.",
            {Attribute("value").required().says("A value of the attribute, or several joined by ',' without blanks.")},
            {"option_apply"}),
        ElementRow("option_apply", "apply",
                   "The values that come along with an option: elements named after nodes, with elements named after "
                   "their parts in them, as in settings.",
                   {}, {}, "applied_node")
            .settable()
            .once(),
        ElementRow("applied_node", "",
                   "Values for a node of the graph, named after it. In a base node its own name stands for every node "
                   "made from it.",
                   {}, {}, "applied_part")
            .settable(),
        ElementRow("applied_part", "", "Values for a port, kernel or other part of the node, named after it.", {}, {},
                   "applied_side")
            .settable(),
        ElementRow("applied_side", "", "Values for an element below the part, for example the output of a kernel.",
                   {Attribute("id").says("Number of the output, for kernels with several.")}, {}, "applied_frame")
            .settable(),
        ElementRow("applied_frame", "", "Values for one of several outputs of a kernel, named after it.",
                   {Attribute("id").says("Number of the output.")})
            .settable(),
    };
}

std::vector<ElementRow> captureRows()
{
    return {
        ElementRow("stream2mmio", "stream2mmio",
                   "The formatter of a capture back end (generation 5). Its input is what the sensor sends; minus crop "
                   "it is what the port output delivers.",
                   {}, {"unit_input"})
            .once(),
        ElementRow("zmt_pixelformatter", "zmt_pixelformatter",
                   "The formatter of a capture back end (generations 6 and 7). Its input is what the sensor sends; "
                   "minus crop it is what the port output delivers.",
                   {}, {"unit_input"})
            .once(),
        ElementRow("hw_unit", "", "Another unit of a capture back end; the library keeps it and does not read it.", {},
                   {}, "hw_unit_part")
            .settable(),
        ElementRow("hw_unit_part", "", "A part of such a unit.").settable(),
        ElementRow("unit_input", "input", "What arrives at the formatter, with the crop that it makes.",
                   sizeAttributes() + asUsual({"bpp"}))
            .once(),
    };
}

std::vector<ElementRow> graphRows()
{
    return {
        ElementRow("graph", "graph",
                   "A graph: the connections that settings may use. Nodes are in it when a connection names them; a "
                   "connection counts when both of its nodes are part of the setting, or when it is static.",
                   {Attribute("id").required().says("Number of the graph, by which settings choose it."),
                    Attribute("type").oneOf({"graph"}).says("graph, as tools expect it."),
                    Attribute("name").is(ValueKind::Text).says("A name for people; settings choose a graph by its id."),
                    Attribute("flow"), Attribute("concurrent"), Attribute("power_factor"), Attribute("psys_frequency"),
                    Attribute("description")},
                   {"connection", "override"}),
        ElementRow("connection", "connection",
                   "A way for frames from an output port to an input port or to a sink. It counts when the setting has "
                   "elements for both of its ends, or always when it is static.",
                   {Attribute("source").required().says("Output port where the connection starts: node:port."),
                    Attribute("sink").required().says("Input port where it ends (node:port), or the name of a sink."),
                    Attribute("static").standard("false"), Attribute("link_id"), Attribute("description")}),
        ElementRow("override", "apply",
                   "An override: a value that this graph forces upon a part of it, whatever descriptor and setting "
                   "say. An attribute that is not there is added.",
                   {Attribute("target").required().says(
                        "Path of the attribute from the graph's nodes down, for example vf_gdc:gdc_filter:enabled."),
                    Attribute("value").required().says(
                        "Its value: text, or a decimal number for attributes that hold numbers.")}),
    };
}

} // namespace

std::vector<ElementRow> descriptorRows()
{
    std::vector<ElementRow> all;
    for (const auto& rows :
         {topRows(), nodeRows(), stageRows(), optionRows(), captureRows(), sensorStageRows(), graphRows()})
        all.insert(all.end(), rows.begin(), rows.end());
    return all;
}

} // namespace NuxoTool
