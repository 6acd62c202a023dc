// SPDX-License-Identifier: Apache-2.0
// The schemas that the tool writes: whether they say the same as `nuxo check`, judged by xmllint.
#include "ToolTest.h"

#include "check/Fault.h"

#include <nuxo/tree/ItemUID.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>

using nlohmann::json;

namespace {

// Rules whose faults a schema refuses, too. Those for settings need the schema that knows the descriptor's names.
//
// What the others look at lies beyond a schema: names and numbers that have to be those of other elements or files, numbers
// that have to fit each other, texts with a grammar of their own, and all that shows in built graphs only. Attributes that
// are repeated in other case, reserved names, and files that are empty or state no version are left to the tool as well.
const std::set<std::string> kExpressible = {
    "choice-value",      "duplicate-key",     "duplicate-name",      "integer-range",     "integer-value",
    "malformed",         "missing-attribute", "misplaced-attribute", "misplaced-element", "root-element",
    "setting-node",      "setting-part",      "setting-type",        "type-before-name",  "unaddressable-name",
    "unknown-attribute", "unknown-element"};

// Faults of these rules that a schema cannot express all the same.
const std::set<std::string> kBeyondSchemas = {
    "duplicate-name: a kernel named like an element",      // uniqueness is one of attributes
    "misplaced-attribute: a number beside the base node",  // elements of one name have one type, ...
    "misplaced-element: a port in a node that has a base", // ... whatever attributes they have
    "missing-attribute: a node of no type",                // likewise: it needs a type or a base
    "misplaced-element: settings in sensor modes",         // names of parts may be any
    "unaddressable-name: a sign of no alphabet",           // the pattern of names takes all of other alphabets
};

// Files that the tool accepts and a schema does not: it tells upper case from lower case in names.
const std::set<std::string> kOnlyInOtherCase = {
    "missing-attribute: attributes that may be left out",
    "missing-version: the version in capital letters",
    "root-element: capital letters",
    "setting-node: a name in capitals, which counts as one in lower case",
    "unknown-attribute: attributes for clients",
    "unknown-element: capital letters",
};

class SchemaTest : public ToolTest {
protected:
    std::string schemaOf(const std::vector<std::string>& arguments) const
    {
        std::vector<std::string> all = {"schema"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const ToolRun result = run(all);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return result.out;
    }

    /// Names of those of the files that the schema refuses.
    std::set<std::string> refused(const std::string& schema, const std::vector<std::string>& files) const
    {
        std::string command = "cd " + path("") + " && xmllint --noout --schema " + schema;
        for (const std::string& file : files) command += ' ' + file;
        const int status = std::system((command + " > lint 2>&1").c_str());
        const std::string report = read("lint");
        EXPECT_NE(status, -1);
        EXPECT_EQ(report.find("failed to compile"), std::string::npos) << report;
        std::set<std::string> names;
        for (const std::string& file : files) {
            if (report.find(file + " validates\n") == std::string::npos) names.insert(file);
        }
        mReport = report;
        return names;
    }

    bool accepts(const std::string& schema, const std::string& file) const { return refused(schema, {file}).empty(); }

    mutable std::string mReport;
};

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line.substr(std::min(line.find_first_not_of(' '), line.size())));
    return lines;
}

bool startsWith(const std::string& text, const std::string& start)
{
    return text.compare(0, start.size(), start) == 0;
}

// Declarations without a text of at least a few words.
std::vector<std::string> undocumented(const std::string& schema)
{
    std::vector<std::string> found;
    const std::vector<std::string> lines = linesOf(schema);
    for (size_t i = 0; i + 2 < lines.size(); ++i) {
        if (!startsWith(lines[i], "<xs:element ") && !startsWith(lines[i], "<xs:attribute ")) continue;
        const std::string& text = lines[i + 2];
        const bool isDocumented = lines[i + 1] == "<xs:annotation>" && startsWith(text, "<xs:documentation>") &&
                                  text.find("</xs:documentation>") > 30 && text.find(".</") != std::string::npos;
        if (!isDocumented) found.push_back(lines[i]);
    }
    return found;
}

std::string readSource(const std::string& name)
{
    std::ifstream file(std::string(NUXO_SOURCE_DIR) + '/' + name, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

TEST_F(SchemaTest, AcceptsTheExamples)
{
    write("d.xsd", schemaOf({"descriptor"}));
    write("s.xsd", schemaOf({"settings"}));
    for (const std::string generation : {"kva5", "kva6", "kva7"}) {
        addExample(generation);
        const std::string settings = generation + "_settings.xml";
        write("own.xsd", schemaOf({"settings", generation + "_descriptor.xml"}));
        EXPECT_TRUE(accepts("d.xsd", generation + "_descriptor.xml")) << mReport;
        EXPECT_TRUE(accepts("s.xsd", settings)) << mReport;
        EXPECT_TRUE(accepts("own.xsd", settings)) << mReport;
    }
}

TEST_F(SchemaTest, HasATextOnEveryElementAndAttribute)
{
    addExample("kva7");
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"descriptor"}, {"settings"}, {"settings", "kva7_descriptor.xml"}}) {
        const std::string schema = schemaOf(arguments);
        EXPECT_GT(count(schema, "<xs:documentation>"), 50U);
        EXPECT_EQ(undocumented(schema), std::vector<std::string>());
    }
}

// "port" the type of port elements, "width" an attribute: each of the names that files may use has its declaration.
TEST_F(SchemaTest, DeclaresTheWholeVocabulary)
{
    const std::set<std::string> nodeNames = {"ae_stats_sink", "af_stats_sink", "awb_stats_sink",
                                             "buffer_src0",   "csi_be",        "csi_be_dol",
                                             "csi_be_soc",    "sensor",        "tpg"};
    const std::set<std::string> markers = {"na", "generic_keys_end", "num_start", "num_end"};
    const std::string schemas = schemaOf({"descriptor"}) + schemaOf({"settings"});
    std::map<std::string, uint32_t> vocabulary;
    NUXO::getNuxoKeys(vocabulary);
    EXPECT_EQ(vocabulary.size(), 115U);
    for (const auto& [name, key] : vocabulary) {
        if (nodeNames.count(name) + markers.count(name) > 0) continue;
        EXPECT_NE(schemas.find(" name=\"" + name + "\""), std::string::npos) << name;
    }
}

TEST_F(SchemaTest, IsInTheSourcesAsTheToolWritesIt)
{
    EXPECT_EQ(readSource("schema/graph_descriptor.xsd"), schemaOf({"descriptor"}))
        << "to renew it: nuxo schema descriptor > schema/graph_descriptor.xsd";
    EXPECT_EQ(readSource("schema/graph_settings.xsd"), schemaOf({"settings"}))
        << "to renew it: nuxo schema settings > schema/graph_settings.xsd";
}

TEST_F(SchemaTest, KnowsTheNamesOfADescriptor)
{
    addExample("kva6");
    write("own.xsd", schemaOf({"settings", "kva6_descriptor.xml"}));
    write("s.xsd", schemaOf({"settings"}));
    const std::string start = "<graph_settings version=\"KVA6.1\"><settings key=\"1\" id=\"100\">";
    const std::string end = "</settings></graph_settings>";
    struct Case {
        const char* content;
        bool isKnown;
    };
    const Case cases[] = {
        {"<vid_tnr><main_out width=\"8\" height=\"8\"/></vid_tnr>", true},
        {"<vid_tnr><main_oot width=\"8\" height=\"8\"/></vid_tnr>", false},
        {"<vid_tnt/>", false},
        {"<bayer_base/>", false}, // a base node is in no graph
        {"<vid_bayer><main_out/><lsc><input width=\"8\"/><output width=\"8\"/></lsc></vid_bayer>",
         true}, // from its base
        {"<vid_bayer><lsc><inputs/></lsc></vid_bayer>", false},
        {"<vid_bayer><main_out width=\"eight\"/></vid_bayer>", false},
        {"<video_sink width=\"8\"><port_0/></video_sink>", false},
        {"<csi_be><zmt_pixelformatter><input left=\"2\"/></zmt_pixelformatter></csi_be>", true},
    };
    for (const Case& each : cases) {
        write("case.xml", start + each.content + end);
        EXPECT_EQ(accepts("own.xsd", "case.xml"), each.isKnown) << each.content << '\n' << mReport;
        EXPECT_TRUE(accepts("s.xsd", "case.xml")) << "any names may stand there\n" << mReport;
    }
}

// Elements for them cannot be written, and two declarations of one name would be no schema.
TEST_F(SchemaTest, LeavesOutNamesThatNoElementCanHave)
{
    write("odd.xml", "<graph_descriptor version=\"KVA6\"><nodes>"
                     "<sink name=\"a&lt;b\"/><sink name=\"Big\"/><sink name=\"\"/><sink name=\"twice\"/>"
                     "<sink name=\"twice\"/><sink name=\"mbr_data\"/><sink name=\"good\"/>"
                     "</nodes><graphs/></graph_descriptor>");
    const std::string schema = schemaOf({"settings", "odd.xml"});
    write("own.xsd", schema);
    write("case.xml", "<graph_settings><settings key=\"1\" id=\"1\"><good/><twice/></settings></graph_settings>");
    EXPECT_TRUE(accepts("own.xsd", "case.xml")) << mReport;
    EXPECT_EQ(count(schema, "name=\"Big\""), 0U);
    EXPECT_EQ(count(schema, "name=\"a&lt;b\""), 0U);
}

TEST_F(SchemaTest, RefusesADescriptorThatIsNotWhole)
{
    write("half.xml", "<graph_descriptor version=\"KVA6\"><nodes>");
    const ToolRun half = run({"schema", "settings", "half.xml"});
    EXPECT_EQ(half.exitCode, 1);
    EXPECT_EQ(half.out, "");
    EXPECT_NE(half.err.find("error[malformed]"), std::string::npos) << half.err;
    EXPECT_EQ(run({"schema", "settings", "missing.xml"}).exitCode, 3);
    EXPECT_EQ(run({"schema", "pictures"}).exitCode, 2);
    EXPECT_EQ(run({"schema"}).exitCode, 2);
    EXPECT_EQ(run({"schema", "descriptor", "half.xml"}).exitCode, 2);
}

// ---- agreement with `nuxo check`, which has the same edits as its own tests ----

struct Edit {
    std::string name; // rule and edit
    Fault fault;
};

std::vector<Edit> editsOf(const std::string& rule, const char* kind)
{
    std::vector<Edit> edits;
    for (const json& description : readJson("rules/" + rule + ".json").value(kind, json::array())) {
        Fault fault(description, rule);
        if (fault.trouble.empty()) edits.push_back({rule + ": " + fault.name, std::move(fault)});
    }
    return edits;
}

class SchemaAgreementTest : public SchemaTest {
protected:
    void SetUp() override
    {
        SchemaTest::SetUp();
        write("d.xsd", schemaOf({"descriptor"}));
        write("s.xsd", schemaOf({"settings"}));
    }

    // The names of the edits of which a schema refuses one of the files.
    std::set<std::string> refusedEdits(const std::vector<Edit>& edits)
    {
        std::map<std::string, std::vector<std::string>> filesBySchema;
        std::map<std::string, std::string> edited; // by file
        for (size_t i = 0; i < edits.size(); ++i) {
            const Fault& fault = edits[i].fault;
            const std::string own = ownSchema(fault, i);
            const std::string descriptor = "d" + std::to_string(i) + ".xml";
            const std::string settings = "s" + std::to_string(i) + ".xml";
            write(descriptor, fault.texts.at(fault.descriptor));
            write(settings, fault.texts.at(fault.settings));
            edited[descriptor] = edited[settings] = edits[i].name;
            filesBySchema["d.xsd"].push_back(descriptor);
            filesBySchema["s.xsd"].push_back(settings);
            if (!own.empty()) filesBySchema[own].push_back(settings);
        }
        std::set<std::string> names;
        for (const auto& [schema, files] : filesBySchema) {
            for (const std::string& file : refused(schema, files)) names.insert(edited[file]);
        }
        return names;
    }

private:
    // The schema of the descriptor of an edit, "" when there is none because the descriptor cannot be read.
    std::string ownSchema(const Fault& fault, size_t number)
    {
        const std::string& text = fault.texts.at(fault.descriptor);
        const auto [place, isNew] = mOwn.emplace(text, "own" + std::to_string(number) + ".xsd");
        if (!isNew) return place->second;
        write("own.xml", text);
        const ToolRun result = run({"schema", "settings", "own.xml"});
        if (result.exitCode == 0) {
            write(place->second, result.out);
        } else {
            place->second.clear();
        }
        return place->second;
    }

    std::map<std::string, std::string> mOwn; // by the text of the descriptor
};

TEST_F(SchemaAgreementTest, RefusesWhatTheRulesForItsSubjectsFind)
{
    std::vector<Edit> edits;
    for (const std::string& rule : kExpressible) {
        for (Edit& edit : editsOf(rule, "fires")) edits.push_back(std::move(edit));
    }
    EXPECT_GE(edits.size(), 30U);
    const std::set<std::string> refusedOnes = refusedEdits(edits);
    for (const Edit& edit : edits) {
        const bool isBeyond = kBeyondSchemas.count(edit.name) > 0;
        EXPECT_EQ(refusedOnes.count(edit.name) > 0, !isBeyond) << edit.name;
    }
}

TEST_F(SchemaAgreementTest, AcceptsWhatNoRuleObjectsTo)
{
    std::vector<Edit> edits;
    for (const std::string& rule : jsonFilesIn("rules")) {
        if (rule == "too-deep") continue; // xmllint has a limit of its own
        for (Edit& edit : editsOf(rule, "passes")) edits.push_back(std::move(edit));
    }
    EXPECT_GE(edits.size(), 30U);
    EXPECT_EQ(refusedEdits(edits), kOnlyInOtherCase);
}

TEST_F(SchemaAgreementTest, KeepsItsListsOfRulesAndFaultsUpToDate)
{
    std::set<std::string> names;
    for (const std::string& rule : kExpressible) {
        for (const Edit& edit : editsOf(rule, "fires")) names.insert(edit.name);
    }
    for (const std::string& name : kBeyondSchemas) EXPECT_EQ(names.count(name), 1U) << name;
    const std::vector<std::string> rules = jsonFilesIn("rules");
    for (const std::string& rule : kExpressible) EXPECT_EQ(std::count(rules.begin(), rules.end(), rule), 1) << rule;
}

} // namespace
