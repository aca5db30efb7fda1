# cmake -P cmake/CheckLayers.cmake: each layer includes only itself, the layers below it and the language's standard library.
# Exceptions: the base layer's file input and output call POSIX, the glTF plug-in stands on nlohmann-json.

cmake_minimum_required(VERSION 3.21)
get_filename_component(kRoot "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)

set(kLayers kbaselib/kbase kbaselib/kmath qexscene qexioplugins/motion qexioplugins/acclaim qexioplugins/gltf)

set(kStandard
    algorithm any array atomic bitset charconv chrono codecvt complex condition_variable deque exception execution filesystem
    forward_list fstream functional future initializer_list iomanip ios iosfwd iostream istream iterator limits list locale map
    memory memory_resource mutex new numeric optional ostream queue random ratio regex scoped_allocator set shared_mutex sstream
    stack stdexcept streambuf string string_view system_error thread tuple type_traits typeindex typeinfo unordered_map
    unordered_set utility valarray variant vector
    cassert cctype cerrno cfenv cfloat cinttypes climits clocale cmath csetjmp csignal cstdarg cstddef cstdint cstdio cstdlib
    cstring ctime cuchar cwchar cwctype)

set(lMore_kbaselib/kbase errno.h fcntl.h poll.h sys/stat.h sys/types.h sys/uio.h unistd.h)
set(lMore_qexioplugins/gltf nlohmann/json.hpp)

set(lBad "")
set(lBelow "")
set(lCount 0)
foreach(lLayer IN LISTS kLayers)
    list(APPEND lBelow "${lLayer}")
    file(GLOB lFiles "${kRoot}/${lLayer}/*.h" "${kRoot}/${lLayer}/*.cxx")
    foreach(lFile IN LISTS lFiles)
        math(EXPR lCount "${lCount} + 1")
        file(STRINGS "${lFile}" lLines REGEX "^[ \t]*#[ \t]*include")
        foreach(lLine IN LISTS lLines)
            string(REGEX REPLACE "^[^<\"]*[<\"]([^>\"]*)[>\"].*$" "\\1" lHeader "${lLine}")
            get_filename_component(lFolder "${lHeader}" DIRECTORY)
            if(NOT lHeader IN_LIST kStandard AND NOT lHeader IN_LIST lMore_${lLayer} AND NOT lFolder IN_LIST lBelow)
                file(RELATIVE_PATH lName "${kRoot}" "${lFile}")
                list(APPEND lBad "${lName}: ${lHeader}")
            endif()
        endforeach()
    endforeach()
endforeach()

if(lBad)
    list(JOIN lBad "\n  " lText)
    message(FATAL_ERROR "Includes that do not belong in their layer:\n  ${lText}")
endif()
message(STATUS "${lCount} files include only what stands below them")
