// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_QUERY_GRAPH_FIXTURE_H
#define NUXO_TESTS_QUERY_GRAPH_FIXTURE_H

#include <nuxo/nuxo.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <support/LogCapture.h>

namespace graphtest {

using NUXO::GraphConfigAttribute;
using NUXO::GraphConfigIntAttribute;
using NUXO::GraphConfigItem;
using NUXO::GraphConfigNode;
using NUXO::GraphConfigStrAttribute;
using NUXO::GraphQueryManager;
using NUXO::GraphQueryUtils;
using NUXO::IGraphConfig;
using NUXO::ItemUID;

using Tree = std::unique_ptr<GraphConfigNode>;

/// Message classes as the log mask numbers them.
enum Level : uint32_t { kDebug = 2, kError = 16, kWarning = 32 };

/// Parses a whole document; throws std::runtime_error when nothing comes out.
Tree parse(const std::string& document);
/// A descriptor or settings document around @p body.
std::string descriptorText(const std::string& body, const std::string& version = "KVA6");
std::string settingsText(const std::string& body, const std::string& version = "KVA6.1");
Tree descriptor(const std::string& body, const std::string& version = "KVA6");
Tree settings(const std::string& body, const std::string& version = "KVA6.1");
/// A root with @p body below it and nothing else, by the filing rules of settings files.
Tree tree(const std::string& body);

/// The node at a ':'-separated path of names, found without the library's own lookups; null when there is none.
GraphConfigNode* find(const GraphConfigNode& root, const std::string& path);
/// The same, but throws std::runtime_error when there is none.
GraphConfigNode& at(const GraphConfigNode& root, const std::string& path);
/// The first item at @p path for comparisons: "5", "'text'", "node", "untyped" or "absent".
std::string value(const GraphConfigNode& root, const std::string& path);
/// All items filed under the last name of @p path, joined by blanks.
std::string values(const GraphConfigNode& root, const std::string& path);
/// Canonical text of everything below @p node, in order: `name='text' width=5 port{...}`.
std::string text(const GraphConfigNode& node);
/// Whether every child knows its parent, at all depths.
bool linked(const GraphConfigNode& node);
/// The node behind the interface; throws std::runtime_error when it is none.
GraphConfigNode& asNode(IGraphConfig* node);
/// The key of @p name, which must be known.
uint32_t key(const std::string& name);
/// Path of a file for this process alone; tests run side by side.
std::string scratchFile(const std::string& name);

/// A small pair of files that uses every mechanism of graph construction.
std::string requestDescriptor();
std::string requestSettings();
/// Canonical text of the graph of settings 7 of that pair, derived by hand beside its definition.
std::string requestGraph();

/// Saves the vocabulary, records errors, warnings and debug lines, and restores both afterwards.
class GraphTest : public ::testing::Test {
protected:
    GraphTest();
    ~GraphTest() override;

    /// Whether a line of this level with the graph tag and exactly this message was logged.
    ::testing::AssertionResult logged(uint32_t level, const std::string& message) const;
    ::testing::AssertionResult notLogged(const std::string& message) const;
    /// Whether the recorded lines are exactly these, in order, written "level message".
    ::testing::AssertionResult loggedExactly(const std::vector<std::string>& lines) const;
    /// The recorded lines, written "level message"; a line with another tag starts with that.
    std::vector<std::string> lines() const;
    size_t count(uint32_t level, const std::string& message) const;
    void clearLog();
    /// The vocabulary as the test found it, without the names of the documents that it parsed.
    const std::map<std::string, uint32_t>& vocabularyBefore() const { return mVocabulary; }

    LogCapture mLog{kDebug | kError | kWarning};

private:
    std::map<std::string, uint32_t> mVocabulary;
};

/// A manager over a descriptor and a settings document, and what it builds.
class BuildTest : public GraphTest {
protected:
    ~BuildTest() override;

    /// Parses both documents and points the manager at them.
    void load(const std::string& descriptorBody, const std::string& settingsBody);
    /// Builds the graph of the @p index-th `settings` node; the result is in mGraph.
    int build(size_t index = 0);
    /// The @p index-th `settings` node.
    GraphConfigNode& setting(size_t index = 0) const;
    GraphConfigNode& graph() const;

    Tree mDescriptor;
    Tree mSettings;
    GraphQueryManager mManager;
    IGraphConfig* mGraph = nullptr;
};

} // namespace graphtest

#endif
