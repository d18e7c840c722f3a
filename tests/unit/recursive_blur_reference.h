// Reference models of the two recursive blurs, written the plain way: each
// lane of each line (a row of pairs, then a column of pairs, walked down the
// field) is gathered into a vector and smoothed on its own. The kernels sweep
// rows in strips instead; both must give the same bytes.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "zvf/abi.h"

namespace zvf::test {

using LineFilter = std::function<std::vector<int32_t>(const std::vector<int32_t>&, int32_t a)>;

inline int32_t Clamp(int64_t v, int64_t lo, int64_t hi) {
    return static_cast<int32_t>(v < lo ? lo : (v > hi ? hi : v));
}

// Blur: whole 8-bit steps with rounding; the outputs average the two
// directions with a floor.
inline std::vector<int32_t> BlurLineReference(const std::vector<int32_t>& x, int32_t a) {
    const size_t n = x.size();
    auto step = [a](int64_t in, int64_t prev) {
        return Clamp(((32768 - a) * in + a * prev + 16384) >> 15, -32768, 32767);
    };
    std::vector<int32_t> fwd(n), out(n);
    int64_t p = x[0];
    for (size_t k = 0; k < n; ++k) p = fwd[k] = step(x[k], p);
    p = x[n - 1];
    for (size_t k = n; k-- > 0;) {
        p = step(x[k], p);
        out[k] = Clamp((p + fwd[k]) >> 1, 0, 255);
    }
    return out;
}

// Smooth Blur: samples centred on 128 with 8 fraction bits, states truncated
// to 16 bits, outputs from the untruncated accumulators of both directions.
inline std::vector<int32_t> SmoothBlurLineReference(const std::vector<int32_t>& x, int32_t a) {
    const size_t n = x.size();
    std::vector<int64_t> c(n), fwd(n);
    std::vector<int32_t> out(n);
    for (size_t k = 0; k < n; ++k) c[k] = (x[k] - 128) * 256;
    auto acc = [a](int64_t in, int64_t prev) { return (32768 - a) * in + a * prev; };
    int64_t p = c[0];
    for (size_t k = 0; k < n; ++k) {
        fwd[k] = acc(c[k], p);
        p = Clamp(fwd[k] >> 15, -32768, 32767);
    }
    p = c[n - 1];
    for (size_t k = n; k-- > 0;) {
        const int64_t g = acc(c[k], p);
        p = Clamp(g >> 15, -32768, 32767);
        const int64_t v = Clamp((g + fwd[k]) >> 16, -32768, 32767);
        out[k] = Clamp((v >> 8) + 128, 0, 255);
    }
    return out;
}

// Filters the selected field's rows of `rect` (field 1: odd rows) of a
// width-pixel frame from src into dst: every row, then every pair column.
inline void ReferenceField(std::vector<uint8_t>& dst, const std::vector<uint8_t>& src, int32_t width, const Rect& rect,
                           int32_t field, int32_t a, const LineFilter& line) {
    const int32_t odd = field == 1 ? 1 : 0;
    const int32_t pairs = (rect.right - rect.left) / 2;
    std::vector<int32_t> rows;
    for (int32_t y = rect.top; y < rect.bottom; ++y)
        if ((y & 1) == odd) rows.push_back(y);
    if (rows.empty() || pairs == 0) return;
    auto at = [&](int32_t y, int32_t pair, int32_t lane) {
        return static_cast<size_t>(y) * width * 2 + static_cast<size_t>(rect.left) * 2 + pair * 4 + lane;
    };
    std::vector<uint8_t> mid = dst;
    for (int32_t y : rows)
        for (int32_t lane = 0; lane < 4; ++lane) {
            std::vector<int32_t> x;
            for (int32_t i = 0; i < pairs; ++i) x.push_back(src[at(y, i, lane)]);
            const std::vector<int32_t> r = line(x, a);
            for (int32_t i = 0; i < pairs; ++i) mid[at(y, i, lane)] = static_cast<uint8_t>(r[i]);
        }
    for (int32_t i = 0; i < pairs; ++i)
        for (int32_t lane = 0; lane < 4; ++lane) {
            std::vector<int32_t> x;
            for (int32_t y : rows) x.push_back(mid[at(y, i, lane)]);
            const std::vector<int32_t> r = line(x, a);
            for (size_t k = 0; k < rows.size(); ++k) mid[at(rows[k], i, lane)] = static_cast<uint8_t>(r[k]);
        }
    dst = mid;
}

}  // namespace zvf::test
