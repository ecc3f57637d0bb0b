// Text between character sets, through the main engine: column values of 30 bytes and documents of 64 KB, against the C
// library's iconv and ICU with converters that are open already; and text that is all ASCII between two sets.
#include "contest.h"
#include "data.h"

#include <dlxcomn/charconv.h>
#include <dlxcomn/locale.h>

#include <iconv.h>
#include <unicode/ucnv.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

namespace bench {
namespace {

constexpr std::size_t SHORT = 30;
constexpr std::size_t LONG = 65536;
constexpr std::size_t ASCII_LENGTH = 64;
// Documents are few, so that they stay in the cache.
constexpr std::size_t DOCUMENTS = 4;

struct Set {
    const char *name;
    CS_BYTE id; // in the engine's own list
    const char *iconv_name;
    const char *icu_name;
};
constexpr Set UTF8 = {"UTF-8", 190, "UTF-8", "UTF-8"};
constexpr Set ISO_1 = {"iso_1", 1, "ISO-8859-1", "ISO-8859-1"};
constexpr Set CP850 = {"cp850", 2, "CP850", "ibm-850"};
constexpr Set WESTERN[] = {
    ISO_1, {"cp1252", 13, "CP1252", "windows-1252"}, CP850, {"iso88592", 20, "ISO-8859-2", "ISO-8859-2"}};
constexpr Set JAPANESE[] = {{"sjis", 141, "SJIS", "Shift_JIS"}, {"eucjis", 140, "EUC-JP", "EUC-JP"}};
constexpr Set TAIWANESE = {"big5", 161, "BIG5", "Big5"};
constexpr Set CHINESE = {"gb18030", 173, "GB18030", "gb18030"};

// ---- Texts --------------------------------------------------------------------------------------------------

// Nothing where the text does not go over.
std::string converted(const char *to, const char *from, const std::string &text) {
    const iconv_t converter = iconv_open(to, from);
    std::string result(text.size() * 4, '\0');
    char *source = const_cast<char *>(text.data()), *target = result.data();
    std::size_t left = text.size(), room = result.size();
    const bool is_done = iconv(converter, &source, &left, &target, &room) == 0;
    iconv_close(converter);
    return is_done ? result.substr(0, result.size() - room) : std::string();
}

// A character in its set and in UTF-8.
struct Character {
    std::string own, utf8;
};
using Alphabet = std::vector<Character>;

Alphabet letters_of(const Set &set) {
    Alphabet letters;
    for (unsigned c = 0xC0; c < 0x180; ++c) {
        const std::string utf8 = {static_cast<char>(0xC0 | c >> 6), static_cast<char>(0x80 | (c & 0x3F))};
        const std::string own = converted(set.iconv_name, "UTF-8", utf8);
        if (!own.empty())
            letters.push_back({own, utf8});
    }
    return letters;
}

// Rows of the table of codes of two bytes that some sets share, as far as they have a character there.
Alphabet rows_of(const Set &set, const char *table, int first, int last) {
    Alphabet characters;
    for (int row = first; row <= last; ++row)
        for (int cell = 0xA1; cell < 0xFF; ++cell) {
            const std::string utf8 = converted("UTF-8", table, {static_cast<char>(row), static_cast<char>(cell)});
            const std::string own = converted(set.iconv_name, "UTF-8", utf8);
            if (!own.empty())
                characters.push_back({own, utf8});
        }
    return characters;
}

// A language: how many of 20 characters are of each alphabet; the rest is ASCII.
struct Part {
    Alphabet alphabet;
    unsigned share;
};
using Language = std::vector<Part>;

Character draw(const Language &language, Random &random) {
    auto kind = static_cast<unsigned>(below(random, 20));
    for (const Part &part : language) {
        if (kind < part.share)
            return part.alphabet[below(random, part.alphabet.size())];
        kind -= part.share;
    }
    const std::string ascii(1, static_cast<char>(0x20 + below(random, 0x3C))); // what all sets have in common
    return {ascii, ascii};
}

struct Texts {
    Set from, to;
    std::vector<std::string> source, target;

    std::size_t place(std::size_t i) const { return i & (source.size() - 1); } // a power of 2
};

// Texts of exactly so many bytes in the set that they are in.
Texts texts_of(const Language &language, const Set &from, const Set &to, std::size_t length, std::uint64_t seed) {
    Random random(seed);
    Texts texts = {from, to, {}, {}};
    const std::size_t count = length == LONG ? DOCUMENTS : VALUES;
    while (texts.source.size() < count) {
        std::string source, target;
        while (source.size() < length) {
            Character next = draw(language, random);
            if (from.id == UTF8.id)
                std::swap(next.own, next.utf8);
            if (source.size() + next.own.size() > length)
                continue;
            source += next.own;
            target += next.utf8;
        }
        texts.source.push_back(source);
        texts.target.push_back(target);
    }
    return texts;
}

// ---- Contenders ---------------------------------------------------------------------------------------------

class Conversion {
public:
    explicit Conversion(const Texts &texts)
        : texts_(texts), room_(4 * texts.source[0].size()), target_(new char[room_]) {}
    bool right(std::size_t i) const {
        return std::string_view(target_.get(), length_) == texts_.target[texts_.place(i)];
    }

protected:
    const std::string &source(std::size_t i) const { return texts_.source[texts_.place(i)]; }

    const Texts &texts_;
    const std::size_t room_;
    const std::unique_ptr<char[]> target_;
    std::size_t length_ = 0;
};

// The locale of an end: what the engine asks of one.
struct End {
    explicit End(const Set &set) {
        attributes.cs_id = set.id;
        description.char_attrib = &attributes;
        cache.locchardesc = &description;
        locale.ctypeptr = &cache;
        format.datatype = CS_CHAR_TYPE;
        format.locale = &locale;
    }
    End(const End &) = delete;
    End &operator=(const End &) = delete;

    CHAR_ATTRIB attributes = {};
    CsCharDesc description = {};
    CsLocCache cache = {};
    CS_LOCALE locale = {};
    CS_DATAFMT format = {};
};

class LibraryConversion : public Conversion {
public:
    explicit LibraryConversion(const Texts &texts) : Conversion(texts), from_(texts.from), to_(texts.to) {
        setenv("DALVEX", BENCH_HOME, 1);
        for (End *end : {&from_, &to_})
            if (end->attributes.cs_id == UTF8.id)
                globals_.cmg_utf8_charset = &end->description;
        context_.ctxglobals = &globals_;
        to_.format.maxlength = static_cast<CS_INT>(room_);
    }
    void work(std::size_t i) {
        const std::string &text = source(i);
        from_.format.maxlength = static_cast<CS_INT>(text.size());
        CS_INT length = 0;
        comn_charset_convert(&context_, CS_LC_CTYPE, &from_.format, const_cast<char *>(text.data()), &to_.format,
                             target_.get(), &length);
        length_ = static_cast<std::size_t>(length);
    }

private:
    End from_, to_;
    CsCtxGlobals globals_ = {};
    CS_CONTEXT context_ = {};
};

class IconvConversion : public Conversion {
public:
    explicit IconvConversion(const Texts &texts)
        : Conversion(texts), converter_(iconv_open(texts.to.iconv_name, texts.from.iconv_name)) {}
    ~IconvConversion() { iconv_close(converter_); }
    void work(std::size_t i) {
        const std::string &text = source(i);
        char *from = const_cast<char *>(text.data()), *to = target_.get();
        std::size_t left = text.size(), room = room_;
        iconv(converter_, &from, &left, &to, &room);
        length_ = room_ - room;
    }

private:
    iconv_t converter_;
};

class IcuConversion : public Conversion {
public:
    explicit IcuConversion(const Texts &texts) : Conversion(texts) {
        UErrorCode error = U_ZERO_ERROR;
        from_ = ucnv_open(texts.from.icu_name, &error);
        to_ = ucnv_open(texts.to.icu_name, &error);
    }
    ~IcuConversion() {
        ucnv_close(from_);
        ucnv_close(to_);
    }
    void work(std::size_t i) {
        const std::string &text = source(i);
        const char *from = text.data();
        char *to = target_.get();
        UChar *pivot_source = pivot_, *pivot_target = pivot_;
        UErrorCode error = U_ZERO_ERROR;
        ucnv_convertEx(to_, from_, &to, to + room_, &from, from + text.size(), pivot_, &pivot_source, &pivot_target,
                       pivot_ + std::size(pivot_), true, true, &error);
        length_ = static_cast<std::size_t>(to - target_.get());
    }

private:
    UConverter *from_, *to_;
    UChar pivot_[1024];
};

class PlainCopy : public Conversion {
public:
    using Conversion::Conversion;
    void work(std::size_t i) {
        const std::string &text = source(i);
        std::memcpy(target_.get(), text.data(), text.size());
        length_ = text.size();
    }
};

void enter_row(const std::string &row, const Texts &texts) {
    enter<LibraryConversion>(row, LIBRARY, texts);
    enter<IconvConversion>(row, "iconv", texts);
    enter<IcuConversion>(row, "ICU", texts);
}

// Both ways, short and long.
void enter_rows_of(const std::string &kind, const Set &set, const Language &language) {
    for (const std::size_t length : {SHORT, LONG}) {
        const std::string size = length == SHORT ? ", 30 bytes" : ", 64 KB";
        // The rows read them as long as the process lives.
        enter_row(kind + set.name + " to UTF-8" + size, *new Texts(texts_of(language, set, UTF8, length, 81)));
        enter_row(kind + "UTF-8 to " + set.name + size, *new Texts(texts_of(language, UTF8, set, length, 82)));
    }
}

} // namespace

void enter_charset_rows() {
    for (const Set &set : WESTERN)
        enter_rows_of("single-byte ", set, {{letters_of(set), 2}});
    for (const Set &set : JAPANESE)
        enter_rows_of("multi-byte ", set,
                      {{rows_of(set, "EUC-JP", 0xA4, 0xA4), 9},   // hiragana
                       {rows_of(set, "EUC-JP", 0xA5, 0xA5), 3},   // katakana
                       {rows_of(set, "EUC-JP", 0xB0, 0xCF), 6}}); // the kanji of everyday
    enter_rows_of("multi-byte ", TAIWANESE, {{rows_of(TAIWANESE, "BIG5", 0xA4, 0xC5), 18}});
    enter_rows_of("multi-byte ", CHINESE, {{rows_of(CHINESE, "GB18030", 0xB0, 0xD6), 18}});

    static const Texts ascii = texts_of(Language(), ISO_1, CP850, ASCII_LENGTH, 83);
    enter_row("ASCII of 64 bytes, iso_1 to cp850", ascii);
    enter<PlainCopy>("ASCII of 64 bytes, iso_1 to cp850", "memcpy", ascii);
}

} // namespace bench
