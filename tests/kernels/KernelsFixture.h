// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_KERNELS_KERNELS_FIXTURE_H
#define NUXO_TESTS_KERNELS_KERNELS_FIXTURE_H

#include "camera/ContextFixture.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace graphtest {

using NUXO::ZmtTevUtils;

/// The graph element, which holds the version of the descriptor and connections.
inline std::string graphElement(const std::string& version, const std::string& connections = "")
{
    return "<graph version='" + version + "'>" + connections + "</graph>";
}

inline std::string connection(const std::string& source, const std::string& sink)
{
    return "<connection source='" + source + "' sink='" + sink + "'/>";
}

inline std::string kernel(const std::string& name, int palUuid, int id, const std::string& attributes = "",
                          const std::string& body = "")
{
    return element("kernel", name,
                   "pal_uuid='" + std::to_string(palUuid) + "' id='" + std::to_string(id) + "' " + attributes, body);
}

/// The attributes of a size.
inline std::string size(int width, int height)
{
    return "width='" + std::to_string(width) + "' height='" + std::to_string(height) + "'";
}

/// A kernel's own resolutions.
inline std::string sizes(const std::string& inputAttributes, const std::string& outputAttributes)
{
    return "<input " + inputAttributes + "/><output " + outputAttributes + "/>";
}

/// A source that delivers frames of this size through `buffer_src0:port_0` to @p peer.
inline std::string bufferSource(const std::string& peer, int width = 640, int height = 480,
                                const std::string& attributes = "")
{
    return element("source", "buffer_src0", attributes, output("port_0", peer, size(width, height)));
}

/// A program group of one stream that takes frames at `in` and hands them on at `out`.
inline std::string stage(const std::string& name, int stream, const std::string& from, const std::string& to,
                         const std::string& kernels = "")
{
    return group(name, "stream_id='" + std::to_string(stream) + "'", input("in", from) + output("out", to) + kernels);
}

/// A virtual sink of one stream.
inline std::string streamSink(const std::string& name, int stream, const std::string& peer,
                              const std::string& attributes = "")
{
    return sink(name, "stream_id='" + std::to_string(stream) + "' peer='" + peer + "' " + attributes);
}

/// A history of a frame that was not cropped.
inline std::string uncropped(int inputWidth, int inputHeight, int outputWidth, int outputHeight)
{
    return "(iw: " + std::to_string(inputWidth) + " ih: " + std::to_string(inputHeight) +
           " (l: 0, t: 0, r: 0, b: 0),ow: " + std::to_string(outputWidth) + ", oh: " + std::to_string(outputHeight) +
           " (l: 0, t: 0, r: 0, b: 0)";
}

/// A record as text: `stream:uuid state`, and the sizes of its own resolutions and its history when it has them.
inline std::string recordText(const qv_isp_zmt_run_kernels& record)
{
    const auto sizesOf = [](const qv_isp_zmt_resolution_info& info) {
        return std::to_string(info.input_width) + "x" + std::to_string(info.input_height) + ">" +
               std::to_string(info.output_width) + "x" + std::to_string(info.output_height);
    };
    std::string text = std::to_string(record.stream_id) + ":" + std::to_string(record.kernel_uuid) + " " +
                       std::to_string(record.enable);
    if (record.resolution_info != nullptr) text += " info " + sizesOf(*record.resolution_info);
    if (record.resolution_history != nullptr) text += " history " + sizesOf(*record.resolution_history);
    return text;
}

inline Lines recordTexts(const qv_isp_zmt_program_group& pg)
{
    Lines texts;
    for (uint32_t i = 0; i < pg.kernel_count; ++i) texts.push_back(recordText(pg.run_kernels[i]));
    return texts;
}

/// Kernel utilities over graphs that each test writes out.
class KernelsTest : public ContextTest {
protected:
    static inline const std::string kNotInitialised = "16 Error: ZmtTevUtils not initialized.";

    /// Makes @p nodes the graph. Earlier ones stay, for the kernel utilities still know them.
    void loadGraph(const std::string& nodes, const std::string& version = "KVA5", const std::string& connections = "")
    {
        if (mRoot != nullptr) mEarlier.push_back(std::move(mRoot));
        load(graphElement(version, connections) + nodes);
    }

    int init() { return mUtils->initTevUtils(mRoot.get()); }

    /// Loads a graph and initialises the utilities with it.
    int initWith(const std::string& nodes, const std::string& version = "KVA5", const std::string& connections = "")
    {
        loadGraph(nodes, version, connections);
        return init();
    }

    /// Utilities without a graph.
    void renew(bool useStreamId = true) { mUtils = std::make_unique<ZmtTevUtils>(useStreamId); }

    /// The recorded lines that begin like one of these, with their levels.
    Lines picked(const Lines& beginnings) const
    {
        Lines all = lines();
        const auto isOther = [&beginnings](const std::string& line) {
            return std::none_of(beginnings.begin(), beginnings.end(),
                                [&line](const std::string& beginning) { return line.rfind(beginning, 0) == 0; });
        };
        all.erase(std::remove_if(all.begin(), all.end(), isOther), all.end());
        return all;
    }

    /// The lines that report something wrong, without those about nodes that have no type. Histories are logged as errors,
    /// too.
    Lines complaints() const
    {
        Lines all = linesBesideTypeWarnings();
        const auto isProgress = [](const std::string& line) {
            return line.rfind("2 ", 0) == 0 || line.find(":(iw: ") != std::string::npos;
        };
        all.erase(std::remove_if(all.begin(), all.end(), isProgress), all.end());
        return all;
    }

    /// The records of a stream or context.
    qv_isp_zmt_program_group records(int id)
    {
        qv_isp_zmt_program_group pg = {};
        mUtils->getProgramGroup(id, pg);
        return pg;
    }

    /// The same as texts.
    Lines recordsOf(int id) { return recordTexts(records(id)); }

    /// The latest history of a source as text.
    std::string sourceHistory()
    {
        qv_isp_zmt_resolution_info history = {};
        EXPECT_EQ(mUtils->getSourceResolutionHistory(history), StatusOk);
        return ZmtTevUtils::resInfoToStr(history);
    }

    std::vector<Tree> mEarlier;
    std::unique_ptr<ZmtTevUtils> mUtils = std::make_unique<ZmtTevUtils>(true);
};

} // namespace graphtest

#endif
