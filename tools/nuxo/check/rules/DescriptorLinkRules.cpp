// SPDX-License-Identifier: Apache-2.0
// Klinks: that their ends exist, and that routing elements have a way through.
#include "Suggestion.h"
#include "Text.h"
#include "check/rules/Causes.h"
#include "check/rules/DescriptorRuleParts.h"
#include "check/rules/SettingsPlaces.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <utility>

namespace NuxoTool {

namespace {

constexpr const char* kSource = "source";
constexpr const char* kDestination = "destination";

struct LinkSide {
    const char* attribute;
    const char* terminal;  // what the number behind a name counts
    int32_t portDirection; // of the ports of the group that it can name
};

constexpr LinkSide kSourceSide = {kSource, "output", 0};
constexpr LinkSide kDestinationSide = {kDestination, "input", 1};

bool isStage(const ModelPart& part)
{
    constexpr const char* kinds[] = {"kernel", "mux", "demux", "split"};
    return std::find(std::begin(kinds), std::end(kinds), part.kind) != std::end(kinds);
}

// An end of a klink, taken apart: a port of the group has no terminal.
struct LinkEnd {
    explicit LinkEnd(const std::string& text)
        : name(text.substr(0, text.find(':'))), terminal(text.size() > name.size() ? text.substr(name.size() + 1) : "")
    {
    }

    std::string name;
    std::string terminal;
};

// ---- klink-end

// The number of an input or output as the library compares it, which takes it as a text.
bool isTerminal(const std::string& text)
{
    const std::optional<int32_t> number = wholeInteger(text);
    return number && *number >= 0 && std::to_string(*number) == text;
}

// Adds the number of an output, or of those that are listed in it; false when it has none.
bool addNumbers(const XmlElement& output, std::vector<std::string>& numbers)
{
    if (output.attribute("id") != nullptr) {
        numbers.push_back(output.value("id"));
        return true;
    }
    for (const XmlElement* const listed : output.children) {
        if (listed->attribute("id") == nullptr) return false;
        numbers.push_back(listed->value("id"));
    }
    return !output.children.empty();
}

// The numbers of a kernel's outputs; none unless it gives each of them one.
std::vector<std::string> numberedOutputs(const XmlElement& kernel)
{
    std::vector<std::string> numbers;
    for (const XmlElement* const child : kernel.children) {
        if (child->name == "output" && !addNumbers(*child, numbers)) return {};
    }
    return numbers;
}

// Tells of ends of the klinks of a group that lead nowhere.
class EndChecker {
public:
    EndChecker(const ModelNode& group, const ShadowedItems& shadowed, RuleReporter& reporter)
        : mGroup(group), mShadowed(shadowed), mReporter(reporter)
    {
    }

    void check(const XmlElement& link, const LinkSide& side)
    {
        if (link.attribute(side.attribute) == nullptr) return;
        mCause.clear();
        const std::string fault = faultOf(link.value(side.attribute), side);
        if (!fault.empty()) mReporter.reportCause(mCause, link, side.attribute, fault);
    }

private:
    // What an end of that side can name.
    const std::vector<std::string>& namesFor(const LinkSide& side)
    {
        const auto [known, isNew] = mNames.try_emplace(side.portDirection);
        std::vector<std::string>& names = known->second;
        if (!isNew) return names;
        for (const ModelPart& part : mGroup.parts) {
            if (isStage(part)) names.push_back(part.name + ":0");
            if (part.kind == "port" && mGroup.integer(part.name + ":direction") == side.portDirection)
                names.push_back(part.name);
        }
        if (names.size() > kMostCompared) names.clear(); // too many to suggest one of them
        return names;
    }

    std::string unknownEnd(const LinkEnd& end, const std::string& text, const LinkSide& side)
    {
        const bool mayBeShadowed = end.terminal.empty()
                                       ? mShadowed.hasPart(mGroup, {"port"})
                                       : mShadowed.hasPart(mGroup, {"kernel", "mux", "demux", "split"});
        if (mayBeShadowed) return "";
        mCause = missingPart(mGroup, end.name);
        // With the terminal that was written.
        const std::vector<std::string>& names = namesFor(side);
        std::string close = closestOf(text, names);
        if (close.empty() && !end.terminal.empty()) close = closestOf(end.name + ":0", names);
        const size_t colon = close.find(':');
        if (colon != std::string::npos && !end.terminal.empty()) close = close.substr(0, colon + 1) + end.terminal;
        return "group " + named(mGroup.name) + " has no port, kernel or routing element " + named(end.name) +
               "; expected one of them" + (close.empty() ? "" : didYouMean(close));
    }

    std::string faultOf(const std::string& text, const LinkSide& side)
    {
        const LinkEnd end(text);
        const ModelPart* const part = mGroup.part(end.name);
        if (part == nullptr) return unknownEnd(end, text, side);
        if (part->kind == "port") {
            if (end.terminal.empty()) return "";
            return named(end.name) + " is a port of the group; expected " + named(end.name) + " without ':'";
        }
        if (!isKnownElement(part->kind)) return ""; // misspelled, which is told there
        if (!isStage(*part))
            return named(end.name) + " is a " + part->kind + "; expected a port, kernel or routing element";
        if (end.terminal.empty()) {
            const std::string which = side.terminal;
            return named(text) + " names a " + part->kind + " without its " + which + "; expected the number of the " +
                   which + " behind ':'" + didYouMean(end.name + ":0");
        }
        if (isTerminal(end.terminal)) return unknownOutput(*part, end, side);
        return named(end.terminal) + " is no number of an input or output; expected a number of 32 bits without " +
               "leading zeros, as in " + named(end.name + ":0");
    }

    static std::string unknownOutput(const ModelPart& part, const LinkEnd& end, const LinkSide& side)
    {
        if (part.kind != "kernel" || side.attribute != kSourceSide.attribute) return "";
        const std::vector<std::string> outputs = numberedOutputs(*part.element);
        if (outputs.empty() || std::find(outputs.begin(), outputs.end(), end.terminal) != outputs.end()) return "";
        std::vector<std::string> ends;
        for (const std::string& output : outputs) ends.push_back(end.name + ':' + output);
        return "kernel " + named(end.name) + " has no output " + end.terminal + "; expected " + choiceOf(ends);
    }

    const ModelNode& mGroup;
    const ShadowedItems& mShadowed;
    RuleReporter& mReporter;
    std::string mCause;                                 // of what is being told
    std::map<int32_t, std::vector<std::string>> mNames; // by the direction of ports
};

void checkEnds(const DescriptorModel& model, RuleReporter& reporter)
{
    const ShadowedItems shadowed(model);
    for (const ModelNode* const group : writtenNodes(model)) {
        EndChecker checker(*group, shadowed, reporter);
        for (const XmlElement* const link : linksOf(*group)) {
            checker.check(*link, kSourceSide);
            checker.check(*link, kDestinationSide);
        }
    }
}

// ---- klink-direction

void checkDirection(const ModelNode& group, const XmlElement& link, const char* side, int32_t wrong,
                    RuleReporter& reporter)
{
    const std::string& name = link.value(side);
    const ModelPart* const port = group.part(name);
    if (port == nullptr || port->kind != "port" || group.integer(name + ":direction") != wrong) return;
    reporter.report(link, side,
                    wrong == 1
                        ? named(name) + " is an output port of the group, where frames leave; expected an input "
                                        "port, or a kernel, as source"
                        : named(name) + " is an input port of the group, where frames arrive; expected an output "
                                        "port, or a kernel, as destination");
}

void checkDirections(const DescriptorModel& model, RuleReporter& reporter)
{
    for (const ModelNode* const group : writtenNodes(model)) {
        for (const XmlElement* const link : linksOf(*group)) {
            checkDirection(*group, *link, kSource, 1, reporter);
            checkDirection(*group, *link, kDestination, 0, reporter);
        }
    }
}

// ---- mux-input

struct Routing {
    const char* kind;
    const char* attribute; // which of the ways is in use
    const char* side;      // of klinks that name the ways
    const char* way;
};

constexpr Routing kMux = {"mux", "active_input", kDestination, "input"};
constexpr Routing kDemux = {"demux", "active_output", kSource, "output"};

using Terminals = std::map<std::string, std::vector<std::pair<std::string, const XmlElement*>>>;

// Where klinks end, or start, by the name of the element.
Terminals terminalsOf(const ModelNode& group, const char* side)
{
    Terminals terminals;
    for (const XmlElement* const link : linksOf(group)) {
        const LinkEnd end(link->value(side));
        if (!end.terminal.empty()) terminals[end.name].emplace_back(end.terminal, link);
    }
    return terminals;
}

class RoutingChecker {
public:
    RoutingChecker(const ModelNode& group, const Routing& routing, bool isStrict, RuleReporter& reporter)
        : mGroup(group), mRouting(routing), mTerminals(terminalsOf(group, routing.side)), mIsStrict(isStrict),
          mReporter(reporter)
    {
    }

    void check() const
    {
        for (const ModelPart* const part : distinctParts(mGroup, mRouting.kind)) {
            const auto linked = mTerminals.find(part->name);
            const std::optional<int32_t> active = mGroup.integer(part->name + ':' + mRouting.attribute);
            if (active && linked != mTerminals.end()) checkPart(*part, std::to_string(*active), linked->second);
        }
    }

    /// A number that another element gives for it.
    void checkNumber(const ModelPart& part, const XmlElement& element) const
    {
        const auto linked = mTerminals.find(part.name);
        const std::optional<int32_t> number = element.integer(mRouting.attribute);
        if (!number || linked == mTerminals.end() || isLinked(std::to_string(*number), linked->second)) return;
        reportUnlinked({&element, mRouting.attribute}, part, std::to_string(*number), linked->second);
    }

private:
    using Links = Terminals::mapped_type;

    static bool isLinked(const std::string& terminal, const Links& links)
    {
        return std::any_of(links.begin(), links.end(), [&](const auto& link) { return link.first == terminal; });
    }

    std::string title(const ModelPart& part) const
    {
        return mRouting.kind + (' ' + named(fullName(mGroup, part.name)));
    }

    void reportUnlinked(const ValuePlace& place, const ModelPart& part, const std::string& number,
                        const Links& links) const
    {
        mReporter.report(*place.element, place.attribute,
                         title(part) + " uses its " + mRouting.way + ' ' + number + ", which no klink has; expected " +
                             choiceOf(numbersIn(links)));
    }

    void checkPart(const ModelPart& part, const std::string& active, const Links& links) const
    {
        if (!isLinked(active, links)) {
            reportUnlinked(placeInside(mGroup, mGroup.value(part.name + ':' + mRouting.attribute)), part, active,
                           links);
            return;
        }
        if (!mIsStrict) return;
        for (const auto& [terminal, link] : links) {
            if (terminal == active) continue;
            mReporter.report(*link, mRouting.side,
                             title(part) + " uses its input " + active + ", so in this generation a klink to " +
                                 named(part.name + ':' + terminal) + " ends the analysis; expected klinks to input " +
                                 active + " only");
        }
    }

    static std::vector<std::string> numbersIn(const Links& links)
    {
        std::set<std::string> numbers;
        for (const auto& link : links) numbers.insert(link.first);
        return {numbers.begin(), numbers.end()};
    }

    const ModelNode& mGroup;
    const Routing& mRouting;
    Terminals mTerminals;
    bool mIsStrict; // whether links that are not in use are faults
    RuleReporter& mReporter;
};

bool isInApply(const XmlElement& element)
{
    const XmlElement* const node = element.parent;
    return node != nullptr && node->parent != nullptr && filedName(*node->parent) == "apply";
}

// What options switch together with their values.
class AppliedChecker {
public:
    AppliedChecker(const DescriptorModel& model, const Routing& routing, RuleReporter& reporter)
        : mModel(model), mRouting(routing), mReporter(reporter)
    {
    }

    void check(const XmlElement& element)
    {
        if (element.attribute(mRouting.attribute) == nullptr || !isInApply(element)) return;
        const ModelNode* const node = mModel.node(filedName(*element.parent));
        const ModelPart* const part = node == nullptr ? nullptr : node->part(filedName(element));
        if (part == nullptr || part->kind != mRouting.kind) return;
        const auto checker = mCheckers.try_emplace(node, *node, mRouting, false, mReporter).first;
        checker->second.checkNumber(*part, element);
    }

private:
    const DescriptorModel& mModel;
    const Routing& mRouting;
    RuleReporter& mReporter;
    std::map<const ModelNode*, RoutingChecker> mCheckers; // only looked up
};

void checkRouting(const DescriptorModel& model, RuleReporter& reporter)
{
    AppliedChecker muxes(model, kMux, reporter);
    AppliedChecker demuxes(model, kDemux, reporter);
    for (const XmlElement& element : model.document().elements()) {
        muxes.check(element);
        demuxes.check(element);
    }
    const bool isOld = isBeforeGeneration7(model);
    for (const ModelNode* const node : effectiveNodes(model)) {
        RoutingChecker(*node, kMux, isOld, reporter).check();
        RoutingChecker(*node, kDemux, false, reporter).check();
    }
}

// ---- klink-joint-end

// The same two elements twice is told of as such.
bool joinsTheSame(const XmlElement& a, const XmlElement& b)
{
    return LinkEnd(a.value(kSource)).name == LinkEnd(b.value(kSource)).name;
}

void checkJointEnds(const DescriptorModel& model, RuleReporter& reporter)
{
    for (const ModelNode* const group : writtenNodes(model)) {
        std::map<std::string, const XmlElement*> first;
        for (const XmlElement* const link : linksOf(*group)) {
            const std::string& destination = link->value(kDestination);
            if (destination.empty() || group->part(LinkEnd(destination).name) == nullptr) continue;
            const auto [place, isNew] = first.emplace(destination, link);
            if (isNew || joinsTheSame(*place->second, *link)) continue;
            reporter.report(*link, kDestination,
                            "another klink ends at " + named(destination) +
                                " already; expected one klink to each port and each input");
            reporter.note(*place->second, kDestination, "the first one");
        }
    }
}

// ---- klink-twice

bool isKind(const ModelNode& group, const std::string& part, const char* kind)
{
    const ModelPart* const found = group.part(part);
    return found != nullptr && found->kind == kind;
}

void checkRepeats(const DescriptorModel& model, RuleReporter& reporter)
{
    for (const ModelNode* const group : writtenNodes(model)) {
        std::map<std::pair<std::string, std::string>, const XmlElement*> first;
        for (const XmlElement* const link : linksOf(*group)) {
            std::string source = LinkEnd(link->value(kSource)).name;
            std::string destination = LinkEnd(link->value(kDestination)).name;
            // Links through a routing element differ in its ways, of which one is in use.
            if (isKind(*group, destination, kMux.kind) || isKind(*group, source, kDemux.kind)) {
                source = link->value(kSource);
                destination = link->value(kDestination);
            }
            const auto [place, isNew] = first.emplace(std::make_pair(source, destination), link);
            if (isNew) continue;
            reporter.report(*link, "another klink leads from " + named(source) + " to " + named(destination) +
                                       " already, so this one does not count; expected one klink between two elements");
            reporter.note(*place->second, "the first one");
        }
    }
}

} // namespace

std::vector<Rule> linkRules()
{
    return {
        {"klink-end",
         RuleSeverity::Error,
         "a klink names something that its group does not have",
         "A klink leads from an input port of its group, or an output of a kernel or routing element, to an input of "
         "another one, or to an output port. A port of the group is named by its name alone, all others with the "
         "number of "
         "the input or output behind ':'. When an end does not exist, the analysis of the whole graph fails; a kernel "
         "without "
         "number is taken for a port and gets no frames:\n"
         "    <klink source=\"input\" destination=\"crop:0\"/>\n"
         "    <klink source=\"crop:0\" destination=\"main_out\"/>",
         {},
         DescriptorRule(checkEnds)},
        {"klink-direction",
         RuleSeverity::Error,
         "a klink starts at an output port or ends at an input port",
         "Inside a group frames arrive at its input ports (direction 0) and leave at its output ports (direction 1), "
         "so a "
         "klink starts at the ones and ends at the others. The analysis joins what is written, and kernels get no "
         "frames, "
         "or the frames of the wrong port. Swap source and destination, or name the other port.",
         {"connection-direction"},
         DescriptorRule(checkDirections)},
        {"klink-joint-end",
         RuleSeverity::Error,
         "two klinks end at one port or at one input",
         "An output port of a group, and each input of its kernels and routing elements, takes the frames of one "
         "klink. "
         "Where two end, the library follows one of them, and what the other one carries is lost: most often one of "
         "the two was meant for another port, or for the next input, as blend:1 beside blend:0.",
         {"klink-end", "klink-direction"},
         DescriptorRule(checkJointEnds)},
        {"mux-input",
         RuleSeverity::Error,
         "the input that a mux uses, or the output that a demux uses, is not linked",
         "A mux passes on what arrives at its active_input, a demux sends frames to its active_output; klinks to the "
         "other "
         "inputs and outputs are dropped. When no klink has the number in use, nothing gets through, and the kernels "
         "behind "
         "are switched off. Before generation 7 a klink to an input of a mux that is not in use even ends the "
         "analysis. "
         "Correct the number in the klink, or that in use:\n"
         "    <mux name=\"choice\" active_input=\"0\"/>\n"
         "    <klink source=\"denoise:0\" destination=\"choice:0\"/>",
         {"klink-end", "version-text", "difference-target", "difference-value"},
         DescriptorRule(checkRouting)},
        {"klink-twice",
         RuleSeverity::Warning,
         "two klinks join the same two elements",
         "Between two elements of a group there is one link: the library keeps the first klink and drops further ones, "
         "also "
         "when they lead to another input or output. Delete it, or lead it through a split.",
         {"klink-end"},
         DescriptorRule(checkRepeats)},
    };
}

} // namespace NuxoTool
