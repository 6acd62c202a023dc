// SPDX-License-Identifier: Apache-2.0
#include "Benchmarks.h"
#include "Texts.h"
#include "Tokenizer.h"
#include "Trees.h"

#include <memory>
#include <stdexcept>

#include <libxml/parser.h>
#include <pugixml.hpp>
#include <tinyxml2.h>

namespace bench {

namespace {

constexpr size_t kLargeSettings = 3663; // 10 MB
constexpr size_t kSmallSettings = 23;   // 64 KB
constexpr size_t kSmallRuns = 40;
constexpr int kSamples = 11;
constexpr int kManySamples = 61; // for what is short enough to be disturbed by little
constexpr const char* kTokenizer = "the bare tokenizer";

size_t elementsOf(size_t settings)
{
    return settings * kElementsPerSetting + 1;
}

std::string largeFile(const Context& context)
{
    return context.files.plain("large_settings.xml", [] { return settingsFile(kLargeSettings); });
}

std::string smallFile(const Context& context)
{
    return context.files.plain("small_settings.xml", [] { return settingsFile(kSmallSettings); });
}

std::string compressedFile(const Context& context)
{
    return context.files.compressed("large_settings.xml.gz", [] { return settingsFile(kLargeSettings); });
}

// Parsing with the library; the tree is freed untimed.
Side ourParse(const std::string& path, Tree& tree, size_t runs = 1)
{
    return {[&tree, path] { tree = parseFile(path); }, [&tree] { tree.reset(); }, runs};
}

struct XmlDocDeleter {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using XmlDocument = std::unique_ptr<xmlDoc, XmlDocDeleter>;

// XML_PARSE_HUGE lifts limits that would not matter here, so it is left out; everything else is as it comes.
Side libxml2Parse(const std::string& path, XmlDocument& document)
{
    const auto run = [&document, path] {
        document.reset(xmlReadFile(path.c_str(), nullptr, 0));
        if (document == nullptr) throw std::runtime_error("libxml2 refuses a generated file");
    };
    return {run, [&document] { document.reset(); }};
}

Side pugixmlParse(const std::string& path, std::unique_ptr<pugi::xml_document>& document)
{
    const auto run = [&document, path] {
        document = std::make_unique<pugi::xml_document>();
        if (!document->load_file(path.c_str())) throw std::runtime_error("pugixml refuses a generated file");
    };
    return {run, [&document] { document.reset(); }};
}

Side tinyxml2Parse(const std::string& path, std::unique_ptr<tinyxml2::XMLDocument>& document)
{
    const auto run = [&document, path] {
        document = std::make_unique<tinyxml2::XMLDocument>();
        if (document->LoadFile(path.c_str()) != tinyxml2::XML_SUCCESS)
            throw std::runtime_error("tinyxml2 refuses a generated file");
    };
    return {run, [&document] { document.reset(); }};
}

// Heap bytes that the result of one parse takes, for each element.
double bytesPerElement(const Side& parse)
{
    const size_t before = heapInUse();
    parse.run();
    const size_t after = heapInUse();
    parse.tidyUp();
    return static_cast<double>(after - before) / static_cast<double>(elementsOf(kLargeSettings));
}

void addAgainstTokenizer(Context& context)
{
    add(context, "parse/plain_10MB/tokenizer", kSamples, [&context](benchmark::State& state) {
        const std::string path = largeFile(context);
        Tree tree;
        const Side reference = {[path] { tokenizeFile(path); }};
        const Comparison result = compare(state, ourParse(path, tree), reference);
        context.bars.add("parse 10 MB, times the bare tokenizer", result.ratio, atMost(1.45, 1.30));
        context.bars.add("parse 10 MB, heap bytes an element", bytesPerElement(ourParse(path, tree)), atMost(350));
    });
}

// Shows a peer's heap too; only its time has a bar.
template <typename Document>
void addAgainstPeer(Context& context, const std::string& peer, Side (*parse)(const std::string&, Document&),
                    const std::optional<Limit>& limit)
{
    add(context, "parse/plain_10MB/" + peer, kSamples, [=, &context](benchmark::State& state) {
        const std::string path = largeFile(context);
        Tree tree;
        Document document;
        const Side reference = parse(path, document);
        const Comparison result = compare(state, ourParse(path, tree), reference);
        context.bars.add("parse 10 MB, times " + peer, result.ratio, limit);
        context.bars.add("  " + peer + ", heap bytes an element", bytesPerElement(reference));
    });
}

// What a large document costs depends much on where its memory comes from. The figures with a bar leave the allocator to
// itself, as any program that parses again and again does; these show both ends of the range, for information.
void addInHeap(Context& context, const std::string& peer, void (*prepareHeap)(), const std::string& heap)
{
    const std::string name = "times " + peer + ", " + heap;
    add(context, "parse/plain_10MB/" + peer + ", " + heap, kSamples, [=, &context](benchmark::State& state) {
        const std::string path = largeFile(context);
        Tree tree;
        XmlDocument document;
        Side ours = ourParse(path, tree);
        Side reference = libxml2Parse(path, document);
        if (peer == kTokenizer) reference = {[path] { tokenizeFile(path); }};
        ours.prepareHeap = reference.prepareHeap = prepareHeap;
        context.bars.add("  " + name, compare(state, ours, reference).ratio);
    });
}

void addInBothHeaps(Context& context, const std::string& peer)
{
    addInHeap(context, peer, freeHeap, "in fresh memory");
    addInHeap(context, peer, keepHeap, "in used memory");
}

void addSmall(Context& context)
{
    add(context, "parse/plain_64KB/tokenizer", kManySamples, [&context](benchmark::State& state) {
        const std::string path = smallFile(context);
        Tree tree;
        const Side reference = {[path] { tokenizeFile(path); }, [] {}, kSmallRuns};
        const Comparison result = compare(state, ourParse(path, tree, kSmallRuns), reference);
        context.bars.add("parse 64 KB, times the bare tokenizer", result.ratio, atMost(1.25));
    });
}

void addCompressed(Context& context)
{
    add(context, "parse/gzip_10MB/tokenizer", kSamples, [&context](benchmark::State& state) {
        const std::string path = compressedFile(context);
        Tree tree;
        const Side reference = {[path] { tokenizeCompressedFile(path); }};
        const Comparison result = compare(state, ourParse(path, tree), reference);
        context.bars.add("parse 10 MB gzip, times inflate and tokenizer", result.ratio, atMost(1.45, 1.30));
    });
}

} // namespace

void addParseBenchmarks(Context& context)
{
    addAgainstTokenizer(context);
    addInBothHeaps(context, kTokenizer);
    addAgainstPeer<XmlDocument>(context, "libxml2 (DOM)", libxml2Parse, atMost(0.75));
    addInBothHeaps(context, "libxml2 (DOM)");
    addAgainstPeer<std::unique_ptr<pugi::xml_document>>(context, "pugixml", pugixmlParse, std::nullopt);
    addAgainstPeer<std::unique_ptr<tinyxml2::XMLDocument>>(context, "tinyxml2", tinyxml2Parse, std::nullopt);
    addSmall(context);
    addCompressed(context);
}

} // namespace bench
