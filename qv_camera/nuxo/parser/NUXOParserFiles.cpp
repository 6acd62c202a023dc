// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
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
#include <string>
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

bool feed(XML_Parser parser, const char* bytes, size_t length, bool isFinal)
{
    if (length > static_cast<size_t>(std::numeric_limits<int>::max())) return false;
    return XML_Parse(parser, bytes, static_cast<int>(length), isFinal ? XML_TRUE : XML_FALSE) != XML_STATUS_ERROR;
}

// Hands a file to the tokenizer chunk by chunk.
//
// With each chunk the tokenizer scans an unfinished token again from its start. While one goes on over many chunks, they are
// therefore held back until they double what there is of it: so the time for a huge token grows with its length, not with
// its square. Newer tokenizers have such a rule of their own, which is switched off: one rule must hold with all of them.
class ChunkFeeder {
public:
    ChunkFeeder(XML_Parser parser, const CallSite& site) : mParser(parser), mSite(site)
    {
#ifdef NUXO_HAVE_REPARSE_DEFERRAL
        XML_SetReparseDeferralEnabled(parser, XML_FALSE);
#endif
    }

    /// False, with an error line, when the document is malformed.
    bool feed(const char* chunk, size_t length, bool isFinal)
    {
        if (mUnfinished < kLongToken) return parse(chunk, length, isFinal, chunk, length);
        if (!hold(chunk, length)) { // no memory to wait with
            return flush(false, chunk, length) && parse(chunk, length, isFinal, chunk, length);
        }
        return (!isFinal && mHeld.size() < std::min(mUnfinished, kMostHeld)) || flush(isFinal, chunk, length);
    }

    /// To be called when no final chunk comes: hands over what was held back.
    void finish()
    {
        static_cast<void>(flush(false, mHeld.data(), mHeld.size()));
    } // a failure has been logged

private:
    static constexpr size_t kLongToken = 16 * kChunkSize;
    static constexpr size_t kMostHeld = size_t{64} << 20U;

    bool hold(const char* chunk, size_t length)
    {
        return unlessNoMemory<bool>(false, [&] {
            mHeld.append(chunk, length);
            return true;
        });
    }

    bool flush(bool isFinal, const char* chunk, size_t length)
    {
        if (mHeld.empty()) return true;
        const bool isWellFormed = parse(mHeld.data(), mHeld.size(), isFinal, chunk, length);
        mHeld.clear();
        return isWellFormed;
    }

    // @param chunk, chunkLength  what to show when the document is malformed
    bool parse(const char* bytes, size_t length, bool isFinal, const char* chunk, size_t chunkLength)
    {
        if (!NUXO::feed(mParser, bytes, length, isFinal)) {
            reportParseError(chunk, chunkLength, mSite);
            return false;
        }
        const XML_Index tokenStart = XML_GetCurrentByteIndex(mParser);
        mUnfinished = tokenStart == mTokenStart ? mUnfinished + length : length; // no less than there is
        mTokenStart = tokenStart;
        return true;
    }

    XML_Parser mParser;
    const CallSite& mSite;
    XML_Index mTokenStart = -1;
    size_t mUnfinished = 0;
    std::string mHeld;
};

void feedPlainFile(XML_Parser parser, const char* fileName, void* buffer)
{
    const FilePointer file(qv_cipr_fopen(fileName, "r"));
    if (file == nullptr) {
        NUXO_LOG(LogError, kParserTag, "Failed to open XML %s", fileName);
        return;
    }
    ChunkFeeder feeder(parser, kXmlParse);
    size_t count = 0;
    do {
        count = qv_cipr_fread(buffer, 1, kChunkSize, file.get());
        if (count == 0 && qv_cipr_ferror(file.get()) != 0) {
            qv_cipr_clearerr(file.get());
            feeder.finish();
            return;
        }
        if (!feeder.feed(static_cast<const char*>(buffer), count, count < kChunkSize)) return;
    } while (count == kChunkSize);
}

void feedGzipFile(XML_Parser parser, const char* fileName, void* buffer)
{
    const GzPointer file(gzopen(fileName, "rb"));
    if (file == nullptr) {
        NUXO_LOG(LogError, kParserTag, "Failed to open GZ %s", fileName);
        return;
    }
    ChunkFeeder feeder(parser, kGzParse);
    int count = 0;
    do {
        count = gzread(file.get(), buffer, static_cast<unsigned>(kChunkSize));
        if (count < 0) NUXO_LOG(LogError, kParserTag, "Error reading from file");
        if (count <= 0) {
            feeder.finish();
        } else if (!feeder.feed(static_cast<const char*>(buffer), static_cast<size_t>(count),
                                static_cast<size_t>(count) < kChunkSize)) {
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
    if (startRun(kMemoryDocument, parser.get()) && !feed(parser.get(), data, size, true)) {
        reportParseError(data, size, kDataParse); // what was built is handed out all the same
    }
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
