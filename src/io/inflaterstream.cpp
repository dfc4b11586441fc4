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
    setg(m_buffer + kPutback, m_buffer + kPutback, m_buffer + kPutback);
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
    m_outputEnd = 0;
    m_ended = m_size == 0;
    m_dataError = false;
    setg(m_buffer + kPutback, m_buffer + kPutback, m_buffer + kPutback);
}

void ZkInflaterStreamBuf::fail() {
    m_dataError = true;
    m_ended = true;
}

// The owning stream learns of damage only when the bytes decoded before it have all been
// delivered, so that nothing good is withheld.
ZkInflaterStreamBuf::int_type ZkInflaterStreamBuf::endOfData() {
    if (m_dataError && m_owner)
        m_owner->setstate(std::ios_base::badbit);
    return traits_type::eof();
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

ZkInflaterStreamBuf::int_type ZkInflaterStreamBuf::underflow() {
    if (gptr() < egptr())
        return traits_type::to_int_type(*gptr());
    const long keep = std::min<long>(gptr() - eback(), kPutback);
    std::memmove(m_buffer + kPutback - keep, gptr() - keep, static_cast<size_t>(keep));
    const long made = produce(m_buffer + kPutback, kCapacity);
    setg(m_buffer + kPutback - keep, m_buffer + kPutback, m_buffer + kPutback + made);
    m_outputEnd += static_cast<unsigned long long>(made);
    return made > 0 ? traits_type::to_int_type(*gptr()) : endOfData();
}

std::streamsize ZkInflaterStreamBuf::xsgetn(char* data, std::streamsize count) {
    std::streamsize done = 0;
    while (done < count) {
        if (gptr() < egptr()) {
            std::streamsize step = std::min<std::streamsize>(egptr() - gptr(), count - done);
            std::memcpy(data + done, gptr(), static_cast<size_t>(step));
            gbump(static_cast<int>(step));
            done += step;
            continue;
        }
        if (count - done < kCapacity) {
            if (traits_type::eq_int_type(underflow(), traits_type::eof()))
                break;
            continue;
        }
        const long made = produce(
            data + done, static_cast<long>(std::min<std::streamsize>(count - done, kMaxPiece)));
        if (made <= 0) {
            endOfData();
            break;
        }
        const long keep = std::min<long>(made, kPutback);
        std::memcpy(m_buffer + kPutback - keep, data + done + made - keep,
                    static_cast<size_t>(keep));
        setg(m_buffer + kPutback - keep, m_buffer + kPutback, m_buffer + kPutback);
        m_outputEnd += static_cast<unsigned long long>(made);
        done += made;
    }
    return done;
}

ZkInflaterStreamBuf::pos_type ZkInflaterStreamBuf::seekoff(off_type offset,
                                                           std::ios_base::seekdir way,
                                                           std::ios_base::openmode which) {
    const off_type here = static_cast<off_type>(m_outputEnd) - (egptr() - gptr());
    if (way == std::ios_base::cur)
        return seekpos(pos_type(here + offset), which);
    if (way == std::ios_base::beg)
        return seekpos(pos_type(offset), which);
    return pos_type(off_type(-1));
}

ZkInflaterStreamBuf::pos_type ZkInflaterStreamBuf::seekpos(pos_type position,
                                                           std::ios_base::openmode which) {
    const off_type target = off_type(position);
    if (!(which & std::ios_base::in) || target < 0 || !m_zlib)
        return pos_type(off_type(-1));
    const off_type end = static_cast<off_type>(m_outputEnd);
    const off_type begin = end - (egptr() - eback());
    if (target >= begin && target <= end) {
        setg(eback(), egptr() - (end - target), egptr());
        return position;
    }
    if (target < begin)
        reset();
    for (;;) {
        const off_type here = static_cast<off_type>(m_outputEnd) - (egptr() - gptr());
        if (here == target)
            return position;
        if (gptr() == egptr() && traits_type::eq_int_type(underflow(), traits_type::eof()))
            return pos_type(off_type(-1));
        gbump(static_cast<int>(std::min<off_type>(egptr() - gptr(), target - here)));
    }
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
