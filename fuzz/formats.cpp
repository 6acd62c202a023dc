// SPDX-License-Identifier: Apache-2.0
// Fuzz target: any bytes as calls of the functions on pixel formats and compressed buffers, with any arguments. Arithmetic
// is held against the second computation of the tests, lookups against the table that they read.
#include "support/Fuzzing.h"

#include "formats/LibraryComparison.h"
#include "formats/SecondComputation.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/formats/NUXOFormats.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace {

using NUXOFormats::gNUXOFormats;
using NUXOFormats::gNUXOFormatsInternal;
using NUXOFormats::qv_format_t;

constexpr int kMostCalls = 16;

/// Takes arguments off the front of the bytes; behind the end everything is 0.
class Input {
public:
    Input(const uint8_t* data, size_t size) : mNext(data), mEnd(data + size) {}

    bool isEmpty() const { return mNext == mEnd; }
    uint8_t byte() { return isEmpty() ? 0 : *mNext++; }
    bool flag() { return byte() % 2 == 1; }

    uint32_t number()
    {
        switch (byte() % 4) {
        case 0: return byte();
        case 1: return bytes(2);
        case 2: return beside(byte(), byte());
        default: return bytes(4);
        }
    }

    /// One of the codes that mean something, or any.
    uint32_t code()
    {
        const std::vector<uint32_t>& known = knownCodes();
        const uint8_t selector = byte();
        return selector < known.size() ? known[selector] : bytes(4);
    }

    /// Mostly small numbers, which frame formats, depths, planes and pins are.
    uint32_t small()
    {
        const uint8_t selector = byte();
        return selector < 128 ? selector : number();
    }

    /// The name of a row, cut or lengthened, or any text.
    std::string name()
    {
        const uint8_t selector = byte();
        if (selector >= gNUXOFormatsInternal.size()) return text(byte() % 64);
        std::string result = gNUXOFormatsInternal[selector].name;
        switch (byte() % 8) {
        case 0: result.pop_back(); break;
        case 1: result += text(1); break;
        case 2: result.front() = static_cast<char>(byte()); break;
        default: break;
        }
        return result;
    }

private:
    uint32_t bytes(int count)
    {
        uint32_t value = 0;
        for (int i = 0; i < count; ++i) value = value << 8 | byte();
        return value;
    }

    /// A number at or close to a power of two, 2^32 among them.
    static uint32_t beside(uint8_t power, uint8_t distance)
    {
        return static_cast<uint32_t>(uint64_t{1} << power % 33) + static_cast<uint32_t>(static_cast<int8_t>(distance));
    }

    std::string text(size_t length)
    {
        std::string result;
        while (result.size() < length && !isEmpty()) result += static_cast<char>(byte());
        return result;
    }

    static const std::vector<uint32_t>& knownCodes()
    {
        static const std::vector<uint32_t> codes = [] {
            std::vector<uint32_t> result = second::codesWithoutRow();
            for (const qv_format_t& row : gNUXOFormatsInternal) result.push_back(row.fourcc);
            return result;
        }();
        return codes;
    }

    const uint8_t* mNext;
    const uint8_t* mEnd;
};

template <class Question> void compare(const Question& question)
{
    const char* const what = second::difference(question);
    fuzzing::require(what == nullptr, what == nullptr ? "" : what);
}

void askForFrame(Input& input)
{
    compare(second::FormatQuestion{input.code(), input.small(), input.number(), input.number(), input.number(),
                                   input.number(), input.flag(), input.byte()});
}

void askForBuffer(Input& input)
{
    compare(second::BufferQuestion{input.small(), input.small(), input.small(), input.number(), input.number(),
                                   input.number(), input.flag(), input.byte()});
}

void askForPlane(Input& input)
{
    compare(second::PlaneQuestion{input.number(), input.number(), input.number(), input.flag(), input.byte()});
}

void askForInput(Input& input)
{
    compare(second::InputQuestion{input.small(), input.small(), input.small(), input.byte()});
}

template <class Matches> qv_format_t* firstRow(Matches&& matches)
{
    const auto row = std::find_if(gNUXOFormats.begin(), gNUXOFormats.end(), matches);
    return row == gNUXOFormats.end() ? nullptr : &*row;
}

qv_format_t* rowNamed(const std::string& name)
{
    return firstRow([&name](const qv_format_t& row) { return row.name == name; });
}

qv_format_t* rowWithCode(uint32_t fourcc)
{
    return firstRow([fourcc](const qv_format_t& row) { return row.fourcc == fourcc; });
}

void checkLookup(const qv_format_t* row, int status, const qv_format_t& out)
{
    fuzzing::require(status == (row != nullptr ? StatusOk : StatusBadState), "a row that exists is found");
    if (row == nullptr) {
        fuzzing::require(out.id == 1 && out.name.empty(), "nothing is copied without a row");
    } else {
        fuzzing::require(out.name == row->name && out.fourcc == row->fourcc && out.id == row->id &&
                             out.planes.size() == row->planes.size(),
                         "the first row is copied");
    }
}

void lookUpName(Input& input)
{
    const std::string name = input.name();
    qv_format_t out;
    out.id = 1;
    const int status = NUXOFormats::getFormatByName(name, out);
    checkLookup(rowNamed(name), status, out);
}

void lookUpCode(Input& input)
{
    const uint32_t fourcc = input.code();
    qv_format_t out;
    out.id = 1;
    const int status = NUXOFormats::getFormatByFourcc(fourcc, out);
    const qv_format_t* const row = rowWithCode(fourcc);
    checkLookup(row, status, out);
    const uint32_t planes = NUXOFormats::getPlaneCountByFourcc(fourcc);
    fuzzing::require(planes == (row != nullptr ? row->planes.size() : 4294967295U), "planes of a row are counted");
}

void setId(Input& input)
{
    const std::string name = input.name();
    const uint32_t id = input.number();
    const int status = NUXOFormats::setFormatId(name, id);
    const qv_format_t* const row = rowNamed(name);
    fuzzing::require(status == (row != nullptr ? StatusOk : StatusBadArgument), "a row that exists takes an id");
    fuzzing::require(row == nullptr || row->id == id, "an id is stored");
}

void askForCompression(Input& input)
{
    const std::string name = input.name();
    const uint32_t fourcc = input.code();
    const bool isNameCompressed = NUXOFormats::isCompressedFormat(name);
    const bool isCodeCompressed = ::isCompressedFormat(fourcc);
    const bool isCodeCompressedForC = qv_cipf_is_compressed_format(fourcc);
    fuzzing::require(!gNUXOFormats.empty(), "asking for compression fills the table");
    const qv_format_t* const named = rowNamed(name);
    const qv_format_t* const coded = rowWithCode(fourcc);
    fuzzing::require(isNameCompressed == (named != nullptr && named->isCompressed), "compressed by name");
    fuzzing::require(isCodeCompressed == (coded != nullptr && coded->isCompressed), "compressed by code");
    fuzzing::require(isCodeCompressedForC == isCodeCompressed, "compressed by code, for C");
}

void changeTable(Input& input)
{
    switch (input.byte() % 4) {
    case 0: gNUXOFormats.clear(); break;
    case 1:
        if (!gNUXOFormats.empty()) gNUXOFormats.erase(gNUXOFormats.begin() + input.byte() % gNUXOFormats.size());
        break;
    case 2: {
        // Two rows may have one name or code then.
        qv_format_t row;
        row.name = input.name();
        row.fourcc = input.code();
        row.planes.resize(input.byte() % 8);
        gNUXOFormats.insert(gNUXOFormats.begin() + input.byte() % (gNUXOFormats.size() + 1), row);
        break;
    }
    default: {
        const size_t before = gNUXOFormats.size();
        NUXOFormats::initNUXOFormats();
        const size_t expected = before != 0 ? before : gNUXOFormatsInternal.size();
        fuzzing::require(gNUXOFormats.size() == expected, "an empty table is filled, another is not");
    }
    }
}

using Call = void (*)(Input& input);

constexpr std::array<Call, 9> kCalls = {askForFrame, askForBuffer, askForPlane, askForInput,      lookUpName,
                                        lookUpCode,  setId,        changeTable, askForCompression};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const fuzzing::Run run;
    Input input(data, size);
    for (int i = 0; i < kMostCalls && !input.isEmpty(); ++i) kCalls[input.byte() % kCalls.size()](input);
    gNUXOFormats.clear();
    return 0;
}
