// The texts of the status codes.
#include <dlxintl/intl.h>

const char *intl_errstr(int code) {
    switch (code) {
    case INTL_OK:
        return "no error";
    case INTL_ECANTOPEN:
        return "the file cannot be opened";
    case INTL_EREAD:
        return "the file could not be read";
    case INTL_ELINETOOLONG:
        return "a line is longer than 1023 bytes";
    case INTL_EBADSECTION:
        return "a section line is not of the form [name]";
    case INTL_ENOEQUALS:
        return "an entry has no \"=\"";
    case INTL_EUNTERMINATED:
        return "a quoted value does not end with its quote";
    case INTL_EBADESCAPE:
        return "a backslash is not followed by a character or by x and two hexadecimal digits";
    case INTL_ENOMEMORY:
        return "there is not enough memory";
    case INTL_ENOHOME:
        return "the home directory is not known: DALVEX is not set and there is no account \"dalvex\"";
    case INTL_EBADTEMPLATE:
        return "a message template cannot be built from its parameters";
    case INTL_EBADDATE:
        return "date data is not usable";
    default:
        return "unknown localization error";
    }
}
