// SPDX-License-Identifier: Apache-2.0
#include "check/CheckRun.h"

#include "Progress.h"
#include "check/MeantNames.h"

#include <nuxo/tree/NuxoKeys.h>

#include <algorithm>
#include <iterator>
#include <type_traits>

namespace NuxoTool {

namespace {

// The library numbers names in the order in which it meets them; behind these its integer attributes begin.
constexpr size_t kMostNames = size_t{NUXO_KEY_NUM_START};

bool hasTooManyNames()
{
    return NUXO::nuxo_key_map.size() > kMostNames;
}

bool isAnyOf(const std::string& rule, const Findings& findings)
{
    const auto& all = findings.all();
    return std::any_of(all.begin(), all.end(), [&rule](const auto& finding) { return finding.rule == rule; });
}

// The mode that a setting asks its sensor for.
const XmlElement* modeOf(const ModelSetting& setting, const SettingsModel& model)
{
    const XmlElement* const sensor = setting.element->child("sensor");
    const ModelSensorMode* const mode = sensor == nullptr ? nullptr : model.sensorMode(sensor->value("mode_id"));
    return mode == nullptr ? nullptr : mode->element;
}

// Whether all ends of its connections lead to nodes of which all is known.
bool isWhole(const ModelGraph& graph)
{
    const auto isWholeEnd = [](const ModelEnd& end) { return end.node != nullptr && end.node->isWhole(); };
    return std::all_of(graph.connections.begin(), graph.connections.end(), [&](const ModelConnection& connection) {
        return isWholeEnd(connection.source) && isWholeEnd(connection.sink);
    });
}

} // namespace

CheckRun::CheckRun(Session& session, const RuleSettings& rules) : mSession(session), mReporter(rules, mFindings)
{
}

CheckSummary CheckRun::run()
{
    checkDescriptor();
    std::vector<std::string> files = {mSession.arguments.descriptor};
    for (const std::string& path : mSession.arguments.files) {
        if (std::find(std::next(files.begin()), files.end(), path) != files.end()) continue; // nothing new
        checkSettings(path);
        files.push_back(path);
    }
    reportMissingKeys();
    mReporter.tellRepeats();
    mFindings.sortByPlace(files);
    mSession.findings.append(mFindings);
    return mSummary;
}

bool CheckRun::needsAreMet(const Rule& rule, const std::vector<const XmlDocument*>& documents) const
{
    return std::none_of(rule.needs.begin(), rule.needs.end(), [&](const char* needed) {
        return std::any_of(documents.begin(), documents.end(),
                           [&](const XmlDocument* document) { return mReporter.hasFired(needed, document->path()); });
    });
}

template <typename Function, typename... Subjects>
void CheckRun::runRules(const std::vector<const XmlDocument*>& documents, const Subjects&... subjects)
{
    for (const Rule& rule : allRules()) {
        const Function* const run = std::get_if<Function>(&rule.run);
        if (run == nullptr || !needsAreMet(rule, documents)) continue;
        mReporter.enter(rule.id, !std::is_same_v<Function, FileRule>);
        (*run)(subjects..., mReporter);
    }
}

CheckRun::File CheckRun::load(const std::string& path, DocumentKind kind)
{
    File file;
    Session reading;
    reading.arguments = mSession.arguments;
    file.graph = loadGraphFile(reading, path, kind);
    // A descriptor without version is more than a nuisance: it has no generation, as version-text tells.
    mReporter.take(reading.findings, kind == DocumentKind::Descriptor ? "missing-version" : "");
    // A `type` in the wrong place ends the library's parse, but the document goes on.
    file.isWellFormed = file.graph.complete || (reading.findings.errorCount() == 1 && file.graph.isGraphFile() &&
                                                isAnyOf("type-before-name", reading.findings));
    if (hasTooManyNames()) {
        mReporter.enter("too-many-names", false);
        mReporter.report(file.graph.root, "with this file there are " + std::to_string(NUXO::nuxo_key_map.size()) +
                                              " different names; expected at most " + std::to_string(kMostNames));
        file.isWellFormed = false;
    }
    if (!file.isWellFormed) return file;
    ++mSummary.files;
    file.document = std::make_unique<XmlDocument>(path);
    readAsMeant(*file.document);
    runRules<FileRule>({file.document.get()}, *file.document);
    return file;
}

void CheckRun::checkDescriptor()
{
    mDescriptor = load(mSession.arguments.descriptor, DocumentKind::Descriptor);
    if (!mDescriptor.isWellFormed) return;
    mModel = std::make_unique<DescriptorModel>(*mDescriptor.document);
    runRules<DescriptorRule>({mDescriptor.document.get()}, *mModel);
}

void CheckRun::checkSettings(const std::string& path)
{
    File file = load(path, DocumentKind::Settings);
    if (file.graph.isDescriptor() && mDescriptor.graph.isSettings())
        mReporter.note(Location(), "the two files look swapped; expected DESCRIPTOR before SETTINGS");
    mDocuments.push_back(std::move(file.document)); // the reporter knows its elements by their addresses
    if (!file.isWellFormed || mModel == nullptr) return;
    const XmlDocument& document = *mDocuments.back();
    const SettingsModel model(document, *mModel);
    chooseSettings(model);
    runRules<SettingsRule>({mDescriptor.document.get(), &document}, *mModel, model);
    if (!file.graph.complete || !mDescriptor.graph.complete) {
        mSummary.skipped += model.settings().size();
    } else {
        buildSettings(model, file.graph);
    }
}

bool CheckRun::isChosen(const ModelSetting& setting) const
{
    const std::vector<int32_t>& keys = mSession.arguments.keys;
    return keys.empty() || (setting.key && std::find(keys.begin(), keys.end(), *setting.key) != keys.end());
}

void CheckRun::chooseSettings(const SettingsModel& model)
{
    for (const ModelSetting& setting : model.settings()) {
        if (setting.key) mAllKeys.insert(*setting.key);
        if (!isChosen(setting)) {
            mReporter.ignore(*setting.element);
        } else if (setting.key) {
            mFoundKeys.insert(*setting.key);
        }
    }
}

void CheckRun::reportMissingKeys()
{
    constexpr size_t listed = 20;
    for (const int32_t key : mSession.arguments.keys) {
        if (mModel == nullptr || mFoundKeys.count(key) > 0) continue;
        std::string known;
        size_t count = 0;
        for (const int32_t each : mAllKeys) {
            if (++count > listed) break;
            known += (known.empty() ? "" : ", ") + std::to_string(each);
        }
        if (mAllKeys.size() > listed) known += ", ...";
        mSession.findings.error("no-match", {},
                                "no setting has the key " + std::to_string(key) + "; expected one of " +
                                    (known.empty() ? "none" : known));
    }
}

bool CheckRun::isSound(const XmlElement& part) const
{
    const XmlElement* const around = part.parent;
    return !mReporter.hasErrors(part) && (around == nullptr || !mReporter.hasErrors(*around));
}

bool CheckRun::isSound(const ModelGraph& graph)
{
    // Every setting asks, and only a new finding changes the answer.
    SoundGraph& known = mSoundGraphs[&graph];
    if (known.partsWithErrors == mReporter.partsWithErrors()) return known.isSound;
    known.partsWithErrors = mReporter.partsWithErrors();
    known.isSound = isSound(*graph.element) && isWhole(graph) &&
                    std::all_of(graph.nodes().begin(), graph.nodes().end(), [this](const ModelNode* node) {
                        return isSound(*node->element) && (node->base == nullptr || isSound(*node->base));
                    });
    return known.isSound;
}

bool CheckRun::isBuildable(const ModelSetting& setting, const SettingsModel& model)
{
    std::vector<const XmlElement*> parts = {setting.element, model.document().root(), mDescriptor.document->root()};
    if (const XmlElement* const mode = modeOf(setting, model)) parts.push_back(mode);
    if (model.sensorModesElement() != nullptr) parts.push_back(model.sensorModesElement());
    return std::all_of(parts.begin(), parts.end(), [this](const XmlElement* part) { return isSound(*part); }) &&
           (setting.graph == nullptr || isSound(*setting.graph));
}

void CheckRun::buildSettings(const SettingsModel& model, const GraphFile& file)
{
    SettingBuilder builder(*mModel, *mDescriptor.graph.tree, model, *file.tree, mSession.locator);
    Progress progress(model.settings().size(), "settings");
    for (const ModelSetting& setting : model.settings()) {
        progress.step();
        if (!isChosen(setting)) continue;
        // The library does not see a misspelled one.
        if (!setting.element->misspelled.empty() || !isBuildable(setting, model)) {
            ++mSummary.skipped;
            continue;
        }
        ++mSummary.settings;
        const BuiltSetting built = builder.build(setting);
        runRules<GraphRule>({mDescriptor.document.get(), &model.document()}, built);
    }
}

} // namespace NuxoTool
