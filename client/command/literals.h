// Values of every datatype from what a person writes, and back.
//
// Where the matrix converts text to a datatype, that conversion reads the literal. Every other datatype has a
// literal form of its own, which is read exactly: a value is what was written, or there is none.
#ifndef DLX_CLIENT_COMMAND_LITERALS_H
#define DLX_CLIENT_COMMAND_LITERALS_H

#include "names.h"

namespace client {

// A source value with its descriptor, as a conversion takes it.
struct Value {
    CS_DATAFMT format = {};
    std::vector<CS_BYTE> bytes;
};

// The value that `literal` stands for; the failure tells the form that the datatype takes.
Maybe<Value> read_literal(CS_CONTEXT *context, const Datatype &type, std::string_view literal);

// The same without the matrix.
Maybe<Value> read_own_form(const Datatype &type, std::string_view literal);

// The value in its datatype's literal form; text in quotes. "-" for bytes that are no value.
std::string print_own_form(const Datatype &type, const std::vector<CS_BYTE> &bytes);

// What a person would take a literal of no stated datatype for.
struct Guess {
    CS_INT id;
    std::string_view because; // "it is a whole number", to be read behind the datatype
};
Guess guess_datatype(std::string_view literal);

// "a whole number from 0 to 255"
std::string literal_form(const Datatype &type);

} // namespace client

#endif
