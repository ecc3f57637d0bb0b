// dlxcomn locale, locales and charsets.
#include "command/text.h"
#include "command_fixture.h"

#include <algorithm>
#include <sstream>

namespace {

using Locale = CommandTest;
using Locales = CommandTest;
using Charsets = CommandTest;
using SiteLocale = SiteTest;
using SiteCharsets = SiteTest;

std::vector<std::string> lines_of(const std::string &text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// ---- locale ----

TEST_F(Locale, ShowsWhatItIsMadeOf) {
    EXPECT_DONE(dlxcomn({"locale", "de_DE.UTF-8"}),
                "locale         de_DE.UTF-8\n"
                "language       german (also deutsch, de and de_DE)\n"
                "character set  utf8 (also utf_8, utf-8, UTF-8 and UTF8)\n"
                "               id 190, up to 4 bytes a character, Unicode library number -4\n"
                "sort order     binary: Order of the codes\n"
                "dates          dmy, printed in style 3, 24-hour clock\n"
                "months         Januar, Februar, März, April, Mai, Juni, Juli, August, September, Oktober,\n"
                "               November, Dezember\n"
                "short months   Jan, Feb, Mär, Apr, Mai, Jun, Jul, Aug, Sep, Okt, Nov, Dez\n"
                "days           Montag, Dienstag, Mittwoch, Donnerstag, Freitag, Samstag, Sonntag\n"
                "first day      Montag (day 2, where 1 is Sunday)\n"
                "number format  none of its own\n"
                "money format   none of its own\n");
}

TEST_F(Locale, ShowsNamesOfOtherSetsInUtf8) {
    const auto outcome = dlxcomn({"locale", "ja_JP.SJIS"});
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_THAT(outcome.output, HasSubstr("\ndays           日曜日, 月曜日, 火曜日, 水曜日, 木曜日, 金曜日, 土曜日\n"));
    EXPECT_THAT(outcome.output,
                HasSubstr("\n               id 141, up to 2 bytes a character, Unicode library number "));
    EXPECT_THAT(dlxcomn({"locale", "ru_RU.KOI8-R"}).output, HasSubstr("\nshort months   янв"));
    EXPECT_THAT(dlxcomn({"locale", "pl_PL"}).output, HasSubstr("październik"));
}

TEST_F(Locale, EveryOneThatShipsLoads) {
    for (const std::string &line : lines_of(dlxcomn({"locales"}).output)) {
        const std::string name = line.substr(0, line.find(' '));
        if (name == "locale") // the heading
            continue;
        const auto outcome = dlxcomn({"locale", name});
        EXPECT_EQ(outcome.exit_code, 0) << name << ": " << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(outcome.output.find("not in this character set"), std::string::npos) << name;
        for (const std::string &one : lines_of(outcome.output))
            EXPECT_LE(client::columns(one), 100u) << name;
    }
}

TEST_F(Locale, IsThatOfTheEnvironmentUnlessTold) {
    EXPECT_THAT(dlxcomn({"locale"}).output, StartsWith("locale         default\nlanguage       us_english"));
    lang_.put("fr_FR");
    EXPECT_THAT(dlxcomn({"locale"}).output, StartsWith("locale         fr_FR\n"));
    lc_all_.put("it_IT");
    EXPECT_THAT(dlxcomn({"locale"}).output, StartsWith("locale         it_IT\n"));
    EXPECT_THAT(dlxcomn({"locale", "de_DE"}).output, StartsWith("locale         de_DE\n"));
    lc_all_.put("xx_XX.UTF-8");
    EXPECT_EQ(dlxcomn({"locale"}).exit_code, 2);
}

TEST_F(Locale, UnknownNameIsToldWithNearOnes) {
    EXPECT_MISUSED(dlxcomn({"locale", "de_DE.utf8"}),
                   "no locale \"de_DE.utf8\"; did you mean de_DE.UTF-8? `dlxcomn locales` lists them");
    EXPECT_MISUSED(dlxcomn({"locale", "quux"}), "no locale \"quux\"; `dlxcomn locales` lists them");
    EXPECT_MISUSED(dlxcomn({"locale", ""}), "no locale \"\"; `dlxcomn locales` lists them");
}

TEST_F(Locale, TakesOneName) {
    EXPECT_MISUSED(dlxcomn({"locale", "C", "POSIX"}), "locale takes one name, not \"POSIX\" too");
    EXPECT_MISUSED(dlxcomn({"locale", "--name", "C"}), "no option --name here");
    EXPECT_THAT(dlxcomn({"locale", "--help"}).output, StartsWith("usage: dlxcomn locale [NAME]\n"));
}

// ---- A home that is not right ----

TEST_F(SiteLocale, FormatsAreShownWhereALocaleNamesThem) {
    change("config/objectid.dat", "standard\n", "standard, site\n"); // a number format
    change("locales/locales.dat", "[linux]\n", "[linux]\nlocale = site, german, iso_1, , , site\n");
    EXPECT_THAT(dlxcomn({"locale", "site"}).output,
                HasSubstr("\nnumber format  site\nmoney format   none of its own\n"));
    EXPECT_THAT(dlxcomn({"locales"}).output,
                HasSubstr("\nsite             german       iso_1     binary      numbers site\n"));
    change("locales/locales.dat", "[linux]\n", "[linux]\nlocale = dated, german, iso_1, binary, standard\n");
    const auto dated = dlxcomn({"locale", "dated"});
    EXPECT_THAT(dated.output, HasSubstr("\ndates          the format standard, which has no data\n"));
    EXPECT_EQ(dated.exit_code, 0);
}

TEST_F(SiteLocale, MissingHomeIsTold) {
    home_.put("/nonexistent/home");
    EXPECT_FAILED(
        dlxcomn({"locale", "C"}),
        "the home \"/nonexistent/home\" is no directory that can be read; the variable DALVEX names the home");
    home_.put("/" + std::string(950, 'h'));
    EXPECT_FAILED(dlxcomn({"locale", "C"}),
                  "the path of the home directory has 951 bytes; the library has room for 900");
}

TEST_F(SiteLocale, UnknownHomeIsTold) {
    // A command that no home lies beside.
    const support::TempDirectory elsewhere;
    std::filesystem::copy_file(DLXCOMN_COMMAND, elsewhere.path_of("dlxcomn"));
    home_.put({});
    for (const std::vector<std::string> &rest : {std::vector<std::string>{"locale"},
                                                 {"locales"},
                                                 {"charsets"},
                                                 {"recode", "utf8", "utf16"},
                                                 {"sort", "--charset", "utf8", "--order", "binary"},
                                                 {"message", "1"},
                                                 {"check"}}) {
        std::vector<std::string> command = {"/bin/sh", "-c", "cd \"$0\" && exec ./dlxcomn \"$@\"", elsewhere.path()};
        command.insert(command.end(), rest.begin(), rest.end());
        const auto outcome = support::run_process(command);
        EXPECT_EQ(outcome.exit_code, 1) << rest[0];
        EXPECT_EQ(outcome.output, "") << rest[0];
        EXPECT_THAT(outcome.errors, StartsWith("dlxcomn: the home directory is not known: ")) << rest[0];
    }
    EXPECT_THAT(support::content_of_file(elsewhere.path_of("dlxinit.err")),
                HasSubstr("Cannot access the dalvex home directory"));
}

TEST_F(SiteLocale, MissingFilesAreToldByTheirPaths) {
    remove("locales/message/german/common.loc");
    EXPECT_FAILED(dlxcomn({"locale", "de_DE"}),
                  path_of("locales/message/german/common.loc") + ": the file cannot be opened");
    remove("charsets/iso_1/dict.srt");
    EXPECT_FAILED(dlxcomn({"locale", "de_DE"}), path_of("charsets/iso_1/dict.srt") + ": the file cannot be opened");
    remove("charsets/iso_1/charset.loc");
    EXPECT_FAILED(dlxcomn({"locale", "de_DE"}), path_of("charsets/iso_1/charset.loc") + ": the file cannot be opened");
    remove("locales/locales.dat");
    EXPECT_FAILED(dlxcomn({"locale", "de_DE"}), path_of("locales/locales.dat") + ": the file cannot be opened");
    remove("config/objectid.dat");
    EXPECT_FAILED(dlxcomn({"locale", "de_DE"}), path_of("config/objectid.dat") + ": the file cannot be opened");
}

TEST_F(SiteLocale, DamageIsToldWithFileAndLine) {
    const auto expect_damage = [&](const std::string &file, const std::string &at, const std::string &reason) {
        EXPECT_FAILED(dlxcomn({"locale", "de_DE"}),
                      path_of(file) + ":" + std::to_string(line_of(file, at)) + ": " + reason);
    };
    const std::string common = "locales/message/german/common.loc";
    const std::string sound = content_of(common);
    change(common, "firstday    = 2", "firstday 2");
    expect_damage(common, "firstday 2", "an entry has no \"=\"");
    write(common, sound);
    change(common, "Dezember", "Dezember, Undezember");
    expect_damage(common, "Undezember", "date data is not usable");
    write(common, sound);
    change(common, "[datetime]", "[datetime");
    expect_damage(common, "[datetime", "a section line is not of the form [name]");
    write(common, sound);

    const std::string charset = "charsets/iso_1/charset.loc";
    change(charset, "class = \\x01", "class = \\x03");
    expect_damage(charset, "class = \\x03", "this line is wrong, or something is missing in front of it");
    change(charset, "class = \\x03", "class = \\xg1");
    expect_damage(charset, "class = \\xg1",
                  "a backslash is not followed by a character or by x and two hexadecimal digits");
    change(charset, "class = \\xg1", "class = \\x01");

    change("charsets/iso_1/dict.srt", "preference = false", "preference = perhaps");
    expect_damage("charsets/iso_1/dict.srt", "preference = perhaps",
                  "this line is wrong, or something is missing in front of it");
    change("config/objectid.dat", "1.3.6.1.4.1.54321.1.1 ", "1. ");
    expect_damage("config/objectid.dat", "1. ", "this line is wrong, or something is missing in front of it");
}

TEST_F(SiteLocale, LineThatIsNotRightIsTold) {
    const std::string file = "locales/locales.dat";
    const std::string where = path_of(file) + ":" + std::to_string(line_of(file, "[linux]") + 1) + ": ";
    const std::string sound = content_of(file);
    const auto with = [&](const std::string &line) {
        write(file, sound);
        change(file, "[linux]\n", "[linux]\n" + line + "\n");
        return dlxcomn({"locale", "site"});
    };
    EXPECT_FAILED(with("locale = site"), where + "the locale \"site\" wants a language and a character set");
    EXPECT_FAILED(with("locale = site, german"), where + "the locale \"site\" wants a language and a character set");
    EXPECT_FAILED(with("locale = site, klingon, iso_1"),
                  where + "the locale \"site\" names the language \"klingon\", which objectid.dat does not have");
    EXPECT_FAILED(with("locale = site, german, iso_2"),
                  where + "the locale \"site\" names the character set \"iso_2\", which objectid.dat does not have");
    EXPECT_FAILED(with("locale = site, german, iso_1, loud"),
                  where + "the locale \"site\" names the sort order \"loud\", which objectid.dat does not have");
    EXPECT_FAILED(with("locale = site, german, iso_1, , soon"),
                  where + "the locale \"site\" names the date format \"soon\", which objectid.dat does not have");
    EXPECT_FAILED(with("local = site, german, iso_1"),
                  where + "only entries named locale stand in this section, not \"local\"");
    EXPECT_FAILED(with("locale = " + std::string(256, 'n')), where + "a name of 256 bytes is too long");
    write(file, "[sun]\nlocale = site, german, iso_1\n");
    EXPECT_FAILED(dlxcomn({"locale", "site"}), path_of(file) + ":2: there is no section [linux]");
}

TEST_F(SiteLocale, MissingTableIsTold) {
    remove("charsets/unicode/1.uct");
    const auto outcome = dlxcomn({"locale", "de_DE"});
    EXPECT_FAILED(outcome, "the table of iso_1 (charsets/unicode/1.uct) cannot be read");
    EXPECT_THAT(outcome.output, HasSubstr("sort order     dict"));
    write("charsets/unicode/1.uct", "no table");
    EXPECT_FAILED(dlxcomn({"locale", "de_DE"}), "the table of iso_1 (charsets/unicode/1.uct) is damaged");
}

TEST_F(SiteLocale, NameThatTheSetDoesNotHaveIsShownAsItArrives) {
    change("locales/message/german/common.loc", "Januar", "Ιανουάριος");
    EXPECT_THAT(dlxcomn({"locale", "de_DE"}).output, HasSubstr("\nmonths         ??????????, Februar, März"));
}

// ---- locales ----

TEST_F(Locales, AreListedInColumns) {
    const auto outcome = dlxcomn({"locales"});
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_THAT(outcome.output, StartsWith("locale           language     charset   sort order\n"
                                           "default          us_english   iso_1     binary\n"
                                           "C                us_english   iso_1     binary\n"));
    EXPECT_THAT(outcome.output, HasSubstr("\nzh_CN.GB18030    chinese      gb18030   binary\n"));
    EXPECT_GT(lines_of(outcome.output).size(), 40u);
}

TEST_F(Locales, TakesNoArgument) {
    EXPECT_MISUSED(dlxcomn({"locales", "C"}), "locales takes no argument, not \"C\"");
    EXPECT_THAT(dlxcomn({"locales", "--help"}).output, StartsWith("usage: dlxcomn locales\n"));
}

// ---- charsets ----

TEST_F(Charsets, AreListedByTheirNumbers) {
    const auto outcome = dlxcomn({"charsets"});
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_EQ(outcome.errors, "");
    const std::vector<std::string> lines = lines_of(outcome.output);
    EXPECT_GE(lines.size(), 116u);
    EXPECT_EQ(lines[0], "charset      id  Unicode  bytes  table");
    EXPECT_EQ(lines[1], "ascii_8       0        0      1  built in");
    EXPECT_EQ(lines[2], "iso_1         1        1      1  unicode/1.uct");
    for (const char *line : {"utf8        190       -4      4  built in", "utf16       192       -1      4  built in",
                             "rcsu        217       -5", "gb18030     173"})
        EXPECT_THAT(outcome.output, HasSubstr(std::string("\n") + line));
    int before = -1;
    for (size_t i = 1; i < lines.size(); ++i) {
        const int id = std::stoi(lines[i].substr(10, 5));
        EXPECT_GE(id, before);
        before = id;
    }
}

TEST_F(SiteCharsets, WhatIsWrongIsTold) {
    EXPECT_EQ(dlxcomn({"charsets"}).output, "charset      id  Unicode  bytes  table\n"
                                            "iso_1         1        1      1  unicode/1.uct\n"
                                            "cp850         2        2      1  unicode/2.uct\n"
                                            "utf8        190       -4      4  built in\n");
    remove("charsets/unicode/1.uct");
    std::string table = content_of("charsets/unicode/2.uct");
    table[table.size() / 2] ^= 1;
    write("charsets/unicode/2.uct", table);
    const auto tables = dlxcomn({"charsets"});
    EXPECT_EQ(tables.exit_code, 1);
    EXPECT_THAT(tables.output, HasSubstr("iso_1         1        1      1  unicode/1.uct cannot be read\n"));
    EXPECT_THAT(tables.output, HasSubstr("cp850         2        2      1  unicode/2.uct is damaged\n"));

    std::filesystem::copy(path_of("charsets/cp850"), path_of("charsets/local"));
    EXPECT_FAILED(dlxcomn({"charsets"}), "the set \"local\" has no identifier in objectid.dat");
    remove("charsets/local");
    change("charsets/cp850/charset.loc", "class = \\x01", "class = ");
    EXPECT_FAILED(dlxcomn({"charsets"}), path_of("charsets/cp850/charset.loc") + ":" +
                                             std::to_string(line_of("charsets/cp850/charset.loc", "class = ")) +
                                             ": this line is wrong, or something is missing in front of it");
}

TEST_F(Charsets, TakesNoArgument) {
    EXPECT_MISUSED(dlxcomn({"charsets", "utf8"}), "charsets takes no argument, not \"utf8\"");
    EXPECT_THAT(dlxcomn({"charsets", "--help"}).output, StartsWith("usage: dlxcomn charsets\n"));
}

} // namespace
