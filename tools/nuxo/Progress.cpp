// SPDX-License-Identifier: Apache-2.0
#include "Progress.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include <unistd.h>

namespace NuxoTool {

namespace {

constexpr std::chrono::milliseconds kBetweenDraws(100);
constexpr size_t kWidth = 40;
constexpr const char* kClearLine = "\r\033[K";

} // namespace

Progress::Progress(size_t total, std::string what, std::chrono::milliseconds patience)
    : mTotal(std::max<size_t>(total, 1)), mWhat(std::move(what)), mIsOnTerminal(isatty(STDERR_FILENO) == 1),
      mNext(Clock::now() + patience)
{
}

Progress::~Progress()
{
    if (mIsDrawn) std::fputs(kClearLine, stderr);
}

void Progress::step()
{
    ++mDone;
    if (!mIsOnTerminal || Clock::now() < mNext) return;
    mNext = Clock::now() + kBetweenDraws;
    mIsDrawn = true;
    draw();
}

void Progress::draw() const
{
    const size_t filled = std::min(mDone, mTotal) * kWidth / mTotal;
    const std::string bar = std::string(filled, '#') + std::string(kWidth - filled, '.');
    std::fprintf(stderr, "%s[%s] %zu of %zu %s", kClearLine, bar.c_str(), mDone, mTotal, mWhat.c_str());
    std::fflush(stderr);
}

} // namespace NuxoTool
