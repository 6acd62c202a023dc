// SPDX-License-Identifier: Apache-2.0
#include "ToolRun.h"

#include "support/Fuzzing.h"

#include "Arguments.h"
#include "LibraryLog.h"
#include "Session.h"
#include "verbs/Verbs.h"

#include <qv_cipr/qv_log_common.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>

namespace fuzzing {

namespace {

void runVerb(NuxoTool::Session& session)
{
    switch (session.arguments.verb) {
    case NuxoTool::Verb::Check: runCheck(session); break;
    case NuxoTool::Verb::Diff: runDiff(session); break;
    case NuxoTool::Verb::Dump: runDump(session); break;
    case NuxoTool::Verb::Fmt: runFmt(session); break;
    default: require(false, "a verb that is fuzzed");
    }
}

bool isHarmless(const std::string& text)
{
    return std::none_of(text.begin(), text.end(), [](char c) {
        const bool isControl = static_cast<unsigned char>(c) < 0x20U || c == '\x7f';
        return isControl && c != '\n' && c != '\t';
    });
}

} // namespace

// The tool keeps the lines of the library itself.
size_t linesLogged()
{
    qv_log_common_debug(QV_LOG_ERROR, "fuzz", "start");
    return NuxoTool::takeLibraryLog().size();
}

ToolAnswer runTool(const std::vector<std::string>& arguments)
{
    std::vector<const char*> words = {"nuxo"};
    for (const std::string& argument : arguments) words.push_back(argument.c_str());
    const NuxoTool::ParsedArguments parsed = NuxoTool::parseArguments(static_cast<int>(words.size()), words.data());
    require(parsed.arguments.has_value(), "the command line is understood");

    NuxoTool::Session session;
    session.arguments = *parsed.arguments;
    try {
        runVerb(session);
    } catch (const std::exception& problem) {
        require(false, problem.what());
    }
    ToolAnswer answer;
    answer.exitCode = static_cast<int>(session.findings.exitCode());
    answer.findings = session.findings.toText(false);
    answer.output = std::move(session.output);
    if (answer.exitCode < 0 || answer.exitCode > 3) require(false, answer.findings.c_str());
    require(isHarmless(answer.findings), "findings hold no control characters");
    const bool isSource = session.arguments.verb == NuxoTool::Verb::Fmt;
    require(isSource || isHarmless(answer.output), "output holds no control characters");
    return answer;
}

ToolFiles::ToolFiles()
{
    const char* const memory = "/dev/shm";
    std::error_code trouble;
    const bool hasMemory = std::filesystem::is_directory(memory, trouble);
    std::string pattern = (hasMemory ? memory : std::filesystem::temp_directory_path().string()) + "/nuxo-fuzz-XXXXXX";
    require(mkdtemp(pattern.data()) != nullptr, "a folder for files can be made");
    mFolder = pattern;
}

ToolFiles::~ToolFiles()
{
    std::error_code trouble;
    std::filesystem::remove_all(mFolder, trouble);
}

std::string ToolFiles::write(const std::string& name, const std::string& content)
{
    std::string path = mFolder + '/' + name;
    std::ofstream file(path, std::ios::binary);
    file << content;
    require(file.flush().good(), "files can be written");
    return path;
}

} // namespace fuzzing
