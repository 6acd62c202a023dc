// SPDX-License-Identifier: Apache-2.0
#include "FormatNames.h"
#include "PortView.h"
#include "Text.h"
#include "TreeView.h"
#include "check/rules/GraphInspections.h"
#include "check/rules/GraphPorts.h"
#include "check/rules/GraphSizes.h"

#include <nuxo/formats/NUXOFormats.h>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

// A port passes its values on to the first port that it leads to, which has them over its own; sinks keep theirs. What is
// compared is what the files state for both.
class ConnectionInspection {
public:
    explicit ConnectionInspection(GraphInspection& inspection) : mInspection(inspection) {}

    void run()
    {
        for (const GraphConfigNode* const node : mInspection.nodes()) {
            if (isSink(*node)) inspectStride(*node);
            for (const GraphConfigNode* const port : childrenOfType(*node, NUXO_KEY_PORT)) {
                inspectStride(*port);
                if (isOutput(*port) && isOn(*port) && carriesPixels(*port)) inspectPeers(*port);
            }
        }
    }

private:
    void inspectPeers(const GraphConfigNode& port)
    {
        for (const Peer& peer : peersOf(port)) {
            if (peer.end == nullptr || !isOn(*peer.end) || !carriesPixels(*peer.end)) continue;
            const GraphConfigNode* const own = mInspection.inSettings(*peer.end);
            const bool states = own != nullptr && !isSink(*peer.end);
            inspectSizes(port, *peer.end, states && extentOf(*own) ? *own : *peer.end);
            inspectFormats(port, *peer.end, states && !textOf(*own, NUXO_KEY_FORMAT).empty() ? *own : *peer.end);
        }
    }

    // @param holder  the element that states the values of the end
    void inspectSizes(const GraphConfigNode& port, const GraphConfigNode& end, const GraphConfigNode& holder)
    {
        const std::optional<Extent> sent = extentOf(port);
        const std::optional<Extent> stated = extentOf(holder);
        if (!sent || !stated || *sent == *stated) return;
        if (mInspection.isExplained(port) || mInspection.isExplained(end)) return;
        reportSize(mInspection, kSizeMismatchRule, holder, *stated, Arriving(*sent, &port),
                   printable(endName(end)) + " is " + extentText(*stated) + ", but " + printable(endName(port)) +
                       ", which leads there, sends " + extentText(*sent) + "; expected one size at both ends");
    }

    void inspectFormats(const GraphConfigNode& port, const GraphConfigNode& end, const GraphConfigNode& holder)
    {
        const std::string sent = textOf(port, NUXO_KEY_FORMAT);
        const std::string stated = textOf(holder, NUXO_KEY_FORMAT);
        if (sent.empty() || stated.empty() || sent == stated) return;
        mInspection.report(kSizeMismatchRule, holder, NUXO_KEY_FORMAT,
                           printable(endName(end)) + " has the format " + printable(stated) + ", but " +
                               printable(endName(port)) + ", which leads there, sends " + printable(sent) +
                               "; expected one format at both ends");
        if (mInspection.placeOf(port, NUXO_KEY_FORMAT))
            mInspection.note(port, NUXO_KEY_FORMAT, printable(sent) + " comes from here");
    }

    // What stands in one element of the setting is told by a rule for settings.
    void inspectStride(const GraphConfigNode& port)
    {
        const std::optional<int> bpl = optionalInteger(port, NUXO_KEY_BPL);
        const std::optional<int> width = optionalInteger(port, NUXO_KEY_WIDTH);
        if (!bpl || !width || *width <= 0 || !isOn(port)) return;
        const GraphConfigNode* const own = mInspection.inSettings(port);
        if (own != nullptr && optionalInteger(*own, NUXO_KEY_BPL)) return;
        const NUXOFormats::qv_format_t* const format = formatNamed(textOf(port, NUXO_KEY_FORMAT));
        if (format == nullptr) return;
        const int64_t expected = NUXOFormats::getBpl(*format, static_cast<uint32_t>(*width));
        if (expected == *bpl) return;
        mInspection.report(kStrideRule, port, NUXO_KEY_BPL,
                           "a line of " + printable(endName(port)) + " has " + std::to_string(*bpl) + " bytes, but " +
                               std::to_string(*width) + " pixels of " + format->name + " take " +
                               std::to_string(expected) + "; expected " + std::to_string(expected) +
                               ", or no bpl, which gives just that");
    }

    GraphInspection& mInspection;
};

} // namespace

void inspectConnections(GraphInspection& inspection)
{
    NUXOFormats::initNUXOFormats();
    ConnectionInspection(inspection).run();
}

} // namespace NuxoTool
