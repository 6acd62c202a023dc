// SPDX-License-Identifier: Apache-2.0
#include "GraphRequest.h"
#include "Loading.h"
#include "Origins.h"
#include "Output.h"
#include "Text.h"
#include "TreeView.h"
#include "diff/Comparison.h"
#include "diff/DiffRenderer.h"
#include "diff/DiffTree.h"
#include "document/XmlDocument.h"
#include "schema/GraphSchema.h"
#include "verbs/Verbs.h"

#include <algorithm>
#include <cstdlib>

#include <unistd.h>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

constexpr size_t kListedKeys = 8;

enum class Compares { Files, Settings, Graphs };

// What is wrong with the number of files and keys, "" when nothing is.
std::string misuse(const Arguments& arguments)
{
    const size_t files = arguments.files.size();
    const size_t keys = arguments.keys.size();
    const std::string found = std::to_string(files) + (files == 1 ? " file" : " files") + " and " +
                              std::to_string(keys) + (keys == 1 ? " key" : " keys");
    if (arguments.built) {
        if ((files == 2 && keys == 2) || (files == 4 && (keys == 1 || keys == 2))) return "";
        return "--built with " + found +
               "; expected DESCRIPTOR SETTINGS with --key twice, or DESCRIPTOR SETTINGS DESCRIPTOR2 SETTINGS2 with "
               "--key "
               "once or twice";
    }
    if (files == 1 && keys == 2) return "";
    if (files == 2 && keys <= 2) return "";
    if (files > 2) return found + "; expected two files, or --built to compare graphs";
    if (files == 1) return found + "; expected a second file, or --key twice to compare two settings of the file";
    return found + "; expected --key once or twice, one for each file";
}

// The keys next to a number, ascending.
std::string nearestKeys(const std::vector<IGraphConfig*>& settings, int32_t wanted)
{
    std::vector<int64_t> keys;
    for (const IGraphConfig* const setting : settings) {
        if (const auto key = optionalInteger(*setting, NUXO_KEY_KEY)) keys.push_back(*key);
    }
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    std::stable_sort(keys.begin(), keys.end(), [wanted](int64_t left, int64_t right) {
        return std::llabs(left - wanted) < std::llabs(right - wanted);
    });
    const bool isCut = keys.size() > kListedKeys;
    if (isCut) keys.resize(kListedKeys);
    std::sort(keys.begin(), keys.end());
    std::string text;
    for (const int64_t key : keys) text += (text.empty() ? "" : ", ") + std::to_string(key);
    if (text.empty()) return "which holds none with a key";
    return (isCut ? "the nearest are " : keys.size() == 1 ? "which is " : "which are ") + text;
}

// The setting with a key; null, with a finding, when there is none or a choice.
IGraphConfig* settingOf(Session& session, const std::vector<IGraphConfig*>& settings, const std::string& file,
                        int32_t key)
{
    std::vector<IGraphConfig*> found;
    for (IGraphConfig* const setting : settings) {
        if (optionalInteger(*setting, NUXO_KEY_KEY) == key) found.push_back(setting);
    }
    if (found.size() == 1) return found.front();
    const std::string keyText = " the key " + std::to_string(key);
    if (found.empty()) {
        session.findings.error("no-match", inFile(file),
                               "no setting has" + keyText + "; expected a key of the file, " +
                                   nearestKeys(settings, key));
        return nullptr;
    }
    session.findings.error("ambiguous",
                           originOf(session.locator, dynamic_cast<GraphConfigNode&>(*found[1])).value_or(inFile(file)),
                           std::to_string(found.size()) + " settings have" + keyText + "; expected one");
    return nullptr;
}

std::vector<IGraphConfig*> settingsOf(const GraphConfigNode& root)
{
    std::vector<IGraphConfig*> settings;
    for (const auto& [key, offset, item] : root) {
        auto* const node = dynamic_cast<GraphConfigNode*>(item);
        if (key == NUXO_KEY_SETTINGS && node != nullptr) settings.push_back(node);
    }
    return settings;
}

// What is compared: the trees and what they are called.
struct Subject {
    const GraphConfigNode* root = nullptr; // null when something is wrong, which was reported
    DiffSide side;
};

// Two things of one kind, compared and written. Whether they could be compared.
bool compare(Session& session, Compares compares, const std::string& name, Subject a, Subject b)
{
    if (a.root == nullptr || b.root == nullptr) return false;
    DiffTrees trees;
    const bool chosen = compares != Compares::Files;
    const auto treeA = trees.read(*a.root, chosen);
    const auto treeB = trees.read(*b.root, chosen);
    const Comparison comparison(trees, *treeA, *treeB);
    const DiffReport report = {trees, comparison, std::move(a.side), std::move(b.side), session.locator};
    const bool isJson = session.arguments.format == Format::Json;
    session.output = isJson ? renderDiffJson(report, name)
                            : renderDiff(report, wantsColour(session.arguments.colour, STDOUT_FILENO));
    if (!comparison.differences().empty()) session.findings.raiseExitCode(ExitCode::Findings);
    return true;
}

Subject subjectOf(const GraphFile& file)
{
    Subject subject;
    if (!file.complete) return subject;
    subject.root = file.node();
    subject.side.title = printable(file.path);
    subject.side.json["file"] = file.path;
    subject.side.rootName = file.rootElement;
    subject.side.root = file.root;
    return subject;
}

// What the library makes of a file has no attributes of unknown names, so the comparison cannot see them.
void warnOfUnknownAttributes(Session& session, const GraphFile& file)
{
    if (!file.complete) return;
    constexpr size_t told = 5;
    size_t count = 0;
    const XmlDocument document(file.path);
    for (const XmlElement& element : document.elements()) {
        for (const XmlAttribute& attribute : element.attributes) {
            const bool isOfXml = attribute.name == "xmlns" || attribute.name.find(':') != std::string::npos;
            if (isOfXml || isVocabularyAttribute(attribute.name) || ++count > told) continue;
            session.findings.warning("unknown-attribute", document.locate(element, attribute),
                                     "unknown attribute " + named(attribute.name) + " of " + named(element.name) +
                                         " is not compared; expected a name of the format, see nuxo check");
        }
    }
    if (count <= told) return;
    session.findings.note(inFile(file.path),
                          std::to_string(count - told) + " more unknown attributes are not compared");
}

bool compareFiles(Session& session)
{
    const std::vector<std::string>& paths = session.arguments.files;
    const GraphFile a = loadGraphFile(session, paths[0], DocumentKind::Any);
    const DocumentKind kind = a.isDescriptor() ? DocumentKind::Descriptor
                              : a.isSettings() ? DocumentKind::Settings
                                               : DocumentKind::Any;
    const GraphFile b = loadGraphFile(session, paths[1], kind);
    if ((a.isDescriptor() && b.isSettings()) || (a.isSettings() && b.isDescriptor())) {
        session.findings.note({},
                              "a descriptor and a settings file have nothing in common; nuxo check tells whether they "
                              "fit together");
    }
    for (const GraphFile* const file : {&a, &b}) warnOfUnknownAttributes(session, *file);
    return compare(session, Compares::Files, a.isDescriptor() ? "descriptors" : "settings files", subjectOf(a),
                   subjectOf(b));
}

Subject subjectOf(Session& session, const IGraphConfig* setting, const std::string& file, int32_t key)
{
    Subject subject;
    subject.root = dynamic_cast<const GraphConfigNode*>(setting);
    if (subject.root == nullptr) return subject;
    subject.side.title = printable(file) + ", setting " + std::to_string(key);
    subject.side.json["file"] = file;
    subject.side.json["setting"] = key;
    subject.side.rootName = "setting";
    subject.side.root = originOf(session.locator, *subject.root).value_or(inFile(file));
    return subject;
}

bool compareSettings(Session& session)
{
    const std::vector<std::string>& paths = session.arguments.files;
    const std::vector<int32_t>& keys = session.arguments.keys;
    std::vector<GraphFile> files;
    for (const std::string& path : paths) files.push_back(loadGraphFile(session, path, DocumentKind::Settings));
    if (!files.front().complete || !files.back().complete) return false;

    const auto subject = [&](const GraphFile& file, int32_t key) {
        const IGraphConfig* const setting = settingOf(session, settingsOf(*file.node()), file.path, key);
        return subjectOf(session, setting, file.path, key);
    };
    Subject a = subject(files.front(), keys.front());
    Subject b = subject(files.back(), keys.back());
    return compare(session, Compares::Settings, "settings", std::move(a), std::move(b));
}

// The graph of a setting of a request; it stays with @p built.
Subject build(Session& session, GraphRequest& request, int32_t key, BuiltGraph& built)
{
    const std::string& file = request.files().settings.path;
    IGraphConfig* const setting = settingOf(session, settingsOf(*request.files().settings.node()), file, key);
    if (setting == nullptr) return {};
    built = request.build(*setting);
    if (!built) return {};
    const std::string& descriptor = request.files().descriptor.path;
    Subject subject = subjectOf(session, setting, file, key);
    subject.root = built.graph;
    subject.side.title = printable(descriptor) + ", " + subject.side.title + ", built";
    subject.side.json = JsonValue{{"descriptor", descriptor}, {"file", file}, {"setting", key}};
    subject.side.rootName = "graph";
    return subject;
}

std::unique_ptr<GraphRequest> requestOf(Session& session, const std::string& descriptor, const std::string& settings)
{
    session.arguments.descriptor = descriptor;
    session.arguments.settings = settings;
    auto request = std::make_unique<GraphRequest>(session);
    static_cast<void>(request->findSettings()); // tells of versions that do not fit
    return request;
}

bool compareGraphs(Session& session)
{
    const std::vector<std::string> paths = session.arguments.files;
    const std::vector<int32_t>& keys = session.arguments.keys;
    std::vector<std::unique_ptr<GraphRequest>> requests;
    for (size_t i = 0; i + 1 < paths.size(); i += 2) requests.push_back(requestOf(session, paths[i], paths[i + 1]));
    if (!requests.front()->isReady() || !requests.back()->isReady()) return false;
    BuiltGraph builtA; // must go before the requests
    BuiltGraph builtB;
    Subject a = build(session, *requests.front(), keys.front(), builtA);
    Subject b = build(session, *requests.back(), keys.back(), builtB);
    return compare(session, Compares::Graphs, "graphs", std::move(a), std::move(b));
}

} // namespace

void runDiff(Session& session)
{
    const std::string trouble = misuse(session.arguments);
    if (!trouble.empty()) {
        session.findings.error("usage", {}, trouble, ExitCode::Usage);
        session.findings.note({}, "see nuxo diff --help");
        return;
    }
    const auto compareAll = session.arguments.built          ? compareGraphs
                            : session.arguments.keys.empty() ? compareFiles
                                                             : compareSettings;
    // Scripts take 1 for a difference.
    if (!compareAll(session)) session.findings.raiseExitCode(ExitCode::InputOutput);
}

} // namespace NuxoTool
