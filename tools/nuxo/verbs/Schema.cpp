// SPDX-License-Identifier: Apache-2.0
#include "Loading.h"
#include "schema/XsdWriter.h"
#include "verbs/Verbs.h"

namespace NuxoTool {

void runSchema(Session& session)
{
    const Arguments& arguments = session.arguments;
    if (arguments.schemaKind == "descriptor" && !arguments.descriptor.empty()) {
        session.findings.usageError("too-many-files", {arguments.descriptor, 1, arguments.descriptor.size()},
                                    "a schema of descriptors is the same for all; expected no file");
        return;
    }
    if (arguments.schemaKind == "descriptor") {
        session.output = descriptorXsd();
        return;
    }
    if (arguments.descriptor.empty()) {
        session.output = settingsXsd(nullptr);
        return;
    }
    // A schema of half a descriptor would refuse what the other half allows.
    if (!loadGraphFile(session, arguments.descriptor, DocumentKind::Descriptor).complete) return;
    const XmlDocument document(arguments.descriptor);
    const DescriptorModel descriptor(document);
    session.output = settingsXsd(&descriptor);
}

} // namespace NuxoTool
