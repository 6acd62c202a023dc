// SPDX-License-Identifier: Apache-2.0
// Runs every file of the given folders through a fuzz target. Any compiler builds it.
#include "support/Fuzzing.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesIn(const char* folder)
{
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        if (entry.is_regular_file() && entry.path().filename().string().front() != '.') files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

// An exact allocation, so that a sanitizer sees a read behind the end.
std::vector<uint8_t> contentOf(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw std::system_error(errno, std::generic_category(), file.string());
    const std::string bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    return {bytes.begin(), bytes.end()};
}

size_t replay(const char* folder)
{
    const std::vector<fs::path> files = filesIn(folder);
    for (const fs::path& file : files) {
        // Named first: a finding ends the program.
        std::printf("%s\n", file.c_str());
        std::fflush(stdout);
        const std::vector<uint8_t> content = contentOf(file);
        LLVMFuzzerTestOneInput(content.data(), content.size());
    }
    return files.size();
}

} // namespace

int main(int argc, char** argv)
{
    size_t count = 0;
    try {
        for (int i = 1; i < argc; ++i) count += replay(argv[i]);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        return EXIT_FAILURE;
    }
    std::printf("%zu inputs\n", count);
    if (count > 0) return EXIT_SUCCESS;
    std::fprintf(stderr, "no input was replayed\n");
    return EXIT_FAILURE;
}
