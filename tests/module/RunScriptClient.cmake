# Runs the script client under Wine with both servers registered in the build's own prefix, and
# compares what it prints with the whole-send transcript.
#   cmake -DWINE_RUN=... -DPREFIX=... -DCOMPONENT=... -DREFHOST=... -DSCRIPT=... -DSAMPLES=...
#         -DTRANSCRIPT=... -DWORK_DIR=... -P RunScriptClient.cmake
set(ENV{PARCELON_WINEPREFIX} ${PREFIX})
file(MAKE_DIRECTORY ${WORK_DIR})
set(settings ${WORK_DIR}/script-settings.ini)
file(WRITE ${settings} "[URLs]\nEmailService.FormGatewayURL=https://forms.gateway.example/lxn/forms\n"
                       "EmailService.FormGatewayAttachURL=https://forms.gateway.example/lxn/attachments\n")
set(ENV{PARCELON_SETTINGS} "Z:${settings}")
set(ENV{PARCELON_COMPANY} "Z:${SAMPLES}/sample-company.json")

function(wine_run)
  execute_process(COMMAND ${WINE_RUN} ${ARGN} RESULT_VARIABLE code OUTPUT_VARIABLE output
                  ERROR_VARIABLE errors)
  if(NOT code EQUAL 0)
    message(FATAL_ERROR "${ARGN} failed (${code}):\n${output}${errors}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

foreach(server ${COMPONENT} ${REFHOST})
  wine_run(regsvr32 /s "Z:${server}")
endforeach()
wine_run(cscript //nologo "Z:${SCRIPT}" "Z:${SAMPLES}" "Z:${settings}")
set(printed "${output}")
foreach(server ${COMPONENT} ${REFHOST})
  wine_run(regsvr32 /s /u "Z:${server}")
endforeach()

# Each request has its own identifier; the echo ends the text with a line break of its own.
string(REGEX REPLACE "trnUID=\"[0-9A-F]+(-[0-9A-F]+)*\"" "trnUID=\"*\"" printed "${printed}")
string(REGEX REPLACE "\r\n$" "\n" printed "${printed}")
file(READ ${TRANSCRIPT} expected)
if(NOT printed STREQUAL expected)
  file(WRITE ${WORK_DIR}/script-client.txt "${printed}")
  message(FATAL_ERROR "The script client's transcript (${WORK_DIR}/script-client.txt) differs from "
                      "${TRANSCRIPT}:\n${printed}")
endif()
