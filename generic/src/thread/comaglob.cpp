// The one record that all contexts of a process share, and its reference count.
#include "diag/check.h"

#include <dlxcomn/appglobal.h>
#include <dlxcomn/signals.h>

#include <cstdlib>

CsAppGlobal Application_global = {};

namespace {

// The count is changed under the mutex, and read without it where a user enters: only the first and the last user
// see 0 there, and those must not race with anybody.
CS_INT users_of(const CsAppGlobal &global) { return __atomic_load_n(&global.ag_accesscnt, __ATOMIC_RELAXED); }
void set_users(CsAppGlobal &global, CS_INT users) { __atomic_store_n(&global.ag_accesscnt, users, __ATOMIC_RELAXED); }

// Accounts for the first user. A failure leaves nothing behind.
CS_RETCODE go_live(CsAppGlobal &global, CS_THREAD *ctxthread, bool is_static) {
    if (is_static) {
        const CS_RETCODE status = comn_signal_setup();
        if (status != CS_SUCCEED)
            return COM_TRACE(status);
    }
    if (comn_create_mutex(&global.ag_mtx) != CS_SUCCEED) {
        if (is_static)
            comn_signal_exit();
        return COM_TRACE(CS_FAIL);
    }
    global.ag_ctxthread = ctxthread;
    set_users(global, 1);
    return CS_SUCCEED;
}

CS_RETCODE add_user(CsAppGlobal &global) {
    if (comn_take_mutex(global.ag_mtx) != CS_SUCCEED)
        return COM_TRACE(CS_FAIL);
    set_users(global, users_of(global) + 1);
    // The list of configurations starts anew with each user: it holds what was added since the last entry.
    global.ag_cfgchain = nullptr;
    comn_release_mutex(global.ag_mtx);
    return CS_SUCCEED;
}

bool has_subscribers(const CsAppGlobal &global) {
    for (const CS_INT count : global.ag_subscribers)
        if (count != 0)
            return true;
    return false;
}

} // namespace

CS_RETCODE com_appglobal_alloc(CsAppGlobal **global_ptr, CS_THREAD *ctxthread, CS_INT flags) {
    COM_REQUIRE_PTR(global_ptr, CS_FAIL);
    const bool is_static = (flags & CS_APPGLOBAL_STATIC) != 0;
    CsAppGlobal *global = &Application_global;
    if (!is_static) {
        global = static_cast<CsAppGlobal *>(std::calloc(1, sizeof(CsAppGlobal)));
        if (global == nullptr)
            return COM_TRACE(CS_MEM_ERROR);
    }
    const CS_INT present = users_of(*global);
    COM_REQUIRE(present >= 0, CS_FAIL);

    const CS_RETCODE status = present == 0 ? go_live(*global, ctxthread, is_static) : add_user(*global);
    if (status != CS_SUCCEED) {
        if (!is_static)
            std::free(global);
        return COM_TRACE(status);
    }
    *global_ptr = global;
    return CS_SUCCEED;
}

CS_RETCODE com_appglobal_drop(CsAppGlobal *appg, CS_INT flags) {
    COM_REQUIRE_PTR(appg, CS_FAIL);
    const bool is_static = (flags & CS_APPGLOBAL_STATIC) != 0;
    // The other way round it would go to the allocator.
    COM_REQUIRE(is_static == (appg == &Application_global), CS_FAIL);

    if (comn_take_mutex(appg->ag_mtx) != CS_SUCCEED)
        return COM_TRACE(CS_FAIL);
    const CS_INT users = users_of(*appg) - 1;
    if (users >= 0)
        set_users(*appg, users);
    comn_release_mutex(appg->ag_mtx);
    COM_REQUIRE(users >= 0, CS_FAIL);
    if (users != 0)
        return CS_SUCCEED;

    COM_REQUIRE(!has_subscribers(*appg), CS_FAIL);
    COM_REQUIRE(comn_delete_mutex(appg->ag_mtx) == CS_SUCCEED, CS_FAIL);
    *appg = {};
    if (!is_static) {
        std::free(appg);
        return CS_SUCCEED;
    }
    return comn_signal_exit();
}
