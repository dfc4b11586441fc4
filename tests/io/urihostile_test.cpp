// Hostile references and special files: escaped dots and separators against containment and
// against what opens, FIFOs and devices, and the consistency of path detection.
#include "support.h"
#include "zkcommon/io/uri.h"
#include "zkcommon/text/util.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/stat.h>

using namespace ZkCommonNS;

namespace {
UnicodeString u(const std::string& text) {
    return UnicodeString::fromUTF8(text);
}
std::string opened(const ZkUri& uri) {
    std::unique_ptr<std::istream> in(uri.getIStream());
    return in ? readAll(*in) : std::string("(null)");
}
} // namespace

TEST(UriHostile, EscapedDotsAndSeparatorsNeverLeaveTheBase) {
    TempDir dir;
    dir.file("secret", "SECRET");
    ::mkdir((dir.path() + "/in").c_str(), 0700);
    ::mkdir((dir.path() + "/in/sub").c_str(), 0700);
    dir.file("in/sub/ok", "OK");
    const ZkUri base(u(dir.path() + "/in/base.xml"), ZkUri::URISTR_FILEPATH);
    const ZkUri folder(u(dir.path() + "/in/"), ZkUri::URISTR_FILEPATH);
    // clang-format off
    struct Case { const char* reference; bool inside; const char* content; } cases[] = {
        {"%2E%2E/secret", false, "SECRET"},  {"%2e%2e/secret", false, "SECRET"},
        {"%2E./secret", false, "SECRET"},    {".%2e/secret", false, "SECRET"},
        {"sub/%2E%2E/%2e%2E/secret", false, "SECRET"},
        {"..%2Fsecret", true, "(null)"},     {"..%2fsecret", true, "(null)"},
        {"%2E%2E%2Fsecret", true, "(null)"}, {"..%5Csecret", true, "(null)"},
        {"%2E%2E%5C%2E%2E%5Csecret", true, "(null)"},
        {"sub/%2E/ok", true, "OK"},          {"sub/%6Fk", true, "OK"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.reference);
        ZkUri resolved(base, u(c.reference));
        EXPECT_EQ(resolved.isDescendantOrSelf(folder), c.inside) << utf8(resolved.toString());
        EXPECT_EQ(opened(resolved), c.content);
    }
    // A literal ".." made without a base is a climb too.
    EXPECT_FALSE(ZkUri(u("file://" + dir.path() + "/in/../secret"), ZkUri::URISTR_URI)
                     .isDescendantOrSelf(folder));
    EXPECT_EQ(utf8(ZkUri::getLocalPath(u("file:///a/b%2Fc%5Cd%20e"))), "/a/b%2Fc%5Cd e");
}

TEST(UriHostile, SpecialFilesNeverOpen) {
    TempDir dir;
    const std::string fifo = dir.path() + "/fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    for (const std::string& path :
         {fifo, std::string("/dev/zero"), std::string("/dev/null"), dir.path()}) {
        SCOPED_TRACE(path);
        UnicodeString why;
        EXPECT_EQ(ZkUri(u(path), ZkUri::URISTR_FILEPATH).getIStream(nullptr, &why), nullptr);
        EXPECT_FALSE(why.isEmpty());
        EXPECT_EQ(ZkUri(u(path), ZkUri::URISTR_FILEPATH).getOStream(), nullptr);
        EXPECT_EQ(ZkUri(u(path), ZkUri::URISTR_FILEPATH).getFStream(), nullptr);
    }
    UnicodeString why;
    EXPECT_EQ(ZkUri(u(fifo), ZkUri::URISTR_FILEPATH).getIStream(nullptr, &why), nullptr);
    EXPECT_EQ(utf8(why), "not a regular file");
    // Refusing to write must not truncate: a regular file is cut only once it is known regular.
    const std::string kept = dir.file("kept", "data");
    std::unique_ptr<std::iostream> both(ZkUri(u(kept), ZkUri::URISTR_FILEPATH).getFStream());
    ASSERT_NE(both, nullptr);
    EXPECT_EQ(readAll(*both), "data");
}

TEST(UriHostile, PathsReadTheSameWithOrWithoutSpaceAndBase) {
    // clang-format off
    struct Case { const char* base; const char* text; const char* expected; } cases[] = {
        {"", " /a/b.xml", "file:///a/b.xml"},
        {"", " C:\\a.xml", "file:///C:/a.xml"},
        {"", "/a/x?y.xml#f?g", "file:///a/x%3Fy.xml#f?g"},
        {"file://host/d/a.xml", "/x.xml", "file://host/x.xml"},
        {"file://host/d/a.xml", "/etc", "file://host/etc"},
        {"file:///d/a.xml", "x?q", "file:///d/x?q"},
        {"file:///d/a.xml", "/x?q", "file:///x?q"},
        {"file:///d/a.xml", " /x", "file:///x"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        ZkUri uri = *c.base ? ZkUri(ZkUri(u(c.base)), u(c.text)) : ZkUri(u(c.text));
        EXPECT_EQ(utf8(uri.toString()), c.expected);
    }
    EXPECT_EQ(
        utf8(ZkUri(ZkUri(u("file://host/d/a.xml")), u("/x.xml"), ZkUri::URISTR_URI).toString()),
        "file://host/x.xml");
}

TEST(UriHostile, UnquoteUri) {
    // clang-format off
    const char* cases[][2] = {
        {"url(\"a b.png\")", "a b.png"}, {"url('a.png')", "a.png"}, {"url( a.png )", "a.png"},
        {"  url(x)  ", "x"},             {"a.png", "a.png"},        {"url(\"a%22b\")", "a%22b"},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c[0]);
        EXPECT_EQ(utf8(ZkUtil::unquoteUri(u(c[0]))), c[1]);
    }
    EXPECT_EQ(utf8(ZkUtil::unquoteUri(ZkUtil::quoteUri(u("a b.png")))), "a b.png");
}
