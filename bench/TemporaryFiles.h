// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_BENCH_TEMPORARY_FILES_H
#define NUXO_BENCH_TEMPORARY_FILES_H

#include <filesystem>
#include <functional>
#include <string>

namespace bench {

/// A folder of its own for the files of this run; gone with the object.
class TemporaryFiles {
public:
    TemporaryFiles();
    ~TemporaryFiles();
    TemporaryFiles(const TemporaryFiles&) = delete;
    TemporaryFiles& operator=(const TemporaryFiles&) = delete;

    /// The path of the file with what @p text gives; written, plain or compressed, when first asked for.
    std::string plain(const std::string& name, const std::function<std::string()>& text) const;
    std::string compressed(const std::string& name, const std::function<std::string()>& text) const;

private:
    std::filesystem::path mFolder;
};

} // namespace bench

#endif
