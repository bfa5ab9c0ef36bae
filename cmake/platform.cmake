# Platform switches shared by every target. Platform-specific code lives in paired files
# (`name_win32.cpp`, `name_posix.cpp`); dsl_collect_sources keeps the pair that fits.
if(WIN32)
  set(DSL_PLATFORM_SUFFIX win32)
  set(DSL_OTHER_SUFFIX posix)
  add_compile_definitions(UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0601)
  # Everything the product needs from the toolchain is linked in: the DLL and the test
  # executables depend on Windows system DLLs only.
  add_link_options(-static -static-libgcc -static-libstdc++)
else()
  set(DSL_PLATFORM_SUFFIX posix)
  set(DSL_OTHER_SUFFIX win32)
endif()

add_compile_options(-Wall -Wextra -Wno-unused-parameter)

if(DSL_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

# dsl_collect_sources(<out-var> <dir>...): the .cpp files of the folders, without the other
# platform's half of each pair.
function(dsl_collect_sources out)
  set(result)
  foreach(dir IN LISTS ARGN)
    file(GLOB files CONFIGURE_DEPENDS "${dir}/*.cpp")
    foreach(f IN LISTS files)
      if(NOT f MATCHES "_${DSL_OTHER_SUFFIX}\\.cpp$")
        list(APPEND result "${f}")
      endif()
    endforeach()
  endforeach()
  set(${out} ${result} PARENT_SCOPE)
endfunction()
