// The shared empty and bogus strings, and the 8-bit forms of ZkCStr and ZkUtfStr.
#include "zkcommon/core/strings.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>
#include <unicode/ucnv.h>

namespace ZkCommonNS {

const ZkEmptyString ZkEmptyString::EMPTY_VALUE;
const ZkBogusString ZkBogusString::BOGUS_VALUE;

// Made on first use, whatever the order of static initialisers across files and libraries.
const UnicodeString& ZkEmptyString::getEmptyString() noexcept {
    static const ZkEmptyString s_empty;
    return s_empty;
}

const UnicodeString& ZkBogusString::getBogusString() noexcept {
    static const ZkBogusString s_bogus;
    return s_bogus;
}

const char* const ZkCStr::kDefaultEncoding = "UTF-8";

namespace {

struct ConverterCloser {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using ConverterPtr = std::unique_ptr<UConverter, ConverterCloser>;

ConverterPtr openConverter(const std::string& encoding) {
    UErrorCode status = U_ZERO_ERROR;
    ConverterPtr converter(ucnv_open(encoding.c_str(), &status));
    if (U_FAILURE(status))
        converter.reset();
    return converter;
}

// UTF-8 is handled by ICU's own string functions; other encodings go through a converter,
// and an unknown encoding name falls back to UTF-8 rather than to nothing.
std::string encode(const UnicodeString& text, const std::string& encoding) {
    std::string bytes;
    if (ucnv_compareNames(encoding.c_str(), "UTF-8") != 0) {
        if (ConverterPtr converter = openConverter(encoding)) {
            UErrorCode status = U_ZERO_ERROR;
            int32_t needed = ucnv_fromUChars(converter.get(), nullptr, 0, text.getBuffer(),
                                             text.length(), &status);
            if (status == U_BUFFER_OVERFLOW_ERROR || U_SUCCESS(status)) {
                bytes.resize(static_cast<size_t>(needed));
                status = U_ZERO_ERROR;
                ucnv_fromUChars(converter.get(), bytes.empty() ? nullptr : &bytes[0], needed,
                                text.getBuffer(), text.length(), &status);
                if (U_SUCCESS(status) || status == U_STRING_NOT_TERMINATED_WARNING)
                    return bytes;
            }
            bytes.clear();
        }
    }
    text.toUTF8String(bytes);
    return bytes;
}

UnicodeString decode(const char* bytes, const std::string& encoding) {
    if (!bytes)
        return UnicodeString();
    if (ucnv_compareNames(encoding.c_str(), "UTF-8") != 0) {
        UnicodeString text(bytes, static_cast<int32_t>(std::strlen(bytes)), encoding.c_str());
        if (!text.isBogus())
            return text;
    }
    return UnicodeString::fromUTF8(bytes);
}

} // namespace

ZkCStr::ZkCStr(const UnicodeString& text, const char* encoding)
    : UnicodeString(text), m_encoding(encoding ? encoding : kDefaultEncoding) {}

ZkCStr::ZkCStr(const char* bytes, const char* encoding)
    : m_encoding(encoding ? encoding : kDefaultEncoding) {
    UnicodeString::operator=(decode(bytes, m_encoding));
}

ZkCStr::ZkCStr(const ZkCStr& other) : UnicodeString(other), m_encoding(other.m_encoding) {}

ZkCStr& ZkCStr::operator=(const ZkCStr& other) {
    if (this != &other) {
        UnicodeString::operator=(other);
        m_encoding = other.m_encoding;
        m_bytesValid = false;
    }
    return *this;
}

ZkCStr& ZkCStr::operator=(const UnicodeString& text) {
    UnicodeString::operator=(text);
    m_bytesValid = false;
    return *this;
}

namespace {
// The 8-bit form is made inside const calls, and two threads may read one shared value: a
// small set of locks, picked by address, keeps them apart without a lock in every string.
std::mutex& cacheLock(const void* string) {
    static std::mutex s_locks[16];
    return s_locks[(reinterpret_cast<uintptr_t>(string) >> 4) % 16];
}
} // namespace

void ZkCStr::refresh() const {
    std::lock_guard<std::mutex> guard(cacheLock(this));
    // The base class can be changed behind our back, so the cache remembers its source text.
    const UnicodeString& self = *this;
    if (m_bytesValid && m_bytesFrom == self && m_bytesFrom.isBogus() == self.isBogus())
        return;
    m_bytes = encode(self, m_encoding);
    m_bytesFrom = self;
    m_bytesValid = true;
}

const char* ZkCStr::c_str() const {
    refresh();
    return m_bytes.c_str();
}

int ZkCStr::length8() const {
    refresh();
    return static_cast<int>(m_bytes.size());
}

ZkUtfStr::ZkUtfStr(const UnicodeString& text, bool xmlEscape) : ZkCStr(text, "UTF-8") {
    if (!xmlEscape)
        return;
    findAndReplace(UnicodeString(u"&"), UnicodeString(u"&amp;"));
    findAndReplace(UnicodeString(u"<"), UnicodeString(u"&lt;"));
    findAndReplace(UnicodeString(u">"), UnicodeString(u"&gt;"));
    findAndReplace(UnicodeString(u"\""), UnicodeString(u"&quot;"));
}

} // namespace ZkCommonNS
