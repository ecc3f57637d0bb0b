// The code pages as other libraries have them, iconv and ICU, and where they are known to differ from ours.
#ifndef TESTS_SUPPORT_CODE_PAGES_H
#define TESTS_SUPPORT_CODE_PAGES_H

#include "support/unicode_text.h"

#include <dlxcomn/charconv.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include <iconv.h>
#include <unicode/ucnv.h>

namespace support::code_pages {

// ---- Oracles ------------------------------------------------------------------------------------------------------

class Oracle {
public:
    Oracle() = default;
    virtual ~Oracle() = default;
    Oracle(const Oracle &) = delete;
    Oracle &operator=(const Oracle &) = delete;

    // The text of bytes that are whole characters of the set; none for anything else.
    virtual std::optional<Units> units(const std::string &bytes) = 0;
    // None for text with a character that the set does not have.
    virtual std::optional<std::string> bytes(const Units &units) = 0;
    std::optional<std::string> bytes(char32_t character) { return bytes(units_of({character})); }

protected:
    // More than a text of so many bytes or units takes in any set.
    static std::size_t room_for(std::size_t length) { return 8 * length + 16; }
};

class IconvOracle : public Oracle {
public:
    explicit IconvOracle(const std::string &name)
        : from_(iconv_open("UTF-16LE", name.c_str())), to_(iconv_open(name.c_str(), "UTF-16LE")) {
        EXPECT_NE(from_, reinterpret_cast<iconv_t>(-1)) << name;
        EXPECT_NE(to_, reinterpret_cast<iconv_t>(-1)) << name;
    }
    ~IconvOracle() override {
        iconv_close(from_);
        iconv_close(to_);
    }
    std::optional<Units> units(const std::string &bytes) override {
        Units out(room_for(bytes.size()) / 2, u'\0');
        const auto length =
            convert(from_, bytes.data(), bytes.size(), reinterpret_cast<char *>(out.data()), out.size() * 2);
        return length ? std::optional(out.substr(0, *length / 2)) : std::nullopt;
    }
    using Oracle::bytes;
    std::optional<std::string> bytes(const Units &units) override {
        std::string out(room_for(units.size()), '\0');
        const auto length =
            convert(to_, reinterpret_cast<const char *>(units.data()), units.size() * 2, out.data(), out.size());
        return length ? std::optional(out.substr(0, *length)) : std::nullopt;
    }

private:
    static std::optional<size_t> convert(iconv_t with, const char *in, size_t in_left, char *out, size_t size) {
        size_t left = size;
        auto *source = const_cast<char *>(in);
        iconv(with, nullptr, nullptr, nullptr, nullptr);
        if (iconv(with, &source, &in_left, &out, &left) != 0 || iconv(with, nullptr, nullptr, &out, &left) != 0)
            return std::nullopt;
        return size - left;
    }
    iconv_t from_, to_;
};

class IcuOracle : public Oracle {
public:
    explicit IcuOracle(const std::string &name) {
        UErrorCode error = U_ZERO_ERROR;
        converter_ = ucnv_open(name.c_str(), &error);
        ucnv_setToUCallBack(converter_, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
        ucnv_setFromUCallBack(converter_, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
        ucnv_setFallback(converter_, false);
        EXPECT_TRUE(U_SUCCESS(error)) << name;
    }
    ~IcuOracle() override { ucnv_close(converter_); }
    std::optional<Units> units(const std::string &bytes) override {
        Units out(room_for(bytes.size()), u'\0');
        UErrorCode error = U_ZERO_ERROR;
        const auto length = ucnv_toUChars(converter_, out.data(), static_cast<int>(out.size()), bytes.data(),
                                          static_cast<int>(bytes.size()), &error);
        return U_SUCCESS(error) ? std::optional(out.substr(0, static_cast<size_t>(length))) : std::nullopt;
    }
    using Oracle::bytes;
    std::optional<std::string> bytes(const Units &units) override {
        std::string out(room_for(units.size()), '\0');
        UErrorCode error = U_ZERO_ERROR;
        const auto length = ucnv_fromUChars(converter_, out.data(), static_cast<int>(out.size()), units.data(),
                                            static_cast<int>(units.size()), &error);
        // ICU leaves out invisible characters that the set does not have, with success.
        return U_SUCCESS(error) && length > 0 ? std::optional(out.substr(0, static_cast<size_t>(length)))
                                              : std::nullopt;
    }

private:
    UConverter *converter_;
};

// ---- What the sets are --------------------------------------------------------------------------------------------

enum class Shape { single, pairs, euc_jp, euc_tw, gb18030, shift };

struct Set {
    UNICONV_CID number;
    const char *iconv_name; // where null, the ICU name holds
    const char *icu_name;
    Shape shape = Shape::single;
    friend void PrintTo(const Set &set, std::ostream *out) { *out << set.number; }
};

constexpr Set SETS[] = {
    {1, "ISO-8859-1", nullptr},
    {2, "CP850", nullptr},
    {3, "CP437", nullptr},
    {4, "HP-ROMAN8", nullptr},
    {5, "MACINTOSH", nullptr},
    {8, "EUC-JP", nullptr, Shape::pairs},
    {9, "EUC-TW", nullptr, Shape::euc_tw},
    {10, "EUC-CN", nullptr, Shape::pairs},
    {11, "CP932", nullptr, Shape::pairs},
    {12, "ISO-8859-2", nullptr},
    {13, "ISO-8859-5", nullptr},
    {14, "ISO-8859-6", nullptr},
    {15, "ISO-8859-7", nullptr},
    {16, "ISO-8859-8", nullptr},
    {17, "ISO-8859-9", nullptr},
    {18, "ISO-8859-10", nullptr},
    {19, "ISO-8859-3", nullptr},
    {20, "ISO-8859-4", nullptr},
    {21, "ISO-8859-15", nullptr},
    {26, "MAC-CYRILLIC", nullptr},
    {27, "MAC-CENTRALEUROPE", nullptr},
    {28, nullptr, "x-mac-greek"},
    {29, nullptr, "x-mac-turkish"},
    {30, "HP-GREEK8", nullptr},
    {31, "HP-TURKISH8", nullptr},
    {32, "KOI8-R", nullptr},
    {33, "TIS-620", nullptr},
    {34, "BIG5", nullptr, Shape::pairs},
    {36, "EUC-KR", nullptr, Shape::pairs},
    {37, "CP037", nullptr},
    {42, "ISO-8859-13", nullptr},
    {43, "ISO-8859-14", nullptr},
    {44, "HP-ROMAN9", nullptr},
    {45, nullptr, "macintosh"},
    {46, "IBM874", nullptr},
    {47, "BIG5-HKSCS", nullptr, Shape::pairs},
    {48, "GB18030", nullptr, Shape::gb18030},
    {49, "EUC-JP", nullptr, Shape::euc_jp},
    {50, "SJIS", nullptr, Shape::pairs},
    {54, "RK1048", nullptr},
    {273, "CP273", nullptr},
    {277, "IBM277", nullptr},
    {278, "CP278", nullptr},
    {280, "CP280", nullptr},
    {284, "CP284", nullptr},
    {285, "CP285", nullptr},
    {290, "CP290", nullptr},
    {297, "CP297", nullptr},
    {420, "CP420", nullptr},
    {424, "CP424", nullptr},
    {500, "CP500", nullptr},
    {737, "CP737", nullptr},
    {775, "CP775", nullptr},
    {852, "CP852", nullptr},
    {855, "CP855", nullptr},
    {856, "CP856", nullptr},
    {857, "CP857", nullptr},
    {858, "CP858", nullptr},
    {860, "CP860", nullptr},
    {861, "CP861", nullptr},
    {862, "CP862", nullptr},
    {863, "CP863", nullptr},
    {864, "CP864", nullptr},
    {865, "CP865", nullptr},
    {866, "CP866", nullptr},
    {869, "CP869", nullptr},
    {870, "CP870", nullptr},
    {871, "CP871", nullptr},
    {874, "CP874", nullptr},
    {875, "CP875", nullptr},
    {921, "CP921", nullptr},
    {923, nullptr, "cp923"},
    {930, "CP930", nullptr, Shape::shift},
    {932, "IBM932", nullptr, Shape::pairs},
    {933, "CP933", nullptr, Shape::shift},
    {935, "CP935", nullptr, Shape::shift},
    {936, "CP936", nullptr, Shape::pairs},
    {937, "CP937", nullptr, Shape::shift},
    {939, "CP939", nullptr, Shape::shift},
    {949, "CP949", nullptr, Shape::pairs},
    {950, nullptr, "windows-950-2000", Shape::pairs},
    {954, nullptr, "ibm-954_P101-2007", Shape::euc_jp},
    {1006, nullptr, "cp1006"},
    {1026, "CP1026", nullptr},
    {1047, "CP1047", nullptr},
    {1140, "CP1140", nullptr},
    {1141, "CP1141", nullptr},
    {1142, "CP1142", nullptr},
    {1143, "CP1143", nullptr},
    {1144, "CP1144", nullptr},
    {1145, "CP1145", nullptr},
    {1146, "CP1146", nullptr},
    {1147, "CP1147", nullptr},
    {1148, "CP1148", nullptr},
    {1149, "CP1149", nullptr},
    {1250, "CP1250", nullptr},
    {1251, "CP1251", nullptr},
    {1252, "CP1252", nullptr},
    {1253, "CP1253", nullptr},
    {1254, "CP1254", nullptr},
    {1255, "CP1255", nullptr},
    {1256, "CP1256", nullptr},
    {1257, "CP1257", nullptr},
    {1258, "CP1258", nullptr},
    {3000, "CP930", nullptr, Shape::shift},
    {3001, "CP939", nullptr, Shape::shift},
    {3002, "CP930", nullptr, Shape::shift},
    {3003, "CP939", nullptr, Shape::shift},
    {5026, "CP930", nullptr, Shape::shift},
    {5035, "CP939", nullptr, Shape::shift},
};

inline std::unique_ptr<Oracle> oracle_of(const Set &set) {
    if (set.iconv_name != nullptr)
        return std::make_unique<IconvOracle>(set.iconv_name);
    return std::make_unique<IcuOracle>(set.icu_name);
}

// ---- Known differences --------------------------------------------------------------------------------------------

// Codes that mean another character here than to the oracle, and nothing else differs about them.
struct Exchange {
    UNICONV_CID number;
    char32_t there, here;
    bool both_ways; // the oracle writes `there` as it reads it
};
constexpr Exchange EXCHANGES[] = {
    // Text that is all ASCII moves between sets as it is, so ASCII characters in other text have to be the same.
    {50, 0xA5, 0x5C, false},
    {50, 0x203E, 0x7E, false},
    {856, 0x1C, 0x1A, true},
    {856, 0x7F, 0x1C, true},
    {856, 0x1A, 0x7F, true},
    {932, 0x1C, 0x1A, true},
    {932, 0x7F, 0x1C, true},
    {932, 0x1A, 0x7F, true},
    // The variants for systems on which the yen sign and the backslash are one character.
    {3000, 0xA5, 0x5C, true},
    {3000, 0x5C, 0xA5, true},
    {3001, 0xA5, 0x5C, true},
    {3001, 0x5C, 0xA5, true},
    {3002, 0xA5, 0x5C, true},
    {3002, 0x5C, 0xA5, true},
    {3003, 0xA5, 0x5C, true},
    {3003, 0x5C, 0xA5, true},
};

inline char32_t here(UNICONV_CID number, char32_t there) {
    for (const Exchange &exchange : EXCHANGES)
        if (exchange.number == number && exchange.there == there)
            return exchange.here;
    return there;
}
inline char32_t there(UNICONV_CID number, char32_t here) {
    for (const Exchange &exchange : EXCHANGES)
        if (exchange.number == number && exchange.here == here && exchange.both_ways)
            return exchange.there;
    return here;
}

// DEC Kanji is the EUC code without the sets behind 8E and 8F.
inline bool is_outside_dec_kanji(UNICONV_CID number, const std::string &bytes) {
    const auto wide = std::find_if(bytes.begin(), bytes.end(), [](char c) { return (c & 0x80) != 0; });
    return number == 8 && wide != bytes.end() && (*wide == '\x8E' || *wide == '\x8F');
}

// U+FFFD is the sign of a fault, wherever it comes from.
inline bool is_code_of_the_sign_of_faults(UNICONV_CID number, const std::string &bytes) {
    return number == 48 && bytes == "\x84\x31\xA4\x37";
}

} // namespace support::code_pages

#endif
