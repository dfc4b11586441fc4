// RC4_KEY: the RC4 key schedule and key stream.
#include "zkcommon/crypto/rc4.h"

namespace ZkCommonNS {

RC4_KEY::RC4_KEY(int keyLength, const unsigned char* key) noexcept
    : m_s(), m_i(0), m_j(0), m_valid(key != nullptr && keyLength > 0) {
    for (int i = 0; i < 256; ++i)
        m_s[i] = static_cast<unsigned char>(i);
    if (!m_valid)
        return;
    unsigned char j = 0;
    for (int i = 0, k = 0; i < 256; ++i) {
        const unsigned char si = m_s[i];
        j = static_cast<unsigned char>(j + si + key[k]);
        m_s[i] = m_s[j];
        m_s[j] = si;
        if (++k == keyLength)
            k = 0;
    }
}

int RC4_KEY::RC4(int length, const unsigned char* in, unsigned char* out) noexcept {
    if (!m_valid || in == nullptr || out == nullptr || length <= 0)
        return 0;
    unsigned char i = m_i, j = m_j;
    for (int n = 0; n < length; ++n) {
        i = static_cast<unsigned char>(i + 1);
        const unsigned char si = m_s[i];
        j = static_cast<unsigned char>(j + si);
        const unsigned char sj = m_s[j];
        m_s[i] = sj;
        m_s[j] = si;
        out[n] = in[n] ^ m_s[static_cast<unsigned char>(si + sj)];
    }
    m_i = i;
    m_j = j;
    return length;
}

} // namespace ZkCommonNS
