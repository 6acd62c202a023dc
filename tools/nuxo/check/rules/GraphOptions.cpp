// SPDX-License-Identifier: Apache-2.0
// Options that take effect while their node is not in the graph yet.
#include "Origins.h"
#include "PortView.h"
#include "Text.h"
#include "check/rules/DescriptorRuleParts.h"
#include "check/rules/GraphInspection.h"
#include "check/rules/GraphInspections.h"

#include <algorithm>
#include <string>
#include <vector>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

// The option that stands for a value of an attribute of a port, and applies something; null for none.
const XmlElement* optionFor(const XmlElement& port, const std::string& attribute, const std::string& value)
{
    for (const XmlElement* const options : port.children) {
        if (options->name != "options" || options->value("attribute") != attribute) continue;
        for (const XmlElement* const option : options->children) {
            const std::vector<std::string> values = listItems(option->value("value"));
            const bool isMatch = std::find(values.begin(), values.end(), value) != values.end();
            if (isMatch && option->child("apply") != nullptr) return option;
        }
    }
    return nullptr;
}

class OptionInspection {
public:
    explicit OptionInspection(GraphInspection& inspection) : mInspection(inspection) {}

    void run()
    {
        for (const GraphConfigNode* const node : mInspection.nodes()) {
            const ModelNode* const declared = mInspection.setting().descriptor.node(nameOf(*node));
            if (declared == nullptr) continue;
            for (const auto& [path, value] : declared->differences) inspect(*node, *declared, path, value);
        }
    }

private:
    // Nodes are joined to the graph with their differences made, and options look for their targets in the graph.
    void inspect(const GraphConfigNode& node, const ModelNode& declared, const std::string& path,
                 const ModelValue& value)
    {
        const std::vector<std::string> names = namesOfPath(path);
        const ModelPart* const port = names.size() == 2 ? declared.part(names.front()) : nullptr;
        const XmlElement* const option =
            port == nullptr ? nullptr : optionFor(*port->element, names.back(), value.text);
        if (option == nullptr || isWrittenAgain(node, names, value)) return;
        mInspection.report(
            kOptionLostRule, placeIn(*value.element, value.attribute),
            "the option for " + named(value.text) + " of " + printable(declared.name) + ':' + printable(path) +
                " takes effect before " + printable(declared.name) +
                " is in the graph, so that what it applies is lost; expected the settings to state the " +
                printable(names.back()) + ", or differences for what the option applies");
        const XmlDocument& document = *option->document;
        mInspection.note(document.locate(*option), "the option");
    }

    static Location placeIn(const XmlElement& element, const char* attribute)
    {
        const XmlAttribute* const found = element.attribute(attribute);
        return found == nullptr ? element.document->locate(element) : element.document->locate(element, *found);
    }

    // What the setting or an override writes takes effect in the graph.
    bool isWrittenAgain(const GraphConfigNode& node, const std::vector<std::string>& names,
                        const ModelValue& difference) const
    {
        const IGraphConfig* const port = node.getDescendantByString(names.front());
        const uint32_t key = NUXO::ItemUID::str2key(names.back());
        if (port == nullptr) return true;
        const Location stated = difference.element->document->locate(*difference.element);
        return originText(mInspection.placeOf(*port, key)) != originText(stated);
    }

    GraphInspection& mInspection;
};

} // namespace

void inspectOptions(GraphInspection& inspection)
{
    OptionInspection(inspection).run();
}

} // namespace NuxoTool
