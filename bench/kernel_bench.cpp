// Every built filter's kernel called directly (no module, no interface),
// both fields of a frame, at 1920x1080 and 3840x2160, at the scalar level and
// at the best level this processor has, beside a plain copy of the same rows.
// The parameters are the demo's, so no kernel meets only its identity case.
// Each kernel reports ms per frame and its ratios to both copies of its size
// (run the copies in the same invocation, or the ratios are left out).
#include <benchmark/benchmark.h>

#include <cstring>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "colour/color_balance/color_balance_kernel.h"
#include "colour/color_wheel/color_wheel_kernel.h"
#include "colour/monotone/monotone_kernel.h"
#include "colour/yuv_curve/yuv_curve_kernel.h"
#include "colour/yuv_curve/yuv_curve_pair_tables.h"
#include "colour/yuv_curve/yuv_curve_tables.h"
#include "kit/services.h"
#include "spatial/block_color/block_color_kernel.h"
#include "spatial/blur/blur_kernel.h"
#include "spatial/blur/blur_record.h"
#include "spatial/blur/blur_scratch.h"
#include "spatial/emboss/emboss_kernel.h"
#include "spatial/mirror/mirror_kernel.h"
#include "spatial/smooth_blur/smooth_blur_kernel.h"
#include "temporal/anti_flicker/anti_flicker_kernel.h"
#include "temporal/matrix/matrix_coefficients.h"
#include "temporal/matrix/matrix_kernel.h"
#include "temporal/strobe_freeze/strobe_kernel.h"
#include "temporal/video_noise/video_noise_kernel.h"
#include "zvf/field.h"
#include "zvf/simd_level.h"

namespace {

using namespace zvf;
using namespace zvf::filters;

struct Size {
    int32_t w, h;
    const char* name;
};
constexpr Size kSizes[] = {{1920, 1080, "1080p"}, {3840, 2160, "2160p"}};

// A frame's bytes starting on a cache-line boundary, where frame allocators
// put them. Left to the heap, the start moved from run to run with what ran
// before, and with it the times of the kernels whose loads then straddle
// lines.
class LineAligned {
public:
    explicit LineAligned(size_t bytes) : storage_(bytes + kLine), size_(bytes) {
        const auto at = reinterpret_cast<uintptr_t>(storage_.data());
        data_ = storage_.data() + (kLine - at % kLine) % kLine;
    }
    uint8_t* data() { return data_; }
    size_t size() const { return size_; }
    uint8_t& operator[](size_t i) { return data_[i]; }

private:
    static constexpr size_t kLine = 64;
    std::vector<uint8_t> storage_;
    uint8_t* data_;
    size_t size_;
};

struct Frames {
    explicit Frames(const Size& s) : w(s.w), h(s.h), src(static_cast<size_t>(s.w) * s.h * 2), dst(src.size()) {
        for (int32_t y = 0; y < h; ++y)
            for (int32_t x = 0; x < w * 2; ++x)
                src[static_cast<size_t>(y) * w * 2 + x] = static_cast<uint8_t>((x * 7 + y * 13 + (x * y >> 5)) & 0xFF);
    }
    FieldView Field(int32_t odd) {
        FieldView v;
        const ptrdiff_t pitch = static_cast<ptrdiff_t>(w) * 2;
        v.dst = dst.data() + odd * pitch;
        v.src = src.data() + odd * pitch;
        v.step = 2 * pitch;
        v.rows = (h - odd + 1) / 2;
        v.pairs = w / 2;
        v.dstFrame = dst.data();
        v.srcFrame = src.data();
        v.pitch = static_cast<int32_t>(pitch);
        v.width = v.width_px = w;
        v.height = h;
        v.firstRow = odd;
        v.odd = odd;
        return v;
    }
    int32_t w, h;
    LineAligned src, dst;
};

using Kernel = std::function<void(Frames&, FieldView&, SimdLevel)>;

ColorBalanceRecord WarmBalance() {
    ColorBalanceRecord r;
    r.redCyan = 60;
    r.blueYellow = -60;
    r.contrast = 20;
    r.uOffset = -80;
    r.vOffset = 69;
    return r;
}

ColorWheelRecord ThirdTurn() {
    ColorWheelRecord r;
    r.sine = 14189;
    r.cosine = -8192;
    r.saturation = 30;
    return r;
}

// Normalised by 9: coefficients of 455, a common factor times weights of 1,
// which factor into a row and a column.
MatrixRecord Box() {
    MatrixRecord r;
    for (int32_t& k : r.kernel) k = 1;
    return r;
}

MatrixRecord Sharpen() {
    MatrixRecord r;
    const int32_t k[9] = {0, -1, 0, -1, 5, -1, 0, -1, 0};
    std::memcpy(r.kernel, k, sizeof k);
    return r;
}

// Normalised by 17: coefficients 240, 481 and 1204 share no factor; they
// split into 240 x (1, 2, 5) + (0, 1, 4).
MatrixRecord Soft() {
    MatrixRecord r;
    const int32_t k[9] = {1, 2, 1, 2, 5, 2, 1, 2, 1};
    std::memcpy(r.kernel, k, sizeof k);
    return r;
}

// Normalised by 87: large values of mixed signs, whose coefficients have
// no 16-bit form and take the 32-bit loops.
MatrixRecord Large() {
    MatrixRecord r;
    const int32_t k[9] = {-90, 120, -60, 100, 37, -80, 70, -110, 100};
    std::memcpy(r.kernel, k, sizeof k);
    return r;
}

// Normalised by 16: (1, 2, 1) down times (1, 2, 1) across.
MatrixRecord Binomial() {
    MatrixRecord r;
    const int32_t k[9] = {1, 2, 1, 2, 4, 2, 1, 2, 1};
    std::memcpy(r.kernel, k, sizeof k);
    return r;
}

YuvCurveRecord Lifted() {
    YuvCurveRecord r;
    r.points[0] = {{0, 16}, {255, 235}};
    return r;
}

std::shared_ptr<CurvePairTables> PairTablesOf(const YuvCurveRecord& r) {
    auto t = std::make_shared<CurvePairTables>();
    BuildCurvePairTables(r.fixed.table, *t);
    return t;
}

// Three points: a spline, so the tables rather than the line. Luma alone,
// the usual edit: U and V keep the identity.
YuvCurveRecord Lifted3() {
    YuvCurveRecord r;
    r.points[0] = {{0, 16}, {128, 150}, {255, 235}};
    r.fixed.count[0] = 3;
    RebuildTables(r);
    return r;
}

// Three points on every curve, so no component keeps the identity.
YuvCurveRecord Graded3() {
    YuvCurveRecord r = Lifted3();
    r.points[1] = {{0, 20}, {128, 118}, {255, 240}};
    r.points[2] = {{0, 16}, {128, 140}, {255, 230}};
    r.fixed.count[1] = r.fixed.count[2] = 3;
    RebuildTables(r);
    return r;
}

std::vector<std::pair<std::string, Kernel>> Kernels() {
    const int32_t blurWeight = KernelWeight(20642);  // radius 12, as the dialog derives it
    return {
        {"Monotone", [](Frames&, FieldView& v, SimdLevel l) { SelectMonotoneKernel(l)(v, 108, 148); }},
        {"Video Noise",
         [](Frames&, FieldView& v, SimdLevel l) {
             SelectNoiseKernel(l)(v, NoiseWeight(40), false, 12345u);
         }},
        {"Matrix",
         [c = DeriveMatrixCoefficients(Sharpen())](Frames&, FieldView& v, SimdLevel l) { ConvolveMatrixField(v, c, l); }},
        {"Matrix box",
         [c = DeriveMatrixCoefficients(Box())](Frames&, FieldView& v, SimdLevel l) { ConvolveMatrixField(v, c, l); }},
        {"Matrix soft",
         [c = DeriveMatrixCoefficients(Soft())](Frames&, FieldView& v, SimdLevel l) { ConvolveMatrixField(v, c, l); }},
        {"Matrix large",
         [c = DeriveMatrixCoefficients(Large())](Frames&, FieldView& v, SimdLevel l) { ConvolveMatrixField(v, c, l); }},
        {"Matrix binomial",
         [c = DeriveMatrixCoefficients(Binomial())](Frames&, FieldView& v, SimdLevel l) {
             ConvolveMatrixField(v, c, l);
         }},
        {"Anti Flicker",
         [](Frames& f, FieldView& v, SimdLevel l) {
             // The other parity's rows of the same source as the neighbours.
             const uint8_t* other = v.odd ? f.src.data() : f.src.data() + v.pitch;
             BlendField(v.src, other, v.dst, v.pitch, v.rows, v.pairs, AntiFlickerWeight(100), BlendRowsFor(l));
         }},
        {"Mirror", [](Frames&, FieldView& v, SimdLevel l) { MirrorField(v, true, true, l); }},
        {"Blur",
         [blurWeight](Frames&, FieldView& v, SimdLevel l) {
             static thread_local std::vector<int32_t> scratch;
             scratch.resize(kLanes * FullScratchEntries(v.rows, v.pairs));  // as the filter allocates
             BlurField(v, blurWeight, scratch, l);
         }},
        {"Smooth Blur",
         [blurWeight](Frames&, FieldView& v, SimdLevel l) {
             static thread_local std::vector<int32_t> scratch;
             scratch.resize(kLanes * FullScratchEntries(v.rows, v.pairs));  // as the filter allocates
             SmoothBlurField(v, blurWeight, scratch, l);
         }},
        {"Emboss", [](Frames&, FieldView& v, SimdLevel l) { EmbossField(v, 3, 2, SelectEmbossSpan(l)); }},
        {"Block Color", [](Frames&, FieldView& v, SimdLevel) { FillField(v, 81, 90, 240); }},
        {"Color Balance",
         [p = MakeColorBalanceParams(WarmBalance())](Frames&, FieldView& v, SimdLevel l) {
             SelectColorBalanceKernel(p, l)(v, p);
         }},
        {"YUV Curve",
         [s = TakeSnapshot(Lifted())](Frames&, FieldView& v, SimdLevel l) { RenderCurve(v, s, l); }},
        // Per-byte tables: scalar below AVX2, byte shuffles at it, register permutes at AVX-512.
        {"YUV Curve tables",
         [s = TakeSnapshot(Lifted3())](Frames&, FieldView& v, SimdLevel l) { RenderCurve(v, s, l); }},
        {"YUV Curve three tables",
         [s = TakeSnapshot(Graded3())](Frames&, FieldView& v, SimdLevel l) { RenderCurve(v, s, l); }},
        // As the filter renders a curve: the pair tables built once, when the curve was set.
        {"YUV Curve pairs",
         [t = PairTablesOf(Lifted3())](Frames&, FieldView& v, SimdLevel) { RenderCurvePairTables(v, *t); }},
        {"Color Wheel", [p = PlanWheel(ThirdTurn())](Frames&, FieldView& v, SimdLevel l) { RenderWheel(v, p, l); }},
        // Its dearest step: the capture that starts every held stretch.
        {"Strobe/Freeze capture",
         [](Frames&, FieldView& v, SimdLevel l) {
             CaptureSmoothed(v.src, v.dst, v.pitch, v.rows, v.pairs, SelectCaptureRow(l));
         }},
    };
}

// Kernels with a twin at the AVX-512 level; the others would only repeat
// their AVX2 times there.
bool HasAvx512Twin(const std::string& name) {
    return name == "YUV Curve tables" || name == "YUV Curve three tables" || name == "Smooth Blur" ||
           name == "Video Noise" || name.starts_with("Matrix") || name == "Anti Flicker";
}

// Processor time of this (single-threaded) process, so the ratios hold up
// while other work shares the machine.
double NowMs() { return 1000.0 * static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// ms per frame of the whole-frame copy and of the field copy, by frame width;
// the copies run before the kernels of their size and leave their times here
// for the kernels' ratios.
std::map<int32_t, std::pair<double, double>> g_copyMs;

// ms per frame of the loop just run, and the ratios to the copies of that size.
void Report(benchmark::State& state, const Size& size, double startMs) {
    const double ms = (NowMs() - startMs) / static_cast<double>(state.iterations());
    state.counters["ms_per_frame"] = ms;
    const auto copies = g_copyMs.find(size.w);
    if (copies == g_copyMs.end()) return;
    if (copies->second.first > 0) state.counters["x_copy"] = ms / copies->second.first;
    if (copies->second.second > 0) state.counters["x_field_copy"] = ms / copies->second.second;
}

void BM_Copy(benchmark::State& state, Size size) {
    Frames f(size);
    const double start = NowMs();
    for (auto _ : state) {
        std::memcpy(f.dst.data(), f.src.data(), f.src.size());
        benchmark::ClobberMemory();
    }
    g_copyMs[size.w].first = (NowMs() - start) / static_cast<double>(state.iterations());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * f.src.size()));
}

// The same rows the kernels touch, in the same order: one field's rows, then
// the other's, each row copied on its own.
void BM_FieldCopy(benchmark::State& state, Size size) {
    Frames f(size);
    FieldView fields[2] = {f.Field(0), f.Field(1)};
    const double start = NowMs();
    for (auto _ : state) {
        for (const FieldView& v : fields)
            for (int32_t r = 0; r < v.rows; ++r)
                std::memcpy(v.dst + r * v.step, v.src + r * v.step, static_cast<size_t>(v.pairs) * 4);
        benchmark::ClobberMemory();
    }
    g_copyMs[size.w].second = (NowMs() - start) / static_cast<double>(state.iterations());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * f.src.size()));
}

void BM_Kernel(benchmark::State& state, Size size, Kernel kernel, SimdLevel level) {
    Frames f(size);
    FieldView fields[2] = {f.Field(0), f.Field(1)};
    const double start = NowMs();
    for (auto _ : state) {
        kernel(f, fields[0], level);
        kernel(f, fields[1], level);
        benchmark::ClobberMemory();
    }
    Report(state, size, start);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * f.src.size()));
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    const SimdLevel best = ChooseSimdLevel(host::DetectProcessorFeatures());
    for (const Size& s : kSizes) {
        benchmark::RegisterBenchmark((std::string("copy/") + s.name).c_str(), BM_Copy, s)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((std::string("field copy/") + s.name).c_str(), BM_FieldCopy, s)
            ->Unit(benchmark::kMillisecond);
        // Every level up to the processor's; a kernel without a twin at a
        // level runs the highest one it has below it.
        for (const auto& [name, kernel] : Kernels()) {
            for (SimdLevel level : {SimdLevel::scalar, SimdLevel::sse2, SimdLevel::avx2, SimdLevel::avx512}) {
                if (level > best || (level == SimdLevel::avx512 && !HasAvx512Twin(name))) break;
                const std::string label = name + "/" + s.name + "/" + SimdLevelName(level);
                benchmark::RegisterBenchmark(label.c_str(), BM_Kernel, s, kernel, level)->Unit(benchmark::kMillisecond);
            }
        }
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
