// State tables of the layers above: lists of events, or of event and next state, each ended by a byte of 255.
// An event is compared by its low byte.
#include "diag/check.h"

#include <dlxcomn/services.h>

namespace {

const CS_EVENT_NS *find_transition(const CS_EVENT_NS *list, CS_INT event) {
    for (; list->ens_event != CS_ST_END; ++list)
        if (list->ens_event == static_cast<CS_BYTE>(event))
            return list;
    return nullptr;
}

} // namespace

CS_BOOL com_st_ver(CS_ST_TABLE *table, CS_INT state, CS_INT event) {
    COM_REQUIRE_PTR(table, CS_FALSE);
    for (const CS_EVENT *list = table->st_ver[state]; *list != CS_ST_END; ++list)
        if (*list == static_cast<CS_BYTE>(event))
            return CS_TRUE;
    return CS_FALSE;
}

CS_BOOL com_st_depend(CS_ST_TABLE *table, CS_INT event, CS_INT *depend_event) {
    COM_REQUIRE_PTR(table, CS_FALSE);
    COM_REQUIRE_PTR(depend_event, CS_FALSE);
    if (table->st_depend == nullptr)
        return CS_FALSE;
    for (const CS_DEPEND *pair = table->st_depend; pair->dep_event != CS_ST_END; ++pair) {
        if (pair->dep_event == static_cast<CS_BYTE>(event)) {
            *depend_event = pair->dep_depevent;
            return CS_TRUE;
        }
    }
    return CS_FALSE;
}

CS_INT com_st_trans(CS_ST_TABLE *table, CS_INT state, CS_INT event) {
    COM_REQUIRE_PTR(table, CS_ST_INVALID);
    const CS_EVENT_NS *transition = find_transition(table->st_trans[state], event);
    if (transition == nullptr)
        return CS_ST_INVALID;
    return transition->ens_nstate == CS_ST_STAY ? state : transition->ens_nstate;
}

// Here the mark that means stay goes out as it stands, and is the answer for an unknown event too.
CS_INT com_ns_trans(CS_NS_TABLE *table, CS_INT state, CS_INT event) {
    COM_REQUIRE_PTR(table, CS_ST_STAY);
    const CS_EVENT_NS *transition = find_transition(table->nstable[state], event);
    return transition != nullptr ? transition->ens_nstate : CS_ST_STAY;
}
