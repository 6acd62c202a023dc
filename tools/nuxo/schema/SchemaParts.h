// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_SCHEMA_PARTS_H
#define NUXO_TOOL_SCHEMA_PARTS_H

#include "schema/GraphSchema.h"

#include <string>
#include <utility>
#include <vector>

namespace NuxoTool {

/// An attribute of an element kind: as the vocabulary has it, apart from what is said here.
class Attribute {
public:
    explicit Attribute(const char* name);
    Attribute& required();
    Attribute& standard(const char* value);
    Attribute& range(int32_t least, int32_t most = std::numeric_limits<int32_t>::max());
    Attribute& is(ValueKind value);
    Attribute& oneOf(std::vector<std::string> choices);
    Attribute& says(const char* documentation);
    operator AttributeKind() const { return mKind; } // NOLINT: rows of tables are lists of attributes

private:
    AttributeKind mKind;
};

using Attributes = std::vector<AttributeKind>;

Attributes operator+(Attributes left, const Attributes& right);
/// Attributes of these names, as the vocabulary has them.
Attributes asUsual(const std::vector<const char*>& names);

/// A row of the tables: an element kind whose children are named by their ids.
struct ElementRow {
    ElementRow(const char* itsId, const char* itsName, const char* itsDocumentation, Attributes itsAttributes = {},
               std::vector<const char*> itsChildren = {}, const char* itsOpenChild = "");
    /// Children with a `name` are of that kind whatever they are called.
    ElementRow& named(const char* kindId);
    /// It takes every attribute that settings can change.
    ElementRow& settable();
    /// It stands at most once in its parent.
    ElementRow& once();

    const char* id;
    const char* name;
    const char* documentation;
    Attributes attributes;
    std::vector<const char*> children; ///< ids
    const char* openChild;             ///< id, "" for none
    const char* namedChild = "";       ///< likewise
    bool takesSettings = false;
    bool single = false;
};

/// Each before its children; the first is the document's element.
std::vector<ElementRow> descriptorRows();
std::vector<ElementRow> settingsRows();
/// What stands in files of both kinds: sizes and crops of the stages of sensors and kernels.
std::vector<ElementRow> sensorStageRows();

} // namespace NuxoTool

#endif
