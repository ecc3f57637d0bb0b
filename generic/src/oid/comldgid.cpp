// Loading the table of global identifiers, and their BER encoding.

#include "diag/check.h"
#include "oid/table.h"

#include <dlxintl/intl.h>

#include <cstdlib>
#include <cstring>

namespace dlx {
namespace {

constexpr CS_CHAR OID_FILE[] = "objectid.dat";

constexpr CS_BYTE BER_OID = 6;            // the tag of an object identifier
constexpr CS_BYTE BER_LONG_LENGTH = 0x81; // one byte of length follows
constexpr int SHORT_FORM_BELOW = 128;     // of the running total
constexpr int LAST_TOTAL = 254;           // a further arc may begin at it
constexpr CS_UINT FIRST_ARC_WEIGHT = 40;
constexpr int GROUP_BITS = 7;
constexpr CS_UINT GROUP_MASK = 0x7F;
constexpr CS_BYTE MORE_GROUPS = 0x80;

// A failure of the reader, which a null answer may or may not be.
CS_RETCODE reader_status(CS_CONTEXT *context, int status) {
    if (status >= 0)
        return CS_SUCCEED;
    context->ctxintlerr = status;
    return COM_TRACE(CS_EINTL);
}

// Copies without a NUL; an empty text has memory of its own too.
CS_CHAR *copy_text(const CS_CHAR *text, CS_INT len) {
    CS_CHAR *copy = static_cast<CS_CHAR *>(std::malloc(len > 0 ? static_cast<std::size_t>(len) : 1));
    if (copy != nullptr && len > 0)
        std::memcpy(copy, text, static_cast<std::size_t>(len));
    return copy;
}

// The arcs of a dotted text, one by one. Dots in a row count as one.
class Arcs {
public:
    explicit Arcs(CS_CHAR *text) : rest_(text) {}

    bool next(CS_UINT &arc) {
        char *const text = strtok_r(rest_, ".", &state_);
        rest_ = nullptr;
        if (text == nullptr)
            return false;
        arc = static_cast<CS_UINT>(std::strtoul(text, nullptr, 10));
        return true;
    }

private:
    CS_CHAR *rest_;
    CS_CHAR *state_ = nullptr;
};

int groups_of(CS_UINT arc) {
    int groups = 1;
    while (arc >>= GROUP_BITS)
        ++groups;
    return groups;
}

CS_BYTE *put_arc(CS_BYTE *to, CS_UINT arc) {
    for (int group = groups_of(arc) - 1; group > 0; --group)
        *to++ = static_cast<CS_BYTE>((arc >> (group * GROUP_BITS) & GROUP_MASK) | MORE_GROUPS);
    *to++ = static_cast<CS_BYTE>(arc & GROUP_MASK);
    return to;
}

// Encodes `text`, which is split in place, at `ber`, and answers the length; 0 for a text that has no encoding.
//
// The total counts the tag, the length, the first content byte and one byte in reserve for the longer form of the
// length. The first two arcs share a byte, and a sum above 255 wraps: peers have always been sent that.
CS_INT encode(CS_CHAR *text, CS_BYTE *ber) {
    Arcs arcs(text);
    CS_UINT first, second;
    if (!arcs.next(first) || !arcs.next(second))
        return 0;
    CS_BYTE content[CS_OID_BERSIZE];
    CS_BYTE *end = content;
    *end++ = static_cast<CS_BYTE>(first * FIRST_ARC_WEIGHT + second);

    int total = 4;
    for (CS_UINT arc; arcs.next(arc);) {
        if (total > LAST_TOTAL || total + groups_of(arc) > CS_OID_BERSIZE)
            return 0;
        total += groups_of(arc);
        end = put_arc(end, arc);
    }
    const CS_BYTE length = static_cast<CS_BYTE>(total - 3);
    *ber++ = BER_OID;
    if (total < SHORT_FORM_BELOW)
        --total;
    else
        *ber++ = BER_LONG_LENGTH;
    *ber++ = length;
    std::memcpy(ber, content, length);
    return total;
}

} // namespace

void free_oid(CsOID *oid) {
    comn__free_string_list(oid->oidlnames);
    std::free(oid->oidstring);
    std::free(oid->oidber);
    std::free(oid);
}

} // namespace dlx

using namespace dlx;

void comn__free_string_list(CS_STRING_LIST *list) {
    while (list != nullptr) {
        CS_STRING_LIST *const next = list->next;
        std::free(list->string);
        std::free(list);
        list = next;
    }
}

CS_RETCODE comn__encode_oid(CS_CONTEXT *context, CsOID *oid) {
    (void)context;
    COM_REQUIRE_PTR(oid, CS_FAIL);
    COM_REQUIRE_PTR(oid->oidstring, CS_FAIL);
    COM_REQUIRE(oid->oidnamelen >= 0, CS_FAIL);
    const std::size_t length = static_cast<std::size_t>(oid->oidnamelen);
    CS_CHAR *const text = static_cast<CS_CHAR *>(std::malloc(length + 1));
    CS_BYTE *const ber = static_cast<CS_BYTE *>(std::calloc(1, CS_OID_BERSIZE));
    CS_RETCODE status = CS_MEM_ERROR;
    CS_INT ber_length = 0;
    if (text != nullptr && ber != nullptr) {
        std::memcpy(text, oid->oidstring, length);
        text[length] = '\0';
        ber_length = encode(text, ber);
        status = ber_length > 0 ? CS_SUCCEED : CS_FAIL;
    }
    std::free(text);
    if (status != CS_SUCCEED) {
        std::free(ber);
        return COM_TRACE(status);
    }
    oid->oidber = ber;
    oid->oidberlen = ber_length;
    return CS_SUCCEED;
}

CS_RETCODE comn__new_oid(CS_CONTEXT *context, CS_CHAR *oidstring, CS_INT len, CsOID **oidp) {
    COM_REQUIRE_PTR(oidstring, CS_FAIL);
    COM_REQUIRE_PTR(oidp, CS_FAIL);
    COM_REQUIRE(len >= 0, CS_FAIL);
    *oidp = nullptr;
    CsOID *const oid = static_cast<CsOID *>(std::calloc(1, sizeof(CsOID)));
    if (oid == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    oid->oidstring = copy_text(oidstring, len);
    oid->oidnamelen = len;
    const CS_RETCODE status = oid->oidstring != nullptr ? comn__encode_oid(context, oid) : CS_MEM_ERROR;
    if (status != CS_SUCCEED) {
        free_oid(oid);
        return COM_TRACE(status);
    }
    *oidp = oid;
    return CS_SUCCEED;
}

CS_RETCODE comn__read_localnames(CS_CONTEXT *context, INTL_LOCFILE *ifile, CsOID *oid) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(ifile, CS_FAIL);
    COM_REQUIRE_PTR(oid, CS_FAIL);
    CS_STRING_LIST **end = &oid->oidlnames;
    while (*end != nullptr)
        end = &(*end)->next;

    int status = 0;
    while (const CS_CHAR *value = intl_nextvalue(ifile, &status)) {
        CS_STRING_LIST *const name = static_cast<CS_STRING_LIST *>(std::calloc(1, sizeof(CS_STRING_LIST)));
        if (name == nullptr)
            return COM_TRACE(CS_MEM_ERROR);
        name->len = intl_valuelen(ifile);
        name->string = copy_text(value, name->len);
        if (name->string == nullptr) {
            std::free(name);
            return COM_TRACE(CS_MEM_ERROR);
        }
        *end = name;
        end = &name->next;
        ++oid->oidnumlnames;
    }
    return reader_status(context, status);
}

CS_RETCODE comn__cat_localnames(CS_CONTEXT *context, CsOID *to, CsOID *from) {
    (void)context;
    COM_REQUIRE_PTR(to, CS_FAIL);
    COM_REQUIRE_PTR(from, CS_FAIL);
    CS_STRING_LIST **end = &to->oidlnames;
    while (*end != nullptr)
        end = &(*end)->next;
    *end = from->oidlnames;
    to->oidnumlnames += from->oidnumlnames;
    from->oidlnames = nullptr;
    from->oidnumlnames = 0;
    return CS_SUCCEED;
}

CS_RETCODE comn__add_oid(CS_CONTEXT *context, CS_OID_TABLE *oidtable, CS_INT id_class, CsOID *oid) {
    COM_REQUIRE_PTR(oidtable, CS_FAIL);
    COM_REQUIRE_PTR(oid, CS_FAIL);
    COM_REQUIRE(id_class >= 0 && id_class < CS_OID_CLASSES, CS_FAIL);
    CsOID **end = &oidtable->ot_oid[id_class];
    for (; *end != nullptr; end = &(*end)->oidnext) {
        if (!has_encoding(**end, oid->oidber, oid->oidberlen))
            continue;
        const CS_RETCODE status = comn__cat_localnames(context, *end, oid);
        free_oid(oid);
        return status;
    }
    *end = oid;
    return CS_SUCCEED;
}

CS_RETCODE comn__read_oidsection(CS_CONTEXT *context, INTL_LOCFILE *ifile, CS_INT id_class, CS_OID_TABLE *oidtable) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(ifile, CS_FAIL);
    COM_REQUIRE_PTR(oidtable, CS_FAIL);
    int reader = 0;
    while (CS_CHAR *entry = intl_nextentry(ifile, &reader)) {
        CsOID *oid;
        CS_RETCODE status = comn__new_oid(context, entry, static_cast<CS_INT>(std::strlen(entry)), &oid);
        if (status != CS_SUCCEED)
            return COM_TRACE(status);
        status = comn__read_localnames(context, ifile, oid);
        if (status != CS_SUCCEED) {
            free_oid(oid);
            return COM_TRACE(status);
        }
        status = comn__add_oid(context, oidtable, id_class, oid);
        if (status != CS_SUCCEED) {
            free_oid(oid);
            return COM_TRACE(status);
        }
    }
    return reader_status(context, reader);
}

namespace dlx {
namespace {

CS_RETCODE read_sections(CS_CONTEXT *context, INTL_LOCFILE *ifile, CS_OID_TABLE *oidtable) {
    int reader = 0;
    while (CS_CHAR *section = intl_nextsection(ifile, &reader)) {
        CS_INT id_class;
        if (comn_string_to_id(context, Com__dup_classmap, section, &id_class) != CS_SUCCEED)
            continue; // a section of somebody else's
        const CS_RETCODE status = comn__read_oidsection(context, ifile, id_class, oidtable);
        if (status != CS_SUCCEED)
            return COM_TRACE(status);
    }
    return reader_status(context, reader);
}

} // namespace
} // namespace dlx

CS_RETCODE comn__read_oidfile(CS_CONTEXT *context, CS_OID_TABLE *oidtable) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(oidtable, CS_FAIL);
    INTL_LOCFILE ifile;
    CS_RETCODE status = com__open_cfgfile(context, const_cast<CS_CHAR *>(OID_FILE), &ifile, CS_FALSE);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    status = read_sections(context, &ifile, oidtable);
    const int closed = intl_close(&ifile);
    return status != CS_SUCCEED ? COM_TRACE(status) : reader_status(context, closed);
}

CS_RETCODE comn_intl_load_globalid(CS_CONTEXT *context, CS_VOID **oidtablep) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(oidtablep, CS_FAIL);
    *oidtablep = nullptr;
    CS_VOID *table = std::calloc(1, sizeof(CS_OID_TABLE));
    if (table == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    const CS_RETCODE status = comn__read_oidfile(context, static_cast<CS_OID_TABLE *>(table));
    if (status != CS_SUCCEED) {
        comn_intl_drop_globalid(context, &table);
        return COM_TRACE(status);
    }
    *oidtablep = table;
    return CS_SUCCEED;
}
