# Makes one man page: cmake -DSCDOC=... -DSOURCE=page.8.scd -DOUTPUT=page.8 -P ScdocPage.cmake
# scdoc reads the source on stdin and writes troff on stdout; a page it
# rejects leaves no output behind, so the next build tries it again.
get_filename_component(directory ${OUTPUT} DIRECTORY)
file(MAKE_DIRECTORY ${directory})
execute_process(COMMAND ${SCDOC}
  INPUT_FILE ${SOURCE}
  OUTPUT_FILE ${OUTPUT}
  ERROR_VARIABLE error
  RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  file(REMOVE ${OUTPUT})
  message(FATAL_ERROR "scdoc: ${SOURCE}: ${result} ${error}")
endif()
