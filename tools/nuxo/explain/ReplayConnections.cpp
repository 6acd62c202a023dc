// SPDX-License-Identifier: Apache-2.0
#include "explain/Replay.h"
#include "explain/TracedMerge.h"

#include <nuxo/tree/ItemUID.h>

// What connections do to the nodes that they join.

namespace NuxoTool {

using NUXO::ItemUID;

Replay::End::End(const std::string& text)
{
    const ItemUID path(text);
    node = path[0];
    port = path[1];
    hasPort = path.size() > 1;
}

void Replay::connectAll(const TracedNode& graph)
{
    for (const TracedNode* const element : graph.children()) {
        const TracedItem* const source = element->find(NUXO_KEY_SOURCE);
        const TracedItem* const sink = element->find(NUXO_KEY_SINK);
        if (element->item()->key != NUXO_KEY_CONNECTION || source == nullptr || sink == nullptr) continue;
        const Link link = {*element, *source, *sink};
        const std::string* const isStatic = element->textOf(NUXO_KEY_STATIC);
        if (isStatic != nullptr && *isStatic != "false") {
            connectStatic(link);
        } else {
            connectDynamic(link);
        }
    }
}

// The first one that is left out tells an end best why it has no peer.
void Replay::omit(const Link& link, const std::string& why)
{
    const Omission omission = {link.element.item()->source(), why};
    mOmissions.emplace(link.sourceItem.text, omission);
    mOmissions.emplace(link.sinkItem.text, omission);
}

void Replay::connectDynamic(const Link& link)
{
    const End source(link.sourceItem.text);
    End sink(link.sinkItem.text);
    const TracedNode* settingsItem = mSettings->child(source.node);
    if (settingsItem != nullptr && source.hasPort) settingsItem = settingsItem->child(source.port);
    if (settingsItem == nullptr) return omit(link, "the setting has no " + link.sourceItem.text);
    TracedNode* const sourceNode = copyDescriptorNode(source.node);
    if (sourceNode == nullptr) return;
    if (settingsItem->integerOf(NUXO_KEY_ENABLED) == 0) {
        return omit(link, "the setting disables " + link.sourceItem.text);
    }
    const TracedItem* redirection = nullptr;
    if (!sink.hasPort && settingsItem->textOf(NUXO_KEY_PEER) != nullptr) {
        redirection = settingsItem->find(NUXO_KEY_PEER);
        sink.node = ItemUID::str2key(redirection->text);
    }
    if (mSettings->child(sink.node) == nullptr) {
        const std::string& wanted = redirection == nullptr ? link.sinkItem.text : redirection->text;
        return omit(link, "the setting has no " + wanted.substr(0, wanted.find(':')));
    }
    join(link, source, *sourceNode, sink, false, redirection);
}

void Replay::connectStatic(const Link& link)
{
    const End source(link.sourceItem.text);
    TracedNode* const sourceNode = copyDescriptorNode(source.node);
    if (sourceNode != nullptr) join(link, source, *sourceNode, End(link.sinkItem.text), true, nullptr);
}

void Replay::join(const Link& link, const End& source, TracedNode& sourceNode, const End& sink, bool isStatic,
                  const TracedItem* redirection)
{
    TracedNode* const sinkNode = copyDescriptorNode(sink.node);
    if (sinkNode == nullptr) return;
    if (!sink.hasPort) {
        TracedItem& direction = sinkNode->insertAttribute(NUXO_KEY_DIRECTION);
        direction.apply({StepKind::Connection, "a sink is an input"}, link.element.item()->source());
    }
    TracedNode* const sourceEnd = source.hasPort ? sourceNode.child(source.port) : &sourceNode;
    TracedNode* const sinkEnd = sink.hasPort ? sinkNode->child(sink.port) : sinkNode;
    if (sourceEnd == nullptr || sinkEnd == nullptr) return;
    if (!sink.hasPort && isStatic) {
        propagate(sourceNode, *sinkEnd, NUXO_KEY_EXEC_CTX_ID);
        propagate(sourceNode, *sinkEnd, NUXO_KEY_CONTENT_TYPE);
    } else if (!sink.hasPort) {
        claimVirtualSink(*sinkEnd, sourceNode);
    }
    addPeer(*sourceEnd, link.sinkItem, link, redirection);
    addPeer(*sinkEnd, link.sourceItem, link, nullptr);
}

void Replay::addPeer(TracedNode& end, const TracedItem& other, const Link& link, const TracedItem* redirection)
{
    TracedItem& peer = end.insertAttribute(NUXO_KEY_PEER);
    peer.position = link.element.item()->position;
    peer.text = other.text;
    peer.apply({StepKind::Connection, ""}, other.source());
    if (redirection == nullptr) return;
    peer.text = redirection->text;
    peer.apply({StepKind::Settings, "redirects the connection"}, redirection->source());
}

// A sink belongs to the stream of its source unless it says otherwise.
void Replay::claimVirtualSink(TracedNode& sink, const TracedNode& source)
{
    const TracedItem* const stream = source.find(NUXO_KEY_STREAM_ID);
    if (stream == nullptr || sink.integerOf(NUXO_KEY_STREAM_ID)) return;
    sink.insert(copyStamped(*stream, {StepKind::Propagated, "from " + pathOf(source)}));
}

void Replay::propagate(const TracedNode& from, TracedNode& to, uint32_t key)
{
    const TracedItem* const item = from.find(key);
    if (item == nullptr || item->isNode()) return;
    const Stamp stamp = {StepKind::Propagated, "from " + pathOf(from)};
    TracedItem* const present = to.find(key);
    if (present == nullptr) {
        to.insert(copyStamped(*item, stamp));
        return;
    }
    if (present->isNode()) return;
    if (!obeyTracedOptions(to, key, item->valueText())) {
        present->refuse({stamp.kind, stamp.note + "; has its own, and no option allows another"}, *item);
        return;
    }
    present->integer = item->integer;
    present->text = item->text;
    present->position = item->position;
    present->apply(stamp, item->source());
}

} // namespace NuxoTool
