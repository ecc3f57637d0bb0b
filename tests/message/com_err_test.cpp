// The cache of message texts: dropping a file of it, its escapes, and how a message gets into it.
#include "support/assertions.h"
#include "support/failing_allocator.h"
#include "support/messages.h"
#include "support/naive_catalog.h"
#include "support/null_calls.h"
#include "support/temp_home.h"

#include <dlxintl/intl.h>

#include <cstring>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace {

using support::FailingAllocator;
using support::MessageContext;
using support::MessageLanguage;
using support::NullCalls;
using support::ReturningAssertions;

template <class Record>
Record *make() {
    return static_cast<Record *>(comn_calloc(1, sizeof(Record)));
}

CS_CHAR *copy_of(const char *text) {
    const std::size_t size = std::strlen(text) + 1;
    return static_cast<CS_CHAR *>(std::memcpy(comn_malloc(size), text, size));
}

// A record of messages, which are made in files and sections and put in front of the history.
class MessageCache : public testing::Test {
protected:
    ~MessageCache() override {
        while (CsErrFileCache *const file = message_.locfilecache)
            drop(file);
    }

    CsErrFileCache *add_file() {
        auto *const file = make<CsErrFileCache>();
        file->errfilename = copy_of("comnlib.loc");
        file->next = message_.locfilecache;
        message_.locfilecache = file;
        return file;
    }
    CsErrSecCache *add_section(CsErrFileCache *file) {
        auto *const section = make<CsErrSecCache>();
        section->errstr = copy_of("section");
        section->next = file->errsecs;
        file->errsecs = section;
        return section;
    }
    CsErrorCache *add_message(CsErrSecCache *section) {
        auto *const error = make<CsErrorCache>();
        error->errnum = ++number_;
        error->errmsg = copy_of("a text");
        error->errseccache = section;
        error->next = section->errcache;
        section->errcache = error;
        error->histnext = message_.locerrhist;
        message_.locerrhist = error;
        ++message_.locerrcnt;
        return error;
    }
    // Takes a file off the list and drops it.
    void drop(CsErrFileCache *file) {
        CsErrFileCache **link = &message_.locfilecache;
        while (*link != file)
            link = &(*link)->next;
        *link = file->next;
        com__errfile_cache_drop(&message_, file);
    }
    std::vector<CS_INT> history() const {
        std::vector<CS_INT> numbers;
        for (const CsErrorCache *error = message_.locerrhist; error != nullptr; error = error->histnext)
            numbers.push_back(error->errnum);
        return numbers;
    }

    CS_MESSAGE message_ = {};
    CS_INT number_ = 0;
};

using Numbers = std::vector<CS_INT>;

TEST_F(MessageCache, DropFreesFileSectionsAndMessages) {
    const FailingAllocator allocator;
    CsErrFileCache *const file = add_file();
    CsErrSecCache *const section = add_section(file);
    add_section(file);
    add_message(section);
    add_message(section);
    EXPECT_EQ(allocator.held(), 2 + 2 * 2 + 2 * 2);
    drop(file);
    EXPECT_EQ(allocator.held(), 0);
    EXPECT_EQ(message_.locerrhist, nullptr);
    EXPECT_EQ(message_.locerrcnt, 0);
}

TEST_F(MessageCache, MessagesOfOtherFilesStayInTheHistory) {
    CsErrSecCache *const section1 = add_section(add_file());
    CsErrFileCache *const file2 = add_file();
    CsErrSecCache *const section2 = add_section(file2);
    for (CsErrSecCache *section : {section2, section1, section2, section2, section1, section2})
        add_message(section);
    ASSERT_EQ(history(), (Numbers{6, 5, 4, 3, 2, 1}));
    drop(file2);
    EXPECT_EQ(history(), (Numbers{5, 2}));
    EXPECT_EQ(message_.locerrcnt, 2);
}

TEST_F(MessageCache, MessageThatLeftTheHistoryIsNotCountedOff) {
    CsErrFileCache *const file = add_file();
    CsErrSecCache *const section = add_section(file);
    add_message(section);
    message_.locerrhist = nullptr;
    message_.locerrcnt = 0;
    drop(file);
    EXPECT_EQ(message_.locerrcnt, 0);
}

TEST_F(MessageCache, EmptyFileAndMissingTextsAreFine) {
    auto *const file = make<CsErrFileCache>();
    file->errsecs = make<CsErrSecCache>();
    file->errsecs->errcache = make<CsErrorCache>();
    message_.locfilecache = file;
    drop(file);
    drop(add_file());
    EXPECT_EQ(message_.locerrcnt, 0);
}

TEST_F(MessageCache, RandomFilesKeepTheHistoryInOrder) {
    std::mt19937_64 random(20260105);
    for (int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        number_ = 0;
        std::vector<CsErrFileCache *> files;
        std::vector<std::pair<CsErrSecCache *, std::size_t>> sections;
        for (std::size_t i = 0; i < 5; ++i) {
            files.push_back(add_file());
            for (auto count = random() % 4; count > 0; --count)
                sections.emplace_back(add_section(files.back()), i);
        }
        std::vector<std::size_t> file_of = {0}; // of a number
        if (!sections.empty())
            for (auto count = random() % 30; count > 0; --count) {
                const auto &[section, file] = sections[random() % sections.size()];
                add_message(section);
                file_of.push_back(file);
            }
        std::vector<bool> is_dropped(5);
        for (int drops = 0; drops < 5; ++drops) {
            std::size_t file = random() % 5;
            while (is_dropped[file])
                file = (file + 1) % 5;
            is_dropped[file] = true;
            drop(files[file]);
            Numbers expected;
            for (std::size_t number = file_of.size() - 1; number > 0; --number)
                if (!is_dropped[file_of[number]])
                    expected.push_back(static_cast<CS_INT>(number));
            ASSERT_EQ(history(), expected);
            ASSERT_EQ(message_.locerrcnt, static_cast<CS_INT>(expected.size()));
        }
    }
}

using MessageCacheDeathTest = MessageCache;

TEST_F(MessageCacheDeathTest, NeedsItsOperands) {
    CsErrFileCache *const file = add_file();
    NullCalls calls;
    NULL_CALLS(calls, com__errfile_cache_drop, 0, &message_, file);
    calls.expect_reports("com_err");
    calls.expect_answers([] {}, [&] { EXPECT_STREQ(file->errfilename, "comnlib.loc"); });
}

// ---- Escapes ------------------------------------------------------------------------------------------------------

std::string filtered(std::string text) {
    com__err_filterescape(text.data());
    return text.c_str();
}

TEST(MessageEscapes, NameSixCharacters) {
    EXPECT_EQ(filtered(R"(\")"), "\"");
    EXPECT_EQ(filtered(R"(\b)"), "\b");
    EXPECT_EQ(filtered(R"(\f)"), "\f");
    EXPECT_EQ(filtered(R"(\n)"), "\n");
    EXPECT_EQ(filtered(R"(\r)"), "\r");
    EXPECT_EQ(filtered(R"(\t)"), "\t");
    EXPECT_EQ(filtered(R"(say \"a\nb\" \t.)"), "say \"a\nb\" \t.");
}

TEST(MessageEscapes, OddityAnyOtherCharacterBehindABackslashIsLost) {
    EXPECT_EQ(filtered(R"(\\)"), "\\");
    EXPECT_EQ(filtered(R"(\q)"), "\\");
    EXPECT_EQ(filtered(R"(a\qb\%c)"), "a\\b\\c");
    EXPECT_EQ(filtered(R"(\\n)"), "\\n") << "the second backslash begins nothing";
    EXPECT_EQ(filtered(R"(\N\B)"), "\\\\");
}

TEST(MessageEscapes, BackslashAtTheEndStaysAndNothingBehindIsTouched) {
    EXPECT_EQ(filtered("\\"), "\\");
    EXPECT_EQ(filtered(R"(a\\\)"), "a\\\\");
    CS_CHAR text[] = "a\\\0n";
    com__err_filterescape(text);
    EXPECT_EQ(std::memcmp(text, "a\\\0n", 5), 0);
}

TEST(MessageEscapes, OtherTextStands) {
    EXPECT_EQ(filtered(""), "");
    EXPECT_EQ(filtered("n\xC3\xA4h\"er 100%"), "n\xC3\xA4h\"er 100%");
}

TEST(MessageEscapes, RandomTextsAgreeWithTheNaiveFilterAndDoNotGrow) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 50000; ++i) {
        std::string text;
        for (auto length = random() % 12; length > 0; --length)
            text += "\\\\\\nqtb\"x"[random() % 9];
        const std::string result = filtered(text);
        ASSERT_EQ(result, support::naive::without_escapes(text)) << text;
        ASSERT_LE(result.size(), text.size());
    }
}

TEST(MessageEscapesDeathTest, NeedAText) {
    EXPECT_NULL_REPORT(com__err_filterescape(nullptr), "com_err");
    const ReturningAssertions returning;
    com__err_filterescape(nullptr);
    EXPECT_EQ(returning.count(), 1);
}

// ---- Into the cache -----------------------------------------------------------------------------------------------

// What a conversion of the application was asked for, and what it is to answer.
struct Conversion {
    std::vector<CS_INT> rooms;
    std::vector<CS_RETCODE> answers; // of one call after the other, then CS_SUCCEED
    std::string output;              // for CS_SUCCEED and a warning; a cut one writes what fits
} *conversion = nullptr;

CS_RETCODE convert(CS_CONTEXT * /*context*/, CS_DATAFMT *srcfmt, CS_VOID * /*src*/, CS_DATAFMT *destfmt, CS_VOID *dest,
                   CS_INT *destlen) {
    EXPECT_EQ(srcfmt->datatype, CS_CHAR_TYPE);
    EXPECT_EQ(destfmt->datatype, CS_CHAR_TYPE);
    const std::size_t call = conversion->rooms.size();
    conversion->rooms.push_back(destfmt->maxlength);
    const CS_RETCODE answer = call < conversion->answers.size() ? conversion->answers[call] : CS_SUCCEED;
    const auto room = static_cast<std::size_t>(destfmt->maxlength);
    const std::string written = conversion->output.substr(0, room);
    std::memcpy(dest, written.data(), written.size());
    *destlen = static_cast<CS_INT>(written.size());
    return answer;
}

class CacheUpdate : public testing::Test {
protected:
    CacheUpdate() {
        section_.errtag = 4;
        algorithm_.from_oid = language_.utf8_oid();
        algorithm_.to_oid = language_.other_oid();
        algorithm_.user_conv_func = convert;
        conversion = &conversion_;
    }
    ~CacheUpdate() override {
        while (section_.errcache != nullptr)
            take_out();
        conversion = nullptr;
    }
    void use_conversion(std::vector<CS_RETCODE> answers, std::string output = "") {
        language_.use_other_set();
        context_.get()->usercharconv = &algorithm_;
        conversion_ = {{}, std::move(answers), std::move(output)};
        conversion_.rooms.reserve(4); // so that a test that counts allocations has the library's alone
    }
    CS_RETCODE update(CS_INT number, std::string code, std::string text) {
        return com__update_cache(context_.get(), &language_.record(), &section_, code.data(), number, text.data());
    }
    const CsErrorCache &newest() { return *language_.record().locerrhist; }
    // Frees the newest message of the section.
    void take_out() {
        CsErrorCache *const error = section_.errcache;
        section_.errcache = error->next;
        CsErrorCache **link = &language_.record().locerrhist;
        while (*link != error)
            link = &(*link)->histnext;
        *link = error->histnext;
        --language_.record().locerrcnt;
        comn_free(error->errmsg);
        comn_free(error);
    }

    MessageLanguage language_;
    MessageContext context_{language_};
    CsErrSecCache section_ = {};
    CsUserAlgo algorithm_ = {};
    Conversion conversion_;
};

TEST_F(CacheUpdate, PutsTheMessageInFrontOfBothChains) {
    ASSERT_EQ(update(7, "01004", "first"), CS_SUCCEED);
    const CsErrorCache *const first = &newest();
    ASSERT_EQ(update(8, "22003", "second"), CS_SUCCEED);
    EXPECT_EQ(language_.record().locerrcnt, 2);
    EXPECT_EQ(section_.errcache, &newest());
    EXPECT_EQ(newest().histnext, first);
    EXPECT_EQ(newest().next, first);
    EXPECT_EQ(newest().errseccache, &section_);
    EXPECT_EQ(newest().errnum, 8);
    EXPECT_STREQ(newest().errcode, "22003");
    EXPECT_STREQ(newest().errmsg, "second");
    EXPECT_EQ(first->histnext, nullptr);
    EXPECT_EQ(first->next, nullptr);
    EXPECT_EQ(com__scan_cache(&section_, 7), first);
    EXPECT_EQ(com__scan_cache(&section_, 8), &newest());
    EXPECT_EQ(com__scan_cache(&section_, 9), nullptr);
}

TEST_F(CacheUpdate, CodeIsCutAndTextIsNot) {
    ASSERT_EQ(update(1, "1234567890", std::string(5000, 'x')), CS_SUCCEED);
    EXPECT_STREQ(newest().errcode, "1234567");
    EXPECT_EQ(newest().errmsg, std::string(5000, 'x'));
}

TEST_F(CacheUpdate, EmptyTextAndCodeStayEmptyAndAreNotConverted) {
    use_conversion({CS_FAIL, CS_FAIL});
    ASSERT_EQ(update(1, "", ""), CS_SUCCEED);
    EXPECT_STREQ(newest().errmsg, "");
    EXPECT_STREQ(newest().errcode, "");
    EXPECT_EQ(conversion_.rooms, std::vector<CS_INT>());
}

TEST_F(CacheUpdate, TextOfUtf8StaysAsItIs) {
    ASSERT_EQ(update(1, "01004", "n\xC3\xA4her \xE2\x82\xAC \xFF"), CS_SUCCEED);
    EXPECT_STREQ(newest().errmsg, "n\xC3\xA4her \xE2\x82\xAC \xFF");
}

TEST_F(CacheUpdate, TextComesInTheSetOfTheMessages) {
    const support::TempHome home;
    home.make_directory("charsets");
    std::filesystem::create_symlink(DLXCOMN_BUILD_DIR "/home/charsets/unicode", home.path_of("charsets/unicode"));
    language_.use_other_set();
    ASSERT_EQ(update(1, "01004", "n\xC3\xA4her"), CS_SUCCEED);
    EXPECT_STREQ(newest().errmsg, "n\xE4her");
    EXPECT_STREQ(newest().errcode, "01004");
    ASSERT_EQ(update(2, "01004", "\xE6\xBC\xA2 100%"), CS_SUCCEED);
    EXPECT_STREQ(newest().errmsg, "? 100%") << "it has no such character";
    ASSERT_EQ(update(3, "\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4", "x"), CS_SUCCEED);
    EXPECT_STREQ(newest().errcode, "\xE4\xE4\xE4\xE4") << "a code is converted as well";
    EXPECT_EQ(update(4, "01004", "\xFF"), CS_FAIL) << "not UTF-8";
    EXPECT_EQ(language_.record().locerrcnt, 3);
}

TEST_F(CacheUpdate, TextThatGrowsIsTriedOnceMoreInThreeTimesTheRoom) {
    use_conversion({CS_ETRUNCATED, CS_SUCCEED}, "AABBCCDDEEFF");
    ASSERT_EQ(update(1, "c", "abcd"), CS_SUCCEED);
    EXPECT_STREQ(newest().errmsg, "AABBCCDDEEFF");
    EXPECT_EQ(conversion_.rooms, (std::vector<CS_INT>{4, 12, 7}));
}

TEST_F(CacheUpdate, TextThatGrowsMoreIsLost) {
    use_conversion({CS_ETRUNCATED, CS_ETRUNCATED}, "AABBCCDDEEFF");
    const FailingAllocator allocator;
    EXPECT_EQ(update(1, "c", "abcd"), CS_ETRUNCATED);
    EXPECT_EQ(allocator.held(), 0);
    EXPECT_EQ(conversion_.rooms, (std::vector<CS_INT>{4, 12}));
    EXPECT_EQ(language_.record().locerrhist, nullptr);
    EXPECT_EQ(language_.record().locerrcnt, 0);
}

TEST_F(CacheUpdate, WarningsAreAccepted) {
    use_conversion({CS_ECONVWARN, CS_ECONVWARN}, "AB");
    ASSERT_EQ(update(1, "c", "abcd"), CS_SUCCEED);
    EXPECT_STREQ(newest().errmsg, "AB");
    EXPECT_STREQ(newest().errcode, "AB");
    use_conversion({CS_ETRUNCATED, CS_ECONVWARN, CS_ETRUNCATED}, "ABCDEFGHIJ");
    ASSERT_EQ(update(2, "c", "abcd"), CS_SUCCEED);
    EXPECT_STREQ(newest().errmsg, "ABCDEFGHIJ");
    EXPECT_STREQ(newest().errcode, "ABCDEFG") << "a code that does not fit is cut";
}

TEST_F(CacheUpdate, OtherStatusesAreToldAndTheMessageIsLost) {
    for (const CS_RETCODE status : std::vector<CS_RETCODE>{CS_FAIL, CS_MEM_ERROR, CS_EUNMAPPED, -12345}) {
        using Answers = std::vector<CS_RETCODE>;
        for (const Answers &answers : {Answers{status}, Answers{CS_ETRUNCATED, status}, Answers{CS_SUCCEED, status}}) {
            use_conversion(answers, "AB");
            const FailingAllocator allocator;
            EXPECT_EQ(update(1, "c", "abcd"), status);
            EXPECT_EQ(allocator.held(), 0);
            EXPECT_EQ(language_.record().locerrhist, nullptr);
            EXPECT_EQ(section_.errcache, nullptr);
            EXPECT_EQ(language_.record().locerrcnt, 0);
        }
    }
}

TEST_F(CacheUpdate, HundredAndFirstTakesTheOldestOut) {
    for (CS_INT number = 1; number <= 130; ++number) {
        ASSERT_EQ(update(number, "c", "text"), CS_SUCCEED);
        ASSERT_EQ(language_.record().locerrcnt, std::min(number, 100));
        ASSERT_EQ(com__scan_cache(&section_, number - 100), nullptr);
        ASSERT_NE(com__scan_cache(&section_, std::max(number - 99, 1)), nullptr);
    }
}

using CacheUpdateDeathTest = CacheUpdate;

TEST_F(CacheUpdateDeathTest, ChainsMustHoldTogether) {
    for (CS_INT number = 1; number <= 100; ++number)
        ASSERT_EQ(update(number, "c", "text"), CS_SUCCEED);
    CsErrorCache *oldest = language_.record().locerrhist;
    while (oldest->histnext != nullptr)
        oldest = oldest->histnext;
    CsErrSecCache other = {};

    oldest->errseccache = &other; // on whose chain it is not
    EXPECT_BOMB(update(101, "c", "text"), "com_err");
    {
        const ReturningAssertions returning;
        EXPECT_EQ(update(101, "c", "text"), CS_FAIL);
        EXPECT_EQ(returning.count(), 1);
    }
    oldest->errseccache = nullptr;
    EXPECT_NULL_REPORT(update(101, "c", "text"), "com_err");
    {
        const ReturningAssertions returning;
        EXPECT_EQ(update(101, "c", "text"), CS_FAIL);
        EXPECT_EQ(returning.count(), 1);
    }
    oldest->errseccache = &section_;
    CsErrorCache *const history = language_.record().locerrhist;
    language_.record().locerrhist = nullptr;
    EXPECT_NULL_REPORT(update(101, "c", "text"), "com_err");
    {
        const ReturningAssertions returning;
        EXPECT_EQ(update(101, "c", "text"), CS_FAIL);
        EXPECT_EQ(returning.count(), 1);
    }
    language_.record().locerrhist = history;
    EXPECT_EQ(language_.record().locerrcnt, 100);
    EXPECT_EQ(update(101, "c", "text"), CS_SUCCEED);
}

TEST_F(CacheUpdateDeathTest, NeedsItsOperands) {
    CS_CONTEXT bare = {};
    CS_CHAR code[] = "01004", text[] = "text";
    CS_MESSAGE *const record = &language_.record();
    MessageLanguage nowhere;
    nowhere.globals().cmg_chardesc = nullptr;
    NullCalls calls;
    const auto call = [&](CS_CONTEXT *context, CS_MESSAGE *message, CsErrSecCache *section) -> long {
        return com__update_cache(context, message, section, code, 1, text);
    };
    calls.add_each("com__update_cache", call, CS_FAIL, context_.get(), record, &section_);
    const auto texts = [&](CS_CHAR *one, CS_CHAR *other) -> long {
        return com__update_cache(context_.get(), record, &section_, one, 1, other);
    };
    calls.add_each("com__update_cache, texts", texts, CS_FAIL, code, text);
    calls.add(
        "globals", [&] { return call(&bare, record, &section_); }, CS_FAIL);
    calls.add(
        "character set",
        [&] {
            bare.ctxglobals = &nowhere.globals();
            const long answer = call(&bare, record, &section_);
            bare.ctxglobals = nullptr;
            return answer;
        },
        CS_FAIL);
    calls.add(
        "com__scan_cache", [] { return com__scan_cache(nullptr, 1) != nullptr; }, 0);
    calls.expect_reports("com_err");
    calls.expect_answers([] {},
                         [&] {
                             EXPECT_EQ(record->locerrhist, nullptr);
                             EXPECT_EQ(record->locerrcnt, 0);
                         });
}

TEST_F(CacheUpdateDeathTest, LoadsNeedTheirOperands) {
    INTL_LOCFILE file = {};
    CsErrFileCache filecache = {};
    CS_MESSAGE *const record = &language_.record();
    auto *const sections = const_cast<CS_ERRSECTION *>(Comlocsections);
    auto *const errs = const_cast<CS_ERRIDX *>(Comdeferrs);
    NullCalls calls;
    calls.add_each(
        "com__err_load_sections",
        [&](CS_CONTEXT *context, CS_MESSAGE *message, INTL_LOCFILE *ifile) -> long {
            return com__err_load_sections(context, message, ifile, sections, 4, nullptr, 0, &filecache);
        },
        CS_FAIL, context_.get(), record, &file);
    calls.add_each(
        "com__err_load_sections",
        [&](CS_ERRSECTION *wanted, CsErrFileCache *to) -> long {
            return com__err_load_sections(context_.get(), record, &file, wanted, 4, nullptr, 0, to);
        },
        CS_FAIL, sections, &filecache);
    calls.add_each(
        "com__err_load_errors",
        [&](CS_CONTEXT *context, CS_MESSAGE *message, INTL_LOCFILE *ifile) -> long {
            return com__err_load_errors(context, message, ifile, errs, 4, &section_);
        },
        CS_FAIL, context_.get(), record, &file);
    calls.add_each(
        "com__err_load_errors",
        [&](CS_ERRIDX *wanted, CsErrSecCache *to) -> long {
            return com__err_load_errors(context_.get(), record, &file, wanted, 4, to);
        },
        CS_FAIL, errs, &section_);
    calls.expect_reports("com_err");
    calls.expect_answers([] {}, [&] { EXPECT_EQ(filecache.errsecs, nullptr); });
}

} // namespace
