// ZkLang, the value of a language property over ICU's Locale, and ZkScript, a writing system
// with the classes of script that font choice, line breaking and justification ask about.
#ifndef ZKCOMMON_TEXT_LANG_H
#define ZKCOMMON_TEXT_LANG_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/unicode.h"

#include <cstdint>

namespace ZkCommonNS {

/// A writing system: ICU's UScriptCode number or one of the private values below.
class ZKCOMMON_API ZkScript {
public:
    /// Private values next to ICU's codes.
    enum : int32_t {
        kUnknown = -1, ///< as set before a failed look-up
        kAuto = -2,    ///< "auto", an empty text or "Zxxx"
        kNone = -3,    ///< "none" or "Zzzz"
        kChinese = -12 ///< "zh" without a telling country: both simplified and traditional
    };

    ZkScript() noexcept : m_code(kAuto) {}
    ZkScript(UScriptCode code) noexcept : m_code(code) {}
    /// A script word ("Hans", "Jpan"), a language ("ja", "zh-TW"), or anything that ICU's
    /// uscript_getCode knows; unknown text gives kUnknown.
    ZkScript(const UnicodeString& text);
    ZkScript(const char16_t* text) : ZkScript(UnicodeString(text)) {}
    ZkScript(const char* text) : ZkScript(UnicodeString(text, -1, US_INV)) {}
    /// The built-in script words and language names by number; other names by their text.
    ZkScript(ZkName name);
    ZkScript(ZkNameEnum name) : ZkScript(ZkName(name)) {}

    operator UScriptCode() const noexcept { return static_cast<UScriptCode>(m_code); }
    UScriptCode getUScriptCode() const noexcept { return static_cast<UScriptCode>(m_code); }

    /// The four-letter word ("Latn"); "auto" and "none" for those values, empty for unknown.
    const UnicodeString& toString() const { return getScriptCode().toString(); }
    ZkName getScriptCode() const;
    /// ICU's long name ("Latin") for a code of ICU, the word for a private value.
    UnicodeString getScriptName() const;

    /// The script of one character, with the library's own choices for Hebrew, Arabic,
    /// Devanagari blocks, Latin-1 signs, kana marks, emoji and mathematical operators.
    static UScriptCode getScript(UChar32 c) noexcept;
    /// The first script of the text that is neither common nor inherited. Latin is noted and
    /// the walk goes on, unless `latinWins`; without any script: Latin if seen, else common.
    static UScriptCode getScriptFromText(const UnicodeString& text, bool latinWins);

    /// A sample letter for measuring; U+FFFF for scripts without one.
    UChar32 getA() const noexcept;

    bool isCJK() const noexcept;
    /// isCJK without Hangul, which does not justify as CJK.
    bool isCJKJustify() const noexcept;
    bool isCJKorAuto() const noexcept { return m_code == kAuto || isCJK(); }
    bool isHangingBaseline() const noexcept;
    bool isJA() const noexcept;
    bool isKanaScript() const noexcept { return isKanaScript(getUScriptCode()); }
    static bool isKanaScript(UScriptCode code) noexcept;
    bool isLatinGroup() const noexcept;
    bool isSC() const noexcept { return m_code == kChinese || m_code == USCRIPT_SIMPLIFIED_HAN; }
    bool isTC() const noexcept { return m_code == kChinese || m_code == USCRIPT_TRADITIONAL_HAN; }
    bool isAuto() const noexcept { return m_code == kAuto; }
    /// Whether `c` sets full width in this script: wide and fullwidth characters always, East
    /// Asian ambiguous ones only in a CJK script and when a JIS symbol or not Latin.
    bool isZenkakuScript(UChar32 c) const noexcept;

private:
    int32_t m_code;
};

/// The value of an xml:lang or language property: an ICU Locale after the library's
/// normalisation of old (bibliographic) language codes.
class ZKCOMMON_API ZkLang : public Locale {
public:
    /// The platform's locale identifier, as ICU's getLCID gives it.
    using LanguageID = uint32_t;

    /// ICU's default locale.
    ZkLang();
    ZkLang(const ZkLang& other) = default;
    ZkLang& operator=(const ZkLang& other) = default;
    ZkLang(const Locale& locale) : Locale(locale) {}
    /// The text after the old-code normalisation ("fre" becomes "fra", "ger-DE" "deu-DE");
    /// "none" and the empty text give a null language.
    ZkLang(const UnicodeString& text);
    ZkLang(const char* text);
    ZkLang(const char16_t* text) : ZkLang(UnicodeString(text)) {}
    /// As the text; the name none gives a null language.
    ZkLang(ZkName text);
    ZkLang(ZkNameEnum text) : ZkLang(ZkName(text)) {}
    /// A `region` (country) of "none" is dropped.
    ZkLang(const UnicodeString& text, const UnicodeString& region);
    /// The typical language of a script ("ar" for Arabic); ICU's default for other scripts.
    explicit ZkLang(ZkScript code);

    UnicodeString getLanguage() const;
    UnicodeString getCountry() const;
    UnicodeString getLangScript() const;
    /// ICU's three-letter code, cached process-wide; empty when ICU knows none.
    UnicodeString getISO3Language() const;
    UnicodeString getISO3Country() const;
    ZkName getLanguageName() const;
    LanguageID getLCID() const;

    /// "language" or "language-COUNTRY".
    UnicodeString toString() const;
    /// The ISO3 language, followed by "-COUNTRY" (two letters) when there is a country.
    UnicodeString toISO3String() const;
    /// language, then "-Script" and "-COUNTRY" when present.
    UnicodeString toFullString() const;
    ZkScript toScript() const;

    bool isNullLang() const { return *Locale::getLanguage() == 0; }
    /// Not null and without an ISO3 code.
    bool isInvalid() const { return !isNullLang() && getISO3Language().isEmpty(); }
    /// Whether `code` is a usual script of this language; false for codes below 2 or above
    /// 105.
    bool isTypicalScript(ZkScript code) const;

    static Locale getDefaultLocale();
    static bool isDefaultLocaleJapanese();

    /// By the full locale name.
    bool operator==(const ZkLang& other) const;
    bool operator!=(const ZkLang& other) const { return !(*this == other); }
    bool operator<(const ZkLang& other) const;

    /// Drops the ISO3 cache; it refills on demand.
    static void cleanup();

    const Locale& getLocale() const { return *this; }
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_TEXT_LANG_H
