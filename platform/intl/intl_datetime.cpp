// The date data of a language.
#include <dlxintl/intl.h>

#include <cstring>
#include <string_view>

namespace {

// The values of a list of texts, each of at most Size - 1 bytes.
template <int Count, int Size>
int read_names(INTL_LOCFILE *ifile, char (&names)[Count][Size]) {
    int status = 0;
    int count = 0;
    while (const char *value = intl_nextvalue(ifile, &status)) {
        if (count == Count || intl_strlcpy(names[count], value, Size) >= static_cast<std::size_t>(Size))
            return INTL_EBADDATE;
        ++count;
    }
    if (status < 0)
        return status;
    return count == Count ? INTL_OK : INTL_EBADDATE;
}

int read_order(INTL_LOCFILE *ifile, char (&order)[4]) {
    char name[1][4];
    const int status = read_names(ifile, name);
    if (status == INTL_OK)
        std::memcpy(order, name[0], sizeof order);
    return status;
}

int read_flag(INTL_LOCFILE *ifile, int &flag) {
    char word[1][6];
    const int status = read_names(ifile, word);
    if (status != INTL_OK)
        return status;
    flag = std::string_view(word[0]) == "true";
    return flag != 0 || std::string_view(word[0]) == "false" ? INTL_OK : INTL_EBADDATE;
}

// A day of the week, 1 to 7.
int read_day(INTL_LOCFILE *ifile, int &day) {
    char digit[1][2];
    const int status = read_names(ifile, digit);
    if (status != INTL_OK)
        return status;
    day = digit[0][0] - '0';
    return day >= 1 && day <= 7 ? INTL_OK : INTL_EBADDATE;
}

enum Seen { MONTHS = 1, SHORTMONTHS = 2, DAYS = 4, FIRSTDAY = 8, DATEORDER = 16, IS12HOUR = 32, ALL = 63 };

// Reads the values of a key and notes it.
int read_key(INTL_LOCFILE *ifile, std::string_view key, intl_dateinfo &info, int &seen) {
    if (key == "months") {
        seen |= MONTHS;
        return read_names(ifile, info.months);
    }
    if (key == "shortmonths") {
        seen |= SHORTMONTHS;
        return read_names(ifile, info.shortmonths);
    }
    if (key == "days") {
        seen |= DAYS;
        return read_names(ifile, info.days);
    }
    if (key == "firstday") {
        seen |= FIRSTDAY;
        return read_day(ifile, info.firstday);
    }
    if (key == "dateorder") {
        seen |= DATEORDER;
        return read_order(ifile, info.dateorder);
    }
    if (key == "is12hour") {
        seen |= IS12HOUR;
        return read_flag(ifile, info.is12hour);
    }
    return INTL_OK; // a site's own
}

} // namespace

int intl_datetime(INTL_LOCFILE *ifile, intl_dateinfo *dateinfo) {
    int seen = 0;
    int status = INTL_OK;
    while (const char *key = intl_nextentry(ifile, &status)) {
        const int read = read_key(ifile, key, *dateinfo, seen);
        if (read != INTL_OK)
            return read;
    }
    if (status < 0)
        return status;
    return seen == ALL ? INTL_OK : INTL_EBADDATE;
}
