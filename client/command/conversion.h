// One conversion through the matrix, and all that a caller sees of it.
#ifndef DLX_CLIENT_COMMAND_CONVERSION_H
#define DLX_CLIENT_COMMAND_CONVERSION_H

#include "literals.h"

namespace client {

enum class Cell { empty, filled, not_runnable };

// A cell whose function does not take the row's id tells that a conversion exists, but cannot run.
Cell cell(CS_CONTEXT *context, CS_INT from, CS_INT to);

// The exported name of a conversion function.
std::string function_name(CS_CONV_FUNC function);

// The datatypes that `from` converts to.
std::vector<const Datatype *> destinations(CS_CONTEXT *context, const Datatype &from);

// The function of a pair that can run; the failure tells which pairs would.
Maybe<CS_CONV_FUNC> find_conversion(CS_CONTEXT *context, const Datatype &from, const Datatype &to);

// What a conversion left behind.
struct Result {
    CS_RETCODE status = CS_FAIL;
    std::optional<CS_INT> destlen; // empty when the conversion did not set it
    std::vector<CS_BYTE> bytes;    // the bytes in use of the result
    bool written = false;          // whether all of them are
    bool broke_contract = false;   // the library reported a mistake of its caller on standard error
};

// Calls the function on a destination of the given format.
Result convert(CS_CONTEXT *context, CS_CONV_FUNC function, const Value &value, const CS_DATAFMT &destination);

// The result as a person reads it; "-" where there is none. Through the matrix where that converts to text.
std::string result_text(CS_CONTEXT *context, const Datatype &type, const Result &result);

// While one of these lives a broken contract is reported and returns; otherwise it ends the process.
class ReportsReturn {
public:
    ReportsReturn();
    ~ReportsReturn();
    ReportsReturn(const ReportsReturn &) = delete;
    ReportsReturn &operator=(const ReportsReturn &) = delete;

private:
    void (*previous_)(int);
};

} // namespace client

#endif
