# The host core library stand-in and the reference host kit.
set(ZELCORE_SOURCES ${PROJECT_SOURCE_DIR}/host/core/core_library.cpp)
if(WIN32)
  list(APPEND ZELCORE_SOURCES ${PROJECT_SOURCE_DIR}/host/core/ZelCore.def)
endif()
add_library(ZelCore SHARED ${ZELCORE_SOURCES})
target_include_directories(ZelCore PRIVATE ${PROJECT_SOURCE_DIR}/interfaces/include ${PROJECT_SOURCE_DIR}/host)
set_target_properties(ZelCore PROPERTIES PREFIX "" OUTPUT_NAME ZelCore SUFFIX ".DLL")
if(WIN32)
  # The exports are __stdcall on 32-bit Windows; the .def names them undecorated.
  target_link_options(ZelCore PRIVATE -Wl,--enable-stdcall-fixup)
endif()

file(GLOB ZVF_HOST_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/host/kit/*.cpp)
add_library(zvf_host STATIC ${ZVF_HOST_SOURCES})
target_include_directories(zvf_host PUBLIC ${PROJECT_SOURCE_DIR}/interfaces/include ${PROJECT_SOURCE_DIR}/host)
if(NOT WIN32)
  find_package(Threads REQUIRED)
  target_link_libraries(zvf_host PUBLIC ${CMAKE_DL_LIBS} Threads::Threads)
endif()
# Programs on the host kit expect the module and the core library beside them.
add_dependencies(zvf_host ZelVideoFilters ZelCore)
