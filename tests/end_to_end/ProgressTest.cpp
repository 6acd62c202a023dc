// SPDX-License-Identifier: Apache-2.0
#include "Progress.h"

#include <gtest/gtest.h>

#include <string>

#include <pty.h>
#include <unistd.h>

namespace {

using NuxoTool::Progress;

// Standard error on a terminal of its own.
class ProgressTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(openpty(&mScreen, &mTerminal, nullptr, nullptr, nullptr), 0);
        mSaved = dup(STDERR_FILENO);
        dup2(mTerminal, STDERR_FILENO);
    }

    void TearDown() override { restore(); }

    void restore()
    {
        if (mSaved < 0) return;
        dup2(mSaved, STDERR_FILENO);
        close(mSaved);
        close(mTerminal);
        mSaved = -1;
    }

    // What the terminal shows; the work is over.
    std::string shown()
    {
        restore();
        std::string text;
        char piece[256];
        ssize_t count = 0;
        while ((count = read(mScreen, piece, sizeof piece)) > 0) text.append(piece, static_cast<size_t>(count));
        close(mScreen);
        return text;
    }

private:
    int mScreen = -1;
    int mTerminal = -1;
    int mSaved = -1;
};

TEST_F(ProgressTest, ShowsHowFarWorkHasComeAndClearsTheLine)
{
    {
        Progress progress(4, "settings", std::chrono::milliseconds(0));
        progress.step();
    }
    // a quarter of 40 characters
    EXPECT_EQ(shown(), "\r\033[K[##########..............................] 1 of 4 settings\r\033[K");
}

TEST_F(ProgressTest, ShowsNothingOfShortWork)
{
    {
        Progress progress(4, "settings");
        for (int i = 0; i < 4; ++i) progress.step();
    }
    EXPECT_EQ(shown(), "");
}

} // namespace
