// The chained hash table.
#include "support/debug_output.h"
#include "support/lists.h"
#include "support/naive_key_hash.h"

#include <algorithm>
#include <random>
#include <vector>

using namespace support;

namespace {

constexpr const char *STEM = "lm_chash";
using Numbers = std::vector<std::intptr_t>;

class LmChash : public ListTest {
protected:
    void SetUp() override {
        ListTest::SetUp();
        list = make(LM_CHASH);
    }
    Answer insert(std::string_view key, std::intptr_t data) { return by_key(list, LM_OP_INSERT, key, data); }
    Answer find(std::string_view key) { return by_key(list, LM_OP_FIND, key); }
    Answer remove(std::string_view key) { return by_key(list, LM_OP_DELETE, key); }
    CHashInfo &info() { return *static_cast<CHashInfo *>(list->list_state); }
    // Single letters whose codes differ by 10 share a home slot of 10: "A", "K" and "U".
    static CS_INT home(std::string_view key) { return static_cast<CS_INT>(naive_slot(key, 10)); }

    LM_HANDLE *list = nullptr;
};
using LmChashDeathTest = LmChash;

TEST_F(LmChash, StartsWithEmptyChains) {
    EXPECT_EQ(info().state, LM_INITIALIZED);
    EXPECT_EQ(info().table_size, 10);
    EXPECT_EQ(info().home_addr_hfunc, &lm__api_key_to_hash);
    for (CS_INT slot = 0; slot < 10; ++slot)
        EXPECT_EQ(info().table[slot], nullptr);
    EXPECT_EQ(operate(list, LM_OP_CURRENT), succeeds(0));
}

TEST_F(LmChash, InsertGoesToTheFrontOfItsChain) {
    ASSERT_EQ(home("A"), home("K"));
    EXPECT_EQ(insert("A", 1), succeeds(1));
    DLinkNode *first = list->cur_ptr;
    EXPECT_EQ(insert("K", 2), succeeds(2));
    DLinkNode *second = list->cur_ptr;
    EXPECT_EQ(info().table[home("A")], second);
    EXPECT_EQ(second->state, LM_SET);
    EXPECT_EQ(second->key_size, 1);
    EXPECT_EQ(second->next, first);
    EXPECT_EQ(second->previous, nullptr);
    EXPECT_EQ(first->previous, second);
    EXPECT_EQ(load_of(list), 2);
    EXPECT_EQ(operate(list, LM_OP_CURRENT), succeeds(2));
}

TEST_F(LmChash, KeysAreBorrowed) {
    char key[] = "key";
    ASSERT_EQ(operate(list, LM_OP_INSERT, key, 3, 1), succeeds(1));
    EXPECT_EQ(list->cur_ptr->key, key);
}

TEST_F(LmChash, FindMatchesSizeAndBytes) {
    insert("abcd", 1);
    EXPECT_EQ(find("abcd"), succeeds(1));
    for (const char *other : {"ab", "abcde", "abce", "", "ABCD"})
        EXPECT_EQ(find(other), fails(LM_NOT_FOUND)) << other;
    EXPECT_EQ(operate(list, LM_OP_CURRENT), succeeds(1)) << "a miss leaves the cursor";
}

TEST_F(LmChash, AKeyOfNoBytes) {
    EXPECT_EQ(operate(list, LM_OP_INSERT, nullptr, 0, 1), succeeds(1));
    EXPECT_EQ(operate(list, LM_OP_FIND, nullptr, 0), succeeds(1));
    EXPECT_EQ(find(""), succeeds(1));
    EXPECT_EQ(remove(""), succeeds(0));
}

TEST_F(LmChash, ALaterDuplicateHidesAnEarlierOneUntilItIsDeleted) {
    insert("key", 1);
    insert("key", 2);
    EXPECT_EQ(load_of(list), 2);
    EXPECT_EQ(find("key"), succeeds(2));
    EXPECT_EQ(remove("key"), succeeds(1));
    EXPECT_EQ(find("key"), succeeds(1));
    EXPECT_EQ(remove("key"), succeeds(0));
    EXPECT_EQ(find("key"), fails(LM_NOT_FOUND));
}

TEST_F(LmChash, DeleteMovesTheCursorToThePreviousElseTheNextElseNone) {
    insert("A", 1);
    insert("K", 2);
    insert("U", 3); // the chain is U, K, A
    EXPECT_EQ(remove("K"), succeeds(3)) << "the one before it";
    EXPECT_EQ(remove("U"), succeeds(1)) << "the one behind it";
    EXPECT_EQ(info().table[home("A")], list->cur_ptr);
    EXPECT_EQ(remove("A"), succeeds(0));
    EXPECT_EQ(info().table[home("A")], nullptr);
    EXPECT_EQ(load_of(list), 0);
}

TEST_F(LmChash, AMissedDeleteLeavesAll) {
    insert("A", 1);
    EXPECT_EQ(remove("K"), fails(LM_NOT_FOUND));
    EXPECT_EQ(load_of(list), 1);
    EXPECT_EQ(find("A"), succeeds(1));
}

TEST_F(LmChash, DeleteByCursorInsideAChain) {
    insert("A", 1);
    insert("K", 2);
    find("A");
    EXPECT_EQ(operate(list, LM_OP_DELETE), succeeds(2));
    EXPECT_EQ(find("A"), fails(LM_NOT_FOUND));
    EXPECT_EQ(load_of(list), 1);
}

TEST_F(LmChash, DeleteByCursorCorrectsSlotZero) {
    std::string key;
    for (char c = 'A'; key.empty(); ++c)
        if (home(std::string(1, c)) == 0)
            key = c;
    insert(key, 1);
    EXPECT_EQ(operate(list, LM_OP_DELETE), succeeds(0));
    EXPECT_EQ(info().table[0], nullptr);
    EXPECT_EQ(find(key), fails(LM_NOT_FOUND));
}

TEST_F(LmChashDeathTest, OddityDeleteByCursorKeepsAStaleHeadInAnotherSlot) {
    ASSERT_NE(home("B"), 0);
    insert("B", 1);
    insert("L", 2);
    DLinkNode *head = list->cur_ptr;
    EXPECT_EQ(operate(list, LM_OP_DELETE), succeeds(1)) << "the next one";
    EXPECT_EQ(load_of(list), 1);
    EXPECT_EQ(info().table[home("L")], head) << "it still heads its slot";
    EXPECT_EQ(head->state, LM_UNSET) << "in memory that still is the list's";
    EXPECT_EQ(find("L"), succeeds(2)) << "so it is found";
    expect_broken(STEM, [&] { return remove("L").status; });
    EXPECT_EQ(find("B"), succeeds(1));
    EXPECT_EQ(remove("B"), succeeds(2)) << "the stale one stands before it";
    EXPECT_EQ(load_of(list), 0);
    EXPECT_EQ(insert("V", 3), succeeds(3));
    EXPECT_EQ(remove("V"), succeeds(2));
}

TEST_F(LmChash, UpdateByKeyAndByCursor) {
    insert("A", 1);
    insert("B", 2);
    EXPECT_EQ(by_key(list, LM_OP_UPDATE, "A", 10), succeeds(10));
    EXPECT_EQ(operate(list, LM_OP_UPDATE, nullptr, LM_UNUSED, 11), succeeds(11));
    EXPECT_EQ(operate(list, LM_OP_UPDATE, text("B"), LM_UNUSED, 12), succeeds(12)) << "no size, no key";
    EXPECT_EQ(by_key(list, LM_OP_UPDATE, "C", 13), fails(LM_NOT_FOUND));
    EXPECT_EQ(find("A"), succeeds(12));
    EXPECT_EQ(find("B"), succeeds(2));
}

TEST_F(LmChash, SearchTellsTheHomeSlotFoundOrNot) {
    insert("A", 1);
    CS_INT slot = 55;
    EXPECT_EQ(lm___api_chash_search(list, text("A"), 1, &slot), CS_SUCCEED);
    EXPECT_EQ(slot, home("A"));
    slot = 55;
    EXPECT_EQ(lm___api_chash_search(list, text("B"), 1, &slot), CS_FAIL);
    EXPECT_EQ(slot, home("B"));
}

TEST_F(LmChash, PrintCallsTheFunctionOrPrintsNull) {
    EXPECT_EQ(operate(list, LM_OP_PRINT), fails()) << "no function";
    set_property<CS_PRINT_FUNC>(list, LM_PROP_PRINT_FUNC, collect);
    walked.clear();
    DebugOutput output;
    EXPECT_EQ(operate(list, LM_OP_PRINT), succeeds(0));
    EXPECT_EQ(output.take(), "\nNULL\n");
    insert("A", 1);
    insert("B", 2);
    EXPECT_EQ(operate(list, LM_OP_PRINT), succeeds(2));
    EXPECT_EQ(by_key(list, LM_OP_PRINT, "A"), succeeds(1));
    EXPECT_EQ(by_key(list, LM_OP_PRINT, "C"), fails(LM_NOT_FOUND));
    EXPECT_EQ(output.take(), "");
    EXPECT_EQ(walked, (Numbers{2, 1}));
}

TEST_F(LmChash, PrintAllShowsEmptyAndFullChainsSlotBySlot) {
    LM_HANDLE *small = make_table(LM_CHASH, 2);
    set_property<CS_PRINT_FUNC>(small, LM_PROP_PRINT_FUNC, collect);
    for (std::intptr_t key = 1; key <= 3; ++key) // "x" fills its slot, and the other stays empty
        operate(small, LM_OP_INSERT, text("x"), 1, key);
    const bool in_first = naive_slot("x", 2) == 0;
    const std::intptr_t key = number_of(small->cur_ptr->key);
    DebugOutput output;
    walked.clear();
    stop_at = -1;
    EXPECT_EQ(operate(small, LM_OP_PRINTALL), succeeds(3));
    const std::string full = "\nKeys:\n\nData:\n\n";
    const std::string empty = "\n***Chain empty***\n";
    EXPECT_EQ(output.take(), in_first ? full + empty : empty + full);
    ASSERT_EQ(walked.size(), 6u) << "the function on each key, then on each data";
    EXPECT_EQ(walked[0], key);
    EXPECT_EQ(Numbers(walked.begin() + 3, walked.end()), (Numbers{3, 2, 1}));
    walked.clear();
    stop_at = 2;
    EXPECT_EQ(operate(small, LM_OP_PRINTALL), fails());
    EXPECT_EQ(walked.size(), 5u);
    walked.clear();
    stop_at = key;
    EXPECT_EQ(operate(small, LM_OP_PRINTALL), fails()) << "a key ends it too";
    EXPECT_EQ(walked.size(), 1u);
}

TEST_F(LmChash, WalkSeesTheDataOfAllSlotsInOrderAndPrintsNothing) {
    Numbers expected;
    for (char c = 'a'; c <= 'j'; ++c)
        insert(std::string_view("abcdefghij").substr(static_cast<std::size_t>(c - 'a'), 1), c);
    for (CS_INT slot = 0; slot < 10; ++slot)
        for (char c = 'j'; c >= 'a'; --c)
            if (home(std::string(1, c)) == slot)
                expected.push_back(c);
    DebugOutput output;
    EXPECT_EQ(walk(list), expected);
    EXPECT_EQ(output.take(), "");
    CS_PRINT_FUNC function = collect;
    walked.clear();
    stop_at = expected[4];
    EXPECT_EQ(lm_list_op(list, LM_OP_WALK, nullptr, LM_UNUSED, &function, nullptr), CS_FAIL);
    EXPECT_EQ(walked, Numbers(expected.begin(), expected.begin() + 5));
    EXPECT_EQ(lm_list_op(list, LM_OP_WALK, nullptr, LM_UNUSED, nullptr, nullptr), CS_FAIL) << "no function";
    EXPECT_EQ(operate(list, LM_OP_PRINTALL), fails()) << "no function";
}

TEST_F(LmChash, AWalkMayDeleteWhatItIsOn) {
    static LM_HANDLE *walked_list;
    walked_list = list;
    for (const char *key : {"A", "K", "U", "b"}) // a chain of three, and one
        insert(key, number_of(key));
    CS_PRINT_FUNC function = [](CS_VOID *key) -> CS_INT {
        return lm_list_op(walked_list, LM_OP_DELETE, key, 1, nullptr, nullptr);
    };
    CS_VOID *data = UNTOUCHED;
    EXPECT_EQ(lm_list_op(list, LM_OP_WALK, nullptr, LM_UNUSED, &function, &data), CS_SUCCEED);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(load_of(list), 0);
    EXPECT_EQ(walk(list), Numbers{});
}

TEST_F(LmChashDeathTest, BrokenOperations) {
    expect_broken(STEM, [&] { return operate(list, LM_OP_DELETE).status; });
    expect_broken(STEM, [&] { return remove("A").status; });
    expect_broken(STEM, [&] { return operate(list, LM_OP_UPDATE).status; });
    for (const CS_INT operation : {0, 19, 24, 25, 27, 28, 32})
        expect_broken(STEM, [&, operation] {
            const Answer answer = by_key(list, operation, "A", 1);
            EXPECT_EQ(answer.data, UNTOUCHED);
            return answer.status;
        });
    insert("A", 1);
    list->cur_ptr = nullptr;
    expect_broken(STEM, [&] { return operate(list, LM_OP_DELETE).status; });
    CS_INT slot = 0;
    expect_broken(STEM, [&] { return lm___api_chash_search(nullptr, text("A"), 1, &slot); });
    expect_broken(STEM, [&] { return lm___api_chash_search(list, text("A"), 1, nullptr); });
    expect_broken(STEM, [&] { return lm___api_chash_op(nullptr, LM_OP_CURRENT, nullptr, 0, nullptr, nullptr); });
    expect_broken(STEM, [] { return lm__api_chash_init(nullptr); });
    expect_broken(STEM, [] { return lm__api_chash_drop(nullptr); });
    EXPECT_EQ(load_of(list), 1);
}

TEST_F(LmChashDeathTest, KeysThatCannotBeHashed) {
    expect_broken("lm_hash", [&] { return operate(list, LM_OP_INSERT, nullptr, 3, 1).status; });
    expect_broken("lm_hash", [&] { return operate(list, LM_OP_INSERT, text("A"), LM_UNUSED, 1).status; });
    expect_broken("lm_hash", [&] { return operate(list, LM_OP_FIND, nullptr, 3).status; }, LM_NOT_FOUND);
    EXPECT_EQ(load_of(list), 0);
}

TEST_F(LmChash, OutOfMemoryAtAnInsertLeavesTheTableAsItWas) {
    insert("A", 1);
    memory.fail(1, WatchedMemory::ONCE);
    EXPECT_EQ(insert("K", 2), fails(CS_MEM_ERROR));
    EXPECT_EQ(find("K"), fails(LM_NOT_FOUND));
    EXPECT_EQ(find("A"), succeeds(1));
    EXPECT_EQ(load_of(list), 1);
}

// Against chains of a model: keys that collide and repeat, deletes by key and by cursor, a pool.
TEST_F(LmChash, RandomOperationsAgainstNaiveChains) {
    struct Entry {
        std::size_t key;
        std::intptr_t data;
    };
    set_property<CS_INT>(list, LM_PROP_MAX_POOLSIZE, 5);
    std::mt19937_64 random(83004);
    std::vector<std::string> keys = {""};
    while (keys.size() < 60) {
        std::string key(random() % 12, '\0');
        for (char &byte : key)
            byte = static_cast<char>(random());
        if (std::find(keys.begin(), keys.end(), key) == keys.end())
            keys.push_back(key);
    }
    std::vector<std::vector<Entry>> chains(10); // each from its front
    std::intptr_t cursor = 0;
    std::size_t load = 0;
    for (std::intptr_t i = 1; i <= 60000; ++i) {
        const std::size_t key = random() % keys.size();
        auto &chain = chains[naive_slot(keys[key], 10)];
        const auto hit = std::find_if(chain.begin(), chain.end(), [&](const Entry &entry) { return entry.key == key; });
        const auto take = [&](std::vector<Entry> &from, std::vector<Entry>::iterator entry) {
            cursor = entry != from.begin() ? entry[-1].data : from.size() > 1 ? entry[1].data : 0;
            from.erase(entry);
            --load;
        };
        switch (random() % 8) {
        case 0:
        case 1:
        case 2:
            if (load < 100) {
                chain.insert(chain.begin(), {key, i});
                cursor = i;
                ++load;
                ASSERT_EQ(insert(keys[key], i), succeeds(i));
            }
            break;
        case 3:
        case 4:
            if (load > 0 && hit != chain.end()) {
                take(chain, hit);
                ASSERT_EQ(remove(keys[key]), succeeds(cursor));
            } else if (load > 0) {
                ASSERT_EQ(remove(keys[key]), fails(LM_NOT_FOUND));
            }
            break;
        case 5:
            if (hit != chain.end())
                cursor = hit->data;
            ASSERT_EQ(find(keys[key]), hit != chain.end() ? succeeds(cursor) : fails(LM_NOT_FOUND));
            break;
        case 6:
            if (hit != chain.end())
                hit->data = cursor = i;
            ASSERT_EQ(by_key(list, LM_OP_UPDATE, keys[key], i),
                      hit != chain.end() ? succeeds(i) : fails(LM_NOT_FOUND));
            break;
        default:
            for (auto &from : chains) { // by cursor, but not the head of a slot other than 0
                const auto at = std::find_if(from.begin() + (&from != &chains[0] && !from.empty()), from.end(),
                                             [&](const Entry &entry) { return entry.data == cursor; });
                if (at != from.end()) {
                    take(from, at);
                    ASSERT_EQ(operate(list, LM_OP_DELETE), succeeds(cursor));
                    break;
                }
            }
            ASSERT_EQ(operate(list, LM_OP_CURRENT), succeeds(cursor));
        }
        ASSERT_EQ(load_of(list), static_cast<CS_INT>(load)) << i;
        if (i % 32 == 0) {
            Numbers expected;
            for (const auto &each : chains)
                for (const Entry &entry : each)
                    expected.push_back(entry.data);
            ASSERT_EQ(walk(list), expected) << i;
        }
        if (i % 4096 == 0) {
            ASSERT_TRUE(memory.all_wiped());
            memory.forget_released();
        }
    }
}

} // namespace
