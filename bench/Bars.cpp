// SPDX-License-Identifier: Apache-2.0
#include "Bars.h"

#include <cmath>
#include <cstdio>

namespace bench {

namespace {

constexpr const char* kLine = "%-64s %10s %10s %10s  %s\n";

std::string figure(double value)
{
    char text[32];
    std::snprintf(text, sizeof(text), std::fabs(value) < 100 ? "%.2f" : "%.0f", value);
    return text;
}

} // namespace

void Bars::add(const std::string& name, double measured, const std::optional<Limit>& limit)
{
    mRows.push_back({name, measured, limit, ""});
}

void Bars::addFailure(const std::string& name, const std::string& reason)
{
    mRows.push_back({name, 0, std::nullopt, reason});
}

bool Bars::passes(const Row& row)
{
    if (!row.failure.empty()) return false;
    if (!row.limit) return true;
    return row.limit->direction == Limit::AtMost ? row.measured <= row.limit->bar : row.measured >= row.limit->bar;
}

void Bars::printRow(const Row& row)
{
    if (!row.failure.empty()) {
        std::printf(kLine, row.name.c_str(), "-", "", "", ("FAIL: " + row.failure).c_str());
        return;
    }
    if (!row.limit) {
        std::printf(kLine, row.name.c_str(), figure(row.measured).c_str(), "", "", "");
        return;
    }
    const std::string sign = row.limit->direction == Limit::AtMost ? "<= " : ">= ";
    const std::string aim = row.limit->aim ? sign + figure(*row.limit->aim) : "";
    std::printf(kLine, row.name.c_str(), figure(row.measured).c_str(), (sign + figure(row.limit->bar)).c_str(),
                aim.c_str(), passes(row) ? "pass" : "FAIL");
}

bool Bars::print() const
{
    std::printf("\n");
    std::printf(kLine, "what", "measured", "bar", "aim", "");
    bool all = true;
    for (const Row& row : mRows) {
        printRow(row);
        all = all && passes(row);
    }
    return all;
}

} // namespace bench
