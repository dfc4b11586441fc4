// ZkCustomStream over a recording controller, and ZkStrStream over memory blocks.
#include "support.h"
#include "zkcommon/io/customstream.h"

#include <gtest/gtest.h>
#include <limits>
#include <string>

using namespace ZkCommonNS;

namespace {

// Serves `input` in pieces of at most `piece` bytes and records what is written.
class RecordingController : public ZkCustomStreamController {
public:
    explicit RecordingController(std::string input = std::string(), int piece = 1 << 30)
        : m_input(std::move(input)), m_piece(piece) {}

    int close() override {
        ++closes;
        return 0;
    }
    long long getLength() override { return static_cast<long long>(m_input.size()); }
    int read(char* buffer, int size) override {
        ++reads;
        if (failReads)
            return -1;
        const size_t length = std::min<size_t>(
            {static_cast<size_t>(size), static_cast<size_t>(m_piece), m_input.size() - m_offset});
        m_input.copy(buffer, length, m_offset);
        m_offset += length;
        return static_cast<int>(length);
    }
    int write(const char* buffer, int size) override {
        if (failWrites)
            return -1;
        written.append(buffer, static_cast<size_t>(size));
        return size;
    }

    std::string written;
    int reads = 0;
    int closes = 0;
    bool failReads = false;
    bool failWrites = false;

private:
    std::string m_input;
    int m_piece;
    size_t m_offset = 0;
};

std::string pattern(size_t length) {
    std::string text(length, '\0');
    for (size_t i = 0; i < length; ++i)
        text[i] = static_cast<char>('a' + (i * 7 + i / 26) % 26);
    return text;
}

} // namespace

TEST(CustomStream, ReadsAcrossRefillsInUnevenPieces) {
    const std::string input = pattern(30000);
    RecordingController controller(input, 1000);
    ZkCustomStream stream(&controller);
    EXPECT_TRUE(stream.is_open());
    EXPECT_EQ(readAll(stream), input);
}

TEST(CustomStream, WritesEverythingBySyncAndDestruction) {
    const std::string output = pattern(20000);
    RecordingController controller;
    {
        ZkCustomStream stream(&controller);
        stream.write(output.data(), 100);
        EXPECT_EQ(controller.written, "");
        stream.flush();
        EXPECT_EQ(controller.written, output.substr(0, 100));
        stream.write(output.data() + 100, static_cast<std::streamsize>(output.size() - 100));
        EXPECT_EQ(stream.tellp(), std::streampos(20000));
    }
    EXPECT_EQ(controller.written, output);
    EXPECT_EQ(controller.closes, 0);
}

TEST(CustomStream, SeeksLeaveThePositionAlone) {
    RecordingController controller(pattern(100));
    ZkCustomStream stream(&controller);
    char head[5];
    stream.read(head, 5);
    stream.seekg(0);
    EXPECT_FALSE(stream.fail());
    EXPECT_EQ(stream.tellg(), std::streampos(5));
    stream.seekg(-3, std::ios::end);
    stream.seekg(40, std::ios::cur);
    EXPECT_EQ(stream.tellg(), std::streampos(5));
    EXPECT_EQ(stream.get(), pattern(100)[5]);
}

TEST(CustomStream, PutsBackTenCharactersAcrossARefill) {
    const std::string input = pattern(2 * ZkCustomStreamBuf::kReadWindow);
    RecordingController controller(input);
    ZkCustomStream stream(&controller);
    std::string first(ZkCustomStreamBuf::kReadWindow, '\0');
    stream.read(&first[0], static_cast<std::streamsize>(first.size()));
    EXPECT_EQ(stream.peek(), input[first.size()]); // the refill
    EXPECT_EQ(controller.reads, 2);
    for (int i = 0; i < ZkCustomStreamBuf::kPutbackReserve; ++i)
        ASSERT_TRUE(stream.unget()) << i;
    EXPECT_EQ(stream.get(), input[first.size() - ZkCustomStreamBuf::kPutbackReserve]);
    stream.unget();
    EXPECT_FALSE(stream.unget()); // the eleventh
}

TEST(CustomStream, EndAndErrorsOfTheController) {
    RecordingController empty;
    ZkCustomStream atEnd(&empty);
    EXPECT_EQ(atEnd.get(), std::char_traits<char>::eof());
    EXPECT_EQ(empty.reads, 1);

    RecordingController failing("abc");
    failing.failReads = true;
    ZkCustomStream broken(&failing);
    EXPECT_EQ(broken.get(), std::char_traits<char>::eof());

    ZkCustomStream none(nullptr);
    EXPECT_EQ(none.get(), std::char_traits<char>::eof());
    none.clear();
    none << "x" << std::flush;
    EXPECT_TRUE(none.bad());
}

TEST(CustomStream, FailedWriteKeepsTheBytesUntilClose) {
    RecordingController controller;
    ZkCustomStream stream(&controller);
    stream << "pending";
    controller.failWrites = true;
    stream.flush();
    EXPECT_TRUE(stream.bad());
    controller.failWrites = false;
    stream.clear();
    stream << "+";
    stream.close();
    stream.close();
    EXPECT_FALSE(stream.is_open());
    EXPECT_EQ(controller.written, "pending+");
    EXPECT_EQ(controller.closes, 1);
    EXPECT_EQ(stream.get(), std::char_traits<char>::eof());
}

TEST(StrStream, ReadsAndSeeksInsideTheBlock) {
    const char text[] = "0123456789";
    ZkStrStream stream(text, 10);
    char four[4];
    stream.read(four, 4);
    EXPECT_EQ(std::string(four, 4), "0123");
    stream.seekg(-2, std::ios::end);
    EXPECT_EQ(stream.get(), '8');
    stream.seekg(-5, std::ios::cur);
    EXPECT_EQ(stream.tellg(), std::streampos(4));
    stream.seekg(11);
    EXPECT_TRUE(stream.fail());
    stream.clear();
    EXPECT_EQ(stream.tellg(), std::streampos(4));
    stream.seekg(-5, std::ios::cur);
    EXPECT_TRUE(stream.fail());
    stream.clear();
    for (std::streamoff extreme :
         {std::numeric_limits<std::streamoff>::min(), std::numeric_limits<std::streamoff>::max()}) {
        stream.seekg(extreme, std::ios::cur);
        EXPECT_TRUE(stream.fail());
        stream.clear();
    }
    stream.seekg(10);
    EXPECT_EQ(stream.get(), std::char_traits<char>::eof());
}

TEST(StrStream, IsReadOnly) {
    char text[] = "abc";
    ZkStrStream stream(text, 3);
    EXPECT_EQ(stream.rdbuf()->pubseekoff(0, std::ios::beg, std::ios::out), std::streampos(-1));
    EXPECT_EQ(stream.get(), 'a');
    stream.putback('z');
    EXPECT_TRUE(stream.fail());
    stream.clear();
    stream.putback('a');
    EXPECT_EQ(readAll(stream), "abc");
    EXPECT_EQ(std::string(text), "abc");
}

TEST(StrStream, CopiesOrTakesTheBlock) {
    char text[] = "original";
    ZkStrStream copied(text, 8, /*copy=*/true);
    text[0] = 'X';
    EXPECT_EQ(readAll(copied), "original");

    char* owned = new char[3]{'o', 'w', 'n'};
    ZkStrStream taken(owned, 3, /*copy=*/false, /*own=*/true); // freed by the stream
    EXPECT_EQ(readAll(taken), "own");

    char* handed = new char[2]{'h', 'i'};
    ZkStrStream both(handed, 2, /*copy=*/true, /*own=*/true); // copied, then freed
    EXPECT_EQ(readAll(both), "hi");

    ZkStrStream null(nullptr, 99);
    EXPECT_EQ(null.get(), std::char_traits<char>::eof());
}
