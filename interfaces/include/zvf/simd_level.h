// Instruction-set level a kernel runs at. Chosen once per instance from what
// the host's processor-features service reports (AVX-512 also where it
// reports AVX2 and the processor has it), capped by the environment
// variable ZVF_SIMD ("scalar", "sse2", "avx2" or "avx512") so tests and field
// debugging can force the scalar twins. Every level gives the same bytes; a
// kernel without a twin at a level runs its highest one below it.
#pragma once

#include <cstdint>

namespace zvf {

enum class SimdLevel : uint8_t { scalar = 0, sse2 = 1, avx2 = 2, avx512 = 3 };

// Highest level the feature bits (zvf::cpu) allow on this build's target.
SimdLevel LevelFromFeatures(uint32_t features);
// The cap named by ZVF_SIMD, or avx512 (no cap) when it is unset or
// unrecognised.
SimdLevel LevelCapFromEnvironment();
// zvf::cpu::avx512 when this processor and its system have AVX-512 F, BW,
// VBMI and VNNI (on x86-64 builds), else 0.
uint32_t ProcessorAvx512();
// min(LevelFromFeatures(features), LevelCapFromEnvironment()), where
// features that include AVX2 also get ProcessorAvx512(): a host's service
// may predate the AVX-512 bit and report AVX2 at most.
SimdLevel ChooseSimdLevel(uint32_t features);

const char* SimdLevelName(SimdLevel level);

}  // namespace zvf
