# Run by CPack over what it is about to pack: static libraries without debug information, which CPACK_STRIP_FILES leaves in them and
# which would be most of the package.
find_program(lStrip strip)
file(GLOB_RECURSE lArchives "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*.a")
if(lStrip AND lArchives)
    execute_process(COMMAND "${lStrip}" --strip-debug ${lArchives} COMMAND_ERROR_IS_FATAL ANY)
endif()
