// The instruction-set levels above scalar that this processor runs, for the
// differential tests that hold every twin against its scalar version. The
// AVX-512 level has twins of a few kernels only; their tests ask for it.
#pragma once

#include <vector>

#include "kit/services.h"
#include "zvf/simd_level.h"

namespace zvf::test {

// `highest`: the highest level the kernel under test has a twin at.
inline std::vector<SimdLevel> LevelsAboveScalar(SimdLevel highest = SimdLevel::avx2) {
    const SimdLevel top = LevelFromFeatures(host::DetectProcessorFeatures());
    std::vector<SimdLevel> levels;
    for (SimdLevel l : {SimdLevel::sse2, SimdLevel::avx2, SimdLevel::avx512})
        if (l <= top && l <= highest) levels.push_back(l);
    return levels;
}

// Whether this processor runs `level`, for twins that exist at one level only.
inline bool ProcessorRuns(SimdLevel level) {
    return level <= LevelFromFeatures(host::DetectProcessorFeatures());
}

}  // namespace zvf::test
