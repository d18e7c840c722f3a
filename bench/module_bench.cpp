// Every built filter through the loaded module, both fields of a frame, at
// 1920x1080 and 3840x2160, with the parameters the demo shows it with (a
// filter left at defaults that change nothing would measure little), beside a plain copy of the same rows measured in
// the same run. Reported: ms per frame and the ratios to two copies: one
// memcpy of the whole frame, and the same rows copied row by row, one field
// after the other, as the filters touch them.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "demo_table.h"
#include "errors.h"
#include "kit/host_kit.h"
#include "session.h"

namespace {

using zvf::host::Frame;

// Processor time of this process: fields render one after the other on this
// thread, so it is the filter's time even while other work shares the machine.
double NowSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

struct Size {
    int32_t w, h;
    const char* name;
};
constexpr Size kSizes[] = {{1920, 1080, "1080p"}, {3840, 2160, "2160p"}};

// A picture with texture everywhere, so no filter meets only flat areas.
void FillPicture(Frame& f) {
    uint8_t* p = f.Pixels();
    for (int32_t y = 0; y < f.Height(); ++y)
        for (int32_t x = 0; x < f.Width() * 2; ++x)
            p[static_cast<size_t>(y) * f.Width() * 2 + x] = static_cast<uint8_t>((x * 7 + y * 13 + (x * y >> 5)) & 0xFF);
}

zvf::cli::Session& Session() {
    static zvf::cli::Session s(zvf::host::DefaultModulePath());
    return s;
}

// The filter with the demo's parameters, as `zvf demo` configures it.
std::unique_ptr<zvf::host::Instance> Configure(size_t index) {
    const std::string id = zvf::host::Utf8(Session().Identifier(index).c_str());
    const std::string pairs(zvf::cli::TellingParameters(zvf::host::IdentifierKey(id)));
    size_t found = 0;
    std::vector<uint8_t> blob;
    return Session().Configure(zvf::cli::ParseFilterSpec(pairs.empty() ? id : id + ":" + pairs), &found, &blob);
}

double& CopyMs(int size) {
    static double ms[2] = {0, 0};
    return ms[size];
}
double& FieldCopyMs(int size) {
    static double ms[2] = {0, 0};
    return ms[size];
}

// Both fields' rows, one field after the other, each row on its own.
void CopyFields(Frame& dst, const Frame& src) {
    const size_t row = static_cast<size_t>(src.Width()) * 2;
    for (int32_t field = 0; field < 2; ++field)
        for (int32_t y = field; y < src.Height(); y += 2)
            std::memcpy(dst.Pixels() + y * row, src.Pixels() + y * row, row);
}

void BM_Copy(benchmark::State& state, bool byField) {
    const Size s = kSizes[state.range(0)];
    Frame src(s.w, s.h), dst(s.w, s.h);
    FillPicture(src);
    for (auto _ : state) {
        if (byField)
            CopyFields(dst, src);
        else
            std::memcpy(dst.Pixels(), src.Pixels(), src.Bytes());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * src.Bytes()));
}

void BM_Filter(benchmark::State& state, size_t index) {
    const Size s = kSizes[state.range(0)];
    auto inst = Configure(index);
    Frame src(s.w, s.h), dst(s.w, s.h);
    FillPicture(src);
    // A project of this frame size, as an editor previewing it would have.
    zvf::FrameFormat format = Session().Module().Host().Options().projectFormat;
    format.width = s.w;
    format.height = s.h;
    Session().Module().Host().SetProjectFormat(format);
    (*inst)->PrepareRender();
    uint32_t frame = 0;
    const double start = NowSeconds();
    for (auto _ : state) {
        inst->RenderFrame(dst, src, frame++);
        benchmark::ClobberMemory();
    }
    const double ms = (NowSeconds() - start) * 1000.0 / static_cast<double>(state.iterations());
    state.counters["ms_per_frame"] = ms;
    state.counters["x_copy"] = ms / CopyMs(static_cast<int>(state.range(0)));
    state.counters["x_field_copy"] = ms / FieldCopyMs(static_cast<int>(state.range(0)));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * src.Bytes()));
}

// The copies' times per frame, measured once per size before the filters.
void MeasureCopies() {
    for (int i = 0; i < 2; ++i) {
        Frame src(kSizes[i].w, kSizes[i].h), dst(kSizes[i].w, kSizes[i].h);
        FillPicture(src);
        const int reps = i == 0 ? 400 : 100;
        for (bool byField : {false, true}) {
            const auto start = NowSeconds();
            for (int r = 0; r < reps; ++r) {
                if (byField)
                    CopyFields(dst, src);
                else
                    std::memcpy(dst.Pixels(), src.Pixels(), src.Bytes());
                benchmark::ClobberMemory();
            }
            (byField ? FieldCopyMs(i) : CopyMs(i)) = (NowSeconds() - start) * 1000.0 / reps;
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    try {
        Session();
    } catch (const zvf::cli::CliError& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
    MeasureCopies();
    for (int i = 0; i < 2; ++i) {
        benchmark::RegisterBenchmark((std::string("copy/") + kSizes[i].name).c_str(), BM_Copy, false)
            ->Arg(i)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((std::string("field copy/") + kSizes[i].name).c_str(), BM_Copy, true)
            ->Arg(i)
            ->Unit(benchmark::kMillisecond);
    }
    for (size_t f = 0; f < Session().FilterCount(); ++f) {
        if (!Session().RenderBuilt(f)) continue;
        for (int i = 0; i < 2; ++i) {
            benchmark::RegisterBenchmark((Session().Name(f) + "/" + kSizes[i].name).c_str(), BM_Filter, f)
                ->Arg(i)
                ->Unit(benchmark::kMillisecond);
        }
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
