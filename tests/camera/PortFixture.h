// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_CAMERA_PORT_FIXTURE_H
#define NUXO_TESTS_CAMERA_PORT_FIXTURE_H

#include "query/GraphFixture.h"

#include <string>
#include <utility>
#include <vector>

namespace graphtest {

using NUXO::GraphCameraUtil;

/// Limits of integers as graph files write them.
constexpr const char* kLargest = "2147483647";
constexpr const char* kSmallest = "-2147483648";

/// Graphs around one port, `pg:out`, and what asking about it logs.
class PortTest : public GraphTest {
protected:
    void load(const std::string& nodes)
    {
        mRoot = descriptor(nodes);
        clearLog();
    }

    /// The program group `pg` with its port `out`, connected to the port `in` of the program group `next`.
    void loadPair(const std::string& port, const std::string& peer = "", const std::string& group = "")
    {
        load(portOf("pg", "out", port + " peer=\"next:in\"", group) + portOf("next", "in", peer));
    }

    /// A graph of which `pg:out` with these attributes is all.
    void loadPort(const std::string& port, const std::string& group = "") { load(portOf("pg", "out", port, group)); }

    static std::string portOf(const std::string& group, const std::string& port, const std::string& portAttributes,
                              const std::string& groupAttributes = "")
    {
        return "<program_group name=\"" + group + "\" " + groupAttributes + "><port name=\"" + port + "\" " +
               portAttributes + "/></program_group>";
    }

    GraphConfigNode* node(const std::string& path) const { return &at(*mRoot, path); }
    GraphConfigNode* out() const { return node("pg:out"); }

    /// The information lines of @p action; those with another tag start with that. No line stays in the log.
    template <class Action> std::vector<std::string> informed(Action&& action)
    {
        std::vector<std::string> all;
        for (const LogLine& line : mLog.linesOfLevel(1, std::forward<Action>(action))) {
            all.push_back(line.tag == "NUXO[XOS]" ? line.message : line.tag + "/" + line.message);
        }
        clearLog();
        return all;
    }

    Tree mRoot;
};

} // namespace graphtest

#endif
