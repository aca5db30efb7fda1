# Helpers that set up every target of the project in the same way.

# Folders named like these hold a system's own sources: only those of the system that is built for are compiled.
set(QEX_SYSTEMS posix)
if(UNIX AND NOT EMSCRIPTEN)
    set(QEX_SYSTEM posix)
else()
    message(FATAL_ERROR "qex cannot be built for ${CMAKE_SYSTEM_NAME}: it supports POSIX systems (Linux, macOS, BSD).")
endif()

# Language level, warnings and floating-point rules for a target of the project.
function(qex_set_up_target pTarget)
    target_compile_features(${pTarget} PUBLIC cxx_std_17)
    set_target_properties(${pTarget} PROPERTIES
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
        # A fused multiply-add would change the last bit from one machine to the next.
        target_compile_options(${pTarget} PRIVATE
            -Wall -Wextra -Wshadow -Wconversion -Wold-style-cast -ffp-contract=off
            $<$<BOOL:${QEX_WERROR}>:-Werror>)
    endif()
endfunction()

# Makes the target a unity build if QEX_UNITY is on.
function(qex_allow_unity pTarget)
    if(QEX_UNITY)
        set_target_properties(${pTarget} PROPERTIES UNITY_BUILD ON)
    endif()
endfunction()

# find_package whose error names the Debian package to install, or the option to turn off.
macro(qex_find_package pPackage pDebian pOption)
    find_package(${pPackage} QUIET ${ARGN})
    if(NOT ${pPackage}_FOUND)
        message(FATAL_ERROR "${pPackage} was not found. Install it (Debian: ${pDebian}) or configure with -D${pOption}=OFF.")
    endif()
endmacro()

# Stops when qex/NAME.h does not include exactly the headers in ARGN, which are relative to the root.
function(qex_check_umbrella pName)
    set(lUmbrella "qex/${pName}.h")
    if(NOT EXISTS "${PROJECT_SOURCE_DIR}/${lUmbrella}")
        message(FATAL_ERROR "${lUmbrella} is missing: it includes the HEADERS of qex::${pName} and qex/….h of its DEPENDS.")
    endif()
    file(STRINGS "${PROJECT_SOURCE_DIR}/${lUmbrella}" lIncluded REGEX "^#include <")
    list(TRANSFORM lIncluded REPLACE "^#include <(.*)>$" "\\1")
    set(lMissing ${ARGN})
    list(REMOVE_ITEM lMissing ${lIncluded})
    list(REMOVE_ITEM lIncluded ${ARGN})
    if(lMissing OR lIncluded)
        message(FATAL_ERROR "${lUmbrella} and the HEADERS of qex::${pName} and of its DEPENDS differ: ${lMissing} ${lIncluded}")
    endif()
endfunction()

# Makes qex-NAME.pc for the target qex_NAME. The file finds the prefix from its own place, so that an installed tree can be moved.
function(qex_make_pkgconfig pName)
    cmake_parse_arguments(PARSE_ARGV 1 lArg "" "DESCRIPTION" "DEPENDS;SYSTEM")
    set(lFolder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
    if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
        set(lPrefix "${CMAKE_INSTALL_PREFIX}")
    else()
        file(RELATIVE_PATH lUp "/${lFolder}" "/")
        string(REGEX REPLACE "/$" "" lUp "${lUp}")
        set(lPrefix "\${pcfiledir}/${lUp}")
    endif()
    foreach(lDir IN ITEMS LIBDIR INCLUDEDIR)
        set(l${lDir} "\${prefix}/${CMAKE_INSTALL_${lDir}}")
        if(IS_ABSOLUTE "${CMAKE_INSTALL_${lDir}}")
            set(l${lDir} "${CMAKE_INSTALL_${lDir}}")
        endif()
    endforeach()
    list(TRANSFORM lArg_DEPENDS REPLACE "(.+)" " qex-\\1 = ${PROJECT_VERSION}")
    list(JOIN lArg_DEPENDS "," lRequires)
    get_target_property(lType qex_${pName} TYPE)
    set(lLibs "")
    set(lFlags "")
    if(NOT lType STREQUAL INTERFACE_LIBRARY)
        set(lLibs " -L\${libdir} -lqex${pName}")
    endif()
    if(lType STREQUAL SHARED_LIBRARY)
        set(lFlags " -DQEX_SHARED")
    endif()
    foreach(lLibrary IN LISTS lArg_SYSTEM)
        string(REGEX REPLACE "^([^-].*)$" "-l\\1" lFlag "${lLibrary}")
        string(APPEND lLibs " ${lFlag}")
    endforeach()
    configure_file("${PROJECT_SOURCE_DIR}/cmake/qex.pc.in" "${PROJECT_BINARY_DIR}/pkgconfig/qex-${pName}.pc" @ONLY)
endfunction()

# One layer of the library: target qex_NAME, alias qex::NAME, built from all sources in and below FOLDER; an interface target if there
# are none. HEADERS are the public headers: they are installed, and qex/NAME.h includes them. FORMER are headers that are only installed,
# for includes of their former paths. DEPENDS are the layers it uses; EXTERNAL other libraries to link; SYSTEM those of the
# system that its users need, too; THREADS: its users need threads. DESCRIPTION is one line for pkg-config.
function(qex_add_layer pName)
    cmake_parse_arguments(PARSE_ARGV 1 lArg "THREADS" "FOLDER;DESCRIPTION" "HEADERS;FORMER;DEPENDS;EXTERNAL;SYSTEM")
    set(lTarget qex_${pName})
    file(GLOB_RECURSE lSources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${lArg_FOLDER}/*.cxx")
    foreach(lSystem IN LISTS QEX_SYSTEMS)
        if(NOT lSystem STREQUAL QEX_SYSTEM)
            list(FILTER lSources EXCLUDE REGEX "/${lSystem}/[^/]*$")
        endif()
    endforeach()
    list(TRANSFORM lArg_DEPENDS PREPEND qex_ OUTPUT_VARIABLE lDepends)

    if(lSources)
        set(lScope PUBLIC)
        add_library(${lTarget} ${lSources})
        qex_set_up_target(${lTarget})
        set_target_properties(${lTarget} PROPERTIES
            OUTPUT_NAME qex${pName}
            POSITION_INDEPENDENT_CODE ON
            INSTALL_RPATH "$ORIGIN"
            VERSION ${PROJECT_VERSION}
            SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
        if(BUILD_SHARED_LIBS)
            target_compile_definitions(${lTarget} PUBLIC QEX_SHARED)
        endif()
        target_link_libraries(${lTarget} PRIVATE ${lArg_EXTERNAL})
    else()
        set(lScope INTERFACE)
        add_library(${lTarget} INTERFACE)
        target_compile_features(${lTarget} INTERFACE cxx_std_17)
    endif()

    set_target_properties(${lTarget} PROPERTIES EXPORT_NAME ${pName})
    target_include_directories(${lTarget} ${lScope}
        "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>"
        "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
    target_link_libraries(${lTarget} ${lScope} ${lDepends})
    add_library(qex::${pName} ALIAS ${lTarget})

    if(lArg_THREADS)
        # Not the imported target: a parent project that links the layer would have to find it, too.
        list(APPEND lArg_SYSTEM ${CMAKE_THREAD_LIBS_INIT})
    endif()
    target_link_libraries(${lTarget} ${lScope} ${lArg_SYSTEM})
    qex_make_pkgconfig(${pName} SYSTEM ${lArg_SYSTEM} DESCRIPTION "${lArg_DESCRIPTION}" DEPENDS ${lArg_DEPENDS})

    set_property(GLOBAL APPEND PROPERTY QEX_LAYERS ${pName})
    list(TRANSFORM lArg_HEADERS PREPEND "${lArg_FOLDER}/")
    list(TRANSFORM lArg_FORMER PREPEND "${lArg_FOLDER}/")
    list(TRANSFORM lArg_DEPENDS REPLACE "(.+)" "qex/\\1.h" OUTPUT_VARIABLE lUmbrellas)
    list(REMOVE_ITEM lUmbrellas qex/gltf.h) # Left out of builds without it, so no header may need it.
    qex_check_umbrella(${pName} ${lUmbrellas} ${lArg_HEADERS})
    set_property(GLOBAL APPEND PROPERTY QEX_HEADERS "qex/${pName}.h" ${lArg_HEADERS} ${lArg_FORMER})
endfunction()
