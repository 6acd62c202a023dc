// SPDX-License-Identifier: Apache-2.0
// The single steps of construction with every allocation failing in turn: complete, or out of memory, never in between.
#include "query/GraphFixture.h"

#include <support/AllocationFailures.h>

#include <functional>
#include <set>

namespace graphtest {

namespace {

/// Sweeps one operation over a fresh copy of a tree in each run.
class StepAllocationTest : public GraphTest {
protected:
    using Operation = std::function<int()>;
    /// Looks up what the operation needs in a tree, before any allocation fails.
    using Binder = std::function<Operation(GraphConfigNode&)>;

    /// The tree that the operation makes of @p body must be complete whenever its status is that of a run without
    /// failures; otherwise the status must be one of @p failures. Collects the messages of all runs.
    void sweep(const std::string& body, const Binder& bind, const std::set<int>& failures = {StatusNoMemory})
    {
        const Tree original = descriptor(body);
        const Tree good(original->copy());
        const int goodStatus = bind(*good)();
        const std::string goodText = text(*good);
        size_t failedRuns = 0;
        for (const bool forGood : {false, true}) {
            Tree work(original->copy());
            Operation operation = bind(*work);
            const size_t live = AllocationFailures::live();
            size_t kept = 0; // messages of earlier runs
            int status = 0;
            bool thrown = false;
            AllocationFailures allocations;
            allocations.sweep(
                forGood,
                [&] {
                    if (escapes([&] { status = operation(); })) thrown = true;
                },
                [&] {
                    EXPECT_FALSE(thrown);
                    if (status == goodStatus) {
                        EXPECT_EQ(text(*work), goodText);
                    } else {
                        EXPECT_EQ(failures.count(status), 1U) << status;
                        ++failedRuns;
                    }
                    EXPECT_TRUE(linked(*work));
                    work.reset(original->copy());
                    operation = bind(*work);
                    EXPECT_EQ(AllocationFailures::live(), live + kept);
                    const size_t before = AllocationFailures::live();
                    for (std::string& line : lines()) mLines.insert(std::move(line));
                    clearLog();
                    kept += AllocationFailures::live() - before;
                });
        }
        EXPECT_GT(failedRuns, 0U);
    }

    std::set<std::string> mLines;
};

constexpr const char* kLong = "a text that is much too long for the object itself";

TEST_F(StepAllocationTest, Merge)
{
    // Overwriting, additions of both kinds, a list of options that is obeyed, copies, and a push to a sink.
    const std::string body = std::string(R"(<hw name="to" metadata="old" direction="1" peer="s">
          <options attribute="metadata"><o value=")") +
                             kLong + R"("><apply><stray width="4"><k bpp="8"/></stray></apply></o></options>
        </hw><sink name="s"/>
        <other metadata=")" + kLong +
                             "\" description=\"" + kLong + "\" width=\"4\"><port name=\"out\" format=\"" + kLong +
                             "\"/></other>";
    sweep(body, [](GraphConfigNode& root) -> Operation {
        return [to = &at(root, "to"), from = &at(root, "other")] {
            return GraphQueryUtils::addDescendantsFromNode(to, from, 15);
        };
    });
    EXPECT_EQ(mLines.count("16 Error adding description: No memory"), 1U);
    EXPECT_EQ(mLines.count("16 Error adding width: No memory"), 1U);
    EXPECT_EQ(mLines.count("16 Error creating GraphConfigItem: No memory"), 1U);
    EXPECT_EQ(mLines.count("16 Failed to apply option attributes"), 1U);
}

TEST_F(StepAllocationTest, SettingAnAttributeWithOptions)
{
    const std::string apply = std::string("<apply><stray description=\"") + kLong + "\"/></apply></o></options>";
    const std::string body = std::string("<hw name=\"pg\" metadata=\"old\" width=\"1\"><options attribute=\"metadata\">"
                                         "<o value=\"x,") +
                             kLong + "\">" + apply + "<options attribute=\"width\"><o value=\"-2000000000\">" + apply +
                             "</hw>";
    const std::string chosen = kLong;
    sweep(body, [&chosen](GraphConfigNode& root) -> Operation {
        return [&chosen, pg = &at(root, "pg")] { return pg->setValue(NUXO_KEY_METADATA, chosen); };
    });
    EXPECT_EQ(mLines.count("16 Failed to apply option attributes"), 1U);
    sweep(body, [](GraphConfigNode& root) -> Operation {
        return [pg = &at(root, "pg")] { return pg->setValue(NUXO_KEY_WIDTH, -2000000000); };
    });
}

TEST_F(StepAllocationTest, BaseNodeConversion)
{
    const std::string body =
        std::string(R"(<base_node name="base" base_type="program_group_with_a_long_name"><port name="out">
          <options attribute="format"><o value="NV12"><apply><base bpp="8"><k/></base></apply></o></options></port>
        </base_node>
        <node name="pg" base_node="base"><attribute target="out:metadata" value=")") +
        kLong + R"("/>
          <attribute target="out:width" value="1920"/></node>)";
    sweep(body,
          [](GraphConfigNode& root) -> Operation {
              return [base = &at(root, "base"), pg = &at(root, "pg")] { return base->changeBaseNodeIntoNode(*pg); };
          },
          {StatusNoMemory, StatusMissingData, StatusNotFound});
    EXPECT_EQ(mLines.count("16 Failed create a copy during option handling"), 1U);
}

TEST_F(StepAllocationTest, BaseNodeConversionThatRegistersAName)
{
    // A root is called "NA", which the vocabulary lacks before each run.
    GraphConfigNode nameless;
    sweep(R"(<base_node name="base" base_type="hw"><port name="out"><options attribute="format"><o value="NV12">
             <apply><base bpp="8"/></apply></o></options></port></base_node>)",
          [&nameless](GraphConfigNode& root) -> Operation {
              NUXO::nuxo_key_map.erase("NA");
              return [base = &at(root, "base"), &nameless] { return base->changeBaseNodeIntoNode(nameless); };
          });
}

TEST_F(StepAllocationTest, Overrides)
{
    const std::string body =
        std::string("<graph><apply target=\"pg:metadata\" value=\"") + kLong +
        "\"/><apply target=\"pg:width\" value=\"1920\"/><apply target=\"pg:k:description\" value=\"" + kLong +
        "\"/></graph><hw name=\"pg\" metadata=\"old\"/>";
    sweep(body, [](GraphConfigNode& root) -> Operation {
        return
            [graph = &at(root, "graph"), &root] { return NUXO::GraphCameraUtil::processGraphOverrides(*graph, root); };
    });
}

TEST_F(StepAllocationTest, SensorMode)
{
    const std::string body = std::string("<sensor metadata=\"old\"/><sensor_modes description=\"") + kLong +
                             "\" fps=\"30\"><mode name=\"x\"/><hw name=\"full\" metadata=\"" + kLong +
                             "\"><port name=\"out\"/></hw></sensor_modes>";
    const std::string mode = "full";
    GraphQueryManager manager;
    sweep(body, [&](GraphConfigNode& root) -> Operation {
        return [&manager, &mode, sensor = &at(root, "sensor"), modes = &at(root, "sensor_modes")] {
            return manager.addSensorModeData(sensor, modes, mode);
        };
    });
    EXPECT_EQ(mLines.count("16 couldn't add settings from sensor modes node"), 1U);
}

TEST_F(StepAllocationTest, Propagation)
{
    const std::string body =
        std::string("<hw name=\"from\" exec_ctx_id=\"3\" content_type=\"") + kLong + "\"/><hw name=\"to\"/>";
    GraphQueryManager manager;
    sweep(body, [&manager](GraphConfigNode& root) -> Operation {
        return [&manager, from = &at(root, "from"), to = &at(root, "to")] {
            return manager.propagateIntAttribute(from, to, NUXO_KEY_EXEC_CTX_ID);
        };
    });
    sweep(body, [&manager](GraphConfigNode& root) -> Operation {
        return [&manager, from = &at(root, "from"), to = &at(root, "to")] {
            return manager.propagateStrAttribute(from, to, NUXO_KEY_CONTENT_TYPE);
        };
    });
}

TEST_F(StepAllocationTest, Sources)
{
    sweep("<source name=\"a\"/><source name=\"b\"/>", [](GraphConfigNode& root) -> Operation {
        return [&root] {
            std::vector<IGraphConfig*> found;
            const int status = NUXO::GraphCameraUtil::getSourceNode(&root, found);
            return status == StatusOk && found.size() != 2 ? 1 : status;
        };
    });
}

TEST_F(StepAllocationTest, Peers)
{
    const std::string longName = "a_virtual_sink_with_a_name_that_needs_the_heap";
    sweep("<hw name=\"a\"><port name=\"out\" peer=\"" + longName + ":in\"/></hw><hw name=\"" + longName +
              "\"><port name=\"in\"/></hw>",
          [](GraphConfigNode& root) -> Operation {
              return [port = &at(root, "a:out")] {
                  IGraphConfig* peer = nullptr;
                  const int status = NUXO::GraphCameraUtil::portGetPeer(port, &peer);
                  return status == StatusOk && peer == nullptr ? 1 : status;
              };
          });
}

} // namespace

} // namespace graphtest
