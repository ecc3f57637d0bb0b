# A whole data home in the build tree, for what runs from there: the texts of home/ by links, so that they are always
# those of the tree, and beside them the tables of character sets, which are made by the build.
set(DATA_HOME ${CMAKE_BINARY_DIR}/home)
file(MAKE_DIRECTORY ${DATA_HOME}/charsets)
file(GLOB DATA_HOME_PARTS CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}/home LIST_DIRECTORIES true
    home/config home/locales home/charsets/*)
foreach(part IN LISTS DATA_HOME_PARTS)
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/home/${part} ${DATA_HOME}/${part} SYMBOLIC)
endforeach()
add_custom_target(data_home ALL DEPENDS unic_table_files)
