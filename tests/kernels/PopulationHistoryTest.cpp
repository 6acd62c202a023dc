// SPDX-License-Identifier: Apache-2.0
// How size and crop of the frame change from kernel to kernel. A factor tells how many pixels of the source one pixel of the
// frame stands for: sx = (input width - crop left - crop right) * 1024 / output width, cut off towards 0. A kernel's crop
// counts crop * s >> 10 pixels of the source, rounded down.
#include "kernels/PopulationFixture.h"

#include <climits>

namespace graphtest {

namespace {

/// Kernels by their own resolutions, "" for one that states none.
std::string chain(const Lines& resolutions)
{
    std::string all;
    int id = 0;
    for (const std::string& each : resolutions) {
        all += kernel("k" + std::to_string(id), id, "", each.empty() ? "" : resolution(each));
        ++id;
    }
    return all;
}

class PopulationHistoryTest : public PopulationTest {
protected:
    /// The history behind kernels with these resolutions, told by one that comes last.
    std::string behind(const std::string& size, Lines resolutions)
    {
        resolutions.emplace_back();
        EXPECT_EQ(fill(chain(resolutions), size), StatusOk);
        return history(resolutions.size() - 1);
    }
};

TEST_F(PopulationHistoryTest, BeginsWithWhatArrives)
{
    EXPECT_EQ(fill(kernels({"", ""}), "1234x567"), StatusOk);
    EXPECT_EQ(history(0), "1234x567 > 1234x567");
    EXPECT_EQ(history(1), "1234x567 > 1234x567");
}

TEST_F(PopulationHistoryTest, BeginsWithTheHistoryOfTheSensor)
{
    // The sensor has no pixel array, so the crop is that of the back end: 4208 - 8 - 8 = 2 * 2096, 3120 - 4 - 4 = 2 * 1556.
    start(element("source", "sensor", "width='4208' height='3120'", output("port_0", "csi_be:input")) +
          element("hw", "csi_be", "",
                  input("input", "sensor:port_0") + "<stream2mmio>" + frame("input", "2096x1556 8,4,8,4") +
                      "</stream2mmio>" + frame("port", "2096x1556", "name='output' direction='1' peer='pg_a:in'")) +
          joined("pg_a", 1, "csi_be:output", "out_sink", chain({"2096x1556 16,32,48,64 > 1000x700", ""})) +
          streamSink("out_sink", 1, "pg_a:out"));
    EXPECT_EQ(mStarted, StatusOk);
    // sx = 4192 * 1024 / 2096 = 2048, sy = 3112 * 1024 / 1556 = 2048: each pixel is two
    EXPECT_EQ(histories(handedOut(1)), (Lines{"4208x3120 8,4,8,4 > 2096x1556", "4208x3120 40,68,104,132 > 1000x700"}));
}

// Crops.

TEST_F(PopulationHistoryTest, CropsAreThoseOfTheSourceAtTheScaleOfTheFrame)
{
    // k0: sx = sy = 1024, so the crop counts as it is: 8,4,16,12
    // k1: sx = (4000 - 8 - 16) * 1024 / 2000 = 4071424 / 2000 = 2035 (.712)
    //     sy = (3000 - 4 - 12) * 1024 / 1500 = 3055616 / 1500 = 2037 (.077)
    //     left   10 * 2035 = 20350 >> 10 = 19    8 + 19 = 27
    //     top    20 * 2037 = 40740 >> 10 = 39    4 + 39 = 43
    //     right  30 * 2035 = 61050 >> 10 = 59   16 + 59 = 75
    //     bottom 40 * 2037 = 81480 >> 10 = 79   12 + 79 = 91
    EXPECT_EQ(fill(chain({"4000x3000 8,4,16,12 > 2000x1500", "2000x1500 10,20,30,40 > 1000x700", ""})), StatusOk);
    EXPECT_EQ(history(0), "4000x3000 > 4000x3000"); // what arrives, not what leaves
    EXPECT_EQ(history(1), "4000x3000 8,4,16,12 > 2000x1500");
    EXPECT_EQ(history(2), "4000x3000 27,43,75,91 > 1000x700");
}

// 4208 * 1024 / 1920 = 2244 (.26); 100 * 2244 = 224400 >> 10 = 219. Four bits would make 4208 * 16 / 1920 = 35 and
// 3500 >> 4 = 218.
TEST_F(PopulationHistoryTest, FactorsHaveTenFractionalBits)
{
    EXPECT_EQ(behind("4208x4208", {"4208x4208 > 1920x1920", "1920x1920 100,100,0,0 > 1720x1820"}),
              "4208x4208 219,219,0,0 > 1720x1820");
}

// sx = 4000 * 1024 / 2000 = 2048 for both sides: 500 pixels are 1000. What left has become does not count for right, where
// (4000 - 1000) * 1024 / 2000 = 1536 would make 750. Lines the same: sy = 3000 * 1024 / 1500 = 2048.
TEST_F(PopulationHistoryTest, BothSidesUseTheFactorBeforeTheKernel)
{
    EXPECT_EQ(behind("4000x3000", {"4000x3000 > 2000x1500", "2000x1500 500,400,500,400 > 1000x700"}),
              "4000x3000 1000,800,1000,800 > 1000x700");
}

// sx = sy = 3000 * 1024 / 2000 = 1536: left -1536 / 1024 = -1.5 down to -2, top -4.5 down to -5, right -3 exactly.
TEST_F(PopulationHistoryTest, NegativeCropsAreRoundedDown)
{
    EXPECT_EQ(behind("3000x3000", {"3000x3000 > 2000x2000", "2000x2000 -1,-3,-2,0 > 2003x2003"}),
              "3000x3000 -2,-5,-3,0 > 2003x2003");
}

// From there sx = (3000 + 2 + 3) * 1024 / 2003 = 3077120 / 2003 = 1536 (.25), sy = 3005 * 1024 / 2003 = 1536:
// 100 * 1536 >> 10 = 150.
TEST_F(PopulationHistoryTest, NegativeCropsWidenTheFactor)
{
    EXPECT_EQ(behind("3000x3000", {"3000x3000 > 2000x2000", "2000x2000 -1,-3,-2,0 > 2003x2003",
                                   "2003x2003 100,100,0,0 > 1903x1903"}),
              "3000x3000 148,145,-3,0 > 1903x1903");
}

// More is cropped than there is: sx = (100 - 150) * 1024 / 30 = -51200 / 30 = -1706 (.67 cut off);
// 3 * -1706 = -5118 >> 10 = -5 (-4.998 down). A factor rounded down, -1707, would make -6.
TEST_F(PopulationHistoryTest, FactorsAreCutOffTowardsZero)
{
    EXPECT_EQ(behind("100x100", {"100x100 150,0,0,0 > 30x100", "30x100 3,0,0,0 > 27x100"}),
              "100x100 145,0,0,0 > 27x100");
}

// A negative size is no size of 0: sx = 100 * 1024 / -50 = -2048, 5 * -2048 >> 10 = -10.
TEST_F(PopulationHistoryTest, NegativeSizesAreDividedBy)
{
    EXPECT_EQ(behind("100x100", {"100x100 > -50x100", "1x1 5,5,0,0 > 10x10"}), "100x100 -10,5,0,0 > 10x10");
}

// Columns and lines have factors of their own: sx = 4000 * 1024 / 1000 = 4096, sy = 3000 * 1024 / 3000 = 1024.
TEST_F(PopulationHistoryTest, ColumnsAndLinesHaveTheirOwnFactors)
{
    EXPECT_EQ(behind("4000x3000", {"4000x3000 > 1000x3000", "1000x3000 1,2,3,4 > 996x2994"}),
              "4000x3000 4,2,12,4 > 996x2994");
}

// An enlarged frame: sx = 1000 * 1024 / 3000 = 341 (.33), sy = 1000 * 1024 / 1500 = 682 (.67);
// 4 * 341 = 1364 >> 10 = 1, 2 * 682 = 1364 >> 10 = 1, 3 * 341 = 1023 >> 10 = 0, 3 * 682 = 2046 >> 10 = 1.
TEST_F(PopulationHistoryTest, EnlargedPixelsCountLess)
{
    EXPECT_EQ(behind("1000x1000", {"1000x1000 > 3000x1500", "3000x1500 4,2,3,3 > 2993x1495"}),
              "1000x1000 1,1,0,1 > 2993x1495");
}

// Large numbers.

// 3000000 * 1024 = 3072000000 is more than 2^31: sx = 3072000, sy = 2000000 * 1024 / 1000 = 2048000.
// left 10 * 3072000 >> 10 = 30000, top 10 * 2048000 >> 10 = 20000, right 700 * 3072000 = 2150400000 >> 10 = 2100000.
TEST_F(PopulationHistoryTest, ProductsBeyond32BitsAreExact)
{
    EXPECT_EQ(behind("3000000x2000000", {"3000000x2000000 > 1000x1000", "1000x1000 10,10,700,1 > 100x100"}),
              "3000000x2000000 30000,20000,2100000,2000 > 100x100");
}

// k0 crops 2147483647, so for k1 sx = (4 - 2147483647) * 1024 / 2000 = -2199023250432 / 2000 = -1099511625 (.2). Its crop
// of -4 is -4 * -1099511625 = 4398046500 >> 10 = 4294967, and 2147483647 + 4294967 - 2^32 = -2143188682.
TEST_F(PopulationHistoryTest, CropsWrapAt32Bits)
{
    EXPECT_EQ(behind("4x4", {"4x4 2147483647,0,0,0 > 2000x4", "2000x4 -4,0,0,0 > 4x4"}), "4x4 -2143188682,0,0,0 > 4x4");
}

// For k1 sx = (4 + 2 * 2147483648) * 1024 / -1 = -4398046515200; with a crop of 31 bits that is beyond 64 bits.
TEST_F(PopulationHistoryTest, ProductsBeyond64BitsDoNoHarm)
{
    const std::string least = "-2147483648,-2147483648,-2147483648,-2147483648";
    EXPECT_EQ(
        fill(chain({"4x4 " + least + " > -1x1", "1x1 2147483647,-2147483648,-2147483648,2147483647 > 5x7", ""}), "4x4"),
        StatusOk);
    EXPECT_EQ(history(1), "4x4 " + least + " > -1x1");
    EXPECT_EQ(record(2).resolution_history->output_width, 5);
    EXPECT_EQ(record(2).resolution_history->output_height, 7);
}

TEST_F(PopulationHistoryTest, ExtremeSizesAreCarried)
{
    const std::string largest = "2147483647x2147483647";
    EXPECT_EQ(fill(chain({largest + " 2147483647,2147483647,2147483647,2147483647 > -2147483648x-1",
                          largest + " -2147483648,-2147483648,2147483647,2147483647 > 1x-2147483648",
                          largest + " -2147483648,2147483647,2147483647,1 > 9x9", ""}),
                   largest),
              StatusOk);
    EXPECT_EQ(history(0), largest + " > " + largest);
    EXPECT_EQ(history(1), largest + " 2147483647,2147483647,2147483647,2147483647 > -2147483648x-1");
    EXPECT_EQ(record(3).resolution_history->input_width, INT_MAX);
    EXPECT_EQ(record(3).resolution_history->output_width, 9);
}

// What advances the history.

TEST_F(PopulationHistoryTest, OutputCropsAreNotTakenOff)
{
    EXPECT_EQ(behind("4000x3000", {"4000x3000 > 2000x1500 100,100,100,100"}), "4000x3000 > 2000x1500");
}

TEST_F(PopulationHistoryTest, InputSizesAreNotCompared)
{
    EXPECT_EQ(behind("4000x3000", {"77x55 > 2000x1500"}), "4000x3000 > 2000x1500");
    EXPECT_EQ(info(0), "77x55 > 2000x1500");
}

TEST_F(PopulationHistoryTest, EveryKernelWithResolutionsAdvancesWhateverItsState)
{
    const std::string half = resolution("4000x3000 8,8,8,8 > 2000x1500");
    for (const std::string attributes : {"", "rcb='0'", "rcb='1'", "rcb='2'", "enabled='0'", "enabled='2'"}) {
        EXPECT_EQ(fill(kernel("k0", 0, attributes, half) + kernel("k1", 1)), StatusOk);
        EXPECT_EQ(info(0), "4000x3000 8,8,8,8 > 2000x1500") << attributes;
        EXPECT_EQ(history(1), "4000x3000 8,8,8,8 > 2000x1500") << attributes;
    }
}

TEST_F(PopulationHistoryTest, KernelsWithoutResolutionsDoNotAdvance)
{
    EXPECT_EQ(behind("4000x3000", {"4000x3000 > 2000x1500", "", ""}), "4000x3000 > 2000x1500");
    EXPECT_EQ(info(1), "null");
}

TEST_F(PopulationHistoryTest, ResolutionChangerOnPaperPassesTheFrameThrough)
{
    EXPECT_EQ(fill(kernel("k0", 0, "", resolution("4000x3000 8,8,8,8 > 2000x1500")) + kernel("k1", 1, "rcb='1'") +
                   kernel("k2", 2)),
              StatusOk);
    EXPECT_EQ(info(1), "2000x1500 > 2000x1500");
    EXPECT_EQ(history(1), "4000x3000 8,8,8,8 > 2000x1500");
    EXPECT_EQ(history(2), "4000x3000 8,8,8,8 > 2000x1500");
}

TEST_F(PopulationHistoryTest, OnlyOneMakesAResolutionChanger)
{
    EXPECT_EQ(fill(kernels({"rcb='0'", "rcb='2'", "rcb='-1'", "rcb='1'"})), StatusOk);
    EXPECT_EQ(info(0) + " " + info(1) + " " + info(2), "null null null");
    EXPECT_EQ(info(3), "4000x3000 > 4000x3000");
}

// The pool still holds the crops that the kernel stated before.
TEST_F(PopulationHistoryTest, PassedThroughFramesAreNotCropped)
{
    startStream(kernel("k0", 0, "rcb='1'", resolution("4000x3000 1,2,3,4 > 2000x1500 5,6,7,8")));
    node("pg_a:k0")->removeDescendant(NUXO_KEY_OUTPUT);
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_EQ(info(0), "4000x3000 > 4000x3000");
}

// Frames of no size.

TEST_F(PopulationHistoryTest, FrameOfNoSizeCannotBeScaled)
{
    for (const std::string size : {"0x3", "4x0", "0x0"}) {
        EXPECT_EQ(fill(chain({"4x3 > " + size, "", "4x3 > 4x3", ""}), "4x3"), StatusMissingObject);
        EXPECT_EQ(count(kError, "Resolution history output width or height is 0"), 1U);
        EXPECT_EQ(history(2), "4x3 > " + size); // its own history is known
        EXPECT_EQ(info(2), "4x3 > 4x3");
        EXPECT_EQ(history(3), "null"); // nothing comes after it
    }
}

TEST_F(PopulationHistoryTest, FrameOfNoSizeCannotBePassedThroughAsAChange)
{
    EXPECT_EQ(fill(kernels({"rcb='1'"}), "0x3"), StatusMissingObject);
    EXPECT_EQ(info(0), "0x3 > 0x3");
    EXPECT_EQ(history(0), "0x3 > 0x3");
}

TEST_F(PopulationHistoryTest, FrameOfNoSizeReachesKernelsWithoutResolutions)
{
    EXPECT_EQ(behind("0x0", {"", ""}), "0x0 > 0x0");
    EXPECT_EQ(behind("4x3", {"4x3 > 0x0"}), "4x3 > 0x0"); // stated by the last one that changes anything
}

// Kernels that begin with another frame.

class PopulationSourceKernelTest : public PopulationTest {
protected:
    /// A kernel that halves and crops 4000x3000 pixels, one that reads from @p from, and one behind it.
    int fillFrom(const std::string& from, const std::string& attributes = "", const std::string& own = "")
    {
        return fill(input("ref", "out_sink", "private='1' id='3' width='800' height='600'") +
                    input("broad", "out_sink", "private='1' id='4' width='900'") +
                    kernel("k0", 0, "branch_point='1'", resolution("4000x3000 8,6,4,2 > 2000x1500")) +
                    kernel("k1", 1, "source='" + from + "' " + attributes, own) + kernel("k2", 2));
    }
};

TEST_F(PopulationSourceKernelTest, SizesBecomeThoseOfTheSourceAndCropsStay)
{
    EXPECT_EQ(fillFrom("pg_a:ref"), StatusOk);
    EXPECT_EQ(history(1), "800x600 8,6,4,2 > 800x600");
    EXPECT_EQ(history(2), "800x600 8,6,4,2 > 800x600"); // it is the running one
    EXPECT_EQ(info(1), "null");
}

// sx = (800 - 8 - 4) * 1024 / 800 = 1008 (.64), sy = (600 - 6 - 2) * 1024 / 600 = 1010 (.35);
// 100 * 1008 = 100800 >> 10 = 98, 100 * 1010 = 101000 >> 10 = 98
TEST_F(PopulationSourceKernelTest, OwnResolutionsCountFromTheSource)
{
    EXPECT_EQ(fillFrom("pg_a:ref", "", resolution("800x600 100,100,0,0 > 700x500")), StatusOk);
    EXPECT_EQ(history(1), "800x600 8,6,4,2 > 800x600");
    EXPECT_EQ(history(2), "800x600 106,104,4,2 > 700x500");
}

TEST_F(PopulationSourceKernelTest, RestoredHistoryIsReplacedToo)
{
    EXPECT_EQ(fill(input("ref", "out_sink", "private='1' id='3' width='800' height='600'") +
                   kernel("k0", 0, "branch_point='1'", resolution("4000x3000 8,6,4,2 > 2000x1500")) +
                   kernel("k1", 1, "", resolution("2000x1500 100,100,100,100 > 200x150")) +
                   kernel("k2", 2, "restore_point='1' source='pg_a:ref' rcb='1'")),
              StatusOk);
    EXPECT_EQ(history(2), "800x600 8,6,4,2 > 800x600");
    EXPECT_EQ(info(2), "800x600 > 800x600");
}

TEST_F(PopulationSourceKernelTest, SourceWithoutSizeIsReportedAndChangesNothing)
{
    for (const std::string from : {"pg_a:broad", "pg_a"}) {
        EXPECT_EQ(fillFrom(from), StatusOk);
        EXPECT_EQ(history(1), "4000x3000 8,6,4,2 > 2000x1500") << from;
        EXPECT_TRUE(logged(kError, from == "pg_a" ? "Error: Couldn't get width" : "Error: Couldn't get height"));
    }
}

TEST_F(PopulationSourceKernelTest, NameThatNothingHasIsNoSource)
{
    for (const std::string from : {"pg_a:nowhere", "nowhere", "", ":"}) {
        EXPECT_EQ(fillFrom(from), StatusOk);
        EXPECT_EQ(history(1), "4000x3000 8,6,4,2 > 2000x1500") << from;
        EXPECT_EQ(mLog.count(LogCapture::Error), 1U) << from; // the input history
    }
}

TEST_F(PopulationSourceKernelTest, SourceMayBeAnyNodeOfTheGraph)
{
    EXPECT_EQ(fillFrom("buffer_src0:port_0"), StatusOk);
    EXPECT_EQ(history(1), "4000x3000 8,6,4,2 > 4000x3000");
    EXPECT_EQ(fillFrom("pg_a:k0:output"), StatusOk);
    EXPECT_EQ(history(1), "2000x1500 8,6,4,2 > 2000x1500");
    EXPECT_EQ(fillFrom("pg_a:ref:width"), StatusOk); // the node that has the attribute
    EXPECT_EQ(history(1), "800x600 8,6,4,2 > 800x600");
}

} // namespace

} // namespace graphtest
