// SPDX-License-Identifier: Apache-2.0
// The choice of the generation, and what does not touch formats.
#include "frame_params/ForwardingNode.h"
#include "isp/IspFixture.h"

#include <algorithm>
#include <iterator>
#include <type_traits>

namespace graphtest {

namespace {

using NUXO::GdfVersion;

constexpr const char* kUninitialised = "16 nuxo isp utils uninitialized";

std::string className(const IspUtils* utils)
{
    if (dynamic_cast<const NUXO::KVA4IspUtils*>(utils) != nullptr) return "KVA4";
    if (dynamic_cast<const KVA5IspUtils*>(utils) != nullptr) return "KVA5";
    if (dynamic_cast<const NUXO::KVA6IspUtils*>(utils) != nullptr) return "KVA6";
    if (dynamic_cast<const NUXO::KVA7IspUtils*>(utils) != nullptr) return "KVA7";
    return utils == nullptr ? "none" : "other";
}

class IspUtilsTest : public GraphTest {
protected:
    /// A graph whose descriptor has this version.
    void loadVersion(const std::string& version)
    {
        mRoot = tree("<graph/>");
        ASSERT_EQ(at(*mRoot, "graph").addValue(NUXO_KEY_VERSION, version), StatusOk);
        clearLog();
    }

    std::shared_ptr<IspUtils> utilsOf(const std::string& version)
    {
        loadVersion(version);
        return IspUtils::Factory(mRoot.get());
    }

    void setDvs(int dvs) const
    {
        mRoot->removeDescendant(NUXO_KEY_DVS);
        ASSERT_EQ(mRoot->addValue(NUXO_KEY_DVS, dvs), StatusOk);
    }

    template <typename Utils> void expectNew()
    {
        EXPECT_TRUE((std::is_base_of<NUXO::IspUtilsCommon, Utils>::value));
        clearLog();
        Utils utils;
        EXPECT_EQ(utils.getKvaVersion(), NUXO::GdfVersionNone);
        EXPECT_TRUE(loggedExactly({}));
        EXPECT_TRUE(utils.isDvsEnabled());
        EXPECT_TRUE(loggedExactly({kUninitialised}));
    }

    /// All generations but the fifth say no to all of these.
    void expectNothingSupported(IspUtils& utils)
    {
        clearLog();
        std::vector<KernelConfigContainer> configs;
        const Tree graph = descriptor(outPort() + group("next", "", portWithFormats("in", "NV12")));
        const GraphConfigNode* const port = &at(*graph, "pg:out");
        EXPECT_EQ(utils.getKernelConfigurations(configs), StatusNotSupported);
        EXPECT_TRUE(configs.empty());
        for (const IGraphConfig* any :
             {static_cast<const IGraphConfig*>(port), static_cast<const IGraphConfig*>(nullptr)}) {
            EXPECT_EQ(utils.applyFormat(any, "NV12"), StatusNotSupported);
            EXPECT_EQ(utils.applyCompression(any, "YUV420_8_SP_C"), StatusNotSupported);
            EXPECT_EQ(utils.applyCompression(any, "NV12"), StatusNotSupported);
        }
        EXPECT_EQ(value(*graph, "next:in:format"), "'RAW'");
        EXPECT_TRUE(loggedExactly({}));
    }

    Tree mRoot;
};

TEST_F(IspUtilsTest, GenerationIsToldByAWordInTheVersion)
{
    const struct {
        const char* text;
        const char* name;
        GdfVersion version;
    } versions[] = {
        {"KVA5", "KVA5", NUXO::GdfVersionKVA5},
        {"KVA6", "KVA6", NUXO::GdfVersionKVA6},
        {"KVA7", "KVA7", NUXO::GdfVersionKVA7},
        {"a KVA6.12 of 7 KVA", "KVA6", NUXO::GdfVersionKVA6},
        {"KVA55", "KVA5", NUXO::GdfVersionKVA5},
        {"KVA6KVA5", "KVA5", NUXO::GdfVersionKVA5}, // the order of the words does not count
        {"KVA7,KVA6", "KVA6", NUXO::GdfVersionKVA6},
        {"KVA7,KVA6,KVA5", "KVA5", NUXO::GdfVersionKVA5},
    };
    for (const auto& [text, name, version] : versions) {
        const std::shared_ptr<IspUtils> utils = utilsOf(text);
        ASSERT_NE(utils, nullptr) << text;
        EXPECT_EQ(className(utils.get()), name) << text;
        EXPECT_EQ(utils->getKvaVersion(), version) << text;
        EXPECT_TRUE(loggedExactly({std::string("2 Detected KVA version in the graph: ") + text + " enum[" +
                                   std::to_string(static_cast<int>(version)) + "]"}));
        EXPECT_EQ(utils.use_count(), 1);
    }
}

TEST_F(IspUtilsTest, OtherVersionsHaveUtilitiesThatSupportNothing)
{
    for (const std::string text : {"", "KVA4", "KVA8", "kva5", "KVA 5", "KV A5", "5", "%s%n"}) {
        const std::shared_ptr<IspUtils> utils = utilsOf(text);
        EXPECT_TRUE(loggedExactly({"2 Detected KVA version in the graph: " + text + " enum[0]",
                                   "16 KVA version not supported in NUXO Isp Utils."}));
        ASSERT_NE(utils, nullptr) << text;
        EXPECT_EQ(className(utils.get()), "KVA4") << text;
        EXPECT_EQ(utils->getKvaVersion(), NUXO::GdfVersionNone) << text;
        expectNothingSupported(*utils);
    }
}

TEST_F(IspUtilsTest, GraphWithoutAVersionHasUtilitiesThatSupportNothing)
{
    const Lines expected = {"2 Detected KVA version in the graph:  enum[0]",
                            "16 KVA version not supported in NUXO Isp Utils."};
    for (const char* body : {"<sensor/>", "<graph/>", "<graph><node version=\"KVA5\"/></graph>"}) {
        mRoot = tree(body);
        clearLog();
        EXPECT_EQ(className(IspUtils::Factory(mRoot.get()).get()), "KVA4") << body;
        EXPECT_TRUE(loggedExactly(expected)) << body;
    }
    mRoot = tree("<graph/>");
    at(*mRoot, "graph").addValue(NUXO_KEY_VERSION, 5); // a number is no version text
    clearLog();
    EXPECT_EQ(className(IspUtils::Factory(mRoot.get()).get()), "KVA4");
    EXPECT_TRUE(loggedExactly(expected));
}

TEST_F(IspUtilsTest, VersionIsReadBelowTheNodeThatIsGiven)
{
    loadVersion("KVA5");
    EXPECT_EQ(className(IspUtils::Factory(&at(*mRoot, "graph")).get()), "KVA4");
    // Neither is the version of the root itself the one that counts.
    mRoot = descriptor("<source name='sensor'/>", "KVA5");
    EXPECT_EQ(className(IspUtils::Factory(mRoot.get()).get()), "KVA4");
}

TEST_F(IspUtilsTest, NullGraphHasNoUtilities)
{
    EXPECT_EQ(IspUtils::Factory(nullptr), nullptr);
    EXPECT_TRUE(loggedExactly({"16 Given pointer is null. NUXO Isp Utils not initialized."}));
}

TEST_F(IspUtilsTest, DetectionIsDebugOutput)
{
    loadVersion("KVA5");
    EXPECT_EQ(mLog.linesOfLevel(2, [this] { (void)IspUtils::Factory(mRoot.get()); }).size(), 1U);
    for (const uint32_t level : {1U, 4U, 8U, 16U, 32U}) {
        EXPECT_TRUE(mLog.linesOfLevel(level, [this] { (void)IspUtils::Factory(mRoot.get()); }).empty()) << level;
    }
}

TEST_F(IspUtilsTest, GraphsOfAnotherImplementationAreReadThroughTheInterface)
{
    loadVersion("KVA5");
    setDvs(1);
    ForwardingNode foreign(*mRoot);
    const std::shared_ptr<IspUtils> utils = IspUtils::Factory(&foreign);
    EXPECT_EQ(className(utils.get()), "KVA5");
    EXPECT_TRUE(utils->isDvsEnabled());

    const MockNode empty;
    EXPECT_EQ(className(IspUtils::Factory(&empty).get()), "KVA4");
}

TEST_F(IspUtilsTest, UtilitiesDoNotOwnTheGraph)
{
    loadVersion("KVA5");
    const std::string before = text(*mRoot);
    IspUtils::Factory(mRoot.get()).reset();
    EXPECT_EQ(text(*mRoot), before);
}

TEST_F(IspUtilsTest, StabilisationIsEnabledByANumberOtherThanZero)
{
    const std::shared_ptr<IspUtils> utils = utilsOf("KVA5");
    clearLog();
    EXPECT_FALSE(utils->isDvsEnabled()); // absent
    const std::pair<int, bool> values[] = {{0, false}, {1, true}, {2, true}, {-1, true}};
    for (const auto& [dvs, enabled] : values) {
        setDvs(dvs); // the graph is asked each time
        EXPECT_EQ(utils->isDvsEnabled(), enabled) << dvs;
    }
    mRoot->removeDescendant(NUXO_KEY_DVS);
    mRoot->addValue(NUXO_KEY_DVS, std::string("1"));
    EXPECT_FALSE(utils->isDvsEnabled()); // no number
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(IspUtilsTest, StabilisationIsAskedForInAllGenerations)
{
    for (const char* version : {"", "KVA5", "KVA6", "KVA7"}) {
        const std::shared_ptr<IspUtils> utils = utilsOf(version);
        EXPECT_FALSE(utils->isDvsEnabled()) << version;
        setDvs(1);
        EXPECT_TRUE(utils->isDvsEnabled()) << version;
    }
}

TEST_F(IspUtilsTest, NewUtilitiesHaveNoVersionAndEnableStabilisation)
{
    expectNew<NUXO::KVA4IspUtils>();
    expectNew<KVA5IspUtils>();
    expectNew<NUXO::KVA6IspUtils>();
    expectNew<NUXO::KVA7IspUtils>();
}

TEST_F(IspUtilsTest, UtilitiesHaveTheVersionThatTheyAreGiven)
{
    loadVersion("KVA5");
    NUXO::KVA4IspUtils utils(mRoot.get(), NUXO::GdfVersionKVA7);
    EXPECT_EQ(utils.getKvaVersion(), NUXO::GdfVersionKVA7);
    EXPECT_FALSE(utils.isDvsEnabled());
}

TEST_F(IspUtilsTest, UtilitiesWithoutAGraphSupportAsMuch)
{
    NUXO::KVA4IspUtils four;
    NUXO::KVA6IspUtils six;
    NUXO::KVA7IspUtils seven;
    for (IspUtils* utils : std::initializer_list<IspUtils*>{&four, &six, &seven}) expectNothingSupported(*utils);
}

TEST_F(IspUtilsTest, NewerGenerationsSupportNothing)
{
    for (const char* version : {"KVA6", "KVA7"}) expectNothingSupported(*utilsOf(version));
}

TEST_F(IspUtilsTest, FifthGenerationDisablesOneKernelWithoutStabilisation)
{
    const std::shared_ptr<IspUtils> utils = utilsOf("KVA5");
    clearLog();
    for (const bool stated : {false, true}) {
        if (stated) setDvs(0);
        std::vector<KernelConfigContainer> configs;
        EXPECT_EQ(utils->getKernelConfigurations(configs), StatusOk);
        ASSERT_EQ(configs.size(), 1U);
        EXPECT_EQ(configs[0].valid, 2U);
        EXPECT_EQ(configs[0].kernel_uuid, 37235U);
        EXPECT_EQ(configs[0].enable, 2);
        EXPECT_EQ(std::count(std::begin(configs[0].metadata), std::end(configs[0].metadata), 0U), 4);
        EXPECT_EQ(configs[0].bpp_info.input_bpp, 0U);
        EXPECT_EQ(configs[0].bpp_info.output_bpp, 0U);
    }
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(IspUtilsTest, FifthGenerationChangesNothingWithStabilisation)
{
    const std::shared_ptr<IspUtils> utils = utilsOf("KVA5");
    setDvs(1);
    clearLog();
    std::vector<KernelConfigContainer> configs;
    EXPECT_EQ(utils->getKernelConfigurations(configs), StatusOk);
    EXPECT_TRUE(configs.empty());
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(IspUtilsTest, ConfigurationsAreAppended)
{
    const std::shared_ptr<IspUtils> utils = utilsOf("KVA5");
    std::vector<KernelConfigContainer> configs(2);
    configs[0].kernel_uuid = 5;
    EXPECT_EQ(utils->getKernelConfigurations(configs), StatusOk);
    EXPECT_EQ(utils->getKernelConfigurations(configs), StatusOk);
    ASSERT_EQ(configs.size(), 4U);
    EXPECT_EQ(configs[0].kernel_uuid, 5U);
    EXPECT_EQ(configs[2].kernel_uuid, 37235U);
    EXPECT_EQ(configs[3].kernel_uuid, 37235U);
}

TEST_F(IspUtilsTest, ConfigurationDisablesTheKernelItNames)
{
    std::vector<KernelConfigContainer> configs;
    ASSERT_EQ(utilsOf("KVA5")->getKernelConfigurations(configs), StatusOk);
    qv_isp_zmt_run_kernels stabilising{};
    qv_isp_zmt_run_kernels other{};
    stabilising.kernel_uuid = 37235;
    other.kernel_uuid = 37234;
    stabilising.enable = other.enable = 1;
    for (qv_isp_zmt_run_kernels* kernel : {&stabilising, &other}) {
        NUXO::ZmtTevUtils::applyKernelConfigs(configs, *kernel);
    }
    EXPECT_EQ(stabilising.enable, 2);
    EXPECT_EQ(other.enable, 1);
}

TEST_F(IspUtilsTest, FifthGenerationWithoutAGraphSaysSoOnce)
{
    KVA5IspUtils utils;
    std::vector<KernelConfigContainer> configs;
    EXPECT_EQ(utils.getKernelConfigurations(configs), StatusMissingData);
    EXPECT_TRUE(configs.empty());
    EXPECT_TRUE(loggedExactly({kUninitialised}));

    KVA5IspUtils withVersion(nullptr, NUXO::GdfVersionKVA5);
    clearLog();
    EXPECT_EQ(withVersion.getKernelConfigurations(configs), StatusMissingData);
    EXPECT_TRUE(configs.empty());
    EXPECT_TRUE(loggedExactly({kUninitialised}));
}

TEST_F(IspUtilsTest, OnlyVersionFiveDisablesTheKernel)
{
    loadVersion("KVA5");
    for (const GdfVersion version : {NUXO::GdfVersionNone, NUXO::GdfVersionKVA6, NUXO::GdfVersionKVA7}) {
        KVA5IspUtils utils(mRoot.get(), version);
        std::vector<KernelConfigContainer> configs;
        EXPECT_EQ(utils.getKernelConfigurations(configs), StatusOk);
        EXPECT_TRUE(configs.empty()) << version;
    }
}

} // namespace

} // namespace graphtest
