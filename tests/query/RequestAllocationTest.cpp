// SPDX-License-Identifier: Apache-2.0
// A whole request, and each step of it, with every allocation failing in turn.
#include "query/GraphFixture.h"

#include <support/AllocationFailures.h>

#include <cstdio>
#include <functional>
#include <set>

namespace graphtest {

namespace {

class RequestAllocationTest : public GraphTest {
protected:
    RequestAllocationTest()
        : mDescriptorText(requestDescriptor()), mSettingsText(requestSettings()),
          mGoodDescriptor(text(*parse(mDescriptorText))), mGoodSettings(text(*parse(mSettingsText))),
          mGoodGraph(requestGraph()), mCriteria{{ItemUID("pg_video:out:width"), "1280"}}
    {
    }

    ~RequestAllocationTest() override { release(); }

    void parseTexts()
    {
        mParser.parseNUXOXmlData(&mDescriptorText[0], mDescriptorText.size(), &mDescriptor);
        mParser.parseNUXOXmlData(&mSettingsText[0], mSettingsText.size(), &mSettings);
    }

    void queryAndBuild()
    {
        mManager.setGraphDescriptor(mDescriptor);
        mManager.setGraphSettings(mSettings);
        std::vector<IGraphConfig*>().swap(mFound); // so that the query has to allocate
        mQueryStatus = mManager.queryGraphs(mCriteria, mFound, true);
        if (mQueryStatus == StatusOk && mFound.size() == 1) mBuildStatus = mManager.createGraph(mFound[0], &mGraph);
    }

    void request()
    {
        parseTexts();
        if (mDescriptor != nullptr && mSettings != nullptr) queryAndBuild();
    }

    void release()
    {
        mManager.destroyGraph(mGraph);
        delete mDescriptor;
        delete mSettings;
        mGraph = mDescriptor = mSettings = nullptr;
        mQueryStatus = mBuildStatus = kNotRun;
        std::vector<IGraphConfig*>().swap(mFound);
    }

    /// What must hold after a request in which something may have failed.
    void checkOutcome()
    {
        // The documents are well formed, so there is no reason to hand out a part of one.
        if (mDescriptor != nullptr) {
            EXPECT_EQ(text(asNode(mDescriptor)), mGoodDescriptor);
        }
        if (mSettings != nullptr) {
            EXPECT_EQ(text(asNode(mSettings)), mGoodSettings);
        }
        if (mQueryStatus == StatusOk) {
            EXPECT_EQ(mFound.size(), 1U);
            EXPECT_EQ(value(asNode(mFound.at(0)), "key"), "7");
        } else {
            EXPECT_TRUE(mQueryStatus == StatusNoMemory || mQueryStatus == kNotRun) << mQueryStatus;
        }
        if (mBuildStatus == StatusOk) {
            EXPECT_EQ(text(asNode(mGraph)), mGoodGraph);
        } else {
            const std::set<int> stated{StatusNoMemory, StatusMissingData, StatusBadState, kNotRun};
            EXPECT_EQ(stated.count(mBuildStatus), 1U) << mBuildStatus;
        }
        EXPECT_TRUE(mGraph != nullptr || mBuildStatus == kNotRun || mBuildStatus == StatusNoMemory);
        EXPECT_TRUE(mGraph == nullptr || linked(asNode(mGraph)));
    }

    /// The same parser, manager and trees serve the next request.
    void checkUsable()
    {
        mManager.destroyGraph(mGraph);
        mGraph = nullptr;
        if (mDescriptor != nullptr && mSettings != nullptr) {
            queryAndBuild();
            EXPECT_EQ(mBuildStatus, StatusOk);
            EXPECT_EQ(text(asNode(mGraph)), mGoodGraph);
        }
        release();
        request();
        EXPECT_EQ(mBuildStatus, StatusOk);
        EXPECT_EQ(text(asNode(mGraph)), mGoodGraph);
        release();
    }

    /// Runs @p action with every C++ allocation failing, then @p check, which must release what the action made.
    /// Nothing may be thrown or lost.
    size_t sweep(bool forGood, const std::function<void()>& action, const std::function<void()>& check)
    {
        AllocationFailures failures;
        size_t live = 0;
        bool thrown = false;
        return failures.sweep(
            forGood,
            [&] {
                live = AllocationFailures::live();
                if (escapes([&] { action(); })) thrown = true;
            },
            [&] {
                EXPECT_FALSE(thrown);
                thrown = false;
                check();
                EXPECT_EQ(AllocationFailures::live(), live);
                for (std::string& line : lines()) mLines.insert(std::move(line));
                clearLog();
            });
    }

    static constexpr int kNotRun = 1;

    std::string mDescriptorText;
    std::string mSettingsText;
    const std::string mGoodDescriptor;
    const std::string mGoodSettings;
    const std::string mGoodGraph;
    const std::map<ItemUID, std::string> mCriteria;

    NUXO::NUXOParser mParser;
    GraphQueryManager mManager;
    IGraphConfig* mDescriptor = nullptr;
    IGraphConfig* mSettings = nullptr;
    IGraphConfig* mGraph = nullptr;
    std::vector<IGraphConfig*> mFound;
    int mQueryStatus = kNotRun;
    int mBuildStatus = kNotRun;
    std::set<std::string> mLines;
};

TEST_F(RequestAllocationTest, WithoutFailuresTheRequestSucceedsAndLeavesNothing)
{
    const size_t live = AllocationFailures::live();
    request();
    EXPECT_EQ(mBuildStatus, StatusOk);
    checkOutcome();
    clearLog();
    release();
    EXPECT_EQ(AllocationFailures::live(), live);
}

TEST_F(RequestAllocationTest, RequestSurvivesEveryFailingAllocation)
{
    for (const bool forGood : {false, true}) {
        const size_t runs = sweep(
            forGood, [this] { request(); },
            [this] {
                checkOutcome();
                release();
            });
        EXPECT_GT(runs, 30U); // the descriptor alone has more elements
    }
}

TEST_F(RequestAllocationTest, EverythingIsUsableAfterEveryFailingAllocation)
{
    for (const bool forGood : {false, true}) {
        sweep(
            forGood, [this] { request(); }, [this] { checkUsable(); });
    }
}

TEST_F(RequestAllocationTest, NamesThatAreNewToTheVocabularySurviveToo)
{
    std::map<std::string, uint32_t> known = NUXO::nuxo_key_map;
    std::map<std::string, uint32_t> builtIn = vocabularyBefore();
    ASSERT_LT(builtIn.size(), known.size());
    for (const bool forGood : {false, true}) {
        NUXO::copyNuxoKeys(builtIn);
        sweep(
            forGood, [this] { request(); },
            [&] {
                checkOutcome();
                release();
                NUXO::copyNuxoKeys(builtIn);
            });
    }
    NUXO::copyNuxoKeys(known);
}

TEST_F(RequestAllocationTest, BuildingSurvivesAndSaysWhatFailed)
{
    parseTexts();
    bool outOfMemory = false;
    for (const bool forGood : {false, true}) {
        sweep(
            forGood, [this] { queryAndBuild(); },
            [&] {
                checkOutcome();
                outOfMemory = outOfMemory || mBuildStatus == StatusNoMemory;
                mManager.destroyGraph(mGraph);
                mGraph = nullptr;
                mQueryStatus = mBuildStatus = kNotRun;
                std::vector<IGraphConfig*>().swap(mFound);
            });
    }
    EXPECT_TRUE(outOfMemory);
    for (const char* message :
         {"Error creating GraphConfigNode: No memory", "Failed to add GDF version info [KVA6]to graph",
          "Failed to copy base node pg_base to create node pg_video", "Failed create a copy during option handling",
          "Failed to change base node pg_base into node pg_video", "Error creating GraphConfigItem: No memory",
          "Failed to add settings to the result graph", "couldn't add settings from sensor modes node",
          "Settings file has incorrect sensor mode data", "Error adding fps: No memory"}) {
        EXPECT_EQ(mLines.count(std::string("16 ") + message), 1U) << message;
    }
}

TEST_F(RequestAllocationTest, NarrowingAQuerySurvives)
{
    parseTexts();
    queryAndBuild();
    const std::vector<IGraphConfig*> candidates = mFound;
    ASSERT_EQ(candidates.size(), 1U);
    std::vector<IGraphConfig*> narrowed;
    int status = kNotRun;
    for (const bool forGood : {false, true}) {
        const size_t runs = sweep(
            forGood, [&] { status = mManager.queryGraphs(mCriteria, candidates, narrowed, true); },
            [&] {
                EXPECT_TRUE(status == StatusOk ? narrowed == candidates : status == StatusNoMemory) << status;
                std::vector<IGraphConfig*>().swap(narrowed);
            });
        EXPECT_GT(runs, 0U);
    }
}

TEST_F(RequestAllocationTest, FilesSurviveEveryFailingCountedAllocation)
{
    const std::string names[] = {scratchFile("descriptor.xml"), scratchFile("settings.xml")};
    const std::string* const texts[] = {&mDescriptorText, &mSettingsText};
    for (size_t i = 0; i < 2; ++i) {
        std::FILE* const file = std::fopen(names[i].c_str(), "w");
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(std::fwrite(texts[i]->data(), 1, texts[i]->size(), file), texts[i]->size());
        std::fclose(file);
    }
    uint32_t failedRuns = 0;
    for (uint32_t n = 1; mBuildStatus != StatusOk; ++n) {
        ASSERT_LT(n, 100U);
        release();
        {
            AllocationFailures failures;
            failures.failCountedFrom(n);
            mParser.parseNUXOXmlFile(names[0].c_str(), &mDescriptor);
            mParser.parseNUXOXmlFile(names[1].c_str(), &mSettings);
            if (mDescriptor != nullptr && mSettings != nullptr) queryAndBuild();
        }
        checkOutcome();
        if (mBuildStatus != StatusOk) ++failedRuns;
    }
    EXPECT_GE(failedRuns, 2U); // each file has a chunk buffer of its own
    for (const std::string& name : names) std::remove(name.c_str());
}

TEST_F(RequestAllocationTest, TenThousandRequestsLeaveTheHeapAsAfterWarmUp)
{
    mLog.setMask(0);
    for (int i = 0; i < 10; ++i) {
        request();
        release();
    }
    const size_t live = AllocationFailures::live();
    for (int i = 0; i < 10000; ++i) {
        request();
        ASSERT_EQ(mBuildStatus, StatusOk);
        release();
    }
    EXPECT_EQ(AllocationFailures::live(), live);
}

} // namespace

} // namespace graphtest
