// The binary images that stand in a character set's file as hexadecimal text, and the tables made of them.
#include "support/charset_file.h"
#include "support/charsets.h"
#include "support/failing_allocator.h"
#include "support/memory_file.h"
#include "support/naive_walk.h"
#include "support/null_calls.h"

#include <dlxintl/intl.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

using support::definitions;
using support::FailingAllocator;
using support::FirstClass;
using support::ReturningAssertions;
using support::SecondClass;
using namespace std::string_literals;

// A reader in the section of a file; the loaders begin where `first` is the present entry.
class ImageFile : public testing::Test {
protected:
    ~ImageFile() override { intl_close(&file_); }

    INTL_LOCFILE *open(const std::string &entries) {
        intl_close(&file_);
        const support::MemoryFile memory("[charset]\n" + entries);
        int status = 0;
        EXPECT_EQ(intl_open(memory.path(), &file_), INTL_OK);
        EXPECT_NE(intl_nextsection(&file_, &status), nullptr);
        context_.ctxintlerr = 0;
        return &file_;
    }
    INTL_LOCFILE *open_at_entry(const std::string &entries) {
        open(entries);
        int status = 0;
        EXPECT_NE(intl_nextentry(&file_, &status), nullptr);
        return &file_;
    }

    // What an image of `size` bytes of 0xEE becomes, or "status" and the number.
    std::string image_of(INTL_LOCFILE *file, CS_INT size, CS_BOOL get_next_entry) {
        std::string room(static_cast<std::size_t>(size) + 8, '\xEE');
        CS_RETCODE status;
        int held;
        {
            const FailingAllocator counting;
            status = comn__get_image(&context_, reinterpret_cast<CS_BYTE *>(room.data()), size, file, get_next_entry);
            held = counting.held();
        }
        EXPECT_EQ(held, 0) << "the text is freed";
        EXPECT_EQ(room.substr(static_cast<std::size_t>(size)), std::string(8, '\xEE'));
        if (status != CS_SUCCEED)
            return "status " + std::to_string(status);
        EXPECT_EQ(context_.ctxintlerr, 0);
        return room.substr(0, static_cast<std::size_t>(size));
    }
    std::string image_of(const std::string &entries, CS_INT size) { return image_of(open(entries), size, CS_TRUE); }

    CS_CONTEXT context_ = {};
    INTL_LOCFILE file_ = {};
};

// ---- The text of an image -------------------------------------------------------------------------------------

TEST_F(ImageFile, IsARunOfDefinitions) {
    EXPECT_EQ(image_of("definition = 0123\n; between\n\ndefinition = 45\ndefinition = 6789aBcDEf\n", 8),
              "\x01\x23\x45\x67\x89\xAB\xCD\xEF");
}

TEST_F(ImageFile, MayBeSplitAtAnyDigit) {
    std::mt19937_64 random(75010);
    for (int round = 0; round < 400; ++round) {
        const std::string bytes = support::random_bytes(random, 1 + random() % 300);
        const std::string digits = support::hex_of(bytes);
        std::string entries;
        for (std::size_t at = 0; at < digits.size();) {
            const auto size = random() % 40;
            entries += "definition = \"" + digits.substr(at, size) + "\"\n";
            at += std::min<std::size_t>(size, digits.size() - at);
        }
        ASSERT_EQ(image_of(entries, static_cast<CS_INT>(bytes.size())), bytes);
    }
}

TEST_F(ImageFile, MayBeginAtThePresentEntryOrAtTheNext) {
    const std::string entries = "definition = 01\ndefinition = 02\ndefinition = 03\n";
    EXPECT_EQ(image_of(open_at_entry(entries), 2, CS_FALSE), "\x01\x02");
    EXPECT_EQ(image_of(&file_, 1, CS_TRUE), "\x03") << "and the next one goes on behind it";
    EXPECT_EQ(image_of(open_at_entry(entries), 2, CS_TRUE), "\x02\x03");
}

TEST_F(ImageFile, OnlyTheFirstValueOfAnEntryIsRead) {
    EXPECT_EQ(image_of("definition = 01, ff, zz\ndefinition = 02, 03\n", 2), "\x01\x02");
}

TEST_F(ImageFile, OddityPresentEntryGivesItsNextValueAndNeedNotBeADefinition) {
    open_at_entry("other = 01, 02, 03\ndefinition = 04\n");
    EXPECT_EQ(image_of(&file_, 1, CS_FALSE), "\x01");
    EXPECT_EQ(image_of(&file_, 1, CS_FALSE), "\x02");
    EXPECT_EQ(image_of(&file_, 2, CS_FALSE), "\x03\x04");
}

TEST_F(ImageFile, EmptyValuesAreNothing) {
    EXPECT_EQ(image_of("definition = ,\ndefinition = \"\"\ndefinition = 01\ndefinition = ,\ndefinition = 02\n", 2),
              "\x01\x02");
}

TEST_F(ImageFile, EndsExactlyWhereAValueEnds) {
    EXPECT_EQ(image_of("definition = 010203\n", 2), "status 0");
    EXPECT_EQ(image_of("definition = 01\ndefinition = 0203\n", 2), "status 0");
    EXPECT_EQ(image_of("definition = 01\ndefinition = 020\n", 2), "status 0") << "by one digit";
    EXPECT_EQ(image_of("definition = 0102 \\ \n", 2), "status 0") << "a blank counts";
    EXPECT_EQ(context_.ctxintlerr, 0);
}

TEST_F(ImageFile, EntryOfAnotherNameFails) {
    EXPECT_EQ(image_of("definition = 01\nDefinition = 02\n", 2), "status 0");
    EXPECT_EQ(image_of("definitions = 01\n", 1), "status 0");
    EXPECT_EQ(image_of("definition = 01\nid = \\x01\n", 2), "status 0");
}

TEST_F(ImageFile, MissingEntryOrValueFails) {
    EXPECT_EQ(image_of("", 1), "status 0");
    EXPECT_EQ(image_of("definition = 01\n", 2), "status 0");
    EXPECT_EQ(image_of("definition = 01\n[other]\ndefinition = 02\n", 2), "status 0");
    EXPECT_EQ(image_of("definition =\n", 1), "status 0");
    EXPECT_EQ(image_of(open_at_entry("definition =\n"), 1, CS_FALSE), "status 0");
    EXPECT_EQ(context_.ctxintlerr, 0);
}

TEST_F(ImageFile, FailureOfTheReaderIsTold) {
    EXPECT_EQ(image_of("definition = 01\nno equals\n", 2), "status -301");
    EXPECT_EQ(context_.ctxintlerr, INTL_ENOEQUALS);
    EXPECT_EQ(image_of("definition = \"01\n", 2), "status -301");
    EXPECT_EQ(context_.ctxintlerr, INTL_EUNTERMINATED);
}

TEST_F(ImageFile, EveryDigitAndNothingElse) {
    for (int c = 0; c < 256; ++c) {
        const bool is_digit = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
        const std::string byte = support::escaped(std::string(1, static_cast<char>(c)));
        const int value = c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
        const auto expected = [&](int middle) {
            const std::string image = {'\x11', static_cast<char>(middle), '\x11'};
            return is_digit ? image : "status 0";
        };
        EXPECT_EQ(image_of("definition = 11" + byte + "411\n", 3), expected(value * 16 + 4)) << c;
        EXPECT_EQ(image_of("definition = 114" + byte + "11\n", 3), expected(4 * 16 + value)) << c;
    }
}

TEST_F(ImageFile, OddityTextThatIsShorterThanItsImageLeavesTheRest) {
    EXPECT_EQ(image_of("definition = \"0x0102\"\n", 3), "\x01\x02\xEE");
    EXPECT_EQ(image_of("definition = 0X\ndefinition = 0102\n", 3), "\x01\x02\xEE");
    EXPECT_EQ(image_of("definition = \"  0102  \"\n", 4), "\x01\x02\xEE\xEE");
    EXPECT_EQ(image_of("definition = \\x09\\x0a\\x0b\\x0c\\x0d\\x20\ndefinition = 0102\n", 5), "\x01\x02\xEE\xEE\xEE");
    EXPECT_EQ(image_of("definition = \"    \"\n", 2), "\xEE\xEE");
    EXPECT_EQ(image_of("definition = 0x\n", 1), "\xEE");
}

TEST_F(ImageFile, OddityOddNumberOfDigitsHasTheFirstAsAByteOfItsOwn) {
    EXPECT_EQ(image_of("definition = \"123 \"\n", 2), "\x01\x23");
    EXPECT_EQ(image_of("definition = \" 123\"\n", 2), "\x01\x23");
    EXPECT_EQ(image_of("definition = \"z23 \"\n", 2), "status 0");
    EXPECT_EQ(image_of("definition = \"1 \"\n", 1), "\x01");
}

TEST_F(ImageFile, OddityOnlyTheFirst0xAndBlanksAtBothEndsAreTakenOff) {
    EXPECT_EQ(image_of("definition = 01\ndefinition = 0x02\n", 3), "status 0");
    EXPECT_EQ(image_of("definition = 0x0x01\n", 3), "status 0");
    EXPECT_EQ(image_of("definition = \"01 02 \"\n", 3), "status 0");
    EXPECT_EQ(image_of("definition = \"0x 1\"\n", 2), "status 0") << "none behind the 0x";
    EXPECT_EQ(image_of("definition = \\xa0\\x0e01\n", 2), "status 0") << "white space is that of ASCII";
    EXPECT_EQ(image_of("definition = \\x00\\x0001\n", 2), "status 0");
}

TEST_F(ImageFile, WithoutMemoryFailsAndReadsNothing) {
    open("definition = 01\n");
    CS_BYTE image = 0xEE;
    CS_RETCODE status;
    {
        const FailingAllocator failing(1);
        status = comn__get_image(&context_, &image, 1, &file_, CS_TRUE);
    }
    EXPECT_EQ(status, CS_MEM_ERROR);
    EXPECT_EQ(image, 0xEE);
    EXPECT_EQ(image_of(&file_, 1, CS_TRUE), "\x01");
}

// ---- Tables ---------------------------------------------------------------------------------------------------

// A record that the loaders fill, and that is freed with its tables.
class Tables : public ImageFile {
protected:
    Tables() { clear(); }
    ~Tables() override { comn__chardesc_drop(owner_); }

    void clear() {
        comn__chardesc_drop(owner_);
        owner_ = static_cast<CsCharDesc *>(comn_calloc(1, sizeof(CsCharDesc)));
        owner_->char_attrib = set_ = static_cast<CHAR_ATTRIB *>(comn_calloc(1, sizeof(CHAR_ATTRIB)));
    }
    bool has_tables() const {
        return set_->cs_width_map != nullptr || set_->cs_norm_map != nullptr || set_->cs_type_map != nullptr ||
               set_->cs_soundex != nullptr;
    }
    CS_RETCODE load1(const std::string &entries, CS_INT size = 1285) {
        clear();
        return comn__load_charset1(&context_, set_, size, open_at_entry(entries));
    }
    CS_RETCODE load2(const std::string &entries, CS_INT size = 1324) {
        clear();
        return comn__load_charset2(&context_, set_, size, open_at_entry(entries));
    }
    CS_RETCODE load2(const SecondClass &image) { return load2(image.entries()); }

    CsCharDesc *owner_ = nullptr;
    CHAR_ATTRIB *set_ = nullptr;
};

TEST_F(Tables, FirstClassIsOfOneSizeOnly) {
    for (const CS_INT size : {1284, 1286, 0, -1, 1, 2570, -0x7FFFFFFF - 1}) {
        EXPECT_EQ(load1(FirstClass().entries(), size), CS_FAIL) << size;
        EXPECT_FALSE(has_tables()) << "nothing is allocated yet";
    }
    EXPECT_EQ(load1(FirstClass().entries(), 1285), CS_SUCCEED);
}

TEST_F(Tables, FirstClassSetsItsCountsAndNothingElse) {
    std::memset(set_, 0, sizeof *set_);
    set_->cs_status = 5;
    set_->cs_class = 1;
    set_->cs_id = 6;
    ASSERT_EQ(comn__load_charset1(&context_, set_, 1285, open_at_entry(FirstClass().entries())), CS_SUCCEED);
    EXPECT_EQ(set_->cs_status, 5);
    EXPECT_EQ(set_->cs_id, 6);
    EXPECT_EQ(set_->cs_maxcharlen, 1);
    EXPECT_EQ(set_->cs_ncharsize, 1);
    EXPECT_EQ(set_->cs_nnorm, 0);
    EXPECT_EQ(set_->cs_ntype, 1);
    EXPECT_EQ(set_->cs_nsoundex, 1);
}

TEST_F(Tables, FirstClassHasTwoImagesThatNoValueCrosses) {
    std::mt19937_64 random(75011);
    const FirstClass image = {support::random_bytes(random, 1028), support::random_bytes(random, 257)};
    EXPECT_EQ(load1(definitions(image.types + image.sounds, 256)), CS_FAIL) << "128 bytes in each value";
    EXPECT_EQ(load1(definitions(image.types + image.sounds, 514)), CS_SUCCEED) << "257 bytes in each value";
    EXPECT_EQ(std::memcmp(set_->cs_type_map, image.types.data(), 1028), 0);
    EXPECT_EQ(std::memcmp(set_->cs_soundex, image.sounds.data(), 257), 0);
    EXPECT_EQ(load1(definitions(image.types, 2)), CS_FAIL) << "no sounds";
    EXPECT_EQ(load1(definitions(image.types, 2) + definitions(image.sounds + "x", 512)), CS_FAIL);
    EXPECT_EQ(load1(definitions(image.types, 2) + definitions(image.sounds.substr(1), 512)), CS_FAIL);
}

TEST_F(Tables, FirstClassCodeThatLeadsToAPageFindsItEmpty) {
    FirstClass image;
    CHAR_MAP row = {};
    row.char_upper = 200;
    row.char_type = CS_CT_ROW;
    std::memcpy(image.types.data() + 0x80 * sizeof row, &row, sizeof row);
    image.types.replace(1024, 4, "\x11\x22\x33\x44");
    ASSERT_EQ(load1(image.entries()), CS_SUCCEED);
    EXPECT_EQ(std::memcmp(set_->cs_type_map, image.types.data(), 1028), 0) << "four bytes behind its page included";
    const auto *const pages = reinterpret_cast<const CS_BYTE *>(set_->cs_type_map);
    EXPECT_TRUE(std::all_of(pages + 1028, pages + 201 * sizeof(CS_TYPE_MAP), [](CS_BYTE byte) { return byte == 0; }));
}

TEST_F(Tables, HalfBuiltOnesStayInTheRecordForItsOwner) {
    EXPECT_EQ(load1(definitions(FirstClass().types) + "definition = zz\n"), CS_FAIL);
    EXPECT_NE(set_->cs_type_map, nullptr);
    EXPECT_NE(set_->cs_soundex, nullptr);
    EXPECT_EQ(set_->cs_ntype, 0) << "no count before the end";
    SecondClass image;
    image.width = std::string(256, '\x11');
    EXPECT_EQ(load2(definitions(image.header()) + definitions(image.width) + "definition = zz\n"), CS_FAIL);
    EXPECT_NE(set_->cs_width_map, nullptr);
    EXPECT_NE(set_->cs_type_map, nullptr);
    EXPECT_EQ(set_->cs_soundex, nullptr);
    EXPECT_EQ(set_->cs_ntype, 0);
}

TEST_F(Tables, SecondClassIsOfMoreThan1323Bytes) {
    for (const CS_INT size : {1323, 44, 0, -1, -0x7FFFFFFF - 1}) {
        EXPECT_EQ(load2(SecondClass().entries(), size), CS_FAIL) << size;
        int status = 0;
        EXPECT_EQ(intl_nextvalue(&file_, &status), support::hex_of(SecondClass().header())) << "it is not read";
    }
    for (const CS_INT size : {1324, 1325, 0x7FFFFFFF})
        EXPECT_EQ(load2(SecondClass().entries(), size), CS_SUCCEED) << "nobody compares it with the tables";
}

TEST_F(Tables, SecondClassTakesItsCountsFromTheHeader) {
    SecondClass image;
    image.maxcharlen = 0xF1;
    image.ncharsize = 0xF2;
    image.nnorm = 0xF3;
    ASSERT_EQ(load2(image), CS_SUCCEED);
    EXPECT_EQ(set_->cs_maxcharlen, 0xF1);
    EXPECT_EQ(set_->cs_ncharsize, 0xF2);
    EXPECT_EQ(set_->cs_nnorm, 0xF3);
    EXPECT_EQ(set_->cs_ntype, 1);
    EXPECT_EQ(set_->cs_nsoundex, 1);
    EXPECT_EQ(set_->cs_status, 0) << "these stand as the keys set them";
    EXPECT_EQ(set_->cs_class, 0);
}

TEST_F(Tables, SecondClassSizesHaveToBeThoseOfTheirPages) {
    struct Case {
        CS_BYTE ntype, nsoundex;
        long types, sounds;
    };
    for (const Case &c : {Case{1, 1, 0, 256}, Case{1, 1, 1024, 0}, Case{0, 1, 0, 256}, Case{1, 0, 1024, 0},
                          Case{0, 1, 1024, 256}, Case{1, 0, 1024, 256}, Case{2, 1, 1024, 256}, Case{1, 2, 1024, 256},
                          Case{1, 1, 1023, 256}, Case{1, 1, 1025, 256}, Case{1, 1, 1024, 255}, Case{1, 1, 1024, 257},
                          Case{1, 1, 256, 1024}, Case{1, 1, 0x00040000, 256}, Case{1, 1, 1024, 0x00010000},
                          Case{1, 1, 0x80000400, 256}, Case{1, 1, 1024, 0xFFFFFFFF}}) {
        SecondClass image;
        image.ntype = c.ntype;
        image.nsoundex = c.nsoundex;
        image.types_size = c.types;
        image.sounds_size = c.sounds;
        EXPECT_EQ(load2(image), CS_FAIL) << c.types << " " << c.sounds;
        EXPECT_FALSE(has_tables());
    }
}

TEST_F(Tables, SecondClassWithoutAWidthTableHasOneByteCharacters) {
    ASSERT_EQ(load2(SecondClass()), CS_SUCCEED);
    EXPECT_EQ(set_->cs_width_map, nullptr);
    EXPECT_EQ(set_->cs_norm_map, nullptr);
    for (int c = 0; c < 256; ++c) {
        CS_BYTE text[2] = {static_cast<CS_BYTE>(c), '0'};
        EXPECT_EQ(comn_char_width(set_, text), 1);
    }
}

TEST_F(Tables, SecondClassTablesFollowEachOtherWhateverTheOffsetsSay) {
    std::mt19937_64 random(75012);
    for (int round = 0; round < 60; ++round) {
        SecondClass image;
        if (round % 2 != 0)
            image.width = support::random_bytes(random, 256);
        if (round % 3 != 0) {
            image.nnorm = static_cast<CS_BYTE>(1 + random() % 4);
            image.norm = support::random_bytes(random, image.nnorm * 256u);
        }
        image.ntype = static_cast<CS_BYTE>(1 + random() % 5);
        image.nsoundex = static_cast<CS_BYTE>(1 + random() % 5);
        image.types = support::random_bytes(random, image.ntype * 1024u);
        image.sounds = support::random_bytes(random, image.nsoundex * 256u);
        ASSERT_EQ(load2(image), CS_SUCCEED);
        ASSERT_EQ(set_->cs_width_map != nullptr, !image.width.empty());
        ASSERT_EQ(set_->cs_norm_map != nullptr, !image.norm.empty());
        const auto is = [](const void *table, const std::string &bytes) {
            return bytes.empty() || std::memcmp(table, bytes.data(), bytes.size()) == 0;
        };
        ASSERT_TRUE(is(set_->cs_width_map, image.width));
        ASSERT_TRUE(is(set_->cs_norm_map, image.norm));
        ASSERT_TRUE(is(set_->cs_type_map, image.types));
        ASSERT_TRUE(is(set_->cs_soundex, image.sounds));
    }
}

TEST_F(Tables, SecondClassOf255Pages) {
    std::mt19937_64 random(75013);
    SecondClass image;
    image.ntype = image.nsoundex = image.nnorm = 255;
    image.norm = support::random_bytes(random, 255 * 256);
    image.types = support::random_bytes(random, 255 * 1024);
    image.sounds = support::random_bytes(random, 255 * 256);
    ASSERT_EQ(load2(image), CS_SUCCEED);
    EXPECT_EQ(std::memcmp(set_->cs_type_map, image.types.data(), image.types.size()), 0);
    EXPECT_EQ(std::memcmp(set_->cs_norm_map, image.norm.data(), image.norm.size()), 0);
    EXPECT_EQ(std::memcmp(set_->cs_soundex, image.sounds.data(), image.sounds.size()), 0);
}

TEST_F(Tables, SecondClassValueThatCrossesTwoTablesFails) {
    SecondClass image;
    EXPECT_EQ(load2(definitions(image.header() + image.types, 256) + definitions(image.sounds)), CS_FAIL);
    EXPECT_EQ(load2(definitions(image.header()) + definitions(image.types + image.sounds, 512)), CS_SUCCEED)
        << "a value ends where the table does";
    EXPECT_EQ(load2(definitions(image.header()) + definitions(image.types + image.sounds, 600)), CS_FAIL);
}

// Tables may be smaller than what their numbers lead to. Nothing but zeros is found there.
TEST_F(Tables, WidthAndNormTablesOfAnySizeAreWalkedSafely) {
    for (const std::size_t size : {std::size_t{1}, std::size_t{255}, std::size_t{256}, std::size_t{700}}) {
        SecondClass image;
        image.width = std::string(size, '\x22');
        image.norm = std::string(size, '\xFF');
        ASSERT_EQ(load2(image), CS_SUCCEED);
        for (int c = 0; c < 256; ++c) {
            CS_BYTE text[4] = {static_cast<CS_BYTE>(c), 0xFF, 0xFF, 0xFF};
            const bool has_width = static_cast<std::size_t>(c) < size;
            EXPECT_EQ(comn_char_width(set_, text), has_width ? 2 : 0) << c;
            EXPECT_EQ(comn_to_ascii(set_, text), 0) << "page 255 is not in the file";
        }
    }
}

TEST_F(Tables, RowsOfPagesThatTheFileDoesNotHaveAreWalkedSafely) {
    FirstClass first;
    SecondClass second;
    for (int c = 0; c < 256; ++c) {
        const std::string entry = {static_cast<char>(c), '\x01', '\x01', '\x80'};
        first.types.replace(static_cast<std::size_t>(c) * 4, 4, entry);
        second.types.replace(static_cast<std::size_t>(c) * 4, 4, entry);
    }
    for (const bool is_first : {true, false}) {
        ASSERT_EQ(is_first ? load1(first.entries()) : load2(second), CS_SUCCEED);
        for (int c = 2; c < 256; ++c) {
            CS_BYTE text[4] = {static_cast<CS_BYTE>(c), 0xFF, 0, 0};
            EXPECT_EQ(comn_isalpha(set_, text), 0) << c;
            EXPECT_EQ(comn_get_lex(set_, text), 0) << c;
        }
    }
}

TEST_F(Tables, OddityHeaderWhoseTextIsShorterIsFilledWithZeros) {
    SecondClass image;
    const std::string digits = support::hex_of(image.header());
    ASSERT_EQ(digits.substr(86), "00") << "the byte that is not written down below";
    ASSERT_EQ(load2("definition = 0x" + digits.substr(0, 86) + "\n" + image.tables()), CS_SUCCEED);
    EXPECT_EQ(load2("definition = \"" + digits.substr(0, 86) + "  \"\n" + image.tables()), CS_SUCCEED);
    EXPECT_EQ(load2("definition = \"0x" + std::string(86, ' ') + "\"\n" + image.tables()), CS_FAIL);
}

TEST_F(Tables, OddityTableWhoseTextIsShorterIsFilledWithZeros) {
    SecondClass image;
    image.types = std::string(1024, '\x77');
    std::string digits = support::hex_of(image.types);
    digits.replace(0, 4, "0x77"); // one byte less, and each one place earlier
    std::string entries;
    for (std::size_t at = 0; at < digits.size(); at += 512)
        entries += "definition = " + digits.substr(at, 512) + "\n";
    ASSERT_EQ(load2(definitions(image.header()) + entries + definitions(image.sounds)), CS_SUCCEED);
    const auto *types = reinterpret_cast<const CS_BYTE *>(set_->cs_type_map);
    EXPECT_EQ(types[1022], 0x77);
    EXPECT_EQ(types[1023], 0);
}

TEST_F(Tables, SizesOfTwoGigabytesAndMoreFail) {
    for (const long size : {0x80000000L, 0xFFFFFFFFL})
        for (const bool of_width : {true, false}) {
            SecondClass image;
            (of_width ? image.width_size : image.norm_size) = size;
            EXPECT_EQ(load2(image), CS_FAIL) << size;
            EXPECT_FALSE(has_tables());
        }
}

TEST_F(Tables, SizesThatTheFileDoesNotHaveFail) {
    for (const long size : {1L, 255L, 257L, 100000L})
        for (const bool of_width : {true, false}) {
            SecondClass image;
            image.width = image.norm = std::string(256, '\x11');
            (of_width ? image.width_size : image.norm_size) = size;
            EXPECT_EQ(load2(image), CS_FAIL) << size;
        }
}

// ---- A set that was loaded is walked as one in memory ---------------------------------------------------------

SecondClass image_of_set(const CHAR_ATTRIB &set) {
    const auto bytes = [](const void *table, std::size_t size) {
        return table != nullptr ? std::string(static_cast<const char *>(table), size) : ""s;
    };
    SecondClass image;
    image.width = bytes(set.cs_width_map, 256);
    image.norm = bytes(set.cs_norm_map, set.cs_nnorm * 256u);
    image.types = bytes(set.cs_type_map, set.cs_ntype * 1024u);
    image.ntype = set.cs_ntype;
    image.nnorm = set.cs_nnorm;
    image.maxcharlen = set.cs_maxcharlen;
    image.ncharsize = set.cs_ncharsize;
    return image;
}

TEST_F(Tables, LoadedSetIsWalkedAsTheOneItWasWrittenFrom) {
    std::mt19937_64 random(75014);
    for (int round = 0; round < 60; ++round) {
        std::unique_ptr<support::ConstructedSet> model;
        switch (round) {
        case 0:
            model = std::make_unique<support::DoubleByteSet>();
            break;
        case 1:
            model = std::make_unique<support::ThreeByteSet>();
            break;
        case 2:
            model = std::make_unique<support::FourByteSet>();
            break;
        default:
            model = std::make_unique<support::RandomSet>(random);
        }
        if (model->get()->cs_type_map == nullptr)
            continue; // no file is without
        ASSERT_EQ(load2(image_of_set(*model->get())), CS_SUCCEED);
        const std::string text = support::random_text(random, 400) + std::string(support::LONGEST_CHARACTER + 1, '\0');
        for (std::size_t at = 0; at < 400; ++at) {
            auto *p = reinterpret_cast<CS_BYTE *>(const_cast<char *>(text.data())) + at;
            const CHAR_MAP entry = support::naive::entry(model->get(), p);
            ASSERT_EQ(comn_isalpha(set_, p), entry.char_type & 0x03);
            ASSERT_EQ(comn_isgraph(set_, p), entry.char_type & 0x40);
            ASSERT_EQ(comn_get_lex(set_, p), entry.char_lex);
            ASSERT_EQ(comn_char_width(set_, p), support::naive::width(model->get(), p));
            ASSERT_EQ(comn_disp_width(set_, p), support::naive::columns(model->get(), p));
            ASSERT_EQ(comn_to_ascii(set_, p), support::naive::to_ascii(model->get(), p));
        }
    }
}

// ---- Broken contracts -----------------------------------------------------------------------------------------

class ImageOperands {
public:
    explicit ImageOperands(support::NullCalls &calls) {
        const auto get = [](CS_CONTEXT *context, CS_BYTE *image, INTL_LOCFILE *file) {
            return comn__get_image(context, image, 1, file, CS_TRUE);
        };
        const auto load1 = [](CS_CONTEXT *context, CHAR_ATTRIB *set, INTL_LOCFILE *file) {
            return comn__load_charset1(context, set, 1285, file);
        };
        const auto load2 = [](CS_CONTEXT *context, CHAR_ATTRIB *set, INTL_LOCFILE *file) {
            return comn__load_charset2(context, set, 1324, file);
        };
        NULL_CALLS(calls, get, CS_FAIL, &context_, &image_, &file_);
        NULL_CALLS(calls, load1, CS_FAIL, &context_, &set_, &file_);
        NULL_CALLS(calls, load2, CS_FAIL, &context_, &set_, &file_);
    }
    bool are_untouched() const {
        const CHAR_ATTRIB cleared = {};
        return image_ == 0xEE && std::memcmp(&set_, &cleared, sizeof set_) == 0;
    }

private:
    CS_CONTEXT context_ = {};
    CS_BYTE image_ = 0xEE;
    CHAR_ATTRIB set_ = {};
    INTL_LOCFILE file_ = {};
};

TEST(ImageDeathTest, MissingPointersAreReported) {
    support::NullCalls calls;
    const ImageOperands operands(calls);
    calls.expect_reports("charset_load");
}

TEST(ImageContracts, MissingPointersFailWhereAssertionsReturn) {
    support::NullCalls calls;
    const ImageOperands operands(calls);
    calls.expect_answers([] {}, [&] { EXPECT_TRUE(operands.are_untouched()); });
}

TEST(ImageDeathTest, ImageOfNothingIsReported) {
    CS_CONTEXT context = {};
    INTL_LOCFILE file = {};
    CS_BYTE image;
    EXPECT_BOMB(comn__get_image(&context, &image, 0, &file, CS_TRUE), "charset_load");
    EXPECT_BOMB(comn__get_image(&context, &image, -1, &file, CS_TRUE), "charset_load");
}

TEST_F(ImageFile, OfNothingFailsAndReadsNothingWhereAssertionsReturn) {
    open("definition = 01\n");
    CS_BYTE image = 0xEE;
    {
        ReturningAssertions returning;
        EXPECT_EQ(comn__get_image(&context_, &image, 0, &file_, CS_TRUE), CS_FAIL);
        EXPECT_EQ(comn__get_image(&context_, &image, -1, &file_, CS_TRUE), CS_FAIL);
        EXPECT_EQ(returning.count(), 2);
    }
    EXPECT_EQ(image, 0xEE);
    EXPECT_EQ(image_of(&file_, 1, CS_TRUE), "\x01");
}

} // namespace
