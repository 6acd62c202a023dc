// SPDX-License-Identifier: Apache-2.0
// Fuzz target: any bytes as the content of a graph file, read once as gzip and once as plain text.
#include "support/Fuzzing.h"
#include "support/TreeChecks.h"

#include <nuxo/nuxo.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

namespace {

// A file in memory that two names lead to, one for each way of reading.
class InputFile {
public:
    InputFile() : mDescriptor(memfd_create("nuxo-fuzz", 0))
    {
        std::string folder = temporaryFolder() + "/nuxo-fuzz-XXXXXX";
        if (mDescriptor < 0 || mkdtemp(folder.data()) == nullptr) giveUp("create a temporary file");
        mFolder = folder;
        const std::string target = "/proc/self/fd/" + std::to_string(mDescriptor);
        if (symlink(target.c_str(), compressed().c_str()) != 0 || symlink(target.c_str(), plain().c_str()) != 0)
            giveUp("name a temporary file");
    }

    ~InputFile()
    {
        static_cast<void>(unlink(compressed().c_str()));
        static_cast<void>(unlink(plain().c_str()));
        static_cast<void>(rmdir(mFolder.c_str()));
        static_cast<void>(close(mDescriptor));
    }

    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    void fill(const uint8_t* data, size_t size)
    {
        const bool filled = ftruncate(mDescriptor, 0) == 0 && pwrite(mDescriptor, data, size, 0) == ssize_t(size);
        if (!filled) giveUp("write a temporary file");
    }

    std::string compressed() const { return mFolder + "/input.gz"; }
    std::string plain() const { return mFolder + "/input.xml"; }

private:
    static std::string temporaryFolder()
    {
        const char* const folder = std::getenv("TMPDIR");
        return folder == nullptr ? "/tmp" : folder;
    }

    // Not a finding: the machine does not let the target work.
    [[noreturn]] static void giveUp(const char* what)
    {
        std::perror(what);
        std::_Exit(EXIT_FAILURE);
    }

    int mDescriptor;
    std::string mFolder;
};

void parse(NUXO::NUXOParser& parser, const std::string& name)
{
    NUXO::IGraphConfig* out = nullptr;
    parser.parseNUXOXmlFile(name.c_str(), &out);
    const std::unique_ptr<NUXO::IGraphConfig> tree(out);
    const std::vector<NUXO::GraphConfigNode*> nodes = fuzzing::nodesOf(tree.get());
    if (nodes.size() < 2 || nodes.size() > fuzzing::kMostNodes) return;
    fuzzing::checkTree(nodes);
    NUXO::GraphConfigNode::dumpNodeTree(nodes.front(), 0);

    NUXO::SourceLocator locator;
    NUXO::SourceLocation location;
    fuzzing::require(locator.locate(nodes.back(), location) == StatusOk, "a parsed element can be located");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static InputFile file;
    const fuzzing::Run run;
    file.fill(data, size);
    NUXO::NUXOParser parser;
    parse(parser, file.compressed());
    parse(parser, file.plain());
    return 0;
}
