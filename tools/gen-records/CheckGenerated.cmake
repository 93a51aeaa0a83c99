# Compares the committed generated files with what trov_gen_records prints,
# or rewrites them with -DUPDATE=ON:
#   cmake -DGEN=build/bin/trov_gen_records -DSOURCE=. [-DUPDATE=ON] -P tools/gen-records/CheckGenerated.cmake
set(parts
  records include/TrovRecords.h
  bodies include/TrovBodies.h
  codes include/TrovCodes.h
  checks tests/api/PublicRecordsChecks.inc
  encode include/TrovEncode.h
  types include/TrovTypes.hpp)
set(stale "")
while(parts)
  list(POP_FRONT parts part file)
  execute_process(COMMAND ${GEN} ${part} OUTPUT_VARIABLE text RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "trov_gen_records ${part} failed (${rc})")
  endif()
  set(path ${SOURCE}/${file})
  set(committed "")
  if(EXISTS ${path})
    file(READ ${path} committed)
  endif()
  if(NOT text STREQUAL committed)
    if(UPDATE)
      file(WRITE ${path} "${text}")
      message(STATUS "wrote ${file}")
    else()
      list(APPEND stale ${file})
    endif()
  endif()
endwhile()
if(stale)
  message(FATAL_ERROR "not what the tables give: ${stale}; regenerate with "
          "cmake -DGEN=<trov_gen_records> -DSOURCE=<source dir> -DUPDATE=ON -P tools/gen-records/CheckGenerated.cmake")
endif()
