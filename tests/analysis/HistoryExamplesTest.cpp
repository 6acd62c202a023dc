// SPDX-License-Identifier: Apache-2.0
// Every setting of the example files: what the records say must fit what the graph itself says.
#include "analysis/HistoryFixture.h"

#include <nuxo/kernels/ZmtTevUtils.h>

#include <map>
#include <set>

namespace historytest {

namespace {

using graphtest::GraphConfigNode;
using Node = NUXO::InnerGraphNode;

constexpr uint32_t kKeys[] = {NUXO_KEY_STREAM_ID, NUXO_KEY_EXEC_CTX_ID};

/// How often each rule was found to hold, so that none holds for want of cases.
struct Counts {
    size_t settings = 0;
    size_t active = 0;
    size_t rcb = 0;
    size_t ports = 0;
    size_t severalOutputs = 0;
    size_t scaled = 0;
};

class HistoryExamplesTest : public graphtest::GraphTest, public ::testing::WithParamInterface<int> {
protected:
    ~HistoryExamplesTest() override { mManager.destroyGraph(mGraph); }

    void SetUp() override
    {
        const std::string name = NUXO_SOURCE_DIR "/examples/kva" + std::to_string(GetParam());
        mDescriptor = parseFile(name + "_descriptor.xml");
        mSettings = parseFile(name + "_settings.xml");
        mManager.setGraphDescriptor(mDescriptor.get());
        mManager.setGraphSettings(mSettings.get());
        mLog.setMask(0);
    }

    /// Runs @p check on the graph of each setting.
    template <class Check> void forEachSetting(Check&& check)
    {
        for (const NUXO::ItemEntry& item : *mSettings) {
            if (item.first != NUXO_KEY_SETTINGS || item.second->type != NUXO::GraphConfigItem::NODE) continue;
            auto& setting = static_cast<GraphConfigNode&>(*item.second);
            SCOPED_TRACE(graphtest::value(setting, "key"));
            mManager.destroyGraph(mGraph);
            mGraph = nullptr;
            ASSERT_EQ(mManager.createGraph(&setting, &mGraph), StatusOk);
            check();
            ++mCounts.settings;
        }
    }

    NUXO::GdfVersion version() const { return static_cast<NUXO::GdfVersion>(GetParam()); }

    static int number(const NUXO::IGraphConfig& node, uint32_t key, int otherwise)
    {
        int value = otherwise;
        static_cast<void>(node.getValue(key, value));
        return value;
    }

    static graphtest::Tree parseFile(const std::string& name)
    {
        NUXO::NUXOParser parser;
        NUXO::IGraphConfig* root = nullptr;
        parser.parseNUXOXmlFile(name.c_str(), &root);
        return graphtest::Tree(&graphtest::asNode(root));
    }

    /// All ids of subgraphs that exist, under this key.
    static std::set<int> idsOf(GraphUtil& util)
    {
        std::set<int> ids;
        util.getAvailableSubgraphs(ids);
        return ids;
    }

    graphtest::Tree mDescriptor;
    graphtest::Tree mSettings;
    NUXO::GraphQueryManager mManager;
    NUXO::IGraphConfig* mGraph = nullptr;
    Counts mCounts;
};

std::string sizeOf(int width, int height)
{
    return std::to_string(width) + "x" + std::to_string(height);
}

std::string arrivingSize(const Info& history)
{
    return sizeOf(history.output_width, history.output_height);
}

class HistoryRulesTest : public HistoryExamplesTest {
protected:
    /// Checks all nodes of one subgraph.
    void checkSubgraph(GraphUtil& util, int id)
    {
        SCOPED_TRACE("subgraph " + std::to_string(id));
        std::vector<Node> nodes;
        ASSERT_EQ(util.getInnerGraph(id, nodes), StatusOk);
        std::map<const Node*, std::multiset<std::string>> offers; // what the parents hand to a node
        for (const Node& node : nodes) {
            for (const Node::Link& link : node.links) {
                if (!link.hasHistory || node.disabled) continue;
                offers[&nodes[link.sink]].insert(text(link.history));
                checkPort(nodes[link.sink], link.history);
            }
        }
        for (const Node& node : nodes) {
            SCOPED_TRACE(node.name);
            if (node.kind == Node::Kind::Kernel) checkKernel(node, offers[&node]);
            if (node.kind == Node::Kind::InputPort && !node.links.empty() && node.links[0].hasHistory) {
                checkPort(node, node.links[0].history);
            }
        }
    }

    /// A port that states a size states that of the frame that reaches it.
    void checkPort(const Node& port, const Info& history)
    {
        const bool isPort = port.kind == Node::Kind::InputPort || port.kind == Node::Kind::OutputPort;
        const int width = number(*port.node, NUXO_KEY_WIDTH, 0);
        if (!isPort || port.disabled || width == 0) return;
        ++mCounts.ports;
        EXPECT_EQ(sizeOf(width, number(*port.node, NUXO_KEY_HEIGHT, 0)), arrivingSize(history)) << port.name;
    }

    void checkKernel(const Node& kernel, const std::multiset<std::string>& offers)
    {
        ASSERT_NE(kernel.record, nullptr);
        ASSERT_NE(kernel.record->resolution_history, nullptr);
        const Info& history = *kernel.record->resolution_history;
        EXPECT_EQ(kernel.record->kernel_uuid, static_cast<uint32_t>(number(*kernel.node, NUXO_KEY_PAL_UUID, -1)));
        const bool isOn = kernel.record->enable == number(*kernel.node, NUXO_KEY_ENABLED, 1);
        EXPECT_TRUE(isOn || kernel.record->enable == QV_ISP_ZMT_KERNEL_DISABLED);
        if (kernel.disabled) return;
        ++mCounts.active;
        EXPECT_GT(history.output_width, 0);         // it was reached
        EXPECT_GE(offers.count(text(history)), 1U); // from one of its parents
        EXPECT_EQ(mSources.count(sizeOf(history.input_width, history.input_height)), 1U) << text(history);
        const qv_rectangle& crop = history.input_crop;
        EXPECT_GE(std::min({crop.left, crop.top, crop.right, crop.bottom}), 0);
        EXPECT_GT(history.input_width - crop.left - crop.right, 0);
        EXPECT_GT(history.input_height - crop.top - crop.bottom, 0);
        checkOutputs(kernel, history);
    }

    void checkOutputs(const Node& kernel, const Info& history)
    {
        const bool scales = number(*kernel.node, NUXO_KEY_RCB, 0) != 0 && kernel.record->resolution_info != nullptr;
        std::set<std::string> outputs;
        for (const Node::Link& link : kernel.links) outputs.insert(link.output);
        if (scales) {
            EXPECT_EQ(kernel.record->output_count, std::max<size_t>(outputs.size(), 1));
            if (outputs.size() > 1) ++mCounts.severalOutputs;
        }
        for (const Node::Link& link : kernel.links) {
            ASSERT_TRUE(link.hasHistory);
            if (!scales) {
                EXPECT_EQ(text(link.history), text(history));
                continue;
            }
            const auto place = std::distance(outputs.begin(), outputs.find(link.output));
            const Info& own = kernel.record->resolution_info[place];
            ++mCounts.rcb;
            EXPECT_EQ(sizeOf(own.input_width, own.input_height), arrivingSize(history));
            EXPECT_EQ(arrivingSize(link.history),
                      sizeOf(own.output_width - own.output_crop.left - own.output_crop.right,
                             own.output_height - own.output_crop.top - own.output_crop.bottom));
            if (arrivingSize(link.history) != arrivingSize(history)) ++mCounts.scaled;
        }
    }

    /// The full sizes of the graph's sources.
    void findSources()
    {
        mSources.clear();
        std::vector<NUXO::IGraphConfig*> sources;
        ASSERT_EQ(NUXO::GraphCameraUtil::getSourceNode(mGraph, sources), StatusOk);
        for (auto* const source : sources) {
            Info history = {};
            if (NUXO::ZmtTevUtils::sourceGetResolutionHistory(history, *source) != StatusOk) continue;
            mSources.insert(sizeOf(history.input_width, history.input_height));
        }
    }

    std::set<std::string> mSources;
};

TEST_P(HistoryRulesTest, RecordsFitTheGraph)
{
    forEachSetting([this] {
        findSources();
        for (const uint32_t key : kKeys) {
            SCOPED_TRACE(key);
            GraphUtil util;
            ASSERT_EQ(util.init(key, mGraph, version()), StatusOk);
            for (const int id : idsOf(util)) checkSubgraph(util, id);
        }
    });
    EXPECT_GE(mCounts.settings, 24U);
    EXPECT_GT(mCounts.active, 1000U);
    EXPECT_GT(mCounts.rcb, 100U);
    EXPECT_GT(mCounts.scaled, 50U);
    EXPECT_GT(mCounts.ports, 200U);
    EXPECT_GT(mCounts.severalOutputs, 0U);
}

class HistoryGettersTest : public HistoryExamplesTest {
protected:
    static std::string describe(const qv_isp_zmt_run_kernels& kernel)
    {
        std::string all = std::to_string(kernel.stream_id) + " " + std::to_string(kernel.kernel_uuid) + " " +
                          std::to_string(kernel.enable) + " [";
        for (const uint32_t value : kernel.metadata) all += std::to_string(value) + " ";
        all += "] " + std::to_string(kernel.bpp_info.input_bpp) + ">" + std::to_string(kernel.bpp_info.output_bpp) +
               " " + text(*kernel.resolution_history);
        for (uint32_t i = 0; i < kernel.output_count; ++i) all += " " + text(kernel.resolution_info[i]);
        return all;
    }

    static std::multiset<std::string> describe(const qv_isp_zmt_program_group& pg)
    {
        std::multiset<std::string> all;
        for (uint32_t i = 0; i < pg.kernel_count; ++i) all.insert(describe(pg.run_kernels[i]));
        return all;
    }

    /// What the groups of the graph hand out together, by stream.
    template <class Ask> std::map<int, std::multiset<std::string>> ofGroups(const std::set<int>& ids, Ask&& ask)
    {
        std::map<int, std::multiset<std::string>> all;
        const std::string type = GetParam() == 7 ? "compute_block" : "program_group";
        NUXO::NodeIterator groups(mGraph);
        while (auto* const group = groups.iterateNodes(NUXO_KEY_TYPE, type)) {
            qv_isp_zmt_program_group pg = {};
            if (ask(group, pg) != StatusOk) continue; // nothing takes its frames
            EXPECT_EQ(pg.operation_mode, static_cast<uint32_t>(number(*group, NUXO_KEY_TUNING_MODE, 0)));
            unsigned int kernels = 0;
            EXPECT_EQ(NUXO::GraphCameraUtil::getKernelCountInPg(group, kernels), StatusOk);
            EXPECT_EQ(pg.kernel_count, kernels);
            const int id = number(*group, NUXO_KEY_STREAM_ID, -1);
            EXPECT_EQ(ids.count(id), 1U);
            for (const std::string& record : describe(pg)) all[id].insert(record);
        }
        return all;
    }
};

TEST_P(HistoryGettersTest, GroupsAndStreamsHandOutTheSameRecords)
{
    forEachSetting([this] {
        GraphUtil util;
        ASSERT_EQ(util.init(NUXO_KEY_STREAM_ID, mGraph, version()), StatusOk);
        const auto ids = idsOf(util);
        auto groups = ofGroups(ids, [&util](auto* node, auto& pg) { return util.getPgTevData(node, pg); });
        NUXO::ZmtTevUtils utils(true);
        ASSERT_EQ(utils.initTevUtils(mGraph), StatusOk);
        auto forwarded = ofGroups(ids, [&utils](auto* node, auto& pg) { return utils.getProgramGroup(node, pg); });
        for (const int id : ids) {
            qv_isp_zmt_program_group stream = {};
            ASSERT_EQ(util.getTevData(id, stream), StatusOk);
            const auto expected = describe(stream);
            mCounts.active += expected.size();
            EXPECT_EQ(groups[id], expected) << id;
            EXPECT_EQ(forwarded[id], expected) << id;
            qv_isp_zmt_program_group same = {};
            utils.getProgramGroup(id, same);
            EXPECT_EQ(describe(same), expected) << id;
        }
    });
    EXPECT_GE(mCounts.settings, 24U);
    EXPECT_GT(mCounts.active, 500U);
}

TEST_P(HistoryGettersTest, NothingActiveIsMissed)
{
    forEachSetting([this] {
        mLog.setMask(graphtest::kWarning);
        clearLog();
        GraphUtil util;
        ASSERT_EQ(util.init(NUXO_KEY_STREAM_ID, mGraph, version()), StatusOk);
        EXPECT_TRUE(notLogged("did not reach all ACTIVE nodes"));
        EXPECT_TRUE(notLogged("not reached"));
        mLog.setMask(0);
    });
}

std::string nameOfGeneration(const ::testing::TestParamInfo<int>& info)
{
    return "Generation" + std::to_string(info.param);
}

INSTANTIATE_TEST_SUITE_P(Examples, HistoryRulesTest, ::testing::Values(6, 7), nameOfGeneration);
INSTANTIATE_TEST_SUITE_P(Examples, HistoryGettersTest, ::testing::Values(6, 7), nameOfGeneration);

} // namespace

} // namespace historytest
