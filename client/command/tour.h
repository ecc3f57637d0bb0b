// What the chapters of the tour share.
#ifndef DLX_CLIENT_COMMAND_TOUR_H
#define DLX_CLIENT_COMMAND_TOUR_H

#include <dlxcomn/types.h>

#include <string_view>

namespace client {

// A line: what was called, what it answered, and what there is to say of that.
void print_step(std::string_view what, std::string_view result, CS_RETCODE status, std::string_view remark);

// The chapters on the languages and character sets of the data home. Answers what to exit with.
int tour_of_home();

} // namespace client

#endif
