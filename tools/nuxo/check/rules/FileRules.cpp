// SPDX-License-Identifier: Apache-2.0
#include "check/rules/FileRules.h"

#include "Text.h"

#include <algorithm>
#include <iterator>

namespace NuxoTool {

namespace {

constexpr size_t kMostNames = 12; // of a list that a reader takes in

} // namespace

std::vector<PlacedElement> placedElements(const XmlDocument& document)
{
    std::vector<PlacedElement> placed;
    std::vector<PlacedElement> open; // from the document's element down
    for (const XmlElement& element : document.elements()) {
        while (!open.empty() && open.back().element != element.parent) open.pop_back();
        PlacedElement place;
        place.element = &element;
        if (element.parent == nullptr) {
            place.kind = kindOfRoot(element);
        } else {
            place.parentKind = open.empty() ? nullptr : open.back().kind;
            if (place.parentKind == nullptr) continue;
            place.kind = place.parentKind->childKind(element);
        }
        placed.push_back(place);
        open.push_back(place);
    }
    return placed;
}

std::vector<PlacedElement> knownElements(const XmlDocument& document)
{
    std::vector<PlacedElement> known = placedElements(document);
    const auto isUnknown = [](const PlacedElement& place) { return place.kind == nullptr; };
    known.erase(std::remove_if(known.begin(), known.end(), isUnknown), known.end());
    return known;
}

std::string oneOf(const std::vector<std::string>& all)
{
    std::vector<std::string> names; // each once
    for (const std::string& name : all) {
        if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    }
    if (names.empty()) return "nothing";
    std::string text;
    for (size_t i = 0; i < std::min(names.size(), kMostNames); ++i) text += (i == 0 ? "" : ", ") + named(names[i]);
    if (names.size() > kMostNames) text += " and others";
    return names.size() == 1 ? text : "one of " + text;
}

std::vector<Rule> fileRules()
{
    std::vector<Rule> all;
    for (std::vector<Rule> part : {elementRules(), attributeRules(), valueRules(), nameRules()})
        std::move(part.begin(), part.end(), std::back_inserter(all));
    return all;
}

} // namespace NuxoTool
