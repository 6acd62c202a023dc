// SPDX-License-Identifier: Apache-2.0
// Which of the sizes that a kernel states belongs to which of its outputs.
#include "analysis/HistoryFixture.h"

namespace historytest {

namespace {

class HistoryKernelInfosTest : public InnerNodeTest {
protected:
    /// A kernel with these elements and one child for each label.
    Access::ImagingNode& load(bool rcb, const std::string& sizes, const Texts& labels)
    {
        mRoot = graphtest::descriptor(group("pg", 1, kernel("k", 0, "", sizes)));
        auto& k = node("k");
        k.node = &at(*mRoot, "pg:k");
        k.flags = rcb ? Access::RcbKernel : 0;
        for (const std::string& label : labels) join(k, node("child"), label);
        clearLog();
        return k;
    }

    /// The sizes found, "key=width key=width", or the status.
    std::string ask(Access::ImagingNode& k)
    {
        const int status = access().getKernelResolutionInfos(k);
        if (status != StatusOk) return std::to_string(status);
        std::string all;
        for (const auto& entry : k.resInfos) {
            EXPECT_EQ(entry.second.input_width, 1920);
            EXPECT_EQ(entry.second.input_height, 1080);
            all += (all.empty() ? "" : " ") + entry.first + "=" + std::to_string(entry.second.output_width);
        }
        return all;
    }

    static std::string output(const std::string& attributes, int width)
    {
        return "<output " + attributes + " " + size(width, 480) + "/>";
    }

    /// The lines about ports that get the sizes of another one: the announcement and each port.
    Texts defaultLines() const { return linesLike({kDefaulting, kUnmatched}); }

    static inline const std::string kInput =
        "<input width='1920' height='1080' left='1' top='2' right='3' bottom='4'/>";
    static inline const std::string kDefaulting = "32 Node k ports without settings will default to res-info ";
    static inline const std::string kUnmatched = "32 Node k settings have no output id that matches output port ";
};

TEST_F(HistoryKernelInfosTest, AllSizesAndCropsAreRead)
{
    auto& k =
        load(true, kInput + "<output id='0' width='640' height='480' left='5' top='6' right='7' bottom='8'/>", {"0"});
    EXPECT_EQ(ask(k), "0=640");
    EXPECT_EQ(text(k.resInfos.at("0")), text(info(1920, 1080, 640, 480, {1, 2, 3, 4}, {5, 6, 7, 8})));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(HistoryKernelInfosTest, EachOutputGetsTheSizesOfItsId)
{
    auto& k = load(true, kInput + output("id='0'", 640) + output("id='1'", 320), {"1", "0"});
    EXPECT_EQ(ask(k), "0=640 1=320");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(HistoryKernelInfosTest, OutputsMayBeNodesOfOneElement)
{
    auto& k = load(true,
                   kInput + "<output>" + element("item", "wide", size(640, 480)) +
                       element("item", "narrow", size(320, 480)) + element("item", "empty") + "</output>",
                   {"narrow", "wide"});
    EXPECT_EQ(ask(k), "narrow=320 wide=640");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(HistoryKernelInfosTest, NoSizesAtAllAreAnError)
{
    auto& k = load(true, kInput + "<output>" + element("item", "empty") + "</output>", {"0"});
    EXPECT_EQ(ask(k), "-16");
    EXPECT_TRUE(logged(kError, "Node k settings have no res info - fix settings"));
    EXPECT_TRUE(k.resInfos.empty());
}

TEST_F(HistoryKernelInfosTest, OutputWithoutSizesGetsThoseOfTheFirst)
{
    auto& k = load(true, kInput + output("id='0'", 640), {"0", "1", "2"});
    EXPECT_EQ(ask(k), "0=640 1=640 2=640");
    EXPECT_TRUE(logged(kWarning, "Node k settings have 1 res info but node has 3 children"));
    const Texts lines = defaultLines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0].rfind(kDefaulting, 0), 0U); // announced once, before the first
    EXPECT_EQ(lines[1].rfind(kUnmatched + "1 defaulting ", 0), 0U);
    EXPECT_EQ(lines[2].rfind(kUnmatched + "2 defaulting ", 0), 0U);
}

TEST_F(HistoryKernelInfosTest, UnmatchedIdsAreLeftOut)
{
    auto& k = load(true, kInput + output("id='0'", 640) + output("id='1'", 320) + output("id='2'", 160), {"1"});
    EXPECT_EQ(ask(k), "1=320");
    EXPECT_TRUE(loggedExactly({"32 Node k settings have 3 res info but node has 1 children"}));
}

TEST_F(HistoryKernelInfosTest, AsManyIdsAsChildrenMayStillNotMatch)
{
    auto& k = load(true, kInput + output("id='7'", 640), {"0"});
    EXPECT_EQ(ask(k), "0=640");
    EXPECT_TRUE(notLogged("children"));
    EXPECT_EQ(defaultLines().size(), 2U);
}

TEST_F(HistoryKernelInfosTest, NumbersMatchHoweverTheyAreWritten)
{
    auto& k = load(true, kInput + output("id='0'", 640) + output("id='1'", 320), {"01", "0"});
    EXPECT_EQ(ask(k), "0=640 01=320");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(HistoryKernelInfosTest, TwoOutputsOfOneIdCountAsOne)
{
    auto& k = load(true, kInput + output("id='0'", 640) + output("id='0'", 320), {"0"});
    EXPECT_EQ(ask(k), "0=640"); // the first
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(HistoryKernelInfosTest, NamesOfDigitsAreNumbersOfAnyLength)
{
    const std::string huge = "9999999999999999999999";
    const struct {
        const char* what;
        std::string stated;
        std::string label;
        bool match;
    } cases[] = {
        {"leading zeros in the settings", "01", "1", true},
        {"leading zeros in the link", "1", "0001", true},
        {"zeros only", "00", "0", true},
        {"the number itself beyond 64 bits", huge, "0" + huge, true},
        {"2^64 + 1, which wraps around to 1", "1", "18446744073709551617", false},
        {"2^32 + 1, which wraps around to 1", "1", "4294967297", false},
        {"two that are beyond 64 bits", "18446744073709551615", huge, false},
        {"a blank", "1", " 1", false},
        {"a sign", "1", "+1", false},
        {"digits with text behind", "1", "1a", false},
        {"nothing", "0", "", false},
    };
    for (const auto& each : cases) {
        const std::string outputs =
            element("item", "other", size(640, 480)) + element("item", each.stated, size(320, 480));
        auto& k = load(true, kInput + "<output>" + outputs + "</output>", {each.label, "other"});
        ASSERT_EQ(access().getKernelResolutionInfos(k), StatusOk) << each.what;
        EXPECT_EQ(k.resInfos.at(each.label).output_width, each.match ? 320 : 640) << each.what;
        EXPECT_EQ(defaultLines().size(), each.match ? 0U : 2U) << each.what;
    }
}

TEST_F(HistoryKernelInfosTest, OutputToTwoChildrenCountsOnce)
{
    auto& k = load(true, kInput + output("id='0'", 640), {"0", "0"});
    EXPECT_EQ(ask(k), "0=640");
    EXPECT_TRUE(loggedExactly({"32 Node k settings have 1 res info but node has 2 children"}));
}

TEST_F(HistoryKernelInfosTest, KernelWithoutChildrenKeepsItsFirst)
{
    auto& k = load(true, kInput + output("id='0'", 640) + output("id='1'", 320), {});
    EXPECT_EQ(ask(k), "0=640");
    EXPECT_TRUE(loggedExactly({"32 Node k settings have 2 res info but node has 0 children"}));
}

TEST_F(HistoryKernelInfosTest, KernelThatIsNotRcbHasOneRecord)
{
    auto& matched = load(false, kInput + output("id='0'", 640) + output("id='1'", 320), {"1"});
    EXPECT_EQ(ask(matched), "1=320");
    EXPECT_TRUE(loggedExactly({"32 Node k settings have 2 res info but node has 1 children"}));

    auto& several = load(false, kInput + output("id='0'", 640), {"0", "1"});
    EXPECT_EQ(ask(several), "0=640");
    EXPECT_EQ(defaultLines(), Texts{});

    auto& unmatched = load(false, kInput + output("id='7'", 640), {"0"});
    EXPECT_EQ(unmatched.resInfos.size(), 0U);
    EXPECT_EQ(access().getKernelResolutionInfos(unmatched), StatusOk);
    ASSERT_EQ(unmatched.resInfos.size(), 1U);
    EXPECT_EQ(unmatched.resInfos.begin()->second.output_width, 640);
    EXPECT_EQ(defaultLines(), Texts{});
}

TEST_F(HistoryKernelInfosTest, ReadingReplacesWhatWasRead)
{
    auto& k = load(true, kInput + output("id='0'", 640) + output("id='1'", 320), {"0", "1"});
    k.resInfos["9"] = frame(1, 1);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(ask(k), "0=640 1=320");
}

} // namespace

} // namespace historytest
