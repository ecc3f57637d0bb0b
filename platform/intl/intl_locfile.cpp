// The reader of localization files: sections, keys and lists of values, in one pass forward.
//
// The file is taken in blocks by read(2), and a line is what lies between two line feeds of a block; only the
// line at hand is copied, to where callers see it. Keys and values are cut out of that line. A line that has
// been looked at and belongs to the next call (the section line that ends a section) stays at hand.
#include <dlxintl/intl.h>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int LINE_BYTES = 1023; // the longest line, without its end
constexpr size_t BLOCK_BYTES = 64 * 1024;

// What the fields of INTL_LOCFILE cannot hold.
struct Reader {
    int fd;
    int failure;      // sticky: INTL_OK, or the code that every further call answers
    bool line_waits;  // the present line was looked at and not used
    bool exhausted;   // read has answered 0
    int valuelen;     // bytes of the present value
    size_t begin;     // unread bytes of the block
    size_t end;
    char *name; // the present section name or key: in its field, or in long_name
    char long_name[LINE_BYTES + 1];
    char block[BLOCK_BYTES];
};

thread_local int closed_line = 0;

Reader *reader_of(const INTL_LOCFILE *ifile) { return static_cast<Reader *>(ifile->file); }

bool is_blank(char c) { return c == ' ' || c == '\t'; }

const char *skip_blanks(const char *p, const char *end) {
    while (p < end && is_blank(*p))
        ++p;
    return p;
}

const char *trim_end(const char *begin, const char *end) {
    while (end > begin && is_blank(end[-1]))
        --end;
    return end;
}

// The first such byte, or the end.
const char *find(const char *begin, const char *end, char byte) {
    const void *found = std::memchr(begin, byte, static_cast<size_t>(end - begin));
    return found != nullptr ? static_cast<const char *>(found) : end;
}

int hex_digit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Copies a text, terminated and cut to the room.
void put_text(char *to, size_t room, const char *begin, const char *end) {
    const size_t length = static_cast<size_t>(end - begin);
    const size_t count = length < room ? length : room - 1;
    std::memcpy(to, begin, count);
    to[count] = '\0';
}

// Puts a name into its field of INTL_LOCFILE. Answers where it stands whole.
template <size_t ROOM>
char *put_name(Reader &reader, char (&field)[ROOM], const char *begin, const char *end) {
    put_text(field, ROOM, begin, end);
    if (static_cast<size_t>(end - begin) < ROOM)
        return field;
    put_text(reader.long_name, sizeof reader.long_name, begin, end);
    return reader.long_name;
}

// Moves the unread bytes to the front of the block and reads more behind them. False at the end of the file
// and on failure.
bool fill_block(Reader &reader) {
    if (reader.exhausted)
        return false;
    std::memmove(reader.block, reader.block + reader.begin, reader.end - reader.begin);
    reader.end -= reader.begin;
    reader.begin = 0;
    ssize_t count;
    do
        count = read(reader.fd, reader.block + reader.end, BLOCK_BYTES - reader.end);
    while (count < 0 && errno == EINTR);
    if (count < 0) {
        reader.failure = INTL_EREAD;
        return false;
    }
    reader.exhausted = count == 0;
    reader.end += static_cast<size_t>(count);
    return count > 0;
}

// Finds the end of the line that begins the unread bytes; null at the end of the file and on failure. A last
// line needs no line feed.
const char *find_line_end(Reader &reader) {
    size_t looked_at = 0;
    for (;;) {
        const char *begin = reader.block + reader.begin;
        const size_t held = reader.end - reader.begin;
        if (const void *found = std::memchr(begin + looked_at, '\n', held - looked_at))
            return static_cast<const char *>(found);
        looked_at = held;
        // One byte more for the CR of a line end.
        if (held > LINE_BYTES + 1) {
            reader.failure = INTL_ELINETOOLONG;
            return nullptr;
        }
        if (!fill_block(reader)) {
            const bool last_line = reader.failure == INTL_OK && held != 0;
            return last_line ? reader.block + reader.end : nullptr;
        }
    }
}

// Makes the next line that is neither blank nor a comment the present one. False at the end and on failure.
bool next_line(INTL_LOCFILE &ifile, Reader &reader) {
    if (reader.line_waits) {
        reader.line_waits = false;
        return true;
    }
    for (;;) {
        const char *end = find_line_end(reader);
        if (end == nullptr) {
            ifile.linenum += reader.failure != INTL_OK; // the line that could not be had is the one at fault
            ifile.eof = 1;
            return false;
        }
        ++ifile.linenum;
        const char *begin = reader.block + reader.begin;
        reader.begin = static_cast<size_t>(end - reader.block) + (end < reader.block + reader.end ? 1 : 0);
        if (end > begin && end[-1] == '\r')
            --end;
        if (end - begin > LINE_BYTES) {
            reader.failure = INTL_ELINETOOLONG;
            ifile.eof = 1;
            return false;
        }
        const char *text = skip_blanks(begin, end);
        if (text == end || *text == ifile.comment_char)
            continue;
        ifile.linelen = static_cast<int>(end - begin);
        ifile.linepos = static_cast<int>(text - begin);
        std::memcpy(ifile.line, begin, static_cast<size_t>(ifile.linelen));
        ifile.line[ifile.linelen] = '\0';
        return true;
    }
}

bool is_section_line(const INTL_LOCFILE &ifile) { return ifile.line[ifile.linepos] == ifile.leftsection; }

// Cuts the name out of "[name]", with blanks around name and brackets. False for any other form.
bool take_section(INTL_LOCFILE &ifile, Reader &reader) {
    const char *begin = ifile.line + ifile.linepos + 1;
    const char *end = trim_end(begin, ifile.line + ifile.linelen);
    if (end == begin || end[-1] != ifile.rightsection)
        return false;
    --end;
    if (find(begin, end, ifile.rightsection) != end)
        return false;
    begin = skip_blanks(begin, end);
    end = trim_end(begin, end);
    if (begin == end)
        return false;
    reader.name = put_name(reader, ifile.section, begin, end);
    return true;
}

// Cuts the key out of "key = values" and leaves linepos at the values.
bool take_key(INTL_LOCFILE &ifile, Reader &reader) {
    const char *begin = ifile.line + ifile.linepos;
    const char *line_end = ifile.line + ifile.linelen;
    const char *equals = find(begin, line_end, '=');
    if (equals == line_end)
        return false;
    const char *end = trim_end(begin, equals);
    reader.name = put_name(reader, ifile.entry, begin, end);
    const char *values = skip_blanks(equals + 1, line_end);
    ifile.linepos = static_cast<int>(values - ifile.line);
    ifile.end_of_list = values == line_end; // "key =" has no value
    return true;
}

// A value in quotes stands as it is written. A backslash keeps the byte behind it from ending the value; both
// stay. Answers where reading goes on, or null when the quote does not end the value.
const char *take_quoted(INTL_LOCFILE &ifile, Reader &reader, const char *p, const char *line_end) {
    const char *begin = p;
    const char *quote = find(p, line_end, ifile.quote_char);
    for (const char *escape; (escape = find(p, quote, ifile.escape)) != quote;) {
        // The byte behind it may be the quote, or lie behind the line.
        p = escape + 1 < line_end ? escape + 2 : line_end;
        if (p > quote)
            quote = find(p, line_end, ifile.quote_char);
    }
    if (quote == line_end) {
        reader.failure = INTL_EUNTERMINATED;
        return nullptr;
    }
    reader.valuelen = static_cast<int>(quote - begin);
    put_text(ifile.value, sizeof ifile.value, begin, quote);
    p = skip_blanks(quote + 1, line_end);
    if (p < line_end && *p != ifile.list_sep) {
        reader.failure = INTL_EUNTERMINATED;
        return nullptr;
    }
    return p;
}

// The byte that an escape stands for; p is behind the backslash and goes behind the escape. False for a bad one.
bool take_escape(const char *&p, const char *line_end, char &byte) {
    if (p == line_end)
        return false;
    if (*p != 'x') {
        byte = *p++;
        return true;
    }
    const int high = line_end - p > 2 ? hex_digit(p[1]) : -1;
    const int low = high >= 0 ? hex_digit(p[2]) : -1;
    if (low < 0)
        return false;
    byte = static_cast<char>(high << 4 | low);
    p += 3;
    return true;
}

// A plain value ends at a separator. Escapes are decoded, and blanks around it do not count unless escaped.
// What stands between two escapes is copied at once.
const char *take_plain(INTL_LOCFILE &ifile, Reader &reader, const char *p, const char *line_end) {
    char *out = ifile.value;
    char *decoded = out; // behind the last byte that came from an escape: trimming leaves it
    const char *separator = find(p, line_end, ifile.list_sep);
    for (;;) {
        const char *end = find(p, separator, ifile.escape);
        const auto count = static_cast<size_t>(end - p);
        std::memcpy(out, p, count);
        out += count;
        p = end;
        if (p == separator)
            break;
        if (!take_escape(++p, line_end, *out)) {
            reader.failure = INTL_EBADESCAPE;
            return nullptr;
        }
        decoded = ++out;
        if (p > separator) // it was the escaped byte
            separator = find(p, line_end, ifile.list_sep);
    }
    while (out > decoded && is_blank(out[-1]))
        --out;
    *out = '\0';
    reader.valuelen = static_cast<int>(out - ifile.value);
    return p;
}

char *fail(INTL_LOCFILE &ifile, Reader &reader, int code, int *status) {
    reader.failure = code;
    ifile.end_of_list = ifile.end_of_section = ifile.eof = 1;
    *status = code;
    return nullptr;
}

// Where nothing is left: the failure that ended it, or a plain end.
char *ended(const Reader &reader, int *status) {
    *status = reader.failure;
    return nullptr;
}

} // namespace

int intl_open(const char *path, INTL_LOCFILE *ifile) {
    *ifile = {};
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return INTL_ECANTOPEN;
    auto *reader = static_cast<Reader *>(comn_malloc(sizeof(Reader)));
    if (reader == nullptr) {
        close(fd);
        return INTL_ENOMEMORY;
    }
    reader->fd = fd;
    reader->failure = INTL_OK;
    reader->line_waits = reader->exhausted = false;
    reader->valuelen = 0;
    reader->begin = reader->end = 0;
    reader->name = nullptr;

    ifile->version = 1;
    ifile->comment_char = ';';
    ifile->leftsection = '[';
    ifile->rightsection = ']';
    ifile->list_sep = ',';
    ifile->escape = '\\';
    ifile->quote_char = '"';
    ifile->end_of_list = ifile->end_of_section = 1;
    ifile->file = reader;
    return INTL_OK;
}

int intl_close(INTL_LOCFILE *ifile) {
    Reader *reader = reader_of(ifile);
    if (reader == nullptr)
        return INTL_OK;
    const int status = reader->failure == INTL_EREAD ? INTL_EREAD : INTL_OK;
    closed_line = ifile->linenum;
    close(reader->fd);
    comn_free(reader);
    ifile->file = nullptr;
    return status;
}

int intl_closedline(void) { return closed_line; }

char *intl_nextsection(INTL_LOCFILE *ifile, int *status) {
    Reader *reader = reader_of(ifile);
    if (reader == nullptr || reader->failure != INTL_OK) {
        *status = reader != nullptr ? reader->failure : INTL_EREAD;
        return nullptr;
    }
    ifile->end_of_list = ifile->end_of_section = 1;
    do {
        if (!next_line(*ifile, *reader))
            return ended(*reader, status);
    } while (!is_section_line(*ifile));
    if (!take_section(*ifile, *reader))
        return fail(*ifile, *reader, INTL_EBADSECTION, status);
    ifile->end_of_section = 0;
    *status = INTL_OK;
    return reader->name;
}

char *intl_nextentry(INTL_LOCFILE *ifile, int *status) {
    Reader *reader = reader_of(ifile);
    if (reader == nullptr || reader->failure != INTL_OK) {
        *status = reader != nullptr ? reader->failure : INTL_EREAD;
        return nullptr;
    }
    ifile->end_of_list = 1;
    if (ifile->end_of_section)
        return ended(*reader, status);
    if (!next_line(*ifile, *reader)) {
        ifile->end_of_section = 1;
        return ended(*reader, status);
    }
    if (is_section_line(*ifile)) {
        reader->line_waits = true;
        ifile->end_of_section = 1;
        return ended(*reader, status);
    }
    if (!take_key(*ifile, *reader))
        return fail(*ifile, *reader, INTL_ENOEQUALS, status);
    *status = INTL_OK;
    return reader->name;
}

char *intl_nextvalue(INTL_LOCFILE *ifile, int *status) {
    Reader *reader = reader_of(ifile);
    if (reader == nullptr || reader->failure != INTL_OK) {
        *status = reader != nullptr ? reader->failure : INTL_EREAD;
        return nullptr;
    }
    if (ifile->end_of_list)
        return ended(*reader, status);
    const char *line_end = ifile->line + ifile->linelen;
    const char *p = skip_blanks(ifile->line + ifile->linepos, line_end);
    ifile->isquoted = p < line_end && *p == ifile->quote_char;
    p = ifile->isquoted ? take_quoted(*ifile, *reader, p + 1, line_end) : take_plain(*ifile, *reader, p, line_end);
    if (p == nullptr)
        return fail(*ifile, *reader, reader->failure, status);
    // A separator promises a further value, even if nothing follows it.
    ifile->end_of_list = p == line_end;
    ifile->linepos = static_cast<int>(p - ifile->line) + (p < line_end ? 1 : 0);
    *status = INTL_OK;
    return ifile->value;
}

int intl_valuelen(const INTL_LOCFILE *ifile) {
    const Reader *reader = reader_of(ifile);
    return reader != nullptr ? reader->valuelen : 0;
}
