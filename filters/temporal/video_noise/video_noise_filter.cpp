// Video Noise (VideoNoiseFilter): adds noise drawn afresh on every call to
// luma and both chroma channels, or to luma only.
#include <chrono>
#if defined(__i386__) || defined(__x86_64__)
#include <x86intrin.h>
#endif

#include "../../factories.h"
#include "video_noise_dialog.h"
#include "video_noise_kernel.h"
#include "video_noise_record.h"

namespace zvf::filters {
namespace {

constexpr Identity kVideoNoiseIdentity = FamilyA(u"Velmora Co., Ltd. Noise Video Filter", 10004, kCategoryTop);

// A fresh seed per call: the low half of the processor's cycle counter, or
// the finest clock the platform has where there is no such counter.
uint32_t FreshSeed() {
#if defined(__i386__) || defined(__x86_64__)
    return static_cast<uint32_t>(__rdtsc());
#else
    return static_cast<uint32_t>(std::chrono::high_resolution_clock::now().time_since_epoch().count());
#endif
}

class VideoNoiseFilter final : public Filter<VideoNoiseFilter> {
public:
    static constexpr const Identity& kIdentity = kVideoNoiseIdentity;

    explicit VideoNoiseFilter(IHost* host) : Filter(host) { BindRecord(&record_, kVideoNoiseRecord); }

    Status ZVF_CALL Render(IVideoFrame* dst, IVideoFrame* src, const Rect* rect, uint32_t, uint32_t, int32_t field,
                           uint32_t) override {
        FieldView v;
        const Status s = OpenField(dst, src, rect, field, &v);
        if (s != status::ok) return s;
        // Line and pair counts are 16-bit: a count that wraps to 0 renders
        // nothing, and larger counts keep only their low 16 bits.
        v.rows &= 0xFFFF;
        v.pairs &= 0xFFFF;
        if (v.rows == 0 || v.pairs == 0) return status::fail;
        const VideoNoiseRecord params = record_;  // read once, without a lock
        const int32_t w = NoiseWeight(params.ratio);
        const bool gray = params.grayscale != 0;
        SelectNoiseKernel(Simd())(v, w, gray, FreshSeed());
        return status::ok;
    }

protected:
    void DecodePayload(const blob::Accepted& accepted) override { record_ = DecodeVideoNoise(accepted.payload); }

    std::unique_ptr<SetupDialog> MakeDialog() override {
        return std::unique_ptr<SetupDialog>(new (std::nothrow) VideoNoiseSetupDialog(&record_));
    }

private:
    VideoNoiseRecord record_;
};

}  // namespace

IVideoFilter* CreateVideoNoise() { return MakeClassObject<VideoNoiseFilter>(nullptr); }

}  // namespace zvf::filters
