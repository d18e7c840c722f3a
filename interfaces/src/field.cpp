#include "zvf/field.h"

namespace zvf {

FieldGeometry ComputeFieldGeometry(const Rect& rect, int32_t field, OddRule rule) {
    const int32_t odd = rule == OddRule::SelectorIsOne ? (field == 1 ? 1 : 0) : (field != 0 ? 1 : 0);
    // 64-bit so that extreme coordinates cannot overflow.
    const int64_t first = int64_t{rect.top} + ((rect.top & 1) ^ odd);
    const int64_t lastRow = int64_t{rect.bottom} - 1;
    const int64_t last = lastRow - ((lastRow & 1) ^ odd);
    const int64_t shifted = (last - first) >> 1;
    FieldGeometry g{};
    g.odd = odd;
    g.firstRow = static_cast<int32_t>(first);
    g.rows = shifted < 0 ? 0 : static_cast<int32_t>(shifted + 1);
    const int64_t width = int64_t{rect.right} - rect.left;
    g.pairs = width < 0 ? 0 : static_cast<int32_t>(width >> 1);
    return g;
}

Status OpenField(IVideoFrame* dst, IVideoFrame* src, const Rect* rect, int32_t field, FieldView* out, OddRule rule) {
    if (dst == nullptr || src == nullptr || rect == nullptr || out == nullptr) return status::pointer;
    FrameSize size{};
    FrameSize dstSize{};
    if (src->GetSize(&size) != status::ok || dst->GetSize(&dstSize) != status::ok) return status::invalid_arg;
    if (size.width != dstSize.width || size.height != dstSize.height) return status::invalid_arg;
    if (src->GetBitsPerPixel() != 16 || dst->GetBitsPerPixel() != 16) return status::invalid_arg;
    if (size.width <= 0 || size.height <= 0 || size.width > (1 << 20) || size.height > (1 << 20))
        return status::invalid_arg;
    const Rect& r = *rect;
    if (r.left < 0 || r.top < 0 || r.right > size.width || r.bottom > size.height || r.right < r.left ||
        r.bottom < r.top)
        return status::invalid_arg;

    const FieldGeometry g = ComputeFieldGeometry(r, field, rule);
    if (g.rows == 0 || g.pairs == 0) return status::fail;

    uint8_t* dstBase = dst->GetBuffer();
    const uint8_t* srcBase = src->GetBuffer();
    if (dstBase == nullptr || srcBase == nullptr) return status::pointer;

    const int32_t pitch = size.width * kBytesPerPixel;
    const ptrdiff_t offset = ptrdiff_t{g.firstRow} * pitch + ptrdiff_t{r.left} * kBytesPerPixel;
    FieldView v;
    v.dst = dstBase + offset;
    v.src = srcBase + offset;
    v.step = ptrdiff_t{2} * pitch;
    v.rows = g.rows;
    v.pairs = g.pairs;
    v.dstFrame = dstBase;
    v.srcFrame = srcBase;
    v.pitch = pitch;
    v.width = size.width;
    v.height = size.height;
    v.firstRow = g.firstRow;
    v.left = r.left;
    v.width_px = r.right - r.left;
    v.odd = g.odd;
    *out = v;
    return status::ok;
}

}  // namespace zvf
