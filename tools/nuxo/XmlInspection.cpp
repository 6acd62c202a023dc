// SPDX-License-Identifier: Apache-2.0
#include "XmlInspection.h"

#include "FileBytes.h"
#include "Text.h"

#include <nuxo/parser/NUXOParser.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

#include <expat.h>

namespace NuxoTool {

namespace {

struct FreeParser {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using ParserPointer = std::unique_ptr<std::remove_pointer_t<XML_Parser>, FreeParser>;

struct OpenElement {
    std::string name;
    uint64_t offset;
};

struct Inspector {
    explicit Inspector(XML_Parser xmlParser) : parser(xmlParser) {}

    XML_Parser parser;
    std::string rootElement;
    uint64_t rootOffset = 0;
    std::vector<OpenElement> open;
    // What the inspector itself objects to; the rule is empty when there is nothing.
    std::string rule;
    std::string text;
    uint64_t problemOffset = 0;
};

uint64_t currentOffset(XML_Parser parser)
{
    const XML_Index index = XML_GetCurrentByteIndex(parser);
    return index > 0 ? static_cast<uint64_t>(index) : 0;
}

Location locationOf(const std::string& path, uint64_t offset)
{
    const LineColumn place = locateByte(path, offset);
    Location location;
    location.file = path;
    location.line = place.line;
    location.column = place.column;
    return location;
}

void stopWith(Inspector& inspector, const char* rule, const std::string& text)
{
    inspector.rule = rule;
    inspector.text = text;
    inspector.problemOffset = currentOffset(inspector.parser);
    XML_StopParser(inspector.parser, XML_FALSE);
}

// Named descriptor elements get their element name as `type`, which collides with a `type` that came before.
bool hasTypeBeforeName(const char** attributes)
{
    bool typeSeen = false;
    for (; *attributes != nullptr; attributes += 2) {
        const std::string name = lowerCase(*attributes);
        if (name == "name") return typeSeen;
        typeSeen = typeSeen || name == "type";
    }
    return false;
}

void checkElement(Inspector& inspector, const std::string& name, const char** attributes)
{
    if (inspector.open.size() > NUXO::NUXOParser::kMaxDepth) {
        stopWith(inspector, "too-deep",
                 "element '" + name + "' is nested too deeply; expected at most " +
                     std::to_string(NUXO::NUXOParser::kMaxDepth) + " nested elements");
        return;
    }
    if (inspector.rootElement == "graph_descriptor" && name != "node" && hasTypeBeforeName(attributes)) {
        stopWith(inspector, "type-before-name",
                 "element '" + name + "' has 'type' before 'name'; expected no 'type', which the element's name gives");
    }
}

void openElement(void* data, const char* name, const char** attributes)
{
    Inspector& inspector = *static_cast<Inspector*>(data);
    try {
        const std::string lowerName = lowerCase(name);
        const uint64_t offset = currentOffset(inspector.parser);
        const bool isRoot = inspector.rootElement.empty();
        if (isRoot) {
            inspector.rootElement = lowerName;
            inspector.rootOffset = offset;
        }
        inspector.open.push_back({lowerName, offset});
        if (!isRoot) checkElement(inspector, lowerName, attributes);
    } catch (const std::bad_alloc&) {
        XML_StopParser(inspector.parser, XML_FALSE);
    }
}

void closeElement(void* data, const char* /*name*/)
{
    static_cast<Inspector*>(data)->open.pop_back();
}

// Feeds the whole file; false when the parser stopped.
bool feed(XML_Parser parser, FileBytes& bytes)
{
    std::vector<char> piece(FileBytes::kPieceSize);
    for (;;) {
        const size_t count = bytes.read(piece.data());
        if (count == 0 && !bytes.trouble().empty()) return true;
        const int isFinal = count == 0 ? 1 : 0;
        if (XML_Parse(parser, piece.data(), static_cast<int>(count), isFinal) != XML_STATUS_OK) return false;
        if (isFinal == 1) return true;
    }
}

void reportMalformed(const Inspector& inspector, const std::string& path, Findings& findings)
{
    const XML_Error error = XML_GetErrorCode(inspector.parser);
    if (error == XML_ERROR_NO_MEMORY || (error == XML_ERROR_ABORTED && inspector.rule.empty())) throw std::bad_alloc();
    if (!inspector.rule.empty()) {
        findings.error(inspector.rule, locationOf(path, inspector.problemOffset), inspector.text);
        return;
    }
    const char* const explanation = XML_ErrorString(error);
    findings.error("malformed", locationOf(path, currentOffset(inspector.parser)),
                   std::string(explanation != nullptr ? explanation : "unknown XML error") +
                       "; expected well-formed XML");
    const bool isUnclosed =
        error == XML_ERROR_NO_ELEMENTS || error == XML_ERROR_TAG_MISMATCH || error == XML_ERROR_UNCLOSED_TOKEN;
    if (!isUnclosed || inspector.open.empty()) return;
    const OpenElement& innermost = inspector.open.back();
    findings.note(locationOf(path, innermost.offset), "element '" + innermost.name + "' is still open");
}

} // namespace

XmlInspection inspectXml(const std::string& path, Findings& findings)
{
    const ParserPointer parser(XML_ParserCreate(nullptr));
    if (parser == nullptr) throw std::bad_alloc();
    Inspector inspector(parser.get());
    XML_SetUserData(parser.get(), &inspector);
    XML_SetElementHandler(parser.get(), openElement, closeElement);

    FileBytes bytes(path);
    XmlInspection result;
    const bool wellFormed = feed(parser.get(), bytes);
    if (!wellFormed) {
        reportMalformed(inspector, path, findings);
    } else if (!bytes.trouble().empty()) {
        findings.error("damaged", inFile(path),
                       "decompression stopped with '" + bytes.trouble() + "'; expected an intact gzip file");
    } else {
        result.complete = true;
    }
    result.rootElement = inspector.rootElement;
    if (!result.rootElement.empty()) result.root = locationOf(path, inspector.rootOffset);
    return result;
}

} // namespace NuxoTool
