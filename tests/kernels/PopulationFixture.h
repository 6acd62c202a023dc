// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_KERNELS_POPULATION_FIXTURE_H
#define NUXO_TESTS_KERNELS_POPULATION_FIXTURE_H

#include "kernels/KernelsFixture.h"

#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace graphtest {

using Record = qv_isp_zmt_run_kernels;
using Records = std::vector<Record>;

/// A frame as "4000x3000" or, with what is cropped left, top, right and bottom, "4000x3000 8,4,8,4".
inline std::string frameText(int width, int height, const qv_rectangle& crop)
{
    std::ostringstream all;
    all << width << 'x' << height;
    if (crop.left != 0 || crop.top != 0 || crop.right != 0 || crop.bottom != 0) {
        all << ' ' << crop.left << ',' << crop.top << ',' << crop.right << ',' << crop.bottom;
    }
    return all.str();
}

/// Input and output as "4000x3000 8,4,8,4 > 1920x1080".
inline std::string text(const qv_isp_zmt_resolution_info& info)
{
    return frameText(info.input_width, info.input_height, info.input_crop) + " > " +
           frameText(info.output_width, info.output_height, info.output_crop);
}

inline std::string text(const qv_isp_zmt_resolution_info* info)
{
    return info == nullptr ? "null" : text(*info);
}

/// An element with the size and crop of a frame, which is written as above.
inline std::string frame(const std::string& kind, const std::string& size, const std::string& attributes = "")
{
    const size_t cross = size.find('x');
    const size_t blank = std::min(size.find(' '), size.size());
    std::string all = "<" + kind + " " + attributes + " width='" + size.substr(0, cross) + "' height='" +
                      size.substr(cross + 1, blank - cross - 1) + "'";
    std::istringstream crop(size.substr(blank));
    std::string pixels;
    for (const char* const side : {"left", "top", "right", "bottom"}) {
        if (std::getline(crop >> std::ws, pixels, ',')) all += std::string(" ") + side + "='" + pixels + "'";
    }
    return all + "/>";
}

/// The `input` and `output` of a kernel from "4000x3000 8,4,8,4 > 1920x1080".
inline std::string resolution(const std::string& text)
{
    const size_t arrow = text.find(" > ");
    return frame("input", text.substr(0, arrow)) + frame("output", text.substr(arrow + 3));
}

/// A kernel whose uuid is 100 more than its id.
inline std::string kernel(const std::string& name, int id, const std::string& attributes = "",
                          const std::string& body = "")
{
    return kernel(name, 100 + id, id, attributes, body);
}

/// Kernels k0, k1, ... with the ids 0, 1, ... and these attributes.
inline std::string kernels(const std::vector<std::string>& attributes)
{
    std::string all;
    int id = 0;
    for (const std::string& each : attributes) {
        all += kernel("k" + std::to_string(id), id, each);
        ++id;
    }
    return all;
}

/// The kernel that generation 5 switches off without video stabilisation.
constexpr int kStabilisation = 37235;

/// Frames of this size from memory.
inline std::string frames(const std::string& size, const std::string& peer = "pg_a:in")
{
    return element("source", "buffer_src0", "", frame("port", size, "name='port_0' direction='1' peer='" + peer + "'"));
}

/// A program group with an input `in` (id 0) and an output `out` (id 1).
inline std::string joined(const std::string& name, int stream, const std::string& from, const std::string& to,
                          const std::string& body)
{
    return group(name, "stream_id='" + std::to_string(stream) + "'",
                 input("in", from, "id='0'") + output("out", to, "id='1'") + body);
}

/// Records of graphs of generation 5: those that initialisation filled, and those that a test lets fill once more into an
/// array of its own. The latter gives the status and the lines of that step alone; its frames start as in the stream that
/// initialisation filled last.
class PopulationTest : public KernelsTest {
protected:
    static constexpr size_t kGuards = 4;

    /// Initialises utilities with a graph; the status is in mStarted.
    void start(const std::string& nodes, const std::string& version = "KVA5")
    {
        loadGraph(nodes, version);
        startAgain();
    }

    /// The same after the test has changed the graph.
    void startAgain()
    {
        renew();
        mStarted = init();
        mCapacity = handedOut(1).size();
        mPortHistories.clear();
        clearLog();
    }

    /// Frames from memory, one program group `pg_a` in stream 1 and a sink behind its port `out`.
    void startStream(const std::string& body, const std::string& size = "4000x3000")
    {
        start(frames(size) + joined("pg_a", 1, "buffer_src0:port_0", "out_sink", body) +
              streamSink("out_sink", 1, "pg_a:out"));
    }

    /// Fills records of the test's own; what lies behind them must stay as it is.
    int populate(int ctx = 1, unsigned int index = 0)
    {
        mRecords.assign(mCapacity + kGuards, filled(mFill));
        std::fill_n(mRecords.begin() + static_cast<std::ptrdiff_t>(mCapacity), kGuards, filled(kGuardByte));
        clearLog();
        const int status = mUtils->populateKernelArray(ctx, mRecords.data(), index, mPortHistories);
        const Record untouched = filled(kGuardByte);
        for (size_t i = mCapacity; i < mRecords.size(); ++i) {
            EXPECT_EQ(std::memcmp(&mRecords[i], &untouched, sizeof(Record)), 0) << "record " << i << " is not ours";
        }
        return status;
    }

    /// Starts a stream and fills records of the test's own. Initialisation must have gone the same way.
    int fill(const std::string& body, const std::string& size = "4000x3000")
    {
        startStream(body, size);
        const int status = populate();
        EXPECT_EQ(mStarted, status == StatusOk ? StatusOk : StatusMissingObject);
        return status;
    }

    /// A copy of the records that initialisation filled.
    Records handedOut(int stream)
    {
        const qv_isp_zmt_program_group all = records(stream);
        return Records(all.run_kernels, all.run_kernels + all.kernel_count);
    }

    const Record& record(size_t i) const { return mRecords.at(i); }
    std::string info(size_t i) const { return text(record(i).resolution_info); }
    std::string history(size_t i) const { return text(record(i).resolution_history); }
    std::string enables() const { return enables({mRecords.begin(), mRecords.end() - kGuards}); }

    static std::string enables(const Records& records)
    {
        std::string all;
        for (const Record& each : records) all += (all.empty() ? "" : " ") + std::to_string(each.enable);
        return all;
    }

    static Lines histories(const Records& records)
    {
        Lines all;
        for (const Record& each : records) all.push_back(text(each.resolution_history));
        return all;
    }

    /// What is stored for a port, "none" without an entry.
    std::string portHistory(const std::string& path) const
    {
        const auto found = mPortHistories.find(node(path));
        return found == mPortHistories.end() ? "none" : text(found->second);
    }

    /// Whether exactly one error has these words in it.
    ::testing::AssertionResult oneErrorWith(const std::string& words) const
    {
        const Lines errors = mLog.messages(LogCapture::Error);
        const auto has = [&words](const std::string& line) { return line.find(words) != std::string::npos; };
        if (std::count_if(errors.begin(), errors.end(), has) == 1) return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << words << " in " << ::testing::PrintToString(errors);
    }

    /// A record of which each byte has this value.
    static Record filled(int byte)
    {
        Record all;
        std::memset(&all, byte, sizeof(all));
        return all;
    }

    int mStarted = 1;
    size_t mCapacity = 0; ///< of the test's own records
    int mFill = 0;        ///< what their bytes hold before
    Records mRecords;
    ZmtTevUtils::PortHistories mPortHistories;

private:
    static constexpr int kGuardByte = 0x5a;
};

} // namespace graphtest

#endif
