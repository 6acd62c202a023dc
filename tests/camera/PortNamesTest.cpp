// SPDX-License-Identifier: Apache-2.0
#include "camera/PortFixture.h"

namespace graphtest {

namespace {

class PortNamesTest : public PortTest {
protected:
    /// Asks for both names of `pg:out`; texts that are not written keep these marks.
    void askNames()
    {
        mPgName = "old group";
        mPortName = "old port";
        mStatus = NUXO::getPgAndPortNames(*out(), mPgName, mPortName);
    }

    /// The same after taking the name off one of the nodes and, with @p number, giving it a number as a name.
    void askNamesWithout(const std::string& path, bool number)
    {
        loadPort("");
        node(path)->removeDescendant(NUXO_KEY_NAME);
        if (number) node(path)->addValue(NUXO_KEY_NAME, 4);
        clearLog();
        askNames();
    }

    std::string mPgName;
    std::string mPortName;
    int mStatus = 1;
};

TEST_F(PortNamesTest, NamesOfThePortAndOfItsNodeAreRead)
{
    loadPort("");
    askNames();
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_EQ(mPgName, "pg");
    EXPECT_EQ(mPortName, "out");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortNamesTest, PortWithoutANodeLeavesTheNameOfTheNodeAlone)
{
    GraphConfigNode alone;
    alone.addValue(NUXO_KEY_NAME, std::string("out"));
    mPgName = "old group";
    EXPECT_EQ(NUXO::getPgAndPortNames(alone, mPgName, mPortName), StatusOk);
    EXPECT_EQ(mPgName, "old group");
    EXPECT_EQ(mPortName, "out");

    const GraphConfigNode empty;
    EXPECT_EQ(NUXO::getPgAndPortNames(empty, mPgName, mPortName), StatusMissingData);
    EXPECT_EQ(mPgName, "old group");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortNamesTest, NameThatCannotBeReadFailsSilentlyAndTheOtherIsReadAllTheSame)
{
    for (const bool number : {false, true}) {
        askNamesWithout("pg", number);
        EXPECT_EQ(mStatus, StatusMissingData);
        EXPECT_EQ(mPgName, "old group");
        EXPECT_EQ(mPortName, "out");
        EXPECT_TRUE(loggedExactly({}));

        askNamesWithout("pg:out", number);
        EXPECT_EQ(mStatus, StatusMissingData);
        EXPECT_EQ(mPgName, "pg");
        EXPECT_EQ(mPortName, "old port");
        EXPECT_TRUE(loggedExactly({}));
    }
}

TEST_F(PortNamesTest, EmptyNamesAreRead)
{
    load("<hw name=\"pg\"><port name=\"out\"/></hw>");
    for (const char* path : {"pg", "pg:out"}) {
        GraphConfigNode* const holder = node(path);
        holder->removeDescendant(NUXO_KEY_NAME);
        holder->addValue(NUXO_KEY_NAME, std::string());
    }
    askNames();
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_EQ(mPgName, "");
    EXPECT_EQ(mPortName, "");
}

// --- ports by id ---

TEST_F(PortNamesTest, PortIsFoundByItsId)
{
    load("<hw name=\"pg\"><port name=\"a\" id=\"0\"/><port name=\"b\" id=\"7\"/>"
         "<port name=\"c\" id=\"-2147483648\"/><port name=\"d\" id=\"2147483647\"/></hw>");
    for (const auto& [id, path] :
         std::map<int, std::string>{{0, "pg:a"}, {7, "pg:b"}, {-2147483647 - 1, "pg:c"}, {2147483647, "pg:d"}}) {
        EXPECT_EQ(GraphCameraUtil::nodeGetPortById(node("pg"), id), node(path)) << id;
    }
    for (const int absent : {1, -1, -7, 2147483646}) {
        EXPECT_EQ(GraphCameraUtil::nodeGetPortById(node("pg"), absent), nullptr) << absent;
    }
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortNamesTest, FirstOfSeveralPortsWithTheIdCounts)
{
    load("<hw name=\"pg\"><port name=\"output\" id=\"7\"/><port name=\"input\" id=\"7\"/></hw>");
    // `input` (22) is filed before `output` (32).
    EXPECT_EQ(GraphCameraUtil::nodeGetPortById(node("pg"), 7), node("pg:input"));
}

TEST_F(PortNamesTest, PortWithoutAnIdIsNeverFound)
{
    load("<hw name=\"pg\"><port name=\"input\"/><port name=\"output\" id=\"7\"/><port name=\"sink\"/></hw>");
    node("pg:sink")->addValue(NUXO_KEY_ID, std::string("3"));
    for (const int id : {0, 3, -1}) EXPECT_EQ(GraphCameraUtil::nodeGetPortById(node("pg"), id), nullptr) << id;
    EXPECT_EQ(GraphCameraUtil::nodeGetPortById(node("pg"), 7), node("pg:output"));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortNamesTest, OnlyPortsOfTheNodeItselfAreLookedAt)
{
    load("<hw name=\"pg\" id=\"1\"><kernel name=\"k\" id=\"2\"><port name=\"in\" id=\"3\"/></kernel>"
         "<node name=\"x\" type=\"Port\" id=\"4\"/></hw><hw name=\"next\"><port name=\"in\" id=\"5\"/></hw>");
    for (int id = 1; id <= 5; ++id) EXPECT_EQ(GraphCameraUtil::nodeGetPortById(node("pg"), id), nullptr) << id;
    const GraphConfigNode empty;
    EXPECT_EQ(GraphCameraUtil::nodeGetPortById(&empty, 0), nullptr);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortNamesTest, NoNodeHasNoPorts)
{
    EXPECT_EQ(GraphCameraUtil::nodeGetPortById(nullptr, 0), nullptr);
    EXPECT_TRUE(loggedExactly({"16 Couldn't get port. Node is NULL"}));
}

// --- direction and kind ---

TEST_F(PortNamesTest, DirectionIsHandedOutAsItIs)
{
    for (const int direction : {0, 1, 2, -1, 2147483647, -2147483647 - 1}) {
        loadPort("direction=\"" + std::to_string(direction) + "\"");
        EXPECT_EQ(GraphCameraUtil::portGetDirection(out()), direction);
        EXPECT_TRUE(loggedExactly({}));
    }
}

TEST_F(PortNamesTest, PortWithoutADirectionIsAnInput)
{
    const std::string line = "16 Failed to retrieve port direction, default to input";
    loadPort("");
    EXPECT_EQ(GraphCameraUtil::portGetDirection(out()), 0);
    EXPECT_TRUE(loggedExactly({line}));
    out()->addValue(NUXO_KEY_DIRECTION, std::string("1"));
    clearLog();
    EXPECT_EQ(GraphCameraUtil::portGetDirection(out()), 0);
    EXPECT_TRUE(loggedExactly({line}));
    clearLog();
    EXPECT_EQ(GraphCameraUtil::portGetDirection(nullptr), 0);
    EXPECT_TRUE(loggedExactly({line}));
}

TEST_F(PortNamesTest, SinksAreVirtual)
{
    load("<sink name=\"video\"/>");
    EXPECT_TRUE(GraphCameraUtil::portIsVirtual(node("video")));
    for (const std::string type : {"port", "Sink", "sinks", "sin", "", "source"}) {
        load("<node name=\"pg\" type=\"" + type + "\"/>");
        EXPECT_FALSE(GraphCameraUtil::portIsVirtual(node("pg"))) << type;
    }
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortNamesTest, PortWithoutATypeIsNotVirtual)
{
    const std::string line = "16 Failed to retrieve port(NODE[pg]) type, default to input";
    load("<node name=\"pg\"/>");
    EXPECT_FALSE(GraphCameraUtil::portIsVirtual(node("pg")));
    EXPECT_TRUE(loggedExactly({line}));
    node("pg")->addValue(NUXO_KEY_TYPE, static_cast<int>(NUXO_KEY_SINK)); // a number is no type
    clearLog();
    EXPECT_FALSE(GraphCameraUtil::portIsVirtual(node("pg")));
    EXPECT_TRUE(loggedExactly({line}));
}

TEST_F(PortNamesTest, NoPortIsNotVirtualAndThatIsNotWorthALine)
{
    EXPECT_FALSE(GraphCameraUtil::portIsVirtual(nullptr));
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_TRUE(informed([] { (void)GraphCameraUtil::portIsVirtual(nullptr); }).empty());
}

// --- texts of nothing ---

TEST_F(PortNamesTest, NothingPrintsAsANamelessNodeThatCarriesPixels)
{
    EXPECT_EQ(GraphCameraUtil::print(nullptr), "NODE[NA]");
    EXPECT_EQ(GraphCameraUtil::portGetContentType(nullptr), "pixel_data");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortNamesTest, OnlyFourKindsPrintTheNodeTheyBelongTo)
{
    for (const auto& [element, printed] : std::map<std::string, std::string>{{"port", "port[isp:x]"},
                                                                             {"kernel", "kernel[isp:x]"},
                                                                             {"mux", "mux[isp:x]"},
                                                                             {"demux", "demux[isp:x]"},
                                                                             {"split", "split[x]"},
                                                                             {"sink", "sink[x]"},
                                                                             {"source", "source[x]"},
                                                                             {"program_group", "program_group[x]"}}) {
        load("<hw name=\"isp\"><" + element + " name=\"x\"/></hw>");
        EXPECT_EQ(GraphCameraUtil::print(node("isp:x")), printed);
    }
}

} // namespace

} // namespace graphtest
