// The bottom of the library: assertion exits, the trace of status codes, bounded copies, debug output.
//
// Everything that reports a broken contract uses only standard error, so that it works with no context, no
// locale and no memory.
#include "diag/check.h"

#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dlxintl/intl.h>

CS_INT Com_trace_enable = COM_TRACE_OFF;
FILE *Com_fp = nullptr;

const COM_ERROR_NAME Com_errors[COM_ERROR_COUNT] = {
    {CS_SUCCEED, "CS_SUCCEED"},
    {CS_FAIL, "CS_FAIL"},
    {CS_MEM_ERROR, "CS_MEM_ERROR"},
    {CS_PENDING, "CS_PENDING"},
    {CS_QUIET, "CS_QUIET"},
    {CS_BUSY, "CS_BUSY"},
    {CS_INTERRUPT, "CS_INTERRUPT"},
    {CS_CANCELED, "CS_CANCELED"},
    {CS_ROW_FAIL, "CS_ROW_FAIL"},
    {CS_END_DATA, "CS_END_DATA"},
    {CS_END_RESULTS, "CS_END_RESULTS"},
    {CS_END_ITEM, "CS_END_ITEM"},
    {CS_NOMSG, "CS_NOMSG"},
    {CS_TIMED_OUT, "CS_TIMED_OUT"},
    {CS_PASSTHRU_EOM, "CS_PASSTHRU_EOM"},
    {CS_PASSTHRU_MORE, "CS_PASSTHRU_MORE"},
    {CS_TRYING, "CS_TRYING"},
};

namespace {

constexpr int ABORT_FULLY = 1;
int full_abort = ABORT_FULLY;

FILE *debug_output() { return Com_fp != nullptr ? Com_fp : stdout; }

const char *error_name(CS_RETCODE error) {
    for (const COM_ERROR_NAME &row : Com_errors)
        if (row.error == error)
            return row.name;
    return nullptr;
}

bool is_everyday(CS_RETCODE error) {
    switch (error) {
    case CS_SUCCEED:
    case CS_PENDING:
    case CS_END_DATA:
    case CS_END_RESULTS:
    case CS_END_ITEM:
    case CS_INTERRUPT:
        return true;
    default:
        return false;
    }
}

bool ends_specifier(char c) { return std::strchr("cdlsxX", c) != nullptr; }

// One conversion specifier while it is gathered, from its "%" to its letter. What stands between may only be
// flags, width and precision: anything else (another conversion, an asterisk, more than the room) would make
// the C library take arguments that nobody passed, so such a specifier is illegal.
class Specifier {
public:
    void take(char c) {
        if (length_ == sizeof text_ - 1) {
            legal_ = false;
            return;
        }
        if (length_ > 1 && !is_modifier(text_[length_ - 1]))
            legal_ = legal_ && text_[length_ - 1] == 'l'; // "ld" and "lx"
        text_[length_++] = c;
    }
    const char *text() {
        text_[length_] = '\0';
        return text_;
    }
    bool legal() const { return legal_; }

private:
    static bool is_modifier(char c) { return std::strchr("-+ #'.h0123456789", c) != nullptr; }

    char text_[80];
    std::size_t length_ = 0;
    bool legal_ = true;
};

// The formats below come from the caller by design.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"

// Prints the next argument by one gathered specifier; `format` stands behind its last character and is moved
// over the letter that may follow an "l".
void print_specifier(FILE *out, Specifier &specifier, char last, const char *&format, std::va_list *arguments) {
    const bool whole = last != 'l' || *format == 'd' || *format == 'x';
    if (last == 'l' && whole) {
        specifier.take(*format);
        ++format;
    }
    if (!specifier.legal())
        last = '\0';
    switch (last) {
    case 'd':
    case 'x':
    case 'X':
        std::fprintf(out, specifier.text(), va_arg(*arguments, CS_INT));
        break;
    case 'c':
        std::fprintf(out, specifier.text(), static_cast<signed char>(va_arg(*arguments, int)));
        break;
    case 'l': {
        const CS_BIGINT value = va_arg(*arguments, CS_BIGINT);
        if (whole) // a length without a conversion prints nothing, and only some C libraries survive it
            std::fprintf(out, specifier.text(), value);
        break;
    }
    case 's': {
        const char *text = va_arg(*arguments, const char *);
        std::fprintf(out, specifier.text(), text != nullptr ? text : "(null)");
        break;
    }
    default:
        std::fputs("illegal format specification\n", out);
        break;
    }
}

#pragma GCC diagnostic pop

} // namespace

void com_raise_invalid_null_pointer(const char *file, int line) {
    std::fprintf(stderr, "\nInvalid NULL pointer , file '%s' line %d\n", file, line);
    com__abort();
}

void com_bomb(const char *file, int line) {
    std::fprintf(stderr, "\n\rassertion failed, file '%s' line %d\n\r", file, line);
    com__abort();
}

void com__abort() {
    if (full_abort == ABORT_FULLY) {
        std::fclose(stderr);
        std::abort();
    }
    std::fflush(stderr);
    std::raise(SIGABRT);
}

void com_toggle_abort(int n) { full_abort = n; }

void com_panic(const char *msg) {
    if (msg == nullptr) {
        // Callers count on not coming back: where the report returns, the process still ends.
        com_raise_invalid_null_pointer(__FILE__, __LINE__);
        msg = "(null)";
    }
    std::fprintf(stderr, "\nINTERNAL ERROR: unrecoverable error: %s\n", msg);
    std::fflush(stderr);
    std::exit(-1);
}

void com_errset(CS_INT level) {
    COM_REQUIRE(level == COM_TRACE_OFF || level == COM_TRACE_ERRORS || level == COM_TRACE_ALL);
    Com_trace_enable = level;
}

CS_RETCODE com_errtrace(CS_RETCODE error, const char *file, int line) {
    if (Com_trace_enable == COM_TRACE_OFF)
        return error;
    if (Com_trace_enable != COM_TRACE_ALL && is_everyday(error))
        return error;
    COM_REQUIRE_PTR(file, error);

    const char *slash = std::strrchr(file, '/');
    const char *name = slash != nullptr ? slash + 1 : file;

    int depth = 0;
    com__get_stack_depth(&depth);
    COM_REQUIRE(depth >= 0, error);
    for (int i = 0; i < depth; ++i)
        std::fputc('.', debug_output());

    if (const char *text = error_name(error))
        comn_debug_print("(%s) file %s, line %d\n", text, name, line);
    else // widened without sign: callers read -101 as 4294967195
        comn_debug_print("(%ld) file %s, line %d\n", static_cast<long>(static_cast<CS_UINT>(error)), name, line);
    return error;
}

void com__get_stack_depth(int *depth) {
    COM_REQUIRE_PTR(depth);
    *depth = 0;
}

void com_copstr(char *dest, const char *src, int size) {
    COM_REQUIRE_PTR(dest);
    COM_REQUIRE_PTR(src);
    COM_REQUIRE(size >= 1);
    COM_REQUIRE(std::strlen(src) < static_cast<std::size_t>(size));
    intl_strlcpy(dest, src, static_cast<std::size_t>(size));
}

void com_catstr(char *dest, const char *src, int size) {
    COM_REQUIRE_PTR(dest);
    COM_REQUIRE_PTR(src);
    COM_REQUIRE(size >= 1);
    COM_REQUIRE(std::strlen(dest) + std::strlen(src) < static_cast<std::size_t>(size));
    intl_strlcat(dest, src, static_cast<std::size_t>(size));
}

CS_RETCODE comn_debug_setfile(CS_CONTEXT * /*context*/, CS_CHAR *filename, CS_INT filenlen) {
    if (filename != nullptr && filenlen != 0) {
        // A stream set earlier is only replaced: callers share it with Com_fp and close it themselves.
        Com_fp = std::fopen(filename, "a");
        return Com_fp != nullptr ? CS_SUCCEED : COM_TRACE(CS_FAIL);
    }
    if (Com_fp != nullptr) {
        std::fclose(Com_fp);
        Com_fp = nullptr;
    }
    return CS_SUCCEED;
}

int comn_debug_print(const char *fmtstr, ...) {
    COM_REQUIRE_PTR(fmtstr, CS_SUCCEED);
    std::va_list arguments;
    va_start(arguments, fmtstr);
    std::vfprintf(debug_output(), fmtstr, arguments);
    va_end(arguments);
    std::fflush(debug_output());
    return CS_SUCCEED;
}

CS_RETCODE comn_debug_vprint(const CS_CHAR *fmtstr, CS_VOID *ap) {
    COM_REQUIRE_PTR(fmtstr, CS_SUCCEED);
    COM_REQUIRE_PTR(ap, CS_SUCCEED);
    FILE *out = debug_output();
    auto *arguments = static_cast<std::va_list *>(ap);

    for (const char *format = fmtstr; *format != '\0';) {
        char c = *format++;
        if (c != '%') {
            std::fputc(c, out);
            continue;
        }
        if (*format == '%') {
            std::fputc(*format++, out);
            continue;
        }
        Specifier specifier;
        specifier.take(c);
        char last = '\0';
        while (*format != '\0' && last == '\0') {
            specifier.take(*format);
            if (ends_specifier(*format))
                last = *format;
            ++format;
        }
        print_specifier(out, specifier, last, format, arguments);
    }
    std::fflush(out);
    return CS_SUCCEED;
}

CS_RETCODE comn_dbg_stack(CS_VOID * /*tid*/, CS_VOID * /*fp*/, CS_INT /*depth*/,
                          CS_RETCODE (* /*funcp*/)(CS_CHAR *, CS_INT)) {
    return CS_FAIL;
}

void com_perr(const CS_CHAR *err_string) {
    COM_REQUIRE_PTR(err_string);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
    std::fprintf(stderr, err_string);
    std::fflush(stderr);
    if (FILE *file = std::fopen("dlxinit.err", "a")) {
        std::fprintf(file, err_string);
        std::fclose(file);
    }
#pragma GCC diagnostic pop
}
