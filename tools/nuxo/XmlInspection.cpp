// SPDX-License-Identifier: Apache-2.0
#include "XmlInspection.h"

#include "FileBytes.h"
#include "Text.h"
#include "document/Expat.h"

#include <nuxo/parser/NUXOParser.h>

#include <cstdint>
#include <new>
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
        const uint64_t offset = expatOffset(inspector.parser);
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

void reportMalformed(const Inspector& inspector, const std::string& path, Findings& findings)
{
    const XML_Error error = XML_GetErrorCode(inspector.parser);
    if (error == XML_ERROR_NO_MEMORY || (error == XML_ERROR_ABORTED && inspector.rule.empty())) throw std::bad_alloc();
    if (!inspector.rule.empty()) {
        findings.error(inspector.rule, locationOf(path, inspector.problemOffset), inspector.text);
        return;
    }
    if (error == XML_ERROR_DUPLICATE_ATTRIBUTE) {
        findings.error("duplicate-attribute", locationOf(path, expatOffset(inspector.parser)),
                       "an attribute stands twice in one element; expected it once, the parser stops here");
        return;
    }
    const char* const explanation = XML_ErrorString(error);
    findings.error("malformed", locationOf(path, expatOffset(inspector.parser)),
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
    const ExpatPointer parser = makeExpat();
    Inspector inspector(parser.get());
    XML_SetUserData(parser.get(), &inspector);
    XML_SetElementHandler(parser.get(), openElement, closeElement);

    FileBytes bytes(path);
    XmlInspection result;
    const bool wellFormed = feedExpat(parser.get(), bytes);
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
