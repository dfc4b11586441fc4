// The bridge between ZkValue and ZkColor: a colour as a value (an Integer word, or a Compound
// of the model's parts), a value as a colour, and the colour printing and equality that the
// value code reaches through its hooks.
#include "values/colorhooks.h"
#include "zkcommon/values/color.h"
#include "zkcommon/values/parser.h"
#include "zkcommon/values/value.h"

namespace ZkCommonNS {

namespace {

// Colours reached through other colours (a name, a text, a compound's base) go this deep at
// most; no well-formed colour needs more than three.
constexpr int kMaxColorIndirection = 8;

float realItem(const ZkValue& parts, ZkNameEnum name, float dflt) {
    ZkValue v = parts.getNamedItem(ZkName(name));
    float x = v.getRealValue(UnitNumber);
    return x == x ? x : dflt;
}

// A separation keeps which of its parts the author gave in three flags beside its parts; a flag
// that is missing counts as given.
const char16_t* const kTintFlag = u"tint";

bool isFalseItem(const ZkValue& parts, ZkName name) {
    return parts.getNamedItem(name).isFalse();
}

bool hasItem(const ZkValue& parts, ZkNameEnum name) {
    const ZkNamedValueMap* map = parts.getNamedValueMap();
    return map && map->hasNamedItem(ZkName(name));
}

bool colorOf(const ZkValue& value, ZkColor& out, int depth);

bool colorOfCompound(const ZkValue& value, ZkColor& out, int depth) {
    ZkColor base;
    if (!colorOf(value.getNamedItem(ZkName()), base, depth + 1) || base.isTransparent())
        return false;
    const ZkNamedValueMap* map = value.getNamedValueMap();
    ZkNamedValueMapIterator it(map);
    ZkNamedValue model;
    while (it.hasNext()) {
        const ZkNamedValue& item = it.next();
        if (!item.getName().isEmpty()) {
            model = item;
            break;
        }
    }
    const ZkValue& parts = model;
    switch (model.getName().getEnum()) {
    case ZKN_H_SEPARATION:
    case ZKN_H_SPOTCOLOR:
        out = ZkColor(base, parts.getNamedItem(ZkName(ZKN_name)).getStringValue(),
                      realItem(parts, ZKN_value, 1.0f), realItem(parts, ZKN_cyan, 0.0f),
                      realItem(parts, ZKN_magenta, 0.0f), realItem(parts, ZKN_yellow, 0.0f),
                      realItem(parts, ZKN_black, 0.0f));
        out.adjustSeparationFlags(!isFalseItem(parts, ZkName(ZKN_rgb)),
                                  !isFalseItem(parts, ZkName(kTintFlag)),
                                  !isFalseItem(parts, ZkName(ZKN_cmyk)), /*recompute=*/false);
        break;
    case ZKN_H_CMYK: {
        float c = realItem(parts, ZKN_cyan, 0.0f), m = realItem(parts, ZKN_magenta, 0.0f),
              y = realItem(parts, ZKN_yellow, 0.0f), k = realItem(parts, ZKN_black, 0.0f);
        out = parts.getNamedItem(ZkName(ZKN_rgb)).isTrue() ? ZkColor(base, c, m, y, k)
                                                           : ZkColor(c, m, y, k);
        break;
    }
    case ZKN_H_GRAYSCALE: {
        float gray = realItem(parts, ZKN_black, 0.0f);
        out = parts.getNamedItem(ZkName(ZKN_rgb)).isTrue() ? ZkColor(base, gray) : ZkColor(gray);
        break;
    }
    case ZKN_icc_color:
        out = ZkColor(base, parts.getNamedItem(ZkName(ZKN_name)).getStringValue(),
                      realItem(parts, ZKN_cyan, 0.0f), realItem(parts, ZKN_magenta, 0.0f),
                      realItem(parts, ZKN_yellow, 0.0f), realItem(parts, ZKN_black, 0.0f));
        break;
    case ZKN_H_H_RGBA:
        out = base;
        if (hasItem(parts, ZKN_red) && hasItem(parts, ZKN_green) && hasItem(parts, ZKN_blue))
            out.setRGBex(realItem(parts, ZKN_red, 0.0f), realItem(parts, ZKN_green, 0.0f),
                         realItem(parts, ZKN_blue, 0.0f), /*strict=*/false);
        break;
    case ZKN_H_HSL:
        out = base;
        out.setHSL(realItem(parts, ZKN_hue, 0.0f), realItem(parts, ZKN_saturation, 0.0f),
                   realItem(parts, ZKN_lightness, 0.0f), /*strict=*/false);
        break;
    default:
        out = base;
        return true;
    }
    if (hasItem(parts, ZKN_alpha))
        out.setAlpha(realItem(parts, ZKN_alpha, 1.0f), /*strict=*/false);
    return true;
}

bool colorOf(const ZkValue& value, ZkColor& out, int depth) {
    if (depth > kMaxColorIndirection)
        return false;
    ZkUnitType unit = value.getUnitType();
    if (value.isName() && unit == UnitName) {
        out = ZkColor(value.getNameValue());
        return !out.isInvalid();
    }
    if (unit == UnitColor) {
        if (value.isInteger()) {
            out = ZkColor(static_cast<unsigned int>(value.getIntegerValue(0)));
            return true;
        }
        if (value.isCompound())
            return colorOfCompound(value, out, depth);
        return false;
    }
    if (value.isName() || value.isString()) {
        ZkValue parsed = ZkParser::parseColor(value.getStringValue(), /*allowIcc=*/true, nullptr);
        if (parsed.isColor() || (parsed.isName() && parsed.getUnitType() == UnitName))
            return colorOf(parsed, out, depth + 1);
    }
    return false;
}

void setReal(ZkValue& parts, ZkNameEnum name, float x) {
    parts.setNamedItem(ZkName(name), ZkValue(x, UnitNumber));
}

UnicodeString colorValueText(const ZkValue& value) {
    return value.getColorValue(true).toString(false, false, false);
}

bool colorValuesEqual(const ZkValue& a, const ZkValue& b) {
    return a.getColorValue(true) == b.getColorValue(true);
}

const bool s_hooksInstalled = [] {
    detail::setColorValueHooks({&colorValueText, &colorValuesEqual});
    return true;
}();

} // namespace

ZkValue::ZkValue(const ZkColor& color) : ZkValue(static_cast<int>(static_cast<unsigned>(color))) {
    setUnitType(UnitColor);
    if (color.isRGB() && !color.isRGBex() && !color.hasAlpha())
        return;
    ZkValue parts;
    ZkNameEnum key;
    if (color.isSeparation()) {
        key = ZKN_H_SEPARATION;
        parts.setNamedItem(ZkName(ZKN_name), ZkValue(color.getColorName(), UnitNone));
        setReal(parts, ZKN_value, color.getSeparationTint());
        setReal(parts, ZKN_cyan, color.getSeparationC());
        setReal(parts, ZKN_magenta, color.getSeparationM());
        setReal(parts, ZKN_yellow, color.getSeparationY());
        setReal(parts, ZKN_black, color.getSeparationK());
        if (!color.hasSeparationRGB())
            parts.setNamedItem(ZkName(ZKN_rgb), ZkValue(false));
        if (!color.hasSeparationTint())
            parts.setNamedItem(ZkName(kTintFlag), ZkValue(false));
        if (!color.hasSeparationCMYK())
            parts.setNamedItem(ZkName(ZKN_cmyk), ZkValue(false));
    } else if (color.isICCColorProfile()) {
        key = ZKN_icc_color;
        parts.setNamedItem(ZkName(ZKN_name), ZkValue(color.getICCColorProfileName()));
        setReal(parts, ZKN_cyan, color.getICCValue(0));
        setReal(parts, ZKN_magenta, color.getICCValue(1));
        setReal(parts, ZKN_yellow, color.getICCValue(2));
        setReal(parts, ZKN_black, color.getICCValue(3));
    } else if (color.isHSL()) {
        key = ZKN_H_HSL;
        setReal(parts, ZKN_hue, color.getH());
        setReal(parts, ZKN_saturation, color.getS());
        setReal(parts, ZKN_lightness, color.getL());
    } else if (color.isGrayscale()) {
        key = ZKN_H_GRAYSCALE;
        setReal(parts, ZKN_black, color.getGrayscale());
    } else if (color.isCMYK()) {
        key = ZKN_H_CMYK;
        setReal(parts, ZKN_cyan, color.getC());
        setReal(parts, ZKN_magenta, color.getM());
        setReal(parts, ZKN_yellow, color.getY());
        setReal(parts, ZKN_black, color.getK());
    } else {
        key = ZKN_H_H_RGBA;
        if (color.isRGBex()) {
            setReal(parts, ZKN_red, color.getRex());
            setReal(parts, ZKN_green, color.getGex());
            setReal(parts, ZKN_blue, color.getBex());
        }
    }
    if (color.hasAlpha())
        setReal(parts, ZKN_alpha, color.getAlpha());
    if (color.isGrayscale())
        parts.setNamedItem(ZkName(ZKN_rgb), ZkValue(color.hasGrayscaleRGB()));
    else if (color.isCMYK())
        parts.setNamedItem(ZkName(ZKN_rgb), ZkValue(color.hasCMYKRGB()));
    if (parts.isNull()) // ##RGBA with alpha only
        parts.makeCompound();
    makeCompound();
    setNamedItem(ZkName(key), parts);
    setUnitType(UnitColor);
}

ZkColor ZkValue::getColorValue() const {
    return getColorValue(false);
}

ZkColor ZkValue::getColorValue(bool invalidOnFail) const {
    ZkColor color;
    if (colorOf(*this, color, 0))
        return color;
    return invalidOnFail ? ZkColor::getInvalidColor() : ZkColor::getTransparent();
}

ZkColor::ZkColor(const ZkValue& value) : ZkColor(value.getColorValue()) {}

} // namespace ZkCommonNS
