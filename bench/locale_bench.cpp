// Locales from files: German with its traditional character set, against the C library and ICU. The C library's locales
// are separate files, made by the build; the home is that of the build tree. Peers hold nothing when a first load
// begins, and it ends when all is dropped again.
#include "contest.h"
#include "localization.h"
#include "owner.h"

#include <unicode/uclean.h>
#include <unicode/ucnv.h>
#include <unicode/ucol.h>

#include <clocale>
#include <cstdlib>
#include <string>

namespace bench {
namespace {

struct Place {
    std::string name = "de_DE";
};

// ---- This library ---------------------------------------------------------------------------------------------

// An application that has started: its identifiers and the UTF-8 set are there.
class Application {
public:
    Application() : is_ready_(localization_.start()) {}

    CsLocCache *load(const std::string &name) {
        CsLocCache *cache = nullptr;
        if (is_ready_)
            localization_.load_locale(name, &cache);
        return cache;
    }
    // Drops what the load of one locale has made, and leaves the UTF-8 set.
    void drop() {
        CS_CONTEXT *const context = owner_.context();
        CsCtxGlobals &globals = *context->ctxglobals;
        com_intl_loccache_drop(context);
        comn_intl_message_drop(context);
        comn_intl_dt_drop(context);
        comn_intl_mon_drop(context);
        comn_intl_num_drop(context);
        while (globals.cmg_chardesc != globals.cmg_utf8_charset) {
            auto *const set = static_cast<CsCharDesc *>(globals.cmg_chardesc);
            globals.cmg_chardesc = set->charnext;
            comn__chardesc_drop(set);
        }
    }

private:
    client::Owner owner_;
    client::Localization localization_{owner_.context()};
    const bool is_ready_;
};

bool is_german(const CsLocCache *cache) {
    return cache != nullptr && cache->locchardesc->char_attrib->cs_id == 1 &&
           std::string_view(reinterpret_cast<const char *>(cache->locdateinfo->months[4])) == "Mai";
}

class LibraryFirst {
public:
    explicit LibraryFirst(const Place &place) : name_(place.name) {}
    void work(std::size_t /*i*/) {
        CsLocCache *const cache = application_.load(name_);
        is_right_ = is_german(cache);
        application_.drop();
    }
    bool right(std::size_t /*i*/) const { return is_right_; }

private:
    const std::string &name_;
    Application application_;
    bool is_right_ = false;
};

class LibraryAgain {
public:
    explicit LibraryAgain(const Place &place) : name_(place.name), first_(application_.load(name_)) {}
    void work(std::size_t /*i*/) { cache_ = application_.load(name_); }
    bool right(std::size_t /*i*/) const { return cache_ == first_ && is_german(cache_); }

private:
    const std::string &name_;
    Application application_;
    CsLocCache *first_;
    CsLocCache *cache_ = nullptr;
};

// ---- The C library ----------------------------------------------------------------------------------------------

class GlibcFirst {
public:
    explicit GlibcFirst(const Place &place) : name_(place.name) {}
    void work(std::size_t /*i*/) {
        const locale_t locale = newlocale(LC_ALL_MASK, name_.c_str(), nullptr);
        is_right_ = locale != nullptr;
        if (is_right_)
            freelocale(locale);
    }
    bool right(std::size_t /*i*/) const { return is_right_; }

private:
    const std::string &name_;
    bool is_right_ = false;
};

class GlibcAgain : public GlibcFirst {
public:
    explicit GlibcAgain(const Place &place)
        : GlibcFirst(place), first_(newlocale(LC_ALL_MASK, place.name.c_str(), nullptr)) {}
    ~GlibcAgain() {
        if (first_ != nullptr)
            freelocale(first_);
    }
    GlibcAgain(const GlibcAgain &) = delete;
    GlibcAgain &operator=(const GlibcAgain &) = delete;

private:
    locale_t first_;
};

// ---- ICU --------------------------------------------------------------------------------------------------------

class IcuFirst {
public:
    explicit IcuFirst(const Place & /*place*/) {}
    void work(std::size_t /*i*/) {
        UErrorCode error = U_ZERO_ERROR;
        UConverter *const converter = ucnv_open("ISO-8859-1", &error);
        UCollator *const collator = ucol_open("de", &error);
        is_right_ = U_SUCCESS(error);
        ucol_close(collator);
        ucnv_close(converter);
        u_cleanup();
    }
    bool right(std::size_t /*i*/) const { return is_right_; }

private:
    bool is_right_ = false;
};

} // namespace

void enter_locale_rows() {
    static const Place place;
    setenv("DALVEX", BENCH_HOME, 1);
    setenv("LOCPATH", BENCH_LOCALES, 1);
    enter<LibraryFirst>("locale first load", LIBRARY, place);
    enter<GlibcFirst>("locale first load", "glibc", place);
    enter<IcuFirst>("locale first load", "ICU", place);
    enter<LibraryAgain>("locale load again", LIBRARY, place);
    enter<GlibcAgain>("locale load again", "glibc", place);
}

} // namespace bench
