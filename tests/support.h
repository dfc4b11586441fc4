// Helpers shared by the test programs: UTF-8 views of strings and scratch directories.
#ifndef ZKCOMMON_TESTS_SUPPORT_H
#define ZKCOMMON_TESTS_SUPPORT_H

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdlib.h>
#include <string>
#include <vector>
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

/// The rows of a tab-separated table file, fields split at each tab; blank lines and comment
/// lines ("#" alone or followed by a space) are skipped. A missing file gives no rows.
inline std::vector<std::vector<std::string>> readTable(const std::string& path) {
    std::ifstream in(path);
    std::vector<std::vector<std::string>> rows;
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line == "#" || line.compare(0, 2, "# ") == 0)
            continue;
        std::vector<std::string> fields;
        size_t start = 0;
        for (size_t tab; (tab = line.find('\t', start)) != std::string::npos; start = tab + 1)
            fields.push_back(line.substr(start, tab - start));
        fields.push_back(line.substr(start));
        rows.push_back(fields);
    }
    return rows;
}

/// A table field with its escapes resolved: \t, \n, \r, \\ and \xHH (one byte, so that
/// inputs can hold any byte sequence).
inline std::string unescapeField(const std::string& field) {
    std::string out;
    for (size_t i = 0; i < field.size(); ++i) {
        char c = field[i];
        if (c != '\\' || i + 1 >= field.size()) {
            out += c;
            continue;
        }
        char next = field[++i];
        if (next == 'x' && i + 2 < field.size()) {
            out += char(std::stoi(field.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            out += next == 't' ? '\t' : next == 'n' ? '\n' : next == 'r' ? '\r' : next;
        }
    }
    return out;
}

/// The folder of the W3C XML conformance cases, read in place.
inline const std::string kConformanceSuite = ZK_SHARED_DIR "/conformance/xml/";

/// One case of the conformance catalogue: its id, its type ("valid", "not-wf", ...) and its file
/// relative to kConformanceSuite.
struct ConformanceCase {
    std::string id;
    std::string type;
    std::string uri;
};

/// The cases of the conformance catalogue, in its order.
inline std::vector<ConformanceCase> readConformanceCases() {
    std::vector<ConformanceCase> cases;
    std::vector<std::vector<std::string>> rows = readTable(kConformanceSuite + "cases.tsv");
    for (size_t i = 1; i < rows.size(); ++i) { // row 0 is the header
        if (rows[i].size() > 8)
            cases.push_back(ConformanceCase{rows[i][0], rows[i][1], rows[i][8]});
    }
    return cases;
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
