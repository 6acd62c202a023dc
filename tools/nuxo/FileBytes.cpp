// SPDX-License-Identifier: Apache-2.0
#include "FileBytes.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <tuple>
#include <utility>
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
    if (!mTrouble.empty()) return 0;
    const size_t count = mCompressed != nullptr ? readCompressed(piece) : readPlain(piece);
    mCount += count;
    if (!isTooLarge()) return count;
    mTrouble = "larger than " + std::to_string(kMostBytes >> 20U) + " MiB";
    return 0;
}

size_t FileBytes::readPlain(char* piece)
{
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
        mIsDamaged = true;
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

namespace {

using Order = std::vector<std::pair<LineColumn, size_t>>; // places in the order of the file, and their numbers

Order inOrder(const std::vector<LineColumn>& places)
{
    Order order;
    for (size_t i = 0; i < places.size(); ++i) order.emplace_back(places[i], i);
    std::sort(order.begin(), order.end(), [](const auto& a, const auto& b) {
        return std::tie(a.first.line, a.first.column, a.second) < std::tie(b.first.line, b.first.column, b.second);
    });
    return order;
}

bool isAt(const LineColumn& place, uint32_t line, size_t column)
{
    return place.line == line && place.column == column;
}

// Calls @p take with each piece of a file's text that lies in one line: its line, the column of its first byte, the piece.
// Ends when @p take is done.
template <typename Take> void forEachPiece(const std::string& path, Take take)
{
    FileBytes bytes(path);
    std::vector<char> piece(FileBytes::kPieceSize);
    uint32_t line = 1;
    size_t column = 1;
    while (const size_t count = bytes.read(piece.data())) {
        const std::string_view part(piece.data(), count);
        for (size_t at = 0; at < count;) {
            const size_t end = std::min(part.find('\n', at), count);
            if (!take(line, column, part.substr(at, end - at))) return;
            column += end - at;
            if (end < count) {
                ++line;
                column = 1;
            }
            at = end + 1;
        }
    }
}

} // namespace

std::vector<SourceLine> readLines(const std::string& path, const std::vector<LineColumn>& places)
{
    constexpr size_t around = 256;
    std::vector<SourceLine> lines(places.size());
    const Order order = inOrder(places);
    size_t first = 0; // the first place that may get more text
    forEachPiece(path, [&](uint32_t line, size_t column, std::string_view piece) {
        while (first < order.size() &&
               (order[first].first.line < line ||
                (order[first].first.line == line && order[first].first.column + around < column)))
            ++first;
        const size_t pieceEnd = column + piece.size();
        for (size_t i = first; i < order.size() && order[i].first.line == line; ++i) {
            const size_t wanted = order[i].first.column;
            const size_t from = std::max(wanted > around ? wanted - around : 1, column);
            const size_t to = std::min(wanted + around, pieceEnd);
            if (wanted > around && wanted - around > pieceEnd) break;
            if (from < to) lines[order[i].second].text += piece.substr(from - column, to - from);
        }
        return first < order.size();
    });
    for (size_t i = 0; i < places.size(); ++i) {
        const size_t column = places[i].column;
        lines[i].column = column > around ? around + 1 : column;
        while (!lines[i].text.empty() && lines[i].text.back() == '\r') lines[i].text.pop_back();
    }
    return lines;
}

std::vector<uint32_t> characterColumns(const std::string& path, const std::vector<LineColumn>& places)
{
    std::vector<uint32_t> columns;
    for (const LineColumn& place : places) columns.push_back(place.column);
    const Order order = inOrder(places);
    size_t next = 0;
    uint32_t current = 0;
    uint32_t more = 0; // bytes of the line so far that continue a character
    forEachPiece(path, [&](uint32_t line, size_t column, std::string_view piece) {
        if (line != current) more = 0;
        current = line;
        while (next < order.size() && order[next].first.line < line) ++next;
        for (size_t i = 0; i <= piece.size() && next < order.size(); ++i) {
            for (; next < order.size() && isAt(order[next].first, line, column + i); ++next)
                columns[order[next].second] -= more;
            if (i < piece.size() && (static_cast<unsigned char>(piece[i]) & 0xC0U) == 0x80U) ++more;
        }
        return next < order.size();
    });
    return columns;
}

} // namespace NuxoTool
