// YUV Curve's table kernel two bytes at a time. A pixel pair's bytes Y0 U
// and Y1 V, each read as one 16-bit value, index tables of 65536 entries
// that hold both output bytes, so a pair takes two lookups and two stores
// instead of four of each: the same bytes as the per-byte tables, built
// from them. The 256 KiB of pair tables cost about as much to build as a
// quarter of an HD field to render, so each field selector keeps the ones
// it built last and builds again only when the curves change.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>

#include "zvf/field.h"

namespace zvf::filters {

struct CurvePairTables {
    // Indexed by the two bytes as they lie in memory, read as one uint16_t;
    // each entry is the two output bytes in the same order.
    uint16_t yu[65536];
    uint16_t yv[65536];
};

void BuildCurvePairTables(const uint8_t (&tables)[3][256], CurvePairTables& out);
// Every byte of the field's pairs through the tables the pair tables were
// built from; src may equal dst.
void RenderCurvePairTables(const FieldView& v, const CurvePairTables& t);

// The pair tables of each field selector (the first for selector 1, the
// second for any other, as the fields may render at the same time).
class CurvePairCache {
public:
    // Renders the field through pair tables for `tables`, building them
    // first when they were built for other curves. False, having written
    // nothing, when memory runs out or another render of the same field
    // selector holds them; the caller then takes the per-byte tables.
    bool Render(int32_t field, const FieldView& v, const uint8_t (&tables)[3][256]);

private:
    struct Slot {
        std::mutex lock;
        std::unique_ptr<CurvePairTables> pairs;
        uint8_t builtFrom[3][256] = {};
        bool built = false;
    };
    Slot slots_[2];
};

}  // namespace zvf::filters
