# Installs the build tree into a scratch prefix, then configures, builds and runs the consumer
# project against it, exactly as a host would use the installed package.
# Arguments: -DBUILD_DIR=<canvaro build> -DSOURCE_DIR=<canvaro source> -DWORK_DIR=<scratch>
file(REMOVE_RECURSE "${WORK_DIR}")
execute_process(COMMAND ${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${WORK_DIR}/prefix"
  RESULT_VARIABLE result OUTPUT_QUIET)
if(result)
  message(FATAL_ERROR "install failed")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -S "${SOURCE_DIR}/examples/consumer" -B "${WORK_DIR}/build"
  -G Ninja "-DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix" RESULT_VARIABLE result)
if(result)
  message(FATAL_ERROR "configuring the consumer failed")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build "${WORK_DIR}/build" RESULT_VARIABLE result)
if(result)
  message(FATAL_ERROR "building the consumer failed")
endif()
execute_process(COMMAND "${WORK_DIR}/build/host_example" RESULT_VARIABLE result)
if(result)
  message(FATAL_ERROR "the consumer failed")
endif()
