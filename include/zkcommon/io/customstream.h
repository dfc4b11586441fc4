// ZkCustomStream, an iostream over a channel of the application (ZkCustomStreamController), and
// ZkStrStream, a read-only stream over a memory block.
#ifndef ZKCOMMON_IO_CUSTOMSTREAM_H
#define ZKCOMMON_IO_CUSTOMSTREAM_H

#include "zkcommon/core/export.h"

#include <cstdint>
#include <istream>
#include <streambuf>

namespace ZkCommonNS {

/// The application's channel behind a ZkCustomStream. A controller serves one stream at a time
/// and outlives it.
class ZKCOMMON_API ZkCustomStreamController {
public:
    virtual ~ZkCustomStreamController();

    /// Ends the channel: called by ZkCustomStream::close after the last bytes were written.
    /// Returns a negative number on error.
    virtual int close() = 0;
    /// The total size of the channel's content in bytes, or -1 when it is not known.
    virtual long long getLength() = 0;
    /// Fills up to `size` bytes of `buffer`: the count read, 0 at the end, negative on error.
    /// The default serves no input and reports an error.
    virtual int read(char* buffer, int size);
    /// Takes `size` bytes; a negative result is an error. The default takes no output.
    virtual int write(const char* buffer, int size);
};

/// The buffer between an iostream and a ZkCustomStreamController. Input comes in windows of
/// 8192 bytes with a reserve of 10 bytes that can be put back across a refill; output is
/// handed over in runs of up to 8192 bytes. The stream cannot move: every seek reports the
/// current position and changes nothing.
class ZKCOMMON_API ZkCustomStreamBuf : public std::streambuf {
public:
    static constexpr int kReadWindow = 8192;
    static constexpr int kPutbackReserve = 10;
    static constexpr int kWriteCapacity = 8192;

    /// A null controller gives a stream that reads end of file and fails every write.
    explicit ZkCustomStreamBuf(ZkCustomStreamController* controller);
    /// Hands over what is still pending; a failing controller is not told again.
    ~ZkCustomStreamBuf() override;
    ZkCustomStreamBuf(const ZkCustomStreamBuf&) = delete;
    ZkCustomStreamBuf& operator=(const ZkCustomStreamBuf&) = delete;

    bool is_open() const noexcept { return m_buffer != nullptr; }
    ZkCustomStreamController* getController() const noexcept { return m_controller; }
    /// Writes the put area to the controller: 0 on success or when there was nothing, -1 when
    /// the controller failed (the bytes stay pending).
    int flushBuffer();
    /// Flushes, then frees the buffer; afterwards reads give end of file and writes fail.
    /// -1 when the flush failed.
    int close();

protected:
    int_type underflow() override;
    int_type overflow(int_type c) override;
    int sync() override;
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction,
                     std::ios_base::openmode mode) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode mode) override;

private:
    char* m_buffer;
    ZkCustomStreamController* m_controller;
    int64_t m_position = 0;   ///< bytes the controller took by write
    int64_t m_readLength = 0; ///< bytes the controller gave by read
};

/// An iostream reading from and writing to a ZkCustomStreamController.
class ZKCOMMON_API ZkCustomStream : public std::iostream {
public:
    /// The controller is borrowed; a null one gives a stream at end of file.
    explicit ZkCustomStream(ZkCustomStreamController* controller);
    ~ZkCustomStream() override;

    ZkCustomStreamBuf* rdbuf() const { return const_cast<ZkCustomStreamBuf*>(&m_buffer); }
    bool is_open() const noexcept { return m_buffer.is_open(); }
    /// Flushes, frees the buffer and closes the controller. A failed flush or close sets
    /// badbit; a second call does nothing.
    void close();

private:
    ZkCustomStreamBuf m_buffer;
};

/// A read-only stream over a memory block, seekable within it.
class ZKCOMMON_API ZkStrStream : public std::istream {
public:
    /// The buffer of a ZkStrStream. It reads the block in place unless asked to copy it;
    /// writes and put-backs of a different byte fail.
    class ZKCOMMON_API StrStreamBuf : public std::streambuf {
    public:
        /// `copy` takes a private copy of the block; `own` hands an unrelated block allocated
        /// with new[] to the buffer, which frees it with delete[]. A null `data` is the empty
        /// block.
        StrStreamBuf(const char* data, uint64_t length, bool copy = false, bool own = false);
        ~StrStreamBuf() override;
        StrStreamBuf(const StrStreamBuf&) = delete;
        StrStreamBuf& operator=(const StrStreamBuf&) = delete;

        const char* data() const noexcept { return m_data; }
        uint64_t length() const noexcept { return m_length; }

    protected:
        int_type underflow() override;
        int_type pbackfail(int_type c) override;
        std::streamsize showmanyc() override;
        std::streamsize xsgetn(char_type* target, std::streamsize count) override;
        pos_type seekoff(off_type offset, std::ios_base::seekdir direction,
                         std::ios_base::openmode mode) override;
        pos_type seekpos(pos_type position, std::ios_base::openmode mode) override;

    private:
        const char* m_data;
        uint64_t m_length;
        bool m_owns;
    };

    /// See StrStreamBuf's constructor.
    ZkStrStream(const char* data, uint64_t length, bool copy = false, bool own = false);
    ~ZkStrStream() override;

    StrStreamBuf* rdbuf() const { return const_cast<StrStreamBuf*>(&m_buffer); }
    bool is_open() const noexcept { return true; }

private:
    StrStreamBuf m_buffer;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_IO_CUSTOMSTREAM_H
