// SPDX-License-Identifier: Apache-2.0
// From which parent a node takes its history.
#include "analysis/HistoryFixture.h"

namespace historytest {

namespace {

class HistoryParentsTest : public InnerNodeTest {
protected:
    /// A visited parent of @p child that hands it @p history.
    Access::ImagingNode& parentOf(Access::ImagingNode& child, const std::string& name, const Info& history,
                                  const std::string& output = "0")
    {
        auto& parent = node(name);
        join(parent, child, output);
        parent.visited = true;
        parent.resHistories[output] = history;
        return parent;
    }

    /// The history found for a node, or the status.
    std::string ask(Access::ImagingNode& node)
    {
        clearLog();
        Info history = kUntouched;
        const int status = access().getParentHistory(node, history);
        return status == StatusOk ? text(history) : std::to_string(status);
    }

    static Texts foundLines(const std::string& name, const Info& history)
    {
        return {"2 Getting parent history for node " + name,
                "2 Parent history for node " + name + " found: " + text(history)};
    }

    static inline const Info kUntouched = info(1, 2, 3, 4);
};

TEST_F(HistoryParentsTest, NodeWithoutParentsTakesTheFirstOfItsOwn)
{
    auto& n = node("pg:in", Access::INPUT_PORT);
    n.resHistories = {{"b", frame(20, 10)}, {"a", frame(1920, 1080)}};
    EXPECT_EQ(ask(n), text(frame(1920, 1080)));
    EXPECT_TRUE(loggedExactly(
        {"2 Getting parent history for node pg:in", "2 node pg:in has no parent, looking inside",
         "2 Parent history for node pg:in found: (iw: 1920 ih: 1080 (l: 0, t: 0, r: 0, b: 0),ow: 1920, oh: 1080 (l: 0, "
         "t: 0, r: 0, b: 0)"}));
}

TEST_F(HistoryParentsTest, NodeWithoutParentsAndSeedIsAnError)
{
    auto& n = node("k");
    EXPECT_EQ(ask(n), "-16");
    EXPECT_TRUE(loggedExactly({"2 Getting parent history for node k", "2 node k has no parent, looking inside",
                               "16 Node k with no parents has not been seeded with initial reshistory- BUG"}));
}

TEST_F(HistoryParentsTest, PortFedByItsOwnGroupTakesItsSeed)
{
    auto& n = node("pg:ref_in", Access::INPUT_PORT);
    n.flags = Access::SameNodeEnd;
    n.resHistories["pg:ref_in"] = frame(640, 480);
    auto& parent = parentOf(n, "pg:ref_out", frame(320, 240));
    for (const bool visited : {true, false}) { // whatever its parent does
        parent.visited = visited;
        EXPECT_EQ(ask(n), text(frame(640, 480)));
        EXPECT_TRUE(logged(kDebug, "Parent history for node pg:ref_in found: " + text(frame(640, 480))));
    }
}

TEST_F(HistoryParentsTest, OnlyInputPortsTakeTheirSeedBesideParents)
{
    for (const auto type : {Access::OUTPUT_PORT, Access::KERNEL, Access::MUX}) {
        auto& n = node("n", type);
        n.flags = Access::SameNodeEnd;
        n.resHistories["n"] = frame(640, 480);
        parentOf(n, "parent", frame(320, 240));
        EXPECT_EQ(ask(n), text(frame(320, 240))) << type;
    }
    auto& port = node("pg:in", Access::INPUT_PORT); // not fed by its own group
    port.resHistories["pg:in"] = frame(640, 480);
    parentOf(port, "parent", frame(320, 240));
    EXPECT_EQ(ask(port), text(frame(320, 240)));
}

TEST_F(HistoryParentsTest, UnseededPortFedByItsOwnGroupTakesWhatArrived)
{
    auto& n = node("pg:ref_in", Access::INPUT_PORT);
    n.flags = Access::SameNodeEnd;
    auto& parent = parentOf(n, "pg:ref_out", frame(320, 240), "pg:ref_in");
    EXPECT_EQ(ask(n), text(frame(320, 240)));
    parent.visited = false;
    EXPECT_EQ(ask(n).rfind("-", 0), 0U); // neither seed nor history
}

TEST_F(HistoryParentsTest, OneParentIsEnough)
{
    auto& n = node("k");
    const Info history = info(4208, 3120, 1920, 1080, {8, 4, 8, 4});
    parentOf(n, "parent", history);
    EXPECT_EQ(ask(n), text(history));
    EXPECT_TRUE(loggedExactly(foundLines("k", history)));
}

TEST_F(HistoryParentsTest, UnvisitedParentIsWaitedFor)
{
    auto& n = node("join", Access::MUX);
    parentOf(n, "first", frame(1920, 1080));
    auto& late = parentOf(n, "late", frame(1280, 720));
    late.visited = false;
    EXPECT_EQ(ask(n), "-1024");
    EXPECT_TRUE(
        loggedExactly({"2 Getting parent history for node join",
                       "2 Node join not ready to be visited, not all active parents have been visited yet ex: late"}));
    EXPECT_TRUE(n.resHistories.empty());

    late.flags = Access::DisabledNode; // nobody waits for what never comes
    EXPECT_EQ(ask(n), text(frame(1920, 1080)));
}

TEST_F(HistoryParentsTest, SwitchedOffKernelIsWaitedForUnlessBarred)
{
    auto& n = node("join", Access::MUX);
    parentOf(n, "first", frame(1920, 1080));
    auto& loose = parentOf(n, "loose", frame(1280, 720));
    loose.visited = false;
    loose.runKernel.enable = 2;
    EXPECT_EQ(ask(n), "-1024");
}

TEST_F(HistoryParentsTest, NobodyToTakeFromIsAnError)
{
    for (const auto type : {Access::KERNEL, Access::INPUT_PORT, Access::OUTPUT_PORT}) {
        auto& n = node("k", type);
        auto& parent = parentOf(n, "parent", frame(1920, 1080));
        parent.flags = Access::DisabledNode;
        parent.visited = false;
        EXPECT_EQ(ask(n), "-16");
        EXPECT_TRUE(loggedExactly({"2 Getting parent history for node k",
                                   "16 No parent of node k has been visited, cannot get res-history"}));
        parent.visited = true; // reached, but nothing passes it
        EXPECT_EQ(ask(n), "-16");
        EXPECT_TRUE(logged(kError, "No parent of node k has been visited, cannot get res-history"));
    }
}

TEST_F(HistoryParentsTest, SeededPortBehindDisabledNodesTakesItsSeed)
{
    auto& n = node("pg:in", Access::INPUT_PORT);
    n.resHistories["pg:in"] = frame(640, 480);
    parentOf(n, "parent", frame(1920, 1080)).flags = Access::DisabledNode;
    EXPECT_EQ(ask(n), text(frame(640, 480)));
}

TEST_F(HistoryParentsTest, DisabledParentGivesNothing)
{
    auto& n = node("k");
    parentOf(n, "small", frame(640, 480));
    parentOf(n, "large", frame(1920, 1080)).flags = Access::DisabledNode;
    EXPECT_EQ(ask(n), text(frame(640, 480)));
}

TEST_F(HistoryParentsTest, HistoryIsTheOneOfTheOutputThatFeedsTheNode)
{
    auto& n = node("k");
    auto& parent = parentOf(n, "parent", frame(640, 480), "1");
    parent.resHistories["0"] = frame(1920, 1080);
    EXPECT_EQ(ask(n), text(frame(640, 480)));

    // the name that the node gives to its own input does not matter
    auto& m = node("m");
    auto& other = node("other");
    join(other, m, "7", "0");
    other.visited = true;
    other.resHistories = {{"0", frame(640, 480)}, {"7", frame(320, 240)}};
    EXPECT_EQ(ask(m), text(frame(320, 240)));
}

TEST_F(HistoryParentsTest, OutputMayHaveNoName)
{
    auto& n = node("k");
    parentOf(n, "pg:in", frame(640, 480), "");
    EXPECT_EQ(ask(n), text(frame(640, 480)));
}

TEST_F(HistoryParentsTest, OutputWithoutHistoryIsAnError)
{
    auto& n = node("k");
    auto& parent = parentOf(n, "parent", frame(640, 480), "3");
    parent.resHistories = {{"0", frame(640, 480)}};
    EXPECT_EQ(ask(n), "-16");
    EXPECT_TRUE(loggedExactly(
        {"2 Getting parent history for node k", "16 Could not find the res history for  parent output port 3 "}));
}

TEST_F(HistoryParentsTest, LaterParentReplacesTheFirstWhenLargerInBoth)
{
    const struct {
        Info first;
        Info second;
        bool secondWins;
    } cases[] = {
        {frame(1920, 1080), frame(1280, 720), false},
        {frame(1280, 720), frame(1920, 1080), true},
        {frame(1920, 720), frame(1280, 1080), false},
        {frame(1280, 1080), frame(1920, 720), false},
        {frame(1920, 1080), frame(1920, 1080), false},
        {frame(1920, 1080), frame(2000, 1080), false},
        {frame(1920, 1080), frame(1920, 1100), false},
        {frame(1920, 1080), frame(1921, 1081), true},
        // it is the size that arrives that counts, not that of the source
        {info(4000, 3000, 640, 480), info(1920, 1080, 1280, 720), true},
        {info(1920, 1080, 1280, 720), info(4000, 3000, 640, 480), false},
    };
    for (const auto& c : cases) {
        // crops tell records of equal size apart
        const Info first =
            info(c.first.input_width, c.first.input_height, c.first.output_width, c.first.output_height, {1, 1, 1, 1});
        const Info second = info(c.second.input_width, c.second.input_height, c.second.output_width,
                                 c.second.output_height, {2, 2, 2, 2});
        auto& n = node("k");
        parentOf(n, "p", first);
        parentOf(n, "q", second);
        EXPECT_EQ(ask(n), text(c.secondWins ? second : first));
    }
}

TEST_F(HistoryParentsTest, LargestOfThreeIsKept)
{
    auto& n = node("k");
    parentOf(n, "p", frame(640, 480));
    parentOf(n, "q", frame(1920, 1080));
    parentOf(n, "r", frame(1280, 720));
    EXPECT_EQ(ask(n), text(frame(1920, 1080)));
    EXPECT_TRUE(loggedExactly(foundLines("k", frame(1920, 1080))));
}

TEST_F(HistoryParentsTest, FirstIsTheParentThatWasMadeFirst)
{
    auto& n = node("k");
    auto& early = node("z");
    auto& late = node("a");
    join(late, n); // linked first
    join(early, n);
    early.visited = late.visited = true;
    early.resHistories["0"] = frame(1920, 720);
    late.resHistories["0"] = frame(1280, 1080);
    EXPECT_EQ(ask(n), text(frame(1920, 720)));
}

} // namespace

} // namespace historytest
