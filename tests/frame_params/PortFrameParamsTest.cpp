// SPDX-License-Identifier: Apache-2.0
#include "frame_params/ForwardingNode.h"
#include "frame_params/FrameParamsFixture.h"

#include "query/ForeignNode.h"

namespace graphtest {

namespace {

class PortFrameParamsTest : public FrameParamsTest {
protected:
    std::string missing(const std::string& name) const
    {
        return lum("16 Error: Couldn't get port \"" + name + "\" node from the graph");
    }

    std::string unsized(const std::string& name) const
    {
        return lum("16 Failed to get dimension for port \"" + name + "\" node");
    }

    std::shared_ptr<GraphConfigNode> mGraph = sharedGraph("<vf_out><main_out width=\"1920\" height=\"1080\"/></vf_out>"
                                                          "<video_sink width=\"1280\" height=\"720\"/>");
};

TEST(FrameParamsRecord, HasFixedPlacesAndSizes)
{
    // Four 16-bit fields from 0 on, then four bytes.
    EXPECT_EQ(sizeof(qv_lum_frame_params), 12U);
    const qv_lum_frame_params params{0x0102, 0x0304, 0x0506, 0x0708, 0x09, 0x0a, 0x0b, 0x0c};
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&params);
    const uint16_t words[] = {0x0102, 0x0304, 0x0506, 0x0708};
    EXPECT_EQ(std::memcmp(bytes, words, sizeof(words)), 0);
    const unsigned char rest[] = {0x09, 0x0a, 0x0b, 0x0c};
    EXPECT_EQ(std::memcmp(bytes + 8, rest, sizeof(rest)), 0);
    // 16-bit and 8-bit alignment only, so that the record can be embedded anywhere at an even address.
    EXPECT_EQ(alignof(qv_lum_frame_params), alignof(uint16_t));
}

TEST_F(PortFrameParamsTest, PortGivesItsSizeUncroppedAndUnscaled)
{
    EXPECT_EQ(port(mGraph, "vf_out:main_out"), StatusOk);
    EXPECT_EQ(text(mParams), "0,0 1920x1080 1/1 1/1");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortFrameParamsTest, NodeOfTheRootIsAPortToo)
{
    EXPECT_EQ(port(mGraph, "video_sink"), StatusOk);
    EXPECT_EQ(text(mParams), "0,0 1280x720 1/1 1/1");
}

TEST_F(PortFrameParamsTest, CropOfThePortPlaysNoPart)
{
    mGraph = sharedGraph(R"(<a><out width="640" height="480" left="8" top="4" right="x" bottom="x"/></a>)");
    EXPECT_EQ(port(mGraph, "a:out"), StatusOk);
    EXPECT_EQ(text(mParams), "0,0 640x480 1/1 1/1");
}

TEST_F(PortFrameParamsTest, AnyNodeOfTheGraphLeadsToItsRoot)
{
    EXPECT_EQ(port(SharedGraph(mGraph, &at(*mGraph, "vf_out:main_out")), "vf_out:main_out"), StatusOk);
    EXPECT_EQ(text(mParams), "0,0 1920x1080 1/1 1/1");
}

TEST_F(PortFrameParamsTest, SizesAreCutToSixteenBits)
{
    const auto record = [this](const std::string& width, const std::string& height) {
        EXPECT_EQ(port(sharedGraph("<p width=\"" + width + "\" height=\"" + height + "\"/>"), "p"), StatusOk);
        return text(mParams);
    };
    EXPECT_EQ(record("65535", "65536"), "0,0 65535x0 1/1 1/1");
    EXPECT_EQ(record("65537", "2147483647"), "0,0 1x65535 1/1 1/1"); // 0x10001, 0x7fffffff
    EXPECT_EQ(record("-1", "-2147483648"), "0,0 65535x0 1/1 1/1");   // 0xffffffff, 0x80000000
    EXPECT_EQ(record("-65535", "0"), "0,0 1x0 1/1 1/1");             // 0xffff0001
}

TEST_F(PortFrameParamsTest, PortThatIsNotThereIsReported)
{
    for (const char* name : {"ghost", "vf_out:ghost", "ghost:main_out", "", ":", "width", "50% off %s:%n"}) {
        EXPECT_EQ(port(mGraph, name), StatusMissingObject) << name;
        EXPECT_TRUE(loggedExactly({missing(name)}));
        EXPECT_TRUE(untouched()) << name;
    }
}

TEST_F(PortFrameParamsTest, AttributeIsNoPort)
{
    mGraph->addValue(NUXO_KEY_PORT, std::string("text"));
    EXPECT_EQ(port(mGraph, "port"), StatusMissingObject);
    EXPECT_TRUE(loggedExactly({missing("port")}));
}

TEST_F(PortFrameParamsTest, NoGraphIsAGraphWithoutThePort)
{
    EXPECT_EQ(port(nullptr, "vf_out:main_out"), StatusMissingObject);
    EXPECT_TRUE(loggedExactly({missing("vf_out:main_out")}));
    EXPECT_TRUE(untouched());
}

TEST_F(PortFrameParamsTest, NodeWithoutARootIsAGraphWithoutThePort)
{
    EXPECT_EQ(port(std::make_shared<ForeignNode>(), "vf_out:main_out"), StatusMissingObject);
    EXPECT_TRUE(loggedExactly({missing("vf_out:main_out")}));
    EXPECT_TRUE(untouched());
}

TEST_F(PortFrameParamsTest, OnlyTheInterfaceOfAGraphIsUsed)
{
    EXPECT_EQ(port(std::make_shared<ForwardingNode>(*mGraph), "vf_out:main_out"), StatusOk);
    EXPECT_EQ(text(mParams), "0,0 1920x1080 1/1 1/1");
    EXPECT_EQ(port(std::make_shared<ForwardingNode>(at(*mGraph, "vf_out")), "video_sink"), StatusOk);
    EXPECT_EQ(text(mParams), "0,0 1280x720 1/1 1/1");
    EXPECT_EQ(port(std::make_shared<ForwardingNode>(*mGraph), "vf_out"), StatusMissingObject);
    EXPECT_TRUE(untouched());
}

TEST_F(PortFrameParamsTest, MissingSizeIsReported)
{
    mGraph = sharedGraph("<a><flat width=\"640\"/><thin height=\"480\"/></a>");
    EXPECT_EQ(port(mGraph, "a:flat"), StatusMissingObject);
    EXPECT_TRUE(loggedExactly({"16 Error: Couldn't get height", unsized("a:flat")}));
    EXPECT_TRUE(untouched());
    EXPECT_EQ(port(mGraph, "a:thin"), StatusMissingObject);
    EXPECT_TRUE(loggedExactly({"16 Error: Couldn't get width", unsized("a:thin")}));
    EXPECT_TRUE(untouched());
    EXPECT_EQ(port(mGraph, "a"), StatusMissingObject);
    EXPECT_TRUE(loggedExactly({"16 Error: Couldn't get width", unsized("a")}));
}

TEST_F(PortFrameParamsTest, SizeOfAnotherKindIsMissing)
{
    for (const uint32_t wrong : {NUXO_KEY_WIDTH, NUXO_KEY_HEIGHT}) {
        mGraph = sharedGraph("<p/>");
        const uint32_t right = wrong == NUXO_KEY_WIDTH ? NUXO_KEY_HEIGHT : NUXO_KEY_WIDTH;
        at(*mGraph, "p").addValue(wrong, std::string("640"));
        at(*mGraph, "p").addValue(right, 480);
        EXPECT_EQ(port(mGraph, "p"), StatusMissingObject);
        EXPECT_TRUE(loggedExactly({std::string("16 Error: Couldn't get ") + ItemUID::key2str(wrong), unsized("p")}));
    }
}

TEST_F(PortFrameParamsTest, PeerIsNotAskedForWhatThePortLacks)
{
    mGraph = sharedGraph(R"(<a><out peer="b:in"/></a><b><in peer="a:out" width="640" height="480"/></b>)");
    EXPECT_EQ(port(mGraph, "a:out"), StatusMissingObject);
    EXPECT_TRUE(loggedExactly({"16 Error: Couldn't get width", unsized("a:out")}));
    EXPECT_EQ(port(mGraph, "b:in"), StatusOk);
}

TEST_F(PortFrameParamsTest, GraphStaysTheCallersAndAsItWas)
{
    const std::string before = text(*mGraph);
    EXPECT_EQ(port(mGraph, "vf_out:main_out"), StatusOk);
    EXPECT_EQ(port(mGraph, "ghost"), StatusMissingObject);
    EXPECT_EQ(mGraph.use_count(), 1);
    EXPECT_EQ(text(*mGraph), before);
}

} // namespace

} // namespace graphtest
