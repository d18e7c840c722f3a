// The SSE2 Matrix line kernel against the scalar one: every width from 2 to
// 130 pixels, odd offsets, random and extreme pictures, kernels from the
// dialog's range to stored values past 16 bits; the bytes around the region
// must stay as they were.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "kit/frame.h"
#include "temporal/matrix/matrix_kernel.h"

namespace zvf::filters {
namespace {

MatrixCoefficients RandomCoefficients(std::mt19937& rng, int kind) {
    MatrixRecord r;
    for (int32_t& k : r.kernel) {
        switch (kind) {
            case 0:  // the dialog's range, normalised
                k = static_cast<int32_t>(rng() % 511) - 255;
                break;
            case 1:  // extreme 16-bit coefficients, not normalised
                k = (rng() & 1) ? 32767 : -32768;
                break;
            default:  // anything a stored record may hold
                k = static_cast<int32_t>(rng());
                break;
        }
    }
    r.normalize = kind == 1 ? 0 : (kind == 0 ? 1 : rng() & 1);
    MatrixCoefficients c = DeriveMatrixCoefficients(r);
    c.valid = 1;  // exercise the convolution even where the sum is 0
    return c;
}

TEST(MatrixSse2, ByteIdenticalToScalarForEveryWidthAndOffset) {
    std::mt19937 rng(42);
    for (int32_t width = 2; width <= 130; ++width) {
        for (int32_t left : {0, 1, 3}) {
            for (int kind = 0; kind < 3; ++kind) {
                const int32_t w = left + width + (width % 4);  // sometimes at the frame's right edge
                host::Frame src(w, 7), scalar(w, 7), simd(w, 7);
                const int fill = (width + kind) % 4;  // random, 0, 255, alternating extremes
                for (size_t i = 0; i < src.Bytes(); ++i) {
                    const uint8_t r = static_cast<uint8_t>(rng());
                    src.Pixels()[i] = fill == 0 ? r : fill == 1 ? 0 : fill == 2 ? 255 : ((i / 2) & 1 ? 255 : 0);
                    scalar.Pixels()[i] = simd.Pixels()[i] = static_cast<uint8_t>(rng());
                }
                const MatrixCoefficients c = RandomCoefficients(rng, kind);
                const Rect r{left, 1, left + width, 6};
                for (int32_t field : {0, 1}) {
                    FieldView a, b;
                    ASSERT_EQ(OpenField(&scalar, &src, &r, field, &a, OddRule::SelectorNonZero), status::ok);
                    ASSERT_EQ(OpenField(&simd, &src, &r, field, &b, OddRule::SelectorNonZero), status::ok);
                    ASSERT_TRUE(ConvolveMatrixField(a, c, SimdLevel::scalar));
                    ASSERT_TRUE(ConvolveMatrixField(b, c, SimdLevel::sse2));
                }
                ASSERT_TRUE(std::equal(scalar.Pixels(), scalar.Pixels() + scalar.Bytes(), simd.Pixels()))
                    << "width " << width << " left " << left << " kind " << kind;
            }
        }
    }
}

TEST(MatrixSse2, InPlaceMatchesScalar) {
    std::mt19937 rng(7);
    for (int kind = 0; kind < 3; ++kind) {
        host::Frame a(67, 9), b(67, 9);
        for (size_t i = 0; i < a.Bytes(); ++i) a.Pixels()[i] = b.Pixels()[i] = static_cast<uint8_t>(rng());
        const MatrixCoefficients c = RandomCoefficients(rng, kind);
        const Rect r{1, 0, 66, 9};
        FieldView va, vb;
        ASSERT_EQ(OpenField(&a, &a, &r, 0, &va, OddRule::SelectorNonZero), status::ok);
        ASSERT_EQ(OpenField(&b, &b, &r, 0, &vb, OddRule::SelectorNonZero), status::ok);
        ASSERT_TRUE(ConvolveMatrixField(va, c, SimdLevel::scalar));
        ASSERT_TRUE(ConvolveMatrixField(vb, c, SimdLevel::sse2));
        ASSERT_TRUE(std::equal(a.Pixels(), a.Pixels() + a.Bytes(), b.Pixels())) << kind;
    }
}

}  // namespace
}  // namespace zvf::filters
