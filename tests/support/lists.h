// A context of lists over watched memory, and the calls that tests make of it.
#ifndef TESTS_SUPPORT_LISTS_H
#define TESTS_SUPPORT_LISTS_H

#include "support/assertions.h"
#include "support/watched_memory.h"

#include <dlxcomn/dlxcomn.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace support {

inline CS_CHAR *text(const char *characters) { return const_cast<CS_CHAR *>(characters); }

// Data of entries: numbers in the guise of pointers.
inline CS_VOID *datum(std::intptr_t number) { return reinterpret_cast<CS_VOID *>(number); }
inline std::intptr_t number_of(const CS_VOID *data) { return reinterpret_cast<std::intptr_t>(data); }
inline CS_VOID *const UNTOUCHED = datum(-1);

// The call breaks a contract: it ends the process with a report of generic/src/`stem`.cpp, and where
// assertions return it reports at least once and gives `answer`.
inline void expect_broken(const std::string &stem, const std::function<CS_RETCODE()> &call,
                          CS_RETCODE answer = CS_FAIL) {
    EXPECT_DEATH(call(), "(assertion failed,|Invalid NULL pointer ,) file 'generic/src/" + stem +
                             "\\.cpp' line [0-9]+");
    ReturningAssertions returning;
    EXPECT_EQ(call(), answer);
    EXPECT_GE(returning.count(), 1);
}

// The status of an operation and what it answered.
struct Answer {
    CS_RETCODE status;
    CS_VOID *data;

    bool operator==(const Answer &) const = default;
};
inline std::ostream &operator<<(std::ostream &stream, const Answer &answer) {
    return stream << "status " << answer.status << ", data " << number_of(answer.data);
}
inline Answer succeeds(std::intptr_t number) { return {CS_SUCCEED, datum(number)}; }
inline Answer fails(CS_RETCODE status = CS_FAIL) { return {status, UNTOUCHED}; }

inline Answer operate(LM_HANDLE *list, CS_INT operation, CS_VOID *key = nullptr, CS_INT key_size = LM_UNUSED,
                      std::intptr_t data = 0) {
    Answer answer = {CS_FAIL, UNTOUCHED};
    if (list->hdlprop->list_type == LM_STACK) {
        CS_VOID *where = &answer.data;
        answer.status = lm_list_op(list, operation, key, key_size, datum(data), &where);
    } else {
        answer.status = lm_list_op(list, operation, key, key_size, datum(data), &answer.data);
    }
    return answer;
}
// By a key of a table.
inline Answer by_key(LM_HANDLE *list, CS_INT operation, std::string_view key, std::intptr_t data = 0) {
    return operate(list, operation, const_cast<char *>(key.data()), static_cast<CS_INT>(key.size()), data);
}

// A walk collects into here; the function ends it at `stop_at`.
inline std::vector<std::intptr_t> walked;
inline std::intptr_t stop_at = -1;
inline CS_INT collect(CS_VOID *data) {
    walked.push_back(number_of(data));
    return number_of(data) != stop_at;
}
inline std::vector<std::intptr_t> walk(LM_HANDLE *list) {
    walked.clear();
    stop_at = -1;
    CS_PRINT_FUNC function = collect;
    EXPECT_EQ(lm_list_op(list, LM_OP_WALK, nullptr, LM_UNUSED, &function, nullptr), CS_SUCCEED);
    return walked;
}

template <class Value>
Value property(LM_HANDLE *list, CS_INT which) {
    Value value = {};
    CS_INT length = -1;
    EXPECT_EQ(lm_list_prop(list, LM_ACT_GET, which, &value, LM_UNUSED, &length), CS_SUCCEED);
    EXPECT_EQ(length, static_cast<CS_INT>(sizeof value));
    return value;
}
inline CS_INT load_of(LM_HANDLE *list) { return property<CS_INT>(list, LM_PROP_HANDLE_LOAD); }
template <class Value>
CS_RETCODE set_property(LM_HANDLE *list, CS_INT which, Value value) {
    return lm_list_prop(list, LM_ACT_SET, which, &value, LM_UNUSED, nullptr);
}
template <class Value>
Value property(LM_CONTEXT *context, CS_INT which) {
    Value value = {};
    CS_INT length = -1;
    EXPECT_EQ(lm_property(context, LM_ACT_GET, which, &value, LM_UNUSED, &length), CS_SUCCEED);
    EXPECT_EQ(length, static_cast<CS_INT>(sizeof value));
    return value;
}
template <class Value>
CS_RETCODE set_property(LM_CONTEXT *context, CS_INT which, Value value) {
    return lm_property(context, LM_ACT_SET, which, &value, LM_UNUSED, nullptr);
}

class ListTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(lm_initlm_ex(16001, text("lists"), LM_NULLTERM, &context, WatchedMemory::allocate,
                               WatchedMemory::release, &memory),
                  CS_SUCCEED);
    }
    // However a test leaves its lists: all goes back, once, wiped.
    void TearDown() override {
        memory.succeed();
        if (context != nullptr) {
            EXPECT_EQ(lm_exit(context, LM_FORCE_EXIT), CS_SUCCEED);
        }
        EXPECT_EQ(memory.held(), 0u);
        EXPECT_EQ(memory.strangers(), 0);
        EXPECT_TRUE(memory.all_wiped());
    }

    LM_HANDLE *make(CS_INT type, const char *name = "list") {
        LM_HANDLE *list = nullptr;
        EXPECT_EQ(lm_list_alloc(context, type, text(name), LM_NULLTERM, &list), CS_SUCCEED);
        return list;
    }
    LM_HANDLE *make_table(CS_INT type, CS_INT slots) {
        EXPECT_EQ(set_property(context, LM_PROP_MAX_TABLESIZE, slots), CS_SUCCEED);
        return make(type);
    }

    WatchedMemory memory;
    LM_CONTEXT *context = nullptr;
};

} // namespace support

#endif
