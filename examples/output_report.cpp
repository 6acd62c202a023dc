// SPDX-License-Identifier: Apache-2.0
// output_report DESCRIPTOR SETTINGS KEY: what a camera service asks of the graph of the setting with this key before it
// starts: what feeds it, what runs together, what the frames show of the sensor, and which buffers each output needs.
#include <nuxo/nuxo.h>

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

using NUXO::GraphCameraUtil;
using NUXO::IGraphConfig;
using Tree = std::unique_ptr<IGraphConfig>;
using Graph = std::shared_ptr<const IGraphConfig>;

namespace {

// Says which question has no answer, and why.
bool succeeds(const std::string& question, int status)
{
    if (status != StatusOk) std::printf("%s: %s\n", question.c_str(), NUXO::statusName(status));
    return status == StatusOk;
}

Tree parse(const char* fileName)
{
    IGraphConfig* root = nullptr;
    NUXO::NUXOParser().parseNUXOXmlFile(fileName, &root);
    if (root == nullptr) std::printf("%s: nothing can be read\n", fileName);
    return Tree(root);
}

// Null when there is no such setting or when it cannot be built.
Graph build(const IGraphConfig& descriptor, const IGraphConfig& settings, const char* key)
{
    NUXO::GraphQueryManager manager;
    manager.setGraphDescriptor(&descriptor);
    manager.setGraphSettings(&settings);
    std::vector<IGraphConfig*> matches;
    if (!succeeds("query", manager.queryGraphs({{"key", key}}, matches, true))) return nullptr;

    IGraphConfig* root = nullptr; // to be freed also when construction fails halfway
    const bool isBuilt = succeeds("construction", manager.createGraph(matches.front(), &root));
    const Graph graph(root, [manager](IGraphConfig* built) mutable { manager.destroyGraph(built); });
    return isBuilt ? graph : nullptr;
}

void printSources(const IGraphConfig& graph)
{
    std::vector<IGraphConfig*> sources;
    succeeds("sources", GraphCameraUtil::getSourceNode(&graph, sources));
    for (const IGraphConfig* const source : sources) std::printf("%s\n", GraphCameraUtil::print(source).c_str());
    std::string type;
    if (succeeds("sensor type", GraphCameraUtil::sensorGetType(&graph, type)))
        std::printf("sensor type: %s\n", type.c_str());
}

// What runs together: the groups of one type with the same value of a key. False when none has one.
bool printContexts(const IGraphConfig& graph, uint32_t groupType, uint32_t key)
{
    std::map<int, std::string> members;
    NUXO::NodeIterator groups(&graph);
    while (const IGraphConfig* const group = groups.iterateByType(groupType)) {
        int value = 0;
        if (group->getValue(key, value) == StatusOk) members[value] += ' ' + group->getName();
    }
    for (const auto& [value, names] : members) {
        IGraphConfig* input = nullptr;
        std::printf("%s %d:%s\n", NUXO::ItemUID::key2str(key), value, names.c_str());
        if (succeeds("    input", GraphCameraUtil::getInputPort(key, value, &graph, &input, groupType)))
            std::printf("    input: %s\n", GraphCameraUtil::print(input).c_str());
    }
    return !members.empty();
}

void printSensorFrame(const Graph& graph)
{
    qv_lum_frame_params frame = {};
    if (!succeeds("sensor frame", NUXO::GraphLumUtil::getSensorFrameParams(frame, graph))) return;
    std::printf("sensor frame: %dx%d from %d,%d, scaled by %d/%d and %d/%d\n", frame.cropped_image_width,
                frame.cropped_image_height, frame.horizontal_crop_offset, frame.vertical_crop_offset,
                frame.horizontal_scaling_numerator, frame.horizontal_scaling_denominator,
                frame.vertical_scaling_numerator, frame.vertical_scaling_denominator);
}

// What the frames of a port look like and what their buffers must hold.
bool printFrames(const IGraphConfig& port)
{
    unsigned int enabled = 0, terminal = 0, width = 0, height = 0, fourcc = 0, stride = 0, bits = 0;
    const int status = GraphCameraUtil::portGetFormat(&port, enabled, terminal, width, height, fourcc, stride, bits);
    NUXOFormats::qv_format_t format;
    if (!succeeds("    frames", status)) return false;
    if (!succeeds("    format", NUXOFormats::getFormatByFourcc(fourcc, format))) return false;
    uint32_t offsets[3] = {}, sizes[3] = {}; // of the tables beside compressed planes
    const uint32_t bytes = NUXOFormats::calculateBufferSize(format, width, height, stride, offsets, sizes);
    std::printf("    %ux%u %s (fourcc 0x%x), %u bits per pixel, %zu planes\n    stride %u, buffer %u bytes\n", width,
                height, format.name.c_str(), fourcc, bits, format.planes.size(), stride, bytes);
    for (int i = 0; i < 3 && sizes[i] != 0; ++i)
        std::printf("    tile status %d: %u bytes at %u\n", i, sizes[i], offsets[i]);
    return true;
}

// The port that feeds a sink says what arrives there. Statistics have no frames.
bool printOutput(const IGraphConfig& sink)
{
    IGraphConfig* port = nullptr;
    unsigned int enabled = 0, terminal = 0;
    if (!succeeds(sink.getName(), GraphCameraUtil::portGetPeer(&sink, &port))) return false;
    if (!succeeds(sink.getName(), GraphCameraUtil::portGetInfo(port, enabled, terminal))) return false;
    const std::string content = GraphCameraUtil::portGetContentType(port);
    std::printf("%s: %s from %s, terminal 0x%x%s%s\n", sink.getName().c_str(), content.c_str(),
                GraphCameraUtil::print(port).c_str(), terminal, enabled == 0 ? ", disabled" : "",
                GraphCameraUtil::isEdgePort(port) ? ", edge" : "");
    return content != "pixel_data" || enabled == 0 || printFrames(*port);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4) return 2;
    NUXOFormats::initNUXOFormats();
    const Tree descriptor = parse(argv[1]);
    const Tree settings = parse(argv[2]);
    if (descriptor == nullptr || settings == nullptr) return 3;
    const Graph graph = build(*descriptor, *settings, argv[3]);
    if (graph == nullptr) return 1;

    printSources(*graph);
    for (const uint32_t groupType : {NUXO_KEY_PROGRAM_GROUP, NUXO_KEY_COMPUTE_BLOCK}) {
        // Older graphs know no execution contexts: there, streams run together.
        if (!printContexts(*graph, groupType, NUXO_KEY_EXEC_CTX_ID))
            printContexts(*graph, groupType, NUXO_KEY_STREAM_ID);
    }
    printSensorFrame(graph);

    std::vector<IGraphConfig*> sinks;
    bool isComplete = succeeds("outputs", GraphCameraUtil::graphGetSinksByName("", graph.get(), sinks));
    for (const IGraphConfig* const sink : sinks) isComplete = printOutput(*sink) && isComplete;
    return isComplete ? 0 : 1;
}
