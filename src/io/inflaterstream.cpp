// ZkInflaterStream: raw deflate data in memory read as a stream, with rewinding and seeking.
#include "io/zlibstream.h"
#include "zkcommon/io/gzipstream.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <zlib.h>

namespace ZkCommonNS {

namespace {
constexpr long kMaxPiece = 1L << 30;
}

ZkInflaterStreamBuf::ZkInflaterStreamBuf(const char* data, unsigned long long size, bool copy)
    : m_zlib(new detail::ZlibStream), m_data(data), m_size(data ? size : 0) {
    if (copy && m_size > 0) {
        m_copy.reset(new (std::nothrow) char[m_size]);
        if (!m_copy) {
            m_zlib.reset();
            fail();
            return;
        }
        std::memcpy(m_copy.get(), data, m_size);
        m_data = m_copy.get();
    }
    if (::inflateInit2(&m_zlib->stream, -MAX_WBITS) != Z_OK) {
        m_zlib.reset();
        fail();
        return;
    }
    // No bytes at all are an empty member, not a damaged one.
    m_ended = m_size == 0;
}

ZkInflaterStreamBuf::~ZkInflaterStreamBuf() {
    if (m_zlib)
        ::inflateEnd(&m_zlib->stream);
}

void ZkInflaterStreamBuf::reset() {
    if (!m_zlib)
        return; // the decompressor or the copy never came to be: stays failed
    ::inflateReset(&m_zlib->stream);
    m_zlib->stream.avail_in = 0;
    m_fed = 0;
    startOver();
    m_ended = m_size == 0;
}

long ZkInflaterStreamBuf::produce(char* target, long capacity) {
    if (m_ended || !m_zlib)
        return 0;
    z_stream& zs = m_zlib->stream;
    zs.next_out = reinterpret_cast<Bytef*>(target);
    zs.avail_out = static_cast<uInt>(std::min(capacity, kMaxPiece));
    const uInt requested = zs.avail_out;
    while (zs.avail_out > 0 && !m_ended) {
        if (zs.avail_in == 0 && m_fed < m_size) {
            const unsigned long long slice = std::min(m_size - m_fed, detail::kZlibSlice);
            zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(m_data + m_fed));
            zs.avail_in = static_cast<uInt>(slice);
            m_fed += slice;
        }
        const int status = ::inflate(&zs, Z_NO_FLUSH);
        if (status == Z_STREAM_END) {
            m_ended = true; // bytes after the end of the deflate data are not ours
            break;
        }
        if (status == Z_OK || (status == Z_BUF_ERROR && zs.avail_out == 0))
            continue;
        if (status == Z_BUF_ERROR && zs.avail_in == 0 && m_fed < m_size)
            continue;
        // Damaged blocks, or the data stopped before the final block.
        fail();
    }
    return static_cast<long>(requested - zs.avail_out);
}

bool ZkInflaterStreamBuf::canSeek() const {
    return m_zlib != nullptr;
}

bool ZkInflaterStreamBuf::rewind() {
    reset();
    return true;
}

ZkInflaterStream::ZkInflaterStream(const char* data, unsigned long long size, bool copy)
    : std::istream(nullptr), m_buffer(data, size, copy) {
    init(&m_buffer);
    m_buffer.m_owner = this;
    if (m_buffer.isDataError())
        setstate(std::ios_base::badbit);
}

ZkInflaterStream::~ZkInflaterStream() = default;

void ZkInflaterStream::reset() {
    m_buffer.reset();
    clear();
}

} // namespace ZkCommonNS
