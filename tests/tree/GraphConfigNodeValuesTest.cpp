// SPDX-License-Identifier: Apache-2.0
#include "ExpectLog.h"
#include "TreeTestSupport.h"

#include <nuxo/tree/GraphConfigNode.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

using NUXO::GraphConfigItem;
using NUXO::GraphConfigNode;
using NUXO::ItemUID;

constexpr const char* kWrongType = "Attribute is of wrong type";
constexpr const char* kRestricted = "setValue() restricted to attributes that have predefined options";

/// root { sensor { port { width = 640 }, name = "imx", width = 4208 }, name = "root" }
class Values : public ::testing::Test {
protected:
    Values() : mRoot(makeNode()), mSensor(addChild(*mRoot, NUXO_KEY_SENSOR)), mPort(addChild(*mSensor, NUXO_KEY_PORT))
    {
        mRoot->addValue(NUXO_KEY_NAME, std::string("root"));
        mSensor->addValue(NUXO_KEY_NAME, std::string("imx"));
        mSensor->addValue(NUXO_KEY_WIDTH, 4208);
        mPort->addValue(NUXO_KEY_WIDTH, 640);
        mBefore = contentOf(*mRoot);
    }

    void expectUnchanged() const { EXPECT_EQ(mBefore, contentOf(*mRoot)); }

    NodePtr mRoot;
    GraphConfigNode* mSensor;
    GraphConfigNode* mPort;
    std::string mBefore;
};

template <typename Where> void expectReadFails(const GraphConfigNode& node, const Where& where, int32_t status)
{
    int number = 41;
    std::string text = "before";
    EXPECT_EQ(status, node.getValue(where, number));
    EXPECT_EQ(status, node.getValue(where, text));
    EXPECT_EQ(41, number);
    EXPECT_EQ("before", text);
}

TEST_F(Values, ReadsTheAttributesOfANode)
{
    LogCapture log;
    int width = 0;
    std::string name;
    EXPECT_EQ(0, mSensor->getValue(NUXO_KEY_WIDTH, width));
    EXPECT_EQ(4208, width);
    EXPECT_EQ(0, mSensor->getValue(NUXO_KEY_NAME, name));
    EXPECT_EQ("imx", name);
    expectNoLines(log);
}

TEST_F(Values, ReadingAnAbsentKeyIsMissingData)
{
    LogCapture log;
    const uint32_t absent = NUXO_KEY_HEIGHT;
    const uint32_t any = NUXO_KEY_WIDTH;
    expectReadFails(*mSensor, absent, -2);
    expectReadFails(GraphConfigNode(), any, -2);
    expectNoLines(log);
}

TEST_F(Values, ReadingTheOtherKindIsRefusedAndLeavesTheOutput)
{
    LogCapture log;
    int number = 41;
    std::string text = "before";
    EXPECT_EQ(-64, mSensor->getValue(NUXO_KEY_NAME, number));
    EXPECT_EQ(-64, mSensor->getValue(NUXO_KEY_WIDTH, text));
    EXPECT_EQ(41, number);
    EXPECT_EQ("before", text);
    const uint32_t aNode = NUXO_KEY_PORT;
    expectReadFails(*mSensor, aNode, -64);
    expectNoLines(log);
}

TEST_F(Values, KindFollowsTheItemNotTheKey)
{
    GraphConfigNode node;
    fileText(node, NUXO_KEY_WIDTH, "wide");
    fileInteger(node, NUXO_KEY_ATTRIBUTE, 8232);
    int number = 41;
    std::string text;
    EXPECT_EQ(-64, node.getValue(NUXO_KEY_WIDTH, number));
    EXPECT_EQ(0, node.getValue(NUXO_KEY_WIDTH, text));
    EXPECT_EQ("wide", text);
    EXPECT_EQ(0, node.getValue(NUXO_KEY_ATTRIBUTE, number));
    EXPECT_EQ(8232, number);
}

TEST_F(Values, FirstItemDecidesWhatIsRead)
{
    GraphConfigNode node;
    fileText(node, NUXO_KEY_WIDTH, "first");
    fileInteger(node, NUXO_KEY_WIDTH, 2);
    int number = 41;
    EXPECT_EQ(-64, node.getValue(NUXO_KEY_WIDTH, number));
    EXPECT_EQ(41, number);
}

TEST_F(Values, ReadsByPath)
{
    int width = 0;
    std::string name;
    EXPECT_EQ(0, mRoot->getValue(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_PORT, NUXO_KEY_WIDTH}, width));
    EXPECT_EQ(640, width);
    EXPECT_EQ(0, mRoot->getValue(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_NAME}, name));
    EXPECT_EQ("imx", name);
    EXPECT_EQ(0, mRoot->getValue(ItemUID{NUXO_KEY_NAME}, name)); // one key: this node's own
    EXPECT_EQ("root", name);
    EXPECT_EQ(0, mRoot->getValue("sensor:width", width));
    EXPECT_EQ(4208, width);
}

TEST_F(Values, ReadingByAnUnresolvedPathIsABadArgument)
{
    LogCapture log;
    expectReadFails(*mRoot, ItemUID{NUXO_KEY_HW, NUXO_KEY_WIDTH}, -32);
    expectReadFails(*mRoot, ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_HEIGHT}, -32); // last key absent: no holding node
    expectReadFails(*mRoot, ItemUID{NUXO_KEY_NAME, NUXO_KEY_WIDTH}, -32);    // an attribute before the end
    expectNoLines(log);
}

TEST_F(Values, ReadingByPathOtherwiseFailsLikeReadingByKey)
{
    LogCapture log;
    expectReadFails(*mRoot, ItemUID{NUXO_KEY_HEIGHT}, -2);
    expectReadFails(*mRoot, ItemUID{NUXO_KEY_SENSOR}, -64); // one key, a node
    // The whole path names nodes: the last key is then looked up inside the named node, which lacks it.
    expectReadFails(*mRoot, ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_PORT}, -2);
    int number = 41;
    EXPECT_EQ(-64, mRoot->getValue(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_NAME}, number));
    EXPECT_EQ(41, number);
    expectNoLines(log);
}

TEST_F(Values, EmptyPathIsMissingData)
{
    LogCapture log;
    expectReadFails(*mRoot, ItemUID(), -2);
    EXPECT_EQ(-2, mRoot->setValue(ItemUID(), 1));
    EXPECT_EQ(-2, mRoot->setValue(ItemUID(), std::string("x")));
    EXPECT_EQ(-2, mRoot->setValueFromStr(ItemUID(), "x"));
    EXPECT_EQ(-2, mRoot->setValueFromStr(ItemUID(""), "x"));
    expectNoLines(log);
    expectUnchanged();
}

TEST_F(Values, SettingAnAbsentKeyCreatesNothing)
{
    LogCapture log;
    EXPECT_EQ(-64, mRoot->setValue(NUXO_KEY_WIDTH, 1920));
    EXPECT_EQ(-64, mRoot->setValue(NUXO_KEY_FORMAT, std::string("NV12")));
    EXPECT_EQ(-64, GraphConfigNode().setValue(NUXO_KEY_WIDTH, 1920));
    EXPECT_EQ(-64, GraphConfigNode().setValue(NUXO_KEY_FORMAT, std::string("NV12")));
    expectNoLines(log);
    expectUnchanged();
}

TEST_F(Values, SettingTheOtherKindIsAnError)
{
    LogCapture log;
    EXPECT_EQ(-32, mSensor->setValue(NUXO_KEY_NAME, 7));
    EXPECT_EQ(-32, mSensor->setValue(NUXO_KEY_WIDTH, std::string("7")));
    EXPECT_EQ(-32, mSensor->setValue(NUXO_KEY_PORT, 7));
    EXPECT_EQ(-32, mSensor->setValue(NUXO_KEY_PORT, std::string("7")));
    expectLines(log, {{kError, kWrongType}, {kError, kWrongType}, {kError, kWrongType}, {kError, kWrongType}});
    expectUnchanged();
}

TEST_F(Values, SettingAnUntypedItemIsAnError)
{
    GraphConfigNode node;
    fileItem(node, std::make_unique<GraphConfigItem>(), NUXO_KEY_WIDTH);
    LogCapture log;
    EXPECT_EQ(-32, node.setValue(NUXO_KEY_WIDTH, 7));
    EXPECT_EQ(-32, node.setValue(NUXO_KEY_WIDTH, std::string("7")));
    expectLines(log, {{kError, kWrongType}, {kError, kWrongType}});
}

TEST_F(Values, IntegerWithoutOptionsListIsNotSet)
{
    LogCapture log;
    EXPECT_EQ(-64, mSensor->setValue(NUXO_KEY_WIDTH, 1920));
    EXPECT_EQ(1U, log.count(kDebug, "NUXO[XOS]", kRestricted));
    EXPECT_EQ(0U, log.count(kError));
    expectUnchanged();
}

TEST_F(Values, RestrictionOfIntegersIsLoggedInTheDebugClassAlone)
{
    for (const uint32_t level : {1U, 2U, 4U, 8U, 16U, 32U}) {
        LogCapture log(level);
        EXPECT_EQ(-64, mSensor->setValue(NUXO_KEY_WIDTH, 1920));
        EXPECT_EQ(level == 2U ? 1U : 0U, log.count(kDebug, "NUXO[XOS]", kRestricted)) << "level " << level;
    }
}

TEST_F(Values, TextWithoutOptionsListIsNotSet)
{
    LogCapture log;
    EXPECT_EQ(-64, mSensor->setValue(NUXO_KEY_NAME, std::string("ov")));
    EXPECT_EQ(1U, log.count(kError, "NUXO[XOS]", kRestricted));
    EXPECT_EQ(1U, log.count(kError));
    expectUnchanged();
}

TEST_F(Values, SettingTheValueThatIsThereIsRestrictedToo)
{
    EXPECT_EQ(-64, mSensor->setValue(NUXO_KEY_WIDTH, 4208));
    EXPECT_EQ(-64, mSensor->setValue(NUXO_KEY_NAME, std::string("imx")));
}

TEST_F(Values, SettingByPathFollowsTheKeyForm)
{
    EXPECT_EQ(-64, mRoot->setValue(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_WIDTH}, 1920)); // no options list
    LogCapture log;
    EXPECT_EQ(-32, mRoot->setValue(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_NAME}, 7));
    EXPECT_EQ(-32, mRoot->setValue(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_WIDTH}, std::string("7")));
    EXPECT_EQ(-32, mRoot->setValue(ItemUID{NUXO_KEY_NAME}, 7));   // one key: this node's own
    EXPECT_EQ(-32, mRoot->setValue(ItemUID{NUXO_KEY_SENSOR}, 7)); // one key, a node
    expectLines(log, {{kError, kWrongType}, {kError, kWrongType}, {kError, kWrongType}, {kError, kWrongType}});
    expectUnchanged();
}

TEST_F(Values, SettingByAnUnresolvedPathIsNotFound)
{
    LogCapture log;
    for (const ItemUID& path :
         {ItemUID{NUXO_KEY_HW, NUXO_KEY_WIDTH}, ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_HEIGHT},
          ItemUID{NUXO_KEY_NAME, NUXO_KEY_WIDTH}, ItemUID{NUXO_KEY_HEIGHT}, ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_PORT}}) {
        EXPECT_EQ(-64, mRoot->setValue(path, 7)) << path.toString();
        EXPECT_EQ(-64, mRoot->setValue(path, std::string("7"))) << path.toString();
    }
    expectNoLines(log);
    expectUnchanged();
}

/// An options list on the sensor for its width: 1280 has an empty element to apply, 640 has none.
void giveWidthOptions(GraphConfigNode& sensor)
{
    GraphConfigNode* const options = addChild(sensor, NUXO_KEY_OPTIONS);
    options->addValue(NUXO_KEY_ATTRIBUTE, static_cast<int>(NUXO_KEY_WIDTH));
    GraphConfigNode* const applied = addChild(*options, 5000);
    applied->addValue(NUXO_KEY_VALUE, std::string("1280"));
    addChild(*applied, NUXO_KEY_APPLY);
    addChild(*options, 5000)->addValue(NUXO_KEY_VALUE, std::string("640"));
}

TEST_F(Values, OptionThatAppliesLetsTheValueIn)
{
    giveWidthOptions(*mSensor);
    LogCapture log;
    int width = 0;
    EXPECT_EQ(0, mSensor->setValue(NUXO_KEY_WIDTH, 1280));
    EXPECT_EQ(0, mSensor->getValue(NUXO_KEY_WIDTH, width));
    EXPECT_EQ(1280, width);
    EXPECT_EQ(0U, log.count(kDebug, "NUXO[XOS]", kRestricted));
}

TEST_F(Values, OptionWithNothingToApplyLetsTheValueInToo)
{
    giveWidthOptions(*mSensor);
    LogCapture log;
    int width = 0;
    EXPECT_EQ(0, mRoot->setValue(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_WIDTH}, 640));
    EXPECT_EQ(0, mSensor->getValue(NUXO_KEY_WIDTH, width));
    EXPECT_EQ(640, width);
    EXPECT_EQ(0U, log.count(kDebug, "NUXO[XOS]", kRestricted));
}

TEST_F(Values, ValueOutsideTheOptionsListIsNotSet)
{
    giveWidthOptions(*mSensor);
    int width = 0;
    EXPECT_EQ(-64, mSensor->setValue(NUXO_KEY_WIDTH, 128));
    EXPECT_EQ(0, mSensor->getValue(NUXO_KEY_WIDTH, width));
    EXPECT_EQ(4208, width);
}

TEST_F(Values, TextFormStoresIntegersAndTexts)
{
    LogCapture log;
    EXPECT_EQ(0, mSensor->setValueFromStr(ItemUID{NUXO_KEY_WIDTH}, "1920")); // options lists do not matter here
    EXPECT_EQ(0, mSensor->setValueFromStr(ItemUID{NUXO_KEY_NAME}, "ov"));
    EXPECT_EQ(0, mRoot->setValueFromStr(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_PORT, NUXO_KEY_WIDTH}, "-5"));
    EXPECT_EQ("29='root' 36{29='ov' 34{8232=-5 } 8232=1920 } ", contentOf(*mRoot));
    expectNoLines(log);
}

TEST_F(Values, TextFormCreatesAMissingAttribute)
{
    LogCapture log;
    GraphConfigNode node;
    EXPECT_EQ(0, node.setValueFromStr(ItemUID{NUXO_KEY_WIDTH}, "1920"));
    EXPECT_EQ(0, node.setValueFromStr(ItemUID{NUXO_KEY_FORMAT}, "NV12"));
    EXPECT_EQ("16='NV12' 8232=1920 ", contentOf(node));
    EXPECT_EQ(0, mRoot->setValueFromStr(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_PORT, NUXO_KEY_HEIGHT}, "480"));
    EXPECT_EQ("8211=480 8232=640 ", contentOf(*mPort));
    expectNoLines(log);
}

TEST_F(Values, TextFormNeverCreatesANode)
{
    LogCapture log;
    EXPECT_EQ(-64, mRoot->setValueFromStr(ItemUID{NUXO_KEY_HW, NUXO_KEY_WIDTH}, "1"));
    EXPECT_EQ(-64, mRoot->setValueFromStr(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_HW, NUXO_KEY_WIDTH}, "1"));
    EXPECT_EQ(-64, mRoot->setValueFromStr(ItemUID{NUXO_KEY_NAME, NUXO_KEY_WIDTH}, "1")); // through an attribute
    expectNoLines(log);
    expectUnchanged();
}

TEST_F(Values, TextFormOnANodeOfThisNodeIsNotFound)
{
    EXPECT_EQ(-64, mRoot->setValueFromStr(ItemUID{NUXO_KEY_SENSOR}, "1"));
    expectUnchanged();
}

TEST_F(Values, TextFormWithAPathOfNodesCreatesTheAttributeInsideTheNamedNode)
{
    // The holding node is then the named node itself, and the last key is missing in it.
    EXPECT_EQ(0, mRoot->setValueFromStr(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_PORT}, "x"));
    EXPECT_EQ("34='x' 8232=640 ", contentOf(*mPort));
}

TEST_F(Values, TextFormFollowsTheKindOfTheItem)
{
    GraphConfigNode node;
    fileText(node, NUXO_KEY_WIDTH, "wide");
    fileInteger(node, NUXO_KEY_ATTRIBUTE, 1);
    fileItem(node, std::make_unique<GraphConfigItem>(), NUXO_KEY_FORMAT);
    EXPECT_EQ(0, node.setValueFromStr(ItemUID{NUXO_KEY_WIDTH}, "not a number"));
    EXPECT_EQ(0, node.setValueFromStr(ItemUID{NUXO_KEY_ATTRIBUTE}, "8232"));
    EXPECT_EQ(-64, node.setValueFromStr(ItemUID{NUXO_KEY_FORMAT}, "x"));
    EXPECT_EQ("16? 54=8232 8232='not a number' ", contentOf(node));
}

TEST_F(Values, TextFormCreatesATextUnderGenericKeysAndMarkers)
{
    GraphConfigNode node;
    for (const uint32_t key : {0U, 54U, 5000U, 8192U, 12287U})
        EXPECT_EQ(0, node.setValueFromStr(ItemUID{key}, "1")) << key;
    EXPECT_EQ("0='1' 54='1' 5000='1' 8192='1' 12287='1' ", contentOf(node));
}

TEST_F(Values, TextFormReadsDecimalNumbers)
{
    struct Row {
        const char* text;
        int value;
    };
    const Row rows[] = {
        {"0", 0},    {"+5", 5},  {" 12", 12}, {"\t-3", -3}, {"12abc", 12},           {"0x10", 0},
        {"010", 10}, {"1.9", 1}, {"7 ", 7},   {"1e3", 1},   {"2147483647", INT_MAX}, {"-2147483648", INT_MIN}};
    for (const Row& row : rows) {
        int value = 41;
        EXPECT_EQ(0, mSensor->setValueFromStr(ItemUID{NUXO_KEY_WIDTH}, row.text)) << row.text;
        EXPECT_EQ(0, mSensor->getValue(NUXO_KEY_WIDTH, value));
        EXPECT_EQ(row.value, value) << row.text;
    }
}

TEST_F(Values, TextThatIsNoNumberRaisesAndKeepsTheOldValue)
{
    for (const char* const text : {"", " ", "abc", "-", "+-1", "x12"}) {
        EXPECT_THROW((void)mSensor->setValueFromStr(ItemUID{NUXO_KEY_WIDTH}, text), std::invalid_argument) << text;
    }
    for (const char* const text : {"2147483648", "-2147483649", "99999999999999999999"}) {
        EXPECT_THROW((void)mSensor->setValueFromStr(ItemUID{NUXO_KEY_WIDTH}, text), std::out_of_range) << text;
    }
    expectUnchanged();
}

TEST_F(Values, AttributeCreatedBeforeTheTextRaisedStaysWithZero)
{
    GraphConfigNode node;
    EXPECT_THROW((void)node.setValueFromStr(ItemUID{NUXO_KEY_WIDTH}, "abc"), std::invalid_argument);
    EXPECT_THROW((void)node.setValueFromStr(ItemUID{NUXO_KEY_HEIGHT}, "2147483648"), std::out_of_range);
    EXPECT_EQ("8211=0 8232=0 ", contentOf(node));
}

} // namespace
