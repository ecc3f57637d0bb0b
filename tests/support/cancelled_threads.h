// Makes cancelled threads bearable to the address sanitizer.
//
// A cancellation drops the frames of a thread without a word to the sanitizer, which goes on to take their
// surroundings for out of bounds. Where the thread then gives up its alternate signal stack, in the sanitizer's
// own hands, that is reported. So an executable that includes this header (in one source only) has no such stacks;
// all that is lost is the report of a stack that ran full.
#ifndef TESTS_SUPPORT_CANCELLED_THREADS_H
#define TESTS_SUPPORT_CANCELLED_THREADS_H

extern "C" const char *__asan_default_options() { return "use_sigaltstack=0"; }

#endif
