// Tests of ZkParser: single values and lists by the flags, compounds, attribute strings and the
// link-target languages.
#include "support.h"
#include "zkcommon/values/parser.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>

using namespace ZkCommonNS;

namespace {

using P = ZkParser;

// "key=text" of every item of a compound in list order, "." for the empty name.
std::string items(const ZkValue& v) {
    if (!v.isCompound())
        return "not a compound: " + utf8(v.toString());
    std::string out;
    ZkNamedValueMapIterator it(v.getNamedValueMap());
    std::vector<std::string> parts;
    while (it.hasNext()) {
        const ZkNamedValue& item = it.next();
        std::string name = utf8(item.getName().toString());
        parts.push_back((name.empty() ? "." : name) + "=" + utf8(item.toString()));
    }
    std::sort(parts.begin(), parts.end());
    for (const std::string& part : parts)
        out += (out.empty() ? "" : " ") + part;
    return out;
}

} // namespace

TEST(ZkParser, ValuesByFlags) {
    struct Case {
        const char16_t* text;
        int flags;
        int type;
        int unit;
        const char* printed;
    };
    // clang-format off
    const Case cases[] = {
        {u"12pt", 0, ValueReal, UnitPt, "12pt"},
        {u"12 pt", 0, ValueString, UnitNone, "12 pt"},
        {u"", 0, ValueString, UnitNone, ""},
        {u"   ", 0, ValueString, UnitNone, "   "},
        {u"a b", 0, ValueString, UnitNone, "a b"},
        {u" -12 ", 0, ValueInteger, UnitNumber, "-12"},
        {u"'q'", 0, ValueString, UnitLiteral, "q"},
        {u"#fff", 0, ValueInteger, UnitColor, "#FFFFFF"},
        {u"#fff", P::NoHashColor, ValueString, UnitNone, "#fff"},
        {u"12", P::NoNumber | P::NoHashColor, ValueString, UnitNone, "12"},
        {u"abc", P::NoNumber | P::NoHashColor, ValueName, UnitName, "abc"},
        {u",", 0, ValueString, UnitNone, ","},
        {u";", P::InCompound, ValueInteger, UnitChar, ";"},
        {u"a;", P::InCompound, ValueName, UnitName, "a"},
        {u"a b", P::List, ValueArray, UnitNone, "a b"},
        {u"1,2", P::List, ValueArray, UnitNone, "1 , 2"},
        {u"x", P::List, ValueName, UnitName, "x"},
        {u"", P::List, ValueString, UnitNone, ""},
        {u"12 #fff", P::List | P::NoNumber | P::NoHashColor, ValueArray, UnitNone, "\"12\" \"#FFFFFF\""},
        {u"{a: 1; b: x y; .: 2}", P::List | P::Compound, ValueCompound, UnitNone, "{a: 1; b: x y; .: 2}"},
        {u"{}", P::List | P::Compound, ValueCompound, UnitNone, "{}"},
        {u"{a: {b: {c: 'x'}}}", P::List | P::Compound, ValueCompound, UnitNone, "{a: {b: {c: \"x\"}}}"},
        {u"{a: 1}", P::Compound, ValueCompound, UnitNone, "{a: 1}"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(utf8(c.text));
        ZkValue v = P::parse(c.text, c.flags);
        EXPECT_EQ(c.type, v.getValueType());
        EXPECT_EQ(c.unit, v.getUnitType());
        EXPECT_EQ(c.printed, utf8(v.toString()));
    }
    ZkValue list = P::parseCompound(u"1,2");
    ASSERT_EQ(3, list.getArrayCount());
    EXPECT_TRUE(list.getNthItem(1).isCharacter());
    EXPECT_EQ(ZkValue(3.0f, UnitPx), P::parse(u"3px", ZkTokenizer::TokenizerCSS));
    EXPECT_EQ(ZkValue(1000.0f), P::parse(u"1e3", ZkTokenizer::TokenizerCSS));
}

TEST(ZkParser, Compounds) {
    ZkValue v = P::parseCompound(u"{a: 1; b: x y; .: 2}");
    EXPECT_EQ(".=2 a=1 b=x y", items(v)); // keys a, b and the empty name
    EXPECT_TRUE(v.getNamedItem(ZkName(u"b")).isArray());
    EXPECT_EQ(ZkValue(2), v.getNamedItem(ZkName()));
    // Later keys replace earlier ones; a text that breaks off keeps what was stored.
    EXPECT_EQ("a=3", items(P::parseCompound(u"{a: 1; a: 3}")));
    EXPECT_EQ("a=1", items(P::parseCompound(u"{a: 1; b").getNthItem(0)));
    EXPECT_EQ("a=1", items(P::parseCompound(u"{a: 1; 5: 2}").getNthItem(0)));
    EXPECT_EQ("a=x", items(P::parseCompound(u"{a: x")));
    EXPECT_EQ("a= b=1", items(P::parseCompound(u"{a: ; b: 1}")));
    // Nesting beyond the reader's depth reads "{" as a character instead of recursing.
    UnicodeString deep;
    for (int i = 0; i < 20000; ++i)
        deep.append(u"{a: ");
    EXPECT_TRUE(P::parseCompound(deep).isCompound());
}

TEST(ZkParser, Attributes) {
    struct Case {
        const char16_t* text;
        int flags;
        bool ok;
        const char* expected;
    };
    // clang-format off
    const Case cases[] = {
        {u"", 0, true, ""},
        {u"a='1' b=\"2\"", 0, true, "a=1 b=2"},
        {u"  a = '1'\n\tb='x \"y\"' ", 0, true, "a=1 b=x \"y\""},
        {u"a='1' a='2'", 0, false, ""},
        {u"a='1' a='2'", P::AttributesRepeatable, true, "a=1"},
        {u"a='1", 0, false, ""},
        {u"a='1", P::AttributesLenient, true, ""},
        {u"a 1 b='2'", 0, false, ""},
        {u"a=1 b='2'", P::AttributesLenient, true, "b=2"},
        {u"=x c='3'", P::AttributesLenient, true, ""}, // each offending character is stepped over
        {u"1a='1'", 0, false, ""},
        {u"\u00E9t\u00E9='summer'", 0, true, "\u00E9t\u00E9=summer"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(utf8(c.text));
        std::map<ZkName, UnicodeString> out;
        out[ZkName(u"stale")] = u"x";
        EXPECT_EQ(c.ok, P::parseAttributes(c.text, out, c.flags));
        std::vector<std::string> parts;
        for (const auto& entry : out)
            parts.push_back(utf8(entry.first.toString()) + "=" + utf8(entry.second));
        std::sort(parts.begin(), parts.end());
        std::string joined;
        for (const std::string& part : parts)
            joined += (joined.empty() ? "" : " ") + part;
        EXPECT_EQ(c.expected, joined);
    }
}

TEST(ZkParser, LinkTargets) {
    struct Case {
        const char* what;
        ZkValue value;
        const char* expected; // items, or "null"
    };
    // clang-format off
    const Case cases[] = {
        {"pdf nameddest drops page", P::parsePDFOpenParameters(u"a.pdf#page=3&nameddest=x", false), "nameddest=x uri=a.pdf"},
        {"pdf plain", P::parsePDFOpenParameters(u"a.pdf", false), "page=1 uri=a.pdf view=xyz"},
        {"pdf fragment only", P::parsePDFOpenParameters(u"#page=1", false), "null"},
        {"pdf internal without #", P::parsePDFOpenParameters(u"a.pdf", true), "null"},
        {"pdf internal without page", P::parsePDFOpenParameters(u"a.pdf#zoom=2", true), "null"},
        {"pdf internal", P::parsePDFOpenParameters(u"a.pdf#page=2", true), "last-page=2 page=2 uri=a.pdf view=xyz"},
        {"pdf range", P::parsePDFOpenParameters(u"a.pdf#page=5-2", false), "last-page=5 page=5 uri=a.pdf view=xyz"},
        {"pdf page all", P::parsePDFOpenParameters(u"a.pdf#page=3&page=all", false), "page=1 uri=a.pdf view=xyz"},
        {"pdf bad page", P::parsePDFOpenParameters(u"a.pdf#page=0&Page=x", false), "page=1 uri=a.pdf view=xyz"},
        {"pdf zoom", P::parsePDFOpenParameters(u"a.pdf#Zoom=50,10,20", false), "left=10pt page=1 top=20pt uri=a.pdf view=xyz zoom=50"},
        {"pdf zoom zero", P::parsePDFOpenParameters(u"a.pdf#zoom=0", false), "page=1 uri=a.pdf view=xyz zoom=0"},
        {"pdf view", P::parsePDFOpenParameters(u"a.pdf#view=FitH,1in", false), "page=1 top=72pt uri=a.pdf view=fith"},
        {"pdf view fitr refused", P::parsePDFOpenParameters(u"a.pdf#view=fitr", false), "page=1 uri=a.pdf view=xyz"},
        {"pdf viewrect", P::parsePDFOpenParameters(u"a.pdf#viewrect=1,2,3,4", false), "height=4pt left=1pt page=1 top=2pt uri=a.pdf view=viewrect width=3pt"},
        {"pdf viewrect empty", P::parsePDFOpenParameters(u"a.pdf#viewrect=1,2,0,4", false), "page=1 uri=a.pdf view=xyz"},
        {"pdf javascript", P::parsePDFOpenParameters(u"a.pdf#page=2&javascript=f(1&2) &x", false), "javascript=f(1&2) &x page=1 uri=a.pdf view=xyz"},
        {"pdf other key", P::parsePDFOpenParameters(u"a.pdf#page=2&search=a,b", false), "page=1 search=a uri=a.pdf view=xyz"},
        {"xlink name", P::parseXlinkHref(u"#chap1"), "nameddest=chap1"},
        {"xlink digits", P::parseXlinkHref(u"#12ab"), "nameddest=12ab"},
        {"xlink uri", P::parseXlinkHref(u"b.pdf"), "page=1 uri=b.pdf view=xyz"},
        {"xlink params", P::parseXlinkHref(u"b.pdf#page=4"), "last-page=4 page=4 uri=b.pdf view=xyz"},
        {"xlink named", P::parseXlinkHref(u"b.pdf#intro"), "nameddest=intro uri=b.pdf"},
        {"xlink empty", P::parseXlinkHref(u""), "null"},
        {"internal page", P::parseInternalDestination(u" 12 ", 0), ".=12 page=12"},
        {"internal name", P::parseInternalDestination(u"chap1#page=3", 0), "last-page=3 nameddest=chap1 page=3"},
        {"internal digits", P::parseInternalDestination(u"#12", 0), "nameddest=12"},
        {"internal default", P::parseInternalDestination(u"#zoom=2", 5), "last-page=5 page=5 view=xyz zoom=2"},
        {"dest percent", P::parseDestinationType(u"150%"), ".=xyz-top zoom=150"},
        {"dest fitr", P::parseDestinationType(u"FitR 1pt 2pt 3pt 4pt"), ".=fitr bottom=2pt left=1pt right=3pt top=4pt"},
        {"dest xyz-left", P::parseDestinationType(u"xyz-left 200 10pt"), ".=xyz-left left=10pt zoom=200"},
        {"dest fith number", P::parseDestinationType(u"fith 5"), "not a compound: fith"},
        {"dest unknown", P::parseDestinationType(u"bogus"), "not a compound: xyz-top"},
        {"excel", P::parseExcelOpenParameters(u"b.xlsx#Sheet=2&chart=-1&x=3"), "sheet=2"},
        {"excel none", P::parseExcelOpenParameters(u"b.xlsx#x=1"), "null"},
        {"excel no #", P::parseExcelOpenParameters(u"b.xlsx"), "null"},
        {"fragment", P::parseUriFragmentParameters(u"p#A=%41b&c& d = e ", true), ".=p a=Ab d=e"},
        {"fragment keys kept", P::parseUriFragmentParameters(u"p#A=1", false), ".=p A=1"},
        {"fragment none", P::parseUriFragmentParameters(u"p", true), "not a compound: p"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(c.expected, c.value.isNull() ? std::string("null") : items(c.value));
    }
}

// Every value of real stylesheets reads to the end, and every colour function in them gives a
// colour.
TEST(ZkParser, RealStylesheetValues) {
    std::ifstream in(ZK_TEST_DATA_DIR "/values/propertyvalues.txt");
    int lines = 0, colors = 0;
    for (std::string line; std::getline(in, line); ++lines) {
        SCOPED_TRACE(line);
        ZkTokenizer t(UnicodeString::fromUTF8(line), ZkTokenizer::TokenizerCSSComment);
        for (int n = 0; n < 200; ++n) {
            ZkName function;
            ZkValue v = t.nextTokenValueFunc(false, &function);
            if (v.isNull())
                break;
            std::string name = utf8(function.toString());
            if (name == "rgb" || name == "rgba" || name == "hsl" || name == "hsla" ||
                name == "cmyk" || name == "device-cmyk" || name == "rgb-icc") {
                EXPECT_TRUE(v.isColor()) << name;
                ++colors;
            }
        }
        EXPECT_EQ(ZkTokenizer::TokenEnd, t.nextToken());
    }
    EXPECT_GT(lines, 400);
    EXPECT_GT(colors, 20);
}
