# The plug-in module: every filter, the registration table and the loaders.
file(GLOB ZVF_INTERFACE_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/interfaces/src/*.cpp)
file(GLOB_RECURSE ZVF_FILTER_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/filters/*.cpp)
# Instruction-set variants are compiled with their own flags below.
list(FILTER ZVF_FILTER_SOURCES EXCLUDE REGEX "_(sse2|avx2|avx512)\\.cpp$")
file(GLOB_RECURSE ZVF_SSE2_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/filters/*_sse2.cpp)
file(GLOB_RECURSE ZVF_AVX2_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/filters/*_avx2.cpp)
file(GLOB_RECURSE ZVF_AVX512_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/filters/*_avx512.cpp)
set_source_files_properties(${ZVF_SSE2_SOURCES} PROPERTIES COMPILE_OPTIONS "-msse2")
set_source_files_properties(${ZVF_AVX2_SOURCES} PROPERTIES COMPILE_OPTIONS "-mavx2")
set_source_files_properties(${ZVF_AVX512_SOURCES} PROPERTIES COMPILE_OPTIONS "-mavx512f;-mavx512bw;-mavx512vbmi;-mavx512vnni")

set(ZVF_MODULE_SOURCES
  ${PROJECT_SOURCE_DIR}/module/core_loader.cpp
  ${PROJECT_SOURCE_DIR}/module/headless_view.cpp
  ${PROJECT_SOURCE_DIR}/module/language_loader.cpp
  ${PROJECT_SOURCE_DIR}/module/module_state.cpp
  ${PROJECT_SOURCE_DIR}/module/registration.cpp
  ${PROJECT_SOURCE_DIR}/module/strings.cpp
  ${PROJECT_SOURCE_DIR}/module/utf.cpp)
if(WIN32)
  list(APPEND ZVF_MODULE_SOURCES ${PROJECT_SOURCE_DIR}/module/platform_win32.cpp)
else()
  list(APPEND ZVF_MODULE_SOURCES ${PROJECT_SOURCE_DIR}/module/platform_posix.cpp)
endif()

# Everything but the exports, so tests can link kernels and objects directly.
add_library(zvf_filters STATIC ${ZVF_INTERFACE_SOURCES} ${ZVF_FILTER_SOURCES} ${ZVF_SSE2_SOURCES}
                               ${ZVF_AVX2_SOURCES} ${ZVF_AVX512_SOURCES} ${ZVF_MODULE_SOURCES})
target_include_directories(zvf_filters PUBLIC ${PROJECT_SOURCE_DIR}/interfaces/include ${PROJECT_SOURCE_DIR}/module
                                              ${PROJECT_SOURCE_DIR}/filters ${PROJECT_SOURCE_DIR})
if(WIN32)
  target_link_libraries(zvf_filters PUBLIC user32 advapi32)
else()
  find_package(Threads REQUIRED)
  target_link_libraries(zvf_filters PUBLIC ${CMAKE_DL_LIBS} Threads::Threads)
endif()

set(ZVF_MODULE_ENTRY ${PROJECT_SOURCE_DIR}/module/entry.cpp)
if(WIN32)
  list(APPEND ZVF_MODULE_ENTRY ${PROJECT_SOURCE_DIR}/module/ZelVideoFilters.def)
endif()
add_library(ZelVideoFilters SHARED ${ZVF_MODULE_ENTRY})
target_link_libraries(ZelVideoFilters PRIVATE zvf_filters)
set_target_properties(ZelVideoFilters PROPERTIES PREFIX "" OUTPUT_NAME ZelVideoFilters SUFFIX ".tpi")
if(NOT WIN32)
  # The core library is looked up beside the module.
  set_target_properties(ZelVideoFilters PROPERTIES BUILD_RPATH "$ORIGIN" INSTALL_RPATH "$ORIGIN")
  target_link_options(ZelVideoFilters PRIVATE -Wl,--no-undefined -Wl,--enable-new-dtags)
endif()
