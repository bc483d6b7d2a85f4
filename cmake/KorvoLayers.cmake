# The layers of the program: who owns a source file, and who may include whom.
#
# src/ is flat. A file belongs to the family whose name it bears: "AK_Object.h" and "AK_Object_Macros.cpp" are of the
# family AK_Object. A layer is a set of families and one static library; it sees its own headers and those of the
# layers it uses, directly or through them. In a flat directory include paths fence nothing (a quoted include looks
# beside the including file first), so every build runs a check of the #include lines; a layer's tests link that layer
# and what it uses, so that an upward call does not link either.

find_package(Threads REQUIRED)
if(KORVO_TESTS)
    enable_testing()
    include(GoogleTest)
    find_package(GTest REQUIRED)
endif()
if(KORVO_BENCH)
    find_package(benchmark REQUIRED)
    find_package(PkgConfig)
endif()

# Files of `directory` that belong to one of the families and end in `suffix` (a regular expression).
function(korvo_files_of_families result directory suffix)
    set(found)
    foreach(family IN LISTS ARGN)
        file(GLOB candidates CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${directory}/${family}*)
        foreach(candidate IN LISTS candidates)
            get_filename_component(name ${candidate} NAME)
            if(name MATCHES "^${family}(_[A-Za-z0-9_]+)?${suffix}$")
                list(APPEND found ${candidate})
            endif()
        endforeach()
    endforeach()
    set(${result} ${found} PARENT_SCOPE)
endfunction()

# Makes every build check the includes of some files against what the layer sees; the stamp becomes a source of its
# target.
function(korvo_check_includes result name)
    get_property(visible GLOBAL PROPERTY KORVO_VISIBLE_${name})
    set(stamp ${CMAKE_CURRENT_BINARY_DIR}/${name}.layer)
    add_custom_command(
        OUTPUT ${stamp}
        COMMAND ${CMAKE_COMMAND} "-DLAYER=${name}" "-DFAMILIES=${visible}" "-DFILES=${ARGN}"
                "-DSTAMP=${stamp}" -P ${CMAKE_SOURCE_DIR}/cmake/CheckIncludes.cmake
        DEPENDS ${ARGN} ${CMAKE_SOURCE_DIR}/cmake/CheckIncludes.cmake
        COMMENT "Checking the includes of ${name}" VERBATIM)
    set(${result} ${stamp} PARENT_SCOPE)
endfunction()

# A library that benchmarks compare with, by its pkg-config name: linked, and KORVO_HAVE_<NAME> defined, if it is there.
function(korvo_bench_partner program package)
    if(NOT PkgConfig_FOUND)
        return()
    endif()
    pkg_check_modules(${package} IMPORTED_TARGET ${package})
    if(${package}_FOUND)
        string(MAKE_C_IDENTIFIER ${package} macro)
        string(TOUPPER ${macro} macro)
        target_link_libraries(${program} PRIVATE PkgConfig::${package})
        target_compile_definitions(${program} PRIVATE KORVO_HAVE_${macro})
    endif()
endfunction()

# korvo_layer(name FAMILIES family... [USES layer...] [BENCH_PARTNERS package...]): one library, its include check, its
# tests and benchmarks.
function(korvo_layer name)
    cmake_parse_arguments(LAYER "" "" "FAMILIES;USES;BENCH_PARTNERS" ${ARGN})
    korvo_files_of_families(sources src "\\.cpp" ${LAYER_FAMILIES})
    korvo_files_of_families(headers src "\\.h" ${LAYER_FAMILIES})
    korvo_files_of_families(grammars src "\\.y" ${LAYER_FAMILIES})

    set(visible ${LAYER_FAMILIES})
    foreach(used IN LISTS LAYER_USES)
        get_property(inherited GLOBAL PROPERTY KORVO_VISIBLE_${used})
        list(APPEND visible ${inherited})
    endforeach()
    list(REMOVE_DUPLICATES visible)
    set_property(GLOBAL PROPERTY KORVO_VISIBLE_${name} ${visible})
    set_property(GLOBAL APPEND PROPERTY KORVO_OWNED ${sources} ${headers} ${grammars})

    set(generated)
    foreach(grammar IN LISTS grammars)
        find_package(BISON REQUIRED)
        get_filename_component(stem ${grammar} NAME_WE)
        bison_target(${stem} ${grammar} ${CMAKE_CURRENT_BINARY_DIR}/${stem}.tab.cpp
                     DEFINES_FILE ${CMAKE_CURRENT_BINARY_DIR}/${stem}.tab.h
                     COMPILE_FLAGS "-Wall")
        list(APPEND generated ${CMAKE_CURRENT_BINARY_DIR}/${stem}.tab.cpp)
    endforeach()

    korvo_check_includes(stamp ${name} ${sources} ${headers} ${grammars})
    add_library(${name} STATIC ${sources} ${generated} ${stamp})
    target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR}/src PRIVATE ${CMAKE_CURRENT_BINARY_DIR})
    target_link_libraries(${name} PUBLIC ${LAYER_USES} Threads::Threads)

    if(KORVO_TESTS)
        korvo_files_of_families(tests tests "_test\\.cpp" ${LAYER_FAMILIES})
        if(tests)
            add_executable(${name}_test ${tests})
            target_include_directories(${name}_test PRIVATE ${CMAKE_SOURCE_DIR}/tests)
            target_link_libraries(${name}_test PRIVATE ${name} GTest::gtest_main)
            target_compile_definitions(${name}_test PRIVATE KORVO_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
            gtest_discover_tests(${name}_test WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}
                                 PROPERTIES TIMEOUT 300 DISCOVERY_TIMEOUT 60)
        endif()
    endif()
    if(KORVO_BENCH)
        korvo_files_of_families(benches bench "_bench\\.cpp" ${LAYER_FAMILIES})
        if(benches)
            add_executable(${name}_bench ${benches})
            target_link_libraries(${name}_bench PRIVATE ${name} benchmark::benchmark_main)
            target_compile_definitions(${name}_bench PRIVATE KORVO_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
            foreach(package IN LISTS LAYER_BENCH_PARTNERS)
                korvo_bench_partner(${name}_bench ${package})
            endforeach()
        endif()
    endif()
    korvo_fuzz_targets(${name} ${LAYER_FAMILIES})
endfunction()

# korvo_program(name FAMILIES family... main [USES layer...]): the program itself, the top of the layers.
# Its families without main.cpp are the library <name>_parts, which their tests link; tests and benchmarks find the
# program as KORVO_PROGRAM.
function(korvo_program name)
    cmake_parse_arguments(PROGRAM "" "" "FAMILIES;USES" ${ARGN})
    set(parts ${PROGRAM_FAMILIES})
    list(REMOVE_ITEM parts main)
    korvo_layer(${name}_parts FAMILIES ${parts} USES ${PROGRAM_USES})

    set(main ${CMAKE_SOURCE_DIR}/src/main.cpp)
    set_property(GLOBAL APPEND PROPERTY KORVO_OWNED ${main})
    get_property(visible GLOBAL PROPERTY KORVO_VISIBLE_${name}_parts)
    set_property(GLOBAL PROPERTY KORVO_VISIBLE_${name} ${visible})
    korvo_check_includes(stamp ${name} ${main})
    add_executable(${name} ${main} ${stamp})
    target_link_libraries(${name} PRIVATE ${name}_parts)

    foreach(user ${name}_parts_test ${name}_parts_bench)
        if(TARGET ${user})
            add_dependencies(${user} ${name})
            target_compile_definitions(${user} PRIVATE KORVO_PROGRAM="$<TARGET_FILE:${name}>")
        endif()
    endforeach()
endfunction()

# One program for each fuzz/<family>_<what>_fuzz.cpp. With KORVO_FUZZ it is a libFuzzer target; otherwise it is linked
# with a main that plays the files of fuzz/corpus/<family>_<what>/ once, and that is one of the tests.
function(korvo_fuzz_targets name)
    if(NOT KORVO_FUZZ AND NOT KORVO_TESTS)
        return()
    endif()
    korvo_files_of_families(targets fuzz "_fuzz\\.cpp" ${ARGN})
    foreach(source IN LISTS targets)
        get_filename_component(target ${source} NAME_WE)
        string(REGEX REPLACE "_fuzz$" "" corpus ${target})
        add_executable(${target} ${source})
        target_link_libraries(${target} PRIVATE ${name})
        target_compile_definitions(${target} PRIVATE KORVO_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
        if(KORVO_FUZZ)
            target_link_options(${target} PRIVATE -fsanitize=fuzzer)
        else()
            target_sources(${target} PRIVATE ${CMAKE_SOURCE_DIR}/fuzz/replay_main.cpp)
            add_test(NAME ${target}.Corpus COMMAND ${target} ${CMAKE_SOURCE_DIR}/fuzz/corpus/${corpus}
                     WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
            set_tests_properties(${target}.Corpus PROPERTIES TIMEOUT 300)
        endif()
    endforeach()
endfunction()

# Ends the configuration when a source in src/ belongs to no layer.
function(korvo_refuse_orphans)
    get_property(owned GLOBAL PROPERTY KORVO_OWNED)
    file(GLOB all CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/*)
    list(REMOVE_ITEM all ${owned})
    if(all)
        message(FATAL_ERROR "no layer owns ${all}")
    endif()
endfunction()
