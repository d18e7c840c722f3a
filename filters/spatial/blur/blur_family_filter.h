// What Blur and Smooth Blur share as filter objects: the record, the
// per-field scratch buffers and their preparation, the setup dialog and its
// idle query, and the opening steps of Render. Each filter supplies its
// kernel (given the instance's instruction-set level), its empty-field status
// and its dialog mode.
#pragma once

#include <new>

#include "../../factories.h"
#include "blur_dialog.h"
#include "blur_record.h"
#include "blur_scratch.h"
#include "zvf/field.h"
#include "zvf/guids.h"

namespace zvf::filters {

template <class Derived>
class BlurFamilyFilter : public Filter<Derived> {
public:
    // Reallocates both fields' buffers for the project's longest line; a host
    // without the project-format service keeps the old buffers.
    Status ZVF_CALL PrepareRender() override {
        IProjectFormat* format = this->template QueryHostService<IProjectFormat>(iid::IProjectFormat);
        if (format == nullptr) return status::ok;
        FrameFormat f{};
        const Status s = format->GetFrameFormat(&f);
        format->Release();
        if (s < 0) return status::ok;
        return scratch_.Prepare(f.width > f.height ? f.width : f.height) ? status::ok : status::out_of_memory;
    }

    // Idle while no dialog exists or its window is hidden.
    int32_t ZVF_CALL IsSetupIdle() override {
        SetupDialog* d = this->Dialog();
        return d != nullptr ? d->IdleState() : 1;
    }

    Status ZVF_CALL Render(IVideoFrame* dst, IVideoFrame* src, const Rect* rect, uint32_t, uint32_t, int32_t field,
                           uint32_t) override {
        FieldView v;
        const Status s = OpenField(dst, src, rect, field, &v);
        if (s == status::fail) return Derived::kEmptyFieldStatus;
        if (s != status::ok) return s;
        const int32_t weight = KernelWeight(LoadCoefficient(record_));  // read once, without a lock
        const std::span<int32_t> scratch = scratch_.For(field, v.rows, v.pairs);
        if (scratch.size() / kLanes < MinScratchEntries(v.rows, v.pairs)) return status::out_of_memory;
        return Derived::Kernel(v, weight, scratch, this->Simd()) ? status::ok : status::out_of_memory;
    }

    size_t ScratchEntries(int32_t field) const { return scratch_.Entries(field); }

protected:
    explicit BlurFamilyFilter(IHost* host) : Filter<Derived>(host) {
        record_.coefficient = DefaultBlurCoefficient();
        this->BindRecord(&record_, kBlurRecord);
    }

    std::unique_ptr<SetupDialog> MakeDialog() override {
        return std::unique_ptr<SetupDialog>(new (std::nothrow) BlurSetupDialog(&record_, Derived::kDialogMode));
    }

private:
    BlurRecord record_;
    FieldScratch scratch_;
};

}  // namespace zvf::filters
