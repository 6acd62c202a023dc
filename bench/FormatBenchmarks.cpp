// SPDX-License-Identifier: Apache-2.0
#include "Benchmarks.h"

#include <nuxo/nuxo.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <vector>

namespace bench {

namespace {

using Row = NUXOFormats::qv_format_t;
using Rows = std::vector<Row>;

constexpr int kSamples = 501;
constexpr size_t kRounds = 50; // of all rows in one run: some tenth of a millisecond
constexpr uint32_t kHeight = 1080;
constexpr uint32_t kStride = 8192; // a multiple of all alignments
constexpr double kAllowedNanoseconds = 20;
constexpr double kAllowedCalls = 3; // indirect ones

uint32_t widthOf(size_t round)
{
    constexpr std::array<uint32_t, 4> kWidths = {640, 1920, 3840, 4208};
    return kWidths[round % kWidths.size()];
}

Rows rowsWhere(bool (*wanted)(const Row& row))
{
    Rows rows;
    std::copy_if(NUXOFormats::gNUXOFormatsInternal.begin(), NUXOFormats::gNUXOFormatsInternal.end(),
                 std::back_inserter(rows), wanted);
    if (rows.empty()) throw std::runtime_error("the format table lacks rows");
    return rows;
}

bool any(const Row& /*row*/)
{
    return true;
}

bool isCompressed(const Row& row)
{
    return row.isCompressed;
}

// What is timed: an answer of every row. The sum of the answers is used, so that none is left out.
template <typename Call> Side overRows(const Rows& rows, Call call)
{
    return {[&rows, call] {
        uint32_t sum = 0;
        for (size_t round = 0; round < kRounds; ++round) {
            const uint32_t width = widthOf(round);
            for (const Row& row : rows) sum += call(row, width);
        }
        benchmark::DoNotOptimize(sum);
    }};
}

uint32_t nothingMuch(const Row& row, uint32_t width)
{
    return row.fourcc ^ width;
}

// Calls a function that the compiler cannot know.
Side indirectCalls(const Rows& rows)
{
    uint32_t (*function)(const Row&, uint32_t) = nothingMuch;
    benchmark::DoNotOptimize(function);
    return overRows(rows, function);
}

double nanosecondsPerRow(double secondsOfRun, const Rows& rows)
{
    return secondsOfRun * 1e9 / static_cast<double>(kRounds * rows.size());
}

// A row in hand is asked in so many nanoseconds or in the time of so few indirect calls, whichever is longer: of the parts
// that are used of both allowances the smaller one counts. Nanoseconds are those of the fastest sample, since nothing
// beside it tells how busy the machine was.
template <typename Call> void addAnswer(Context& context, const std::string& name, Call call)
{
    add(context, "formats/" + name, kSamples, [&context, name, call](benchmark::State& state) {
        const Rows rows = rowsWhere(any);
        const Comparison result = compare(state, overRows(rows, call), indirectCalls(rows));
        const double nanoseconds = nanosecondsPerRow(result.fastest, rows);
        context.bars.add("  " + name + ", ns a row", nanoseconds);
        context.bars.add("  the same, median of the samples", nanosecondsPerRow(result.ours, rows));
        context.bars.add("  the same, times an indirect call", result.ratio);
        context.bars.add(name + ": part of 20 ns or 3 indirect calls",
                         std::min(nanoseconds / kAllowedNanoseconds, result.ratio / kAllowedCalls), atMost(1));
    });
}

// For information: the rows behind which the geometry of compressed buffers is computed.
template <typename Call> void addCompressed(Context& context, const std::string& name, Call call)
{
    add(context, "formats/" + name + "/compressed", kSamples, [&context, name, call](benchmark::State& state) {
        const Rows rows = rowsWhere(isCompressed);
        const Comparison result = compare(state, overRows(rows, call), indirectCalls(rows));
        context.bars.add("  " + name + ", compressed rows only, ns", nanosecondsPerRow(result.fastest, rows));
    });
}

uint32_t sizeOf(const Row& row, uint32_t width, uint32_t bpl)
{
    std::array<uint32_t, 3> offsets = {};
    std::array<uint32_t, 3> sizes = {};
    return NUXOFormats::calculateBufferSize(row, width, kHeight, bpl, offsets.data(), sizes.data());
}

void addAnswers(Context& context)
{
    addAnswer(context, "getBpl", [](const Row& row, uint32_t width) { return NUXOFormats::getBpl(row, width); });
    const auto given = [](const Row& row, uint32_t width) { return sizeOf(row, width, kStride); };
    const auto computed = [](const Row& row, uint32_t width) { return sizeOf(row, width, 0); };
    addAnswer(context, "calculateBufferSize, bpl given", given);
    addCompressed(context, "calculateBufferSize, bpl given", given);
    addAnswer(context, "calculateBufferSize, bpl 0", computed);
}

// Finds every row by its code, into one object.
Side lookups(const Rows& rows)
{
    const auto out = std::make_shared<Row>();
    Side side = overRows(rows, [out](const Row& row, uint32_t /*width*/) {
        const int status = NUXOFormats::getFormatByFourcc(row.fourcc, *out);
        if (status != StatusOk || out->fourcc != row.fourcc) throw std::runtime_error("a row is not found by its code");
        return out->bpp;
    });
    side.setUp = NUXOFormats::initNUXOFormats;
    return side;
}

// Like a lookup, these make a row in each call and free one.
Side copies(const Rows& rows)
{
    return overRows(rows, [](const Row& row, uint32_t /*width*/) {
        Row copy = row;
        benchmark::DoNotOptimize(copy);
        return copy.bpp;
    });
}

Side assignments(const Rows& rows)
{
    const auto out = std::make_shared<Row>();
    return overRows(rows, [out](const Row& row, uint32_t /*width*/) {
        *out = row;
        benchmark::DoNotOptimize(*out);
        return out->bpp;
    });
}

void addLookup(Context& context, const std::string& name, Side (*copiesOf)(const Rows& rows),
               const std::optional<Limit>& limit)
{
    add(context, "formats/getFormatByFourcc/" + name, kSamples,
        [&context, name, copiesOf, limit](benchmark::State& state) {
            const Rows rows = rowsWhere(any);
            const Comparison result = compare(state, lookups(rows), copiesOf(rows));
            context.bars.add("  " + name + " of a row, ns", nanosecondsPerRow(result.reference, rows));
            const std::string indent = limit ? "" : "  ";
            context.bars.add(indent + "getFormatByFourcc, times " + name + " of a row", result.ratio, limit);
        });
}

} // namespace

void addFormatBenchmarks(Context& context)
{
    addAnswers(context);
    addLookup(context, "copy construction", copies, atMost(2));
    addLookup(context, "copy assignment", assignments, std::nullopt);
}

} // namespace bench
