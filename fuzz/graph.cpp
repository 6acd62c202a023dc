// SPDX-License-Identifier: Apache-2.0
// Fuzz target: a small graph, and everything that can be asked about one of its nodes. The first letters of the input choose
// what is to be done and what to ask for, all others build the graph; GraphBuilder.h tells what they mean. In some runs memory
// is short.
#include "GraphBuilder.h"
#include "GraphMemory.h"
#include "GraphQuestions.h"

#include "support/CameraRules.h"
#include "support/Fuzzing.h"
#include "support/TreeChecks.h"

#include <nuxo/nuxo.h>

#include <support/AllocationFailures.h>

#include <memory>

namespace {

using Nodes = std::vector<NUXO::GraphConfigNode*>;

// What the first letter of an input chooses.
enum Mode { Answers, Strangers, Copies, Edits, NoMemory, NoMemoryForGood, EditsWithoutMemory, NoCountedMemory, Modes };

// What the letters before the graph say, in their order.
struct Instructions {
    Mode mode;
    size_t number;            // of the allocation that fails, or of the function that edits
    size_t node;              // which to ask, in the order of fuzzing::nodesOf
    fuzzing::Request request; // a letter each for its members
};

Instructions readInstructions(fuzzing::ByteReader& bytes)
{
    constexpr size_t mostSpared = 26; // allocations before one fails
    constexpr size_t mostNodes = 26;
    const auto mode = static_cast<Mode>(bytes.below(Modes));
    const size_t number = bytes.below(mostSpared);
    const size_t node = bytes.below(mostNodes);
    return {mode, number, node, fuzzing::readRequest(bytes)};
}

void checkUnchanged(NUXO::GraphConfigNode& root, NUXO::GraphConfigNode& node, const fuzzing::Request& request)
{
    const std::unique_ptr<NUXO::GraphConfigNode> before(root.copy());
    fuzzing::checkAnswers(node, request);
    fuzzing::checkSame(*before, root);
}

void check(const Nodes& nodes, const Instructions& instructions)
{
    const auto& [mode, number, choice, request] = instructions;
    const size_t node = choice % nodes.size();
    const fuzzing::Shortage shortage = {number + 1, mode == NoMemoryForGood};
    switch (mode) {
    case Answers: checkUnchanged(*nodes.front(), *nodes[node], request); break;
    case Strangers: fuzzing::checkStrangers(*nodes[node], request); break;
    case Copies: fuzzing::checkRepeatable(nodes, node, request); break;
    case Edits: fuzzing::checkEdit(static_cast<fuzzing::Edit>(number % 4), nodes, node, request); break;
    case EditsWithoutMemory: fuzzing::checkEditsInShortage(nodes, node, request, shortage); break;
    case NoCountedMemory: fuzzing::checkNumbersInShortage(nodes, static_cast<uint32_t>(number)); break;
    default: fuzzing::checkShortage(nodes, node, request, shortage); break;
    }
}

void run(const uint8_t* data, size_t size)
{
    const fuzzing::Run log;
    fuzzing::ByteReader bytes(data, size);
    const Instructions instructions = readInstructions(bytes);
    const std::unique_ptr<NUXO::GraphConfigNode> root = fuzzing::GraphBuilder(bytes).build();
    check(fuzzing::nodesOf(root.get()), instructions);
}

// What is set up once and stays.
bool prepare()
{
    fuzzing::addNodeNames();
    const fuzzing::Run log;
    NUXOFormats::initNUXOFormats();
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool prepared = prepare();
    fuzzing::require(prepared, "the target is ready");
    const size_t before = AllocationFailures::live();
    run(data, size);
    fuzzing::require(AllocationFailures::live() == before, "nothing is lost");
    return 0;
}
