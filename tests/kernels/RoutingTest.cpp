// SPDX-License-Identifier: Apache-2.0
#include "kernels/KernelsFixture.h"

#include <map>
#include <tuple>

namespace graphtest {

namespace {

using Routing = std::map<int, std::vector<std::tuple<int, std::string>>>;

class RoutingTest : public KernelsTest {
protected:
    Routing routing()
    {
        Routing found = {{77, {{1, "from before"}}}};
        EXPECT_EQ(mUtils->getRoutingInfo(found), StatusOk);
        return found;
    }

    /// A stage with all that routing is about.
    static std::string routed(const std::string& kind, const std::string& name, int stream, int id,
                              const std::string& rbm)
    {
        return element(kind, name, "stream_id='" + std::to_string(stream) + "' pg_id='" + std::to_string(id) + "'",
                       "<cipf rbm='" + rbm + "'/>");
    }

    static std::string mixed()
    {
        return routed("program_group", "a", 1, 3, "0x0f") + routed("compute_block", "b", 1, 5, "0x1f") +
               routed("program_group", "c", 2, 9, "0x2f") + routed("program_group", "d", 1, 4, "0x3f") +
               routed("compute_block", "e", 0, 6, "0x4f") + routed("hw", "f", 1, 8, "0x5f");
    }
};

TEST_F(RoutingTest, GroupsOfAStreamComeInTheOrderOfTheGraph)
{
    for (const char* const version : {"KVA4", "KVA5", "KVA6"}) {
        initWith(mixed(), version);
        clearLog();
        EXPECT_EQ(routing(), Routing({{1, {{3, "0x0f"}, {4, "0x3f"}}}, {2, {{9, "0x2f"}}}})) << version;
        EXPECT_TRUE(loggedExactly({}));
    }
}

TEST_F(RoutingTest, GenerationSevenRoutesComputeBlocks)
{
    initWith(mixed(), "KVA7");
    clearLog();
    EXPECT_EQ(routing(), Routing({{0, {{6, "0x4f"}}}, {1, {{5, "0x1f"}}}}));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(RoutingTest, MissingValuesHaveDefaultsWithWarnings)
{
    initWith(group("bare", "") + group("other", "stream_id='0' pg_id='2'", "<cipf/>"));
    clearLog();
    EXPECT_EQ(routing(), Routing({{0, {{0, "0"}, {2, "0"}}}}));
    EXPECT_TRUE(loggedExactly({"32 PG bare does not have stream id defined default to 0",
                               "32 PG bare does not have PG/CB id defined default to 0",
                               "32 PG bare does not have RBM defined default 0",
                               "32 PG other does not have RBM defined default 0"}));
}

TEST_F(RoutingTest, DefaultsDoNotComeFromTheGroupBefore)
{
    initWith(routed("program_group", "a", 5, 6, "0x0f") + group("b", ""));
    EXPECT_EQ(routing(), Routing({{0, {{0, "0"}}}, {5, {{6, "0x0f"}}}}));
}

TEST_F(RoutingTest, ValuesOfAnotherKindCountAsMissing)
{
    initWith(routed("program_group", "a", 5, 6, "0x0f"));
    replace(*node("a"), NUXO_KEY_STREAM_ID, std::string("5"));
    replace(*node("a"), NUXO_KEY_PG_ID, std::string("6"));
    replace(*node("a:cipf"), NUXO_KEY_RBM, 15);
    clearLog();
    EXPECT_EQ(routing(), Routing({{0, {{0, "0"}}}}));
    EXPECT_EQ(lines().size(), 3U);
}

TEST_F(RoutingTest, TextsAndNumbersAreTakenAsTheyAre)
{
    initWith(routed("program_group", "a", -3, -4, "") + routed("program_group", "b", -3, -4, " any text "));
    clearLog();
    EXPECT_EQ(routing(), Routing({{-3, {{-4, ""}, {-4, " any text "}}}}));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(RoutingTest, GraphWithoutStagesHasNoRouting)
{
    initWith(bufferSource(""));
    clearLog();
    EXPECT_EQ(routing(), Routing());
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(RoutingTest, UtilitiesWithoutAGraphHaveNoRouting)
{
    Routing found = {{77, {{1, "from before"}}}};
    mUtils->getRoutingInfo(found);
    EXPECT_TRUE(found.empty());
}

} // namespace

} // namespace graphtest
