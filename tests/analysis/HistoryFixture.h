// SPDX-License-Identifier: Apache-2.0
// Small built graphs as text, and what the history traversal makes of them.
#ifndef NUXO_TESTS_ANALYSIS_HISTORY_FIXTURE_H
#define NUXO_TESTS_ANALYSIS_HISTORY_FIXTURE_H

#include "analysis/GraphUtilAccess.h"
#include "query/GraphFixture.h"

#include <qv_tools/qv_export.h>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace historytest {

using graphtest::at;
using graphtest::kDebug;
using graphtest::kError;
using graphtest::kWarning;
using NUXO::GraphUtil;
using Access = NUXO::GraphUtilAccess;
using Info = qv_isp_zmt_resolution_info;
using Texts = std::vector<std::string>;

/// A record by input size, output size and crops, each left, top, right, bottom.
inline Info info(int inWidth, int inHeight, int outWidth, int outHeight, qv_rectangle inCrop = {},
                 qv_rectangle outCrop = {})
{
    return {inWidth, inHeight, inCrop, outWidth, outHeight, outCrop};
}

/// A frame that nobody cropped or scaled yet.
inline Info frame(int width, int height)
{
    return info(width, height, width, height);
}

inline std::string text(const qv_rectangle& crop)
{
    return "(l: " + std::to_string(crop.left) + ", t: " + std::to_string(crop.top) +
           ", r: " + std::to_string(crop.right) + ", b: " + std::to_string(crop.bottom) + ")";
}

/// A record as log lines show it.
inline std::string text(const Info& record)
{
    return "(iw: " + std::to_string(record.input_width) + " ih: " + std::to_string(record.input_height) + " " +
           text(record.input_crop) + ",ow: " + std::to_string(record.output_width) +
           ", oh: " + std::to_string(record.output_height) + " " + text(record.output_crop);
}

inline std::string element(const std::string& kind, const std::string& name, const std::string& attributes = "",
                           const std::string& body = "")
{
    return "<" + kind + " name='" + name + "' " + attributes + ">" + body + "</" + kind + ">";
}

inline std::string size(int width, int height)
{
    return "width='" + std::to_string(width) + "' height='" + std::to_string(height) + "' ";
}

inline std::string in(const std::string& name, const std::string& attributes = "")
{
    return element("port", name, "direction='0' " + attributes);
}

inline std::string out(const std::string& name, const std::string& attributes = "")
{
    return element("port", name, "direction='1' " + attributes);
}

/// A kernel with the uuid 1000 + @p id.
inline std::string kernel(const std::string& name, int id, const std::string& attributes = "",
                          const std::string& body = "")
{
    return element("kernel", name,
                   "id='" + std::to_string(id) + "' pal_uuid='" + std::to_string(1000 + id) + "' " + attributes, body);
}

/// A kernel that states its sizes, `<input>` and `<output id='0'>` with these attributes.
inline std::string sized(const std::string& name, int id, const std::string& attributes, const std::string& input,
                         const std::string& output)
{
    return kernel(name, id, attributes, "<input " + input + "/><output id='0' " + output + "/>");
}

inline Texts splitAt(const std::string& joined, char separator)
{
    const size_t place = joined.find(separator);
    return {joined.substr(0, place), joined.substr(place + 1)};
}

/// Links written "source>destination", each element with two attributes.
inline std::string joints(const std::string& kind, const std::string& to, const Texts& links)
{
    std::string all;
    for (const std::string& link : links) {
        const Texts ends = splitAt(link, '>');
        all += "<" + kind + " source='" + ends[0] + "' " + to + "='" + ends[1] + "'/>";
    }
    return all;
}

inline std::string klinks(const Texts& links)
{
    return joints("klink", "destination", links);
}

inline std::string group(const std::string& name, int stream, const std::string& body,
                         const std::string& attributes = "", const std::string& kind = "compute_block")
{
    return element(kind, name, "stream_id='" + std::to_string(stream) + "' " + attributes, body);
}

/// A group with a kernel `k_NAME` between its ports `in` and `out`, and what @p body and @p links add.
inline std::string through(const std::string& name, int stream, const std::string& body = "", const Texts& links = {})
{
    Texts all = {"in>k_" + name + ":0", "k_" + name + ":0>out"};
    all.insert(all.end(), links.begin(), links.end());
    return group(name, stream, in("in") + out("out") + kernel("k_" + name, 0) + body + klinks(all));
}

inline std::string sink(const std::string& name, int stream)
{
    return element("sink", name, "stream_id='" + std::to_string(stream) + "'");
}

/// A buffer source of stream 0, whose history is its size.
inline std::string source(int width, int height, const std::string& name = "buffer_src0")
{
    return element("source", name, "stream_id='0'", out("port_0", size(width, height)));
}

/// Analyses graphs that each test writes out.
class HistoryTest : public graphtest::GraphTest {
protected:
    /// A graph with these nodes and connections "source>sink", which give both ends their `peer`.
    void load(const std::string& nodes, const Texts& connections)
    {
        mUtil = std::make_unique<GraphUtil>();
        mRoot = graphtest::descriptor(nodes + "<graph type='graph'>" + joints("connection", "sink", connections) +
                                      "</graph>");
        for (const std::string& connection : connections) {
            const Texts ends = splitAt(connection, '>');
            addPeer(ends[0], ends[1]);
            addPeer(ends[1], ends[0]);
        }
        clearLog();
    }

    /// A source of 1920x1080, which feeds the port `in` of the group `pg` of stream 1, and the sink `sink`, which takes
    /// its port `out`.
    void loadGroup(const std::string& body, const Texts& links, const Texts& connections = {},
                   const std::string& nodes = "")
    {
        Texts all = {"buffer_src0:port_0>pg:in", "pg:out>sink"};
        all.insert(all.end(), connections.begin(), connections.end());
        load(source(1920, 1080) + group("pg", 1, in("in") + out("out") + body + klinks(links), "pg_id='10'") +
                 sink("sink", 1) + nodes,
             all);
    }

    /// Analyses the graph. What is logged must make no difference, so another object does it first without a line.
    int init(NUXO::GdfVersion version = NUXO::GdfVersionKVA7)
    {
        GraphUtil silent;
        int status = 1;
        mLog.linesOfLevel(0, [&] { status = silent.init(NUXO_KEY_STREAM_ID, mRoot.get(), version); });
        clearLog();
        EXPECT_EQ(mUtil->init(NUXO_KEY_STREAM_ID, mRoot.get(), version), status);
        return status;
    }

    Access access() const { return Access(*mUtil); }
    Access::SubGraphInfo& subgraph(int id) const { return *access().subGraphs().at(id); }

    /// The inner node "group:name" of any subgraph.
    Access::ImagingNode& inner(const std::string& name) const
    {
        for (const auto& entry : access().subGraphs()) {
            const auto found = entry.second->imagingNodes.find(name);
            if (found != entry.second->imagingNodes.end()) return *found->second;
        }
        throw std::runtime_error("no inner node " + name);
    }

    const qv_isp_zmt_run_kernels& record(const std::string& name) const { return *inner(name).tevRunKernel; }
    /// The history that arrives at a kernel.
    std::string arriving(const std::string& name) const { return text(*record(name).resolution_history); }
    /// The history that a node hands to one of its children.
    std::string leaving(const std::string& name, const std::string& label) const
    {
        const auto& histories = inner(name).resHistories;
        const auto found = histories.find(label);
        return found == histories.end() ? "none" : text(found->second);
    }

    /// `enable` of all kernels as their records tell it, "name=enable" in order of their names.
    std::string states() const
    {
        std::string all;
        for (const auto& sg : access().subGraphs()) {
            for (const auto& entry : sg.second->imagingNodes) {
                if (entry.second->type != Access::KERNEL) continue;
                all += (all.empty() ? "" : " ") + entry.second->name + "=" +
                       std::to_string(entry.second->tevRunKernel->enable);
            }
        }
        return all;
    }

    /// The inner nodes through which no history passes, in order of their names.
    std::string disabled() const
    {
        std::string all;
        for (const auto& sg : access().subGraphs()) {
            for (const auto& entry : sg.second->imagingNodes) {
                if ((entry.second->flags & Access::DisabledNode) == 0) continue;
                all += (all.empty() ? "" : " ") + entry.first;
            }
        }
        return all;
    }

    /// The recorded lines from the last one that begins with @p first to the next that begins with @p last.
    Texts linesBetween(const std::string& first, const std::string& last) const
    {
        const Texts all = lines();
        const auto begins = [](const std::string& start) {
            return [start](const std::string& line) { return line.rfind(start, 0) == 0; };
        };
        const auto from = std::find_if(all.rbegin(), all.rend(), begins(first));
        if (from == all.rend()) return {};
        const auto to = std::find_if(from.base(), all.end(), begins(last));
        return {from.base() - 1, to == all.end() ? to : to + 1};
    }

    /// The recorded lines that begin with one of @p starts, in order.
    Texts linesLike(const Texts& starts) const
    {
        Texts found;
        for (const std::string& line : lines()) {
            const auto begins = [&line](const std::string& start) { return line.rfind(start, 0) == 0; };
            if (std::any_of(starts.begin(), starts.end(), begins)) found.push_back(line);
        }
        return found;
    }

    /// Whether a line "level start...part...end" was logged.
    ::testing::AssertionResult loggedLike(uint32_t level, const std::string& start, const std::string& part,
                                          const std::string& end = "") const
    {
        const std::string begin = std::to_string(level) + " " + start;
        for (const std::string& line : lines()) {
            const bool ends = line.size() >= end.size() && line.compare(line.size() - end.size(), end.size(), end) == 0;
            if (line.rfind(begin, 0) == 0 && ends && line.find(part, begin.size()) != std::string::npos) {
                return ::testing::AssertionSuccess();
            }
        }
        return logged(level, start + "..." + part + "..." + end);
    }

    graphtest::Tree mRoot;
    std::unique_ptr<GraphUtil> mUtil = std::make_unique<GraphUtil>();

private:
    void addPeer(const std::string& end, const std::string& other) const
    {
        auto* const node = graphtest::find(*mRoot, end);
        if (node == nullptr) return;
        static_cast<void>(node->addValue(NUXO_KEY_PEER, other)); // the first of several stays
    }
};

/// Inner nodes that a test joins itself.
class QV_LOCAL InnerNodeTest : public HistoryTest {
protected:
    Access::ImagingNode& node(const std::string& name, Access::ImagingNodeType type = Access::KERNEL)
    {
        mNodes.push_back(std::make_shared<Access::ImagingNode>());
        mNodes.back()->name = name;
        mNodes.back()->type = type;
        return *mNodes.back();
    }

    /// A link as a klink makes it.
    static void join(Access::ImagingNode& parent, Access::ImagingNode& child, const std::string& output = "0",
                     const std::string& input = "0")
    {
        parent.addChild(&child, output);
        child.addParent(&parent, input);
    }

private:
    std::vector<std::shared_ptr<Access::ImagingNode>> mNodes;
};

} // namespace historytest

#endif
