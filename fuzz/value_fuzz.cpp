// Fuzzes the value tokenizer in every tokenizer type and every reader, the value parser in every
// flag combination, colours, attribute strings, link targets and the two range parsers.
// Input: one byte choosing the text form (bit 0: UTF-16 units as they stand, lone surrogates and
// U+0000 included; otherwise UTF-8), then the text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <zkcommon/values/color.h>
#include <zkcommon/values/parser.h>
#include <zkcommon/values/ranges.h>

using namespace ZkCommonNS;

namespace {

void check(bool condition) {
    if (!condition)
        std::abort();
}

using T = ZkTokenizer;

// Every reader must move forward: a text of n units yields at most n + 1 tokens.
void tokenize(const UnicodeString& text, T::TokenizerType type) {
    int bound = text.length() + 2;
    T raw(text, type);
    for (int n = 0;; ++n) {
        check(n <= bound);
        int before = raw.getOffset();
        int token = raw.nextToken();
        if (token == T::TokenEnd)
            break;
        check(raw.getOffset() > before);
        if (n == 3) { // push back once and read it again
            raw.pushBack();
            check(raw.nextToken() == token);
        }
    }
    T values(text, type);
    for (int n = 0; !values.nextTokenValueSigned().isNull(); ++n)
        check(n <= bound);
    T exp(text, type);
    for (int n = 0; !exp.nextTokenValueExp().isNull(); ++n)
        check(n <= bound);
    T func(text, type);
    for (int n = 0;; ++n) {
        check(n <= bound);
        ZkName name;
        ZkValue v = func.nextTokenValueFunc(n % 2 == 1, &name);
        if (v.isNull())
            break;
        v.toString();
    }
    for (char16_t sep : {u',', u'&', u' ', u'\0'}) {
        T items(text, type);
        for (int n = 0;; ++n) {
            check(n <= bound);
            items.nextSeparatedValue(sep, n % 2 == 0);
            if (items.getTokenType() == T::TokenEnd)
                break;
        }
    }
    T doubles(text, type);
    for (int n = 0; n <= bound && doubles.getOffset() < text.length(); ++n) {
        doubles.nextTokenDoubleExp();
        doubles.nextToken();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1 || size > 4096)
        return 0;
    UnicodeString text;
    if (data[0] & 1)
        text = UnicodeString(reinterpret_cast<const char16_t*>(data + 1),
                             static_cast<int32_t>((size - 1) / 2));
    else
        text = UnicodeString::fromUTF8(icu::StringPiece(reinterpret_cast<const char*>(data + 1),
                                                        static_cast<int32_t>(size - 1)));

    for (int type = T::TokenizerDefault; type <= T::TokenizerPlainQuote; ++type)
        tokenize(text, static_cast<T::TokenizerType>(type));

    for (int flags = 0; flags < 32; ++flags) {
        ZkValue v =
            ZkParser::parse(text, flags, static_cast<T::TokenizerType>((flags + data[0] / 2) % 7));
        // What a list prints, the list reader reads to something that prints the same or
        // keeps the text; it never fails loudly.
        ZkParser::parseCompound(v.toString()).toString();
        v.getColorValue(true);
    }
    bool clamped = false;
    for (bool icc : {false, true}) {
        ZkValue color = ZkParser::parseColor(text, icc, &clamped);
        ZkColor c = color.getColorValue(true);
        if (color.isColor()) {
            // A colour prints in every form, and its plain form reads back.
            for (int f = 0; f < 8; ++f)
                c.toString(f & 1, f & 2, f & 4);
            ZkValue back = ZkParser::parseColor(c.toString(), true);
            check(c.isInvalid() || back.isColor() || back.isName() || c.toString().isEmpty());
            check(ZkValue(c).getColorValue(true) == c);
        }
        T t(text);
        ZkParser::parseColor(t, icc);
    }
    ZkColor named{ZkName(text.tempSubString(0, 64))};
    named.isInvalid();

    std::map<ZkName, UnicodeString> attributes;
    for (int flags = 0; flags < 4; ++flags)
        ZkParser::parseAttributes(text.tempSubString(0, 512), attributes, flags);

    ZkParser::parseDestinationType(text);
    ZkParser::parseInternalDestination(text, data[0] % 3);
    ZkParser::parsePDFOpenParameters(text, false);
    ZkParser::parsePDFOpenParameters(text, true);
    ZkParser::parseExcelOpenParameters(text);
    ZkParser::parseUriFragmentParameters(text, data[0] & 2);
    ZkParser::parseXlinkHref(text);

    ZkPageRange pages;
    pages.parsePageRange(text);
    ZkUnicodeRange ranges;
    if (ranges.parseUnicodeRange(text)) {
        ZkUnicodeRange again;
        check(again.parseUnicodeRange(ranges.toString()));
        check(again == ranges);
    }
    return 0;
}
