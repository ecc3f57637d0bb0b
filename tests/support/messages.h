// A language with messages, made by hand: its record and locale, the character sets, and contexts that share them.
//
// The set of the messages is UTF-8, whose texts stand as they are in the file, or "the other one", iso_1.
#ifndef TESTS_SUPPORT_MESSAGES_H
#define TESTS_SUPPORT_MESSAGES_H

#include <dlxcomn/dlxcomn.h>

#include <string>

namespace support {

inline const std::string MESSAGE_FILE = "locales/message/us_english/comnlib.loc";

class MessageLanguage {
public:
    MessageLanguage() {
        utf8_ = {&utf8_oid_, const_cast<CHAR_ATTRIB *>(&ISO_1_char_attrib), nullptr, nullptr, &other_};
        other_ = {&other_oid_, const_cast<CHAR_ATTRIB *>(&ISO_1_char_attrib), nullptr, nullptr, nullptr};
        globals_.cmg_chardesc = &utf8_;
        globals_.cmg_utf8_charset = &utf8_;
        record_.charset_oid = &utf8_oid_;
        comn_create_mutex(&record_.msgmtx);
        cache_.langname = language_;
        cache_.langnamelen = sizeof language_ - 1;
        cache_.locchardesc = &utf8_;
        cache_.locmessage = &record_;
        locale_.messageptr = &cache_;
    }
    ~MessageLanguage() {
        drop();
        comn_delete_mutex(record_.msgmtx);
    }
    MessageLanguage(const MessageLanguage &) = delete;
    MessageLanguage &operator=(const MessageLanguage &) = delete;

    void drop() {
        while (CsErrFileCache *const file = record_.locfilecache) {
            record_.locfilecache = file->next;
            com__errfile_cache_drop(&record_, file);
        }
    }
    void use_other_set() {
        record_.charset_oid = &other_oid_;
        cache_.locchardesc = &other_;
    }

    CS_MESSAGE &record() { return record_; }
    CsLocCache &cache() { return cache_; }
    CS_LOCALE &locale() { return locale_; }
    CsCtxGlobals &globals() { return globals_; }
    CsOID *utf8_oid() { return &utf8_oid_; }
    CsOID *other_oid() { return &other_oid_; }

private:
    CS_CHAR language_[sizeof "us_english"] = "us_english";
    CsOID utf8_oid_ = {};
    CsOID other_oid_ = {};
    CsCharDesc utf8_ = {};
    CsCharDesc other_ = {};
    CsCtxGlobals globals_ = {};
    CS_MESSAGE record_ = {};
    CsLocCache cache_ = {};
    CS_LOCALE locale_ = {};
};

// One context with the language's locale; its catalog goes with it.
class MessageContext {
public:
    explicit MessageContext(MessageLanguage &language) {
        context_.ctxglobals = &language.globals();
        context_.ctxlocale = &language.locale();
    }
    ~MessageContext() { com_errdrop(&context_); }
    MessageContext(const MessageContext &) = delete;
    MessageContext &operator=(const MessageContext &) = delete;

    CS_CONTEXT *get() { return &context_; }
    CS_ERRHAN *catalog() { return static_cast<CS_ERRHAN *>(context_.ctxcomerrhan); }

    CS_RETCODE find(CS_INT tag, CS_INT number, CS_CHAR *&text) {
        CS_ERRIDX idx = {tag, static_cast<CS_MSGNUM>(number)};
        return com_err_msg(&context_, catalog(), &idx, &text);
    }
    // "" and a text are two things, and so is a failure.
    std::string text(CS_INT tag, CS_INT number) {
        CS_CHAR *found = nullptr;
        const CS_RETCODE status = find(tag, number, found);
        return status == CS_SUCCEED ? std::string("'") + found + "'" : "status " + std::to_string(status);
    }
    std::string code(CS_INT tag, CS_INT number) {
        CS_BYTE found[8];
        CS_INT length = 0;
        const CS_RETCODE status = com_err_sqlstate(&context_, catalog(), number, tag, found, sizeof found, &length);
        return status == CS_SUCCEED
                   ? std::string(reinterpret_cast<const char *>(found), static_cast<std::size_t>(length))
                   : "status " + std::to_string(status);
    }

private:
    CS_CONTEXT context_ = {};
};

} // namespace support

#endif
