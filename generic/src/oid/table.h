// The table of global identifiers, as its loader, its dropper and its readers share it.
#ifndef DLX_OID_TABLE_H
#define DLX_OID_TABLE_H

#include <dlxcomn/oid.h>

#include <cstring>

namespace dlx {

inline bool has_encoding(const CsOID &oid, const CS_BYTE *ber, CS_INT len) {
    return oid.oidberlen == len && (len <= 0 || std::memcmp(oid.oidber, ber, static_cast<std::size_t>(len)) == 0);
}

void free_oid(CsOID *oid);

} // namespace dlx

#endif
