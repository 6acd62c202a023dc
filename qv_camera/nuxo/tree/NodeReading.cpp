// SPDX-License-Identifier: Apache-2.0
#include <nuxo/NuxoStatus.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/PathReader.h>
#include <nuxo/tree/TreeAccess.h>

namespace NUXO {

int32_t readText(const IGraphConfig& node, uint32_t key, std::string& text)
{
    return unlessExhausted(node.getValue(key, text));
}

int32_t readText(const IGraphConfig& node, const ItemUID& path, std::string& text)
{
    return unlessExhausted(node.getValue(path, text));
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
    if (node == nullptr || !fetch(*node, key, text)) text = fallback;
    return text;
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

std::string typeText(uint32_t type)
{
    return type == NUXO_KEY_NA ? "" : ItemUID::key2str(type);
}

std::string filedName(const IGraphConfig& node)
{
    const GraphConfigNode* const own = asNode(&node);
    return own != nullptr ? nameOf(*own) : node.getName();
}

std::string fileNameOf(const IGraphConfig& node)
{
    std::string name;
    const IGraphConfig* const parent = node.getAncestor();
    const bool isFiledByName =
        parent != nullptr && fetch(node, NUXO_KEY_NAME, name) && parent->getDescendant(ItemUID::str2key(name)) == &node;
    return isFiledByName ? name : filedName(node);
}

std::string nameOrFiledName(const IGraphConfig& node)
{
    std::string name;
    if (!fetch(node, NUXO_KEY_NAME, name)) name = filedName(node);
    return name;
}

} // namespace NUXO
