// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_PARSER_NUXO_PARSER_H
#define NUXO_PARSER_NUXO_PARSER_H

#include <qv_tools/qv_export.h>

#include <nuxo/tree/GraphConfigNode.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include <expat.h>

namespace NUXO {

struct ParserRun;

/// Turns graph files, plain or gzip, and texts in memory into configuration trees.
///
/// Every element below the document's root becomes a node filed under its name's key, in descriptors under the key of its
/// `name` (it then remembers the element's name as text `type`; `node` elements keep a `type` of their own). Every XML
/// attribute becomes an attribute, integer or text by its key. Element and attribute names are matched without regard to
/// case. Unknown element names are added to the vocabulary; all unknown attributes share key 0, and the first stays.
///
/// A parser runs one parse at a time and any number in sequence; a file without `version` inherits the version of the file
/// before. It nests at most kMaxDepth elements. Nothing is thrown.
class QV_EXPORT NUXOParser {
public:
    /// Elements nested deeper than this end the parse.
    static constexpr uint32_t kMaxDepth = 1024;

    NUXOParser();
    NUXOParser(const NUXOParser&) = delete;
    NUXOParser& operator=(const NUXOParser&) = delete;
    ~NUXOParser();

    /// Parses a file; its suffix, "xml" or "gz", says how.
    ///
    /// @param fileName  path of the file
    /// @param out       receives the root of the tree, owned by the caller. A malformed document gives the part that was
    ///                  read before the error; null when there is none (missing, unreadable or empty file, unknown suffix,
    ///                  exhausted memory). Untouched when not even the parsing could be set up.
    void parseNUXOXmlFile(const char* fileName, IGraphConfig** out);

    /// Parses a whole text in memory.
    ///
    /// @param data  the text, @p size bytes, not necessarily terminated
    /// @param out   as for parseNUXOXmlFile
    void parseNUXOXmlData(char* data, size_t size, IGraphConfig** out);

    /// Feed a plain or gzip file through a configured expat parser, in chunks read into @p buffer (4096 bytes).
    void parseXML(XML_Parser& parser, const char* fileName, void* buffer);
    void parseGz(XML_Parser& parser, const char* fileName, void* buffer);

    /// Expat callbacks; @p data is the parser object.
    static void startElement(void* data, const char* name, const char** atts);
    static void endElement(void* data, const char* name);

private:
    QV_LOCAL bool startRun(const char* documentName, XML_Parser parser);
    template <typename Feed> QV_LOCAL void feedDocument(XML_Parser parser, const char* fileName, Feed feed);
    QV_LOCAL ParserRun& currentRun();
    QV_LOCAL void finish(IGraphConfig** out);
    QV_LOCAL void openElement(const char* name, const char** atts);
    QV_LOCAL void openRootElement(uint32_t key, const char** atts);
    QV_LOCAL std::unique_ptr<GraphConfigNode> readAttributes(const char** atts, SourcePosition position,
                                                             uint32_t& elementKey);
    QV_LOCAL bool readName(const char* name, uint32_t& elementKey);
    QV_LOCAL void readAttribute(uint32_t key, const char* text);
    QV_LOCAL bool ensureRoot();
    QV_LOCAL void closeElement();
    QV_LOCAL void abandon() noexcept;
    QV_LOCAL void discardTree() noexcept;
    QV_LOCAL void discardLeftover() noexcept;

    uint32_t mRootKey = 1;
    std::string mVersion;
    GraphConfigNode* mCurrentNode = nullptr;
    std::unique_ptr<ParserRun> mRun; // what lives only while a parse is running
};

} // namespace NUXO

#endif
