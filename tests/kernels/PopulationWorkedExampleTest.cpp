// SPDX-License-Identifier: Apache-2.0
// One graph worked out by hand, from the pixel array to the last kernel of two streams.
//
//   sensor -> csi_be -> [stream 1: bayer -> post] -> video_sink
//                                            `-----> [stream 3: view] -> view_sink
//
// Sensor. The pixel array has 4208x3120 pixels, of which the mode leaves out 8 columns and 4 lines at each side. The binner
// makes one pixel of 2x2 and leaves out 4 columns and 2 lines of its own, the back end 2 more lines.
//
//   left, right:   8 + 4 * 2             = 16    4208 - 2 * 16 = 4176 = 2 * 2088
//   top, bottom:   4 + 2 * 2 + 2 * 2     = 12    3120 - 2 * 12 = 3096 = 2 * 1548
//
//   S  4208x3120 16,12,16,12 > 2088x1548
//
// Each history below is what arrives at a kernel. sx = (4208 - left - right) * 1024 / width, sy likewise, both cut off; a
// crop c of the kernel adds c * s >> 10.
//
// Stream 1, bayer.
//   0 in_crop, crop 4,186,4,186, 2080x1176 leave
//       sx = 4176 * 1024 / 2088 = 2048, sy = 3096 * 1024 / 1548 = 2048
//       left, right 16 + 4 * 2 = 24; top, bottom 12 + 186 * 2 = 384
//     A  4208x3120 24,384,24,384 > 2080x1176             (4208 - 48 = 4160 = 2 * 2080, 3120 - 768 = 2352 = 2 * 1176)
//   1 shading, nothing changes; A is kept as branch 1
//   2 bayer_ds, crop 0,3,0,3, 1920x1080 leave
//       sy = 2352 * 1024 / 1176 = 2048; top, bottom 384 + 3 * 2 = 390
//     B  4208x3120 24,390,24,390 > 1920x1080
//   3 bayer_fmt, B leaves through main
//   4 grid, continues branch 1: A arrives; it changes the resolution on paper, 2080x1176 to itself; A leaves through stats
//
// Stream 1, post: B arrives from main, not A that came last.
//   5 warp, crop 96,54,96,54, 1728x972 leave
//       sx = (4208 - 48) * 1024 / 1920 = 4259840 / 1920 = 2218 (.67)
//       sy = (3120 - 780) * 1024 / 1080 = 2396160 / 1080 = 2218 (.67)
//       96 * 2218 = 212928 >> 10 = 207 (.94), 24 + 207 = 231; 54 * 2218 = 119772 >> 10 = 116 (.96), 390 + 116 = 506
//     C  4208x3120 231,506,231,506 > 1728x972
//   6 filter, nothing changes; C is kept as branch 2
//   7 scale, no crop, 1280x720 leave
//     D  4208x3120 231,506,231,506 > 1280x720
//   8 post_fmt, D leaves through video
//   9 view_cut, continues branch 2: C arrives; crop 216,0,216,0 to 4:3, 1296x972 leave
//       sx = (4208 - 462) * 1024 / 1728 = 3835904 / 1728 = 2219 (.85); 216 * 2219 = 479304 >> 10 = 468 (.07)
//       231 + 468 = 699
//     E  4208x3120 699,506,699,506 > 1296x972, leaves through view
//  10 face, continues branch 2 too, and its port is off
//
// Stream 3, view: E arrives.
//   0 view_pre, nothing changes
//   1 view_scl, crop 2,0,0,1, 640x480 leave
//       sx = (4208 - 1398) * 1024 / 1296 = 2877440 / 1296 = 2220 (.25); 2 * 2220 = 4440 >> 10 = 4, 699 + 4 = 703
//       sy = (3120 - 1012) * 1024 / 972 = 2158592 / 972 = 2220 (.77); 1 * 2220 >> 10 = 2, 506 + 2 = 508
//     F  4208x3120 703,506,699,508 > 640x480
//   2 view_fmt
#include "kernels/PopulationFixture.h"

namespace graphtest {

namespace {

const std::string kS = "4208x3120 16,12,16,12 > 2088x1548";
const std::string kA = "4208x3120 24,384,24,384 > 2080x1176";
const std::string kB = "4208x3120 24,390,24,390 > 1920x1080";
const std::string kC = "4208x3120 231,506,231,506 > 1728x972";
const std::string kD = "4208x3120 231,506,231,506 > 1280x720";
const std::string kE = "4208x3120 699,506,699,506 > 1296x972";
const std::string kF = "4208x3120 703,506,699,508 > 640x480";

std::string sensor()
{
    return element("source", "sensor", "width='2096' height='1556'",
                   "<pixel_array>" + frame("input", "4208x3120 8,4,8,4") + frame("output", "4192x3112") +
                       "</pixel_array><binner h_factor='2' v_factor='2'>" + frame("input", "4192x3112 0,0,0,0") +
                       frame("output", "2088x1552 4,2,4,2") + "</binner>" + output("port_0", "csi_be:input"));
}

std::string capture()
{
    return element("hw", "csi_be", "stream_id='0'",
                   "<stream2mmio>" + frame("input", "2088x1552 0,2,0,2") + "</stream2mmio>" +
                       input("input", "sensor:port_0") +
                       frame("port", "2088x1548", "name='output' direction='1' peer='bayer:in'"));
}

std::string bayer()
{
    return group("bayer", "stream_id='1'",
                 input("in", "csi_be:output", "id='0'") + output("main", "post:in", "id='1'") +
                     output("stats", "stats_sink", "id='2'") +
                     kernel("in_crop", 37000, 0, "rcb='1'", resolution("2088x1548 4,186,4,186 > 2080x1176")) +
                     kernel("shading", 37005, 1, "branch_point='1' metadata='63,47'") +
                     kernel("bayer_ds", 37006, 2, "rcb='1'", resolution("2080x1176 0,3,0,3 > 1920x1080")) +
                     kernel("bayer_fmt", 37009, 3, "sink_port='1'", "<input bpp='10'/><output bpp='12'/>") +
                     kernel("grid", 37011, 4, "rcb='1' restore_point='1' sink_port='2' metadata='80,60,1,2'"));
}

std::string post()
{
    return group("post", "stream_id='1'",
                 input("in", "bayer:main", "id='0'") + output("video", "video_sink", "id='1'") +
                     output("view", "view:in", "id='2'") + output("faces", "face_sink", "id='3' enabled='0'") +
                     kernel("warp", kStabilisation, 0, "rcb='1'", resolution("1920x1080 96,54,96,54 > 1728x972")) +
                     kernel("filter", 37202, 1, "branch_point='2' enabled='0'") +
                     kernel("scale", 37300, 2, "rcb='1'", resolution("1728x972 > 1280x720")) +
                     kernel("post_fmt", 37307, 3, "sink_port='1'") +
                     kernel("view_cut", 37204, 4, "rcb='1' restore_point='2' sink_port='2'",
                            resolution("1728x972 216,0,216,0 > 1296x972")) +
                     kernel("face", 37205, 5, "restore_point='2' sink_port='3'"));
}

std::string view()
{
    return joined("view", 3, "post:view", "view_sink",
                  kernel("view_pre", 37050, 0) +
                      kernel("view_scl", 37051, 1, "rcb='1'", resolution("1296x972 2,0,0,1 > 640x480")) +
                      kernel("view_fmt", 37055, 2, "sink_port='1'"));
}

/// A record as "stream uuid state own | history | metadata | bpp".
std::string whole(const Record& record)
{
    std::ostringstream all;
    all << record.stream_id << ' ' << record.kernel_uuid << ' ' << record.enable << ' ' << text(record.resolution_info)
        << " | " << text(record.resolution_history) << " |";
    for (const uint32_t value : record.metadata) all << ' ' << value;
    all << " | " << record.bpp_info.input_bpp << ' ' << record.bpp_info.output_bpp;
    return all.str();
}

Lines whole(const Records& records)
{
    Lines all;
    for (const Record& each : records) all.push_back(whole(each));
    return all;
}

const std::string kNothingElse = " | 0 0 0 0 | 0 0";

class PopulationWorkedExampleTest : public PopulationTest {
protected:
    PopulationWorkedExampleTest()
    {
        start(sensor() + capture() + bayer() + post() + view() + streamSink("video_sink", 1, "post:video") +
              streamSink("view_sink", 3, "view:out"));
    }
};

TEST_F(PopulationWorkedExampleTest, StartsWithTheHistoryOfTheSensor)
{
    EXPECT_EQ(mStarted, StatusOk);
    qv_isp_zmt_resolution_info source = {};
    EXPECT_EQ(mUtils->getSourceResolutionHistory(source), StatusOk);
    EXPECT_EQ(text(source), kS);
}

TEST_F(PopulationWorkedExampleTest, GivesTheFirstStream)
{
    EXPECT_EQ(
        whole(handedOut(1)),
        (Lines{
            "1 37000 1 2088x1548 4,186,4,186 > 2080x1176 | " + kS + kNothingElse,
            "1 37005 1 null | " + kA + " | 63 47 0 0 | 0 0",
            "1 37006 1 2080x1176 0,3,0,3 > 1920x1080 | " + kA + kNothingElse,
            "1 37009 1 null | " + kB + " | 0 0 0 0 | 10 12",
            "1 37011 1 2080x1176 > 2080x1176 | " + kA + " | 80 60 1 2 | 0 0",
            "1 37235 2 1920x1080 96,54,96,54 > 1728x972 | " + kB + kNothingElse, // no stabilisation
            "1 37202 0 null | " + kC + kNothingElse, "1 37300 1 1728x972 > 1280x720 | " + kC + kNothingElse,
            "1 37307 1 null | " + kD + kNothingElse, "1 37204 1 1728x972 216,0,216,0 > 1296x972 | " + kC + kNothingElse,
            "1 37205 2 null | " + kC + kNothingElse, // the port for faces is off
        }));
}

TEST_F(PopulationWorkedExampleTest, GivesTheStreamThatItFeeds)
{
    EXPECT_EQ(whole(handedOut(3)), (Lines{
                                       "3 37050 1 null | " + kE + kNothingElse,
                                       "3 37051 1 1296x972 2,0,0,1 > 640x480 | " + kE + kNothingElse,
                                       "3 37055 1 null | " + kF + kNothingElse,
                                   }));
}

TEST_F(PopulationWorkedExampleTest, GivesTheGroupsByTheirOwn)
{
    const std::map<std::string, std::pair<int, size_t>> places{{"bayer", {1, 0}}, {"post", {1, 5}}, {"view", {3, 0}}};
    for (const auto& place : places) {
        qv_isp_zmt_program_group own = {};
        ASSERT_EQ(mUtils->getProgramGroup(node(place.first), own), StatusOk);
        const Lines stream = whole(handedOut(place.second.first));
        for (size_t i = 0; i < own.kernel_count; ++i) {
            EXPECT_EQ(whole(own.run_kernels[i]), stream.at(place.second.second + i)) << place.first << i;
        }
    }
}

TEST_F(PopulationWorkedExampleTest, KeepsTheHistoryOfEachPort)
{
    start(sensor() + capture() + bayer() + post() + streamSink("video_sink", 1, "post:video")); // stream 1 comes last
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(populate(1, 1), StatusOk); // context 0 is the back end
    EXPECT_EQ(portHistory("bayer:main"), kB);
    EXPECT_EQ(portHistory("bayer:stats"), kA);
    EXPECT_EQ(portHistory("post:video"), kD);
    EXPECT_EQ(portHistory("post:view"), kE);
    EXPECT_EQ(portHistory("post:faces"), kC);
    EXPECT_EQ(mPortHistories.size(), 5U);
    EXPECT_EQ(whole({mRecords.begin(), mRecords.begin() + 11}), whole(handedOut(1)));
}

} // namespace

} // namespace graphtest
