/* Exact decimal arithmetic: factorials to the last digit, and quotients. */
#include <dlxcomn/dlxcomn.h>

#include <stdio.h>

static CS_CONTEXT context;

static CS_NUMERIC numeric_of(CS_INT value) {
    CS_DATAFMT srcfmt = {.datatype = CS_INT_TYPE, .maxlength = sizeof value};
    CS_DATAFMT destfmt = {.datatype = CS_NUMERIC_TYPE, .precision = 10, .maxlength = sizeof(CS_NUMERIC)};
    CS_NUMERIC result = {0};
    CS_INT length = 0;
    comn_i4tonum(&context, &srcfmt, &value, &destfmt, &result, &length);
    return result;
}

static void print(const char *what, CS_RETCODE status, CS_NUMERIC *value) {
    CS_DATAFMT srcfmt = {.datatype = CS_NUMERIC_TYPE, .maxlength = sizeof *value};
    CS_DATAFMT destfmt = {.datatype = CS_CHAR_TYPE, .maxlength = 80, .format = CS_FORMAT_NULLTERM};
    char text[80] = "";
    CS_INT length = 0;
    if (status == CS_SUCCEED)
        status = comn_numtochar(&context, &srcfmt, value, &destfmt, text, &length);
    printf("%-6s %s\n", what, status == CS_SUCCEED ? text : "does not fit");
}

int main(void) {
    CS_NUMERIC product = numeric_of(1);
    for (CS_INT n = 2; n <= 58; ++n) {
        CS_NUMERIC factor = numeric_of(n);
        CS_RETCODE status = comn_nummul(&product, &factor, &product); /* the result may be an operand */
        if (n == 25 || n >= 57)
            print(n == 25 ? "25!" : n == 57 ? "57!" : "58!", status, &product);
    }

    CS_NUMERIC one = numeric_of(1);
    CS_NUMERIC seven = numeric_of(7);
    CS_NUMERIC zero = numeric_of(0);
    CS_NUMERIC quotient;
    print("1 / 7", comn_numdivide(&one, &seven, &quotient), &quotient);
    printf("1 / 0  %s\n", comn_numdivide(&one, &zero, &quotient) == CS_EDIVZERO ? "is a status" : "has a value");
    return 0;
}
