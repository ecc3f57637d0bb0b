// The built-in conversion matrix, built by rule at compile time.
//
// A cell holds comn_<word of the row>to<word of the column> where the row's filled columns include it. What
// differs from that rule stands in `exceptions`. A cell whose family is not in the library is null.
#include "diag/check.h"

#include <dlxcomn/dlxcomn.h>

#include <array>

namespace {

// The words of conversion functions. NONE has no conversions.
enum Word {
    CHAR, BIN, I1, I2, I4, I8, UI2, UI4, UI8, BIT, FLT4, FLT8, MONEY, MNY4, NUM, VARCHAR, VARBIN,
    DATETIME, DATE4, DATEA, TIMEA, BIGDATETIME, BIGTIME, UNICHAR, LOCATOR, VOID, NONE
};
constexpr int WORD_COUNT = NONE;

constexpr Word word_of[CS_CONV_DIM] = {
    CHAR,  BIN,    CHAR,    BIN,  CHAR,    BIN,     I1,          I2,          I4,      FLT4,    // 0 to 9
    FLT8,  BIT,    DATETIME, DATE4, MONEY, MNY4,    NUM,         NUM,         VARCHAR, VARBIN,  // 10 to 19
    I8,    CHAR,   CHAR,    VOID, NONE,    UNICHAR, NONE,        DATEA,       TIMEA,   UNICHAR, // 20 to 29
    I8,    UI2,    UI4,     UI8,  CHAR,    BIGDATETIME, BIGTIME, LOCATOR,     LOCATOR, LOCATOR, // 30 to 39
};

// A set of ids, a bit each.
using Ids = unsigned long long;
constexpr Ids ids() { return 0; }
template <class... Rest>
constexpr Ids ids(int id, Rest... rest) {
    return 1ull << id | ids(rest...);
}
constexpr Ids range(int first, int last) { return first > last ? 0 : 1ull << first | range(first + 1, last); }
constexpr bool holds(Ids set, int id) { return (set >> id & 1) != 0; }

constexpr Ids ALL = range(0, 39);
constexpr Ids NUMBER_COLUMNS = range(0, 11) | range(14, 20) | ids(25, 29) | range(30, 33);
constexpr Ids DATE_COLUMNS = ids(0, 2, 4, 12, 13, 18, 19, 25, 27, 28, 29, 35, 36);
constexpr Ids I8_COLUMNS = ids(8, 16, 17, 20, 30, 31, 32, 33);
constexpr Ids TEXT_COLUMNS = ALL & ~ids(23, 24, 26);
constexpr Ids LOCATOR_COLUMNS = range(37, 39);

constexpr Ids filled_columns(int row) {
    switch (row) {
    case 0:
        return TEXT_COLUMNS;
    case 2:
    case 4:
    case 18:
        return TEXT_COLUMNS & ~LOCATOR_COLUMNS;
    case 1:
    case 3:
    case 5:
    case 19:
        return TEXT_COLUMNS & ~LOCATOR_COLUMNS & ~ids(21, 22);
    case 6:
    case 7:
    case 8:
    case 9:
    case 10:
    case 14:
    case 15:
    case 16:
    case 17:
    case 30:
    case 31:
    case 32:
    case 33:
        return NUMBER_COLUMNS;
    case 11:
        return NUMBER_COLUMNS & ~ids(14, 15);
    case 12:
    case 13:
    case 35:
        return DATE_COLUMNS;
    case 27:
        return DATE_COLUMNS & ~ids(28, 36);
    case 28:
    case 36:
        return DATE_COLUMNS & ~ids(27);
    case 20:
        return I8_COLUMNS;
    case 21:
        return ids(0, 2, 4, 8, 18, 21);
    case 22:
        return ids(0, 2, 4, 18, 22);
    case 23:
        return range(0, 36);
    case 25:
    case 29:
        return range(0, 20) | ids(25) | range(27, 33) | ids(35, 36);
    case 34:
        return range(0, 5) | ids(18, 19, 34);
    case 37:
        return ids(0, 4, 37) | I8_COLUMNS;
    case 38:
        return ids(0, 5, 38) | I8_COLUMNS;
    case 39:
        return ids(0, 25, 39) | I8_COLUMNS;
    default:
        return 0;
    }
}

// The members of a source word, by destination word.
using Members = std::array<CS_CONV_FUNC, WORD_COUNT>;

// The destinations that every number has, money apart.
#define COMMON_NUMBER_MEMBERS(source)                                                                       \
    members[CHAR] = comn_##source##tochar;                                                                   \
    members[BIN] = comn_##source##tobin;                                                                     \
    members[I1] = comn_##source##toi1;                                                                       \
    members[I2] = comn_##source##toi2;                                                                       \
    members[I4] = comn_##source##toi4;                                                                       \
    members[I8] = comn_##source##toi8;                                                                       \
    members[UI2] = comn_##source##toui2;                                                                     \
    members[UI4] = comn_##source##toui4;                                                                     \
    members[UI8] = comn_##source##toui8;                                                                     \
    members[BIT] = comn_##source##tobit;                                                                     \
    members[FLT4] = comn_##source##toflt4;                                                                   \
    members[FLT8] = comn_##source##toflt8;                                                                   \
    members[NUM] = comn_##source##tonum;                                                                     \
    members[VARCHAR] = comn_##source##tovarchar;                                                             \
    members[VARBIN] = comn_##source##tovarbin

#define NUMBER_MEMBERS(source)                                                                              \
    COMMON_NUMBER_MEMBERS(source);                                                                           \
    members[MONEY] = comn_##source##tomoney;                                                                 \
    members[MNY4] = comn_##source##tomny4

constexpr Members members_of(Word source) {
    Members members = {};
    switch (source) {
    case I1:
        NUMBER_MEMBERS(i1);
        break;
    case I2:
        NUMBER_MEMBERS(i2);
        break;
    case I4:
        NUMBER_MEMBERS(i4);
        break;
    case I8:
        NUMBER_MEMBERS(i8);
        break;
    case UI2:
        NUMBER_MEMBERS(ui2);
        break;
    case UI4:
        NUMBER_MEMBERS(ui4);
        break;
    case UI8:
        NUMBER_MEMBERS(ui8);
        break;
    case FLT4:
        NUMBER_MEMBERS(flt4);
        break;
    case FLT8:
        NUMBER_MEMBERS(flt8);
        break;
    case NUM:
        NUMBER_MEMBERS(num);
        break;
    case BIT:
        COMMON_NUMBER_MEMBERS(bit);
        break;
    default:
        break;
    }
    return members;
}

#undef NUMBER_MEMBERS
#undef COMMON_NUMBER_MEMBERS

struct Exception {
    Ids rows;
    Ids columns;
    CS_CONV_FUNC function;
};

// Cells that do not hold what their words say. The i8 functions take only ids 20 and 30, so a value whose
// descriptor says 21, 37, 38 or 39 ends in their assertion: the cell tells that a conversion exists, and the
// descriptor whether it runs. Callers rely on both.
constexpr Exception exceptions[] = {
    {ids(23), range(0, 36), comn_voidtoany},
    {ids(23), ids(23), comn_voidtovoid},
    {ids(21), ids(8), comn_i8toi4},
    {LOCATOR_COLUMNS, ids(8), comn_i8toi4},
    {LOCATOR_COLUMNS, ids(16, 17), comn_i8tonum},
    {LOCATOR_COLUMNS, ids(20, 30), comn_i8toi8},
    {LOCATOR_COLUMNS, ids(31), comn_i8toui2},
    {LOCATOR_COLUMNS, ids(32), comn_i8toui4},
    {LOCATOR_COLUMNS, ids(33), comn_i8toui8},
};

using Matrix = std::array<CS_CONV_FUNC, CS_CONV_DIM * CS_CONV_DIM>;

constexpr Matrix build_matrix() {
    Matrix matrix = {};
    for (int row = 0; row < CS_CONV_DIM; ++row) {
        const Members members = members_of(word_of[row]);
        const Ids filled = filled_columns(row);
        for (int column = 0; column < CS_CONV_DIM; ++column)
            if (holds(filled, column) && word_of[column] != NONE)
                matrix[row * CS_CONV_DIM + column] = members[word_of[column]];
    }
    for (const Exception &exception : exceptions)
        for (int row = 0; row < CS_CONV_DIM; ++row)
            for (int column = 0; column < CS_CONV_DIM; ++column)
                if (holds(exception.rows, row) && holds(exception.columns, column))
                    matrix[row * CS_CONV_DIM + column] = exception.function;
    return matrix;
}

constexpr Matrix matrix = build_matrix();

} // namespace

#define TEN_CELLS(n)                                                                                          \
    matrix[n], matrix[n + 1], matrix[n + 2], matrix[n + 3], matrix[n + 4], matrix[n + 5], matrix[n + 6],      \
        matrix[n + 7], matrix[n + 8], matrix[n + 9]
#define TWO_ROWS(n)                                                                                           \
    TEN_CELLS(n), TEN_CELLS(n + 10), TEN_CELLS(n + 20), TEN_CELLS(n + 30), TEN_CELLS(n + 40),                 \
        TEN_CELLS(n + 50), TEN_CELLS(n + 60), TEN_CELLS(n + 70)

constinit const CS_CONV_FUNC Com__cnvrt_array[CS_CONV_DIM * CS_CONV_DIM] = {
    TWO_ROWS(0),    TWO_ROWS(80),   TWO_ROWS(160),  TWO_ROWS(240),  TWO_ROWS(320),
    TWO_ROWS(400),  TWO_ROWS(480),  TWO_ROWS(560),  TWO_ROWS(640),  TWO_ROWS(720),
    TWO_ROWS(800),  TWO_ROWS(880),  TWO_ROWS(960),  TWO_ROWS(1040), TWO_ROWS(1120),
    TWO_ROWS(1200), TWO_ROWS(1280), TWO_ROWS(1360), TWO_ROWS(1440), TWO_ROWS(1520),
};

void com__get_ctbl(CS_CONV_FUNC **cvt_array, int *cvt_dim) {
    COM_REQUIRE_PTR(cvt_array);
    COM_REQUIRE_PTR(cvt_dim);
    *cvt_array = const_cast<CS_CONV_FUNC *>(Com__cnvrt_array);
    *cvt_dim = CS_CONV_DIM;
}
