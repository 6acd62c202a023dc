// SPDX-License-Identifier: Apache-2.0
// Kernels of a group: their ids, identities and metadata.
#include "check/rules/DescriptorRuleParts.h"
#include "Text.h"
#include "check/rules/SettingsPlaces.h"

#include <nuxo/records/qv_isp_zmt_run_kernels.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <utility>

namespace NuxoTool {

namespace {

std::vector<const ModelNode*> effectiveGroups(const DescriptorModel& model)
{
    std::vector<const ModelNode*> groups = effectiveNodes(model);
    groups.erase(std::remove_if(groups.begin(), groups.end(), [](const ModelNode* node) { return !isGroup(*node); }),
                 groups.end());
    return groups;
}

// ---- kernel-ids

struct NumberedKernel {
    const ModelPart* kernel;
    int32_t id;
};

// Kernels with their ids; none when an id is missing or no number.
std::vector<NumberedKernel> numberedKernels(const ModelNode& group)
{
    std::vector<NumberedKernel> kernels;
    for (const ModelPart* const kernel : distinctParts(group, "kernel")) {
        const std::optional<int32_t> id = group.integer(kernel->name + ":id");
        if (!id) return {};
        kernels.push_back({kernel, *id});
    }
    return kernels;
}

void checkIdsOf(const ModelNode& group, RuleReporter& reporter)
{
    const std::vector<NumberedKernel> kernels = numberedKernels(group);
    const auto count = static_cast<int64_t>(kernels.size());
    bool isFaultInOrder = false;
    std::map<int32_t, size_t> uses;
    for (const NumberedKernel& each : kernels) ++uses[each.id];
    const NumberedKernel* fault = nullptr;
    for (size_t i = 0; i < kernels.size(); ++i) {
        const NumberedKernel& each = kernels[i];
        const bool isWrong = each.id < 0 || each.id >= count || uses[each.id] > 1;
        // Of those that can be blamed the one that is out of order.
        const bool isInOrder = each.id == static_cast<int64_t>(i);
        if (isWrong && (fault == nullptr || (isFaultInOrder && !isInOrder))) {
            fault = &each;
            isFaultInOrder = isInOrder;
        }
    }
    if (fault == nullptr) return;
    int32_t missing = 0;
    while (uses.count(missing) > 0) ++missing;
    const ValuePlace place = placeInside(group, group.value(fault->kernel->name + ":id"));
    reporter.report(*place.element, place.attribute,
                    "kernel " + named(fullName(group, fault->kernel->name)) + " has the id " +
                        std::to_string(fault->id) + (uses[fault->id] > 1 ? ", as another one" : "") +
                        ", and none has the id " + std::to_string(missing) + "; expected the ids 0 to " +
                        std::to_string(count - 1) + " for " + std::to_string(count) + " kernels, each once");
}

void checkIds(const DescriptorModel& model, RuleReporter& reporter)
{
    for (const ModelNode* const group : effectiveGroups(model)) checkIdsOf(*group, reporter);
}

// ---- duplicate-uuid

struct Identity {
    const ModelNode* group;
    std::string kernel;
    std::optional<ModelValue> value;
};
using Identities = std::map<int32_t, Identity>;

void addIdentities(Identities& identities, const ModelNode& group, RuleReporter& reporter)
{
    for (const ModelPart* const kernel : distinctParts(group, "kernel")) {
        const std::string path = kernel->name + ":pal_uuid";
        const std::optional<int32_t> uuid = group.integer(path);
        if (!uuid) continue;
        const auto [first, isNew] = identities.emplace(*uuid, Identity{&group, kernel->name, group.value(path)});
        const Identity& other = first->second;
        const bool isSame = other.group == &group && other.kernel == kernel->name;
        if (isNew || isSame) continue;
        const bool isInside = other.group == &group;
        const ValuePlace place = isInside ? placeInside(group, group.value(path)) : placeOf(group, group.value(path));
        reporter.report(*place.element, place.attribute,
                        "kernel " + named(fullName(group, kernel->name)) + " has the pal_uuid " +
                            std::to_string(*uuid) + ", as " + named(fullName(*other.group, other.kernel)) +
                            (isInside ? " of the same group" : " of the same stream") + "; expected one of its own");
        const ValuePlace before = isInside ? placeInside(group, other.value) : placeOf(*other.group, other.value);
        reporter.note(*before.element, before.attribute, "the first one");
    }
}

void checkIdentities(const DescriptorModel& model, RuleReporter& reporter)
{
    for (const ModelNode* const group : effectiveGroups(model)) {
        Identities identities;
        addIdentities(identities, *group, reporter);
    }
    for (const ModelGraph& graph : model.graphs()) {
        std::map<int32_t, Identities> streams;
        for (const ModelNode* const node : graph.nodes()) {
            const std::optional<int32_t> stream = node->integer("stream_id");
            if (stream && isGroup(*node) && !node->isBase) addIdentities(streams[*stream], *node, reporter);
        }
    }
}

// ---- metadata-count

// Metadata are read as numbers of 32 bits, with or without sign.
bool isMetadata(const std::string& item)
{
    constexpr size_t longest = 11; // of such numbers
    const size_t digits = item.compare(0, 1, "-") == 0 ? 1 : 0;
    const bool isNumber = item.size() > digits && item.size() <= longest &&
                          item.find_first_not_of("0123456789", digits) == std::string::npos;
    const long long number = isNumber ? std::strtoll(item.c_str(), nullptr, 10) : -1;
    return isNumber && number >= INT32_MIN && number <= static_cast<long long>(UINT32_MAX);
}

std::string metadataFault(const std::string& text)
{
    std::vector<std::string> items = listItems(text);
    if (items.back().empty()) items.pop_back(); // nothing has to follow the last comma
    const std::string expected =
        "; expected up to " + std::to_string(QV_ISP_ZMT_METADATA_COUNT) + " numbers joined by ','";
    const auto wrong = std::find_if_not(items.begin(), items.end(), isMetadata);
    if (wrong != items.end())
        return named(*wrong) + " in the metadata is no number of 32 bits and counts as 0" + expected;
    if (items.size() <= QV_ISP_ZMT_METADATA_COUNT) return "";
    const size_t further = items.size() - QV_ISP_ZMT_METADATA_COUNT;
    return std::to_string(items.size()) + " metadata, of which " +
           (further == 1 ? "the last is" : "the last " + std::to_string(further) + " are") + " ignored" + expected;
}

// The attribute that an element gives metadata with, "" for none.
const char* metadataIn(const XmlElement& element)
{
    if (element.attribute("metadata") != nullptr) return "metadata";
    const std::vector<std::string> names = namesOfPath(element.value("target"));
    return !names.empty() && names.back() == "metadata" ? "value" : "";
}

void checkMetadata(const XmlDocument& document, RuleReporter& reporter)
{
    for (const XmlElement& element : document.elements()) {
        const std::string attribute = metadataIn(element);
        if (element.attribute(attribute) == nullptr) continue;
        const std::string fault = metadataFault(element.value(attribute));
        if (!fault.empty()) reporter.report(element, attribute, fault);
    }
}

} // namespace

std::vector<Rule> kernelRules()
{
    return {
        {"kernel-ids",
         RuleSeverity::Error,
         "the kernels of a group are not numbered from 0",
         "The ids of the kernels of a group run from 0, each once; settings records are filed under them. In groups "
         "without "
         "klinks the ids tell the order in which the kernels run, and the library refuses the whole context when their "
         "sum "
         "is wrong; two kernels with one id overwrite each other. In groups with klinks it sorts the records by id, so "
         "that "
         "those behind a gap come out with another number than their kernel has. Number the kernels anew.",
         {"unknown-element", "duplicate-name", "difference-target", "difference-value"},
         DescriptorRule(checkIds)},
        {"duplicate-uuid",
         RuleSeverity::Error,
         "two kernels of a group or stream have one pal_uuid",
         "Parameters find the record of a kernel by its pal_uuid among those of a stream, and take the first one. A "
         "second "
         "kernel with the same number gets the parameters of the first. Groups of different streams may repeat "
         "numbers, and "
         "so may groups that never stand in one graph. In a node that is made from a base node, give the kernels "
         "numbers of "
         "their own:\n"
         "    <attribute target=\"scl:pal_uuid\" value=\"2100\"/>",
         {"difference-target", "difference-value"},
         DescriptorRule(checkIdentities),
         true},
        {"metadata-count",
         RuleSeverity::Error,
         "a kernel has more metadata than its record takes, or some that are no numbers",
         "The record of a kernel has room for four numbers of metadata. The library ignores further ones with a "
         "warning, and "
         "reads a text that is no number as 0. Write up to four decimal numbers:\n"
         "    <kernel name=\"grid\" id=\"2\" pal_uuid=\"1002\" metadata=\"80,60,0,0\"/>",
         {},
         FileRule(checkMetadata),
         true},
    };
}

} // namespace NuxoTool
