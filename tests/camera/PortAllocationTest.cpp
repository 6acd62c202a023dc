// SPDX-License-Identifier: Apache-2.0
// Questions about ports with every allocation failing in turn: the answer of a good run, out of memory, or the answer
// that stands for none, and never anything in between.
#include "camera/PortFormatFixture.h"

#include <qv_cipr/qv_cipr_alloc.h>
#include <support/AllocationFailures.h>

#include <functional>

namespace graphtest {

namespace {

/// Names that do not fit into a text object, so that each copy needs the heap.
const std::string kGroup = "a_program_group_with_a_name_that_needs_the_heap";
const std::string kOut = "an_output_port_with_a_name_that_needs_the_heap";
const std::string kNext = "another_group_with_a_name_that_needs_the_heap";
const std::string kIn = "an_input_port_with_a_name_that_needs_the_heap";
const std::string kLong = "any_other_text_that_needs_the_heap";
const std::string kLongType = "type=\"" + kLong + "\"";

/// Answers of questions that give a text.
enum TextAnswer { kRightText, kNoText, kWrongText };

class PortAllocationTest : public PortFormatTest {
protected:
    using Question = std::function<int()>;
    using Check = std::function<bool()>;

    PortAllocationTest() { mLog.setMask(0x3f); } // for lines of all classes texts are put together

    /// The port and its peer, both with long names.
    void loadLong(const std::string& port, const std::string& peer = "", const std::string& group = "",
                  const std::string& options = "")
    {
        load(portOf(kGroup, kOut, "peer=\"" + kNext + ":" + kIn + "\" " + port, group) +
             "<program_group exec_ctx_id=\"4\" name=\"" + kNext + "\"><port name=\"" + kIn + "\" " + peer + ">" +
             options + "</port></program_group>");
        mPort = node(kGroup + ":" + kOut);
        mPeer = node(kNext + ":" + kIn);
    }

    /// Asks with each allocation failing once, then with it and all later ones failing. Each answer must be that of a
    /// good run, @p good, with @p right holding, or @p failure. Nothing may leak; then the good answer must come again.
    ///
    /// @return the number of answers that were failures
    size_t sweep(
        const Question& question, int good, int failure, const Check& right = [] { return true; })
    {
        size_t failures = 0;
        for (const bool forGood : {false, true}) {
            reset();
            EXPECT_EQ(question(), good);
            EXPECT_TRUE(right());
            reset();
            const size_t live = AllocationFailures::live();
            int answer = good;
            int wrongAnswer = good;
            size_t thrown = 0;
            size_t wrong = 0;
            size_t leaks = 0;
            AllocationFailures allocations;
            allocations.sweep(
                forGood,
                [&] {
                    if (escapes([&] { answer = question(); })) ++thrown;
                },
                [&] { // only counts: what an expectation keeps would pass for a leak
                    if (answer != good) ++failures;
                    if (answer == good ? !right() : answer != failure) {
                        ++wrong;
                        wrongAnswer = answer;
                    }
                    reset();
                    if (AllocationFailures::live() != live) ++leaks;
                });
            EXPECT_EQ(thrown, 0U);
            EXPECT_EQ(wrong, 0U) << "with results that do not fit the answer " << wrongAnswer;
            EXPECT_EQ(leaks, 0U);
        }
        EXPECT_EQ(question(), good);
        EXPECT_TRUE(right());
        return failures;
    }

    /// The same for a question that gives @p expected, or nothing when memory is exhausted.
    size_t sweepText(const std::function<std::string()>& question, const std::string& expected)
    {
        return sweep(
            [&] {
                const std::string text = question();
                if (text == expected) return kRightText;
                return text.empty() ? kNoText : kWrongText;
            },
            kRightText, kNoText);
    }

    /// The same for the format of the port, 1000 pixels wide.
    size_t sweepFormat(int good, const Check& right)
    {
        return sweep([this] { return mFormat.askFor(mPort); }, good, StatusNoMemory, right);
    }

    bool hasLayout(unsigned int code, unsigned int bpl, unsigned int bpp) const
    {
        return mFormat.fourcc == code && mFormat.bpl == bpl && mFormat.bpp == bpp;
    }

    bool isDescribed(int width, const std::string& format) const
    {
        return mPortInfo.name == kOut && mPortInfo.pgName == kGroup && mPortInfo.width == width &&
               mPortInfo.format == format;
    }

    size_t sweepDescriptor(int good, const Check& right)
    {
        return sweep([this] { return GraphCameraUtil::portGetDescriptor(mPort, mPortInfo); }, good, StatusNoMemory,
                     right);
    }

    /// Lets go of all that a question has left behind.
    void reset()
    {
        mFormat = PortFormat();
        mEnabled = mTerminal = 0;
        for (std::string* text : {&mPgName, &mPortName, &mPortInfo.name, &mPortInfo.pgName, &mPortInfo.format}) {
            std::string().swap(*text);
        }
        decltype(NUXOFormats::gNUXOFormats)().swap(NUXOFormats::gNUXOFormats);
        if (mRestore) mRestore();
        clearLog();
    }

    GraphConfigNode* mPort = nullptr;
    GraphConfigNode* mPeer = nullptr;
    std::string mPgName;
    std::string mPortName;
    GraphCameraUtil::PortDescriptor mPortInfo;
    unsigned int mEnabled = 0;
    unsigned int mTerminal = 0;
    std::function<void()> mRestore;
};

TEST_F(PortAllocationTest, Names)
{
    loadLong("");
    EXPECT_GT(sweep([this] { return NUXO::getPgAndPortNames(*mPort, mPgName, mPortName); }, StatusOk, StatusMissingData,
                    [this] { return mPgName == kGroup && mPortName == kOut; }),
              0U);
}

TEST_F(PortAllocationTest, FullName)
{
    loadLong("");
    EXPECT_GT(sweepText([this] { return GraphCameraUtil::getFullName(*mPort); }, kGroup + ":" + kOut), 0U);
}

TEST_F(PortAllocationTest, DisplayText)
{
    loadLong("");
    const IGraphConfig* const group = node(kGroup);
    EXPECT_GT(sweepText([this] { return GraphCameraUtil::print(mPort); }, "port[" + kGroup + ":" + kOut + "]"), 0U);
    EXPECT_GT(sweepText([&] { return GraphCameraUtil::print(group); }, "program_group[" + kGroup + "]"), 0U);
}

TEST_F(PortAllocationTest, ContentType)
{
    loadLong("content_type=\"" + kLong + "\"");
    EXPECT_GT(sweepText([this] { return GraphCameraUtil::portGetContentType(mPort); }, kLong), 0U);
}

TEST_F(PortAllocationTest, PortById)
{
    loadLong("id=\"5\"");
    const IGraphConfig* const group = node(kGroup);
    sweep([&] { return GraphCameraUtil::nodeGetPortById(group, 5) == mPort ? 1 : 0; }, 1, 0);
    sweep([] { return GraphCameraUtil::nodeGetPortById(nullptr, 5) == nullptr ? 1 : 0; }, 1, 1);
}

TEST_F(PortAllocationTest, DirectionAndKind)
{
    loadLong("direction=\"1\"");
    sweep([this] { return GraphCameraUtil::portGetDirection(mPort); }, 1, 0);
    mPort->removeDescendant(NUXO_KEY_DIRECTION);
    sweep([this] { return GraphCameraUtil::portGetDirection(mPort); }, 0, 0);
    sweep([this] { return GraphCameraUtil::portIsVirtual(mPort) ? 1 : 0; }, 0, 0);
    mPort->removeDescendant(NUXO_KEY_TYPE);
    sweep([this] { return GraphCameraUtil::portIsVirtual(mPort) ? 1 : 0; }, 0, 0);
    mPort->addValue(NUXO_KEY_TYPE, std::string("sink"));
    sweep([this] { return GraphCameraUtil::portIsVirtual(mPort) ? 1 : 0; }, 1, 0);
}

TEST_F(PortAllocationTest, Terminal)
{
    const Question question = [this] { return GraphCameraUtil::portGetFourCCInfo(mPort, mEnabled, mTerminal); };
    const std::string group = "pg_id=\"4\" simulation=\"" + kLong + "\" subsystem=";
    loadLong("id=\"5\"", "", group + "\"gpu\"");
    sweep(question, StatusOk, StatusNoMemory, [this] { return mEnabled == 0x44558 && mTerminal == 0x4455D; });
    loadLong("id=\"5\"", "", group + "\"" + kLong + "\"");
    sweep(question, StatusOk, StatusNoMemory, [this] { return mEnabled == 0x44730 && mTerminal == 0x44735; });
    loadLong("");
    sweep(question, StatusBadArgument, StatusNoMemory);
}

TEST_F(PortAllocationTest, Descriptor)
{
    loadLong("id=\"5\" direction=\"1\" width=\"4\" height=\"3\" format=\"" + kLong + "\"");
    EXPECT_GT(sweepDescriptor(StatusOk, [this] { return isDescribed(4, kLong); }), 0U);
    loadLong("id=\"5\" direction=\"1\" enabled=\"0\"");
    EXPECT_GT(sweepDescriptor(StatusOk, [this] { return mPortInfo.name == kOut && mPortInfo.pgName == kGroup; }), 0U);
}

TEST_F(PortAllocationTest, DescriptorWithValuesOfThePeer)
{
    loadLong("id=\"5\" direction=\"1\"", "width=\"4\" height=\"3\" format=\"" + kLong + "\"");
    EXPECT_GT(sweepDescriptor(StatusOk, [this] { return isDescribed(4, kLong); }), 0U);
}

TEST_F(PortAllocationTest, DescriptorThatLacksSomething)
{
    const Check names = [this] { return mPortInfo.name == kOut && mPortInfo.pgName == kGroup; };
    for (const char* port : {"", "direction=\"1\"", "id=\"5\" direction=\"1\"", "id=\"5\" direction=\"1\" width=\"4\"",
                             "id=\"5\" direction=\"1\" width=\"4\" height=\"3\""}) {
        loadLong(port);
        EXPECT_GT(sweepDescriptor(StatusBadState, names), 0U) << port;
    }
    loadLong("");
    mPort->removeDescendant(NUXO_KEY_NAME);
    EXPECT_GT(sweepDescriptor(StatusBadState, [] { return true; }), 0U);
    mPort = mRoot.get();
    sweepDescriptor(StatusBadState, [] { return true; });
}

TEST_F(PortAllocationTest, Contexts)
{
    loadLong(kLongType, "", "exec_ctx_id=\"3\" stream_id=\"-2\"");
    sweep([this] { return GraphCameraUtil::portGetKey(mPort, NUXO_KEY_EXEC_CTX_ID); }, 3, -1);
    sweep([this] { return GraphCameraUtil::portGetExecCtxId(mPort); }, 3, -1);
    sweep([this] { return GraphCameraUtil::portGetStreamId(mPort); }, -2, -1);
    loadLong("");
    sweep([this] { return GraphCameraUtil::portGetStreamId(mPort); }, -1, -1);
}

TEST_F(PortAllocationTest, Edges)
{
    const Question question = [this] { return GraphCameraUtil::isEdgePort(mPort) ? 1 : 0; };
    for (const char* direction : {"0", "1"}) {
        loadLong(kLongType + " direction=\"" + direction + "\"", kLongType, "exec_ctx_id=\"3\"");
        sweep(question, 1, 0);
        loadLong(kLongType + " direction=\"" + direction + "\"", kLongType, "exec_ctx_id=\"4\"");
        sweep(question, 0, 0);
    }
    loadLong("direction=\"1\"", "", "stream_id=\"3\"");
    node(kNext)->removeDescendant(NUXO_KEY_EXEC_CTX_ID);
    sweep(question, 0, 0);
    mPort->removeDescendant(NUXO_KEY_PEER);
    sweep(question, 0, 0);
}

TEST_F(PortAllocationTest, Info)
{
    const Question question = [this] { return GraphCameraUtil::portGetInfo(mPort, mEnabled, mTerminal); };
    loadLong("id=\"5\"", "enabled=\"7\""); // which must not become 1
    sweep(question, StatusOk, StatusNoMemory, [this] { return mEnabled == 7 && mTerminal == 5; });
    loadLong("enabled=\"7\"");
    sweep(question, StatusNotFound, StatusNoMemory, [this] { return mEnabled == 7; });
    mPort = nullptr;
    sweep(question, StatusBadArgument, StatusNoMemory);
}

TEST_F(PortAllocationTest, Format)
{
    // C012: two bytes a pixel, multiples of 128. A name that cannot be copied must not pass for an unknown one.
    const std::string values = "width=\"1000\" height=\"750\" format=\"TileYUV420_12_SP_C\"";
    loadLong("id=\"5\" " + values, "bpl=\"4096\"");
    EXPECT_GT(sweepFormat(StatusOk, [this] { return hasLayout(fourcc("C012"), 4096, 24); }), 0U);
    loadLong("id=\"5\"", values);
    EXPECT_GT(sweepFormat(StatusOk, [this] { return mFormat.height == 750 && hasLayout(fourcc("C012"), 2048, 24); }),
              0U);
}

TEST_F(PortAllocationTest, FormatByCode)
{
    loadLong("id=\"5\" width=\"1000\" height=\"750\" format=\"P010_and_" + kLong + "\"");
    EXPECT_GT(sweepFormat(StatusOk, [this] { return hasLayout(fourcc("P010"), 2048, 24); }), 0U);
}

TEST_F(PortAllocationTest, FormatThatNobodyKnows)
{
    loadLong("id=\"5\" width=\"1000\" height=\"750\" format=\"" + kLong + "\"");
    EXPECT_GT(sweepFormat(StatusOk, [this] { return hasLayout(fourcc("NV12"), 1024, 12); }), 0U);
}

TEST_F(PortAllocationTest, FormatThatIsIncomplete)
{
    const PortFormat before;
    const Check untouched = [this, before] { return hasLayout(before.fourcc, before.bpl, before.bpp); };
    loadLong("id=\"5\" width=\"1000\"");
    sweepFormat(StatusMissingData, [&] { return mFormat.width == 1000 && untouched(); });
    loadLong("id=\"5\"", "private=\"1\"");
    sweepFormat(StatusOk, untouched);
    loadLong("id=\"5\" enabled=\"0\"");
    sweepFormat(StatusOk, untouched);
    loadLong("");
    sweepFormat(StatusNotFound, untouched);
}

TEST_F(PortAllocationTest, ApplyingAFormat)
{
    loadLong("", "format=\"RAW\"", "", "<options attribute=\"format\"><o value=\"" + kLong + "\"/></options>");
    GraphConfigAttribute* held = nullptr;
    ASSERT_EQ(mPeer->getAttribute(NUXO_KEY_FORMAT, &held), StatusOk);
    auto& format = static_cast<GraphConfigStrAttribute&>(*held);
    mRestore = [&format] { std::string("RAW").swap(format.value); };
    const Question question = [this] { return GraphCameraUtil::applyFormat(mPort, kLong); };
    EXPECT_GT(sweep(question, StatusOk, StatusNoMemory, [&] { return format.value == kLong; }), 0U);

    mPeer->removeDescendant(NUXO_KEY_OPTIONS);
    sweep(question, StatusOk, StatusNoMemory, [&] { return format.value == "RAW"; });
    mRestore = nullptr;
    mPort->removeDescendant(NUXO_KEY_PEER);
    sweep(question, StatusBadState, StatusNoMemory);
}

TEST_F(PortAllocationTest, ApplyingAFormatToWhatIsNone)
{
    loadLong("");
    mPeer->addValue(NUXO_KEY_FORMAT, 4);
    sweep([this] { return GraphCameraUtil::applyFormat(mPort, kLong); }, StatusBadArgument, StatusNoMemory);
}

TEST_F(PortAllocationTest, DimensionsAndFactors)
{
    loadLong("width=\"4\" h_factor=\"2\" num_factor=\"3\"");
    int first = 0;
    int second = 0;
    sweep([&] { return GraphCameraUtil::getDimensions(mPort, &first, nullptr); }, StatusOk, StatusOk,
          [&] { return first == 4; });
    sweep([&] { return GraphCameraUtil::getDimensions(mPort, &first, &second); }, StatusNotFound, StatusNoMemory);
    sweep([&] { return GraphCameraUtil::sensorGetBinningFactor(mPort, first, second); }, StatusMissingData,
          StatusNoMemory);
    sweep([&] { return GraphCameraUtil::sensorGetScalingFactor(mPort, first, second); }, StatusMissingData,
          StatusNoMemory);
}

TEST_F(PortAllocationTest, Dump)
{
    loadLong("width=\"4\"");
    sweep(
        [this] {
            GraphCameraUtil::dumpNodeTree(mRoot.get(), 100);
            return 0;
        },
        0, 0);
}

TEST_F(PortAllocationTest, NumbersAsBytes)
{
    for (const std::string text : {"255", "0xFF", "0x0000000000000000000000000000000000000000FF"}) {
        unsigned int size = 0;
        unsigned char first = 0;
        const uint32_t held = g_alloc_counter - g_free_counter;
        const Question question = [&] {
            unsigned char* const bytes = GraphCameraUtil::numString2binary(text, &size);
            if (bytes == nullptr) return 0;
            first = bytes[0];
            qv_cipr_free(bytes, "test");
            return 1;
        };
        sweep(question, 1, 0, [&] { return first == 0xFF; });
        AllocationFailures allocations;
        allocations.failCountedFrom(1);
        EXPECT_EQ(question(), 0);
        allocations.stop();
        EXPECT_EQ(question(), 1);
        EXPECT_EQ(g_alloc_counter - g_free_counter, held);
    }
}

} // namespace

} // namespace graphtest
