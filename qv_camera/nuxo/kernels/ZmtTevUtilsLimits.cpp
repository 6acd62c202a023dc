// SPDX-License-Identifier: Apache-2.0
// Calibration, exposures, limits and routing: what the graph says without its kernels.
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/kernels/KernelSteps.h>
#include <nuxo/kernels/ZmtTevUtils.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/TypeNames.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <locale.h>
#include <new>

namespace NUXO {

namespace {

constexpr size_t kLimitCount = size_t{QV_VIEW_MBR_ROWS} * QV_VIEW_MBR_ROW_LENGTH;
constexpr char kSeparator = ',';

using Routing = std::map<int, std::vector<std::tuple<int, std::string>>>;

// Reads numbers as files write them, whatever the locale of the process.
class FloatReader {
public:
    FloatReader() : mLocale(newlocale(LC_ALL_MASK, "C", nullptr)) {}
    ~FloatReader()
    {
        if (mLocale != nullptr) freelocale(mLocale);
    }
    FloatReader(const FloatReader&) = delete;
    FloatReader& operator=(const FloatReader&) = delete;

    /// The number at the start of the text; what follows it is ignored. False, with @p value untouched, without one.
    bool read(const char* text, float& value) const
    {
        if (mLocale == nullptr) throw std::bad_alloc();
        char* end = nullptr;
        const float number = strtof_l(text, &end, mLocale);
        if (end == text || !std::isfinite(number)) return false;
        value = number;
        return true;
    }

private:
    locale_t mLocale;
};

// A separator ends a number; behind the last one there is a number only if there is text.
size_t countNumbers(const std::string& text)
{
    const auto separators = static_cast<size_t>(std::count(text.begin(), text.end(), kSeparator));
    return text.empty() || text.back() == kSeparator ? separators : separators + 1;
}

// Reads one row of numbers and moves behind it; false when one of them is none.
bool readRow(const FloatReader& reader, const char*& text, float (&row)[QV_VIEW_MBR_ROW_LENGTH])
{
    float numbers[QV_VIEW_MBR_ROW_LENGTH];
    for (float& number : numbers) {
        if (!reader.read(text, number)) return false;
        while (*text != '\0' && *text++ != kSeparator) {}
    }
    std::copy(std::begin(numbers), std::end(numbers), row);
    return true;
}

int readLimits(const std::string& text, qv_view_mbr_limits_t& limits)
{
    const size_t count = countNumbers(text);
    if (count != kLimitCount) NUXO_WARN("MBR data size (%zu) does not match expected size (%zu)", count, kLimitCount);
    const FloatReader reader;
    const char* rest = text.c_str();
    size_t left = count;
    for (auto& row : limits.values) {
        if (left < QV_VIEW_MBR_ROW_LENGTH || !readRow(reader, rest, row)) return StatusBadState;
        left -= QV_VIEW_MBR_ROW_LENGTH;
    }
    return StatusOk;
}

// The limits of the stream, null without them.
const IGraphConfig* findLimits(const IGraphConfig& root, int streamId)
{
    const IGraphConfig* const all = root.getDescendant(NUXO_KEY_MBR_DATA);
    if (all == nullptr) {
        NUXO_ERROR("MBR limits data not found at all");
        return nullptr;
    }
    NodeIterator streams(all);
    while (const IGraphConfig* const stream = streams.iterateByUid(NUXO_KEY_STREAM_ID)) {
        int id = 0;
        if (!fetch(*stream, NUXO_KEY_ID, id)) {
            NUXO_ERROR("MBR limits data has no stream id associated - check your settings");
            return nullptr;
        }
        if (id == streamId) return stream;
    }
    NUXO_ERROR("MBR limits data not found for stream-id %d", streamId);
    return nullptr;
}

int collectLimits(const IGraphConfig& root, int streamId, qv_view_mbr_limits_t& limits)
{
    const IGraphConfig* const stream = findLimits(root, streamId);
    if (stream == nullptr) return StatusBadState;
    std::string text;
    const int status = readText(*stream, NUXO_KEY_VALUE, text);
    return status == StatusOk ? readLimits(text, limits) : status;
}

void readExposures(const IGraphConfig& source, float& conversionGain, std::string& dolMode)
{
    std::string gain;
    if (!fetch(source, NUXO_KEY_CONVERSION_GAIN, gain) || gain.empty()) return;
    if (!fetch(source, NUXO_KEY_DOL_MODE, dolMode) || dolMode.empty()) return;
    static_cast<void>(FloatReader().read(gain.c_str(), conversionGain)); // the default stays for what is no number
}

// An attribute that is 0 when absent, which is then logged.
int integerOrZero(const IGraphConfig& node, uint32_t key, const char* absentMessage)
{
    int value = 0;
    if (!fetch(node, key, value)) NUXO_WARN(absentMessage, nameOrFiledName(node).c_str());
    return value;
}

void addRouting(const IGraphConfig& stage, const ItemUID& rbmPath, Routing& routing)
{
    const int stream = integerOrZero(stage, NUXO_KEY_STREAM_ID, "PG %s does not have stream id defined default to 0");
    const int id = integerOrZero(stage, NUXO_KEY_PG_ID, "PG %s does not have PG/CB id defined default to 0");
    std::string rbm;
    if (readText(stage, rbmPath, rbm) != StatusOk) {
        NUXO_WARN("PG %s does not have RBM defined default 0", nameOrFiledName(stage).c_str());
        rbm = "0";
    }
    routing[stream].emplace_back(id, std::move(rbm));
}

} // namespace

const IGraphConfig* ZmtTevUtils::findSource() const
{
    for (const uint32_t key : {NUXO_KEY_SENSOR, NUXO_KEY_BUFFER_SRC0}) {
        const IGraphConfig* const source = mRoot->getDescendant(key);
        if (source != nullptr) return source;
    }
    NUXO_ERROR("Error: Couldn't find any source (sensor or buf src). Check your settings.");
    return nullptr;
}

int ZmtTevUtils::getSensorCmcId(std::string& cmcId)
{
    const IGraphConfig* const source = isInitialized() ? findSource() : nullptr;
    if (source == nullptr) return StatusMissingObject;
    cmcId.clear();
    return unlessNoMemory<int>(StatusNoMemory, [&]() -> int {
        if (fetch(*source, NUXO_KEY_CMC_TAG, cmcId) && !cmcId.empty()) return StatusOk;
        NUXO_ERROR("Error: Couldn't get cmc tag. Check your settings.");
        return StatusBadState;
    });
}

int ZmtTevUtils::getDolInfo(float& conversionGain, std::string& dolMode)
{
    const IGraphConfig* const source = isInitialized() ? findSource() : nullptr;
    if (source == nullptr) return StatusMissingObject;
    conversionGain = 1.0F;
    dolMode.clear();
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        readExposures(*source, conversionGain, dolMode);
        return StatusOk;
    });
}

int ZmtTevUtils::getMbrData(int streamId, qv_view_mbr_limits_t* limits)
{
    if (limits == nullptr) {
        reportNotInitialized(); // as readers of the log know it
        return StatusMissingObject;
    }
    if (!isInitialized()) return StatusMissingObject;
    *limits = {};
    return unlessNoMemory<int>(StatusNoMemory, [&] { return collectLimits(*mRoot, streamId, *limits); });
}

int ZmtTevUtils::getRoutingInfo(std::map<int, std::vector<std::tuple<int, std::string>>>& routing)
{
    routing.clear();
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        const ItemUID rbmPath = {NUXO_KEY_CIPF, NUXO_KEY_RBM};
        const char* const type = mVersion < GdfVersionKVA7 ? kTypeProgramGroup : kTypeComputeBlock;
        forEachOfType(mRoot, type, [&](const IGraphConfig& stage) {
            addRouting(stage, rbmPath, routing);
            return true;
        });
        return StatusOk;
    });
}

} // namespace NUXO
