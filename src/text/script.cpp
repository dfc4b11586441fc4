// ZkScript: script words both ways, the script of characters and texts, classes of script.
#include "zkcommon/core/char.h"
#include "zkcommon/text/lang.h"

#include <cstring>
#include <initializer_list>
#include <string>

namespace ZkCommonNS {

namespace {

struct ScriptWord {
    int code;
    ZkNameEnum word;
};

// The words the engine writes. -12 and 174 share "Zsye", and 18 and 119 share "Hang": reading
// back gives the emoji code and Hangul.
// clang-format off
const ScriptWord kScriptWords[] = {
    {-12, ZKN_Zsye}, {0, ZKN_Zyyy}, {1, ZKN_Qaai}, {2, ZKN_Arab}, {3, ZKN_Armn}, {4, ZKN_Beng},
    {8, ZKN_Cyrl}, {10, ZKN_Deva}, {11, ZKN_Ethi}, {12, ZKN_Geor}, {14, ZKN_Grek},
    {15, ZKN_Gujr}, {16, ZKN_Guru}, {17, ZKN_Hani}, {18, ZKN_Hang}, {19, ZKN_Hebr},
    {20, ZKN_Hira}, {21, ZKN_Knda}, {22, ZKN_Kana}, {23, ZKN_Khmr}, {24, ZKN_Laoo},
    {25, ZKN_Latn}, {26, ZKN_Mlym}, {27, ZKN_Mong}, {28, ZKN_Mymr}, {31, ZKN_Orya},
    {33, ZKN_Sinh}, {34, ZKN_Syrc}, {35, ZKN_Taml}, {36, ZKN_Telu}, {38, ZKN_Thai},
    {39, ZKN_Tibt}, {54, ZKN_Hrkt}, {73, ZKN_Hans}, {74, ZKN_Hant}, {105, ZKN_Jpan},
    {119, ZKN_Hang}, {128, ZKN_Zmth}, {129, ZKN_Zsym}, {174, ZKN_Zsye},
};

// Names read back to a code besides the words above.
const ScriptWord kNameCodes[] = {
    {174, ZKN_Zsye}, {18, ZKN_Hang}, {25, ZKN_Latf}, {25, ZKN_Latg},
    {ZkScript::kAuto, ZKN_Zxxx}, {ZkScript::kAuto, ZKN_auto},
    {ZkScript::kNone, ZKN_Zzzz}, {ZkScript::kNone, ZKN_none},
    {105, ZKN_jpn}, {ZkScript::kChinese, ZKN_zho},
    {73, ZKN_zh_CN}, {73, ZKN_zh_CHN}, {73, ZKN_zh_SG}, {73, ZKN_zho_CN}, {73, ZKN_zho_CHN},
    {74, ZKN_zh_TW}, {74, ZKN_zh_TWN}, {74, ZKN_zh_HK}, {74, ZKN_zho_TW}, {74, ZKN_zho_TWN},
};
// clang-format on

int codeOfName(ZkNameEnum name) {
    for (const ScriptWord& entry : kNameCodes)
        if (entry.word == name)
            return entry.code;
    for (const ScriptWord& entry : kScriptWords)
        if (entry.word == name)
            return entry.code;
    return ZkScript::kUnknown;
}

bool isOneOf(int code, std::initializer_list<int> codes) noexcept {
    for (int c : codes)
        if (c == code)
            return true;
    return false;
}

} // namespace

ZkScript::ZkScript(const UnicodeString& text) : m_code(kUnknown) {
    static const struct {
        const char16_t* word;
        int code;
    } kWords[] = {{u"Hans", 73}, {u"Hant", 74},  {u"Hira", 20},    {u"Jpan", 105},
                  {u"Kana", 22}, {u"Zmth", 128}, {u"auto", kAuto}, {u"none", kNone}};
    if (text.isEmpty()) {
        m_code = kAuto;
        return;
    }
    for (const auto& entry : kWords) {
        if (text == UnicodeString(entry.word)) {
            m_code = entry.code;
            return;
        }
    }
    ZkLang lang(text);
    const char* language = lang.getLocale().getLanguage();
    const char* country = lang.getLocale().getCountry();
    const char* script = lang.getLocale().getScript();
    if (std::strcmp(language, "ja") == 0) {
        m_code = USCRIPT_JAPANESE;
        return;
    }
    if (std::strcmp(language, "ko") == 0) {
        m_code = USCRIPT_KOREAN;
        return;
    }
    if (std::strcmp(language, "zh") == 0) {
        // An explicit script subtag tells more than the country; Singapore writes simplified
        // and Macau traditional characters, like the names zh-SG and zh-HK.
        if (std::strcmp(script, "Hant") == 0)
            m_code = USCRIPT_TRADITIONAL_HAN;
        else if (std::strcmp(script, "Hans") == 0)
            m_code = USCRIPT_SIMPLIFIED_HAN;
        else if (std::strcmp(country, "TW") == 0 || std::strcmp(country, "HK") == 0 ||
                 std::strcmp(country, "MO") == 0)
            m_code = USCRIPT_TRADITIONAL_HAN;
        else if (std::strcmp(country, "CN") == 0 || std::strcmp(country, "SG") == 0)
            m_code = USCRIPT_SIMPLIFIED_HAN;
        else
            m_code = kChinese;
        return;
    }
    std::string utf8;
    text.toUTF8String(utf8);
    UErrorCode status = U_ZERO_ERROR;
    UScriptCode codes[8];
    int count = uscript_getCode(utf8.c_str(), codes, 8, &status);
    if (U_FAILURE(status) || count <= 0) {
        // ICU does not read old or three-letter codes ("fre", "deu"); the language as the
        // locale knows it ("fr") tells the script.
        status = U_ZERO_ERROR;
        count = lang.isNullLang() ? 0 : uscript_getCode(lang.getName(), codes, 8, &status);
    }
    if (U_SUCCESS(status) && count > 0)
        m_code = codes[0];
}

ZkScript::ZkScript(ZkName name) : m_code(kUnknown) {
    if (name.isEmpty()) {
        m_code = kAuto;
        return;
    }
    int code = codeOfName(name.getEnum());
    if (code != kUnknown)
        m_code = code;
    else
        *this = ZkScript(name.toString());
}

ZkName ZkScript::getScriptCode() const {
    for (const ScriptWord& entry : kScriptWords)
        if (entry.code == m_code)
            return ZkName(entry.word);
    if (m_code == kAuto)
        return ZkName(ZKN_auto);
    if (m_code == kNone)
        return ZkName(ZKN_none);
    if (m_code < 0)
        return ZkName();
    const char* word = uscript_getShortName(getUScriptCode());
    return word ? ZkName(UnicodeString(word, -1, US_INV)) : ZkName();
}

UnicodeString ZkScript::getScriptName() const {
    if (m_code < 0)
        return getScriptCode().toString();
    const char* name = uscript_getName(getUScriptCode());
    return name ? UnicodeString(name, -1, US_INV) : UnicodeString();
}

UScriptCode ZkScript::getScript(UChar32 c) noexcept {
    if (c >= 0x0590 && c <= 0x05FF)
        return USCRIPT_HEBREW;
    if (c >= 0x0600 && c <= 0x06FF && !(c >= 0x0660 && c <= 0x0669) &&
        !(c >= 0x06F0 && c <= 0x06F9))
        return USCRIPT_ARABIC;
    if (c >= 0x0900 && c <= 0x097F)
        return USCRIPT_DEVANAGARI;
    // Currency, section, copyright and similar Latin-1 signs go with Latin text.
    if ((c >= 0xA2 && c <= 0xA5) || (c >= 0xA7 && c <= 0xAA) || c == 0xAE || c == 0xAF ||
        c == 0xB4 || c == 0xB5 || c == 0xB8 || c == 0xBA)
        return USCRIPT_LATIN;
    // Voiced sound marks and the prolonged sound mark belong to both kana.
    if ((c >= 0x3099 && c <= 0x309C) || c == 0x30FC)
        return USCRIPT_KATAKANA_OR_HIRAGANA;
    if (ZkChar::isEmoji(c, false))
        return USCRIPT_SYMBOLS_EMOJI;
    if (ZkChar::isMathOperator(c))
        return USCRIPT_MATHEMATICAL_NOTATION;
    UErrorCode status = U_ZERO_ERROR;
    UScriptCode code = uscript_getScript(c, &status);
    return U_SUCCESS(status) ? code : USCRIPT_INVALID_CODE;
}

UScriptCode ZkScript::getScriptFromText(const UnicodeString& text, bool latinWins) {
    bool sawLatin = false;
    UChar32 previous = -1;
    int length = text.length();
    for (int i = 0; i < length;) {
        UChar32 c = text.char32At(i);
        i += U16_LENGTH(c);
        int code = getScript(c);
        if (previous >= 0 && ZkChar::isEmoji(previous, true)) {
            // Variation selectors choose the text or the emoji presentation of what precedes.
            if (c == 0xFE0E)
                code = USCRIPT_SYMBOLS;
            else if (c == 0xFE0F)
                code = USCRIPT_SYMBOLS_EMOJI;
            else if (c == 0x20E3 && ZkChar::isEmojiKeycapBase(previous))
                code = USCRIPT_SYMBOLS_EMOJI;
        }
        previous = c;
        if (code >= kNone && code <= USCRIPT_INHERITED)
            continue;
        if (code == USCRIPT_LATIN) {
            if (latinWins)
                return USCRIPT_LATIN;
            sawLatin = true;
            continue;
        }
        return static_cast<UScriptCode>(code);
    }
    return sawLatin ? USCRIPT_LATIN : USCRIPT_COMMON;
}

UChar32 ZkScript::getA() const noexcept {
    switch (m_code) {
    case kChinese:
    case 17:
    case 73:
    case 74:
        return 0x4E9C;
    case 0:
    case 25:
        return 0x41;
    case 2:
        return 0x627;
    case 3:
        return 0x531;
    case 8:
        return 0x410;
    case 10:
        return 0x905;
    case 12:
        return 0x10A0;
    case 14:
        return 0x391;
    case 18:
    case 119:
        return 0xAC00;
    case 19:
        return 0x5D0;
    case 20:
    case 54:
    case 105:
        return 0x3042;
    case 22:
        return 0x30A2;
    case 38:
        return 0xE01;
    case 39:
        return 0xF68;
    default:
        return 0xFFFF;
    }
}

bool ZkScript::isCJK() const noexcept {
    return isOneOf(m_code, {kChinese, 5, 17, 18, 20, 22, 54, 73, 74, 105, 119});
}

bool ZkScript::isCJKJustify() const noexcept {
    return isOneOf(m_code, {kChinese, 5, 17, 20, 22, 54, 73, 74, 105});
}

bool ZkScript::isHangingBaseline() const noexcept {
    return isOneOf(m_code, {4, 10, 15, 16, 39});
}

bool ZkScript::isJA() const noexcept {
    return isOneOf(m_code, {20, 22, 54, 105});
}

bool ZkScript::isKanaScript(UScriptCode code) noexcept {
    return code == USCRIPT_HIRAGANA || code == USCRIPT_KATAKANA ||
           code == USCRIPT_KATAKANA_OR_HIRAGANA;
}

bool ZkScript::isLatinGroup() const noexcept {
    return isOneOf(m_code, {0, 3, 8, 11, 12, 14, 25});
}

bool ZkScript::isZenkakuScript(UChar32 c) const noexcept {
    UEastAsianWidth width = ZkChar::getEastAsianWidth(c);
    if (width == U_EA_FULLWIDTH || width == U_EA_WIDE)
        return true;
    if (width == U_EA_AMBIGUOUS)
        return isCJK() && (ZkChar::isSymbolJIS(c) || getScript(c) != USCRIPT_LATIN);
    return false;
}

} // namespace ZkCommonNS
