// SPDX-License-Identifier: Apache-2.0
#include "CheckTest.h"

using nlohmann::json;

namespace {

// Each example file, broken in many ways as people do.
class FaultsTest : public CheckTest, public testing::WithParamInterface<std::string> {};

TEST_P(FaultsTest, AreFoundWhereTheyAre)
{
    const json faults = readJson("faults/" + GetParam() + ".json");
    ASSERT_TRUE(faults.is_array());
    EXPECT_GE(faults.size(), 25U);
    for (const json& description : faults) {
        const Fault fault(description);
        SCOPED_TRACE(fault.name);
        expectFound(fault);
    }
}

INSTANTIATE_TEST_SUITE_P(InExamples, FaultsTest, testing::ValuesIn(jsonFilesIn("faults")),
                         [](const auto& each) { return each.param; });

TEST(FaultListTest, HasAFileForEachExample)
{
    const std::vector<std::string> expected = {"kva5_descriptor", "kva5_settings",   "kva6_descriptor",
                                               "kva6_settings",   "kva7_descriptor", "kva7_settings"};
    EXPECT_EQ(jsonFilesIn("faults"), expected);
}

} // namespace
