// ZkMemStreamBuf: blocks, lazily read sources, independent get and put areas, and the searches
// that walk across block boundaries.
#include "zkcommon/io/memstream.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace ZkCommonNS {

/// A place in the held content: a block and an offset in it (at most the block's fill).
struct ZkMemStreamBuf::Cursor {
    uint64_t index;
    uint64_t offset;
};

namespace {

uint64_t clampGrowBytes(uint64_t growBytes) {
    if (growBytes == 0)
        return ZkMemStreamBuf::kDefaultGrowBytes;
    return std::min(growBytes, ZkMemStreamBuf::kMaxGrowBytes);
}

uint32_t readBigEndian32(const char* p) {
    const auto* u = reinterpret_cast<const unsigned char*>(p);
    return uint32_t(u[0]) << 24 | uint32_t(u[1]) << 16 | uint32_t(u[2]) << 8 | uint32_t(u[3]);
}

bool isLineEnd(char c) {
    return c == '\r' || c == '\n';
}

} // namespace

ZkMemStreamBuf::ZkMemStreamBuf(std::istream* source, uint64_t growBytes, bool own)
    : m_growBytes(clampGrowBytes(growBytes)) {
    setSource(source, own);
}

ZkMemStreamBuf::~ZkMemStreamBuf() {
    clear();
}

// ---- bookkeeping ----

uint64_t ZkMemStreamBuf::fillOf(uint64_t index) const noexcept {
    return index + 1 == m_blocks.size() ? m_used : m_growBytes;
}

uint64_t ZkMemStreamBuf::blockStart(uint64_t index) const noexcept {
    return (m_droppedBlocks + index) * m_growBytes;
}

void ZkMemStreamBuf::flushBuffer() noexcept {
    // Writing on the last block extends the content; elsewhere it overwrites.
    if (pbase() && m_putIndex + 1 == m_blocks.size())
        m_used = std::max(m_used, static_cast<uint64_t>(pptr() - pbase()));
}

uint64_t ZkMemStreamBuf::getPosition() const noexcept {
    return eback() ? blockStart(m_getIndex) + static_cast<uint64_t>(gptr() - eback()) : 0;
}

uint64_t ZkMemStreamBuf::putPosition() const noexcept {
    return pbase() ? blockStart(m_putIndex) + static_cast<uint64_t>(pptr() - pbase()) : 0;
}

void ZkMemStreamBuf::locate(uint64_t position, uint64_t& index, uint64_t& offset) const noexcept {
    index = position / m_growBytes - m_droppedBlocks;
    offset = position % m_growBytes;
}

void ZkMemStreamBuf::setGetArea(uint64_t index, uint64_t offset) {
    char* block = m_blocks[index];
    const uint64_t fill = fillOf(index);
    setg(block, block + std::min(offset, fill), block + fill);
    m_getIndex = index;
}

void ZkMemStreamBuf::setPutArea(uint64_t index, uint64_t offset) {
    char* block = m_blocks[index];
    // Bytes skipped by a seek past the end read as zeros, never as stale memory.
    if (index + 1 == m_blocks.size() && offset > m_used)
        std::memset(block + m_used, 0, offset - m_used);
    // One byte short of the block, so that overflow always has room for its character.
    setp(block, block + m_growBytes - 1);
    pbump(static_cast<int>(offset));
    m_putIndex = index;
}

void ZkMemStreamBuf::dropSource() {
    std::istream* source = m_sources.front();
    const bool owned = m_ownsSources.front();
    m_sources.pop_front();
    m_ownsSources.pop_front();
    if (owned)
        delete source;
}

void ZkMemStreamBuf::freeBlocks() {
    for (char* block : m_blocks)
        delete[] block;
    m_blocks.clear();
    setg(nullptr, nullptr, nullptr);
    setp(nullptr, nullptr);
    m_getIndex = m_putIndex = 0;
    m_used = 0;
    m_droppedBlocks = 0;
}

// ---- blocks and sources ----

void ZkMemStreamBuf::fillLastBlock() {
    if (m_blocks.empty())
        return;
    flushBuffer();
    char* block = m_blocks.back();
    while (!m_sources.empty() && m_used < m_growBytes) {
        std::istream* source = m_sources.front();
        const uint64_t wanted = m_growBytes - m_used;
        source->read(block + m_used, static_cast<std::streamsize>(wanted));
        const auto got = static_cast<uint64_t>(std::max<std::streamsize>(source->gcount(), 0));
        m_used += std::min(got, wanted);
        if (!source->good() || got < wanted)
            dropSource();
    }
}

void ZkMemStreamBuf::appendBuffer(bool fresh) {
    flushBuffer();
    // The last block stops being last: its unwritten tail becomes part of the content.
    if (!m_blocks.empty() && m_used < m_growBytes)
        std::memset(m_blocks.back() + m_used, 0, m_growBytes - m_used);
    char* block = nullptr;
    if (fresh || m_blocks.size() < 2) {
        block = new char[m_growBytes];
    } else {
        // A one-pass read recycles: the oldest blocks go, the last two stay.
        while (!m_blocks.empty()) {
            if (eback() && m_getIndex == 0)
                setg(nullptr, nullptr, nullptr);
            else if (eback())
                --m_getIndex;
            if (pbase() && m_putIndex == 0)
                setp(nullptr, nullptr);
            else if (pbase())
                --m_putIndex;
            char* oldest = m_blocks.front();
            m_blocks.pop_front();
            ++m_droppedBlocks;
            if (m_blocks.size() < 2) {
                block = oldest;
                break;
            }
            delete[] oldest;
        }
    }
    m_blocks.push_back(block);
    m_used = 0;
    fillLastBlock();
}

bool ZkMemStreamBuf::pullBlock() {
    if (m_sources.empty())
        return false;
    flushBuffer();
    if (!m_blocks.empty() && m_used < m_growBytes)
        fillLastBlock();
    else
        appendBuffer(true);
    return true;
}

void ZkMemStreamBuf::pullAll() {
    while (pullBlock()) {
    }
}

void ZkMemStreamBuf::setSource(std::istream* source, bool own) {
    // A stream that reads itself would recurse without end.
    if (!source || source->rdbuf() == this)
        return;
    m_sources.push_back(source);
    m_ownsSources.push_back(own);
    fillLastBlock();
    if (eback() && m_getIndex + 1 == m_blocks.size())
        setg(eback(), gptr(), eback() + m_used);
}

std::istream* ZkMemStreamBuf::getSource() const noexcept {
    return m_sources.empty() ? nullptr : m_sources.front();
}

void ZkMemStreamBuf::setGrowBytes(uint64_t growBytes) {
    if (m_blocks.empty())
        m_growBytes = clampGrowBytes(growBytes);
}

uint64_t ZkMemStreamBuf::length() {
    flushBuffer();
    return m_blocks.empty() ? m_droppedBlocks * m_growBytes
                            : blockStart(m_blocks.size() - 1) + m_used;
}

uint64_t ZkMemStreamBuf::getRemains() const noexcept {
    return static_cast<uint64_t>(egptr() - gptr());
}

void ZkMemStreamBuf::clear() {
    freeBlocks();
    while (!m_sources.empty())
        dropSource();
    m_keepMemory = true;
}

void ZkMemStreamBuf::remove() {
    while (!m_sources.empty())
        dropSource();
    if (m_blocks.empty()) {
        freeBlocks();
        return;
    }
    char* first = m_blocks.front();
    m_blocks.pop_front();
    freeBlocks();
    m_blocks.push_back(first);
    setGetArea(0, 0);
    setPutArea(0, 0);
}

void ZkMemStreamBuf::abandonBuffer() {
    freeBlocks();
}

// ---- the streambuf interface ----

ZkMemStreamBuf::int_type ZkMemStreamBuf::underflow() {
    flushBuffer();
    if (!eback()) {
        if (m_blocks.empty() && !pullBlock())
            return traits_type::eof();
        if (m_blocks.empty() || m_droppedBlocks != 0)
            return traits_type::eof();
        setGetArea(0, 0);
    }
    for (;;) {
        if (gptr() < egptr())
            return traits_type::to_int_type(*gptr());
        const uint64_t fill = fillOf(m_getIndex);
        // Bytes written since the area was set may have extended the last block.
        if (static_cast<uint64_t>(gptr() - eback()) < fill) {
            setg(eback(), gptr(), eback() + fill);
            continue;
        }
        if (m_getIndex + 1 < m_blocks.size()) {
            setGetArea(m_getIndex + 1, 0);
            continue;
        }
        if (m_sources.empty())
            return traits_type::eof();
        if (fill < m_growBytes) {
            fillLastBlock();
            continue;
        }
        appendBuffer(m_keepMemory);
        setGetArea(m_blocks.size() - 1, 0);
    }
}

void ZkMemStreamBuf::advancePut() {
    // The put block is written to its end.
    if (m_putIndex + 1 == m_blocks.size())
        m_used = m_growBytes;
    const uint64_t next = m_putIndex + 1;
    if (next >= m_blocks.size())
        appendBuffer(true);
    setPutArea(next, 0);
}

ZkMemStreamBuf::int_type ZkMemStreamBuf::overflow(int_type c) {
    if (traits_type::eq_int_type(c, traits_type::eof())) {
        flushBuffer();
        return traits_type::not_eof(c);
    }
    if (!pbase() && seekpos(0, std::ios_base::out) == pos_type(off_type(-1)))
        return traits_type::eof();
    *pptr() = traits_type::to_char_type(c);
    pbump(1);
    if (static_cast<uint64_t>(pptr() - pbase()) == m_growBytes)
        advancePut();
    return c;
}

std::streamsize ZkMemStreamBuf::xsputn(const char_type* data, std::streamsize count) {
    std::streamsize done = 0;
    while (done < count) {
        if (!pbase() && seekpos(0, std::ios_base::out) == pos_type(off_type(-1)))
            break;
        const auto room = static_cast<std::streamsize>(m_growBytes) - (pptr() - pbase());
        const std::streamsize length = std::min(room, count - done);
        std::memcpy(pptr(), data + done, static_cast<size_t>(length));
        done += length;
        if (length == room)
            advancePut();
        else
            pbump(static_cast<int>(length));
    }
    return done;
}

std::streamsize ZkMemStreamBuf::xsgetn(char_type* target, std::streamsize count) {
    std::streamsize done = 0;
    while (done < count) {
        if (gptr() == egptr() && traits_type::eq_int_type(underflow(), traits_type::eof()))
            break;
        const std::streamsize length = std::min<std::streamsize>(egptr() - gptr(), count - done);
        std::memcpy(target + done, gptr(), static_cast<size_t>(length));
        setg(eback(), gptr() + length, egptr());
        done += length;
    }
    return done;
}

ZkMemStreamBuf::int_type ZkMemStreamBuf::pbackfail(int_type c) {
    if (!eback())
        return traits_type::eof();
    if (gptr() == eback()) {
        if (m_getIndex == 0)
            return traits_type::eof();
        setGetArea(m_getIndex - 1, m_growBytes);
    }
    gbump(-1);
    if (!traits_type::eq_int_type(c, traits_type::eof()))
        *gptr() = traits_type::to_char_type(c);
    return traits_type::not_eof(c);
}

std::streamsize ZkMemStreamBuf::showmanyc() {
    flushBuffer();
    if (eback() && gptr() < egptr())
        return egptr() - gptr();
    const uint64_t position = getPosition();
    return position < length() || !m_sources.empty() ? 0 : -1;
}

int ZkMemStreamBuf::sync() {
    flushBuffer();
    return 0;
}

ZkMemStreamBuf::pos_type ZkMemStreamBuf::seekpos(pos_type position, std::ios_base::openmode mode) {
    const pos_type failed(off_type(-1));
    const auto target = static_cast<off_type>(position);
    const bool in = (mode & std::ios_base::in) != 0;
    const bool out = (mode & std::ios_base::out) != 0;
    if (target < 0 || (!in && !out))
        return failed;
    const auto wanted = static_cast<uint64_t>(target);
    flushBuffer();
    if (m_blocks.empty())
        appendBuffer(true);
    uint64_t total = length();
    while (wanted >= total && pullBlock())
        total = length();
    if (wanted > total && !out)
        return failed;
    if (wanted < m_droppedBlocks * m_growBytes)
        return failed;
    uint64_t index = 0, offset = 0;
    locate(wanted, index, offset);
    if (out) {
        // Writing past the end makes the blocks in between.
        while (index >= m_blocks.size())
            appendBuffer(true);
        setPutArea(index, offset);
    }
    if (in) {
        // The end of a full last block is its own end, not the start of a missing block.
        if (index >= m_blocks.size())
            setGetArea(m_blocks.size() - 1, m_growBytes);
        else
            setGetArea(index, offset);
    }
    return position;
}

ZkMemStreamBuf::pos_type ZkMemStreamBuf::seekoff(off_type offset, std::ios_base::seekdir direction,
                                                 std::ios_base::openmode mode) {
    const pos_type failed(off_type(-1));
    const bool in = (mode & std::ios_base::in) != 0;
    const bool out = (mode & std::ios_base::out) != 0;
    uint64_t base = 0;
    if (direction == std::ios_base::cur) {
        // As std::stringbuf: a relative move of both positions at once is ambiguous.
        if (in == out)
            return failed;
        base = in ? getPosition() : putPosition();
        if (offset == 0)
            return pos_type(off_type(base));
    } else if (direction == std::ios_base::end) {
        pullAll(); // only now is the end known
        base = length();
    }
    if (offset < 0 && static_cast<uint64_t>(-offset) > base)
        return failed;
    const uint64_t target = base + static_cast<uint64_t>(offset);
    if (target > static_cast<uint64_t>(std::numeric_limits<off_type>::max()))
        return failed;
    return seekpos(pos_type(off_type(target)), mode);
}

// ---- whole-content operations ----

uint64_t ZkMemStreamBuf::copyStream(std::istream& source, uint64_t length) {
    uint64_t done = 0;
    while (done < length) {
        if (!pbase() && seekpos(0, std::ios_base::out) == pos_type(off_type(-1)))
            break;
        const uint64_t room = m_growBytes - static_cast<uint64_t>(pptr() - pbase());
        const uint64_t wanted = std::min(room, length - done);
        source.read(pptr(), static_cast<std::streamsize>(wanted));
        const auto got = std::min<uint64_t>(
            static_cast<uint64_t>(std::max<std::streamsize>(source.gcount(), 0)), wanted);
        done += got;
        if (got == room)
            advancePut();
        else
            pbump(static_cast<int>(got));
        if (got < wanted)
            break;
    }
    flushBuffer();
    return done;
}

void ZkMemStreamBuf::appendToString(std::string& target) {
    pullAll();
    flushBuffer();
    target.reserve(target.size() + (length() - m_droppedBlocks * m_growBytes));
    for (uint64_t i = 0; i < m_blocks.size(); ++i)
        target.append(m_blocks[i], fillOf(i));
}

uint64_t ZkMemStreamBuf::getBuffer(const char*& data) {
    flushBuffer();
    if ((!eback() || gptr() == egptr()) &&
        traits_type::eq_int_type(underflow(), traits_type::eof())) {
        data = gptr();
        return 0;
    }
    data = gptr();
    return static_cast<uint64_t>(egptr() - gptr());
}

void ZkMemStreamBuf::trim(uint64_t length) {
    pullAll();
    flushBuffer();
    const uint64_t total = this->length();
    if (length >= total)
        return;
    const bool hadGet = eback() != nullptr;
    const bool hadPut = pbase() != nullptr;
    const uint64_t getAt = std::min(getPosition(), length);
    const uint64_t putAt = std::min(putPosition(), length);
    const uint64_t base = m_droppedBlocks * m_growBytes;
    if (length == 0 && base == 0) {
        freeBlocks();
        return;
    }
    // Recycled bytes are gone already; the cut cannot reach before them.
    length = std::max(length, base);
    const uint64_t kept = length - base;
    const uint64_t keepBlocks = std::max<uint64_t>(1, (kept + m_growBytes - 1) / m_growBytes);
    while (m_blocks.size() > keepBlocks) {
        delete[] m_blocks.back();
        m_blocks.pop_back();
    }
    m_used = kept - (keepBlocks - 1) * m_growBytes;
    setg(nullptr, nullptr, nullptr);
    setp(nullptr, nullptr);
    uint64_t index = 0, offset = 0;
    if (hadGet && getAt >= base) {
        locate(getAt, index, offset);
        if (index >= m_blocks.size())
            setGetArea(m_blocks.size() - 1, m_growBytes);
        else
            setGetArea(index, offset);
    }
    if (hadPut && putAt >= base) {
        locate(putAt, index, offset);
        if (index >= m_blocks.size())
            appendBuffer(true);
        setPutArea(index, offset);
    }
}

uint32_t ZkMemStreamBuf::calcOTFTableChecksum() {
    pullAll();
    flushBuffer();
    uint32_t sum = 0;
    uint32_t word = 0;
    int pending = 0; // bytes of a word that began in an earlier block
    for (uint64_t i = 0; i < m_blocks.size(); ++i) {
        const char* block = m_blocks[i];
        const uint64_t fill = fillOf(i);
        uint64_t at = 0;
        for (; pending != 0 && at < fill; ++at) {
            word = word << 8 | static_cast<unsigned char>(block[at]);
            if (++pending == 4) {
                sum += word;
                word = 0;
                pending = 0;
            }
        }
        for (; at + 4 <= fill; at += 4)
            sum += readBigEndian32(block + at);
        for (; at < fill; ++at, ++pending)
            word = word << 8 | static_cast<unsigned char>(block[at]);
    }
    if (pending != 0)
        sum += word << (8 * (4 - pending));
    return sum;
}

// ---- searches ----

bool ZkMemStreamBuf::getCursor(Cursor& cursor) {
    flushBuffer();
    if (eback()) {
        cursor = {m_getIndex, static_cast<uint64_t>(gptr() - eback())};
        return true;
    }
    if (m_blocks.empty() && !pullBlock())
        return false;
    if (m_blocks.empty() || m_droppedBlocks != 0)
        return false;
    cursor = {0, 0};
    return true;
}

bool ZkMemStreamBuf::settle(Cursor& cursor) {
    while (cursor.offset >= fillOf(cursor.index)) {
        if (cursor.index + 1 < m_blocks.size()) {
            ++cursor.index;
            cursor.offset = 0;
        } else if (!pullBlock()) {
            cursor.offset = fillOf(cursor.index);
            return false;
        }
    }
    return true;
}

bool ZkMemStreamBuf::matchAt(Cursor& cursor, const char* pattern, uint64_t length) {
    Cursor at = cursor;
    uint64_t matched = 0;
    while (matched < length) {
        if (!settle(at))
            return false;
        const uint64_t run = std::min(fillOf(at.index) - at.offset, length - matched);
        if (std::memcmp(m_blocks[at.index] + at.offset, pattern + matched, run) != 0)
            return false;
        matched += run;
        at.offset += run;
    }
    cursor = at;
    return true;
}

bool ZkMemStreamBuf::searchSeek(const char* pattern, uint64_t length) {
    if (!pattern)
        return false;
    if (length == 0)
        length = std::strlen(pattern);
    Cursor cursor{0, 0};
    if (length == 0 || !getCursor(cursor))
        return false;
    while (settle(cursor)) {
        const char* block = m_blocks[cursor.index];
        const uint64_t fill = fillOf(cursor.index);
        const void* hit = std::memchr(block + cursor.offset, pattern[0], fill - cursor.offset);
        if (!hit) {
            cursor.offset = fill;
            continue;
        }
        cursor.offset = static_cast<uint64_t>(static_cast<const char*>(hit) - block);
        Cursor end = cursor;
        if (matchAt(end, pattern, length)) {
            setGetArea(cursor.index, cursor.offset);
            return true;
        }
        ++cursor.offset;
    }
    return false;
}

bool ZkMemStreamBuf::skipSeek(const char* pattern, uint64_t length) {
    if (!pattern)
        return false;
    if (length == 0)
        length = std::strlen(pattern);
    Cursor cursor{0, 0};
    if (length == 0 || !getCursor(cursor) || !matchAt(cursor, pattern, length))
        return false;
    setGetArea(cursor.index, cursor.offset);
    return true;
}

void ZkMemStreamBuf::seekEOL() {
    Cursor cursor{0, 0};
    if (!getCursor(cursor))
        return;
    bool inRun = false;
    while (settle(cursor)) {
        const char* block = m_blocks[cursor.index];
        const uint64_t fill = fillOf(cursor.index);
        while (cursor.offset < fill && isLineEnd(block[cursor.offset]) == inRun)
            ++cursor.offset;
        if (cursor.offset < fill) {
            if (inRun)
                break;
            inRun = true;
        }
    }
    setGetArea(cursor.index, cursor.offset);
}

// ---- copying ----

void ZkMemStreamBuf::copyFrom(ZkMemStreamBuf& other) {
    other.pullAll();
    other.flushBuffer();
    clear();
    m_growBytes = other.m_growBytes;
    m_keepMemory = other.m_keepMemory;
    for (uint64_t i = 0; i < other.m_blocks.size(); ++i) {
        char* block = new char[m_growBytes];
        m_blocks.push_back(block);
        std::memcpy(block, other.m_blocks[i], other.fillOf(i));
    }
    m_used = other.m_used;
    m_droppedBlocks = other.m_droppedBlocks;
    if (other.eback())
        setGetArea(other.m_getIndex, static_cast<uint64_t>(other.gptr() - other.eback()));
    if (other.pbase())
        setPutArea(other.m_putIndex, static_cast<uint64_t>(other.pptr() - other.pbase()));
}

} // namespace ZkCommonNS
