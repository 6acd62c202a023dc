// SPDX-License-Identifier: Apache-2.0
#include "FlowFindings.h"

#include "AnalysisFindings.h"
#include "LibraryFindings.h"
#include "Origins.h"
#include "RecordText.h"

namespace NuxoTool {

namespace {

void reportMismatch(Session& session, const Flow& flow, const Flow::Node& node, const Mismatch& mismatch)
{
    if (mismatch.isBreak && flow.isChecked && !flow.isComplete) return; // the library's own finding
    const bool isEmpty = node.arrives->output_width == 0 && node.arrives->output_height == 0;
    if (isEmpty && !flow.isComplete) return; // a consequence of what the library found
    const std::string arriving = sizeText(node.arrives->output_width, node.arrives->output_height);
    const std::string text = node.fullName() + " takes " + sizeText(mismatch.width, mismatch.height) + ", but " +
                             arriving + " arrives; expected " + arriving;
    const bool isWidth = mismatch.width != node.arrives->output_width;
    const uint32_t side = isWidth ? NUXO_KEY_WIDTH : NUXO_KEY_HEIGHT;
    const Location place = node.kind == Flow::Kind::Kernel ? placeOfInput(session, *node.item, isWidth)
                                                           : placeOf(session, {"size", node.item, "", side});
    // Construction gives a port the values of the one that feeds it: both then stand at one place.
    if (!session.reportedLines.insert(originText(place) + " size").second) return;
    if (mismatch.isBreak) {
        session.findings.error("broken-chain", place, "kernel " + text);
    } else {
        session.findings.warning("size", place, text);
    }
}

} // namespace

void reportMismatches(Session& session, const Flow& flow)
{
    for (const Flow::Node& node : flow.nodes) {
        if (const std::optional<Mismatch> mismatch = mismatchOf(node)) reportMismatch(session, flow, node, *mismatch);
    }
}

} // namespace NuxoTool
