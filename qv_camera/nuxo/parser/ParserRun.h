// SPDX-License-Identifier: Apache-2.0
// Internal to the parser: what lives only while a parse is running.
#ifndef NUXO_PARSER_PARSER_RUN_H
#define NUXO_PARSER_PARSER_RUN_H

#include <nuxo/parser/AttributeList.h>
#include <nuxo/parser/NameCache.h>
#include <nuxo/parser/SizeMemory.h>

#include <cstdint>
#include <string>
#include <vector>

#include <expat.h>

namespace NUXO {

constexpr const char* kParserTag = "NUXO_PARSER[XOS]";

struct ParserRun {
    XML_Parser parser = nullptr; // null when the callbacks are called by hand
    uint32_t document = 0;       // number of the document, see SourcePosition
    uint32_t depth = 0;          // open elements
    SourcePosition version;      // where the document says its version
    bool failed = false;         // callbacks that still come are ignored
    NameCache names;
    SizeMemory sizes;
    std::vector<uint32_t> openKeys; // of the elements from the tree's root down to the current node
    AttributeList attributes;       // of the element that is being opened
    std::string elementName;        // its name in lower case; kept for descriptors and unknown names only
};

} // namespace NUXO

#endif
