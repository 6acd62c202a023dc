// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_SIMULATION_ALLOCATION_SWEEP_H
#define NUXO_TESTS_SIMULATION_ALLOCATION_SWEEP_H

#include "query/GraphFixture.h"

#include <support/AllocationFailures.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace graphtest {

/// Makes every C++ allocation of a call fail in turn: only that one, and from that one on.
class AllocationSweepTest : public GraphTest {
protected:
    /// A call and what it works on.
    class Call {
    public:
        virtual ~Call() = default;
        /// Runs while allocations fail; returns the status.
        virtual int act() = 0;
        /// Runs afterwards, after each act; with StatusOk the result must be whole, otherwise as a failure leaves it.
        virtual void judge(int status) = 0;
        /// What a call that fails must log, and nothing else; empty when that is not stated.
        virtual std::vector<std::string> linesOfFailure() const { return {}; }
    };
    using Prepare = std::function<std::unique_ptr<Call>()>;

    /// Every run must end with StatusOk or StatusNoMemory, throw nothing and lose nothing; the same objects must then
    /// serve a call that succeeds.
    void sweep(const Prepare& prepare)
    {
        prepare(); // names of its documents stay in the vocabulary
        for (const bool forGood : {false, true}) {
            size_t refused = 0;
            sweepOnce(forGood, prepare, refused);
            EXPECT_GT(refused, 0U) << "the call allocates nothing that it needs";
        }
    }

private:
    void sweepOnce(bool forGood, const Prepare& prepare, size_t& refused)
    {
        const size_t live = AllocationFailures::live();
        std::unique_ptr<Call> call = prepare();
        clearLog();
        int status = 0;
        bool thrown = false;
        AllocationFailures allocations;
        allocations.sweep(
            forGood,
            [&] {
                if (escapes([&] { status = call->act(); })) thrown = true;
            },
            [&] {
                ASSERT_FALSE(thrown);
                if (status != StatusOk) {
                    EXPECT_EQ(status, StatusNoMemory);
                    const std::vector<std::string> stated = call->linesOfFailure();
                    EXPECT_TRUE(stated.empty() || loggedExactly(stated));
                    ++refused;
                }
                call->judge(status);
                const int again = call->act();
                EXPECT_EQ(again, StatusOk);
                call->judge(again);
                call.reset();
                EXPECT_EQ(AllocationFailures::live(), live);
                call = prepare();
                clearLog();
            });
    }
};

} // namespace graphtest

#endif
