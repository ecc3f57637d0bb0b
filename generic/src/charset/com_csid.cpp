// The character sets that the library knows by name, with their numbers here and in the Unicode conversion library.

#include "diag/check.h"

#include <dlxcomn/charconv.h>

#include <cstring>

namespace dlx {
namespace {

// A literal as bytes, so that the table needs no cast that a constant cannot have.
template <std::size_t N>
struct Literal {
    CS_BYTE bytes[N];
    consteval Literal(const char (&text)[N]) {
        for (std::size_t i = 0; i < N; ++i)
            bytes[i] = static_cast<CS_BYTE>(text[i]);
    }
};

template <Literal NAME>
constexpr Literal NAME_BYTES = NAME;

template <Literal NAME>
constexpr CSID_CSNAME row(int csid, UNICONV_CID cid) {
    return {csid, const_cast<CS_BYTE *>(NAME_BYTES<NAME>.bytes), static_cast<int>(sizeof NAME.bytes - 1), cid};
}

} // namespace
} // namespace dlx

using namespace dlx;

// Searched from the first row on; the order is the callers' too.
constexpr CSID_CSNAME csid_name[CSID_NAMES] = {
    row<"ascii_8">(0, 0), row<"iso_1">(1, 1), row<"cp850">(2, 2), row<"cp437">(3, 3), row<"roman8">(4, 4),
    row<"mac">(5, 5), row<"decmcs">(6, -3), row<"ebcdic">(7, -3), row<"iso646">(8, 0), row<"cp860">(9, 860),
    row<"cp863">(10, 863), row<"ascii_7">(11, 0), row<"teletex">(12, -3), row<"cp1252">(13, 1252),
    row<"iso15">(14, 21), row<"cp861">(15, 861), row<"iso6937">(16, -3), row<"iso88592">(20, 12),
    row<"cp852">(21, 852), row<"cp1250">(22, 1250), row<"mac_ee">(23, 27), row<"mac_croat">(24, -3),
    row<"mac_ice">(25, -3), row<"mac_rom">(26, -3), row<"mac_ukr">(27, -3), row<"cp273">(29, 273),
    row<"cp1257">(30, 1257), row<"iso13">(31, 42), row<"cp280">(32, 280), row<"cp284">(33, 284),
    row<"cp285">(34, 285), row<"cp297">(35, 297), row<"cp277">(36, 277), row<"cp775">(37, 775), row<"cp870">(38, 870),
    row<"cp871">(39, -3), row<"iso88593">(40, 19), row<"iso88594">(41, 20), row<"iso10">(42, 18),
    row<"cp865">(43, 865), row<"cp1122">(44, -3), row<"cp278">(45, 278), row<"cp921">(46, 921), row<"cp922">(47, -3),
    row<"cp1123">(48, -3), row<"cp1124">(49, -3), row<"iso88595">(50, 13), row<"cp855">(51, 855),
    row<"cp866">(52, 866), row<"cp1251">(53, 1251), row<"cp880">(54, -3), row<"koi8">(55, 32), row<"mac_cyr">(56, 26),
    row<"cp1025">(57, -3), row<"cp1112">(58, -3), row<"mac_farsi">(59, -3), row<"iso88596">(60, 14),
    row<"arabic8">(61, -3), row<"cp1256">(62, 1256), row<"mac_arab">(63, -3), row<"ibm420">(64, -3),
    row<"ibm918">(65, -3), row<"cp864">(66, 864), row<"cp868">(67, -3), row<"cp1097">(68, -3), row<"cp1098">(69, -3),
    row<"iso88597">(70, 15), row<"greek8">(71, 30), row<"cp869">(72, 869), row<"cp1253">(73, 1253),
    row<"macgrk2">(74, -3), row<"macgreek">(75, 28), row<"cp737">(76, 737), row<"cp875">(77, 875),
    row<"iso88598">(80, 16), row<"cp1255">(81, 1255), row<"mac_hebr">(82, -3), row<"hebrew8">(83, -3),
    row<"cp856">(84, 856), row<"cp424">(85, 424), row<"cp862">(86, 862), row<"iso88599">(90, 17),
    row<"turkish8">(91, 31), row<"cp1254">(92, 1254), row<"cp857">(93, 857), row<"macturk">(94, 29),
    row<"cp1026">(95, 1026), row<"tis620">(100, 33), row<"cp874">(101, 874), row<"macthai">(102, 41),
    row<"cp838">(103, -3), row<"ibm874">(104, -3), row<"cp037">(110, 37), row<"cp500">(111, 500),
    row<"cp1047">(112, 1047), row<"cp1258">(120, 1258), row<"cp942">(125, -3), row<"cp290">(126, 290),
    row<"cp930">(128, 930), row<"cp930yen">(129, 3000), row<"cp1006">(130, 1006), row<"cp5026">(131, 5026),
    row<"cp5026yen">(132, 3002), row<"cp939">(133, 939), row<"cp939yen">(134, 3001), row<"cp5035">(136, 5035),
    row<"cp5035yen">(137, 3003), row<"cp954">(138, 954), row<"cp33722">(139, -3), row<"eucjis">(140, 49),
    row<"sjis">(141, 50), row<"deckanji">(142, 8), row<"jis">(143, -3), row<"cp932">(144, 932),
    row<"cp932ms">(145, 11), row<"eucksc">(150, 36), row<"kscpack">(151, -3), row<"cp934">(152, -3),
    row<"korea15">(153, -3), row<"cp949">(154, 949), row<"cp933">(155, 933), row<"euccns">(160, 9),
    row<"big5">(161, 34), row<"big5hk">(168, 47), row<"cp938">(162, -3), row<"roc15">(163, -3), row<"cns">(164, -3),
    row<"cp950">(165, 950), row<"cp964">(166, -3), row<"cp937">(167, 937), row<"eucgb">(170, 10),
    row<"cp936">(171, 936), row<"gb80">(172, -3), row<"gb18030">(173, 48), row<"cp935">(175, 935),
    row<"cp1381">(176, -3), row<"cp1383">(177, -3), row<"iso5426">(180, -3), row<"blecs">(181, -3),
    row<"alacs">(182, -3), row<"iso5427">(183, -3), row<"iso5428">(184, -3), row<"iso6438">(185, -3),
    row<"utf8">(190, -4), row<"ucs2">(191, -3), row<"utf16">(192, -1), row<"opoce">(193, -3), row<"ucs4">(194, -3),
    row<"mac_sym">(195, -3), row<"mac_ding">(196, -3), row<"cp1046">(199, -3), row<"iso14">(200, 43),
    row<"cp1140">(201, 1140), row<"cp1141">(202, 1141), row<"cp1142">(203, 1142), row<"cp1143">(204, 1143),
    row<"cp1144">(205, 1144), row<"cp1145">(206, 1145), row<"cp1146">(207, 1146), row<"cp1147">(208, 1147),
    row<"cp1148">(209, 1148), row<"cp1149">(210, 1149), row<"cp420">(211, 420), row<"cp858">(197, 858),
    row<"cp871v1">(213, 871), row<"cp874ibm">(214, 46), row<"cp923">(215, 923), row<"mac_euro">(216, 45),
    row<"rcsu">(217, -5), row<"roman9">(218, 44), row<"kz1048">(87, 54), row<"dlxchar">(255, -3),
};

namespace dlx {
namespace {

// The first row of each csid, as a search finds it.
struct RowOfCsid {
    static constexpr CS_BYTE NONE = CSID_NAMES;

    CS_BYTE row[UINT8_MAX + 1];

    consteval RowOfCsid() {
        for (CS_BYTE &each : row)
            each = NONE;
        for (CS_BYTE at = CSID_NAMES; at-- > 0;)
            row[csid_name[at].csid] = at;
    }
};

constexpr RowOfCsid ROW_OF_CSID;

} // namespace
} // namespace dlx

CS_RETCODE com_get_csid(CS_BYTE *name, UNICONV_CID *id) {
    COM_REQUIRE_PTR(name, CS_FAIL);
    COM_REQUIRE_PTR(id, CS_FAIL);
    const std::size_t length = std::strlen(reinterpret_cast<const char *>(name));
    for (const CSID_CSNAME &set : csid_name) {
        if (static_cast<std::size_t>(set.len) == length && std::memcmp(set.csname, name, length) == 0) {
            *id = set.unilib_cid;
            return CS_SUCCEED;
        }
    }
    return COM_TRACE(CS_FAIL);
}

CS_RETCODE comn__get_unilib_cid(CS_BYTE csid, UNICONV_CID *cid) {
    COM_REQUIRE_PTR(cid, CS_FAIL);
    const CS_BYTE row = ROW_OF_CSID.row[csid];
    if (row == RowOfCsid::NONE)
        return COM_TRACE(CS_FAIL);
    *cid = csid_name[row].unilib_cid;
    return CS_SUCCEED;
}
