// Packing parameters, building the text of a message, and raising it.
#include "support/assertions.h"
#include "support/failing_allocator.h"
#include "support/messages.h"
#include "support/null_calls.h"
#include "support/temp_home.h"

#include <dlxintl/intl.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using support::FailingAllocator;
using support::MESSAGE_FILE;
using support::MessageContext;
using support::MessageLanguage;
using support::NullCalls;
using support::ReturningAssertions;

constexpr CS_MSGNUM number_of(CS_MSGNUM layer, CS_MSGNUM origin, CS_MSGNUM severity, CS_MSGNUM number) {
    return layer << 24 | origin << 16 | severity << 8 | number;
}

const std::string DEFAULTS = "[comdefaults]\n1 = ZZZZZ, \"file: no memory\"\n2 = ZZZZZ, \"file: no layer\"\n"
                             "3 = ZZZZZ, \"file: no origin\"\n4 = ZZZZZ, \"file: no message\"\n";
const std::string LAYERS = "[comlayer]\n1 = ZZZZZ, \"common library\"\n";
const std::string ORIGINS = "[comorigin]\n4 = ZZZZZ, \"user api\"\n5 = ZZZZZ, \"localization\"\n";
const std::string MESSAGES = "[comapierror]\n"
                             "1 = 01004, \"Plain.\"\n"
                             "2 = 22003, \"The value of %1! is bad.\"\n"
                             "3 = 22004, \"%1! and %2!.\"\n"
                             "4 = 22005, \"100%s %d %n %% %1! of %2!\"\n"
                             "5 = 22006, \"Needs %4!.\"\n"
                             "6 = 1234567, \"\"\n";
const std::string WHOLE_FILE = DEFAULTS + LAYERS + ORIGINS + MESSAGES;
const std::string BEFORE = "comn_call: common library: user api: ";

// What the callback was told last.
struct Told {
    int calls = 0;
    CS_CLIENTMSG message = {};
    CS_CONTEXT *context = nullptr;
    std::thread::id thread;
    CS_RETCODE answer = CS_SUCCEED;
};
thread_local Told told;

CS_RETCODE note(CS_CONTEXT *context, CS_CLIENTMSG *message) {
    ++told.calls;
    told.message = *message;
    told.context = context;
    told.thread = std::this_thread::get_id();
    return told.answer;
}

std::string text_of(const CS_CLIENTMSG &message) {
    EXPECT_EQ(std::strlen(message.msgstring), static_cast<std::size_t>(message.msgstringlen));
    return {message.msgstring, static_cast<std::size_t>(message.msgstringlen)};
}
std::string sqlstate_of(const CS_CLIENTMSG &message) {
    EXPECT_EQ(std::strlen(reinterpret_cast<const char *>(message.sqlstate)),
              static_cast<std::size_t>(message.sqlstatelen));
    return reinterpret_cast<const char *>(message.sqlstate);
}

class Messages : public testing::Test {
protected:
    Messages() {
        told = {};
        home_.write(MESSAGE_FILE, WHOLE_FILE);
        EXPECT_EQ(com_errinit(context()), CS_SUCCEED);
        context()->ctxerrfunc = note;
        com_ep_s(&one_, api_);
    }
    void write(const std::string &content) { home_.write(MESSAGE_FILE, content); }
    // An application that starts with such a file.
    void start_with(const std::string &content) {
        write(content);
        language_.drop();
        com_errinit(context());
    }
    CS_CONTEXT *context() { return context_.get(); }
    CS_ERRHAN *catalog() { return context_.catalog(); }

    std::string raised(CS_MSGNUM msgnum, CsErrParams &params) {
        const int calls = told.calls;
        EXPECT_EQ(com__error(context(), msgnum, &params), told.answer);
        EXPECT_EQ(told.calls, calls + 1);
        return text_of(told.message);
    }
    std::string raised(CS_MSGNUM number) { return raised(number_of(1, 4, 2, number), one_); }

    // Builds in a buffer of exactly `room` bytes.
    CS_RETCODE build(CsErrParams &params, CS_MSGNUM msgnum, CS_BOOL truncate, CS_INT room, std::string &text,
                     CS_INT &length, CS_CHAR *errbuf = nullptr, CS_INT errlen = 0) {
        std::vector<CS_CHAR> buffer(static_cast<std::size_t>(room) + 1, '~');
        const CS_RETCODE status = com_notrunc_errmsg(context(), catalog(), msgnum, &params, errbuf, errlen, 4, truncate,
                                                     buffer.data(), room, &length);
        EXPECT_EQ(buffer.back(), '~') << "behind the room";
        text.assign(buffer.data(), static_cast<std::size_t>(room));
        return status;
    }

    support::TempHome home_;
    MessageLanguage language_;
    MessageContext context_{language_};
    CS_CHAR api_[10] = "comn_call";
    CsErrParams one_ = {};
};

// ---- Parameters ---------------------------------------------------------------------------------------------------

TEST(MessageParameters, ArePacked) {
    CS_CHAR one[] = "one", two[] = "two", three[] = "three";
    CS_INT four = 4, five = 5;
    const auto expect = [](const CsErrParams &ep, CS_INT count, const char *format, CS_VOID *param1, CS_INT type2,
                           CS_VOID *param2, CS_INT type3, CS_VOID *param3) {
        EXPECT_EQ(ep.ep_numparams, count);
        EXPECT_STREQ(ep.ep_format, format);
        EXPECT_EQ(ep.ep_type1, 0);
        EXPECT_EQ(ep.ep_param1, param1);
        if (count >= 2) {
            EXPECT_EQ(ep.ep_type2, type2);
            EXPECT_EQ(ep.ep_param2, param2);
        }
        if (count >= 3) {
            EXPECT_EQ(ep.ep_type3, type3);
            EXPECT_EQ(ep.ep_param3, param3);
        }
    };
    CsErrParams ep;
    const auto fresh = [&ep] { std::memset(static_cast<void *>(&ep), 0xEE, sizeof ep); };
    fresh();
    EXPECT_EQ(com_ep_s(&ep, one), CS_SUCCEED);
    expect(ep, 1, "%s", one, 0, nullptr, 0, nullptr);
    fresh();
    EXPECT_EQ(com_ep_sd(&ep, one, &four), CS_SUCCEED);
    expect(ep, 2, "%d", one, 8, &four, 0, nullptr);
    fresh();
    EXPECT_EQ(com_ep_ss(&ep, one, two), CS_SUCCEED);
    expect(ep, 2, "%s", one, 0, two, 0, nullptr);
    fresh();
    EXPECT_EQ(com_ep_sss(&ep, one, two, three), CS_SUCCEED);
    expect(ep, 3, "%s %s", one, 0, two, 0, three);
    fresh();
    EXPECT_EQ(com_ep_sds(&ep, one, &four, three), CS_SUCCEED);
    expect(ep, 3, "%d %s", one, 8, &four, 0, three);
    fresh();
    EXPECT_EQ(com_ep_sdd(&ep, one, &four, &five), CS_SUCCEED);
    expect(ep, 3, "%d %d", one, 8, &four, 8, &five);
    fresh();
    EXPECT_EQ(com_ep_ssd(&ep, one, two, &five), CS_SUCCEED);
    expect(ep, 3, "%s %d", one, 0, two, 8, &five);
}

TEST(MessageParametersDeathTest, NeedEachOfThem) {
    CS_CHAR text[] = "text";
    CS_INT number = 4;
    CsErrParams ep = {};
    NullCalls calls;
    NULL_CALLS(calls, com_ep_s, CS_FAIL, &ep, text);
    NULL_CALLS(calls, com_ep_sd, CS_FAIL, &ep, text, &number);
    NULL_CALLS(calls, com_ep_ss, CS_FAIL, &ep, text, text);
    // The last three have four.
    CsErrParams *const none = nullptr;
    CS_CHAR *const no_text = nullptr;
    CS_INT *const no_number = nullptr;
    for (const auto &run : std::vector<std::function<long()>>{
             [=, &ep] { return com_ep_sss(none, no_text, no_text, no_text); },
             [&] { return com_ep_sss(&ep, no_text, text, text); },
             [&] { return com_ep_sss(&ep, text, no_text, text); },
             [&] { return com_ep_sss(&ep, text, text, no_text); },
             [&] { return com_ep_sds(none, text, &number, text); },
             [&] { return com_ep_sds(&ep, no_text, &number, text); },
             [&] { return com_ep_sds(&ep, text, no_number, text); },
             [&] { return com_ep_sds(&ep, text, &number, no_text); },
             [&] { return com_ep_sdd(none, text, &number, &number); },
             [&] { return com_ep_sdd(&ep, no_text, &number, &number); },
             [&] { return com_ep_sdd(&ep, text, no_number, &number); },
             [&] { return com_ep_sdd(&ep, text, &number, no_number); },
             [&] { return com_ep_ssd(none, text, text, &number); },
             [&] { return com_ep_ssd(&ep, no_text, text, &number); },
             [&] { return com_ep_ssd(&ep, text, no_text, &number); },
             [&] { return com_ep_ssd(&ep, text, text, no_number); },
         })
        calls.add("four operands", run, CS_FAIL);
    calls.expect_reports("comerhan");
    calls.expect_answers([] {}, [&] { EXPECT_EQ(ep.ep_numparams, 0); });
}

// ---- Raising ------------------------------------------------------------------------------------------------------

TEST_F(Messages, CallbackReceivesTheWholeRecord) {
    EXPECT_EQ(raised(number_of(1, 4, 7, 1), one_), BEFORE + "Plain.");
    EXPECT_EQ(told.context, context());
    EXPECT_EQ(told.thread, std::this_thread::get_id());
    EXPECT_EQ(told.message.severity, 7);
    EXPECT_EQ(told.message.msgnumber, 0x01040701u);
    EXPECT_EQ(sqlstate_of(told.message), "01004");
    EXPECT_EQ(told.message.osnumber, 0);
    EXPECT_EQ(told.message.osstringlen, 0);
    EXPECT_STREQ(told.message.osstring, "");
}

TEST_F(Messages, AnswerIsTheCallbacks) {
    for (const CS_RETCODE answer : {CS_RETCODE{CS_SUCCEED}, CS_RETCODE{CS_FAIL}, CS_RETCODE{-12345}}) {
        told.answer = answer;
        EXPECT_EQ(com__error(context(), 0x01040201, &one_), answer);
    }
    EXPECT_EQ(told.calls, 3);
}

TEST_F(Messages, WithoutAMessageFileTheBuiltInTextsAreTold) {
    home_.remove(MESSAGE_FILE);
    language_.drop();
    ASSERT_EQ(com_errinit(context()), CS_ENOLOCFILE);
    CS_CHAR init[] = "comn_init_cfg";
    CsErrParams params;
    com_ep_s(&params, init);
    EXPECT_EQ(raised(17040898, params),
              "comn_init_cfg: unable to get layer message string: unable to get origin message string: unable to get "
              "error string");
    EXPECT_EQ(sqlstate_of(told.message), "ZZZZZ");
    EXPECT_EQ(told.message.sqlstatelen, 5);
    EXPECT_EQ(told.message.severity, 6) << "17040898 is 0x01040602";
    EXPECT_EQ(told.message.msgnumber, 17040898u);
}

TEST_F(Messages, WithoutACatalogTheBuiltInTextsAreTold) {
    com_errdrop(context());
    EXPECT_EQ(raised(1),
              "comn_call: unable to get layer message string: unable to get origin message string: unable to get error "
              "string");
    EXPECT_EQ(sqlstate_of(told.message), "ZZZZZ");
}

TEST_F(Messages, MissingTextsDegradeToTheDefaultsOfTheFile) {
    EXPECT_EQ(raised(number_of(2, 4, 0, 1), one_), "comn_call: file: no layer: user api: Plain.");
    EXPECT_EQ(sqlstate_of(told.message), "01004");
    EXPECT_EQ(raised(number_of(1, 9, 0, 1), one_), "comn_call: common library: file: no origin: Plain.");
    EXPECT_EQ(raised(99), BEFORE + "file: no message");
    EXPECT_EQ(sqlstate_of(told.message), "ZZZZZ");
    // Defaults are cached, so they are told when the file has gone.
    home_.remove(MESSAGE_FILE);
    EXPECT_EQ(raised(number_of(3, 7, 0, 8), one_), "comn_call: file: no layer: file: no origin: file: no message");
    home_.home().put(std::nullopt);
    EXPECT_EQ(raised(number_of(3, 7, 0, 8), one_), "comn_call: file: no layer: file: no origin: file: no message");
}

TEST_F(Messages, ADefaultThatIsMissingDegradesToTheBuiltInOne) {
    start_with("[comdefaults]\n2 = ZZZZZ, \"file: no layer\"\n" + LAYERS + ORIGINS + MESSAGES);
    EXPECT_EQ(raised(number_of(3, 7, 0, 8), one_),
              "comn_call: file: no layer: unable to get origin message string: unable to get error string");
}

TEST_F(Messages, AllBytesOfTheNumberAreUnsigned) {
    start_with(DEFAULTS +
               "[comlayer]\n255 = Z, \"top\"\n[comorigin]\n254 = Z, \"second\"\n[comapierror]\n253 = Z, \"m\"\n");
    EXPECT_EQ(raised(0xFFFEFCFD, one_), "comn_call: top: second: m");
    EXPECT_EQ(told.message.severity, 0xFC);
    EXPECT_EQ(told.message.msgnumber, 0xFFFEFCFDu);
}

TEST_F(Messages, CodeOfSevenBytesFits) {
    EXPECT_EQ(raised(6), BEFORE);
    EXPECT_EQ(sqlstate_of(told.message), "1234567");
    EXPECT_EQ(told.message.sqlstatelen, 7);
}

TEST_F(Messages, MessageOfTheLocalizationIsTheTextOfItsCode) {
    for (const CS_MSGNUM code : {1u, 9u, 11u, 200u}) {
        EXPECT_EQ(raised(number_of(1, 5, 1, code), one_),
                  "comn_call: common library: localization: " + std::string(intl_errstr(-static_cast<int>(code))));
        EXPECT_EQ(sqlstate_of(told.message), code == 1 ? "01004" : "ZZZZZ") << "of the number in the API section";
    }
}

TEST_F(Messages, LongParameterIsCutAt1023Bytes) {
    std::string value(3000, 'v');
    CsErrParams params;
    com_ep_ss(&params, api_, value.data());
    // A text that does not fit behind its template cannot be filled.
    EXPECT_EQ(raised(number_of(1, 4, 2, 2), params), BEFORE + "The value of %1! is bad.");
    std::string name(3000, 'n');
    com_ep_s(&params, name.data());
    EXPECT_EQ(raised(number_of(1, 4, 2, 2), params), name.substr(0, 1023));
    EXPECT_EQ(told.message.msgstringlen, 1023);
    for (std::size_t length = 970; length < 1030; ++length) {
        name.assign(length, 'n');
        com_ep_s(&params, name.data());
        EXPECT_EQ(raised(number_of(1, 4, 2, 1), params), (name + ": common library: user api: Plain.").substr(0, 1023));
    }
}

TEST_F(Messages, LongTextOfTheFileIsCutAt1023Bytes) {
    const std::string text(900, 't');
    start_with(DEFAULTS + "[comlayer]\n1 = Z, \"" + text + "\"\n[comorigin]\n4 = Z, \"" + text +
               "\"\n[comapierror]\n1 = 01004, \"" + text + "\"\n");
    EXPECT_EQ(raised(1), ("comn_call: " + text + ": " + text + ": " + text).substr(0, 1023));
}

TEST_F(Messages, PercentSignsAreNoFormats) {
    CS_CHAR wild[] = "%s%n%d%1!%%", other[] = "%2!";
    CsErrParams params;
    com_ep_sss(&params, wild, wild, other);
    EXPECT_EQ(raised(number_of(1, 4, 2, 3), params), "%s%n%d%1!%%: common library: user api: %s%n%d%1!%% and %2!.");
    com_ep_sss(&params, api_, wild, other);
    EXPECT_EQ(raised(number_of(1, 4, 2, 4), params), BEFORE + "100%s %d %n % %s%n%d%1!%% of %2!");
    EXPECT_EQ(raised(4), BEFORE + "100%s %d %n %% %1! of %2!") << "with one parameter the template stands";
    start_with(DEFAULTS +
               "[comlayer]\n1 = Z, \"%n\"\n[comorigin]\n4 = Z, \"%s%s\"\n[comapierror]\n1 = \"%n\", \"%s%n\"\n");
    EXPECT_EQ(raised(1), "comn_call: %n: %s%s: %s%n");
    EXPECT_EQ(sqlstate_of(told.message), "%n");
}

TEST_F(Messages, ParametersFillTheTemplate) {
    CS_CHAR one[] = "alpha", two[] = "beta";
    CS_INT four = -4, five = 2147483647;
    CsErrParams params;
    com_ep_ss(&params, api_, one);
    EXPECT_EQ(raised(number_of(1, 4, 2, 2), params), BEFORE + "The value of alpha is bad.");
    com_ep_sd(&params, api_, &four);
    EXPECT_EQ(raised(number_of(1, 4, 2, 2), params), BEFORE + "The value of -4 is bad.");
    com_ep_sss(&params, api_, one, two);
    EXPECT_EQ(raised(number_of(1, 4, 2, 3), params), BEFORE + "alpha and beta.");
    com_ep_sds(&params, api_, &four, two);
    EXPECT_EQ(raised(number_of(1, 4, 2, 3), params), BEFORE + "-4 and beta.");
    com_ep_sdd(&params, api_, &four, &five);
    EXPECT_EQ(raised(number_of(1, 4, 2, 3), params), BEFORE + "-4 and 2147483647.");
    com_ep_ssd(&params, api_, one, &five);
    EXPECT_EQ(raised(number_of(1, 4, 2, 3), params), BEFORE + "alpha and 2147483647.");
}

TEST_F(Messages, TemplateThatCannotBeFilledIsToldRaw) {
    CS_CHAR one[] = "alpha";
    CsErrParams params;
    com_ep_ss(&params, api_, one);
    EXPECT_EQ(raised(number_of(1, 4, 2, 5), params), BEFORE + "Needs %4!.") << "no such parameter";
    EXPECT_EQ(sqlstate_of(told.message), "22006");
    std::string longest(512 + 3 - 1, 'x');
    com_ep_ss(&params, api_, longest.data());
    EXPECT_EQ(raised(number_of(1, 4, 2, 2), params), BEFORE + "The value of " + longest + " is bad.") << "it just fits";
    longest += 'x';
    com_ep_ss(&params, api_, longest.data());
    EXPECT_EQ(raised(number_of(1, 4, 2, 2), params), BEFORE + "The value of %1! is bad.");
}

TEST_F(Messages, DefaultTextIsATemplateToo) {
    start_with("[comdefaults]\n4 = Z, \"No text for %1!.\"\n" + LAYERS + ORIGINS + MESSAGES);
    CS_CHAR one[] = "alpha";
    CsErrParams params;
    com_ep_ss(&params, api_, one);
    EXPECT_EQ(raised(number_of(1, 4, 2, 99), params), BEFORE + "No text for alpha.");
}

TEST_F(Messages, WithoutACallbackNothingIsBuiltAndNoFileIsTouched) {
    context()->ctxerrfunc = nullptr;
    const CsErrorCache *const newest = language_.record().locerrhist;
    home_.remove("locales");
    const FailingAllocator allocator;
    EXPECT_EQ(com__error(context(), 0x01040201, &one_), CS_FAIL);
    EXPECT_EQ(allocator.asked(), 0);
    EXPECT_EQ(context()->ctxintlerr, 0) << "no file was looked for";
    EXPECT_EQ(language_.record().locerrhist, newest);
    EXPECT_EQ(told.calls, 0);
}

TEST_F(Messages, CallbackHoldsNoLockAndMayRaiseAMessageItself) {
    context()->ctxerrfunc = [](CS_CONTEXT *raising, CS_CLIENTMSG *message) {
        const std::string before = text_of(*message);
        const auto *const cache = static_cast<const CsLocCache *>(raising->ctxlocale->messageptr);
        EXPECT_EQ(reinterpret_cast<const COMN_MUTEX *>(cache->locmessage->msgmtx)->use_count, 0) << "no lock is held";
        raising->ctxerrfunc = note;
        CS_CHAR inner[] = "inner";
        CsErrParams params;
        com_ep_s(&params, inner);
        const CS_RETCODE answer = com__error(raising, 0x01040202, &params);
        EXPECT_EQ(text_of(*message), before);
        return answer;
    };
    EXPECT_EQ(com__error(context(), 0x01040201, &one_), CS_SUCCEED);
    EXPECT_EQ(text_of(told.message), "inner: common library: user api: The value of %1! is bad.");
}

// The cache is full of messages that nobody asks for, but for the layer's text, which is the oldest but `younger`; each
// of the others that are read then takes one out.
TEST_F(Messages, TextsHoldWhileTheMessageIsBuiltFromAFullCache) {
    std::string content = DEFAULTS + LAYERS + ORIGINS + MESSAGES;
    for (int number = 100; number < 200; ++number)
        content += std::to_string(number) + " = 01004, \"" + std::string(600, 'x') + "\"\n";
    for (int younger = 0; younger < 4; ++younger) {
        start_with(content);
        for (int number = 100; number < 100 + younger; ++number)
            context_.text(4, number);
        context_.text(2, 1);
        for (int number = 100 + younger; number < 199; ++number)
            context_.text(4, number);
        ASSERT_EQ(language_.record().locerrcnt, 100);
        EXPECT_EQ(raised(1), BEFORE + "Plain.") << younger;
        EXPECT_EQ(sqlstate_of(told.message), "01004");
    }
}

TEST_F(Messages, OutOfMemoryATextIsToldAllTheSame) {
    CS_CHAR one[] = "alpha";
    CsErrParams params;
    com_ep_ss(&params, api_, one);
    for (int failing = 1; failing <= 14; ++failing) {
        SCOPED_TRACE(failing);
        start_with(WHOLE_FILE);
        told.answer = -7;
        {
            const FailingAllocator allocator(failing);
            ASSERT_EQ(com__error(context(), 0x01040202, &params), -7);
        }
        const std::string text = text_of(told.message);
        const bool is_layer = failing <= 4, is_origin = failing > 4 && failing <= 8,
                   is_message = failing > 8 && failing <= 12;
        EXPECT_EQ(text, std::string("comn_call: ") + (is_layer ? "file: no layer" : "common library") + ": " +
                            (is_origin ? "file: no origin" : "user api") + ": " +
                            (is_message      ? "file: no message"
                             : failing == 13 ? "The value of %1! is bad."
                                             : "The value of alpha is bad."));
        EXPECT_EQ(context_.text(4, 2), "'The value of %1! is bad.'");
    }
    // Nothing at all.
    start_with(WHOLE_FILE);
    {
        const FailingAllocator allocator(1, FailingAllocator::LASTING);
        ASSERT_EQ(com__error(context(), 0x01040202, &params), -7);
    }
    EXPECT_EQ(text_of(told.message), "comn_call: file: no layer: file: no origin: file: no message");
    EXPECT_EQ(sqlstate_of(told.message), "ZZZZZ");
}

TEST_F(Messages, NothingIsKeptBehindAMessage) {
    CS_CHAR one[] = "alpha";
    CsErrParams params;
    com_ep_ss(&params, api_, one);
    raised(number_of(1, 4, 2, 2), params);
    const FailingAllocator allocator;
    com__error(context(), 0x01040202, &params);
    EXPECT_EQ(allocator.held(), 0);
    CS_CHAR small[8];
    CS_INT length;
    com_notrunc_errmsg(context(), catalog(), 0x01040202, &params, nullptr, 0, 4, CS_FALSE, small, 8, &length);
    EXPECT_EQ(allocator.held(), 0);
}

TEST_F(Messages, WithoutMemoryForALongTextItsBeginningIsTold) {
    const std::string text(300, 't');
    start_with(DEFAULTS + "[comlayer]\n1 = Z, \"" + text + "\"\n" + ORIGINS + MESSAGES);
    raised(1);
    {
        const FailingAllocator allocator(1, FailingAllocator::LASTING);
        com__error(context(), 0x01040201, &one_);
    }
    EXPECT_EQ(text_of(told.message), "comn_call: " + std::string(256, 't') + ": user api: Plain.");
}

TEST_F(Messages, ContextsOfManyThreadsRaiseFromACacheThatEvicts) {
    constexpr int THREADS = 4, NUMBERS = 140, ROUNDS = 150;
    std::string content = DEFAULTS + LAYERS + ORIGINS + "[comapierror]\n";
    for (int number = 1; number <= NUMBERS; ++number)
        content +=
            std::to_string(number) + " = C" + std::to_string(number) + ", \"%1! is " + std::to_string(number) + "\"\n";
    start_with(content);
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < THREADS; ++t)
        threads.emplace_back([&, t] {
            std::mt19937_64 random(static_cast<unsigned long long>(t));
            MessageContext own(language_);
            own.get()->ctxerrfunc = note;
            wrong += com_errinit(own.get()) != CS_SUCCEED;
            CS_CHAR call[] = "comn_call", one[] = "it";
            CsErrParams params;
            com_ep_ss(&params, call, one);
            for (int i = 0; i < ROUNDS; ++i) {
                const auto number = static_cast<CS_MSGNUM>(1 + random() % NUMBERS);
                wrong += com__error(own.get(), number_of(1, 4, 2, number), &params) != CS_SUCCEED;
                wrong += told.message.msgstring != BEFORE + "it is " + std::to_string(number);
                wrong += reinterpret_cast<const char *>(told.message.sqlstate) != "C" + std::to_string(number);
                wrong += told.context != own.get() || told.thread != std::this_thread::get_id();
            }
            wrong += told.calls != ROUNDS;
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(language_.record().locerrcnt, 100);
}

// ---- Building -----------------------------------------------------------------------------------------------------

TEST_F(Messages, TruncatesOrTellsTheNeededRoom) {
    const std::string whole = BEFORE + "Plain.";
    const auto needed = static_cast<CS_INT>(whole.size());
    for (CS_INT room = 0; room <= needed + 3; ++room) {
        SCOPED_TRACE(room);
        const std::string rest(static_cast<std::size_t>(std::max(room - needed, 0)), '~');
        std::string text;
        CS_INT length = -7;
        EXPECT_EQ(build(one_, 0x01040201, CS_TRUE, room, text, length), CS_SUCCEED);
        EXPECT_EQ(text, whole.substr(0, static_cast<std::size_t>(room)) + rest) << "no NUL is written";
        EXPECT_EQ(length, std::min(room, needed));
        length = -7;
        EXPECT_EQ(build(one_, 0x01040201, CS_FALSE, room, text, length), room < needed ? CS_FAIL : CS_SUCCEED);
        EXPECT_EQ(length, needed);
        EXPECT_EQ(text, room < needed ? std::string(static_cast<std::size_t>(room), '~') : whole + rest);
        std::vector<CS_CHAR> buffer(static_cast<std::size_t>(room) + 1, '~');
        length = -7;
        EXPECT_EQ(
            com_build_errmsg(context(), catalog(), 0x01040201, &one_, nullptr, 0, 4, buffer.data(), room, &length),
            CS_SUCCEED);
        EXPECT_EQ(std::string(buffer.begin(), buffer.end()),
                  whole.substr(0, static_cast<std::size_t>(room)) + rest + "~");
        EXPECT_EQ(length, std::min(room, needed));
    }
}

TEST_F(Messages, FilledTextCountsForTheNeededRoom) {
    CS_CHAR one[] = "a long value of a parameter";
    CsErrParams params;
    com_ep_ss(&params, api_, one);
    const std::string whole = BEFORE + "The value of " + one + " is bad.";
    std::string text;
    CS_INT length = 0;
    EXPECT_EQ(build(params, 0x01040202, CS_FALSE, 10, text, length), CS_FAIL);
    EXPECT_EQ(length, static_cast<CS_INT>(whole.size()));
    EXPECT_EQ(build(params, 0x01040202, CS_FALSE, length, text, length), CS_SUCCEED);
    EXPECT_EQ(text, whole);
}

TEST_F(Messages, NegativeRoomTakesNothing) {
    CS_CHAR buffer[4] = "~~~";
    CS_INT length = -7;
    EXPECT_EQ(com_build_errmsg(context(), catalog(), 0x01040201, &one_, nullptr, 0, 4, buffer, -5, &length),
              CS_SUCCEED);
    EXPECT_EQ(length, 0);
    EXPECT_STREQ(buffer, "~~~");
}

TEST_F(Messages, GivenTextIsTheMessageAsItStands) {
    CS_CHAR given[] = "given %1! %s, and no more";
    CS_CHAR one[] = "alpha";
    CsErrParams params;
    com_ep_ss(&params, api_, one);
    std::string text;
    CS_INT length = 0;
    const std::string whole = BEFORE + "given %1! %s";
    // Its number is not looked for, nor is it one of the localization.
    EXPECT_EQ(build(params, 0x01040263, CS_TRUE, 100, text, length, given, 12), CS_SUCCEED);
    EXPECT_EQ(text.substr(0, static_cast<std::size_t>(length)), whole);
    EXPECT_EQ(build(params, 0x01050201, CS_TRUE, 100, text, length, given, 0), CS_SUCCEED);
    EXPECT_EQ(text.substr(0, static_cast<std::size_t>(length)), "comn_call: common library: localization: ");
    EXPECT_EQ(build(params, 0x01040201, CS_FALSE, 4, text, length, given, 12), CS_FAIL);
    EXPECT_EQ(length, static_cast<CS_INT>(whole.size()));
}

TEST_F(Messages, SectionAndCatalogMayBeAnothers) {
    home_.write("locales/message/us_english/other.loc",
                "[net]\n1 = 08S01, \"Link lost.\"\n[comlayer]\n1 = Z, \"net library\"\n");
    CS_CHAR file[] = "other.loc", net[] = "net", layer[] = "comlayer";
    CS_ERRHAN other = {&language_.locale(), file};
    const CS_ERRSECTION sections[] = {{70, net}, {2, layer}};
    ASSERT_EQ(com_err_init(context(), &other, sections, 2, nullptr, 0), CS_SUCCEED);
    CS_CHAR buffer[200];
    CS_INT length = 0;
    ASSERT_EQ(com_build_errmsg(context(), &other, 0x01040201, &one_, nullptr, 0, 70, buffer, sizeof buffer, &length),
              CS_SUCCEED);
    EXPECT_EQ(std::string(buffer, static_cast<std::size_t>(length)),
              "comn_call: net library: unable to get origin message string: Link lost.");
}

// ---- Steps --------------------------------------------------------------------------------------------------------

TEST_F(Messages, DefaultOfEachFailureCode) {
    const char *const TEXTS[] = {"unable to get string due to lack of memory", "unable to get layer message string",
                                 "unable to get origin message string", "unable to get error string"};
    for (int code = 1; code <= 4; ++code) {
        EXPECT_EQ(Msgfailures[code - 1].key, code);
        EXPECT_STREQ(Msgfailures[code - 1].string, TEXTS[code - 1]);
        CS_CHAR *text = nullptr;
        com__get_failerr(context(), catalog(), code, &text);
        EXPECT_EQ(text, context_.text(1, code).substr(1, std::strlen(text)));
        com__get_failerr(context(), nullptr, code, &text);
        EXPECT_STREQ(text, TEXTS[code - 1]);
    }
    EXPECT_EQ(Msgfailures[4].key, CS_UNUSED);
    EXPECT_STREQ(Msgfailures[4].string, "bad default error number");
}

TEST_F(Messages, ErrstrIsTheTextOrTheDefault) {
    CS_CHAR *text = nullptr;
    CS_INT length = 0;
    com__get_errstr(context(), catalog(), 2, 1, 2, &text, &length);
    EXPECT_EQ(std::string(text, static_cast<std::size_t>(length)), "common library");
    com__get_errstr(context(), catalog(), 2, 9, 2, &text, &length);
    EXPECT_EQ(std::string(text, static_cast<std::size_t>(length)), "file: no layer");
    com__get_errstr(context(), nullptr, 2, 1, 3, &text, &length);
    EXPECT_EQ(std::string(text, static_cast<std::size_t>(length)), "unable to get origin message string");
}

TEST_F(Messages, ErrmsgSaysWhetherItsTextIsAllocated) {
    CsErrStrings strings = {};
    ASSERT_EQ(com__get_errmsg(context(), catalog(), 0x01040201, 4, &one_, &strings), CS_SUCCEED);
    EXPECT_EQ(strings.es_err_alloc, CS_FALSE);
    EXPECT_EQ(strings.es_err, language_.record().locerrhist->errmsg) << "the catalog's own";
    EXPECT_EQ(strings.es_errlen, 6);
    CS_INT five = 5;
    CsErrParams params;
    com_ep_sd(&params, api_, &five);
    ASSERT_EQ(com__get_errmsg(context(), catalog(), 0x01040202, 4, &params, &strings), CS_SUCCEED);
    EXPECT_EQ(strings.es_err_alloc, CS_TRUE);
    EXPECT_STREQ(strings.es_err, "The value of 5 is bad.");
    EXPECT_EQ(strings.es_errlen, 22);
    comn_free(strings.es_err);
    ASSERT_EQ(com__get_errmsg(context(), catalog(), 0x01040205, 4, &params, &strings), CS_SUCCEED);
    EXPECT_EQ(strings.es_err_alloc, CS_FALSE);
    EXPECT_STREQ(strings.es_err, "Needs %4!.");
    ASSERT_EQ(com__get_errmsg(context(), catalog(), 0x01050201, 4, &one_, &strings), CS_SUCCEED);
    EXPECT_EQ(strings.es_err_alloc, CS_FALSE);
    EXPECT_EQ(strings.es_err, intl_errstr(-1));
}

TEST_F(Messages, StrbuildNeedsItsLength) {
    CS_CHAR format[] = "<%1!>", one[] = "alpha";
    CsErrParams params;
    com_ep_ss(&params, api_, one);
    for (const CS_INT length : {7, 8}) { // with the NUL
        CsErrStrings strings = {};
        com__call_strbuild(&params, format, length, &strings);
        EXPECT_EQ(strings.es_err_alloc, length == 8 ? CS_TRUE : CS_FALSE);
        EXPECT_STREQ(strings.es_err, length == 8 ? "<alpha>" : "<%1!>");
        EXPECT_EQ(strings.es_errlen, length == 8 ? 7 : 5);
        if (strings.es_err_alloc)
            comn_free(strings.es_err);
    }
    const FailingAllocator allocator(1);
    CsErrStrings strings = {};
    com__call_strbuild(&params, format, 100, &strings);
    EXPECT_EQ(strings.es_err, format);
    EXPECT_EQ(strings.es_err_alloc, CS_FALSE);
}

TEST_F(Messages, HandMadeParametersMayLackAText) {
    CsErrParams params;
    CS_CHAR one[] = "alpha";
    com_ep_ss(&params, api_, one);
    params.ep_param2 = nullptr;
    EXPECT_EQ(raised(number_of(1, 4, 2, 2), params), BEFORE + "The value of  is bad.");
}

// ---- Assertions ---------------------------------------------------------------------------------------------------

using MessagesDeathTest = Messages;

// The statement is reported, as often as told where reports return; it answers CS_FAIL then.
template <class Run>
void expect_bomb(Run run, int reports = 1) {
    EXPECT_BOMB(run(), "comerhan");
    const ReturningAssertions returning;
    EXPECT_EQ(run(), CS_FAIL);
    EXPECT_EQ(returning.count(), reports);
}

TEST_F(MessagesDeathTest, NeedsTheirOperands) {
    CS_CHAR buffer[50] = "....";
    CS_INT length = -7;
    NullCalls calls;
    calls.add_each(
        "com__error", [](CS_CONTEXT *with, CsErrParams *params) -> long { return com__error(with, 1, params); },
        CS_FAIL, context(), &one_);
    const auto build_to = [&](CS_CONTEXT *with, CsErrParams *params, CS_CHAR *outbuf) -> long {
        return com_notrunc_errmsg(with, catalog(), 1, params, nullptr, 0, 4, CS_TRUE, outbuf, 50, &length);
    };
    calls.add_each("com_notrunc_errmsg", build_to, CS_FAIL, context(), &one_, buffer);
    calls.add(
        "com_notrunc_errmsg, outlen",
        [&] { return com_notrunc_errmsg(context(), catalog(), 1, &one_, nullptr, 0, 4, CS_TRUE, buffer, 50, nullptr); },
        CS_FAIL);
    CsErrParams unnamed = one_;
    unnamed.ep_param1 = nullptr;
    calls.add(
        "name of the function", [&] { return build_to(context(), &unnamed, buffer); }, CS_FAIL);
    CsErrStrings strings = {};
    CS_CHAR *text = nullptr;
    calls.add_each(
        "com__get_errmsg",
        [&](CsErrParams *params, CsErrStrings *to) -> long {
            return com__get_errmsg(context(), catalog(), 1, 4, params, to);
        },
        CS_FAIL, &one_, &strings);
    calls.add_each(
        "com__get_errstr",
        [&](CS_CHAR **out, CS_INT *outlen) { com__get_errstr(context(), catalog(), 1, 1, 1, out, outlen); }, 0, &text,
        &length);
    calls.add(
        "com__get_failerr", [&] { return com__get_failerr(context(), catalog(), 1, nullptr), 0; }, 0);
    calls.add(
        "com__get_intlerr", [] { return com__get_intlerr(1, nullptr), 0; }, 0);
    CS_CHAR format[] = "%1!";
    calls.add_each(
        "com__call_strbuild",
        [](CsErrParams *params, CS_CHAR *from, CsErrStrings *to) { com__call_strbuild(params, from, 10, to); }, 0,
        &one_, format, &strings);
    calls.add_each(
        "com__fill_climsg",
        [](CsErrStrings *from, CS_CHAR *to, CS_INT *outlen) { com__fill_climsg(from, to, 50, outlen); }, 0, &strings,
        buffer, &length);
    calls.expect_reports("comerhan");
    calls.expect_answers([] {},
                         [&] {
                             EXPECT_STREQ(buffer, "....");
                             EXPECT_EQ(length, -7);
                             EXPECT_EQ(told.calls, 0);
                             EXPECT_EQ(text, nullptr);
                             EXPECT_EQ(strings.es_err, nullptr);
                         });
}

TEST_F(MessagesDeathTest, CountAndTypeOfTheName) {
    CS_CHAR buffer[50] = "....";
    CS_INT length = -7;
    for (const CS_INT count : {0, 4, -1}) {
        CsErrParams params = one_;
        params.ep_numparams = count;
        expect_bomb([&] {
            return com_notrunc_errmsg(context(), catalog(), 1, &params, nullptr, 0, 4, CS_TRUE, buffer, 50, &length);
        });
        // Whoever cannot be refused reports that as well.
        expect_bomb(
            [&] { return com_build_errmsg(context(), catalog(), 1, &params, nullptr, 0, 4, buffer, 50, &length); }, 2);
        expect_bomb([&] { return com__error(context(), 1, &params); }, 2);
    }
    for (const CS_INT type : {8, 1, -1}) {
        CsErrParams params = one_;
        params.ep_type1 = type;
        expect_bomb([&] {
            return com_notrunc_errmsg(context(), catalog(), 1, &params, nullptr, 0, 4, CS_TRUE, buffer, 50, &length);
        });
    }
    expect_bomb([&] {
        return com_notrunc_errmsg(context(), catalog(), 1, &one_, buffer, -1, 4, CS_TRUE, buffer, 50, &length);
    });
    EXPECT_EQ(told.calls, 0);
    EXPECT_STREQ(buffer, "....");
    EXPECT_EQ(length, -7);
}

TEST_F(MessagesDeathTest, MessageOfTheLocalizationHasNoOtherParameters) {
    CS_INT five = 5;
    CsErrParams params;
    com_ep_sd(&params, api_, &five);
    CsErrStrings strings = {};
    expect_bomb([&] { return com__get_errmsg(context(), catalog(), 0x01050201, 4, &params, &strings); });
    CS_CHAR buffer[50] = "....";
    CS_INT length = -7;
    expect_bomb([&] {
        return com_notrunc_errmsg(context(), catalog(), 0x01050201, &params, nullptr, 0, 4, CS_TRUE, buffer, 50,
                                  &length);
    });
    EXPECT_EQ(strings.es_err, nullptr);
    EXPECT_STREQ(buffer, "....");
    EXPECT_EQ(length, -7);
}

TEST_F(MessagesDeathTest, TypesOfParameters) {
    CS_CHAR one[] = "alpha", two[] = "beta", format[] = "%1! %2!";
    CS_INT five = 5;
    CsErrParams text_and_number, three;
    com_ep_sd(&text_and_number, api_, &five);
    com_ep_sss(&three, api_, one, two);
    std::vector<CsErrParams> wrong;
    const auto add = [&wrong](CsErrParams params, auto change) {
        change(params);
        wrong.push_back(params);
    };
    for (const CS_INT type : {1, 7, 9, -8}) {
        add(text_and_number, [=](CsErrParams &params) { params.ep_type2 = type; });
        add(three, [=](CsErrParams &params) { params.ep_type2 = type; });
        add(three, [=](CsErrParams &params) { params.ep_type3 = type; });
    }
    add(text_and_number, [](CsErrParams &params) { params.ep_param2 = nullptr; });
    add(three, [](CsErrParams &params) {
        params.ep_type3 = 8;
        params.ep_param3 = nullptr;
    });
    add(three, [](CsErrParams &params) { params.ep_numparams = 1; });
    add(three, [](CsErrParams &params) { params.ep_numparams = 4; });
    for (CsErrParams &params : wrong) {
        CsErrStrings strings = {};
        EXPECT_BOMB(com__call_strbuild(&params, format, 100, &strings), "comerhan");
        const ReturningAssertions returning;
        const FailingAllocator allocator;
        com__call_strbuild(&params, format, 100, &strings);
        EXPECT_EQ(returning.count(), 1);
        EXPECT_EQ(strings.es_err, format) << "it is told raw then";
        EXPECT_EQ(strings.es_err_alloc, CS_FALSE);
        EXPECT_EQ(allocator.held(), 0);
    }
    three.ep_format = nullptr;
    CsErrStrings strings = {};
    EXPECT_NULL_REPORT(com__call_strbuild(&three, format, 100, &strings), "comerhan");
}

TEST_F(MessagesDeathTest, UnknownFailureCode) {
    for (const CS_INT code : {0, 5, -1, CS_UNUSED}) {
        CS_CHAR *text = nullptr;
        EXPECT_BOMB(com__get_failerr(context(), catalog(), code, &text), "comerhan");
        const ReturningAssertions returning;
        com__get_failerr(context(), catalog(), code, &text);
        EXPECT_EQ(returning.count(), 1);
        EXPECT_STREQ(text, "bad default error number");
    }
}

TEST_F(MessagesDeathTest, StatusThatNoLookupHas) {
    CsUserAlgo algorithm = {};
    algorithm.from_oid = language_.utf8_oid();
    algorithm.to_oid = language_.other_oid();
    algorithm.user_conv_func = [](CS_CONTEXT *, CS_DATAFMT *, CS_VOID *, CS_DATAFMT *, CS_VOID *,
                                  CS_INT *) -> CS_RETCODE { return CS_EUNMAPPED; };
    language_.use_other_set();
    context()->usercharconv = &algorithm;
    CS_CHAR *text = nullptr;
    CS_INT length = 0;
    EXPECT_BOMB(com__get_errstr(context(), catalog(), 2, 1, 2, &text, &length), "comerhan");
    const ReturningAssertions returning;
    com__get_errstr(context(), catalog(), 2, 1, 2, &text, &length);
    EXPECT_EQ(returning.count(), 1);
    EXPECT_EQ(std::string(text, static_cast<std::size_t>(length)), "file: no layer");
}

} // namespace
