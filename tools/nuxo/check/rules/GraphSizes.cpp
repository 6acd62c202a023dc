// SPDX-License-Identifier: Apache-2.0
#include "check/rules/GraphSizes.h"

#include "RecordText.h"
#include "TreeView.h"

#include <algorithm>

namespace NuxoTool {

using NUXO::IGraphConfig;

bool Arriving::fits(const Extent& size) const
{
    return mSizes.empty() || std::find(mSizes.begin(), mSizes.end(), size) != mSizes.end();
}

void Arriving::take(const Extent& size, const IGraphConfig* giver)
{
    if (!fits(size)) {
        allow(size);
        return;
    }
    const bool isNew = mSizes.empty() || !(mSizes.front() == size);
    mSizes = {size};
    if (isNew) mGiver = giver;
}

void Arriving::allow(const Extent& size)
{
    if (!fits(size)) mSizes.push_back(size);
}

std::optional<Extent> extentOf(const IGraphConfig& item)
{
    const std::optional<int> width = optionalInteger(item, NUXO_KEY_WIDTH);
    const std::optional<int> height = optionalInteger(item, NUXO_KEY_HEIGHT);
    if (!width || !height) return std::nullopt;
    return Extent{*width, *height};
}

std::string extentText(const Extent& size)
{
    return sizeText(size.width, size.height);
}

uint32_t wrongSide(const Extent& found, const Extent& expected)
{
    return found.width != expected.width ? NUXO_KEY_WIDTH : NUXO_KEY_HEIGHT;
}

void reportSize(GraphInspection& inspection, const char* rule, const IGraphConfig& item, const Extent& stated,
                const Arriving& arriving, const std::string& text)
{
    const uint32_t side = wrongSide(stated, arriving.first());
    inspection.report(rule, item, side, text);
    inspection.explain(item);
    const IGraphConfig* const giver = arriving.giver();
    if (giver != nullptr && giver != &item && inspection.placeOf(*giver, side))
        inspection.note(*giver, side, extentText(arriving.first()) + " comes from here");
}

} // namespace NuxoTool
