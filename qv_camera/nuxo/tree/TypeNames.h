// SPDX-License-Identifier: Apache-2.0
// Internal: `type` texts that the library looks for. Parsing writes them from the element names, whatever keys those have.
#ifndef NUXO_TREE_TYPE_NAMES_H
#define NUXO_TREE_TYPE_NAMES_H

#include <string_view>

namespace NUXO {

constexpr std::string_view kTypeApply = "apply";
constexpr std::string_view kTypePort = "port";
constexpr std::string_view kTypeSink = "sink";

} // namespace NUXO

#endif
