// Loading a character set: the keys of its file, and the binary images that stand in it as hexadecimal text.

#include "bytes/hexadecimal.h"
#include "charset/locvalue.h"
#include "diag/check.h"

#include <dlxcomn/charload.h>
#include <dlxcomn/oid.h>
#include <dlxcomn/sortorder.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace dlx {
namespace {

constexpr CS_CHAR FILE_NAME[] = "charset.loc";
constexpr std::string_view SECTION = "charset";
constexpr std::string_view DEFINITION = "definition";
constexpr CS_INT NAME_LIMIT = 30;
constexpr CS_INT DESCRIPTION_LIMIT = 255;
constexpr CS_BYTE FIRST_CLASS = 1;
constexpr CS_BYTE SECOND_CLASS = 2;

// An image of the first class: 257 entries of types, and as many of sounds.
constexpr CS_INT TYPES_SIZE = 257 * sizeof(CHAR_MAP);
constexpr CS_INT SOUNDS_SIZE = 257;
constexpr CS_INT FIRST_CLASS_SIZE = TYPES_SIZE + SOUNDS_SIZE;

// The header of an image of the second class. Its 4-byte fields have the highest byte first; the offsets are for
// readers that have the image in one piece.
constexpr CS_INT HEADER_SIZE = 44;
constexpr int MAXCHARLEN_AT = 3;
constexpr int NCHARSIZE_AT = 4;
constexpr int NTYPE_AT = 5;
constexpr int NNORM_AT = 6;
constexpr int NSOUNDEX_AT = 7;
constexpr int SIZE_WIDTH_AT = 16;
constexpr int SIZE_NORM_AT = 24;
constexpr int SIZE_TYPE_AT = 32;
constexpr int SIZE_SOUNDEX_AT = 40;
constexpr CS_INT SMALLEST_SECOND_CLASS = HEADER_SIZE + sizeof(CS_TYPE_MAP) + sizeof(CS_SOUNDEX);

CS_UINT big_endian(const CS_BYTE *at) {
    return static_cast<CS_UINT>(at[0]) << 24 | static_cast<CS_UINT>(at[1]) << 16 | static_cast<CS_UINT>(at[2]) << 8 |
           at[3];
}

// Appends the values of entries until `size` bytes of text are held.
CS_RETCODE read_text(CS_CONTEXT *context, CS_CHAR *text, std::size_t size, INTL_LOCFILE *ifile, bool get_next_entry) {
    std::size_t held = 0;
    while (held < size) {
        CS_RETCODE status;
        if (get_next_entry) {
            const CS_CHAR *const entry = next_entry(context, ifile, status);
            if (entry == nullptr)
                return status;
            if (entry != DEFINITION)
                return CS_FAIL;
        }
        get_next_entry = true;
        CS_INT length;
        const CS_BYTE *const value = next_value(context, ifile, length, status);
        if (value == nullptr)
            return status;
        if (static_cast<std::size_t>(length) > size - held)
            return CS_FAIL;
        std::memcpy(text + held, value, static_cast<std::size_t>(length));
        held += static_cast<std::size_t>(length);
    }
    return CS_SUCCEED;
}

// What the digits do not fill stays as it was: white space around them and "0x" count for the size of the text only.
bool decode(const CS_CHAR *text, std::size_t size, CS_BYTE *image) {
    const HexText hex(reinterpret_cast<const CS_BYTE *>(text), static_cast<std::ptrdiff_t>(size));
    const CS_BYTE *at = hex.digits;
    if (hex.count % 2 != 0) { // the first digit is a byte of its own
        const int digit = hex_digit(*at++);
        if (digit < 0)
            return false;
        *image++ = static_cast<CS_BYTE>(digit);
    }
    for (; at < hex.digits + hex.count; at += 2) {
        const int high = hex_digit(at[0]);
        const int low = hex_digit(at[1]);
        if (high < 0 || low < 0)
            return false;
        *image++ = static_cast<CS_BYTE>(high << 4 | low);
    }
    return true;
}

// Walkers take a width by a byte, and a page by a number of a byte. Files need not have what every number leads to, so
// a table has room for all of it; what no file fills is zero, and no memory is touched for it.
constexpr CS_UINT WIDTHS = 256;
constexpr CS_UINT PAGES = 256;

// Allocates a table of at least `room` bytes and reads its image. The table is left to the owner of the set also where
// reading fails.
template <class Table>
CS_RETCODE read_table(CS_CONTEXT *context, Table *&table, CS_UINT size, CS_UINT room, INTL_LOCFILE *ifile,
                      bool get_next_entry) {
    if (size > static_cast<CS_UINT>(std::numeric_limits<CS_INT>::max()))
        return CS_FAIL;
    table = static_cast<Table *>(std::calloc(1, std::max(size, room)));
    if (table == nullptr)
        return CS_MEM_ERROR;
    return comn__get_image(context, reinterpret_cast<CS_BYTE *>(table), static_cast<CS_INT>(size), ifile,
                           get_next_entry);
}

// The one page of a set of single bytes. What its codes lead to, which no such set needs, is not left without a page.
CS_RETCODE read_only_page(CS_CONTEXT *context, CHAR_ATTRIB &set, INTL_LOCFILE *ifile) {
    CS_RETCODE status = read_table(context, set.cs_type_map, TYPES_SIZE, TYPES_SIZE, ifile, false);
    if (status != CS_SUCCEED)
        return status;
    std::size_t last = 0;
    for (const CHAR_MAP &code : set.cs_type_map->chmap)
        if ((code.char_type & CS_CT_ROW) != 0)
            last = std::max<std::size_t>(last, code.char_upper);
    if (last == 0)
        return CS_SUCCEED;
    const std::size_t size = (last + 1) * sizeof(CS_TYPE_MAP);
    auto *const pages = static_cast<CS_BYTE *>(std::realloc(set.cs_type_map, size));
    if (pages == nullptr)
        return CS_MEM_ERROR;
    std::memset(pages + TYPES_SIZE, 0, size - TYPES_SIZE); // the image ends behind the first page
    set.cs_type_map = reinterpret_cast<CS_TYPE_MAP *>(pages);
    return CS_SUCCEED;
}

// What the keys in front of the image say.
struct Header {
    CHAR_ATTRIB &set;
    CS_INT image_size = 0;
};

// Reads the value of a key. CS_FAIL for a key that there is not.
CS_RETCODE read_key(CS_CONTEXT *context, std::string_view key, Header &header, INTL_LOCFILE *ifile) {
    CHAR_ATTRIB &set = header.set;
    if (key == "class") {
        const CS_RETCODE status = comn__get_byteval(context, ifile, &set.cs_class);
        const bool is_known = set.cs_class == FIRST_CLASS || set.cs_class == SECOND_CLASS;
        return status == CS_SUCCEED && !is_known ? CS_FAIL : status;
    }
    if (key == "name") {
        auto *const name = reinterpret_cast<CS_CHAR *>(set.cs_name);
        const CS_RETCODE status = comn__get_string(context, ifile, name, CS_FALSE, NAME_LIMIT);
        if (status == CS_SUCCEED)
            set.cs_namelen = static_cast<short>(std::strlen(name));
        return status;
    }
    if (key == "description")
        return comn__get_string(context, ifile, nullptr, CS_FALSE, DESCRIPTION_LIMIT);
    if (key == "id")
        return comn__get_byteval(context, ifile, &set.cs_id);
    if (key == "status")
        return comn__get_shortval(context, ifile, &set.cs_status);
    if (key == "image_size")
        return comn__get_longval(context, ifile, &header.image_size);
    return CS_FAIL;
}

CS_RETCODE read_set(CS_CONTEXT *context, CHAR_ATTRIB &set, INTL_LOCFILE *ifile) {
    CS_RETCODE status = find_section(context, ifile, SECTION);
    if (status != CS_SUCCEED)
        return status;
    Header header = {set};
    while (const CS_CHAR *key = next_entry(context, ifile, status)) {
        if (key == DEFINITION) {
            switch (set.cs_class) {
            case FIRST_CLASS:
                return comn__load_charset1(context, &set, header.image_size, ifile);
            case SECOND_CLASS:
                return comn__load_charset2(context, &set, header.image_size, ifile);
            default:
                return CS_FAIL;
            }
        }
        status = read_key(context, key, header, ifile);
        if (status != CS_SUCCEED)
            return status;
    }
    return status;
}

// The sort order that goes with a set that a running context loads.
CS_RETCODE load_its_sort_order(CS_CONTEXT *context, CsLocCache *lcache, CS_CHAR *locfilename, CS_INT filenamelen) {
    if (context->ctxlocale == nullptr || lcache->sortname == nullptr)
        return CS_SUCCEED;
    CsOID *order;
    CS_INT id_class = CS_OID_COLLATE;
    const CS_RETCODE status = comn_globalid(context, CS_NAME_TO_OID, &order, &id_class, CS_UNUSED, lcache->sortname,
                                            lcache->sortnamelen, nullptr, nullptr);
    return status == CS_SUCCEED ? comn__intl_load_sortorder(context, order, lcache, locfilename, filenamelen) : status;
}

} // namespace
} // namespace dlx

using namespace dlx;

CS_ATTRIB *com_alloc_char_attrib() { return static_cast<CS_ATTRIB *>(std::malloc(sizeof(CS_ATTRIB))); }

void com_free_char_attrib(CS_ATTRIB *chatr) { std::free(chatr); }

CS_RETCODE comn__get_image(CsContext *context, CS_BYTE *bin_image, CS_INT bin_image_size, INTL_LOCFILE *ifile,
                           CS_BOOL get_next_entry) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(bin_image, CS_FAIL);
    COM_REQUIRE_PTR(ifile, CS_FAIL);
    COM_REQUIRE(bin_image_size >= 1, CS_FAIL);
    const std::size_t size = static_cast<std::size_t>(bin_image_size) * 2;
    CS_CHAR *const text = static_cast<CS_CHAR *>(std::malloc(size));
    if (text == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    CS_RETCODE status = read_text(context, text, size, ifile, get_next_entry);
    if (status == CS_SUCCEED && !decode(text, size, bin_image))
        status = CS_FAIL;
    std::free(text);
    return status == CS_SUCCEED ? status : COM_TRACE(status);
}

CS_RETCODE comn__load_charset1(CsContext *context, CHAR_ATTRIB *char_attrib, CS_INT image_size, INTL_LOCFILE *ifile) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(char_attrib, CS_FAIL);
    COM_REQUIRE_PTR(ifile, CS_FAIL);
    if (image_size != FIRST_CLASS_SIZE)
        return COM_TRACE(CS_FAIL);
    CS_RETCODE status = read_only_page(context, *char_attrib, ifile);
    if (status == CS_SUCCEED)
        status = read_table(context, char_attrib->cs_soundex, SOUNDS_SIZE, SOUNDS_SIZE, ifile, true);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    char_attrib->cs_maxcharlen = char_attrib->cs_ncharsize = 1;
    char_attrib->cs_nnorm = 0;
    char_attrib->cs_ntype = char_attrib->cs_nsoundex = 1;
    return CS_SUCCEED;
}

CS_RETCODE comn__load_charset2(CsContext *context, CHAR_ATTRIB *char_attrib, CS_INT image_size, INTL_LOCFILE *ifile) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(char_attrib, CS_FAIL);
    COM_REQUIRE_PTR(ifile, CS_FAIL);
    if (image_size < SMALLEST_SECOND_CLASS)
        return COM_TRACE(CS_FAIL);
    CS_BYTE header[HEADER_SIZE] = {}; // its text need not fill it
    CS_RETCODE status = comn__get_image(context, header, HEADER_SIZE, ifile, CS_FALSE);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    const CS_UINT width_size = big_endian(header + SIZE_WIDTH_AT);
    const CS_UINT norm_size = big_endian(header + SIZE_NORM_AT);
    const CS_UINT type_size = big_endian(header + SIZE_TYPE_AT);
    const CS_UINT soundex_size = big_endian(header + SIZE_SOUNDEX_AT);
    if (type_size == 0 || type_size != header[NTYPE_AT] * sizeof(CS_TYPE_MAP) || soundex_size == 0 ||
        soundex_size != header[NSOUNDEX_AT] * sizeof(CS_SOUNDEX))
        return COM_TRACE(CS_FAIL);

    if (width_size != 0)
        status = read_table(context, char_attrib->cs_width_map, width_size, WIDTHS, ifile, true);
    if (status == CS_SUCCEED && norm_size != 0)
        status = read_table(context, char_attrib->cs_norm_map, norm_size, PAGES * sizeof(CS_NORM_MAP), ifile, true);
    if (status == CS_SUCCEED)
        status = read_table(context, char_attrib->cs_type_map, type_size, PAGES * sizeof(CS_TYPE_MAP), ifile, true);
    if (status == CS_SUCCEED)
        status = read_table(context, char_attrib->cs_soundex, soundex_size, soundex_size, ifile, true);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    char_attrib->cs_maxcharlen = header[MAXCHARLEN_AT];
    char_attrib->cs_ncharsize = header[NCHARSIZE_AT];
    char_attrib->cs_nnorm = header[NNORM_AT];
    char_attrib->cs_ntype = header[NTYPE_AT];
    char_attrib->cs_nsoundex = header[NSOUNDEX_AT];
    return CS_SUCCEED;
}

CS_RETCODE comn__get_charset(CsContext *context, CsLocCache *lcache, CS_CHAR *locfilename, CS_INT filenamelen) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(lcache, CS_FAIL);
    COM_REQUIRE_PTR(lcache->locchardesc, CS_FAIL);
    INTL_LOCFILE ifile;
    CS_RETCODE status = com__open_charfile(context, lcache->charname, const_cast<CS_CHAR *>(FILE_NAME), nullptr, &ifile,
                                           locfilename, filenamelen);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    CHAR_ATTRIB *const set = static_cast<CHAR_ATTRIB *>(std::calloc(1, sizeof(CHAR_ATTRIB)));
    lcache->locchardesc->char_attrib = set;
    status = close_file(context, &ifile, set != nullptr ? read_set(context, *set, &ifile) : CS_MEM_ERROR);
    return status == CS_SUCCEED ? status : COM_TRACE(status);
}

CS_RETCODE comn__intl_load_charset(CsContext *context, CsOID *oid, CsLocCache *lcache, CS_CHAR *locfilename,
                                   CS_INT filenamelen) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    COM_REQUIRE_PTR(oid, CS_FAIL);
    COM_REQUIRE_PTR(lcache, CS_FAIL);
    CS_VOID *&sets = context->ctxglobals->cmg_chardesc;
    for (auto *set = static_cast<CsCharDesc *>(sets); set != nullptr; set = set->charnext) {
        if (set->oid == oid) {
            lcache->locchardesc = set;
            return CS_SUCCEED;
        }
    }
    CsCharDesc *const set = static_cast<CsCharDesc *>(std::calloc(1, sizeof(CsCharDesc)));
    if (set == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    set->oid = oid;
    lcache->locchardesc = set;
    CS_RETCODE status = comn__get_charset(context, lcache, locfilename, filenamelen);
    if (status == CS_SUCCEED)
        status = load_its_sort_order(context, lcache, locfilename, filenamelen);
    if (status != CS_SUCCEED) {
        comn__chardesc_drop(set);
        lcache->locchardesc = nullptr;
        return COM_TRACE(status);
    }
    set->charnext = static_cast<CsCharDesc *>(sets);
    // Messages are read under the mutex of their cache alone, and find their set here.
    __atomic_store_n(&sets, static_cast<CS_VOID *>(set), __ATOMIC_RELEASE);
    return CS_SUCCEED;
}

void comn__chardesc_drop(CsCharDesc *chardesc) {
    if (chardesc == nullptr)
        return;
    if (CHAR_ATTRIB *const set = chardesc->char_attrib) {
        std::free(set->cs_width_map);
        std::free(set->cs_norm_map);
        std::free(set->cs_type_map);
        std::free(set->cs_soundex);
        std::free(set);
    }
    for (CsSortDesc *order = chardesc->sort_order; order != nullptr;) {
        CsSortDesc *const next = order->sortnext;
        comn__sortorder_drop(order);
        order = next;
    }
    std::free(chardesc);
}

CS_RETCODE com_intl_chardesc_drop(CsContext *context) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(context->ctxglobals, CS_FAIL);
    CS_VOID *&sets = context->ctxglobals->cmg_chardesc;
    for (auto *set = static_cast<CsCharDesc *>(sets); set != nullptr;) {
        CsCharDesc *const next = set->charnext;
        comn__chardesc_drop(set);
        set = next;
    }
    sets = nullptr;
    return CS_SUCCEED;
}
