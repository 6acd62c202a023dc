// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_CAMERA_CONTEXT_FIXTURE_H
#define NUXO_TESTS_CAMERA_CONTEXT_FIXTURE_H

#include "camera/MockNode.h"
#include "query/GraphFixture.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace graphtest {

using NUXO::GraphCameraUtil;

using Lines = std::vector<std::string>;

/// Elements of a descriptor; attributes are written as in the file. A node of it stands below the root under its name,
/// names of its own behind the built-in ones in the order in which they first occur.
inline std::string element(const std::string& kind, const std::string& name, const std::string& attributes = "",
                           const std::string& body = "")
{
    return "<" + kind + " name='" + name + "' " + attributes + ">" + body + "</" + kind + ">";
}

/// A program group with integer attributes like "exec_ctx_id='1'".
inline std::string group(const std::string& name, const std::string& attributes, const std::string& body = "")
{
    return element("program_group", name, attributes, body);
}

inline std::string sink(const std::string& name, const std::string& attributes = "")
{
    return element("sink", name, attributes);
}

inline std::string port(const std::string& name, const std::string& attributes)
{
    return element("port", name, attributes);
}

inline std::string input(const std::string& name, const std::string& peer, const std::string& attributes = "")
{
    return port(name, "direction='0' peer='" + peer + "' " + attributes);
}

inline std::string output(const std::string& name, const std::string& peer, const std::string& attributes = "")
{
    return port(name, "direction='1' peer='" + peer + "' " + attributes);
}

/// A port of the library in a graph that is not.
class PortOfForeignGraph : public GraphConfigNode {
public:
    PortOfForeignGraph() { addValue(NUXO_KEY_TYPE, std::string("port")); }

    NUXO::IGraphConfig* getRoot() const override { return const_cast<MockNode*>(&mRoot); }

    /// Connects the port to @p peer, which stays the caller's.
    void connect(const std::string& name, NUXO::IGraphConfig* peer)
    {
        addValue(NUXO_KEY_PEER, name);
        mRoot.mDescendants[name] = peer;
    }

private:
    MockNode mRoot;
};

/// Questions to graphs that each test writes out.
class ContextTest : public GraphTest {
protected:
    void load(const std::string& nodes)
    {
        mRoot = descriptor(nodes);
        clearLog();
    }

    GraphConfigNode* node(const std::string& path) const { return &at(*mRoot, path); }

    /// Gives a node a value of another kind than its attribute @p key has by nature, or none.
    static void replace(GraphConfigNode& node, uint32_t key, int value)
    {
        node.removeDescendant(key);
        node.addValue(key, value);
    }
    static void replace(GraphConfigNode& node, uint32_t key, const std::string& value)
    {
        node.removeDescendant(key);
        node.addValue(key, value);
    }

    /// Files a port in @p node whose graph is a foreign one in which @p peer is at the other end.
    static PortOfForeignGraph& addPortOfForeignGraph(GraphConfigNode& node, const std::string& name, int direction,
                                                     NUXO::IGraphConfig* peer)
    {
        auto* const added = new PortOfForeignGraph;
        added->addValue(NUXO_KEY_NAME, name);
        added->addValue(NUXO_KEY_DIRECTION, direction);
        added->connect("far:" + name, peer);
        const uint32_t known = ItemUID::str2key(name);
        node.insertDescendant(added, known != NUXO_KEY_NA ? known : ItemUID::generateKey(name));
        return *added;
    }

    /// The nodes in order as paths from the root, joined by blanks.
    static std::string paths(const std::vector<IGraphConfig*>& nodes)
    {
        std::string all;
        for (const IGraphConfig* node : nodes) {
            all += (all.empty() ? "" : " ") + (node == nullptr ? "null" : path(*node));
        }
        return all;
    }

    /// The recorded lines without the warnings about nodes that have no type, such as the root that sinks belong to.
    Lines linesBesideTypeWarnings() const
    {
        Lines all = lines();
        const auto isTypeWarning = [](const std::string& line) { return line.rfind("32 Trying to find type", 0) == 0; };
        all.erase(std::remove_if(all.begin(), all.end(), isTypeWarning), all.end());
        return all;
    }

    Tree mRoot;

private:
    static std::string path(const IGraphConfig& node)
    {
        const IGraphConfig* const parent = node.getAncestor();
        if (parent == nullptr) return node.getName();
        return (parent->getAncestor() == nullptr ? "" : path(*parent) + ":") + node.getName();
    }
};

} // namespace graphtest

#endif
