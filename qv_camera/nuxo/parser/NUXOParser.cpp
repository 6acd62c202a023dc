// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/parser/Decimal.h>
#include <nuxo/parser/NUXOParser.h>
#include <nuxo/parser/ParserRun.h>
#include <nuxo/tree/Documents.h>
#include <nuxo/tree/TreeAccess.h>

#include <limits>
#include <new>
#include <string>

// The callbacks' half of the parser: from tags to the tree. How bytes get here is in NUXOParserFiles.cpp.

namespace NUXO {

namespace {

bool isRootName(uint32_t key)
{
    return key == NUXO_KEY_GRAPH_DESCRIPTOR || key == NUXO_KEY_GRAPH_SETTINGS;
}

// Where the tag that expat reports stands; unknown when nobody drives the callbacks or the document is too large.
SourcePosition currentPosition(const ParserRun& run)
{
    if (run.parser == nullptr) return {};
    const XML_Index offset = XML_GetCurrentByteIndex(run.parser);
    constexpr auto kMost = static_cast<XML_Index>(std::numeric_limits<uint32_t>::max());
    if (offset < 0 || offset > kMost) return {};
    return {run.document, static_cast<uint32_t>(offset)};
}

} // namespace

NUXOParser::NUXOParser() = default;

NUXOParser::~NUXOParser()
{
    discardTree();
}

void NUXOParser::discardTree() noexcept
{
    if (mCurrentNode != nullptr) delete mCurrentNode->getRootNode();
    mCurrentNode = nullptr;
}

// What callbacks called by hand left behind.
void NUXOParser::discardLeftover() noexcept
{
    discardTree();
    mRun.reset();
}

// Gives the document up: what was built is destroyed, and callbacks that still come do nothing.
void NUXOParser::abandon() noexcept
{
    discardTree();
    if (mRun != nullptr) mRun->failed = true;
}

bool NUXOParser::startRun(const char* documentName, XML_Parser parser)
{
    mRun.reset(new (std::nothrow) ParserRun);
    if (mRun == nullptr) return false;
    mRun->parser = parser;
    mRun->document = registerDocument(documentName);
    return true;
}

// The run of the parse; when the callbacks are called by hand, one that remembers no names from call to call.
ParserRun& NUXOParser::currentRun()
{
    if (mRun == nullptr) mRun = std::make_unique<ParserRun>();
    if (mRun->parser == nullptr) mRun->names.clear();
    return *mRun;
}

void NUXOParser::startElement(void* data, const char* name, const char** atts)
{
    auto& self = *static_cast<NUXOParser*>(data);
    try {
        self.openElement(name, atts);
    } catch (const std::bad_alloc&) {
        self.abandon();
    }
}

void NUXOParser::endElement(void* data, const char*)
{
    auto& self = *static_cast<NUXOParser*>(data);
    try {
        self.closeElement();
    } catch (const std::bad_alloc&) {
        self.abandon();
    }
}

void NUXOParser::openElement(const char* name, const char** atts)
{
    ParserRun& run = currentRun();
    if (run.failed) return;
    if (run.depth == kMaxDepth) {
        NUXO_LOG(LogError, kParserTag, "Elements nest deeper than %u levels", kMaxDepth);
        run.failed = true;
        if (run.parser != nullptr) XML_StopParser(run.parser, XML_FALSE);
        return;
    }
    ++run.depth;

    uint32_t key = run.names.findLowered(name);
    if (run.depth == 1 && isRootName(key)) {
        openRootElement(key, atts);
        return;
    }
    if (key == NUXO_KEY_NA || mRootKey == NUXO_KEY_GRAPH_DESCRIPTOR) lowerInto(run.elementName, name);
    if (key == NUXO_KEY_NA) key = run.names.findOrRegister(run.elementName);
    const SourcePosition position = currentPosition(run);
    std::unique_ptr<GraphConfigNode> node = readAttributes(atts, position, key);
    if (node == nullptr || !ensureRoot()) {
        abandon();
        return;
    }
    run.openKeys.push_back(key);
    mCurrentNode = TreeAccess::adoptUnordered(*mCurrentNode, std::move(node), key, position);
}

void NUXOParser::openRootElement(uint32_t key, const char** atts)
{
    mRootKey = key;
    for (; atts != nullptr && *atts != nullptr; atts += 2) {
        if (mRun->names.findLowered(atts[0]) != NUXO_KEY_VERSION) continue;
        mVersion = atts[1];
        mRun->version = currentPosition(*mRun);
    }
}

// The node of an element with its attributes, null after a message when one cannot be added.
std::unique_ptr<GraphConfigNode> NUXOParser::readAttributes(const char** atts, SourcePosition position,
                                                            uint32_t& elementKey)
{
    ParserRun& run = *mRun;
    try {
        run.attributes.clear();
        for (; atts != nullptr && *atts != nullptr; atts += 2) {
            const uint32_t key = run.names.findLowered(atts[0]);
            const bool isName = key == NUXO_KEY_NAME && mRootKey == NUXO_KEY_GRAPH_DESCRIPTOR;
            if (isName && !readName(atts[1], elementKey)) return nullptr;
            readAttribute(key, atts[1]);
        }
        return run.attributes.build(position, run.sizes.takeExpected(elementKey));
    } catch (const std::bad_alloc&) {
        NUXO_LOG(LogError, kParserTag, "Error while adding attribute");
        return nullptr;
    }
}

// In a descriptor an element is filed under its name and remembers what element it was.
bool NUXOParser::readName(const char* name, uint32_t& elementKey)
{
    ParserRun& run = *mRun;
    try {
        if (elementKey == NUXO_KEY_NODE || run.attributes.addUnique(NUXO_KEY_TYPE, run.elementName)) {
            elementKey = run.names.findOrRegister(name);
            return true;
        }
    } catch (const std::bad_alloc&) {
        // The same message as for a `type` that is there already.
    }
    NUXO_LOG(LogError, kParserTag, "Error adding name attribute");
    return false;
}

void NUXOParser::readAttribute(uint32_t key, const char* text)
{
    ParserRun& run = *mRun;
    if (key == NUXO_KEY_ATTRIBUTE) {
        run.attributes.addInteger(key, static_cast<int32_t>(run.names.find(text)));
    } else if (ItemUID::isInteger(key)) {
        run.attributes.addInteger(key, parseDecimal(text));
    } else {
        run.attributes.addText(key, text);
    }
}

// The first element below the document's root brings the tree's root along.
bool NUXOParser::ensureRoot()
{
    if (mCurrentNode != nullptr) return true;
    mCurrentNode = new GraphConfigNode;
    if (!mVersion.empty()) {
        if (mCurrentNode->addValue(NUXO_KEY_VERSION, mVersion) != StatusOk) {
            NUXO_LOG(LogError, kParserTag, "Error adding version attribute");
            return false;
        }
        setPositionOf(*mCurrentNode, NUXO_KEY_VERSION, mRun->version);
        return true;
    }
    if (isRootName(mRootKey)) NUXO_LOG(LogWarning, kParserTag, "No version information found.");
    return true;
}

void NUXOParser::closeElement()
{
    ParserRun& run = currentRun();
    if (run.failed || run.depth == 0) return;
    --run.depth;
    if (mCurrentNode == nullptr) return;
    ItemMap& items = TreeAccess::items(*mCurrentNode);
    items.restoreOrder();
    if (!run.openKeys.empty()) {
        run.sizes.remember(run.openKeys.back(), items.size());
        run.openKeys.pop_back();
    }
    GraphConfigNode* const parent = TreeAccess::ancestor(*mCurrentNode);
    if (parent != nullptr) mCurrentNode = parent;
}

} // namespace NUXO
