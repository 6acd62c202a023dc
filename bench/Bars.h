// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_BENCH_BARS_H
#define NUXO_BENCH_BARS_H

#include <optional>
#include <string>
#include <vector>

namespace bench {

/// What a measured figure must be.
struct Limit {
    enum Direction { AtMost, AtLeast };

    Direction direction;
    double bar;
    std::optional<double> aim;
};

inline Limit atMost(double bar, std::optional<double> aim = std::nullopt)
{
    return {Limit::AtMost, bar, aim};
}

inline Limit atLeast(double bar, std::optional<double> aim = std::nullopt)
{
    return {Limit::AtLeast, bar, aim};
}

/// The figures of this run. Those without a limit are shown for information.
class Bars {
public:
    void add(const std::string& name, double measured, const std::optional<Limit>& limit = std::nullopt);
    /// A run that could not be trusted, for example two sides that gave different answers.
    void addFailure(const std::string& name, const std::string& reason);

    /// Prints the table; whether all limits hold and no failure was noted.
    bool print() const;

private:
    struct Row {
        std::string name;
        double measured;
        std::optional<Limit> limit;
        std::string failure;
    };

    static bool passes(const Row& row);
    static void printRow(const Row& row);

    std::vector<Row> mRows;
};

} // namespace bench

#endif
