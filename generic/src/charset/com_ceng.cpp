// The main engine: text from any character set to any other.
//
// Each route is tried in the order of its cost. Sets that are the same are copied, the application's own conversions
// come next, then text that is ASCII alone, then the one step between a set and UTF-8, and only then 16-bit text in
// between. That last way settles every case: whatever a quicker one does not finish is done again by it, and has its
// status. Values of a database are short: work buffers lie on the stack until one is too long for that.

#include "charset/operands.h"
#include "diag/check.h"

#include <dlxcomn/charconv.h>
#include <dlxcomn/list.h>
#include <dlxcomn/path.h>
#include <dlxunic/unic.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace dlx {
namespace {

constexpr int SUBSTITUTE = '?';
constexpr int WIDE_SUBSTITUTE = 0x3F3F; // two of them
constexpr CS_INT LONGEST_UTF8 = 0x3FFFFFFE;
constexpr CS_INT LONGEST_RESULT = std::numeric_limits<CS_INT>::max() - 1;
constexpr int UTF8_BYTES_OF_UNIT = 3;
constexpr int PATH_SIZE = 1024;
constexpr UNICONV_CID ASCII_CID = 0;
constexpr int USE_GIVEN_DIRECTORY = 2;

CS_CHAR UNICODE_DIRECTORY[] = "unicode";

// ---- Work buffers ----

// Memory for `count` elements, not cleared.
template <class Element>
class Buffer {
public:
    explicit Buffer(std::size_t count)
        : data_(count <= ON_STACK ? small_ : static_cast<Element *>(std::malloc(count * sizeof(Element)))) {}
    ~Buffer() {
        if (data_ != small_)
            std::free(data_);
    }
    Buffer(const Buffer &) = delete;
    Buffer &operator=(const Buffer &) = delete;

    bool is_there() const { return data_ != nullptr; }
    Element *data() { return data_; }

private:
    static constexpr std::size_t ON_STACK = 512 / sizeof(Element);

    Element small_[ON_STACK];
    Element *data_;
};

std::size_t with_terminator(CS_INT length) { return static_cast<std::size_t>(length) + 1; }

// A copy of the source with zeros behind it: the Unicode library reads its texts up to a NUL, and UTF-16 and the
// compression scheme up to two in the place of a unit.
class TerminatedCopy {
public:
    TerminatedCopy(const CS_BYTE *source, CS_INT length) : buffer_(static_cast<std::size_t>(length) + ZEROS) {
        if (!buffer_.is_there())
            return;
        std::memcpy(buffer_.data(), source, static_cast<std::size_t>(length));
        std::memset(buffer_.data() + length, 0, ZEROS);
    }
    bool is_there() const { return buffer_.is_there(); }
    const char *text() { return buffer_.data(); }

private:
    static constexpr std::size_t ZEROS = 3;

    Buffer<char> buffer_;
};

// ---- Handles ----

class Handle {
public:
    Handle() = default;
    ~Handle() {
        if (is_own_)
            uniconv_HandleFree(handle_);
    }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;

    // Takes the handle that was set for the process, if there is one.
    bool take_persistent() {
        handle_ = comn__get_persistent_handle();
        return handle_ != nullptr;
    }
    bool open(UNICONV_CID cid) {
        is_own_ = uniconv_HandleGet(cid, &handle_) == UNI_OK;
        return is_own_;
    }
    // By the directory of the tables.
    bool open(UNICONV_CID cid, const I18NUNI_REQUEST &request, const UNICHAR *path) {
        constexpr int SELECTOR = 0;
        is_own_ = uniconv_HandleGetU(cid, &request, path, SELECTOR, &handle_) == UNI_OK;
        return is_own_;
    }
    // The wide one stands for what had two bytes or more in the set that the text comes from.
    void set_substitutes(UNICONV_CID source) {
        uniconv_SetSubstituteChar(handle_, SUBSTITUTE);
        uniconv_SetDBCSSubstituteChar(handle_, WIDE_SUBSTITUTE);
        uniconv_SetSource(handle_, source);
    }
    CVTH get() const { return handle_; }

private:
    CVTH handle_ = nullptr;
    bool is_own_ = false;
};

bool is_done(int status) { return status == UNI_OK || status == UNI_SUBSTITUTED; }
bool is_cut(int status) { return status == UNI_NOROOM || status == UNI_NOROOM_SUBSTITUTED; }

// Opens the handle that text from UTF-8 goes to, by the directory of the home, which the library takes as 16-bit text.
bool open_set_of_home(CS_CONTEXT *context, UNICONV_CID cid, Handle &handle) {
    CS_CHAR path[PATH_SIZE];
    UNICHAR wide_path[PATH_SIZE];
    if (com_path_charfile(context, UNICODE_DIRECTORY, nullptr, nullptr, path, PATH_SIZE) != CS_SUCCEED)
        return false;
    int count;
    Handle ascii;
    if (!ascii.open(ASCII_CID) || !is_done(uniconv_unistrFromS(ascii.get(), wide_path, PATH_SIZE, path, &count)))
        return false;
    I18NUNI_REQUEST request;
    i18nuni_RequestSetDefaults(&request);
    request.useCurrentDir = USE_GIVEN_DIRECTORY;
    if (!handle.open(cid, request, wide_path))
        return false;
    handle.set_substitutes(UNICONV_UTF8);
    return true;
}

// ---- Sets ----

CS_VOID *category(const CS_LOCALE &locale, CS_INT type) {
    switch (type) {
    case CS_LC_MESSAGE:
        return locale.messageptr;
    case CS_LC_MONETARY:
        return locale.monetaryptr;
    case CS_LC_NUMERIC:
        return locale.numericptr;
    case CS_LC_TIME:
        return locale.timeptr;
    default:
        return locale.ctypeptr;
    }
}

// The cache of a descriptor's locale, or of the context's, with its character set; null after a report.
CsLocCache *cache_of(const CS_CONTEXT &context, const CS_LOCALE *locale, CS_INT type) {
    if (locale == nullptr)
        locale = context.ctxlocale;
    COM_REQUIRE_PTR(locale, nullptr);
    auto *const cache = static_cast<CsLocCache *>(category(*locale, type));
    COM_REQUIRE_PTR(cache, nullptr);
    COM_REQUIRE_PTR(cache->locchardesc, nullptr);
    COM_REQUIRE_PTR(cache->locchardesc->char_attrib, nullptr);
    return cache;
}

bool is_same_set(const CsLocCache *cache1, const CsLocCache *cache2) {
    return cache1 == cache2 || cache1->locchardesc == cache2->locchardesc;
}

bool is_utf8(const CS_CONTEXT &context, const CsLocCache &cache) {
    return cache.locchardesc == context.ctxglobals->cmg_utf8_charset;
}

CsUserAlgo *user_conversion(CS_CONTEXT *context, const CsLocCache &from, const CsCharDesc &to) {
    CsUserAlgo *conversion = nullptr;
    if (context->usercharconv != nullptr)
        comn__get_user_charconv(context, from.locchardesc->oid, to.oid, &conversion);
    return conversion;
}

// A format for an end that the caller has not described.
CS_DATAFMT text_format(CS_INT length) {
    CS_DATAFMT format = {};
    format.datatype = CS_CHAR_TYPE;
    format.maxlength = length;
    return format;
}

CS_RETCODE copy_telling(CS_BYTE *dest, CS_INT room, const CS_BYTE *source, CS_INT length, CS_INT *resultlen) {
    const CS_INT count = std::min(length, room);
    std::memmove(dest, source, static_cast<std::size_t>(count));
    *resultlen = count;
    return count < length ? CS_ETRUNCATED : CS_SUCCEED;
}

bool get_cid(const CsLocCache &cache, UNICONV_CID &cid) {
    return comn__get_unilib_cid(cache.locchardesc->char_attrib->cs_id, &cid) == CS_SUCCEED;
}

// ---- ASCII ----

constexpr CS_UBIGINT HIGH_BITS = 0x8080808080808080;
constexpr CS_INT WORD = sizeof(CS_UBIGINT);

CS_UBIGINT word_at(const CS_BYTE *text, CS_INT at) { return load<CS_UBIGINT>(text + at); }

// Where the first other byte stands in a short text cannot be foreseen, so no branch asks for it there.
bool is_ascii(const CS_BYTE *text, CS_INT length) {
    constexpr CS_INT STRETCH = 8 * WORD;
    CS_UBIGINT seen = 0;
    CS_INT at = 0;
    for (; length - at >= STRETCH; at += STRETCH) {
        for (CS_INT word = 0; word < STRETCH; word += WORD)
            seen |= word_at(text, at + word);
        if ((seen & HIGH_BITS) != 0)
            return false;
    }
    for (; length - at >= WORD; at += WORD)
        seen |= word_at(text, at);
    if (length >= WORD)
        seen |= word_at(text, length - WORD); // in part once more
    else
        while (at < length)
            seen |= text[at++];
    return (seen & HIGH_BITS) == 0;
}

// ---- In one step ----

// Conversions in place go through a copy.
bool is_apart(const CS_BYTE *source, CS_INT length, const CS_BYTE *dest, CS_INT room) {
    return source + length <= dest || dest + room <= source;
}

using OneStep = int (*)(UNICONV_CID, const char *, int, char *, int, int *);

// What the Unicode library answers; anything but success has told nothing yet.
int in_one_step(OneStep step, UNICONV_CID set, const CS_BYTE *source, CS_INT length, CS_BYTE *dest, CS_INT room,
                CS_INT *resultlen) {
    if (!is_apart(source, length, dest, room))
        return UNI_INDIRECT;
    return step(set, reinterpret_cast<const char *>(source), length, reinterpret_cast<char *>(dest), room, resultlen);
}

// A value of which neither end has a length in front, between UTF-8 and another set. False where that settles nothing.
bool convert_at_once(const CS_CONTEXT &context, const CsLocCache &from, const CsLocCache &to, const SourceText &source,
                     const DestinationText &destination, CS_INT *resultlen) {
    const bool is_to_utf8 = is_utf8(context, to);
    if (is_to_utf8 ? comn__get_persistent_handle() != nullptr : !is_utf8(context, from))
        return false;
    UNICONV_CID cid;
    return get_cid(is_to_utf8 ? from : to, cid) &&
           is_done(in_one_step(is_to_utf8 ? uniconv_StrToUTF8 : uniconv_StrFromUTF8, cid, source.data, source.length,
                               destination.data, destination.room, resultlen));
}

// ---- Through 16-bit text ----

// A source that becomes 16-bit text.
class WideText {
public:
    WideText(const CS_BYTE *source, CS_INT length, UNICONV_CID set)
        : half_unit_(set == UNICONV_UTF16 ? length % 2 : 0), length_(length - half_unit_), copy_(source, length_),
          text_(with_terminator(length_)) {}

    // The Unicode library counts room in ints, the terminator included.
    bool is_there() const {
        return copy_.is_there() && text_.is_there() && length_ < std::numeric_limits<CS_INT>::max();
    }

    // What the Unicode library answers. Half a unit behind text that goes up to it is a cut character.
    int decode(CVTH handle) {
        const int status = uniconv_unistrFromS(handle, text_.data(), length_ + 1, copy_.text(), &units_);
        return is_done(status) && half_unit_ != 0 && units_ == length_ / 2 ? UNI_TRUNCATED : status;
    }
    const UNICHAR *units() { return text_.data(); }
    CS_INT count() const { return units_; }

private:
    CS_INT half_unit_; // bytes
    CS_INT length_;
    TerminatedCopy copy_;
    Buffer<UNICHAR> text_;
    int units_ = 0;
};

// What came out, and how.
struct Converted {
    CS_RETCODE status;
    CS_INT bytes;
};

constexpr Converted FAILED = {CS_FAIL, 0};

// The bytes that `units` of 16-bit text become at the most, or as many of them as there is room for. A terminator
// follows.
CS_INT most_bytes(CS_INT units, int factor, CS_INT room) {
    const CS_BIGINT most = std::min<CS_BIGINT>(static_cast<CS_BIGINT>(factor) * units, LONGEST_RESULT);
    return static_cast<CS_INT>(std::min<CS_BIGINT>(most, room));
}

// 16-bit text to `room` bytes of the handle's set, in a buffer with one more. A cut result fills the room: zeros stand
// behind its last whole character.
Converted to_set(CVTH handle, const UNICHAR *text, char *buffer, CS_INT room) {
    int count = 0;
    const int status = uniconv_unistrToS(handle, buffer, room + 1, text, &count);
    if (is_done(status))
        return {CS_SUCCEED, count - 1};
    return is_cut(status) ? Converted{CS_ETRUNCATED, room} : FAILED;
}

CS_RETCODE convert_by_tables(UNICONV_CID from, UNICONV_CID to, const SourceText &source,
                             const DestinationText &destination, CS_INT *resultlen) {
    Handle from_handle, to_handle;
    if (!from_handle.open(from) || !to_handle.open(to))
        return CS_FAIL;
    to_handle.set_substitutes(from);

    WideText text(source.data, source.length, from);
    if (!text.is_there())
        return CS_MEM_ERROR;
    const int decoded = text.decode(from_handle.get());
    const bool is_source_cut = decoded == UNI_TRUNCATED && text.count() > 1;
    int factor;
    if ((!is_done(decoded) && !is_source_cut) || uniconv_GetExpansionFactor(to_handle.get(), &factor) != UNI_OK)
        return CS_FAIL;
    const CS_INT needed = most_bytes(text.count(), factor, destination.room);
    Buffer<char> bytes(with_terminator(needed));
    if (!bytes.is_there())
        return CS_MEM_ERROR;
    Converted converted = to_set(to_handle.get(), text.units(), bytes.data(), needed);
    if (converted.status == CS_SUCCEED && is_source_cut)
        converted.status = CS_ETRUNCATED;
    std::memcpy(destination.value, bytes.data(), static_cast<std::size_t>(converted.bytes));
    destination.set_length(converted.bytes);
    *resultlen = converted.bytes;
    return converted.status;
}

// From one set to another that is not UTF-8. The text goes to the value itself, not behind its length: a CS_VARCHAR
// then has its length over its first two bytes of text. Callers have settled for that.
CS_RETCODE convert_sets(const CsLocCache &from, const CsLocCache &to, const SourceText &source,
                        const DestinationText &destination, CS_INT *resultlen) {
    *resultlen = 0;
    UNICONV_CID from_cid, to_cid;
    if (!get_cid(from, from_cid) || !get_cid(to, to_cid))
        return COM_TRACE(CS_FAIL);
    const CS_RETCODE status = convert_by_tables(from_cid, to_cid, source, destination, resultlen);
    return status == CS_SUCCEED ? status : COM_TRACE(status);
}

CS_RETCODE convert_to_utf8(const CsLocCache &from, const CS_BYTE *source, CS_INT length, CS_BYTE *dest, CS_INT room,
                           CS_INT *resultlen) {
    UNICONV_CID cid = UNICONV_NONE;
    Handle handle;
    *resultlen = 0;
    if (!handle.take_persistent()) {
        if (!get_cid(from, cid))
            return COM_TRACE(CS_FAIL);
        if (is_done(in_one_step(uniconv_StrToUTF8, cid, source, length, dest, room, resultlen)))
            return CS_SUCCEED;
        *resultlen = 0;
        if (!handle.open(cid))
            return COM_TRACE(CS_FAIL);
    }
    WideText text(source, length, cid);
    if (!text.is_there())
        return COM_TRACE(CS_MEM_ERROR);
    if (!is_done(text.decode(handle.get())))
        return COM_TRACE(CS_FAIL);
    const CS_INT needed = most_bytes(text.count(), UTF8_BYTES_OF_UNIT, room);
    Buffer<char> bytes(with_terminator(needed));
    if (!bytes.is_there())
        return COM_TRACE(CS_MEM_ERROR);
    int count = 0;
    const int written = uniutf8_unistrToUTF8(bytes.data(), needed + 1, text.units(), &count);
    const bool is_cut_short = written == UNI_UTF8_NOROOM; // and filled with zeros, as above
    if (written < 0 && !is_cut_short)
        return COM_TRACE(CS_FAIL);
    *resultlen = is_cut_short ? needed : written;
    std::memcpy(dest, bytes.data(), static_cast<std::size_t>(*resultlen));
    return is_cut_short ? COM_TRACE(CS_ETRUNCATED) : CS_SUCCEED;
}

} // namespace
} // namespace dlx

using namespace dlx;

// ---- The persistent handle ----

CVTH comn__persistent_handle = nullptr;

void comn_set_persistent_handle(CVTH handle) { comn__persistent_handle = handle; }

CVTH comn__get_persistent_handle() { return comn__persistent_handle; }

// ---- Conversion ----

CS_RETCODE comn__copy_ascii_only(CS_BYTE *dest, CS_INT destlen, CS_BYTE *src, CS_INT srclen, CS_INT *resultlen) {
    COM_REQUIRE_PTR(dest, CS_FAIL);
    COM_REQUIRE_PTR(src, CS_FAIL);
    COM_REQUIRE_PTR(resultlen, CS_FAIL);
    const CS_INT count = std::min(destlen, srclen);
    CS_INT at = 0;
    for (; count - at >= WORD; at += WORD) {
        const CS_UBIGINT bytes = word_at(src, at);
        if ((bytes & HIGH_BITS) != 0)
            break;
        store(dest + at, bytes);
    }
    for (; at < count; ++at) {
        dest[at] = src[at];
        if ((src[at] & 0x80) != 0) {
            *resultlen = 0;
            return CS_ENOCONV;
        }
    }
    *resultlen = count;
    return destlen < srclen ? CS_ETRUNCATED : CS_SUCCEED;
}

CS_RETCODE comn__convt_to_utf8(CS_CONTEXT *context, CS_INT match_mode, CS_DATAFMT *srcfmt, CsLocCache *src_lcache,
                               CS_VOID *src, CS_VOID *dest, CS_INT destlen, CS_INT *resultlen) {
    (void)match_mode;
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    COM_REQUIRE_PTR(srcfmt, CS_FAIL);
    COM_REQUIRE_PTR(src_lcache, CS_FAIL);
    COM_REQUIRE_PTR(src_lcache->locchardesc, CS_FAIL);
    COM_REQUIRE_PTR(src_lcache->locchardesc->char_attrib, CS_FAIL);
    COM_REQUIRE_PTR(src, CS_FAIL);
    COM_REQUIRE_PTR(dest, CS_FAIL);
    COM_REQUIRE_PTR(resultlen, CS_FAIL);
    COM_REQUIRE(srcfmt->maxlength >= 0 && destlen >= 0, CS_FAIL);
    auto *const source = static_cast<CS_BYTE *>(src);
    auto *const to = static_cast<CS_BYTE *>(dest);
    const CS_INT length = srcfmt->maxlength;
    if (is_utf8(*context, *src_lcache))
        return copy_telling(to, destlen, source, length, resultlen);
    const auto *const utf8 = static_cast<const CsCharDesc *>(context->ctxglobals->cmg_utf8_charset);
    COM_REQUIRE_PTR(utf8, CS_FAIL);
    if (const CsUserAlgo *conversion = user_conversion(context, *src_lcache, *utf8)) {
        CS_DATAFMT destfmt = text_format(destlen);
        return conversion->user_conv_func(context, srcfmt, src, &destfmt, dest, resultlen);
    }
    if (comn__copy_ascii_only(to, destlen, source, length, resultlen) == CS_SUCCEED)
        return CS_SUCCEED;
    return convert_to_utf8(*src_lcache, source, length, to, destlen, resultlen);
}

CS_RETCODE comn__convt_from_utf8(CS_CONTEXT *context, CS_INT match_mode, CS_BYTE *src, CS_INT srclen,
                                 CS_DATAFMT *destfmt, CsLocCache *dest_lcache, CS_VOID *dest, CS_INT *resultlen) {
    (void)match_mode;
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    COM_REQUIRE_PTR(src, CS_FAIL);
    COM_REQUIRE_PTR(destfmt, CS_FAIL);
    COM_REQUIRE_PTR(dest_lcache, CS_FAIL);
    COM_REQUIRE_PTR(dest_lcache->locchardesc, CS_FAIL);
    COM_REQUIRE_PTR(dest_lcache->locchardesc->char_attrib, CS_FAIL);
    COM_REQUIRE_PTR(dest, CS_FAIL);
    COM_REQUIRE_PTR(resultlen, CS_FAIL);
    COM_REQUIRE(destfmt->maxlength >= 0, CS_FAIL);
    *resultlen = 0;
    if (srclen < 0)
        return COM_TRACE(CS_FAIL);
    auto *const to = static_cast<CS_BYTE *>(dest);
    const CS_INT room = destfmt->maxlength;
    if (is_utf8(*context, *dest_lcache))
        return copy_telling(to, room, src, srclen, resultlen);
    const auto *const utf8 = static_cast<const CsCharDesc *>(context->ctxglobals->cmg_utf8_charset);
    COM_REQUIRE_PTR(utf8, CS_FAIL);
    CsUserAlgo *conversion;
    comn__get_user_charconv(context, utf8->oid, dest_lcache->locchardesc->oid, &conversion);
    if (conversion != nullptr) {
        CS_DATAFMT srcfmt = text_format(srclen);
        return conversion->user_conv_func(context, &srcfmt, src, destfmt, dest, resultlen);
    }
    if (srclen > LONGEST_UTF8)
        return COM_TRACE(CS_FAIL);

    UNICONV_CID cid = UNICONV_NONE;
    Handle handle;
    if (!handle.take_persistent()) {
        if (!get_cid(*dest_lcache, cid))
            return COM_TRACE(CS_FAIL);
        // Text with a fault is refused here, so that a substitute is looked into.
        if (in_one_step(uniconv_StrFromUTF8, cid, src, srclen, to, room, resultlen) == UNI_OK)
            return CS_SUCCEED;
        *resultlen = 0;
        if (!open_set_of_home(context, cid, handle))
            return COM_TRACE(CS_FAIL);
    }
    TerminatedCopy copy(src, srclen);
    Buffer<UNICHAR> text(with_terminator(srclen));
    if (!copy.is_there() || !text.is_there())
        return COM_TRACE(CS_MEM_ERROR);
    int count = 0;
    const int units = uniutf8_unistrFromUTF8(text.data(), srclen + 1, copy.text(), &count);
    int factor;
    if (units < 0 || uniconv_GetExpansionFactor(handle.get(), &factor) != UNI_OK)
        return COM_TRACE(CS_FAIL);
    const CS_INT needed = most_bytes(units, factor, room);
    Buffer<char> bytes(with_terminator(needed));
    if (!bytes.is_there())
        return COM_TRACE(CS_MEM_ERROR);
    const Converted converted = to_set(handle.get(), text.data(), bytes.data(), needed);
    std::memcpy(to, bytes.data(), static_cast<std::size_t>(converted.bytes));
    *resultlen = converted.bytes;
    return converted.status == CS_SUCCEED ? CS_SUCCEED : COM_TRACE(converted.status);
}

CS_RETCODE comn_charset_convert(CS_CONTEXT *context, CS_INT type, CS_DATAFMT *srcfmt, CS_VOID *src, CS_DATAFMT *destfmt,
                                CS_VOID *dest, CS_INT *resultlen) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    COM_REQUIRE_PTR(srcfmt, CS_FAIL);
    COM_REQUIRE_PTR(src, CS_FAIL);
    COM_REQUIRE_PTR(destfmt, CS_FAIL);
    COM_REQUIRE_PTR(dest, CS_FAIL);
    COM_REQUIRE_PTR(resultlen, CS_FAIL);
    COM_REQUIRE(type >= CS_LC_CTYPE && type <= CS_LC_TIME, CS_FAIL);
    CsLocCache *const from = cache_of(*context, srcfmt->locale, type);
    if (from == nullptr)
        return CS_FAIL;
    CsLocCache *const to = cache_of(*context, destfmt->locale, type);
    if (to == nullptr)
        return CS_FAIL;
    const SourceText source(*srcfmt, src);
    const DestinationText destination(*destfmt, dest);
    COM_REQUIRE(source.length >= 0 && destination.room >= 0, CS_FAIL);

    if (is_same_set(from, to)) {
        copy_telling(destination.data, destination.room, source.data, source.length, resultlen);
        destination.set_length(*resultlen);
        return CS_SUCCEED; // a cut here has never been told
    }
    if (const CsUserAlgo *conversion = user_conversion(context, *from, *to->locchardesc))
        return conversion->user_conv_func(context, srcfmt, src, destfmt, dest, resultlen);
    const bool has_lengths = source.data != src || destination.has_length;
    if (!has_lengths && !is_ascii(source.data, source.length) &&
        convert_at_once(*context, *from, *to, source, destination, resultlen))
        return CS_SUCCEED;
    if (comn__copy_ascii_only(destination.data, destination.room, source.data, source.length, resultlen) ==
        CS_SUCCEED) {
        destination.set_length(*resultlen);
        return CS_SUCCEED;
    }
    if (!is_utf8(*context, *to))
        return convert_sets(*from, *to, source, destination, resultlen);
    // On the operands as they lie: a length in front of one is text there, or is written over.
    if (has_lengths)
        return comn__convt_to_utf8(context, 0, srcfmt, from, src, dest, destination.room, resultlen);
    return convert_to_utf8(*from, source.data, source.length, destination.data, destination.room, resultlen);
}

CS_RETCODE comn_convert_max_multiplier(CS_CONTEXT *context, CS_INT type, CS_LOCALE *srcloc, CS_LOCALE *destloc,
                                       CS_INT *multiplier) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(multiplier, CS_FAIL);
    *multiplier = 1;
    if (srcloc == nullptr)
        srcloc = context->ctxlocale;
    if (destloc == nullptr)
        destloc = context->ctxlocale;
    if (srcloc == destloc)
        return CS_SUCCEED;
    const CsLocCache *const from = cache_of(*context, srcloc, type);
    if (from == nullptr)
        return CS_FAIL;
    const CsLocCache *const to = cache_of(*context, destloc, type);
    if (to == nullptr)
        return CS_FAIL;
    if (is_same_set(from, to))
        return CS_SUCCEED;
    if (const CsUserAlgo *conversion = user_conversion(context, *from, *to->locchardesc)) {
        *multiplier = conversion->conv_multiplier;
        return CS_SUCCEED;
    }
    UNICONV_CID from_cid, to_cid;
    if (!get_cid(*from, from_cid) || !get_cid(*to, to_cid) ||
        uniconv_GetExpansion(from_cid, to_cid, multiplier) != UNI_OK)
        return COM_TRACE(CS_FAIL);
    return CS_SUCCEED;
}

// ---- Mnemonics ----

CS_INT comn__drop_mnem_string(CS_VOID *mnemonic) {
    COM_REQUIRE_PTR(mnemonic, 0);
    std::free(static_cast<CS_UNICODE_MNEM *>(mnemonic)->string);
    std::free(mnemonic);
    return 1; // go on
}

CS_RETCODE comn_intl_drop_mnemdb(CS_CONTEXT *context) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    auto *const list = static_cast<LM_HANDLE *>(context->ctxglobals->mnem_db);
    if (list == nullptr)
        return CS_SUCCEED;
    CS_PRINT_FUNC drop = comn__drop_mnem_string;
    lm_list_op(list, LM_OP_WALK, nullptr, LM_UNUSED, &drop, nullptr);
    const CS_RETCODE status = lm_list_drop(list, LM_FORCE_DROP);
    context->ctxglobals->mnem_db = nullptr;
    return status == CS_SUCCEED ? status : COM_TRACE(status);
}
