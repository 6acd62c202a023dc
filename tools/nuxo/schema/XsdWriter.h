// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_XSD_WRITER_H
#define NUXO_TOOL_XSD_WRITER_H

#include "model/DescriptorModel.h"

#include <string>

namespace NuxoTool {

/// An XML schema (XSD 1.0) of graph descriptors, with a text on every element and attribute.
std::string descriptorXsd();

/// The same of settings files.
///
/// @param descriptor  gives the names of nodes and of their parts; without one, elements of any names may stand there
std::string settingsXsd(const DescriptorModel* descriptor);

} // namespace NuxoTool

#endif
