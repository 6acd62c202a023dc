// SPDX-License-Identifier: Apache-2.0
#include "draw/ChildProcess.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace NuxoTool {

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kLongestMessage = 4096;
constexpr int kPauseMilliseconds = 5; // between looks for the end of a program that closed its output

// A file descriptor; no program that is started inherits it.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : mNumber(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { reset(-1); }

    void reset(int number)
    {
        if (mNumber >= 0) ::close(mNumber);
        mNumber = number;
    }
    int number() const { return mNumber; }

private:
    int mNumber = -1;
};

struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;

    bool open()
    {
        int ends[2] = {-1, -1};
        if (::pipe2(ends, O_CLOEXEC) != 0) return false;
        readEnd.reset(ends[0]);
        writeEnd.reset(ends[1]);
        return true;
    }
};

bool writeAll(int descriptor, const std::string& text)
{
    for (size_t done = 0; done < text.size();) {
        const ssize_t count = ::write(descriptor, text.data() + done, text.size() - done);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        done += static_cast<size_t>(count);
    }
    return true;
}

// The input as a file in memory: the program reads it as it likes, and nobody waits for it or is hurt when it does not.
bool openInput(Descriptor& file, const std::string& input)
{
    file.reset(::memfd_create("nuxo", MFD_CLOEXEC));
    return file.number() >= 0 && writeAll(file.number(), input) && ::lseek(file.number(), 0, SEEK_SET) == 0;
}

// What becomes of the descriptors of the program.
class FileActions {
public:
    FileActions() { ::posix_spawn_file_actions_init(&mActions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;
    ~FileActions() { ::posix_spawn_file_actions_destroy(&mActions); }

    int connect(const Descriptor& file, int number)
    {
        return ::posix_spawn_file_actions_adddup2(&mActions, file.number(), number);
    }
    const posix_spawn_file_actions_t* get() const { return &mActions; }

private:
    posix_spawn_file_actions_t mActions = {};
};

class Child {
public:
    explicit Child(const ChildLimits& limits) : mLimits(limits), mDeadline(Clock::now() + limits.time) {}

    // @return  0 or an error number
    int start(const std::string& path, const std::vector<std::string>& arguments, const std::string& input)
    {
        Descriptor inputFile;
        if (!openInput(inputFile, input) || !mOut.open() || !mErr.open()) return errno;
        FileActions actions;
        for (const int trouble :
             {actions.connect(inputFile, STDIN_FILENO), actions.connect(mOut.writeEnd, STDOUT_FILENO),
              actions.connect(mErr.writeEnd, STDERR_FILENO)}) {
            if (trouble != 0) return trouble;
        }
        std::vector<char*> words = {const_cast<char*>(path.c_str())};
        for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
        words.push_back(nullptr);
        const int trouble = ::posix_spawn(&mId, path.c_str(), actions.get(), nullptr, words.data(), environ);
        mOut.writeEnd.reset(-1);
        mErr.writeEnd.reset(-1);
        return trouble;
    }

    ChildRun finish()
    {
        ChildRun run;
        run.end = ChildRun::End::Exited;
        while (run.end == ChildRun::End::Exited && isOpen()) readSome(run);
        int status = 0;
        while (run.end == ChildRun::End::Exited && ::waitpid(mId, &status, WNOHANG) == 0) {
            if (remaining() == 0) run.end = ChildRun::End::TimedOut;
            ::poll(nullptr, 0, kPauseMilliseconds);
        }
        if (run.end != ChildRun::End::Exited) {
            ::kill(mId, SIGKILL);
            while (::waitpid(mId, &status, 0) < 0 && errno == EINTR) {}
            return run;
        }
        run.code = WEXITSTATUS(status);
        if (WIFSIGNALED(status)) {
            run.end = ChildRun::End::Signalled;
            run.code = WTERMSIG(status);
        }
        return run;
    }

private:
    bool isOpen() const { return mOut.readEnd.number() >= 0 || mErr.readEnd.number() >= 0; }

    int remaining() const
    {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(mDeadline - Clock::now()).count();
        constexpr int64_t longest = 1000; // looks at the clock in between
        return static_cast<int>(std::clamp<int64_t>(left, 0, longest));
    }

    void readSome(ChildRun& run)
    {
        pollfd waiting[2] = {{mOut.readEnd.number(), POLLIN, 0}, {mErr.readEnd.number(), POLLIN, 0}};
        const int left = remaining();
        if (left == 0) {
            run.end = ChildRun::End::TimedOut;
            return;
        }
        if (::poll(waiting, 2, left) <= 0) return; // nothing yet, or a signal
        if (waiting[0].revents != 0) readFrom(mOut.readEnd, run.out, mLimits.output + 1);
        if (waiting[1].revents != 0) readFrom(mErr.readEnd, run.message, kLongestMessage);
        if (run.out.size() > mLimits.output) run.end = ChildRun::End::TooLong;
    }

    // Closes the descriptor at the end. What goes beyond @p limit is dropped.
    static void readFrom(Descriptor& file, std::string& text, size_t limit)
    {
        char piece[65536];
        const ssize_t count = ::read(file.number(), piece, sizeof piece);
        if (count > 0) {
            text.append(piece, std::min(static_cast<size_t>(count), limit - std::min(limit, text.size())));
        } else if (count == 0 || errno != EINTR) {
            file.reset(-1);
        }
    }

    const ChildLimits& mLimits;
    Clock::time_point mDeadline;
    Pipe mOut;
    Pipe mErr;
    pid_t mId = -1;
};

bool isProgram(const std::string& path)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && ::access(path.c_str(), X_OK) == 0;
}

} // namespace

std::string findProgram(const std::string& name)
{
    const char* const variable = std::getenv("PATH");
    const std::string directories = variable == nullptr ? "" : variable;
    for (size_t start = 0; start < directories.size();) {
        const size_t end = std::min(directories.find(':', start), directories.size());
        const std::string path = directories.substr(start, end - start) + '/' + name;
        if (directories[start] == '/' && isProgram(path)) return path;
        start = end + 1;
    }
    return "";
}

ChildRun runChild(const std::string& path, const std::vector<std::string>& arguments, const std::string& input,
                  const ChildLimits& limits)
{
    ::signal(SIGCHLD, SIG_DFL); // where it is ignored, exit codes are lost
    Child child(limits);
    if (const int trouble = child.start(path, arguments, input)) {
        ChildRun run;
        run.code = trouble;
        return run;
    }
    return child.finish();
}

} // namespace NuxoTool
