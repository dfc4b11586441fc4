// Helpers shared by the test programs: UTF-8 views of strings and scratch directories.
#ifndef ZKCOMMON_TESTS_SUPPORT_H
#define ZKCOMMON_TESTS_SUPPORT_H

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdlib.h>
#include <string>
#include <zkcommon/core/unicode.h>

/// The UTF-8 form of `text`, for readable failure messages.
inline std::string utf8(const icu::UnicodeString& text) {
    std::string out;
    return text.toUTF8String(out);
}

/// Everything left in `in`.
inline std::string readAll(std::istream& in) {
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

/// A fresh directory under /tmp, removed with its files at the end of the test.
class TempDir {
public:
    TempDir() {
        char pattern[] = "/tmp/zktestXXXXXX";
        const char* made = ::mkdtemp(pattern);
        m_path = made ? made : "";
    }
    ~TempDir() {
        if (!m_path.empty())
            std::system(("rm -rf '" + m_path + "'").c_str());
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return m_path; }
    /// Writes `content` to the file `name` in the directory; returns its full path.
    std::string file(const std::string& name, const std::string& content) const {
        std::string full = m_path + "/" + name;
        std::ofstream(full, std::ios::binary) << content;
        return full;
    }

private:
    std::string m_path;
};

#endif // ZKCOMMON_TESTS_SUPPORT_H
