// SPDX-License-Identifier: Apache-2.0
// What a generation's own changes do to the records, whatever they are.
#include "kernels/PopulationFixture.h"
#include "kernels/ZmtTevUtilsAccess.h"

namespace graphtest {

namespace {

using NUXO::KernelConfigContainer;
using Configs = std::vector<KernelConfigContainer>;

/// The utilities of a generation with these changes.
class ConfiguringUtils : public NUXO::IspUtilsCommon {
public:
    int getKernelConfigurations(Configs& configs) override
    {
        mFound.push_back(configs.size());
        configs.insert(configs.end(), mConfigs.begin(), mConfigs.end());
        return mStatus;
    }
    int applyFormat(const IGraphConfig*, const std::string&) override { return StatusNotSupported; }
    int applyCompression(const IGraphConfig*, const std::string&) override { return StatusNotSupported; }

    Configs mConfigs;
    int mStatus = StatusOk;
    std::vector<size_t> mFound; ///< how many changes were there already, of each call
};

KernelConfigContainer state(uint32_t uuid, int enable)
{
    KernelConfigContainer config;
    config.valid = NUXO::KernelConfigEnable;
    config.kernel_uuid = uuid;
    config.enable = enable;
    return config;
}

class PopulationConfigurationsTest : public PopulationTest {
protected:
    /// Fills the records of a stream whose kernels have the uuids 100, 101, ...
    int fillWith(const Configs& configs, const Lines& attributes)
    {
        startStream(output("off", "far_sink", "id='5' enabled='0'") + kernels(attributes));
        return populateWith(configs);
    }

    int populateWith(const Configs& configs)
    {
        mGeneration->mConfigs = configs;
        NUXO::ZmtTevUtilsAccess::ispUtils(*mUtils) = mGeneration;
        return populate();
    }

    std::shared_ptr<ConfiguringUtils> mGeneration = std::make_shared<ConfiguringUtils>();
};

TEST_F(PopulationConfigurationsTest, StatesAreAppliedAfterTheWalkFromTheKernel)
{
    EXPECT_EQ(fillWith({state(102, 1)}, {"", "", "sink_port='5'"}), StatusOk);
    EXPECT_EQ(enables(), "2 2 1");
}

TEST_F(PopulationConfigurationsTest, WalksFromLaterKernelsComeLast)
{
    EXPECT_EQ(fillWith({state(101, 1)}, {"", "", "sink_port='5'"}), StatusOk);
    EXPECT_EQ(enables(), "2 2 2");
    EXPECT_EQ(fillWith({state(101, 0)}, {"", "", "sink_port='5'"}), StatusOk);
    EXPECT_EQ(enables(), "2 0 2"); // but they leave what is bypassed by then
}

TEST_F(PopulationConfigurationsTest, LaterChangesOfAKernelWin)
{
    EXPECT_EQ(fillWith({state(100, 0), state(101, 2), state(100, 3)}, {"", "", ""}), StatusOk);
    EXPECT_EQ(enables(), "3 2 1");
}

TEST_F(PopulationConfigurationsTest, EachFieldIsChangedByItsBit)
{
    KernelConfigContainer all = state(100, 2);
    all.metadata[1] = 77;
    all.bpp_info = {12, 14};
    all.valid = NUXO::KernelConfigMetadata;
    EXPECT_EQ(fillWith({all}, {"metadata='1,2,3,4'"}), StatusOk);
    EXPECT_EQ(record(0).metadata[0], 0U);
    EXPECT_EQ(record(0).metadata[1], 77U);
    EXPECT_EQ(record(0).bpp_info.output_bpp, 0U);
    EXPECT_EQ(enables(), "1");

    all.valid = NUXO::KernelConfigBpp | 1;
    EXPECT_EQ(populateWith({all}), StatusOk);
    EXPECT_EQ(record(0).metadata[0], 1U);
    EXPECT_EQ(record(0).bpp_info.input_bpp, 12U);
    EXPECT_EQ(record(0).bpp_info.output_bpp, 14U);
    EXPECT_EQ(enables(), "1");
}

TEST_F(PopulationConfigurationsTest, ThoseThatCameWithAFailureCount)
{
    mGeneration->mStatus = StatusMissingData;
    EXPECT_EQ(fillWith({state(100, 0)}, {"", ""}), StatusOk);
    EXPECT_EQ(count(kError, "Getting kernel configurations failed(-2)"), 1U);
    EXPECT_EQ(enables(), "0 1");
}

TEST_F(PopulationConfigurationsTest, EachGroupAsksAnew)
{
    start(frames("4000x3000") + joined("pg_a", 1, "buffer_src0:port_0", "pg_b:in", kernels({"", "sink_port='1'"})) +
          joined("pg_b", 1, "pg_a:out", "out_sink", kernel("m0", 0)) + streamSink("out_sink", 1, "pg_b:out"));
    EXPECT_EQ(populateWith({state(100, 0)}), StatusOk);
    EXPECT_EQ(mGeneration->mFound, (std::vector<size_t>{0, 0}));
    EXPECT_EQ(enables(), "0 1 0");
}

TEST_F(PopulationConfigurationsTest, WithoutUtilitiesThereAreNone)
{
    startStream(kernels({""}));
    NUXO::ZmtTevUtilsAccess::ispUtils(*mUtils) = nullptr;
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_EQ(count(kError, "Getting kernel configurations failed(-16)"), 1U);
    EXPECT_EQ(enables(), "1");
}

} // namespace

} // namespace graphtest
