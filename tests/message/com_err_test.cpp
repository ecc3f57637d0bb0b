// The cache of message texts: dropping a file of it.
#include "support/assertions.h"
#include "support/failing_allocator.h"
#include "support/null_calls.h"

#include <dlxintl/intl.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using support::FailingAllocator;
using support::NullCalls;

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

} // namespace
