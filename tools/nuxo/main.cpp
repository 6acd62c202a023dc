// SPDX-License-Identifier: Apache-2.0
#include "Arguments.h"
#include "LibraryLog.h"
#include "Output.h"
#include "Session.h"
#include "verbs/Verbs.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <new>

namespace {

using NuxoTool::ExitCode;
using NuxoTool::Session;

void runVerb(Session& session)
{
    switch (session.arguments.verb) {
    case NuxoTool::Verb::Check: runCheck(session); break;
    case NuxoTool::Verb::Dump: runDump(session); break;
    case NuxoTool::Verb::Query: runQuery(session); break;
    case NuxoTool::Verb::Build: runBuild(session); break;
    case NuxoTool::Verb::Explain: runExplain(session); break;
    case NuxoTool::Verb::Diff: runDiff(session); break;
    case NuxoTool::Verb::Fmt: runFmt(session); break;
    case NuxoTool::Verb::Schema: runSchema(session); break;
    case NuxoTool::Verb::Ports: runPorts(session); break;
    case NuxoTool::Verb::Contexts: runContexts(session); break;
    case NuxoTool::Verb::Kernels: runKernels(session); break;
    case NuxoTool::Verb::History: runHistory(session); break;
    case NuxoTool::Verb::Draw: runDraw(session); break;
    case NuxoTool::Verb::FrameParams: runFrameParams(session); break;
    case NuxoTool::Verb::Formats: runFormats(session); break;
    }
}

void writeResult(Session& session)
{
    if (session.output.empty()) return;
    const std::string trouble = NuxoTool::writeOutput(session.output);
    if (trouble.empty()) return;
    session.findings.error("cannot-write", {}, "cannot write standard output: " + trouble, ExitCode::InputOutput);
}

// Nobody can be told of findings that are lost, but the exit code says so. It also counts what was written there before.
void writeFindings(Session& session, bool colour)
{
    const std::string findings = session.findings.toText(colour);
    std::fputs(findings.c_str(), stderr);
    if (std::fflush(stderr) != 0 || std::ferror(stderr) != 0) session.findings.raiseExitCode(ExitCode::InputOutput);
}

constexpr const char* kOutOfMemory = "out of memory";

void runGuarded(Session& session)
{
    try {
        runVerb(session);
    } catch (const std::bad_alloc&) {
        session.findings.error("internal", {}, kOutOfMemory, ExitCode::Internal);
    } catch (const std::exception& trouble) {
        session.findings.error("internal", {}, trouble.what(), ExitCode::Internal);
    }
}

ExitCode run(int argc, char** argv)
{
    const NuxoTool::ParsedArguments parsed = NuxoTool::parseArguments(argc, argv);
    Session session;
    session.output = parsed.output;
    if (!parsed.error.empty()) {
        session.findings.error("usage", {}, parsed.error, ExitCode::Usage);
        session.findings.note({}, "see nuxo --help and nuxo <verb> --help");
    } else if (parsed.arguments) {
        session.arguments = *parsed.arguments;
        if (session.arguments.verbose) NuxoTool::showLibraryLog();
        runGuarded(session);
    }
    writeResult(session);
    writeFindings(session, NuxoTool::wantsColour(parsed.colour));
    return session.findings.exitCode();
}

} // namespace

int main(int argc, char** argv)
{
    // A file that would grow too large is one that cannot be written, which is reported and cleaned up after.
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return static_cast<int>(run(argc, argv));
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "nuxo: error[internal]: %s\n", kOutOfMemory);
    } catch (const std::exception& trouble) {
        std::fprintf(stderr, "nuxo: error[internal]: %s\n", trouble.what());
    }
    return static_cast<int>(ExitCode::Internal);
}
