# Installs the build into a scratch prefix, builds the client project against it with
# find_package(Parcelon) and runs the client. Arguments: BUILD_DIR, SOURCE_DIR, WORK_DIR.
file(REMOVE_RECURSE ${WORK_DIR})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/root
                RESULT_VARIABLE result OUTPUT_QUIET)
if(result)
  message(FATAL_ERROR "install failed: ${result}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/build -G Ninja
                        -DCMAKE_PREFIX_PATH=${WORK_DIR}/root -DCMAKE_BUILD_TYPE=Debug
                RESULT_VARIABLE result OUTPUT_QUIET)
if(result)
  message(FATAL_ERROR "configuring the client failed: ${result}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/build RESULT_VARIABLE result)
if(result)
  message(FATAL_ERROR "building the client failed: ${result}")
endif()
execute_process(COMMAND ${WORK_DIR}/build/package_client RESULT_VARIABLE result
                OUTPUT_VARIABLE output)
message("${output}")
if(result OR NOT output STREQUAL "To kept, while held 1, after 0\n")
  message(FATAL_ERROR "the client said: ${output} (${result})")
endif()
