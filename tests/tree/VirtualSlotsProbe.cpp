// SPDX-License-Identifier: Apache-2.0
// Makes the compiler lay out the tables of virtual functions of the public tree classes.
#include <nuxo/tree/GraphConfigNode.h>

struct ItemProbe : NUXO::GraphConfigItem {};
struct NodeProbe : NUXO::GraphConfigNode {};

NUXO::GraphConfigItem* makeItem();
NUXO::IGraphConfig* makeNode();

NUXO::GraphConfigItem* makeItem()
{
    return new ItemProbe;
}

NUXO::IGraphConfig* makeNode()
{
    return new NodeProbe;
}
