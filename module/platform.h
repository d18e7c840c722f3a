// The one place where the module meets its operating system. One source file
// per platform implements it (platform_win32.cpp, platform_posix.cpp).
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "zvf/abi.h"
#include "zvf/placement.h"

namespace zvf::platform {

using Library = void*;

// Loads a library by path as the platform's loader would (relative names
// use its search order); null when it cannot be loaded.
Library LoadLibraryPath(const char16_t* path);
void* GetSymbol(Library lib, const char* name);
void FreeLibraryHandle(Library lib);

// Screen queries for placing setup dialogs.
bool CursorPos(Point* out);
bool MonitorRectAt(Point p, Rect* out);
// The work area of that monitor: its rectangle less taskbars and docked bars.
bool MonitorWorkAreaAt(Point p, Rect* out);
Rect ScreenRect();

// Whether the built-in Japanese string table should be used.
bool PreferJapanese();

// Converters between the interface's UTF-16 and UTF-8.
std::string ToUtf8(std::u16string_view s);
std::u16string FromUtf8(std::string_view s);

}  // namespace zvf::platform
