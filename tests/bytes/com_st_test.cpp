// State tables: lists that end with 255, events by their low byte, the marks 149 and 254.
#include "support/assertions.h"

#include <dlxcomn/services.h>

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

namespace {

using support::ReturningAssertions;

// Two states. State 0 has the events 1, 2 and 200; state 1 has none.
struct Table {
    CS_EVENT first[4] = {1, 2, 200, CS_ST_END};
    CS_EVENT none[1] = {CS_ST_END};
    CS_EVENT *events[2] = {first, none};
    CS_EVENT_NS to[5] = {{1, 1}, {2, CS_ST_STAY}, {200, CS_ST_INVALID}, {1, 77}, {CS_ST_END, 0}};
    CS_EVENT_NS nowhere[1] = {{CS_ST_END, 5}};
    CS_EVENT_NS *transitions[2] = {to, nowhere};
    CS_DEPEND depend[4] = {{2, 1}, {200, 255}, {2, 9}, {CS_ST_END, 3}};
    CS_ST_TABLE st = {};
    CS_NS_TABLE ns = {};
    Table() {
        st.st_numstates = 2;
        st.st_ver = events;
        st.st_depend = depend;
        st.st_trans = transitions;
        ns.nstable = transitions;
        ns.nsnumstates = 2;
    }
};

class StateTable : public testing::Test {
protected:
    Table table_;
};

using StateTableDeathTest = StateTable;

TEST_F(StateTable, VerFindsTheEventsOfTheState) {
    for (CS_INT event = 0; event < 256; ++event) {
        EXPECT_EQ(com_st_ver(&table_.st, 0, event), event == 1 || event == 2 || event == 200) << event;
        EXPECT_EQ(com_st_ver(&table_.st, 1, event), CS_FALSE) << event;
    }
}

TEST_F(StateTable, DependFindsTheFirstPair) {
    for (CS_INT event = 0; event < 256; ++event) {
        CS_INT other = -7;
        const bool depends = event == 2 || event == 200;
        EXPECT_EQ(com_st_depend(&table_.st, event, &other), depends) << event;
        EXPECT_EQ(other, event == 2 ? 1 : event == 200 ? 255 : -7) << event;
    }
}

TEST_F(StateTable, DependWithoutAListIsFalse) {
    table_.st.st_depend = nullptr;
    CS_INT other = -7;
    EXPECT_EQ(com_st_depend(&table_.st, 2, &other), CS_FALSE);
    EXPECT_EQ(other, -7);
}

TEST_F(StateTable, TransGoesToTheFirstPairsState) {
    EXPECT_EQ(com_st_trans(&table_.st, 0, 1), 1);
    EXPECT_EQ(com_st_trans(&table_.st, 0, 200), CS_ST_INVALID) << "as the table has it";
}

TEST_F(StateTable, TransStaysWhereTheTableSaysSo) { EXPECT_EQ(com_st_trans(&table_.st, 0, 2), 0); }

TEST_F(StateTable, TransOfAnUnknownEventIs254) {
    for (const CS_INT event : {0, 3, 199, 254, 255}) {
        EXPECT_EQ(com_st_trans(&table_.st, 0, event), 254) << event;
        EXPECT_EQ(com_st_trans(&table_.st, 1, event), 254) << event;
    }
}

TEST_F(StateTable, NsTransGoesToTheFirstPairsState) {
    EXPECT_EQ(com_ns_trans(&table_.ns, 0, 1), 1);
    EXPECT_EQ(com_ns_trans(&table_.ns, 0, 200), 254);
}

TEST_F(StateTable, OddityNsTransHandsOutTheMarkToStay) { EXPECT_EQ(com_ns_trans(&table_.ns, 0, 2), 149); }

TEST_F(StateTable, OddityNsTransOfAnUnknownEventIs149Too) {
    for (const CS_INT event : {0, 3, 199, 254, 255}) {
        EXPECT_EQ(com_ns_trans(&table_.ns, 0, event), 149) << event;
        EXPECT_EQ(com_ns_trans(&table_.ns, 1, event), 149) << event;
    }
}

TEST_F(StateTable, OddityOnlyTheLowByteOfAnEventCounts) {
    CS_INT other = 0;
    for (const CS_INT event : {2 + 256, 2 - 256, 2 + 65536}) {
        EXPECT_EQ(com_st_ver(&table_.st, 0, event), CS_TRUE) << event;
        EXPECT_EQ(com_st_depend(&table_.st, event, &other), CS_TRUE) << event;
        EXPECT_EQ(other, 1);
        EXPECT_EQ(com_st_trans(&table_.st, 0, event), 0) << event;
        EXPECT_EQ(com_ns_trans(&table_.ns, 0, event), 149) << event;
    }
    EXPECT_EQ(com_st_trans(&table_.st, 0, 1 - 256), 1);
}

TEST(StateTables, RandomOnesFollowAMapOfTheirFirstPairs) {
    std::mt19937_64 random(7);
    for (int round = 0; round < 500; ++round) {
        std::vector<CS_EVENT_NS> pairs;
        std::vector<CS_DEPEND> depends;
        std::vector<CS_EVENT> events;
        std::map<int, int> first;
        for (int left = static_cast<int>(random() % 30); left > 0; --left) {
            const auto event = static_cast<CS_BYTE>(random() % 255), next = static_cast<CS_BYTE>(random() % 256);
            pairs.push_back({event, next});
            depends.push_back({event, next});
            events.push_back(event);
            first.emplace(event, next);
        }
        pairs.push_back({CS_ST_END, 1});
        depends.push_back({CS_ST_END, 1});
        events.push_back(CS_ST_END);
        CS_EVENT *ver[4] = {nullptr, nullptr, nullptr, events.data()};
        CS_EVENT_NS *trans[4] = {nullptr, nullptr, nullptr, pairs.data()};
        CS_ST_TABLE st = {};
        st.st_ver = ver;
        st.st_trans = trans;
        st.st_depend = depends.data();
        CS_NS_TABLE ns = {};
        ns.nstable = trans;
        for (int event = 0; event < 256; ++event) {
            const auto found = first.find(event);
            const bool known = found != first.end();
            CS_INT other = -1;
            ASSERT_EQ(com_st_ver(&st, 3, event), known);
            ASSERT_EQ(com_st_depend(&st, event, &other), known);
            ASSERT_EQ(other, known ? found->second : -1);
            ASSERT_EQ(com_st_trans(&st, 3, event), !known ? 254 : found->second == 149 ? 3 : found->second);
            ASSERT_EQ(com_ns_trans(&ns, 3, event), known ? found->second : 149);
        }
    }
}

TEST_F(StateTableDeathTest, NullTableOrAnswer) {
    CS_INT other;
    EXPECT_NULL_REPORT(com_st_ver(nullptr, 0, 1), "com_st");
    EXPECT_NULL_REPORT(com_st_depend(nullptr, 1, &other), "com_st");
    EXPECT_NULL_REPORT(com_st_depend(&table_.st, 1, nullptr), "com_st");
    EXPECT_NULL_REPORT(com_st_trans(nullptr, 0, 1), "com_st");
    EXPECT_NULL_REPORT(com_ns_trans(nullptr, 0, 1), "com_st");
}

TEST_F(StateTable, MistakesThatComeBackFindNothing) {
    const ReturningAssertions assertions;
    CS_INT other = -7;
    EXPECT_EQ(com_st_ver(nullptr, 0, 1), CS_FALSE);
    EXPECT_EQ(com_st_depend(nullptr, 2, &other), CS_FALSE);
    EXPECT_EQ(com_st_depend(&table_.st, 2, nullptr), CS_FALSE);
    EXPECT_EQ(com_st_trans(nullptr, 0, 1), CS_ST_INVALID);
    EXPECT_EQ(com_ns_trans(nullptr, 0, 1), CS_ST_STAY);
    EXPECT_EQ(assertions.count(), 5);
    EXPECT_EQ(other, -7);
}

} // namespace
