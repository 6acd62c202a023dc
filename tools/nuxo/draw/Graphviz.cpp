// SPDX-License-Identifier: Apache-2.0
#include "draw/Graphviz.h"

#include "Text.h"
#include "draw/ChildProcess.h"

#include <cstdlib>
#include <cstring>

namespace NuxoTool {

namespace {

constexpr const char* kProgram = "dot";
constexpr const char* kLimitVariable = "NUXO_DOT_SECONDS";
constexpr long kMostSeconds = 86400;

// Nothing, with a finding, when the environment holds no number of seconds.
std::optional<ChildLimits> limitsOf(Session& session)
{
    ChildLimits limits;
    const char* const text = std::getenv(kLimitVariable);
    if (text == nullptr || *text == '\0') return limits;
    char* end = nullptr;
    const long seconds = std::strtol(text, &end, 10);
    if (*end != '\0' || seconds < 1 || seconds > kMostSeconds) {
        session.findings.error("usage", {},
                               std::string(kLimitVariable) + " is '" + text + "'; expected seconds from 1 to " +
                                   std::to_string(kMostSeconds),
                               ExitCode::Usage);
        return std::nullopt;
    }
    limits.time = std::chrono::seconds(seconds);
    return limits;
}

void report(Session& session, const char* rule, const std::string& text, const std::string& wayOut)
{
    session.findings.error(rule, {}, text, ExitCode::InputOutput);
    session.findings.note({}, wayOut);
}

std::string firstLine(const std::string& text)
{
    return text.substr(0, text.find('\n'));
}

void reportEnd(Session& session, const std::string& path, const ChildRun& run, const ChildLimits& limits)
{
    const std::string saying = run.message.empty() ? "" : ", saying: " + firstLine(run.message);
    const std::string seconds =
        std::to_string(std::chrono::duration_cast<std::chrono::seconds>(limits.time).count()) + " s";
    switch (run.end) {
    case ChildRun::End::TimedOut:
        report(session, "dot-time", path + " was not done after " + seconds + " and was ended; expected a layout",
               "set " + std::string(kLimitVariable) +
                   " to more seconds, or draw one setting (--key) or one stream (--stream)");
        break;
    case ChildRun::End::TooLong:
        report(session, "dot-failed",
               path + " wrote more than " + std::to_string(limits.output >> 20U) +
                   " MiB and was ended; expected a layout",
               kPlainDrawing);
        break;
    case ChildRun::End::NotStarted:
        report(session, "dot-failed",
               path + " cannot be started: " + std::strerror(run.code) + "; expected graphviz's program",
               kPlainDrawing);
        break;
    case ChildRun::End::Signalled:
        report(session, "dot-failed",
               path + " was ended by signal " + std::to_string(run.code) + saying + "; expected a layout",
               kPlainDrawing);
        break;
    case ChildRun::End::Exited:
        report(session, "dot-failed",
               path + " ended with exit code " + std::to_string(run.code) +
                   (run.code == 0 ? " but wrote nothing" : "") + saying + "; expected a layout",
               kPlainDrawing);
        break;
    }
}

} // namespace

std::optional<std::string> layOut(Session& session, const std::string& drawing, const std::string& format)
{
    const std::optional<ChildLimits> limits = limitsOf(session);
    if (!limits) return std::nullopt;
    const std::string path = findProgram(kProgram);
    if (path.empty()) {
        report(
            session, "dot-missing", "the program 'dot' is in no directory of PATH; expected graphviz",
            "install graphviz (Debian: apt-get install graphviz), or use --format dot, which needs no other program");
        return std::nullopt;
    }
    ChildRun run = runChild(path, {"-T" + format}, drawing, *limits);
    if (run.end == ChildRun::End::Exited && run.code == 0 && !run.out.empty()) return std::move(run.out);
    reportEnd(session, path, run, *limits);
    return std::nullopt;
}

} // namespace NuxoTool
