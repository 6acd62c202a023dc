// SPDX-License-Identifier: Apache-2.0
#include "Texts.h"

#include <array>

namespace bench {

namespace {

constexpr std::array<const char*, 6> kGroups = {"sensor", "csi_be", "pre_pg", "main_pg", "post_pg", "video_pg"};
constexpr std::array<const char*, 4> kPorts = {"input", "output", "stats", "aux"};
constexpr std::array<const char*, 4> kFormats = {"NV12", "P010", "YUY2", "RAW"};
constexpr std::array<const char*, 3> kContents = {"raw", "yuv", "meta"};
constexpr std::array<int, 6> kWidths = {640, 1280, 1920, 2104, 3840, 4208};
constexpr std::array<int, 6> kHeights = {480, 720, 1080, 1560, 2160, 3120};

std::string attribute(const char* name, const std::string& value)
{
    return std::string(" ") + name + "=\"" + value + '"';
}

std::string attribute(const char* name, size_t value)
{
    return attribute(name, std::to_string(value));
}

std::string attribute(const char* name, int value)
{
    return attribute(name, std::to_string(value));
}

template <size_t Size> auto pick(const std::array<const char*, Size>& words, size_t number)
{
    return words[number % Size];
}

// A port's resolution; the pairs of width and height repeat with different periods, so that few settings match both.
std::string port(size_t setting, size_t group, size_t index)
{
    const size_t number = setting * 7 + group * 3 + index;
    return "  <" + std::string(kPorts[index]) + attribute("format", pick(kFormats, number)) +
           attribute("content_type", pick(kContents, number)) + attribute("width", kWidths[number % kWidths.size()]) +
           attribute("height", kHeights[number / 5 % kHeights.size()]) + attribute("bpp", 8 + number % 3 * 2) +
           attribute("id", index) + "/>\n";
}

std::string group(size_t setting, size_t index)
{
    const std::string name = kGroups[index];
    std::string text = " <" + name + attribute("name", name) + attribute("mode_id", index == 0 ? "full" : "default") +
                       attribute("pg_id", 180 + index) + attribute("exec_ctx_id", index % 3) +
                       attribute("stream_id", 60000 + setting % 7) + attribute("enabled", 1) + ">\n";
    for (size_t i = 0; i < kPorts.size(); ++i) text += port(setting, index, i);
    return text + " </" + name + ">\n";
}

std::string setting(size_t number)
{
    std::string text = "<settings" + attribute("key", 60000 + number) + attribute("id", 100 + number % 4) +
                       attribute("fps", 30 + number % 2 * 30) + attribute("dvs", number % 2) +
                       attribute("description", "video " + std::to_string(number)) + attribute("flow", "preview") +
                       ">\n";
    for (size_t i = 0; i < kGroups.size(); ++i) text += group(number, i);
    return text + "</settings>\n";
}

std::string groupName(size_t number)
{
    return "pg_" + std::to_string(number);
}

// What stands inside a program group of the descriptor.
std::string groupContent()
{
    std::string text = R"(<port name="in" id="0" direction="0" enabled="1"/>
<port name="out" id="1" direction="1" enabled="1" format="NV12"/>
<port name="stats" id="2" direction="1" enabled="1" content_type="statistics"/>
)";
    for (int i = 0; i < 6; ++i) {
        text += "<kernel" + attribute("name", "kernel_" + std::to_string(i)) + attribute("pal_uuid", 4100 + i) +
                attribute("enabled", 1) + attribute("rcb", 0) + attribute("metadata", "0,0,0,1") + "/>\n";
    }
    return text;
}

// Every other group is a user of the base node.
std::string descriptorGroup(size_t number)
{
    const std::string name = attribute("name", groupName(number));
    if (number % 2 == 0) {
        return "<node" + name + R"( base_node="pg_base"><attribute target="exec_ctx_id" value=")" +
               std::to_string(number % 3) + "\"/></node>\n";
    }
    return "<program_group" + name + attribute("pg_id", 187) + attribute("stream_id", 60001) +
           attribute("exec_ctx_id", 1) + ">\n" + groupContent() + "</program_group>\n";
}

std::string connection(const std::string& source, const std::string& sink)
{
    return "<connection" + attribute("source", source) + attribute("sink", sink) + "/>\n";
}

std::string descriptor(size_t groups)
{
    std::string text = "<graph_descriptor version=\"KVA6\">\n<nodes>\n"
                       "<source name=\"sensor\"><port name=\"port_0\" direction=\"1\"/>"
                       "<pixel_array><output width=\"0\" height=\"0\"/></pixel_array></source>\n"
                       "<base_node name=\"pg_base\" base_type=\"program_group\" pg_id=\"187\" stream_id=\"60001\">\n" +
                       groupContent() + "</base_node>\n";
    for (size_t i = 0; i < groups; ++i) text += descriptorGroup(i);
    text += "<sink name=\"video_sink\"/>\n</nodes>\n<graphs>\n<graph id=\"100\">\n";
    std::string source = "sensor:port_0";
    for (size_t i = 0; i < groups; ++i) {
        text += connection(source, groupName(i) + ":in");
        source = groupName(i) + ":out";
    }
    return text + connection(source, "video_sink") + "</graph>\n</graphs>\n</graph_descriptor>\n";
}

std::string resolution(int width)
{
    return attribute("width", width) + attribute("height", width / 4 * 3) + attribute("bpp", 10);
}

std::string requestSetting(int key, size_t groups)
{
    const std::string size = resolution(sinkWidth(key));
    std::string text =
        "<settings" + attribute("key", key) + " id=\"100\">\n<sensor mode_id=\"full\"><port_0" + size + "/></sensor>\n";
    for (size_t i = 0; i < groups; ++i) {
        text += "<" + groupName(i) + "><in" + size + "/><out" + size + " format=\"P010\"/><kernel_0 enabled=\"1\"/></" +
                groupName(i) + ">\n";
    }
    return text + "<video_sink" + size + "/>\n</settings>\n";
}

} // namespace

std::string settingsFile(size_t count)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<graph_settings version=\"KVA6.2\">\n";
    for (size_t i = 0; i < count; ++i) text += setting(i);
    return text + "</graph_settings>\n";
}

std::string siblings(size_t count, bool alternating)
{
    std::string text = "<graph_settings version=\"KVA6.2\">\n<settings>\n";
    for (size_t i = 0; i < count; ++i) {
        const bool second = alternating ? i % 2 == 1 : i >= count / 2;
        text += second ? "<second width=\"1\"/>\n" : "<first width=\"1\"/>\n";
    }
    return text + "</settings>\n</graph_settings>\n";
}

Request chainOfGroups(size_t connections)
{
    const size_t groups = connections - 1;
    Request request;
    request.connections = connections;
    request.descriptor = descriptor(groups);
    request.settings = "<graph_settings version=\"KVA6.2\">\n<sensor_modes fps=\"30\"><mode name=\"full\"><pixel_array>"
                       "<output width=\"4208\" height=\"3120\"/></pixel_array></mode></sensor_modes>\n";
    for (int key = 1; key <= 3; ++key) request.settings += requestSetting(key, groups);
    request.settings += "</graph_settings>\n";
    return request;
}

int sinkWidth(int settingsKey)
{
    return settingsKey * 640;
}

} // namespace bench
