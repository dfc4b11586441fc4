// zk name: look up a built-in name by number or by text.
#include "command.h"

#include <cstdlib>
#include <iostream>
#include <zkcommon/core/name.h>

namespace zktool {
namespace {

using namespace ZkCommonNS;

bool parseNumber(const std::string& text, long& number) {
    if (text.empty() || text.size() > 9)
        return false;
    char* end = nullptr;
    number = std::strtol(text.c_str(), &end, 10);
    return *end == '\0' && text[0] != '-' && text[0] != '+';
}

int nameCommand(const Args& args) {
    if (args.empty())
        return usage("name");
    int status = 0;
    for (const std::string& arg : args) {
        long number = 0;
        if (parseNumber(arg, number)) {
            const UnicodeString& text = ZkNameTable::getBuiltinNameString(ZkNameEnum(number));
            if (text.isEmpty()) {
                status = fail("no built-in name has the number " + arg);
                continue;
            }
            std::cout << utf8(text) << "\n";
        } else {
            ZkNameEnum name = ZkNameTable::getBuiltinNameEnum(UnicodeString::fromUTF8(arg));
            if (name == ZKN_EMPTY) {
                status = fail("'" + arg + "' is not a built-in name");
                continue;
            }
            std::cout << int(name) << "\n";
        }
    }
    return status;
}

const Registration s_name({"name", "name NUMBER|TEXT...",
                           "prints the text of a built-in name number, or the number of a text",
                           nameCommand});

} // namespace
} // namespace zktool
