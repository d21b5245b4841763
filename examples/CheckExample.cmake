# Whether a guide shows an example as it is, whether the example runs, and with SAME_OUTPUT whether it prints what the
# guide says.
file(READ "${SOURCE}" code)
file(READ "${GUIDE}" page)

string(FIND "${page}" "```cpp\n${code}```\n" place)
if(place EQUAL -1)
  message(FATAL_ERROR "${GUIDE} does not show ${SOURCE} as it is; ./dev guides puts it there")
endif()

foreach(frame IN LISTS FRAMES)
  list(APPEND arguments "$ENV{MIREL_DATA}/${frame}")
  if(NOT EXISTS "$ENV{MIREL_DATA}/${frame}")
    message("skipped: MIREL_DATA does not name the folder with ${frame}")
    return()
  endif()
endforeach()
execute_process(COMMAND "${PROGRAM}" ${arguments} OUTPUT_VARIABLE output RESULT_VARIABLE status)
message("${output}")
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} ended with ${status}")
endif()

string(FIND "${page}" "```text\n${output}```\n" place)
if(SAME_OUTPUT AND place EQUAL -1)
  message(FATAL_ERROR "${GUIDE} shows another output; ./dev guides puts this one there")
endif()
