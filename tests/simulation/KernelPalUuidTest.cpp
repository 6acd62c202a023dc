// SPDX-License-Identifier: Apache-2.0
#include "simulation/SimulationFixture.h"

namespace graphtest {

namespace {

class KernelPalUuidTest : public GraphTest {
protected:
    KernelPalUuidTest()
    {
        load(R"(<source name="sensor"/>
                <program_group name="pg_a">
                  <port name="in"/>
                  <kernel name="crop" pal_uuid="11"/>
                  <kernel name="scale" pal_uuid="12"/>
                </program_group>
                <program_group name="pg_b">
                  <kernel name="scale" pal_uuid="21"/>
                  <kernel name="tone" pal_uuid="-22"/>
                </program_group>)");
    }

    /// A descriptor with these nodes.
    void load(const std::string& nodes) { mRoot = descriptor("<nodes>" + nodes + "</nodes>"); }

    int uuidOf(const std::string& name) { return uuidIn(mRoot.get(), name); }

    int uuidIn(const IGraphConfig* node, const std::string& name)
    {
        clearLog();
        mUuid = kUnwritten;
        return ZmtTevSimUtils::getKernelPalUuid(node, name, mUuid);
    }

    /// There must be no kernel of this name.
    void expectNone(const std::string& name)
    {
        EXPECT_EQ(uuidOf(name), StatusNotFound) << name;
        EXPECT_TRUE(loggedExactly({sim("16 Couldn't find " + name)}));
        EXPECT_EQ(mUuid, kUnwritten);
    }

    static constexpr int kUnwritten = 777;

    Tree mRoot;
    int mUuid = kUnwritten;
};

TEST_F(KernelPalUuidTest, KernelIsFoundByItsName)
{
    EXPECT_EQ(uuidOf("crop"), StatusOk);
    EXPECT_EQ(mUuid, 11);
    EXPECT_EQ(uuidOf("tone"), StatusOk);
    EXPECT_EQ(mUuid, -22);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelPalUuidTest, FirstOfSeveralOfOneNameCounts)
{
    EXPECT_EQ(uuidOf("scale"), StatusOk);
    EXPECT_EQ(mUuid, 12);
    load(R"(<program_group name="pg"><kernel name="k" pal_uuid="1"/><kernel name="k" pal_uuid="2"/></program_group>)");
    EXPECT_EQ(uuidOf("k"), StatusOk);
    EXPECT_EQ(mUuid, 1);
}

TEST_F(KernelPalUuidTest, NameIsComparedExactly)
{
    for (const char* name : {"Crop", "cro", "crop ", "pg_a", "kernel", "in"}) expectNone(name);
}

TEST_F(KernelPalUuidTest, OnlyKernelsOfProgramGroupsCount)
{
    load(R"(<kernel name="k"/><hw name="csi_be"><kernel name="k" pal_uuid="1"/></hw>
            <base_node name="base" base_type="program_group"><kernel name="k" pal_uuid="2"/></base_node>
            <compute_block name="cb"><kernel name="k" pal_uuid="3"/></compute_block>
            <program_group name="pg"><port name="k" pal_uuid="4"/><node name="k" type="Kernel" pal_uuid="5"/>
            </program_group>)");
    expectNone("k");
}

TEST_F(KernelPalUuidTest, ProgramGroupsAndKernelsAreFoundAtAnyDepth)
{
    load(R"(<hw name="outer"><hw name="inner">
              <program_group name="pg"><hw name="part"><kernel name="k" pal_uuid="5"/></hw></program_group>
            </hw></hw>)");
    EXPECT_EQ(uuidOf("k"), StatusOk);
    EXPECT_EQ(mUuid, 5);
}

TEST_F(KernelPalUuidTest, BuiltGraphsAreSearchedToo)
{
    // Nodes of a built graph stand directly below its root, and names of kernels need not be those they are filed under.
    mRoot = tree(R"(<pg type="program_group"><k type="kernel" name="crop" pal_uuid="6"/></pg>)");
    EXPECT_EQ(uuidOf("crop"), StatusOk);
    EXPECT_EQ(mUuid, 6);
    expectNone("k");
}

TEST_F(KernelPalUuidTest, AnyNodeLeadsToTheRoot)
{
    EXPECT_EQ(uuidIn(&at(*mRoot, "nodes:sensor"), "crop"), StatusOk);
    EXPECT_EQ(mUuid, 11);
}

TEST_F(KernelPalUuidTest, KernelWithoutAnIdentityIsReportedAndEndsTheSearch)
{
    load(R"(<program_group name="pg"><kernel name="k"/><kernel name="k" pal_uuid="2"/></program_group>)");
    EXPECT_EQ(uuidOf("k"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({sim("16 Couldn't get pal uuid for k")}));
    EXPECT_EQ(mUuid, kUnwritten);

    at(*mRoot, "nodes:pg:k").addValue(NUXO_KEY_PAL_UUID, std::string("1"));
    EXPECT_EQ(uuidOf("k"), StatusNotFound);
    EXPECT_TRUE(loggedExactly({sim("16 Couldn't get pal uuid for k")}));
    EXPECT_EQ(mUuid, kUnwritten);
}

TEST_F(KernelPalUuidTest, KernelsWithoutAReadableNameArePassedOver)
{
    mRoot = tree(R"(<pg type="program_group"><a type="kernel" pal_uuid="1"/><b type="kernel" pal_uuid="2"/>
                    <c type="kernel" name="wanted" pal_uuid="3"/></pg>)");
    at(*mRoot, "pg:b").addValue(NUXO_KEY_NAME, 5);
    EXPECT_EQ(uuidOf("wanted"), StatusOk);
    EXPECT_EQ(mUuid, 3);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelPalUuidTest, NoDescriptorAndForeignOnesHoldNoKernel)
{
    EXPECT_EQ(uuidIn(nullptr, "crop"), StatusBadArgument);
    EXPECT_EQ(mUuid, kUnwritten);
    const ForeignNode rootless;
    EXPECT_LT(uuidIn(&rootless, "crop"), StatusOk);
    EXPECT_EQ(mUuid, kUnwritten);
    const ForeignRoot foreign({});
    EXPECT_LT(uuidIn(&foreign, "crop"), StatusOk);
    EXPECT_EQ(mUuid, kUnwritten);
}

TEST_F(KernelPalUuidTest, DescriptorStaysAsItWas)
{
    const std::string before = text(*mRoot);
    EXPECT_EQ(uuidOf("tone"), StatusOk);
    EXPECT_EQ(text(*mRoot), before);
}

} // namespace

} // namespace graphtest
