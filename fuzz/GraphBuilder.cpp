// SPDX-License-Identifier: Apache-2.0
#include "GraphBuilder.h"

#include "support/Fuzzing.h"

#include <nuxo/nuxo.h>

#include <algorithm>
#include <climits>
#include <map>

namespace fuzzing {

namespace {

using NUXO::GraphConfigItem;
using NUXO::GraphConfigNode;
using NUXO::GraphConfigStrAttribute;
using NUXO::ItemUID;

constexpr size_t kMostGraphNodes = 32;
constexpr size_t kMostInstructions = 256;

// Some names are too long for what a text holds without allocating.
constexpr const char* kNodeNames[] = {"isp",
                                      "post",
                                      "in",
                                      "out",
                                      "second_in",
                                      "second_out",
                                      "front_camera_source_port",
                                      "video_sink",
                                      "white_balance_correction",
                                      "gamma"};
constexpr uint32_t kFirstNodeKey = 1000;

// The names above come first.
constexpr uint32_t kNames[] = {kFirstNodeKey,     kFirstNodeKey + 1,  kFirstNodeKey + 2, kFirstNodeKey + 3,
                               kFirstNodeKey + 4, kFirstNodeKey + 5,  kFirstNodeKey + 6, kFirstNodeKey + 7,
                               kFirstNodeKey + 8, kFirstNodeKey + 9,  NUXO_KEY_SENSOR,   NUXO_KEY_PIXEL_ARRAY,
                               NUXO_KEY_BINNER,   NUXO_KEY_SCALER,    NUXO_KEY_OUTPUT,   NUXO_KEY_GRAPHS,
                               NUXO_KEY_GRAPH,    NUXO_KEY_NODES,     NUXO_KEY_OPTIONS,  NUXO_KEY_APPLY,
                               NUXO_KEY_PORT,     NUXO_KEY_SOURCE,    NUXO_KEY_SINK,     NUXO_KEY_NA,
                               NUXO_KEY_KERNEL,   NUXO_KEY_CONNECTION};

constexpr const char* kKinds[] = {"port",  "program_group", "compute_block", "source", "hw",
                                  "sink",  "kernel",        "demux",         "mux",    "split",
                                  "apply", "graph",         "sensor",        "",       "kind_that_nobody_knows"};

constexpr uint32_t kNodeTypes[] = {
    NUXO_KEY_PROGRAM_GROUP,    NUXO_KEY_COMPUTE_BLOCK, NUXO_KEY_HW, NUXO_KEY_SOURCE, NUXO_KEY_PORT,
    NUXO_KEY_GRAPH_DESCRIPTOR, kFirstNodeKey,          3333,        NUXO_KEY_NA};

constexpr uint32_t kIntegerKeys[] = {
    NUXO_KEY_ID,        NUXO_KEY_DIRECTION,    NUXO_KEY_ENABLED,    NUXO_KEY_PRIVATE,      NUXO_KEY_EXEC_CTX_ID,
    NUXO_KEY_STREAM_ID, NUXO_KEY_TUNING_MODE,  NUXO_KEY_PG_ID,      NUXO_KEY_WIDTH,        NUXO_KEY_HEIGHT,
    NUXO_KEY_LEFT,      NUXO_KEY_TOP,          NUXO_KEY_RIGHT,      NUXO_KEY_BOTTOM,       NUXO_KEY_BPL,
    NUXO_KEY_H_FACTOR,  NUXO_KEY_V_FACTOR,     NUXO_KEY_NUM_FACTOR, NUXO_KEY_DENOM_FACTOR, NUXO_KEY_PAL_UUID,
    NUXO_KEY_RCB,       NUXO_KEY_BRANCH_POINT, NUXO_KEY_SINK_PORT,  NUXO_KEY_ACTIVE_INPUT, NUXO_KEY_ACTIVE_OUTPUT};

constexpr uint32_t kTextKeys[] = {NUXO_KEY_NAME,         NUXO_KEY_TYPE,     NUXO_KEY_PEER,       NUXO_KEY_FORMAT,
                                  NUXO_KEY_CONTENT_TYPE, NUXO_KEY_METADATA, NUXO_KEY_SIMULATION, NUXO_KEY_SUBSYSTEM,
                                  NUXO_KEY_SENSOR_TYPE,  NUXO_KEY_VERSION,  NUXO_KEY_SOURCE,     NUXO_KEY_SINK,
                                  NUXO_KEY_TARGET,       NUXO_KEY_VALUE};

constexpr int kIntegers[] = {0,    1,    2,   3,   -1,    100,   640,     480,     1920, 1080, 4096,
                             4208, 3120, 255, 256, 65535, 65536, INT_MAX, INT_MIN, 7,    -7,   1234567};

constexpr const char* kWords[] = {"", // nothing
                                  "NV12",
                                  "YUV420_8_SP",
                                  "GRBG_10",
                                  "GRBG_99",
                                  "P010",
                                  "CSYI",
                                  "unknown format with a long name",
                                  "ab",
                                  "\xc3\xa9tat",
                                  "true",
                                  "gpu",
                                  "pixel_data",
                                  "statistics",
                                  "KVA6.2",
                                  "KVA7.1",
                                  "port",
                                  "sink",
                                  "program_group",
                                  "kernel",
                                  "video",
                                  "1,2,3",
                                  "7,,x,-5,99999999999999999999,",
                                  ",",
                                  "42",
                                  "-3",
                                  "0x1F2",
                                  "0",
                                  "18446744073709551615",
                                  "00340282366920938463463374607431768211455",
                                  "0xFEDCBA98765432100123456789abcdefg",
                                  "sensor:pixel_array:output"};

std::string wordOf(ByteReader& bytes)
{
    return bytes.from(kWords);
}

// From the root, or from a node that holds others for descriptors.
std::string pathTo(const GraphConfigNode* node, bool fromNodes)
{
    std::string path;
    for (; node->getAncestor() != nullptr; node = dynamic_cast<const GraphConfigNode*>(node->getAncestor())) {
        if (fromNodes && node->getUid() == NUXO_KEY_NODES) break;
        path = path.empty() ? node->getName() : node->getName() + ":" + path;
    }
    return path;
}

// Takes ownership; there is memory for it.
void file(GraphConfigNode& node, std::unique_ptr<GraphConfigItem> item, uint32_t key)
{
    require(node.insertDescendant(item.get(), key) == StatusOk, "an item can be filed");
    static_cast<void>(item.release()); // the node's now
}

// What is there already stays as it is.
template <typename Value> void add(GraphConfigNode& node, uint32_t key, const Value& value)
{
    const bool isThere = node.hasItem(key);
    require(node.addValue(key, value) == (isThere ? StatusDuplicate : StatusOk), "an attribute is added once");
}

} // namespace

void addNodeNames()
{
    std::map<std::string, uint32_t> names;
    uint32_t key = kFirstNodeKey;
    for (const char* const name : kNodeNames) names[name] = key++;
    ItemUID::addCustomKeyMap(names);
}

int ByteReader::integer()
{
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8U | byte();
    return static_cast<int>(value);
}

std::string ByteReader::text()
{
    std::string text;
    for (size_t length = below(128); length > 0 && !atEnd(); --length) text.push_back(static_cast<char>(byte()));
    return text;
}

Request readRequest(ByteReader& bytes)
{
    const uint32_t key = bytes.from(kIntegerKeys);
    const int value = bytes.from(kIntegers);
    const uint32_t nodeType = bytes.from(kNodeTypes);
    return {key, value, nodeType, wordOf(bytes)};
}

GraphBuilder::GraphBuilder(ByteReader& bytes)
    : mBytes(bytes), mRoot(std::make_unique<GraphConfigNode>()), mNodes({mRoot.get()}), mCurrent(mRoot.get())
{
}

std::unique_ptr<GraphConfigNode> GraphBuilder::build()
{
    constexpr Instruction instructions[] = {
        &GraphBuilder::openNode,     &GraphBuilder::closeNode,      &GraphBuilder::addInteger,
        &GraphBuilder::addText,      &GraphBuilder::addPath,        &GraphBuilder::addPathWithEnd,
        &GraphBuilder::addFreeText,  &GraphBuilder::addFreeInteger, &GraphBuilder::goToNode,
        &GraphBuilder::openPort,     &GraphBuilder::addImage,       &GraphBuilder::addWrongKinds,
        &GraphBuilder::addAnother,   &GraphBuilder::addOptions,     &GraphBuilder::addOverride,
        &GraphBuilder::addConnection};
    constexpr size_t count = sizeof instructions / sizeof *instructions;
    for (size_t i = 0; i < kMostInstructions && !mBytes.atEnd(); ++i) {
        const uint8_t letter = mBytes.byte();
        if (letter <= ' ') continue;
        (this->*instructions[static_cast<uint8_t>(letter - 'a') % count])();
    }
    resolvePaths();
    return std::move(mRoot);
}

// Null when there are enough nodes.
GraphConfigNode* GraphBuilder::open(GraphConfigNode& parent, const char* type, uint32_t key)
{
    if (mNodes.size() == kMostGraphNodes) return nullptr;
    auto node = std::make_unique<GraphConfigNode>();
    mNodes.push_back(node.get());
    file(parent, std::move(node), key);
    if (*type != '\0') add(*mNodes.back(), NUXO_KEY_TYPE, std::string(type));
    return mNodes.back();
}

void GraphBuilder::openNode()
{
    constexpr uint8_t lowerCase = 0x20;
    const char* const type = mBytes.from(kKinds);
    const uint8_t letter = mBytes.byte();
    const uint32_t key = kNames[static_cast<uint8_t>((letter | lowerCase) - 'a') % (sizeof kNames / sizeof *kNames)];
    GraphConfigNode* const node = open(*mCurrent, type, key);
    if (node == nullptr) return;
    mCurrent = node;
    if ((letter & lowerCase) != 0) add(*node, NUXO_KEY_NAME, std::string(ItemUID::key2str(key)));
}

void GraphBuilder::closeNode()
{
    if (mCurrent != mRoot.get()) mCurrent = dynamic_cast<GraphConfigNode*>(mCurrent->getAncestor());
}

void GraphBuilder::addInteger()
{
    const uint32_t key = mBytes.from(kIntegerKeys);
    add(*mCurrent, key, mBytes.from(kIntegers));
}

void GraphBuilder::addText()
{
    const uint32_t key = mBytes.from(kTextKeys);
    add(*mCurrent, key, wordOf(mBytes));
}

void GraphBuilder::addPath()
{
    const uint32_t key = mBytes.from(kTextKeys);
    setPath(*mCurrent, key, mBytes.below(kMostGraphNodes), "");
}

void GraphBuilder::addPathWithEnd()
{
    const uint32_t key = mBytes.from(kTextKeys);
    const size_t target = mBytes.below(kMostGraphNodes);
    setPath(*mCurrent, key, target, std::string(":") + ItemUID::key2str(mBytes.from(kIntegerKeys)));
}

void GraphBuilder::addFreeText()
{
    const uint32_t key = mBytes.from(kTextKeys);
    add(*mCurrent, key, mBytes.text());
}

void GraphBuilder::addFreeInteger()
{
    const uint32_t key = mBytes.from(kIntegerKeys);
    add(*mCurrent, key, mBytes.integer());
}

void GraphBuilder::goToNode()
{
    mCurrent = mNodes[mBytes.below(kMostGraphNodes) % mNodes.size()];
}

void GraphBuilder::openPort()
{
    const uint32_t key = mBytes.from(kNames);
    const int direction = mBytes.from(kIntegers);
    const int id = mBytes.from(kIntegers);
    const size_t peer = mBytes.below(kMostGraphNodes);
    GraphConfigNode* const port = open(*mCurrent, "port", key);
    if (port == nullptr) return;
    mCurrent = port;
    add(*port, NUXO_KEY_NAME, std::string(ItemUID::key2str(key)));
    add(*port, NUXO_KEY_DIRECTION, direction);
    add(*port, NUXO_KEY_ID, id);
    setPath(*port, NUXO_KEY_PEER, peer, "");
}

void GraphBuilder::addImage()
{
    for (const uint32_t key : {NUXO_KEY_WIDTH, NUXO_KEY_HEIGHT, NUXO_KEY_LEFT, NUXO_KEY_TOP}) {
        add(*mCurrent, key, mBytes.from(kIntegers));
    }
    add(*mCurrent, NUXO_KEY_FORMAT, wordOf(mBytes));
}

void GraphBuilder::addWrongKinds()
{
    const int value = mBytes.from(kIntegers);
    add(*mCurrent, mBytes.from(kTextKeys), value);
    add(*mCurrent, mBytes.from(kIntegerKeys), std::to_string(value));
}

void GraphBuilder::addAnother()
{
    const uint32_t textKey = mBytes.from(kTextKeys);
    const int value = mBytes.from(kIntegers);
    file(*mCurrent, std::make_unique<GraphConfigStrAttribute>(wordOf(mBytes)), textKey);
    file(*mCurrent, std::make_unique<NUXO::GraphConfigIntAttribute>(value), NUXO_KEY_ID);
}

void GraphBuilder::addOptions()
{
    const std::string word = wordOf(mBytes);
    const uint32_t name = mBytes.from(kNames);
    const uint32_t key = mBytes.from(kIntegerKeys);
    const int value = mBytes.from(kIntegers);
    const std::string format = wordOf(mBytes);
    GraphConfigNode* const options = open(*mCurrent, "options", NUXO_KEY_OPTIONS);
    if (options == nullptr) return;
    add(*options, NUXO_KEY_ATTRIBUTE, static_cast<int>(NUXO_KEY_FORMAT));
    GraphConfigNode* const option = open(*options, "", NUXO_KEY_VALUE);
    if (option == nullptr) return;
    add(*option, NUXO_KEY_VALUE, word);
    if (format.empty()) return;
    GraphConfigNode* const apply = open(*option, "apply", NUXO_KEY_APPLY);
    GraphConfigNode* const change = apply == nullptr ? nullptr : open(*apply, "", name);
    if (change == nullptr) return;
    add(*change, key, value);
    add(*change, NUXO_KEY_FORMAT, format);
    mCurrent = change; // where more may be added
}

void GraphBuilder::addOverride()
{
    const size_t target = mBytes.below(kMostGraphNodes);
    const uint32_t key = mBytes.below(2) == 0 ? mBytes.from(kIntegerKeys) : mBytes.from(kTextKeys);
    const std::string word = wordOf(mBytes);
    GraphConfigNode* const apply = open(*mCurrent, "apply", NUXO_KEY_APPLY);
    if (apply == nullptr) return;
    setPath(*apply, NUXO_KEY_TARGET, target, std::string(":") + ItemUID::key2str(key), true);
    add(*apply, NUXO_KEY_VALUE, word);
}

void GraphBuilder::addConnection()
{
    const size_t source = mBytes.below(kMostGraphNodes);
    const size_t sink = mBytes.below(kMostGraphNodes);
    GraphConfigNode* const connection = open(*mCurrent, "connection", NUXO_KEY_CONNECTION);
    if (connection == nullptr) return;
    setPath(*connection, NUXO_KEY_SOURCE, source, "", true);
    setPath(*connection, NUXO_KEY_SINK, sink, "", true);
}

void GraphBuilder::setPath(GraphConfigNode& node, uint32_t key, size_t target, const std::string& end, bool fromNodes)
{
    if (node.hasItem(key)) return;
    auto attribute = std::make_unique<GraphConfigStrAttribute>();
    mPaths.push_back({attribute.get(), target, end, fromNodes});
    file(node, std::move(attribute), key);
}

void GraphBuilder::resolvePaths()
{
    for (const OpenPath& path : mPaths) {
        path.attribute->value = pathTo(mNodes[path.target % mNodes.size()], path.fromNodes) + path.end;
    }
}

} // namespace fuzzing
