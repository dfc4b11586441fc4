// Local files behind URIs: same-file tests, file and directory tests, "#" in existing names,
// remoteness, modules beside the program, and the local path shown by error positions.
#include "support.h"
#include "zkcommon/core/error.h"
#include "zkcommon/io/uri.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

using namespace ZkCommonNS;

namespace {

UnicodeString u(const std::string& text) {
    return UnicodeString::fromUTF8(text);
}

} // namespace

TEST(UriLocalPath, SameFileIgnoresCase) {
    ZkUri a(u"file:///Docs/A.xml", ZkUri::URISTR_URI);
    EXPECT_TRUE(a.isSameFile(ZkUri(u"file:///docs/a.xml", ZkUri::URISTR_URI)));
    EXPECT_TRUE(a.isSameFile(ZkUri(u"file:///docs/a.xml#f", ZkUri::URISTR_URI)));
    EXPECT_TRUE(a.isSameFile(ZkUri(u"/docs/a.xml", ZkUri::URISTR_URI)));
    EXPECT_FALSE(a.isSameFile(ZkUri(u"file:///docs/b.xml", ZkUri::URISTR_URI)));
    EXPECT_FALSE(a.isSameFile(ZkUri()));
    EXPECT_FALSE(ZkUri().isSameFile(ZkUri()));
    ZkUri web(u"http://h/docs/a.xml", ZkUri::URISTR_URI);
    EXPECT_FALSE(web.isSameFile(web));
}

TEST(UriLocalPath, FileAndDirectoryTests) {
    TempDir dir;
    std::string file = dir.file("a b.txt", "x");
    ZkUri fileUri(u(file), ZkUri::URISTR_FILEPATH);
    EXPECT_EQ("file://" + dir.path() + "/a%20b.txt", utf8(fileUri.toString()));
    EXPECT_TRUE(fileUri.isFile());
    EXPECT_TRUE(fileUri.isFileExists());
    EXPECT_FALSE(fileUri.isDirectoryExists());
    ZkUri dirUri(u(dir.path()), ZkUri::URISTR_FILEPATH);
    EXPECT_TRUE(dirUri.isDirectoryExists());
    EXPECT_TRUE(dirUri.isFileExists());
    ZkUri missing(u(dir.path() + "/none.txt"), ZkUri::URISTR_FILEPATH);
    EXPECT_FALSE(missing.isFileExists());
    EXPECT_FALSE(missing.isDirectoryExists());
    EXPECT_FALSE(ZkUri(u"http://h/a", ZkUri::URISTR_URI).isFileExists());
    EXPECT_FALSE(ZkUri().isFileExists());

    EXPECT_TRUE(ZkUri::isFileExists(file.c_str()));
    EXPECT_FALSE(ZkUri::isFileExists(static_cast<const char*>(nullptr)));
    EXPECT_FALSE(ZkUri::isFileExists(""));
    std::wstring wide(file.begin(), file.end());
    EXPECT_TRUE(ZkUri::isFileExists(wide.c_str()));
    EXPECT_FALSE(ZkUri::isFileExists(static_cast<const wchar_t*>(nullptr)));
}

TEST(UriLocalPath, AutomaticTypeSeesExistingFiles) {
    TempDir dir;
    std::string file = dir.file("x#1.xml", "x");
    // An existing file's "#" is part of its name, not a fragment.
    ZkUri uri(u(file));
    EXPECT_EQ(file, utf8(uri.getLocalPath()).substr(0, file.size()));
    EXPECT_TRUE(uri.isFileExists());
}

TEST(UriLocalPath, EscapeSharpIfExist) {
    TempDir dir;
    std::string file = dir.file("x#1.xml", "x");
    ZkUri base(u("file://" + dir.path() + "/"), ZkUri::URISTR_URI);
    EXPECT_EQ("file://" + dir.path() + "/x%231.xml",
              utf8(ZkUri::escapeSharpIfExist(base, u"x#1.xml", false)));
    EXPECT_EQ("y#1.xml", utf8(ZkUri::escapeSharpIfExist(base, u"y#1.xml", false)));
    EXPECT_EQ("file://" + dir.path() + "/y%231.xml",
              utf8(ZkUri::escapeSharpIfExist(base, u"y#1.xml", true)));
    EXPECT_EQ("x.xml", utf8(ZkUri::escapeSharpIfExist(base, u"x.xml", true)));
    ZkUri web(u"http://h/", ZkUri::URISTR_URI);
    EXPECT_EQ("a#b", utf8(ZkUri::escapeSharpIfExist(web, u"a#b", true)));
    EXPECT_EQ("file:///C:/a%23b", utf8(ZkUri::escapeSharpIfExist(u"C:\\a#b", true)));
    EXPECT_EQ("C:\\a#b", utf8(ZkUri::escapeSharpIfExist(u"C:\\a#b", false)));
    std::string opened =
        utf8(ZkUri::escapeSharpIfExist(u("file://" + dir.path() + "/x#1.xml"), false));
    EXPECT_EQ(file, utf8(ZkUri::getLocalPath(u(opened))));
}

TEST(UriLocalPath, Remoteness) {
    EXPECT_FALSE(ZkUri().isRemote());
    EXPECT_TRUE(ZkUri(u"http://h/a", ZkUri::URISTR_URI).isRemote());
    EXPECT_TRUE(ZkUri(u"https://h/a", ZkUri::URISTR_URI).isRemote());
    EXPECT_TRUE(ZkUri(u"ftp://h/a", ZkUri::URISTR_URI).isRemote());
    EXPECT_FALSE(ZkUri(u"data:,x", ZkUri::URISTR_URI).isRemote());
    EXPECT_TRUE(ZkUri(u"\\\\server\\share\\a.xml").isRemote());
    EXPECT_FALSE(ZkUri(u"/tmp", ZkUri::URISTR_FILEPATH).isRemote());
    EXPECT_FALSE(ZkUri(u"/tmp/no/such/file.xml", ZkUri::URISTR_FILEPATH).isRemote());
    EXPECT_FALSE(ZkUri(u"jar:file:///tmp/a.zip!/b.xml", ZkUri::URISTR_URI).isRemote());
    EXPECT_TRUE(ZkUri(u"jar:http://h/a.zip!/b.xml", ZkUri::URISTR_URI).isRemote());
}

TEST(UriModule, FromEnvironment) {
    TempDir dir;
    dir.file("conf.txt", "x");
    ::setenv("ZK_URI_TEST_HOME", dir.path().c_str(), 1);
    ZkUri found = ZkUri::getModuleUri(nullptr, "conf.txt", "ZK_URI_TEST_HOME");
    EXPECT_EQ("file://" + dir.path() + "/conf.txt", utf8(found.toString()));
    EXPECT_TRUE(found.isFileExists());
    ZkUri home = ZkUri::getModuleUri(nullptr, "", "ZK_URI_TEST_HOME");
    EXPECT_EQ("file://" + dir.path(), utf8(home.toString()));
    ::setenv("ZK_URI_TEST_HOME", "/no/such/place", 1);
    EXPECT_EQ("conf.txt",
              utf8(ZkUri::getModuleUri(nullptr, "conf.txt", "ZK_URI_TEST_HOME").toString()));
    ::unsetenv("ZK_URI_TEST_HOME");
}

TEST(UriModule, BesideALoadedModule) {
    // The library itself is loaded in this process; ".dll" names find the ".so".
    ZkUri beside = ZkUri::getModuleUri("zkcommon.dll", "x.txt", nullptr);
    std::string text = utf8(beside.toString());
    EXPECT_EQ(0u, text.rfind("file:///", 0)) << text;
    EXPECT_EQ("x.txt", utf8(beside.getFileName()));
    ZkUri directory = ZkUri::getModuleUri("libzkcommon.so", nullptr, nullptr);
    EXPECT_TRUE(directory.isDirectoryExists()) << utf8(directory.toString());
    EXPECT_EQ("./x.txt", "./" + utf8(ZkUri::getModuleUri("nosuchmodule", "x.txt", "").toString()));
    EXPECT_EQ("plugin.dll", utf8(ZkUri::getModuleUri("nosuchmodule", "plugin.dll", "").toString()));
}

TEST(UriModule, LoadLibraryAndSymbols) {
    ZkUri library = ZkUri::getModuleUri("zkcommon", "libzkcommon.so", nullptr);
    void* module = library.loadLibrary();
    ASSERT_NE(nullptr, module) << utf8(library.toString());
    EXPECT_NE(nullptr, ZkUri::getProcAddress(module, "_ZN10ZkCommonNS5ZkUri7cleanupEv"));
    EXPECT_EQ(nullptr, ZkUri::getProcAddress(module, "noSuchSymbolAnywhere"));
    EXPECT_EQ(nullptr, ZkUri::getProcAddress(module, nullptr));
    EXPECT_EQ(nullptr, ZkUri::getProcAddress(nullptr, "x"));
    ZkUri::freeLibrary(module);
    ZkUri::freeLibrary(nullptr);
    ZkUri windowsName = ZkUri::getModuleUri("zkcommon", "libzkcommon.dll", nullptr);
    void* again = windowsName.loadLibrary();
    EXPECT_NE(nullptr, again);
    ZkUri::freeLibrary(again);
    EXPECT_EQ(nullptr, ZkUri(u"/no/such/lib.so", ZkUri::URISTR_FILEPATH).loadLibrary());
    EXPECT_EQ(nullptr, ZkUri().loadLibrary());
}

TEST(UriErrorPosition, ShowsTheLocalPath) {
    ZkError error(ZK_ERROR_CANNOT_OPEN_FILE, u"x", u"", 3, 7, u"file:///doc/a%20b.xml");
    EXPECT_EQ("Line 3, Col 7, /doc/a b.xml", utf8(error.getPositionDescription()));
    ZkError remote(ZK_ERROR_CANNOT_OPEN_FILE, u"x", u"", 0, 0, u"http://h/a%20b.xml");
    EXPECT_EQ("http://h/a%20b.xml", utf8(remote.getPositionDescription()));
}
