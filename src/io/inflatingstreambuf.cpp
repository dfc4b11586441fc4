// The reading half shared by the decompressing stream buffers: buffering with a putback area,
// large reads straight into the caller's memory, and seeking.
#include "zkcommon/io/gzipstream.h"

#include <algorithm>
#include <cstring>

namespace ZkCommonNS {
namespace detail {

namespace {
// The largest piece asked of produce in one call (zlib's counts are 32-bit).
constexpr long kMaxPiece = 1L << 30;
} // namespace

InflatingStreamBuf::InflatingStreamBuf() {
    setg(m_buffer + kPutback, m_buffer + kPutback, m_buffer + kPutback);
}

InflatingStreamBuf::~InflatingStreamBuf() = default;

void InflatingStreamBuf::startOver() {
    setg(m_buffer + kPutback, m_buffer + kPutback, m_buffer + kPutback);
    m_outputEnd = 0;
    m_ended = m_dataError = false;
}

// The owning stream learns of damage only when the bytes decoded before it have all been
// delivered, so that nothing good is withheld.
InflatingStreamBuf::int_type InflatingStreamBuf::endOfData() {
    if (m_dataError && m_owner)
        m_owner->setstate(std::ios_base::badbit);
    return traits_type::eof();
}

InflatingStreamBuf::int_type InflatingStreamBuf::underflow() {
    if (gptr() < egptr())
        return traits_type::to_int_type(*gptr());
    // Keep the last bytes read as a putback area in front of the new ones.
    const long keep = std::min<long>(gptr() - eback(), kPutback);
    std::memmove(m_buffer + kPutback - keep, gptr() - keep, static_cast<size_t>(keep));
    const long made = produce(m_buffer + kPutback, kCapacity);
    setg(m_buffer + kPutback - keep, m_buffer + kPutback, m_buffer + kPutback + made);
    m_outputEnd += static_cast<unsigned long long>(made);
    return made > 0 ? traits_type::to_int_type(*gptr()) : endOfData();
}

// Large reads decompress straight into the caller's memory; the putback area is then taken
// from the tail of what was delivered.
std::streamsize InflatingStreamBuf::xsgetn(char* data, std::streamsize count) {
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

InflatingStreamBuf::pos_type InflatingStreamBuf::seekoff(off_type offset,
                                                         std::ios_base::seekdir way,
                                                         std::ios_base::openmode which) {
    const off_type here = static_cast<off_type>(m_outputEnd) - (egptr() - gptr());
    if (way == std::ios_base::cur)
        return seekpos(pos_type(here + offset), which);
    if (way == std::ios_base::beg)
        return seekpos(pos_type(offset), which);
    return pos_type(off_type(-1));
}

InflatingStreamBuf::pos_type InflatingStreamBuf::seekpos(pos_type position,
                                                         std::ios_base::openmode which) {
    const off_type target = off_type(position);
    if (!(which & std::ios_base::in) || target < 0 || !canSeek())
        return pos_type(off_type(-1));
    const off_type end = static_cast<off_type>(m_outputEnd);
    const off_type begin = end - (egptr() - eback());
    if (target >= begin && target <= end) {
        setg(eback(), egptr() - (end - target), egptr());
        return position;
    }
    if (target < begin && !rewind())
        return pos_type(off_type(-1));
    for (;;) {
        const off_type here = static_cast<off_type>(m_outputEnd) - (egptr() - gptr());
        if (here == target)
            return position;
        if (gptr() == egptr() && traits_type::eq_int_type(underflow(), traits_type::eof()))
            return pos_type(off_type(-1));
        gbump(static_cast<int>(std::min<off_type>(egptr() - gptr(), target - here)));
    }
}

} // namespace detail
} // namespace ZkCommonNS
