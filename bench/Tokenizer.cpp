// SPDX-License-Identifier: Apache-2.0
#include "Tokenizer.h"

#include <array>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <type_traits>

#include <expat.h>
#include <zlib.h>

namespace bench {

namespace {

constexpr size_t kChunkSize = 4096;
using Chunk = std::array<char, kChunkSize>;

struct ParserDeleter {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};

struct FileDeleter {
    void operator()(FILE* file) const { std::fclose(file); }
};

struct GzDeleter {
    void operator()(gzFile file) const { gzclose(file); }
};

void onStart(void*, const XML_Char*, const XML_Char**)
{
}

void onEnd(void*, const XML_Char*)
{
}

// @p read fills a chunk and returns the number of bytes.
template <typename Read> void tokenize(Read read)
{
    const std::unique_ptr<std::remove_pointer<XML_Parser>::type, ParserDeleter> parser(XML_ParserCreate(nullptr));
    XML_SetElementHandler(parser.get(), onStart, onEnd);
    Chunk chunk;
    size_t count = 0;
    do {
        count = read(chunk);
        if (XML_Parse(parser.get(), chunk.data(), static_cast<int>(count), count < kChunkSize) == XML_STATUS_ERROR)
            throw std::runtime_error("the tokenizer refuses a generated file");
    } while (count == kChunkSize);
}

} // namespace

void tokenizeFile(const std::string& path)
{
    const std::unique_ptr<FILE, FileDeleter> file(std::fopen(path.c_str(), "r"));
    if (file == nullptr) throw std::runtime_error("cannot open " + path);
    tokenize([&file](Chunk& chunk) { return std::fread(chunk.data(), 1, chunk.size(), file.get()); });
}

void tokenizeCompressedFile(const std::string& path)
{
    const std::unique_ptr<gzFile_s, GzDeleter> file(gzopen(path.c_str(), "rb"));
    if (file == nullptr) throw std::runtime_error("cannot open " + path);
    tokenize([&file](Chunk& chunk) {
        const int count = gzread(file.get(), chunk.data(), static_cast<unsigned>(chunk.size()));
        if (count < 0) throw std::runtime_error("cannot decompress a generated file");
        return static_cast<size_t>(count);
    });
}

} // namespace bench
