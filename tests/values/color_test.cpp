// Tests of ZkColor: every keyword against an independent table, every colour function form and
// its failures, the model conversions, printing, and the bridge to ZkValue.
#include "support.h"
#include "zkcommon/values/color.h"
#include "zkcommon/values/parser.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

using namespace ZkCommonNS;

namespace {

struct Keyword {
    std::string name;
    int r, g, b;
    std::string printed;
};

std::vector<Keyword> readKeywords() {
    std::ifstream in(ZK_TEST_DATA_DIR "/values/colorkeywords.txt");
    std::vector<Keyword> rows;
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#')
            continue;
        std::istringstream fields(line);
        Keyword k;
        fields >> k.name >> k.r >> k.g >> k.b >> k.printed;
        rows.push_back(k);
    }
    return rows;
}

UnicodeString u(const std::string& text) {
    return UnicodeString::fromUTF8(text);
}

} // namespace

TEST(ZkColor, EveryKeywordInAnyCaseAndAsFunction) {
    std::vector<Keyword> keywords = readKeywords();
    ASSERT_EQ(148u, keywords.size());
    for (const Keyword& k : keywords) {
        SCOPED_TRACE(k.name);
        ZkColor color{ZkName(u(k.name))};
        ASSERT_FALSE(color.isInvalid());
        EXPECT_EQ(ZkColor::getRGB(k.r, k.g, k.b), static_cast<unsigned>(color));
        std::string upper = k.name;
        for (char& c : upper)
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        EXPECT_EQ(color, ZkColor(ZkName(u(upper))));
        // A keyword value, its text and the rgb() form all resolve alike.
        EXPECT_EQ(color, ZkValue(ZkName(u(k.name))).getColorValue(true));
        EXPECT_EQ(color, ZkValue(u(k.name), UnitNone).getColorValue(true));
        std::string rgb = "rgb(" + std::to_string(k.r) + ", " + std::to_string(k.g) + ", " +
                          std::to_string(k.b) + ")";
        EXPECT_EQ(color, ZkParser::parseColor(u(rgb), false).getColorValue(true));
        EXPECT_EQ(k.printed, utf8(color.getColorName(true)));
        EXPECT_EQ(k.printed, utf8(color.toString(/*css=*/true)));
        EXPECT_EQ(k.printed, utf8(ZkParser::parseCompound(color.toString(true)).toString()));
    }
}

TEST(ZkColor, SpecialAndSystemNames) {
    EXPECT_TRUE(ZkColor(ZkName(u"transparent")).isTransparent());
    EXPECT_EQ(ZkColor::kInvert, static_cast<unsigned>(ZkColor(ZkName(u"Invert"))));
    EXPECT_TRUE(ZkColor(ZkName(u"currentColor")).isCurrentColor());
    EXPECT_EQ("currentColor", utf8(ZkColor(ZkName(u"currentcolor")).toString()));
    EXPECT_TRUE(ZkColor(ZkName(u"K100")).isK100());
    // The system colours answer from a fixed table; the aliases share their slot.
    EXPECT_EQ(0xFFFFFFu, static_cast<unsigned>(ZkColor(ZkName(u"window"))));
    EXPECT_EQ(ZkColor(ZkName(u"buttonface")), ZkColor(ZkName(u"ThreeDFace")));
    EXPECT_EQ(0xFFFFE1u, static_cast<unsigned>(ZkColor(ZkName(u"InfoBackground"))));
    for (const char16_t* bad : {u"", u"nosuchcolor", u"NoSuchColor", u"inherit", u"red2"}) {
        SCOPED_TRACE(utf8(bad));
        ZkColor color{ZkName(UnicodeString(bad))};
        EXPECT_TRUE(color.isInvalid());
        EXPECT_EQ("", utf8(color.toString()));
    }
    EXPECT_TRUE(ZkColor::isInvalidColorNameValue(ZkValue(ZkName(u"nosuchcolor"))));
    EXPECT_FALSE(ZkColor::isInvalidColorNameValue(ZkValue(ZkName(u"inherit"))));
    EXPECT_FALSE(ZkColor::isInvalidColorNameValue(ZkValue(ZkName(u"Red"))));
    EXPECT_FALSE(ZkColor::isInvalidColorNameValue(ZkValue(u"nosuchcolor")));
}

// tests/data/values/colorforms.tsv: text, "icc" when icc-color() is allowed, the printed colour
// ("-": a failure, the text comes back as a string), "clamped" when a component was clamped.
TEST(ZkColor, FunctionForms) {
    const auto rows = readTable(ZK_TEST_DATA_DIR "/values/colorforms.tsv");
    ASSERT_EQ(58u, rows.size());
    for (const auto& row : rows) {
        ASSERT_EQ(4u, row.size());
        const std::string& text = row[0];
        const bool failure = row[2] == "-";
        const bool wantClamped = row[3] == "clamped";
        SCOPED_TRACE(text);
        bool clamped = !wantClamped;
        ZkValue v = ZkParser::parseColor(u(text), row[1] == "icc", &clamped);
        if (failure) {
            EXPECT_TRUE(v.isUnknownString());
            EXPECT_EQ(text, utf8(v.toString()));
            EXPECT_EQ(!wantClamped, clamped); // untouched
            continue;
        }
        ASSERT_TRUE(v.isColor());
        EXPECT_EQ(wantClamped, clamped);
        ZkColor color = v.getColorValue(true);
        EXPECT_EQ(row[2], utf8(color.toString()));
        // The printed form reads back to a colour that prints the same.
        EXPECT_EQ(
            row[2],
            utf8(ZkParser::parseColor(color.toString(), true).getColorValue(true).toString()));
    }
}
TEST(ZkColor, ParseColorLeavesNamesAndPlainValues) {
    ZkValue red = ZkParser::parseColor(u"red", false);
    EXPECT_TRUE(red.isName());
    EXPECT_EQ("red", utf8(red.toString()));
    EXPECT_TRUE(ZkParser::parseColor(u"12", false).isInteger());
    EXPECT_TRUE(ZkParser::parseColor(u"'x'", false).isLiteralString());
    // The tokenizer form gives Null on failure, behind the failing token.
    ZkTokenizer t(u"rgb(1,2) next");
    EXPECT_TRUE(ZkParser::parseColor(t, false).isNull());
    ZkTokenizer t2(u"rgb(1,2,3) next");
    EXPECT_EQ(0x010203u, static_cast<unsigned>(ZkParser::parseColor(t2, false).getColorValue()));
    EXPECT_EQ("next", utf8(t2.nextTokenValue().toString()));
}

TEST(ZkColor, ModelsAndConversions) {
    EXPECT_EQ("rgb-icc(#GRAYSCALE,0.5)", utf8(ZkColor(0.5f).toString(false, false, false)));
    ZkColor k100(0.0f, 0.0f, 0.0f, 1.0f);
    EXPECT_EQ(0u, static_cast<unsigned>(k100));
    EXPECT_TRUE(k100.isK100());
    EXPECT_EQ("k100", utf8(k100.getColorName(false)));
    EXPECT_EQ("", utf8(k100.getColorName(true)));
    ZkColor spot(u"Gold", 0.5f);
    EXPECT_EQ("#808080", utf8(spot.toString(true, false, false)));
    EXPECT_TRUE(ZkColor(u"ALL", 1.0f).isRegistration());
    EXPECT_EQ("All", utf8(ZkColor(u"", 1.0f).getColorName()));
    EXPECT_EQ("cyan", utf8(ZkColor(0x00FFFFu).getColorName(true)));
    EXPECT_EQ("gray", utf8(ZkColor(0x808080u).getColorName(true)));
    ZkColor hsl;
    EXPECT_TRUE(hsl.setHSL(-30.0f, 1.0f, 0.5f, true));
    EXPECT_EQ(330.0f, hsl.getH());
    ZkColor rgb;
    EXPECT_FALSE(rgb.setRGB(ZkValue(300), ZkValue(0), ZkValue(0), nullptr, true));
    EXPECT_EQ(0xFF0000u, static_cast<unsigned>(rgb));
    EXPECT_TRUE(rgb.setRGB(ZkValue(300), ZkValue(0), ZkValue(0), nullptr, false));
    ZkColor ex;
    EXPECT_FALSE(ex.setRGBex(1.5f, 0.0f, 0.0f, true));
    EXPECT_EQ(1.5f, ex.getRex());
    EXPECT_EQ(0xFF0000u, static_cast<unsigned>(ex));
    EXPECT_FALSE(rgb.setRGB(ZkValue(u"x"), ZkValue(1), ZkValue(2), nullptr, false));
    EXPECT_TRUE(rgb.isInvalid());

    // Conversions in float, known answers.
    EXPECT_EQ(0xFF0000u, static_cast<unsigned>(ZkColor::cmyk2rgb(0, 1, 1, 0)));
    EXPECT_EQ(0x808080u, static_cast<unsigned>(ZkColor::cmyk2rgb(0, 0, 0, 0.5f)));
    ZkColor cmyk = ZkColor::rgb2cmyk(0xFF8000u);
    EXPECT_EQ(0.0f, cmyk.getC());
    EXPECT_NEAR(0.498f, cmyk.getM(), 0.001f);
    EXPECT_EQ(1.0f, cmyk.getY());
    EXPECT_EQ(0.0f, cmyk.getK());
    EXPECT_EQ(1.0f, ZkColor::rgb2cmyk(0u).getK());
    EXPECT_NEAR(0.3f, ZkColor::rgb2gray(0xFF0000u).getGrayscale(), 1e-6f);
    EXPECT_EQ(0x00FF00u, static_cast<unsigned>(ZkColor::hsl2rgb(120, 1, 0.5f)));
    EXPECT_EQ(0x808080u, static_cast<unsigned>(ZkColor::hsl2rgb(200, 0, 0.5f)));
    EXPECT_EQ(0, ZkColor::round255(-1.0f));
    EXPECT_EQ(128, ZkColor::round255(0.5f));
    EXPECT_EQ(0x3366CCu, ZkColor::reverseRGB(0xCC6633u));
    EXPECT_EQ(0xAA7F55u, static_cast<unsigned>(ZkColor(0xFFBF80u).getDark()));
    EXPECT_EQ(0xFFDFC0u, static_cast<unsigned>(ZkColor(0xFFBF80u).getLight()));
    EXPECT_EQ(0x00FF00u, static_cast<unsigned>(ZkColor(0xFF00FFu).invert()));
    EXPECT_EQ(0u, static_cast<unsigned>(ZkColor::getTransparent().invert()));
    EXPECT_TRUE(ZkColor::getInvalidColor().invert().isTransparent());
    // A spot colour shows as its CMYK scaled by the tint.
    ZkColor gold(u"Gold", 0.5f, 0.0f, 0.2f, 1.0f, 0.0f);
    EXPECT_EQ(static_cast<unsigned>(ZkColor::cmyk2rgb(0, 0.1f, 0.5f, 0)), gold.getSeparationRGB());
    gold.adjustSeparationFlags(false, true, true, /*recompute=*/true);
    EXPECT_EQ(gold.getSeparationRGB(), static_cast<unsigned>(gold));
    // ICC profiles named like a model are valid only for the known models.
    EXPECT_TRUE(ZkColor(ZkColor(), u"#LAB", 0, 0, 0, 0).isInvalid());
    EXPECT_FALSE(ZkColor(ZkColor(), u"#CMYK", 0, 0, 0, 0).isInvalid());
    EXPECT_FALSE(ZkColor(ZkColor(), u"sRGB", 0, 0, 0, 0).isInvalid());
}

TEST(ZkColor, PrintsEveryModelInCss) {
    ZkColor base(0x102030u);
    // clang-format off
    const std::pair<ZkColor, const char*> cases[] = {
        {ZkColor(0x102030u), "#102030"},
        {ZkColor(0xFF0000u), "#FF0000"}, // the model form names no keyword
        {ZkColor(base, 0.25f), "#102030 icc-color(#GRAYSCALE,0.25)"},
        {ZkColor(base, 0.1f, 0.2f, 0.3f, 0.4f), "#102030 icc-color(#CMYK,0.1,0.2,0.3,0.4)"},
        {ZkColor(base, u"prof", 1, 2, 3, 4), "#102030 icc-color(prof,1,2,3,4)"},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.second);
        EXPECT_EQ(c.second, utf8(c.first.toString(true, true, false)));
    }
    EXPECT_EQ("#FF0000", utf8(ZkColor(0xFF0000u).toString(true, false, /*noName=*/true)));
    EXPECT_EQ("#102030 icc-color(#SEPARATION,\"Gold\",0.5)",
              utf8(ZkColor(base, u"Gold", 0.5f).toString(true, true, false)));
}

TEST(ZkColor, ValueBridgeKeepsEveryModel) {
    ZkColor base(0x336699u);
    ZkColor alpha(0x112233u);
    alpha.setAlpha(0.5f, true);
    ZkColor hsl;
    hsl.setHSL(200.0f, 0.5f, 0.25f, true);
    ZkColor ex;
    ex.setRGBex(0.25f, 0.5f, 0.75f, true);
    ZkColor sep(base, u"Gold", 0.5f, 0.1f, 0.2f, 0.3f, 0.4f);
    const ZkColor colors[] = {base,
                              alpha,
                              hsl,
                              ex,
                              ZkColor(0.25f),
                              ZkColor(base, 0.25f),
                              ZkColor(0.1f, 0.2f, 0.3f, 0.4f),
                              ZkColor(base, 0.1f, 0.2f, 0.3f, 0.4f),
                              ZkColor(base, u"profile", 0.1f, 0.2f, 0.3f, 0.4f),
                              sep,
                              ZkColor::getTransparent(),
                              ZkColor::getCurrentColor()};
    for (const ZkColor& color : colors) {
        SCOPED_TRACE(utf8(color.toString()));
        ZkValue v(color);
        EXPECT_TRUE(v.isColor());
        EXPECT_EQ(color, v.getColorValue(true));
        EXPECT_EQ(color, ZkColor(v));
        EXPECT_EQ(color.toString(), v.toString());
        EXPECT_EQ(v, ZkValue(color));
    }
    EXPECT_TRUE(ZkValue(base).isInteger());
    EXPECT_TRUE(ZkValue(alpha).isCompound());
    EXPECT_NE(ZkValue(alpha), ZkValue(base));
    // Failures: transparent by default, the invalid colour when asked.
    EXPECT_TRUE(ZkValue(12).getColorValue().isTransparent());
    EXPECT_TRUE(ZkValue(12).getColorValue(true).isInvalid());
    EXPECT_TRUE(ZkValue(ZkName(u"nosuch")).getColorValue(true).isInvalid());
    EXPECT_EQ(0x0000FFu, static_cast<unsigned>(ZkValue(u"rgb(0,0,255)").getColorValue(true)));
}

TEST(ZkColor, NestedColourValuesStopAtAFixedDepth) {
    // A compound whose base is a compound whose base is ... reads a few levels, then fails.
    ZkValue v(ZkColor(0x102030u));
    for (int i = 0; i < 50; ++i) {
        ZkValue outer;
        outer.setNamedItem(ZkName(), v);
        outer.setNamedItem(ZkName(ZKN_H_H_RGBA), ZkValue(ZkName(u"x")));
        outer.setUnitType(UnitColor);
        v = outer;
        if (i == 2) {
            EXPECT_EQ(0x102030u, static_cast<unsigned>(v.getColorValue(true)));
        }
    }
    EXPECT_TRUE(v.getColorValue(true).isInvalid());
}
