# Helpers that set up every target of the project in the same way.

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

# One layer of the library: target qex_NAME, alias qex::NAME, built from all sources in and below FOLDER; an interface target if there
# are none. HEADERS are the public headers, which are installed; DEPENDS the layers it uses; EXTERNAL other libraries to link.
function(qex_add_layer pName)
    cmake_parse_arguments(PARSE_ARGV 1 lArg "" "FOLDER" "HEADERS;DEPENDS;EXTERNAL")
    set(lTarget qex_${pName})
    file(GLOB_RECURSE lSources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${lArg_FOLDER}/*.cxx")
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

    set_property(GLOBAL APPEND PROPERTY QEX_LAYERS ${pName})
    list(TRANSFORM lArg_HEADERS PREPEND "${lArg_FOLDER}/" OUTPUT_VARIABLE lHeaders)
    set_property(GLOBAL APPEND PROPERTY QEX_HEADERS ${lHeaders})
endfunction()
