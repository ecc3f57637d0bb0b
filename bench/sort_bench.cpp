// Comparison by a sort order: neighbours of a list of words of 20 bytes, of which some begin alike, against a collator
// of ICU at the same strength, the C library's collation, and the comparison of plain bytes.
#include "contest.h"
#include "data.h"

#include <unicode/ucol.h>

#include <algorithm>
#include <clocale>
#include <cstring>

namespace bench {
namespace {

constexpr std::size_t LENGTH = 20;

struct Words {
    std::vector<std::string> bytes; // each beside those that it is compared with
    std::vector<std::u16string> units;
    SO_1CLASS order = {};
};

// Neighbours share their first 0 to 15 letters, as they do where a list is being sorted. In the order a letter's two
// cases differ on the tertiary level alone.
const Words &words() {
    static const Words result = [] {
        Words made;
        Random random(71);
        std::string word(LENGTH, 'a');
        for (std::size_t i = 0; i <= VALUES; ++i) {
            for (std::size_t at = below(random, 16); at < LENGTH; ++at)
                word[at] = static_cast<char>('a' + below(random, 26));
            made.bytes.push_back(word);
            made.units.emplace_back(word.begin(), word.end());
        }
        for (int code = 0; code < 256; ++code) {
            const bool is_lower = code >= 'a' && code <= 'z';
            const int letter = is_lower ? code - 'a' + 'A' : code;
            made.order.lscs[code].pst = {static_cast<CS_BYTE>(letter), 0, static_cast<CS_BYTE>(is_lower ? 2 : 1), 0};
        }
        return made;
    }();
    return result;
}

int sign_of(int number) { return (number > 0) - (number < 0); }

class Comparison {
public:
    explicit Comparison(const Words &words) : words_(words) {}
    bool right(std::size_t i) const {
        return sign_of(result_) == sign_of(words_.bytes[i].compare(words_.bytes[i + 1]));
    }

protected:
    const Words &words_;
    int result_ = 0;
};

class LibraryOrder : public Comparison {
public:
    explicit LibraryOrder(const Words &words) : Comparison(words), order_(words.order) {}
    void work(std::size_t i) {
        result_ = com__ps_dl_sqlhilo(&order_, const_cast<char *>(words_.bytes[i].data()), LENGTH,
                                     const_cast<char *>(words_.bytes[i + 1].data()), LENGTH);
    }

private:
    SO_1CLASS order_;
};

class IcuCollator : public Comparison {
public:
    explicit IcuCollator(const Words &words) : Comparison(words) {
        UErrorCode error = U_ZERO_ERROR;
        collator_ = ucol_open("en", &error);
        ucol_setStrength(collator_, UCOL_SECONDARY);
    }
    ~IcuCollator() { ucol_close(collator_); }
    void work(std::size_t i) {
        result_ = ucol_strcoll(collator_, words_.units[i].data(), LENGTH, words_.units[i + 1].data(), LENGTH);
    }

private:
    UCollator *collator_;
};

// In a language's own locale where the machine has one; else it is strcmp.
class CLibraryCollation : public Comparison {
public:
    explicit CLibraryCollation(const Words &words) : Comparison(words) {
        for (const char *name : {"en_US.UTF-8", "de_DE.UTF-8", "C.UTF-8", "C"})
            if (locale_ == locale_t(0))
                locale_ = newlocale(LC_COLLATE_MASK, name, locale_t(0));
    }
    ~CLibraryCollation() { freelocale(locale_); }
    void work(std::size_t i) { result_ = strcoll_l(words_.bytes[i].c_str(), words_.bytes[i + 1].c_str(), locale_); }

private:
    locale_t locale_ = locale_t(0);
};

class Memcmp : public Comparison {
public:
    using Comparison::Comparison;
    void work(std::size_t i) {
        std::size_t length = LENGTH;
        benchmark::DoNotOptimize(length); // a call, as with a length that is not known
        result_ = std::memcmp(words_.bytes[i].data(), words_.bytes[i + 1].data(), length);
    }
};

} // namespace

void enter_sort_rows() {
    enter<LibraryOrder>("com__ps_dl_sqlhilo", LIBRARY, words());
    enter<IcuCollator>("com__ps_dl_sqlhilo", "ICU", words());
    enter<CLibraryCollation>("com__ps_dl_sqlhilo", "strcoll_l", words());
    enter<Memcmp>("com__ps_dl_sqlhilo", "memcmp", words());
}

} // namespace bench
