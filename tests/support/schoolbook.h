// The operations on bytes as one does them on paper, byte by byte and in place: what the library's limbs must not
// be told apart from, down to the layout of the work bytes.
#ifndef TESTS_SUPPORT_SCHOOLBOOK_H
#define TESTS_SUPPORT_SCHOOLBOOK_H

#include <dlxcomn/dlxcomn.h>

#include <cstring>
#include <vector>

namespace support::schoolbook {

inline int divide_by_ten(CS_BYTE **buffer, int *length) {
    int remainder = 0;
    for (int i = 0; i < *length; ++i) {
        const int value = remainder * 256 + (*buffer)[i];
        (*buffer)[i] = static_cast<CS_BYTE>(value / 10);
        remainder = value % 10;
    }
    if ((*buffer)[1] == 0 && *length >= 3 && !((*buffer)[*length - 1] == 255 && *length == 3)) {
        ++*buffer;
        --*length;
    }
    return remainder;
}

inline bool is_zero(const __CONSTANT &a) {
    for (int i = 1; i < a.len; ++i)
        if (a.value[i] != 0)
            return false;
    return true;
}

inline int add(const __CONSTANT &a, const __CONSTANT &b, const __CONSTANT &r) {
    int at = a.len - 1;
    int to = r.len - 1;
    int carry = 0;
    for (; at >= 1 && to >= 1; --at, --to) {
        carry += a.value[at] + b.value[at];
        r.value[to] = static_cast<CS_BYTE>(carry);
        carry >>= 8;
    }
    if (to >= 1) {
        r.value[to--] = static_cast<CS_BYTE>(carry);
        for (; to >= 0; --to)
            r.value[to] = 0;
        return 0;
    }
    if (carry != 0)
        return 1;
    for (; at >= 1; --at)
        if (a.value[at] != 0 || b.value[at] != 0)
            return 1;
    return 0;
}

inline int subtract(const __CONSTANT &a, const __CONSTANT &b, const __CONSTANT &r) {
    std::vector<CS_BYTE> difference(static_cast<size_t>(a.len));
    int borrow = 1;
    for (int i = a.len - 1; i >= 1; --i) {
        const int value = a.value[i] + borrow - b.value[i] + 255;
        difference[static_cast<size_t>(i)] = static_cast<CS_BYTE>(value);
        borrow = value >> 8;
    }
    if (r.len > a.len)
        std::memset(r.value, 0, static_cast<size_t>(r.len));
    int overflow = 0;
    for (int i = a.len - 1, to = r.len - 1; i >= 1; --i, --to) {
        if (to >= 1)
            r.value[to] = difference[static_cast<size_t>(i)];
        else if (difference[static_cast<size_t>(i)] != 0)
            overflow = 1;
    }
    return overflow;
}

// Rows from b's lowest byte; r is apart from both. Sign bytes are not touched.
inline int multiply(const __CONSTANT &a, const __CONSTANT &b, const __CONSTANT &r) {
    std::memset(r.value, 0, static_cast<size_t>(r.len));
    for (int k = 1; k <= b.len - 1; ++k) {
        const int digit = b.value[b.len - k];
        int to = r.len - k;
        int at = a.len - 1;
        int carry = 0;
        for (; at >= 1 && to >= 1; --at, --to) {
            const int value = a.value[at] * digit + r.value[to] + carry;
            r.value[to] = static_cast<CS_BYTE>(value);
            carry = value >> 8;
        }
        if (to >= 1)
            r.value[to] = static_cast<CS_BYTE>(carry);
        else if (carry != 0)
            return 1;
        for (; at >= 1; --at)
            if (digit != 0 && a.value[at] != 0)
                return 1;
    }
    return 0;
}

// Algorithm D in base 256: the divisor's leading bytes are normalised as they are read.
inline int divide(const __CONSTANT &a, const __CONSTANT &b, __CONSTANT &q, __CONSTANT &r) {
    const CS_BYTE *u = a.value + 1;
    const CS_BYTE *v = b.value + 1;
    int n = a.len - 1;
    int t = b.len - 1;
    for (; t > 0 && *v == 0; --t)
        ++v;
    if (t <= 0)
        return NUME_DIVZERO;
    for (; n > 0 && *u == 0; --n)
        ++u;
    if (n < t || (n == t && std::memcmp(u, v, static_cast<size_t>(n)) < 0)) {
        q.len = 0;
        r.value = const_cast<CS_BYTE *>(u) - 1;
        r.len = n > 0 ? n + 1 : 0;
        return NUME_OK;
    }
    const int m = n - t + 1;
    if (m + t > q.len)
        return NUME_OVERFLOW;
    const std::vector<CS_BYTE> dividend(u, u + n);
    const std::vector<CS_BYTE> divisor(v, v + t);
    CS_BYTE *work = q.value + q.len - (m + t);
    work[0] = 0;
    std::memcpy(work + 1, dividend.data(), dividend.size());

    if (t == 1) {
        int remainder = 0;
        for (int i = 0; i < n; ++i) {
            const int value = remainder * 256 + work[i + 1];
            work[i] = static_cast<CS_BYTE>(value / divisor[0]);
            remainder = value % divisor[0];
        }
        work[n] = static_cast<CS_BYTE>(remainder);
    } else {
        int shift = 0;
        while ((divisor[0] << shift & 128) == 0)
            ++shift;
        const auto byte_at = [&](int i) { return i < n + 1 ? work[i] : 0; };
        const auto normal = [&](int i) { return (byte_at(i) << shift | byte_at(i + 1) >> (8 - shift)) & 255; };
        const int third = t > 2 ? divisor[2] : 0;
        const int d1 = (divisor[0] << shift | divisor[1] >> (8 - shift)) & 255;
        const int d2 = (divisor[1] << shift | third >> (8 - shift)) & 255;
        for (int j = 0; j < m; ++j) {
            const int u0 = normal(j), u1 = normal(j + 1), u2 = normal(j + 2);
            int estimate = 255;
            if (u0 != d1) {
                estimate = (u0 * 256 + u1) / d1;
                while (estimate * d2 > (u0 * 256 + u1 - estimate * d1) * 256 + u2)
                    --estimate;
            }
            int carry = 0;
            for (int i = t; i >= 1; --i) {
                const int product = estimate * divisor[static_cast<size_t>(i - 1)] + carry;
                const int difference = work[j + i] - (product & 255);
                work[j + i] = static_cast<CS_BYTE>(difference);
                carry = (product >> 8) + (difference < 0);
            }
            if (work[j] < carry) {
                --estimate;
                int back = 0;
                for (int i = t; i >= 1; --i) {
                    back += work[j + i] + divisor[static_cast<size_t>(i - 1)];
                    work[j + i] = static_cast<CS_BYTE>(back);
                    back >>= 8;
                }
            }
            work[j] = static_cast<CS_BYTE>(estimate);
        }
    }
    CS_BYTE *quotient = work;
    int digits = m;
    for (; digits > 0 && *quotient == 0; --digits)
        ++quotient;
    CS_BYTE *rest = work + m;
    int left = t;
    for (; left > 0 && *rest == 0; --left)
        ++rest;
    q.value = quotient - 1;
    q.len = digits + 1;
    if (t == 1) {
        r.len = left;
        r.value = work + m;
    } else {
        r.len = left > 0 ? left + 1 : 0;
        r.value = rest - 1;
    }
    return NUME_OK;
}

} // namespace support::schoolbook

#endif
