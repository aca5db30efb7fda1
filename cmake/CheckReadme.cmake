# cmake -P cmake/CheckReadme.cmake: the README's C++ example is the one that the tests run.

cmake_minimum_required(VERSION 3.21)
get_filename_component(lRoot "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)

file(READ "${lRoot}/README.md" lReadme)
string(REGEX MATCH "\\(`(samples/example/[a-z]+\\.cxx)`\\)" lIgnored "${lReadme}")
set(lExample "${CMAKE_MATCH_1}")
file(READ "${lRoot}/${lExample}" lCode)
string(FIND "${lCode}" "#include" lStart)
string(SUBSTRING "${lCode}" ${lStart} -1 lCode)
string(FIND "${lReadme}" "```cpp\n${lCode}```" lFound)
if(lFound EQUAL -1)
    message(FATAL_ERROR "The C++ example in README.md is not that of ${lExample}")
endif()
message(STATUS "README.md shows ${lExample}")
