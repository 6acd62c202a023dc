// SPDX-License-Identifier: Apache-2.0
#include "KernelGraphBuilder.h"

#include "support/Fuzzing.h"
#include "support/PortFacts.h"

#include <nuxo/nuxo.h>

#include <climits>
#include <map>

namespace fuzzing {

namespace {

using NUXO::GraphConfigItem;
using NUXO::GraphConfigNode;
using NUXO::ItemUID;

constexpr size_t kMostBuiltNodes = 160;
constexpr size_t kMostSteps = 200;

// Far from the keys of parsed names, which follow the greatest key there is.
constexpr uint32_t kFirstName = 1200;
constexpr size_t kNumbered = 16; // names of a kind: k0 to k15

constexpr const char* kNumberedKinds[] = {"g", "k", "r", "p", "s"};
constexpr const char* kOtherNames[] = {"port_0", "stream2mmio", "zmt_pixelformatter", "buffer_src1", "camera", "full"};

constexpr const char* kVersions[] = {"KVA6.2", "KVA7.0", "KVA5.1", "", "KVA5 and KVA6", "KVA8"};

constexpr int kIds[] = {1, 2, 3, 0, -1, 4, 7, INT_MAX, INT_MIN};

struct Size {
    int width;
    int height;
};
constexpr size_t kNoSize = 0;
constexpr Size kSizes[] = {{0, 0},       {1920, 1080}, {1280, 720},        {640, 480}, {960, 540}, {0, 1080},
                           {4208, 3120}, {1, 1},       {INT_MAX, INT_MAX}, {-5, 7},    {640, 0},   {65536, 65537}};

constexpr int kCrops[] = {0, 64, 36, 1, -1, 2000, INT_MAX, INT_MIN};

constexpr int kValues[] = {0, 1, 2, 3, -1, 4, 5, 7, 100, 37235, 65536, INT_MAX, INT_MIN};

constexpr uint32_t kKeys[] = {NUXO_KEY_ENABLED,      NUXO_KEY_PRIVATE,       NUXO_KEY_ID,
                              NUXO_KEY_PAL_UUID,     NUXO_KEY_RCB,           NUXO_KEY_STREAM_ID,
                              NUXO_KEY_EXEC_CTX_ID,  NUXO_KEY_PG_ID,         NUXO_KEY_TUNING_MODE,
                              NUXO_KEY_BRANCH_POINT, NUXO_KEY_RESTORE_POINT, NUXO_KEY_SINK_PORT,
                              NUXO_KEY_ACTIVE_INPUT, NUXO_KEY_ACTIVE_OUTPUT, NUXO_KEY_WIDTH,
                              NUXO_KEY_HEIGHT,       NUXO_KEY_DIRECTION,     NUXO_KEY_DVS,
                              NUXO_KEY_BPP};

constexpr uint32_t kTexts[] = {NUXO_KEY_METADATA, NUXO_KEY_SOURCE,   NUXO_KEY_PEER,  NUXO_KEY_CONTENT_TYPE,
                               NUXO_KEY_NAME,     NUXO_KEY_TYPE,     NUXO_KEY_SINK,  NUXO_KEY_DESTINATION,
                               NUXO_KEY_FORMAT,   NUXO_KEY_DOL_MODE, NUXO_KEY_VALUE, NUXO_KEY_CONVERSION_GAIN,
                               NUXO_KEY_CMC_TAG,  NUXO_KEY_RBM,      NUXO_KEY_ID};

constexpr const char* kTextValues[] = {"1,2,3,4",  "7,,x,-5,99999999999999999999,6",
                                       "",         "g0:p0",
                                       "g1:p1",    "k0:0",
                                       "k1:1",     "p0",
                                       "p1",       "pixel_data",
                                       "ae_stats", "port",
                                       "kernel",   "source",
                                       "sink",     "klink",
                                       "1.5",      "1e999",
                                       "NV12",     "g0",
                                       "k0",       ":",
                                       "graph"};

// Takes ownership; there is memory for it.
void file(GraphConfigNode& node, std::unique_ptr<GraphConfigItem> item, uint32_t key)
{
    require(node.insertDescendant(item.get(), key) == StatusOk, "an item can be filed");
    static_cast<void>(item.release()); // the node's now
}

// Writes over what is there, if it is of this kind.
template <typename Value> void set(GraphConfigNode& node, uint32_t key, const Value& value)
{
    if (node.addValue(key, value) == StatusOk) return;
    if (dynamic_cast<GraphConfigNode*>(node.getDescendant(key)) != nullptr) return;
    static_cast<void>(node.setValue(key, value));
}

std::string nameOf(const GraphConfigNode& node)
{
    return textOf(&node, NUXO_KEY_NAME).value_or(node.getName());
}

std::string pathOf(const GraphConfigNode& node)
{
    const auto* const owner = dynamic_cast<const GraphConfigNode*>(node.getAncestor());
    return owner == nullptr || owner->getAncestor() == nullptr ? nameOf(node) : nameOf(*owner) + ":" + nameOf(node);
}

std::string numbered(const char* kind, size_t number)
{
    return kind + std::to_string(number % kNumbered);
}

std::string end(const std::string& element, size_t port)
{
    return element + ":" + std::to_string(port);
}

} // namespace

void addKernelGraphNames()
{
    std::map<std::string, uint32_t> names;
    uint32_t key = kFirstName;
    for (const char* const kind : kNumberedKinds) {
        for (size_t number = 0; number < kNumbered; ++number) names[numbered(kind, number)] = key++;
    }
    for (const char* const name : kOtherNames) names[name] = key++;
    ItemUID::addCustomKeyMap(names);
}

KernelGraphBuilder::KernelGraphBuilder(ByteReader& bytes)
    : mBytes(bytes), mRoot(std::make_unique<GraphConfigNode>()), mNodes({mRoot.get()}), mLatest(mRoot.get())
{
}

std::unique_ptr<GraphConfigNode> KernelGraphBuilder::build()
{
    using Builder = KernelGraphBuilder;
    constexpr Instruction instructions[] = {
        &Builder::openGroup,  &Builder::addSource, &Builder::addPort,    &Builder::connectLatest,  &Builder::connectAny,
        &Builder::addSink,    &Builder::addKernel, &Builder::addSizes,   &Builder::addCrop,        &Builder::addOutput,
        &Builder::addRouting, &Builder::linkAny,   &Builder::linkToPort, &Builder::setInteger,     &Builder::setText,
        &Builder::goToNode,   &Builder::feedPort,  &Builder::addBranch,  &Builder::setFreeInteger, &Builder::addStages,
        &Builder::addLimits};
    constexpr size_t count = sizeof instructions / sizeof *instructions;
    const std::string version = mBytes.from(kVersions);
    mHasComputeBlocks = version == kVersions[1];
    mLinksByItself = version != kVersions[2];
    mGraph = open(*mRoot, "graph", "graph");
    set(*mGraph, NUXO_KEY_VERSION, version);
    for (size_t i = 0; i < kMostSteps && !mBytes.atEnd(); ++i) {
        const uint8_t letter = mBytes.byte();
        if (letter <= ' ') continue;
        if (mNodes.size() >= kMostBuiltNodes) break;
        (this->*instructions[static_cast<uint8_t>(letter - 'a') % count])();
    }
    return std::move(mRoot);
}

GraphConfigNode* KernelGraphBuilder::open(Node& parent, const char* type, const std::string& name)
{
    auto node = std::make_unique<Node>();
    Node* const opened = node.get();
    file(parent, std::move(node), ItemUID::str2key(name));
    set(*opened, NUXO_KEY_TYPE, std::string(type));
    set(*opened, NUXO_KEY_NAME, name);
    mNodes.push_back(opened);
    mLatest = opened;
    return opened;
}

GraphConfigNode* KernelGraphBuilder::openPort(Node& owner, const std::string& name, int direction)
{
    Node* const port = open(owner, "port", name);
    set(*port, NUXO_KEY_DIRECTION, direction);
    set(*port, NUXO_KEY_ID, static_cast<int>(mPorts.size() % kNumbered));
    mPorts.push_back(port);
    (direction == 0 ? mInput : mOutput) = port;
    return port;
}

// The child without a name of its own, made when it is not there.
GraphConfigNode& KernelGraphBuilder::childOf(Node& parent, uint32_t key)
{
    if (auto* const there = dynamic_cast<Node*>(parent.getDescendant(key))) return *there;
    auto child = std::make_unique<Node>();
    Node& made = *child;
    file(parent, std::move(child), key);
    mNodes.push_back(&made);
    return made;
}

void KernelGraphBuilder::setSize(Node& node, size_t size)
{
    if (size == kNoSize) return;
    set(node, NUXO_KEY_WIDTH, kSizes[size].width);
    set(node, NUXO_KEY_HEIGHT, kSizes[size].height);
}

void KernelGraphBuilder::openGroup()
{
    const int stream = mBytes.from(kIds);
    const int context = mBytes.from(kIds);
    mGroup = open(*mRoot, mHasComputeBlocks ? "compute_block" : "program_group", numbered("g", mGroups++));
    set(*mGroup, NUXO_KEY_STREAM_ID, stream);
    set(*mGroup, NUXO_KEY_EXEC_CTX_ID, context);
    set(*mGroup, NUXO_KEY_PG_ID, static_cast<int>(mGroups) * 10);
    mElements.clear();
    mKernel = nullptr;
    mLinkFrom.clear();
}

void KernelGraphBuilder::addSource()
{
    constexpr const char* kinds[] = {"sensor", "tpg", "buffer_src0", "buffer_src1", "camera"};
    const size_t kind = mBytes.below(sizeof kinds / sizeof *kinds);
    const size_t size = mBytes.below(sizeof kSizes / sizeof *kSizes);
    Node* const source = open(*mRoot, "source", kinds[kind]);
    set(*source, NUXO_KEY_CMC_TAG, std::string("TAG"));
    setSize(*source, size);
    Node* const port = openPort(*source, "port_0", 1);
    setSize(*port, size);
    if (kind > 1) return;
    Node* const capture = open(*mRoot, "hw", "csi_be");
    for (const uint32_t key : {NUXO_KEY_STREAM_ID, NUXO_KEY_EXEC_CTX_ID}) {
        set(*capture, key, 0);
        if (mLinksByItself) set(*source, key, 0);
    }
    Node& formatter = childOf(*capture, ItemUID::str2key(kind == 0 ? "zmt_pixelformatter" : "stream2mmio"));
    Node& input = childOf(formatter, NUXO_KEY_INPUT);
    setSize(input, size);
    for (const uint32_t key : {NUXO_KEY_LEFT, NUXO_KEY_TOP}) set(input, key, 0);
    connect(port, openPort(*capture, "input", 0));
    setSize(*openPort(*capture, "output", 1), size);
}

void KernelGraphBuilder::addPort()
{
    const int direction = mBytes.below(2) == 0 ? 0 : 1;
    enum State { Enabled, Disabled, Private, Statistics, States };
    const size_t state = mBytes.below(States);
    const size_t size = mBytes.below(sizeof kSizes / sizeof *kSizes);
    if (mGroup == nullptr) return;
    Node* const port = openPort(*mGroup, numbered("p", mPorts.size()), direction);
    setSize(*port, size);
    if (state == Disabled) set(*port, NUXO_KEY_ENABLED, 0);
    if (state == Private) set(*port, NUXO_KEY_PRIVATE, 1);
    if (state == Statistics) set(*port, NUXO_KEY_CONTENT_TYPE, std::string("ae_stats"));
    if (direction == 0) mLinkFrom = nameOf(*port);
    if (direction == 1 && mLinksByItself && !mLinkFrom.empty()) link(*mGroup, mLinkFrom, nameOf(*port));
    mLatest = port;
}

void KernelGraphBuilder::connect(Node* source, Node* sink)
{
    if (source == nullptr || sink == nullptr) return;
    auto connection = std::make_unique<Node>();
    set(*connection, NUXO_KEY_SOURCE, pathOf(*source));
    set(*connection, NUXO_KEY_SINK, pathOf(*sink));
    mNodes.push_back(connection.get());
    file(*mGraph, std::move(connection), NUXO_KEY_CONNECTION);
    set(*source, NUXO_KEY_PEER, pathOf(*sink));
    set(*sink, NUXO_KEY_PEER, pathOf(*source));
}

void KernelGraphBuilder::connectLatest()
{
    connect(mOutput, mInput);
}

void KernelGraphBuilder::connectAny()
{
    const size_t source = mBytes.below(UINT8_MAX);
    const size_t sink = mBytes.below(UINT8_MAX);
    if (!mPorts.empty()) connect(mPorts[source % mPorts.size()], mPorts[sink % mPorts.size()]);
}

void KernelGraphBuilder::addSink()
{
    const int stream = mBytes.from(kIds);
    Node* const sink = open(*mRoot, "sink", numbered("s", mSinks++));
    set(*sink, NUXO_KEY_STREAM_ID, stream);
    set(*sink, NUXO_KEY_EXEC_CTX_ID, stream);
    connect(mOutput, sink);
}

void KernelGraphBuilder::link(Node& group, const std::string& source, const std::string& destination)
{
    auto klink = std::make_unique<Node>();
    set(*klink, NUXO_KEY_SOURCE, source);
    set(*klink, NUXO_KEY_DESTINATION, destination);
    mNodes.push_back(klink.get());
    file(group, std::move(klink), NUXO_KEY_KLINK);
}

// Goes on from what was added: a kernel's output 0.
void KernelGraphBuilder::linkFromLatest(const std::string& destination)
{
    if (mLinksByItself && !mLinkFrom.empty()) link(*mGroup, mLinkFrom, end(destination, 0));
    mLinkFrom = end(destination, 0);
}

void KernelGraphBuilder::addKernel()
{
    if (mGroup == nullptr) return;
    const size_t number = mElements.size();
    mKernel = open(*mGroup, "kernel", numbered("k", number));
    set(*mKernel, NUXO_KEY_PAL_UUID, static_cast<int>(mGroups * 100 + number));
    size_t kernels = 0;
    for (const Node* const element : mElements) kernels += textOf(element, NUXO_KEY_TYPE) == "kernel" ? 1 : 0;
    set(*mKernel, NUXO_KEY_ID, static_cast<int>(kernels));
    mElements.push_back(mKernel);
    linkFromLatest(nameOf(*mKernel));
}

void KernelGraphBuilder::addSizes()
{
    const size_t in = mBytes.below(sizeof kSizes / sizeof *kSizes);
    const size_t out = mBytes.below(sizeof kSizes / sizeof *kSizes);
    if (mKernel == nullptr) return;
    set(*mKernel, NUXO_KEY_RCB, 1);
    setSize(childOf(*mKernel, NUXO_KEY_INPUT), in);
    setSize(childOf(*mKernel, NUXO_KEY_OUTPUT), out);
}

void KernelGraphBuilder::addCrop()
{
    for (const uint32_t key : {NUXO_KEY_LEFT, NUXO_KEY_TOP, NUXO_KEY_RIGHT, NUXO_KEY_BOTTOM}) {
        const int crop = mBytes.from(kCrops);
        if (mKernel != nullptr) set(childOf(*mKernel, NUXO_KEY_INPUT), key, crop);
    }
}

void KernelGraphBuilder::addOutput()
{
    const size_t id = mBytes.below(4);
    const size_t size = mBytes.below(sizeof kSizes / sizeof *kSizes);
    if (mKernel == nullptr) return;
    auto output = std::make_unique<Node>();
    set(*output, NUXO_KEY_ID, static_cast<int>(id));
    setSize(*output, size);
    mNodes.push_back(output.get());
    mLatest = output.get();
    if (id % 2 == 1) {
        file(*mKernel, std::move(output), NUXO_KEY_OUTPUT);
    } else {
        file(childOf(*mKernel, NUXO_KEY_OUTPUT), std::move(output), ItemUID::str2key(numbered("r", id)));
    }
    mLinkFrom = end(nameOf(*mKernel), id);
}

void KernelGraphBuilder::addRouting()
{
    constexpr const char* kinds[] = {"split", "mux", "demux"};
    const char* const kind = mBytes.from(kinds);
    const int active = mBytes.from(kValues);
    if (mGroup == nullptr) return;
    Node* const element = open(*mGroup, kind, numbered("r", mElements.size()));
    set(*element, NUXO_KEY_ACTIVE_INPUT, active);
    set(*element, NUXO_KEY_ACTIVE_OUTPUT, active);
    mElements.push_back(element);
    linkFromLatest(nameOf(*element));
}

void KernelGraphBuilder::linkAny()
{
    const size_t from = mBytes.below(UINT8_MAX);
    const size_t output = mBytes.below(4);
    const size_t to = mBytes.below(UINT8_MAX);
    const size_t input = mBytes.below(4);
    if (mElements.empty()) return;
    const std::string source = nameOf(*mElements[from % mElements.size()]);
    link(*mGroup, end(source, output), end(nameOf(*mElements[to % mElements.size()]), input));
    mLinkFrom = end(source, output + 1);
}

void KernelGraphBuilder::linkToPort()
{
    const size_t from = mBytes.below(UINT8_MAX);
    const size_t output = mBytes.below(4);
    if (mElements.empty() || mOutput == nullptr) return;
    link(*mGroup, end(nameOf(*mElements[from % mElements.size()]), output), nameOf(*mOutput));
}

void KernelGraphBuilder::setInteger()
{
    const uint32_t key = mBytes.from(kKeys);
    set(*mLatest, key, mBytes.from(kValues));
}

void KernelGraphBuilder::setText()
{
    const uint32_t key = mBytes.from(kTexts);
    set(*mLatest, key, std::string(mBytes.from(kTextValues)));
}

void KernelGraphBuilder::goToNode()
{
    mLatest = mNodes[mBytes.below(UINT8_MAX) % mNodes.size()];
    Node* owner = mLatest;
    while (owner->getAncestor() != nullptr && owner->getAncestor() != mRoot.get()) {
        owner = dynamic_cast<Node*>(owner->getAncestor());
    }
    const std::string type = textOf(owner, NUXO_KEY_TYPE).value_or("");
    if (owner == mGroup || (type != "program_group" && type != "compute_block")) return;
    mGroup = owner;
    mKernel = nullptr;
    mElements.clear();
    mLinkFrom.clear();
    for (const uint32_t kind : {NUXO_KEY_KERNEL, NUXO_KEY_MUX, NUXO_KEY_DEMUX, NUXO_KEY_SPLIT}) {
        for (NUXO::IGraphConfig* const element : childrenOfType(owner, kind)) {
            mElements.push_back(dynamic_cast<Node*>(element));
            if (kind == NUXO_KEY_KERNEL) mKernel = mElements.back();
        }
    }
}

void KernelGraphBuilder::feedPort()
{
    if (mKernel == nullptr || mOutput == nullptr) return;
    set(*mKernel, NUXO_KEY_SINK_PORT, integerOf(mOutput, NUXO_KEY_ID).value_or(-1));
}

void KernelGraphBuilder::addBranch()
{
    const int branch = mBytes.from(kValues);
    const int restore = mBytes.from(kValues);
    if (mKernel == nullptr) return;
    if (branch != 0) set(*mKernel, NUXO_KEY_BRANCH_POINT, branch);
    if (restore != 0) set(*mKernel, NUXO_KEY_RESTORE_POINT, restore);
}

void KernelGraphBuilder::setFreeInteger()
{
    const uint32_t key = mBytes.from(kKeys);
    set(*mLatest, key, mBytes.integer());
}

// The stages that the letter's bits choose; each halves the size when the factor is 2.
void KernelGraphBuilder::addStages()
{
    const size_t stages = mBytes.below(8);
    const int factor = mBytes.from(kValues);
    auto* const sensor = dynamic_cast<Node*>(mRoot->getDescendant(NUXO_KEY_SENSOR));
    if (sensor == nullptr) return;
    size_t bit = 1;
    for (const uint32_t stage : {NUXO_KEY_PIXEL_ARRAY, NUXO_KEY_BINNER, NUXO_KEY_SCALER}) {
        if ((stages & bit) != 0) {
            Node& node = childOf(*sensor, stage);
            for (const uint32_t key :
                 {NUXO_KEY_H_FACTOR, NUXO_KEY_V_FACTOR, NUXO_KEY_NUM_FACTOR, NUXO_KEY_DENOM_FACTOR}) {
                set(node, key, factor);
            }
            for (const uint32_t side : {NUXO_KEY_INPUT, NUXO_KEY_OUTPUT}) {
                setSize(childOf(node, side), 1);
                set(childOf(node, side), NUXO_KEY_LEFT, factor);
                set(childOf(node, side), NUXO_KEY_TOP, 8);
            }
        }
        bit *= 2;
    }
}

void KernelGraphBuilder::addLimits()
{
    const int stream = mBytes.from(kIds);
    const size_t numbers = mBytes.below(60);
    Node& data = childOf(*mRoot, NUXO_KEY_MBR_DATA);
    auto limits = std::make_unique<Node>();
    set(*limits, NUXO_KEY_ID, stream);
    std::string text;
    for (size_t i = 0; i < numbers; ++i) text += std::to_string(i) + ".5,";
    set(*limits, NUXO_KEY_VALUE, text);
    mNodes.push_back(limits.get());
    mLatest = limits.get();
    file(data, std::move(limits), NUXO_KEY_STREAM_ID);
}

} // namespace fuzzing
