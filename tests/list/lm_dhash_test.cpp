// The open-addressed hash table.
#include "support/debug_output.h"
#include "support/lists.h"
#include "support/naive_key_hash.h"

#include <random>
#include <vector>

using namespace support;

namespace {

constexpr const char *STEM = "lm_dhash";
using Numbers = std::vector<std::intptr_t>;

std::size_t start_of(std::string_view key, std::uint32_t slots) {
    return (std::size_t{naive_slot(key, slots)} + naive_increment(key, slots)) % slots;
}

class LmDhash : public ListTest {
protected:
    void SetUp() override {
        ListTest::SetUp();
        list = make(LM_DHASH);
    }
    Answer insert(std::string_view key, std::intptr_t data) { return by_key(list, LM_OP_INSERT, key, data); }
    Answer find(std::string_view key) { return by_key(list, LM_OP_FIND, key); }
    Answer remove(std::string_view key) { return by_key(list, LM_OP_DELETE, key); }
    DHashInfo &info() { return *static_cast<DHashInfo *>(list->list_state); }
    void fill() {
        for (std::size_t i = 0; i < 10; ++i)
            ASSERT_EQ(insert(std::string_view("abcdefghij").substr(i, 1), static_cast<std::intptr_t>(i + 1)),
                      succeeds(static_cast<std::intptr_t>(i + 1)));
    }

    LM_HANDLE *list = nullptr;
};
using LmDhashDeathTest = LmDhash;

TEST_F(LmDhash, EverySlotHasANodeFromTheStart) {
    EXPECT_EQ(info().state, LM_INITIALIZED);
    EXPECT_EQ(info().table_size, 10);
    EXPECT_EQ(info().home_addr_hfunc, &lm__api_key_to_hash);
    EXPECT_EQ(info().incr_hfunc, &lm__api_key_to_hash2);
    for (CS_INT slot = 0; slot < 10; ++slot)
        EXPECT_EQ(info().table[slot]->state, LM_INITIALIZED);
}

TEST_F(LmDhash, ProbesStepByOneFromTheStartSlot) {
    const std::size_t start = start_of("key", 10);
    for (std::size_t i = 0; i < 10; ++i) {
        insert("key", static_cast<std::intptr_t>(i));
        EXPECT_EQ(info().table[(start + i) % 10], list->cur_ptr);
        EXPECT_EQ(list->cur_ptr->state, LM_SET);
        EXPECT_EQ(list->cur_ptr->previous, nullptr);
        EXPECT_EQ(list->cur_ptr->next, nullptr);
    }
}

TEST_F(LmDhashDeathTest, TenSlotsTakeTenEntriesAndTheEleventhIsBroken) {
    fill();
    EXPECT_EQ(load_of(list), 10);
    expect_broken(STEM, [&] { return insert("k", 11).status; });
    EXPECT_EQ(load_of(list), 10);
    EXPECT_EQ(find("j"), succeeds(10));
    EXPECT_EQ(find("k"), fails(LM_NOT_FOUND));
}

TEST_F(LmDhash, OddityALongerStoredKeyIsFoundByItsBeginning) {
    insert("abcd", 1);
    EXPECT_EQ(find("ab"), succeeds(1)) << "a lookup sees every slot";
    EXPECT_EQ(find("abcd"), succeeds(1));
    EXPECT_EQ(find(""), succeeds(1));
    EXPECT_EQ(find("b"), fails(LM_NOT_FOUND));
}

TEST_F(LmDhash, AShorterStoredKeyDoesNotMatchAndIsNotReadPastItsEnd) {
    const std::vector<char> exact = {'a', 'b'};
    operate(list, LM_OP_INSERT, const_cast<char *>(exact.data()), 2, 1);
    EXPECT_EQ(find("abc"), fails(LM_NOT_FOUND));
    EXPECT_EQ(find("ab"), succeeds(1));
}

TEST_F(LmDhash, AVacatedSlotIsReusedAndWalkedPast) {
    const std::size_t start = start_of("key", 10);
    insert("key", 1);
    insert("keys", 2);
    insert("key", 3);
    find("key");
    ASSERT_EQ(info().table[start], list->cur_ptr);
    EXPECT_EQ(operate(list, LM_OP_DELETE), succeeds(0)) << "the cursor stays on the empty slot";
    EXPECT_EQ(list->cur_ptr, info().table[start]);
    EXPECT_EQ(list->cur_ptr->state, LM_UNSET);
    EXPECT_EQ(list->cur_ptr->key, nullptr);
    EXPECT_EQ(list->cur_ptr->key_size, 0);
    EXPECT_EQ(list->cur_ptr->data, nullptr);
    EXPECT_EQ(load_of(list), 2);
    EXPECT_EQ(find("key").status, CS_SUCCEED) << "behind it";
    EXPECT_EQ(insert("key", 4), succeeds(4));
    EXPECT_EQ(info().table[start], list->cur_ptr);
}

TEST_F(LmDhash, MissesLeaveAll) {
    insert("a", 1);
    for (const CS_INT operation : {LM_OP_FIND, LM_OP_DELETE, LM_OP_UPDATE})
        EXPECT_EQ(by_key(list, operation, "x", 9), fails(LM_NOT_FOUND));
    EXPECT_EQ(operate(list, LM_OP_CURRENT), succeeds(1));
    EXPECT_EQ(load_of(list), 1);
}

TEST_F(LmDhash, ADeleteByKeyMissesInAnEmptyTableToo) {
    EXPECT_EQ(remove("x"), fails(LM_NOT_FOUND));
    EXPECT_EQ(load_of(list), 0);
}

TEST_F(LmDhash, UpdateByKeyAndByCursor) {
    insert("a", 1);
    insert("b", 2);
    EXPECT_EQ(by_key(list, LM_OP_UPDATE, "a", 10), succeeds(10));
    EXPECT_EQ(operate(list, LM_OP_UPDATE, nullptr, LM_UNUSED, 11), succeeds(11));
    EXPECT_EQ(find("a"), succeeds(11));
    EXPECT_EQ(find("b"), succeeds(2));
}

TEST_F(LmDhash, ATableOfOneSlotDoesNotDivideByZero) {
    LM_HANDLE *one = make_table(LM_DHASH, 1);
    EXPECT_EQ(by_key(one, LM_OP_INSERT, "a", 1), succeeds(1));
    EXPECT_EQ(by_key(one, LM_OP_FIND, "a"), succeeds(1));
}

TEST_F(LmDhash, PrintsPassOverEverySlotVacantOrNot) {
    EXPECT_EQ(operate(list, LM_OP_PRINT), fails());
    EXPECT_EQ(operate(list, LM_OP_PRINTALL), fails());
    EXPECT_EQ(lm_list_op(list, LM_OP_WALK, nullptr, LM_UNUSED, nullptr, nullptr), CS_FAIL);
    set_property<CS_PRINT_FUNC>(list, LM_PROP_PRINT_FUNC, collect);
    const char *key = "key";
    insert(key, 7);
    Numbers data(10, 0);
    data[start_of(key, 10)] = 7;
    DebugOutput output;
    EXPECT_EQ(walk(list), data);
    EXPECT_EQ(output.take(), "");
    walked.clear();
    EXPECT_EQ(operate(list, LM_OP_PRINTALL), succeeds(7));
    EXPECT_EQ(output.take(), "Keys:\n\nData:\n\n");
    ASSERT_EQ(walked.size(), 20u);
    EXPECT_EQ(walked[start_of(key, 10)], number_of(key));
    EXPECT_EQ(Numbers(walked.begin() + 10, walked.end()), data);
    walked.clear();
    EXPECT_EQ(operate(list, LM_OP_PRINT), succeeds(7));
    EXPECT_EQ(by_key(list, LM_OP_PRINT, "key"), succeeds(7));
    EXPECT_EQ(by_key(list, LM_OP_PRINT, "x"), fails(LM_NOT_FOUND));
    EXPECT_EQ(walked, (Numbers{7, 7}));
    stop_at = 7;
    EXPECT_EQ(operate(list, LM_OP_PRINTALL), fails());
    EXPECT_EQ(output.take(), "Keys:\n\nData:\n");
    stop_at = -1;
}

TEST_F(LmDhashDeathTest, BrokenOperations) {
    set_property<CS_PRINT_FUNC>(list, LM_PROP_PRINT_FUNC, collect);
    for (const CS_INT operation : {LM_OP_DELETE, LM_OP_UPDATE, LM_OP_PRINT})
        expect_broken(STEM, [&, operation] { return operate(list, operation).status; });
    for (const CS_INT operation : {0, 19, 24, 25, 27, 28, 32})
        expect_broken(STEM, [&, operation] { return by_key(list, operation, "a", 1).status; });
    insert("a", 1);
    insert("b", 2);
    remove("a");
    expect_broken(STEM, [&] { return operate(list, LM_OP_DELETE).status; }); // the cursor's slot is empty
    EXPECT_EQ(load_of(list), 1);
    list->hdlprop->handle_load = 0;
    expect_broken(STEM, [&] { return remove("b").status; });
    list->hdlprop->handle_load = 1;
    EXPECT_EQ(find("b"), succeeds(2));
    expect_broken(STEM, [&] { return lm___api_dhash_search(nullptr, text("a"), 1); });
    expect_broken(STEM, [&] { return lm___api_dhash_op(nullptr, LM_OP_CURRENT, nullptr, 0, nullptr, nullptr); });
    expect_broken(STEM, [] { return lm__api_dhash_init(nullptr); });
    expect_broken(STEM, [] { return lm__api_dhash_drop(nullptr); });
    expect_broken("lm_hash", [&] { return operate(list, LM_OP_INSERT, nullptr, 3, 1).status; });
}

// Against an array of slots, with keys that begin alike.
TEST_F(LmDhash, RandomOperationsAgainstNaiveSlots) {
    struct Slot {
        bool set = false;
        std::string key;
        std::intptr_t data = 0;
    };
    constexpr std::uint32_t SLOTS = 13;
    LM_HANDLE *table = make_table(LM_DHASH, SLOTS);
    std::mt19937_64 random(83005);
    std::vector<std::string> keys;
    for (int i = 0; i < 40; ++i)
        keys.push_back(std::string("ab\x80\xFF""ab\x80\xFF""abcd").substr(random() % 4, 1 + random() % 7));
    std::vector<Slot> slots(SLOTS);
    Slot *cursor = nullptr;
    CS_INT load = 0;
    for (std::intptr_t i = 1; i <= 60000; ++i) {
        const std::string &key = keys[random() % keys.size()];
        const auto probe = [&](auto wanted) -> Slot * {
            for (std::size_t step = 0; step < SLOTS; ++step)
                if (Slot &slot = slots[(start_of(key, SLOTS) + step) % SLOTS]; wanted(slot))
                    return &slot;
            return nullptr;
        };
        const auto choice = random() % 5;
        if (choice < 2) {
            if (load == SLOTS)
                continue;
            cursor = probe([](const Slot &slot) { return !slot.set; });
            *cursor = {true, key, i};
            ++load;
            ASSERT_EQ(by_key(table, LM_OP_INSERT, key, i), succeeds(i));
        } else {
            if (choice == 2 && load == 0)
                continue;
            Slot *hit = probe([&](const Slot &slot) { return slot.set && slot.key.starts_with(key); });
            const CS_INT operation = choice == 2 ? LM_OP_DELETE : choice == 3 ? LM_OP_FIND : LM_OP_UPDATE;
            if (hit != nullptr) {
                cursor = hit;
                if (operation == LM_OP_DELETE) {
                    *hit = {};
                    --load;
                } else if (operation == LM_OP_UPDATE) {
                    hit->data = i;
                }
            }
            ASSERT_EQ(by_key(table, operation, key, i), hit != nullptr ? succeeds(hit->data) : fails(LM_NOT_FOUND));
        }
        ASSERT_EQ(operate(table, LM_OP_CURRENT), succeeds(cursor != nullptr ? cursor->data : 0));
        ASSERT_EQ(load_of(table), load);
        if (i % 16 == 0) {
            Numbers expected;
            for (const Slot &slot : slots)
                expected.push_back(slot.data);
            ASSERT_EQ(walk(table), expected) << i;
        }
    }
}

} // namespace
