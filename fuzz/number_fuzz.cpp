// Fuzzes number formatting: format tokens of any text, kansuji conversion of any text, and
// counter styles built from the input, with their bounds on output length.
// Input: eight bytes of value, one selector byte, one pad byte, then UTF-8 text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <zkcommon/text/counterstyle.h>
#include <zkcommon/text/lang.h>
#include <zkcommon/text/util.h>

using namespace ZkCommonNS;

namespace {

void check(bool condition) {
    if (!condition)
        std::abort();
}

const ZkNameEnum kSystems[] = {ZKN_cyclic,
                               ZKN_fixed,
                               ZKN_numeric,
                               ZKN_alphabetic,
                               ZKN_symbolic,
                               ZKN_additive,
                               ZKN_ethiopic_numeric,
                               ZKN_simp_chinese_informal,
                               ZKN_trad_chinese_formal,
                               ZKN_kansuji};

const ZkCommonNS::ZkUtil::CounterStyle* lookupSelf(ZkName, void* data) {
    return static_cast<const ZkUtil::CounterStyle*>(data);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 10 || size > 4096)
        return 0;
    long long value = 0;
    std::memcpy(&value, data, sizeof value);
    const int selector = data[8];
    const int pad = data[9];
    UnicodeString text =
        UnicodeString::fromUTF8(std::string(reinterpret_cast<const char*>(data + 10), size - 10));

    // A format keeps its text around the token; the token writes at most a few hundred units.
    static const ZkLang languages[] = {ZkLang("en"), ZkLang("it"), ZkLang("uk"), ZkLang("ja")};
    ZkNameEnum letterValue = selector & 1   ? ZKN_alphabetic
                             : selector & 2 ? ZKN_traditional
                                            : ZKN_EMPTY;
    UnicodeString separator = selector & 4 ? UnicodeString(u",") : UnicodeString();
    UnicodeString formatted = ZkUtil::formatNumber(value, text, separator, pad % 5,
                                                   languages[(selector >> 3) & 3], letterValue);
    check(!formatted.isEmpty());
    check(formatted.length() <= text.length() + 2 * text.length() + 200);

    // Kansuji: digits only ever grow by their units and group words.
    static const ZkNameEnum kStyles[] = {ZKN_simple, ZKN_grouping, ZKN_readable};
    UnicodeString kanji =
        ZkUtil::convertKansuji(text, kStyles[selector % 3], ZKN_kanji, UnicodeString());
    check(kanji.length() <= 4 * text.length() + 4);

    // A counter style of the input's characters.
    ZkUtil::CounterStyle style(kSystems[selector % 10]);
    for (int i = 0; i < text.length() && i < 64;) {
        UChar32 c = text.char32At(i);
        style.addSymbol(ZkUtil::CounterStyle::Symbol(c));
        style.addAdditiveSymbol(pad * (64 - i), ZkUtil::CounterStyle::Symbol(c));
        i += U16_LENGTH(c);
    }
    style.setFirst(static_cast<int>(value % 100));
    if (selector & 64)
        style.setPad(pad * 100, "0");
    if (selector & 128)
        style.addRange(-static_cast<long long>(pad) * 1000, static_cast<long long>(pad) * 1000);
    style.setFallback(ZkName(u"self"));
    UnicodeString marker = style.formatNumber(value, &lookupSelf, &style, false);
    check(marker.length() < 1100);
    return 0;
}
