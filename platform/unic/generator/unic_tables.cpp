// Writes the table files of all sets: unic_tables DIRECTORY MAPPINGS. A set comes from the C library's iconv, else from
// ICU, and is changed by the mapping text of its number where there is one.
#include "mapping.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace unic_tables {

void fail(const std::string &message) {
    std::cerr << "unic_tables: " << message << "\n";
    std::exit(1);
}

namespace {

enum Kind { PLAIN, SHIFT };

struct Source {
    int number;
    const char *iconv_name; // null where the C library's set of this name is another one
    const char *icu_name;   // null where ICU has none
    Kind kind = PLAIN;
};

// A set without either name is all in its mapping text.
constexpr Source SOURCES[] = {
    {1, "ISO-8859-1", "ISO-8859-1"},
    {2, "IBM850", "ibm-850"},
    {3, "IBM437", "ibm-437"},
    {4, "HP-ROMAN8", "hp-roman8"},
    {5, "MACINTOSH", nullptr},
    {8, "EUC-JP", "EUC-JP"}, // its codes of two bytes
    {9, "EUC-TW", "EUC-TW"},
    {10, "EUC-CN", "ibm-5478"},
    {11, "CP932", "windows-932"},
    {12, "ISO-8859-2", "ISO-8859-2"},
    {13, "ISO-8859-5", "ISO-8859-5"},
    {14, "ISO-8859-6", "ISO-8859-6"},
    {15, "ISO-8859-7", "ISO-8859-7"},
    {16, "ISO-8859-8", "ISO-8859-8"},
    {17, "ISO-8859-9", "ISO-8859-9"},
    {18, "ISO-8859-10", "ISO-8859-10"},
    {19, "ISO-8859-3", "ISO-8859-3"},
    {20, "ISO-8859-4", "ISO-8859-4"},
    {21, "ISO-8859-15", "ISO-8859-15"},
    {26, "MAC-CYRILLIC", "macos-7_3-10.2"},
    {27, "MAC-CENTRALEUROPE", "macos-29-10.2"},
    {28, nullptr, "macos-6_2-10.4"},
    {29, nullptr, "macos-35-10.2"},
    {30, "HP-GREEK8", nullptr},
    {31, "HP-TURKISH8", nullptr},
    {32, "KOI8-R", "KOI8-R"},
    {33, "TIS-620", "ibm-874"},
    {34, "BIG5", "Big5"},
    {36, "EUC-KR", "EUC-KR"},
    {37, "IBM037", "ibm-37"},
    {41, nullptr, nullptr},
    {42, "ISO-8859-13", "ISO-8859-13"},
    {43, "ISO-8859-14", "ISO-8859-14"},
    {44, "HP-ROMAN9", nullptr},
    {45, nullptr, "macos-0_2-10.2"},
    {46, "IBM874", "ibm-874"},
    {47, "BIG5-HKSCS", "Big5-HKSCS"},
    {48, "GB18030", "gb18030"},
    {49, "EUC-JP", "EUC-JP"},
    {50, "SJIS", "Shift_JIS"},
    {54, "RK1048", nullptr},
    {273, "IBM273", "ibm-273"},
    {277, "IBM277", "ibm-277"},
    {278, "IBM278", "ibm-278"},
    {280, "IBM280", "ibm-280"},
    {284, "IBM284", "ibm-284"},
    {285, "IBM285", "ibm-285"},
    {290, "IBM290", "ibm-290"},
    {297, "IBM297", "ibm-297"},
    {420, "IBM420", "ibm-420"},
    {424, "IBM424", "ibm-424"},
    {500, "IBM500", "ibm-500"},
    {737, "CP737", "ibm-737"},
    {775, "CP775", "ibm-775"},
    {852, "IBM852", "ibm-852"},
    {855, "IBM855", "ibm-855"},
    {856, "IBM856", "ibm-856"},
    {857, "IBM857", "ibm-857"},
    {858, "IBM858", "ibm-858"},
    {860, "IBM860", "ibm-860"},
    {861, "IBM861", "ibm-861"},
    {862, "IBM862", "ibm-862"},
    {863, "IBM863", "ibm-863"},
    {864, "IBM864", "ibm-864"},
    {865, "IBM865", "ibm-865"},
    {866, "IBM866", "ibm-866"},
    {869, "IBM869", "ibm-869"},
    {870, "IBM870", "ibm-870"},
    {871, "IBM871", "ibm-871"},
    {874, "CP874", "windows-874"},
    {875, "CP875", "ibm-875"},
    {921, "IBM921", "ibm-921"},
    {923, nullptr, "ibm-923"},
    {930, "IBM930", "ibm-930", SHIFT},
    {932, "IBM932", "ibm-942"},
    {933, "IBM933", "ibm-933", SHIFT},
    {935, "IBM935", "ibm-935", SHIFT},
    {936, "GBK", "windows-936"},
    {937, "IBM937", "ibm-937", SHIFT},
    {939, "IBM939", "ibm-939", SHIFT},
    {949, "UHC", "windows-949"},
    {950, nullptr, "windows-950"}, // in the C library another name of Big5, without the euro and private characters
    {954, nullptr, "ibm-954"},
    {1006, nullptr, "ibm-1006"},
    {1026, "IBM1026", "ibm-1026"},
    {1047, "IBM1047", "ibm-1047"},
    {1140, "IBM1140", "ibm-1140"},
    {1141, "IBM1141", "ibm-1141"},
    {1142, "IBM1142", "ibm-1142"},
    {1143, "IBM1143", "ibm-1143"},
    {1144, "IBM1144", "ibm-1144"},
    {1145, "IBM1145", "ibm-1145"},
    {1146, "IBM1146", "ibm-1146"},
    {1147, "IBM1147", "ibm-1147"},
    {1148, "IBM1148", "ibm-1148"},
    {1149, "IBM1149", "ibm-1149"},
    {1250, "CP1250", "windows-1250"},
    {1251, "CP1251", "windows-1251"},
    {1252, "CP1252", "windows-1252"},
    {1253, "CP1253", "windows-1253"},
    {1254, "CP1254", "windows-1254"},
    {1255, "CP1255", "windows-1255"},
    {1256, "CP1256", "windows-1256"},
    {1257, "CP1257", "windows-1257"},
    {1258, "CP1258", "windows-1258"},
    {3000, "IBM930", "ibm-930", SHIFT}, // of these four the mapping text tells what differs
    {3001, "IBM939", "ibm-939", SHIFT},
    {3002, "IBM930", "ibm-930", SHIFT},
    {3003, "IBM939", "ibm-939", SHIFT},
    {5026, "IBM930", "ibm-930", SHIFT}, // 930 and 939 with fewer private characters: their codes are the same
    {5035, "IBM939", "ibm-939", SHIFT},
};

std::unique_ptr<Reference> reference_of(const Source &source) {
    std::unique_ptr<Reference> reference;
    if (source.iconv_name != nullptr)
        reference = open_iconv(source.iconv_name);
    if (reference == nullptr && source.icu_name != nullptr)
        reference = open_icu(source.icu_name);
    if (reference == nullptr && (source.iconv_name != nullptr || source.icu_name != nullptr))
        fail("neither iconv nor ICU knows the set " + std::to_string(source.number));
    return reference;
}

Mapping mapping_of(const Source &source, const std::string &mappings) {
    Mapping mapping;
    mapping.number = source.number;
    const std::unique_ptr<Reference> reference = reference_of(source);
    if (reference != nullptr)
        mapping = probe(*reference, source.number, source.kind == SHIFT);
    const std::string text = mappings + "/" + std::to_string(source.number) + ".map";
    if (reference == nullptr || std::filesystem::exists(text))
        apply_mapping_text(text, &mapping);
    return mapping;
}

// Beside its name first, then in its place: who has the old file mapped keeps it.
void write_file(const std::string &path, const std::string &content) {
    const std::string fresh = path + ".new";
    std::ofstream file(fresh, std::ios::binary);
    file << content;
    file.close();
    if (!file || std::rename(fresh.c_str(), path.c_str()) != 0)
        fail("cannot write " + path);
}

} // namespace
} // namespace unic_tables

using namespace unic_tables;

int main(int argc, char **argv) {
    if (argc != 3)
        fail("usage: unic_tables DIRECTORY MAPPINGS");
    const std::string directory = argv[1];
    std::filesystem::create_directories(directory);
    for (const Source &source : SOURCES)
        write_file(directory + "/" + std::to_string(source.number) + ".uct", table_file(mapping_of(source, argv[2])));
}
