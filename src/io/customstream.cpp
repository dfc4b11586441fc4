// ZkCustomStream over the application's controller, and ZkStrStream over a memory block.
#include "zkcommon/io/customstream.h"

#include "zkcommon/core/error.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace ZkCommonNS {

namespace {

// The buffer holds the put-back reserve, the read window behind it, then the put area.
constexpr int kGetCapacity = ZkCustomStreamBuf::kPutbackReserve + ZkCustomStreamBuf::kReadWindow;
constexpr int kBufferCapacity = kGetCapacity + ZkCustomStreamBuf::kWriteCapacity;

} // namespace

ZkCustomStreamController::~ZkCustomStreamController() = default;

int ZkCustomStreamController::read(char*, int) {
    return -1;
}

int ZkCustomStreamController::write(const char*, int) {
    return -1;
}

ZkCustomStreamBuf::ZkCustomStreamBuf(ZkCustomStreamController* controller)
    : m_buffer(new char[kBufferCapacity]), m_controller(controller) {
    // The put area is one byte short of its room, so that overflow can always store its
    // character before handing the run over.
    char* put = m_buffer + kGetCapacity;
    setp(put, put + kWriteCapacity - 1);
}

ZkCustomStreamBuf::~ZkCustomStreamBuf() {
    flushBuffer();
    delete[] m_buffer;
}

int ZkCustomStreamBuf::flushBuffer() {
    const std::ptrdiff_t pending = pptr() - pbase();
    if (pending <= 0)
        return 0;
    if (!m_controller || m_controller->write(pbase(), static_cast<int>(pending)) < 0)
        return -1;
    m_position += pending;
    setp(pbase(), epptr());
    return 0;
}

int ZkCustomStreamBuf::close() {
    if (!m_buffer)
        return 0;
    const int result = flushBuffer();
    delete[] m_buffer;
    m_buffer = nullptr;
    setg(nullptr, nullptr, nullptr);
    setp(nullptr, nullptr);
    return result;
}

ZkCustomStreamBuf::int_type ZkCustomStreamBuf::underflow() {
    if (!m_buffer || !m_controller)
        return traits_type::eof();
    if (gptr() < egptr())
        return traits_type::to_int_type(*gptr());
    // Keep the last bytes read in front of the new window, so they can still be put back.
    char* window = m_buffer + kPutbackReserve;
    std::ptrdiff_t keep = 0;
    if (eback()) {
        keep = std::min<std::ptrdiff_t>(kPutbackReserve, gptr() - eback());
        std::memmove(window - keep, gptr() - keep, static_cast<size_t>(keep));
    }
    int length = m_controller->read(window, kReadWindow);
    if (length <= 0) {
        setg(window - keep, window, window);
        return traits_type::eof();
    }
    length = std::min(length, kReadWindow); // a controller that claims more gets no more
    m_readLength += length;
    setg(window - keep, window, window + length);
    return traits_type::to_int_type(*gptr());
}

ZkCustomStreamBuf::int_type ZkCustomStreamBuf::overflow(int_type c) {
    if (!m_buffer)
        return traits_type::eof();
    if (traits_type::eq_int_type(c, traits_type::eof()))
        return flushBuffer() == 0 ? traits_type::not_eof(c) : traits_type::eof();
    *pptr() = traits_type::to_char_type(c);
    pbump(1);
    if (flushBuffer() != 0) {
        pbump(-1); // the character is not taken
        return traits_type::eof();
    }
    return c;
}

int ZkCustomStreamBuf::sync() {
    return flushBuffer() == 0 ? 0 : -1;
}

ZkCustomStreamBuf::pos_type ZkCustomStreamBuf::seekoff(off_type, std::ios_base::seekdir,
                                                       std::ios_base::openmode mode) {
    // The channel cannot move; a seek reports where the stream stands.
    if (mode & std::ios_base::in)
        return pos_type(off_type(m_readLength - (egptr() - gptr())));
    return pos_type(off_type(m_position + (pptr() - pbase())));
}

ZkCustomStreamBuf::pos_type ZkCustomStreamBuf::seekpos(pos_type, std::ios_base::openmode mode) {
    return seekoff(0, std::ios_base::cur, mode);
}

ZkCustomStream::ZkCustomStream(ZkCustomStreamController* controller)
    : std::iostream(nullptr), m_buffer(controller) {
    init(&m_buffer);
}

ZkCustomStream::~ZkCustomStream() = default;

void ZkCustomStream::close() {
    if (!m_buffer.is_open())
        return;
    const int flushed = m_buffer.close();
    ZkCustomStreamController* controller = m_buffer.getController();
    const int closed = controller ? controller->close() : 0;
    if (flushed < 0 || closed < 0)
        setstate(std::ios_base::badbit);
}

ZkStrStream::StrStreamBuf::StrStreamBuf(const char* data, uint64_t length, bool copy, bool own)
    : m_data(data), m_length(data ? length : 0), m_owns(own && data) {
    if (copy && data) {
        char* block = nullptr;
        try {
            block = new char[m_length ? m_length : 1];
        } catch (std::bad_alloc& e) {
            if (own)
                delete[] data;
            throw ZkError(e, UnicodeString());
        }
        std::memcpy(block, data, m_length);
        if (own)
            delete[] data;
        m_data = block;
        m_owns = true;
    }
    char* start = const_cast<char*>(m_data); // the get area is never written
    setg(start, start, start + m_length);
}

ZkStrStream::StrStreamBuf::~StrStreamBuf() {
    if (m_owns)
        delete[] m_data;
}

ZkStrStream::StrStreamBuf::int_type ZkStrStream::StrStreamBuf::underflow() {
    return gptr() < egptr() ? traits_type::to_int_type(*gptr()) : traits_type::eof();
}

ZkStrStream::StrStreamBuf::int_type ZkStrStream::StrStreamBuf::pbackfail(int_type c) {
    if (gptr() == eback())
        return traits_type::eof();
    if (traits_type::eq_int_type(c, traits_type::eof())) {
        gbump(-1);
        return traits_type::not_eof(c);
    }
    if (!traits_type::eq(traits_type::to_char_type(c), gptr()[-1]))
        return traits_type::eof();
    gbump(-1);
    return c;
}

std::streamsize ZkStrStream::StrStreamBuf::showmanyc() {
    const std::streamsize left = egptr() - gptr();
    return left > 0 ? left : -1;
}

std::streamsize ZkStrStream::StrStreamBuf::xsgetn(char_type* target, std::streamsize count) {
    const std::streamsize length = std::min<std::streamsize>(count, egptr() - gptr());
    if (length <= 0)
        return 0;
    std::memcpy(target, gptr(), static_cast<size_t>(length));
    setg(eback(), gptr() + length, egptr());
    return length;
}

ZkStrStream::StrStreamBuf::pos_type
ZkStrStream::StrStreamBuf::seekoff(off_type offset, std::ios_base::seekdir direction,
                                   std::ios_base::openmode mode) {
    if (mode & std::ios_base::out)
        return pos_type(off_type(-1));
    off_type base = 0;
    if (direction == std::ios_base::cur)
        base = gptr() - eback();
    else if (direction == std::ios_base::end)
        base = static_cast<off_type>(m_length);
    // Both bounds are checked before adding, so that no offset can overflow the sum.
    if ((offset < 0 && -offset > base) ||
        (offset > 0 && static_cast<uint64_t>(offset) > m_length - static_cast<uint64_t>(base)))
        return pos_type(off_type(-1));
    const off_type position = base + offset;
    setg(eback(), eback() + position, egptr());
    return pos_type(position);
}

ZkStrStream::StrStreamBuf::pos_type
ZkStrStream::StrStreamBuf::seekpos(pos_type position, std::ios_base::openmode mode) {
    return seekoff(off_type(position), std::ios_base::beg, mode);
}

ZkStrStream::ZkStrStream(const char* data, uint64_t length, bool copy, bool own)
    : std::istream(nullptr), m_buffer(data, length, copy, own) {
    init(&m_buffer);
}

ZkStrStream::~ZkStrStream() = default;

} // namespace ZkCommonNS
