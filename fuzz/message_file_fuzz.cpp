// A message file of any content: the start of the catalog, lookups of all that its sections may hold until the cache
// turns over, and messages raised from it, against the naive catalog. A second file may take the first one's place in
// between, as when a site edits it under a running program.
#include "home.h"
#include "support/messages.h"
#include "support/naive_catalog.h"

#include <dlxintl/intl.h>

namespace naive = support::naive;

namespace {

// What the callback was told.
std::string raised_text, raised_code;

CS_RETCODE note(CS_CONTEXT * /*context*/, CS_CLIENTMSG *message) {
    FUZZ_CHECK(message->msgstringlen >= 0 && message->msgstringlen < CS_MAX_MSG);
    FUZZ_CHECK(message->msgstring[message->msgstringlen] == '\0');
    FUZZ_CHECK(message->sqlstatelen >= 0 && message->sqlstatelen < 8);
    raised_text.assign(message->msgstring, static_cast<std::size_t>(message->msgstringlen));
    raised_code.assign(reinterpret_cast<const char *>(message->sqlstate),
                       static_cast<std::size_t>(message->sqlstatelen));
    return CS_SUCCEED;
}

class Session {
public:
    Session(fuzz::Home &home, const std::string &content) : home_(home) {
        context_.get()->ctxerrfunc = note;
        put(content);
    }

    void put(const std::string &content) {
        content_ = content;
        home_.put(content);
        FUZZ_CHECK(com_errinit(context_.get()) == naive_.start(content_));
        check_state();
    }
    void find(int tag, int number) {
        naive::Catalog::Message expected;
        CS_CHAR *text = nullptr;
        const CS_RETCODE status = context_.find(tag, number, text);
        FUZZ_CHECK(status == naive_.find(content_, {tag, number}, expected));
        FUZZ_CHECK((status == CS_SUCCEED) == (text != nullptr));
        if (status == CS_SUCCEED)
            FUZZ_CHECK(text == expected.text && context_.code(tag, number) == expected.code);
        FUZZ_CHECK(context_.get()->ctxintlerr == naive_.code());
    }
    // With one parameter, whose template stands as it is.
    void raise(CS_MSGNUM number) {
        CS_CHAR name[] = "function";
        CsErrParams params;
        com_ep_s(&params, name);
        raise(number, params);
        const Expected expected = look_up(number);
        FUZZ_CHECK(raised_text == (expected.beginning + expected.message).substr(0, CS_MAX_MSG - 1));
        FUZZ_CHECK(raised_code == expected.code);
        check_state();
    }
    // With more of them, which the localization's messages do not have.
    void raise_filled(CS_MSGNUM number, std::string parameter) {
        number &= 0xFF0FFFFF;
        if (origin_of(number) == LOCALIZATION)
            return;
        CS_CHAR name[] = "function";
        CS_INT length = static_cast<CS_INT>(parameter.size());
        CsErrParams params;
        com_ep_ssd(&params, name, parameter.data(), &length);
        raise(number, params);
        const Expected expected = look_up(number);
        FUZZ_CHECK(
            raised_text ==
            (expected.beginning + filled(expected.message, parameter.c_str(), length)).substr(0, CS_MAX_MSG - 1));
        check_state();
    }

private:
    static constexpr int LOCALIZATION = 5;
    struct Expected {
        std::string beginning, message, code;
    };

    static int origin_of(CS_MSGNUM number) { return static_cast<int>(number >> 16 & 255); }
    void raise(CS_MSGNUM number, CsErrParams &params) {
        FUZZ_CHECK(com__error(context_.get(), number, &params) == CS_SUCCEED);
    }
    // In the order that decides what the cache still holds.
    Expected look_up(CS_MSGNUM number) {
        const int low = static_cast<int>(number & 255);
        Expected expected;
        expected.beginning = "function: " + text(2, static_cast<int>(number >> 24), 2) + ": ";
        expected.beginning += text(3, origin_of(number), 3) + ": ";
        expected.message = origin_of(number) == LOCALIZATION ? intl_errstr(-low) : text(4, low, 4);
        naive::Catalog::Message api;
        expected.code = naive_.find(content_, {4, low}, api) == CS_SUCCEED ? api.code : "ZZZZZ";
        return expected;
    }
    std::string text(int tag, int number, int failure) {
        naive::Catalog::Message found;
        if (naive_.find(content_, {tag, number}, found) == CS_SUCCEED ||
            naive_.find(content_, {1, failure}, found) == CS_SUCCEED)
            return found.text;
        return Msgfailures[failure - 1].string;
    }
    // The template itself where it names a third parameter, or the text grows by more than 511 bytes.
    static std::string filled(const std::string &from, const std::string &first, CS_INT second) {
        std::string to;
        for (std::size_t i = 0; i < from.size(); ++i) {
            const char digit = from[i] == '%' && i + 2 < from.size() && from[i + 2] == '!' ? from[i + 1] : '0';
            if (digit >= '3' && digit <= '9')
                return from;
            if (digit == '1' || digit == '2') {
                to += digit == '1' ? first : std::to_string(second);
                i += 2;
            } else {
                to += from[i];
                i += from.compare(i, 2, "%%") == 0 ? 1 : 0;
            }
        }
        return to.size() < from.size() + 512 ? to : from;
    }
    // The history is what the naive catalog has, and each message is on the chain of its section.
    void check_state() {
        FUZZ_CHECK(context_.get()->ctxintlerr == naive_.code());
        auto expected = naive_.messages().rbegin();
        CS_INT count = 0;
        for (const CsErrorCache *error = language_.record().locerrhist; error != nullptr; error = error->histnext) {
            FUZZ_CHECK(expected != naive_.messages().rend());
            FUZZ_CHECK(expected->index == naive::Index(error->errseccache->errtag, error->errnum));
            FUZZ_CHECK(com__scan_cache(error->errseccache, error->errnum) == error);
            ++expected;
            ++count;
        }
        FUZZ_CHECK(expected == naive_.messages().rend() && count == language_.record().locerrcnt);
    }

    fuzz::Home &home_;
    support::MessageLanguage language_;
    support::MessageContext context_{language_};
    naive::Catalog naive_;
    std::string content_;
};

constexpr std::size_t LONGEST = 1500;      // each lookup may read all of the file
constexpr std::size_t MOST_MESSAGES = 160; // of a written file; the cache holds 100

// A whole file, so that few bytes come to many messages: each byte of the input is one, or ends a section.
std::string written_file(const std::string &rest) {
    static constexpr const char *NAMES[] = {"comdefaults", "comlayer", "comorigin", "comapierror"};
    static constexpr const char *TEXTS[] = {
        "\"plain\"", "\"%1! and %2!\"", "\"\\n\\q\\\\\"", "a, \" b\"", "\"%s%n%9!\", \"\"", "\"\"", "x\\,y"};
    std::string content = "[" + std::string(NAMES[0]) + "]\n";
    std::size_t section = 0;
    for (std::size_t i = 0; i < rest.size(); ++i) {
        const auto byte = static_cast<CS_BYTE>(rest[i]);
        if (byte == '\n' && section < 3)
            content += "[" + std::string(NAMES[++section]) + "]\n";
        else
            content +=
                std::to_string(byte) + " = S" + std::to_string(i) + ", " + TEXTS[(byte + i) % std::size(TEXTS)] + "\n";
    }
    while (section < 3)
        content += "[" + std::string(NAMES[++section]) + "]\n";
    return content;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size) {
    static fuzz::Home home(support::MESSAGE_FILE);
    fuzz::Input input(data, size);
    const CS_BYTE how = input.byte(), first = input.byte();
    const auto number = static_cast<CS_MSGNUM>(input.byte()) << 24 | static_cast<CS_MSGNUM>(input.byte()) << 16 |
                        static_cast<CS_MSGNUM>(input.byte()) << 8 | input.byte();
    const std::string rest = input.rest().substr(0, LONGEST);
    const std::string content = (how & 1) != 0 ? rest : written_file(rest.substr(0, MOST_MESSAGES));
    Session session(home, content);
    // Numbers that the file is likely to have, so that the cache turns over; in a file as it stands the first few do.
    const std::size_t lookups = (how & 1) != 0 ? 16 : MOST_MESSAGES;
    for (std::size_t i = 0; i < std::min(lookups, rest.size()); ++i)
        session.find(1 + (static_cast<CS_BYTE>(rest[i]) + first) % 5, static_cast<CS_BYTE>(rest[i]));
    session.raise(number);
    session.raise(number & 0x0F0F0F0F);
    session.raise_filled(number, rest.substr(0, 40));
    if ((how & 2) != 0) {
        session.put(content.substr(std::min<std::size_t>(first, content.size())));
        session.raise(number);
        for (int i = 0; i < 16; ++i)
            session.find(1 + i % 4, first + i - 4);
    }
    return 0;
}
