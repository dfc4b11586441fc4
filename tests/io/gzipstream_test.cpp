// Gzip, inflate and deflate streams against zlib as the reference, on whole, damaged,
// concatenated and plain data.
#include "support.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <vector>
#include <zkcommon/io/gzipstream.h>
#include <zkcommon/text/util.h>
#include <zlib.h>

using namespace ZkCommonNS;

namespace {

// zlib with `windowBits` (31 gzip, -15 raw, 15 zlib format) as the independent compressor.
std::string zlibCompress(const std::string& data, int windowBits, int level = 6) {
    z_stream zs{};
    EXPECT_EQ(deflateInit2(&zs, level, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string out(deflateBound(&zs, static_cast<uLong>(data.size())) + 64, '\0');
    zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
    zs.avail_in = static_cast<uInt>(data.size());
    zs.next_out = reinterpret_cast<Bytef*>(&out[0]);
    zs.avail_out = static_cast<uInt>(out.size());
    EXPECT_EQ(deflate(&zs, Z_FINISH), Z_STREAM_END);
    out.resize(zs.total_out);
    deflateEnd(&zs);
    return out;
}

std::string zlibDecompress(const std::string& data, int windowBits) {
    z_stream zs{};
    EXPECT_EQ(inflateInit2(&zs, windowBits), Z_OK);
    zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
    zs.avail_in = static_cast<uInt>(data.size());
    std::string out;
    char piece[8192];
    int status = Z_OK;
    while (status == Z_OK) {
        zs.next_out = reinterpret_cast<Bytef*>(piece);
        zs.avail_out = sizeof piece;
        status = inflate(&zs, Z_NO_FLUSH);
        out.append(piece, sizeof piece - zs.avail_out);
    }
    EXPECT_EQ(status, Z_STREAM_END);
    inflateEnd(&zs);
    return out;
}

// Text with repeats (compresses) mixed with noise (does not).
std::string sample(size_t length, unsigned seed) {
    std::mt19937 random(seed);
    std::string out;
    out.reserve(length);
    while (out.size() < length) {
        if (random() % 3 == 0)
            out += "<fo:block font-size=\"12pt\">text</fo:block>\n";
        else
            out += static_cast<char>(random());
    }
    out.resize(length);
    return out;
}

// Reads `in` in pieces of `piece` bytes through read(), the way buffered callers do.
std::string readPieces(std::istream& in, size_t piece) {
    std::string out;
    std::vector<char> buffer(piece);
    while (in.read(buffer.data(), static_cast<std::streamsize>(piece)) || in.gcount() > 0)
        out.append(buffer.data(), static_cast<size_t>(in.gcount()));
    return out;
}

std::string gzipTrailer(const std::string& data) {
    uint32_t crc = static_cast<uint32_t>(
        crc32(0, reinterpret_cast<const Bytef*>(data.data()), static_cast<uInt>(data.size())));
    uint32_t length = static_cast<uint32_t>(data.size());
    std::string out;
    for (uint32_t word : {crc, length})
        for (int shift = 0; shift < 32; shift += 8)
            out += static_cast<char>(word >> shift);
    return out;
}

// A stream buffer over a string that refuses to seek, like a pipe.
class PipeBuf : public std::stringbuf {
public:
    explicit PipeBuf(const std::string& data) : std::stringbuf(data, std::ios_base::in) {}

protected:
    pos_type seekoff(off_type, std::ios_base::seekdir, std::ios_base::openmode) override {
        return pos_type(off_type(-1));
    }
    pos_type seekpos(pos_type, std::ios_base::openmode) override { return pos_type(off_type(-1)); }
};

} // namespace

TEST(GzipIStream, ReadsWhatZlibWroteInEveryPieceSize) {
    for (size_t length : {0u, 1u, 4095u, 4096u, 4097u, 70000u}) {
        const std::string data = sample(length, static_cast<unsigned>(length));
        const std::string packed = zlibCompress(data, 31);
        for (size_t piece : {1u, 7u, 4096u, 65536u}) {
            SCOPED_TRACE(std::to_string(length) + " in pieces of " + std::to_string(piece));
            std::istringstream source(packed);
            ZkGzipIStream in(source);
            EXPECT_TRUE(in.rdbuf()->isCompressed());
            EXPECT_EQ(readPieces(in, piece), data);
            EXPECT_FALSE(in.bad());
            EXPECT_FALSE(in.rdbuf()->isDataError());
        }
    }
}

TEST(GzipIStream, PassesPlainDataThrough) {
    // clang-format off
    const std::string cases[] = {"", "x", "\x1f", "\x1f\x8b", "\x1f\x8b\x08",
                                 "plain text that is not compressed\n",
                                 std::string("\x1f\x8b\x07\x00rest", 8),   // method 7
                                 std::string("\x1f\x8b\x08\x20rest", 8)};  // reserved flag bit
    // clang-format on
    for (const std::string& text : cases) {
        SCOPED_TRACE(text);
        std::istringstream source(text);
        ZkGzipIStream in(source);
        EXPECT_FALSE(in.rdbuf()->isCompressed());
        EXPECT_EQ(readAll(in), text);
        EXPECT_FALSE(in.bad());
    }
    const std::string big = sample(20000, 7);
    std::istringstream source(big);
    ZkGzipIStream in(source);
    EXPECT_EQ(readPieces(in, 5000), big);
}

TEST(GzipIStream, SkipsOptionalHeaderFields) {
    const std::string data = "optional fields before the data";
    const std::string body = zlibCompress(data, -15) + gzipTrailer(data);
    // clang-format off
    struct { int flags; std::string fields; } cases[] = {
        {4, std::string("\x05\x00" "extra", 7)},
        {8, std::string("name.txt\0", 9)},
        {16, std::string("a comment\0", 10)},
        {2, std::string("\xAB\xCD", 2)},
        {30, std::string("\x01\x00" "X" "n\0" "c\0" "\x01\x02", 9)},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.flags);
        const std::string head = {'\x1f', '\x8b', '\x08', static_cast<char>(c.flags), 0, 0, 0,
                                  0,      0,      3};
        std::istringstream source(head + c.fields + body);
        ZkGzipIStream in(source);
        EXPECT_EQ(readAll(in), data);
        EXPECT_FALSE(in.bad());
    }
}

TEST(GzipIStream, ReadsConcatenatedMembersAndIgnoresTrailingBytes) {
    const std::string a = sample(5000, 1), b = sample(3000, 2);
    std::istringstream source(zlibCompress(a, 31) + zlibCompress(b, 31) + std::string(100, '\0'));
    ZkGzipIStream in(source);
    EXPECT_EQ(readAll(in), a + b);
    EXPECT_FALSE(in.bad());
}

TEST(GzipIStream, DamagedDataEndsTheStreamWithItsBadBit) {
    const std::string data = sample(20000, 3);
    const std::string packed = zlibCompress(data, 31);
    // Every cut: a prefix of the data comes out, and the stream ends bad.
    for (size_t cut = 4; cut < packed.size(); cut += (cut < 40 ? 1 : 97)) {
        SCOPED_TRACE(cut);
        std::istringstream source(packed.substr(0, cut));
        ZkGzipIStream in(source);
        std::string out = readAll(in);
        EXPECT_EQ(out, data.substr(0, out.size()));
        EXPECT_TRUE(in.bad());
        EXPECT_TRUE(in.rdbuf()->isDataError());
    }
    // A changed byte after the header: the output differs only with the error raised.
    std::mt19937 random(11);
    for (int round = 0; round < 200; ++round) {
        std::string damaged = packed;
        damaged[10 + random() % (damaged.size() - 10)] ^= static_cast<char>(1 + random() % 255);
        std::istringstream source(damaged);
        ZkGzipIStream in(source);
        std::string out = readPieces(in, 1000);
        EXPECT_TRUE(in.bad()) << "round " << round;
        EXPECT_LE(out.size(), data.size() + 32768);
    }
}

// Found by fuzzing: the bad bit came with the bytes that revealed the damage, so a reader taking
// one byte at a time lost the good bytes decoded before it.
TEST(GzipIStream, DamageIsReportedAfterTheGoodBytes) {
    const std::string data = sample(3000, 16);
    std::string packed = zlibCompress(data, 31);
    packed.back() ^= 1; // the length in the trailer
    for (size_t piece : {1u, 100u, 65536u}) {
        std::istringstream source(packed);
        ZkGzipIStream in(source);
        EXPECT_EQ(readPieces(in, piece), data) << piece;
        EXPECT_TRUE(in.bad());
    }
    const std::string raw = zlibCompress(data, -15);
    ZkInflaterStream whole(raw.data(), raw.size() - 1, /*copy=*/false);
    const std::string expected = readPieces(whole, 65536);
    ZkInflaterStream bytewise(raw.data(), raw.size() - 1, /*copy=*/false);
    EXPECT_EQ(readPieces(bytewise, 1), expected);
    EXPECT_TRUE(bytewise.bad());
}

TEST(GzipIStream, ReadsFromSourcesThatCannotSeek) {
    const std::string data = sample(30000, 4);
    for (const std::string& bytes : {zlibCompress(data, 31), data}) {
        PipeBuf pipe(bytes);
        std::istream source(&pipe);
        ZkGzipIStream in(source);
        EXPECT_EQ(readPieces(in, 333), data);
    }
}

TEST(GzipIStream, TellsSeeksAndPutsBack) {
    const std::string data = sample(50000, 5);
    std::istringstream source(zlibCompress(data, 31));
    ZkGzipIStream in(source);
    std::string head(4100, '\0');
    in.read(&head[0], 4100);
    EXPECT_EQ(in.tellg(), std::streampos(4100));
    for (int i = 0; i < 16; ++i)
        EXPECT_TRUE(in.unget());
    EXPECT_EQ(in.get(), static_cast<unsigned char>(data[4084]));
    in.seekg(30000);
    EXPECT_EQ(in.get(), static_cast<unsigned char>(data[30000]));
    in.seekg(10);
    EXPECT_EQ(in.get(), static_cast<unsigned char>(data[10]));
    EXPECT_EQ(readAll(in), data.substr(11));
    in.clear();
    in.seekg(60000);
    EXPECT_TRUE(in.fail());
}

TEST(GzipIStream, PathFormReadsFilesAndRefusesTheRest) {
    TempDir dir;
    const std::string data = sample(40000, 6);
    const std::string packed = dir.file("a.gz", zlibCompress(data, 31));
    const std::string plain = dir.file("a.txt", data);
    const std::string whole = zlibCompress(data, 31);
    const std::string cut = dir.file("cut.gz", whole.substr(0, whole.size() / 2));
    {
        ZkGzipIStream in(packed.c_str());
        EXPECT_TRUE(in.is_open());
        EXPECT_TRUE(in.rdbuf()->isCompressed());
        EXPECT_EQ(readPieces(in, 4096), data);
        in.clear();
        in.seekg(123); // after the end the file was closed: seeking opens it again
        EXPECT_EQ(in.get(), static_cast<unsigned char>(data[123]));
    }
    {
        ZkGzipIStream in(UnicodeString::fromUTF8(plain));
        EXPECT_FALSE(in.rdbuf()->isCompressed());
        EXPECT_EQ(readAll(in), data);
    }
    {
        ZkGzipIStream in(cut.c_str());
        std::string out = readAll(in);
        EXPECT_EQ(out, data.substr(0, out.size()));
        EXPECT_TRUE(in.bad());
    }
    const std::string fifo = dir.path() + "/fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const std::string& path : {dir.path() + "/missing.gz", dir.path(), fifo}) {
        SCOPED_TRACE(path);
        ZkGzipIStream in(path.c_str());
        EXPECT_FALSE(in.is_open());
        EXPECT_TRUE(in.fail());
        EXPECT_EQ(in.get(), std::char_traits<char>::eof());
    }
}

TEST(GzipOStream, WritesGzipThatZlibReads) {
    for (size_t length : {0u, 1u, 4096u, 100000u}) {
        SCOPED_TRACE(length);
        const std::string data = sample(length, 8);
        std::ostringstream sink;
        {
            ZkGzipOStream out(sink);
            // Small and large writes: through the put area and past it.
            out.write(data.data(), static_cast<std::streamsize>(data.size() / 2));
            for (size_t i = data.size() / 2; i < data.size() && i < data.size() / 2 + 100; ++i)
                out.put(data[i]);
            if (data.size() / 2 + 100 < data.size())
                out.write(data.data() + data.size() / 2 + 100,
                          static_cast<std::streamsize>(data.size() - data.size() / 2 - 100));
            EXPECT_TRUE(out.good());
        }
        EXPECT_EQ(zlibDecompress(sink.str(), 31), data);
    }
}

TEST(GzipOStream, FlushEndsTheMember) {
    std::ostringstream sink;
    ZkGzipOStream out(sink);
    out << "first" << std::flush;
    EXPECT_TRUE(out.good());
    EXPECT_EQ(zlibDecompress(sink.str(), 31), "first");
    out << "more";
    out.flush();
    EXPECT_TRUE(out.bad());
    EXPECT_EQ(zlibDecompress(sink.str(), 31), "first");
}

TEST(GzipOStream, PathFormRoundTripsAndFailsOnBadPaths) {
    TempDir dir;
    const std::string data = sample(9000, 9);
    const std::string path = dir.path() + "/out.gz";
    {
        ZkGzipOStream out(UnicodeString::fromUTF8(path));
        EXPECT_TRUE(out.is_open());
        out << data;
    }
    ZkGzipIStream in(path.c_str());
    EXPECT_EQ(readAll(in), data);
    ZkGzipOStream bad(UnicodeString::fromUTF8(dir.path() + "/no/such/dir/x.gz"));
    EXPECT_FALSE(bad.is_open());
    bad << "x";
    EXPECT_TRUE(bad.bad());
}

TEST(InflaterStream, ReadsRawDeflateAndResets) {
    const std::string data = sample(30000, 10);
    const std::string packed = zlibCompress(data, -15);
    ZkInflaterStream in(packed.data(), packed.size(), /*copy=*/false);
    EXPECT_EQ(readPieces(in, 100), data);
    EXPECT_FALSE(in.bad());
    in.reset();
    EXPECT_EQ(readPieces(in, 8192), data);
    in.rdbuf()->reset();
    in.clear();
    in.seekg(20000);
    EXPECT_EQ(in.tellg(), std::streampos(20000));
    EXPECT_EQ(readAll(in), data.substr(20000));
    // A copy owns its bytes.
    std::string scratch = packed;
    ZkInflaterStream copied(scratch.data(), scratch.size(), /*copy=*/true);
    std::fill(scratch.begin(), scratch.end(), '\0');
    EXPECT_EQ(readAll(copied), data);
}

TEST(InflaterStream, DamagedOrEmptyData) {
    const std::string data = sample(10000, 13);
    const std::string packed = zlibCompress(data, -15);
    for (size_t cut = 1; cut < packed.size(); cut += 37) {
        ZkInflaterStream in(packed.data(), cut, /*copy=*/false);
        std::string out = readAll(in);
        EXPECT_EQ(out, data.substr(0, out.size()));
        EXPECT_TRUE(in.bad()) << cut;
    }
    const char garbage[] = "\xff\xff\xff\xff not deflate";
    ZkInflaterStream bad(garbage, sizeof garbage, /*copy=*/false);
    readAll(bad);
    EXPECT_TRUE(bad.bad());
    EXPECT_TRUE(bad.rdbuf()->isDataError());
    ZkInflaterStream empty(nullptr, 0, /*copy=*/true);
    EXPECT_EQ(readAll(empty), "");
    EXPECT_FALSE(empty.bad());
}

TEST(ZkUtilDeflate, KnownAnswerAndRoundTrips) {
    std::ostringstream packed;
    const std::string hello = "hello";
    ASSERT_TRUE(ZkUtil::deflate(packed, reinterpret_cast<const unsigned char*>(hello.data()), 5));
    EXPECT_EQ(packed.str(),
              std::string("\x78\xda\xcb\x48\xcd\xc9\xc9\x07\x00\x06\x2c\x02\x15", 13));
    for (size_t length : {0u, 1u, 5000u, 200000u}) {
        const std::string data = sample(length, 14);
        const auto* bytes = reinterpret_cast<const unsigned char*>(data.data());
        const auto size = static_cast<unsigned int>(data.size());
        std::ostringstream zlibForm, back, rawBack;
        ASSERT_TRUE(ZkUtil::deflate(zlibForm, bytes, size));
        EXPECT_EQ(zlibDecompress(zlibForm.str(), 15), data);
        const std::string z = zlibForm.str();
        EXPECT_TRUE(ZkUtil::inflate(back, reinterpret_cast<const unsigned char*>(z.data()),
                                    static_cast<unsigned int>(z.size())));
        EXPECT_EQ(back.str(), data);
        const std::string raw = zlibCompress(data, -15);
        EXPECT_TRUE(ZkUtil::inflate2(rawBack, reinterpret_cast<const unsigned char*>(raw.data()),
                                     static_cast<unsigned int>(raw.size())));
        EXPECT_EQ(rawBack.str(), data);
    }
}

TEST(ZkUtilDeflate, FailuresReturnFalse) {
    const std::string data = sample(10000, 15);
    const std::string z = zlibCompress(data, 15);
    const auto* bytes = reinterpret_cast<const unsigned char*>(z.data());
    std::ostringstream out;
    EXPECT_FALSE(ZkUtil::inflate(out, bytes, static_cast<unsigned int>(z.size() - 1)));
    EXPECT_FALSE(ZkUtil::inflate2(out, bytes, static_cast<unsigned int>(z.size()))); // wrapped
    EXPECT_FALSE(ZkUtil::inflate(out, nullptr, 0));
    EXPECT_FALSE(ZkUtil::deflate(out, nullptr, 10));
    std::ostringstream closed;
    closed.setstate(std::ios_base::badbit);
    EXPECT_FALSE(ZkUtil::inflate(closed, bytes, static_cast<unsigned int>(z.size())));
    EXPECT_FALSE(ZkUtil::deflate(closed, bytes, 10));
}
