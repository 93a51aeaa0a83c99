# Windows binaries ship without their debug information, which goes to a file
# beside them (NAME.debug, linked from the binary by a .gnu_debuglink section,
# so debuggers find it) and is installed only on request:
#   cmake --install BUILD --component debug

# trov_split_debug_info(TARGET): after the link, moves TARGET's debug
# information into $<TARGET_FILE:TARGET>.debug and strips it from the binary.
function(trov_split_debug_info target)
  find_program(TROV_OBJCOPY NAMES x86_64-w64-mingw32-objcopy objcopy REQUIRED)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${TROV_OBJCOPY} --only-keep-debug $<TARGET_FILE:${target}> $<TARGET_FILE:${target}>.debug
    COMMAND ${TROV_OBJCOPY} --strip-debug --strip-unneeded
            --add-gnu-debuglink=$<TARGET_FILE:${target}>.debug $<TARGET_FILE:${target}>
    VERBATIM)
endfunction()

# trov_install_debug_info(TARGET): installs that file beside the binary, in
# the optional component `debug`.
function(trov_install_debug_info target)
  install(FILES $<TARGET_FILE:${target}>.debug DESTINATION ${CMAKE_INSTALL_BINDIR}
          COMPONENT debug EXCLUDE_FROM_ALL)
endfunction()
