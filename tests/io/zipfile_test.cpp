// Zip archives: the corpus made by zip, gzip and Python (every member as the tools extract
// it), streamed members, damaged and hostile archives, and a zip bomb read in bounded memory.
#include "support.h"

#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <initializer_list>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>
#include <zkcommon/io/gzipstream.h>
#include <zkcommon/io/tempfile.h>
#include <zkcommon/io/zipfile.h>
#include <zkcommon/text/util.h>
#include <zlib.h>

using namespace ZkCommonNS;

namespace {

const std::string kCorpus = ZK_ARCHIVE_CORPUS;

std::string slurp(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return readAll(file);
}

std::string unhex(const std::string& hex) {
    std::string out;
    for (size_t i = 0; i + 1 < hex.size(); i += 2)
        out += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return out;
}

// Little-endian fields, each a value and its width in bytes.
std::string fields(std::initializer_list<std::pair<uint64_t, int>> list) {
    std::string out;
    for (const auto& field : list)
        for (int i = 0; i < field.second; ++i)
            out += static_cast<char>(field.first >> (8 * i));
    return out;
}

// clang-format off
std::string localHeader(const std::string& name, unsigned flags, unsigned method, uint32_t crc,
                        uint32_t compressed, uint32_t size) {
    return "PK\x03\x04" + fields({{20, 2}, {flags, 2}, {method, 2}, {0, 4}, {crc, 4}, {compressed, 4}, {size, 4}, {name.size(), 2}, {0, 2}}) + name;
}

std::string centralRecord(const std::string& name, unsigned flags, unsigned method, uint32_t crc,
                          uint32_t compressed, uint32_t size, uint32_t offset) {
    return "PK\x01\x02" + fields({{20, 2}, {20, 2}, {flags, 2}, {method, 2}, {0, 4}, {crc, 4}, {compressed, 4}, {size, 4}, {name.size(), 2}, {0, 8}, {0, 4}, {offset, 4}}) + name;
}
// clang-format on

std::string endRecord(unsigned count, uint32_t size, uint32_t offset) {
    return "PK\x05\x06" + fields({{0, 4}, {count, 2}, {count, 2}, {size, 4}, {offset, 4}, {0, 2}});
}

long peakResidentKiB() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("VmHWM:", 0) == 0)
            return std::stol(line.substr(6));
    return -1;
}

std::unique_ptr<ZkZipFile> openBytes(const std::string& bytes) {
    auto zip = std::make_unique<ZkZipFile>();
    zip->open(new std::istringstream(bytes), /*own=*/true);
    return zip;
}

} // namespace

TEST(ZipFile, CorpusReadsAsTheToolsSay) {
    const auto manifest = readTable(kCorpus + "/manifest.txt");
    std::unique_ptr<ZkZipFile> zip;
    int archives = 0, members = 0, gzips = 0;
    for (const std::vector<std::string>& f : manifest) {
        SCOPED_TRACE(f[0] + " " + f[1]);
        if (f[0] == "archive") {
            ++archives;
            zip = std::make_unique<ZkZipFile>();
            ASSERT_TRUE(zip->open((kCorpus + "/" + f[1]).c_str()));
            EXPECT_EQ(zip->getFileEntryCount(), std::stoul(f[2]));
            EXPECT_EQ(utf8(zip->getComment()), unhex(f[3]));
        } else if (f[0] == "member") {
            ++members;
            ZkPtr<ZkZipFileEntry> entry = zip->getFileEntry(std::stoul(f[2]));
            ASSERT_TRUE(entry);
            const std::string name = unhex(f[3]);
            EXPECT_EQ(utf8(entry->getName()), name);
            EXPECT_EQ(entry->getMethod(), std::stoul(f[4]));
            const std::string expected = slurp(kCorpus + "/" + f[7]);
            std::istream* cached = entry->getUncompressedStream(/*fresh=*/false);
            std::string content = readAll(*cached);
            if (f[8] == "exact") {
                EXPECT_EQ(entry->getUncompressedSize(), std::stoul(f[5]));
                EXPECT_EQ(entry->getCRC32(), std::stoul(f[6], nullptr, 16));
                EXPECT_TRUE(content == expected);
                EXPECT_FALSE(cached->bad());
            } else {
                EXPECT_LT(content.size(), expected.size());
                EXPECT_TRUE(content == expected.substr(0, content.size()));
            }
            // The cached stream comes back rewound; a fresh one is the caller's and says the same.
            EXPECT_EQ(readAll(*entry->getUncompressedStream(false)), content);
            std::unique_ptr<std::istream> fresh(entry->getUncompressedStream(/*fresh=*/true));
            EXPECT_EQ(readAll(*fresh), content);
            // A name finds its first member.
            ZkPtr<ZkZipFileEntry> byName = zip->getFileEntry(UnicodeString::fromUTF8(name));
            ASSERT_TRUE(byName);
            EXPECT_EQ(utf8(byName->getName()), name);
        } else if (f[0] == "gzip") {
            ++gzips;
            const std::string path = kCorpus + "/" + f[1];
            const std::string expected = slurp(kCorpus + "/" + f[2]);
            std::ifstream file(path, std::ios::binary);
            ZkGzipIStream byStream(file);
            ZkGzipIStream byPath(path.c_str());
            for (ZkGzipIStream* in : {&byStream, &byPath}) {
                const std::string content = readAll(*in);
                if (f[3] == "exact") {
                    EXPECT_TRUE(content == expected);
                    EXPECT_FALSE(in->bad());
                } else {
                    EXPECT_LT(content.size(), expected.size());
                    EXPECT_TRUE(content == expected.substr(0, content.size()));
                    EXPECT_TRUE(in->bad());
                }
            }
        }
    }
    EXPECT_GE(archives, 15);
    EXPECT_GE(members, 40);
    EXPECT_GE(gzips, 7);
}

TEST(ZipFile, LookupsAndSignatures) {
    ZkZipFile zip;
    ASSERT_TRUE(zip.open((kCorpus + "/basic.zip").c_str()));
    EXPECT_FALSE(zip.getFileEntry(UnicodeString(u"missing")));
    EXPECT_FALSE(zip.getFileEntry(999u));
    EXPECT_EQ(zip.getFileEntry(0u)->getSignature(), ZkZipEntry::kLocalSignature);
    EXPECT_TRUE(zip.getFileEntry(0u)->isA(ZkZipEntry::getStaticTypeID()));
    EXPECT_EQ(utf8(zip.getFileEntry(0u)->getTypeName()), "ZkZipFileEntry");
    // clang-format off
    struct { const char* file; bool zip; } cases[] = {
        {"basic.zip", true}, {"empty.zip", true}, {"truncated.zip", true},
        {"streamed-python.zip", true}, {"garbage-before.zip", false}, {"plain.zip", false},
        {"big.xml.gz", false}, {"missing.zip", false}, {"", false},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        EXPECT_EQ(ZkZipFile::isZipFile((kCorpus + "/" + c.file).c_str()), c.zip);
    }
    std::istringstream stream(slurp(kCorpus + "/basic.zip"));
    stream.seekg(0);
    EXPECT_TRUE(ZkZipFile::isZipFile(&stream));
    EXPECT_EQ(stream.tellg(), std::streampos(0));
    std::istringstream shortStream("PK");
    EXPECT_EQ(ZkZipEntry::getSignature(shortStream), 0u);
    EXPECT_FALSE(ZkZipFile::isZipFile(static_cast<std::istream*>(nullptr)));
    EXPECT_FALSE(zip.open(static_cast<std::istream*>(nullptr), false));
    EXPECT_EQ(zip.getFileEntryCount(), 0u);
}

TEST(ZipFile, EntriesOutliveTheArchive) {
    ZkPtr<ZkZipFileEntry> loaded, unloaded;
    {
        ZkZipFile zip;
        ASSERT_TRUE(zip.open((kCorpus + "/python.zip").c_str()));
        loaded = zip.getFileEntry(0u);
        unloaded = zip.getFileEntry(1u);
        readAll(*loaded->getUncompressedStream(false));
    }
    std::string stored;
    for (int i = 0; i < 100; ++i)
        stored += "stored bytes ";
    EXPECT_EQ(readAll(*loaded->getUncompressedStream(false)), stored);
    EXPECT_EQ(readAll(*loaded->getCompressedStream(false)).size(), 1300u);
    std::istream* lost = unloaded->getUncompressedStream(false);
    EXPECT_EQ(readAll(*lost), "");
    EXPECT_TRUE(lost->bad());
}

TEST(ZipFile, EveryCutOfAnArchiveReadsAsPrefixes) {
    const std::string bytes = slurp(kCorpus + "/python.zip");
    ZkZipFile whole;
    ASSERT_TRUE(whole.open((kCorpus + "/python.zip").c_str()));
    std::vector<std::string> contents;
    for (unsigned i = 0; i < whole.getFileEntryCount(); ++i)
        contents.push_back(readAll(*whole.getFileEntry(i)->getUncompressedStream(false)));
    for (size_t cut = 0; cut < bytes.size(); cut += 61) {
        SCOPED_TRACE(cut);
        auto zip = openBytes(bytes.substr(0, cut));
        ASSERT_LE(zip->getFileEntryCount(), contents.size());
        for (unsigned i = 0; i < zip->getFileEntryCount(); ++i) {
            std::unique_ptr<std::istream> in(zip->getFileEntry(i)->getUncompressedStream(true));
            std::string content = readAll(*in);
            EXPECT_TRUE(contents[i].compare(0, content.size(), content) == 0) << i;
        }
    }
}

// A member written as a stream that inflates to 1 GiB from about 1 MB: it is read through in
// bounded memory, and init does not inflate anything.
TEST(ZipFile, ZipBombReadsInBoundedMemory) {
    const std::string zeros(1 << 20, '\0');
    z_stream zs{};
    ASSERT_EQ(deflateInit2(&zs, 9, Z_DEFLATED, -15, 9, Z_DEFAULT_STRATEGY), Z_OK);
    std::string chunk(8192, '\0');
    zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(zeros.data()));
    zs.avail_in = static_cast<uInt>(zeros.size());
    zs.next_out = reinterpret_cast<Bytef*>(&chunk[0]);
    zs.avail_out = static_cast<uInt>(chunk.size());
    ASSERT_EQ(deflate(&zs, Z_SYNC_FLUSH), Z_OK); // byte-aligned, not final: blocks repeat
    chunk.resize(chunk.size() - zs.avail_out);
    deflateEnd(&zs);
    const int repeats = 1024;
    std::string deflated;
    deflated.reserve(chunk.size() * repeats + 2);
    for (int i = 0; i < repeats; ++i)
        deflated += chunk;
    deflated += std::string("\x03\x00", 2); // an empty final block
    const uint64_t size = uint64_t(zeros.size()) * repeats;

    const uLong zerosCrc =
        crc32(0, reinterpret_cast<const Bytef*>(zeros.data()), static_cast<uInt>(zeros.size()));
    uLong crc = 0;
    for (int i = 0; i < repeats; ++i)
        crc = crc32_combine(crc, zerosCrc, static_cast<z_off_t>(zeros.size()));
    std::string archive = localHeader("bomb.bin", 8, 8, 0, 0, 0) + deflated;
    archive += "PK\x07\x08" + fields({{crc, 4}, {deflated.size(), 4}, {size, 4}});
    const auto directoryStart = static_cast<uint32_t>(archive.size());
    const std::string central =
        centralRecord("bomb.bin", 8, 8, static_cast<uint32_t>(crc),
                      static_cast<uint32_t>(deflated.size()), static_cast<uint32_t>(size), 0);
    archive += central + endRecord(1, static_cast<uint32_t>(central.size()), directoryStart);

    TempDir dir;
    const std::string path = dir.file("bomb.zip", archive);
    archive.clear();
    archive.shrink_to_fit();
    deflated.clear();
    deflated.shrink_to_fit();

    // Peak memory from here on: writing 5 to clear_refs resets the high-water mark.
    std::ofstream("/proc/self/clear_refs") << "5";
    const long before = peakResidentKiB();
    ZkZipFile zip;
    ASSERT_TRUE(zip.open(path.c_str()));
    ASSERT_EQ(zip.getFileEntryCount(), 1u);
    ZkPtr<ZkZipFileEntry> entry = zip.getFileEntry(0u);
    EXPECT_EQ(entry->getUncompressedSize(), static_cast<uint32_t>(size));
    std::istream* in = entry->getUncompressedStream(false);
    std::vector<char> piece(65536);
    uint64_t total = 0;
    bool allZero = true;
    while (in->read(piece.data(), static_cast<std::streamsize>(piece.size())) || in->gcount()) {
        total += static_cast<uint64_t>(in->gcount());
        allZero = allZero && piece[0] == 0 && piece[static_cast<size_t>(in->gcount()) - 1] == 0;
    }
    EXPECT_EQ(total, size);
    EXPECT_TRUE(allZero);
    EXPECT_FALSE(in->bad());
    const long grown = peakResidentKiB() - before;
    EXPECT_LT(grown, 32 * 1024) << "KiB";
}

// Thousands of directory records pointing at one streamed member without a descriptor: the
// descriptor searches share one budget, so opening ends soon instead of rereading the
// archive for each record.
TEST(ZipFile, HostileDirectoriesCannotMakeInitRereadTheArchive) {
    std::string archive = localHeader("a", 8, 0, 0, 0, 0) + std::string(1 << 20, 'x');
    const auto directoryStart = static_cast<uint32_t>(archive.size());
    const std::string record = centralRecord("a", 8, 0, 0, 0, 0, 0);
    const unsigned count = 20000;
    for (unsigned i = 0; i < count; ++i)
        archive += record;
    archive += endRecord(0xFFFF, static_cast<uint32_t>(record.size() * count), directoryStart);
    auto zip = openBytes(archive);
    EXPECT_EQ(zip->getFileEntryCount(), count);
    EXPECT_EQ(utf8(zip->getFileEntry(0u)->getName()), "a");
}

TEST(ZipFile, ScanSkipsGarbageBetweenMembersAndStopsBeforeTheFirst) {
    const std::string a = localHeader("a.txt", 0, 0, 0, 5, 5) + "hello";
    const std::string b = localHeader("b.txt", 0, 0, 0, 5, 5) + "world";
    auto zip = openBytes(a + "garbage PK in between" + b);
    ASSERT_EQ(zip->getFileEntryCount(), 2u);
    EXPECT_EQ(readAll(*zip->getFileEntry(UnicodeString(u"b.txt"))->getUncompressedStream(false)),
              "world");
    EXPECT_EQ(openBytes("garbage" + a + b)->getFileEntryCount(), 0u);
    // Unknown methods come raw, without an error.
    auto odd = openBytes(localHeader("x", 0, 12, 0, 3, 9) + "abc");
    std::istream* raw = odd->getFileEntry(0u)->getUncompressedStream(false);
    EXPECT_EQ(readAll(*raw), "abc");
    EXPECT_FALSE(raw->bad());
}

TEST(TempFile, InflatesIntoItsFile) {
    const std::string data = "text for the temporary file\n";
    std::ostringstream packed;
    ASSERT_TRUE(ZkUtil::deflate(packed, reinterpret_cast<const unsigned char*>(data.data()),
                                static_cast<unsigned int>(data.size())));
    const std::string z = packed.str();
    const auto* bytes = reinterpret_cast<const unsigned char*>(z.data());
    ZkTempFile file("", "ZkInflate", ".bin");
    EXPECT_TRUE(file.inflate(bytes, static_cast<unsigned int>(z.size())));
    EXPECT_EQ(slurp(file.getFileName().c_str()), data);
    EXPECT_FALSE(file.inflate(bytes, static_cast<unsigned int>(z.size() - 3)));
    EXPECT_FALSE(ZkTempFile().inflate(bytes, static_cast<unsigned int>(z.size())));
}
