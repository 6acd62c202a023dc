// SPDX-License-Identifier: Apache-2.0
// Compressed formats that the fifth generation sets on a port's peer and on the reference ports beside it.
#include "isp/IspFixture.h"

namespace graphtest {

namespace {

constexpr const char* kFormat = "YUV420_8_SP_C";

class CompressionTest : public IspTest {
protected:
    /// `pg:out` and the program group `next`, to which its peer belongs, with these ports.
    void loadNext(const std::string& ports) { load(outPort() + group("next", "", ports)); }

    /// The peer, both reference ports and another port, all with a list of formats.
    void loadComplete()
    {
        loadNext(compressible("in") + compressible("tnr_output") + compressible("tnr_input") + compressible("other"));
    }

    static std::string compressible(const std::string& name) { return portWithFormats(name, kFormat); }
    static std::string refusing(const std::string& name) { return port(name, "format='RAW'"); }

    int apply(const std::string& format = kFormat) { return applyTo(node("pg:out"), format); }

    int applyTo(const IGraphConfig* port, const std::string& format = kFormat)
    {
        clearLog();
        return mUtils.applyCompression(port, format);
    }

    /// Names of the ports of `next` that have the compressed format, in the order of names given.
    std::string compressed() const
    {
        std::string all;
        for (const std::string name : {"in", "tnr_output", "tnr_input", "other"}) {
            if (formatOf("next:" + name) == "'" + std::string(kFormat) + "'") all += name + " ";
        }
        return all;
    }

    static std::string refused(const std::string& port)
    {
        return std::string("16 Couldn't set format ") + kFormat + " for " + port;
    }

    KVA5IspUtils mUtils;
};

TEST_F(CompressionTest, PeerAndItsReferencePortsAreCompressed)
{
    loadComplete();
    EXPECT_EQ(apply(), StatusOk);
    EXPECT_EQ(compressed(), "in tnr_output tnr_input ");
    EXPECT_EQ(formatOf("pg:out"), "'RAW'");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(CompressionTest, ResultDoesNotDependOnWhatIsLogged)
{
    mLog.setMask(0);
    loadNext(compressible("in") + refusing("tnr_input"));
    EXPECT_EQ(apply(), StatusNotFound);
    EXPECT_EQ(apply("NV12"), StatusBadArgument);
    EXPECT_EQ(applyTo(nullptr), StatusBadArgument);
    loadComplete();
    EXPECT_EQ(apply(), StatusOk);
    EXPECT_EQ(compressed(), "in tnr_output tnr_input ");
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(CompressionTest, ProgramGroupMayLackReferencePorts)
{
    loadNext(compressible("in") + compressible("other"));
    EXPECT_EQ(apply(), StatusOk);
    EXPECT_EQ(compressed(), "in ");
    loadNext(compressible("in") + compressible("tnr_input"));
    EXPECT_EQ(apply(), StatusOk);
    EXPECT_EQ(compressed(), "in tnr_input ");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(CompressionTest, ReferencePortsCountInBothDirectionsAndStates)
{
    for (const char* attributes : {"direction='0'", "direction='1'", "enabled='0'", "private='1'"}) {
        loadNext(compressible("in") + portWithFormats("tnr_output", kFormat, attributes) +
                 portWithFormats("tnr_input", kFormat, attributes));
        EXPECT_EQ(apply(), StatusOk) << attributes;
        EXPECT_EQ(compressed(), "in tnr_output tnr_input ") << attributes;
    }
}

TEST_F(CompressionTest, OnlyPortsWithExactlyTheseNamesAreReferences)
{
    loadNext(compressible("in") + portWithFormats("tnr_output2", kFormat) + portWithFormats("my_tnr_input", kFormat) +
             element("kernel", "tnr_input", "format='RAW'", formats(kFormat)));
    EXPECT_EQ(apply(), StatusOk);
    EXPECT_EQ(compressed(), "in ");
    EXPECT_EQ(formatOf("next:tnr_output2"), "'RAW'");
    EXPECT_EQ(formatOf("next:my_tnr_input"), "'RAW'");
}

TEST_F(CompressionTest, ReferencePortsOfOtherGroupsAreLeftAlone)
{
    load(group("pg", "", output("out", "next:in", "format='RAW'") + compressible("tnr_input")) +
         group("next", "", compressible("in")) + group("third", "", compressible("tnr_output")));
    EXPECT_EQ(apply(), StatusOk);
    EXPECT_EQ(compressed(), "in ");
    EXPECT_EQ(formatOf("pg:tnr_input"), "'RAW'");
    EXPECT_EQ(formatOf("third:tnr_output"), "'RAW'");
}

TEST_F(CompressionTest, PeerMayBeAReferencePortItself)
{
    load(group("pg", "", output("out", "next:tnr_input")) +
         group("next", "", compressible("tnr_input") + compressible("tnr_output")));
    EXPECT_EQ(apply(), StatusOk);
    EXPECT_EQ(compressed(), "tnr_output tnr_input ");
}

TEST_F(CompressionTest, OptionsOfAReferencePortMayAddPorts)
{
    const std::string adding = "<options attribute='format'><o value='" + std::string(kFormat) +
                               "'><apply><next><late format='RAW'/></next></apply></o></options>";
    loadNext(compressible("in") + element("port", "tnr_output", "format='RAW'", adding) + compressible("tnr_input"));
    EXPECT_EQ(apply(), StatusOk);
    EXPECT_EQ(compressed(), "in tnr_output tnr_input ");
    EXPECT_EQ(formatOf("next:late"), "'RAW'");
}

TEST_F(CompressionTest, OtherFormatsAreRefused)
{
    loadComplete();
    for (const std::string format : {"NV12", "YUV420_8_SP", "RAW", "yuv420_8_sp_c", ""}) {
        mLog.setMask(kError | kWarning);
        EXPECT_EQ(apply(format), StatusBadArgument) << format;
        EXPECT_EQ(lines().back(), "16 Trying to apply compression with non-compressed format " + format);
    }
    EXPECT_EQ(compressed(), "");
    // Before anything is asked of the port.
    EXPECT_EQ(applyTo(nullptr, "YUV420_8_SP"), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 Trying to apply compression with non-compressed format YUV420_8_SP"}));
}

TEST_F(CompressionTest, PortNeedsAPeer)
{
    const std::string line = "16 couldn't find peer for out, cannot apply format.";
    load(outPort());
    EXPECT_EQ(apply(), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 Failed to find peer by name next:in", line}));
    for (const char* state : {"enabled='0'", "private='1'"}) {
        load(outPort(state) + group("next", "", compressible("in")));
        EXPECT_EQ(apply(), StatusNotFound) << state;
        EXPECT_TRUE(loggedExactly({line})) << state;
        EXPECT_EQ(compressed(), "");
    }
    EXPECT_EQ(applyTo(nullptr), StatusBadArgument);
    EXPECT_TRUE(loggedExactly(
        {"16 Invalid Node, cannot get the peer port", "16 couldn't find peer for NA, cannot apply format."}));
}

TEST_F(CompressionTest, PeerMustBelongToAProgramGroup)
{
    load(outPort() + element("hw", "next", "", compressible("in")));
    EXPECT_EQ(apply(), StatusBadState);
    EXPECT_EQ(compressed(), "");
    EXPECT_TRUE(loggedExactly({}));

    load(outPort() + group("next", "", compressible("in")));
    node("next")->removeDescendant(NUXO_KEY_TYPE);
    mLog.setMask(kError);
    EXPECT_EQ(apply(), StatusBadState);
    EXPECT_EQ(compressed(), "");
}

TEST_F(CompressionTest, SinkBelongsToNoProgramGroup)
{
    mLog.setMask(kError);
    load(group("pg", "", output("out", "video")) + element("sink", "video", "format='RAW'", formats(kFormat)));
    EXPECT_EQ(apply(), StatusBadState);
    EXPECT_EQ(formatOf("video"), "'RAW'");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(CompressionTest, PeerWithoutAParentIsNotInAProgramGroup)
{
    MockConnection mock;
    mock.peer.mAncestor = nullptr;
    EXPECT_EQ(applyTo(&mock.port), StatusBadState);
    EXPECT_TRUE(mock.peer.mSet.empty());
}

TEST_F(CompressionTest, ReferencePortWithoutTheFormatFailsBeforeThePeerIsSet)
{
    for (const std::string name : {"tnr_output", "tnr_input"}) {
        loadNext(compressible("in") + refusing(name));
        EXPECT_EQ(apply(), StatusNotFound) << name;
        EXPECT_TRUE(loggedExactly({noOptions("next:" + name), kRestricted, refused(name)}));
        EXPECT_EQ(compressed(), "");
    }
}

TEST_F(CompressionTest, FirstFailureEndsTheCall)
{
    loadNext(compressible("in") + refusing("tnr_output") + refusing("tnr_input"));
    EXPECT_EQ(apply(), StatusNotFound);
    EXPECT_EQ(mLog.count(LogCapture::Error), 2U); // one port's
    EXPECT_EQ(compressed(), "");
}

TEST_F(CompressionTest, ReferencePortWithoutAFormatFails)
{
    loadNext(compressible("in") + port("tnr_input", ""));
    EXPECT_EQ(apply(), StatusNotFound);
    EXPECT_TRUE(loggedExactly({refused("tnr_input")}));
}

TEST_F(CompressionTest, ReferencePortWithAFormatThatIsNoTextFails)
{
    loadComplete();
    replace(*node("next:tnr_output"), NUXO_KEY_FORMAT, 4);
    EXPECT_EQ(apply(), StatusBadArgument);
    EXPECT_TRUE(logged(kError, refused("tnr_output").substr(3)));
    EXPECT_EQ(formatOf("next:in"), "'RAW'");
}

TEST_F(CompressionTest, PeerThatDoesNotTakeTheFormatFails)
{
    loadNext(refusing("in") + compressible("tnr_output"));
    EXPECT_EQ(apply(), StatusNotFound);
    EXPECT_TRUE(loggedExactly({noOptions("next:in"), kRestricted, refused("in")}));
    EXPECT_EQ(compressed(), "tnr_output "); // what came before stays
}

TEST_F(CompressionTest, EachStatusOfThePeerCounts)
{
    MockConnection mock;
    for (const int32_t status : {StatusOk, StatusNotFound, StatusNoMemory, StatusBadState, StatusNotSupported}) {
        mock.peer.mSetStatus = status;
        EXPECT_EQ(applyTo(&mock.port), status);
        EXPECT_EQ(logged(kError, refused("in").substr(3)), status != StatusOk) << status;
    }
    EXPECT_EQ(mock.peer.mSet.size(), 5U);
    EXPECT_TRUE(mock.port.mSet.empty());
}

} // namespace

} // namespace graphtest
