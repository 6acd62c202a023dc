// SPDX-License-Identifier: Apache-2.0
#include "GraphMemory.h"

#include "GraphQuestions.h"

#include "support/Fuzzing.h"
#include "support/TreeChecks.h"
#include "support/TreeCopy.h"

#include <nuxo/nuxo.h>

#include <support/AllocationFailures.h>

#include <set>
#include <string>

namespace fuzzing {

namespace {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;
using NUXO::ZmtTevSimUtils;

// The result of the action; tells whether an allocation failed in it.
template <typename Action> auto withShortage(const Shortage& shortage, bool& failed, Action action)
{
    AllocationFailures failures;
    if (shortage.forGood) {
        failures.failFrom(shortage.first);
    } else {
        failures.failOnce(shortage.first);
    }
    const auto result = action();
    failed = failures.failures() > 0;
    failures.stop();
    return result;
}

void checkQuestion(const Interview& interview, size_t node, size_t number, const Shortage& shortage)
{
    const Question& question = Interview::question(number);
    const Outcome expected = interview.ask(node, number);
    const size_t before = AllocationFailures::live();
    bool failed = false;
    const Outcome outcome = withShortage(shortage, failed, [&] { return interview.ask(node, number); });
    requireOf(AllocationFailures::live() == before, question.name, "nothing is lost when memory is short");
    if (!failed) {
        requireOf(outcome == expected, question.name, "an answer stays the same");
        return;
    }
    const bool gaveUp = outcome.status == question.statusWithoutMemory;
    requireOf(gaveUp || outcome.status == expected.status, question.name, "a shortage is an ordinary failure");
    const bool isComplete = outcome.status == StatusOk && question.statusWithoutMemory < StatusOk;
    requireOf(!isComplete || outcome == expected, question.name, "an answer is complete");
}

// One function that changes a copy of a tree, at the node with the number.
struct EditCase {
    const char* name;
    bool isOfNode; // not of the whole tree
    int (*apply)(const TreeCopy& tree, size_t node, const Request& request);
};

int applyFormat(const TreeCopy& tree, size_t node, const Request& request)
{
    return NUXO::GraphCameraUtil::applyFormat(&tree.node(node), request.text);
}

int setValue(const TreeCopy& tree, size_t node, const Request& request)
{
    return ZmtTevSimUtils::setValue(&tree.node(node), request.key, request.value);
}

int processOverrides(const TreeCopy& tree, size_t node, const Request&)
{
    return applyOverrides(tree.node(node), tree.root());
}

int getGroups(const TreeCopy& tree, size_t, const Request& request)
{
    std::set<IGraphConfig*> groups;
    return ZmtTevSimUtils::getPgsInGraph(&tree.root(), request.value, groups);
}

int getKernels(const TreeCopy& tree, size_t, const Request& request)
{
    std::vector<ZmtTevSimUtils::KernelInfo> kernels;
    return ZmtTevSimUtils::getKernelList(&tree.root(), request.value, request.value, kernels);
}

constexpr EditCase kEdits[] = {
    {"applyFormat", true, applyFormat},
    {"setValue", true, setValue},
    {"processGraphOverrides", true, processOverrides},
    {"getPgsInGraph", false, getGroups},
    {"getKernelList", false, getKernels},
};

void checkEditCase(const GraphConfigNode& original, const EditCase& edit, size_t node, const Request& request,
                   const Shortage& shortage)
{
    const TreeCopy expected(original);
    const int expectedStatus = edit.apply(expected, node, request);
    const TreeCopy tree(original);
    bool failed = false;
    const int status = withShortage(shortage, failed, [&] { return edit.apply(tree, node, request); });
    const bool gaveUp = failed && status == StatusNoMemory;
    requireOf(gaveUp || status == expectedStatus, edit.name, "a shortage is an ordinary failure");
    if (failed) tree.check();
    if (failed && status == StatusOk) checkSame(expected.root(), tree.root());
}

} // namespace

void checkShortage(const std::vector<GraphConfigNode*>& nodes, size_t node, const Request& request, Shortage shortage)
{
    const Interview interview(nodes, request);
    for (size_t i = 0; i < Interview::questions(); ++i) checkQuestion(interview, node, i, shortage);
}

void checkEditsInShortage(const std::vector<GraphConfigNode*>& nodes, size_t node, const Request& request,
                          Shortage shortage)
{
    for (const EditCase& edit : kEdits) {
        if (edit.isOfNode || node == 0) checkEditCase(*nodes.front(), edit, node, request, shortage);
    }
}

void checkNumbersInShortage(const std::vector<GraphConfigNode*>& nodes, uint32_t n)
{
    AllocationFailures failures;
    failures.failCountedFrom(n + 1);
    for (const GraphConfigNode* const node : nodes) {
        for (const auto& entry : *node) {
            std::string text;
            if (entry.second->getValue(text) == StatusOk) checkNumber(text);
        }
    }
}

} // namespace fuzzing
