// zk zip and zk gunzip: list and extract zip archive members, and decompress gzip files.
#include "command.h"

#include <cinttypes>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>
#include <zkcommon/io/gzipstream.h>
#include <zkcommon/io/zipfile.h>

namespace zktool {
namespace {

using namespace ZkCommonNS;

const char* methodName(unsigned method) {
    switch (method) {
    case 0:
        return "stored";
    case 8:
        return "deflated";
    default:
        return "other";
    }
}

// Copies `in` to standard output; false when the data turned out damaged or the output failed.
bool copyOut(std::istream& in) {
    char piece[65536];
    while (in.read(piece, sizeof piece) || in.gcount() > 0)
        std::cout.write(piece, in.gcount());
    std::cout.flush();
    return !in.bad() && std::cout.good();
}

int zipCommand(const Args& args) {
    if (args.size() < 2 || (args[0] == "list" && args.size() != 2) ||
        (args[0] == "cat" && args.size() != 3) || (args[0] != "list" && args[0] != "cat"))
        return usage("zip");
    ZkZipFile zip;
    if (!zip.open(args[1].c_str()))
        return fail("cannot open '" + args[1] + "'");
    if (args[0] == "list") {
        std::printf("%-8s %10s %10s %8s  %s\n", "method", "size", "packed", "crc-32", "name");
        for (unsigned i = 0; i < zip.getFileEntryCount(); ++i) {
            ZkPtr<ZkZipFileEntry> entry = zip.getFileEntry(i);
            std::printf("%-8s %10" PRIu32 " %10" PRIu32 " %08" PRIx32 "  %s\n",
                        methodName(entry->getMethod()), entry->getUncompressedSize(),
                        entry->getCompressedSize(), entry->getCRC32(),
                        utf8(entry->getName()).c_str());
        }
        if (!zip.getComment().isEmpty())
            std::printf("comment: %s\n", utf8(zip.getComment()).c_str());
        return zip.getFileEntryCount() > 0 || ZkZipFile::isZipFile(args[1].c_str())
                   ? 0
                   : fail("'" + args[1] + "' is not a zip archive");
    }
    ZkPtr<ZkZipFileEntry> entry = zip.getFileEntry(UnicodeString::fromUTF8(args[2]));
    if (!entry)
        return fail("no member '" + args[2] + "' in '" + args[1] + "'");
    return copyOut(*entry->getUncompressedStream(/*fresh=*/false))
               ? 0
               : fail("member '" + args[2] + "' is damaged");
}

int gunzipCommand(const Args& args) {
    if (args.size() != 1)
        return usage("gunzip");
    ZkGzipIStream in(args[0].c_str());
    if (!in.is_open())
        return fail("cannot open '" + args[0] + "'");
    return copyOut(in) ? 0 : fail("'" + args[0] + "' is damaged or truncated");
}

const Registration s_zip({"zip", "zip list ARCHIVE | zip cat ARCHIVE MEMBER",
                          "lists the members of a zip archive (method, size, packed size, "
                          "CRC-32, name), or writes one member to standard output",
                          zipCommand});
const Registration s_gunzip({"gunzip", "gunzip FILE",
                             "writes the decompressed content of a gzip file to standard "
                             "output (other files pass through unchanged)",
                             gunzipCommand});

} // namespace
} // namespace zktool
