// ZkZipFile and its records: a read-only zip archive over a file or a stream, with members
// found by the central directory or, when that is damaged or missing, by their local headers.
#ifndef ZKCOMMON_IO_ZIPFILE_H
#define ZKCOMMON_IO_ZIPFILE_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/object.h"
#include "zkcommon/core/unicode.h"

#include <cstdint>
#include <istream>
#include <map>
#include <memory>
#include <vector>

namespace ZkCommonNS {

/// A record of the archive, read at the stream's current position. All numbers of the format
/// are little-endian; a field cut off by the end of the stream reads as 0.
class ZKCOMMON_API ZkZipEntry : public ZkRCObject {
    ZK_DECLARE_TYPE(ZkZipEntry, ZkRCObject, ZkTypeID::kZipEntry, "ZkZipEntry")

public:
    static constexpr uint32_t kLocalSignature = 0x04034B50;
    static constexpr uint32_t kDirectorySignature = 0x02014B50;
    static constexpr uint32_t kEndDirectorySignature = 0x06054B50;
    static constexpr uint32_t kDescriptorSignature = 0x08074B50;

    /// Reads the signature; the stream stands behind it. `stream` is borrowed.
    explicit ZkZipEntry(std::istream* stream);
    ~ZkZipEntry() override;

    /// The four bytes at the stream's position, which does not move; 0 on a short read (the
    /// stream's state is then cleared).
    static uint32_t getSignature(std::istream& stream);
    uint32_t getSignature() const noexcept { return m_signature; }
    /// The stream position of the record's signature.
    std::streampos getPosition() const noexcept { return m_position; }

protected:
    uint16_t read16();
    uint32_t read32();

    std::istream* m_stream;
    std::streampos m_position;
    uint32_t m_signature;
};

/// A central directory record (signature 0x02014B50). The stream ends up behind its name, extra
/// field and comment.
class ZKCOMMON_API ZkZipDirectoryEntry : public ZkZipEntry {
public:
    explicit ZkZipDirectoryEntry(std::istream* stream);
    ~ZkZipDirectoryEntry() override;

    uint16_t getVersionMadeBy() const noexcept { return m_versionMadeBy; }
    uint16_t getVersionNeeded() const noexcept { return m_versionNeeded; }
    uint16_t getFlags() const noexcept { return m_flags; }
    uint16_t getMethod() const noexcept { return m_method; }
    uint16_t getTime() const noexcept { return m_time; }
    uint16_t getDate() const noexcept { return m_date; }
    uint32_t getCRC32() const noexcept { return m_crc32; }
    uint32_t getCompressedSize() const noexcept { return m_compressedSize; }
    uint32_t getUncompressedSize() const noexcept { return m_uncompressedSize; }
    uint16_t getDiskNumber() const noexcept { return m_diskNumber; }
    uint16_t getInternalAttributes() const noexcept { return m_internalAttributes; }
    uint32_t getExternalAttributes() const noexcept { return m_externalAttributes; }
    uint32_t getLocalHeaderOffset() const noexcept { return m_localHeaderOffset; }
    /// The name in the default code page (the UTF-8 flag is not looked at here).
    const UnicodeString& getName() const noexcept { return m_name; }

private:
    uint16_t m_versionMadeBy, m_versionNeeded, m_flags, m_method, m_time, m_date;
    uint32_t m_crc32, m_compressedSize, m_uncompressedSize;
    uint16_t m_diskNumber, m_internalAttributes;
    uint32_t m_externalAttributes, m_localHeaderOffset;
    UnicodeString m_name;
};

/// The end of the central directory (signature 0x06054B50), with the archive's comment.
class ZKCOMMON_API ZkZipEndDirectoryEntry : public ZkZipEntry {
public:
    explicit ZkZipEndDirectoryEntry(std::istream* stream);
    ~ZkZipEndDirectoryEntry() override;

    uint16_t getDiskNumber() const noexcept { return m_diskNumber; }
    uint16_t getDirectoryDisk() const noexcept { return m_directoryDisk; }
    uint16_t getDiskEntries() const noexcept { return m_diskEntries; }
    uint16_t getTotalEntries() const noexcept { return m_totalEntries; }
    uint32_t getDirectorySize() const noexcept { return m_directorySize; }
    uint32_t getDirectoryOffset() const noexcept { return m_directoryOffset; }
    /// In UTF-8 when it is valid UTF-8, else in code page 437.
    const UnicodeString& getComment() const noexcept { return m_comment; }

private:
    uint16_t m_diskNumber, m_directoryDisk, m_diskEntries, m_totalEntries;
    uint32_t m_directorySize, m_directoryOffset;
    UnicodeString m_comment;
};

/// A data descriptor (signature 0x08074B50): the CRC-32 and sizes of a member written as a
/// stream, which follow its data.
class ZKCOMMON_API ZkZipExtheaderEntry : public ZkZipEntry {
public:
    explicit ZkZipExtheaderEntry(std::istream* stream);
    ~ZkZipExtheaderEntry() override;

    uint32_t getCRC32() const noexcept { return m_crc32; }
    uint32_t getCompressedSize() const noexcept { return m_compressedSize; }
    uint32_t getUncompressedSize() const noexcept { return m_uncompressedSize; }

private:
    uint32_t m_crc32, m_compressedSize, m_uncompressedSize;
};

/// A member: its local header (signature 0x04034B50), its name and its data.
class ZKCOMMON_API ZkZipFileEntry : public ZkZipEntry {
    ZK_DECLARE_TYPE(ZkZipFileEntry, ZkZipEntry, ZkTypeID::kZipFileEntry, "ZkZipFileEntry")

public:
    /// Reads the header and name and leaves the stream behind the member's data. A member
    /// written as a stream (flag bit 8) has its sizes in a data descriptor after the data: it
    /// is searched for, read into this entry, and the stream left standing on it. The search
    /// reads at most `*searchBudget` bytes when that is given, and lowers it by what it read:
    /// an archive shares one budget among its entries, so that hostile headers cannot make it
    /// read the stream over and over.
    explicit ZkZipFileEntry(std::istream* stream, long long* searchBudget = nullptr);
    ~ZkZipFileEntry() override;

    /// In UTF-8 with flag bit 0x800; otherwise UTF-8 when the bytes are valid UTF-8, else code
    /// page 437.
    const UnicodeString& getName() const noexcept { return m_name; }
    uint16_t getVersionNeeded() const noexcept { return m_versionNeeded; }
    uint16_t getFlags() const noexcept { return m_flags; }
    /// 0 stored, 8 deflated; others are delivered raw.
    uint16_t getMethod() const noexcept { return m_method; }
    uint16_t getTime() const noexcept { return m_time; }
    uint16_t getDate() const noexcept { return m_date; }
    /// As recorded; the data is never checked against it.
    uint32_t getCRC32() const noexcept { return m_crc32; }
    uint32_t getCompressedSize() const noexcept { return m_compressedSize; }
    uint32_t getUncompressedSize() const noexcept { return m_uncompressedSize; }
    /// Whether a data descriptor supplied the CRC-32 and sizes.
    bool hasDescriptor() const noexcept { return m_hasDescriptor; }

    /// The member's bytes as stored. With `fresh` a new stream over a private copy is returned,
    /// which the caller deletes and which outlives the entry; otherwise the entry's own stream,
    /// rewound with its state cleared, valid while the entry lives. Data cut off by the end of
    /// the archive is delivered as far as it goes. Never null.
    std::istream* getCompressedStream(bool fresh);
    /// The member's content: method 8 is inflated (damaged data ends the stream with its bad
    /// bit); any other method is delivered as getCompressedStream gives it. Same rule for
    /// `fresh`. Never null.
    std::istream* getUncompressedStream(bool fresh);

protected:
    friend class ZkZipFile;
    /// Sets the CRC-32 and sizes from a descriptor (or the central directory).
    void setSizes(uint32_t crc32, uint32_t compressedSize, uint32_t uncompressedSize);
    /// The archive lets go of its stream: data not yet loaded stays empty.
    void detach() noexcept { m_stream = nullptr; }
    /// Loads the compressed bytes once; false when nothing could be read.
    bool readCompressedData();

private:
    void findDescriptor(std::streamoff dataStart, long long* searchBudget);

    uint16_t m_versionNeeded, m_flags, m_method, m_time, m_date;
    uint32_t m_crc32, m_compressedSize, m_uncompressedSize;
    uint16_t m_nameLength, m_extraLength;
    bool m_hasDescriptor = false;
    bool m_loaded = false;
    UnicodeString m_name;
    std::unique_ptr<char[]> m_data;
    unsigned long long m_dataLength = 0;
    std::unique_ptr<std::istream> m_compressedStream;
    std::unique_ptr<std::istream> m_uncompressedStream;
};

/// A zip archive read from a file or a stream. Reading never throws: an archive that cannot be
/// read has no entries. Zip64 records are not read (sizes are 32-bit), and neither encryption
/// nor CRC-32 is checked. An archive and its entries' streams share one underlying stream and
/// belong to one thread.
class ZKCOMMON_API ZkZipFile : public ZkRCObject {
public:
    ZkZipFile();
    /// Entries that outlive the archive keep the data they had loaded and read no more.
    ~ZkZipFile() override;
    ZkZipFile(const ZkZipFile&) = delete;
    ZkZipFile& operator=(const ZkZipFile&) = delete;

    /// A new entry read at the stream's current position; a derived archive returns its own
    /// entry class.
    virtual ZkPtr<ZkZipFileEntry> createZipFileEntry();
    /// Reads the entries: by the central directory when one is found at the end, else by
    /// scanning the local headers from the start.
    virtual void init();

    /// Opens a regular file (never a FIFO or device) and reads it; false when it cannot be
    /// opened, which leaves an archive without entries.
    bool open(const UnicodeString& path);
    /// The path in UTF-8.
    bool open(const char* path);
    /// Reads `stream`, which must be seekable; with `own` the archive deletes it. A null
    /// stream gives false.
    bool open(std::istream* stream, bool own);

    unsigned int getFileEntryCount() const noexcept {
        return static_cast<unsigned int>(m_entries.size());
    }
    /// Null past the end.
    ZkPtr<ZkZipFileEntry> getFileEntry(unsigned int index) const;
    /// By exact name; null if none. Of two members with one name, the first.
    ZkPtr<ZkZipFileEntry> getFileEntry(const UnicodeString& name) const;
    /// The archive's comment, empty when no end record was found.
    const UnicodeString& getComment() const noexcept { return m_comment; }
    std::istream* getStream() const noexcept { return m_stream; }

    /// Whether the first four bytes are a local header, central directory or end record
    /// signature; the position does not move. An empty archive (only the end record) counts.
    static bool isZipFile(std::istream* stream);
    /// The same for a regular file.
    static bool isZipFile(const UnicodeString& path);
    static bool isZipFile(const char* path);

protected:
    void clearEntries();
    void addEntry(const ZkPtr<ZkZipFileEntry>& entry);
    void scanLocalHeaders();

    std::istream* m_stream = nullptr;
    bool m_ownsStream = false;
    std::vector<ZkPtr<ZkZipFileEntry>> m_entries;
    std::map<UnicodeString, ZkPtr<ZkZipFileEntry>> m_entryMap;
    UnicodeString m_comment;
    /// What descriptor searches may still read during init (see ZkZipFileEntry).
    long long m_searchBudget = 0;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_IO_ZIPFILE_H
