#include "matrix_kernel.h"

#include <cstring>
#include <memory>
#include <new>

#include "zvf/field_source.h"

namespace zvf::filters {
namespace {

// A buffered source line: 4 bytes of left padding, the region's pairs, 4
// bytes past its end. The padding holds each channel's edge neighbours, so
// the inner loop needs no tests.
constexpr ptrdiff_t kPad = 4;

struct LineLoader {
    const FieldView& v;
    ptrdiff_t bytes;  // 4 x pairs
    ptrdiff_t tail;   // bytes of the frame row after the region's pairs
    int32_t lastLine; // last field line inside the frame
    // Bytes copied at either end of the line; the middle is left out when
    // the kernel reads it from the frame (with two frames, or in the
    // separable loops, which read only the line not yet written).
    ptrdiff_t ends;

    // Buffers the line and returns where to read it whole: its place in the
    // frame, or the buffer for a repeated last line, which may be the output
    // line being written.
    const uint8_t* Load(uint8_t* buf, int32_t line) const {
        const bool repeated = line > lastLine;
        if (repeated) line = lastLine;
        const uint8_t* s = v.src + ptrdiff_t{line} * v.step;
        uint8_t* b = buf + kPad;
        if (repeated || 2 * ends >= bytes) {
            std::memcpy(b, s, static_cast<size_t>(bytes));
        } else {
            std::memcpy(b, s, static_cast<size_t>(ends));
            std::memcpy(b + bytes - ends, s + bytes - ends, static_cast<size_t>(ends));
        }
        // Left: each channel's first sample is its own neighbour.
        b[-4] = 0;
        b[-3] = b[1];  // Cb
        b[-2] = b[0];  // Y
        b[-1] = b[3];  // Cr
        // Right: the frame's next sample of each channel, or the last one at
        // the frame's edge.
        uint8_t* e = b + bytes;
        e[0] = tail >= 1 ? s[bytes] : e[-2];      // Y
        e[1] = tail >= 2 ? s[bytes + 1] : e[-3];  // Cb
        e[2] = tail >= 3 ? s[bytes + 2] : e[-2];  // (unused: two luma samples on)
        e[3] = tail >= 4 ? s[bytes + 3] : e[-1];  // Cr
        return repeated ? b : s;
    }
};

inline int32_t LumaSum(const int16_t (&c)[3][4], const uint8_t* const (&l)[3], ptrdiff_t o) {
    int32_t sum = 0;
    for (int r = 0; r < 3; ++r) sum += c[r][0] * l[r][o - 2] + c[r][1] * l[r][o] + c[r][2] * l[r][o + 2];
    return sum;
}

inline int32_t ChromaSum(const int16_t (&c)[3][4], const uint8_t* const (&l)[3], ptrdiff_t o) {
    int32_t sum = 0;
    for (int r = 0; r < 3; ++r)
        sum += c[r][0] * (l[r][o - 4] - 128) + c[r][1] * (l[r][o] - 128) + c[r][2] * (l[r][o + 4] - 128);
    return sum;
}

inline uint8_t Saturate(int32_t v) { return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

inline uint8_t LumaOut(int32_t sum, bool normalize) {
    // Logical shift: a negative sum becomes a huge positive value.
    return Saturate(normalize ? static_cast<int32_t>(static_cast<uint32_t>(sum) >> 12) : sum);
}

inline uint8_t ChromaOut(int32_t sum, bool normalize) { return Saturate((normalize ? sum >> 12 : sum) + 128); }

// A buffered line, where to read it whole, and for a separable kernel its
// sums across.
struct Slot {
    uint8_t* bytes;
    const uint8_t* row;
    int16_t* across;
};

// Loads the first three lines, then slides the span down the field, running
// `line` on each output line.
template <typename Line>
void ConvolveLines(const FieldView& v, const LineLoader& loader, Slot (&slot)[3], Line line) {
    // The first output line uses field lines 0, 1 and 2, as the second does.
    for (int i = 0; i < 3; ++i) slot[i].row = loader.Load(slot[i].bytes, i);
    for (int32_t j = 0; j < v.rows; ++j) {
        if (j >= 2) {
            // Slide the span down; the line entering it is not written yet.
            const Slot oldest = slot[0];
            slot[0] = slot[1];
            slot[1] = slot[2];
            slot[2] = oldest;
            slot[2].row = loader.Load(slot[2].bytes, j + 1);
        }
        const uint8_t* const lines[3] = {slot[0].bytes + kPad, slot[1].bytes + kPad, slot[2].bytes + kPad};
        line(slot, lines, v.dst + ptrdiff_t{j} * v.step, j);
    }
}

// As ConvolveLines, two output lines at a time after the first, which
// takes the same lines as the second: `pair` gets four slots and the two
// output rows, `line` the first and an odd last line.
template <typename Line, typename Pair>
void ConvolveLinePairs(const FieldView& v, const LineLoader& loader, Slot (&slot)[4], Line line, Pair pair) {
    const auto three = [&](int32_t j) {
        const Slot s[3] = {slot[0], slot[1], slot[2]};
        const uint8_t* const lines[3] = {s[0].bytes + kPad, s[1].bytes + kPad, s[2].bytes + kPad};
        line(s, lines, v.dst + ptrdiff_t{j} * v.step);
    };
    for (int i = 0; i < 3; ++i) slot[i].row = loader.Load(slot[i].bytes, i);
    three(0);
    // Here the slots hold lines j - 1, j and j + 1.
    for (int32_t j = 1; j < v.rows; j += 2) {
        if (j + 1 == v.rows) {
            three(j);
            return;
        }
        slot[3].row = loader.Load(slot[3].bytes, j + 2);
        const uint8_t* const lines[4] = {slot[0].bytes + kPad, slot[1].bytes + kPad, slot[2].bytes + kPad,
                                         slot[3].bytes + kPad};
        uint8_t* const out[2] = {v.dst + ptrdiff_t{j} * v.step, v.dst + ptrdiff_t{j + 1} * v.step};
        pair(slot, lines, out);
        // Two lines down: the last two lines move up, the next one not yet
        // written (rows j and j + 1 are) loads behind them.
        std::swap(slot[0], slot[2]);
        std::swap(slot[1], slot[3]);
        if (j + 2 < v.rows) slot[2].row = loader.Load(slot[2].bytes, j + 3);
    }
}

// Where one output line's kernels read (or two lines', from four slots):
// the buffered lines, and with `fromFrame` the lines' places in the frame
// for the whole 64-byte steps between the buffered ends, where the kernels
// read the edge neighbours. Those steps' reads (4 bytes on either side) stay
// inside the region, and the buffered steps' reads within the kMatrixEnds
// bytes kept at each end.
template <int kLines>
MatrixSourcesOf<kLines> SourcesOf(const Slot (&s)[kLines], const uint8_t* const (&lines)[kLines], ptrdiff_t bytes,
                                  bool fromFrame) {
    auto src = MatrixSourcesOf<kLines>::Buffered(lines);
    if (!fromFrame || 2 * kMatrixEnds >= bytes) return src;
    constexpr ptrdiff_t kHead = 64;
    for (int r = 0; r < kLines; ++r) src.frame[r] = s[r].row;
    src.frameFrom = kHead;
    src.frameTo = kHead + (bytes - 4 - kHead) / 64 * 64;
    return src;
}

}  // namespace

void MatrixLine(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                const MatrixCoefficients& c) {
    const bool normalize = c.normalize != 0;
    for (ptrdiff_t o = from; o < to; o += 4) {
        out[o] = LumaOut(LumaSum(c.rows, lines, o), normalize);
        out[o + 1] = ChromaOut(ChromaSum(c.rows, lines, o + 1), normalize);
        out[o + 2] = LumaOut(LumaSum(c.rows, lines, o + 2), normalize);
        out[o + 3] = ChromaOut(ChromaSum(c.rows, lines, o + 3), normalize);
    }
}

MatrixWideWords WideWordsOf(const MatrixCoefficients& c) {
    const auto halves = [](int16_t low, int16_t high) {
        return (uint32_t{static_cast<uint16_t>(high)} << 16) | static_cast<uint16_t>(low);
    };
    MatrixWideWords w;
    for (int r = 0; r < 3; ++r) w.leftCentre[r] = halves(c.rows[r][0], c.rows[r][1]);
    w.topMiddleRight = halves(c.rows[0][2], c.rows[1][2]);
    w.bottomRight = halves(c.rows[2][2], 0);
    int32_t total = 0;
    for (const auto& row : c.rows) total += row[0] + row[1] + row[2];
    const int32_t chroma = -128 * total + (c.normalize != 0 ? 128 << 12 : 128);
    w.start = uint64_t{static_cast<uint32_t>(chroma)} << 32;
    return w;
}

int MatrixMirroredRows(const MatrixCoefficients& c) {
    bool same = true, opposite = true;
    for (int k = 0; k < 3; ++k) {
        same = same && c.rows[2][k] == c.rows[0][k];
        opposite = opposite && int32_t{c.rows[2][k]} == -int32_t{c.rows[0][k]};
    }
    return same ? 1 : (opposite ? -1 : 0);
}

void CopyMatrixField(const FieldView& v) {
    const size_t bytes = static_cast<size_t>(v.pairs) * 4;
    for (int32_t r = 0; r < v.rows; ++r) {
        const uint8_t* s = v.src + ptrdiff_t{r} * v.step;
        uint8_t* d = v.dst + ptrdiff_t{r} * v.step;
        if (s != d) std::memmove(d, s, bytes);
    }
}

bool ConvolveMatrixField(const FieldView& v, const MatrixCoefficients& c, SimdLevel level) {
    if (c.valid == 0 || v.rows == 1) {
        CopyMatrixField(v);
        return true;
    }
    const ptrdiff_t bytes = ptrdiff_t{v.pairs} * 4;
    const ptrdiff_t lineSize = bytes + 2 * kPad;
    // Which SIMD path a kernel takes (16-bit sums, shifted or scaled, from
    // the lines or from their sums across, or 32-bit ones) is worked out once
    // here, not for every line.
    MatrixNarrow narrow;
    MatrixSeparable separable;
    const bool sixteen = level >= SimdLevel::avx2 && SixteenBitMatrix(c, &narrow);
    const bool separate = sixteen && SeparateMatrix(narrow, &separable);
    // With two frames the SIMD lines read each source line's middle where it
    // is; only its ends are buffered, for the edge neighbours. In place, an
    // output line overwrites the line the next one takes from above, so every
    // line is buffered whole (the scalar kernel always buffers, as the
    // reference the others are checked against).
    const bool fromFrame = level >= SimdLevel::sse2 && !SourceOverlapsDestination(v);
    // The sums across, one 16-bit word per byte, after the lines.
    const ptrdiff_t acrossBytes = separate ? 2 * bytes : 0;
    // The 32-bit path (which the split form takes at AVX-512 too) takes
    // output lines in pairs, from four lines.
    const bool avx512 = level >= SimdLevel::avx512;
    const bool pairs = level >= SimdLevel::avx2 && (!sixteen || (avx512 && narrow.split));
    const int slots = pairs ? 4 : 3;
    std::unique_ptr<uint8_t[]> scratch(
        new (std::nothrow) uint8_t[static_cast<size_t>(slots * lineSize + 3 * acrossBytes)]);
    if (!scratch) return false;

    const ptrdiff_t rowStart = ptrdiff_t{v.left} * kBytesPerPixel;
    const LineLoader loader{v, bytes, ptrdiff_t{v.pitch} - rowStart - bytes, (v.height - 1 - v.firstRow) / 2,
                            separate || fromFrame ? kMatrixEnds : bytes};
    // Four slots for the paired path, the first three for the others.
    Slot quad[4];
    for (int i = 0; i < slots; ++i) {
        quad[i].bytes = scratch.get() + i * lineSize;
        quad[i].across = reinterpret_cast<int16_t*>(scratch.get() + slots * lineSize + i * acrossBytes);
    }
    if (pairs) {
        const auto wideLine = avx512 ? MatrixWideLineAvx512 : MatrixWideLineAvx2;
        const auto widePair = avx512 ? MatrixWidePairAvx512 : MatrixWidePairAvx2;
        const auto line = [&](const Slot(&s)[3], const uint8_t* const(&lines)[3], uint8_t* out) {
            wideLine(SourcesOf(s, lines, bytes, fromFrame), out, 0, bytes, c);
        };
        const auto pair = [&](const Slot(&s)[4], const uint8_t* const(&lines)[4], uint8_t* const(&out)[2]) {
            widePair(SourcesOf(s, lines, bytes, fromFrame), out, 0, bytes, c);
        };
        ConvolveLinePairs(v, loader, quad, line, pair);
        return true;
    }
    Slot slot[3] = {quad[0], quad[1], quad[2]};
    if (separate) {
        const auto across = avx512 ? MatrixAcrossAvx512 : MatrixAcrossAvx2;
        const auto separableLine = avx512 ? MatrixSeparableLineAvx512 : MatrixSeparableLineAvx2;
        const auto each = [&](const Slot(&s)[3], const uint8_t* const(&lines)[3], uint8_t* out, int32_t j) {
            // Each line's sums across are formed once, as it enters the
            // span below; the first two lines' before the first output line.
            // The second output line has the same line below as the first,
            // whose sums are formed again: one line per field.
            if (j == 0)
                for (int i = 0; i < 2; ++i) across(s[i].bytes + kPad, s[i].row, s[i].across, bytes, separable);
            int16_t* const sums[3] = {s[0].across, s[1].across, s[2].across};
            separableLine(sums, lines, s[2].row, out, bytes, c, narrow, separable);
        };
        ConvolveLines(v, loader, slot, each);
        return true;
    }
    if (sixteen) {
        const auto line = avx512 ? MatrixNarrowLineAvx512 : MatrixNarrowLineAvx2;
        ConvolveLines(v, loader, slot, [&](const Slot(&s)[3], const uint8_t* const(&lines)[3], uint8_t* out, int32_t) {
            line(SourcesOf(s, lines, bytes, fromFrame), out, 0, bytes, c, narrow);
        });
        return true;
    }
    const MatrixLineFn line = level >= SimdLevel::sse2 ? MatrixLineSse2 : MatrixLine;
    ConvolveLines(v, loader, slot, [&](const Slot(&s)[3], const uint8_t* const(&lines)[3], uint8_t* out, int32_t) {
        SourcesOf(s, lines, bytes, fromFrame).RunLine(line, out, 0, bytes, c);
    });
    return true;
}

}  // namespace zvf::filters
