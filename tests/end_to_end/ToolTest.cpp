// SPDX-License-Identifier: Apache-2.0
#include "ToolTest.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

namespace {

constexpr unsigned kTimeLimitSeconds = 120;
const std::string kHere = std::string(NUXO_SOURCE_DIR) + "/tests/end_to_end/";

std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

// In the child: never returns.
[[noreturn]] void becomeTool(const std::string& directory, const std::vector<std::string>& arguments,
                             const std::map<std::string, std::string>& environment)
{
    for (const char* const name : {"NO_COLOR", "TERM", "camera_css_debug", "camera_css_trace"}) unsetenv(name);
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    if (chdir(directory.c_str()) != 0) _exit(127);
    std::vector<char*> pointers = {const_cast<char*>("nuxo")};
    for (const std::string& argument : arguments) pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    alarm(kTimeLimitSeconds);
    execv(NUXO_TOOL, pointers.data());
    _exit(127);
}

void redirect(int descriptor, const std::string& file)
{
    const int opened = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (opened < 0 || dup2(opened, descriptor) < 0) _exit(127);
}

// 127 is what the child ends with when the tool cannot be started.
int exitCodeOf(pid_t child)
{
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status) == 127 ? -1 : WEXITSTATUS(status);
}

// Everything that the child writes to the terminal; its line ends come back as "\r\n".
std::string readTerminal(int terminal)
{
    std::string text;
    char piece[4096];
    for (;;) {
        const ssize_t count = ::read(terminal, piece, sizeof piece);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return text;
        text.append(piece, static_cast<size_t>(count));
    }
}

} // namespace

void ToolTest::SetUp()
{
    std::string pattern = testing::TempDir() + "nuxo-XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    mDirectory = pattern;
    for (const auto& fixture : std::filesystem::directory_iterator(kHere + "fixtures")) {
        std::filesystem::copy(fixture.path(), mDirectory);
    }
}

void ToolTest::TearDown()
{
    if (!mDirectory.empty()) std::filesystem::remove_all(mDirectory);
}

ToolRun ToolTest::run(const std::vector<std::string>& arguments, const Environment& environment) const
{
    ToolRun result;
    const pid_t child = fork();
    if (child == 0) {
        redirect(STDOUT_FILENO, path("stdout"));
        redirect(STDERR_FILENO, path("stderr"));
        becomeTool(mDirectory, arguments, environment);
    }
    result.exitCode = exitCodeOf(child);
    result.out = contentOf(path("stdout"));
    result.err = contentOf(path("stderr"));
    EXPECT_NE(result.exitCode, -1) << NUXO_TOOL << " did not run to its end: " << result.err;
    return result;
}

ToolRun ToolTest::runOnTerminal(const std::vector<std::string>& arguments, const Environment& environment) const
{
    ToolRun result;
    int terminal = -1;
    int toolSide = -1;
    if (openpty(&terminal, &toolSide, nullptr, nullptr, nullptr) != 0) {
        ADD_FAILURE() << "no terminal available";
        return result;
    }
    const pid_t child = fork();
    if (child == 0) {
        redirect(STDOUT_FILENO, path("stdout"));
        dup2(toolSide, STDERR_FILENO);
        close(toolSide);
        close(terminal);
        becomeTool(mDirectory, arguments, environment);
    }
    close(toolSide);
    result.err = readTerminal(terminal);
    close(terminal);
    result.exitCode = exitCodeOf(child);
    result.out = contentOf(path("stdout"));
    EXPECT_NE(result.exitCode, -1) << NUXO_TOOL << " did not run to its end: " << result.err;
    return result;
}

ToolRun ToolTest::runInto(const std::string& file, const std::vector<std::string>& arguments, int descriptor) const
{
    ToolRun result;
    const pid_t child = fork();
    if (child == 0) {
        redirect(STDOUT_FILENO, path("stdout"));
        redirect(STDERR_FILENO, path("stderr"));
        const int opened = open(file.c_str(), O_WRONLY);
        if (opened < 0 || dup2(opened, descriptor) < 0) _exit(127);
        becomeTool(mDirectory, arguments, {});
    }
    result.exitCode = exitCodeOf(child);
    result.out = contentOf(path("stdout"));
    result.err = contentOf(path("stderr"));
    EXPECT_NE(result.exitCode, -1) << NUXO_TOOL << " did not run to its end: " << result.err;
    return result;
}

int ToolTest::exitCodeBehind(const std::string& prefix, const std::string& arguments) const
{
    const std::string tool = std::string("'") + NUXO_TOOL + "' " + arguments;
    const std::string command =
        "cd '" + path("") + "' && { (" + prefix + ' ' + tool + " 2>&1 >out; echo $? >&3) | cat >err; } 3>code";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    return std::atoi(read("code").c_str());
}

void ToolTest::write(const std::string& name, const std::string& content) const
{
    std::ofstream file(path(name), std::ios::binary);
    file << content;
    ASSERT_TRUE(file.flush().good()) << name;
}

void ToolTest::writeCompressed(const std::string& name, const std::string& content) const
{
    const gzFile file = gzopen(path(name).c_str(), "wb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(gzwrite(file, content.data(), static_cast<unsigned>(content.size())), static_cast<int>(content.size()));
    ASSERT_EQ(gzclose(file), Z_OK);
}

std::string ToolTest::read(const std::string& name) const
{
    return contentOf(path(name));
}

void ToolTest::addExample(const std::string& generation) const
{
    for (const char* const part : {"_descriptor.xml", "_settings.xml", "_settings.xml.gz"}) {
        std::filesystem::copy(std::string(NUXO_SOURCE_DIR) + "/examples/" + generation + part, mDirectory);
    }
}

size_t ToolTest::count(const std::string& text, const std::string& part)
{
    size_t found = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++found;
    return found;
}

void ToolTest::expectDotAccepts(const std::string& drawing) const
{
    ASSERT_EQ(std::system("command -v dot > /dev/null 2>&1"), 0) << "graphviz is not installed";
    write("drawing.dot", drawing);
    const std::string command = "cd '" + path("") + "' && dot -Tsvg drawing.dot -o drawing.svg > dot.log 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << read("dot.log");
    EXPECT_EQ(read("dot.log"), "");
    EXPECT_NE(read("drawing.svg").find("</svg>"), std::string::npos);
}

void expectGolden(const std::string& actual, const std::string& name)
{
    const std::string golden = kHere + "golden/" + name;
    if (std::getenv("NUXO_UPDATE_GOLDEN") != nullptr) {
        std::ofstream(golden, std::ios::binary) << actual;
        FAIL() << "wrote " << golden << "; read it, then run again without NUXO_UPDATE_GOLDEN";
    }
    ASSERT_TRUE(std::filesystem::exists(golden)) << golden;
    EXPECT_EQ(actual, contentOf(golden)) << golden;
}
