// The key hash: base 37 over big-endian 32-bit words, modulo 2^32.
//
// Bytes are signed. A byte of 0x80 or above fills all higher bits of its word when it is put in, and files and
// tables that were sized by this hash rely on it.
#include "diag/check.h"

#include <dlxcomn/list.h>

#include <cstdint>

namespace {

constexpr CS_UINT BASE = 37;
constexpr CS_INT WORD_BYTES = 4;
constexpr CS_UINT FILLER = 'Z'; // behind the last bytes of a key

CS_UINT byte_at(const CS_CHAR *key, int place) {
    return static_cast<CS_UINT>(static_cast<CS_INT>(static_cast<signed char>(*key))) << (8 * (WORD_BYTES - 1 - place));
}

CS_UINT word_at(const CS_CHAR *key) {
    return byte_at(key, 0) | byte_at(key + 1, 1) | byte_at(key + 2, 2) | byte_at(key + 3, 3);
}

CS_UINT last_word(const CS_CHAR *key, CS_INT bytes) {
    CS_UINT word = 0;
    for (int place = 0; place < WORD_BYTES; ++place)
        word |= place < bytes ? byte_at(key + place, place) : FILLER << (8 * (WORD_BYTES - 1 - place));
    return word;
}

CS_UINT hash_bytes(const CS_CHAR *key, CS_INT size) {
    CS_UINT hash = 0;
    CS_UINT pending = 0; // every second word waits for the next; a word of zero that would wait is dropped
    for (; size >= WORD_BYTES; size -= WORD_BYTES, key += WORD_BYTES) {
        const CS_UINT word = word_at(key);
        if (pending != 0) {
            hash = (hash * BASE + pending) * BASE + word;
            pending = 0;
        } else {
            pending = word;
        }
    }
    if (pending != 0)
        hash = hash * BASE + pending;
    return size > 0 ? hash * BASE + last_word(key, size) : hash;
}

} // namespace

CS_RETCODE lm___api_key_to_uint(CS_VOID *key, CS_INT key_size, CS_UINT *key_int) {
    COM_REQUIRE_PTR(key_int, CS_FAIL);
    COM_REQUIRE(key_size >= 0, CS_FAIL);
    COM_REQUIRE(key != nullptr || key_size == 0, CS_FAIL);
    *key_int = hash_bytes(static_cast<const CS_CHAR *>(key), key_size);
    return CS_SUCCEED;
}

CS_RETCODE lm__api_key_to_hash(CS_VOID *key, CS_INT key_size, CS_INT range, CS_INT *hash_key) {
    COM_REQUIRE_PTR(hash_key, CS_FAIL);
    *hash_key = 0;
    CS_UINT value = 0;
    if (range <= 0 || lm___api_key_to_uint(key, key_size, &value) != CS_SUCCEED)
        return COM_TRACE(CS_FAIL);
    *hash_key = static_cast<CS_INT>(value % static_cast<CS_UINT>(range));
    return CS_SUCCEED;
}

CS_RETCODE lm__api_key_to_hash2(CS_VOID *key, CS_INT key_size, CS_INT range, CS_INT *hash_key) {
    COM_REQUIRE_PTR(hash_key, CS_FAIL);
    *hash_key = 0;
    CS_UINT value = 0;
    if (range <= 0 || lm___api_key_to_uint(key, key_size, &value) != CS_SUCCEED)
        return COM_TRACE(CS_FAIL);
    COM_REQUIRE(range != 1, CS_FAIL); // it would divide by zero
    *hash_key = static_cast<CS_INT>(value * 7 % static_cast<CS_UINT>(range - 1) + 1);
    return CS_SUCCEED;
}
