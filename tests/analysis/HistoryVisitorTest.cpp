// SPDX-License-Identifier: Apache-2.0
// What a visit does to one node: histories pass, and kernels that change the resolution add their crop and scale.
#include "analysis/HistoryFixture.h"

namespace historytest {

namespace {

class HistoryVisitorTest : public HistoryTest {
protected:
    /// A kernel `k` with these attributes and sizes between the ports of a group, ready for a visit with @p history.
    Access::ImagingNode& loadKernel(const std::string& attributes, const std::string& input, const std::string& output,
                                    const Info& history)
    {
        return loadBody(sized("k", 0, attributes, input, output), history);
    }

    Access::ImagingNode& loadBody(const std::string& kernels, const Info& history, const Texts& links = {"k:0>out"})
    {
        Texts all = {"in>k:0"};
        all.insert(all.end(), links.begin(), links.end());
        loadGroup(kernels, all);
        static_cast<void>(init()); // may fail: the test asks the node itself
        auto& port = inner("pg:in");
        port.visited = true;
        port.resHistories = {{"", history}};
        auto& k = inner("pg:k");
        k.visited = false;
        k.resInfos.clear();
        k.resHistories.clear();
        k.resHistory = {};
        clearLog();
        return k;
    }

    /// What leaves the kernel through output 0, or the status.
    std::string visit(Access::ImagingNode& node)
    {
        clearLog();
        const int status = access().resHistoryINodeVisitor(&node);
        return status == StatusOk ? text(node.resHistories.at("0")) : std::to_string(status);
    }

    /// The lines around those of the visit itself.
    static Texts visitLines(const Info& history, const Texts& between)
    {
        Texts all = {"2 --- Visiting node k ---", "2 Getting parent history for node k",
                     "2 Parent history for node k found: " + text(history)};
        all.insert(all.end(), between.begin(), between.end());
        all.emplace_back("2 --- Res history Visit of node k  DONE ---");
        return all;
    }
};

const std::string kRcb = "rcb='1'";

TEST_F(HistoryVisitorTest, KernelWithoutSizesPassesItsHistoryOn)
{
    const Info history = info(4208, 3120, 1920, 1080, {8, 4, 8, 4}, {1, 2, 3, 4});
    for (const std::string& attributes : {std::string(), kRcb}) {
        auto& k = loadBody(kernel("k", 0, attributes), history);
        EXPECT_EQ(visit(k), text(history));
        EXPECT_EQ(text(k.resHistory), text(history));
        EXPECT_TRUE(k.resInfos.empty());
        EXPECT_TRUE(logged(kDebug, "--- Res history Visit of node k  DONE ---"));
        EXPECT_TRUE(notLogged("resinfo(s)"));
        EXPECT_TRUE(notLogged("RCB node"));
        EXPECT_FALSE(k.visited); // the traversal's business
    }
}

TEST_F(HistoryVisitorTest, KernelThatIsNotRcbKeepsItsHistoryWhateverItsSizes)
{
    auto& k = loadKernel("", size(100, 50) + "left='10'", size(90, 50), frame(1920, 1080));
    EXPECT_EQ(visit(k), text(frame(1920, 1080)));
    EXPECT_EQ(text(k.resHistory), text(frame(1920, 1080)));
    EXPECT_EQ(text(k.resInfos.at("0")), text(info(100, 50, 90, 50, {10, 0, 0, 0})));
    EXPECT_TRUE(loggedExactly(
        visitLines(frame(1920, 1080),
                   {"2 node k has 1 resinfo(s)",
                    "2 [0]: (iw: 100 ih: 50 (l: 10, t: 0, r: 0, b: 0),ow: 90, oh: 50 (l: 0, t: 0, r: 0, b: 0)"})));
}

// The source is 4208x3120, of which 8 columns left, 4 right, 16 lines at the top and 24 at the bottom are gone, scaled to
// 1920x1080. In 10 bits behind the point:
//   horizontal (4208 - 8 - 4) << 10 = 4196 * 1024 = 4296704, / 1920 = 2237 (2237.866)
//   vertical   (3120 - 16 - 24) << 10 = 3080 * 1024 = 3153920, / 1080 = 2920 (2920.296)
// The kernel crops left 101, top 33, right 55, bottom 7:
//   left    101 * 2237 = 225937, >> 10 = 220 (220.6)    8 + 220 = 228
//   right    55 * 2237 = 123035, >> 10 = 120 (120.15)   4 + 120 = 124
//   top      33 * 2920 =  96360, >> 10 =  94 (94.1)    16 +  94 = 110
//   bottom    7 * 2920 =  20440, >> 10 =  19 (19.96)   24 +  19 = 43
// It gives 1280x720, from which its output crop takes 10 + 6 columns and 3 + 5 lines: 1264x712. The output crop of the
// history stays, the kernel's own is used up.
TEST_F(HistoryVisitorTest, RcbKernelAddsItsCropInPixelsOfTheSource)
{
    const Info history = info(4208, 3120, 1920, 1080, {8, 16, 4, 24}, {1, 2, 3, 4});
    auto& k = loadKernel(kRcb, size(1920, 1080) + "left='101' top='33' right='55' bottom='7'",
                         size(1280, 720) + "left='10' top='3' right='6' bottom='5'", history);
    const Info own = info(1920, 1080, 1280, 720, {101, 33, 55, 7}, {10, 3, 6, 5});
    const Info result = info(4208, 3120, 1264, 712, {228, 110, 124, 43}, {1, 2, 3, 4});
    EXPECT_EQ(visit(k), text(result));
    EXPECT_EQ(text(k.resHistory), text(history)); // what arrives
    EXPECT_TRUE(loggedExactly(visitLines(history, {"2 node k has 1 resinfo(s)", "2 [0]: " + text(own),
                                                   "2 RCB node k history", "2 [0]: " + text(result)})));
}

// Enlarging by two: (960 << 10) / 1920 = 512. A crop of 3 at the kernel is 3 * 512 >> 10 = 1 pixel of the source.
TEST_F(HistoryVisitorTest, CropOfAnEnlargedFrameShrinks)
{
    auto& k = loadKernel(kRcb, size(1920, 1080) + "left='3' top='2' right='4' bottom='1'", size(1913, 1077),
                         info(960, 540, 1920, 1080));
    EXPECT_EQ(visit(k), text(info(960, 540, 1913, 1077, {1, 1, 2, 0})));
}

// A crop of -5 adds to the frame. Factors are (1920 << 10) / 1280 = 1536 and (1080 << 10) / 720 = 1536:
// -5 * 1536 = -7680, >> 10 = -8, as the shift goes down (-7.5).
TEST_F(HistoryVisitorTest, NegativeCropIsShiftedDown)
{
    auto& k = loadKernel(kRcb, size(1280, 720) + "left='-5' top='-5' right='5' bottom='5'", size(1280, 720),
                         info(1920, 1080, 1280, 720));
    EXPECT_EQ(visit(k), text(info(1920, 1080, 1280, 720, {-8, -8, 7, 7})));
}

// More is cropped than there is: (100 - 90 - 30) * 1024 = -20480, / 7 = -2925 (-2925.7, cut towards zero);
// 3 * -2925 = -8775, >> 10 = -9 (-8.57). Vertically (100 - 0 - 0) * 1024 / 10 = 10240, 1 * 10240 >> 10 = 10.
TEST_F(HistoryVisitorTest, NegativeFactorIsCutTowardsZero)
{
    auto& k = loadKernel(kRcb, size(7, 10) + "left='3' top='1'", size(7, 10), info(100, 100, 7, 10, {90, 0, 30, 0}));
    EXPECT_EQ(visit(k), text(info(100, 100, 7, 10, {81, 10, 30, 0})));
}

TEST_F(HistoryVisitorTest, WholeRangeOfNumbersIsSurvived)
{
    const std::string largest = "2147483647";
    auto& k = loadKernel(kRcb, size(1, 1) + "left='" + largest + "' right='-2147483648'",
                         "width='-2147483648' height='0' left='" + largest + "'", info(INT32_MAX, INT32_MAX, 1, 1));
    EXPECT_EQ(access().resHistoryINodeVisitor(&k), StatusOk);
}

// Both outputs are computed from what arrives, not one from the other. (1920 << 10) / 1920 = 1024, so crops stay.
TEST_F(HistoryVisitorTest, EachOutputIsComputedFromWhatArrives)
{
    auto& k = loadBody(kernel("k", 0, kRcb,
                              "<input " + size(1920, 1080) + "left='10' right='20'/><output id='0' " + size(1280, 720) +
                                  "left='4'/><output id='1' " + size(640, 480) + "/>") +
                           out("side"),
                       frame(1920, 1080), {"k:0>out", "k:1>side"});
    EXPECT_EQ(visit(k), text(info(1920, 1080, 1276, 720, {10, 0, 20, 0})));
    EXPECT_EQ(text(k.resHistories.at("1")), text(info(1920, 1080, 640, 480, {10, 0, 20, 0})));
    EXPECT_TRUE(logged(kDebug, "node k has 2 resinfo(s)"));
    EXPECT_TRUE(logged(kDebug, "[1]: " + text(info(1920, 1080, 640, 480, {10, 0, 20, 0}))));
}

TEST_F(HistoryVisitorTest, InputThatDoesNotFitIsAnError)
{
    const struct {
        int width;
        int height;
        std::string got;
    } cases[] = {{1920, 1080, "1920x1080"}, {1280, 1080, "1280x1080"}, {1920, 720, "1920x720"}};
    for (const auto& c : cases) {
        auto& k = loadKernel(kRcb, size(c.width, c.height), size(640, 480), frame(1280, 720));
        EXPECT_EQ(visit(k), "-16");
        EXPECT_TRUE(logged(kError, "Consistency error in kernel k, res info input(" + c.got +
                                       ") is different than res history output(1280x720)- check your settings!"));
        EXPECT_TRUE(notLogged("DONE"));
    }
}

TEST_F(HistoryVisitorTest, InputCropIsNoPartOfTheComparison)
{
    auto& k = loadKernel(kRcb, size(1280, 720) + "left='40' right='40'", size(1200, 720), frame(1280, 720));
    EXPECT_EQ(visit(k), text(info(1280, 720, 1200, 720, {40, 0, 40, 0})));
    auto& l = loadKernel(kRcb, size(1360, 720) + "left='40' right='40'", size(1280, 720), frame(1280, 720));
    EXPECT_EQ(visit(l), "-16");
}

TEST_F(HistoryVisitorTest, SwitchedOffAndBypassedRcbKernelsCountAsWell)
{
    for (const char* enabled : {" enabled='0'", " enabled='2'"}) {
        auto& k = loadKernel(kRcb + enabled, size(1280, 720) + "left='40'", size(640, 480), frame(1280, 720));
        EXPECT_EQ(visit(k), text(info(1280, 720, 640, 480, {40, 0, 0, 0})));
        auto& l = loadKernel(kRcb + enabled, size(1920, 1080), size(640, 480), frame(1280, 720));
        EXPECT_EQ(visit(l), "-16");
    }
}

TEST_F(HistoryVisitorTest, HistoryOfNoSizeIsAnErrorBeforeTheDivision)
{
    for (const Info& history : {info(1280, 720, 0, 720), info(1280, 720, 1280, 0), Info{}}) {
        auto& k = loadKernel(kRcb, "width='0' height='0'", size(640, 480), history);
        EXPECT_EQ(visit(k), "-16");
        EXPECT_TRUE(logged(kError, "Resolution history output width or height is 0"));
        EXPECT_TRUE(notLogged("Consistency error"));
        EXPECT_TRUE(notLogged("RCB node"));
    }
    // a kernel that changes nothing passes nothing on
    auto& k = loadKernel("", size(1280, 720), size(640, 480), info(1280, 720, 0, 0));
    EXPECT_EQ(visit(k), text(info(1280, 720, 0, 0)));
}

TEST_F(HistoryVisitorTest, NegativeSizesPass)
{
    // (100 << 10) / -10 = -10240; 1 * -10240 >> 10 = -10
    auto& k = loadKernel(kRcb, size(-10, -10) + "left='1'", size(5, 5), info(100, 100, -10, -10));
    EXPECT_EQ(visit(k), text(info(100, 100, 5, 5, {-10, 0, 0, 0})));
}

TEST_F(HistoryVisitorTest, UnreadableSizesAreAnError)
{
    auto& k = loadKernel("", size(1280, 720), "width='640'", frame(1280, 720));
    EXPECT_EQ(visit(k), "-16");
    EXPECT_TRUE(logged(kError, "Retrieval of resolution info for RCB kernel k Failed"));
}

TEST_F(HistoryVisitorTest, NodeThatIsNotReadyIsLeftAsItWas)
{
    auto& k = loadKernel(kRcb, size(1280, 720), size(640, 480), frame(1280, 720));
    inner("pg:in").visited = false;
    EXPECT_EQ(visit(k), "-1024");
    EXPECT_TRUE(
        loggedExactly({"2 --- Visiting node k ---", "2 Getting parent history for node k",
                       "2 Node k not ready to be visited, not all active parents have been visited yet ex: pg:in",
                       "2 --- Res history node k  SKIPPED, will try again later ---"}));
    EXPECT_TRUE(k.resHistories.empty());
    EXPECT_TRUE(k.resInfos.empty());
    EXPECT_EQ(text(k.resHistory), text(Info{}));
}

TEST_F(HistoryVisitorTest, DisabledNodeStopsTheWalk)
{
    auto& k = loadKernel(kRcb, size(1280, 720), size(640, 480), frame(1280, 720));
    k.flags |= Access::DisabledNode;
    EXPECT_EQ(visit(k), "-256");
    EXPECT_TRUE(
        loggedExactly({"2 --- Visiting node k ---", "2 --- Res history Visit of node k  SKIPPED node disabled ---"}));
    EXPECT_TRUE(k.resHistories.empty());
}

TEST_F(HistoryVisitorTest, MissingParentHistoryIsPassedUp)
{
    auto& k = loadKernel("", size(1280, 720), size(640, 480), frame(1280, 720));
    inner("pg:in").resHistories = {{"elsewhere", frame(1280, 720)}};
    EXPECT_EQ(visit(k), "-16");
    EXPECT_TRUE(loggedExactly({"2 --- Visiting node k ---", "2 Getting parent history for node k",
                               "16 Could not find the res history for  parent output port  ",
                               "16 Could not find parent history for node k"}));
}

class PassingNodesTest : public InnerNodeTest {};

TEST_F(PassingNodesTest, RoutingNodesAndPortsPassTheirHistoryToAllChildren)
{
    const Info history = info(4208, 3120, 1920, 1080, {8, 16, 4, 24}, {1, 2, 3, 4});
    for (const auto type : {Access::MUX, Access::DEMUX, Access::SPLIT, Access::INPUT_PORT, Access::OUTPUT_PORT}) {
        auto& parent = node("parent");
        auto& n = node("n", type);
        join(parent, n, "2");
        parent.visited = true;
        parent.resHistories = {{"2", history}};
        for (const char* output : {"0", "5"}) join(n, node("child"), output);
        clearLog();
        ASSERT_EQ(access().resHistoryINodeVisitor(&n), StatusOk) << type;
        EXPECT_EQ(text(n.resHistory), text(history));
        EXPECT_EQ(text(n.resHistories.at("0")), text(history));
        EXPECT_EQ(text(n.resHistories.at("5")), text(history));
        EXPECT_TRUE(
            loggedExactly({"2 --- Visiting node n ---", "2 Getting parent history for node n",
                           "2 Parent history for node n found: " + text(history),
                           "2 Resolution history: " + text(history), "2 --- Res history Visit of node n  DONE ---"}));
    }
}

} // namespace

} // namespace historytest
