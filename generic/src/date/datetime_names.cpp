// The English names and conventions that hold where no locale tells otherwise.

#include <dlxcomn/datetext.h>

namespace dlx {
namespace {

constexpr const char *MONTHS[] = {"January", "February", "March",     "April",   "May",      "June",
                                  "July",    "August",   "September", "October", "November", "December"};
constexpr const char *SHORT_MONTHS[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr const char *DAYS[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
constexpr const char *AM_PM[] = {"AM", "PM"};
constexpr const char *ORDER = "mdy";
constexpr CS_INT SUNDAY = 1;

// The interface has lists of plain pointers; nobody writes through them.
template <int N>
char **list(const char *const (&names)[N]) {
    return const_cast<char **>(names);
}

} // namespace
} // namespace dlx

using namespace dlx;

char **com__get_months() { return list(MONTHS); }
char **com__get_shortmonths() { return list(SHORT_MONTHS); }
char **com__get_days() { return list(DAYS); }
CS_INT com__get_firstday() { return SUNDAY; }
char *com__get_date_order() { return const_cast<char *>(ORDER); }
CS_INT com__get_date_order_id() { return DATEORDER_MDY; }
char **com__get_ampm() { return list(AM_PM); }
