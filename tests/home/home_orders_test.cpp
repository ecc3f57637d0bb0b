// The sort orders that ship: all pairs of letters against the root collation of ICU, and words.
#include "home/shipped_home.h"

#include <unicode/ucol.h>

#include <algorithm>
#include <cwctype>
#include <map>
#include <memory>

#include <locale.h>

namespace {

struct OrderedSet {
    const char *name;
    const char *iconv_name;
};

constexpr OrderedSet SETS[] = {{"iso_1", "ISO-8859-1"}, {"cp850", "IBM850"},        {"cp437", "IBM437"},
                               {"cp1252", "CP1252"},    {"iso88592", "ISO-8859-2"}, {"iso15", "ISO-8859-15"}};

locale_t unicode() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C.UTF-8", nullptr);
    return locale;
}

class HomeOrders : public ShippedHome, public testing::WithParamInterface<OrderedSet> {
protected:
    SO_1CLASS *table(const char *name) {
        const CsSortDesc *const loaded = order(GetParam().name, name);
        return loaded != nullptr ? static_cast<SO_1CLASS *>(loaded->char_sort_class) : nullptr;
    }

    static int compare(SO_1CLASS *table, std::string left, std::string right) {
        const int result = com__ps_dl_sqlhilo(table, left.data(), static_cast<int>(left.size()), right.data(),
                                              static_cast<int>(right.size()));
        return (result > 0) - (result < 0);
    }

    std::string in_set(const std::string &utf8) const { return recoded(GetParam().iconv_name, "UTF-8", utf8); }

    // Words that the set can write, as they sort; equal ones keep their places.
    Strings sorted(const char *order_name, Strings words) {
        std::erase_if(words, [this](const std::string &word) { return in_set(word).empty(); });
        SO_1CLASS *const so = table(order_name);
        std::ranges::stable_sort(words, [&](const std::string &left, const std::string &right) {
            return compare(so, in_set(left), in_set(right)) < 0;
        });
        return words;
    }
    Strings writable(Strings words) const {
        std::erase_if(words, [this](const std::string &word) { return in_set(word).empty(); });
        return words;
    }
};

INSTANTIATE_TEST_SUITE_P(All, HomeOrders, testing::ValuesIn(SETS),
                         [](const auto &test) { return std::string(test.param.name); });

// ---- Letters -------------------------------------------------------------------------------------------------------

struct Letter {
    std::string byte;
    char32_t character;
};

std::vector<Letter> letters_of(const OrderedSet &set) {
    std::vector<Letter> letters;
    for (int code = 1; code < 256; ++code) {
        const std::string byte(1, static_cast<char>(code));
        const std::string text = recoded("UTF-32LE", set.iconv_name, byte);
        if (text.size() != sizeof(char32_t))
            continue;
        char32_t character;
        std::copy(text.begin(), text.end(), reinterpret_cast<char *>(&character));
        const bool is_lone_accent = character >= 0x02B0 && character <= 0x02FF; // it sorts as a sign
        if (!is_lone_accent && iswalpha_l(static_cast<wint_t>(character), unicode()))
            letters.push_back({byte, character});
    }
    return letters;
}

struct Close {
    void operator()(UCollator *collator) const { ucol_close(collator); }
};

class Root {
public:
    explicit Root(UCollationStrength strength) {
        UErrorCode error = U_ZERO_ERROR;
        collator_.reset(ucol_open("root", &error));
        EXPECT_TRUE(U_SUCCESS(error));
        ucol_setStrength(collator_.get(), strength);
    }
    int compare(char32_t left, char32_t right) const {
        const UChar l = static_cast<UChar>(left), r = static_cast<UChar>(right);
        return ucol_strcoll(collator_.get(), &l, 1, &r, 1);
    }

private:
    std::unique_ptr<UCollator, Close> collator_;
};

TEST_P(HomeOrders, WithoutCaseAndAccentsLettersSortAsInTheRootCollation) {
    const Root root(UCOL_PRIMARY);
    SO_1CLASS *const so = table("noaccent");
    const std::vector<Letter> letters = letters_of(GetParam());
    EXPECT_GT(letters.size(), 80u);
    for (const Letter &left : letters)
        for (const Letter &right : letters)
            EXPECT_EQ(compare(so, left.byte, right.byte), root.compare(left.character, right.character))
                << std::hex << int{static_cast<CS_BYTE>(left.byte[0])} << " "
                << int{static_cast<CS_BYTE>(right.byte[0])};
}

TEST_P(HomeOrders, WithoutCaseOnlyTheCasesOfALetterAreEqual) {
    SO_1CLASS *const so = table("nocase");
    const auto lower = [](const Letter &letter) {
        return towlower_l(static_cast<wint_t>(letter.character), unicode());
    };
    const std::vector<Letter> letters = letters_of(GetParam());
    for (const Letter &left : letters)
        for (const Letter &right : letters)
            EXPECT_EQ(compare(so, left.byte, right.byte) == 0, lower(left) == lower(right))
                << std::hex << int{static_cast<CS_BYTE>(left.byte[0])} << " "
                << int{static_cast<CS_BYTE>(right.byte[0])};
}

TEST_P(HomeOrders, InTheDictionaryNoTwoCharactersAreEqual) {
    SO_1CLASS *const so = table("dict");
    for (int left = 1; left < 256; ++left)
        for (int right = 1; right < 256; ++right) {
            const int result =
                compare(so, std::string(1, static_cast<char>(left)), std::string(1, static_cast<char>(right)));
            if (left == ' ' || right == ' ')
                continue; // blanks at an end do not count
            EXPECT_EQ(result == 0, left == right) << left << " " << right;
        }
}

TEST_P(HomeOrders, PrimaryDifferencesAreThoseOfTheOrderWithoutAccents) {
    SO_1CLASS *const plain = table("noaccent");
    const std::vector<Letter> letters = letters_of(GetParam());
    for (const char *name : {"dict", "nocase"}) {
        SO_1CLASS *const so = table(name);
        for (const Letter &left : letters)
            for (const Letter &right : letters) {
                const int expected = compare(plain, left.byte, right.byte);
                if (expected != 0) {
                    EXPECT_EQ(compare(so, left.byte, right.byte), expected) << name << left.byte << right.byte;
                }
            }
    }
}

TEST_P(HomeOrders, SignsComeBeforeDigitsAndDigitsBeforeLetters) {
    for (const char *name : {"dict", "nocase", "noaccent"}) {
        SO_1CLASS *const so = table(name);
        const std::string order = " !#*+.?_~059AbYz";
        for (std::size_t i = 1; i + 1 < order.size(); ++i)
            EXPECT_LT(compare(so, order.substr(i, 1), order.substr(i + 1, 1)), 0) << name << " " << order[i];
        EXPECT_LT(compare(so, "a b", "a!b"), 0);
        EXPECT_LT(compare(so, "a\tb", "a b"), 0);
    }
}

// ---- Words ---------------------------------------------------------------------------------------------------------

TEST_P(HomeOrders, DictionarySortsWordsByLettersThenAccentsAndCase) {
    const Strings words = {"1",    "a",    "Apfel", "apfel", "Äpfel", "äpfel", "apfelbaum", "Bär",
                           "cote", "coté", "côte",  "côté",  "Zebra", "zebra", "Zoo"};
    Strings shuffled = words;
    std::ranges::reverse(shuffled);
    EXPECT_EQ(sorted("dict", shuffled), writable(words));
}

TEST_P(HomeOrders, CentralEuropeanWordsSortByTheirLetters) {
    const Strings words = {"Čapek", "Cecil", "Ďas", "ěra", "lad", "łan", "lot", "źle", "ze", "że", "zima"};
    const Strings expected = {"Čapek", "Cecil", "Ďas", "ěra", "lad", "łan", "lot", "ze", "że", "zima", "źle"};
    EXPECT_EQ(sorted("dict", words), writable(expected));
}

TEST_P(HomeOrders, WithoutCaseWordsInBothCasesKeepTheirPlaces) {
    const Strings words = {"zebra", "Apfel", "APFEL", "apfel", "Äpfel", "äPFEL", "ZEBRA"};
    const Strings expected = {"Apfel", "APFEL", "apfel", "Äpfel", "äPFEL", "zebra", "ZEBRA"};
    EXPECT_EQ(sorted("nocase", words), writable(expected));
}

TEST_P(HomeOrders, WithoutAccentsWordsWithThemKeepTheirPlaces) {
    const Strings words = {"côté", "COTE", "coté", "cote", "Äpfel", "apfel", "zoo"};
    const Strings expected = {"Äpfel", "apfel", "côté", "COTE", "coté", "cote", "zoo"};
    EXPECT_EQ(sorted("noaccent", words), writable(expected));
}

TEST_P(HomeOrders, LigaturesStandBehindTheirLetters) {
    const Strings words = {"Strasse", "Straße", "Strasser", "Stratus"};
    EXPECT_EQ(sorted("dict", {"Stratus", "Strasser", "Straße", "Strasse"}), words);
    EXPECT_EQ(compare(table("nocase"), in_set("STRASSE"), in_set("strasse")), 0);
    EXPECT_LT(compare(table("nocase"), in_set("STRASSE"), in_set("straße")), 0);
    EXPECT_EQ(compare(table("noaccent"), in_set("STRASSE"), in_set("straße")), 0);
    if (in_set("æ").empty())
        return; // there is none in Central Europe
    EXPECT_EQ(sorted("dict", {"aft", "Æra", "ære", "aera", "aerob", "Aera", "adel"}),
              (Strings{"adel", "Aera", "Æra", "aera", "ære", "aerob", "aft"}));
    EXPECT_EQ(compare(table("noaccent"), in_set("ÆRA"), in_set("aera")), 0);
    EXPECT_EQ(compare(table("nocase"), in_set("ÆRA"), in_set("æra")), 0);
    if (!in_set("œ").empty()) {
        EXPECT_EQ(compare(table("noaccent"), in_set("CŒUR"), in_set("coeur")), 0);
        EXPECT_GT(compare(table("dict"), in_set("cœur"), in_set("coeur")), 0);
        EXPECT_LT(compare(table("dict"), in_set("cœur"), in_set("cog")), 0);
    }
}

TEST_P(HomeOrders, BinaryHasNoTable) { EXPECT_EQ(table("binary"), nullptr); }

class HomeOrderFiles : public ShippedHome {};

TEST_F(HomeOrderFiles, EverySetHasTheBinaryOrder) {
    for (const CSID_CSNAME &set : shipped_sets()) {
        const CsSortDesc *const loaded = order(name_of(set), "binary");
        ASSERT_NE(loaded, nullptr) << name_of(set);
        EXPECT_STREQ(loaded->char_sort_descript->charset, name_of(set).c_str());
        EXPECT_STREQ(loaded->char_sort_descript->name, "binary");
        EXPECT_NE(loaded->char_sort_descript->isbin, 0);
    }
}

TEST_F(HomeOrderFiles, NamesAndNumbersAreThoseOfTheIdentifiers) {
    const std::map<std::string, int> numbers = {{"binary", 1}, {"dict", 2}, {"nocase", 3}, {"noaccent", 4}};
    for (const OrderedSet &set : SETS)
        for (const auto &[name, number] : numbers) {
            const CsSortDesc *const loaded = order(set.name, name);
            ASSERT_NE(loaded, nullptr);
            EXPECT_STREQ(loaded->char_sort_descript->name, name.c_str());
            EXPECT_STREQ(loaded->char_sort_descript->charset, set.name);
            EXPECT_EQ(loaded->char_sort_descript->id, number);
            EXPECT_EQ(text_of(loaded->oid->oidstring, loaded->oid->oidnamelen),
                      "1.3.6.1.4.1.54321.5." + std::to_string(number));
        }
}

} // namespace
