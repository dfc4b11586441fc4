// ZkParser: single values and lists, the compound form, name="value" attribute strings and the
// colour functions. The link-target languages are in parserlinks.cpp.
#include "zkcommon/values/parser.h"

#include "values/parserinternal.h"
#include "zkcommon/core/char.h"
#include "zkcommon/text/util.h"
#include "zkcommon/values/color.h"

namespace ZkCommonNS {

namespace {

// Compounds nested deeper than this read their "{" as a plain character, so that hostile text
// cannot drive the recursion of the compound reader.
constexpr int kMaxCompoundNesting = 64;

bool isChar(const ZkValue& v, char16_t c) noexcept {
    return v.isCharacter() && v.getCharacterValue() == c;
}

bool endsValue(int type) noexcept {
    return type == u';' || type == u'}';
}

struct Reader {
    ZkTokenizer& t;
    int depth;

    // The value by the flags, or Null when the caller's fallback applies.
    ZkValue value(int flags);
    ZkValue single(int flags);
    ZkValue list(int flags);
    ZkValue compound(int flags);
};

ZkValue Reader::value(int flags) {
    return (flags & ZkParser::List) ? list(flags) : single(flags);
}

ZkValue Reader::single(int flags) {
    ZkValue v = t.nextTokenValueSigned();
    if (v.isNull())
        return v;
    int type = t.getTokenType();
    bool accepted;
    switch (type) {
    case ZkTokenizer::TokenHashColor:
    case ZkTokenizer::TokenHashColorAlpha:
        accepted = !(flags & ZkParser::NoHashColor);
        break;
    case ZkTokenizer::TokenNumber:
        accepted = !(flags & ZkParser::NoNumber);
        break;
    case ZkTokenizer::TokenName:
    case ZkTokenizer::TokenString:
        accepted = true;
        break;
    default:
        if ((flags & ZkParser::InCompound) && endsValue(type)) {
            t.pushBack();
            return v;
        }
        if ((flags & ZkParser::Compound) && type == u'{' && depth < kMaxCompoundNesting) {
            Reader inner{t, depth + 1};
            v = inner.compound(flags);
            accepted = true;
            break;
        }
        return ZkValue();
    }
    if (!accepted)
        return ZkValue();
    int next = t.nextToken();
    if (next == ZkTokenizer::TokenEnd)
        return v;
    if ((flags & ZkParser::InCompound) && endsValue(next)) {
        t.pushBack();
        return v;
    }
    return ZkValue();
}

ZkValue Reader::list(int flags) {
    ZkValue result;
    for (;;) {
        ZkValue v = t.nextTokenValueSigned();
        if (v.isNull())
            break;
        int type = t.getTokenType();
        if ((flags & ZkParser::InCompound) && endsValue(type)) {
            t.pushBack();
            break;
        }
        if ((flags & ZkParser::Compound) && type == u'{' && depth < kMaxCompoundNesting) {
            Reader inner{t, depth + 1};
            v = inner.compound(flags);
        } else if ((flags & ZkParser::NoHashColor) && (type == ZkTokenizer::TokenHashColor ||
                                                       type == ZkTokenizer::TokenHashColorAlpha)) {
            v = ZkValue(v.toString(), UnitNone);
        } else if ((flags & ZkParser::NoNumber) && type == ZkTokenizer::TokenNumber) {
            v = ZkValue(v.toString(), UnitNone);
        }
        result.addItem(v);
    }
    return result;
}

// After the "{": key ":" value (";" key ":" value)* "}", stopping quietly where it breaks off.
ZkValue Reader::compound(int flags) {
    ZkPtr<ZkNamedValueMap> map(new ZkNamedValueMap());
    for (;;) {
        const char16_t* save = t.getPtr();
        ZkValue key = t.nextTokenValue(false);
        if (key.isNull())
            break;
        if (isChar(key, u'}'))
            break; // "{}" and "{a: 1;}" close here
        ZkName name;
        if (key.isName()) {
            name = key.getNameValue();
        } else if (!isChar(key, u'.')) { // "." is how the empty name prints
            t.setPtr(save);
            break;
        }
        if (t.nextToken() != u':') {
            t.setPtr(save);
            break;
        }
        const char16_t* itemStart = t.getPtr();
        ZkValue item = value(flags | ZkParser::InCompound);
        if (item.isNull()) {
            // The fallback of an item is its own text, without the ";" or "}" pushed back.
            const char16_t* itemEnd = t.getPtr();
            if (t.isPushedBack() && t.isTokenTypeCharacter() && itemEnd > itemStart)
                --itemEnd;
            UnicodeString text(itemStart, static_cast<int32_t>(itemEnd - itemStart));
            item = ZkValue(text.trim(), UnitNone);
        }
        int next = t.nextToken();
        if (next != ZkTokenizer::TokenEnd && !endsValue(next)) {
            t.setPtr(save);
            break;
        }
        map->setNamedItem(name, item);
        if (next != u';')
            break;
    }
    return ZkValue(map.get());
}

} // namespace

// Values ------------------------------------------------------------------------------------

ZkValue ZkParser::parse(const UnicodeString& text, ZkTokenizer::TokenizerType type) {
    return parse(text, 0, type);
}

ZkValue ZkParser::parse(const UnicodeString& text, int flags, ZkTokenizer::TokenizerType type) {
    ZkTokenizer t(text, type);
    Reader reader{t, 0};
    ZkValue v = reader.value(flags);
    if (v.isNull())
        return ZkValue(text.isBogus() ? UnicodeString() : text, UnitNone);
    return v;
}

ZkValue ZkParser::parseCompound(const UnicodeString& text, ZkTokenizer::TokenizerType type) {
    return parse(text, List | Compound, type);
}

ZkValue ZkParser::parseNonNumeric(const UnicodeString& text, ZkTokenizer::TokenizerType type) {
    return parse(text, NoNumber | NoHashColor, type);
}

// Attributes --------------------------------------------------------------------------------

bool ZkParser::parseAttributes(const UnicodeString& text, std::map<ZkName, UnicodeString>& out,
                               int flags) {
    out.clear();
    bool lenient = (flags & AttributesLenient) != 0;
    int32_t length = text.length();
    int32_t i = 0;
    auto skipBlanks = [&]() {
        while (i < length) {
            char16_t c = text.charAt(i);
            if (c != 0x20 && c != 0x09 && c != 0x0A && c != 0x0D)
                break;
            ++i;
        }
    };
    // A fault: strictly the end of everything, leniently a step over the offending character.
    auto fault = [&]() {
        if (!lenient) {
            out.clear();
            return false;
        }
        if (i < length)
            i = text.moveIndex32(i, 1);
        return true;
    };
    for (;;) {
        skipBlanks();
        if (i >= length)
            return true;
        int32_t nameStart = i;
        if (ZkChar::isNCNameStartChar(text.char32At(i))) {
            i = text.moveIndex32(i, 1);
            while (i < length && ZkChar::isNCNameChar(text.char32At(i)))
                i = text.moveIndex32(i, 1);
        }
        if (i == nameStart) {
            if (!fault())
                return false;
            continue;
        }
        ZkName name(text.tempSubStringBetween(nameStart, i));
        skipBlanks();
        if (i >= length || text.charAt(i) != u'=') {
            if (!fault())
                return false;
            continue;
        }
        ++i;
        skipBlanks();
        char16_t quote = i < length ? text.charAt(i) : 0;
        if (quote != u'"' && quote != u'\'') {
            if (!fault())
                return false;
            continue;
        }
        int32_t valueStart = ++i;
        int32_t close = text.indexOf(quote, valueStart);
        if (close < 0) {
            if (!lenient) {
                out.clear();
                return false;
            }
            return true; // the unterminated value runs to the end
        }
        UnicodeString value = text.tempSubStringBetween(valueStart, close);
        if (!out.emplace(name, value).second && !(flags & AttributesRepeatable)) {
            out.clear();
            return false;
        }
        i = close + 1;
    }
}

// Colours -----------------------------------------------------------------------------------

namespace {

constexpr int kColorOk = 1;
constexpr int kColorClamped = 2;

// The arguments up to ")" (consumed), commas or a slash between them optional; false at the end
// of the text or past `capacity` arguments.
bool readArguments(ZkTokenizer& t, ZkValue* args, int capacity, int& count) {
    count = 0;
    for (;;) {
        ZkValue v = t.nextTokenValueSigned();
        if (v.isNull())
            return false;
        if (isChar(v, u')'))
            return true;
        if (count == capacity)
            return false;
        args[count++] = v;
        // Commas are optional; a slash sets off the alpha of the blank-separated form.
        if (!t.skipSeparator(u','))
            t.skipSeparator(u'/');
    }
}

// The ICC part after "icc-color(" or after the r, g, b of "rgb-icc(": a profile or model name
// and its numbers, then ")". `rgb` is the colour so far, `hasRGB` whether it was given.
detail::ColorParse parseIccArguments(ZkTokenizer& t, const ZkColor& rgb, bool hasRGB) {
    detail::ColorParse failed;
    ZkValue first = t.nextTokenValueSigned();
    UnicodeString profile;
    if (isChar(first, u'#')) {
        ZkValue name = t.nextTokenValue(false);
        if (!name.isName())
            return failed;
        profile.append(u'#').append(name.getStringValue());
    } else if (first.isName() || first.isString()) {
        profile = first.getStringValue();
    } else {
        return failed;
    }
    t.skipSeparator(u',');
    ZkValue args[6];
    int count = 0;
    if (!readArguments(t, args, 6, count))
        return failed;

    UnicodeString model = profile;
    model.toUpper(Locale::getRoot());
    detail::ColorParse result;
    result.status = kColorOk;
    bool clamped = false;
    auto number = [&](int i) -> float {
        float x = args[i].getRealValue(UnitNumber);
        if (!(x >= 0.0f && x <= 1.0f))
            clamped = true;
        return x;
    };
    auto allNumbers = [&](int from, int n) {
        for (int i = from; i < from + n; ++i)
            if (!args[i].isNumberOrPercentage())
                return false;
        return true;
    };
    ZkColor color;
    if (model == u"#CMYK") {
        if (count != 4 || !allNumbers(0, 4))
            return failed;
        float c = number(0), m = number(1), y = number(2), k = number(3);
        color = hasRGB ? ZkColor(rgb, c, m, y, k) : ZkColor(c, m, y, k);
    } else if (model == u"#GRAYSCALE") {
        if (count != 1 || !allNumbers(0, 1))
            return failed;
        float gray = number(0);
        color = hasRGB ? ZkColor(rgb, gray) : ZkColor(gray);
    } else if (model == u"#REGISTRATION" || model == u"#SEPARATION" || model == u"#SPOTCOLOR") {
        UnicodeString name;
        int from = 0;
        if (model == u"#REGISTRATION") {
            name = u"All"; // the registration colour prints on every separation
        } else {
            if (count < 1 || !(args[0].isName() || args[0].isString()))
                return failed;
            name = args[0].getStringValue();
            from = 1;
        }
        int values = count - from;
        if (values != 0 && values != 1 && values != 5)
            return failed;
        if (!allNumbers(from, values))
            return failed;
        bool hasTint = values >= 1, hasCMYK = values == 5;
        float tint = hasTint ? number(from) : 1.0f;
        if (hasCMYK) {
            float c = number(from + 1), m = number(from + 2), y = number(from + 3),
                  k = number(from + 4);
            color = hasRGB ? ZkColor(rgb, name, tint, c, m, y, k) : ZkColor(name, tint, c, m, y, k);
        } else {
            color = hasRGB ? ZkColor(rgb, name, tint) : ZkColor(name, tint);
        }
        color.adjustSeparationFlags(hasRGB, hasTint, hasCMYK, /*recompute=*/false);
        result.status |= 16 | (hasTint ? 32 : 0) | (hasCMYK ? 64 : 0);
    } else if (!profile.isEmpty()) {
        if (count > 4 || !allNumbers(0, count))
            return failed;
        float f[4] = {0, 0, 0, 0};
        for (int i = 0; i < count; ++i)
            f[i] = args[i].getRealValue(UnitNumber);
        color = ZkColor(rgb, profile, f[0], f[1], f[2], f[3]);
    } else {
        return failed;
    }
    if (color.isInvalid())
        return failed;
    if (clamped)
        result.status |= kColorClamped;
    result.value = ZkValue(color);
    return result;
}

// A following "icc-color(...)" applied to `color`; anything else is left for the caller.
detail::ColorParse applyTail(ZkTokenizer& t, const ZkColor& color, int status) {
    const char16_t* save = t.getPtr();
    bool wasPushedBack = t.isPushedBack();
    ZkValue v = t.nextTokenValue(false);
    if (v.isName() && v.getNameEnum() == ZKN_icc_color && t.skipSeparator(u'(')) {
        detail::ColorParse tail = parseIccArguments(t, color, /*hasRGB=*/true);
        if (tail.status & kColorOk)
            tail.status |= status & kColorClamped;
        return tail;
    }
    // Leave the token where it was: pushed back again, or not read at all.
    if (wasPushedBack)
        t.pushBack();
    else
        t.setPtr(save);
    return {ZkValue(color), status};
}

detail::ColorParse parseFunction(ZkTokenizer& t, ZkNameEnum function, bool allowIcc) {
    detail::ColorParse failed;
    if (function == ZKN_icc_color) {
        if (!allowIcc)
            return failed;
        return parseIccArguments(t, ZkColor(), /*hasRGB=*/false);
    }
    if (function == ZKN_rgb_icc) {
        // r, g, b are optional: "rgb-icc(#GRAYSCALE,0.5)" names its model alone.
        const char16_t* save = t.getPtr();
        ZkValue r = t.nextTokenValueSigned();
        if (!r.isNumberOrPercentage()) {
            t.setPtr(save);
            return parseIccArguments(t, ZkColor(), /*hasRGB=*/false);
        }
        t.skipSeparator(u',');
        ZkValue g = t.nextTokenValueSigned();
        t.skipSeparator(u',');
        ZkValue b = t.nextTokenValueSigned();
        t.skipSeparator(u',');
        ZkColor base;
        bool ok = base.setRGB(r, g, b, nullptr, /*strict=*/true);
        if (base.isInvalid())
            return failed;
        detail::ColorParse result = parseIccArguments(t, base, /*hasRGB=*/true);
        if (!ok && (result.status & kColorOk))
            result.status |= kColorClamped;
        return result;
    }
    ZkValue args[5];
    int count = 0;
    if (!readArguments(t, args, 5, count))
        return failed;
    // An alpha is a number or a percentage, never a name or a colour.
    bool hasAlpha = count == 5 ||
                    (count == 4 && function != ZKN_cmyk && function != ZKN_cmyka &&
                     function != ZKN_device_cmyk) ||
                    (count == 2 && function == ZKN_rgba);
    if (hasAlpha && !args[count - 1].isNumberOrPercentage())
        return failed;
    ZkColor color;
    bool ok;
    switch (function) {
    case ZKN_rgb:
    case ZKN_rgba:
        if (count == 3 || count == 4)
            ok = color.setRGB(args[0], args[1], args[2], count == 4 ? &args[3] : nullptr, true);
        else if (count == 2 && function == ZKN_rgba)
            ok = color.setRGB(args[0], ZkValue(), ZkValue(), &args[1], true);
        else
            return failed;
        if (function == ZKN_rgb && count == 3 && allowIcc && !color.isInvalid())
            return applyTail(t, color, ok ? kColorOk : kColorOk | kColorClamped);
        break;
    case ZKN_hsl:
    case ZKN_hsla:
        if (count != 3 && count != 4)
            return failed;
        ok = color.setHSL(args[0], args[1], args[2], count == 4 ? &args[3] : nullptr, true);
        break;
    case ZKN_cmyk:
    case ZKN_device_cmyk:
    case ZKN_cmyka:
        if (count != 4 && count != 5)
            return failed;
        ok = color.setCMYK(args[0], args[1], args[2], args[3], count == 5 ? &args[4] : nullptr,
                           true);
        break;
    case ZKN_system_color:
        if (count != 1 || !args[0].isName())
            return failed;
        color = ZkColor(args[0].getNameValue());
        ok = true;
        break;
    default:
        return failed;
    }
    if (color.isInvalid())
        return failed;
    return {ZkValue(color), ok ? kColorOk : kColorOk | kColorClamped};
}

} // namespace

detail::ColorParse detail::parseColorCore(ZkTokenizer& t, bool allowIcc) {
    ColorParse failed;
    ZkValue v = t.nextTokenValueSigned();
    if (v.isNull())
        return failed;
    switch (t.getTokenType()) {
    case ZkTokenizer::TokenHashColor:
    case ZkTokenizer::TokenHashColorAlpha:
        if (allowIcc)
            return applyTail(t, v.getColorValue(true), kColorOk);
        return {v, kColorOk};
    case ZkTokenizer::TokenString:
    case ZkTokenizer::TokenNumber:
        return {v, kColorOk};
    case ZkTokenizer::TokenName: {
        UnicodeString lower = t.getStr();
        lower.toLower(Locale::getRoot());
        ZkNameEnum function = ZkNameTable::getBuiltinNameEnum(lower);
        int next = t.nextToken();
        if (next == ZkTokenizer::TokenEnd)
            return {v, kColorOk};
        if (next == u'(')
            return parseFunction(t, function, allowIcc);
        t.pushBack();
        if (allowIcc) {
            ZkColor color(v.getNameValue());
            if (!color.isInvalid())
                return applyTail(t, color, kColorOk);
        }
        return failed;
    }
    default:
        return failed;
    }
}

ZkValue ZkParser::parseColor(ZkTokenizer& tokenizer, bool allowIcc) {
    return detail::parseColorCore(tokenizer, allowIcc).value;
}

ZkValue ZkParser::parseColor(const UnicodeString& text, bool allowIcc, bool* clamped) {
    ZkTokenizer t(text, ZkTokenizer::TokenizerDefault);
    detail::ColorParse result = detail::parseColorCore(t, allowIcc);
    if (!(result.status & kColorOk) || t.nextToken() != ZkTokenizer::TokenEnd)
        return ZkValue(text.isBogus() ? UnicodeString() : text, UnitNone);
    if (clamped)
        *clamped = (result.status & kColorClamped) != 0;
    return result.value;
}

} // namespace ZkCommonNS
