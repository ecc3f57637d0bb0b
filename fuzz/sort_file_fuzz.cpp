// The file of a sort order: of any content, or of an order that the input describes, which has the table of the naive
// maker. What loads is a table on which every walk ends, and by which texts of the input's choice compare as the naive
// comparer has it.
#include "input.h"
#include "support/naive_sort.h"
#include "support/sort_home.h"

namespace naive = support::naive;

namespace {

// What a comparison and the sibling libraries take for granted of a table.
void check_table(const SO_1CLASS &table) {
    FUZZ_CHECK(table.nsmels <= SO_SMELS);
    FUZZ_CHECK(table.lscs[0].pst.t == 1);
    int elements = 0;
    for (const LSC &weight : table.lscs) {
        if (weight.pst.t != 0)
            continue;
        FUZZ_CHECK((weight.lsclong & 0xFFFFFF) == 0);
        int steps = 0;
        for (int at = weight.pst.smelist; at != SMEL_END; at = table.smels[at].next_smel) {
            FUZZ_CHECK(at < table.nsmels);
            FUZZ_CHECK(++steps <= SO_SMELS);
            const SMEL &smel = table.smels[at];
            const bool is_pair = smel.type_smel == SMEL_PAIR;
            FUZZ_CHECK(is_pair || smel.type_smel == SMEL_OWN || smel.type_smel == SMEL_EXPAND);
            FUZZ_CHECK(smel.noxtraw == (is_pair ? 1 : 0));
            FUZZ_CHECK((smel.next_smel == SMEL_END) == !is_pair); // the last always matches
        }
        FUZZ_CHECK(steps > 0);
        elements += steps;
    }
    FUZZ_CHECK(elements == table.nsmels);
}

void compare(SO_1CLASS &table, const std::string &text1, const std::string &text2) {
    fuzz::ExactBuffer one(text1.size(), text1), other(text2.size(), text2);
    char *const str1 = reinterpret_cast<char *>(one.get()), *const str2 = reinterpret_cast<char *>(other.get());
    const int len1 = static_cast<int>(text1.size()), len2 = static_cast<int>(text2.size());
    FUZZ_CHECK(com__ps_dl_sqlhilo(&table, str1, len1, str2, len2) == naive::compare(table, text1, text2));
    FUZZ_CHECK(com__ps_dl_sqlhilo(&table, str2, len2, str1, len1) == naive::compare(table, text2, text1));
    FUZZ_CHECK(com__spec_tord(&table, str1, len1, str2, len2) == naive::compare_tertiary(table, text1, text2));
}

// The end of the content, which the loader has read as well, in two texts that begin alike.
void compare_texts(SO_1CLASS &table, const std::string &content) {
    const std::string end = content.substr(content.size() - std::min<std::size_t>(content.size(), 20));
    for (std::size_t i = 0; i < end.size(); i += 5)
        for (std::size_t j = 0; j <= end.size(); j += 7) {
            const std::string beginning = end.substr(0, i);
            compare(table, beginning + end.substr(j), beginning + end.substr(i));
        }
    for (const char c : end)
        for (const char d : end)
            compare(table, {c, d, c}, {d, c});
}

// A byte for each step: most define the character that the next byte names.
naive::SortOrder described_order(const std::string &content) {
    naive::SortOrder order;
    fuzz::Input input(reinterpret_cast<const unsigned char *>(content.data()), content.size());
    order.preference = (input.byte() & 1) != 0;
    std::string forms, letters;
    const auto letter = [&] {
        const CS_BYTE c = input.byte();
        return c == 0 ? 'a' : static_cast<char>(c);
    };
    const auto is_new_form = [&](char c) {
        return c != ' ' && forms.find(c) == std::string::npos && letters.find(c) == std::string::npos;
    };
    for (int ligatures = input.byte() % 6; ligatures > 0; --ligatures) {
        naive::Ligature ligature;
        const CS_BYTE lists = input.byte();
        ligature.is_after = lists >= 128;
        ligature.first = letter();
        ligature.second = letter();
        for (int list = lists % 3; list >= 0; --list) {
            std::string chosen;
            for (int form = input.byte() % 10; form >= 0; --form)
                if (const char c = letter(); is_new_form(c) && c != ligature.first && c != ligature.second) {
                    chosen += c;
                    forms += c;
                }
            if (!chosen.empty())
                ligature.lists.push_back(chosen);
        }
        // Blanks in front of the letters are not part of them.
        if (ligature.first == ' ' || forms.find(ligature.first) != std::string::npos ||
            forms.find(ligature.second) != std::string::npos)
            continue;
        letters += {ligature.first, ligature.second};
        order.ligatures.push_back(ligature);
    }
    for (int items = input.byte(); items > 0; --items) {
        const CS_BYTE step = input.byte();
        std::string item(1, letter());
        if (step % 8 == 7)
            item += letter();
        if (step < 64 || order.characters.empty() || items % 64 == 0)
            order.characters.push_back({{item}});
        else if (step < 128 || order.characters.back().back().back().size() != item.size())
            order.characters.back().push_back({item});
        else
            order.characters.back().back().push_back(item);
    }
    return order.fill(1 + input.byte() % 20);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    static const support::SortHome home;
    fuzz::Input input(data, size);
    const bool is_described = (input.byte() & 1) != 0;
    const std::string content = input.rest();
    const naive::SortOrder order = is_described ? described_order(content) : naive::SortOrder();
    home.write(is_described ? naive::file_of(order) : content);

    support::SortSet set;
    const CS_RETCODE status = set.load();
    FUZZ_CHECK(status == CS_SUCCEED || status == CS_FAIL || status == CS_EINTL);
    FUZZ_CHECK((status == CS_EINTL) == (set.context_.ctxintlerr != 0));
    if (is_described) {
        const auto expected = naive::table_of(order);
        FUZZ_CHECK(status == (expected ? CS_SUCCEED : CS_FAIL));
        FUZZ_CHECK(!expected || std::memcmp(set.table(), &*expected, sizeof *expected) == 0);
    }
    if (status != CS_SUCCEED) {
        FUZZ_CHECK(set.set_.sort_order == nullptr && set.cache_.locsortorder == nullptr);
        return 0;
    }
    const S_DESCRIPT &header = *set.order()->char_sort_descript;
    FUZZ_CHECK(header.class_ == 1 && header.id != 0);
    FUZZ_CHECK(std::strlen(header.name) < 30 && std::strlen(header.charset) < 30 && std::strlen(header.descript) < 255);
    FUZZ_CHECK((header.isbin != 0) == (set.table() == nullptr));
    if (set.table() != nullptr) {
        check_table(*set.table());
        compare_texts(*set.table(), content);
    }
    return 0;
}
