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

# Strings are never made from 8-bit literals unseen: their encoding stands where they are made.
add_compile_definitions(QT_DEPRECATED_WARNINGS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING)
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual)
if(QWIXTD_WERROR)
  add_compile_options(-Werror)
endif()

if(QWIXTD_SANITIZE)
  add_compile_options(-fsanitize=${QWIXTD_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QWIXTD_SANITIZE})
endif()

# qwixt_library(NAME SOURCES... [PUBLIC libs...] [PRIVATE libs...]): one static library for the directory it stands in;
# whoever links it can include the directory's headers.
function(qwixt_library name)
  cmake_parse_arguments(PARSE_ARGV 1 LIB "" "" "SOURCES;PUBLIC;PRIVATE")
  add_library(${name} STATIC ${LIB_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${LIB_PUBLIC} PRIVATE ${LIB_PRIVATE})
endfunction()

# qwixt_harden(TARGET...): compiles what is shipped small and with the guards against faults of memory that compiler and
# linker have, and leaves out of a program what is not called. Does nothing unless QWIXTD_HARDENED is on.
# Link-time optimisation is not used: the program is small enough without, and every test program that links one of the
# libraries would be optimised anew at each build.
function(qwixt_harden)
  if(NOT QWIXTD_HARDENED)
    return()
  endif()
  set(compile -Os -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -ffunction-sections -fdata-sections)
  # Not every processor has these.
  include(CheckCXXCompilerFlag)
  foreach(flag -fstack-clash-protection -fcf-protection -mbranch-protection=standard)
    string(MAKE_C_IDENTIFIER "QWIXTD_HAS${flag}" hasFlag)
    check_cxx_compiler_flag(${flag} ${hasFlag})
    if(${hasFlag})
      list(APPEND compile ${flag})
    endif()
  endforeach()
  foreach(target IN LISTS ARGN)
    get_target_property(type ${target} TYPE)
    if(NOT type STREQUAL INTERFACE_LIBRARY)
      target_compile_options(${target} PRIVATE ${compile})
    endif()
    if(type STREQUAL EXECUTABLE)
      target_link_options(${target} PRIVATE -pie)
    endif()
    if(type MATCHES "EXECUTABLE|SHARED_LIBRARY")
      target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now,-z,noexecstack,--gc-sections)
    endif()
  endforeach()
endfunction()
