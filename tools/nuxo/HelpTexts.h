// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_HELP_TEXTS_H
#define NUXO_TOOL_HELP_TEXTS_H

namespace NuxoTool {

// What stands below the options in the help texts.
extern const char* const kExitCodes;
extern const char* const kMainFooter;
extern const char* const kDumpFooter;
extern const char* const kQueryFooter;
extern const char* const kBuildFooter;
extern const char* const kPortsFooter;
extern const char* const kContextsFooter;
extern const char* const kKernelsFooter;
extern const char* const kHistoryFooter;
extern const char* const kDrawFooter;
extern const char* const kFrameParamsFooter;
extern const char* const kFormatsFooter;
extern const char* const kCheckFooter;
extern const char* const kExplainFooter;
extern const char* const kDiffFooter;
extern const char* const kFmtFooter;
extern const char* const kSchemaFooter;

} // namespace NuxoTool

#endif
