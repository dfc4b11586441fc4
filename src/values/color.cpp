// ZkColor: construction in every model, the conversions between models, keyword and system
// colour look-up, printing and equality. The bridge to ZkValue is in colorvalue.cpp.
#include "zkcommon/values/color.h"

#include "values/syscolor.h"
#include "zkcommon/text/util.h"
#include "zkcommon/values/value.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace ZkCommonNS {

namespace {

struct ColorKeyword {
    ZkNameEnum name;
    uint32_t word;
};
struct SystemColorName {
    ZkNameEnum name;
    int slot;
};

#include "colortables.inc"

constexpr float kNoAlpha = FLT_MAX;

// The words above 0x00FFFFFF that stand for something rather than for nothing.
bool isSpecialWord(uint32_t word) noexcept {
    return word == ZkColor::kTransparent || word == ZkColor::kInvert ||
           word == ZkColor::kCurrentColor;
}

// Clamps to 0..1 and tells whether it had to (NaN counts as out of range).
float clampUnit(float x, bool& clamped) noexcept {
    if (x >= 0.0f && x <= 1.0f)
        return x;
    clamped = true;
    return x > 1.0f ? 1.0f : 0.0f;
}

// The fraction of a number or percentage: a percentage counts over 100.
float fractionOf(const ZkValue& v) noexcept {
    return v.getRealValue(UnitNumber);
}

float hslChannel(float p, float q, float t) noexcept {
    if (t < 0.0f)
        t += 1.0f;
    else if (t > 1.0f)
        t -= 1.0f;
    float x;
    if (t < 0.16666667f)
        x = (q - p) * t * 6.0f + p;
    else if (t < 0.5f)
        x = q;
    else if (t < 0.6666667f)
        x = (q - p) * (0.6666667f - t) * 6.0f + p;
    else
        x = p;
    return ZkColor::zeroone(x);
}

UnicodeString num(float x) {
    return ZkUtil::toString(static_cast<double>(x));
}

UnicodeString hexWord(uint32_t word) {
    UnicodeString text(u'#');
    text.append(ZkUtil::toHexString(static_cast<int>(word & 0xFFFFFF), 6));
    return text;
}

// "%u,%u,%u," of the word.
void appendChannels(UnicodeString& text, uint32_t word) {
    text.append(ZkUtil::toString(ZkColor::getR(word)))
        .append(u',')
        .append(ZkUtil::toString(ZkColor::getG(word)))
        .append(u',')
        .append(ZkUtil::toString(ZkColor::getB(word)))
        .append(u',');
}

void appendFloats(UnicodeString& text, const float* f, int count) {
    for (int i = 0; i < count; ++i)
        text.append(u',').append(num(f[i]));
}

const ColorKeyword* findKeyword(ZkNameEnum name) noexcept {
    const ColorKeyword* end = kColorKeywords + sizeof(kColorKeywords) / sizeof(kColorKeywords[0]);
    const ColorKeyword* it = std::lower_bound(
        kColorKeywords, end, name, [](const ColorKeyword& k, ZkNameEnum n) { return k.name < n; });
    return it != end && it->name == name ? it : nullptr;
}

int findSystemSlot(ZkNameEnum name) noexcept {
    const SystemColorName* end =
        kSystemColorNames + sizeof(kSystemColorNames) / sizeof(kSystemColorNames[0]);
    const SystemColorName* it =
        std::lower_bound(kSystemColorNames, end, name,
                         [](const SystemColorName& s, ZkNameEnum n) { return s.name < n; });
    return it != end && it->name == name ? it->slot : -1;
}

ZkNameEnum findNameOfWord(uint32_t word) noexcept {
    const ColorKeyword* end =
        kColorNamesByWord + sizeof(kColorNamesByWord) / sizeof(kColorNamesByWord[0]);
    const ColorKeyword* it = std::lower_bound(
        kColorNamesByWord, end, word, [](const ColorKeyword& k, uint32_t w) { return k.word < w; });
    return it != end && it->word == word ? it->name : ZKN_EMPTY;
}

} // namespace

// Construction ------------------------------------------------------------------------------

ZkColor::ZkColor() noexcept : ZkColor(0u) {}

ZkColor::ZkColor(unsigned int word) noexcept
    : m_rgb(word), m_alpha(kNoAlpha), m_f{0, 0, 0, 0, 0}, m_flags{0, 0, 0} {}

ZkColor::ZkColor(int r, int g, int b) noexcept : ZkColor(getRGB(r, g, b)) {}

ZkColor::ZkColor(float r, float g, float b) noexcept
    : ZkColor(getRGB(round255(r), round255(g), round255(b))) {}

ZkColor::ZkColor(float gray) noexcept : ZkColor(0u) {
    gray = zeroone(gray);
    int g = round255(gray);
    m_rgb = getRGB(g, g, g);
    m_profile = ZKN_H_GRAYSCALE;
    m_f[0] = gray;
}

ZkColor::ZkColor(float c, float m, float y, float k) noexcept : ZkColor(0u) {
    m_rgb = cmyk2rgb(c, m, y, k).m_rgb;
    m_profile = ZKN_H_CMYK;
    m_f[0] = zeroone(c);
    m_f[1] = zeroone(m);
    m_f[2] = zeroone(y);
    m_f[3] = zeroone(k);
}

ZkColor::ZkColor(const ZkColor& base, float gray) noexcept : ZkColor(base.m_rgb) {
    m_profile = ZKN_H_GRAYSCALE;
    m_f[0] = zeroone(gray);
    m_flags[0] = 1;
}

ZkColor::ZkColor(const ZkColor& base, float c, float m, float y, float k) noexcept
    : ZkColor(base.m_rgb) {
    m_alpha = base.m_alpha;
    m_profile = ZKN_H_CMYK;
    m_f[0] = zeroone(c);
    m_f[1] = zeroone(m);
    m_f[2] = zeroone(y);
    m_f[3] = zeroone(k);
    m_flags[0] = 1;
}

ZkColor::ZkColor(const UnicodeString& name, float tint) : ZkColor(0u) {
    m_profile = ZKN_H_SEPARATION;
    m_name = name.isEmpty() ? UnicodeString(u"All") : name;
    m_f[0] = zeroone(tint);
    m_f[1] = m_f[2] = m_f[3] = m_f[4] = 1.0f;
    int g = round255(1.0f - m_f[0]);
    m_rgb = getRGB(g, g, g);
    m_flags[1] = 1;
}

ZkColor::ZkColor(const UnicodeString& name, float tint, float c, float m, float y, float k)
    : ZkColor(name, tint) {
    m_rgb = cmyk2rgb(c, m, y, k).m_rgb;
    m_f[1] = zeroone(c);
    m_f[2] = zeroone(m);
    m_f[3] = zeroone(y);
    m_f[4] = zeroone(k);
    m_flags[2] = 1;
}

ZkColor::ZkColor(const ZkColor& base, const UnicodeString& name, float tint) : ZkColor(name, tint) {
    m_rgb = base.m_rgb;
    m_alpha = base.m_alpha;
    ZkColor cmyk = rgb2cmyk(base.m_rgb);
    std::copy(cmyk.m_f, cmyk.m_f + 4, m_f + 1);
    m_flags[0] = 1;
}

ZkColor::ZkColor(const ZkColor& base, const UnicodeString& name, float tint, float c, float m,
                 float y, float k)
    : ZkColor(name, tint) {
    m_rgb = base.m_rgb;
    m_alpha = base.m_alpha;
    m_f[1] = zeroone(c);
    m_f[2] = zeroone(m);
    m_f[3] = zeroone(y);
    m_f[4] = zeroone(k);
    m_flags[0] = m_flags[1] = m_flags[2] = 1;
}

ZkColor::ZkColor(const ZkColor& base, const UnicodeString& profile, float a, float b, float c,
                 float d)
    : ZkColor(base.m_rgb) {
    m_alpha = base.m_alpha;
    m_profile = ZKN_icc_color;
    m_name = profile;
    m_f[0] = a;
    m_f[1] = b;
    m_f[2] = c;
    m_f[3] = d;
}

ZkColor::ZkColor(ZkName name) : ZkColor(kInvalid) {
    // A name is lowered at most once: the lowered name is lower case, so the second round ends.
    for (int round = 0; round < 2; ++round) {
        ZkNameEnum e = name.getEnum();
        if (const ColorKeyword* keyword = findKeyword(e)) {
            m_rgb = keyword->word;
            return;
        }
        switch (e) {
        case ZKN_transparent:
            m_rgb = kTransparent;
            return;
        case ZKN_invert:
            m_rgb = kInvert;
            return;
        case ZKN_currentcolor:
            m_rgb = kCurrentColor;
            return;
        case ZKN_k100:
            *this = ZkColor(0.0f, 0.0f, 0.0f, 1.0f);
            return;
        default:
            break;
        }
        int slot = findSystemSlot(e);
        if (slot >= 0) {
            m_rgb = reverseRGB(detail::getSystemColorBGR(slot));
            return;
        }
        if (name.isEmpty() || name.isLowerName())
            return;
        name = name.lowerName();
    }
}

// Helpers -----------------------------------------------------------------------------------

int ZkColor::round255(float x) noexcept {
    if (!(x > 0.0f))
        return 0;
    if (x >= 1.0f)
        return 255;
    return static_cast<int>(x * 255.0f + 0.5f);
}

float ZkColor::zeroone(float x) noexcept {
    if (!(x > 0.0f))
        return 0.0f;
    return x > 1.0f ? 1.0f : x;
}

ZkColor ZkColor::cmyk2rgb(float c, float m, float y, float k) noexcept {
    float r = 1.0f - std::min(1.0f, (1.0f - k) * c + k);
    float g = 1.0f - std::min(1.0f, (1.0f - k) * m + k);
    float b = 1.0f - std::min(1.0f, (1.0f - k) * y + k);
    return ZkColor(r, g, b);
}

ZkColor ZkColor::hsl2rgb(float h, float s, float l) noexcept {
    float hh = h / 360.0f;
    float q = l <= 0.5f ? (s + 1.0f) * l : s + l - s * l;
    float p = 2.0f * l - q;
    return ZkColor(hslChannel(p, q, hh + 0.33333334f), hslChannel(p, q, hh),
                   hslChannel(p, q, hh - 0.33333334f));
}

ZkColor ZkColor::rgb2cmyk(unsigned int word) noexcept {
    float c = 1.0f - static_cast<float>(getR(word)) / 255.0f;
    float m = 1.0f - static_cast<float>(getG(word)) / 255.0f;
    float y = 1.0f - static_cast<float>(getB(word)) / 255.0f;
    float k = std::min(c, std::min(m, y));
    if (k >= 1.0f)
        return ZkColor(0.0f, 0.0f, 0.0f, k);
    return ZkColor((c - k) / (1.0f - k), (m - k) / (1.0f - k), (y - k) / (1.0f - k), k);
}

ZkColor ZkColor::rgb2cmyk(unsigned int word, float sub, float k) noexcept {
    return ZkColor(1.0f - static_cast<float>(getR(word)) / 255.0f - sub,
                   1.0f - static_cast<float>(getG(word)) / 255.0f - sub,
                   1.0f - static_cast<float>(getB(word)) / 255.0f - sub, k);
}

ZkColor ZkColor::rgb2gray(unsigned int word) noexcept {
    float gray = static_cast<float>(getR(word)) * 0.3f / 255.0f +
                 static_cast<float>(getG(word)) * 0.59f / 255.0f +
                 static_cast<float>(getB(word)) * 0.11f / 255.0f;
    return ZkColor(gray);
}

bool ZkColor::isInvalidColorNameValue(const ZkValue& value) {
    if (!value.isName() || ZkName::isInheritEtc(value.getNameValue()))
        return false;
    return ZkColor(value.getNameValue()).isInvalid();
}

// Queries -----------------------------------------------------------------------------------

float ZkColor::getRex() const noexcept {
    return isRGBex() ? m_f[0] : static_cast<float>(getR()) / 255.0f;
}
float ZkColor::getGex() const noexcept {
    return isRGBex() ? m_f[1] : static_cast<float>(getG()) / 255.0f;
}
float ZkColor::getBex() const noexcept {
    return isRGBex() ? m_f[2] : static_cast<float>(getB()) / 255.0f;
}

ZkName ZkColor::getICCColorProfileName() const {
    return isICCColorProfile() ? ZkName(m_name) : ZkName();
}

bool ZkColor::isInvalid() const noexcept {
    if (m_rgb >= 0x01000000u && !isSpecialWord(m_rgb))
        return true;
    if (isICCColorProfile() && m_name.startsWith(u"#")) {
        static const char16_t* const kModels[] = {u"#CMYK", u"#GRAYSCALE", u"#REGISTRATION",
                                                  u"#SEPARATION", u"#SPOTCOLOR"};
        for (const char16_t* model : kModels)
            if (m_name == model)
                return false;
        return true;
    }
    return false;
}

bool ZkColor::isK100() const noexcept {
    return isCMYK() && m_f[0] == 0.0f && m_f[1] == 0.0f && m_f[2] == 0.0f && m_f[3] == 1.0f &&
           !(hasAlpha() && m_alpha < 1.0f);
}

bool ZkColor::isRegistrationName() const {
    return m_name.caseCompare(u"all", 3, U_FOLD_CASE_DEFAULT) == 0;
}

UnicodeString ZkColor::getColorName(bool cssOnly) const {
    switch (m_rgb) {
    case kTransparent:
        return u"transparent";
    case kInvert:
        return u"invert";
    case kCurrentColor:
        return u"currentColor";
    default:
        break;
    }
    if (hasAlpha())
        return UnicodeString();
    if (isRGB() && !isRGBex() && m_rgb <= 0xFFFFFF) {
        ZkNameEnum name = findNameOfWord(m_rgb);
        if (name != ZKN_EMPTY)
            return ZkName(name).toString();
    }
    if (!cssOnly && isK100())
        return u"k100";
    return UnicodeString();
}

// Mutators ----------------------------------------------------------------------------------

void ZkColor::setModel(ZkName profile) noexcept {
    m_profile = profile;
    m_name.remove();
    std::fill(m_f, m_f + 5, 0.0f);
    std::fill(m_flags, m_flags + 3, uint8_t(0));
}

void ZkColor::clearAlpha() noexcept {
    m_alpha = kNoAlpha;
}

bool ZkColor::setAlpha(float a, bool strict) {
    if (a == kNoAlpha) {
        m_alpha = kNoAlpha;
        return true;
    }
    bool clamped = false;
    m_alpha = clampUnit(a, clamped);
    return !(clamped && strict);
}

bool ZkColor::setAlpha(int a, bool strict) {
    bool clamped = a < 0 || a > 255;
    int v = std::max(0, std::min(255, a));
    m_alpha = static_cast<float>(v) / 255.0f;
    return !(clamped && strict);
}

bool ZkColor::setHSL(float h, float s, float l, bool strict) {
    bool clamped = false;
    h = std::fmod(std::fmod(h, 360.0f) + 360.0f, 360.0f);
    if (h != h)
        h = 0.0f; // an infinite or NaN hue has no angle: red, as for 0
    s = clampUnit(s, clamped);
    l = clampUnit(l, clamped);
    float alpha = m_alpha;
    *this = hsl2rgb(h, s, l);
    m_alpha = alpha;
    m_profile = ZKN_H_HSL;
    m_f[0] = h;
    m_f[1] = s;
    m_f[2] = l;
    return !(clamped && strict);
}

bool ZkColor::setRGBex(float r, float g, float b, bool strict) {
    bool clamped = false;
    auto channel = [&clamped](float x) {
        float scaled = x * 255.0f + 0.5f;
        if (!(scaled >= 0.0f)) { // below 0, or NaN
            clamped = true;
            return 0;
        }
        if (scaled >= 256.0f) {
            clamped = true;
            return 255;
        }
        return std::min(255, static_cast<int>(scaled));
    };
    int ri = channel(r), gi = channel(g), bi = channel(b);
    setModel(ZkName());
    m_rgb = getRGB(ri, gi, bi);
    m_f[0] = r;
    m_f[1] = g;
    m_f[2] = b;
    m_flags[0] = 1;
    return !(clamped && strict);
}

bool ZkColor::applyAlpha(const ZkValue* a, bool strict) {
    if (!a)
        return true;
    if (!a->isNumberOrPercentage())
        return false;
    return setAlpha(a->getRealValue(UnitNumber), strict);
}

bool ZkColor::setRGB(const ZkValue& r, const ZkValue& g, const ZkValue& b, const ZkValue* a,
                     bool strict) {
    bool ok = true;
    if (r.isNumber() && g.isNumber() && b.isNumber()) {
        bool clamped = false;
        auto channel = [&clamped](const ZkValue& v) {
            int x = v.getIntegerValue(0);
            if (x < 0 || x > 255)
                clamped = true;
            return std::max(0, std::min(255, x));
        };
        int ri = channel(r), gi = channel(g), bi = channel(b);
        *this = ZkColor(ri, gi, bi);
        ok = !(clamped && strict);
    } else if (r.isPercentage() && g.isPercentage() && b.isPercentage()) {
        *this = ZkColor();
        ok = setRGBex(fractionOf(r), fractionOf(g), fractionOf(b), strict);
    } else if (g.isNull() && b.isNull() && (r.isName() || r.isColor())) {
        *this = r.isName() ? ZkColor(r.getNameValue()) : r.getColorValue(true);
        if (isInvalid() || !isRGB())
            return false;
    } else {
        *this = getInvalidColor();
        return false;
    }
    return applyAlpha(a, strict) && ok;
}

bool ZkColor::setCMYK(const ZkValue& c, const ZkValue& m, const ZkValue& y, const ZkValue& k,
                      const ZkValue* a, bool strict) {
    if (!c.isNumberOrPercentage() || !m.isNumberOrPercentage() || !y.isNumberOrPercentage() ||
        !k.isNumberOrPercentage()) {
        *this = getInvalidColor();
        return false;
    }
    bool clamped = false;
    float fc = clampUnit(fractionOf(c), clamped);
    float fm = clampUnit(fractionOf(m), clamped);
    float fy = clampUnit(fractionOf(y), clamped);
    float fk = clampUnit(fractionOf(k), clamped);
    *this = ZkColor(fc, fm, fy, fk);
    return applyAlpha(a, strict) && !(clamped && strict);
}

bool ZkColor::setHSL(const ZkValue& h, const ZkValue& s, const ZkValue& l, const ZkValue* a,
                     bool strict) {
    if (!h.isNumber() || !s.isPercentage() || !l.isPercentage()) {
        *this = getInvalidColor();
        return false;
    }
    *this = ZkColor();
    bool ok = setHSL(h.getRealValue(UnitNumber), fractionOf(s), fractionOf(l), strict);
    return applyAlpha(a, strict) && ok;
}

void ZkColor::adjustSeparationFlags(bool hasRGB, bool hasTint, bool hasCMYK, bool recompute) {
    m_flags[0] = hasRGB;
    m_flags[1] = hasTint;
    m_flags[2] = hasCMYK;
    if (recompute && !hasRGB && hasCMYK) {
        float t = m_f[0];
        m_rgb = cmyk2rgb(m_f[1] * t, m_f[2] * t, m_f[3] * t, m_f[4] * t).m_rgb;
    }
}

void ZkColor::deleteSeparationCMYK() noexcept {
    m_f[1] = m_f[2] = m_f[3] = m_f[4] = 0.0f;
    m_flags[2] = 0;
}

void ZkColor::deleteSeparationRGB() noexcept {
    m_rgb = 0;
    m_flags[0] = 0;
}

// Derivations -------------------------------------------------------------------------------

ZkColor ZkColor::getDark() const noexcept {
    return ZkColor(getR() * 2 / 3, getG() * 2 / 3, getB() * 2 / 3);
}

ZkColor ZkColor::getLight() const noexcept {
    return ZkColor(255 - ((255 - getR()) >> 1), 255 - ((255 - getG()) >> 1),
                   255 - ((255 - getB()) >> 1));
}

ZkColor ZkColor::invert() const noexcept {
    if (m_rgb == kTransparent || m_rgb == kInvert)
        return ZkColor(0u);
    if (isInvalid() || m_rgb == kCurrentColor)
        return getTransparent();
    return ZkColor((~m_rgb) & 0xFFFFFFu);
}

unsigned int ZkColor::getSeparationRGB() const noexcept {
    float t = m_f[0];
    if (t >= 1.0f)
        return m_rgb;
    if (hasSeparationRGB() && !hasSeparationCMYK()) {
        ZkColor c = rgb2cmyk(m_rgb);
        return cmyk2rgb(c.m_f[0] * t, c.m_f[1] * t, c.m_f[2] * t, c.m_f[3] * t).m_rgb;
    }
    return cmyk2rgb(m_f[1] * t, m_f[2] * t, m_f[3] * t, m_f[4] * t).m_rgb;
}

// Printing ----------------------------------------------------------------------------------

UnicodeString ZkColor::toString(bool css, bool keepModel, bool noName) const {
    ZkUtil::setLocaleC();
    switch (m_rgb) {
    case kTransparent:
        return u"transparent";
    case kInvert:
        return u"invert";
    case kCurrentColor:
        return u"currentColor";
    default:
        break;
    }
    if (isRGB() && isInvalid())
        return UnicodeString();
    UnicodeString h = hexWord(m_rgb);
    if (css && !keepModel) {
        if (isSeparation() && hasSeparationTint()) {
            int g = 255 - static_cast<int>(m_f[0] * 255.0f);
            return hexWord(getRGB(g, g, g));
        }
        if (!noName) {
            UnicodeString name = getColorName(true);
            if (!name.isEmpty())
                return name;
        }
        return h;
    }
    UnicodeString text;
    // "rgb-icc(r,g,b,PROFILE" or "#RRGGBB icc-color(PROFILE"
    auto iccHead = [&](const char16_t* profile, bool withRGB) {
        if (css) {
            text.append(h).append(u" icc-color(");
        } else {
            text.append(u"rgb-icc(");
            if (withRGB)
                appendChannels(text, m_rgb);
        }
        text.append(profile);
    };
    if (isICCColorProfile()) {
        if (css) {
            text.append(h).append(u" icc-color(").append(m_name);
        } else {
            text.append(u"rgb-icc(");
            appendChannels(text, m_rgb);
            text.append(m_name);
        }
        appendFloats(text, m_f, 4);
        return text.append(u')');
    }
    if (isHSL() && !css) {
        text.append(hasAlpha() ? u"hsla(" : u"hsl(");
        text.append(num(m_f[0])).append(u',');
        text.append(num(m_f[1] * 100.0f)).append(u"%,");
        text.append(num(m_f[2] * 100.0f)).append(u'%');
        if (hasAlpha())
            text.append(u',').append(num(m_alpha));
        return text.append(u')');
    }
    if (isCMYK()) {
        if (!css && hasAlpha()) {
            text.append(u"cmyka(").append(num(m_f[0]));
            appendFloats(text, m_f + 1, 3);
            return text.append(u',').append(num(m_alpha)).append(u')');
        }
        if (!css && !hasCMYKRGB()) {
            text.append(u"cmyk(").append(num(m_f[0]));
            appendFloats(text, m_f + 1, 3);
            return text.append(u')');
        }
        iccHead(u"#CMYK", /*withRGB=*/true);
        appendFloats(text, m_f, 4);
        return text.append(u')');
    }
    if (isGrayscale()) {
        iccHead(u"#GRAYSCALE", /*withRGB=*/hasGrayscaleRGB());
        appendFloats(text, m_f, 1);
        return text.append(u')');
    }
    if (isSeparation()) {
        if (css) {
            text.append(h).append(u" icc-color(");
        } else {
            text.append(u"rgb-icc(");
            if (hasSeparationRGB())
                appendChannels(text, m_rgb);
        }
        if (isRegistrationName()) {
            text.append(u"#REGISTRATION");
        } else {
            text.append(u"#SEPARATION,\"").append(m_name).append(u'"');
        }
        if (hasSeparationTint()) {
            appendFloats(text, m_f, 1);
            if (hasSeparationCMYK())
                appendFloats(text, m_f + 1, 4);
        }
        return text.append(u')');
    }
    // RGB, and HSL in CSS.
    bool floatParts = isRGBex() && !css;
    if (hasAlpha()) {
        text.append(u"rgba(");
        if (floatParts) {
            text.append(num(m_f[0] * 100.0f)).append(u"%,");
            text.append(num(m_f[1] * 100.0f)).append(u"%,");
            text.append(num(m_f[2] * 100.0f)).append(u"%,");
        } else {
            appendChannels(text, m_rgb);
        }
        return text.append(num(m_alpha)).append(u')');
    }
    if (floatParts) {
        text.append(u"rgb(");
        text.append(num(m_f[0] * 100.0f)).append(u"%,");
        text.append(num(m_f[1] * 100.0f)).append(u"%,");
        text.append(num(m_f[2] * 100.0f)).append(u"%)");
        return text;
    }
    return h;
}

bool ZkColor::operator==(const ZkColor& other) const {
    if (m_rgb != other.m_rgb || m_profile != other.m_profile)
        return false;
    if (hasAlpha() != other.hasAlpha() || (hasAlpha() && m_alpha != other.m_alpha))
        return false;
    auto same = [this, &other](int from, int count) {
        for (int i = from; i < from + count; ++i)
            if (m_f[i] != other.m_f[i])
                return false;
        return true;
    };
    switch (m_profile.getEnum()) {
    case ZKN_EMPTY:
        if (isRGBex() || other.isRGBex())
            return getRex() == other.getRex() && getGex() == other.getGex() &&
                   getBex() == other.getBex();
        return true;
    case ZKN_H_CMYK:
    case ZKN_H_GRAYSCALE:
        return same(0, isCMYK() ? 4 : 1) && m_flags[0] == other.m_flags[0];
    case ZKN_H_SEPARATION: {
        bool names = (isRegistrationName() && other.isRegistrationName()) || m_name == other.m_name;
        return names && same(0, 5);
    }
    case ZKN_icc_color:
        return m_name == other.m_name && same(0, 4);
    default: // #HSL: the word decides
        return true;
    }
}

} // namespace ZkCommonNS
