// What a character is: the entry of a type page, its sound, and its ASCII form.
#ifndef HOME_GENERATOR_CLASSES_H
#define HOME_GENERATOR_CLASSES_H

#include <dlxcomn/charset.h>

namespace home {

// The bits of CHAR_MAP.char_type, by the wide-character classes of the C library.
//
// Letters without case count as lower case: the library knows a letter by one of the two bits. Full-width forms of
// ASCII have the classes of the ASCII characters.
CS_BYTE type_bits(char32_t character);

// The bits of CHAR_MAP.char_lex. Beyond ASCII every character but a currency sign may stand in an identifier.
CS_BYTE lexical_bits(char32_t character);

// A digit of the soundex code; 0 for what is no letter. Letters beyond ASCII sound like vowels.
CS_BYTE sound(char32_t character);

char32_t upper_case(char32_t character);
char32_t lower_case(char32_t character);

// The ASCII character that a character is or is a wide form of, letters in lower case as texts are compared in; 0 where
// there is none.
CS_BYTE ascii_form(char32_t character);

} // namespace home

#endif
