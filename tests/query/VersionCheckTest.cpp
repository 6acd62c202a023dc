// SPDX-License-Identifier: Apache-2.0
#include "query/GraphFixture.h"

namespace graphtest {

namespace {

class VersionCheckTest : public BuildTest {
protected:
    /// The check over roots that hold these versions.
    int check(const std::string& settingsVersion, const std::string& descriptorVersion)
    {
        GraphConfigNode settingsRoot;
        GraphConfigNode descriptorRoot;
        settingsRoot.addValue(NUXO_KEY_VERSION, settingsVersion);
        descriptorRoot.addValue(NUXO_KEY_VERSION, descriptorVersion);
        mManager.setGraphSettings(&settingsRoot);
        mManager.setGraphDescriptor(&descriptorRoot);
        clearLog();
        return mManager.validateSettingsAgainstDescriptor();
    }

    static std::string mismatch(const std::string& settingsVersion, const std::string& descriptorVersion)
    {
        return "WARNING: graph settings(" + settingsVersion + ") version is not matching graph descriptor(" +
               descriptorVersion + "). Make sure the settings are compatible with the graph descriptor.";
    }
};

TEST_F(VersionCheckTest, TreesThatAreNotSetGiveBadStateWithoutALine)
{
    const GraphConfigNode root;
    EXPECT_EQ(mManager.validateSettingsAgainstDescriptor(), StatusBadState);
    mManager.setGraphSettings(&root);
    EXPECT_EQ(mManager.validateSettingsAgainstDescriptor(), StatusBadState);
    mManager.setGraphSettings(nullptr);
    mManager.setGraphDescriptor(&root);
    EXPECT_EQ(mManager.validateSettingsAgainstDescriptor(), StatusBadState);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(VersionCheckTest, DescriptorMatchesItsMajorNumberWithAnyMinorOne)
{
    for (const char* version : {"4", "4.0", "4.12", "4.1.2", "4."}) {
        EXPECT_EQ(check(version, "4"), StatusOk) << version;
        EXPECT_TRUE(loggedExactly({})) << version;
    }
}

TEST_F(VersionCheckTest, DescriptorWithAMinorNumberNeverMatches)
{
    EXPECT_EQ(check("3.5", "3.5"), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 " + mismatch("3.5", "3.5")}));
    EXPECT_EQ(check("4", "4.0"), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 " + mismatch("4", "4.0")}));
}

TEST_F(VersionCheckTest, VersionsAreComparedByteForByteAndWithLength)
{
    EXPECT_EQ(check("kva6.1", "KVA6"), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 " + mismatch("kva6.1", "KVA6")}));
    EXPECT_EQ(check("KVA6.1", "KVA"), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 " + mismatch("KVA6.1", "KVA")}));
    EXPECT_EQ(check("KVA.6", "KVA6"), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 " + mismatch("KVA.6", "KVA6")}));
}

TEST_F(VersionCheckTest, SettingsVersionThatStartsWithADotHasAnEmptyMajorNumber)
{
    EXPECT_EQ(check(".6", ""), StatusOk);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(VersionCheckTest, MissingVersionsAreReportedOneByOneAndCountAsEmpty)
{
    GraphConfigNode with;
    const GraphConfigNode without;
    with.addValue(NUXO_KEY_VERSION, std::string("5.1"));

    mManager.setGraphSettings(&with);
    mManager.setGraphDescriptor(&without);
    EXPECT_EQ(mManager.validateSettingsAgainstDescriptor(), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 Couldn't get version from graph descriptor", "32 " + mismatch("5.1", "")}));

    clearLog();
    mManager.setGraphSettings(&without);
    mManager.setGraphDescriptor(&with);
    EXPECT_EQ(mManager.validateSettingsAgainstDescriptor(), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 Couldn't get version from graph settings", "32 " + mismatch("", "5.1")}));

    clearLog();
    mManager.setGraphDescriptor(&without);
    EXPECT_EQ(mManager.validateSettingsAgainstDescriptor(), StatusOk);
    EXPECT_TRUE(loggedExactly(
        {"32 Couldn't get version from graph descriptor", "32 Couldn't get version from graph settings"}));
}

TEST_F(VersionCheckTest, VersionOfAnotherKindCountsAsMissing)
{
    GraphConfigNode number;
    number.addValue(NUXO_KEY_VERSION, 5);
    mManager.setGraphSettings(&number);
    mManager.setGraphDescriptor(&number);
    EXPECT_EQ(mManager.validateSettingsAgainstDescriptor(), StatusOk);
    EXPECT_TRUE(loggedExactly(
        {"32 Couldn't get version from graph descriptor", "32 Couldn't get version from graph settings"}));
}

TEST_F(VersionCheckTest, EveryQueryRunsTheCheckAndIsNotStoppedByAMismatch)
{
    const Tree settingsRoot = settings("<settings key=\"1\"/>", "7.1");
    const Tree descriptorRoot = descriptor("<nodes/>", "8");
    mManager.setGraphSettings(settingsRoot.get());
    mManager.setGraphDescriptor(descriptorRoot.get());
    std::vector<IGraphConfig*> found;

    clearLog();
    EXPECT_EQ(mManager.queryGraphs({{ItemUID{NUXO_KEY_KEY}, "1"}}, found, true), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 " + mismatch("7.1", "8")}));

    clearLog();
    std::vector<IGraphConfig*> narrowed;
    EXPECT_EQ(mManager.queryGraphs({{ItemUID{NUXO_KEY_KEY}, "1"}}, found, narrowed, true), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 " + mismatch("7.1", "8")}));
    EXPECT_EQ(narrowed, found);
}

TEST_F(VersionCheckTest, SettersMayPointTheManagerAtOtherTreesAgain)
{
    EXPECT_EQ(check("4.1", "4"), StatusOk);
    EXPECT_TRUE(loggedExactly({}));
    mManager.setGraphSettings(nullptr);
    EXPECT_EQ(mManager.validateSettingsAgainstDescriptor(), StatusBadState);
}

} // namespace

} // namespace graphtest
