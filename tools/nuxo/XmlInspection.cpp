// SPDX-License-Identifier: Apache-2.0
#include "XmlInspection.h"

#include "FileBytes.h"
#include "GzipTail.h"
#include "MalformedText.h"
#include "Text.h"
#include "document/Expat.h"

#include <nuxo/parser/NUXOParser.h>

#include <cstdint>
#include <new>
#include <string_view>
#include <vector>

namespace NuxoTool {

namespace {

struct OpenElement {
    std::string name;
    uint64_t offset;
};

struct Inspector {
    explicit Inspector(XML_Parser xmlParser) : parser(xmlParser) {}

    XML_Parser parser;
    std::string rootElement;
    uint64_t rootOffset = 0;
    bool hasElements = false; // below the document's
    std::vector<OpenElement> open;
    // What the inspector itself objects to; the rule is empty when there is nothing.
    std::string rule;
    std::string text;
    uint64_t problemOffset = 0;
};

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
    inspector.problemOffset = expatOffset(inspector.parser);
    XML_StopParser(inspector.parser, XML_FALSE);
}

// A name files a descriptor's element under it, with the element's name as `type` unless that is "node". The library gives
// up a file where a type is there already: one that is written before, or that another name brought, in different case.
void checkNames(Inspector& inspector, const std::string& element, const char** attributes)
{
    bool isNode = element == "node";
    bool hasType = false;
    bool hasName = false;
    for (; *attributes != nullptr; attributes += 2) {
        const std::string name = lowerCase(attributes[0]);
        hasType = hasType || name == "type";
        if (name != "name") continue;
        if (hasType && !isNode) {
            const char* const found = hasName ? "' has 'name' twice, in different case; expected it once"
                                              : "' has 'type' before 'name'; expected no 'type', which the element's "
                                                "name gives";
            stopWith(inspector, hasName ? "duplicate-attribute" : "type-before-name", "element '" + element + found);
            return;
        }
        hasType = hasType || !isNode;
        isNode = std::string_view(attributes[1]) == "node";
        hasName = true;
    }
}

void checkElement(Inspector& inspector, const std::string& name, const char** attributes)
{
    if (inspector.open.size() > NUXO::NUXOParser::kMaxDepth) {
        stopWith(inspector, "too-deep",
                 "element '" + name + "' is nested too deeply; expected at most " +
                     std::to_string(NUXO::NUXOParser::kMaxDepth) + " nested elements");
        return;
    }
    if (inspector.rootElement == "graph_descriptor") checkNames(inspector, name, attributes);
}

void openElement(void* data, const char* name, const char** attributes)
{
    Inspector& inspector = *static_cast<Inspector*>(data);
    try {
        const std::string lowerName = lowerCase(name);
        const uint64_t offset = expatOffset(inspector.parser);
        const bool isRoot = inspector.rootElement.empty();
        if (isRoot) {
            inspector.rootElement = lowerName;
            inspector.rootOffset = offset;
        }
        inspector.hasElements = !isRoot;
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

void throwIfOutOfMemory(const Inspector& inspector)
{
    const XML_Error error = XML_GetErrorCode(inspector.parser);
    if (error == XML_ERROR_NO_MEMORY || (error == XML_ERROR_ABORTED && inspector.rule.empty())) throw std::bad_alloc();
}

void reportMalformed(const Inspector& inspector, const std::string& path, Findings& findings)
{
    const XML_Error error = XML_GetErrorCode(inspector.parser);
    if (!inspector.rule.empty()) {
        findings.error(inspector.rule, locationOf(path, inspector.problemOffset), inspector.text);
        return;
    }
    if (error == XML_ERROR_DUPLICATE_ATTRIBUTE) {
        findings.error("duplicate-attribute", locationOf(path, expatOffset(inspector.parser)),
                       "an attribute stands twice in one element; expected it once, the parser stops here");
        return;
    }
    const Location where = locationOf(path, expatOffset(inspector.parser));
    const SourceLine line = readLines(path, {{where.line, where.column}}).front();
    const std::string openName = inspector.open.empty() ? "" : inspector.open.back().name;
    findings.error("malformed", where, malformedText(error, line.text, line.column, openName));
    const bool isUnclosed =
        error == XML_ERROR_NO_ELEMENTS || error == XML_ERROR_TAG_MISMATCH || error == XML_ERROR_UNCLOSED_TOKEN;
    if (!isUnclosed || inspector.open.empty()) return;
    const OpenElement& innermost = inspector.open.back();
    findings.note(locationOf(path, innermost.offset), "element '" + innermost.name + "' is still open");
}

// Damage often shows as broken XML first. Decompression notices it, at the latest at the end.
bool isDamagedFurtherOn(FileBytes& bytes)
{
    std::vector<char> piece(FileBytes::kPieceSize);
    while (bytes.read(piece.data()) > 0) {}
    return bytes.isDamaged();
}

// What ended the reading of a file.
void reportTrouble(const FileBytes& bytes, const std::string& path, Findings& findings)
{
    if (bytes.isDamaged()) {
        findings.error("damaged", inFile(path),
                       "decompression stopped with '" + bytes.trouble() + "'; expected an intact gzip file");
    } else if (bytes.isTooLarge()) {
        findings.error("too-large", inFile(path), "the text is " + bytes.trouble() + "; expected a graph file");
    } else {
        findings.error("cannot-read", inFile(path), "cannot read: " + bytes.trouble() + "; expected a graph file",
                       ExitCode::InputOutput);
    }
}

void reportTail(const FileBytes& bytes, const std::string& path, Findings& findings)
{
    const uint64_t count = bytes.isCompressed() ? bytesBehindText(path) : 0;
    if (count == 0) return;
    findings.warning("trailing-bytes", inFile(path),
                     (count > FileBytes::kMostBytes ? "more than " : "") + std::to_string(count) +
                         (count == 1 ? " byte follows" : " bytes follow") +
                         " the compressed text, and nobody reads them; expected the end of the file");
}

} // namespace

XmlInspection inspectXml(const std::string& path, Findings& findings)
{
    const ExpatPointer parser = makeExpat();
    Inspector inspector(parser.get());
    XML_SetUserData(parser.get(), &inspector);
    XML_SetElementHandler(parser.get(), openElement, closeElement);

    FileBytes bytes(path);
    XmlInspection result;
    const bool wellFormed = feedExpat(parser.get(), bytes);
    if (!wellFormed) throwIfOutOfMemory(inspector);
    if (!wellFormed && !isDamagedFurtherOn(bytes)) {
        reportMalformed(inspector, path, findings);
        if (bytes.isOnlyNamedCompressed())
            findings.note(inFile(path), "the name ends in 'gz', but the file does not start as gzip files do");
    } else if (!bytes.trouble().empty()) {
        reportTrouble(bytes, path, findings);
        result.isTooLarge = bytes.isTooLarge();
    } else {
        reportTail(bytes, path, findings);
        result.complete = true;
    }
    result.rootElement = inspector.rootElement;
    result.hasElements = inspector.hasElements;
    if (!result.rootElement.empty()) result.root = locationOf(path, inspector.rootOffset);
    return result;
}

} // namespace NuxoTool
