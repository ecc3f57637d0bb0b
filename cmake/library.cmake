# libdlxcomn_r64: every source of the rooms, exporting exactly the names of exports.list.

file(GLOB DLXCOMN_SOURCES CONFIGURE_DEPENDS generic/src/*.cpp generic/src/*/*.cpp linux/src/*.cpp)
add_library(dlxcomn SHARED ${DLXCOMN_SOURCES})
add_library(dlxcomn::dlxcomn ALIAS dlxcomn)
target_include_directories(dlxcomn
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    PRIVATE generic/src)
target_link_libraries(dlxcomn PRIVATE product_options dlxintl)
set_target_properties(dlxcomn PROPERTIES OUTPUT_NAME dlxcomn_r64 VERSION ${PROJECT_VERSION} SOVERSION 1)

# A report names a source as generic/src/<stem>.cpp, without its room: stems are unique, and callers' tools
# have always read paths of that form.
target_compile_options(dlxcomn PRIVATE -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
file(GLOB DLXCOMN_ROOMS CONFIGURE_DEPENDS LIST_DIRECTORIES true generic/src/*)
foreach(room IN LISTS DLXCOMN_ROOMS)
    if(IS_DIRECTORY ${room})
        target_compile_options(dlxcomn PRIVATE -fmacro-prefix-map=${room}/=generic/src/)
    endif()
endforeach()

# The fields of a date record are gathered into a vector only to be stored with one instruction, which takes longer
# than storing each.
set_source_files_properties(generic/src/date/datetime.cpp PROPERTIES COMPILE_OPTIONS -fno-tree-slp-vectorize)

# The version script is made from the list of exports.
set(EXPORTS_LIST ${PROJECT_SOURCE_DIR}/cmake/exports.list)
set(VERSION_SCRIPT ${CMAKE_BINARY_DIR}/dlxcomn.map)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${EXPORTS_LIST})
file(STRINGS ${EXPORTS_LIST} EXPORT_LINES REGEX "^[FD] ")
set(VERSION_TEXT "DLXCOMN_1 {\n    global:\n")
foreach(line IN LISTS EXPORT_LINES)
    string(SUBSTRING ${line} 2 -1 name)
    string(APPEND VERSION_TEXT "        ${name};\n")
endforeach()
string(APPEND VERSION_TEXT "    local:\n        *;\n};\n")
file(CONFIGURE OUTPUT ${VERSION_SCRIPT} CONTENT "${VERSION_TEXT}" @ONLY)
set_property(TARGET dlxcomn APPEND PROPERTY LINK_DEPENDS ${VERSION_SCRIPT})
target_link_options(dlxcomn PRIVATE -Wl,--version-script=${VERSION_SCRIPT} -Wl,-Bsymbolic-functions -Wl,-z,relro,-z,now)
if(NOT DLXCOMN_SANITIZE AND NOT DLXCOMN_FUZZ)
    target_link_options(dlxcomn PRIVATE -Wl,-z,defs)
endif()
