// Format data files, of which none is in use yet, and what reads their values.

#include "charset/locvalue.h"
#include "diag/check.h"

#include <dlxcomn/locale.h>

#include <cstdlib>

namespace dlx {
namespace {

constexpr CS_INT PATH_SIZE = 1025;
constexpr CS_INT NO_GROUPING = -1;

// What a type of data has in a cache.
CS_CHAR *name_of(const CsLocCache &cache, CS_INT type) {
    switch (type) {
    case CS_LOCDATA_MONEY:
        return cache.monname;
    case CS_LOCDATA_NUMERIC:
        return cache.numname;
    default:
        return cache.datename;
    }
}

bool find_loaded(CS_CONTEXT *context, CS_INT type, CsOID *oid, CsLocCache &cache) {
    switch (type) {
    case CS_LOCDATA_MONEY:
        cache.locmoninfo = comn__scan_cache_mon(context, oid);
        return cache.locmoninfo != nullptr;
    case CS_LOCDATA_NUMERIC:
        cache.locnuminfo = comn__scan_cache_num(context, oid);
        return cache.locnuminfo != nullptr;
    default:
        if (CS_DATEINFO *const info = comn__scan_cache_dt(context, oid)) {
            cache.locdateinfo = info;
            return true;
        }
        return false;
    }
}

CS_RETCODE read_data(CS_CONTEXT *context, CS_INT type, INTL_LOCFILE *ifile, CsOID *oid, CsLocCache &cache) {
    switch (type) {
    case CS_LOCDATA_MONEY:
        return comn__read_monfile(context, ifile, oid, &cache.locmoninfo);
    case CS_LOCDATA_NUMERIC:
        return comn__read_numfile(context, ifile, oid, &cache.locnuminfo);
    default:
        return comn__read_dtfile(context, ifile, oid, &cache.locdateinfo);
    }
}

// The numbers of a list, as they are read.
class Numbers {
public:
    ~Numbers() { std::free(numbers_); }

    bool append(CS_INT number) {
        auto *const grown =
            static_cast<CS_INT *>(std::realloc(numbers_, static_cast<std::size_t>(count_ + 1) * sizeof number));
        if (grown == nullptr)
            return false;
        numbers_ = grown;
        numbers_[count_++] = number;
        return true;
    }
    CS_INT count() const { return count_; }
    CS_INT first() const { return numbers_[0]; }
    CS_INT *hand_over() {
        CS_INT *const numbers = numbers_;
        numbers_ = nullptr;
        return numbers;
    }

private:
    CS_INT *numbers_ = nullptr;
    CS_INT count_ = 0;
};

// Reads the next number; CS_FAIL with a status of the reader that is good is the end.
CS_RETCODE next_number(INTL_LOCFILE *ifile, CHAR_ATTRIB *charattrib, CS_INT &number) {
    int reader = 0;
    CS_CHAR *const value = intl_nextvalue(ifile, &reader);
    if (value == nullptr)
        return reader < 0 ? CS_EINTL : CS_FAIL;
    constexpr int LONGEST_VALUE = 1024;
    constexpr int LONGEST_CHARACTER = 15; // may pass the end
    CS_CHAR digits[LONGEST_VALUE + LONGEST_CHARACTER + 1];
    CS_INT length = 0;
    comn_str_to_ascii(value, intl_valuelen(ifile), digits, &length, charattrib);
    digits[length] = '\0';
    number = std::atoi(digits);
    return CS_SUCCEED;
}

} // namespace
} // namespace dlx

using namespace dlx;

CS_RETCODE comn__load_locdata(CsContext *context, CS_INT type, CsOID *oid, CsLocCache *lcache, CS_CHAR *locfilename,
                              CS_INT filenamelen) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(oid, CS_FAIL);
    COM_REQUIRE_PTR(lcache, CS_FAIL);
    COM_REQUIRE(locfilename == nullptr || filenamelen >= 1, CS_FAIL);
    if (type != CS_LOCDATA_MONEY && type != CS_LOCDATA_NUMERIC && type != CS_LOCDATA_DATETIME)
        return COM_TRACE(CS_FAIL);
    if (find_loaded(context, type, oid, *lcache))
        return CS_SUCCEED;
    CS_CHAR path[PATH_SIZE];
    CS_RETCODE status = comn__path_locdata(context, type, name_of(*lcache, type), path, sizeof path);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    if (locfilename != nullptr)
        intl_strlcpy(locfilename, path, static_cast<std::size_t>(filenamelen));
    INTL_LOCFILE ifile;
    const int opened = intl_open(path, &ifile);
    if (opened < 0) {
        context->ctxintlerr = opened;
        return COM_TRACE(CS_ENOLOCFILE);
    }
    status = read_data(context, type, &ifile, oid, *lcache);
    intl_close(&ifile);
    return status;
}

CS_RETCODE comn__read_grp(INTL_LOCFILE *ifile, CHAR_ATTRIB *charattrib, CS_INT **grpptr, CS_INT *cntptr) {
    COM_REQUIRE_PTR(ifile, CS_FAIL);
    COM_REQUIRE_PTR(grpptr, CS_FAIL);
    COM_REQUIRE_PTR(cntptr, CS_FAIL);
    *grpptr = nullptr;
    *cntptr = 0;
    Numbers numbers;
    CS_INT number;
    CS_RETCODE status;
    while ((status = next_number(ifile, charattrib, number)) == CS_SUCCEED) {
        if (!numbers.append(number))
            return COM_TRACE(CS_MEM_ERROR);
        if (numbers.count() > 1)
            continue;
        if (number == 0 || number < NO_GROUPING)
            return COM_TRACE(CS_FAIL);
        if (number == NO_GROUPING)
            break; // done, whatever follows
    }
    if (status == CS_EINTL)
        return COM_TRACE(status);
    if (numbers.count() == 0)
        return CS_SUCCEED;
    // A list that begins with a size needs a second number, and then cannot meet this: only -1 alone can.
    const CS_BIGINT sum = CS_BIGINT{numbers.first()} + numbers.count();
    if (sum != 0 && sum != 1)
        return COM_TRACE(CS_FAIL);
    *cntptr = numbers.count();
    *grpptr = numbers.hand_over();
    return CS_SUCCEED;
}

CS_RETCODE comn__chk_format(CS_INT type, ParseStruct *pptr, CS_BYTE *eptr) {
    for (; pptr != nullptr; pptr = pptr->next)
        if (pptr->type == type)
            return eptr != nullptr;
    return CS_SUCCEED;
}
