// SPDX-License-Identifier: Apache-2.0
// Fuzz target: the verbs check, fmt and diff of the tool. The input holds a descriptor, settings and another file to
// compare with either of them, parted by form feeds (which no XML text contains).
#include "ToolRun.h"
#include "support/Fuzzing.h"

#include <qv_cipr/qv_log_common.h>

#include <string>

namespace {

using fuzzing::require;
using fuzzing::runTool;
using fuzzing::ToolAnswer;
using fuzzing::ToolFiles;

constexpr char kPartEnd = '\f';

// Takes the text up to the next form feed, or all of it, off the front.
std::string takePart(std::string& text)
{
    const size_t length = text.find(kPartEnd);
    std::string part = text.substr(0, length);
    text.erase(0, length == std::string::npos ? length : length + 1);
    return part;
}

void compareWithItself(const std::string& path, const std::string& other)
{
    const ToolAnswer answer = runTool({"diff", path, other});
    require(answer.exitCode == 0, "a file and its canonical form mean the same");
    require(answer.output.empty(), "nothing is shown of equal files");
}

void format(ToolFiles& files, const std::string& path)
{
    const ToolAnswer formatted = runTool({"fmt", path});
    if (formatted.exitCode != 0) {
        require(formatted.output.empty(), "nothing is written of a file that cannot be formatted");
        return;
    }
    const std::string canonical = files.write("canonical.xml", formatted.output);
    const ToolAnswer again = runTool({"fmt", canonical});
    require(again.exitCode == 0, "what fmt writes can be formatted");
    require(again.output == formatted.output, "formatting twice changes nothing more");
    require(runTool({"fmt", "--check", canonical}).exitCode == 0, "what fmt writes is in canonical form");
    require(runTool({"dump", path}).output == runTool({"dump", canonical}).output, "the tree stays the same");
    compareWithItself(path, path);
    compareWithItself(path, canonical);
}

// A line of text output that starts with "  + " or "  - ".
size_t linesWith(const std::string& output, char mark)
{
    const std::string start = std::string("\n  ") + mark + ' ';
    size_t lines = 0;
    for (size_t at = output.find(start); at != std::string::npos; at = output.find(start, at + 1)) ++lines;
    return lines;
}

void compare(const std::string& a, const std::string& b)
{
    const ToolAnswer there = runTool({"diff", a, b});
    const ToolAnswer back = runTool({"diff", b, a});
    require(there.exitCode == back.exitCode, "both directions end alike");
    require(there.exitCode == 0 || !there.output.empty() || !there.findings.empty(), "what differs is shown");
    require(there.exitCode != 0 || there.output.empty(), "nothing is shown of equal files");
    require(linesWith(there.output, '+') == linesWith(back.output, '-'),
            "what is added one way is removed the other way");
    require(linesWith(there.output, '-') == linesWith(back.output, '+'),
            "what is removed one way is added the other way");
    require(linesWith(there.output, '~') == linesWith(back.output, '~'), "changes are changes both ways");
    const ToolAnswer json = runTool({"diff", a, b, "--format", "json"});
    require(json.exitCode == there.exitCode, "the format makes no difference");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const uint32_t usualLog = g_qv_log_common_level;
    const fuzzing::Run run;
    g_qv_log_common_level = usualLog; // as the tool leaves it
    static ToolFiles files;
    std::string text(reinterpret_cast<const char*>(data), size);
    const std::string descriptor = files.write("descriptor.xml", takePart(text));
    const std::string settings = files.write("settings.xml", takePart(text));
    const std::string other = files.write("other.xml", takePart(text));

    const char* const formats[] = {"text", "json", "sarif"};
    const ToolAnswer checked = runTool({"check", descriptor, settings, "--format", formats[size % 3]});
    require(checked.exitCode != 0 || runTool({"check", descriptor}).exitCode == 0, "a good pair has a good descriptor");
    for (const std::string& path : {descriptor, settings, other}) format(files, path);
    compare(descriptor, other);
    compare(settings, other);
    return 0;
}
