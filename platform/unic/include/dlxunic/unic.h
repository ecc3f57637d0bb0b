/*
 * unic.h - libdlxunic64: text between character sets and UTF-16.
 *
 * A set is known by its number (UNICONV_CID). Its table is a file of the directory charsets/unicode of the home,
 * <number>.uct, which is mapped read-only the first time that a handle asks for it and shared by all handles of the
 * process from then on; ASCII (0), UTF-16 (-1), UTF-8 (-4) and the compression scheme (-5) need no file. A handle holds
 * a reference and its substitute characters; one thread at a time uses it. docs/data-files.md tells the file's format.
 *
 * 16-bit text is in machine order and NUL-terminated, as is every text here: its length is not told. Counts that come
 * back include the terminator of bytes, and leave out that of 16-bit units. Bytes of UTF-16 (in machine order, at any
 * address) and of the compression scheme hold the byte 0 inside, and end where two stand in the place of a unit: a source
 * in these sets has three zero bytes behind it, whatever its length. Results of theirs have one, and a second where there
 * is room for it; only the first is counted.
 */
#ifndef DLXUNIC_UNIC_H
#define DLXUNIC_UNIC_H

#include <stdint.h>

#define DLXUNIC_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

typedef int32_t UNICONV_CID;
typedef uint16_t UNICHAR;
typedef void *CVTH;

/* What a conversion answers. */
enum {
    UNI_OK = 1,
    UNI_SUBSTITUTED = -1328, /* done; a character had no partner and was replaced */
    UNI_NOROOM = -1327,      /* the buffer holds what fitted, cut at a whole character */
    UNI_NOROOM_SUBSTITUTED = -1342, /* both */
    UNI_TRUNCATED = -1333,   /* the source ends inside a character; what stands in front of it is converted */
    UNI_NOSET = -1300,       /* no such set, or its table cannot be read */
    UNI_NOMEMORY = -1301,
    UNI_BADTABLE = -1302,    /* the table's file is not right */
    UNI_BADTEXT = -1303,     /* the source is no text, the code no substitute */
    UNI_INDIRECT = -1304     /* the set has no way to UTF-8 and back but through 16-bit text */
};
/* What uniutf8_unistrToUTF8 answers where the buffer is too small. */
#define UNI_UTF8_NOROOM (-2)

/* Settings of uniconv_HandleGetU. */
typedef struct i18nuni_request {
    int cacheInMemory;  /* 1: keep a table for the life of the process, the only way there is */
    int cacheIndexOnly; /* 0 */
    int useCurrentDir;  /* 0: the directory of the home in force; 2: the path that is given */
} I18NUNI_REQUEST;
DLXUNIC_API void i18nuni_RequestSetDefaults(I18NUNI_REQUEST *request);

/*
 * *handle = a handle of a set. UNI_OK, or a failure with *handle null; a failure is not remembered. The second form takes
 * the directory of the tables as a path, if it is the one that first opens the set; selector is 0. A path with a U+FFFD
 * has lost characters on its way here and stands for the directory of the home in force.
 */
DLXUNIC_API int uniconv_HandleGet(UNICONV_CID cid, CVTH *handle);
DLXUNIC_API int uniconv_HandleGetU(UNICONV_CID cid, const I18NUNI_REQUEST *request, const UNICHAR *path, int selector,
                                   CVTH *handle);
/* Null is accepted. */
DLXUNIC_API void uniconv_HandleFree(CVTH handle);

/*
 * What uniconv_unistrToS writes for a character without a partner: the first code towards sets of single bytes, the
 * second, of two bytes, towards sets with wider characters where the character is not an ASCII or half-width one.
 * Half-width are the characters of one column: the alphabets, their punctuation, and half-width katakana. The codes are
 * those of the set. The first is "?" and the second "??" from the start. UNI_OK, or UNI_BADTEXT for a code out of range.
 */
DLXUNIC_API int uniconv_SetSubstituteChar(CVTH handle, int code);
DLXUNIC_API int uniconv_SetDBCSSubstituteChar(CVTH handle, int code);
/*
 * Tells which set the text came from. From then on the second code stands for a character that took two bytes or more in
 * that set, and the first for one that took one byte or stands for a fault of the text; columns play no part any more.
 * In UTF-8 every character but ASCII is wide, a fault included, in UTF-16 every one, in the compression scheme every one
 * from U+0100. Towards sets of single bytes it is always the first, also where they write some characters as two codes.
 * The handle may be told another set later. UNI_OK, or the failure of the set, which leaves the handle as it was.
 */
DLXUNIC_API int uniconv_SetSource(CVTH handle, UNICONV_CID source);

/*
 * Text of the handle's set to 16-bit text in a buffer of `size` units, and back to bytes in a buffer of `size` bytes.
 * Both terminate what they write, for which the size must be at least 1: below, they answer UNI_NOROOM and write nothing.
 * Bytes that are no character of the set become U+FFFD, with UNI_SUBSTITUTED. Where the bytes do not fit, the buffer
 * holds zeros behind the characters that do, so that all of it may be kept.
 */
DLXUNIC_API int uniconv_unistrFromS(CVTH handle, UNICHAR *buffer, int size, const char *source, int *count);
DLXUNIC_API int uniconv_unistrToS(CVTH handle, char *buffer, int size, const UNICHAR *source, int *count);

/*
 * 16-bit text to UTF-8 and back. They answer what they wrote without the terminator, in *count too; UNI_UTF8_NOROOM where
 * text and terminator do not fit, with the whole characters that do, terminated, and with zeros behind them as above;
 * another negative number for a source that is no text, behind what stands in front of the fault: UNI_TRUNCATED where it
 * ends inside a character, UNI_BADTEXT otherwise.
 */
DLXUNIC_API int uniutf8_unistrToUTF8(char *buffer, int size, const UNICHAR *source, int *count);
DLXUNIC_API int uniutf8_unistrFromUTF8(UNICHAR *buffer, int size, const char *source, int *count);

/*
 * Text of a set to UTF-8 and back in one pass, without a handle. The source ends behind `length` bytes or in front of its
 * first NUL, whichever comes first; it and the buffer do not overlap. *count bytes are written, and no terminator.
 * UNI_OK or UNI_SUBSTITUTED if the whole text came over: byte for byte what the functions above make of it by handles
 * with "?" and "??" as substitutes, the one towards the set told of UTF-8 as the source; malformed UTF-8 is no failure.
 * Any other answer says only that nothing was written behind the buffer, of which the content is then lost: the text or
 * the room ended too early, the set is not there, or it has no such way (UNI_INDIRECT: UTF-16, UTF-8 itself, the
 * compression scheme, sets with states). Handles then tell what is the case.
 */
DLXUNIC_API int uniconv_StrToUTF8(UNICONV_CID cid, const char *source, int length, char *buffer, int size, int *count);
DLXUNIC_API int uniconv_StrFromUTF8(UNICONV_CID cid, const char *source, int length, char *buffer, int size,
                                    int *count);

/* *factor = the most bytes that a 16-bit unit takes in the handle's set. UNI_OK. */
DLXUNIC_API int uniconv_GetExpansionFactor(CVTH handle, int *factor);
/*
 * *factor = the most bytes of one set that a byte of another can become, changes of state aside that are made once in a
 * text. UNI_OK, or a failure for an unknown set.
 */
DLXUNIC_API int uniconv_GetExpansion(UNICONV_CID source, UNICONV_CID destination, int *factor);

#ifdef __cplusplus
}
#endif
#endif
