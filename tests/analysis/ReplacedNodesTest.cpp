// SPDX-License-Identifier: Apache-2.0
// Links whose ends are different children of a group with one full name: the later end takes the place of the first.
#include "analysis/InnerGraphFixture.h"

#include <fstream>
#include <set>
#include <sstream>
#include <string>

namespace graphtest {

namespace {

class ReplacedNodesTest : public GraphStepsTest {
protected:
    static std::string skipped(const std::string& link) { return "Klink " + link + " skipped due to mux config"; }

    /// buffer_src0 -> pg (in -> kernel k -> out) -> video, with more children before these and more links behind.
    void loadGroup(const std::string& children, const std::string& links)
    {
        load(bufferSource("pg:in") +
             group("pg", "stream_id='1'",
                   children + input("in", "buffer_src0:port_0") + output("out", "video") + kernel("k", 11) +
                       klink("in", "k:0") + klink("k:0", "out") + links) +
             sink("video", "stream_id='1' peer='pg:out'") +
             graphOf(connection("buffer_src0:port_0", "pg:in") + connection("pg:out", "video")));
    }
};

// Ports without name are called NA.
const std::string kNamelessPorts = "<input type='port' direction='0'/><output type='port' direction='1'/>";

TEST_F(ReplacedNodesTest, LinkBetweenTwoNamelessPortsIsSkipped)
{
    loadGroup(kNamelessPorts, klink("input", "output"));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_TRUE(logged(2, skipped("input:->output:")));
    EXPECT_TRUE(notLogged("Addded link input:->output:"));
    EXPECT_EQ(innerGraph(1), (Lines{"pg:NA output", "pg:in input > pg:k[]", "pg:k kernel > pg:out[0] < pg:in[0]",
                                    "pg:out output < pg:k[]"}));
    qv_isp_zmt_program_group records = {};
    ASSERT_EQ(mUtil->getTevData(1, records), StatusOk);
    ASSERT_EQ(records.kernel_count, 1U);
    EXPECT_EQ(records.run_kernels[0].resolution_history->output_width, 640);
}

TEST_F(ReplacedNodesTest, EarlierLinksOfAReplacedPortAreCut)
{
    loadGroup(kNamelessPorts, klink("input", "k:1") + klink("k:1", "output"));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_TRUE(logged(2, "Addded link input:->k:1"));
    EXPECT_TRUE(logged(2, "Addded link k:1->output:"));
    EXPECT_EQ(innerGraph(1), (Lines{"pg:NA output < pg:k[]", "pg:in input > pg:k[]",
                                    "pg:k kernel > pg:out[0] > pg:NA[1] < pg:in[0]", "pg:out output < pg:k[]"}));
}

TEST_F(ReplacedNodesTest, LinkOfAReplacedPortMayBeRepeated)
{
    loadGroup(kNamelessPorts, klink("input", "output") + klink("input", "output") + klink("k:1", "output"));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(count(2, skipped("input:->output:")), 2U);
    EXPECT_EQ(innerGraph(1)[0], "pg:NA output < pg:k[]");
}

TEST_F(ReplacedNodesTest, PortTakesThePlaceOfTheKernelOfItsName)
{
    loadGroup(port("twin", "direction='1'") + kernel("twin", 12), klink("k:1", "twin:0") + klink("twin:0", "twin"));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_TRUE(logged(2, "Addded link k:1->twin:0"));
    EXPECT_TRUE(logged(2, skipped("twin:0->twin:")));
    EXPECT_EQ(innerGraph(1), (Lines{"pg:in input > pg:k[]", "pg:k kernel > pg:out[0] < pg:in[0]",
                                    "pg:out output < pg:k[]", "pg:twin output"}));
    clearLog();
    qv_isp_zmt_program_group records = {};
    EXPECT_EQ(mUtil->getPgTevData(node("pg"), records), StatusBadArgument); // the kernel is still one of the group
    EXPECT_TRUE(logged(16, "Could not find the record of kernel[pg:twin]"));
}

TEST_F(ReplacedNodesTest, PortThatIsItsOwnSinkIsLinkedWithItself)
{
    loadGroup(kNamelessPorts, klink("input", "input"));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_TRUE(logged(2, "Addded link input:->input:"));
    EXPECT_EQ(innerGraph(1)[0], "pg:NA output > pg:NA[] < pg:NA[]");
}

/// The example graphs with one more link, both ends of which are nodes without name.
class ReplacedExampleNodesTest : public BuildTest {
protected:
    static std::string contents(const std::string& name)
    {
        std::ifstream file(NUXO_SOURCE_DIR "/examples/kva6_" + name);
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }

    void point(const std::string& descriptor)
    {
        mDescriptor = parse(descriptor);
        mSettings = parse(contents("settings.xml"));
        mManager.setGraphDescriptor(mDescriptor.get());
        mManager.setGraphSettings(mSettings.get());
    }

    /// The records of the graphs of all settings as text. Counts the graphs that skipped the link.
    Lines analyseAll(size_t& skipped)
    {
        Lines all;
        for (const NUXO::ItemEntry& item : *mSettings) {
            if (item.first != NUXO_KEY_SETTINGS || item.second->type != GraphConfigItem::NODE) continue;
            mManager.destroyGraph(mGraph);
            mGraph = nullptr;
            EXPECT_EQ(mManager.createGraph(static_cast<GraphConfigNode*>(item.second), &mGraph), StatusOk);
            clearLog();
            GraphUtil util;
            EXPECT_EQ(util.init(NUXO_KEY_STREAM_ID, mGraph, GdfVersionKVA6), StatusOk);
            skipped += count(2, "Klink cipf:->klink: skipped due to mux config");
            std::set<int> ids;
            util.getAvailableSubgraphs(ids);
            for (const int id : ids) {
                qv_isp_zmt_program_group records = {};
                EXPECT_EQ(util.getTevData(id, records), StatusOk);
                for (uint32_t i = 0; i < records.kernel_count; ++i) all.push_back(text(records.run_kernels[i]));
            }
        }
        return all;
    }

    static std::string text(const qv_isp_zmt_run_kernels& record)
    {
        return std::to_string(record.kernel_uuid) + " " + std::to_string(record.enable) + " " +
               std::to_string(record.resolution_history->output_width);
    }
};

TEST_F(ReplacedExampleNodesTest, LinkBetweenNamelessNodesChangesNoRecord)
{
    mLog.setMask(kDebug);
    const std::string original = contents("descriptor.xml");
    std::string changed = original;
    const size_t place = changed.find("<klink", changed.find("<program_group name=\"vid_color\""));
    ASSERT_NE(place, std::string::npos);
    changed.insert(place, "<klink source=\"cipf\" destination=\"klink\"/>");

    size_t skipped = 0;
    point(original);
    const Lines expected = analyseAll(skipped);
    ASSERT_GT(expected.size(), 50U);
    EXPECT_EQ(skipped, 0U);
    mManager.destroyGraph(mGraph);
    mGraph = nullptr;
    point(changed);
    EXPECT_EQ(analyseAll(skipped), expected);
    EXPECT_GT(skipped, 0U);
}

} // namespace

} // namespace graphtest
