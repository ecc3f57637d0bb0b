// What finding a conversion in the matrix and calling it costs, beside a call through a pointer that does no more.
#include "contest.h"
#include "data.h"
#include "owner.h"

namespace bench {
namespace {

using Values = std::vector<CS_INT>;

class Call {
public:
    explicit Call(const Values &values) : values_(values) {
        srcfmt_.datatype = CS_INT_TYPE;
        srcfmt_.maxlength = sizeof(CS_INT);
        destfmt_.datatype = CS_BIGINT_TYPE;
        destfmt_.maxlength = sizeof(CS_BIGINT);
    }
    bool right(std::size_t i) const { return status_ == CS_SUCCEED && destlen_ == 8 && result_ == values_[i]; }

protected:
    void call(CS_CONV_FUNC function, std::size_t i) {
        status_ = function(owner_.context(), &srcfmt_, &values_[i], &destfmt_, &result_, &destlen_);
    }

    client::Owner owner_;
    Values values_;
    CS_DATAFMT srcfmt_ = {};
    CS_DATAFMT destfmt_ = {};
    CS_BIGINT result_ = 0;
    CS_INT destlen_ = 0;
    CS_RETCODE status_ = CS_FAIL;
};

class ThroughMatrix : public Call {
public:
    using Call::Call;
    void work(std::size_t i) { call(com_conv_func(owner_.context(), srcfmt_.datatype, destfmt_.datatype), i); }
};

CS_RETCODE widen(CS_CONTEXT *, CS_DATAFMT *, CS_VOID *src, CS_DATAFMT *, CS_VOID *dest, CS_INT *destlen) {
    *static_cast<CS_BIGINT *>(dest) = *static_cast<CS_INT *>(src);
    *destlen = sizeof(CS_BIGINT);
    return CS_SUCCEED;
}

class Bare : public Call {
public:
    using Call::Call;
    void work(std::size_t i) { call(function_, i); }

private:
    CS_CONV_FUNC function_ = widen; // read anew for every call, as nobody can tell who else writes it
};

} // namespace

void enter_dispatch_rows() {
    static const Values values = mixed_integers<CS_INT>(60);
    enter<ThroughMatrix>("com_conv_func and call, int to bigint", LIBRARY, values);
    enter<Bare>("com_conv_func and call, int to bigint", "bare call", values);
}

} // namespace bench
