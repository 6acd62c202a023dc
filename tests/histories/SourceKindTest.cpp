// SPDX-License-Identifier: Apache-2.0
// Which calculation a source gets, and those of test pattern generators and buffer sources.
#include "frame_params/ForwardingNode.h"
#include "histories/SourceFixture.h"

#include "query/ForeignNode.h"

namespace graphtest {

namespace {

/// What the back end says of itself, which is the history of a test pattern generator.
constexpr qv_isp_zmt_resolution_info kBackEndHistory = {1036, 766, {7, 9, 13, 17}, 1020, 740, {}};
constexpr qv_isp_zmt_resolution_info kBufferHistory = {640, 480, {}, 640, 480, {}};
constexpr const char* kPortSize = R"(width="640" height="480")";

class SourceKindTest : public SourceTest {
protected:
    using Calculation = int (*)(IGraphConfig&, qv_isp_zmt_resolution_info&);

    void loadSource(const std::string& name, const std::string& portAttributes = kPortSize)
    {
        mName = name;
        load(source(name, R"(width="4000" height="3000")", "", portAttributes) + kBackEnd);
    }

    /// The history of the source that was loaded last.
    int ask() { return ask(node(mName)); }

    int ask(IGraphConfig& source)
    {
        mHistory = counting(1000);
        clearLog();
        return ZmtTevUtils::sourceGetResolutionHistory(mHistory, source);
    }

    int calculate(Calculation calculation)
    {
        mHistory = counting(1000);
        clearLog();
        return calculation(node(mName), mHistory);
    }

    void expectHistory(const qv_isp_zmt_resolution_info& expected) const { EXPECT_EQ(text(mHistory), text(expected)); }

    /// Both numbers of the port are demanded.
    void expectPortSizeDemanded(Calculation calculation)
    {
        for (const std::string name : {"width", "height"}) {
            const Lines expected = {"16 Error: Couldn't get " + name,
                                    "16 Failed to get dimensions(width, height) for the source " + mName};
            loadSource(mName);
            remove(mName + ":port_0:" + name);
            EXPECT_EQ(calculate(calculation), StatusNotFound);
            EXPECT_TRUE(loggedExactly(expected)) << name;
            replaceByText(mName + ":port_0:" + name);
            EXPECT_EQ(calculate(calculation), StatusNotFound);
            EXPECT_TRUE(loggedExactly(expected)) << name;
        }
    }

    std::string mName;
    qv_isp_zmt_resolution_info mHistory{};
};

TEST_F(SourceKindTest, SensorIsASensor)
{
    loadSource("sensor");
    EXPECT_EQ(ask(), StatusOk);
    expectHistory({4000, 3000, {7, 9, 13, 17}, 1020, 740, {}});
    EXPECT_EQ(lines().front(), "2 Calculating resolution history for source sensor");
}

TEST_F(SourceKindTest, TestPatternGeneratorHasTheSizesOfItsBackEnd)
{
    loadSource("tpg");
    EXPECT_EQ(ask(), StatusOk);
    expectHistory(kBackEndHistory);
    EXPECT_TRUE(loggedExactly({"2 input: (iw: 1036 ih: 766 (l: 7, t: 9, r: 13, b: 17),ow: 0, oh: 0 "
                               "(l: 0, t: 0, r: 0, b: 0)",
                               "2 csi_be OUT w: 1020, h: 740----"}));
}

TEST_F(SourceKindTest, BufferSourceHasTheSizeOfItsPort)
{
    loadSource("buffer_src0");
    EXPECT_EQ(ask(), StatusOk);
    expectHistory(kBufferHistory);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(SourceKindTest, AnyNameWithTheWordIsABufferSource)
{
    for (const char* name : {"buffer_src", "buffer_src17", "my_buffer_src_b", "sensor_buffer_src"}) {
        loadSource(name);
        EXPECT_EQ(ask(), StatusOk) << name;
        expectHistory(kBufferHistory);
    }
}

TEST_F(SourceKindTest, OtherNamesAreNotSupported)
{
    for (const std::string name :
         {"sensor0", "my_sensor", "tpg0", "buffer", "buffer_zsrc", "bufer_src", "csi_be_soc"}) {
        loadSource(name);
        EXPECT_EQ(ask(), StatusNotSupported) << name;
        EXPECT_TRUE(loggedExactly({"16 No support for source of name: " + name}));
        expectHistory(counting(1000));
    }
}

TEST_F(SourceKindTest, RootHasNoNameThatCounts)
{
    load(kBackEnd);
    EXPECT_EQ(ask(*mRoot), StatusNotSupported);
    EXPECT_TRUE(loggedExactly({"16 No support for source of name: NA"}));
}

TEST_F(SourceKindTest, KindIsToldByTheNameUnderWhichTheSourceIsFiled)
{
    loadSource("tpg");
    ASSERT_EQ(node("tpg").addValue(NUXO_KEY_NAME, std::string("buffer_src0")), StatusOk);
    EXPECT_EQ(ask(), StatusOk);
    expectHistory(kBackEndHistory);
}

TEST_F(SourceKindTest, FailedCalculationIsReportedWithTheName)
{
    const struct {
        const char* name;
        const char* message;
    } sources[] = {{"sensor", "16 Could not find port_0- check node description"},
                   {"tpg", "16 Could not find TPG port_0- check node description"},
                   {"buffer_src0", "16 Could not find buffer_src0 port_0- check node description"}};
    for (const auto& [name, message] : sources) {
        loadSource(name);
        remove(mName + ":port_0");
        mLog.setMask(kError);
        EXPECT_EQ(ask(), StatusMissingObject) << name;
        EXPECT_TRUE(loggedExactly({message, std::string("16 Failed to get resolution history for source: ") + name}));
    }
}

TEST_F(SourceKindTest, SourceOfAnotherImplementationIsToldByItsName)
{
    ForeignNode foreign;
    EXPECT_EQ(ask(foreign), StatusNotSupported);
    EXPECT_TRUE(loggedExactly({"16 No support for source of name: foreign"}));

    loadSource("tpg");
    ForwardingNode root(*mRoot);
    EXPECT_EQ(ask(*root.getDescendant(NUXO_KEY_TPG)), StatusOk);
    expectHistory(kBackEndHistory);
    loadSource("buffer_src0");
    ForwardingNode other(*mRoot);
    EXPECT_EQ(ask(*other.getDescendant(NUXO_KEY_BUFFER_SRC0)), StatusOk);
    expectHistory(kBufferHistory);
}

TEST_F(SourceKindTest, TestPatternGeneratorNeedsItsPort)
{
    loadSource("tpg");
    replace("tpg:port_0", 1);
    EXPECT_EQ(calculate(ZmtTevUtils::calculateTPGResolutionHistory), StatusMissingObject);
    EXPECT_TRUE(loggedExactly({"16 Could not find TPG port_0- check node description"}));
    expectPortSizeDemanded(ZmtTevUtils::calculateTPGResolutionHistory);
}

TEST_F(SourceKindTest, TestPatternGeneratorHasTheStatusOfItsBackEnd)
{
    loadSource("tpg");
    remove("csi_be:output");
    EXPECT_EQ(calculate(ZmtTevUtils::calculateTPGResolutionHistory), StatusMissingObject);
    EXPECT_EQ(lines().back(), "16 Failed to get output node for csi_be");
    loadSource("tpg");
    remove("csi_be:output:width");
    EXPECT_EQ(calculate(ZmtTevUtils::calculateTPGResolutionHistory), StatusNotFound);
}

TEST_F(SourceKindTest, TestPatternGeneratorThatLeadsNowhereHasNoHistory)
{
    loadSource("tpg");
    remove("tpg:port_0:peer");
    EXPECT_EQ(calculate(ZmtTevUtils::calculateTPGResolutionHistory), StatusOk);
    expectHistory({});
}

TEST_F(SourceKindTest, BufferSourceNeedsItsPort)
{
    loadSource("buffer_src0");
    replace("buffer_src0:port_0", 1);
    EXPECT_EQ(calculate(ZmtTevUtils::calculateBufSrcResolutionHistory), StatusMissingObject);
    EXPECT_TRUE(loggedExactly({"16 Could not find buffer_src0 port_0- check node description"}));
    expectPortSizeDemanded(ZmtTevUtils::calculateBufSrcResolutionHistory);
}

TEST_F(SourceKindTest, BufferSourceIsNotAskedForItsPeer)
{
    loadSource("buffer_src0");
    remove("csi_be");
    EXPECT_EQ(calculate(ZmtTevUtils::calculateBufSrcResolutionHistory), StatusOk);
    expectHistory(kBufferHistory);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(SourceKindTest, BeforeAGraphIsAnalysedTheLatestHistoryIsZero)
{
    ZmtTevUtils utils(true);
    mHistory = counting(1000);
    EXPECT_EQ(utils.getSourceResolutionHistory(mHistory), StatusOk);
    expectHistory({});
}

} // namespace

} // namespace graphtest
