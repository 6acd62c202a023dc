// SPDX-License-Identifier: Apache-2.0
#include "Arguments.h"

#include "Suggestion.h"

#include <qv_cipr/qv_log_common.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <sstream>
#include <utility>

namespace NuxoTool {

namespace {

constexpr const char* kExitCodes = R"help(Exit codes:
  0  done
  1  findings: a malformed file, no or more than one setting, a graph that cannot be built, an error of the library
  2  usage: a bad option or criterion, an unknown format; also a name that no file or vocabulary has
  3  a file cannot be read, or output cannot be written
  4  internal error)help";

constexpr const char* kMainFooter = R"help(Examples:
  nuxo dump settings.xml
  nuxo query descriptor.xml settings.xml img_sink:width=1920 img_sink:height=1080
  nuxo build descriptor.xml settings.xml --key 10001
  nuxo build descriptor.xml settings.xml --key 10001 --format dot | dot -Tsvg -o graph.svg
  nuxo ports descriptor.xml settings.xml --key 10001
  nuxo kernels descriptor.xml settings.xml --key 10001
  nuxo formats NV12 --width 1920 --height 1080

-v and --color may follow the verb as well. Data goes to standard output, findings to standard error as
  file:line:column: error[rule]: what was found; what was expected
)help";

constexpr const char* kDumpFooter =
    R"help(A node is shown as "name (element kind)" with its attributes, in the order in which the library keeps them.
Of a malformed file the part before the error is shown.

Examples:
  nuxo dump descriptor.xml.gz
  nuxo dump settings.xml --format json
)help";

constexpr const char* kQueryFooter =
    R"help(A criterion is the path of an attribute below a setting, names joined by ':', and the text that it must hold,
integers as decimal digits. Without criteria every setting is listed.

Examples:
  nuxo query descriptor.xml settings.xml
  nuxo query descriptor.xml settings.xml img_sink:width=1920 sensor:mode_id=full
  nuxo query descriptor.xml settings.xml img_sink:width=1920 raw_sink:width=4208 --any
)help";

constexpr const char* kBuildFooter =
    R"help(The setting is the one with the given key, or the only one that the criteria select (see nuxo query --help).
With --origin "-" marks values that the library added by itself.

Examples:
  nuxo build descriptor.xml settings.xml --key 10001
  nuxo build descriptor.xml settings.xml img_sink:width=1920 img_sink:format=NV12 --origin
  nuxo build descriptor.xml settings.xml --key 10001 --format json
  nuxo build descriptor.xml settings.xml --key 10001 --format dot | dot -Tpng -o graph.png
)help";

constexpr const char* kPortsFooter =
    R"help(One line a port of the built graph, in the order of the graph; a virtual sink is a port by itself. The setting
is chosen as for nuxo build. "-" marks what does not apply: disabled and private ports have no peer, statistics no size.
  ENABLED   yes, no, or private: internal to its node
  PEER      the other end; the library follows the first when there are several
  EDGE      whether the connection leaves the execution context, of graphs without any the stream; "-" when one end
            is in neither
  STRIDE    bytes from line to line, BUFFER: bytes of one frame
  TERMINAL  the terminal's identifier, stage and port together

Examples:
  nuxo ports descriptor.xml settings.xml --key 10001
  nuxo ports descriptor.xml settings.xml img_sink:width=1920 --format json
)help";

constexpr const char* kContextsFooter =
    R"help(Three tables: the program groups (from generation 7 on: compute blocks) and external stages of each execution
context with its tuning mode; the connections that cross contexts; the boundary ports, through which each context is
connected to others or to nothing. Graphs without execution contexts are told apart by stream instead.

Examples:
  nuxo contexts descriptor.xml settings.xml --key 10001
  nuxo contexts descriptor.xml settings.xml --key 10001 --format json
)help";

constexpr const char* kKernelsFooter =
    R"help(The run-kernel records that the parameter library receives: one line a kernel, program group by program group in
the order of their streams, or those of one stream or group. A kernel with several outputs has a line for each.
  STATE        ENABLED, DISABLED (no frame passes) or BYPASS
  IN, OUT      what the kernel says of its own sizes; crops are left,top,right,bottom, "-" without any
  SOURCE       size of the source, SOURCE CROP: everything cropped so far in its pixels, ARRIVES: size that is left
  BPP          bits per pixel at input and output

Examples:
  nuxo kernels descriptor.xml settings.xml --key 10001
  nuxo kernels descriptor.xml settings.xml --key 10001 --stream 60001
  nuxo kernels descriptor.xml settings.xml --key 10001 --group video_pg --format json
)help";

constexpr const char* kHistoryFooter =
    R"help(How size and crop of the frame change on its way to one stream and through it, from the sensor to each kernel and
sink, in the order in which the frame passes. What other streams do to the frame before stands first.
  FITS         "-" where nothing states a size, yes, or the size that is stated in place of the one that arrives
  SOURCE CROP  everything cropped up to here, in pixels of the source; left,top,right,bottom
  TO           where the frame goes; other ends of the same group without its name
A kernel that takes another size than arrives breaks the chain. Where kernels have links the library stops there, and
the chain is shown up to the first; otherwise it goes on with the size that the kernel states.

Examples:
  nuxo history descriptor.xml settings.xml --key 10001 --stream 60001
  nuxo history descriptor.xml settings.xml --key 10001 --stream 60001 --format json
)help";

constexpr const char* kDrawFooter =
    R"help(Draws the inside of one stream in the language of graphviz: kernels, routing elements and ports of its program
groups, with the size of the frame at each link. What is disabled or bypassed is dashed and says so; what leads back to
an earlier stage is blue.

Example:
  nuxo draw descriptor.xml settings.xml --key 10001 --stream 60001 | dot -Tsvg -o stream.svg
)help";

constexpr const char* kFrameParamsFooter =
    R"help(The frame that statistics refer to, as the 3A library is told: where the image lies in the sensor's pixel array,
how large it is there, and by which fractions it was scaled. With --port the frame of one port instead.

Examples:
  nuxo frame-params descriptor.xml settings.xml --key 10001
  nuxo frame-params descriptor.xml settings.xml --key 10001 --port video_pg:main_out
)help";

constexpr const char* kFormatsFooter =
    R"help(Without a name the table of all formats. A format is named as in graph files or by its four-character code, in
exactly these letters. Strides are those that the hardware expects for the width; --bpl gives another one. Compressed
formats have a tile-status table for each plane behind the image.

Examples:
  nuxo formats
  nuxo formats YUV420_8_SP --width 1920 --height 1080
  nuxo formats CN12 --bpl 2048 --height 1080 --format json
)help";

const std::map<std::string, Format> kTreeFormats = {{"text", Format::Text}, {"json", Format::Json}};
const std::map<std::string, Format> kGraphFormats = {
    {"text", Format::Text}, {"json", Format::Json}, {"dot", Format::Dot}};

std::string versionText()
{
    return std::string("nuxo ") + NUXO_TOOL_VERSION + " (library " + qv_css_get_version_string() + ')';
}

CLI::App* addVerb(CLI::App& app, const char* name, const char* description, const char* footer)
{
    CLI::App* const verb = app.add_subcommand(name, description);
    verb->footer(std::string(footer) + '\n' + kExitCodes);
    verb->group("Verbs");
    verb->fallthrough();
    return verb;
}

void addFormat(CLI::App& verb, std::string& format, const std::map<std::string, Format>& formats)
{
    std::vector<std::string> names;
    for (const char* const name : {"text", "json", "dot"}) {
        if (formats.count(name) > 0) names.emplace_back(name);
    }
    verb.add_option("--format", format, "How to write the result")
        ->check(CLI::IsMember(names))
        ->type_name("FORMAT")
        ->capture_default_str();
}

void addPair(CLI::App& verb, Arguments& arguments)
{
    verb.add_option("DESCRIPTOR", arguments.descriptor, "Graph descriptor file (.xml or .gz)")
        ->required()
        ->type_name("");
    verb.add_option("SETTINGS", arguments.settings, "Graph settings file (.xml or .gz)")->required()->type_name("");
    verb.add_option("CRITERIA", arguments.criteria, "path=value, for example img_sink:width=1920")->type_name("");
}

// The files and what selects one setting.
void addSetting(CLI::App& verb, Arguments& arguments)
{
    addPair(verb, arguments);
    verb.add_option("--key", arguments.key, "Key of the setting")->type_name("N");
}

void addOrigin(CLI::App& verb, Arguments& arguments)
{
    verb.add_flag("--origin", arguments.origin, "Say which file:line:column gave each value");
}

void addFormatQuestion(CLI::App& verb, Arguments& arguments)
{
    CLI::Option* const name = verb.add_option("NAME", arguments.formatName, "Name or code of a format")->type_name("");
    const auto addNumber = [&verb, name](const char* option, std::optional<uint32_t>& number, const char* description) {
        verb.add_option(option, number, description)
            ->check(CLI::Range(uint32_t{1}, std::numeric_limits<uint32_t>::max()))
            ->needs(name)
            ->type_name("N");
    };
    addNumber("--width", arguments.width, "Width in pixels: tells the stride");
    addNumber("--height", arguments.height, "Height in lines: tells the buffer's size");
    addNumber("--bpl", arguments.stride, "Bytes per line instead of the format's own");
}

CLI::Option* addStream(CLI::App& verb, Arguments& arguments)
{
    return verb.add_option("--stream", arguments.stream, "Number of a stream (stream_id)")->type_name("S");
}

void addKernelVerbs(CLI::App& app, Arguments& arguments, std::string& format)
{
    CLI::App* const kernels = addVerb(app, "kernels", "Show the run-kernel records of a graph", kKernelsFooter);
    addSetting(*kernels, arguments);
    CLI::Option* const stream = addStream(*kernels, arguments);
    kernels->add_option("--group", arguments.group, "Name of a program group")->type_name("NAME")->excludes(stream);
    addFormat(*kernels, format, kTreeFormats);

    CLI::App* const history = addVerb(app, "history", "Tell how size and crop change on the way", kHistoryFooter);
    addSetting(*history, arguments);
    addStream(*history, arguments)->required();
    addFormat(*history, format, kTreeFormats);

    CLI::App* const draw = addVerb(app, "draw", "Draw the inside of a stream", kDrawFooter);
    addSetting(*draw, arguments);
    addStream(*draw, arguments)->required();
}

void addOptions(CLI::App& app, Arguments& arguments, std::string& format)
{
    app.add_flag("-v,--verbose", arguments.verbose, "Show the library's log lines with their class");
    app.add_option("--color", arguments.colour, "Colour findings; auto: on a terminal, unless NO_COLOR is set")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->type_name("WHEN")
        ->capture_default_str();
    app.set_version_flag("--version", versionText());

    CLI::App* const dump = addVerb(app, "dump", "Show the tree of a graph file", kDumpFooter);
    dump->add_option("FILE", arguments.file, "Graph file (.xml or .gz)")->required()->type_name("");
    addFormat(*dump, format, kTreeFormats);
    addOrigin(*dump, arguments);

    CLI::App* const query = addVerb(app, "query", "List the settings that match", kQueryFooter);
    addPair(*query, arguments);
    query->add_flag("--any", arguments.any, "One matching criterion is enough; otherwise all must match");
    addFormat(*query, format, kTreeFormats);

    CLI::App* const build = addVerb(app, "build", "Build the graph of one setting", kBuildFooter);
    addSetting(*build, arguments);
    addFormat(*build, format, kGraphFormats);
    addOrigin(*build, arguments);

    CLI::App* const ports = addVerb(app, "ports", "List the ports of the graph of one setting", kPortsFooter);
    addSetting(*ports, arguments);
    addFormat(*ports, format, kTreeFormats);

    CLI::App* const contexts = addVerb(app, "contexts", "Show how the graph falls into contexts", kContextsFooter);
    addSetting(*contexts, arguments);
    addFormat(*contexts, format, kTreeFormats);

    addKernelVerbs(app, arguments, format);

    CLI::App* const frameParams = addVerb(app, "frame-params", "Tell the 3A library's frame", kFrameParamsFooter);
    addSetting(*frameParams, arguments);
    frameParams->add_option("--port", arguments.port, "A port, for example video_pg:main_out")->type_name("PATH");
    addFormat(*frameParams, format, kTreeFormats);

    CLI::App* const formats = addVerb(app, "formats", "Show pixel formats, strides and sizes", kFormatsFooter);
    addFormatQuestion(*formats, arguments);
    addFormat(*formats, format, kTreeFormats);
}

constexpr std::pair<const char*, Verb> kVerbs[] = {
    {"dump", Verb::Dump},       {"query", Verb::Query},       {"build", Verb::Build},
    {"ports", Verb::Ports},     {"contexts", Verb::Contexts}, {"kernels", Verb::Kernels},
    {"history", Verb::History}, {"draw", Verb::Draw},         {"frame-params", Verb::FrameParams},
    {"formats", Verb::Formats},
};

Verb chosenVerb(const CLI::App& app)
{
    const auto chosen = std::find_if(std::begin(kVerbs), std::end(kVerbs),
                                     [&app](const auto& verb) { return app.got_subcommand(verb.first); });
    return chosen->second; // the parser of arguments demands a verb
}

std::string verbsText()
{
    std::string text;
    for (const auto& [name, verb] : kVerbs) {
        const bool isLast = verb == std::end(kVerbs)[-1].second;
        text += (text.empty() ? "" : isLast ? " or " : ", ") + std::string(name);
    }
    return text;
}

// Combinations of options that make no sense, "" when there is none.
std::string contradiction(const Arguments& arguments)
{
    if (arguments.origin && arguments.format == Format::Dot) {
        return "--origin cannot be combined with --format dot; expected text or json";
    }
    if (arguments.height && !arguments.width && !arguments.stride) {
        return "--height alone tells no size; expected --width or --bpl as well";
    }
    if (arguments.stride && !arguments.height) return "--bpl alone tells no size; expected --height as well";
    return "";
}

// What the parser of arguments objects to; it does not mention the word that stands in place of a verb.
std::string complaint(const CLI::App& app, const CLI::ParseError& error)
{
    const std::vector<std::string> unused = app.remaining();
    const bool isNumber = dynamic_cast<const CLI::ConversionError*>(&error) != nullptr; // all options but texts
    if (!app.get_subcommands().empty())
        return error.what() + std::string(isNumber ? "; expected a whole number of 32 bits" : "");
    if (unused.empty()) return "no verb; expected " + verbsText();
    if (unused.front().compare(0, 1, "-") == 0) return "unknown option '" + unused.front() + "'; expected a verb";
    std::vector<std::string> names;
    for (const auto& [name, verb] : kVerbs) names.emplace_back(name);
    return "unknown verb '" + unused.front() + "'; expected " + verbsText() + suggestionFor(unused.front(), names);
}

} // namespace

ParsedArguments parseArguments(int argc, const char* const* argv)
{
    ParsedArguments parsed;
    Arguments arguments;
    std::string format = "text";
    CLI::App app("Work with camera graph files: descriptors, settings and the graphs built from them.", "nuxo");
    app.require_subcommand(1);
    app.get_formatter()->label("SUBCOMMAND", "VERB");
    app.footer(std::string(kMainFooter) + '\n' + kExitCodes);
    addOptions(app, arguments, format);
    try {
        app.parse(argc, argv);
        arguments.verb = chosenVerb(app);
        arguments.format = kGraphFormats.at(format);
        parsed.error = contradiction(arguments);
        if (parsed.error.empty()) parsed.arguments = arguments;
    } catch (const CLI::ParseError& outcome) {
        std::ostringstream out;
        std::ostringstream unused;
        const int code = app.exit(outcome, out, unused);
        if (code == 0) {
            parsed.output = out.str();
        } else {
            parsed.error = complaint(app, outcome);
        }
    }
    parsed.colour = arguments.colour;
    return parsed;
}

} // namespace NuxoTool
