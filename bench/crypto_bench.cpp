// Digests and AES-CBC over 64 MB against OpenSSL's libcrypto, in the same run; ends with a table
// of MB/s and the speed of ours relative to OpenSSL's (above 1 is faster).
#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <map>
#include <openssl/evp.h>
#include <random>
#include <string>
#include <utility>
#include <vector>
#include <zkcommon/crypto/acceleration.h>
#include <zkcommon/crypto/aes.h>
#include <zkcommon/crypto/md5.h>
#include <zkcommon/crypto/sha1.h>
#include <zkcommon/crypto/sha256.h>
#include <zkcommon/crypto/sha512.h>

using namespace ZkCommonNS;

namespace {

constexpr size_t kInputBytes = size_t(64) << 20;

const std::vector<unsigned char>& input() {
    static const std::vector<unsigned char> bytes = [] {
        std::vector<unsigned char> data(kInputBytes);
        std::mt19937_64 random(64);
        for (size_t i = 0; i < data.size(); i += 8) {
            const uint64_t word = random();
            for (size_t j = 0; j < 8; ++j)
                data[i + j] = static_cast<unsigned char>(word >> (8 * j));
        }
        return data;
    }();
    return bytes;
}

const unsigned char kKey[32] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16,
                                17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32};
const unsigned char kIv[16] = {9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 1, 2, 3, 4, 5, 6};

void finish(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kInputBytes));
}

// Our digests; `portable` forces the table code for the run.
template <class Context, int Length> void zkDigest(benchmark::State& state, bool portable) {
    ZkCryptoAcceleration::setPortable(portable);
    const std::vector<unsigned char>& data = input();
    unsigned char out[64];
    for (auto _ : state) {
        Context ctx;
        ctx.Update(data.data(), data.size());
        ctx.Final(out);
        benchmark::DoNotOptimize(out);
    }
    ZkCryptoAcceleration::setPortable(false);
    finish(state);
}

// SHA1_CTX takes unsigned int lengths: 64 MB fits.
void zkSha1(benchmark::State& state, bool portable) {
    ZkCryptoAcceleration::setPortable(portable);
    const std::vector<unsigned char>& data = input();
    unsigned char out[20];
    for (auto _ : state) {
        SHA1_CTX ctx;
        ctx.Update(data.data(), static_cast<unsigned>(data.size()));
        ctx.Final(out);
        benchmark::DoNotOptimize(out);
    }
    ZkCryptoAcceleration::setPortable(false);
    finish(state);
}

void zkMd5(benchmark::State& state, bool portable) {
    zkDigest<MD5_CTX, 16>(state, portable);
}
void zkSha256(benchmark::State& state, bool portable) {
    zkDigest<SHA256_CTX, 32>(state, portable);
}
void zkSha384(benchmark::State& state, bool portable) {
    zkDigest<SHA384_CTX, 48>(state, portable);
}
void zkSha512(benchmark::State& state, bool portable) {
    zkDigest<SHA512_CTX, 64>(state, portable);
}

void opensslDigest(benchmark::State& state, const EVP_MD* md) {
    const std::vector<unsigned char>& data = input();
    unsigned char out[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    for (auto _ : state) {
        EVP_Digest(data.data(), data.size(), out, &length, md, nullptr);
        benchmark::DoNotOptimize(out);
    }
    finish(state);
}

void zkCbc(benchmark::State& state, int keyBytes, bool encrypt, bool portable) {
    ZkCryptoAcceleration::setPortable(portable);
    const std::vector<unsigned char>& data = input();
    std::vector<unsigned char> out(data.size());
    AES_Encryption encryption(AES_MODE_CBC, kKey, keyBytes, kIv);
    AES_Decryption decryption(AES_MODE_CBC, kKey, keyBytes, kIv);
    const int bits = static_cast<int>(data.size() * 8);
    for (auto _ : state) {
        if (encrypt)
            encryption.blockEncrypt(data.data(), bits, out.data());
        else
            decryption.blockDecrypt(data.data(), bits, out.data());
        benchmark::DoNotOptimize(out.data());
    }
    ZkCryptoAcceleration::setPortable(false);
    finish(state);
}

void opensslCbc(benchmark::State& state, int keyBytes, bool encrypt) {
    const std::vector<unsigned char>& data = input();
    std::vector<unsigned char> out(data.size() + 16);
    EVP_CIPHER_CTX* ctx = EVP_CIPHER_CTX_new();
    for (auto _ : state) {
        int length = 0;
        EVP_CipherInit_ex(ctx, keyBytes == 16 ? EVP_aes_128_cbc() : EVP_aes_256_cbc(), nullptr,
                          kKey, kIv, encrypt ? 1 : 0);
        EVP_CIPHER_CTX_set_padding(ctx, 0);
        EVP_CipherUpdate(ctx, out.data(), &length, data.data(), static_cast<int>(data.size()));
        benchmark::DoNotOptimize(out.data());
    }
    EVP_CIPHER_CTX_free(ctx);
    finish(state);
}

#define ZK_CRYPTO_BENCH(name, ...)                                                                 \
    BENCHMARK_CAPTURE(name, __VA_ARGS__)->Unit(benchmark::kMillisecond)->MinTime(0.5)

ZK_CRYPTO_BENCH(zkMd5, MD5_Zk, false);
ZK_CRYPTO_BENCH(opensslDigest, MD5_OpenSSL, EVP_md5());
ZK_CRYPTO_BENCH(zkSha1, SHA1_Zk, false);
ZK_CRYPTO_BENCH(zkSha1, SHA1_ZkPortable, true);
ZK_CRYPTO_BENCH(opensslDigest, SHA1_OpenSSL, EVP_sha1());
ZK_CRYPTO_BENCH(zkSha256, SHA256_Zk, false);
ZK_CRYPTO_BENCH(zkSha256, SHA256_ZkPortable, true);
ZK_CRYPTO_BENCH(opensslDigest, SHA256_OpenSSL, EVP_sha256());
ZK_CRYPTO_BENCH(zkSha384, SHA384_Zk, false);
ZK_CRYPTO_BENCH(opensslDigest, SHA384_OpenSSL, EVP_sha384());
ZK_CRYPTO_BENCH(zkSha512, SHA512_Zk, false);
ZK_CRYPTO_BENCH(zkSha512, SHA512_ZkPortable, true);
ZK_CRYPTO_BENCH(opensslDigest, SHA512_OpenSSL, EVP_sha512());
ZK_CRYPTO_BENCH(zkCbc, AES128_CBC_Encrypt_Zk, 16, true, false);
ZK_CRYPTO_BENCH(zkCbc, AES128_CBC_Encrypt_ZkPortable, 16, true, true);
ZK_CRYPTO_BENCH(opensslCbc, AES128_CBC_Encrypt_OpenSSL, 16, true);
ZK_CRYPTO_BENCH(zkCbc, AES128_CBC_Decrypt_Zk, 16, false, false);
ZK_CRYPTO_BENCH(zkCbc, AES128_CBC_Decrypt_ZkPortable, 16, false, true);
ZK_CRYPTO_BENCH(opensslCbc, AES128_CBC_Decrypt_OpenSSL, 16, false);
ZK_CRYPTO_BENCH(zkCbc, AES256_CBC_Encrypt_Zk, 32, true, false);
ZK_CRYPTO_BENCH(opensslCbc, AES256_CBC_Encrypt_OpenSSL, 32, true);
ZK_CRYPTO_BENCH(zkCbc, AES256_CBC_Decrypt_Zk, 32, false, false);
ZK_CRYPTO_BENCH(opensslCbc, AES256_CBC_Decrypt_OpenSSL, 32, false);

/// Prints, after the usual table, MB/s of each of ours beside OpenSSL's on the same operation.
/// With --benchmark_repetitions it gives the best repetition of each and the ratio of the medians
/// too: on a shared machine other work only ever slows a run down, so the best runs are the
/// steadiest comparison, and the two ratios apart show how noisy the run was.
/// --benchmark_enable_random_interleaving=true mixes the repetitions of ours and OpenSSL's in time.
class SpeedReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration)
                continue;
            auto bytes = run.counters.find("bytes_per_second");
            if (bytes == run.counters.end())
                continue;
            // "function/LABEL/min_time:..." is kept as "function/LABEL".
            std::string name = run.benchmark_name();
            const size_t second = name.find('/', name.find('/') + 1);
            if (second != std::string::npos)
                name.resize(second);
            m_megabytesPerSecond[name].push_back(bytes->second.value / 1048576.0);
        }
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\n%-32s %10s %10s %13s %13s\n", "operation on 64 MB", "ours MB/s", "OpenSSL",
                    "ours/OpenSSL", "of medians");
        for (const auto& entry : m_megabytesPerSecond) {
            // Runs are named "function/LABEL_Zk" or "function/LABEL_ZkPortable"; the peer is
            // "function/LABEL_OpenSSL".
            const std::string label = entry.first.substr(entry.first.find('/') + 1);
            const size_t at = label.rfind("_Zk");
            if (at == std::string::npos)
                continue;
            const std::vector<double>* peer = find("/" + label.substr(0, at) + "_OpenSSL");
            if (peer == nullptr)
                continue;
            const double ours = best(entry.second), theirs = best(*peer);
            std::printf("%-32s %10.0f %10.0f %13.2f %13.2f\n", label.c_str(), ours, theirs,
                        ours / theirs, median(entry.second) / median(*peer));
        }
    }

private:
    static double best(const std::vector<double>& values) {
        return *std::max_element(values.begin(), values.end());
    }
    static double median(std::vector<double> values) {
        std::sort(values.begin(), values.end());
        const size_t n = values.size();
        return n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
    }
    const std::vector<double>* find(const std::string& suffix) const {
        for (const auto& entry : m_megabytesPerSecond)
            if (entry.first.size() >= suffix.size() &&
                entry.first.compare(entry.first.size() - suffix.size(), suffix.size(), suffix) == 0)
                return &entry.second;
        return nullptr;
    }
    std::map<std::string, std::vector<double>> m_megabytesPerSecond;
};

} // namespace

int main(int argc, char** argv) {
    input();
    benchmark::Initialize(&argc, argv);
    SpeedReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
