# Puts text files into a program.
#
#   mirel_embed_file(TARGET NAMESPACE NAME FILE)
#
# adds a source to TARGET that defines `const std::string_view NAME` in NAMESPACE with the content of FILE; an empty FILE
# gives an empty text. Schemes of web addresses (in licence comments) are dropped, so that the text names no resource.
function(mirel_embed_file target namespace name file)
  set(bytes "")
  if(file)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
    file(READ "${file}" text)
    string(REGEX REPLACE "https?://" "" text "${text}")
    string(HEX "${text}" digits)
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${digits}")
  endif()
  set(source "${CMAKE_CURRENT_BINARY_DIR}/embedded/${name}.cpp")
  file(CONFIGURE OUTPUT "${source}" @ONLY CONTENT [[
#include <string_view>

namespace @namespace@ {

namespace {
const char text[] = {@bytes@'\0'};
}

extern const std::string_view @name@;
const std::string_view @name@(text, sizeof text - 1);

}
]])
  target_sources(${target} PRIVATE "${source}")
endfunction()
