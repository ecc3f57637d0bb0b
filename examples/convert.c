/* Converts integers through the matrix: saturated where they do not fit, and as text in a padded field. */
#include <dlxcomn/dlxcomn.h>

#include <stdio.h>

/* One conversion of a CS_INT, whatever the destination: the matrix knows the function. */
static CS_RETCODE convert(CS_CONTEXT *context, CS_INT value, CS_DATAFMT *destfmt, void *dest, CS_INT *destlen) {
    CS_DATAFMT srcfmt = {.datatype = CS_INT_TYPE, .maxlength = sizeof value};
    CS_CONV_FUNC function = com_conv_func(context, srcfmt.datatype, destfmt->datatype);
    return function != NULL ? function(context, &srcfmt, &value, destfmt, dest, destlen) : CS_FAIL;
}

int main(void) {
    CS_CONTEXT context = {0}; /* the library makes no context: its owner does */
    if (com_conv_init(&context) != CS_SUCCEED || com_null_init(&context) != CS_SUCCEED)
        return 1;

    const CS_INT values[] = {42, 300, -1};
    for (size_t i = 0; i < sizeof values / sizeof values[0]; ++i) {
        CS_DATAFMT as_byte = {.datatype = CS_TINYINT_TYPE, .maxlength = sizeof(CS_TINYINT)};
        CS_TINYINT byte = 0;
        CS_INT bytelen = 0;
        CS_RETCODE status = convert(&context, values[i], &as_byte, &byte, &bytelen);

        CS_DATAFMT as_text = {.datatype = CS_CHAR_TYPE, .maxlength = 6, .format = CS_FORMAT_BLANKPAD};
        char text[6];
        CS_INT textlen = 0;
        convert(&context, values[i], &as_text, text, &textlen);

        printf("%3d is %3d as a tinyint (%s), and [%.*s] as text\n", (int)values[i], byte,
               status == CS_SUCCEED ? "fits" : "does not fit", (int)textlen, text);
    }

    com_null_free(&context);
    com_conv_free(&context);
    return 0;
}
