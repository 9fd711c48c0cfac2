cmake_minimum_required(VERSION 3.25)
# Installs the build tree into a scratch prefix and uses it exactly as a host would:
#  1. the installed headers are exactly those that the umbrella header includes (directly or
#     through other headers): no internal header is installed and none that is needed is missing;
#  2. examples/consumer (the small host and the whole host session) configures with
#     find_package(Canvaro), builds and runs;
#  3. the small host also builds with nothing but the compiler and pkg-config, and runs.
# Arguments: -DBUILD_DIR=<canvaro build> -DSOURCE_DIR=<canvaro source> -DWORK_DIR=<scratch>
#            -DCXX=<C++ compiler>
file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
  if(result)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "failed (${result}): ${command}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}")

# 1. Installed headers against the closure of the umbrella header.
file(GLOB_RECURSE installed RELATIVE "${prefix}/include" "${prefix}/include/*")
set(pending canvaro/canvaro.h)
set(reached "")
while(pending)
  list(POP_FRONT pending header)
  if(header IN_LIST reached)
    continue()
  endif()
  if(NOT EXISTS "${prefix}/include/${header}")
    message(FATAL_ERROR "${header} is included by an installed header but not installed")
  endif()
  list(APPEND reached ${header})
  file(STRINGS "${prefix}/include/${header}" includes REGEX "^#include \"[^\"]+\"")
  foreach(line IN LISTS includes)
    string(REGEX REPLACE "^#include \"([^\"]+)\".*" "\\1" included "${line}")
    list(APPEND pending ${included})
  endforeach()
endwhile()
set(extra ${installed})
list(REMOVE_ITEM extra ${reached})
if(extra)
  message(FATAL_ERROR "installed but not part of the public API: ${extra}")
endif()
foreach(internal canvaro/Undo/FrameItem.h canvaro/Undo/CanvaroUndo.h
    canvaro/foundation/Throw.h canvaro/foundation/Log.h)
  if(EXISTS "${prefix}/include/${internal}")
    message(FATAL_ERROR "internal header ${internal} is installed")
  endif()
endforeach()

# 2. The CMake package.
run(${CMAKE_COMMAND} -S "${SOURCE_DIR}/examples/consumer" -B "${WORK_DIR}/build" -G Ninja
  "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_COMPILER=${CXX}")
run(${CMAKE_COMMAND} --build "${WORK_DIR}/build")
run("${WORK_DIR}/build/host_example")
file(MAKE_DIRECTORY "${WORK_DIR}/session")
run("${WORK_DIR}/build/host_session" "${WORK_DIR}/session")

# 3. pkg-config alone.
find_program(PKG_CONFIG pkg-config REQUIRED)
set(ENV{PKG_CONFIG_PATH} "${prefix}/lib/pkgconfig")
execute_process(COMMAND ${PKG_CONFIG} --cflags --libs canvaro OUTPUT_VARIABLE flags
  OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE result)
if(result)
  message(FATAL_ERROR "pkg-config does not know canvaro")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${CXX} -std=c++20 "${SOURCE_DIR}/examples/consumer/main.cpp" ${flags}
  "-Wl,-rpath,${prefix}/lib" -o "${WORK_DIR}/pkgconfig_host")
run("${WORK_DIR}/pkgconfig_host")
