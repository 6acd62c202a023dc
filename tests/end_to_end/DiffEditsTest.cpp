// SPDX-License-Identifier: Apache-2.0
// One edit of a good file each, and what the comparison with the unedited file says: exactly that, in both directions.
#include "ToolTest.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <ostream>
#include <sstream>

namespace {

using nlohmann::json;

struct Edit {
    const char* name;
    const char* file;
    /// Occurs once. A '^' marks where the difference must be located and is not part of the file.
    const char* find;
    const char* replace;
    /// What differs, as says() puts it; nothing when both mean the same.
    std::vector<std::string> changes;
};

std::ostream& operator<<(std::ostream& out, const Edit& edit)
{
    return out << edit.name;
}

struct Mark {
    std::string text; ///< without the '^'
    size_t offset = std::string::npos;
};

Mark markIn(const std::string& text)
{
    const size_t at = text.find('^');
    if (at == std::string::npos) return {text, at};
    return {text.substr(0, at) + text.substr(at + 1), at};
}

// "3:7" for a byte of a text.
std::string placeOf(const std::string& text, size_t offset)
{
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(offset);
    const auto line = std::count(text.begin(), end, '\n') + 1;
    const size_t start = text.rfind('\n', offset - 1) + 1;
    return std::to_string(line) + ':' + std::to_string(offset - start + 1);
}

std::string placeOf(const json& where)
{
    return std::to_string(where["line"].get<int>()) + ':' + std::to_string(where["column"].get<int>());
}

std::string contentOf(const json& side)
{
    if (side.contains("value")) return side["value"].dump();
    return side.contains("element") ? side["element"]["name"].get<std::string>() : "nothing";
}

// For example "changed nodes:front:crop id 0 -> 1" or "removed nodes:front: crop".
std::string says(const json& difference, bool mirrored = false)
{
    std::string change = difference["change"];
    if (mirrored && (change == "added" || change == "removed")) change = change == "added" ? "removed" : "added";
    const json& a = difference[mirrored ? "b" : "a"];
    const json& b = difference[mirrored ? "a" : "b"];
    const std::string start = change + ' ' + difference["path"].get<std::string>() + ' ';
    if (difference["of"] == "attribute") {
        return start + difference["name"].get<std::string>() + ' ' + contentOf(a) + " -> " + contentOf(b);
    }
    if (change == "added") return start + contentOf(b);
    if (change == "removed") return start + contentOf(a);
    return start + contentOf(a) + " -> " + contentOf(b);
}

class DiffEditsTest : public ToolTest, public testing::WithParamInterface<Edit> {
protected:
    json compare(const std::string& a, const std::string& b, int exitCode) const
    {
        const ToolRun result = run({"diff", a, b, "--format", "json"});
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(result.exitCode, exitCode);
        return json::parse(result.out);
    }
};

TEST_P(DiffEditsTest, SaysExactlyWhatWasEdited)
{
    const Edit& edit = GetParam();
    if (std::string(edit.file).compare(0, 3, "kva") == 0) addExample(std::string(edit.file).substr(0, 4));
    const std::string before = read(edit.file);
    const Mark found = markIn(edit.find);
    const Mark replaced = markIn(edit.replace);
    ASSERT_EQ(count(before, found.text), 1U) << found.text;
    const size_t at = before.find(found.text);
    std::string after = before;
    after.replace(at, found.text.size(), replaced.text);
    write("edited.xml", after);

    const int exitCode = edit.changes.empty() ? 0 : 1;
    const json there = compare(edit.file, "edited.xml", exitCode);
    const json back = compare("edited.xml", edit.file, exitCode);
    std::vector<std::string> said;
    std::vector<std::string> mirrored;
    for (const json& difference : there["differences"]) said.push_back(says(difference));
    for (const json& difference : back["differences"]) mirrored.push_back(says(difference, true));
    EXPECT_EQ(said, edit.changes);
    EXPECT_EQ(mirrored, edit.changes);
    EXPECT_EQ(there["same"], edit.changes.empty());

    if (found.offset != std::string::npos) {
        EXPECT_EQ(placeOf(there["differences"][0]["a"]["where"]), placeOf(before, at + found.offset));
    }
    if (replaced.offset != std::string::npos) {
        EXPECT_EQ(placeOf(there["differences"][0]["b"]["where"]), placeOf(after, at + replaced.offset));
    }
    EXPECT_EQ(run({"diff", "edited.xml", "edited.xml"}).exitCode, 0);
}

const Edit kEditsOfDescriptors[] = {
    {"ValueOfAPort",
     "linked.xml",
     R"(<port name="aux_out" id="2" direction="1" ^format="YUV420_8_SP"/>
            <port name="stats)",
     R"(<port name="aux_out" id="2" direction="1" ^format="YUV420_10_SP"/>
            <port name="stats)",
     {R"(changed nodes:front:aux_out format "YUV420_8_SP" -> "YUV420_10_SP")"}},
    {"NumberOfAKernel",
     "linked.xml",
     R"(<kernel name="shade" id="1" ^pal_uuid="102")",
     R"(<kernel name="shade" id="1" ^pal_uuid="1020")",
     {"changed nodes:front:shade pal_uuid 102 -> 1020"}},
    {"ValueRemoved",
     "linked.xml",
     R"(<kernel name="smooth" id="4" pal_uuid="105" ^enabled="0"/>)",
     R"(^<kernel name="smooth" id="4" pal_uuid="105"/>)",
     {"removed nodes:front:smooth enabled 0 -> nothing"}},
    {"ValueAdded",
     "linked.xml",
     R"(^<kernel name="pack" id="5" pal_uuid="106"/>)",
     R"(<kernel name="pack" id="5" pal_uuid="106" ^enabled="1"/>)",
     {"added nodes:front:pack enabled nothing -> 1"}},
    {"KernelRemoved",
     "linked.xml",
     R"(            ^<kernel name="shade" id="1" pal_uuid="102" metadata="7,8,9,10"/>
)",
     "",
     {"removed nodes:front shade"}},
    {"KernelAdded",
     "linked.xml",
     R"(<split name="tap"/>)",
     R"(<split name="tap"/>^<kernel name="late" id="9" pal_uuid="999"/>)",
     {"added nodes:front late"}},
    {"KindOfAPart",
     "linked.xml",
     R"(<split name="tap"/>)",
     R"(<mux name="tap"/>)",
     {R"(changed nodes:front:tap type "split" -> "mux")"}},
    {"InputOfAKernel",
     "linked.xml",
     R"(<input ^top="90" bottom="90" bpp="10"/>)",
     R"(<input ^top="80" bottom="90" bpp="10"/>)",
     {"changed nodes:front:crop:input top 90 -> 80"}},
    {"NumberOfAnOutputAlone",
     "linked.xml",
     R"(<output bpp="12"/>)",
     R"(<output ^id="1" bpp="12"/>)",
     {"added nodes:front:crop:output id nothing -> 1"}},
    {"OneOfTwoOutputs",
     "linked.xml",
     R"(<output bpp="12"/>)",
     R"(<output bpp="12"/>^<output id="1" bpp="8"/>)",
     {"added nodes:front:crop output[1]"}},
    {"NodeRemoved",
     "descriptor.xml",
     R"(        ^<sink name="raw_sink" stream_id="60000"/>
)",
     "",
     {"removed nodes raw_sink"}},
    {"NodeRenamed",
     "descriptor.xml",
     R"(^<sink name="raw_sink" stream_id="60000"/>)",
     R"(^<sink name="bayer_sink" stream_id="60000"/>)",
     {"renamed nodes raw_sink -> bayer_sink"}},
    {"NodeRenamedAndChanged",
     "descriptor.xml",
     R"(<sink name="raw_sink" stream_id="60000"/>)",
     R"(<sink name="bayer_sink" stream_id="60001"/>)",
     {"added nodes bayer_sink", "removed nodes raw_sink"}},
    {"TwoEqualNodesUnderNewNames",
     "descriptor.xml",
     R"(<kernel name="crop" pal_uuid="4101" enabled="1"/>
            <kernel name="scale" pal_uuid="4102" enabled="1"/>)",
     R"(<kernel name="cut" pal_uuid="4102" enabled="1"/>
            <kernel name="resize" pal_uuid="4102" enabled="1"/>)",
     {"removed nodes:base_scaler crop", "added nodes:base_scaler cut", "added nodes:base_scaler resize",
      "removed nodes:base_scaler scale"}},
    {"DifferenceFromABaseNode",
     "descriptor.xml",
     R"(<attribute target="stream_id" ^value="60002"/>)",
     R"(<attribute target="stream_id" ^value="60003"/>)",
     {R"(changed nodes:video_pg:attribute[stream_id] value "60002" -> "60003")"}},
    {"DifferenceFromABaseNodeRemoved",
     "descriptor.xml",
     R"(^<attribute target="exec_ctx_id" value="1"/>)",
     "",
     {"removed nodes:preview_pg attribute[exec_ctx_id]"}},
    {"ConnectionRemoved",
     "descriptor.xml",
     R"(^<connection source="video_pg:main" sink="video_sink"/>)",
     "",
     {"removed graphs:100 connection[video_pg:main -> video_sink]"}},
    {"ConnectionToAnotherSink",
     "descriptor.xml",
     R"(<connection source="video_pg:main" sink="video_sink"/>)",
     R"(^<connection source="video_pg:main" sink="raw_sink"/>)",
     {"added graphs:100 connection[video_pg:main -> raw_sink]",
      "removed graphs:100 connection[video_pg:main -> video_sink]"}},
    {"ConnectionNoLongerStatic",
     "descriptor.xml",
     R"(sink="raw_sink" ^static="true"/>)",
     R"(sink="raw_sink" ^static="false"/>)",
     {R"(changed graphs:200:connection[sensor:port_0 -> raw_sink] static "true" -> "false")"}},
    {"ConnectionTwice",
     "descriptor.xml",
     R"(<connection source="video_pg:main" sink="video_sink"/>)",
     R"(<connection source="video_pg:main" sink="video_sink"/>^<connection source="video_pg:main" sink="video_sink"/>)",
     {"added graphs:100 connection[video_pg:main -> video_sink]"}},
    {"ConnectionOfTheGraphBelow",
     "descriptor.xml",
     R"(</graph>
        <graph id="200">)",
     R"(<connection source="a" sink="b"/></graph><graph id="200"><connection source="c" sink="d"/>)",
     {"added graphs:100 connection[a -> b]", "added graphs:200 connection[c -> d]"}},
    {"ConnectionsOfOnePortInAnotherOrder",
     "descriptor.xml",
     R"(^<connection source="csi_be:output" sink="preview_pg:input"/>
            <connection source="csi_be:output" sink="video_pg:input"/>)",
     R"(^<connection source="csi_be:output" sink="video_pg:input"/>
            <connection source="csi_be:output" sink="preview_pg:input"/>)",
     {"reordered graphs:100 connection[csi_be:output -> preview_pg:input] -> "
      "connection[csi_be:output -> video_pg:input]"}},
    {"ConnectionsOfSeveralPortsInAnotherOrder",
     "descriptor.xml",
     R"(<connection source="preview_pg:main" sink="preview_sink"/>
            <connection source="video_pg:main" sink="video_sink"/>)",
     R"(<connection source="video_pg:main" sink="video_sink"/>
            <connection source="preview_pg:main" sink="preview_sink"/>)",
     {}},
    {"OverrideWithAnotherValue",
     "descriptor.xml",
     R"(<apply target="video_pg:crop:enabled" ^value="0"/>)",
     R"(<apply target="video_pg:crop:enabled" ^value="1"/>)",
     {R"(changed graphs:100:apply[video_pg:crop:enabled] value "0" -> "1")"}},
    {"OverrideOfSomethingElse",
     "descriptor.xml",
     R"(<apply target="video_pg:crop:enabled" value="0"/>)",
     R"(<apply target="video_pg:scale:enabled" value="0"/>)",
     {"removed graphs:100 apply[video_pg:crop:enabled]", "added graphs:100 apply[video_pg:scale:enabled]"}},
    {"OverridesOfOneValueInAnotherOrder",
     "kva6_descriptor.xml",
     R"(<apply target="vid_tnr:tuning_mode" value="3"/>
            <apply target="vid_bayer:lsc:enabled" value="1"/>)",
     R"(<apply target="vid_bayer:lsc:enabled" value="1"/>
            <apply target="vid_tnr:tuning_mode" value="3"/>)",
     {}},
    {"GraphUnderAnotherNumber",
     "descriptor.xml",
     R"(^<graph id="300">)",
     R"(^<graph id="301">)",
     {"renamed graphs 300 -> 301"}},
    {"GraphRemoved",
     "descriptor.xml",
     R"(        ^<graph id="300">
            <connection source="sensor:port_0" sink="csi_be:nowhere"/>
        </graph>)",
     "",
     {"removed graphs 300"}},
    {"LinkRemoved",
     "linked.xml",
     R"(^<klink source="tap:1" destination="grid:0"/>)",
     "",
     {"removed nodes:front klink[tap:1 -> grid:0]"}},
    {"LinkToAnotherInput",
     "linked.xml",
     R"(<klink source="ref_in" destination="blend:1"/>)",
     R"(<klink source="ref_in" destination="blend:2"/>)",
     {"removed nodes:back klink[ref_in -> blend:1]", "added nodes:back klink[ref_in -> blend:2]"}},
    {"LinksInAnotherOrder",
     "linked.xml",
     R"(<klink source="tap:0" destination="scale:0"/>
            <klink source="tap:1" destination="grid:0"/>)",
     R"(<klink source="tap:1" destination="grid:0"/>
            <klink source="tap:0" destination="scale:0"/>)",
     {}},
    {"OptionForOneMoreValue",
     "descriptor.xml",
     R"(^<option value="NV12,YUY2">)",
     R"(^<option value="NV12,YUY2,P010">)",
     {"renamed nodes:base_scaler:second:options[format] option[NV12,YUY2] -> option[NV12,YUY2,P010]"}},
    {"OptionValuesInAnotherOrder",
     "descriptor.xml",
     R"(<option value="NV12,YUY2">)",
     R"(<option value="YUY2,NV12">)",
     {}},
    {"OptionAppliesAnotherValue",
     "descriptor.xml",
     R"(<base_scaler ^tuning_mode="2"/>)",
     R"(<base_scaler ^tuning_mode="3"/>)",
     {"changed nodes:base_scaler:second:options[format]:option[NV12,YUY2]:apply:base_scaler tuning_mode 2 -> 3"}},
    {"OptionsOfAnotherAttribute",
     "descriptor.xml",
     R"(^<options attribute="format">)",
     R"(^<options attribute="width">)",
     {"renamed nodes:base_scaler:second options[format] -> options[width]"}},
    {"OptionAdded",
     "descriptor.xml",
     R"(</option>
                </options>)",
     R"(</option><option value="NV21"/></options>)",
     {"added nodes:base_scaler:second:options[format] option[NV21]"}},
    {"OptionsThatShareNoValueInAnotherOrder",
     "kva6_descriptor.xml",
     R"(<option value="GRBG_10,GRBG_10_C">
                        <apply>
                            <csi_be>
                                <zmt_pixelformatter>
                                    <input bpp="16"/>
                                </zmt_pixelformatter>
                            </csi_be>
                        </apply>
                    </option>
                    <option value="GRBG_10_P">
                        <apply>
                            <csi_be>
                                <zmt_pixelformatter>
                                    <input bpp="10"/>
                                </zmt_pixelformatter>
                            </csi_be>
                        </apply>
                    </option>)",
     R"(<option value="GRBG_10_P">
                        <apply><csi_be><zmt_pixelformatter><input bpp="10"/></zmt_pixelformatter></csi_be></apply>
                    </option>
                    <option value="GRBG_10,GRBG_10_C">
                        <apply><csi_be><zmt_pixelformatter><input bpp="16"/></zmt_pixelformatter></csi_be></apply>
                    </option>)",
     {}},
    {"Version",
     "descriptor.xml",
     R"(<graph_descriptor ^version="DEMO1">)",
     R"(<graph_descriptor ^version="DEMO2">)",
     {R"(changed  version "DEMO1" -> "DEMO2")"}},
    {"NodesMovedAndCommented",
     "descriptor.xml",
     R"(        <sink name="preview_sink" stream_id="60001"/>
        <sink name="video_sink" stream_id="60002"/>
        <sink name="raw_sink" stream_id="60000"/>)",
     R"(<!-- sinks --><sink name="raw_sink" stream_id="60000"/><sink stream_id='60002'
         name="video_sink"></sink><sink name="preview_sink" stream_id="60001"/>)",
     {}},
    {"NamesInCapitals",
     "descriptor.xml",
     R"(<sink name="raw_sink" stream_id="60000"/>)",
     R"(<SINK NAME="raw_sink" Stream_Id="60000"/>)",
     {}},
    {"NodeElementWithAType",
     "descriptor.xml",
     R"(<sink name="raw_sink" stream_id="60000"/>)",
     R"(<node name="raw_sink" type="sink" stream_id="60000"/>)",
     {}},
    {"NumbersSpelledDifferently",
     "descriptor.xml",
     R"(<sink name="raw_sink" stream_id="60000"/>)",
     R"(<sink name="raw_sink" stream_id=" +060000"/>)",
     {}},
};

const Edit kEditsOfSettings[] = {
    {"ValueOfASink",
     "settings.xml",
     R"(<raw_sink ^width="4208")",
     R"(<raw_sink ^width="4200")",
     {"changed settings:3:raw_sink width 4208 -> 4200"}},
    {"ElementRemoved",
     "settings.xml",
     R"(^<video_sink width="1920" height="1080" format="NV12"/>)",
     "",
     {"removed settings:1 video_sink"}},
    {"ElementForAnotherNode",
     "settings.xml",
     R"(<video_sink width="1920" height="1080" format="NV12"/>)",
     R"(<encoder_sink width="1920" height="1080" format="NV12"/>)",
     {"renamed settings:1 video_sink -> encoder_sink"}},
    {"ElementWithoutContentForAnotherNode",
     "linked_settings.xml",
     R"(<main_sink/><aux_sink/><stats_sink/>
    </settings>
    <!-- the scaler)",
     R"(<main_sink/><other_sink/><stats_sink/>
    </settings>
    <!-- the scaler)",
     {"removed settings:1 aux_sink", "added settings:1 other_sink"}},
    {"SettingUnderAnotherKey",
     "settings.xml",
     R"(^<settings key="3" id="200">)",
     R"(^<settings key="30" id="200">)",
     {"renamed  settings:3 -> settings:30"}},
    {"SettingUnderAnotherKeyAndChanged",
     "settings.xml",
     R"(<settings key="3" id="200">)",
     R"(<settings key="30" id="100">)",
     {"removed  settings:3", "added  settings:30"}},
    {"GraphOfASetting",
     "settings.xml",
     R"(<settings key="3" ^id="200">)",
     R"(<settings key="3" ^id="300">)",
     {"changed settings:3 id 200 -> 300"}},
    {"SettingRemoved",
     "settings.xml",
     R"(^<settings key="4" id="999"><sensor mode_id="full"/></settings>)",
     "",
     {"removed  settings:4"}},
    {"SettingTwice",
     "settings.xml",
     R"(<settings key="4" id="999"><sensor mode_id="full"/></settings>)",
     R"(<settings key="4" id="999"><sensor mode_id="full"/></settings>^<settings key="4" id="1"/>)",
     {"added  settings:4"}},
    {"SettingWithoutKey",
     "settings.xml",
     R"(<settings key="4" id="999">)",
     R"(<settings id="999">)",
     {"renamed  settings:4 -> settings"}},
    {"SettingMoved",
     "settings.xml",
     R"(    <settings key="4" id="999"><sensor mode_id="full"/></settings>
    <settings key="5" id="300"><sensor mode_id="full"><port_0/></sensor><csi_be/></settings>)",
     R"(    <settings key="5" id="300"><csi_be/><sensor mode_id="full"><port_0/></sensor></settings>
    <settings id="999" key="4"><sensor mode_id="full"/></settings>)",
     {}},
    {"ValueOfAMode",
     "settings.xml",
     R"(<mode name="binned" v_factor="2" h_factor="2" ^fps="60"/>)",
     R"(<mode name="binned" v_factor="2" h_factor="2" ^fps="50"/>)",
     {"changed sensor_modes:binned fps 60 -> 50"}},
    {"ValueOfAllModes",
     "settings.xml",
     R"(<sensor_modes ^fps="30">)",
     R"(<sensor_modes ^fps="25">)",
     {"changed sensor_modes fps 30 -> 25"}},
    {"ModeRenamed",
     "settings.xml",
     R"(^<mode name="full")",
     R"(^<mode name="whole")",
     {"renamed sensor_modes full -> whole"}},
    {"ModeRemoved",
     "settings.xml",
     R"(^<mode name="full" v_factor="1" h_factor="1"/>)",
     "",
     {"removed sensor_modes full"}},
    {"VersionOfSettings",
     "settings.xml",
     R"(<graph_settings ^version="DEMO1.2">)",
     R"(<graph_settings ^version="DEMO1.3">)",
     {R"(changed  version "DEMO1.2" -> "DEMO1.3")"}},
};

std::string nameOfEdit(const testing::TestParamInfo<Edit>& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Descriptors, DiffEditsTest, testing::ValuesIn(kEditsOfDescriptors), nameOfEdit);
INSTANTIATE_TEST_SUITE_P(Settings, DiffEditsTest, testing::ValuesIn(kEditsOfSettings), nameOfEdit);

} // namespace
