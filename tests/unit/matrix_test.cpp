#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "kit/frame.h"
#include "temporal/matrix/matrix_coefficients.h"
#include "temporal/matrix/matrix_dialog.h"
#include "temporal/matrix/matrix_kernel.h"
#include "temporal/matrix/matrix_narrow.h"
#include "zvf/record.h"

namespace zvf::filters {
namespace {

MatrixRecord Kernel(std::initializer_list<int32_t> cells, uint32_t normalize = 1) {
    MatrixRecord r;
    int i = 0;
    for (int32_t v : cells) r.kernel[i++] = v;
    r.normalize = normalize;
    return r;
}

TEST(MatrixCoefficients, DerivationScalesTruncatesAndWraps) {
    struct Case {
        const char* what;
        MatrixRecord record;
        int32_t valid;
        int16_t want[9];
    };
    const Case cases[] = {
        {"identity", Kernel({0, 0, 0, 0, 1, 0, 0, 0, 0}), 1, {0, 0, 0, 0, 4096, 0, 0, 0, 0}},
        {"box: 4096 / 9 = 455", Kernel({1, 1, 1, 1, 1, 1, 1, 1, 1}), 1, {455, 455, 455, 455, 455, 455, 455, 455, 455}},
        {"sharpen, sum 1: 9 x 4096 = 36864 wraps",
         Kernel({-1, -1, -1, -1, 9, -1, -1, -1, -1}),
         1,
         {-4096, -4096, -4096, -4096, -28672, -4096, -4096, -4096, -4096}},
        {"edge, sum 0", Kernel({-1, -1, -1, -1, 8, -1, -1, -1, -1}), 0, {0, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"edge, not normalised", Kernel({-1, -1, -1, -1, 8, -1, -1, -1, -1}, 0), 1, {-1, -1, -1, -1, 8, -1, -1, -1, -1}},
        {"sum 7: 4096 / 7 = 585.1 toward zero", Kernel({1, 1, 1, 1, 1, 1, 1, 1, -1}), 1,
         {585, 585, 585, 585, 585, 585, 585, 585, -585}},
        {"negative sum", Kernel({0, 0, 0, 0, -2, 0, 0, 0, 1}), 1, {0, 0, 0, 0, 8192, 0, 0, 0, -4096}},
        // 255 x 4096 = 1044480 = 15 x 65536 + 61440; -254 x 4096 = -16 x 65536 + 8192.
        {"wide range, sum 1", Kernel({255, 0, 0, 0, -254, 0, 0, 0, 0}), 1, {-4096, 0, 0, 0, 8192, 0, 0, 0, 0}},
        {"stored values past 16 bits", Kernel({70000, -40000, 0, 0, 0, 0, 0, 0, 0}, 0), 1,
         {4464, 25536, 0, 0, 0, 0, 0, 0, 0}},
        {"any non-zero flag normalises", Kernel({0, 0, 0, 0, 2, 0, 0, 0, 0}, 7), 1, {0, 0, 0, 0, 4096, 0, 0, 0, 0}},
    };
    for (const Case& c : cases) {
        const MatrixCoefficients m = DeriveMatrixCoefficients(c.record);
        EXPECT_EQ(m.valid, c.valid) << c.what;
        EXPECT_EQ(m.normalize, c.record.normalize != 0 ? 1 : 0) << c.what;
        for (int i = 0; i < 9; ++i) EXPECT_EQ(m.rows[i / 3][i % 3], c.want[i]) << c.what << " cell " << i;
        for (int r = 0; r < 3; ++r) EXPECT_EQ(m.rows[r][3], 0) << c.what;
    }
}

// A frame of `w` x `h` pixels with every pair given, and a destination full
// of a marker so that untouched bytes show.
struct MatrixFrame {
    MatrixFrame(int32_t w, int32_t h) : src(w, h), dst(w, h) {}
    void Random(uint32_t seed) {
        std::mt19937 rng(seed);
        for (size_t i = 0; i < src.Bytes(); ++i) src.Pixels()[i] = static_cast<uint8_t>(rng());
        for (size_t i = 0; i < dst.Bytes(); ++i) dst.Pixels()[i] = static_cast<uint8_t>(rng());
    }
    void Pairs(std::initializer_list<uint8_t> row) {
        for (int32_t y = 0; y < src.Height(); ++y) {
            size_t x = 0;
            for (uint8_t b : row) src.Pixels()[static_cast<size_t>(y) * src.Width() * 2 + x++] = b;
        }
    }
    std::vector<uint8_t> Run(const MatrixRecord& k, const Rect& r, int32_t field, bool inPlace = false) {
        host::Frame& out = inPlace ? src : dst;
        FieldView v;
        EXPECT_EQ(OpenField(&out, &src, &r, field, &v, OddRule::SelectorNonZero), status::ok);
        EXPECT_TRUE(ConvolveMatrixField(v, DeriveMatrixCoefficients(k)));
        return {out.Pixels(), out.Pixels() + out.Bytes()};
    }
    host::Frame src;
    host::Frame dst;
};

// Valid coefficients from nine row-major values.
MatrixCoefficients CoefficientsOf(const int16_t (&rows)[9], int32_t normalize) {
    MatrixCoefficients c;
    c.valid = 1;
    c.normalize = normalize;
    for (int i = 0; i < 9; ++i) c.rows[i / 3][i % 3] = rows[i];
    return c;
}

TEST(MatrixNarrow, KernelsWithSmallScaledWeightsAndNoOthers) {
    struct Case {
        const char* what;
        int16_t rows[9];
        int32_t normalize;
        bool narrow;
        int8_t weights[9];
        int32_t shift;
        int16_t chromaBias;  // -128 x the weights' total
    };
    const Case cases[] = {
        {"sharpen, sum 1: 4096 x k", {0, -4096, 0, -4096, 20480, -4096, 0, -4096, 0}, 1, true,
         {0, -1, 0, -1, 5, -1, 0, -1, 0}, 0, -128},
        {"Gaussian, sum 16: 256 x k, shift 12 - 8", {256, 512, 256, 512, 1024, 512, 256, 512, 256}, 1, true,
         {1, 2, 1, 2, 4, 2, 1, 2, 1}, 4, -2048},
        {"two halves: 2048 x 1, shift 1", {2048, 2048, 0, 0, 0, 0, 0, 0, 0}, 1, true, {1, 1, 0, 0, 0, 0, 0, 0, 0}, 1,
         -256},
        {"wrapped centre -28672 = -7 x 4096", {-4096, -4096, -4096, -4096, -28672, -4096, -4096, -4096, -4096}, 1,
         true, {-1, -1, -1, -1, -7, -1, -1, -1, -1}, 0, 1920},
        {"-32768 normalised: t stops at 12", {0, 0, 0, 0, -32768, 0, 0, 0, 0}, 1, true, {0, 0, 0, 0, -8, 0, 0, 0, 0}, 0,
         1024},
        {"16384 normalised: weight 4", {0, 0, 0, 0, 0, 0, 0, 16384, 0}, 1, true, {0, 0, 0, 0, 0, 0, 0, 4, 0}, 0, -512},
        {"box, 455 each: odd and too large", {455, 455, 455, 455, 455, 455, 455, 455, 455}, 1, false, {}, 0, 0},
        {"edge, not normalised", {-1, -1, -1, -1, 8, -1, -1, -1, -1}, 0, true, {-1, -1, -1, -1, 8, -1, -1, -1, -1}, 0,
         0},
        {"not normalised: even weights are not scaled down", {0, 0, 0, 0, 2, 0, 0, 0, 4}, 0, true,
         {0, 0, 0, 0, 2, 0, 0, 0, 4}, 0, -768},
        {"magnitudes total 128", {127, 0, 0, 0, 0, 0, 0, 0, 1}, 0, true, {127, 0, 0, 0, 0, 0, 0, 0, 1}, 0, -16384},
        {"magnitudes total 129", {127, 0, 0, 0, 0, 0, 0, 0, -2}, 0, false, {}, 0, 0},
        {"-128 is a signed byte", {0, 0, 0, 0, -128, 0, 0, 0, 0}, 0, true, {0, 0, 0, 0, -128, 0, 0, 0, 0}, 0, 16384},
        {"128 is not", {0, 0, 0, 0, 128, 0, 0, 0, 0}, 0, false, {}, 0, 0},
        {"-32768 not normalised", {0, 0, 0, 0, 0, 0, 0, 0, -32768}, 0, false, {}, 0, 0},
    };
    for (const Case& k : cases) {
        const MatrixCoefficients c = CoefficientsOf(k.rows, k.normalize);
        MatrixNarrow n;
        ASSERT_EQ(NarrowMatrix(c, &n), k.narrow) << k.what;
        if (!k.narrow) continue;
        for (int i = 0; i < 9; ++i) EXPECT_EQ(n.weights[i / 3][i % 3], k.weights[i]) << k.what << " cell " << i;
        EXPECT_EQ(n.shift, k.shift) << k.what;
        EXPECT_EQ(n.chromaBias, k.chromaBias) << k.what;
    }
}

// Kernels without the power-of-two form whose coefficients still share one
// factor: small weights times their greatest common divisor.
TEST(MatrixNarrow, ScaledFormTakesTheCommonFactor) {
    struct Case {
        const char* what;
        int16_t rows[9];
        int32_t normalize;
        bool scaled;
        int8_t weights[9];
        int16_t scale;
        int16_t chromaBias;  // -128 x the weights' total
    };
    const Case cases[] = {
        {"box, 455 each", {455, 455, 455, 455, 455, 455, 455, 455, 455}, 1, true, {1, 1, 1, 1, 1, 1, 1, 1, 1}, 455,
         -1152},
        {"not normalised, 300 and -600", {0, 300, 0, 0, -600, 0, 0, 0, 0}, 0, true, {0, 1, 0, 0, -2, 0, 0, 0, 0}, 300,
         128},
        {"mixed signs, factor 3, magnitudes 128", {-378, 3, 0, 0, 0, 0, 0, 0, 3}, 0, true,
         {-126, 1, 0, 0, 0, 0, 0, 0, 1}, 3, 15872},
        {"magnitudes 129", {-381, 3, 0, 0, 0, 0, 0, 0, 3}, 0, false, {}, 0, 0},
        {"sharpen: the power-of-two form instead", {0, -4096, 0, -4096, 20480, -4096, 0, -4096, 0}, 1, false, {}, 0, 0},
        {"-32768 alone, not normalised: factor too large", {0, 0, 0, 0, -32768, 0, 0, 0, 0}, 0, false, {}, 0, 0},
        {"coprime coefficients", {455, 454, 0, 0, 0, 0, 0, 0, 0}, 1, false, {}, 0, 0},
        {"weights past a signed byte", {3 * 128, 3, 0, 0, 0, 0, 0, 0, 0}, 0, false, {}, 0, 0},
        {"all zero", {0, 0, 0, 0, 0, 0, 0, 0, 0}, 0, false, {}, 0, 0},
    };
    for (const Case& k : cases) {
        const MatrixCoefficients c = CoefficientsOf(k.rows, k.normalize);
        MatrixNarrow n;
        ASSERT_EQ(ScaledMatrix(c, &n), k.scaled) << k.what;
        if (!k.scaled) continue;
        for (int i = 0; i < 9; ++i) EXPECT_EQ(n.weights[i / 3][i % 3], k.weights[i]) << k.what << " cell " << i;
        EXPECT_EQ(n.scale, k.scale) << k.what;
        EXPECT_EQ(n.shift, 0) << k.what;
        EXPECT_EQ(n.chromaBias, k.chromaBias) << k.what;
    }
}

// Kernels with neither form whose coefficients are a factor times small
// weights plus small residuals.
TEST(MatrixNarrow, SplitFormTakesWeightsAndResiduals) {
    struct Case {
        const char* what;
        int16_t rows[9];
        int32_t normalize;
        bool split;
        int16_t scale;
        int8_t weights[9];
        int8_t residuals[9];
        int16_t chromaBias, residualBias;  // -128 x each total
    };
    const Case cases[] = {
        {"1 2 1 / 2 5 2 / 1 2 1 normalised by 17: 240 x k + (0, 1, 4)",
         {240, 481, 240, 481, 1204, 481, 240, 481, 240}, 1, true, 240, {1, 2, 1, 2, 5, 2, 1, 2, 1},
         {0, 1, 0, 1, 4, 1, 0, 1, 0}, -2176, -1024},
        {"sharpen around 200, not normalised: 199 x 1 + (-1, 1)", {0, -1, 0, -1, 200, -1, 0, -1, 0}, 0, true, 199,
         {0, 0, 0, 0, 1, 0, 0, 0, 0}, {0, -1, 0, -1, 1, -1, 0, -1, 0}, -128, 384},
        {"-32768 alone: 32767 x -1 - 1", {0, 0, 0, 0, -32768, 0, 0, 0, 0}, 0, true, 32767, {0, 0, 0, 0, -1, 0, 0, 0, 0},
         {0, 0, 0, 0, -1, 0, 0, 0, 0}, 128, 128},
        {"box of 455s: the scaled form instead", {455, 455, 455, 455, 455, 455, 455, 455, 455}, 1, false, 0, {}, {}, 0,
         0},
        {"sharpen: the power-of-two form instead", {0, -4096, 0, -4096, 20480, -4096, 0, -4096, 0}, 1, false, 0, {}, {},
         0, 0},
        {"unrelated large values", {12345, -23456, 32767, 1111, 2222, 3331, -4447, 5557, 6661}, 0, false, 0, {}, {},
         0, 0},
        {"12345, -23456, 32767 and 1..6: 617 x (20, -38, 53) + (5, -10, 66), the rest residuals",
         {12345, -23456, 32767, 1, 2, 3, 4, 5, 6}, 0, true, 617, {20, -38, 53, 0, 0, 0, 0, 0, 0},
         {5, -10, 66, 1, 2, 3, 4, 5, 6}, -4480, -10496},
        {"all zero", {0, 0, 0, 0, 0, 0, 0, 0, 0}, 0, false, 0, {}, {}, 0, 0},
    };
    for (const Case& k : cases) {
        const MatrixCoefficients c = CoefficientsOf(k.rows, k.normalize);
        MatrixNarrow n;
        ASSERT_EQ(SplitMatrix(c, &n), k.split) << k.what;
        if (!k.split) continue;
        EXPECT_TRUE(n.split) << k.what;
        EXPECT_EQ(n.scale, k.scale) << k.what;
        for (int i = 0; i < 9; ++i) {
            EXPECT_EQ(n.weights[i / 3][i % 3], k.weights[i]) << k.what << " cell " << i;
            EXPECT_EQ(n.residuals[i / 3][i % 3], k.residuals[i]) << k.what << " cell " << i;
        }
        EXPECT_EQ(n.chromaBias, k.chromaBias) << k.what;
        EXPECT_EQ(n.residualBias, k.residualBias) << k.what;
    }
}

// Every form found must give back each coefficient exactly and keep both
// sums inside 16 bits; normalised kernels of small values, the usual ones,
// should all find one.
TEST(MatrixNarrow, FormsRebuildTheCoefficientsOfSmallNormalisedKernels) {
    std::mt19937 rng(17);
    int32_t splits = 0;
    for (int trial = 0; trial < 4000; ++trial) {
        MatrixRecord record;
        int32_t magnitude = 0, sum = 0;
        const auto spread = 1 + rng() % 28;  // values up to +-28: magnitudes up to 252
        for (int32_t& v : record.kernel) {
            v = static_cast<int32_t>(rng() % (2 * spread + 1)) - static_cast<int32_t>(spread);
            magnitude += v < 0 ? -v : v;
            sum += v;
        }
        if (sum == 0) continue;
        const MatrixCoefficients c = DeriveMatrixCoefficients(record);
        MatrixNarrow n;
        const bool found = SixteenBitMatrix(c, &n);
        if (magnitude <= 128) {
            EXPECT_TRUE(found) << "trial " << trial;
        }
        if (!found) continue;
        splits += n.split ? 1 : 0;
        int32_t weights = 0, residuals = 0;
        for (int i = 0; i < 9; ++i) {
            const int32_t w = n.weights[i / 3][i % 3], r = n.residuals[i / 3][i % 3];
            const int32_t factor = n.split || n.scale != 0 ? n.scale : 1 << (12 - n.shift);
            ASSERT_EQ(c.rows[i / 3][i % 3], factor * w + r) << "trial " << trial << " cell " << i;
            weights += w < 0 ? -w : w;
            residuals += r < 0 ? -r : r;
        }
        EXPECT_LE(weights, 128);
        EXPECT_LE(residuals, 128);
    }
    EXPECT_GT(splits, 1000);
}

// A form's weights factor into a column and a row of small integers, the
// row starting positive, or the kernel takes the direct loops.
TEST(MatrixNarrow, SeparableFormsFactorTheWeights) {
    struct Case {
        const char* what;
        int16_t rows[9];
        int32_t normalize;
        bool separable;
        int8_t down[3];
        int8_t across[3];
    };
    const Case cases[] = {
        {"box of 455s (scaled)", {455, 455, 455, 455, 455, 455, 455, 455, 455}, 1, true, {1, 1, 1}, {1, 1, 1}},
        {"binomial (shifted)", {256, 512, 256, 512, 1024, 512, 256, 512, 256}, 1, true, {1, 2, 1}, {1, 2, 1}},
        {"row signs go down", {-1, 0, 1, -2, 0, 2, -1, 0, 1}, 0, true, {-1, -2, -1}, {1, 0, -1}},
        {"a common factor stays down", {6, 9, 0, -4, -6, 0, 0, 0, 0}, 0, true, {3, -2, 0}, {2, 3, 0}},
        {"a large factor down, magnitudes totalling 128", {1, 1, 0, 0, 0, 0, -63, -63, 0}, 0, true, {1, 0, -63},
         {1, 1, 0}},
        {"a 2 x 2 corner: the row's factor goes down", {0, 0, 0, 0, 3, 3, 0, 3, 3}, 0, true, {0, 3, 3}, {0, 1, 1}},
        {"one row only", {0, 0, 0, 1, 2, 1, 0, 0, 0}, 0, false, {}, {}},
        {"one column only", {0, 1, 0, 0, 2, 0, 0, 1, 0}, 0, false, {}, {}},
        {"one tap", {0, 0, 0, 0, 5, 0, 0, 0, 0}, 0, false, {}, {}},
        {"all zero", {0, 0, 0, 0, 0, 0, 0, 0, 0}, 0, false, {}, {}},
        {"sharpen", {0, -4096, 0, -4096, 20480, -4096, 0, -4096, 0}, 1, false, {}, {}},
        {"rank 1 but for one cell", {1, 2, 1, 2, 4, 2, 1, 2, 2}, 0, false, {}, {}},
        {"split form (1 2 1 / 2 5 2 / 1 2 1)", {240, 481, 240, 481, 1204, 481, 240, 481, 240}, 1, false, {}, {}},
    };
    for (const Case& k : cases) {
        const MatrixCoefficients c = CoefficientsOf(k.rows, k.normalize);
        MatrixNarrow n;
        MatrixSeparable s;
        const bool sixteen = SixteenBitMatrix(c, &n);
        ASSERT_EQ(sixteen && SeparateMatrix(n, &s), k.separable) << k.what;
        if (!k.separable) continue;
        for (int r = 0; r < 3; ++r) {
            EXPECT_EQ(s.down[r], k.down[r]) << k.what << " down " << r;
            EXPECT_EQ(s.across[r], k.across[r]) << k.what << " across " << r;
        }
    }
}

TEST(MatrixKernel, HandComputedResults) {
    struct Case {
        const char* what;
        MatrixRecord kernel;
        std::vector<uint8_t> in;   // two pairs, every row alike
        std::vector<uint8_t> out;  // the first field line's result
    };
    const Case cases[] = {
        // 200 x 455 x 9 = 819000 >> 12 = 199; (60 - 128) x 4095 = -278460 >> 12 = -68 (floor), + 128 = 60.
        {"box on flat 200", Kernel({1, 1, 1, 1, 1, 1, 1, 1, 1}), {200, 200, 200, 60, 200, 200, 200, 60},
         {199, 199, 199, 60, 199, 199, 199, 60}},
        // 2Y - Y(left): Y 100 10 50 200 -> 100, -80, 90, 350; Cb -28 -118 -> -28, -208; Cr 0 122 -> 0, 244.
        // Normalised luma shifts logically, so -80 turns white.
        {"negative luma turns white", Kernel({0, 0, 0, -1, 2, 0, 0, 0, 0}), {100, 100, 10, 128, 50, 10, 200, 250},
         {100, 100, 255, 128, 90, 0, 255, 255}},
        {"not normalised: negative luma clamps to 0", Kernel({0, 0, 0, -1, 2, 0, 0, 0, 0}, 0),
         {100, 100, 10, 128, 50, 10, 200, 250}, {100, 100, 0, 128, 90, 0, 255, 255}},
        {"edge map on flat, not normalised", Kernel({-1, -1, -1, -1, 8, -1, -1, -1, -1}, 0),
         {90, 30, 90, 220, 90, 30, 90, 220}, {0, 128, 0, 128, 0, 128, 0, 128}},
        {"edge kernel normalised: sum 0 copies", Kernel({-1, -1, -1, -1, 8, -1, -1, -1, -1}),
         {1, 2, 3, 4, 5, 6, 7, 8}, {1, 2, 3, 4, 5, 6, 7, 8}},
        {"all zero normalised copies", Kernel({0, 0, 0, 0, 0, 0, 0, 0, 0}), {1, 2, 3, 4, 5, 6, 7, 8},
         {1, 2, 3, 4, 5, 6, 7, 8}},
        // Centre -28672, ring -4096 on flat 100: (100 x -28672 - 8 x 409600) < 0 -> white luma;
        // chroma flat 128 stays 128; chroma 129: (-28672 - 8 x 4096) >> 12 = -15, + 128 = 113.
        {"wrapped sharpen centre", Kernel({-1, -1, -1, -1, 9, -1, -1, -1, -1}), {100, 128, 100, 129, 100, 128, 100, 129},
         {255, 128, 255, 113, 255, 128, 255, 113}},
    };
    for (const Case& c : cases) {
        MatrixFrame f(4, 6);
        f.Random(1);
        std::vector<uint8_t> in = c.in;
        for (int32_t y = 0; y < 6; ++y) std::copy(in.begin(), in.end(), f.src.Pixels() + 8 * y);
        const std::vector<uint8_t> out = f.Run(c.kernel, {0, 0, 4, 6}, 0);
        for (int line = 0; line < 3; ++line)
            for (int i = 0; i < 8; ++i) EXPECT_EQ(out[16 * line + i], c.out[i]) << c.what << " line " << line << " byte " << i;
    }
}

// Where a single-tap kernel (one cell 1, normalised) takes each output
// sample from: the field line above, the same or below (the first line's
// span moved one line down, the last clamped to the frame's last line of the
// field), and the sample left or right in the same channel (the first sample
// its own left neighbour, the right one read from the frame up to its edge).
uint8_t TapSource(const host::Frame& src, const Rect& r, int32_t odd, int cell, int32_t line, int32_t byte) {
    const int32_t pitch = src.Width() * 2;
    const int32_t firstRow = r.top + ((r.top & 1) ^ odd);
    const int32_t lastLine = (src.Height() - 1 - firstRow) / 2;
    int32_t l = (line == 0 ? 1 : line) + cell / 3 - 1;
    if (l > lastLine) l = lastLine;
    const int32_t rowStart = 2 * r.left;
    const int32_t step = (byte & 1) ? 4 : 2;  // chroma samples 4 bytes apart, luma 2
    int32_t b = byte + (cell % 3 - 1) * step;
    if (b < 0) b = byte;
    if (rowStart + b >= pitch) b = byte;
    return src.Pixels()[static_cast<size_t>(firstRow + 2 * l) * pitch + rowStart + b];
}

TEST(MatrixKernel, TapsComeFromTheNeighbouringLinesAndSamples) {
    struct Case {
        int32_t w, h;
        Rect r;
        int32_t field;
    };
    const Case cases[] = {
        {10, 12, {0, 0, 10, 12}, 0},  // the whole frame: both edges clamp
        {10, 12, {0, 0, 10, 12}, 1},
        {10, 12, {2, 2, 8, 9}, 0},     // inside: right and below read the frame
        {11, 12, {1, 1, 8, 12}, 5},    // odd left and width; any non-zero selector is the odd field
        {12, 9, {4, 5, 12, 9}, 3},     // two field lines, the second the frame's last
        {12, 9, {4, 4, 11, 9}, 0},     // three lines, odd width reaching the frame's last column
    };
    for (const Case& c : cases) {
        for (int cell = 0; cell < 9; ++cell) {
            MatrixRecord k = Kernel({0, 0, 0, 0, 0, 0, 0, 0, 0});
            k.kernel[cell] = 1;
            MatrixFrame f(c.w, c.h);
            f.Random(static_cast<uint32_t>(cell + 100 * c.w));
            const std::vector<uint8_t> before(f.dst.Pixels(), f.dst.Pixels() + f.dst.Bytes());
            const std::vector<uint8_t> out = f.Run(k, c.r, c.field);
            const int32_t odd = c.field != 0 ? 1 : 0;
            const int32_t pairs = (c.r.right - c.r.left) / 2;
            const int32_t firstRow = c.r.top + ((c.r.top & 1) ^ odd);
            for (int32_t y = 0; y < c.h; ++y) {
                for (int32_t x = 0; x < 2 * c.w; ++x) {
                    const size_t at = static_cast<size_t>(y) * 2 * c.w + x;
                    const int32_t byte = x - 2 * c.r.left;
                    const bool inside = y >= firstRow && y < c.r.bottom && ((y - firstRow) & 1) == 0 && byte >= 0 &&
                                        byte < 4 * pairs;
                    const uint8_t want = inside ? TapSource(f.src, c.r, odd, cell, (y - firstRow) / 2, byte) : before[at];
                    ASSERT_EQ(out[at], want) << "cell " << cell << " rect " << c.r.left << "," << c.r.top << " row "
                                             << y << " byte " << x;
                }
            }
        }
    }
}

TEST(MatrixKernel, OneFieldLineIsCopiedWhateverTheKernel) {
    MatrixFrame f(8, 8);
    f.Random(3);
    const std::vector<uint8_t> before(f.dst.Pixels(), f.dst.Pixels() + f.dst.Bytes());
    const std::vector<uint8_t> out = f.Run(Kernel({1, 2, 3, 4, 5, 6, 7, 8, 9}, 0), {0, 3, 7, 5}, 1);
    for (int x = 0; x < 16; ++x) {
        // Three pairs copied; the odd last pixel is left alone.
        EXPECT_EQ(out[3 * 16 + x], x < 12 ? f.src.Pixels()[3 * 16 + x] : before[3 * 16 + x]) << x;
    }
}

TEST(MatrixKernel, InPlaceMatchesSeparateBuffers) {
    const MatrixRecord kernels[] = {Kernel({3, -7, 2, 11, 40, -5, 1, 9, -2}), Kernel({3, -7, 2, 11, 40, -5, 1, 9, -2}, 0),
                                    Kernel({0, 1, 0, 1, -3, 1, 0, 1, 0})};
    for (const MatrixRecord& k : kernels) {
        for (int32_t field : {0, 1}) {
            MatrixFrame a(34, 15), b(34, 15);
            a.Random(9);
            b.Random(9);
            const std::vector<uint8_t> separate = a.Run(k, {3, 1, 33, 15}, field);
            const std::vector<uint8_t> inPlace = b.Run(k, {3, 1, 33, 15}, field, true);
            const int32_t first = 1 + (1 ^ field);
            for (int32_t y = first; y < 15; y += 2)
                for (int32_t x = 6; x < 66; ++x)
                    ASSERT_EQ(inPlace[y * 68 + x], separate[y * 68 + x]) << field << " " << y << "," << x;
        }
    }
}

TEST(MatrixRecord, DescriptionMatchesTheRecordAndItsDefaults) {
    uint8_t payload[40];
    WriteDefaults(kMatrixRecord, payload);
    const MatrixRecord defaults;
    EXPECT_EQ(std::memcmp(payload, &defaults, sizeof defaults), 0);
    EXPECT_EQ(kMatrixRecord.payloadSize, sizeof(MatrixRecord));
    const FieldDesc* centre = FindField(kMatrixRecord, "k11");
    ASSERT_NE(centre, nullptr);
    EXPECT_EQ(centre->offset, 16u);
    WriteFieldValue(*FindField(kMatrixRecord, "k20"), payload, -300);
    EXPECT_EQ(ReadFieldValue(*FindField(kMatrixRecord, "k20"), payload), -255);
}

TEST(MatrixDialog, CellsWriteThroughAndRederiveCancelRestores) {
    MatrixRecord record;
    MatrixCoefficients coefficients = DeriveMatrixCoefficients(record);
    MatrixSetupDialog dialog(&record, &coefficients);
    dialog.OnShown();
    for (uint32_t id = 11091; id <= 11099; ++id) dialog.SetCell(id, 1);
    EXPECT_EQ(record.kernel[0], 1);
    EXPECT_EQ(coefficients.rows[2][2], 455);
    dialog.SetCell(11095, 400);  // clamped
    EXPECT_EQ(record.kernel[4], 255);
    dialog.SetCell(11090, 9);  // not a cell
    dialog.SetCell(11100, 9);
    EXPECT_EQ(record.kernel[8], 1);
    dialog.SetNormalize(false);
    EXPECT_EQ(record.normalize, 0u);
    EXPECT_EQ(coefficients.rows[1][1], 255);
    EXPECT_EQ(coefficients.normalize, 0);
    dialog.Cancel();
    const MatrixRecord shown = dialog.Shown();
    EXPECT_EQ(std::memcmp(&record, &shown, sizeof record), 0);
    EXPECT_EQ(record.kernel[4], 1);
    EXPECT_EQ(record.kernel[0], 0);
    EXPECT_EQ(coefficients.rows[1][1], 4096);
    EXPECT_EQ(coefficients.normalize, 1);
}

}  // namespace
}  // namespace zvf::filters
