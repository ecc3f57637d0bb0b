// Loading locales: the name from the environment, its line in locales.dat, and the caches that contexts share.

#include "charset/locvalue.h"
#include "diag/check.h"
#include "locale/locale_lock.h"

#include <dlxcomn/charload.h>
#include <dlxcomn/list.h>
#include <dlxcomn/locale.h>
#include <dlxcomn/message.h>
#include <dlxcomn/oid.h>
#include <dlxcomn/services.h>
#include <dlxcomn/sortorder.h>
#include <dlxcomn/thread.h>

#include <cstdlib>
#include <cstring>

namespace dlx {
namespace {

constexpr CS_CHAR LOCALES_FILE[] = "locales.dat";
constexpr std::string_view PLATFORM_SECTION = "linux";
constexpr std::string_view LOCALE_KEY = "locale";
constexpr CS_CHAR DEFAULT_LOCALE[] = "default";
constexpr std::string_view BINARY_ORDER = "binary";

constexpr CS_CHAR UTF8_NAME[] = "utf8";
constexpr CS_CHAR BINARY_NAME[] = "binary";
constexpr CS_CHAR UCS2_NAME[] = "ucs2";
constexpr CS_INT LIST_VERSION = 16001;
constexpr CS_CHAR LIST_CONTEXT[] = "comnlib list context";

CS_CHAR *plain(const CS_CHAR *text) { return const_cast<CS_CHAR *>(text); }
CS_INT length_of(const CS_CHAR *text) { return static_cast<CS_INT>(std::strlen(text)); }

CS_RETCODE resolve(CS_CONTEXT *context, CS_INT id_class, CS_CHAR *name, CS_INT len, CsOID *&oid) {
    return comn_globalid(context, CS_NAME_TO_OID, &oid, &id_class, CS_UNUSED, name, len, nullptr, nullptr);
}

// ---- locales.dat ----

// A name of a line: its text and its length.
struct Field {
    CS_CHAR (CsLocNames::*text)[CS_LOCNAME_SIZE];
    CS_INT CsLocNames::*length;
};

constexpr Field LANGUAGE = {&CsLocNames::lang, &CsLocNames::langlen};
constexpr Field CHARSET = {&CsLocNames::charset, &CsLocNames::charsetlen};
constexpr Field SORTORDER = {&CsLocNames::sortorder, &CsLocNames::sortorderlen};
constexpr Field FIELDS[] = {LANGUAGE,
                            CHARSET,
                            SORTORDER,
                            {&CsLocNames::datetime, &CsLocNames::datetimelen},
                            {&CsLocNames::numeric, &CsLocNames::numericlen},
                            {&CsLocNames::money, &CsLocNames::moneylen}};

bool set_field(CsLocNames &names, const Field &field, const CS_CHAR *text, CS_INT length) {
    COM_REQUIRE(length < CS_LOCNAME_SIZE, false);
    std::memcpy(names.*field.text, text, static_cast<std::size_t>(length));
    (names.*field.text)[length] = '\0';
    names.*field.length = length;
    return true;
}

// The values behind the name. A list that ends early is good from the sort order on.
CS_RETCODE read_fields(CS_CONTEXT *context, INTL_LOCFILE *ifile, CsLocNames &names) {
    for (const Field &field : FIELDS) {
        CS_INT length;
        CS_RETCODE status;
        const CS_BYTE *const value = next_value(context, ifile, length, status);
        if (value == nullptr) {
            if (status != CS_FAIL)
                return status;
            break;
        }
        if (!set_field(names, field, reinterpret_cast<const CS_CHAR *>(value), length))
            return CS_FAIL;
    }
    if (names.langlen == 0 || names.charsetlen == 0)
        return CS_FAIL;
    if (names.sortorderlen == 0)
        set_field(names, SORTORDER, BINARY_ORDER.data(), static_cast<CS_INT>(BINARY_ORDER.size()));
    return CS_SUCCEED;
}

// The first line of the name.
CS_RETCODE find_locale(CS_CONTEXT *context, std::string_view name, INTL_LOCFILE *ifile, CsLocNames &names) {
    CS_RETCODE status = find_section(context, ifile, PLATFORM_SECTION);
    if (status != CS_SUCCEED)
        return status;
    while (const CS_CHAR *key = next_entry(context, ifile, status)) {
        if (key != LOCALE_KEY)
            return CS_FAIL;
        CS_INT length;
        const auto *const value = reinterpret_cast<const CS_CHAR *>(next_value(context, ifile, length, status));
        if (status == CS_EINTL)
            return status;
        if (value != nullptr && name == std::string_view(value, static_cast<std::size_t>(length)))
            return read_fields(context, ifile, names);
    }
    return status;
}

} // namespace
} // namespace dlx

using namespace dlx;

CS_RETCODE com_intl_envloc(CS_CONTEXT *context, CS_INT lctype, CS_CHAR *name, CS_INT namelen) {
    static constexpr const char *VARIABLES[] = {"LC_COLLATE", "LC_CTYPE", "LC_MESSAGE", "LC_MONETARY",
                                                "LC_NUMERIC", "LC_TIME",  "LC_ALL"};
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(name, CS_FAIL);
    COM_REQUIRE(namelen >= 1, CS_FAIL);
    COM_REQUIRE(lctype >= CS_LC_COLLATE && lctype <= CS_LC_ALL, CS_FAIL);
    int length = intlgetenv(name, namelen, VARIABLES[lctype - CS_LC_COLLATE]);
    if (length == 0)
        length = intlgetenv(name, namelen, "LANG");
    if (length < 0) {
        context->ctxintlerr = length;
        return COM_TRACE(CS_EINTL);
    }
    if (length == 0)
        length = static_cast<int>(intl_strlcpy(name, DEFAULT_LOCALE, static_cast<std::size_t>(namelen)));
    return length < namelen ? CS_SUCCEED : COM_TRACE(CS_EINTL);
}

CS_RETCODE comn__intl_lookup(CsContext *context, CS_CHAR *name, CS_INT namelen, CsLocNames *locnames,
                             CS_CHAR *locfilename, CS_INT filenamelen) {
    (void)namelen; // the name is compared up to its NUL
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(name, CS_FAIL);
    COM_REQUIRE_PTR(locnames, CS_FAIL);
    INTL_LOCFILE ifile;
    CS_RETCODE status =
        com__open_locfile(context, nullptr, nullptr, plain(LOCALES_FILE), &ifile, locfilename, filenamelen);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    *locnames = {};
    status = close_file(context, &ifile, find_locale(context, name, &ifile, *locnames));
    return status == CS_SUCCEED ? status : COM_TRACE(status);
}

// ---- Start-up ----

namespace dlx {
namespace {

CS_RETCODE load_utf8(CS_CONTEXT *context, CsLocCache &cache, CS_CHAR *locfilename, CS_INT filenamelen) {
    CsCtxGlobals &globals = *context->ctxglobals;
    CsOID *oid;
    if (resolve(context, CS_OID_CHARSET, plain(UTF8_NAME), CS_NULLTERM, oid) != CS_SUCCEED)
        return CS_FAIL;
    cache.charname = plain(UTF8_NAME);
    cache.charnamelen = length_of(UTF8_NAME);
    CS_RETCODE status = comn__intl_load_charset(context, oid, &cache, locfilename, filenamelen);
    if (status != CS_SUCCEED)
        return status;
    globals.cmg_utf8_charset = cache.locchardesc;

    cache.sortname = plain(BINARY_NAME);
    cache.sortnamelen = length_of(BINARY_NAME);
    if (resolve(context, CS_OID_COLLATE, cache.sortname, CS_NULLTERM, oid) != CS_SUCCEED)
        return CS_FAIL;
    status = comn__intl_load_sortorder(context, oid, &cache, locfilename, filenamelen);
    if (status != CS_SUCCEED)
        return status;
    if (resolve(context, CS_OID_CHARSET, plain(UCS2_NAME), CS_NULLTERM, oid) != CS_SUCCEED)
        return CS_FAIL;
    globals.ucs2_oid = oid;
    return lm_initlm(LIST_VERSION, plain(LIST_CONTEXT), length_of(LIST_CONTEXT),
                     reinterpret_cast<LM_CONTEXT **>(&globals.lm));
}

} // namespace
} // namespace dlx

CS_RETCODE comn_intl_init(CS_CONTEXT *context, CS_CHAR *locfilename, CS_INT filenamelen) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    if (context->ctxglobals->cmg_utf8_charset != nullptr)
        return CS_SUCCEED;
    CsLocCache *cache;
    CS_RETCODE status = comn__create_loccache(context, &cache);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    status = load_utf8(context, *cache, locfilename, filenamelen);
    if (status != CS_SUCCEED) {
        std::free(cache); // its names are constants, and the sets that were loaded stay
        return COM_TRACE(status);
    }
    context->ctxglobals->cmg_utf8_ctypeptr = cache;
    return CS_SUCCEED;
}

CS_RETCODE comn_lm_exit(CS_CONTEXT *context) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    const CS_RETCODE status = lm_exit(static_cast<LM_CONTEXT *>(context->ctxglobals->lm), LM_UNUSED);
    if (status != CS_SUCCEED)
        return COM_TRACE(status); // lists are left
    context->ctxglobals->lm = nullptr;
    return CS_SUCCEED;
}

// ---- Locales ----

namespace dlx {
namespace {

// A load under way: where the path of a file goes.
struct Loader {
    CS_CONTEXT *context;
    CsLocCache *cache;
    CS_CHAR *locfilename;
    CS_INT filenamelen;

    CS_RETCODE charset(CsOID *oid) const {
        return comn__intl_load_charset(context, oid, cache, locfilename, filenamelen);
    }
    CS_RETCODE message(CsOID *oid) const {
        return comn__intl_load_message(context, oid, cache, locfilename, filenamelen);
    }
    CS_RETCODE sortorder(CsOID *oid) const {
        return comn__intl_load_sortorder(context, oid, cache, locfilename, filenamelen);
    }
    CS_RETCODE date() const { return comn__read_common(context, cache, locfilename, filenamelen); }
    CS_RETCODE money(CsOID *oid) const {
        return comn__load_locdata(context, CS_LOCDATA_MONEY, oid, cache, locfilename, filenamelen);
    }

    // Copies a name and finds its identifier.
    CS_RETCODE take_name(CS_CHAR *&to, CS_INT &to_len, CS_CHAR *name, CS_INT len, CS_INT id_class, CsOID *&oid) const {
        const CS_RETCODE status = com_setstring(&to, &to_len, name, len);
        return status == CS_SUCCEED ? resolve(context, id_class, name, len, oid) : status;
    }
};

void publish(CS_CONTEXT *context, CsLocCache *cache) {
    CS_VOID *&head = context->ctxglobals->cmg_lcache;
    cache->locnext = static_cast<CsLocCache *>(head);
    head = cache;
}

// The three main loads in this order: the messages need the character set, and a sort order hangs on it.
CS_RETCODE load_named(const Loader &load, CS_CHAR *name, CS_INT namelen, CsLocNames &names) {
    CsLocCache &cache = *load.cache;
    CsOID *oid;
    CS_RETCODE status = com_setstring(&cache.locname, &cache.locnamelen, name, namelen);
    if (status == CS_SUCCEED)
        status =
            load.take_name(cache.charname, cache.charnamelen, names.charset, names.charsetlen, CS_OID_CHARSET, oid);
    if (status == CS_SUCCEED)
        status = load.charset(oid);
    if (status == CS_SUCCEED)
        status = load.take_name(cache.langname, cache.langnamelen, names.lang, names.langlen, CS_OID_NATLANG, oid);
    if (status == CS_SUCCEED)
        status = load.message(oid);
    if (status == CS_SUCCEED)
        status =
            load.take_name(cache.sortname, cache.sortnamelen, names.sortorder, names.sortorderlen, CS_OID_COLLATE, oid);
    if (status == CS_SUCCEED)
        status = load.sortorder(oid);
    if (status != CS_SUCCEED)
        return status;

    // Date data comes with the language; a name of its own is only kept, as is one of numbers.
    status = names.datetimelen < 1 ? load.date()
                                   : load.take_name(cache.datename, cache.datenamelen, names.datetime,
                                                    names.datetimelen, CS_OID_DATETIME, oid);
    if (status == CS_SUCCEED && names.numericlen > 0)
        status = load.take_name(cache.numname, cache.numnamelen, names.numeric, names.numericlen, CS_OID_NUMERIC, oid);
    if (status == CS_SUCCEED && names.moneylen > 0) {
        status = load.take_name(cache.monname, cache.monnamelen, names.money, names.moneylen, CS_OID_MONEY, oid);
        if (status == CS_SUCCEED)
            status = load.money(oid);
    }
    return status;
}

// The identifiers that a cache stands for.
struct Triple {
    CsOID *charset;
    CsOID *language;
    CsOID *sortorder;
};

bool has_triple(const CsLocCache &cache, const Triple &wanted, bool has_sortname) {
    if (cache.locchardesc->oid != wanted.charset || cache.locmessage->lang_oid != wanted.language)
        return false;
    if (cache.sortname == nullptr || !has_sortname)
        return cache.sortname == nullptr && !has_sortname;
    return cache.locsortorder->oid == wanted.sortorder;
}

CsLocCache *find_triple(CS_CONTEXT *context, const Triple &wanted, bool has_sortname) {
    auto *cache = static_cast<CsLocCache *>(context->ctxglobals->cmg_lcache);
    while (cache != nullptr && !has_triple(*cache, wanted, has_sortname))
        cache = cache->locnext;
    return cache;
}

// What comn_intl_load_dlxtypes replaces: the slot of the identifier, its class, and where the name goes.
struct Item {
    CsOID *Triple::*oid;
    CS_INT id_class;
    CS_CHAR *CsLocCache::*name;
    CS_INT CsLocCache::*length;
    CS_RETCODE (Loader::*load)(CsOID *) const;
};

constexpr Item ITEMS[] = {
    {&Triple::language, CS_OID_NATLANG, &CsLocCache::langname, &CsLocCache::langnamelen, &Loader::message},
    {&Triple::charset, CS_OID_CHARSET, &CsLocCache::charname, &CsLocCache::charnamelen, &Loader::charset},
    {&Triple::sortorder, CS_OID_COLLATE, &CsLocCache::sortname, &CsLocCache::sortnamelen, &Loader::sortorder},
};

CS_RETCODE load_derived(const Loader &load, CsLocCache *old, const Item &item, CsOID *oid, CS_CHAR *name,
                        CS_INT namelen) {
    CsLocCache &cache = *load.cache;
    CS_RETCODE status = comn__copy_loccache(old, &cache);
    if (status == CS_SUCCEED) {
        // Not replaced in place: com_setstring would lose the old name where memory is short.
        std::free(cache.*item.name);
        cache.*item.name = nullptr;
        status = com_setstring(&(cache.*item.name), &(cache.*item.length), name, namelen);
    }
    if (status == CS_SUCCEED)
        status = (load.*item.load)(oid);
    if (status == CS_SUCCEED && cache.locdateinfo == nullptr)
        status = load.date();
    if (status != CS_SUCCEED)
        return status;
    std::free(cache.locname);
    cache.locname = nullptr;
    cache.locnamelen = 0;
    return CS_SUCCEED;
}

} // namespace
} // namespace dlx

CS_RETCODE comn_intl_load(CsContext *context, CS_CHAR *name, CS_INT namelen, CS_VOID **loccache_p, CS_CHAR *locfilename,
                          CS_INT filenamelen) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    COM_REQUIRE_PTR(name, CS_FAIL);
    COM_REQUIRE_PTR(loccache_p, CS_FAIL);
    COM_REQUIRE(namelen >= 0, CS_FAIL);
    const LocaleLock lock(context);
    if (!lock.is_held())
        return COM_TRACE(CS_FAIL);
    if (CsLocCache *const known = com__scan_lcache_name(context, name, namelen)) {
        *loccache_p = known;
        return CS_SUCCEED;
    }
    CsLocNames names;
    CS_RETCODE status = comn__intl_lookup(context, name, namelen, &names, locfilename, filenamelen);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    CsLocCache *cache;
    status = comn__create_loccache(context, &cache);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    status = load_named({context, cache, locfilename, filenamelen}, name, namelen, names);
    if (status != CS_SUCCEED) {
        comn__drop_loccache(context, cache);
        return COM_TRACE(status);
    }
    publish(context, cache);
    *loccache_p = cache;
    return CS_SUCCEED;
}

CS_RETCODE comn_intl_load_dlxtypes(CS_CONTEXT *context, CS_INT type, CS_CHAR *dlx_name, CS_INT namelen,
                                   CS_CHAR *locfilename, CS_INT filenamelen, CS_VOID *old_loccache,
                                   CS_VOID **new_loccache_p) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    COM_REQUIRE_PTR(dlx_name, CS_FAIL);
    COM_REQUIRE_PTR(old_loccache, CS_FAIL);
    COM_REQUIRE_PTR(new_loccache_p, CS_FAIL);
    COM_REQUIRE(type >= CS_LOC_LANGUAGE && type <= CS_LOC_SORTORDER, CS_FAIL);
    auto *const old = static_cast<CsLocCache *>(old_loccache);
    COM_REQUIRE_PTR(old->locchardesc, CS_FAIL);
    COM_REQUIRE_PTR(old->locmessage, CS_FAIL);
    if (namelen == CS_NULLTERM)
        namelen = length_of(dlx_name);

    const Item &item = ITEMS[type - CS_LOC_LANGUAGE];
    Triple wanted = {old->locchardesc->oid, old->locmessage->lang_oid,
                     old->locsortorder != nullptr ? old->locsortorder->oid : nullptr};
    if (resolve(context, item.id_class, dlx_name, namelen, wanted.*item.oid) != CS_SUCCEED)
        return COM_TRACE(CS_EBADCSNAME);
    const bool has_sortname = type == CS_LOC_SORTORDER || old->sortname != nullptr;

    const LocaleLock lock(context);
    if (!lock.is_held())
        return COM_TRACE(CS_FAIL);
    if (CsLocCache *const known = find_triple(context, wanted, has_sortname)) {
        *new_loccache_p = known;
        return CS_SUCCEED;
    }
    CsLocCache *cache;
    CS_RETCODE status = comn__create_loccache(context, &cache);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    status = load_derived({context, cache, locfilename, filenamelen}, old, item, wanted.*item.oid, dlx_name, namelen);
    if (status != CS_SUCCEED) {
        comn__drop_loccache(context, cache);
        return COM_TRACE(status);
    }
    publish(context, cache);
    *new_loccache_p = cache;
    return CS_SUCCEED;
}

// ---- Messages ----

CS_RETCODE comn__intl_load_message(CsContext *context, CsOID *oid, CsLocCache *lcache, CS_CHAR *locfilename,
                                   CS_INT filenamelen) {
    (void)locfilename;
    (void)filenamelen;
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    COM_REQUIRE_PTR(oid, CS_FAIL);
    COM_REQUIRE_PTR(lcache, CS_FAIL);
    COM_REQUIRE_PTR(lcache->locchardesc, CS_FAIL);
    CS_VOID *&head = context->ctxglobals->cmg_message;
    CsOID *const charset = lcache->locchardesc->oid;
    for (auto *message = static_cast<CS_MESSAGE *>(head); message != nullptr; message = message->messagenext) {
        if (message->lang_oid == oid && message->charset_oid == charset) {
            lcache->locmessage = message;
            return CS_SUCCEED;
        }
    }
    CS_MESSAGE *const message = static_cast<CS_MESSAGE *>(std::calloc(1, sizeof(CS_MESSAGE)));
    if (message == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    const CS_RETCODE status = comn_create_mutex(&message->msgmtx);
    if (status != CS_SUCCEED) {
        std::free(message);
        return COM_TRACE(status);
    }
    message->lang_oid = oid;
    message->charset_oid = charset;
    message->messagenext = static_cast<CS_MESSAGE *>(head);
    head = message;
    lcache->locmessage = message;
    return CS_SUCCEED;
}

CS_RETCODE comn_intl_message_drop(CsContext *context) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    for (auto *message = static_cast<CS_MESSAGE *>(context->ctxglobals->cmg_message); message != nullptr;) {
        CS_MESSAGE *const next = message->messagenext;
        while (CsErrFileCache *const file = message->locfilecache) {
            message->locfilecache = file->next;
            com__errfile_cache_drop(message, file);
        }
        if (message->msgmtx != nullptr)
            comn_delete_mutex(message->msgmtx);
        std::free(message);
        message = next;
    }
    context->ctxglobals->cmg_message = nullptr;
    return CS_SUCCEED;
}
