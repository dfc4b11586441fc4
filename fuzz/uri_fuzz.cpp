// Fuzzes URI construction, reference resolution, local paths, escaping and relative references.
// Input: one byte choosing the string type, then the base and the reference separated by a
// line feed (no line feed: the whole text is the reference).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <zkcommon/io/uri.h>

using namespace ZkCommonNS;

namespace {

void check(bool condition) {
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1 || size > 4096)
        return 0;
    const auto type = static_cast<ZkUri::URISTRTYPE>(data[0] % 5);
    std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    size_t newline = text.find('\n');
    UnicodeString baseText = UnicodeString::fromUTF8(
        newline == std::string::npos ? std::string() : text.substr(0, newline));
    UnicodeString reference =
        UnicodeString::fromUTF8(newline == std::string::npos ? text : text.substr(newline + 1));

    ZkUri base(baseText, ZkUri::URISTR_URI);
    ZkUri alone(reference, type);
    ZkUri resolved(base, reference, type);

    // Escaping always yields a valid URI, and unescaping never grows the text.
    UnicodeString escaped = ZkUri::escape(reference, (data[0] & 0x80) != 0);
    check(ZkUri::isValidUri(escaped));
    check(ZkUri::unescape(escaped).length() <= escaped.length());
    check(ZkUri::unescape(reference).length() <= reference.length());

    for (const ZkUri* uri : {&alone, &resolved, &base}) {
        (void)uri->getLocalPath();
        UnicodeString shortened = uri->getLocalPath(1 + data[0] % 40);
        (void)shortened;
        // Schemes are interned for the life of the process: only the known ones are asked
        // for, so that random schemes do not fill the name table.
        if (uri->isHttpScheme() || uri->isFileScheme() || uri->isJarScheme())
            check(!uri->getScheme().isEmpty());
        (void)uri->isAbsolute();
        (void)uri->getBaseString();
        (void)uri->getFileName();
        (void)uri->getExtension();
        (void)uri->isFile();
        (void)uri->getRelativeUri(base.toString());
        (void)uri->isDescendantOrSelf(base);
        (void)uri->isSameFile(base);
        ZkUri copy(*uri);
        UnicodeString extension(u"pdf");
        copy.setExtension(&extension);
        copy.addFileNameSuffix(data[0], u"-");
        (void)copy.removeFragment(true);
        check(copy.toString().indexOf(u'#') < 0);
    }
    // Resolving against the result again must terminate and keep a scheme it had.
    ZkUri again(resolved, reference, type);
    if (resolved.isHttpScheme() && reference.indexOf(u':') < 0 && !reference.startsWith(u"#"))
        check(again.isHttpScheme() || again.toString().startsWith(u"#"));
    return 0;
}
