// SPDX-License-Identifier: Apache-2.0
#include "Arguments.h"

#include "HelpTexts.h"
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

const std::map<std::string, Format> kTreeFormats = {{"text", Format::Text}, {"json", Format::Json}};
const std::map<std::string, Format> kGraphFormats = {
    {"text", Format::Text}, {"json", Format::Json}, {"dot", Format::Dot}};
const std::map<std::string, Format> kReportFormats = {
    {"text", Format::Text}, {"json", Format::Json}, {"sarif", Format::Sarif}};
const std::map<std::string, Format> kAllFormats = {{"text", Format::Text}, {"json", Format::Json},
                                                   {"dot", Format::Dot},   {"svg", Format::Svg},
                                                   {"html", Format::Html}, {"sarif", Format::Sarif}};

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
    for (const char* const name : {"text", "json", "dot", "svg", "html", "sarif"}) {
        if (formats.count(name) > 0) names.emplace_back(name);
    }
    verb.add_option("--format", format, "How to write the result")
        ->check(CLI::IsMember(names))
        ->type_name("FORMAT")
        ->capture_default_str();
}

// What is drawn has no text form.
void addDrawingFormat(CLI::App& verb, std::string& format)
{
    verb.add_option("--format", format, "How to write the drawing; dot when left out")
        ->check(CLI::IsMember({"dot", "svg", "html"}))
        ->type_name("FORMAT");
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

    CLI::App* const draw = addVerb(app, "draw", "Draw a graph, or the inside of a stream", kDrawFooter);
    addSetting(*draw, arguments);
    addStream(*draw, arguments);
    addDrawingFormat(*draw, format);
}

void addCheck(CLI::App& app, Arguments& arguments, std::string& format)
{
    CLI::App* const check = addVerb(app, "check", "Find what is wrong with graph files", kCheckFooter);
    check->add_option("DESCRIPTOR", arguments.descriptor, "Graph descriptor file (.xml or .gz)")->type_name("");
    check->add_option("SETTINGS", arguments.files, "Graph settings files (.xml or .gz)")->type_name("");
    check->add_option("--settings", arguments.keys, "Key of a setting to build; otherwise all. May be repeated")
        ->type_name("N")
        ->expected(1)
        ->take_all();
    const auto addRules = [check](const char* option, std::vector<std::string>& rules, const char* description) {
        check->add_option(option, rules, description)->type_name("RULE")->expected(1)->take_all();
    };
    addRules("-W", arguments.warningRules, "Findings of this rule are warnings");
    addRules("-E", arguments.errorRules, "Findings of this rule are errors");
    addRules("--no", arguments.disabledRules, "Leave this rule out");
    check->add_flag("--Werror", arguments.warningsAreErrors, "All warnings are errors; also -Werror");
    CLI::Option* const listRules = check->add_flag("--list-rules", arguments.listRules, "List the rules");
    check->add_option("--explain", arguments.explainedRule, "Tell what a rule is about")
        ->type_name("RULE")
        ->excludes(listRules);
    addFormat(*check, format, kReportFormats);
}

void addWritersVerbs(CLI::App& app, Arguments& arguments, std::string& format)
{
    CLI::App* const explain = addVerb(app, "explain", "Tell where a value of a graph comes from", kExplainFooter);
    explain->add_option("DESCRIPTOR", arguments.descriptor, "Graph descriptor file")->required()->type_name("");
    explain->add_option("SETTINGS", arguments.settings, "Graph settings file")->required()->type_name("");
    explain->add_option("PATH", arguments.path, "A node or attribute, for example video_sink:width")
        ->required()
        ->type_name("");
    explain->add_option("--key", arguments.key, "Key of the setting")->required()->type_name("N");
    addFormat(*explain, format, kTreeFormats);

    CLI::App* const diff = addVerb(app, "diff", "Compare files, settings or graphs by meaning", kDiffFooter);
    diff->add_option("FILE", arguments.files, "Graph files (.xml or .gz)")->required()->expected(1, 4)->type_name("");
    diff->add_option("--key", arguments.keys, "Key of a setting; may be repeated")
        ->type_name("N")
        ->expected(1)
        ->take_all();
    diff->add_flag("--built", arguments.built, "Compare the graphs that are built of the settings");
    addFormat(*diff, format, kTreeFormats);

    CLI::App* const fmt = addVerb(app, "fmt", "Write graph files in canonical form", kFmtFooter);
    fmt->add_option("FILE", arguments.files, "Graph files (.xml or .gz)")->required()->type_name("");
    CLI::Option* const inPlace = fmt->add_flag("-i,--in-place", arguments.inPlace, "Rewrite the files");
    fmt->add_flag("--check", arguments.checkOnly, "Only tell which files are not in canonical form")->excludes(inPlace);

    CLI::App* const schema = addVerb(app, "schema", "Write an XML schema for editors", kSchemaFooter);
    schema->add_option("KIND", arguments.schemaKind, "descriptor or settings")
        ->required()
        ->check(CLI::IsMember({"descriptor", "settings"}))
        ->type_name("");
    schema->add_option("DESCRIPTOR", arguments.descriptor, "Descriptor whose names settings may use")->type_name("");
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
    addCheck(app, arguments, format);
    addWritersVerbs(app, arguments, format);

    CLI::App* const frameParams = addVerb(app, "frame-params", "Tell the 3A library's frame", kFrameParamsFooter);
    addSetting(*frameParams, arguments);
    frameParams->add_option("--port", arguments.port, "A port, for example video_pg:main_out")->type_name("PATH");
    addFormat(*frameParams, format, kTreeFormats);

    CLI::App* const formats = addVerb(app, "formats", "Show pixel formats, strides and sizes", kFormatsFooter);
    addFormatQuestion(*formats, arguments);
    addFormat(*formats, format, kTreeFormats);
}

constexpr std::pair<const char*, Verb> kVerbs[] = {
    {"check", Verb::Check},
    {"dump", Verb::Dump},
    {"query", Verb::Query},
    {"build", Verb::Build},
    {"explain", Verb::Explain},
    {"diff", Verb::Diff},
    {"draw", Verb::Draw},
    {"fmt", Verb::Fmt},
    {"ports", Verb::Ports},
    {"contexts", Verb::Contexts},
    {"kernels", Verb::Kernels},
    {"history", Verb::History},
    {"frame-params", Verb::FrameParams},
    {"formats", Verb::Formats},
    {"schema", Verb::Schema},
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

// What check cannot do with its arguments, "" when it can.
std::string contradictionOfCheck(const Arguments& arguments)
{
    if (arguments.listRules || arguments.explainedRule) {
        const std::string option = arguments.listRules ? "--list-rules" : "--explain";
        return arguments.format == Format::Sarif
                   ? option + " finds nothing, so there is no SARIF of it; expected --format text or json"
                   : "";
    }
    if (arguments.descriptor.empty()) return "DESCRIPTOR is required";
    if (!arguments.keys.empty() && arguments.files.empty())
        return "--settings without a settings file; expected one behind the descriptor";
    return "";
}

// Combinations of options that make no sense, "" when there is none.
std::string contradiction(const Arguments& arguments)
{
    if (arguments.verb == Verb::Check) return contradictionOfCheck(arguments);
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
        arguments.format = kAllFormats.at(format);
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
