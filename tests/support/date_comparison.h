// Each function that reads dates, held against the naive reading. The text stands in memory of exactly its size, so
// that an address sanitizer sees the first byte read behind it.
#ifndef TESTS_SUPPORT_DATE_COMPARISON_H
#define TESTS_SUPPORT_DATE_COMPARISON_H

#include "support/naive_dates.h"

#include <dlxcomn/dlxcomn.h>

#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace support {

class ExactText {
public:
    explicit ExactText(std::string_view text) : bytes_(new char[text.size()]), size_(text.size()) {
        if (!text.empty())
            std::memcpy(bytes_.get(), text.data(), text.size());
    }
    char *get() const { return bytes_.get(); }
    int length() const { return static_cast<int>(size_); }

private:
    std::unique_ptr<char[]> bytes_;
    std::size_t size_;
};

// What stands where the library writes, before it does.
constexpr CS_INT UNTOUCHED = -77;
inline CS_DATEREC untouched_record() {
    return {UNTOUCHED, UNTOUCHED, UNTOUCHED, UNTOUCHED, UNTOUCHED, UNTOUCHED,
            UNTOUCHED, UNTOUCHED, UNTOUCHED, UNTOUCHED, UNTOUCHED, UNTOUCHED};
}

class DateComparison {
public:
    static constexpr int FUNCTIONS = 11;

    DateComparison(std::string_view text, const naive::DateRules &rules)
        : text_(text), exact_(text), rules_(rules), months_(const_cast<char **>(rules.months)),
          shortmonths_(const_cast<char **>(rules.shortmonths)), set_(const_cast<CHAR_ATTRIB *>(rules.set)) {}

    // The name of the function if it differs, or nothing.
    const char *difference(int function) const {
        switch (function) {
        case 0:
            return tokens_agree() ? nullptr : "datetoken";
        case 1:
            return record_agrees() ? nullptr : "xdaterecfromchar";
        case 2:
            return xdate_agrees() ? nullptr : "xdatefromchar";
        case 3:
            return xbig_agrees() ? nullptr : "xbigdatetimefromchar";
        case 4:
            return datetime_agrees() ? nullptr : "com__datefromchar_mb";
        case 5:
            return big_agrees() ? nullptr : "com__bigdatetimefromchar_mb";
        case 6:
            return time_alone_agrees() ? nullptr : "com__timefromchar_mb";
        case 7:
            return date_agrees() ? nullptr : "com__dateafromchar_mb";
        case 8:
            return time_agrees() ? nullptr : "com__timeafromchar_mb";
        case 9:
            return bigtime_agrees() ? nullptr : "com__bigtimefromchar_mb";
        default:
            return date4_agrees() ? nullptr : "com__date4fromchar_mb";
        }
    }
    const char *any_difference() const {
        for (int function = 0; function < FUNCTIONS; ++function)
            if (const char *const name = difference(function))
                return name;
        return nullptr;
    }

private:
    bool tokens_agree() const {
        char *at = exact_.get();
        char *const end = at + exact_.length();
        int left = exact_.length();
        std::string_view rest = text_;
        for (;;) {
            const naive::DateToken told = naive::date_token(rest, rules_);
            struct com__datecrack token = {UNTOUCHED, UNTOUCHED, UNTOUCHED};
            const int answer = datetoken(&at, &left, &token, months_, shortmonths_, set_);
            if (answer != told.token || token.dctoken != told.token || left < 0 || at + left != end)
                return false;
            if (told.token == DT_ERROR)
                return true;
            rest.remove_prefix(told.taken);
            if (token.dclength != told.length || token.dcvalue != told.value ||
                static_cast<std::size_t>(left) != rest.size())
                return false;
            if (told.token == DT_END)
                return true;
        }
    }

    bool record_agrees() const {
        const naive::DateReading told(text_, rules_, untouched_record());
        CS_DATEREC record = untouched_record();
        CS_BOOL truncated = UNTOUCHED;
        const int code = xdaterecfromchar(&record, exact_.get(), exact_.length(), rules_.partonly, rules_.style,
                                          rules_.order, months_, shortmonths_, set_, rules_.type, &truncated);
        if (code != told.code() || truncated != told.truncated())
            return false;
        return (code != 0 && code != 99) || std::memcmp(&record, &told.record(), sizeof record) == 0;
    }

    static bool same(int code, const CS_DATETIME &value, const naive::ReadDateTime &told) {
        return code == told.code && value.dtdays == told.value.dtdays && value.dttime == told.value.dttime;
    }
    bool xdate_agrees() const {
        CS_DATETIME value = {UNTOUCHED, UNTOUCHED};
        CS_BOOL truncated = UNTOUCHED;
        const int code = xdatefromchar(&value, exact_.get(), exact_.length(), rules_.partonly, rules_.style,
                                       rules_.order, months_, shortmonths_, set_, &truncated);
        const naive::ReadDateTime told = naive::read_datetime(text_, rules_);
        return same(code, value, told) && truncated == told.truncated;
    }
    bool datetime_agrees() const {
        CS_DATETIME value = {UNTOUCHED, UNTOUCHED};
        CS_BOOL truncated = UNTOUCHED;
        const int code = com__datefromchar_mb(&value, exact_.get(), exact_.length(), rules_.style, rules_.order,
                                              months_, shortmonths_, set_, &truncated);
        const naive::ReadDateTime told = naive::read_ranged_datetime(text_, wanting(0));
        return same(code, value, told) && truncated == told.truncated;
    }
    bool time_alone_agrees() const {
        CS_DATETIME value = {UNTOUCHED, UNTOUCHED};
        CS_BOOL truncated = UNTOUCHED;
        const int code = com__timefromchar_mb(&value, exact_.get(), exact_.length(), rules_.style, set_, &truncated);
        const naive::ReadDateTime told = naive::read_time_alone(text_, rules_);
        return same(code, value, told) && truncated == told.truncated;
    }

    static bool same(int code, std::int64_t value, const naive::Made &told) {
        return code == told.code && value == (code == 0 ? told.value : UNTOUCHED);
    }
    // Cleared where it fails.
    static bool same_big(int code, CS_BIGDATETIME value, const naive::Made &told) {
        return code == told.code && value == (code == 0 ? static_cast<CS_BIGDATETIME>(told.value) : 0);
    }
    bool xbig_agrees() const {
        CS_BIGDATETIME value = static_cast<CS_BIGDATETIME>(UNTOUCHED);
        const int code = xbigdatetimefromchar(&value, exact_.get(), exact_.length(), rules_.partonly, rules_.style,
                                              rules_.order, months_, shortmonths_, set_);
        return same_big(code, value, naive::read_big(text_, rules_));
    }
    bool big_agrees() const {
        CS_BIGDATETIME value = static_cast<CS_BIGDATETIME>(UNTOUCHED);
        const int code = com__bigdatetimefromchar_mb(&value, exact_.get(), exact_.length(), rules_.style, rules_.order,
                                                     months_, shortmonths_, set_);
        return same_big(code, value, naive::read_big(text_, wanting(0)));
    }
    bool date_agrees() const {
        CS_DATE value = UNTOUCHED;
        const int code = com__dateafromchar_mb(&value, exact_.get(), exact_.length(), rules_.style, rules_.order,
                                               months_, shortmonths_, set_);
        return same(code, value, naive::read_date(text_, rules_));
    }
    bool time_agrees() const {
        CS_TIME value = UNTOUCHED;
        CS_BOOL truncated = UNTOUCHED;
        const int code = com__timeafromchar_mb(&value, exact_.get(), exact_.length(), rules_.style, rules_.order,
                                               months_, shortmonths_, set_, &truncated);
        const naive::ReadDateTime told = naive::read_time(text_, rules_);
        return same(code, value, naive::Made{told.code, told.value.dttime}) && truncated == told.truncated;
    }
    bool bigtime_agrees() const {
        CS_BIGTIME value = static_cast<CS_BIGTIME>(UNTOUCHED);
        const int code = com__bigtimefromchar_mb(&value, exact_.get(), exact_.length(), rules_.style, rules_.order,
                                                 months_, shortmonths_, set_);
        return same(code, static_cast<std::int64_t>(value), naive::read_bigtime(text_, rules_));
    }
    bool date4_agrees() const {
        CS_DATETIME4 value = {0xABCD, 0xEF01};
        const int code = com__date4fromchar_mb(&value, exact_.get(), exact_.length(), rules_.style, rules_.order,
                                               months_, shortmonths_, set_);
        const naive::Made told = naive::read_date4(text_, rules_);
        const std::int64_t expected = told.code == 0 ? told.value : 0xABCDEF01;
        return code == told.code && (std::int64_t{value.days} << 16 | value.minutes) == expected;
    }

    naive::DateRules wanting(int partonly) const {
        naive::DateRules rules = rules_;
        rules.partonly = partonly;
        return rules;
    }

    std::string_view text_;
    ExactText exact_;
    naive::DateRules rules_;
    char **months_;
    char **shortmonths_;
    CHAR_ATTRIB *set_;
};

} // namespace support

#endif
