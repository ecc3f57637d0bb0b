// The tables of the character sets that ship, against the wide-character classes of the C library. Which characters the
// bytes of a set are is told by iconv, and where it lacks the set by ICU; how many codes of a set ICU sees in another
// way stands beside its name.
#include "home/shipped_home.h"

#include <unicode/ucnv.h>

#include <cstdio>
#include <cstring>
#include <cwctype>
#include <memory>
#include <optional>

#include <iconv.h>
#include <locale.h>

namespace {

class HomeCharsets : public ShippedHome {};

constexpr int CODES = 256;
constexpr UChar32 NONE = -1;

locale_t unicode() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C.UTF-8", nullptr);
    return locale;
}

wint_t wide(UChar32 character) { return static_cast<wint_t>(character); }
bool is_letter(UChar32 character) { return iswalpha_l(wide(character), unicode()) != 0; }
UChar32 upper(UChar32 character) { return static_cast<UChar32>(towupper_l(wide(character), unicode())); }
UChar32 lower(UChar32 character) { return static_cast<UChar32>(towlower_l(wide(character), unicode())); }

class Icu {
public:
    explicit Icu(const char *name) {
        UErrorCode error = U_ZERO_ERROR;
        converter_.reset(ucnv_open(name, &error));
        ucnv_setToUCallBack(converter_.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
        EXPECT_TRUE(U_SUCCESS(error)) << name;
    }
    UChar32 character(const std::string &bytes) {
        ucnv_resetToUnicode(converter_.get());
        UErrorCode error = U_ZERO_ERROR;
        UChar text[8];
        const int32_t units = ucnv_toUChars(converter_.get(), text, std::size(text), bytes.data(),
                                            static_cast<int32_t>(bytes.size()), &error);
        if (U_FAILURE(error) || units == 0)
            return NONE;
        int32_t at = 0;
        UChar32 character;
        U16_NEXT(text, at, units, character);
        return at == units && character != 0xFFFD ? character : NONE;
    }

private:
    struct Close {
        void operator()(UConverter *converter) const { ucnv_close(converter); }
    };
    std::unique_ptr<UConverter, Close> converter_;
};

class Iconv {
public:
    explicit Iconv(const char *name) : handle_(iconv_open("UTF-32LE", name)) {
        EXPECT_NE(handle_, reinterpret_cast<iconv_t>(-1)) << name;
    }
    ~Iconv() { iconv_close(handle_); }
    Iconv(const Iconv &) = delete;
    Iconv &operator=(const Iconv &) = delete;

    UChar32 character(std::string bytes) {
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        UChar32 text[4] = {NONE};
        char *to = reinterpret_cast<char *>(text);
        std::size_t room = sizeof text;
        char *from = bytes.data();
        std::size_t left = bytes.size();
        const bool is_whole = iconv(handle_, &from, &left, &to, &room) == 0 && left == 0 &&
                              iconv(handle_, nullptr, nullptr, &to, &room) == 0;
        return is_whole && room == sizeof text - sizeof *text ? text[0] : NONE;
    }

private:
    iconv_t handle_;
};

// A set as its source tells it.
class Converter {
public:
    // Without a name of iconv's the source is ICU.
    Converter(const char *iconv_name, const char *icu_name) : icu_(icu_name) {
        if (iconv_name != nullptr)
            iconv_.emplace(iconv_name);
    }
    UChar32 character(const std::string &bytes) {
        const UChar32 seen_by_icu = icu_.character(bytes);
        const UChar32 character = iconv_ ? iconv_->character(bytes) : seen_by_icu;
        differing_ += character != seen_by_icu;
        return character;
    }
    int differing() const { return differing_; }

private:
    Icu icu_;
    std::optional<Iconv> iconv_;
    int differing_ = 0;
};

std::string byte(int code) { return std::string(1, static_cast<char>(code)); }

// ---- All sets ------------------------------------------------------------------------------------------------------

TEST_F(HomeCharsets, AreAllLoaded) {
    for (const CSID_CSNAME &set : shipped_sets()) {
        const CHAR_ATTRIB *const loaded = charset(name_of(set));
        ASSERT_NE(loaded, nullptr) << name_of(set);
        EXPECT_EQ(text_of(reinterpret_cast<const CS_CHAR *>(loaded->cs_name), loaded->cs_namelen), name_of(set));
        EXPECT_EQ(loaded->cs_id, set.csid) << name_of(set);
        EXPECT_EQ(loaded->cs_status, 0) << name_of(set);
    }
}

TEST_F(HomeCharsets, SetsOnAsciiHaveItsClasses) {
    for (const CSID_CSNAME &row : shipped_sets()) {
        CHAR_ATTRIB *const set = charset(name_of(row));
        CS_BYTE digit[] = "7";
        CS_BYTE letter[] = "q";
        if (comn_isdigit(set, digit) == 0)
            continue; // EBCDIC
        EXPECT_NE(comn_isalpha(set, letter), 0) << name_of(row);
        EXPECT_EQ(comn_to_ascii(set, digit), '7') << name_of(row);
        EXPECT_EQ(comn_to_ascii(set, letter), 'q') << name_of(row);
        for (CS_BYTE c : std::string(" !\"#$&'()*+,-./09:;<=>?@AMZ[]^_`amz{|}")) { // not "%": Arabic in cp864
            CS_BYTE text[] = {c, 0};
            // utf16 reads the low byte and a zero behind it.
            EXPECT_EQ(comn_isalpha(set, text) != 0, is_letter(c)) << name_of(row) << " " << c;
            EXPECT_EQ(comn_get_lex(set, text), ISO_1_type_map.chmap[c].char_lex) << name_of(row) << " " << c;
        }
    }
}

TEST_F(HomeCharsets, TheFileOfIso1IsWhatIsBuiltIn) {
    const CHAR_ATTRIB *const set = charset("iso_1");
    EXPECT_EQ(std::memcmp(set->cs_type_map, &ISO_1_type_map, sizeof ISO_1_type_map), 0);
    EXPECT_EQ(std::memcmp(set->cs_soundex, ISO_1_char_attrib.cs_soundex, sizeof(CS_SOUNDEX)), 0);
    EXPECT_EQ(set->cs_width_map, nullptr);
    EXPECT_EQ(set->cs_norm_map, nullptr);
}

// ---- Single bytes --------------------------------------------------------------------------------------------------

struct Single {
    const char *name;
    const char *iconv_name;
    const char *icu_name;
    int differing; // codes that are another character for ICU, or none
};

constexpr Single ON_ASCII[] = {
    {"ascii_8", "ASCII", "US-ASCII", 0},
    {"cp850", "IBM850", "ibm-850", 3},
    {"cp437", "IBM437", "ibm-437", 4},
    {"roman8", "HP-ROMAN8", "hp-roman8", 7},
    {"iso646", "ASCII", "US-ASCII", 0},
    {"cp860", "IBM860", "ibm-860", 4},
    {"cp863", "IBM863", "ibm-863", 4},
    {"ascii_7", "ASCII", "US-ASCII", 0},
    {"cp1252", "CP1252", "windows-1252", 5},
    {"iso15", "ISO-8859-15", "ISO-8859-15", 0},
    {"cp861", "IBM861", "ibm-861", 4},
    {"iso88592", "ISO-8859-2", "ISO-8859-2", 0},
    {"cp852", "IBM852", "ibm-852", 4},
    {"cp1250", "CP1250", "windows-1250", 5},
    {"mac_ee", "MAC-CENTRALEUROPE", "macos-29-10.2", 0},
    {"cp1257", "CP1257", "windows-1257", 10},
    {"iso13", "ISO-8859-13", "ISO-8859-13", 0},
    {"cp775", "CP775", "ibm-775", 3},
    {"iso88593", "ISO-8859-3", "ISO-8859-3", 0},
    {"iso88594", "ISO-8859-4", "ISO-8859-4", 0},
    {"cp865", "IBM865", "ibm-865", 4},
    {"cp921", "IBM921", "ibm-921", 0},
    {"iso88595", "ISO-8859-5", "ISO-8859-5", 0},
    {"cp855", "IBM855", "ibm-855", 3},
    {"cp866", "IBM866", "ibm-866", 3},
    {"cp1251", "CP1251", "windows-1251", 1},
    {"koi8", "KOI8-R", "KOI8-R", 0},
    {"mac_cyr", "MAC-CYRILLIC", "macos-7_3-10.2", 1},
    {"iso88596", "ISO-8859-6", "ISO-8859-6", 0},
    {"cp1256", "CP1256", "windows-1256", 0},
    {"iso88597", "ISO-8859-7", "ISO-8859-7", 0},
    {"cp869", "IBM869", "ibm-869", 5},
    {"cp1253", "CP1253", "windows-1253", 15},
    {"macgreek", nullptr, "macos-6_2-10.4", 0},
    {"cp737", "CP737", "ibm-737", 3},
    {"iso88598", "ISO-8859-8", "ISO-8859-8", 0},
    {"cp1255", "CP1255", "windows-1255", 12},
    {"cp856", "IBM856", "ibm-856", 0},
    {"cp862", "IBM862", "ibm-862", 4},
    {"iso88599", "ISO-8859-9", "ISO-8859-9", 0},
    {"cp1254", "CP1254", "windows-1254", 7},
    {"cp857", "IBM857", "ibm-857", 3},
    {"macturk", nullptr, "macos-35-10.2", 0},
    {"tis620", "TIS-620", "TIS-620", 41},
    {"cp874", nullptr, "windows-874", 0},
    {"cp1258", "CP1258", "windows-1258", 9},
    {"cp1006", nullptr, "ibm-1006", 0},
    {"cp858", "CP858", "ibm-858", 3},
    {"cp874ibm", nullptr, "ibm-874", 0},
    {"cp923", nullptr, "ibm-923", 0},
    {"mac_euro", nullptr, "macintosh", 0},
};

constexpr Single EBCDIC[] = {
    {"cp273", "IBM273", "ibm-273", 0},    {"cp280", "IBM280", "ibm-280", 0},    {"cp284", "IBM284", "ibm-284", 0},
    {"cp285", "IBM285", "ibm-285", 1},    {"cp297", "IBM297", "ibm-297", 0},    {"cp277", "IBM277", "ibm-277", 0},
    {"cp870", "IBM870", "ibm-870", 1},    {"cp278", "IBM278", "ibm-278", 2},    {"cp875", "CP875", "ibm-875", 3},
    {"cp424", "IBM424", "ibm-424", 4},    {"cp1026", "IBM1026", "ibm-1026", 3}, {"cp037", "IBM037", "ibm-37", 0},
    {"cp500", "IBM500", "ibm-500", 0},    {"cp1047", "IBM1047", "ibm-1047", 0}, {"cp290", "IBM290", "ibm-290", 98},
    {"cp1140", "IBM1140", "ibm-1140", 0}, {"cp1141", "IBM1141", "ibm-1141", 0}, {"cp1142", "IBM1142", "ibm-1142", 0},
    {"cp1143", "IBM1143", "ibm-1143", 0}, {"cp1144", "IBM1144", "ibm-1144", 0}, {"cp1145", "IBM1145", "ibm-1145", 0},
    {"cp1146", "IBM1146", "ibm-1146", 0}, {"cp1147", "IBM1147", "ibm-1147", 0}, {"cp1148", "IBM1148", "ibm-1148", 0},
    {"cp1149", "IBM1149", "ibm-1149", 0}, {"cp420", "IBM420", "ibm-420", 1},    {"cp871v1", "IBM871", "ibm-871", 2},
    {"cp930", "IBM930", "ibm-930", 0},    {"cp939", "IBM939", "ibm-939", 0},    {"cp933", "IBM933", "ibm-933", 0},
    {"cp935", "IBM935", "ibm-935", 0},    {"cp937", "IBM937", "ibm-937", 0},    {"cp5026", nullptr, "ibm-930", 0},
    {"cp5035", nullptr, "ibm-939", 0},
};

class Codes {
public:
    explicit Codes(const Single &row) {
        Converter converter(row.iconv_name, row.icu_name);
        for (int code = 0; code < CODES; ++code)
            characters_[code] = converter.character(byte(code));
        EXPECT_EQ(converter.differing(), row.differing) << row.name;
    }
    UChar32 operator[](int code) const { return characters_[code]; }
    // The lowest code of a character; `otherwise` where the set does not have it.
    int code_of(UChar32 character, int otherwise) const {
        for (int code = 0; code < CODES; ++code)
            if (characters_[code] == character)
                return code;
        return otherwise;
    }

private:
    UChar32 characters_[CODES];
};

void expect_classes(const Single &row, CHAR_ATTRIB *set, bool is_ebcdic) {
    const Codes codes(row);
    for (int code = 0; code < CODES; ++code) {
        const UChar32 c = codes[code];
        CS_BYTE at = static_cast<CS_BYTE>(code);
        CS_BYTE changed = 0;
        const auto where = [&] {
            char text[40];
            std::snprintf(text, sizeof text, "%s %02X U+%04X", row.name, code, static_cast<unsigned>(c));
            return std::string(text);
        };
        if (c == NONE)
            continue;
        EXPECT_EQ(comn_isalpha(set, &at) != 0, is_letter(c)) << where();
        EXPECT_EQ(comn_isdigit(set, &at) != 0, c >= '0' && c <= '9') << where();
        EXPECT_EQ(comn_isxdigit(set, &at) != 0, iswxdigit_l(wide(c), unicode()) != 0) << where();
        EXPECT_EQ(comn_isspace(set, &at) != 0, iswspace_l(wide(c), unicode()) != 0) << where();
        EXPECT_EQ(comn_ispunct(set, &at) != 0, iswpunct_l(wide(c), unicode()) != 0) << where();
        EXPECT_EQ(comn_isgraph(set, &at) != 0, iswprint_l(wide(c), unicode()) != 0) << where();
        EXPECT_EQ(comn_isupper(set, &at) != 0, iswupper_l(wide(c), unicode()) != 0) << where();
        comn_toupper(set, &at, &changed);
        EXPECT_EQ(changed, codes.code_of(upper(c), code)) << where();
        comn_tolower(set, &at, &changed);
        EXPECT_EQ(changed, codes.code_of(lower(c), code)) << where();
        const int ascii = !is_ebcdic ? codes.code_of(lower(c), code) : c < 0x80 ? lower(c) : 0;
        EXPECT_EQ(comn_to_ascii(set, &at), ascii) << where();
    }
}

TEST_F(HomeCharsets, SetsOfSingleBytesHaveTheClassesOfTheirCharacters) {
    for (const Single &row : ON_ASCII) {
        CHAR_ATTRIB *const set = charset(row.name);
        EXPECT_EQ(set->cs_class, 1) << row.name;
        EXPECT_EQ(set->cs_maxcharlen, 1) << row.name;
        expect_classes(row, set, false);
    }
}

TEST_F(HomeCharsets, SetsOfEbcdicHaveTheClassesOfTheirCharactersAndAnAsciiForm) {
    for (const Single &row : EBCDIC) {
        CHAR_ATTRIB *const set = charset(row.name);
        EXPECT_EQ(set->cs_class, 2) << row.name;
        EXPECT_EQ(set->cs_width_map, nullptr) << row.name;
        expect_classes(row, set, true);
    }
}

TEST_F(HomeCharsets, SoundsAreThoseOfTheLettersAtTheirCodes) {
    EXPECT_EQ(charset("cp037")->cs_soundex->sound[0xC2], '1'); // B
    EXPECT_EQ(charset("cp037")->cs_soundex->sound['z'], 0);    // a colon
    EXPECT_EQ(charset("koi8")->cs_soundex->sound[0xC1], '0');  // a Cyrillic letter
    for (int code = 0; code < 0x80; ++code)
        for (const char *name : {"cp850", "sjis", "utf8", "gb18030"})
            EXPECT_EQ(charset(name)->cs_soundex->sound[code], ISO_1_char_attrib.cs_soundex->sound[code]) << name;
}

// What neither ICU nor iconv has.
TEST_F(HomeCharsets, MacThaiIsThaiWithSignsAndShiftedMarks) {
    CHAR_ATTRIB *const thai = charset("tis620");
    CHAR_ATTRIB *const mac = charset("macthai");
    for (int code = 0xA1; code <= 0xFB; ++code) {
        if ((code >= 0xDB && code <= 0xDE) || code == 0xEE || code >= 0xFA)
            continue; // signs
        CS_BYTE at = static_cast<CS_BYTE>(code);
        EXPECT_EQ(comn_isalpha(mac, &at), comn_isalpha(thai, &at)) << code;
    }
    for (int code : {0x80, 0x81, 0x82, 0x8D, 0x9D, 0xDD, 0xEE, 0xFA}) {
        CS_BYTE at = static_cast<CS_BYTE>(code);
        EXPECT_NE(comn_ispunct(mac, &at), 0) << code;
    }
    CS_BYTE shifted_mark = 0x8F; // as 0xED
    CS_BYTE mark = 0xED;
    EXPECT_EQ(comn_isalpha(mac, &shifted_mark), comn_isalpha(thai, &mark));
}

// ---- Wider characters ----------------------------------------------------------------------------------------------

struct Double {
    const char *name;
    const char *iconv_name;
    const char *icu_name;
    int longest;
    int differing; // codes of up to two bytes that are another character for ICU, or none
};

constexpr Double DOUBLES[] = {
    {"sjis", "SHIFT_JIS", "ibm-943_P15A-2003", 2, 2731},
    {"cp932", "IBM932", "ibm-943_P15A-2003", 2, 520},
    {"cp932ms", "CP932", "ibm-943_P15A-2003", 2, 0},
    {"eucjis", "EUC-JP", "EUC-JP", 3, 466},
    {"deckanji", "EUC-JP", "EUC-JP", 2, 463},
    {"cp954", nullptr, "ibm-954", 3, 0},
    {"eucksc", "EUC-KR", "EUC-KR", 2, 191},
    {"cp949", "CP949", "windows-949", 2, 188},
    {"euccns", "EUC-TW", "EUC-TW", 4, 447},
    {"big5", "BIG5", "Big5", 2, 5809},
    {"big5hk", "BIG5-HKSCS", "Big5-HKSCS", 2, 685},
    {"cp950", "CP950", "windows-950", 2, 5809},
    {"eucgb", "EUC-CN", "GB2312", 2, 1392},
    {"cp936", "CP936", "windows-936", 2, 2149},
    {"gb18030", "GB18030", "gb18030", 4, 24},
    {"utf8", "UTF-8", "UTF-8", 4, 0},
};

// The ASCII character that a pair is a form of, in lower case.
int ascii_of_wide(UChar32 c) {
    if (c < 0x80)
        return lower(c);
    if (c == 0x3000)
        return ' ';
    return c >= 0xFF01 && c <= 0xFF5E ? lower(c - 0xFEE0) : 0;
}

int first_with_width(const CHAR_ATTRIB *set, int width) {
    for (int lead = 0; lead < CODES; ++lead)
        if ((set->cs_width_map[lead] & 0x0F) == width)
            return lead;
    return -1;
}

TEST_F(HomeCharsets, WidthsAreThoseOfTheCharacters) {
    for (const Double &row : DOUBLES) {
        CHAR_ATTRIB *const set = charset(row.name);
        EXPECT_EQ(set->cs_class, 2) << row.name;
        EXPECT_EQ(set->cs_maxcharlen, row.longest) << row.name;
        EXPECT_EQ(first_with_width(set, 0), -1) << row.name;
        Converter converter(row.iconv_name, row.icu_name);
        for (int lead = 0; lead < CODES; ++lead) {
            CS_BYTE text[5] = {static_cast<CS_BYTE>(lead), 0xA1, 0xA1, 0xA1, 0};
            const int width = comn_char_width(set, text);
            if (converter.character(byte(lead)) != NONE && lead != 0x80 && lead != 0xFF) {
                EXPECT_EQ(width, 1) << row.name << " " << lead;
            }
            int pairs = 0;
            for (int second = 0; second < CODES; ++second)
                pairs += converter.character(byte(lead) + byte(second)) != NONE && width == 1 &&
                         converter.character(byte(lead)) == NONE;
            const bool is_left_out = row.name == std::string("deckanji") && lead == 0x8E;
            EXPECT_EQ(pairs != 0, is_left_out) << row.name << " " << lead;
        }
    }
}

// Of a pair the letters, the case and the ASCII form are exact. Case is kept where the other one begins with another
// byte.
TEST_F(HomeCharsets, PairsHaveTheClassesOfTheirCharacters) {
    for (const Double &row : DOUBLES) {
        CHAR_ATTRIB *const set = charset(row.name);
        Converter converter(row.iconv_name, row.icu_name);
        int checked = 0;
        for (int lead = 0; lead < CODES; ++lead) {
            if ((set->cs_width_map[lead] & 0x0F) != 2)
                continue;
            UChar32 characters[CODES];
            for (int second = 0; second < CODES; ++second)
                characters[second] = converter.character(byte(lead) + byte(second));
            for (int second = 0; second < CODES; ++second) {
                const UChar32 c = characters[second];
                CS_BYTE pair[3] = {static_cast<CS_BYTE>(lead), static_cast<CS_BYTE>(second), 0};
                if (c == NONE || comn_char_width(set, pair) != 2)
                    continue;
                ++checked;
                char where[60];
                std::snprintf(where, sizeof where, "%s %02X%02X U+%04X", row.name, lead, second,
                              static_cast<unsigned>(c));
                const int ascii = ascii_of_wide(c);
                EXPECT_EQ(comn_to_ascii(set, pair), ascii) << where;
                EXPECT_EQ(comn_isalpha(set, pair) != 0, ascii != 0 ? is_letter(ascii) : is_letter(c)) << where;
                EXPECT_EQ(comn_isdigit(set, pair) != 0, ascii >= '0' && ascii <= '9') << where;
                CS_BYTE changed[4] = {};
                comn_toupper(set, pair, changed);
                const auto *const found = std::ranges::find(characters, upper(c));
                EXPECT_EQ(changed[0], lead) << where;
                EXPECT_EQ(changed[1], found != std::end(characters) ? found - characters : second) << where;
            }
        }
        EXPECT_EQ(converter.differing(), row.differing) << row.name;
        EXPECT_GT(checked, row.longest == 4 && row.name == std::string("utf8") ? 1900 : 5000) << row.name;
    }
}

TEST_F(HomeCharsets, EucOfThreeBytesAndMoreAreWalkedWhole) {
    CS_BYTE supplementary[] = {0x8F, 0xB0, 0xA1, 'a'};
    CS_BYTE kana[] = {0x8E, 0xB1, 'a'};
    EXPECT_EQ(comn_char_width(charset("eucjis"), supplementary), 3);
    EXPECT_EQ(comn_char_width(charset("eucjis"), kana), 2);
    EXPECT_EQ(comn_disp_width(charset("eucjis"), kana), 1);
    EXPECT_NE(comn_isalpha(charset("eucjis"), supplementary), 0);
    CS_BYTE plane2[] = {0x8E, 0xA2, 0xA1, 0xA1};
    EXPECT_EQ(comn_char_width(charset("euccns"), plane2), 4);
    CS_BYTE pair[] = {0x8F, 0xA1};
    EXPECT_EQ(comn_char_width(charset("deckanji"), pair), 1) << "it has no single shifts";
}

TEST_F(HomeCharsets, FourBytesOfGb18030AreKnownByTheirDigit) {
    CHAR_ATTRIB *const set = charset("gb18030");
    CS_BYTE four[] = {0x81, 0x30, 0x81, 0x30};
    CS_BYTE two[] = {0x81, 0x40};
    EXPECT_EQ(comn_char_width(set, four), 4);
    EXPECT_EQ(comn_char_width(set, two), 2);
    CS_BYTE none[] = {0xFF, 0x30};
    EXPECT_EQ(comn_char_width(set, none), 1);
}

TEST_F(HomeCharsets, Utf8HasTheClassesOfAllCharactersOfTwoBytesAndOfMostBeyond) {
    CHAR_ATTRIB *const set = charset("utf8");
    CS_BYTE umlaut[] = {0xC3, 0xA4, 0};
    CS_BYTE changed[3] = {};
    EXPECT_NE(comn_islower(set, umlaut), 0);
    comn_toupper(set, umlaut, changed);
    EXPECT_EQ(changed[0] << 8 | changed[1], 0xC384);
    CS_BYTE han[] = {0xE6, 0x97, 0xA5, 0};
    CS_BYTE copied[5] = {};
    EXPECT_NE(comn_isalpha(set, han), 0);
    comn_toupper(set, han, copied);
    EXPECT_EQ(std::memcmp(copied, han, 4), 0) << "a character without case is copied whole";
    CS_BYTE dash[] = {0xE2, 0x80, 0x94, 0};
    EXPECT_EQ(comn_isalpha(set, dash), 0);
    EXPECT_EQ(comn_to_ascii(set, umlaut), 0);
    EXPECT_EQ(comn_char_width(set, han), 3);
    CS_BYTE smile[] = {0xF0, 0x9F, 0x98, 0x80, 0};
    EXPECT_EQ(comn_char_width(set, smile), 4);
}

TEST_F(HomeCharsets, Utf16IsWalkedByUnits) {
    CHAR_ATTRIB *const set = charset("utf16");
    const auto unit = [](char16_t c, CS_BYTE(&bytes)[2]) { std::memcpy(bytes, &c, 2); };
    CS_BYTE bytes[2];
    for (char16_t c = 0; c < 0x80; ++c) {
        unit(c, bytes);
        EXPECT_EQ(comn_char_width(set, bytes), 2);
        EXPECT_EQ(comn_to_ascii(set, bytes), lower(c));
        EXPECT_EQ(comn_isalpha(set, bytes) != 0, is_letter(c)) << int{c};
        EXPECT_EQ(comn_isspace(set, bytes) != 0, iswspace_l(wide(c), unicode()) != 0) << int{c};
    }
    for (char16_t c : {u'\u0416', u'\u65E5', u'\uAC00', u'\u3042'}) {
        unit(c, bytes);
        EXPECT_NE(comn_isalpha(set, bytes), 0) << int{c};
        EXPECT_EQ(comn_to_ascii(set, bytes), 0) << int{c};
    }
    unit(u'\uFF17', bytes);
    EXPECT_EQ(comn_to_ascii(set, bytes), '7');
    unit(u'\u3000', bytes);
    EXPECT_EQ(comn_to_ascii(set, bytes), ' ');
}

TEST_F(HomeCharsets, FullWidthNumbersAreReadAsNumbers) {
    CS_CHAR digits[] = "\x82\x50\x82\x51\x82\x52";
    CS_CHAR ascii[8] = {};
    CS_INT length = 0;
    comn_str_to_ascii(digits, 6, ascii, &length, charset("sjis"));
    EXPECT_EQ(text_of(ascii, length), "123");
    CS_CHAR ebcdic[] = "\xF1\xF9\xF8\xF7";
    comn_str_to_ascii(ebcdic, 4, ascii, &length, charset("cp037"));
    EXPECT_EQ(text_of(ascii, length), "1987");
}

} // namespace
