// Lookups between identifiers, their encodings and their local names, over tables of the tests' own.
#include "oid_fixture.h"
#include "support/naive_ber.h"
#include "support/null_calls.h"

#include <algorithm>
#include <random>

namespace {

using support::ReturningAssertions;
using namespace std::string_literals;

class OidLookup : public OidFixture {
protected:
    OidLookup() {
        EXPECT_EQ(load("[charset]\n"
                       "1.2.3 = utf8, utf-8\n"
                       "1.2.4 =\n"
                       "1.2.5 = \"iso 1\", utf8, shared\n"
                       "1.2.6 = ends\\x00, ,ends\n"
                       "[natlang]\n"
                       "1.2.7 = english, shared\n"
                       "1.2.3 = both\n"
                       "[secmech]\n"
                       "1.2.8 = last\n"),
                  CS_SUCCEED);
    }

    // The dotted text of the identifier that a name stands for, or "fail"; a null class searches all.
    std::string found(std::string name, CS_INT len, CS_INT *id_class) {
        CsOID *oid = &nothing_;
        const CS_RETCODE status =
            comn_globalid(&context_, CS_NAME_TO_OID, &oid, id_class, CS_UNUSED, chars(name), len, nullptr, nullptr);
        if (status == CS_SUCCEED)
            return text_of(oid->oidstring, oid->oidnamelen);
        EXPECT_EQ(status, CS_FAIL);
        EXPECT_EQ(oid, &nothing_);
        return "fail";
    }
    std::string found(const std::string &name, CS_INT id_class) {
        CS_INT chosen = id_class;
        const std::string result = found(name, length_of(name), &chosen);
        EXPECT_EQ(chosen, id_class) << "the class is not written";
        return result;
    }
    std::string found(const std::string &name) { return found(name, length_of(name), nullptr); }

    CsOID nothing_ = {};
};

// ---- Name to identifier ---------------------------------------------------------------------------------------

TEST_F(OidLookup, NameIsFoundInItsClass) {
    EXPECT_EQ(found("utf8", CS_OID_CHARSET), "1.2.3");
    EXPECT_EQ(found("utf-8", CS_OID_CHARSET), "1.2.3");
    EXPECT_EQ(found("iso 1", CS_OID_CHARSET), "1.2.5");
    EXPECT_EQ(found("english", CS_OID_NATLANG), "1.2.7");
    EXPECT_EQ(found("last", CS_OID_SECMECH), "1.2.8");
}

TEST_F(OidLookup, NameOfAnotherClassIsNotFound) {
    EXPECT_EQ(found("english", CS_OID_CHARSET), "fail");
    EXPECT_EQ(found("utf8", CS_OID_NATLANG), "fail");
    for (CS_INT empty = CS_OID_INTEGER2; empty < CS_OID_SECMECH; ++empty)
        EXPECT_EQ(found("utf8", empty), "fail");
}

TEST_F(OidLookup, WithoutAClassAllAreSearchedAndTheFirstWins) {
    EXPECT_EQ(found("shared"), "1.2.5");
    EXPECT_EQ(found("shared", CS_UNUSED), "1.2.5");
    EXPECT_EQ(found("shared", CS_OID_NATLANG), "1.2.7");
    EXPECT_EQ(found("last"), "1.2.8");
    EXPECT_EQ(found("last", CS_UNUSED), "1.2.8");
    EXPECT_EQ(found("absent", CS_UNUSED), "fail");
}

TEST_F(OidLookup, FirstIdentifierOfAClassWins) { EXPECT_EQ(found("utf8", CS_OID_CHARSET), "1.2.3"); }

TEST_F(OidLookup, TerminatedNameIsFound) {
    EXPECT_EQ(found("utf8", CS_NULLTERM, nullptr), "1.2.3");
    EXPECT_EQ(found("utf8\0behind"s, CS_NULLTERM, nullptr), "1.2.3");
    EXPECT_EQ(found("utf80", CS_NULLTERM, nullptr), "fail");
}

TEST_F(OidLookup, NameIsFoundWithItsNulCounted) {
    EXPECT_EQ(found("utf8\0"s), "1.2.3");
    EXPECT_EQ(found("utf8\0\0"s), "fail");
    EXPECT_EQ(found("utf8x"), "fail");
    EXPECT_EQ(found("utf\0"s), "fail");
}

TEST_F(OidLookup, NulInANameIsAByteOfIt) {
    EXPECT_EQ(found("ends\0"s), "1.2.6");
    EXPECT_EQ(found("ends\0\0"s), "1.2.6");
    EXPECT_EQ(found("ends"), "1.2.6");
}

TEST_F(OidLookup, OddityEmptyNameIsFoundByItsNulOnly) {
    EXPECT_EQ(found("\0"s), "1.2.6");
    EXPECT_EQ(found(""), "fail");
}

TEST_F(OidLookup, NameIsComparedByLengthAndBytes) {
    for (const char *other : {"u", "utf", "utf8 ", "UTF8", "utf9", "tf8"})
        EXPECT_EQ(found(other), "fail") << other;
}

TEST_F(OidLookup, NameWithoutLengthFails) {
    for (const CS_INT len : {0, -1, -8, -10, CS_UNUSED})
        EXPECT_EQ(found("utf8", len, nullptr), "fail") << len;
    EXPECT_EQ(found("", CS_NULLTERM, nullptr), "fail");
}

TEST_F(OidLookup, NameToOidCanBeCalledByItself) {
    std::string name = "english";
    CsOID *oid = nullptr;
    CS_INT id_class = CS_OID_NATLANG;
    EXPECT_EQ(comn__nametooid(&context_, &oid, &id_class, chars(name), 7), CS_SUCCEED);
    EXPECT_EQ(oid, oid_of(CS_OID_NATLANG, "1.2.7"));
    id_class = CS_OID_COLLATE;
    EXPECT_EQ(comn__nametooid(&context_, &oid, &id_class, chars(name), 7), CS_FAIL);
}

TEST_F(OidLookup, LocalNameOfOneIdentifier) {
    std::string name = "utf-8\0"s;
    CsOID *oid = oid_of(0, "1.2.3");
    EXPECT_EQ(comn__find_lclname(nullptr, oid, chars(name), 5), CS_TRUE);
    EXPECT_EQ(comn__find_lclname(nullptr, oid, chars(name), 6), CS_TRUE);
    EXPECT_EQ(comn__find_lclname(nullptr, oid, chars(name), 4), CS_FALSE);
    EXPECT_EQ(comn__find_lclname(nullptr, oid_of(0, "1.2.4"), chars(name), 5), CS_FALSE) << "it has no names";
}

// ---- Identifier to name ---------------------------------------------------------------------------------------

struct Named {
    CS_RETCODE status = -77;
    CS_INT id_class = -77, count = -77, length = -77;
    std::string room;
};

class OidName : public OidLookup {
protected:
    // Name `number` into `size` bytes of a longer room.
    Named name_of(CsOID *oid, CS_INT number, CS_INT size) {
        Named result;
        result.room.assign(12, '~');
        result.status = comn_globalid(&context_, CS_OID_TO_NAME, &oid, &result.id_class, number, result.room.data(),
                                      size, &result.count, &result.length);
        return result;
    }
};

TEST_F(OidName, EveryNameByItsNumber) {
    const Strings names = {"iso 1", "utf8", "shared"};
    for (CS_INT number = 1; number <= 3; ++number) {
        const Named got = name_of(oid_of(0, "1.2.5"), number, 12);
        const std::string &name = names[static_cast<std::size_t>(number - 1)];
        EXPECT_EQ(got.status, CS_SUCCEED);
        EXPECT_EQ(got.id_class, CS_OID_CHARSET);
        EXPECT_EQ(got.count, 3);
        EXPECT_EQ(got.length, length_of(name));
        EXPECT_EQ(got.room, name + std::string(12 - name.size(), '~')) << "no NUL is written";
    }
}

TEST_F(OidName, NumberAboveTheCountFails) {
    for (const CS_INT number : {3, 4, 0x7FFFFFFF}) {
        const Named got = name_of(oid_of(0, "1.2.3"), number, 12);
        EXPECT_EQ(got.status, CS_FAIL);
        EXPECT_EQ(got.id_class, CS_OID_CHARSET);
        EXPECT_EQ(got.count, 2);
        EXPECT_EQ(got.length, -77);
        EXPECT_EQ(got.room, std::string(12, '~'));
    }
    EXPECT_EQ(name_of(oid_of(0, "1.2.4"), 1, 12).status, CS_FAIL) << "it has none";
    EXPECT_EQ(name_of(oid_of(0, "1.2.4"), 1, 12).count, 0);
}

TEST_F(OidName, NameThatDoesNotFitFailsAndTellsItsLength) {
    for (CS_INT size = -3; size < 8; ++size) {
        const Named got = name_of(oid_of(0, "1.2.5"), 1, size);
        EXPECT_EQ(got.status, size >= 5 ? CS_SUCCEED : CS_FAIL) << size;
        EXPECT_EQ(got.length, 5);
        EXPECT_EQ(got.room, size >= 5 ? "iso 1~~~~~~~" : "~~~~~~~~~~~~") << size;
    }
}

TEST_F(OidName, EmptyNameNeedsNoRoom) {
    const Named got = name_of(oid_of(0, "1.2.6"), 2, 0);
    EXPECT_EQ(got.status, CS_SUCCEED);
    EXPECT_EQ(got.length, 0);
    EXPECT_EQ(got.room, std::string(12, '~'));
}

TEST_F(OidName, CountAndLengthMayBeMissing) {
    CsOID *oid = oid_of(0, "1.2.3");
    CS_CHAR name[4];
    CS_INT id_class = -77;
    EXPECT_EQ(comn_globalid(&context_, CS_OID_TO_NAME, &oid, &id_class, 1, name, 4, nullptr, nullptr), CS_SUCCEED);
    EXPECT_EQ(text_of(name, 4), "utf8");
    EXPECT_EQ(id_class, CS_OID_CHARSET);
}

TEST_F(OidName, WithoutRoomOnlyClassAndCountAreTold) {
    CsOID *oid = oid_of(CS_OID_NATLANG, "1.2.7");
    CS_INT id_class = -77, count = -77;
    EXPECT_EQ(comn_globalid(&context_, CS_OID_TO_NAME, &oid, &id_class, CS_UNUSED, nullptr, CS_UNUSED, &count, nullptr),
              CS_SUCCEED);
    EXPECT_EQ(id_class, CS_OID_NATLANG);
    EXPECT_EQ(count, 2);
    id_class = -77;
    EXPECT_EQ(
        comn_globalid(&context_, CS_OID_TO_NAME, &oid, &id_class, CS_UNUSED, nullptr, CS_UNUSED, nullptr, nullptr),
        CS_SUCCEED);
    EXPECT_EQ(id_class, CS_OID_NATLANG);
}

TEST_F(OidName, IdentifierOfTwoClassesHasTheLowerOne) {
    const Named got = name_of(oid_of(CS_OID_NATLANG, "1.2.3"), 1, 12);
    EXPECT_EQ(got.status, CS_SUCCEED);
    EXPECT_EQ(got.id_class, CS_OID_CHARSET);
    EXPECT_EQ(got.count, 2);
    EXPECT_EQ(got.room, "utf8~~~~~~~~") << "and the names it has there";
}

TEST_F(OidName, IdentifierNeedNotComeFromTheTable) {
    LooseOid loose("\x06\x02\x2A\x07");
    const Named got = name_of(loose.get(), 1, 12);
    EXPECT_EQ(got.status, CS_SUCCEED);
    EXPECT_EQ(got.id_class, CS_OID_NATLANG);
    EXPECT_EQ(got.room, "english~~~~~");
}

TEST_F(OidName, UnknownIdentifierFails) {
    for (const std::string &ber : {"\x06\x02\x2A\x09"s, "\x06\x02\x2A"s, "\x06\x02\x2A\x03\x00"s, ""s}) {
        LooseOid loose(ber);
        const Named got = name_of(loose.get(), 1, 12);
        EXPECT_EQ(got.status, CS_FAIL);
        EXPECT_EQ(got.id_class, -77);
        EXPECT_EQ(got.count, -77);
        EXPECT_EQ(got.length, -77);
        EXPECT_EQ(got.room, std::string(12, '~'));
    }
}

TEST_F(OidName, OidToNameCanBeCalledByItself) {
    CS_CHAR name[8] = "~~~~~~~";
    CS_INT id_class = -77, count = -77, length = -77;
    EXPECT_EQ(comn__oidtoname(&context_, oid_of(0, "1.2.3"), &id_class, 2, name, 8, &count, &length), CS_SUCCEED);
    EXPECT_STREQ(name, "utf-8~~");
    EXPECT_EQ(length, 5);
}

// ---- Encoding to identifier -----------------------------------------------------------------------------------

class OidByEncoding : public OidLookup {
protected:
    // The dotted text, "null" for success without one, or "fail".
    std::string found_by(std::string ber, CS_INT id_class) {
        CsOID *oid = &nothing_;
        const CS_RETCODE status =
            comn_gid_to_oid(&context_, id_class, reinterpret_cast<CS_BYTE *>(ber.data()), length_of(ber), &oid);
        if (status == CS_SUCCEED)
            return oid != nullptr ? text_of(oid->oidstring, oid->oidnamelen) : "null";
        EXPECT_EQ(status, CS_FAIL);
        EXPECT_EQ(oid, nullptr);
        return "fail";
    }
};

TEST_F(OidByEncoding, IsFoundInItsClassOrInAll) {
    EXPECT_EQ(found_by("\x06\x02\x2A\x07", CS_OID_NATLANG), "1.2.7");
    EXPECT_EQ(found_by("\x06\x02\x2A\x07", CS_UNUSED), "1.2.7");
    EXPECT_EQ(found_by("\x06\x02\x2A\x07", CS_OID_CHARSET), "fail");
    EXPECT_EQ(found_by("\x06\x02\x2A\x08", CS_OID_SECMECH), "1.2.8");
    EXPECT_EQ(found_by("\x06\x02\x2A\x09", CS_UNUSED), "fail");
}

TEST_F(OidByEncoding, OfTwoClassesTheLowerOneWins) {
    CS_BYTE ber[] = {6, 2, 42, 3};
    CsOID *oid = nullptr;
    EXPECT_EQ(comn_gid_to_oid(&context_, CS_UNUSED, ber, 4, &oid), CS_SUCCEED);
    EXPECT_EQ(oid, oid_of(CS_OID_CHARSET, "1.2.3"));
    EXPECT_EQ(comn_gid_to_oid(&context_, CS_OID_NATLANG, ber, 4, &oid), CS_SUCCEED);
    EXPECT_EQ(oid, oid_of(CS_OID_NATLANG, "1.2.3"));
}

TEST_F(OidByEncoding, LengthCounts) {
    EXPECT_EQ(found_by("\x06\x02\x2A", CS_UNUSED), "fail");
    EXPECT_EQ(found_by("\x06\x02\x2A\x03\x00"s, CS_UNUSED), "fail");
    CS_BYTE ber[] = {6, 2, 42, 3};
    CsOID *oid = &nothing_;
    EXPECT_EQ(comn_gid_to_oid(&context_, CS_UNUSED, ber, -4, &oid), CS_FAIL);
    EXPECT_EQ(oid, nullptr);
}

TEST_F(OidByEncoding, NoneIsNullAndSuccess) {
    CS_BYTE ber[] = {6, 2, 42, 3};
    for (const CS_INT id_class : {CS_UNUSED, 0, 11}) {
        CsOID *oid = &nothing_;
        EXPECT_EQ(comn_gid_to_oid(&context_, id_class, nullptr, 4, &oid), CS_SUCCEED);
        EXPECT_EQ(oid, nullptr);
        oid = &nothing_;
        EXPECT_EQ(comn_gid_to_oid(&context_, id_class, ber, 0, &oid), CS_SUCCEED);
        EXPECT_EQ(oid, nullptr);
    }
}

// ---- Comparison -----------------------------------------------------------------------------------------------

TEST(OidComparison, IsByEncodingWhateverTheAddress) {
    LooseOid a("\x06\x01\x2A"), same("\x06\x01\x2A"), other("\x06\x01\x2B"), longer("\x06\x01\x2A\x00"s);
    EXPECT_EQ(comn_oid_cmp(nullptr, a.get(), a.get()), CS_TRUE);
    EXPECT_EQ(comn_oid_cmp(nullptr, a.get(), same.get()), CS_TRUE);
    EXPECT_EQ(comn_oid_cmp(nullptr, a.get(), other.get()), CS_FALSE);
    EXPECT_EQ(comn_oid_cmp(nullptr, a.get(), longer.get()), CS_FALSE);
    EXPECT_EQ(comn_oid_cmp(nullptr, longer.get(), a.get()), CS_FALSE);
}

TEST(OidComparison, NullIsTheSameAsAnIdentifierWithoutEncoding) {
    LooseOid some("\x06\x01\x2A"), no_length(""), no_bytes("\x06\x01\x2A");
    no_bytes.get()->oidber = nullptr;
    EXPECT_EQ(comn_oid_cmp(nullptr, nullptr, nullptr), CS_TRUE);
    for (LooseOid *empty : {&no_length, &no_bytes}) {
        EXPECT_EQ(comn_oid_cmp(nullptr, nullptr, empty->get()), CS_TRUE);
        EXPECT_EQ(comn_oid_cmp(nullptr, empty->get(), nullptr), CS_TRUE);
    }
    EXPECT_EQ(comn_oid_cmp(nullptr, nullptr, some.get()), CS_FALSE);
    EXPECT_EQ(comn_oid_cmp(nullptr, some.get(), nullptr), CS_FALSE);
    EXPECT_EQ(comn_oid_cmp(nullptr, no_length.get(), some.get()), CS_FALSE);
}

// ---- Against lists kept by hand -------------------------------------------------------------------------------

struct Entry {
    CS_INT id_class;
    std::string dotted, ber;
    Strings names;
};

// What the table has to be: entries merged by encoding within a class.
void add_to(std::vector<Entry> &model, Entry entry) {
    for (Entry &known : model)
        if (known.id_class == entry.id_class && known.ber == entry.ber) {
            known.names.insert(known.names.end(), entry.names.begin(), entry.names.end());
            return;
        }
    model.push_back(std::move(entry));
}

TEST_F(OidLookup, RandomTablesAnswerAsTheirEntriesDo) {
    std::mt19937_64 random(63010);
    for (int round = 0; round < 60; ++round) {
        comn_intl_drop_globalid(&context_, &globals_.ctxoids);
        std::vector<Entry> model;
        std::string content;
        for (int i = 0; i < 60; ++i) {
            Entry entry;
            entry.id_class = static_cast<CS_INT>(random() % 12);
            entry.dotted = "1.2." + std::to_string(random() % 20);
            entry.ber = *support::naive::ber_of(entry.dotted);
            for (auto names = random() % 4; names > 0; --names)
                entry.names.push_back(std::string(1 + random() % 2, static_cast<char>('a' + random() % 10)));
            content += "[" + std::string(Com__classmap[entry.id_class].string) + "]\n" + entry.dotted + " = ";
            for (const std::string &name : entry.names)
                content += (&name != &entry.names.front() ? "," : "") + name;
            content += "\n";
            add_to(model, entry);
        }
        ASSERT_EQ(load(content), CS_SUCCEED);
        std::stable_sort(model.begin(), model.end(),
                         [](const Entry &a, const Entry &b) { return a.id_class < b.id_class; });

        std::size_t count = 0;
        for (CS_INT id_class = 0; id_class < CS_OID_CLASSES; ++id_class)
            for (CsOID *oid = table().ot_oid[id_class]; oid != nullptr; oid = oid->oidnext, ++count) {
                ASSERT_LT(count, model.size());
                ASSERT_EQ(model[count].id_class, id_class);
                ASSERT_EQ(model[count].ber, ber_text(*oid));
                ASSERT_EQ(model[count].names, names_of(*oid));
            }
        ASSERT_EQ(count, model.size());

        for (int question = 0; question < 500; ++question) {
            const CS_INT chosen = random() % 13 == 12 ? CS_UNUSED : static_cast<CS_INT>(random() % 12);
            const auto is_in_class = [&](const Entry &entry) {
                return chosen == CS_UNUSED || entry.id_class == chosen;
            };
            const std::string name(1 + random() % 2, static_cast<char>('a' + random() % 11));
            const auto by_name = std::find_if(model.begin(), model.end(), [&](const Entry &entry) {
                return is_in_class(entry) &&
                       std::find(entry.names.begin(), entry.names.end(), name) != entry.names.end();
            });
            ASSERT_EQ(found(random() % 2 == 0 ? name : name + '\0', chosen),
                      by_name != model.end() ? by_name->dotted : "fail");

            LooseOid loose(*support::naive::ber_of("1.2." + std::to_string(random() % 21)));
            const auto by_ber = std::find_if(model.begin(), model.end(), [&](const Entry &entry) {
                return is_in_class(entry) && entry.ber == ber_text(*loose.get());
            });
            CsOID *oid = &nothing_;
            const CS_RETCODE status =
                comn_gid_to_oid(&context_, chosen, loose.get()->oidber, loose.get()->oidberlen, &oid);
            ASSERT_EQ(status, by_ber != model.end() ? CS_SUCCEED : CS_FAIL);
            ASSERT_EQ(oid != nullptr ? text_of(oid->oidstring, oid->oidnamelen) : "fail",
                      by_ber != model.end() ? by_ber->dotted : "fail");
        }
    }
}

// ---- Broken contracts -----------------------------------------------------------------------------------------

// A context whose globals or slot is missing is a null pointer too.
class Contexts {
public:
    Contexts() {
        no_table_.ctxglobals = &empty_;
        whole_.ctxglobals = &full_;
        full_.ctxoids = &table_;
    }
    std::vector<CS_CONTEXT *> broken() { return {nullptr, &no_globals_, &no_table_}; }
    CS_CONTEXT *whole() { return &whole_; }

private:
    CS_OID_TABLE table_ = {};
    CsCtxGlobals empty_ = {}, full_ = {};
    CS_CONTEXT no_globals_ = {}, no_table_ = {}, whole_ = {};
};

class LookupOperands {
public:
    explicit LookupOperands(support::NullCalls &calls) {
        CS_CONTEXT *const whole = contexts_.whole();
        for (CS_CONTEXT *context : contexts_.broken()) {
            calls.add(
                "name to identifier", [=, this] { return comn__nametooid(context, &oidp_, nullptr, name_, 1); },
                CS_FAIL);
            calls.add(
                "identifier to name",
                [=, this] { return comn__oidtoname(context, &oid_, &class_, 1, name_, 1, nullptr, nullptr); }, CS_FAIL);
            calls.add(
                "through the front",
                [=, this] {
                    return comn_globalid(context, CS_NAME_TO_OID, &oidp_, nullptr, CS_UNUSED, name_, 1, nullptr,
                                         nullptr);
                },
                CS_FAIL);
            calls.add(
                "encoding to identifier", [=, this] { return comn_gid_to_oid(context, 0, ber_, 1, &oidp_); }, CS_FAIL);
            calls.add(
                "no encoding to identifier", [=, this] { return comn_gid_to_oid(context, 0, nullptr, 0, &oidp_); },
                CS_FAIL);
        }
        calls.add(
            "no slot", [=, this] { return comn__nametooid(whole, nullptr, nullptr, name_, 1); }, CS_FAIL);
        calls.add(
            "no name", [=, this] { return comn__nametooid(whole, &oidp_, nullptr, nullptr, 0); }, CS_FAIL);
        calls.add(
            "no identifier",
            [=, this] { return comn__oidtoname(whole, nullptr, &class_, 1, name_, 1, nullptr, nullptr); }, CS_FAIL);
        calls.add(
            "no class", [=, this] { return comn__oidtoname(whole, &oid_, nullptr, 1, name_, 1, nullptr, nullptr); },
            CS_FAIL);
        calls.add(
            "no result", [=, this] { return comn_gid_to_oid(whole, 0, ber_, 1, nullptr); }, CS_FAIL);
        for (const int type : {int{CS_NAME_TO_OID}, int{CS_OID_TO_NAME}, 3})
            calls.add(
                "no slot in front",
                [=, this] {
                    return comn_globalid(whole, type, nullptr, &class_, CS_UNUSED, name_, 1, nullptr, nullptr);
                },
                CS_FAIL);
        calls.add(
            "an empty slot",
            [=, this] {
                CsOID *none = nullptr;
                return comn_globalid(whole, CS_OID_TO_NAME, &none, &class_, 1, name_, 1, nullptr, nullptr);
            },
            CS_FAIL);
        calls.add(
            "name of no identifier", [this] { return comn__find_lclname(nullptr, nullptr, name_, 1); }, CS_FALSE);
        calls.add(
            "no name of an identifier", [this] { return comn__find_lclname(nullptr, &oid_, nullptr, 1); }, CS_FALSE);
    }
    bool are_untouched() const { return oidp_ == &oid_ && class_ == -77 && name_[0] == 'x'; }

private:
    Contexts contexts_;
    CsOID oid_ = {};
    CsOID *oidp_ = &oid_;
    CS_INT class_ = -77;
    CS_CHAR name_[2] = "x";
    CS_BYTE ber_[1] = {6};
};

TEST(OidLookupDeathTest, MissingPointersAreReported) {
    support::NullCalls calls;
    const LookupOperands operands(calls);
    calls.expect_reports("comgid");
}

TEST(OidLookupContracts, MissingPointersFailWhereAssertionsReturn) {
    support::NullCalls calls;
    const LookupOperands operands(calls);
    calls.expect_answers([] {}, [&] { EXPECT_TRUE(operands.are_untouched()); });
}

// Calls that break a contract otherwise.
class WrongLookups {
public:
    static constexpr int COUNT = 19;

    CS_RETCODE make(int which) {
        CS_CONTEXT *const context = contexts_.whole();
        const auto name_to_oid = [&](CS_INT nameid, CS_INT *numnames, CS_INT *outlen) {
            return comn_globalid(context, CS_NAME_TO_OID, &oidp_, nullptr, nameid, name_, 1, numnames, outlen);
        };
        const auto oid_to_name = [&](CS_INT nameid, CS_CHAR *name, CS_INT len, CS_INT *outlen) {
            return comn_globalid(context, CS_OID_TO_NAME, &oidp_, &class_, nameid, name, len, nullptr, outlen);
        };
        const auto of_type = [&](CS_INT type) {
            return comn_globalid(context, type, &oidp_, &class_, CS_UNUSED, name_, 1, nullptr, nullptr);
        };
        const auto of_class = [&](CS_INT id_class) { return comn__nametooid(context, &oidp_, &id_class, name_, 1); };
        const auto by_encoding = [&](CS_INT id_class) {
            return comn_gid_to_oid(context, id_class, nullptr, 0, &oidp_);
        };
        switch (which) {
        case 0:
            return of_type(0);
        case 1:
            return of_type(3);
        case 2:
            return of_type(-1);
        case 3:
            return name_to_oid(1, nullptr, nullptr);
        case 4:
            return name_to_oid(CS_UNUSED, &number_, nullptr);
        case 5:
            return name_to_oid(CS_UNUSED, nullptr, &number_);
        case 6:
            return oid_to_name(0, name_, 1, nullptr);
        case 7:
            return oid_to_name(-1, name_, 1, nullptr);
        case 8:
            return oid_to_name(CS_UNUSED, name_, 1, nullptr);
        case 9:
            return oid_to_name(1, nullptr, CS_UNUSED, nullptr);
        case 10:
            return oid_to_name(CS_UNUSED, nullptr, 1, nullptr);
        case 11:
            return oid_to_name(CS_UNUSED, nullptr, CS_UNUSED, &number_);
        case 12:
            return of_class(-1);
        case 13:
            return of_class(12);
        case 14:
            return by_encoding(-1);
        case 15:
            return by_encoding(12);
        case 16:
            return comn__find_lclname(context, &oid_, name_, 0);
        case 17:
            return comn__find_lclname(context, &oid_, name_, CS_NULLTERM);
        default:
            return of_class(CS_NULLTERM);
        }
    }
    bool are_untouched() const { return oidp_ == &oid_ && class_ == -77 && number_ == -77 && name_[0] == 'x'; }

private:
    Contexts contexts_;
    CsOID oid_ = {};
    CsOID *oidp_ = &oid_;
    CS_INT class_ = -77, number_ = -77;
    CS_CHAR name_[2] = "x";
};

TEST(OidLookupDeathTest, WrongTypesClassesAndCountsAreReported) {
    WrongLookups lookups;
    for (int which = 0; which < WrongLookups::COUNT; ++which)
        EXPECT_BOMB(lookups.make(which), "comgid") << which;
}

TEST(OidLookupContracts, WrongTypesClassesAndCountsFailWhereAssertionsReturn) {
    for (int which = 0; which < WrongLookups::COUNT; ++which) {
        WrongLookups lookups;
        ReturningAssertions returning;
        EXPECT_EQ(lookups.make(which), CS_FAIL) << which;
        EXPECT_EQ(returning.count(), 1) << which;
        EXPECT_TRUE(lookups.are_untouched()) << which;
    }
}

} // namespace
