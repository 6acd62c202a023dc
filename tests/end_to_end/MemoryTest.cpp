// SPDX-License-Identifier: Apache-2.0
#include "ToolTest.h"

#include <algorithm>

namespace {

// Runs of the tool with less memory than they need.
class MemoryTest : public ToolTest {
protected:
    void SetUp() override
    {
        ToolTest::SetUp();
        std::string settings = "<graph_settings version=\"1\">\n";
        for (int i = 0; i < 3000; ++i) {
            settings += "<settings key=\"" + std::to_string(i) + "\" id=\"1\"><img_sink width=\"640\"/></settings>\n";
        }
        write("large.xml", settings + "</graph_settings>\n");
    }

    static bool canBeLimited()
    {
#if defined(__SANITIZE_ADDRESS__)
        return false;
#elif defined(__has_feature)
        return !__has_feature(address_sanitizer);
#else
        return true;
#endif
    }

    static constexpr int kStep = 500; // blocks of 1024 bytes
    static constexpr int kMost = 400000;

    int exitCodeWith(int limit, const std::string& arguments) const
    {
        return exitCodeBehind("ulimit -v " + std::to_string(limit) + ";", arguments);
    }

    // The least memory with which the system can load the tool.
    int leastToStart() const
    {
        int limit = 10 * kStep;
        while (limit < kMost && exitCodeWith(limit, "--version") != 0) limit += kStep;
        return limit;
    }

    // Raises the limit until the run ends as it does without any. Before, it must end as one that lacks memory.
    void expectHonestEnds(int limit, const std::string& arguments) const
    {
        const int wanted = exitCodeBehind("", arguments);
        const std::string findings = read("err");
        const std::string output = read("out");
        size_t starved = 0;
        while (limit < kMost) {
            const int code = exitCodeWith(limit, arguments);
            if (code == wanted) break;
            ASSERT_EQ(code, 4) << limit << ": " << read("err").substr(0, 300);
            // What was found before stands in front of it.
            const std::string told = read("err");
            const std::string lack = "nuxo: error[internal]: out of memory\n";
            ASSERT_EQ(told.substr(told.size() - std::min(told.size(), lack.size())), lack) << limit;
            ASSERT_TRUE(read("out").empty() || read("out") == output) << limit;
            ++starved;
            limit += kStep;
        }
        EXPECT_LT(limit, kMost);
        EXPECT_GT(starved, 0U);
        EXPECT_EQ(read("err"), findings) << limit;
        EXPECT_EQ(read("out"), output) << limit;
    }
};

TEST_F(MemoryTest, LackOfMemoryIsNeverTakenForAFault)
{
    if (!canBeLimited()) GTEST_SKIP() << "the memory of instrumented programs cannot be limited";
    const int least = leastToStart();
    for (const char* const arguments : {"dump large.xml", "fmt large.xml", "query descriptor.xml large.xml",
                                        "check descriptor.xml large.xml", "diff large.xml settings.xml"}) {
        SCOPED_TRACE(arguments);
        expectHonestEnds(least, arguments);
    }
}

} // namespace
