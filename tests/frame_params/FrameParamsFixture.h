// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_FRAME_PARAMS_FRAME_PARAMS_FIXTURE_H
#define NUXO_TESTS_FRAME_PARAMS_FRAME_PARAMS_FIXTURE_H

#include <nuxo/frame_params/GraphLumUtil.h>

#include "query/GraphFixture.h"

#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace graphtest {

using NUXO::GraphLumUtil;
using SharedGraph = std::shared_ptr<const IGraphConfig>;

/// A graph with @p body below its root, by the filing rules of settings files.
inline std::shared_ptr<GraphConfigNode> sharedGraph(const std::string& body)
{
    return tree(body);
}

/// The record as "left,top WIDTHxHEIGHT horizontal/scaling vertical/scaling".
inline std::string text(const qv_lum_frame_params& params)
{
    const auto number = [](unsigned int value) { return std::to_string(value); };
    return number(params.horizontal_crop_offset) + "," + number(params.vertical_crop_offset) + " " +
           number(params.cropped_image_width) + "x" + number(params.cropped_image_height) + " " +
           number(params.horizontal_scaling_numerator) + "/" + number(params.horizontal_scaling_denominator) + " " +
           number(params.vertical_scaling_numerator) + "/" + number(params.vertical_scaling_denominator);
}

/// Size and crop of one `output`.
struct Frame {
    int width = 0;
    int height = 0;
    int left = 0;
    int top = 0;

    std::string element() const
    {
        return "<output width=\"" + std::to_string(width) + "\" height=\"" + std::to_string(height) + "\" left=\"" +
               std::to_string(left) + "\" top=\"" + std::to_string(top) + "\"/>";
    }
};

/// Two factors and the output of the stage that has them: of a binner horizontal and vertical, of a scaler numerator and
/// denominator.
struct Stage {
    int first = 1;
    int second = 1;
    Frame output;

    std::string element(const std::string& name, const std::string& firstName, const std::string& secondName) const
    {
        return "<" + name + " " + firstName + "=\"" + std::to_string(first) + "\" " + secondName + "=\"" +
               std::to_string(second) + "\">" + output.element() + "</" + name + ">";
    }
};

/// A sensor as a mode leaves it in a built graph.
struct Sensor {
    Frame pixelArray;
    std::optional<Stage> binner;
    std::optional<Stage> scaler;

    std::string element() const
    {
        return "<sensor><pixel_array>" + pixelArray.element() + "</pixel_array>" +
               (binner ? binner->element("binner", "h_factor", "v_factor") : "") +
               (scaler ? scaler->element("scaler", "num_factor", "denom_factor") : "") + "</sensor>";
    }
};

class FrameParamsTest : public GraphTest {
protected:
    FrameParamsTest() { reset(); }

    /// A line with the tag of the frame parameters, written "level message".
    static std::string lum(const std::string& line) { return "NUXO_LUM_UTILS[XOS]/" + line; }

    int port(const SharedGraph& graph, const std::string& name)
    {
        reset();
        return GraphLumUtil::getPortFrameParams(mParams, graph, name);
    }

    int sensor(const SharedGraph& graph)
    {
        reset();
        return GraphLumUtil::getSensorFrameParams(mParams, graph);
    }

    int sensor(const Sensor& described) { return sensor(sharedGraph(described.element())); }

    /// The record of a sensor, which must have one.
    std::string recordOf(const Sensor& described)
    {
        EXPECT_EQ(sensor(described), StatusOk);
        return text(mParams);
    }

    bool untouched() const { return std::memcmp(&mParams, &kUntouched, sizeof(mParams)) == 0; }

    qv_lum_frame_params mParams;

private:
    static constexpr qv_lum_frame_params kUntouched{0xa1a2, 0xa3a4, 0xa5a6, 0xa7a8, 0xa9, 0xaa, 0xab, 0xac};

    void reset()
    {
        mParams = kUntouched;
        clearLog();
    }
};

} // namespace graphtest

#endif
