// Loading objectid.dat, and the encoding of identifiers against one that works on the meaning of the bytes.
#include "oid_fixture.h"
#include "support/failing_allocator.h"
#include "support/naive_ber.h"
#include "support/null_calls.h"

#include <dlxintl/intl.h>

#include <iterator>
#include <optional>
#include <random>

namespace {

using support::FailingAllocator;
using support::ReturningAssertions;
using namespace std::string_literals;

// ---- Encoding -------------------------------------------------------------------------------------------------

void release(CsOID *oid) {
    comn_free(oid->oidstring);
    comn_free(oid->oidber);
    comn_free(oid);
}

// The encoding of a dotted text, or none where it has none.
std::optional<std::string> encoded(std::string dotted) {
    CsOID *oid = nullptr;
    const CS_RETCODE status = comn__new_oid(nullptr, chars(dotted), length_of(dotted), &oid);
    if (status != CS_SUCCEED) {
        EXPECT_EQ(status, CS_FAIL);
        EXPECT_EQ(oid, nullptr);
        return std::nullopt;
    }
    EXPECT_EQ(text_of(oid->oidstring, oid->oidnamelen), dotted);
    EXPECT_EQ(oid->oidlnames, nullptr);
    EXPECT_EQ(oid->oidnumlnames, 0);
    EXPECT_EQ(oid->oidnext, nullptr);
    std::string ber = ber_text(*oid);
    const std::string behind(reinterpret_cast<char *>(oid->oidber) + oid->oidberlen,
                             static_cast<std::size_t>(CS_OID_BERSIZE - oid->oidberlen));
    EXPECT_EQ(behind, std::string(behind.size(), '\0')) << "zeros to the end of the room";
    release(oid);
    return ber;
}

std::string repeated(const std::string &text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

TEST(OidEncoding, OfOneAndTwoIsThreeBytes) { EXPECT_EQ(encoded("1.2"), "\x06\x01\x2A"); }

TEST(OidEncoding, ArcOf128TakesTwoBytes) { EXPECT_EQ(encoded("1.2.128"), "\x06\x03\x2A\x81\x00"s); }

TEST(OidEncoding, ArcsGrowByAByteEvery7Bits) {
    EXPECT_EQ(encoded("1.2.0"), "\x06\x02\x2A\x00"s);
    EXPECT_EQ(encoded("1.2.1"), "\x06\x02\x2A\x01");
    EXPECT_EQ(encoded("1.2.127"), "\x06\x02\x2A\x7F");
    EXPECT_EQ(encoded("1.2.16383"), "\x06\x03\x2A\xFF\x7F");
    EXPECT_EQ(encoded("1.2.16384"), "\x06\x04\x2A\x81\x80\x00"s);
    EXPECT_EQ(encoded("1.2.2097151"), "\x06\x04\x2A\xFF\xFF\x7F");
    EXPECT_EQ(encoded("1.2.2097152"), "\x06\x05\x2A\x81\x80\x80\x00"s);
    EXPECT_EQ(encoded("1.2.268435455"), "\x06\x05\x2A\xFF\xFF\xFF\x7F");
    EXPECT_EQ(encoded("1.2.268435456"), "\x06\x06\x2A\x81\x80\x80\x80\x00"s);
    EXPECT_EQ(encoded("1.2.4294967295"), "\x06\x06\x2A\x8F\xFF\xFF\xFF\x7F");
}

TEST(OidEncoding, ArcsAreHeldIn32Bits) {
    EXPECT_EQ(encoded("1.2.4294967296"), encoded("1.2.0"));
    EXPECT_EQ(encoded("1.2.4294967424"), encoded("1.2.128"));
    EXPECT_EQ(encoded("1.2.18446744073709551615"), encoded("1.2.4294967295"));
    EXPECT_EQ(encoded("1.2.18446744073709551616"), encoded("1.2.4294967295")) << "past 64 bits it is the largest";
    EXPECT_EQ(encoded("1.2.-1"), encoded("1.2.4294967295"));
}

TEST(OidEncoding, OddityFirstTwoArcsShareAByteAndWrap) {
    EXPECT_EQ(encoded("6.15"), "\x06\x01\xFF");
    EXPECT_EQ(encoded("6.16"), "\x06\x01\x00"s);
    EXPECT_EQ(encoded("2.999.3"), "\x06\x02\x37\x03");
    EXPECT_EQ(encoded("107374183.0"), "\x06\x01\x18");
}

TEST(OidEncoding, FewerThanTwoArcsFail) {
    for (const char *dotted : {"", "1", "1.", ".1", ".", "...", "..1..", "1234567890"})
        EXPECT_EQ(encoded(dotted), std::nullopt) << dotted;
}

TEST(OidEncoding, OddityDotsInARowCountAsOne) {
    for (const char *dotted : {".1.2.3", "1..2.3", "1.2.3.", "...1...2...3..."})
        EXPECT_EQ(encoded(dotted), encoded("1.2.3")) << dotted;
}

TEST(OidEncoding, OddityArcIsTheNumberThatATextBeginsWith) {
    EXPECT_EQ(encoded("utf.eight"), "\x06\x01\x00"s);
    EXPECT_EQ(encoded("1x. \t+2.3-4"), encoded("1.2.3"));
    EXPECT_EQ(encoded("0x10.010.0b1"), encoded("0.10.0"));
}

TEST(OidEncoding, NulEndsTheText) {
    EXPECT_EQ(encoded("1.2\0.3"s), encoded("1.2"));
    EXPECT_EQ(encoded("1.\0002.3"s), std::nullopt);
}

TEST(OidEncoding, TextBehindTheLengthIsNotLookedAt) {
    std::string dotted = "1.2.345";
    CsOID *oid = nullptr;
    ASSERT_EQ(comn__new_oid(nullptr, chars(dotted), 5, &oid), CS_SUCCEED);
    EXPECT_EQ(ber_text(*oid), "\x06\x02\x2A\x03");
    EXPECT_EQ(text_of(oid->oidstring, oid->oidnamelen), "1.2.3");
    release(oid);
}

TEST(OidEncoding, LongFormOfTheLengthBeginsAt125Bytes) {
    const std::string content_124 = "\x2A" + repeated("\x07", 123);
    EXPECT_EQ(encoded("1.2" + repeated(".7", 123)), "\x06\x7C" + content_124);
    EXPECT_EQ(encoded("1.2" + repeated(".7", 124)), "\x06\x81\x7D" + content_124 + "\x07");
    EXPECT_EQ(encoded("1.2" + repeated(".7", 127)), "\x06\x81\x80" + content_124 + repeated("\x07", 4));
}

TEST(OidEncoding, LongestIs255Bytes) {
    const std::string longest = "1.2" + repeated(".7", 251);
    EXPECT_EQ(encoded(longest), "\x06\x81\xFC\x2A" + repeated("\x07", 251));
    EXPECT_EQ(encoded(longest)->size(), 255u);
    EXPECT_EQ(encoded(longest + ".0"), std::nullopt);
    EXPECT_EQ(encoded(longest + ".7"), std::nullopt);
}

TEST(OidEncoding, ArcOfSeveralBytesThatPassesTheLimitFails) {
    static constexpr const char *ARCS[] = {"127", "128", "16384", "2097152", "268435456"};
    for (int held = 246; held <= 252; ++held) {
        const std::string front = "1.2" + repeated(".0", held - 1);
        for (int bytes = 1; bytes <= 5; ++bytes)
            EXPECT_EQ(encoded(front + "." + ARCS[bytes - 1]).has_value(), held + bytes <= 252) << held << " " << bytes;
    }
}

TEST(OidEncoding, AgreesWithTheMeaningOfTheBytes) {
    std::mt19937_64 random(63001);
    for (int round = 0; round < 40000; ++round) {
        std::vector<std::uint32_t> arcs(random() % 4 == 0 ? random() % 260 : random() % 12);
        const auto widest = random() % 33;
        for (std::uint32_t &arc : arcs)
            arc = static_cast<std::uint32_t>(random() & ((std::uint64_t{1} << widest) - 1));
        std::string dotted;
        for (const std::uint32_t arc : arcs)
            dotted.append(dotted.empty() ? "" : ".").append(std::to_string(arc));
        ASSERT_EQ(encoded(dotted), support::naive::ber_of(arcs)) << dotted;
    }
}

TEST(OidEncoding, AgreesNearBothLimitsOfTheLength) {
    std::mt19937_64 random(63002);
    int long_forms = 0, failures = 0;
    for (int round = 0; round < 40000; ++round) {
        const std::size_t wanted = (round % 2 == 0 ? 125 : 253) - 6 + random() % 9; // bytes of content
        std::vector<std::uint32_t> arcs = {1, 2};
        for (std::size_t held = 1; held < wanted;) {
            const auto bytes = 1 + random() % 5;
            const std::uint64_t arc = std::uint64_t{1} << (7 * (bytes - 1));
            arcs.push_back(static_cast<std::uint32_t>(arc | (random() & (arc - 1))));
            held += bytes;
        }
        std::string dotted = "1.2";
        for (std::size_t i = 2; i < arcs.size(); ++i)
            dotted += "." + std::to_string(arcs[i]);
        const std::optional<std::string> got = encoded(dotted);
        ASSERT_EQ(got, support::naive::ber_of(arcs)) << dotted;
        failures += !got;
        long_forms += got && (*got)[1] == '\x81';
    }
    EXPECT_GT(long_forms, 10000);
    EXPECT_GT(failures, 2000);
}

TEST(OidEncoding, AgreesOnAnyText) {
    static constexpr char BYTES[] = "0123456789....  -+x\t\0";
    std::mt19937_64 random(63003);
    for (int round = 0; round < 40000; ++round) {
        std::string dotted(random() % 40, '\0');
        for (char &c : dotted)
            c = BYTES[random() % (sizeof BYTES - 1)];
        ASSERT_EQ(encoded(dotted), support::naive::ber_of(dotted)) << testing::PrintToString(dotted);
    }
}

TEST(OidEncoding, FailureLeavesTheIdentifierAsItIs) {
    CS_BYTE ber[CS_OID_BERSIZE] = {6, 1, 42};
    std::string dotted = "1";
    CsOID oid = {};
    oid.oidstring = chars(dotted);
    oid.oidnamelen = 1;
    oid.oidber = ber;
    oid.oidberlen = 3;
    EXPECT_EQ(comn__encode_oid(nullptr, &oid), CS_FAIL);
    EXPECT_EQ(oid.oidber, ber);
    EXPECT_EQ(oid.oidberlen, 3);
}

TEST(OidEncoding, WithoutMemoryLeavesNothing) {
    std::string dotted = "1.2.3";
    for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING})
        for (int n = 1; n <= 4; ++n) {
            CsOID *oid = reinterpret_cast<CsOID *>(&dotted);
            CS_RETCODE status;
            int held;
            {
                const FailingAllocator failing(n, span);
                status = comn__new_oid(nullptr, chars(dotted), 5, &oid);
                held = failing.held();
            }
            EXPECT_EQ(status, CS_MEM_ERROR) << n;
            EXPECT_EQ(oid, nullptr) << n;
            EXPECT_EQ(held, 0) << n;
        }
}

// ---- The table ------------------------------------------------------------------------------------------------

class OidTable : public OidFixture {
protected:
    // A new identifier of the C library's memory with names.
    CsOID *make(std::string dotted, const Strings &names) {
        CsOID *oid = nullptr;
        EXPECT_EQ(comn__new_oid(&context_, chars(dotted), length_of(dotted), &oid), CS_SUCCEED);
        CS_STRING_LIST **end = &oid->oidlnames;
        for (const std::string &text : names) {
            *end = static_cast<CS_STRING_LIST *>(comn_calloc(1, sizeof(CS_STRING_LIST)));
            (*end)->string = static_cast<CS_CHAR *>(comn_malloc(text.size() + 1));
            std::memcpy((*end)->string, text.data(), text.size());
            (*end)->len = length_of(text);
            end = &(*end)->next;
            ++oid->oidnumlnames;
        }
        return oid;
    }
};

TEST_F(OidTable, NewcomersGoToTheTailOfTheirClass) {
    ASSERT_EQ(load(""), CS_SUCCEED);
    for (const char *dotted : {"1.2.3", "1.2.1", "1.2.2"})
        EXPECT_EQ(comn__add_oid(&context_, &table(), CS_OID_SECMECH, make(dotted, {})), CS_SUCCEED);
    EXPECT_EQ(comn__add_oid(&context_, &table(), CS_OID_CHARSET, make("1.2.9", {})), CS_SUCCEED);
    EXPECT_EQ(dotted_of(table().ot_oid[CS_OID_SECMECH]), (Strings{"1.2.3", "1.2.1", "1.2.2"}));
    EXPECT_EQ(dotted_of(table().ot_oid[CS_OID_CHARSET]), Strings{"1.2.9"});
}

TEST_F(OidTable, KnownIdentifierAbsorbsTheNewcomer) {
    ASSERT_EQ(load(""), CS_SUCCEED);
    CsOID *first = make("1.2.3", {"a", "b"});
    CsOID *second = make("1.2.4", {});
    ASSERT_EQ(comn__add_oid(&context_, &table(), 5, first), CS_SUCCEED);
    ASSERT_EQ(comn__add_oid(&context_, &table(), 5, second), CS_SUCCEED);
    ASSERT_EQ(comn__add_oid(&context_, &table(), 5, make("1.2.4", {"x"})), CS_SUCCEED);
    ASSERT_EQ(comn__add_oid(&context_, &table(), 5, make("1.2.3", {"c", "a"})), CS_SUCCEED);
    ASSERT_EQ(comn__add_oid(&context_, &table(), 5, make("1.2.3", {})), CS_SUCCEED);
    EXPECT_EQ(table().ot_oid[5], first);
    EXPECT_EQ(first->oidnext, second);
    EXPECT_EQ(second->oidnext, nullptr);
    EXPECT_EQ(names_of(*first), (Strings{"a", "b", "c", "a"}));
    EXPECT_EQ(names_of(*second), Strings{"x"});
}

TEST_F(OidTable, IdentifiersAreKnownByTheirEncodingNotByTheirText) {
    ASSERT_EQ(load(""), CS_SUCCEED);
    ASSERT_EQ(comn__add_oid(&context_, &table(), 0, make("1.2.3", {"a"})), CS_SUCCEED);
    ASSERT_EQ(comn__add_oid(&context_, &table(), 0, make("1..2.03", {"b"})), CS_SUCCEED);
    EXPECT_EQ(dotted_of(table().ot_oid[0]), Strings{"1.2.3"});
    EXPECT_EQ(names_of(*table().ot_oid[0]), (Strings{"a", "b"}));
}

TEST_F(OidTable, EncodingThatBeginsLikeAnotherIsAnother) {
    ASSERT_EQ(load(""), CS_SUCCEED);
    ASSERT_EQ(comn__add_oid(&context_, &table(), 0, make("1.2.3.4", {})), CS_SUCCEED);
    ASSERT_EQ(comn__add_oid(&context_, &table(), 0, make("1.2.3", {})), CS_SUCCEED);
    ASSERT_EQ(comn__add_oid(&context_, &table(), 0, make("1.2.3.4.5", {})), CS_SUCCEED);
    EXPECT_EQ(dotted_of(table().ot_oid[0]), (Strings{"1.2.3.4", "1.2.3", "1.2.3.4.5"}));
}

TEST_F(OidTable, NamesAreMovedBehindThoseThatAreThere) {
    struct Case {
        Strings to, from, joined;
    };
    for (const Case &c : {Case{{}, {}, {}}, Case{{"a"}, {}, {"a"}}, Case{{}, {"b", "c"}, {"b", "c"}},
                          Case{{"a", "b"}, {"c"}, {"a", "b", "c"}}}) {
        CsOID *to = make("1.2", c.to);
        CsOID *from = make("1.3", c.from);
        EXPECT_EQ(comn__cat_localnames(&context_, to, from), CS_SUCCEED);
        EXPECT_EQ(names_of(*to), c.joined);
        EXPECT_EQ(names_of(*from), Strings{});
        CS_OID_TABLE *gone = static_cast<CS_OID_TABLE *>(comn_calloc(1, sizeof(CS_OID_TABLE)));
        gone->ot_oid[3] = to;
        to->oidnext = from;
        CS_VOID *slot = gone;
        EXPECT_EQ(comn_intl_drop_globalid(&context_, &slot), CS_SUCCEED);
    }
}

// ---- The file -------------------------------------------------------------------------------------------------

using OidFile = OidFixture;

TEST_F(OidFile, EveryClassHasItsSection) {
    std::string content;
    for (CS_INT id_class = 0; id_class < CS_OID_CLASSES; ++id_class) {
        CS_CHAR *name = nullptr;
        ASSERT_EQ(comn_id_to_string(nullptr, Com__classmap, id_class, &name), CS_SUCCEED);
        content += "[" + std::string(name) + "]\n1.2." + std::to_string(id_class) + " = " + name + "_1, other\n";
    }
    ASSERT_EQ(load(content), CS_SUCCEED);
    for (CS_INT id_class = 0; id_class < CS_OID_CLASSES; ++id_class) {
        ASSERT_EQ(dotted_of(table().ot_oid[id_class]), Strings{"1.2." + std::to_string(id_class)});
        EXPECT_EQ(names_of(*table().ot_oid[id_class]),
                  (Strings{std::string(Com__classmap[id_class].string) + "_1", "other"}));
    }
}

TEST_F(OidFile, IdentifiersAndNamesKeepTheirOrder) {
    ASSERT_EQ(load("; names of sets\n[ charset ]\n 1.2.9 = iso_1 , iso88591, \"iso 1\"\n\n1.2.8=utf8\n1.2.7 =\n"),
              CS_SUCCEED);
    EXPECT_EQ(dotted_of(table().ot_oid[0]), (Strings{"1.2.9", "1.2.8", "1.2.7"}));
    EXPECT_EQ(names_of(*oid_of(0, "1.2.9")), (Strings{"iso_1", "iso88591", "iso 1"}));
    EXPECT_EQ(names_of(*oid_of(0, "1.2.8")), Strings{"utf8"});
    EXPECT_EQ(names_of(*oid_of(0, "1.2.7")), Strings{});
}

TEST_F(OidFile, NamesAreAnyBytes) {
    ASSERT_EQ(load("[charset]\n1.2 = ,a\\x00b, \\x80\\,\\xff,\"\\x41\",\n"), CS_SUCCEED);
    EXPECT_EQ(names_of(*table().ot_oid[0]), (Strings{"", "a\0b"s, "\x80,\xFF", "\\x41", ""}));
}

TEST_F(OidFile, IdentifierListedTwiceInAClassIsOneRecordWithAllItsNames) {
    ASSERT_EQ(load("[charset]\n1.2.3 = a, b\n1.2.4 = x\n1.2.3 = c\n[natlang]\n[charset]\n1.2.3 = d\n"), CS_SUCCEED);
    EXPECT_EQ(dotted_of(table().ot_oid[0]), (Strings{"1.2.3", "1.2.4"}));
    EXPECT_EQ(names_of(*table().ot_oid[0]), (Strings{"a", "b", "c", "d"}));
}

TEST_F(OidFile, IdentifierListedInTwoClassesIsTwoRecords) {
    ASSERT_EQ(load("[natlang]\n1.2.3 = english\n[charset]\n1.2.3 = utf8\n"), CS_SUCCEED);
    EXPECT_EQ(names_of(*oid_of(CS_OID_NATLANG, "1.2.3")), Strings{"english"});
    EXPECT_EQ(names_of(*oid_of(CS_OID_CHARSET, "1.2.3")), Strings{"utf8"});
}

TEST_F(OidFile, SectionsThatAreNoClassAreSkippedUnread) {
    ASSERT_EQ(load("1.1 = above\n[Charset]\n1.2 = a\n[charsets]\nno equals here\n1 = b\n[copyright]\nx = \"open\n"
                   "[charset]\n1.3 = c\n[char]\n1.4 = d\n"),
              CS_SUCCEED);
    EXPECT_EQ(dotted_of(table().ot_oid[0]), Strings{"1.3"});
    for (CS_INT id_class = 1; id_class < CS_OID_CLASSES; ++id_class)
        EXPECT_EQ(table().ot_oid[id_class], nullptr);
}

TEST_F(OidFile, EmptyFileIsAnEmptyTable) {
    for (const char *content : {"", "\n\n", "; nothing\n", "[charset]\n"}) {
        ASSERT_EQ(load(content), CS_SUCCEED);
        ASSERT_NE(globals_.ctxoids, nullptr);
        for (const CsOID *first : table().ot_oid)
            EXPECT_EQ(first, nullptr);
        EXPECT_EQ(comn_intl_drop_globalid(&context_, &globals_.ctxoids), CS_SUCCEED);
    }
}

TEST_F(OidFile, LiesBelowConfigOfTheHomeWhateverTheSubdirectory) {
    home_.write("sub/config/objectid.dat", "[charset]\n1.2 = below\n");
    home_.ncs().put("sub");
    ASSERT_EQ(load("[charset]\n1.2 = plain\n"), CS_SUCCEED);
    EXPECT_EQ(names_of(*table().ot_oid[0]), Strings{"plain"});
}

TEST_F(OidFile, IsReadAgainByEachLoad) {
    ASSERT_EQ(load("[charset]\n1.2 = old\n"), CS_SUCCEED);
    EXPECT_EQ(comn_intl_drop_globalid(&context_, &globals_.ctxoids), CS_SUCCEED);
    ASSERT_EQ(load("[charset]\n1.2 = new\n"), CS_SUCCEED);
    EXPECT_EQ(names_of(*table().ot_oid[0]), Strings{"new"});
}

TEST_F(OidFile, SlotNeedNotBeThatOfTheGlobals) {
    home_.write("config/objectid.dat", "[charset]\n1.2 = a\n");
    CS_VOID *slot = this; // not looked at
    ASSERT_EQ(comn_intl_load_globalid(&context_, &slot), CS_SUCCEED);
    EXPECT_EQ(dotted_of(static_cast<CS_OID_TABLE *>(slot)->ot_oid[0]), Strings{"1.2"});
    EXPECT_EQ(globals_.ctxoids, nullptr);
    EXPECT_EQ(comn_intl_drop_globalid(nullptr, &slot), CS_SUCCEED);
    EXPECT_EQ(slot, nullptr);
}

TEST_F(OidFile, DropAcceptsAnEmptySlot) {
    EXPECT_EQ(comn_intl_drop_globalid(&context_, &globals_.ctxoids), CS_SUCCEED);
    EXPECT_EQ(globals_.ctxoids, nullptr);
}

TEST_F(OidFile, LoadAndDropLeaveNothing) {
    home_.write("config/objectid.dat", "[charset]\n1.2.3 = a, b\n1.2.3 = c\n1.2 =\n[secmech]\n1.2.3 = d, e\n");
    int loaded, dropped;
    CS_RETCODE status;
    {
        const FailingAllocator counting;
        status = comn_intl_load_globalid(&context_, &globals_.ctxoids);
        loaded = counting.held();
        comn_intl_drop_globalid(&context_, &globals_.ctxoids);
        dropped = counting.held();
    }
    EXPECT_EQ(status, CS_SUCCEED);
    EXPECT_EQ(loaded, 1 + 3 * 3 + 5 * 2) << "the table, three identifiers, five names";
    EXPECT_EQ(dropped, 0);
}

// ---- What can be wrong ------------------------------------------------------------------------------------------

class OidFileFailure : public OidFixture {
protected:
    // Loads the file that lies there; nothing may be left of it.
    CS_RETCODE load_again() {
        globals_.ctxoids = this;
        context_.ctxintlerr = 0;
        CS_RETCODE status;
        int held;
        {
            const FailingAllocator counting;
            status = comn_intl_load_globalid(&context_, &globals_.ctxoids);
            held = counting.held();
        }
        EXPECT_EQ(globals_.ctxoids, nullptr);
        EXPECT_EQ(held, 0);
        return status;
    }
    CS_RETCODE load_wrong(const std::string &content) {
        home_.write("config/objectid.dat", content);
        return load_again();
    }
};

TEST_F(OidFileFailure, MissingFile) {
    EXPECT_EQ(load_again(), CS_ENOLOCFILE);
    EXPECT_EQ(context_.ctxintlerr, INTL_ECANTOPEN);
}

TEST_F(OidFileFailure, NoHome) {
    home_.home().put("/nowhere/at/all");
    EXPECT_EQ(load_again(), CS_ENOLOCFILE);
    home_.home().put("/" + std::string(1100, 'x'));
    ReturningAssertions returning;
    EXPECT_EQ(load_again(), CS_FAIL);
    EXPECT_EQ(returning.count(), 1) << "a home that no path has room for";
}

TEST_F(OidFileFailure, DirectoryInItsPlace) {
    home_.make_directory("config/objectid.dat");
    EXPECT_EQ(load_again(), CS_EINTL);
    EXPECT_EQ(context_.ctxintlerr, INTL_EREAD);
}

TEST_F(OidFileFailure, MalformedFileInEveryWay) {
    const std::string good = "[charset]\n1.2.3 = a, b\n";
    struct Case {
        std::string wrong;
        int code;
    };
    for (const Case &c : {
             Case{"[natlang\n", INTL_EBADSECTION},
             Case{"[]\n", INTL_EBADSECTION},
             Case{"[natlang] x\n", INTL_EBADSECTION},
             Case{"1.2.4 a\n", INTL_ENOEQUALS},
             Case{"1.2.4 = \"a\n", INTL_EUNTERMINATED},
             Case{"1.2.4 = a, \"b\" c\n", INTL_EUNTERMINATED},
             Case{"1.2.4 = a, \\x4\n", INTL_EBADESCAPE},
             Case{"1.2.4 = a\\\n", INTL_EBADESCAPE},
             Case{"1.2.4 = " + std::string(1016, 'x') + "\n", INTL_ELINETOOLONG},
             Case{std::string(1024, ';') + "\n", INTL_ELINETOOLONG},
         }) {
        EXPECT_EQ(load_wrong(good + c.wrong + good), CS_EINTL) << c.wrong;
        EXPECT_EQ(context_.ctxintlerr, c.code) << c.wrong;
    }
    EXPECT_EQ(load(good + good), CS_SUCCEED) << "the rest is right";
}

TEST_F(OidFileFailure, IdentifierThatHasNoEncodingEndsTheLoad) {
    const std::string good = "[charset]\n1.2.3 = a, b\n";
    for (const std::string &wrong : {"1 = a\n"s, "= a\n"s, "1. = a\n"s, "... = a, b\n"s, "utf8 = 1.2.3\n"s,
                                     "1.2" + repeated(".1", 252) + " = a\n"}) {
        EXPECT_EQ(load_wrong(good + wrong + good), CS_FAIL) << wrong;
        EXPECT_EQ(context_.ctxintlerr, 0);
    }
}

TEST_F(OidFileFailure, OutOfMemoryAtEveryAllocation) {
    home_.write("config/objectid.dat", "[charset]\n1.2.3 = a, b\n1.2.4 =\n1.2.3 = c\n[natlang]\n1.2.3 = d\n");
    constexpr int TABLE = 1, READER = 2;
    int asked;
    {
        const FailingAllocator counting;
        EXPECT_EQ(comn_intl_load_globalid(&context_, &globals_.ctxoids), CS_SUCCEED);
        asked = counting.asked();
    }
    comn_intl_drop_globalid(&context_, &globals_.ctxoids);
    EXPECT_GE(asked, TABLE + READER + 4 * 4 + 4 * 2 - 1);
    for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING})
        for (int n = 1; n <= asked; ++n) {
            globals_.ctxoids = this;
            context_.ctxintlerr = 0;
            CS_RETCODE status;
            int held;
            {
                const FailingAllocator failing(n, span);
                status = comn_intl_load_globalid(&context_, &globals_.ctxoids);
                held = failing.held();
            }
            EXPECT_EQ(status, n == READER ? CS_ENOLOCFILE : CS_MEM_ERROR) << n;
            EXPECT_EQ(context_.ctxintlerr, n == READER ? INTL_ENOMEMORY : 0) << n;
            EXPECT_EQ(globals_.ctxoids, nullptr) << n;
            EXPECT_EQ(held, 0) << n;
        }
}

// ---- The steps, one by one --------------------------------------------------------------------------------------

class OidSteps : public OidFixture {
protected:
    ~OidSteps() override { intl_close(&file_); }
    void open(const std::string &content) {
        intl_close(&file_);
        home_.write("config/objectid.dat", content);
        ASSERT_EQ(intl_open(home_.path_of("config/objectid.dat").c_str(), &file_), INTL_OK);
        int status = 0;
        ASSERT_NE(intl_nextsection(&file_, &status), nullptr);
    }
    CS_OID_TABLE *new_table() {
        comn_intl_drop_globalid(&context_, &globals_.ctxoids);
        globals_.ctxoids = comn_calloc(1, sizeof(CS_OID_TABLE));
        return &table();
    }
    INTL_LOCFILE file_ = {};
};

TEST_F(OidSteps, SectionIsReadIntoTheClassThatTheCallerNames) {
    open("[anything]\n1.2 = a\n1.3 = b, c\n[charset]\n1.4 = d\n");
    ASSERT_EQ(comn__read_oidsection(&context_, &file_, CS_OID_FLOAT8, new_table()), CS_SUCCEED);
    EXPECT_EQ(dotted_of(table().ot_oid[CS_OID_FLOAT8]), (Strings{"1.2", "1.3"}));
    EXPECT_EQ(table().ot_oid[CS_OID_CHARSET], nullptr);
    int status = -5;
    EXPECT_STREQ(intl_nextsection(&file_, &status), "charset");
}

TEST_F(OidSteps, SectionKeepsWhatItHadReadBeforeAFailure) {
    open("[charset]\n1.2 = a\n1.3 = b, \"c\n");
    EXPECT_EQ(comn__read_oidsection(&context_, &file_, 0, new_table()), CS_EINTL);
    EXPECT_EQ(context_.ctxintlerr, INTL_EUNTERMINATED);
    EXPECT_EQ(dotted_of(table().ot_oid[0]), Strings{"1.2"});
}

TEST_F(OidSteps, FileIsReadIntoATableThatIsThere) {
    home_.write("config/objectid.dat", "[charset]\n1.2 = a\n");
    CS_OID_TABLE *table = new_table();
    ASSERT_EQ(comn__read_oidfile(&context_, table), CS_SUCCEED);
    ASSERT_EQ(comn__read_oidfile(&context_, table), CS_SUCCEED);
    EXPECT_EQ(names_of(*table->ot_oid[0]), (Strings{"a", "a"}));
    home_.remove("config/objectid.dat");
    EXPECT_EQ(comn__read_oidfile(&context_, table), CS_ENOLOCFILE);
}

TEST_F(OidSteps, LocalNamesGoBehindThoseThatAreThere) {
    open("[charset]\n1.2 = a, b\n1.3 = c, \\x\n");
    std::string dotted = "1.2";
    CsOID *oid = nullptr;
    ASSERT_EQ(comn__new_oid(&context_, chars(dotted), 3, &oid), CS_SUCCEED);
    new_table()->ot_oid[0] = oid;
    int status = 0;
    ASSERT_NE(intl_nextentry(&file_, &status), nullptr);
    EXPECT_EQ(comn__read_localnames(&context_, &file_, oid), CS_SUCCEED);
    EXPECT_EQ(comn__read_localnames(&context_, &file_, oid), CS_SUCCEED) << "none is left";
    EXPECT_EQ(names_of(*oid), (Strings{"a", "b"}));
    ASSERT_NE(intl_nextentry(&file_, &status), nullptr);
    EXPECT_EQ(comn__read_localnames(&context_, &file_, oid), CS_EINTL);
    EXPECT_EQ(context_.ctxintlerr, INTL_EBADESCAPE);
    EXPECT_EQ(names_of(*oid), (Strings{"a", "b", "c"}));
}

// ---- Broken contracts -------------------------------------------------------------------------------------------

class LoadOperands {
public:
    explicit LoadOperands(support::NullCalls &calls) {
        NULL_CALLS(calls, comn_intl_load_globalid, CS_FAIL, &context_, &slot_);
        calls.add(
            "comn_intl_drop_globalid", [this] { return comn_intl_drop_globalid(&context_, nullptr); }, CS_FAIL);
        NULL_CALLS(calls, comn__read_oidfile, CS_FAIL, &context_, &table_);
        calls.add(
            "comn__read_oidsection", [this] { return comn__read_oidsection(nullptr, &file_, 0, &table_); }, CS_FAIL);
        calls.add(
            "comn__read_oidsection", [this] { return comn__read_oidsection(&context_, nullptr, 0, &table_); }, CS_FAIL);
        calls.add(
            "comn__read_oidsection", [this] { return comn__read_oidsection(&context_, &file_, 0, nullptr); }, CS_FAIL);
        NULL_CALLS(calls, comn__read_localnames, CS_FAIL, &context_, &file_, &oid_);
        calls.add(
            "comn__new_oid", [this] { return comn__new_oid(&context_, nullptr, 3, &oidp_); }, CS_FAIL);
        calls.add(
            "comn__new_oid", [this] { return comn__new_oid(&context_, dotted_, 3, nullptr); }, CS_FAIL);
        calls.add(
            "comn__encode_oid", [this] { return comn__encode_oid(&context_, nullptr); }, CS_FAIL);
        calls.add(
            "comn__encode_oid", [this] { return comn__encode_oid(&context_, &oid_); }, CS_FAIL);
        calls.add(
            "comn__add_oid", [this] { return comn__add_oid(&context_, nullptr, 0, &oid_); }, CS_FAIL);
        calls.add(
            "comn__add_oid", [this] { return comn__add_oid(&context_, &table_, 0, nullptr); }, CS_FAIL);
        calls.add(
            "comn__cat_localnames", [this] { return comn__cat_localnames(&context_, nullptr, &oid_); }, CS_FAIL);
        calls.add(
            "comn__cat_localnames", [this] { return comn__cat_localnames(&context_, &oid_, nullptr); }, CS_FAIL);
    }

    CS_CONTEXT context_ = {};
    CS_VOID *slot_ = nullptr;
    CS_OID_TABLE table_ = {};
    INTL_LOCFILE file_ = {};
    CsOID oid_ = {}; // with no text
    CsOID *oidp_ = nullptr;
    CS_CHAR dotted_[4] = "1.2";
};

// The drop is a source of its own.
std::string source_of_drop_or(const char *stem) { return std::string("(comdrgid|") + stem + ")"; }

TEST(OidLoadDeathTest, MissingPointersAreReported) {
    support::NullCalls calls;
    const LoadOperands operands(calls);
    calls.expect_reports(source_of_drop_or("comldgid"));
}

TEST(OidLoadContracts, MissingPointersFailWhereAssertionsReturn) {
    support::NullCalls calls;
    LoadOperands operands(calls);
    calls.expect_answers([&] { operands.slot_ = &operands; },
                         [&] {
                             EXPECT_EQ(operands.slot_, &operands);
                             EXPECT_EQ(operands.oidp_, nullptr);
                             EXPECT_EQ(operands.oid_.oidber, nullptr);
                             EXPECT_EQ(operands.table_.ot_oid[0], nullptr);
                         });
}

TEST(OidLoadDeathTest, ClassesAndLengthsAreChecked) {
    CS_OID_TABLE table = {};
    CsOID oid = {}, *oidp = nullptr;
    CS_CHAR dotted[] = "1.2";
    oid.oidstring = dotted;
    oid.oidnamelen = -1;
    EXPECT_BOMB(comn__add_oid(nullptr, &table, -1, &oid), "comldgid");
    EXPECT_BOMB(comn__add_oid(nullptr, &table, 12, &oid), "comldgid");
    EXPECT_BOMB(comn__add_oid(nullptr, &table, CS_UNUSED, &oid), "comldgid");
    EXPECT_BOMB(comn__new_oid(nullptr, dotted, CS_NULLTERM, &oidp), "comldgid");
    EXPECT_BOMB(comn__encode_oid(nullptr, &oid), "comldgid");
}

TEST(OidLoadContracts, WrongClassesAndLengthsFailWhereAssertionsReturn) {
    CS_OID_TABLE table = {};
    CsOID oid = {};
    CsOID *oidp = &oid;
    CS_CHAR dotted[] = "1.2";
    oid.oidstring = dotted;
    oid.oidnamelen = -1;
    ReturningAssertions returning;
    for (const CS_INT id_class : {-1, 12, CS_UNUSED, 0x7FFFFFFF})
        EXPECT_EQ(comn__add_oid(nullptr, &table, id_class, &oid), CS_FAIL);
    EXPECT_EQ(comn__new_oid(nullptr, dotted, CS_NULLTERM, &oidp), CS_FAIL);
    EXPECT_EQ(oidp, &oid);
    EXPECT_EQ(comn__encode_oid(nullptr, &oid), CS_FAIL);
    EXPECT_EQ(returning.count(), 6);
    for (const CsOID *first : table.ot_oid)
        EXPECT_EQ(first, nullptr);
}

TEST_F(OidSteps, WrongClassOfASectionLeavesNothingWhereAssertionsReturn) {
    open("[charset]\n1.2 = a\n");
    CS_OID_TABLE *table = new_table();
    ReturningAssertions returning;
    CS_RETCODE status;
    int held;
    {
        const FailingAllocator counting;
        status = comn__read_oidsection(&context_, &file_, 12, table);
        held = counting.held();
    }
    EXPECT_EQ(status, CS_FAIL);
    EXPECT_EQ(returning.count(), 1);
    EXPECT_EQ(held, 0);
}

} // namespace
