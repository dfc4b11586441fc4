// ZkCryptoAcceleration: the processor check, made once, and the switch to the portable code.
#include "zkcommon/crypto/acceleration.h"

#include "crypto/cryptoimpl.h"

#include <atomic>
#include <cstdlib>

#if ZK_CRYPTO_X86
#include <cpuid.h>
#endif

namespace ZkCommonNS {

namespace {

struct Features {
    bool sha = false;
    bool aes = false;
    bool bmi2 = false;
    bool avx2 = false;
};

Features detect() noexcept {
    Features features;
#if ZK_CRYPTO_X86
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0)
        return features;
    const bool ssse3 = (ecx & bit_SSSE3) != 0;
    const bool sse41 = (ecx & bit_SSE4_1) != 0;
    features.aes = sse41 && (ecx & bit_AES) != 0;
    // AVX2 also needs the system to save the YMM registers: XCR0 bits 1 and 2.
    bool ymmSaved = false;
    if ((ecx & bit_OSXSAVE) != 0 && (ecx & bit_AVX) != 0) {
        unsigned xcr0Low = 0, xcr0High = 0;
        __asm__("xgetbv" : "=a"(xcr0Low), "=d"(xcr0High) : "c"(0));
        ymmSaved = (xcr0Low & 6u) == 6u;
    }
    if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) != 0) {
        features.sha = ssse3 && sse41 && (ebx & bit_SHA) != 0;
        features.bmi2 = (ebx & bit_BMI2) != 0;
        features.avx2 = ymmSaved && features.bmi2 && (ebx & bit_AVX2) != 0;
    }
#endif
    return features;
}

const Features& processor() noexcept {
    static const Features features = detect();
    return features;
}

bool portableFromEnvironment() noexcept {
    const char* value = std::getenv("ZK_CRYPTO_PORTABLE");
    return value != nullptr && value[0] != '\0' && !(value[0] == '0' && value[1] == '\0');
}

// Read on every call of an operation, so a relaxed load; the environment is read once, on the
// first use, through the static initialiser.
std::atomic<bool>& portableSwitch() noexcept {
    static std::atomic<bool> portable{portableFromEnvironment()};
    return portable;
}

} // namespace

namespace detail {

bool useShaExtensions() noexcept {
    return processor().sha && !portableSwitch().load(std::memory_order_relaxed);
}

bool useAesInstructions() noexcept {
    return processor().aes && !portableSwitch().load(std::memory_order_relaxed);
}

bool useAvx2() noexcept {
    return processor().avx2 && !portableSwitch().load(std::memory_order_relaxed);
}

bool useBmi2() noexcept {
    return processor().bmi2 && !portableSwitch().load(std::memory_order_relaxed);
}

} // namespace detail

bool ZkCryptoAcceleration::sha() noexcept {
    return detail::useShaExtensions();
}

bool ZkCryptoAcceleration::aes() noexcept {
    return detail::useAesInstructions();
}

void ZkCryptoAcceleration::setPortable(bool portable) noexcept {
    portableSwitch().store(portable, std::memory_order_relaxed);
}

} // namespace ZkCommonNS
