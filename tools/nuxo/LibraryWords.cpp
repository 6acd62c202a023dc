// SPDX-License-Identifier: Apache-2.0
#include "LibraryWords.h"

#include "Text.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string_view>

namespace NuxoTool {

namespace {

// In a line '%' stands for a name or number, in what it means %1 for the first of them, and so on. What follows in the line
// does not count.
struct Row {
    std::string_view line;
    std::string_view found;
    std::string_view expected;
};

constexpr std::string_view kSizes = "a size with width and height";
constexpr std::string_view kPath = "a path of connections and klinks from a source, with all ports on it switched on";
constexpr std::string_view kNoFault = "a smaller graph; the files are not at fault";

constexpr Row kRows[] = {
    // Links inside groups.
    {"Failed to find Imaging Node % named in klink", "a klink names %1, which its group does not have",
     "a port, kernel, mux, demux or split of the group"},
    {"Found klink from a demux non active output %-", "the klink %1 starts at an output of a demux that is not active",
     "a klink from the active_output of the demux, or that number there"},
    {"Found klink to a mux non active input % - incorrect GDF",
     "the klink %1 leads to an input of a mux that is not active",
     "a klink to the active_input of the mux, or that number there"},
    {"Failed to get Active routing path for  %", "%1 does not say which of its ways is active",
     "active_input at a mux, active_output at a demux"},
    {"Imaging node % insertion failed", "the name %1 stands for two parts of the graph", "a name of its own for each"},
    {"routing node % insertion failed", "the name %1 stands for two parts of the graph", "a name of its own for each"},
    {"Graph node % insertion failed", "the name %1 stands for two nodes of the graph", "a name of its own for each"},
    {"Failed find port node % from PG", "a klink ends at %1, which is no port of its group",
     "a port of the group, or the port of a kernel, such as %1:0"},
    {"Failed find port node  from PG", "a klink lacks one of its ends", "a source and a destination"},
    {"Failed to find input port % in the Imaging graph", "no klink starts at %1, so that its frames reach no kernel",
     "a klink from the port"},
    {"Could not find input port % - impossible", "a connection leads to %1, which its group does not have as an input",
     "an input port of the group"},
    // Where frames do not arrive.
    {"Imaging Node % not reached", "no frame reaches %1", "a klink that leads there, from what gets frames"},
    {"Traversal of inner graph % did not reach all", "frames do not reach all kernels of stream %1", kPath},
    {"Traversal of meta graph did not reach all nodes",
     "frames do not reach all streams, so that the others have no records", kPath},
    {"Traversal of graph did not reach all nodes", "frames do not reach all nodes", kPath},
    {"Could not find source node in subgraph %",
     "no frame enters stream %1: none of its nodes is a source or a group with "
     "an input that is fed",
     "a source or a group that is fed in each stream, or another stream_id"},
    {"Could not find inner node % in subgraph %- Error",
     "frames come from %1, which is no part of stream %2 as far as the library knows",
     "a connection from a port, kernel or source that the graph has"},
    {"Failed to get res history for input port %", "no frames of a known size reach %1", kPath},
    {"Could not find parent history for node %", "no frames of a known size reach %1", kPath},
    {"Node % with no parents has not been seeded", "nothing leads to %1, so that the size of its frames is not known",
     kPath},
    {"No parent of node % has been visited", "what leads to %1 gets no frames itself", kPath},
    {"Could not find the res history for  parent output port %", "the size of the frames at %1 is not known", kPath},
    {"No Input port or source in stream %", "nothing brings frames to stream %1", kPath},
    {"No input peer for stream %", "nothing is connected to the input of stream %1", kPath},
    {"No kernel history or source in stream %", "the size of the frames that stream %1 gets is not known", kPath},
    {"No resolution history stored for the input of PG %", "the size of the frames that %1 gets is not known", kPath},
    {"Could not find the PG % in the", "no path leads from %1 to a sink of the setting, so that it has no records",
     "an output of it that is on and leads to a sink of the setting"},
    {"Failed to find peer port for %", "nothing in this graph leads to the sink %1", "a connection to it"},
    {"Failed to find peer by name %", "no port or sink of the graph has the name %1, where a connection leads",
     "the name of a sink, or of a port with its node"},
    // Sizes.
    {"Consistency error in kernel %, res info input(%) is different than res history output(%)",
     "kernel %1 takes %2, but %3 arrives", "%3"},
    {"Retrieval of resolution info for RCB kernel % Failed",
     "kernel %1 changes the size of frames (rcb), but states none",
     "an input and an output, each with width and height"},
    {"Resolution history output width or height is 0", "a kernel gives frames without width or height",
     "an output with sizes above 0"},
    {"Node % settings have no res info", "kernel %1 has several outputs, but states no size", "a size for each output"},
    {"Node % settings have % res info but node has % children",
     "kernel %1 states %2 sizes of outputs, but klinks lead from it to %3 places", "a size for each of them"},
    {"Node % ports without settings will default to res-info", "kernel %1 states a size for some of its outputs only",
     "a size for each output"},
    {"Node % settings have no output id that matches output port %", "kernel %1 states no size for its output %2",
     "an output with that id"},
    {"Failed to get dimensions(width, height) for the source %", "source %1 does not state its size",
     "port_0 with width and height"},
    {"Failed to get dimensions for port %", "the size of %1 is not known", kSizes},
    {"Failed to get dimensions for private port %", "the size of %1 is not known", kSizes},
    {"Failed to get binner % dimensions and crop", "binner of the sensor mode does not state the size of its %1",
     kSizes},
    {"Failed to get scaler % dimensions and crop", "scaler of the sensor mode does not state the size of its %1",
     kSizes},
    {"Failed to get % dimensions and crop", "the %1 of a stage or formatter does not state all of its size",
     "width, height and the four crops"},
    {"Failed to get csi be output dimensions", "the capture back end does not state the size of its output", kSizes},
    {"Failed to get output node for %", "capture back end %1 has no port output", "a port with the name output"},
    {"Failed to get pixel array dimensions", "the sensor mode does not state the size of the pixel array",
     "pixel_array with an input of width and height"},
    {"Failed to get pixel_array:output", "pixel_array of the sensor mode has no output", "an output with its size"},
    {"Failed to get binner:%", "binner of the sensor mode has no %1", "an input and an output with their sizes"},
    {"Failed to get scaler:%", "scaler of the sensor mode has no %1", "an input and an output with their sizes"},
    {"Failed to get pixel array output dimensions", "pixel_array of the sensor mode does not state what leaves it",
     kSizes},
    {"Warning, no pixel_array", "the sensor mode has no pixel_array, so that the size of its port counts",
     "pixel_array with an input and an output"},
    {"Sensor mode specifies different binning factor",
     "the sensor mode bins columns and lines by different factors, for "
     "which sizes come out wrong",
     "h_factor and v_factor alike"},
    {"Error: Couldn't get binning factor", "binner of the sensor mode does not state its factors",
     "h_factor and v_factor"},
    {"Error: Couldn't get horizontal binning factor", "binner of the sensor mode has no h_factor",
     "h_factor and v_factor"},
    {"Error: Couldn't get vertical binning factor", "binner of the sensor mode has no v_factor",
     "h_factor and v_factor"},
    {"Warning: Couldn't get scaling factor", "scaler of the sensor mode does not state its factor, and 1/1 is taken",
     "num_factor and denom_factor"},
    {"Error: Couldn't get width scaling num ratio", "scaler of the sensor mode does not state its factor",
     "num_factor and denom_factor"},
    {"Error: Couldn't get width", "a size has no width", kSizes},
    {"Error: Couldn't get height", "a size has no height", kSizes},
    {"Error: Couldn't get % crop", "a crop has no %1", "left, top, right and bottom"},
    {"Failed to get sensor mode information", "the sensor mode does not describe its stages",
     "pixel_array, binner and scaler in the mode"},
    // Attributes.
    {"ERROR: Couldn't get pal_uuid", "a kernel has no pal_uuid", "a number of its own for each kernel"},
    {"Could not find the pal uuid for kernel %", "kernel %1 has no pal_uuid", "a number of its own for each kernel"},
    {"Couldn't get kernel id", "a kernel has no id", "ids from 0 for the kernels of a group"},
    {"Failed to get pal uuid or kernel id", "a kernel has no pal_uuid or no id", "both for each kernel"},
    {"Failed to fetch kernel values '%'", "kernel %1 lacks an id or a pal_uuid", "both for each kernel"},
    {"Could not find the record of %", "%1 has no record", "a kernel with a number of its own"},
    {"Error: Bad kernel id(s)", "the ids of the kernels of a group do not run from 0, each once",
     "0 for the first, and so on"},
    {"Kernel sink port id % invalid", "a kernel has the sink_port %1, which is the id of no port", "the id of a port"},
    {"Found restore_point attribute, but no branch points",
     "a kernel goes on from a restore_point that no kernel ahead of "
     "it made",
     "the branch_point of a kernel with a lower id"},
    {"over the max kernel number", "the stream has more kernels than records", kNoFault},
    {"Kernel % has more than % metadata items", "kernel %1 has more than %2 metadata", "%2 at most"},
    {"Couldn't get stream id or exec ctx id for pg %", "%1 has no stream_id or no exec_ctx_id", "both for each group"},
    {"PG % does not have stream id or exec ctx", "%1 has no stream_id or no exec_ctx_id", "both for each group"},
    {"Failed to get stream id from node %", "%1 has no stream_id", "a stream_id for each node that frames pass"},
    {"Sink node lacks exec ctx id attribute", "a sink has no exec_ctx_id, and takes none over",
     "an exec_ctx_id at the sink"},
    {"Could not find the exec ctx % in the run kernels map", "context %1 has no records",
     "a group with that exec_ctx_id in the setting"},
    {"Could not get type of graph node %", "%1 has no type", "one that the descriptor declares"},
    {"Could not get name of graph node %", "%1 has no name", "a name for each node"},
    {"PG % does not have RBM defined", "%1 has no cipf with rbm, and 0 is taken", "<cipf rbm=\"...\"/>"},
    {"Mismatch in tuning mode (% vs %) for same execution Context %!",
     "groups of context %3 have the tuning modes %1 and %2", "one tuning_mode for all groups of a context"},
    {"Could not find the tuning mode for PG %", "%1 has no tuning_mode, and 0 is taken",
     "a tuning_mode for each group"},
    // Sources and sinks.
    {"ERROR: No active sources", "no source of the graph is switched on", "a source that delivers frames"},
    {"Error: Couldn't find any source", "the graph has no source", "the sensor, or a buffer source"},
    {"No support for source of name: %", "%1 is a source that the library knows no sizes of",
     "sensor, tpg or buffer_src"},
    {"Failed to find any sinks", "the setting has no sink", "a sink that frames are delivered to"},
    {"Could not find port_0", "the sensor has no port port_0", "an output port of that name"},
    {"Could not find TPG port_0", "the test pattern generator has no port port_0", "an output port of that name"},
    {"Could not find % port_0", "source %1 has no port port_0", "an output port of that name"},
    // The library itself.
    {"invalid KVA version, subgraph type used or graph settings", "the version of the descriptor is not known",
     "one of the versions that the library knows"},
    {"Calculated number of res Infos (%) for kernel % does not match allocated(%)",
     "kernel %2 has %1 outputs, but the library counted on %3", "outputs with ids of their own"},
    {"FATAL: number of subgraph kernels inconsistent", "two parts of a stream have the same name",
     "a name of its own for each kernel of a group"},
    {"Error: We run out out resolution history items", "there are more kernels than the library counted on", kNoFault},
    {"Failed to allocate", "memory is exhausted", kNoFault},
};

std::string nameIn(std::string_view text)
{
    const size_t open = text.find('[');
    const bool isPrinted = open != std::string_view::npos && open > 0 && text.back() == ']';
    return std::string(isPrinted ? text.substr(open + 1, text.size() - open - 2) : text);
}

std::optional<std::vector<std::string>> namesIn(std::string_view line, std::string_view pattern)
{
    std::vector<std::string> names;
    for (;;) {
        const size_t hole = pattern.find('%');
        const std::string_view literal = pattern.substr(0, hole);
        if (line.substr(0, literal.size()) != literal) return std::nullopt;
        line.remove_prefix(literal.size());
        if (hole == std::string_view::npos) return names;
        pattern.remove_prefix(hole + 1);
        const std::string_view next = pattern.substr(0, pattern.find('%'));
        const size_t end = next.empty() ? line.find_last_not_of(" ,;") + 1 : line.find(next);
        if (end == 0 || end == std::string_view::npos) return std::nullopt;
        names.push_back(nameIn(line.substr(0, end)));
        line.remove_prefix(end);
    }
}

std::string filled(std::string_view text, const std::vector<std::string>& names)
{
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool isHole = text[i] == '%' && i + 1 < text.size();
        const auto number = isHole ? static_cast<size_t>(text[i + 1] - '0') : 0;
        if (number == 0 || number > names.size()) {
            result += text[i];
            continue;
        }
        result += printable(names[number - 1]);
        ++i;
    }
    return result;
}

} // namespace

std::optional<PlainText> plainTextOf(const std::string& line)
{
    for (const Row& row : kRows) {
        if (const std::optional<std::vector<std::string>> names = namesIn(line, row.line))
            return PlainText{filled(row.found, *names), filled(row.expected, *names), *names};
    }
    return std::nullopt;
}

std::string quietText(const std::string& line)
{
    std::string text = line;
    for (const std::string_view heading : {"ERROR: ", "Error: ", "WARNING: ", "Warning: ", "FATAL: "}) {
        if (text.compare(0, heading.size(), heading) == 0) text.erase(0, heading.size());
    }
    text.erase(std::remove(text.begin(), text.end(), '!'), text.end());
    return printable(text);
}

} // namespace NuxoTool
