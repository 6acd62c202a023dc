// SPDX-License-Identifier: Apache-2.0
// The steps that look at one kernel: the port that it feeds, and the sum of its group's ids.
#include "kernels/KernelsFixture.h"

namespace graphtest {

namespace {

using KernelInfo = ZmtTevUtils::KernelInfo;

class SinkPortTest : public KernelsTest {
protected:
    /// Asks for the port @p sinkPort of the kernel `pg:k` in a group with these ports beside it.
    int handle(int sinkPort, const std::string& portsOfGroup, const std::string& portsOfKernel = "")
    {
        loadGraph(group("pg", "", portsOfGroup + kernel("k", 10, 0, "", portsOfKernel)));
        mInfo = {};
        mInfo.sinkPort = sinkPort;
        mDisabled = {77};
        return mUtils->handleSinkPort(mInfo, node("pg:k"), mDisabled, 41);
    }

    static std::string numbered(const std::string& name, int id, const std::string& attributes = "")
    {
        return port(name, "direction='1' id='" + std::to_string(id) + "' " + attributes);
    }

    KernelInfo mInfo;
    std::vector<int> mDisabled;
};

TEST_F(SinkPortTest, KernelStartsWithoutAnything)
{
    EXPECT_EQ(mInfo.rcb, 0);
    EXPECT_EQ(mInfo.branchPoint, 0);
    EXPECT_EQ(mInfo.sinkPort, -1);
    EXPECT_EQ(mInfo.restorePoint, -1);
    EXPECT_EQ(mInfo.sinkPortNode, nullptr);
    EXPECT_EQ(mInfo.sourceNode, nullptr);
}

TEST_F(SinkPortTest, PortOfTheGroupIsFoundById)
{
    EXPECT_EQ(handle(3, numbered("a", 1) + numbered("b", 3) + numbered("c", 3)), StatusOk);
    EXPECT_EQ(mInfo.sinkPortNode, node("pg:b"));
    EXPECT_EQ(mInfo.sinkPort, 3);
    EXPECT_EQ(mDisabled, std::vector<int>({77}));
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(handle(0, numbered("a", 1) + numbered("b", 0)), StatusOk);
    EXPECT_EQ(mInfo.sinkPortNode, node("pg:b"));
}

TEST_F(SinkPortTest, PortOfTheKernelComesFirst)
{
    EXPECT_EQ(handle(3, numbered("a", 3), numbered("own", 3)), StatusOk);
    EXPECT_EQ(mInfo.sinkPortNode, node("pg:k:own"));
    EXPECT_EQ(handle(3, numbered("a", 3), numbered("own", 4)), StatusOk);
    EXPECT_EQ(mInfo.sinkPortNode, node("pg:a"));
}

TEST_F(SinkPortTest, KernelOfADisabledPortIsNoted)
{
    EXPECT_EQ(handle(3, numbered("a", 3, "enabled='0'")), StatusOk);
    EXPECT_EQ(mInfo.sinkPortNode, node("pg:a"));
    EXPECT_EQ(mDisabled, std::vector<int>({77, 41}));
    EXPECT_TRUE(loggedExactly({"2 Found disabled terminal 3, going to disable its kernels."}));
}

TEST_F(SinkPortTest, PortIsDisabledByZeroOnly)
{
    for (const char* const state : {"enabled='1'", "enabled='2'", "enabled='-1'", "private='1'", ""}) {
        EXPECT_EQ(handle(3, numbered("a", 3, state)), StatusOk);
        EXPECT_EQ(mDisabled, std::vector<int>({77})) << state;
        EXPECT_TRUE(loggedExactly({})) << state;
    }
}

TEST_F(SinkPortTest, UnknownPortIsReported)
{
    EXPECT_EQ(handle(3, numbered("a", 1) + port("b", "direction='1'") + element("mux", "c", "id='3'")),
              StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 Kernel sink port id 3 invalid"}));
    EXPECT_EQ(mInfo.sinkPortNode, nullptr);
    EXPECT_EQ(mDisabled, std::vector<int>({77}));
    EXPECT_EQ(handle(-1, numbered("a", 1)), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 Kernel sink port id -1 invalid"}));
}

TEST_F(SinkPortTest, KernelWithoutAGroupHasNoPorts)
{
    loadGraph(group("pg", "", numbered("a", 3)));
    GraphConfigNode loose;
    mInfo.sinkPort = 3;
    EXPECT_EQ(mUtils->handleSinkPort(mInfo, &loose, mDisabled, 41), StatusBadArgument);
    EXPECT_TRUE(logged(kError, "Kernel sink port id 3 invalid"));
    EXPECT_EQ(mUtils->handleSinkPort(mInfo, nullptr, mDisabled, 41), StatusBadArgument);
    EXPECT_EQ(mDisabled, std::vector<int>());
}

constexpr const char* kBadIds = "16 Error: Bad kernel id(s). Kernel ids need to run from 0 to n. Check the GDF.";

TEST_F(SinkPortTest, IdsFromZeroUpHaveTheirSum)
{
    const std::pair<unsigned int, unsigned int> good[] = {{0, 0}, {0, 1}, {1, 2}, {3, 3}, {6, 4}, {4950, 100}};
    for (const auto& [sum, kernels] : good) EXPECT_EQ(mUtils->kernelIdSanityCheck(sum, kernels), StatusOk) << kernels;
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(SinkPortTest, OtherSumsAreReported)
{
    const std::pair<unsigned int, unsigned int> bad[] = {
        {4, 3}, {2, 3}, {1, 0}, {1, 1}, {0, 2}, {10, 4}, {5050, 100}, {4294967295U, 1}, {2147483649U, 2}};
    for (const auto& [sum, kernels] : bad) {
        clearLog();
        EXPECT_EQ(mUtils->kernelIdSanityCheck(sum, kernels), StatusBadState) << sum << " " << kernels;
        EXPECT_TRUE(loggedExactly({kBadIds}));
    }
}

// 92683 * 92682 / 2 = 4295022903 = 2^32 + 55607
TEST_F(SinkPortTest, SumsWrapAroundAt32Bits)
{
    EXPECT_EQ(mUtils->kernelIdSanityCheck(55607, 92683), StatusOk);
    EXPECT_EQ(mUtils->kernelIdSanityCheck(55606, 92683), StatusBadState);
    const unsigned int minusOneAndTwo = 4294967295U + 2U;
    EXPECT_EQ(mUtils->kernelIdSanityCheck(minusOneAndTwo, 2), StatusOk);
}

} // namespace

} // namespace graphtest
