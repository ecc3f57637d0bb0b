// How a result is finished: padding and terminators by the destination's format, and the doubling of quotes.
#include "frame/conversion.h"

#include <cstring>

namespace {

// What padding does is one rule; what differs is the unit that text is made of.
struct CharUnit {
    static constexpr CS_INT SIZE = 1;
    static void fill_blanks(CS_BYTE *tail, CS_INT bytes) { std::memset(tail, ' ', static_cast<std::size_t>(bytes)); }
};

struct UnicharUnit {
    static constexpr CS_INT SIZE = sizeof(CS_UNICHAR);
    static void fill_blanks(CS_BYTE *tail, CS_INT bytes) {
        for (; bytes >= SIZE; bytes -= SIZE, tail += SIZE)
            dlx::store<CS_UNICHAR>(tail, ' ');
    }
};

template <class Unit>
CS_RETCODE pad_text(CS_INT len, const CS_DATAFMT &format, CS_BYTE *dest, CS_INT *destlen) {
    const CS_INT room = format.maxlength;
    const bool terminate = (format.format & CS_FORMAT_NULLTERM) != 0;

    if (room < len || (terminate && room - len < Unit::SIZE)) {
        if (terminate && room >= Unit::SIZE)
            std::memset(dest + (room / Unit::SIZE - 1) * Unit::SIZE, 0, Unit::SIZE);
        return CS_EOVERFLOW;
    }

    CS_BYTE *tail = dest + *destlen / Unit::SIZE * Unit::SIZE;
    if ((format.format & CS_FORMAT_ZEROPAD) != 0) {
        if ((format.format & CS_FORMAT_BLANKPAD) != 0)
            return CS_EFORMAT;
        if (room > *destlen) {
            std::memset(tail, 0, static_cast<std::size_t>(dest + room - tail));
            *destlen = room;
        }
    } else if ((format.format & CS_FORMAT_BLANKPAD) != 0) {
        if (room > *destlen) {
            const CS_INT bytes = (room - *destlen) / Unit::SIZE * Unit::SIZE;
            Unit::fill_blanks(tail, bytes);
            if (terminate && bytes != 0)
                std::memset(tail + bytes - Unit::SIZE, 0, Unit::SIZE);
        }
        *destlen = room;
    } else if (terminate) {
        std::memset(tail, 0, Unit::SIZE);
        *destlen += Unit::SIZE;
    }
    return CS_SUCCEED;
}

struct SourceCharacter {
    CS_INT width;
    bool whole;
};

// A character that the end of the source cuts is taken as far as it goes, and no byte behind it is read.
SourceCharacter character_at(CS_ATTRIB *attr, CS_BYTE *p, CS_INT remaining) {
    if (remaining == 1) {
        const CS_BYTE *widths = comn_get_widthmap(attr);
        return {1, widths == nullptr || (widths[*p] & 0x0F) <= 1};
    }
    const CS_INT width = comn_char_width(attr, p);
    if (width > remaining)
        return {remaining, false};
    return {width > 0 ? width : 1, true}; // a table with a width of 0 must not stop the walk
}

} // namespace

CS_RETCODE comn__padchar(CS_INT len, CS_DATAFMT *destfmt, CS_VOID *dest, CS_INT *destlen) {
    COM_REQUIRE_PTR(destfmt, CS_FAIL);
    COM_REQUIRE_PTR(dest, CS_FAIL);
    COM_REQUIRE_PTR(destlen, CS_FAIL);
    COM_REQUIRE(len >= 0, CS_FAIL);
    COM_REQUIRE(destfmt->maxlength >= 0, CS_FAIL);
    return pad_text<CharUnit>(len, *destfmt, static_cast<CS_BYTE *>(dest), destlen);
}

CS_RETCODE comn__padunichar(CS_INT len, CS_DATAFMT *destfmt, CS_VOID *dest, CS_INT *destlen) {
    COM_REQUIRE_PTR(destfmt, CS_FAIL);
    COM_REQUIRE_PTR(dest, CS_FAIL);
    COM_REQUIRE_PTR(destlen, CS_FAIL);
    COM_REQUIRE(len >= 0, CS_FAIL);
    COM_REQUIRE(destfmt->maxlength >= 0, CS_FAIL);
    return pad_text<UnicharUnit>(len, *destfmt, static_cast<CS_BYTE *>(dest), destlen);
}

CS_RETCODE comn__padbin(CS_INT len, CS_DATAFMT *destfmt, CS_VOID *dest, CS_INT *destlen) {
    COM_REQUIRE_PTR(destfmt, CS_FAIL);
    COM_REQUIRE_PTR(dest, CS_FAIL);
    COM_REQUIRE_PTR(destlen, CS_FAIL);
    COM_REQUIRE(len >= 0, CS_FAIL);
    const CS_INT room = destfmt->maxlength;
    if ((destfmt->format & CS_FORMAT_ZEROPAD) != 0 && room > len) {
        std::memset(static_cast<CS_BYTE *>(dest) + len, 0, static_cast<std::size_t>(room - len));
        *destlen = room;
    }
    return CS_SUCCEED;
}

CS_RETCODE comn__escchar(CS_VOID *src, CS_DATAFMT *srcfmt, CS_VOID *dest, CS_DATAFMT *destfmt, CS_INT *destlen,
                         CS_ATTRIB *attr, CS_BYTE quote) {
    COM_REQUIRE_PTR(src, CS_FAIL);
    COM_REQUIRE_PTR(srcfmt, CS_FAIL);
    COM_REQUIRE_PTR(dest, CS_FAIL);
    COM_REQUIRE_PTR(destfmt, CS_FAIL);
    COM_REQUIRE_PTR(destlen, CS_FAIL);
    COM_REQUIRE(destfmt->maxlength >= 0, CS_FAIL);

    auto *from = static_cast<CS_BYTE *>(src);
    auto *to = static_cast<CS_BYTE *>(dest);
    const CS_BYTE *end = from + (srcfmt->maxlength > 0 ? srcfmt->maxlength : 0);
    const CS_INT room = destfmt->maxlength;
    const bool stop_at_nul = (srcfmt->format & CS_FORMAT_NULLTERM) != 0;

    // A run is what goes out with one copy: up to a quote, which ends it and begins the next one.
    CS_BYTE *run = from;
    CS_INT written = 0; // by runs that are done
    CS_RETCODE status = CS_SUCCEED;
    CS_BYTE *p = from;
    while (p < end) {
        const SourceCharacter character = character_at(attr, p, static_cast<CS_INT>(end - p));
        const CS_INT width = character.width;
        const bool is_quote = character.whole && comn_to_ascii(attr, p) == quote;
        if (written + (p - run) + (is_quote ? 2 * width : width) > room) {
            status = CS_ETRUNCATED;
            break;
        }
        const bool is_nul = character.whole && width == 1 && *p == 0;
        p += width;
        if (is_quote) {
            const CS_INT bytes = static_cast<CS_INT>(p - run);
            std::memcpy(to + written, run, static_cast<std::size_t>(bytes));
            written += bytes;
            run = p - width;
        }
        if (stop_at_nul && is_nul)
            break;
    }
    const CS_INT bytes = static_cast<CS_INT>(p - run);
    std::memcpy(to + written, run, static_cast<std::size_t>(bytes));
    *destlen = written + bytes;
    return status;
}
