// The zk program's command registry: each tools/*.cpp file registers its commands statically.
#ifndef ZKCOMMON_TOOLS_COMMAND_H
#define ZKCOMMON_TOOLS_COMMAND_H

#include <string>
#include <vector>
#include <zkcommon/core/unicode.h>

namespace zktool {

using Args = std::vector<std::string>;
/// A command's body: the arguments after its name; returns the exit status.
using Handler = int (*)(const Args& args);

struct Command {
    const char* name;
    const char* usage;
    const char* summary;
    Handler handler;
};

/// Registers `command`; used through a namespace-scope `Registration` object.
void registerCommand(const Command& command);

struct Registration {
    explicit Registration(const Command& command) { registerCommand(command); }
};

/// Prints "zk: " and `message` to standard error; returns 1 for use as an exit status.
int fail(const std::string& message);

/// The UTF-8 form of `text`, for printing.
std::string utf8(const icu::UnicodeString& text);

/// Prints the usage line of `command`; returns 2.
int usage(const char* command);

} // namespace zktool

#endif // ZKCOMMON_TOOLS_COMMAND_H
