// SPDX-License-Identifier: Apache-2.0
// One graph computed by hand, number by number.
//
//   stream 0   tpg -> csi_be:output
//   stream 9   buffer_src0, in which stream 2 left its last frame, so that both streams feed each other
//   stream 1   front    in > black > crop > path -1-> fast > join > half > fork -0-> main_out
//                                           path -0-x slow x-0- join      fork -1-> grid > stats_out (off)
//              mixer    in > align -----> blend > fork -0-> two -0-> out
//                       ref_in > ref_warp > blend            two -1-> small_out
//                       back_in > fuse > blend     fork -1-> pack > ref_out (back to ref_in)
//   stream 2   scale    in > zoom > out,  aux_in > tone > aux_out
//
// `path` is a demux with output 1 active, `join` a mux with input 1 active, so nothing is linked to `slow`.
//
// Histories are written "input [left top right bottom] output". What a kernel crops counts in pixels of the source:
// crop * factor >> 10, where factor is (input - crops of the history) * 1024 / output, rounded down.
//
// Source S. The back end takes 4096x3072, crops 64 columns and 32 lines on each side and delivers 3968x3008:
//   S = 4096x3072 [64 32 64 32] 3968x3008
//
// black     S arrives; its own sizes change nothing, as it is not rcb.
// crop      S arrives. factors 3968 * 1024 / 3968 = 1024 and 3008 * 1024 / 3008 = 1024
//           left 64 + 64 = 128, right 64 + 64 = 128, top 32 + 4 = 36, bottom 32 + 4 = 36; it delivers 3840x3000
//           C = 4096x3072 [128 36 128 36] 3840x3000
// slow      has no links: off, nothing arrives
// fast      C arrives; bypassed, no sizes of its own
// half      C arrives. It crops nothing at its input and delivers 1920x1500, of which 10 lines at the top and 10 at the
//           bottom are cropped: 1500 - 10 - 10 = 1480
//           H = 4096x3072 [128 36 128 36] 1920x1480
// grid      feeds only stats_out, which is off: off, nothing arrives, and its sizes are not read
// align     H arrives, through the connection from front:main_out to mixer:in
// ref_warp  the frame before: nobody knows its history yet, so it is what the first input of the stream received, S, with
//           the size of the port, 960x740
//           R = 4096x3072 [64 32 64 32] 960x740
// fuse      the last frame of stream 2 as it lies in memory, B = 800x480 [0 0 0 0] 800x480
// blend     H, R and B arrive. H is larger than both in both directions, so H counts.
// pack      H arrives
// two       H arrives. horizontal (4096 - 128 - 128) * 1024 = 3840 * 1024 = 3932160, / 1920 = 2048
//                      vertical   (3072 - 36 - 36) * 1024 = 3000 * 1024 = 3072000, / 1480 = 2075 (2075.68)
//           left    21 * 2048 =  43008, >> 10 =  42            128 +  42 = 170
//           right   11 * 2048 =  22528, >> 10 =  22            128 +  22 = 150
//           top    200 * 2075 = 415000, >> 10 = 405 (405.27)    36 + 405 = 441
//           bottom 199 * 2075 = 412925, >> 10 = 403 (403.25)    36 + 403 = 439
//           output 0 delivers 1280x720, output 1 640x360 less 16 columns on the right
//           T0 = 4096x3072 [170 441 150 439] 1280x720
//           T1 = 4096x3072 [170 441 150 439] 624x360
// zoom      T0 arrives. horizontal (4096 - 170 - 150) * 1024 = 3776 * 1024 = 3866624, / 1280 = 3020 (3020.8)
//                       vertical   (3072 - 441 - 439) * 1024 = 2192 * 1024 = 2244608, / 720 = 3117 (3117.51)
//           left   10 * 3020 = 30200, >> 10 = 29 (29.49)    170 + 29 = 199
//           top     5 * 3117 = 15585, >> 10 = 15 (15.22)    441 + 15 = 456
//           right   6 * 3020 = 18120, >> 10 = 17 (17.70)    150 + 17 = 167
//           bottom  3 * 3117 =  9351, >> 10 =  9 (9.13)     439 +  9 = 448
//           Z = 4096x3072 [199 456 167 448] 800x480 leaves
// tone      T1 arrives
#include "analysis/HistoryFixture.h"

#include <map>

namespace historytest {

namespace {

class HistoryWorkedExampleTest : public HistoryTest {
protected:
    HistoryWorkedExampleTest()
    {
        load(captureNodes() + front() + mixer() + scale() + sink("stats", 1) + sink("video", 2) + sink("thumb", 2),
             {"buffer_src0:port_0>mixer:back_in", "tpg:port_0>csi_be:input", "csi_be:output>front:in",
              "front:main_out>mixer:in", "front:stats_out>stats", "mixer:ref_out>mixer:ref_in", "mixer:out>scale:in",
              "mixer:small_out>scale:aux_in", "scale:out>video", "scale:aux_out>thumb"});
    }

    static std::string captureNodes()
    {
        return element("source", "buffer_src0", "stream_id='9'", out("port_0", size(800, 480))) +
               element("source", "tpg", "stream_id='0'", out("port_0", size(4096, 3072))) +
               element(
                   "hw", "csi_be", "stream_id='0'",
                   "<zmt_pixelformatter><input width='4096' height='3072' left='64' top='32' right='64' bottom='32'/>"
                   "</zmt_pixelformatter>" +
                       in("input") + out("output", size(3968, 3008)));
    }

    static std::string front()
    {
        return group("front", 1,
                     in("in") + out("main_out") + out("stats_out", "enabled='0'") +
                         sized("black", 0, "", size(3968, 3008), size(3968, 3008)) +
                         sized("crop", 1, "rcb='1'", size(3968, 3008) + "left='64' top='4' right='64' bottom='4'",
                               size(3840, 3000)) +
                         kernel("slow", 2) + kernel("fast", 3, "enabled='0'") +
                         sized("half", 4, "rcb='1'", size(3840, 3000), size(1920, 1500) + "top='10' bottom='10'") +
                         sized("grid", 5, "", size(1920, 1480), size(1920, 1480)) +
                         element("demux", "path", "active_output='1'") + element("mux", "join", "active_input='1'") +
                         element("split", "fork") +
                         klinks({"in>black:0", "black:0>crop:0", "crop:0>path:0", "path:0>slow:0", "path:1>fast:0",
                                 "slow:0>join:0", "fast:0>join:1", "join:0>half:0", "half:0>fork:0", "fork:0>main_out",
                                 "fork:1>grid:0", "grid:0>stats_out"}),
                     "pg_id='11' tuning_mode='2'");
    }

    static std::string mixer()
    {
        return group("mixer", 1,
                     in("in") + in("ref_in", "private='1' " + size(960, 740)) + in("back_in") + out("out") +
                         out("small_out") + out("ref_out", "private='1'") + kernel("align", 0) + kernel("ref_warp", 1) +
                         kernel("blend", 2) + kernel("pack", 3) +
                         kernel("two", 4, "rcb='1'",
                                "<input " + size(1920, 1480) +
                                    "left='21' top='200' right='11' bottom='199'/><output id='0' " + size(1280, 720) +
                                    "/><output id='1' " + size(640, 360) + "right='16'/>") +
                         kernel("fuse", 5) + element("split", "fork") +
                         klinks({"back_in>fuse:0", "fuse:0>blend:2", "in>align:0", "align:0>blend:0",
                                 "ref_in>ref_warp:0", "ref_warp:0>blend:1", "blend:0>fork:0", "fork:0>two:0",
                                 "two:0>out", "two:1>small_out", "fork:1>pack:0", "pack:0>ref_out"}),
                     "pg_id='12' tuning_mode='2'");
    }

    static std::string scale()
    {
        return group("scale", 2,
                     in("in") + in("aux_in") + out("out") + out("aux_out") +
                         sized("zoom", 0, "rcb='1'", size(1280, 720) + "left='10' top='5' right='6' bottom='3'",
                               size(800, 480)) +
                         kernel("tone", 1) + klinks({"in>zoom:0", "zoom:0>out", "aux_in>tone:0", "tone:0>aux_out"}),
                     "pg_id='21'");
    }

    /// What a record says about sizes.
    static std::string sizesOf(const qv_isp_zmt_run_kernels& kernel)
    {
        std::string all = "enable " + std::to_string(kernel.enable) + ", history " + text(*kernel.resolution_history);
        all += ", " + std::to_string(kernel.output_count) + " outputs";
        if (kernel.resolution_info == nullptr) return all + ", none stated";
        for (uint32_t i = 0; i < kernel.output_count; ++i) all += ", " + text(kernel.resolution_info[i]);
        return all;
    }

    struct Expected {
        int enable;
        Info history;
        std::vector<Info> infos;
    };

    static std::string sizesOf(const Expected& expected)
    {
        std::string all = "enable " + std::to_string(expected.enable) + ", history " + text(expected.history);
        all += ", " + std::to_string(expected.infos.size()) + " outputs";
        if (expected.infos.empty()) all += ", none stated";
        for (const Info& entry : expected.infos) all += ", " + text(entry);
        return all;
    }

    static inline const Info kSource = info(4096, 3072, 3968, 3008, {64, 32, 64, 32});
    static inline const Info kCropped = info(4096, 3072, 3840, 3000, {128, 36, 128, 36});
    static inline const Info kHalved = info(4096, 3072, 1920, 1480, {128, 36, 128, 36});
    static inline const Info kReference = info(4096, 3072, 960, 740, {64, 32, 64, 32});
    static inline const Info kLarge = info(4096, 3072, 1280, 720, {170, 441, 150, 439});
    static inline const Info kSmall = info(4096, 3072, 624, 360, {170, 441, 150, 439});
    static inline const Info kZoomed = info(4096, 3072, 800, 480, {199, 456, 167, 448});

    static inline const std::map<std::string, Expected> kExpected = {
        {"front:black", {1, kSource, {frame(3968, 3008)}}},
        {"front:crop", {1, kSource, {info(3968, 3008, 3840, 3000, {64, 4, 64, 4})}}},
        {"front:slow", {2, Info{}, {}}},
        {"front:fast", {0, kCropped, {}}},
        {"front:half", {1, kCropped, {info(3840, 3000, 1920, 1500, {}, {0, 10, 0, 10})}}},
        {"front:grid", {2, Info{}, {}}},
        {"mixer:align", {1, kHalved, {}}},
        {"mixer:ref_warp", {1, kReference, {}}},
        {"mixer:fuse", {1, frame(800, 480), {}}},
        {"mixer:blend", {1, kHalved, {}}},
        {"mixer:pack", {1, kHalved, {}}},
        {"mixer:two",
         {1,
          kHalved,
          {info(1920, 1480, 1280, 720, {21, 200, 11, 199}),
           info(1920, 1480, 640, 360, {21, 200, 11, 199}, {0, 0, 16, 0})}}},
        {"scale:zoom", {1, kLarge, {info(1280, 720, 800, 480, {10, 5, 6, 3})}}},
        {"scale:tone", {1, kSmall, {}}},
    };
};

TEST_F(HistoryWorkedExampleTest, EveryRecordIsTheOneComputedByHand)
{
    ASSERT_EQ(init(), StatusOk);
    size_t kernels = 0;
    for (const int id : {0, 1, 2, 9}) {
        std::vector<NUXO::InnerGraphNode> nodes;
        ASSERT_EQ(mUtil->getInnerGraph(id, nodes), StatusOk);
        for (const auto& node : nodes) {
            if (node.kind != NUXO::InnerGraphNode::Kind::Kernel) continue;
            ++kernels;
            ASSERT_EQ(kExpected.count(node.name), 1U) << node.name;
            EXPECT_EQ(sizesOf(*node.record), sizesOf(kExpected.at(node.name))) << node.name;
        }
    }
    EXPECT_EQ(kernels, kExpected.size());
}

TEST_F(HistoryWorkedExampleTest, EveryOutputDeliversWhatWasComputedByHand)
{
    ASSERT_EQ(init(), StatusOk);
    const struct {
        std::string node;
        std::string label;
        Info history;
    } expected[] = {
        {"front:crop", "0", kCropped},
        {"front:path", "1", kCropped},
        {"front:join", "0", kCropped},
        {"front:half", "0", kHalved},
        {"front:fork", "0", kHalved},
        {"front:main_out", "mixer:in", kHalved},
        {"mixer:fork", "1", kHalved},
        {"mixer:two", "0", kLarge},
        {"mixer:two", "1", kSmall},
        {"mixer:out", "mixer:out", kLarge},
        {"mixer:small_out", "mixer:small_out", kSmall},
        {"mixer:ref_out", "mixer:ref_in", kHalved},
        {"scale:zoom", "0", kZoomed},
        {"scale:out", "scale:out", kZoomed},
        {"csi_be:output", "csi_be:output", kSource},
    };
    for (const auto& e : expected) EXPECT_EQ(leaving(e.node, e.label), text(e.history)) << e.node << " " << e.label;
}

TEST_F(HistoryWorkedExampleTest, GroupsGetTheSameRecordsInOrderOfIds)
{
    ASSERT_EQ(init(), StatusOk);
    const std::map<std::string, Texts> groups = {{"front", {"black", "crop", "slow", "fast", "half", "grid"}},
                                                 {"mixer", {"align", "ref_warp", "blend", "pack", "two", "fuse"}},
                                                 {"scale", {"zoom", "tone"}}};
    for (const auto& [name, kernels] : groups) {
        qv_isp_zmt_program_group pg = {};
        ASSERT_EQ(mUtil->getPgTevData(&at(*mRoot, name), pg), StatusOk) << name;
        ASSERT_EQ(pg.kernel_count, kernels.size());
        EXPECT_EQ(pg.operation_mode, name == "scale" ? 0U : 2U);
        for (size_t i = 0; i < kernels.size(); ++i) {
            EXPECT_EQ(pg.run_kernels[i].kernel_uuid, 1000 + i);
            EXPECT_EQ(pg.run_kernels[i].stream_id, name == "scale" ? 2U : 1U);
            EXPECT_EQ(sizesOf(pg.run_kernels[i]), sizesOf(kExpected.at(name + ":" + kernels[i]))) << kernels[i];
        }
    }
}

TEST_F(HistoryWorkedExampleTest, NothingActiveIsMissed)
{
    ASSERT_EQ(init(), StatusOk);
    EXPECT_TRUE(notLogged("did not reach all ACTIVE"));
    EXPECT_TRUE(notLogged("Traversal of meta graph"));
    EXPECT_EQ(disabled(), "front:grid front:stats_out");
    EXPECT_TRUE(logged(kDebug, "disable disconnected kernel -> slow "));
    EXPECT_TRUE(logged(kDebug, "kernel grid disabled"));
    Info history = {};
    EXPECT_EQ(mUtil->getSourceResolutionHistory(history), StatusOk);
    EXPECT_EQ(text(history), text(frame(800, 480))); // of the source that came last
}

} // namespace

} // namespace historytest
