// The localization of a sample owner: what a client library loads before it works in a locale, and drops after.
#ifndef DLX_CLIENT_LOCALIZATION_H
#define DLX_CLIENT_LOCALIZATION_H

#include <dlxcomn/dlxcomn.h>

#include <string>

namespace client {

// How a load ended, and where it stopped if it failed.
struct Load {
    CS_RETCODE status = CS_SUCCEED;
    int code = 0;     // of the localization library, where the status says that it failed
    std::string path; // the file that was opened last, if any
    int line = 0;     // at which it was found wrong

    explicit operator bool() const { return status == CS_SUCCEED; }
};

// Everything that is loaded hangs on the globals of one context, and goes with the object. The context outlives it.
class Localization {
public:
    explicit Localization(CS_CONTEXT *context) : context_(context) {}
    ~Localization();
    Localization(const Localization &) = delete;
    Localization &operator=(const Localization &) = delete;

    // The identifiers, and the UTF-8 basics that all loading stands on.
    Load start();

    // The cache of a locale's name.
    Load load_locale(const std::string &name, CsLocCache **cache);
    // A character set, and a sort order of it, by the names of their files.
    Load load_charset(const std::string &name, CsCharDesc **set);
    Load load_order(CsCharDesc *set, const std::string &name, CsSortDesc **order);

    // Makes a cache the context's locale, and reads the messages that can be reported when nothing else works.
    Load use(CsLocCache *cache);

private:
    Load ended(CS_RETCODE status, const CS_CHAR *path);
    Load identifier(CS_INT id_class, const std::string &name, CsOID **oid);
    void stop_using();

    CS_CONTEXT *context_;
    CS_LOCALE *locale_ = nullptr; // ours, while it is the context's
    CS_LOCALE *before_ = nullptr; // the one that the context had
};

} // namespace client

#endif
