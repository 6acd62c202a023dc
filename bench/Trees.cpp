// SPDX-License-Identifier: Apache-2.0
#include "Trees.h"

#include <stdexcept>

namespace bench {

namespace {

Tree checked(NUXO::IGraphConfig* root)
{
    if (root == nullptr) throw std::runtime_error("a generated graph file cannot be parsed");
    return Tree(root);
}

} // namespace

Tree parseFile(const std::string& path)
{
    NUXO::NUXOParser parser;
    NUXO::IGraphConfig* root = nullptr;
    parser.parseNUXOXmlFile(path.c_str(), &root);
    return checked(root);
}

Tree parseText(std::string& text)
{
    NUXO::NUXOParser parser;
    NUXO::IGraphConfig* root = nullptr;
    parser.parseNUXOXmlData(text.data(), text.size(), &root);
    return checked(root);
}

Tree buildGraph(NUXO::GraphQueryManager& manager, NUXO::IGraphConfig& setting)
{
    NUXO::IGraphConfig* root = nullptr;
    const int status = manager.createGraph(&setting, &root);
    Tree graph(root);
    if (status != StatusOk) throw std::runtime_error("a graph cannot be built");
    return graph;
}

} // namespace bench
