// SPDX-License-Identifier: Apache-2.0
#include "diff/DiffRenderer.h"

#include "Origins.h"
#include "Text.h"

#include <algorithm>
#include <map>
#include <optional>
#include <vector>

namespace NuxoTool {

using Change = Difference::Change;

namespace {

constexpr size_t kWidestLeftSide = 76;  // longer lines do not push the places of all others away
constexpr size_t kLongestPath = 1000;   // longer ones are cut in the middle
constexpr size_t kShownAttributes = 80; // bytes of those of an element that only one side has
constexpr const char* kPlain = "\033[0m";
constexpr const char* kBold = "\033[1m";

struct Look {
    const char* word;
    const char* mark;
    const char* paint;
};

// In the order of Difference::Change.
constexpr Look kLooks[] = {{"added", "+", "\033[32m"},
                           {"removed", "-", "\033[31m"},
                           {"changed", "~", "\033[33m"},
                           {"renamed", "~", "\033[33m"},
                           {"reordered", "~", "\033[33m"}};

const Look& lookOf(const Difference& difference)
{
    return kLooks[static_cast<size_t>(difference.change)];
}

using Place = std::optional<Location>;

// The places of both sides. What a side does not have stands where its holder does.
struct Places {
    Place a;
    Place b;
};

class DiffPlaces {
public:
    explicit DiffPlaces(const DiffReport& report) : mReport(report) {}

    Places of(const Difference& difference) const
    {
        return {placeOf(difference.attributes.first, difference.elements.first, *difference.within->a, mReport.a),
                placeOf(difference.attributes.second, difference.elements.second, *difference.within->b, mReport.b)};
    }

private:
    Place placeOf(const DiffAttribute* attribute, const DiffElement* element, const DiffElement& holder,
                  const DiffSide& side) const
    {
        const DiffElement& shown = element != nullptr ? *element : holder;
        if (attribute == nullptr) return shown.parent == nullptr ? side.root : placeOf(shown.item);
        const Place place = placeOf(attribute->item);
        return !place && holder.parent == nullptr ? side.root : place;
    }

    // By item: to look a node up among its siblings takes as long as there are many.
    Place placeOf(NUXO::GraphConfigNode::iterator item) const
    {
        AttributeView view;
        view.item = item;
        return originOf(mReport.locator, view);
    }

    const DiffReport& mReport;
};

std::string pathText(const DiffReport& report, const DiffPair& pair)
{
    const std::string path = report.comparison.pathOf(pair);
    if (path.size() <= kLongestPath) return path;
    return path.substr(0, kLongestPath / 2) + "..." + path.substr(path.size() - kLongestPath / 2);
}

std::string attributeName(const DiffReport& report, const DiffAttribute& attribute)
{
    const std::string& name = report.trees.text(attribute.name);
    return name == "na" ? "(unknown attribute)" : printable(name);
}

std::string valueText(const DiffReport& report, const DiffAttribute& attribute)
{
    const std::string& value = report.trees.text(attribute.value);
    return attribute.kind == DiffAttribute::Kind::Text ? NuxoTool::quoted(value) : printable(value);
}

std::string kindText(const DiffReport& report, const DiffElement& element)
{
    for (const DiffAttribute& attribute : element.attributes) {
        if (report.trees.text(attribute.name) == "type") return report.trees.text(attribute.value);
    }
    return "";
}

std::string labelText(const DiffReport& report, const DiffElement& element)
{
    const std::string kind = kindText(report, element);
    return printable(report.trees.text(element.label)) + (kind.empty() ? "" : " (" + printable(kind) + ')');
}

class DiffText {
public:
    DiffText(const DiffReport& report, bool colour) : mReport(report), mPlaces(report), mColour(colour) {}

    std::string text()
    {
        const std::vector<Difference>& differences = mReport.comparison.differences();
        if (differences.empty()) return "";
        const DiffPair* within = nullptr;
        for (const Difference& difference : differences) {
            if (difference.within != within) addHead(*difference.within);
            within = difference.within;
            addLine(difference);
        }
        return painted("--- " + mReport.a.title, kBold) + '\n' + painted("+++ " + mReport.b.title, kBold) + "\n\n" +
               lines() + '\n' + summary() + '\n';
    }

private:
    struct Line {
        std::string left;
        std::string places; ///< empty for heads
        const char* paint;
        size_t width;
    };

    std::string painted(const std::string& text, const char* paint) const
    {
        return mColour ? paint + text + kPlain : text;
    }

    void addHead(const DiffPair& pair)
    {
        std::string head = printable(pathText(mReport, pair));
        if (pair.parent == nullptr) head = mReport.a.rootName;
        const std::string kind = kindText(mReport, *pair.a);
        if (!kind.empty() && kind == kindText(mReport, *pair.b)) head += " (" + printable(kind) + ')';
        mLines.push_back({head, "", kBold, 0});
    }

    void addLine(const Difference& difference)
    {
        const Look& look = lookOf(difference);
        const std::string left = std::string("  ") + look.mark + ' ' + whatDiffers(difference);
        mLines.push_back({left, placesText(difference), look.paint, displayWidth(left)});
    }

    std::string whatDiffers(const Difference& difference) const
    {
        return difference.isOfAttribute() ? attributeDiffers(difference) : elementDiffers(difference);
    }

    std::string attributeDiffers(const Difference& difference) const
    {
        const auto& [a, b] = difference.attributes;
        const std::string start = difference.change == Change::Reordered ? "order of " : "";
        const std::string name = start + attributeName(mReport, a != nullptr ? *a : *b);
        const std::string values = (a != nullptr ? ' ' + valueText(mReport, *a) : "") +
                                   (a != nullptr && b != nullptr ? " ->" : "") +
                                   (b != nullptr ? ' ' + valueText(mReport, *b) : "");
        return name + values;
    }

    std::string elementDiffers(const Difference& difference) const
    {
        const auto& [a, b] = difference.elements;
        if (a == nullptr || b == nullptr) return contentText(a != nullptr ? *a : *b);
        if (difference.change == Change::Renamed) {
            return printable(mReport.trees.text(a->label)) + " renamed to " + labelText(mReport, *b) +
                   ": the content is the same";
        }
        const std::string order = "order of " + printable(mReport.trees.text(difference.orderGroup));
        if (a->label == b->label) return order;
        return order + ": " + labelText(mReport, *a) + " -> " + labelText(mReport, *b);
    }

    // An element that only one side has, on one line.
    std::string contentText(const DiffElement& element) const
    {
        std::string text = labelText(mReport, element);
        const size_t end = text.size() + kShownAttributes;
        for (const DiffAttribute& attribute : element.attributes) {
            if (mReport.trees.text(attribute.name) == "type") continue; // in the label
            const std::string next = attributeName(mReport, attribute) + '=' + valueText(mReport, attribute);
            if (text.size() + next.size() > end) {
                text += " ...";
                break;
            }
            text += ' ' + next;
        }
        if (element.size == 1) return text;
        return text + ", " + std::to_string(element.size - 1) + (element.size == 2 ? " element" : " elements") +
               " in it";
    }

    std::string placesText(const Difference& difference) const
    {
        const auto& [a, b] = mPlaces.of(difference);
        if (difference.change == Change::Added) return originText(b) + ", not in " + originText(a);
        if (difference.change == Change::Removed) return originText(a) + ", not in " + originText(b);
        return originText(a) + " -> " + originText(b);
    }

    std::string lines() const
    {
        size_t width = 0;
        for (const Line& line : mLines) {
            if (line.width <= kWidestLeftSide) width = std::max(width, line.width);
        }
        std::string text;
        for (const Line& line : mLines) {
            text += painted(line.left, line.paint);
            if (!line.places.empty()) {
                text.append(width > line.width ? width - line.width : 0, ' ');
                text += "  " + line.places;
            }
            text += '\n';
        }
        return text;
    }

    std::string summary() const
    {
        size_t counts[std::size(kLooks)] = {};
        const std::vector<Difference>& differences = mReport.comparison.differences();
        for (const Difference& difference : differences) ++counts[static_cast<size_t>(difference.change)];
        std::string text =
            std::to_string(differences.size()) + (differences.size() == 1 ? " difference" : " differences");
        const char* link = ": ";
        for (size_t i = 0; i < std::size(kLooks); ++i) {
            if (counts[i] == 0) continue;
            text += link + std::to_string(counts[i]) + ' ' + kLooks[i].word;
            link = ", ";
        }
        return text;
    }

    const DiffReport& mReport;
    DiffPlaces mPlaces;
    bool mColour;
    std::vector<Line> mLines;
};

JsonValue jsonValue(const DiffReport& report, const DiffAttribute& attribute)
{
    const std::string& value = report.trees.text(attribute.value);
    return attribute.kind == DiffAttribute::Kind::Integer ? JsonValue(std::stoi(value)) : JsonValue(value);
}

JsonValue jsonContent(const DiffReport& report, const DiffElement& element)
{
    JsonValue json;
    json["name"] = report.trees.text(element.label);
    const std::string kind = kindText(report, element);
    if (!kind.empty()) json["kind"] = kind;
    JsonValue attributes = JsonValue::object();
    for (const DiffAttribute& attribute : element.attributes) {
        attributes[report.trees.text(attribute.name)] = jsonValue(report, attribute);
    }
    json["attributes"] = attributes;
    json["elements_in_it"] = element.size - 1;
    return json;
}

JsonValue jsonSide(const DiffReport& report, const DiffAttribute* attribute, const DiffElement* element,
                   const Place& place)
{
    JsonValue json = JsonValue::object();
    if (attribute != nullptr) json["value"] = jsonValue(report, *attribute);
    if (element != nullptr) json["element"] = jsonContent(report, *element);
    json["where"] = jsonLocation(place);
    return json;
}

std::string nameOf(const DiffReport& report, const Difference& difference)
{
    if (difference.isOfAttribute()) {
        const auto& [a, b] = difference.attributes;
        return report.trees.text((a != nullptr ? a : b)->name);
    }
    if (difference.change == Change::Reordered) return report.trees.text(difference.orderGroup);
    const auto& [a, b] = difference.elements;
    return report.trees.text((a != nullptr ? a : b)->label);
}

JsonValue jsonDifference(const DiffReport& report, const Difference& difference)
{
    const Places places = DiffPlaces(report).of(difference);
    JsonValue json;
    json["change"] = lookOf(difference).word;
    json["of"] = difference.isOfAttribute() ? "attribute" : "element";
    json["path"] = pathText(report, *difference.within);
    json["name"] = nameOf(report, difference);
    json["a"] = jsonSide(report, difference.attributes.first, difference.elements.first, places.a);
    json["b"] = jsonSide(report, difference.attributes.second, difference.elements.second, places.b);
    return json;
}

} // namespace

std::string renderDiff(const DiffReport& report, bool colour)
{
    return DiffText(report, colour).text();
}

std::string renderDiffJson(const DiffReport& report, const std::string& compares)
{
    JsonValue document = jsonDocument("diff");
    document["compares"] = compares;
    document["a"] = report.a.json;
    document["b"] = report.b.json;
    document["same"] = report.comparison.differences().empty();
    JsonValue list = JsonValue::array();
    for (const Difference& difference : report.comparison.differences()) {
        list.push_back(jsonDifference(report, difference));
    }
    document["differences"] = std::move(list);
    return jsonText(document);
}

} // namespace NuxoTool
