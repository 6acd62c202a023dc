// SPDX-License-Identifier: Apache-2.0
// The records of every setting of the generation 5 example files fit together. What is expected follows from the graphs.
#include "kernels/PopulationFixture.h"

#include "simulation/ExamplePair.h"

#include <cstdlib>
#include <functional>

namespace graphtest {

namespace {

struct Size {
    int width = 0;
    int height = 0;
    bool operator==(const Size& other) const { return width == other.width && height == other.height; }
};

std::ostream& operator<<(std::ostream& stream, const Size& size)
{
    return stream << size.width << 'x' << size.height;
}

/// A kernel of the graph and its record.
struct Filled {
    const GraphConfigNode* group;
    const GraphConfigNode* kernel;
    Record record;

    int number(uint32_t which, int otherwise) const
    {
        int value = otherwise;
        return kernel->getValue(which, value) == StatusOk ? value : otherwise;
    }
    bool restores() const { return number(NUXO_KEY_RESTORE_POINT, -1) > 0; }
    bool hasSource() const { return kernel->hasItem(NUXO_KEY_SOURCE); }
    const IGraphConfig* sinkPort() const
    {
        return GraphCameraUtil::nodeGetPortById(group, number(NUXO_KEY_SINK_PORT, -1));
    }

    Size arriving() const
    {
        return {record.resolution_history->output_width, record.resolution_history->output_height};
    }
    Size leaving() const
    {
        const qv_isp_zmt_resolution_info* const own = record.resolution_info;
        return own == nullptr ? arriving() : Size{own->output_width, own->output_height};
    }
};

using Group = std::vector<Filled>;

std::vector<GraphConfigNode*> nodesOfType(const GraphConfigNode& node, uint32_t type)
{
    std::vector<GraphConfigNode*> all;
    NUXO::NodeIterator children(&node);
    while (IGraphConfig* const child = children.iterateByType(type)) all.push_back(&asNode(child));
    return all;
}

bool isOff(const IGraphConfig& port)
{
    int enabled = 1;
    return port.getValue(NUXO_KEY_ENABLED, enabled) == StatusOk && enabled == 0;
}

/// Whether the graph is one that GraphUtil analyses: a program group links its kernels.
bool hasKernelLinks(const GraphConfigNode& graph)
{
    const std::vector<GraphConfigNode*> groups = nodesOfType(graph, NUXO_KEY_PROGRAM_GROUP);
    return std::any_of(groups.begin(), groups.end(), [](const auto* group) { return group->hasItem(NUXO_KEY_KLINK); });
}

/// The records of one setting, by program groups.
class Example {
public:
    explicit Example(std::shared_ptr<GraphConfigNode> graph) : mGraph(std::move(graph)) {}

    /// Fills the records and pairs them with the kernels, which stand in the order of their ids, group behind group.
    void fill()
    {
        ASSERT_EQ(mUtils.initTevUtils(mGraph.get()), StatusOk);
        ASSERT_EQ(mUtils.getSourceResolutionHistory(mSource), StatusOk);
        std::map<int, size_t> next; // record of each stream
        for (const GraphConfigNode* group : nodesOfType(*mGraph, NUXO_KEY_PROGRAM_GROUP)) {
            int stream = -1;
            ASSERT_EQ(group->getValue(NUXO_KEY_STREAM_ID, stream), StatusOk);
            qv_isp_zmt_program_group all = {};
            mUtils.getProgramGroup(stream, all);
            const std::vector<GraphConfigNode*> kernels = nodesOfType(*group, NUXO_KEY_KERNEL);
            ASSERT_LE(next[stream] + kernels.size(), all.kernel_count);
            Group filled(kernels.size());
            for (const GraphConfigNode* kernel : kernels) {
                int id = -1;
                ASSERT_EQ(kernel->getValue(NUXO_KEY_ID, id), StatusOk);
                filled.at(static_cast<size_t>(id)) = {group, kernel,
                                                      all.run_kernels[next[stream] + static_cast<size_t>(id)]};
            }
            next[stream] += kernels.size();
            if (!filled.empty()) mGroups.push_back(std::move(filled));
        }
        ASSERT_FALSE(::testing::Test::HasFailure());
        for (const Group& group : mGroups) collectSinkPorts(group);
    }

    const std::vector<Group>& groups() const { return mGroups; }

    void forEach(const std::function<void(const Filled&)>& check) const
    {
        for (const Group& group : mGroups) {
            for (const Filled& each : group) check(each);
        }
    }

    /// What arrives at a group: what leaves through the port that feeds it, or what comes from the source.
    Size feeding(const Group& group) const
    {
        for (const IGraphConfig* port : nodesOfType(*group.front().group, NUXO_KEY_PORT)) {
            IGraphConfig* peer = nullptr;
            if (GraphCameraUtil::portGetDirection(port) != 0) continue;
            if (GraphCameraUtil::portGetPeer(port, &peer) != StatusOk) continue;
            const auto stored = mLeaving.find(peer);
            if (stored != mLeaving.end()) return stored->second;
        }
        return {mSource.output_width, mSource.output_height};
    }

    const qv_isp_zmt_resolution_info& source() const { return mSource; }

    bool stabilises() const
    {
        int dvs = 0;
        return mGraph->getValue(NUXO_KEY_DVS, dvs) == StatusOk && dvs != 0;
    }

private:
    void collectSinkPorts(const Group& group)
    {
        for (const Filled& each : group) {
            if (each.sinkPort() != nullptr) mLeaving[each.sinkPort()] = each.leaving();
        }
    }

    std::shared_ptr<GraphConfigNode> mGraph;
    ZmtTevUtils mUtils{true};
    qv_isp_zmt_resolution_info mSource = {};
    std::vector<Group> mGroups;
    std::map<const IGraphConfig*, Size> mLeaving;
};

/// Runs a check for every setting whose records are filled without kernel links, and counts what was checked so that nothing passes for want of examples.
class PopulationExamplesTest : public GraphTest {
protected:
    PopulationExamplesTest() { mLog.setMask(kError | kWarning); }

    template <class Check> void forEachSetting(Check&& check)
    {
        ExamplePair pair("kva5");
        for (const GraphConfigNode* setting : pair.settings()) {
            SCOPED_TRACE("setting " + value(*setting, "key"));
            const auto graph = pair.build(*setting);
            if (hasKernelLinks(*graph)) continue;
            Example example(graph);
            clearLog();
            ASSERT_NO_FATAL_FAILURE(example.fill());
            check(example);
        }
    }

    void forEachKernel(const std::function<void(const Filled&)>& check)
    {
        forEachSetting([&check](const Example& example) {
            example.forEach([&check](const Filled& each) {
                SCOPED_TRACE(GraphCameraUtil::getFullName(*each.kernel));
                check(each);
            });
        });
    }

    size_t mChecked = 0;
};

TEST_F(PopulationExamplesTest, NothingIsWrongWithAnySetting)
{
    forEachSetting([this](const Example&) {
        for (const std::string& line : lines()) {
            // progress that is logged as an error
            const bool isProgress = line.rfind("16 inputHistory:", 0) == 0 || line.find(":(iw: ") != std::string::npos;
            EXPECT_TRUE(isProgress || line.rfind("32 Trying to find type", 0) == 0) << line;
        }
        ++mChecked;
    });
    EXPECT_GE(mChecked, 24U);
}

TEST_F(PopulationExamplesTest, EveryKernelHasItsRecordAndAHistory)
{
    forEachKernel([this](const Filled& each) {
        EXPECT_EQ(each.record.kernel_uuid, static_cast<uint32_t>(each.number(NUXO_KEY_PAL_UUID, -1)));
        ASSERT_NE(each.record.resolution_history, nullptr);
        EXPECT_GT(each.arriving().width, 0);
        EXPECT_GT(each.arriving().height, 0);
        ++mChecked;
    });
    EXPECT_GE(mChecked, 24U * 10);
}

TEST_F(PopulationExamplesTest, EachKernelTakesWhatArrives)
{
    forEachKernel([this](const Filled& each) {
        const qv_isp_zmt_resolution_info* const own = each.record.resolution_info;
        if (own == nullptr) return;
        EXPECT_EQ((Size{own->input_width, own->input_height}), each.arriving());
        ++mChecked;
    });
    EXPECT_GE(mChecked, 24U);
}

TEST_F(PopulationExamplesTest, EachKernelGivesWhatItsGraphSays)
{
    forEachKernel([this](const Filled& each) {
        Size output;
        const bool states = each.kernel->getValue(ItemUID{NUXO_KEY_OUTPUT, NUXO_KEY_WIDTH}, output.width) == StatusOk &&
                            each.kernel->getValue(ItemUID{NUXO_KEY_OUTPUT, NUXO_KEY_HEIGHT}, output.height) == StatusOk;
        if (!states) return;
        ASSERT_NE(each.record.resolution_info, nullptr);
        EXPECT_EQ(each.leaving(), output);
        ++mChecked;
    });
    EXPECT_GE(mChecked, 24U);
}

TEST_F(PopulationExamplesTest, SinkPortsHaveTheSizeThatReachesThem)
{
    forEachKernel([this](const Filled& each) {
        const IGraphConfig* const port = each.sinkPort();
        Size stated;
        if (port == nullptr || isOff(*port)) return;
        if (port->getValue(NUXO_KEY_WIDTH, stated.width) != StatusOk) return; // statistics have no size
        ASSERT_EQ(port->getValue(NUXO_KEY_HEIGHT, stated.height), StatusOk);
        EXPECT_EQ(each.leaving(), stated) << port->getName();
        ++mChecked;
    });
    EXPECT_GE(mChecked, 24U);
}

TEST_F(PopulationExamplesTest, GroupsBeginWithWhatFeedsThem)
{
    forEachSetting([this](const Example& example) {
        for (const Group& group : example.groups()) {
            SCOPED_TRACE(group.front().group->getName());
            EXPECT_EQ(group.front().arriving(), example.feeding(group));
            ++mChecked;
        }
    });
    EXPECT_GE(mChecked, 24U);
}

/// What leaves the first kernel of a group that keeps this branch.
Size ofBranch(const Group& group, int branch)
{
    for (const Filled& each : group) {
        if (each.number(NUXO_KEY_BRANCH_POINT, 0) == branch && each.sinkPort() == nullptr) return each.leaving();
    }
    return {};
}

TEST_F(PopulationExamplesTest, KernelsGoOnFromTheOneBeforeOrTheirBranch)
{
    size_t restored = 0;
    forEachSetting([&](const Example& example) {
        for (const Group& group : example.groups()) {
            for (size_t i = 1; i < group.size(); ++i) {
                SCOPED_TRACE(GraphCameraUtil::getFullName(*group[i].kernel));
                if (group[i].hasSource()) continue;
                restored += group[i].restores() ? 1U : 0U;
                EXPECT_EQ(group[i].arriving(), group[i].restores()
                                                   ? ofBranch(group, group[i].number(NUXO_KEY_RESTORE_POINT, -1))
                                                   : group[i - 1].leaving());
                ++mChecked;
            }
        }
    });
    EXPECT_GE(mChecked, 24U * 10);
    EXPECT_GE(restored, 24U);
}

/// One direction of a frame: its size in the source, what is cropped there, and its own size.
struct Span {
    int source;
    int before;
    int after;
    int frame;

    int64_t seen() const { return int64_t{source} - before - after; }
};

Span columns(const qv_isp_zmt_resolution_info& all)
{
    return {all.input_width, all.input_crop.left, all.input_crop.right, all.output_width};
}

Span rows(const qv_isp_zmt_resolution_info& all)
{
    return {all.input_height, all.input_crop.top, all.input_crop.bottom, all.output_height};
}

/// A kernel that takes `own.source` pixels and crops some of them leaves the same share of what the source sees: each crop is
/// rounded down to a pixel of the source, after its factor was rounded down to 1/1024.
void expectShare(const Span& before, const Span& own, const Span& after)
{
    const int64_t cropped = int64_t{own.before} + own.after;
    const double expected = static_cast<double>(before.seen()) * static_cast<double>(own.seen()) / own.source;
    const double rounding = 2.0 + static_cast<double>(std::llabs(cropped)) / 1024;
    EXPECT_GE(static_cast<double>(after.seen()), expected - 1e-6);
    EXPECT_LE(static_cast<double>(after.seen()), expected + rounding);
    EXPECT_EQ(after.source, before.source);
}

TEST_F(PopulationExamplesTest, CropsTellWhichPartOfTheSourceIsSeen)
{
    forEachSetting([this](const Example& example) {
        for (const Group& group : example.groups()) {
            for (size_t i = 1; i < group.size(); ++i) {
                const qv_isp_zmt_resolution_info* const own = group[i - 1].record.resolution_info;
                if (own == nullptr || group[i].restores() || group[i].hasSource()) continue;
                SCOPED_TRACE(GraphCameraUtil::getFullName(*group[i].kernel));
                const qv_isp_zmt_resolution_info& before = *group[i - 1].record.resolution_history;
                const qv_isp_zmt_resolution_info& after = *group[i].record.resolution_history;
                expectShare(columns(before), columns(*own), columns(after));
                expectShare(rows(before), rows(*own), rows(after));
                ++mChecked;
            }
        }
    });
    EXPECT_GE(mChecked, 24U);
}

// Pixels of the source are square and those of every frame nearly so: sizes are rounded to what hardware takes.
TEST_F(PopulationExamplesTest, FramesAreNotDistorted)
{
    forEachKernel([this](const Filled& each) {
        if (each.hasSource()) return;
        const Span x = columns(*each.record.resolution_history);
        const Span y = rows(*each.record.resolution_history);
        EXPECT_GT(x.seen(), 0);
        EXPECT_GT(y.seen(), 0);
        const double ratio = static_cast<double>(x.seen() * y.frame) / static_cast<double>(y.seen() * x.frame);
        EXPECT_NEAR(ratio, 1.0, 0.01);
        ++mChecked;
    });
    EXPECT_GE(mChecked, 24U * 10);
}

TEST_F(PopulationExamplesTest, HistoriesBeginAtThePixelArray)
{
    forEachSetting([this](const Example& example) {
        example.forEach([&](const Filled& each) {
            if (each.hasSource()) return;
            const qv_isp_zmt_resolution_info& history = *each.record.resolution_history;
            EXPECT_EQ((Size{history.input_width, history.input_height}),
                      (Size{example.source().input_width, example.source().input_height}));
            for (const Span& span : {columns(history), rows(history)}) {
                EXPECT_GE(span.before, 0);
                EXPECT_GE(span.after, 0);
            }
            ++mChecked;
        });
    });
    EXPECT_GE(mChecked, 24U * 10);
}

TEST_F(PopulationExamplesTest, StabilisationFollowsTheSetting)
{
    size_t on = 0;
    forEachSetting([&](const Example& example) {
        example.forEach([&](const Filled& each) {
            if (each.record.kernel_uuid != kStabilisation) return;
            EXPECT_EQ(each.record.enable,
                      example.stabilises() ? QV_ISP_ZMT_KERNEL_ENABLED : QV_ISP_ZMT_KERNEL_DISABLED);
            on += example.stabilises() ? 1U : 0U;
            ++mChecked;
        });
    });
    EXPECT_GT(on, 0U);
    EXPECT_GT(mChecked, on);
}

TEST_F(PopulationExamplesTest, KernelsOfDisabledPortsAreOff)
{
    size_t kept = 0;
    forEachKernel([&](const Filled& each) {
        const IGraphConfig* const port = each.sinkPort();
        if (port == nullptr) return;
        if (!isOff(*port)) {
            EXPECT_NE(each.record.enable, QV_ISP_ZMT_KERNEL_DISABLED);
            ++kept;
        } else if (each.number(NUXO_KEY_ENABLED, 1) != 0) {
            EXPECT_EQ(each.record.enable, QV_ISP_ZMT_KERNEL_DISABLED);
            ++mChecked;
        }
    });
    EXPECT_GE(mChecked, 24U);
    EXPECT_GE(kept, 24U);
}

} // namespace

} // namespace graphtest
