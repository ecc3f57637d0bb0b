// Text of a set to UTF-8 and back in one pass, against the two steps through 16-bit text: every shipped set, its whole
// code space, random text of all kinds, every room. The passes that not all processors have are compared beside those
// for every processor.
#include "support/environment.h"
#include "support/unicode_calls.h"
#include "support/unicode_text.h"

#include "one_pass.h"

#include <dlxcomn/charconv.h>

#include <map>
#include <random>

namespace {

using support::Handle;

const std::string HOME = DLXCOMN_BUILD_DIR "/home";
const support::Variable home("DALVEX", HOME);

constexpr UNICONV_CID UTF8 = -4, ASCII = 0;

std::vector<UNICONV_CID> sets_with_passes() {
    std::vector<UNICONV_CID> sets = {ASCII};
    for (const CSID_CSNAME &row : csid_name) {
        const UNICONV_CID cid = row.unilib_cid;
        const bool states = cid == 930 || cid == 933 || cid == 935 || cid == 937 || cid == 939 || cid == 5026 ||
                            cid == 5035 || (cid >= 3000 && cid <= 3003);
        if (cid > 0 && !states)
            sets.push_back(cid);
    }
    return sets;
}

// ---- The two steps ------------------------------------------------------------------------------------------------

struct Result {
    bool whole;
    int status;
    std::string text;
    bool operator==(const Result &) const = default;
    friend void PrintTo(const Result &result, std::ostream *out) {
        *out << result.whole << " status " << result.status << " with " << testing::PrintToString(result.text);
    }
};

std::string front_of_nul(const std::string &text) { return text.substr(0, text.find('\0')); }

bool is_done(int status) { return status == UNI_OK || status == UNI_SUBSTITUTED; }

class TwoSteps {
public:
    explicit TwoSteps(UNICONV_CID cid) : set_(cid), utf8_(UTF8) {
        EXPECT_EQ(uniconv_SetSource(set_.get(), UTF8), UNI_OK);
    }

    Result to_utf8(const std::string &source) const {
        const support::ToUnits units = set_.from(front_of_nul(source));
        if (!is_done(units.status))
            return {false, 0, ""};
        std::basic_string<UNICHAR> text(units.text.begin(), units.text.end());
        std::string out(text.size() * 3 + 1, '\0');
        int count = 0;
        const int written = uniutf8_unistrToUTF8(out.data(), static_cast<int>(out.size()), text.c_str(), &count);
        EXPECT_GE(written, 0);
        out.resize(static_cast<size_t>(written));
        return {true, units.status, out};
    }

    Result from_utf8(const std::string &source) const {
        const support::ToUnits units = utf8_.from(front_of_nul(source));
        if (!is_done(units.status))
            return {false, 0, ""};
        const support::ToBytes bytes = set_.to(units.text);
        EXPECT_TRUE(is_done(bytes.status));
        return {true, units.status == UNI_OK ? bytes.status : units.status, bytes.text};
    }

private:
    Handle set_, utf8_;
};

// ---- The passes ---------------------------------------------------------------------------------------------------

using Pass = dlx::unic::CharacterSet::Pass;

// The passes of a set for every processor, made from its table without the library's choice.
class PlainSet {
public:
    explicit PlainSet(UNICONV_CID cid) {
        if (cid == ASCII) {
            set_.single = &dlx::unic::ASCII_BYTES;
            set_.to_utf8 = dlx::unic::single_to_utf8;
            set_.from_utf8 = dlx::unic::single_from_utf8;
            return;
        }
        EXPECT_EQ(dlx::unic::map_table((HOME + "/charsets/unicode").c_str(), cid, &set_.table), UNI_OK);
        EXPECT_TRUE(dlx::unic::prepare_passes(&set_, dlx::unic::Speed::PLAIN));
    }
    ~PlainSet() {
        if (set_.table.header == nullptr)
            return;
        dlx::unic::drop_passes(set_);
        dlx::unic::unmap_table(set_.table);
    }
    PlainSet(const PlainSet &) = delete;
    PlainSet &operator=(const PlainSet &) = delete;

    int run(Pass way, const char *source, int length, char *buffer, int size, int *count) const {
        *count = 0;
        return way(set_, reinterpret_cast<const std::uint8_t *>(source), static_cast<size_t>(length),
                   reinterpret_cast<std::uint8_t *>(buffer), static_cast<size_t>(size), count);
    }
    int to_utf8(const char *source, int length, char *buffer, int size, int *count) const {
        return run(set_.to_utf8, source, length, buffer, size, count);
    }
    int from_utf8(const char *source, int length, char *buffer, int size, int *count) const {
        return run(set_.from_utf8, source, length, buffer, size, count);
    }

private:
    dlx::unic::CharacterSet set_ = {};
};

// Source and buffer without a spare byte, so that an address checker sees the first one too many; what is written
// behind the room fails the test.
template <typename Call>
Result run(const std::string &source, size_t room, Call call) {
    const std::unique_ptr<char[]> exact(new char[source.size()]);
    std::copy(source.begin(), source.end(), exact.get());
    const std::unique_ptr<char[]> buffer(new char[room]);
    int count = -1;
    const int status = call(exact.get(), static_cast<int>(source.size()), buffer.get(), static_cast<int>(room), &count);
    if (!is_done(status))
        return {false, 0, ""};
    if (count < 0 || static_cast<size_t>(count) > room)
        return {true, status, "count " + std::to_string(count)};
    return {true, status, std::string(buffer.get(), static_cast<size_t>(count))};
}

// The same in the middle of guarded memory, for builds without a checker.
template <typename Call>
Result run_guarded(const std::string &source, size_t room, Call call) {
    constexpr size_t GUARD = 80;
    std::string memory(room + 2 * GUARD, '\x5A');
    const Result result = run(source, room, [&](const char *text, int length, char *, int size, int *count) {
        const int status = call(text, length, memory.data() + GUARD, size, count);
        return status;
    });
    EXPECT_EQ(memory.substr(0, GUARD) + memory.substr(room + GUARD), std::string(2 * GUARD, '\x5A'));
    if (!result.whole)
        return result;
    return {true, result.status, memory.substr(GUARD, result.text.size())};
}

class UnicOnePass : public testing::TestWithParam<UNICONV_CID> {
protected:
    UNICONV_CID cid() const { return GetParam(); }

    int exported_to(const char *source, int length, char *buffer, int size, int *count) const {
        return uniconv_StrToUTF8(cid(), source, length, buffer, size, count);
    }
    int exported_from(const char *source, int length, char *buffer, int size, int *count) const {
        return uniconv_StrFromUTF8(cid(), source, length, buffer, size, count);
    }

    // Both ways to run, in the rooms around the one that suffices, or in all of them.
    template <typename Exported, typename Plain>
    void compare(const Result &expected, const std::string &source, bool all_rooms, Exported exported, Plain plain) {
        const size_t enough = expected.whole ? expected.text.size() : source.size() * 3 + 8;
        std::vector<size_t> rooms = {enough, enough + 1, enough + 200};
        if (enough > 0)
            rooms.push_back(enough - 1);
        for (size_t room = 0; all_rooms && room < enough + 70; ++room)
            rooms.push_back(room);
        for (const size_t room : rooms) {
            const Result told = room < enough ? Result{false, 0, ""} : expected;
            ASSERT_EQ(run(source, room, exported), told) << described(source, room);
            ASSERT_EQ(run_guarded(source, room, exported), told) << described(source, room);
            ASSERT_EQ(run(source, room, plain), told) << described(source, room) << " plain";
            ASSERT_EQ(run_guarded(source, room, plain), told) << described(source, room) << " plain";
        }
    }
    void compare_to_utf8(const std::string &source, bool all_rooms = false) {
        compare(
            two_steps_.to_utf8(source), source, all_rooms, [this](auto... a) { return exported_to(a...); },
            [this](auto... a) { return plain_.to_utf8(a...); });
    }
    void compare_from_utf8(const std::string &source, bool all_rooms = false) {
        compare(
            two_steps_.from_utf8(source), source, all_rooms, [this](auto... a) { return exported_from(a...); },
            [this](auto... a) { return plain_.from_utf8(a...); });
    }

    // Characters that the set has, of which texts are made.
    const std::u32string &characters() {
        if (characters_.empty())
            for (char32_t c = 1; c < 0x30000; c += c < 0x3400 ? 1 : 5) {
                const std::u16string units = c - 0xD800 < 0x800 ? u"" : support::units_of({c});
                if (!units.empty() && set_.to(units).status == UNI_OK)
                    characters_ += c;
            }
        return characters_;
    }
    // Mostly of the set, with some that it lacks.
    std::u32string text_of(std::mt19937_64 &random, size_t length) {
        std::u32string text;
        const auto ascii = random() % 12, foreign = random() % 4 == 0 ? 1 + random() % 30 : 0;
        const auto low = random() % 2 == 0 ? characters().size() : std::min<size_t>(characters().size(), 400);
        while (text.size() < length) {
            const auto kind = random() % 12;
            if (foreign != 0 && random() % 100 < foreign)
                text += support::random_character(random, static_cast<unsigned>(random() % 5));
            else
                text += kind < ascii ? static_cast<char32_t>(0x20 + random() % 95) : characters()[random() % low];
        }
        return text;
    }
    void damage(std::mt19937_64 &random, std::string *text) {
        for (auto faults = random() % 4; faults > 0 && !text->empty(); --faults) {
            const auto at = random() % text->size();
            switch (random() % 4) {
            case 0:
                text->erase(at, 1);
                break;
            case 1:
                text->insert(at, 1, static_cast<char>(random()));
                break;
            case 2:
                (*text)[at] = static_cast<char>(random() % 8 == 0 ? 0 : random());
                break;
            default:
                text->resize(at);
            }
        }
    }
    static std::string described(const std::string &source, size_t room) {
        return "room " + std::to_string(room) + " source " + testing::PrintToString(source);
    }

    const Handle set_{GetParam()};
    const TwoSteps two_steps_{GetParam()};
    const PlainSet plain_{GetParam()};
    std::u32string characters_;
};

TEST_P(UnicOnePass, EveryCodeOfOneAndTwoBytesToUtf8) {
    for (int first = 0; first < 256; ++first) {
        compare_to_utf8({static_cast<char>(first)}, true);
        std::string row;
        for (int second = 0; second < 256; ++second) {
            const std::string code = {static_cast<char>(first), static_cast<char>(second)};
            const Result expected = two_steps_.to_utf8(code);
            const auto exported = [this](auto... a) { return exported_to(a...); };
            ASSERT_EQ(run(code, 7, exported), expected) << described(code, 7);
            // Behind each other, where what stands behind a code belongs to another one.
            if (second != 0)
                row += code;
        }
        compare_to_utf8(row);
    }
}

// In texts of 61 characters, so that each stands at another place of a block than its neighbours.
TEST_P(UnicOnePass, EveryCharacterFromUtf8) {
    constexpr char32_t LENGTH = 61;
    for (char32_t c = 1; c < 0x30000; c += c < 0x10000 ? LENGTH : 9 * LENGTH) {
        std::u32string text;
        for (char32_t i = 0; i < LENGTH; ++i)
            if (c + i - 0xD800 >= 0x800)
                text += c + i;
        compare_from_utf8(support::utf8_of(text));
    }
    for (char32_t c = 1; c < 0x900; c += c < 0x100 ? 1 : 61)
        compare_from_utf8(support::utf8_of({c}), c % 64 == 0);
}

TEST_P(UnicOnePass, EverySequenceOfTwoBytesFromUtf8) {
    const auto exported = [this](auto... a) { return exported_from(a...); };
    for (int first = 0x7F; first < 256; ++first)
        for (int second = 0; second<256; second += second> 0x7D && second < 0xC3 ? 1 : 13)
            for (const std::string &behind : {std::string(), std::string("\x80\x80"), std::string(70, 'x')}) {
                const std::string text = std::string{static_cast<char>(first), static_cast<char>(second)} + behind;
                ASSERT_EQ(run(text, 300, exported), two_steps_.from_utf8(text)) << described(text, 300);
                if (behind.size() > 2 && second % 8 == 0) {
                    const std::string inside = behind + text;
                    ASSERT_EQ(run(inside, 300, exported), two_steps_.from_utf8(inside)) << described(inside, 300);
                }
            }
}

TEST_P(UnicOnePass, RandomTextOfTheSet) {
    std::mt19937_64 random(static_cast<unsigned>(cid()) + 77);
    for (int i = 0; i < 400; ++i) {
        const std::u32string text = text_of(random, random() % (i % 8 == 0 ? 600 : 60));
        std::string utf8 = support::utf8_of(text), bytes = set_.to(support::units_of(text)).text;
        if (i % 3 == 0) {
            damage(random, &utf8);
            damage(random, &bytes);
        }
        if (i % 50 == 0) {
            utf8 += '\0' + utf8;
            bytes += '\0' + bytes;
        }
        compare_to_utf8(bytes, i % 16 == 1);
        compare_from_utf8(utf8, i % 16 == 1);
        if (HasFatalFailure())
            return;
    }
}

TEST_P(UnicOnePass, RandomBytes) {
    std::mt19937_64 random(static_cast<unsigned>(cid()) + 78);
    for (int i = 0; i < 300; ++i) {
        std::string bytes(random() % 200, '\0');
        const int kind = static_cast<int>(random() % 4);
        for (char &c : bytes) {
            const auto bits = random();
            c = static_cast<char>(kind == 0   ? bits
                                  : kind == 1 ? 0x80 | bits
                                  : kind == 2 ? 0xC0 | bits
                                              : 1 + bits % 255);
            if (kind == 3 && bits >> 60 == 0)
                c = '\xE2';
        }
        compare_to_utf8(bytes);
        compare_from_utf8(bytes);
        if (HasFatalFailure())
            return;
    }
}

TEST_P(UnicOnePass, ANulEndsTheTextAtEveryPlace) {
    std::mt19937_64 random(79);
    const std::u32string text = text_of(random, 150);
    const std::string utf8 = support::utf8_of(text), bytes = set_.to(support::units_of(text)).text;
    for (size_t at = 0; at < utf8.size(); ++at) {
        std::string cut = utf8;
        cut[at] = '\0';
        compare_from_utf8(cut);
    }
    for (size_t at = 0; at < bytes.size(); ++at) {
        std::string cut = bytes;
        cut[at] = '\0';
        compare_to_utf8(cut);
    }
}

TEST_P(UnicOnePass, EveryLengthAndEveryCut) {
    std::mt19937_64 random(80);
    for (int i = 0; i < 2; ++i) {
        const std::u32string text = text_of(random, 130);
        const std::string utf8 = support::utf8_of(text), bytes = set_.to(support::units_of(text)).text;
        for (size_t length = 0; length < utf8.size(); ++length)
            compare_from_utf8(utf8.substr(0, length));
        for (size_t length = 0; length < bytes.size(); ++length)
            compare_to_utf8(bytes.substr(0, length));
    }
}

INSTANTIATE_TEST_SUITE_P(Sets, UnicOnePass, testing::ValuesIn(sets_with_passes()),
                         [](const auto &set) { return std::to_string(set.param); });

// ---- Answers ------------------------------------------------------------------------------------------------------

TEST(UnicOnePassAnswers, SetsThatHaveNoSuchWay) {
    char buffer[8];
    int count = -1;
    for (const UNICONV_CID cid : {-1, -4, -5, 930, 933, 935, 937, 939, 3000, 3001, 3002, 3003, 5026, 5035}) {
        EXPECT_EQ(uniconv_StrToUTF8(cid, "a", 1, buffer, 8, &count), UNI_INDIRECT) << cid;
        EXPECT_EQ(count, 0);
        EXPECT_EQ(uniconv_StrFromUTF8(cid, "a", 1, buffer, 8, &count), UNI_INDIRECT) << cid;
        EXPECT_EQ(count, 0);
    }
}

TEST(UnicOnePassAnswers, SetsThatAreNotThere) {
    int count = -1;
    for (const UNICONV_CID cid : {-3, -2, 7, 8192}) {
        EXPECT_EQ(uniconv_StrToUTF8(cid, "a", 1, nullptr, 0, &count), UNI_NOSET);
        EXPECT_EQ(uniconv_StrFromUTF8(cid, "a", 1, nullptr, 0, &count), UNI_NOSET);
        EXPECT_EQ(count, 0);
    }
}

TEST(UnicOnePassAnswers, NegativeLengths) {
    int count = -1;
    for (const UNICONV_CID cid : {0, 1, 50}) {
        EXPECT_EQ(uniconv_StrToUTF8(cid, "a", -1, nullptr, 0, &count), UNI_BADTEXT);
        EXPECT_EQ(uniconv_StrFromUTF8(cid, "a", 1, nullptr, -1, &count), UNI_BADTEXT);
        EXPECT_EQ(count, 0);
    }
}

TEST(UnicOnePassAnswers, NothingIsNothing) {
    for (const UNICONV_CID cid : {0, 1, 37, 48, 50}) {
        int count = -1;
        EXPECT_EQ(uniconv_StrToUTF8(cid, nullptr, 0, nullptr, 0, &count), UNI_OK);
        EXPECT_EQ(count, 0);
        count = -1;
        EXPECT_EQ(uniconv_StrFromUTF8(cid, nullptr, 0, nullptr, 0, &count), UNI_OK);
        EXPECT_EQ(count, 0);
    }
}

} // namespace
