// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_ELEMENT_NAME_H
#define NUXO_TOOL_ELEMENT_NAME_H

#include <string>

namespace NuxoTool {

bool isAscii(char character);
/// Whether an element name in lower case may start with a character, or a byte of one; signs of other alphabets all may.
bool isElementNameStart(char character);
/// Whether it may have it further on.
bool isElementNameCharacter(char character);
/// Whether an element can have a name that is in lower case. Of signs of other alphabets the parser decides.
bool isElementName(const std::string& name);

} // namespace NuxoTool

#endif
