// SPDX-License-Identifier: Apache-2.0
#include "LibraryWords.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

using NuxoTool::PlainText;
using NuxoTool::plainTextOf;
using NuxoTool::quietText;

struct Case {
    const char* line;
    const char* found;
    const char* expected;
};

std::string textOf(const std::filesystem::path& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The lines that errors and warnings of a part of the library make, with "x" for what is filled in.
std::set<std::string> linesOf(const std::string& part)
{
    const std::regex message(R"re(NUXO_(?:ERROR|WARN)\(\s*"((?:[^"\\]|\\.|"\s*")*)")re");
    const std::regex joint(R"re("\s*")re");
    const std::regex hole("%[a-z]+");
    std::set<std::string> lines;
    for (const auto& file : std::filesystem::directory_iterator(NUXO_SOURCE_DIR "/qv_camera/nuxo/" + part)) {
        const std::string text = textOf(file.path());
        for (std::sregex_iterator found(text.begin(), text.end(), message), end; found != end; ++found) {
            lines.insert(std::regex_replace(std::regex_replace((*found)[1].str(), joint, ""), hole, "x"));
        }
    }
    return lines;
}

// What no graph file can bring about, what only says that a step failed of which another line tells why, and what shows
// the state of the library to its developers.
bool needsNoWords(const std::string& line)
{
    static const std::vector<std::string> starts = {
        "x",
        "Adding ",
        "Allocating kernel structures before deleting",
        "Analysis of subgraphs failed",
        "COULD NOT FIND index for exec ctx id",
        "Cannot fill kernels of ctx",
        "Connection x->x skipped", // a setting uses a part of its graph
        "Could not find parent history for node",
        "Could not find the stream id",
        "Creating kernel list for exec ctx id",
        "Disablement of kernels in subgraph",
        "Error: ZmtTevUtils not initialized",
        "FOUND index for exec ctx id",
        "Failed to add graph connections to imaging graph info",
        "Failed to collect imaging graph info from",
        "Failed to disable disconnected filters",
        "Failed to get resolution history for source",
        "Failed to get source resolution history",
        "Failed to locate graph node",
        "Failed to retrieve kernel info from IGraphConfig",
        "GC Handle",
        "Generating kernel lists failed",
        "Getting kernel configurations failed",
        "Graph traversal interrupted at node",
        "INVALID output",
        "ISP utils init failed",
        "Inner graph traversal failed",
        "Invalid Subgraph id",
        "Invalid parameter provided",
        "Invalid stream id",
        "Invalid subgraph(",
        "MBR ",                        // asked for by key, apart from the analysis
        "Error: Couldn't get cmc tag", // likewise
        "No kernels found with stream id",
        "StreamId ",
        "Traversal of subgraphs failed on subgraph",
        "Visiting  node",
        "[x]x",
        "bpp_info ",
        "kernel_uuid: ",
        "metadata: ",
        "node x ",
        "res history: NULL",
        "res info: NULL",
        "stream_id x",
        "subgraph x inner graph traversal stopped with error",
        "subgraph id x not FOUND",
    };
    return std::any_of(starts.begin(), starts.end(),
                       [&line](const std::string& start) { return line.compare(0, start.size(), start) == 0; });
}

} // namespace

TEST(LibraryWordsTest, SayWhatALineOfTheLibraryMeans)
{
    const Case cases[] = {
        {"Failed to find Imaging Node tip named in klink in the list of nodes. Inconsistent graph",
         "a klink names tip, which its group does not have", "a port, kernel, mux, demux or split of the group"},
        {"Found klink to a mux non active input plain:0->choice:0 - incorrect GDF",
         "the klink plain:0->choice:0 leads to an input of a mux that is not active",
         "a klink to the active_input of the mux, or that number there"},
        {"Could not find the PG program_group[video] in the Subgraphs map",
         "no path leads from video to a sink of the setting, so that it has no records",
         "an output of it that is on and leads to a sink of the setting"},
        {"Consistency error in kernel scale, res info input(640x270) is different than res history output(640x360)- "
         "check your settings!",
         "kernel scale takes 640x270, but 640x360 arrives", "640x360"},
        {"Mismatch in tuning mode (2 vs 0) for same execution Context 7!!!   Discard current tuning Mode",
         "groups of context 7 have the tuning modes 2 and 0", "one tuning_mode for all groups of a context"},
        {"Kernel sink port id 9 invalid", "a kernel has the sink_port 9, which is the id of no port",
         "the id of a port"},
        {"Could not find the res history for  parent output port front:main_out ",
         "the size of the frames at front:main_out is not known",
         "a path of connections and klinks from a source, with all ports on it switched on"},
        {"Failed to get binner input dimensions and crop",
         "binner of the sensor mode does not state the size of its input", "a size with width and height"},
        {"Failed to get input dimensions and crop", "the input of a stage or formatter does not state all of its size",
         "width, height and the four crops"},
    };
    for (const Case& each : cases) {
        const std::optional<PlainText> plain = plainTextOf(each.line);
        ASSERT_TRUE(plain.has_value()) << each.line;
        EXPECT_EQ(plain->found, each.found);
        EXPECT_EQ(plain->expected, each.expected);
    }
}

TEST(LibraryWordsTest, KnowAllThatAnAnalysisMaySay)
{
    size_t count = 0;
    for (const char* const part : {"analysis", "histories", "kernels"}) {
        for (const std::string& line : linesOf(part)) {
            if (needsNoWords(line)) continue;
            ++count;
            EXPECT_TRUE(plainTextOf(line).has_value()) << part << ": " << line;
        }
    }
    EXPECT_GT(count, 50U); // the sources were read
}

TEST(LibraryWordsTest, NeverShout)
{
    for (const char* const part : {"analysis", "histories", "kernels"}) {
        for (const std::string& line : linesOf(part)) {
            const std::optional<PlainText> plain = plainTextOf(line);
            const std::string text = plain ? plain->found + plain->expected : quietText(line);
            EXPECT_EQ(text.find('!'), std::string::npos) << text;
            EXPECT_EQ(text.find("ERROR"), std::string::npos) << text;
            EXPECT_EQ(text.find('%'), std::string::npos) << text;
        }
    }
}

TEST(LibraryWordsTest, LeaveOtherLinesAlone)
{
    EXPECT_FALSE(plainTextOf("").has_value());
    EXPECT_FALSE(plainTextOf("nothing is connected to front:input").has_value());
    EXPECT_EQ(quietText("ERROR: No way!!"), "No way");
    EXPECT_EQ(quietText("a \x1b[31mred\x1b[0m name").find('\x1b'), std::string::npos);
}
