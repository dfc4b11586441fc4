// The built-in decoders of the XML reader: UTF-8, UTF-16 and UTF-32 in both byte orders, the
// ISO 8859 parts and the byte decoder.
#include "xml/xmlscanner.h"

#include <cstring>
#include <unicode/utf16.h>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace ZkCommonNS {
namespace detail {

namespace {

#include "iso8859.inc"

constexpr char16_t kReplacement = 0xFFFD;

// Writes `c` as one or two units; the caller leaves room for two.
inline int32_t put(char16_t* target, UChar32 c) {
    if (c < 0x10000) {
        target[0] = char16_t(c);
        return 1;
    }
    if (c > 0x10FFFF) {
        target[0] = kReplacement;
        return 1;
    }
    target[0] = U16_LEAD(c);
    target[1] = U16_TRAIL(c);
    return 2;
}

int32_t decodeBytes(const uint8_t* source, int32_t length, bool, char16_t* target, int32_t capacity,
                    int32_t maxChars, int32_t& consumed) {
    int32_t count = length < capacity ? length : capacity;
    if (count > maxChars)
        count = maxChars;
    for (int32_t i = 0; i < count; ++i)
        target[i] = source[i];
    consumed = count;
    return count;
}

int32_t decodeUtf8(const uint8_t* source, int32_t length, bool atEnd, char16_t* target,
                   int32_t capacity, int32_t maxChars, int32_t& consumed) {
    int32_t in = 0;
    int32_t out = 0;
    int32_t chars = 0;
    while (in < length && out + 2 <= capacity && chars < maxChars) {
        uint8_t lead = source[in];
        if (lead < 0x80) {
            // The common run of ASCII, copied without the per-sequence bookkeeping.
            int32_t limit = in + (capacity - out);
            if (limit > length)
                limit = length;
            if (limit - in > maxChars - chars)
                limit = in + (maxChars - chars);
            int32_t start = in;
#if defined(__SSE2__)
            // Sixteen bytes at a time while they are all ASCII, widened with zeros.
            const __m128i zero = _mm_setzero_si128();
            // A block with a byte above U+007F is widened whole all the same (there is room
            // for sixteen units) and kept up to that byte, which the forms below take next.
            bool stopped = false;
            while (limit - in >= 16) {
                __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + in));
                int high = _mm_movemask_epi8(v);
                _mm_storeu_si128(reinterpret_cast<__m128i*>(target + out),
                                 _mm_unpacklo_epi8(v, zero));
                _mm_storeu_si128(reinterpret_cast<__m128i*>(target + out + 8),
                                 _mm_unpackhi_epi8(v, zero));
                if (high) {
                    int ascii = __builtin_ctz(unsigned(high));
                    in += ascii;
                    out += ascii;
                    stopped = true;
                    break;
                }
                in += 16;
                out += 16;
            }
            if (stopped) {
                chars += in - start;
                continue;
            }
#endif
            // Eight bytes at a time while they are all ASCII.
            while (limit - in >= 8) {
                uint64_t word;
                memcpy(&word, source + in, 8);
                if (word & 0x8080808080808080ull)
                    break;
                for (int k = 0; k < 8; ++k)
                    target[out + k] = source[in + k];
                in += 8;
                out += 8;
            }
            while (in < limit && source[in] < 0x80)
                target[out++] = source[in++];
            chars += in - start;
            continue;
        }
        // The complete two- and three-byte forms, the common ones after ASCII, in one step.
        if (lead >= 0xC0 && lead < 0xE0 && in + 1 < length && (source[in + 1] & 0xC0) == 0x80) {
            target[out++] = char16_t(((lead & 0x1F) << 6) | (source[in + 1] & 0x3F));
            in += 2;
            ++chars;
            continue;
        }
        if (lead >= 0xE0 && lead < 0xF0 && in + 2 < length && (source[in + 1] & 0xC0) == 0x80 &&
            (source[in + 2] & 0xC0) == 0x80) {
            target[out++] = char16_t(((lead & 0x0F) << 12) | ((source[in + 1] & 0x3F) << 6) |
                                     (source[in + 2] & 0x3F));
            in += 3;
            ++chars;
            continue;
        }
        // A lead byte that fits no form is read as the lead of four bytes, and gives U+FFFD.
        int32_t trail = lead >= 0xC0 && lead < 0xE0 ? 1 : lead >= 0xE0 && lead < 0xF0 ? 2 : 3;
        bool valid = (lead & 0xC0) == 0xC0 && lead < 0xF8;
        UChar32 c = trail == 1 ? lead & 0x1F : trail == 2 ? lead & 0x0F : lead & 0x07;
        int32_t next = in + 1;
        int32_t read = 0;
        for (; read < trail && next < length; ++read) {
            uint8_t byte = source[next++];
            if ((byte & 0xC0) != 0x80) {
                // A byte that does not continue the sequence ends it and is read again on its
                // own, so a broken sequence never swallows the markup after it.
                --next;
                valid = false;
                read = trail;
                break;
            }
            c = (c << 6) | (byte & 0x3F);
        }
        if (read < trail && !atEnd)
            break; // the sequence goes on in the next block
        in = next;
        out += put(target + out, valid && read == trail ? c : kReplacement);
        ++chars;
    }
    consumed = in;
    return out;
}

template <bool kBigEndian>
int32_t decodeUtf16(const uint8_t* source, int32_t length, bool atEnd, char16_t* target,
                    int32_t capacity, int32_t maxChars, int32_t& consumed) {
    int32_t in = 0;
    int32_t out = 0;
    int32_t chars = 0;
    auto unit = [source](int32_t at) {
        return kBigEndian ? char16_t((source[at] << 8) | source[at + 1])
                          : char16_t(source[at] | (source[at + 1] << 8));
    };
    while (out + 2 <= capacity && chars < maxChars) {
        if (length - in < 2) {
            if (atEnd && length > in) {
                target[out++] = kReplacement; // the input ends inside a unit
                in = length;
                ++chars;
            }
            break;
        }
        char16_t c = unit(in);
        if (!U16_IS_LEAD(c)) {
            target[out++] = c;
            in += 2;
            ++chars;
            continue;
        }
        if (length - in < 4) {
            if (!atEnd)
                break;
            target[out++] = kReplacement;
            in = length;
            ++chars;
            break;
        }
        char16_t second = unit(in + 2);
        in += 4;
        if (U16_IS_TRAIL(second)) {
            target[out++] = c;
            target[out++] = second;
        } else {
            target[out++] = kReplacement;
        }
        ++chars;
    }
    consumed = in;
    return out;
}

template <bool kBigEndian>
int32_t decodeUtf32(const uint8_t* source, int32_t length, bool atEnd, char16_t* target,
                    int32_t capacity, int32_t maxChars, int32_t& consumed) {
    int32_t in = 0;
    int32_t out = 0;
    int32_t chars = 0;
    while (out + 2 <= capacity && chars < maxChars) {
        if (length - in < 4) {
            if (atEnd && length > in) {
                target[out++] = kReplacement;
                in = length;
                ++chars;
            }
            break;
        }
        const uint8_t* b = source + in;
        uint32_t c = kBigEndian ? (uint32_t(b[0]) << 24) | (b[1] << 16) | (b[2] << 8) | b[3]
                                : (uint32_t(b[3]) << 24) | (b[2] << 16) | (b[1] << 8) | b[0];
        in += 4;
        out += put(target + out, c > 0x10FFFF ? kReplacement : UChar32(c));
        ++chars;
    }
    consumed = in;
    return out;
}

template <const char16_t* kTable, int32_t kLength>
int32_t decodeIso8859(const uint8_t* source, int32_t length, bool, char16_t* target,
                      int32_t capacity, int32_t maxChars, int32_t& consumed) {
    int32_t count = length < capacity ? length : capacity;
    if (count > maxChars)
        count = maxChars;
    for (int32_t i = 0; i < count; ++i) {
        uint8_t byte = source[i];
        int32_t index = byte - 0xA0;
        target[i] = index >= 0 && index < kLength ? kTable[index] : char16_t(byte);
    }
    consumed = count;
    return count;
}

#define ZK_ISO8859(part) decodeIso8859<kIso8859_##part, int32_t(sizeof(kIso8859_##part) / 2)>

} // namespace

Decoder getDecoder(ZkNameEnum encoding) {
    switch (encoding) {
    case ZKN_UTF_8:
        return decodeUtf8;
    case ZKN_UTF_16BE:
        return decodeUtf16<true>;
    case ZKN_UTF_16LE:
        return decodeUtf16<false>;
    case ZKN_UTF_32BE:
        return decodeUtf32<true>;
    case ZKN_UTF_32LE:
        return decodeUtf32<false>;
    case ZKN_ISO_8859_2:
        return ZK_ISO8859(2);
    case ZKN_ISO_8859_3:
        return ZK_ISO8859(3);
    case ZKN_ISO_8859_4:
        return ZK_ISO8859(4);
    case ZKN_ISO_8859_5:
        return ZK_ISO8859(5);
    case ZKN_ISO_8859_6:
        return ZK_ISO8859(6);
    case ZKN_ISO_8859_7:
        return ZK_ISO8859(7);
    case ZKN_ISO_8859_8:
        return ZK_ISO8859(8);
    case ZKN_ISO_8859_9:
        return ZK_ISO8859(9);
    case ZKN_ISO_8859_10:
        return ZK_ISO8859(10);
    case ZKN_ISO_8859_11:
        return ZK_ISO8859(11);
    case ZKN_ISO_8859_13:
        return ZK_ISO8859(13);
    case ZKN_ISO_8859_14:
        return ZK_ISO8859(14);
    case ZKN_ISO_8859_15:
        return ZK_ISO8859(15);
    case ZKN_ISO_8859_16:
        return ZK_ISO8859(16);
    default:
        return decodeBytes;
    }
}

} // namespace detail
} // namespace ZkCommonNS
