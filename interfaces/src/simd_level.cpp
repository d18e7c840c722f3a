#include "zvf/simd_level.h"

#include <cstdlib>
#include <cstring>

#include "zvf/abi.h"

namespace zvf {

SimdLevel LevelFromFeatures(uint32_t features) {
#if defined(__i386__) || defined(__x86_64__) || defined(_M_IX86) || defined(_M_X64)
    const bool avx2 = (features & cpu::avx2) != 0 && (features & cpu::sse2) != 0;
#if defined(__x86_64__) || defined(_M_X64)
    // Its kernels keep more than eight 512-bit values live, which only the
    // 64-bit register file holds.
    if (avx2 && (features & cpu::avx512) != 0) return SimdLevel::avx512;
#endif
    if (avx2) return SimdLevel::avx2;
    if ((features & cpu::sse2) != 0) return SimdLevel::sse2;
#else
    (void)features;
#endif
    return SimdLevel::scalar;
}

SimdLevel LevelCapFromEnvironment() {
    const char* cap = std::getenv("ZVF_SIMD");
    if (cap == nullptr) return SimdLevel::avx512;
    if (std::strcmp(cap, "scalar") == 0) return SimdLevel::scalar;
    if (std::strcmp(cap, "sse2") == 0) return SimdLevel::sse2;
    if (std::strcmp(cap, "avx2") == 0) return SimdLevel::avx2;
    return SimdLevel::avx512;
}

SimdLevel ChooseSimdLevel(uint32_t features) {
    SimdLevel a = LevelFromFeatures(features);
    SimdLevel b = LevelCapFromEnvironment();
    return a < b ? a : b;
}

const char* SimdLevelName(SimdLevel level) {
    switch (level) {
        case SimdLevel::sse2: return "sse2";
        case SimdLevel::avx2: return "avx2";
        case SimdLevel::avx512: return "avx512";
        default: return "scalar";
    }
}

}  // namespace zvf
