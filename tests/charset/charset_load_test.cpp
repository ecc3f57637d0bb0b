// Loading character sets: the keys of their files, the chain that they hang on, and what a failure leaves.
#include "support/charset_file.h"
#include "support/failing_allocator.h"
#include "support/null_calls.h"
#include "support/temp_home.h"

#include <dlxintl/intl.h>

#include <dlfcn.h>

#include <cstring>

namespace {

using support::FailingAllocator;
using support::FirstClass;
using support::ReturningAssertions;
using support::SecondClass;
using namespace std::string_literals;

int failure_to_close = 0; // what closing a file answers, if not 0

} // namespace

// The library's calls come here, and go on to the real one.
int intl_close(INTL_LOCFILE *ifile) {
    static const auto real = reinterpret_cast<int (*)(INTL_LOCFILE *)>(dlsym(RTLD_NEXT, "intl_close"));
    const int status = real(ifile);
    return failure_to_close != 0 ? failure_to_close : status;
}

namespace {

class CharsetLoad : public testing::Test {
protected:
    CharsetLoad() {
        context_.ctxglobals = &globals_;
        lcache_.charname = charname_;
        lcache_.charnamelen = 4;
    }
    ~CharsetLoad() override {
        com_intl_chardesc_drop(&context_);
        comn_intl_drop_globalid(&context_, &globals_.ctxoids);
    }

    CS_RETCODE load(CsOID &oid) { return comn__intl_load_charset(&context_, &oid, &lcache_, nullptr, 0); }
    CS_RETCODE load_file(const std::string &content) {
        home_.write("charsets/test/charset.loc", content);
        com_intl_chardesc_drop(&context_);
        context_.ctxintlerr = 0;
        return load(oid_);
    }
    // Loads a file that is not right; nothing may be left of it.
    CS_RETCODE load_wrong(const std::string &content) {
        const CS_RETCODE status = load_file(content);
        EXPECT_EQ(lcache_.locchardesc, nullptr);
        EXPECT_EQ(globals_.cmg_chardesc, nullptr);
        return status;
    }
    CsCharDesc *first() { return static_cast<CsCharDesc *>(globals_.cmg_chardesc); }
    const CHAR_ATTRIB &set() { return *lcache_.locchardesc->char_attrib; }

    // What the sort order of the set needs: a locale, its name and its identifier.
    void choose_order(CS_CHAR *name) {
        if (globals_.ctxoids == nullptr) {
            home_.write("config/objectid.dat", "[charset]\n1.2 = binary\n[collate]\n1.3 = other, binary\n");
            ASSERT_EQ(comn_intl_load_globalid(&context_, &globals_.ctxoids), CS_SUCCEED);
        }
        context_.ctxlocale = &locale_;
        lcache_.sortname = name;
        lcache_.sortnamelen = static_cast<CS_INT>(std::strlen(name));
    }

    support::TempHome home_;
    CS_CHAR charname_[5] = "test", binary_[7] = "binary";
    CsCtxGlobals globals_ = {};
    CS_CONTEXT context_ = {};
    CS_LOCALE locale_ = {};
    CsLocCache lcache_ = {};
    CsOID oid_ = {};
};

// ---- The keys of the file -------------------------------------------------------------------------------------

TEST_F(CharsetLoad, EveryFieldOfAFirstClassSet) {
    std::mt19937_64 random(75001);
    const FirstClass image = {support::random_bytes(random, 1028), support::random_bytes(random, 257)};
    ASSERT_EQ(load_file(charset_file(image)), CS_SUCCEED);
    EXPECT_EQ(set().cs_status, 0x1234);
    EXPECT_EQ(set().cs_class, 1);
    EXPECT_EQ(set().cs_id, 200);
    EXPECT_EQ(set().cs_namelen, 8);
    EXPECT_EQ(std::memcmp(set().cs_name, "test set\0", 9), 0);
    EXPECT_EQ(set().cs_maxcharlen, 1);
    EXPECT_EQ(set().cs_ncharsize, 1);
    EXPECT_EQ(set().cs_nnorm, 0);
    EXPECT_EQ(set().cs_ntype, 1);
    EXPECT_EQ(set().cs_nsoundex, 1);
    EXPECT_EQ(set().cs_width_map, nullptr);
    EXPECT_EQ(set().cs_norm_map, nullptr);
    EXPECT_EQ(std::memcmp(set().cs_type_map, image.types.data(), 1028), 0);
    EXPECT_EQ(std::memcmp(set().cs_soundex, image.sounds.data(), 257), 0);
}

TEST_F(CharsetLoad, EveryFieldOfASecondClassSet) {
    std::mt19937_64 random(75002);
    SecondClass image;
    image.width = support::random_bytes(random, 256);
    image.norm = support::random_bytes(random, 512);
    image.types = support::random_bytes(random, 3 * 1024);
    image.sounds = support::random_bytes(random, 4 * 256);
    image.maxcharlen = 5;
    image.ncharsize = 6;
    image.ntype = 3;
    image.nnorm = 7; // nobody compares it with the size
    image.nsoundex = 4;
    ASSERT_EQ(load_file(charset_file(image)), CS_SUCCEED);
    EXPECT_EQ(set().cs_status, 0x1234);
    EXPECT_EQ(set().cs_class, 2);
    EXPECT_EQ(set().cs_id, 200);
    EXPECT_EQ(set().cs_namelen, 8);
    EXPECT_EQ(std::memcmp(set().cs_name, "test set\0", 9), 0);
    EXPECT_EQ(set().cs_maxcharlen, 5);
    EXPECT_EQ(set().cs_ncharsize, 6);
    EXPECT_EQ(set().cs_nnorm, 7);
    EXPECT_EQ(set().cs_ntype, 3);
    EXPECT_EQ(set().cs_nsoundex, 4);
    EXPECT_EQ(std::memcmp(set().cs_width_map, image.width.data(), image.width.size()), 0);
    EXPECT_EQ(std::memcmp(set().cs_norm_map, image.norm.data(), image.norm.size()), 0);
    EXPECT_EQ(std::memcmp(set().cs_type_map, image.types.data(), image.types.size()), 0);
    EXPECT_EQ(std::memcmp(set().cs_soundex, image.sounds.data(), image.sounds.size()), 0);
}

TEST_F(CharsetLoad, StatusOfTheImageIsNotThatOfTheSet) {
    std::string file = charset_file(SecondClass());
    file.erase(file.find("status"), file.find("image_size") - file.find("status"));
    ASSERT_EQ(load_file(file), CS_SUCCEED);
    EXPECT_EQ(set().cs_status, 0) << "no key has set it";
}

TEST_F(CharsetLoad, ClassOfTheImageIsNotThatOfTheSet) {
    SecondClass image;
    std::string header = image.header();
    header[2] = 7;
    ASSERT_EQ(load_file(support::charset_header(2, image.size()) + support::definitions(header) + image.tables()),
              CS_SUCCEED);
    EXPECT_EQ(set().cs_class, 2);
}

TEST_F(CharsetLoad, KeysComeInAnyOrder) {
    std::vector<std::string> keys = {"class = \\x01\n",         "name = n\n",
                                     "description = d, e, f\n", "id = \\x05, \\x06\n",
                                     "status = \\x00\\x07\n",   "image_size = \\x00\\x00\\x05\\x05\n"};
    std::sort(keys.begin(), keys.end());
    do {
        std::string file = "[charset]\n";
        for (const std::string &key : keys)
            file += key;
        ASSERT_EQ(load_file(file + FirstClass().entries()), CS_SUCCEED) << file;
        ASSERT_EQ(set().cs_id, 5);
        ASSERT_EQ(set().cs_status, 7);
        ASSERT_STREQ(reinterpret_cast<const char *>(set().cs_name), "n");
    } while (std::next_permutation(keys.begin(), keys.end()));
}

TEST_F(CharsetLoad, ClassAndSizeAreAllThatASetNeeds) {
    ASSERT_EQ(load_file("[charset]\nclass=\\x01\nimage_size=\\x00\\x00\\x05\\x05\n" + FirstClass().entries()),
              CS_SUCCEED);
    EXPECT_EQ(set().cs_status, 0);
    EXPECT_EQ(set().cs_id, 0);
    EXPECT_EQ(set().cs_namelen, 0);
    EXPECT_EQ(set().cs_name[0], 0);
}

TEST_F(CharsetLoad, LastOfEqualKeysCounts) {
    std::string file = charset_file(FirstClass());
    file.insert(file.find("image_size"),
                "class = \\x02\nid = \\x07\nname = a longer name\nname = short\nclass = \\x01\n");
    ASSERT_EQ(load_file(file), CS_SUCCEED);
    EXPECT_EQ(set().cs_class, 1);
    EXPECT_EQ(set().cs_id, 7);
    EXPECT_EQ(set().cs_namelen, 5);
    EXPECT_STREQ(reinterpret_cast<const char *>(set().cs_name), "short");
}

TEST_F(CharsetLoad, NameIsAnyTextOfUpTo29Bytes) {
    const auto named = [&](const std::string &name) {
        std::string file = charset_file(FirstClass());
        file.replace(file.find("test set"), 8, name);
        return load_file(file);
    };
    const std::string longest = "1 " + std::string(27, '\xE9');
    ASSERT_EQ(named(longest), CS_SUCCEED);
    EXPECT_EQ(set().cs_namelen, 29);
    EXPECT_EQ(reinterpret_cast<const char *>(set().cs_name), longest);
    ASSERT_EQ(named("a\\x00b"), CS_SUCCEED);
    EXPECT_EQ(set().cs_namelen, 1) << "a NUL ends it";
    EXPECT_EQ(named(longest + "x"), CS_FAIL);
    EXPECT_EQ(named(longest + "xyz"), CS_FAIL);
}

TEST_F(CharsetLoad, DescriptionIsAsLongAsALine) {
    std::string file = charset_file(FirstClass());
    file.replace(file.find("A set"), 5, std::string(900, 'x'));
    EXPECT_EQ(load_file(file), CS_SUCCEED);
}

TEST_F(CharsetLoad, SectionsInFrontAreSkippedUnread) {
    EXPECT_EQ(load_file("above = 1\n[Charset]\nno equals\n[charsets]\nclass = \\x09\n" + charset_file(FirstClass())),
              CS_SUCCEED);
}

TEST_F(CharsetLoad, NothingBehindTheImageIsRead) {
    EXPECT_EQ(load_file(charset_file(FirstClass()) + "unknown = 1\nno equals\n[charset\n"), CS_SUCCEED);
    EXPECT_EQ(load_file(charset_file(SecondClass()) + "definition = 00\n" + std::string(2000, 'x')), CS_SUCCEED);
}

// ---- What can be wrong ----------------------------------------------------------------------------------------

TEST_F(CharsetLoad, ClassOtherThan1Or2FailsAtOnce) {
    for (const char *wrong : {"\\x00", "\\x03", "1", "2", "\\xff\\x01", ","})
        EXPECT_EQ(load_wrong("[charset]\nclass = "s + wrong + "\nno equals: not read any more\n"), CS_FAIL) << wrong;
    EXPECT_EQ(load_wrong("[charset]\nclass = \\x02\nno equals: read\n"), CS_EINTL);
}

TEST_F(CharsetLoad, UnknownKeyFailsAtOnce) {
    for (const char *key : {"Class", "classes", "menuname", "", "definitions", "charset"}) {
        std::string file = charset_file(FirstClass());
        file.insert(file.find("image_size"), std::string(key) + " = \\x01\nno equals: not read any more\n");
        EXPECT_EQ(load_wrong(file), CS_FAIL) << key;
    }
}

TEST_F(CharsetLoad, KeyWithoutAValueFails) {
    for (const char *key : {"class", "name", "description", "id", "status", "image_size", "definition"}) {
        std::string file = charset_file(FirstClass());
        const std::size_t at = file.find(key + " = "s);
        file.replace(at, file.find('\n', at) - at, key + " ="s);
        EXPECT_EQ(load_wrong(file), CS_FAIL) << key;
        EXPECT_EQ(context_.ctxintlerr, 0) << key;
    }
}

TEST_F(CharsetLoad, DefinitionWithoutAClassFails) {
    EXPECT_EQ(load_wrong("[charset]\nimage_size = \\x00\\x00\\x05\\x05\n" + FirstClass().entries()), CS_FAIL);
}

TEST_F(CharsetLoad, DefinitionWithoutASizeFails) {
    EXPECT_EQ(load_wrong("[charset]\nclass = \\x01\n" + FirstClass().entries()), CS_FAIL);
    EXPECT_EQ(load_wrong("[charset]\nclass = \\x02\n" + SecondClass().entries()), CS_FAIL);
}

TEST_F(CharsetLoad, FileWithoutTheSectionOrWithoutADefinitionFails) {
    for (const std::string &file :
         {""s, "; nothing\n"s, "[other]\nclass = \\x01\n"s, "[charset]\n"s, support::charset_header(1, 1285),
          support::charset_header(2, 1324), support::charset_header(1, 1285) + "[other]\n" + FirstClass().entries(),
          "[charset]\n" + charset_file(FirstClass())}) {
        EXPECT_EQ(load_wrong(file), CS_FAIL) << file.substr(0, 200);
        EXPECT_EQ(context_.ctxintlerr, 0);
    }
}

TEST_F(CharsetLoad, MalformedFileInEveryWayAndPlace) {
    struct Case {
        std::string wrong;
        int code;
    };
    for (const Case &c : {
             Case{"no equals\n", INTL_ENOEQUALS},
             Case{"definition = \"00\n", INTL_EUNTERMINATED},
             Case{"definition = 00\\\n", INTL_EBADESCAPE},
             Case{"definition = " + std::string(1020, '0') + "\n", INTL_ELINETOOLONG},
             Case{std::string(1024, ';') + "\n", INTL_ELINETOOLONG},
         })
        for (const std::string &good : {charset_file(FirstClass()), charset_file(SecondClass())}) {
            const std::size_t first_definition = good.find("definition");
            for (std::size_t at = good.find("class"); at < good.size(); at = good.find('\n', at) + 1) {
                // In front of the image a definition is what begins it.
                if (at < first_definition && c.wrong[0] == 'd')
                    continue;
                ASSERT_EQ(load_wrong(good.substr(0, at) + c.wrong + good.substr(at)), CS_EINTL) << c.code << " " << at;
                ASSERT_EQ(context_.ctxintlerr, c.code) << at;
            }
        }
    EXPECT_EQ(load_wrong("[other\n" + charset_file(FirstClass())), CS_EINTL);
    EXPECT_EQ(context_.ctxintlerr, INTL_EBADSECTION);
    EXPECT_EQ(load_wrong("[charset]\nclass = \"\\x01\n"), CS_EINTL);
    EXPECT_EQ(context_.ctxintlerr, INTL_EUNTERMINATED);
}

TEST_F(CharsetLoad, FileThatEndsAnywhereFails) {
    for (const std::string &whole : {charset_file(FirstClass()), charset_file(SecondClass())})
        for (std::size_t size = 0; size < whole.size() - 1; size += size < 250 ? 1 : 37) {
            const CS_RETCODE status = load_wrong(whole.substr(0, size));
            ASSERT_TRUE(status == CS_FAIL || status == CS_EINTL) << size;
            ASSERT_EQ(context_.ctxintlerr < 0, status == CS_EINTL) << size;
        }
}

TEST_F(CharsetLoad, MissingFileIsToldByThePath) {
    CS_CHAR path[1025] = "";
    EXPECT_EQ(comn__intl_load_charset(&context_, &oid_, &lcache_, path, sizeof path), CS_ENOLOCFILE);
    EXPECT_EQ(context_.ctxintlerr, INTL_ECANTOPEN);
    EXPECT_EQ(path, home_.path_of("charsets/test/charset.loc"));
    EXPECT_EQ(lcache_.locchardesc, nullptr);
    EXPECT_EQ(globals_.cmg_chardesc, nullptr);
}

TEST_F(CharsetLoad, PathIsToldAlsoOfAFileThatIsRightAndCutToItsRoom) {
    home_.write("charsets/test/charset.loc", charset_file(FirstClass()));
    const std::string path = home_.path_of("charsets/test/charset.loc");
    CS_CHAR told[1025] = "";
    ASSERT_EQ(comn__intl_load_charset(&context_, &oid_, &lcache_, told, sizeof told), CS_SUCCEED);
    EXPECT_EQ(told, path);
    CsOID other = {};
    std::string room(12, '~');
    ASSERT_EQ(comn__intl_load_charset(&context_, &other, &lcache_, room.data(), 8), CS_SUCCEED);
    EXPECT_EQ(room, path.substr(0, 7) + "\0~~~~"s);
}

TEST_F(CharsetLoad, NoHomeAndAnEndlessNameAreTheOpenersStatus) {
    std::string endless(1100, 'x');
    lcache_.charname = endless.data();
    EXPECT_EQ(load(oid_), CS_FAIL);
    EXPECT_EQ(lcache_.locchardesc, nullptr);
    EXPECT_EQ(context_.ctxintlerr, 0);
}

TEST_F(CharsetLoad, DirectoryInItsPlaceCannotBeRead) {
    home_.make_directory("charsets/test/charset.loc");
    EXPECT_EQ(load(oid_), CS_EINTL);
    EXPECT_EQ(context_.ctxintlerr, INTL_EREAD);
    EXPECT_EQ(lcache_.locchardesc, nullptr);
}

TEST_F(CharsetLoad, FileThatCannotBeClosedAfterAllIsRead) {
    failure_to_close = INTL_EREAD;
    EXPECT_EQ(load_wrong(charset_file(FirstClass())), CS_EINTL);
    EXPECT_EQ(context_.ctxintlerr, INTL_EREAD);
    EXPECT_EQ(load_wrong("[charset]\nclass = \\x03\n"), CS_FAIL) << "an earlier failure stays what it is";
    EXPECT_EQ(context_.ctxintlerr, 0);
    failure_to_close = 0;
    EXPECT_EQ(load_file(charset_file(FirstClass())), CS_SUCCEED);
}

// ---- The chain ------------------------------------------------------------------------------------------------

TEST_F(CharsetLoad, NewSetGoesToTheHead) {
    CsOID other = {};
    ASSERT_EQ(load_file(charset_file(FirstClass())), CS_SUCCEED);
    CsCharDesc *const older = lcache_.locchardesc;
    EXPECT_EQ(first(), older);
    EXPECT_EQ(older->oid, &oid_);
    EXPECT_EQ(older->sort_order, nullptr);
    EXPECT_EQ(older->conv_config, nullptr);
    EXPECT_EQ(older->charnext, nullptr);
    ASSERT_EQ(load(other), CS_SUCCEED);
    EXPECT_EQ(lcache_.locchardesc, first());
    EXPECT_EQ(first()->oid, &other);
    EXPECT_EQ(first()->charnext, older);
}

TEST_F(CharsetLoad, KnownIdentifierOpensNothing) {
    CsOID other = {};
    ASSERT_EQ(load_file(charset_file(FirstClass())), CS_SUCCEED);
    CsCharDesc *const known = lcache_.locchardesc;
    ASSERT_EQ(load(other), CS_SUCCEED);
    home_.remove("charsets");
    for (CsCharDesc *before : {static_cast<CsCharDesc *>(nullptr), first()}) {
        lcache_.locchardesc = before;
        lcache_.charname = nullptr;
        CS_CHAR path[8] = "before";
        EXPECT_EQ(comn__intl_load_charset(&context_, &oid_, &lcache_, path, sizeof path), CS_SUCCEED);
        EXPECT_EQ(lcache_.locchardesc, known);
        EXPECT_STREQ(path, "before");
    }
}

TEST_F(CharsetLoad, IdentifiersAreKnownByTheirPointers) {
    CS_BYTE ber[] = {6, 1, 42};
    CsOID same = {};
    oid_.oidber = same.oidber = ber;
    oid_.oidberlen = same.oidberlen = 3;
    ASSERT_EQ(load_file(charset_file(FirstClass())), CS_SUCCEED);
    CsCharDesc *const known = lcache_.locchardesc;
    ASSERT_EQ(load(same), CS_SUCCEED);
    EXPECT_NE(lcache_.locchardesc, known);
}

TEST_F(CharsetLoad, FailureLeavesTheChainAsItIs) {
    CsOID other = {};
    ASSERT_EQ(load_file(charset_file(FirstClass())), CS_SUCCEED);
    CsCharDesc *const known = lcache_.locchardesc;
    home_.write("charsets/test/charset.loc", "[charset]\n");
    EXPECT_EQ(load(other), CS_FAIL);
    EXPECT_EQ(lcache_.locchardesc, nullptr);
    EXPECT_EQ(first(), known);
    EXPECT_EQ(known->charnext, nullptr);
    home_.write("charsets/test/charset.loc", charset_file(SecondClass()));
    EXPECT_EQ(load(other), CS_SUCCEED) << "and may be tried again";
    EXPECT_EQ(set().cs_class, 2);
}

TEST_F(CharsetLoad, DropOfTheChainFreesAllOfIt) {
    home_.write("charsets/test/charset.loc", charset_file(SecondClass()));
    home_.write("charsets/test/binary.srt", support::binary_order());
    choose_order(binary_);
    CsOID other = {};
    CS_RETCODE status1, status2;
    int loaded, dropped;
    {
        const FailingAllocator counting;
        status1 = load(oid_);
        status2 = load(other);
        loaded = counting.held();
        com_intl_chardesc_drop(&context_);
        dropped = counting.held();
    }
    EXPECT_EQ(status1, CS_SUCCEED);
    EXPECT_EQ(status2, CS_SUCCEED);
    EXPECT_EQ(loaded, 2 * (2 + 2 + 2)) << "node and record, types and sounds, order and its header";
    EXPECT_EQ(dropped, 0);
    EXPECT_EQ(globals_.cmg_chardesc, nullptr);
    EXPECT_EQ(com_intl_chardesc_drop(&context_), CS_SUCCEED) << "an empty chain";
}

TEST_F(CharsetLoad, DropOfOneSetTakesWhatThereIs) {
    comn__chardesc_drop(nullptr);
    const auto node = [] { return static_cast<CsCharDesc *>(comn_calloc(1, sizeof(CsCharDesc))); };
    int left;
    char config = 'c';
    {
        const FailingAllocator counting;
        comn__chardesc_drop(node()); // not even a record

        CsCharDesc *const half = node();
        half->char_attrib = static_cast<CHAR_ATTRIB *>(comn_calloc(1, sizeof(CHAR_ATTRIB)));
        half->char_attrib->cs_norm_map = static_cast<CS_NORM_MAP *>(comn_calloc(1, 256));
        half->conv_config = reinterpret_cast<CsConvConfig *>(&config); // not memory that could be freed
        comn__chardesc_drop(half);

        CsCharDesc *const orders = node();
        for (int i = 0; i < 3; ++i) {
            auto *const order = static_cast<CsSortDesc *>(comn_calloc(1, sizeof(CsSortDesc)));
            order->sortnext = orders->sort_order;
            orders->sort_order = order;
        }
        comn__chardesc_drop(orders);
        left = counting.held();
    }
    EXPECT_EQ(left, 0);
    EXPECT_EQ(config, 'c');
}

// ---- The sort order that goes with it -------------------------------------------------------------------------

class CharsetOrder : public CharsetLoad {
protected:
    CharsetOrder() {
        home_.write("charsets/test/charset.loc", charset_file(FirstClass()));
        home_.write("charsets/test/binary.srt", support::binary_order());
    }
    const CsOID *order_oid() { return static_cast<CS_OID_TABLE *>(globals_.ctxoids)->ot_oid[CS_OID_COLLATE]; }
};

TEST_F(CharsetOrder, IsLoadedWhereTheContextHasALocale) {
    choose_order(binary_);
    CS_CHAR path[1025] = "";
    ASSERT_EQ(comn__intl_load_charset(&context_, &oid_, &lcache_, path, sizeof path), CS_SUCCEED);
    const CsSortDesc *const order = lcache_.locchardesc->sort_order;
    ASSERT_NE(order, nullptr);
    EXPECT_EQ(order->oid, order_oid()) << "that of its own class, not of the sets";
    EXPECT_EQ(order->sortnext, nullptr);
    EXPECT_EQ(lcache_.locsortorder, order);
    EXPECT_EQ(path, home_.path_of("charsets/test/binary.srt")) << "the file that was opened last";
}

TEST_F(CharsetOrder, IsNotLoadedWithoutALocaleOrAName) {
    choose_order(binary_);
    context_.ctxlocale = nullptr;
    ASSERT_EQ(load(oid_), CS_SUCCEED);
    EXPECT_EQ(lcache_.locchardesc->sort_order, nullptr);
    EXPECT_EQ(lcache_.locsortorder, nullptr);

    CsOID other = {};
    context_.ctxlocale = &locale_;
    lcache_.sortname = nullptr;
    ASSERT_EQ(load(other), CS_SUCCEED);
    EXPECT_EQ(lcache_.locchardesc->sort_order, nullptr);
    EXPECT_EQ(lcache_.locsortorder, nullptr);
}

TEST_F(CharsetOrder, SecondLoadKeepsTheOrderOfTheFirst) {
    choose_order(binary_);
    ASSERT_EQ(load(oid_), CS_SUCCEED);
    CsSortDesc *const order = lcache_.locchardesc->sort_order;
    CS_CHAR other[] = "other";
    choose_order(other);
    CsLocCache second = lcache_;
    second.locsortorder = nullptr;
    ASSERT_EQ(comn__intl_load_charset(&context_, &oid_, &second, nullptr, 0), CS_SUCCEED);
    EXPECT_EQ(second.locchardesc, lcache_.locchardesc);
    EXPECT_EQ(second.locchardesc->sort_order, order);
    EXPECT_EQ(second.locsortorder, nullptr) << "no order is looked at";
}

TEST_F(CharsetOrder, FailureOfTheOrderDropsTheSet) {
    const auto expect_dropped = [&](CS_RETCODE expected, int code, const char *what) {
        SCOPED_TRACE(what);
        context_.ctxintlerr = 0;
        CS_RETCODE status;
        int held;
        {
            const FailingAllocator counting;
            status = load(oid_);
            held = counting.held();
        }
        EXPECT_EQ(status, expected);
        EXPECT_EQ(context_.ctxintlerr, code);
        EXPECT_EQ(held, 0);
        EXPECT_EQ(lcache_.locchardesc, nullptr);
        EXPECT_EQ(lcache_.locsortorder, nullptr);
        EXPECT_EQ(globals_.cmg_chardesc, nullptr);
    };
    CS_CHAR unknown[] = "unknown", other[] = "other";
    choose_order(unknown);
    expect_dropped(CS_FAIL, 0, "no identifier");
    choose_order(other);
    expect_dropped(CS_ENOLOCFILE, INTL_ECANTOPEN, "no file");
    choose_order(binary_);
    lcache_.sortnamelen = 0;
    expect_dropped(CS_FAIL, 0, "no name");
    choose_order(binary_);
    home_.write("charsets/test/binary.srt", "[sortorder]\nclass \\x01\n");
    expect_dropped(CS_EINTL, INTL_ENOEQUALS, "malformed");
    home_.write("charsets/test/binary.srt", "[order]\n");
    expect_dropped(CS_FAIL, 0, "not an order");
    home_.write("charsets/test/binary.srt", support::binary_order());
    EXPECT_EQ(load(oid_), CS_SUCCEED);
}

// ---- Out of memory --------------------------------------------------------------------------------------------

class CharsetMemory : public CharsetOrder {
protected:
    // Fails every allocation of a load in turn. `readers` tells which ones are those of files.
    void sweep(const std::string &content, std::vector<int> readers, int expected) {
        home_.write("charsets/test/charset.loc", content);
        int asked;
        {
            const FailingAllocator counting;
            EXPECT_EQ(load(oid_), CS_SUCCEED);
            asked = counting.asked();
        }
        EXPECT_EQ(asked, expected);
        com_intl_chardesc_drop(&context_);
        for (const auto span : {FailingAllocator::ONCE, FailingAllocator::LASTING})
            for (int n = 1; n <= asked; ++n) {
                SCOPED_TRACE(n);
                const bool is_reader = std::find(readers.begin(), readers.end(), n) != readers.end();
                context_.ctxintlerr = 0;
                lcache_.locchardesc = nullptr;
                lcache_.locsortorder = nullptr;
                CS_RETCODE status;
                int held;
                {
                    const FailingAllocator failing(n, span);
                    status = load(oid_);
                    held = failing.held();
                }
                EXPECT_EQ(status, is_reader ? CS_ENOLOCFILE : CS_MEM_ERROR);
                EXPECT_EQ(context_.ctxintlerr, is_reader ? INTL_ENOMEMORY : 0);
                EXPECT_EQ(held, 0);
                EXPECT_EQ(lcache_.locchardesc, nullptr);
                EXPECT_EQ(lcache_.locsortorder, nullptr);
                EXPECT_EQ(globals_.cmg_chardesc, nullptr);
            }
        EXPECT_EQ(load(oid_), CS_SUCCEED);
    }
};

TEST_F(CharsetMemory, FirstClassAtEveryAllocation) { sweep(charset_file(FirstClass()), {2}, 3 + 2 * 2); }

TEST_F(CharsetMemory, SecondClassAtEveryAllocation) {
    SecondClass image;
    image.width = std::string(256, '\x11');
    image.norm = std::string(256, '\0');
    image.nnorm = 1;
    sweep(charset_file(image), {2}, 3 + 1 + 4 * 2);
}

TEST_F(CharsetMemory, SetWithItsOrderAtEveryAllocation) {
    choose_order(binary_);
    sweep(charset_file(FirstClass()), {2, 3 + 4 + 2}, 3 + 4 + 3);
}

TEST(CharAttribMemory, IsAllocatedAndFreed) {
    CS_ATTRIB *none;
    CS_ATTRIB *some;
    int held, left;
    {
        const FailingAllocator failing(1);
        none = com_alloc_char_attrib();
        some = com_alloc_char_attrib();
        if (some != nullptr)
            std::memset(some, 0xEE, sizeof *some);
        held = failing.held();
        com_free_char_attrib(some);
        com_free_char_attrib(nullptr);
        left = failing.held();
    }
    EXPECT_EQ(none, nullptr);
    EXPECT_NE(some, nullptr);
    EXPECT_EQ(held, 1);
    EXPECT_EQ(left, 0);
}

TEST(CharAttribMemory, TablesAreNotFreedWithTheRecord) {
    CS_ATTRIB *const record = com_alloc_char_attrib();
    ASSERT_NE(record, nullptr);
    std::string image(FirstClass::SIZE, '\x05');
    CS_CHAR name[] = "mine";
    ASSERT_EQ(com_build_char_attrib(CS_IMAGE_CLASS1, 9, name, image.data(), record), CS_SUCCEED);
    com_free_char_attrib(record);
    EXPECT_EQ(image, std::string(FirstClass::SIZE, '\x05'));
}

// ---- Broken contracts -----------------------------------------------------------------------------------------

class LoadOperands {
public:
    explicit LoadOperands(support::NullCalls &calls) {
        whole_.ctxglobals = &globals_;
        const auto load = [](CS_CONTEXT *context, CsOID *oid, CsLocCache *lcache) {
            return comn__intl_load_charset(context, oid, lcache, nullptr, 0);
        };
        NULL_CALLS(calls, load, CS_FAIL, &whole_, &oid_, &lcache_);
        calls.add(
            "load without globals", [=, this] { return load(&bare_, &oid_, &lcache_); }, CS_FAIL);
        const auto get = [](CS_CONTEXT *context, CsLocCache *lcache) {
            return comn__get_charset(context, lcache, nullptr, 0);
        };
        lcache_with_set_.locchardesc = &set_;
        NULL_CALLS(calls, get, CS_FAIL, &whole_, &lcache_with_set_);
        calls.add(
            "get without a set", [=, this] { return get(&whole_, &lcache_); }, CS_FAIL);
        calls.add(
            "drop", [] { return com_intl_chardesc_drop(nullptr); }, CS_FAIL);
        calls.add(
            "drop without globals", [this] { return com_intl_chardesc_drop(&bare_); }, CS_FAIL);
    }
    bool are_untouched() const {
        return globals_.cmg_chardesc == nullptr && lcache_.locchardesc == nullptr && set_.char_attrib == nullptr;
    }

private:
    CsCtxGlobals globals_ = {};
    CS_CONTEXT whole_ = {}, bare_ = {};
    CsOID oid_ = {};
    CsCharDesc set_ = {};
    CsLocCache lcache_ = {}, lcache_with_set_ = {};
};

TEST(CharsetLoadDeathTest, MissingPointersAreReported) {
    support::NullCalls calls;
    const LoadOperands operands(calls);
    calls.expect_reports("charset_load");
}

TEST(CharsetLoadContracts, MissingPointersFailWhereAssertionsReturn) {
    support::NullCalls calls;
    const LoadOperands operands(calls);
    calls.expect_answers([] {}, [&] { EXPECT_TRUE(operands.are_untouched()); });
}

TEST_F(CharsetLoad, RoomOfNothingForThePathFailsAndLeavesNothingWhereAssertionsReturn) {
    home_.write("charsets/test/charset.loc", charset_file(FirstClass()));
    CS_CHAR path[4] = "~~~";
    ReturningAssertions returning;
    CS_RETCODE status;
    int held;
    {
        const FailingAllocator counting;
        status = comn__intl_load_charset(&context_, &oid_, &lcache_, path, 0);
        held = counting.held();
    }
    EXPECT_EQ(status, CS_FAIL);
    EXPECT_EQ(returning.count(), 1);
    EXPECT_EQ(held, 0);
    EXPECT_STREQ(path, "~~~");
    EXPECT_EQ(lcache_.locchardesc, nullptr);
}

using CharsetPathDeathTest = CharsetLoad;

TEST_F(CharsetPathDeathTest, RoomOfNothingForThePathIsReported) {
    CS_CHAR path[4];
    EXPECT_BOMB(comn__intl_load_charset(&context_, &oid_, &lcache_, path, 0), "com_path");
}

} // namespace
