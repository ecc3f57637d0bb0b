// What tests of identifiers share: a home with objectid.dat, and a context whose globals hold the table.
#ifndef TESTS_OID_OID_FIXTURE_H
#define TESTS_OID_OID_FIXTURE_H

#include "support/temp_home.h"

#include <dlxcomn/dlxcomn.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Strings = std::vector<std::string>;

inline CS_CHAR *chars(std::string &text) { return text.data(); }
inline CS_INT length_of(const std::string &text) { return static_cast<CS_INT>(text.size()); }
inline std::string text_of(const CS_CHAR *text, CS_INT len) { return {text, static_cast<std::size_t>(len)}; }

inline std::string ber_text(const CsOID &oid) {
    return {reinterpret_cast<const char *>(oid.oidber), static_cast<std::size_t>(oid.oidberlen)};
}

// The local names of an identifier, whose count has to be theirs.
inline Strings names_of(const CsOID &oid) {
    Strings names;
    for (const CS_STRING_LIST *name = oid.oidlnames; name != nullptr; name = name->next)
        names.push_back(text_of(name->string, name->len));
    EXPECT_EQ(oid.oidnumlnames, static_cast<CS_INT>(names.size()));
    return names;
}

// The identifiers of a class, as the file writes them.
inline Strings dotted_of(const CsOID *oid) {
    Strings texts;
    for (; oid != nullptr; oid = oid->oidnext)
        texts.push_back(text_of(oid->oidstring, oid->oidnamelen));
    return texts;
}

// An identifier that is in no table.
class LooseOid {
public:
    explicit LooseOid(std::string ber) : ber_(std::move(ber)) {
        record_.oidber = reinterpret_cast<CS_BYTE *>(ber_.data());
        record_.oidberlen = length_of(ber_);
    }
    LooseOid(const LooseOid &) = delete;
    LooseOid &operator=(const LooseOid &) = delete;
    CsOID *get() { return &record_; }

private:
    std::string ber_;
    CsOID record_ = {};
};

class OidFixture : public testing::Test {
protected:
    OidFixture() { context_.ctxglobals = &globals_; }
    ~OidFixture() override { comn_intl_drop_globalid(&context_, &globals_.ctxoids); }

    CS_RETCODE load(const std::string &content) {
        home_.write("config/objectid.dat", content);
        return comn_intl_load_globalid(&context_, &globals_.ctxoids);
    }
    CS_OID_TABLE &table() { return *static_cast<CS_OID_TABLE *>(globals_.ctxoids); }
    // The identifier of a dotted text in a class.
    CsOID *oid_of(CS_INT id_class, const std::string &dotted) {
        for (CsOID *oid = table().ot_oid[id_class]; oid != nullptr; oid = oid->oidnext)
            if (text_of(oid->oidstring, oid->oidnamelen) == dotted)
                return oid;
        return nullptr;
    }

    support::TempHome home_;
    CsCtxGlobals globals_ = {};
    CS_CONTEXT context_ = {};
};

#endif
