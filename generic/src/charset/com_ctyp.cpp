// Classes and case of single iso_1 bytes, with no context and no character set record.
//
// The table is older than ISO_1_type_map and differs from it: it knows graphic characters, has no lexical
// classes, and takes the whole upper half from 0xA0 for letters.
#include "charset/pages.h"

namespace {

// Signs of the upper half such as 0xA3, 0xB5 and 0xD7 count as upper-case letters, and so do 0x8E, 0x8F and
// 0xF7. Callers build identifiers by these answers, so they stay.
constexpr dlx::CodeRange TYPES[] = {
    {0x09, 0x0F, CS_CT_SPACE},
    {0x20, 0x20, CS_CT_SPACE | CS_CT_GRAPH},
    {0x21, 0x2F, CS_CT_PUNCT | CS_CT_GRAPH},
    {0x30, 0x39, CS_CT_DIGIT | CS_CT_XDIGIT | CS_CT_GRAPH},
    {0x3A, 0x40, CS_CT_PUNCT | CS_CT_GRAPH},
    {0x41, 0x46, CS_CT_UPPER | CS_CT_XDIGIT | CS_CT_GRAPH},
    {0x47, 0x5A, CS_CT_UPPER | CS_CT_GRAPH},
    {0x5B, 0x60, CS_CT_PUNCT | CS_CT_GRAPH},
    {0x61, 0x66, CS_CT_LOWER | CS_CT_XDIGIT | CS_CT_GRAPH},
    {0x67, 0x7A, CS_CT_LOWER | CS_CT_GRAPH},
    {0x7B, 0x7E, CS_CT_PUNCT | CS_CT_GRAPH},
    {0x8E, 0x8F, CS_CT_UPPER},
    {0xA0, 0xDF, CS_CT_UPPER | CS_CT_GRAPH},
    {0xE0, 0xF6, CS_CT_LOWER | CS_CT_GRAPH},
    {0xF7, 0xF7, CS_CT_UPPER | CS_CT_GRAPH},
    {0xF8, 0xFF, CS_CT_LOWER | CS_CT_GRAPH},
};

constexpr CS_TYPE_MAP iso1_charmap() {
    CS_TYPE_MAP page = dlx::iso1_case_page();
    dlx::set_column(page, &CHAR_MAP::char_type, TYPES);
    return page;
}

const CHAR_MAP &entry_of(CS_BYTE c) { return Com_Iso1_charmap.chmap[c]; }

} // namespace

constinit const CS_TYPE_MAP Com_Iso1_charmap = iso1_charmap();
constinit const CS_TYPE_MAP *const Com_charmap = &Com_Iso1_charmap;

CS_BYTE com_toupper(CS_BYTE c) { return entry_of(c).char_upper; }
CS_BYTE com_tolower(CS_BYTE c) { return entry_of(c).char_lower; }
CS_INT com_isalpha(CS_BYTE c) { return entry_of(c).char_type & CS_CT_ALPHA; }
CS_INT com_isupper(CS_BYTE c) { return entry_of(c).char_type & CS_CT_UPPER; }
CS_INT com_islower(CS_BYTE c) { return entry_of(c).char_type & CS_CT_LOWER; }
CS_INT com_isdigit(CS_BYTE c) { return entry_of(c).char_type & CS_CT_DIGIT; }
CS_INT com_isxdigit(CS_BYTE c) { return entry_of(c).char_type & CS_CT_XDIGIT; }
CS_INT com_isspace(CS_BYTE c) { return entry_of(c).char_type & CS_CT_SPACE; }
CS_INT com_isgraph(CS_BYTE c) { return entry_of(c).char_type & CS_CT_GRAPH; }
