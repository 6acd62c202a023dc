// SPDX-License-Identifier: Apache-2.0
#include "query/GraphFixture.h"

namespace graphtest {

namespace {

using NUXO::GraphCameraUtil;

class NodeTextTest : public GraphTest {
protected:
    std::string printed(const std::string& body, const std::string& path)
    {
        mRoot = tree(body);
        clearLog();
        const std::string text = GraphCameraUtil::print(&at(*mRoot, path));
        EXPECT_TRUE(loggedExactly({}));
        return text;
    }

    Tree mRoot;
};

TEST_F(NodeTextTest, PortsKernelsMuxesAndDemuxesPrintTheirFullName)
{
    for (const std::string type : {"port", "kernel", "mux", "demux"}) {
        EXPECT_EQ(printed("<hw name=\"isp\"><k name=\"x\" type=\"" + type + "\"/></hw>", "hw:k"), type + "[isp:x]");
    }
}

TEST_F(NodeTextTest, OtherNodesPrintTheirOwnName)
{
    for (const std::string type : {"hw", "split", "Port", "ports", "kernels", ""}) {
        EXPECT_EQ(printed("<hw name=\"isp\"><k name=\"x\" type=\"" + type + "\"/></hw>", "hw:k"), type + "[k]");
    }
}

TEST_F(NodeTextTest, NodeWithoutATextTypePrintsAsNode)
{
    EXPECT_EQ(printed("<hw name=\"isp\"/>", "hw"), "NODE[hw]");
    at(*mRoot, "hw").addValue(NUXO_KEY_TYPE, 34);
    EXPECT_EQ(GraphCameraUtil::print(&at(*mRoot, "hw")), "NODE[hw]");
    EXPECT_EQ(GraphCameraUtil::print(mRoot.get()), "NODE[NA]");
}

TEST_F(NodeTextTest, MissingNamesPrintAsNA)
{
    EXPECT_EQ(printed("<hw><k type=\"port\" name=\"x\"/></hw>", "hw:k"), "port[NA:x]");
    EXPECT_EQ(printed("<hw name=\"isp\"><k type=\"port\"/></hw>", "hw:k"), "port[isp:NA]");
    EXPECT_EQ(printed("<hw><k type=\"port\"/></hw>", "hw:k"), "port[NA:NA]");
}

TEST_F(NodeTextTest, FullNameJoinsTheNamesOfParentAndNode)
{
    mRoot = tree("<hw name=\"isp\"><port name=\"out\"/><port/></hw>");
    EXPECT_EQ(GraphCameraUtil::getFullName(at(*mRoot, "hw:port")), "isp:out");
    EXPECT_EQ(GraphCameraUtil::getFullName(at(*mRoot, "hw")), "NA:isp"); // the root has no name
    EXPECT_EQ(GraphCameraUtil::getFullName(*mRoot), "NA:NA");            // and no parent
    at(*mRoot, "hw").removeDescendant(NUXO_KEY_NAME);
    at(*mRoot, "hw").addValue(NUXO_KEY_NAME, 7); // not a text
    EXPECT_EQ(GraphCameraUtil::getFullName(at(*mRoot, "hw:port")), "NA:out");
}

TEST_F(NodeTextTest, EmptyNamesAreNames)
{
    mRoot = tree("<hw name=\"\"><port name=\"\"/></hw>");
    EXPECT_EQ(GraphCameraUtil::getFullName(at(*mRoot, "hw:port")), ":");
}

TEST_F(NodeTextTest, TreeIsDumpedItemByItemAsErrors)
{
    mRoot = tree("<hw name=\"isp\" pg_id=\"4\"><port width=\"2\"/></hw>");
    at(*mRoot, "hw").insertDescendant(new GraphConfigItem, NUXO_KEY_VALUE);
    clearLog();
    GraphCameraUtil::dumpNodeTree(mRoot.get(), 0);
    EXPECT_TRUE(
        loggedExactly({"16 'hw'(21) [Node]", "16   'name' str [Attr] 'isp'", "16   'port'(34) [Node]",
                       "16     'width'(8232) int [Attr] '2'", "16 type?", "16   'pg_id'(8218) int [Attr] '4'"}));
}

TEST_F(NodeTextTest, DumpStartsAtTheGivenDepth)
{
    mRoot = tree("<hw/>");
    clearLog();
    GraphCameraUtil::dumpNodeTree(mRoot.get(), 2);
    EXPECT_TRUE(loggedExactly({"16     'hw'(21) [Node]"}));
}

TEST_F(NodeTextTest, NothingToDumpPrintsNothing)
{
    const GraphConfigNode empty;
    GraphCameraUtil::dumpNodeTree(&empty, 0);
    GraphCameraUtil::dumpNodeTree(nullptr, 0);
    EXPECT_TRUE(loggedExactly({}));
}

} // namespace

} // namespace graphtest
