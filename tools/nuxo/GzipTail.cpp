// SPDX-License-Identifier: Apache-2.0
#include "GzipTail.h"

#include "FileBytes.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include <zlib.h>

namespace NuxoTool {

namespace {

// What follows may be as long as a disk, and only that it is there matters.
constexpr uint64_t kMostCounted = FileBytes::kMostBytes;

// Decompresses a gzip file to nothing, to find out where its compressed text ends.
class GzipScan {
public:
    explicit GzipScan(const std::string& path) : mFile(std::fopen(path.c_str(), "rb"))
    {
        constexpr int gzipHeader = 16;
        if (inflateInit2(&mStream, MAX_WBITS + gzipHeader) != Z_OK) throw std::bad_alloc();
    }
    GzipScan(const GzipScan&) = delete;
    GzipScan& operator=(const GzipScan&) = delete;
    ~GzipScan() { inflateEnd(&mStream); }

    uint64_t bytesBehindText()
    {
        while (isAtMember()) {
            if (!skipMember()) return 0;
        }
        uint64_t count = 0;
        do {
            count += mStream.avail_in;
            mStream.avail_in = 0;
        } while (count <= kMostCounted && refill());
        return count;
    }

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    // Puts more of the file behind what was not used yet.
    bool refill()
    {
        if (mFile == nullptr) return false;
        if (mStream.avail_in > 0) std::memmove(mIn.data(), mStream.next_in, mStream.avail_in);
        mStream.next_in = mIn.data();
        const size_t count = std::fread(mIn.data() + mStream.avail_in, 1, mIn.size() - mStream.avail_in, mFile.get());
        mStream.avail_in += static_cast<uInt>(count);
        return count > 0;
    }

    bool isAtMember()
    {
        while (mStream.avail_in < 2 && refill()) {}
        return mStream.avail_in >= 2 && mStream.next_in[0] == 0x1f && mStream.next_in[1] == 0x8b;
    }

    bool skipMember()
    {
        inflateReset(&mStream);
        for (;;) {
            mStream.next_out = mOut.data();
            mStream.avail_out = static_cast<uInt>(mOut.size());
            const int code = inflate(&mStream, Z_NO_FLUSH);
            if (code == Z_STREAM_END) return true;
            const bool isHungry = code == Z_BUF_ERROR || (code == Z_OK && mStream.avail_in == 0);
            if (code != Z_OK && code != Z_BUF_ERROR) return false;
            if (isHungry && !refill()) return false;
        }
    }

    std::unique_ptr<std::FILE, Close> mFile;
    z_stream mStream = {};
    std::vector<Bytef> mIn = std::vector<Bytef>(FileBytes::kPieceSize);
    std::vector<Bytef> mOut = std::vector<Bytef>(FileBytes::kPieceSize);
};

} // namespace

uint64_t bytesBehindText(const std::string& path)
{
    return GzipScan(path).bytesBehindText();
}

} // namespace NuxoTool
