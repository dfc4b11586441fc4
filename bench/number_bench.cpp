// Number formatting: the values 1 to 1,000,000 in decimal, lower-roman, cjk-decimal,
// japanese-formal and hebrew by our counter styles and formatNumber, next to ICU's
// RuleBasedNumberFormat (roman, Hebrew and Japanese spell-out rules), ICU's decimal formats
// and std::to_chars, in one run.
#include "ratio.h"

#include <benchmark/benchmark.h>
#include <charconv>
#include <memory>
#include <unicode/decimfmt.h>
#include <unicode/numfmt.h>
#include <unicode/rbnf.h>
#include <zkcommon/text/counterstyle.h>
#include <zkcommon/text/lang.h>
#include <zkcommon/text/util.h>

using namespace ZkCommonNS;

namespace {

constexpr long long kLast = 1000000;

// Runs `format` over 1..kLast once per iteration; the lengths keep the work observable.
template <typename Format> void formatAll(benchmark::State& state, Format format) {
    for (auto _ : state) {
        long long total = 0;
        for (long long value = 1; value <= kLast; ++value)
            total += format(value);
        benchmark::DoNotOptimize(total);
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kLast);
}

void ourStyle(benchmark::State& state, const char16_t* name) {
    const ZkUtil::CounterStyle* style = ZkUtil::getPredefinedCounterStyle(ZkName(name), nullptr);
    if (!style) {
        state.SkipWithError("no such style");
        return;
    }
    formatAll(state, [style](long long value) {
        return style->formatNumber(value, &ZkUtil::getPredefinedCounterStyle, nullptr, true)
            .length();
    });
}

void icuRules(benchmark::State& state, icu::URBNFRuleSetTag tag, const Locale& locale,
              const char16_t* ruleSet) {
    UErrorCode status = U_ZERO_ERROR;
    icu::RuleBasedNumberFormat format(tag, locale, status);
    UnicodeString name(ruleSet);
    if (U_FAILURE(status)) {
        state.SkipWithError("ICU has no such rules");
        return;
    }
    formatAll(state, [&](long long value) {
        UnicodeString out;
        icu::FieldPosition position;
        UErrorCode error = U_ZERO_ERROR;
        format.format(static_cast<int64_t>(value), name, out, position, error);
        return out.length();
    });
}

void icuDecimal(benchmark::State& state, const char* locale) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::NumberFormat> format(
        icu::NumberFormat::createInstance(Locale(locale), status));
    if (U_FAILURE(status)) {
        state.SkipWithError("ICU has no such format");
        return;
    }
    format->setGroupingUsed(false);
    formatAll(state, [&](long long value) {
        UnicodeString out;
        format->format(static_cast<int64_t>(value), out);
        return out.length();
    });
}

void BM_OursDecimal(benchmark::State& state) {
    ourStyle(state, u"decimal");
}
void BM_ToChars(benchmark::State& state) {
    formatAll(state, [](long long value) {
        char buffer[24];
        return std::to_chars(buffer, buffer + sizeof buffer, value).ptr - buffer;
    });
}
void BM_IcuDecimal(benchmark::State& state) {
    icuDecimal(state, "en");
}
void BM_OursFormatNumber1(benchmark::State& state) {
    ZkLang lang("en");
    formatAll(state, [&](long long value) {
        return ZkUtil::formatNumber(value, UNICODE_STRING_SIMPLE("1"), lang).length();
    });
}

void BM_OursLowerRoman(benchmark::State& state) {
    ourStyle(state, u"lower-roman");
}
void BM_OursFormatNumberI(benchmark::State& state) {
    ZkLang lang("en");
    formatAll(state, [&](long long value) {
        return ZkUtil::formatNumber(value, UNICODE_STRING_SIMPLE("i"), lang).length();
    });
}
void BM_IcuRoman(benchmark::State& state) {
    icuRules(state, icu::URBNF_NUMBERING_SYSTEM, Locale::getRoot(), u"%roman-lower");
}

void BM_OursCjkDecimal(benchmark::State& state) {
    ourStyle(state, u"cjk-decimal");
}
void BM_IcuHanidec(benchmark::State& state) {
    icuDecimal(state, "ja@numbers=hanidec");
}

void BM_OursJapaneseFormal(benchmark::State& state) {
    ourStyle(state, u"japanese-formal");
}
void BM_OursFormatNumberKanji(benchmark::State& state) {
    ZkLang lang("ja");
    formatAll(state, [&](long long value) {
        return ZkUtil::formatNumber(value, UnicodeString(u"\u58F1"), lang).length();
    });
}
void BM_IcuJapaneseFinancial(benchmark::State& state) {
    icuRules(state, icu::URBNF_SPELLOUT, Locale::getJapanese(), u"%spellout-cardinal-financial");
}

void BM_OursHebrew(benchmark::State& state) {
    ourStyle(state, u"hebrew");
}
void BM_OursFormatNumberHebrew(benchmark::State& state) {
    ZkLang lang("he");
    formatAll(state, [&](long long value) {
        return ZkUtil::formatNumber(value, UnicodeString(u"\u05D0"), lang).length();
    });
}
void BM_IcuHebrew(benchmark::State& state) {
    icuRules(state, icu::URBNF_NUMBERING_SYSTEM, Locale::getRoot(), u"%hebrew");
}

BENCHMARK(BM_OursDecimal)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OursFormatNumber1)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ToChars)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_IcuDecimal)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OursLowerRoman)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OursFormatNumberI)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_IcuRoman)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OursCjkDecimal)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_IcuHanidec)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OursJapaneseFormal)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OursFormatNumberKanji)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_IcuJapaneseFinancial)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OursHebrew)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OursFormatNumberHebrew)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_IcuHebrew)->Iterations(3)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    return zkbench::runWithRatios(
        argc, argv,
        {{"BM_OursDecimal/iterations:3", "BM_ToChars/iterations:3"},
         {"BM_OursFormatNumber1/iterations:3", "BM_IcuDecimal/iterations:3"},
         {"BM_OursLowerRoman/iterations:3", "BM_IcuRoman/iterations:3"},
         {"BM_OursFormatNumberI/iterations:3", "BM_IcuRoman/iterations:3"},
         {"BM_OursCjkDecimal/iterations:3", "BM_IcuHanidec/iterations:3"},
         {"BM_OursJapaneseFormal/iterations:3", "BM_IcuJapaneseFinancial/iterations:3"},
         {"BM_OursFormatNumberKanji/iterations:3", "BM_IcuJapaneseFinancial/iterations:3"},
         {"BM_OursHebrew/iterations:3", "BM_IcuHebrew/iterations:3"},
         {"BM_OursFormatNumberHebrew/iterations:3", "BM_IcuHebrew/iterations:3"}});
}
