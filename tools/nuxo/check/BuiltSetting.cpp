// SPDX-License-Identifier: Apache-2.0
#include "check/BuiltSetting.h"

#include "BuildFaults.h"
#include "KernelView.h"
#include "LibraryLog.h"
#include "check/rules/GraphInspection.h"
#include "check/rules/GraphInspections.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/tree/NodeIterator.h>

#include <utility>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

SettingBuilder::SettingBuilder(const DescriptorModel& descriptor, IGraphConfig& descriptorTree,
                               const SettingsModel& file, IGraphConfig& settingsTree, NUXO::SourceLocator& locator)
    : mDescriptor(descriptor), mFile(file), mLocator(locator), mDescriptorTree(descriptorTree), mLinks(descriptor)
{
    mManager.setGraphDescriptor(&descriptorTree);
    mManager.setGraphSettings(&settingsTree);
    NUXO::NodeIterator settings(&settingsTree);
    while (IGraphConfig* const node = settings.iterateByUid(NUXO_KEY_SETTINGS)) mSettings.push_back(node);
}

BuiltSetting SettingBuilder::build(const ModelSetting& setting)
{
    BuiltSetting result{mDescriptor, mFile, setting, mLocator, {}, {}, {}, {}};
    auto* const node =
        setting.index < mSettings.size() ? dynamic_cast<GraphConfigNode*>(mSettings[setting.index]) : nullptr;
    if (node == nullptr) return result; // an empty element, which the library does not keep
    Session scratch(mLocator);
    scratch.arguments.descriptor = mDescriptor.document().path();
    scratch.arguments.settings = mFile.document().path();
    construct(result, *node, scratch);
    if (result.built) {
        analyse(result, scratch);
        GraphInspection inspection(result, mLinks, scratch);
        inspectGraph(inspection);
    }
    result.findings = std::move(scratch.findings);
    takeLibraryLog();
    return result;
}

void SettingBuilder::construct(BuiltSetting& result, GraphConfigNode& settings, Session& scratch)
{
    takeLibraryLog();
    IGraphConfig* graph = nullptr;
    const int status = mManager.createGraph(&settings, &graph);
    result.built.owner.reset(graph, [this](IGraphConfig* owned) { mManager.destroyGraph(owned); });
    result.built.settings = &settings;
    const auto* const root = dynamic_cast<const GraphConfigNode*>(graph);
    if (status == StatusOk && root != nullptr) {
        result.built.graph = root;
        return;
    }
    const auto& descriptor = dynamic_cast<const GraphConfigNode&>(mDescriptorTree);
    const BuildFault fault = buildFaultOf(scratch, {mManager, descriptor, settings, root, status, takeLibraryLog()});
    scratch.findings.error(kBuildRule, fault.where, fault.text);
    for (const BuildFault::Note& note : fault.notes) scratch.findings.note(note.where, note.text);
}

// As the verbs that show flows and records do.
void SettingBuilder::analyse(BuiltSetting& result, Session& scratch)
{
    result.flow = makeFlow(scratch, result.built);
    if (scratch.findings.all().empty()) viewKernels(scratch, result.built);
    result.analysis = std::exchange(scratch.findings, {});
}

} // namespace NuxoTool
