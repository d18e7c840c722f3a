// Mirror's kernel: copies pixel pairs of one field from the source into the
// destination in a changed order, no arithmetic on the samples. Source and
// destination must not overlap (the filter detaches the source first).
#pragma once

#include <cstdint>

#include "zvf/field.h"
#include "zvf/simd_level.h"

namespace zvf::filters {

// Field row (0..rows-1) that destination field row k is taken from.
// Without the vertical flip, k itself. With it, the odd field is reversed
// (rows-1-k) while the even field keeps its first row and reverses the rest
// (rows-k): over a whole frame y -> H - y for y >= 1 with row 0 kept, so the
// two fields never trade places.
int32_t MirrorSourceRow(int32_t k, int32_t rows, bool oddField, bool vertical);

// True when destination field row k is reversed left to right: with the
// horizontal flip every row is, except the even field's kept first row when
// both flips are on.
bool MirrorReversesRow(int32_t k, bool oddField, bool horizontal, bool vertical);

// One reversed row: destination pair j takes source pair pairs-1-j with its
// two luma bytes exchanged (Y1 Cb Y0 Cr), the exact pixel mirror of an
// even-width span. Source and destination must not overlap. `nextSrc` and
// `nextDst` are the rows the next call works on (or `src` and `dst` when
// there is none); the SIMD twins fetch them ahead, a field's rows being too
// far apart for the hardware prefetcher. They are never read or written.
using MirrorRowFn = void (*)(uint8_t* dst, const uint8_t* src, int32_t pairs, const uint8_t* nextSrc,
                             uint8_t* nextDst);
void ReverseRowScalar(uint8_t* dst, const uint8_t* src, int32_t pairs, const uint8_t* nextSrc, uint8_t* nextDst);
// Twins of ReverseRowScalar, byte-identical to it; x86 only.
void ReverseRowSse2(uint8_t* dst, const uint8_t* src, int32_t pairs, const uint8_t* nextSrc, uint8_t* nextDst);
void ReverseRowAvx2(uint8_t* dst, const uint8_t* src, int32_t pairs, const uint8_t* nextSrc, uint8_t* nextDst);
// The same bytes again, most of them written around the cache (non-temporal
// stores, from the destination's first 16- or 32-byte boundary on), for
// fields too large for their source and destination both to stay in the
// cache: the stores then need not read each line first. The caller ends a
// field of them with EndStreamedRows before anything else may read it.
void ReverseRowSse2Stream(uint8_t* dst, const uint8_t* src, int32_t pairs, const uint8_t* nextSrc, uint8_t* nextDst);
void ReverseRowAvx2Stream(uint8_t* dst, const uint8_t* src, int32_t pairs, const uint8_t* nextSrc, uint8_t* nextDst);
void EndStreamedRows();
// The streaming twins' start: the destination pairs before `dst` reaches a
// multiple of `boundary` bytes go through the scalar row, and dst, pairs
// and nextDst move on past them. False, having written nothing, when a pair
// never starts on a boundary (dst not on 4 bytes).
bool PeelToBoundary(uint8_t*& dst, const uint8_t* src, int32_t& pairs, uint8_t*& nextDst, uintptr_t boundary);
// A field's destination bytes from which MirrorField streams its reversed
// rows: beyond a few MiB a frame's source and destination no longer both fit
// the last-level cache of most processors (a 3840 x 2160 field is 8 MiB, a
// 1920 x 1080 one 2 MiB).
constexpr size_t kStreamFieldBytes = size_t{4} << 20;
// The reversal at the fastest of the levels allowed, streaming or not (the
// scalar one never streams).
MirrorRowFn SelectReverseRow(SimdLevel level, bool stream = false);

// Writes the view's rows: row mapping as above, reversed rows as above,
// other rows copied. An odd trailing pixel and the other field's rows are
// not written. Every level gives the same bytes; fields of at least
// kStreamFieldBytes stream their reversed rows.
void MirrorField(const FieldView& v, bool horizontal, bool vertical, SimdLevel level = SimdLevel::scalar);

// The same bytes when source and destination are one frame (v.src ==
// v.dst): the row mapping pairs each row with one other or with itself, so
// every pair of rows is exchanged through `row`, scratch of 4 x v.pairs
// bytes, instead of copying the whole field first.
void MirrorFieldInPlace(const FieldView& v, bool horizontal, bool vertical, SimdLevel level, uint8_t* row);

}  // namespace zvf::filters
