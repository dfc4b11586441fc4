// zk: the command-line front end of the library. Commands live in the other files of tools/.
#include "command.h"

#include <algorithm>
#include <cstring>
#include <iostream>
#include <string>
#include <zkcommon/core/error.h>

namespace zktool {

namespace {
std::vector<Command>& commands() {
    static std::vector<Command> list;
    return list;
}

void printHelp(std::ostream& out) {
    out << "usage: zk COMMAND [ARGS...]\n\ncommands:\n";
    std::vector<Command> sorted = commands();
    std::sort(sorted.begin(), sorted.end(),
              [](const Command& a, const Command& b) { return std::strcmp(a.name, b.name) < 0; });
    for (const Command& command : sorted)
        out << "  " << command.usage << "\n      " << command.summary << "\n";
}
} // namespace

void registerCommand(const Command& command) {
    commands().push_back(command);
}

int fail(const std::string& message) {
    std::cerr << "zk: " << message << "\n";
    return 1;
}

std::string utf8(const icu::UnicodeString& text) {
    std::string out;
    return text.toUTF8String(out);
}

int usage(const char* name) {
    for (const Command& command : commands())
        if (std::strcmp(command.name, name) == 0)
            std::cerr << "usage: zk " << command.usage << "\n";
    return 2;
}

} // namespace zktool

int main(int argc, char** argv) {
    using namespace zktool;
    if (argc < 2 || !std::strcmp(argv[1], "help") || !std::strcmp(argv[1], "--help")) {
        printHelp(argc < 2 ? std::cerr : std::cout);
        return argc < 2 ? 2 : 0;
    }
    Args args(argv + 2, argv + argc);
    for (const Command& command : commands()) {
        if (std::strcmp(command.name, argv[1]) != 0)
            continue;
        try {
            return command.handler(args);
        } catch (const ZkCommonNS::ZkError& e) {
            return fail(utf8(e.getMessage()));
        } catch (const std::exception& e) {
            return fail(e.what());
        }
    }
    std::cerr << "zk: unknown command '" << argv[1] << "'\n";
    printHelp(std::cerr);
    return 2;
}
