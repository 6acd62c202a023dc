// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_FRAME_PARAMS_GRAPH_LUM_UTIL_H
#define NUXO_FRAME_PARAMS_GRAPH_LUM_UTIL_H

#include <qv_tools/qv_export.h>

#include <nuxo/records/qv_lum_frame_params.h>
#include <nuxo/tree/IGraphConfig.h>

#include <memory>
#include <string>

namespace NUXO {

/// Frame parameters of a built graph for the 3A library. Values are truncated to the widths of the record's fields.
class QV_EXPORT GraphLumUtil {
public:
    /// The frame of one port: its size, no crop, no scaling.
    ///
    /// @param params    written only with StatusOk
    /// @param portName  path of the port from the graph's root, for example "vf_out:main_out"
    /// @return          StatusOk; StatusMissingObject without the port or its size; StatusNoMemory
    static int getPortFrameParams(qv_lum_frame_params& params, std::shared_ptr<const IGraphConfig> graph,
                                  const std::string& portName);

    /// The frame of the sensor: pixel array, binner and scaler of the sensor mode taken together.
    ///
    /// A factor of 0 in the graph counts as 1, with an error line; a missing binner or scaler is worth a warning.
    ///
    /// @param params  written only with StatusOk
    /// @return        StatusOk; StatusMissingData without the node `sensor` or its pixel_array:output; StatusMissingObject
    ///                when a binner or scaler has no `output`; the status of GraphCameraUtil::getDimensions,
    ///                sensorGetBinningFactor or sensorGetScalingFactor; StatusNoMemory
    static int getSensorFrameParams(qv_lum_frame_params& params, std::shared_ptr<const IGraphConfig> graph);
};

} // namespace NUXO

#endif
