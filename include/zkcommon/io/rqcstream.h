// ZkRQCIStream and ZkRQCOStream: conversion between legacy encodings and UTF-16 through the
// platform's converter library, with output limits, raw writes and encoding detection.
#ifndef ZKCOMMON_IO_RQCSTREAM_H
#define ZKCOMMON_IO_RQCSTREAM_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/unicode.h"

#include <istream>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>

namespace ZkCommonNS {

namespace detail {
class ByteConverter;
}

/// Decodes the bytes of a source stream into UTF-16 code units in host byte order (two chars
/// per unit). Malformed bytes become U+FFFD.
class ZKCOMMON_API ZkRQCIStreamBuf : public std::streambuf {
public:
    /// The encoding name passes through ZkUtil::getCanonicalEncoding. An encoding the platform
    /// cannot convert, or a null `source`, leaves the buffer closed (is_open() false; the first
    /// read reports end of file).
    ZkRQCIStreamBuf(std::istream* source, const char* encoding, bool ownsSource);
    ~ZkRQCIStreamBuf() override;
    ZkRQCIStreamBuf(const ZkRQCIStreamBuf&) = delete;
    ZkRQCIStreamBuf& operator=(const ZkRQCIStreamBuf&) = delete;

    bool is_open() const noexcept { return m_converter != nullptr || m_finished; }

protected:
    int_type underflow() override;

private:
    static constexpr int kInputCapacity = 4096;

    std::istream* m_source;
    std::unique_ptr<detail::ByteConverter> m_converter;
    bool m_ownsSource;
    bool m_finished = false;
    int m_inputLength = 0;
    std::string m_decoded; ///< the get area: UTF-16 in host order
    char m_input[kInputCapacity];
};

/// The std::istream over a ZkRQCIStreamBuf.
class ZKCOMMON_API ZkRQCIStream : public std::istream {
public:
    ZkRQCIStream(std::istream* source, const char* encoding, bool ownsSource);
    ~ZkRQCIStream() override;

    ZkRQCIStreamBuf* rdbuf() const { return const_cast<ZkRQCIStreamBuf*>(&m_buffer); }
    bool is_open() const noexcept { return m_buffer.is_open(); }

    /// Detects the encoding of the stream's next bytes (a byte order mark, an XML declaration,
    /// then statistics); the read position is restored. Returns false, leaving `encoding`
    /// alone, when nothing can be said; `bom` tells whether a byte order mark decided.
    static bool detectEncoding(std::istream* source, UnicodeString& encoding, bool& bom);
    /// The same over a null-terminated block; a null `data` gives false.
    static bool detectEncoding(const char* data, UnicodeString& encoding, bool& bom);
    /// The directory of the platform's conversion tables (GCONV_PATH for iconv, whose built-in
    /// converters need none). Call it at start-up, before any thread starts and before the
    /// first conversion: only then is the variable set, here and never later by the library,
    /// since a change of the environment races with getenv in other threads. Otherwise the
    /// path is stored and changes nothing.
    static void setRQCTablePath(const UnicodeString& path);

private:
    ZkRQCIStreamBuf m_buffer;
};

/// Encodes UTF-16 code units written in host byte order (two chars per unit) into a target
/// encoding, and writes the bytes to a sink stream.
class ZKCOMMON_API ZkRQCOStreamBuf : public std::streambuf {
public:
    /// What happens to line ends on the way out.
    enum LF_CONVERT : int {
        LF_CONVERT_NONE = 0, ///< written as they come
        LF_CONVERT_CRLF = 1, ///< LF and lone CR become CR LF
        LF_CONVERT_CR = 2,   ///< LF and CR LF become CR
        LF_CONVERT_LF = 3,   ///< CR LF and lone CR become LF
    };

    /// An encoding the platform cannot convert, or a null `sink`, leaves the buffer closed:
    /// writes fail. `writeBom` puts a byte order mark first for the Unicode encodings.
    /// Characters the encoding lacks become "?".
    ZkRQCOStreamBuf(std::ostream* sink, const char* encoding, bool ownsSink, LF_CONVERT lineEnds,
                    bool writeBom);
    ~ZkRQCOStreamBuf() override;
    ZkRQCOStreamBuf(const ZkRQCOStreamBuf&) = delete;
    ZkRQCOStreamBuf& operator=(const ZkRQCOStreamBuf&) = delete;

    bool is_open() const noexcept { return m_converter != nullptr; }
    /// Output beyond `limit` bytes raises the flag of isLimitOver; the bytes are still written.
    void setLimit(unsigned long long limit) noexcept { m_limit = limit; }
    bool isLimitOver() const noexcept { return m_limitOver; }
    /// The bytes handed to the sink so far, raw writes included.
    unsigned long long getOutputLength() const noexcept { return m_outputLength; }
    std::ostream* getOutputStream() const noexcept { return m_sink; }
    /// Converts what is pending, ends any shift state, and copies the bytes as they are.
    /// False when the buffer is closed or the sink fails.
    bool writeRawBuffer(const char* data, unsigned long long length);
    /// The same for the rest of `source`.
    bool writeRawStream(std::istream& source);
    /// Flushes everything and closes the converter; later writes fail. Called by the destructor.
    void term();

protected:
    int_type overflow(int_type c) override;
    int sync() override;

private:
    bool convertPending(bool endOfText);
    bool emit(const char* data, size_t length);

    static constexpr int kInputCapacity = 4096;

    std::ostream* m_sink;
    std::unique_ptr<detail::ByteConverter> m_converter;
    bool m_ownsSink;
    LF_CONVERT m_lineEnds;
    bool m_pendingBom;
    bool m_previousWasCr = false;
    bool m_limitOver = false;
    unsigned long long m_limit = ~0ull;
    unsigned long long m_outputLength = 0;
    std::string m_bom;
    std::u16string m_units;
    std::string m_bytes;
    char m_input[kInputCapacity];
};

/// The std::ostream over a ZkRQCOStreamBuf.
class ZKCOMMON_API ZkRQCOStream : public std::ostream {
public:
    using LF_CONVERT = ZkRQCOStreamBuf::LF_CONVERT;

    ZkRQCOStream(std::ostream* sink, const char* encoding, bool ownsSink,
                 LF_CONVERT lineEnds = ZkRQCOStreamBuf::LF_CONVERT_NONE, bool writeBom = false);
    ~ZkRQCOStream() override;

    ZkRQCOStreamBuf* rdbuf() const { return const_cast<ZkRQCOStreamBuf*>(&m_buffer); }
    bool is_open() const noexcept { return m_buffer.is_open(); }
    /// Writes the UTF-16 units of `text` (a convenience over write()).
    ZkRQCOStream& writeText(const UnicodeString& text);
    void setLimit(unsigned long long limit) noexcept { m_buffer.setLimit(limit); }
    bool isLimitOver() const noexcept { return m_buffer.isLimitOver(); }
    /// Flushes first, so pending characters count.
    unsigned long long getOutputLength();
    std::ostream* getOutputStream() const noexcept { return m_buffer.getOutputStream(); }
    /// Failures set badbit on this stream.
    void writeRawBuffer(const char* data, unsigned long long length);
    void writeRawStream(std::istream& source);

private:
    ZkRQCOStreamBuf m_buffer;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_IO_RQCSTREAM_H
