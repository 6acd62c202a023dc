// SPDX-License-Identifier: Apache-2.0
#include "VocabularyGuard.h"

#include <nuxo/tree/ItemUID.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using NUXO::ItemUID;

std::vector<uint32_t> keysOf(const ItemUID& path)
{
    std::vector<uint32_t> keys;
    for (size_t i = 0; i < path.size(); ++i) keys.push_back(path[i]);
    return keys;
}

using Keys = std::vector<uint32_t>;

TEST(ItemUID, SplitsTextAtColons)
{
    EXPECT_EQ((Keys{34, 16}), keysOf(ItemUID(std::string("port:format"))));
    EXPECT_EQ((Keys{8232}), keysOf(ItemUID(std::string("width"))));
    EXPECT_EQ((Keys{20, 45, 36, 8211}), keysOf(ItemUID("graph_settings:settings:sensor:height")));
}

TEST(ItemUID, EmptyTextGivesAnEmptyPath)
{
    EXPECT_TRUE(ItemUID(std::string()).empty());
    EXPECT_TRUE(ItemUID("").empty());
    EXPECT_EQ("", ItemUID("").toString());
}

TEST(ItemUID, EmptyComponentsBecomeKeyZero)
{
    EXPECT_EQ((Keys{34, 0, 16}), keysOf(ItemUID("port::format")));
    EXPECT_EQ((Keys{0, 34}), keysOf(ItemUID(":port")));
    EXPECT_EQ((Keys{0, 0, 34}), keysOf(ItemUID("::port")));
}

TEST(ItemUID, TrailingColonAddsNoComponent)
{
    EXPECT_EQ((Keys{34}), keysOf(ItemUID("port:")));
    EXPECT_EQ((Keys{34, 16}), keysOf(ItemUID("port:format:")));
    EXPECT_EQ((Keys{34, 0}), keysOf(ItemUID("port::"))); // the component between the colons is empty
    EXPECT_EQ((Keys{0}), keysOf(ItemUID(":")));
    EXPECT_EQ((Keys{0, 0}), keysOf(ItemUID("::")));
}

TEST(ItemUID, UnknownComponentsBecomeKeyZeroAndAreNotRegistered)
{
    const VocabularyGuard guard;
    EXPECT_EQ((Keys{0}), keysOf(ItemUID("never_heard_of")));
    EXPECT_EQ((Keys{34, 0, 16}), keysOf(ItemUID("port:never_heard_of:format")));
    EXPECT_EQ((Keys{0}), keysOf(ItemUID("Port"))); // case matters
    EXPECT_EQ(guard.saved(), nuxo_key_map);
}

TEST(ItemUID, OnlyColonsSeparate)
{
    EXPECT_EQ((Keys{0}), keysOf(ItemUID("port.format")));
    EXPECT_EQ((Keys{0}), keysOf(ItemUID("port format")));
    EXPECT_EQ((Keys{0, 16}), keysOf(ItemUID(" port:format"))); // blanks are not trimmed
}

TEST(ItemUID, KnowsCustomNames)
{
    const VocabularyGuard guard;
    NUXO::ItemUID::addCustomKeyMap({{"my_item", 9000}});
    EXPECT_EQ((Keys{34, 9000}), keysOf(ItemUID("port:my_item")));
}

TEST(ItemUID, TakesABracedListOfKeys)
{
    EXPECT_EQ((Keys{34, 16}), keysOf(ItemUID{NUXO_KEY_PORT, NUXO_KEY_FORMAT}));
    EXPECT_EQ((Keys{0}), keysOf(ItemUID{NUXO_KEY_NA}));
    const ItemUID assigned = {NUXO_KEY_NODES, NUXO_KEY_SENSOR, NUXO_KEY_WIDTH};
    EXPECT_EQ((Keys{31, 36, 8232}), keysOf(assigned));
}

TEST(ItemUID, ConvertsFromTextButNotFromANullPointer)
{
    EXPECT_TRUE((std::is_convertible_v<std::string, ItemUID>));
    EXPECT_TRUE((std::is_convertible_v<const char*, ItemUID>));
    EXPECT_FALSE((std::is_constructible_v<ItemUID, std::nullptr_t>));
}

TEST(ItemUID, PrintsWithDots)
{
    EXPECT_EQ("port.format", ItemUID("port:format").toString());
    EXPECT_EQ("port.na.format", ItemUID("port::format").toString());
    EXPECT_EQ("width", (ItemUID{NUXO_KEY_WIDTH}).toString());
    EXPECT_EQ("", ItemUID().toString());
}

TEST(ItemUID, PrintsUnknownKeysAsTheFirstNameOfTheVocabulary)
{
    EXPECT_EQ("port.active_input", (ItemUID{NUXO_KEY_PORT, 5000}).toString());
}

TEST(ItemUID, PrintedPathsDoNotParseBack)
{
    const ItemUID path{NUXO_KEY_PORT, NUXO_KEY_FORMAT};
    EXPECT_NE(path, ItemUID(path.toString()));
}

TEST(ItemUID, ReadsByPositionAndGivesZeroOutOfRange)
{
    const ItemUID path{NUXO_KEY_PORT, NUXO_KEY_FORMAT};
    EXPECT_EQ(2U, path.size());
    EXPECT_FALSE(path.empty());
    EXPECT_EQ(34U, path[0]);
    EXPECT_EQ(16U, path[1]);
    EXPECT_EQ(0U, path[2]);
    EXPECT_EQ(0U, path[static_cast<size_t>(-1)]);
    EXPECT_EQ(16U, path.back());
    EXPECT_EQ(0U, ItemUID().back());
    EXPECT_EQ(0U, ItemUID()[0]);
}

TEST(ItemUID, GrowsAndShrinksAtTheEnd)
{
    ItemUID path;
    path.push_back(NUXO_KEY_PORT);
    path.push_back(NUXO_KEY_FORMAT);
    EXPECT_EQ((Keys{34, 16}), keysOf(path));
    path.pop_back();
    EXPECT_EQ((Keys{34}), keysOf(path));
    path.pop_back();
    EXPECT_TRUE(path.empty());
    path.pop_back(); // nothing left: stays empty
    EXPECT_TRUE(path.empty());
}

TEST(ItemUID, CopiesAreIndependent)
{
    const ItemUID original{NUXO_KEY_PORT, NUXO_KEY_FORMAT};
    ItemUID copy = original;
    copy.push_back(NUXO_KEY_WIDTH);
    EXPECT_EQ((Keys{34, 16}), keysOf(original));
    EXPECT_EQ((Keys{34, 16, 8232}), keysOf(copy));
    copy = original;
    EXPECT_EQ(original, copy);
}

TEST(ItemUID, ComparesAllKeysInOrder)
{
    const ItemUID path{NUXO_KEY_PORT, NUXO_KEY_FORMAT};
    EXPECT_TRUE(path == ItemUID("port:format"));
    EXPECT_FALSE(path != ItemUID("port:format"));
    EXPECT_TRUE(path != ItemUID("format:port"));
    EXPECT_TRUE(path != ItemUID("port"));
    EXPECT_TRUE(path != ItemUID());
    EXPECT_TRUE(ItemUID() == ItemUID(""));
}

TEST(ItemUID, IsStrictlyOrdered)
{
    // Ascending: each is before all that follow, and nothing is before itself.
    const std::vector<ItemUID> ascending = {ItemUID(),     ItemUID{1}, ItemUID{1, 0},
                                            ItemUID{1, 2}, ItemUID{2}, ItemUID{2, 1}};
    for (size_t i = 0; i < ascending.size(); ++i) {
        for (size_t j = 0; j < ascending.size(); ++j) {
            EXPECT_EQ(i < j, ascending[i] < ascending[j]) << i << " and " << j;
        }
    }
}

TEST(ItemUID, ServesAsKeyOfAnOrderedMap)
{
    std::map<ItemUID, std::string> criteria;
    criteria[ItemUID{NUXO_KEY_PORT, NUXO_KEY_WIDTH}] = "1920";
    criteria[ItemUID("port:width")] = "4208";
    criteria[ItemUID("port:height")] = "3120";
    EXPECT_EQ(2U, criteria.size());
    EXPECT_EQ("4208", criteria[ItemUID("port:width")]);
}

} // namespace
