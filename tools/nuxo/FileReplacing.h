// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_FILE_REPLACING_H
#define NUXO_TOOL_FILE_REPLACING_H

#include <string>

namespace NuxoTool {

/// Puts @p text in the place of an existing file, compressed when its name ends in "gz". Readers find either the old or the
/// new file, whole, also when the machine stops meanwhile. The mode stays, and so does the owner where that is allowed;
/// of a symbolic link the file that it leads to is replaced. Returns "" or why it failed; the file is then as it was.
std::string replaceFile(const std::string& path, const std::string& text);

} // namespace NuxoTool

#endif
