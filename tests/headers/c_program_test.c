/* A plain C program: one conversion, one sum of numerics and one of money, through the public headers. */
#include <dlxcomn/dlxcomn.h>

#include <stdio.h>
#include <string.h>

static int failures = 0;

static void expect(int holds, const char *what) {
    if (!holds) {
        fprintf(stderr, "not so: %s\n", what);
        ++failures;
    }
}

static void convert_int(CS_CONTEXT *context) {
    CS_DATAFMT srcfmt, destfmt;
    CS_INT source = -42;
    CS_BIGINT big = 0;
    char text[16];
    CS_INT length = 0;

    memset(&srcfmt, 0, sizeof srcfmt);
    memset(&destfmt, 0, sizeof destfmt);
    srcfmt.datatype = CS_INT_TYPE;
    destfmt.datatype = CS_BIGINT_TYPE;
    CS_CONV_FUNC convert = com_conv_func(context, CS_INT_TYPE, CS_BIGINT_TYPE);
    expect(convert == comn_i4toi8, "the matrix finds comn_i4toi8");
    expect(convert(context, &srcfmt, &source, &destfmt, &big, &length) == CS_SUCCEED, "int to bigint succeeds");
    expect(big == -42 && length == 8, "int to bigint keeps the value");

    destfmt.datatype = CS_CHAR_TYPE;
    destfmt.format = CS_FORMAT_NULLTERM;
    destfmt.maxlength = sizeof text;
    expect(comn_i4tochar(context, &srcfmt, &source, &destfmt, text, &length) == CS_SUCCEED, "int to text succeeds");
    expect(length == 4 && strcmp(text, "-42") == 0, "int to text prints the value and a counted NUL");
}

static CS_NUMERIC numeric_of(CS_CONTEXT *context, CS_INT value) {
    CS_DATAFMT srcfmt, destfmt;
    CS_NUMERIC result;
    CS_INT length = 0;

    memset(&srcfmt, 0, sizeof srcfmt);
    memset(&destfmt, 0, sizeof destfmt);
    memset(&result, 0, sizeof result);
    srcfmt.datatype = CS_INT_TYPE;
    destfmt.datatype = CS_NUMERIC_TYPE;
    destfmt.precision = 12;
    destfmt.scale = 2;
    expect(comn_i4tonum(context, &srcfmt, &value, &destfmt, &result, &length) == CS_SUCCEED, "int to numeric");
    return result;
}

static void add_numerics(CS_CONTEXT *context) {
    CS_NUMERIC left = numeric_of(context, 1000000), right = numeric_of(context, -1), sum;
    CS_NUMERIC expected = numeric_of(context, 999999);
    expect(comn_numadd(&left, &right, &sum) == CS_SUCCEED, "numerics add up");
    expect(comn_numcmp(&sum, &expected) == 0, "1000000 - 1 is 999999");
}

static void add_money(void) {
    CS_MONEY4 left = {25000}, right = {5000}, sum = {0}; /* 2.50 and 0.50 */
    expect(comn_mny4add(&left, &right, &sum) == CS_SUCCEED, "money adds up");
    expect(sum.mny4 == 30000, "2.50 + 0.50 is 3.00");
}

int main(void) {
    CS_CONTEXT context;
    memset(&context, 0, sizeof context);
    expect(com_conv_init(&context) == CS_SUCCEED, "the context takes its matrix");
    expect(com_null_init(&context) == CS_SUCCEED, "the context takes its null values");
    convert_int(&context);
    add_numerics(&context);
    add_money();
    expect(com_null_free(&context) == CS_SUCCEED, "the null values are released");
    expect(com_conv_free(&context) == CS_SUCCEED, "the matrix is released");
    return failures == 0 ? 0 : 1;
}
