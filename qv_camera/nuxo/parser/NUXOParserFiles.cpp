// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/parser/NUXOParser.h>
#include <nuxo/parser/ParserRun.h>
#include <nuxo/tree/TreeAccess.h>

#include <qv_cipr/qv_cipr_alloc.h>
#include <qv_cipr/qv_cipr_file.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>

#include <zlib.h>

// How bytes get to the tags: files, gzip files and texts in memory through expat.

namespace NUXO {

namespace {

constexpr size_t kChunkSize = 4096;
constexpr const char* kMemoryDocument = "<memory>";

// Names and numbers that messages and allocation records of these functions have always carried.
struct CallSite {
    const char* function;
    int line;
};

constexpr CallSite kDataCreate = {"parseNUXOXmlData", 232};
constexpr CallSite kDataParse = {"parseNUXOXmlData", 239};
constexpr CallSite kFileCreate = {"parseNUXOXmlFile", 296};
constexpr CallSite kFileBuffer = {"parseNUXOXmlFile", 305};
constexpr CallSite kXmlParse = {"parseXML", 354};
constexpr CallSite kGzParse = {"parseGz", 390};
constexpr const char* kAllocationFile = "../../../qv_camera/nuxo/NUXOParser";
constexpr uint32_t kAllocationLine = 303;

struct ParserDeleter {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using ParserPointer = std::unique_ptr<std::remove_pointer<XML_Parser>::type, ParserDeleter>;

struct ChunkDeleter {
    void operator()(void* chunk) const { qv_cipr_free(chunk, kFileBuffer.function); }
};
using ChunkPointer = std::unique_ptr<void, ChunkDeleter>;

struct GzDeleter {
    void operator()(gzFile file) const { gzclose(file); }
};
using GzPointer = std::unique_ptr<gzFile_s, GzDeleter>;

struct FileDeleter {
    void operator()(FILE* file) const { qv_cipr_fclose(file); }
};
using FilePointer = std::unique_ptr<FILE, FileDeleter>;

ParserPointer createParser(NUXOParser* self, const CallSite& site)
{
    ParserPointer parser(XML_ParserCreate(nullptr));
    if (parser == nullptr) {
        NUXO_LOG(LogError, kParserTag, "@%s, line:%d, parser is NULL", site.function, site.line);
        return parser;
    }
    XML_SetUserData(parser.get(), self);
    XML_SetElementHandler(parser.get(), NUXOParser::startElement, NUXOParser::endElement);
    return parser;
}

// Shows the text at hand, which carries no end of its own.
void reportParseError(const char* bytes, size_t length, const CallSite& site)
{
    std::array<char, kChunkSize + 1> text;
    const size_t shown = bytes == nullptr ? 0 : std::min(length, kChunkSize);
    if (shown > 0) std::memcpy(text.data(), bytes, shown);
    text[shown] = '\0';
    NUXO_LOG(LogError, kParserTag, "@%s, line:%d, XML_Parse error %s", site.function, site.line, text.data());
}

bool feed(XML_Parser parser, const char* bytes, size_t length, bool isFinal, const CallSite& site)
{
    if (length <= static_cast<size_t>(std::numeric_limits<int>::max())) {
        if (XML_Parse(parser, bytes, static_cast<int>(length), isFinal ? XML_TRUE : XML_FALSE) != XML_STATUS_ERROR)
            return true;
    }
    reportParseError(bytes, length, site);
    return false;
}

// Expat may hold a token back at the end of a chunk in case more of it follows. When no final call comes, the tokens that
// are complete must be handed over all the same.
void flushPending(XML_Parser parser, const CallSite& site)
{
#ifdef NUXO_HAVE_REPARSE_DEFERRAL
    XML_SetReparseDeferralEnabled(parser, XML_FALSE);
    static_cast<void>(feed(parser, "", 0, false, site)); // a failure has been logged, and nothing follows
#else
    static_cast<void>(parser);
    static_cast<void>(site);
#endif
}

void feedPlainFile(XML_Parser parser, const char* fileName, void* buffer)
{
    const FilePointer file(qv_cipr_fopen(fileName, "r"));
    if (file == nullptr) {
        NUXO_LOG(LogError, kParserTag, "Failed to open XML %s", fileName);
        return;
    }
    size_t count = 0;
    do {
        count = qv_cipr_fread(buffer, 1, kChunkSize, file.get());
        if (count == 0 && qv_cipr_ferror(file.get()) != 0) {
            qv_cipr_clearerr(file.get());
            return;
        }
        if (!feed(parser, static_cast<const char*>(buffer), count, count < kChunkSize, kXmlParse)) return;
    } while (count == kChunkSize);
}

void feedGzipFile(XML_Parser parser, const char* fileName, void* buffer)
{
    const GzPointer file(gzopen(fileName, "rb"));
    if (file == nullptr) {
        NUXO_LOG(LogError, kParserTag, "Failed to open GZ %s", fileName);
        return;
    }
    int count = 0;
    do {
        count = gzread(file.get(), buffer, static_cast<unsigned>(kChunkSize));
        if (count < 0) {
            NUXO_LOG(LogError, kParserTag, "Error reading from file");
            flushPending(parser, kGzParse);
        } else if (count == 0) {
            flushPending(parser, kGzParse);
        } else if (!feed(parser, static_cast<const char*>(buffer), static_cast<size_t>(count),
                         static_cast<size_t>(count) < kChunkSize, kGzParse)) {
            return;
        }
    } while (count == static_cast<int>(kChunkSize));
}

const char* suffixOf(const char* fileName)
{
    const char* const dot = std::strrchr(fileName, '.');
    return dot == nullptr ? fileName : dot + 1;
}

} // namespace

void NUXOParser::parseNUXOXmlFile(const char* fileName, IGraphConfig** out)
{
    if (out == nullptr) {
        NUXO_LOG(LogError, kParserTag, "NULL pointer given!");
        return;
    }
    if (fileName == nullptr) {
        NUXO_LOG(LogError, kParserTag, "NULL pointer given!");
        *out = nullptr;
        return;
    }
    discardLeftover();

    const ParserPointer parser = createParser(this, kFileCreate);
    if (parser == nullptr) return;
    const ChunkPointer chunk(qv_cipr_malloc(kChunkSize, kFileBuffer.function, kAllocationFile, kAllocationLine));
    if (chunk == nullptr) {
        NUXO_LOG(LogError, kParserTag, "@%s, line:%d, pBuf is NULL", kFileBuffer.function, kFileBuffer.line);
        return;
    }

    if (startRun(fileName, parser.get())) {
        XML_Parser handle = parser.get();
        const char* const suffix = suffixOf(fileName);
        if (std::strcmp(suffix, "xml") == 0) {
            parseXML(handle, fileName, chunk.get());
        } else if (std::strcmp(suffix, "gz") == 0) {
            parseGz(handle, fileName, chunk.get());
        } else {
            NUXO_LOG(LogError, kParserTag, "file type (%s) not suppoted.", suffix);
        }
    }
    finish(out);
}

void NUXOParser::parseNUXOXmlData(char* data, size_t size, IGraphConfig** out)
{
    if (out == nullptr) {
        NUXO_LOG(LogError, kParserTag, "NULL pointer given!");
        return;
    }
    discardLeftover();
    const ParserPointer parser = createParser(this, kDataCreate);
    if (parser == nullptr) return;
    if (startRun(kMemoryDocument, parser.get()))
        static_cast<void>(
            feed(parser.get(), data, size, true, kDataParse)); // what was built is handed out all the same
    finish(out);
}

// Ends a parse: hands the tree out from its root, also when elements are still open.
void NUXOParser::finish(IGraphConfig** out)
{
    if (mCurrentNode == nullptr) NUXO_LOG(LogError, kParserTag, "Parser returned NULL!");
    GraphConfigNode* root = nullptr;
    for (GraphConfigNode* open = mCurrentNode; open != nullptr; open = TreeAccess::ancestor(*open)) {
        TreeAccess::items(*open).restoreOrder();
        root = open;
    }
    *out = root;
    mCurrentNode = nullptr;
    mRun.reset();
}

// Feeds a file through the tokenizer of a parse, or through one of the caller's: that document then gets a run of its own.
template <typename Feed> void NUXOParser::feedDocument(XML_Parser parser, const char* fileName, Feed feedFile)
{
    const bool callersOwn = mRun == nullptr || mRun->parser != parser;
    if (callersOwn && !startRun(fileName, parser)) return;
    feedFile();
    if (callersOwn) mRun.reset();
}

void NUXOParser::parseXML(XML_Parser& parser, const char* fileName, void* buffer)
{
    feedDocument(parser, fileName, [&] { feedPlainFile(parser, fileName, buffer); });
}

void NUXOParser::parseGz(XML_Parser& parser, const char* fileName, void* buffer)
{
    feedDocument(parser, fileName, [&] { feedGzipFile(parser, fileName, buffer); });
}

} // namespace NUXO
