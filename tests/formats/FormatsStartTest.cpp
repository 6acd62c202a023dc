// SPDX-License-Identifier: Apache-2.0
// The tables must be there before any other code, also in a program that is linked with the library's objects.
#include "formats/SecondComputation.h"

#include <nuxo/formats/NUXOFormats.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

struct StartUp {
    StartUp()
        : builtIn(NUXOFormats::gNUXOFormatsInternal.size()), working(NUXOFormats::gNUXOFormats.size()),
          stride(::getBpl(second::code("NV12"), 1921))
    {
        if (builtIn == 0) return; // the tests tell
        const NUXOFormats::qv_format_t& row = NUXOFormats::gNUXOFormatsInternal[builtIn / 2];
        name = row.name;
        if (!row.planes.empty()) plane = row.planes.front().name;
        NUXOFormats::initNUXOFormats();
        (void)NUXOFormats::setFormatId("IR", 11); // whether it was stored, the tests tell
    }

    size_t builtIn;
    size_t working;
    uint32_t stride;
    std::string name;
    std::string plane;
};

// As early as a program may run code of its own: the numbers up to 100 belong to the compiler.
__attribute__((init_priority(102))) const StartUp startUp;

TEST(FormatsStart, BuiltInTableIsFilledBeforeEarlyStaticObjectsOfTheProgram)
{
    EXPECT_EQ(startUp.builtIn, 85U);
    EXPECT_EQ(startUp.name, "YUV420_8_PL_C"); // the row with 42 before it and 42 behind it
    EXPECT_EQ(startUp.plane, "Y");
    EXPECT_EQ(startUp.stride, 1984U); // 31 * 64
}

TEST(FormatsStart, WorkingTableIsEmptyUntilSomebodyFillsIt)
{
    EXPECT_EQ(startUp.working, 0U);
}

TEST(FormatsStart, WorkingTableOfAnEarlyStaticObjectIsKept)
{
    NUXOFormats::qv_format_t format;
    EXPECT_EQ(NUXOFormats::getFormatByName("IR", format), 0);
    EXPECT_EQ(format.id, 11U);
    EXPECT_EQ(NUXOFormats::gNUXOFormats.size(), 85U);
}

} // namespace
