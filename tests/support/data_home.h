// A home directory with small but whole data files: identifiers, locales, character sets, sort orders and languages.
//
// Everything is text that a test may change: it takes a content from the functions below, and writes what it made of
// it with TempHome::write.
#ifndef TESTS_SUPPORT_DATA_HOME_H
#define TESTS_SUPPORT_DATA_HOME_H

#include "support/temp_home.h"

#include <array>
#include <cstddef>
#include <string>

namespace support {

// ---- Contents -----------------------------------------------------------------------------------------------------

// `content` with the first `from` replaced, which has to be there.
inline std::string changed(std::string content, const std::string &from, const std::string &to) {
    const std::size_t at = content.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? content : content.replace(at, from.size(), to);
}

inline std::string hexadecimal(int byte) {
    static constexpr char DIGITS[] = "0123456789abcdef";
    return {DIGITS[byte >> 4 & 15], DIGITS[byte & 15]};
}

// Single-byte sets have one image of types and one of sounds; here each character is its own other case.
inline std::string charset_loc(const std::string &name) {
    std::string text = "[charset]\nclass = \\x01\nname = " + name +
                       "\ndescription = a set\nid = \\x01\nstatus = \\x00\\x01\nimage_size = \\x00\\x00\\x05\\x05\n";
    constexpr int IMAGE = 257 * 5; // the last entry of each image is a spare
    constexpr int LINE = 257;
    for (int at = 0; at < IMAGE; at += LINE) {
        text += "definition = ";
        for (int i = at; i < at + LINE; ++i)
            text += at < 4 * LINE && i % 4 < 2 ? hexadecimal(i / 4 % 256) : hexadecimal(0);
        text += "\n";
    }
    return text;
}

inline std::string sort_header(const std::string &name, const std::string &set) {
    return "[sortorder]\nclass = \\x01\nid = \\x32\nname = " + name + "\nmenuname = any\ncharset = " + set +
           "\ndescription = an order\n";
}

inline std::string binary_srt(const std::string &set) { return sort_header("bin", set) + "binary = true\n"; }

// Every byte but 0 has a weight of its own, but for letters, whose case is a tertiary difference.
inline std::string dict_srt(const std::string &set) {
    std::string text = sort_header("dict", set);
    for (int byte = 1; byte < 256; ++byte) {
        const bool is_upper = byte >= 'A' && byte <= 'Z';
        if (byte >= 'a' && byte <= 'z')
            continue;
        text += "char = \\x" + hexadecimal(byte) + (is_upper ? "=\\x" + hexadecimal(byte + 0x20) : "") + "\n";
    }
    return text;
}

inline std::string us_english_common() {
    return "[datetime]\n"
           "months = January, February, March, April, May, June, July, August, September, October, November, December\n"
           "shortmonths = Jan, Feb, Mar, Apr, May, Jun, Jul, Aug, Sep, Oct, Nov, Dec\n"
           "days = Sunday, Monday, Tuesday, Wednesday, Thursday, Friday, Saturday\n"
           "firstday = 1\ndateorder = mdy\nis12hour = true\n";
}

// A week from Monday on, and names that are not ASCII.
inline std::string german_common() {
    return "[other]\nmonths = none\n[datetime]\n"
           "months = Januar, Februar, M\\xC3\\xA4rz, April, Mai, Juni, Juli, August, September, Oktober, November, "
           "Dezember\n"
           "shortmonths = Jan, Feb, M\\xC3\\xA4r, Apr, Mai, Jun, Jul, Aug, Sep, Okt, Nov, Dez\n"
           "days = Sonntag, Montag, Dienstag, Mittwoch, Donnerstag, Freitag, Samstag\n"
           "firstday = 2\ndateorder = dmy\nis12hour = false\n";
}

inline std::string objectid_dat() {
    return "[charset]\n1.3.1.1 = iso_1, iso-8859-1\n1.3.1.2 = utf8\n1.3.1.3 = ucs2\n1.3.1.4 = cp850\n"
           "[collate]\n1.3.5.1 = binary, bin\n1.3.5.2 = dict\n"
           "[natlang]\n1.3.6.1 = us_english\n1.3.6.2 = german\n"
           "[datetime]\n1.3.4.1 = iso\n"
           "[numeric]\n1.3.2.1 = dotted\n"
           "[money]\n1.3.3.1 = euro\n";
}

inline std::string locales_dat() {
    return "[aix]\nlocale = C, german, iso_1\nvendor = x\n"
           "[linux]\n"
           "locale = default, us_english, iso_1, binary\n"
           "locale = C, us_english, iso_1, dict\n"
           "locale = three, us_english, iso_1\n"
           "locale = empty, us_english, iso_1, \"\"\n"
           "locale = de, german, iso_1, binary\n"
           "locale = de.utf8, german, utf8, binary\n"
           "locale = us.utf8, us_english, utf8, binary\n"
           "locale = us.850, us_english, cp850, dict\n"
           "locale = de, us_english, cp850, dict\n" // the first one of a name counts
           "locale = dated, us_english, iso_1, binary, iso\n"
           "locale = all, german, iso_1, dict, iso, dotted, euro\n"
           "locale = numbers, german, iso_1, , , dotted\n"
           "locale = one\n"
           "locale = two, us_english\n"
           "locale = nolang, , iso_1\n"
           "locale = badset, us_english, nowhere\n"
           "locale = badlang, nowhere, iso_1\n"
           "locale = badsort, us_english, iso_1, nowhere\n"
           "locale = baddate, us_english, iso_1, binary, nowhere\n"
           "locale = badnum, us_english, iso_1, binary, , nowhere\n"
           "locale = badmoney, us_english, iso_1, binary, , , nowhere\n"
           "locale =\n"
           "[sun]\nlocale = solaris, us_english, iso_1\n";
}

// ---- The directory ------------------------------------------------------------------------------------------------

inline const std::string OBJECTID_DAT = "config/objectid.dat";
inline const std::string LOCALES_DAT = "locales/locales.dat";
inline std::string common_loc_of(const std::string &language) { return "locales/message/" + language + "/common.loc"; }
inline std::string charset_loc_of(const std::string &set) { return "charsets/" + set + "/charset.loc"; }
inline std::string order_of(const std::string &set, const std::string &order) {
    return "charsets/" + set + "/" + order + ".srt";
}

class DataHome : public TempHome {
public:
    static constexpr std::array SETS = {"iso_1", "utf8", "cp850"};

    DataHome() {
        write(OBJECTID_DAT, objectid_dat());
        write(LOCALES_DAT, locales_dat());
        for (const std::string set : SETS) {
            write(charset_loc_of(set), charset_loc(set));
            write(order_of(set, "binary"), binary_srt(set));
            write(order_of(set, "dict"), dict_srt(set));
            write("charsets/" + set + "/" + set + ".cfg", "; nothing\n");
        }
        write(common_loc_of("us_english"), us_english_common());
        write(common_loc_of("german"), german_common());
        for (const char *language : {"us_english", "german"})
            write("locales/message/" + std::string(language) + "/cslib.loc", "; Messages.\n[messages]\n");
        write("locales/money/euro.mon", "[money]\n");
        write("locales/numeric/dotted.num", "[numeric]\n");
        write("locales/datetime/iso.dt", "[datetime]\n");
    }
};

} // namespace support

#endif
