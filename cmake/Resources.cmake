# Resource-only language modules, found by the module's language loader
# beside it: <base name><code>.DLL.
enable_language(RC)

function(zvf_language_module target source)
  add_library(${target} SHARED ${source})
  set_target_properties(${target} PROPERTIES PREFIX "" SUFFIX ".DLL" LINKER_LANGUAGE CXX)
  # No code, no entry point, no runtime.
  target_link_options(${target} PRIVATE -nostdlib -Wl,--entry=0)
endfunction()

zvf_language_module(ZelVideoFiltersJPN ${PROJECT_SOURCE_DIR}/resources/japanese.rc)
