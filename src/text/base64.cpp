// Base64 of ZkUtil (RFC 4648 standard alphabet, "=" padding, no line breaks): stream and block
// encoding, and a tolerant decoder that skips whatever is not in the alphabet.
#include "zkcommon/text/util.h"

#include <istream>
#include <ostream>

namespace ZkCommonNS {

namespace {

constexpr int kReadBlock = 3072; // a multiple of 3: only the last block needs padding

const char16_t kAlphabet[] = u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// 0..63 for the alphabet, -1 for every other byte. Built at compile time.
struct DecodeTable {
    int8_t value[128];
    constexpr DecodeTable() : value() {
        for (int i = 0; i < 128; ++i)
            value[i] = -1;
        for (int i = 0; i < 26; ++i) {
            value['A' + i] = static_cast<int8_t>(i);
            value['a' + i] = static_cast<int8_t>(26 + i);
        }
        for (int i = 0; i < 10; ++i)
            value['0' + i] = static_cast<int8_t>(52 + i);
        value[int('+')] = 62;
        value[int('/')] = 63;
    }
};

constexpr DecodeTable kDecode;

// 0..63 for an alphabet unit, -1 for anything else, "=" included.
inline int decodeUnit(char16_t unit) noexcept {
    return unit < 128 ? kDecode.value[unit] : -1;
}

// Encodes whole groups of three into `out` (which has room) and returns the units written.
int encodeGroups(const unsigned char* data, int length, char16_t* out) {
    char16_t* start = out;
    int i = 0;
    for (; i + 3 <= length; i += 3) {
        uint32_t group = (uint32_t(data[i]) << 16) | (uint32_t(data[i + 1]) << 8) | data[i + 2];
        out[0] = kAlphabet[(group >> 18) & 63];
        out[1] = kAlphabet[(group >> 12) & 63];
        out[2] = kAlphabet[(group >> 6) & 63];
        out[3] = kAlphabet[group & 63];
        out += 4;
    }
    int rest = length - i;
    if (rest == 1) {
        uint32_t group = uint32_t(data[i]) << 16;
        out[0] = kAlphabet[(group >> 18) & 63];
        out[1] = kAlphabet[(group >> 12) & 63];
        out[2] = u'=';
        out[3] = u'=';
        out += 4;
    } else if (rest == 2) {
        uint32_t group = (uint32_t(data[i]) << 16) | (uint32_t(data[i + 1]) << 8);
        out[0] = kAlphabet[(group >> 18) & 63];
        out[1] = kAlphabet[(group >> 12) & 63];
        out[2] = kAlphabet[(group >> 6) & 63];
        out[3] = u'=';
        out += 4;
    }
    return static_cast<int>(out - start);
}

void appendEncoded(UnicodeString& result, const unsigned char* data, int length) {
    int capacity = (length + 2) / 3 * 4;
    int oldLength = result.length();
    char16_t* buffer = result.getBuffer(oldLength + capacity);
    if (!buffer)
        return;
    int written = encodeGroups(data, length, buffer + oldLength);
    result.releaseBuffer(oldLength + written);
}

} // namespace

UnicodeString ZkUtil::encodeBase64(std::istream& in, int size) {
    UnicodeString result;
    long long reserve = size > 0 ? static_cast<long long>(size) * 4 / 3 + 10 : 0;
    if (reserve > 0 && reserve < 0x7FFFFFFF) {
        result.getBuffer(static_cast<int32_t>(reserve));
        result.releaseBuffer(0);
    }
    unsigned char block[kReadBlock];
    while (in) {
        // Fill the block completely, so that padding can appear only at the very end.
        int filled = 0;
        while (filled < kReadBlock && in) {
            in.read(reinterpret_cast<char*>(block + filled), kReadBlock - filled);
            filled += static_cast<int>(in.gcount());
        }
        if (filled > 0)
            appendEncoded(result, block, filled);
    }
    return result;
}

UnicodeString ZkUtil::encodeBase64(std::istream& in) {
    return encodeBase64(in, 0);
}

UnicodeString ZkUtil::encodeBase64(const unsigned char* data, int length) {
    UnicodeString result;
    if (data && length > 0)
        appendEncoded(result, data, length);
    return result;
}

void ZkUtil::decodeBase64(const char16_t* text, int length, std::ostream& out) {
    if (!text)
        return;
    if (length < 0) {
        length = 0;
        while (text[length])
            ++length;
    }
    char buffer[3072];
    int filled = 0;
    uint32_t group = 0;
    int count = 0;
    for (int i = 0; i < length; ++i) {
        // Fast path: four alphabet characters at a group boundary, the common case of
        // unwrapped input. Anything else ("=", line breaks, foreign characters) goes the
        // careful way below.
        while (count == 0 && i + 4 <= length && filled + 3 <= static_cast<int>(sizeof buffer)) {
            int a = decodeUnit(text[i]);
            int b = decodeUnit(text[i + 1]);
            int c = decodeUnit(text[i + 2]);
            int d = decodeUnit(text[i + 3]);
            if ((a | b | c | d) < 0)
                break;
            uint32_t whole =
                (uint32_t(a) << 18) | (uint32_t(b) << 12) | (uint32_t(c) << 6) | uint32_t(d);
            buffer[filled++] = static_cast<char>(whole >> 16);
            buffer[filled++] = static_cast<char>(whole >> 8);
            buffer[filled++] = static_cast<char>(whole);
            i += 4;
        }
        if (filled == static_cast<int>(sizeof buffer)) {
            out.write(buffer, filled);
            filled = 0;
        }
        if (i >= length)
            break;
        char16_t c = text[i];
        if (c == u'=')
            break;
        // Everything outside "+" to "z", and the gaps inside it, is skipped: line breaks and
        // blanks of wrapped input do no harm.
        if (c < u'+' || c > u'z')
            continue;
        int value = kDecode.value[c];
        if (value < 0)
            continue;
        group = (group << 6) | static_cast<uint32_t>(value);
        if (++count == 4) {
            buffer[filled++] = static_cast<char>(group >> 16);
            buffer[filled++] = static_cast<char>(group >> 8);
            buffer[filled++] = static_cast<char>(group);
            group = 0;
            count = 0;
            if (filled == static_cast<int>(sizeof buffer)) {
                out.write(buffer, filled);
                filled = 0;
            }
        }
    }
    // A trailing group of two or three characters holds one or two bytes; one alone holds none.
    if (count == 2) {
        buffer[filled++] = static_cast<char>(group >> 4);
    } else if (count == 3) {
        buffer[filled++] = static_cast<char>(group >> 10);
        buffer[filled++] = static_cast<char>(group >> 2);
    }
    if (filled > 0)
        out.write(buffer, filled);
}

} // namespace ZkCommonNS
