// SPDX-License-Identifier: Apache-2.0
#include <query/GraphFixture.h>

#include <algorithm>

using namespace graphtest;

namespace {

Tree parseExample(const std::string& name)
{
    NUXO::NUXOParser parser;
    IGraphConfig* root = nullptr;
    parser.parseNUXOXmlFile((NUXO_SOURCE_DIR "/examples/" + name).c_str(), &root);
    return Tree(dynamic_cast<GraphConfigNode*>(root));
}

size_t countOfType(const GraphConfigNode& node, const std::string& type)
{
    size_t count = 0;
    NUXO::NodeIterator children(&node);
    while (children.iterateNodes(NUXO_KEY_TYPE, type) != nullptr) ++count;
    return count;
}

size_t countOfKey(const GraphConfigNode& node, uint32_t wanted)
{
    return static_cast<size_t>(std::count_if(node.begin(), node.end(), [wanted](const NUXO::ItemEntry& item) {
        return item.first == wanted && item.second->type == GraphConfigItem::NODE;
    }));
}

size_t kernelsOf(const GraphConfigNode& nodes)
{
    size_t count = 0;
    for (const NUXO::ItemEntry& item : nodes) {
        const auto* const node = dynamic_cast<const GraphConfigNode*>(item.second);
        if (node != nullptr) count += countOfType(*node, "kernel");
    }
    return count;
}

class ExampleFiles : public GraphTest, public ::testing::WithParamInterface<std::string> {
protected:
    Tree mDescriptor = parseExample(GetParam() + "_descriptor.xml");
    Tree mSettings = parseExample(GetParam() + "_settings.xml");
};

} // namespace

TEST_P(ExampleFiles, HoldWhatTheirReadmePromises)
{
    ASSERT_NE(mDescriptor, nullptr);
    ASSERT_NE(mSettings, nullptr);
    const GraphConfigNode& nodes = at(*mDescriptor, "nodes");
    EXPECT_GE(nodes.getDescendantCount(), 40);
    EXPECT_GE(kernelsOf(nodes), 100U);
    EXPECT_EQ(countOfType(nodes, "base_node"), 2U);
    EXPECT_GE(countOfType(nodes, "source"), 3U); // sensor, test generator, buffers
    EXPECT_GE(countOfType(nodes, "hw"), 1U);
    const size_t graphs = GetParam() == "kva5" ? 6 : 5; // one more with kernel links
    EXPECT_EQ(countOfKey(at(*mDescriptor, "graphs"), NUXO_KEY_GRAPH), graphs);
    EXPECT_GE(countOfKey(*mSettings, NUXO_KEY_SETTINGS), 24U);
    EXPECT_EQ(countOfKey(at(*mSettings, "sensor_modes"), key("mode")), 6U);
    EXPECT_EQ(lines(), std::vector<std::string>{});
}

TEST_P(ExampleFiles, AreTheSameCompressed)
{
    const Tree descriptor = parseExample(GetParam() + "_descriptor.xml.gz");
    const Tree settings = parseExample(GetParam() + "_settings.xml.gz");
    ASSERT_NE(descriptor, nullptr);
    ASSERT_NE(settings, nullptr);
    EXPECT_EQ(text(*descriptor), text(*mDescriptor));
    EXPECT_EQ(text(*settings), text(*mSettings));
}

TEST_P(ExampleFiles, BuildEverySettingWithoutAnError)
{
    GraphQueryManager manager;
    manager.setGraphDescriptor(mDescriptor.get());
    manager.setGraphSettings(mSettings.get());
    std::vector<IGraphConfig*> settings;
    ASSERT_EQ(manager.queryGraphs({}, settings, true), StatusOk);
    mLog.setMask(kError);
    for (IGraphConfig* const setting : settings) {
        IGraphConfig* graph = nullptr;
        EXPECT_EQ(manager.createGraph(setting, &graph), StatusOk) << text(asNode(setting));
        EXPECT_TRUE(linked(asNode(graph)));
        manager.destroyGraph(graph);
    }
    EXPECT_EQ(lines(), std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(Generations, ExampleFiles, ::testing::Values("kva5", "kva6", "kva7"));
