# Decides which optional parts are built, from TROV_BUILD_TOOLS, _TESTS and
# _BENCH (ON, OFF or AUTO) and the packages found. Sets TROV_<PART>_ENABLED
# and, for the tests, TROV_GTEST_FROM (INSTALLED or SOURCE).
#
# A part left at AUTO whose packages are missing is switched off with one line
# naming the Debian packages that bring them; a part forced ON whose packages
# are missing stops the configure with the same names.

# trov_decide_part(PART LABEL MISSING...): MISSING lists the packages not found.
function(trov_decide_part part label)
  set(choice "${TROV_BUILD_${part}}")
  set(missing ${ARGN})
  string(REPLACE ";" " " names "${missing}")
  string(TOUPPER "${choice}" upper)
  if(upper STREQUAL "AUTO")
    if(missing)
      message(STATUS "TrovCodec: ${label} off: install ${names} to build it "
                     "(-DTROV_BUILD_${part}=OFF silences this)")
      set(TROV_${part}_ENABLED OFF PARENT_SCOPE)
    else()
      message(STATUS "TrovCodec: ${label} on")
      set(TROV_${part}_ENABLED ON PARENT_SCOPE)
    endif()
  elseif(choice)
    if(missing)
      message(FATAL_ERROR "TrovCodec: -DTROV_BUILD_${part}=${choice}: the ${label} cannot be built "
                          "without ${names}: apt-get install ${names} (or set -DTROV_BUILD_${part}=OFF)")
    endif()
    set(TROV_${part}_ENABLED ON PARENT_SCOPE)
  else()
    set(TROV_${part}_ENABLED OFF PARENT_SCOPE)
  endif()
endfunction()

macro(trov_resolve_parts)
  # The tool: JSON and argument parsing, both header-only libraries.
  set(_trov_missing "")
  if(TROV_BUILD_TOOLS)
    find_package(nlohmann_json 3 QUIET)
    find_package(CLI11 QUIET)
    if(NOT nlohmann_json_FOUND)
      list(APPEND _trov_missing nlohmann-json3-dev)
    endif()
    if(NOT CLI11_FOUND)
      list(APPEND _trov_missing libcli11-dev)
    endif()
  endif()
  trov_decide_part(TOOLS "trov tool" ${_trov_missing})

  # The tests: an installed GoogleTest first, then GoogleTest's sources
  # (Debian's googletest package). A cross build and the sanitizer builds take
  # the sources, built with their own compiler and flags.
  set(_trov_missing "")
  set(TROV_GTEST_FROM "")
  if(TROV_BUILD_TESTS)
    if(NOT CMAKE_CROSSCOMPILING)
      find_package(GTest QUIET)
    endif()
    if(TARGET GTest::gtest_main)
      set(TROV_GTEST_FROM INSTALLED)
    elseif(EXISTS ${TROV_GTEST_SOURCE_DIR}/CMakeLists.txt)
      set(TROV_GTEST_FROM SOURCE)
    else()
      list(APPEND _trov_missing googletest)
    endif()
  endif()
  trov_decide_part(TESTS "tests" ${_trov_missing})

  # The benchmarks: Google Benchmark, and protobuf as the codec they compare with.
  set(_trov_missing "")
  if(TROV_BUILD_BENCH)
    find_package(benchmark QUIET)
    find_package(Protobuf QUIET)
    if(NOT benchmark_FOUND)
      list(APPEND _trov_missing libbenchmark-dev)
    endif()
    if(NOT Protobuf_FOUND OR NOT TARGET protobuf::protoc)
      list(APPEND _trov_missing libprotobuf-dev protobuf-compiler)
    endif()
  endif()
  trov_decide_part(BENCH "benchmarks" ${_trov_missing})
  unset(_trov_missing)
endmacro()
