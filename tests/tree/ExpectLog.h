// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_TREE_EXPECT_LOG_H
#define NUXO_TESTS_TREE_EXPECT_LOG_H

#include <support/LogCapture.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

// Priorities under which the message classes reach the system logger.
constexpr int kError = LogCapture::Error;
constexpr int kWarning = LogCapture::Warning;
constexpr int kDebug = LogCapture::Debug;

struct ExpectedLine {
    int priority;
    std::string message;
};

/// Exactly these lines of the graph code were logged, in this order, and nothing else.
inline void expectLines(const LogCapture& log, const std::vector<ExpectedLine>& expected)
{
    const std::vector<LogLine> lines = log.lines();
    EXPECT_EQ(expected.size(), lines.size());
    for (size_t i = 0; i < lines.size() && i < expected.size(); ++i) {
        EXPECT_EQ(expected[i].priority, lines[i].priority) << "line " << i;
        EXPECT_EQ("NUXO[XOS]", lines[i].tag) << "line " << i;
        EXPECT_EQ(expected[i].message, lines[i].message) << "line " << i;
    }
    for (size_t i = expected.size(); i < lines.size(); ++i) ADD_FAILURE() << "also logged: " << lines[i];
}

inline void expectNoLines(const LogCapture& log)
{
    EXPECT_TRUE(log.isEmpty());
}

#endif
