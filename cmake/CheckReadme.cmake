# cmake -P cmake/CheckReadme.cmake: checks that the README's C++ examples are those that the tests run.

cmake_minimum_required(VERSION 3.21)
get_filename_component(lRoot "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)

file(READ "${lRoot}/README.md" lReadme)
file(GLOB lExamples RELATIVE "${lRoot}" "${lRoot}/samples/example/*.cxx")
foreach(lExample IN LISTS lExamples)
    file(READ "${lRoot}/${lExample}" lCode)
    string(FIND "${lCode}" "#include" lStart)
    string(SUBSTRING "${lCode}" ${lStart} -1 lCode)
    string(FIND "${lReadme}" "```cpp\n${lCode}```" lFound)
    string(FIND "${lReadme}" "`${lExample}`" lNamed)
    if(lFound EQUAL -1 OR lNamed EQUAL -1)
        message(FATAL_ERROR "README.md does not show ${lExample} as it is")
    endif()
    message(STATUS "README.md shows ${lExample}")
endforeach()
