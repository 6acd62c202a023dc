// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/query/GraphQueryManager.h>
#include <nuxo/tree/NodeIterator.h>

#include <new>
#include <string>

namespace NUXO {

namespace {

using SearchItems = GraphQueryManager::SearchItems;

// The version of a root; empty, after a warning, when it has none.
std::string readVersion(const IGraphConfig& root, const char* complaint)
{
    std::string version;
    const int32_t status = root.getValue(NUXO_KEY_VERSION, version);
    if (status == StatusNoMemory) throw std::bad_alloc();
    if (status != StatusOk) NUXO_WARN("%s", complaint);
    return version;
}

void compareVersions(const IGraphConfig& descriptor, const IGraphConfig& settings)
{
    const std::string descriptorVersion = readVersion(descriptor, "Couldn't get version from graph descriptor");
    const std::string settingsVersion = readVersion(settings, "Couldn't get version from graph settings");
    if (descriptorVersion == settingsVersion.substr(0, settingsVersion.find('.'))) return;
    NUXO_WARN("WARNING: graph settings(%s) version is not matching graph descriptor(%s). Make sure the settings are "
              "compatible with the graph descriptor.",
              settingsVersion.c_str(), descriptorVersion.c_str());
}

// Reads an attribute as text, integers as decimal digits. A failed read leaves what the text held.
int32_t readAsText(const IGraphConfig& node, uint32_t key, std::string& text)
{
    int number = 0;
    if (node.getValue(key, number) == StatusOk) {
        text = std::to_string(number);
        return StatusOk;
    }
    return node.getValue(key, text);
}

// How many criteria a settings node satisfies. The text outlives each criterion: what one read stays for the next whose own
// read fails.
unsigned short countMatches(const SearchItems& searchItems, const IGraphConfig& settings, bool strict)
{
    unsigned short matches = 0;
    std::string text;
    for (const auto& [path, wanted] : searchItems) {
        const IGraphConfig* const node = path.size() == 1 ? &settings : settings.getDescendant(path);
        int32_t status = StatusMissingData;
        if (node != nullptr) {
            status = readAsText(*node, path.back(), text);
            if (status == StatusNoMemory) throw std::bad_alloc();
            if (text == wanted) ++matches;
        }
        if (strict && status != StatusOk) break;
    }
    return matches;
}

// Appends the node if it satisfies enough criteria.
void appendIfMatching(const SearchItems& searchItems, IGraphConfig& settings, bool strict,
                      std::vector<IGraphConfig*>& result)
{
    const unsigned short matches = countMatches(searchItems, settings, strict);
    if (strict ? matches == searchItems.size() : matches > 0) result.push_back(&settings);
}

int checkFound(const std::vector<IGraphConfig*>& result)
{
    if (!result.empty()) return StatusOk;
    NUXO_ERROR("No settings matching the query found");
    return StatusMissingData;
}

} // namespace

void GraphQueryManager::setGraphSettings(const IGraphConfig* settings)
{
    mGraphSettings = settings;
}

void GraphQueryManager::setGraphDescriptor(const IGraphConfig* descriptor)
{
    mGraphDescriptor = descriptor;
}

int GraphQueryManager::validateSettingsAgainstDescriptor()
{
    if (mGraphSettings == nullptr || mGraphDescriptor == nullptr) return StatusBadState;
    return unlessNoMemory<int>(StatusNoMemory, [this] {
        compareVersions(*mGraphDescriptor, *mGraphSettings);
        return StatusOk;
    });
}

int GraphQueryManager::queryGraphs(const std::map<ItemUID, std::string>& searchItems,
                                   std::vector<IGraphConfig*>& result, bool strict)
{
    mStrictQuery = strict;
    const int status = validateSettingsAgainstDescriptor();
    if (status != StatusOk) return status;
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        NodeIterator iterator(mGraphSettings);
        while (IGraphConfig* const settings = iterator.iterateByUid(NUXO_KEY_SETTINGS))
            appendIfMatching(searchItems, *settings, strict, result);
        return checkFound(result);
    });
}

int GraphQueryManager::queryGraphs(const std::map<ItemUID, std::string>& searchItems,
                                   const std::vector<IGraphConfig*>& candidates, std::vector<IGraphConfig*>& result,
                                   bool strict)
{
    mStrictQuery = strict;
    const int status = validateSettingsAgainstDescriptor();
    if (status != StatusOk) return status;
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        const size_t count = candidates.size(); // the result may be the same vector and grow
        for (size_t i = 0; i < count; ++i) {
            IGraphConfig* const settings = candidates[i];
            if (settings != nullptr) appendIfMatching(searchItems, *settings, strict, result);
        }
        return checkFound(result);
    });
}

void GraphQueryManager::goThroughSearchItems(const std::map<ItemUID, std::string>& searchItems,
                                             const IGraphConfig* settingsNode, unsigned short& matchCount)
{
    if (settingsNode == nullptr) return;
    const unsigned short matches =
        unlessNoMemory<unsigned short>(0, [&] { return countMatches(searchItems, *settingsNode, mStrictQuery); });
    matchCount = static_cast<unsigned short>(matchCount + matches);
}

} // namespace NUXO
