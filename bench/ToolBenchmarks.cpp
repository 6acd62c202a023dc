// SPDX-License-Identifier: Apache-2.0
#include "Benchmarks.h"
#include "TemporaryFiles.h"

#include <cstdint>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

namespace {

const std::string kExamples = std::string(NUXO_SOURCE_DIR) + "/examples/";

std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    if (!file) throw std::runtime_error("cannot read " + path);
    return text.str();
}

// Every setting of a file again and again, each with a key of its own, until there are @p count.
std::string repeatedSettings(const std::string& text, size_t count)
{
    const std::string start = "<settings key=\"";
    const std::string end = "</settings>";
    const size_t first = text.find(start);
    const size_t last = text.rfind(end) + end.size();
    std::string repeated = text.substr(0, first);
    size_t at = first;
    for (size_t key = 1; key <= count; ++key) {
        const size_t keyEnd = text.find('"', at + start.size());
        const size_t settingsEnd = text.find(end, keyEnd) + end.size();
        repeated += start + std::to_string(key) + text.substr(keyEnd, settingsEnd - keyEnd) + '\n';
        at = text.find(start, settingsEnd);
        if (at == std::string::npos) at = first;
    }
    return repeated + text.substr(last);
}

struct Usage {
    double seconds = 0; ///< of one core
    double megabytes = 0;
};

[[noreturn]] void become(const std::vector<std::string>& command)
{
    std::vector<char*> arguments;
    for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    execv(arguments[0], arguments.data());
    _exit(127);
}

// What a run that ends well takes.
Usage usageOf(const std::vector<std::string>& command)
{
    const pid_t process = fork();
    if (process < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (process == 0) become(command);
    int status = 0;
    rusage used = {};
    while (wait4(process, &status, 0, &used) < 0) {
        if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "wait4");
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw std::runtime_error(command[1] + " found something");
    const auto secondsOf = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return {secondsOf(used.ru_utime) + secondsOf(used.ru_stime), static_cast<double>(used.ru_maxrss) / 1024};
}

void addUsage(Bars& bars, const std::string& name, const std::vector<std::string>& command, double mostSeconds,
              double mostMegabytes)
{
    try {
        const Usage usage = usageOf(command);
        bars.add(name + ": seconds of one core", usage.seconds, atMost(mostSeconds));
        bars.add(name + ": megabytes", usage.megabytes, atMost(mostMegabytes));
    } catch (const std::exception& problem) {
        bars.addFailure(name, problem.what());
    }
}

} // namespace

void addToolBenchmarks(Context& context)
{
    // Absolute bars: people wait for the tool, and none of these runs comes near its bar on a machine of today.
    constexpr double mostSeconds = 60;
    constexpr double mostSecondsOfExample = 1;
    constexpr double mostMegabytes = 300;
    const std::string settings = context.files.plain(
        "many_settings.xml", [] { return repeatedSettings(contentOf(kExamples + "kva6_settings.xml"), 3600); });
    addUsage(context.bars, "check, 3600 settings", {NUXO_TOOL, "check", kExamples + "kva6_descriptor.xml", settings},
             mostSeconds, mostMegabytes);
    for (const std::string generation : {"kva5", "kva6", "kva7"}) {
        addUsage(
            context.bars, "check, examples of " + generation,
            {NUXO_TOOL, "check", kExamples + generation + "_descriptor.xml", kExamples + generation + "_settings.xml"},
            mostSecondsOfExample, mostMegabytes);
    }
}

} // namespace bench
