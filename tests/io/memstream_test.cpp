// ZkMemStream: a random walk against std::stringstream, lazy sources, searches across block
// boundaries, constant memory with keep memory off, trimming, checksums and copies.
#include "support.h"
#include "zkcommon/io/memstream.h"

#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <unistd.h>

using namespace ZkCommonNS;

namespace {

std::string pattern(size_t length, unsigned seed = 1) {
    std::string text(length, '\0');
    std::mt19937 random(seed);
    for (char& c : text)
        c = static_cast<char>('a' + random() % 26);
    return text;
}

// A source that generates `length` bytes (byte i is i * 31 mod 251) without holding them, and
// counts what was taken from it.
class GeneratedBuf : public std::streambuf {
public:
    explicit GeneratedBuf(uint64_t length) : m_length(length) {
        for (uint64_t i = 0; i < sizeof m_window; ++i)
            m_window[i] = byteAt(i);
    }
    static char byteAt(uint64_t i) { return static_cast<char>(i * 31 % 251); }
    uint64_t taken() const { return m_offset - static_cast<uint64_t>(egptr() - gptr()); }

protected:
    int_type underflow() override {
        if (m_offset >= m_length)
            return traits_type::eof();
        // Windows start at multiples of the period, so the one window serves them all.
        const uint64_t length = std::min<uint64_t>(sizeof m_window, m_length - m_offset);
        m_offset += length;
        setg(m_window, m_window, m_window + length);
        return traits_type::to_int_type(*gptr());
    }

private:
    uint64_t m_length;
    uint64_t m_offset = 0;
    char m_window[251 * 64]; // a whole number of periods, so windows repeat
};

class GeneratedStream : public std::istream {
public:
    explicit GeneratedStream(uint64_t length, bool* deleted = nullptr)
        : std::istream(nullptr), m_buffer(length), m_deleted(deleted) {
        init(&m_buffer);
    }
    ~GeneratedStream() override {
        if (m_deleted)
            *m_deleted = true;
    }
    uint64_t taken() const { return m_buffer.taken(); }

private:
    GeneratedBuf m_buffer;
    bool* m_deleted;
};

long residentBytes() {
    long pages = 0, resident = 0;
    if (FILE* statm = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(statm, "%ld %ld", &pages, &resident) != 2)
            resident = 0;
        std::fclose(statm);
    }
    return resident * sysconf(_SC_PAGESIZE);
}

// The model: every operation gives the same bytes, counts, positions and failures as a
// std::stringstream opened for reading and writing, also when the stream starts over a source
// that it reads lazily.
void randomWalk(uint64_t grow, bool lazy) {
    SCOPED_TRACE(testing::Message() << "grow " << grow << (lazy ? " lazy" : ""));
    std::mt19937 random(20240611);
    const std::string initial = lazy ? pattern(300, 5) : std::string();
    ZkMemStream stream(lazy ? new std::istringstream(initial) : nullptr, grow, true);
    std::stringstream model(initial, std::ios::in | std::ios::out | std::ios::binary);
    for (int step = 0; step < 3000; ++step) {
        SCOPED_TRACE(step);
        stream.clear();
        model.clear();
        const uint64_t length = model.str().size();
        const unsigned action = random() % 4;
        if (action == 0) {
            const std::string data = pattern(random() % 40, random());
            stream.write(data.data(), static_cast<std::streamsize>(data.size()));
            model.write(data.data(), static_cast<std::streamsize>(data.size()));
        } else if (action == 1) {
            // A seek of either position to any place, from any of the three origins.
            const bool get = random() % 2 == 0;
            const auto direction = static_cast<std::ios::seekdir>(random() % 3);
            const auto here = static_cast<std::streamoff>(get ? model.tellg() : model.tellp());
            const auto offset =
                static_cast<std::streamoff>(random() % (length + 1)) -
                (direction == std::ios::beg   ? 0
                 : direction == std::ios::cur ? here
                                              : static_cast<std::streamoff>(length));
            if (get) {
                stream.seekg(offset, direction);
                model.seekg(offset, direction);
            } else {
                stream.seekp(offset, direction);
                model.seekp(offset, direction);
            }
        } else {
            char mine[64], theirs[64];
            const auto count = static_cast<std::streamsize>(random() % 64);
            stream.read(mine, count);
            model.read(theirs, count);
            ASSERT_EQ(std::string(mine, static_cast<size_t>(stream.gcount())),
                      std::string(theirs, static_cast<size_t>(model.gcount())));
        }
        ASSERT_EQ(stream.fail(), model.fail());
        stream.clear();
        model.clear();
        ASSERT_EQ(stream.tellg(), model.tellg());
        ASSERT_EQ(stream.tellp(), model.tellp());
        ASSERT_TRUE(lazy || stream.length() == model.str().size());
    }
    std::string content;
    stream.appendToString(content);
    EXPECT_EQ(content, model.str());
}

} // namespace

TEST(MemStream, RandomWalkMatchesStringStream) {
    for (uint64_t grow : {1ull, 7ull, 8192ull}) {
        randomWalk(grow, /*lazy=*/false);
        randomWalk(grow, /*lazy=*/true);
    }
}

TEST(MemStream, ReadsItsSourceOnlyAsFarAsNeeded) {
    auto* source = new GeneratedStream(100000);
    ZkMemStream stream(source, 1000, true);
    EXPECT_EQ(stream.length(), 0u);
    char byte = 0;
    stream.seekg(2500);
    stream.get(byte);
    EXPECT_EQ(byte, GeneratedBuf::byteAt(2500));
    EXPECT_EQ(source->taken(), 3000u);
    EXPECT_EQ(stream.length(), 3000u);
    stream.seekg(0, std::ios::end);
    EXPECT_EQ(stream.tellg(), std::streampos(100000));
    EXPECT_EQ(stream.getSource(), nullptr); // finished and deleted
}

TEST(MemStream, SourcesFollowEachOtherAndBelongAsTold) {
    bool ownedGone = false, borrowedGone = false;
    GeneratedStream borrowed(0, &borrowedGone);
    {
        ZkMemStream stream(nullptr, 4, false);
        stream << "12";
        stream.setSource(new std::istringstream("345"), true);
        stream.setSource(new GeneratedStream(0, &ownedGone), true);
        stream.setSource(&borrowed, false);
        stream.setSource(new std::istringstream("6789"), true);
        stream.setSource(nullptr, true);
        stream.setSource(&stream, false); // would read itself without end
        EXPECT_EQ(readAll(stream), "123456789");
        EXPECT_EQ(stream.getSource(), nullptr);
    }
    EXPECT_TRUE(ownedGone);
    EXPECT_FALSE(borrowedGone);
    ZkMemStream byReference(*new std::istringstream("taken")); // deleted by the stream
    EXPECT_EQ(readAll(byReference), "taken");
}

TEST(MemStream, SearchSeekAndSeekEOLAcrossBlocks) {
    std::string data = pattern(50);
    data.replace(14, 4, "PK\x07\x08");
    for (uint64_t grow : {1ull, 3ull, 16ull, 8192ull}) {
        SCOPED_TRACE(grow);
        ZkMemStream stream(new std::istringstream(data), grow, true);
        EXPECT_TRUE(stream.searchSeek("PK\x07\x08", 4));
        EXPECT_EQ(stream.tellg(), std::streampos(14));
        EXPECT_TRUE(stream.searchSeek("PK\x07\x08", 4)); // a match at the position itself
        stream.seekg(15);
        EXPECT_FALSE(stream.searchSeek("PK\x07\x08", 4));
        EXPECT_EQ(stream.tellg(), std::streampos(15));
        EXPECT_FALSE(stream.searchSeek(""));
        EXPECT_FALSE(stream.searchSeek(nullptr));
        stream.seekg(0);
        EXPECT_TRUE(stream.skipSeek(data.substr(0, 5).c_str()));
        EXPECT_EQ(stream.tellg(), std::streampos(5));
        EXPECT_FALSE(stream.skipSeek("not here"));
        EXPECT_EQ(stream.tellg(), std::streampos(5));
        stream.seekg(46);
        EXPECT_FALSE(stream.skipSeek(data.substr(46).append("x").c_str())); // runs off the end
        EXPECT_EQ(stream.tellg(), std::streampos(46));
        // seekEOL skips to the next line, or to the end when no line end follows.
        ZkMemStream lines(new std::istringstream("first\r\n\r\nsecond\nthird"), grow, true);
        lines.seekEOL();
        EXPECT_EQ(readAll(lines), "second\nthird");
        lines.clear();
        lines.seekg(17);
        lines.seekEOL();
        EXPECT_EQ(lines.tellg(), std::streampos(21));
    }
}

TEST(MemStream, SearchSeekPullsOnlyUpToTheMatch) {
    auto* source = new GeneratedStream(1 << 20);
    ZkMemStream stream(source, 4096, true);
    const char wanted[] = {GeneratedBuf::byteAt(10000), GeneratedBuf::byteAt(10001),
                           GeneratedBuf::byteAt(10002), GeneratedBuf::byteAt(10003)};
    stream.seekg(9900); // the bytes repeat every 251: the next match is at 10000
    ASSERT_TRUE(stream.searchSeek(wanted, 4));
    EXPECT_EQ(stream.tellg(), std::streampos(10000));
    EXPECT_EQ(source->taken(), 12288u);
}

TEST(MemStream, ForwardReadWithoutKeepingMemoryStaysSmall) {
    const uint64_t total = uint64_t(1) << 30;
    auto* source = new GeneratedStream(total);
    ZkMemStream stream(source, 8192, true);
    stream.setKeepMemory(false);
    std::string chunk(1 << 16, '\0');
    // The first chunk brings in the working set (blocks, source window, the chunk itself);
    // from there on nothing may grow.
    ASSERT_TRUE(stream.read(&chunk[0], static_cast<std::streamsize>(chunk.size())));
    const long before = residentBytes();
    uint64_t read = chunk.size(), mismatches = 0;
    while (stream.read(&chunk[0], static_cast<std::streamsize>(chunk.size())) ||
           stream.gcount() > 0) {
        // One probe byte per chunk keeps the walk fast and still checks the order.
        const uint64_t probe = read / chunk.size() * 4099 % static_cast<uint64_t>(stream.gcount());
        mismatches += chunk[static_cast<size_t>(probe)] != GeneratedBuf::byteAt(read + probe);
        read += static_cast<uint64_t>(stream.gcount());
    }
    const long growth = residentBytes() - before;
    EXPECT_EQ(read, total);
    EXPECT_EQ(mismatches, 0u);
    EXPECT_LT(growth, 1 << 20);
    stream.clear();
    EXPECT_EQ(stream.tellg(), std::streampos(static_cast<std::streamoff>(total)));
    stream.seekg(static_cast<std::streamoff>(total - 3 * 8192));
    EXPECT_TRUE(stream.fail()); // recycled
}

TEST(MemStream, WritingPastTheEndFillsTheGapWithZeros) {
    ZkMemStream stream;
    stream.setGrowBytes(4);
    stream << "ab";
    stream.setGrowBytes(32); // too late: blocks exist
    EXPECT_EQ(stream.getGrowBytes(), 4u);
    stream.seekp(11);
    stream << "z";
    std::string content;
    stream.appendToString(content);
    EXPECT_EQ(content, std::string("ab\0\0\0\0\0\0\0\0\0z", 12));
    EXPECT_TRUE(stream.seekg(12));
    EXPECT_FALSE(stream.seekg(13));
    stream.clear();
    EXPECT_FALSE(stream.seekg(-1));
    stream.clear();
    EXPECT_FALSE(stream.seekg(std::numeric_limits<std::streamoff>::min(), std::ios::cur));
    stream.clear();
    EXPECT_FALSE(stream.seekp(std::numeric_limits<std::streamoff>::max(), std::ios::end));
    stream.clear();
    EXPECT_EQ(stream.tellp(), std::streampos(12));
}

TEST(MemStream, TrimCutsAndMovesPositions) {
    const std::string data = pattern(40);
    for (uint64_t cut : {0ull, 5ull, 8ull, 39ull, 40ull, 100ull}) {
        SCOPED_TRACE(cut);
        ZkMemStream stream(new std::istringstream(data), 8, true);
        stream.seekg(30);
        stream.seekp(2);
        stream.trim(cut);
        const uint64_t kept = std::min<uint64_t>(cut, 40);
        EXPECT_EQ(stream.length(), kept);
        EXPECT_EQ(stream.tellg(), std::streampos(std::min<std::streamoff>(30, kept)));
        EXPECT_EQ(stream.tellp(), std::streampos(std::min<std::streamoff>(2, kept)));
        stream << "+";
        stream.seekg(0);
        std::string expected = data.substr(0, kept);
        expected.replace(std::min<size_t>(2, kept), 1, "+");
        EXPECT_EQ(readAll(stream), expected);
    }
}

TEST(MemStream, ChecksumAddsBigEndianWords) {
    ZkMemStream small;
    small.write("\x00\x01\x02\x03\x04", 5);
    EXPECT_EQ(small.calcOTFTableChecksum(), 0x04010203u);

    const std::string data = pattern(1001, 9);
    uint32_t expected = 0;
    for (size_t i = 0; i < data.size(); i += 4) {
        uint32_t word = 0;
        for (size_t j = 0; j < 4; ++j)
            word = word << 8 | (i + j < data.size() ? static_cast<unsigned char>(data[i + j]) : 0);
        expected += word;
    }
    for (uint64_t grow : {4ull, 7ull, 8192ull}) {
        ZkMemStream stream(new std::istringstream(data), grow, true);
        EXPECT_EQ(stream.calcOTFTableChecksum(), expected) << grow;
    }
}

TEST(MemStream, BufferRunsAndPutBackAcrossBlocks) {
    ZkMemStream stream(new std::istringstream("abcdefghij"), 4, true);
    const char* data = nullptr;
    ASSERT_EQ(stream.getBuffer(data), 4u);
    EXPECT_EQ(std::string(data, 4), "abcd");
    stream.seekg(6);
    ASSERT_EQ(stream.getBuffer(data), 2u);
    EXPECT_EQ(std::string(data, 2), "gh");
    stream.seekg(4);
    EXPECT_TRUE(stream.unget());
    EXPECT_EQ(stream.get(), 'd');
    stream.seekg(10);
    EXPECT_EQ(stream.getBuffer(data), 0u);
}

TEST(MemStream, CopyStreamAndForwards) {
    ZkMemStream stream(nullptr, 3, false);
    std::istringstream source("0123456789");
    EXPECT_EQ(stream.copyStream(source, 4), 4u);
    EXPECT_EQ(stream.copyStream(source, 100), 6u);
    (stream += "ab").append("cd").writeStr("ef").writeStr(nullptr);
    EXPECT_EQ(readAll(stream), "0123456789abcdef");
    stream.begin();
    EXPECT_EQ(stream.get(), '0');
    stream.erase();
    EXPECT_TRUE(stream.empty());
}

TEST(MemStream, RemoveAbandonAndClearEmptyTheStream) {
    ZkMemStream stream(nullptr, 4, false);
    stream << "0123456789";
    stream.setSource(new std::istringstream("rest"), true);
    stream.remove();
    EXPECT_EQ(stream.length(), 0u);
    EXPECT_EQ(stream.getSource(), nullptr);
    stream << "xy";
    EXPECT_EQ(readAll(stream), "xy");

    ZkMemStream abandoned(nullptr, 4, false);
    abandoned.setSource(new std::istringstream("0123456789"), true);
    abandoned.seekg(5); // reads two blocks
    abandoned.abandonBuffer();
    EXPECT_EQ(abandoned.length(), 0u);
    EXPECT_EQ(readAll(abandoned), "89"); // the source goes on where it stood
}

TEST(MemStream, CopiesHoldTheWholeContent) {
    ZkMemStream original(new std::istringstream("lazy content"), 4, true);
    original.seekg(5);
    ZkMemStream copy(original);
    EXPECT_EQ(copy.tellg(), std::streampos(5));
    EXPECT_EQ(readAll(copy), "content");
    EXPECT_EQ(readAll(original), "content");
    ZkMemStream assigned;
    assigned << "old";
    assigned = copy;
    assigned.seekg(0);
    EXPECT_EQ(readAll(assigned), "lazy content");
}

// The names of the memory streams' files in the temporary directory.
std::set<std::string> spilledFiles() {
    std::set<std::string> names;
    for (const auto& entry :
         std::filesystem::directory_iterator(utf8(ZkTempFile::getTempDirectory()))) {
        const std::string file = entry.path().filename().string();
        if (std::regex_match(file, std::regex("ZkMem[0-9a-f]{3,}_[0-9a-f]{4,}\\.tmp")))
            names.insert(file);
    }
    return names;
}

TEST(MemStream, MovesToATemporaryFileAndBack) {
    const std::set<std::string> before = spilledFiles();
    {
        ZkMemStream stream(new std::istringstream("line one\r\nline two PK\x07\x08 tail"), 4, true);
        stream.seekg(3);
        stream.changeTempBuffer();
        ASSERT_TRUE(stream.isTempBuffer());
        EXPECT_EQ(spilledFiles().size(), before.size() + 1);
        EXPECT_EQ(stream.tellg(), std::streampos(0));
        EXPECT_EQ(stream.length(), 28u);
        EXPECT_EQ(stream.rdbuf()->length(), 0u); // the memory is given up
        stream.changeTempBuffer();               // already on disk: nothing happens
        EXPECT_TRUE(stream.searchSeek("PK\x07\x08"));
        EXPECT_EQ(stream.tellg(), std::streampos(19));
        EXPECT_TRUE(stream.skipSeek("PK"));
        EXPECT_EQ(stream.tellg(), std::streampos(21));
        stream.seekg(0);
        stream.seekEOL();
        EXPECT_EQ(stream.tellg(), std::streampos(10));
        stream.seekp(0, std::ios::end);
        stream << "!";
        stream.setSource(new std::istringstream("more"), true);
        EXPECT_EQ(stream.length(), 33u);
        std::string content;
        stream.appendToString(content);
        EXPECT_EQ(content, "line one\r\nline two PK\x07\x08 tail!more");

        ZkMemStream copy(stream);
        EXPECT_FALSE(copy.isTempBuffer());
        copy.seekg(0);
        EXPECT_EQ(readAll(copy), content);
        EXPECT_EQ(copy.calcOTFTableChecksum(), stream.calcOTFTableChecksum());

        stream.trim(4);
        stream.seekg(0);
        EXPECT_EQ(readAll(stream), "line");
        stream.resetBuffer(); // ignored while the file is in use
        EXPECT_TRUE(stream.isTempBuffer());
    }
    EXPECT_EQ(spilledFiles(), before); // removed with the stream

    ZkMemStream erased;
    erased << "on disk";
    erased.changeTempBuffer();
    erased.erase();
    EXPECT_FALSE(erased.isTempBuffer());
    EXPECT_EQ(spilledFiles(), before);
    erased << "memory again";
    EXPECT_EQ(readAll(erased), "memory again");
}
