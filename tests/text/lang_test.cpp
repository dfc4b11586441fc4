// Tests of ZkLang and ZkScript: old language codes, ISO3 codes, script words both ways, the
// script of texts and the classes of script.
#include "support.h"
#include "zkcommon/text/lang.h"
#include "zkcommon/text/util.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

using namespace ZkCommonNS;

TEST(ZkLang, OldCodesAreNormalised) {
    // clang-format off
    struct Case { const char* text; const char* language; const char* country; const char* iso3; } cases[] = {
        {"fre", "fr", "", "fra"},       {"ger-DE", "de", "DE", "deu"},  {"chi", "zh", "", "zho"},
        {"dut_NL", "nl", "NL", "nld"},  {"wel", "cy", "", "cym"},       {"ice", "is", "", "isl"},
        {"en-US", "en", "US", "eng"},   {"ja", "ja", "", "jpn"},        {"FRE", "fr", "", "fra"},
        {"french", "french", "", ""},   {"frej", "frej", "", ""},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        ZkLang lang(c.text);
        EXPECT_EQ(utf8(lang.getLanguage()), c.language);
        EXPECT_EQ(utf8(lang.getCountry()), c.country);
        EXPECT_EQ(utf8(lang.getISO3Language()), c.iso3);
        EXPECT_EQ(lang.isInvalid(), *c.iso3 == 0);
    }
}

TEST(ZkLang, NullAndInvalidLanguages) {
    for (ZkLang lang : {ZkLang("none"), ZkLang(""), ZkLang(ZkName(ZKN_none)), ZkLang(ZkName())}) {
        EXPECT_TRUE(lang.isNullLang());
        EXPECT_FALSE(lang.isInvalid());
        EXPECT_EQ(utf8(lang.getISO3Language()), "");
    }
    ZkLang dropped(UnicodeString(u"fr"), UnicodeString(u"none"));
    EXPECT_EQ(utf8(dropped.toString()), "fr");
    ZkLang kept(UnicodeString(u"ger"), UnicodeString(u"at"));
    EXPECT_EQ(utf8(kept.toString()), "de-AT");
    ZkLang lang(u"abc\u65E5\u672C"); // non-ASCII text is invalid
    EXPECT_EQ(utf8(lang.getLanguage()), "abcxx");
    EXPECT_TRUE(lang.isInvalid());
    EXPECT_FALSE(lang.isNullLang());
}

TEST(ZkLang, TextForms) {
    ZkLang lang(u"zh-Hant-TW");
    EXPECT_EQ(utf8(lang.toString()), "zh-TW");
    EXPECT_EQ(utf8(lang.toFullString()), "zh-Hant-TW");
    EXPECT_EQ(utf8(lang.toISO3String()), "zho-TW");
    EXPECT_EQ(utf8(lang.getLangScript()), "Hant");
    EXPECT_EQ(utf8(lang.getISO3Country()), "TWN");
    EXPECT_EQ(lang.getLanguageName(), ZkName(u"zho"));
    EXPECT_EQ(lang.toScript().getUScriptCode(), USCRIPT_TRADITIONAL_HAN);
    EXPECT_EQ(ZkLang("ja-JP").toScript().getUScriptCode(), USCRIPT_JAPANESE);
    EXPECT_EQ(ZkLang("ru").toScript().getUScriptCode(), USCRIPT_CYRILLIC);
    EXPECT_EQ(ZkLang("en-US").getLCID(), 0x0409u);
    EXPECT_TRUE(ZkLang("fre") == ZkLang("fr"));
    EXPECT_TRUE(ZkLang("de") < ZkLang("fr"));
    EXPECT_TRUE(ZkLang("de") != ZkLang("de-AT"));
    EXPECT_EQ(ZkLang(ZkScript(USCRIPT_ARABIC)).getLocale(), Locale("ar"));
    EXPECT_EQ(ZkLang(ZkScript(USCRIPT_SYRIAC)).getLocale(), Locale("syr"));
    EXPECT_EQ(ZkLang(ZkScript(USCRIPT_HAN)).getLocale(), Locale::getDefault());
}

TEST(ZkLang, TypicalScripts) {
    // clang-format off
    struct Case { const char* lang; UScriptCode script; bool typical; } cases[] = {
        {"ja", USCRIPT_HAN, true}, {"ja", USCRIPT_JAPANESE, true}, {"ja", USCRIPT_KATAKANA, true},
        {"ja", USCRIPT_KOREAN, false}, // above 105
        {"sr", USCRIPT_CYRILLIC, true}, {"sr", USCRIPT_LATIN, true}, {"ru", USCRIPT_LATIN, false},
        {"fa", USCRIPT_ARABIC, true}, {"my", USCRIPT_MYANMAR, true}, {"en", USCRIPT_COMMON, false},
        {"none", USCRIPT_LATIN, false},
    };
    // clang-format on
    for (const Case& c : cases)
        EXPECT_EQ(ZkLang(c.lang).isTypicalScript(ZkScript(c.script)), c.typical)
            << c.lang << " " << c.script;
}

TEST(ZkLang, Iso3CacheUnderThreads) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            const char* languages[] = {"fr", "de", "ja", "zh-TW", "ko", "en-GB"};
            for (int i = 0; i < 500; ++i) {
                ZkLang lang(languages[(i + t) % 6]);
                EXPECT_EQ(lang.getISO3Language().length(), 3);
                if (i % 97 == 0)
                    ZkLang::cleanup();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

TEST(ZkLang, Iso3CacheStaysBounded) {
    // Many distinct (invalid) languages: each still answers, the cache does not keep them all.
    for (int i = 0; i < 6000; ++i) {
        ZkLang lang(UnicodeString(u"q") + ZkUtil::toString(i));
        EXPECT_TRUE(lang.getISO3Language().isEmpty());
    }
    EXPECT_EQ(utf8(ZkLang("fr").getISO3Language()), "fra");
    ZkLang::cleanup();
}

// tests/data/text/scripts.tsv: script words both ways, scripts of names and characters, and
// the classes of each script.
TEST(ZkScript, TableOfWordsNamesCharactersAndClasses) {
    const auto rows = readTable(ZK_TEST_DATA_DIR "/text/scripts.tsv");
    ASSERT_GT(rows.size(), 70u);
    for (const auto& row : rows) {
        ASSERT_GE(row.size(), 3u);
        SCOPED_TRACE(row[0] + " " + row[1]);
        if (row[0] == "word") {
            const int code = std::stoi(row[1]);
            ZkScript script(static_cast<UScriptCode>(code));
            EXPECT_EQ(utf8(script.toString()), row[2]);
            const int back = code == -12 ? 174 : code == 119 ? 18 : code;
            EXPECT_EQ(static_cast<int>(ZkScript(script.getScriptCode()).getUScriptCode()), back);
        } else if (row[0] == "name") {
            const UnicodeString text = UnicodeString::fromUTF8(row[1]);
            EXPECT_EQ(static_cast<int>(ZkScript(text).getUScriptCode()), std::stoi(row[2]));
            EXPECT_EQ(static_cast<int>(ZkScript(ZkName(text)).getUScriptCode()), std::stoi(row[2]));
        } else if (row[0] == "char") {
            EXPECT_EQ(uscript_getShortName(ZkScript::getScript(std::stoi(row[1], nullptr, 16))),
                      row[2]);
        } else {
            ASSERT_EQ(row.size(), 4u);
            const int code = std::stoi(row[1]);
            ZkScript s(static_cast<UScriptCode>(code));
            const std::string classes = " " + row[2] + " ";
            auto in = [&](const char* name) {
                return classes.find(" " + std::string(name) + " ") != std::string::npos;
            };
            EXPECT_EQ(s.isCJK(), in("cjk"));
            EXPECT_EQ(s.isCJKJustify(), in("justify"));
            EXPECT_EQ(s.isCJKorAuto(), in("cjk") || code == -2);
            EXPECT_EQ(s.isHangingBaseline(), in("hanging"));
            EXPECT_EQ(s.isLatinGroup(), in("latin"));
            EXPECT_EQ(s.isJA(), in("ja"));
            EXPECT_EQ(s.isKanaScript(), in("kana"));
            EXPECT_EQ(s.isSC(), in("sc"));
            EXPECT_EQ(s.isTC(), in("tc"));
            EXPECT_EQ(s.getA(), std::stoi(row[3], nullptr, 16));
        }
    }
}

TEST(ZkScript, NamesOnlyAndIcuDigits) {
    EXPECT_EQ(utf8(ZkScript(USCRIPT_LATIN).getScriptName()), "Latin");
    EXPECT_EQ(utf8(ZkScript(static_cast<UScriptCode>(-1)).toString()), "");
    // Some words are read as names only; as text ICU has codes of its own for them.
    EXPECT_EQ(ZkScript(ZkName(u"Latf")).getUScriptCode(), USCRIPT_LATIN);
    EXPECT_EQ(ZkScript(UnicodeString(u"Latf")).getUScriptCode(), USCRIPT_LATIN_FRAKTUR);
    EXPECT_EQ(static_cast<int>(ZkScript(ZkName(u"Zxxx")).getUScriptCode()), ZkScript::kAuto);
    EXPECT_EQ(static_cast<int>(ZkScript(ZkName(u"Zzzz")).getUScriptCode()), ZkScript::kNone);
    EXPECT_TRUE(ZkScript(u"zh").isSC());
    EXPECT_TRUE(ZkScript(u"zh").isTC());
    EXPECT_TRUE(ZkScript().isAuto());
    // The Arabic-Indic digits are left to ICU.
    for (UChar32 digit : {0x0661, 0x06F5}) {
        UErrorCode status = U_ZERO_ERROR;
        EXPECT_EQ(ZkScript::getScript(digit), uscript_getScript(digit, &status));
    }
}

TEST(ZkScript, ScriptOfTexts) {
    EXPECT_EQ(ZkScript::getScriptFromText(u"abc日本", false), USCRIPT_HAN);
    EXPECT_EQ(ZkScript::getScriptFromText(u"abc日本", true), USCRIPT_LATIN);
    EXPECT_EQ(ZkScript::getScriptFromText(u"123", false), USCRIPT_COMMON);
    EXPECT_EQ(ZkScript::getScriptFromText(u"12 ab", false), USCRIPT_LATIN);
    EXPECT_EQ(ZkScript::getScriptFromText(u"", true), USCRIPT_COMMON);
    EXPECT_EQ(ZkScript::getScriptFromText(u"1\u0301\u05D0", true), USCRIPT_HEBREW);
    // Variation selectors after an emoji-capable character choose the presentation.
    EXPECT_EQ(ZkScript::getScriptFromText(u"\u2764\uFE0E", false), USCRIPT_SYMBOLS);
    EXPECT_EQ(ZkScript::getScriptFromText(u"#\u20E3", false), USCRIPT_SYMBOLS_EMOJI);
    EXPECT_EQ(ZkScript::getScriptFromText(u"\U0001F600", false), USCRIPT_SYMBOLS_EMOJI);
}

TEST(ZkScript, ZenkakuByScript) {
    // Fullwidth forms are full width in any script; U+00B0 DEGREE SIGN is ambiguous and a JIS
    // symbol; U+00E9 is ambiguous Latin; U+0391 GREEK CAPITAL LETTER ALPHA is ambiguous, not Latin.
    // clang-format off
    struct Case { UScriptCode script; UChar32 c; bool zenkaku; } cases[] = {
        {USCRIPT_JAPANESE, 0x3042, true}, {USCRIPT_LATIN, 0xFF21, true}, {USCRIPT_JAPANESE, 0x0041, false},
        {USCRIPT_JAPANESE, 0x00B0, true}, {USCRIPT_LATIN, 0x00B0, false}, {USCRIPT_JAPANESE, 0x00E9, false},
        {USCRIPT_JAPANESE, 0x0391, true},
    };
    // clang-format on
    for (const Case& c : cases)
        EXPECT_EQ(ZkScript(c.script).isZenkakuScript(c.c), c.zenkaku) << c.script << " " << c.c;
}
