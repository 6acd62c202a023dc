// SPDX-License-Identifier: Apache-2.0
#include <nuxo/NuxoStatus.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/PathReader.h>
#include <nuxo/tree/TreeAccess.h>

#include <new>

namespace NUXO {

int32_t readText(const IGraphConfig& node, uint32_t key, std::string& text)
{
    const int32_t status = node.getValue(key, text);
    if (status == StatusNoMemory) throw std::bad_alloc();
    return status;
}

bool fetch(const IGraphConfig& node, uint32_t key, std::string& text)
{
    return readText(node, key, text) == StatusOk;
}

bool fetch(const IGraphConfig& node, uint32_t key, int& value)
{
    return node.getValue(key, value) == StatusOk;
}

std::string textOr(const IGraphConfig* node, uint32_t key, const char* fallback)
{
    std::string text;
    return node != nullptr && fetch(*node, key, text) ? text : fallback;
}

int integerOr(const IGraphConfig* node, uint32_t key, int fallback)
{
    int value = 0;
    return node != nullptr && fetch(*node, key, value) ? value : fallback;
}

IGraphConfig* descendantAt(const IGraphConfig& node, const std::string& path, KeyCache* keys)
{
    const GraphConfigNode* const own = asNode(&node);
    return own != nullptr ? followPath(*own, path, keys) : node.getDescendantByString(path);
}

std::string nameOrFiledName(const IGraphConfig& node)
{
    std::string name;
    return fetch(node, NUXO_KEY_NAME, name) ? name : node.getName();
}

} // namespace NUXO
