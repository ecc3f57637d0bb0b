// The character sets that ship: where their characters are known from, and how their bytes go together.
#ifndef HOME_GENERATOR_SETS_H
#define HOME_GENERATOR_SETS_H

#include <span>
#include <string_view>

namespace home {

// Who tells the characters of a set.
enum class Source {
    iconv,   // the C library
    icu,     // where the C library has no such set
    mac_thai // neither has it
};

// How bytes make characters.
enum class Form {
    single,     // one byte each, ASCII below 0x80
    ebcdic,     // one byte each, another place for everything. Of sets that shift to pairs: their single bytes
    pairs,      // `first_lead` to 0xFE begin two bytes
    sjis,       // 0x81 to 0x9F and 0xE0 to 0xFC begin two bytes
    euc_japan,  // 0xA1 to 0xFE and 0x8E begin two bytes, 0x8F three
    euc_taiwan, // 0xA1 to 0xFE begin two bytes, 0x8E four
    gb18030,    // 0x81 to 0xFE begin two bytes, or four where a digit follows
    utf8,
    utf16,     // in machine order, low byte first
    compressed // the compression scheme for Unicode: what bytes mean in its initial state
};

struct Set {
    std::string_view name;
    Form form;
    Source source;
    const char *source_name;
    std::string_view description;
    int first_lead = 0;
};

std::span<const Set> sets();
bool has_sort_orders(const Set &set);

} // namespace home

#endif
