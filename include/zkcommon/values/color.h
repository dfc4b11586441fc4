// ZkColor: a colour with its 24-bit display word and, beside it, the author's colour model
// (floating RGB, CMYK, gray, spot with tint, ICC profile values, HSL), so that the model reaches a
// print back end unconverted.
#ifndef ZKCOMMON_VALUES_COLOR_H
#define ZKCOMMON_VALUES_COLOR_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/unicode.h"

#include <cstdint>

namespace ZkCommonNS {

class ZkValue;

/// A few colour words by name; any other 0x00RRGGBB word is as good.
enum RGBCOLOR : uint32_t {
    RGB_BLACK = 0x000000,
    RGB_WHITE = 0xFFFFFF,
    RGB_RED = 0xFF0000,
    RGB_GREEN = 0x008000,
    RGB_BLUE = 0x0000FF
};

/// A plain value class: copy by value, no reference count. Nothing throws; a failed look-up or
/// setter leaves the invalid colour, which isInvalid() reports.
class ZKCOMMON_API ZkColor {
public:
    static constexpr uint32_t kTransparent = 0xFFFFFFFFu;
    static constexpr uint32_t kInvert = 0xFFFFFFFEu;
    static constexpr uint32_t kCurrentColor = 0xFE000000u;
    static constexpr uint32_t kInvalid = 0xFF000000u;

    /// Word 0, no alpha, RGB.
    ZkColor() noexcept;
    /// The word as it stands (specials included).
    ZkColor(unsigned int word) noexcept;
    ZkColor(RGBCOLOR word) noexcept : ZkColor(static_cast<unsigned int>(word)) {}
    /// The low byte of each channel.
    ZkColor(int r, int g, int b) noexcept;
    /// Each channel through round255.
    ZkColor(float r, float g, float b) noexcept;
    /// Gray, clamped to 0..1; the word from round255(gray).
    explicit ZkColor(float gray) noexcept;
    /// CMYK; the word from cmyk2rgb of the values as given, the values stored clamped.
    ZkColor(float c, float m, float y, float k) noexcept;
    /// Gray beside the word of `base` (alpha cleared).
    ZkColor(const ZkColor& base, float gray) noexcept;
    /// CMYK beside the word and alpha of `base`; the values clamped.
    ZkColor(const ZkColor& base, float c, float m, float y, float k) noexcept;
    /// A spot colour; an empty name becomes "All", the tint is clamped, the word is the gray of
    /// 1 - tint.
    ZkColor(const UnicodeString& name, float tint);
    /// A spot colour with its CMYK equivalent; the word from cmyk2rgb without the tint.
    ZkColor(const UnicodeString& name, float tint, float c, float m, float y, float k);
    /// A spot colour beside the word and alpha of `base`; CMYK from rgb2cmyk of the word.
    ZkColor(const ZkColor& base, const UnicodeString& name, float tint);
    ZkColor(const ZkColor& base, const UnicodeString& name, float tint, float c, float m, float y,
            float k);
    /// ICC profile values beside the word and alpha of `base`; the floats kept as given.
    ZkColor(const ZkColor& base, const UnicodeString& profile, float a, float b, float c, float d);
    /// A colour keyword, "transparent", "invert", "currentcolor", "k100" or a system colour;
    /// any other name (after lowering) gives the invalid colour.
    explicit ZkColor(ZkName name);
    /// value.getColorValue().
    explicit ZkColor(const ZkValue& value);

    static ZkColor getTransparent() noexcept { return ZkColor(kTransparent); }
    static ZkColor getInvert() noexcept { return ZkColor(kInvert); }
    static ZkColor getCurrentColor() noexcept { return ZkColor(kCurrentColor); }
    static ZkColor getInvalidColor() noexcept { return ZkColor(kInvalid); }

    // Word helpers ------------------------------------------------------------------------

    static unsigned int getRGB(int r, int g, int b) noexcept {
        return (static_cast<unsigned>(r & 255) << 16) | (static_cast<unsigned>(g & 255) << 8) |
               static_cast<unsigned>(b & 255);
    }
    static int getR(unsigned int word) noexcept { return static_cast<int>((word >> 16) & 255); }
    static int getG(unsigned int word) noexcept { return static_cast<int>((word >> 8) & 255); }
    static int getB(unsigned int word) noexcept { return static_cast<int>(word & 255); }
    /// Swaps the first and third bytes.
    static unsigned int reverseRGB(unsigned int word) noexcept {
        return (word & 0xFF00FF00u) | ((word >> 16) & 255) | ((word & 255) << 16);
    }
    static ZkColor fromBGR(unsigned int word) noexcept { return ZkColor(reverseRGB(word)); }
    unsigned int getBGR() const noexcept { return reverseRGB(m_rgb); }
    /// 0 at or below 0, 255 at or above 1, else x * 255 + 0.5 truncated (NaN gives 0).
    static int round255(float x) noexcept;
    /// Clamped to 0..1 (NaN gives 0).
    static float zeroone(float x) noexcept;
    static ZkColor cmyk2rgb(float c, float m, float y, float k) noexcept;
    static ZkColor hsl2rgb(float h, float s, float l) noexcept;
    static ZkColor rgb2cmyk(unsigned int word) noexcept;
    static ZkColor rgb2cmyk(unsigned int word, float sub, float k) noexcept;
    static ZkColor rgb2gray(unsigned int word) noexcept;
    /// A Name value that is no CSS-wide keyword and names no colour.
    static bool isInvalidColorNameValue(const ZkValue& value);

    // Queries ------------------------------------------------------------------------------

    int getR() const noexcept { return getR(m_rgb); }
    int getG() const noexcept { return getG(m_rgb); }
    int getB() const noexcept { return getB(m_rgb); }
    operator unsigned int() const noexcept { return m_rgb; }
    /// The float parts when isRGBex, otherwise the channel over 255.
    float getRex() const noexcept;
    float getGex() const noexcept;
    float getBex() const noexcept;
    /// The no-alpha marker (the largest float) when there is none.
    float getAlpha() const noexcept { return m_alpha; }
    bool hasAlpha() const noexcept { return m_alpha >= 0.0f && m_alpha <= 1.0f; }
    ZkName getProfileType() const noexcept { return m_profile; }
    bool isRGB() const noexcept { return m_profile.isEmpty(); }
    bool isRGBex() const noexcept { return isRGB() && m_flags[0] != 0; }
    bool isCMYK() const noexcept { return m_profile == ZKN_H_CMYK; }
    bool isGrayscale() const noexcept { return m_profile == ZKN_H_GRAYSCALE; }
    bool isHSL() const noexcept { return m_profile == ZKN_H_HSL; }
    bool isICCColorProfile() const noexcept { return m_profile == ZKN_icc_color; }
    bool isSeparation() const noexcept { return m_profile == ZKN_H_SEPARATION; }
    const UnicodeString& getColorName() const noexcept { return m_name; }
    /// The keyword of the word (see the rules in color.cpp); empty when there is none.
    UnicodeString getColorName(bool cssOnly) const;
    ZkName getICCColorProfileName() const;
    const UnicodeString& getSeparationColorName() const noexcept { return m_name; }
    bool isCurrentColor() const noexcept { return m_rgb == kCurrentColor; }
    bool isTransparent() const noexcept { return m_rgb == kTransparent; }
    /// Also alpha exactly 0 when `alphaCounts`.
    bool isTransparent(bool alphaCounts) const noexcept {
        return isTransparent() || (alphaCounts && m_alpha == 0.0f);
    }
    bool isInvalid() const noexcept;
    /// CMYK (0, 0, 0, 1) without an alpha below 1.
    bool isK100() const noexcept;
    bool isRegistration() const noexcept { return isSeparation() && isRegistrationName(); }
    /// The name in lower case is "all".
    bool isRegistrationName() const;

    float getC() const noexcept { return m_f[0]; }
    float getM() const noexcept { return m_f[1]; }
    float getY() const noexcept { return m_f[2]; }
    float getK() const noexcept { return m_f[3]; }
    bool hasCMYKRGB() const noexcept { return isCMYK() && m_flags[0] != 0; }
    float getGrayscale() const noexcept { return m_f[0]; }
    bool hasGrayscaleRGB() const noexcept { return isGrayscale() && m_flags[0] != 0; }
    float getH() const noexcept { return m_f[0]; }
    float getS() const noexcept { return m_f[1]; }
    float getL() const noexcept { return m_f[2]; }
    /// Value `i` (0..3) of an ICC colour; 0 out of range.
    float getICCValue(int i) const noexcept { return i >= 0 && i < 4 ? m_f[i] : 0.0f; }
    float getSeparationTint() const noexcept { return m_f[0]; }
    float getSeparationC() const noexcept { return m_f[1]; }
    float getSeparationM() const noexcept { return m_f[2]; }
    float getSeparationY() const noexcept { return m_f[3]; }
    float getSeparationK() const noexcept { return m_f[4]; }
    bool hasSeparationRGB() const noexcept { return isSeparation() && m_flags[0] != 0; }
    bool hasSeparationTint() const noexcept { return isSeparation() && m_flags[1] != 0; }
    bool hasSeparationCMYK() const noexcept { return isSeparation() && m_flags[2] != 0; }

    // Mutators: out-of-range input is clamped in any case; the result is false only when
    // something had to be clamped and `strict` is set, or when the input is of the wrong kind
    // (the colour is then invalid).

    bool setAlpha(float a, bool strict);
    /// 0..255, over 255.
    bool setAlpha(int a, bool strict);
    void clearAlpha() noexcept;
    bool setHSL(float h, float s, float l, bool strict);
    bool setRGBex(float r, float g, float b, bool strict);
    bool setRGB(const ZkValue& r, const ZkValue& g, const ZkValue& b, const ZkValue* a,
                bool strict);
    bool setCMYK(const ZkValue& c, const ZkValue& m, const ZkValue& y, const ZkValue& k,
                 const ZkValue* a, bool strict);
    bool setHSL(const ZkValue& h, const ZkValue& s, const ZkValue& l, const ZkValue* a,
                bool strict);
    /// Stores the flags; with `recompute`, no RGB and CMYK given, the word becomes the CMYK
    /// times the tint.
    void adjustSeparationFlags(bool hasRGB, bool hasTint, bool hasCMYK, bool recompute);
    void deleteSeparationCMYK() noexcept;
    void deleteSeparationRGB() noexcept;

    // Derivations --------------------------------------------------------------------------

    ZkColor getDark() const noexcept;
    ZkColor getLight() const noexcept;
    /// Transparent and invert give black; an invalid colour gives transparent.
    ZkColor invert() const noexcept;
    unsigned int getSeparationRGB() const noexcept;

    /// The colour as text; the invalid RGB colour gives the empty string.
    UnicodeString toString(bool css = false, bool keepModel = false, bool noName = false) const;

    bool operator==(const ZkColor& other) const;
    bool operator!=(const ZkColor& other) const { return !(*this == other); }

private:
    void setModel(ZkName profile) noexcept;
    bool applyAlpha(const ZkValue* a, bool strict);

    uint32_t m_rgb;
    float m_alpha;
    ZkName m_profile;
    UnicodeString m_name;
    float m_f[5];
    uint8_t m_flags[3];
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_VALUES_COLOR_H
