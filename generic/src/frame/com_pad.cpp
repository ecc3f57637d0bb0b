// How a result is finished: padding and terminators by the destination's format, and the doubling of quotes.
#include "charset/walk.h"
#include "frame/conversion.h"

#include <algorithm>
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

// A value without room for its terminator loses its last unit to it.
template <class Unit>
CS_RETCODE end_in_overflow(dlx::SourceLine member, CS_INT room, bool terminate, CS_BYTE *dest) {
    if (terminate && room >= Unit::SIZE)
        std::memset(dest + (room / Unit::SIZE - 1) * Unit::SIZE, 0, Unit::SIZE);
    return COM_TRACE_AT(member, CS_EOVERFLOW);
}

template <class Unit>
CS_RETCODE pad_text(dlx::SourceLine member, CS_INT len, const CS_DATAFMT *destfmt, CS_VOID *destination,
                    CS_INT *destlen) {
    COM_REQUIRE_PTR_AT(member, destfmt, CS_FAIL);
    COM_REQUIRE_PTR_AT(member, destination, CS_FAIL);
    COM_REQUIRE_PTR_AT(member, destlen, CS_FAIL);
    COM_REQUIRE_AT(member, len >= 0, CS_FAIL);
    COM_REQUIRE_AT(member, destfmt->maxlength >= 0, CS_FAIL);
    COM_REQUIRE_AT(member, *destlen >= 0, CS_FAIL);
    auto *dest = static_cast<CS_BYTE *>(destination);
    const CS_INT room = destfmt->maxlength;
    const CS_INT format = destfmt->format;
    const bool terminate = (format & CS_FORMAT_NULLTERM) != 0;
    if (room < len || (terminate && room - len < Unit::SIZE))
        return end_in_overflow<Unit>(member, room, terminate, dest);

    const CS_INT begin = *destlen / Unit::SIZE * Unit::SIZE; // of the tail
    CS_BYTE *tail = dest + begin;
    if ((format & CS_FORMAT_ZEROPAD) != 0) {
        if ((format & CS_FORMAT_BLANKPAD) != 0)
            return COM_TRACE_AT(member, CS_EFORMAT);
        if (room > *destlen) {
            std::memset(tail, 0, static_cast<std::size_t>(room - begin));
            *destlen = room;
        }
    } else if ((format & CS_FORMAT_BLANKPAD) != 0) {
        if (room > *destlen) {
            const CS_INT bytes = (room - *destlen) / Unit::SIZE * Unit::SIZE;
            Unit::fill_blanks(tail, bytes);
            if (terminate && bytes != 0)
                std::memset(tail + bytes - Unit::SIZE, 0, Unit::SIZE);
        }
        *destlen = room;
    } else if (terminate) {
        if (room - begin < Unit::SIZE) // more was written than the value has
            return end_in_overflow<Unit>(member, room, terminate, dest);
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
SourceCharacter character_at(const dlx::Walker &walker, const CS_BYTE *p, std::ptrdiff_t remaining) {
    if (remaining == 1)
        return {1, walker.is_one_byte(*p)};
    const CS_INT width = walker.step(p);
    return width > remaining ? SourceCharacter{static_cast<CS_INT>(remaining), false} : SourceCharacter{width, true};
}

// How many of the `bytes` at `p` are characters of one byte that are neither a quote nor a NUL. There may be
// more of them behind: not much is looked at ahead, since a quote can end the run at once.
std::ptrdiff_t plain_run(const dlx::Walker &walker, const CS_BYTE *p, std::ptrdiff_t bytes, CS_BYTE quote) {
    constexpr std::ptrdiff_t AHEAD = 64;
    const std::ptrdiff_t single = walker.single_byte_run(p, std::min(bytes, AHEAD));
    std::ptrdiff_t run = 0;
    while (run < single && p[run] != 0 && walker.single_byte_to_ascii(p[run]) != quote)
        ++run;
    return run;
}

} // namespace

CS_RETCODE comn__padchar(CS_INT len, CS_DATAFMT *destfmt, CS_VOID *dest, CS_INT *destlen) {
    return pad_text<CharUnit>(COM_HERE, len, destfmt, dest, destlen);
}

CS_RETCODE comn__padunichar(CS_INT len, CS_DATAFMT *destfmt, CS_VOID *dest, CS_INT *destlen) {
    return pad_text<UnicharUnit>(COM_HERE, len, destfmt, dest, destlen);
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
    const dlx::Walker walker(attr);

    // A run is what goes out with one copy: up to a quote, which ends it and begins the next one.
    CS_BYTE *run = from;
    CS_INT written = 0; // by runs that are done
    CS_RETCODE status = CS_SUCCEED;
    CS_BYTE *p = from;
    CS_INT width = 1; // of the character before p
    while (p < end) {
        if (width == 1) {
            if (const auto plain = plain_run(walker, p, std::min(end - p, room - written - (p - run)), quote)) {
                p += plain;
                continue;
            }
        }
        const SourceCharacter character = character_at(walker, p, end - p);
        width = character.width;
        const bool is_quote = character.whole && walker.to_ascii(p) == quote;
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
    return status == CS_SUCCEED ? CS_SUCCEED : COM_TRACE(status);
}
