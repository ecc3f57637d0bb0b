// The catalog of messages in a locale of a home.
#ifndef TESTS_HOME_CATALOG_H
#define TESTS_HOME_CATALOG_H

#include "home/shipped_home.h"

#include <cstring>
#include <map>

// Sets of the locales that ship, as the C library calls them.
inline const std::map<std::string, const char *> ICONV_NAMES = {
    {"iso_1", "ISO-8859-1"},    {"iso88592", "ISO-8859-2"}, {"iso88595", "ISO-8859-5"}, {"iso88597", "ISO-8859-7"},
    {"iso88599", "ISO-8859-9"}, {"koi8", "KOI8-R"},         {"tis620", "TIS-620"},      {"eucjis", "EUC-JP"},
    {"sjis", "SHIFT_JIS"},      {"eucgb", "EUC-CN"},        {"gb18030", "GB18030"},     {"big5", "BIG5"},
    {"eucksc", "EUC-KR"},       {"utf8", "UTF-8"}};

// A context with the catalog of a locale.
class Catalog : public ShippedHome {
protected:
    explicit Catalog(const std::string &path = WHOLE_HOME) : ShippedHome(path) {
        context()->ctxlocale = &locale_;
        context()->ctxerrfunc = keep;
        start();
    }
    ~Catalog() override { EXPECT_EQ(com_errdrop(context()), CS_SUCCEED); }

    // The C library's name of the set is needed for sets that do not ship.
    CS_RETCODE open(const std::string &name, const char *iconv_name = nullptr) {
        const CsLocCache *const cache = locale(name);
        if (cache == nullptr)
            return CS_FAIL;
        locale_.messageptr = const_cast<CsLocCache *>(cache);
        set_ = iconv_name != nullptr ? iconv_name : ICONV_NAMES.at(text_of(cache->charname, cache->charnamelen));
        return com_errinit(context());
    }

    // Empty where the catalog has none.
    std::string text(CS_INT tag, int number) {
        CS_ERRIDX idx = {tag, static_cast<CS_MSGNUM>(number)};
        CS_CHAR *found = nullptr;
        if (com_err_msg(context(), static_cast<CS_ERRHAN *>(context()->ctxcomerrhan), &idx, &found) != CS_SUCCEED)
            return "";
        return recoded("UTF-8", set_, found);
    }
    std::string sqlstate(CS_INT tag, int number) {
        CS_BYTE code[8];
        CS_INT length = 0;
        if (com_err_sqlstate(context(), static_cast<CS_ERRHAN *>(context()->ctxcomerrhan), number, tag, code,
                             sizeof code, &length) != CS_SUCCEED)
            return "";
        return {reinterpret_cast<const char *>(code), static_cast<std::size_t>(length)};
    }
    // In UTF-8.
    std::string raised(CS_MSGNUM number, CsErrParams *parameters) {
        told_ = {};
        EXPECT_EQ(com__error(context(), number, parameters), CS_SUCCEED);
        EXPECT_EQ(told_.msgnumber, number);
        EXPECT_EQ(told_.msgstringlen, static_cast<CS_INT>(std::strlen(told_.msgstring)));
        return recoded("UTF-8", set_, told_.msgstring);
    }

    // The last message, as the application got it.
    const CS_CLIENTMSG &told() const { return told_; }

private:
    // The record of a message is valid only during the call.
    static CS_RETCODE keep(CS_CONTEXT * /*context*/, CS_CLIENTMSG *message) {
        told_ = *message;
        return CS_SUCCEED;
    }

    static inline CS_CLIENTMSG told_;
    CS_LOCALE locale_ = {};
    const char *set_ = nullptr;
};

#endif
