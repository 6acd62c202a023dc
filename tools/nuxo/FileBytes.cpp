// SPDX-License-Identifier: Apache-2.0
#include "FileBytes.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <string_view>
#include <vector>

namespace NuxoTool {

FileBytes::FileBytes(const std::string& path)
{
    errno = 0;
    if (suffixOf(path) == "gz") {
        mCompressed.reset(gzopen(path.c_str(), "rb"));
    } else {
        mPlain.reset(std::fopen(path.c_str(), "rb"));
    }
    if (mCompressed == nullptr && mPlain == nullptr) mTrouble = errno != 0 ? std::strerror(errno) : "out of memory";
}

size_t FileBytes::read(char* piece)
{
    if (mCompressed != nullptr) return readCompressed(piece);
    if (mPlain == nullptr) return 0;
    const size_t count = std::fread(piece, 1, kPieceSize, mPlain.get());
    if (count == 0 && std::ferror(mPlain.get()) != 0) mTrouble = std::strerror(errno);
    return count;
}

size_t FileBytes::readCompressed(char* piece)
{
    const int count = gzread(mCompressed.get(), piece, static_cast<unsigned>(kPieceSize));
    if (count > 0) return static_cast<size_t>(count);
    int code = Z_OK;
    const char* const text = gzerror(mCompressed.get(), &code);
    // A stream that ends too early is reported together with its last bytes, as Z_BUF_ERROR.
    if (code == Z_ERRNO) {
        mTrouble = std::strerror(errno);
    } else if (code != Z_OK && code != Z_STREAM_END) {
        const std::string explained(text);
        const size_t colon = explained.rfind(": ");
        mTrouble = colon == std::string::npos ? explained : explained.substr(colon + 2);
    }
    return 0;
}

std::string suffixOf(const std::string& path)
{
    const size_t dot = path.rfind('.');
    return dot == std::string::npos ? path : path.substr(dot + 1);
}

LineColumn locateByte(const std::string& path, uint64_t offset)
{
    LineColumn place;
    FileBytes bytes(path);
    std::vector<char> piece(FileBytes::kPieceSize);
    uint64_t lineStart = 0;
    uint64_t at = 0;
    while (at < offset) {
        const size_t count = bytes.read(piece.data());
        if (count == 0) break;
        const size_t wanted = static_cast<size_t>(std::min<uint64_t>(count, offset - at));
        for (size_t i = 0; i < wanted; ++i) {
            if (piece[i] != '\n') continue;
            ++place.line;
            lineStart = at + i + 1;
        }
        at += wanted;
    }
    place.column = static_cast<uint32_t>(std::min(at, offset) - lineStart + 1);
    return place;
}

std::vector<std::string> readLines(const std::string& path, const std::vector<LineColumn>& places)
{
    constexpr size_t behindColumn = 256;
    std::map<uint32_t, size_t> wanted; // how much of each line
    for (const LineColumn& place : places) {
        size_t& longest = wanted[place.line];
        longest = std::max(longest, size_t{place.column} + behindColumn);
    }
    std::map<uint32_t, std::string> texts;
    FileBytes bytes(path);
    std::vector<char> piece(FileBytes::kPieceSize);
    uint32_t current = 1;
    auto next = wanted.begin();
    while (next != wanted.end()) {
        const size_t count = bytes.read(piece.data());
        if (count == 0) break;
        const std::string_view part(piece.data(), count);
        for (size_t at = 0; at < count && next != wanted.end();) {
            const size_t end = std::min(part.find('\n', at), count);
            if (current == next->first) {
                std::string& text = texts[current];
                text += part.substr(at, std::min(end - at, next->second - text.size()));
            }
            at = end + 1;
            if (end == count) break;
            if (current == next->first) ++next;
            ++current;
        }
    }
    std::vector<std::string> lines;
    for (const LineColumn& place : places) {
        std::string& line = lines.emplace_back(texts[place.line].substr(0, size_t{place.column} + behindColumn));
        while (!line.empty() && line.back() == '\r') line.pop_back();
    }
    return lines;
}

std::string readLine(const std::string& path, uint32_t line, uint32_t column)
{
    return readLines(path, {{line, column}}).front();
}

} // namespace NuxoTool
