// SPDX-License-Identifier: Apache-2.0
// Fuzz target: run-kernel records. The input describes one graph after the other, parted by form feeds: by the letters of
// KernelGraphBuilder.h, or, when it starts with '<', as a descriptor and settings, all settings a graph each. The letters
// before the graphs, behind descriptor and settings, choose what is done. Records are computed twice and must come out alike:
// by another object, from a copy, by an object that had other graphs before, or after memory ran out.
#include "KernelGraphBuilder.h"
#include "KernelQuestions.h"

#include "support/Fuzzing.h"
#include "support/TreeChecks.h"

#include <nuxo/nuxo.h>

#include <support/AllocationFailures.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace {

using fuzzing::Transcript;
using Tree = std::unique_ptr<NUXO::GraphConfigNode>;
using Graphs = std::vector<std::unique_ptr<fuzzing::KernelGraph>>;

constexpr char kPartEnd = '\f';
constexpr size_t kMostGraphs = 4;

// What the first letter chooses.
enum Mode { Again, Copied, Series, NoMemory, Modes };

// What the letters before the first graph say, in their order.
struct Instructions {
    Mode mode;
    bool isAnalysis;
    bool usesStreams;
    NUXO::GdfVersion version; // that the analysis is asked for, whatever the graph says
    size_t shortage;          // number of the allocation that fails
    bool isForGood;

    // Formatting the lines takes most of a run's time, so only some inputs are followed line by line.
    bool comparesLines() const { return shortage % 8 == 1; }
    unsigned int subgraphKey() const { return usesStreams ? NUXO_KEY_STREAM_ID : NUXO_KEY_EXEC_CTX_ID; }
};

constexpr size_t kInstructionLetters = 5;

Instructions readInstructions(fuzzing::ByteReader& bytes)
{
    constexpr size_t letters = 26;
    constexpr NUXO::GdfVersion versions[] = {NUXO::GdfVersionKVA6, NUXO::GdfVersionKVA7, NUXO::GdfVersionNone};
    const size_t way = bytes.below(2 * Modes);
    const bool usesStreams = bytes.below(2) == 0;
    const NUXO::GdfVersion version = bytes.from(versions);
    const size_t high = bytes.below(letters);
    const size_t low = bytes.below(letters);
    return {static_cast<Mode>(way % Modes), way >= Modes,         usesStreams, version,
            high * letters + low + 1,       (high + low) % 2 == 1};
}

// One way to ask for records, with an object that is used for all graphs.
class Analysis {
public:
    using Object = NUXO::GraphUtil;

    Analysis(unsigned int key, NUXO::GdfVersion version) : mKey(key), mVersion(version) {}

    Object object() const { return {}; }
    int initialise(Object& analysis, const fuzzing::KernelGraph& graph) const
    {
        return analysis.init(mKey, &graph.root(), mVersion);
    }
    Transcript ask(Object& analysis, const fuzzing::KernelGraph& graph) const
    {
        return fuzzing::interview(analysis, graph, mKey, mVersion);
    }

private:
    unsigned int mKey;
    NUXO::GdfVersion mVersion;
};

class KernelLists {
public:
    using Object = NUXO::ZmtTevUtils;

    explicit KernelLists(bool usesStreams) : mUsesStreams(usesStreams) {}

    Object object() const { return Object(mUsesStreams); }
    int initialise(Object& utils, const fuzzing::KernelGraph& graph) const { return utils.initTevUtils(&graph.root()); }
    Transcript ask(Object& utils, const fuzzing::KernelGraph& graph) const
    {
        return fuzzing::interview(utils, mUsesStreams, graph);
    }

private:
    bool mUsesStreams;
};

// What a new object answers, and what it logs.
struct Answers {
    Transcript transcript;
    uint64_t linesInOrder;
    uint64_t lines;
};

template <typename Way> Transcript silentAnswersOfNewObject(const Way& way, const fuzzing::KernelGraph& graph)
{
    const fuzzing::Hush hush;
    auto object = way.object();
    return way.ask(object, graph);
}

template <typename Way>
Answers answersOfNewObject(const Way& way, const fuzzing::KernelGraph& graph, const Instructions& instructions)
{
    if (!instructions.comparesLines()) return {silentAnswersOfNewObject(way, graph), 0, 0};
    const fuzzing::LogDigest log;
    auto object = way.object();
    Transcript transcript = way.ask(object, graph);
    return {std::move(transcript), log.inOrder(), log.inAnyOrder()};
}

template <typename Way>
void checkAgain(const Way& way, const fuzzing::KernelGraph& graph, const Instructions& instructions)
{
    const Answers first = answersOfNewObject(way, graph, instructions);
    const Answers second = answersOfNewObject(way, graph, instructions);
    fuzzing::requireSameAnswers(first.transcript, second.transcript, "another object gives the same answers");
    fuzzing::require(first.linesInOrder == second.linesInOrder, "another object logs the same lines");
}

// In a copy addresses have another order.
template <typename Way>
void checkCopy(const Way& way, const fuzzing::KernelGraph& graph, const Instructions& instructions)
{
    const Answers first = answersOfNewObject(way, graph, instructions);
    const fuzzing::KernelGraph copied(Tree(graph.root().copy()));
    const Answers ofCopy = answersOfNewObject(way, copied, instructions);
    fuzzing::requireSameAnswers(first.transcript, ofCopy.transcript, "a copy of the graph gives the same answers");
    fuzzing::require(first.lines == ofCopy.lines, "a copy of the graph gives the same lines");
}

// While memory is short, initialising fails or succeeds as ever; afterwards everything is as if nothing had happened.
template <typename Way>
void checkShortage(const Way& way, const fuzzing::KernelGraph& graph, const Instructions& instructions)
{
    auto object = way.object();
    const int usual = way.initialise(object, graph);
    AllocationFailures failures;
    if (instructions.isForGood) {
        failures.failFrom(instructions.shortage);
    } else {
        failures.failOnce(instructions.shortage);
    }
    const int status = way.initialise(object, graph);
    const bool hasFailed = failures.failures() > 0;
    failures.stop();
    fuzzing::require(status == usual || (hasFailed && status != StatusOk), "initialising reports a lack of memory");
    const Transcript expected = silentAnswersOfNewObject(way, graph);
    const fuzzing::Hush hush;
    fuzzing::requireSameAnswers(expected, way.ask(object, graph), "a lack of memory leaves nothing behind");
}

// The first graph again at the end, behind good and bad ones.
template <typename Way> void checkSeries(const Way& way, const Graphs& graphs)
{
    const fuzzing::Hush hush;
    auto shared = way.object();
    for (const auto& graph : graphs) {
        const Transcript expected = silentAnswersOfNewObject(way, *graph);
        fuzzing::requireSameAnswers(expected, way.ask(shared, *graph), "an object forgets the graphs before");
    }
    const Transcript expected = silentAnswersOfNewObject(way, *graphs.front());
    fuzzing::requireSameAnswers(expected, way.ask(shared, *graphs.front()), "an object forgets the last graph");
}

template <typename Way> void checkWay(const Way& way, const Graphs& graphs, const Instructions& instructions)
{
    if (instructions.mode == Series) return checkSeries(way, graphs);
    for (const auto& graph : graphs) {
        switch (instructions.mode) {
        case Again: checkAgain(way, *graph, instructions); break;
        case Copied: checkCopy(way, *graph, instructions); break;
        default: checkShortage(way, *graph, instructions); break;
        }
    }
}

void check(const Graphs& graphs, const Instructions& instructions)
{
    if (graphs.empty()) return;
    if (instructions.isAnalysis) {
        checkWay(Analysis(instructions.subgraphKey(), instructions.version), graphs, instructions);
    } else {
        checkWay(KernelLists(instructions.usesStreams), graphs, instructions);
    }
    if (instructions.mode == Again) static_cast<void>(fuzzing::interviewNodes(*graphs.front())); // has its own rules
}

Tree parse(NUXO::NUXOParser& parser, std::string text)
{
    NUXO::IGraphConfig* out = nullptr;
    parser.parseNUXOXmlData(text.data(), text.size(), &out);
    return Tree(dynamic_cast<NUXO::GraphConfigNode*>(out));
}

// Takes the text up to the end of the part, or all of it, off the front.
std::string takePart(std::string& text)
{
    const size_t length = text.find(kPartEnd);
    std::string part = text.substr(0, length);
    text.erase(0, length == std::string::npos ? length : length + 1);
    return part;
}

void addGraph(Graphs& graphs, Tree root)
{
    if (root == nullptr) return;
    if (fuzzing::nodesOf(root.get()).size() > fuzzing::kMostNodes) return;
    graphs.push_back(std::make_unique<fuzzing::KernelGraph>(std::move(root)));
}

// The trees stay, the graphs may share nothing with them.
Graphs builtFromSettings(const NUXO::GraphConfigNode* descriptor, NUXO::GraphConfigNode* settings)
{
    Graphs graphs;
    NUXO::GraphQueryManager manager;
    manager.setGraphDescriptor(const_cast<NUXO::GraphConfigNode*>(descriptor));
    manager.setGraphSettings(settings);
    NUXO::NodeIterator cursor(settings);
    while (graphs.size() < kMostGraphs) {
        NUXO::IGraphConfig* const setting = cursor.iterateByUid(NUXO_KEY_SETTINGS);
        if (setting == nullptr) break;
        NUXO::IGraphConfig* graph = nullptr;
        static_cast<void>(manager.createGraph(setting, &graph)); // what was built is looked at whatever came of it
        addGraph(graphs, Tree(dynamic_cast<NUXO::GraphConfigNode*>(graph)));
    }
    return graphs;
}

void runFiles(std::string text)
{
    NUXO::NUXOParser parser;
    const Tree descriptor = parse(parser, takePart(text));
    const Tree settings = parse(parser, takePart(text));
    if (settings == nullptr) return;
    fuzzing::ByteReader bytes(reinterpret_cast<const uint8_t*>(text.data()), text.size());
    const Instructions instructions = readInstructions(bytes);
    check(builtFromSettings(descriptor.get(), settings.get()), instructions);
}

void runLetters(std::string text)
{
    const std::string first = text.substr(0, std::min(kInstructionLetters, text.size()));
    text.erase(0, first.size());
    fuzzing::ByteReader start(reinterpret_cast<const uint8_t*>(first.data()), first.size());
    const Instructions instructions = readInstructions(start);
    Graphs graphs;
    while (!text.empty() && graphs.size() < kMostGraphs) {
        const std::string part = takePart(text);
        fuzzing::ByteReader bytes(reinterpret_cast<const uint8_t*>(part.data()), part.size());
        addGraph(graphs, fuzzing::KernelGraphBuilder(bytes).build());
    }
    check(graphs, instructions);
}

// What is set up once and stays.
bool prepare()
{
    fuzzing::addKernelGraphNames();
    const fuzzing::Run log;
    NUXOFormats::initNUXOFormats();
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool prepared = prepare();
    fuzzing::require(prepared, "the target is ready");
    const fuzzing::Run run;
    std::string text(reinterpret_cast<const char*>(data), size);
    if (size > 0 && text.front() == '<') {
        runFiles(std::move(text));
        return 0;
    }
    const size_t before = AllocationFailures::live();
    runLetters(text);
    fuzzing::require(AllocationFailures::live() == before, "nothing is lost"); // parsing would add names for good
    return 0;
}
