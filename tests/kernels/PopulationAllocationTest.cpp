// SPDX-License-Identifier: Apache-2.0
// Filling an array with every allocation failing in turn: the right records or out of memory, and usable afterwards.
#include "kernels/PopulationFixture.h"

#include <support/AllocationFailures.h>

namespace graphtest {

namespace {

// No name fits into a string object itself.
const std::string kFirst = "first_program_group_of_the_stream";
const std::string kSecond = "second_program_group_of_the_stream";

class PopulationAllocationTest : public PopulationTest {
protected:
    PopulationAllocationTest()
    {
        const std::string from = "buffer_src0:port_0";
        const std::string first = joined(
            kFirst, 1, from, kSecond + ":in",
            kernel("scaling_kernel_with_a_long_name", 0, "branch_point='1'", resolution("4000x3000 > 2000x1500")) +
                kernel("sink_kernel_with_a_long_name", 1, "sink_port='1' metadata='100000000,200000000,3,4,5'") +
                kernel("reading_kernel_with_a_long_name", 2, "restore_point='1' rcb='1' source='" + from + "'"));
        const std::string second =
            joined(kSecond, 1, kFirst + ":out", "out_sink",
                   output("disabled_output_port", "far_sink", "id='5' enabled='0'") +
                       kernel("disabled_kernel_with_a_long_name", 0, "sink_port='5' branch_point='7'") +
                       kernel("confused_kernel_with_a_long_name", 1, "restore_point='9'"));
        start(frames("4000x3000", kFirst + ":in") + first + second + streamSink("out_sink", 1, kSecond + ":out"));
        EXPECT_EQ(mStarted, StatusOk);
        EXPECT_EQ(populate(), StatusOk);
        mGood = mRecords;
    }

    /// Whether the records are those of a call that nothing disturbed; they point to the same resolutions.
    bool areGood(const Records& records) const
    {
        return std::memcmp(records.data(), mGood.data(), mCapacity * sizeof(Record)) == 0;
    }

    Records mGood;
};

TEST_F(PopulationAllocationTest, IsFilledOrOutOfMemory)
{
    for (const uint32_t mask : {0U, 0x3fU}) {
        for (const bool forGood : {false, true}) {
            mLog.setMask(mask);
            AllocationFailures failures;
            Records records = mGood;
            int status = StatusOk;
            size_t outOfMemory = 0;
            bool escaped = false;
            const auto fillRecords = [&] {
                mPortHistories.clear();
                escaped = escapes([&] { status = mUtils->populateKernelArray(1, records.data(), 0, mPortHistories); });
            };
            failures.sweep(forGood, fillRecords, [&] {
                EXPECT_FALSE(escaped);
                EXPECT_TRUE(status == StatusNoMemory || (status == StatusOk && areGood(records))) << status;
                outOfMemory += status == StatusNoMemory ? 1U : 0U;
            });
            EXPECT_GT(outOfMemory, 0U);
            EXPECT_EQ(status, StatusOk); // of the last run, in which nothing failed
            EXPECT_TRUE(areGood(records));
        }
    }
}

} // namespace

} // namespace graphtest
