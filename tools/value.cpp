// zk value and zk color: the typed value the value parser makes of a text, and a colour in
// every model.
#include "command.h"

#include <cstdio>
#include <iostream>
#include <zkcommon/text/util.h>
#include <zkcommon/values/color.h>
#include <zkcommon/values/parser.h>

namespace zktool {
namespace {

using namespace ZkCommonNS;

const char* typeName(ZkValueType type) {
    static const char* const kNames[] = {"Null",   "Integer",  "Real",  "Name",
                                         "String", "RCObject", "Array", "Compound"};
    return kNames[type & 7];
}

std::string unitText(ZkUnitType unit) {
    static const char* const kMarkers[] = {"character", "literal", "uri", "name", "color"};
    std::string text = std::to_string(static_cast<int>(unit));
    std::string word = utf8(ZkValue::getUnitString(unit));
    if (unit == UnitNone)
        word = "none";
    else if (unit == UnitNumber)
        word = "number";
    else if (unit >= UnitChar && unit <= UnitColor)
        word = kMarkers[unit - UnitChar];
    else if (unit == 62)
        word = "format";
    else if (unit == 63)
        word = "local";
    return word.empty() ? text : text + " (" + word + ")";
}

void printValue(const ZkValue& value, const std::string& indent) {
    std::cout << indent << "type:   " << typeName(value.getValueType()) << "\n"
              << indent << "unit:   " << unitText(value.getUnitType()) << "\n"
              << indent << "text:   " << utf8(value.toString()) << "\n";
    if (value.isColor())
        std::cout << indent << "color:  " << utf8(value.getColorValue(true).toString(true, true))
                  << "\n";
    if (value.isArray()) {
        for (int i = 0; i < value.getArrayCount(); ++i) {
            std::cout << indent << "item " << i << ":\n";
            printValue(value.getNthItem(i), indent + "  ");
        }
    } else if (value.isCompound() && !value.isColor()) {
        ZkNamedValueMapIterator it(value.getNamedValueMap());
        while (it.hasNext()) {
            const ZkNamedValue& item = it.next();
            std::string name = utf8(item.getName().toString());
            std::cout << indent << "key " << (name.empty() ? "." : name) << ":\n";
            printValue(item.getValue(), indent + "  ");
        }
    }
}

int valueCommand(const Args& args) {
    bool css = !args.empty() && args[0] == "--css";
    if (args.size() != (css ? 2u : 1u))
        return usage("value");
    UnicodeString text = UnicodeString::fromUTF8(args.back());
    ZkValue value = ZkParser::parseCompound(text, css ? ZkTokenizer::TokenizerCSSComment
                                                      : ZkTokenizer::TokenizerDefault);
    printValue(value, "");
    return 0;
}

std::string fixed(float x) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.4g", static_cast<double>(x));
    return buffer;
}

int colorCommand(const Args& args) {
    if (args.size() != 1)
        return usage("color");
    UnicodeString text = UnicodeString::fromUTF8(args[0]);
    bool clamped = false;
    ZkValue parsed = ZkParser::parseColor(text, /*allowIcc=*/true, &clamped);
    ZkColor color = parsed.getColorValue(true);
    if (color.isInvalid())
        return fail("'" + args[0] + "' is no colour");
    unsigned int word = color;
    ZkColor cmyk = ZkColor::rgb2cmyk(word);
    ZkColor gray = ZkColor::rgb2gray(word);
    std::string model = utf8(color.getProfileType().toString());
    std::cout << "word:        0x" << utf8(ZkUtil::toHexString(static_cast<int>(word), 8)) << "\n"
              << "model:       " << (model.empty() ? "RGB" : model) << "\n"
              << "text:        " << utf8(color.toString(false, false, false)) << "\n"
              << "css:         " << utf8(color.toString(true, false, false)) << "\n"
              << "css model:   " << utf8(color.toString(true, true, false)) << "\n"
              << "name:        " << utf8(color.getColorName(false)) << "\n";
    if (color.isTransparent() || color.isCurrentColor() || word == ZkColor::kInvert)
        return 0;
    std::cout << "rgb:         " << color.getR() << " " << color.getG() << " " << color.getB()
              << "\n"
              << "rgb float:   " << fixed(color.getRex()) << " " << fixed(color.getGex()) << " "
              << fixed(color.getBex()) << "\n"
              << "bgr:         0x" << utf8(ZkUtil::toHexString(static_cast<int>(color.getBGR()), 6))
              << "\n"
              << "alpha:       " << (color.hasAlpha() ? fixed(color.getAlpha()) : "none") << "\n"
              << "cmyk:        " << fixed(cmyk.getC()) << " " << fixed(cmyk.getM()) << " "
              << fixed(cmyk.getY()) << " " << fixed(cmyk.getK()) << "\n"
              << "gray:        " << fixed(gray.getGrayscale()) << "\n"
              << "dark, light: " << utf8(color.getDark().toString()) << " "
              << utf8(color.getLight().toString()) << "\n"
              << "inverted:    " << utf8(color.invert().toString()) << "\n";
    if (color.isSeparation())
        std::cout << "tint:        " << fixed(color.getSeparationTint()) << " of "
                  << utf8(color.getSeparationColorName()) << " shows as 0x"
                  << utf8(ZkUtil::toHexString(static_cast<int>(color.getSeparationRGB()), 6))
                  << "\n";
    if (clamped)
        std::cout << "clamped:     a component was out of range\n";
    return 0;
}

const Registration s_value({"value", "value [--css] TEXT",
                            "prints the type, unit and text of the value parsed from TEXT (a "
                            "list or {key: value} compound; --css reads CSS syntax)",
                            valueCommand});
const Registration s_color({"color", "color TEXT",
                            "prints the colour of TEXT (a keyword, #hex or colour function) in "
                            "every model",
                            colorCommand});

} // namespace
} // namespace zktool
