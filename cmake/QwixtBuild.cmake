# How every target of the project is compiled.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# A release keeps no assert-like checks of Qt, but signals and slots are always spelled with Q_EMIT or emit.
add_compile_definitions(QT_DEPRECATED_WARNINGS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING)
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual)
if(QWIXTD_WERROR)
  add_compile_options(-Werror)
endif()

if(QWIXTD_SANITIZE)
  add_compile_options(-fsanitize=${QWIXTD_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QWIXTD_SANITIZE})
endif()

# qwixt_library(NAME SOURCES... [PUBLIC libs...] [PRIVATE libs...]): one static library for the folder it stands in;
# whoever links it can include the folder's headers.
function(qwixt_library name)
  cmake_parse_arguments(PARSE_ARGV 1 LIB "" "" "SOURCES;PUBLIC;PRIVATE")
  add_library(${name} STATIC ${LIB_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${LIB_PUBLIC} PRIVATE ${LIB_PRIVATE})
endfunction()
