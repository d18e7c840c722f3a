#include "zvf/placement.h"

namespace zvf {

Point PlaceAtCursor(const Rect& dialog, Point cursor, const Rect& monitor) {
    const int32_t w = dialog.right - dialog.left;
    const int32_t h = dialog.bottom - dialog.top;
    int32_t left = cursor.x - w / 2;
    int32_t top = cursor.y - h / 2;
    if (left < monitor.left) left = monitor.left + 1;
    if (left + w > monitor.right) left = monitor.right - 1 - w;
    if (top + h > monitor.bottom) top = monitor.bottom - 1 - h;
    if (top < monitor.top) top = monitor.top + 1;
    return {left, top};
}

}  // namespace zvf
