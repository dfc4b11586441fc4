// ZkParser: the small languages of link targets: URI fragment parameters, PDF and spreadsheet
// open parameters, internal destinations, xlink:href and destination types.
#include "zkcommon/core/char.h"
#include "zkcommon/io/uri.h"
#include "zkcommon/values/parser.h"

#include <algorithm>

namespace ZkCommonNS {

namespace {

UnicodeString lowered(const UnicodeString& text) {
    UnicodeString lower = text;
    return lower.toLower(Locale::getRoot());
}

// A number of the open parameters: its length in points when it is one, else its plain value,
// else 0.
float numberOf(const UnicodeString& text) {
    ZkValue v = ZkParser::parse(UnicodeString(text).trim());
    ZkLength length = v.getLengthValue(false);
    if (!length.isAuto())
        return length.getPoints();
    float x = v.getRealValue(UnitNumber);
    return x == x ? x : 0.0f;
}

int pageOf(const UnicodeString& text) {
    float x = numberOf(text);
    if (!(x >= -2147483648.0f && x < 2147483648.0f))
        return 0;
    return static_cast<int>(x);
}

// The comma-separated parts of a parameter value.
std::vector<UnicodeString> commaItems(const UnicodeString& text) {
    std::vector<UnicodeString> items;
    int32_t from = 0;
    for (;;) {
        int32_t comma = text.indexOf(u',', from);
        int32_t to = comma < 0 ? text.length() : comma;
        items.push_back(UnicodeString(text, from, to - from).trim());
        if (comma < 0)
            return items;
        from = comma + 1;
    }
}

void setName(ZkValue& result, ZkNameEnum key, ZkNameEnum name) {
    result.setNamedItem(ZkName(key), ZkValue(name));
}

void setLength(ZkValue& result, ZkNameEnum key, float points) {
    result.setNamedItem(ZkName(key), ZkValue(ZkLength(points)));
}

// The engine of the PDF and xlink open parameters: "page=...&view=...&zoom=..." applied to a
// copy of `base`. Some keys end the reading and answer with the base as it came in plus that key.
ZkValue openParameters(const UnicodeString& fragment, const ZkValue& base, int defaultPage) {
    ZkValue result = base.clone();
    bool pageSet = false;
    ZkTokenizer t(fragment, ZkTokenizer::TokenizerDefault);
    for (;;) {
        int itemStart = t.getOffset();
        UnicodeString item = t.nextSeparatedValue(u'&', false);
        if (t.getTokenType() == ZkTokenizer::TokenEnd)
            break;
        int32_t eq = item.indexOf(u'=');
        if (eq <= 0)
            continue;
        UnicodeString key = lowered(UnicodeString(item, 0, eq).trim());
        UnicodeString value = UnicodeString(item, eq + 1).trim();
        ZkNameEnum known = ZkNameTable::getBuiltinNameEnum(key);
        switch (known) {
        case ZKN_page: {
            if (value.caseCompare(u"all", 3, U_FOLD_CASE_DEFAULT) == 0) {
                result.setNamedItem(ZkName(ZKN_page), ZkValue(1));
                if (result.isCompound())
                    result.removeNamedItem(ZkName(ZKN_last_page), /*collapse=*/false);
                pageSet = true;
                break;
            }
            int32_t hyphen = item.indexOf(u'-');
            if (hyphen < 0) {
                int n = pageOf(value);
                if (n >= 1) {
                    result.setNamedItem(ZkName(ZKN_page), ZkValue(n));
                    result.setNamedItem(ZkName(ZKN_last_page), ZkValue(n));
                    pageSet = true;
                }
                break;
            }
            int a = pageOf(UnicodeString(item, eq + 1, hyphen - eq - 1));
            int b = pageOf(UnicodeString(item, hyphen + 1));
            if (a > 0) {
                result.setNamedItem(ZkName(ZKN_page), ZkValue(a));
                pageSet = true;
            }
            if (b >= 1)
                result.setNamedItem(ZkName(ZKN_last_page), ZkValue(std::max(a, b)));
            break;
        }
        case ZKN_javascript: {
            // The script runs to the end of the text: a "&" inside it does not end it.
            int32_t scriptEq = fragment.indexOf(u'=', itemStart);
            ZkValue answer = base.clone();
            answer.setNamedItem(ZkName(ZKN_javascript),
                                ZkValue(UnicodeString(fragment, scriptEq + 1).trim(), UnitNone));
            return answer;
        }
        case ZKN_nameddest:
            if (!value.isEmpty()) {
                ZkValue answer = base.clone();
                answer.setNamedItem(ZkName(ZKN_nameddest), ZkValue(value, UnitNone));
                return answer;
            }
            break;
        case ZKN_view: {
            std::vector<UnicodeString> parts = commaItems(value);
            ZkNameEnum view = ZkNameTable::getBuiltinNameEnum(lowered(parts[0]));
            if (view != ZKN_fit && view != ZKN_fitb && view != ZKN_fitbh && view != ZKN_fith &&
                view != ZKN_fitbv && view != ZKN_fitv)
                break;
            setName(result, ZKN_view, view);
            if (parts.size() > 1) {
                float n = numberOf(parts[1]);
                if (view == ZKN_fith || view == ZKN_fitbh)
                    setLength(result, ZKN_top, n);
                else if (view == ZKN_fitv || view == ZKN_fitbv)
                    setLength(result, ZKN_left, n);
            }
            break;
        }
        case ZKN_viewrect: {
            std::vector<UnicodeString> parts = commaItems(value);
            if (parts.size() < 4)
                break;
            float w = numberOf(parts[2]), h = numberOf(parts[3]);
            if (!(w > 0.0f && h > 0.0f))
                break;
            setName(result, ZKN_view, ZKN_viewrect);
            setLength(result, ZKN_left, numberOf(parts[0]));
            setLength(result, ZKN_top, numberOf(parts[1]));
            setLength(result, ZKN_width, w);
            setLength(result, ZKN_height, h);
            break;
        }
        case ZKN_zoom: {
            std::vector<UnicodeString> parts = commaItems(value);
            float s = numberOf(parts[0]);
            result.setNamedItem(ZkName(ZKN_zoom), s > 0.0f ? ZkValue(s, UnitNumber) : ZkValue(0));
            if (parts.size() > 1 && !parts[1].isEmpty())
                setLength(result, ZKN_left, numberOf(parts[1]));
            if (parts.size() > 2 && !parts[2].isEmpty())
                setLength(result, ZKN_top, numberOf(parts[2]));
            setName(result, ZKN_view, ZKN_xyz);
            break;
        }
        default: {
            UnicodeString first = commaItems(value)[0];
            if (!first.isEmpty()) {
                ZkValue answer = base.clone();
                answer.setNamedItem(ZkName(key), ZkValue(first, UnitNone));
                return answer;
            }
            break;
        }
        }
    }
    if (!pageSet && defaultPage >= 1) {
        result.setNamedItem(ZkName(ZKN_page), ZkValue(defaultPage));
        result.setNamedItem(ZkName(ZKN_last_page), ZkValue(defaultPage));
    }
    return result;
}

// A page and a view for a link that names no destination.
void addDefaults(ZkValue& result) {
    if (!result.getNamedItem(ZkName(ZKN_nameddest)).isEmpty())
        return;
    if (result.getNamedItem(ZkName(ZKN_page)).isNull())
        result.setNamedItem(ZkName(ZKN_page), ZkValue(1));
    if (result.getNamedItem(ZkName(ZKN_view)).isNull())
        setName(result, ZKN_view, ZKN_xyz);
}

// The split items "key=value" of a fragment, keys lowered.
template <class Visit> void forEachParameter(const UnicodeString& fragment, Visit visit) {
    ZkTokenizer t(fragment, ZkTokenizer::TokenizerDefault);
    for (;;) {
        UnicodeString item = t.nextSeparatedValue(u'&', false);
        if (t.getTokenType() == ZkTokenizer::TokenEnd)
            return;
        int32_t eq = item.indexOf(u'=');
        if (eq > 0)
            visit(UnicodeString(item, 0, eq), UnicodeString(item, eq + 1));
    }
}

} // namespace

ZkValue ZkParser::parseUriFragmentParameters(const UnicodeString& text, bool lowerKeys) {
    int32_t hash = text.indexOf(u'#');
    if (hash < 0)
        return ZkValue(text, UnitNone);
    ZkValue result;
    if (hash > 0)
        result = ZkValue(UnicodeString(text, 0, hash), UnitNone);
    forEachParameter(UnicodeString(text, hash + 1), [&](const UnicodeString& rawKey,
                                                        const UnicodeString& rawValue) {
        UnicodeString key = ZkUri::unescape(rawKey).trim();
        if (lowerKeys)
            key.toLower(Locale::getRoot());
        result.setNamedItem(ZkName(key), ZkValue(ZkUri::unescape(rawValue).trim(), UnitNone));
    });
    return result;
}

ZkValue ZkParser::parsePDFOpenParameters(const UnicodeString& text, bool internal) {
    int32_t hash = text.indexOf(u'#');
    if (hash == 0)
        return ZkValue();
    ZkValue result;
    if (hash < 0) {
        if (internal)
            return ZkValue();
        result.setNamedItem(ZkName(ZKN_uri), ZkValue(text, UnitUri));
    } else {
        ZkValue base;
        base.setNamedItem(ZkName(ZKN_uri), ZkValue(UnicodeString(text, 0, hash), UnitUri));
        result = openParameters(UnicodeString(text, hash + 1), base, 0);
        if (internal && result.getNamedItem(ZkName(ZKN_page)).isNull())
            return ZkValue();
    }
    addDefaults(result);
    return result;
}

ZkValue ZkParser::parseXlinkHref(const UnicodeString& text) {
    if (text.isEmpty())
        return ZkValue();
    int32_t hash = text.indexOf(u'#');
    ZkValue result;
    if (hash != 0)
        result.setNamedItem(ZkName(ZKN_uri),
                            ZkValue(hash < 0 ? text : UnicodeString(text, 0, hash), UnitUri));
    if (hash >= 0) {
        UnicodeString fragment(text, hash + 1);
        ZkTokenizer t(fragment, ZkTokenizer::TokenizerDefault);
        ZkValue first = t.nextTokenValue(false);
        if (hash == 0 && first.isInteger() && t.getTokenType() == ZkTokenizer::TokenNumber) {
            // "#12ab": digits that start a name are still a name.
            const char16_t* p = t.getPtr();
            while (p < t.getLimit() && ZkChar::isNCNameChar(*p))
                ++p;
            result.setNamedItem(
                ZkName(ZKN_nameddest),
                ZkValue(UnicodeString(t.getStart(), static_cast<int32_t>(p - t.getStart())),
                        UnitNone));
        } else if (first.isName()) {
            if (t.scanSeparator(u'='))
                result = openParameters(fragment, result, 1);
            else
                result.setNamedItem(ZkName(ZKN_nameddest), ZkValue(fragment, UnitNone));
        }
    }
    addDefaults(result);
    return result;
}

ZkValue ZkParser::parseInternalDestination(const UnicodeString& text, int defaultPage) {
    UnicodeString trimmed = UnicodeString(text).trim();
    int32_t hash = trimmed.indexOf(u'#');
    UnicodeString head = hash < 0 ? trimmed : UnicodeString(trimmed, 0, hash);
    UnicodeString fragment = hash < 0 ? UnicodeString() : UnicodeString(trimmed, hash + 1);
    ZkValue result;
    bool pageFromHead = false;
    if (!trimmed.isEmpty() && trimmed.charAt(0) >= u'0' && trimmed.charAt(0) <= u'9') {
        ZkValue page = parse(head);
        if (page.isInteger()) {
            result = page;
            result.setNamedItem(ZkName(ZKN_page), page);
            pageFromHead = true;
        }
    } else if (hash == 0 && parse(fragment).isInteger()) {
        head = fragment; // "#12": the digits name a destination
        fragment.remove();
    }
    if (!pageFromHead && !head.isEmpty())
        result.setNamedItem(ZkName(ZKN_nameddest), ZkValue(ZkName(head)));
    if (!fragment.isEmpty())
        result = openParameters(fragment, result, defaultPage);
    return result;
}

ZkValue ZkParser::parseDestinationType(const UnicodeString& text) {
    ZkTokenizer t(text, ZkTokenizer::TokenizerDefault);
    ZkValue first = parse(lowered(t.nextSeparatedValue(u' ', false)));
    if (first.isNumberOrPercentage() && first.getRealValue(UnitNone) > 0.0f) {
        ZkValue result(ZKN_xyz_top);
        result.setNamedItem(ZkName(ZKN_zoom), ZkValue(first.getRealValue(UnitNone), UnitNumber));
        return result;
    }
    ZkNameEnum type = first.getNameEnum();
    ZkValue result(type);
    auto coordinate = [&](ZkNameEnum key) {
        ZkValue v = t.nextTokenValueSigned(/*exponent=*/false);
        if (v.isAbsoluteLength())
            result.setNamedItem(ZkName(key), v);
    };
    switch (type) {
    case ZKN_xyz:
    case ZKN_xyz_left:
    case ZKN_xyz_left_top:
    case ZKN_xyz_top: {
        ZkValue zoom = parse(t.nextSeparatedValue(u' ', false));
        if (zoom.isNumberOrPercentage() && zoom.getRealValue(UnitNone) > 0.0f)
            result.setNamedItem(ZkName(ZKN_zoom), ZkValue(zoom.getRealValue(UnitNone), UnitNumber));
        if (type == ZKN_xyz_left || type == ZKN_xyz_left_top)
            coordinate(ZKN_left);
        if (type == ZKN_xyz_top || type == ZKN_xyz_left_top)
            coordinate(ZKN_top);
        return result;
    }
    case ZKN_fit:
    case ZKN_fitb:
        return result;
    case ZKN_fitv:
    case ZKN_fitbv:
        coordinate(ZKN_left);
        return result;
    case ZKN_fith:
    case ZKN_fitbh:
        coordinate(ZKN_top);
        return result;
    case ZKN_fitr:
        coordinate(ZKN_left);
        coordinate(ZKN_bottom);
        coordinate(ZKN_right);
        coordinate(ZKN_top);
        return result;
    default:
        return ZkValue(ZKN_xyz_top);
    }
}

ZkValue ZkParser::parseExcelOpenParameters(const UnicodeString& text) {
    int32_t hash = text.indexOf(u'#');
    if (hash < 0)
        return ZkValue();
    ZkValue result;
    forEachParameter(UnicodeString(text, hash + 1), [&](const UnicodeString& rawKey,
                                                        const UnicodeString& rawValue) {
        ZkNameEnum key = ZkNameTable::getBuiltinNameEnum(lowered(UnicodeString(rawKey).trim()));
        if (key != ZKN_sheet && key != ZKN_chart)
            return;
        ZkValue v = parse(UnicodeString(rawValue).trim());
        if (v.isInteger() && v.isNumber() && v.getIntegerValue(0) >= 0)
            result.setNamedItem(ZkName(key), v);
    });
    return result;
}

} // namespace ZkCommonNS
