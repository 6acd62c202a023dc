// SPDX-License-Identifier: Apache-2.0
#include "KernelGraphs.h"

#include <string>

namespace bench {

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr size_t kResolutionEvery = 5; // kernels

std::string sized(const std::string& element, const std::string& attributes = "")
{
    return "<" + element + " width=\"" + std::to_string(kWidth) + "\" height=\"" + std::to_string(kHeight) + "\"" +
           attributes + "/>";
}

class KernelGraphText {
public:
    explicit KernelGraphText(const KernelGraphShape& shape) : mShape(shape) {}

    std::string write()
    {
        addCapture();
        for (size_t stream = 1; stream <= mShape.streams; ++stream) addStream(stream);
        const std::string version = "KVA" + std::to_string(mShape.generation);
        return "<graph_descriptor version=\"" + version + "\">\n<graph type=\"graph\" version=\"" + version + "\">\n" +
               mConnections + "</graph>\n" + mNodes + "</graph_descriptor>\n";
    }

private:
    static std::string nameOf(size_t stream, size_t group)
    {
        return "pg_" + std::to_string(stream) + "_" + std::to_string(group);
    }

    void connect(const std::string& source, const std::string& sink)
    {
        mConnections += "<connection source=\"" + source + "\" sink=\"" + sink + "\"/>\n";
    }

    static std::string port(const std::string& name, int id, int direction, const std::string& peer)
    {
        return sized("port", " name=\"" + name + "\" id=\"" + std::to_string(id) + "\" direction=\"" +
                                 std::to_string(direction) + "\" peer=\"" + peer + "\"") +
               "\n";
    }

    void addCapture()
    {
        const std::string stream = " stream_id=\"0\" exec_ctx_id=\"0\"";
        mNodes += "<source name=\"sensor\"" + stream + " width=\"" + std::to_string(kWidth) + "\" height=\"" +
                  std::to_string(kHeight) + "\">" + port("port_0", 0, 1, "csi_be:input") +
                  "</source>\n<hw name=\"csi_be\"" + stream + "><zmt_pixelformatter>" +
                  sized("input", " left=\"0\" top=\"0\"") + "</zmt_pixelformatter>" +
                  port("input", 0, 0, "sensor:port_0") + port("output", 1, 1, nameOf(1, 0) + ":input") + "</hw>\n";
        connect("sensor:port_0", "csi_be:input");
    }

    // What the stream's first group is fed by.
    std::string sourceOf(size_t stream) const
    {
        if (stream == 1) return "csi_be:output";
        return nameOf(mShape.isChain ? stream - 1 : 1, mShape.groups - 1) + ":output";
    }

    void addStream(size_t stream)
    {
        std::string source = sourceOf(stream);
        for (size_t group = 0; group < mShape.groups; ++group) {
            const bool isLast = group + 1 == mShape.groups;
            const std::string sink = "sink_" + std::to_string(stream);
            const std::string name = nameOf(stream, group);
            connect(source, name + ":input");
            addGroup(stream, name, source, isLast ? sink : nameOf(stream, group + 1) + ":input");
            source = name + ":output";
            if (!isLast) continue;
            connect(source, sink);
            mNodes += "<sink name=\"" + sink + "\" stream_id=\"" + std::to_string(stream) + "\" exec_ctx_id=\"" +
                      std::to_string(stream) + "\" peer=\"" + source + "\"/>\n";
        }
    }

    void addGroup(size_t stream, const std::string& name, const std::string& source, const std::string& sink)
    {
        const std::string type = mShape.generation < 7 ? "program_group" : "compute_block";
        mNodes += "<" + type + " name=\"" + name + "\" stream_id=\"" + std::to_string(stream) + "\" exec_ctx_id=\"" +
                  std::to_string(stream) + "\" pg_id=\"" + std::to_string(++mGroups) + "\">\n" +
                  port("input", 0, 0, source) + port("output", 1, 1, sink);
        for (size_t kernel = 0; kernel < mShape.kernels; ++kernel) addKernel(kernel);
        if (mShape.generation > 5) addLinks();
        mNodes += "</" + type + ">\n";
    }

    void addKernel(size_t number)
    {
        const bool isLast = number + 1 == mShape.kernels;
        mNodes += "<kernel name=\"kernel_" + std::to_string(number) + "\" id=\"" + std::to_string(number) +
                  "\" pal_uuid=\"" + std::to_string(mGroups * 1000 + number) + "\" metadata=\"1,2,3,4\"" +
                  (mShape.generation < 6 && isLast ? " sink_port=\"1\"" : "");
        if (number % kResolutionEvery == 0) {
            mNodes += " rcb=\"1\">" + sized("input", " left=\"0\" top=\"0\" right=\"0\" bottom=\"0\" bpp=\"10\"") +
                      sized("output", " id=\"0\" bpp=\"10\"") + "</kernel>\n";
        } else {
            mNodes += "><input bpp=\"10\"/><output bpp=\"10\"/></kernel>\n";
        }
    }

    void addLinks()
    {
        std::string source = "input";
        for (size_t number = 0; number < mShape.kernels; ++number) {
            const std::string kernel = "kernel_" + std::to_string(number) + ":0";
            mNodes += "<klink source=\"" + source + "\" destination=\"" + kernel + "\"/>\n";
            source = kernel;
        }
        mNodes += "<klink source=\"" + source + "\" destination=\"output\"/>\n";
    }

    const KernelGraphShape& mShape;
    std::string mNodes;
    std::string mConnections;
    size_t mGroups = 0;
};

} // namespace

Tree kernelGraph(const KernelGraphShape& shape)
{
    std::string text = KernelGraphText(shape).write();
    return parseText(text);
}

} // namespace bench
