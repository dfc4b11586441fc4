// zk digest: prints the MD5 or SHA digests of files in the lines md5sum, sha1sum, sha256sum,
// sha384sum and sha512sum print.
#include "command.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>
#include <zkcommon/crypto/md5.h>
#include <zkcommon/crypto/sha1.h>
#include <zkcommon/crypto/sha256.h>
#include <zkcommon/crypto/sha512.h>

namespace zktool {
namespace {

using namespace ZkCommonNS;

/// One algorithm behind a common face: feed bytes, take the digest.
class Digest {
public:
    virtual ~Digest() = default;
    virtual void update(const unsigned char* data, size_t length) = 0;
    virtual std::vector<unsigned char> finish() = 0;
};

template <class Context, int Length> class DigestOf : public Digest {
public:
    void update(const unsigned char* data, size_t length) override {
        m_context.Update(data, length);
    }
    std::vector<unsigned char> finish() override {
        std::vector<unsigned char> out(Length);
        m_context.Final(out.data());
        m_context = Context();
        return out;
    }

private:
    Context m_context;
};

// SHA1_CTX takes its length as unsigned int: large reads go in pieces.
class Sha1Digest : public Digest {
public:
    void update(const unsigned char* data, size_t length) override {
        m_context.Update(data, static_cast<unsigned>(length));
    }
    std::vector<unsigned char> finish() override {
        std::vector<unsigned char> out(20);
        m_context.Final(out.data());
        m_context = SHA1_CTX();
        return out;
    }

private:
    SHA1_CTX m_context;
};

std::unique_ptr<Digest> makeDigest(const std::string& name) {
    if (name == "md5")
        return std::make_unique<DigestOf<MD5_CTX, 16>>();
    if (name == "sha1")
        return std::make_unique<Sha1Digest>();
    if (name == "sha256")
        return std::make_unique<DigestOf<SHA256_CTX, 32>>();
    if (name == "sha384")
        return std::make_unique<DigestOf<SHA384_CTX, 48>>();
    if (name == "sha512")
        return std::make_unique<DigestOf<SHA512_CTX, 64>>();
    return nullptr;
}

/// Reads all of `fd` into `digest`; false with errno set on a read error.
bool digestFile(int fd, Digest& digest) {
    std::vector<unsigned char> buffer(1 << 16);
    for (;;) {
        const ssize_t got = ::read(fd, buffer.data(), buffer.size());
        if (got == 0)
            return true;
        if (got < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        digest.update(buffer.data(), static_cast<size_t>(got));
    }
}

/// The line the coreutils tools print: a name holding a backslash or a line feed is escaped,
/// and the line then starts with a backslash.
std::string line(const std::vector<unsigned char>& digest, const std::string& name) {
    static const char kDigits[] = "0123456789abcdef";
    std::string escaped;
    bool escapes = false;
    for (char c : name) {
        if (c == '\\' || c == '\n') {
            escaped += c == '\\' ? "\\\\" : "\\n";
            escapes = true;
        } else {
            escaped += c;
        }
    }
    std::string text = escapes ? "\\" : "";
    for (unsigned char b : digest) {
        text += kDigits[b >> 4];
        text += kDigits[b & 15];
    }
    return text + "  " + escaped + "\n";
}

int digestCommand(const Args& args) {
    if (args.empty())
        return usage("digest");
    std::unique_ptr<Digest> digest = makeDigest(args[0]);
    if (!digest)
        return usage("digest");
    std::vector<std::string> names(args.begin() + 1, args.end());
    if (names.empty())
        names.push_back("-");
    int status = 0;
    for (const std::string& name : names) {
        const bool standardInput = name == "-";
        const int fd = standardInput ? STDIN_FILENO : ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
        const bool ok = fd >= 0 && digestFile(fd, *digest);
        const int error = errno;
        if (fd >= 0 && !standardInput)
            ::close(fd);
        if (!ok) {
            status = fail(name + ": " + std::strerror(error));
            digest = makeDigest(args[0]);
            continue;
        }
        std::cout << line(digest->finish(), name);
    }
    std::cout.flush();
    return std::cout ? status : fail("cannot write the output");
}

const Registration s_digest({"digest", "digest md5|sha1|sha256|sha384|sha512 [FILE...]",
                             "prints the digest of each FILE as md5sum, sha256sum and their kin "
                             "do (no FILE or \"-\" reads standard input)",
                             digestCommand});

} // namespace
} // namespace zktool
