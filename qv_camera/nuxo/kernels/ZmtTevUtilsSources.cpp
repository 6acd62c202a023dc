// SPDX-License-Identifier: Apache-2.0
// The histories of sources, as clients ask for them.
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/histories/SourceHistories.h>
#include <nuxo/kernels/ZmtTevUtils.h>
#include <nuxo/records/RunKernels.h>

namespace NUXO {

int ZmtTevUtils::sourceGetResolutionHistory(qv_isp_zmt_resolution_info& history, IGraphConfig& source)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] { return NUXO::sourceGetResolutionHistory(history, source); });
}

int ZmtTevUtils::calculateSensorResolutionHistory(IGraphConfig& sensor, qv_isp_zmt_resolution_info& history)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] { return NUXO::calculateSensorResolutionHistory(sensor, history); });
}

int ZmtTevUtils::calculateTPGResolutionHistory(IGraphConfig& tpg, qv_isp_zmt_resolution_info& history)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] { return NUXO::calculateTPGResolutionHistory(tpg, history); });
}

int ZmtTevUtils::calculateBufSrcResolutionHistory(IGraphConfig& bufferSource, qv_isp_zmt_resolution_info& history)
{
    return unlessNoMemory<int>(StatusNoMemory,
                               [&] { return NUXO::calculateBufSrcResolutionHistory(bufferSource, history); });
}

int ZmtTevUtils::getCsiDimensions(IGraphConfig& sourcePort, qv_isp_zmt_resolution_info& csi)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] { return NUXO::getCsiDimensions(sourcePort, csi); });
}

int ZmtTevUtils::getSensorModeInfo(IGraphConfig& sensor, SensorModeInfo& info)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] { return NUXO::getSensorModeInfo(sensor, info); });
}

int ZmtTevUtils::getSourceResolutionHistory(qv_isp_zmt_resolution_info& history)
{
    if (isOnAnalysisPath()) return mGraphUtil->getSourceResolutionHistory(history);
    history = mSourceHistory;
    return StatusOk;
}

void ZmtTevUtils::dumpResHistory(qv_isp_zmt_resolution_info& history, const char* name)
{
    NUXO::dumpResHistory(history, name);
}

void ZmtTevUtils::dumpPortResHistoryMap(PortHistories& map)
{
    static_cast<void>(unlessNoMemory<int>(StatusNoMemory, [&map] {
        NUXO::dumpPortResHistoryMap(map);
        return StatusOk;
    }));
}

} // namespace NUXO
