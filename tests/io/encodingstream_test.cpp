// The encoding streams: ZkICUIStream (ICU) and ZkRQCIStream/ZkRQCOStream (the platform
// converter), round trips of legacy encodings byte for byte, line ends, limits, raw writes and
// detection.
#include "support.h"
#include "zkcommon/io/icuistream.h"
#include "zkcommon/io/rqcstream.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>
#include <unicode/ucnv.h>

using namespace ZkCommonNS;

namespace {

// The stream's UTF-16 units (host order, two chars each) as text.
UnicodeString readText(std::istream& in) {
    std::string bytes = readAll(in);
    return UnicodeString(reinterpret_cast<const char16_t*>(bytes.data()),
                         static_cast<int32_t>(bytes.size() / 2));
}

// The reference bytes, from ICU directly.
std::string encodeWithIcu(const UnicodeString& text, const char* encoding) {
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(encoding, &status);
    EXPECT_TRUE(U_SUCCESS(status)) << encoding;
    std::string out(static_cast<size_t>(text.length()) * 4 + 16, '\0');
    int32_t length = ucnv_fromUChars(converter, &out[0], static_cast<int32_t>(out.size()),
                                     text.getBuffer(), text.length(), &status);
    ucnv_close(converter);
    EXPECT_TRUE(U_SUCCESS(status)) << encoding;
    out.resize(static_cast<size_t>(length));
    return out;
}

std::string encodeWithRqc(const UnicodeString& text, const char* encoding,
                          ZkRQCOStreamBuf::LF_CONVERT lineEnds = ZkRQCOStreamBuf::LF_CONVERT_NONE,
                          bool bom = false) {
    std::ostringstream sink;
    {
        ZkRQCOStream out(&sink, encoding, false, lineEnds, bom);
        EXPECT_TRUE(out.is_open()) << encoding;
        out.writeText(text);
    }
    return sink.str();
}

UnicodeString decodeWithIcu(const std::string& bytes, const char* encoding) {
    ZkICUIStream in(new std::istringstream(bytes), encoding, true);
    EXPECT_TRUE(in.is_open()) << encoding;
    return readText(in);
}

UnicodeString decodeWithRqc(const std::string& bytes, const char* encoding) {
    ZkRQCIStream in(new std::istringstream(bytes), encoding, true);
    EXPECT_TRUE(in.is_open()) << encoding;
    return readText(in);
}

struct LegacyCase {
    const char* icuName;
    const char* rqcName;
    const char* text; // UTF-8
};

// clang-format off
const LegacyCase kLegacyCases[] = {
    {"Shift_JIS", "Shift_JIS", "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xAE\xE6\x96\x87\xE6\x9B\xB8\xE3\x80\x82" "\xE3\x82\xAB\xE3\x82\xBF\xE3\x82\xAB\xE3\x83\x8A ABC 123\n"},
    {"EUC-JP", "EUC-JP", "\xE6\xBC\xA2\xE5\xAD\x97\xE3\x81\xA8\xE3\x81\x8B\xE3\x81\xAA\xE3\x80\x81\xE3\x83\x86" "\xE3\x82\xB9\xE3\x83\x88 text\n"},
    {"GB18030", "GB18030", "\xE4\xB8\xAD\xE6\x96\x87\xE6\x96\x87\xE6\x9C\xAC\xEF\xBC\x8C\xE7\xAE\x80\xE4\xBD\x93" "\xE5\xAD\x97 \xF0\xA0\x80\x80 \xE2\x82\xAC\n"},
    {"Big5", "Big5", "\xE7\xB9\x81\xE9\xAB\x94\xE4\xB8\xAD\xE6\x96\x87\xE5\xAD\x97\xE3\x80\x82 Big5\n"},
    {"KOI8-R", "KOI8-R", "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82, \xD0\xBC\xD0\xB8\xD1\x80!\n"},
    {"windows-1252", "windows-1252", "Caf\xC3\xA9 \xE2\x80\x9Cquoted\xE2\x80\x9D \xE2\x80\x93 \xE2\x82\xAC" "5 \xC5\x93\n"},
};
// clang-format on

// Enough Shift_JIS text for the statistics to tell it.
UnicodeString japaneseSample() {
    UnicodeString text;
    for (int i = 0; i < 50; ++i)
        text.append(UnicodeString::fromUTF8(kLegacyCases[0].text));
    return text;
}

} // namespace

TEST(EncodingStreams, LegacyRoundTripsThroughBothFamilies) {
    for (const LegacyCase& c : kLegacyCases) {
        SCOPED_TRACE(c.icuName);
        UnicodeString text = UnicodeString::fromUTF8(c.text);
        std::string bytes = encodeWithIcu(text, c.icuName);
        ASSERT_FALSE(bytes.empty());

        // ICU family: bytes -> ZkICUIStream -> ICU encoder -> the same bytes.
        UnicodeString viaIcu = decodeWithIcu(bytes, c.icuName);
        EXPECT_EQ(c.text, utf8(viaIcu));
        EXPECT_EQ(bytes, encodeWithIcu(viaIcu, c.icuName));

        // Platform family: bytes -> ZkRQCIStream -> ZkRQCOStream -> the same bytes.
        UnicodeString viaRqc = decodeWithRqc(bytes, c.rqcName);
        EXPECT_EQ(c.text, utf8(viaRqc));
        EXPECT_EQ(bytes, encodeWithRqc(viaRqc, c.rqcName));

        // Across the families.
        EXPECT_EQ(bytes, encodeWithRqc(viaIcu, c.rqcName));
    }
}

TEST(EncodingStreams, LongInputCrossesBufferBoundaries) {
    // Odd-length pieces make multi-byte characters straddle every 4096-byte read.
    UnicodeString text;
    for (int i = 0; i < 3000; ++i)
        text.append(UnicodeString::fromUTF8(i % 3 ? "\xE6\x97\xA5\xE6\x9C\xAC" : "a\xE3\x81\x82"));
    for (const char* encoding : {"Shift_JIS", "EUC-JP", "UTF-8", "GB18030"}) {
        SCOPED_TRACE(encoding);
        std::string bytes = encodeWithIcu(text, encoding);
        EXPECT_EQ(text, decodeWithIcu(bytes, encoding));
        EXPECT_EQ(text, decodeWithRqc(bytes, encoding));
        EXPECT_EQ(bytes, encodeWithRqc(text, encoding));
    }
}

TEST(EncodingStreams, StatefulIso2022Jp) {
    UnicodeString text = UnicodeString::fromUTF8("abc \xE6\x97\xA5\xE6\x9C\xAC xyz");
    std::string bytes = encodeWithRqc(text, "ISO-2022-JP");
    EXPECT_EQ("abc \x1B$BF|K\\\x1B(B xyz", bytes);
    EXPECT_EQ(text, decodeWithRqc(bytes, "iso-2022-jp"));
    EXPECT_EQ(text, decodeWithIcu(bytes, "ISO-2022-JP"));
}

TEST(EncodingStreams, UnknownEncodingsDoNotOpen) {
    // An unknown name, no source or no name: closed, and reading fails at once.
    auto refuses = [](auto&& in) {
        EXPECT_FALSE(in.is_open());
        EXPECT_EQ(std::istream::traits_type::eof(), in.get());
        EXPECT_TRUE(in.fail());
    };
    refuses(ZkICUIStream(new std::istringstream("abc"), "x-no-such-encoding", true));
    refuses(ZkRQCIStream(new std::istringstream("abc"), "x-no-such-encoding", true));
    refuses(ZkICUIStream(nullptr, "UTF-8", false));
    refuses(ZkRQCIStream(nullptr, "UTF-8", false));
    refuses(ZkICUIStream(new std::istringstream("x"), nullptr, true));
    std::ostringstream sink;
    ZkRQCOStream out(&sink, "x-no-such-encoding", false);
    EXPECT_FALSE(out.is_open());
    out.writeText(u"abc");
    out.flush();
    EXPECT_TRUE(out.bad());
    out.clear();
    out.writeRawBuffer("x", 1);
    EXPECT_TRUE(out.bad());
    EXPECT_EQ("", sink.str());
}

TEST(EncodingStreams, EmptyInputEndsAtOnce) {
    EXPECT_EQ(UnicodeString(u""), decodeWithIcu("", "Shift_JIS"));
    EXPECT_EQ(UnicodeString(u""), decodeWithRqc("", "Shift_JIS"));
    ZkRQCIStream in(new std::istringstream(""), "EUC-JP", true);
    EXPECT_TRUE(in.is_open());
    EXPECT_EQ(std::istream::traits_type::eof(), in.get());
    EXPECT_TRUE(in.is_open()); // ran to its end, which is not a failure to open
}

TEST(EncodingStreams, LineEndsOnOutput) {
    struct Case {
        ZkRQCOStreamBuf::LF_CONVERT mode;
        const char* expected;
    } cases[] = {
        {ZkRQCOStreamBuf::LF_CONVERT_NONE, "a\nb\r\nc\rd"},
        {ZkRQCOStreamBuf::LF_CONVERT_CRLF, "a\r\nb\r\nc\r\nd"},
        {ZkRQCOStreamBuf::LF_CONVERT_CR, "a\rb\rc\rd"},
        {ZkRQCOStreamBuf::LF_CONVERT_LF, "a\nb\nc\nd"},
    };
    // The buffer converts 4096 bytes at a time: with 2047 units before it, the CR of a CR LF is
    // the last unit of one batch and its LF the first of the next.
    const UnicodeString across = UnicodeString(2050, UChar32(u'a'), 2047) + u"\r\nb";
    for (const Case& c : cases) {
        SCOPED_TRACE(c.mode);
        const std::string text = c.expected;
        EXPECT_EQ(text, encodeWithRqc(u"a\nb\r\nc\rd", "ISO-8859-1", c.mode));
        // What a CR LF becomes: the line end between b and c.
        const std::string crlf =
            text.substr(text.find('b') + 1, text.find('c') - text.find('b') - 1);
        EXPECT_EQ(std::string(2047, 'a') + crlf + "b", encodeWithRqc(across, "US-ASCII", c.mode));
    }
    // A CR LF split between two writes is still one line end.
    std::ostringstream sink;
    {
        ZkRQCOStream out(&sink, "UTF-8", false, ZkRQCOStreamBuf::LF_CONVERT_CRLF);
        out.writeText(u"x\r");
        out.flush();
        out.writeText(u"\ny");
    }
    EXPECT_EQ("x\r\ny", sink.str());
}

TEST(EncodingStreams, ByteOrderMarks) {
    // clang-format off
    const std::pair<const char*, std::string> cases[] = {
        {"UTF-8", "\xEF\xBB\xBF" "a"}, {"UTF-16BE", std::string("\xFE\xFF\0a", 4)},
        {"UTF-16LE", std::string("\xFF\xFE" "a\0", 4)}, {"UTF-16", std::string("\xFE\xFF\0a", 4)},
        {"ISO-8859-1", "a"},
    };
    // clang-format on
    for (const auto& c : cases)
        EXPECT_EQ(c.second, encodeWithRqc(u"a", c.first, ZkRQCOStreamBuf::LF_CONVERT_NONE, true))
            << c.first;
    EXPECT_EQ("\xEF\xBB\xBF", encodeWithRqc(u"", "UTF-8", ZkRQCOStreamBuf::LF_CONVERT_NONE, true));
    // Decoding a marked UTF-16 text drops the mark.
    EXPECT_EQ(UnicodeString(u"a"), decodeWithRqc(std::string("\xFF\xFE"
                                                             "a\0",
                                                             4),
                                                 "UTF-16"));
}

TEST(EncodingStreams, UnmappableCharactersAndSplitUnits) {
    EXPECT_EQ("a?b", encodeWithRqc(u"a\u65E5b", "ISO-8859-1"));
    EXPECT_EQ("a?b", encodeWithRqc(UnicodeString::fromUTF8("a\xF0\x9F\x98\x80"
                                                           "b"),
                                   "windows-1252"));
    // A surrogate pair and a code unit split across writes arrive whole.
    std::ostringstream sink;
    {
        ZkRQCOStream out(&sink, "UTF-8", false);
        UnicodeString smile = UnicodeString::fromUTF8("\xF0\x9F\x98\x80");
        const char* bytes = reinterpret_cast<const char*>(smile.getBuffer());
        out.write(bytes, 1);
        out.flush();
        out.write(bytes + 1, 2);
        out.flush();
        out.write(bytes + 3, 1);
    }
    EXPECT_EQ("\xF0\x9F\x98\x80", sink.str());
}

TEST(EncodingStreams, LimitsAndLengths) {
    std::ostringstream sink;
    ZkRQCOStream out(&sink, "UTF-8", false);
    out.setLimit(5);
    out.writeText(u"abcd");
    EXPECT_EQ(4u, out.getOutputLength());
    EXPECT_FALSE(out.isLimitOver());
    out.writeText(u"\u00E9");
    EXPECT_EQ(6u, out.getOutputLength());
    EXPECT_TRUE(out.isLimitOver());
    EXPECT_EQ(&sink, out.getOutputStream());
    EXPECT_EQ("abcd\xC3\xA9", sink.str());
}

TEST(EncodingStreams, RawWritesPassUnconverted) {
    std::ostringstream sink;
    {
        ZkRQCOStream out(&sink, "ISO-2022-JP", false);
        out.writeText(UnicodeString::fromUTF8("\xE6\x97\xA5"));
        out.writeRawBuffer("<raw\xFF>", 6);
        std::istringstream source(std::string(5000, 'z'));
        out.writeRawStream(source);
        out.writeText(u"!");
        EXPECT_EQ(3u + 2 + 3 + 6 + 5000 + 1, out.getOutputLength());
        EXPECT_FALSE(out.bad());
    }
    // The shift state ends before the raw bytes.
    EXPECT_EQ("\x1B$BF|\x1B(B<raw\xFF>" + std::string(5000, 'z') + "!", sink.str());
}

TEST(EncodingStreams, OwnedOutputIsDeleted) {
    // Under the address sanitizer a leak or a double delete fails; the decode helpers above
    // give their inputs to the streams the same way.
    ZkRQCOStream out(new std::ostringstream(), "UTF-8", true);
    out.writeText(u"x");
}

TEST(EncodingDetection, IcuDeclarationsAndStatistics) {
    struct Case {
        std::string bytes;
        const char* expected;
    } cases[] = {
        {"<?xml version=\"1.0\" encoding=\"Shift_JIS\"?><a/>", "Shift_JIS"},
        {"<?xml version=\"1.0\"?><a/>", "UTF-8"},
        {"<?xml version=\"1.0\" encoding='EUC-JP'?><a/>", "EUC-JP"},
        {"<?xml version=\"1.0\" encoding=\"x\" encoding=\"KOI8-R\"?>", "KOI8-R"},
        {"", "UTF-8"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.bytes);
        std::istringstream in(c.bytes);
        EXPECT_STREQ(c.expected, ZkICUIStream::detectEncoding(&in));
        EXPECT_EQ(0, in.tellg());
    }
    std::istringstream sjis(encodeWithIcu(japaneseSample(), "Shift_JIS"));
    EXPECT_STREQ("Shift_JIS", ZkICUIStream::detectEncoding(&sjis));
    EXPECT_EQ('\x93', static_cast<char>(sjis.get()));
    EXPECT_STREQ("UTF-8", ZkICUIStream::detectEncoding(nullptr));
}

TEST(EncodingDetection, RqcMarksDeclarationsAndStatistics) {
    struct Case {
        std::string bytes;
        bool found;
        const char* expected;
        bool bom;
    } cases[] = {
        {"\xEF\xBB\xBF<a/>", true, "UTF-8", true},
        {std::string("\xFF\xFE<\0", 4), true, "UTF-16LE", true},
        {std::string("\xFE\xFF\0<", 4), true, "UTF-16BE", true},
        {std::string("\xFF\xFE\0\0<\0\0\0", 8), true, "UTF-32LE", true},
        {std::string("\0\0\xFE\xFF\0\0\0<", 8), true, "UTF-32BE", true},
        {std::string("<\0?\0x\0m\0l\0", 10), true, "UTF-16LE", false},
        {std::string("\0<\0?\0x\0m\0l", 10), true, "UTF-16BE", false},
        {"<?xml version='1.0' encoding='EUC-JP'?>", true, "EUC-JP", false},
        {"<?xml version=\"1.0\" encoding = \"iso-8859-2\" ?>", true, "iso-8859-2", false},
        {"<?xml version=\"1.0\"?>", true, "UTF-8", false},
        {"", false, "", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expected);
        std::istringstream in(c.bytes);
        in.get();
        in.unget();
        UnicodeString encoding;
        bool bom = !c.bom;
        EXPECT_EQ(c.found, ZkRQCIStream::detectEncoding(&in, encoding, bom));
        EXPECT_EQ(c.expected, utf8(encoding));
        EXPECT_EQ(c.bom, bom);
        EXPECT_EQ(0, in.tellg());
    }
    const UnicodeString japanese = japaneseSample();
    std::string sjis = encodeWithIcu(japanese, "Shift_JIS");
    UnicodeString encoding;
    bool bom = true;
    EXPECT_TRUE(ZkRQCIStream::detectEncoding(sjis.c_str(), encoding, bom));
    EXPECT_EQ("Shift_JIS", utf8(encoding));
    EXPECT_FALSE(bom);
    EXPECT_FALSE(ZkRQCIStream::detectEncoding(static_cast<const char*>(nullptr), encoding, bom));
    EXPECT_FALSE(ZkRQCIStream::detectEncoding(static_cast<std::istream*>(nullptr), encoding, bom));
    // The detected name opens a converter.
    ZkRQCIStream in(new std::istringstream(sjis), "Shift_JIS", true);
    EXPECT_EQ(japanese, readText(in));
}

TEST(EncodingStreams, BadInputDecodesAlikeInBothFamilies) {
    // clang-format off
    struct Case { std::string bytes; const char* encoding; const char16_t* text; } cases[] = {
        {"a\x80" "b", "US-ASCII", u"a\uFFFD" "b"},       // ICU's default is U+001A
        {"a\xE3\x81", "UTF-8", u"a\uFFFD"},               // one per truncated tail
        {"a\xE3\x81" "b", "UTF-8", u"a\uFFFD" "b"},       // maximal subpart
        {"a\xC0\xAF" "b", "UTF-8", u"a\uFFFD\uFFFD" "b"},
        {"a\xFF" "b", "UTF-8", u"a\uFFFD" "b"},
        {"a\x82" "b\xFF" "c\xE3\x81", "UTF-8", u"a\uFFFD" "b\uFFFD" "c\uFFFD"},
        {"a\x82", "Shift_JIS", u"a\uFFFD"},
        {"a\xA4", "EUC-JP", u"a\uFFFD"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.encoding + std::string(" ") + c.bytes);
        EXPECT_EQ(UnicodeString(c.text), decodeWithIcu(c.bytes, c.encoding));
        EXPECT_EQ(UnicodeString(c.text), decodeWithRqc(c.bytes, c.encoding));
    }
}

TEST(EncodingDetection, BothFamiliesReadOnlyTheHead) {
    // A source of a gigabyte that tells its size at the end: detection must stop at the head,
    // whether a reader would size its buffer by the end or read on to it.
    class Endless : public std::streambuf {
    public:
        size_t served = 0;

    protected:
        int_type underflow() override {
            if (served > (size_t(1) << 30))
                return traits_type::eof();
            served += sizeof m_block;
            std::fill(m_block, m_block + sizeof m_block, 'a');
            setg(m_block, m_block, m_block + sizeof m_block);
            return 'a';
        }
        pos_type seekoff(off_type offset, std::ios::seekdir dir, std::ios::openmode) override {
            off_type base = dir == std::ios::end   ? off_type(1) << 30
                            : dir == std::ios::cur ? m_at
                                                   : 0;
            return seekpos(pos_type(base + offset), std::ios::in);
        }
        pos_type seekpos(pos_type position, std::ios::openmode) override {
            setg(m_block, m_block, m_block);
            m_at = off_type(position);
            return position;
        }

    private:
        char m_block[4096];
        off_type m_at = 0;
    };
    Endless icuSource;
    std::istream icuIn(&icuSource);
    EXPECT_NE(nullptr, ZkICUIStream::detectEncoding(&icuIn));
    EXPECT_LE(icuSource.served, size_t(1) << 17);
    Endless rqcSource;
    std::istream rqcIn(&rqcSource);
    UnicodeString encoding;
    bool bom = false;
    ZkRQCIStream::detectEncoding(&rqcIn, encoding, bom);
    EXPECT_LE(rqcSource.served, size_t(1) << 17);
}

TEST(EncodingStreams, TablePathNeverChangesTheEnvironmentLater) {
    // Once a converter has opened, or while another thread runs, the variable stays as it is:
    // setting it would race with getenv elsewhere.
    ::unsetenv("GCONV_PATH");
    std::atomic<bool> stop{false};
    std::thread other([&stop] {
        while (!stop)
            std::this_thread::yield();
    });
    ZkRQCIStream::setRQCTablePath(u"/no/such/tables");
    EXPECT_EQ(nullptr, std::getenv("GCONV_PATH"));
    stop = true;
    other.join();
    EXPECT_EQ(UnicodeString(u"y"), decodeWithRqc("y", "ISO-8859-1"));
    ZkRQCIStream::setRQCTablePath(u"/no/such/tables");
    EXPECT_EQ(nullptr, std::getenv("GCONV_PATH"));
    ZkRQCIStream::setRQCTablePath(u"");
}
