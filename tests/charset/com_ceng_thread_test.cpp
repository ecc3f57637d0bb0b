// Contexts of several threads that convert at once, from the first look at each table on.
#include "charset/engine_fixture.h"

#include <gtest/gtest.h>

#include <barrier>
#include <random>
#include <thread>

namespace {

using namespace engine;

constexpr int THREADS = 8;

// Text that every set has something of.
const std::string UTF8 = "Az 1\xC3\xA9\xD0\x96\xCE\xB1\xE0\xB8\x81\xE6\x97\xA5\xED\x95\x9C\xEF\xBD\xB1!";

struct Converted {
    std::string from_utf8, to_utf8, between;
    bool operator==(const Converted &) const = default;
};

std::string converted(CS_CONTEXT *context, CS_LOCALE *from, const std::string &source, CS_LOCALE *to) {
    CS_DATAFMT srcfmt = text_format(from, source.size()), destfmt = text_format(to, 200);
    std::string dest(200, '\0');
    CS_INT length = 0;
    EXPECT_EQ(comn_charset_convert(context, CS_LC_CTYPE, &srcfmt, const_cast<char *>(source.data()), &destfmt,
                                   dest.data(), &length),
              CS_SUCCEED);
    return dest.substr(0, static_cast<std::size_t>(length));
}

// All ways to and from a set, by a context of the thread's own.
Converted convert_all(CsCtxGlobals &globals, Locale &set, CS_LOCALE *utf8, CS_LOCALE *other) {
    CS_CONTEXT context = {};
    context.ctxglobals = &globals;
    Converted result;
    std::string room(200, '\0'), source = UTF8;
    CS_DATAFMT format = text_format(nullptr, 200);
    CS_INT length = 0;
    EXPECT_EQ(comn__convt_from_utf8(&context, 0, reinterpret_cast<CS_BYTE *>(source.data()),
                                    static_cast<CS_INT>(source.size()), &format, &set.cache, room.data(), &length),
              CS_SUCCEED);
    result.from_utf8 = room.substr(0, static_cast<std::size_t>(length));
    result.to_utf8 = converted(&context, &set.record, result.from_utf8, utf8);
    result.between = converted(&context, &set.record, result.from_utf8, other);
    return result;
}

TEST(EngineThreads, OpenEveryTableAtOnceAndGetTheSameText) {
    Shipped &shipped = Shipped::instance();
    const std::vector<CSID_CSNAME> sets = shipped_sets();
    // Loading sets is the business of another lock: they are there before the threads are.
    std::vector<Locale *> locales;
    for (const CSID_CSNAME &row : sets)
        locales.push_back(&shipped[name_of(row)]);
    CS_LOCALE *const utf8 = &shipped["utf8"].record, *const big5 = &shipped["big5"].record;

    std::vector<std::vector<Converted>> results(THREADS, std::vector<Converted>(sets.size()));
    std::barrier start(THREADS);
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < THREADS; ++thread)
            threads.emplace_back([&, thread] {
                // Half of them go the same way, so that they meet at each table.
                std::vector<std::size_t> order(sets.size());
                for (std::size_t i = 0; i < order.size(); ++i)
                    order[i] = i;
                if (thread % 2 != 0)
                    std::ranges::shuffle(order, std::mt19937_64(static_cast<unsigned>(thread)));
                start.arrive_and_wait();
                for (const std::size_t i : order)
                    results[static_cast<std::size_t>(thread)][i] =
                        convert_all(shipped.globals(), *locales[i], utf8, big5);
            });
    }
    for (std::size_t i = 0; i < sets.size(); ++i) {
        const Converted alone = convert_all(shipped.globals(), *locales[i], utf8, big5);
        EXPECT_FALSE(alone.from_utf8.empty());
        for (int thread = 0; thread < THREADS; ++thread)
            EXPECT_TRUE(results[static_cast<std::size_t>(thread)][i] == alone) << name_of(sets[i]) << ' ' << thread;
    }
}

// What the application installed belongs to its context.
CS_RETCODE own(CS_CONTEXT *, CS_DATAFMT *, CS_VOID *, CS_DATAFMT *, CS_VOID *dest, CS_INT *destlen) {
    std::memcpy(dest, "own", 3);
    *destlen = 3;
    return CS_SUCCEED;
}

TEST(EngineThreads, ConversionsOfTheApplicationDoNotMeet) {
    Shipped &shipped = Shipped::instance();
    CS_LOCALE *const iso_1 = &shipped["iso_1"].record, *const cp850 = &shipped["cp850"].record;
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < THREADS; ++thread)
        threads.emplace_back([&, thread] {
            CS_CONTEXT context = {};
            context.ctxglobals = &shipped.globals();
            CS_CHAR from[] = "iso_1", to[] = "cp850";
            CS_CONV_FUNC function = own;
            for (int i = 0; i < 200; ++i) {
                const bool installed = (i + thread) % 2 == 0;
                const CS_INT action = installed ? CS_USERCONV_SET : CS_USERCONV_CLEAR;
                EXPECT_EQ(comn_set_user_charset_convert(&context, action, from, 5, to, 5, nullptr, &function),
                          CS_SUCCEED);
                EXPECT_EQ(converted(&context, iso_1, "\xE4", cp850), installed ? "own" : "\x84");
            }
            comn_drop_user_charconv_list(&context);
        });
}

} // namespace
