// SPDX-License-Identifier: Apache-2.0
#include "GraphVerbTest.h"

#include <algorithm>
#include <ostream>

namespace {

enum class Which { Descriptor, Settings };

// One fault in a pair of files that is sound otherwise, and the finding that it deserves.
struct BrokenPair {
    const char* name;
    const char* files; ///< names of the pair without ".xml" and "_settings.xml"
    Which broken;      ///< the file that gets the fault
    const char* sound;
    const char* fault;
    Which place; ///< the file that the finding points into
    const char* marker;
    const char* found;
};

[[maybe_unused]] void PrintTo(const BrokenPair& pair, std::ostream* out)
{
    *out << pair.name;
}

std::string settingsOf(const std::string& files)
{
    return files + "_settings.xml";
}

// "line:column" of a text.
std::string placeIn(const std::string& content, size_t at)
{
    const std::string before = content.substr(0, at);
    const auto lines = std::count(before.begin(), before.end(), '\n');
    const size_t start = before.rfind('\n') + 1; // of no line end too: npos + 1 is 0
    return std::to_string(lines + 1) + ':' + std::to_string(at - start + 1);
}

class BrokenGraphsTest : public ToolTest {
protected:
    // Replaces the first of the sound texts.
    void damage(const std::string& files, Which which, const std::string& sound, const std::string& fault) const
    {
        const std::string name = which == Which::Descriptor ? files + ".xml" : settingsOf(files);
        std::string content = read(name);
        const size_t at = content.find(sound);
        ASSERT_NE(at, std::string::npos) << sound << " is not in " << name;
        write(name, content.replace(at, sound.size(), fault));
    }

    ToolRun ask(const std::string& verb, const std::string& files) const
    {
        std::vector<std::string> arguments = {verb, files + ".xml", settingsOf(files), "--key", "1"};
        if (verb != "kernels") arguments.insert(arguments.end(), {"--stream", "1"});
        return run(arguments);
    }

    std::string placeOf(const std::string& files, Which which, const std::string& marker) const
    {
        const std::string name = which == Which::Descriptor ? files + ".xml" : settingsOf(files);
        const size_t at = read(name).find(marker);
        EXPECT_NE(at, std::string::npos) << marker << " is not in " << name;
        return name + ':' + placeIn(read(name), at) + ": ";
    }

    std::string placeOfPort(const std::string& files, const std::string& group, const std::string& port) const
    {
        const std::string content = read(files + ".xml");
        const size_t start = content.find("<program_group name=\"" + group + '"');
        const size_t at = content.find("<port name=\"" + port + '"', start);
        EXPECT_NE(at, std::string::npos);
        return files + ".xml:" + placeIn(content, at) + ": ";
    }
};

class BrokenPairTest : public BrokenGraphsTest, public testing::WithParamInterface<BrokenPair> {};

TEST_P(BrokenPairTest, EveryVerbFindsTheFaultWhereItStands)
{
    const BrokenPair& pair = GetParam();
    damage(pair.files, pair.broken, pair.sound, pair.fault);
    for (const std::string verb : {"kernels", "history", "draw"}) {
        const ToolRun result = ask(verb, pair.files);
        EXPECT_EQ(result.exitCode, 1) << verb;
        EXPECT_EQ(count(result.err, "error["), 1U) << verb << '\n' << result.err;
        const std::string place = placeOf(pair.files, pair.place, pair.marker);
        EXPECT_EQ(result.err.find(place + "error[kernels]: "), 0U) << place << '\n' << result.err;
        EXPECT_NE(result.err.find(pair.found), std::string::npos) << result.err;
    }
}

constexpr const char* kShade = R"(<kernel name="shade")";

constexpr BrokenPair kBrokenPairs[] = {
    {"LinkedKernelWithoutId", "linked", Which::Descriptor, R"("shade" id="1")", R"("shade")", Which::Descriptor, kShade,
     "Couldn't get kernel id; "},
    {"LinkedKernelWithoutUuid", "linked", Which::Descriptor, R"( pal_uuid="102")", "", Which::Descriptor, kShade,
     "ERROR: Couldn't get pal_uuid; "},
    {"OrderedKernelWithoutUuid", "ordered", Which::Descriptor, R"( pal_uuid="102")", "", Which::Descriptor, kShade,
     "ERROR: Couldn't get pal_uuid; "},
    {"LinkedKernelWithoutHeight", "linked", Which::Settings, R"(<input width="960" height="540"/>)",
     R"(<input width="960"/>)", Which::Settings, R"(width="960"/>)",
     "Retrieval of resolution info for RCB kernel scale Failed; expected both width and height\n"},
    {"OrderedKernelWithoutHeight", "ordered", Which::Settings, R"(<input width="960" height="540"/>)",
     R"(<input width="960"/>)", Which::Settings, R"(width="960"/><output width="480")",
     "; expected both width and height\n"},
    {"LinkWithoutSource", "linked", Which::Descriptor, R"(<klink source="shade:0" destination="tap:0"/>)",
     R"(<klink destination="tap:0"/>)", Which::Descriptor, R"(<klink destination="tap:0"/>)",
     "Failed find port node  from PG"},
    {"MissingLink", "linked", Which::Descriptor, R"(<klink source="crop:0" destination="shade:0"/>)", "",
     Which::Descriptor, kShade,
     // tap, grid, scale, smooth, pack and three output ports come behind
     "Imaging Node shade not reached, and with it 8 more; "},
    {"LinksInACircle", "linked", Which::Descriptor, R"(<klink source="tap:0" destination="scale:0"/>)",
     R"(<klink source="tap:0" destination="scale:0"/><klink source="tap:2" destination="shade:1"/>)", Which::Descriptor,
     kShade, "Imaging Node shade not reached, and with it 8 more; "},
    {"OutputWithoutPixels", "linked", Which::Settings, R"(<output width="960" height="540"/>)",
     R"(<output width="0" height="0"/>)", Which::Settings, R"(width="0")",
     "Resolution history output width or height is 0; "},
    {"BackEndWithoutOutputSize", "linked", Which::Settings, R"(<output width="960" height="720"/>)", "",
     Which::Descriptor, R"(<port name="output")", "Failed to get csi be output dimensions; "},
    {"BackEndWithoutInputHeight", "linked", Which::Settings, R"(<input width="1000" height="750"/>)",
     R"(<input width="1000"/>)", Which::Settings, R"(width="1000"/></zmt)",
     "Failed to get input dimensions and crop; "},
    {"SinkInAStreamOfItsOwn", "linked", Which::Descriptor, R"("aux_sink" stream_id="1")",
     R"("aux_sink" stream_id="77")", Which::Descriptor, R"(<sink name="aux_sink")",
     "Could not find source node in subgraph 77; "},
    {"RestoreWithoutBranch", "ordered", Which::Descriptor, R"( branch_point="1")", "", Which::Descriptor,
     R"(restore_point="1")", "Found restore_point attribute, but no branch points."},
};

INSTANTIATE_TEST_SUITE_P(Faults, BrokenPairTest, testing::ValuesIn(kBrokenPairs),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST_F(BrokenGraphsTest, ConnectionThatIsMissingIsNotedAtThePort)
{
    damage("linked", Which::Descriptor, R"(<connection source="front:main_out" sink="back:input"/>)", "");
    const ToolRun result = ask("kernels", "linked");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(count(result.err, "error["), 1U) << result.err;
    const std::string place = placeOfPort("linked", "back", "input");
    EXPECT_EQ(count(result.err, place + "note: nothing is connected to back:input\n"), 1U) << place << result.err;
}

TEST_F(BrokenGraphsTest, ConnectionThatTheLibraryDoesNotMissIsFoundToo)
{
    damage("ordered", Which::Descriptor, R"(<connection source="middle:main_out" sink="back:input"/>)", "");
    const std::string place = placeOfPort("ordered", "back", "input");
    for (const std::string verb : {"kernels", "history", "draw"}) {
        const ToolRun result = ask(verb, "ordered");
        EXPECT_EQ(result.exitCode, 1) << verb;
        EXPECT_EQ(count(result.err, "error["), 1U) << result.err;
        EXPECT_EQ(result.err.find(place + "error[kernels]: nothing is connected to back:input, "), 0U) << result.err;
    }
}

TEST_F(BrokenGraphsTest, ConnectionToANodeThatDoesNotExistIsWarnedOf)
{
    damage("linked", Which::Descriptor, R"(sink="aux_sink")", R"(sink="axu_sink")");
    for (const std::string verb : {"build", "kernels", "ports"}) {
        const ToolRun result = run({verb, "linked.xml", "linked_settings.xml", "--key", "1"});
        EXPECT_EQ(count(result.err, placeOf("linked", Which::Descriptor, R"(sink="axu_sink")") +
                                        "warning[build]: sink 'axu_sink' names no node of the descriptor; expected one "
                                        "that it declares; did you mean 'aux_sink'?\n"),
                  1U)
            << verb << result.err;
    }
}

TEST_F(BrokenGraphsTest, ConnectionsThatCloseACircleOfStreamsAreNoted)
{
    damage("linked", Which::Descriptor, R"(<port name="aux_out")",
           R"(<port name="aux_in" id="9" direction="0"/><port name="aux_out")");
    damage("linked", Which::Descriptor, R"(<connection source="back:main_out" sink="main_sink"/>)",
           R"(<connection source="back:main_out" sink="front:aux_in"/>)");
    const ToolRun result = ask("kernels", "linked");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(count(result.err, "note: front:main_out leads from stream 1 to stream 2, which leads back\n"), 1U)
        << result.err;
    EXPECT_EQ(count(result.err, "note: back:main_out leads from stream 2 to stream 1, which leads back\n"), 1U)
        << result.err;
}

TEST_F(BrokenGraphsTest, GroupWithoutStreamIsNotedWhereStreamsAreNotReached)
{
    damage("linked", Which::Descriptor, R"("back" pg_id="2" stream_id="2")", R"("back" pg_id="2")");
    const ToolRun result = ask("kernels", "linked");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(count(result.err, placeOf("linked", Which::Descriptor, R"(<program_group name="back")") +
                                    "note: back has no stream_id\n"),
              1U)
        << result.err;
}

TEST_F(BrokenGraphsTest, LinkToAKernelWithoutPortIsFound)
{
    damage("linked", Which::Descriptor, R"(<klink source="shade:0" destination="tap:0"/>)",
           R"(<klink source="shade" destination="tap:0"/>)");
    for (const std::string verb : {"kernels", "history", "draw"}) {
        const ToolRun result = ask(verb, "linked");
        EXPECT_EQ(result.exitCode, 1) << verb;
        EXPECT_EQ(count(result.err, "error["), 1U) << result.err;
        EXPECT_EQ(result.err.find(placeOf("linked", Which::Descriptor, R"(source="shade")") +
                                  "error[kernels]: 'shade' is no port of front; expected a port, or that of a kernel, "
                                  "such as shade:0\n"),
                  0U)
            << result.err;
    }
}

TEST_F(BrokenGraphsTest, HalfASizeIsWarnedOf)
{
    for (const std::string files : {"linked", "ordered"}) {
        damage(files, Which::Settings, R"(<input width="960" height="720"/><output width="960" height="540"/>)",
               R"(<input height="720"/><output width="960" height="540"/>)");
        const ToolRun result = ask("kernels", files);
        EXPECT_EQ(count(result.err, placeOf(files, Which::Settings, R"(height="720"/><output width="960")") +
                                        "warning[kernels]: front:crop states half of its input size, which does not "
                                        "count; expected both width and height\n"),
                  1U)
            << result.err;
    }
}

TEST_F(BrokenGraphsTest, FramesThatDoNotArriveAreWarnedOfByEveryVerb)
{
    // No stream waits for the statistics: the library goes on without them.
    damage("linked", Which::Descriptor, R"(<klink source="tap:1" destination="grid:0"/>)", "");
    for (const std::string verb : {"kernels", "history", "draw"}) {
        const ToolRun result = ask(verb, "linked");
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err.find(placeOf("linked", Which::Descriptor, R"(<kernel name="grid")") +
                                  "warning[kernels]: Imaging Node grid not reached, and with it 1 more\n"),
                  0U)
            << result.err;
        EXPECT_EQ(count(result.err, "warning["), 1U) << result.err;
    }
}

TEST_F(BrokenGraphsTest, MuxWithoutActiveInputIsTheCause)
{
    addExample("kva7");
    std::string descriptor = read("kva7_descriptor.xml");
    const std::string active = R"(<mux name="dol_mux" active_input="0"/>)";
    const size_t at = descriptor.find(active);
    ASSERT_NE(at, std::string::npos);
    write("kva7_descriptor.xml", descriptor.replace(at, active.size(), R"(<mux name="dol_mux"/>)"));
    const ToolRun result = run({"kernels", "kva7_descriptor.xml", "kva7_settings.xml", "--key", "70100"});
    EXPECT_EQ(result.exitCode, 1);
    const size_t mux = read("kva7_descriptor.xml").find("<mux name=\"dol_mux\"");
    EXPECT_EQ(
        result.err.find("kva7_descriptor.xml:" + placeIn(read("kva7_descriptor.xml"), mux) + ": error[kernels]: "), 0U)
        << result.err;
    EXPECT_NE(result.err.find(": Failed to get Active routing path for  dol_mux; "), std::string::npos) << result.err;
}

TEST_F(BrokenGraphsTest, WhatFollowsAnEmptyFrameIsNoFindingOfItsOwn)
{
    damage("ordered", Which::Settings, R"(<output width="960" height="540"/>)", R"(<output width="0" height="0"/>)");
    const ToolRun result = ask("history", "ordered");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err.find("but 0x0 arrives"), std::string::npos) << result.err;
    EXPECT_EQ(count(result.err, "error["), 1U) << result.err;
}

// Crops that no frame has wrap at 32 bits: what the tool works out to leave a kernel is what the library says to arrive.
TEST_F(BrokenGraphsTest, HugeCropsWrapAsInTheLibrary)
{
    damage("ordered", Which::Settings, R"(<crop><input width="960" height="720"/>)",
           R"(<crop><input width="960" height="720" left="500000000"/>)");
    damage("ordered", Which::Settings, R"(<scale><input width="960" height="540"/>)",
           R"(<scale><input width="960" height="540" left="500000119"/>)");
    const ToolRun result = ask("history", "ordered");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    std::map<std::string, std::string> crops;
    for (const auto& row : rowsOf(result.out)) crops[row.at("NODE")] = row.at("SOURCE CROP");
    EXPECT_EQ(crops["front:crop"].find("2000000088,"), 0U) << result.out; // 88 + 4 * 500000000
    // The next crop leads beyond 2^31.
    EXPECT_EQ(crops["front:scale"].find('-'), 0U) << result.out;
    EXPECT_EQ(crops["front:scale"], crops["middle:tone"]) << result.out;
}

} // namespace
