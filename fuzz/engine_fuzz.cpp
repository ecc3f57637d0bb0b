// The main engine on any bytes, between any two sets, in any room, in place or not, with and without lengths in front.
// What it makes of them is compared with the plain way through 16-bit text, a handle for each set.
#include "input.h"

#include <dlxunic/unic.h>

#include <map>
#include <vector>

namespace {

constexpr std::size_t PREFIX = sizeof(CS_SMALLINT);
constexpr std::size_t VARCHAR_ROOM = 256;

// A set with a locale of it; the engine asks for no more than its number.
struct Set {
    explicit Set(const CSID_CSNAME &row) : cid(row.unilib_cid) {
        attributes.cs_id = static_cast<CS_BYTE>(row.csid);
        description.char_attrib = &attributes;
        description.oid = &oid;
        cache.locchardesc = &description;
        locale = {&cache, &cache, &cache, &cache, &cache, &cache, nullptr, nullptr};
    }
    UNICONV_CID cid;
    CHAR_ATTRIB attributes = {};
    CsOID oid = {};
    CsCharDesc description = {};
    CsLocCache cache = {};
    CS_LOCALE locale = {};
};

struct Sets {
    Sets() {
        setenv("DALVEX", FUZZ_HOME, 1);
        for (const CSID_CSNAME &row : csid_name)
            if (row.unilib_cid != UNICONV_NONE)
                all.push_back(std::make_unique<Set>(row));
        for (const auto &set : all)
            if (set->cid == UNICONV_UTF8)
                globals.cmg_utf8_charset = &set->description;
        context.ctxglobals = &globals;
    }
    std::vector<std::unique_ptr<Set>> all;
    CsCtxGlobals globals = {};
    CS_CONTEXT context = {};
};

// ---- The plain way --------------------------------------------------------------------------------------------------

struct Result {
    CS_RETCODE status;
    std::string text; // what the length tells

    bool operator==(const Result &) const = default;
};

class Handle {
public:
    explicit Handle(UNICONV_CID cid) { FUZZ_CHECK(uniconv_HandleGet(cid, &handle_) == UNI_OK); }
    ~Handle() { uniconv_HandleFree(handle_); }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;
    CVTH get() const { return handle_; }

private:
    CVTH handle_;
};

CVTH handle_of(UNICONV_CID cid) {
    static std::map<UNICONV_CID, Handle> handles;
    return handles.try_emplace(cid, cid).first->second.get();
}

Result cut(std::string text, std::size_t room) {
    text.resize(room, '\0');
    return {CS_ETRUNCATED, text};
}

bool is_ascii(const std::string &text) {
    return std::none_of(text.begin(), text.end(), [](char c) { return (c & 0x80) != 0; });
}

struct Units {
    int status;
    int count;
    std::vector<UNICHAR> units;
};

bool is_done(int status) { return status == UNI_OK || status == UNI_SUBSTITUTED; }

// Whether a text of UTF-16 goes up to its last byte, which is half a unit.
bool ends_in_half(const std::string &text) {
    for (std::size_t i = 0; i + 1 < text.size(); i += 2)
        if (text[i] == '\0' && text[i + 1] == '\0')
            return false;
    return text.size() % 2 != 0;
}

Units units_of(UNICONV_CID cid, const std::string &text) {
    Units result = {0, 0, std::vector<UNICHAR>(text.size() + 1)};
    const bool is_cut = cid == UNICONV_UTF16 && ends_in_half(text);
    const std::string terminated = text.substr(0, text.size() - is_cut) + std::string(3, '\0');
    result.status = uniconv_unistrFromS(handle_of(cid), result.units.data(), static_cast<int>(result.units.size()),
                                        terminated.c_str(), &result.count);
    if (is_cut && is_done(result.status))
        result.status = UNI_TRUNCATED;
    return result;
}

Result naive_to_set(const Units &units, UNICONV_CID from, UNICONV_CID to, std::size_t room) {
    const CVTH handle = handle_of(to);
    FUZZ_CHECK(uniconv_SetSource(handle, from) == UNI_OK);
    std::string bytes(room + 1, '\0');
    int count = 0;
    const int status =
        uniconv_unistrToS(handle, bytes.data(), static_cast<int>(bytes.size()), units.units.data(), &count);
    FUZZ_CHECK(is_done(status) || status == UNI_NOROOM || status == UNI_NOROOM_SUBSTITUTED);
    bytes.resize(static_cast<std::size_t>(count - 1));
    return is_done(status) ? Result{CS_SUCCEED, bytes} : cut(bytes, room);
}

Result naive_to_utf8(UNICONV_CID from, const std::string &text, std::size_t room) {
    if (from == UNICONV_UTF8)
        return {text.size() > room ? CS_ETRUNCATED : CS_SUCCEED, text.substr(0, room)};
    if (is_ascii(text) && text.size() <= room)
        return {CS_SUCCEED, text};
    const Units units = units_of(from, text);
    if (!is_done(units.status))
        return {CS_FAIL, ""};
    std::string bytes(room + 1, '\0');
    int count = 0;
    const int written = uniutf8_unistrToUTF8(bytes.data(), static_cast<int>(bytes.size()), units.units.data(), &count);
    FUZZ_CHECK(written >= 0 || written == UNI_UTF8_NOROOM);
    bytes.resize(static_cast<std::size_t>(count));
    return written >= 0 ? Result{CS_SUCCEED, bytes} : cut(bytes, room);
}

Result naive_from_utf8(const std::string &text, UNICONV_CID to, std::size_t room) {
    if (to == UNICONV_UTF8)
        return {text.size() > room ? CS_ETRUNCATED : CS_SUCCEED, text.substr(0, room)};
    Units units = {0, 0, std::vector<UNICHAR>(text.size() + 1)};
    if (uniutf8_unistrFromUTF8(units.units.data(), static_cast<int>(units.units.size()), text.c_str(), &units.count) <
        0)
        return {CS_FAIL, ""};
    return naive_to_set(units, UNICONV_UTF8, to, room);
}

Result naive_convert(UNICONV_CID from, const std::string &text, UNICONV_CID to, std::size_t room) {
    if (is_ascii(text) && text.size() <= room)
        return {CS_SUCCEED, text};
    if (to == UNICONV_UTF8)
        return naive_to_utf8(from, text, room);
    const Units units = units_of(from, text);
    const bool is_source_cut = units.status == UNI_TRUNCATED && units.count > 1;
    if (!is_done(units.status) && !is_source_cut)
        return {CS_FAIL, ""};
    Result result = naive_to_set(units, from, to, room);
    if (is_source_cut)
        result.status = CS_ETRUNCATED;
    return result;
}

// ---- Calls ----------------------------------------------------------------------------------------------------------

std::string prefixed(const std::string &text) {
    const auto length = static_cast<CS_SMALLINT>(text.size());
    return std::string(reinterpret_cast<const char *>(&length), sizeof length) + text;
}

// The operands; in place, one buffer is both.
class Operands {
public:
    Operands(const std::string &source, std::size_t room, bool in_place)
        : source_(std::max(source.size(), in_place ? room : 0), source), dest_(in_place ? 0 : room),
          in_place_(in_place) {}
    CS_BYTE *source() { return source_.get(); }
    CS_BYTE *dest() { return in_place_ ? source_.get() : dest_.get(); }
    Result result(CS_RETCODE status, CS_INT length, std::size_t room) {
        FUZZ_CHECK(length >= 0 && static_cast<std::size_t>(length) <= room);
        return {status, std::string(reinterpret_cast<char *>(dest()), static_cast<std::size_t>(length))};
    }

private:
    fuzz::ExactBuffer source_, dest_;
    bool in_place_;
};

CS_DATAFMT format_of(CS_LOCALE *locale, std::size_t maxlength, bool is_varchar = false) {
    CS_DATAFMT format = {};
    format.datatype = is_varchar ? CS_VARCHAR_TYPE : CS_CHAR_TYPE;
    format.maxlength = static_cast<CS_INT>(maxlength);
    format.locale = locale;
    return format;
}

Result convert(Sets &sets, Set &from, const std::string &text, Set &to, std::size_t room, bool in_place) {
    Operands operands(text, room, in_place);
    CS_DATAFMT srcfmt = format_of(&from.locale, text.size()), destfmt = format_of(&to.locale, room);
    CS_INT length = -1;
    const CS_RETCODE status = comn_charset_convert(&sets.context, CS_LC_CTYPE, &srcfmt, operands.source(), &destfmt,
                                                   operands.dest(), &length);
    return operands.result(status, length, room);
}

// With a length in front of either end, which only copies keep whole.
void check_varchar(Sets &sets, Set &from, const std::string &text, Set &to, std::size_t room, bool source, bool dest) {
    const std::string value = source ? prefixed(text) : text;
    const std::size_t size = dest ? PREFIX + VARCHAR_ROOM : room;
    const std::size_t capacity = dest ? VARCHAR_ROOM : room;
    Operands operands(value, size, false);
    CS_DATAFMT srcfmt = format_of(&from.locale, value.size(), source), destfmt = format_of(&to.locale, room, dest);
    CS_INT length = -1;
    const CS_RETCODE status = comn_charset_convert(&sets.context, CS_LC_CTYPE, &srcfmt, operands.source(), &destfmt,
                                                   operands.dest(), &length);
    FUZZ_CHECK(length >= 0 && static_cast<std::size_t>(length) <= capacity);
    const std::string all(reinterpret_cast<char *>(operands.dest()), size);
    if (&from == &to) {
        FUZZ_CHECK(status == CS_SUCCEED);
        FUZZ_CHECK(all.starts_with(dest ? prefixed(text.substr(0, capacity)) : text.substr(0, capacity)));
        return;
    }
    const bool is_copy = is_ascii(text) && text.size() <= capacity;
    Result expected = to.cid == UNICONV_UTF8 && !is_copy ? naive_to_utf8(from.cid, value, capacity)
                                                         : naive_convert(from.cid, text, to.cid, capacity);
    FUZZ_CHECK(status == expected.status && static_cast<std::size_t>(length) == expected.text.size());
    if (status == CS_FAIL)
        return;
    if (dest && is_copy)
        expected.text = prefixed(expected.text);
    else if (dest && to.cid != UNICONV_UTF8) // the length over the first two bytes
        expected.text = prefixed(expected.text).substr(0, PREFIX) +
                        (expected.text.size() > PREFIX ? expected.text.substr(PREFIX) : "");
    FUZZ_CHECK(all.starts_with(expected.text));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    static Sets sets;
    fuzz::Input input(data, size);
    Set &from = *sets.all[input.byte() % sets.all.size()];
    Set &to = *sets.all[input.byte() % sets.all.size()];
    const CS_BYTE choice = input.byte();
    const bool in_place = (choice & 1) != 0;
    std::size_t room = input.byte();
    const std::string text = input.rest();
    if ((choice & 2) != 0) // about what the text takes
        room = text.size() * (1 + room % 4);
    if (text.size() > 4000)
        return 0;

    if (&from == &to)
        FUZZ_CHECK(convert(sets, from, text, to, room, in_place) == (Result{CS_SUCCEED, text.substr(0, room)}));
    else
        FUZZ_CHECK(convert(sets, from, text, to, room, in_place) == naive_convert(from.cid, text, to.cid, room));
    check_varchar(sets, from, text, to, room, (choice & 4) != 0, (choice & 8) != 0);

    Operands to_utf8(text, room, in_place);
    CS_DATAFMT format = format_of(nullptr, text.size());
    CS_INT length = -1;
    CS_RETCODE status = comn__convt_to_utf8(&sets.context, 0, &format, &from.cache, to_utf8.source(), to_utf8.dest(),
                                            static_cast<CS_INT>(room), &length);
    FUZZ_CHECK(to_utf8.result(status, length, room) == naive_to_utf8(from.cid, text, room));

    Operands from_utf8(text, room, in_place);
    format = format_of(nullptr, room);
    status = comn__convt_from_utf8(&sets.context, 0, from_utf8.source(), static_cast<CS_INT>(text.size()), &format,
                                   &to.cache, from_utf8.dest(), &length);
    FUZZ_CHECK(from_utf8.result(status, length, room) == naive_from_utf8(text, to.cid, room));
    return 0;
}
