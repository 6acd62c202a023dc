// SPDX-License-Identifier: Apache-2.0
#include "Arguments.h"

#include <qv_cipr/qv_log_common.h>

#include <CLI/CLI.hpp>

#include <map>
#include <memory>
#include <sstream>

namespace NuxoTool {

namespace {

constexpr const char* kExitCodes = R"help(Exit codes:
  0  done
  1  findings: a malformed file, no or more than one setting, a graph that cannot be built
  2  usage: a bad option or criterion; also a criterion with a name that no file or vocabulary has
  3  a file cannot be read, or output cannot be written
  4  internal error)help";

constexpr const char* kMainFooter = R"help(Examples:
  nuxo dump settings.xml
  nuxo query descriptor.xml settings.xml img_sink:width=1920 img_sink:height=1080
  nuxo build descriptor.xml settings.xml --key 10001
  nuxo build descriptor.xml settings.xml --key 10001 --format dot | dot -Tsvg -o graph.svg

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
    dump->add_flag("--origin", arguments.origin, "Say which file:line:column gave each value");

    CLI::App* const query = addVerb(app, "query", "List the settings that match", kQueryFooter);
    addPair(*query, arguments);
    query->add_flag("--any", arguments.any, "One matching criterion is enough; otherwise all must match");
    addFormat(*query, format, kTreeFormats);

    CLI::App* const build = addVerb(app, "build", "Build the graph of one setting", kBuildFooter);
    addPair(*build, arguments);
    build->add_option("--key", arguments.key, "Key of the setting")->type_name("N");
    addFormat(*build, format, kGraphFormats);
    build->add_flag("--origin", arguments.origin, "Say which file:line:column gave each value");
}

Verb chosenVerb(const CLI::App& app)
{
    if (app.got_subcommand("query")) return Verb::Query;
    return app.got_subcommand("build") ? Verb::Build : Verb::Dump;
}

// What the parser of arguments objects to; it does not mention the word that stands in place of a verb.
std::string complaint(const CLI::App& app, const CLI::ParseError& error)
{
    const std::vector<std::string> unused = app.remaining();
    if (!app.get_subcommands().empty()) return error.what();
    if (unused.empty()) return "no verb; expected dump, query or build";
    if (unused.front().compare(0, 1, "-") == 0) return "unknown option '" + unused.front() + "'; expected a verb";
    return "unknown verb '" + unused.front() + "'; expected dump, query or build";
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
        if (arguments.origin && arguments.format == Format::Dot) {
            parsed.error = "--origin cannot be combined with --format dot; expected text or json";
        } else {
            parsed.arguments = arguments;
        }
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
