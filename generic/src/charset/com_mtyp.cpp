// The character at a place in a text, in any character set: its classes, case and width, and runs of such
// characters.
//
// The rules are in walk.h. What is added here is the check of pointers: where reports return, a null one
// answers 0 and nothing is touched.
#include "charset/walk.h"
#include "diag/check.h"

#include <cstring>

using dlx::Walker;

namespace {

CS_INT class_at(dlx::SourceLine member, CS_ATTRIB *ca, CS_BYTE *p, CS_INT mask) {
    COM_REQUIRE_PTR_AT(member, p, 0);
    return Walker(ca).type_bits(p, mask);
}

// The other case is kept in `column`. A two-byte code keeps its first byte, and the second one changes inside
// its page. A character whose entry holds 0 there has no case.
template <CS_BYTE CHAR_MAP::*column>
void change_case(dlx::SourceLine member, CS_ATTRIB *ca, const CS_BYTE *srcp, CS_BYTE *destp) {
    COM_REQUIRE_PTR_AT(member, srcp);
    COM_REQUIRE_PTR_AT(member, destp);
    const Walker walker(ca);
    const CS_BYTE changed = walker.type(srcp).*column;
    if (walker.has_second_level(srcp)) {
        destp[0] = srcp[0];
        destp[1] = changed;
    } else if (changed == 0) {
        std::memmove(destp, srcp, static_cast<std::size_t>(walker.step(srcp)));
    } else {
        destp[0] = changed;
    }
}

} // namespace

CS_INT comn_isupper(CS_ATTRIB *ca, CS_BYTE *p) { return class_at(COM_HERE, ca, p, CS_CT_UPPER); }
CS_INT comn_islower(CS_ATTRIB *ca, CS_BYTE *p) { return class_at(COM_HERE, ca, p, CS_CT_LOWER); }
CS_INT comn_isalpha(CS_ATTRIB *ca, CS_BYTE *p) { return class_at(COM_HERE, ca, p, CS_CT_ALPHA); }
CS_INT comn_isdigit(CS_ATTRIB *ca, CS_BYTE *p) { return class_at(COM_HERE, ca, p, CS_CT_DIGIT); }
CS_INT comn_isspace(CS_ATTRIB *ca, CS_BYTE *p) { return class_at(COM_HERE, ca, p, CS_CT_SPACE); }
CS_INT comn_isxdigit(CS_ATTRIB *ca, CS_BYTE *p) { return class_at(COM_HERE, ca, p, CS_CT_XDIGIT); }
CS_INT comn_ispunct(CS_ATTRIB *ca, CS_BYTE *p) { return class_at(COM_HERE, ca, p, CS_CT_PUNCT); }
CS_INT comn_isgraph(CS_ATTRIB *ca, CS_BYTE *p) { return class_at(COM_HERE, ca, p, CS_CT_GRAPH); }

CS_INT comn_get_lex(CS_ATTRIB *ca, CS_BYTE *p) {
    COM_REQUIRE_PTR(p, 0);
    return Walker(ca).lex(p);
}

CS_BYTE *comn_get_widthmap(CS_ATTRIB *ca) { return ca != nullptr ? ca->cs_width_map : ISO_1_char_attrib.cs_width_map; }

CS_INT comn_char_width(CS_ATTRIB *ca, CS_BYTE *p) {
    COM_REQUIRE_PTR(p, 0);
    return Walker(ca).width(p);
}

CS_INT comn_disp_width(CS_ATTRIB *ca, CS_BYTE *p) {
    COM_REQUIRE_PTR(p, 0);
    return Walker(ca).columns(p);
}

CS_BYTE comn_to_ascii(CS_ATTRIB *ca, CS_BYTE *p) {
    COM_REQUIRE_PTR(p, 0);
    return Walker(ca).to_ascii(p);
}

// The page of a two-byte code is the one that char_upper of its first byte names, for both cases.
void comn_toupper(CS_ATTRIB *ca, CS_BYTE *srcp, CS_BYTE *destp) {
    change_case<&CHAR_MAP::char_upper>(COM_HERE, ca, srcp, destp);
}
void comn_tolower(CS_ATTRIB *ca, CS_BYTE *srcp, CS_BYTE *destp) {
    change_case<&CHAR_MAP::char_lower>(COM_HERE, ca, srcp, destp);
}

void comn_inc_char(CS_ATTRIB *ca, CS_BYTE **p) {
    COM_REQUIRE_PTR(p);
    COM_REQUIRE_PTR(*p);
    *p += Walker(ca).step(*p);
}

void comn_whole_char(CS_ATTRIB *ca, CS_BYTE *startp, CS_BYTE *endp, CS_INT *wcbytes, CS_INT *pc_part1, CS_INT *pc_part2,
                     CS_INT *nchars) {
    COM_REQUIRE_PTR(startp);
    COM_REQUIRE_PTR(endp);
    COM_REQUIRE_PTR(wcbytes);
    COM_REQUIRE_PTR(pc_part1);
    COM_REQUIRE_PTR(pc_part2);
    COM_REQUIRE_PTR(nchars);
    const dlx::WholeCharacters run = dlx::whole_characters(Walker(ca), startp, endp);
    *wcbytes = run.bytes;
    *pc_part1 = run.before_end;
    *pc_part2 = run.behind_end;
    *nchars = run.count;
}

void comn_str_to_ascii(CS_CHAR *cp_src, CS_INT src_len, CS_CHAR *cp_dest, CS_INT *dest_len, CS_ATTRIB *chatr) {
    COM_REQUIRE_PTR(cp_src);
    COM_REQUIRE_PTR(cp_dest);
    COM_REQUIRE_PTR(dest_len);
    *dest_len = dlx::normalize(Walker(chatr), reinterpret_cast<const CS_BYTE *>(cp_src), src_len,
                               reinterpret_cast<CS_BYTE *>(cp_dest));
}

// Only first bytes are compared, with the searched byte as with NUL. The tail of a character is hopped over
// unread: a tail byte never matches, and a NUL among the tail bytes does not end the text.
CS_BYTE *comn_mb_strchr(CS_ATTRIB *ca, CS_BYTE *buf, CS_BYTE srch_char) {
    COM_REQUIRE_PTR(buf, nullptr);
    const Walker walker(ca);
    if (walker.is_single_byte() && srch_char != 0) {
        char *found = std::strchr(reinterpret_cast<char *>(buf), srch_char);
        return reinterpret_cast<CS_BYTE *>(found);
    }
    for (CS_BYTE *p = buf; *p != 0; p += walker.step(p))
        if (*p == srch_char)
            return p;
    return nullptr;
}
