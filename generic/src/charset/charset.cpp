// The built-in iso_1, the character set of a value, and character sets made from memory images.
#include "bytes/memory.h"
#include "charset/pages.h"
#include "diag/check.h"

#include <dlxcomn/locale.h>
#include <dlxintl/intl.h>

#include <cstring>
#include <initializer_list>

namespace {

// The codes 0x0E, 0x0F, 0x8E, 0x8F and 0xAD count as white space. Parsers skip them in front of values that
// applications hold, so they stay.
constexpr dlx::CodeRange TYPES[] = {
    {0x09, 0x0F, CS_CT_SPACE},
    {0x20, 0x20, CS_CT_SPACE},
    {0x21, 0x2F, CS_CT_PUNCT},
    {0x30, 0x39, CS_CT_DIGIT | CS_CT_XDIGIT},
    {0x3A, 0x40, CS_CT_PUNCT},
    {0x41, 0x46, CS_CT_UPPER | CS_CT_XDIGIT},
    {0x47, 0x5A, CS_CT_UPPER},
    {0x5B, 0x60, CS_CT_PUNCT},
    {0x61, 0x66, CS_CT_LOWER | CS_CT_XDIGIT},
    {0x67, 0x7A, CS_CT_LOWER},
    {0x7B, 0x7E, CS_CT_PUNCT},
    {0x8E, 0x8F, CS_CT_SPACE},
    {0xA0, 0xA0, CS_CT_SPACE},
    {0xA1, 0xAC, CS_CT_PUNCT},
    {0xAD, 0xAD, CS_CT_SPACE},
    {0xAE, 0xBF, CS_CT_PUNCT},
    {0xC0, 0xD6, CS_CT_UPPER},
    {0xD7, 0xD7, CS_CT_PUNCT},
    {0xD8, 0xDF, CS_CT_UPPER},
    {0xE0, 0xF6, CS_CT_LOWER},
    {0xF7, 0xF7, CS_CT_PUNCT},
    {0xF8, 0xFF, CS_CT_LOWER},
};

constexpr dlx::CodeRange LEXICAL_CLASSES[] = {
    {0x00, 0x20, CS_LEX_CONTROL},
    {0x21, 0x21, CS_LEX_PUNCT},
    {0x22, 0x22, CS_LEX_QUOTE},
    {0x23, 0x23, CS_LEX_IDENT},
    {0x24, 0x24, CS_LEX_CURRENCY},
    {0x25, 0x26, CS_LEX_PUNCT},
    {0x27, 0x27, CS_LEX_QUOTE},
    {0x28, 0x2F, CS_LEX_PUNCT},
    {0x30, 0x39, CS_LEX_DIGIT},
    {0x3A, 0x3F, CS_LEX_PUNCT},
    {0x40, 0x5A, CS_LEX_IDENT},
    {0x5B, 0x5E, CS_LEX_PUNCT},
    {0x5F, 0x5F, CS_LEX_IDENT},
    {0x60, 0x60, CS_LEX_PUNCT},
    {0x61, 0x7A, CS_LEX_IDENT},
    {0x7B, 0x7F, CS_LEX_PUNCT},
    {0x80, 0xA2, CS_LEX_IDENT},
    {0xA3, 0xA5, CS_LEX_CURRENCY},
    {0xA6, 0xFF, CS_LEX_IDENT},
};

constexpr CS_TYPE_MAP iso1_type_map() {
    CS_TYPE_MAP page = dlx::iso1_case_page();
    dlx::set_column(page, &CHAR_MAP::char_type, TYPES);
    dlx::set_column(page, &CHAR_MAP::char_lex, LEXICAL_CLASSES);
    return page;
}

// Letters that sound alike have one digit. Of the upper half every letter counts as a vowel.
constexpr CS_SOUNDEX iso1_soundex() {
    constexpr const char *SOUNDS[] = {"AEHIOUWY", "BFPV", "CGJKQSXZ", "DT", "L", "MN", "R"};
    constexpr int TO_LOWER = 'a' - 'A';
    CS_SOUNDEX page = {};
    CS_BYTE digit = '0';
    for (const char *letters : SOUNDS) {
        for (; *letters != '\0'; ++letters)
            page.sound[*letters + 0] = page.sound[*letters + TO_LOWER] = digit;
        ++digit;
    }
    for (int code = 0xC0; code <= 0xFF; ++code)
        if (code != 0xD7 && code != 0xF7)
            page.sound[code] = '0';
    return page;
}

} // namespace

constinit const CS_TYPE_MAP ISO_1_type_map = iso1_type_map();
constinit const CS_SOUNDEX ISO_1_soundex = iso1_soundex();

// The record lies in read-only memory with its tables. The pointers lack the const only because the records
// of loaded sets, which are of the same type, own what they point to.
constinit const CHAR_ATTRIB ISO_1_char_attrib = {
    .cs_status = 0,
    .cs_class = 1,
    .cs_id = 1,
    .cs_namelen = 5,
    .cs_name = "iso_1",
    .cs_maxcharlen = 1,
    .cs_ncharsize = 1,
    .cs_nnorm = 0,
    .cs_ntype = 1,
    .cs_nsoundex = 1,
    .spare = {},
    .cs_width_map = nullptr,
    .cs_norm_map = nullptr,
    .cs_type_map = const_cast<CS_TYPE_MAP *>(&ISO_1_type_map),
    .cs_soundex = const_cast<CS_SOUNDEX *>(&ISO_1_soundex),
};

CS_ATTRIB *com_get_charattrib(void) { return const_cast<CS_ATTRIB *>(&ISO_1_char_attrib); }
CS_TYPE_MAP *com_get_typemap(void) { return const_cast<CS_TYPE_MAP *>(&ISO_1_type_map); }

CS_ATTRIB *com_intl_charattr(CsContext *context, CS_DATAFMT *dfmt) {
    const CS_LOCALE *locale = dfmt != nullptr ? dfmt->locale : nullptr;
    if (locale == nullptr) {
        if (context == nullptr)
            return com_get_charattrib();
        locale = context->ctxlocale;
        COM_REQUIRE_PTR(locale, com_get_charattrib());
    }
    const auto *ctype = static_cast<const CsLocCache *>(locale->ctypeptr);
    COM_REQUIRE_PTR(ctype, com_get_charattrib());
    COM_REQUIRE_PTR(ctype->locchardesc, com_get_charattrib());
    COM_REQUIRE_PTR(ctype->locchardesc->char_attrib, com_get_charattrib());
    return ctype->locchardesc->char_attrib;
}

// ---- Memory images --------------------------------------------------------------------------------------------

namespace {

// An image of class 1: codes 0 to 255, and an entry more in each table that nothing reads.
struct Class1Image {
    CHAR_MAP char_map[257];
    CS_BYTE sounds[257];
};
static_assert(sizeof(Class1Image) == 1285 && offsetof(Class1Image, sounds) == 1028);

// An image of class 2 begins so, and the tables lie at the offsets, which count from here. The words of four
// bytes are big-endian until the image was built from.
struct Class2Header {
    CS_SMALLINT cs_status;
    CS_BYTE cs_class;
    CS_BYTE cs_maxcharlen;
    CS_BYTE cs_ncharsize;
    CS_BYTE cs_ntype;
    CS_BYTE cs_nnorm;
    CS_BYTE cs_nsoundex;
    CS_BYTE machine_type;
    CS_BYTE padding[3];
    CS_UINT off_width;
    CS_UINT size_width;
    CS_UINT off_norm;
    CS_UINT size_norm;
    CS_UINT off_type;
    CS_UINT size_type;
    CS_UINT off_soundex;
    CS_UINT size_soundex;
};
static_assert(sizeof(Class2Header) == 44 && offsetof(Class2Header, off_width) == 12);

// What both kinds have: the id, and the name, which is cut to the field while its length is not.
void name_set(CS_ATTRIB &set, CS_INT id, const CS_CHAR *name) {
    set.cs_id = static_cast<CS_BYTE>(id);
    set.cs_namelen = static_cast<short>(std::strlen(name));
    intl_strlcpy(reinterpret_cast<char *>(set.cs_name), name, sizeof set.cs_name);
}

CS_ATTRIB class1_set(CS_BYTE *image) {
    CS_ATTRIB set = {};
    set.cs_class = 1;
    set.cs_maxcharlen = set.cs_ncharsize = 1;
    set.cs_ntype = set.cs_nsoundex = 1;
    set.cs_type_map = reinterpret_cast<CS_TYPE_MAP *>(image);
    set.cs_soundex = reinterpret_cast<CS_SOUNDEX *>(image + offsetof(Class1Image, sounds));
    return set;
}

Class2Header turn_header_to_machine_order(CS_BYTE *image) {
    auto header = dlx::load<Class2Header>(image);
    for (CS_UINT *word : {&header.off_width, &header.size_width, &header.off_norm, &header.size_norm, &header.off_type,
                          &header.size_type, &header.off_soundex, &header.size_soundex})
        *word = __builtin_bswap32(*word);
    dlx::store(image, header);
    return header;
}

CS_ATTRIB class2_set(CS_BYTE *image) {
    const Class2Header header = turn_header_to_machine_order(image);
    CS_ATTRIB set = {};
    set.cs_status = header.cs_status;
    set.cs_class = header.cs_class;
    set.cs_maxcharlen = header.cs_maxcharlen;
    set.cs_ncharsize = header.cs_ncharsize;
    set.cs_ntype = header.cs_ntype;
    set.cs_nnorm = header.cs_nnorm;
    set.cs_nsoundex = header.cs_nsoundex;
    if (header.size_width != 0)
        set.cs_width_map = image + header.off_width;
    if (header.size_norm != 0)
        set.cs_norm_map = reinterpret_cast<CS_NORM_MAP *>(image + header.off_norm);
    set.cs_type_map = reinterpret_cast<CS_TYPE_MAP *>(image + header.off_type);
    set.cs_soundex = reinterpret_cast<CS_SOUNDEX *>(image + header.off_soundex);
    return set;
}

} // namespace

CS_RETCODE com_build_char_attrib(CS_INT type, CS_INT id, CS_CHAR *cname, CS_VOID *imptr, CS_ATTRIB *chatr) {
    if (imptr == nullptr || chatr == nullptr)
        return COM_TRACE(CS_FAIL);
    if (type != CS_IMAGE_CLASS1 && type != CS_IMAGE_CLASS2)
        return COM_TRACE(CS_FAIL);
    COM_REQUIRE_PTR(cname, CS_FAIL);
    auto *image = static_cast<CS_BYTE *>(imptr);
    CS_ATTRIB set = type == CS_IMAGE_CLASS1 ? class1_set(image) : class2_set(image);
    name_set(set, id, cname);
    *chatr = set;
    return CS_SUCCEED;
}
