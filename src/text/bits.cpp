// Bit access of ZkUtil over big-endian bit buffers (bit 0 is the high bit of byte 0), and the
// BitIterator that reads and writes them with two positions.
#include "zkcommon/text/util.h"

namespace ZkCommonNS {

int ZkUtil::fetchBit1(const unsigned char* data, int index) noexcept {
    return (data[index >> 3] >> (7 - (index & 7))) & 1;
}

int ZkUtil::fetchBit2(const unsigned char* data, int index) noexcept {
    return (data[index >> 2] >> (6 - 2 * (index & 3))) & 3;
}

int ZkUtil::fetchBit4(const unsigned char* data, int index) noexcept {
    return (data[index >> 1] >> ((index & 1) ? 0 : 4)) & 15;
}

int ZkUtil::fetchBit8(const unsigned char* data, int index) noexcept {
    return data[index];
}

int ZkUtil::fetchBit12(const unsigned char* data, int index) noexcept {
    // Two elements share three bytes: even ones take byte 0 and the high half of byte 1, odd
    // ones the low half of byte 1 and byte 2.
    const unsigned char* p = data + (index >> 1) * 3;
    if ((index & 1) == 0)
        return (p[0] << 4) | (p[1] >> 4);
    return ((p[1] & 15) << 8) | p[2];
}

int ZkUtil::fetchBit16(const unsigned char* data, int index) noexcept {
    const unsigned char* p = data + index * 2;
    return (p[0] << 8) | p[1];
}

int ZkUtil::fetchBit24(const unsigned char* data, int index) noexcept {
    const unsigned char* p = data + index * 3;
    return (p[0] << 16) | (p[1] << 8) | p[2];
}

uint32_t ZkUtil::fetchBit32(const unsigned char* data, int index) noexcept {
    const unsigned char* p = data + index * 4;
    return (uint32_t(p[0]) << 24) | (uint32_t(p[1]) << 16) | (uint32_t(p[2]) << 8) | p[3];
}

void ZkUtil::patchBit1(unsigned char* data, int index) noexcept {
    data[index >> 3] |= static_cast<unsigned char>(0x80 >> (index & 7));
}

void ZkUtil::patchBit2(unsigned char* data, int index) noexcept {
    data[index >> 2] |= static_cast<unsigned char>(0xC0 >> (2 * (index & 3)));
}

void ZkUtil::patchBit4(unsigned char* data, int index) noexcept {
    data[index >> 1] |= static_cast<unsigned char>((index & 1) ? 0x0F : 0xF0);
}

ZkUtil::BitIterator::BitIterator(unsigned char* data, int bits) noexcept
    : m_read(data), m_write(data), m_bits(bits < 0 ? 0 : bits) {}

ZkUtil::BitIterator::BitIterator(const unsigned char* data, int bits) noexcept
    : m_read(data), m_write(nullptr), m_bits(bits < 0 ? 0 : bits) {}

bool ZkUtil::BitIterator::fetch() noexcept {
    // Past the end (or before the start) there is nothing to read: a zero bit.
    bool bit = m_fetchPos >= 0 && m_fetchPos < m_bits && fetchBit1(m_read, m_fetchPos) != 0;
    ++m_fetchPos;
    return bit;
}

uint32_t ZkUtil::BitIterator::fetch(int n) noexcept {
    uint32_t value = 0;
    if (n > 32)
        n = 32;
    for (int i = 0; i < n; ++i)
        value = (value << 1) | (fetch() ? 1u : 0u);
    return value;
}

void ZkUtil::BitIterator::patch(bool value) noexcept {
    if (m_write && m_patchPos >= 0 && m_patchPos < m_bits) {
        unsigned char mask = static_cast<unsigned char>(0x80 >> (m_patchPos & 7));
        if (value)
            m_write[m_patchPos >> 3] |= mask;
        else
            m_write[m_patchPos >> 3] &= static_cast<unsigned char>(~mask);
    }
    ++m_patchPos;
}

void ZkUtil::BitIterator::resizeData(unsigned char* data, int bits) noexcept {
    m_read = data;
    m_write = data;
    m_bits = bits < 0 ? 0 : bits;
}

int ZkUtil::BitIterator::countRun(bool value, int limit) const noexcept {
    if (m_fetchPos < 0)
        return 0;
    int available = m_bits - m_fetchPos;
    if (limit > available)
        limit = available;
    int count = 0;
    int pos = m_fetchPos;
    // Whole bytes at once where the run allows it.
    while (count < limit) {
        if ((pos & 7) == 0 && limit - count >= 8) {
            unsigned char whole = value ? 0xFF : 0x00;
            if (m_read[pos >> 3] == whole) {
                count += 8;
                pos += 8;
                continue;
            }
        }
        if ((fetchBit1(m_read, pos) != 0) != value)
            break;
        ++count;
        ++pos;
    }
    return count;
}

} // namespace ZkCommonNS
