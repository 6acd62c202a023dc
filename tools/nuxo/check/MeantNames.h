// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_MEANT_NAMES_H
#define NUXO_TOOL_MEANT_NAMES_H

#include "document/XmlDocument.h"
#include "schema/GraphSchema.h"

#include <string>

namespace NuxoTool {

/// The name of the vocabulary that an attribute of an unknown name most likely means, "" when none is close.
std::string meantAttribute(const ElementKind& kind, const std::string& name);

/// Gives misspelled elements and attributes the names that they most likely mean, so that rules which ask for them find
/// them: one wrong letter is one fault, not the loss of all that stands in the element. What was written is kept beside.
void readAsMeant(XmlDocument& document);

} // namespace NuxoTool

#endif
