// The frame of every checked conversion: its arguments as one record, the tests in front, and the shape of an
// exported member.
//
// A family is one kernel over a Conversion; each member is one line that names itself:
//
//     COMN_CONVERSION(comn_i4toi1) { return integer_to_integer<I4, I1>(call); }
//
// The checks of a kernel report the file and line of the member, not of the kernel: that is where a caller's
// mistake leads the reader.
#ifndef DLX_FRAME_CONVERSION_H
#define DLX_FRAME_CONVERSION_H

#include "bytes/memory.h"
#include "diag/check.h"
#include "frame/words.h"

namespace dlx {

struct Conversion {
    CS_CONTEXT *context;
    CS_DATAFMT *srcfmt;
    CS_VOID *src;
    CS_DATAFMT *destfmt;
    CS_VOID *dest;
    CS_INT *destlen;
    SourceLine member;

    // The pointer tests, in the order in which callers see them fail.
    bool has_pointers() const {
        COM_REQUIRE_PTR_AT(member, context, false);
        COM_REQUIRE_PTR_AT(member, src, false);
        COM_REQUIRE_PTR_AT(member, srcfmt, false);
        COM_REQUIRE_PTR_AT(member, dest, false);
        COM_REQUIRE_PTR_AT(member, destfmt, false);
        COM_REQUIRE_PTR_AT(member, destlen, false);
        return true;
    }

    // Both ids are ones that the member serves.
    template <class Source, class Destination>
    bool has_types() const {
        COM_REQUIRE_AT(member, Source::serves(srcfmt->datatype), false);
        COM_REQUIRE_AT(member, Destination::serves(destfmt->datatype), false);
        return true;
    }

    // A destination whose room counts has one that is not negative.
    bool has_room() const {
        COM_REQUIRE_AT(member, destfmt->maxlength >= 0, false);
        return true;
    }

    // All the tests in front of a member. When they fail in the mode where reports return, the member
    // answers CS_FAIL with nothing written.
    template <class Source, class Destination>
    bool is_sound() const {
        return has_pointers() && has_types<Source, Destination>();
    }

    template <class Word>
    typename Word::value_type source() const {
        return load<typename Word::value_type>(src);
    }

    template <class Word>
    void put(const typename Word::value_type &value) const {
        store(dest, value);
    }
};

} // namespace dlx

// Defines the exported member `name`; the body that follows has its arguments as `call`.
#define COMN_CONVERSION(name)                                                                                  \
    static inline CS_RETCODE name##_body(const ::dlx::Conversion &call);                                      \
    CS_RETCODE name(CS_CONTEXT *context, CS_DATAFMT *srcfmt, CS_VOID *src, CS_DATAFMT *destfmt, CS_VOID *dest, \
                    CS_INT *destlen) {                                                                         \
        return name##_body({context, srcfmt, src, destfmt, dest, destlen, COM_HERE});                          \
    }                                                                                                          \
    static inline CS_RETCODE name##_body([[maybe_unused]] const ::dlx::Conversion &call)

#endif
