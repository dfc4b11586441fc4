// ZkMemStream::getMD5: the digest of the whole content, across blocks, lazily read sources and
// the temporary file, leaving the positions alone.
#include "zkcommon/crypto/md5.h"
#include "zkcommon/io/memstream.h"

#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <string>

using namespace ZkCommonNS;

namespace {

std::string hex(const std::array<unsigned char, 16>& digest) {
    static const char kDigits[] = "0123456789abcdef";
    std::string text;
    for (unsigned char b : digest) {
        text += kDigits[b >> 4];
        text += kDigits[b & 15];
    }
    return text;
}

std::string md5Of(const std::string& text) {
    MD5_CTX md5;
    md5.Update(reinterpret_cast<const unsigned char*>(text.data()), text.size());
    std::array<unsigned char, 16> digest;
    md5.Final(digest.data());
    return hex(digest);
}

} // namespace

TEST(MemStreamMD5, WholeContentAcrossBlocksAndSources) {
    ZkMemStream empty;
    EXPECT_EQ(hex(empty.getMD5()), "d41d8cd98f00b204e9800998ecf8427e");
    std::mt19937 random(16);
    for (unsigned long long grow : {1ull, 3ull, 64ull, 8192ull}) {
        SCOPED_TRACE(grow);
        std::string written(1000, '\0'), queued(2345, '\0');
        for (char& c : written)
            c = static_cast<char>(random());
        for (char& c : queued)
            c = static_cast<char>(random());
        ZkMemStream stream(nullptr, grow, false);
        stream.write(written.data(), static_cast<std::streamsize>(written.size()));
        // A queued source is pulled in first, and the positions stay put.
        stream.setSource(new std::istringstream(queued), true);
        stream.seekg(17);
        EXPECT_EQ(hex(stream.getMD5()), md5Of(written + queued));
        EXPECT_EQ(stream.tellg(), std::streampos(17));
        EXPECT_EQ(stream.get(), static_cast<unsigned char>(written[17]));
    }
}

TEST(MemStreamMD5, FromTheTemporaryFile) {
    const std::string content = "line one\r\nline two\r\n" + std::string(20000, 'x');
    ZkMemStream stream(new std::istringstream(content), 4096, true);
    const std::string inMemory = hex(stream.getMD5());
    stream.changeTempBuffer();
    ASSERT_TRUE(stream.isTempBuffer());
    stream.seekg(5);
    EXPECT_EQ(hex(stream.getMD5()), inMemory);
    EXPECT_EQ(inMemory, md5Of(content));
    EXPECT_EQ(stream.tellg(), std::streampos(5));
}
