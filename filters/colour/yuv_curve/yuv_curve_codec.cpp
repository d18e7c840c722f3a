#include "yuv_curve_codec.h"

#include <cstring>
#include <new>

namespace zvf::filters {
namespace {

uint32_t LoadU32(const uint8_t* p) {
    uint32_t v;
    std::memcpy(&v, p, 4);  // every target is little-endian
    return v;
}

}  // namespace

uint32_t CurvePayloadSize(const YuvCurveRecord& record) {
    size_t points = 0;
    for (const auto& p : record.points) points += p.size();
    return static_cast<uint32_t>(sizeof(YuvCurveFixed) + 8 * points);
}

void EncodeCurvePayload(const YuvCurveRecord& record, uint8_t* out) {
    YuvCurveFixed fixed = record.fixed;
    for (int c = 0; c < 3; ++c) fixed.count[c] = static_cast<uint32_t>(record.points[c].size());
    std::memcpy(out, &fixed, sizeof fixed);
    out += sizeof fixed;
    for (const auto& curve : record.points)
        for (const CurvePoint& p : curve) {
            std::memcpy(out, &p.x, 4);
            std::memcpy(out + 4, &p.y, 4);
            out += 8;
        }
}

bool DecodeCurvePayload(const uint8_t* payload, size_t available, YuvCurveRecord* record) {
    if (available < sizeof(YuvCurveFixed)) return false;
    YuvCurveFixed fixed;
    std::memcpy(&fixed, payload, sizeof fixed);
    uint64_t need = sizeof fixed;
    for (uint32_t n : fixed.count) need += uint64_t{8} * n;
    if (need > available) return false;
    std::vector<CurvePoint> points[3];
    try {
        const uint8_t* p = payload + sizeof fixed;
        for (int c = 0; c < 3; ++c) {
            points[c].resize(fixed.count[c]);
            for (CurvePoint& pt : points[c]) {
                pt = {LoadU32(p), LoadU32(p + 4)};
                p += 8;
            }
        }
    } catch (const std::bad_alloc&) {
        return false;
    }
    record->fixed = fixed;
    for (int c = 0; c < 3; ++c) record->points[c].swap(points[c]);
    return true;
}

}  // namespace zvf::filters
