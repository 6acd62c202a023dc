// SPDX-License-Identifier: Apache-2.0
#include "Fault.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

const std::string kHere = std::string(NUXO_SOURCE_DIR) + "/tests/check/";

std::string readText(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

bool isExample(const std::string& file)
{
    return file.compare(0, 3, "kva") == 0;
}

size_t countOf(const std::string& text, const std::string& part)
{
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

std::vector<std::string> listOf(const nlohmann::json& description, const char* member)
{
    return description.value(member, std::vector<std::string>());
}

// Takes the marks out of a text.
std::vector<Fault::Place> takePlaces(const std::string& file, std::string& text)
{
    std::vector<Fault::Place> places;
    for (size_t at = text.find('^'); at != std::string::npos; at = text.find('^', at)) {
        text.erase(at, 1);
        const std::string before = text.substr(0, at);
        const auto lines = static_cast<size_t>(std::count(before.begin(), before.end(), '\n'));
        const size_t lineStart = before.rfind('\n') == std::string::npos ? 0 : before.rfind('\n') + 1;
        places.push_back({file, lines + 1, at - lineStart + 1});
    }
    return places;
}

} // namespace

Fault::Fault(const nlohmann::json& description, const std::string& defaultRule)
    : name(description.value("name", "")), rule(description.value("rule", defaultRule)),
      severity(description.value("severity", "error")), says(listOf(description, "says")),
      also(listOf(description, "also")), arguments(listOf(description, "arguments"))
{
    const nlohmann::json edits =
        description.contains("edits") ? description["edits"] : nlohmann::json::array({description});
    const std::string first = edits.empty() ? "" : edits[0].value("file", "");
    const std::string prefix = isExample(first) ? first.substr(0, first.find('_') + 1) : "";
    const std::string folder = isExample(first) ? std::string(NUXO_SOURCE_DIR) + "/examples/" : kHere + "fixtures/";
    descriptor = prefix + "descriptor.xml";
    settings = prefix + "settings.xml";
    for (const std::string& file : {descriptor, settings}) texts[file] = readText(folder + file);
    for (const nlohmann::json& each : edits) edit(each);
    for (const std::string& file : {descriptor, settings}) {
        const std::vector<Place> marked = takePlaces(file, texts[file]);
        places.insert(places.end(), marked.begin(), marked.end());
    }
    if (name.empty()) trouble = "a fault has no name";
}

void Fault::edit(const nlohmann::json& description)
{
    const std::string file = description.value("file", "");
    const auto text = texts.find(file);
    if (text == texts.end()) {
        trouble = "'" + file + "' is no file of the pair";
    } else if (!replace(text->second, description)) {
        trouble = "'" + description.value("find", "") + "' does not stand once in " + file + " (or behind \"after\")";
    }
}

bool Fault::replace(std::string& text, const nlohmann::json& description)
{
    const std::string find = description.value("find", "");
    const std::string after = description.value("after", "");
    if (find.empty() || (!after.empty() && countOf(text, after) != 1)) return false;
    if (after.empty() && countOf(text, find) != 1) return false;
    const size_t at = text.find(find, after.empty() ? 0 : text.find(after) + after.size());
    if (at == std::string::npos) return false;
    text.replace(at, find.size(), description.value("replace", ""));
    return true;
}

nlohmann::json readJson(const std::string& path)
{
    return nlohmann::json::parse(readText(kHere + path), nullptr, false);
}

std::vector<std::string> jsonFilesIn(const std::string& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(kHere + folder)) {
        if (entry.path().extension() == ".json") names.push_back(entry.path().stem().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}
