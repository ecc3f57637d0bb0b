/*
 * intl.h - libdlxintl_r64: what the connectivity stack's libraries share below the common library.
 *
 * Bounded strings. No function here keeps state; all may be called from any thread.
 */
#ifndef DLXINTL_INTL_H
#define DLXINTL_INTL_H

#include <stddef.h>

#define DLXINTL_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Copy src to the size bytes of dest, or append it to the text there, cutting what does not fit. The result
 * is NUL-terminated when size is not 0 (for the append: when dest held a text shorter than size). They
 * answer the length of the text that was tried, without its NUL: a value of size or more says that it was
 * cut.
 */
DLXINTL_API size_t intl_strlcpy(char *dest, const char *src, size_t size);
DLXINTL_API size_t intl_strlcat(char *dest, const char *src, size_t size);

#ifdef __cplusplus
}
#endif
#endif
