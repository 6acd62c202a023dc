// SPDX-License-Identifier: Apache-2.0
// Graphs with many elements of one kind, each with frames of 640 x 480 from memory.
#ifndef NUXO_TESTS_ANALYSIS_LARGE_GRAPHS_H
#define NUXO_TESTS_ANALYSIS_LARGE_GRAPHS_H

#include "analysis/AnalysisFixture.h"

#include <string>

namespace graphtest {

/// A name with a number behind it.
inline std::string numbered(const std::string& name, int number)
{
    return name + std::to_string(number);
}

/// What @p make gives for 0, 1, ... up to and without @p count, joined.
template <typename Make> std::string repeat(int count, Make make)
{
    std::string all;
    for (int i = 0; i < count; ++i) all += make(i);
    return all;
}

/// The end of a link at a kernel or routing node.
inline std::string end(const std::string& name, int number, int port = 0)
{
    return numbered(name, number) + ":" + std::to_string(port);
}

/// Kernels k0, k1, ... with their numbers as uuids.
inline std::string numberedKernels(int count)
{
    return repeat(count, [](int i) { return kernel(numbered("k", i), i); });
}

/// buffer_src0 -> pg (in ... out) -> video in stream 1; @p body is what stands between.
inline std::string groupOf(const std::string& body, const std::string& kind = "program_group")
{
    return bufferSource("pg:in") +
           element(kind, "pg", "stream_id='1'", input("in", "buffer_src0:port_0") + output("out", "video") + body) +
           sink("video", "stream_id='1' peer='pg:out'") +
           graphOf(connection("buffer_src0:port_0", "pg:in") + connection("pg:out", "video"));
}

/// Kernels that nothing feeds, all before a chain of as many splits.
inline std::string looseKernels(int count)
{
    return groupOf(numberedKernels(count) + repeat(count, [](int i) { return element("split", numbered("s", i)); }) +
                       klink("in", "s0:0") + repeat(count, [](int i) { return klink(end("k", i), "s0:0"); }) +
                       repeat(count - 1, [](int i) { return klink(end("s", i), end("s", i + 1)); }) +
                       klink(end("s", count - 1), "out"),
                   "compute_block");
}

/// A kernel of so many outputs, no one of which is called as its links call it, with a kernel behind each.
inline std::string wideKernel(int count)
{
    const std::string size = "width='640' height='480'";
    const std::string outputs =
        repeat(count, [&size](int i) { return "<output id='" + std::to_string(i) + "' " + size + "/>"; });
    return groupOf(kernel("wide", 100000, "rcb='1'", "<input " + size + "/>" + outputs) + numberedKernels(count) +
                   klink("in", "wide:0") +
                   repeat(count, [](int i) { return klink(numbered("wide:x", i), end("k", i)); }) +
                   klink("k0:0", "out"));
}

/// Kernels side by side, all of which feed one.
inline std::string fanIn(int count)
{
    return groupOf(numberedKernels(count) + kernel("last", 100000) +
                   repeat(count, [](int i) { return klink("in", end("k", i)); }) +
                   repeat(count, [](int i) { return klink(end("k", i), numbered("last:", i)); }) +
                   klink("last:0", "out"));
}

/// A group with an input port for each of many nodes of another subgraph, and one kernel that takes all.
inline std::string inputPorts(int count)
{
    const auto sourcePort = [](int i) {
        return output(numbered("port_", i), numbered("h", i) + ":i", "width='640' height='480'");
    };
    const auto block = [](int i) {
        const std::string number = std::to_string(i);
        return element("hw", "h" + number, "",
                       input("i", "buffer_src0:port_" + number) +
                           output("o", "pg:i" + number, "width='640' height='480'"));
    };
    const auto groupPort = [](int i) { return input(numbered("i", i), numbered("h", i) + ":o"); };
    const auto connections = [](int i) {
        const std::string number = std::to_string(i);
        return connection("buffer_src0:port_" + number, "h" + number + ":i") +
               connection("h" + number + ":o", "pg:i" + number);
    };
    return element("source", "buffer_src0", "", repeat(count, sourcePort)) + repeat(count, block) +
           group("pg", "stream_id='1'",
                 repeat(count, groupPort) + output("out", "video") + kernel("k", 11) +
                     repeat(count, [](int i) { return klink(numbered("i", i), numbered("k:", i)); }) +
                     klink("k:0", "out")) +
           sink("video", "stream_id='1' peer='pg:out'") +
           graphOf(repeat(count, connections) + connection("pg:out", "video"));
}

/// A chain of groups in the subgraph of the source, each with a port that leads out of it.
inline std::string groupsBehindTheSource(int count)
{
    const auto stage = [count](int i) {
        const bool isLast = i + 1 == count;
        return group(numbered("p", i), "stream_id='1'",
                     input("in", i == 0 ? "buffer_src0:port_0" : numbered("p", i - 1) + ":next") +
                         output("out", numbered("video", i)) +
                         (isLast ? "" : output("next", numbered("p", i + 1) + ":in")));
    };
    const auto end = [](int i) {
        return sink(numbered("video", i), "stream_id='1' peer='" + numbered("p", i) + ":out'");
    };
    const auto connections = [](int i) {
        return connection(i == 0 ? "buffer_src0:port_0" : numbered("p", i - 1) + ":next", numbered("p", i) + ":in") +
               connection(numbered("p", i) + ":out", numbered("video", i));
    };
    return bufferSource("p0:in", "stream_id='1'") + repeat(count, stage) + repeat(count, end) +
           graphOf(repeat(count, connections));
}

/// A split before ports all of which are off.
inline std::string splitToDisabledPorts(int count)
{
    return groupOf(repeat(count, [](int i) { return port(numbered("o", i), "direction='1' enabled='0'"); }) +
                   element("split", "s") + klink("in", "s:0") +
                   repeat(count, [](int i) { return klink(numbered("s:", i), numbered("o", i)); }));
}

/// Sinks of one stream each, behind one port of a hardware block with several.
inline std::string sinksWithoutGroups(int count)
{
    return bufferSource("csi:in") + element("hw", "csi", "", input("in", "buffer_src0:port_0") + output("out", "far")) +
           repeat(count, [](int i) { return sink(numbered("video", i), "stream_id='" + std::to_string(i) + "'"); }) +
           graphOf(connection("buffer_src0:port_0", "csi:in") +
                   repeat(count, [](int i) { return connection("csi:out", numbered("video", i)); }));
}

/// Groups of one kernel each, which all feed one group of stream 9; @p streamOf tells their streams. All ports of it
/// lead to one kernel, or with @p isKernelEach to a kernel each.
template <typename StreamOf> std::string groupsIntoOne(int count, StreamOf streamOf, bool isKernelEach)
{
    const auto feeder = [&streamOf](int i) {
        return group(numbered("g", i), "stream_id='" + std::to_string(streamOf(i)) + "'",
                     input("in", "buffer_src0:port_0") + output("out", numbered("pg:i", i)) + kernel("k", i) +
                         klink("in", "k:0") + klink("k:0", "out"));
    };
    const auto groupPort = [](int i) { return input(numbered("i", i), numbered("g", i) + ":out"); };
    const auto link = [isKernelEach](int i) {
        return klink(numbered("i", i), isKernelEach ? end("k", i) : numbered("k0:", i));
    };
    const auto connections = [](int i) {
        return connection("buffer_src0:port_0", numbered("g", i) + ":in") +
               connection(numbered("g", i) + ":out", numbered("pg:i", i));
    };
    return bufferSource("g0:in") + repeat(count, feeder) +
           group("pg", "stream_id='9'",
                 output("out", "video") + numberedKernels(isKernelEach ? count : 1) + repeat(count, groupPort) +
                     repeat(count, link) + klink("k0:0", "out")) +
           sink("video", "stream_id='9' peer='pg:out'") +
           graphOf(repeat(count, connections) + connection("pg:out", "video"));
}

} // namespace graphtest

#endif
