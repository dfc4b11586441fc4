// Opening resources through ZkUri: local files, missing files and directories, the caller's
// resolver, output and read-write files, content information and redirections.
#include "support.h"
#include "zkcommon/io/uri.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <string>
#include <unistd.h>

using namespace ZkCommonNS;

namespace {

UnicodeString u(const std::string& text) {
    return UnicodeString::fromUTF8(text);
}

// Serves URIs ending in ".mem" with the URI text itself, in pieces.
class MemoryResolver : public ZkUriReferenceResolver2 {
public:
    bool resolveReference(const UChar* uri, Writer writer, void* stream) override {
        ++m_calls;
        UnicodeString text(uri);
        if (!text.endsWith(u".mem")) {
            writer(5, "noise", stream); // dropped: the answer is false
            return false;
        }
        std::string bytes;
        text.toUTF8String(bytes);
        writer(3, bytes.data(), stream);
        writer(0, nullptr, stream);
        writer(static_cast<int>(bytes.size()) - 3, bytes.data() + 3, stream);
        return true;
    }
    int m_calls = 0;
};

// Installs a resolver for one test and restores the previous one.
class ResolverScope {
public:
    explicit ResolverScope(ZkUriReferenceResolver2* resolver)
        : m_previous(ZkUri::setUriReferenceResolver2(resolver)) {}
    ~ResolverScope() { ZkUri::setUriReferenceResolver2(m_previous); }

private:
    ZkUriReferenceResolver2* m_previous;
};

} // namespace

TEST(UriStream, OpensLocalFiles) {
    TempDir dir;
    std::string path = dir.file("a b.txt", std::string("bytes\0\r\n\xFF", 9));
    struct Case {
        std::string text;
        ZkUri::URISTRTYPE type;
    } cases[] = {
        {path, ZkUri::URISTR_AUTO},
        {path, ZkUri::URISTR_FILEPATH},
        {"file://" + dir.path() + "/a%20b.txt", ZkUri::URISTR_URI},
        {"file://localhost" + dir.path() + "/a%20b.txt#frag", ZkUri::URISTR_URI},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        ZkUri::ContentInfo info;
        std::unique_ptr<std::istream> in(ZkUri(u(c.text), c.type).getIStream(&info));
        ASSERT_NE(nullptr, in);
        EXPECT_EQ(std::string("bytes\0\r\n\xFF", 9), readAll(*in));
        EXPECT_EQ(9, info.length);
    }
}

TEST(UriStream, MissingFilesAndDirectoriesGiveNull) {
    TempDir dir;
    const std::string cases[] = {
        dir.path() + "/none.txt",
        dir.path(),
        dir.path() + "/",
        "file:///no/such/file.xml",
        "no-such-relative-file.xml",
        "http://example.invalid/a.xml",
        "jar:file:///no/such.zip!/a.xml",
        "data:,abc",
        "mailto:someone@example.invalid",
    };
    for (const std::string& text : cases) {
        SCOPED_TRACE(text);
        std::unique_ptr<std::istream> in;
        EXPECT_NO_THROW(in.reset(ZkUri(u(text)).getIStream()));
        EXPECT_EQ(nullptr, in);
    }
    EXPECT_EQ(nullptr, std::unique_ptr<std::istream>(ZkUri().getIStream()));
    // No file can be named with U+0000, written or escaped.
    EXPECT_EQ(nullptr,
              std::unique_ptr<std::istream>(
                  ZkUri(UnicodeString(u"/tmp\0x", 6), ZkUri::URISTR_FILEPATH).getIStream()));
    EXPECT_EQ(nullptr, std::unique_ptr<std::istream>(
                           ZkUri(u"file:///tmp%00x", ZkUri::URISTR_URI).getIStream()));
    EXPECT_EQ(nullptr, std::unique_ptr<std::ostream>(
                           ZkUri(u"file:///tmp%00x", ZkUri::URISTR_URI).getOStream()));
}

TEST(UriStream, LongPathsOpen) {
    TempDir dir;
    std::string path = dir.path();
    while (path.size() < 300) {
        path += "/" + std::string(40, 'd');
        ASSERT_EQ(0, ::mkdir(path.c_str(), 0700));
    }
    std::ofstream(path + "/f.txt") << "deep";
    ZkUri uri(u(path + "/f.txt"), ZkUri::URISTR_FILEPATH);
    ASSERT_GE(uri.getLocalPath().length(), 260);
    std::unique_ptr<std::istream> in(uri.getIStream());
    ASSERT_NE(nullptr, in);
    EXPECT_EQ("deep", readAll(*in));
}

TEST(UriStream, ResolverComesFirst) {
    MemoryResolver resolver;
    ResolverScope scope(&resolver);
    EXPECT_EQ(&resolver, ZkUri::getUriReferenceResolver2());
    std::unique_ptr<std::istream> in(ZkUri(u"http://h/x.mem", ZkUri::URISTR_URI).getIStream());
    ASSERT_NE(nullptr, in);
    EXPECT_EQ("http://h/x.mem", readAll(*in));
    in->clear();
    in->seekg(7);
    EXPECT_EQ("h/x.mem", readAll(*in));

    // A resolver that does not know the URI lets the local file through.
    TempDir dir;
    std::string path = dir.file("plain.txt", "plain");
    std::unique_ptr<std::istream> file(ZkUri(u(path)).getIStream());
    ASSERT_NE(nullptr, file);
    EXPECT_EQ("plain", readAll(*file));
    EXPECT_EQ(2, resolver.m_calls);
    MemoryResolver other;
    EXPECT_EQ(&resolver, ZkUri::setUriReferenceResolver2(&other));
    EXPECT_EQ(&other, ZkUri::setUriReferenceResolver2(&resolver));
}

TEST(UriStream, OutputFiles) {
    TempDir dir;
    ZkUri uri(u(dir.path() + "/out put.bin"), ZkUri::URISTR_FILEPATH);
    {
        std::unique_ptr<std::ostream> out(uri.getOStream());
        ASSERT_NE(nullptr, out);
        *out << "one";
    }
    {
        std::unique_ptr<std::ostream> out(uri.getOStream(true));
        ASSERT_NE(nullptr, out);
        *out << "two";
    }
    std::unique_ptr<std::istream> in(uri.getIStream());
    ASSERT_NE(nullptr, in);
    EXPECT_EQ("onetwo", readAll(*in));
    {
        std::unique_ptr<std::ostream> out(uri.getOStream(false));
        *out << "3";
    }
    in.reset(uri.getIStream());
    EXPECT_EQ("3", readAll(*in));

    EXPECT_EQ(nullptr,
              std::unique_ptr<std::ostream>(ZkUri(u"http://h/a", ZkUri::URISTR_URI).getOStream()));
    EXPECT_EQ(nullptr,
              std::unique_ptr<std::ostream>(
                  ZkUri(u(dir.path() + "/no/dir/x"), ZkUri::URISTR_FILEPATH).getOStream()));
    EXPECT_EQ(nullptr, std::unique_ptr<std::ostream>(ZkUri().getOStream()));
}

TEST(UriStream, ReadWriteFiles) {
    TempDir dir;
    ZkUri uri(u(dir.path() + "/rw.bin"), ZkUri::URISTR_FILEPATH);
    {
        std::unique_ptr<std::iostream> io(uri.getFStream());
        ASSERT_NE(nullptr, io);
        *io << "hello";
        io->seekg(1);
        EXPECT_EQ('e', io->get());
    }
    {
        std::unique_ptr<std::iostream> io(uri.getFStream());
        ASSERT_NE(nullptr, io);
        // An existing file is not truncated.
        EXPECT_EQ("hello", readAll(*io));
    }
    EXPECT_EQ(nullptr, std::unique_ptr<std::iostream>(
                           ZkUri(u"https://h/a", ZkUri::URISTR_URI).getFStream()));
    EXPECT_EQ(nullptr, std::unique_ptr<std::iostream>(
                           ZkUri(u(dir.path()), ZkUri::URISTR_FILEPATH).getFStream()));
}

TEST(UriStream, ContentInfoDefaultsAndCopies) {
    ZkUri::ContentInfo empty;
    EXPECT_EQ(-1, empty.length);
    EXPECT_EQ(static_cast<int32_t>(0x80000000u), empty.connectTimeout);
    EXPECT_LT(empty.connectRetries, 0);
    EXPECT_LT(empty.connectBackoff, 0);
    ZkUri::ContentInfo filled;
    filled.charset = u"UTF-8";
    filled.length = 42;
    ZkUri::ContentInfo copy(&filled);
    EXPECT_EQ(UnicodeString(u"UTF-8"), copy.charset);
    EXPECT_EQ(42, copy.length);
    EXPECT_EQ(-1, ZkUri::ContentInfo(nullptr).length);
}

TEST(UriStream, RedirectionLeavesLocalUrisAlone) {
    const char* cases[] = {"file:///a/b.xml", "rel/a.xml", "data:,x", ""};
    for (const char* text : cases) {
        SCOPED_TRACE(text);
        ZkUri uri(u(text), ZkUri::URISTR_URI);
        ZkUri before(uri);
        uri.checkRedirection();
        EXPECT_EQ(before, uri);
    }
    ZkUri::cleanup();
    ZkUri::cleanup();
}
