// SPDX-License-Identifier: Apache-2.0
// The simulation helpers with every allocation failing in turn.
#include "simulation/AllocationSweep.h"
#include "simulation/SimulationFixture.h"

#include <algorithm>

namespace graphtest {

namespace {

constexpr int kUnwritten = 777;

/// Names that a string cannot hold in itself.
const std::string kLong = "_with_a_name_that_needs_the_heap";

std::string kernel(const std::string& name, int identity)
{
    return "<kernel name=\"" + name + kLong + "\" pal_uuid=\"" + std::to_string(identity) + "\"/>";
}

/// Two program groups, one graph that connects them, overrides that set and create.
std::string descriptorBody()
{
    const std::string port = "port" + kLong;
    const auto group = [&port](const std::string& name, const std::string& kernels) {
        return "<program_group name=\"" + name + kLong + "\" stream_id=\"1\"><port name=\"" + port + "\"/>" + kernels +
               "</program_group>";
    };
    const auto apply = [](const std::string& target, const std::string& value) {
        return "<apply target=\"" + target + "\" value=\"" + value + "\"/>";
    };
    return "<nodes>" + group("pg_a", kernel("a1", 11) + kernel("a2", 12)) + group("pg_b", kernel("b1", 21)) +
           "</nodes><graphs><graph id=\"100\"><connection source=\"pg_a" + kLong + ":" + port + "\" sink=\"pg_b" +
           kLong + ":" + port + "\"/>" + apply("pg_a" + kLong + ":description", kLong) +
           apply("pg_b" + kLong + ":new" + kLong + ":enabled", "1") + "</graph></graphs>";
}

class SimulationAllocationTest : public AllocationSweepTest {
protected:
    /// A call on a tree of its own.
    class TreeCall : public Call {
    public:
        explicit TreeCall(const std::string& body) : mTree(descriptor(body)) {}

    protected:
        const Tree mTree;
    };

    template <class Kind, class... Arguments> void sweepCalls(const Arguments&... arguments)
    {
        sweep([&] { return std::make_unique<Kind>(arguments...); });
    }
};

TEST_F(SimulationAllocationTest, CloneIsWholeOrNotThere)
{
    class Cloning : public TreeCall {
    public:
        explicit Cloning(const std::string& body) : TreeCall(body), mBefore(text(*mTree)) {}
        int act() override { return ZmtTevSimUtils::cloneSettings(mTree.get(), &mCopy); }
        void judge(int status) override
        {
            EXPECT_EQ(text(*mTree), mBefore);
            if (status == StatusOk) {
                const Tree copy(&asNode(mCopy));
                EXPECT_EQ(text(*copy), mBefore);
                mCopy = nullptr;
            } else {
                EXPECT_EQ(mCopy, nullptr);
            }
        }
        std::vector<std::string> linesOfFailure() const override { return {sim("16 Error copying: No memory")}; }

    private:
        const std::string mBefore;
        IGraphConfig* mCopy = nullptr;
    };
    sweepCalls<Cloning>(descriptorBody());
}

TEST_F(SimulationAllocationTest, IdentityIsRightOrNotGiven)
{
    class Identity : public TreeCall {
    public:
        using TreeCall::TreeCall;
        int act() override
        {
            mIdentity = kUnwritten;
            return ZmtTevSimUtils::getKernelPalUuid(mTree.get(), mName, mIdentity);
        }
        void judge(int status) override { EXPECT_EQ(mIdentity, status == StatusOk ? 21 : kUnwritten); }

    private:
        const std::string mName = "b1" + kLong;
        int mIdentity = kUnwritten;
    };
    sweepCalls<Identity>(descriptorBody());
}

TEST_F(SimulationAllocationTest, GroupsAreAllFoundOrTheStatusSaysSo)
{
    class Groups : public TreeCall {
    public:
        using TreeCall::TreeCall;
        int act() override { return ZmtTevSimUtils::getPgsInGraph(mTree.get(), 100, mGroups); }
        void judge(int status) override
        {
            EXPECT_TRUE(linked(*mTree));
            if (status != StatusOk) return;
            EXPECT_EQ(names(mGroups), "pg_a" + kLong + " pg_b" + kLong);
            EXPECT_EQ(value(*mTree, "nodes:pg_a" + kLong + ":description"), "'" + kLong + "'");
        }

    private:
        std::set<IGraphConfig*> mGroups;
    };
    sweepCalls<Groups>(descriptorBody());
}

/// The names of the kernels of descriptorBody() in alphabetical order.
std::string allKernels()
{
    return "a1" + kLong + "=11 a2" + kLong + "=12 b1" + kLong + "=21";
}

TEST_F(SimulationAllocationTest, KernelsAreAllListedOrTheStatusSaysSo)
{
    class Listing : public TreeCall {
    public:
        using TreeCall::TreeCall;
        int act() override
        {
            KernelList().swap(mKernels);
            return ZmtTevSimUtils::getKernelList(mTree.get(), 100, 1, mKernels);
        }
        void judge(int status) override
        {
            if (status != StatusOk) return;
            std::sort(mKernels.begin(), mKernels.end(),
                      [](const auto& a, const auto& b) { return a.pal_uuid < b.pal_uuid; });
            EXPECT_EQ(text(mKernels), allKernels());
        }

    private:
        KernelList mKernels;
    };
    sweepCalls<Listing>(descriptorBody());
}

TEST_F(SimulationAllocationTest, KernelsOfAGroupAreAllListedOrTheFirstOfThem)
{
    class Kernels : public TreeCall {
    public:
        explicit Kernels(const std::string& body)
            : TreeCall("<program_group name=\"pg\">" + body + "</program_group>"), mGroup(at(*mTree, "pg"))
        {
        }
        int act() override
        {
            KernelList().swap(mKernels);
            return ZmtTevSimUtils::getKernelInfoList(mGroup, mKernels);
        }
        void judge(int status) override
        {
            const std::string listed = text(mKernels);
            EXPECT_EQ(allKernels().compare(0, listed.size(), listed), 0) << listed;
            EXPECT_TRUE(status != StatusOk || listed == allKernels());
        }

    private:
        const GraphConfigNode& mGroup;
        KernelList mKernels;
    };
    sweepCalls<Kernels>(kernel("a1", 11) + kernel("a2", 12) + kernel("b1", 21));
}

TEST_F(SimulationAllocationTest, AttributeIsCreatedOrRefused)
{
    class Forcing : public TreeCall {
    public:
        Forcing() : TreeCall("<hw name=\"pg\" width=\"1\"/>"), mNode(at(*mTree, "pg")) {}
        int act() override { return ZmtTevSimUtils::setValue(&mNode, NUXO_KEY_ENABLED, 5); }
        void judge(int status) override
        {
            EXPECT_EQ(text(mNode),
                      status == StatusOk ? "name='pg' type='hw' enabled=5 width=1" : "name='pg' type='hw' width=1");
        }
        std::vector<std::string> linesOfFailure() const override { return {sim("16 was not able to update enabled")}; }

    private:
        GraphConfigNode& mNode;
    };
    sweepCalls<Forcing>();
}

TEST_F(SimulationAllocationTest, MuxesAreAllReadOrTheStatusSaysSo)
{
    class Muxes : public TreeCall {
    public:
        using TreeCall::TreeCall;
        int act() override { return ZmtTevSimUtils::getMuxConfiguration(mTree.get(), 1, mConfiguration); }
        void judge(int status) override
        {
            const std::map<std::string, unsigned int> whole{
                {"demux" + kLong, 1}, {"mux" + kLong, 2}, {"other" + kLong, 3}};
            if (status == StatusOk) {
                EXPECT_EQ(mConfiguration, whole);
            }
            for (const auto& entry : mConfiguration) EXPECT_EQ(whole.count(entry.first), 1U) << entry.first;
        }

    private:
        std::map<std::string, unsigned int> mConfiguration;
    };
    sweepCalls<Muxes>("<graph version=\"KVA7" + kLong +
                      "\"/><compute_block name=\"cb\" stream_id=\"1\"><demux name=\"demux" + kLong +
                      "\" active_output=\"1\"/><mux name=\"mux" + kLong + "\" active_input=\"2\"/><mux name=\"other" +
                      kLong + "\" active_input=\"3\"/></compute_block>");
}

} // namespace

} // namespace graphtest
