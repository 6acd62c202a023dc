// SPDX-License-Identifier: Apache-2.0
// Graphs with thousands of elements of one kind. If work grew with the square of their number, these tests would be the
// slowest of all.
#include "analysis/LargeGraphs.h"

#include <nuxo/analysis/InnerGraphNode.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace graphtest {

namespace {

using NUXO::InnerGraphNode;

class LargeGraphsTest : public AnalysisTest {
protected:
    static constexpr int kMany = 2000; // at most three names each: keys from 8193 on are those of integers

    LargeGraphsTest() { mLog.setMask(0); }

    /// The records of a subgraph in groups that are alike: "number x state width".
    std::string summary(int id)
    {
        qv_isp_zmt_program_group records = {};
        EXPECT_EQ(mUtil->getTevData(id, records), StatusOk);
        std::map<std::string, size_t> alike;
        for (uint32_t i = 0; i < records.kernel_count; ++i) {
            const qv_isp_zmt_run_kernels& record = records.run_kernels[i];
            ++alike[std::to_string(record.enable) + " " + std::to_string(record.resolution_history->output_width)];
        }
        std::string all;
        for (const auto& [text, number] : alike)
            all += (all.empty() ? "" : ", ") + std::to_string(number) + " x " + text;
        return all;
    }

    /// Number of nodes of the inner graph of a subgraph, and of those that are off.
    std::string innerNodes(int id) const
    {
        std::vector<InnerGraphNode> nodes;
        EXPECT_EQ(mUtil->getInnerGraph(id, nodes), StatusOk);
        const auto isOff = [](const InnerGraphNode& node) { return node.disabled; };
        return std::to_string(nodes.size()) + ", off " +
               std::to_string(std::count_if(nodes.begin(), nodes.end(), isOff));
    }

    /// The same text with a number in place of "#".
    static std::string with(int number, std::string text)
    {
        return text.replace(text.find('#'), 1, std::to_string(number));
    }
};

TEST_F(LargeGraphsTest, LooseKernelsBeforeAChainOfSplits)
{
    load(looseKernels(kMany));
    EXPECT_EQ(init(GdfVersionKVA7), StatusOk);
    EXPECT_EQ(summary(1).substr(0, 8), with(kMany, "# x 2"));
    EXPECT_EQ(innerNodes(1), with(2 * kMany + 2, "#, off ") + std::to_string(kMany)); // kernels, splits, in and out
}

TEST_F(LargeGraphsTest, KernelWithOutputsThatNoLinkNames)
{
    load(wideKernel(kMany));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(summary(1), with(kMany + 1, "# x 1 640"));
    qv_isp_zmt_program_group records = {};
    ASSERT_EQ(mUtil->getTevData(1, records), StatusOk);
    EXPECT_EQ(records.run_kernels[kMany].output_count, uint32_t{kMany}); // "wide" comes last
}

TEST_F(LargeGraphsTest, KernelsThatFeedOne)
{
    load(fanIn(kMany));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(summary(1), with(kMany + 1, "# x 1 640"));
}

TEST_F(LargeGraphsTest, InputPortsFromManyNodes)
{
    load(inputPorts(kMany));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(summary(1), "1 x 1 640");
    EXPECT_EQ(innerNodes(1), with(kMany + 2, "#, off 0")); // and the kernel and its output
    EXPECT_EQ(innerNodes(-1), with(kMany, "#, off 0"));
}

TEST_F(LargeGraphsTest, GroupsInTheSubgraphOfTheSource)
{
    load(groupsBehindTheSource(kMany));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(availableSubgraphs(), std::set<int>{1});
    EXPECT_EQ(innerNodes(1), with(kMany, "#, off 0")); // the ports that lead to sinks
}

TEST_F(LargeGraphsTest, SplitToPortsThatAreOff)
{
    load(splitToDisabledPorts(kMany));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(innerNodes(1), with(kMany + 2, "#, off ") + std::to_string(kMany + 2)); // the split and the input, too
}

// Nothing but sources may start a subgraph.
TEST_F(LargeGraphsTest, SubgraphsThatAreSinksOnly)
{
    load(sinksWithoutGroups(kMany));
    EXPECT_EQ(init(), StatusMissingObject);
    EXPECT_EQ(availableSubgraphs().size(), kMany + 1U);
    EXPECT_EQ(innerNodes(kMany - 1), "1, off 0"); // the block's output
}

TEST_F(LargeGraphsTest, SubgraphsThatFeedOne)
{
    load(groupsIntoOne(
        kMany, [](int i) { return 10 + i; }, true));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(availableSubgraphs().size(), kMany + 2U);
    EXPECT_EQ(summary(9), with(kMany, "# x 1 640"));
    EXPECT_EQ(summary(10), "1 x 1 640");
    EXPECT_EQ(summary(9 + kMany), "1 x 1 640");
}

TEST_F(LargeGraphsTest, GroupsOfOneSubgraphThatFeedAnother)
{
    load(groupsIntoOne(
        kMany, [](int) { return 10; }, false));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(availableSubgraphs(), (std::set<int>{-1, 9, 10}));
    EXPECT_EQ(summary(9), "1 x 1 640");
    EXPECT_EQ(summary(10), with(kMany, "# x 1 640"));
}

} // namespace

} // namespace graphtest
