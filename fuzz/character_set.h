// A character set that the input chooses: one of the constructed ones, changed at places that it names.
#ifndef FUZZ_CHARACTER_SET_H
#define FUZZ_CHARACTER_SET_H

#include "input.h"
#include "support/charsets.h"

#include <memory>

namespace fuzz {

// One byte chooses the set, one tells the number of changes, and each change has three: what, where, and the
// new value. A null set is iso_1.
class ChosenSet {
public:
    explicit ChosenSet(Input &input) : set_(base_set(input.byte() % 7)) {
        const int changes = input.byte() % 64;
        for (int i = 0; i < changes; ++i) {
            const int what = input.byte() % 8;
            const int code = input.byte();
            const int value = input.byte();
            if (set_)
                change(what, code, value);
        }
        if (set_)
            confine_norm_pages();
    }
    CS_ATTRIB *get() { return set_ ? set_->get() : nullptr; }

private:
    static std::unique_ptr<support::ConstructedSet> base_set(int kind) {
        switch (kind) {
        case 1:
            return std::make_unique<support::DoubleByteSet>();
        case 2:
            return std::make_unique<support::ThreeByteSet>();
        case 3:
            return std::make_unique<support::FourByteSet>();
        case 4:
            return std::make_unique<support::ConstructedSet>(0, 0);
        case 5:
            return std::make_unique<support::ConstructedSet>(2, 0);
        case 6:
            return std::make_unique<support::ConstructedSet>(0, 2);
        default:
            return nullptr;
        }
    }

    void change(int what, int code, int value) {
        const int types = set_->get()->cs_ntype;
        const int norms = set_->get()->cs_nnorm;
        const auto byte = static_cast<CS_BYTE>(value);
        switch (what) {
        case 0:
            set_->width(code, code, value % 16, value / 16);
            break;
        case 1:
            set_->four_byte_codes();
            break;
        case 2:
            set_->without_width_map();
            break;
        case 3:
            if (types != 0)
                set_->type_row(code, value % types);
            break;
        case 4:
            if (types != 0)
                set_->type(value % types, code,
                           {byte, static_cast<CS_BYTE>(value * 5), static_cast<CS_BYTE>(value * 3),
                            static_cast<CS_BYTE>(value & ~CS_CT_ROW)});
            break;
        case 5:
            if (norms != 0)
                set_->norm(0, code, value);
            break;
        default:
            if (norms != 0)
                set_->norm(norms - 1, code, value);
        }
    }

    // The first byte of a wide character names a page that exists.
    void confine_norm_pages() {
        const CS_ATTRIB &record = *set_->get();
        if (record.cs_norm_map == nullptr || record.cs_width_map == nullptr)
            return;
        for (int code = 0; code < 256; ++code)
            if (record.cs_width_map[code] % 16 > 1)
                set_->norm(0, code, record.cs_norm_map[0].norm[code] % record.cs_nnorm);
    }

    std::unique_ptr<support::ConstructedSet> set_;
};

} // namespace fuzz

#endif
