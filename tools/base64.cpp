// zk base64: encodes a file to Base64 text or decodes Base64 text to bytes.
#include "command.h"

#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <zkcommon/io/uri.h>
#include <zkcommon/text/util.h>

namespace zktool {
namespace {

using namespace ZkCommonNS;

int base64Command(const Args& args) {
    if (args.size() != 2 || (args[0] != "encode" && args[0] != "decode"))
        return usage("base64");
    const std::string& path = args[1];
    std::unique_ptr<std::istream> file;
    std::istream* in = &std::cin;
    if (path != "-") {
        // Through the library's door: a FIFO or device is refused, not read for ever.
        UnicodeString errorText;
        file.reset(ZkUri(UnicodeString::fromUTF8(path), ZkUri::URISTR_FILEPATH)
                       .getIStream(nullptr, &errorText));
        if (!file)
            return fail("cannot open '" + path + "'" +
                        (errorText.isEmpty() ? "" : ": " + utf8(errorText)));
        in = file.get();
    }
    if (args[0] == "encode") {
        UnicodeString text = ZkUtil::encodeBase64(*in);
        std::cout << utf8(text) << "\n";
    } else {
        std::string raw((std::istreambuf_iterator<char>(*in)), std::istreambuf_iterator<char>());
        UnicodeString text = UnicodeString::fromUTF8(raw);
        ZkUtil::decodeBase64(text.getBuffer(), text.length(), std::cout);
    }
    std::cout.flush();
    return std::cout ? 0 : fail("cannot write the output");
}

const Registration s_base64({"base64", "base64 encode|decode FILE",
                             "encodes FILE to Base64 text, or decodes Base64 text in FILE "
                             "(\"-\" reads standard input)",
                             base64Command});

} // namespace
} // namespace zktool
