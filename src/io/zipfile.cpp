// ZkZipFile: reading zip archives by their central directory or by scanning local headers,
// and the records of the format.
#include "zkcommon/io/zipfile.h"

#include "io/platform.h"
#include "zkcommon/io/customstream.h"
#include "zkcommon/io/gzipstream.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <new>
#include <unicode/utf8.h>

namespace ZkCommonNS {

namespace {

constexpr std::streamoff kLocalHeaderLength = 30;
constexpr std::streamoff kDescriptorLength = 16;
constexpr uint16_t kFlagDescriptor = 0x0008;
constexpr uint16_t kFlagUtf8 = 0x0800;
constexpr uint16_t kMethodDeflated = 8;
constexpr size_t kWindow = 65536;
// Bytes that a window keeps of the one before, so that a record on the seam is seen whole.
constexpr size_t kSeam = kDescriptorLength - 1;

uint32_t little32(const unsigned char* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

std::streamoff streamLength(std::istream& in) {
    in.clear();
    const std::streampos here = in.tellg();
    in.seekg(0, std::ios_base::end);
    const std::streamoff length = in.fail() ? -1 : std::streamoff(in.tellg());
    in.clear();
    if (here != std::streampos(-1))
        in.seekg(here);
    return length;
}

// Finds the first position at or after `from` where "PK" starts bytes that `accept` takes;
// -1 when there is none. The stream is read in windows, so memory stays bounded however far
// the search goes; `budget`, when given, caps the bytes read and is lowered by them.
// `accept(p, available, position)` sees at least 4 bytes at `p`, `available` in all.
template <class Accept>
std::streamoff findForward(std::istream& in, std::streamoff from, long long* budget,
                           Accept accept) {
    std::unique_ptr<char[]> window(new (std::nothrow) char[kWindow]);
    if (!window || from < 0)
        return -1;
    for (std::streamoff base = from;;) {
        if (budget && *budget <= 0)
            return -1;
        in.clear();
        in.seekg(base);
        in.read(window.get(), kWindow);
        const size_t got = static_cast<size_t>(in.gcount());
        in.clear();
        if (budget)
            *budget -= static_cast<long long>(got);
        const bool last = got < kWindow;
        const auto* bytes = reinterpret_cast<const unsigned char*>(window.get());
        // In a full window, the seam bytes are looked at again from the next window.
        const size_t limit = last ? (got >= 4 ? got - 3 : 0) : got - kSeam;
        for (size_t at = 0; at < limit; ++at) {
            const void* hit = std::memchr(bytes + at, 'P', limit - at);
            if (!hit)
                break;
            at = static_cast<size_t>(static_cast<const unsigned char*>(hit) - bytes);
            if (bytes[at + 1] == 'K' && accept(bytes + at, got - at, base + std::streamoff(at)))
                return base + std::streamoff(at);
        }
        if (last)
            return -1;
        base += std::streamoff(got - kSeam);
    }
}

bool isRecordStart(const unsigned char* p) {
    return (p[2] == 1 && p[3] == 2) || (p[2] == 3 && p[3] == 4) || (p[2] == 5 && p[3] == 6) ||
           (p[2] == 7 && p[3] == 8);
}

bool isValidUtf8(const char* bytes, int32_t length) {
    const auto* s = reinterpret_cast<const uint8_t*>(bytes);
    for (int32_t i = 0; i < length;) {
        UChar32 c;
        U8_NEXT(s, i, length, c);
        if (c < 0)
            return false;
    }
    return true;
}

// Names and comments: UTF-8 when the writer said so. Otherwise the system's code page, which
// here is UTF-8 (Linux tools write names in it without the flag); bytes that are no valid UTF-8
// come from an old DOS-era writer and are read in code page 437, the format's original one.
UnicodeString decodeText(const std::string& bytes, bool utf8) {
    const auto length = static_cast<int32_t>(bytes.size());
    if (utf8 || isValidUtf8(bytes.data(), length))
        return UnicodeString::fromUTF8(bytes);
    return UnicodeString(bytes.data(), length, "ibm-437");
}

std::string readBytes(std::istream* in, size_t length) {
    std::string bytes(length, '\0');
    if (in && length > 0) {
        in->read(&bytes[0], static_cast<std::streamsize>(length));
        bytes.resize(static_cast<size_t>(in->gcount()));
    }
    return bytes;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Records

ZkZipEntry::ZkZipEntry(std::istream* stream)
    : m_stream(stream), m_position(stream ? stream->tellg() : std::streampos(-1)), m_signature(0) {
    m_signature = read32();
}

ZkZipEntry::~ZkZipEntry() = default;

uint16_t ZkZipEntry::read16() {
    unsigned char bytes[2];
    if (!m_stream || !m_stream->read(reinterpret_cast<char*>(bytes), 2))
        return 0;
    return static_cast<uint16_t>(bytes[0] | bytes[1] << 8);
}

uint32_t ZkZipEntry::read32() {
    unsigned char bytes[4];
    if (!m_stream || !m_stream->read(reinterpret_cast<char*>(bytes), 4))
        return 0;
    return little32(bytes);
}

uint32_t ZkZipEntry::getSignature(std::istream& stream) {
    unsigned char bytes[4];
    const std::streampos here = stream.tellg();
    if (here == std::streampos(-1))
        return 0;
    const bool whole = static_cast<bool>(stream.read(reinterpret_cast<char*>(bytes), 4));
    stream.clear();
    stream.seekg(here);
    return whole ? little32(bytes) : 0;
}

ZkZipDirectoryEntry::ZkZipDirectoryEntry(std::istream* stream) : ZkZipEntry(stream) {
    m_versionMadeBy = read16();
    m_versionNeeded = read16();
    m_flags = read16();
    m_method = read16();
    m_time = read16();
    m_date = read16();
    m_crc32 = read32();
    m_compressedSize = read32();
    m_uncompressedSize = read32();
    const uint16_t nameLength = read16();
    const uint16_t extraLength = read16();
    const uint16_t commentLength = read16();
    m_diskNumber = read16();
    m_internalAttributes = read16();
    m_externalAttributes = read32();
    m_localHeaderOffset = read32();
    m_name = decodeText(readBytes(m_stream, nameLength), /*utf8=*/false);
    if (m_stream && *m_stream)
        m_stream->seekg(std::streamoff(extraLength) + commentLength, std::ios_base::cur);
}

ZkZipDirectoryEntry::~ZkZipDirectoryEntry() = default;

ZkZipEndDirectoryEntry::ZkZipEndDirectoryEntry(std::istream* stream) : ZkZipEntry(stream) {
    m_diskNumber = read16();
    m_directoryDisk = read16();
    m_diskEntries = read16();
    m_totalEntries = read16();
    m_directorySize = read32();
    m_directoryOffset = read32();
    const uint16_t commentLength = read16();
    m_comment = decodeText(readBytes(m_stream, commentLength), /*utf8=*/false);
}

ZkZipEndDirectoryEntry::~ZkZipEndDirectoryEntry() = default;

ZkZipExtheaderEntry::ZkZipExtheaderEntry(std::istream* stream) : ZkZipEntry(stream) {
    m_crc32 = read32();
    m_compressedSize = read32();
    m_uncompressedSize = read32();
}

ZkZipExtheaderEntry::~ZkZipExtheaderEntry() = default;

// ---------------------------------------------------------------------------------------------
// Members

ZkZipFileEntry::ZkZipFileEntry(std::istream* stream, long long* searchBudget) : ZkZipEntry(stream) {
    m_versionNeeded = read16();
    m_flags = read16();
    m_method = read16();
    m_time = read16();
    m_date = read16();
    m_crc32 = read32();
    m_compressedSize = read32();
    m_uncompressedSize = read32();
    m_nameLength = read16();
    m_extraLength = read16();
    m_name = decodeText(readBytes(m_stream, m_nameLength), (m_flags & kFlagUtf8) != 0);
    if (!m_stream || m_position == std::streampos(-1) || !*m_stream)
        return;
    const std::streamoff dataStart =
        std::streamoff(m_position) + kLocalHeaderLength + m_nameLength + m_extraLength;
    // The archive reader's own rule: a member written as a stream must not read as empty.
    // Its sizes (0 in the header) come from the data descriptor behind the data, wherever the
    // member was found, the central directory path included.
    if (m_flags & kFlagDescriptor)
        findDescriptor(dataStart, searchBudget);
    else
        m_stream->seekg(dataStart + std::streamoff(m_compressedSize));
}

ZkZipFileEntry::~ZkZipFileEntry() = default;

// The descriptor's signature "PK" 7 8 may also occur inside the data. A hit counts when its
// compressed size is the distance from the data start; without such a hit the first one is
// taken (stored data holding the signature is then cut there).
void ZkZipFileEntry::findDescriptor(std::streamoff dataStart, long long* searchBudget) {
    std::streamoff first = -1;
    std::streamoff found = findForward(
        *m_stream, dataStart, searchBudget,
        [&](const unsigned char* p, size_t available, std::streamoff at) {
            if (p[2] != 7 || p[3] != 8)
                return false;
            if (first < 0)
                first = at;
            return available >= size_t(kDescriptorLength) && little32(p + 8) == at - dataStart;
        });
    if (found < 0)
        found = first;
    m_stream->clear();
    if (found < 0) {
        m_stream->seekg(dataStart + std::streamoff(m_compressedSize));
        return;
    }
    m_stream->seekg(found);
    ZkZipExtheaderEntry descriptor(m_stream);
    setSizes(descriptor.getCRC32(), descriptor.getCompressedSize(),
             descriptor.getUncompressedSize());
    m_stream->clear();
    m_stream->seekg(found);
}

void ZkZipFileEntry::setSizes(uint32_t crc32, uint32_t compressedSize, uint32_t uncompressedSize) {
    m_crc32 = crc32;
    m_compressedSize = compressedSize;
    m_uncompressedSize = uncompressedSize;
    m_hasDescriptor = true;
}

// The recorded size is only a claim: what is allocated is bounded by what the stream holds.
bool ZkZipFileEntry::readCompressedData() {
    if (m_loaded)
        return m_dataLength > 0 || m_compressedSize == 0;
    m_loaded = true;
    if (!m_stream || m_position == std::streampos(-1) || m_compressedSize == 0)
        return m_compressedSize == 0;
    const std::streamoff start =
        std::streamoff(m_position) + kLocalHeaderLength + m_nameLength + m_extraLength;
    const std::streamoff available = streamLength(*m_stream) - start;
    if (available <= 0)
        return false;
    const auto length = static_cast<size_t>(std::min<std::streamoff>(available, m_compressedSize));
    m_data.reset(new (std::nothrow) char[length]);
    if (!m_data)
        return false;
    m_stream->clear();
    m_stream->seekg(start);
    m_stream->read(m_data.get(), static_cast<std::streamsize>(length));
    m_dataLength = static_cast<unsigned long long>(m_stream->gcount());
    m_stream->clear();
    return m_dataLength > 0;
}

std::istream* ZkZipFileEntry::getCompressedStream(bool fresh) {
    readCompressedData();
    if (fresh)
        return new ZkStrStream(m_data.get(), m_dataLength, /*copy=*/true);
    if (!m_compressedStream) {
        m_compressedStream.reset(new ZkStrStream(m_data.get(), m_dataLength));
    } else {
        m_compressedStream->clear();
        m_compressedStream->seekg(0);
    }
    return m_compressedStream.get();
}

// Only deflate is decompressed. Stored members are their bytes; other methods come raw and
// without an error, so a caller can still look at them.
std::istream* ZkZipFileEntry::getUncompressedStream(bool fresh) {
    if (m_method != kMethodDeflated)
        return getCompressedStream(fresh);
    readCompressedData();
    ZkInflaterStream* stream;
    if (fresh) {
        stream = new ZkInflaterStream(m_data.get(), m_dataLength, /*copy=*/true);
    } else {
        if (!m_uncompressedStream)
            m_uncompressedStream.reset(new ZkInflaterStream(m_data.get(), m_dataLength, false));
        stream = static_cast<ZkInflaterStream*>(m_uncompressedStream.get());
        stream->reset();
    }
    // No bytes at all would inflate to an empty member without complaint; a member that
    // claimed some and lost them all to a cut archive is damaged.
    if (m_dataLength == 0 && m_compressedSize > 0)
        stream->setstate(std::ios_base::badbit);
    return stream;
}

// ---------------------------------------------------------------------------------------------
// The archive

ZkZipFile::ZkZipFile() = default;

ZkZipFile::~ZkZipFile() {
    clearEntries();
    if (m_ownsStream)
        delete m_stream;
}

void ZkZipFile::clearEntries() {
    for (const ZkPtr<ZkZipFileEntry>& entry : m_entries)
        entry->detach();
    m_entries.clear();
    m_entryMap.clear();
    m_comment.remove();
}

void ZkZipFile::addEntry(const ZkPtr<ZkZipFileEntry>& entry) {
    m_entries.push_back(entry);
    m_entryMap.emplace(entry->getName(), entry); // of two equal names the first stays
}

ZkPtr<ZkZipFileEntry> ZkZipFile::createZipFileEntry() {
    return ZkPtr<ZkZipFileEntry>(new ZkZipFileEntry(m_stream, &m_searchBudget));
}

bool ZkZipFile::open(const UnicodeString& path) {
    // Only regular files: a FIFO or a device named by a document would block or never end.
    if (!detail::platform::isRegularFile(path)) {
        open(nullptr, false);
        return false;
    }
    auto file = std::make_unique<std::ifstream>(detail::platform::nativePath(path),
                                                std::ios_base::in | std::ios_base::binary);
    if (!file->is_open()) {
        open(nullptr, false);
        return false;
    }
    return open(file.release(), /*own=*/true);
}

bool ZkZipFile::open(const char* path) {
    return open(path ? UnicodeString::fromUTF8(path) : UnicodeString());
}

bool ZkZipFile::open(std::istream* stream, bool own) {
    clearEntries();
    if (m_ownsStream)
        delete m_stream;
    m_stream = stream;
    m_ownsStream = stream && own;
    init();
    return stream != nullptr;
}

void ZkZipFile::init() {
    clearEntries();
    if (!m_stream)
        return;
    std::istream& in = *m_stream;
    const std::streamoff length = streamLength(in);
    if (length <= 0)
        return;
    // Descriptor searches of all entries together read a few times the archive at most; the
    // searches of a sound archive read it about once.
    m_searchBudget = 4 * static_cast<long long>(length) + (1 << 20);

    // The end record lies in the last bytes unless a long comment follows it: ten tries, 32
    // bytes further back each, and the first hit of a try counts.
    std::streamoff end = -1;
    for (int attempt = 1; attempt <= 10 && end < 0; ++attempt) {
        const std::streamoff from = std::max<std::streamoff>(0, length - 32 * attempt);
        end = findForward(in, from, nullptr, [](const unsigned char* p, size_t, std::streamoff) {
            return p[2] == 5 && p[3] == 6;
        });
        if (from == 0)
            break;
    }

    std::vector<ZkPtr<ZkZipDirectoryEntry>> directory;
    std::streamoff shift = 0;
    if (end >= 0) {
        in.clear();
        in.seekg(end);
        ZkZipEndDirectoryEntry record(&in);
        m_comment = record.getComment();
        // Bytes in front of the archive (a self-extractor stub, anything prepended) shift all
        // its offsets: the directory then ends where the end record was found, not where the
        // record says. Both places are tried, the stated one first.
        const std::streamoff stated = record.getDirectoryOffset();
        const std::streamoff prefix = end - (stated + std::streamoff(record.getDirectorySize()));
        for (std::streamoff candidate : {std::streamoff(0), prefix}) {
            if (candidate < 0 || !directory.empty())
                continue;
            in.clear();
            in.seekg(stated + candidate);
            while (in && ZkZipEntry::getSignature(in) == ZkZipEntry::kDirectorySignature)
                directory.push_back(ZkPtr<ZkZipDirectoryEntry>(new ZkZipDirectoryEntry(&in)));
            if (!directory.empty())
                shift = candidate;
        }
    }
    if (directory.empty()) {
        in.clear();
        in.seekg(0);
        scanLocalHeaders();
        return;
    }
    for (const ZkPtr<ZkZipDirectoryEntry>& record : directory) {
        in.clear();
        in.seekg(std::streamoff(record->getLocalHeaderOffset()) + shift);
        // A record pointing at no local header names no readable member.
        if (ZkZipEntry::getSignature(in) != ZkZipEntry::kLocalSignature)
            continue;
        ZkPtr<ZkZipFileEntry> entry = createZipFileEntry();
        if ((entry->getFlags() & kFlagDescriptor) && !entry->hasDescriptor())
            entry->setSizes(record->getCRC32(), record->getCompressedSize(),
                            record->getUncompressedSize());
        addEntry(entry);
    }
}

// Without a central directory the members are found one after the other from the start. Bytes
// between records are skipped up to the next signature; before the first member they mean
// that this is no archive.
void ZkZipFile::scanLocalHeaders() {
    std::istream& in = *m_stream;
    while (in) {
        const uint32_t signature = ZkZipEntry::getSignature(in);
        if (signature == ZkZipEntry::kDirectorySignature ||
            signature == ZkZipEntry::kEndDirectorySignature)
            break;
        if (signature == ZkZipEntry::kLocalSignature) {
            addEntry(createZipFileEntry());
            continue;
        }
        if (signature == ZkZipEntry::kDescriptorSignature) {
            ZkZipExtheaderEntry descriptor(&in);
            if (!m_entries.empty())
                m_entries.back()->setSizes(descriptor.getCRC32(), descriptor.getCompressedSize(),
                                           descriptor.getUncompressedSize());
            continue;
        }
        if (m_entries.empty())
            break;
        const std::streampos here = in.tellg();
        if (here == std::streampos(-1))
            break;
        const std::streamoff next = findForward(
            in, std::streamoff(here) + 1, nullptr,
            [](const unsigned char* p, size_t, std::streamoff) { return isRecordStart(p); });
        if (next < 0)
            break;
        in.clear();
        in.seekg(next);
    }
}

ZkPtr<ZkZipFileEntry> ZkZipFile::getFileEntry(unsigned int index) const {
    return index < m_entries.size() ? m_entries[index] : ZkPtr<ZkZipFileEntry>();
}

ZkPtr<ZkZipFileEntry> ZkZipFile::getFileEntry(const UnicodeString& name) const {
    auto found = m_entryMap.find(name);
    return found == m_entryMap.end() ? ZkPtr<ZkZipFileEntry>() : found->second;
}

bool ZkZipFile::isZipFile(std::istream* stream) {
    if (!stream)
        return false;
    const uint32_t signature = ZkZipEntry::getSignature(*stream);
    return signature == ZkZipEntry::kLocalSignature ||
           signature == ZkZipEntry::kDirectorySignature ||
           signature == ZkZipEntry::kEndDirectorySignature;
}

bool ZkZipFile::isZipFile(const UnicodeString& path) {
    if (!detail::platform::isRegularFile(path))
        return false;
    std::ifstream file(detail::platform::nativePath(path),
                       std::ios_base::in | std::ios_base::binary);
    return file.is_open() && isZipFile(&file);
}

bool ZkZipFile::isZipFile(const char* path) {
    return path && isZipFile(UnicodeString::fromUTF8(path));
}

} // namespace ZkCommonNS
