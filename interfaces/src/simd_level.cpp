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

uint32_t ProcessorAvx512() {
#if defined(__x86_64__) && defined(__GNUC__)
    // Worked out once: the processor does not change under a running module,
    // and instances may be created on several threads at once.
    static const uint32_t bit = [] {
        __builtin_cpu_init();
        // The runtime's check includes the system's saving of the registers.
        const bool all = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                         __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vnni");
        return all ? cpu::avx512 : 0u;
    }();
    return bit;
#else
    return 0;
#endif
}

SimdLevel ChooseSimdLevel(uint32_t features) {
    // A features service written before bit 6 reports AVX2 at most, whatever
    // the processor has; where it reports AVX2, the processor is asked.
    if ((features & cpu::avx2) != 0) features |= ProcessorAvx512();
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
