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

bool matches(const qv_format_t& row, const std::string& name)
{
    return row.name == name;
}

bool matches(const qv_format_t& row, uint32_t fourcc)
{
    return row.fourcc == fourcc;
}

// The first row with this name or code, null when there is none.
template <typename Wanted> qv_format_t* rowOf(std::vector<qv_format_t>& table, const Wanted& wanted)
{
    const auto row = std::find_if(table.begin(), table.end(),
                                  [&wanted](const qv_format_t& format) { return matches(format, wanted); });
    return row == table.end() ? nullptr : &*row;
}

void reportMissing(const std::string& name)
{
    NUXO_LOG(NUXO::LogError, kFormatsTag, "Could not find format with name %s", name.c_str());
}

void reportMissing(uint32_t fourcc)
{
    NUXO_LOG(NUXO::LogError, kFormatsTag, "Could not find format with fourcc %d", printed(fourcc));
}

template <typename Wanted> const qv_format_t* findIn(std::vector<qv_format_t>& table, const Wanted& wanted)
{
    const qv_format_t* const row = rowOf(table, wanted);
    if (row == nullptr) reportMissing(wanted);
    return row;
}

template <typename Wanted> bool isCompressed(const Wanted& wanted)
{
    initNUXOFormats();
    // Still empty when memory is exhausted; the built-in rows know the answer as well.
    const qv_format_t* const row = findIn(gNUXOFormats.empty() ? gNUXOFormatsInternal : gNUXOFormats, wanted);
    return row != nullptr && row->isCompressed;
}

// Whether the names of all planes fit into a string without memory of its own.
bool hasShortPlaneNames(const qv_format_t& row)
{
    return std::all_of(row.planes.begin(), row.planes.end(),
                       [](const qv_format_plane_t& plane) { return plane.name.size() <= std::string().capacity(); });
}

template <typename Container> void makeRoom(Container& out, const Container& in)
{
    if (out.capacity() < in.size()) out.reserve(in.size());
}

// Hands a row out whole or not at all.
int copyRow(const qv_format_t* row, qv_format_t& out)
{
    if (row == nullptr) return StatusBadState;
    return unlessNoMemory<int>(StatusNoMemory, [row, &out] {
        if (hasShortPlaneNames(*row)) { // as all built-in ones: with room made beforehand the assignment cannot fail
            makeRoom(out.name, row->name);
            makeRoom(out.family, row->family);
            makeRoom(out.planes, row->planes);
            out = *row;
        } else {
            qv_format_t copy = *row;
            out = std::move(copy);
        }
        return StatusOk;
    });
}

} // namespace

const qv_format_t* findFormat(const std::string& name)
{
    return findIn(gNUXOFormats, name);
}

const qv_format_t* findFormat(uint32_t fourcc)
{
    return findIn(gNUXOFormats, fourcc);
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
    qv_format_t* const row = rowOf(gNUXOFormats, name);
    if (row == nullptr) {
        NUXO_LOG(NUXO::LogError, kFormatsTag, "Failed to set format id for %s", name.c_str());
        return StatusBadArgument;
    }
    row->id = id;
    return StatusOk;
}

uint32_t getPlaneCountByFourcc(uint32_t fourcc)
{
    const qv_format_t* const row = rowOf(gNUXOFormats, fourcc);
    if (row == nullptr) {
        NUXO_LOG(NUXO::LogError, kFormatsTag, "Format not found %d", printed(fourcc));
        return std::numeric_limits<uint32_t>::max();
    }
    return static_cast<uint32_t>(row->planes.size());
}

bool isCompressedFormat(const std::string& name)
{
    return isCompressed(name);
}

} // namespace NUXOFormats

bool isCompressedFormat(uint32_t fourcc)
{
    return NUXOFormats::isCompressed(fourcc);
}

extern "C" bool qv_cipf_is_compressed_format(uint32_t fourcc)
{
    return isCompressedFormat(fourcc);
}
