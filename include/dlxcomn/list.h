/*
 * list.h - keyed lists of five types, in contexts.
 *
 * An LM_CONTEXT owns LM_HANDLEs; each handle is one list. Lists hold pointers: neither keys nor data are
 * copied, and dropping a list releases only the manager's own records. Names are copied.
 *
 * Nothing here takes a lock: a context and its lists belong to whoever serialises access to them. Every
 * record leads with a state and is stamped LM_RELEASED before its memory goes back, so that a stale handle
 * is a broken contract and not a wild read. A null context or handle is CS_FAIL.
 */
#ifndef DLXCOMN_LIST_H
#define DLXCOMN_LIST_H

#include <dlxcomn/types.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
    LM_ALLOCATED = 11,     /* memory obtained, record not complete */
    LM_RELEASED = 12,      /* given back */
    LM_INITIALIZED = 13,   /* complete; a node not in a list yet */
    LM_UNINITIALIZED = 14, /* a node resting in the pool */
    LM_INSERTED = 15,      /* a node in a linked list */
    LM_SET = 16,           /* a hash node with an entry */
    LM_UNSET = 17          /* a slot whose entry was removed */
} LM_NODE_STATE;

/* List types. */
enum { LM_DLINK = 13, LM_CHASH = 14, LM_DHASH = 16, LM_QUEUE = 18, LM_STACK = 19 };

/* Operations of lm_list_op; LM_OP_FIRST and LM_OP_LAST are positions too. */
enum {
    LM_OP_INSERT = 20,
    LM_OP_DELETE = 21,
    LM_OP_FIND = 22,
    LM_OP_UPDATE = 23,
    LM_OP_NEXT = 24,
    LM_OP_PREV = 25,
    LM_OP_CURRENT = 26,
    LM_OP_FIRST = 27,
    LM_OP_LAST = 28,
    LM_OP_PRINT = 29,
    LM_OP_PRINTALL = 30,
    LM_OP_WALK = 31
};
enum { LM_POS_BEFORE = 32, LM_POS_AFTER = 33 };

#define LM_NOT_FOUND 34  /* status of a hash lookup that missed */
#define LM_FORCE_DROP 35 /* of lm_list_drop: entries go with the list */
#define LM_FORCE_EXIT 36 /* of lm_exit: lists go with the context */

#define LM_NULLTERM (-9)    /* a length: the text is NUL-terminated */
#define LM_UNUSED (-99999)  /* a length or option that is not used */

/* Actions of the property functions. */
enum { LM_ACT_GET = 33, LM_ACT_SET = 34, LM_ACT_CLEAR = 35 };

/* Properties: 1 to 7 of a context, 1 to 3 and 8 to 12 of a list. */
enum {
    LM_PROP_LIST_TYPE = 1,
    LM_PROP_MAX_TABLESIZE = 2,
    LM_PROP_MAX_POOLSIZE = 3,
    LM_PROP_VERSION = 4,
    LM_PROP_CONTEXT_LOAD = 5,
    LM_PROP_CURRENT_HANDLENAME = 6,
    LM_PROP_CURRENT_HANDLEADDR = 7,
    LM_PROP_HANDLE_LOAD = 8,
    LM_PROP_CONTEXT_ADDR = 9,
    LM_PROP_HANDLE_NAME = 10,
    LM_PROP_PRINT_FUNC = 11,
    LM_PROP_COMP_FUNC = 12
};

typedef struct _lmcontext LM_CONTEXT;
typedef struct _lmcxtprop LM_CXTPROP;
typedef struct _lmhandle LM_HANDLE;
typedef struct _lmhdlprop LM_HDLPROP;
typedef struct _dlinknode DLinkNode;

typedef CS_VOID *(*LM_ALLOCATOR)(CS_VOID *user, CS_INT size);
typedef void (*LM_RELEASER)(CS_VOID *user, CS_VOID *memory);
/* Called with the data of an entry; 0 ends the walk. */
typedef CS_INT (*CS_PRINT_FUNC)(CS_VOID *data);
/* Stored and handed back; nothing calls it. */
typedef CS_INT (*CS_COMPARE_FUNC)(CS_VOID *data1, CS_VOID *data2);
typedef CS_RETCODE (*CS_KEY_HASH_FUNC)(CS_VOID *key, CS_INT key_size, CS_INT range, CS_INT *hash_key);

struct _lmcontext {
    LM_NODE_STATE state;
    CS_CHAR *context_name; /* owned */
    CS_INT length;         /* bytes of the name, with its NUL where it was given with LM_NULLTERM */
    CS_BOOL lmchkparam;
    LM_CXTPROP *cxtprop;
    LM_HANDLE *first_handle; /* newest first */
    LM_ALLOCATOR lmmalloc;
    LM_RELEASER lmfree;
    CS_VOID *lmuser; /* first argument of both */
};

struct _lmcxtprop {
    LM_NODE_STATE state;
    CS_INT list_type;     /* of new lists */
    CS_INT max_tablesize; /* slots of new tables */
    CS_INT max_poolsize;  /* nodes kept for new lists */
    CS_INT version;
    CS_INT context_load; /* lists */
    CS_CHAR *cur_handlename;
    LM_HANDLE *cur_handleaddr;
};

struct _dlinknode {
    LM_NODE_STATE state;
    CS_VOID *key;    /* borrowed */
    CS_INT key_size; /* bytes */
    CS_VOID *data;   /* borrowed */
    DLinkNode *previous;
    DLinkNode *next;
};

typedef struct _dlinkinfo {
    LM_NODE_STATE state;
    DLinkNode *head;
    DLinkNode *tail;
} DLinkInfo;

typedef struct _chashinfo {
    LM_NODE_STATE state;
    DLinkNode **table; /* chain heads */
    CS_INT table_size;
    CS_KEY_HASH_FUNC home_addr_hfunc;
} CHashInfo;

typedef struct _dhashinfo {
    LM_NODE_STATE state;
    DLinkNode **table; /* every slot holds a node */
    CS_INT table_size;
    CS_KEY_HASH_FUNC home_addr_hfunc;
    CS_KEY_HASH_FUNC incr_hfunc;
} DHashInfo;

struct _lmhandle {
    LM_NODE_STATE state;
    LM_HDLPROP *hdlprop;
    CS_VOID *list_state; /* DLinkInfo, CHashInfo or DHashInfo */
    DLinkNode *free_DLN_list; /* the node pool */
    CS_INT free_nodes;        /* nodes in it */
    DLinkNode *cur_ptr;       /* the cursor */
    LM_HANDLE *next;
    LM_ALLOCATOR lmhmalloc;
    LM_RELEASER lmhfree;
    CS_VOID *lmhuser;
};

struct _lmhdlprop {
    LM_NODE_STATE state;
    CS_INT list_type;
    CS_INT max_tablesize;
    CS_INT max_poolsize;
    CS_INT handle_load; /* entries */
    LM_CONTEXT *context;
    CS_CHAR *handle_name; /* owned */
    CS_INT length;        /* as in LM_CONTEXT */
    CS_PRINT_FUNC print_func;
    CS_COMPARE_FUNC comp_func;
};

/* ---- Contexts ------------------------------------------------------------------------------ */

/* Make a context; version is at least 1100. CS_MEM_ERROR leaves *context_ptr null. */
DLXCOMN_API CS_RETCODE lm_initlm(CS_INT version, CS_CHAR *context_name, CS_INT length, LM_CONTEXT **context_ptr);
DLXCOMN_API CS_RETCODE lm_initlm_ex(CS_INT version, CS_CHAR *context_name, CS_INT length, LM_CONTEXT **context_ptr,
                                    LM_ALLOCATOR lm_alloc, LM_RELEASER lm_free, CS_VOID *userctx);

/* End it. With LM_UNUSED a context that has lists is CS_FAIL and stays as it was. */
DLXCOMN_API CS_RETCODE lm_exit(LM_CONTEXT *context, CS_INT option);

/* Get, set or clear a property; values go by address, outlen may be null. */
DLXCOMN_API CS_RETCODE lm_property(LM_CONTEXT *context, CS_INT action, CS_INT property, CS_VOID *buffer, CS_INT buflen,
                                   CS_INT *outlen);

/* ---- Lists --------------------------------------------------------------------------------- */

/* Make a list; list_type LM_UNUSED takes the context's. It becomes the current handle. */
DLXCOMN_API CS_RETCODE lm_list_alloc(LM_CONTEXT *context, CS_INT list_type, CS_CHAR *handle_name, CS_INT length,
                                     LM_HANDLE **handle_ptr);
DLXCOMN_API CS_RETCODE lm_list_alloc_ex(LM_CONTEXT *context, CS_INT list_type, CS_CHAR *handle_name, CS_INT length,
                                        LM_HANDLE **handle_ptr, LM_ALLOCATOR lm_alloc, LM_RELEASER lm_free,
                                        CS_VOID *userctx);

/* Drop it. With LM_UNUSED a list that has entries is CS_FAIL. */
DLXCOMN_API CS_RETCODE lm_list_drop(LM_HANDLE *handle, CS_INT option);

/*
 * One operation, by the list's type. data_out (if not null) receives the data at the cursor after the
 * operation, or null; so a delete answers the data of the node that the cursor moved to. A stack reads one
 * level more: data_out is the address of a variable with the address to store at.
 *
 * Linked lists: key is null for the list's own cursor, or the address of a DLinkNode pointer of the caller;
 * key_size of an insert is a position. Hash lists: key and key_size are the key; LM_UNUSED as size, or a null
 * key, means the cursor. A miss is LM_NOT_FOUND; walking off a linked list is CS_FAIL. CS_MEM_ERROR.
 */
DLXCOMN_API CS_RETCODE lm_list_op(LM_HANDLE *handle, CS_INT operation, CS_VOID *key, CS_INT key_size, CS_VOID *data_in,
                                  CS_VOID **data_out);

/*
 * Get, set or clear a property. Setting LM_PROP_MAX_TABLESIZE of a chained table loses entries: each chain
 * comes out as copies of its first one.
 */
DLXCOMN_API CS_RETCODE lm_list_prop(LM_HANDLE *handle, CS_INT action, CS_INT property, CS_VOID *buffer, CS_INT buflen,
                                    CS_INT *outlen);

/* ---- Hashes -------------------------------------------------------------------------------- */

/* Base 37 over big-endian 32-bit words of sign-extended bytes. Any key, of any alignment. */
DLXCOMN_API CS_RETCODE lm___api_key_to_uint(CS_VOID *key, CS_INT key_size, CS_UINT *key_int);
/* That modulo range; CS_FAIL and 0 for a range of 0 or below. */
DLXCOMN_API CS_RETCODE lm__api_key_to_hash(CS_VOID *key, CS_INT key_size, CS_INT range, CS_INT *hash_key);
/* 1 to range - 1; the range is at least 2. */
DLXCOMN_API CS_RETCODE lm__api_key_to_hash2(CS_VOID *key, CS_INT key_size, CS_INT range, CS_INT *hash_key);

/* ---- Byte copies --------------------------------------------------------------------------- */

/* *outlen is always the bytes needed; into a destination that is too small nothing is copied. */
DLXCOMN_API CS_RETCODE lm__api_cp_bytes(CS_CHAR *src, CS_INT srclen, CS_BOOL null_term, CS_CHAR *dest, CS_INT destlen,
                                        CS_INT *outlen);
DLXCOMN_API CS_RETCODE lm__api_prop_cpbytes(CS_CHAR *src, CS_INT srclen, CS_BOOL null_term, CS_CHAR *dest,
                                            CS_INT destlen, CS_INT *outlen);
/* A copy from the plain allocator; null and 0 for a length of 0. */
DLXCOMN_API CS_RETCODE lm__api_setdata(CS_CHAR *src, CS_INT srclen, CS_BOOL null_term, CS_CHAR **p_dest,
                                       CS_INT *p_destlen);
/* The same over an old value, which is freed first. Always CS_SUCCEED. */
DLXCOMN_API CS_RETCODE lm__api_prop_setdata(CS_CHAR *buffer, CS_INT buflen, CS_BOOL null_term, CS_CHAR **prop_ptr,
                                            CS_INT *proplen);
DLXCOMN_API CS_RETCODE lm___api_reallength(CS_CHAR *src, CS_INT srclen, CS_BOOL null_term, CS_INT *actual_len,
                                           CS_INT *bytes_needed);

/* ---- Parts of the above -------------------------------------------------------------------- */

DLXCOMN_API CS_VOID *lm___malloc(CS_VOID *user, CS_INT size);
DLXCOMN_API void lm___free(CS_VOID *user, CS_VOID *memory);
DLXCOMN_API CS_RETCODE lm___api_init(LM_CONTEXT **context_ptr, LM_ALLOCATOR lm_alloc, LM_RELEASER lm_free,
                                     CS_VOID *userctx);
DLXCOMN_API CS_RETCODE lm___api_init_fail(LM_CONTEXT **context_ptr);
DLXCOMN_API CS_RETCODE lm___pchk_list_alloc(LM_CONTEXT *context, CS_CHAR *handle_name);
DLXCOMN_API CS_RETCODE lm___api_list_init(LM_CONTEXT *context, CS_INT list_type, CS_CHAR *handle_name, CS_INT length,
                                          LM_HANDLE *handle);
DLXCOMN_API CS_RETCODE lm___api_dlink_init(LM_HANDLE *handle);
DLXCOMN_API CS_RETCODE lm__api_chash_init(LM_HANDLE *handle);
DLXCOMN_API CS_RETCODE lm__api_dhash_init(LM_HANDLE *handle);
DLXCOMN_API CS_RETCODE lm__api_chash_drop(LM_HANDLE *handle);
DLXCOMN_API CS_RETCODE lm__api_dhash_drop(LM_HANDLE *handle);
DLXCOMN_API CS_RETCODE lm___api_queue_drop(LM_HANDLE *handle);
DLXCOMN_API CS_RETCODE lm___api_stack_drop(LM_HANDLE *handle);
DLXCOMN_API CS_RETCODE lm___api_dlink_op(LM_HANDLE *handle, CS_INT operation, CS_VOID *key, CS_INT key_size,
                                         CS_VOID *data_in, CS_VOID **data_out);
DLXCOMN_API CS_RETCODE lm___api_chash_op(LM_HANDLE *handle, CS_INT operation, CS_VOID *key, CS_INT key_size,
                                         CS_VOID *data_in, CS_VOID **data_out);
DLXCOMN_API CS_RETCODE lm___api_dhash_op(LM_HANDLE *handle, CS_INT operation, CS_VOID *key, CS_INT key_size,
                                         CS_VOID *data_in, CS_VOID **data_out);
DLXCOMN_API CS_RETCODE lm___api_queue_op(LM_HANDLE *handle, CS_INT operation, CS_VOID *key, CS_INT key_size,
                                         CS_VOID *data_in, CS_VOID **data_out);
DLXCOMN_API CS_RETCODE lm___api_stack_op(LM_HANDLE *handle, CS_INT operation, CS_VOID *key, CS_INT key_size,
                                         CS_VOID *data_in, CS_VOID **data_out);
/* *home_addr is the key's slot, found or not. */
DLXCOMN_API CS_RETCODE lm___api_chash_search(LM_HANDLE *handle, CS_VOID *key, CS_INT key_size, CS_INT *home_addr);
DLXCOMN_API CS_RETCODE lm___api_dhash_search(LM_HANDLE *handle, CS_VOID *key, CS_INT key_size);
DLXCOMN_API CS_RETCODE lm___chash_rehash(LM_HANDLE *handle);
DLXCOMN_API CS_RETCODE lm___dhash_rehash(LM_HANDLE *handle);
DLXCOMN_API CS_RETCODE lm__api_dlink_mpool_init(LM_HANDLE *handle, CS_INT old_size);
DLXCOMN_API CS_RETCODE lm__api_dlink_mpool_drop(LM_HANDLE *handle, CS_INT old_size);
DLXCOMN_API CS_RETCODE lm__get_dlinknode(LM_HANDLE *handle, DLinkNode **node);
DLXCOMN_API CS_RETCODE lm__free_dlinknode(LM_HANDLE *handle, DLinkNode *node);

#ifdef __cplusplus
}
#endif
#endif
