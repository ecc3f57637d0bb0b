// Table files that are missing, damaged or shared: a failed handle, or the one table of the process.
#include "support/account.h"
#include "support/environment.h"
#include "support/temp_directory.h"
#include "support/unicode_calls.h"

#include "table.h"

#include <atomic>
#include <cstring>
#include <filesystem>
#include <random>
#include <thread>
#include <vector>

namespace {

using support::Handle;
using support::TempDirectory;
using support::Variable;

const std::string SHIPPED = DLXCOMN_BUILD_DIR "/home/charsets/unicode/";

// Every test takes numbers of its own: a table that is once there stays.
int fresh_number() {
    static int next = 6000;
    return next++;
}

using Header = dlx::unic::TableHeader;

Header header_of(const std::string &file) {
    Header header;
    std::memcpy(&header, file.data(), sizeof header);
    return header;
}
void seal(std::string *file) {
    const std::uint64_t sum = dlx::unic::table_checksum(file->data(), file->size());
    std::memcpy(file->data() + offsetof(Header, checksum), &sum, sizeof sum);
}
std::string with_number(std::string file, int number) {
    std::memcpy(file.data() + offsetof(Header, number), &number, sizeof number);
    seal(&file);
    return file;
}

class UnicFiles : public testing::Test {
protected:
    UnicFiles() { std::filesystem::create_directories(tables_); }
    ~UnicFiles() override { support::Accounts::clear(); }

    int open(const std::string &content, int number) {
        support::write_file(tables_ + std::to_string(number) + ".uct", content);
        return Handle(number).status();
    }

    TempDirectory directory_;
    const std::string tables_ = directory_.path() + "/charsets/unicode/";
    Variable variable_{"DALVEX", directory_.path()};
};

TEST_F(UnicFiles, AMissingFileIsAFailedHandleUntilItIsThere) {
    const int number = fresh_number();
    CVTH handle = &handle;
    EXPECT_EQ(uniconv_HandleGet(number, &handle), UNI_NOSET);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(open(with_number(support::content_of_file(SHIPPED + "1252.uct"), number), number), UNI_OK);
    EXPECT_EQ(Handle(number).from("\x80").text, u"\u20AC");
}

TEST_F(UnicFiles, WithoutAHomeThereIsNoSet) {
    variable_.put(std::nullopt);
    EXPECT_EQ(Handle(fresh_number()).status(), UNI_NOSET);
}

TEST_F(UnicFiles, TheHomeOfTheAccountServesWhereTheVariableIsUnset) {
    const int number = fresh_number();
    support::write_file(tables_ + std::to_string(number) + ".uct",
                        with_number(support::content_of_file(SHIPPED + "1252.uct"), number));
    variable_.put(std::nullopt);
    support::Accounts::home = directory_.path();
    EXPECT_EQ(Handle(number).status(), UNI_OK);
}

TEST_F(UnicFiles, ADirectoryOrAnEmptyFileInItsPlace) {
    const int number = fresh_number();
    std::filesystem::create_directory(tables_ + std::to_string(number) + ".uct");
    EXPECT_EQ(Handle(number).status(), UNI_NOSET);
    EXPECT_EQ(open("", fresh_number()), UNI_BADTABLE);
}

TEST_F(UnicFiles, ATableThatIsThereStaysWhenTheHomeChanges) {
    const int number = fresh_number();
    ASSERT_EQ(open(with_number(support::content_of_file(SHIPPED + "1252.uct"), number), number), UNI_OK);
    variable_.put("/nowhere");
    EXPECT_EQ(Handle(number).status(), UNI_OK);
}

TEST_F(UnicFiles, APathNamesTheDirectoryAndOneThatLostCharactersTheHome) {
    const std::string table = support::content_of_file(SHIPPED + "1252.uct");
    I18NUNI_REQUEST request;
    i18nuni_RequestSetDefaults(&request);
    const auto open_at = [&](int number, const std::string &path, bool lost) {
        std::basic_string<UNICHAR> units(path.begin(), path.end());
        if (lost)
            units += static_cast<UNICHAR>(0xFFFD);
        CVTH handle = nullptr;
        const int status = uniconv_HandleGetU(number, &request, units.c_str(), 0, &handle);
        uniconv_HandleFree(handle);
        return status;
    };
    for (const bool lost : {false, true}) {
        const int number = fresh_number();
        const std::string place = lost ? tables_ : directory_.path_of("");
        support::write_file(place + std::to_string(number) + ".uct", with_number(table, number));
        request.useCurrentDir = 2;
        EXPECT_EQ(open_at(number, lost ? "/nowhere" : "/not/here", false), UNI_NOSET);
        EXPECT_EQ(open_at(number, lost ? "/nowhere" : directory_.path(), lost), UNI_OK) << lost;
    }
    const int number = fresh_number();
    support::write_file(tables_ + std::to_string(number) + ".uct", with_number(table, number));
    request.useCurrentDir = 0;
    EXPECT_EQ(open_at(number, "/nowhere", false), UNI_OK) << "the path counts only where it is asked for";
}

TEST_F(UnicFiles, APathThatIsTooLongOrNoTextIsAFailedHandle) {
    const I18NUNI_REQUEST request = {1, 0, 2};
    const std::basic_string<UNICHAR> long_path(5000, 'x');
    const UNICHAR half[] = {'/', 0xD800, 0};
    CVTH handle = nullptr;
    EXPECT_EQ(uniconv_HandleGetU(fresh_number(), &request, long_path.c_str(), 0, &handle), UNI_NOSET);
    EXPECT_EQ(uniconv_HandleGetU(fresh_number(), &request, half, 0, &handle), UNI_NOSET);
    variable_.put(std::string(5000, 'h'));
    EXPECT_EQ(uniconv_HandleGet(fresh_number(), &handle), UNI_NOSET);
    EXPECT_EQ(handle, nullptr);
}

// ---- Damage -------------------------------------------------------------------------------------------------------

TEST_F(UnicFiles, AFileOfAnotherNumberIsRefused) {
    EXPECT_EQ(open(support::content_of_file(SHIPPED + "1252.uct"), fresh_number()), UNI_BADTABLE);
}

// Whether only what fills the last section up is missing behind a length.
bool is_padding(const std::string &file, size_t length) {
    const Header header = header_of(file);
    const auto last = header.sections[dlx::unic::SECTION_BLOCKS];
    return length >= last.offset + std::size_t{last.count} * header.code_width;
}

// In a room of its own size, so that an address checker sees a step over its end.
bool is_sound(const std::string &file, int number) {
    const std::unique_ptr<char[]> room(new char[file.size()]);
    std::memcpy(room.get(), file.data(), file.size());
    dlx::unic::Table table;
    return dlx::unic::validate_table(room.get(), file.size(), number, &table);
}

TEST_F(UnicFiles, EveryLengthButTheRightOneIsRefused) {
    const int number = fresh_number();
    const std::string whole = with_number(support::content_of_file(SHIPPED + "1252.uct"), number);
    for (size_t length = 0; length < whole.size(); ++length) {
        ASSERT_FALSE(is_sound(whole.substr(0, length), number)) << length;
        if (length % 101 == 0) {
            ASSERT_EQ(open(whole.substr(0, length), number), UNI_BADTABLE) << length;
        }
    }
    EXPECT_EQ(open(whole + '\0', number), UNI_BADTABLE);
    EXPECT_EQ(open(whole, number), UNI_OK);
}

// A shorter file that is right about its size and checksum has sections outside.
TEST_F(UnicFiles, EveryShorterLengthIsRefusedWithTheRightSizeAndChecksumToo) {
    const int number = fresh_number();
    const std::string whole = with_number(support::content_of_file(SHIPPED + "1252.uct"), number);
    for (size_t length = sizeof(Header); length < whole.size(); ++length) {
        std::string shorter = whole.substr(0, length);
        const std::uint64_t size = length;
        std::memcpy(shorter.data() + offsetof(Header, size), &size, sizeof size);
        seal(&shorter);
        // Up to seven bytes fill the last section up.
        ASSERT_EQ(is_sound(shorter, number), whole.size() - length < 8 && is_padding(whole, length)) << length;
    }
}

TEST_F(UnicFiles, EveryChangedBitOfTheHeaderIsRefused) {
    const int number = fresh_number();
    const std::string whole = with_number(support::content_of_file(SHIPPED + "1252.uct"), number);
    for (size_t at = 0; at < sizeof(Header); ++at)
        for (int bit = 0; bit < 8; ++bit) {
            std::string damaged = whole;
            damaged[at] = static_cast<char>(damaged[at] ^ 1 << bit);
            ASSERT_FALSE(is_sound(damaged, number)) << "byte " << at << " bit " << bit;
            if (bit == 0) {
                ASSERT_EQ(open(damaged, number), UNI_BADTABLE) << "byte " << at;
            }
        }
}

TEST_F(UnicFiles, EveryChangedByteBehindTheHeaderIsRefused) {
    const int number = fresh_number();
    const std::string whole = with_number(support::content_of_file(SHIPPED + "1252.uct"), number);
    for (size_t at = sizeof(Header); at < whole.size(); ++at) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x10);
        ASSERT_FALSE(is_sound(damaged, number)) << at;
    }
}

// Each field by itself, with a checksum that is right.
TEST_F(UnicFiles, EveryFieldOfTheHeaderIsChecked) {
    const int number = fresh_number();
    for (const char *name : {"1252.uct", "49.uct", "47.uct", "48.uct", "930.uct"}) {
        const std::string whole = with_number(support::content_of_file(SHIPPED + name), number);
        const auto refused = [&](void (*change)(Header &)) {
            std::string changed = whole;
            Header header = header_of(changed);
            change(header);
            std::memcpy(changed.data(), &header, sizeof header);
            seal(&changed);
            return !is_sound(changed, number);
        };
        EXPECT_TRUE(refused([](Header &h) { h.magic[7] = 'X'; })) << name;
        EXPECT_TRUE(refused([](Header &h) { ++h.version; })) << name;
        EXPECT_TRUE(refused([](Header &h) { h.order = 0x04030201; })) << name;
        EXPECT_TRUE(refused([](Header &h) { --h.size; })) << name;
        EXPECT_TRUE(refused([](Header &h) { ++h.number; })) << name;
        EXPECT_TRUE(refused([](Header &h) { h.flags |= 16; })) << name;
        EXPECT_TRUE(refused([](Header &h) { h.flags ^= dlx::unic::TABLE_SINGLE; })) << name;
        EXPECT_TRUE(refused([](Header &h) { h.code_width = 3; })) << name;
        EXPECT_TRUE(refused([](Header &h) { h.unit_bytes = 0; })) << name;
        EXPECT_TRUE(refused([](Header &h) { h.unit_bytes = 9; })) << name;
        EXPECT_TRUE(refused([](Header &h) { h.utf8_growth = 0; })) << name;
        EXPECT_TRUE(refused([](Header &h) { h.utf8_growth = 9; })) << name;
        EXPECT_TRUE(refused([](Header &h) { h.pair_seconds ^= 1; })) << name;
        EXPECT_TRUE(refused([](Header &h) { h.zero = 1; })) << name;
        for (const int section : {0, 1, 2, 3, 4, 5, 6, 7}) {
            std::string changed = whole;
            Header header = header_of(changed);
            const auto place = header.sections[section];
            for (const auto &[offset, count] : {std::pair{place.offset + 2, place.count},
                                                {0u, place.count},
                                                {place.offset, 0xFFFFFFFFu},
                                                {0xFFFFFFFCu, place.count},
                                                {static_cast<std::uint32_t>(whole.size() + 4), place.count}}) {
                header.sections[section] = {offset, count};
                std::memcpy(changed.data(), &header, sizeof header);
                seal(&changed);
                EXPECT_FALSE(is_sound(changed, number)) << name << " section " << section << " at " << offset;
            }
        }
    }
}

// What conversions take for granted: no NUL comes out of them, ASCII is itself, what has no code has none.
TEST_F(UnicFiles, TablesThatBreakTheirPromisesAreRefused) {
    using namespace dlx::unic;
    const int number = fresh_number();
    const auto is_refused = [&](const char *name, Section section, size_t at, const std::string &bytes) {
        std::string file = with_number(support::content_of_file(SHIPPED + name), number);
        EXPECT_TRUE(is_sound(file, number)) << name;
        file.replace(header_of(file).sections[section].offset + at, bytes.size(), bytes);
        seal(&file);
        return !is_sound(file, number);
    };
    const std::string nothing(4, '\0');
    EXPECT_TRUE(is_refused("1252.uct", SECTION_LEAF16, 2 * 0xE9, nothing.substr(2))) << "a code of the NUL";
    EXPECT_TRUE(is_refused("1252.uct", SECTION_LEAF16, 2 * 'A', {'B', '\0'})) << "another A";
    EXPECT_TRUE(is_refused("1252.uct", SECTION_BLOCKS, 5, "A")) << "a code in the empty block";
    EXPECT_TRUE(is_refused("50.uct", SECTION_LEAF16, 2 * 10, nothing.substr(2))) << "a code of the NUL";
    EXPECT_TRUE(is_refused("50.uct", SECTION_BLOCKS, 2 * 200, {'\0', '\x81'})) << "a code with a NUL in it";
    EXPECT_TRUE(is_refused("50.uct", SECTION_ENTRIES, sizeof(Entry) * 'A', "B")) << "another A";
    EXPECT_TRUE(is_refused("49.uct", SECTION_ENTRIES, sizeof(Entry) * 0x8F, nothing)) << "a node that is the root";
    EXPECT_TRUE(is_refused("47.uct", SECTION_PAIRS, 0, nothing)) << "a pair that begins with the NUL";
    EXPECT_TRUE(is_refused("47.uct", SECTION_PAIRS, 4, {'A', '\0'})) << "a second that the header does not tell";
    EXPECT_TRUE(is_refused("48.uct", SECTION_RANGES, 4, {'\xFF', '\xD7'})) << "a range that runs into surrogates";
}

// The checksum is right here: what is wrong has to be seen by itself, or do no harm.
TEST_F(UnicFiles, SoundChecksumsOverWrongContentsNeverLeadOutOfTheFile) {
    std::mt19937_64 random(820);
    int refused = 0, taken = 0;
    for (const char *name : {"1252.uct", "49.uct", "47.uct", "48.uct", "930.uct", "9.uct"}) {
        const std::string shipped = support::content_of_file(SHIPPED + name);
        for (int i = 0; i < 120; ++i) {
            const int number = fresh_number();
            std::string damaged = with_number(shipped, number);
            const Header header = header_of(damaged);
            for (int changes = 1 + static_cast<int>(random() % (i % 2 == 0 ? 40 : 4)); changes-- > 0;) {
                // Entries, pairs, ranges and the index are where a wrong number could lead astray.
                static constexpr dlx::unic::Section AIMS[] = {dlx::unic::SECTION_ENTRIES, dlx::unic::SECTION_LEAF32,
                                                              dlx::unic::SECTION_PAIRS,   dlx::unic::SECTION_RANGES,
                                                              dlx::unic::SECTION_INDEX,   dlx::unic::SECTION_BLOCKS};
                const auto &aim = header.sections[AIMS[random() % std::size(AIMS)]];
                const size_t at = i % 3 == 0 ? 16 + random() % (sizeof(Header) - 16)
                                             : aim.offset + random() % (std::size_t{aim.count} * 2 + 1);
                if (at < damaged.size())
                    damaged[at] = static_cast<char>(random() % 4 == 0 ? random() : damaged[at] + 1);
            }
            seal(&damaged);
            support::write_file(tables_ + std::to_string(number) + ".uct", damaged);
            const Handle handle(number);
            if (handle.status() != UNI_OK) {
                EXPECT_EQ(handle.status(), UNI_BADTABLE);
                ++refused;
                continue;
            }
            ++taken;
            for (int texts = 0; texts < 200; ++texts) {
                std::string bytes(random() % 60, '\0');
                for (char &c : bytes)
                    c = static_cast<char>(1 + random() % 255);
                handle.from(bytes);
                std::u16string units(random() % 60, u'\0');
                for (char16_t &unit : units)
                    unit = static_cast<char16_t>(1 + random() % 0xFFFF);
                handle.to(units);
            }
        }
    }
    EXPECT_GT(refused, 100);
    EXPECT_GT(taken, 20);
}

// ---- Threads ------------------------------------------------------------------------------------------------------

TEST_F(UnicFiles, ManyThreadsOpenASetTogetherAndShareOneTable) {
    constexpr int THREADS = 8;
    const std::string table = support::content_of_file(SHIPPED + "50.uct");
    for (int round = 0; round < 20; ++round) {
        const int number = fresh_number();
        support::write_file(tables_ + std::to_string(number) + ".uct", with_number(table, number));
        std::atomic<int> waiting = 0;
        std::atomic<int> right = 0;
        std::vector<std::thread> threads;
        for (int i = 0; i < THREADS; ++i)
            threads.emplace_back([&] {
                for (++waiting; waiting < THREADS;)
                    std::this_thread::yield();
                for (int again = 0; again < 50; ++again) {
                    const Handle handle(number);
                    right += handle.status() == UNI_OK && handle.from("\x93\xFA").text == u"\u65E5" &&
                             handle.to(u"\u672C").text == "\x96\x7B";
                }
            });
        for (std::thread &thread : threads)
            thread.join();
        EXPECT_EQ(right, THREADS * 50);
        std::string maps = support::content_of_file("/proc/self/maps");
        size_t mapped = 0;
        const std::string name = "/" + std::to_string(number) + ".uct";
        for (size_t at = 0; (at = maps.find(name, at)) != std::string::npos; ++at)
            ++mapped;
        EXPECT_EQ(mapped, 1u);
    }
}

} // namespace
