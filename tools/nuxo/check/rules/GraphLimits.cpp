// SPDX-License-Identifier: Apache-2.0
// Sizes beyond what numbers of 32 bits hold, and crops that add more than there is.
#include "FormatNames.h"
#include "PortView.h"
#include "Text.h"
#include "TreeView.h"
#include "check/rules/GraphInspections.h"
#include "check/rules/GraphPorts.h"
#include "check/rules/GraphSizes.h"

#include <nuxo/formats/NUXOFormats.h>
#include <nuxo/tree/NodeIterator.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;
using NUXOFormats::qv_format_t;

namespace {

constexpr double kMostBytes = UINT32_MAX;

// A frame without any overflow, of which larger ones are multiples.
constexpr uint32_t kUsualWidth = 8192;
constexpr uint32_t kUsualHeight = 1024;

struct Bytes {
    double ofLine;
    double ofFrame;

    bool fit() const { return ofLine <= kMostBytes && ofFrame <= kMostBytes; }
};

// What a frame takes if numbers had no end.
Bytes bytesOf(const qv_format_t& format, const Extent& size, std::optional<int> bpl)
{
    const uint32_t usualLine = NUXOFormats::getBpl(format, kUsualWidth);
    const double usualFrame =
        NUXOFormats::calculateBufferSize(format, kUsualWidth, kUsualHeight, usualLine, nullptr, nullptr);
    const double lineOfWidth = size.width * (static_cast<double>(usualLine) / kUsualWidth);
    const double known = std::max(NUXOFormats::getBpl(format, static_cast<uint32_t>(size.width)),
                                  static_cast<uint32_t>(std::max(bpl.value_or(0), 0)));
    const double line = std::max(lineOfWidth, known);
    return {line, line * size.height * usualFrame / (static_cast<double>(usualLine) * kUsualHeight)};
}

std::string bytesText(double bytes)
{
    return std::to_string(static_cast<uint64_t>(std::floor(bytes)));
}

// The pairs of sides that crop one extent.
struct Sides {
    uint32_t keys[2];
    const char* names[2];
    uint32_t size;
    const char* ofWhat;
};
constexpr Sides kSides[] = {
    {{NUXO_KEY_LEFT, NUXO_KEY_RIGHT}, {"left", "right"}, NUXO_KEY_WIDTH, "columns"},
    {{NUXO_KEY_TOP, NUXO_KEY_BOTTOM}, {"top", "bottom"}, NUXO_KEY_HEIGHT, "lines"},
};

class LimitInspection {
public:
    explicit LimitInspection(GraphInspection& inspection) : mInspection(inspection) {}

    void run()
    {
        for (const GraphConfigNode* const node : mInspection.nodes()) {
            if (isSink(*node)) inspectBuffer(*node);
            for (const GraphConfigNode* const port : childrenOfType(*node, NUXO_KEY_PORT)) inspectBuffer(*port);
            inspectCrops(*node);
        }
    }

private:
    void inspectBuffer(const GraphConfigNode& end)
    {
        const std::optional<Extent> size = extentOf(end);
        const qv_format_t* const format = formatNamed(textOf(end, NUXO_KEY_FORMAT));
        const bool isFrame = isOn(end) && carriesPixels(end) && size && size->width > 0 && size->height > 0;
        if (!isFrame || format == nullptr || mInspection.isExplained(end)) return;
        const std::optional<int> bpl = optionalInteger(end, NUXO_KEY_BPL);
        const Bytes bytes = bytesOf(*format, *size, bpl);
        if (bytes.fit()) return;
        const bool isOfLine = bytes.ofLine > kMostBytes;
        const uint32_t side = size->width >= size->height ? NUXO_KEY_WIDTH : NUXO_KEY_HEIGHT;
        const bool isOfBpl = bytesOf(*format, *size, std::nullopt).fit();
        mInspection.report(kFrameTooLargeRule, end, isOfBpl ? uint32_t{NUXO_KEY_BPL} : side,
                           (isOfLine ? "a line of " : "a frame of ") + printable(endName(end)) + ", " +
                               extentText(*size) + " of " + format->name +
                               (isOfBpl ? " with a bpl of " + std::to_string(*bpl) : "") + ", takes " +
                               bytesText(isOfLine ? bytes.ofLine : bytes.ofFrame) +
                               " bytes, which 32 bits do not hold; expected at most " + bytesText(kMostBytes));
        explain(end);
        for (const Peer& peer : peersOf(end)) {
            if (peer.end != nullptr) explain(*peer.end);
        }
    }

    // Other sizes do not fit this one either.
    void explain(const GraphConfigNode& end)
    {
        mInspection.explain(end);
        const IGraphConfig* const holder = end.getAncestor();
        if (holder != nullptr && holder != &mInspection.graph()) mInspection.explain(*holder);
    }

    // The inputs and outputs of kernels, stages and formatters.
    void inspectCrops(const GraphConfigNode& node)
    {
        std::vector<const GraphConfigNode*> open = {&node};
        while (!open.empty()) {
            const GraphConfigNode* const holder = open.back();
            open.pop_back();
            NUXO::NodeIterator children(holder);
            while (const IGraphConfig* const child = children.iterateDescendants()) {
                const auto* const part = dynamic_cast<const GraphConfigNode*>(child);
                if (part == nullptr) continue;
                for (const Sides& sides : kSides) inspectCrop(*part, sides);
                open.push_back(part);
            }
        }
    }

    // "front:crop:input"
    std::string pathOf(const IGraphConfig& part) const
    {
        std::string path = printable(nameOf(part));
        for (const IGraphConfig* holder = part.getAncestor(); holder != nullptr && holder != &mInspection.graph();
             holder = holder->getAncestor())
            path.insert(0, printable(nameOf(*holder)) + ':');
        return path;
    }

    void inspectCrop(const GraphConfigNode& part, const Sides& sides)
    {
        const std::optional<int> size = optionalInteger(part, sides.size);
        if (!size || *size <= 0) return;
        for (size_t i = 0; i < 2; ++i) {
            const int64_t crop = integerOf(part, sides.keys[i], 0);
            if (-crop <= *size) continue;
            const IGraphConfig* const kernel = part.getAncestor();
            mInspection.report(kCropPaddingRule, part, sides.keys[i],
                               std::string(sides.names[i]) + " of " + pathOf(part) + " is " + std::to_string(crop) +
                                   ", which adds " + std::to_string(-crop) + ' ' + sides.ofWhat + " to the " +
                                   std::to_string(*size) +
                                   " that there are; expected 0 or more, or less than that to add");
            mInspection.explain(part);
            mInspection.explain(*kernel);
            return;
        }
    }

    GraphInspection& mInspection;
};

} // namespace

void inspectLimits(GraphInspection& inspection)
{
    NUXOFormats::initNUXOFormats();
    LimitInspection(inspection).run();
}

} // namespace NuxoTool
