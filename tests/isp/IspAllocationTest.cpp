// SPDX-License-Identifier: Apache-2.0
// The version utilities with every allocation failing in turn.
#include "isp/IspFixture.h"
#include "simulation/AllocationSweep.h"

namespace graphtest {

namespace {

constexpr const char* kFormat = "YUV420_8_SP_C"; // compressed, and on the heap together with what it is compared with
constexpr const char* kPeer = "next:a_port_whose_name_needs_the_heap";

class IspAllocationTest : public AllocationSweepTest {
protected:
    using Apply = int (KVA5IspUtils::*)(const IGraphConfig*, const std::string&);

    /// Sets a format from the port `pg:out`; success must mean that the peer has it.
    class ApplyCall : public Call {
    public:
        explicit ApplyCall(Apply apply) : mApply(apply), mGraph(descriptor(body())), mPort(&at(*mGraph, "pg:out")) {}

        int act() override { return (mUtils.*mApply)(mPort, mFormat); }

        void judge(int status) override
        {
            if (status == StatusOk) {
                EXPECT_EQ(value(*mGraph, std::string(kPeer) + ":format"), "'" + mFormat + "'");
            }
            EXPECT_EQ(value(*mGraph, "pg:out:format"), "'RAW'");
        }

    private:
        static std::string body()
        {
            const std::string values = std::string(kFormat) + ",another_value_of_the_list_of_options";
            return group("pg", "", output("out", kPeer, "format='RAW'")) +
                   group("next", "",
                         portWithFormats("a_port_whose_name_needs_the_heap", values) +
                             portWithFormats("tnr_output", values) + portWithFormats("tnr_input", values));
        }

        Apply mApply;
        std::string mFormat = kFormat;
        Tree mGraph;
        GraphConfigNode* mPort;
        KVA5IspUtils mUtils;
    };

    class ConfigurationsCall : public Call {
    public:
        ConfigurationsCall() : mGraph(tree("<sensor/>")), mUtils(mGraph.get(), NUXO::GdfVersionKVA5) {}

        int act() override
        {
            mConfigs = {};
            return mUtils.getKernelConfigurations(mConfigs);
        }

        void judge(int status) override { EXPECT_EQ(mConfigs.size(), status == StatusOk ? 1U : 0U); }

    private:
        Tree mGraph;
        KVA5IspUtils mUtils;
        std::vector<KernelConfigContainer> mConfigs;
    };

    /// Utilities of a graph with a long version; either the right ones or none.
    class FactoryCall : public Call {
    public:
        FactoryCall() : mGraph(tree("<graph version=\"a version with many words, KVA6 among them\"/>")) {}

        int act() override
        {
            mUtils = IspUtils::Factory(mGraph.get());
            return mUtils == nullptr ? StatusNoMemory : StatusOk;
        }

        void judge(int status) override
        {
            if (status == StatusOk) {
                EXPECT_EQ(mUtils->getKvaVersion(), NUXO::GdfVersionKVA6);
            }
            mUtils.reset();
        }

    private:
        Tree mGraph;
        std::shared_ptr<IspUtils> mUtils;
    };
};

TEST_F(IspAllocationTest, FactorySurvives)
{
    sweep([] { return std::make_unique<FactoryCall>(); });
}

TEST_F(IspAllocationTest, ConfigurationsSurvive)
{
    sweep([] { return std::make_unique<ConfigurationsCall>(); });
}

TEST_F(IspAllocationTest, FormatSurvives)
{
    sweep([] { return std::make_unique<ApplyCall>(&KVA5IspUtils::applyFormat); });
}

TEST_F(IspAllocationTest, CompressionSurvives)
{
    NUXOFormats::initNUXOFormats(); // the table of formats stays when the call is over
    sweep([] { return std::make_unique<ApplyCall>(&KVA5IspUtils::applyCompression); });
}

} // namespace

} // namespace graphtest
