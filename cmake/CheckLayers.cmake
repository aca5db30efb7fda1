# cmake -P cmake/CheckLayers.cmake: each folder may include only itself, the layers below it and the standard library; the glTF plug-in
# and the program use other libraries. Headers, types and constants of a system, and conditions on one, are in kSystems alone.

cmake_minimum_required(VERSION 3.21)
get_filename_component(kRoot "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)

# kMay_FOLDER: the folders that FOLDER may include besides itself. A sub-folder without an entry belongs to its parent. All sub-folders
# of qexioplugins/acclaim may include the public headers, which are in that folder itself.
set(kBase kbaselib/kbase)
set(kMath ${kBase} kbaselib/kmath)
set(kScene ${kMath} qexscene)
set(kMotion ${kScene} qexioplugins/motion)
set(kAcclaim qexioplugins/acclaim)

set(kMay_kbaselib/kbase ${kBase})
set(kMay_kbaselib/kmath ${kBase})
set(kMay_qexscene ${kMath})
set(kMay_qexclip ${kScene})
set(kMay_qexioplugins/motion ${kScene})
set(kMay_qexioplugins/bvh ${kMotion})
set(kMay_${kAcclaim}/model ${kMotion} ${kAcclaim})
set(kMay_${kAcclaim}/asf ${kMay_${kAcclaim}/model} ${kAcclaim}/model)
set(kMay_${kAcclaim}/amc ${kMay_${kAcclaim}/asf})
set(kMay_${kAcclaim}/scene ${kMay_${kAcclaim}/asf} ${kAcclaim}/asf ${kAcclaim}/amc)
set(kMay_${kAcclaim}/exchange ${kMay_${kAcclaim}/scene} ${kAcclaim}/scene)
set(kMay_${kAcclaim} ${kMay_${kAcclaim}/exchange} ${kAcclaim}/exchange)
set(kMay_qexioplugins/gltf ${kMotion})
# The checks read a skeleton word by word, with its reader's tables.
set(kMay_qexfigure ${kMotion} qexclip qexioplugins/bvh ${kAcclaim} ${kAcclaim}/model ${kAcclaim}/asf qexioplugins/gltf)

# Each has the calls of one system.
set(kSystems ${kBase}/posix)
set(kMay_${kBase}/posix ${kBase})

set(kMay_apps/asf ${kMay_qexfigure} qexfigure ${kAcclaim}/amc ${kAcclaim}/scene)

set(kMay_python/core ${kMay_qexfigure} qexfigure)

# One header for each layer, of public headers alone.
set(kMay_qex ${kMay_qexfigure} qexfigure)

# A header that only forwards to its new location.
set(kForwarding qexioplugins/motion/kqexfilebvh.h)

set(kStandard
    algorithm any array atomic bitset charconv chrono codecvt complex condition_variable deque exception execution filesystem
    forward_list fstream functional future initializer_list iomanip ios iosfwd iostream istream iterator limits list locale map
    memory memory_resource mutex new numeric optional ostream queue random ratio regex scoped_allocator set shared_mutex sstream
    stack stdexcept streambuf string string_view system_error thread tuple type_traits typeindex typeinfo unordered_map
    unordered_set utility valarray variant vector
    cassert cctype cerrno cfenv cfloat cinttypes climits cmath csetjmp cstdarg cstddef cstdint cstdio cstdlib
    cstring ctime cuchar cwchar cwctype)

set(lMore_qexioplugins/gltf nlohmann/json.hpp)
set(lMore_python/core pybind11/numpy.h pybind11/pybind11.h pybind11/stl.h)
set(lMore_apps/asf CLI/CLI.hpp librsvg/rsvg.h nlohmann/json.hpp)

# Conditions that may appear: include guards and the project's own options. The two headers choose a compiler's attributes.
set(kCondition "ifndef [A-Z0-9_]+_H|ifdef QEX_WITH_[A-Z]+")
set(kAttributes kbaselib/kbase/kbaseexport.h qexioplugins/motion/kqextextfile.h)

# Types and constants of a system.
set(kSystemWords "struct stat|mode_t|off_t|pid_t|ssize_t|O_[A-Z]+|PATH_MAX|S_I[A-Z]+|SIG[A-Z]+|STD(IN|OUT|ERR)_FILENO")

get_cmake_property(lVariables VARIABLES)
set(lFolders "")
foreach(lVariable IN LISTS lVariables)
    if(lVariable MATCHES "^kMay_(.+)$")
        list(APPEND lFolders "${CMAKE_MATCH_1}")
    endif()
endforeach()

# The folder, among those listed, that a file belongs to.
function(find_folder pFile pResult)
    get_filename_component(lFolder "${pFile}" DIRECTORY)
    while(lFolder AND NOT lFolder IN_LIST lFolders)
        get_filename_component(lFolder "${lFolder}" DIRECTORY)
    endwhile()
    set(${pResult} "${lFolder}" PARENT_SCOPE)
endfunction()

# Appends to lBad what belongs in a system's folder: conditions and words.
function(check_system pFile)
    file(READ "${kRoot}/${pFile}" lText)
    string(REGEX REPLACE "//[^\n]*" "" lText "\n${lText}\n")
    string(REGEX MATCHALL "\n[ \t]*#[ \t]*(if|elif)[^\n]*" lConditions "${lText}")
    foreach(lCondition IN LISTS lConditions)
        string(REGEX REPLACE "^[ \t\n]*#[ \t]*" "" lCondition "${lCondition}")
        if(NOT lCondition MATCHES "^(${kCondition})$" AND NOT pFile IN_LIST kAttributes)
            list(APPEND lBad "${pFile}: #${lCondition}")
        endif()
    endforeach()
    if(lText MATCHES "[^A-Za-z0-9_](${kSystemWords})[^A-Za-z0-9_]")
        list(APPEND lBad "${pFile}: ${CMAKE_MATCH_1}")
    endif()
    set(lBad "${lBad}" PARENT_SCOPE)
endfunction()

set(lBad "")
set(lCount 0)
file(GLOB_RECURSE lFiles RELATIVE "${kRoot}" "${kRoot}/qex/*" "${kRoot}/kbaselib/*" "${kRoot}/qexscene/*" "${kRoot}/qexclip/*" "${kRoot}/qexioplugins/*"
    "${kRoot}/qexfigure/*" "${kRoot}/apps/*" "${kRoot}/python/core/*")
list(FILTER lFiles INCLUDE REGEX "\\.(h|cxx)$")
foreach(lFile IN LISTS lFiles)
    math(EXPR lCount "${lCount} + 1")
    find_folder("${lFile}" lFrom)
    if(NOT lFrom IN_LIST kSystems)
        check_system("${lFile}")
    endif()
    file(STRINGS "${kRoot}/${lFile}" lLines REGEX "^[ \t]*#[ \t]*include")
    foreach(lLine IN LISTS lLines)
        string(REGEX REPLACE "^[^<\"]*[<\"]([^>\"]*)[>\"].*$" "\\1" lHeader "${lLine}")
        find_folder("${lHeader}" lTo)
        # A public header must not include the sub-folders below it.
        set(lIncludesSubfolder FALSE)
        if(lFile MATCHES "\\.h$" AND lTo MATCHES "^${lFrom}/")
            set(lIncludesSubfolder TRUE)
        endif()
        if(lHeader IN_LIST kStandard OR lHeader IN_LIST lMore_${lFrom} OR lFile IN_LIST kForwarding)
            continue()
        endif()
        if(NOT lTo AND lFrom IN_LIST kSystems)
            continue()
        endif()
        if(NOT lTo OR lIncludesSubfolder OR NOT (lTo STREQUAL lFrom OR lTo IN_LIST kMay_${lFrom}))
            list(APPEND lBad "${lFile}: ${lHeader}")
        endif()
    endforeach()
endforeach()

if(lBad)
    list(JOIN lBad "\n  " lText)
    message(FATAL_ERROR "Not allowed in their layer:\n  ${lText}")
endif()
message(STATUS "${lCount} files include only their own layer and those below; those of no system name one")
