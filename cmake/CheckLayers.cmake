# cmake -P cmake/CheckLayers.cmake: each folder may include only itself, the layers below it and the standard library.
# Exceptions: file input and output use POSIX, in the base layer and where figures are opened; the glTF plug-in uses nlohmann-json.

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
    cassert cctype cerrno cfenv cfloat cinttypes climits clocale cmath csetjmp csignal cstdarg cstddef cstdint cstdio cstdlib
    cstring ctime cuchar cwchar cwctype)

set(lMore_kbaselib/kbase errno.h fcntl.h locale.h poll.h sys/stat.h sys/types.h sys/uio.h unistd.h)
set(lMore_qexioplugins/gltf nlohmann/json.hpp)
set(lMore_qexfigure fcntl.h sys/stat.h unistd.h)

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

set(lBad "")
set(lCount 0)
file(GLOB_RECURSE lFiles RELATIVE "${kRoot}" "${kRoot}/qex/*" "${kRoot}/kbaselib/*" "${kRoot}/qexscene/*" "${kRoot}/qexclip/*" "${kRoot}/qexioplugins/*"
    "${kRoot}/qexfigure/*")
list(FILTER lFiles INCLUDE REGEX "\\.(h|cxx)$")
foreach(lFile IN LISTS lFiles)
    math(EXPR lCount "${lCount} + 1")
    find_folder("${lFile}" lFrom)
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
        if(NOT lTo OR lIncludesSubfolder OR NOT (lTo STREQUAL lFrom OR lTo IN_LIST kMay_${lFrom}))
            list(APPEND lBad "${lFile}: ${lHeader}")
        endif()
    endforeach()
endforeach()

if(lBad)
    list(JOIN lBad "\n  " lText)
    message(FATAL_ERROR "Includes that do not belong in their layer:\n  ${lText}")
endif()
message(STATUS "${lCount} files include only their own layer and those below")
