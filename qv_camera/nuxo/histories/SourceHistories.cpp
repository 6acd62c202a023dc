// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/camera/PortReading.h>
#include <nuxo/histories/SourceHistories.h>
#include <nuxo/records/RunKernels.h>
#include <nuxo/records/Wrap.h>
#include <nuxo/tree/NodeReading.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace NUXO {

namespace {

constexpr const char* kSourcePort = "port_0";
constexpr const char* kBufferSource = "buffer_src";

enum class SourceKind { Sensor, TestPattern, Buffer, Unknown };

SourceKind kindOf(const std::string& name)
{
    const uint32_t key = ItemUID::str2key(name);
    if (key == NUXO_KEY_TPG) return SourceKind::TestPattern;
    if (key == NUXO_KEY_SENSOR) return SourceKind::Sensor;
    return name.find(kBufferSource) == std::string::npos ? SourceKind::Unknown : SourceKind::Buffer;
}

int calculate(SourceKind kind, IGraphConfig& source, qv_isp_zmt_resolution_info& history)
{
    switch (kind) {
    case SourceKind::Sensor: return calculateSensorResolutionHistory(source, history);
    case SourceKind::TestPattern: return calculateTPGResolutionHistory(source, history);
    default: return calculateBufSrcResolutionHistory(source, history);
    }
}

int readSize(const IGraphConfig& port, const IGraphConfig& source, int32_t& width, int32_t& height)
{
    const int status = GraphCameraUtil::getDimensions(&port, &width, &height);
    if (status != StatusOk)
        NUXO_ERROR("Failed to get dimensions(width, height) for the source %s", filedName(source).c_str());
    return status;
}

// A product of factors, modulo 2^32.
int32_t product(int32_t a, int32_t b)
{
    return wrapTo32(int64_t{a} * b);
}

// Everything that was cropped on the way, in pixels of the pixel array. The horizontal binning counts for all sides.
qv_rectangle totalCrop(const SensorModeInfo& mode, const qv_rectangle& csiCrop)
{
    const int binning = mode.binningHorizontal;
    const int behindScaler = product(binning, mode.scalingDenominator);
    qv_rectangle total = mode.pixelArrayInputCrop;
    accumulateCrop(total, mode.binnerInputCrop, 1, 1);
    accumulateCrop(total, mode.binnerOutputCrop, 1, binning);
    accumulateCrop(total, mode.scalerInputCrop, 1, binning);
    accumulateCrop(total, mode.scalerOutputCrop, mode.scalingNumerator, behindScaler);
    accumulateCrop(total, csiCrop, mode.scalingNumerator, behindScaler);
    return total;
}

const IGraphConfig* csiInput(const IGraphConfig& backEnd)
{
    const IGraphConfig* const formatter = descendantAt(backEnd, "zmt_pixelformatter:input");
    return formatter != nullptr ? formatter : descendantAt(backEnd, "stream2mmio:input");
}

int readCsiInput(const IGraphConfig& input, qv_isp_zmt_resolution_info& csi)
{
    qv_rectangle& crop = csi.input_crop;
    const int status =
        GraphCameraUtil::getDimensions(&input, &csi.input_width, &csi.input_height, &crop.left, &crop.top);
    if (status != StatusOk) {
        NUXO_ERROR("Failed to get %s dimensions and crop", filedName(input).c_str());
        return status;
    }
    crop.right = integerOr(&input, NUXO_KEY_RIGHT, crop.left);
    crop.bottom = integerOr(&input, NUXO_KEY_BOTTOM, crop.top);
    NUXO_DEBUG("%s: %s", filedName(input).c_str(), resInfoToStr(csi));
    return StatusOk;
}

int readCsiOutput(const IGraphConfig& backEnd, qv_isp_zmt_resolution_info& csi)
{
    const IGraphConfig* const output = backEnd.getDescendant(NUXO_KEY_OUTPUT);
    if (output == nullptr) {
        NUXO_ERROR("Failed to get output node for %s", filedName(backEnd).c_str());
        return StatusMissingObject;
    }
    const int status = GraphCameraUtil::getDimensions(output, &csi.output_width, &csi.output_height);
    if (status != StatusOk) {
        NUXO_ERROR("Failed to get csi be output dimensions");
        return status;
    }
    NUXO_DEBUG("%s OUT w: %d, h: %d----", filedName(backEnd).c_str(), csi.output_width, csi.output_height);
    return StatusOk;
}

} // namespace

int sourceGetResolutionHistory(qv_isp_zmt_resolution_info& history, IGraphConfig& source)
{
    const std::string name = fileNameOf(source);
    const SourceKind kind = kindOf(name);
    if (kind == SourceKind::Unknown) {
        NUXO_ERROR("No support for source of name: %s", name.c_str());
        return StatusNotSupported;
    }
    const int status = calculate(kind, source, history);
    if (status != StatusOk) NUXO_ERROR("Failed to get resolution history for source: %s", name.c_str());
    return status;
}

int calculateSensorResolutionHistory(IGraphConfig& sensor, qv_isp_zmt_resolution_info& history)
{
    NUXO_DEBUG("Calculating resolution history for source %s", filedName(sensor).c_str());
    SensorModeInfo mode;
    int status = getSensorModeInfo(sensor, mode);
    if (status != StatusOk) {
        NUXO_ERROR("Failed to get sensor mode information");
        return status;
    }
    IGraphConfig* const port = descendantAt(sensor, kSourcePort);
    if (port == nullptr) {
        NUXO_ERROR("Could not find port_0- check node description");
        return StatusMissingObject;
    }
    qv_isp_zmt_resolution_info csi = {};
    status = getCsiDimensions(*port, csi);
    if (status != StatusOk) return status;

    history = {mode.pixelArrayInputWidth, mode.pixelArrayInputHeight, totalCrop(mode, csi.input_crop),
               csi.output_width,          csi.output_height,          {}};
    NUXO_DEBUG("Resolution history for source %s DONE", filedName(sensor).c_str());
    NUXO_DEBUG("History %s", resInfoToStr(history));
    return StatusOk;
}

int calculateTPGResolutionHistory(IGraphConfig& tpg, qv_isp_zmt_resolution_info& history)
{
    IGraphConfig* const port = descendantAt(tpg, kSourcePort);
    if (port == nullptr) {
        NUXO_ERROR("Could not find TPG port_0- check node description");
        return StatusMissingObject;
    }
    int32_t width = 0; // must be stated, although the back end's sizes count
    int32_t height = 0;
    int status = readSize(*port, tpg, width, height);
    if (status != StatusOk) return status;
    qv_isp_zmt_resolution_info csi = {};
    status = getCsiDimensions(*port, csi);
    if (status == StatusOk) history = csi;
    return status;
}

int calculateBufSrcResolutionHistory(IGraphConfig& bufferSource, qv_isp_zmt_resolution_info& history)
{
    const IGraphConfig* const port = descendantAt(bufferSource, kSourcePort);
    if (port == nullptr) {
        NUXO_ERROR("Could not find %s port_0- check node description", filedName(bufferSource).c_str());
        return StatusMissingObject;
    }
    int32_t width = 0;
    int32_t height = 0;
    const int status = readSize(*port, bufferSource, width, height);
    if (status == StatusOk) history = {width, height, {}, width, height, {}};
    return status;
}

int getCsiDimensions(IGraphConfig& sourcePort, qv_isp_zmt_resolution_info& csi)
{
    csi = {};
    const IGraphConfig* const peer = peerOf(&sourcePort);
    const IGraphConfig* const backEnd = peer == nullptr ? nullptr : peer->getAncestor();
    if (backEnd == nullptr) return StatusOk;
    if (const IGraphConfig* const input = csiInput(*backEnd)) {
        const int status = readCsiInput(*input, csi);
        if (status != StatusOk) return status;
    }
    return readCsiOutput(*backEnd, csi);
}

void dumpPortResHistoryMap(const std::map<IGraphConfig*, qv_isp_zmt_resolution_info>& map)
{
    NUXO_DEBUG("%s", "dumpPortResHistoryMap");
    if ((g_qv_log_common_level & LogError) == 0) return;
    struct Entry {
        std::string fullName;
        const IGraphConfig* port;
        const qv_isp_zmt_resolution_info* history;
    };
    std::vector<Entry> entries;
    for (const auto& [port, history] : map) {
        if (port != nullptr) entries.push_back({NUXO::fullName(*port), port, &history});
    }
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        const int order = a.fullName.compare(b.fullName);
        return order < 0 || (order == 0 && std::memcmp(a.history, b.history, sizeof(*a.history)) < 0);
    });
    for (const Entry& entry : entries) dumpResHistory(*entry.history, nameOrFiledName(*entry.port).c_str());
}

} // namespace NUXO
