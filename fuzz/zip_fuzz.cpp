// Fuzzes the zip reader: the end-record search, the central directory, the local-header scan,
// data descriptor searches, and reading every member compressed and inflated.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <zkcommon/io/zipfile.h>

using namespace ZkCommonNS;

namespace {

void check(bool condition) {
    if (!condition)
        std::abort();
}

constexpr size_t kOutputCap = 4u << 20;

size_t drain(std::istream& in) {
    char buffer[4096];
    size_t total = 0;
    while (total < kOutputCap && (in.read(buffer, sizeof buffer) || in.gcount() > 0))
        total += static_cast<size_t>(in.gcount());
    return total;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > (1u << 18))
        return 0;
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    ZkZipFile zip;
    zip.open(new std::istringstream(bytes), /*own=*/true);
    std::istringstream probe(bytes);
    ZkZipFile::isZipFile(&probe);
    check(probe.tellg() == std::streampos(0));
    const unsigned count = zip.getFileEntryCount();
    check(!zip.getFileEntry(count));
    for (unsigned i = 0; i < count && i < 64; ++i) {
        ZkPtr<ZkZipFileEntry> entry = zip.getFileEntry(i);
        check(entry && entry->getSignature() == ZkZipEntry::kLocalSignature);
        // The bytes held never exceed what the archive holds.
        check(drain(*entry->getCompressedStream(false)) <= size);
        const size_t once = drain(*entry->getUncompressedStream(false));
        check(drain(*entry->getUncompressedStream(false)) == once);
        std::istream* fresh = entry->getUncompressedStream(true);
        check(drain(*fresh) == once);
        delete fresh;
        check(zip.getFileEntry(entry->getName()));
    }
    return 0;
}
