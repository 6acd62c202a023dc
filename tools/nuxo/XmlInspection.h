// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_XML_INSPECTION_H
#define NUXO_TOOL_XML_INSPECTION_H

#include "Findings.h"

#include <string>

namespace NuxoTool {

/// What a look at the bare XML of a file tells, which the library's tree does not.
struct XmlInspection {
    std::string rootElement;  ///< name of the document's element in lower case, "" when there is none
    Location root;            ///< where it starts
    bool hasElements = false; ///< whether any stand below that element
    bool isTooLarge = false;  ///< whether the text ends at the limit, and reading it again would as well
    bool complete = false;    ///< whether the document is well-formed to its end and within the library's limits
};

/// Reads the whole file once and reports what ends its parse as findings: damaged compression, too much text, XML that is not
/// well-formed, elements nested too deeply, and named descriptor elements that the parser cannot file.
XmlInspection inspectXml(const std::string& path, Findings& findings);

} // namespace NuxoTool

#endif
