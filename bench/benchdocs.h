// The generated benchmark documents, shared by the parse, load and HTML benchmarks.
#ifndef ZKCOMMON_BENCH_BENCHDOCS_H
#define ZKCOMMON_BENCH_BENCHDOCS_H

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <streambuf>
#include <string>

/// The document `name`, written by scripts/gen_bench_docs.py into the build tree on first use.
inline const std::string& benchDocument(const char* name) {
    static std::map<std::string, std::string> loaded;
    auto found = loaded.find(name);
    if (found != loaded.end())
        return found->second;
    const std::string dir = ZK_BENCH_DOCS_DIR;
    const std::string path = dir + "/" + name;
    if (!std::ifstream(path)) {
        std::string command = "python3 '" ZK_SOURCE_DIR "/scripts/gen_bench_docs.py' '" + dir + "'";
        if (std::system(command.c_str()) != 0)
            std::fprintf(stderr, "cannot generate the documents in %s\n", dir.c_str());
    }
    std::ifstream in(path, std::ios::binary);
    std::stringstream content;
    content << in.rdbuf();
    return loaded[name] = content.str();
}

/// An istream buffer over bytes in memory, without a copy.
struct MemoryBuf : std::streambuf {
    explicit MemoryBuf(const std::string& bytes) {
        char* start = const_cast<char*>(bytes.data());
        setg(start, start, start + bytes.size());
    }
};

#endif
