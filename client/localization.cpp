#include "localization.h"

#include <dlxintl/intl.h>

#include <cstring>

namespace client {
namespace {

constexpr CS_INT ROOM = 1025; // what the library builds the paths of its files in

// The loaders take their names as they lie, and change none.
CS_CHAR *plain(const std::string &text) { return const_cast<CS_CHAR *>(text.data()); }
CS_INT length_of(const std::string &text) { return static_cast<CS_INT>(text.size()); }

} // namespace

Localization::~Localization() {
    if (context_->ctxcomerrhan != nullptr)
        com_errdrop(context_);
    stop_using();
    com_intl_loccache_drop(context_);
    comn_intl_message_drop(context_);
    comn_intl_dt_drop(context_);
    comn_intl_mon_drop(context_);
    comn_intl_num_drop(context_);
    com_intl_chardesc_drop(context_);
    CsCtxGlobals &globals = *context_->ctxglobals;
    comn_free(globals.cmg_utf8_ctypeptr);
    globals.cmg_utf8_ctypeptr = globals.cmg_utf8_charset = globals.ucs2_oid = nullptr;
    if (globals.lm != nullptr)
        comn_lm_exit(context_);
    comn_intl_drop_globalid(context_, &globals.ctxoids);
}

Load Localization::ended(CS_RETCODE status, const CS_CHAR *path) {
    if (status == CS_SUCCEED)
        return {};
    return {status, context_->ctxintlerr, path, status == CS_ENOLOCFILE ? 0 : intl_closedline()};
}

Load Localization::start() {
    static CS_CHAR identifiers[] = "objectid.dat";
    CS_CHAR path[ROOM] = "";
    CS_RETCODE status = com_path_cfgfile(context_, identifiers, path, ROOM, CS_FALSE);
    if (status == CS_SUCCEED)
        status = comn_intl_load_globalid(context_, &context_->ctxglobals->ctxoids);
    if (status != CS_SUCCEED)
        return ended(status, path);
    return ended(comn_intl_init(context_, path, ROOM), path);
}

Load Localization::load_locale(const std::string &name, CsLocCache **cache) {
    CS_CHAR path[ROOM] = "";
    CS_VOID *loaded = nullptr;
    const CS_RETCODE status = comn_intl_load(context_, plain(name), length_of(name), &loaded, path, ROOM);
    *cache = static_cast<CsLocCache *>(loaded);
    return ended(status, path);
}

Load Localization::identifier(CS_INT id_class, const std::string &name, CsOID **oid) {
    return ended(comn_globalid(context_, CS_NAME_TO_OID, oid, &id_class, CS_UNUSED, plain(name), length_of(name),
                               nullptr, nullptr),
                 "");
}

Load Localization::load_charset(const std::string &name, CsCharDesc **set) {
    CsOID *oid = nullptr;
    if (const Load load = identifier(CS_OID_CHARSET, name, &oid); !load)
        return load;
    CS_CHAR path[ROOM] = "";
    CsLocCache cache = {};
    cache.charname = plain(name);
    cache.charnamelen = length_of(name);
    const CS_RETCODE status = comn__intl_load_charset(context_, oid, &cache, path, ROOM);
    *set = cache.locchardesc;
    return ended(status, path);
}

Load Localization::load_order(CsCharDesc *set, const std::string &name, CsSortDesc **order) {
    CsOID *oid = nullptr;
    if (const Load load = identifier(CS_OID_COLLATE, name, &oid); !load)
        return load;
    CS_CHAR path[ROOM] = "";
    // The directory is that of the set's first name.
    const CS_STRING_LIST *const local = set->oid->oidlnames;
    const std::string charset(local->string, static_cast<size_t>(local->len));
    CsLocCache cache = {};
    cache.locchardesc = set;
    cache.charname = plain(charset);
    cache.charnamelen = length_of(charset);
    cache.sortname = plain(name);
    cache.sortnamelen = length_of(name);
    const CS_RETCODE status = comn__intl_load_sortorder(context_, oid, &cache, path, ROOM);
    *order = cache.locsortorder;
    return ended(status, path);
}

Load Localization::use(CsLocCache *cache) {
    stop_using();
    if (const CS_RETCODE status = comn_loc_alloc(context_, &locale_); status != CS_SUCCEED)
        return ended(status, "");
    locale_->collateptr = locale_->ctypeptr = locale_->messageptr = cache;
    locale_->monetaryptr = locale_->numericptr = locale_->timeptr = cache;
    before_ = context_->ctxlocale;
    context_->ctxlocale = locale_;

    static CS_CHAR messages[] = "comnlib.loc";
    CS_CHAR path[ROOM] = "";
    com_path_msgfile(context_, cache->langname, cache->langnamelen, messages,
                     static_cast<CS_INT>(std::strlen(messages)), path, ROOM);
    return ended(com_errinit(context_), path);
}

void Localization::stop_using() {
    if (locale_ == nullptr)
        return;
    comn_loc_drop(context_, locale_);
    context_->ctxlocale = before_;
    locale_ = nullptr;
}

} // namespace client
