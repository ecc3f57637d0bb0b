// Where each file of the stack lies below the home directory, and the openers of localization files.
#include "diag/check.h"
#include "path/path_text.h"

#include <cstring>
#include <initializer_list>

#include <dirent.h>

using dlx::PathText;

namespace {

constexpr const char *NCS_VARIABLE = "DALVEX_NCS";
constexpr const char *CONFIG_DIRECTORY = "config";
constexpr const char *LOCALES_DIRECTORY = "locales";
constexpr CS_INT OPEN_PATH_SIZE = 1025;

constexpr CS_INT TCLCFG_SIZE = 513;
constexpr std::size_t TCLCFG_LIMIT = 512;
char tclcfgpath[TCLCFG_SIZE] = "";

// What a builder answers when the home directory is not known.
CS_RETCODE no_home(CS_CONTEXT *context, int code) {
    if (context != nullptr)
        context->ctxintlerr = code;
    return COM_TRACE(CS_EINTL);
}

CS_RETCODE open_file(CS_CONTEXT *context, const CS_CHAR *path, INTL_LOCFILE *ifile) {
    const int code = intl_open(path, ifile);
    if (code >= 0)
        return CS_SUCCEED;
    if (context != nullptr)
        context->ctxintlerr = code;
    return COM_TRACE(CS_ENOLOCFILE);
}

// Opens the file whose path `build` writes. The path is told before that, so that a caller can report which one failed.
template <class Build>
CS_RETCODE open_built(CS_CONTEXT *context, INTL_LOCFILE *ifile, CS_CHAR *locfilename, CS_INT filenamelen, Build build) {
    COM_REQUIRE_PTR(ifile, CS_FAIL);
    COM_REQUIRE(locfilename == nullptr || filenamelen >= 1, CS_FAIL);
    CS_CHAR path[OPEN_PATH_SIZE];
    const CS_RETCODE status = build(path);
    if (status != CS_SUCCEED)
        return COM_TRACE(status);
    if (locfilename != nullptr)
        intl_strlcpy(locfilename, path, static_cast<std::size_t>(filenamelen));
    return open_file(context, path, ifile);
}

struct LocaleDataKind {
    const char *directory;
    const char *extension;
};

const LocaleDataKind *locale_data_kind(CS_INT type) {
    static constexpr LocaleDataKind KINDS[] = {{"money", "mon"}, {"numeric", "num"}, {"datetime", "dt"}};
    return type >= CS_LOCDATA_MONEY && type <= CS_LOCDATA_DATETIME ? &KINDS[type - CS_LOCDATA_MONEY] : nullptr;
}

} // namespace

// A component is refused when the path with its separator would reach the size.
CS_RETCODE com_path_anyfile(CS_CHAR *pathname, CS_INT pathsize, CS_CHAR *directory, CS_CHAR *filename, CS_BOOL ncs) {
    COM_REQUIRE_PTR(pathname, CS_FAIL);
    COM_REQUIRE(pathsize >= 1, CS_FAIL);
    std::memset(pathname, 0, static_cast<std::size_t>(pathsize));
    PathText path(pathname, pathsize);
    const int code = path.begin_at_home(pathsize - 1);
    if (code < 0)
        return no_home(nullptr, code);
    COM_REQUIRE(path.length() < pathsize, CS_FAIL);

    char subdirectory[512];
    const int length = ncs ? intlgetenv(subdirectory, sizeof subdirectory, NCS_VARIABLE) : 0;
    if (length > 0) {
        if (!path.stays_below(length + 1))
            return COM_TRACE(CS_FAIL);
        path.append_component(subdirectory);
        path.count(length + 1);
        // Counted once more: long values are refused before they need to be, and sizes are chosen for that.
        path.count(length);
    }
    if (directory != nullptr && !path.add_below(directory))
        return COM_TRACE(CS_FAIL);
    if (filename != nullptr && !path.add_below(filename))
        return COM_TRACE(CS_FAIL);
    return CS_SUCCEED;
}

CS_RETCODE com_path_ifile(CS_CONTEXT *context, CS_CHAR *pathname, CS_INT pathsize) {
    COM_REQUIRE_PTR(pathname, CS_FAIL);
    COM_REQUIRE(pathsize >= 1, CS_FAIL);
    if (intlgetenv(pathname, pathsize, "DLXNCS_IFILE") > 0)
        return CS_SUCCEED;
    PathText path(pathname, pathsize);
    const int code = path.begin_at_home(pathsize);
    if (code < 0)
        return no_home(context, code);
    return path.add_reaching("interfaces") ? CS_SUCCEED : COM_TRACE(CS_FAIL);
}

CS_RETCODE com_path_cfgfile(CS_CONTEXT *context, CS_CHAR *cfgfile, CS_CHAR *pathname, CS_INT pathsize, CS_BOOL ncs) {
    COM_REQUIRE_PTR(pathname, CS_FAIL);
    COM_REQUIRE_PTR(cfgfile, CS_FAIL);
    COM_REQUIRE(pathsize >= 1, CS_FAIL);
    PathText path(pathname, pathsize);
    const int code = path.begin_at_home(pathsize);
    if (code < 0)
        return no_home(context, code);
    COM_REQUIRE(path.length() <= pathsize, CS_FAIL);

    char subdirectory[513];
    const int length = ncs ? intlgetenv(subdirectory, sizeof subdirectory, NCS_VARIABLE) : 0;
    if (length > 0) {
        // Neither tested here nor counted with its separator: the tests below see one byte less.
        path.append_component(subdirectory);
        path.count(length);
    }
    return path.add_reaching(CONFIG_DIRECTORY) && path.add_reaching(cfgfile) ? CS_SUCCEED : COM_TRACE(CS_FAIL);
}

CS_RETCODE com__path_locfile(CS_CONTEXT *context, CS_CHAR *lang, CS_CHAR *charset, CS_CHAR *locfile, CS_CHAR *pathname,
                             CS_INT pathsize) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(pathname, CS_FAIL);
    COM_REQUIRE_PTR(locfile, CS_FAIL);
    COM_REQUIRE(pathsize >= 1, CS_FAIL);
    PathText path(pathname, pathsize);
    const int code = path.begin_at_home(pathsize);
    if (code < 0)
        return no_home(context, code);
    bool fits = path.add_reaching(LOCALES_DIRECTORY);
    if (lang != nullptr) {
        fits = fits && path.add_reaching(lang);
        if (charset != nullptr)
            fits = fits && path.add_reaching(charset);
    }
    return fits && path.add_reaching(locfile) ? CS_SUCCEED : COM_TRACE(CS_FAIL);
}

// The length of lang is not used, and that of msgfile only for the last test: both are appended as
// terminated texts. CS_NULLTERM is no marker there: a negative length is added as the number that it is.
CS_RETCODE com_path_msgfile(CS_CONTEXT *context, CS_CHAR *lang, CS_INT /*langlen*/, CS_CHAR *msgfile, CS_INT msgfilelen,
                            CS_CHAR *pathname, CS_INT pathsize) {
    COM_REQUIRE_PTR(pathname, CS_FAIL);
    COM_REQUIRE_PTR(lang, CS_FAIL);
    COM_REQUIRE_PTR(msgfile, CS_FAIL);
    COM_REQUIRE(pathsize >= 1, CS_FAIL);
    std::memset(pathname, 0, static_cast<std::size_t>(pathsize));
    PathText path(pathname, pathsize);
    const int code = path.begin_at_home(pathsize);
    if (code < 0)
        return no_home(context, code);
    if (!path.add_reaching(LOCALES_DIRECTORY) || !path.add_reaching("message"))
        return COM_TRACE(CS_FAIL);
    path.append_component(lang);
    path.count(PathText::length_of(lang) + 1);
    if (!path.stays_below(1L + msgfilelen))
        return COM_TRACE(CS_FAIL);
    path.append_component(msgfile);
    return CS_SUCCEED;
}

CS_RETCODE com_path_charfile(CS_CONTEXT *context, CS_CHAR *charset, CS_CHAR *filename, CS_CHAR *fileext,
                             CS_CHAR *pathname, CS_INT pathsize) {
    COM_REQUIRE_PTR(pathname, CS_FAIL);
    COM_REQUIRE(pathsize >= 1, CS_FAIL);
    PathText path(pathname, pathsize);
    const int code = path.begin_at_home(pathsize);
    if (code < 0)
        return no_home(context, code);
    if (!path.add_below("charsets") || (charset != nullptr && !path.add_below(charset)))
        return COM_TRACE(CS_FAIL);
    if (filename == nullptr)
        return CS_SUCCEED;
    if (!path.add_below(filename))
        return COM_TRACE(CS_FAIL);
    if (fileext != nullptr) {
        // This one test lets the path fill the room.
        if (!path.reaches(PathText::length_of(fileext) + 1))
            return COM_TRACE(CS_FAIL);
        path.append(".");
        path.append(fileext);
    }
    return CS_SUCCEED;
}

CS_RETCODE comn__path_locdata(CS_CONTEXT *context, CS_INT type, CS_CHAR *filename, CS_CHAR *pathname, CS_INT pathsize) {
    COM_REQUIRE_PTR(context, CS_FAIL);
    COM_REQUIRE_PTR(filename, CS_FAIL);
    COM_REQUIRE_PTR(pathname, CS_FAIL);
    COM_REQUIRE(pathsize >= 1, CS_FAIL);
    const LocaleDataKind *kind = locale_data_kind(type);
    COM_REQUIRE(kind != nullptr, CS_FAIL);
    PathText path(pathname, pathsize);
    const int code = path.begin_at_home(pathsize);
    if (code < 0)
        return no_home(context, code);
    if (!path.add_reaching(LOCALES_DIRECTORY) || !path.add_reaching(kind->directory) || !path.add_below(filename))
        return COM_TRACE(CS_FAIL);
    if (!path.stays_below(PathText::length_of(kind->extension) + 1))
        return COM_TRACE(CS_FAIL);
    path.append(".");
    path.append(kind->extension);
    return CS_SUCCEED;
}

CS_RETCODE com__open_cfgfile(CS_CONTEXT *context, CS_CHAR *cfgfile, INTL_LOCFILE *ifile, CS_BOOL ncs) {
    COM_REQUIRE_PTR(ifile, CS_FAIL);
    CS_CHAR path[OPEN_PATH_SIZE];
    const CS_RETCODE status = com_path_cfgfile(context, cfgfile, path, sizeof path, ncs);
    return status == CS_SUCCEED ? open_file(context, path, ifile) : COM_TRACE(status);
}

CS_RETCODE comn__open_msgfile(CS_CONTEXT *context, CS_CHAR *lang, CS_INT langlen, CS_CHAR *msgfile, CS_INT msgfilelen,
                              INTL_LOCFILE *ifile, CS_CHAR *locfilename, CS_INT filenamelen) {
    return open_built(context, ifile, locfilename, filenamelen, [&](CS_CHAR *path) {
        return com_path_msgfile(context, lang, langlen, msgfile, msgfilelen, path, OPEN_PATH_SIZE);
    });
}

CS_RETCODE com__open_locfile(CS_CONTEXT *context, CS_CHAR *lang, CS_CHAR *charset, CS_CHAR *locfile,
                             INTL_LOCFILE *ifile, CS_CHAR *locfilename, CS_INT filenamelen) {
    return open_built(context, ifile, locfilename, filenamelen, [&](CS_CHAR *path) {
        return com__path_locfile(context, lang, charset, locfile, path, OPEN_PATH_SIZE);
    });
}

CS_RETCODE com__open_charfile(CS_CONTEXT *context, CS_CHAR *charset, CS_CHAR *filename, CS_CHAR *fileext,
                              INTL_LOCFILE *ifile, CS_CHAR *locfilename, CS_INT filenamelen) {
    return open_built(context, ifile, locfilename, filenamelen, [&](CS_CHAR *path) {
        return com_path_charfile(context, charset, filename, fileext, path, OPEN_PATH_SIZE);
    });
}

// ---- Transport configuration -----------------------------------------------------------------------------------

CS_RETCODE com_set_tclcfg(CS_CHAR *path) {
    if (path == nullptr) {
        tclcfgpath[0] = '\0';
        return CS_SUCCEED;
    }
    if (std::strlen(path) >= TCLCFG_LIMIT)
        return COM_TRACE(CS_FAIL);
    intl_strlcpy(tclcfgpath, path, sizeof tclcfgpath);
    return CS_SUCCEED;
}

CS_INT com_get_tclcfg(CS_CHAR *buf, CS_INT buflen) {
    COM_REQUIRE_PTR(buf, 0);
    COM_REQUIRE(buflen >= 1, 0);
    if (tclcfgpath[0] != '\0') {
        const auto length = static_cast<CS_INT>(std::strlen(tclcfgpath));
        if (length >= buflen)
            return 0;
        intl_strlcpy(buf, tclcfgpath, static_cast<std::size_t>(buflen));
        return length;
    }
    for (const char *variable : {"DLXNCS_TCL_CFG", "DALVEX_TCL_CFG"}) {
        const int length = intlgetenv(buf, buflen, variable);
        if (length != 0)
            return length > 0 ? length : 0;
    }
    CS_CHAR name[] = "libtcl64.cfg";
    if (com_path_cfgfile(nullptr, name, buf, buflen, CS_TRUE) != CS_SUCCEED)
        return 0;
    return static_cast<CS_INT>(std::strlen(buf));
}

// ---- The directory library -------------------------------------------------------------------------------------

namespace {

constexpr char LDAP_NAME[] = "libdalvexldap64.so";
constexpr char LDAP_STEM[] = "libdalvexldap64";
constexpr char LDAP_SUFFIX[] = ".2.4.44_ccl";
constexpr std::size_t LDAP_SUFFIX_SIZE = 256;

void copy_suffix(CS_CHAR *to, const char *suffix) { intl_strlcpy(to, suffix, LDAP_SUFFIX_SIZE); }

} // namespace

CS_RETCODE com_get_ldapversionsuffix(CS_CHAR *versionsuffix, CS_INT latest) {
    COM_REQUIRE_PTR(versionsuffix, CS_FAIL);
    CS_BOOL updatefound = CS_FALSE;
    if (latest == 1 && com__find_latest_ldapversion(versionsuffix, &updatefound) != CS_SUCCEED)
        return COM_TRACE(CS_FAIL);
    if (!updatefound)
        copy_suffix(versionsuffix, LDAP_SUFFIX);
    return CS_SUCCEED;
}

CS_RETCODE com__find_latest_ldapversion(CS_CHAR *versionsuffix, CS_BOOL *updatefound) {
    COM_REQUIRE_PTR(versionsuffix, CS_FAIL);
    COM_REQUIRE_PTR(updatefound, CS_FAIL);
    *updatefound = CS_FALSE;
    CS_CHAR directory_path[512];
    CS_CHAR directory_name[] = "devlib3p64";
    if (com_path_anyfile(directory_path, sizeof directory_path, directory_name, nullptr, CS_TRUE) != CS_SUCCEED)
        return COM_TRACE(CS_FAIL);
    DIR *directory = opendir(directory_path);
    if (directory == nullptr)
        return COM_TRACE(CS_FAIL);

    // Names compare byte by byte, so .2.4.9 is later than .2.4.44: an update names itself to sort so.
    CS_CHAR best[sizeof(dirent::d_name)];
    intl_strlcpy(best, LDAP_NAME, sizeof best);
    intl_strlcat(best, LDAP_SUFFIX, sizeof best);
    while (const dirent *entry = readdir(directory)) {
        CS_CHAR name[sizeof best];
        intl_strlcpy(name, entry->d_name, sizeof name);
        if (std::strncmp(name, LDAP_STEM, sizeof LDAP_STEM - 1) == 0 && com_unsignstrcmp(name, best) > 0) {
            intl_strlcpy(best, name, sizeof best);
            *updatefound = CS_TRUE;
        }
    }
    closedir(directory);
    if (*updatefound)
        copy_suffix(versionsuffix, std::strlen(best) > sizeof LDAP_NAME - 1 ? best + sizeof LDAP_NAME - 1 : "");
    return CS_SUCCEED;
}

CS_CHAR *com_get_driverversionsuffix() {
    static CS_CHAR suffix[] = ".16.0.03.02";
    return suffix;
}
