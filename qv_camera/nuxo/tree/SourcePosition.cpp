// SPDX-License-Identifier: Apache-2.0
#include <nuxo/tree/Documents.h>
#include <nuxo/tree/SourcePosition.h>
#include <nuxo/tree/TreeAccess.h>

#include <atomic>
#include <memory>
#include <new>
#include <string>

namespace NUXO {

namespace {

constexpr uint32_t kMostDocuments = 0xFFFF; // positions keep the number in 16 bits

struct Document {
    std::string name;
    uint32_t number;
    const Document* older;
};

// Names are only ever added, at the head, so readers and other writers need no lock.
class DocumentList {
public:
    ~DocumentList()
    {
        for (const Document* document = mNewest.load(); document != nullptr;) {
            const std::unique_ptr<const Document> doomed(document);
            document = doomed->older;
        }
    }

    uint32_t add(const char* name)
    {
        std::unique_ptr<Document> fresh;
        const Document* newest = mNewest.load(std::memory_order_acquire);
        do {
            const Document* const known = findByName(newest, name);
            if (known != nullptr) return known->number;
            const uint32_t number = newest == nullptr ? 1 : newest->number + 1;
            if (number > kMostDocuments) return 0;
            if (fresh == nullptr) fresh = std::make_unique<Document>(Document{name, 0, nullptr});
            fresh->number = number;
            fresh->older = newest;
        } while (!mNewest.compare_exchange_weak(newest, fresh.get(), std::memory_order_acq_rel));
        return fresh.release()->number;
    }

    const char* name(uint32_t number) const
    {
        const Document* document = mNewest.load(std::memory_order_acquire);
        while (document != nullptr && document->number != number) document = document->older;
        return document == nullptr ? "" : document->name.c_str();
    }

private:
    static const Document* findByName(const Document* newest, const char* name)
    {
        const Document* document = newest;
        while (document != nullptr && document->name != name) document = document->older;
        return document;
    }

    std::atomic<const Document*> mNewest{nullptr};
};

DocumentList documents;

} // namespace

uint32_t registerDocument(const char* name)
{
    try {
        return documents.add(name);
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

const char* getSourceDocument(uint32_t document)
{
    return document == 0 ? "" : documents.name(document);
}

SourcePosition getSourcePosition(const IGraphConfig* node)
{
    const GraphConfigNode* const self = asNode(node);
    const GraphConfigNode* const parent = self == nullptr ? nullptr : TreeAccess::ancestor(*self);
    if (parent == nullptr) return {};
    const ItemMap& items = TreeAccess::items(*parent);
    for (ItemMap::const_iterator it = items.begin(); it != items.end(); ++it) {
        if (it->second == self) return ItemMap::position(*it);
    }
    return {};
}

SourcePosition getSourcePosition(const ItemEntry& item)
{
    return ItemMap::position(item);
}

SourcePosition getSourcePosition(const IGraphConfig* node, uint32_t key)
{
    const GraphConfigNode* const self = asNode(node);
    return self == nullptr ? SourcePosition() : positionOf(*self, key);
}

} // namespace NUXO
