/* What a program does that finds the library installed. */
#include <dlxcomn/dlxcomn.h>

#include <stdio.h>
#include <string.h>

int main(void) {
    CS_CONTEXT context;
    CS_DATAFMT srcfmt, destfmt;
    CS_INT source = 300, length = 0;
    CS_TINYINT saturated = 0;
    CS_RETCODE status;

    memset(&context, 0, sizeof context);
    memset(&srcfmt, 0, sizeof srcfmt);
    memset(&destfmt, 0, sizeof destfmt);
    srcfmt.datatype = CS_INT_TYPE;
    destfmt.datatype = CS_TINYINT_TYPE;
    if (com_conv_init(&context) != CS_SUCCEED)
        return 1;
    status = com_conv_func(&context, CS_INT_TYPE, CS_TINYINT_TYPE)(&context, &srcfmt, &source, &destfmt, &saturated,
                                                                   &length);
    com_conv_free(&context);
    printf("%d to tinyint: %u, status %d, %d byte\n", source, saturated, status, length);
    return status == CS_EOVERFLOW && saturated == 255 && length == 1 ? 0 : 1;
}
