// The platform converter over POSIX iconv (glibc), with the library's names mapped to the
// names iconv knows.
#include "io/converter.h"
#include "zkcommon/core/lock.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iconv.h>
#include <unicode/ucnv.h>
#include <unicode/utf8.h>

namespace ZkCommonNS {

namespace {

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
const char kHostUtf16[] = "UTF-16BE";
const char kReplacement[] = {'\xFF', '\xFD'};
#else
const char kHostUtf16[] = "UTF-16LE";
const char kReplacement[] = {'\xFD', '\xFF'};
#endif

struct NameMapping {
    const char* canonical;
    const char* toUtf16;   // name for decoding
    const char* fromUtf16; // name for encoding
};

// The canonical spellings that iconv spells otherwise. The Unicode forms decode with byte
// order mark detection and encode big-endian, as their registrations say.
const NameMapping kNames[] = {
    {"WINDOWS31J", "CP932", "CP932"},
    {"KoreanKSC", "CP949", "CP949"},
    {"ChineseGBK", "GBK", "GBK"},
    {"ChineseBIG5", "BIG5", "BIG5"},
    {"ISO-10646-UCS-2", "UTF-16", "UTF-16BE"},
    {"ISO-10646-UCS-4", "UTF-32", "UTF-32BE"},
    {"ISO-646IRV", "ASCII", "ASCII"},
    {"US-ASCII", "ASCII", "ASCII"},
};

ZkLock s_tablePathLock;
std::string s_tablePath;
std::atomic<bool> s_converterOpened{false};

// The number of threads of this process, from the kernel's status file; 0 when unknown.
int threadCount() {
    FILE* status = std::fopen("/proc/self/status", "re");
    if (!status)
        return 0;
    char line[256];
    int count = 0;
    while (std::fgets(line, sizeof line, status)) {
        if (std::strncmp(line, "Threads:", 8) == 0) {
            count = std::atoi(line + 8);
            break;
        }
    }
    std::fclose(status);
    return count;
}

std::string narrow(const UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

class IconvConverter final : public detail::ByteConverter {
public:
    IconvConverter(iconv_t handle, Direction direction, std::string name)
        : m_handle(handle), m_direction(direction), m_name(std::move(name)) {
        if (direction == Direction::kFromUtf16)
            m_substitute = encodeQuestionMark();
    }
    ~IconvConverter() override { ::iconv_close(m_handle); }

    size_t convert(const char* source, size_t length, std::string& target, bool flush) override {
        char* in = const_cast<char*>(source);
        size_t inLeft = length;
        // Converted straight into the target: two output bytes per input byte cover the common
        // cases, and the loop grows the room when an encoding needs more.
        size_t used = target.size();
        target.resize(used + length * 2 + 16);
        while (inLeft > 0) {
            char* out = &target[used];
            size_t outLeft = target.size() - used;
            size_t result = ::iconv(m_handle, &in, &inLeft, &out, &outLeft);
            int error = errno;
            used = target.size() - outLeft;
            if (result != static_cast<size_t>(-1))
                continue;
            if (error == E2BIG) {
                target.resize(target.size() + inLeft * 4 + 64);
                continue;
            }
            if (error == EINVAL && !flush)
                break; // an incomplete sequence waits for more input
            target.resize(used);
            if (error == EINVAL && m_direction == Direction::kToUtf16) {
                // A sequence cut off at the end: one U+FFFD for all of it, as ICU writes.
                target.append(kReplacement, 2);
                in += inLeft;
                inLeft = 0;
                used = target.size();
                break;
            }
            skipBadInput(in, inLeft, target);
            used = target.size();
            target.resize(used + inLeft * 2 + 16);
        }
        target.resize(used);
        if (flush) {
            char chunk[64];
            char* out = chunk;
            size_t outLeft = sizeof(chunk);
            ::iconv(m_handle, nullptr, nullptr, &out, &outLeft);
            target.append(chunk, sizeof(chunk) - outLeft);
            ::iconv(m_handle, nullptr, nullptr, nullptr, nullptr);
        }
        return length - inLeft;
    }

    std::string byteOrderMark() const override {
        if (m_direction != Direction::kFromUtf16)
            return std::string();
        if (m_name == "UTF-8")
            return "\xEF\xBB\xBF";
        if (m_name == "UTF-16BE")
            return std::string("\xFE\xFF", 2);
        if (m_name == "UTF-16LE")
            return std::string("\xFF\xFE", 2);
        if (m_name == "UTF-32BE")
            return std::string("\x00\x00\xFE\xFF", 4);
        if (m_name == "UTF-32LE")
            return std::string("\xFF\xFE\x00\x00", 4);
        return std::string();
    }

private:
    // Input iconv refuses: one byte of a legacy encoding, or the maximal subpart of an
    // ill-formed UTF-8 sequence (what ICU replaces as one), becomes U+FFFD; one UTF-16 unit
    // (two for a surrogate pair) that the target lacks becomes "?".
    void skipBadInput(char*& in, size_t& inLeft, std::string& target) {
        if (m_direction == Direction::kToUtf16) {
            target.append(kReplacement, 2);
            size_t step = 1;
            if (m_name == "UTF-8") {
                const uint8_t* bytes = reinterpret_cast<const uint8_t*>(in);
                int32_t length = static_cast<int32_t>(inLeft < 4 ? inLeft : 4);
                int32_t consumed = 0;
                UChar32 c;
                U8_NEXT(bytes, consumed, length, c);
                (void)c;
                step = static_cast<size_t>(consumed > 0 ? consumed : 1);
            }
            in += step;
            inLeft -= step;
            return;
        }
        size_t step = inLeft >= 2 ? 2 : inLeft;
        if (inLeft >= 4) {
            char16_t unit;
            std::memcpy(&unit, in, 2);
            char16_t next;
            std::memcpy(&next, in + 2, 2);
            if (unit >= 0xD800 && unit <= 0xDBFF && next >= 0xDC00 && next <= 0xDFFF)
                step = 4;
        }
        target.append(m_substitute);
        in += step;
        inLeft -= step;
    }

    std::string encodeQuestionMark() {
        const char16_t question = u'?';
        char* in = reinterpret_cast<char*>(const_cast<char16_t*>(&question));
        size_t inLeft = 2;
        char buffer[16];
        char* out = buffer;
        size_t outLeft = sizeof(buffer);
        std::string result;
        if (::iconv(m_handle, &in, &inLeft, &out, &outLeft) != static_cast<size_t>(-1))
            result.assign(buffer, sizeof(buffer) - outLeft);
        ::iconv(m_handle, nullptr, nullptr, nullptr, nullptr);
        return result.empty() ? std::string("?") : result;
    }

    iconv_t m_handle;
    Direction m_direction;
    std::string m_name;
    std::string m_substitute;
};

iconv_t openIconv(const std::string& name, detail::ByteConverter::Direction direction) {
    if (name.empty())
        return reinterpret_cast<iconv_t>(-1);
    return direction == detail::ByteConverter::Direction::kToUtf16
               ? ::iconv_open(kHostUtf16, name.c_str())
               : ::iconv_open(name.c_str(), kHostUtf16);
}

} // namespace

detail::ByteConverter::~ByteConverter() = default;

bool detail::ByteConverter::setTablePath(const UnicodeString& path) {
    ZkMutex guard(s_tablePathLock);
    s_tablePath = narrow(path);
    // glibc's iconv finds no tables but through GCONV_PATH, which it reads once, at the first
    // converter; its built-in converters need none. Setting a variable races with getenv in
    // every other thread, so it happens here, in the call the application makes at start-up,
    // and only while the process has one thread and no converter has opened. Opening a
    // converter never touches the environment.
    if (s_tablePath.empty() || s_converterOpened.load() || threadCount() != 1)
        return false;
    return ::setenv("GCONV_PATH", s_tablePath.c_str(), 1) == 0;
}

std::unique_ptr<detail::ByteConverter> detail::ByteConverter::open(const UnicodeString& encoding,
                                                                   Direction direction) {
    s_converterOpened.store(true);
    std::string given = narrow(encoding);
    if (given.empty() || given.find('\0') != std::string::npos)
        return nullptr;
    // Candidates in order: the library's mapping, the name itself, then ICU's registered
    // spellings, which iconv often knows where an alias of ICU's is not.
    std::string candidates[4] = {std::string(), given, std::string(), std::string()};
    for (const NameMapping& mapping : kNames) {
        if (given == mapping.canonical)
            candidates[0] = direction == Direction::kToUtf16 ? mapping.toUtf16 : mapping.fromUtf16;
    }
    UErrorCode status = U_ZERO_ERROR;
    if (const char* mime = ucnv_getStandardName(given.c_str(), "MIME", &status))
        candidates[2] = mime;
    status = U_ZERO_ERROR;
    if (const char* iana = ucnv_getStandardName(given.c_str(), "IANA", &status))
        candidates[3] = iana;
    for (const std::string& name : candidates) {
        iconv_t handle = openIconv(name, direction);
        if (handle != reinterpret_cast<iconv_t>(-1))
            return std::make_unique<IconvConverter>(handle, direction, name);
    }
    return nullptr;
}

} // namespace ZkCommonNS
