// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/camera/PortReading.h>
#include <nuxo/formats/FormatTable.h>
#include <nuxo/formats/Fourcc.h>
#include <nuxo/tree/NodeReading.h>

#include <string>

namespace NUXO {

namespace {

using NUXOFormats::qv_format_t;

int readInfo(const IGraphConfig& port, PortOrPeer& source, unsigned int& enabled, unsigned int& terminalId)
{
    NUXO_INFORM("Getting port info for %s", GraphCameraUtil::print(&port).c_str());
    int value = 1; // stays when neither says
    if (source.fetch(NUXO_KEY_ENABLED, value) && value < 0) return StatusMissingData;
    enabled = static_cast<unsigned int>(value);

    unsigned int stageId = 0;
    if (readTerminal(&port, stageId, terminalId) != StatusOk) {
        NUXO_ERROR("Could not get port uid");
        return StatusNotFound;
    }
    return StatusOk;
}

bool isGiven(const IGraphConfig* port)
{
    if (port == nullptr) NUXO_ERROR("Invalid parameter, could not get port format");
    return port != nullptr;
}

// Takes a size if there is one; false when it is negative. One that is missing is remembered.
bool takeSize(PortOrPeer& port, uint32_t key, const char* missingMessage, unsigned int& size, bool& complete)
{
    int value = 0;
    if (!port.fetch(key, value)) {
        NUXO_INFORM("%s", missingMessage);
        complete = false;
        return true;
    }
    if (value < 0) return false;
    size = static_cast<unsigned int>(value);
    return true;
}

// The row for a format's name; null when not even the default is in the table. A name that the table lacks is tried as
// a code, which is left in @p fourcc.
const qv_format_t* findRow(const std::string& name, unsigned int& fourcc)
{
    NUXOFormats::fillWorkingTable();
    const qv_format_t* row = NUXOFormats::findFormat(name);
    if (row != nullptr) return row;
    NUXO_ERROR("Error: Couldn't find format %s from the formats XML. Fallback to fourcc.", name.c_str());
    fourcc = NUXOFormats::fourccOf(name);
    row = NUXOFormats::findFormat(fourcc);
    if (row != nullptr) return row;
    NUXO_ERROR("Error: Couldn't find  format by fourcc. Try defaulting to YUV420_8_SP(NV12)");
    row = NUXOFormats::findFormat(std::string("YUV420_8_SP"));
    if (row == nullptr) NUXO_ERROR("Error: Couldn't find default format YUV420_8_SP from the formats XML.");
    return row;
}

struct PixelFormat {
    unsigned int& fourcc;
    unsigned int& bpl;
    unsigned int& bpp;
};

// Takes what the name of the format says; false when there is no row for it.
bool takeFormat(const std::string& name, unsigned int width, const PixelFormat& out)
{
    const qv_format_t* const row = findRow(name, out.fourcc);
    if (row == nullptr) return false;
    out.fourcc = row->fourcc;
    out.bpp = row->bpp;
    out.bpl = NUXOFormats::getBpl(*row, width);
    NUXO_INFORM("bpl set to %d for %s", static_cast<int>(out.bpl), row->name.c_str());
    return true;
}

// Settings may state a stride of their own; false when it is negative.
bool overrideStride(PortOrPeer& port, unsigned int& bpl)
{
    int value = 0;
    if (!port.fetch(NUXO_KEY_BPL, value)) return true;
    NUXO_INFORM("Overwriting bpl(%d) from settings %d", static_cast<int>(bpl), value);
    if (value < 0) return false;
    bpl = static_cast<unsigned int>(value);
    return true;
}

int readFormat(const IGraphConfig& port, PortOrPeer& source, unsigned int& width, unsigned int& height,
               const PixelFormat& out)
{
    bool complete = true;
    const bool hasValidSizes =
        takeSize(source, NUXO_KEY_WIDTH, "Could not find port format info: width", width, complete) &&
        takeSize(source, NUXO_KEY_HEIGHT, "Could not find port format info: height", height, complete);
    if (!hasValidSizes) return StatusMissingData;

    std::string format;
    if (!source.fetch(NUXO_KEY_FORMAT, format)) {
        NUXO_INFORM("Could not find port format info. port: %s", GraphCameraUtil::print(&port).c_str());
        complete = false;
    } else if (!takeFormat(format, width, out)) {
        return StatusMissingData;
    }
    if (!overrideStride(source, out.bpl)) return StatusMissingData;
    if (complete) return StatusOk;

    int isPrivate = 0;
    if (source.fetch(NUXO_KEY_PRIVATE, isPrivate) && isPrivate == 1) return StatusOk; // these need not be complete
    NUXO_ERROR("Part of the port configuration is missing!");
    return StatusMissingData;
}

} // namespace

int GraphCameraUtil::portGetInfo(const IGraphConfig* port, unsigned int& enabled, unsigned int& terminalId)
{
    if (!isGiven(port)) return StatusBadArgument;
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        PortOrPeer source(*port);
        return readInfo(*port, source, enabled, terminalId);
    });
}

int GraphCameraUtil::portGetFormat(const IGraphConfig* port, unsigned int& enabled, unsigned int& terminalId,
                                   unsigned int& width, unsigned int& height, unsigned int& fourcc, unsigned int& bpl,
                                   unsigned int& bpp)
{
    if (!isGiven(port)) return StatusBadArgument;
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        PortOrPeer source(*port);
        const int status = readInfo(*port, source, enabled, terminalId);
        if (status != StatusOk || enabled == 0) return status;
        return readFormat(*port, source, width, height, {fourcc, bpl, bpp});
    });
}

int GraphCameraUtil::applyFormat(const IGraphConfig* port, const std::string& format)
{
    return unlessNoMemory<int>(StatusNoMemory, [&]() -> int {
        IGraphConfig* const peer = peerOf(port);
        if (peer == nullptr) {
            NUXO_ERROR("couldn't find peer for %s", print(port).c_str());
            return StatusBadState;
        }
        const int status = peer->setValue(NUXO_KEY_FORMAT, format);
        if (status == StatusOk || status == StatusNotFound) return StatusOk; // without options the format stays
        NUXO_ERROR("Couldn't set format %s for %s", format.c_str(), print(port).c_str());
        return status;
    });
}

} // namespace NUXO
