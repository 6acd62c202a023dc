// SPDX-License-Identifier: Apache-2.0
// Where the values of a built graph come from: the element that gave a value, through every copy and merge.
#include "query/GraphFixture.h"

#include <cstdio>
#include <fstream>

namespace graphtest {

namespace {

class MergedPositionsTest : public BuildTest {
protected:
    enum From { Descriptor, Settings };

    MergedPositionsTest() : mFiles{scratchFile("descriptor.xml"), scratchFile("settings.xml")} {}

    ~MergedPositionsTest() override
    {
        for (const std::string& file : mFiles) std::remove(file.c_str());
    }

    /// Parses both documents from files of their own, so that they are two documents.
    void loadTexts(const std::string& descriptorBody, const std::string& settingsBody)
    {
        mTexts[Descriptor] = descriptorText(descriptorBody);
        mTexts[Settings] = settingsText(settingsBody);
        mDescriptor = parseFile(Descriptor);
        mSettings = parseFile(Settings);
        mManager.setGraphDescriptor(mDescriptor.get());
        mManager.setGraphSettings(mSettings.get());
        clearLog();
    }

    /// Whether attribute @p name of the graph's node @p path comes from the element that starts with @p element.
    ::testing::AssertionResult comesFrom(const std::string& path, const std::string& name, From where,
                                         const std::string& element) const
    {
        const std::string& document = mTexts[where];
        const size_t offset = document.find(element);
        if (offset == std::string::npos || document.find(element, offset + 1) != std::string::npos) {
            return ::testing::AssertionFailure() << element << " does not stand in the document once";
        }
        const NUXO::SourcePosition found = NUXO::getSourcePosition(&at(graph(), path), key(name));
        if (NUXO::getSourceDocument(found.document) == mFiles[where] && found.offset == offset) {
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure()
               << path << ":" << name << " comes from document '" << NUXO::getSourceDocument(found.document)
               << "' offset " << found.offset << ", not '" << mFiles[where] << "' offset " << offset;
    }

private:
    Tree parseFile(From which) const
    {
        std::ofstream(mFiles[which]) << mTexts[which];
        IGraphConfig* root = nullptr;
        NUXO::NUXOParser parser;
        parser.parseNUXOXmlFile(mFiles[which].c_str(), &root);
        return Tree(&asNode(root));
    }

    const std::string mFiles[2];
    std::string mTexts[2];
};

constexpr const char* kGraphOfPair = "<graphs><graph id=\"1\"><connection source=\"tpg:out\" sink=\"pg:in\"/>";

TEST_F(MergedPositionsTest, CopiedNodesKeepThePositionsOfTheDescriptor)
{
    loadTexts(std::string("<nodes><source name=\"tpg\"><port name=\"out\" direction=\"1\" width=\"1\"/></source>"
                          "<hw name=\"pg\"><port name=\"in\" width=\"2\"/></hw></nodes>") +
                  kGraphOfPair + "</graph></graphs>",
              "<settings key=\"7\" id=\"1\"><tpg><out/></tpg><pg/></settings>");
    ASSERT_EQ(build(), StatusOk);
    EXPECT_TRUE(comesFrom("tpg:out", "width", Descriptor, "<port name=\"out\""));
    EXPECT_TRUE(comesFrom("tpg:out", "name", Descriptor, "<port name=\"out\""));
    EXPECT_TRUE(comesFrom("tpg:out", "type", Descriptor, "<port name=\"out\""));
    EXPECT_TRUE(comesFrom("graph", "id", Descriptor, "<graph id"));
    EXPECT_TRUE(comesFrom("graph:connection", "sink", Descriptor, "<connection "));
    const NUXO::SourcePosition node = NUXO::getSourcePosition(&at(graph(), "tpg:out"));
    const NUXO::SourcePosition original = NUXO::getSourcePosition(&at(*mDescriptor, "nodes:tpg:out"));
    EXPECT_TRUE(node.known());
    EXPECT_EQ(node.document, original.document);
    EXPECT_EQ(node.offset, original.offset);
}

TEST_F(MergedPositionsTest, SettingWinsWhereItOverwrites)
{
    loadTexts(std::string(
                  "<nodes><source name=\"tpg\"><port name=\"out\" direction=\"1\" width=\"1\" left=\"1\" format=\"a\"/>"
                  "</source><hw name=\"pg\"><port name=\"in\" width=\"2\" top=\"2\"/></hw></nodes>") +
                  kGraphOfPair + "</graph></graphs>",
              "<settings key=\"7\" id=\"1\"><tpg><out name=\"x\" width=\"640\" format=\"b\" bpp=\"8\"/></tpg><pg/>"
              "<stray bpp=\"1\"/></settings>");
    ASSERT_EQ(build(), StatusOk);
    EXPECT_TRUE(comesFrom("tpg:out", "width", Settings, "<out "));
    EXPECT_TRUE(comesFrom("tpg:out", "format", Settings, "<out "));
    EXPECT_TRUE(comesFrom("tpg:out", "bpp", Settings, "<out "));                 // added
    EXPECT_TRUE(comesFrom("tpg:out", "left", Descriptor, "<port name=\"out\"")); // untouched
    EXPECT_TRUE(comesFrom("tpg:out", "name", Descriptor, "<port name=\"out\"")); // protected
    EXPECT_TRUE(comesFrom("stray", "bpp", Settings, "<stray "));
    // What the output gave on to its peer stands where the output got it from.
    EXPECT_TRUE(comesFrom("pg:in", "width", Settings, "<out "));
    EXPECT_TRUE(comesFrom("pg:in", "bpp", Settings, "<out "));
    EXPECT_TRUE(comesFrom("pg:in", "left", Descriptor, "<port name=\"out\""));
    EXPECT_TRUE(comesFrom("pg:in", "top", Descriptor, "<port name=\"in\""));
}

TEST_F(MergedPositionsTest, EqualValueThatOverwritesWinsToo)
{
    loadTexts(std::string("<nodes><source name=\"tpg\"><port name=\"out\" direction=\"1\" width=\"640\"/></source>"
                          "<hw name=\"pg\"><port name=\"in\"/></hw></nodes>") +
                  kGraphOfPair + "</graph></graphs>",
              "<settings key=\"7\" id=\"1\"><tpg><out width=\"640\"/></tpg><pg/></settings>");
    ASSERT_EQ(build(), StatusOk);
    EXPECT_TRUE(comesFrom("tpg:out", "width", Settings, "<out "));
}

TEST_F(MergedPositionsTest, OverrideBehindAnAttributeTouchesNoOtherPosition)
{
    // `width` is an attribute of the port, so the target's `key` comes into a new node that paths do not reach; the
    // root's own `key` stays the setting's.
    loadTexts(std::string("<nodes><source name=\"tpg\"><port name=\"out\" direction=\"1\" width=\"4\"/></source>"
                          "<hw name=\"pg\"><port name=\"in\"/></hw></nodes>") +
                  kGraphOfPair + "<apply target=\"tpg:out:width:key\" value=\"5\"/></graph></graphs>",
              "<settings key=\"7\" id=\"1\"><tpg><out/></tpg><pg/></settings>");
    ASSERT_EQ(build(), StatusOk);
    const NUXO::SourcePosition found = NUXO::getSourcePosition(mGraph, NUXO_KEY_KEY);
    const NUXO::SourcePosition wanted = NUXO::getSourcePosition(&setting(), NUXO_KEY_KEY);
    EXPECT_TRUE(wanted.known());
    EXPECT_EQ(found.document, wanted.document);
    EXPECT_EQ(found.offset, wanted.offset);
}

TEST_F(MergedPositionsTest, OverrideWinsOverTheSetting)
{
    loadTexts(std::string("<nodes><source name=\"tpg\"><port name=\"out\" direction=\"1\" format=\"a\"/></source>"
                          "<hw name=\"pg\"><port name=\"in\"/></hw></nodes>") +
                  kGraphOfPair +
                  "<apply target=\"tpg:out:width\" value=\"5\"/><apply target=\"tpg:out:format\" value=\"c\"/>"
                  "<apply target=\"pg:bpp\" value=\"6\"/></graph></graphs>",
              "<settings key=\"7\" id=\"1\"><tpg><out width=\"640\" format=\"b\"/></tpg><pg/></settings>");
    ASSERT_EQ(build(), StatusOk);
    EXPECT_TRUE(comesFrom("tpg:out", "width", Descriptor, "<apply target=\"tpg:out:width\""));
    EXPECT_TRUE(comesFrom("tpg:out", "format", Descriptor, "<apply target=\"tpg:out:format\""));
    EXPECT_TRUE(comesFrom("pg", "bpp", Descriptor, "<apply target=\"pg:bpp\"")); // created
}

TEST_F(MergedPositionsTest, SensorModeWinsOverItsDefaults)
{
    loadTexts(R"(<nodes><source name="sensor" fps="1" bpp="1" width="1"/><hw name="pg"><port name="in"/></hw></nodes>
                 <graphs><graph id="1"><connection source="sensor" sink="pg:in"/></graph></graphs>)",
              R"(<sensor_modes fps="2" bpp="2"><mode name="0" bpp="3"><binner top="3"/></mode></sensor_modes>
                 <settings key="7" id="1"><sensor mode_id="0" bpp="4"/><pg/></settings>)");
    ASSERT_EQ(build(), StatusOk);
    EXPECT_TRUE(comesFrom("sensor", "width", Descriptor, "<source "));
    EXPECT_TRUE(comesFrom("sensor", "fps", Settings, "<sensor_modes "));
    EXPECT_TRUE(comesFrom("sensor", "bpp", Settings, "<mode "));
    EXPECT_TRUE(comesFrom("sensor", "mode_id", Settings, "<sensor mode_id"));
    EXPECT_TRUE(comesFrom("sensor:binner", "top", Settings, "<binner "));
}

TEST_F(MergedPositionsTest, DifferencesFromABaseNodeWinOverTheBase)
{
    loadTexts(
        R"(<nodes><base_node name="base" base_type="source" bpp="1" fps="1">
                 <port name="out" format="a" left="1"/></base_node>
                 <node name="tpg" base_node="base"><attribute target="bpp" value="2"/>
                 <attribute target="out:format" value="b"/>
                 <attribute target="out:width" value="3"/></node></nodes>
                 <graphs><graph id="1"><connection source="tpg" sink="tpg" static="1"/></graph></graphs>)",
        "<settings key=\"7\" id=\"1\"/>");
    ASSERT_EQ(build(), StatusOk);
    EXPECT_TRUE(comesFrom("tpg", "fps", Descriptor, "<base_node "));
    EXPECT_TRUE(comesFrom("tpg:out", "left", Descriptor, "<port "));
    EXPECT_TRUE(comesFrom("tpg", "bpp", Descriptor, "<attribute target=\"bpp\""));
    EXPECT_TRUE(comesFrom("tpg:out", "format", Descriptor, "<attribute target=\"out:format\""));
    EXPECT_TRUE(comesFrom("tpg:out", "width", Descriptor, "<attribute target=\"out:width\"")); // created
}

TEST_F(MergedPositionsTest, VirtualSinkKeepsItsOwnAndTakesThePositionsOfWhatItWasGiven)
{
    loadTexts(R"(<nodes><source name="tpg" stream_id="5"><port name="out" direction="1" format="a"/></source>
                 <sink name="s" width="2"/></nodes>
                 <graphs><graph id="1"><connection source="tpg:out" sink="s"/></graph></graphs>)",
              "<settings key=\"7\" id=\"1\"><tpg><out width=\"640\" height=\"480\"/></tpg><s/></settings>");
    ASSERT_EQ(build(), StatusOk);
    EXPECT_TRUE(comesFrom("s", "width", Descriptor, "<sink "));
    EXPECT_TRUE(comesFrom("s", "height", Settings, "<out "));
    EXPECT_TRUE(comesFrom("s", "format", Descriptor, "<port "));
}

TEST_F(MergedPositionsTest, OptionWinsOverWhatItApplies)
{
    loadTexts(
        std::string("<nodes><source name=\"tpg\"><port name=\"out\" direction=\"1\" format=\"a\">"
                    "<options attribute=\"format\"><o value=\"b\"><apply><pg bpp=\"10\"/></apply></o></options></port>"
                    "</source><hw name=\"pg\" bpp=\"8\"><port name=\"in\"/></hw></nodes>") +
            kGraphOfPair + "</graph></graphs>",
        "<settings key=\"7\" id=\"1\"><tpg><out/></tpg><pg/></settings>");
    ASSERT_EQ(build(), StatusOk);
    EXPECT_TRUE(comesFrom("pg", "bpp", Descriptor, "<hw "));
    ASSERT_EQ(at(graph(), "tpg:out").setValue(NUXO_KEY_FORMAT, std::string("b")), StatusOk);
    EXPECT_EQ(value(graph(), "pg:bpp"), "10");
    EXPECT_TRUE(comesFrom("pg", "bpp", Descriptor, "<pg bpp"));
}

TEST_F(MergedPositionsTest, AttributeThatCouldNotBeOverwrittenKeepsItsPosition)
{
    loadTexts(std::string("<nodes><source name=\"tpg\"><port name=\"out\" direction=\"1\"/></source>"
                          "<hw name=\"pg\"><port name=\"in\"/></hw></nodes>") +
                  kGraphOfPair + "</graph></graphs>",
              "<settings key=\"7\" id=\"1\"><tpg><out width=\"640\"/></tpg><pg/></settings>");
    at(*mDescriptor, "nodes:tpg:out").addValue(NUXO_KEY_WIDTH, std::string("of the other kind"));
    ASSERT_EQ(build(), StatusOk);
    EXPECT_EQ(value(graph(), "tpg:out:width"), "'of the other kind'");
    EXPECT_FALSE(NUXO::getSourcePosition(&at(graph(), "tpg:out"), NUXO_KEY_WIDTH).known());
}

TEST_F(MergedPositionsTest, WhatConstructionItselfMadeHasNoPosition)
{
    loadTexts(std::string("<nodes><source name=\"tpg\"><port name=\"out\" direction=\"1\"/></source>"
                          "<hw name=\"pg\"><port name=\"in\"/><port name=\"aux\"/></hw></nodes>") +
                  kGraphOfPair + "</graph></graphs>",
              "<settings key=\"7\" id=\"1\"><tpg><out/></tpg><pg/></settings>");
    ASSERT_EQ(build(), StatusOk);
    EXPECT_FALSE(NUXO::getSourcePosition(mGraph).known());
    EXPECT_FALSE(NUXO::getSourcePosition(&at(graph(), "pg:aux"), NUXO_KEY_ENABLED).known());
}

} // namespace

} // namespace graphtest
