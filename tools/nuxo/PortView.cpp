// SPDX-License-Identifier: Apache-2.0
#include "PortView.h"

#include "FormatNames.h"
#include "LibraryFindings.h"
#include "LibraryLog.h"
#include "Origins.h"
#include "TreeView.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/formats/NUXOFormats.h>
#include <nuxo/tree/NodeIterator.h>

#include <map>

namespace NuxoTool {

using NUXO::GraphCameraUtil;
using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

constexpr const char* kPixels = "pixel_data";

bool hasText(const IGraphConfig* node, uint32_t key)
{
    std::string text;
    return node != nullptr && node->getValue(key, text) == StatusOk;
}

bool hasInteger(const IGraphConfig* node, uint32_t key)
{
    int value = 0;
    return node != nullptr && node->getValue(key, value) == StatusOk;
}

// Whether an end of a connection is in an execution context or a stream.
bool hasContext(const IGraphConfig& end)
{
    // portGetStreamId would log an error for those without.
    return GraphCameraUtil::portGetExecCtxId(&end) >= 0 || GraphCameraUtil::portGetKey(&end, NUXO_KEY_STREAM_ID) >= 0;
}

// Asks the library about one port after the other.
class PortViewer {
public:
    explicit PortViewer(Session& session) : mSession(session) { NUXOFormats::initNUXOFormats(); }

    PortView view(const GraphConfigNode& port)
    {
        takeLibraryLog();
        PortView view;
        view.item = &port;
        fillNames(view);
        view.isOutput = GraphCameraUtil::portGetDirection(&port) != 0;
        view.content = GraphCameraUtil::portGetContentType(&port);
        const IGraphConfig* const peer = fillPeers(view);
        view.isEdge = edgeOf(port, peer);
        reportLogLines(mSession, contextOf(view, 0));
        const int status = fillFormat(view);
        if (mustBeComplete(view, peer)) {
            reportFormat(view, peer, status);
        } else {
            takeLibraryLog();
        }
        return view;
    }

private:
    static LogContext contextOf(const PortView& view, uint32_t attribute)
    {
        return {"port", view.item, endName(*view.item), attribute};
    }

    // @param status  of asking for size and format
    void reportFormat(const PortView& view, const IGraphConfig* peer, int status)
    {
        if (status != StatusOk && reportNegative(view, peer)) return;
        if (status != StatusOk) {
            reportFailure(mSession, contextOf(view, 0), "reading size and format of " + endName(*view.item), status,
                          "a complete port");
            return;
        }
        const std::string own = textOf(*view.item, NUXO_KEY_FORMAT);
        const std::string name = own.empty() && peer != nullptr ? textOf(*peer, NUXO_KEY_FORMAT) : own;
        const LogContext context = contextOf(view, NUXO_KEY_FORMAT);
        if (!view.format.empty() && formatNamed(name) == nullptr) reportUnknownFormat(view, name, context);
        reportLogLines(mSession, context);
    }

    // The library says nothing of what it refuses for being negative. False when that was not the reason.
    bool reportNegative(const PortView& view, const IGraphConfig* peer)
    {
        struct Size {
            uint32_t key;
            const char* name;
        };
        constexpr Size sizes[] = {{NUXO_KEY_WIDTH, "width"}, {NUXO_KEY_HEIGHT, "height"}, {NUXO_KEY_BPL, "bpl"}};
        const IGraphConfig* const port = view.item;
        for (const Size& size : sizes) {
            const IGraphConfig* const holder = peer == nullptr || hasInteger(port, size.key) ? port : peer;
            const int value = integerOf(*holder, size.key, 0);
            if (value >= 0) continue;
            takeLibraryLog();
            const Location place = placeOf(mSession, {"port", holder, "", size.key});
            // Construction gives a port the values of the one that feeds it: both then stand at one place.
            if (!mSession.reportedLines.insert(originText(place) + ' ' + size.name).second) return true;
            mSession.findings.error("bad-size", place,
                                    endName(*holder) + ": " + size.name + " is " + std::to_string(value) +
                                        "; expected 0 or more");
            return true;
        }
        return false;
    }

    // In place of what the library says of its search for a substitute.
    void reportUnknownFormat(const PortView& view, const std::string& name, const LogContext& context)
    {
        mSession.findings.error("unknown-format", placeOf(mSession, context),
                                context.subject + ": '" + name + "' names no format and is taken for " + view.format +
                                    "; expected one that nuxo formats lists" + formatSuggestion(name, false));
        mSession.reportedLines.insert("Error: Couldn't find format " + name +
                                      " from the formats XML. Fallback to fourcc.");
        mSession.reportedLines.insert("Error: Couldn't find  format by fourcc. Try defaulting to YUV420_8_SP(NV12)");
        const auto code = static_cast<int32_t>(fourccOf(name));
        mSession.reportedLines.insert("Could not find format with name " + name);
        mSession.reportedLines.insert("Could not find format with name"); // lines lose blanks at their end
        mSession.reportedLines.insert("Could not find format with fourcc " + std::to_string(code));
    }

    static void fillNames(PortView& view)
    {
        if (isSink(*view.item)) {
            view.node = nameOf(*view.item);
            return;
        }
        static_cast<void>(NUXO::getPgAndPortNames(*view.item, view.node, view.port)); // stay empty without names
        if (view.port.empty()) view.port = nameOf(*view.item);
    }

    static const IGraphConfig* fillPeers(PortView& view)
    {
        IGraphConfig* peer = nullptr;
        if (GraphCameraUtil::portGetPeer(view.item, &peer) != StatusOk) return nullptr;
        view.peer = endName(*peer);
        bool isFirst = true;
        for (auto it = view.item->begin(); it != view.item->end(); ++it) {
            std::string text;
            if (it->first != NUXO_KEY_PEER || it->second->getValue(text) != StatusOk) continue;
            if (!isFirst) view.otherPeers.push_back(text);
            isFirst = false;
        }
        return peer;
    }

    // Nothing for a virtual sink, where a context ends anyway, and where an end is in no context.
    static std::optional<bool> edgeOf(const GraphConfigNode& port, const IGraphConfig* peer)
    {
        if (peer == nullptr || isSink(port) || !hasContext(port)) return std::nullopt;
        if (!GraphCameraUtil::portIsVirtual(peer) && !hasContext(*peer)) return std::nullopt;
        return GraphCameraUtil::isEdgePort(&port);
    }

    // Statistics and ports that lead nowhere may say less than a port that carries pixels, and virtual sinks of static
    // connections have no `id`, which the library takes for errors.
    static bool mustBeComplete(const PortView& view, const IGraphConfig* peer)
    {
        const auto has = [&view, peer](bool (*test)(const IGraphConfig*, uint32_t), uint32_t key) {
            return test(view.item, key) || test(peer, key);
        };
        if (view.port.empty() && !hasInteger(view.item, NUXO_KEY_ID)) return false;
        if (peer != nullptr && view.content == kPixels) return true;
        return has(hasInteger, NUXO_KEY_WIDTH) && has(hasInteger, NUXO_KEY_HEIGHT) && has(hasText, NUXO_KEY_FORMAT);
    }

    static int fillFormat(PortView& view)
    {
        unsigned int stage = 0;
        unsigned int terminal = 0;
        unsigned int enabled = 0;
        unsigned int width = 0;
        unsigned int height = 0;
        unsigned int fourcc = 0;
        unsigned int stride = 0;
        unsigned int bitsPerPixel = 0;
        view.state = stateOf(*view.item);
        if (GraphCameraUtil::portGetFourCCInfo(view.item, stage, terminal) == StatusOk) view.terminal = terminal;
        const int status = GraphCameraUtil::portGetFormat(view.item, enabled, terminal, width, height, fourcc, stride,
                                                          bitsPerPixel); // what is missing stays 0
        NUXOFormats::qv_format_t format;
        if (width != 0) view.width = width;
        if (height != 0) view.height = height;
        if (fourcc != 0 && NUXOFormats::getFormatByFourcc(fourcc, format) == StatusOk) {
            view.format = format.name;
            view.fourcc = fourccText(fourcc);
            if (view.width) view.stride = stride;
            if (view.width && view.height) {
                view.bufferSize = NUXOFormats::calculateBufferSize(format, width, height, stride, nullptr, nullptr);
            }
        }
        return status;
    }

    Session& mSession;
};

} // namespace

const char* PortState::text() const
{
    if (!isEnabled) return "no";
    return isPrivate ? "private" : "yes";
}

PortState stateOf(const IGraphConfig& port)
{
    unsigned int enabled = 1;
    unsigned int terminal = 0;
    static_cast<void>(GraphCameraUtil::portGetInfo(&port, enabled, terminal)); // may fail for want of a terminal alone
    return {enabled != 0, integerOf(port, NUXO_KEY_PRIVATE, 0) != 0};
}

std::string nameOf(const IGraphConfig& node)
{
    const std::string name = textOf(node, NUXO_KEY_NAME);
    return name.empty() ? node.getName() : name;
}

bool isSink(const IGraphConfig& node)
{
    return textOf(node, NUXO_KEY_TYPE) == "sink";
}

std::string endName(const IGraphConfig& end)
{
    const IGraphConfig* const node = end.getAncestor();
    return isSink(end) || node == nullptr ? nameOf(end) : nameOf(*node) + ':' + nameOf(end);
}

std::vector<const GraphConfigNode*> childrenOfType(const GraphConfigNode& node, uint32_t type)
{
    // The vocabulary is searched for the name of a key from its start.
    static std::map<uint32_t, std::string> names;
    auto name = names.find(type);
    if (name == names.end()) name = names.emplace(type, NUXO::ItemUID::key2str(type)).first;
    std::vector<const GraphConfigNode*> children;
    NUXO::NodeIterator cursor(&node);
    while (const IGraphConfig* const child = cursor.iterateNodes(NUXO_KEY_TYPE, name->second)) {
        children.push_back(dynamic_cast<const GraphConfigNode*>(child));
    }
    return children;
}

std::vector<PortView> viewPorts(Session& session, const GraphConfigNode& graph)
{
    PortViewer viewer(session);
    std::vector<PortView> views;
    NUXO::NodeIterator cursor(&graph);
    while (const IGraphConfig* const child = cursor.iterateDescendants()) {
        const auto& node = dynamic_cast<const GraphConfigNode&>(*child);
        if (isSink(node) && hasText(&node, NUXO_KEY_PEER)) views.push_back(viewer.view(node));
        for (const GraphConfigNode* const port : childrenOfType(node, NUXO_KEY_PORT))
            views.push_back(viewer.view(*port));
    }
    return views;
}

} // namespace NuxoTool
