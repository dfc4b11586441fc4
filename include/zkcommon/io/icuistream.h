// ZkICUIStream: an input stream that decodes a legacy encoding to UTF-16 through ICU.
#ifndef ZKCOMMON_IO_ICUISTREAM_H
#define ZKCOMMON_IO_ICUISTREAM_H

#include "zkcommon/core/export.h"

#include <istream>
#include <streambuf>

struct UConverter;

namespace ZkCommonNS {

/// Reads bytes from a source stream and presents them as UTF-16 code units in host byte order
/// (two chars per unit). Malformed input becomes U+FFFD (or the converter's substitute).
class ZKCOMMON_API ZkICUIStreamBuf : public std::streambuf {
public:
    /// An unknown `encoding` or a null `source` leaves the buffer closed: is_open() is false
    /// and the first read reports end of file. `ownsSource` makes the buffer delete `source`.
    ZkICUIStreamBuf(std::istream* source, const char* encoding, bool ownsSource);
    ~ZkICUIStreamBuf() override;
    ZkICUIStreamBuf(const ZkICUIStreamBuf&) = delete;
    ZkICUIStreamBuf& operator=(const ZkICUIStreamBuf&) = delete;

    bool is_open() const noexcept { return m_converter != nullptr || m_finished; }

protected:
    int_type underflow() override;

private:
    void closeConverter() noexcept;

    static constexpr int kInputCapacity = 4096;
    static constexpr int kOutputCapacity = 4096;

    std::istream* m_source;
    UConverter* m_converter;
    bool m_ownsSource;
    bool m_finished = false; ///< the converter ran to the end and was closed
    int m_inputStart = 0;
    int m_inputLimit = 0;
    char m_input[kInputCapacity];
    char16_t m_output[kOutputCapacity];
};

/// The std::istream over a ZkICUIStreamBuf.
class ZKCOMMON_API ZkICUIStream : public std::istream {
public:
    /// See ZkICUIStreamBuf: a stream that did not open fails at its first read.
    ZkICUIStream(std::istream* source, const char* encoding, bool ownsSource);
    ~ZkICUIStream() override;

    ZkICUIStreamBuf* rdbuf() const { return const_cast<ZkICUIStreamBuf*>(&m_buffer); }
    bool is_open() const noexcept { return m_buffer.is_open(); }

    /// The encoding of the whole stream: the encoding of an XML declaration, "UTF-8" for a
    /// declaration without one, else ICU's charset detector. The stream is read from position
    /// 0 and rewound; a null, unreadable or undecidable stream gives "UTF-8". The name stays
    /// valid for the life of the process.
    static const char* detectEncoding(std::istream* source);

private:
    ZkICUIStreamBuf m_buffer;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_IO_ICUISTREAM_H
