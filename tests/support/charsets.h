// Multi-byte character sets made by hand, and random ones, for everything that walks text.
#ifndef TESTS_SUPPORT_CHARSETS_H
#define TESTS_SUPPORT_CHARSETS_H

#include <dlxcomn/dlxcomn.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace support {

// A character set with tables of its own. It begins with one-byte characters throughout, each its own other
// case and its own ASCII form up to 0x7F; the setters build on that. Not copied: the record points into it.
class ConstructedSet {
public:
    ConstructedSet(int type_pages, int norm_pages) : types_(type_pages), norms_(norm_pages) {
        widths_.fill(0x11);
        for (int code = 0; code < 256; ++code) {
            const CHAR_MAP &iso1 = ISO_1_type_map.chmap[code];
            if (!types_.empty())
                types_[0].chmap[code] = code < 0x80 ? iso1 : CHAR_MAP{0, 0, 0, 0};
            if (!norms_.empty())
                norms_[0].norm[code] = static_cast<CS_BYTE>(code < 0x80 ? code : 0);
        }
        record_.cs_class = 2;
        record_.cs_id = 200;
        record_.cs_namelen = 4;
        std::memcpy(record_.cs_name, "test", 5);
        record_.cs_maxcharlen = 1;
        record_.cs_ncharsize = 1;
        record_.cs_nnorm = static_cast<CS_BYTE>(norm_pages);
        record_.cs_ntype = static_cast<CS_BYTE>(type_pages);
        record_.cs_width_map = widths_.data();
        record_.cs_norm_map = norms_.empty() ? nullptr : norms_.data();
        record_.cs_type_map = types_.empty() ? nullptr : types_.data();
    }
    ConstructedSet(const ConstructedSet &) = delete;
    ConstructedSet &operator=(const ConstructedSet &) = delete;

    CS_ATTRIB *get() { return &record_; }

    // First bytes first to last begin characters of `bytes` bytes and `columns` columns.
    ConstructedSet &width(int first, int last, int bytes, int columns) {
        for (int code = first; code <= last; ++code)
            widths_[code] = static_cast<CS_BYTE>(columns << 4 | bytes);
        record_.cs_maxcharlen = std::max(record_.cs_maxcharlen, static_cast<CS_BYTE>(bytes));
        return *this;
    }

    // Width 2 means 4 where the second byte is a digit.
    ConstructedSet &four_byte_codes() {
        widths_[255] = static_cast<CS_BYTE>(0xF0 | (widths_[255] & 0x0F));
        record_.cs_maxcharlen = 4;
        return *this;
    }

    ConstructedSet &without_width_map() {
        record_.cs_width_map = nullptr;
        return *this;
    }

    // The second byte behind `lead` is looked up in type page `page`.
    ConstructedSet &type_row(int lead, int page) {
        types_[0].chmap[lead].char_upper = static_cast<CS_BYTE>(page);
        types_[0].chmap[lead].char_type = CS_CT_ROW;
        return *this;
    }
    ConstructedSet &type(int page, int code, CHAR_MAP entry) {
        types_[page].chmap[code] = entry;
        return *this;
    }

    // The second byte behind `lead` is looked up in normalization page `page`.
    ConstructedSet &norm_row(int lead, int page) { return norm(0, lead, page); }
    ConstructedSet &norm(int page, int code, int ascii) {
        norms_[page].norm[code] = static_cast<CS_BYTE>(ascii);
        return *this;
    }

private:
    CHAR_ATTRIB record_ = {};
    std::array<CS_BYTE, 256> widths_;
    std::vector<CS_TYPE_MAP> types_;
    std::vector<CS_NORM_MAP> norms_;
};

// The lead byte of the wide forms of ASCII characters in the sets below: WIDE_LEAD, c + 0x80 is a wide c. The
// wide blank is 0xA3 0xA0.
constexpr CS_BYTE WIDE_LEAD = 0xA3;

// Wide forms of the ASCII characters, with classes, case and ASCII forms.
inline void add_wide_ascii(ConstructedSet &set) {
    set.type_row(WIDE_LEAD, 1).norm_row(WIDE_LEAD, 1);
    for (int c = 0x20; c < 0x7F; ++c) {
        const CHAR_MAP &narrow = ISO_1_type_map.chmap[c];
        set.type(1, c + 0x80,
                 {static_cast<CS_BYTE>(narrow.char_upper + 0x80), static_cast<CS_BYTE>(narrow.char_lower + 0x80),
                  narrow.char_lex, narrow.char_type});
        set.norm(1, c + 0x80, c);
    }
}

// Two bytes from 0x81 to 0xFE on; second bytes may be ASCII codes.
class DoubleByteSet : public ConstructedSet {
public:
    DoubleByteSet() : ConstructedSet(2, 2) {
        width(0x81, 0xFE, 2, 2);
        add_wide_ascii(*this);
    }
};

// The same with four bytes where the second one is a digit.
class FourByteSet : public ConstructedSet {
public:
    FourByteSet() : ConstructedSet(2, 2) {
        width(0x81, 0xFE, 2, 2);
        four_byte_codes();
        add_wide_ascii(*this);
    }
};

// Two bytes from 0xA1 on and behind 0x8E (there in one column), three behind 0x8F.
class ThreeByteSet : public ConstructedSet {
public:
    ThreeByteSet() : ConstructedSet(2, 2) {
        width(0xA1, 0xFE, 2, 2).width(0x8E, 0x8E, 2, 1).width(0x8F, 0x8F, 3, 2);
        add_wide_ascii(*this);
    }
};

// Any tables: widths 0 to 15, rows of any page that exists, and now and then no table of a kind.
class RandomSet : public ConstructedSet {
public:
    static constexpr int PAGES = 3;

    explicit RandomSet(std::mt19937_64 &random)
        : ConstructedSet(random() % 8 != 0 ? PAGES : 0, random() % 3 != 0 ? PAGES : 0) {
        const bool has_types = get()->cs_type_map != nullptr;
        const bool has_norms = get()->cs_norm_map != nullptr;
        const int widest = std::array{1, 2, 4, 15}[random() % 4];
        for (int code = 0; code < 256; ++code) {
            const auto bits = random();
            if ((bits & 1) != 0)
                width(code, code, static_cast<int>((bits >> 8) % (widest + 1)), static_cast<int>((bits >> 16) % 16));
            for (int page = 0; page < PAGES; ++page) {
                if (has_types)
                    type(page, code, random_entry(random()));
                if (has_norms)
                    norm(page, code, static_cast<int>(random() % 3 != 0 ? random() % (page == 0 ? PAGES : 256) : 0));
            }
            if (has_types && (bits >> 32) % 4 == 0)
                type_row(code, static_cast<int>((bits >> 40) % PAGES));
        }
        if (random() % 2 != 0)
            four_byte_codes();
        if (random() % 8 == 0)
            without_width_map();
    }

private:
    // Without the row bit; a byte is often 0, as where there is no other case.
    static CHAR_MAP random_entry(unsigned long long bits) {
        const auto byte = [&](int at) {
            return static_cast<CS_BYTE>((bits >> (56 + at) & 1) != 0 ? bits >> (8 * at) : 0);
        };
        return {byte(0), byte(1), byte(2), static_cast<CS_BYTE>(byte(3) & ~CS_CT_ROW)};
    }
};

// The longest a step can be, so how far behind its text a walk can come.
constexpr int LONGEST_CHARACTER = 15;

// Text of `length` bytes in which whole and cut characters, digits and quotes are frequent, and a NUL is rare.
inline std::string random_text(std::mt19937_64 &random, std::size_t length) {
    static constexpr CS_BYTE FAVOURITES[] = {'0', '7',  '9',  'a',  'Z',  ' ',  '\'',
                                             '"', 0x8E, 0x8F, 0xA3, 0xB1, 0xFE, 0xFF};
    std::string text(length, '\0');
    const auto taste = random() % 4;
    for (char &c : text) {
        const auto bits = random();
        switch ((bits >> 32) % 4 < taste ? 0 : (bits >> 40) % 2 + 1) {
        case 0:
            c = static_cast<char>(FAVOURITES[bits % std::size(FAVOURITES)]);
            break;
        case 1:
            c = static_cast<char>(bits % 256);
            break;
        default:
            c = static_cast<char>(' ' + bits % 95);
        }
    }
    return text;
}

} // namespace support

#endif
