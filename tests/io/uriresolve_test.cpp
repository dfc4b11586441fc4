// Reference resolution against a base: the normal examples of RFC 3986 section 5.4.1, the
// library's file, drive and archive repairs, and relative references.
#include "support.h"
#include "zkcommon/io/uri.h"

#include <gtest/gtest.h>
#include <string>

using namespace ZkCommonNS;

namespace {

struct ResolveCase {
    const char* base;
    const char* reference;
    const char* expected;
};

void checkResolution(const ResolveCase* cases, size_t count, ZkUri::URISTRTYPE type) {
    for (size_t i = 0; i < count; ++i) {
        const ResolveCase& c = cases[i];
        SCOPED_TRACE(std::string(c.base) + " + " + c.reference);
        ZkUri base(UnicodeString::fromUTF8(c.base), ZkUri::URISTR_URI);
        ZkUri resolved(base, UnicodeString::fromUTF8(c.reference), type);
        EXPECT_EQ(c.expected, utf8(resolved.toString()));
    }
}

} // namespace

TEST(UriResolve, Rfc3986NormalExamples) {
    const ResolveCase cases[] = {
        // A single letter before ":" is a drive letter, never a scheme, so "g:h" is a relative
        // path segment here.
        {"http://a/b/c/d;p?q", "g:h", "http://a/b/c/g:h"},
        {"http://a/b/c/d;p?q", "g", "http://a/b/c/g"},
        {"http://a/b/c/d;p?q", "./g", "http://a/b/c/g"},
        {"http://a/b/c/d;p?q", "g/", "http://a/b/c/g/"},
        {"http://a/b/c/d;p?q", "/g", "http://a/g"},
        {"http://a/b/c/d;p?q", "//g", "http://g"},
        // A query-only reference replaces the last segment like any other relative path.
        {"http://a/b/c/d;p?q", "?y", "http://a/b/c/?y"},
        {"http://a/b/c/d;p?q", "g?y", "http://a/b/c/g?y"},
        // A reference that is only a fragment comes back alone: it points into the current
        // document, whatever the base.
        {"http://a/b/c/d;p?q", "#s", "#s"},
        {"http://a/b/c/d;p?q", "g#s", "http://a/b/c/g#s"},
        {"http://a/b/c/d;p?q", "g?y#s", "http://a/b/c/g?y#s"},
        {"http://a/b/c/d;p?q", ";x", "http://a/b/c/;x"},
        {"http://a/b/c/d;p?q", "g;x", "http://a/b/c/g;x"},
        {"http://a/b/c/d;p?q", "g;x?y#s", "http://a/b/c/g;x?y#s"},
        {"http://a/b/c/d;p?q", "", "http://a/b/c/d;p?q"},
        {"http://a/b/c/d;p?q", ".", "http://a/b/c/"},
        {"http://a/b/c/d;p?q", "./", "http://a/b/c/"},
        {"http://a/b/c/d;p?q", "..", "http://a/b/"},
        {"http://a/b/c/d;p?q", "../", "http://a/b/"},
        {"http://a/b/c/d;p?q", "../g", "http://a/b/g"},
        {"http://a/b/c/d;p?q", "../..", "http://a/"},
        {"http://a/b/c/d;p?q", "../../", "http://a/"},
        {"http://a/b/c/d;p?q", "../../g", "http://a/g"},
    };
    checkResolution(cases, sizeof(cases) / sizeof(cases[0]), ZkUri::URISTR_URI);
}

TEST(UriResolve, DotSegmentsAboveTheRootStay) {
    // Nothing is invented above the root: a leading "/.." without a segment before it stays.
    const ResolveCase cases[] = {
        {"http://a/b/c/d;p?q", "../../../g", "http://a/../g"},
        {"http://a/b/c/d;p?q", "/./g", "http://a/g"},
        {"http://a/b/c/d;p?q", "g.", "http://a/b/c/g."},
        {"http://a/b/c/d;p?q", "..g", "http://a/b/c/..g"},
        {"http://a/b/c/d;p?q", "./g/.", "http://a/b/c/g/"},
        {"http://a/b/c/d;p?q", "g/./h", "http://a/b/c/g/h"},
        {"http://a/b/c/d;p?q", "g/../h", "http://a/b/c/h"},
        {"http://a/b/c/d;p?q", "g;x=1/./y", "http://a/b/c/g;x=1/y"},
        {"http://a/b/c/d;p?q", "g;x=1/../y", "http://a/b/c/y"},
        {"http://a/b/c/d;p?q", "g?y/./x", "http://a/b/c/g?y/./x"},
        {"http://a/b/c/d;p?q", "g#s/../x", "http://a/b/c/g#s/../x"},
    };
    checkResolution(cases, sizeof(cases) / sizeof(cases[0]), ZkUri::URISTR_URI);
}

TEST(UriResolve, SchemesHostsAndArchives) {
    const ResolveCase cases[] = {
        {"http://a", "a", "http://a/a"},
        {"HTTP://a/b", "c", "http://a/c"},
        {"https://h/x/y.html?q=1", "z.css", "https://h/x/z.css"},
        {"http://a/b/c", "https://other/x", "https://other/x"},
        {"jar:file:///a.zip!/b/c.xml", "../d.xml", "jar:file:///a.zip!/d.xml"},
        {"jar:file:///a.zip!/b/c.xml", "e.xml", "jar:file:///a.zip!/b/e.xml"},
        {"jar:file:///a.zip!/b/c.xml", "/f.xml", "jar:file:///a.zip!/f.xml"},
        {"file:///a/b.xml", "jar:c.zip!/d.xml", "jar:file:///a/c.zip!/d.xml"},
        {"urn:a/b", "c", "urn:a/c"},
        {"urn:isbn", "x", "urn:x"},
        // Found by fuzzing: a base of scheme and path without a slash kept losing its scheme
        // when a result was used as the next base.
        {"http:linear-gradient(\xEF\xBF\xBD\xEF\xBF\xBD"
         "c/d;p?q",
         "../g?y#s", "http:g?y#s"},
        {"http:g?y#s", "../g?y#s", "http:../g?y#s"},
        {"dir/a.xml", "b.xml", "dir/b.xml"},
        {"a.xml", "b.xml", "b.xml"},
        {"a/b/c.xml", "../../d.xml", "d.xml"},
        {"a/c.xml", "../../d.xml", "../d.xml"},
    };
    checkResolution(cases, sizeof(cases) / sizeof(cases[0]), ZkUri::URISTR_URI);
}

TEST(UriResolve, FileReferencesAreRepaired) {
    const ResolveCase cases[] = {
        {"file:///C:/docs/a.xml", "b.xml", "file:///C:/docs/b.xml"},
        {"file:///C:/docs/a.xml", "/top.xml", "file:///C:/top.xml"},
        {"file:///C:/docs/a.xml", "../../../x.xml", "file:///C:/../../x.xml"},
        {"file:///C:/docs/a.xml", "file:///D:/x.xml", "file:///D:/x.xml"},
        {"file:///C:/docs/a.xml", "file:///x.xml", "file:///C:/x.xml"},
        {"file:///C:/docs/a.xml", "file://E:/x.xml", "file:///E:/x.xml"},
        {"file:///C:/docs/a.xml", "file:E:/x.xml", "file:///E:/x.xml"},
        {"file:///C:/docs/a.xml", "file:b.xml", "file:///C:/docs/b.xml"},
        {"file:///home/u/a.xml", "file:/etc/x.xml", "file:///etc/x.xml"},
        {"file:///home/u/a.xml", "b c.xml", "file:///home/u/b%20c.xml"},
        {"file:///home/u/a.xml?x=1", "b.xml?y=2", "file:///home/u/b.xml?y=2"},
        {"file://server/share/a.xml", "b.xml", "file://server/share/b.xml"},
        {"file://server/share/a.xml", "/b.xml", "file://server/b.xml"},
    };
    checkResolution(cases, sizeof(cases) / sizeof(cases[0]), ZkUri::URISTR_URI);
}

TEST(UriResolve, PathReferencesBecomeFileUris) {
    const ResolveCase cases[] = {
        {"http://a/b/c", "C:\\x y\\z.xml", "file:///C:/x%20y/z.xml"},
        {"http://a/b/c", "\\\\server\\share\\z.xml", "file://server/share/z.xml"},
        {"file:///C:/docs/a.xml", "sub\\b.xml", "file:///C:/docs/sub/b.xml"},
        {"file:///C:/docs/a.xml", "..\\b.xml#frag", "file:///C:/b.xml#frag"},
    };
    checkResolution(cases, sizeof(cases) / sizeof(cases[0]), ZkUri::URISTR_FILEPATH);
}

TEST(UriResolve, AsItStandsKeepsTheSharp) {
    ZkUri base(u"file:///d/a.xml", ZkUri::URISTR_URI);
    EXPECT_EQ("file:///d/x#1.xml",
              utf8(ZkUri(base, u"x#1.xml", ZkUri::URISTR_URI_ASIS).toString()));
    EXPECT_EQ("file:///d/x#1.xml", utf8(ZkUri(base, u"x#1.xml", ZkUri::URISTR_URI).toString()));
    EXPECT_EQ("#1.xml", utf8(ZkUri(base, u"#1.xml", ZkUri::URISTR_URI).toString()));
    EXPECT_EQ("file:///d/#1.xml", utf8(ZkUri(base, u"#1.xml", ZkUri::URISTR_URI_ASIS).toString()));
}

TEST(UriResolve, EmptyBaseReadsTheReferenceAlone) {
    ZkUri empty;
    EXPECT_EQ("file:///C:/a%20b/c.xml", utf8(ZkUri(empty, u"C:\\a b\\c.xml").toString()));
    EXPECT_EQ("", utf8(ZkUri(empty, u"   ").toString()));
}

TEST(UriResolve, EmptyReferenceGivesTheBase) {
    ZkUri base(u"http://a/b?q#f", ZkUri::URISTR_URI);
    EXPECT_EQ("http://a/b?q#f", utf8(ZkUri(base, u"").toString()));
    EXPECT_EQ("http://a/b?q#f", utf8(ZkUri(base, u"  \t").toString()));
}

TEST(UriRelative, ReferencesBetweenUris) {
    struct Case {
        const char* uri;
        const char* base;
        const char* expected;
    } cases[] = {
        {"file:///a/b/c.xml", "file:///a/b/d.xml", "c.xml"},
        {"file:///a/b/c.xml", "file:///a/d/e.xml", "../b/c.xml"},
        {"file:///a/b/c.xml", "file:///a/", "b/c.xml"},
        {"file:///a/b/c.xml#f", "file:///x/y/z.xml", "../../a/b/c.xml#f"},
        {"http://h/a/b.html", "http://h/c/d.html", "../a/b.html"},
        {"http://h/a/b.html", "http://other/a/d.html", ""},
        {"file:///C:/a/b.xml", "file:///D:/a/b.xml", ""},
        {"jar:file:///z.zip!/a/b.xml", "jar:file:///z.zip!/c/d.xml", "../a/b.xml"},
        {"a/b.xml", "c/d.xml", "../a/b.xml"},
        {"", "", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.uri) + " from " + c.base);
        ZkUri uri(UnicodeString::fromUTF8(c.uri), ZkUri::URISTR_URI);
        EXPECT_EQ(c.expected, utf8(uri.getRelativeUri(UnicodeString::fromUTF8(c.base))));
    }
}

TEST(UriRelative, DescendantOrSelf) {
    struct Case {
        const char* uri;
        const char* other;
        bool expected;
    } cases[] = {
        {"file:///a/b/c.xml", "file:///a/", true},
        {"file:///a/b/c.xml", "file:///A/B/", true},
        {"file:///a/b/c.xml", "file:///a/b/c.xml", true},
        {"file:///a/", "file:///a/", true},
        {"file:///a/c.xml", "file:///a/b/", false},
        {"http://h/a/b", "http://h/A/", false},
        {"http://h/a/b", "http://h/a/", true},
        {"http://h/a/b", "", false},
        {"", "http://h/", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.uri) + " in " + c.other);
        ZkUri uri(UnicodeString::fromUTF8(c.uri), ZkUri::URISTR_URI);
        ZkUri other(UnicodeString::fromUTF8(c.other), ZkUri::URISTR_URI);
        EXPECT_EQ(c.expected, uri.isDescendantOrSelf(other));
    }
}
