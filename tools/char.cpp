// zk char: prints the classes and the vertical orientation of code points.
#include "command.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <unicode/uchar.h>
#include <vector>
#include <zkcommon/core/char.h>

namespace zktool {
namespace {

using namespace ZkCommonNS;

// "U+3042", "u+3042", "0x3042", or a single character given as itself.
bool parseCodePoint(const std::string& text, UChar32& c) {
    std::string digits;
    if (text.size() > 2 && (text[0] == 'U' || text[0] == 'u') && text[1] == '+')
        digits = text.substr(2);
    else if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X'))
        digits = text.substr(2);
    if (!digits.empty()) {
        if (digits.size() > 6 ||
            digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
            return false;
        c = static_cast<UChar32>(std::strtol(digits.c_str(), nullptr, 16));
        return c <= 0x10FFFF;
    }
    UnicodeString literal = UnicodeString::fromUTF8(text);
    if (literal.isEmpty() || literal.countChar32() != 1)
        return false;
    c = literal.char32At(0);
    return true;
}

const char* orientationName(ZkChar::TR50Property property) {
    switch (property) {
    case ZkChar::TR50_UPRIGHT:
        return "upright";
    case ZkChar::TR50_ROTATED:
        return "rotated";
    case ZkChar::TR50_CUSTOM:
        return "custom";
    }
    return "?";
}

std::string propertyValueName(UProperty property, int32_t value) {
    const char* name = u_getPropertyValueName(property, value, U_SHORT_PROPERTY_NAME);
    return name ? name : std::to_string(value);
}

void printCodePoint(UChar32 c) {
    char heading[64];
    std::snprintf(heading, sizeof heading, "U+%04X", static_cast<unsigned>(c));
    char name[256] = "";
    UErrorCode status = U_ZERO_ERROR;
    u_charName(c, U_EXTENDED_CHAR_NAME, name, sizeof name, &status);
    std::cout << heading << " " << name << "\n";

    std::cout << "  category: " << propertyValueName(UCHAR_GENERAL_CATEGORY, ZkChar::getCategory(c))
              << ", east asian width: "
              << propertyValueName(UCHAR_EAST_ASIAN_WIDTH, ZkChar::getEastAsianWidth(c))
              << ", line break: " << propertyValueName(UCHAR_LINE_BREAK, ZkChar::getLineBreak(c))
              << "\n";

    struct Test {
        const char* name;
        bool value;
    } tests[] = {
        {"valid", ZkChar::isValidChar(c)},
        {"valid11", ZkChar::isValidChar11(c)},
        {"name-start", ZkChar::isNameStartChar(c)},
        {"name", ZkChar::isNameChar(c)},
        {"ncname-start", ZkChar::isNCNameStartChar(c)},
        {"ncname", ZkChar::isNCNameChar(c)},
        {"mime-token", ZkChar::isMIMETokenChar(c)},
        {"whitespace", ZkChar::isWhitespace(c)},
        {"css-whitespace", ZkChar::isCssWhitespace(c)},
        {"space", ZkChar::isSpaceChar2(c)},
        {"fixed-width-space", ZkChar::isFixedWidthSpaceChar(c)},
        {"zero-width-space", ZkChar::isZeroWidthSpaceChar(c)},
        {"zero-width-control", ZkChar::isZeroWidthControlCode(c)},
        {"hard-break", ZkChar::isHardBreak(c)},
        {"hyphen", ZkChar::isHyphen(c, false)},
        {"hankaku", ZkChar::isHankaku(c)},
        {"zenkaku", ZkChar::isZenkaku(c)},
        {"half", ZkChar::isHalf(c)},
        {"punct", ZkChar::isPunct(c)},
        {"open-paren", ZkChar::isOpenParenEtc(c)},
        {"close-paren", ZkChar::isCloseParenEtc(c)},
        {"non-starter-jis", ZkChar::isNonStarterJIS(c)},
        {"symbol-jis", ZkChar::isSymbolJIS(c)},
        {"kana-kanji-cjk", ZkChar::isKanaKanjiCJK(c)},
        {"radical", ZkChar::isRadical(c)},
        {"letter", ZkChar::isLetter(c)},
        {"number", ZkChar::isNumber(c)},
        {"symbol", ZkChar::isSymbol(c)},
        {"control", ZkChar::isControl(c)},
        {"currency", ZkChar::isCurrencySymbol(c)},
        {"undefined", ZkChar::isUndefined(c)},
        {"math-operator", ZkChar::isMathOperator(c)},
        {"bullet", ZkChar::isBullet(c)},
        {"emoji", ZkChar::isEmoji(c, true)},
        {"variation-selector", ZkChar::isVariationSelectorCharacter(c) ||
                                   ZkChar::isIdeographicVariationSelectorCharacter(c)},
        {"no-vertical-form", ZkChar::isNoVerticalChar(c)},
    };
    std::cout << "  classes:";
    bool any = false;
    for (const Test& test : tests) {
        if (test.value) {
            std::cout << " " << test.name;
            any = true;
        }
    }
    std::cout << (any ? "\n" : " none\n");

    std::pair<uint8_t, uint8_t> bytes = ZkChar::getTR50ClassBytes(c);
    // Class 32 (transformed, else rotated) depends on the caller's flag: show both answers.
    auto describe = [](ZkChar::TR50Property plain, ZkChar::TR50Property flagged, int bits) {
        std::string text = orientationName(plain);
        if (flagged != plain)
            text += std::string(", ") + orientationName(flagged) + " with the flag";
        return text + " (class " + std::to_string(bits) + ")";
    };
    std::cout << "  vertical: stacked "
              << describe(ZkChar::getTR50SVO(c, nullptr, false),
                          ZkChar::getTR50SVO(c, nullptr, true), bytes.first)
              << "; mixed "
              << describe(ZkChar::getTR50MVO(c, nullptr, false),
                          ZkChar::getTR50MVO(c, nullptr, true), bytes.second)
              << "\n";
}

int charCommand(const Args& args) {
    if (args.empty())
        return usage("char");
    int status = 0;
    for (const std::string& arg : args) {
        UChar32 c = 0;
        if (!parseCodePoint(arg, c)) {
            status = fail("'" + arg + "' is no code point (write U+XXXX or one character)");
            continue;
        }
        printCodePoint(c);
    }
    return status;
}

const Registration s_char({"char", "char U+XXXX|CHARACTER...",
                           "prints the classes and the vertical orientation of code points",
                           charCommand});

} // namespace
} // namespace zktool
