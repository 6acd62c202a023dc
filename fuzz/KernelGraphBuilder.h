// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_FUZZ_KERNEL_GRAPH_BUILDER_H
#define NUXO_FUZZ_KERNEL_GRAPH_BUILDER_H

#include "GraphBuilder.h"

#include <nuxo/tree/GraphConfigNode.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace fuzzing {

/// Adds the names of the nodes that these builders build to the vocabulary.
void addKernelGraphNames();

/// Builds graphs as they come out of a setting, full of kernels: sources, program groups, kernel links, connections, sinks.
/// Instructions are a letter each with letters for what they take; blanks may stand between them. What an instruction adds is
/// the latest node from then on, and most of them go on from the latest output, port or kernel.
///
///     VERSION                 comes first: what the graph says of its generation
///     a STREAM CONTEXT        opens a program group (a compute block in generation 7)
///     b KIND SIZE             adds a source; a sensor or test pattern generator with a capture back end
///     c DIRECTION STATE SIZE  adds a port to the group, enabled, disabled, private or for statistics
///     d                       connects the latest output port with the latest input port
///     e PORT PORT             connects two ports, by their numbers
///     f STREAM                adds a sink and connects the latest output port with it
///     g                       adds a kernel, linked from the latest one, or from the latest input port
///     h SIZE SIZE             makes the latest kernel change the size
///     i LEFT TOP RIGHT BOTTOM crops its input
///     j ID SIZE               gives it another output: an own `output` for odd ids, a node below `output` for even ones
///     k KIND ACTIVE           adds a mux, demux or split with an active port, linked from the latest element
///     l FROM OUT TO IN        links two elements of the group, by their numbers
///     m ELEMENT OUT           links an element to the latest output port
///     n KEY INTEGER           sets an integer of the latest node
///     o KEY WORD              sets a text of the latest node
///     p NODE                  goes to a node, by its number; the group that it is or is in is the current one then
///     q                       lets the latest kernel feed the latest output port without a link
///     r BRANCH RESTORE        makes the latest kernel a branch point, and lets it continue a branch; 0 is neither
///     s KEY NUMBER            sets an integer of four bytes
///     t STAGES FACTOR         gives the sensor the stages of a mode
///     u STREAM NUMBERS        adds MBR limits
class KernelGraphBuilder {
public:
    explicit KernelGraphBuilder(ByteReader& bytes);

    /// The root, after all instructions.
    std::unique_ptr<NUXO::GraphConfigNode> build();

private:
    using Node = NUXO::GraphConfigNode;
    using Instruction = void (KernelGraphBuilder::*)();

    void openGroup();
    void addSource();
    void addPort();
    void connectLatest();
    void connectAny();
    void addSink();
    void addKernel();
    void addSizes();
    void addCrop();
    void addOutput();
    void addRouting();
    void linkAny();
    void linkToPort();
    void setInteger();
    void setText();
    void goToNode();
    void feedPort();
    void addBranch();
    void setFreeInteger();
    void addStages();
    void addLimits();

    Node* open(Node& parent, const char* type, const std::string& name);
    Node* openPort(Node& owner, const std::string& name, int direction);
    Node& childOf(Node& parent, uint32_t key);
    void setSize(Node& node, size_t size);
    void connect(Node* source, Node* sink);
    void link(Node& group, const std::string& source, const std::string& destination);
    void linkFromLatest(const std::string& destination);

    ByteReader& mBytes;
    std::unique_ptr<Node> mRoot;
    Node* mGraph = nullptr;
    std::vector<Node*> mNodes; // those that can be gone to
    std::vector<Node*> mPorts;
    bool mHasComputeBlocks = false;
    bool mLinksByItself = true; // not in generation 5, where kernels follow each other by their ids
    size_t mGroups = 0;
    size_t mSinks = 0;
    Node* mLatest;
    Node* mGroup = nullptr;
    Node* mKernel = nullptr;
    Node* mInput = nullptr;
    Node* mOutput = nullptr;
    std::string mLinkFrom; // end of a link, empty when nothing is there to go on from
    std::vector<Node*> mElements;
};

} // namespace fuzzing

#endif
