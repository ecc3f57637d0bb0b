// The engine where memory runs out, on every route; what it holds between calls; and the mnemonics.
#include "charset/engine_fixture.h"

#include "support/failing_allocator.h"
#include "support/unicode_text.h"

#include <gtest/gtest.h>

#include <functional>
#include <tuple>
#include <utility>

namespace {

using namespace engine;
using support::FailingAllocator;

constexpr auto SPANS = {FailingAllocator::ONCE, FailingAllocator::LASTING};

// A call with buffers that lie ready, so that only the engine asks for memory.
class Call {
public:
    Call(const char *name, CS_LOCALE *from, std::string source, CS_LOCALE *to, std::size_t room, bool in_place = false)
        : name_(name), source_(std::move(source)), room_(room), in_place_(in_place) {
        srcfmt_ = text_format(from, source_.size());
        destfmt_ = text_format(to, room);
        dest_.resize(std::max(room, source_.size()) + GUARD);
    }

    const char *name() const { return name_; }
    CS_RETCODE run(CS_CONTEXT *context) {
        std::memset(dest_.data(), GROUND, dest_.size());
        if (in_place_)
            std::memcpy(dest_.data(), source_.data(), source_.size());
        length_ = NO_LENGTH;
        return comn_charset_convert(context, CS_LC_CTYPE, &srcfmt_, in_place_ ? dest_.data() : source_.data(),
                                    &destfmt_, dest_.data(), &length_);
    }
    CS_INT length() const { return length_; }
    std::string text() const { return dest_.substr(0, static_cast<std::size_t>(std::max(length_, 0))); }
    bool is_within_room() const {
        return dest_.find_first_not_of(static_cast<char>(GROUND), std::max(room_, in_place_ ? source_.size() : 0)) ==
               std::string::npos;
    }

private:
    static constexpr std::size_t GUARD = 16;

    const char *name_;
    std::string source_;
    std::size_t room_;
    bool in_place_;
    CS_DATAFMT srcfmt_, destfmt_;
    std::string dest_;
    CS_INT length_ = NO_LENGTH;
};

class EngineMemory : public EngineTest {
protected:
    Call call(const char *name, const char *from, const std::string &source, const char *to, std::size_t room,
              bool in_place = false) {
        return {name, locale(from), source, locale(to), room, in_place};
    }
    static std::string repeated(const std::string &text, int count) {
        std::string result;
        for (int i = 0; i < count; ++i)
            result += text;
        return result;
    }
    // Every route, with text that no buffer on the stack holds.
    std::vector<Call> calls() {
        const std::string katakana = repeated("\x83\x41", 2000);
        const std::string accents = repeated("\xE4\xF6 ", 2000);
        const std::string utf8 = repeated("\xE3\x82\xA2", 2000);
        const std::string hosted = "\x0E" + repeated("\x43\x81", 2000) + "\x0F\xC1";
        const std::string units = repeated(std::string("\xA2\x30", 2), 2000);
        std::vector<Call> all;
        all.push_back(call("copy", "iso_1", accents, "iso_1", 9000));
        all.push_back(call("ASCII", "iso_1", std::string(3000, 'a'), "sjis", 9000));
        all.push_back(call("single to single", "iso_1", accents, "cp850", 9000));
        all.push_back(call("single to single, cut", "iso_1", accents, "cp850", 3000));
        all.push_back(call("single to single, in place", "iso_1", accents, "cp850", 6000, true));
        all.push_back(call("wide to wide", "sjis", katakana, "eucjis", 9000));
        all.push_back(call("wide to wide, source cut", "sjis", katakana + "\x83", "eucjis", 9000));
        all.push_back(call("single to UTF-8", "iso_1", accents, "utf8", 12000));
        all.push_back(call("single to UTF-8, cut", "iso_1", accents, "utf8", 3001));
        all.push_back(call("single to UTF-8, in place", "iso_1", accents, "utf8", 12000, true));
        all.push_back(call("wide to UTF-8", "sjis", katakana, "utf8", 12000));
        all.push_back(call("UTF-8 to single", "utf8", repeated("\xC3\xA4\xC3\xB6", 2000), "iso_1", 9000));
        all.push_back(call("UTF-8 to wide", "utf8", utf8, "sjis", 9000));
        all.push_back(call("UTF-8 to wide, cut", "utf8", utf8, "sjis", 999));
        all.push_back(call("UTF-8 to wide, replaced", "utf8", repeated("\xF0\x9F\x98\x80", 900), "sjis", 9000));
        all.push_back(call("UTF-8 to states", "utf8", utf8, "cp939", 9000));
        all.push_back(call("states to UTF-8", "cp939", hosted, "utf8", 9000));
        all.push_back(call("UTF-16 to the compression scheme", "utf16", units, "rcsu", 9000));
        all.push_back(call("UTF-8 to UTF-16", "utf8", utf8, "utf16", 9000));
        return all;
    }
};

TEST_F(EngineMemory, RunsOutOnEveryRouteWithoutHarm) {
    int failures = 0;
    for (Call &call : calls()) {
        SCOPED_TRACE(call.name());
        const CS_RETCODE whole = call.run(&context_); // the tables are there from now on
        ASSERT_NE(whole, CS_FAIL);
        const std::string text = call.text();
        int asked = 0;
        {
            const FailingAllocator counting;
            EXPECT_EQ(call.run(&context_), whole);
            asked = counting.asked();
            EXPECT_EQ(counting.held(), 0);
        }
        for (const auto span : SPANS)
            for (int n = 1; n <= asked; ++n) {
                CS_RETCODE status;
                int held;
                {
                    const FailingAllocator failing(n, span);
                    status = call.run(&context_);
                    held = failing.held();
                }
                EXPECT_EQ(held, 0) << n;
                EXPECT_TRUE(call.is_within_room()) << n;
                if (status == whole) { // by another way
                    EXPECT_EQ(call.text(), text) << n;
                } else {
                    // A handle that could not be had is a failure of the library's.
                    EXPECT_TRUE(status == CS_MEM_ERROR || status == CS_FAIL) << status;
                    EXPECT_EQ(call.length(), 0) << n;
                    ++failures;
                }
                EXPECT_EQ(call.run(&context_), whole) << "nothing stays behind";
                EXPECT_EQ(call.text(), text);
            }
    }
    EXPECT_GT(failures, 30);
}

TEST_F(EngineMemory, RunsOutForWorkBuffersWithItsOwnStatus) {
    // In place there is no other way than the buffers: two handles come first.
    Call between = call("between sets", "iso_1", repeated("\xE4", 2000), "cp850", 2000, true);
    ASSERT_EQ(between.run(&context_), CS_SUCCEED);
    const CS_RETCODE expected[] = {CS_FAIL, CS_FAIL, CS_MEM_ERROR, CS_MEM_ERROR, CS_MEM_ERROR};
    int n = 0;
    for (const CS_RETCODE status : expected) {
        const FailingAllocator failing(++n);
        EXPECT_EQ(between.run(&context_), status) << n;
    }
    const FailingAllocator failing(++n);
    EXPECT_EQ(between.run(&context_), CS_SUCCEED);
}

TEST_F(EngineMemory, RunsOutTowardsUtf8AndFromItByTheirOwnCalls) {
    const std::string bytes = repeated("\xE4", 2000), utf8 = repeated("\xC3\xA4", 2000);
    std::string room(4000, GROUND);
    CS_INT length = NO_LENGTH;
    CS_DATAFMT srcfmt = text_format(nullptr, bytes.size()), destfmt = text_format(nullptr, 1999);
    CsLocCache *const iso_1 = cache("iso_1");
    const std::function<CS_RETCODE()> calls[] = {
        [&] {
            return comn__convt_to_utf8(&context_, 0, &srcfmt, iso_1, const_cast<char *>(bytes.data()), room.data(),
                                       3999, &length);
        },
        [&] {
            return comn__convt_from_utf8(&context_, 0, reinterpret_cast<CS_BYTE *>(const_cast<char *>(utf8.data())),
                                         4000, &destfmt, iso_1, room.data(), &length);
        }};
    for (const auto &run : calls) {
        ASSERT_EQ(run(), CS_ETRUNCATED); // which takes the long way
        bool saw_memory_error = false;
        for (int n = 1;; ++n) {
            const FailingAllocator failing(n);
            length = NO_LENGTH;
            const CS_RETCODE status = run();
            EXPECT_EQ(failing.held(), 0);
            if (failing.asked() < n) {
                EXPECT_EQ(status, CS_ETRUNCATED);
                break;
            }
            EXPECT_TRUE(status == CS_MEM_ERROR || status == CS_FAIL || status == CS_ETRUNCATED);
            EXPECT_TRUE(status == CS_ETRUNCATED || length == 0);
            saw_memory_error |= status == CS_MEM_ERROR;
        }
        EXPECT_TRUE(saw_memory_error);
    }
}

// Sets that nothing else here opens: a table that could not be kept is looked for again.
TEST_F(EngineMemory, RunsOutWhileATableIsOpenedForTheFirstTime) {
    const auto sweep = [&](const char *from, const std::string &text, const char *to, const std::string &expected) {
        SCOPED_TRACE(from);
        Call first = call(from, from, text, to, 16);
        int n = 0;
        CS_RETCODE status = CS_FAIL;
        while (status != CS_SUCCEED) {
            ASSERT_LT(++n, 100);
            const FailingAllocator failing(n, FailingAllocator::LASTING);
            status = first.run(&context_);
            EXPECT_TRUE(status == CS_SUCCEED || status == CS_FAIL || status == CS_MEM_ERROR) << status;
            EXPECT_TRUE(status == CS_SUCCEED || first.length() == 0);
        }
        EXPECT_GT(n, 1) << "something has to be asked for";
        EXPECT_EQ(first.text(), expected);
    };
    sweep("greek8", "\xE1", "cp737", "\x98");
    sweep("kz1048", "\xE6", "utf8", "\xD0\xB6");
    sweep("eucgb", "\xD6\xD0", "cp936", "\xD6\xD0");
    sweep("utf8", "\xE4\xB8\xAD", "cp935", "\x0E\x5B\xCF\x0F");
}

TEST_F(EngineMemory, ShortTextAsksForNoWorkBuffers) {
    Call text = call("short", "iso_1", "\xE4 little text of a data base", "cp850", 60);
    text.run(&context_);
    const FailingAllocator counting;
    EXPECT_EQ(text.run(&context_), CS_SUCCEED);
    EXPECT_LE(counting.asked(), 2) << "the handles";
    EXPECT_EQ(counting.held(), 0);
}

// ---- Mnemonics -----------------------------------------------------------------------------------------------------

CS_UNICODE_MNEM *mnemonic(CS_USHORT unicode, const char *text) {
    auto *const node = static_cast<CS_UNICODE_MNEM *>(std::calloc(1, sizeof(CS_UNICODE_MNEM)));
    const std::size_t length = std::strlen(text);
    node->unicode = unicode;
    node->string = static_cast<CS_CHAR *>(std::malloc(length + 1));
    std::memcpy(node->string, text, length + 1);
    node->string_len = static_cast<CS_INT>(length);
    return node;
}

TEST(Mnemonics, OneIsFreedWithItsText) {
    const FailingAllocator counting;
    EXPECT_EQ(comn__drop_mnem_string(mnemonic(0xE4, "a:")), 1); // go on
    EXPECT_EQ(counting.held(), 0);
    CS_UNICODE_MNEM *const bare = mnemonic(0xE4, "");
    std::free(std::exchange(bare->string, nullptr));
    EXPECT_EQ(comn__drop_mnem_string(bare), 1);
    EXPECT_EQ(counting.held(), 0);
}

TEST(Mnemonics, NoListIsNothingToDrop) {
    CsCtxGlobals globals = {};
    CS_CONTEXT context = {};
    context.ctxglobals = &globals;
    EXPECT_EQ(comn_intl_drop_mnemdb(&context), CS_SUCCEED);
    EXPECT_EQ(globals.mnem_db, nullptr);
}

class MnemonicList : public testing::TestWithParam<std::tuple<int, int>> {};

TEST_P(MnemonicList, IsDroppedWithAllOfThem) {
    const auto [type, count] = GetParam();
    CsCtxGlobals globals = {};
    CS_CONTEXT context = {};
    context.ctxglobals = &globals;
    LM_CONTEXT *lists = nullptr;
    CS_CHAR lists_name[] = "lists", list_name[] = "mnemonics";
    const FailingAllocator counting;
    ASSERT_EQ(lm_initlm(1100, lists_name, 5, &lists), CS_SUCCEED);
    LM_HANDLE *list = nullptr;
    ASSERT_EQ(lm_list_alloc(lists, type, list_name, 9, &list), CS_SUCCEED);
    globals.mnem_db = list;
    for (int i = 0; i < count; ++i) {
        auto code = static_cast<CS_USHORT>(i);
        CS_UNICODE_MNEM *const node = mnemonic(code, "mn");
        ASSERT_EQ(type == LM_DLINK ? lm_list_op(list, LM_OP_INSERT, nullptr, LM_OP_LAST, node, nullptr)
                                   : lm_list_op(list, LM_OP_INSERT, &code, sizeof code, node, nullptr),
                  CS_SUCCEED);
    }
    EXPECT_EQ(comn_intl_drop_mnemdb(&context), CS_SUCCEED);
    EXPECT_EQ(globals.mnem_db, nullptr);
    EXPECT_EQ(lm_exit(lists, LM_UNUSED), CS_SUCCEED) << "no list is left";
    EXPECT_EQ(counting.held(), 0);
}

INSTANTIATE_TEST_SUITE_P(Of, MnemonicList,
                         testing::Combine(testing::Values(LM_DLINK, LM_CHASH), testing::Values(0, 1, 2, 300)));

} // namespace
