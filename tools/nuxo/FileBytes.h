// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_FILE_BYTES_H
#define NUXO_TOOL_FILE_BYTES_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <zlib.h>

namespace NuxoTool {

/// The bytes of a graph file's text, decompressed when its name ends in "gz", piece by piece.
class FileBytes {
public:
    static constexpr size_t kPieceSize = 65536;
    /// Larger texts end with trouble: a few bytes of a gzip file can stand for any number of them.
    static constexpr uint64_t kMostBytes = uint64_t{64} << 20U;

    explicit FileBytes(const std::string& path);

    /// Up to kPieceSize bytes; 0 at the end and on trouble.
    size_t read(char* piece);
    /// What went wrong, "" when nothing did.
    const std::string& trouble() const { return mTrouble; }
    /// Whether that is what decompression says of the file's content.
    bool isDamaged() const { return mIsDamaged; }
    /// Whether that is the limit.
    bool isTooLarge() const { return mCount > kMostBytes; }
    bool isCompressed() const { return mCompressed != nullptr && gzdirect(mCompressed.get()) == 0; }
    /// Whether the name says that the file is compressed and its first bytes do not. It is then read as it is.
    bool isOnlyNamedCompressed() const { return mCompressed != nullptr && !isCompressed(); }

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
        void operator()(gzFile file) const { gzclose(file); }
    };

    size_t readPlain(char* piece);
    size_t readCompressed(char* piece);

    std::unique_ptr<std::FILE, Close> mPlain;
    std::unique_ptr<gzFile_s, Close> mCompressed;
    uint64_t mCount = 0;
    std::string mTrouble;
    bool mIsDamaged = false;
};

/// The text behind the last '.' of a path, the whole path when there is none: how the parser tells kinds of files.
std::string suffixOf(const std::string& path);

/// Line and column (in bytes), both from 1, of a byte of the file's text.
struct LineColumn {
    uint32_t line = 1;
    uint32_t column = 1;
};
LineColumn locateByte(const std::string& path, uint64_t offset);

/// What stands around a place in a file.
struct SourceLine {
    std::string text;  ///< the line, of a long one the part around the place; "" when there is none
    size_t column = 1; ///< of the place in the text
};

/// The lines of places in a file's text. Reads the file once, and keeps no more than a part of each line.
///
/// @param places  in any order
/// @return        one line a place
std::vector<SourceLine> readLines(const std::string& path, const std::vector<LineColumn>& places);

/// The columns of places counted in characters, from 1. Reads the file once.
std::vector<uint32_t> characterColumns(const std::string& path, const std::vector<LineColumn>& places);

} // namespace NuxoTool

#endif
