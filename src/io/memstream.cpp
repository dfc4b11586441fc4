// ZkMemStream: the iostream over a ZkMemStreamBuf, its copies, and the move of its content to
// a temporary file.
#include "zkcommon/io/memstream.h"

#include "zkcommon/core/error.h"
#include "zkcommon/io/uri.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>

namespace ZkCommonNS {

namespace {

// Once the content lives in a temporary file, the buffer operations read it in chunks through
// the file's own buffer, which keeps one position for reading and writing.
constexpr std::streamsize kChunk = 64 * 1024;
constexpr auto kIn = std::ios_base::in;
constexpr auto kBoth = std::ios_base::in | std::ios_base::out;

uint64_t tell(std::streambuf* file) {
    const auto position = static_cast<std::streamoff>(file->pubseekoff(0, std::ios_base::cur, kIn));
    return position < 0 ? 0 : static_cast<uint64_t>(position);
}

void moveTo(std::streambuf* file, uint64_t position) {
    file->pubseekpos(std::streampos(static_cast<std::streamoff>(position)), kBoth);
}

uint64_t fileLength(std::streambuf* file) {
    file->pubsync();
    const uint64_t position = tell(file);
    const auto end = static_cast<std::streamoff>(file->pubseekoff(0, std::ios_base::end, kIn));
    moveTo(file, position);
    return end < 0 ? 0 : static_cast<uint64_t>(end);
}

/// Reads up to kChunk bytes at the file's position into `chunk`; the count.
std::streamsize readChunk(std::streambuf* file, std::string& chunk) {
    chunk.resize(static_cast<size_t>(kChunk));
    const std::streamsize got = file->sgetn(&chunk[0], kChunk);
    chunk.resize(static_cast<size_t>(std::max<std::streamsize>(got, 0)));
    return got;
}

bool fileSearch(std::streambuf* file, const char* pattern, uint64_t length) {
    file->pubsync();
    const uint64_t start = tell(file);
    std::string window, chunk;
    uint64_t windowStart = start;
    while (readChunk(file, chunk) > 0) {
        window += chunk;
        const size_t hit = window.find(pattern, 0, static_cast<size_t>(length));
        if (hit != std::string::npos) {
            moveTo(file, windowStart + hit);
            return true;
        }
        // Keep the tail that could still begin a match.
        const size_t keep = std::min<size_t>(window.size(), static_cast<size_t>(length - 1));
        windowStart += window.size() - keep;
        window.erase(0, window.size() - keep);
    }
    moveTo(file, start);
    return false;
}

bool fileSkip(std::streambuf* file, const char* pattern, uint64_t length) {
    file->pubsync();
    const uint64_t start = tell(file);
    std::string bytes(static_cast<size_t>(length), '\0');
    const auto got = file->sgetn(&bytes[0], static_cast<std::streamsize>(length));
    if (got == static_cast<std::streamsize>(length) &&
        bytes.compare(0, bytes.size(), pattern, bytes.size()) == 0)
        return true;
    moveTo(file, start);
    return false;
}

void fileSeekEOL(std::streambuf* file) {
    file->pubsync();
    uint64_t position = tell(file);
    std::string chunk;
    bool inRun = false;
    while (readChunk(file, chunk) > 0) {
        for (char c : chunk) {
            const bool lineEnd = c == '\r' || c == '\n';
            if (inRun && !lineEnd) {
                moveTo(file, position);
                return;
            }
            inRun = inRun || lineEnd;
            ++position;
        }
    }
    moveTo(file, position);
}

uint32_t fileChecksum(std::streambuf* file) {
    file->pubsync();
    const uint64_t position = tell(file);
    moveTo(file, 0);
    std::string chunk;
    uint32_t sum = 0, word = 0;
    int pending = 0;
    while (readChunk(file, chunk) > 0) {
        for (char c : chunk) {
            word = word << 8 | static_cast<unsigned char>(c);
            if (++pending == 4) {
                sum += word;
                word = 0;
                pending = 0;
            }
        }
    }
    if (pending != 0)
        sum += word << (8 * (4 - pending));
    moveTo(file, position);
    return sum;
}

} // namespace

ZkMemStream::ZkMemStream() : std::iostream(nullptr) {
    init(&m_buffer);
}

ZkMemStream::ZkMemStream(std::istream& source)
    : std::iostream(nullptr), m_buffer(&source, ZkMemStreamBuf::kDefaultGrowBytes, true) {
    init(&m_buffer);
}

ZkMemStream::ZkMemStream(std::istream* source, unsigned long long growBytes, bool own)
    : std::iostream(nullptr), m_buffer(source, growBytes, own) {
    init(&m_buffer);
}

ZkMemStream::ZkMemStream(const ZkMemStream& other)
    : std::basic_ios<char>(), std::iostream(nullptr),
      m_buffer(nullptr, other.getGrowBytes(), false) {
    init(&m_buffer);
    copyFrom(other);
}

ZkMemStream& ZkMemStream::operator=(const ZkMemStream& other) {
    if (this != &other) {
        dropTempFile();
        std::iostream::clear();
        copyFrom(other);
    }
    return *this;
}

ZkMemStream::~ZkMemStream() noexcept {
    dropTempFile();
}

void ZkMemStream::dropTempFile() noexcept {
    if (!m_fileStream)
        return;
    std::iostream::rdbuf(&m_buffer);
    delete m_fileStream; // closed before the file goes
    m_fileStream = nullptr;
    try {
        m_tempFile.remove();
    } catch (const ZkError&) {
        // A file that cannot go stays behind; the stream lets go of it either way.
    }
    m_tempFile.releaseFileName();
}

void ZkMemStream::copyFrom(const ZkMemStream& other) {
    // Reading a source or a file to the end changes neither stream's content.
    auto& source = const_cast<ZkMemStream&>(other);
    if (!source.m_fileStream) {
        m_buffer.copyFrom(source.m_buffer);
        return;
    }
    std::streambuf* file = source.m_fileStream->rdbuf();
    file->pubsync();
    const uint64_t position = tell(file);
    moveTo(file, 0);
    m_buffer.clear();
    m_buffer.setGrowBytes(source.getGrowBytes());
    std::istream reader(file);
    m_buffer.copyStream(reader, std::numeric_limits<uint64_t>::max());
    moveTo(file, position);
    const auto at = std::streampos(static_cast<std::streamoff>(position));
    m_buffer.pubseekpos(at, std::ios_base::in);
    m_buffer.pubseekpos(at, std::ios_base::out);
}

// ---- the buffer operations ----

void ZkMemStream::setSource(std::istream* source, bool own) {
    if (!m_fileStream) {
        m_buffer.setSource(source, own);
        return;
    }
    // The file takes the source at its end at once; both positions stay.
    if (!source)
        return;
    std::unique_ptr<std::istream> owned(own ? source : nullptr);
    std::streambuf* file = m_fileStream->rdbuf();
    file->pubsync();
    const uint64_t position = tell(file);
    file->pubseekoff(0, std::ios_base::end, std::ios_base::out);
    std::ostream writer(file);
    if (source->rdbuf())
        writer << source->rdbuf();
    file->pubsync();
    moveTo(file, position);
}

std::istream* ZkMemStream::getSource() const noexcept {
    return m_fileStream ? nullptr : m_buffer.getSource();
}

uint64_t ZkMemStream::copyStream(std::istream& source, uint64_t length) {
    if (!m_fileStream)
        return m_buffer.copyStream(source, length);
    std::streambuf* file = m_fileStream->rdbuf();
    std::string chunk;
    uint64_t done = 0;
    while (done < length) {
        chunk.resize(static_cast<size_t>(std::min<uint64_t>(length - done, kChunk)));
        source.read(&chunk[0], static_cast<std::streamsize>(chunk.size()));
        const std::streamsize got = source.gcount();
        if (got <= 0)
            break;
        const std::streamsize put = file->sputn(chunk.data(), got);
        done += static_cast<uint64_t>(std::max<std::streamsize>(put, 0));
        if (put < got || got < static_cast<std::streamsize>(chunk.size()))
            break;
    }
    return done;
}

void ZkMemStream::appendToString(std::string& target) {
    if (!m_fileStream) {
        m_buffer.appendToString(target);
        return;
    }
    std::streambuf* file = m_fileStream->rdbuf();
    file->pubsync();
    const uint64_t position = tell(file);
    moveTo(file, 0);
    std::string chunk;
    while (readChunk(file, chunk) > 0)
        target += chunk;
    moveTo(file, position);
}

uint64_t ZkMemStream::getBuffer(const char*& data) {
    if (!m_fileStream)
        return m_buffer.getBuffer(data);
    data = nullptr;
    return 0;
}

uint64_t ZkMemStream::length() {
    return m_fileStream ? fileLength(m_fileStream->rdbuf()) : m_buffer.length();
}

uint64_t ZkMemStream::getRemains() {
    if (!m_fileStream)
        return m_buffer.getRemains();
    const std::streamsize available = m_fileStream->rdbuf()->in_avail();
    return available > 0 ? static_cast<uint64_t>(available) : 0;
}

void ZkMemStream::remove() {
    dropTempFile();
    m_buffer.remove();
}

void ZkMemStream::abandonBuffer() {
    dropTempFile();
    m_buffer.abandonBuffer();
}

void ZkMemStream::trim(uint64_t length) {
    if (!m_fileStream) {
        m_buffer.trim(length);
        return;
    }
    std::streambuf* file = m_fileStream->rdbuf();
    if (length >= fileLength(file))
        return;
    const uint64_t position = tell(file);
    std::error_code ignored;
    std::filesystem::resize_file(m_tempFile.getFileName().c_str(), length, ignored);
    moveTo(file, std::min(position, length));
}

uint32_t ZkMemStream::calcOTFTableChecksum() {
    return m_fileStream ? fileChecksum(m_fileStream->rdbuf()) : m_buffer.calcOTFTableChecksum();
}

bool ZkMemStream::searchSeek(const char* pattern, uint64_t length) {
    if (!m_fileStream)
        return m_buffer.searchSeek(pattern, length);
    if (pattern && length == 0)
        length = std::strlen(pattern);
    return pattern && length != 0 && fileSearch(m_fileStream->rdbuf(), pattern, length);
}

bool ZkMemStream::skipSeek(const char* pattern, uint64_t length) {
    if (!m_fileStream)
        return m_buffer.skipSeek(pattern, length);
    if (pattern && length == 0)
        length = std::strlen(pattern);
    return pattern && length != 0 && fileSkip(m_fileStream->rdbuf(), pattern, length);
}

void ZkMemStream::seekEOL() {
    if (m_fileStream)
        fileSeekEOL(m_fileStream->rdbuf());
    else
        m_buffer.seekEOL();
}

// ---- the temporary file ----

void ZkMemStream::changeTempBuffer() {
    if (m_fileStream)
        return;
    ZkTempFile file;
    try {
        file.setFileName(UnicodeString(), UnicodeString(u"ZkMem"), UnicodeString(u".tmp"));
    } catch (const ZkError&) {
        return; // no file: the stream stays in memory
    }
    {
        std::ofstream copy(file.getFileName().c_str(), std::ios::binary | std::ios::trunc);
        if (!copy)
            return;
        resetBuffer();
        m_buffer.pullAll();
        m_buffer.flushBuffer();
        for (uint64_t i = 0; i < m_buffer.m_blocks.size() && copy; ++i)
            copy.write(m_buffer.m_blocks[i], static_cast<std::streamsize>(m_buffer.fillOf(i)));
        copy.close();
        // Memory is given up only once the file holds every byte.
        if (copy.fail())
            return;
    }
    std::iostream* opened = ZkUri(file.getFileName(), ZkUri::URISTR_FILEPATH).getFStream();
    if (!opened)
        return;
    m_buffer.clear();
    m_tempFile.setFileName(file.releaseFileName());
    m_fileStream = opened;
    std::iostream::rdbuf(opened->rdbuf());
    seekg(0);
    seekp(0);
}

void ZkMemStream::resetBuffer() {
    if (m_fileStream)
        return;
    if (std::iostream::rdbuf() != &m_buffer) {
        std::iostream::clear();
        seekg(0);
        std::iostream::rdbuf(&m_buffer);
    }
    std::iostream::clear();
    seekg(0);
    seekp(0);
}

// ---- thin forwards ----

void ZkMemStream::begin() {
    std::iostream::clear();
    seekg(0);
    seekp(0);
}

void ZkMemStream::erase() {
    dropTempFile();
    m_buffer.clear();
    std::iostream::clear();
}

ZkMemStream& ZkMemStream::append(const std::string& text) {
    write(text.data(), static_cast<std::streamsize>(text.size()));
    return *this;
}

ZkMemStream& ZkMemStream::writeStr(const char* text) {
    if (text)
        write(text, static_cast<std::streamsize>(std::strlen(text)));
    return *this;
}

} // namespace ZkCommonNS
