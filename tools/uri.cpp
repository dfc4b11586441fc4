// zk uri and zk cat: resolve references, show local paths, and print resources opened through
// ZkUri::getIStream.
#include "command.h"

#include <iostream>
#include <memory>
#include <zkcommon/io/uri.h>

namespace zktool {
namespace {

using namespace ZkCommonNS;

UnicodeString fromArg(const std::string& arg) {
    return UnicodeString::fromUTF8(arg);
}

int uriCommand(const Args& args) {
    if (args.empty())
        return usage("uri");
    const std::string& action = args[0];
    if (action == "resolve" && args.size() == 3) {
        ZkUri base(fromArg(args[1]));
        std::cout << utf8(ZkUri(base, fromArg(args[2])).toString()) << "\n";
        return 0;
    }
    if (action == "path" && args.size() >= 2 && args.size() <= 3) {
        int maxLength = 0;
        if (args.size() == 3) {
            try {
                maxLength = std::stoi(args[2]);
            } catch (const std::exception&) {
                return fail("'" + args[2] + "' is not a length");
            }
        }
        std::cout << utf8(ZkUri(fromArg(args[1])).getLocalPath(maxLength)) << "\n";
        return 0;
    }
    if (action == "show" && args.size() == 2) {
        ZkUri uri(fromArg(args[1]));
        std::cout << "uri:      " << utf8(uri.toString()) << "\n"
                  << "scheme:   " << utf8(uri.getScheme().toString()) << "\n"
                  << "path:     " << utf8(uri.getLocalPath()) << "\n"
                  << "base:     " << utf8(uri.getBaseString()) << "\n"
                  << "file:     " << utf8(uri.getFileName()) << "\n"
                  << "local:    " << (uri.isFile() ? "yes" : "no") << "\n"
                  << "exists:   " << (uri.isFileExists() ? "yes" : "no") << "\n"
                  << "remote:   " << (uri.isRemote() ? "yes" : "no") << "\n";
        return 0;
    }
    if (action == "relative" && args.size() == 3) {
        ZkUri uri(fromArg(args[1]));
        std::cout << utf8(uri.getRelativeUri(ZkUri(fromArg(args[2])).toString())) << "\n";
        return 0;
    }
    return usage("uri");
}

int catCommand(const Args& args) {
    if (args.empty())
        return usage("cat");
    int status = 0;
    for (const std::string& arg : args) {
        ZkUri uri(fromArg(arg));
        UnicodeString errorText;
        std::unique_ptr<std::istream> in(uri.getIStream(nullptr, &errorText));
        if (!in) {
            std::string reason = errorText.isEmpty() ? "" : ": " + utf8(errorText);
            status = fail("cannot open " + utf8(uri.toString()) + reason);
            continue;
        }
        char buffer[8192];
        while (in->read(buffer, sizeof(buffer)), in->gcount() > 0)
            std::cout.write(buffer, in->gcount());
    }
    std::cout.flush();
    return status;
}

const Registration s_uri({"uri",
                          "uri resolve BASE REF | path URI [MAXLENGTH] | show URI | "
                          "relative URI BASE",
                          "resolves a reference, prints a local path (shortened to MAXLENGTH), "
                          "the pieces of a URI, or the reference from BASE to URI",
                          uriCommand});
const Registration s_cat({"cat", "cat URI...",
                          "prints each resource as opened by the library (files, resolver)",
                          catCommand});

} // namespace
} // namespace zktool
