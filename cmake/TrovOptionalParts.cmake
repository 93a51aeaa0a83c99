# Decides which optional parts are built, from TROV_BUILD_TOOLS, _TESTS,
# _BENCH and _PYTHON (ON, OFF or AUTO) and the packages found. Sets
# TROV_<PART>_ENABLED and, for the tests, TROV_GTEST_FROM (INSTALLED or
# SOURCE); for the Python package, TROV_PYTEST_FOUND (pytest and hypothesis
# import in the interpreter the module is built for).
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

  # The Python package: a pybind11 module over the tool's core, for the
  # interpreter Debian's python3-dev and pybind11-dev serve (/usr/bin/python3
  # unless Python3_EXECUTABLE says otherwise). It is loaded into a plain
  # interpreter, so a cross build or a sanitizer build leaves it out at AUTO.
  set(_trov_missing "")
  set(_trov_python_reason "")
  set(TROV_PYTEST_FOUND OFF)
  string(TOUPPER "${TROV_BUILD_PYTHON}" _trov_python_choice)
  if(TROV_BUILD_PYTHON AND _trov_python_choice STREQUAL "AUTO")
    if(CMAKE_CROSSCOMPILING)
      set(_trov_python_reason "not in a cross build")
    elseif(CMAKE_CXX_FLAGS MATCHES "-fsanitize")
      set(_trov_python_reason "not in a sanitizer build (the module must load into a plain interpreter)")
    elseif(NOT TROV_TOOLS_ENABLED)
      set(_trov_python_reason "it is built on the trov tool's core, which is off")
    endif()
  endif()
  if(_trov_python_reason)
    message(STATUS "TrovCodec: Python package off: ${_trov_python_reason} "
                   "(-DTROV_BUILD_PYTHON=OFF silences this)")
    set(TROV_PYTHON_ENABLED OFF)
  else()
    if(TROV_BUILD_PYTHON)
      if(NOT DEFINED Python3_EXECUTABLE AND EXISTS /usr/bin/python3)
        set(Python3_EXECUTABLE /usr/bin/python3 CACHE FILEPATH "The Python the trovcodec module is built for")
      endif()
      find_package(Python3 3.8 QUIET COMPONENTS Interpreter Development.Module)
      if(NOT Python3_Development.Module_FOUND)
        list(APPEND _trov_missing python3-dev)
      endif()
      if(Python3_Interpreter_FOUND)
        execute_process(COMMAND ${Python3_EXECUTABLE} -c "import pybind11; print(pybind11.get_cmake_dir())"
                        OUTPUT_VARIABLE _trov_pybind11_dir OUTPUT_STRIP_TRAILING_WHITESPACE
                        RESULT_VARIABLE _trov_status ERROR_QUIET)
        execute_process(COMMAND ${Python3_EXECUTABLE} -c "import pytest, hypothesis"
                        RESULT_VARIABLE _trov_pytest_status OUTPUT_QUIET ERROR_QUIET)
        if(_trov_pytest_status EQUAL 0)
          set(TROV_PYTEST_FOUND ON)
        endif()
      endif()
      set(PYBIND11_FINDPYTHON ON)
      find_package(pybind11 2.6 CONFIG QUIET HINTS ${_trov_pybind11_dir})
      if(NOT pybind11_FOUND)
        list(APPEND _trov_missing pybind11-dev)
      endif()
      if(NOT TROV_BUILD_TOOLS)
        message(FATAL_ERROR "TrovCodec: -DTROV_BUILD_PYTHON=${TROV_BUILD_PYTHON} needs the trov tool's core: "
                            "leave TROV_BUILD_TOOLS at AUTO or ON")
      elseif(NOT TROV_TOOLS_ENABLED)
        list(APPEND _trov_missing nlohmann-json3-dev libcli11-dev)
      endif()
    endif()
    trov_decide_part(PYTHON "Python package" ${_trov_missing})
  endif()
  unset(_trov_missing)
  unset(_trov_python_reason)
  unset(_trov_python_choice)
endmacro()
