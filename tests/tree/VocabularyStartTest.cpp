// SPDX-License-Identifier: Apache-2.0
// The vocabulary must be there before any other code that is linked with the library's objects, statically as well.
#include <nuxo/tree/ItemUID.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

namespace {

struct StartUp {
    StartUp() : width(NUXO::ItemUID::str2key("width")), size(nuxo_key_map.size()) {}

    uint32_t width;
    size_t size;
};

// As early as a program may run code of its own: the numbers up to 100 belong to the compiler.
__attribute__((init_priority(102))) const StartUp startUp;

TEST(VocabularyStart, IsFilledBeforeEarlyStaticObjectsOfTheProgram)
{
    EXPECT_EQ(8232U, startUp.width);
    EXPECT_EQ(115U, startUp.size);
}

} // namespace
