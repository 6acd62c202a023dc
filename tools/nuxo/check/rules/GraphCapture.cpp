// SPDX-License-Identifier: Apache-2.0
#include "Origins.h"
#include "PortView.h"
#include "Text.h"
#include "TreeView.h"
#include "check/rules/GraphInspections.h"
#include "check/rules/GraphPorts.h"
#include "check/rules/GraphSizes.h"

#include <cstdint>
#include <string>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

// What a size is without the crop that the same element states.
Extent withoutCrop(const IGraphConfig& input, const Extent& size)
{
    const int left = integerOf(input, NUXO_KEY_LEFT, 0);
    const int top = integerOf(input, NUXO_KEY_TOP, 0);
    const int64_t width = int64_t{size.width} - left - integerOf(input, NUXO_KEY_RIGHT, left);
    const int64_t height = int64_t{size.height} - top - integerOf(input, NUXO_KEY_BOTTOM, top);
    const auto isLength = [](int64_t length) { return length >= 0 && length <= INT32_MAX; };
    if (!isLength(width) || !isLength(height)) return size; // such a crop is a fault of its own
    return {static_cast<int>(width), static_cast<int>(height)};
}

// From the port of a source to what the capture back end hands on.
class CaptureInspection {
public:
    CaptureInspection(GraphInspection& inspection, const GraphConfigNode& source)
        : mInspection(inspection), mSource(source)
    {
    }

    void run()
    {
        const IGraphConfig* const port = mSource.getDescendantByString("port_0");
        if (port == nullptr) return;
        if (const std::optional<Extent> size = extentOf(*port)) mArriving = Arriving(*size, port);
        if (nameOf(mSource) == "sensor") inspectSensorPort(*port);
        for (const Peer& peer : peersOf(dynamic_cast<const GraphConfigNode&>(*port))) {
            const bool isUsed = peer.end != nullptr && isOn(*port) && isOn(*peer.end) && !isSink(*peer.end);
            if (isUsed) inspectBackEnd(*peer.end->getAncestor());
        }
    }

private:
    // The mode has the last word, but the back end was given what the setting says.
    void inspectSensorPort(const IGraphConfig& port)
    {
        const GraphConfigNode* const own = mInspection.inSettings(port);
        const std::optional<Extent> stated = own == nullptr ? std::nullopt : extentOf(*own);
        if (!stated) return;
        const bool isOfMode = originText(mInspection.placeOf(port, NUXO_KEY_WIDTH)) !=
                              originText(mInspection.placeOf(*own, NUXO_KEY_WIDTH));
        if (!isOfMode) mArriving = sizeOfMode();
        if (!mArriving.fits(*stated)) {
            const std::string expected = extentText(mArriving.first());
            reportSize(mInspection, kSensorSizeRule, *own, *stated, mArriving,
                       "the setting states " + extentText(*stated) + " for port_0 of the sensor, but its mode " +
                           named(textOf(mSource, NUXO_KEY_MODE_ID)) + " gives " + expected + "; expected " + expected +
                           ", or another mode");
            mInspection.explain(port);
        }
        mArriving.take(*stated, own);
    }

    // What leaves the last stage that the mode describes.
    Arriving sizeOfMode() const
    {
        for (const char* const stage : {"scaler:output", "binner:output", "pixel_array:output"}) {
            const IGraphConfig* const output = mSource.getDescendantByString(stage);
            const std::optional<Extent> size = output == nullptr ? std::nullopt : extentOf(*output);
            if (size) return {*size, output};
        }
        return {};
    }

    // Its formatter takes what the source sends; that minus crop is what it hands on.
    void inspectBackEnd(const IGraphConfig& backEnd)
    {
        const IGraphConfig* input = backEnd.getDescendantByString("zmt_pixelformatter:input");
        if (input == nullptr) input = backEnd.getDescendantByString("stream2mmio:input");
        const IGraphConfig* const output = backEnd.getDescendant(NUXO_KEY_OUTPUT);
        const std::optional<Extent> in = input == nullptr ? std::nullopt : extentOf(*input);
        if (!in) return;
        const std::string name = printable(nameOf(backEnd));
        if (!mArriving.fits(*in))
            reportSize(mInspection, kCaptureSizeRule, *input, *in, mArriving,
                       name + " takes " + extentText(*in) + ", but " + printable(nameOf(mSource)) + " sends " +
                           extentText(mArriving.first()) + "; expected " + extentText(mArriving.first()));
        const std::optional<Extent> out = output == nullptr ? std::nullopt : extentOf(*output);
        if (!out || !isOn(*output)) return;
        Arriving leaving(withoutCrop(*input, *in), input);
        if (mArriving.isKnown()) leaving.allow(withoutCrop(*input, mArriving.first()));
        if (leaving.fits(*out)) return;
        reportSize(mInspection, kCaptureSizeRule, *output, *out, leaving,
                   name + " hands on " + extentText(*out) + ", but what it takes, minus crop, is " +
                       extentText(leaving.first()) + "; expected " + extentText(leaving.first()));
        mInspection.allow(*output, leaving.first());
    }

    GraphInspection& mInspection;
    const GraphConfigNode& mSource;
    Arriving mArriving;
};

} // namespace

void inspectCapture(GraphInspection& inspection)
{
    for (const GraphConfigNode* const node : inspection.nodes()) {
        const bool isSource = textOf(*node, NUXO_KEY_TYPE) == "source" && isOn(*node);
        if (isSource) CaptureInspection(inspection, *node).run();
    }
}

} // namespace NuxoTool
