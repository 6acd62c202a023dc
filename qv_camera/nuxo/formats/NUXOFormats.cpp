// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/formats/FormatTable.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace NUXOFormats {

namespace {

using NUXO::unlessNoMemory;

// The code as messages show it: a signed decimal number.
int printed(uint32_t fourcc)
{
    return static_cast<int>(fourcc);
}

qv_format_t* rowNamed(const std::string& name)
{
    const auto row = std::find_if(gNUXOFormats.begin(), gNUXOFormats.end(),
                                  [&name](const qv_format_t& format) { return format.name == name; });
    return row == gNUXOFormats.end() ? nullptr : &*row;
}

qv_format_t* rowWithCode(uint32_t fourcc)
{
    const auto row = std::find_if(gNUXOFormats.begin(), gNUXOFormats.end(),
                                  [fourcc](const qv_format_t& format) { return format.fourcc == fourcc; });
    return row == gNUXOFormats.end() ? nullptr : &*row;
}

// Copies first, so that a row is handed out whole or not at all.
int copyRow(const qv_format_t* row, qv_format_t& out)
{
    if (row == nullptr) return StatusBadState;
    return unlessNoMemory<int>(StatusNoMemory, [row, &out] {
        qv_format_t copy = *row;
        out = std::move(copy);
        return StatusOk;
    });
}

} // namespace

const qv_format_t* findFormat(const std::string& name)
{
    const qv_format_t* const row = rowNamed(name);
    if (row == nullptr) {
        NUXO_LOG(NUXO::LogError, kFormatsTag, "Could not find format with name %s", name.c_str());
    }
    return row;
}

const qv_format_t* findFormat(uint32_t fourcc)
{
    const qv_format_t* const row = rowWithCode(fourcc);
    if (row == nullptr) {
        NUXO_LOG(NUXO::LogError, kFormatsTag, "Could not find format with fourcc %d", printed(fourcc));
    }
    return row;
}

void initNUXOFormats()
{
    unlessNoMemory<bool>(false, [] {
        fillWorkingTable();
        return true;
    });
}

int getFormatByName(const std::string& name, qv_format_t& out)
{
    return copyRow(findFormat(name), out);
}

int getFormatByFourcc(uint32_t fourcc, qv_format_t& out)
{
    return copyRow(findFormat(fourcc), out);
}

int setFormatId(const std::string& name, uint32_t id)
{
    qv_format_t* const row = rowNamed(name);
    if (row == nullptr) {
        NUXO_LOG(NUXO::LogError, kFormatsTag, "Failed to set format id for %s", name.c_str());
        return StatusBadArgument;
    }
    row->id = id;
    return StatusOk;
}

uint32_t getPlaneCountByFourcc(uint32_t fourcc)
{
    const qv_format_t* const row = rowWithCode(fourcc);
    if (row == nullptr) {
        NUXO_LOG(NUXO::LogError, kFormatsTag, "Format not found %d", printed(fourcc));
        return std::numeric_limits<uint32_t>::max();
    }
    return static_cast<uint32_t>(row->planes.size());
}

bool isCompressedFormat(const std::string& name)
{
    initNUXOFormats();
    const qv_format_t* const row = findFormat(name);
    return row != nullptr && row->isCompressed;
}

} // namespace NUXOFormats

bool isCompressedFormat(uint32_t fourcc)
{
    NUXOFormats::initNUXOFormats();
    const NUXOFormats::qv_format_t* const row = NUXOFormats::findFormat(fourcc);
    return row != nullptr && row->isCompressed;
}

extern "C" bool qv_cipf_is_compressed_format(uint32_t fourcc)
{
    return isCompressedFormat(fourcc);
}
