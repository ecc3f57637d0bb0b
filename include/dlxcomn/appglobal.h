/*
 * appglobal.h - the one record that all contexts of a process and all libraries of the stack share.
 *
 * Its first user starts signal routing, its last one stops it. But for the count, the mutex and the thread
 * table, every member belongs to the libraries above and is only carried here. The first alloc must not
 * race with another.
 */
#ifndef DLXCOMN_APPGLOBAL_H
#define DLXCOMN_APPGLOBAL_H

#include <dlxcomn/context.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct _cscfgchain CS_CFGCHAIN;

typedef CS_RETCODE (*CS_DBSLEEP_FUNC)(CS_VOID *event);
typedef CS_RETCODE (*CS_DBWAKE_FUNC)(CS_VOID *event);
typedef CS_RETCODE (*CS_ACCESS_FUNC)(CS_VOID *argument);
typedef CS_RETCODE (*CS_SRV_FUNC)(CS_VOID *argument);

typedef struct _csqueuehdr {
    CS_VOID *first;
    CS_VOID *last;
} CS_QUEUEHDR;

typedef struct _csdsglobal {
    CS_VOID *dsg_dclctx;
} CsDsGlobal;

typedef struct _csnetglobal {
    CS_VOID *ntg_netengine;
    CS_VOID *ntg_netstate;
    CS_DBSLEEP_FUNC ntg_dbsleep;
    CS_DBWAKE_FUNC ntg_dbwake;
} CsNetGlobal;

typedef struct _csasyncglobal {
    CS_QUEUEHDR amg_actxs;
} CsAsyncGlobal;

typedef struct _csappctxglobal {
    CS_INT acmg_ctxcount;
    CS_VOID *acmg_curctx;
    CS_VOID *acmg_netctx;
} CsAppCtxGlobal;

/* Server-side functions of the bulk-copy layer, carried for it. */
typedef struct _blksrvlibtable {
    CS_SRV_FUNC srv_thread_props;
    CS_SRV_FUNC srv_alloc;
    CS_SRV_FUNC srv_bzero;
    CS_SRV_FUNC srv_descfmt;
    CS_SRV_FUNC srv_bind;
    CS_SRV_FUNC srv_xferdata;
    CS_SRV_FUNC srv_senddone;
    CS_SRV_FUNC srv_free;
    CS_SRV_FUNC srv__charcvt_multiplier;
    CS_SRV_FUNC srv__charset_trans;
    CS_SRV_FUNC srv__chksrvproc;
    CS_SRV_FUNC srv__cscvtchk;
    CS_SRV_FUNC srv__enddata_test;
    CS_SRV_FUNC srv__get_xdrrecv;
    CS_SRV_FUNC srv__getchar;
    CS_SRV_FUNC srv__getint;
    CS_SRV_FUNC srv__getserver;
    CS_SRV_FUNC srv__seterr;
    CS_SRV_FUNC srv__st_verify;
    CS_SRV_FUNC srv_text_info;
} BlkSrvLibTable;

#define CS_APPGLOBAL_SUBSCRIBERS 4

typedef struct _csappglobal {
    CS_INT ag_subscribers[CS_APPGLOBAL_SUBSCRIBERS]; /* counts of subscribing libraries; all 0 at the end */
    CS_INT ag_state;
    CS_INT ag_accesscnt; /* references */
    CsDsGlobal ag_dsglobal;
    CsNetGlobal ag_netglobal;
    CsAsyncGlobal ag_asyncglobal;
    CS_ACCESS_FUNC ag_accessfunc;
    CS_VOID *ag_platformptr;
    CS_THREAD *ag_ctxthread; /* thread table of the first user */
    CS_THRDRES *ag_mtx;      /* guards ag_accesscnt and ag_cfgchain */
    CsAppCtxGlobal ag_appctxglobal;
    CS_CFGCHAIN *ag_cfgchain;
    BlkSrvLibTable *ag_blk_osfncs;
    CS_CONTEXT *ag_ctxglobal;
} CsAppGlobal;

extern DLXCOMN_API CsAppGlobal Application_global;

#define CS_APPGLOBAL_STATIC 1 /* flag: Application_global itself, else a record of one's own */

/*
 * Take a reference. CS_SUCCEED, CS_FAIL when the mutex fails, CS_MEM_ERROR. Each later entry into a live
 * record empties ag_cfgchain: the list holds only what was added since the last one.
 */
DLXCOMN_API CS_RETCODE com_appglobal_alloc(CsAppGlobal **global_ptr, CS_THREAD *ctxthread, CS_INT flags);

/* Give it back; the last one wipes the record, and frees one that is not the static one. */
DLXCOMN_API CS_RETCODE com_appglobal_drop(CsAppGlobal *appg, CS_INT flags);

#ifdef __cplusplus
}
#endif
#endif
