// SPDX-License-Identifier: Apache-2.0
// Internal: rows of the working table.
#ifndef NUXO_FORMATS_FORMAT_TABLE_H
#define NUXO_FORMATS_FORMAT_TABLE_H

#include <nuxo/formats/NUXOFormats.h>

#include <cstdint>
#include <string>

namespace NUXOFormats {

constexpr const char* kFormatsTag = "NUXOFormats[XOS]";

/// The first row with this name, null, with an error line, when there is none.
const qv_format_t* findFormat(const std::string& name);
/// The first row with this code, null, with an error line, when there is none.
const qv_format_t* findFormat(uint32_t fourcc);

/// initNUXOFormats, but lets std::bad_alloc out.
void fillWorkingTable();

} // namespace NUXOFormats

#endif
