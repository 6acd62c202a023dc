// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_FUZZ_GRAPH_BUILDER_H
#define NUXO_FUZZ_GRAPH_BUILDER_H

#include "support/CameraRules.h"

#include <nuxo/tree/GraphConfigNode.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace fuzzing {

/// Adds the names of the nodes that builders build to the vocabulary.
void addNodeNames();

/// Bytes, one after the other; zeros behind the end. A byte that chooses from a table counts from 'a', so that inputs can be
/// written as text: 'a' is the first entry, 'b' the second, and so on around the table.
class ByteReader {
public:
    ByteReader(const uint8_t* data, size_t size) : mNext(data), mEnd(data + size) {}

    bool atEnd() const { return mNext == mEnd; }
    uint8_t byte() { return atEnd() ? uint8_t{0} : *mNext++; }
    size_t below(size_t count) { return static_cast<uint8_t>(byte() - 'a') % count; }
    template <typename Entry, size_t count> const Entry& from(const Entry (&table)[count])
    {
        return table[below(count)];
    }
    int integer();
    std::string text();

private:
    const uint8_t* mNext;
    const uint8_t* mEnd;
};

/// Reads what to ask for.
Request readRequest(ByteReader& bytes);

/// Builds a graph from instructions, a letter each with letters for what it takes; blanks may stand between them.
///
///     a KIND NAME     opens a node below the current one; an upper-case NAME leaves it without `name`
///     b               closes the current node
///     c KEY VALUE     adds an integer
///     d KEY WORD      adds a text
///     e KEY NODE      adds the path of a node as a text
///     f KEY NODE END  adds such a path with one more name
///     g KEY TEXT      adds a free text: its length and its bytes
///     h KEY NUMBER    adds an integer of four bytes
///     i NODE          goes to a node
///     j NAME DIRECTION ID NODE           opens a port that leads to a node
///     k WIDTH HEIGHT LEFT TOP WORD       adds an image with its format
///     l INTEGER KEY KEY                  adds attributes of the wrong kind: an integer and a text under the other's key
///     m KEY VALUE WORD                   adds another attribute with a key that may be there already
///     n WORD NAME KEY VALUE WORD         adds an options list of `format`: for one word, what to change in one node, or
///                                        nothing if the other one is empty
///     o NODE KIND KEY WORD               adds an override, of an integer (KIND a) or a text (b)
///     p NODE NODE                        adds a connection
class GraphBuilder {
public:
    explicit GraphBuilder(ByteReader& bytes);

    /// The root, after all instructions.
    std::unique_ptr<NUXO::GraphConfigNode> build();

private:
    using Instruction = void (GraphBuilder::*)();

    void openNode();
    void closeNode();
    void addInteger();
    void addText();
    void addPath();
    void addPathWithEnd();
    void addFreeText();
    void addFreeInteger();
    void goToNode();
    void openPort();
    void addImage();
    void addWrongKinds();
    void addAnother();
    void addOptions();
    void addOverride();
    void addConnection();

    NUXO::GraphConfigNode* open(NUXO::GraphConfigNode& parent, const char* type, uint32_t key);
    void setPath(NUXO::GraphConfigNode& node, uint32_t key, size_t target, const std::string& end,
                 bool fromNodes = false);
    void resolvePaths();

    // A text that becomes the path of a node when all nodes are there.
    struct OpenPath {
        NUXO::GraphConfigStrAttribute* attribute;
        size_t target;
        std::string end;
        bool fromNodes; // as connections and overrides of descriptors spell it
    };

    ByteReader& mBytes;
    std::unique_ptr<NUXO::GraphConfigNode> mRoot;
    std::vector<NUXO::GraphConfigNode*> mNodes;
    NUXO::GraphConfigNode* mCurrent;
    std::vector<OpenPath> mPaths;
};

} // namespace fuzzing

#endif
