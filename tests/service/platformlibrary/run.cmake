# Builds the stand-in for the device's library, then the log library with it in the search path, and runs the result. Then
# configures without it, where it is required.
function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGV}\nended with ${result}\n${output}\n${errors}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

set(configure ${CMAKE_COMMAND} -G Ninja -S ${SOURCE} -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER=${COMPILER}
  -DQWIXTD_QT_MAJOR=${QT_MAJOR} -DQWIXTD_REQUIRE_PLATFORM_LOG=ON)
file(REMOVE_RECURSE ${BINARY})
file(MAKE_DIRECTORY ${BINARY}/lib)
run(${COMPILER} -shared -fPIC -Wl,-soname,libLog.so.1 -o ${BINARY}/lib/libLog.so.1 ${SOURCE}/devicelog.cpp)
run(${configure} -B ${BINARY}/build -DCMAKE_LIBRARY_PATH=${BINARY}/lib)
run(${CMAKE_COMMAND} --build ${BINARY}/build --target writelines)

execute_process(COMMAND ${BINARY}/build/bin/writelines RESULT_VARIABLE result OUTPUT_VARIABLE lines ERROR_VARIABLE errors)
string(REPEAT x 254 longest)
set(expected "4 [] before the tag
4 [QWIXTD] info 1
5 [QWIXTD] warning ends in a space 
6 [QWIXTD] error three
5 [QWIXTD] ${longest}
7 [QWIXTD] the end of all
")
if(NOT lines STREQUAL expected)
  message(SEND_ERROR "the device's library was given:\n${lines}instead of:\n${expected}")
endif()
if(NOT errors STREQUAL "")
  message(SEND_ERROR "standard error: ${errors}")
endif()
if(NOT result MATCHES "abort")
  message(SEND_ERROR "the process went on after its fatal line: ${result}")
endif()

run(readelf -d ${BINARY}/build/bin/writelines)
if(NOT output MATCHES "NEEDED[^\n]*libLog\\.so\\.1")
  message(SEND_ERROR "the program does not need the device's library:\n${output}")
endif()
run(nm ${BINARY}/build/bin/writelines)
if(NOT output MATCHES " U __android_log_write")
  message(SEND_ERROR "the program has a log writer of its own:\n${output}")
endif()

execute_process(COMMAND ${configure} -B ${BINARY}/without RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE errors)
if(result EQUAL 0 OR NOT errors MATCHES "libLog\\.so\\.1 was not found, and[ \n]+QWIXTD_REQUIRE_PLATFORM_LOG is on")
  message(SEND_ERROR "configured without the library that is required: ${result}\n${errors}")
endif()
message("the device's library was given:\n${lines}")
