// SPDX-License-Identifier: Apache-2.0
// Changes inputs of XML texts at two levels: their bytes as they are, and their elements and attributes as a whole, so that
// most texts stay well-formed and what they mean changes.
#include "support/Fuzzing.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned int seed);

namespace {

using Random = std::minstd_rand;

// A piece of the text.
struct Span {
    size_t start = 0;
    size_t end = 0;
    size_t size() const { return end - start; }
};

struct Attribute {
    Span name;
    Span value;
};

// What a quick look at the text finds; not all of it need be well-formed.
struct Pieces {
    std::vector<Span> elements; ///< from '<' to behind the end tag
    std::vector<Attribute> attributes;
};

bool isName(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

void findAttributes(std::string_view text, Span tag, Pieces& pieces)
{
    for (size_t at = text.find("=\"", tag.start); at < tag.end; at = text.find("=\"", at + 1)) {
        size_t start = at;
        while (start > tag.start && isName(text[start - 1])) --start;
        const size_t end = text.find('"', at + 2);
        if (end >= tag.end) return;
        pieces.attributes.push_back({{start, at}, {at + 2, end}});
        at = end;
    }
}

Pieces findPieces(std::string_view text)
{
    Pieces pieces;
    std::vector<size_t> open;
    for (size_t at = text.find('<'); at != std::string_view::npos; at = text.find('<', at + 1)) {
        const size_t end = text.find('>', at);
        if (end == std::string_view::npos) break;
        const char next = text[at + 1];
        if (next == '!' || next == '?') continue;
        if (next == '/') {
            if (open.empty()) continue;
            pieces.elements.push_back({open.back(), end + 1});
            open.pop_back();
        } else {
            findAttributes(text, {at, end}, pieces);
            if (text[end - 1] == '/') {
                pieces.elements.push_back({at, end + 1});
            } else {
                open.push_back(at);
            }
        }
    }
    return pieces;
}

template <typename Item> const Item& anyOf(const std::vector<Item>& items, Random& random)
{
    return items[random() % items.size()];
}

std::string contentOf(const std::string& text, Span span)
{
    return text.substr(span.start, span.size());
}

void replace(std::string& text, Span span, const std::string& by)
{
    text.replace(span.start, span.size(), by);
}

std::string anyNumber(Random& random)
{
    const char* const numbers[] = {"0",          "1",          "-1",          "2", "100", "4096",
                                   "2147483647", "2147483648", "-2147483648", "x", ""};
    return numbers[random() % std::size(numbers)];
}

void changeElements(std::string& text, const std::vector<Span>& elements, Random& random)
{
    const Span chosen = anyOf(elements, random);
    const Span other = anyOf(elements, random);
    switch (random() % 5) {
    case 0: text.erase(chosen.start, chosen.size()); break;
    case 1: text.insert(chosen.start, contentOf(text, chosen)); break;
    case 2: text.insert(chosen.start, contentOf(text, other)); break;
    case 3: replace(text, chosen, contentOf(text, other)); break;
    default: { // swapped, where neither is in the other
        const auto [first, second] = std::minmax(chosen, other, [](Span a, Span b) { return a.start < b.start; });
        if (first.end > second.start) break;
        const std::string moved = contentOf(text, first);
        const std::string content = contentOf(text, second);
        replace(text, second, moved);
        replace(text, first, content);
    }
    }
}

void changeAttributes(std::string& text, const std::vector<Attribute>& attributes, Random& random)
{
    const Attribute chosen = anyOf(attributes, random);
    const Attribute other = anyOf(attributes, random);
    switch (random() % 6) {
    case 0: replace(text, chosen.value, anyNumber(random)); break;
    case 1: replace(text, chosen.name, contentOf(text, other.name)); break;
    case 2: text.erase(chosen.name.start, chosen.value.end + 1 - chosen.name.start); break;
    case 3:
        text.insert(chosen.name.start, contentOf(text, other.name) + "=\"" + contentOf(text, other.value) + "\" ");
        break;
    default: replace(text, chosen.value, contentOf(text, other.value)); break;
    }
}

} // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned int seed)
{
    Random random(seed);
    if (random() % 4 == 0) return LLVMFuzzerMutate(data, size, maxSize);
    std::string text(reinterpret_cast<const char*>(data), size);
    const size_t changes = 1 + random() % 4;
    for (size_t i = 0; i < changes; ++i) {
        const Pieces pieces = findPieces(text);
        if (pieces.elements.empty() || pieces.attributes.empty()) break;
        if (random() % 2 == 0) {
            changeElements(text, pieces.elements, random);
        } else {
            changeAttributes(text, pieces.attributes, random);
        }
    }
    if (text.empty() || text.size() > maxSize) return LLVMFuzzerMutate(data, size, maxSize);
    std::memcpy(data, text.data(), text.size());
    return text.size();
}
