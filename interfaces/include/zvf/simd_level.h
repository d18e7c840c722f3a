// Instruction-set level a kernel runs at. Chosen once per instance from what
// the host's processor-features service reports, capped by the environment
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
// min(LevelFromFeatures(features), LevelCapFromEnvironment()).
SimdLevel ChooseSimdLevel(uint32_t features);

const char* SimdLevelName(SimdLevel level);

}  // namespace zvf
