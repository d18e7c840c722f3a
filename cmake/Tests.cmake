# GoogleTest: the system package natively, its sources when cross-building.
if(CMAKE_CROSSCOMPILING)
  set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  set(ZVF_GTEST gtest_main gtest)
else()
  find_package(GTest REQUIRED)
  set(ZVF_GTEST GTest::gtest_main GTest::gtest)
endif()

# Kernels, codecs and the filter object base, linked directly.
file(GLOB ZVF_UNIT_TESTS CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/unit/*.cpp)
add_executable(unit_tests ${ZVF_UNIT_TESTS})
target_link_libraries(unit_tests PRIVATE zvf_filters zvf_host ${ZVF_GTEST})
add_test(NAME unit_tests COMMAND unit_tests)

# The whole module, loaded as a dynamic library through the host kit.
file(GLOB ZVF_MODULE_TESTS CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tests/module/*.cpp)
add_executable(module_tests ${ZVF_MODULE_TESTS})
target_include_directories(module_tests PRIVATE ${PROJECT_SOURCE_DIR}/filters)
target_link_libraries(module_tests PRIVATE zvf_host ${ZVF_GTEST})
add_test(NAME module_tests COMMAND module_tests)

# The core library search, in a process of its own with no library path.
if(NOT WIN32)
  add_executable(core_search_tests ${PROJECT_SOURCE_DIR}/tests/isolated/core_library_search_test.cpp)
  target_link_libraries(core_search_tests PRIVATE zvf_host ${ZVF_GTEST})
  add_test(NAME core_search_tests COMMAND core_search_tests)
  set_tests_properties(core_search_tests PROPERTIES ENVIRONMENT "LD_LIBRARY_PATH=")
endif()

# Language modules under Wine: Japanese for real, and one with a stale stamp.
if(WIN32)
  zvf_language_module(ZelVideoFiltersNLD ${PROJECT_SOURCE_DIR}/tests/resources/stale_stamp.rc)
  add_executable(language_tests ${PROJECT_SOURCE_DIR}/tests/windows/language_module_test.cpp)
  target_link_libraries(language_tests PRIVATE zvf_host ${ZVF_GTEST})
  add_dependencies(language_tests ZelVideoFiltersJPN ZelVideoFiltersNLD)
  add_test(NAME language_japanese COMMAND language_tests --gtest_filter=JapaneseLocale.*)
  set_tests_properties(language_japanese PROPERTIES ENVIRONMENT "LANG=ja_JP.UTF-8;LC_ALL=ja_JP.UTF-8")
  add_test(NAME language_stale_stamp COMMAND language_tests --gtest_filter=StaleStampLocale.*)
  set_tests_properties(language_stale_stamp PROPERTIES ENVIRONMENT "LANG=nl_NL.UTF-8;LC_ALL=nl_NL.UTF-8")
endif()
