// Path builders at every size against a literal restatement of their fit tests, and the mistakes of their callers.
#include "path_fixture.h"
#include "support/assertions.h"

#include <dlxintl/intl.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace {

using support::Accounts;
using support::ReturningAssertions;
constexpr CS_INT ASSERTION = -99; // a status of the restatements: the builder reports a mistake

// What a builder is told to do: its status, and the path as far as it comes, uncut.
struct Told {
    CS_INT status = CS_SUCCEED;
    std::string text;
};

// A restatement while it goes through its tests.
struct Building {
    Building(const std::string &home, CS_INT pathsize)
        : text(home), length(static_cast<long>(home.size())), size(pathsize) {}
    // Appends a component when `fits`, counting it with its separator.
    bool add(bool fits, const std::string &name) {
        if (!fits)
            return false;
        text += "/" + name;
        length += static_cast<long>(name.size()) + 1;
        return true;
    }
    bool may_reach(const std::string &name) { return add(length + long(name.size()) + 1 <= size, name); }
    bool stays_under(const std::string &name) { return add(length + long(name.size()) + 1 < size, name); }
    Told done(bool fits) const { return {fits ? CS_SUCCEED : CS_FAIL, text}; }

    std::string text;
    long length;
    long size;
};

class ComPath : public PathFixture {
protected:
    // Every size from 1 to well past where the last test of any builder lies.
    template <class Builder, class Restatement>
    void at_every_size(const Builder &builder, const Restatement &restatement, bool zeroes, long longest,
                       const std::string &what) {
        ReturningAssertions assertions;
        int reports = 0;
        for (CS_INT size = 1; size <= longest + 24; ++size) {
            room_.assign(static_cast<size_t>(size) + 16, GUARD);
            const CS_RETCODE status = builder(room_.data(), size);
            const Told told = restatement(size);
            const std::string where = what + ", size " + std::to_string(size);
            reports += told.status == ASSERTION;
            ASSERT_EQ(assertions.count(), reports) << where;
            ASSERT_EQ(status, told.status == ASSERTION ? CS_FAIL : told.status) << where;
            ASSERT_EQ(room_.substr(static_cast<size_t>(size)), std::string(16, GUARD)) << where;
            const size_t written = strnlen(room_.data(), static_cast<size_t>(size));
            ASSERT_LT(written, static_cast<size_t>(size)) << where;
            const std::string got = room_.substr(0, written);
            const std::string cut = told.text.substr(0, static_cast<size_t>(size) - 1);
            ASSERT_EQ(got, told.status == CS_SUCCEED ? cut : told.text.substr(0, written)) << where;
            const size_t unwritten = zeroes ? static_cast<size_t>(size) - written : 0;
            ASSERT_EQ(room_.substr(written, unwritten), std::string(unwritten, '\0')) << where;
        }
    }

    // The same for homes of several lengths.
    void for_homes(const std::function<void(const std::string &)> &check) {
        for (const size_t length : {1, 2, 9, 40, 300}) {
            const std::string home = home_of(length);
            home_.put(home);
            ASSERT_NO_FATAL_FAILURE(check(home));
        }
    }

    std::string room_;
};

using ComPathDeathTest = ComPath;

// ---- The fit tests --------------------------------------------------------------------------------------------

Told told_anyfile(const std::string &home, const std::string &ncs, const Text &directory, const Text &filename,
                  CS_INT size) {
    if (static_cast<long>(home.size()) >= size)
        return {ASSERTION, home};
    Building path(home, size);
    path.text = home.substr(0, static_cast<size_t>(size) - 2); // the home directory is given one byte less
    if (!ncs.empty()) {
        if (path.length + long(ncs.size()) + 1 >= size)
            return path.done(false);
        path.text += "/" + ncs.substr(0, 511);
        path.length += long(ncs.size()) + 1;
        path.length += long(ncs.size());
    }
    return path.done((!directory || path.stays_under(*directory)) && (!filename || path.stays_under(*filename)));
}

TEST_F(ComPath, AnyfileAtEverySize) {
    for_homes([&](const std::string &home) {
        for (const size_t ncs : {0, 1, 7, 100, 511, 512, 600})
            for (Text directory : {Text(), Text("d"), Text(letters(60))})
                for (Text filename : {Text(), Text("file.cfg"), Text(letters(100))}) {
                    ncs_.put(letters(ncs));
                    const auto build = [&](CS_CHAR *path, CS_INT size) {
                        return com_path_anyfile(path, size, chars(directory), chars(filename), CS_TRUE);
                    };
                    const auto told = [&](CS_INT size) {
                        return told_anyfile(home, letters(ncs), directory, filename, size);
                    };
                    const long longest = long(home.size() + 2 * ncs + directory.value_or("").size() +
                                              filename.value_or("").size() + 4);
                    ASSERT_NO_FATAL_FAILURE(at_every_size(build, told, true, longest, "subdirectory " +
                                                                                          std::to_string(ncs)));
                }
    });
}

TEST_F(ComPath, AnyfileWithoutSubdirectoryAtEverySize) {
    ncs_.put("ignored");
    for_homes([&](const std::string &home) {
        std::string directory = "devlib", filename = "file";
        const auto build = [&](CS_CHAR *path, CS_INT size) {
            return com_path_anyfile(path, size, chars(directory), chars(filename), CS_FALSE);
        };
        const auto told = [&](CS_INT size) { return told_anyfile(home, "", directory, filename, size); };
        ASSERT_NO_FATAL_FAILURE(at_every_size(build, told, true, long(home.size()) + 12, "no subdirectory"));
    });
}

TEST_F(ComPath, OddityAnyfileCountsTheSubdirectoryTwice) {
    home_.put("/h");
    ncs_.put("0123456789");
    std::string name = "f";
    CS_CHAR path[64];
    // The path has 15 bytes; 26 are counted.
    EXPECT_EQ(com_path_anyfile(path, 25, nullptr, chars(name), CS_TRUE), CS_FAIL);
    EXPECT_EQ(com_path_anyfile(path, 26, nullptr, chars(name), CS_TRUE), CS_SUCCEED);
    EXPECT_STREQ(path, "/h/0123456789/f");
}

TEST_F(ComPath, OddityAnyfileCutsAHomeThatJustFits) {
    home_.put("/home");
    CS_CHAR path[16];
    EXPECT_EQ(com_path_anyfile(path, 7, nullptr, nullptr, CS_FALSE), CS_SUCCEED);
    EXPECT_STREQ(path, "/home");
    EXPECT_EQ(com_path_anyfile(path, 6, nullptr, nullptr, CS_FALSE), CS_SUCCEED);
    EXPECT_STREQ(path, "/hom");
}

Told told_ifile(const std::string &home, CS_INT size) {
    Building path(home, size);
    if (long(home.size()) + 11 > size)
        return path.done(false);
    path.text += "/interfaces";
    return path.done(true);
}

TEST_F(ComPath, IfileAtEverySize) {
    for_homes([&](const std::string &home) {
        const auto build = [&](CS_CHAR *path, CS_INT size) { return com_path_ifile(&context_, path, size); };
        const auto told = [&](CS_INT size) { return told_ifile(home, size); };
        ASSERT_NO_FATAL_FAILURE(at_every_size(build, told, false, long(home.size()) + 11, "ifile"));
    });
}

TEST_F(ComPath, IfileFromItsVariableAtEverySizeIsCutButSucceeds) {
    for (const size_t length : {1, 30, 400}) {
        const std::string value = letters(length);
        ifile_.put(value);
        const auto build = [&](CS_CHAR *path, CS_INT size) { return com_path_ifile(&context_, path, size); };
        const auto told = [&](CS_INT) { return Told{CS_SUCCEED, value}; };
        ASSERT_NO_FATAL_FAILURE(at_every_size(build, told, false, long(length), "ifile of the environment"));
    }
}

TEST_F(ComPath, IfileFromItsVariableNeedsNoHome) {
    ifile_.put("/etc/interfaces");
    CS_CHAR path[64];
    EXPECT_EQ(com_path_ifile(&context_, path, sizeof path), CS_SUCCEED);
    EXPECT_STREQ(path, "/etc/interfaces");
    EXPECT_EQ(context_.ctxintlerr, 0);
}

TEST_F(ComPath, IfileWithAnEmptyVariableLiesAtHome) {
    ifile_.put("");
    home_.put("/h");
    CS_CHAR path[64];
    EXPECT_EQ(com_path_ifile(nullptr, path, sizeof path), CS_SUCCEED);
    EXPECT_STREQ(path, "/h/interfaces");
}

TEST_F(ComPath, OddityIfileThatFillsTheRoomSucceedsAndLosesItsLastByte) {
    home_.put("/h");
    CS_CHAR path[64];
    EXPECT_EQ(com_path_ifile(nullptr, path, 13), CS_SUCCEED);
    EXPECT_STREQ(path, "/h/interface");
}

Told told_cfgfile(const std::string &home, const std::string &ncs, const std::string &name, CS_INT size) {
    if (long(home.size()) > size)
        return {ASSERTION, home};
    Building path(home, size);
    if (!ncs.empty()) {
        path.text += "/" + ncs.substr(0, 512);
        path.length += long(ncs.size());
    }
    return path.done(path.may_reach("config") && path.may_reach(name));
}

TEST_F(ComPath, CfgfileAtEverySize) {
    for_homes([&](const std::string &home) {
        for (const size_t ncs : {0, 1, 7, 100, 512, 513, 600})
            for (std::string name : {std::string(), std::string("ncs.cfg"), letters(200)}) {
                ncs_.put(letters(ncs));
                const auto build = [&](CS_CHAR *path, CS_INT size) {
                    return com_path_cfgfile(&context_, chars(name), path, size, CS_TRUE);
                };
                const auto told = [&](CS_INT size) { return told_cfgfile(home, letters(ncs), name, size); };
                ASSERT_NO_FATAL_FAILURE(at_every_size(build, told, false, long(home.size() + ncs + name.size() + 8),
                                                      "subdirectory " + std::to_string(ncs)));
            }
    });
}

TEST_F(ComPath, CfgfileWithoutNcsIgnoresTheSubdirectory) {
    ncs_.put("sub");
    for_homes([&](const std::string &home) {
        std::string name = "ncs.cfg";
        const auto build = [&](CS_CHAR *path, CS_INT size) {
            return com_path_cfgfile(&context_, chars(name), path, size, CS_FALSE);
        };
        const auto told = [&](CS_INT size) { return told_cfgfile(home, "", name, size); };
        ASSERT_NO_FATAL_FAILURE(at_every_size(build, told, false, long(home.size()) + 15, "no subdirectory"));
    });
}

TEST_F(ComPath, CfgfileTakesAnEmptySubdirectoryForNone) {
    home_.put("/h");
    ncs_.put("");
    std::string name = "ncs.cfg";
    CS_CHAR path[64];
    EXPECT_EQ(com_path_cfgfile(nullptr, chars(name), path, sizeof path, CS_TRUE), CS_SUCCEED);
    EXPECT_STREQ(path, "/h/config/ncs.cfg");
}

TEST_F(ComPath, OddityCfgfileDoesNotCountTheSeparatorOfTheSubdirectory) {
    home_.put("/h");
    ncs_.put("sub");
    std::string name = "ncs.cfg";
    CS_CHAR path[64];
    // The path has 21 bytes, 20 are counted, and a count that reaches the size is let through.
    EXPECT_EQ(com_path_cfgfile(nullptr, chars(name), path, 19, CS_TRUE), CS_FAIL);
    EXPECT_EQ(com_path_cfgfile(nullptr, chars(name), path, 20, CS_TRUE), CS_SUCCEED);
    EXPECT_STREQ(path, "/h/sub/config/ncs.c");
    EXPECT_EQ(com_path_cfgfile(nullptr, chars(name), path, 22, CS_TRUE), CS_SUCCEED);
    EXPECT_STREQ(path, "/h/sub/config/ncs.cfg");
}

Told told_locfile(const std::string &home, const Text &lang, const Text &charset, const std::string &name,
                  CS_INT size) {
    Building path(home, size);
    bool fits = path.may_reach("locales");
    if (lang) {
        fits = fits && path.may_reach(*lang);
        if (charset)
            fits = fits && path.may_reach(*charset);
    }
    return path.done(fits && path.may_reach(name));
}

TEST_F(ComPath, LocfileAtEverySize) {
    for_homes([&](const std::string &home) {
        for (Text lang : {Text(), Text("us_english"), Text("")})
            for (Text charset : {Text(), Text("iso_1"), Text(letters(80))})
                for (std::string name : {std::string("locales.dat"), std::string(), letters(150)}) {
                    const auto build = [&](CS_CHAR *path, CS_INT size) {
                        return com__path_locfile(&context_, chars(lang), chars(charset), chars(name), path, size);
                    };
                    const auto told = [&](CS_INT size) { return told_locfile(home, lang, charset, name, size); };
                    ASSERT_NO_FATAL_FAILURE(
                        at_every_size(build, told, false, long(home.size() + name.size()) + 110, "locfile"));
                }
    });
}

TEST_F(ComPath, LocfileLooksAtTheCharsetOnlyBehindALanguage) {
    home_.put("/h");
    std::string lang = "french", charset = "utf8", name = "x.loc";
    CS_CHAR path[64];
    EXPECT_EQ(com__path_locfile(&context_, nullptr, chars(charset), chars(name), path, sizeof path), CS_SUCCEED);
    EXPECT_STREQ(path, "/h/locales/x.loc");
    EXPECT_EQ(com__path_locfile(&context_, chars(lang), nullptr, chars(name), path, sizeof path), CS_SUCCEED);
    EXPECT_STREQ(path, "/h/locales/french/x.loc");
    EXPECT_EQ(com__path_locfile(&context_, chars(lang), chars(charset), chars(name), path, sizeof path), CS_SUCCEED);
    EXPECT_STREQ(path, "/h/locales/french/utf8/x.loc");
}

Told told_msgfile(const std::string &home, const std::string &lang, const std::string &name, CS_INT namelen,
                  CS_INT size) {
    Building path(home, size);
    if (long(home.size()) + 8 > size || long(home.size()) + 16 > size)
        return {CS_FAIL, home + "/locales/message"};
    path.text += "/locales/message/" + lang;
    path.length += 16 + long(lang.size()) + 1;
    if (path.length + 1 + namelen >= size)
        return path.done(false);
    path.text += "/" + name;
    return path.done(true);
}

TEST_F(ComPath, MsgfileAtEverySize) {
    for_homes([&](const std::string &home) {
        for (std::string lang : {std::string("us_english"), std::string(), letters(90)})
            for (std::string name : {std::string("comnlib.loc"), letters(120)})
                for (const CS_INT wrong : {0, -1, -5, 7, -100, CS_NULLTERM})
                    for (const CS_INT langlen : {CS_INT(lang.size()), 0, -1, 1000}) {
                        const CS_INT namelen = wrong == CS_NULLTERM ? wrong : std::max(0, CS_INT(name.size()) + wrong);
                        const auto build = [&](CS_CHAR *path, CS_INT size) {
                            return com_path_msgfile(&context_, chars(lang), langlen, chars(name), namelen, path, size);
                        };
                        const auto told = [&](CS_INT size) { return told_msgfile(home, lang, name, namelen, size); };
                        ASSERT_NO_FATAL_FAILURE(
                            at_every_size(build, told, true, long(home.size() + lang.size() + name.size()) + 30,
                                          "name of " + std::to_string(namelen)));
                    }
    });
}

TEST_F(ComPath, OddityMsgfileTestsWithThePassedLengthAndAppendsTheWholeName) {
    home_.put("/h");
    std::string lang = "french", name = "comnlib.loc";
    CS_CHAR path[64];
    EXPECT_EQ(com_path_msgfile(nullptr, chars(lang), 1, chars(name), 1, path, sizeof path), CS_SUCCEED);
    EXPECT_STREQ(path, "/h/locales/message/french/comnlib.loc");
    EXPECT_EQ(com_path_msgfile(nullptr, chars(lang), 1, chars(name), 1, path, 27), CS_FAIL);
    EXPECT_EQ(com_path_msgfile(nullptr, chars(lang), 1, chars(name), 1, path, 28), CS_SUCCEED);
    EXPECT_STREQ(path, "/h/locales/message/french/c");
}

Told told_charfile(const std::string &home, const Text &charset, const Text &name, const Text &extension, CS_INT size) {
    Building path(home, size);
    bool fits = path.stays_under("charsets") && (!charset || path.stays_under(*charset));
    if (!fits || !name)
        return path.done(fits);
    if (!path.stays_under(*name))
        return path.done(false);
    if (extension) {
        fits = path.length + long(extension->size()) + 1 <= size;
        if (fits)
            path.text += "." + *extension;
    }
    return path.done(fits);
}

TEST_F(ComPath, CharfileAtEverySize) {
    for_homes([&](const std::string &home) {
        for (Text charset : {Text(), Text("iso_1"), Text(letters(70))})
            for (Text name : {Text(), Text("charset"), Text(letters(130))})
                for (Text extension : {Text(), Text("loc"), Text(letters(40))}) {
                    const auto build = [&](CS_CHAR *path, CS_INT size) {
                        return com_path_charfile(&context_, chars(charset), chars(name), chars(extension), path, size);
                    };
                    const auto told = [&](CS_INT size) { return told_charfile(home, charset, name, extension, size); };
                    ASSERT_NO_FATAL_FAILURE(at_every_size(build, told, false, long(home.size()) + 260, "charfile"));
                }
    });
}

TEST_F(ComPath, CharfileWithoutANameIsTheDirectoryAlone) {
    home_.put("/h");
    std::string charset = "unicode", extension = "loc";
    CS_CHAR path[64];
    EXPECT_EQ(com_path_charfile(nullptr, chars(charset), nullptr, nullptr, path, sizeof path), CS_SUCCEED);
    EXPECT_STREQ(path, "/h/charsets/unicode");
    EXPECT_EQ(com_path_charfile(nullptr, chars(charset), nullptr, chars(extension), path, sizeof path), CS_SUCCEED);
    EXPECT_STREQ(path, "/h/charsets/unicode") << "the extension is not looked at";
    EXPECT_EQ(com_path_charfile(nullptr, nullptr, nullptr, nullptr, path, sizeof path), CS_SUCCEED);
    EXPECT_STREQ(path, "/h/charsets");
}

TEST_F(ComPath, OddityCharfileOnlyTheExtensionMayFillTheRoom) {
    home_.put("/h");
    std::string charset = "cp850", name = "charset", extension = "loc";
    CS_CHAR path[64];
    // 29 bytes without the extension's 4.
    EXPECT_EQ(com_path_charfile(nullptr, chars(charset), chars(name), nullptr, path, 25), CS_FAIL);
    EXPECT_EQ(com_path_charfile(nullptr, chars(charset), chars(name), nullptr, path, 26), CS_SUCCEED);
    EXPECT_EQ(com_path_charfile(nullptr, chars(charset), chars(name), chars(extension), path, 28), CS_FAIL);
    EXPECT_EQ(com_path_charfile(nullptr, chars(charset), chars(name), chars(extension), path, 29), CS_SUCCEED);
    EXPECT_STREQ(path, "/h/charsets/cp850/charset.lo");
}

struct LocaleData {
    CS_INT type;
    std::string directory, extension;
};

Told told_locdata(const std::string &home, const LocaleData &kind, const std::string &name, CS_INT size) {
    Building path(home, size);
    if (!path.may_reach("locales/" + kind.directory) || !path.stays_under(name))
        return {CS_FAIL, home + "/locales/" + kind.directory + "/" + name};
    if (path.length + long(kind.extension.size()) + 1 >= size)
        return path.done(false);
    path.text += "." + kind.extension;
    return path.done(true);
}

TEST_F(ComPath, LocdataAtEverySize) {
    const LocaleData kinds[] = {{4, "money", "mon"}, {5, "numeric", "num"}, {6, "datetime", "dt"}};
    for_homes([&](const std::string &home) {
        for (const LocaleData &kind : kinds)
            for (std::string name : {std::string("us"), std::string(), letters(140)}) {
                const auto build = [&](CS_CHAR *path, CS_INT size) {
                    return comn__path_locdata(&context_, kind.type, chars(name), path, size);
                };
                const auto told = [&](CS_INT size) { return told_locdata(home, kind, name, size); };
                ASSERT_NO_FATAL_FAILURE(
                    at_every_size(build, told, false, long(home.size() + name.size()) + 25, kind.directory));
            }
    });
}

TEST_F(ComPath, LocdataPaths) {
    home_.put("/h");
    std::string name = "us";
    CS_CHAR path[64];
    EXPECT_EQ(comn__path_locdata(&context_, CS_LOCDATA_MONEY, chars(name), path, sizeof path), CS_SUCCEED);
    EXPECT_STREQ(path, "/h/locales/money/us.mon");
    EXPECT_EQ(comn__path_locdata(&context_, CS_LOCDATA_NUMERIC, chars(name), path, sizeof path), CS_SUCCEED);
    EXPECT_STREQ(path, "/h/locales/numeric/us.num");
    EXPECT_EQ(comn__path_locdata(&context_, CS_LOCDATA_DATETIME, chars(name), path, sizeof path), CS_SUCCEED);
    EXPECT_STREQ(path, "/h/locales/datetime/us.dt");
}

// ---- The home directory ---------------------------------------------------------------------------------------

struct Builder {
    const char *name;
    std::function<CS_RETCODE(CS_CONTEXT *, CS_CHAR *, CS_INT)> build;
    bool takes_context;
    const char *path; // below a home of "/h"
};

CS_CHAR NAME[] = "name", LANG[] = "lang";

std::vector<Builder> builders() {
    return {
        {"anyfile", [](CS_CONTEXT *, CS_CHAR *p, CS_INT n) { return com_path_anyfile(p, n, LANG, NAME, CS_TRUE); },
         false, "/h/lang/name"},
        {"ifile", com_path_ifile, true, "/h/interfaces"},
        {"cfgfile", [](CS_CONTEXT *c, CS_CHAR *p, CS_INT n) { return com_path_cfgfile(c, NAME, p, n, CS_TRUE); }, true,
         "/h/config/name"},
        {"locfile", [](CS_CONTEXT *c, CS_CHAR *p, CS_INT n) { return com__path_locfile(c, LANG, nullptr, NAME, p, n); },
         true, "/h/locales/lang/name"},
        {"msgfile", [](CS_CONTEXT *c, CS_CHAR *p, CS_INT n) { return com_path_msgfile(c, LANG, 4, NAME, 4, p, n); },
         true, "/h/locales/message/lang/name"},
        {"charfile", [](CS_CONTEXT *c, CS_CHAR *p, CS_INT n) { return com_path_charfile(c, LANG, NAME, NAME, p, n); },
         true, "/h/charsets/lang/name.name"},
        {"locdata", [](CS_CONTEXT *c, CS_CHAR *p, CS_INT n) { return comn__path_locdata(c, 4, NAME, p, n); }, true,
         "/h/locales/money/name.mon"},
    };
}

TEST_F(ComPath, EachLiesBelowTheHomeOfTheVariable) {
    home_.put("/h");
    for (const Builder &builder : builders()) {
        CS_CHAR path[100];
        EXPECT_EQ(builder.build(&context_, path, sizeof path), CS_SUCCEED) << builder.name;
        EXPECT_STREQ(path, builder.path);
    }
    EXPECT_EQ(context_.ctxintlerr, 0);
}

TEST_F(ComPath, EachLiesBelowTheHomeOfTheAccountWithoutTheVariable) {
    Accounts::home = "/h";
    for (const Text &unset : {Text(), Text("")})
        for (const Builder &builder : builders()) {
            home_.put(unset);
            CS_CHAR path[100];
            EXPECT_EQ(builder.build(&context_, path, sizeof path), CS_SUCCEED) << builder.name;
            EXPECT_STREQ(path, builder.path);
        }
}

TEST_F(ComPath, EachTellsAnUnknownHomeAndKeepsTheCodeInTheContext) {
    for (const Builder &builder : builders()) {
        context_.ctxintlerr = 0;
        CS_CHAR path[100];
        EXPECT_EQ(builder.build(&context_, path, sizeof path), CS_EINTL) << builder.name;
        EXPECT_EQ(context_.ctxintlerr, builder.takes_context ? INTL_ENOHOME : 0) << builder.name;
    }
}

TEST_F(ComPath, UnknownHomeWithoutAContextIsOnlyAStatus) {
    CS_CHAR path[100];
    EXPECT_EQ(com_path_ifile(nullptr, path, sizeof path), CS_EINTL);
    EXPECT_EQ(com_path_cfgfile(nullptr, NAME, path, sizeof path, CS_TRUE), CS_EINTL);
    EXPECT_EQ(com_path_msgfile(nullptr, LANG, 4, NAME, 4, path, sizeof path), CS_EINTL);
    EXPECT_EQ(com_path_charfile(nullptr, LANG, NAME, NAME, path, sizeof path), CS_EINTL);
}

TEST_F(ComPath, SubdirectoryIsAddedByItsTwoBuildersAlone) {
    home_.put("/h");
    ncs_.put("sub");
    for (const Builder &builder : builders()) {
        CS_CHAR path[100];
        EXPECT_EQ(builder.build(&context_, path, sizeof path), CS_SUCCEED) << builder.name;
        std::string expected = builder.path;
        if (std::string(builder.name) == "anyfile" || std::string(builder.name) == "cfgfile")
            expected.insert(2, "/sub");
        EXPECT_EQ(path, expected);
    }
}

// ---- Mistakes of callers --------------------------------------------------------------------------------------

TEST_F(ComPathDeathTest, NullPathname) {
    home_.put("/h");
    for (const Builder &builder : builders())
        EXPECT_NULL_REPORT(builder.build(&context_, nullptr, 100), "com_path") << builder.name;
}

TEST_F(ComPathDeathTest, RoomOfNothing) {
    home_.put("/h");
    CS_CHAR path[4];
    for (const Builder &builder : builders())
        for (const CS_INT size : {0, -1})
            EXPECT_BOMB(builder.build(&context_, path, size), "com_path") << builder.name;
}

TEST_F(ComPathDeathTest, NullContextWhereOneIsNeeded) {
    home_.put("/h");
    CS_CHAR path[100];
    EXPECT_NULL_REPORT(com__path_locfile(nullptr, LANG, nullptr, NAME, path, sizeof path), "com_path");
    EXPECT_NULL_REPORT(comn__path_locdata(nullptr, 4, NAME, path, sizeof path), "com_path");
}

TEST_F(ComPathDeathTest, NullNameWhereOneIsNeeded) {
    home_.put("/h");
    CS_CHAR path[100];
    EXPECT_NULL_REPORT(com_path_cfgfile(&context_, nullptr, path, sizeof path, CS_TRUE), "com_path");
    EXPECT_NULL_REPORT(com__path_locfile(&context_, LANG, nullptr, nullptr, path, sizeof path), "com_path");
    EXPECT_NULL_REPORT(com_path_msgfile(&context_, nullptr, 0, NAME, 4, path, sizeof path), "com_path");
    EXPECT_NULL_REPORT(com_path_msgfile(&context_, LANG, 4, nullptr, 0, path, sizeof path), "com_path");
    EXPECT_NULL_REPORT(comn__path_locdata(&context_, 4, nullptr, path, sizeof path), "com_path");
}

TEST_F(ComPathDeathTest, LocaleDataOfNoKind) {
    home_.put("/h");
    CS_CHAR path[100];
    for (const CS_INT type : {3, 7, 0, -1, 260})
        EXPECT_BOMB(comn__path_locdata(&context_, type, NAME, path, sizeof path), "com_path") << type;
}

TEST_F(ComPathDeathTest, HomeLongerThanItsBuffer) {
    home_.put("/0123456789");
    CS_CHAR path[100];
    EXPECT_BOMB(com_path_anyfile(path, 11, nullptr, nullptr, CS_FALSE), "com_path");
    EXPECT_BOMB(com_path_cfgfile(&context_, NAME, path, 10, CS_FALSE), "com_path");
}

TEST_F(ComPathDeathTest, OfTheOpenersAndTheRest) {
    home_.put("/h");
    CS_CHAR path[100];
    CS_BOOL found;
    INTL_LOCFILE file;
    EXPECT_NULL_REPORT(com__open_cfgfile(&context_, NAME, nullptr, CS_TRUE), "com_path");
    EXPECT_NULL_REPORT(com__open_cfgfile(&context_, nullptr, &file, CS_TRUE), "com_path");
    EXPECT_NULL_REPORT(comn__open_msgfile(&context_, LANG, 4, NAME, 4, nullptr, nullptr, 0), "com_path");
    EXPECT_BOMB(comn__open_msgfile(&context_, LANG, 4, NAME, 4, &file, path, 0), "com_path");
    EXPECT_BOMB(comn__open_msgfile(&context_, LANG, 4, NAME, 4, &file, path, -1), "com_path");
    EXPECT_NULL_REPORT(com__open_locfile(&context_, LANG, nullptr, NAME, nullptr, nullptr, 0), "com_path");
    EXPECT_NULL_REPORT(com__open_locfile(nullptr, LANG, nullptr, NAME, &file, nullptr, 0), "com_path");
    EXPECT_NULL_REPORT(com__open_locfile(&context_, LANG, nullptr, nullptr, &file, nullptr, 0), "com_path");
    EXPECT_BOMB(com__open_locfile(&context_, LANG, nullptr, NAME, &file, path, 0), "com_path");
    EXPECT_BOMB(com__open_locfile(&context_, LANG, nullptr, NAME, &file, path, -1), "com_path");
    EXPECT_NULL_REPORT(com__open_charfile(&context_, LANG, NAME, nullptr, nullptr, nullptr, 0), "com_path");
    EXPECT_BOMB(com__open_charfile(&context_, LANG, NAME, nullptr, &file, path, 0), "com_path");
    EXPECT_BOMB(com__open_charfile(&context_, LANG, NAME, nullptr, &file, path, -1), "com_path");
    EXPECT_NULL_REPORT(com_get_tclcfg(nullptr, 5), "com_path");
    EXPECT_BOMB(com_get_tclcfg(path, 0), "com_path");
    EXPECT_NULL_REPORT(com_get_ldapversionsuffix(nullptr, 0), "com_path");
    EXPECT_NULL_REPORT(com__find_latest_ldapversion(nullptr, &found), "com_path");
    EXPECT_NULL_REPORT(com__find_latest_ldapversion(path, nullptr), "com_path");
}

TEST_F(ComPath, MistakesThatComeBackFailAndWriteNothing) {
    home_.put("/0123456789");
    const std::string before(100, GUARD);
    std::string path = before;
    CS_BOOL found = 7;
    INTL_LOCFILE file;
    ReturningAssertions assertions;
    int reports = 0;
    const auto expect_refused = [&](int result, const char *what) {
        EXPECT_EQ(result, 0) << what;
        EXPECT_EQ(assertions.count(), ++reports) << what;
        EXPECT_EQ(path, before) << what;
    };
    for (const Builder &builder : builders()) {
        expect_refused(builder.build(&context_, nullptr, 100), builder.name);
        expect_refused(builder.build(&context_, path.data(), 0), builder.name);
        expect_refused(builder.build(&context_, path.data(), -5), builder.name);
    }
    expect_refused(com__path_locfile(nullptr, LANG, nullptr, NAME, path.data(), 100), "context");
    expect_refused(comn__path_locdata(nullptr, 4, NAME, path.data(), 100), "context");
    expect_refused(com_path_cfgfile(&context_, nullptr, path.data(), 100, CS_TRUE), "name");
    expect_refused(com__path_locfile(&context_, LANG, nullptr, nullptr, path.data(), 100), "name");
    expect_refused(com_path_msgfile(&context_, nullptr, 0, NAME, 4, path.data(), 100), "language");
    expect_refused(com_path_msgfile(&context_, LANG, 4, nullptr, 0, path.data(), 100), "name");
    expect_refused(comn__path_locdata(&context_, 4, nullptr, path.data(), 100), "name");
    expect_refused(comn__path_locdata(&context_, 7, NAME, path.data(), 100), "type");
    expect_refused(com__open_cfgfile(&context_, NAME, nullptr, CS_TRUE), "file");
    expect_refused(com__open_cfgfile(&context_, nullptr, &file, CS_TRUE), "name");
    expect_refused(comn__open_msgfile(&context_, LANG, 4, NAME, 4, nullptr, path.data(), 100), "file");
    expect_refused(comn__open_msgfile(&context_, LANG, 4, NAME, 4, &file, path.data(), 0), "room of the name");
    expect_refused(com__open_locfile(&context_, LANG, nullptr, NAME, nullptr, path.data(), 100), "file");
    expect_refused(com__open_locfile(nullptr, LANG, nullptr, NAME, &file, path.data(), 100), "context");
    expect_refused(com__open_locfile(&context_, LANG, nullptr, nullptr, &file, path.data(), 100), "name");
    expect_refused(com__open_locfile(&context_, LANG, nullptr, NAME, &file, path.data(), 0), "room of the name");
    expect_refused(com__open_charfile(&context_, LANG, NAME, nullptr, nullptr, path.data(), 100), "file");
    expect_refused(com__open_charfile(&context_, LANG, NAME, nullptr, &file, path.data(), 0), "room of the name");
    expect_refused(com_get_tclcfg(nullptr, 100), "room");
    expect_refused(com_get_tclcfg(path.data(), 0), "room");
    expect_refused(com_get_ldapversionsuffix(nullptr, 0), "room");
    expect_refused(com__find_latest_ldapversion(nullptr, &found), "room");
    expect_refused(com__find_latest_ldapversion(path.data(), nullptr), "answer");
    EXPECT_EQ(found, 7);
}

} // namespace
