// SPDX-License-Identifier: Apache-2.0
#include "simulation/SimulationFixture.h"

namespace graphtest {

namespace {

class ForcedValueTest : public GraphTest {
protected:
    int set(IGraphConfig* node, uint32_t key, int value)
    {
        clearLog();
        return ZmtTevSimUtils::setValue(node, key, value);
    }

    /// Nothing may change and the key's name must be told.
    void expectRefused(uint32_t key, int status, const std::string& name)
    {
        const std::string before = text(*mRoot);
        EXPECT_EQ(set(mKernel, key, 5), status);
        EXPECT_TRUE(loggedExactly({sim("16 was not able to update " + name)}));
        EXPECT_EQ(text(*mRoot), before);
    }

    const Tree mRoot = tree("<pg><k description=\"text\" enabled=\"1\"><output width=\"1\"/></k></pg>");
    GraphConfigNode* const mKernel = &at(*mRoot, "pg:k");
};

TEST_F(ForcedValueTest, MissingAttributeIsCreatedOnceAndThenUpdatedInSilence)
{
    EXPECT_EQ(set(mKernel, NUXO_KEY_RCB, 3), StatusOk);
    EXPECT_EQ(value(*mRoot, "pg:k:rcb"), "3");
    EXPECT_TRUE(loggedExactly({sim("16 added new attr")}));

    EXPECT_EQ(set(mKernel, NUXO_KEY_RCB, -4), StatusOk);
    EXPECT_EQ(values(*mRoot, "pg:k:rcb"), "-4");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ForcedValueTest, NothingElseChanges)
{
    EXPECT_EQ(set(mKernel, NUXO_KEY_ENABLED, 0), StatusOk);
    EXPECT_EQ(set(mKernel, NUXO_KEY_BPP, 10), StatusOk);
    // bpp 8199, enabled 8205
    EXPECT_EQ(text(*mRoot), "pg{k{output{width=1} description='text' bpp=10 enabled=0}}");
    EXPECT_TRUE(linked(*mRoot));
}

TEST_F(ForcedValueTest, EveryIntegerIsTaken)
{
    for (const int extreme : {2147483647, -2147483647 - 1, 0, -1}) {
        EXPECT_EQ(set(mKernel, NUXO_KEY_WIDTH, extreme), StatusOk);
        EXPECT_EQ(value(*mRoot, "pg:k:width"), std::to_string(extreme));
    }
}

TEST_F(ForcedValueTest, OptionsListsHaveNoSay)
{
    const Tree root = descriptor(R"(<hw name="pg"><mux name="m" active_input="0"><options attribute="active_input">
        <option value="0"/><option value="1"><apply><pg><other width="9"/></pg></apply></option></options></mux>
        <hw name="other" width="1"/></hw>)");
    GraphConfigNode& mux = at(*root, "pg:m");
    for (const int input : {1, 7}) { // one that the list has, and one that it has not
        EXPECT_EQ(set(&mux, NUXO_KEY_ACTIVE_INPUT, input), StatusOk);
        EXPECT_EQ(value(*root, "pg:m:active_input"), std::to_string(input));
        EXPECT_EQ(value(*root, "pg:other:width"), "1");
        EXPECT_TRUE(loggedExactly({}));
    }
}

TEST_F(ForcedValueTest, KeyOfTextsTakesAnIntegerWhereThereIsNothing)
{
    EXPECT_EQ(set(mKernel, NUXO_KEY_METADATA, 5), StatusOk);
    EXPECT_EQ(value(*mRoot, "pg:k:metadata"), "5");
    EXPECT_TRUE(loggedExactly({sim("16 added new attr")}));
}

TEST_F(ForcedValueTest, FirstOfSeveralAttributesIsUpdated)
{
    mKernel->insertDescendant(new GraphConfigIntAttribute(2), NUXO_KEY_ENABLED);
    EXPECT_EQ(set(mKernel, NUXO_KEY_ENABLED, 7), StatusOk);
    EXPECT_EQ(values(*mRoot, "pg:k:enabled"), "7 2");
}

TEST_F(ForcedValueTest, ForcedValueStandsInNoDocument)
{
    EXPECT_TRUE(NUXO::getSourcePosition(mKernel, NUXO_KEY_ENABLED).known());
    EXPECT_EQ(set(mKernel, NUXO_KEY_ENABLED, 0), StatusOk);
    EXPECT_FALSE(NUXO::getSourcePosition(mKernel, NUXO_KEY_ENABLED).known());
    EXPECT_EQ(set(mKernel, NUXO_KEY_RCB, 1), StatusOk);
    EXPECT_FALSE(NUXO::getSourcePosition(mKernel, NUXO_KEY_RCB).known());
    expectRefused(NUXO_KEY_DESCRIPTION, StatusNotFound, "description");
    EXPECT_TRUE(NUXO::getSourcePosition(mKernel, NUXO_KEY_DESCRIPTION).known());
}

TEST_F(ForcedValueTest, TextsAndNodesRefuse)
{
    expectRefused(NUXO_KEY_DESCRIPTION, StatusNotFound, "description");
    expectRefused(NUXO_KEY_OUTPUT, StatusNotFound, "output");
    mKernel->addValue(NUXO_KEY_WIDTH, std::string("1920")); // a text under the key of an integer
    expectRefused(NUXO_KEY_WIDTH, StatusNotFound, "width");
}

TEST_F(ForcedValueTest, NoNodeAndForeignOnesRefuse)
{
    EXPECT_EQ(set(nullptr, NUXO_KEY_WIDTH, 5), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({sim("16 was not able to update width")}));
    ForeignNode foreign;
    EXPECT_EQ(set(&foreign, NUXO_KEY_ENABLED, 5), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({sim("16 was not able to update enabled")}));
}

TEST_F(ForcedValueTest, UnknownKeyIsNamedAfterTheFirstOfTheVocabulary)
{
    EXPECT_EQ(set(nullptr, 5000, 5), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({sim("16 was not able to update active_input")}));
    EXPECT_EQ(set(nullptr, NUXO_KEY_NA, 5), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({sim("16 was not able to update na")}));
}

} // namespace

} // namespace graphtest
