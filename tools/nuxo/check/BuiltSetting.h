// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_BUILT_SETTING_H
#define NUXO_TOOL_BUILT_SETTING_H

#include "Findings.h"
#include "Flow.h"
#include "GraphRequest.h"
#include "check/rules/SettingsLinks.h"
#include "model/DescriptorModel.h"
#include "model/SettingsModel.h"

#include <nuxo/parser/SourceLocator.h>
#include <nuxo/query/GraphQueryManager.h>
#include <nuxo/tree/IGraphConfig.h>

#include <vector>

namespace NuxoTool {

/// The graph of one setting, built and analysed once, for all rules that look at graphs.
struct BuiltSetting {
    const DescriptorModel& descriptor;
    const SettingsModel& file;
    const ModelSetting& setting;
    NUXO::SourceLocator& locator;
    BuiltGraph built;  ///< empty when building failed
    Flow flow;         ///< how frames pass through it; without nodes when building failed
    Findings analysis; ///< what the library's analysis brought up
    /// What is wrong with it, each in its rule: a rule takes its own out.
    Findings findings;
};

/// Builds and analyses the settings of one file. Everything that is given must outlive it, and it the graphs that it builds.
class SettingBuilder {
public:
    /// @param descriptorTree, settingsTree  what the library made of the two files
    /// @param locator                       shared, so that files are read again once
    SettingBuilder(const DescriptorModel& descriptor, NUXO::IGraphConfig& descriptorTree, const SettingsModel& file,
                   NUXO::IGraphConfig& settingsTree, NUXO::SourceLocator& locator);
    SettingBuilder(const SettingBuilder&) = delete;
    SettingBuilder& operator=(const SettingBuilder&) = delete;

    /// The graph goes with the last copy of what is returned.
    ///
    /// @param setting  of the file
    BuiltSetting build(const ModelSetting& setting);

private:
    void construct(BuiltSetting& result, NUXO::GraphConfigNode& settings, Session& scratch);
    static void analyse(BuiltSetting& result, Session& scratch);

    const DescriptorModel& mDescriptor;
    const SettingsModel& mFile;
    NUXO::SourceLocator& mLocator;
    NUXO::IGraphConfig& mDescriptorTree;
    NUXO::GraphQueryManager mManager;
    LinkTable mLinks;
    std::vector<NUXO::IGraphConfig*> mSettings; ///< by their index in the file
};

} // namespace NuxoTool

#endif
