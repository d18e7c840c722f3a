#include "zvf/field_source.h"

#include <cstring>
#include <new>

namespace zvf {

bool SourceOverlapsDestination(const FieldView& v) {
    const size_t frameBytes = static_cast<size_t>(v.height) * static_cast<size_t>(v.pitch);
    const auto dst = reinterpret_cast<uintptr_t>(v.dstFrame);
    const auto src = reinterpret_cast<uintptr_t>(v.srcFrame);
    if (v.dstFrame == nullptr || v.srcFrame == nullptr) return v.dst == v.src;
    return dst < src + frameBytes && src < dst + frameBytes;
}

bool DetachSource(FieldView* v, std::unique_ptr<uint8_t[]>* scratch) {
    if (v->rows <= 0 || v->pairs <= 0) return true;
    const size_t rowBytes = size_t{4} * static_cast<size_t>(v->pairs);
    const size_t step = static_cast<size_t>(v->step);
    const size_t bytes = step * static_cast<size_t>(v->rows - 1) + rowBytes;
    std::unique_ptr<uint8_t[]> copy(new (std::nothrow) uint8_t[bytes]);
    if (!copy) return false;
    for (int32_t r = 0; r < v->rows; ++r) std::memcpy(copy.get() + r * step, v->src + r * step, rowBytes);
    v->src = copy.get();
    v->srcFrame = nullptr;
    *scratch = std::move(copy);
    return true;
}

}  // namespace zvf
