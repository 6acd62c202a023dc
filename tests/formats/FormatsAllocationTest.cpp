// SPDX-License-Identifier: Apache-2.0
// Every allocation of the functions on the format table fails in turn: they do all or nothing, and never throw.
#include "formats/FormatsFixture.h"

#include <nuxo/NuxoStatus.h>

#include <support/AllocationFailures.h>

#include <algorithm>
#include <functional>
#include <memory>

namespace formatstest {

namespace {

using NUXOFormats::gNUXOFormats;
using NUXOFormats::qv_format_t;

/// Too long to be kept inside a std::string, and with planes: copying the row takes memory.
constexpr const char* kLongName = "TileYUV420_10_SP_LSB";

class FormatsAllocationTest : public FormatsTest, public ::testing::WithParamInterface<bool> {
protected:
    FormatsAllocationTest()
    {
        // Log lines that are kept would take no counted memory, but cost time.
        mLog.setMask(0);
    }

    /// Runs @p action with each of its allocations failing, after @p prepare each time; then asks @p check. Nothing may be
    /// thrown. @return number of runs with a failure
    size_t sweep(const std::function<void()>& prepare, const std::function<void()>& action,
                 const std::function<void()>& check)
    {
        bool thrown = false;
        prepare();
        AllocationFailures failures;
        return failures.sweep(
            GetParam(),
            [&] {
                if (escapes([&] { action(); })) thrown = true;
            },
            [&] {
                EXPECT_FALSE(thrown);
                check();
                prepare();
            });
    }

    /// Copies of the row for @p lookup fail; outputs stay as they were, and nothing leaks.
    void sweepLookup(const std::function<int(qv_format_t&)>& lookup, const qv_format_t& row)
    {
        qv_format_t used = marked("before", 1);
        used.planes.back().name = std::string(60, 'x');
        for (const qv_format_t& before : {marked("", 0), marked("before", 5), used}) {
            const size_t live = AllocationFailures::live();
            sweepCopies(lookup, row, before);
            EXPECT_EQ(AllocationFailures::live(), live);
        }
    }

    static qv_format_t marked(const std::string& name, size_t planes)
    {
        qv_format_t format;
        format.name = name;
        format.family = "before";
        format.id = kUnwritten;
        format.planes.resize(planes);
        return format;
    }

    static bool isFull() { return gNUXOFormats.size() == 85 && gNUXOFormats.back().name == "MOT_VEC"; }

    size_t mFailed = 0;

private:
    static bool isSame(const qv_format_t& one, const qv_format_t& other)
    {
        const auto isSamePlane = [](const auto& plane, const auto& otherPlane) {
            return plane.name == otherPlane.name && plane.bitsPerSample == otherPlane.bitsPerSample;
        };
        return one.name == other.name && one.fourcc == other.fourcc && one.family == other.family &&
               one.id == other.id && one.bpp == other.bpp && one.supported == other.supported &&
               std::equal(one.planes.begin(), one.planes.end(), other.planes.begin(), other.planes.end(), isSamePlane);
    }

    void sweepCopies(const std::function<int(qv_format_t&)>& lookup, const qv_format_t& row, const qv_format_t& before)
    {
        std::unique_ptr<qv_format_t> out; // another object in each run: one that was used keeps memory
        int status = 1;
        size_t failed = 0;
        const size_t runs = sweep([&] { out = std::make_unique<qv_format_t>(before); }, [&] { status = lookup(*out); },
                                  [&] {
                                      EXPECT_TRUE(status == StatusOk || status == StatusNoMemory) << status;
                                      EXPECT_TRUE(isSame(*out, status == StatusOk ? row : before));
                                      failed += status == StatusOk ? 0 : 1;
                                  });
        EXPECT_GT(runs, 0U);
        EXPECT_EQ(failed, runs);
        EXPECT_EQ(status, StatusOk) << "the last run had all the memory that it wanted";
    }
};

INSTANTIATE_TEST_SUITE_P(OnceAndForGood, FormatsAllocationTest, ::testing::Bool(),
                         [](const auto& run) { return run.param ? "ForGood" : "Once"; });

void emptyTable()
{
    gNUXOFormats = std::vector<qv_format_t>();
}

TEST_P(FormatsAllocationTest, TableIsFilledWhollyOrNotAtAll)
{
    emptyTable();
    const size_t live = AllocationFailures::live();
    const size_t runs = sweep(emptyTable, NUXOFormats::initNUXOFormats, [&] {
        EXPECT_TRUE(gNUXOFormats.empty() || isFull());
        if (gNUXOFormats.empty()) {
            ++mFailed;
            NUXOFormats::initNUXOFormats();
            EXPECT_TRUE(isFull()) << "with memory again it is filled";
        }
    });
    EXPECT_GT(runs, 0U);
    EXPECT_EQ(mFailed, runs);
    emptyTable();
    EXPECT_EQ(AllocationFailures::live(), live);
}

TEST_P(FormatsAllocationTest, LookupByName)
{
    const std::string name = kLongName;
    const auto lookup = [&name](qv_format_t& out) { return NUXOFormats::getFormatByName(name, out); };
    qv_format_t row;
    ASSERT_EQ(lookup(row), StatusOk);
    sweepLookup(lookup, row);
}

TEST_P(FormatsAllocationTest, LookupByCode)
{
    const auto lookup = [](qv_format_t& out) { return NUXOFormats::getFormatByFourcc(code("T01L"), out); };
    qv_format_t row;
    ASSERT_EQ(lookup(row), StatusOk);
    sweepLookup(lookup, row);
}

TEST_P(FormatsAllocationTest, LookupOfAClientsOwnRow)
{
    qv_format_t row = marked(std::string(40, 'n'), 2);
    row.family = std::string(40, 'f');
    row.fourcc = code("MINE");
    row.planes[1].name = std::string(40, 'p');
    gNUXOFormats.push_back(row);
    sweepLookup([](qv_format_t& out) { return NUXOFormats::getFormatByFourcc(code("MINE"), out); }, row);
}

TEST_P(FormatsAllocationTest, CompressionIsToldWhetherOrNotTheTableCouldBeFilled)
{
    mLog.setMask(16 | 32);
    const std::string compressed = "TileYUV420_12_SP_C"; // too long for a std::string's own memory, too
    const std::vector<std::function<bool()>> questions = {
        [&compressed] { return NUXOFormats::isCompressedFormat(compressed); },
        [] { return ::isCompressedFormat(code("C012")); },
        [] { return qv_cipf_is_compressed_format(code("C012")); },
    };
    for (const std::function<bool()>& isCompressed : questions) {
        bool result = false;
        const auto ask = [&] { result = isCompressed(); };
        const auto check = [&] {
            EXPECT_TRUE(result);
            EXPECT_TRUE(gNUXOFormats.empty() || isFull());
            result = false;
        };
        EXPECT_GT(sweep(emptyTable, ask, check), 0U);
        NUXOFormats::initNUXOFormats();
        EXPECT_EQ(sweep([] {}, ask, check), 0U) << "a full table is only read";
    }
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_P(FormatsAllocationTest, OthersNeedNoMemory)
{
    const std::string name = kLongName;
    const qv_format_t row = bareFormat(code("CN12"), 8);
    const size_t runs =
        sweep([] {},
              [&] {
                  PerPlane offsets;
                  PerPlane tables;
                  NUXOFormats::initNUXOFormats(); // the table is full
                  (void)NUXOFormats::setFormatId(name, 1);
                  (void)NUXOFormats::getPlaneCountByFourcc(code("T01L"));
                  (void)NUXOFormats::getPlaneCountByFourcc(0);
                  (void)NUXOFormats::getBpl(row, 1920);
                  (void)NUXOFormats::calculateBufferSize(row, 1920, 1080, 0, offsets.data(), tables.data());
                  (void)fourcc_to_css_frame_format(row.fourcc, nullptr, nullptr, nullptr);
              },
              [] {});
    EXPECT_EQ(runs, 0U);
}

TEST_P(FormatsAllocationTest, FailingLookupsNeedNoMemory)
{
    const std::string unknown = "no format has a name like this one";
    qv_format_t out;
    std::vector<int> statuses(3);
    const size_t runs = sweep([] {},
                              [&] {
                                  statuses[0] = NUXOFormats::getFormatByName(unknown, out);
                                  statuses[1] = NUXOFormats::getFormatByFourcc(0, out);
                                  statuses[2] = NUXOFormats::setFormatId(unknown, 1);
                              },
                              [] {});
    EXPECT_EQ(runs, 0U);
    EXPECT_EQ(statuses, (std::vector<int>{StatusBadState, StatusBadState, StatusBadArgument}));
}

} // namespace

} // namespace formatstest
