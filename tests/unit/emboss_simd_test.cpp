// Emboss's SSE2 and AVX2 spans against the scalar span that defines the
// results, at every level this processor has: every pair of byte values,
// every length a row of 2..130 pixels gives, odd alignments, guard bytes
// around the destination; then whole fields in every direction.
#include <gtest/gtest.h>

#include <random>
#include <utility>
#include <vector>

#include "kit/frame.h"
#include "kit/services.h"
#include "spatial/emboss/emboss_kernel.h"
#include "tests/module/blob_builder.h"
#include "tests/module/module_fixture.h"

namespace zvf::filters {
namespace {

using Bytes = std::vector<uint8_t>;
constexpr size_t kGuard = 32;
constexpr uint8_t kGuardByte = 0xA5;

// The spans of the levels above scalar that this processor has.
std::vector<std::pair<SimdLevel, EmbossSpanFn>> SimdSpans() {
    const SimdLevel top = LevelFromFeatures(host::DetectProcessorFeatures());
    std::vector<std::pair<SimdLevel, EmbossSpanFn>> spans;
    for (SimdLevel l : {SimdLevel::sse2, SimdLevel::avx2})
        if (l <= top) spans.emplace_back(l, SelectEmbossSpan(l));
    return spans;
}

// Runs `span` into a destination padded with guard bytes, at `offset` bytes
// past a 16-byte boundary, and returns the written part after checking the
// guards.
Bytes RunSpan(EmbossSpanFn span, const uint8_t* s, const uint8_t* t, size_t n, size_t offset) {
    Bytes padded(kGuard + offset + n + kGuard, kGuardByte);
    span(s, t, padded.data() + kGuard + offset, n, 0, 0);
    for (size_t i = 0; i < kGuard + offset; ++i) EXPECT_EQ(padded[i], kGuardByte) << "guard before, n " << n;
    for (size_t i = kGuard + offset + n; i < padded.size(); ++i)
        EXPECT_EQ(padded[i], kGuardByte) << "guard after, n " << n;
    return {padded.begin() + static_cast<ptrdiff_t>(kGuard + offset), padded.end() - kGuard};
}

TEST(EmbossSimd, EveryPairOfByteValuesMatchesTheScalarSpan) {
    Bytes s(65536), t(65536);
    for (size_t i = 0; i < s.size(); ++i) {
        s[i] = static_cast<uint8_t>(i);
        t[i] = static_cast<uint8_t>(i >> 8);
    }
    for (const auto& [level, span] : SimdSpans())
        EXPECT_EQ(RunSpan(span, s.data(), t.data(), s.size(), 0), RunSpan(EmbossSpan, s.data(), t.data(), s.size(), 0))
            << SimdLevelName(level);
}

TEST(EmbossSimd, EveryRowLengthAndAlignmentMatchesTheScalarSpan) {
    std::mt19937 rng(1234);
    const uint8_t extremes[] = {0, 1, 127, 128, 129, 254, 255};
    for (int32_t width = 2; width <= 130; ++width) {
        const size_t n = 2 * static_cast<size_t>(width);
        for (size_t offset : {0u, 1u, 3u, 7u}) {
            Bytes s(n + offset), t(n + offset);
            for (size_t i = 0; i < s.size(); ++i) {
                const bool extreme = (rng() & 3) == 0;
                s[i] = extreme ? extremes[rng() % 7] : static_cast<uint8_t>(rng());
                t[i] = extreme ? extremes[rng() % 7] : static_cast<uint8_t>(rng());
            }
            // Source and reference at odd offsets too, as within a row.
            for (const auto& [level, span] : SimdSpans())
                ASSERT_EQ(RunSpan(span, s.data() + offset, t.data() + offset, n, offset),
                          RunSpan(EmbossSpan, s.data() + offset, t.data() + offset, n, offset))
                    << SimdLevelName(level) << " width " << width << " offset " << offset;
        }
    }
}

TEST(EmbossSimd, WholeFieldsMatchTheScalarKernelAtEveryWidth) {
    std::mt19937 rng(4321);
    const int32_t w = 134, h = 7;
    Bytes src(static_cast<size_t>(w) * h * 2);
    for (uint8_t& b : src) b = static_cast<uint8_t>(rng());
    host::Frame s(src.data(), w, h);
    for (const auto& [level, span] : SimdSpans()) {
        for (int32_t width = 2; width <= 130; ++width) {
            const int32_t left = width % 4;  // odd and even starting columns
            const Rect r{left, 0, left + width, h};
            const uint32_t dir = static_cast<uint32_t>(width % 8);
            const uint32_t depth = 1 + static_cast<uint32_t>(width % 5);
            Bytes scalar(src.size(), kGuardByte), simd(src.size(), kGuardByte);
            host::Frame ds(scalar.data(), w, h), dv(simd.data(), w, h);
            FieldView vs, vv;
            ASSERT_EQ(OpenField(&ds, &s, &r, width & 1, &vs), status::ok);
            ASSERT_EQ(OpenField(&dv, &s, &r, width & 1, &vv), status::ok);
            EmbossField(vs, dir, depth, EmbossSpan);
            EmbossField(vv, dir, depth, span);
            ASSERT_EQ(simd, scalar) << SimdLevelName(level) << " width " << width;
        }
    }
}

TEST(EmbossSimd, SelectionFollowsTheLevel) {
    EXPECT_EQ(SelectEmbossSpan(SimdLevel::scalar), &EmbossSpan);
    EXPECT_EQ(SelectEmbossSpan(SimdLevel::sse2), &EmbossSpanSse2);
    EXPECT_EQ(SelectEmbossSpan(SimdLevel::avx2), &EmbossSpanAvx2);
}

// All eight directions rendered by a module whose host reports no SSE2 and
// by one whose host reports this processor's features.
std::vector<Bytes> RenderEveryDirection(const host::HostOptions& options, const Bytes& source) {
    std::vector<Bytes> out;
    auto m = test::LoadModule(options);
    if (!m) return out;
    Bytes src = source;
    for (uint32_t dir = 0; dir < 8; ++dir) {
        const Bytes blob = test::WordBlob("Velmora Co., Ltd. Emboss Video Filter", {dir, 3});
        auto inst = m->Create(*m->Find("Emboss"), &blob);
        Bytes dst(src.size(), 0);
        host::Frame s(src.data(), 100, 12), d(dst.data(), 100, 12);
        EXPECT_EQ(inst->RenderFrame(d, s), status::ok);
        out.push_back(dst);
    }
    return out;
}

TEST(EmbossSimd, TheModuleGivesTheSameBytesWithAndWithoutSse2) {
    std::mt19937 rng(6);
    Bytes src(100 * 12 * 2);
    for (uint8_t& b : src) b = static_cast<uint8_t>(rng());
    host::HostOptions scalarHost;
    scalarHost.processorFeatures = 0;
    const std::vector<Bytes> scalar = RenderEveryDirection(scalarHost, src);
    const std::vector<Bytes> simd = RenderEveryDirection(host::HostOptions(), src);
    ASSERT_EQ(scalar.size(), 8u);
    EXPECT_EQ(simd, scalar);
}

}  // namespace
}  // namespace zvf::filters
