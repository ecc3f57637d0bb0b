// The catalog of messages: texts from the files of a language, a bounded number of them kept.
//
// A cached message is on two chains: that of its section, by which it is found, and the history of all messages of its
// record, newest first, by which the oldest is found that makes room. Files are read from their beginning for each
// message that is not cached: messages are rare, and most programs see few of them.

#include "charset/locvalue.h"
#include "diag/check.h"
#include "message/lock.h"

#include <dlxcomn/charconv.h>
#include <dlxcomn/message.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace dlx {
namespace {

CS_CHAR OWN_FILE[] = "comnlib.loc";
constexpr CS_INT MOST_MESSAGES = 100; // behind one record
constexpr CS_INT MOST_WANTED = 100;   // of one load
constexpr std::size_t CODE_SIZE = 8;  // of an SQLSTATE with its NUL
constexpr CS_INT TEXT_SELECTOR = 2;
constexpr CS_INT CODE_SELECTOR = 1;

CS_CHAR *copy_of(const CS_CHAR *text) {
    const std::size_t size = std::strlen(text) + 1;
    auto *const copy = static_cast<CS_CHAR *>(std::malloc(size));
    return copy != nullptr ? static_cast<CS_CHAR *>(std::memcpy(copy, text, size)) : nullptr;
}

// ---- The history ----

// Takes a message off a chain. False where it is not on it.
bool take_off(CsErrorCache **link, CsErrorCache *CsErrorCache::*next, const CsErrorCache *error) {
    while (*link != nullptr && *link != error)
        link = &((*link)->*next);
    if (*link == nullptr)
        return false;
    *link = error->*next;
    return true;
}

bool leave_section(CsErrorCache *error) { return take_off(&error->errseccache->errcache, &CsErrorCache::next, error); }

bool leave_history(CS_MESSAGE &message, CsErrorCache *error) {
    const bool was_there = take_off(&message.locerrhist, &CsErrorCache::histnext, error);
    message.locerrcnt -= was_there ? 1 : 0;
    return was_there;
}

void free_error(CsErrorCache *error) {
    std::free(error->errmsg);
    std::free(error);
}

// First in, first out: what was asked for lately counts for nothing. False, after a report, where the chains are
// broken.
bool drop_oldest(CS_MESSAGE &message) {
    CsErrorCache *oldest = message.locerrhist;
    COM_REQUIRE_PTR(oldest, false);
    while (oldest->histnext != nullptr)
        oldest = oldest->histnext;
    COM_REQUIRE_PTR(oldest->errseccache, false);
    COM_REQUIRE(leave_section(oldest), false);
    COM_REQUIRE(leave_history(message, oldest), false);
    free_error(oldest);
    return true;
}

void drop_section(CS_MESSAGE &message, CsErrSecCache *section) {
    for (CsErrorCache *error = section->errcache; error != nullptr;) {
        CsErrorCache *const next = error->next;
        leave_history(message, error);
        free_error(error);
        error = next;
    }
    std::free(section->errstr);
    std::free(section);
}

// ---- Lookup ----

CsErrFileCache **find_file(CS_MESSAGE &message, CS_CHAR *name) {
    CsErrFileCache **link = &message.locfilecache;
    while (*link != nullptr && com_unsignstrcmp((*link)->errfilename, name) != 0)
        link = &(*link)->next;
    return link;
}

CsErrSecCache *find_section_cache(const CsErrFileCache &file, CS_INT tag) {
    CsErrSecCache *section = file.errsecs;
    while (section != nullptr && section->errtag != tag)
        section = section->next;
    return section;
}

// Null without memory.
CsErrFileCache *new_file(const CS_CHAR *name) {
    auto *const file = static_cast<CsErrFileCache *>(std::calloc(1, sizeof(CsErrFileCache)));
    if (file == nullptr)
        return nullptr;
    file->errfilename = copy_of(name);
    if (file->errfilename == nullptr) {
        std::free(file);
        return nullptr;
    }
    return file;
}

// The section of a tag, made at the front if it is new; null without memory.
CsErrSecCache *section_for(CsErrFileCache &file, const CS_ERRSECTION &wanted) {
    if (CsErrSecCache *known = find_section_cache(file, wanted.errtag))
        return known;
    auto *const section = static_cast<CsErrSecCache *>(std::calloc(1, sizeof(CsErrSecCache)));
    if (section == nullptr)
        return nullptr;
    section->errtag = wanted.errtag;
    section->errstr = copy_of(wanted.errstr);
    if (section->errstr == nullptr) {
        std::free(section);
        return nullptr;
    }
    section->next = file.errsecs;
    file.errsecs = section;
    return section;
}

// The language of a catalog, with the record of its messages; null after a report.
const CsLocCache *cache_of(const CS_ERRHAN &errhan) {
    COM_REQUIRE_PTR(errhan.err_file, nullptr);
    COM_REQUIRE_PTR(errhan.err_locale, nullptr);
    const auto *const cache = static_cast<const CsLocCache *>(errhan.err_locale->messageptr);
    COM_REQUIRE_PTR(cache, nullptr);
    COM_REQUIRE_PTR(cache->locmessage, nullptr);
    COM_REQUIRE_PTR(cache->locmessage->msgmtx, nullptr);
    return cache;
}

CS_RETCODE open_file(CS_CONTEXT *context, const CS_ERRHAN &errhan, const CsLocCache &cache, INTL_LOCFILE *ifile) {
    constexpr CS_INT NO_NAME_WANTED = 0;
    return comn__open_msgfile(context, cache.langname, cache.langnamelen, errhan.err_file,
                              static_cast<CS_INT>(std::strlen(errhan.err_file)), ifile, nullptr, NO_NAME_WANTED);
}

// ---- Texts of an entry ----

// Text that grows by pieces.
class Text {
public:
    ~Text() { std::free(text_); }

    bool append(const CS_CHAR *piece) {
        const std::size_t size = std::strlen(piece);
        auto *const grown = static_cast<CS_CHAR *>(std::realloc(text_, length_ + size + 1));
        if (grown == nullptr)
            return false;
        text_ = grown;
        std::memcpy(text_ + length_, piece, size + 1);
        length_ += size;
        return true;
    }
    CS_CHAR *text() { return text_; }

private:
    CS_CHAR *text_ = nullptr;
    std::size_t length_ = 0;
};

// Reads the values of the present entry into the cache.
CS_RETCODE load_entry(CS_CONTEXT *context, CS_MESSAGE *message, INTL_LOCFILE *ifile, CsErrSecCache *section,
                      CS_INT number) {
    int reader = 0;
    const CS_CHAR *const first = intl_nextvalue(ifile, &reader);
    if (first == nullptr)
        return ended(context, reader);
    CS_CHAR code[CODE_SIZE];
    intl_strlcpy(code, first, sizeof code);
    Text text;
    do {
        CS_CHAR *const value = intl_nextvalue(ifile, &reader);
        if (value == nullptr)
            return ended(context, reader);
        com__err_filterescape(value);
        if (!text.append(value))
            return CS_MEM_ERROR;
    } while (!ifile->end_of_list);
    return com__update_cache(context, message, section, code, number, text.text());
}

bool is_wanted(const CS_ERRIDX *errs, CS_INT nerrs, CS_INT tag, CS_INT number) {
    return std::any_of(errs, errs + nerrs, [=](const CS_ERRIDX &idx) {
        return idx.errtag == tag && static_cast<CS_INT>(idx.errnum) == number;
    });
}

// ---- Into the locale's character set ----

CsCharDesc *charset_of(const CS_CONTEXT &context, const CS_MESSAGE &message) {
    // Sets are added while others read: each is whole before the head of the list leads to it.
    auto *set = static_cast<CsCharDesc *>(__atomic_load_n(&context.ctxglobals->cmg_chardesc, __ATOMIC_ACQUIRE));
    while (set != nullptr && set->oid != message.charset_oid)
        set = set->charnext;
    return set;
}

// Converts to at most `room` bytes of the set; nothing stays nothing.
CS_RETCODE convert(CS_CONTEXT *context, CsCharDesc *set, CS_INT selector, CS_CHAR *text, CS_CHAR *to, CS_INT room,
                   CS_INT &length) {
    length = 0;
    if (*text == '\0')
        return CS_SUCCEED;
    CsLocCache cache = {}; // of which a conversion looks at the set alone
    cache.locchardesc = set;
    CS_DATAFMT format = {};
    format.datatype = CS_CHAR_TYPE;
    format.maxlength = room;
    return comn__convt_from_utf8(context, selector, reinterpret_cast<CS_BYTE *>(text),
                                 static_cast<CS_INT>(std::strlen(text)), &format, &cache, to, &length);
}

bool is_converted(CS_RETCODE status) { return status == CS_SUCCEED || status == CS_ECONVWARN; }

// *to = the text in the set, in memory of its own with room for so many bytes.
CS_RETCODE convert_text(CS_CONTEXT *context, CsCharDesc *set, CS_CHAR *text, CS_INT room, CS_CHAR *&to) {
    auto *const converted = static_cast<CS_CHAR *>(std::malloc(static_cast<std::size_t>(room) + 1));
    if (converted == nullptr)
        return CS_MEM_ERROR;
    CS_INT length;
    const CS_RETCODE status = convert(context, set, TEXT_SELECTOR, text, converted, room, length);
    if (!is_converted(status)) {
        std::free(converted);
        return status;
    }
    converted[length] = '\0';
    to = converted;
    return CS_SUCCEED;
}

// Most texts do not grow; the few that do hardly grow more than this.
CS_RETCODE convert_text(CS_CONTEXT *context, CsCharDesc *set, CS_CHAR *text, CS_CHAR *&to) {
    constexpr CS_INT WIDENING = 3;
    const auto length = static_cast<CS_INT>(std::strlen(text));
    const CS_RETCODE status = convert_text(context, set, text, length, to);
    return status == CS_ETRUNCATED ? convert_text(context, set, text, WIDENING * length, to) : status;
}

// A code that does not fit is cut.
CS_RETCODE convert_code(CS_CONTEXT *context, CsCharDesc *set, CS_CHAR *code, CS_CHAR (&to)[CODE_SIZE]) {
    CS_INT length;
    const CS_RETCODE status = convert(context, set, CODE_SELECTOR, code, to, CODE_SIZE - 1, length);
    if (!is_converted(status) && status != CS_ETRUNCATED)
        return status;
    to[length] = '\0';
    return CS_SUCCEED;
}

} // namespace
} // namespace dlx

using namespace dlx;

const CS_ERRSECTION Comlocsections[CS_COMN_SECTIONS] = {
    {CS_ERRTAG_DEFAULTS, const_cast<CS_CHAR *>("comdefaults")},
    {CS_ERRTAG_LAYER, const_cast<CS_CHAR *>("comlayer")},
    {CS_ERRTAG_ORIGIN, const_cast<CS_CHAR *>("comorigin")},
    {CS_ERRTAG_API, const_cast<CS_CHAR *>("comapierror")},
};

const CS_ERRIDX Comdeferrs[CS_COMN_DEFAULTS] = {
    {CS_ERRTAG_DEFAULTS, 1}, {CS_ERRTAG_DEFAULTS, 2}, {CS_ERRTAG_DEFAULTS, 3}, {CS_ERRTAG_DEFAULTS, 4}};

// ---- Pieces ----

void com__err_filterescape(CS_CHAR *text) {
    COM_REQUIRE_PTR(text);
    static constexpr std::string_view NAMES = "\"bfnrt";
    static constexpr std::string_view NAMED = "\"\b\f\n\r\t";
    CS_CHAR *to = text;
    for (const CS_CHAR *from = text; *from != '\0'; ++from) {
        if (*from != '\\' || from[1] == '\0') {
            *to++ = *from;
            continue;
        }
        ++from;
        const std::size_t name = NAMES.find(*from);
        *to++ = name != std::string_view::npos ? NAMED[name] : '\\'; // files count on "\\\\" being one backslash
    }
    *to = '\0';
}

void com__errfile_cache_drop(CS_MESSAGE *message, CsErrFileCache *filecache) {
    COM_REQUIRE_PTR(message);
    COM_REQUIRE_PTR(filecache);
    for (CsErrSecCache *section = filecache->errsecs; section != nullptr;) {
        CsErrSecCache *const next = section->next;
        drop_section(*message, section);
        section = next;
    }
    std::free(filecache->errfilename);
    std::free(filecache);
}

CsErrorCache *com__scan_cache(CsErrSecCache *seccache, CS_INT errnum) {
    COM_REQUIRE_PTR(seccache, nullptr);
    CsErrorCache *error = seccache->errcache;
    while (error != nullptr && error->errnum != errnum)
        error = error->next;
    return error;
}

CS_RETCODE com__update_cache(CS_CONTEXT *context, CS_MESSAGE *message, CsErrSecCache *seccache, CS_CHAR *code,
                             CS_INT num, CS_CHAR *text) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    COM_REQUIRE_PTR(message, CS_FAIL);
    COM_REQUIRE_PTR(seccache, CS_FAIL);
    COM_REQUIRE_PTR(code, CS_FAIL);
    COM_REQUIRE_PTR(text, CS_FAIL);
    CsCharDesc *const set = charset_of(*context, *message);
    COM_REQUIRE_PTR(set, CS_FAIL);
    if (message->locerrcnt >= MOST_MESSAGES && !drop_oldest(*message))
        return CS_FAIL;
    auto *const error = static_cast<CsErrorCache *>(std::calloc(1, sizeof(CsErrorCache)));
    if (error == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    CS_RETCODE status = convert_text(context, set, text, error->errmsg);
    if (status == CS_SUCCEED)
        status = convert_code(context, set, code, error->errcode);
    if (status != CS_SUCCEED) {
        free_error(error);
        return COM_TRACE(status);
    }
    error->errnum = num;
    error->errseccache = seccache;
    error->next = seccache->errcache;
    seccache->errcache = error;
    error->histnext = message->locerrhist;
    message->locerrhist = error;
    ++message->locerrcnt;
    return CS_SUCCEED;
}

// ---- Loading ----

CS_RETCODE com__err_load_errors(CS_CONTEXT *context, CS_MESSAGE *message, INTL_LOCFILE *ifile, const CS_ERRIDX *errs,
                                CS_INT nerrs, CsErrSecCache *seccache) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(message, CS_FAIL);
    COM_REQUIRE_PTR(ifile, CS_FAIL);
    COM_REQUIRE_PTR(errs, CS_FAIL);
    COM_REQUIRE_PTR(seccache, CS_FAIL);
    COM_REQUIRE(nerrs >= 1 && nerrs <= MOST_WANTED, CS_FAIL);
    CS_RETCODE status = CS_SUCCEED;
    for (CS_INT seen = 0; seen < nerrs;) {
        const CS_CHAR *const key = next_entry(context, ifile, status);
        if (key == nullptr)
            return status == CS_FAIL ? CS_SUCCEED : COM_TRACE(status);
        const CS_INT number = std::atoi(key);
        if (!is_wanted(errs, nerrs, seccache->errtag, number))
            continue;
        ++seen;
        if (com__scan_cache(seccache, number) != nullptr)
            continue;
        status = load_entry(context, message, ifile, seccache, number);
        if (status != CS_SUCCEED)
            return COM_TRACE(status);
    }
    return CS_SUCCEED;
}

CS_RETCODE com__err_load_sections(CS_CONTEXT *context, CS_MESSAGE *message, INTL_LOCFILE *ifile,
                                  const CS_ERRSECTION *sections, CS_INT nsections, const CS_ERRIDX *errs, CS_INT nerrs,
                                  CsErrFileCache *filecache) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(message, CS_FAIL);
    COM_REQUIRE_PTR(ifile, CS_FAIL);
    COM_REQUIRE_PTR(sections, CS_FAIL);
    COM_REQUIRE_PTR(filecache, CS_FAIL);
    COM_REQUIRE(nsections >= 1, CS_FAIL);
    for (CS_INT found = 0; found < nsections;) {
        int reader = 0;
        const CS_CHAR *const name = intl_nextsection(ifile, &reader);
        if (name == nullptr)
            return COM_TRACE(ended(context, reader));
        const CS_ERRSECTION *const wanted =
            std::find_if(sections, sections + nsections,
                         [name](const CS_ERRSECTION &section) { return std::strcmp(section.errstr, name) == 0; });
        if (wanted == sections + nsections)
            continue;
        ++found;
        CsErrSecCache *const section = section_for(*filecache, *wanted);
        if (section == nullptr)
            return COM_TRACE(CS_MEM_ERROR);
        if (errs == nullptr)
            continue;
        const CS_RETCODE status = com__err_load_errors(context, message, ifile, errs, nerrs, section);
        if (status != CS_SUCCEED)
            return COM_TRACE(status);
    }
    return CS_SUCCEED;
}

CS_RETCODE com_err_init(CS_CONTEXT *context, CS_ERRHAN *errhan, const CS_ERRSECTION *sections, CS_INT nsections,
                        const CS_ERRIDX *errs, CS_INT nerrs) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(errhan, CS_FAIL);
    COM_REQUIRE_PTR(sections, CS_FAIL);
    const CsLocCache *const cache = cache_of(*errhan);
    if (cache == nullptr)
        return CS_FAIL;
    CS_MESSAGE &message = *cache->locmessage;
    const MessageLock lock(message.msgmtx);
    if (!lock.is_held())
        return COM_TRACE(CS_FAIL);
    CsErrFileCache **const link = find_file(message, errhan->err_file);
    CsErrFileCache *const file = *link != nullptr ? *link : new_file(errhan->err_file);
    if (file == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    INTL_LOCFILE ifile;
    CS_RETCODE status = open_file(context, *errhan, *cache, &ifile);
    if (status == CS_SUCCEED)
        status = close_file(context, &ifile,
                            com__err_load_sections(context, &message, &ifile, sections, nsections, errs, nerrs, file));
    if (status == CS_SUCCEED)
        *link = file; // at the end, if it is new
    else if (*link == nullptr)
        com__errfile_cache_drop(&message, file);
    return status == CS_SUCCEED ? status : COM_TRACE(status);
}

CS_RETCODE com_errinit(CS_CONTEXT *context) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxlocale, CS_FAIL);
    auto *errhan = static_cast<CS_ERRHAN *>(context->ctxcomerrhan);
    if (errhan == nullptr) {
        errhan = static_cast<CS_ERRHAN *>(std::calloc(1, sizeof(CS_ERRHAN)));
        CS_CHAR *const file = copy_of(OWN_FILE);
        if (errhan == nullptr || file == nullptr) {
            std::free(errhan);
            std::free(file);
            return COM_TRACE(CS_MEM_ERROR);
        }
        errhan->err_file = file;
        context->ctxcomerrhan = errhan;
    }
    errhan->err_locale = context->ctxlocale;
    return com_err_init(context, errhan, Comlocsections, CS_COMN_SECTIONS, Comdeferrs, CS_COMN_DEFAULTS);
}

CS_RETCODE com_errdrop(CS_CONTEXT *context) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    if (auto *const errhan = static_cast<CS_ERRHAN *>(context->ctxcomerrhan)) {
        std::free(errhan->err_file);
        std::free(errhan);
    }
    context->ctxcomerrhan = nullptr;
    return CS_SUCCEED;
}

// ---- Texts ----

namespace dlx {
namespace {

// Reads one message of the file into the cache; the sections in front of its own are passed over.
CS_RETCODE load_message(CS_CONTEXT *context, CS_MESSAGE &message, INTL_LOCFILE *ifile, CsErrSecCache *section,
                        CS_INT errnum) {
    const CS_RETCODE status = find_section(context, ifile, section->errstr);
    if (status != CS_SUCCEED)
        return status;
    const CS_ERRIDX wanted = {section->errtag, static_cast<CS_MSGNUM>(errnum)};
    return com__err_load_errors(context, &message, ifile, &wanted, 1, section);
}

// The message, read if it is not cached. The caller holds the lock.
CS_RETCODE find_message(CS_CONTEXT *context, const CS_ERRHAN &errhan, const CsLocCache &cache, CS_INT errtag,
                        CS_INT errnum, CsErrorCache *&found) {
    CS_MESSAGE &message = *cache.locmessage;
    const CsErrFileCache *const file = *find_file(message, errhan.err_file);
    CsErrSecCache *const section = file != nullptr ? find_section_cache(*file, errtag) : nullptr;
    if (section == nullptr)
        return CS_FAIL;
    found = com__scan_cache(section, errnum);
    if (found != nullptr)
        return CS_SUCCEED;
    INTL_LOCFILE ifile;
    CS_RETCODE status = open_file(context, errhan, cache, &ifile);
    if (status != CS_SUCCEED)
        return status;
    status = close_file(context, &ifile, load_message(context, message, &ifile, section, errnum));
    if (status != CS_SUCCEED)
        return status;
    found = com__scan_cache(section, errnum);
    return found != nullptr ? CS_SUCCEED : CS_FAIL;
}

// Hands the message to `use` while no other thread can take it out of the cache.
template <class Use>
CS_RETCODE with_message(CS_CONTEXT *context, const CS_ERRHAN *errhan, CS_INT errtag, CS_INT errnum, Use use) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(errhan, CS_FAIL);
    const CsLocCache *const cache = cache_of(*errhan);
    if (cache == nullptr)
        return CS_FAIL;
    const MessageLock lock(cache->locmessage->msgmtx);
    if (!lock.is_held())
        return COM_TRACE(CS_FAIL);
    CsErrorCache *error = nullptr;
    CS_RETCODE status = find_message(context, *errhan, *cache, errtag, errnum, error);
    if (status == CS_SUCCEED)
        status = use(*error);
    return status == CS_SUCCEED ? status : COM_TRACE(status);
}

} // namespace
} // namespace dlx

CS_RETCODE com__err_getcache(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_INT errtag, CS_INT errnum, CsErrorCache **out) {
    COM_REQUIRE_PTR(out, CS_FAIL);
    *out = nullptr;
    return with_message(context, errhan, errtag, errnum, [out](CsErrorCache &error) {
        *out = &error;
        return CS_SUCCEED;
    });
}

CS_RETCODE com_err_msg(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_ERRIDX *idx, CS_CHAR **msg) {
    COM_REQUIRE_PTR(idx, CS_FAIL);
    COM_REQUIRE_PTR(msg, CS_FAIL);
    *msg = nullptr;
    return with_message(context, errhan, idx->errtag, static_cast<CS_INT>(idx->errnum), [msg](CsErrorCache &error) {
        *msg = error.errmsg;
        return *msg != nullptr ? CS_SUCCEED : CS_FAIL;
    });
}

CS_RETCODE com_err_sqlstate(CS_CONTEXT *context, CS_ERRHAN *errhan, CS_INT errnum, CS_INT errtag, CS_BYTE *sqlstate,
                            CS_INT sqlstatelen, CS_INT *outlen) {
    COM_REQUIRE_PTR(sqlstate, CS_FAIL);
    COM_REQUIRE_PTR(outlen, CS_FAIL);
    COM_REQUIRE(sqlstatelen >= 1, CS_FAIL);
    return with_message(context, errhan, errtag, errnum, [=](const CsErrorCache &error) {
        *outlen = static_cast<CS_INT>(std::strlen(error.errcode));
        if (*outlen > sqlstatelen)
            return CS_FAIL;
        std::memcpy(sqlstate, error.errcode, static_cast<std::size_t>(*outlen));
        return CS_SUCCEED;
    });
}
