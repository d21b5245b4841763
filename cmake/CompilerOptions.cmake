# How this project's own code is compiled. None of it reaches a consumer: everything is set per folder or PRIVATE.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(MSVC)
  add_compile_options(/fp:precise /utf-8 /W4)
  if(MIREL_WARNINGS_AS_ERRORS)
    add_compile_options(/WX)
  endif()
else()
  # One result on every machine: no fused multiply-add, no reordering of floating point, one baseline instruction set.
  # Wider instruction sets are taken at run time, see MirelAlgorithms/frame/internal/CpuVariant.h.
  add_compile_options(-ffp-contract=off -Wall -Wextra -Wpedantic -Wshadow)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    add_compile_options(-march=x86-64-v2)
  endif()
  # GCC 12's vectoriser of straight-line code drops the rounding of a double that is stored as float and read again:
  # of `float x = a * 3, y = b * 3; d[0] = x * 0.5; d[1] = y * 0.5;` neither product is rounded.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-fno-tree-slp-vectorize)
  endif()
  if(MIREL_WARNINGS_AS_ERRORS)
    add_compile_options(-Werror)
  endif()
  # Source paths in log lines and assertions are relative to the project, whatever folder it is built in.
  add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
  set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")
endif()

if(MIREL_SANITIZE)
  set(checks -fsanitize=${MIREL_SANITIZE} -fno-omit-frame-pointer)
  if(MIREL_SANITIZE MATCHES "undefined")
    list(APPEND checks -fsanitize=float-cast-overflow,integer-divide-by-zero,bounds -fno-sanitize-recover=all)
  endif()
  add_compile_options(${checks} -g1 -O1)
  add_link_options(${checks})
endif()
