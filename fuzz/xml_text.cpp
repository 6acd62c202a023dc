// SPDX-License-Identifier: Apache-2.0
// Fuzz target: any bytes as the text of a graph file in memory.
#include "support/Fuzzing.h"
#include "support/TreeChecks.h"

#include <nuxo/nuxo.h>

#include <memory>
#include <string>
#include <vector>

namespace {

// Positions lie in the text, and a locator that has it can tell line and column of each.
void checkPositions(const std::vector<NUXO::GraphConfigNode*>& nodes, const std::string& text)
{
    constexpr size_t kMostLocated = 20;
    NUXO::SourceLocator locator;
    for (size_t i = 1; i < nodes.size() && i < kMostLocated; ++i) {
        const NUXO::SourcePosition position = NUXO::getSourcePosition(nodes[i]);
        fuzzing::require(position.known() && position.offset < text.size(), "a parsed element stands in the text");
        if (i == 1) {
            const int32_t added = locator.addText(NUXO::getSourceDocument(position.document), text);
            fuzzing::require(added == StatusOk, "a locator takes any text");
        }
        NUXO::SourceLocation location;
        fuzzing::require(locator.locate(nodes[i], location) == StatusOk, "a parsed element can be located");
        for (const auto& entry : *nodes[i]) static_cast<void>(locator.locate(nodes[i], entry.first, location));
    }
}

void parse(NUXO::NUXOParser& parser, std::string& text)
{
    NUXO::IGraphConfig* out = nullptr;
    parser.parseNUXOXmlData(text.data(), text.size(), &out);
    const std::unique_ptr<NUXO::IGraphConfig> tree(out);
    const std::vector<NUXO::GraphConfigNode*> nodes = fuzzing::nodesOf(tree.get());
    if (nodes.empty() || nodes.size() > fuzzing::kMostNodes) return;
    fuzzing::checkTree(nodes);
    fuzzing::checkCopy(*nodes.front());
    fuzzing::askCameraQuestions(nodes);
    checkPositions(nodes, text);
    NUXO::GraphConfigNode::dumpNodeTree(nodes.front(), 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const fuzzing::Run run;
    std::string text(reinterpret_cast<const char*>(data), size);
    NUXO::NUXOParser parser;
    parse(parser, text);
    return 0;
}
