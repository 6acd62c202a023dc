// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_SUPPORT_LOG_CAPTURE_H
#define NUXO_TESTS_SUPPORT_LOG_CAPTURE_H

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

/// One line as the library handed it to the system logger, taken apart.
struct LogLine {
    /// LogCapture::Error, Warning or Debug.
    int priority = -1;
    /// Kernel id of the thread that logged.
    long threadId = 0;
    std::string tag;
    std::string message;
};

std::ostream& operator<<(std::ostream& stream, const LogLine& line);

/// The calls of openlog and closelog since a capture began.
struct SystemLogCalls {
    int opened = 0;
    int closed = 0;
    /// Arguments of the last openlog.
    std::string ident;
    int option = 0;
    int facility = 0;
};

/// Stands in for the system logger in a test program: while a capture exists, what the library logs is kept in it;
/// otherwise it is dropped. Nothing ever reaches the logger of the machine.
///
/// One capture at a time. Lines may come from any thread. Keeping a line takes no C++ allocation, so that captures
/// and injected allocation failures do not disturb each other.
class LogCapture {
public:
    /// Priorities of syslog, by which levels 16, 32 and all others arrive.
    static constexpr int Error = 3;
    static constexpr int Warning = 4;
    static constexpr int Debug = 7;

    /// Starts with no lines and with the message classes of @p mask enabled.
    explicit LogCapture(uint32_t mask = 0x3f);
    /// Enables the message classes again that were enabled before.
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// Enables exactly these message classes from now on.
    void setMask(uint32_t mask);
    /// Forgets the lines and the calls so far.
    void clear();

    std::vector<LogLine> lines() const;
    /// The messages in order, of all lines or of those with one priority.
    std::vector<std::string> messages() const;
    std::vector<std::string> messages(int priority) const;

    /// Number of lines, of all or of those that match.
    size_t count() const;
    size_t count(int priority) const;
    size_t count(int priority, const std::string& tag, const std::string& message) const;

    /// Whether this very line was logged; says what was logged instead when the expectation fails.
    testing::AssertionResult has(int priority, const std::string& tag, const std::string& message) const;
    /// Whether exactly this line was logged and nothing else.
    testing::AssertionResult hasOnly(int priority, const std::string& tag, const std::string& message) const;
    /// Whether nothing was logged.
    testing::AssertionResult isEmpty() const;

    /// The lines that @p action logs when @p level is the only enabled class. This is how levels that share a priority
    /// (1, 2, 4 and 8) are told apart.
    template <class Action> std::vector<LogLine> linesOfLevel(uint32_t level, Action&& action)
    {
        const uint32_t before = mask();
        clear();
        setMask(level);
        action();
        setMask(before);
        return lines();
    }

    SystemLogCalls systemLogCalls() const;

private:
    static uint32_t mask();
    testing::AssertionResult explain(bool result) const;

    uint32_t mMaskBefore;
};

#endif
