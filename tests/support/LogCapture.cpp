// SPDX-License-Identifier: Apache-2.0
#include <support/LogCapture.h>

#include <qv_cipr/qv_log_common.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <ostream>

namespace {

struct RawLine {
    int priority;
    char* text;
};

// Plain malloc throughout: a test that makes operator new fail must not make this fail, nor be counted by it.
class Recorder {
public:
    void start()
    {
        const std::lock_guard<std::mutex> guard(mMutex);
        forget();
        mActive = true;
    }

    void stop()
    {
        const std::lock_guard<std::mutex> guard(mMutex);
        forget();
        mActive = false;
    }

    void clear()
    {
        const std::lock_guard<std::mutex> guard(mMutex);
        forget();
    }

    void add(int priority, const char* format, va_list args)
    {
        const std::lock_guard<std::mutex> guard(mMutex);
        if (!mActive) return;

        char* text = nullptr;
        if (vasprintf(&text, format, args) < 0) std::abort();
        if (mSize == mCapacity) grow();
        mLines[mSize++] = RawLine{priority, text};
    }

    void opened(const char* ident, int option, int facility)
    {
        const std::lock_guard<std::mutex> guard(mMutex);
        ++mOpened;
        mIdent = ident;
        mOption = option;
        mFacility = facility;
    }

    void closed()
    {
        const std::lock_guard<std::mutex> guard(mMutex);
        ++mClosed;
    }

    std::vector<std::pair<int, std::string>> lines()
    {
        const std::lock_guard<std::mutex> guard(mMutex);
        std::vector<std::pair<int, std::string>> result;
        result.reserve(mSize);
        for (size_t i = 0; i < mSize; ++i) result.emplace_back(mLines[i].priority, mLines[i].text);
        return result;
    }

    SystemLogCalls calls()
    {
        const std::lock_guard<std::mutex> guard(mMutex);
        return {mOpened, mClosed, mIdent != nullptr ? mIdent : "", mOption, mFacility};
    }

private:
    void forget()
    {
        for (size_t i = 0; i < mSize; ++i) std::free(mLines[i].text);
        std::free(mLines);
        mLines = nullptr;
        mSize = mCapacity = 0;
        mOpened = mClosed = mOption = mFacility = 0;
        mIdent = nullptr;
    }

    void grow()
    {
        mCapacity = mCapacity == 0 ? 64 : 2 * mCapacity;
        mLines = static_cast<RawLine*>(std::realloc(mLines, mCapacity * sizeof(RawLine)));
        if (mLines == nullptr) std::abort();
    }

    std::mutex mMutex;
    bool mActive = false;
    RawLine* mLines = nullptr;
    size_t mSize = 0;
    size_t mCapacity = 0;
    int mOpened = 0;
    int mClosed = 0;
    int mOption = 0;
    int mFacility = 0;
    const char* mIdent = nullptr;
};

Recorder& recorder()
{
    static Recorder instance;
    return instance;
}

// "[thread id]:tag:message"; whatever does not look like that is all message.
LogLine parseLine(int priority, const std::string& text)
{
    LogLine line;
    line.priority = priority;
    line.message = text;
    if (text.empty() || text.front() != '[') return line;

    char* afterId = nullptr;
    const long threadId = std::strtol(text.c_str() + 1, &afterId, 10);
    const size_t tagStart = static_cast<size_t>(afterId - text.c_str()) + 2;
    if (text.compare(tagStart - 2, 2, "]:") != 0) return line;
    const size_t tagEnd = text.find(':', tagStart);
    if (tagEnd == std::string::npos) return line;

    line.threadId = threadId;
    line.tag = text.substr(tagStart, tagEnd - tagStart);
    line.message = text.substr(tagEnd + 1);
    return line;
}

const char* priorityName(int priority)
{
    if (priority == LogCapture::Error) return "error";
    if (priority == LogCapture::Warning) return "warning";
    if (priority == LogCapture::Debug) return "debug";
    return "unexpected priority";
}

} // namespace

// The names that the library calls to reach the system logger; a fortified build uses the second one. The header that
// declares them is not included, since it would define one of them inline in such a build.
extern "C" {

__attribute__((visibility("default"), format(printf, 2, 0))) void vsyslog(int priority, const char* format,
                                                                          va_list args)
{
    recorder().add(priority, format, args);
}

__attribute__((visibility("default"), format(printf, 3, 0))) void __vsyslog_chk(int priority, int, const char* format,
                                                                                va_list args)
{
    recorder().add(priority, format, args);
}

__attribute__((visibility("default"))) void openlog(const char* ident, int option, int facility)
{
    recorder().opened(ident, option, facility);
}

__attribute__((visibility("default"))) void closelog()
{
    recorder().closed();
}

} // extern "C"

std::ostream& operator<<(std::ostream& stream, const LogLine& line)
{
    return stream << priorityName(line.priority) << " (" << line.priority << ") " << line.tag << ": \"" << line.message
                  << '"';
}

LogCapture::LogCapture(uint32_t mask) : mMaskBefore(g_qv_log_common_level)
{
    recorder().start();
    setMask(mask);
}

LogCapture::~LogCapture()
{
    g_qv_log_common_level = mMaskBefore;
    recorder().stop();
}

void LogCapture::setMask(uint32_t mask)
{
    g_qv_log_common_level = mask;
}

uint32_t LogCapture::mask()
{
    return g_qv_log_common_level;
}

void LogCapture::clear()
{
    recorder().clear();
}

std::vector<LogLine> LogCapture::lines() const
{
    std::vector<LogLine> result;
    for (const auto& [priority, text] : recorder().lines()) result.push_back(parseLine(priority, text));
    return result;
}

std::vector<std::string> LogCapture::messages() const
{
    std::vector<std::string> result;
    for (const LogLine& line : lines()) result.push_back(line.message);
    return result;
}

std::vector<std::string> LogCapture::messages(int priority) const
{
    std::vector<std::string> result;
    for (const LogLine& line : lines()) {
        if (line.priority == priority) result.push_back(line.message);
    }
    return result;
}

size_t LogCapture::count() const
{
    return recorder().lines().size();
}

size_t LogCapture::count(int priority) const
{
    return messages(priority).size();
}

size_t LogCapture::count(int priority, const std::string& tag, const std::string& message) const
{
    const std::vector<LogLine> all = lines();
    return static_cast<size_t>(std::count_if(all.begin(), all.end(), [&](const LogLine& line) {
        return line.priority == priority && line.tag == tag && line.message == message;
    }));
}

testing::AssertionResult LogCapture::explain(bool result) const
{
    testing::AssertionResult explained = result ? testing::AssertionSuccess() : testing::AssertionFailure();
    explained << "the log holds " << count() << " lines";
    for (const LogLine& line : lines()) explained << "\n  " << line;
    return explained;
}

testing::AssertionResult LogCapture::has(int priority, const std::string& tag, const std::string& message) const
{
    return explain(count(priority, tag, message) > 0);
}

testing::AssertionResult LogCapture::hasOnly(int priority, const std::string& tag, const std::string& message) const
{
    return explain(count() == 1 && count(priority, tag, message) == 1);
}

testing::AssertionResult LogCapture::isEmpty() const
{
    return explain(count() == 0);
}

SystemLogCalls LogCapture::systemLogCalls() const
{
    return recorder().calls();
}
