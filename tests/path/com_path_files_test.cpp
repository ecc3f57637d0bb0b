// Openers, transport configuration and the directory library, over directories of the tests' own.
#include "path_fixture.h"
#include "support/failing_allocator.h"
#include "support/temp_directory.h"

#include <dlxintl/intl.h>

#include <cstring>
#include <filesystem>
#include <string>

namespace {

using support::TempDirectory;

// ---- Openers --------------------------------------------------------------------------------------------------

class Openers : public PathFixture {
protected:
    Openers() {
        home_.put(directory_.path());
        for (const char *below : {"config", "sub/config", "locales/message/french", "locales/french/iso_1",
                                  "charsets/iso_1"})
            std::filesystem::create_directories(directory_.path_of(below));
        support::write_file(directory_.path_of("config/x.cfg"), "[plain]\n");
        support::write_file(directory_.path_of("sub/config/x.cfg"), "[below]\n");
        support::write_file(directory_.path_of("locales/message/french/m.loc"), "[message]\n");
        support::write_file(directory_.path_of("locales/locales.dat"), "[locales]\n");
        support::write_file(directory_.path_of("locales/french/common.loc"), "[language]\n");
        support::write_file(directory_.path_of("locales/french/iso_1/common.loc"), "[both]\n");
        support::write_file(directory_.path_of("charsets/list.loc"), "[list]\n");
        support::write_file(directory_.path_of("charsets/iso_1/charset.loc"), "[set]\n");
        support::write_file(directory_.path_of("charsets/iso_1/binary.srt"), "[order]\n");
    }
    // The name of the first section of a file that was opened, which is closed then.
    std::string first_section() {
        int status = 0;
        const char *name = intl_nextsection(&file_, &status);
        const std::string result = name != nullptr ? name : "none";
        intl_close(&file_);
        return result;
    }

    TempDirectory directory_;
    INTL_LOCFILE file_ = {};
    std::string cfg_ = "x.cfg", lang_ = "french", msg_ = "m.loc", absent_ = "absent";
};

TEST_F(Openers, CfgfileIsOpenedWithAndWithoutTheSubdirectory) {
    ncs_.put("sub");
    EXPECT_EQ(com__open_cfgfile(&context_, chars(cfg_), &file_, CS_FALSE), CS_SUCCEED);
    EXPECT_EQ(first_section(), "plain");
    EXPECT_EQ(com__open_cfgfile(nullptr, chars(cfg_), &file_, CS_TRUE), CS_SUCCEED);
    EXPECT_EQ(first_section(), "below");
    EXPECT_EQ(context_.ctxintlerr, 0);
}

TEST_F(Openers, CfgfileThatIsMissingIsNoLocfile) {
    EXPECT_EQ(com__open_cfgfile(&context_, chars(absent_), &file_, CS_FALSE), CS_ENOLOCFILE);
    EXPECT_EQ(context_.ctxintlerr, INTL_ECANTOPEN);
    EXPECT_EQ(com__open_cfgfile(nullptr, chars(absent_), &file_, CS_FALSE), CS_ENOLOCFILE);
}

TEST_F(Openers, StatusOfTheBuilderIsAnswered) {
    std::string endless = letters(1100);
    EXPECT_EQ(com__open_cfgfile(&context_, chars(endless), &file_, CS_FALSE), CS_FAIL);
    EXPECT_EQ(comn__open_msgfile(&context_, chars(lang_), 6, chars(endless), 1100, &file_, nullptr, 0), CS_FAIL);
    EXPECT_EQ(context_.ctxintlerr, 0);
    home_.put({});
    EXPECT_EQ(com__open_cfgfile(&context_, chars(cfg_), &file_, CS_FALSE), CS_EINTL);
    EXPECT_EQ(context_.ctxintlerr, INTL_ENOHOME);
    context_.ctxintlerr = 0;
    EXPECT_EQ(comn__open_msgfile(&context_, chars(lang_), 6, chars(msg_), 5, &file_, nullptr, 0), CS_EINTL);
    EXPECT_EQ(context_.ctxintlerr, INTL_ENOHOME);
}

TEST_F(Openers, PathBufferHas1025Bytes) {
    // The longest name that is let through fills the room: its last byte is cut, and no such file is there.
    const size_t free = 1025 - directory_.path().size() - std::strlen("/config/");
    std::string longest = letters(free), too_long = letters(free + 1);
    EXPECT_EQ(com__open_cfgfile(&context_, chars(longest), &file_, CS_FALSE), CS_ENOLOCFILE);
    EXPECT_EQ(com__open_cfgfile(&context_, chars(too_long), &file_, CS_FALSE), CS_FAIL);
}

TEST_F(Openers, MsgfileIsOpenedAndItsPathToldAtEverySize) {
    const std::string path = directory_.path_of("locales/message/french/m.loc");
    for (size_t size = 1; size < path.size() + 10; ++size) {
        std::string name(path.size() + 20, GUARD), expected = name;
        const std::string held = path.substr(0, size - 1);
        expected.replace(0, held.size(), held);
        expected[held.size()] = '\0';
        ASSERT_EQ(comn__open_msgfile(&context_, chars(lang_), 6, chars(msg_), 5, &file_, name.data(),
                                     static_cast<CS_INT>(size)),
                  CS_SUCCEED);
        ASSERT_EQ(first_section(), "message");
        ASSERT_EQ(name, expected) << size;
    }
    EXPECT_EQ(comn__open_msgfile(nullptr, chars(lang_), 6, chars(msg_), 5, &file_, nullptr, 0), CS_SUCCEED);
    EXPECT_EQ(first_section(), "message");
}

TEST_F(Openers, MsgfileThatIsMissingHasItsPathTold) {
    CS_CHAR name[1025] = "";
    EXPECT_EQ(comn__open_msgfile(&context_, chars(lang_), 6, chars(absent_), 6, &file_, name, sizeof name),
              CS_ENOLOCFILE);
    EXPECT_EQ(name, directory_.path_of("locales/message/french/absent"));
    EXPECT_EQ(context_.ctxintlerr, INTL_ECANTOPEN);
}

TEST_F(Openers, LocfileIsOpenedOfALanguageAndASet) {
    std::string locales = "locales.dat", common = "common.loc", set = "iso_1";
    const auto open = [&](CS_CHAR *lang, CS_CHAR *charset, std::string &file) {
        const CS_RETCODE status = com__open_locfile(&context_, lang, charset, chars(file), &file_, nullptr, 0);
        return status == CS_SUCCEED ? first_section() : "status " + std::to_string(status);
    };
    EXPECT_EQ(open(nullptr, nullptr, locales), "locales");
    EXPECT_EQ(open(nullptr, chars(set), locales), "locales") << "a set without a language is not looked at";
    EXPECT_EQ(open(chars(lang_), nullptr, common), "language");
    EXPECT_EQ(open(chars(lang_), chars(set), common), "both");
    EXPECT_EQ(open(chars(lang_), chars(set), locales), "status -414");
}

TEST_F(Openers, CharfileIsOpenedOfASetAndAnExtension) {
    std::string set = "iso_1", list = "list.loc", charset = "charset.loc", binary = "binary", srt = "srt";
    const auto open = [&](CS_CHAR *name, std::string &file, CS_CHAR *extension) {
        const CS_RETCODE status = com__open_charfile(&context_, name, chars(file), extension, &file_, nullptr, 0);
        return status == CS_SUCCEED ? first_section() : "status " + std::to_string(status);
    };
    EXPECT_EQ(open(chars(set), charset, nullptr), "set");
    EXPECT_EQ(open(chars(set), binary, chars(srt)), "order");
    EXPECT_EQ(open(nullptr, list, nullptr), "list");
    EXPECT_EQ(open(chars(set), list, nullptr), "status -414");
    EXPECT_EQ(com__open_charfile(nullptr, chars(set), chars(charset), nullptr, &file_, nullptr, 0), CS_SUCCEED);
    EXPECT_EQ(first_section(), "set") << "no context is needed";
    EXPECT_EQ(com__open_charfile(nullptr, chars(set), chars(absent_), nullptr, &file_, nullptr, 0), CS_ENOLOCFILE);
}

TEST_F(Openers, OddityCharfileWithoutANameOpensTheDirectoryWhichCannotBeRead) {
    std::string set = "iso_1";
    EXPECT_EQ(com__open_charfile(&context_, chars(set), nullptr, chars(set), &file_, nullptr, 0), CS_SUCCEED);
    int status = 0;
    EXPECT_EQ(intl_nextsection(&file_, &status), nullptr);
    EXPECT_EQ(status, INTL_EREAD);
    intl_close(&file_);
}

TEST_F(Openers, LocfileAndCharfileTellTheirPathAtEverySize) {
    std::string common = "common.loc", set = "iso_1", binary = "binary", srt = "srt";
    for (const bool of_set : {false, true}) {
        const std::string path =
            directory_.path_of(of_set ? "charsets/iso_1/binary.srt" : "locales/french/iso_1/common.loc");
        for (size_t size = 1; size < path.size() + 10; ++size) {
            std::string name(path.size() + 20, GUARD), expected = name;
            const std::string held = path.substr(0, size - 1);
            expected.replace(0, held.size(), held);
            expected[held.size()] = '\0';
            const auto room = static_cast<CS_INT>(size);
            ASSERT_EQ(of_set ? com__open_charfile(&context_, chars(set), chars(binary), chars(srt), &file_,
                                                  name.data(), room)
                             : com__open_locfile(&context_, chars(lang_), chars(set), chars(common), &file_,
                                                 name.data(), room),
                      CS_SUCCEED);
            ASSERT_EQ(first_section(), of_set ? "order" : "both");
            ASSERT_EQ(name, expected) << size;
        }
    }
}

TEST_F(Openers, LocfileAndCharfileThatAreMissingHaveTheirPathTold) {
    CS_CHAR name[1025] = "";
    EXPECT_EQ(com__open_locfile(&context_, chars(lang_), nullptr, chars(absent_), &file_, name, sizeof name),
              CS_ENOLOCFILE);
    EXPECT_EQ(name, directory_.path_of("locales/french/absent"));
    EXPECT_EQ(context_.ctxintlerr, INTL_ECANTOPEN);
    context_.ctxintlerr = 0;
    EXPECT_EQ(com__open_charfile(&context_, chars(absent_), chars(msg_), nullptr, &file_, name, sizeof name),
              CS_ENOLOCFILE);
    EXPECT_EQ(name, directory_.path_of("charsets/absent/m.loc"));
    EXPECT_EQ(context_.ctxintlerr, INTL_ECANTOPEN);
}

TEST_F(Openers, LocfileAndCharfileAnswerTheStatusOfTheBuilderAndTellNoPath) {
    std::string endless = letters(1100), name(64, GUARD);
    const auto room = static_cast<CS_INT>(name.size());
    const auto locfile = [&](std::string &file) {
        return com__open_locfile(&context_, nullptr, nullptr, chars(file), &file_, name.data(), room);
    };
    const auto charfile = [&](std::string &file) {
        return com__open_charfile(&context_, nullptr, chars(file), nullptr, &file_, name.data(), room);
    };
    EXPECT_EQ(locfile(endless), CS_FAIL);
    EXPECT_EQ(charfile(endless), CS_FAIL);
    EXPECT_EQ(context_.ctxintlerr, 0);
    home_.put({});
    EXPECT_EQ(locfile(msg_), CS_EINTL);
    EXPECT_EQ(context_.ctxintlerr, INTL_ENOHOME);
    context_.ctxintlerr = 0;
    EXPECT_EQ(charfile(msg_), CS_EINTL);
    EXPECT_EQ(context_.ctxintlerr, INTL_ENOHOME);
    EXPECT_EQ(name, std::string(64, GUARD));
}

TEST_F(Openers, PathBufferOfLocfileAndCharfileHas1025Bytes) {
    const size_t locales = 1025 - directory_.path().size() - std::strlen("/locales/");
    const size_t charsets = 1025 - directory_.path().size() - std::strlen("/charsets/");
    for (const size_t extra : {size_t{0}, size_t{1}}) {
        std::string loc = letters(locales + extra), set = letters(charsets - 1 + extra);
        EXPECT_EQ(com__open_locfile(&context_, nullptr, nullptr, chars(loc), &file_, nullptr, 0),
                  extra == 0 ? CS_ENOLOCFILE : CS_FAIL);
        EXPECT_EQ(com__open_charfile(&context_, nullptr, chars(set), nullptr, &file_, nullptr, 0),
                  extra == 0 ? CS_ENOLOCFILE : CS_FAIL);
    }
}

TEST_F(Openers, WithoutMemoryAreNoLocfileAndLeaveNothing) {
    std::string set = "iso_1", charset = "charset.loc", locales = "locales.dat";
    for (const auto span : {support::FailingAllocator::ONCE, support::FailingAllocator::LASTING})
        for (int opener = 0; opener < 4; ++opener) {
            context_.ctxintlerr = 0;
            CS_RETCODE status;
            int held;
            {
                const support::FailingAllocator failing(1, span);
                status = opener == 0
                             ? comn__open_msgfile(&context_, chars(lang_), 6, chars(msg_), 5, &file_, nullptr, 0)
                         : opener == 1 ? com__open_cfgfile(&context_, chars(cfg_), &file_, CS_FALSE)
                         : opener == 2
                             ? com__open_locfile(&context_, nullptr, nullptr, chars(locales), &file_, nullptr, 0)
                             : com__open_charfile(&context_, chars(set), chars(charset), nullptr, &file_, nullptr, 0);
                held = failing.held();
            }
            EXPECT_EQ(status, CS_ENOLOCFILE);
            EXPECT_EQ(context_.ctxintlerr, INTL_ENOMEMORY);
            EXPECT_EQ(held, 0);
        }
}

// ---- Transport configuration ----------------------------------------------------------------------------------

using TclCfg = PathFixture;

std::string get_tclcfg(CS_INT size, CS_INT &length) {
    std::string room(static_cast<size_t>(size) + 8, GUARD);
    length = com_get_tclcfg(room.data(), size);
    EXPECT_EQ(room.substr(static_cast<size_t>(size)), std::string(8, GUARD));
    return room.c_str();
}

TEST_F(TclCfg, StoredPathOf511BytesIsTakenAndOneMoreRefused) {
    std::string longest = letters(511), too_long = letters(512);
    EXPECT_EQ(com_set_tclcfg(longest.data()), CS_SUCCEED);
    EXPECT_EQ(com_set_tclcfg(too_long.data()), CS_FAIL);
    CS_INT length = 0;
    EXPECT_EQ(get_tclcfg(600, length), longest) << "the old one stays";
    EXPECT_EQ(length, 511);
}

TEST_F(TclCfg, StoredPathThatDoesNotFitIsNothingAndDoesNotFallThrough) {
    new_tcl_.put("/env");
    home_.put("/h");
    std::string stored = "/stored";
    EXPECT_EQ(com_set_tclcfg(stored.data()), CS_SUCCEED);
    for (CS_INT size = 1; size < 20; ++size) {
        CS_INT length = -1;
        const std::string got = get_tclcfg(size, length);
        EXPECT_EQ(length, size > 7 ? 7 : 0) << size;
        if (size > 7) {
            EXPECT_EQ(got, "/stored");
        }
    }
}

TEST_F(TclCfg, NullOrEmptyClearsTheStoredPath) {
    std::string stored = "/stored", empty;
    new_tcl_.put("/env");
    CS_INT length = 0;
    for (CS_CHAR *clear : {static_cast<CS_CHAR *>(nullptr), empty.data()}) {
        EXPECT_EQ(com_set_tclcfg(stored.data()), CS_SUCCEED);
        EXPECT_EQ(get_tclcfg(64, length), "/stored");
        EXPECT_EQ(com_set_tclcfg(clear), CS_SUCCEED);
        EXPECT_EQ(get_tclcfg(64, length), "/env");
        EXPECT_EQ(length, 4);
    }
}

TEST_F(TclCfg, PlacesAreAskedInTheirOrder) {
    const std::string long_value = letters(700);
    const Text values[] = {Text(), Text(""), Text("/value"), Text(long_value)};
    for (const Text &newer : values)
        for (const Text &older : values)
            for (const Text &home : {Text(), Text("/h")})
                for (const Text &ncs : {Text(), Text(""), Text("sub")}) {
                    new_tcl_.put(newer);
                    old_tcl_.put(older ? Text(*older == "" ? "" : "/old" + *older) : Text());
                    home_.put(home);
                    ncs_.put(ncs);
                    std::string expected;
                    if (newer && !newer->empty())
                        expected = *newer;
                    else if (older && !older->empty())
                        expected = "/old" + *older;
                    else if (home)
                        expected = ncs && !ncs->empty() ? "/h/sub/config/libtcl64.cfg" : "/h/config/libtcl64.cfg";
                    CS_INT length = -1;
                    std::string room(1024, GUARD);
                    length = com_get_tclcfg(room.data(), 1024);
                    EXPECT_EQ(length, static_cast<CS_INT>(expected.size()));
                    if (length > 0) {
                        EXPECT_EQ(room.c_str(), expected);
                    }
                }
}

TEST_F(TclCfg, OddityVariableThatIsCutHasItsWholeLengthAnswered) {
    new_tcl_.put("0123456789");
    CS_INT length = 0;
    EXPECT_EQ(get_tclcfg(5, length), "0123");
    EXPECT_EQ(length, 10);
}

TEST_F(TclCfg, DefaultFollowsTheFitTestsOfCfgfile) {
    home_.put("/h");
    const std::string path = "/h/config/libtcl64.cfg";
    for (CS_INT size = 2; size < 40; ++size) {
        CS_INT length = -1;
        const std::string got = get_tclcfg(size, length);
        const CS_INT whole = static_cast<CS_INT>(path.size());
        EXPECT_EQ(length, size < whole ? 0 : size == whole ? whole - 1 : whole) << size;
        if (length > 0) {
            EXPECT_EQ(got, path.substr(0, static_cast<size_t>(length)));
        }
    }
}

// ---- The directory library ------------------------------------------------------------------------------------

class LdapSuffix : public PathFixture {
protected:
    LdapSuffix() { home_.put(directory_.path()); }
    void add(const std::string &name, const std::string &below = "devlib3p64") {
        std::filesystem::create_directories(directory_.path_of(below));
        support::write_file(directory_.path_of(below + "/" + name), "");
    }
    // The suffix, or "fail"; nothing is written behind its 256 bytes.
    std::string suffix(CS_INT latest) {
        std::string room(300, GUARD);
        const CS_RETCODE status = com_get_ldapversionsuffix(room.data(), latest);
        EXPECT_EQ(room.substr(256), std::string(44, GUARD));
        return status == CS_SUCCEED ? room.c_str() : "fail";
    }
    TempDirectory directory_;
};

TEST_F(LdapSuffix, BuiltInOneNeedsNoDirectory) {
    for (const CS_INT latest : {0, 2, -1, 256})
        EXPECT_EQ(suffix(latest), ".2.4.44_ccl") << latest;
    home_.put({});
    EXPECT_EQ(suffix(0), ".2.4.44_ccl");
}

TEST_F(LdapSuffix, LatestFailsWithoutTheDirectoryOrAHome) {
    EXPECT_EQ(suffix(1), "fail");
    home_.put({});
    EXPECT_EQ(suffix(1), "fail");
    home_.put(home_of(505));
    EXPECT_EQ(suffix(1), "fail") << "the path does not fit";
}

TEST_F(LdapSuffix, LatestIsTheBuiltInOneWhenNoneIsGreater) {
    std::filesystem::create_directories(directory_.path_of("devlib3p64"));
    EXPECT_EQ(suffix(1), ".2.4.44_ccl");
    add("libdalvexldap64.so.2.4.44_ccl");
    add("libdalvexldap64.so.2.4.43_ccl");
    add("libdalvexldap64.so");
    add("libdalvexldap.so.9");
    add("zzz");
    EXPECT_EQ(suffix(1), ".2.4.44_ccl");
    CS_CHAR room[256] = "before";
    CS_BOOL found = CS_TRUE;
    EXPECT_EQ(com__find_latest_ldapversion(room, &found), CS_SUCCEED);
    EXPECT_EQ(found, CS_FALSE);
    EXPECT_STREQ(room, "before");
}

TEST_F(LdapSuffix, OddityLatestComparesByteByByteSo9IsLaterThan44) {
    add("libdalvexldap64.so.2.4.44_ccl");
    add("libdalvexldap64.so.2.4.9_ccl");
    add("libdalvexldap64.so.2.4.50_ccl");
    EXPECT_EQ(suffix(1), ".2.4.9_ccl");
    CS_CHAR room[256] = "";
    CS_BOOL found = CS_FALSE;
    EXPECT_EQ(com__find_latest_ldapversion(room, &found), CS_SUCCEED);
    EXPECT_EQ(found, CS_TRUE);
    EXPECT_STREQ(room, ".2.4.9_ccl");
    EXPECT_EQ(suffix(0), ".2.4.44_ccl");
}

TEST_F(LdapSuffix, LatestComparesBytesUnsigned) {
    add("libdalvexldap64.so.9");
    add("libdalvexldap64.so.\xC3\xA9");
    EXPECT_EQ(suffix(1), ".\xC3\xA9");
}

TEST_F(LdapSuffix, OddityNameGreaterThanTheLibraryLosesItsFirst18BytesAllTheSame) {
    add("libdalvexldap64_new.so.7");
    EXPECT_EQ(suffix(1), "w.so.7");
}

TEST_F(LdapSuffix, OddityNameShorterThan18BytesHasAnEmptySuffix) {
    add("libdalvexldap64x");
    EXPECT_EQ(suffix(1), "");
}

TEST_F(LdapSuffix, LongestNameOfAFile) {
    const std::string name = "libdalvexldap64.so.3" + letters(235);
    add(name);
    EXPECT_EQ(suffix(1), name.substr(18));
}

TEST_F(LdapSuffix, LatestIsSoughtBelowTheSubdirectory) {
    add("libdalvexldap64.so.8");
    add("libdalvexldap64.so.9", "sub/devlib3p64");
    EXPECT_EQ(suffix(1), ".8");
    ncs_.put("sub");
    EXPECT_EQ(suffix(1), ".9");
}

TEST(DriverSuffix, IsConstant) { EXPECT_STREQ(com_get_driverversionsuffix(), ".16.0.03.02"); }

} // namespace
