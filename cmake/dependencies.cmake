# Third-party libraries, all from Debian: the host build uses the packages as installed, the
# MinGW build the static copies that scripts/setup compiles from Debian's sources.
if(WIN32)
  # The DLL carries zlib inside: it may import Windows system DLLs only.
  set(ZLIB_USE_STATIC_LIBS ON)
endif()
find_package(ZLIB REQUIRED)

find_path(TINYXML_INCLUDE_DIR tinyxml.h REQUIRED)
find_library(TINYXML_LIBRARY NAMES libtinyxml.a tinyxml REQUIRED)
add_library(dsl_tinyxml INTERFACE)
target_include_directories(dsl_tinyxml SYSTEM INTERFACE ${TINYXML_INCLUDE_DIR})
target_link_libraries(dsl_tinyxml INTERFACE ${TINYXML_LIBRARY})
target_compile_definitions(dsl_tinyxml INTERFACE TIXML_USE_STL)

find_package(Threads REQUIRED)

if(DSL_BUILD_TESTS)
  find_package(GTest REQUIRED)
endif()
