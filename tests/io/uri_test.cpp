// ZkUri construction and the pieces of a URI: types, schemes, drive letters, path repair,
// escaping, local paths and their display form, file names and extensions.
#include "support.h"
#include "zkcommon/io/uri.h"

#include <gtest/gtest.h>
#include <string>

using namespace ZkCommonNS;

// tests/data/io/uris.tsv: construction by type, schemes, unescaping and local paths.
TEST(Uri, TableOfFormsSchemesAndLocalPaths) {
    const auto rows = readTable(ZK_TEST_DATA_DIR "/io/uris.tsv");
    ASSERT_GT(rows.size(), 60u);
    const std::pair<const char*, ZkUri::URISTRTYPE> types[] = {
        {"URI", ZkUri::URISTR_URI},
        {"FILEPATH", ZkUri::URISTR_FILEPATH},
        {"FILEPATH_OR_URI", ZkUri::URISTR_FILEPATH_OR_URI},
        {"AUTO", ZkUri::URISTR_AUTO}};
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 4u);
        SCOPED_TRACE(row[0] + " " + row[1] + " " + row[2]);
        const UnicodeString text = UnicodeString::fromUTF8(row[1]).unescape();
        const std::string expected = utf8(UnicodeString::fromUTF8(row[3]).unescape());
        const std::string& kind = row[0];
        if (kind == "construct") {
            auto type = static_cast<ZkUri::URISTRTYPE>(99);
            for (const auto& t : types)
                if (row[2] == t.first)
                    type = t.second;
            EXPECT_EQ(expected, utf8(ZkUri(text, type).toString()));
        } else if (kind == "scheme") {
            ZkUri uri(text, ZkUri::URISTR_URI_ASIS);
            EXPECT_EQ(!row[2].empty(), uri.isAbsolute());
            EXPECT_EQ(row[2], utf8(uri.getScheme().toString()));
            std::string which;
            for (const auto& flag : {std::make_pair("file", uri.isFileScheme()),
                                     std::make_pair("http", uri.isHttpScheme()),
                                     std::make_pair("jar", uri.isJarScheme()),
                                     std::make_pair("data", uri.isDataScheme())})
                if (flag.second)
                    which += (which.empty() ? "" : ",") + std::string(flag.first);
            EXPECT_EQ(expected, which);
        } else if (kind == "unescape") {
            EXPECT_EQ(expected, utf8(ZkUri::unescape(text)));
        } else if (kind == "localpath") {
            EXPECT_EQ(expected, utf8(ZkUri::getLocalPath(text)));
            EXPECT_EQ(expected, utf8(ZkUri(text, ZkUri::URISTR_URI_ASIS).getLocalPath()));
        } else {
            ASSERT_EQ(kind, "shortened");
            EXPECT_EQ(expected,
                      utf8(ZkUri(text, ZkUri::URISTR_URI_ASIS).getLocalPath(std::stoi(row[2]))));
        }
    }
}

TEST(Uri, EmptyAndValueSemantics) {
    ZkUri empty;
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_FALSE(empty.isAbsolute());
    EXPECT_TRUE(ZkUri(u"") == empty);
    ZkUri a(u"http://h/a", ZkUri::URISTR_URI);
    ZkUri b(a);
    EXPECT_TRUE(a == b);
    b = ZkUri(u"http://h/b", ZkUri::URISTR_URI);
    EXPECT_TRUE(a != b);
}

TEST(Uri, EscapeAndDriveLetters) {
    EXPECT_EQ("a%20b%25c%22%5C", utf8(ZkUri::escape(u"a b%c\"\\")));
    EXPECT_EQ("a#b", utf8(ZkUri::escape(u"a#b")));
    EXPECT_EQ("a%23b", utf8(ZkUri::escape(u"a#b", true)));
    EXPECT_EQ("\xC3\xA9", utf8(ZkUri::escape(u"\u00E9")));
    EXPECT_EQ("%85", utf8(ZkUri::escape(u"\u0085")));
    EXPECT_TRUE(ZkUri::hasDriveLetter(u"C:", 0));
    EXPECT_TRUE(ZkUri::hasDriveLetter(u"file:///z:/a", 8));
    EXPECT_FALSE(ZkUri::hasDriveLetter(u"C", 0));
    EXPECT_FALSE(ZkUri::hasDriveLetter(u"1:", 0));
    EXPECT_FALSE(ZkUri::hasDriveLetter(u"C:", 1));
    EXPECT_FALSE(ZkUri::hasDriveLetter(u"C:", -1));
}

TEST(Uri, ValidCharactersAndUris) {
    for (char c : std::string("AZaz09!#$%&'()*+,-./:;=?@[]_~"))
        EXPECT_TRUE(ZkUri::isValidUriChar(static_cast<unsigned char>(c))) << c;
    for (char c : std::string(" \"<>\\^`{|}\x7F\t"))
        EXPECT_FALSE(ZkUri::isValidUriChar(static_cast<unsigned char>(c))) << int(c);
    EXPECT_FALSE(ZkUri::isValidUriChar(0x9F));
    EXPECT_TRUE(ZkUri::isValidUriChar(0xA0));
    EXPECT_TRUE(ZkUri::isValidUriChar(0x1F600));

    EXPECT_TRUE(ZkUri::isValidUri(u"a/b%20c"));
    EXPECT_TRUE(ZkUri::isValidUri(u"http://a b"));
    EXPECT_FALSE(ZkUri::isValidUri(u"a b"));
    EXPECT_FALSE(ZkUri::isValidUri(u"a%2"));
    EXPECT_FALSE(ZkUri::isValidUri(u"a%g0"));
}

TEST(Uri, PiecesOfTheString) {
    ZkUri uri(u"http://h/dir/name.tar.gz?q=a/b#frag", ZkUri::URISTR_URI);
    EXPECT_EQ("http://h/dir/", utf8(uri.getBaseString()));
    EXPECT_EQ("name.tar.gz", utf8(uri.getFileName()));
    EXPECT_EQ(".gz", utf8(uri.getExtension()));

    ZkUri noExtension(u"file:///a/.profile", ZkUri::URISTR_URI);
    EXPECT_EQ(".profile", utf8(noExtension.getFileName()));
    EXPECT_EQ("", utf8(noExtension.getExtension()));
    EXPECT_EQ("", utf8(ZkUri(u"name", ZkUri::URISTR_URI).getBaseString()));
}

TEST(Uri, SetExtensionAndSuffix) {
    ZkUri uri(u"file:///a/b.xml#f", ZkUri::URISTR_URI);
    UnicodeString pdf(u"pdf");
    uri.setExtension(&pdf);
    EXPECT_EQ("file:///a/b.pdf#f", utf8(uri.toString()));
    UnicodeString dotted(u".ps");
    uri.setExtension(&dotted);
    EXPECT_EQ("file:///a/b.ps#f", utf8(uri.toString()));
    uri.setExtension(nullptr);
    EXPECT_EQ("file:///a/b#f", utf8(uri.toString()));
    uri.setExtension(&pdf);
    EXPECT_EQ("file:///a/b.pdf#f", utf8(uri.toString()));
    uri.addFileNameSuffix(2, u"-");
    EXPECT_EQ("file:///a/b-2.pdf#f", utf8(uri.toString()));
    uri.addFileNameSuffix(-1, u"_x");
    EXPECT_EQ("file:///a/b-2_x.pdf#f", utf8(uri.toString()));
}

TEST(Uri, RemoveFragment) {
    ZkUri uri(u"http://h/a#sec", ZkUri::URISTR_URI);
    ZkUri copy(uri);
    EXPECT_EQ("sec", utf8(uri.removeFragment(true)));
    EXPECT_EQ("http://h/a", utf8(uri.toString()));
    EXPECT_EQ("http://h/a", utf8(copy.removeFragment()));
    EXPECT_EQ("", utf8(uri.removeFragment(true)));
    EXPECT_EQ("http://h/a", utf8(uri.removeFragment(false)));
}

TEST(Uri, SlashesAndDirectories) {
    UnicodeString text(u"a\\b\\c");
    ZkUri::backslash2slash(text);
    EXPECT_EQ("a/b/c", utf8(text));
    ZkUri::slash2backslash(text);
    EXPECT_EQ("a\\b\\c", utf8(text));
    UnicodeString dir(u"/a/b");
    ZkUri::toDirectory(dir, false);
    EXPECT_EQ("/a/b/", utf8(dir));
    ZkUri::toDirectory(dir, true);
    EXPECT_EQ("/a/b/", utf8(dir));
    UnicodeString windows(u"C:\\a");
    ZkUri::toDirectory(windows, true);
    EXPECT_EQ("C:\\a\\", utf8(windows));
    UnicodeString empty;
    ZkUri::toDirectory(empty, false);
    EXPECT_EQ("", utf8(empty));
}

TEST(Uri, CatalogsPassThroughUntilACatalogIsInstalled) {
    // No catalog code is linked in yet: the text is used as it is.
    int notACatalog = 0;
    const auto* catalogs = reinterpret_cast<const ZkXmlCatalogs*>(&notACatalog);
    EXPECT_EQ("a%20b.xml", utf8(ZkUri(u"a b.xml", ZkUri::URISTR_URI, catalogs).toString()));
    ZkUri base(u"http://h/d/", ZkUri::URISTR_URI);
    EXPECT_EQ("http://h/d/x.dtd", utf8(ZkUri(base, u"x.dtd", catalogs).toString()));
}
