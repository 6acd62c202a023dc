// SPDX-License-Identifier: Apache-2.0
// Internal: what happened to the frame between the pixel array of its source and the first program group. These functions
// let std::bad_alloc out; their statuses are those of the functions of ZmtTevUtils with the same names.
#ifndef NUXO_HISTORIES_SOURCE_HISTORIES_H
#define NUXO_HISTORIES_SOURCE_HISTORIES_H

#include <nuxo/histories/SensorModeInfo.h>
#include <nuxo/records/qv_isp_zmt_run_kernels.h>
#include <nuxo/tree/IGraphConfig.h>

#include <map>

namespace NUXO {

int sourceGetResolutionHistory(qv_isp_zmt_resolution_info& history, IGraphConfig& source);
int calculateSensorResolutionHistory(IGraphConfig& sensor, qv_isp_zmt_resolution_info& history);
int calculateTPGResolutionHistory(IGraphConfig& tpg, qv_isp_zmt_resolution_info& history);
int calculateBufSrcResolutionHistory(IGraphConfig& bufferSource, qv_isp_zmt_resolution_info& history);
int getCsiDimensions(IGraphConfig& sourcePort, qv_isp_zmt_resolution_info& csi);
int getSensorModeInfo(IGraphConfig& sensor, SensorModeInfo& info);

/// Logs the histories in the order of the ports' full names, so that the log does not depend on addresses.
void dumpPortResHistoryMap(const std::map<IGraphConfig*, qv_isp_zmt_resolution_info>& map);

} // namespace NUXO

#endif
