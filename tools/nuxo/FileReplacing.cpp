// SPDX-License-Identifier: Apache-2.0
#include "FileReplacing.h"

#include "FileBytes.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

namespace NuxoTool {

namespace {

// A file beside the one that it shall replace, removed unless it did.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& directory) : mPath(directory + "/.nuxo-XXXXXX")
    {
        mDescriptor = mkostemp(mPath.data(), O_CLOEXEC);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile()
    {
        if (mDescriptor < 0) return;
        close(mDescriptor);
        if (!mIsInPlace) unlink(mPath.c_str());
    }

    bool isOpen() const { return mDescriptor >= 0; }

    bool write(const std::string& bytes) const
    {
        for (size_t at = 0; at < bytes.size();) {
            const ssize_t count = ::write(mDescriptor, bytes.data() + at, bytes.size() - at);
            if (count < 0 && errno == EINTR) continue;
            if (count <= 0) return false;
            at += static_cast<size_t>(count);
        }
        return true;
    }

    bool takeModeOf(const struct stat& status) const
    {
        // Only some may give files away; the mode comes second because a new owner may clear bits of it.
        const bool isOwned = fchown(mDescriptor, status.st_uid, status.st_gid) == 0;
        const mode_t mode = status.st_mode & (isOwned ? 07777U : 0777U);
        return fchmod(mDescriptor, mode) == 0;
    }

    bool moveTo(const std::string& path)
    {
        if (fsync(mDescriptor) != 0 || std::rename(mPath.c_str(), path.c_str()) != 0) return false;
        mIsInPlace = true;
        return true;
    }

private:
    std::string mPath;
    int mDescriptor = -1;
    bool mIsInPlace = false;
};

// A gzip file without name and time, so that the same text always gives the same bytes.
std::string compressed(const std::string& text)
{
    constexpr int gzipHeader = 16;
    z_stream stream = {};
    if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, MAX_WBITS + gzipHeader, MAX_MEM_LEVEL,
                     Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::bad_alloc();
    }
    std::string out;
    std::string piece(FileBytes::kPieceSize, '\0');
    size_t fed = 0;
    int code = Z_OK;
    while (code != Z_STREAM_END) {
        if (stream.avail_in == 0 && fed < text.size()) {
            const size_t count = std::min<size_t>(text.size() - fed, UINT_MAX);
            // The library's interface is older than const; it only reads.
            stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data() + fed));
            stream.avail_in = static_cast<uInt>(count);
            fed += count;
        }
        stream.next_out = reinterpret_cast<Bytef*>(piece.data());
        stream.avail_out = static_cast<uInt>(piece.size());
        code = deflate(&stream, fed == text.size() ? Z_FINISH : Z_NO_FLUSH);
        out.append(piece, 0, piece.size() - stream.avail_out);
    }
    deflateEnd(&stream);
    return out;
}

// The file itself, behind all symbolic links; "" with errno when there is none.
std::string realPath(const std::string& path)
{
    char* const resolved = realpath(path.c_str(), nullptr);
    std::string real = resolved == nullptr ? "" : resolved;
    std::free(resolved);
    return real;
}

void syncDirectory(const std::string& directory)
{
    const int descriptor = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    fsync(descriptor); // some file systems cannot; the file is in place anyway
    close(descriptor);
}

} // namespace

std::string replaceFile(const std::string& path, const std::string& text)
{
    const std::string bytes = suffixOf(path) == "gz" ? compressed(text) : text;
    const std::string real = realPath(path);
    struct stat status = {};
    if (real.empty() || stat(real.c_str(), &status) != 0) return std::strerror(errno);
    // Replacing asks only for a writable directory, but who protects a file means its content.
    if (access(real.c_str(), W_OK) != 0) return std::strerror(errno);

    const std::string directory = real.substr(0, std::max<size_t>(real.rfind('/'), 1));
    TemporaryFile file(directory);
    const bool replaced = file.isOpen() && file.write(bytes) && file.takeModeOf(status) && file.moveTo(real);
    if (!replaced) return std::strerror(errno);
    syncDirectory(directory);
    return "";
}

} // namespace NuxoTool
