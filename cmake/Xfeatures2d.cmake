# Where LATCH and FREAK come from: OpenCV's xfeatures2d module. Debian's and Ubuntu's packages leave it out, so it is
# taken, in this order, from the OpenCV that was found, from a folder given by MIREL_XFEATURES2D_DIR, or from the cache
# that `./dev setup` fills. The folder holds include/ and src/latch.cpp, src/freak.cpp of OpenCV's own source.
#
# Sets MIREL_HAS_XFEATURES2D and MIREL_XFEATURES2D_TARGET (empty without the module).
set(MIREL_XFEATURES2D_DIR "" CACHE PATH "Folder with the sources of OpenCV's xfeatures2d module")
set(MIREL_HAS_XFEATURES2D OFF)
set(MIREL_XFEATURES2D_TARGET)

find_package(OpenCV QUIET OPTIONAL_COMPONENTS xfeatures2d)
