// Dynamic loading for the host kit: dlopen on Linux, LoadLibraryW on Windows.
#pragma once

#include <string>

namespace zvf::host {

void* OpenLibrary(const std::string& utf8Path, std::string* error);
void* LibrarySymbol(void* lib, const char* name);
void CloseLibrary(void* lib);

}  // namespace zvf::host
