// Matrix's SIMD line kernels against the scalar one at every level this
// processor has: random and extreme lines, every run of pairs from 1 to 65
// (2 to 130 pixels) starting at odd pair offsets, coefficients from the
// dialog's range to extreme 16-bit values and kernels on either side of the
// narrow form's bound (weights totalling 128 and 129, scaled by powers of
// two), the scaled and split forms, kernels whose bottom line mirrors the top
// one, guard bytes around the output; the two-line entry points of the 32-bit
// loops; and whole fields at every level, at the frame's right edge and in
// place.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "kit/frame.h"
#include "kit/services.h"
#include "temporal/matrix/matrix_kernel.h"
#include "temporal/matrix/matrix_narrow.h"

namespace zvf::filters {
namespace {

constexpr ptrdiff_t kGuard = 40;
constexpr uint8_t kGuardByte = 0x5A;

struct Level {
    SimdLevel level;
    MatrixLineFn line;
};

std::vector<Level> Levels() {
    const SimdLevel best = LevelFromFeatures(host::DetectProcessorFeatures());
    std::vector<Level> levels;
    if (best >= SimdLevel::sse2) levels.push_back({SimdLevel::sse2, MatrixLineSse2});
    if (best >= SimdLevel::avx2) levels.push_back({SimdLevel::avx2, MatrixLineAvx2});
    if (best >= SimdLevel::avx512) levels.push_back({SimdLevel::avx512, MatrixLineAvx512});
    return levels;
}

// Kinds of coefficients: even kinds are not normalised, odd ones are.
constexpr int kKinds = 20;

// Small weights scaled by 2^t (t = 0 unless normalising) whose magnitudes
// total `magnitude`, capped so that each coefficient fits 16 bits; all of one
// sign half the time, so that sums over bright pictures reach the bound.
MatrixCoefficients ScaledWeights(std::mt19937& rng, int32_t normalize, int32_t magnitude, int32_t minShift,
                                 int32_t maxShift) {
    MatrixCoefficients c;
    c.valid = 1;
    c.normalize = normalize;
    const auto shifts = static_cast<uint32_t>(maxShift - minShift + 1);
    const int32_t t = normalize ? minShift + static_cast<int32_t>(rng() % shifts) : 0;
    const int32_t limit = std::min(127, 32767 >> t);
    magnitude = std::min(magnitude, 9 * limit);
    const int32_t sign = rng() % 2 ? 0 : ((rng() & 1) ? 1 : -1);  // 0: mixed signs
    int32_t w[9] = {};
    for (int32_t left = magnitude; left > 0;) {
        const int i = static_cast<int>(rng() % 9);
        const int32_t room = limit - (w[i] < 0 ? -w[i] : w[i]);
        if (room == 0) continue;
        const int32_t add = std::min(left, 1 + static_cast<int32_t>(rng() % static_cast<uint32_t>(room)));
        const int32_t s = sign != 0 ? sign : (w[i] != 0 ? (w[i] > 0 ? 1 : -1) : ((rng() & 1) ? 1 : -1));
        w[i] += s * add;
        left -= add;
    }
    for (int i = 0; i < 9; ++i) c.rows[i / 3][i % 3] = static_cast<int16_t>(w[i] * (1 << t));
    return c;
}

MatrixCoefficients Coefficients(std::mt19937& rng, int kind) {
    MatrixNarrow unused;
    switch (kind / 2) {
        case 3: {  // on the narrow form's bound
            const MatrixCoefficients c = ScaledWeights(rng, kind % 2, 128, 0, 8);
            EXPECT_TRUE(NarrowMatrix(c, &unused));
            return c;
        }
        case 4: {  // one past it: an odd weight pins t, so the weights cannot shrink
            const MatrixCoefficients c = ScaledWeights(rng, kind % 2, 129, 0, 8);
            EXPECT_FALSE(NarrowMatrix(c, &unused));
            return c;
        }
        case 5:  // large shifts, small weights (sharpen-like)
            return ScaledWeights(rng, kind % 2, 1 + static_cast<int32_t>(rng() % 72), 9, 12);
        case 6: {  // the usual kernels' coefficients, and -32768 (weight -8 when normalising)
            static constexpr int16_t kFixed[][9] = {
                {0, -4096, 0, -4096, 20480, -4096, 0, -4096, 0},          // sharpen
                {256, 512, 256, 512, 1024, 512, 256, 512, 256},           // Gaussian
                {-8192, -4096, 0, -4096, 4096, 4096, 0, 4096, 8192},      // emboss
                {-4096, -4096, -4096, -4096, -32768, 28672, 0, 0, 4096},  // extremes, narrow when normalising
            };
            MatrixCoefficients c;
            c.valid = 1;
            c.normalize = kind % 2;
            const auto& k = kFixed[rng() % 4];
            for (int i = 0; i < 9; ++i) c.rows[i / 3][i % 3] = k[i];
            return c;
        }
        case 7: {  // small weights times a factor that is not a power of two (a box of 455s, say)
            MatrixCoefficients c = ScaledWeights(rng, 0, 1 + static_cast<int32_t>(rng() % 128), 0, 0);
            int32_t most = 1;
            for (const auto& row : c.rows)
                for (int k = 0; k < 3; ++k) most = std::max<int32_t>(most, row[k] < 0 ? -row[k] : row[k]);
            const int32_t factor = 3 + 2 * static_cast<int32_t>(rng() % static_cast<uint32_t>((32767 / most - 1) / 2));
            for (auto& row : c.rows)
                for (int k = 0; k < 3; ++k) row[k] = static_cast<int16_t>(row[k] * factor);
            c.normalize = kind % 2;
            EXPECT_TRUE(ScaledMatrix(c, &unused) || NarrowMatrix(c, &unused));
            return c;
        }
        case 8: {  // small kernel values as the dialog derives them: mostly split forms when normalised
            MatrixRecord record;
            record.normalize = kind % 2;
            int32_t sum = 0;
            do {
                sum = 0;
                for (int32_t& v : record.kernel) sum += v = static_cast<int32_t>(rng() % 29) - 14;
            } while (sum == 0);
            const MatrixCoefficients c = DeriveMatrixCoefficients(record);
            EXPECT_TRUE(SixteenBitMatrix(c, &unused));
            return c;
        }
        case 9: {  // the bottom line the top one or its negation: values of any size, or as the
                   // dialog derives them from small ones (a soft blur, a vertical gradient)
            const int32_t sign = (rng() & 1) ? 1 : -1;
            if (rng() & 1) {
                MatrixRecord record;
                record.normalize = kind % 2;
                int32_t sum = 0;
                do {
                    for (int k = 0; k < 3; ++k) {
                        record.kernel[k] = static_cast<int32_t>(rng() % 29) - 14;
                        record.kernel[3 + k] = static_cast<int32_t>(rng() % 29) - 14;
                        record.kernel[6 + k] = sign * record.kernel[k];
                    }
                    sum = 0;
                    for (int32_t v : record.kernel) sum += v;
                } while (sum == 0);
                return DeriveMatrixCoefficients(record);
            }
            MatrixCoefficients c;
            c.valid = 1;
            c.normalize = kind % 2;
            for (int k = 0; k < 3; ++k) {
                c.rows[0][k] = static_cast<int16_t>(static_cast<int32_t>(rng() % 65535) - 32767);
                c.rows[1][k] = static_cast<int16_t>(rng());
                c.rows[2][k] = static_cast<int16_t>(sign * c.rows[0][k]);
            }
            return c;
        }
        default:
            break;
    }
    MatrixCoefficients c;
    c.valid = 1;
    c.normalize = kind % 2;
    for (auto& row : c.rows) {
        for (int k = 0; k < 3; ++k) {
            switch (kind / 2) {
                case 0:  // dialog-sized values
                    row[k] = static_cast<int16_t>(static_cast<int32_t>(rng() % 511) - 255);
                    break;
                case 1:  // extremes
                    row[k] = (rng() & 1) ? int16_t{32767} : int16_t{-32768};
                    break;
                default:
                    row[k] = static_cast<int16_t>(rng());
                    break;
            }
        }
    }
    return c;
}

uint8_t Sample(std::mt19937& rng, int fill, size_t i) {
    switch (fill) {
        case 0:
            return static_cast<uint8_t>(rng());
        case 1:
            return 0;
        case 2:
            return 255;
        default:
            return (i / 2) % 2 ? 255 : 0;
    }
}

// Lines of one fill for the line kernels, each with its 4 edge bytes either
// side of [0, to).
template <int kCount>
struct Lines {
    std::vector<uint8_t> data[kCount];
    const uint8_t* view[kCount];

    Lines(std::mt19937& rng, int fill, ptrdiff_t to) {
        for (int r = 0; r < kCount; ++r) {
            data[r].resize(static_cast<size_t>(to + 8));
            for (size_t i = 0; i < data[r].size(); ++i) data[r][i] = Sample(rng, fill, i);
            view[r] = data[r].data() + 4;
        }
    }
};

// Runs test(lines, from, to, c, where) on every run of 1 to 65 pairs from
// pair 0, 1 or 3, with every kind of kernel, until a test fails.
template <int kCount, class Test>
void ForEachLineCase(std::mt19937& rng, Test test) {
    for (ptrdiff_t pairs = 1; pairs <= 65; ++pairs) {
        for (ptrdiff_t first : {0, 1, 3}) {
            for (int kind = 0; kind < kKinds; ++kind) {
                const ptrdiff_t from = 4 * first, to = from + 4 * pairs;
                const Lines<kCount> lines(rng, static_cast<int>((pairs + kind) % 4), to);
                const MatrixCoefficients c = Coefficients(rng, kind);
                test(lines.view, from, to, c,
                     " pairs " + std::to_string(pairs) + " first " + std::to_string(first) + " kind " +
                         std::to_string(kind));
                if (::testing::Test::HasFatalFailure()) return;
            }
        }
    }
}

// Which kernels the 32-bit loops fold: the bottom line equal to the top one
// or its negation, whole lines only; -32768 has no negation in 16 bits.
TEST(MatrixSimd, MirroredRowsAreWholeLinesEqualOrNegated) {
    struct Case {
        int16_t top[3], middle[3], bottom[3];
        int expected;
    };
    const Case cases[] = {
        {{1, 2, 1}, {2, 5, 2}, {1, 2, 1}, 1},
        {{-1, -2, -1}, {0, 0, 0}, {1, 2, 1}, -1},
        {{0, 0, 0}, {0, 4096, 0}, {0, 0, 0}, 1},  // zero lines are both: folding by adding
        {{1, 2, 1}, {2, 5, 2}, {1, 2, 2}, 0},
        {{1, 2, 3}, {0, 0, 0}, {3, 2, 1}, 0},  // mirrored left to right, not top to bottom
        {{-32768, 0, 5}, {0, 0, 0}, {-32768, 0, 5}, 1},
        {{-32768, 0, 5}, {0, 0, 0}, {-32768, 0, -5}, 0},
    };
    for (const Case& k : cases) {
        MatrixCoefficients c;
        for (int i = 0; i < 3; ++i) {
            c.rows[0][i] = k.top[i];
            c.rows[1][i] = k.middle[i];
            c.rows[2][i] = k.bottom[i];
        }
        EXPECT_EQ(MatrixMirroredRows(c), k.expected) << k.top[0] << " " << k.bottom[0];
    }
}

TEST(MatrixSimd, LineByteIdenticalToScalarWithGuardsUntouched) {
    std::mt19937 rng(2026);
    const std::vector<Level> levels = Levels();
    if (levels.empty()) GTEST_SKIP() << "no SIMD level on this processor";
    for (const Level& level : levels) {
        ForEachLineCase<3>(rng, [&](const uint8_t* const(&view)[3], ptrdiff_t from, ptrdiff_t to,
                                    const MatrixCoefficients& c, const std::string& where) {
            std::vector<uint8_t> want(static_cast<size_t>(to + 2 * kGuard), kGuardByte);
            std::vector<uint8_t> got = want;
            MatrixLine(view, want.data() + kGuard, from, to, c);
            level.line(view, got.data() + kGuard, from, to, c);
            ASSERT_EQ(want, got) << SimdLevelName(level.level) << where;
            for (ptrdiff_t i = 0; i < kGuard + from; ++i) ASSERT_EQ(got[static_cast<size_t>(i)], kGuardByte);
            for (size_t i = static_cast<size_t>(kGuard + to); i < got.size(); ++i) ASSERT_EQ(got[i], kGuardByte);
        });
    }
}

TEST(MatrixSimd, FieldsMatchScalarAtEveryLevel) {
    std::mt19937 rng(99);
    for (const Level& level : Levels()) {
        for (int32_t width = 2; width <= 131; ++width) {
            for (int32_t left : {0, 1, 3}) {
                for (int kind = 0; kind < kKinds; ++kind) {
                    const int32_t w = left + width + (width % 3);  // sometimes flush with the right edge
                    host::Frame src(w, 9), scalar(w, 9), simd(w, 9);
                    for (size_t i = 0; i < src.Bytes(); ++i) {
                        src.Pixels()[i] = Sample(rng, kind % 4, i);
                        scalar.Pixels()[i] = simd.Pixels()[i] = static_cast<uint8_t>(rng());
                    }
                    const MatrixCoefficients c = Coefficients(rng, kind);
                    const Rect r{left, 1, left + width, 8};
                    for (int32_t field : {0, 1}) {
                        FieldView a, b;
                        ASSERT_EQ(OpenField(&scalar, &src, &r, field, &a, OddRule::SelectorNonZero), status::ok);
                        ASSERT_EQ(OpenField(&simd, &src, &r, field, &b, OddRule::SelectorNonZero), status::ok);
                        ASSERT_TRUE(ConvolveMatrixField(a, c, SimdLevel::scalar));
                        ASSERT_TRUE(ConvolveMatrixField(b, c, level.level));
                    }
                    ASSERT_TRUE(std::equal(scalar.Pixels(), scalar.Pixels() + scalar.Bytes(), simd.Pixels()))
                        << SimdLevelName(level.level) << " width " << width << " left " << left << " kind " << kind;
                }
            }
        }
        // In place, with a wide kernel and a narrow one.
        for (int kind : {4, 7}) {
            host::Frame a(97, 11), b(97, 11);
            for (size_t i = 0; i < a.Bytes(); ++i) a.Pixels()[i] = b.Pixels()[i] = static_cast<uint8_t>(rng());
            const MatrixCoefficients c = Coefficients(rng, kind);
            const Rect r{1, 0, 96, 11};
            FieldView va, vb;
            ASSERT_EQ(OpenField(&a, &a, &r, 1, &va, OddRule::SelectorNonZero), status::ok);
            ASSERT_EQ(OpenField(&b, &b, &r, 1, &vb, OddRule::SelectorNonZero), status::ok);
            ASSERT_TRUE(ConvolveMatrixField(va, c, SimdLevel::scalar));
            ASSERT_TRUE(ConvolveMatrixField(vb, c, level.level));
            ASSERT_TRUE(std::equal(a.Pixels(), a.Pixels() + a.Bytes(), b.Pixels()))
                << SimdLevelName(level.level) << " kind " << kind;
        }
    }
}

// A separable kernel of each finish: a normalised box (a factor below 2048)
// and binomial (a power of two), and random products of a column and a row
// of small integers, of either sign and with zeros, times 1, a power of two
// or an odd factor, normalised or not.
MatrixCoefficients SeparableKernel(std::mt19937& rng, int variant) {
    MatrixCoefficients c;
    c.valid = 1;
    c.normalize = variant < 2 ? 1 : variant % 2;
    int32_t down[3], across[3];
    const auto Pick = [&rng](int32_t (&v)[3]) {
        int32_t total = 0, nonzero = 0;
        do {
            total = nonzero = 0;
            for (int32_t& x : v) {
                x = static_cast<int32_t>(rng() % 13) - 6;
                total += x < 0 ? -x : x;
                nonzero += x != 0;
            }
        } while (nonzero < 2);
        return total;
    };
    if (variant < 2) {
        const int32_t box[3] = {1, 1, 1}, binomial[3] = {1, 2, 1};
        for (int i = 0; i < 3; ++i) down[i] = across[i] = variant == 0 ? box[i] : binomial[i];
    } else {
        while (Pick(down) * Pick(across) > 128) {
        }
    }
    int32_t most = 1;
    for (int r = 0; r < 3; ++r)
        for (int k = 0; k < 3; ++k) most = std::max(most, std::abs(down[r] * across[k]));
    int32_t factor = 1;
    if (variant == 0) factor = 455;
    if (variant == 1) factor = 256;
    if (variant >= 4) factor = 1 << (rng() % 8);
    if (variant >= 6) factor = 3 + 2 * static_cast<int32_t>(rng() % static_cast<uint32_t>((32767 / most - 1) / 2));
    for (int r = 0; r < 3; ++r)
        for (int k = 0; k < 3; ++k) c.rows[r][k] = static_cast<int16_t>(down[r] * across[k] * factor);
    return c;
}

// The 32-bit loops' two-line entry points against two scalar lines: every
// kind of kernel (the 32-bit loops take any), the same runs of pairs and
// offsets as above, both outputs guarded.
TEST(MatrixSimd, PairsOfLinesMatchTwoScalarLines) {
    using PairFn = void (*)(const MatrixPairSources&, uint8_t* const (&)[2], ptrdiff_t, ptrdiff_t,
                            const MatrixCoefficients&);
    struct PairLevel {
        SimdLevel level;
        PairFn pair;
    };
    const SimdLevel best = LevelFromFeatures(host::DetectProcessorFeatures());
    std::vector<PairLevel> levels;
    if (best >= SimdLevel::avx2) levels.push_back({SimdLevel::avx2, MatrixWidePairAvx2});
    if (best >= SimdLevel::avx512) levels.push_back({SimdLevel::avx512, MatrixWidePairAvx512});
    if (levels.empty()) GTEST_SKIP() << "no AVX2 on this processor";
    std::mt19937 rng(4242);
    for (const PairLevel& level : levels) {
        ForEachLineCase<4>(rng, [&](const uint8_t* const(&view)[4], ptrdiff_t from, ptrdiff_t to,
                                    const MatrixCoefficients& c, const std::string& where) {
            std::vector<uint8_t> want[2], got[2];
            for (int i = 0; i < 2; ++i) {
                want[i].assign(static_cast<size_t>(to + 2 * kGuard), kGuardByte);
                got[i] = want[i];
                const uint8_t* const three[3] = {view[i], view[i + 1], view[i + 2]};
                MatrixLine(three, want[i].data() + kGuard, from, to, c);
            }
            uint8_t* const out[2] = {got[0].data() + kGuard, got[1].data() + kGuard};
            level.pair(MatrixPairSources::Buffered(view), out, from, to, c);
            for (int i = 0; i < 2; ++i) ASSERT_EQ(want[i], got[i]) << SimdLevelName(level.level) << " line " << i << where;
        });
    }
}

// Whole fields of one kernel at one level against the scalar kernel, at the
// field sizes that matter for lines read from the frame: tall enough for the
// lines to cycle, wide enough for the middle of each line to be read where it
// is, flush with the right edge or not, with and without a repeated last
// line, in place and not.
void ExpectWholeFieldsMatch(const Level& level, const MatrixCoefficients& c, std::mt19937& rng, int variant) {
    for (int32_t width : {2, 5, 16, 33, 64, 65, 96, 127, 128, 129, 130, 160, 193, 300, 517}) {
        for (int32_t height : {2, 3, 4, 7, 12}) {
            const int32_t left = variant % 3 == 0 ? 0 : 3;
            const int32_t w = left + width + (width % 3);
            const bool inPlace = (width + height + variant) % 2 == 0;
            host::Frame src(w, height), scalar(w, height), simd(w, height);
            for (size_t i = 0; i < src.Bytes(); ++i) {
                src.Pixels()[i] = Sample(rng, (width + variant) % 4, i);
                scalar.Pixels()[i] = simd.Pixels()[i] = inPlace ? src.Pixels()[i] : static_cast<uint8_t>(rng());
            }
            const Rect r{left, 0, left + width, height - (height + variant) % 2};
            for (int32_t field : {0, 1}) {
                FieldView a, b;
                host::Frame* from = inPlace ? nullptr : &src;
                if (OpenField(&scalar, from ? from : &scalar, &r, field, &a, OddRule::SelectorNonZero) != status::ok)
                    continue;  // a field with no lines in the region
                ASSERT_EQ(OpenField(&simd, from ? from : &simd, &r, field, &b, OddRule::SelectorNonZero), status::ok);
                ASSERT_TRUE(ConvolveMatrixField(a, c, SimdLevel::scalar));
                ASSERT_TRUE(ConvolveMatrixField(b, c, level.level));
            }
            ASSERT_TRUE(std::equal(scalar.Pixels(), scalar.Pixels() + scalar.Bytes(), simd.Pixels()))
                << SimdLevelName(level.level) << " width " << width << " height " << height << " variant "
                << variant << (inPlace ? " in place" : "");
        }
    }
}

// Separable kernels run only through whole fields, each line's sums across
// formed once and shared by three output lines.
TEST(MatrixSimd, SeparableKernelsMatchScalarOverWholeFields) {
    std::mt19937 rng(314);
    for (const Level& level : Levels()) {
        for (int variant = 0; variant < 8; ++variant) {
            const MatrixCoefficients c = SeparableKernel(rng, variant);
            MatrixNarrow n;
            MatrixSeparable unused;
            ASSERT_TRUE(SixteenBitMatrix(c, &n) && SeparateMatrix(n, &unused)) << "variant " << variant;
            ExpectWholeFieldsMatch(level, c, rng, variant);
            if (HasFatalFailure()) return;
        }
    }
}

// Every other kind of kernel (16-bit forms and 32-bit sums) reads the
// middle of its lines from the source frame when it is not the destination.
TEST(MatrixSimd, WideFieldsMatchScalarFromTheFrameAndInPlace) {
    std::mt19937 rng(2718);
    for (const Level& level : Levels()) {
        for (int kind = 0; kind < kKinds; ++kind) {
            ExpectWholeFieldsMatch(level, Coefficients(rng, kind), rng, kind);
            if (HasFatalFailure()) return;
        }
    }
}

}  // namespace
}  // namespace zvf::filters
