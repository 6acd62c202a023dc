// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_FUZZ_SUPPORT_DIGEST_H
#define NUXO_FUZZ_SUPPORT_DIGEST_H

#include <nuxo/records/qv_isp_zmt_run_kernels.h>
#include <nuxo/simulation/ZmtTevSimUtils.h>
#include <nuxo/tree/GraphConfigNode.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace fuzzing {

/// Where each node of a tree stands in it, so that nodes of copies compare as equal.
class Places {
public:
    explicit Places(const std::vector<NUXO::GraphConfigNode*>& nodes)
    {
        for (const NUXO::GraphConfigNode* const node : nodes) mPlaces.emplace_back(node, mPlaces.size());
        std::sort(mPlaces.begin(), mPlaces.end());
    }

    /// The number of nodes for any that is not in the tree.
    uint64_t of(const NUXO::IGraphConfig* node) const
    {
        const auto entry = std::lower_bound(mPlaces.begin(), mPlaces.end(), node,
                                            [](const auto& place, const auto* key) { return place.first < key; });
        return entry != mPlaces.end() && entry->first == node ? entry->second : mPlaces.size();
    }

private:
    std::vector<std::pair<const NUXO::IGraphConfig*, uint64_t>> mPlaces; // in the order of addresses
};

/// A number that stands for all that was added. Not a container: it must not allocate.
class Digest {
public:
    explicit Digest(const Places& places) : mPlaces(places) {}

    uint64_t value() const { return mValue; }

    void add(uint64_t number)
    {
        constexpr uint64_t prime = 0x100000001b3;
        mValue = (mValue ^ number) * prime;
    }
    void add(int number) { add(static_cast<uint64_t>(int64_t{number})); }
    void add(unsigned int number) { add(uint64_t{number}); }
    void add(uint16_t number) { add(uint64_t{number}); }
    void add(uint8_t number) { add(uint64_t{number}); }
    void add(bool truth) { add(uint64_t{truth ? 1U : 0U}); }
    void add(const NUXO::IGraphConfig* node) { add(mPlaces.of(node)); }
    void add(const std::string& text)
    {
        add(uint64_t{text.size()});
        for (const char character : text) add(static_cast<uint8_t>(character));
    }
    void add(const NUXO::ZmtTevSimUtils::KernelInfo& kernel)
    {
        add(kernel.name);
        add(kernel.pal_uuid);
    }
    void add(const qv_rectangle& crop)
    {
        for (const int32_t side : {crop.left, crop.top, crop.right, crop.bottom}) add(side);
    }
    void add(const qv_isp_zmt_resolution_info& info)
    {
        for (const int32_t size : {info.input_width, info.input_height, info.output_width, info.output_height})
            add(size);
        add(info.input_crop);
        add(info.output_crop);
    }
    /// With what it points to.
    void add(const qv_isp_zmt_run_kernels& kernel)
    {
        for (const uint32_t number : {kernel.stream_id, kernel.kernel_uuid, kernel.output_count,
                                      kernel.bpp_info.input_bpp, kernel.bpp_info.output_bpp}) {
            add(number);
        }
        add(kernel.enable);
        for (const uint32_t value : kernel.metadata) add(value);
        for (const uint8_t byte : kernel.reserved) add(byte);
        add(kernel.resolution_info != nullptr);
        const size_t outputs = kernel.resolution_info == nullptr ? 0 : std::max<size_t>(kernel.output_count, 1);
        for (size_t i = 0; i < outputs; ++i) add(kernel.resolution_info[i]);
        add(kernel.resolution_history != nullptr);
        if (kernel.resolution_history != nullptr) add(*kernel.resolution_history);
    }
    void add(const qv_isp_zmt_program_group& group)
    {
        add(group.kernel_count);
        add(group.operation_mode);
        for (uint32_t i = 0; i < group.kernel_count; ++i) add(group.run_kernels[i]);
    }
    template <typename First, typename Second> void add(const std::pair<First, Second>& pair)
    {
        add(pair.first);
        add(pair.second);
    }
    template <typename... Values> void add(const std::tuple<Values...>& tuple)
    {
        std::apply([this](const Values&... values) { (add(values), ...); }, tuple);
    }
    template <typename Values, typename = typename Values::const_iterator> void add(const Values& values)
    {
        add(uint64_t{values.size()});
        for (const auto& value : values) add(value);
    }

private:
    const Places& mPlaces;
    uint64_t mValue = 0xcbf29ce484222325;
};

} // namespace fuzzing

#endif
