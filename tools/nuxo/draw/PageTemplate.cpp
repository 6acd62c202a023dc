// SPDX-License-Identifier: Apache-2.0
#include "draw/PageTemplate.h"

#include <string_view>

namespace NuxoTool {

std::string fillPage(const std::string& title, const std::string& data)
{
    constexpr std::string_view titleMark = "{{title}}";
    constexpr std::string_view dataMark = "{{data}}";
    const std::string_view page = kPageTemplate;
    const size_t titleAt = page.find(titleMark);
    const size_t dataAt = page.rfind(dataMark);
    std::string text(page.substr(0, titleAt));
    text += title;
    text += page.substr(titleAt + titleMark.size(), dataAt - titleAt - titleMark.size());
    text += data;
    text += page.substr(dataAt + dataMark.size());
    return text;
}

} // namespace NuxoTool
