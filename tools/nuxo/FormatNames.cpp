// SPDX-License-Identifier: Apache-2.0
#include "FormatNames.h"

#include "Suggestion.h"

#include <algorithm>
#include <vector>

namespace NuxoTool {

using NUXOFormats::qv_format_t;

namespace {

template <typename Matches> const qv_format_t* find(Matches matches)
{
    const std::vector<qv_format_t>& formats = NUXOFormats::gNUXOFormats;
    const auto found = std::find_if(formats.begin(), formats.end(), matches);
    return found == formats.end() ? nullptr : &*found;
}

} // namespace

std::string fourccText(uint32_t fourcc)
{
    std::string text;
    for (const unsigned shift : {24U, 16U, 8U, 0U}) text += static_cast<char>((fourcc >> shift) & 0xffU);
    return text;
}

uint32_t fourccOf(const std::string& text)
{
    uint32_t fourcc = 0;
    for (size_t i = 0; i < kFourccLength; ++i) {
        fourcc = fourcc << 8U | (i < text.size() ? static_cast<unsigned char>(text[i]) : 0U);
    }
    return fourcc;
}

const qv_format_t* formatNamed(const std::string& name)
{
    return find([&name](const qv_format_t& format) { return format.name == name; });
}

const qv_format_t* formatCoded(uint32_t fourcc)
{
    return find([fourcc](const qv_format_t& format) { return format.fourcc == fourcc; });
}

std::string formatSuggestion(const std::string& name, bool withCodes)
{
    std::vector<std::string> candidates;
    for (const qv_format_t& format : NUXOFormats::gNUXOFormats) {
        candidates.push_back(format.name);
        if (withCodes) candidates.push_back(fourccText(format.fourcc));
    }
    return suggestionFor(name, candidates);
}

} // namespace NuxoTool
