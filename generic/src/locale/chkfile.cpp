// The check of the files that a context needs.

#include "diag/check.h"

#include <dlxcomn/checkfiles.h>
#include <dlxcomn/locale.h>
#include <dlxcomn/path.h>
#include <dlxintl/intl.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include <unistd.h>

namespace dlx {
namespace {

constexpr CS_INT TEXT_SIZE = 1024;
constexpr CS_INT NAME_SIZE = 256;

CS_CHAR OID_FILE[] = "objectid.dat";
CS_CHAR LOCALES_FILE[] = "locales.dat";
CS_CHAR COMMON_FILE[] = "common.loc";
CS_CHAR LANGUAGE_FILE[] = "cslib.loc";
CS_CHAR CHARSET_FILE[] = "charset.loc";
CS_CHAR SORT_EXTENSION[] = "srt";
CS_CHAR CONFIG_EXTENSION[] = "cfg";

CS_INT length_of(const CS_CHAR *text) { return static_cast<CS_INT>(std::strlen(text)); }

// Prints a text through com_perr, which takes a format: a percent sign in a path must come out as one.
void print_text(const CS_CHAR *text) {
    CS_CHAR doubled[2 * TEXT_SIZE];
    CS_CHAR *end = doubled;
    for (; *text != '\0'; ++text) {
        *end++ = *text;
        if (*text == '%')
            *end++ = '%';
    }
    *end = '\0';
    com_perr(doubled);
}

__attribute__((format(printf, 1, 2))) void tell(const char *format, ...) {
    CS_CHAR text[TEXT_SIZE];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    print_text(text);
}

bool is_readable(const CS_CHAR *path) { return access(path, R_OK) == 0; }

// The status of a file whose path was built with `built`.
CS_RETCODE verify(CS_RETCODE built, CS_CHAR *path, CS_INT pathsize) {
    if (built != CS_SUCCEED) {
        intl_strlcpy(path, "*", static_cast<std::size_t>(pathsize));
        return COM_TRACE(built);
    }
    return is_readable(path) ? CS_SUCCEED : COM_TRACE(CS_FAIL);
}

bool check_home() {
    CS_CHAR home[TEXT_SIZE];
    if (intl_home(home, sizeof home) < 0) {
        tell("Cannot access the dalvex home directory, please check environment variable DALVEX or ~dalvex\n");
        return false;
    }
    tell("Your dalvex home directory is %s. ", home);
    tell("Check the environment variable DALVEX if it is not the one you want!\n");
    return true;
}

// A file that everything hangs on, told by its plain name.
bool check_base_file(CS_RETCODE built, const CS_CHAR *path, const CS_CHAR *name) {
    if (built == CS_SUCCEED && is_readable(path))
        return true;
    tell("Cannot access file %s\n", name);
    return false;
}

bool check_base_files(CS_CONTEXT *context) {
    CS_CHAR path[TEXT_SIZE];
    CS_RETCODE built = com_path_cfgfile(context, OID_FILE, path, sizeof path, CS_FALSE);
    if (!check_base_file(built, path, OID_FILE))
        return false;
    built = com__path_locfile(context, nullptr, nullptr, LOCALES_FILE, path, sizeof path);
    return check_base_file(built, path, LOCALES_FILE);
}

// The locale's name, and the variable that it comes from.
bool find_locale_name(CS_CHAR (&name)[NAME_SIZE]) {
    static constexpr const char *VARIABLES[] = {"LC_ALL", "LANG"};
    for (const char *variable : VARIABLES) {
        const int length = intlgetenv(name, sizeof name, variable);
        if (length < 0) {
            tell("An intl library error occurs when trying to get locale name from environment variable %s\n",
                 variable);
            return false;
        }
        if (length > 0) {
            tell("Using locale name \"%s\" defined in environment variable %s\n", name, variable);
            return true;
        }
    }
    intl_strlcpy(name, "default", sizeof name);
    tell("Using default locale name: \"%s\"\n", name);
    return true;
}

bool find_names(CS_CONTEXT *context, CS_CHAR (&name)[NAME_SIZE], CsLocNames &names) {
    CS_CHAR path[TEXT_SIZE] = "";
    switch (comn__intl_lookup(context, name, length_of(name), &names, path, sizeof path)) {
    case CS_SUCCEED:
        return true;
    case CS_FAIL:
        tell("Locale name \"%s\" doesn't exist in your %s file\n", name, path);
        return false;
    default:
        tell("An intl library error occurs when trying to get local names from file: %s, can't continue!\n", path);
        return false;
    }
}

void report(CS_RETCODE status, const CS_CHAR *path) {
    if (status != CS_SUCCEED)
        tell("Cannot access %s file\n", path);
}

// All of them are told, so that one run reports what is wrong.
void check_locale_files(CS_CONTEXT *context, CsLocNames &names) {
    CS_CHAR path[TEXT_SIZE];
    const auto language_file = [&](CS_CHAR *file) {
        report(com__verify_msgfile(context, names.lang, names.langlen, file, length_of(file), path, sizeof path), path);
    };
    const auto charset_file = [&](CS_CHAR *file, CS_CHAR *extension) {
        report(com__verify_charfile(context, names.charset, file, extension, path, sizeof path), path);
    };
    if (names.datetimelen == 0)
        language_file(COMMON_FILE);
    language_file(LANGUAGE_FILE);
    charset_file(names.sortorder, SORT_EXTENSION);
    charset_file(CHARSET_FILE, nullptr);
    charset_file(names.charset, CONFIG_EXTENSION);
}

} // namespace
} // namespace dlx

using namespace dlx;

CS_RETCODE com__verify_msgfile(CS_CONTEXT *context, CS_CHAR *lang, CS_INT langlen, CS_CHAR *msgfile, CS_INT msgfilelen,
                               CS_CHAR *path, CS_INT pathsize) {
    COM_REQUIRE_PTR(path, CS_FAIL);
    COM_REQUIRE(pathsize > 0, CS_FAIL);
    return verify(com_path_msgfile(context, lang, langlen, msgfile, msgfilelen, path, pathsize), path, pathsize);
}

CS_RETCODE com__verify_charfile(CS_CONTEXT *context, CS_CHAR *charset, CS_CHAR *filename, CS_CHAR *fileext,
                                CS_CHAR *path, CS_INT pathsize) {
    COM_REQUIRE_PTR(path, CS_FAIL);
    COM_REQUIRE(pathsize > 0, CS_FAIL);
    return verify(com_path_charfile(context, charset, filename, fileext, path, pathsize), path, pathsize);
}

CS_RETCODE com_intl_verify_a_msgfile(CS_CONTEXT *context, CS_LOCALE *locale, CS_CHAR *msgfile, CS_CHAR *path,
                                     CS_INT pathsize) {
    COM_REQUIRE_PTR(locale, CS_FAIL);
    COM_REQUIRE_PTR(locale->messageptr, CS_FAIL);
    COM_REQUIRE_PTR(msgfile, CS_FAIL);
    const auto *const messages = static_cast<const CsLocCache *>(locale->messageptr);
    return com__verify_msgfile(context, messages->langname, messages->langnamelen, msgfile, length_of(msgfile), path,
                               pathsize);
}

void com_intl_verify_ctxloc(CS_CONTEXT *context) {
    COM_REQUIRE_PTR(context);
    // The wording is the one that support staff know, faults of grammar and all.
    tell("\n\nThe context allocation routine failed when it tried to load localization files!!\n");
    tell("One or more following problems may caused the failure\n\n");
    CS_CHAR name[NAME_SIZE];
    CsLocNames names;
    if (check_home() && check_base_files(context) && find_locale_name(name) && find_names(context, name, names))
        check_locale_files(context, names);
}
