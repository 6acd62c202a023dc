// SPDX-License-Identifier: Apache-2.0
#include "camera/ContextFixture.h"

#include <array>
#include <cstddef>

namespace graphtest {

namespace {

using Metadata = std::vector<unsigned int>;
/// Pal uuid, id, enabled, rcb, branch point, sink port.
using Numbers = std::array<int, 6>;

constexpr int kUntouched = -12345;
constexpr unsigned int kUntouchedMetadata = 0xABCDU;
constexpr Numbers kNone = {kUntouched, kUntouched, kUntouched, kUntouched, kUntouched, kUntouched};

class KernelValuesTest : public ContextTest {
protected:
    /// Reads the kernel `k` with these attributes.
    int read(const std::string& attributes)
    {
        loadKernel(attributes);
        return read();
    }

    int read() { return readOf(node("k")); }

    int readOf(const IGraphConfig* kernel)
    {
        mNumbers = kNone;
        mMetadata.fill(kUntouchedMetadata);
        return GraphCameraUtil::kernelGetValues(kernel, &mNumbers[0], &mNumbers[1], mMetadata.data(), &mNumbers[2],
                                                &mNumbers[3], &mNumbers[4], &mNumbers[5]);
    }

    using Outputs = std::array<int*, 6>;

    /// Reads `k` into these outputs, in the order of the numbers.
    int readInto(const Outputs& to, unsigned int* metadata) const
    {
        return GraphCameraUtil::kernelGetValues(node("k"), to[0], to[1], metadata, to[2], to[3], to[4], to[5]);
    }

    void loadKernel(const std::string& attributes) { load(element("kernel", "k", attributes)); }

    /// The leading entries of the metadata that were written; none may follow a gap.
    Metadata metadata() const
    {
        const auto end = std::find(mMetadata.begin(), mMetadata.end(), kUntouchedMetadata);
        EXPECT_TRUE(std::all_of(end, mMetadata.end(), [](unsigned int v) { return v == kUntouchedMetadata; }));
        return {mMetadata.begin(), end};
    }

    Numbers mNumbers = kNone;
    std::array<unsigned int, 12> mMetadata{};
};

constexpr const char* kAll = "pal_uuid='37000' id='4' metadata='63,47,0,1' enabled='0' rcb='1' branch_point='2' "
                             "sink_port='3'";

constexpr Numbers kAllNumbers = {37000, 4, 0, 1, 2, 3};

TEST_F(KernelValuesTest, AllValuesAreRead)
{
    EXPECT_EQ(read(kAll), StatusOk);
    EXPECT_EQ(mNumbers, kAllNumbers);
    EXPECT_EQ(metadata(), (Metadata{63, 47, 0, 1}));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelValuesTest, AbsentValuesHaveDefaults)
{
    EXPECT_EQ(read("pal_uuid='-5' id='-6'"), StatusOk);
    EXPECT_EQ(mNumbers, (Numbers{-5, -6, 1, 0, 0, -1}));
    EXPECT_EQ(metadata(), Metadata{});
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelValuesTest, ValuesOfAnotherKindCountAsAbsent)
{
    loadKernel("pal_uuid='1' id='2'");
    for (const uint32_t key : {NUXO_KEY_ENABLED, NUXO_KEY_RCB, NUXO_KEY_BRANCH_POINT, NUXO_KEY_SINK_PORT}) {
        node("k")->addValue(key, std::string("7"));
    }
    node("k")->addValue(NUXO_KEY_METADATA, 7);
    EXPECT_EQ(read(), StatusOk);
    EXPECT_EQ(mNumbers, (Numbers{1, 2, 1, 0, 0, -1}));
    EXPECT_EQ(metadata(), Metadata{});
}

TEST_F(KernelValuesTest, ValuesArePassedOnAsTheyAre)
{
    EXPECT_EQ(read("pal_uuid='1' id='2' enabled='-3' rcb='-4' branch_point='2147483647' sink_port='-2147483648'"),
              StatusOk);
    EXPECT_EQ(mNumbers, (Numbers{1, 2, -3, -4, 2147483647, -2147483647 - 1}));
}

TEST_F(KernelValuesTest, MetadataIsAListOfDecimalNumbers)
{
    const std::vector<std::pair<std::string, Metadata>> lists = {
        {"1,2,3", {1, 2, 3}},
        {"5", {5}},
        {"", {}},
        {",", {0}}, // an empty item, and nothing behind the comma
        {"5,", {5}},
        {",5", {0, 5}},
        {"1,,3", {1, 0, 3}},
        {"1,,", {1, 0}},
        {" 4, +5,  6", {4, 5, 6}},
        {"12abc,abc,0x10,010,1.9", {12, 0, 0, 10, 1}},
        {"1;2", {1}},
        {"-1,-2147483648", {4294967295U, 2147483648U}},
        {"2147483648,4294967295,4294967296", {2147483648U, 4294967295U, 0}}, // the low 32 bits
        {"9223372036854775808", {4294967295U}},                              // as the largest long, all ones
        {"1,2,3,4,5,6,7,8,9,10,11", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}},    // as many as there are
    };
    for (const auto& [list, items] : lists) {
        EXPECT_EQ(read("pal_uuid='1' id='2' metadata='" + list + "'"), StatusOk) << list;
        EXPECT_EQ(metadata(), items) << list;
        EXPECT_TRUE(loggedExactly({})) << list;
    }
}

TEST_F(KernelValuesTest, IdentityIsDemanded)
{
    EXPECT_EQ(read("id='4'"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 ERROR: Couldn't get pal_uuid"}));
    node("k")->addValue(NUXO_KEY_PAL_UUID, std::string("1"));
    EXPECT_EQ(read(), StatusNotFound);
    EXPECT_EQ(count(kError, "ERROR: Couldn't get pal_uuid"), 2U);
}

TEST_F(KernelValuesTest, IdIsDemanded)
{
    EXPECT_EQ(read("pal_uuid='4'"), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Couldn't get kernel id"}));
    node("k")->addValue(NUXO_KEY_ID, std::string("1"));
    EXPECT_EQ(read(), StatusNotFound);
    EXPECT_EQ(count(kError, "Couldn't get kernel id"), 2U);
}

TEST_F(KernelValuesTest, WhatComesBeforeAFailureIsWritten)
{
    const std::string others = "metadata='8' enabled='0' rcb='1' branch_point='2' sink_port='3' ";
    EXPECT_EQ(read(others + "id='5'"), StatusMissingData);
    EXPECT_EQ(mNumbers, (Numbers{kUntouched, kUntouched, 0, 1, 2, kUntouched}));
    EXPECT_EQ(metadata(), Metadata{8});
    EXPECT_EQ(read(others + "pal_uuid='4'"), StatusMissingData);
    EXPECT_EQ(mNumbers, (Numbers{4, kUntouched, 0, 1, 2, kUntouched}));
    EXPECT_EQ(metadata(), Metadata{8});
}

TEST_F(KernelValuesTest, NullOutputsAreSkipped)
{
    loadKernel("metadata='1,2'"); // neither identity nor id, which nobody wants
    EXPECT_EQ(readInto({}, nullptr), StatusOk);
    EXPECT_TRUE(loggedExactly({}));
    // Without a wish for the identity the id is the first to fail.
    EXPECT_EQ(readInto({nullptr, &mNumbers[1], nullptr, nullptr, nullptr, &mNumbers[5]}, nullptr), StatusMissingData);
    EXPECT_TRUE(loggedExactly({"16 Couldn't get kernel id"}));
    EXPECT_EQ(mNumbers, kNone);
}

TEST_F(KernelValuesTest, EachOutputCanBeTheOnlyOne)
{
    loadKernel(kAll);
    for (size_t only = 0; only < mNumbers.size(); ++only) {
        mNumbers = kNone;
        Outputs outputs = {};
        outputs[only] = &mNumbers[only];
        EXPECT_EQ(readInto(outputs, nullptr), StatusOk);
        Numbers expected = kNone;
        expected[only] = kAllNumbers[only];
        EXPECT_EQ(mNumbers, expected) << only;
    }
    mMetadata.fill(kUntouchedMetadata);
    EXPECT_EQ(readInto({}, mMetadata.data()), StatusOk);
    EXPECT_EQ(metadata(), (Metadata{63, 47, 0, 1}));
}

TEST_F(KernelValuesTest, NullKernelIsRefusedWithoutAWord)
{
    EXPECT_EQ(readOf(nullptr), StatusBadArgument);
    EXPECT_EQ(mNumbers, kNone);
    EXPECT_EQ(metadata(), Metadata{});
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(KernelValuesTest, AnyNodeWithTheValuesWillDo)
{
    load(port("p", kAll));
    EXPECT_EQ(readOf(node("p")), StatusOk);
    EXPECT_EQ(mNumbers, kAllNumbers);
}

TEST_F(KernelValuesTest, ForeignKernelsAreAskedThroughTheInterface)
{
    MockNode kernel;
    EXPECT_EQ(readOf(&kernel), StatusMissingData);
    EXPECT_EQ(mNumbers, (Numbers{kUntouched, kUntouched, 1, 0, 0, kUntouched}));
    kernel.mTexts[NUXO_KEY_METADATA] = "1,2";
    kernel.mIntegers = {{NUXO_KEY_PAL_UUID, 3}, {NUXO_KEY_ID, 4}, {NUXO_KEY_ENABLED, 5}, {NUXO_KEY_SINK_PORT, 6}};
    EXPECT_EQ(readOf(&kernel), StatusOk);
    EXPECT_EQ(mNumbers, (Numbers{3, 4, 5, 0, 0, 6}));
    EXPECT_EQ(metadata(), (Metadata{1, 2}));
}

} // namespace

} // namespace graphtest
