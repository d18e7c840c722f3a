// The instruction-set levels above scalar that this processor runs, for the
// differential tests that hold every twin against its scalar version.
#pragma once

#include <vector>

#include "kit/services.h"
#include "zvf/simd_level.h"

namespace zvf::test {

inline std::vector<SimdLevel> LevelsAboveScalar() {
    const SimdLevel top = LevelFromFeatures(host::DetectProcessorFeatures());
    std::vector<SimdLevel> levels;
    for (SimdLevel l : {SimdLevel::sse2, SimdLevel::avx2})
        if (l <= top) levels.push_back(l);
    return levels;
}

}  // namespace zvf::test
