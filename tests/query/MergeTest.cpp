// SPDX-License-Identifier: Apache-2.0
#include "query/GraphFixture.h"

#include <memory>

namespace graphtest {

namespace {

constexpr signed char kCopy = 1;
constexpr signed char kOptions = 2;
constexpr signed char kPush = 4;
constexpr signed char kMerge = 8;

/// Merges of `<from>` into `<to>`, two children of one root.
class MergeTest : public GraphTest {
protected:
    void loadPair(const std::string& to, const std::string& from)
    {
        mRoot = tree("<to" + to + "</to><from" + from + "</from>");
        clearLog();
    }

    GraphConfigNode& to() const { return at(*mRoot, "to"); }
    GraphConfigNode& from() const { return at(*mRoot, "from"); }

    int merge(int options)
    {
        return GraphQueryUtils::addDescendantsFromNode(&to(), &from(), static_cast<signed char>(options));
    }

    /// The destination after a merge that succeeds; `from` must not change.
    std::string merged(const std::string& to_, const std::string& from_, int options)
    {
        loadPair(to_, from_);
        const std::string before = text(from());
        EXPECT_EQ(merge(options), StatusOk);
        EXPECT_EQ(text(from()), before);
        EXPECT_TRUE(linked(*mRoot));
        return text(to());
    }

    Tree mRoot;
};

TEST_F(MergeTest, NullNodesAreRefused)
{
    loadPair(">", ">");
    EXPECT_EQ(GraphQueryUtils::addDescendantsFromNode(nullptr, &from(), 13), StatusBadArgument);
    EXPECT_EQ(GraphQueryUtils::addDescendantsFromNode(&to(), nullptr, 13), StatusBadArgument);
    EXPECT_EQ(GraphQueryUtils::addDescendantsFromNode(nullptr, nullptr, 0), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(MergeTest, MissingAttributesAreAddedWhateverTheOptions)
{
    for (const int options : {0, 1, 4, 8, 9, 12, 13}) {
        EXPECT_EQ(merged(">", " name=\"n\" type=\"t\" peer=\"p\" direction=\"1\" id=\"5\" width=\"4\" format=\"f\">",
                         options),
                  "format='f' name='n' peer='p' type='t' direction=1 id=5 width=4")
            << options;
    }
}

TEST_F(MergeTest, ExistingAttributesAreOverwrittenOnlyWithTheMergeBit)
{
    const char* const to = " width=\"1\" format=\"old\" left=\"3\">";
    const char* const from = " width=\"2\" format=\"new\">";
    for (const int options : {0, 1, 4, 5})
        EXPECT_EQ(merged(to, from, options), "format='old' left=3 width=1") << options;
    for (const int options : {8, 9, 12, 13}) {
        EXPECT_EQ(merged(to, from, options), "format='new' left=3 width=2") << options;
    }
}

TEST_F(MergeTest, IdentityAttributesAreNeverOverwritten)
{
    EXPECT_EQ(merged(" name=\"n\" type=\"t\" peer=\"p\" direction=\"0\" id=\"5\" enabled=\"1\">",
                     " name=\"x\" type=\"x\" peer=\"x\" direction=\"1\" id=\"6\" enabled=\"0\">", kMerge),
              "name='n' peer='p' type='t' direction=0 enabled=0 id=5");
    EXPECT_EQ(merged("><port name=\"n\" type=\"t\" peer=\"p\" direction=\"0\" id=\"5\"/>",
                     "><port name=\"x\" type=\"x\" peer=\"x\" direction=\"1\" id=\"6\" key=\"7\"/>", 13),
              "port{name='n' peer='p' type='t' direction=0 id=5 key=7}");
}

TEST_F(MergeTest, MissingNodesAreCopiedDeepOnlyWithTheCopyBit)
{
    const char* const from = "><port width=\"4\"><input left=\"1\"/></port>";
    for (const int options : {1, 5, 9, 13})
        EXPECT_EQ(merged(">", from, options), "port{input{left=1} width=4}") << options;
    for (const int options : {0, 4, 8, 12}) EXPECT_EQ(merged(">", from, options), "") << options;
}

TEST_F(MergeTest, NodesOnBothSidesAreMergedOnlyWithTheMergeBit)
{
    const char* const to = "><port width=\"4\"><input left=\"1\"/></port>";
    const char* const from = "><port width=\"5\" bpp=\"8\"><input left=\"2\"/><output/></port>";
    EXPECT_EQ(merged(to, from, kCopy), "port{input{left=1} width=4}");
    EXPECT_EQ(merged(to, from, 0), "port{input{left=1} width=4}");
    EXPECT_EQ(merged(to, from, kMerge), "port{input{left=2} bpp=8 width=5}");
    EXPECT_EQ(merged(to, from, kMerge | kCopy), "port{input{left=2} output{} bpp=8 width=5}");
}

TEST_F(MergeTest, OptionsListsAreCopiedWhenMissingButNeverMerged)
{
    EXPECT_EQ(merged(">", "><options attribute=\"format\"><o value=\"a\"/></options>", kCopy),
              "options{attribute=16 o{value='a'}}");
    EXPECT_EQ(
        merged("><options attribute=\"format\"/>", "><options attribute=\"width\"><o value=\"a\"/></options>", 13),
        "options{attribute=16}");
    EXPECT_EQ(merged("><port><options attribute=\"format\"/></port>",
                     "><port width=\"4\"><options attribute=\"width\"><o value=\"a\"/></options></port>", 13),
              "port{options{attribute=16} width=4}");
}

TEST_F(MergeTest, CounterpartIsTheFirstItemOfTheKey)
{
    EXPECT_EQ(merged("><port width=\"1\"/><port width=\"2\"/>", "><port width=\"3\"/>", 13),
              "port{width=3} port{width=2}");
}

TEST_F(MergeTest, SeveralChildrenOfOneKeyMeetInTheCopyOfTheFirst)
{
    const char* const from = "><port width=\"1\" bpp=\"8\"/><port width=\"2\" left=\"3\"/>";
    EXPECT_EQ(merged(">", from, kMerge | kCopy), "port{bpp=8 left=3 width=2}");
    EXPECT_EQ(merged(">", from, kCopy), "port{bpp=8 width=1}");
    // Inside a node that is copied whole, both survive.
    EXPECT_EQ(merged(">", "><hw><port width=\"1\"/><port width=\"2\"/></hw>", 9), "hw{port{width=1} port{width=2}}");
}

TEST_F(MergeTest, SeveralAttributesOfOneKeyMeetInTheFirst)
{
    loadPair(">", " format=\"a\" peer=\"a\">");
    from().insertDescendant(new GraphConfigStrAttribute("b"), NUXO_KEY_FORMAT);
    from().insertDescendant(new GraphConfigStrAttribute("b"), NUXO_KEY_PEER);
    EXPECT_EQ(merge(kMerge), StatusOk);
    EXPECT_EQ(text(to()), "format='b' peer='a'");
}

TEST_F(MergeTest, AttributeDoesNotReplaceANode)
{
    for (const int options : {0, 1, 8, 9, 13}) {
        EXPECT_EQ(merged("><format left=\"1\"/><width/>", " format=\"NV12\" width=\"4\">", options),
                  "format{left=1} width{}")
            << options;
    }
}

TEST_F(MergeTest, NodeIsCopiedBehindAnAttributeOfItsKey)
{
    EXPECT_EQ(merged(" format=\"NV12\">", "><format left=\"1\"/>", kMerge | kCopy), "format='NV12' format{left=1}");
    EXPECT_EQ(merged(" format=\"NV12\">", "><format left=\"1\"/>", kMerge), "format='NV12'");
}

TEST_F(MergeTest, AttributeOfTheOtherKindIsLeftAndTheMergeGoesOn)
{
    loadPair(" width=\"4\" format=\"old\">", " left=\"9\">");
    from().insertDescendant(new GraphConfigStrAttribute("text"), NUXO_KEY_WIDTH);
    from().insertDescendant(new GraphConfigIntAttribute(7), NUXO_KEY_FORMAT);
    EXPECT_EQ(merge(kMerge | kOptions), StatusOk);
    EXPECT_EQ(text(to()), "format='old' left=9 width=4");
    EXPECT_TRUE(notLogged("width"));
    // Only the one attribute that was written asked for options.
    EXPECT_EQ(count(kWarning, "Trying to apply value but no options list available for NODE[to]."), 1U);
}

TEST_F(MergeTest, ItemsThatAreNoAttributesAreSkipped)
{
    loadPair(">", " width=\"4\">");
    from().insertDescendant(new GraphConfigItem, NUXO_KEY_FORMAT);
    EXPECT_EQ(merge(13), StatusOk);
    EXPECT_EQ(text(to()), "width=4");
}

TEST_F(MergeTest, NodeThatCannotBeCopiedEndsTheMergeWithWhatCameBefore)
{
    loadPair(">", " format=\"a\" width=\"4\"><port/>");
    at(from(), "port").insertDescendant(new GraphConfigItem, NUXO_KEY_FORMAT);
    EXPECT_EQ(merge(13), StatusNoMemory);
    EXPECT_TRUE(loggedExactly({"16 Error creating GraphConfigItem: No memory"}));
    EXPECT_EQ(text(to()), "format='a'"); // format (16) before port (34) before width (8232)
}

TEST_F(MergeTest, FailureInAChildEndsTheWholeMerge)
{
    loadPair("><port/>", " width=\"4\"><port><input/></port>");
    at(from(), "port:input").insertDescendant(new GraphConfigItem, NUXO_KEY_FORMAT);
    EXPECT_EQ(merge(9), StatusNoMemory);
    EXPECT_EQ(text(to()), "port{}");
}

TEST_F(MergeTest, NodeMergedWithItselfStaysAsItIs)
{
    loadPair(" width=\"4\"><port left=\"1\"/>", ">");
    const std::string before = text(to());
    EXPECT_EQ(GraphQueryUtils::addDescendantsFromNode(&to(), &to(), 9), StatusOk);
    EXPECT_EQ(text(to()), before);
}

TEST_F(MergeTest, SourceMayLieInsideTheDestination)
{
    std::string many;
    for (int i = 0; i < 40; ++i) many += "<n" + std::to_string(i) + "/>";
    mRoot = tree("<to><from width=\"4\">" + many + "<to left=\"1\"/></from></to>");
    EXPECT_EQ(GraphQueryUtils::addDescendantsFromNode(&at(*mRoot, "to"), &at(*mRoot, "to:from"), 9), StatusOk);
    EXPECT_EQ(value(*mRoot, "to:width"), "4");
    EXPECT_EQ(value(*mRoot, "to:n39"), "node");
    EXPECT_EQ(value(*mRoot, "to:to:left"), "1");
    EXPECT_EQ(at(*mRoot, "to").getDescendantCount(), 43); // from, n0 to n39, to, width
    EXPECT_TRUE(linked(*mRoot));
}

TEST_F(MergeTest, DestinationMayLieInsideTheSource)
{
    mRoot = tree("<from width=\"4\"><to left=\"1\"/><hw bpp=\"8\"/></from>");
    EXPECT_EQ(GraphQueryUtils::addDescendantsFromNode(&at(*mRoot, "from:to"), &at(*mRoot, "from"), 9), StatusOk);
    EXPECT_EQ(value(*mRoot, "from:to:width"), "4");
    EXPECT_EQ(value(*mRoot, "from:to:hw:bpp"), "8");
    EXPECT_TRUE(linked(*mRoot));
}

TEST_F(MergeTest, TreesOfAnyDepthAreMerged)
{
    // Far deeper than the stack would allow one frame a level.
    constexpr int kDepth = 300000;
    const auto chain = [](int depth, int value) {
        auto root = std::make_unique<GraphConfigNode>();
        GraphConfigNode* node = root.get();
        for (int i = 0; i < depth; ++i) {
            auto* const child = new GraphConfigNode;
            node->insertDescendant(child, NUXO_KEY_NODE);
            node = child;
        }
        node->addValue(NUXO_KEY_WIDTH, value);
        return root;
    };
    const Tree deep = chain(kDepth, 1);
    const Tree same = chain(kDepth, 2);
    EXPECT_EQ(GraphQueryUtils::addDescendantsFromNode(deep.get(), same.get(), 13), StatusOk);
    const Tree half = chain(kDepth / 2, 3);
    EXPECT_EQ(GraphQueryUtils::addDescendantsFromNode(half.get(), same.get(), 13), StatusOk);
    for (GraphConfigNode* node : {deep.get(), half.get()}) {
        int depth = 0;
        while (IGraphConfig* const child = node->getDescendant(NUXO_KEY_NODE)) {
            node = static_cast<GraphConfigNode*>(child);
            ++depth;
        }
        EXPECT_EQ(depth, kDepth);
        EXPECT_EQ(value(*node, "width"), "2");
    }
}

// --- with options lists obeyed ---

TEST_F(MergeTest, EveryWrittenAttributeAppliesItsOption)
{
    // `format` is overwritten, `width` is added; each has a list.
    loadPair(R"( format="old"><options attribute="format"><o value="NV12"><apply fps="30"/></o></options>
                 <options attribute="width"><o value="4"><apply bpp="8"/></o></options>)",
             " format=\"NV12\" width=\"4\">");
    EXPECT_EQ(merge(kMerge | kOptions), StatusOk);
    EXPECT_EQ(value(to(), "format"), "'NV12'");
    EXPECT_EQ(value(to(), "width"), "4");
    EXPECT_EQ(value(*mRoot, "fps"), "30");
    EXPECT_EQ(value(*mRoot, "bpp"), "8");
}

TEST_F(MergeTest, AttributeWithoutOptionIsWrittenAllTheSame)
{
    loadPair(" format=\"old\">", " format=\"NV12\" width=\"4\">");
    EXPECT_EQ(merge(kMerge | kOptions), StatusOk);
    EXPECT_EQ(text(to()), "format='NV12' width=4");
    EXPECT_EQ(count(kWarning, "Trying to apply value but no options list available for NODE[to]."), 2U);
}

TEST_F(MergeTest, AttributeThatWasNotWrittenAppliesNothing)
{
    const std::string lists = R"(><options attribute="format"><o value="NV12"><apply fps="30"/></o></options>
                                 <options attribute="name"><o value="x"><apply fps="60"/></o></options>)";
    loadPair(" format=\"old\" name=\"n\"" + lists, " format=\"NV12\" name=\"x\">");
    EXPECT_EQ(merge(kOptions), StatusOk); // without the merge bit nothing is overwritten
    EXPECT_EQ(value(*mRoot, "fps"), "absent");
    EXPECT_EQ(merge(kOptions | kMerge), StatusOk); // `name` is protected
    EXPECT_EQ(value(*mRoot, "fps"), "30");
}

TEST_F(MergeTest, OptionWithNothingToApplyEndsTheMerge)
{
    loadPair(" format=\"old\"><options attribute=\"format\"><o value=\"NV12\"/></options>",
             " format=\"NV12\" width=\"4\">");
    EXPECT_EQ(merge(kMerge | kOptions), StatusNotSupported);
    EXPECT_TRUE(loggedExactly({"16 Found option for NV12, but no apply node. Skipping."}));
    EXPECT_EQ(value(to(), "format"), "'NV12'");
    EXPECT_EQ(value(to(), "width"), "absent");
}

TEST_F(MergeTest, OptionThatAddsToTheDestinationDoesNotDisturbTheMerge)
{
    std::string many;
    for (int i = 0; i < 40; ++i) many += "<n" + std::to_string(i) + "/>";
    loadPair("><options attribute=\"format\"><o value=\"NV12\"><apply><to left=\"1\">" + many +
                 "</to><from top=\"9\">" + many + "</from></apply></o></options>",
             " format=\"NV12\" width=\"4\">");
    EXPECT_EQ(merge(kCopy | kMerge | kOptions), StatusOk);
    EXPECT_EQ(value(to(), "width"), "4");
    EXPECT_EQ(value(to(), "left"), "1");
    EXPECT_EQ(value(to(), "n39"), "node");
    EXPECT_EQ(value(from(), "top"), "9");
    EXPECT_TRUE(linked(*mRoot));
}

static_assert(kPush == GraphQueryUtils::PushToPeer && kMerge == GraphQueryUtils::Merge, "bits clients pass as numbers");
static_assert(kCopy == GraphQueryUtils::CopyMissingNodes && kOptions == GraphQueryUtils::HandleOptions, "same");

} // namespace

} // namespace graphtest
