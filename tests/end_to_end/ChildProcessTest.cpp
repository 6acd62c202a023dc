// SPDX-License-Identifier: Apache-2.0
#include "ToolTest.h"

#include "draw/ChildProcess.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <sstream>

#include <fcntl.h>
#include <sys/wait.h>

namespace {

using NuxoTool::ChildLimits;
using NuxoTool::ChildRun;
using std::chrono::milliseconds;

size_t openDescriptors()
{
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(all), end(all)));
}

// Other programs, as seen by the tool's own function that runs them.
class ChildProcessTest : public ToolTest {
protected:
    void SetUp() override
    {
        ToolTest::SetUp();
        mDescriptors = openDescriptors();
    }

    // Whatever became of the program: nobody is left, nothing is left open.
    void TearDown() override
    {
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
        EXPECT_EQ(errno, ECHILD);
        EXPECT_EQ(openDescriptors(), mDescriptors);
        ToolTest::TearDown();
    }

    ChildRun runScript(const std::string& script, const std::string& input = "", const ChildLimits& limits = {}) const
    {
        write("program", "#!/bin/sh\n" + script + '\n');
        std::filesystem::permissions(path("program"), std::filesystem::perms::owner_all);
        return NuxoTool::runChild(path("program"), {"-Tsvg", "two words"}, input, limits);
    }

private:
    size_t mDescriptors = 0;
};

TEST_F(ChildProcessTest, GivesInputAndArgumentsAndTakesOutput)
{
    const ChildRun run = runScript("echo \"$# $1 $2\"; cat; echo trouble >&2; exit 7", "drawing\n");
    EXPECT_EQ(run.end, ChildRun::End::Exited);
    EXPECT_EQ(run.code, 7);
    EXPECT_EQ(run.out, "2 -Tsvg two words\ndrawing\n");
    EXPECT_EQ(run.message, "trouble\n");
}

TEST_F(ChildProcessTest, LargeInputAndOutputBlockNobody)
{
    // More than pipes hold, on all three ways at once.
    const std::string input(5000000, 'x');
    const ChildRun run = runScript("head -c 1000000 /dev/zero >&2; cat", input);
    EXPECT_EQ(run.end, ChildRun::End::Exited);
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out, input);
    EXPECT_LE(run.message.size(), 4096U);
}

TEST_F(ChildProcessTest, ProgramThatReadsNothingDoesNoHarm)
{
    const ChildRun run = runScript("exec <&-; echo done", std::string(5000000, 'x'));
    EXPECT_EQ(run.end, ChildRun::End::Exited);
    EXPECT_EQ(run.out, "done\n");
}

TEST_F(ChildProcessTest, EndsAProgramThatTakesTooLong)
{
    ChildLimits limits;
    limits.time = milliseconds(200);
    const auto start = std::chrono::steady_clock::now();
    for (const char* const script : {"exec sleep 60", "exec >&- 2>&-; exec sleep 60", "while :; do echo x; done"}) {
        EXPECT_EQ(runScript(script, "", limits).end, ChildRun::End::TimedOut) << script;
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST_F(ChildProcessTest, EndsAProgramThatWritesTooMuch)
{
    ChildLimits limits;
    limits.output = 100000;
    EXPECT_EQ(runScript("exec cat /dev/zero", "", limits).end, ChildRun::End::TooLong);
    const ChildRun run = runScript("exec head -c 100000 /dev/zero", "", limits);
    EXPECT_EQ(run.end, ChildRun::End::Exited);
    EXPECT_EQ(run.out.size(), 100000U);
}

TEST_F(ChildProcessTest, TellsSignalsAndWhatCannotBeStarted)
{
    const ChildRun killed = runScript("kill -SEGV $$");
    EXPECT_EQ(killed.end, ChildRun::End::Signalled);
    EXPECT_EQ(killed.code, SIGSEGV);
    const ChildRun missing = NuxoTool::runChild(path("nothing"), {}, "", {});
    EXPECT_EQ(missing.end, ChildRun::End::NotStarted);
    EXPECT_EQ(missing.code, ENOENT);
}

TEST_F(ChildProcessTest, ExitCodeIsKnownWhereChildrenAreIgnored)
{
    signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(runScript("exit 7").code, 7);
    signal(SIGCHLD, SIG_DFL);
}

TEST_F(ChildProcessTest, ProgramInheritsNothingElse)
{
    // Its own three, the script that the shell reads, and what whoever runs the tests has left open for all.
    const ChildRun run = runScript("ls -l /proc/$$/fd");
    std::istringstream lines(run.out);
    size_t count = 0;
    for (std::string line; std::getline(lines, line);) {
        const size_t arrow = line.find(" -> ");
        if (arrow == std::string::npos) continue;
        const int number = std::stoi(line.substr(line.rfind(' ', arrow - 1)));
        const int flags = fcntl(number, F_GETFD);
        const bool isLeftOpen = flags >= 0 && (flags & FD_CLOEXEC) == 0;
        EXPECT_TRUE(number <= 2 || isLeftOpen || line.substr(arrow + 4) == path("program")) << line;
        ++count;
    }
    EXPECT_GE(count, 3U) << run.out;
}

TEST_F(ChildProcessTest, LooksForProgramsInAbsoluteDirectoriesOfPath)
{
    write("program", "");
    const char* const old = getenv("PATH");
    const std::string before = old == nullptr ? "" : old;
    const auto find = [](const std::string& directories) {
        setenv("PATH", directories.c_str(), 1);
        return NuxoTool::findProgram("program");
    };
    const std::string here = path("");
    EXPECT_EQ(find(here), ""); // cannot be executed
    std::filesystem::permissions(path("program"), std::filesystem::perms::owner_all);
    EXPECT_EQ(find("/nowhere:" + here), here + "/program");
    const std::filesystem::path directory = std::filesystem::current_path();
    std::filesystem::current_path(here);
    EXPECT_EQ(find(""), "");
    EXPECT_EQ(find(":.:"), "");
    std::filesystem::current_path(directory);
    std::filesystem::create_directory(path("other"));
    std::filesystem::create_directory(path("other/program"));
    EXPECT_EQ(find(path("other")), "");
    setenv("PATH", before.c_str(), 1);
}

} // namespace
