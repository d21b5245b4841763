# Where LATCH and FREAK come from: OpenCV's xfeatures2d module. Debian's and Ubuntu's packages leave it out, so it is
# taken, in this order, from the OpenCV that was found, from a folder given by MIREL_XFEATURES2D_DIR, or from the cache
# that `./dev setup` fills. The folder holds include/, src/latch.cpp and src/freak.cpp of OpenCV's own source; it is
# compiled into a small static library whose symbols stay inside ours, so that a host's own copy cannot clash with it.
#
# Sets MIREL_HAS_XFEATURES2D (ON or OFF), MIREL_XFEATURES2D_TARGET (empty without the module) and MIREL_HAS_LATCH_SOURCE
# (ON or OFF): our own, faster loop of LATCH needs the triplets that the module keeps to itself, so it is there only where
# the module's source is compiled, and it is the source that the loop follows. Otherwise the module's loop is called.
set(MIREL_XFEATURES2D_DIR "" CACHE PATH "Folder with the sources of OpenCV's xfeatures2d module")
set(MIREL_HAS_XFEATURES2D OFF)
set(MIREL_XFEATURES2D_TARGET)
set(MIREL_HAS_LATCH_SOURCE OFF)
set(MIREL_LATCH_SOURCE_SHA256 599b96609d2c0c103d4ca697f81f4d461c5f2bb1c7d8a182eb59e4de3af54085)  # OpenCV 4.6

# The folder of the cache.
function(mirel_xfeatures2d_cache result)
  set(cache "${MIREL_CACHE}")
  if(NOT cache)
    set(cache "$ENV{MIREL_CACHE}")
  endif()
  if(NOT cache AND NOT "$ENV{XDG_CACHE_HOME}" STREQUAL "")
    set(cache "$ENV{XDG_CACHE_HOME}/mirel-algorithms")
  endif()
  if(NOT cache)
    set(cache "$ENV{HOME}/.cache/mirel-algorithms")
  endif()
  set(${result} "${cache}/xfeatures2d-${OpenCV_VERSION}" PARENT_SCOPE)
endfunction()

function(mirel_xfeatures2d_complete folder result)
  set(complete OFF)
  if(EXISTS "${folder}/include/opencv2/xfeatures2d.hpp" AND EXISTS "${folder}/src/latch.cpp"
     AND EXISTS "${folder}/src/freak.cpp")
    set(complete ON)
  endif()
  set(${result} ${complete} PARENT_SCOPE)
endfunction()

# The static library mirel_xfeatures2d out of the sources in a folder. They are copied next to a header that stands in
# for the module's own precomp.hpp, which needs OpenCV's private headers.
function(mirel_build_xfeatures2d folder)
  set(generated ${PROJECT_BINARY_DIR}/xfeatures2d)
  foreach(source latch.cpp freak.cpp)
    configure_file(${folder}/src/${source} ${generated}/${source} COPYONLY)
  endforeach()
  file(CONFIGURE OUTPUT ${generated}/precomp.hpp CONTENT
"#include <opencv2/core.hpp>
#include <opencv2/core/utility.hpp>
#include <opencv2/features2d.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/xfeatures2d.hpp>
")
  set(latch ${generated}/latch.cpp)
  file(SHA256 ${latch} sum)
  if(sum STREQUAL MIREL_LATCH_SOURCE_SHA256)
    set(MIREL_HAS_LATCH_SOURCE ON PARENT_SCOPE)
    set(latch ${PROJECT_SOURCE_DIR}/MirelAlgorithms/features/internal/LatchModule.cpp)  # includes latch.cpp
  endif()
  add_library(mirel_xfeatures2d STATIC ${latch} ${generated}/freak.cpp)
  target_include_directories(mirel_xfeatures2d PRIVATE ${generated} ${PROJECT_SOURCE_DIR})
  target_include_directories(mirel_xfeatures2d SYSTEM PUBLIC ${folder}/include)
  target_link_libraries(mirel_xfeatures2d PUBLIC opencv_core opencv_imgproc opencv_features2d)
  if(MSVC)
    target_compile_options(mirel_xfeatures2d PRIVATE /w)
  else()
    target_compile_options(mirel_xfeatures2d PRIVATE -w)
  endif()
  if(MIREL_SANITIZE)
    # Memory errors stay watched. The rest is OpenCV's own: for one, it casts the logarithm of any key point size to int
    # and clamps it afterwards.
    target_compile_options(mirel_xfeatures2d PRIVATE -fno-sanitize=undefined,float-cast-overflow)
  endif()
endfunction()

if(TARGET opencv_xfeatures2d)
  set(MIREL_XFEATURES2D_TARGET opencv_xfeatures2d)
  message(STATUS "xfeatures2d (LATCH, FREAK): module of OpenCV ${OpenCV_VERSION}")
else()
  set(folder "${MIREL_XFEATURES2D_DIR}")
  if(NOT folder)
    mirel_xfeatures2d_cache(folder)
  endif()
  mirel_xfeatures2d_complete("${folder}" complete)
  if(complete)
    mirel_build_xfeatures2d("${folder}")
    set(MIREL_XFEATURES2D_TARGET mirel_xfeatures2d)
    message(STATUS "xfeatures2d (LATCH, FREAK): built from ${folder}")
  elseif(MIREL_XFEATURES2D_DIR)
    message(FATAL_ERROR "MIREL_XFEATURES2D_DIR: ${folder} lacks include/opencv2/xfeatures2d.hpp, src/latch.cpp or "
                        "src/freak.cpp")
  else()
    message(STATUS "xfeatures2d (LATCH, FREAK): left out; `./dev setup` fetches its sources, or set MIREL_XFEATURES2D_DIR")
  endif()
endif()
if(MIREL_XFEATURES2D_TARGET)
  set(MIREL_HAS_XFEATURES2D ON)
endif()
