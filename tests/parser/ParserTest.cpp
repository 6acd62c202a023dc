// SPDX-License-Identifier: Apache-2.0
#include "ParserTest.h"

#include <qv_cipr/qv_cipr_alloc.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <zlib.h>

using namespace NUXO;

const char* const kParserTag = "NUXO_PARSER[XOS]";
const Line kNothingParsed = error("Parser returned NULL!");
const Line kNoVersion = warning("No version information found.");

namespace {

const GraphConfigNode& nodeBehind(const IGraphConfig* node)
{
    return dynamic_cast<const GraphConfigNode&>(*node);
}

size_t openFiles()
{
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(descriptors), end(descriptors)));
}

uint32_t countedBlocks()
{
    return g_alloc_counter - g_free_counter;
}

std::string renderItem(uint32_t key, GraphConfigItem& item)
{
    const std::string name = ItemUID::key2str(key);
    int number = 0;
    std::string text;
    if (item.getValue(number) == StatusOk) return name + "=" + std::to_string(number);
    if (item.getValue(text) == StatusOk) return name + "='" + text + "'";
    return name + render(dynamic_cast<IGraphConfig*>(&item));
}

} // namespace

std::string render(const IGraphConfig* node)
{
    if (node == nullptr) return "null";
    std::string text;
    for (const auto& entry : nodeBehind(node)) {
        text += (text.empty() ? "" : " ") + renderItem(entry.first, *entry.second);
    }
    return "(" + text + ")";
}

std::optional<std::string> textOf(const IGraphConfig* node, uint32_t key)
{
    std::string value;
    return node != nullptr && node->getValue(key, value) == StatusOk ? std::make_optional(value) : std::nullopt;
}

std::optional<int> integerOf(const IGraphConfig* node, uint32_t key)
{
    int value = 0;
    return node != nullptr && node->getValue(key, value) == StatusOk ? std::make_optional(value) : std::nullopt;
}

const IGraphConfig* child(const IGraphConfig* node, const std::string& name)
{
    return node == nullptr ? nullptr : node->getDescendant(keyOf(name));
}

std::vector<std::pair<uint32_t, const GraphConfigNode*>> childrenOf(const IGraphConfig* node)
{
    std::vector<std::pair<uint32_t, const GraphConfigNode*>> children;
    if (node == nullptr) return children;
    for (const auto& entry : nodeBehind(node)) {
        if (entry.second->type != GraphConfigItem::NODE) continue;
        children.emplace_back(entry.first, static_cast<const GraphConfigNode*>(entry.second));
    }
    return children;
}

uint32_t keyOf(const std::string& name)
{
    return ItemUID::str2key(name);
}

std::string repeat(const std::string& text, size_t times)
{
    std::string result;
    result.reserve(text.size() * times);
    for (size_t i = 0; i < times; ++i) result += text;
    return result;
}

std::string settings(const std::string& body)
{
    return "<graph_settings version='1'>" + body + "</graph_settings>";
}

std::string descriptor(const std::string& body)
{
    return "<graph_descriptor version='1'>" + body + "</graph_descriptor>";
}

std::string settingsOfSize(size_t size)
{
    const std::string element = "<port width='1920'/>";
    const size_t frame = settings("").size() + std::string("<!---->").size();
    if (size < frame) throw std::invalid_argument("no room for a document");
    const size_t room = size - frame;
    const size_t elements = room / element.size();
    const std::string filler(room - elements * element.size(), '.');
    return settings(repeat(element, elements) + "<!--" + filler + "-->");
}

std::string gzip(const std::string& text)
{
    z_stream stream = {};
    const int gzipWindow = 15 + 16; // the largest window, in a gzip frame
    if (deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, gzipWindow, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::runtime_error("deflateInit2");
    }
    std::string input = text;
    std::string output(deflateBound(&stream, text.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(input.data());
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = reinterpret_cast<Bytef*>(output.data());
    stream.avail_out = static_cast<uInt>(output.size());
    const bool done = deflate(&stream, Z_FINISH) == Z_STREAM_END;
    output.resize(stream.total_out);
    deflateEnd(&stream);
    if (!done) throw std::runtime_error("deflate");
    return output;
}

ParserTest::ParserTest()
{
    std::string name = std::filesystem::temp_directory_path() / "nuxo-parser-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no directory for the test's files");
    mDirectory = name;
}

ParserTest::~ParserTest()
{
    std::error_code ignored;
    std::filesystem::remove_all(mDirectory, ignored);
}

void ParserTest::SetUp()
{
    mOpenFiles = openFiles();
    mCountedBlocks = countedBlocks();
}

void ParserTest::TearDown()
{
    EXPECT_EQ(openFiles(), mOpenFiles);
    EXPECT_EQ(countedBlocks(), mCountedBlocks);
}

std::string ParserTest::write(const std::string& name, const std::string& bytes) const
{
    std::ofstream file(path(name), std::ios::binary);
    file << bytes;
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path(name));
    return path(name);
}

Tree ParserTest::parseFile(const std::string& fileName)
{
    IGraphConfig* root = nullptr;
    mParser.parseNUXOXmlFile(fileName.c_str(), &root);
    return Tree(root);
}

Tree ParserTest::parseText(const std::string& text)
{
    std::vector<char> unterminated(text.begin(), text.end()); // so that reading past the end is noticed
    IGraphConfig* root = nullptr;
    mParser.parseNUXOXmlData(unterminated.data(), unterminated.size(), &root);
    return Tree(root);
}

Lines ParserTest::lines()
{
    Lines result;
    for (const LogLine& line : mLog.lines()) {
        EXPECT_EQ(line.tag, kParserTag);
        result.emplace_back(line.priority, line.message);
    }
    mLog.clear();
    return result;
}
