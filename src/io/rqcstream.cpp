// ZkRQCIStream and ZkRQCOStream: conversion through the platform converter, line ends, output
// limits, raw writes and encoding detection.
#include "zkcommon/io/rqcstream.h"

#include "io/converter.h"
#include "zkcommon/text/util.h"

#include <cstring>
#include <unicode/ucsdet.h>
#include <vector>

namespace ZkCommonNS {

namespace {

constexpr char16_t kLineFeed = 0x000A;
constexpr char16_t kCarriageReturn = 0x000D;
// Detection reads this much of a stream; more rarely changes the answer.
constexpr size_t kDetectionWindow = 64 * 1024;
// ICU's detector is a guess: below this confidence it is no answer.
constexpr int32_t kMinimumConfidence = 10;

UnicodeString converterName(const char* encoding) {
    UnicodeString canonical = ZkUtil::getCanonicalEncoding(UnicodeString::fromUTF8(encoding));
    if (canonical == u"US-ASCII")
        canonical = u"ISO-646IRV";
    return canonical;
}

bool startsWith(const char* data, size_t length, const char* prefix, size_t prefixLength) {
    return length >= prefixLength && std::memcmp(data, prefix, prefixLength) == 0;
}

bool isEncodingNameChar(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == '.' || c == ':';
}

// The encoding pseudo-attribute of an XML declaration at the start of `data`, in either quote.
// False without a declaration; `name` is "UTF-8" for a declaration that names none.
bool declaredEncoding(const char* data, size_t length, std::string& name) {
    if (!startsWith(data, length, "<?xml", 5) || length < 6 ||
        !(data[5] == ' ' || data[5] == '\t' || data[5] == '\r' || data[5] == '\n'))
        return false;
    size_t close = 5;
    while (close + 1 < length && !(data[close] == '?' && data[close + 1] == '>'))
        ++close;
    if (close + 1 >= length)
        return false;
    std::string declaration(data, close);
    size_t at = declaration.find("encoding");
    name = "UTF-8";
    if (at == std::string::npos)
        return true;
    at += 8;
    while (at < declaration.size() && (declaration[at] == ' ' || declaration[at] == '\t'))
        ++at;
    if (at >= declaration.size() || declaration[at] != '=')
        return true;
    ++at;
    while (at < declaration.size() && (declaration[at] == ' ' || declaration[at] == '\t'))
        ++at;
    if (at >= declaration.size() || (declaration[at] != '"' && declaration[at] != '\''))
        return true;
    char quote = declaration[at++];
    size_t limit = at;
    while (limit < declaration.size() && isEncodingNameChar(declaration[limit]))
        ++limit;
    if (limit > at && limit < declaration.size() && declaration[limit] == quote)
        name = declaration.substr(at, limit - at);
    return true;
}

bool detectBytes(const char* data, size_t length, UnicodeString& encoding, bool& bom) {
    struct Mark {
        const char* bytes;
        size_t length;
        const char16_t* name;
    };
    // Longer marks first: UTF-32LE's mark begins with UTF-16LE's.
    static const Mark kMarks[] = {
        {"\xFF\xFE\x00\x00", 4, u"UTF-32LE"}, {"\x00\x00\xFE\xFF", 4, u"UTF-32BE"},
        {"\xEF\xBB\xBF", 3, u"UTF-8"},        {"\xFE\xFF", 2, u"UTF-16BE"},
        {"\xFF\xFE", 2, u"UTF-16LE"},
    };
    for (const Mark& mark : kMarks) {
        if (startsWith(data, length, mark.bytes, mark.length)) {
            encoding = mark.name;
            bom = true;
            return true;
        }
    }
    bom = false;
    if (startsWith(data, length, "<\0?\0", 4)) {
        encoding = u"UTF-16LE";
        return true;
    }
    if (startsWith(data, length, "\0<\0?", 4)) {
        encoding = u"UTF-16BE";
        return true;
    }
    std::string declared;
    if (declaredEncoding(data, length, declared)) {
        encoding = UnicodeString::fromUTF8(declared);
        return true;
    }
    if (length == 0)
        return false;
    UErrorCode status = U_ZERO_ERROR;
    UCharsetDetector* detector = ucsdet_open(&status);
    bool found = false;
    if (U_SUCCESS(status)) {
        int32_t size = length > 0x7FFFFFFF ? 0x7FFFFFFF : static_cast<int32_t>(length);
        ucsdet_setText(detector, data, size, &status);
        const UCharsetMatch* match = U_SUCCESS(status) ? ucsdet_detect(detector, &status) : nullptr;
        if (match && U_SUCCESS(status) &&
            ucsdet_getConfidence(match, &status) >= kMinimumConfidence) {
            const char* name = ucsdet_getName(match, &status);
            if (name && *name && U_SUCCESS(status)) {
                encoding = UnicodeString::fromUTF8(name);
                found = true;
            }
        }
    }
    if (detector)
        ucsdet_close(detector);
    return found;
}

} // namespace

// ---------------------------------------------------------------------------------------------
// Input

ZkRQCIStreamBuf::ZkRQCIStreamBuf(std::istream* source, const char* encoding, bool ownsSource)
    : m_source(source), m_ownsSource(ownsSource) {
    if (source && encoding)
        m_converter = detail::ByteConverter::open(converterName(encoding),
                                                  detail::ByteConverter::Direction::kToUtf16);
    setg(nullptr, nullptr, nullptr);
}

ZkRQCIStreamBuf::~ZkRQCIStreamBuf() {
    if (m_ownsSource)
        delete m_source;
}

ZkRQCIStreamBuf::int_type ZkRQCIStreamBuf::underflow() {
    if (gptr() < egptr())
        return traits_type::to_int_type(*gptr());
    while (m_converter) {
        m_source->read(m_input + m_inputLength, kInputCapacity - m_inputLength);
        std::streamsize got = m_source->gcount();
        m_inputLength += static_cast<int>(got);
        // A full buffer that the converter cannot start on is flushed, so nothing stalls.
        const bool ended = (got == 0 && !m_source->good()) || m_inputLength == 0;
        const bool flush = ended || (got == 0 && m_inputLength == kInputCapacity);
        m_decoded.clear();
        size_t consumed =
            m_converter->convert(m_input, static_cast<size_t>(m_inputLength), m_decoded, flush);
        // The unread tail (an incomplete sequence) moves to the front for the next read.
        m_inputLength -= static_cast<int>(consumed);
        std::memmove(m_input, m_input + consumed, static_cast<size_t>(m_inputLength));
        if (ended) {
            m_converter.reset();
            m_finished = true;
        }
        if (!m_decoded.empty()) {
            char* start = &m_decoded[0];
            setg(start, start, start + m_decoded.size());
            return traits_type::to_int_type(*gptr());
        }
    }
    return traits_type::eof();
}

ZkRQCIStream::ZkRQCIStream(std::istream* source, const char* encoding, bool ownsSource)
    : std::istream(nullptr), m_buffer(source, encoding, ownsSource) {
    init(&m_buffer);
}

ZkRQCIStream::~ZkRQCIStream() = default;

bool ZkRQCIStream::detectEncoding(std::istream* source, UnicodeString& encoding, bool& bom) {
    bom = false;
    if (!source)
        return false;
    std::vector<char> data(kDetectionWindow);
    try {
        source->clear();
        std::streampos start = source->tellg();
        if (start == std::streampos(-1))
            return false;
        source->read(data.data(), static_cast<std::streamsize>(data.size()));
        data.resize(static_cast<size_t>(source->gcount()));
        source->clear();
        source->seekg(start);
    } catch (const std::exception&) {
        return false;
    }
    return detectBytes(data.data(), data.size(), encoding, bom);
}

bool ZkRQCIStream::detectEncoding(const char* data, UnicodeString& encoding, bool& bom) {
    bom = false;
    if (!data)
        return false;
    return detectBytes(data, std::strlen(data), encoding, bom);
}

void ZkRQCIStream::setRQCTablePath(const UnicodeString& path) {
    detail::ByteConverter::setTablePath(path);
}

// ---------------------------------------------------------------------------------------------
// Output

ZkRQCOStreamBuf::ZkRQCOStreamBuf(std::ostream* sink, const char* encoding, bool ownsSink,
                                 LF_CONVERT lineEnds, bool writeBom)
    : m_sink(sink), m_ownsSink(ownsSink), m_lineEnds(lineEnds), m_pendingBom(writeBom) {
    if (sink && encoding)
        m_converter = detail::ByteConverter::open(converterName(encoding),
                                                  detail::ByteConverter::Direction::kFromUtf16);
    if (m_converter && writeBom)
        m_bom = m_converter->byteOrderMark();
    // One byte stays free so that overflow always has room for its character.
    setp(m_input, m_input + kInputCapacity - 1);
}

ZkRQCOStreamBuf::~ZkRQCOStreamBuf() {
    term();
    if (m_ownsSink)
        delete m_sink;
}

bool ZkRQCOStreamBuf::emit(const char* data, size_t length) {
    if (length == 0)
        return true;
    if (m_pendingBom) {
        m_pendingBom = false;
        if (!emit(m_bom.data(), m_bom.size()))
            return false;
    }
    m_sink->write(data, static_cast<std::streamsize>(length));
    m_outputLength += length;
    if (m_outputLength > m_limit)
        m_limitOver = true;
    return m_sink->good();
}

bool ZkRQCOStreamBuf::convertPending(bool endOfText) {
    size_t length = static_cast<size_t>(pptr() - pbase());
    size_t whole = length & ~static_cast<size_t>(1);
    m_units.clear();
    for (size_t i = 0; i < whole; i += 2) {
        char16_t unit;
        std::memcpy(&unit, m_input + i, 2);
        const bool afterCr = m_previousWasCr;
        m_previousWasCr = unit == kCarriageReturn;
        switch (m_lineEnds) {
        case LF_CONVERT_CRLF:
            if (unit == kCarriageReturn) {
                m_units.append({kCarriageReturn, kLineFeed});
                continue;
            }
            if (unit == kLineFeed) {
                if (!afterCr)
                    m_units.append({kCarriageReturn, kLineFeed});
                continue;
            }
            break;
        case LF_CONVERT_CR:
        case LF_CONVERT_LF:
            if (unit == kCarriageReturn || (unit == kLineFeed && !afterCr)) {
                m_units.push_back(m_lineEnds == LF_CONVERT_CR ? kCarriageReturn : kLineFeed);
                continue;
            }
            if (unit == kLineFeed)
                continue; // the LF of a CR LF already written
            break;
        default:
            break;
        }
        m_units.push_back(unit);
    }
    m_bytes.clear();
    const char* unitBytes = reinterpret_cast<const char*>(m_units.data());
    size_t unitLength = m_units.size() * 2;
    size_t consumed = m_converter->convert(unitBytes, unitLength, m_bytes, endOfText);
    // What the converter left (a high surrogate waiting for its pair) and an odd byte go back
    // to the front of the put area.
    std::string rest(unitBytes + consumed, unitLength - consumed);
    if (!endOfText)
        rest.append(m_input + whole, length - whole);
    std::memcpy(m_input, rest.data(), rest.size());
    setp(m_input, m_input + kInputCapacity - 1);
    pbump(static_cast<int>(rest.size()));
    return emit(m_bytes.data(), m_bytes.size());
}

ZkRQCOStreamBuf::int_type ZkRQCOStreamBuf::overflow(int_type c) {
    if (!m_converter)
        return traits_type::eof();
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
        *pptr() = traits_type::to_char_type(c);
        pbump(1);
    }
    return convertPending(false) ? traits_type::not_eof(c) : traits_type::eof();
}

int ZkRQCOStreamBuf::sync() {
    if (!m_converter)
        return -1;
    if (!convertPending(false))
        return -1;
    m_sink->flush();
    return m_sink->good() ? 0 : -1;
}

bool ZkRQCOStreamBuf::writeRawBuffer(const char* data, unsigned long long length) {
    if (!m_converter || (!data && length > 0))
        return false;
    // Pending text goes first, and any shift state ends, so the raw bytes stand alone.
    if (!convertPending(true))
        return false;
    while (length > 0) {
        size_t piece = length > (1ull << 30) ? (1u << 30) : static_cast<size_t>(length);
        m_sink->write(data, static_cast<std::streamsize>(piece));
        m_outputLength += piece;
        data += piece;
        length -= piece;
    }
    if (m_outputLength > m_limit)
        m_limitOver = true;
    return m_sink->good();
}

bool ZkRQCOStreamBuf::writeRawStream(std::istream& source) {
    if (!m_converter)
        return false;
    char chunk[4096];
    bool ok = true;
    while (ok) {
        source.read(chunk, sizeof(chunk));
        std::streamsize got = source.gcount();
        if (got <= 0)
            break;
        ok = writeRawBuffer(chunk, static_cast<unsigned long long>(got));
    }
    return ok;
}

void ZkRQCOStreamBuf::term() {
    if (!m_converter)
        return;
    convertPending(true);
    if (m_pendingBom) {
        // A text without characters still carries its mark when one was asked for.
        m_pendingBom = false;
        m_sink->write(m_bom.data(), static_cast<std::streamsize>(m_bom.size()));
        m_outputLength += m_bom.size();
    }
    m_sink->flush();
    m_converter.reset();
}

ZkRQCOStream::ZkRQCOStream(std::ostream* sink, const char* encoding, bool ownsSink,
                           LF_CONVERT lineEnds, bool writeBom)
    : std::ostream(nullptr), m_buffer(sink, encoding, ownsSink, lineEnds, writeBom) {
    init(&m_buffer);
}

ZkRQCOStream::~ZkRQCOStream() = default;

ZkRQCOStream& ZkRQCOStream::writeText(const UnicodeString& text) {
    write(reinterpret_cast<const char*>(text.getBuffer()),
          static_cast<std::streamsize>(text.length()) * 2);
    return *this;
}

unsigned long long ZkRQCOStream::getOutputLength() {
    flush();
    return m_buffer.getOutputLength();
}

void ZkRQCOStream::writeRawBuffer(const char* data, unsigned long long length) {
    if (!m_buffer.writeRawBuffer(data, length))
        setstate(std::ios::badbit);
}

void ZkRQCOStream::writeRawStream(std::istream& source) {
    if (!m_buffer.writeRawStream(source))
        setstate(std::ios::badbit);
}

} // namespace ZkCommonNS
