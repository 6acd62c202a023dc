// SPDX-License-Identifier: Apache-2.0
// Thousands of kernels, streams and groups. If work grew with the square of their number, these tests would be the
// slowest of all.
#include "kernels/LargeLists.h"

namespace graphtest {

namespace {

class LargeListsTest : public KernelsTest {
protected:
    LargeListsTest() { mLog.setMask(0); }

    /// The records of the streams 0 to @p count - 1.
    Lines recordsOfAll(int count)
    {
        Lines all;
        for (int stream = 0; stream < count; ++stream) {
            for (const std::string& record : recordsOf(stream)) all.push_back(record);
        }
        return all;
    }

    /// What the chain must give; @p uuidOf tells the place of a stream in it, which is the uuid of its kernel.
    template <typename UuidOf> static Lines expectedRecords(int count, UuidOf uuidOf)
    {
        Lines all;
        for (int stream = 0; stream < count; ++stream) {
            const int uuid = uuidOf(stream);
            all.push_back(std::to_string(stream) + ":" + std::to_string(uuid) + " 1" +
                          (uuid == 0 ? " info 640x480>320x240 history 640x480>640x480" : " history 640x480>320x240"));
        }
        return all;
    }
};

TEST_F(LargeListsTest, KernelsThatAllFeedAPortThatIsOff)
{
    constexpr int kMany = 3000;
    std::string kernels;
    for (int i = 0; i < kMany; ++i) kernels += kernel("k" + std::to_string(i), i, i, "sink_port='5'");
    ASSERT_EQ(initWith(bufferSource("pg:in") +
                       stage("pg", 1, "buffer_src0:port_0", "video",
                             port("off", "direction='1' id='5' enabled='0'") + kernels) +
                       streamSink("video", 1, "pg:out")),
              StatusOk);
    const Lines all = recordsOf(1);
    ASSERT_EQ(all.size(), size_t{kMany});
    for (int i = 0; i < kMany; ++i) {
        EXPECT_EQ(all[static_cast<size_t>(i)], "1:" + std::to_string(i) + " 2 history 640x480>640x480");
    }
}

TEST_F(LargeListsTest, StreamsThatFeedEachOtherInTheirOrder)
{
    constexpr int kMany = 1000;
    mLog.setMask(kWarning); // errors would show the histories of all ports before each array
    ASSERT_EQ(initWith(streamChain(kMany, 0, 1)), StatusOk);
    EXPECT_EQ(recordsOfAll(kMany), expectedRecords(kMany, [](int stream) { return stream; }));
}

// The first stream that is asked for is the last one of the chain, so that all are filled for it.
TEST_F(LargeListsTest, StreamsThatFeedEachOtherAgainstTheirOrder)
{
    constexpr int kMany = 1000;
    ASSERT_EQ(initWith(streamChain(kMany, kMany - 1, -1)), StatusOk);
    EXPECT_EQ(recordsOfAll(kMany), expectedRecords(kMany, [](int stream) { return kMany - 1 - stream; }));
}

// Chains are followed to their ends only for the log.
TEST_F(LargeListsTest, RecordsAreTheSameWithAndWithoutDebugLines)
{
    constexpr int kSome = 40;
    for (const bool isDescending : {false, true}) {
        const auto uuidOf = [isDescending](int stream) { return isDescending ? kSome - 1 - stream : stream; };
        for (const uint32_t mask : {0U, kDebug | kError | kWarning}) {
            mLog.setMask(mask);
            renew();
            ASSERT_EQ(initWith(streamChain(kSome, uuidOf(0), isDescending ? -1 : 1)), StatusOk);
            EXPECT_EQ(count(kDebug, "stream-chain[0]: ctx 0 - out"), mask == 0 ? 0U : 1U);
            EXPECT_EQ(recordsOfAll(kSome), expectedRecords(kSome, uuidOf)) << isDescending << mask;
        }
    }
}

TEST_F(LargeListsTest, GroupsOfOneStreamGetTheirRecords)
{
    constexpr int kMany = 500;
    std::string nodes = bufferSource("g0:in") + streamSink("video", 1, "g0:out");
    for (int i = 0; i < kMany; ++i) {
        nodes += stage("g" + std::to_string(i), 1, "buffer_src0:port_0", "video",
                       kernel("late", 2 * i + 1, 1) + kernel("early", 2 * i, 0));
    }
    ASSERT_EQ(initWith(nodes), StatusOk);
    const std::string rest = " 1 history 640x480>640x480";
    for (int i = 0; i < kMany; ++i) {
        qv_isp_zmt_program_group pg = {};
        ASSERT_EQ(mUtils->getProgramGroup(node("g" + std::to_string(i)), pg), StatusOk);
        EXPECT_EQ(recordTexts(pg),
                  Lines({"1:" + std::to_string(2 * i) + rest, "1:" + std::to_string(2 * i + 1) + rest}));
    }
}

} // namespace

} // namespace graphtest
