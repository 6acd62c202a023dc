// SPDX-License-Identifier: Apache-2.0
#include "camera/ContextFixture.h"
#include "frame_params/ForwardingNode.h"
#include "records/Resolutions.h"

namespace graphtest {

namespace {

using NUXO::ZmtTevUtils;
using Resolutions = std::map<std::string, qv_isp_zmt_resolution_info>;

constexpr const char* kInput = "<input width='100' height='50' left='1' top='2' right='3' bottom='4'/>";
constexpr const char* kOutput = "<output width='90' height='40' left='5' top='6' right='7' bottom='8'/>";
constexpr qv_isp_zmt_resolution_info kComplete = {100, 50, {1, 2, 3, 4}, 90, 40, {5, 6, 7, 8}};

class KernelResolutionsTest : public ContextTest {
protected:
    void loadKernel(const std::string& children) { load(element("kernel", "k", "", children)); }

    /// The resolution of a kernel with these children; zero unless it succeeds.
    int readOne(const std::string& children)
    {
        loadKernel(children);
        return readOne(node("k"));
    }

    int readOne(const IGraphConfig* kernel)
    {
        mOne = counting(1000);
        const int status = ZmtTevUtils::kernelGetResolutions(kernel, mOne);
        if (status != StatusOk) expectOne({});
        return status;
    }

    void expectOne(const qv_isp_zmt_resolution_info& expected) const { EXPECT_EQ(text(mOne), text(expected)); }

    /// The outputs as "key width key width ...", which must be there.
    std::string outputsOf(const std::string& children)
    {
        loadKernel(children);
        Resolutions all;
        EXPECT_EQ(ZmtTevUtils::kernelGetResolutions(node("k"), all), StatusOk);
        std::string written;
        for (const auto& [name, resolution] : all) {
            EXPECT_EQ(resolution.input_width, 100);
            written += (written.empty() ? "" : " ") + name + " " + std::to_string(resolution.output_width);
        }
        return written;
    }

    int statusOfAll(const std::string& children)
    {
        loadKernel(children);
        Resolutions all;
        return ZmtTevUtils::kernelGetResolutions(node("k"), all);
    }

    bool has(const std::string& children)
    {
        loadKernel(children);
        return ZmtTevUtils::kernelHasResolutions(node("k"));
    }

    qv_isp_zmt_resolution_info mOne{};
};

TEST_F(KernelResolutionsTest, KernelHasThemWithAWidthOnBothSides)
{
    EXPECT_TRUE(has("<input width='1'/><output width='2'/>"));
    EXPECT_TRUE(has("<input width='0'/><output width='-2'/>"));
    EXPECT_FALSE(has(""));
    EXPECT_FALSE(has("<input width='1'/>"));
    EXPECT_FALSE(has("<output width='2'/>"));
    EXPECT_FALSE(has("<input height='1'/><output width='2'/>"));
    EXPECT_FALSE(has("<input width='1'/><output/>"));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelResolutionsTest, KernelHasThemWithChildrenOfItsOutput)
{
    EXPECT_TRUE(has("<input width='1'/><output><node name='a'/></output>"));
    EXPECT_TRUE(has("<input width='1'/><output bpp='8'><node name='a' width='4'/></output>"));
    EXPECT_FALSE(has("<input width='1'/><output bpp='8' height='9' left='1'/>")); // attributes are no children
    EXPECT_FALSE(has("<input/><output><node name='a'/></output>"));
    EXPECT_FALSE(has("<input><node name='a'/></input><output width='2'/>"));
}

TEST_F(KernelResolutionsTest, SidesThatAreNoNodesOrNoNumbersAreNone)
{
    loadKernel("<input width='1'/><output width='2'/>");
    replace(*node("k:output"), NUXO_KEY_WIDTH, "2");
    EXPECT_FALSE(ZmtTevUtils::kernelHasResolutions(node("k")));
    loadKernel("<input width='1'/><output width='2'/>");
    replace(*node("k:input"), NUXO_KEY_WIDTH, "1");
    EXPECT_FALSE(ZmtTevUtils::kernelHasResolutions(node("k")));
    loadKernel("<input width='1'/>");
    replace(*node("k"), NUXO_KEY_OUTPUT, 5);
    EXPECT_FALSE(ZmtTevUtils::kernelHasResolutions(node("k")));
    EXPECT_EQ(readOne(node("k")), StatusMissingData);
}

TEST_F(KernelResolutionsTest, NullKernelHasNone)
{
    EXPECT_FALSE(ZmtTevUtils::kernelHasResolutions(nullptr));
    EXPECT_EQ(readOne(nullptr), StatusBadArgument);
    Resolutions all;
    EXPECT_EQ(ZmtTevUtils::kernelGetResolutions(nullptr, all), StatusBadArgument);
    EXPECT_TRUE(all.empty());
}

TEST_F(KernelResolutionsTest, AllTwelveNumbersAreRead)
{
    EXPECT_EQ(readOne(std::string(kInput) + kOutput), StatusOk);
    expectOne(kComplete);
    Resolutions all;
    EXPECT_EQ(ZmtTevUtils::kernelGetResolutions(node("k"), all), StatusOk);
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all.begin()->first, "0"); // neither id nor name
    EXPECT_EQ(text(all.begin()->second), text(kComplete));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelResolutionsTest, AbsentCropsAreZero)
{
    EXPECT_EQ(readOne("<input width='100' height='50'/><output width='90' height='40'/>"), StatusOk);
    expectOne({100, 50, {}, 90, 40, {}});
    EXPECT_EQ(readOne("<input width='100' height='50' top='2'/><output width='90' height='40' right='7'/>"), StatusOk);
    expectOne({100, 50, {0, 2, 0, 0}, 90, 40, {0, 0, 7, 0}}); // each for itself
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelResolutionsTest, SizesOfTheInputAreDemanded)
{
    for (const char* input : {"", "<input/>", "<input height='50'/>", "<input width='100'/>"}) {
        EXPECT_EQ(readOne(std::string(input) + kOutput), StatusMissingData) << input;
        EXPECT_EQ(statusOfAll(std::string(input) + kOutput), StatusMissingData) << input;
    }
    loadKernel(std::string(kInput) + kOutput);
    replace(*node("k:input"), NUXO_KEY_HEIGHT, "50");
    EXPECT_EQ(readOne(node("k")), StatusMissingData);
}

TEST_F(KernelResolutionsTest, HeightOfAnOutputIsDemanded)
{
    EXPECT_EQ(readOne(std::string(kInput) + "<output width='90'/>"), StatusMissingData);
    EXPECT_EQ(statusOfAll(std::string(kInput) + "<output width='90'/>"), StatusMissingData);
    const std::string child = "<output><node name='a' width='90'/></output>";
    EXPECT_EQ(readOne(kInput + child), StatusMissingData);
    EXPECT_EQ(statusOfAll(kInput + child), StatusMissingData);
}

TEST_F(KernelResolutionsTest, KernelWithoutOutputsHasNone)
{
    for (const char* output :
         {"", "<output/>", "<output height='40'/>", "<output><node name='a' height='1'/></output>"}) {
        EXPECT_EQ(readOne(std::string(kInput) + output), StatusMissingData) << output;
        EXPECT_EQ(outputsOf(std::string(kInput) + output), "") << output;
    }
}

TEST_F(KernelResolutionsTest, OutputsAreCalledByTheirIdOrName)
{
    const std::string size = "width='90' height='40' ";
    EXPECT_EQ(outputsOf(kInput + ("<output " + size + "id='7'/>")), "7 90");
    EXPECT_EQ(outputsOf(kInput + ("<output " + size + "id='-7'/>")), "-7 90");
    EXPECT_EQ(outputsOf(kInput + ("<output><node name='main' " + size + "/></output>")), "main 90");
    EXPECT_EQ(outputsOf(kInput + ("<output><node name='main' " + size + "id='3'/></output>")), "3 90");
}

TEST_F(KernelResolutionsTest, IdThatIsNoNumberLeavesTheName)
{
    loadKernel(kInput + std::string("<output><node name='main' width='90' height='40' id='3'/></output>"));
    replace(*node("k:output:main"), NUXO_KEY_ID, "3");
    Resolutions all;
    EXPECT_EQ(ZmtTevUtils::kernelGetResolutions(node("k"), all), StatusOk);
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all.begin()->first, "main");
}

TEST_F(KernelResolutionsTest, EveryOutputCounts)
{
    const std::string outputs = "<output width='90' height='40' id='2'/><output width='80' height='30' id='1'/>";
    EXPECT_EQ(outputsOf(kInput + outputs), "1 80 2 90");
    EXPECT_EQ(readOne(kInput + outputs), StatusOk);
    expectOne({100, 50, {1, 2, 3, 4}, 90, 40, {}}); // the first of the graph, not of the map
}

TEST_F(KernelResolutionsTest, ChildrenCountWhereAnOutputHasNoWidth)
{
    // The second has a width of its own, so that its child does not count; of the first the middle child has none.
    const std::string outputs = "<output><node name='a' width='90' height='40' left='5'/><node name='b' height='1'/>"
                                "<node name='c' width='70' height='20'/></output>"
                                "<output width='60' height='10' id='9'><node name='d' width='1' height='1'/></output>";
    EXPECT_EQ(outputsOf(kInput + outputs), "9 60 a 90 c 70");
    EXPECT_EQ(readOne(kInput + outputs), StatusOk);
    expectOne({100, 50, {1, 2, 3, 4}, 90, 40, {5, 0, 0, 0}});
}

TEST_F(KernelResolutionsTest, FirstOfEqualNamesCounts)
{
    EXPECT_EQ(outputsOf(std::string(kInput) + "<output width='90' height='40' id='2'/>"
                                              "<output width='80' height='30' id='2'/>"),
              "2 90");
    EXPECT_EQ(outputsOf(std::string(kInput) + "<output width='90' height='40'/><output width='80' height='30'/>"),
              "0 90");
}

TEST_F(KernelResolutionsTest, LaterOutputThatIsIncompleteFailsTheMap)
{
    EXPECT_EQ(statusOfAll(std::string(kInput) + kOutput + "<output width='80'/>"), StatusMissingData);
}

TEST_F(KernelResolutionsTest, NumbersAreTakenAsTheyAre)
{
    EXPECT_EQ(readOne("<input width='-1' height='0'/><output width='2147483647' height='-2147483648'/>"), StatusOk);
    expectOne({-1, 0, {}, 2147483647, -2147483647 - 1, {}});
}

TEST_F(KernelResolutionsTest, KernelOfAnotherImplementationNeverGivesHalfARecord)
{
    MockNode empty;
    EXPECT_FALSE(ZmtTevUtils::kernelHasResolutions(&empty));
    EXPECT_EQ(readOne(&empty), StatusMissingData);

    loadKernel(std::string(kInput) + kOutput);
    ForwardingNode root(*mRoot);
    const IGraphConfig* const kernel = root.getDescendantByString("k");
    ASSERT_NE(kernel, nullptr);
    EXPECT_TRUE(ZmtTevUtils::kernelHasResolutions(kernel));
    if (readOne(kernel) == StatusOk) expectOne(kComplete); // its outputs need not be found, since nothing lists them
}

} // namespace

} // namespace graphtest
