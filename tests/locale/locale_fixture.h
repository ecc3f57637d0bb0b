// What tests of locales share: a data home, and contexts of one application that load from it.
#ifndef TESTS_LOCALE_LOCALE_FIXTURE_H
#define TESTS_LOCALE_LOCALE_FIXTURE_H

#include "support/assertions.h"
#include "support/data_home.h"

#include <dlxcomn/dlxcomn.h>
#include <dlxintl/intl.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Strings = std::vector<std::string>;

inline CS_CHAR *chars(std::string &text) { return text.data(); }
inline CS_INT length_of(const std::string &text) { return static_cast<CS_INT>(text.size()); }
inline std::string text_of(const CS_CHAR *text, CS_INT len) { return {text, static_cast<std::size_t>(len)}; }

// Names of a table, which has to be terminated and to have these lengths.
template <int Count>
Strings names_of(CS_BYTE *const (&table)[Count], const CS_INT (&lengths)[Count]) {
    Strings names;
    for (int i = 0; i < Count; ++i) {
        names.emplace_back(reinterpret_cast<const char *>(table[i]));
        EXPECT_EQ(length_of(names.back()), lengths[i]);
    }
    return names;
}

inline const Strings WEEK_FROM_SUNDAY = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};

// The state of one application: its identifiers and its lock. Everything that was loaded goes with the object.
class Application {
public:
    Application() {
        callbacks_.take_mutex_fn = comn_take_mutex;
        callbacks_.release_mutex_fn = comn_release_mutex;
        context_.ctxglobals = &globals_;
        context_.ctxthread = &callbacks_;
        EXPECT_EQ(comn_create_mutex(&globals_.cmg_mtx), CS_SUCCEED);
    }
    ~Application() {
        drop();
        EXPECT_EQ(comn_delete_mutex(globals_.cmg_mtx), CS_SUCCEED); // it must be free
    }
    Application(const Application &) = delete;
    Application &operator=(const Application &) = delete;

    CS_RETCODE load_identifiers() { return comn_intl_load_globalid(&context_, &globals_.ctxoids); }
    void drop() {
        com_intl_loccache_drop(&context_);
        comn_intl_message_drop(&context_);
        comn_intl_dt_drop(&context_);
        comn_intl_mon_drop(&context_);
        comn_intl_num_drop(&context_);
        com_intl_chardesc_drop(&context_);
        comn_free(globals_.cmg_utf8_ctypeptr);
        globals_.cmg_utf8_ctypeptr = globals_.cmg_utf8_charset = nullptr;
        if (globals_.lm != nullptr) {
            EXPECT_EQ(comn_lm_exit(&context_), CS_SUCCEED);
        }
        comn_intl_drop_globalid(&context_, &globals_.ctxoids);
    }

    CS_CONTEXT *context() { return &context_; }
    CsCtxGlobals &globals() { return globals_; }
    CS_THREAD &callbacks() { return callbacks_; }

    CsLocCache *caches() { return static_cast<CsLocCache *>(globals_.cmg_lcache); }
    CsCharDesc *sets() { return static_cast<CsCharDesc *>(globals_.cmg_chardesc); }
    CS_MESSAGE *messages() { return static_cast<CS_MESSAGE *>(globals_.cmg_message); }
    CS_DATEINFO *dates() { return static_cast<CS_DATEINFO *>(globals_.cmg_datetime); }

    CsOID *identifier(CS_INT id_class, std::string name) {
        CsOID *oid = nullptr;
        EXPECT_EQ(comn_globalid(&context_, CS_NAME_TO_OID, &oid, &id_class, CS_UNUSED, chars(name), length_of(name),
                                nullptr, nullptr),
                  CS_SUCCEED)
            << name;
        return oid;
    }

private:
    CsCtxGlobals globals_ = {};
    CS_THREAD callbacks_ = {};
    CS_CONTEXT context_ = {};
};

template <class Record>
int count_of(const Record *record, Record *Record::*next) {
    int count = 0;
    for (; record != nullptr; record = record->*next)
        ++count;
    return count;
}

class LocaleFixture : public testing::Test {
protected:
    static constexpr CS_INT ROOM = 1025;

    LocaleFixture() { EXPECT_EQ(application_.load_identifiers(), CS_SUCCEED); }

    CS_CONTEXT *context() { return application_.context(); }
    CsCtxGlobals &globals() { return application_.globals(); }

    CS_RETCODE load(std::string name, CsLocCache *&cache) {
        CS_VOID *loaded = nullptr;
        const CS_RETCODE status = comn_intl_load(context(), chars(name), length_of(name), &loaded, file_, ROOM);
        cache = static_cast<CsLocCache *>(loaded);
        return status;
    }
    // A load that has to succeed.
    CsLocCache *loaded(const std::string &name) {
        CsLocCache *cache = nullptr;
        EXPECT_EQ(load(name, cache), CS_SUCCEED) << name;
        return cache;
    }
    CS_RETCODE derive(CS_INT type, std::string name, CsLocCache *from, CsLocCache *&cache) {
        CS_VOID *derived = nullptr;
        const CS_RETCODE status =
            comn_intl_load_dlxtypes(context(), type, chars(name), length_of(name), file_, ROOM, from, &derived);
        cache = static_cast<CsLocCache *>(derived);
        return status;
    }
    CsLocCache *derived(CS_INT type, const std::string &name, CsLocCache *from) {
        CsLocCache *cache = nullptr;
        EXPECT_EQ(derive(type, name, from, cache), CS_SUCCEED) << name;
        return cache;
    }

    int caches() { return count_of(application_.caches(), &CsLocCache::locnext); }
    int sets() { return count_of(application_.sets(), &CsCharDesc::charnext); }
    int messages() { return count_of(application_.messages(), &CS_MESSAGE::messagenext); }
    int dates() { return count_of(application_.dates(), &CS_DATEINFO::next); }

    support::DataHome home_;
    Application application_;
    CS_CHAR file_[ROOM] = ""; // the path that the last load told
};

// A locale whose six categories are one cache.
inline CS_LOCALE locale_of(CsLocCache *cache) { return {cache, cache, cache, cache, cache, cache, nullptr, nullptr}; }

// Callbacks of an owner whose lock fails.
constexpr CS_RETCODE LOCK_TROUBLE = -777;
inline CS_RETCODE fail_to_lock(CS_THRDRES * /*mutex*/) { return LOCK_TROUBLE; }

#endif
