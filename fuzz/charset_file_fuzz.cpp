// charset.loc through the loader, against a naive one, and text walked by the set that came of it. An input is a file
// as it stands, or tells how to write one: random content alone would hardly come to an image of 1324 bytes.
#include "home.h"
#include "support/charset_file.h"
#include "support/charsets.h"
#include "support/naive_locfile.h"
#include "support/naive_walk.h"

#include <dlxintl/intl.h>

namespace naive = support::naive;

// Sizes of gigabytes are refused as if there were no such memory.
extern "C" const char *__asan_default_options() { return "allocator_may_return_null=1:max_allocation_size_mb=64"; }

namespace {

constexpr std::uint32_t SURELY_ALLOCATED = 16 << 20;

// ---- The naive loader -------------------------------------------------------------------------------------------

// A set as its file has it, each table with zeros up to all that its numbers can lead to.
struct Model {
    CS_RETCODE status = CS_SUCCEED;
    int code = 0;
    bool may_lack_memory = false;
    int set_class = 0, id = 0, set_status = 0;
    std::uint32_t image_size = 0;
    std::string name, width, norm, types, sounds;
    CHAR_ATTRIB record = {};

    explicit Model(const std::string &content) : file_(content) {
        support::NaiveLocfile::Answer section;
        while ((section = file_.next_section()).text && section.text->c_str() != std::string("charset")) {
        }
        if (section.text)
            read_keys();
        else
            missing(section);
    }
    Model(const Model &) = delete;
    Model &operator=(const Model &) = delete;

private:
    bool fail() {
        status = CS_FAIL;
        return false;
    }
    bool missing(const support::NaiveLocfile::Answer &answer) {
        status = answer.status < 0 ? CS_EINTL : CS_FAIL;
        code = answer.status;
        return false;
    }

    void read_keys() {
        for (;;) {
            const auto entry = file_.next_entry();
            if (!entry.text) {
                missing(entry);
                return;
            }
            const std::string key = entry.text->c_str();
            if (key == "definition") {
                if (set_class == 1)
                    read_first_class();
                else if (set_class == 2)
                    read_second_class();
                else
                    fail();
                return;
            }
            const auto value = file_.next_value();
            const bool is_known = key == "class" || key == "name" || key == "description" || key == "id" ||
                                  key == "status" || key == "image_size";
            if (!is_known || !value.text) {
                is_known ? missing(value) : fail();
                return;
            }
            const std::string bytes = *value.text + std::string(4, '\0');
            const auto at = [&](int i) { return static_cast<std::uint32_t>(static_cast<CS_BYTE>(bytes[i])); };
            if (key == "class")
                set_class = static_cast<int>(at(0));
            else if (key == "id")
                id = static_cast<int>(at(0));
            else if (key == "status")
                set_status = static_cast<short>(at(0) * 256 + at(1));
            else if (key == "image_size")
                image_size = at(0) * 0x1000000 + at(1) * 0x10000 + at(2) * 256 + at(3);
            else if (key == "name")
                name = value.text->c_str();
            if ((key == "class" && set_class != 1 && set_class != 2) ||
                (key == "name" && (value.text->size() > 30 || name.size() > 29))) {
                fail();
                return;
            }
        }
    }

    bool read_image(std::string &image, std::uint32_t size, bool next) {
        if (size > 0x7FFFFFFF)
            return fail();
        may_lack_memory = may_lack_memory || size > SURELY_ALLOCATED;
        std::string text;
        for (; text.size() < size * std::uint64_t{2}; next = true) {
            if (next) {
                const auto entry = file_.next_entry();
                if (!entry.text)
                    return missing(entry);
                if (entry.text->c_str() != std::string("definition"))
                    return fail();
            }
            const auto value = file_.next_value();
            if (!value.text)
                return missing(value);
            text += *value.text;
            if (text.size() > size * std::uint64_t{2})
                return fail();
        }
        return decode(text, image, size) || fail();
    }

    static bool decode(std::string text, std::string &image, std::uint32_t size) {
        const std::string blanks = " \t\n\v\f\r";
        while (!text.empty() && blanks.find(text.back()) != std::string::npos)
            text.pop_back();
        while (!text.empty() && blanks.find(text[0]) != std::string::npos)
            text.erase(0, 1);
        if (text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X")
            text.erase(0, 2);
        if (text.size() % 2 != 0)
            text.insert(0, "0");
        const std::string digits = "0123456789abcdef0123456789ABCDEF";
        for (std::size_t i = 0; i < text.size(); i += 2) {
            const std::size_t high = digits.find(text[i]), low = digits.find(text[i + 1]);
            if (high == std::string::npos || low == std::string::npos)
                return false;
            image += static_cast<char>(high % 16 * 16 + low % 16);
        }
        image.resize(size);
        return true;
    }

    void read_first_class() {
        if (image_size != 1285) {
            fail();
            return;
        }
        if (!read_image(types, 1028, false) || !read_image(sounds, 257, true))
            return;
        finish(1, 1, 1, 0, 1);
    }

    void read_second_class() {
        if (image_size > 0x7FFFFFFF || image_size <= 1323) {
            fail();
            return;
        }
        std::string header;
        if (!read_image(header, 44, false))
            return;
        const auto byte = [&](std::size_t at) { return static_cast<std::uint32_t>(static_cast<CS_BYTE>(header[at])); };
        const auto word = [&](std::size_t at) {
            return byte(at) * 0x1000000 + byte(at + 1) * 0x10000 + byte(at + 2) * 256 + byte(at + 3);
        };
        if (word(32) == 0 || word(40) == 0 || word(32) != byte(5) * 1024 || word(40) != byte(7) * 256) {
            fail();
            return;
        }
        if ((word(16) != 0 && !read_image(width, word(16), true)) ||
            (word(24) != 0 && !read_image(norm, word(24), true)) || !read_image(types, word(32), true) ||
            !read_image(sounds, word(40), true))
            return;
        finish(byte(3), byte(4), byte(5), byte(6), byte(7));
    }

    void finish(std::uint32_t maxcharlen, std::uint32_t ncharsize, std::uint32_t ntype, std::uint32_t nnorm,
                std::uint32_t nsoundex) {
        const auto table = [](std::string &bytes, std::size_t room) -> char * {
            if (bytes.empty())
                return nullptr;
            bytes.resize(std::max(bytes.size(), room));
            return bytes.data();
        };
        record.cs_maxcharlen = static_cast<CS_BYTE>(maxcharlen);
        record.cs_ncharsize = static_cast<CS_BYTE>(ncharsize);
        record.cs_ntype = static_cast<CS_BYTE>(ntype);
        record.cs_nnorm = static_cast<CS_BYTE>(nnorm);
        record.cs_nsoundex = static_cast<CS_BYTE>(nsoundex);
        record.cs_width_map = reinterpret_cast<CS_BYTE *>(table(width, 256));
        record.cs_norm_map = reinterpret_cast<CS_NORM_MAP *>(table(norm, 256 * 256));
        record.cs_type_map = reinterpret_cast<CS_TYPE_MAP *>(table(types, 256 * 1024));
    }

    support::NaiveLocfile file_;
};

// ---- What an input says -----------------------------------------------------------------------------------------

// Bytes of the input over and over, with zeros after each round so that tables are not all alike.
std::string filled(const std::string &bytes, std::size_t size) {
    std::string table;
    while (table.size() < size)
        table += bytes + std::string(1 + table.size() % 7, '\0');
    table.resize(size);
    return table;
}

std::string written_file(fuzz::Input &input, const std::string &content) {
    const int kind = input.byte();
    std::string file;
    if (kind % 2 == 0) {
        file = charset_file(support::FirstClass{filled(content, 1028), filled(content, 257)});
    } else {
        support::SecondClass image;
        image.ntype = static_cast<CS_BYTE>(1 + kind / 2 % 4);
        image.nsoundex = static_cast<CS_BYTE>(1 + kind / 8 % 2);
        image.nnorm = input.byte();
        image.maxcharlen = input.byte();
        if (kind & 32)
            image.width = filled(content, 256 - input.byte() % 4);
        if (kind & 64)
            image.norm = filled(content, 256u * (1 + input.byte() % 4) - input.byte() % 4);
        image.types = filled(content, image.ntype * 1024u);
        image.sounds = filled(content, image.nsoundex * 256u);
        file = charset_file(image);
    }
    // Bytes of it changed, taken away, or put in.
    for (int changes = input.byte() % 8; changes > 0; --changes) {
        const std::size_t at = (input.byte() * 256u + input.byte()) % file.size();
        const int what = input.byte();
        const auto byte = static_cast<char>(input.byte());
        if (what % 3 == 0)
            file[at] = byte;
        else if (what % 3 == 1)
            file.erase(at, what / 3 % 8);
        else
            file.insert(at, 1, byte);
    }
    return file;
}

// ---- The set and the text ---------------------------------------------------------------------------------------

template <class Table>
bool holds(const Table *table, const std::string &bytes, std::size_t limit = std::string::npos) {
    return (table != nullptr) == !bytes.empty() &&
           (table == nullptr || std::memcmp(table, bytes.data(), std::min(bytes.size(), limit)) == 0);
}

void check_set(const Model &model, const CHAR_ATTRIB &set) {
    FUZZ_CHECK(set.cs_class == model.set_class && set.cs_id == model.id && set.cs_status == model.set_status);
    FUZZ_CHECK(reinterpret_cast<const char *>(set.cs_name) == model.name);
    FUZZ_CHECK(set.cs_namelen == static_cast<short>(model.name.size()));
    FUZZ_CHECK(set.cs_maxcharlen == model.record.cs_maxcharlen && set.cs_ncharsize == model.record.cs_ncharsize);
    FUZZ_CHECK(set.cs_ntype == model.record.cs_ntype && set.cs_nnorm == model.record.cs_nnorm);
    FUZZ_CHECK(set.cs_nsoundex == model.record.cs_nsoundex);
    FUZZ_CHECK(holds(set.cs_width_map, model.width) && holds(set.cs_norm_map, model.norm));
    // A first-class set has pages behind its image only as far as its codes lead there; the walks find them empty.
    FUZZ_CHECK(holds(set.cs_type_map, model.types, set.cs_class == 1 ? 1028 : std::string::npos));
    FUZZ_CHECK(holds(set.cs_soundex, model.sounds));
}

void check_walk(const CHAR_ATTRIB &model, CHAR_ATTRIB *set, const std::string &text) {
    const std::string padded = text + std::string(support::LONGEST_CHARACTER + 1, '\0');
    fuzz::ExactBuffer source(padded.size(), padded);
    for (CS_BYTE *p = source.get(); p < source.get() + text.size(); ++p) {
        const CHAR_MAP entry = naive::entry(&model, p);
        FUZZ_CHECK(comn_isalpha(set, p) == (entry.char_type & 0x03));
        FUZZ_CHECK(comn_isdigit(set, p) == (entry.char_type & 0x04));
        FUZZ_CHECK(comn_isspace(set, p) == (entry.char_type & 0x08));
        FUZZ_CHECK(comn_isgraph(set, p) == (entry.char_type & 0x40));
        FUZZ_CHECK(comn_get_lex(set, p) == entry.char_lex);
        FUZZ_CHECK(comn_char_width(set, p) == naive::width(&model, p));
        FUZZ_CHECK(comn_disp_width(set, p) == naive::columns(&model, p));
        FUZZ_CHECK(comn_to_ascii(set, p) == naive::to_ascii(&model, p));
        for (const bool upper : {true, false}) {
            const std::string expected = naive::other_case(&model, p, upper);
            fuzz::ExactBuffer dest(expected.size());
            (upper ? comn_toupper : comn_tolower)(set, p, dest.get());
            FUZZ_CHECK(dest.all() == expected);
        }
    }
    CS_BYTE *const end = source.get() + text.size();
    naive::Whole found;
    comn_whole_char(set, source.get(), end, &found.bytes, &found.part1, &found.part2, &found.count);
    FUZZ_CHECK(found == naive::whole_char(&model, source.get(), end));
    const std::string expected = naive::str_to_ascii(&model, source.get(), static_cast<int>(text.size()));
    fuzz::ExactBuffer dest(text.size() + static_cast<std::size_t>(found.part2));
    CS_INT written = -5;
    comn_str_to_ascii(reinterpret_cast<CS_CHAR *>(source.get()), static_cast<CS_INT>(text.size()),
                      reinterpret_cast<CS_CHAR *>(dest.get()), &written, set);
    FUZZ_CHECK(written == static_cast<CS_INT>(expected.size()) && dest.first(expected.size()) == expected);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    static fuzz::Home home("charsets/test/charset.loc");
    fuzz::Input input(data, size);
    const bool is_raw = input.byte() % 4 == 0;
    std::string text(input.byte() % 64, '\0');
    for (char &c : text)
        c = static_cast<char>(input.byte());
    const std::string rest = input.rest();
    const std::string content = is_raw ? rest : written_file(input, rest);
    home.put(content);
    const Model model(content);

    CsCtxGlobals globals = {};
    CS_CONTEXT context = {};
    context.ctxglobals = &globals;
    CS_CHAR name[] = "test";
    CsLocCache lcache = {};
    lcache.charname = name;
    lcache.charnamelen = 4;
    CsOID oid = {};
    const CS_RETCODE status = comn__intl_load_charset(&context, &oid, &lcache, nullptr, 0);
    const bool lacks_memory = status == CS_MEM_ERROR && model.may_lack_memory;
    FUZZ_CHECK(lacks_memory || (status == model.status && context.ctxintlerr == model.code));
    FUZZ_CHECK((lcache.locchardesc != nullptr) == (status == CS_SUCCEED));
    FUZZ_CHECK(globals.cmg_chardesc == lcache.locchardesc);
    if (status != CS_SUCCEED)
        return 0;
    check_set(model, *lcache.locchardesc->char_attrib);
    check_walk(model.record, lcache.locchardesc->char_attrib, text);
    com_intl_chardesc_drop(&context);
    return 0;
}
