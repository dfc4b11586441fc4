// ZkICUIStream: decoding through an ICU converter, and encoding detection from the head of a
// stream by XML declaration or ICU's charset detector.
#include "zkcommon/io/icuistream.h"

#include "zkcommon/core/lock.h"

#include <set>
#include <string>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucsdet.h>
#include <vector>

namespace ZkCommonNS {

namespace {

// Detected names are handed out as plain pointers: each distinct name is kept for the life of
// the process.
const char* internName(const std::string& name) {
    static ZkLock s_lock;
    static std::set<std::string> s_names;
    ZkMutex guard(s_lock);
    return s_names.insert(name).first->c_str();
}

// Letters, digits and "-", and also "_": without it "Shift_JIS" and "EUC_KR" would read as no
// encoding at all.
bool isNameChar(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_';
}

// "^<\?xml [^>]*\?>" and, inside it, the last " encoding=\"([a-zA-Z0-9_\-]+)\"" (the pattern's
// "[^>]*" is greedy, so the last match wins); single quotes are read as well, as XML allows
// them. Returns false without a declaration; `name` stays empty for a declaration without an
// encoding.
bool findDeclaredEncoding(const std::vector<char>& data, std::string& name) {
    static const char kStart[] = "<?xml ";
    const size_t startLength = sizeof(kStart) - 1;
    if (data.size() < startLength + 2 ||
        std::string(data.data(), startLength) != std::string(kStart, startLength))
        return false;
    size_t close = startLength;
    while (close < data.size() && data[close] != '>')
        ++close;
    if (close >= data.size() || data[close - 1] != '?')
        return false;
    static const char kAttribute[] = " encoding=";
    const size_t attributeLength = sizeof(kAttribute) - 1;
    name.clear();
    for (size_t at = startLength - 1; at + attributeLength + 1 < close; ++at) {
        if (std::string(data.data() + at, attributeLength) != kAttribute)
            continue;
        const char quote = data[at + attributeLength];
        if (quote != '"' && quote != '\'')
            continue;
        const size_t nameStart = at + attributeLength + 1;
        size_t limit = nameStart;
        while (limit < close && isNameChar(data[limit]))
            ++limit;
        if (limit > nameStart && limit < close && data[limit] == quote)
            name.assign(data.data() + nameStart, limit - nameStart);
    }
    return true;
}

// Bad input decodes to U+FFFD REPLACEMENT CHARACTER, as in the iconv family; ICU's own default
// writes the code page's substitution character, U+001A SUBSTITUTE for many. ICU calls once
// per malformed sequence, and once for a sequence cut off at the end.
void U_CALLCONV substituteReplacementCharacter(const void*, UConverterToUnicodeArgs* args,
                                               const char*, int32_t,
                                               UConverterCallbackReason reason,
                                               UErrorCode* status) {
    if (reason > UCNV_IRREGULAR)
        return; // reset, close, clone: nothing to write
    static const UChar kReplacement = 0xFFFD;
    *status = U_ZERO_ERROR;
    ucnv_cbToUWriteUChars(args, &kReplacement, 1, 0, status);
}

} // namespace

// ---------------------------------------------------------------------------------------------

ZkICUIStreamBuf::ZkICUIStreamBuf(std::istream* source, const char* encoding, bool ownsSource)
    : m_source(source), m_converter(nullptr), m_ownsSource(ownsSource) {
    if (source && encoding) {
        UErrorCode status = U_ZERO_ERROR;
        m_converter = ucnv_open(encoding, &status);
        if (U_SUCCESS(status))
            ucnv_setToUCallBack(m_converter, &substituteReplacementCharacter, nullptr, nullptr,
                                nullptr, &status);
        if (U_FAILURE(status)) {
            closeConverter();
            m_converter = nullptr;
        }
    }
    setg(nullptr, nullptr, nullptr);
}

ZkICUIStreamBuf::~ZkICUIStreamBuf() {
    closeConverter();
    if (m_ownsSource)
        delete m_source;
}

void ZkICUIStreamBuf::closeConverter() noexcept {
    if (m_converter)
        ucnv_close(m_converter);
    m_converter = nullptr;
}

ZkICUIStreamBuf::int_type ZkICUIStreamBuf::underflow() {
    if (gptr() < egptr())
        return traits_type::to_int_type(*gptr());
    while (m_converter) {
        bool sourceEnded = false;
        if (m_inputStart >= m_inputLimit) {
            m_source->read(m_input, kInputCapacity);
            m_inputStart = 0;
            m_inputLimit = static_cast<int>(m_source->gcount());
            sourceEnded = m_inputLimit == 0 && !m_source->good();
            if (m_inputLimit == 0 && !sourceEnded)
                continue;
        }
        const char* input = m_input + m_inputStart;
        char16_t* target = m_output;
        UErrorCode status = U_ZERO_ERROR;
        ucnv_toUnicode(m_converter, &target, m_output + kOutputCapacity, &input,
                       m_input + m_inputLimit, nullptr, sourceEnded, &status);
        m_inputStart = static_cast<int>(input - m_input);
        const bool outputFull = status == U_BUFFER_OVERFLOW_ERROR;
        if ((U_FAILURE(status) && !outputFull) || (sourceEnded && !outputFull)) {
            // End of the source, or a converter that cannot go on: what it gave is the last.
            closeConverter();
            m_finished = true;
        }
        if (target > m_output) {
            char* start = reinterpret_cast<char*>(m_output);
            setg(start, start, reinterpret_cast<char*>(target));
            return traits_type::to_int_type(*gptr());
        }
    }
    return traits_type::eof();
}

// ---------------------------------------------------------------------------------------------

ZkICUIStream::ZkICUIStream(std::istream* source, const char* encoding, bool ownsSource)
    : std::istream(nullptr), m_buffer(source, encoding, ownsSource) {
    init(&m_buffer);
}

ZkICUIStream::~ZkICUIStream() = default;

const char* ZkICUIStream::detectEncoding(std::istream* source) {
    static const char kDefault[] = "UTF-8";
    if (!source)
        return kDefault;
    // The head is enough: the declaration stands at the start, and the detector looks at no
    // more than its first few kilobytes. A stream of gigabytes is not read to sniff it.
    constexpr size_t kHeadCapacity = 64 * 1024;
    std::vector<char> data;
    try {
        source->clear();
        source->seekg(0);
        if (!*source) {
            source->clear();
            return kDefault;
        }
        data.resize(kHeadCapacity);
        source->read(data.data(), static_cast<std::streamsize>(data.size()));
        data.resize(static_cast<size_t>(source->gcount()));
        source->clear();
        source->seekg(0);
    } catch (const std::exception&) {
        return kDefault;
    }
    if (data.empty())
        return kDefault;
    std::string declared;
    if (findDeclaredEncoding(data, declared))
        return declared.empty() ? kDefault : internName(declared);

    UErrorCode status = U_ZERO_ERROR;
    UCharsetDetector* detector = ucsdet_open(&status);
    const char* result = kDefault;
    if (U_SUCCESS(status)) {
        ucsdet_setText(detector, data.data(), static_cast<int32_t>(data.size()), &status);
        const UCharsetMatch* match = U_SUCCESS(status) ? ucsdet_detect(detector, &status) : nullptr;
        const char* name = match && U_SUCCESS(status) ? ucsdet_getName(match, &status) : nullptr;
        if (name && U_SUCCESS(status) && *name)
            result = internName(name);
    }
    if (detector)
        ucsdet_close(detector);
    return result;
}

} // namespace ZkCommonNS
