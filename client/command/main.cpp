// The command dlxcomn: values of every datatype through the conversion matrix.
#include "command.h"

int main(int argc, char **argv) { return client::run_command(client::Arguments(argv + (argc > 0), argv + argc)); }
