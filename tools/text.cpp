// zk counter, zk number, zk kansuji and zk lang: counter styles, number formatting, Japanese
// numerals, and the language and script of a text.
#include "command.h"

#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <zkcommon/text/counterstyle.h>
#include <zkcommon/text/lang.h>
#include <zkcommon/text/util.h>

namespace zktool {
namespace {

using namespace ZkCommonNS;

UnicodeString fromArg(const std::string& arg) {
    return UnicodeString::fromUTF8(arg);
}

bool parseInteger(const std::string& text, long long& value) {
    if (text.empty())
        return false;
    errno = 0;
    char* end = nullptr;
    value = std::strtoll(text.c_str(), &end, 10);
    return errno == 0 && end && *end == 0;
}

int counterCommand(const Args& args) {
    if (args.size() < 2)
        return usage("counter");
    ZkName name(fromArg(args[0]));
    const ZkUtil::CounterStyle* style = ZkUtil::getPredefinedCounterStyle(name, nullptr);
    if (!style)
        return fail("'" + args[0] + "' is not a predefined counter style");
    int status = 0;
    for (size_t i = 1; i < args.size(); ++i) {
        long long value = 0;
        if (!parseInteger(args[i], value)) {
            status = fail("'" + args[i] + "' is not an integer");
            continue;
        }
        // Fallbacks reach the other predefined styles by name.
        std::cout << args[i] << "\t'"
                  << utf8(style->formatNumber(value, &ZkUtil::getPredefinedCounterStyle, nullptr,
                                              false))
                  << "'\n";
    }
    return status;
}

int numberCommand(const Args& args) {
    if (args.size() < 2)
        return usage("number");
    UnicodeString format = fromArg(args[0]);
    UnicodeString separator;
    int groupSize = 0;
    ZkLang lang;
    ZkNameEnum letterValue = ZKN_EMPTY;
    std::vector<std::string> numbers;
    for (size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--lang" && i + 1 < args.size()) {
            lang = ZkLang(fromArg(args[++i]));
        } else if (arg == "--group" && i + 2 < args.size()) {
            separator = fromArg(args[++i]);
            long long size = 0;
            if (!parseInteger(args[++i], size) || size < 0 || size > 1000)
                return fail("'" + args[i] + "' is not a group size");
            groupSize = static_cast<int>(size);
        } else if (arg == "--letter-value" && i + 1 < args.size()) {
            const std::string& word = args[++i];
            if (word == "alphabetic")
                letterValue = ZKN_alphabetic;
            else if (word == "traditional")
                letterValue = ZKN_traditional;
            else
                return fail("letter value '" + word + "' is neither alphabetic nor traditional");
        } else if (arg.size() > 1 && arg[0] == '-' && arg[1] == '-') {
            return usage("number");
        } else {
            numbers.push_back(arg);
        }
    }
    if (numbers.empty())
        return usage("number");
    int status = 0;
    for (const std::string& text : numbers) {
        long long value = 0;
        if (!parseInteger(text, value)) {
            status = fail("'" + text + "' is not an integer");
            continue;
        }
        std::cout << text << "\t"
                  << utf8(ZkUtil::formatNumber(value, format, separator, groupSize, lang,
                                               letterValue))
                  << "\n";
    }
    return status;
}

int kansujiCommand(const Args& args) {
    if (args.size() < 2)
        return usage("kansuji");
    ZkName style(fromArg(args[0]));
    if (style != ZKN_simple && style != ZKN_grouping && style != ZKN_readable)
        return fail("style '" + args[0] + "' is not simple, grouping or readable");
    ZkName digits(ZKN_kanji);
    UnicodeString marks;
    UnicodeString text;
    for (size_t i = 1; i < args.size(); ++i) {
        if (args[i] == "--digits" && i + 1 < args.size())
            digits = ZkName(fromArg(args[++i]));
        else if (args[i] == "--marks" && i + 1 < args.size())
            marks = fromArg(args[++i]);
        else
            text.append(text.isEmpty() ? UnicodeString() : UnicodeString(u" "))
                .append(fromArg(args[i]));
    }
    std::cout << utf8(ZkUtil::convertKansuji(text, style, digits, marks)) << "\n";
    return 0;
}

int langCommand(const Args& args) {
    if (args.empty())
        return usage("lang");
    for (const std::string& arg : args) {
        ZkLang lang(fromArg(arg));
        ZkScript script(fromArg(arg));
        ZkScript ofText = ZkScript::getScriptFromText(fromArg(arg), false);
        std::cout << arg << "\n"
                  << "  language:  " << utf8(lang.toFullString())
                  << (lang.isNullLang()  ? " (null)"
                      : lang.isInvalid() ? " (invalid)"
                                         : "")
                  << "\n"
                  << "  iso3:      " << utf8(lang.toISO3String()) << "\n"
                  << "  script:    " << utf8(script.toString()) << " ("
                  << static_cast<int>(script.getUScriptCode()) << ", "
                  << utf8(script.getScriptName()) << ")\n"
                  << "  classes:  ";
        struct {
            const char* name;
            bool on;
        } classes[] = {{"cjk", script.isCJK()},
                       {"cjk-justify", script.isCJKJustify()},
                       {"hanging-baseline", script.isHangingBaseline()},
                       {"ja", script.isJA()},
                       {"kana", script.isKanaScript()},
                       {"latin-group", script.isLatinGroup()},
                       {"sc", script.isSC()},
                       {"tc", script.isTC()},
                       {"typical", lang.isTypicalScript(script)}};
        bool any = false;
        for (const auto& entry : classes) {
            if (entry.on) {
                std::cout << " " << entry.name;
                any = true;
            }
        }
        std::cout << (any ? "" : " none") << "\n"
                  << "  of text:   " << utf8(ofText.toString()) << "\n";
    }
    return 0;
}

const Registration s_counter({"counter", "counter STYLE N...",
                              "prints each number as a marker of a predefined counter style",
                              counterCommand});
const Registration s_number({"number",
                             "number FORMAT N... [--lang L] [--group SEP SIZE] "
                             "[--letter-value alphabetic|traditional]",
                             "formats numbers by an XSL-FO/XSLT format token", numberCommand});
const Registration s_kansuji({"kansuji",
                              "kansuji simple|grouping|readable TEXT [--digits kanji|latin|"
                              "DIGITS] [--marks MARKS]",
                              "rewrites the digits of a text as Japanese numerals",
                              kansujiCommand});
const Registration s_lang({"lang", "lang TEXT...",
                           "prints the normalised language, its ISO3 code, script and classes",
                           langCommand});

} // namespace
} // namespace zktool
