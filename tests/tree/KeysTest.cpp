// SPDX-License-Identifier: Apache-2.0
#include "BuiltInKeys.h"
#include "TreeTestSupport.h"
#include "VocabularyGuard.h"

#include <nuxo/tree/ItemUID.h>

#include <support/LogCapture.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace {

using NUXO::ItemUID;
using Vocabulary = std::map<std::string, uint32_t>;

// Taken while this program is still being started: the vocabulary must be there before any client code runs.
const size_t kSizeAtStart = nuxo_key_map.size();
const uint32_t kWidthAtStart = ItemUID::str2key("width");

Vocabulary documentedVocabulary()
{
    Vocabulary names;
    for (const BuiltInKey& row : kBuiltInKeys) names[row.name] = row.value;
    return names;
}

class Keys : public ::testing::Test {
protected:
    VocabularyGuard mGuard;
};

TEST_F(Keys, VocabularyIsFilledBeforeClientCodeRuns)
{
    EXPECT_EQ(115U, kSizeAtStart);
    EXPECT_EQ(8232U, kWidthAtStart);
}

TEST_F(Keys, BuiltInVocabularyHoldsExactlyTheDocumentedPairs)
{
    const Vocabulary documented = documentedVocabulary();
    EXPECT_EQ(115U, documented.size());
    EXPECT_EQ(documented, nuxo_key_map);
}

TEST_F(Keys, EveryNameHasAnEnumerationConstant)
{
    for (const BuiltInKey& row : kBuiltInKeys) {
        EXPECT_EQ(row.value, static_cast<uint32_t>(row.constant)) << row.name;
        std::string upper = row.name;
        std::transform(upper.begin(), upper.end(), upper.begin(),
                       [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        EXPECT_EQ("NUXO_KEY_" + upper, row.constantName);
    }
}

TEST_F(Keys, BuiltInVocabularyMapsBothWays)
{
    for (const BuiltInKey& row : kBuiltInKeys) {
        EXPECT_EQ(row.value, ItemUID::str2key(row.name)) << row.name;
        EXPECT_STREQ(row.name, ItemUID::key2str(row.value));
    }
}

TEST_F(Keys, BothSpellingsNameOneMap)
{
    EXPECT_EQ(&::nuxo_key_map, &NUXO::nuxo_key_map);
}

TEST_F(Keys, UnknownNamesGiveZero)
{
    EXPECT_EQ(0U, ItemUID::str2key("no_such_name"));
    EXPECT_EQ(0U, ItemUID::str2key(""));
    EXPECT_EQ(0U, ItemUID::str2key("Width")); // case matters
    EXPECT_EQ(0U, ItemUID::str2key("width "));
    EXPECT_EQ(0U, ItemUID::str2key("na"));
}

TEST_F(Keys, LookingUpAddsNothing)
{
    (void)ItemUID::str2key("no_such_name");
    (void)ItemUID::key2str(5000);
    EXPECT_EQ(mGuard.saved(), nuxo_key_map);
}

TEST_F(Keys, UnknownKeysGiveTheFirstName)
{
    EXPECT_STREQ("active_input", ItemUID::key2str(5000));
    EXPECT_STREQ("active_input", ItemUID::key2str(72));
    EXPECT_STREQ("active_input", ItemUID::key2str(UINT32_MAX));
}

TEST_F(Keys, FallbackNameFollowsTheFirstEntry)
{
    ItemUID::addCustomKeyMap({{"a_first_name", 9000}});
    EXPECT_STREQ("a_first_name", ItemUID::key2str(5000));
    ItemUID::addCustomKeyMap({{"BB_PS", 9001}}); // upper case sorts before lower case
    EXPECT_STREQ("BB_PS", ItemUID::key2str(5000));
    ItemUID::addCustomKeyMap({{"", 9002}});
    EXPECT_STREQ("", ItemUID::key2str(5000));
}

TEST_F(Keys, FirstNameInStringOrderWinsAmongEqualValues)
{
    ItemUID::addCustomKeyMap({{"zzz", 8232}});
    EXPECT_STREQ("width", ItemUID::key2str(8232));
    ItemUID::addCustomKeyMap({{"aaa", 8232}});
    EXPECT_STREQ("aaa", ItemUID::key2str(8232));
}

TEST_F(Keys, NamesStayValidWhileTheVocabularyGrows)
{
    const char* const name = ItemUID::key2str(8232);
    for (int i = 0; i < 1000; ++i) (void)ItemUID::generateKey("grown_" + std::to_string(i));
    EXPECT_STREQ("width", name);
    EXPECT_EQ(name, ItemUID::key2str(8232));
}

TEST_F(Keys, GeneratedKeyIsTheNumberOfEntries)
{
    EXPECT_EQ(115U, ItemUID::generateKey("brand_new"));
    EXPECT_EQ(115U, ItemUID::str2key("brand_new"));
    EXPECT_STREQ("brand_new", ItemUID::key2str(115));
    EXPECT_EQ(116U, ItemUID::generateKey("another"));
    EXPECT_EQ(116U, ItemUID::str2key("another"));
}

TEST_F(Keys, GeneratingAKnownNameReturnsTheCountAndChangesNothing)
{
    EXPECT_EQ(115U, ItemUID::generateKey("brand_new"));
    EXPECT_EQ(116U, ItemUID::generateKey("brand_new"));
    EXPECT_EQ(115U, ItemUID::str2key("brand_new"));
    EXPECT_EQ(116U, nuxo_key_map.size());
    EXPECT_EQ(116U, ItemUID::generateKey("width"));
    EXPECT_EQ(8232U, ItemUID::str2key("width"));
    EXPECT_EQ(116U, nuxo_key_map.size());
}

TEST_F(Keys, GeneratingNaSharesItsNumberWithTheNextNewName)
{
    EXPECT_EQ(115U, ItemUID::generateKey("na")); // known, with value 0
    EXPECT_EQ(0U, ItemUID::str2key("na"));
    EXPECT_EQ(115U, ItemUID::generateKey("brand_new"));
}

TEST_F(Keys, GeneratedNumbersFollowTheCountAtEverySize)
{
    // From 4095 on the numbers leave the range of generic keys; the rule stays the same.
    for (uint32_t expected = 115; expected < 8300; ++expected) {
        const std::string name = "generated_" + std::to_string(expected);
        ASSERT_EQ(expected, ItemUID::generateKey(name));
        ASSERT_EQ(expected, ItemUID::str2key(name));
    }
}

TEST_F(Keys, GeneratedNumbersFollowTheCountOfAReplacedVocabulary)
{
    Vocabulary three = {{"one", 1}, {"two", 2}, {"ten", 10}};
    NUXO::copyNuxoKeys(three);
    EXPECT_EQ(3U, ItemUID::generateKey("brand_new"));
    EXPECT_EQ(3U, ItemUID::str2key("brand_new"));
    EXPECT_EQ(4U, ItemUID::generateKey("one"));
}

TEST_F(Keys, IntegerKeysLieStrictlyBetweenTheirMarkers)
{
    for (const uint32_t key : {8193U, 8212U, 9000U, 12286U}) EXPECT_TRUE(ItemUID::isInteger(key)) << key;
    for (const uint32_t key : {0U, 71U, 4095U, 4096U, 8191U, 8192U, 12287U, 12288U, UINT32_MAX})
        EXPECT_FALSE(ItemUID::isInteger(key)) << key;
}

TEST_F(Keys, CustomNamesAreMergedAndKnownNamesKeepTheirValue)
{
    Vocabulary custom = {{"width", 7}, {"my_counter", 9000}};
    ItemUID::addCustomKeyMap(custom);
    EXPECT_EQ(8232U, ItemUID::str2key("width"));
    EXPECT_EQ(9000U, ItemUID::str2key("my_counter"));
    EXPECT_TRUE(ItemUID::isInteger(ItemUID::str2key("my_counter")));
    EXPECT_EQ(116U, nuxo_key_map.size());
    EXPECT_EQ((Vocabulary{{"width", 7}, {"my_counter", 9000}}), custom);
}

TEST_F(Keys, CustomValuesAreNotRangeChecked)
{
    ItemUID::addCustomKeyMap({{"in_the_gap", 5000}, {"marker", 8192}, {"huge", UINT32_MAX}, {"second_zero", 0}});
    EXPECT_EQ(5000U, ItemUID::str2key("in_the_gap"));
    EXPECT_EQ(8192U, ItemUID::str2key("marker"));
    EXPECT_EQ(UINT32_MAX, ItemUID::str2key("huge"));
    EXPECT_EQ(119U, nuxo_key_map.size());
}

TEST_F(Keys, AddingNothingOrTheVocabularyItselfChangesNothing)
{
    ItemUID::addCustomKeyMap({});
    EXPECT_EQ(mGuard.saved(), nuxo_key_map);
    ItemUID::addCustomKeyMap(nuxo_key_map);
    EXPECT_EQ(mGuard.saved(), nuxo_key_map);
}

TEST_F(Keys, VocabularyCanBeCopiedOut)
{
    (void)ItemUID::generateKey("brand_new");
    Vocabulary out = {{"left_over", 1}};
    NUXO::getNuxoKeys(out);
    EXPECT_EQ(nuxo_key_map, out);
    EXPECT_EQ(0U, out.count("left_over"));
    out["mine"] = 1; // a copy: the vocabulary does not see this
    EXPECT_EQ(0U, nuxo_key_map.count("mine"));
}

TEST_F(Keys, VocabularyCanBeReplaced)
{
    Vocabulary in = {{"one", 1}, {"width", 7}};
    NUXO::copyNuxoKeys(in);
    EXPECT_EQ(in, nuxo_key_map);
    EXPECT_EQ(7U, ItemUID::str2key("width"));
    EXPECT_EQ(0U, ItemUID::str2key("height"));
    EXPECT_STREQ("one", ItemUID::key2str(8232)); // unknown now: the first name
    in["two"] = 2;
    EXPECT_EQ(0U, ItemUID::str2key("two"));
}

TEST_F(Keys, CopyingTheVocabularyOntoItselfChangesNothing)
{
    const char* const name = ItemUID::key2str(8232);
    NUXO::getNuxoKeys(nuxo_key_map);
    EXPECT_EQ(mGuard.saved(), nuxo_key_map);
    NUXO::copyNuxoKeys(nuxo_key_map);
    EXPECT_EQ(mGuard.saved(), nuxo_key_map);
    EXPECT_EQ(name, ItemUID::key2str(8232));
}

TEST_F(Keys, EmptyVocabularyAnswersToo)
{
    Vocabulary empty;
    NUXO::copyNuxoKeys(empty);
    EXPECT_STREQ("na", ItemUID::key2str(8232));
    EXPECT_STREQ("na", ItemUID::key2str(0));
    EXPECT_EQ(0U, ItemUID::str2key("width"));
    EXPECT_EQ(0U, ItemUID::generateKey("first"));
    EXPECT_EQ(1U, ItemUID::generateKey("second"));
    EXPECT_EQ(1U, ItemUID::str2key("second"));
}

TEST_F(Keys, ClientsMayEditTheMapThemselves)
{
    nuxo_key_map["hand_made"] = 9123;
    EXPECT_EQ(9123U, ItemUID::str2key("hand_made"));
    EXPECT_STREQ("hand_made", ItemUID::key2str(9123));
    nuxo_key_map.erase("hand_made");
    EXPECT_EQ(0U, ItemUID::str2key("hand_made"));
    EXPECT_STREQ("active_input", ItemUID::key2str(9123));
}

TEST_F(Keys, ReplacedVocabularyChangesWhatExistingTreesPrint)
{
    const NodePtr root = makeNode();
    NUXO::GraphConfigNode* const child = addChild(*root, 500);
    nuxo_key_map["before"] = 500;
    EXPECT_EQ("before", child->getName());
    Vocabulary in = {{"after", 500}};
    NUXO::copyNuxoKeys(in);
    EXPECT_EQ("after", child->getName());
}

TEST_F(Keys, NothingIsLogged)
{
    const LogCapture log(UINT32_MAX);
    (void)ItemUID::str2key("no_such_name");
    (void)ItemUID::key2str(5000);
    (void)ItemUID::generateKey("width");
    (void)ItemUID::generateKey("brand_new");
    ItemUID::addCustomKeyMap({{"width", 7}});
    (void)ItemUID("no_such_name::").toString();
    Vocabulary copy;
    NUXO::getNuxoKeys(copy);
    NUXO::copyNuxoKeys(copy);
    EXPECT_TRUE(log.isEmpty());
}

} // namespace
