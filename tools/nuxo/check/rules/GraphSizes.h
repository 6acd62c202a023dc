// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_GRAPH_SIZES_H
#define NUXO_TOOL_GRAPH_SIZES_H

#include "check/rules/GraphInspection.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NuxoTool {

/// The sizes that may arrive somewhere: several, where a mismatch before leaves open which one is meant, none where it is
/// not known. Of these the first is what the library takes.
class Arriving {
public:
    Arriving() = default;
    Arriving(const Extent& size, const NUXO::IGraphConfig* giver) : mSizes({size}), mGiver(giver) {}

    bool isKnown() const { return !mSizes.empty(); }
    const Extent& first() const { return mSizes.front(); }
    bool fits(const Extent& size) const;
    /// The element that states the first; may be null.
    const NUXO::IGraphConfig* giver() const { return mGiver; }
    /// From now on what fits is the one that is meant, or, where it does not fit, one of several.
    void take(const Extent& size, const NUXO::IGraphConfig* giver);
    /// One more that may be meant.
    void allow(const Extent& size);

private:
    std::vector<Extent> mSizes;
    const NUXO::IGraphConfig* mGiver = nullptr;
};

/// The size that an element states, nothing unless it is whole.
std::optional<Extent> extentOf(const NUXO::IGraphConfig& item);

/// "1920x1080"
std::string extentText(const Extent& size);

/// The attribute of a size that is not the expected one.
uint32_t wrongSide(const Extent& found, const Extent& expected);

/// Reports a size that an element states and that does not arrive there, and notes where the one comes from that does.
void reportSize(GraphInspection& inspection, const char* rule, const NUXO::IGraphConfig& item, const Extent& stated,
                const Arriving& arriving, const std::string& text);

} // namespace NuxoTool

#endif
