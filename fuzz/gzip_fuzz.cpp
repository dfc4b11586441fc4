// Fuzzes the gzip stream (header parsing, inflate, trailers, concatenated members, seeking),
// the raw inflate stream and the one-shot zlib helpers. Input: one byte choosing the read
// piece size and a seek, then the data.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>
#include <zkcommon/io/gzipstream.h>
#include <zkcommon/text/util.h>

using namespace ZkCommonNS;

namespace {

void check(bool condition) {
    if (!condition)
        std::abort();
}

// Output is bounded by what a deflate stream can expand to; the cap keeps runs quick.
constexpr size_t kOutputCap = 8u << 20;

std::string drain(std::istream& in, size_t piece) {
    std::string out;
    std::vector<char> buffer(piece);
    while (out.size() < kOutputCap &&
           (in.read(buffer.data(), static_cast<std::streamsize>(piece)) || in.gcount() > 0))
        out.append(buffer.data(), static_cast<size_t>(in.gcount()));
    return out;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1 || size > (1u << 16))
        return 0;
    const uint8_t control = data[0];
    const std::string bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    const size_t piece = (control & 1) ? 1 : (control & 2) ? 4096 : 65536;

    std::istringstream source(bytes);
    ZkGzipIStream gzip(source);
    const std::string first = drain(gzip, piece);
    if (!gzip.rdbuf()->isCompressed())
        check(first == bytes); // without a header the bytes pass through
    check(gzip.bad() == gzip.rdbuf()->isDataError());
    if (first.size() < kOutputCap && !first.empty()) {
        // Seeking back starts again and must deliver the same bytes.
        gzip.clear();
        const size_t at = (control >> 2) % first.size();
        gzip.seekg(static_cast<std::streamoff>(at));
        std::string again = drain(gzip, piece);
        check(again == first.substr(at, again.size()));
    }

    ZkInflaterStream raw(bytes.data(), bytes.size(), (control & 4) != 0);
    const std::string inflated = drain(raw, piece);
    raw.reset();
    const std::string inflatedAgain = drain(raw, piece);
    check(inflated == inflatedAgain);

    const auto* u = reinterpret_cast<const unsigned char*>(bytes.data());
    const auto n = static_cast<unsigned int>(bytes.size());
    std::ostringstream sink;
    if (ZkUtil::inflate2(sink, u, n))
        check(sink.str() == inflated || inflated.size() >= kOutputCap);
    std::ostringstream zlibForm;
    ZkUtil::inflate(zlibForm, u, n);
    std::ostringstream packed, back;
    check(ZkUtil::deflate(packed, u, n));
    const std::string p = packed.str();
    check(ZkUtil::inflate(back, reinterpret_cast<const unsigned char*>(p.data()),
                          static_cast<unsigned int>(p.size())));
    check(back.str() == bytes);
    return 0;
}
