// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_FORMATS_FORMATS_FIXTURE_H
#define NUXO_TESTS_FORMATS_FORMATS_FIXTURE_H

#include "formats/SecondComputation.h"

#include <nuxo/formats/NUXOFormats.h>

#include <support/LogCapture.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace formatstest {

using second::code;
using Lines = std::vector<std::string>;
using PerPlane = std::array<uint32_t, 3>;

/// What no function writes.
constexpr uint32_t kUnwritten = 0xA5A5A5A5;
constexpr PerPlane kAllUnwritten = {kUnwritten, kUnwritten, kUnwritten};

/// The four-character words of a text.
inline std::vector<uint32_t> codes(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<uint32_t> result;
    for (std::string word; stream >> word;) result.push_back(code(word.c_str()));
    return result;
}

/// The characters of a code, for messages.
inline std::string characters(uint32_t fourcc)
{
    std::string result;
    for (const int shift : {24, 16, 8, 0}) result += static_cast<char>(fourcc >> shift);
    return result;
}

/// A format that knows nothing but its code and its depth.
inline NUXOFormats::qv_format_t bareFormat(uint32_t fourcc, uint32_t bitDepth = 0)
{
    NUXOFormats::qv_format_t format;
    format.fourcc = fourcc;
    format.bitDepth = bitDepth;
    return format;
}

inline std::string formatsLine(uint32_t level, const std::string& message)
{
    return std::to_string(level) + " NUXOFormats[XOS] " + message;
}

/// Begins with a fresh working table and puts the one back that was there before.
class FormatsTest : public ::testing::Test {
protected:
    FormatsTest() : mSaved(NUXOFormats::gNUXOFormats)
    {
        NUXOFormats::gNUXOFormats.clear();
        NUXOFormats::initNUXOFormats();
    }

    ~FormatsTest() override { NUXOFormats::gNUXOFormats = mSaved; }

    /// What @p action logs, written "level tag message". It runs twice: levels 1, 2, 4 and 8 share a priority, so that
    /// entries are told from the first three by switching these off, and that nothing comes on those is a test of its own.
    template <class Action> Lines logOf(Action&& action)
    {
        mLog.clear();
        mLog.setMask(1 | 2 | 4);
        action();
        EXPECT_TRUE(mLog.isEmpty());
        mLog.clear();
        mLog.setMask(8 | 16 | 32);
        action();
        Lines result;
        for (const LogLine& line : mLog.lines())
            result.push_back(levelOf(line.priority) + " " + line.tag + " " + line.message);
        return result;
    }

    /// The same without function entries, which every mapping of a code brings.
    template <class Action> Lines findingsOf(Action&& action)
    {
        Lines result;
        for (const std::string& line : logOf(action)) {
            if (line.rfind("8 ", 0) != 0) result.push_back(line);
        }
        return result;
    }

    LogCapture mLog;

private:
    static std::string levelOf(int priority)
    {
        if (priority == LogCapture::Debug) return "8";
        return priority == LogCapture::Error ? "16" : priority == LogCapture::Warning ? "32" : "?";
    }

    std::vector<NUXOFormats::qv_format_t> mSaved;
};

} // namespace formatstest

#endif
