#include "yuv_curve_pair_tables.h"

#include <cstring>
#include <new>

#include "yuv_curve_record.h"

namespace zvf::filters {
namespace {

// The index of two bytes and the entry of two bytes are both their memory
// image, so the tables hold on either byte order.
inline uint16_t Image(uint8_t first, uint8_t second) {
    const uint8_t bytes[2] = {first, second};
    uint16_t v;
    std::memcpy(&v, bytes, 2);
    return v;
}

}  // namespace

void BuildCurvePairTables(const uint8_t (&tables)[3][256], CurvePairTables& out) {
    const uint8_t* ty = tables[kCurveY];
    for (int32_t second = 0; second < 256; ++second) {
        const uint8_t u = tables[kCurveU][second], v = tables[kCurveV][second];
        for (int32_t first = 0; first < 256; ++first) {
            const uint16_t at = Image(static_cast<uint8_t>(first), static_cast<uint8_t>(second));
            out.yu[at] = Image(ty[first], u);
            out.yv[at] = Image(ty[first], v);
        }
    }
}

void RenderCurvePairTables(const FieldView& v, const CurvePairTables& t) {
    for (int32_t row = 0; row < v.rows; ++row) {
        const uint8_t* s = v.src + row * v.step;
        uint8_t* d = v.dst + row * v.step;
        for (int32_t i = 0; i < v.pairs; ++i, s += 4, d += 4) {
            uint16_t yu, yv;
            std::memcpy(&yu, s, 2);
            std::memcpy(&yv, s + 2, 2);
            std::memcpy(d, &t.yu[yu], 2);
            std::memcpy(d + 2, &t.yv[yv], 2);
        }
    }
}

bool CurvePairCache::Render(int32_t field, const FieldView& v, const uint8_t (&tables)[3][256]) {
    Slot& slot = slots_[field == 1 ? 0 : 1];
    std::unique_lock<std::mutex> hold(slot.lock, std::try_to_lock);
    if (!hold.owns_lock()) return false;
    if (!slot.pairs) {
        slot.pairs.reset(new (std::nothrow) CurvePairTables);
        if (!slot.pairs) return false;
        slot.built = false;
    }
    if (!slot.built || std::memcmp(slot.builtFrom, tables, sizeof slot.builtFrom) != 0) {
        BuildCurvePairTables(tables, *slot.pairs);
        std::memcpy(slot.builtFrom, tables, sizeof slot.builtFrom);
        slot.built = true;
    }
    RenderCurvePairTables(v, *slot.pairs);
    return true;
}

}  // namespace zvf::filters
