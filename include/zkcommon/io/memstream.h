// ZkMemStream: a read and write iostream over fixed-size memory blocks that never move, fed
// lazily from queued source streams, and able to move its content to a temporary file.
#ifndef ZKCOMMON_IO_MEMSTREAM_H
#define ZKCOMMON_IO_MEMSTREAM_H

#include "zkcommon/core/export.h"
#include "zkcommon/io/tempfile.h"

#include <cstdint>
#include <deque>
#include <istream>
#include <streambuf>
#include <string>

namespace ZkCommonNS {

/// The buffer of a ZkMemStream. Content lives in blocks of the grow size; only the last block
/// can be partly used. Get and put positions are independent, as in std::stringbuf. Queued
/// sources are read into new blocks only when a read, seek or search gets that far.
///
/// Failed seeks return -1 and change nothing: a negative position, a read position beyond
/// the end, or a position in blocks already recycled with keep memory off. Positions are
/// offsets from the first byte ever held, also after recycling.
class ZKCOMMON_API ZkMemStreamBuf : public std::streambuf {
public:
    static constexpr uint64_t kDefaultGrowBytes = 8192;
    /// The largest grow size; larger requests are cut to it.
    static constexpr uint64_t kMaxGrowBytes = uint64_t(1) << 30;

    /// `source` (may be null) is queued as by setSource. A grow size of 0 means the default.
    explicit ZkMemStreamBuf(std::istream* source = nullptr, uint64_t growBytes = kDefaultGrowBytes,
                            bool own = false);
    ~ZkMemStreamBuf() override;
    ZkMemStreamBuf(const ZkMemStreamBuf&) = delete;
    ZkMemStreamBuf& operator=(const ZkMemStreamBuf&) = delete;

    /// Queues a source behind the others; null does nothing. Room in the last block is filled
    /// from it at once. With `own` the buffer deletes the stream when it is finished with it.
    void setSource(std::istream* source, bool own);
    /// The first queued source, or null.
    std::istream* getSource() const noexcept;
    /// Reads up to `length` bytes of `source` into the put position, moving it; the count.
    uint64_t copyStream(std::istream& source, uint64_t length);
    /// Appends the whole content (all sources read) to `target`.
    void appendToString(std::string& target);
    /// The contiguous run at the get position: `data` points at it; its size in bytes, 0 at
    /// the end of the content.
    uint64_t getBuffer(const char*& data);
    /// The bytes held so far; sources not yet read do not count.
    uint64_t length();
    /// The bytes left in the current get area.
    uint64_t getRemains() const noexcept;
    uint64_t getGrowBytes() const noexcept { return m_growBytes; }
    /// Changes the block size while no block exists; later calls are ignored.
    void setGrowBytes(uint64_t growBytes);
    /// With keep memory off, reading forward recycles blocks: at most two are held, and a seek
    /// back beyond them fails.
    void setKeepMemory(bool keep) noexcept { m_keepMemory = keep; }
    bool getKeepMemory() const noexcept { return m_keepMemory; }
    /// Frees every block, deletes owned sources, drops the rest, resets both positions and
    /// turns keep memory back on.
    void clear();
    /// Empties the content, keeping the first block for reuse; sources are dropped (owned ones
    /// deleted) and both positions return to 0.
    void remove();
    /// Frees every block and resets both positions; queued sources stay.
    void abandonBuffer();
    /// Cuts the content to `length` bytes (all sources read first); positions beyond move to
    /// the new end. Bytes already recycled with keep memory off cannot be cut.
    void trim(uint64_t length);
    /// The OpenType table checksum of the content (all sources read): the sum of its
    /// big-endian 32-bit words modulo 2^32, the last word padded with zeros.
    uint32_t calcOTFTableChecksum();
    /// Finds `pattern` at or after the get position, across blocks and reading sources as far
    /// as needed, and moves the get position to the start of the match. A `length` of 0 takes
    /// strlen(pattern). False, with the position unchanged, for a null or empty pattern or when
    /// there is no match.
    bool searchSeek(const char* pattern, uint64_t length = 0);
    /// When the bytes at the get position are `pattern`, moves past them and returns true;
    /// else false and no move. `length` as in searchSeek.
    bool skipSeek(const char* pattern, uint64_t length = 0);
    /// Moves the get position past the next run of U+000D CARRIAGE RETURN and U+000A LINE FEED
    /// characters, or to the end of the content when there is none.
    void seekEOL();

protected:
    int_type underflow() override;
    int_type overflow(int_type c) override;
    int_type pbackfail(int_type c) override;
    std::streamsize showmanyc() override;
    std::streamsize xsgetn(char_type* target, std::streamsize count) override;
    std::streamsize xsputn(const char_type* data, std::streamsize count) override;
    int sync() override;
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction,
                     std::ios_base::openmode mode) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode mode) override;

    /// Makes a new last block and fills it from the sources. With `fresh` false and at least
    /// two blocks held, the oldest block is reused instead and the older ones are freed.
    void appendBuffer(bool fresh);

private:
    friend class ZkMemStream;
    struct Cursor;

    uint64_t fillOf(uint64_t index) const noexcept;
    uint64_t blockStart(uint64_t index) const noexcept;
    void flushBuffer() noexcept;
    void fillLastBlock();
    bool pullBlock();
    void pullAll();
    void dropSource();
    void freeBlocks();
    void setGetArea(uint64_t index, uint64_t offset);
    void setPutArea(uint64_t index, uint64_t offset);
    uint64_t getPosition() const noexcept;
    uint64_t putPosition() const noexcept;
    void locate(uint64_t position, uint64_t& index, uint64_t& offset) const noexcept;
    void advancePut();
    bool getCursor(Cursor& cursor);
    bool settle(Cursor& cursor);
    bool matchAt(Cursor& cursor, const char* pattern, uint64_t length);
    void copyFrom(ZkMemStreamBuf& other);

    std::deque<char*> m_blocks;
    uint64_t m_getIndex = 0;      ///< block of the get area, when there is one
    uint64_t m_putIndex = 0;      ///< block of the put area, when there is one
    uint64_t m_used = 0;          ///< used bytes of the last block
    uint64_t m_droppedBlocks = 0; ///< blocks recycled from the front with keep memory off
    std::deque<std::istream*> m_sources;
    std::deque<bool> m_ownsSources;
    uint64_t m_growBytes;
    bool m_keepMemory = true;
};

/// The iostream over a ZkMemStreamBuf. After changeTempBuffer its bytes live in a temporary
/// file, which the stream removes when it is destroyed.
class ZKCOMMON_API ZkMemStream : public std::iostream {
public:
    /// Empty, with blocks of 8192 bytes.
    ZkMemStream();
    /// Reads `source` lazily and deletes it: the stream must have been made with new.
    explicit ZkMemStream(std::istream& source);
    /// All three stated; a null source gives an empty stream.
    ZkMemStream(std::istream* source, unsigned long long growBytes, bool own);
    /// A stream holding a copy of the other's whole content (its sources read to the end,
    /// a temporary file read back into memory), with the same grow size and positions.
    ZkMemStream(const ZkMemStream& other);
    ZkMemStream& operator=(const ZkMemStream& other);
    ~ZkMemStream() noexcept override;

    ZkMemStreamBuf* rdbuf() const { return const_cast<ZkMemStreamBuf*>(&m_buffer); }

    // The operations of ZkMemStreamBuf. After changeTempBuffer they work on the temporary
    // file, except where said otherwise.

    void setSource(std::istream* source, bool own);
    std::istream* getSource() const noexcept;
    uint64_t copyStream(std::istream& source, uint64_t length);
    void appendToString(std::string& target);
    /// With a temporary file in use there is no block to point into: 0 and null.
    uint64_t getBuffer(const char*& data);
    /// The bytes held, or with a temporary file in use its size.
    uint64_t length();
    uint64_t getRemains();
    uint64_t getGrowBytes() const noexcept { return m_buffer.getGrowBytes(); }
    void setGrowBytes(uint64_t growBytes) { m_buffer.setGrowBytes(growBytes); }
    void setKeepMemory(bool keep) noexcept { m_buffer.setKeepMemory(keep); }
    void remove();
    void abandonBuffer();
    void trim(uint64_t length);
    uint32_t calcOTFTableChecksum();
    bool searchSeek(const char* pattern, uint64_t length = 0);
    bool skipSeek(const char* pattern, uint64_t length = 0);
    void seekEOL();

    /// Moves the content to a temporary file ("ZkMem….tmp" in the temporary directory) and
    /// reads and writes there from now on, both positions at 0. Does nothing when a file is
    /// already in use; when none can be made or written the stream stays in memory, unchanged.
    void changeTempBuffer();
    /// Puts the memory buffer back under the stream, state cleared and both positions at 0.
    /// Does nothing while a temporary file is in use.
    void resetBuffer();
    bool isTempBuffer() const noexcept { return m_tempFile.isTempFile(); }

    /// Clears the state and puts both positions at 0.
    void begin();
    /// Nothing to close: memory needs no closing, and a temporary file stays in use.
    void close() {}
    /// Empties the stream: content and sources go, state is cleared, positions return to 0.
    void erase();
    bool empty() { return length() == 0; }
    bool isEmpty() { return length() == 0; }
    uint64_t size() { return length(); }
    /// Writes at the put position.
    ZkMemStream& append(const std::string& text);
    ZkMemStream& operator+=(const std::string& text) { return append(text); }
    /// Writes a null-terminated text at the put position; null writes nothing.
    ZkMemStream& writeStr(const char* text);

private:
    void copyFrom(const ZkMemStream& other);
    void dropTempFile() noexcept;

    ZkTempFile m_tempFile;
    ZkMemStreamBuf m_buffer;
    std::iostream* m_fileStream = nullptr; ///< owned: the temporary file once in use
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_IO_MEMSTREAM_H
