// The processor check finds what /proc/cpuinfo lists, and the switch to the portable code.
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <zkcommon/crypto/acceleration.h>

using namespace ZkCommonNS;

namespace {
bool cpuinfoHasFlag(const std::string& flag) {
    std::ifstream in("/proc/cpuinfo");
    std::string line;
    while (std::getline(in, line)) {
        if (line.compare(0, 5, "flags") != 0)
            continue;
        std::istringstream words(line);
        std::string word;
        while (words >> word)
            if (word == flag)
                return true;
        return false;
    }
    return false;
}
} // namespace

TEST(CryptoAcceleration, FollowsTheProcessorAndTheSwitch) {
    const char* forced = std::getenv("ZK_CRYPTO_PORTABLE");
    if (forced != nullptr && forced[0] != '\0' && std::string(forced) != "0")
        GTEST_SKIP() << "ZK_CRYPTO_PORTABLE is set";
    ZkCryptoAcceleration::setPortable(false);
    EXPECT_EQ(ZkCryptoAcceleration::sha(), cpuinfoHasFlag("sha_ni"));
    EXPECT_EQ(ZkCryptoAcceleration::aes(), cpuinfoHasFlag("aes"));
    ZkCryptoAcceleration::setPortable(true);
    EXPECT_FALSE(ZkCryptoAcceleration::sha());
    EXPECT_FALSE(ZkCryptoAcceleration::aes());
    ZkCryptoAcceleration::setPortable(false);
}
