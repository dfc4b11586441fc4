// Number text under the C locale: digits, hex numbers, decimals, rounding, printing.
#include "text/clocale.h"
#include "zkcommon/text/util.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace ZkCommonNS {

namespace {

// The longest number text taken into the conversion buffer; longer input is refused rather than
// cut, so a huge digit run never turns into a wrong small number.
constexpr int kNumberBufferLimit = 98;

bool isBlank(char16_t c) noexcept {
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\f';
}

bool isDigit(char16_t c) noexcept {
    return c >= u'0' && c <= u'9';
}

bool isHexDigit(char16_t c) noexcept {
    return isDigit(c) || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

const char16_t* skipBlanks(const char16_t* p) noexcept {
    while (isBlank(*p))
        ++p;
    return p;
}

UnicodeString fromAscii(const char* text, int length) {
    UnicodeString result;
    if (length <= 0)
        return result;
    char16_t* buffer = result.getBuffer(length);
    if (!buffer)
        return result;
    for (int i = 0; i < length; ++i)
        buffer[i] = static_cast<char16_t>(static_cast<unsigned char>(text[i]));
    result.releaseBuffer(length);
    return result;
}

UnicodeString hexString(unsigned long long value, int width) {
    static const char kDigits[] = "0123456789ABCDEF";
    char buffer[32];
    int length = 0;
    do {
        buffer[length++] = kDigits[value & 15];
        value >>= 4;
    } while (value != 0);
    while (length < width && length < static_cast<int>(sizeof buffer))
        buffer[length++] = '0';
    UnicodeString result;
    for (int i = length - 1; i >= 0; --i)
        result.append(static_cast<char16_t>(buffer[i]));
    return result;
}

} // namespace

void ZkUtil::setLocaleC() {
    detail::prepareCLocale();
}

int ZkUtil::parseDigits(const UnicodeString& text, int start, int length) {
    int textLength = text.length();
    if (start < 0 || start >= textLength)
        return -1;
    // Compared before adding: start + length may lie past INT_MAX.
    int limit = length <= 0 || length > textLength - start ? textLength : start + length;
    long long value = 0;
    for (int i = start; i < limit; ++i) {
        char16_t c = text.charAt(i);
        if (!isDigit(c))
            return -1;
        value = value * 10 + (c - u'0');
        if (value > std::numeric_limits<int>::max())
            return -1;
    }
    return static_cast<int>(value);
}

int ZkUtil::parseDigits(const char16_t* text, const char16_t** end) {
    if (!text) {
        if (end)
            *end = text;
        return -1;
    }
    const char16_t* p = skipBlanks(text);
    if (!isDigit(*p)) {
        if (end)
            *end = text;
        return -1;
    }
    long long value = 0;
    bool overflow = false;
    while (isDigit(*p)) {
        if (!overflow) {
            value = value * 10 + (*p - u'0');
            overflow = value > std::numeric_limits<int>::max();
        }
        ++p;
    }
    if (end)
        *end = p;
    return overflow ? -1 : static_cast<int>(value);
}

unsigned long ZkUtil::parseHexNum(const char16_t* text, const char16_t** end, int maxDigits) {
    if (end)
        *end = text;
    if (!text)
        return 0;
    const char16_t* p = skipBlanks(text);
    int limit = maxDigits > 0 && maxDigits < kNumberBufferLimit ? maxDigits : kNumberBufferLimit;
    char buffer[kNumberBufferLimit + 2];
    int length = 0;
    while (length < limit && isHexDigit(p[length])) {
        buffer[length] = static_cast<char>(p[length]);
        ++length;
    }
    if (length == 0)
        return 0;
    buffer[length] = '\0';
    if (end)
        *end = p + length;
    return std::strtoul(buffer, nullptr, 16);
}

double ZkUtil::parseNumber(const char16_t* text, const char16_t** end, bool* hasPoint,
                           bool* error) {
    setLocaleC();
    if (hasPoint)
        *hasPoint = false;
    if (error)
        *error = false;
    if (end)
        *end = text;
    if (!text) {
        if (error)
            *error = true;
        return 0.0;
    }
    const char16_t* p = skipBlanks(text);
    const char16_t* q = p;
    if (*q == u'+' || *q == u'-')
        ++q;
    bool digits = false;
    bool point = false;
    while (isDigit(*q)) {
        ++q;
        digits = true;
    }
    // A point after digits needs no digit behind it ("5." is 5); a leading point needs one.
    if (*q == u'.' && (digits || isDigit(q[1]))) {
        point = true;
        ++q;
        while (isDigit(*q)) {
            ++q;
            digits = true;
        }
    }
    if (!digits) {
        if (error)
            *error = true;
        return 0.0;
    }
    int length = static_cast<int>(q - p);
    if (length > kNumberBufferLimit) {
        if (error)
            *error = true;
        return 0.0;
    }
    char buffer[kNumberBufferLimit + 2];
    for (int i = 0; i < length; ++i)
        buffer[i] = static_cast<char>(p[i]);
    buffer[length] = '\0';
    double value = detail::parseDoubleC(buffer, nullptr);
    if (hasPoint)
        *hasPoint = point;
    if (end)
        *end = q;
    return value;
}

int ZkUtil::roundToInteger(float value) noexcept {
    float rounded = value < 0.0f ? value - 0.5f : value + 0.5f;
    if (!(rounded > -2147483649.0f && rounded < 2147483648.0f))
        return 0;
    return static_cast<int>(rounded);
}

int ZkUtil::roundToInteger(double value) noexcept {
    double rounded = value < 0.0 ? value - 0.5 : value + 0.5;
    if (!(rounded > -2147483649.0 && rounded < 2147483648.0))
        return 0;
    return static_cast<int>(rounded);
}

double ZkUtil::getNaN() noexcept {
    return std::numeric_limits<double>::quiet_NaN();
}

float ZkUtil::getNaNf() noexcept {
    return std::numeric_limits<float>::quiet_NaN();
}

UnicodeString ZkUtil::toString(int value) {
    return toString(static_cast<long long>(value));
}

UnicodeString ZkUtil::toString(long long value) {
    char buffer[32];
    int length = std::snprintf(buffer, sizeof buffer, "%lld", value);
    return fromAscii(buffer, length);
}

UnicodeString ZkUtil::toString(double value) {
    char buffer[64];
    int length = detail::formatDoubleC(buffer, sizeof buffer, "%g", value);
    if (length < 0 || length >= static_cast<int>(sizeof buffer))
        return UnicodeString();
    return fromAscii(buffer, length);
}

UnicodeString ZkUtil::toHexString(int value, int width) {
    return hexString(static_cast<uint32_t>(value), width);
}

UnicodeString ZkUtil::toHexString(long long value, int width) {
    return hexString(static_cast<unsigned long long>(value), width);
}

} // namespace ZkCommonNS
