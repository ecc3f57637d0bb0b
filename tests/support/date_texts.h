// Date texts by the million: most made by the grammar people write dates in, many of those broken afterwards; and
// the character sets to write them in.
#ifndef TESTS_SUPPORT_DATE_TEXTS_H
#define TESTS_SUPPORT_DATE_TEXTS_H

#include "support/charsets.h"
#include "support/exact.h"
#include "support/money_text.h"

#include <dlxcomn/dlxcomn.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace support {

// ---- Character sets ----

// Normalizes to lower case, wide forms too, so that words are read without case.
template <class Set>
class Folding : public Set {
public:
    Folding() {
        for (int c = 'A'; c <= 'Z'; ++c)
            this->norm(0, c, c + 0x20).norm(1, c + 0x80, c + 0x20);
    }
};

// The wide characters have their classes but no ASCII forms: a wide digit is one that tells no number.
class WideWithoutForms : public ConstructedSet {
public:
    WideWithoutForms() : ConstructedSet(2, 0) {
        width(0x81, 0xFE, 2, 2);
        type_row(WIDE_LEAD, 1);
        for (int c = 0x20; c < 0x7F; ++c)
            type(1, c + 0x80, ISO_1_type_map.chmap[c]);
    }
};

// Null is iso_1.
inline std::vector<std::shared_ptr<ConstructedSet>> date_sets() {
    std::vector<std::shared_ptr<ConstructedSet>> sets = text_sets();
    sets.push_back(nullptr);
    sets.push_back(std::make_shared<Folding<DoubleByteSet>>());
    sets.push_back(std::make_shared<Folding<FourByteSet>>());
    sets.push_back(std::make_shared<Folding<ThreeByteSet>>());
    sets.push_back(std::make_shared<WideWithoutForms>());
    return sets;
}

// ---- Texts ----

class DateTexts {
public:
    explicit DateTexts(std::uint64_t seed) : random_(seed) {}

    Random &random() { return random_; }

    std::string next() {
        text_.clear();
        const bool time_first = chance(6);
        const bool has_time = !chance(3);
        if (chance(40))
            spell({"/", ":", ".", ",", "-", "T", "AM", "PM"});
        if (!time_first)
            date();
        if (has_time) {
            spell({" ", " ", " ", " ", "  ", "T", " T ", ",", ""});
            time();
        }
        if (time_first) {
            spell({" ", " ", "T", ", ", ""});
            date();
        }
        if (chance(10))
            spell({" ", "  ", ",", ".", ":", "T", " 5", " 2003", "/", "AM", "PM", "May"});
        if (chance(4))
            damage();
        if (chance(400))
            lengthen();
        return text_;
    }

    // Some or all of the ASCII characters in their wide forms, and now and then cut behind a lead byte.
    std::string widened(std::string_view ascii) {
        std::string text;
        const auto each = std::array{1, 2, 8, 30}[random_() % 4];
        for (const char c : ascii) {
            if (c >= ' ' && chance(each))
                text += wide({&c, 1});
            else
                text += c;
        }
        if (!text.empty() && chance(60))
            text.pop_back();
        return text;
    }

private:
    using Choice = std::initializer_list<const char *>;

    bool chance(std::uint64_t one_in) { return random_() % one_in == 0; }
    const char *one_of(Choice choice) { return choice.begin()[random_() % choice.size()]; }
    void spell(Choice choice) { text_ += one_of(choice); }
    void blanks() {
        if (chance(5))
            spell({" ", "  "});
    }

    void number(int low, int high) {
        const int value = pick(random_, low, high);
        if (value < 10 && chance(2))
            text_ += '0';
        text_ += std::to_string(value);
    }
    void any_digits(int most) {
        for (int count = pick(random_, 1, most); count > 0; --count)
            text_ += static_cast<char>('0' + random_() % 10);
    }

    void day() {
        if (chance(12))
            spell({"0", "00", "29", "30", "31", "32", "99", "100", "001", "031"});
        else
            number(1, 28);
    }
    void month() {
        if (chance(16))
            spell({"0", "00", "13", "012", "99", "100"});
        else
            number(1, 12);
    }
    void year4() {
        if (chance(8))
            spell({"0000", "0001", "1752", "1753", "1899", "1900", "2000", "2079", "2080", "9999"});
        else
            number(1583, 2400);
    }
    void year() {
        if (chance(2))
            year4();
        else if (chance(8))
            spell({"0", "1", "49", "50", "99", "100", "049", "050", "999"});
        else
            number(0, 99);
    }
    void month_name() {
        const int number = pick(random_, 0, 11);
        std::string name = (chance(2) ? com__get_months() : com__get_shortmonths())[number];
        const auto taste = random_() % 8;
        for (char &c : name)
            if (taste == 0 || (taste == 1 && chance(2)))
                c = static_cast<char>(c | 0x20);
            else if (taste == 2)
                c = static_cast<char>(c & ~0x20);
        text_ += name;
    }

    void date() {
        last_separator_ = nullptr;
        switch (random_() % 16) {
        case 0:
        case 1:
        case 2:
        case 3:
            separated();
            break;
        case 4:
        case 5:
            year4();
            separator();
            month();
            separator();
            day();
            break;
        case 6:
        case 7:
        case 8:
        case 9:
        case 10:
            named();
            break;
        case 11:
            number(1753, 2078);
            together();
            break;
        case 12:
            number(10, 99);
            together();
            break;
        case 13:
            year4();
            break;
        case 14:
            if (chance(3))
                any_digits(9);
            break;
        default:
            break;
        }
    }
    void together() {
        const int month = chance(20) ? pick(random_, 0, 99) : pick(random_, 1, 12);
        const int day = chance(20) ? pick(random_, 0, 99) : pick(random_, 1, 28);
        text_ += static_cast<char>('0' + month / 10);
        text_ += static_cast<char>('0' + month % 10);
        text_ += static_cast<char>('0' + day / 10);
        text_ += static_cast<char>('0' + day % 10);
    }
    void separator() {
        blanks();
        if (last_separator_ == nullptr || chance(8))
            last_separator_ = one_of({"/", "-", ".", "/", "-"});
        text_ += last_separator_;
        blanks();
    }
    void separated() {
        const int year_place = pick(random_, 0, 2);
        const int month_place = (year_place + pick(random_, 1, 2)) % 3;
        for (int place = 0; place < 3; ++place) {
            if (place != 0)
                separator();
            if (place == year_place)
                year();
            else if (place == month_place)
                month();
            else
                day();
        }
    }
    void named() {
        switch (random_() % 6) {
        case 0: // Jan 2, 2003
        case 1:
            month_name();
            spell({" ", " ", "", ", ", ","});
            day();
            spell({" ", ", ", ",", " , "});
            year();
            break;
        case 2: // 2 Jan 2003, 2-Jan-2003
            day();
            between_names();
            month_name();
            between_names();
            year();
            break;
        case 3: // 2003 Jan 2
            year();
            between_names();
            month_name();
            between_names();
            day();
            break;
        case 4: // Jan 2003
            month_name();
            spell({" ", ", ", "-"});
            year4();
            break;
        default: // 2003 2 Jan and whatever
            year();
            spell({" ", ",", "/"});
            day();
            between_names();
            month_name();
            break;
        }
    }
    void between_names() { spell({" ", " ", "", "-", "/", ".", ", ", " - "}); }

    void time() {
        if (chance(6)) {
            number(0, 13);
            blanks();
            spell({"AM", "PM", "am", "pm", "Am", "pM", "A", "XM"});
            return;
        }
        if (chance(20))
            spell({"24", "023", "99", "999", "2003"});
        else
            number(0, 23);
        text_ += ':';
        if (chance(30))
            spell({"60", "059", "999", "", "5.5"});
        else
            number(0, 59);
        if (!chance(4)) {
            text_ += ':';
            if (chance(30))
                spell({"60", "059", "999", ""});
            else
                number(0, 59);
        }
        switch (random_() % 6) {
        case 0:
            text_ += ':';
            any_digits(4);
            break;
        case 1:
            text_ += '.';
            any_digits(9);
            break;
        case 2:
            text_ += '.';
            any_digits(3);
            break;
        case 3:
            spell({".999", ".9995", ".9994", ".999500", ".999499", ".00099999", ".00100000", ".00100049", ".00100050",
                   ".00100449", ".00100500", ".001005", ".000500", ".000499", ".99999999", ":999", ":1000"});
            break;
        default:
            break;
        }
        if (chance(3)) {
            blanks();
            spell({"AM", "PM", "am", "pm"});
        }
    }

    void damage() {
        static constexpr std::string_view USUAL = "0123456789/-.:,Tt AMPmapJanMy";
        for (int times = pick(random_, 1, 3); times > 0; --times) {
            const auto size = text_.size();
            const auto position = size == 0 ? 0 : random_() % size;
            switch (random_() % 8) {
            case 0:
            case 1:
                if (size != 0)
                    text_.erase(position, 1);
                break;
            case 2:
            case 3:
                text_.insert(position, 1, USUAL[random_() % USUAL.size()]);
                break;
            case 4:
                if (size != 0)
                    text_[position] = USUAL[random_() % USUAL.size()];
                break;
            case 5:
                text_.insert(position, 1, static_cast<char>(random_()));
                break;
            case 6:
                text_.resize(position);
                break;
            default:
                if (size != 0) {
                    const auto other = random_() % size;
                    std::swap(text_[position], text_[other]);
                }
            }
        }
    }

    // About as many tokens as a text may have.
    void lengthen() {
        const int count = pick(random_, 8, 22);
        for (int i = 0; i < count; ++i)
            spell({"/", "1", ",", "Jan", ":", " 2003", " 5 ", "-"});
    }

    Random random_;
    std::string text_;
    const char *last_separator_ = nullptr;
};

} // namespace support

#endif
