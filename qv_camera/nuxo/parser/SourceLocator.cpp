// SPDX-License-Identifier: Apache-2.0
#include <nuxo/NuxoStatus.h>
#include <nuxo/parser/SourceLocator.h>
#include <nuxo/tree/TreeAccess.h>

#include <algorithm>
#include <cctype>
#include <new>
#include <string_view>
#include <vector>

#include <zlib.h>

namespace NUXO {

namespace {

constexpr size_t kReadSize = 4096; // the parser's: of a damaged gzip file it sees as much

struct GzDeleter {
    void operator()(gzFile file) const { gzclose(file); }
};

// Reads a file, plain or gzip; false when that fails.
bool readText(const char* name, std::string& text)
{
    const std::unique_ptr<gzFile_s, GzDeleter> file(gzopen(name, "rb"));
    if (file == nullptr) return false;
    std::vector<char> buffer(kReadSize);
    for (;;) {
        const int count = gzread(file.get(), buffer.data(), static_cast<unsigned>(buffer.size()));
        if (count < 0) return !text.empty(); // what stands before the damage can still be shown
        if (count == 0) return true;
        text.append(buffer.data(), static_cast<size_t>(count));
    }
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

size_t skipBlanks(std::string_view text, size_t at)
{
    while (at < text.size() && isBlank(text[at])) ++at;
    return at;
}

size_t endOfName(std::string_view text, size_t at)
{
    while (at < text.size() && !isBlank(text[at]) && text[at] != '=' && text[at] != '>' && text[at] != '/') ++at;
    return at;
}

uint32_t keyOfName(std::string_view name)
{
    std::string lowered(name);
    for (char& c : lowered) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ItemUID::str2key(lowered);
}

// Offset of the first attribute with the key in the tag that starts at @p tag, which itself is the answer when there is
// none. The document was parsed before, so its tags are well formed; if it changed since, the scan just ends early.
size_t findAttribute(std::string_view text, size_t tag, uint32_t key)
{
    size_t at = endOfName(text, std::min(tag + 1, text.size()));
    for (;;) {
        at = skipBlanks(text, at);
        const size_t nameEnd = endOfName(text, at);
        if (nameEnd == at) return tag;
        if (keyOfName(text.substr(at, nameEnd - at)) == key) return at;
        const size_t quote = skipBlanks(text, std::min(skipBlanks(text, nameEnd) + 1, text.size()));
        if (quote >= text.size()) return tag;
        const size_t closing = text.find(text[quote], quote + 1);
        if (closing == std::string_view::npos) return tag;
        at = closing + 1;
    }
}

} // namespace

struct SourceLocator::Document {
    std::string text;
    std::vector<size_t> lineStarts;
    bool readable = false;

    void indexLines()
    {
        lineStarts.push_back(0);
        for (size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', end + 1))
            lineStarts.push_back(end + 1);
        readable = true;
    }
};

SourceLocator::SourceLocator() = default;
SourceLocator::~SourceLocator() = default;

// The document's text, read when first asked for; null when it cannot be read.
SourceLocator::Document* SourceLocator::document(const std::string& name)
{
    std::unique_ptr<Document>& slot = mDocuments[name];
    if (slot == nullptr) {
        auto fresh = std::make_unique<Document>();
        if (readText(name.c_str(), fresh->text)) fresh->indexLines();
        slot = std::move(fresh);
    }
    return slot->readable ? slot.get() : nullptr;
}

int32_t SourceLocator::addText(const std::string& name, const std::string& text)
{
    try {
        auto fresh = std::make_unique<Document>();
        fresh->text = text;
        fresh->indexLines();
        mDocuments[name] = std::move(fresh);
    } catch (const std::bad_alloc&) {
        return StatusNoMemory;
    }
    return StatusOk;
}

int32_t SourceLocator::locateItem(SourcePosition position, bool isAttribute, uint32_t key, SourceLocation& location)
{
    if (!position.known()) return StatusNoValue;
    try {
        const std::string file = getSourceDocument(position.document);
        const Document* const source = document(file);
        if (source == nullptr || position.offset >= source->text.size()) return StatusMissingObject;
        const size_t offset = isAttribute ? findAttribute(source->text, position.offset, key) : position.offset;
        const auto next = std::upper_bound(source->lineStarts.begin(), source->lineStarts.end(), offset);
        location.file = file; // may throw, so it comes first
        location.line = static_cast<uint32_t>(next - source->lineStarts.begin());
        location.column = static_cast<uint32_t>(offset - *(next - 1)) + 1;
    } catch (const std::bad_alloc&) {
        return StatusNoMemory;
    }
    return StatusOk;
}

int32_t SourceLocator::locate(const IGraphConfig* node, SourceLocation& location)
{
    if (node == nullptr) return StatusBadArgument;
    return locateItem(getSourcePosition(node), false, NUXO_KEY_NA, location);
}

int32_t SourceLocator::locate(const IGraphConfig* node, uint32_t key, SourceLocation& location)
{
    if (node == nullptr) return StatusBadArgument;
    const GraphConfigNode* const self = asNode(node);
    const ItemMap::const_iterator item = self == nullptr ? nullptr : TreeAccess::items(*self).find(key);
    if (item == nullptr || item == self->end()) return StatusNoValue;
    return locate(*item, location);
}

int32_t SourceLocator::locate(const ItemEntry& item, SourceLocation& location)
{
    return locateItem(getSourcePosition(item), asNode(item.second) == nullptr, item.first, location);
}

int32_t SourceLocator::lineText(const std::string& file, uint32_t line, std::string& text)
{
    try {
        const Document* const source = document(file);
        if (source == nullptr || line == 0 || line > source->lineStarts.size()) return StatusMissingObject;
        const size_t start = source->lineStarts[line - 1];
        const size_t end = std::min(source->text.find('\n', start), source->text.size());
        text = source->text.substr(start, end - start);
        if (!text.empty() && text.back() == '\r') text.pop_back();
    } catch (const std::bad_alloc&) {
        return StatusNoMemory;
    }
    return StatusOk;
}

} // namespace NUXO
