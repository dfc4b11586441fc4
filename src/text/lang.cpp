// ZkLang: old-code normalisation, the locked ISO3 cache, typical scripts of languages.
#include "zkcommon/text/lang.h"

#include "zkcommon/core/lock.h"

#include <cstring>
#include <string>
#include <unordered_map>

namespace ZkCommonNS {

namespace {

// ISO 639-2 bibliographic codes and the terminology codes ICU knows. "jav" to "jaw" is an old
// code for Javanese that documents still carry; it is kept as it always was.
const char* const kOldCodes[][2] = {
    {"none", ""},   {"alb", "sqi"}, {"arm", "hye"}, {"baq", "eus"}, {"bur", "mya"}, {"chi", "zho"},
    {"scr", "hrv"}, {"cze", "ces"}, {"dut", "nld"}, {"fre", "fra"}, {"geo", "kat"}, {"ger", "deu"},
    {"gre", "ell"}, {"ice", "isl"}, {"jav", "jaw"}, {"mac", "mkd"}, {"may", "msa"}, {"mao", "mri"},
    {"per", "fas"}, {"rum", "ron"}, {"scc", "srp"}, {"slo", "slk"}, {"tib", "bod"}, {"wel", "cym"},
};

// Built once by the first caller (a function-local static is initialised thread-safely) and
// only read afterwards.
const std::unordered_map<std::string, const char*>& oldCodeTable() {
    static const std::unordered_map<std::string, const char*> s_table = [] {
        std::unordered_map<std::string, const char*> table;
        for (const auto& entry : kOldCodes)
            table.emplace(entry[0], entry[1]);
        return table;
    }();
    return s_table;
}

bool isAsciiLetter(char16_t c) noexcept {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

std::string lowerAscii(const UnicodeString& text, int start, int limit) {
    std::string out;
    out.reserve(static_cast<size_t>(limit - start));
    for (int i = start; i < limit; ++i) {
        char16_t c = text.charAt(i);
        if (c >= u'A' && c <= u'Z')
            c = static_cast<char16_t>(c + 32);
        out.push_back(c < 0x80 ? static_cast<char>(c) : '?');
    }
    return out;
}

// Language tags are ASCII; ICU would keep other characters as raw bytes, so each becomes an
// "x" and the language reads as invalid rather than as broken text.
std::string asciiTag(const UnicodeString& text, int start) {
    std::string out;
    for (int i = start; i < text.length();) {
        UChar32 c = text.char32At(i);
        out.push_back(c > 0 && c < 0x80 ? static_cast<char>(c) : 'x');
        i += U16_LENGTH(c);
    }
    return out;
}

// The language text as ICU reads it: old codes replaced, the rest (a country) kept.
std::string normalizeLanguage(const UnicodeString& text) {
    const auto& table = oldCodeTable();
    int length = text.length();
    if (length >= 4 && !isAsciiLetter(text.charAt(3))) {
        auto hit = table.find(lowerAscii(text, 0, 3));
        if (hit != table.end())
            return hit->second + asciiTag(text, 3);
    } else {
        auto hit = table.find(lowerAscii(text, 0, length));
        if (hit != table.end())
            return hit->second;
    }
    return asciiTag(text, 0);
}

std::string countryText(const UnicodeString& country) {
    return country == UNICODE_STRING_SIMPLE("none") ? std::string() : asciiTag(country, 0);
}

UnicodeString ascii(const char* text) {
    return UnicodeString(text, -1, US_INV);
}

constexpr size_t kIso3CacheLimit = 4096;

// The ISO3 cache: ICU's look-up walks its tables on every call, and the engine asks for every
// run of text.
ZkLock& iso3Lock() {
    static ZkLock s_lock;
    return s_lock;
}

std::unordered_map<std::string, UnicodeString>*& iso3Cache() {
    static std::unordered_map<std::string, UnicodeString>* s_cache = nullptr;
    return s_cache;
}

struct TypicalScript {
    int script;
    const char* languages; // ISO3 codes, each followed by a blank
};

// clang-format off
const TypicalScript kTypicalScripts[] = {
    {2, "ara fas urd "}, {3, "hye "}, {4, "ben "},
    {8, "aze bel bos bul hrv kaz kir mkd rus srp tgk tuk ukr uzb "},
    {10, "hin "}, {11, "amh wen "}, {12, "kat "}, {14, "ell "}, {15, "guj "}, {16, "pan "},
    {17, "jpn zho "}, {18, "kor "}, {19, "heb "}, {20, "jpn "}, {21, "kan "}, {22, "jpn "},
    {23, "khm "}, {24, "lao "},
    {25, "afr aze bos cat ces cym dan deu eng epo est eus fin fra gle glg hrv hun ina ind isl ita "
         "kaz lat lav lit mlt msa nld nno nob nor oci pol por roh ron slk slv spa sqi srp swa swe "
         "tur uzb vie zul "},
    {26, "mal "}, {27, "mon "}, {28, "kar kht ksw mnw mya "}, {31, "ori "}, {33, "sin "},
    {34, "aii cld syr "}, {35, "tam "}, {36, "tel "}, {38, "tha "}, {39, "bod "},
    {73, "zho "}, {74, "zho "}, {105, "jpn "},
};

struct ScriptLanguage {
    int script;
    const char* language;
};

const ScriptLanguage kScriptLanguages[] = {
    {2, "ar"}, {3, "hy"}, {4, "bn"}, {8, "ru"}, {10, "hi"}, {11, "am"}, {12, "ka"}, {14, "el"},
    {15, "gu"}, {16, "pa"}, {19, "he"}, {21, "kn"}, {23, "km"}, {24, "lo"}, {25, "en"},
    {26, "ml"}, {27, "mn"}, {28, "my"}, {31, "or"}, {33, "si"}, {34, "syr"}, {35, "ta"},
    {36, "te"}, {38, "th"}, {39, "bo"},
};
// clang-format on

Locale scriptLocale(ZkScript script) {
    int code = script.getUScriptCode();
    for (const ScriptLanguage& entry : kScriptLanguages)
        if (entry.script == code)
            return Locale(entry.language);
    return Locale::getDefault();
}

} // namespace

ZkLang::ZkLang() : Locale() {}

ZkLang::ZkLang(const UnicodeString& text) : Locale(normalizeLanguage(text).c_str()) {}

ZkLang::ZkLang(const char* text) : ZkLang(text ? UnicodeString::fromUTF8(text) : UnicodeString()) {}

ZkLang::ZkLang(ZkName text) : ZkLang(text == ZKN_none ? UnicodeString() : text.toString()) {}

ZkLang::ZkLang(const UnicodeString& text, const UnicodeString& region)
    : Locale(normalizeLanguage(text).c_str(), countryText(region).c_str()) {}

ZkLang::ZkLang(ZkScript code) : Locale(scriptLocale(code)) {}

UnicodeString ZkLang::getLanguage() const {
    return ascii(Locale::getLanguage());
}

UnicodeString ZkLang::getCountry() const {
    return ascii(Locale::getCountry());
}

UnicodeString ZkLang::getLangScript() const {
    return ascii(Locale::getScript());
}

UnicodeString ZkLang::getISO3Language() const {
    if (isNullLang())
        return UnicodeString();
    // Keyed by the full name: the hash alone could let two locales share an entry.
    std::string key = getName();
    ZkMutex guard(iso3Lock());
    auto*& cache = iso3Cache();
    if (!cache)
        cache = new std::unordered_map<std::string, UnicodeString>();
    auto hit = cache->find(key);
    if (hit != cache->end())
        return hit->second;
    UnicodeString iso3 = ascii(Locale::getISO3Language());
    // A document can carry any number of distinct language texts; the cache stops growing at
    // a size that real documents never reach.
    if (cache->size() < kIso3CacheLimit)
        cache->emplace(std::move(key), iso3);
    return iso3;
}

UnicodeString ZkLang::getISO3Country() const {
    return ascii(Locale::getISO3Country());
}

ZkName ZkLang::getLanguageName() const {
    return ZkName(getISO3Language());
}

ZkLang::LanguageID ZkLang::getLCID() const {
    return Locale::getLCID();
}

UnicodeString ZkLang::toString() const {
    UnicodeString text = getLanguage();
    if (*Locale::getCountry())
        text.append(u'-').append(getCountry());
    return text;
}

UnicodeString ZkLang::toISO3String() const {
    UnicodeString text = getISO3Language();
    if (*Locale::getCountry())
        text.append(u'-').append(getCountry());
    return text;
}

UnicodeString ZkLang::toFullString() const {
    UnicodeString text = getLanguage();
    if (*Locale::getScript())
        text.append(u'-').append(getLangScript());
    if (*Locale::getCountry())
        text.append(u'-').append(getCountry());
    return text;
}

ZkScript ZkLang::toScript() const {
    // The ISO3 form loses an explicit script subtag; a written "zh-Hant" says more than "zho".
    if (*Locale::getScript()) {
        ZkScript fromSubtag(getLangScript());
        if (static_cast<int>(fromSubtag.getUScriptCode()) != ZkScript::kUnknown)
            return fromSubtag;
    }
    return ZkScript(toISO3String());
}

bool ZkLang::isTypicalScript(ZkScript code) const {
    int number = code.getUScriptCode();
    if (number < 2 || number > 105)
        return false;
    std::string iso3;
    getISO3Language().toUTF8String(iso3);
    if (iso3.size() != 3)
        return false;
    iso3.push_back(' ');
    for (const TypicalScript& entry : kTypicalScripts) {
        if (entry.script != number)
            continue;
        for (const char* p = entry.languages; *p; p += 4)
            if (std::strncmp(p, iso3.c_str(), 4) == 0)
                return true;
    }
    return false;
}

Locale ZkLang::getDefaultLocale() {
    return Locale::getDefault();
}

bool ZkLang::isDefaultLocaleJapanese() {
    return ZkLang(getDefaultLocale()).getISO3Language() ==
           ZkLang(Locale::getJapanese()).getISO3Language();
}

bool ZkLang::operator==(const ZkLang& other) const {
    return std::strcmp(getName(), other.getName()) == 0;
}

bool ZkLang::operator<(const ZkLang& other) const {
    return std::strcmp(getName(), other.getName()) < 0;
}

void ZkLang::cleanup() {
    ZkMutex guard(iso3Lock());
    delete iso3Cache();
    iso3Cache() = nullptr;
}

} // namespace ZkCommonNS
