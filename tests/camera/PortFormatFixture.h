// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_CAMERA_PORT_FORMAT_FIXTURE_H
#define NUXO_TESTS_CAMERA_PORT_FORMAT_FIXTURE_H

#include "camera/PortFixture.h"

#include <nuxo/formats/NUXOFormats.h>

#include <cstdint>
#include <string>
#include <vector>

namespace graphtest {

/// A four-character code, the first character in the highest byte.
constexpr uint32_t fourcc(const char (&text)[5])
{
    return static_cast<uint32_t>(text[0]) << 24 | static_cast<uint32_t>(text[1]) << 16 |
           static_cast<uint32_t>(text[2]) << 8 | static_cast<uint32_t>(text[3]);
}

/// What portGetFormat writes. It starts with values that no port here has.
struct PortFormat {
    unsigned int enabled = 91;
    unsigned int terminalId = 92;
    unsigned int width = 1000;
    unsigned int height = 94;
    unsigned int fourcc = 95;
    unsigned int bpl = 96;
    unsigned int bpp = 97;

    int askFor(const IGraphConfig* port)
    {
        *this = PortFormat();
        return GraphCameraUtil::portGetFormat(port, enabled, terminalId, width, height, fourcc, bpl, bpp);
    }
};

/// Asks ports for their format, starting from an empty table of formats.
class PortFormatTest : public PortTest {
protected:
    using Lines = std::vector<std::string>;

    PortFormatTest() { NUXOFormats::gNUXOFormats.clear(); }
    ~PortFormatTest() override { NUXOFormats::gNUXOFormats.clear(); }

    int ask() { return mFormat.askFor(out()); }

    /// The information lines of asking, without the one that every question starts with.
    Lines informedByAsking()
    {
        Lines lines = informed([this] { ask(); });
        EXPECT_FALSE(lines.empty());
        if (lines.empty()) return lines;
        EXPECT_EQ(lines.front(), "Getting port info for port[pg:out]");
        lines.erase(lines.begin());
        return lines;
    }

    void expectSize(unsigned int width, unsigned int height) const
    {
        EXPECT_EQ(mFormat.width, width);
        EXPECT_EQ(mFormat.height, height);
    }

    void expectLayout(unsigned int code, unsigned int bpl, unsigned int bpp) const
    {
        EXPECT_EQ(mFormat.fourcc, code);
        EXPECT_EQ(mFormat.bpl, bpl);
        EXPECT_EQ(mFormat.bpp, bpp);
    }

    /// Expects that size and layout are as they were before.
    void expectNothingElse() const
    {
        const PortFormat before;
        expectSize(before.width, before.height);
        expectLayout(before.fourcc, before.bpl, before.bpp);
    }

    PortFormat mFormat;
};

constexpr const char* kFromPeer = "Using the peer's attribute value";
constexpr const char* kIncomplete = "16 Part of the port configuration is missing!";
constexpr const char* kNoWidth = "Could not find port format info: width";
constexpr const char* kNoHeight = "Could not find port format info: height";
constexpr const char* kNoFormat = "Could not find port format info. port: port[pg:out]";

} // namespace graphtest

#endif
