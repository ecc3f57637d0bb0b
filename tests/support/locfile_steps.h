// The reader of localization files and the naive one, a call at a time.
#ifndef TESTS_SUPPORT_LOCFILE_STEPS_H
#define TESTS_SUPPORT_LOCFILE_STEPS_H

#include "support/naive_locfile.h"

#include <dlxintl/intl.h>

#include <string>

namespace support {

enum class Step { section, entry, value };

// The reader's answer; a name in it may hold anything but a NUL, which ends it for C callers.
inline NaiveLocfile::Answer told(INTL_LOCFILE &file, Step step) {
    int status = 12345;
    const char *text = step == Step::section ? intl_nextsection(&file, &status)
                       : step == Step::entry ? intl_nextentry(&file, &status)
                                             : intl_nextvalue(&file, &status);
    if (text == nullptr)
        return {std::nullopt, status};
    return {step == Step::value ? std::string(text, static_cast<std::size_t>(intl_valuelen(&file))) : text, status};
}

inline NaiveLocfile::Answer expected(NaiveLocfile &file, Step step) {
    NaiveLocfile::Answer answer = step == Step::section ? file.next_section()
                                  : step == Step::entry ? file.next_entry()
                                                        : file.next_value();
    if (answer.text && step != Step::value)
        answer.text = answer.text->c_str();
    return answer;
}

// Makes the call on both. Empty where they agree, or what differs; `ended` learns whether nothing was delivered.
inline std::string difference(INTL_LOCFILE &file, NaiveLocfile &naive, Step step, bool &ended) {
    const NaiveLocfile::Answer got = told(file, step);
    const NaiveLocfile::Answer wanted = expected(naive, step);
    ended = !wanted.text;
    const auto shown = [](const NaiveLocfile::Answer &answer) {
        return answer.text ? "\"" + *answer.text + "\"" : "null, status " + std::to_string(answer.status);
    };
    if (got != wanted)
        return "got " + shown(got) + ", not " + shown(wanted);
    if (file.linenum != naive.linenum())
        return "line " + std::to_string(file.linenum) + ", not " + std::to_string(naive.linenum());
    if (ended)
        return "";
    const std::string field = step == Step::section ? file.section : step == Step::entry ? file.entry : file.value;
    const std::string held = std::string(wanted.text->c_str()).substr(0, step == Step::value ? 1024 : 63);
    if (field != held)
        return "field \"" + field + "\", not \"" + held + "\"";
    if (step == Step::value && (file.isquoted != 0) != naive.is_quoted())
        return "quotes";
    return "";
}

// Reads all of the file with both.
inline std::string difference_in_all(INTL_LOCFILE &file, NaiveLocfile &naive) {
    bool section_ended = false, entry_ended = false, value_ended = false;
    std::string found = difference(file, naive, Step::section, section_ended);
    while (found.empty() && !section_ended) {
        found = difference(file, naive, Step::entry, entry_ended);
        while (found.empty() && !entry_ended) {
            found = difference(file, naive, Step::value, value_ended);
            while (found.empty() && !value_ended)
                found = difference(file, naive, Step::value, value_ended);
            if (found.empty())
                found = difference(file, naive, Step::entry, entry_ended);
        }
        if (found.empty())
            found = difference(file, naive, Step::section, section_ended);
    }
    // An end and a failure stay what they are.
    for (const Step step : {Step::value, Step::entry, Step::section})
        if (found.empty())
            found = difference(file, naive, step, section_ended);
    return found;
}

} // namespace support

#endif
