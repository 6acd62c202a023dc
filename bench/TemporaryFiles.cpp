// SPDX-License-Identifier: Apache-2.0
#include "TemporaryFiles.h"

#include <cerrno>
#include <fstream>
#include <system_error>

#include <stdlib.h>
#include <zlib.h>

namespace bench {

namespace {

[[noreturn]] void giveUp(const std::string& path)
{
    throw std::system_error(errno, std::generic_category(), path);
}

void writePlain(const std::string& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) giveUp(path);
}

void writeCompressed(const std::string& path, const std::string& text)
{
    const gzFile file = gzopen(path.c_str(), "wb");
    if (file == nullptr) giveUp(path);
    const bool written =
        gzwrite(file, text.data(), static_cast<unsigned>(text.size())) == static_cast<int>(text.size());
    if (gzclose(file) != Z_OK || !written) giveUp(path);
}

} // namespace

TemporaryFiles::TemporaryFiles()
{
    std::string folder = (std::filesystem::temp_directory_path() / "nuxo-bench-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) giveUp(folder);
    mFolder = folder;
}

TemporaryFiles::~TemporaryFiles()
{
    std::error_code ignored; // nothing better can be done about a folder that stays
    std::filesystem::remove_all(mFolder, ignored);
}

std::string TemporaryFiles::plain(const std::string& name, const std::function<std::string()>& text) const
{
    const std::string path = (mFolder / name).string();
    if (!std::filesystem::exists(path)) writePlain(path, text());
    return path;
}

std::string TemporaryFiles::compressed(const std::string& name, const std::function<std::string()>& text) const
{
    const std::string path = (mFolder / name).string();
    if (!std::filesystem::exists(path)) writeCompressed(path, text());
    return path;
}

} // namespace bench
