// Loading a sort order: the header of its file, the entries of its characters, and the table that they make.

#include "charset/locvalue.h"
#include "diag/check.h"

#include <dlxcomn/sortorder.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace dlx {
namespace {

constexpr CS_CHAR EXTENSION[] = "srt";
constexpr std::string_view SECTION = "sortorder";
constexpr CS_INT NAME_LIMIT = 30;
constexpr CS_INT DESCRIPTION_LIMIT = 255;
constexpr CS_BYTE FIRST_CLASS = 1;
constexpr CS_BYTE SECOND_CLASS = 2;

constexpr CS_BYTE BLANK = ' ';
constexpr CS_BYTE JOIN = '=';
constexpr int LAST_PRIMARY = 255;
constexpr int NEXT_FREE = 255; // of next_char while it is filled: the first primary weight without an entry

// ---- Header ----

enum HeaderBit {
    CLASS = 0x01,
    ID = 0x02,
    NAME = 0x04,
    CHARSET = 0x08,
    DESCRIPTION = 0x10,
    MENUNAME = 0x20,
    ALL = 0x3F
};

constexpr std::string_view FIRST_CLASS_KEYS[] = {"lig", "char", "ignore char"};
constexpr std::string_view SECOND_CLASS_KEYS[] = {
    "not_found", "lig",   "char",        "alphabet",   "row",          "row-low",     "row-high",
    "plane",     "group", "ignore char", "ignore row", "ignore plane", "ignore group"};

template <std::size_t N>
bool is_one_of(std::string_view key, const std::string_view (&keys)[N]) {
    return std::find(std::begin(keys), std::end(keys), key) != std::end(keys);
}

// Reads the value of a key of the header, and notes it in `seen`. False for any other key.
bool read_header_key(CS_CONTEXT *context, std::string_view key, S_DESCRIPT &header, int &seen, INTL_LOCFILE *ifile,
                     CS_RETCODE &status) {
    CS_BYTE number = 0;
    if (key == "class") {
        status = comn__get_byteval(context, ifile, &number);
        if (status == CS_SUCCEED && number != FIRST_CLASS && number != SECOND_CLASS)
            status = CS_FAIL;
        header.class_ = number;
        seen |= CLASS;
    } else if (key == "id") {
        status = comn__get_byteval(context, ifile, &number);
        if (status == CS_SUCCEED && number == 0)
            status = CS_FAIL;
        header.id = number;
        seen |= ID;
    } else if (key == "name") {
        status = comn__get_string(context, ifile, header.name, CS_TRUE, NAME_LIMIT);
        seen |= NAME;
    } else if (key == "charset") {
        status = comn__get_string(context, ifile, header.charset, CS_TRUE, NAME_LIMIT);
        seen |= CHARSET;
    } else if (key == "description") {
        status = comn__get_string(context, ifile, header.descript, CS_FALSE, DESCRIPTION_LIMIT);
        seen |= DESCRIPTION;
    } else if (key == "menuname") {
        status = comn__get_string(context, ifile, nullptr, CS_FALSE, DESCRIPTION_LIMIT);
        seen |= MENUNAME;
    } else if (key == "preference") {
        status = comn__get_boolval(context, ifile, &header.preference);
    } else if (key == "binary") {
        status = comn__get_boolval(context, ifile, &header.isbin);
    } else {
        return false;
    }
    return true;
}

// ---- Characters of a value ----

// The bytes of a value, with a NUL behind the last.
class Bytes {
public:
    Bytes(const CS_BYTE *at, CS_INT length) : at_(at), end_(at + length) {}

    CS_BYTE here() const { return at_ < end_ ? *at_ : CS_BYTE(0); }
    CS_BYTE behind() const { return end_ - at_ > 1 ? at_[1] : CS_BYTE(0); }
    bool is_at_end() const { return at_ >= end_; }
    CS_BYTE take() {
        const CS_BYTE c = here();
        if (at_ < end_)
            ++at_;
        return c;
    }
    bool take_if(CS_BYTE c) {
        if (is_at_end() || here() != c)
            return false;
        ++at_;
        return true;
    }
    bool take_if(std::string_view word) {
        if (static_cast<std::size_t>(end_ - at_) < word.size() || std::memcmp(at_, word.data(), word.size()) != 0)
            return false;
        at_ += word.size();
        return true;
    }
    void skip_blanks() {
        while (take_if(BLANK)) {
        }
    }

private:
    const CS_BYTE *at_;
    const CS_BYTE *end_;
};

bool is_form(const LIGSTRUCT &lig, CS_BYTE c) {
    return c != 0 && std::strchr(reinterpret_cast<const char *>(lig.lig), c) != nullptr;
}

// The byte is a form of one of the ligatures.
bool is_ligature(const LIGSTRUCT *ligs, int count, CS_BYTE c) {
    return std::any_of(ligs, ligs + count, [c](const LIGSTRUCT &lig) { return is_form(lig, c); });
}

// The byte is one of the letters that a ligature stands for.
bool is_letter(const LIGSTRUCT *ligs, int count, CS_BYTE c) {
    return std::any_of(ligs, ligs + count, [c](const LIGSTRUCT &lig) { return lig.first == c || lig.second == c; });
}

// How often the letter stands in ligatures that sort behind their letters.
int references_to(const LIGSTRUCT *ligs, int count, CS_BYTE c) {
    int references = 0;
    for (const LIGSTRUCT *lig = ligs; lig < ligs + count; ++lig)
        if (lig->type == LIG_AFTER)
            references += (lig->first == c) + (lig->second == c);
    return references;
}

// ---- Weights ----

LSC weight_of(int p, int s, int t) {
    LSC weight = {0};
    weight.pst = {static_cast<CS_BYTE>(p), static_cast<CS_BYTE>(s), static_cast<CS_BYTE>(t), 0};
    return weight;
}

// The weights leave the byte behind them alone: it leads to the chain.
void set_weight(LSC &at, int p, int s, int t) {
    const CS_BYTE chain = at.pst.smelist;
    at = weight_of(p, s, t);
    at.pst.smelist = chain;
}

bool is_full(const SO_1CLASS &so) { return so.nsmels >= SO_SMELS; }

void clear_table(SO_1CLASS &so) {
    so = {};
    so.stat1 = SO_PRIMARY;
    for (LSC &weight : so.lscs)
        weight.pst.smelist = SMEL_END;
    for (SMEL &smel : so.smels)
        smel.next_smel = SMEL_END;
}

// ---- Ligatures of one entry ----

// One list of forms, "a=b=c".
bool read_forms(Bytes value, LIGSTRUCT *ligs, int count) {
    LIGSTRUCT &lig = ligs[count];
    lig = {};
    std::size_t forms = 0;
    do {
        value.skip_blanks();
        const CS_BYTE c = value.take();
        if (c == 0 || is_ligature(ligs, count, c) || is_form(lig, c) || is_letter(ligs, count, c))
            return false;
        if (forms == sizeof lig.lig - 1)
            return false;
        lig.lig[forms++] = c;
        value.skip_blanks();
    } while (value.take_if(JOIN));
    return value.is_at_end();
}

// The two letters of the value that ends an entry.
bool read_letters(Bytes value, const LIGSTRUCT *ligs, int count, CS_BYTE &first, CS_BYTE &second) {
    value.skip_blanks();
    first = value.take();
    second = value.take();
    return first != 0 && second != 0 && !is_ligature(ligs, count, first) && !is_ligature(ligs, count, second) &&
           value.is_at_end();
}

// The word that the last value of an entry begins with, and its type; 0 for any other value.
CS_BYTE take_type(Bytes &value) {
    value.skip_blanks();
    if (value.take_if(std::string_view("after ")))
        return LIG_AFTER;
    return value.take_if(std::string_view("equal ")) ? LIG_EQUAL : 0;
}

} // namespace
} // namespace dlx

using namespace dlx;

CS_RETCODE comn__get_sort_description(CsContext *context, S_DESCRIPT *descript, CS_CHAR **entry, INTL_LOCFILE *ifile) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(descript, CS_FAIL);
    COM_REQUIRE_PTR(entry, CS_FAIL);
    COM_REQUIRE_PTR(ifile, CS_FAIL);
    descript->preference = 1;
    descript->isbin = 0;
    int seen = 0;
    CS_RETCODE status = CS_SUCCEED;
    while ((*entry = next_entry(context, ifile, status)) != nullptr) {
        if (!read_header_key(context, *entry, *descript, seen, ifile, status))
            break;
        if (status != CS_SUCCEED)
            return COM_TRACE(status);
    }
    if (status == CS_EINTL)
        return COM_TRACE(status);
    if (seen != ALL)
        return COM_TRACE(CS_FAIL);
    bool may_end_here;
    if (*entry == nullptr)
        may_end_here = descript->isbin != 0;
    else if (descript->class_ == FIRST_CLASS)
        may_end_here = is_one_of(*entry, FIRST_CLASS_KEYS);
    else
        may_end_here = is_one_of(*entry, SECOND_CLASS_KEYS);
    return may_end_here ? CS_SUCCEED : COM_TRACE(CS_FAIL);
}

CS_RETCODE comn__get_lig(CsContext *context, INTL_LOCFILE *ifile, LIGSTRUCT *ligs, int *nligsp) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(ifile, CS_FAIL);
    COM_REQUIRE_PTR(ligs, CS_FAIL);
    COM_REQUIRE_PTR(nligsp, CS_FAIL);
    int count = *nligsp;
    for (;;) {
        CS_INT length;
        CS_RETCODE status;
        const CS_BYTE *const bytes = next_value(context, ifile, length, status);
        if (bytes == nullptr)
            return COM_TRACE(status);
        Bytes value(bytes, length);
        if (const CS_BYTE type = take_type(value)) {
            CS_BYTE first, second;
            if (!read_letters(value, ligs, count, first, second))
                return COM_TRACE(CS_FAIL);
            for (; *nligsp < count; ++*nligsp) {
                ligs[*nligsp].first = first;
                ligs[*nligsp].second = second;
                ligs[*nligsp].type = type;
            }
            return CS_SUCCEED;
        }
        if (count == LIG_MAX || !read_forms(Bytes(bytes, length), ligs, count))
            return COM_TRACE(CS_FAIL);
        ++count;
    }
}

CS_RETCODE comn__add_smel(SO_1CLASS *so, CS_BYTE *cp, CS_BYTE *cdbl, int p, int s, int t) {
    COM_REQUIRE_PTR(so, CS_FAIL);
    COM_REQUIRE_PTR(cp, CS_FAIL);
    COM_REQUIRE_PTR(cdbl, CS_FAIL);
    LSC &weight = so->lscs[*cp];
    if (*cdbl == 0) {
        if (weight.pst.t != 0)
            return COM_TRACE(CS_FAIL);
        for (int at = weight.pst.smelist; at != SMEL_END && so->smels[at].next_smel != SMEL_END;
             at = so->smels[at].next_smel)
            if (so->smels[at].type_smel != SMEL_PAIR)
                return COM_TRACE(CS_FAIL);
        set_weight(weight, p, s, t);
        return CS_SUCCEED;
    }
    for (int at = weight.pst.smelist; at != SMEL_END; at = so->smels[at].next_smel) {
        const SMEL &smel = so->smels[at];
        const bool is_pair = smel.type_smel == SMEL_PAIR || smel.type_smel == SMEL_PAIR + 1;
        if (!is_pair || smel.smel_types.sm_1type.xtraw == *cdbl)
            return COM_TRACE(CS_FAIL);
    }
    if (is_full(*so))
        return COM_TRACE(CS_FAIL);
    SMEL &pair = so->smels[so->nsmels];
    pair.type_smel = SMEL_PAIR;
    pair.noxtraw = 1;
    pair.smel_types.sm_1type.xtraw = *cdbl;
    pair.smel_types.sm_1type.lsc1 = weight_of(p, s, t);
    pair.next_smel = weight.pst.smelist;
    weight.pst.smelist = so->nsmels++;
    return CS_SUCCEED;
}

namespace dlx {
namespace {

// The counters of one entry: a value is a secondary weight, an item of it a tertiary one.
struct Counters {
    int p;
    int s;
    int t;
};

// One item of a value: a byte, or two. `is_first` says that it is the one that the entry's primary weight is known by.
CS_RETCODE add_item(SO_1CLASS &so, Bytes &value, bool is_double, const LIGSTRUCT *ligs, int nligs, const Counters &at,
                    int &step, CS_BYTE *next_char) {
    CS_BYTE c = value.take();
    CS_BYTE second = 0;
    if (c == 0 || is_ligature(ligs, nligs, c))
        return CS_FAIL;
    if (is_double) {
        second = value.take();
        if (second == 0 || second == JOIN || second == BLANK || is_ligature(ligs, nligs, second))
            return CS_FAIL;
        so.stat1 |= SO_PAIRS;
        so.last_char = second;
    } else {
        step += references_to(ligs, nligs, c);
        so.last_char = c;
    }
    const CS_RETCODE status = comn__add_smel(&so, &c, &second, at.p, at.s, at.t);
    if (status == CS_SUCCEED && !is_double && at.s == 0 && at.t == 1) {
        for (int weight = next_char[NEXT_FREE]; weight < at.p; ++weight)
            next_char[weight] = c;
        next_char[NEXT_FREE] = static_cast<CS_BYTE>(at.p);
    }
    return status;
}

CS_RETCODE add_value(SO_1CLASS &so, Bytes value, const LIGSTRUCT *ligs, int nligs, Counters &at, bool preference,
                     CS_BYTE *next_char) {
    if (value.is_at_end())
        return CS_FAIL;
    if (at.s > 1 && (so.stat1 & SO_PRIMARY) != 0)
        so.stat1 = static_cast<CS_BYTE>((so.stat1 & ~SO_PRIMARY) | SO_SECONDARY);
    // Looked at once: all items of the value are as wide as the first.
    const bool is_double = value.behind() != 0 && value.behind() != BLANK && value.behind() != JOIN;
    int step = 1;
    for (;;) {
        if (at.t >= 2 && preference)
            so.stat1 = static_cast<CS_BYTE>((so.stat1 & ~(SO_PRIMARY | SO_SECONDARY)) | SO_TERTIARY);
        const CS_RETCODE status = add_item(so, value, is_double, ligs, nligs, at, step, next_char);
        if (status != CS_SUCCEED)
            return status;
        ++at.t;
        if (!value.take_if(JOIN))
            break;
        so.stat1 |= SO_EQUAL;
    }
    at.s += step; // leaves room for the ligatures behind the letters
    at.t = 1;
    return value.is_at_end() || value.here() == BLANK ? CS_SUCCEED : CS_FAIL;
}

} // namespace
} // namespace dlx

CS_RETCODE comn__get_char(CsContext *context, SO_1CLASS *so, INTL_LOCFILE *ifile, LIGSTRUCT *ligs, int nligs, int p,
                          int s, int t, int preference, CS_BYTE *next_char) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(so, CS_FAIL);
    COM_REQUIRE_PTR(ifile, CS_FAIL);
    COM_REQUIRE_PTR(ligs, CS_FAIL);
    COM_REQUIRE_PTR(next_char, CS_FAIL);
    Counters at = {p, s, t};
    for (;;) {
        CS_INT length;
        CS_RETCODE status;
        const CS_BYTE *const value = next_value(context, ifile, length, status);
        if (value == nullptr)
            return status == CS_FAIL ? CS_SUCCEED : COM_TRACE(status);
        status = add_value(*so, Bytes(value, length), ligs, nligs, at, preference != 0, next_char);
        if (status != CS_SUCCEED)
            return COM_TRACE(status);
    }
}

CS_RETCODE comn__do_ligs(SO_1CLASS *so, LIGSTRUCT *ligs, int nligs) {
    COM_REQUIRE_PTR(so, CS_FAIL);
    COM_REQUIRE_PTR(ligs, CS_FAIL);
    for (int i = 0; i < nligs; ++i) {
        const LIGSTRUCT &lig = ligs[i];
        const auto letter_weight = [&](CS_BYTE letter, int t) {
            const LSC &own = so->lscs[letter];
            const int behind = references_to(ligs, i, letter) + (lig.type == LIG_AFTER ? 1 : 0);
            return weight_of(own.pst.p, own.pst.s + behind, t);
        };
        int t = 1;
        for (const CS_BYTE *form = lig.lig; *form != 0; ++form, ++t) {
            if (t > 1)
                so->stat1 |= SO_EQUAL;
            if (is_full(*so))
                return COM_TRACE(CS_FAIL);
            SMEL &smel = so->smels[so->nsmels];
            smel.next_smel = SMEL_END;
            smel.type_smel = SMEL_EXPAND;
            smel.noxtraw = 0;
            smel.smel_types.sm_3type.lsc1 = letter_weight(lig.first, t);
            smel.smel_types.sm_3type.lsc2 = letter_weight(lig.second, t);
            so->lscs[*form].pst.smelist = so->nsmels++;
        }
    }
    return CS_SUCCEED;
}

namespace dlx {
namespace {

// Moves the weights of a byte with exceptions to the end of its chain.
bool chain_own_weight(SO_1CLASS &so, LSC &weight) {
    if (is_full(so))
        return false;
    CS_BYTE *end = &weight.pst.smelist;
    while (*end != SMEL_END)
        end = &so.smels[*end].next_smel;
    SMEL &own = so.smels[so.nsmels];
    own.next_smel = SMEL_END;
    own.type_smel = SMEL_OWN;
    own.noxtraw = 0;
    own.smel_types.sm_0type.lsc1 = weight_of(weight.pst.p, weight.pst.s, weight.pst.t);
    *end = so.nsmels++;
    set_weight(weight, 0, 0, 0);
    return true;
}

// Tells each weight of a chain the character behind it.
bool link_chain(SO_1CLASS &so, int head, const CS_BYTE *next_char) {
    const auto link = [next_char](LSC &weight) { weight.pst.smelist = next_char[weight.pst.p]; };
    for (int at = head; at != SMEL_END; at = so.smels[at].next_smel) {
        SMEL &smel = so.smels[at];
        switch (smel.type_smel) {
        case SMEL_OWN:
            link(smel.smel_types.sm_0type.lsc1);
            break;
        case SMEL_PAIR:
            link(smel.smel_types.sm_1type.lsc1);
            break;
        case SMEL_EXPAND:
            link(smel.smel_types.sm_3type.lsc1);
            link(smel.smel_types.sm_3type.lsc2);
            break;
        default:
            return false;
        }
    }
    return true;
}

} // namespace
} // namespace dlx

CS_RETCODE comn__check_sort(SO_1CLASS *so, CS_BYTE *next_char) {
    COM_REQUIRE_PTR(so, CS_FAIL);
    COM_REQUIRE_PTR(next_char, CS_FAIL);
    so->lscs[0] = weight_of(0, 0, 1);
    so->lscs[0].pst.smelist = SMEL_END;
    next_char[NEXT_FREE] = 0;
    for (LSC &weight : so->lscs) {
        const int head = weight.pst.smelist;
        if (head != SMEL_END && weight.pst.t != 0) {
            if (!chain_own_weight(*so, weight))
                return COM_TRACE(CS_FAIL);
        } else if (weight.pst.t == 0 && (head == SMEL_END || so->smels[head].type_smel == SMEL_PAIR)) {
            return COM_TRACE(CS_FAIL); // no character of its own, or only the first half of pairs
        }
        if (weight.pst.t != 0)
            weight.pst.smelist = next_char[weight.pst.p];
        else if (!link_chain(*so, weight.pst.smelist, next_char))
            return COM_TRACE(CS_FAIL);
    }
    return CS_SUCCEED;
}

CS_RETCODE comn__build_class1(CsContext *context, CsSortDesc *sortorder, CS_CHAR *entry, INTL_LOCFILE *ifile) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(sortorder, CS_FAIL);
    COM_REQUIRE_PTR(ifile, CS_FAIL);
    const S_DESCRIPT &header = *sortorder->char_sort_descript;
    if (header.isbin != 0)
        return CS_SUCCEED;
    COM_REQUIRE_PTR(entry, CS_FAIL);
    SO_1CLASS *const so = static_cast<SO_1CLASS *>(std::calloc(1, sizeof(SO_1CLASS)));
    if (so == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    sortorder->char_sort_class = so;
    clear_table(*so);

    LIGSTRUCT ligs[LIG_MAX];
    int nligs = 0;
    CS_BYTE next_char[256] = {};
    CS_RETCODE status;
    while (std::string_view(entry) == "lig") {
        so->stat1 |= SO_PAIRS | SO_LIGATURES;
        status = comn__get_lig(context, ifile, ligs, &nligs);
        if (status != CS_SUCCEED)
            return COM_TRACE(status);
        entry = next_entry(context, ifile, status);
        if (entry == nullptr)
            return COM_TRACE(status);
    }
    for (int p = 1; p <= LAST_PRIMARY; ++p) {
        if (std::strcmp(entry, "char") != 0) {
            if (std::strcmp(entry, "ignore char") == 0)
                break; // nothing behind it is looked at
            return COM_TRACE(CS_FAIL);
        }
        status = comn__get_char(context, so, ifile, ligs, nligs, p, 0, 1, header.preference, next_char);
        if (status != CS_SUCCEED)
            return COM_TRACE(status);
        entry = next_entry(context, ifile, status);
        if (entry == nullptr) {
            if (status != CS_FAIL)
                return COM_TRACE(status);
            break;
        }
    }
    status = comn__do_ligs(so, ligs, nligs);
    return status == CS_SUCCEED ? comn__check_sort(so, next_char) : COM_TRACE(status);
}

void comn__sortorder_drop(CsSortDesc *sortorder) {
    if (sortorder == nullptr)
        return;
    std::free(sortorder->char_sort_descript);
    std::free(sortorder->char_sort_class);
    std::free(sortorder);
}

namespace dlx {
namespace {

CS_RETCODE read_order(CS_CONTEXT *context, CsSortDesc &order, INTL_LOCFILE *ifile) {
    CS_RETCODE status = find_section(context, ifile, SECTION);
    if (status != CS_SUCCEED)
        return status;
    order.char_sort_descript = static_cast<S_DESCRIPT *>(std::calloc(1, sizeof(S_DESCRIPT)));
    if (order.char_sort_descript == nullptr)
        return CS_MEM_ERROR;
    CS_CHAR *entry = nullptr;
    status = comn__get_sort_description(context, order.char_sort_descript, &entry, ifile);
    if (status != CS_SUCCEED)
        return status;
    // Orders of the second class are known by their headers, and have no table.
    return order.char_sort_descript->class_ == FIRST_CLASS ? comn__build_class1(context, &order, entry, ifile)
                                                           : CS_FAIL;
}

CS_RETCODE load_order(CS_CONTEXT *context, CsSortDesc &order, const CsLocCache &lcache, CS_CHAR *locfilename,
                      CS_INT filenamelen) {
    INTL_LOCFILE ifile;
    const CS_RETCODE status = com__open_charfile(context, lcache.charname, lcache.sortname,
                                                 const_cast<CS_CHAR *>(EXTENSION), &ifile, locfilename, filenamelen);
    if (status != CS_SUCCEED)
        return status;
    const CS_RETCODE read = close_file(context, &ifile, read_order(context, order, &ifile));
    if (read == CS_SUCCEED)
        context->ctxintlerr = INTL_OK; // of an earlier failure nothing is left
    return read;
}

} // namespace
} // namespace dlx

CS_RETCODE comn__intl_load_sortorder(CsContext *context, CsOID *oid, CsLocCache *lcache, CS_CHAR *locfilename,
                                     CS_INT filenamelen) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(oid, CS_FAIL);
    COM_REQUIRE_PTR(lcache, CS_FAIL);
    COM_REQUIRE_PTR(lcache->locchardesc, CS_FAIL);
    CsSortDesc *&orders = lcache->locchardesc->sort_order;
    for (CsSortDesc *order = orders; order != nullptr; order = order->sortnext) {
        if (order->oid == oid) {
            lcache->locsortorder = order;
            return CS_SUCCEED;
        }
    }
    CsSortDesc *const order = static_cast<CsSortDesc *>(std::calloc(1, sizeof(CsSortDesc)));
    if (order == nullptr)
        return COM_TRACE(CS_MEM_ERROR);
    order->oid = oid;
    const CS_RETCODE status = load_order(context, *order, *lcache, locfilename, filenamelen);
    if (status != CS_SUCCEED) {
        comn__sortorder_drop(order);
        return COM_TRACE(status);
    }
    order->sortnext = orders;
    orders = order;
    lcache->locsortorder = order;
    return CS_SUCCEED;
}
