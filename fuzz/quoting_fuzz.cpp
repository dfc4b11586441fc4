// Fuzzes the text readers of ZkUtil and ZkChar: quoted strings in every mode, Base64 decoding,
// NCName unescaping and CSS identifier repair, with their round-trip invariants.
// Input: one byte choosing the quote mode, then UTF-8 text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <zkcommon/core/char.h>
#include <zkcommon/text/util.h>

using namespace ZkCommonNS;

namespace {

void check(bool condition) {
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1 || size > 4096)
        return 0;
    const int mode = data[0] & 63;
    UnicodeString text =
        UnicodeString::fromUTF8(std::string(reinterpret_cast<const char*>(data + 1), size - 1));
    const char16_t* start = text.getTerminatedBuffer();

    // Reading never runs past the terminating zero.
    const char16_t* end = nullptr;
    UnicodeString parsed = ZkUtil::parseString(start, &end, mode);
    check(end >= start && end <= start + text.length());
    ZkUtil::unquoteString(text, mode);

    // Whatever is quoted in the modes in use reads back as it was; the readers work on
    // zero-terminated text, so a U+0000 inside cannot come back.
    for (int used : {3, 7, 43}) {
        if (text.indexOf(u'\0') >= 0)
            break;
        UnicodeString quoted = ZkUtil::quoteString(text, used);
        UnicodeString back = ZkUtil::unquoteString(quoted, used);
        check(!back.isBogus() && back == text);
    }

    std::ostringstream bytes;
    ZkUtil::decodeBase64(start, text.length(), bytes);
    std::string decoded = bytes.str();
    UnicodeString encoded = ZkUtil::encodeBase64(
        reinterpret_cast<const unsigned char*>(decoded.data()), static_cast<int>(decoded.size()));
    std::ostringstream again;
    ZkUtil::decodeBase64(encoded.getBuffer(), encoded.length(), again);
    check(again.str() == decoded);

    UnicodeString escaped = ZkChar::escapeNCNameStr(text, '_');
    check(text.isEmpty() || ZkChar::isNCNameStr(escaped));
    check(ZkChar::unescapeNCNameStr(escaped, '_') == text);
    ZkChar::unescapeNCNameStr(text, '_');
    ZkChar::replaceToCSSIdentTokenStr(text, '_');
    ZkUtil::normalizeSpaces(text);
    return 0;
}
