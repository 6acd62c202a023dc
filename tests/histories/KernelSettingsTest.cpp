// SPDX-License-Identifier: Apache-2.0
// What records take over of a kernel: identity, switches and metadata, and bits per pixel.
#include "camera/ContextFixture.h"

#include <array>

namespace graphtest {

namespace {

using NUXO::ZmtTevUtils;

using Metadata = std::array<unsigned int, 4>;
/// Pal uuid, id, enabled, rcb, branch point, sink port, restore point.
using Numbers = std::array<int, 7>;

constexpr int kUntouched = -12345;
constexpr Numbers kNone = {kUntouched, kUntouched, kUntouched, kUntouched, kUntouched, kUntouched, kUntouched};

constexpr const char* kAll = "pal_uuid='37000' id='4' metadata='63,47,0,1' enabled='0' rcb='1' branch_point='2' "
                             "sink_port='3' restore_point='5'";
constexpr Numbers kAllNumbers = {37000, 4, 0, 1, 2, 3, 5};

class KernelSettingsTest : public ContextTest {
protected:
    void loadKernel(const std::string& attributes) { load(element("kernel", "k", attributes)); }

    int read(const std::string& attributes)
    {
        loadKernel(attributes);
        return readOf(node("k"));
    }

    int readOf(const IGraphConfig* kernel)
    {
        mNumbers = kNone;
        mMetadata.fill(0xABCDU);
        std::array<int*, 7> to{};
        for (size_t i = 0; i < to.size(); ++i) to[i] = &mNumbers[i];
        return readInto(kernel, to, &mMetadata[2]);
    }

    /// Reads into these outputs, in the order of the numbers.
    static int readInto(const IGraphConfig* kernel, const std::array<int*, 7>& to, unsigned int* metadata)
    {
        return ZmtTevUtils::kernelGetValues(kernel, to[0], to[1], metadata, to[2], to[3], to[4], to[5], to[6]);
    }

    /// The four items; what is next to them must be untouched.
    Metadata metadata() const
    {
        for (const size_t beside : {0U, 1U, 6U, 7U}) EXPECT_EQ(mMetadata[beside], 0xABCDU) << beside;
        return {mMetadata[2], mMetadata[3], mMetadata[4], mMetadata[5]};
    }

    /// The metadata of a kernel with this text.
    Metadata itemsOf(const std::string& text)
    {
        EXPECT_EQ(read("pal_uuid='1' id='2' metadata='" + text + "'"), StatusOk);
        return metadata();
    }

    /// One warning, whatever it says, and no other line.
    bool warnedOnce() const { return mLog.count(LogCapture::Warning) == 1 && mLog.count() == 1; }

    Numbers mNumbers = kNone;
    std::array<unsigned int, 8> mMetadata{};
};

TEST_F(KernelSettingsTest, AllValuesAreRead)
{
    EXPECT_EQ(read(kAll), StatusOk);
    EXPECT_EQ(mNumbers, kAllNumbers);
    EXPECT_EQ(metadata(), (Metadata{63, 47, 0, 1}));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelSettingsTest, AbsentValuesHaveDefaults)
{
    EXPECT_EQ(read("pal_uuid='-5' id='-6'"), StatusOk);
    EXPECT_EQ(mNumbers, (Numbers{-5, -6, 1, 0, 0, -1, -1}));
    EXPECT_EQ(metadata(), Metadata{}); // not what an earlier kernel left
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelSettingsTest, ValuesOfAnotherKindCountAsAbsent)
{
    loadKernel("pal_uuid='1' id='2'");
    for (const uint32_t key :
         {NUXO_KEY_ENABLED, NUXO_KEY_RCB, NUXO_KEY_BRANCH_POINT, NUXO_KEY_SINK_PORT, NUXO_KEY_RESTORE_POINT}) {
        replace(*node("k"), key, "7");
    }
    replace(*node("k"), NUXO_KEY_METADATA, 7);
    EXPECT_EQ(readOf(node("k")), StatusOk);
    EXPECT_EQ(mNumbers, (Numbers{1, 2, 1, 0, 0, -1, -1}));
    EXPECT_EQ(metadata(), Metadata{});
}

TEST_F(KernelSettingsTest, ValuesArePassedOnAsTheyAre)
{
    EXPECT_EQ(read("pal_uuid='1' id='2' enabled='-3' rcb='-4' branch_point='2147483647' sink_port='-2147483648' "
                   "restore_point='-9'"),
              StatusOk);
    EXPECT_EQ(mNumbers, (Numbers{1, 2, -3, -4, 2147483647, -2147483647 - 1, -9}));
}

TEST_F(KernelSettingsTest, ItemsThatAreMissingAreZero)
{
    EXPECT_EQ(itemsOf("1,2,3"), (Metadata{1, 2, 3, 0}));
    EXPECT_EQ(itemsOf("5"), (Metadata{5, 0, 0, 0}));
    EXPECT_EQ(itemsOf("5,"), (Metadata{5, 0, 0, 0}));
    EXPECT_EQ(itemsOf(",5"), (Metadata{0, 5, 0, 0}));
    EXPECT_EQ(itemsOf("1,,3"), (Metadata{1, 0, 3, 0}));
    EXPECT_EQ(itemsOf(""), Metadata{});
    EXPECT_EQ(itemsOf(",,,"), Metadata{});
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelSettingsTest, ItemsThatAreNoNumbersAreZero)
{
    EXPECT_EQ(itemsOf("abc,-,+,."), Metadata{});
    EXPECT_EQ(itemsOf("x1,2,%n%s,4"), (Metadata{0, 2, 0, 4}));
    EXPECT_EQ(itemsOf("  ,7, 8,--9"), (Metadata{0, 7, 8, 0}));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelSettingsTest, ItemsAreDecimalNumbersOfThirtyTwoBits)
{
    EXPECT_EQ(itemsOf("-1,-2147483648,2147483648,4294967295"),
              (Metadata{4294967295U, 2147483648U, 2147483648U, 4294967295U}));
    EXPECT_EQ(itemsOf("010,+5,12abc,1.9"), (Metadata{10, 5, 12, 1}));
}

TEST_F(KernelSettingsTest, MoreThanFourItemsAreLeftOutWithOneWarning)
{
    EXPECT_EQ(itemsOf("1,2,3,4"), (Metadata{1, 2, 3, 4}));
    EXPECT_TRUE(loggedExactly({}));
    for (const char* longer : {"1,2,3,4,5", "1,2,3,4,5,6,7,8", "1,2,3,4,junk", "1,2,3,4,,,,"}) {
        EXPECT_EQ(itemsOf(longer), (Metadata{1, 2, 3, 4})) << longer;
        EXPECT_TRUE(warnedOnce()) << longer;
        EXPECT_EQ(mNumbers[1], 2); // the rest is read all the same
    }
}

TEST_F(KernelSettingsTest, TenThousandItemsAreFour)
{
    std::string text = "9";
    for (int i = 1; i < 10000; ++i) text += "," + std::to_string(i);
    EXPECT_EQ(itemsOf(text), (Metadata{9, 1, 2, 3}));
    EXPECT_TRUE(warnedOnce());
    EXPECT_EQ(itemsOf(std::string(10000, ',')), Metadata{});
    EXPECT_TRUE(warnedOnce());
    EXPECT_EQ(itemsOf(std::string(10000, '7') + ",2"), (Metadata{4294967295U, 2, 0, 0})); // the largest there is
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelSettingsTest, IdentityAndIdAreDemanded)
{
    EXPECT_EQ(read("id='4'"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 ERROR: Couldn't get pal_uuid"}));
    replace(*node("k"), NUXO_KEY_PAL_UUID, "1");
    EXPECT_EQ(readOf(node("k")), StatusNotFound);
    EXPECT_EQ(count(kError, "ERROR: Couldn't get pal_uuid"), 2U);

    EXPECT_EQ(read("pal_uuid='4'"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Couldn't get kernel id"}));
    EXPECT_EQ(mNumbers[0], 4); // it came before
    replace(*node("k"), NUXO_KEY_ID, "1");
    EXPECT_EQ(readOf(node("k")), StatusNotFound);
    EXPECT_EQ(count(kError, "Couldn't get kernel id"), 2U);
}

TEST_F(KernelSettingsTest, OutputsThatNobodyWantsAreSkipped)
{
    loadKernel(kAll);
    EXPECT_EQ(readInto(node("k"), {}, nullptr), StatusOk);
    for (size_t only = 0; only < mNumbers.size(); ++only) {
        mNumbers = kNone;
        std::array<int*, 7> to{};
        to[only] = &mNumbers[only];
        EXPECT_EQ(readInto(node("k"), to, nullptr), StatusOk);
        Numbers expected = kNone;
        expected[only] = kAllNumbers[only];
        EXPECT_EQ(mNumbers, expected) << only;
    }
    Metadata items = {9, 9, 9, 9};
    EXPECT_EQ(readInto(node("k"), {}, items.data()), StatusOk);
    EXPECT_EQ(items, (Metadata{63, 47, 0, 1}));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelSettingsTest, NullKernelIsRefusedWithoutAWord)
{
    EXPECT_EQ(readOf(nullptr), StatusBadArgument);
    EXPECT_EQ(mNumbers, kNone);
    EXPECT_EQ(metadata(), (Metadata{0xABCD, 0xABCD, 0xABCD, 0xABCD}));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelSettingsTest, KernelOfAnotherImplementationIsAskedThroughTheInterface)
{
    MockNode kernel;
    EXPECT_EQ(readOf(&kernel), StatusMissingData);
    kernel.mReadFailure = StatusBadState; // any status of theirs is passed on
    EXPECT_EQ(readOf(&kernel), StatusBadState);
    kernel.mTexts[NUXO_KEY_METADATA] = "1,2,3,4,5";
    kernel.mIntegers = {{NUXO_KEY_PAL_UUID, 3}, {NUXO_KEY_ID, 4}, {NUXO_KEY_ENABLED, 5}, {NUXO_KEY_SINK_PORT, 6}};
    clearLog();
    EXPECT_EQ(readOf(&kernel), StatusOk);
    EXPECT_EQ(mNumbers, (Numbers{3, 4, 5, 0, 0, 6, -1}));
    EXPECT_EQ(metadata(), (Metadata{1, 2, 3, 4}));
    EXPECT_TRUE(warnedOnce());
}

class KernelBppTest : public ContextTest {
protected:
    /// "status input/output" for a kernel with these children; the record held other numbers before.
    std::string bppOf(const std::string& children)
    {
        load(element("kernel", "k", "", children));
        return bppOf(node("k"));
    }

    std::string bppOf(const IGraphConfig* kernel)
    {
        mKernel.stream_id = 61;
        mKernel.output_count = 62;
        mKernel.bpp_info = {63, 64};
        const int status = ZmtTevUtils::kernelGetBppInfo(kernel, mKernel);
        EXPECT_EQ(mKernel.stream_id, 61U);
        EXPECT_EQ(mKernel.output_count, 62U);
        return std::to_string(status) + " " + std::to_string(mKernel.bpp_info.input_bpp) + "/" +
               std::to_string(mKernel.bpp_info.output_bpp);
    }

    qv_isp_zmt_run_kernels mKernel{};
};

TEST_F(KernelBppTest, BitsPerPixelOfBothSidesAreStored)
{
    EXPECT_EQ(bppOf("<input bpp='10'/><output bpp='8'/>"), "0 10/8");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelBppTest, WhatIsMissingIsZero)
{
    EXPECT_EQ(bppOf(""), "0 0/0");
    EXPECT_EQ(bppOf("<input bpp='10'/>"), "0 10/0");
    EXPECT_EQ(bppOf("<output bpp='8'/>"), "0 0/8");
    EXPECT_EQ(bppOf("<input width='1'/><output width='2'/>"), "0 0/0");
    replace(*node("k:input"), NUXO_KEY_BPP, "12"); // a text is no number
    EXPECT_EQ(bppOf(node("k")), "0 0/0");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelBppTest, NumbersAreTakenModulo32Bits)
{
    EXPECT_EQ(bppOf("<input bpp='-1'/><output bpp='2147483647'/>"), "0 4294967295/2147483647");
}

TEST_F(KernelBppTest, NullKernelIsRefused)
{
    EXPECT_EQ(bppOf(static_cast<const IGraphConfig*>(nullptr)).substr(0, 3), "-32");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelBppTest, KernelOfAnotherImplementationHasWhatItSays)
{
    MockNode kernel;
    EXPECT_EQ(bppOf(&kernel), "0 0/0");
}

} // namespace

} // namespace graphtest
