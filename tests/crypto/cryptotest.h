// Helpers of the crypto tests: hex text, and running a check on every code path.
#ifndef ZKCOMMON_TESTS_CRYPTO_CRYPTOTEST_H
#define ZKCOMMON_TESTS_CRYPTO_CRYPTOTEST_H

#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>
#include <zkcommon/crypto/acceleration.h>

namespace zkcryptotest {

using Bytes = std::vector<unsigned char>;

inline std::string toHex(const unsigned char* data, size_t length) {
    static const char kDigits[] = "0123456789abcdef";
    std::string text;
    for (size_t i = 0; i < length; ++i) {
        text += kDigits[data[i] >> 4];
        text += kDigits[data[i] & 15];
    }
    return text;
}
inline std::string toHex(const Bytes& data) {
    return toHex(data.data(), data.size());
}

inline Bytes fromHex(const std::string& text) {
    Bytes bytes;
    for (size_t i = 0; i + 1 < text.size(); i += 2)
        bytes.push_back(static_cast<unsigned char>(std::stoi(text.substr(i, 2), nullptr, 16)));
    return bytes;
}

inline Bytes fromText(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

/// The lines of the data file `name` under tests/data/crypto, blank and "#" lines skipped, split
/// at single blanks into at most `fields` fields (the last keeps the rest of the line).
inline std::vector<std::vector<std::string>> readVectors(const std::string& name, size_t fields) {
    std::ifstream in(ZK_TEST_DATA_DIR "/crypto/" + name);
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#')
            continue;
        std::vector<std::string> row;
        size_t start = 0;
        for (size_t blank; row.size() + 1 < fields && (blank = line.find(' ', start)) != line.npos;
             start = blank + 1)
            row.push_back(line.substr(start, blank - start));
        row.push_back(line.substr(start));
        rows.push_back(row);
    }
    return rows;
}

/// Runs `check` with the processor's accelerated code (where it has any) and with the portable
/// code, naming the path in failures; restores the processor's path afterwards.
template <class Check> void onEveryPath(Check check) {
    for (bool portable : {false, true}) {
        SCOPED_TRACE(portable ? "portable code" : "processor's code");
        ZkCommonNS::ZkCryptoAcceleration::setPortable(portable);
        check();
    }
    ZkCommonNS::ZkCryptoAcceleration::setPortable(false);
}

} // namespace zkcryptotest

#endif // ZKCOMMON_TESTS_CRYPTO_CRYPTOTEST_H
