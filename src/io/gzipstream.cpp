// ZkGzipIStream and ZkGzipOStream: gzip decompression from a stream (header read by hand, raw
// inflate behind it) or a file (zlib's gz reader), and gzip compression into a stream or file.
#include "zkcommon/io/gzipstream.h"

#include "io/platform.h"
#include "io/zlibstream.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <fstream>
#include <zlib.h>

namespace ZkCommonNS {

namespace {

// RFC 1952, 2.3: the member header.
constexpr int kMagic1 = 31;
constexpr int kMagic2 = 139;
constexpr int kMethodDeflate = 8;
constexpr int kFlagHeaderCrc = 2;
constexpr int kFlagExtra = 4;
constexpr int kFlagName = 8;
constexpr int kFlagComment = 16;
constexpr int kFlagReserved = 0xE0;
constexpr int kFixedHeaderLength = 10;
constexpr int kTrailerLength = 8;

// The largest piece handed to one zlib or gzread call (their counts are 32-bit).
constexpr long kMaxPiece = 1L << 30;
constexpr unsigned kFileBuffer = 65536;

uint32_t readLittle32(const unsigned char* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// ZkGzipIStreamBuf

ZkGzipIStreamBuf::ZkGzipIStreamBuf(std::istream& source)
    : m_source(&source), m_zlib(new detail::ZlibStream) {
    start();
}

ZkGzipIStreamBuf::ZkGzipIStreamBuf(const UnicodeString& path) {
    // A FIFO or a device would block or never end: only regular files are read.
    if (!detail::platform::isRegularFile(path))
        return;
    m_path = detail::platform::nativePath(path);
    if (m_path.empty())
        return;
    m_file = ::gzopen(m_path.c_str(), "rb");
    if (!m_file)
        return;
    // zlib's reader inflates into twice this size before copying out: larger windows than
    // its 8 KB default mean fewer reads of the file and longer runs of its fast decoder.
    ::gzbuffer(static_cast<gzFile>(m_file), kFileBuffer);
    m_mode = Mode::kFile;
    m_header = ::gzdirect(static_cast<gzFile>(m_file)) == 0;
}

ZkGzipIStreamBuf::~ZkGzipIStreamBuf() {
    if (m_file)
        ::gzclose(static_cast<gzFile>(m_file));
    if (m_inflateReady)
        ::inflateEnd(&m_zlib->stream);
}

// Reads the member header from the source's start and chooses between inflating and passing
// the bytes through.
void ZkGzipIStreamBuf::start() {
    startOver();
    m_header = m_sourceEnded = false;
    m_crc = m_memberLength = 0;
    z_stream& zs = m_zlib->stream;
    zs.next_in = reinterpret_cast<Bytef*>(m_input);
    zs.avail_in = 0;
    m_source->clear();
    m_source->seekg(0);
    if (m_source->fail())
        m_source->clear(); // a pipe cannot seek: read on from where it stands
    // The header is parsed in the input buffer, so bytes that turn out not to be one stay
    // there as data: no seeking back is needed, and unseekable sources work too.
    if (!checkHeader()) {
        m_mode = Mode::kPlain;
        return;
    }
    m_header = true;
    m_mode = Mode::kInflate;
    if (m_dataError)
        return;
    int status = m_inflateReady ? ::inflateReset(&zs) : ::inflateInit2(&zs, -MAX_WBITS);
    m_inflateReady = m_inflateReady || status == Z_OK;
    if (status != Z_OK)
        fail();
}

// Makes at least `count` bytes (at most the input capacity) available from the source;
// false when the source ends first.
bool ZkGzipIStreamBuf::ensure(unsigned int count) {
    z_stream& zs = m_zlib->stream;
    if (zs.avail_in >= count)
        return true;
    if (m_sourceEnded)
        return false;
    std::memmove(m_input, zs.next_in, zs.avail_in);
    zs.next_in = reinterpret_cast<Bytef*>(m_input);
    while (zs.avail_in < count && !m_sourceEnded) {
        m_source->read(m_input + zs.avail_in, kInputCapacity - zs.avail_in);
        zs.avail_in += static_cast<uInt>(m_source->gcount());
        if (!m_source->good())
            m_sourceEnded = true;
    }
    return zs.avail_in >= count;
}

int ZkGzipIStreamBuf::nextByte() {
    if (!ensure(1))
        return -1;
    z_stream& zs = m_zlib->stream;
    --zs.avail_in;
    return *zs.next_in++;
}

bool ZkGzipIStreamBuf::skipBytes(unsigned long length) {
    z_stream& zs = m_zlib->stream;
    while (length > 0) {
        if (!ensure(1))
            return false;
        uInt step = static_cast<uInt>(std::min<unsigned long>(zs.avail_in, length));
        zs.next_in += step;
        zs.avail_in -= step;
        length -= step;
    }
    return true;
}

bool ZkGzipIStreamBuf::skipString() {
    z_stream& zs = m_zlib->stream;
    for (;;) {
        if (!ensure(1))
            return false;
        const void* zero = std::memchr(zs.next_in, 0, zs.avail_in);
        uInt step = zero ? static_cast<uInt>(static_cast<const Bytef*>(zero) - zs.next_in) + 1
                         : zs.avail_in;
        zs.next_in += step;
        zs.avail_in -= step;
        if (zero)
            return true;
    }
}

// True when the next bytes are a gzip member header, which is then consumed. Magic bytes that
// are not followed by method 8 and clean flags are no header: they stay as data. A header cut
// short by the end of the source is a header all the same, of a damaged member.
bool ZkGzipIStreamBuf::checkHeader() {
    ensure(4);
    z_stream& zs = m_zlib->stream;
    const Bytef* p = zs.next_in;
    if (zs.avail_in < 4 || p[0] != kMagic1 || p[1] != kMagic2 || p[2] != kMethodDeflate ||
        (p[3] & kFlagReserved) != 0)
        return false;
    const int flags = p[3];
    bool whole = skipBytes(kFixedHeaderLength);
    if (whole && (flags & kFlagExtra)) {
        int low = nextByte();
        int high = nextByte();
        whole = high >= 0 && skipBytes(static_cast<unsigned long>(low | high << 8));
    }
    if (whole && (flags & kFlagName))
        whole = skipString();
    if (whole && (flags & kFlagComment))
        whole = skipString();
    if (whole && (flags & kFlagHeaderCrc))
        whole = skipBytes(2);
    if (!whole)
        fail();
    return true;
}

// Checks the trailer of the member that inflate just ended, and moves into a following member
// (gzip files may be concatenations). Bytes after the last member that are not a header are
// ignored, as gzip itself does.
bool ZkGzipIStreamBuf::finishMember() {
    if (!ensure(kTrailerLength)) {
        fail();
        return false;
    }
    z_stream& zs = m_zlib->stream;
    if (readLittle32(zs.next_in) != m_crc || readLittle32(zs.next_in + 4) != m_memberLength) {
        fail();
        return false;
    }
    zs.next_in += kTrailerLength;
    zs.avail_in -= kTrailerLength;
    if (!checkHeader()) {
        m_ended = true;
        return false;
    }
    if (m_dataError)
        return false;
    ::inflateReset(&zs);
    m_crc = m_memberLength = 0;
    return true;
}

long ZkGzipIStreamBuf::produceInflate(char* target, long capacity) {
    z_stream& zs = m_zlib->stream;
    zs.next_out = reinterpret_cast<Bytef*>(target);
    zs.avail_out = static_cast<uInt>(capacity);
    while (zs.avail_out > 0 && !m_ended) {
        if (zs.avail_in == 0)
            ensure(1);
        const int flush = zs.avail_in == 0 && m_sourceEnded ? Z_FINISH : Z_NO_FLUSH;
        Bytef* before = zs.next_out;
        const int status = ::inflate(&zs, flush);
        const uInt made = static_cast<uInt>(zs.next_out - before);
        m_crc = static_cast<uint32_t>(::crc32(m_crc, before, made));
        m_memberLength += made;
        if (status == Z_STREAM_END) {
            finishMember();
            continue;
        }
        if (status == Z_OK || (status == Z_BUF_ERROR && zs.avail_out == 0))
            continue;
        if (status == Z_BUF_ERROR && zs.avail_in == 0 && !m_sourceEnded)
            continue;
        // Damaged blocks, or the source ended inside the member.
        fail();
    }
    return capacity - static_cast<long>(zs.avail_out);
}

long ZkGzipIStreamBuf::produce(char* target, long capacity) {
    if (m_ended || m_mode == Mode::kClosed)
        return 0;
    capacity = std::min(capacity, kMaxPiece);
    switch (m_mode) {
    case Mode::kFile: {
        gzFile file = static_cast<gzFile>(m_file);
        int got = ::gzread(file, target, static_cast<unsigned>(capacity));
        if (got > 0)
            return got;
        // gzread reports a truncated member as a plain end; its error code tells them apart.
        int code = Z_OK;
        ::gzerror(file, &code);
        ::gzclose(file);
        m_file = nullptr;
        m_ended = true;
        if (got < 0 || (code != Z_OK && code != Z_STREAM_END))
            fail();
        return 0;
    }
    case Mode::kInflate:
        return produceInflate(target, capacity);
    case Mode::kPlain: {
        z_stream& zs = m_zlib->stream;
        long done = std::min<long>(zs.avail_in, capacity);
        std::memcpy(target, zs.next_in, static_cast<size_t>(done));
        zs.next_in += done;
        zs.avail_in -= static_cast<uInt>(done);
        if (done < capacity && !m_sourceEnded) {
            m_source->read(target + done, capacity - done);
            done += static_cast<long>(m_source->gcount());
            m_sourceEnded = !m_source->good();
        }
        if (done == 0)
            m_ended = true;
        return done;
    }
    case Mode::kClosed:
        break;
    }
    return 0;
}

bool ZkGzipIStreamBuf::canSeek() const {
    return m_mode != Mode::kClosed || !m_path.empty();
}

bool ZkGzipIStreamBuf::rewind() {
    if (m_mode == Mode::kFile || (m_mode == Mode::kClosed && !m_path.empty())) {
        if (m_file) {
            if (::gzrewind(static_cast<gzFile>(m_file)) != 0)
                return false;
        } else {
            m_file = ::gzopen(m_path.c_str(), "rb");
            if (!m_file)
                return false;
            ::gzbuffer(static_cast<gzFile>(m_file), kFileBuffer);
        }
        m_mode = Mode::kFile;
        startOver();
        return true;
    }
    if (!m_source)
        return false;
    m_source->clear();
    m_source->seekg(0);
    if (m_source->fail()) {
        m_source->clear();
        return false;
    }
    start();
    return true;
}

// ---------------------------------------------------------------------------------------------
// ZkGzipIStream

ZkGzipIStream::ZkGzipIStream(std::istream& source) : std::istream(nullptr), m_buffer(source) {
    attach();
}

ZkGzipIStream::ZkGzipIStream(const UnicodeString& path) : std::istream(nullptr), m_buffer(path) {
    attach();
}

ZkGzipIStream::ZkGzipIStream(const char* path)
    : ZkGzipIStream(path ? UnicodeString::fromUTF8(path) : UnicodeString()) {}

namespace {
UnicodeString fromWide(const wchar_t* path) {
    if (!path)
        return UnicodeString();
    if constexpr (sizeof(wchar_t) == 4)
        return UnicodeString::fromUTF32(reinterpret_cast<const UChar32*>(path), -1);
    else
        return UnicodeString(reinterpret_cast<const char16_t*>(path));
}
} // namespace

ZkGzipIStream::ZkGzipIStream(const wchar_t* path) : ZkGzipIStream(fromWide(path)) {}

ZkGzipIStream::~ZkGzipIStream() = default;

void ZkGzipIStream::attach() {
    init(&m_buffer);
    m_buffer.m_owner = this;
    if (!m_buffer.is_open())
        setstate(std::ios_base::failbit);
    else if (m_buffer.isDataError())
        setstate(std::ios_base::badbit);
}

// ---------------------------------------------------------------------------------------------
// ZkGzipOStreamBuf

ZkGzipOStreamBuf::ZkGzipOStreamBuf(std::ostream& target)
    : m_target(&target), m_zlib(new detail::ZlibStream) {
    startDeflate();
}

ZkGzipOStreamBuf::ZkGzipOStreamBuf(const UnicodeString& path) : m_zlib(new detail::ZlibStream) {
    setp(nullptr, nullptr);
    const std::string native = detail::platform::nativePath(path);
    if (native.empty())
        return;
    auto file = std::make_unique<std::ofstream>(native, std::ios_base::out | std::ios_base::binary |
                                                            std::ios_base::trunc);
    if (!file->is_open())
        return;
    m_target = file.release();
    m_ownsTarget = true;
    startDeflate();
}

ZkGzipOStreamBuf::~ZkGzipOStreamBuf() {
    if (m_active && encodeBuffer(Z_FINISH) == 0)
        m_target->flush();
    if (m_ownsTarget)
        delete m_target;
}

void ZkGzipOStreamBuf::startDeflate() {
    // Window bits 31: a 32 KB window with the gzip wrapper; memory level 9 for speed.
    m_active = ::deflateInit2(&m_zlib->stream, Z_BEST_COMPRESSION, Z_DEFLATED, MAX_WBITS + 16,
                              MAX_MEM_LEVEL, Z_DEFAULT_STRATEGY) == Z_OK;
    if (m_active)
        setp(m_put, m_put + kCapacity);
    else
        setp(nullptr, nullptr);
}

// Hands `length` bytes to deflate and writes each full output area. With Z_FINISH it runs to
// the member's end and releases the compressor. -1 on failure, which also releases it.
int ZkGzipOStreamBuf::encode(const char* data, size_t length, int flush) {
    z_stream& zs = m_zlib->stream;
    zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data));
    zs.avail_in = static_cast<uInt>(length);
    for (;;) {
        zs.next_out = reinterpret_cast<Bytef*>(m_output);
        zs.avail_out = kCapacity;
        const int status = ::deflate(&zs, flush);
        const size_t have = kCapacity - zs.avail_out;
        if (status == Z_STREAM_ERROR || (have > 0 && !m_target->write(m_output, have))) {
            ::deflateEnd(&zs);
            m_active = false;
            return -1;
        }
        if (status == Z_STREAM_END) {
            ::deflateEnd(&zs);
            m_active = false;
            m_finished = true;
            return 0;
        }
        if (zs.avail_out != 0 && zs.avail_in == 0 && flush != Z_FINISH)
            return 0;
    }
}

int ZkGzipOStreamBuf::encodeBuffer(int flush) {
    if (!m_active)
        return -1;
    const int status = encode(pbase(), static_cast<size_t>(pptr() - pbase()), flush);
    if (m_active)
        setp(m_put, m_put + kCapacity);
    else
        setp(nullptr, nullptr);
    return status;
}

ZkGzipOStreamBuf::int_type ZkGzipOStreamBuf::overflow(int_type c) {
    if (encodeBuffer(Z_NO_FLUSH) != 0)
        return traits_type::eof();
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
        *pptr() = traits_type::to_char_type(c);
        pbump(1);
    }
    return traits_type::not_eof(c);
}

// Writes of a put area or more skip the copy into it.
std::streamsize ZkGzipOStreamBuf::xsputn(const char* data, std::streamsize count) {
    if (count < kCapacity || !m_active)
        return std::streambuf::xsputn(data, count);
    if (encodeBuffer(Z_NO_FLUSH) != 0)
        return 0;
    std::streamsize done = 0;
    while (done < count) {
        const std::streamsize step = std::min<std::streamsize>(count - done, kMaxPiece);
        if (encode(data + done, static_cast<size_t>(step), Z_NO_FLUSH) != 0)
            return done;
        done += step;
    }
    return done;
}

int ZkGzipOStreamBuf::sync() {
    if (!m_active)
        return m_finished ? 0 : -1;
    if (encodeBuffer(Z_FINISH) != 0)
        return -1;
    return m_target->flush() ? 0 : -1;
}

// ---------------------------------------------------------------------------------------------
// ZkGzipOStream

ZkGzipOStream::ZkGzipOStream(std::ostream& target) : std::ostream(nullptr), m_buffer(target) {
    init(&m_buffer);
    if (!m_buffer.is_open())
        setstate(std::ios_base::badbit);
}

ZkGzipOStream::ZkGzipOStream(const UnicodeString& path) : std::ostream(nullptr), m_buffer(path) {
    init(&m_buffer);
    if (!m_buffer.is_open())
        setstate(std::ios_base::badbit);
}

ZkGzipOStream::~ZkGzipOStream() = default;

} // namespace ZkCommonNS
