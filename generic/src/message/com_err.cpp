// The cache of message texts.

#include "diag/check.h"

#include <dlxcomn/message.h>

#include <cstdlib>

namespace dlx {
namespace {

void leave_history(CS_MESSAGE &message, const CsErrorCache *error) {
    CsErrorCache **link = &message.locerrhist;
    while (*link != nullptr && *link != error)
        link = &(*link)->histnext;
    if (*link == nullptr)
        return;
    *link = error->histnext;
    --message.locerrcnt;
}

void drop_section(CS_MESSAGE &message, CsErrSecCache *section) {
    for (CsErrorCache *error = section->errcache; error != nullptr;) {
        CsErrorCache *const next = error->next;
        leave_history(message, error);
        std::free(error->errmsg);
        std::free(error);
        error = next;
    }
    std::free(section->errstr);
    std::free(section);
}

} // namespace
} // namespace dlx

using namespace dlx;

void com__errfile_cache_drop(CS_MESSAGE *message, CsErrFileCache *filecache) {
    COM_REQUIRE_PTR(message);
    COM_REQUIRE_PTR(filecache);
    for (CsErrSecCache *section = filecache->errsecs; section != nullptr;) {
        CsErrSecCache *const next = section->next;
        drop_section(*message, section);
        section = next;
    }
    std::free(filecache->errfilename);
    std::free(filecache);
}
