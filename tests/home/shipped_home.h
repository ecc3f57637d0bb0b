// The data home that ships, as an application meets it.
#ifndef TESTS_HOME_SHIPPED_HOME_H
#define TESTS_HOME_SHIPPED_HOME_H

#include "support/environment.h"
#include "support/temp_directory.h"

#include <dlxcomn/dlxcomn.h>
#include <dlxintl/intl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include <iconv.h>

inline const std::string HOME = DLXCOMN_SOURCE_DIR "/home";
// The same with the tables of character sets, which are made by the build.
inline const std::string WHOLE_HOME = DLXCOMN_BUILD_DIR "/home";

using Strings = std::vector<std::string>;

inline std::string text_of(const CS_CHAR *text, CS_INT length) { return {text, static_cast<std::size_t>(length)}; }

// The home is the one that ships, or another one, while the object lives.
class ShippedHome : public testing::Test {
protected:
    explicit ShippedHome(const std::string &path = HOME) : home_("DALVEX", path) {
        callbacks_.take_mutex_fn = comn_take_mutex;
        callbacks_.release_mutex_fn = comn_release_mutex;
        context_.ctxglobals = &globals_;
        context_.ctxthread = &callbacks_;
        EXPECT_EQ(comn_create_mutex(&globals_.cmg_mtx), CS_SUCCEED);
        EXPECT_EQ(comn_intl_load_globalid(&context_, &globals_.ctxoids), CS_SUCCEED);
    }
    ~ShippedHome() override {
        if (is_started_) {
            comn_free(globals_.cmg_utf8_ctypeptr);
            EXPECT_EQ(comn_lm_exit(&context_), CS_SUCCEED);
        }
        com_intl_loccache_drop(&context_);
        comn_intl_message_drop(&context_);
        comn_intl_dt_drop(&context_);
        com_intl_chardesc_drop(&context_);
        comn_intl_drop_globalid(&context_, &globals_.ctxoids);
        EXPECT_EQ(comn_delete_mutex(globals_.cmg_mtx), CS_SUCCEED);
    }

    CS_CONTEXT *context() { return &context_; }
    // What conversions from UTF-8 need.
    void start() {
        CS_CHAR file[1025] = "";
        ASSERT_EQ(comn_intl_init(&context_, file, sizeof file), CS_SUCCEED) << file;
        is_started_ = true;
    }
    CsCtxGlobals &globals() { return globals_; }

    // Null, and a failed test, for a name that is not there.
    CsOID *identifier(CS_INT id_class, std::string name) {
        CsOID *oid = nullptr;
        EXPECT_EQ(comn_globalid(&context_, CS_NAME_TO_OID, &oid, &id_class, CS_UNUSED, name.data(),
                                static_cast<CS_INT>(name.size()), nullptr, nullptr),
                  CS_SUCCEED)
            << name;
        return oid;
    }

    const CsLocCache *locale(std::string name) {
        CS_VOID *cache = nullptr;
        CS_CHAR file[1025] = "";
        EXPECT_EQ(comn_intl_load(&context_, name.data(), static_cast<CS_INT>(name.size()), &cache, file, sizeof file),
                  CS_SUCCEED)
            << name << ", last file " << file;
        return static_cast<const CsLocCache *>(cache);
    }

    CHAR_ATTRIB *charset(std::string name) {
        CsLocCache cache = {};
        cache.charname = name.data();
        cache.charnamelen = static_cast<CS_INT>(name.size());
        CS_CHAR file[1025] = "";
        EXPECT_EQ(comn__intl_load_charset(&context_, identifier(CS_OID_CHARSET, name), &cache, file, sizeof file),
                  CS_SUCCEED)
            << file;
        return cache.locchardesc != nullptr ? cache.locchardesc->char_attrib : nullptr;
    }

    // The order of a set.
    const CsSortDesc *order(std::string set, std::string name) {
        CsLocCache cache = {};
        cache.charname = set.data();
        cache.charnamelen = static_cast<CS_INT>(set.size());
        cache.sortname = name.data();
        cache.sortnamelen = static_cast<CS_INT>(name.size());
        CS_CHAR file[1025] = "";
        EXPECT_EQ(comn__intl_load_charset(&context_, identifier(CS_OID_CHARSET, set), &cache, file, sizeof file),
                  CS_SUCCEED)
            << file;
        EXPECT_EQ(comn__intl_load_sortorder(&context_, identifier(CS_OID_COLLATE, name), &cache, file, sizeof file),
                  CS_SUCCEED)
            << file;
        return cache.locsortorder;
    }

private:
    const support::Variable home_;
    CsCtxGlobals globals_ = {};
    CS_THREAD callbacks_ = {};
    CS_CONTEXT context_ = {};
    bool is_started_ = false;
};

// Sets that have files: those that convert.
inline std::vector<CSID_CSNAME> shipped_sets() {
    std::vector<CSID_CSNAME> sets;
    std::ranges::copy_if(csid_name, std::back_inserter(sets),
                         [](const CSID_CSNAME &set) { return set.unilib_cid != UNICONV_NONE; });
    return sets;
}

inline std::string name_of(const CSID_CSNAME &set) { return reinterpret_cast<const char *>(set.csname); }

// The text in another set by the C library, whose names of sets these are. Empty where a character is not in it.
inline std::string recoded(const char *to, const char *from, std::string text) {
    constexpr std::size_t WIDEST = 4; // bytes that become of one
    const iconv_t handle = iconv_open(to, from);
    std::string bytes(WIDEST * text.size() + WIDEST, '\0');
    char *out = bytes.data();
    std::size_t room = bytes.size();
    char *in = text.data();
    std::size_t left = text.size();
    const bool is_whole = iconv(handle, &in, &left, &out, &room) == 0;
    iconv_close(handle);
    bytes.resize(is_whole ? bytes.size() - room : 0);
    return bytes;
}

// An entry of a localization file: its section, key and values.
struct FileEntry {
    std::string section;
    std::string key;
    Strings values;
};

inline std::vector<FileEntry> entries_of(const std::string &path) {
    std::vector<FileEntry> entries;
    INTL_LOCFILE file;
    EXPECT_EQ(intl_open(path.c_str(), &file), INTL_OK) << path;
    int status = 0;
    while (const char *section = intl_nextsection(&file, &status)) {
        const std::string name = section;
        while (const char *key = intl_nextentry(&file, &status)) {
            entries.push_back({name, key, {}});
            while (const char *value = intl_nextvalue(&file, &status))
                entries.back().values.emplace_back(value);
        }
    }
    EXPECT_GE(status, 0) << path << ", line " << file.linenum;
    EXPECT_EQ(intl_close(&file), INTL_OK);
    return entries;
}

#endif
