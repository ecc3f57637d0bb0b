#include "recoder.h"

#include "scsu.h"
#include "text.h"

#include <dlxcomn/charconv.h>
#include <dlxunic/unic.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace client {

// Bytes to 16-bit text.
class Decoder {
public:
    virtual ~Decoder() = default;
    // Appends the characters that are whole; a NUL is the unit 0.
    virtual void decode(std::string_view bytes, bool is_end, std::u16string *units, Losses *losses) = 0;
};

// 16-bit text to bytes.
class Encoder {
public:
    virtual ~Encoder() = default;
    virtual void encode(std::u16string_view units, bool is_end, std::string *bytes, Losses *losses) = 0;
    // Whether a character has a partner.
    virtual bool has(char16_t /*character*/) { return true; }
};

namespace {

constexpr char16_t REPLACEMENT = 0xFFFD;
constexpr char SHIFT_OUT = 0x0E;
constexpr char SHIFT_IN = 0x0F;
constexpr std::string_view SHIFTS = "\x0E\x0F";

bool is_high_surrogate(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
bool is_low_surrogate(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

class Handle {
public:
    Handle() = default;
    ~Handle() { uniconv_HandleFree(handle_); }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;

    int open(std::int32_t cid) { return uniconv_HandleGet(cid, &handle_); }
    CVTH get() const { return handle_; }

private:
    CVTH handle_ = nullptr;
};

// Whether text changes between codes of one and of two bytes: then a shift by itself is no character.
bool has_shifts(CVTH handle) {
    UNICHAR units[4];
    int count = 0;
    return uniconv_unistrFromS(handle, units, 4, SHIFTS.data(), &count) == UNI_OK && count == 0;
}

// Splits a text at its zeros: calls `segment` with what stands between them, and whether a zero follows.
template <class View, class Function>
void for_each_segment(View text, Function segment) {
    for (;;) {
        const size_t zero = text.find(typename View::value_type(0));
        segment(text.substr(0, zero), zero != View::npos);
        if (zero == View::npos)
            return;
        text.remove_prefix(zero + 1);
    }
}

// ---- Tables, UTF-8 and ASCII ----

class SetDecoder : public Decoder {
public:
    int open(std::int32_t cid) {
        const int status = handle_.open(cid);
        shifts_ = status == UNI_OK && has_shifts(handle_.get());
        return status;
    }

    void decode(std::string_view bytes, bool is_end, std::u16string *units, Losses *losses) override {
        const std::string text = std::move(waiting_).append(bytes);
        std::uint64_t offset = offset_; // of the segment
        waiting_.clear();
        for_each_segment(std::string_view(text), [&](std::string_view segment, bool is_closed) {
            std::u16string found;
            int status = convert(is_shifted_, segment, &found);
            std::string_view whole = segment;
            if (status == UNI_TRUNCATED) {
                whole = segment.substr(0, segment.size() - tail_length(segment));
                if (is_closed) {
                    // A NUL ends the character that it stands in, like any byte that cannot be part of one.
                    found.clear();
                    status = convert(is_shifted_, std::string(segment) + (shifts_ ? SHIFT_IN : END_OF_CODE), &found);
                    if (!shifts_)
                        found.pop_back();
                    whole = segment;
                } else if (is_end) {
                    losses->cut_at = offset + whole.size();
                }
            }
            if (status == UNI_SUBSTITUTED || (status == UNI_TRUNCATED && found.find(REPLACEMENT) != found.npos))
                count_malformed(segment.substr(0, whole.size()), offset, losses);
            units->append(found);
            is_shifted_ = state_behind(is_shifted_, whole);
            offset += whole.size();
            if (is_closed) {
                units->push_back(0);
                ++offset;
            } else if (!is_end) {
                waiting_ = segment.substr(whole.size());
            }
        });
        offset_ = offset;
    }

private:
    static constexpr char END_OF_CODE = 0x01; // a character of every set that continues none

    bool state_behind(bool is_shifted, std::string_view text) const {
        const size_t last = shifts_ ? text.find_last_of(SHIFTS) : std::string_view::npos;
        return last == std::string_view::npos ? is_shifted : text[last] == SHIFT_OUT;
    }

    int convert(bool is_shifted, std::string_view text, std::u16string *units) {
        source_.assign(is_shifted ? 1 : 0, SHIFT_OUT);
        source_ += text;
        buffer_.resize(source_.size() + 1);
        int count = 0;
        const int status = uniconv_unistrFromS(handle_.get(), buffer_.data(), static_cast<int>(buffer_.size()),
                                               source_.c_str(), &count);
        units->assign(buffer_.begin(), buffer_.begin() + count);
        return status;
    }

    // The bytes of the character in which the text ends. It begins behind the last shift, or in a set without shifts
    // behind the last byte that is part of no longer code; from there on it is the beginning that adds no character to
    // those in front.
    size_t tail_length(std::string_view text) {
        const auto is_border = [this](char byte) {
            return shifts_ ? byte == SHIFT_OUT || byte == SHIFT_IN : static_cast<unsigned char>(byte) < 0x30;
        };
        size_t start = text.size();
        while (start != 0 && !is_border(text[start - 1]))
            --start;
        const bool is_shifted = state_behind(is_shifted_, text.substr(0, start));
        const std::string_view rest = text.substr(start);
        std::u16string all, front;
        convert(is_shifted, rest, &all);
        size_t length = 1;
        while (length < rest.size() &&
               convert(is_shifted, rest.substr(0, rest.size() - length), &front) == UNI_TRUNCATED &&
               front.size() == all.size())
            ++length;
        return length;
    }

    // Text with bytes that are no character, a character at a time. What is malformed may need a look at the next byte.
    void count_malformed(std::string_view text, std::uint64_t offset, Losses *losses) {
        bool is_shifted = is_shifted_;
        std::u16string units;
        for (size_t at = 0; at < text.size();) {
            size_t length = 1;
            int status;
            while ((status = convert(is_shifted, text.substr(at, length), &units)) == UNI_TRUNCATED && units.empty() &&
                   at + length < text.size())
                ++length;
            if (status == UNI_SUBSTITUTED || status == UNI_TRUNCATED) {
                if (losses->malformed == 0)
                    losses->first_malformed = offset + at;
                const auto found = std::count(units.begin(), units.end(), REPLACEMENT);
                losses->malformed += std::max<std::uint64_t>(1, static_cast<std::uint64_t>(found));
            }
            if (status == UNI_TRUNCATED && !units.empty())
                --length;
            is_shifted = state_behind(is_shifted, text.substr(at, length));
            at += length;
        }
    }

    Handle handle_;
    bool shifts_ = false;
    bool is_shifted_ = false;
    std::string waiting_;
    std::uint64_t offset_ = 0; // of the bytes that wait
    std::string source_;
    std::vector<UNICHAR> buffer_;
};

class SetEncoder : public Encoder {
public:
    int open(std::int32_t cid, std::int32_t source) {
        const int status = handle_.open(cid);
        if (status != UNI_OK)
            return status;
        uniconv_SetSource(handle_.get(), source); // whose widths decide between "?" and "??"
        uniconv_GetExpansionFactor(handle_.get(), &growth_);
        shifts_ = has_shifts(handle_.get());
        return UNI_OK;
    }

    void encode(std::u16string_view units, bool is_end, std::string *bytes, Losses *losses) override {
        const std::u16string text = std::move(waiting_).append(units);
        waiting_.clear();
        for_each_segment(std::u16string_view(text), [&](std::u16string_view segment, bool is_closed) {
            const std::u16string_view whole = is_closed || is_end ? segment : segment.substr(0, safe_length(segment));
            put(whole, bytes, losses);
            waiting_ = segment.substr(whole.size());
            if (is_closed || is_end)
                close(bytes);
            if (is_closed)
                bytes->push_back('\0');
        });
    }

    bool has(char16_t character) override {
        std::string ignored;
        return convert({&character, 1}, &ignored) != UNI_SUBSTITUTED;
    }

private:
    int convert(std::u16string_view text, std::string *bytes) {
        source_.assign(text.begin(), text.end());
        source_.push_back(0);
        bytes->resize(text.size() * static_cast<size_t>(growth_) + 4);
        int count = 0;
        const int status =
            uniconv_unistrToS(handle_.get(), bytes->data(), static_cast<int>(bytes->size()), source_.data(), &count);
        bytes->resize(static_cast<size_t>(count) - 1);
        return status;
    }

    void put(std::u16string_view text, std::string *bytes, Losses *losses) {
        if (text.empty())
            return;
        if (convert(text, &piece_) == UNI_SUBSTITUTED)
            losses->missing += count_missing(text);
        std::string_view piece = piece_;
        if (shifts_) {
            // Every text ends in the first state. Where the next one goes on in the second, it never left it.
            if (is_closing_ && piece.front() == SHIFT_OUT)
                piece.remove_prefix(1);
            else
                close(bytes);
            is_closing_ = ends_with_way_back(piece_);
            piece.remove_suffix(is_closing_);
        }
        bytes->append(piece);
    }

    // The way back to the first state, if it is owed.
    void close(std::string *bytes) {
        if (is_closing_)
            bytes->push_back(SHIFT_IN);
        is_closing_ = false;
    }

    static bool ends_with_way_back(std::string_view piece) {
        if (piece.back() != SHIFT_IN)
            return false;
        const size_t before = piece.substr(0, piece.size() - 1).find_last_of(SHIFTS);
        return before != std::string_view::npos && piece[before] == SHIFT_OUT;
    }

    static size_t previous(std::u16string_view text, size_t at) {
        return at >= 2 && is_low_surrogate(text[at - 1]) && is_high_surrogate(text[at - 2]) ? at - 2 : at - 1;
    }

    // How much can be converted without what follows: the last character waits, and with it those before that make one
    // code with it. No such code begins with an ASCII character, so that a line does not wait for the next one.
    size_t safe_length(std::u16string_view text) {
        if (text.empty() || text.back() < 0x80)
            return text.size();
        size_t cut = previous(text, text.size());
        while (cut != 0) {
            const size_t before = previous(text, cut);
            if (!is_joined(text.substr(before, cut - before), text.substr(cut)))
                break;
            cut = before;
        }
        return cut;
    }

    // Whether two characters become something else together.
    bool is_joined(std::u16string_view first, std::u16string_view rest) {
        std::string alone, second, together;
        convert(first, &alone);
        convert(rest, &second);
        convert(std::u16string(first) + std::u16string(rest), &together);
        if (shifts_ && ends_with_way_back(alone) && second.front() == SHIFT_OUT)
            return together != alone.substr(0, alone.size() - 1) + second.substr(1);
        return together != alone + second;
    }

    std::uint64_t count_missing(std::u16string_view text) {
        std::uint64_t count = 0;
        std::string ignored;
        for (size_t at = 0, next; at < text.size(); at = next) {
            next = at + 1;
            if (is_high_surrogate(text[at]) && next < text.size() && is_low_surrogate(text[next]))
                ++next;
            if (is_there(text.substr(at, next - at)))
                continue;
            // It may have a partner together with the one in front of it.
            const size_t before = at == 0 ? at : previous(text, at);
            count += at == 0 || convert(text.substr(before, next - before), &ignored) == UNI_SUBSTITUTED;
        }
        return count;
    }

    // Each character of the basic plane is asked for once.
    bool is_there(std::u16string_view character) {
        enum : char { UNKNOWN, THERE, MISSING };
        std::string ignored;
        if (character.size() > 1)
            return convert(character, &ignored) != UNI_SUBSTITUTED;
        known_.resize(0x10000, UNKNOWN);
        char &known = known_[character[0]];
        if (known == UNKNOWN)
            known = convert(character, &ignored) != UNI_SUBSTITUTED ? THERE : MISSING;
        return known == THERE;
    }

    Handle handle_;
    bool shifts_ = false;
    bool is_closing_ = false;
    int growth_ = 1;
    std::u16string waiting_;
    std::vector<UNICHAR> source_;
    std::string piece_;
    std::string known_; // of characters, whether they have a partner
};

// ---- UTF-16 ----

// Bytes in machine order, without a mark of it.
class Utf16Decoder : public Decoder {
public:
    void decode(std::string_view bytes, bool is_end, std::u16string *units, Losses *losses) override {
        waiting_ += bytes;
        std::u16string text(waiting_.size() / 2, 0);
        std::memcpy(text.data(), waiting_.data(), 2 * text.size());
        size_t at = 0;
        for (; at < text.size(); ++at) {
            if (is_high_surrogate(text[at])) {
                if (at + 1 == text.size())
                    break;
                if (is_low_surrogate(text[at + 1])) {
                    units->append(text, at, 2);
                    ++at;
                    continue;
                }
            }
            const bool is_half = is_high_surrogate(text[at]) || is_low_surrogate(text[at]);
            if (is_half && losses->malformed++ == 0)
                losses->first_malformed = offset_ + 2 * at;
            units->push_back(is_half ? REPLACEMENT : text[at]);
        }
        waiting_.erase(0, 2 * at);
        offset_ += 2 * at;
        if (is_end && !waiting_.empty())
            losses->cut_at = offset_;
    }

private:
    std::string waiting_;
    std::uint64_t offset_ = 0;
};

class Utf16Encoder : public Encoder {
public:
    void encode(std::u16string_view units, bool /*is_end*/, std::string *bytes, Losses * /*losses*/) override {
        bytes->append(reinterpret_cast<const char *>(units.data()), 2 * units.size());
    }
};

// ---- The compression scheme ----

// Each piece is converted with the tags in front that lead to the state of its first byte.
class ScsuDecoder : public Decoder {
public:
    int open() { return handle_.open(UNICONV_RCSU); }

    void decode(std::string_view bytes, bool is_end, std::u16string *units, Losses *losses) override {
        waiting_ += bytes;
        std::string_view text = waiting_;
        while (!text.empty()) {
            const ScsuState before = state_;
            const ScsuRun run = state_.read(text);
            if (run.text != 0)
                convert(before, text.substr(0, run.text), units, losses);
            offset_ += run.text;
            text.remove_prefix(run.text);
            if (run.nul == 0)
                break;
            units->push_back(run.is_malformed ? REPLACEMENT : 0);
            if (run.is_malformed && losses->malformed++ == 0)
                losses->first_malformed = offset_;
            offset_ += run.nul;
            text.remove_prefix(run.nul);
        }
        waiting_ = std::string(text);
        if (is_end && !waiting_.empty())
            losses->cut_at = offset_;
    }

private:
    void convert(const ScsuState &before, std::string_view text, std::u16string *units, Losses *losses) {
        std::u16string found;
        const int status = convert(before, text, &found);
        if (status == UNI_TRUNCATED) // half a surrogate pair in front of a NUL
            found.push_back(REPLACEMENT);
        units->append(found);
        if (status != UNI_OK)
            count_malformed(before, text, losses);
    }

    int convert(const ScsuState &before, std::string_view text, std::u16string *units) {
        const std::string source = before.way_from_start() + std::string(text) + std::string(3, '\0');
        std::vector<UNICHAR> buffer(2 * source.size() + 1); // a byte can be a pair of units
        int count = 0;
        const int status =
            uniconv_unistrFromS(handle_.get(), buffer.data(), static_cast<int>(buffer.size()), source.data(), &count);
        units->assign(buffer.begin(), buffer.begin() + count);
        return status;
    }

    // A character at a time, the halves of a surrogate pair together.
    void count_malformed(const ScsuState &before, std::string_view text, Losses *losses) {
        ScsuState start = before, state = before;
        std::u16string units;
        for (size_t begin = 0, at = 0; at < text.size();) {
            at += state.read_one(text.substr(at));
            const int status = convert(start, text.substr(begin, at - begin), &units);
            if (status == UNI_TRUNCATED && at < text.size())
                continue;
            if (status != UNI_OK) {
                if (losses->malformed == 0)
                    losses->first_malformed = offset_ + begin;
                const auto found = std::count(units.begin(), units.end(), REPLACEMENT);
                losses->malformed += static_cast<std::uint64_t>(found) + (status == UNI_TRUNCATED);
            }
            start = state;
            begin = at;
        }
    }

    Handle handle_;
    ScsuState state_;
    std::string waiting_;
    std::uint64_t offset_ = 0;
};

// What the scheme makes of a character depends on all characters in front of it, so the text is converted at its end.
// Behind a NUL it begins anew, by tags that lead back to the first state.
class ScsuEncoder : public Encoder {
public:
    int open() { return handle_.open(UNICONV_RCSU); }

    void encode(std::u16string_view units, bool is_end, std::string *bytes, Losses * /*losses*/) override {
        waiting_ += units;
        if (!is_end)
            return;
        for_each_segment(std::u16string_view(waiting_), [&](std::u16string_view segment, bool is_closed) {
            std::vector<UNICHAR> source(segment.begin(), segment.end());
            source.push_back(0);
            int growth = 1, count = 0;
            uniconv_GetExpansionFactor(handle_.get(), &growth);
            std::string piece((segment.size() + 1) * static_cast<size_t>(growth) + 8, '\0');
            uniconv_unistrToS(handle_.get(), piece.data(), static_cast<int>(piece.size()), source.data(), &count);
            piece.resize(static_cast<size_t>(count) - 1);
            *bytes += piece;
            if (!is_closed)
                return;
            ScsuState state;
            for (std::string_view rest = piece; !rest.empty();)
                rest.remove_prefix(state.read_one(rest));
            *bytes += state.way_to_start();
            bytes->push_back('\0');
        });
    }

private:
    Handle handle_;
    std::u16string waiting_;
};

// ---- Choosing ----

std::string trouble(const RecodedSet &set, int status) {
    const std::string table = "the table of " + set.name + " (charsets/unicode/" + std::to_string(set.cid) + ".uct)";
    switch (status) {
    case UNI_BADTABLE:
        return table + " is damaged";
    case UNI_NOMEMORY:
        return "there is no memory for " + table;
    default:
        return table + " cannot be read";
    }
}

template <class Kind, class Base, class... Arguments>
int make(std::unique_ptr<Base> *result, Arguments... arguments) {
    auto made = std::make_unique<Kind>();
    const int status = made->open(arguments...);
    *result = std::move(made);
    return status;
}

} // namespace

std::string table_trouble(const RecodedSet &set) {
    if (set.cid == UNICONV_NONE)
        return "the Unicode library does not know " + set.name;
    Handle handle;
    const int status = handle.open(set.cid);
    return status == UNI_OK ? "" : trouble(set, status);
}

Recoder::~Recoder() = default;

Maybe<std::shared_ptr<Recoder>> Recoder::open(const RecodedSet &from, const RecodedSet &to) {
    using Answer = Maybe<std::shared_ptr<Recoder>>;
    for (const RecodedSet *set : {&from, &to})
        if (set->cid == UNICONV_NONE)
            return Answer::failure(table_trouble(*set));
    std::shared_ptr<Recoder> recoder(new Recoder);
    recoder->is_copy_ = from.name == to.name;
    int status = UNI_OK;
    if (from.cid == UNICONV_UTF16)
        recoder->decoder_ = std::make_unique<Utf16Decoder>();
    else if (from.cid == UNICONV_RCSU)
        status = make<ScsuDecoder>(&recoder->decoder_);
    else
        status = make<SetDecoder>(&recoder->decoder_, from.cid);
    if (status != UNI_OK)
        return Answer::failure(trouble(from, status), FAILED);
    if (to.cid == UNICONV_UTF16)
        recoder->encoder_ = std::make_unique<Utf16Encoder>();
    else if (to.cid == UNICONV_RCSU)
        status = make<ScsuEncoder>(&recoder->encoder_);
    else
        status = make<SetEncoder>(&recoder->encoder_, to.cid, from.cid);
    if (status != UNI_OK)
        return Answer::failure(trouble(to, status), FAILED);
    return recoder;
}

void Recoder::recode(std::string_view bytes, bool is_end, std::string *result) {
    if (is_copy_) {
        result->append(bytes);
        return;
    }
    units_.clear();
    decoder_->decode(bytes, is_end, &units_, &losses_);
    encoder_->encode(units_, is_end, result, &losses_);
    if (is_end && losses_.missing != 0 && !encoder_->has(REPLACEMENT))
        losses_.missing -= losses_.malformed; // what was no character lacks no partner
}

} // namespace client
