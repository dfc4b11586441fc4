// ZkGzipIStream, ZkGzipOStream and ZkInflaterStream: iostream adapters over zlib for gzip files
// and for raw deflate data in memory.
#ifndef ZKCOMMON_IO_GZIPSTREAM_H
#define ZKCOMMON_IO_GZIPSTREAM_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/unicode.h"

#include <cstdint>
#include <istream>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>

namespace ZkCommonNS {

namespace detail {
struct ZlibStream;

/// The reading half that the decompressing stream buffers share. What `produce` makes lands in
/// a buffer behind a putback area; large reads go straight into the caller's memory; seeking
/// goes forward by decompressing and back by starting again. Damage ends the data early, and
/// the owning stream gets its bad bit once the good bytes before it have been delivered.
class ZKCOMMON_API InflatingStreamBuf : public std::streambuf {
public:
    InflatingStreamBuf(const InflatingStreamBuf&) = delete;
    InflatingStreamBuf& operator=(const InflatingStreamBuf&) = delete;

    /// Whether the data ended on damage rather than at its proper end.
    bool isDataError() const noexcept { return m_dataError; }

protected:
    InflatingStreamBuf();
    ~InflatingStreamBuf() override;

    int_type underflow() override;
    std::streamsize xsgetn(char* data, std::streamsize count) override;
    /// Telling works everywhere. Seeking forward decompresses up to the place; seeking back
    /// starts again from the beginning of the data. A place beyond the end fails.
    pos_type seekoff(off_type offset, std::ios_base::seekdir way,
                     std::ios_base::openmode which) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode which) override;

    /// Up to `capacity` more bytes of the data at `target`; 0 at its end.
    virtual long produce(char* target, long capacity) = 0;
    /// Whether there is data to seek in at all.
    virtual bool canSeek() const = 0;
    /// Goes back to the start of the data; false when that can't be done.
    virtual bool rewind() = 0;

    /// Empties the buffer at data position 0 and clears the end and damage marks.
    void startOver();
    /// Marks damage, which ends the data.
    void fail() noexcept {
        m_dataError = true;
        m_ended = true;
    }

    bool m_ended = false;
    bool m_dataError = false;
    std::ios* m_owner = nullptr; ///< gets the bad bit on damaged data

private:
    static constexpr int kPutback = 16;
    static constexpr int kCapacity = 4096;

    int_type endOfData();

    char m_buffer[kPutback + kCapacity];
    unsigned long long m_outputEnd = 0; ///< the data position of egptr()
};
} // namespace detail

/// Decompresses gzip data from a stream or a file. Data without a gzip header passes through
/// unchanged, so the class can be used blindly on files that may or may not be compressed.
/// Damaged data (corrupt deflate blocks, a truncated member, a CRC-32 or length that does not
/// match) ends the data early: the buffer reports end of file, isDataError() turns true and the
/// owning ZkGzipIStream gets its bad bit. Nothing is thrown.
class ZKCOMMON_API ZkGzipIStreamBuf : public detail::InflatingStreamBuf {
public:
    /// Reads `source` from its start (a source that cannot seek is read from where it stands).
    /// The source must outlive the buffer.
    explicit ZkGzipIStreamBuf(std::istream& source);
    /// Opens the file through zlib's own file reader. A path that is not a regular file, or a
    /// file that cannot be opened, leaves the buffer closed: is_open() false, end of file at once.
    explicit ZkGzipIStreamBuf(const UnicodeString& path);
    ~ZkGzipIStreamBuf() override;
    ZkGzipIStreamBuf(const ZkGzipIStreamBuf&) = delete;
    ZkGzipIStreamBuf& operator=(const ZkGzipIStreamBuf&) = delete;

    bool is_open() const noexcept { return m_mode != Mode::kClosed; }
    /// Whether a gzip header was found (for the path form: whether zlib decompresses).
    bool isCompressed() const noexcept { return m_header; }

protected:
    long produce(char* target, long capacity) override;
    bool canSeek() const override;
    bool rewind() override;

private:
    friend class ZkGzipIStream;
    enum class Mode { kClosed, kFile, kInflate, kPlain };
    static constexpr int kInputCapacity = 4096;

    void start();
    bool ensure(unsigned int count);
    int nextByte();
    bool checkHeader();
    bool skipBytes(unsigned long length);
    bool skipString();
    bool finishMember();
    long produceInflate(char* target, long capacity);

    Mode m_mode = Mode::kClosed;
    void* m_file = nullptr; ///< the gzFile of the path form
    std::string m_path;     ///< the native path, for starting again after the file was closed
    std::istream* m_source = nullptr;
    std::unique_ptr<detail::ZlibStream> m_zlib;
    char m_input[kInputCapacity];
    bool m_header = false;
    bool m_inflateReady = false;
    bool m_sourceEnded = false;
    uint32_t m_crc = 0;          ///< CRC-32 of the current member's output
    uint32_t m_memberLength = 0; ///< its length modulo 2^32
};

/// The std::istream over a ZkGzipIStreamBuf.
class ZKCOMMON_API ZkGzipIStream : public std::istream {
public:
    /// See ZkGzipIStreamBuf; `source` must outlive the stream.
    explicit ZkGzipIStream(std::istream& source);
    /// A file that cannot be opened gives a stream with its fail bit set.
    explicit ZkGzipIStream(const UnicodeString& path);
    /// The path in UTF-8.
    explicit ZkGzipIStream(const char* path);
    explicit ZkGzipIStream(const wchar_t* path);
    ~ZkGzipIStream() override;

    ZkGzipIStreamBuf* rdbuf() const { return const_cast<ZkGzipIStreamBuf*>(&m_buffer); }
    bool is_open() const noexcept { return m_buffer.is_open(); }

private:
    void attach();
    ZkGzipIStreamBuf m_buffer;
};

/// Compresses into gzip format (deflate level 9). The stream is written once and closed:
/// flushing it (flush, std::endl, sync) ends the gzip member, and later writes fail. A target
/// that refuses bytes fails the stream.
class ZKCOMMON_API ZkGzipOStreamBuf : public std::streambuf {
public:
    /// `target` stays the caller's and must outlive the buffer.
    explicit ZkGzipOStreamBuf(std::ostream& target);
    /// Creates or truncates the file, and owns it. A file that cannot be opened leaves the
    /// buffer closed: every write fails.
    explicit ZkGzipOStreamBuf(const UnicodeString& path);
    /// Ends the member if that has not happened, then deletes an owned target.
    ~ZkGzipOStreamBuf() override;
    ZkGzipOStreamBuf(const ZkGzipOStreamBuf&) = delete;
    ZkGzipOStreamBuf& operator=(const ZkGzipOStreamBuf&) = delete;

    bool is_open() const noexcept { return m_active; }

protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* data, std::streamsize count) override;
    /// Ends the gzip member; 0 on success, -1 on failure or when it had already ended.
    int sync() override;

private:
    static constexpr int kCapacity = 4096;
    void startDeflate();
    int encodeBuffer(int flush);
    int encode(const char* data, size_t length, int flush);

    char m_put[kCapacity];
    char m_output[kCapacity];
    std::ostream* m_target = nullptr;
    bool m_ownsTarget = false;
    std::unique_ptr<detail::ZlibStream> m_zlib;
    bool m_active = false; ///< deflate is set up and the member not ended
    bool m_finished = false;
};

/// The std::ostream over a ZkGzipOStreamBuf.
class ZKCOMMON_API ZkGzipOStream : public std::ostream {
public:
    explicit ZkGzipOStream(std::ostream& target);
    /// A file that cannot be opened gives a stream with its bad bit set.
    explicit ZkGzipOStream(const UnicodeString& path);
    ~ZkGzipOStream() override;

    ZkGzipOStreamBuf* rdbuf() const { return const_cast<ZkGzipOStreamBuf*>(&m_buffer); }
    bool is_open() const noexcept { return m_buffer.is_open(); }

private:
    ZkGzipOStreamBuf m_buffer;
};

/// Decompresses raw deflate data (no zlib or gzip wrapper) held in memory. Damaged or
/// truncated data ends the stream early: isDataError() turns true and the owning
/// ZkInflaterStream gets its bad bit.
class ZKCOMMON_API ZkInflaterStreamBuf : public detail::InflatingStreamBuf {
public:
    /// With `copy` the block is copied and the buffer owns the copy; otherwise the block must
    /// outlive the buffer. A null `data` reads as empty data. A copy that cannot be allocated
    /// leaves the buffer empty with isDataError() true.
    ZkInflaterStreamBuf(const char* data, unsigned long long size, bool copy);
    ~ZkInflaterStreamBuf() override;
    ZkInflaterStreamBuf(const ZkInflaterStreamBuf&) = delete;
    ZkInflaterStreamBuf& operator=(const ZkInflaterStreamBuf&) = delete;

    /// Rewinds to the start of the data and resets the decompressor.
    void reset();

protected:
    long produce(char* target, long capacity) override;
    bool canSeek() const override;
    bool rewind() override;

private:
    friend class ZkInflaterStream;

    std::unique_ptr<detail::ZlibStream> m_zlib;
    std::unique_ptr<char[]> m_copy;
    const char* m_data;
    unsigned long long m_size;
    unsigned long long m_fed = 0; ///< input bytes handed to zlib so far
};

/// The std::istream over a ZkInflaterStreamBuf.
class ZKCOMMON_API ZkInflaterStream : public std::istream {
public:
    ZkInflaterStream(const char* data, unsigned long long size, bool copy);
    ~ZkInflaterStream() override;

    ZkInflaterStreamBuf* rdbuf() const { return const_cast<ZkInflaterStreamBuf*>(&m_buffer); }
    /// Clears the state and rewinds: the same bytes come again.
    void reset();

private:
    ZkInflaterStreamBuf m_buffer;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_IO_GZIPSTREAM_H
