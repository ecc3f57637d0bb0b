// What tests of the main engine share: the sets that ship, loaded from their files, with locales made of them, and
// calls of the engine whose operands have no spare byte.
#ifndef TESTS_CHARSET_ENGINE_FIXTURE_H
#define TESTS_CHARSET_ENGINE_FIXTURE_H

#include "support/assertions.h"
#include "support/convert.h"
#include "support/environment.h"

#include <dlxcomn/dlxcomn.h>
#include <dlxintl/intl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace engine {

// A set and a locale that has it in every category.
struct Locale {
    explicit Locale(CsCharDesc *set) {
        cache.locchardesc = set;
        record = {&cache, &cache, &cache, &cache, &cache, &cache, nullptr, nullptr};
    }
    Locale(const Locale &) = delete;
    Locale &operator=(const Locale &) = delete;

    CsLocCache cache = {};
    CS_LOCALE record;
};

// A set that has no files: all that the engine knows of it is its number.
class BareSet {
public:
    explicit BareSet(int csid) : locale(&description_) {
        attributes_.cs_id = static_cast<CS_BYTE>(csid);
        description_.char_attrib = &attributes_;
        description_.oid = &oid_;
    }
    CsCharDesc *get() { return &description_; }

private:
    CHAR_ATTRIB attributes_ = {};
    CsOID oid_ = {};
    CsCharDesc description_ = {};

public:
    Locale locale;
};

// One application that has the home that ships; the sets are loaded as they are asked for.
class Shipped {
public:
    // For the life of the test's process.
    static Shipped &instance() {
        static Shipped shipped;
        return shipped;
    }

    CsCtxGlobals &globals() { return globals_; }

    // The locale of a set.
    Locale &operator[](const std::string &name) {
        std::unique_ptr<Locale> &locale = locales_[name];
        if (locale == nullptr)
            locale = std::make_unique<Locale>(load(name));
        return *locale;
    }

    CsOID *identifier(std::string name) {
        CsOID *oid = nullptr;
        CS_INT id_class = CS_OID_CHARSET;
        EXPECT_EQ(comn_globalid(&context_, CS_NAME_TO_OID, &oid, &id_class, CS_UNUSED, name.data(),
                                static_cast<CS_INT>(name.size()), nullptr, nullptr),
                  CS_SUCCEED)
            << name;
        return oid;
    }

private:
    Shipped() {
        context_.ctxglobals = &globals_;
        CS_CHAR file[1025] = "";
        EXPECT_EQ(comn_intl_load_globalid(&context_, &globals_.ctxoids), CS_SUCCEED);
        EXPECT_EQ(comn_intl_init(&context_, file, sizeof file), CS_SUCCEED) << file;
    }
    ~Shipped() {
        com_intl_chardesc_drop(&context_);
        comn_free(globals_.cmg_utf8_ctypeptr);
        comn_lm_exit(&context_);
        comn_intl_drop_globalid(&context_, &globals_.ctxoids);
    }

    CsCharDesc *load(std::string name) {
        CsLocCache cache = {};
        cache.charname = name.data();
        cache.charnamelen = static_cast<CS_INT>(name.size());
        CS_CHAR file[1025] = "";
        EXPECT_EQ(comn__intl_load_charset(&context_, identifier(name), &cache, file, sizeof file), CS_SUCCEED) << file;
        return cache.locchardesc;
    }

    const support::Variable home_{"DALVEX", DLXCOMN_BUILD_DIR "/home"};
    CsCtxGlobals globals_ = {};
    CS_CONTEXT context_ = {};
    std::map<std::string, std::unique_ptr<Locale>> locales_;
};

// The sets that convert, utf8 among them.
inline std::vector<CSID_CSNAME> shipped_sets() {
    std::vector<CSID_CSNAME> sets;
    std::ranges::copy_if(csid_name, std::back_inserter(sets),
                         [](const CSID_CSNAME &set) { return set.unilib_cid != UNICONV_NONE; });
    return sets;
}
inline std::string name_of(const CSID_CSNAME &set) { return reinterpret_cast<const char *>(set.csname); }

constexpr CS_BYTE GROUND = 0xEE;
constexpr CS_INT NO_LENGTH = -77777;

// What a call left behind.
struct Result {
    CS_RETCODE status = 12345;
    CS_INT length = NO_LENGTH;
    std::string room; // all of it; what was not written is GROUND

    // What the call says it wrote; as long as the status and the length are what they should be.
    std::string text() const {
        return length < 0 || static_cast<std::size_t>(length) > room.size()
                   ? "(no text)"
                   : room.substr(0, static_cast<std::size_t>(length));
    }
    bool untouched_from(std::size_t from) const {
        return room.find_first_not_of(static_cast<char>(GROUND), from) == std::string::npos;
    }
};

// Memory without a spare byte for what is read, and guards around what is written.
class Operands {
public:
    Operands(const std::string &source, std::size_t room)
        : source_(new CS_BYTE[source.size()]), original_(source), dest_(room + 2 * GUARD, static_cast<char>(GROUND)) {
        std::memcpy(source_.get(), source.data(), source.size());
    }
    ~Operands() {
        EXPECT_EQ(std::memcmp(source_.get(), original_.data(), original_.size()), 0) << "the source has changed";
        const std::string guard(GUARD, static_cast<char>(GROUND));
        EXPECT_EQ(dest_.substr(0, GUARD), guard) << "written in front of the room";
        EXPECT_EQ(dest_.substr(dest_.size() - GUARD), guard) << "written behind the room";
    }
    Operands(const Operands &) = delete;
    Operands &operator=(const Operands &) = delete;

    CS_BYTE *source() { return source_.get(); }
    CS_BYTE *dest() { return reinterpret_cast<CS_BYTE *>(dest_.data() + GUARD); }
    std::string room() const { return dest_.substr(GUARD, dest_.size() - 2 * GUARD); }

private:
    static constexpr std::size_t GUARD = 16;

    std::unique_ptr<CS_BYTE[]> source_;
    std::string original_;
    std::string dest_;
};

inline CS_DATAFMT text_format(CS_LOCALE *locale, std::size_t maxlength, CS_INT datatype = CS_CHAR_TYPE) {
    CS_DATAFMT format = support::format_of(datatype, static_cast<CS_INT>(maxlength));
    format.locale = locale;
    return format;
}

// A value of a CS_VARCHAR: its length and its text.
inline std::string prefixed(CS_SMALLINT length, const std::string &text) {
    return std::string(reinterpret_cast<const char *>(&length), sizeof length) + text;
}
inline std::string prefixed(const std::string &text) { return prefixed(static_cast<CS_SMALLINT>(text.size()), text); }

class EngineTest : public testing::Test {
protected:
    EngineTest() { context_.ctxglobals = &shipped_.globals(); }
    ~EngineTest() override { comn_drop_user_charconv_list(&context_); }

    CS_LOCALE *locale(const std::string &set) { return &shipped_[set].record; }
    CsLocCache *cache(const std::string &set) { return &shipped_[set].cache; }
    CsOID *oid(const std::string &set) { return shipped_[set].cache.locchardesc->oid; }

    // comn_charset_convert of whole operands; `room` is the memory at dest.
    Result convert(CS_DATAFMT srcfmt, const std::string &source, CS_DATAFMT destfmt, std::size_t room,
                   CS_INT type = CS_LC_CTYPE) {
        Operands operands(source, room);
        Result result;
        result.status = comn_charset_convert(&context_, type, &srcfmt, operands.source(), &destfmt, operands.dest(),
                                             &result.length);
        result.room = operands.room();
        return result;
    }
    // The same of plain texts of two sets.
    Result convert(const std::string &from, const std::string &source, const std::string &to, std::size_t room) {
        return convert(text_format(locale(from), source.size()), source, text_format(locale(to), room), room);
    }
    // With room for anything.
    Result convert(const std::string &from, const std::string &source, const std::string &to) {
        return convert(from, source, to, 8 * source.size() + 16);
    }

    Result to_utf8(CsLocCache *from, const std::string &source, std::size_t room, CS_INT match_mode = 0) {
        CS_DATAFMT srcfmt = text_format(nullptr, source.size());
        Operands operands(source, room);
        Result result;
        result.status = comn__convt_to_utf8(&context_, match_mode, &srcfmt, from, operands.source(), operands.dest(),
                                            static_cast<CS_INT>(room), &result.length);
        result.room = operands.room();
        return result;
    }
    Result from_utf8(const std::string &source, CsLocCache *to, std::size_t room, CS_INT match_mode = 0) {
        CS_DATAFMT destfmt = text_format(nullptr, room);
        Operands operands(source, room);
        Result result;
        result.status =
            comn__convt_from_utf8(&context_, match_mode, operands.source(), static_cast<CS_INT>(source.size()),
                                  &destfmt, to, operands.dest(), &result.length);
        result.room = operands.room();
        return result;
    }

    // Installs a conversion by the names of the sets.
    void install(std::string from, std::string to, CS_CONV_FUNC function, CS_INT multiplier = 1) {
        EXPECT_EQ(comn_set_user_charset_convert(&context_, CS_USERCONV_SET, from.data(),
                                                static_cast<CS_INT>(from.size()), to.data(),
                                                static_cast<CS_INT>(to.size()), &multiplier, &function),
                  CS_SUCCEED);
    }

    Shipped &shipped_ = Shipped::instance();
    CS_CONTEXT context_ = {};
};

inline void expect_text(const Result &result, CS_RETCODE status, const std::string &text) {
    EXPECT_EQ(result.status, status);
    EXPECT_EQ(result.length, static_cast<CS_INT>(text.size()));
    EXPECT_EQ(result.text(), text);
}

// A call of a conversion of the application's, as it came.
struct UserCall {
    CS_CONTEXT *context;
    CS_DATAFMT *srcfmt;
    CS_VOID *src;
    CS_DATAFMT *destfmt;
    CS_VOID *dest;
    CS_INT *destlen;
    CS_DATAFMT source, destination; // what the descriptors said
};
inline std::vector<UserCall> user_calls;

// A status that the engine has no use of its own for, and what came with it.
constexpr CS_RETCODE USER_STATUS = -4321;
constexpr CS_INT USER_LENGTH = 4;

inline CS_RETCODE note_call(CS_CONTEXT *context, CS_DATAFMT *srcfmt, CS_VOID *src, CS_DATAFMT *destfmt, CS_VOID *dest,
                            CS_INT *destlen) {
    user_calls.push_back({context, srcfmt, src, destfmt, dest, destlen, *srcfmt, *destfmt});
    std::memcpy(dest, "user", USER_LENGTH);
    *destlen = USER_LENGTH;
    return USER_STATUS;
}

} // namespace engine

#endif
