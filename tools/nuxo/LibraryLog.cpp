// SPDX-License-Identifier: Apache-2.0
// The library logs through vsyslog. The tool exports functions of that name, so that the dynamic linker binds the
// library's calls to them. <syslog.h> stays out: with optimisation on it defines vsyslog inline.
#include "LibraryLog.h"

#include "Text.h"

#include <qv_cipr/qv_log_common.h>

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <iterator>
#include <string_view>

extern "C" {
QV_EXPORT void vsyslog(int priority, const char* format, va_list arguments) __attribute__((format(printf, 2, 0)));
QV_EXPORT void __vsyslog_chk(int priority, int flag, const char* format, va_list arguments)
    __attribute__((format(printf, 3, 0)));
}

namespace NuxoTool {

namespace {

constexpr int kPriorityMask = 7;
constexpr int kErrorPriority = 3;   // LOG_ERR
constexpr int kWarningPriority = 4; // LOG_WARNING
constexpr size_t kLineSize = 4096;
constexpr size_t kShownBytes = 400;
constexpr size_t kKeptLines = 300;
constexpr std::string_view kGeometryTag = "QV_DEC400_UTIL_WRAPPER[XOS]";

std::vector<LogLine> keptLines;
bool shown = false;

// The line reads "[thread id]:tag[XOS]:message"; the thread id differs from run to run.
std::string withoutThread(const std::string& line)
{
    const size_t end = line.find("]:");
    return !line.empty() && line[0] == '[' && end != std::string::npos ? line.substr(end + 2) : line;
}

std::string messageOf(const std::string& line)
{
    constexpr const char* tagEnd = "[XOS]:";
    const size_t end = line.find(tagEnd);
    std::string message = end == std::string::npos ? line : line.substr(end + 6);
    while (!message.empty() && (message.back() == '\n' || message.back() == ' ')) message.pop_back();
    return message;
}

// The geometry of compressed buffers logs each step of a computation that goes well as an error.
bool isGeometryStep(const std::string& line)
{
    return line.compare(0, kGeometryTag.size(), kGeometryTag) == 0;
}

// So does the analysis of graphs: it tells of each step of its walks, and shows the records that it works with.
bool isProgress(std::string_view message)
{
    constexpr std::string_view starts[] = {
        "Visiting  node ",
        "StreamId ",
        // It prunes what leads to no sink, and then misses it.
        "Traversal of graph did not reach all nodes ",
        // What a setting says of a node that the graph does not use makes a node without a type, and is shown in full.
        "Could not get type of graph node ",
        // Generations without such changes.
        "Getting kernel configurations failed(-2048)",
    };
    constexpr std::string_view ends[] = {" already visited, skipping", " is last one, stopping", " [Node]"};
    constexpr std::string_view parts[] = {":(iw: ", " str [Attr] '", " int [Attr] '"};
    const auto startsWith = [message](std::string_view text) { return message.substr(0, text.size()) == text; };
    const auto endsWith = [message](std::string_view text) {
        return message.size() >= text.size() && message.substr(message.size() - text.size()) == text;
    };
    const auto contains = [message](std::string_view text) { return message.find(text) != std::string_view::npos; };
    return std::any_of(std::begin(starts), std::end(starts), startsWith) ||
           std::any_of(std::begin(ends), std::end(ends), endsWith) ||
           std::any_of(std::begin(parts), std::end(parts), contains);
}

const char* className(int priority)
{
    if (priority == kErrorPriority) return "error";
    if (priority == kWarningPriority) return "warning";
    return "debug";
}

__attribute__((format(printf, 2, 0))) void receive(int priority, const char* format, va_list arguments)
{
    char buffer[kLineSize];
    if (std::vsnprintf(buffer, sizeof buffer, format, arguments) < 0) return;
    const std::string line = withoutThread(buffer);
    const int plainPriority = priority & kPriorityMask;
    if (shown) {
        const std::string text = printable(line.substr(0, kShownBytes));
        std::fprintf(stderr, "log[%s] %s\n", className(plainPriority), text.c_str());
    }
    if (plainPriority > kWarningPriority || keptLines.size() >= kKeptLines || isGeometryStep(line)) return;
    const std::string message = messageOf(line);
    if (!isProgress(message)) keptLines.push_back({plainPriority <= kErrorPriority, message});
}

__attribute__((format(printf, 2, 0))) void receiveSafely(int priority, const char* format, va_list arguments) noexcept
{
    try {
        receive(priority, format, arguments);
    } catch (const std::exception&) {
        // No memory for the line: nothing may be thrown into the library.
    }
}

} // namespace

void showLibraryLog()
{
    shown = true;
    const auto fromEnvironment = static_cast<uint32_t>(qv_log_get_config_int32("camera_css_debug"));
    g_qv_log_common_level |= QV_LOG_INFO | QV_LOG_DEBUG | fromEnvironment;
}

std::vector<LogLine> takeLibraryLog()
{
    std::vector<LogLine> lines;
    lines.swap(keptLines);
    return lines;
}

} // namespace NuxoTool

void vsyslog(int priority, const char* format, va_list arguments)
{
    NuxoTool::receiveSafely(priority, format, arguments);
}

void __vsyslog_chk(int priority, int /*flag*/, const char* format, va_list arguments)
{
    NuxoTool::receiveSafely(priority, format, arguments);
}
