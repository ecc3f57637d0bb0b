// The data home of the command: which one is in force, and what is loaded from it.
#ifndef DLX_CLIENT_COMMAND_HOME_H
#define DLX_CLIENT_COMMAND_HOME_H

#include "command.h"
#include "localization.h"
#include "owner.h"

#include <memory>

namespace client {

// Where DALVEX is not set, the home that lies beside the command takes its place: that of a build tree, or the one that
// was installed with it. To be called before anything asks for the home.
void adopt_home();
// What adopt_home() has set; empty where the environment tells.
const std::string &adopted_home();

// The home directory that is in force. Fails where none is, or its path is too long for the library.
Maybe<std::string> home_directory();

// A line of locales.dat.
struct LocaleLine {
    std::string name;
    std::string language;
    std::string charset;
    std::string sortorder;
    std::string datetime; // this and the others are empty where the line ends
    std::string numeric;
    std::string money;
    int number = 0;
};

class Home {
public:
    // The home with its identifiers loaded. Failures here and below that are not of a name are FAILED.
    static Maybe<std::shared_ptr<Home>> open();

    CS_CONTEXT *context() { return owner_.context(); }

    // The name that the files of an identifier have, from any of its names, and all its names.
    Maybe<std::string> find(CS_INT id_class, const std::string &name);
    static std::vector<std::string> names_of(const CsOID *oid);
    // The first names of a class.
    std::vector<std::string> first_names(CS_INT id_class);

    Maybe<std::vector<LocaleLine>> locale_lines();

    Maybe<CsLocCache *> load_locale(const std::string &name);
    Maybe<CsCharDesc *> load_charset(const std::string &name);
    // For a set without this order the failure lists those that it has.
    Maybe<CsSortDesc *> load_order(CsCharDesc *set, const std::string &name);
    // Makes it the locale of the context, with its messages.
    Maybe<CsLocCache *> use(CsLocCache *cache);

    // Text in the character set of a locale as UTF-8; nothing where it cannot be converted.
    std::optional<std::string> to_utf8(CsLocCache *cache, const std::string &text);

private:
    Home() : localization_(owner_.context()) {}

    Owner owner_;
    Localization localization_;
};

// The directory of the home's character sets or of one of them, and the path of a file of a set.
std::string charset_directory(const std::string &charset = "");
// The path of locales.dat.
std::string locales_path();

// The locale that the environment names: LC_ALL, LANG, else "default".
std::string environment_locale(CS_CONTEXT *context);

} // namespace client

#endif
