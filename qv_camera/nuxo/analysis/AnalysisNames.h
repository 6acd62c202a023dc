// SPDX-License-Identifier: Apache-2.0
// Internal: the names by which the analysis joins nodes, ports and connections.
#ifndef NUXO_ANALYSIS_ANALYSIS_NAMES_H
#define NUXO_ANALYSIS_ANALYSIS_NAMES_H

#include <memory>
#include <new>
#include <string>

namespace NUXO {

/// What stands before the first ':', everything without one.
inline std::string nodePart(const std::string& text)
{
    return text.substr(0, text.find(':'));
}

/// What stands behind the first ':', nothing without one.
inline std::string portPart(const std::string& text)
{
    const size_t colon = text.find(':');
    return colon == std::string::npos ? std::string() : text.substr(colon + 1);
}

/// A new object, null when memory is exhausted.
template <typename Node> std::shared_ptr<Node> makeNode()
{
    try {
        return std::make_shared<Node>();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace NUXO

#endif
