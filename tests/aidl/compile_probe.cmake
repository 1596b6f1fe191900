# One compile of compile_probe.cpp: EXPECT=accept needs it to compile; EXPECT=reject needs it to
# fail with output matching PATTERN (so a broken include path cannot pass for a rejection).
set(defines -DPROBE_${PROBE_CASE})
if(EXPECT STREQUAL "reject")
  list(APPEND defines -DPROBE_MISTAKE)
endif()
execute_process(COMMAND ${PROBE_COMMAND} ${defines} RESULT_VARIABLE rc OUTPUT_VARIABLE out
                ERROR_VARIABLE out)
if(EXPECT STREQUAL "accept")
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "${PROBE_CASE}: the correct form did not compile:\n${out}")
  endif()
elseif(rc EQUAL 0)
  message(FATAL_ERROR "${PROBE_CASE}: the mistake compiled")
elseif(NOT out MATCHES "${PATTERN}")
  message(FATAL_ERROR "${PROBE_CASE}: failed, but not with \"${PATTERN}\":\n${out}")
else()
  message(STATUS "${PROBE_CASE}: refused as expected")
endif()
