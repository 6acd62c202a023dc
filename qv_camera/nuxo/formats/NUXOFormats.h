// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_FORMATS_NUXO_FORMATS_H
#define NUXO_FORMATS_NUXO_FORMATS_H

#include <qv_tools/qv_export.h>

#include <nuxo/formats/qv_css_frame_format.h>

#include <cstdint>
#include <string>
#include <vector>

/// Bytes from the start of one line to the start of the next, by four-character code. See NUXOFormats::getBpl.
QV_EXPORT uint32_t getBpl(uint32_t fourcc, uint32_t width);

/// Whether the format with this code is compressed. See NUXOFormats::isCompressedFormat.
QV_EXPORT bool isCompressedFormat(uint32_t fourcc);

/// Pixel formats: what each looks like in memory, how long its lines and how large its buffers are.
///
/// A four-character code ("fourcc") has its first character in the most significant byte: "NV12" is 0x4E563132.
/// The tables are not synchronised: initNUXOFormats and setFormatId must not run while other threads use them.
namespace NUXOFormats {

/// One plane of a planar format.
struct qv_format_plane_t {
    std::string name; ///< "Y", "U", "V", "UV" or "VU"
    uint32_t bitsPerSample = 0;
};

/// One pixel format.
struct qv_format_t {
    std::string name; ///< as graph files write it
    uint32_t fourcc = 0;
    std::string family;      ///< "BAYER", "YUV", "sRGB", "IR" or "META"
    uint32_t bpp = 0;        ///< bits per pixel of the whole image, all planes together
    uint32_t bitDepth = 0;   ///< significant bits of a sample
    uint32_t sampleBits = 0; ///< bits of the container that holds a sample
    uint32_t layoutHint =
        0; ///< 1 for line-interleaved formats and YUV420_10_V, 32 for vectorised Bayer formats, else 0
    bool supported = false;
    bool isCompressed = false;             ///< whether buffers are compressed and carry tile-status tables
    std::vector<qv_format_plane_t> planes; ///< empty for packed formats
    uint32_t id = 0;                       ///< the client's own, see setFormatId
};

/// The built-in table, complete before any code of a client runs.
extern QV_EXPORT std::vector<qv_format_t> gNUXOFormatsInternal;

/// The working table, which all lookups read. Empty until initNUXOFormats fills it.
extern QV_EXPORT std::vector<qv_format_t> gNUXOFormats;

/// Fills the working table from the built-in one if it is empty; ids that were set survive. When memory is exhausted it
/// stays empty.
QV_EXPORT void initNUXOFormats();

/// Copies the first row of the working table with this name into @p out.
///
/// @return StatusOk; StatusBadState, with an error line, when there is none (always before initNUXOFormats);
///         StatusNoMemory. @p out changes only with StatusOk.
QV_EXPORT int getFormatByName(const std::string& name, qv_format_t& out);

/// Copies the first row of the working table with this code into @p out. As getFormatByName.
QV_EXPORT int getFormatByFourcc(uint32_t fourcc, qv_format_t& out);

/// Stores the client's identifier in the first row of the working table with this name.
///
/// @return StatusOk; StatusBadArgument, with an error line, when there is none
QV_EXPORT int setFormatId(const std::string& name, uint32_t id);

/// Number of planes of the first row of the working table with this code, 0 for packed formats; 4294967295, with an error
/// line, when there is none.
QV_EXPORT uint32_t getPlaneCountByFourcc(uint32_t fourcc);

using ::getBpl;

/// Bytes from the start of one line to the start of the next, as the imaging hardware expects them.
///
/// @param format  only its code matters
/// @param width   line width in pixels; 0 is allowed
/// @return        stride in bytes, modulo 2^32. A code without a rule of its own gets @p width rounded up to 64 and a
///                warning.
QV_EXPORT uint32_t getBpl(const qv_format_t& format, uint32_t width);

/// Bytes of one frame: lines times @p bpl for uncompressed Bayer formats of 8 and 10 bits (and bV0K), the sum of the padded
/// planes for tiled formats, half the lines for y032, those of calculateDec400BufferSize for its codes, and one and a half
/// times lines times @p bpl for all others.
///
/// @param format  its code decides the rule; its bit depth matters for compressed formats
/// @param width   in pixels; not read when @p bpl is given
/// @param height  in lines
/// @param bpl     bytes per line, 0 for those of getBpl
/// @param a       receives the three offsets of calculateDec400BufferSize for its codes; otherwise untouched
/// @param b       receives its three sizes, likewise. Both may be null.
/// @return        bytes modulo 2^32. Those of y032 and of the default rule are computed in single precision: above 2^24
///                they have 24 significant bits.
QV_EXPORT uint32_t calculateBufferSize(const qv_format_t& format, uint32_t width, uint32_t height, uint32_t bpl,
                                       uint32_t* a, uint32_t* b);

/// Bytes of one compressed frame with its tile-status tables, see nci_dec400_cmprs_calc_buf_size.
///
/// @param fourcc      BG1C, BG8C, GB1C, GB8C, GR1C, GR8C, RG1C, RG8C, C010, C012, C420, CILE, CIYU, CN12, CT12, P01Y, PC10
///                    or PC12; any other gives 0 with a warning and clears the outputs
/// @param width       not read: the stride says how long lines are
/// @param height      in lines
/// @param bpl         bytes per line
/// @param bitDepth    significant bits of a sample
/// @param ts_offsets  receives three byte offsets of the tile-status tables, 0 for planes that do not exist; may be null
/// @param ts_sizes    receives their three sizes in bytes, likewise
QV_EXPORT uint32_t calculateDec400BufferSize(uint32_t fourcc, uint32_t width, uint32_t height, uint32_t bpl,
                                             uint32_t bitDepth, uint32_t* ts_offsets, uint32_t* ts_sizes);

using ::isCompressedFormat;

/// Whether the format with this name (not code) is compressed; false, with an error line, when there is none. Fills the
/// working table first if it is empty.
QV_EXPORT bool isCompressedFormat(const std::string& name);

using ::fourcc_to_css_frame_format;
using ::qv_cipf_is_compressed_format;

} // namespace NUXOFormats

#endif
