// Comparison by a sort order.
//
// Most bytes have weights of their own, and a comparison is a lookup for each. Texts that begin alike are stepped over
// as raw bytes first: equal bytes have equal weights, but for a byte in front of the difference that may form a pair
// with it.

#include "bytes/memory.h"
#include "diag/check.h"

#include <dlxcomn/sortorder.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace dlx {
namespace {

constexpr char BLANK = ' ';
constexpr LSC NO_WEIGHT = {0};

// One of the two texts: where it is, and the second half of an expansion.
class Weights {
public:
    Weights(SO_1CLASS *so, char *at, char *end) : so_(so), at_(at), end_(end), hold_(NO_WEIGHT) {}

    bool is_at_end() const { return hold_.lsclong == 0 && at_ >= end_; }
    bool has_hold() const { return hold_.lsclong != 0; }

    // Not at the end.
    LSC next() {
        if (has_hold()) {
            const LSC held = hold_;
            hold_ = NO_WEIGHT;
            return held;
        }
        LSC weight = so_->lscs[static_cast<CS_BYTE>(*at_++)];
        if (weight.pst.t == 0) [[unlikely]]
            com__smel_lsc(so_->smels, weight.pst.smelist, &at_, end_, &weight, &hold_);
        return weight;
    }

    void step_back() { --at_; }
    // Nothing but blanks is left, whatever weight a blank has.
    bool is_blank() const {
        const char *at = at_;
        while (at < end_ && *at == BLANK)
            ++at;
        return at >= end_; // a text of negative length is behind its end at once
    }

private:
    SO_1CLASS *so_;
    char *at_;
    char *end_;
    LSC hold_;
};

// Bytes in which both texts begin alike.
int common_bytes(const char *str1, const char *str2, int length) {
    int common = 0;
    for (; length - common >= 8; common += 8)
        if (const auto difference = load<std::uint64_t>(str1 + common) ^ load<std::uint64_t>(str2 + common))
            return common + std::countr_zero(difference) / 8;
    while (common < length && str1[common] == str2[common])
        ++common;
    return common;
}

// Where a comparison may begin. A byte with weights of its own begins no pair, so behind it a character begins,
// whatever stands in front.
int first_difference(const SO_1CLASS *so, const char *str1, int len1, const char *str2, int len2) {
    int start = common_bytes(str1, str2, std::min(len1, len2));
    while (start > 0 && so->lscs[static_cast<CS_BYTE>(str1[start - 1])].pst.t == 0)
        --start;
    return start;
}

} // namespace
} // namespace dlx

using namespace dlx;

void com__smel_lsc(SMEL *smels, int smel_1st, char **raw_cur, char *raw_end, LSC *lsc, LSC *hold) {
    COM_REQUIRE_PTR(smels);
    COM_REQUIRE_PTR(raw_cur);
    COM_REQUIRE_PTR(lsc);
    COM_REQUIRE_PTR(hold);
    *lsc = *hold = NO_WEIGHT;
    for (int at = smel_1st;; at = smels[at].next_smel) {
        COM_REQUIRE(at != SMEL_END); // the loader ends each chain with an element that matches
        const SMEL &smel = smels[at];
        switch (smel.type_smel) {
        case SMEL_OWN:
            *lsc = smel.smel_types.sm_0type.lsc1;
            return;
        case SMEL_EXPAND:
            *lsc = smel.smel_types.sm_3type.lsc1;
            *hold = smel.smel_types.sm_3type.lsc2;
            return;
        case SMEL_PAIR:
            if ((raw_end == nullptr || *raw_cur < raw_end) &&
                static_cast<CS_BYTE>(**raw_cur) == smel.smel_types.sm_1type.xtraw) {
                ++*raw_cur;
                *lsc = smel.smel_types.sm_1type.lsc1;
                return;
            }
            break;
        default:
            COM_REQUIRE(false);
        }
    }
}

int com__ps_dl_sqlhilo(SO_1CLASS *so, char *str1, int len1, char *str2, int len2) {
    COM_REQUIRE_PTR(so, 0);
    const int start = first_difference(so, str1, len1, str2, len2);
    Weights first(so, str1 + start, str1 + len1);
    Weights second(so, str2 + start, str2 + len2);
    int secondary = 0;
    while (!first.is_at_end()) {
        const LSC weight1 = first.next();
        if (second.is_at_end()) {
            first.step_back();
            return first.is_blank() ? secondary : 1;
        }
        const LSC weight2 = second.next();
        if (weight1.pst.p != weight2.pst.p)
            return weight1.pst.p - weight2.pst.p;
        if (secondary == 0)
            secondary = weight1.pst.s - weight2.pst.s;
    }
    return second.has_hold() || !second.is_blank() ? -1 : secondary;
}

int com__spec_tord(SO_1CLASS *so, char *str1, int len1, char *str2, int len2) {
    COM_REQUIRE_PTR(so, 0);
    const int start = first_difference(so, str1, len1, str2, len2);
    Weights first(so, str1 + start, str1 + len1);
    Weights second(so, str2 + start, str2 + len2);
    while (!first.is_at_end() && !second.is_at_end()) {
        const LSC weight1 = first.next();
        const LSC weight2 = second.next();
        if (weight1.pst.t != weight2.pst.t)
            return weight1.pst.t - weight2.pst.t;
    }
    return 0;
}

CS_INT com_memhilo(CS_BYTE *p1, CS_INT len1, CS_BYTE *p2, CS_INT len2) {
    const CS_INT common = std::min(len1, len2);
    COM_REQUIRE(common >= 0, 0);
    const int difference = common > 0 ? std::memcmp(p1, p2, static_cast<std::size_t>(common)) : 0;
    if (difference != 0)
        return difference < 0 ? -1 : 1;
    return (len1 > len2) - (len1 < len2);
}

CS_RETCODE com_intl_sortorder(CsLocale *locale, CS_VOID **sortorder) {
    COM_REQUIRE_PTR(locale, CS_FAIL);
    COM_REQUIRE_PTR(sortorder, CS_FAIL);
    const auto *const collation = static_cast<const CsLocCache *>(locale->collateptr);
    if (collation == nullptr || collation->locchardesc == nullptr || collation->locchardesc->sort_order == nullptr)
        return COM_TRACE(CS_FAIL);
    COM_REQUIRE_PTR(collation->locsortorder, CS_FAIL);
    *sortorder = collation->locsortorder->char_sort_class;
    return CS_SUCCEED;
}
