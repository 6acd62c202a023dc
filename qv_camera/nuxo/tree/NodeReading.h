// SPDX-License-Identifier: Apache-2.0
// Internal: how questions about a graph read nodes through the interface that clients may implement too.
#ifndef NUXO_TREE_NODE_READING_H
#define NUXO_TREE_NODE_READING_H

#include <nuxo/NuxoStatus.h>
#include <nuxo/tree/IGraphConfig.h>
#include <nuxo/tree/KeyCache.h>
#include <nuxo/tree/NodeIterator.h>
#include <nuxo/tree/NuxoKeys.h>

#include <cstdint>
#include <new>
#include <string>

namespace NUXO {

/// A status, but throws std::bad_alloc for StatusNoMemory, so that what memory could not hold does not count as missing.
inline int32_t unlessExhausted(int32_t status)
{
    if (status == StatusNoMemory) throw std::bad_alloc();
    return status;
}

/// Reads a text attribute. Unlike IGraphConfig::getValue it lets std::bad_alloc out, so that a text which memory cannot
/// hold does not count as missing.
int32_t readText(const IGraphConfig& node, uint32_t key, std::string& text);
int32_t readText(const IGraphConfig& node, const ItemUID& path, std::string& text);

/// Whether there is an attribute of this kind, which is then in the output. Lets std::bad_alloc out, too.
bool fetch(const IGraphConfig& node, uint32_t key, std::string& text);
bool fetch(const IGraphConfig& node, uint32_t key, int& value);

/// The attribute, or @p fallback when @p node is null or lacks it. The text may throw std::bad_alloc.
std::string textOr(const IGraphConfig* node, uint32_t key, const char* fallback);
int integerOr(const IGraphConfig* node, uint32_t key, int fallback);

/// The node at the ':'-separated path, null when there is none. Lets std::bad_alloc out.
///
/// @param keys  where to look names up, null for the vocabulary itself
IGraphConfig* descendantAt(const IGraphConfig& node, const std::string& path, KeyCache* keys = nullptr);

/// What IGraphConfig::getName gives, but lets std::bad_alloc out.
std::string filedName(const IGraphConfig& node);

/// The same without its searches of siblings and vocabulary where the node is filed under its `name`, as in every built graph.
std::string fileNameOf(const IGraphConfig& node);

/// The `type` text of a kind of node as NodeIterator looks for it: a fresh one takes the key 0 for no type at all.
std::string typeText(uint32_t type);

/// The `name`, or else the name under which the parent files the node. May throw std::bad_alloc.
std::string nameOrFiledName(const IGraphConfig& node);

/// Calls @p visit for each child whose `type` is @p type, in order, until it returns false. The visitor must not add or
/// remove items of @p node. A null node, or a foreign one, is reported by NodeIterator.
template <typename Visit> void forEachOfType(const IGraphConfig* node, const std::string& type, Visit visit)
{
    NodeIterator children(node);
    while (IGraphConfig* const child = children.iterateNodes(NUXO_KEY_TYPE, type)) {
        if (!visit(*child)) return;
    }
}

} // namespace NUXO

#endif
