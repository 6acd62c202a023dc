// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_PARSER_PARSER_TEST_H
#define NUXO_TESTS_PARSER_PARSER_TEST_H

#include <nuxo/nuxo.h>
#include <support/LogCapture.h>
#include <tree/VocabularyGuard.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using Tree = std::unique_ptr<NUXO::IGraphConfig>;

/// A line as the parser logs it: priority and message. The tag is checked by the fixture.
using Line = std::pair<int, std::string>;
using Lines = std::vector<Line>;

inline Line error(const std::string& message)
{
    return {LogCapture::Error, message};
}

inline Line warning(const std::string& message)
{
    return {LogCapture::Warning, message};
}

constexpr size_t kChunk = 4096; // files are read in pieces of this size

extern const char* const kParserTag;
extern const Line kNothingParsed;
extern const Line kNoVersion;

/// The whole tree as one text, items in their order: "(width=1920 port(name='out'))".
std::string render(const NUXO::IGraphConfig* node);

/// The text attribute, or the integer attribute, that is the first item with the key.
std::optional<std::string> textOf(const NUXO::IGraphConfig* node, uint32_t key);
std::optional<int> integerOf(const NUXO::IGraphConfig* node, uint32_t key);

/// The first child node with the key of this name.
const NUXO::IGraphConfig* child(const NUXO::IGraphConfig* node, const std::string& name);

/// The child nodes with their keys, in order.
std::vector<std::pair<uint32_t, const NUXO::GraphConfigNode*>> childrenOf(const NUXO::IGraphConfig* node);

uint32_t keyOf(const std::string& name);

std::string repeat(const std::string& text, size_t times);

/// "<graph_settings version='1'>" + body + "</graph_settings>"
std::string settings(const std::string& body);
/// "<graph_descriptor version='1'>" + body + "</graph_descriptor>"
std::string descriptor(const std::string& body);

/// Settings of exactly this many bytes: as many `port` elements as fit, then a comment that fills up, then the end tag.
std::string settingsOfSize(size_t size);

/// The text as a gzip stream.
std::string gzip(const std::string& text);

/// A parser, a captured log, a directory for files, and a vocabulary that is put back. After each test no file is open
/// that was not open before, and all counted memory is released.
class ParserTest : public ::testing::Test {
protected:
    static constexpr uint32_t kNoTraces = 0x33; // all classes but allocations and entries

    ParserTest();
    ~ParserTest() override;
    void SetUp() override;
    void TearDown() override;

    /// Path of a file in the test's own directory.
    std::string path(const std::string& name) const { return mDirectory + "/" + name; }
    /// Writes a file there and returns its path.
    std::string write(const std::string& name, const std::string& bytes) const;

    Tree parseFile(const std::string& fileName);
    Tree parseText(const std::string& text);
    /// Writes the text into "t.xml" and into "t.xml.gz" and parses that file.
    Tree parsePlain(const std::string& text) { return parseFile(write("t.xml", text)); }
    Tree parseGzip(const std::string& text) { return parseFile(write("t.xml.gz", gzip(text))); }

    /// What the parser logged since the last call.
    Lines lines();

    VocabularyGuard mVocabulary;
    LogCapture mLog{kNoTraces};
    NUXO::NUXOParser mParser;

private:
    std::string mDirectory;
    size_t mOpenFiles = 0;
    uint32_t mCountedBlocks = 0;
};

#endif
