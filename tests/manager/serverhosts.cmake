# Asks the rule for the built-in server about every line of HOSTS ("good" or "bad", then the host), then configures the
# project at SOURCE with a server that can never work.
include(${SOURCE}/manager/serverhost.cmake)

# Line by line and not as a list, which brackets and semicolons in the hosts would tear.
file(READ ${HOSTS} rest)
set(asked 0)
while(rest MATCHES "^(good|bad) ([^\n]*)\n(.*)$")
  set(verdict "${CMAKE_MATCH_1}")
  set(host "${CMAKE_MATCH_2}")
  set(rest "${CMAKE_MATCH_3}")
  qwixt_is_server_host("${host}" is_host)
  if((is_host AND verdict STREQUAL "bad") OR (NOT is_host AND verdict STREQUAL "good"))
    message(SEND_ERROR "\"${host}\" is ${verdict}, and is it a host: ${is_host}")
  endif()
  math(EXPR asked "${asked} + 1")
endwhile()
if(NOT rest STREQUAL "" OR asked LESS 90)
  message(SEND_ERROR "${asked} hosts were asked about, and these were not: ${rest}")
endif()
foreach(code 1 9 10 13 27 31 32 127)
  string(ASCII ${code} character)
  qwixt_is_server_host("a${character}b" is_host)
  qwixt_is_server_host("a${character}" ends_so)
  if(is_host OR ends_so)
    message(SEND_ERROR "a host may hold the character ${code}")
  endif()
endforeach()
qwixt_is_server_host("" is_host)
if(is_host)
  message(SEND_ERROR "a host may be empty")
endif()

file(REMOVE_RECURSE ${BINARY})
execute_process(
  COMMAND ${CMAKE_COMMAND} -G Ninja -S ${SOURCE} -B ${BINARY} -DCMAKE_CXX_COMPILER=${COMPILER}
    -DQWIXTD_QT_MAJOR=${QT_MAJOR} -DQWIXTD_SERVER_HOST=1.2.3
  RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE errors)
if(result EQUAL 0 OR NOT errors MATCHES "QWIXTD_SERVER_HOST is \"1\\.2\\.3\": not a host name")
  message(SEND_ERROR "configured with the server 1.2.3: ${result}\n${errors}")
endif()
message("asked about ${asked} hosts")
