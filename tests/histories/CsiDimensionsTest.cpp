// SPDX-License-Identifier: Apache-2.0
#include "camera/MockNode.h"
#include "histories/SourceFixture.h"

namespace graphtest {

namespace {

constexpr qv_isp_zmt_resolution_info kRecord = {1036, 766, {7, 9, 13, 17}, 1020, 740, {}};

class CsiDimensionsTest : public SourceTest {
protected:
    CsiDimensionsTest() { loadSensor(); }

    int read() { return readOf(node("sensor:port_0")); }

    int readOf(IGraphConfig& port)
    {
        mCsi = counting(1000);
        clearLog();
        return ZmtTevUtils::getCsiDimensions(port, mCsi);
    }

    /// Connects the sensor to a back end with this content.
    void loadBackEnd(const std::string& body)
    {
        load(sensor("") + R"(<csi_be type="hw" name="csi_be"><in type="port" name="in"/>)" + body + "</csi_be>");
    }

    void expectRecord(const qv_isp_zmt_resolution_info& expected) const { EXPECT_EQ(text(mCsi), text(expected)); }

    /// The port leads to no back end: the record is zero, which is no failure.
    void expectNothing()
    {
        EXPECT_EQ(read(), StatusOk);
        expectRecord({});
    }

    qv_isp_zmt_resolution_info mCsi{};
};

TEST_F(CsiDimensionsTest, InputAndOutputOfTheBackEndAreRead)
{
    EXPECT_EQ(read(), StatusOk);
    expectRecord(kRecord);
    EXPECT_TRUE(loggedExactly({"2 input: (iw: 1036 ih: 766 (l: 7, t: 9, r: 13, b: 17),ow: 0, oh: 0 "
                               "(l: 0, t: 0, r: 0, b: 0)",
                               "2 csi_be OUT w: 1020, h: 740----"}));
}

TEST_F(CsiDimensionsTest, CropOfTheOutputIsNotRead)
{
    for (const char* side : {"left", "top", "right", "bottom"}) replace(std::string("csi_be:output:") + side, 66);
    EXPECT_EQ(read(), StatusOk);
    expectRecord(kRecord);
}

TEST_F(CsiDimensionsTest, RightAndBottomAreThoseOfTheOppositeSideWhenAbsent)
{
    remove("csi_be:zmt_pixelformatter:input:right");
    EXPECT_EQ(read(), StatusOk);
    expectRecord({1036, 766, {7, 9, 7, 17}, 1020, 740, {}});
    replaceByText("csi_be:zmt_pixelformatter:input:bottom");
    EXPECT_EQ(read(), StatusOk);
    expectRecord({1036, 766, {7, 9, 7, 9}, 1020, 740, {}});
}

TEST_F(CsiDimensionsTest, StreamToMemoryIsTheInputWithoutAPixelFormatter)
{
    loadBackEnd(R"(<stream2mmio><input width="64" height="32" left="1" top="2"/></stream2mmio>
                   <output width="60" height="30"/>)");
    EXPECT_EQ(read(), StatusOk);
    expectRecord({64, 32, symmetric(1, 2), 60, 30, {}});
}

TEST_F(CsiDimensionsTest, PixelFormatterComesFirst)
{
    loadBackEnd(R"(<stream2mmio><input width="64" height="32" left="1" top="2"/></stream2mmio>
                   <zmt_pixelformatter><input width="164" height="132" left="11" top="12"/></zmt_pixelformatter>
                   <output width="60" height="30"/>)");
    EXPECT_EQ(read(), StatusOk);
    expectRecord({164, 132, symmetric(11, 12), 60, 30, {}});
    remove("csi_be:zmt_pixelformatter:input");
    EXPECT_EQ(read(), StatusOk);
    expectRecord({64, 32, symmetric(1, 2), 60, 30, {}});
}

TEST_F(CsiDimensionsTest, OutputIsReadWithoutAnInput)
{
    loadBackEnd(R"(<output width="60" height="30"/>)");
    EXPECT_EQ(read(), StatusOk);
    expectRecord({0, 0, {}, 60, 30, {}});
    EXPECT_TRUE(loggedExactly({"2 csi_be OUT w: 60, h: 30----"}));
}

TEST_F(CsiDimensionsTest, SizeAndLeftAndTopOfTheInputAreDemanded)
{
    const std::pair<std::string, std::string> numbers[] = {
        {"width", "width"}, {"height", "height"}, {"left", "left crop"}, {"top", "top crop"}};
    for (const auto& [name, spoken] : numbers) {
        const std::string path = "csi_be:zmt_pixelformatter:input:" + name;
        const Lines expected = {"16 Error: Couldn't get " + spoken, "16 Failed to get input dimensions and crop"};
        loadSensor();
        remove(path);
        EXPECT_EQ(read(), StatusNotFound) << name;
        EXPECT_TRUE(loggedExactly(expected)) << name;
        replaceByText(path);
        EXPECT_EQ(read(), StatusNotFound) << name;
        EXPECT_TRUE(loggedExactly(expected)) << name;
    }
}

TEST_F(CsiDimensionsTest, OutputIsDemanded)
{
    remove("csi_be:output");
    EXPECT_EQ(read(), StatusMissingObject);
    EXPECT_EQ(lines().back(), "16 Failed to get output node for csi_be");
    replace("csi_be:output", 4); // an attribute is none
    EXPECT_EQ(read(), StatusMissingObject);
    EXPECT_EQ(lines().back(), "16 Failed to get output node for csi_be");
    EXPECT_EQ(mLog.count(LogCapture::Error), 1U);
}

TEST_F(CsiDimensionsTest, SizeOfTheOutputIsDemanded)
{
    for (const std::string name : {"width", "height"}) {
        loadBackEnd(R"(<output width="60" height="30"/>)");
        const Lines expected = {"16 Error: Couldn't get " + name, "16 Failed to get csi be output dimensions"};
        remove("csi_be:output:" + name);
        EXPECT_EQ(read(), StatusNotFound);
        EXPECT_TRUE(loggedExactly(expected)) << name;
        replaceByText("csi_be:output:" + name);
        EXPECT_EQ(read(), StatusNotFound);
        EXPECT_TRUE(loggedExactly(expected)) << name;
    }
}

TEST_F(CsiDimensionsTest, PortThatLeadsNowhereHasNoBackEnd)
{
    remove("sensor:port_0:peer");
    expectNothing();
    EXPECT_EQ(mLog.count(LogCapture::Error), 0U);

    loadSensor();
    replace("sensor:port_0:enabled", 0);
    expectNothing();
    EXPECT_TRUE(loggedExactly({}));

    loadSensor();
    replace("sensor:port_0:private", 1);
    expectNothing();
    EXPECT_TRUE(loggedExactly({}));

    load(sensor("")); // the back end is missing
    expectNothing();
    EXPECT_TRUE(loggedExactly({"16 Failed to find peer by name csi_be:in"}));
}

TEST_F(CsiDimensionsTest, PeerWithoutAParentHasNoBackEnd)
{
    MockConnection mock;
    mock.peer.mAncestor = nullptr;
    EXPECT_EQ(readOf(mock.port), StatusOk);
    expectRecord({});
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(CsiDimensionsTest, BackEndOfAnotherImplementationIsAskedThroughTheInterface)
{
    MockConnection mock;
    EXPECT_EQ(readOf(mock.port), StatusMissingObject);
    EXPECT_TRUE(loggedExactly({"16 Failed to get output node for foreign"}));

    MockNode input;
    input.mIntegers = {{NUXO_KEY_WIDTH, 64}, {NUXO_KEY_HEIGHT, 32}, {NUXO_KEY_LEFT, 1}, {NUXO_KEY_TOP, 2}};
    mock.next.mDescendants["stream2mmio:input"] = &input;
    EXPECT_EQ(readOf(mock.port), StatusMissingObject);
    EXPECT_TRUE(loggedExactly({"2 foreign: (iw: 64 ih: 32 (l: 1, t: 2, r: 1, b: 2),ow: 0, oh: 0 "
                               "(l: 0, t: 0, r: 0, b: 0)",
                               "16 Failed to get output node for foreign"}));
}

} // namespace

} // namespace graphtest
