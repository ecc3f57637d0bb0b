/*
 * pool.h - memory pools of three kinds over one store.
 *
 * A pool takes large chunks from a source (or is handed memory) and serves blocks from them: buddy blocks
 * of any size, uniform nodes of one size, or bump allocation that is freed with the pool alone. One
 * MM_HANDLE is a pool; sub-pools hang below it and share its head, its chunks and its one lock.
 *
 * A pool owns all memory carved from it. Blocks are aligned to 8 bytes. Double frees, foreign pointers and
 * the like are broken contracts.
 */
#ifndef DLXCOMN_POOL_H
#define DLXCOMN_POOL_H

#include <dlxcomn/context.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Kinds of pool. */
enum { MM_TYPE_NONE = 2235, MM_BUDDY = 2236, MM_ALLOCONLY = 2237, MM_UNIFORM = 2238 };

#define MM_NOLIMIT (-9999)       /* of mph_maxsize */
#define MM_EBADPROP (-214)       /* a property out of its range, where assertions return */
#define MM_DROP_FORCE 300        /* of comn_mmdrop: the whole tree */
#define MM_OPT_UNUSED (-99999)   /* of comn_mmdrop: an ordinary drop */

/* Actions and properties of comn_mmproperty. */
enum { MM_GET = 33, MM_SET = 34, MM_CLEAR = 35 };
enum {
    MM_PROP_TYPE = 1235,
    MM_PROP_SBREAK = 1236,
    MM_PROP_PARAM = 1237,
    MM_PROP_UNSBREAK = 1238,
    MM_PROP_LOCK = 1239,
    MM_PROP_LOCKARG = 1240,
    MM_PROP_UNLOCK = 1241,
    MM_PROP_CHUNKSIZE = 1242,
    MM_PROP_MAXSIZE = 1243,
    MM_PROP_ADDHEAP = 1244,
    MM_PROP_HANDLESIZE = 1245,
    MM_PROP_SUBPOOL = 1246,
    MM_PROP_BLOCKSIZE = 1247
};

/* Bits of mmh_status and mph_status. */
enum {
    MM_STAT_OWNED = 1,     /* the record is the manager's */
    MM_STAT_CALLER = 2,    /* the record lies in memory of the caller */
    MM_STAT_LIVE = 8,      /* of a handle: the first allocation succeeded, kind and block size are fixed */
    MM_STAT_MUTEX = 16,    /* of a head: the lock was made through the context and goes with the pool */
    MM_STAT_REMOVING = 32  /* of a head: no operation takes the lock any more */
};

/* How a chunk came: MmHeap.status. */
enum { MM_HEAP_SBREAK = 1, MM_HEAP_CALLER = 2 };

typedef struct _mmhandle MM_HANDLE;
typedef struct _mmheap MmHeap;
typedef struct _mmlist MmList;
typedef struct _mmblock MmBlock;
typedef struct _mmdlist MmDList;

typedef CS_VOID *(*MM_SBREAK_FUNC)(MM_HANDLE *mmh, CS_VOID *param, CS_INT size);
typedef CS_RETCODE (*MM_UNSBREAK_FUNC)(MM_HANDLE *mmh, CS_VOID *param, CS_VOID *buffer);
typedef CS_RETCODE (*MM_LOCK_FUNC)(MM_HANDLE *mmh, CS_VOID *lockarg);
typedef CS_RETCODE (*MM_UNLOCK_FUNC)(MM_HANDLE *mmh, CS_VOID *lockarg);

/* A free block of the store, or a uniform node. The pointer given out is the address of link. */
struct _mmlist {
    CS_UINT size; /* payload bytes; the block takes 8 more */
    MmList *link;
};

/* The head of a chunk. */
struct _mmheap {
    CS_INT size;   /* of the whole chunk, bytes */
    CS_INT status; /* MM_HEAP_ */
    MmHeap *next;
    MmList *free;   /* first free block, ascending by address */
    CS_VOID *buffer; /* first word of the first block */
};

/* What precedes a block that a handle has taken from the store. */
struct _mmblock {
    MmBlock *next;
    CS_VOID *block;
};

/*
 * A free buddy block. size is its header word: bit 31 an oversized block (the other bits are then its size),
 * bit 30 free, bits 4 to 20 the address bits 2 to 18 of the start of its region, bits 0 to 3 its order: a block
 * of order n takes 1 << (n + 4) bytes. The pointer given out is 8 bytes behind it.
 */
struct _mmdlist {
    CS_UINT size;
    MmDList *next;
    MmDList *prev;
};

#define MM_BUDDY_ORDERS 17

typedef struct _mm_buddy_pool {
    CS_INT bpmax; /* largest order */
    MmDList *free[MM_BUDDY_ORDERS];
} MmBuddyPool;

typedef struct _mm_uniform_pool {
    CS_INT uniform_size; /* as first requested */
    CS_INT node_size;    /* distance between nodes */
    MmList *free;
} MmUniformPool;

typedef struct _mm_alloconly_pool {
    MmHeap *free;   /* bump areas, newest first */
    CS_INT largest; /* private: no area but the newest has more bytes left than this */
} MmAllocOnlyPool;

#define MM_CHUNK_CHAINS 512

typedef struct _mmpoolhead {
    MM_SBREAK_FUNC mph_sbreak;     /* obtains a chunk, or answers null */
    MM_UNSBREAK_FUNC mph_unsbreak; /* gives it back */
    CS_VOID *mph_param;            /* argument of both */
    MM_LOCK_FUNC mph_lock;
    MM_UNLOCK_FUNC mph_unlock;
    CS_VOID *mph_lockarg;          /* argument of both */
    CS_INT mph_chunksize;          /* smallest chunk asked for, bytes */
    CS_INT mph_totalsize;          /* bytes of all chunks ever added: never falls */
    CS_INT mph_maxsize;            /* bound on mph_totalsize, or MM_NOLIMIT */
    MmHeap *mph_heap;              /* chunks, newest first */
    CS_CONTEXT *mph_ctx;           /* null for a pool of comn_mmmanage */
    CS_INT mph_status;             /* MM_STAT_ */
    CS_VOID *mph_origin;                /* private: where the places in mph_chains are counted from */
    CS_INT mph_chains[MM_CHUNK_CHAINS]; /* private: most chunks, by address */
} MmPoolHead;

struct _mmhandle {
    MmPoolHead *mmh_head;  /* shared by the tree */
    CS_INT mmh_type;
    CS_INT mmh_blocksize;  /* bytes of a block taken from the store */
    CS_INT mmh_status;     /* MM_STAT_ */
    CS_INT mmh_tagid;      /* of a sub-pool; 0 for a root */
    MmBlock *mmh_blocks;   /* all blocks taken, newest first */
    MM_HANDLE *mmh_parent;
    MM_HANDLE *mmh_child;
    MM_HANDLE *mmh_sibling;
    union {
        MmBuddyPool af;
        MmUniformPool u;
        MmAllocOnlyPool a;
    } mmh_pool;
};

static_assert(sizeof(MmList) == 16 && offsetof(MmList, link) == 8, "MmList layout");
static_assert(sizeof(MmHeap) == 32 && offsetof(MmHeap, buffer) == 24, "MmHeap layout");
static_assert(sizeof(MmDList) == 24 && offsetof(MmDList, next) == 8, "MmDList layout");

/* ---- Pools --------------------------------------------------------------------------------- */

/*
 * Build a pool on a context, whose ctxmalloc serves chunks and, where *mmh is null, head and handle; else
 * *mmh is room of the caller for both (MM_PROP_HANDLESIZE tells how much). A context with create_mutex_fn
 * gives the pool a lock. CS_MEM_ERROR, or the status of create_mutex_fn.
 */
DLXCOMN_API CS_RETCODE comn_mminit(CS_CONTEXT *ctx, MM_HANDLE **mmh);

/*
 * Build a pool in memory of the caller, with no source of chunks and no lock. With *mmh null head and
 * handle are carved from the front of buffer; CS_FAIL if it is too small.
 */
DLXCOMN_API CS_RETCODE comn_mmmanage(CS_VOID *buffer, CS_INT buflen, MM_HANDLE **mmh);

/*
 * Get, set or clear a property. Pointers are set by passing them as buffer, integers by address; outlen (if
 * not null) receives 4 or 8. A get of MM_PROP_PARAM or MM_PROP_LOCKARG sets *outlen and writes nothing.
 */
DLXCOMN_API CS_RETCODE comn_mmproperty(MM_HANDLE *mmh, CS_INT action, CS_INT property, CS_VOID *buffer, CS_INT buflen,
                                       CS_INT *outlen);

/* Serve size bytes, zeroed outside the lock. CS_MEM_ERROR; CS_FAIL for another size in a uniform pool. */
DLXCOMN_API CS_RETCODE comn_mmalloc(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer);
/* Buddy pools only. New bytes are not cleared. */
DLXCOMN_API CS_RETCODE comn_mmrealloc(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer);
/* CS_FAIL in an alloc-only pool. */
DLXCOMN_API CS_RETCODE comn_mmfree(MM_HANDLE *mmh, CS_VOID *buf);
/* CS_BUSY with sub-pools remaining. MM_DROP_FORCE takes the whole tree down, from any handle of it. */
DLXCOMN_API CS_RETCODE comn_mmdrop(MM_HANDLE *mmh, CS_INT option);
/* Not provided: a broken contract, CS_FAIL. */
DLXCOMN_API CS_RETCODE comn_mmdiag(MM_HANDLE *mmh);

/* ---- What a pool on a context is given ----------------------------------------------------- */

DLXCOMN_API CS_RETCODE com___lock_ctx(MM_HANDLE *mmh, CS_VOID *lock_arg);
DLXCOMN_API CS_RETCODE com___unlock_ctx(MM_HANDLE *mmh, CS_VOID *lock_arg);
DLXCOMN_API CS_VOID *com___sbreak_ctx(MM_HANDLE *mmh, CS_VOID *param, CS_INT size);
DLXCOMN_API CS_RETCODE com___unsbreak_ctx(MM_HANDLE *mmh, CS_VOID *param, CS_VOID *buffer);

/* ---- Below the lock ------------------------------------------------------------------------ */

DLXCOMN_API CS_RETCODE com___getheap(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer);
DLXCOMN_API CS_RETCODE com___putheap(MM_HANDLE *mmh, CS_VOID *buffer);
DLXCOMN_API CS_RETCODE com___getblock(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer);
DLXCOMN_API CS_RETCODE com___putblock(MM_HANDLE *mmh, CS_VOID *buffer);
DLXCOMN_API CS_RETCODE com___addheap(MM_HANDLE *mmh, CS_VOID *buffer, CS_INT buflen, CS_INT status);
DLXCOMN_API CS_RETCODE com___insert_block(MmHeap *heap, MmList *ml);
DLXCOMN_API CS_RETCODE com___sbreak(MM_HANDLE *mmh, CS_INT size);
DLXCOMN_API CS_RETCODE com___unsbreak(MM_HANDLE *mmh, CS_VOID *buffer);
DLXCOMN_API CS_RETCODE com___remove_pool(MM_HANDLE *mmh);
DLXCOMN_API CS_RETCODE com___remove_subpool(MM_HANDLE *mmh);
DLXCOMN_API CS_RETCODE com___subpool(MM_HANDLE *mmh, CS_INT tagid, MM_HANDLE **subpool);
DLXCOMN_API CS_RETCODE com___buddy_split(MM_HANDLE *mmh, CS_INT index);
DLXCOMN_API CS_RETCODE com___buddy_compact(MM_HANDLE *mmh, CS_INT size_index);
DLXCOMN_API CS_RETCODE com___buddy_malloc(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer);
DLXCOMN_API CS_RETCODE com___buddy_free(MM_HANDLE *mmh, CS_VOID *buf);
DLXCOMN_API CS_RETCODE com___buddy_realloc(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer);
DLXCOMN_API CS_RETCODE com___uniform_malloc(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer);
DLXCOMN_API CS_RETCODE com___uniform_free(MM_HANDLE *mmh, CS_VOID *buf);
DLXCOMN_API CS_RETCODE com___alloconly_malloc(MM_HANDLE *mmh, CS_INT size, CS_VOID **buffer);

#ifdef __cplusplus
}
#endif
#endif
