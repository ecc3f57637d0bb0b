// The allocators that the stack's libraries hand to one another.
#include <dlxintl/intl.h>

#include <cstdlib>

void *comn_malloc(size_t size) { return std::malloc(size); }
void *comn_calloc(size_t count, size_t size) { return std::calloc(count, size); }
void *comn_realloc(void *memory, size_t size) { return std::realloc(memory, size); }
void comn_free(void *memory) { std::free(memory); }
