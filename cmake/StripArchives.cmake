# Run by CPack before packing: strips debug information from static libraries. CPACK_STRIP_FILES leaves it there, and it would be most
# of the package.
find_program(lStrip strip)
file(GLOB_RECURSE lArchives "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*.a")
if(lStrip AND lArchives)
    execute_process(COMMAND "${lStrip}" --strip-debug ${lArchives} COMMAND_ERROR_IS_FATAL ANY)
endif()
