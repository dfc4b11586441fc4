// ZkTempFile and ZkUUID: name format, ownership, UUID directories, the two errors, processes
// and threads creating names at once, and removal waiting for another process's lock.
#include "support.h"
#include "zkcommon/core/error.h"
#include "zkcommon/io/tempfile.h"

#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <set>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace ZkCommonNS;

namespace {

bool exists(const std::string& path) {
    struct stat status;
    return ::lstat(path.c_str(), &status) == 0;
}

std::string dirOf(const TempDir& dir) {
    return dir.path() + "/";
}

/// Makes `count` created names in `directory` from each of `threads` threads.
std::vector<std::string> makeNames(const std::string& directory, int threads, int count) {
    std::vector<std::vector<std::string>> made(static_cast<size_t>(threads));
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t) {
        workers.emplace_back([&, t] {
            for (int i = 0; i < count; ++i)
                made[static_cast<size_t>(t)].push_back(
                    utf8(ZkTempFile::getTempFile(directory.c_str(), "race", ".t")));
        });
    }
    for (std::thread& worker : workers)
        worker.join();
    std::vector<std::string> all;
    for (const auto& names : made)
        all.insert(all.end(), names.begin(), names.end());
    return all;
}

} // namespace

TEST(TempFile, DirectoryEndsInTheSeparator) {
    const std::string directory = utf8(ZkTempFile::getTempDirectory());
    ASSERT_FALSE(directory.empty());
    EXPECT_EQ(directory.back(), '/');
    struct stat status;
    EXPECT_EQ(::stat(directory.c_str(), &status), 0);
    EXPECT_TRUE(S_ISDIR(status.st_mode));
}

TEST(TempFile, NamesFollowTheProcessAndCounter) {
    TempDir dir;
    const std::string made = utf8(ZkTempFile::getTempFile(dirOf(dir).c_str(), "pre", ".ext"));
    std::smatch parts;
    const std::regex format(dirOf(dir) + "pre([0-9a-f]{3,})_([0-9a-f]{4,})\\.ext");
    ASSERT_TRUE(std::regex_match(made, parts, format)) << made;
    EXPECT_EQ(std::stoul(parts[1].str(), nullptr, 16), static_cast<unsigned long>(::getpid()));
    EXPECT_TRUE(exists(made));

    const std::string first = utf8(ZkTempFile::getTempFileEx(dirOf(dir).c_str(), "n", "", false));
    const std::string second = utf8(ZkTempFile::getTempFileEx(dirOf(dir).c_str(), "n", "", false));
    EXPECT_NE(first, second);
    EXPECT_FALSE(exists(first));
    EXPECT_TRUE(std::regex_match(first, std::regex(dirOf(dir) + "n[0-9a-f]{3,}_[0-9a-f]{4,}")));
}

TEST(TempFile, DirectoryIsUsedAsItStands) {
    TempDir dir;
    const std::string made = utf8(ZkTempFile::getTempFile(dir.path().c_str(), "x", ""));
    EXPECT_EQ(made.compare(0, dir.path().size() + 1, dir.path() + "x"), 0) << made;
    EXPECT_TRUE(ZkTempFile::removeTempFile(made.c_str()));

    const std::string inTemp = utf8(ZkTempFile::getTempFile("", "zkdefault", ".t"));
    EXPECT_EQ(inTemp.rfind(utf8(ZkTempFile::getTempDirectory()) + "zkdefault", 0), 0u);
    EXPECT_TRUE(ZkTempFile::removeTempFile(inTemp.c_str()));
}

TEST(TempFile, ExistingNamesAreSkipped) {
    TempDir dir;
    // Occupy the next names the counter will give.
    const std::string probe = utf8(ZkTempFile::getTempFileEx(dirOf(dir).c_str(), "s", "", false));
    const unsigned long next = std::stoul(probe.substr(probe.find('_') + 1), nullptr, 16) + 1;
    char name[64];
    for (unsigned long i = 0; i < 5; ++i) {
        std::snprintf(name, sizeof name, "s%03lx_%04lx", static_cast<unsigned long>(::getpid()),
                      (next + i) & 0xFFFFFFFFul);
        dir.file(name, "taken");
    }
    const std::string made = utf8(ZkTempFile::getTempFile(dirOf(dir).c_str(), "s", ""));
    std::snprintf(name, sizeof name, "s%03lx_%04lx", static_cast<unsigned long>(::getpid()),
                  (next + 5) & 0xFFFFFFFFul);
    EXPECT_EQ(made, dirOf(dir) + name);
    std::ifstream in(made);
    EXPECT_EQ(readAll(in), ""); // a new, empty file, not one of the taken ones
}

TEST(TempFile, RemovingAMissingFileSucceeds) {
    EXPECT_TRUE(ZkTempFile::removeTempFile("/tmp/zk-no-such-file-at-all"));
    EXPECT_TRUE(ZkTempFile::removeTempFile(UnicodeString()));
}

TEST(TempFile, RemovalOfLinksAndDirectories) {
    TempDir dir;
    const std::string target = dir.file("target", "keep me");
    const std::string link = dirOf(dir) + "link";
    ASSERT_EQ(::symlink(target.c_str(), link.c_str()), 0);
    EXPECT_TRUE(ZkTempFile::removeTempFile(link.c_str()));
    EXPECT_FALSE(exists(link));
    EXPECT_TRUE(exists(target)); // the link went, not what it named
    EXPECT_FALSE(ZkTempFile::removeTempFile(dir.path().c_str()));
}

TEST(TempFile, OwnershipAndRelease) {
    TempDir dir;
    std::string released;
    {
        ZkTempFile file(dirOf(dir).c_str(), "own", ".t");
        ASSERT_TRUE(file.isTempFile());
        released = utf8(file.releaseFileName());
        EXPECT_FALSE(file.isTempFile());
    }
    EXPECT_TRUE(exists(released));

    std::string owned;
    {
        ZkTempFile file(dirOf(dir).c_str(), "own", ".t");
        owned = utf8(file.getFileName());
        file.setFileName(UnicodeString::fromUTF8(released));
        EXPECT_FALSE(exists(owned)); // the old one goes first
        EXPECT_EQ(utf8(file.getFileName()), released);
    }
    EXPECT_FALSE(exists(released));

    ZkTempFile uncreated(dirOf(dir).c_str(), "lazy", ".t", false);
    EXPECT_TRUE(uncreated.isTempFile());
    EXPECT_FALSE(exists(utf8(uncreated.getFileName())));
    uncreated.remove(); // nothing there: no error

    ZkTempFile fresh;
    EXPECT_FALSE(fresh.isTempFile());
    const std::string made = utf8(fresh.setFileName(dirOf(dir).c_str(), "again", ""));
    EXPECT_TRUE(exists(made));
    fresh.remove();
    EXPECT_FALSE(exists(made));
    EXPECT_EQ(utf8(fresh.getFileName()), made); // the name stays after remove
}

TEST(TempFile, UUIDDirectoryGoesWithItsFile) {
    std::string path, directory;
    {
        ZkTempFile file;
        path = utf8(file.setFileNameInUUIDDirectory("inside.txt"));
        directory = path.substr(0, path.rfind('/') + 1);
        const std::string uuid = directory.substr(utf8(ZkTempFile::getTempDirectory()).size());
        EXPECT_TRUE(std::regex_match(
            uuid,
            std::regex("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}/")))
            << uuid;
        EXPECT_TRUE(exists(path));
    }
    EXPECT_FALSE(exists(path));
    EXPECT_FALSE(exists(directory));
}

TEST(TempFile, UUIDsDifferAndFold) {
    const ZkUUID a, b;
    EXPECT_NE(a, b);
    EXPECT_EQ(a.toString(false).length(), 32);
    const unsigned char bytes[16] = {0x01, 0x02, 0x03, 0x04, 0x10, 0x20, 0x30, 0x40,
                                     0,    0,    0,    0,    0xFF, 0,    0,    0};
    const ZkUUID fixed(bytes);
    EXPECT_EQ(fixed.toUint32(), 0x01020304u ^ 0x10203040u ^ 0xFF000000u);
    EXPECT_EQ(utf8(fixed.toString()), "01020304-1020-3040-0000-0000ff000000");
    EXPECT_EQ(fixed, ZkUUID(bytes));
}

TEST(TempFile, CreationFailureRaises78) {
    try {
        ZkTempFile::getTempFile("/nonexistent-zk-directory/", "f", ".t");
        FAIL() << "no error";
    } catch (const ZkError& e) {
        EXPECT_EQ(e.getErrorCode(), ZK_ERROR_CREATE_TEMP_FILE);
        const std::string message = utf8(e.getRawMessage());
        EXPECT_TRUE(std::regex_match(
            message, std::regex("SYSTEM ERROR: Cannot create temporary file: "
                                "/nonexistent-zk-directory/f[0-9a-f]{3,}_[0-9a-f]{4,}\\.t "
                                "\\(cannot create\\)\nNo such file or directory")))
            << message;
    }
}

TEST(TempFile, RemovalFailureRaises77) {
    TempDir dir;
    const std::string inner = dirOf(dir) + "sub";
    ASSERT_EQ(::mkdir(inner.c_str(), 0700), 0);
    ZkTempFile file;
    file.setFileName(inner.c_str());
    try {
        file.remove();
        FAIL() << "no error";
    } catch (const ZkError& e) {
        EXPECT_EQ(e.getErrorCode(), ZK_ERROR_REMOVE_TEMP_FILE);
        EXPECT_EQ(utf8(e.getRawMessage()),
                  "SYSTEM ERROR: Cannot remove temporary file: " + inner + "\n");
    }
    file.releaseFileName();
}

TEST(TempFile, ProcessesAndThreadsNeverCollide) {
    TempDir dir;
    const std::string list = dirOf(dir) + "child-names";
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        std::ofstream out(list);
        for (const std::string& name : makeNames(dirOf(dir), 2, 200))
            out << name << '\n';
        out.close();
        ::_exit(out ? 0 : 1);
    }
    std::vector<std::string> names = makeNames(dirOf(dir), 2, 200);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    std::ifstream in(list);
    for (std::string line; std::getline(in, line);)
        names.push_back(line);
    ASSERT_EQ(names.size(), 800u);
    const std::set<std::string> distinct(names.begin(), names.end());
    EXPECT_EQ(distinct.size(), names.size());
    for (const std::string& name : names)
        ASSERT_TRUE(exists(name)) << name;
}

TEST(TempFile, RemovalWaitsForAnotherProcessToLetGo) {
    TempDir dir;
    const std::string path = utf8(ZkTempFile::getTempFile(dirOf(dir).c_str(), "held", ".t"));
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t holder = ::fork();
    ASSERT_GE(holder, 0);
    if (holder == 0) {
        const int fd = ::open(path.c_str(), O_RDONLY);
        const bool locked = fd >= 0 && ::flock(fd, LOCK_SH) == 0;
        const char signal = locked ? 'y' : 'n';
        if (::write(ready[1], &signal, 1) != 1)
            ::_exit(1);
        ::usleep(300 * 1000);
        // Still there when the holder lets go: the removal waited for the lock.
        const char seen = exists(path) ? 'e' : 'g';
        ::close(fd);
        ::_exit(::write(ready[1], &seen, 1) == 1 ? 0 : 1);
    }
    char signal = 0;
    ASSERT_EQ(::read(ready[0], &signal, 1), 1);
    ASSERT_EQ(signal, 'y');
    EXPECT_TRUE(exists(path));
    EXPECT_TRUE(ZkTempFile::removeTempFile(path.c_str()));
    EXPECT_FALSE(exists(path));
    ASSERT_EQ(::read(ready[0], &signal, 1), 1);
    EXPECT_EQ(signal, 'e');
    int status = 0;
    ::waitpid(holder, &status, 0);
    ::close(ready[0]);
    ::close(ready[1]);
}
