// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_CHECK_RUN_H
#define NUXO_TOOL_CHECK_RUN_H

#include "Loading.h"
#include "Session.h"
#include "check/BuiltSetting.h"
#include "check/RuleReporter.h"
#include "check/RuleSettings.h"
#include "document/XmlDocument.h"
#include "model/DescriptorModel.h"
#include "model/SettingsModel.h"

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace NuxoTool {

/// What a check looked at.
struct CheckSummary {
    size_t files = 0;
    size_t settings = 0; ///< built and analysed
    size_t skipped = 0;  ///< not built because of errors that were found before
};

/// Runs all rules over the files of the command line. Findings go to the session, those of one place together, in the order
/// of the files.
class CheckRun {
public:
    CheckRun(Session& session, const RuleSettings& rules);
    CheckSummary run();

private:
    struct File {
        GraphFile graph;
        std::unique_ptr<XmlDocument> document;
        bool isWellFormed = false;
    };

    File load(const std::string& path, DocumentKind kind);
    void checkDescriptor();
    void checkSettings(const std::string& path);
    void buildSettings(const SettingsModel& model, const GraphFile& file);
    /// Whether neither a part of a file nor what holds it has an error.
    bool isSound(const XmlElement& part) const;
    /// Whether that goes for a graph and all of its nodes.
    bool isSound(const ModelGraph& graph);
    bool isBuildable(const ModelSetting& setting, const SettingsModel& model);
    void chooseSettings(const SettingsModel& model);
    bool isChosen(const ModelSetting& setting) const;
    void reportMissingKeys();
    template <typename Function, typename... Subjects>
    void runRules(const std::vector<const XmlDocument*>& documents, const Subjects&... subjects);
    bool needsAreMet(const Rule& rule, const std::vector<const XmlDocument*>& documents) const;

    struct SoundGraph {
        std::optional<size_t> partsWithErrors; ///< when that was found out
        bool isSound = false;
    };

    Session& mSession;
    Findings mFindings;
    RuleReporter mReporter;
    CheckSummary mSummary;
    File mDescriptor;
    std::unique_ptr<DescriptorModel> mModel;              ///< null when the descriptor cannot be used
    std::vector<std::unique_ptr<XmlDocument>> mDocuments; ///< of settings
    std::map<const ModelGraph*, SoundGraph> mSoundGraphs; // only looked up
    std::set<int32_t> mFoundKeys;
    std::set<int32_t> mAllKeys;
};

} // namespace NuxoTool

#endif
